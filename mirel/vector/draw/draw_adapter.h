// DrawAdapter: an abstract drawing surface.
//
// Path vectors, histograms and plots draw themselves through a DrawAdapter,
// so that nothing else in the library depends on a platform. Three adapters
// come with the library:
//
//   GDIDrawAdapter     a Windows GDI device context (Windows builds only)
//   RasterDrawAdapter  pixels of an EROI<EC24>           (raster_draw_adapter.h)
//   SvgDrawAdapter     an SVG document, as text or file  (svg_draw_adapter.h)
//
// Coordinates are device pixels, x to the right and y downwards. A box
// (x, y, width, height) covers the pixels x .. x + width and y .. y + height,
// both ends included, as a GDI rectangle (x, y, x + width + 1, y + height + 1)
// does. Angles are in radians; an angle grows from the x axis towards the y
// axis, that is clockwise on the screen.
//
// DrawColor is three signed words, red, green and blue, each 0 to 255. The
// record CurrentColor (-1, -1, -1) means "what the surface has selected": its
// current pen for lines and frames, brush for fills, text colour for text and
// background colour for text boxes. Colours compare word by word. A surface
// takes the low byte of each word.
#ifndef MIREL_VECTOR_DRAW_DRAW_ADAPTER_H_
#define MIREL_VECTOR_DRAW_DRAW_ADAPTER_H_

#include <initializer_list>
#include <vector>

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/vector/draw/draw_forward.h"

// <windows.h> makes DrawText a macro for DrawTextA or DrawTextW. The class
// below keeps the name DrawText whatever was included before it, and gives
// the two macro spellings as plain forwarders so that calls still compile.
#if defined(_WIN32) && defined(DrawText)
#pragma push_macro("DrawText")
#undef DrawText
#define MIREL_DRAW_ADAPTER_POP_DRAWTEXT
#endif

namespace Corvane {

struct DrawColor {
  int m_n32Red;
  int m_n32Green;
  int m_n32Blue;
  constexpr DrawColor() : m_n32Red(0), m_n32Green(0), m_n32Blue(0) {}
  constexpr DrawColor(int red, int green, int blue) : m_n32Red(red), m_n32Green(green), m_n32Blue(blue) {}
};
static_assert(sizeof(DrawColor) == 12, "DrawColor is three 32-bit words");

constexpr bool operator==(const DrawColor& a, const DrawColor& b) {
  return a.m_n32Red == b.m_n32Red && a.m_n32Green == b.m_n32Green && a.m_n32Blue == b.m_n32Blue;
}
constexpr bool operator!=(const DrawColor& a, const DrawColor& b) { return !(a == b); }

// Stands for the colour the surface has selected; see above.
inline constexpr DrawColor CurrentColor(-1, -1, -1);

struct DrawPoint {
  double m_f64X;
  double m_f64Y;
};

// Width and height of a text, as MeasureText gives them.
struct DrawSize {
  double m_f64Width;
  double m_f64Height;
};

// The points of a polygon. Reading a point at or past the count throws
// Corvane::Talmeer::Exception(E_ERROR_INDEX_OUT_OF_RANGE), so an adapter that
// walks a polygon wrongly fails loudly instead of reading stray memory.
class DrawPointArray {
 public:
  DrawPointArray() = default;
  DrawPointArray(std::initializer_list<DrawPoint> points) : points_(points) {}

  void Add(double x, double y) { points_.push_back(DrawPoint{x, y}); }
  void Clear() { points_.clear(); }
  unsigned int GetCount() const { return static_cast<unsigned int>(points_.size()); }

  const DrawPoint& operator[](unsigned int i) const {
    if (i >= points_.size()) throw Talmeer::Exception(E_ERROR_INDEX_OUT_OF_RANGE);
    return points_[i];
  }
  DrawPoint& operator[](unsigned int i) {
    if (i >= points_.size()) throw Talmeer::Exception(E_ERROR_INDEX_OUT_OF_RANGE);
    return points_[i];
  }

 private:
  std::vector<DrawPoint> points_;
};

// The fourteen drawing operations, in the order of their slots; the
// destructor comes after them.
class MIREL_API DrawAdapter {
 public:
  DrawAdapter() = default;
  DrawAdapter(const DrawAdapter&) = default;
  DrawAdapter& operator=(const DrawAdapter&) = default;

  // One pixel, blended over what is there: each byte becomes
  // trunc(new * opacity + old * (1 - opacity)), opacity clamped to [0, 1].
  virtual void DrawPixel(int x, int y, const DrawColor& color, double opacity) = 0;
  // A line, both end points included.
  virtual void DrawLine(int x0, int y0, int x1, int y1, const DrawColor& color) = 0;
  // The part of the outline of the ellipse in the box that runs from the
  // angle `startAngle` over `sweepAngle` (either sign).
  virtual void DrawArc(int x, int y, int width, int height, double startAngle, double sweepAngle,
                       const DrawColor& color) = 0;
  virtual void DrawRectangle(int x, int y, int width, int height, const DrawColor& color) = 0;
  // The closed outline through the points, each truncated to integers.
  virtual void DrawPolygon(const DrawPointArray& points, const DrawColor& color) = 0;
  virtual void DrawEllipse(int x, int y, int width, int height, const DrawColor& color) = 0;
  virtual void FillRectangle(int x, int y, int width, int height, const DrawColor& outline,
                             const DrawColor& fill) = 0;
  virtual void FillEllipse(int x, int y, int width, int height, const DrawColor& outline, const DrawColor& fill) = 0;
  // The inside by the even-odd rule, then the outline.
  virtual void FillPolygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor& fill) = 0;
  // Text in the box (x, y, x + w + 4, y + h + 2), w and h from MeasureText,
  // each line centred; line feeds separate lines. The background shows
  // through.
  virtual void DrawText(const char* text, int x, int y, const DrawColor& color) = 0;
  // The same over that box filled with `background`.
  virtual void DrawTextBox(const char* text, int x, int y, const DrawColor& textColor,
                           const DrawColor& background) = 0;
  // An image of any pixel type with its top left corner at (x, y), scaled by
  // the zooms (zoom y 0 takes zoom x) and blended with `opacity` (above 1 is
  // 1). A grey image is tinted with `tint` when the tint is not CurrentColor
  // and the opacity is not 1: each component becomes
  // trunc(grey * tint component * 0.003921569). Colour images are not tinted.
  virtual void DrawImage(const EGenericROI* image, int x, int y, float zoomX, float zoomY, double opacity,
                         const DrawColor& tint) = 0;
  // The largest width and the summed height of the non-empty lines.
  virtual DrawSize MeasureText(const char* text) = 0;
  virtual int GetPenWidth() = 0;

  virtual ~DrawAdapter();

#if defined(_WIN32)
  void DrawTextA(const char* text, int x, int y, const DrawColor& color) { DrawText(text, x, y, color); }
  void DrawTextW(const char* text, int x, int y, const DrawColor& color) { DrawText(text, x, y, color); }
#endif
};

}  // namespace Corvane

#if defined(MIREL_DRAW_ADAPTER_POP_DRAWTEXT)
#undef MIREL_DRAW_ADAPTER_POP_DRAWTEXT
#pragma pop_macro("DrawText")
#endif

#endif  // MIREL_VECTOR_DRAW_DRAW_ADAPTER_H_
