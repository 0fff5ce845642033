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

}  // namespace blocks
}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_AFFINE_BLOCKS_INTERNAL_H_
