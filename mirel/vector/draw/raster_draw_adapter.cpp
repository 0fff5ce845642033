#include "mirel/vector/draw/raster_draw_adapter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "mirel/foundation/frame_internal.h"

#include "mirel/vector/draw/draw_internal.h"

namespace Corvane {

using mirel::draw::Box;
using mirel::draw::BoxOf;
using mirel::draw::EllipseRegion;

namespace {

// Calls stretch(row, from, to, outline) for the stretches of each row of an
// ellipse inside rows 0 .. height - 1: the outline is the row's span less
// the stretch that the rows above and below cover too (the pixels with every
// 4-neighbour inside), the interior that stretch. Spans roll down the rows,
// each worked out once.
template <class Stretch>
void ForEachEllipseStretch(const EllipseRegion& region, long long height, Stretch&& stretch) {
  const long long y0 = std::max<long long>(region.GetBox().top, 0);
  const long long y1 = std::min<long long>(region.GetBox().bottom, height - 1);
  if (y0 > y1) return;
  struct RowSpan {
    bool some;
    long long left, right;
  };
  auto spanOf = [&region](long long y) {
    RowSpan s{};
    s.some = region.Span(y, s.left, s.right);
    return s;
  };
  RowSpan above = spanOf(y0 - 1), here = spanOf(y0);
  for (long long row = y0; row <= y1; ++row) {
    const RowSpan below = spanOf(row + 1);
    if (here.some) {
      long long innerLeft = here.right + 1, innerRight = here.right;
      if (above.some && below.some) {
        innerLeft = std::max({here.left + 1, above.left, below.left});
        innerRight = std::min({here.right - 1, above.right, below.right});
      }
      if (innerLeft > innerRight) {
        stretch(row, here.left, here.right, true);
      } else {
        stretch(row, here.left, innerLeft - 1, true);
        stretch(row, innerLeft, innerRight, false);
        stretch(row, innerRight + 1, here.right, true);
      }
    }
    above = here;
    here = below;
  }
}
}  // namespace

RasterDrawAdapter::RasterDrawAdapter(EROI<EC24>* target, ColorOrder order) : target_(target) { SetColorOrder(order); }

RasterDrawAdapter::~RasterDrawAdapter() = default;

bool RasterDrawAdapter::Usable() {
  mmx_ = EGetMMX();
  return target_ != nullptr && !target_->Void() && target_->GetWidth() > 0 && target_->GetHeight() > 0;
}

EC24* RasterDrawAdapter::Pixel(long long x, long long y) const {
  if (x < 0 || y < 0 || x >= target_->GetWidth() || y >= target_->GetHeight()) return nullptr;
  return target_->GetImagePtr(static_cast<int>(x), static_cast<int>(y));
}

void RasterDrawAdapter::Span(long long y, long long x0, long long x1, const unsigned char c[3]) {
  if (y < 0 || y >= target_->GetHeight()) return;
  x0 = std::max<long long>(x0, 0);
  x1 = std::min<long long>(x1, target_->GetWidth() - 1);
  if (x0 > x1) return;
  mirel::draw::FillPixels(reinterpret_cast<unsigned char*>(target_->GetImagePtr(static_cast<int>(x0), static_cast<int>(y))),
                          static_cast<std::size_t>(x1 - x0 + 1), c, mmx_);
}

void RasterDrawAdapter::Line(int x0, int y0, int x1, int y1, const unsigned char c[3]) {
  const mirel::Rows<EC24> rows = mirel::RowsOf(target_);
  mirel::draw::WalkLine(x0, y0, x1, y1, rows.width, rows.height, [&](int x, int y) {
    std::memcpy(rows.Row(y) + x, c, 3);
  });
}

void RasterDrawAdapter::DrawPixel(int x, int y, const DrawColor& color, double opacity) {
  if (!Usable()) return;
  EC24* p = Pixel(x, y);
  if (p == nullptr) return;
  unsigned char c[3];
  Components(Pen(color), c);
  const double a = mirel::draw::ClampOpacity(opacity);
  for (int k = 0; k < 3; ++k) p->c[k] = mirel::draw::Blend(c[k], p->c[k], a);
}

void RasterDrawAdapter::DrawLine(int x0, int y0, int x1, int y1, const DrawColor& color) {
  if (!Usable()) return;
  unsigned char c[3];
  Components(Pen(color), c);
  Line(x0, y0, x1, y1, c);
}

void RasterDrawAdapter::DrawArc(int x, int y, int width, int height, double startAngle, double sweepAngle,
                                const DrawColor& color) {
  if (!Usable()) return;
  unsigned char c[3];
  Components(Pen(color), c);
  const EllipseRegion region(BoxOf(x, y, width, height));
  const long long w = target_->GetWidth();
  ForEachEllipseStretch(region, target_->GetHeight(), [&](long long row, long long from, long long to, bool outline) {
    if (!outline) return;
    for (long long col = std::max<long long>(from, 0); col <= std::min<long long>(to, w - 1); ++col)
      if (mirel::draw::OnArc(region.Angle(col, row), startAngle, sweepAngle)) {
        EC24* p = target_->GetImagePtr(static_cast<int>(col), static_cast<int>(row));
        p->c[0] = c[0], p->c[1] = c[1], p->c[2] = c[2];
      }
  });
}

void RasterDrawAdapter::DrawRectangle(int x, int y, int width, int height, const DrawColor& color) {
  if (!Usable()) return;
  unsigned char c[3];
  Components(Pen(color), c);
  const Box b = BoxOf(x, y, width, height);
  Span(b.top, b.left, b.right, c);
  Span(b.bottom, b.left, b.right, c);
  const long long y0 = std::max<long long>(b.top + 1, 0), y1 = std::min<long long>(b.bottom - 1, target_->GetHeight() - 1);
  for (long long row = y0; row <= y1; ++row) {
    Span(row, b.left, b.left, c);
    Span(row, b.right, b.right, c);
  }
}

void RasterDrawAdapter::FillRectangle(int x, int y, int width, int height, const DrawColor& outline,
                                      const DrawColor& fill) {
  if (!Usable()) return;
  unsigned char f[3];
  Components(Brush(fill), f);
  const Box b = BoxOf(x, y, width, height);
  const long long y0 = std::max<long long>(b.top + 1, 0), y1 = std::min<long long>(b.bottom - 1, target_->GetHeight() - 1);
  for (long long row = y0; row <= y1; ++row) Span(row, b.left + 1, b.right - 1, f);
  DrawRectangle(x, y, width, height, outline);
}

void RasterDrawAdapter::Ellipse(int x, int y, int width, int height, const DrawColor* outline, const DrawColor* fill) {
  if (!Usable()) return;
  unsigned char o[3], f[3];
  Components(Pen(*outline), o);
  if (fill != nullptr) Components(Brush(*fill), f);
  const EllipseRegion region(BoxOf(x, y, width, height));
  ForEachEllipseStretch(region, target_->GetHeight(), [&](long long row, long long from, long long to, bool edge) {
    if (edge) Span(row, from, to, o);
    else if (fill != nullptr) Span(row, from, to, f);
  });
}

void RasterDrawAdapter::DrawEllipse(int x, int y, int width, int height, const DrawColor& color) {
  Ellipse(x, y, width, height, &color, nullptr);
}

void RasterDrawAdapter::FillEllipse(int x, int y, int width, int height, const DrawColor& outline,
                                    const DrawColor& fill) {
  Ellipse(x, y, width, height, &outline, &fill);
}

void RasterDrawAdapter::Polygon(const DrawPointArray& points, const DrawColor* outline, const DrawColor* fill) {
  if (!Usable()) return;
  const std::vector<mirel::draw::IntPoint> polygon = mirel::draw::TruncatePoints(points);
  if (polygon.empty()) return;
  if (fill != nullptr) {
    unsigned char f[3];
    Components(Brush(*fill), f);
    long long top = polygon[0].y, bottom = polygon[0].y;
    for (const auto& p : polygon) top = std::min<long long>(top, p.y), bottom = std::max<long long>(bottom, p.y);
    top = std::max<long long>(top, 0);
    bottom = std::min<long long>(bottom, target_->GetHeight() - 1);
    mirel::draw::PolygonScan(polygon).Rows(top, bottom, [&](long long row, long long first, long long last) {
      Span(row, first, last, f);
    });
  }
  unsigned char o[3];
  Components(Pen(*outline), o);
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const auto& a = polygon[i];
    const auto& b = polygon[(i + 1) % polygon.size()];
    Line(a.x, a.y, b.x, b.y, o);
  }
}

void RasterDrawAdapter::DrawPolygon(const DrawPointArray& points, const DrawColor& color) {
  Polygon(points, &color, nullptr);
}

void RasterDrawAdapter::FillPolygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor& fill) {
  Polygon(points, &outline, &fill);
}

void RasterDrawAdapter::WriteText(const char* text, int x, int y, const DrawColor& color,
                                  const DrawColor* background) {
  if (!Usable()) return;
  const int scale = GetTextScale();
  const mirel::draw::TextLayout layout = mirel::draw::LayOutText(text, x, y, scale);
  if (background != nullptr) {
    unsigned char b[3];
    Components(Background(*background), b);
    for (long long row = 0; row < layout.boxHeight; ++row) Span(y + row, x, x + layout.boxWidth - 1, b);
  }
  unsigned char c[3];
  Components(Text(color), c);
  for (std::size_t i = 0; i < layout.lines.size(); ++i) {
    const mirel::draw::TextLine& line = layout.lines[i];
    for (std::size_t k = 0; k < line.length; ++k) {
      const unsigned char* glyph = mirel::draw::GlyphRows(static_cast<unsigned char>(line.text[k]));
      const long long gx = layout.lineX[i] + static_cast<long long>(k) * mirel::draw::kCellWidth * scale;
      for (int r = 0; r < mirel::draw::kGlyphHeight; ++r)
        for (int col = 0; col < mirel::draw::kGlyphWidth; ++col) {
          if (((glyph[r] >> (4 - col)) & 1) == 0) continue;
          for (int sy = 0; sy < scale; ++sy) {
            const long long px = gx + static_cast<long long>(col) * scale;
            Span(layout.lineY[i] + static_cast<long long>(r) * scale + sy, px, px + scale - 1, c);
          }
        }
    }
  }
}

void RasterDrawAdapter::DrawText(const char* text, int x, int y, const DrawColor& color) {
  WriteText(text, x, y, color, nullptr);
}

void RasterDrawAdapter::DrawTextBox(const char* text, int x, int y, const DrawColor& textColor,
                                    const DrawColor& background) {
  WriteText(text, x, y, textColor, &background);
}

void RasterDrawAdapter::DrawImage(const EGenericROI* image, int x, int y, float zoomX, float zoomY, double opacity,
                                  const DrawColor& tint) {
  if (!Usable()) return;
  mirel::draw::ImagePlan plan;
  if (!mirel::draw::PlanImage(image, zoomX, zoomY, opacity, tint, plan) || plan.opacity <= 0.0) return;
  unsigned char tintBytes[3];
  Components(tint, tintBytes);
  const mirel::draw::ImageRowReader reader(image, plan.type, plan.tinted ? tintBytes : nullptr);
  // Destination rows and columns inside the target.
  const long long W = target_->GetWidth(), H = target_->GetHeight();
  const long long j0 = std::max<long long>(0, -static_cast<long long>(y));
  const long long j1 = std::min<long long>(plan.drawHeight, H - y);
  const long long i0 = std::max<long long>(0, -static_cast<long long>(x));
  const long long i1 = std::min<long long>(plan.drawWidth, W - x);
  if (j0 >= j1 || i0 >= i1) return;
  std::vector<unsigned char> row(static_cast<std::size_t>(plan.width) * 3);
  long long loaded = -1;
  for (long long j = j0; j < j1; ++j) {
    const long long sy = j * plan.height / plan.drawHeight;
    if (sy != loaded) {
      reader.Read(static_cast<int>(sy), row.data());
      loaded = sy;
    }
    EC24* p = target_->GetImagePtr(static_cast<int>(x + i0), static_cast<int>(y + j));
    for (long long i = i0; i < i1; ++i, ++p) {
      const unsigned char* s = &row[static_cast<std::size_t>(i * plan.width / plan.drawWidth) * 3];
      if (plan.opacity >= 1.0) {
        p->c[0] = s[0], p->c[1] = s[1], p->c[2] = s[2];
      } else {
        for (int k = 0; k < 3; ++k) p->c[k] = mirel::draw::Blend(s[k], p->c[k], plan.opacity);
      }
    }
  }
}

}  // namespace Corvane
