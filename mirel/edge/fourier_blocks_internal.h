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
void Butterflies(float* re, float* im, int n, const float* wr, const float* wi) {
  using V = typename Isa::V;
  constexpr int B = kBatch;
  for (int m = 1; m < n; m *= 2) {
    for (int j = 0; j < m; ++j) {
      const V cr = Isa::Set1(wr[m - 1 + j]), ci = Isa::Set1(wi[m - 1 + j]);
      for (int i = j; i < n; i += 2 * m) {
        float* ar = re + static_cast<long>(i) * B;
        float* ai = im + static_cast<long>(i) * B;
        float* br = ar + static_cast<long>(m) * B;
        float* bi = ai + static_cast<long>(m) * B;
        for (int l = 0; l < B; l += Isa::kLanes) {
          const V xr = Isa::Load(br + l), xi = Isa::Load(bi + l);
          const V tr = Isa::Sub(Isa::Mul(cr, xr), Isa::Mul(ci, xi));
          const V ti = Isa::Add(Isa::Mul(cr, xi), Isa::Mul(ci, xr));
          const V yr = Isa::Load(ar + l), yi = Isa::Load(ai + l);
          Isa::Store(br + l, Isa::Sub(yr, tr));
          Isa::Store(bi + l, Isa::Sub(yi, ti));
          Isa::Store(ar + l, Isa::Add(yr, tr));
          Isa::Store(ai + l, Isa::Add(yi, ti));
        }
      }
    }
  }
}

}  // namespace blocks
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_FOURIER_BLOCKS_INTERNAL_H_
