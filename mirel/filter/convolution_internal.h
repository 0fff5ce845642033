// Internal pieces of the 8-bit convolutions: the fixed-point routines that
// other filter families call, and the block routines of each instruction set.
#ifndef MIREL_FILTER_CONVOLUTION_INTERNAL_H_
#define MIREL_FILTER_CONVOLUTION_INTERNAL_H_

#include <cstdint>
#include <type_traits>

#include "mirel/filter/kernel.h"
#include "mirel/foundation/image.h"

namespace mirel {
namespace filter {

// Fixed-point routines with 15 fraction bits, square windows of 3, 5 and 7,
// on the whole kernel (ConvolKernelNxN) or on one octant of a kernel that is
// symmetric in both axes and the diagonal (ConvolKernelSNxSN). Each checks
// src, dst and the kernel size and traces its own label on failure.
void ConvolKernel3x3(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
void ConvolKernel5x5(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
void ConvolKernel7x7(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
void ConvolKernelS3xS3(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
void ConvolKernelS5xS5(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
void ConvolKernelS7xS7(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
// The same on 16-bit pixels, clamped to 0..65535.
void ConvolKernel3x3(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);
void ConvolKernel5x5(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);
void ConvolKernel7x7(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);
void ConvolKernelS3xS3(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);
void ConvolKernelS5xS5(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);
void ConvolKernelS7xS7(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);

// The grey pixel types that the filters take: the raw pixel and the largest
// value, at which results are capped.
template <class Pix>
struct GreyOf;
template <>
struct GreyOf<EBW8> {
  using P = std::uint8_t;
  static constexpr int kMax = 255;
};
template <>
struct GreyOf<EBW16> {
  using P = std::uint16_t;
  static constexpr int kMax = 65535;
};

// ---------------------------------------------------------------- windows

// v clamped to [lo, hi].
inline int Clamp(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

// Points rows[0] .. rows[2r] at the rows y - r .. y + r of a row view; a row
// past the top or the bottom is replaced by the edge row.
template <class R, class P>
inline void WindowRows(const R& view, int y, int r, const P** rows) {
  for (int j = 0; j <= 2 * r; ++j)
    rows[j] = reinterpret_cast<const P*>(view.Row(Clamp(y + j - r, 0, view.height - 1)));
}

// Calls pixel(x, clamp) for every x of a row of `width` pixels, in order.
// `clamp` is std::true_type on the r columns at each end, whose windows
// leave the row, and std::false_type between, so the column check is chosen
// once a stretch and not tested per pixel.
template <class Pixel>
inline void ForEachColumnByBorder(int width, int r, Pixel&& pixel) {
  int x = 0;
  for (; x < r && x < width; ++x) pixel(x, std::true_type{});
  for (; x < width - r; ++x) pixel(x, std::false_type{});
  for (; x < width; ++x) pixel(x, std::true_type{});
}

// Float to int32 with truncation towards zero; NaN and values out of range
// give INT32_MIN, as the processor's conversion does.
inline std::int32_t TruncToInt32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(v);
}

// ---------------------------------------------------------------- blocks
//
// A fixed-point window sum by blocks. The window is a list of terms; each
// term is one coefficient times the sum of a few pixels (one pixel for a
// plain kernel, an orbit of up to eight for a symmetric one). Terms go in
// pairs so that one multiply-add instruction serves two of them. A
// coefficient is split into signed 16-bit halves, k = hi * 65536 + lo; the
// upper halves take a second pass only when one is not 0 (`wide`). For each
// x, with p(t, x) the pixels of term t:
//   v = offset + sum over terms of coef(t) * sum p(t, x)   (wrapping at 32 bits)
//   v = v >> shift (arithmetic); |v| when `absolute`; clamped to 0..255
//   (0..65535 on 16-bit pixels).
// 16-bit pixels do not fit the signed 16-bit lanes of the multiply-add, so
// they enter it less 32768, and `offset` carries 32768 times the sum of the
// coefficients to make up for it (exact modulo 2^32). Their jobs have one
// tap per term.
constexpr int kMaxTerms = 50;  // 49 coefficients, rounded up to a pair
constexpr int kMaxTaps = 49;

template <class P>
struct BlockJobOf {
  const P* taps[kMaxTaps];             // pixel of each tap for output 0
  int termEnd[kMaxTerms];              // taps of term t: [termEnd[t-1], termEnd[t])
  std::int32_t pairCoef[kMaxTerms / 2];    // lower halves: lo(2i) & 0xffff | lo(2i+1) << 16
  std::int32_t pairCoefHi[kMaxTerms / 2];  // upper halves, the same way
  bool wide;
  int pairs;
  bool singleTaps;  // every term has exactly one tap (the second of the last pair may have none)
  std::int32_t offset;
  int shift;
  bool absolute;
};
using BlockJob = BlockJobOf<std::uint8_t>;
using BlockJob16 = BlockJobOf<std::uint16_t>;

// Computes whole blocks for x in [x0, x1) and returns the first x not done.
// taps[t] + x is the pixel of tap t for output x, and dst + x its output;
// every tap read up to x1 - 1 must lie in its row.
using BlockRowFn = int (*)(const BlockJob& job, int x0, int x1, std::uint8_t* dst);
// The same window sums before the shift: out[x] = v for x in [x0, x1).
using BlockSumsFn = int (*)(const BlockJob& job, int x0, int x1, std::int32_t* out);
using BlockRow16Fn = int (*)(const BlockJob16& job, int x0, int x1, std::uint16_t* dst);
using BlockSums16Fn = int (*)(const BlockJob16& job, int x0, int x1, std::int32_t* out);

// The separable fixed filters by blocks: a horizontal pass from a row padded
// with its replicated border (r pixels each side) into 16-bit sums, and a
// vertical pass from 2r + 1 such rows to pixels. Each returns the first x not
// done; the rest is left to scalar code.
enum class FixedFilter { kUniform5, kGaussian5, kUniform7, kGaussian7 };
using HorizontalFn = int (*)(FixedFilter kind, const std::uint8_t* padded, int width,
                             std::uint16_t* out);
using VerticalFn = int (*)(FixedFilter kind, const std::uint16_t* const* rows, int width,
                           std::uint8_t* dst);
// The same on 16-bit pixels, whose horizontal sums take 32 bits. The
// uniform filters' scaling wraps at 32 bits as the pixel code does.
using Horizontal16Fn = int (*)(FixedFilter kind, const std::uint16_t* padded, int width,
                               std::uint32_t* out);
using Vertical16Fn = int (*)(FixedFilter kind, const std::uint32_t* const* rows, int width,
                             std::uint16_t* dst);

// The floating-point window sum by blocks of pixels, one pixel per lane, each
// lane adding its products in the table's order (so the sums are those of
// the pixel-by-pixel code: every product of a float and a byte or a 16-bit
// pixel is exact in double precision). rows[ky] + i is the window's
// upper-left pixel on row ky for output i; out[i] receives the sum truncated
// to int32 (INT32_MIN when out of range). Returns the first i not done.
using FloatRowFn = int (*)(const float* k, int sx, int sy, const std::uint8_t* const* rows,
                           int count, std::int32_t* out);
using FloatRow16Fn = int (*)(const float* k, int sx, int sy, const std::uint16_t* const* rows,
                             int count, std::int32_t* out);

struct SimdRoutines {
  BlockRowFn block;
  BlockSumsFn sums;
  HorizontalFn horizontal;
  VerticalFn vertical;
  FloatRowFn floatRow;
  BlockRow16Fn block16;
  BlockSums16Fn sums16;
  Horizontal16Fn horizontal16;
  Vertical16Fn vertical16;
  FloatRow16Fn floatRow16;
};

// The member of `simd` for pixels P (the pointer only selects the overload).
inline BlockRowFn BlockOf(const SimdRoutines& simd, const std::uint8_t*) { return simd.block; }
inline BlockRow16Fn BlockOf(const SimdRoutines& simd, const std::uint16_t*) { return simd.block16; }
inline BlockSumsFn SumsOf(const SimdRoutines& simd, const std::uint8_t*) { return simd.sums; }
inline BlockSums16Fn SumsOf(const SimdRoutines& simd, const std::uint16_t*) { return simd.sums16; }
inline FloatRowFn FloatRowOf(const SimdRoutines& simd, const std::uint8_t*) { return simd.floatRow; }
inline FloatRow16Fn FloatRowOf(const SimdRoutines& simd, const std::uint16_t*) { return simd.floatRow16; }
inline HorizontalFn HorizontalOf(const SimdRoutines& simd, const std::uint8_t*) { return simd.horizontal; }
inline Horizontal16Fn HorizontalOf(const SimdRoutines& simd, const std::uint16_t*) {
  return simd.horizontal16;
}
inline VerticalFn VerticalOf(const SimdRoutines& simd, const std::uint8_t*) { return simd.vertical; }
inline Vertical16Fn VerticalOf(const SimdRoutines& simd, const std::uint16_t*) { return simd.vertical16; }

#if defined(MIREL_X86_SIMD)
SimdRoutines Sse2Routines();
SimdRoutines Avx2Routines();
SimdRoutines Avx512Routines();
#endif

// The routines for the calling thread's fast-path setting, or null members
// when the scalar path must run.
SimdRoutines ActiveRoutines();

}  // namespace filter
}  // namespace mirel

#endif  // MIREL_FILTER_CONVOLUTION_INTERNAL_H_
