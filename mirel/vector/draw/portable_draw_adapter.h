// PortableDrawAdapter: what the drawing adapters that need no platform share.
//
// It keeps the colours that CurrentColor stands for (pen, brush, text and
// background, black, white, black and white to begin with, as a fresh GDI
// device context has them), the order in which a surface's 24-bit pixels
// hold red, green and blue, and the built-in text font: glyphs of 5 by 8
// pixels in cells of 6 by 10, printable ASCII only (any other byte shows as
// '?'), magnified by a whole text scale. MeasureText gives the cells of the
// longest line times the scale across, and 10 times the scale for each
// non-empty line down. Pens are one pixel wide.
#ifndef MIREL_VECTOR_DRAW_PORTABLE_DRAW_ADAPTER_H_
#define MIREL_VECTOR_DRAW_PORTABLE_DRAW_ADAPTER_H_

#include "mirel/foundation/export.h"
#include "mirel/vector/draw/draw_adapter.h"

namespace Corvane {

// Which component of an EC24 pixel holds red: component 0 (as in PPM and PNG
// files) or component 2 (as in Windows bitmaps). Colour images drawn on a
// surface are taken in the same order as the surface.
enum class ColorOrder { RedGreenBlue, BlueGreenRed };

class MIREL_API PortableDrawAdapter : public DrawAdapter {
 public:
  // Setting CurrentColor leaves the selection as it is.
  void SetPenColor(const DrawColor& color) { Select(pen_, color); }
  void SetBrushColor(const DrawColor& color) { Select(brush_, color); }
  void SetTextColor(const DrawColor& color) { Select(text_, color); }
  void SetBackgroundColor(const DrawColor& color) { Select(background_, color); }
  const DrawColor& GetPenColor() const { return pen_; }
  const DrawColor& GetBrushColor() const { return brush_; }
  const DrawColor& GetTextColor() const { return text_; }
  const DrawColor& GetBackgroundColor() const { return background_; }

  // 1 to 16; other values are held to that range.
  void SetTextScale(int scale) { scale_ = scale < 1 ? 1 : scale > 16 ? 16 : scale; }
  int GetTextScale() const { return scale_; }

  void SetColorOrder(ColorOrder order) { order_ = order; }
  ColorOrder GetColorOrder() const { return order_; }

  DrawSize MeasureText(const char* text) override;
  int GetPenWidth() override;

 protected:
  DrawColor Pen(const DrawColor& c) const { return c == CurrentColor ? pen_ : c; }
  DrawColor Brush(const DrawColor& c) const { return c == CurrentColor ? brush_ : c; }
  DrawColor Text(const DrawColor& c) const { return c == CurrentColor ? text_ : c; }
  DrawColor Background(const DrawColor& c) const { return c == CurrentColor ? background_ : c; }
  // The colour's bytes placed as components 0, 1, 2 of a surface pixel.
  void Components(const DrawColor& color, unsigned char out[3]) const;

 private:
  static void Select(DrawColor& slot, const DrawColor& color) {
    if (color != CurrentColor) slot = color;
  }

  DrawColor pen_{0, 0, 0};
  DrawColor brush_{255, 255, 255};
  DrawColor text_{0, 0, 0};
  DrawColor background_{255, 255, 255};
  int scale_ = 1;
  ColorOrder order_ = ColorOrder::RedGreenBlue;
};

}  // namespace Corvane

#endif  // MIREL_VECTOR_DRAW_PORTABLE_DRAW_ADAPTER_H_
