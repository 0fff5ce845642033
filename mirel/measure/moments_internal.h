// Row kernels of the 8-bit moments, one per instruction set.
//
// For a span of n pixels a kernel gives, modulo 2^32, the three sums
//   s[0] = sum w(i),  s[1] = sum w(i) * i,  s[2] = sum w(i) * i * i
// over i = 0 .. n-1, where w is the pixel itself (weighted) or 1 for a pixel
// at or above a threshold and 0 below (binary). Every moment up to the
// second order of a row follows from them exactly in 32-bit arithmetic, so
// all paths give the same bits.
#ifndef MIREL_MEASURE_MOMENTS_INTERNAL_H_
#define MIREL_MEASURE_MOMENTS_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "mirel/foundation/pixel.h"

namespace mirel {
namespace measure {

struct MomentKernels {
  void (*weighted)(const unsigned char* p, std::size_t n, std::uint32_t s[3]);
  // t in 0..255.
  void (*binary)(const unsigned char* p, std::size_t n, unsigned int t, std::uint32_t s[3]);
};

const MomentKernels& ScalarMomentKernels();
const MomentKernels& PickMomentKernels(int mmx);

#if defined(MIREL_X86_SIMD)
const MomentKernels& MomentKernelsSSE2();
const MomentKernels& MomentKernelsAVX2();
const MomentKernels& MomentKernelsAVX512();
#endif

// Terms of order two and above of one row, added pixel by pixel to the
// single-precision accumulators acc[12]: M20, M11, M02, M30, M21, M12, M03,
// then (fourth order) M40, M31, M22, M13, M04. A term is p * x^a * y^b with
// p * x * x ... multiplied left to right and then by ys[b - 1] (ys holds y,
// y^2, y^3, y^4 of the row, formed once). The fast forms add the same
// products in the same order, so they give the same bits.
template <class P>
using HighRowFn = void (*)(const P* p, int width, const float ys[4], bool fourth, float acc[12]);

#if defined(MIREL_X86_SIMD)
void HighRowSSE2(const EBW8* p, int width, const float ys[4], bool fourth, float acc[12]);
void HighRowSSE2(const EBW16* p, int width, const float ys[4], bool fourth, float acc[12]);
void HighRowAVX2(const EBW8* p, int width, const float ys[4], bool fourth, float acc[12]);
void HighRowAVX2(const EBW16* p, int width, const float ys[4], bool fourth, float acc[12]);
#endif

// Adds the sums of a span whose first pixel sits at offset x0 (mod 2^32).
inline void ShiftSums(const std::uint32_t s[3], std::uint32_t x0, std::uint32_t out[3]) {
  out[0] = s[0];
  out[1] = s[1] + x0 * s[0];
  out[2] = s[2] + 2u * x0 * s[1] + x0 * x0 * s[0];
}

}  // namespace measure
}  // namespace mirel

#endif  // MIREL_MEASURE_MOMENTS_INTERNAL_H_
