// The byte kernels of the 8-bit statistics and the pair sums of the 8-bit
// noise and regression, written once over an instruction-set layer. Each
// per-instruction-set source defines, in its unnamed namespace, a struct
// `Isa` and includes this header. Counters in byte lanes are emptied every
// 255 blocks, 32-bit lanes of squares every 4096 blocks (each gains at most
// 4 * 255 * 255 a block); row tails go one by one.
//
// Pairs are taken a block of Isa::kBytes at a time. A dropped pair (with
// skipExtremes) is zeroed in both images, so it adds nothing to any sum, and
// counted in byte counters; for the least a kept it reads as 255. The squares and products meet in 16-bit
// multiply-adds whose 32-bit lanes are emptied every 255 blocks (each lane
// gains at most 4 * 255 * 255 a block). Row tails go one by one.
#ifndef MIREL_MEASURE_STATISTICS_BLOCKS_INTERNAL_H_
#define MIREL_MEASURE_STATISTICS_BLOCKS_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "mirel/measure/statistics_internal.h"

namespace mirel {
namespace measure {
namespace bytes {

// Two blocks a step keep two independent chains of sums.
template <class Isa>
std::uint64_t Sum(const unsigned char* p, std::size_t n) {
  using V = typename Isa::V;
  constexpr std::size_t kB = Isa::kBytes;
  const V zero = Isa::Zero();
  V a0 = zero, a1 = zero;
  std::size_t i = 0;
  for (; i + 2 * kB <= n; i += 2 * kB) {
    a0 = Isa::Add64(a0, Isa::Sad(Isa::Load(p + i), zero));
    a1 = Isa::Add64(a1, Isa::Sad(Isa::Load(p + i + kB), zero));
  }
  for (; i + kB <= n; i += kB) a0 = Isa::Add64(a0, Isa::Sad(Isa::Load(p + i), zero));
  std::uint64_t s = Isa::Lanes64(Isa::Add64(a0, a1));
  for (; i < n; ++i) s += p[i];
  return s;
}

template <class Isa>
void SumSquares(const unsigned char* p, std::size_t n, std::uint64_t* sum, std::uint64_t* squares) {
  using V = typename Isa::V;
  constexpr std::size_t kB = Isa::kBytes;
  const V zero = Isa::Zero();
  V s = zero;
  std::uint64_t q = 0;
  std::size_t i = 0;
  while (i + kB <= n) {
    const std::size_t end = n - i > kB * 4096 ? i + kB * 4096 : n;
    V qa = zero;
    for (; i + kB <= end; i += kB) {
      const V v = Isa::Load(p + i);
      s = Isa::Add64(s, Isa::Sad(v, zero));
      const V lo = Isa::UnpackLo(v, zero), hi = Isa::UnpackHi(v, zero);
      qa = Isa::Add32(qa, Isa::Add32(Isa::Madd(lo, lo), Isa::Madd(hi, hi)));
    }
    q += Isa::Lanes32(qa);
  }
  std::uint64_t total = Isa::Lanes64(s);
  for (; i < n; ++i) {
    const std::uint32_t v = p[i];
    total += v;
    q += v * v;
  }
  *sum = total;
  *squares = q;
}

// Counts of p >= t1 (and p >= t2) in byte counters.
template <class Isa, bool kTwo>
void Count(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
           std::size_t* c2) {
  using V = typename Isa::V;
  constexpr std::size_t kB = Isa::kBytes;
  const V zero = Isa::Zero();
  const V v1 = Isa::Set1_8(static_cast<unsigned char>(t1)), v2 = Isa::Set1_8(static_cast<unsigned char>(t2));
  auto atLeast = [](V v, V t) { return Isa::CmpEq8(Isa::Max8(v, t), v); };  // 0xFF where v >= t
  std::uint64_t a = 0, b = 0;
  std::size_t i = 0;
  while (i + kB <= n) {
    const std::size_t end = n - i > kB * 255 ? i + kB * 255 : n;
    V ka = zero, kb = zero;
    for (; i + kB <= end; i += kB) {
      const V v = Isa::Load(p + i);
      ka = Isa::Sub8(ka, atLeast(v, v1));
      if (kTwo) kb = Isa::Sub8(kb, atLeast(v, v2));
    }
    a += Isa::Lanes64(Isa::Sad(ka, zero));
    if (kTwo) b += Isa::Lanes64(Isa::Sad(kb, zero));
  }
  for (; i < n; ++i) {
    a += p[i] >= t1 ? 1 : 0;
    if (kTwo) b += p[i] >= t2 ? 1 : 0;
  }
  *c1 = static_cast<std::size_t>(a);
  if (kTwo) *c2 = static_cast<std::size_t>(b);
}

template <class Isa>
std::size_t CountAtLeast(const unsigned char* p, std::size_t n, unsigned int t) {
  std::size_t c = 0;
  Count<Isa, false>(p, n, t, t, &c, nullptr);
  return c;
}

template <class Isa>
void CountAtLeast2(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
                   std::size_t* c2) {
  Count<Isa, true>(p, n, t1, t2, c1, c2);
}

template <class Isa>
void MinMax(const unsigned char* p, std::size_t n, unsigned char* lo, unsigned char* hi) {
  using V = typename Isa::V;
  constexpr std::size_t kB = Isa::kBytes;
  unsigned char a = *lo, b = *hi;
  std::size_t i = 0;
  if (n >= kB) {
    V mn0 = Isa::Set1_8(a), mx0 = Isa::Set1_8(b), mn1 = mn0, mx1 = mx0;
    for (; i + 2 * kB <= n; i += 2 * kB) {
      const V v0 = Isa::Load(p + i), v1 = Isa::Load(p + i + kB);
      mn0 = Isa::Min8(mn0, v0);
      mx0 = Isa::Max8(mx0, v0);
      mn1 = Isa::Min8(mn1, v1);
      mx1 = Isa::Max8(mx1, v1);
    }
    for (; i + kB <= n; i += kB) {
      const V v = Isa::Load(p + i);
      mn0 = Isa::Min8(mn0, v);
      mx0 = Isa::Max8(mx0, v);
    }
    a = static_cast<unsigned char>(Isa::MinLane8(Isa::Min8(mn0, mn1)));
    b = static_cast<unsigned char>(Isa::MaxLane8(Isa::Max8(mx0, mx1)));
  }
  for (; i < n; ++i) {
    a = p[i] < a ? p[i] : a;
    b = p[i] > b ? p[i] : b;
  }
  *lo = a;
  *hi = b;
}

template <class Isa>
std::size_t CountDiffer(const unsigned char* a, const unsigned char* b, std::size_t n) {
  using V = typename Isa::V;
  constexpr std::size_t kB = Isa::kBytes;
  const V zero = Isa::Zero();
  std::uint64_t same = 0;
  std::size_t i = 0;
  while (i + kB <= n) {
    const std::size_t end = n - i > kB * 255 ? i + kB * 255 : n;
    V k = zero;
    for (; i + kB <= end; i += kB) k = Isa::Sub8(k, Isa::CmpEq8(Isa::Load(a + i), Isa::Load(b + i)));
    same += Isa::Lanes64(Isa::Sad(k, zero));
  }
  std::size_t differ = i - static_cast<std::size_t>(same);
  for (; i < n; ++i) differ += a[i] != b[i] ? 1 : 0;
  return differ;
}

}  // namespace bytes

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

#endif  // MIREL_MEASURE_STATISTICS_BLOCKS_INTERNAL_H_
