// Colour filters: each component through the 8-bit filter of the same name.
#include "mirel/filter/color_filters.h"

#include <climits>

#include "mirel/filter/convolution.h"
#include "mirel/filter/preset_filters.h"
#include "mirel/filter/preset_filters_internal.h"
#include "mirel/filter/smoothing.h"
#include "mirel/foundation/color_route_internal.h"
#include "mirel/foundation/frame_internal.h"

namespace mirel {
namespace filter {
namespace {

// One plane per component, filtered in place; a null dst writes src.
template <class Grey>
void OnePlane(const char* label, EROI<EC24>* src, EROI<EC24>* dst, Grey&& grey) {
  Frame frame(label);
  if (!frame.NotVoid(src)) return;
  EROI<EC24>* target = dst != nullptr ? dst : src;
  if (target != src && (!frame.NotVoid(target) || !frame.SameSize(target, src))) return;
  InPlaceByComponent(src, target, grey);
}

// A preset 3x3 filter, row by row on each component.
void Rows3x3(const char* label, EROI<EC24>* src, EROI<EC24>* dst, Preset kind) {
  Frame frame(label);
  if (!frame.NotVoid(src)) return;
  EROI<EC24>* target = dst != nullptr ? dst : src;
  if (target != src && (!frame.NotVoid(target) || !frame.SameSize(target, src))) return;
  PresetByComponent(kind, src, target);
}

// An input and an output plane per component. In place is refused with
// 1413 unless `inPlaceToSrc`, which then writes src.
template <class Grey>
void TwoPlanes(const char* label, const EROI<EC24>* src, EROI<EC24>* dst, bool inPlaceToSrc, EROI<EC24>* self,
               Grey&& grey) {
  Frame frame(label);
  if (!frame.NotVoid(src)) return;
  EROI<EC24>* target = dst;
  if (dst == nullptr || SamePixels(src, dst)) {
    if (!frame.Require(inPlaceToSrc, E_ERROR_SAME_IMAGE)) return;
    target = self;
  }
  if (!frame.NotVoid(target) || !frame.SameSize(target, src)) return;
  ByComponent(src, target, grey);
}

}  // namespace
}  // namespace filter
}  // namespace mirel

// Each component filtered as the 8-bit filter does in place. The preset
// filters see only three rows at a time, so they run row by row on all
// three components instead of through whole planes; the bytes are the same.
#define MIREL_COLOR_PRESET(Name, Kind)                                                          \
  void Name(EROI<EC24>* src, EROI<EC24>* dst) {                                                 \
    mirel::filter::Rows3x3(#Name " ( C24)", src, dst, mirel::filter::Preset::Kind);              \
  }
MIREL_COLOR_PRESET(ImgConvolHighpass1, kHighpass1)
MIREL_COLOR_PRESET(ImgConvolHighpass2, kHighpass2)
MIREL_COLOR_PRESET(ImgConvolLowpass1, kLowpass1)
MIREL_COLOR_PRESET(ImgConvolLowpass2, kLowpass2)
MIREL_COLOR_PRESET(ImgConvolLowpass3, kLowpass3)
MIREL_COLOR_PRESET(ImgConvolSobelX, kSobelX)
MIREL_COLOR_PRESET(ImgConvolSobelY, kSobelY)
MIREL_COLOR_PRESET(ImgConvolSobel, kSobel)
MIREL_COLOR_PRESET(ImgConvolPrewittX, kPrewittX)
MIREL_COLOR_PRESET(ImgConvolPrewittY, kPrewittY)
MIREL_COLOR_PRESET(ImgConvolPrewitt, kPrewitt)
MIREL_COLOR_PRESET(ImgConvolGradientX, kGradientX)
MIREL_COLOR_PRESET(ImgConvolGradientY, kGradientY)
MIREL_COLOR_PRESET(ImgConvolGradient, kGradient)
MIREL_COLOR_PRESET(ImgConvolLaplacianX, kLaplacianX)
MIREL_COLOR_PRESET(ImgConvolLaplacianY, kLaplacianY)
MIREL_COLOR_PRESET(ImgConvolLaplacian4, kLaplacian4)
MIREL_COLOR_PRESET(ImgConvolLaplacian8, kLaplacian8)
#undef MIREL_COLOR_PRESET

// A single pass (a half-width of 1 and one of at most 1) is one preset
// filter; more passes go through whole planes.
void ImgConvolGaussian(EROI<EC24>* src, EROI<EC24>* dst, unsigned int halfX, unsigned int halfY) {
  using mirel::filter::Preset;
  const char* label = "ImgConvolGaussian ( C24)";
  if (halfY == UINT_MAX) halfY = halfX;
  if (halfX <= 1 && halfY <= 1 && (halfX | halfY) != 0) {
    mirel::filter::Rows3x3(label, src, dst,
                           halfX == 0 ? Preset::kGaussianY : halfY == 0 ? Preset::kGaussianX : Preset::kLowpass3);
    return;
  }
  mirel::filter::OnePlane(label, src, dst, [&](EROI<EBW8>* p) { ImgConvolGaussian(p, nullptr, halfX, halfY); });
}

void ImgConvolUniform(EROI<EC24>* src, EROI<EC24>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::TwoPlanes("ImgConvolUniform ( C24)", src, dst, true, src,
                           [&](const EROI<EBW8>* in, EROI<EBW8>* out) {
                             // The input plane is a temporary of the route's own.
                             ImgConvolUniform(const_cast<EROI<EBW8>*>(in), out, halfX, halfY);
                           });
}

void ImgConvolKernel(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel) {
  mirel::filter::TwoPlanes("ImgConvolKernel ( C24)", src, dst, false, nullptr,
                           [&](const EROI<EBW8>* in, EROI<EBW8>* out) { ImgConvolKernel(in, out, kernel); });
}

void ImgConvolSymmetricKernel(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel) {
  mirel::filter::TwoPlanes("ImgConvolSymmetricKernel ( C24)", src, dst, false, nullptr,
                           [&](const EROI<EBW8>* in, EROI<EBW8>* out) { ImgConvolSymmetricKernel(in, out, kernel); });
}

void ImgConvolRoberts(const EROI<EC24>* src, EROI<EC24>* dst) {
  mirel::filter::TwoPlanes("ImgConvolRoberts ( C24)", src, dst, false, nullptr,
                           [&](const EROI<EBW8>* in, EROI<EBW8>* out) {
                             ImgConvolRoberts(const_cast<EROI<EBW8>*>(in), out);
                           });
}

// Const sources: the same filters, never in place (see the header).
#define MIREL_CONST_SOURCE(Name) \
  void Name(const EROI<EC24>* s, EROI<EC24>* d) { Name(mirel::ReadOnlySource(s, d), d); }
MIREL_PRESET_FILTER_NAMES(MIREL_CONST_SOURCE)
#undef MIREL_CONST_SOURCE
void ImgConvolGaussian(const EROI<EC24>* s, EROI<EC24>* d, unsigned int halfX, unsigned int halfY) {
  ImgConvolGaussian(mirel::ReadOnlySource(s, d), d, halfX, halfY);
}
void ImgConvolUniform(const EROI<EC24>* s, EROI<EC24>* d, unsigned int halfX, unsigned int halfY) {
  ImgConvolUniform(mirel::ReadOnlySource(s, d), d, halfX, halfY);
}
