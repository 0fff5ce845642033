// Internal pieces of the fast Fourier transform: the butterfly routine of
// each instruction set behind one dispatch.
//
// The transform runs on batches of kBatch one-dimensional transforms of n
// points held side by side: point k of transform l is re[PointAt(k) + l],
// im[PointAt(k) + l]. The row pass batches rows and the column pass batches
// columns, so every butterfly is one vector operation across the batch,
// each lane doing the very float operations of the scalar code.
#ifndef MIREL_EDGE_FOURIER_INTERNAL_H_
#define MIREL_EDGE_FOURIER_INTERNAL_H_

namespace mirel {
namespace edge {

constexpr int kBatch = 16;

// Where point k of a batch starts, in floats: one spare point after every
// 64, so that the points a butterfly stage of span 64 or more pairs up do
// not lie a multiple of 4 KB apart and fight over the same sets of the
// first-level cache. The imaginary parts start one point further on than
// the real ones in their buffer, for the same reason.
inline long PointAt(long k) { return (k + (k >> 6)) * kBatch; }

// All stages m = 1, 2, 4 .. n / 2 of radix-2 butterflies on a batch in
// bit-reversed order. The rotation of stage m at offset j is (wr, wi)[m - 1 +
// j]. For each pair i, i + m: t = w * a[i + m]; a[i + m] = a[i] - t;
// a[i] = a[i] + t.
using ButterflyFn = void (*)(float* re, float* im, int n, const float* wr, const float* wi);

ButterflyFn ButterfliesScalar();
#if defined(MIREL_X86_SIMD)
ButterflyFn ButterfliesSse2();
ButterflyFn ButterfliesAvx2();
ButterflyFn ButterfliesAvx512();
#endif

// The routine for the calling thread's fast-path setting.
ButterflyFn ActiveButterflies(bool fast);

}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_FOURIER_INTERNAL_H_
