// Butterflies of the fast transform with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/edge/fourier_blocks_internal.h"

namespace {

struct Isa {
  using V = __m128;
  static constexpr int kLanes = 4;
  static V Load(const float* p) { return _mm_loadu_ps(p); }
  static void Store(float* p, V v) { _mm_storeu_ps(p, v); }
  static V Set1(float v) { return _mm_set1_ps(v); }
  static V Add(V a, V b) { return _mm_add_ps(a, b); }
  static V Sub(V a, V b) { return _mm_sub_ps(a, b); }
  static V Mul(V a, V b) { return _mm_mul_ps(a, b); }
};

}  // namespace

namespace mirel {
namespace edge {
ButterflyFn ButterfliesSse2() { return &blocks::Butterflies<Isa>; }
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_X86_SIMD
