// Internal pieces of the gradient images: the block routines that form the
// difference pairs of a row, one per instruction set, behind one dispatch.
#ifndef MIREL_EDGE_GRADIENT_INTERNAL_H_
#define MIREL_EDGE_GRADIENT_INTERNAL_H_

#include <cstdint>

namespace mirel {
namespace edge {

// Forms the pairs of the outputs x in [x0, x1) of one row from the rows
// above (t), at (m) and below (b): dx = m[x - 1] - m[x + 1] in the low half,
// dy = t[x] - b[x] in the high half, each kept to 16 bits. Reads columns
// x0 - 1 .. x1, which must lie in the row, and returns the first x not done
// (x0 when the stretch is shorter than a block).
using PairRow8Fn = int (*)(const std::uint8_t* t, const std::uint8_t* m, const std::uint8_t* b,
                           std::uint32_t* out, int x0, int x1);
using PairRow16Fn = int (*)(const std::uint16_t* t, const std::uint16_t* m, const std::uint16_t* b,
                            std::uint32_t* out, int x0, int x1);

struct PairRowFns {
  PairRow8Fn bw8;
  PairRow16Fn bw16;
};

#if defined(MIREL_X86_SIMD)
PairRowFns PairRowsSse2();
PairRowFns PairRowsAvx2();
PairRowFns PairRowsAvx512();
#endif

// The block routines of the best instruction set the calling thread may
// use; both null when `fast` is false or there is none. The 8-bit forms
// pass their call's EGetMMX(); the 16-bit forms, which do not consult it,
// pass true (their blocks give the same bytes as pixel-by-pixel code).
PairRowFns ActivePairRows(bool fast);

}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_GRADIENT_INTERNAL_H_
