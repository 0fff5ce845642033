// Row kernels of the morphology family, written once over an
// instruction-set layer. Each per-instruction-set source defines, in an
// unnamed namespace, a struct `Isa` and calls MakeKernels<Isa, T>(); the
// scalar kernels are the same templates over ScalarIsa, which has no blocks.
//
// Isa::V holds Isa::kBytes bytes. The layer gives Load and Store (unaligned),
// Apply<T, op>(a, b) for the four operations on lanes of T, and for the
// two-level median NonZero1 (1 where a byte is non-zero, else 0), Add8 and
// Over4 (0xff where a byte is above 4, else 0).
//
// Minimum, maximum, AND and OR are exact, so a block gives the bytes of the
// pixel-by-pixel code whatever its width; the blocks only rearrange the same
// formula. A kernel never writes a row it reads, except Pair, which allows
// out == a (see there).
#ifndef MIREL_MORPHOLOGY_MORPHOLOGY_BLOCKS_INTERNAL_H_
#define MIREL_MORPHOLOGY_MORPHOLOGY_BLOCKS_INTERNAL_H_

#include <cstdint>

#include "mirel/morphology/morphology_internal.h"

namespace mirel {
namespace morphology {
namespace blocks {

struct ScalarIsa {
  static constexpr int kBytes = 0;
};

template <class T, int kOp>
inline T Op(T a, T b) {
  if constexpr (kOp == kMin) return a < b ? a : b;
  else if constexpr (kOp == kMax) return a < b ? b : a;
  else if constexpr (kOp == kAnd) return static_cast<T>(a & b);
  else return static_cast<T>(a | b);
}
template <class T, int kOp>
inline T Op3(T a, T b, T c) { return Op<T, kOp>(Op<T, kOp>(a, b), c); }

// Blocks of B lanes over [x0, x1); a last stretch shorter than a block is
// done by one more block that ends at x1 and overlaps the one before (it
// writes the same values again). Returns the first x not done.
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

template <class Isa, class T>
constexpr int Lanes() { return Isa::kBytes / static_cast<int>(sizeof(T)); }

// out[x] = op(p[x - 1], p[x], p[x + 1]), the row's end pixels standing in for
// the ones outside it.
template <class Isa, class T, int kOp>
void H3(const T* p, T* out, int w) {
  if (w <= 0) return;
  if (w == 1) {
    out[0] = p[0];
    return;
  }
  out[0] = Op<T, kOp>(p[0], p[1]);
  int x = 1;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Lanes<Isa, T>()>(1, w - 1, [&](int i) {
      Isa::Store(out + i, Isa::template Apply<T, kOp>(
                              Isa::template Apply<T, kOp>(Isa::Load(p + i - 1), Isa::Load(p + i)),
                              Isa::Load(p + i + 1)));
    });
  }
  for (; x < w - 1; ++x) out[x] = Op3<T, kOp>(p[x - 1], p[x], p[x + 1]);
  out[w - 1] = Op<T, kOp>(p[w - 2], p[w - 1]);
}

// out[x] = op(a[x], b[x], c[x]).
template <class Isa, class T, int kOp>
void V3(const T* a, const T* b, const T* c, T* out, int w) {
  int x = 0;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Lanes<Isa, T>()>(0, w, [&](int i) {
      Isa::Store(out + i, Isa::template Apply<T, kOp>(
                              Isa::template Apply<T, kOp>(Isa::Load(a + i), Isa::Load(b + i)),
                              Isa::Load(c + i)));
    });
  }
  for (; x < w; ++x) out[x] = Op3<T, kOp>(a[x], b[x], c[x]);
}

// The cross: above, below, left, centre, right.
template <class Isa, class T, int kOp>
void Cross(const T* a, const T* b, const T* c, T* out, int w) {
  if (w <= 0) return;
  if (w == 1) {
    out[0] = Op3<T, kOp>(a[0], b[0], c[0]);
    return;
  }
  out[0] = Op<T, kOp>(Op3<T, kOp>(a[0], b[0], c[0]), b[1]);
  int x = 1;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Lanes<Isa, T>()>(1, w - 1, [&](int i) {
      const auto ac = Isa::template Apply<T, kOp>(Isa::Load(a + i), Isa::Load(c + i));
      const auto row = Isa::template Apply<T, kOp>(
          Isa::template Apply<T, kOp>(Isa::Load(b + i - 1), Isa::Load(b + i)), Isa::Load(b + i + 1));
      Isa::Store(out + i, Isa::template Apply<T, kOp>(ac, row));
    });
  }
  for (; x < w - 1; ++x)
    out[x] = Op<T, kOp>(Op<T, kOp>(a[x], c[x]), Op3<T, kOp>(b[x - 1], b[x], b[x + 1]));
  out[w - 1] = Op<T, kOp>(Op3<T, kOp>(a[w - 1], b[w - 1], c[w - 1]), b[w - 2]);
}

// out[i] = op(a[i], b[i]) for i in [0, n), in increasing i. out may be a
// or b itself: a last stretch shorter than a block is then done again by an
// overlapping block, which gives the same values since the operations are
// idempotent. out may also be a while b lies ahead of it in the same row
// (b = a + s, s > 0) provided n is a multiple of 64 bytes: every block then
// reads before it writes and none is done twice.
template <class Isa, class T, int kOp>
void Pair(const T* a, const T* b, T* out, int n) {
  int x = 0;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Lanes<Isa, T>()>(0, n, [&](int i) {
      Isa::Store(out + i, Isa::template Apply<T, kOp>(Isa::Load(a + i), Isa::Load(b + i)));
    });
  }
  for (; x < n; ++x) out[x] = Op<T, kOp>(a[x], b[x]);
}

// out[i] = op(p0[i], p1[i], p2[i], p3[i]), with the aliasing rules of Pair
// (out may be p0 while the others lie ahead of it, n a multiple of 64 bytes).
template <class Isa, class T, int kOp>
void Four(const T* p0, const T* p1, const T* p2, const T* p3, T* out, int n) {
  int x = 0;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Lanes<Isa, T>()>(0, n, [&](int i) {
      Isa::Store(out + i, Isa::template Apply<T, kOp>(
                              Isa::template Apply<T, kOp>(Isa::Load(p0 + i), Isa::Load(p1 + i)),
                              Isa::template Apply<T, kOp>(Isa::Load(p2 + i), Isa::Load(p3 + i))));
    });
  }
  for (; x < n; ++x) out[x] = Op<T, kOp>(Op<T, kOp>(p0[x], p1[x]), Op<T, kOp>(p2[x], p3[x]));
}

// ---------------------------------------------------------------- medians

// The median of nine from three columns each sorted into low, middle and
// high: the middle of (largest low, middle of the middles, smallest high).
template <class T>
struct SortedColumn {
  T lo, mid, hi;
};
template <class T>
inline SortedColumn<T> Sort3(T a, T b, T c) {
  const T lo1 = Op<T, kMin>(a, b), hi1 = Op<T, kMax>(a, b);
  const T hi = Op<T, kMax>(hi1, c), t = Op<T, kMin>(hi1, c);
  return {Op<T, kMin>(lo1, t), Op<T, kMax>(lo1, t), hi};
}
template <class T>
inline T Mid3(T a, T b, T c) {
  return Op<T, kMax>(Op<T, kMin>(a, b), Op<T, kMin>(Op<T, kMax>(a, b), c));
}
template <class T>
inline T Median9(const SortedColumn<T>& l, const SortedColumn<T>& m, const SortedColumn<T>& r) {
  return Mid3(Op3<T, kMax>(l.lo, m.lo, r.lo), Mid3(l.mid, m.mid, r.mid), Op3<T, kMin>(l.hi, m.hi, r.hi));
}

// The same on blocks of lanes. The columns are named values, not arrays
// indexed in a loop: at -O2 GCC kept such arrays in memory, and the median
// took twice as long. (Templated on Isa rather than on its vector type,
// whose attributes a template argument would drop.)
template <class Isa>
struct VColumn {
  typename Isa::V lo, mid, hi;
};
// Column p, q, r sorted, given q and r already sorted into s0 <= s1.
template <class Isa, class T>
inline VColumn<Isa> VInsert(typename Isa::V p, typename Isa::V s0, typename Isa::V s1) {
  using V = typename Isa::V;
  auto mn = [](V x, V y) { return Isa::template Apply<T, kMin>(x, y); };
  auto mx = [](V x, V y) { return Isa::template Apply<T, kMax>(x, y); };
  return {mn(p, s0), mx(s0, mn(p, s1)), mx(p, s1)};
}
template <class Isa, class T>
inline typename Isa::V VMedian9(const VColumn<Isa>& l, const VColumn<Isa>& m, const VColumn<Isa>& r) {
  using V = typename Isa::V;
  auto mn = [](V x, V y) { return Isa::template Apply<T, kMin>(x, y); };
  auto mx = [](V x, V y) { return Isa::template Apply<T, kMax>(x, y); };
  auto mid3 = [&](V x, V y, V z) { return mx(mn(x, y), mn(mx(x, y), z)); };
  return mid3(mx(mx(l.lo, m.lo), r.lo), mid3(l.mid, m.mid, r.mid), mn(mn(l.hi, m.hi), r.hi));
}

// The 3x3 median of a row, with the row's end columns standing in for the
// ones outside it.
template <class Isa, class T>
void Median(const T* a, const T* b, const T* c, T* out, int w) {
  if (w <= 0) return;
  auto col = [&](int x) { return Sort3(a[x], b[x], c[x]); };
  SortedColumn<T> left = col(0), mid = left, right = w > 1 ? col(1) : left;
  out[0] = Median9(left, mid, right);
  if (w == 1) return;
  int x = 1;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Lanes<Isa, T>()>(1, w - 1, [&](int i) {
      auto column = [&](int j) {
        const auto q = Isa::Load(b + j), r = Isa::Load(c + j);
        return VInsert<Isa, T>(Isa::Load(a + j), Isa::template Apply<T, kMin>(q, r),
                               Isa::template Apply<T, kMax>(q, r));
      };
      Isa::Store(out + i, VMedian9<Isa, T>(column(i - 1), column(i), column(i + 1)));
    });
    if (x < w - 1) {
      mid = col(x - 1);
      right = col(x);
    }
  }
  for (; x < w - 1; ++x) {
    left = mid;
    mid = right;
    right = col(x + 1);
    out[x] = Median9(left, mid, right);
  }
  out[w - 1] = Median9(col(w - 2), col(w - 1), col(w - 1));
}

// Two rows of 3x3 medians at once: rows a, b, c give out0 and rows b, c, d
// give out1, the sorted pair of b and c shared by both windows.
template <class Isa, class T>
void Median2(const T* a, const T* b, const T* c, const T* d, T* out0, T* out1, int w) {
  if constexpr (Isa::kBytes == 0) {
    Median<Isa, T>(a, b, c, out0, w);
    Median<Isa, T>(b, c, d, out1, w);
  } else {
    if (w < 2 + Lanes<Isa, T>()) {
      Median<Isa, T>(a, b, c, out0, w);
      Median<Isa, T>(b, c, d, out1, w);
      return;
    }
    // Each column of b and c sorted once, then completed with a (first
    // window) and with d (second window).
    auto columns = [&](int j, VColumn<Isa>& c0, VColumn<Isa>& c1) {
      const auto q = Isa::Load(b + j), r = Isa::Load(c + j);
      const auto s0 = Isa::template Apply<T, kMin>(q, r), s1 = Isa::template Apply<T, kMax>(q, r);
      c0 = VInsert<Isa, T>(Isa::Load(a + j), s0, s1);
      c1 = VInsert<Isa, T>(Isa::Load(d + j), s0, s1);
    };
    Blocks<Lanes<Isa, T>()>(1, w - 1, [&](int i) {
      VColumn<Isa> l0, l1, m0, m1, r0, r1;
      columns(i - 1, l0, l1);
      columns(i, m0, m1);
      columns(i + 1, r0, r1);
      Isa::Store(out0 + i, VMedian9<Isa, T>(l0, m0, r0));
      Isa::Store(out1 + i, VMedian9<Isa, T>(l1, m1, r1));
    });
    // The end columns, with the edge column repeated.
    for (int x : {0, w - 1}) {
      const int l = x > 0 ? x - 1 : 0, r = x + 1 < w ? x + 1 : w - 1;
      out0[x] = Median9(Sort3(a[l], b[l], c[l]), Sort3(a[x], b[x], c[x]), Sort3(a[r], b[r], c[r]));
      out1[x] = Median9(Sort3(b[l], c[l], d[l]), Sort3(b[x], c[x], d[x]), Sort3(b[r], c[r], d[r]));
    }
  }
}

// The two-level median: 255 where five or more of the nine pixels (edges
// repeated) are not zero, else 0.
template <class Isa>
void BiMedian(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c, std::uint8_t* out,
              int w) {
  if (w <= 0) return;
  auto col = [&](int x) { return (a[x] != 0) + (b[x] != 0) + (c[x] != 0); };
  auto decide = [](int n) { return static_cast<std::uint8_t>(n >= 5 ? 255 : 0); };
  if (w == 1) {
    out[0] = decide(3 * col(0));
    return;
  }
  int left = col(0), mid = left, right = col(1);
  out[0] = decide(left + mid + right);
  int x = 1;
  if constexpr (Isa::kBytes > 0) {
    x = Blocks<Isa::kBytes>(1, w - 1, [&](int i) {
      auto colv = [&](int j) {
        return Isa::Add8(Isa::Add8(Isa::NonZero1(Isa::Load(a + j)), Isa::NonZero1(Isa::Load(b + j))),
                         Isa::NonZero1(Isa::Load(c + j)));
      };
      Isa::Store(out + i, Isa::Over4(Isa::Add8(Isa::Add8(colv(i - 1), colv(i)), colv(i + 1))));
    });
    if (x < w - 1) {
      mid = col(x - 1);
      right = col(x);
    }
  }
  for (; x < w - 1; ++x) {
    left = mid;
    mid = right;
    right = col(x + 1);
    out[x] = decide(left + mid + right);
  }
  out[w - 1] = decide(col(w - 2) + 2 * col(w - 1));
}

// ---------------------------------------------------------------- table

template <class Isa, class T, int kOp>
void FillOp(RowKernels<T>& k) {
  k.h3[kOp] = H3<Isa, T, kOp>;
  k.v3[kOp] = V3<Isa, T, kOp>;
  k.cross[kOp] = Cross<Isa, T, kOp>;
  k.pair[kOp] = Pair<Isa, T, kOp>;
  k.four[kOp] = Four<Isa, T, kOp>;
}

template <class Isa, class T>
RowKernels<T> MakeKernels() {
  RowKernels<T> k{};
  FillOp<Isa, T, kMin>(k);
  FillOp<Isa, T, kMax>(k);
  FillOp<Isa, T, kAnd>(k);
  FillOp<Isa, T, kOr>(k);
  k.median = Median<Isa, T>;
  k.median2 = Median2<Isa, T>;
  if constexpr (sizeof(T) == 1) k.biMedian = BiMedian<Isa>;
  return k;
}

}  // namespace blocks
}  // namespace morphology
}  // namespace mirel

#endif  // MIREL_MORPHOLOGY_MORPHOLOGY_BLOCKS_INTERNAL_H_
