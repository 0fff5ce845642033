// Internal pieces of the gradient images and the Canny suppression: the
// block routines of a row, one set per instruction set, behind one dispatch.
#ifndef MIREL_EDGE_GRADIENT_INTERNAL_H_
#define MIREL_EDGE_GRADIENT_INTERNAL_H_

#include <cstdint>

#include "mirel/foundation/frame_internal.h"

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

// The magnitudes (|dx| + |dy|) >> 1 of the pairs x in [x0, x1) as bytes.
// Returns the first x not done: the routine stops before a block holding a
// component beyond -255..255, which pixel-by-pixel code then takes.
using MagnitudeRowFn = int (*)(const std::uint32_t* pairs, std::uint8_t* out, int x0, int x1);

// The suppression of the pixels x in [x0, x1) of a row: each pair's class
// (0, 45, 90, 135) to dir[x], and to out[x] the magnitude here[x] when it is
// at least both neighbours across the edge, else 0. above, here and below
// are the magnitudes of the three rows, readable at x0 - 1 .. x1. Returns
// the first x not done, stopping as the magnitude routine does.
using SuppressRowFn = int (*)(const std::uint32_t* pairs, const std::uint8_t* above, const std::uint8_t* here,
                              const std::uint8_t* below, std::uint32_t* dir, std::uint8_t* out, int x0, int x1);

struct EdgeRowFns {
  PairRow8Fn bw8;
  PairRow16Fn bw16;
  MagnitudeRowFn magnitude;
  SuppressRowFn suppress;
};

#if defined(MIREL_X86_SIMD)
EdgeRowFns EdgeRowsSse2();
EdgeRowFns EdgeRowsAvx2();
EdgeRowFns EdgeRowsAvx512();
#endif

// The block routines of the best instruction set the calling thread may
// use; both null when `fast` is false or there is none. The 8-bit forms
// pass their call's EGetMMX(); the 16-bit forms, which do not consult it,
// pass true (their blocks give the same bytes as pixel-by-pixel code).
EdgeRowFns ActiveEdgeRows(bool fast);

// The pairs of row y of an 8-bit ROI into out[0 .. width), by the blocks
// when `blocks` is not null.
void GradientPairRow(const Rows<const EBW8>& s, int y, std::uint32_t* out, PairRow8Fn blocks);

// Direction class of a pair with |dx| and |dy| at most 255: 0 when |dx| >
// 2.42 |dy| and 90 when |dy| > 2.42 |dx|, compared in double precision. In
// that range the comparisons are exactly 50 |dx| > 121 |dy| and 50 |dy| >
// 121 |dx| in integers (the two ties, (121, 50) and (242, 100), compare
// equal both ways), which is what the blocks compute.
constexpr int kClassNum = 50;
constexpr int kClassDen = 121;

}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_GRADIENT_INTERNAL_H_
