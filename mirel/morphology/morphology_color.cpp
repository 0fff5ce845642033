// Colour morphology: the 8-bit operation of the same name on each of the
// three components by itself.
#include <cstdint>

#include "mirel/foundation/color_route_internal.h"
#include "mirel/filter/preset_filters_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/morphology.h"

namespace {

using mirel::Frame;

// The source, and a separate destination's size. The target is the
// destination, or the source when there is none.
bool Checks(Frame& frame, EROI<EC24>* src, EROI<EC24>* dst) {
  if (!frame.NotVoid(src)) return false;
  if (dst != nullptr && dst != src && (!frame.NotVoid(dst) || !frame.SameSize(src, dst))) return false;
  return true;
}

// A single 3x3, horizontal or vertical pass (half-sizes of at most 1, not
// both 0) is the extreme over a window that the 3x3 row engine of the
// filters computes on the interleaved rows, the three components side by
// side: the same bytes as a pass on each component's plane, without moving
// the planes. Extremes over a window clipped to the ROI equal those over a
// window whose outside positions repeat the nearest ROI pixel.
bool SinglePass(const char* label, EROI<EC24>* src, EROI<EC24>* dst, unsigned int hw, unsigned int hh,
                bool dilate) {
  using mirel::filter::Preset;
  if (hh == ~0u) hh = hw;
  if (hw > 1 || hh > 1 || (hw | hh) == 0) return false;
  Frame frame(label);
  if (!Checks(frame, src, dst)) return true;
  const Preset kind = hw == 0   ? (dilate ? Preset::kMaxY : Preset::kMinY)
                      : hh == 0 ? (dilate ? Preset::kMaxX : Preset::kMinX)
                                : (dilate ? Preset::kMax3x3 : Preset::kMin3x3);
  mirel::filter::PresetByComponent(kind, src, dst != nullptr ? dst : src);
  return true;
}

// The box and disk forms: each component in place in one plane.
template <class Grey>
void PerComponent(const char* label, EROI<EC24>* src, EROI<EC24>* dst, Grey&& grey) {
  Frame frame(label);
  if (!Checks(frame, src, dst)) return;
  mirel::InPlaceByComponent(src, dst != nullptr ? dst : src, grey);
}

// The older forms: each component from an input plane into an output plane,
// with the border's bytes taken in reverse order (component k gets byte
// 2 - k). With no pass to run nothing is written.
template <class Grey>
void PerComponentWithBorder(const char* label, EROI<EC24>* src, EROI<EC24>* dst, int passes, Grey&& grey) {
  Frame frame(label);
  if (!Checks(frame, src, dst) || passes <= 0) return;
  int component = 0;
  mirel::ByComponent(src, dst != nullptr ? dst : src, [&](const EROI<EBW8>* in, EROI<EBW8>* out) {
    grey(const_cast<EROI<EBW8>*>(in), out, 2 - component);
    ++component;
  });
}

}  // namespace

#define MIREL_COLOR_BOX(NAME)                                                                          \
  void NAME(EROI<EC24>* src, EROI<EC24>* dst, unsigned int hw, unsigned int hh) {                      \
    PerComponent(#NAME " ( C24)", src, dst, [&](EROI<EBW8>* plane) { NAME(plane, nullptr, hw, hh); }); \
  }
void ImgErodeBox(EROI<EC24>* src, EROI<EC24>* dst, unsigned int hw, unsigned int hh) {
  if (SinglePass("ImgErodeBox ( C24)", src, dst, hw, hh, false)) return;
  PerComponent("ImgErodeBox ( C24)", src, dst, [&](EROI<EBW8>* plane) { ImgErodeBox(plane, nullptr, hw, hh); });
}
void ImgDilateBox(EROI<EC24>* src, EROI<EC24>* dst, unsigned int hw, unsigned int hh) {
  if (SinglePass("ImgDilateBox ( C24)", src, dst, hw, hh, true)) return;
  PerComponent("ImgDilateBox ( C24)", src, dst, [&](EROI<EBW8>* plane) { ImgDilateBox(plane, nullptr, hw, hh); });
}
#define MIREL_COLOR_DISK(NAME)                                                                      \
  void NAME(EROI<EC24>* src, EROI<EC24>* dst, unsigned int r) {                                     \
    PerComponent(#NAME " ( C24)", src, dst, [&](EROI<EBW8>* plane) { NAME(plane, nullptr, r); });   \
  }
MIREL_COLOR_BOX(ImgOpenBox)
MIREL_COLOR_BOX(ImgCloseBox)
MIREL_COLOR_BOX(ImgWhiteTopHatBox)
MIREL_COLOR_BOX(ImgBlackTopHatBox)
MIREL_COLOR_BOX(ImgMorphoGradientBox)
MIREL_COLOR_DISK(ImgErodeDisk)
MIREL_COLOR_DISK(ImgDilateDisk)
MIREL_COLOR_DISK(ImgOpenDisk)
MIREL_COLOR_DISK(ImgCloseDisk)
MIREL_COLOR_DISK(ImgWhiteTopHatDisk)
MIREL_COLOR_DISK(ImgBlackTopHatDisk)
MIREL_COLOR_DISK(ImgMorphoGradientDisk)
#undef MIREL_COLOR_BOX
#undef MIREL_COLOR_DISK

void ImgErode(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 border) {
  PerComponentWithBorder("ImgErode ( C24)", src, dst, passes, [&](EROI<EBW8>* in, EROI<EBW8>* out, int byte) {
    ImgErode(in, out, passes, border.c[byte]);
  });
}
void ImgDilate(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 border) {
  PerComponentWithBorder("ImgDilate ( C24)", src, dst, passes, [&](EROI<EBW8>* in, EROI<EBW8>* out, int byte) {
    ImgDilate(in, out, passes, border.c[byte]);
  });
}
void ImgOpen(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 first, EC24 second) {
  PerComponentWithBorder("ImgOpen ( C24)", src, dst, passes, [&](EROI<EBW8>* in, EROI<EBW8>* out, int byte) {
    ImgOpen(in, out, passes, first.c[byte], second.c[byte]);
  });
}
void ImgClose(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 first, EC24 second) {
  PerComponentWithBorder("ImgClose ( C24)", src, dst, passes, [&](EROI<EBW8>* in, EROI<EBW8>* out, int byte) {
    ImgClose(in, out, passes, first.c[byte], second.c[byte]);
  });
}
void ImgWhiteTopHat(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 first, EC24 second) {
  PerComponentWithBorder("ImgWhiteTopHat ( C24)", src, dst, passes,
                         [&](EROI<EBW8>* in, EROI<EBW8>* out, int byte) {
                           ImgWhiteTopHat(in, out, passes, first.c[byte], second.c[byte]);
                         });
}
void ImgBlackTopHat(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 first, EC24 second) {
  PerComponentWithBorder("ImgBlackTopHat ( C24)", src, dst, passes,
                         [&](EROI<EBW8>* in, EROI<EBW8>* out, int byte) {
                           ImgBlackTopHat(in, out, passes, first.c[byte], second.c[byte]);
                         });
}
