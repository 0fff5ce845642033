// Internal pieces of the preset 3x3 filters: the filter kinds, each kind's
// formula written once over an arithmetic layer, and the block routines of
// each instruction set.
//
// A formula sees the 3x3 window as nine values, t0 t1 t2 (row above),
// m0 m1 m2 (current row), b0 b1 b2 (row below), column x - 1, x, x + 1. The
// same template is instantiated with plain ints for the pixel-by-pixel code
// and with vectors of 16-bit lanes for the blocks: every intermediate value
// of every formula lies in -2040 .. 32130, or below 65536 where it is only
// shifted right logically, so both give the same numbers. On 16-bit pixels
// the values lie within -524280 .. 8257410, and the blocks take 32-bit lanes.
#ifndef MIREL_FILTER_PRESET_FILTERS_INTERNAL_H_
#define MIREL_FILTER_PRESET_FILTERS_INTERNAL_H_

#include <cstdint>
#include <type_traits>

#include "mirel/foundation/image.h"

namespace mirel {
namespace filter {

enum class Preset : int {
  kSobelX, kSobelY, kSobel, kPrewittX, kPrewittY, kPrewitt,
  kGradientX, kGradientY, kGradient, kLaplacianX, kLaplacianY, kLaplacian4, kLaplacian8,
  kHighpass1, kHighpass2, kLowpass1, kLowpass2, kLowpass3,
  kGaussianX, kGaussianY, kUniformX, kUniformY,
  // The extremes of the window (square, horizontal and vertical 3-point),
  // which the colour forms of the 3x3 morphology passes use.
  kMin3x3, kMax3x3, kMinX, kMaxX, kMinY, kMaxY,
};

// The two one-dimensional Laplacians can reach 510: pixel-by-pixel code
// stores the low eight bits, a block saturates at 255. They are the only
// kinds whose blocks and single pixels differ.
constexpr bool SplitsAtBlocks(Preset k) { return k == Preset::kLaplacianX || k == Preset::kLaplacianY; }

template <class V>
struct Window3 {
  V t0, t1, t2, m0, m1, m2, b0, b1, b2;
};

// The value of kind K for one window. O supplies V and Add, Sub, Abs, Cap
// (min with the largest pixel value), Max0, Min, Max, Srl<n> (logical shift
// right) and Mul<k>.
template <Preset K, class O>
inline typename O::V Evaluate(const Window3<typename O::V>& w) {
  using V = typename O::V;
  auto add = [](V a, V b) { return O::Add(a, b); };
  auto sub = [](V a, V b) { return O::Sub(a, b); };
  auto twice = [](V a) { return O::Add(a, a); };
  auto n4 = [&] { return add(add(w.t1, w.b1), add(w.m0, w.m2)); };
  auto corners = [&] { return add(add(w.t0, w.t2), add(w.b0, w.b2)); };
  auto sobelX = [&] { return sub(add(add(w.t2, w.b2), twice(w.m2)), add(add(w.t0, w.b0), twice(w.m0))); };
  auto sobelY = [&] { return sub(add(add(w.b0, w.b2), twice(w.b1)), add(add(w.t0, w.t2), twice(w.t1))); };
  auto prewittX = [&] { return sub(add(add(w.t2, w.m2), w.b2), add(add(w.t0, w.m0), w.b0)); };
  auto prewittY = [&] { return sub(add(add(w.b0, w.b1), w.b2), add(add(w.t0, w.t1), w.t2)); };
  if constexpr (K == Preset::kSobelX) return O::Cap(O::Abs(sobelX()));
  if constexpr (K == Preset::kSobelY) return O::Cap(O::Abs(sobelY()));
  if constexpr (K == Preset::kSobel) return O::Cap(add(O::Abs(sobelX()), O::Abs(sobelY())));
  if constexpr (K == Preset::kPrewittX) return O::Cap(O::Abs(prewittX()));
  if constexpr (K == Preset::kPrewittY) return O::Cap(O::Abs(prewittY()));
  if constexpr (K == Preset::kPrewitt) return O::Cap(add(O::Abs(prewittX()), O::Abs(prewittY())));
  if constexpr (K == Preset::kGradientX) return O::Abs(sub(w.m0, w.m2));
  if constexpr (K == Preset::kGradientY) return O::Abs(sub(w.t1, w.b1));
  if constexpr (K == Preset::kGradient) return O::Cap(add(O::Abs(sub(w.m0, w.m2)), O::Abs(sub(w.t1, w.b1))));
  if constexpr (K == Preset::kLaplacianX) return O::Abs(sub(add(w.m0, w.m2), twice(w.m1)));
  if constexpr (K == Preset::kLaplacianY) return O::Abs(sub(add(w.t1, w.b1), twice(w.m1)));
  if constexpr (K == Preset::kLaplacian4) return O::Cap(O::Abs(sub(n4(), twice(twice(w.m1)))));
  if constexpr (K == Preset::kLaplacian8)
    return O::Cap(O::Abs(sub(add(n4(), corners()), twice(twice(twice(w.m1))))));
  if constexpr (K == Preset::kHighpass1)
    return O::Cap(O::Abs(sub(add(twice(twice(w.m1)), w.m1), n4())));
  if constexpr (K == Preset::kHighpass2)
    return O::Cap(O::Max0(sub(add(twice(twice(twice(w.m1))), w.m1), add(n4(), corners()))));
  if constexpr (K == Preset::kLowpass1)
    return O::template Srl<7>(O::template Mul<14>(add(add(w.m1, n4()), corners())));
  if constexpr (K == Preset::kLowpass2) return O::template Srl<3>(add(n4(), corners()));
  if constexpr (K == Preset::kLowpass3)
    return O::template Srl<4>(add(add(twice(twice(w.m1)), twice(n4())), corners()));
  if constexpr (K == Preset::kGaussianX) return O::template Srl<2>(add(add(w.m0, w.m2), twice(w.m1)));
  if constexpr (K == Preset::kGaussianY) return O::template Srl<2>(add(add(w.t1, w.b1), twice(w.m1)));
  if constexpr (K == Preset::kUniformX)
    return O::template Srl<8>(O::template Mul<85>(add(add(w.m0, w.m1), w.m2)));
  if constexpr (K == Preset::kUniformY)
    return O::template Srl<8>(O::template Mul<85>(add(add(w.t1, w.m1), w.b1)));
  auto row = [](auto f, V a, V b, V c) { return f(f(a, b), c); };
  auto mn = [](V a, V b) { return O::Min(a, b); };
  auto mx = [](V a, V b) { return O::Max(a, b); };
  if constexpr (K == Preset::kMinX) return row(mn, w.m0, w.m1, w.m2);
  if constexpr (K == Preset::kMaxX) return row(mx, w.m0, w.m1, w.m2);
  if constexpr (K == Preset::kMinY) return row(mn, w.t1, w.m1, w.b1);
  if constexpr (K == Preset::kMaxY) return row(mx, w.t1, w.m1, w.b1);
  if constexpr (K == Preset::kMin3x3)
    return row(mn, row(mn, w.t0, w.t1, w.t2), row(mn, w.m0, w.m1, w.m2), row(mn, w.b0, w.b1, w.b2));
  if constexpr (K == Preset::kMax3x3)
    return row(mx, row(mx, w.t0, w.t1, w.t2), row(mx, w.m0, w.m1, w.m2), row(mx, w.b0, w.b1, w.b2));
}

// Calls f(std::integral_constant<Preset, K>{}) for the kind k.
template <class F>
inline void WithPreset(Preset k, F&& f) {
  switch (k) {
#define MIREL_PRESET_CASE(K) \
  case Preset::K: f(std::integral_constant<Preset, Preset::K>{}); break;
    MIREL_PRESET_CASE(kSobelX) MIREL_PRESET_CASE(kSobelY) MIREL_PRESET_CASE(kSobel)
    MIREL_PRESET_CASE(kPrewittX) MIREL_PRESET_CASE(kPrewittY) MIREL_PRESET_CASE(kPrewitt)
    MIREL_PRESET_CASE(kGradientX) MIREL_PRESET_CASE(kGradientY) MIREL_PRESET_CASE(kGradient)
    MIREL_PRESET_CASE(kLaplacianX) MIREL_PRESET_CASE(kLaplacianY) MIREL_PRESET_CASE(kLaplacian4)
    MIREL_PRESET_CASE(kLaplacian8) MIREL_PRESET_CASE(kHighpass1) MIREL_PRESET_CASE(kHighpass2)
    MIREL_PRESET_CASE(kLowpass1) MIREL_PRESET_CASE(kLowpass2) MIREL_PRESET_CASE(kLowpass3)
    MIREL_PRESET_CASE(kGaussianX) MIREL_PRESET_CASE(kGaussianY) MIREL_PRESET_CASE(kUniformX)
    MIREL_PRESET_CASE(kUniformY) MIREL_PRESET_CASE(kMin3x3) MIREL_PRESET_CASE(kMax3x3)
    MIREL_PRESET_CASE(kMinX) MIREL_PRESET_CASE(kMaxX) MIREL_PRESET_CASE(kMinY) MIREL_PRESET_CASE(kMaxY)
#undef MIREL_PRESET_CASE
  }
}

// Computes the outputs x in [x0, x1) of one row of bytes by blocks,
// saturating each at 255, and returns the first x not done (x0 when the
// stretch is shorter than a block). A pixel's neighbours lie `step` bytes
// (1 or 3) to either side, so bytes x0 - step .. x1 - 1 + step of the three
// rows are read and must lie in the row.
using PresetRowFn = int (*)(Preset kind, int step, const std::uint8_t* t, const std::uint8_t* m,
                            const std::uint8_t* b, std::uint8_t* out, int x0, int x1);

// The same on one row of 16-bit pixels (neighbours one pixel away). Every
// output is the pixel code's: values above 65535 (the one-dimensional
// Laplacians reach 131070) keep their low 16 bits.
using PresetRow16Fn = int (*)(Preset kind, const std::uint16_t* t, const std::uint16_t* m,
                              const std::uint16_t* b, std::uint16_t* out, int x0, int x1);

#if defined(MIREL_X86_SIMD)
PresetRowFn PresetRowSse2();
PresetRowFn PresetRowAvx2();
PresetRowFn PresetRowAvx512();
PresetRow16Fn PresetRow16Sse2();
PresetRow16Fn PresetRow16Avx2();
PresetRow16Fn PresetRow16Avx512();
#endif

// The block routine for the calling thread's fast-path setting; null when
// the pixel-by-pixel forms must run.
PresetRowFn ActivePresetRow();
PresetRow16Fn ActivePresetRow16();

// Filters each component of an EC24 image with a preset, giving what the
// in-place form gives on each component's plane (the replicated frame): the
// three components are filtered side by side in the interleaved rows.
// target may be src. False (with 1303 standing) when the row copies of the
// in-place form cannot be had.
bool PresetByComponent(Preset kind, const EROI<EC24>* src, EROI<EC24>* target);

}  // namespace filter
}  // namespace mirel

// The one-dimensional smoothing passes that the any-size filters route to.
// Same contract as the exported preset filters (null dst or dst == src
// filters in place).
void ImgConvolGaussianX(EROI<EBW8>* src, EROI<EBW8>* dst);   // "ImgConvolGaussianX (BW8)"
void ImgConvolGaussianY(EROI<EBW8>* src, EROI<EBW8>* dst);   // "ImgConvolGaussianY (BW8)"
void ImgConvolUniformX(EROI<EBW8>* src, EROI<EBW8>* dst);    // "ImgConvolUniformX (BW8)"
void ConvolUniformY(EROI<EBW8>* src, EROI<EBW8>* dst);       // "ConvolUniformY (BW8)"
void ImgConvolGaussianX(EROI<EBW16>* src, EROI<EBW16>* dst);  // "ImgConvolGaussianX (BW16)"
void ImgConvolGaussianY(EROI<EBW16>* src, EROI<EBW16>* dst);  // "ImgConvolGaussianY (BW16)"
void ImgConvolUniformX(EROI<EBW16>* src, EROI<EBW16>* dst);   // "ImgConvolUniformX (BW16)"
void ConvolUniformY(EROI<EBW16>* src, EROI<EBW16>* dst);      // "ConvolUniformY (BW16)"

// The exported preset filters that have a grey and a colour form, by name,
// for the lists that define a form of each.
#define MIREL_PRESET_FILTER_NAMES(X)                                                                   \
  X(ImgConvolSobelX) X(ImgConvolSobelY) X(ImgConvolSobel) X(ImgConvolPrewittX) X(ImgConvolPrewittY)    \
  X(ImgConvolPrewitt) X(ImgConvolGradientX) X(ImgConvolGradientY) X(ImgConvolGradient)                 \
  X(ImgConvolLaplacianX) X(ImgConvolLaplacianY) X(ImgConvolLaplacian4) X(ImgConvolLaplacian8)          \
  X(ImgConvolHighpass1) X(ImgConvolHighpass2) X(ImgConvolLowpass1) X(ImgConvolLowpass2) X(ImgConvolLowpass3)

#endif  // MIREL_FILTER_PRESET_FILTERS_INTERNAL_H_
