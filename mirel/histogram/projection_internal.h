// Summing kernels of the 8-bit projections.
#ifndef MIREL_HISTOGRAM_PROJECTION_INTERNAL_H_
#define MIREL_HISTOGRAM_PROJECTION_INTERNAL_H_

#include <cstdint>

#include "mirel/foundation/frame_internal.h"

namespace mirel {
namespace proj {

// acc[x] = sum over rows of column x (32-bit, wrapping); acc has width
// elements and is overwritten.
void ColumnSums8(const Rows<const EBW8>& rows, std::uint32_t* acc, int mmx);
// sums[y] = sum of row y (32-bit, wrapping).
void RowSums8(const Rows<const EBW8>& rows, std::uint32_t* sums, int mmx);

#if defined(MIREL_X86_SIMD)
// Columns [0, done) summed; returns done (a multiple of the block width).
int ColumnSums8SSE2(const Rows<const EBW8>& rows, std::uint32_t* acc);
int ColumnSums8AVX2(const Rows<const EBW8>& rows, std::uint32_t* acc);
int ColumnSums8AVX512(const Rows<const EBW8>& rows, std::uint32_t* acc);
std::uint64_t RowSum8SSE2(const unsigned char* p, int n);
std::uint64_t RowSum8AVX2(const unsigned char* p, int n);
#endif

}  // namespace proj
}  // namespace mirel

#endif  // MIREL_HISTOGRAM_PROJECTION_INTERNAL_H_
