// RasterDrawAdapter: draws into the pixels of an EROI<EC24>.
//
// Every operation clips to the ROI and leaves the pixels outside it, and
// the rest of the image, untouched; a null or void ROI draws nothing. Lines
// and outlines are one pixel wide and opaque; DrawPixel and DrawImage blend
// with their opacity. The shapes, exactly:
//
//   lines       the integer walk of draw_adapter.h, both ends included: the
//               major axis (x on a tie) advances one pixel a step and the
//               minor one after floor((major / 2 + k * minor) / major) steps
//   rectangles  the border of the box; a fill covers the pixels inside it
//   ellipses    the pixels whose centres lie inside the ellipse of the box's
//               centre with half-axes half the box plus half a pixel (on an
//               axis of an even number of pixels the two halves are moved
//               half a pixel apart, so that the region touches every side of
//               the box); the outline is those with a 4-neighbour outside,
//               the fill the rest
//   arcs        the outline pixels whose angle on the ellipse (atan2 of the
//               offsets from the centre over the half-axes) lies on the arc
//   polygons    points truncated to integers, joined by lines, the last to
//               the first; a fill covers the pixel centres inside by the
//               even-odd rule (a pixel on a left or upper edge is inside,
//               on a right or lower edge outside), then the outline goes on top
//   text        the built-in font of portable_draw_adapter.h in the text box;
//               only the glyphs' pixels are set
//   images      nearest neighbour: destination pixel (i, j) of the
//               trunc(width * zoom x) by trunc(height * zoom y) picture takes
//               source pixel (i * width / trunc(width * zoom x), j * height /
//               trunc(height * zoom y)), in integers
#ifndef MIREL_VECTOR_DRAW_RASTER_DRAW_ADAPTER_H_
#define MIREL_VECTOR_DRAW_RASTER_DRAW_ADAPTER_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/vector/draw/portable_draw_adapter.h"

// Keeps the name DrawText whatever <windows.h> made of it (see draw_adapter.h).
#if defined(_WIN32) && defined(DrawText)
#pragma push_macro("DrawText")
#undef DrawText
#define MIREL_RASTER_POP_DRAWTEXT
#endif

namespace Corvane {

class MIREL_API RasterDrawAdapter : public PortableDrawAdapter {
 public:
  // The ROI is the caller's and must outlive the adapter.
  explicit RasterDrawAdapter(EROI<EC24>* target, ColorOrder order = ColorOrder::RedGreenBlue);
  ~RasterDrawAdapter() override;

  EROI<EC24>* GetTarget() const { return target_; }

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
  // True when there are pixels to draw on; reads the fast-path switch for
  // the operation at hand.
  bool Usable();
  EC24* Pixel(long long x, long long y) const;
  // Pixels x0 .. x1 of row y, clipped.
  void Span(long long y, long long x0, long long x1, const unsigned char c[3]);
  void Line(int x0, int y0, int x1, int y1, const unsigned char c[3]);
  void Ellipse(int x, int y, int width, int height, const DrawColor* outline, const DrawColor* fill);
  void Polygon(const DrawPointArray& points, const DrawColor* outline, const DrawColor* fill);
  void WriteText(const char* text, int x, int y, const DrawColor& color, const DrawColor* background);

  EROI<EC24>* target_;
  int mmx_ = 0;
};

}  // namespace Corvane

#if defined(MIREL_RASTER_POP_DRAWTEXT)
#undef MIREL_RASTER_POP_DRAWTEXT
#pragma pop_macro("DrawText")
#endif

#endif  // MIREL_VECTOR_DRAW_RASTER_DRAW_ADAPTER_H_
