#include "mirel/vector/draw/portable_draw_adapter.h"

#include "mirel/vector/draw/draw_internal.h"

namespace Corvane {

DrawAdapter::~DrawAdapter() = default;

DrawSize PortableDrawAdapter::MeasureText(const char* text) {
  return mirel::draw::MeasureLines(mirel::draw::SplitLines(text), scale_);
}

int PortableDrawAdapter::GetPenWidth() { return 1; }

void PortableDrawAdapter::Components(const DrawColor& color, unsigned char out[3]) const {
  const mirel::draw::Rgb rgb = mirel::draw::BytesOf(color);
  const bool redFirst = order_ == ColorOrder::RedGreenBlue;
  out[0] = rgb.c[redFirst ? 0 : 2];
  out[1] = rgb.c[1];
  out[2] = rgb.c[redFirst ? 2 : 0];
}

}  // namespace Corvane
