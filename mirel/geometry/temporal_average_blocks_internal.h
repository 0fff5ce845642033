// Vector body of the moving-average blocks, shared by the per-instruction-set
// sources: each defines an "Isa" (K pixels a block: K bytes held in B, K
// 16-bit lanes in V) and calls Row<Isa>. Internal linkage only.
#ifndef MIREL_GEOMETRY_TEMPORAL_AVERAGE_BLOCKS_INTERNAL_H_
#define MIREL_GEOMETRY_TEMPORAL_AVERAGE_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/geometry/temporal_average_internal.h"

namespace mirel {
namespace geometry {
namespace {

template <class Isa>
int Row(const std::uint8_t* in, std::uint16_t* sum, const std::uint8_t* oldest, std::uint8_t* store,
        std::uint8_t* out, int n, int shift, bool first) {
  using V = typename Isa::V;
  using B = typename Isa::B;
  constexpr int K = Isa::kPixels;
  const auto count = Isa::Count(shift);
  int x = 0;
  if (first) {
    for (; x + K <= n; x += K) {
      const B raw = Isa::LoadB(in + x);
      const V v = Isa::Widen(raw);
      Isa::StoreW(sum + x, Isa::Sub(Isa::Sll(v, count), v));
      Isa::StoreB(out + x, raw);
      if (store != nullptr) Isa::StoreB(store + x, raw);
    }
    return x;
  }
  for (; x + K <= n; x += K) {
    const B raw = Isa::LoadB(in + x);
    const V t = Isa::Add(Isa::Widen(raw), Isa::LoadW(sum + x));
    const V old = Isa::Widen(Isa::LoadB(oldest + x));
    Isa::StoreW(sum + x, Isa::Sub(t, old));
    Isa::StoreB(out + x, Isa::Narrow(Isa::Srl(t, count)));
    if (store != nullptr) Isa::StoreB(store + x, raw);
  }
  return x;
}

}  // namespace
}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_TEMPORAL_AVERAGE_BLOCKS_INTERNAL_H_
