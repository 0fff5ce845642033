// Butterflies of the fast transform with AVX2.
#include <immintrin.h>

#include "mirel/edge/fourier_blocks_internal.h"

namespace {

struct Isa {
  using V = __m256;
  static constexpr int kLanes = 8;
  static V Load(const float* p) { return _mm256_loadu_ps(p); }
  static void Store(float* p, V v) { _mm256_storeu_ps(p, v); }
  static V Set1(float v) { return _mm256_set1_ps(v); }
  static V Add(V a, V b) { return _mm256_add_ps(a, b); }
  static V Sub(V a, V b) { return _mm256_sub_ps(a, b); }
  static V Mul(V a, V b) { return _mm256_mul_ps(a, b); }
};

}  // namespace

namespace mirel {
namespace edge {
ButterflyFn ButterfliesAvx2() { return &blocks::Butterflies<Isa>; }
}  // namespace edge
}  // namespace mirel
