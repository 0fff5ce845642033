// The butterflies of the fast transform, written once over an
// instruction-set layer. Each source defines, in an unnamed namespace, a
// struct `Isa` and includes this header:
//
//   V, kLanes     a vector of kLanes floats (kBatch is a multiple of kLanes)
//   Load, Store   unaligned
//   Set1, Add, Sub, Mul
//
// Products and sums are the IEEE single-precision ones of the scalar code,
// in the same order, and the library is built without contraction into
// fused multiply-adds, so every path gives the same bits.
#ifndef MIREL_EDGE_FOURIER_BLOCKS_INTERNAL_H_
#define MIREL_EDGE_FOURIER_BLOCKS_INTERNAL_H_

#include "mirel/edge/fourier_internal.h"

namespace mirel {
namespace edge {
namespace blocks {

template <class Isa>
struct Fly {
  using V = typename Isa::V;
  // One butterfly on lanes [l, l + kLanes) of points a and b.
  static inline void One(V cr, V ci, V& ar, V& ai, V& br, V& bi) {
    const V tr = Isa::Sub(Isa::Mul(cr, br), Isa::Mul(ci, bi));
    const V ti = Isa::Add(Isa::Mul(cr, bi), Isa::Mul(ci, br));
    br = Isa::Sub(ar, tr);
    bi = Isa::Sub(ai, ti);
    ar = Isa::Add(ar, tr);
    ai = Isa::Add(ai, ti);
  }
};

// Stages run two at a time where they can: the butterflies of stages m and
// 2m on the four points i, i + m, i + 2m, i + 3m (the same operations on the
// same values as two separate stages) are done in registers, which halves
// the passes over the batch. An odd stage count leaves the last stage alone.
template <class Isa>
void Butterflies(float* re, float* im, int n, const float* wr, const float* wi) {
  using V = typename Isa::V;
  using F = Fly<Isa>;
  constexpr int B = kBatch;
  constexpr int L = Isa::kLanes;
  auto at = [](float* p, long point) { return p + PointAt(point); };
  int m = 1;
  for (; 4 * m <= n; m *= 4) {
    for (int j = 0; j < m; ++j) {
      const V c1r = Isa::Set1(wr[m - 1 + j]), c1i = Isa::Set1(wi[m - 1 + j]);
      const V c2r = Isa::Set1(wr[2 * m - 1 + j]), c2i = Isa::Set1(wi[2 * m - 1 + j]);
      const V c3r = Isa::Set1(wr[3 * m - 1 + j]), c3i = Isa::Set1(wi[3 * m - 1 + j]);
      for (long i = j; i < n; i += 4 * m) {
        float *r0 = at(re, i), *r1 = at(re, i + m), *r2 = at(re, i + 2 * m), *r3 = at(re, i + 3 * m);
        float *i0 = at(im, i), *i1 = at(im, i + m), *i2 = at(im, i + 2 * m), *i3 = at(im, i + 3 * m);
        for (int l = 0; l < B; l += L) {
          V a0r = Isa::Load(r0 + l), a0i = Isa::Load(i0 + l), a1r = Isa::Load(r1 + l), a1i = Isa::Load(i1 + l);
          V a2r = Isa::Load(r2 + l), a2i = Isa::Load(i2 + l), a3r = Isa::Load(r3 + l), a3i = Isa::Load(i3 + l);
          F::One(c1r, c1i, a0r, a0i, a1r, a1i);
          F::One(c1r, c1i, a2r, a2i, a3r, a3i);
          F::One(c2r, c2i, a0r, a0i, a2r, a2i);
          F::One(c3r, c3i, a1r, a1i, a3r, a3i);
          Isa::Store(r0 + l, a0r), Isa::Store(i0 + l, a0i), Isa::Store(r1 + l, a1r), Isa::Store(i1 + l, a1i);
          Isa::Store(r2 + l, a2r), Isa::Store(i2 + l, a2i), Isa::Store(r3 + l, a3r), Isa::Store(i3 + l, a3i);
        }
      }
    }
  }
  if (m < n) {  // the last stage, m = n / 2
    for (int j = 0; j < m; ++j) {
      const V cr = Isa::Set1(wr[m - 1 + j]), ci = Isa::Set1(wi[m - 1 + j]);
      float *r0 = at(re, j), *r1 = at(re, j + m), *i0 = at(im, j), *i1 = at(im, j + m);
      for (int l = 0; l < B; l += L) {
        V ar = Isa::Load(r0 + l), ai = Isa::Load(i0 + l), br = Isa::Load(r1 + l), bi = Isa::Load(i1 + l);
        F::One(cr, ci, ar, ai, br, bi);
        Isa::Store(r0 + l, ar), Isa::Store(i0 + l, ai), Isa::Store(r1 + l, br), Isa::Store(i1 + l, bi);
      }
    }
  }
}

}  // namespace blocks
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_FOURIER_BLOCKS_INTERNAL_H_
