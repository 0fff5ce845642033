// Block routines of the gradient pairs and the suppression, written once
// over an instruction-set layer. Each per-instruction-set source defines, in
// an unnamed namespace, a struct `Isa` and includes this header:
//
//   V, kLanes         a vector of kLanes 16-bit lanes
//   Load(p)           kLanes pixels from p (bytes widened, or words)
//   Sub(a, b), Add(a, b)   lane-wise, wrapping at 16 bits
//   StorePairs(p, lo, hi)  2 * kLanes words to p, lane i of lo then of hi,
//                     so that each 32-bit pixel holds (lo_i, hi_i)
//   LoadPairs(p, lo, hi)   the reverse: kLanes pixels of p split into their
//                     signed low and high halves
//   Abs, Srl1, Mul<k>, Set1, Zero
//   Gt(a, b), Eq(a, b)     signed comparisons giving lanes of all ones or 0
//   Select(m, a, b)   a where m is all ones, else b
//   Or, AndNot(m, a)  (~m & a)
//   AnyAbove(a, k)    true when some lane's signed value exceeds k
//   StoreBytes(p, v)  kLanes lanes (0..255) as bytes
//   StoreWords32(p, v) kLanes lanes (non-negative) as 32-bit values
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
int MagnitudeRow(const std::uint32_t* pairs, std::uint8_t* out, int x0, int x1) {
  int x = x0;
  for (; x + Isa::kLanes <= x1; x += Isa::kLanes) {
    typename Isa::V dx, dy;
    Isa::LoadPairs(pairs + x, dx, dy);
    const auto ax = Isa::Abs(dx), ay = Isa::Abs(dy);
    if (Isa::AnyAbove(Isa::Or(ax, ay), 255)) return x;
    Isa::StoreBytes(out + x, Isa::Srl1(Isa::Add(ax, ay)));
  }
  return x;
}

template <class Isa>
int SuppressRow(const std::uint32_t* pairs, const std::uint8_t* above, const std::uint8_t* here,
                const std::uint8_t* below, std::uint32_t* dir, std::uint8_t* out, int x0, int x1) {
  using V = typename Isa::V;
  const V zero = Isa::Zero();
  int x = x0;
  for (; x + Isa::kLanes <= x1; x += Isa::kLanes) {
    V dx, dy;
    Isa::LoadPairs(pairs + x, dx, dy);
    const V ax = Isa::Abs(dx), ay = Isa::Abs(dy);
    if (Isa::AnyAbove(Isa::Or(ax, ay), 255)) return x;
    const V c0 = Isa::Gt(Isa::template Mul<kClassNum>(ax), Isa::template Mul<kClassDen>(ay));
    const V c90 = Isa::Gt(Isa::template Mul<kClassNum>(ay), Isa::template Mul<kClassDen>(ax));
    // Signs as -1, 0, 1; equal signs make class 45, others 135.
    const V sx = Isa::Sub(Isa::Gt(zero, dx), Isa::Gt(dx, zero));
    const V sy = Isa::Sub(Isa::Gt(zero, dy), Isa::Gt(dy, zero));
    const V same = Isa::Eq(sx, sy);
    const V a = Isa::Select(c0, Isa::Load(here + x + 1),
                            Isa::Select(c90, Isa::Load(above + x),
                                        Isa::Select(same, Isa::Load(above + x - 1), Isa::Load(below + x - 1))));
    const V b = Isa::Select(c0, Isa::Load(here + x - 1),
                            Isa::Select(c90, Isa::Load(below + x),
                                        Isa::Select(same, Isa::Load(below + x + 1), Isa::Load(above + x + 1))));
    const V m = Isa::Load(here + x);
    Isa::StoreBytes(out + x, Isa::AndNot(Isa::Or(Isa::Gt(a, m), Isa::Gt(b, m)), m));
    const V cls = Isa::Select(c0, zero, Isa::Select(c90, Isa::Set1(90), Isa::Select(same, Isa::Set1(45), Isa::Set1(135))));
    Isa::StoreWords32(dir + x, cls);
  }
  return x;
}

template <class Isa>
EdgeRowFns Fns() {
  return EdgeRowFns{&PairRow<Isa, std::uint8_t>, &PairRow<Isa, std::uint16_t>, &MagnitudeRow<Isa>,
                    &SuppressRow<Isa>};
}

}  // namespace blocks
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_GRADIENT_BLOCKS_INTERNAL_H_
