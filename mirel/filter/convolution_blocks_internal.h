// Block routines of the 8-bit filters, written once over an instruction-set
// layer. Each per-instruction-set source defines, in an unnamed namespace, a
// struct `Isa` with the operations below and includes this header, so every
// instantiation is private to the file compiled with that set enabled.
//
// Isa::V holds one block: kBlock pixels widened to 16 bits, or the same
// pixels as 32-bit sums split into the lanes that UnpackLo16 / UnpackHi16
// give. StoreClamp packs two such halves back in pixel order.
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

// One block: every pair of terms meets its coefficient pair in a
// multiply-add; with kWide the upper halves of the coefficients go through a
// second set of sums that is shifted up by 16 bits at the end. The two
// halves of 32-bit sums go to `sink(lo, hi, x)`.
template <class Isa, bool kSingle, bool kWide, class Sink>
int BlockSumsOf(const BlockJob& job, int x0, int x1, Sink&& sink) {
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
    if (kSingle) {
      for (int p = 0; p < fullPairs; ++p)
        pair(Isa::Load8(job.taps[2 * p] + x), Isa::Load8(job.taps[2 * p + 1] + x), p);
      if (taps & 1) pair(Isa::Load8(job.taps[taps - 1] + x), Isa::Zero(), fullPairs);
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
template <class Isa, int N, class Sink>
int BlockSumsOfN(const BlockJob& job, int x0, int x1, Sink&& sink) {
  using V = typename Isa::V;
  constexpr int B = Isa::kBlock;
  constexpr int P = (N + 1) / 2;
  const V offset = Isa::Set1_32(job.offset);
  const std::uint8_t* t[N];
  for (int i = 0; i < N; ++i) t[i] = job.taps[i];
  V c[P];
  for (int p = 0; p < P; ++p) c[p] = Isa::Set1_32(job.pairCoef[p]);
  return Blocks<B>(x0, x1, [&](int x) {
    V lo = offset, hi = offset;
#pragma GCC unroll 32
    for (int p = 0; p < N / 2; ++p) {
      const V a = Isa::Load8(t[2 * p] + x), b = Isa::Load8(t[2 * p + 1] + x);
      lo = Isa::Add32(lo, Isa::Madd(Isa::UnpackLo16(a, b), c[p]));
      hi = Isa::Add32(hi, Isa::Madd(Isa::UnpackHi16(a, b), c[p]));
    }
    if (N & 1) {
      const V a = Isa::Load8(t[N - 1] + x), z = Isa::Zero();
      lo = Isa::Add32(lo, Isa::Madd(Isa::UnpackLo16(a, z), c[P - 1]));
      hi = Isa::Add32(hi, Isa::Madd(Isa::UnpackHi16(a, z), c[P - 1]));
    }
    sink(lo, hi, x);
  });
}

template <class Isa, class Sink>
int BlockSumsAny(const BlockJob& job, int x0, int x1, Sink&& sink) {
  if (job.singleTaps && !job.wide) {
    switch (job.termEnd[2 * job.pairs - 1]) {
      case 9: return BlockSumsOfN<Isa, 9>(job, x0, x1, sink);
      case 25: return BlockSumsOfN<Isa, 25>(job, x0, x1, sink);
      case 49: return BlockSumsOfN<Isa, 49>(job, x0, x1, sink);
      default: break;
    }
  }
  if (job.singleTaps)
    return job.wide ? BlockSumsOf<Isa, true, true>(job, x0, x1, sink)
                    : BlockSumsOf<Isa, true, false>(job, x0, x1, sink);
  return job.wide ? BlockSumsOf<Isa, false, true>(job, x0, x1, sink)
                  : BlockSumsOf<Isa, false, false>(job, x0, x1, sink);
}

template <class Isa>
int BlockRow(const BlockJob& job, int x0, int x1, std::uint8_t* dst) {
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
    Isa::StoreClamp(dst + x, lo, hi);
  });
}

// The raw 32-bit sums, in pixel order.
template <class Isa>
int BlockSums(const BlockJob& job, int x0, int x1, std::int32_t* out) {
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

// Four vectors of doubles per step keep four independent chains of sums.
template <class Isa>
int FloatRow(const float* k, int sx, int sy, const std::uint8_t* const* rows, int count,
             std::int32_t* out) {
  using D = typename Isa::VD;
  constexpr int L = Isa::kDoubles;
  return Blocks<4 * L>(0, count, [&](int i) {
    D a0 = Isa::ZeroD(), a1 = a0, a2 = a0, a3 = a0;
    for (int ky = 0; ky < sy; ++ky) {
      const std::uint8_t* p = rows[ky] + i;
      const float* kr = k + sx * ky;
      for (int kx = 0; kx < sx; ++kx) {
        const D c = Isa::Set1D(static_cast<double>(kr[kx]));
        a0 = Isa::AddD(a0, Isa::MulD(c, Isa::LoadBytesD(p + kx)));
        a1 = Isa::AddD(a1, Isa::MulD(c, Isa::LoadBytesD(p + kx + L)));
        a2 = Isa::AddD(a2, Isa::MulD(c, Isa::LoadBytesD(p + kx + 2 * L)));
        a3 = Isa::AddD(a3, Isa::MulD(c, Isa::LoadBytesD(p + kx + 3 * L)));
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
  return SimdRoutines{&BlockRow<Isa>, &BlockSums<Isa>, &Horizontal<Isa>, &Vertical<Isa>,
                      &FloatRow<Isa>};
}

}  // namespace blocks
}  // namespace filter
}  // namespace mirel

#endif  // MIREL_FILTER_CONVOLUTION_BLOCKS_INTERNAL_H_
