// Byte kernels of the 8-bit statistics, one table per instruction set.
//
// Every kernel works on one span of n consecutive bytes (a row or a run) and
// gives exact results: the sums are 64-bit and never wrap for any span that
// fits in memory, so a caller that keeps a 32-bit sum truncates them and gets
// the same bits as a 32-bit loop. All paths give the same numbers.
#ifndef MIREL_MEASURE_STATISTICS_INTERNAL_H_
#define MIREL_MEASURE_STATISTICS_INTERNAL_H_

#include <cstddef>
#include <cstdint>

namespace mirel {
namespace measure {

struct ByteKernels {
  // Sum of the bytes.
  std::uint64_t (*sum)(const unsigned char* p, std::size_t n);
  // Sum of the bytes and sum of their squares.
  void (*sumSquares)(const unsigned char* p, std::size_t n, std::uint64_t* sum, std::uint64_t* squares);
  // Number of bytes at or above t (t in 0..255).
  std::size_t (*countAtLeast)(const unsigned char* p, std::size_t n, unsigned int t);
  // Numbers of bytes at or above t1 and at or above t2 (both in 0..255).
  void (*countAtLeast2)(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
                        std::size_t* c2);
  // Folds the bytes into *lo (minimum) and *hi (maximum); n may be 0.
  void (*minMax)(const unsigned char* p, std::size_t n, unsigned char* lo, unsigned char* hi);
  // Number of positions where a and b differ.
  std::size_t (*countDiffer)(const unsigned char* a, const unsigned char* b, std::size_t n);
  // Over the pairs (a[i], b[i]) kept (every pair, or with skipExtremes those
  // with neither at 0 or 255): out = count, sum a, sum b, sum a*a, sum a*b,
  // sum b*b, then the least and the largest a kept (255 and 0 when none).
  void (*pairSums)(const unsigned char* a, const unsigned char* b, std::size_t n, bool skipExtremes,
                   std::uint64_t out[8]);
};

// The pair sums one by one; the fast tables use it for their row tails.
inline void PairSumsScalar(const unsigned char* a, const unsigned char* b, std::size_t n, bool skipExtremes,
                           std::uint64_t out[8]) {
  std::uint64_t k = 0, sa = 0, sb = 0, aa = 0, ab = 0, bb = 0;
  std::uint32_t lo = 255, hi = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t u = a[i], v = b[i];
    if (skipExtremes && (u == 0 || u == 255 || v == 0 || v == 255)) continue;
    ++k;
    lo = u < lo ? u : lo;
    hi = u > hi ? u : hi;
    sa += u;
    sb += v;
    aa += u * u;
    ab += u * v;
    bb += v * v;
  }
  out[0] = k;
  out[1] = sa;
  out[2] = sb;
  out[3] = aa;
  out[4] = ab;
  out[5] = bb;
  out[6] = lo;
  out[7] = hi;
}

// The scalar table, and the table for EGetMMX() (read by the caller) and the
// active instruction-set level.
const ByteKernels& ScalarByteKernels();
const ByteKernels& PickByteKernels(int mmx);

#if defined(MIREL_X86_SIMD)
const ByteKernels& ByteKernelsSSE2();
const ByteKernels& ByteKernelsAVX2();
const ByteKernels& ByteKernelsAVX512();
#endif

}  // namespace measure
}  // namespace mirel

#endif  // MIREL_MEASURE_STATISTICS_INTERNAL_H_
