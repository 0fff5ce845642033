// The GDI drawing adapter and the HDC forms of Draw; Windows only.
#if defined(_WIN32)

#include <windows.h>
#undef DrawText

#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "mirel/histogram/histogram_vector.h"
#include "mirel/vector/draw/draw_internal.h"
#include "mirel/vector/draw/gdi_draw_adapter.h"
#include "mirel/vector/records.h"

namespace Corvane {

namespace {

COLORREF ColorRef(const DrawColor& c) {
  return static_cast<COLORREF>(((c.m_n32Blue & 0xFF) << 16) | ((c.m_n32Green & 0xFF) << 8) | (c.m_n32Red & 0xFF));
}

// Selects an object into the context for one operation and puts the old
// one back on leaving; deletes the object when it made it.
class Selection {
 public:
  Selection(HDC hdc, HGDIOBJ object, bool owned) : hdc_(hdc), object_(object), owned_(owned) {
    if (object_ != nullptr) old_ = SelectObject(hdc_, object_);
  }
  ~Selection() {
    if (object_ == nullptr) return;
    SelectObject(hdc_, old_);
    if (owned_) DeleteObject(object_);
  }
  Selection(const Selection&) = delete;
  Selection& operator=(const Selection&) = delete;

 private:
  HDC hdc_;
  HGDIOBJ object_;
  HGDIOBJ old_ = nullptr;
  bool owned_;
};

// The pen of a line-drawing operation: the current one stays for
// CurrentColor; any other colour gets a solid pen one pixel wide.
class PenScope : public Selection {
 public:
  PenScope(HDC hdc, const DrawColor& color)
      : Selection(hdc, color == CurrentColor ? nullptr : CreatePen(PS_SOLID, 1, ColorRef(color)), true) {}
};

// The null brush for frames, a solid brush for fills (the current brush
// for CurrentColor).
class NullBrushScope : public Selection {
 public:
  explicit NullBrushScope(HDC hdc) : Selection(hdc, GetStockObject(NULL_BRUSH), false) {}
};
class FillScope : public Selection {
 public:
  FillScope(HDC hdc, const DrawColor& color)
      : Selection(hdc, color == CurrentColor ? nullptr : CreateSolidBrush(ColorRef(color)), true) {}
};

COLORREF PenColor(HDC hdc) {
  LOGPEN pen{};
  GetObjectA(GetCurrentObject(hdc, OBJ_PEN), sizeof pen, &pen);
  return pen.lopnColor;
}

// 10 points at the device's vertical resolution.
HFONT MakeFont(HDC hdc) {
  return CreateFontA(-MulDiv(10, GetDeviceCaps(hdc, LOGPIXELSY), 72), 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0,
                     "MS Sans Serif");
}

std::vector<POINT> TruncatedPoints(const DrawPointArray& points) {
  std::vector<POINT> out(points.GetCount());
  for (unsigned int i = 0; i < points.GetCount(); ++i) {
    out[i].x = static_cast<LONG>(mirel::draw::SaturateToInt(points[i].m_f64X));
    out[i].y = static_cast<LONG>(mirel::draw::SaturateToInt(points[i].m_f64Y));
  }
  return out;
}

// The bitmap header and its colour table or bit fields.
struct DibInfo {
  BITMAPINFOHEADER header;
  RGBQUAD colors[256];
};

HPALETTE PaletteFor(bool grey) {
  static HPALETTE greyPalette = nullptr;
  static HPALETTE cubePalette = nullptr;
  HPALETTE& kept = grey ? greyPalette : cubePalette;
  if (kept != nullptr) return kept;
  struct {
    WORD version;
    WORD count;
    PALETTEENTRY entries[256];
  } log{};
  log.version = 0x300;
  if (grey) {
    log.count = 256;
    for (int i = 0; i < 256; ++i) {
      const BYTE v = static_cast<BYTE>(i);
      log.entries[i] = PALETTEENTRY{v, v, v, 0};
    }
  } else {
    log.count = 216;
    int i = 0;
    for (int r = 0; r < 6; ++r)
      for (int g = 0; g < 6; ++g)
        for (int b = 0; b < 6; ++b)
          log.entries[i++] =
              PALETTEENTRY{static_cast<BYTE>(51 * r), static_cast<BYTE>(51 * g), static_cast<BYTE>(51 * b), 0};
  }
  kept = CreatePalette(reinterpret_cast<const LOGPALETTE*>(&log));
  return kept;
}

}  // namespace

GDIDrawAdapter::~GDIDrawAdapter() = default;

void GDIDrawAdapter::DrawPixel(int x, int y, const DrawColor& color, double opacity) {
  opacity = opacity < 0.0 ? 0.0 : opacity > 1.0 ? 1.0 : opacity;
  COLORREF c = color == CurrentColor ? PenColor(m_hDC) : ColorRef(color);
  if (opacity < 1.0) {
    const COLORREF old = GetPixel(m_hDC, x, y);
    const BYTE r = mirel::draw::Blend(GetRValue(c), GetRValue(old), opacity);
    const BYTE g = mirel::draw::Blend(GetGValue(c), GetGValue(old), opacity);
    const BYTE b = mirel::draw::Blend(GetBValue(c), GetBValue(old), opacity);
    c = RGB(r, g, b);
  }
  SetPixel(m_hDC, x, y, c);
}

void GDIDrawAdapter::DrawLine(int x0, int y0, int x1, int y1, const DrawColor& color) {
  {
    PenScope pen(m_hDC, color);
    MoveToEx(m_hDC, x0, y0, nullptr);
    LineTo(m_hDC, x1, y1);
  }
  DrawPixel(x1, y1, color, 1.0);
}

void GDIDrawAdapter::DrawArc(int x, int y, int width, int height, double startAngle, double sweepAngle,
                             const DrawColor& color) {
  const double cx = x + 0.5 * width, cy = y + 0.5 * height;
  const int sx = mirel::draw::SaturateToInt(std::cos(startAngle) * width + cx);
  const int sy = mirel::draw::SaturateToInt(std::sin(startAngle) * height + cy);
  const double end = startAngle + sweepAngle;
  const int ex = mirel::draw::SaturateToInt(std::cos(end) * width + cx);
  const int ey = mirel::draw::SaturateToInt(std::sin(end) * height + cy);
  PenScope pen(m_hDC, color);
  // Arc runs one way only: a positive sweep is drawn from its end back to
  // its start.
  if (sweepAngle <= 0.0) Arc(m_hDC, x, y, x + width + 1, y + height + 1, sx, sy, ex, ey);
  else Arc(m_hDC, x, y, x + width + 1, y + height + 1, ex, ey, sx, sy);
}

void GDIDrawAdapter::DrawRectangle(int x, int y, int width, int height, const DrawColor& color) {
  PenScope pen(m_hDC, color);
  NullBrushScope brush(m_hDC);
  Rectangle(m_hDC, x, y, x + width + 1, y + height + 1);
}

void GDIDrawAdapter::DrawPolygon(const DrawPointArray& points, const DrawColor& color) {
  const std::vector<POINT> p = TruncatedPoints(points);
  PenScope pen(m_hDC, color);
  NullBrushScope brush(m_hDC);
  Polygon(m_hDC, p.data(), static_cast<int>(p.size()));
}

void GDIDrawAdapter::DrawEllipse(int x, int y, int width, int height, const DrawColor& color) {
  PenScope pen(m_hDC, color);
  NullBrushScope brush(m_hDC);
  Ellipse(m_hDC, x, y, x + width + 1, y + height + 1);
}

void GDIDrawAdapter::FillRectangle(int x, int y, int width, int height, const DrawColor& outline,
                                   const DrawColor& fill) {
  PenScope pen(m_hDC, outline);
  FillScope brush(m_hDC, fill);
  Rectangle(m_hDC, x, y, x + width + 1, y + height + 1);
}

void GDIDrawAdapter::FillEllipse(int x, int y, int width, int height, const DrawColor& outline,
                                 const DrawColor& fill) {
  PenScope pen(m_hDC, outline);
  FillScope brush(m_hDC, fill);
  Ellipse(m_hDC, x, y, x + width + 1, y + height + 1);
}

void GDIDrawAdapter::FillPolygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor& fill) {
  const std::vector<POINT> p = TruncatedPoints(points);
  PenScope pen(m_hDC, outline);
  FillScope brush(m_hDC, fill);
  Polygon(m_hDC, p.data(), static_cast<int>(p.size()));
}

DrawSize GDIDrawAdapter::MeasureText(const char* text) {
  DrawSize size{0.0, 0.0};
  Selection font(m_hDC, MakeFont(m_hDC), true);
  for (const mirel::draw::TextLine& line : mirel::draw::SplitLines(text)) {
    SIZE extent{0, 0};
    GetTextExtentPoint32A(m_hDC, line.text, static_cast<int>(line.length), &extent);
    size.m_f64Height += extent.cy;
    if (extent.cx > size.m_f64Width) size.m_f64Width = extent.cx;
  }
  return size;
}

namespace {

// Draws a text centred in its box, the box first filled when `background`
// is given.
void Text(GDIDrawAdapter& adapter, HDC hdc, const char* text, int x, int y, const DrawColor& color,
          const DrawColor* background) {
  if (text == nullptr) return;
  const DrawSize size = adapter.MeasureText(text);
  RECT box{x, y, static_cast<LONG>(x + size.m_f64Width + 4.0), static_cast<LONG>(y + size.m_f64Height + 2.0)};
  if (background != nullptr) {
    const COLORREF fill = *background == CurrentColor ? GetBkColor(hdc) : ColorRef(*background);
    Selection pen(hdc, CreatePen(PS_SOLID, 1, fill), true);
    Selection brush(hdc, CreateSolidBrush(fill), true);
    Rectangle(hdc, box.left, box.top, box.right, box.bottom);
  }
  Selection font(hdc, MakeFont(hdc), true);
  const int oldMode = SetBkMode(hdc, TRANSPARENT);
  const COLORREF oldText = GetTextColor(hdc);
  const COLORREF oldBack = GetBkColor(hdc);
  if (color != CurrentColor) SetTextColor(hdc, ColorRef(color));
  DrawTextA(hdc, text, -1, &box, DT_CENTER | DT_VCENTER);
  SetBkColor(hdc, oldBack);
  SetTextColor(hdc, oldText);
  SetBkMode(hdc, oldMode);
}

}  // namespace

void GDIDrawAdapter::DrawText(const char* text, int x, int y, const DrawColor& color) {
  Text(*this, m_hDC, text, x, y, color, nullptr);
}

void GDIDrawAdapter::DrawTextBox(const char* text, int x, int y, const DrawColor& textColor,
                                 const DrawColor& background) {
  Text(*this, m_hDC, text, x, y, textColor, &background);
}

int GDIDrawAdapter::GetPenWidth() {
  LOGPEN pen{};
  GetObjectA(GetCurrentObject(m_hDC, OBJ_PEN), sizeof pen, &pen);
  return pen.lopnWidth.x;
}

void GDIDrawAdapter::DrawImage(const EGenericROI* image, int x, int y, float zoomX, float zoomY, double opacity,
                               const DrawColor& tint) {
  int type = mirel::draw::DrawImageType(image);
  if (type < 0 || image->Void()) return;
  if (opacity > 1.0) opacity = 1.0;
  if (zoomY == 0.0f) zoomY = zoomX;
  const int width = image->GetWidth(), height = image->GetHeight();
  if (width <= 0 || height <= 0) return;

  // The bitmap is a packed copy of the rows: GDI reads whole rows of a
  // 4-byte multiple, which the image's own rows need not be (a borrowed
  // buffer has any pitch and nothing behind its last pixel), and a bit ROI
  // may start inside a byte. Grey images of 16 and 32 bits become 8 bits of
  // their high bytes; a tinted grey image becomes 24 bits (component 0 blue,
  // as bitmaps hold it).
  const bool tinted = type <= 3 && tint != CurrentColor && opacity != 1.0;
  const unsigned char tintBytes[3] = {static_cast<unsigned char>(tint.m_n32Blue),
                                      static_cast<unsigned char>(tint.m_n32Green),
                                      static_cast<unsigned char>(tint.m_n32Red)};
  const mirel::draw::ImageRowReader reader(image, type, tinted ? tintBytes : nullptr);
  const int sourceType = type;
  if (tinted) type = 6;
  else if (type == 2 || type == 3) type = 1;
  static const int kBits[8] = {1, 8, 8, 8, 16, 16, 24, 32};
  const int bits = kBits[type];
  const std::size_t stride = (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
  std::vector<unsigned char> packed, row;
  try {
    packed.resize(stride * static_cast<std::size_t>(height));
    row.resize(static_cast<std::size_t>(width) * 3);
  } catch (const std::bad_alloc&) {
    return;
  }
  for (int j = 0; j < height; ++j) {
    unsigned char* out = packed.data() + stride * static_cast<std::size_t>(j);
    if (tinted) {
      reader.Read(j, out);
    } else if (sourceType == 0 || sourceType == 2 || sourceType == 3) {
      reader.Read(j, row.data());
      for (int i = 0; i < width; ++i) {
        const unsigned char grey = row[3 * static_cast<std::size_t>(i)];
        if (sourceType != 0) out[i] = grey;
        else if (grey != 0) out[i >> 3] = static_cast<unsigned char>(out[i >> 3] | (0x80 >> (i & 7)));
      }
    } else {
      std::memcpy(out, image->GetImagePtr(0, j), static_cast<std::size_t>(width) * (bits / 8));
    }
  }

  DibInfo info{};
  info.header.biSize = 40;
  info.header.biWidth = width;
  info.header.biHeight = -height;
  info.header.biPlanes = 1;
  info.header.biBitCount = static_cast<WORD>(bits);
  info.header.biCompression = bits == 16 ? BI_BITFIELDS : BI_RGB;
  if (type == 0) {
    info.colors[1] = RGBQUAD{255, 255, 255, 0};
  } else if (type == 1) {
    for (int i = 0; i < 256; ++i) {
      const BYTE v = static_cast<BYTE>(i);
      info.colors[i] = RGBQUAD{v, v, v, 0};
    }
  } else if (bits == 16) {
    DWORD* masks = reinterpret_cast<DWORD*>(info.colors);
    if (type == 4) masks[0] = 0x7C00, masks[1] = 0x3E0, masks[2] = 0x1F;
    else masks[0] = 0xF800, masks[1] = 0x7E0, masks[2] = 0x1F;
  }
  const BITMAPINFO* bmi = reinterpret_cast<const BITMAPINFO*>(&info);
  const void* pixels = packed.data();

  HPALETTE oldPalette = nullptr;
  const bool palette = (GetDeviceCaps(m_hDC, RASTERCAPS) & RC_PALETTE) != 0;
  if (palette) {
    oldPalette = SelectPalette(m_hDC, PaletteFor(type == 1), FALSE);
    RealizePalette(m_hDC);
  }
  POINT origin{0, 0};
  SetViewportOrgEx(m_hDC, x, y, &origin);
  const int drawWidth = mirel::draw::SaturateToInt(width * zoomX);
  const int drawHeight = mirel::draw::SaturateToInt(height * zoomY);
  if (opacity >= 1.0 && zoomX == 1.0f && zoomY == 1.0f) {
    SetDIBitsToDevice(m_hDC, 0, 0, static_cast<DWORD>(width), static_cast<DWORD>(height), 0, 0, 0,
                      static_cast<UINT>(height), pixels, bmi, DIB_RGB_COLORS);
  } else if (opacity >= 1.0) {
    SetStretchBltMode(m_hDC, COLORONCOLOR);
    StretchDIBits(m_hDC, 0, 0, drawWidth, drawHeight, 0, 0, width, height, pixels, bmi, DIB_RGB_COLORS, SRCCOPY);
  } else {
    HDC memory = CreateCompatibleDC(m_hDC);
    void* dibBits = nullptr;
    HBITMAP dib = CreateDIBSection(m_hDC, bmi, DIB_RGB_COLORS, &dibBits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, dib);
    SetDIBits(memory, dib, 0, static_cast<UINT>(height), pixels, bmi, DIB_RGB_COLORS);
    BLENDFUNCTION blend{AC_SRC_OVER, 0, static_cast<BYTE>(mirel::draw::SaturateToInt(opacity * 255)), 0};
    AlphaBlend(m_hDC, 0, 0, drawWidth, drawHeight, memory, 0, 0, width, height, blend);
    SelectObject(memory, old);
    DeleteObject(dib);
    DeleteDC(memory);
  }
  SetViewportOrgEx(m_hDC, origin.x, origin.y, nullptr);
  if (palette) SelectPalette(m_hDC, oldPalette, FALSE);
}

}  // namespace Corvane

// ---------------------------------------------------------------- HDC forms

namespace {
// The HDC forms draw through an adapter made for the call.
template <class V>
void DrawOnDevice(const V& vector, HDC hdc, float a, float b, float c, float d) {
  const auto adapter = std::make_unique<Corvane::GDIDrawAdapter>(hdc);
  vector.Draw(adapter.get(), a, b, c, d);
}
}  // namespace

void EPathVector::Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const {
  DrawOnDevice(*this, hdc, zoomX, zoomY, panX, panY);
}
void EBW8PathVector::Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const {
  DrawOnDevice(*this, hdc, zoomX, zoomY, panX, panY);
}
void EBW16PathVector::Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const {
  DrawOnDevice(*this, hdc, zoomX, zoomY, panX, panY);
}
void EC24PathVector::Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const {
  DrawOnDevice(*this, hdc, zoomX, zoomY, panX, panY);
}

void EBWHistogramVector::Draw(HDC hdc, float x, float y, float width, float height) const {
  DrawOnDevice(*this, hdc, x, y, width, height);
}

#endif  // _WIN32
