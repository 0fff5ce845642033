// GDIDrawAdapter: the drawing adapter over a Windows GDI device context.
// Built on Windows only; elsewhere this header declares nothing.
//
// The adapter holds the device context it was made on and owns nothing
// else; it lives no longer than the context. Each operation saves what it
// selects into the context and restores it before returning, and deletes
// the pens, brushes, fonts and bitmaps it made. GDI results are not checked.
//
//   colours   CurrentColor keeps the pen, brush or text colour selected;
//             any other colour is the COLORREF (blue << 16) | (green << 8) | red
//   lines     MoveToEx and LineTo, then the end pixel, which LineTo leaves out
//   boxes     Rectangle, Ellipse and Arc on (x, y, x + width + 1, y + height + 1);
//             frames with the null brush, fills with a solid brush
//   polygons  the points truncated, then Polygon
//   text      10-point "MS Sans Serif" made at each call, drawn transparent
//             and centred by DrawTextA in (x, y, x + w + 4, y + h + 2)
//   images    a device-independent bitmap of a packed copy of the image's
//             rows (only the ROI's pixels are read): SetDIBitsToDevice,
//             StretchDIBits when zoomed, AlphaBlend through a DIB section
//             when the opacity is below 1. 16 and 32-bit grey become 8 bits
//             of their high bytes; a tinted grey image 24 bits. On palette
//             devices a grey palette (8-bit images) or a 6 x 6 x 6 colour
//             cube is made once and kept.
#ifndef MIREL_VECTOR_DRAW_GDI_DRAW_ADAPTER_H_
#define MIREL_VECTOR_DRAW_GDI_DRAW_ADAPTER_H_

#if defined(_WIN32)

#include "mirel/foundation/export.h"
#include "mirel/vector/draw/draw_adapter.h"
#include "mirel/vector/draw/draw_forward.h"

#if defined(DrawText)
#pragma push_macro("DrawText")
#undef DrawText
#define MIREL_GDI_DRAW_ADAPTER_POP_DRAWTEXT
#endif

namespace Corvane {

class MIREL_API GDIDrawAdapter : public DrawAdapter {
 public:
  explicit GDIDrawAdapter(HDC hdc) : m_hDC(hdc) {}
  ~GDIDrawAdapter() override;

  HDC GetHDC() const { return m_hDC; }

  void DrawPixel(int x, int y, const DrawColor& color, double opacity) override;
  void DrawLine(int x0, int y0, int x1, int y1, const DrawColor& color) override;
  void DrawArc(int x, int y, int width, int height, double startAngle, double sweepAngle,
               const DrawColor& color) override;
  void DrawRectangle(int x, int y, int width, int height, const DrawColor& color) override;
  void DrawPolygon(const DrawPointArray& points, const DrawColor& color) override;
  void DrawEllipse(int x, int y, int width, int height, const DrawColor& color) override;
  void FillRectangle(int x, int y, int width, int height, const DrawColor& outline, const DrawColor& fill) override;
  void FillEllipse(int x, int y, int width, int height, const DrawColor& outline, const DrawColor& fill) override;
  void FillPolygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor& fill) override;
  void DrawText(const char* text, int x, int y, const DrawColor& color) override;
  void DrawTextBox(const char* text, int x, int y, const DrawColor& textColor, const DrawColor& background) override;
  void DrawImage(const EGenericROI* image, int x, int y, float zoomX, float zoomY, double opacity,
                 const DrawColor& tint) override;
  DrawSize MeasureText(const char* text) override;
  int GetPenWidth() override;

 private:
  HDC m_hDC;
};

}  // namespace Corvane

#if defined(MIREL_GDI_DRAW_ADAPTER_POP_DRAWTEXT)
#undef MIREL_GDI_DRAW_ADAPTER_POP_DRAWTEXT
#pragma pop_macro("DrawText")
#endif

#endif  // _WIN32

#endif  // MIREL_VECTOR_DRAW_GDI_DRAW_ADAPTER_H_
