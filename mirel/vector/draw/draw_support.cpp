#include <algorithm>
#include <cmath>
#include <cstring>

#include "mirel/vector/draw/draw_internal.h"

namespace mirel {
namespace draw {

int SaturateToInt(double v) {
  if (!(v == v)) return 0;
  if (v >= 2147483647.0) return 2147483647;
  if (v <= -2147483648.0) return -2147483647 - 1;
  return static_cast<int>(v);
}

int FloorToInt(double v) { return SaturateToInt(std::floor(v)); }

double ClampOpacity(double opacity) {
  if (!(opacity > 0.0)) return 0.0;
  return opacity > 1.0 ? 1.0 : opacity;
}

void FillPixels(unsigned char* d, std::size_t n, const unsigned char c[3], int mmx) {
  if (mmx == 0 || n < 16) {
    for (; n > 0; --n, d += 3) std::memcpy(d, c, 3);
    return;
  }
  // The first 16 pixels, then copies of what is written, doubling: long
  // copies go through the C library's string moves, which write whole cache
  // lines without reading them first.
  for (int i = 0; i < 16; ++i) std::memcpy(d + 3 * i, c, 3);
  const std::size_t total = 3 * n;
  for (std::size_t done = 48; done < total;) {
    const std::size_t k = done < total - done ? done : total - done;
    std::memcpy(d + done, d, k);
    done += k;
  }
}

// ---------------------------------------------------------------- shapes

Box BoxOf(int x, int y, int width, int height) {
  const long long x1 = static_cast<long long>(x) + width, y1 = static_cast<long long>(y) + height;
  return Box{std::min<long long>(x, x1), std::min<long long>(y, y1), std::max<long long>(x, x1),
             std::max<long long>(y, y1)};
}

EllipseRegion::EllipseRegion(const Box& box)
    : box_(box),
      cx_(0.5 * (static_cast<double>(box.left) + static_cast<double>(box.right))),
      cy_(0.5 * (static_cast<double>(box.top) + static_cast<double>(box.bottom))),
      ax_(0.5 * static_cast<double>(box.right - box.left) + 0.5),
      ay_(0.5 * static_cast<double>(box.bottom - box.top) + 0.5),
      ex_((box.right - box.left) % 2 != 0 ? 0.5 : 0.0),
      ey_((box.bottom - box.top) % 2 != 0 ? 0.5 : 0.0) {}

bool EllipseRegion::Span(long long y, long long& left, long long& right) const {
  if (y < box_.top || y > box_.bottom) return false;
  const double v = std::max(0.0, std::fabs(static_cast<double>(y) - cy_) - ey_);
  const double t = v / (ay_ - ey_);
  const double half = (ax_ - ex_) * std::sqrt(std::max(0.0, 1.0 - t * t)) + ex_;
  // A hair of slack so that centres exactly on the ellipse count as inside
  // whatever the rounding of the square root.
  left = std::max(box_.left, static_cast<long long>(std::ceil(cx_ - half - 1e-9)));
  right = std::min(box_.right, static_cast<long long>(std::floor(cx_ + half + 1e-9)));
  return left <= right;
}

double EllipseRegion::Angle(long long x, long long y) const {
  return std::atan2((static_cast<double>(y) - cy_) / ay_, (static_cast<double>(x) - cx_) / ax_);
}

bool OnArc(double angle, double start, double sweep) {
  const double turn = 6.283185307179586;
  if (!(sweep == sweep) || !(start == start)) return false;
  const double length = std::fabs(sweep);
  if (length >= turn) return true;
  const double from = sweep < 0 ? start + sweep : start;
  double d = std::fmod(angle - from, turn);
  if (d < 0) d += turn;
  return d <= length;
}

std::vector<IntPoint> TruncatePoints(const Corvane::DrawPointArray& points) {
  const auto held = [](double v) {
    const double limit = 1073741824.0;
    return SaturateToInt(v < -limit ? -limit : v > limit ? limit : v);  // NaN gives 0
  };
  std::vector<IntPoint> out(points.GetCount());
  for (unsigned int i = 0; i < points.GetCount(); ++i) out[i] = IntPoint{held(points[i].m_f64X), held(points[i].m_f64Y)};
  return out;
}

namespace {
// floor(a / b) for b > 0.
long long FloorDiv(long long a, long long b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }
}  // namespace

PolygonScan::PolygonScan(const std::vector<IntPoint>& polygon) {
  const std::size_t n = polygon.size();
  for (std::size_t i = 0; i < n; ++i) {
    IntPoint a = polygon[i], b = polygon[(i + 1) % n];
    if (a.y == b.y) continue;
    if (a.y > b.y) std::swap(a, b);
    // row two before the top: the first use divides.
    edges_.push_back(Edge{a.y, b.y, a.x, static_cast<long long>(b.x) - a.x, static_cast<long long>(b.y) - a.y, 0, 0,
                          static_cast<long long>(a.y) - 2});
  }
  std::sort(edges_.begin(), edges_.end(), [](const Edge& p, const Edge& q) { return p.top < q.top; });
}

void PolygonScan::Crossings(long long y) {
  crossings_.clear();
  while (next_ < edges_.size() && edges_[next_].top <= y) active_.push_back(edges_[next_++]);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < active_.size(); ++i) {
    Edge e = active_[i];
    if (y >= e.end) continue;
    if (y < e.top) {
      active_[kept++] = e;
      continue;
    }
    if (y - e.row != 1) {
      // First use, or rows skipped: divide once.
      const long long num = (y - e.top) * e.dx;
      e.q = FloorDiv(num, e.dy);
      e.r = num - e.q * e.dy;
    } else {
      // The next row: the offset grows by dx.
      const long long dq = FloorDiv(e.dx, e.dy);
      e.q += dq;
      e.r += e.dx - dq * e.dy;
      if (e.r >= e.dy) e.r -= e.dy, ++e.q;
    }
    e.row = y;
    // The first column at or right of the crossing: x0 + ceil(offset).
    crossings_.push_back(e.x0 + e.q + (e.r > 0 ? 1 : 0));
    active_[kept++] = e;
  }
  active_.resize(kept);
  std::sort(crossings_.begin(), crossings_.end());
}

// ---------------------------------------------------------------- text

namespace {
const unsigned char kFont[95][8] = {
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},  // space
    {0x04, 0x04, 0x04, 0x04, 0x04, 0x00, 0x04, 0x00},  // !
    {0x0A, 0x0A, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x00},  // "
    {0x0A, 0x0A, 0x1F, 0x0A, 0x1F, 0x0A, 0x0A, 0x00},  // #
    {0x04, 0x0F, 0x14, 0x0E, 0x05, 0x1E, 0x04, 0x00},  // $
    {0x18, 0x19, 0x02, 0x04, 0x08, 0x13, 0x03, 0x00},  // %
    {0x0C, 0x12, 0x14, 0x08, 0x15, 0x12, 0x0D, 0x00},  // &
    {0x04, 0x04, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00},  // '
    {0x02, 0x04, 0x08, 0x08, 0x08, 0x04, 0x02, 0x00},  // (
    {0x08, 0x04, 0x02, 0x02, 0x02, 0x04, 0x08, 0x00},  // )
    {0x00, 0x04, 0x15, 0x0E, 0x15, 0x04, 0x00, 0x00},  // *
    {0x00, 0x04, 0x04, 0x1F, 0x04, 0x04, 0x00, 0x00},  // +
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x04, 0x08},  // ,
    {0x00, 0x00, 0x00, 0x1F, 0x00, 0x00, 0x00, 0x00},  // -
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x0C, 0x00},  // .
    {0x00, 0x01, 0x02, 0x04, 0x08, 0x10, 0x00, 0x00},  // /
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E, 0x00},  // 0
    {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E, 0x00},  // 1
    {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F, 0x00},  // 2
    {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E, 0x00},  // 3
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02, 0x00},  // 4
    {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E, 0x00},  // 5
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E, 0x00},  // 6
    {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08, 0x00},  // 7
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E, 0x00},  // 8
    {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C, 0x00},  // 9
    {0x00, 0x0C, 0x0C, 0x00, 0x0C, 0x0C, 0x00, 0x00},  // :
    {0x00, 0x0C, 0x0C, 0x00, 0x0C, 0x04, 0x08, 0x00},  // ;
    {0x02, 0x04, 0x08, 0x10, 0x08, 0x04, 0x02, 0x00},  // <
    {0x00, 0x00, 0x1F, 0x00, 0x1F, 0x00, 0x00, 0x00},  // =
    {0x08, 0x04, 0x02, 0x01, 0x02, 0x04, 0x08, 0x00},  // >
    {0x0E, 0x11, 0x01, 0x02, 0x04, 0x00, 0x04, 0x00},  // ?
    {0x0E, 0x11, 0x01, 0x0D, 0x15, 0x15, 0x0E, 0x00},  // @
    {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11, 0x00},  // A
    {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E, 0x00},  // B
    {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E, 0x00},  // C
    {0x1C, 0x12, 0x11, 0x11, 0x11, 0x12, 0x1C, 0x00},  // D
    {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F, 0x00},  // E
    {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x10, 0x00},  // F
    {0x0E, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0F, 0x00},  // G
    {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11, 0x00},  // H
    {0x0E, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E, 0x00},  // I
    {0x07, 0x02, 0x02, 0x02, 0x02, 0x12, 0x0C, 0x00},  // J
    {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11, 0x00},  // K
    {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F, 0x00},  // L
    {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11, 0x00},  // M
    {0x11, 0x11, 0x19, 0x15, 0x13, 0x11, 0x11, 0x00},  // N
    {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E, 0x00},  // O
    {0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10, 0x10, 0x00},  // P
    {0x0E, 0x11, 0x11, 0x11, 0x15, 0x12, 0x0D, 0x00},  // Q
    {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11, 0x00},  // R
    {0x0F, 0x10, 0x10, 0x0E, 0x01, 0x01, 0x1E, 0x00},  // S
    {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x00},  // T
    {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E, 0x00},  // U
    {0x11, 0x11, 0x11, 0x11, 0x11, 0x0A, 0x04, 0x00},  // V
    {0x11, 0x11, 0x11, 0x15, 0x15, 0x15, 0x0A, 0x00},  // W
    {0x11, 0x11, 0x0A, 0x04, 0x0A, 0x11, 0x11, 0x00},  // X
    {0x11, 0x11, 0x0A, 0x04, 0x04, 0x04, 0x04, 0x00},  // Y
    {0x1F, 0x01, 0x02, 0x04, 0x08, 0x10, 0x1F, 0x00},  // Z
    {0x0E, 0x08, 0x08, 0x08, 0x08, 0x08, 0x0E, 0x00},  // [
    {0x00, 0x10, 0x08, 0x04, 0x02, 0x01, 0x00, 0x00},  // backslash
    {0x0E, 0x02, 0x02, 0x02, 0x02, 0x02, 0x0E, 0x00},  // ]
    {0x04, 0x0A, 0x11, 0x00, 0x00, 0x00, 0x00, 0x00},  // ^
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x1F},  // _
    {0x08, 0x04, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00},  // `
    {0x00, 0x00, 0x0E, 0x01, 0x0F, 0x11, 0x0F, 0x00},  // a
    {0x10, 0x10, 0x16, 0x19, 0x11, 0x11, 0x1E, 0x00},  // b
    {0x00, 0x00, 0x0E, 0x10, 0x10, 0x11, 0x0E, 0x00},  // c
    {0x01, 0x01, 0x0D, 0x13, 0x11, 0x11, 0x0F, 0x00},  // d
    {0x00, 0x00, 0x0E, 0x11, 0x1F, 0x10, 0x0E, 0x00},  // e
    {0x06, 0x09, 0x08, 0x1C, 0x08, 0x08, 0x08, 0x00},  // f
    {0x00, 0x00, 0x0F, 0x11, 0x11, 0x0F, 0x01, 0x0E},  // g
    {0x10, 0x10, 0x16, 0x19, 0x11, 0x11, 0x11, 0x00},  // h
    {0x04, 0x00, 0x0C, 0x04, 0x04, 0x04, 0x0E, 0x00},  // i
    {0x02, 0x00, 0x06, 0x02, 0x02, 0x02, 0x12, 0x0C},  // j
    {0x10, 0x10, 0x12, 0x14, 0x18, 0x14, 0x12, 0x00},  // k
    {0x0C, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E, 0x00},  // l
    {0x00, 0x00, 0x1A, 0x15, 0x15, 0x11, 0x11, 0x00},  // m
    {0x00, 0x00, 0x16, 0x19, 0x11, 0x11, 0x11, 0x00},  // n
    {0x00, 0x00, 0x0E, 0x11, 0x11, 0x11, 0x0E, 0x00},  // o
    {0x00, 0x00, 0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10},  // p
    {0x00, 0x00, 0x0F, 0x11, 0x11, 0x0F, 0x01, 0x01},  // q
    {0x00, 0x00, 0x16, 0x19, 0x10, 0x10, 0x10, 0x00},  // r
    {0x00, 0x00, 0x0F, 0x10, 0x0E, 0x01, 0x1E, 0x00},  // s
    {0x08, 0x08, 0x1C, 0x08, 0x08, 0x09, 0x06, 0x00},  // t
    {0x00, 0x00, 0x11, 0x11, 0x11, 0x13, 0x0D, 0x00},  // u
    {0x00, 0x00, 0x11, 0x11, 0x11, 0x0A, 0x04, 0x00},  // v
    {0x00, 0x00, 0x11, 0x11, 0x15, 0x15, 0x0A, 0x00},  // w
    {0x00, 0x00, 0x11, 0x0A, 0x04, 0x0A, 0x11, 0x00},  // x
    {0x00, 0x00, 0x11, 0x11, 0x11, 0x0F, 0x01, 0x0E},  // y
    {0x00, 0x00, 0x1F, 0x02, 0x04, 0x08, 0x1F, 0x00},  // z
    {0x02, 0x04, 0x04, 0x08, 0x04, 0x04, 0x02, 0x00},  // {
    {0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04, 0x00},  // |
    {0x08, 0x04, 0x04, 0x02, 0x04, 0x04, 0x08, 0x00},  // }
    {0x00, 0x00, 0x08, 0x15, 0x02, 0x00, 0x00, 0x00},  // ~
};
}  // namespace

const unsigned char* GlyphRows(unsigned char c) {
  if (c < 32 || c > 126) c = '?';
  return kFont[c - 32];
}

std::vector<TextLine> SplitLines(const char* text) {
  std::vector<TextLine> lines;
  if (text == nullptr) return lines;
  const char* start = text;
  for (const char* p = text;; ++p) {
    if (*p == '\n' || *p == '\0') {
      if (p != start) lines.push_back(TextLine{start, static_cast<std::size_t>(p - start)});
      if (*p == '\0') break;
      start = p + 1;
    }
  }
  return lines;
}

Corvane::DrawSize MeasureLines(const std::vector<TextLine>& lines, int scale) {
  std::size_t longest = 0;
  for (const TextLine& line : lines) longest = std::max(longest, line.length);
  return Corvane::DrawSize{static_cast<double>(longest) * kCellWidth * scale,
                           static_cast<double>(lines.size()) * kCellHeight * scale};
}

TextLayout LayOutText(const char* text, int x, int y, int scale) {
  TextLayout layout;
  layout.lines = SplitLines(text);
  const Corvane::DrawSize size = MeasureLines(layout.lines, scale);
  layout.boxWidth = static_cast<long long>(size.m_f64Width + 4.0);
  layout.boxHeight = static_cast<long long>(size.m_f64Height + 2.0);
  long long top = static_cast<long long>(y) + 1;
  for (const TextLine& line : layout.lines) {
    const long long width = static_cast<long long>(line.length) * kCellWidth * scale;
    layout.lineX.push_back(x + (layout.boxWidth - width) / 2);
    layout.lineY.push_back(top);
    top += static_cast<long long>(kCellHeight) * scale;
  }
  return layout;
}

// ---------------------------------------------------------------- images

int DrawImageType(const EGenericROI* image) {
  if (image == nullptr) return -1;
  if (dynamic_cast<const EROI<EBW1>*>(image)) return 0;
  if (dynamic_cast<const EROI<EBW8>*>(image)) return 1;
  if (dynamic_cast<const EROI<EBW16>*>(image)) return 2;
  if (dynamic_cast<const EROI<EBW32>*>(image)) return 3;
  if (dynamic_cast<const EROI<EC15>*>(image)) return 4;
  if (dynamic_cast<const EROI<EC16>*>(image)) return 5;
  if (dynamic_cast<const EROI<EC24>*>(image)) return 6;
  if (dynamic_cast<const EROI<EC24A>*>(image)) return 7;
  return -1;
}

ImageRowReader::ImageRowReader(const EGenericROI* image, int type, const unsigned char* tint)
    : image_(image), type_(type) {
  if (tint != nullptr) {
    std::memcpy(tint_, tint, 3);
    tinted_ = true;
  }
}

namespace {
unsigned char Widen5(unsigned v) { return static_cast<unsigned char>((v << 3) | (v >> 2)); }
unsigned char Widen6(unsigned v) { return static_cast<unsigned char>((v << 2) | (v >> 4)); }
}  // namespace

void ImageRowReader::Read(int y, unsigned char* out) const {
  const int width = image_->GetWidth();
  const void* row = image_->GetImagePtr(0, y);
  if (type_ <= 3) {
    for (int x = 0; x < width; ++x) {
      unsigned char g = 0;
      switch (type_) {
        case 0: {
          const int bit = image_->GetBitOffset(0, y) + x;
          g = (static_cast<const unsigned char*>(row)[bit >> 3] >> (7 - (bit & 7))) & 1 ? 255 : 0;
          break;
        }
        case 1: g = static_cast<const EBW8*>(row)[x]; break;
        case 2: g = static_cast<unsigned char>(static_cast<const EBW16*>(row)[x] >> 8); break;
        default: g = static_cast<unsigned char>(static_cast<const EBW32*>(row)[x] >> 24); break;
      }
      for (int c = 0; c < 3; ++c)
        out[3 * x + c] = tinted_ ? static_cast<unsigned char>(g * tint_[c] * 0.003921569) : g;
    }
    return;
  }
  for (int x = 0; x < width; ++x) {
    unsigned char* o = out + 3 * x;
    switch (type_) {
      case 4: {
        const EC15 p = static_cast<const EC15*>(row)[x];
        o[0] = Widen5(p[0]), o[1] = Widen5(p[1]), o[2] = Widen5(p[2]);
        break;
      }
      case 5: {
        const EC16 p = static_cast<const EC16*>(row)[x];
        o[0] = Widen5(p[0]), o[1] = Widen6(p[1]), o[2] = Widen5(p[2]);
        break;
      }
      case 6: std::memcpy(o, static_cast<const EC24*>(row) + x, 3); break;
      default: std::memcpy(o, static_cast<const EC24A*>(row) + x, 3); break;
    }
  }
}

bool PlanImage(const EGenericROI* image, float zoomX, float zoomY, double opacity, const Corvane::DrawColor& tint,
               ImagePlan& plan) {
  plan.type = DrawImageType(image);
  if (plan.type < 0 || image->Void() || image->GetWidth() <= 0 || image->GetHeight() <= 0) return false;
  plan.width = image->GetWidth();
  plan.height = image->GetHeight();
  plan.opacity = ClampOpacity(opacity);
  plan.zoomX = zoomX;
  plan.zoomY = zoomY == 0.0f ? zoomX : zoomY;
  if (!(plan.zoomX > 0.0) || !(plan.zoomY > 0.0)) return false;
  const double w = plan.width * plan.zoomX, h = plan.height * plan.zoomY;
  plan.drawWidth = w < 4.0e9 ? static_cast<long long>(w) : 4000000000LL;
  plan.drawHeight = h < 4.0e9 ? static_cast<long long>(h) : 4000000000LL;
  plan.tinted = plan.type <= 3 && tint != Corvane::CurrentColor && plan.opacity != 1.0;
  return plan.drawWidth > 0 && plan.drawHeight > 0;
}

}  // namespace draw
}  // namespace mirel
