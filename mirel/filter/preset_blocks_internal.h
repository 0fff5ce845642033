// Block routines of the preset 3x3 filters, written once over an
// instruction-set layer. Each per-instruction-set source defines, in an
// unnamed namespace, a struct `Isa` and includes this header:
//
//   V, kLanes        a vector of kLanes 16-bit lanes
//   Load(p)          kLanes bytes from p, widened
//   Store(p, v)      kLanes lanes (all >= 0) to bytes, saturating at 255
//   Add, Sub, Abs, Cap (min with 255), Max0, Srl<n>, Mul<k> on 16-bit lanes
//
// and a struct `Isa16` for 16-bit pixels: the same operations on 32-bit
// lanes (Cap is the min with 65535), Load(p) of kLanes 16-bit pixels, and
// Store(p, v) of the low 16 bits of each lane.
#ifndef MIREL_FILTER_PRESET_BLOCKS_INTERNAL_H_
#define MIREL_FILTER_PRESET_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/filter/convolution_blocks_internal.h"
#include "mirel/filter/preset_filters_internal.h"

// A vector type as the template argument of Window3 loses its may_alias
// attribute, which only matters for access through pointers; the window is
// held by value.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
#endif

namespace mirel {
namespace filter {
namespace presets {

template <class Isa, Preset K, int S, class P>
int RowOf(const P* t, const P* m, const P* b, P* out, int x0, int x1) {
  using V = typename Isa::V;
  return blocks::Blocks<Isa::kLanes>(x0, x1, [&](int x) {
    const Window3<V> w{Isa::Load(t + x - S), Isa::Load(t + x), Isa::Load(t + x + S),
                       Isa::Load(m + x - S), Isa::Load(m + x), Isa::Load(m + x + S),
                       Isa::Load(b + x - S), Isa::Load(b + x), Isa::Load(b + x + S)};
    Isa::Store(out + x, Evaluate<K, Isa>(w));
  });
}

template <class Isa>
int Row(Preset kind, int step, const std::uint8_t* t, const std::uint8_t* m, const std::uint8_t* b,
        std::uint8_t* out, int x0, int x1) {
  int done = x0;
  WithPreset(kind, [&](auto k) {
    done = step == 1 ? RowOf<Isa, decltype(k)::value, 1>(t, m, b, out, x0, x1)
                     : RowOf<Isa, decltype(k)::value, 3>(t, m, b, out, x0, x1);
  });
  return done;
}

template <class Isa>
int Row16(Preset kind, const std::uint16_t* t, const std::uint16_t* m, const std::uint16_t* b,
          std::uint16_t* out, int x0, int x1) {
  int done = x0;
  WithPreset(kind, [&](auto k) { done = RowOf<Isa, decltype(k)::value, 1>(t, m, b, out, x0, x1); });
  return done;
}

}  // namespace presets
}  // namespace filter
}  // namespace mirel

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif  // MIREL_FILTER_PRESET_BLOCKS_INTERNAL_H_
