// Row routines of thinning, thickening and the distance map, written once
// over an instruction-set layer. Each per-instruction-set source defines, in
// an unnamed namespace, a struct `Isa` of byte lanes and calls
// MakeRoutines<Isa>(); the scalar routines are the same templates over
// ScalarIsa, which has no blocks.
//
// Isa::V holds Isa::kBytes bytes. The layer gives Load and Store
// (unaligned), Zero, Ones, IsZero (0xff where a byte is 0), And, Or, Xor,
// AndNot(a, b) = ~a & b, Any (a byte is non-zero), Min and Adds (unsigned,
// saturating), Set1, LoadNarrow (kBytes 16-bit values below 256 into
// bytes), StoreWiden (bytes into 16-bit values), ShiftDown<k> (byte i takes
// byte i + k, the top k bytes 0xff) and Broadcast0 (every byte takes byte 0).
//
// The rows of bits run over the byte lanes of the bit-image engine
// (bits_lanes_internal.h): ByteLanes for the scalar routines, the widest
// lanes of the instruction set for the others.
//
// All three are exact: the blocks give the bytes of the one-by-one code.
#ifndef MIREL_MORPHOLOGY_THINNING_BLOCKS_INTERNAL_H_
#define MIREL_MORPHOLOGY_THINNING_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/morphology/morphology_blocks_internal.h"
#include "mirel/morphology/thinning_internal.h"
#include "mirel/point/bits_lanes_internal.h"

namespace mirel {
namespace thinning {
namespace blocks {

using morphology::blocks::Blocks;
using morphology::blocks::ScalarIsa;
using U8 = std::uint8_t;
using U16 = std::uint16_t;

// ---------------------------------------------------------------- hit-or-miss

// The column x of the word: top << 2 | middle << 1 | bottom.
template <class T>
inline unsigned Column(const HitRow<T>& r, int x) {
  return (r.a[x] != 0 ? 4u : 0u) | (r.b[x] != 0 ? 2u : 0u) | (r.c[x] != 0 ? 1u : 0u);
}

// Writes pixel x from its fit and tells whether it counts as a change: a
// fit clears (thinning) or sets (thickening) the pixel; a pixel that does
// not fit keeps its value, which the first pass brings to 0 or full. The
// first pass counts every pixel that does not fit.
template <class T, bool kThick>
inline bool Put(const HitRow<T>& r, int x, bool fit) {
  constexpr T kFull = static_cast<T>(~T(0));
  const T s = r.b[x];
  T o;
  if (fit) o = kThick ? kFull : T(0);
  else o = r.first ? (s != 0 ? kFull : T(0)) : s;
  r.out[x] = o;
  return o != s || (r.first && !fit);
}

// A pixel at a row's end, where a neighbour column is outside the ROI.
template <class T, bool kThick>
inline bool EdgePixel(const HitRow<T>& r, int x, unsigned mask) {
  const unsigned word = (x > 0 ? Column(r, x - 1) << 6 : 0u) | Column(r, x) << 3 |
                        (x + 1 < r.width ? Column(r, x + 1) : 0u);
  return Put<T, kThick>(r, x, (word & mask) == (r.pattern & mask));
}

// Interior pixels [x0, x1), 1 <= x0, x1 <= width - 1: the word moves along
// the row, three reads a pixel, with no border test.
template <class T, bool kThick>
inline bool WordStretch(const HitRow<T>& r, int x0, int x1) {
  const unsigned mask = r.maskMid, pattern = r.pattern & r.maskMid;
  unsigned word = Column(r, x0 - 1) << 3 | Column(r, x0);
  bool changed = false;
  for (int x = x0; x < x1; ++x) {
    word = ((word << 3) & kWordBits) | Column(r, x + 1);
    changed |= Put<T, kThick>(r, x, (word & mask) == pattern);
  }
  return changed;
}

// Interior blocks over [x0, x1); returns the first x not done. A pixel's
// fit is the AND over the pattern's positions of "the neighbour is set"
// (or clear): the OR of the misses is built from a zero test per position.
// After the first pass every pixel is 0 or 0xff, so the pixel itself is its
// own mask.
template <class Isa, bool kThick>
inline int HitBlocks(const HitRow<U8>& r, int x0, int x1, bool* changed) {
  using V = typename Isa::V;
  constexpr int kLanes = Isa::kBytes;
  if (x1 - x0 < kLanes) return x0;
  const U8* at[9];
  V miss[9];
  int n = 0;
  for (int bit = 8; bit >= 0; --bit) {
    if (((r.maskMid >> bit) & 1u) == 0) continue;
    const int column = 2 - bit / 3, row = 2 - bit % 3;  // 0 left .. 2 right, 0 top .. 2 bottom
    at[n] = (row == 0 ? r.a : row == 1 ? r.b : r.c) + (column - 1);
    // A position that must be set misses where the byte is zero; one that
    // must be clear misses where it is not.
    miss[n] = ((r.pattern >> bit) & 1u) != 0 ? Isa::Zero() : Isa::Ones();
    ++n;
  }
  V acc = Isa::Zero();
  const bool first = r.first;
  Blocks<kLanes>(x0, x1, [&](int i) {
    V fail = Isa::Zero();
    for (int k = 0; k < n; ++k) fail = Isa::Or(fail, Isa::Xor(Isa::IsZero(Isa::Load(at[k] + i)), miss[k]));
    const V s = Isa::Load(r.b + i);
    const V held = first ? Isa::AndNot(Isa::IsZero(s), Isa::Ones()) : s;
    const V o = kThick ? Isa::Or(held, Isa::AndNot(fail, Isa::Ones())) : Isa::And(held, fail);
    Isa::Store(r.out + i, o);
    acc = Isa::Or(acc, Isa::Xor(o, s));
    if (first) acc = Isa::Or(acc, fail);
  });
  *changed |= Isa::Any(acc);
  return x1;
}

template <class Isa, class T, bool kThick>
bool HitRowOf(const HitRow<T>& r) {
  const int w = r.width;
  if (w <= 0) return false;
  if (w == 1) return EdgePixel<T, kThick>(r, 0, r.maskOnly);
  bool changed = EdgePixel<T, kThick>(r, 0, r.maskFirst);
  int x = 1;
  if constexpr (Isa::kBytes > 0) x = HitBlocks<Isa, kThick>(r, 1, w - 1, &changed);
  if (x < w - 1) changed |= WordStretch<T, kThick>(r, x, w - 1);
  changed |= EdgePixel<T, kThick>(r, w - 1, r.maskLast);
  return changed;
}

template <class Isa, class T>
bool HitRowAny(const HitRow<T>& r) {
  return r.thicken ? HitRowOf<Isa, T, true>(r) : HitRowOf<Isa, T, false>(r);
}

// ---------------------------------------------------------------- distance

inline U8 Min(unsigned a, unsigned b) { return static_cast<U8>(a < b ? a : b); }
inline U8 Min(unsigned a, unsigned b, unsigned c) { return Min(Min(a, b), c); }
inline U8 Min(unsigned a, unsigned b, unsigned c, unsigned d) { return Min(Min(a, b), Min(c, d)); }
// v + 1, held at 255.
inline unsigned Up(unsigned v) { return v < 255u ? v + 1u : 255u; }

// The forward pass over one row. Each value is the smaller of the source
// pixel and one more than the least of the neighbours already passed: the
// three above and the source pixel to the left; the ceiling stands in for
// the neighbours outside the ROI.
template <class Isa>
void Forward(const U8* s, const U8* p, U8* d8, U16* d16, int w, unsigned lim) {
  if (w <= 0) return;
  auto put = [&](int x, U8 v) {
    d8[x] = v;
    d16[x] = v;
  };
  int x = 1;
  if (p == nullptr) {
    put(0, Min(s[0], lim));
    if constexpr (Isa::kBytes > 0) {
      const auto one = Isa::Set1(1), l = Isa::Set1(static_cast<U8>(lim));
      x = Blocks<Isa::kBytes>(1, w, [&](int i) {
        const auto v = Isa::Min(Isa::Load(s + i), Isa::Adds(Isa::Min(Isa::Load(s + i - 1), l), one));
        Isa::Store(d8 + i, v);
        Isa::StoreWiden(d16 + i, v);
      });
    }
    for (; x < w; ++x) put(x, Min(s[x], Up(Min(s[x - 1], lim))));
  } else if (w == 1) {
    put(0, Min(s[0], Up(Min(p[0], lim))));
  } else {
    put(0, Min(s[0], Up(Min(p[0], lim, p[1]))));
    if constexpr (Isa::kBytes > 0) {
      const auto one = Isa::Set1(1);
      x = Blocks<Isa::kBytes>(1, w - 1, [&](int i) {
        const auto m = Isa::Min(Isa::Min(Isa::Load(p + i - 1), Isa::Load(p + i)),
                                Isa::Min(Isa::Load(p + i + 1), Isa::Load(s + i - 1)));
        const auto v = Isa::Min(Isa::Load(s + i), Isa::Adds(m, one));
        Isa::Store(d8 + i, v);
        Isa::StoreWiden(d16 + i, v);
      });
    }
    for (; x < w - 1; ++x) put(x, Min(s[x], Up(Min(p[x - 1], p[x], p[x + 1], s[x - 1]))));
    put(w - 1, Min(s[w - 1], Up(Min(p[w - 2], p[w - 1], lim, s[w - 2]))));
  }
}

// Byte-lane steps of the right-to-left scan a[x] = min(a[x], a[x + 1] + 1)
// inside a block: after the step of k each byte holds the least of its
// own value and of the k bytes to its right, each raised by its distance.
template <class Isa, int kStep>
inline typename Isa::V ScanSteps(typename Isa::V v) {
  if constexpr (kStep >= Isa::kBytes) {
    return v;
  } else {
    v = Isa::Min(v, Isa::Adds(Isa::template ShiftDown<kStep>(v), Isa::Set1(static_cast<U8>(kStep))));
    return ScanSteps<Isa, kStep * 2>(v);
  }
}

// The backward pass over one row: each value is the smaller of its forward
// value and one more than the least of the final values below and of the
// final value to its right (the ceiling standing in for the neighbours
// outside the ROI). The neighbours below give a value per pixel first; the
// neighbour to the right then runs as a scan from the right.
template <class Isa>
void Backward(const U8* n, U8* d8, U16* d16, int w, unsigned lim) {
  if (w <= 0) return;
  int x = 0;
  if (n == nullptr) {  // the last row: only the ceiling below
    const unsigned up = Up(lim);
    if constexpr (Isa::kBytes > 0) {
      const auto u = Isa::Set1(static_cast<U8>(up));
      x = Blocks<Isa::kBytes>(0, w - 1, [&](int i) { Isa::Store(d8 + i, Isa::Min(Isa::LoadNarrow(d16 + i), u)); });
    }
    for (; x < w - 1; ++x) d8[x] = Min(d16[x], up);
    d8[w - 1] = Min(d16[w - 1], lim);
  } else if (w == 1) {
    d8[0] = Min(d16[0], Up(Min(n[0], lim)));
  } else {
    d8[0] = Min(d16[0], Up(Min(n[1], n[0], lim)));
    x = 1;
    if constexpr (Isa::kBytes > 0) {
      const auto one = Isa::Set1(1);
      x = Blocks<Isa::kBytes>(1, w - 1, [&](int i) {
        const auto m = Isa::Min(Isa::Min(Isa::Load(n + i - 1), Isa::Load(n + i)), Isa::Load(n + i + 1));
        Isa::Store(d8 + i, Isa::Min(Isa::LoadNarrow(d16 + i), Isa::Adds(m, one)));
      });
    }
    for (; x < w - 1; ++x) d8[x] = Min(d16[x], Up(Min(n[x + 1], n[x], n[x - 1])));
    d8[w - 1] = Min(d16[w - 1], Up(Min(n[w - 1], lim, n[w - 2])));
  }
  // The scan, from the right end: whole blocks, then the row's head.
  x = w;
  if constexpr (Isa::kBytes > 0) {
    using V = typename Isa::V;
    alignas(64) U8 ramp[Isa::kBytes];
    for (int j = 0; j < Isa::kBytes; ++j) ramp[j] = static_cast<U8>(Isa::kBytes - j);
    const V distance = Isa::Load(ramp);
    V carry = Isa::Ones();  // nothing to the right of the row
    for (; x >= Isa::kBytes; x -= Isa::kBytes) {
      const int i = x - Isa::kBytes;
      V v = ScanSteps<Isa, 1>(Isa::Load(d8 + i));
      v = Isa::Min(v, Isa::Adds(carry, distance));
      Isa::Store(d8 + i, v);
      Isa::StoreWiden(d16 + i, v);
      carry = Isa::Broadcast0(v);
    }
  }
  if (x == w) {
    d16[w - 1] = d8[w - 1];
    --x;
  }
  for (int i = x - 1; i >= 0; --i) {
    d8[i] = Min(d8[i], Up(d8[i + 1]));
    d16[i] = d8[i];
  }
}

// ---------------------------------------------------------------- bits

inline unsigned BitAt(const U8* row, int x) { return (row[x >> 3] >> (7 - (x & 7))) & 1u; }

// The fit of pixel x of a bit row tested on its own, the word built as in
// the 8-bit form.
inline bool BitFits(const BitRow& r, int x, unsigned mask) {
  auto column = [&](int i) { return BitAt(r.a, i) << 2 | BitAt(r.b, i) << 1 | BitAt(r.c, i); };
  const unsigned word =
      (x > 0 ? column(x - 1) << 6 : 0u) | column(x) << 3 | (x + 1 < r.width ? column(x + 1) : 0u);
  return (word & mask) == (r.pattern & mask);
}

// A row of bits: first the pixels that miss the interior pattern, a byte of
// eight pixels at a time (the left neighbours of byte i are its bits moved
// one place down with bit 0 of byte i - 1 on top, the right ones the other
// way); then the row's first and last pixels, whose outside neighbours
// follow the border rule, one by one; then the new pixels and the change.
template <class L>
bool BitHitRow(const BitRow& r) {
  using V = typename L::V;
  using B = bits::ByteLanes;
  const int w = r.width;
  if (w <= 0) return false;
  const int n = (w + 7) / 8;
  const U8* rows[9];
  int side[9];
  V miss[9];
  int count = 0;
  for (int bit = 8; bit >= 0; --bit) {
    if (((r.masks.mid >> bit) & 1u) == 0) continue;
    const int row = 2 - bit % 3;
    rows[count] = row == 0 ? r.a : row == 1 ? r.b : r.c;
    side[count] = 2 - bit / 3;
    miss[count] = L::Set1(((r.pattern >> bit) & 1u) != 0 ? 0xff : 0x00);
    ++count;
  }
  // The clean rows hold zeros behind the row, so whole vectors may run past it.
  for (int i = 0; i < n; i += L::kBytes) {
    V fail = L::Set1(0);
    for (int k = 0; k < count; ++k) {
      const U8* p = rows[k] + i;
      const V c = L::Load(p);
      const V v = side[k] == 1   ? c
                  : side[k] == 0 ? L::Or(L::Shr1(c), L::Low7(L::Load(p - 1)))
                                 : L::Or(L::Shl1(c), L::High0(L::Load(p + 1)));
      fail = L::Or(fail, L::Xor(v, miss[k]));
    }
    L::Store(r.fail + i, fail);
  }
  auto setFail = [&](int x, bool fits) {
    const U8 bit = static_cast<U8>(0x80u >> (x & 7));
    r.fail[x >> 3] = static_cast<U8>(fits ? r.fail[x >> 3] & ~bit : r.fail[x >> 3] | bit);
  };
  if (w == 1) {
    setFail(0, BitFits(r, 0, r.masks.only));
  } else {
    setFail(0, BitFits(r, 0, r.masks.first));
    setFail(w - 1, BitFits(r, w - 1, r.masks.last));
  }
  // A fit clears (thinning) or sets (thickening) the pixel; the first pass
  // counts every pixel that misses as a change.
  const bool thick = r.thicken, first = r.first;
  auto next = [&](auto lanes, auto s, auto f) {
    using Ln = decltype(lanes);
    return thick ? Ln::Or(s, Ln::AndNot(f, Ln::Set1(0xff))) : Ln::And(s, f);
  };
  V acc = L::Set1(0);
  int i = 0;
  for (; i + L::kBytes <= n - 1; i += L::kBytes) {
    const V s = L::Load(r.b + i), f = L::Load(r.fail + i);
    const V o = next(L{}, s, f);
    L::Store(r.out + i, o);
    acc = L::Or(acc, L::Or(L::Xor(o, s), first ? f : L::Set1(0)));
  }
  alignas(64) U8 lanes[L::kBytes];
  L::Store(lanes, acc);
  U8 any = 0;
  for (int k = 0; k < L::kBytes; ++k) any = static_cast<U8>(any | lanes[k]);
  const U8 valid = static_cast<U8>(0xff00u >> (((w - 1) & 7) + 1));
  for (; i < n; ++i) {
    const U8 s = r.b[i], f = r.fail[i];
    const U8 o = next(B{}, s, f);
    r.out[i] = o;
    const U8 change = static_cast<U8>((o ^ s) | (first ? f : 0));
    any = static_cast<U8>(any | (i == n - 1 ? change & valid : change));
  }
  return any != 0;
}

template <class Isa, class Lanes>
Routines MakeRoutines() {
  return Routines{&HitRowAny<Isa, U8>, &BitHitRow<Lanes>, &Forward<Isa>, &Backward<Isa>};
}

}  // namespace blocks
}  // namespace thinning
}  // namespace mirel

#endif  // MIREL_MORPHOLOGY_THINNING_BLOCKS_INTERNAL_H_
