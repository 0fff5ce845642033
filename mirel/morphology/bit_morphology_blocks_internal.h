// Row kernels of the bit-image morphology and median, written once over the
// byte lanes of mirel/point/bits_lanes_internal.h. A kernel does the first
// and the last byte of a row one byte at a time, since their neighbours
// outside the row follow the border rule, and the bytes between them in
// vectors; every byte is the same formula, so every path gives the same
// bits. Each instruction-set source instantiates
// MakeKernels with its widest lanes; everything here has internal linkage.
//
// In a byte c, with p the byte before and x the byte after, the left
// neighbours of its pixels are (c >> 1) | (p << 7) and the right ones
// (c << 1) | (x >> 7).
#ifndef MIREL_MORPHOLOGY_BIT_MORPHOLOGY_BLOCKS_INTERNAL_H_
#define MIREL_MORPHOLOGY_BIT_MORPHOLOGY_BLOCKS_INTERNAL_H_

#include "mirel/morphology/bit_morphology_internal.h"
#include "mirel/point/bits_lanes_internal.h"

namespace mirel {
namespace bitmorph {
namespace blocks {
namespace {

using bits::ByteLanes;

// What a window row combines: the 3-pixel line of one row, the 3x3 square,
// or the cross (the column of three rows with the row's own neighbours).
enum Kind { kLine, kSquare, kCross };

template <class L, int kOp>
inline typename L::V Op(typename L::V a, typename L::V b) {
  if constexpr (kOp == 0) return L::And(a, b);
  else return L::Or(a, b);
}
template <class L, int kOp>
inline typename L::V Op3(typename L::V a, typename L::V b, typename L::V c) {
  return Op<L, kOp>(Op<L, kOp>(a, b), c);
}
template <class L>
inline typename L::V Majority(typename L::V a, typename L::V b, typename L::V c) {
  return L::Or(L::And(a, b), L::And(L::Or(a, b), c));
}

// Runs body(lanes, i) over the bytes [from, to): whole vectors of L, then a
// last vector that ends at `to` and overlaps the one before (it writes the
// same bytes again, since a kernel never reads what it writes), narrower
// vectors for a span shorter than one, and bytes.
template <class L, class Body>
inline void Span(int from, int to, Body&& body) {
  int i = from;
  if constexpr (L::kBytes > 1) {
    constexpr int kBytes = L::kBytes;
    if (to - from >= kBytes) {
      for (; i + kBytes <= to; i += kBytes) body(L{}, i);
      if (i < to) body(L{}, to - kBytes);
      return;
    }
#if defined(MIREL_X86_SIMD)
    if constexpr (kBytes > 16) {
      Span<bits::Lanes128>(from, to, body);
      return;
    }
#endif
  }
  for (; i < to; ++i) body(ByteLanes{}, i);
}

// m combined with the left and right neighbours of the pixels of c.
template <class L, int kOp>
inline typename L::V Window(typename L::V m, typename L::V c, typename L::V p, typename L::V x) {
  return Op3<L, kOp>(m, L::Or(L::Shr1(c), L::Low7(p)), L::Or(L::Shl1(c), L::High0(x)));
}

// The value combined at byte i (Col) and the row whose neighbours join it (Hor).
template <class L, int kOp, int kKind>
struct Sources {
  const u8* a;
  const u8* b;
  const u8* c;
  typename L::V Col(int i) const {
    if constexpr (kKind == kLine) return L::Load(b + i);
    else return Op3<L, kOp>(L::Load(a + i), L::Load(b + i), L::Load(c + i));
  }
  typename L::V Hor(int i) const {
    if constexpr (kKind == kCross) return L::Load(b + i);
    else return Col(i);
  }
};

// kRawLast: the last byte combines the row's own pixels only, without the
// rows above and below (the byte-by-byte erosion cross does so).
template <class L, int kOp, int kKind, bool kRawLast>
void WindowRow(const u8* a, const u8* b, const u8* c, u8* out, int n, u8 valid, u8 pad) {
  using B = ByteLanes;
  constexpr u8 kFill = kOp == 0 ? 0xff : 0x00;  // what lies outside the row
  const Sources<B, kOp, kKind> s{a, b, c};
  const int l = n - 1;
  if (n > 1) {
    out[0] = Window<B, kOp>(s.Col(0), s.Hor(0), kFill, s.Hor(1));
    Span<L>(1, l, [&](auto lanes, int i) {
      using V = decltype(lanes);
      const Sources<V, kOp, kKind> v{a, b, c};
      V::Store(out + i, Window<V, kOp>(v.Col(i), v.Hor(i), v.Hor(i - 1), v.Hor(i + 1)));
    });
  }
  // The pad bits of the last byte read as what lies outside the row.
  const u8 h = static_cast<u8>((s.Hor(l) & valid) | (kFill & ~valid));
  const u8 m = kRawLast ? b[l] : s.Col(l);
  const u8 r = Window<B, kOp>(m, h, n > 1 ? s.Hor(l - 1) : kFill, kFill);
  out[l] = static_cast<u8>((r & valid) | (pad & ~valid));
}

template <class L, int kOp>
void VerticalRow(const u8* a, const u8* b, const u8* c, u8* out, int n, u8, u8) {
  Span<L>(0, n, [&](auto lanes, int i) {
    using V = decltype(lanes);
    V::Store(out + i, Op3<V, kOp>(V::Load(a + i), V::Load(b + i), V::Load(c + i)));
  });
}

// The three planes of the median at one column: the least, the middle and
// the largest of its three pixels.
template <class L>
struct Planes {
  typename L::V lo, mid, hi;
};
template <class L>
inline Planes<L> ColumnPlanes(const u8* a, const u8* b, const u8* c) {
  const typename L::V x = L::Load(a), y = L::Load(b), z = L::Load(c);
  return {L::And(L::And(x, y), z), Majority<L>(x, y, z), L::Or(L::Or(x, y), z)};
}
// The median of nine from three sorted columns: the majority of the largest
// low, the median middle and the smallest high.
template <class L>
inline typename L::V MedianOf(const Planes<L>& p, const Planes<L>& q, const Planes<L>& x) {
  auto left = [](typename L::V c, typename L::V before) { return L::Or(L::Shr1(c), L::Low7(before)); };
  auto right = [](typename L::V c, typename L::V after) { return L::Or(L::Shl1(c), L::High0(after)); };
  const typename L::V lows = Op3<L, 1>(q.lo, left(q.lo, p.lo), right(q.lo, x.lo));
  const typename L::V mids = Majority<L>(q.mid, left(q.mid, p.mid), right(q.mid, x.mid));
  const typename L::V highs = Op3<L, 0>(q.hi, left(q.hi, p.hi), right(q.hi, x.hi));
  return Majority<L>(lows, mids, highs);
}

template <class L>
void MedianRow(const u8* a, const u8* b, const u8* c, u8* out, int n, u8 valid, u8 pad) {
  using B = ByteLanes;
  using P = Planes<B>;
  const int l = n - 1;
  // Outside the row the edge pixels repeat: the byte before the first holds
  // the first pixel in bit 0; the pad bits and the byte after the last hold
  // the last pixel.
  auto before = [](const P& q) { return P{static_cast<u8>(q.lo >> 7), static_cast<u8>(q.mid >> 7),
                                          static_cast<u8>(q.hi >> 7)}; };
  const u8 lowest = static_cast<u8>(valid & -valid);
  auto padded = [&](u8 v) { return static_cast<u8>(v & lowest ? v | ~valid : v & valid); };
  auto after = [&](u8 v) { return static_cast<u8>(v & lowest ? 0xff : 0); };
  const P end = ColumnPlanes<B>(a + l, b + l, c + l);
  const P endPadded{padded(end.lo), padded(end.mid), padded(end.hi)};
  const P beyond{after(end.lo), after(end.mid), after(end.hi)};
  if (n > 1) {
    const P first = ColumnPlanes<B>(a, b, c);
    out[0] = MedianOf<B>(before(first), first, ColumnPlanes<B>(a + 1, b + 1, c + 1));
    Span<L>(1, l, [&](auto lanes, int i) {
      using V = decltype(lanes);
      V::Store(out + i, MedianOf<V>(ColumnPlanes<V>(a + i - 1, b + i - 1, c + i - 1), ColumnPlanes<V>(a + i, b + i, c + i),
                                    ColumnPlanes<V>(a + i + 1, b + i + 1, c + i + 1)));
    });
  }
  const u8 r = MedianOf<B>(n > 1 ? ColumnPlanes<B>(a + l - 1, b + l - 1, c + l - 1) : before(endPadded), endPadded,
                           beyond);
  out[l] = static_cast<u8>((r & valid) | (pad & ~valid));
}

// kScalar: the byte-by-byte table, whose erosion cross takes the last byte
// of a row from the row alone.
template <class L, bool kScalar>
RowKernels MakeKernels() {
  RowKernels k{};
  k.horizontal[0] = &WindowRow<L, 0, kLine, false>;
  k.horizontal[1] = &WindowRow<L, 1, kLine, false>;
  k.vertical[0] = &VerticalRow<L, 0>;
  k.vertical[1] = &VerticalRow<L, 1>;
  k.square[0] = &WindowRow<L, 0, kSquare, false>;
  k.square[1] = &WindowRow<L, 1, kSquare, false>;
  k.cross[0] = &WindowRow<L, 0, kCross, kScalar>;
  k.cross[1] = &WindowRow<L, 1, kCross, false>;
  k.median = &MedianRow<L>;
  return k;
}

}  // namespace
}  // namespace blocks
}  // namespace bitmorph
}  // namespace mirel

#endif  // MIREL_MORPHOLOGY_BIT_MORPHOLOGY_BLOCKS_INTERNAL_H_
