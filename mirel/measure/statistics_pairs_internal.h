// The pair sums of the 8-bit noise and regression, written once over an
// instruction-set layer. Each per-instruction-set source defines, in its
// unnamed namespace, a struct `Isa` and includes this header.
//
// Pairs are taken a block of Isa::kBytes at a time. A dropped pair (with
// skipExtremes) is zeroed in both images, so it adds nothing to any sum, and
// counted in byte counters; for the least a kept it reads as 255. The squares and products meet in 16-bit
// multiply-adds whose 32-bit lanes are emptied every 255 blocks (each lane
// gains at most 4 * 255 * 255 a block). Row tails go one by one.
#ifndef MIREL_MEASURE_STATISTICS_PAIRS_INTERNAL_H_
#define MIREL_MEASURE_STATISTICS_PAIRS_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "mirel/measure/statistics_internal.h"

namespace mirel {
namespace measure {
namespace pairs {

template <class Isa, bool kSkip>
void Sums(const unsigned char* a, const unsigned char* b, std::size_t n, std::uint64_t out[8]) {
  using V = typename Isa::V;
  constexpr std::size_t kB = Isa::kBytes;
  const V zero = Isa::Zero(), top = Isa::Set1_8(255);
  V sa = zero, sb = zero, lo = top, hi = zero;
  std::uint64_t dropped = 0, aa = 0, ab = 0, bb = 0;
  std::size_t i = 0;
  while (i + kB <= n) {
    const std::size_t end = n - i > kB * 255 ? i + kB * 255 : n;
    V drops = zero, qaa = zero, qab = zero, qbb = zero;
    for (; i + kB <= end; i += kB) {
      V va = Isa::Load(a + i), vb = Isa::Load(b + i);
      if (kSkip) {
        const V drop = Isa::Or(Isa::Or(Isa::CmpEq8(va, zero), Isa::CmpEq8(va, top)),
                               Isa::Or(Isa::CmpEq8(vb, zero), Isa::CmpEq8(vb, top)));
        va = Isa::AndNot(drop, va);
        vb = Isa::AndNot(drop, vb);
        drops = Isa::Sub8(drops, drop);
        lo = Isa::Min8(lo, Isa::Or(va, drop));  // a dropped pair reads 255 here, 0 below
      } else {
        lo = Isa::Min8(lo, va);
      }
      hi = Isa::Max8(hi, va);
      sa = Isa::Add64(sa, Isa::Sad(va, zero));
      sb = Isa::Add64(sb, Isa::Sad(vb, zero));
      const V al = Isa::UnpackLo(va, zero), ah = Isa::UnpackHi(va, zero);
      const V bl = Isa::UnpackLo(vb, zero), bh = Isa::UnpackHi(vb, zero);
      qaa = Isa::Add32(qaa, Isa::Add32(Isa::Madd(al, al), Isa::Madd(ah, ah)));
      qab = Isa::Add32(qab, Isa::Add32(Isa::Madd(al, bl), Isa::Madd(ah, bh)));
      qbb = Isa::Add32(qbb, Isa::Add32(Isa::Madd(bl, bl), Isa::Madd(bh, bh)));
    }
    aa += Isa::Lanes32(qaa);
    ab += Isa::Lanes32(qab);
    bb += Isa::Lanes32(qbb);
    if (kSkip) dropped += Isa::Lanes64(Isa::Sad(drops, zero));
  }
  std::uint64_t tail[8];
  PairSumsScalar(a + i, b + i, n - i, kSkip, tail);
  const std::uint64_t l = Isa::MinLane8(lo), h = Isa::MaxLane8(hi);
  out[0] = (i - dropped) + tail[0];
  out[1] = Isa::Lanes64(sa) + tail[1];
  out[2] = Isa::Lanes64(sb) + tail[2];
  out[3] = aa + tail[3];
  out[4] = ab + tail[4];
  out[5] = bb + tail[5];
  out[6] = l < tail[6] ? l : tail[6];
  out[7] = h > tail[7] ? h : tail[7];
}

template <class Isa>
void PairSums(const unsigned char* a, const unsigned char* b, std::size_t n, bool skipExtremes, std::uint64_t out[8]) {
  if (skipExtremes) Sums<Isa, true>(a, b, n, out);
  else Sums<Isa, false>(a, b, n, out);
}

}  // namespace pairs
}  // namespace measure
}  // namespace mirel

#endif  // MIREL_MEASURE_STATISTICS_PAIRS_INTERNAL_H_
