// The 8-bit affine row by blocks, written once over an instruction-set
// layer. Each per-instruction-set source defines, in an unnamed namespace, a
// struct Isa with:
//
//   V, kLanes                 a vector of kLanes signed 32-bit lanes
//   Set1(v), Lanes(step)      every lane v; lane k holds k * step (wrapping)
//   Add, Sub, And, Or, MulLo  lane-wise 32-bit arithmetic (MulLo keeps the
//                             low 32 bits of the product)
//   Srai<k>, Srli<k>, Slli<k> shifts by a constant
//   Madd16(a, b)              per lane: lo16(a) * lo16(b) + hi16(a) * hi16(b),
//                             as signed 16-bit halves
//   AllWithin(v, lo, hi)      true when lo <= v < hi in every lane (signed)
//   Gather(base, idx)         per lane the 4 bytes at base + idx, little-endian
//   StoreBytes(out, v)        lanes holding 0..255 to out[0 .. kLanes)
//   Load(p), StoreU16(p, v)   kLanes int32 from p; lanes holding 0..65535
//                             to kLanes uint16 at p (wide sets only)
//
// A block goes across the lanes only when every pixel in it lies inside the
// zone where the source is read with no edge rule and the 4-byte gather
// stays inside the source row (three columns short of the right end);
// otherwise the block is done pixel by pixel with the scalar sampling.
#ifndef MIREL_GEOMETRY_AFFINE_BLOCKS_INTERNAL_H_
#define MIREL_GEOMETRY_AFFINE_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/geometry/affine_internal.h"

namespace mirel {
namespace geometry {
namespace blocks {

template <class Isa, int n>
inline typename Isa::V BilinearLanes(const std::uint8_t* base, std::int32_t pitch, typename Isa::V xs,
                                     typename Isa::V ys) {
  using V = typename Isa::V;
  constexpr std::int32_t N = 1 << n;
  const V ix = Isa::Sub(Isa::template Srai<16>(xs), Isa::Set1(1));
  const V iy = Isa::Sub(Isa::template Srai<16>(ys), Isa::Set1(1));
  const V idx = Isa::Add(Isa::MulLo(iy, Isa::Set1(pitch)), ix);
  const V top = Isa::Gather(base, idx);
  const V bottom = Isa::Gather(base + pitch, idx);
  const V mask = Isa::Set1(N - 1);
  const V fx = Isa::And(Isa::template Srli<16 - n>(xs), mask);
  const V fy = Isa::And(Isa::template Srli<16 - n>(ys), mask);
  // (N - fx) in the low half, fx in the high half of each lane.
  const V wx = Isa::Or(Isa::Sub(Isa::Set1(N), fx), Isa::template Slli<16>(fx));
  // Left pixel in the low half, right pixel in the high half.
  const V lo = Isa::Set1(0xff), hi = Isa::Set1(0xff00);
  const V pairTop = Isa::Or(Isa::And(top, lo), Isa::template Slli<8>(Isa::And(top, hi)));
  const V pairBottom = Isa::Or(Isa::And(bottom, lo), Isa::template Slli<8>(Isa::And(bottom, hi)));
  const V t = Isa::Madd16(pairTop, wx);  // TL (N - fx) + TR fx
  const V b = Isa::Madd16(pairBottom, wx);
  // t (N - fy) + b fy = t N + (b - t) fy, exact in 32 bits.
  const V sum = Isa::Add(Isa::template Slli<n>(t), Isa::MulLo(Isa::Sub(b, t), fy));
  return Isa::template Srli<2 * n>(sum);
}

template <class Isa, int bits>
void RowOf(const AffineSource<std::uint8_t>& s, AffineRow pos, std::uint8_t* out, int count) {
  using V = typename Isa::V;
  constexpr int L = Isa::kLanes;
  // The zone of a block done across the lanes; empty for narrow sources.
  std::int32_t loX = 0, hiX = -1, loY = 0, hiY = -1;
  if (s.width >= 4 && s.height >= 1) {
    if (bits == 0) {
      hiX = (s.width - 3) << 16;
      hiY = s.H;
    } else {
      loX = loY = 65536;
      hiX = (s.width - 2) << 16;
      hiY = s.H;
    }
  }
  const std::int32_t pitch = static_cast<std::int32_t>(s.pitch);
  const V stepX = Isa::Lanes(pos.p), stepY = Isa::Lanes(pos.r);
  std::uint32_t x = pos.x, y = pos.y;
  const std::uint32_t blockX = pos.p * static_cast<std::uint32_t>(L);
  const std::uint32_t blockY = pos.r * static_cast<std::uint32_t>(L);
  int u = 0;
  for (; u + L <= count; u += L, x += blockX, y += blockY) {
    const V xs = Isa::Add(Isa::Set1(AsSigned(x)), stepX);
    const V ys = Isa::Add(Isa::Set1(AsSigned(y)), stepY);
    if (Isa::AllWithin(xs, loX, hiX) && Isa::AllWithin(ys, loY, hiY)) {
      if (bits == 0) {
        const V idx = Isa::Add(Isa::MulLo(Isa::template Srai<16>(ys), Isa::Set1(pitch)),
                               Isa::template Srai<16>(xs));
        Isa::StoreBytes(out + u, Isa::And(Isa::Gather(s.base, idx), Isa::Set1(0xff)));
      } else {
        Isa::StoreBytes(out + u, BilinearLanes<Isa, bits>(s.base, pitch, xs, ys));
      }
    } else {
      SampleRow(s, bits, AffineRow{x, y, pos.p, pos.r}, out + u, L);
    }
  }
  SampleRow(s, bits, AffineRow{x, y, pos.p, pos.r}, out + u, count - u);
}

template <class Isa>
void Row(const AffineSource<std::uint8_t>& s, int bits, AffineRow pos, std::uint8_t* out, int count) {
  // Lane indices are 32-bit byte offsets from the first pixel.
  if (static_cast<std::int64_t>(s.pitch) * s.height > INT32_MAX || s.pitch < 0) {
    SampleRow(s, bits, pos, out, count);
    return;
  }
  switch (bits) {
    case 0: RowOf<Isa, 0>(s, pos, out, count); break;
    case 4: RowOf<Isa, 4>(s, pos, out, count); break;
    default: RowOf<Isa, 8>(s, pos, out, count); break;
  }
}

template <class Isa>
int HorizontalGather(const std::uint8_t* row, int width, const std::int32_t* ix, const std::int32_t* wx, int u0,
                     int u1, std::uint16_t* h) {
  constexpr int L = Isa::kLanes;
  const typename Isa::V lo = Isa::Set1(0xff), hi = Isa::Set1(0xff00);
  int u = u0;
  for (; u + L <= u1 && ix[u + L - 1] <= width - 4; u += L) {
    const typename Isa::V g = Isa::Gather(row, Isa::Load(ix + u));
    const typename Isa::V pair = Isa::Or(Isa::And(g, lo), Isa::template Slli<8>(Isa::And(g, hi)));
    Isa::StoreU16(h + u, Isa::Madd16(pair, Isa::Load(wx + u)));
  }
  return u;
}

template <class Isa>
int NearestGather(const std::uint8_t* row, int width, const std::int32_t* ix, int u0, int u1, std::uint8_t* out) {
  constexpr int L = Isa::kLanes;
  int u = u0;
  for (; u + L <= u1 && ix[u + L - 1] <= width - 4; u += L)
    Isa::StoreBytes(out + u, Isa::And(Isa::Gather(row, Isa::Load(ix + u)), Isa::Set1(0xff)));
  return u;
}

// The separable sums on 16-bit lanes (Isa::kLanes16 of them): Widen(p)
// loads kLanes16 bytes as 16-bit lanes, EvenOdd(p, e, o) splits 2 kLanes16
// bytes into even and odd ones; Set16, Add16, Sub16, Mullo16, MulhiU16,
// Srli16<k> as named; Carry16(sum, part) is all ones in a lane where the
// 16-bit sum wrapped (sum < part, unsigned); LoadU16Lanes, StoreU16Lanes;
// StoreBytes16(out, v) packs lanes holding 0..255 to bytes.
template <class Isa>
int StepSums(const std::uint8_t* at, int k, std::uint32_t g, std::uint32_t f, int count, std::uint16_t* h) {
  constexpr int L = Isa::kLanes16;
  const auto vg = Isa::Set16(static_cast<std::int16_t>(g)), vf = Isa::Set16(static_cast<std::int16_t>(f));
  int j = 0;
  if (k == 1) {
    for (; j + L <= count; j += L) {
      const auto a = Isa::Widen(at + j), b = Isa::Widen(at + j + 1);
      Isa::StoreU16Lanes(h + j, Isa::Add16(Isa::Mullo16(a, vg), Isa::Mullo16(b, vf)));
    }
  } else {
    for (; j + L <= count; j += L) {
      typename Isa::V a, b;
      Isa::EvenOdd(at + 2 * j, a, b);
      Isa::StoreU16Lanes(h + j, Isa::Add16(Isa::Mullo16(a, vg), Isa::Mullo16(b, vf)));
    }
  }
  return j;
}

template <class Isa>
int VerticalBlend(const std::uint16_t* t, const std::uint16_t* b, std::uint32_t fy, int n, int count,
                  std::uint8_t* out) {
  constexpr int L = Isa::kLanes16;
  const std::uint32_t gy = (1u << n) - fy;
  const auto vg = Isa::Set16(static_cast<std::int16_t>(gy)), vf = Isa::Set16(static_cast<std::int16_t>(fy));
  int u = 0;
  if (n == 4) {  // every product and the sum fit in 16 bits
    for (; u + L <= count; u += L) {
      const auto sum = Isa::Add16(Isa::Mullo16(Isa::LoadU16Lanes(t + u), vg), Isa::Mullo16(Isa::LoadU16Lanes(b + u), vf));
      Isa::StoreBytes16(out + u, Isa::template Srli16<8>(sum));
    }
    return u;
  }
  // n == 8: the result is the upper half of the 32-bit sum of two 32-bit
  // products, assembled from 16-bit halves with the carry of the lower.
  for (; u + L <= count; u += L) {
    const auto vt = Isa::LoadU16Lanes(t + u), vb = Isa::LoadU16Lanes(b + u);
    const auto lo1 = Isa::Mullo16(vt, vg);
    const auto lo = Isa::Add16(lo1, Isa::Mullo16(vb, vf));
    const auto hi = Isa::Add16(Isa::MulhiU16(vt, vg), Isa::MulhiU16(vb, vf));
    Isa::StoreBytes16(out + u, Isa::Sub16(hi, Isa::Carry16(lo, lo1)));
  }
  return u;
}

template <class Isa>
int Halves(const std::uint8_t* r0, const std::uint8_t* r1, int count, std::uint8_t* out) {
  constexpr int L = Isa::kLanes16;
  int j = 0;
  for (; j + L <= count; j += L) {
    typename Isa::V a, b, c, d;
    Isa::EvenOdd(r0 + 2 * j, a, b);
    Isa::EvenOdd(r1 + 2 * j, c, d);
    Isa::StoreBytes16(out + j, Isa::template Srli16<2>(Isa::Add16(Isa::Add16(a, b), Isa::Add16(c, d))));
  }
  return j;
}

}  // namespace blocks
}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_AFFINE_BLOCKS_INTERNAL_H_
