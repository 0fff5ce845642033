// Block routines of the gradient pairs, written once over an instruction-set
// layer. Each per-instruction-set source defines, in an unnamed namespace, a
// struct `Isa` and includes this header:
//
//   V, kLanes         a vector of kLanes 16-bit lanes
//   Load(p)           kLanes pixels from p (bytes widened, or words)
//   Sub(a, b)         lane-wise difference, wrapping at 16 bits
//   StorePairs(p, lo, hi)  2 * kLanes words to p, lane i of lo then of hi,
//                     so that each 32-bit pixel holds (lo_i, hi_i)
#ifndef MIREL_EDGE_GRADIENT_BLOCKS_INTERNAL_H_
#define MIREL_EDGE_GRADIENT_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/edge/gradient_internal.h"
#include "mirel/filter/convolution_blocks_internal.h"

namespace mirel {
namespace edge {
namespace blocks {

template <class Isa, class P>
int PairRow(const P* t, const P* m, const P* b, std::uint32_t* out, int x0, int x1) {
  return filter::blocks::Blocks<Isa::kLanes>(x0, x1, [&](int x) {
    const auto dx = Isa::Sub(Isa::Load(m + x - 1), Isa::Load(m + x + 1));
    const auto dy = Isa::Sub(Isa::Load(t + x), Isa::Load(b + x));
    Isa::StorePairs(out + x, dx, dy);
  });
}

template <class Isa>
PairRowFns Fns() {
  return PairRowFns{&PairRow<Isa, std::uint8_t>, &PairRow<Isa, std::uint16_t>};
}

}  // namespace blocks
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_GRADIENT_BLOCKS_INTERNAL_H_
