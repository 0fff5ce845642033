// Block routines of the 8-bit filters, written once over an instruction-set
// layer. Each per-instruction-set source defines, in an unnamed namespace, a
// struct `Isa` with the operations below and includes this header, so every
// instantiation is private to the file compiled with that set enabled.
//
// Isa::V holds one block: kBlock pixels widened to 16 bits (16-bit pixels
// less 32768), or the same pixels as 32-bit sums split into the lanes that
// UnpackLo16 / UnpackHi16 give. StoreClamp and StoreClamp16 pack two such
// halves back in pixel order. The separable 16-bit filters hold kBlock / 2
// pixels a vector, in 32-bit lanes in pixel order.
#ifndef MIREL_FILTER_CONVOLUTION_BLOCKS_INTERNAL_H_
#define MIREL_FILTER_CONVOLUTION_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/filter/convolution_internal.h"

namespace mirel {
namespace filter {
namespace blocks {

// A row's last stretch shorter than a block is done by one more block that
// ends at x1 and overlaps the previous one; it writes the same bytes again.
template <int B, class F>
inline int Blocks(int x0, int x1, F&& one) {
  int x = x0;
  for (; x + B <= x1; x += B) one(x);
  if (x < x1 && x1 - x0 >= B) {
    one(x1 - B);
    x = x1;
  }
  return x;
}

// A block of the pixels of one tap, as the multiply-add takes them.
template <class Isa>
inline typename Isa::V LoadTap(const std::uint8_t* p) { return Isa::Load8(p); }
template <class Isa>
inline typename Isa::V LoadTap(const std::uint16_t* p) { return Isa::LoadS16(p); }
template <class Isa>
inline void StoreClampOf(std::uint8_t* p, typename Isa::V lo, typename Isa::V hi) { Isa::StoreClamp(p, lo, hi); }
template <class Isa>
inline void StoreClampOf(std::uint16_t* p, typename Isa::V lo, typename Isa::V hi) {
  Isa::StoreClamp16(p, lo, hi);
}

// One block: every pair of terms meets its coefficient pair in a
// multiply-add; with kWide the upper halves of the coefficients go through a
// second set of sums that is shifted up by 16 bits at the end. The two
// halves of 32-bit sums go to `sink(lo, hi, x)`.
template <class Isa, bool kSingle, bool kWide, class P, class Sink>
int BlockSumsOf(const BlockJobOf<P>& job, int x0, int x1, Sink&& sink) {
  using V = typename Isa::V;
  constexpr int B = Isa::kBlock;
  const V offset = Isa::Set1_32(job.offset);
  const int taps = job.termEnd[2 * job.pairs - 1];
  const int fullPairs = taps / 2;
  return Blocks<B>(x0, x1, [&](int x) {
    V lo = offset, hi = offset;
    V lo2 = Isa::Zero(), hi2 = Isa::Zero();
    auto pair = [&](V a, V b, int p) {
      const V ua = Isa::UnpackLo16(a, b), ub = Isa::UnpackHi16(a, b);
      const V c = Isa::Set1_32(job.pairCoef[p]);
      lo = Isa::Add32(lo, Isa::Madd(ua, c));
      hi = Isa::Add32(hi, Isa::Madd(ub, c));
      if (kWide) {
        const V c2 = Isa::Set1_32(job.pairCoefHi[p]);
        lo2 = Isa::Add32(lo2, Isa::Madd(ua, c2));
        hi2 = Isa::Add32(hi2, Isa::Madd(ub, c2));
      }
    };
    if constexpr (kSingle) {
      for (int p = 0; p < fullPairs; ++p)
        pair(LoadTap<Isa>(job.taps[2 * p] + x), LoadTap<Isa>(job.taps[2 * p + 1] + x), p);
      if (taps & 1) pair(LoadTap<Isa>(job.taps[taps - 1] + x), Isa::Zero(), fullPairs);
    } else {
      int t = 0;
      for (int p = 0; p < job.pairs; ++p) {
        V a = Isa::Zero();
        for (; t < job.termEnd[2 * p]; ++t) a = Isa::Add16(a, Isa::Load8(job.taps[t] + x));
        V b = Isa::Zero();
        for (; t < job.termEnd[2 * p + 1]; ++t) b = Isa::Add16(b, Isa::Load8(job.taps[t] + x));
        pair(a, b, p);
      }
    }
    if (kWide) {
      lo = Isa::Add32(lo, Isa::template Slli32<16>(lo2));
      hi = Isa::Add32(hi, Isa::template Slli32<16>(hi2));
    }
    sink(lo, hi, x);
  });
}

// The common plain windows (one pixel per term, coefficients within 16
// bits) with the tap count known to the compiler: pointers and coefficient
// pairs stay in registers and the pair loop unrolls.
template <class Isa, int N, class Px, class Sink>
int BlockSumsOfN(const BlockJobOf<Px>& job, int x0, int x1, Sink&& sink) {
  using V = typename Isa::V;
  constexpr int B = Isa::kBlock;
  constexpr int P = (N + 1) / 2;
  const V offset = Isa::Set1_32(job.offset);
  const Px* t[N];
  for (int i = 0; i < N; ++i) t[i] = job.taps[i];
  V c[P];
  for (int p = 0; p < P; ++p) c[p] = Isa::Set1_32(job.pairCoef[p]);
  return Blocks<B>(x0, x1, [&](int x) {
    V lo = offset, hi = offset;
#pragma GCC unroll 32
    for (int p = 0; p < N / 2; ++p) {
      const V a = LoadTap<Isa>(t[2 * p] + x), b = LoadTap<Isa>(t[2 * p + 1] + x);
      lo = Isa::Add32(lo, Isa::Madd(Isa::UnpackLo16(a, b), c[p]));
      hi = Isa::Add32(hi, Isa::Madd(Isa::UnpackHi16(a, b), c[p]));
    }
    if (N & 1) {
      const V a = LoadTap<Isa>(t[N - 1] + x), z = Isa::Zero();
      lo = Isa::Add32(lo, Isa::Madd(Isa::UnpackLo16(a, z), c[P - 1]));
      hi = Isa::Add32(hi, Isa::Madd(Isa::UnpackHi16(a, z), c[P - 1]));
    }
    sink(lo, hi, x);
  });
}

// Jobs of 16-bit pixels always have one tap per term: the sum of several
// pixels would leave the 16-bit lanes.
template <class Isa, class P, class Sink>
int BlockSumsAny(const BlockJobOf<P>& job, int x0, int x1, Sink&& sink) {
  if (job.singleTaps && !job.wide) {
    switch (job.termEnd[2 * job.pairs - 1]) {
      case 9: return BlockSumsOfN<Isa, 9>(job, x0, x1, sink);
      case 25: return BlockSumsOfN<Isa, 25>(job, x0, x1, sink);
      case 49: return BlockSumsOfN<Isa, 49>(job, x0, x1, sink);
      default: break;
    }
  }
  if (sizeof(P) > 1 || job.singleTaps)
    return job.wide ? BlockSumsOf<Isa, true, true>(job, x0, x1, sink)
                    : BlockSumsOf<Isa, true, false>(job, x0, x1, sink);
  if constexpr (sizeof(P) == 1)
    return job.wide ? BlockSumsOf<Isa, false, true>(job, x0, x1, sink)
                    : BlockSumsOf<Isa, false, false>(job, x0, x1, sink);
  return x0;
}

template <class Isa, class P>
int BlockRow(const BlockJobOf<P>& job, int x0, int x1, P* dst) {
  using V = typename Isa::V;
  const int shift = job.shift;
  const bool absolute = job.absolute;
  return BlockSumsAny<Isa>(job, x0, x1, [&](V lo, V hi, int x) {
    lo = Isa::Sra32(lo, shift);
    hi = Isa::Sra32(hi, shift);
    if (absolute) {
      lo = Isa::Abs32(lo);
      hi = Isa::Abs32(hi);
    }
    StoreClampOf<Isa>(dst + x, lo, hi);
  });
}

// The raw 32-bit sums, in pixel order.
template <class Isa, class P>
int BlockSums(const BlockJobOf<P>& job, int x0, int x1, std::int32_t* out) {
  using V = typename Isa::V;
  return BlockSumsAny<Isa>(job, x0, x1, [&](V lo, V hi, int x) { Isa::StoreSums(out + x, lo, hi); });
}

// Horizontal sums of the separable filters: at most 16 * 255 (Gaussian 5),
// 64 * 255 (Gaussian 7), 7 * 255 (uniform), all within 16 bits.
template <class Isa>
int Horizontal(FixedFilter kind, const std::uint8_t* s, int width, std::uint16_t* out) {
  using V = typename Isa::V;
  constexpr int B = Isa::kBlock;
  int x = 0;
  switch (kind) {
    case FixedFilter::kUniform5:
      x = Blocks<B>(0, width, [&](int i) {
        const std::uint8_t* p = s + i;
        V h = Isa::Add16(Isa::Add16(Isa::Load8(p), Isa::Load8(p + 1)),
                         Isa::Add16(Isa::Load8(p + 2), Isa::Load8(p + 3)));
        h = Isa::Add16(h, Isa::Load8(p + 4));
        Isa::StoreU16(out + i, h);
      });
      break;
    case FixedFilter::kUniform7:
      x = Blocks<B>(0, width, [&](int i) {
        const std::uint8_t* p = s + i;
        V h = Isa::Add16(Isa::Add16(Isa::Load8(p), Isa::Load8(p + 1)),
                         Isa::Add16(Isa::Load8(p + 2), Isa::Load8(p + 3)));
        h = Isa::Add16(h, Isa::Add16(Isa::Add16(Isa::Load8(p + 4), Isa::Load8(p + 5)),
                                     Isa::Load8(p + 6)));
        Isa::StoreU16(out + i, h);
      });
      break;
    case FixedFilter::kGaussian5:
      x = Blocks<B>(0, width, [&](int i) {
        const std::uint8_t* p = s + i;
        const V e = Isa::Add16(Isa::Load8(p), Isa::Load8(p + 4));
        const V m = Isa::Add16(Isa::Load8(p + 1), Isa::Load8(p + 3));
        const V c = Isa::Load8(p + 2);
        // e + 4m + 6c = e + 2 * (2m + 3c)
        const V inner = Isa::Add16(Isa::Add16(m, c), Isa::Add16(Isa::Add16(m, c), c));
        Isa::StoreU16(out + i, Isa::Add16(e, Isa::Add16(inner, inner)));
      });
      break;
    case FixedFilter::kGaussian7:
      x = Blocks<B>(0, width, [&](int i) {
        const std::uint8_t* p = s + i;
        const V a = Isa::Add16(Isa::Load8(p), Isa::Load8(p + 6));
        const V b = Isa::Add16(Isa::Load8(p + 1), Isa::Load8(p + 5));
        const V c = Isa::Add16(Isa::Load8(p + 2), Isa::Load8(p + 4));
        const V d = Isa::Load8(p + 3);
        V h = Isa::Add16(a, Isa::Mullo16(b, 6));
        h = Isa::Add16(h, Isa::Add16(Isa::Mullo16(c, 15), Isa::Mullo16(d, 20)));
        Isa::StoreU16(out + i, h);
      });
      break;
  }
  return x;
}

// Vertical sums and the final scaling of the separable filters.
template <class Isa>
int Vertical(FixedFilter kind, const std::uint16_t* const* r, int width, std::uint8_t* dst) {
  using V = typename Isa::V;
  constexpr int B = Isa::kBlock;
  int x = 0;
  switch (kind) {
    case FixedFilter::kUniform5:
      // (sum * 335544) >> 23 == (sum * 41943) >> 20 for every 16-bit sum.
      x = Blocks<B>(0, width, [&](int i) {
        V s = Isa::Add16(Isa::Add16(Isa::LoadU16(r[0] + i), Isa::LoadU16(r[1] + i)),
                         Isa::Add16(Isa::LoadU16(r[2] + i), Isa::LoadU16(r[3] + i)));
        s = Isa::Add16(s, Isa::LoadU16(r[4] + i));
        Isa::StoreU8FromU16(dst + i, Isa::template Srli16<4>(Isa::MulHiU16(s, 41943)));
      });
      break;
    case FixedFilter::kUniform7:
      // (sum * 171196) >> 23 == (sum * 42799) >> 21.
      x = Blocks<B>(0, width, [&](int i) {
        V s = Isa::Add16(Isa::Add16(Isa::LoadU16(r[0] + i), Isa::LoadU16(r[1] + i)),
                         Isa::Add16(Isa::LoadU16(r[2] + i), Isa::LoadU16(r[3] + i)));
        s = Isa::Add16(s, Isa::Add16(Isa::Add16(Isa::LoadU16(r[4] + i), Isa::LoadU16(r[5] + i)),
                                     Isa::LoadU16(r[6] + i)));
        Isa::StoreU8FromU16(dst + i, Isa::template Srli16<5>(Isa::MulHiU16(s, 42799)));
      });
      break;
    case FixedFilter::kGaussian5:
      // The total is at most 256 * 255 and fits 16 unsigned bits.
      x = Blocks<B>(0, width, [&](int i) {
        const V e = Isa::Add16(Isa::LoadU16(r[0] + i), Isa::LoadU16(r[4] + i));
        const V m = Isa::Add16(Isa::LoadU16(r[1] + i), Isa::LoadU16(r[3] + i));
        const V c = Isa::LoadU16(r[2] + i);
        const V inner = Isa::Add16(Isa::Add16(m, c), Isa::Add16(Isa::Add16(m, c), c));
        const V s = Isa::Add16(e, Isa::Add16(inner, inner));
        Isa::StoreU8FromU16(dst + i, Isa::template Srli16<8>(s));
      });
      break;
    case FixedFilter::kGaussian7: {
      // The total needs 20 bits: pairs of rows meet their weights in 32-bit lanes.
      const V w16 = Isa::Set1_32(1 | (6 << 16));
      const V w1520 = Isa::Set1_32(15 | (20 << 16));
      x = Blocks<B>(0, width, [&](int i) {
        const V a = Isa::Add16(Isa::LoadU16(r[0] + i), Isa::LoadU16(r[6] + i));
        const V b = Isa::Add16(Isa::LoadU16(r[1] + i), Isa::LoadU16(r[5] + i));
        const V c = Isa::Add16(Isa::LoadU16(r[2] + i), Isa::LoadU16(r[4] + i));
        const V d = Isa::LoadU16(r[3] + i);
        V lo = Isa::Add32(Isa::Madd(Isa::UnpackLo16(a, b), w16),
                          Isa::Madd(Isa::UnpackLo16(c, d), w1520));
        V hi = Isa::Add32(Isa::Madd(Isa::UnpackHi16(a, b), w16),
                          Isa::Madd(Isa::UnpackHi16(c, d), w1520));
        Isa::StoreClamp(dst + i, Isa::Sra32(lo, 12), Isa::Sra32(hi, 12));
      });
      break;
    }
  }
  return x;
}

// Horizontal sums of the separable filters on 16-bit pixels, in 32-bit
// lanes: at most 64 * 65535.
template <class Isa>
int Horizontal16(FixedFilter kind, const std::uint16_t* s, int width, std::uint32_t* out) {
  using V = typename Isa::V;
  constexpr int L = Isa::kBlock / 2;
  auto ld = [&](int i) { return Isa::LoadW32(s + i); };
  auto add = [](V a, V b) { return Isa::Add32(a, b); };
  switch (kind) {
    case FixedFilter::kUniform5:
      return Blocks<L>(0, width, [&](int i) {
        Isa::StoreU32(out + i, add(add(add(ld(i), ld(i + 1)), add(ld(i + 2), ld(i + 3))), ld(i + 4)));
      });
    case FixedFilter::kUniform7:
      return Blocks<L>(0, width, [&](int i) {
        const V a = add(add(ld(i), ld(i + 1)), add(ld(i + 2), ld(i + 3)));
        Isa::StoreU32(out + i, add(a, add(add(ld(i + 4), ld(i + 5)), ld(i + 6))));
      });
    case FixedFilter::kGaussian5:
      return Blocks<L>(0, width, [&](int i) {
        const V e = add(ld(i), ld(i + 4)), m = add(ld(i + 1), ld(i + 3)), c = ld(i + 2);
        // e + 4m + 6c = e + 2 * (2m + 3c)
        const V inner = add(add(m, c), add(add(m, c), c));
        Isa::StoreU32(out + i, add(e, add(inner, inner)));
      });
    case FixedFilter::kGaussian7:
      return Blocks<L>(0, width, [&](int i) {
        const V a = add(ld(i), ld(i + 6)), b = add(ld(i + 1), ld(i + 5));
        const V c = add(ld(i + 2), ld(i + 4)), d = ld(i + 3);
        const V h = add(add(a, Isa::template MulK32<6>(b)),
                        add(Isa::template MulK32<15>(c), Isa::template MulK32<20>(d)));
        Isa::StoreU32(out + i, h);
      });
  }
  return 0;
}

// Vertical sums and the final scaling of the separable filters on 16-bit
// pixels. The uniform products wrap at 32 bits, as in the pixel code.
template <class Isa>
int Vertical16(FixedFilter kind, const std::uint32_t* const* r, int width, std::uint16_t* dst) {
  using V = typename Isa::V;
  constexpr int L = Isa::kBlock / 2;
  auto add = [](V a, V b) { return Isa::Add32(a, b); };
  switch (kind) {
    case FixedFilter::kUniform5:
      return Blocks<L>(0, width, [&](int i) {
        auto ld = [&](int j) { return Isa::LoadU32(r[j] + i); };
        const V s = add(add(add(ld(0), ld(1)), add(ld(2), ld(3))), ld(4));
        Isa::StoreU16From32(dst + i, Isa::template Srli32<23>(Isa::MulLo32(s, 335544)));
      });
    case FixedFilter::kUniform7:
      return Blocks<L>(0, width, [&](int i) {
        auto ld = [&](int j) { return Isa::LoadU32(r[j] + i); };
        const V s = add(add(add(ld(0), ld(1)), add(ld(2), ld(3))), add(add(ld(4), ld(5)), ld(6)));
        Isa::StoreU16From32(dst + i, Isa::template Srli32<23>(Isa::MulLo32(s, 171196)));
      });
    case FixedFilter::kGaussian5:
      return Blocks<L>(0, width, [&](int i) {
        auto ld = [&](int j) { return Isa::LoadU32(r[j] + i); };
        const V e = add(ld(0), ld(4)), m = add(ld(1), ld(3)), c = ld(2);
        const V inner = add(add(m, c), add(add(m, c), c));
        Isa::StoreU16From32(dst + i, Isa::template Srli32<8>(add(e, add(inner, inner))));
      });
    case FixedFilter::kGaussian7:
      return Blocks<L>(0, width, [&](int i) {
        auto ld = [&](int j) { return Isa::LoadU32(r[j] + i); };
        const V a = add(ld(0), ld(6)), b = add(ld(1), ld(5)), c = add(ld(2), ld(4)), d = ld(3);
        const V s = add(add(a, Isa::template MulK32<6>(b)),
                        add(Isa::template MulK32<15>(c), Isa::template MulK32<20>(d)));
        Isa::StoreU16From32(dst + i, Isa::template Srli32<12>(s));
      });
  }
  return 0;
}

template <class Isa>
inline typename Isa::VD LoadD(const std::uint8_t* p) { return Isa::LoadBytesD(p); }
template <class Isa>
inline typename Isa::VD LoadD(const std::uint16_t* p) { return Isa::LoadWordsD(p); }

// Four vectors of doubles per step keep four independent chains of sums.
template <class Isa, class P>
int FloatRow(const float* k, int sx, int sy, const P* const* rows, int count, std::int32_t* out) {
  using D = typename Isa::VD;
  constexpr int L = Isa::kDoubles;
  return Blocks<4 * L>(0, count, [&](int i) {
    D a0 = Isa::ZeroD(), a1 = a0, a2 = a0, a3 = a0;
    for (int ky = 0; ky < sy; ++ky) {
      const P* p = rows[ky] + i;
      const float* kr = k + sx * ky;
      for (int kx = 0; kx < sx; ++kx) {
        const D c = Isa::Set1D(static_cast<double>(kr[kx]));
        a0 = Isa::AddD(a0, Isa::MulD(c, LoadD<Isa>(p + kx)));
        a1 = Isa::AddD(a1, Isa::MulD(c, LoadD<Isa>(p + kx + L)));
        a2 = Isa::AddD(a2, Isa::MulD(c, LoadD<Isa>(p + kx + 2 * L)));
        a3 = Isa::AddD(a3, Isa::MulD(c, LoadD<Isa>(p + kx + 3 * L)));
      }
    }
    Isa::StoreTrunc(out + i, a0);
    Isa::StoreTrunc(out + i + L, a1);
    Isa::StoreTrunc(out + i + 2 * L, a2);
    Isa::StoreTrunc(out + i + 3 * L, a3);
  });
}

template <class Isa>
SimdRoutines Routines() {
  return SimdRoutines{&BlockRow<Isa, std::uint8_t>,  &BlockSums<Isa, std::uint8_t>,
                      &Horizontal<Isa>,                &Vertical<Isa>,
                      &FloatRow<Isa, std::uint8_t>,    &BlockRow<Isa, std::uint16_t>,
                      &BlockSums<Isa, std::uint16_t>,  &Horizontal16<Isa>,
                      &Vertical16<Isa>,                &FloatRow<Isa, std::uint16_t>};
}

}  // namespace blocks
}  // namespace filter
}  // namespace mirel

#endif  // MIREL_FILTER_CONVOLUTION_BLOCKS_INTERNAL_H_
