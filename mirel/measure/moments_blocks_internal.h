// The row-moment kernels written once over an instruction-set layer. Each
// per-instruction-set source defines, in an unnamed namespace, a struct
// `Isa` and includes this header.
//
// Isa::V holds kBytes pixels. The row is cut into chunks of 128 pixels; in a
// chunk, pixel k (0..127) meets k and k * k as 16-bit multipliers (k * k
// stays below 2^15) in multiply-adds whose 32-bit lanes cannot overflow
// within a chunk. At the chunk's end the lanes are moved to the chunk's base
// c by s1 += c * a0 + a1 and s2 += c * c * a0 + 2 * c * a1 + a2, lane by lane
// modulo 2^32, which is exact since the lane sums are only added later.
#ifndef MIREL_MEASURE_MOMENTS_BLOCKS_INTERNAL_H_
#define MIREL_MEASURE_MOMENTS_BLOCKS_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "mirel/measure/moments_internal.h"

namespace mirel {
namespace measure {
namespace blocks {

constexpr int kChunk = 128;

// Multipliers k and k * k of each block of a chunk, in the lane order of
// UnpackLo / UnpackHi (bytes 0-7 of each 16-byte lane, then 8-15).
template <class Isa>
struct Multipliers {
  static constexpr int kBlocks = kChunk / Isa::kBytes;
  static constexpr int kLanes = Isa::kBytes / 2;
  alignas(64) std::int16_t k[kBlocks][2][kLanes];
  alignas(64) std::int16_t kk[kBlocks][2][kLanes];
  Multipliers() {
    for (int b = 0; b < kBlocks; ++b)
      for (int half = 0; half < 2; ++half)
        for (int l = 0; l < kLanes; ++l) {
          const int at = b * Isa::kBytes + (l / 8) * 16 + half * 8 + l % 8;
          k[b][half][l] = static_cast<std::int16_t>(at);
          kk[b][half][l] = static_cast<std::int16_t>(at * at);
        }
  }
};

template <class Isa, bool kBinary>
void RowSums(const unsigned char* p, std::size_t n, unsigned int t, std::uint32_t out[3]) {
  using V = typename Isa::V;
  static const Multipliers<Isa> m;
  constexpr int kBlocks = Multipliers<Isa>::kBlocks;
  const V zero = Isa::Zero();
  const V tv = Isa::Set1_8(static_cast<unsigned char>(t));
  const V one = Isa::Set1_8(1);
  V s0 = zero, s1 = zero, s2 = zero;
  std::size_t c = 0;
  const std::size_t full = n - n % Isa::kBytes;
  while (c < full) {
    V a0 = zero, a1 = zero, a2 = zero;
    for (int b = 0; b < kBlocks && c + static_cast<std::size_t>(b) * Isa::kBytes < full; ++b) {
      V v = Isa::Load(p + c + static_cast<std::size_t>(b) * Isa::kBytes);
      if (kBinary) v = Isa::And(Isa::AtLeast(v, tv), one);
      const V lo = Isa::UnpackLo(v, zero), hi = Isa::UnpackHi(v, zero);
      a0 = Isa::Add32(a0, Isa::Sad(v, zero));
      a1 = Isa::Add32(a1, Isa::Add32(Isa::Madd(lo, Isa::LoadM(m.k[b][0])), Isa::Madd(hi, Isa::LoadM(m.k[b][1]))));
      a2 = Isa::Add32(a2, Isa::Add32(Isa::Madd(lo, Isa::LoadM(m.kk[b][0])), Isa::Madd(hi, Isa::LoadM(m.kk[b][1]))));
    }
    const std::uint32_t base = static_cast<std::uint32_t>(c);
    s0 = Isa::Add32(s0, a0);
    s1 = Isa::Add32(s1, Isa::Add32(Isa::MulScalar32(a0, base), a1));
    s2 = Isa::Add32(s2, Isa::Add32(Isa::Add32(Isa::MulScalar32(a0, base * base), Isa::MulScalar32(a1, 2u * base)), a2));
    c += kChunk;
  }
  std::uint32_t r0 = Isa::LaneSum32(s0), r1 = Isa::LaneSum32(s1), r2 = Isa::LaneSum32(s2);
  for (std::size_t i = full; i < n; ++i) {
    const std::uint32_t w = kBinary ? (p[i] >= t ? 1u : 0u) : p[i];
    const std::uint32_t x = static_cast<std::uint32_t>(i);
    r0 += w;
    r1 += w * x;
    r2 += w * x * x;
  }
  out[0] = r0;
  out[1] = r1;
  out[2] = r2;
}

template <class Isa>
void Weighted(const unsigned char* p, std::size_t n, std::uint32_t s[3]) {
  RowSums<Isa, false>(p, n, 0, s);
}

template <class Isa>
void Binary(const unsigned char* p, std::size_t n, unsigned int t, std::uint32_t s[3]) {
  RowSums<Isa, true>(p, n, t, s);
}

template <class Isa>
const MomentKernels& Kernels() {
  static const MomentKernels k{Weighted<Isa>, Binary<Isa>};
  return k;
}

}  // namespace blocks
}  // namespace measure
}  // namespace mirel

#endif  // MIREL_MEASURE_MOMENTS_BLOCKS_INTERNAL_H_
