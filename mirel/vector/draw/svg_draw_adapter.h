// SvgDrawAdapter: records drawing operations as an SVG document.
//
// The document is width by height user units, one unit a device pixel, and
// shapes sit where the raster adapter puts its pixels: pixel (x, y) is the
// unit square from (x, y), lines and frames run through pixel centres, and
// a box (x, y, width, height) is framed from the centre of pixel (x, y) to
// that of pixel (x + width, y + height). Lines are one unit wide with
// square caps, so that both end pixels are covered. Text uses the layout of
// the built-in font (see portable_draw_adapter.h) in a monospace face of 10
// units a line times the text scale; bytes outside printable ASCII show as
// '?'. Images are embedded as 24-bit BMP data, drawn with square pixels. An
// arc of sweep 0 draws nothing, one of a whole turn or more is the whole
// ellipse.
//
// GetDocument gives the text of the document; Save writes it to a file:
// 1102 when the file cannot be opened, 1104 when writing fails, 1106 when
// closing fails, label "SvgDrawAdapter::Save".
#ifndef MIREL_VECTOR_DRAW_SVG_DRAW_ADAPTER_H_
#define MIREL_VECTOR_DRAW_SVG_DRAW_ADAPTER_H_

#include <string>

#include "mirel/foundation/export.h"
#include "mirel/vector/draw/portable_draw_adapter.h"

// Keeps the name DrawText whatever <windows.h> made of it (see draw_adapter.h).
#if defined(_WIN32) && defined(DrawText)
#pragma push_macro("DrawText")
#undef DrawText
#define MIREL_SVG_POP_DRAWTEXT
#endif

namespace Corvane {

class MIREL_API SvgDrawAdapter : public PortableDrawAdapter {
 public:
  // Negative sizes count as 0.
  SvgDrawAdapter(int width, int height);
  ~SvgDrawAdapter() override;

  int GetWidth() const { return width_; }
  int GetHeight() const { return height_; }
  std::string GetDocument() const;
  void Save(const char* path) const;
  // Forgets what was drawn.
  void Clear() { body_.clear(); }

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

 private:
  // "#rrggbb" of a colour as the surface shows it.
  std::string Hex(const DrawColor& color) const;
  void Rectangle(int x, int y, int width, int height, const DrawColor& outline, const DrawColor* fill);
  void Ellipse(int x, int y, int width, int height, const DrawColor& outline, const DrawColor* fill);
  void Polygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor* fill);
  void WriteText(const char* text, int x, int y, const DrawColor& color, const DrawColor* background);

  int width_;
  int height_;
  std::string body_;
};

}  // namespace Corvane

#if defined(MIREL_SVG_POP_DRAWTEXT)
#undef MIREL_SVG_POP_DRAWTEXT
#pragma pop_macro("DrawText")
#endif

#endif  // MIREL_VECTOR_DRAW_SVG_DRAW_ADAPTER_H_
