// Vector bodies of the halving routines, shared by the per-instruction-set
// sources. A source defines its vector type (an "Isa" with the members used
// below) and calls Routines<Isa>(). Everything here has internal linkage, so
// code built for one instruction set never leaks into another source.
//
// Grey: a vector of 2K source bytes holds K pairs; the even byte of a pair
// is the low byte of a 16-bit lane and the odd one the high byte. Sums go in
// 16-bit lanes (at most 4 x 255), minima and maxima stay in bytes.
// Gradient: a vector of 32-bit pixels; each component is sign-extended to
// 32 bits, the columns of the two rows are added, and the pairs of columns
// are added by an even/odd split of two vectors.
#ifndef MIREL_GEOMETRY_PYRAMID_BLOCKS_INTERNAL_H_
#define MIREL_GEOMETRY_PYRAMID_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/geometry/pyramid_internal.h"

namespace mirel {
namespace geometry {
namespace {

using Byte = std::uint8_t;

template <class Isa>
int AverageRow(const Byte* r0, const Byte* r1, Byte* dst, int n) {
  using V = typename Isa::V;
  constexpr int K = Isa::kBytes;
  const V low = Isa::Set16(0x00FF);
  int i = 0;
  for (; i + K <= n; i += K) {
    V s[2];
    for (int h = 0; h < 2; ++h) {
      const V a = Isa::Load(r0 + 2 * i + h * K), b = Isa::Load(r1 + 2 * i + h * K);
      const V pa = Isa::Add16(Isa::And(a, low), Isa::Srli16(a, 8));
      const V pb = Isa::Add16(Isa::And(b, low), Isa::Srli16(b, 8));
      s[h] = Isa::Srli16(Isa::Add16(pa, pb), 2);
    }
    Isa::Store(dst + i, Isa::PackU16(s[0], s[1]));
  }
  return i;
}

template <class Isa, bool kMin>
int ExtremeRow(const Byte* r0, const Byte* r1, Byte* dst, int n) {
  using V = typename Isa::V;
  constexpr int K = Isa::kBytes;
  const V low = Isa::Set16(0x00FF);
  int i = 0;
  for (; i + K <= n; i += K) {
    V s[2];
    for (int h = 0; h < 2; ++h) {
      const V a = Isa::Load(r0 + 2 * i + h * K), b = Isa::Load(r1 + 2 * i + h * K);
      const V v = kMin ? Isa::MinU8(a, b) : Isa::MaxU8(a, b);
      const V p = kMin ? Isa::MinU8(v, Isa::Srli16(v, 8)) : Isa::MaxU8(v, Isa::Srli16(v, 8));
      s[h] = Isa::And(p, low);
    }
    Isa::Store(dst + i, Isa::PackU16(s[0], s[1]));
  }
  return i;
}

template <class Isa>
int GradientRow(const std::uint32_t* r0, const std::uint32_t* r1, std::uint32_t* dst, int n) {
  using V = typename Isa::V;
  constexpr int K = Isa::kBytes / 4;  // pixels of one vector
  const V low = Isa::Set32(0xFFFF);
  int i = 0;
  for (; i + K <= n; i += K) {
    V lo[2], hi[2];
    for (int h = 0; h < 2; ++h) {
      const V a = Isa::Load(r0 + 2 * i + h * K), b = Isa::Load(r1 + 2 * i + h * K);
      lo[h] = Isa::Add32(Isa::Srai32(Isa::Slli32(a, 16), 16), Isa::Srai32(Isa::Slli32(b, 16), 16));
      hi[h] = Isa::Add32(Isa::Srai32(a, 16), Isa::Srai32(b, 16));
    }
    const V l = Isa::Srai32(Isa::PairSums32(lo[0], lo[1]), 2);
    const V u = Isa::Srai32(Isa::PairSums32(hi[0], hi[1]), 2);
    Isa::Store(dst + i, Isa::Or(Isa::And(l, low), Isa::Slli32(u, 16)));
  }
  return i;
}

template <class Isa>
void StreamRow(const Byte* src, Byte* dst, int n) {
  constexpr int K = Isa::kBytes;
  int i = 0;
  for (; i < n && (reinterpret_cast<std::uintptr_t>(dst + i) & (K - 1)) != 0; ++i) dst[i] = src[i];
  for (; i + K <= n; i += K) Isa::Stream(dst + i, Isa::Load(src + i));
  for (; i < n; ++i) dst[i] = src[i];
}

template <class Isa>
HalveRoutines Routines() {
  return HalveRoutines{{&AverageRow<Isa>, &ExtremeRow<Isa, true>, &ExtremeRow<Isa, false>},
                       &GradientRow<Isa>,
                       &StreamRow<Isa>,
                       &Isa::Fence};
}

}  // namespace
}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_PYRAMID_BLOCKS_INTERNAL_H_
