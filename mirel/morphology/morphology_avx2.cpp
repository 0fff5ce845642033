// Row kernels of the morphology family with AVX2.
#include <immintrin.h>

#include <cstdint>

#include "mirel/morphology/morphology_blocks_internal.h"

namespace {

using mirel::morphology::kAnd;
using mirel::morphology::kMin;

struct Isa {
  using V = __m256i;
  static constexpr int kBytes = 32;
  template <class T>
  static V Load(const T* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  template <class T>
  static void Store(T* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  template <class T, int kOp>
  static V Apply(V a, V b) {
    if constexpr (kOp == kAnd) return _mm256_and_si256(a, b);
    else if constexpr (kOp > kAnd) return _mm256_or_si256(a, b);
    else if constexpr (sizeof(T) == 1) return kOp == kMin ? _mm256_min_epu8(a, b) : _mm256_max_epu8(a, b);
    else return kOp == kMin ? _mm256_min_epu16(a, b) : _mm256_max_epu16(a, b);
  }
  static V NonZero1(V a) { return _mm256_min_epu8(a, _mm256_set1_epi8(1)); }
  static V Add8(V a, V b) { return _mm256_add_epi8(a, b); }
  static V Over4(V a) { return _mm256_cmpgt_epi8(a, _mm256_set1_epi8(4)); }
};

}  // namespace

namespace mirel {
namespace morphology {
const RowKernels<std::uint8_t>& Avx2Kernels8() {
  static const RowKernels<std::uint8_t> k = blocks::MakeKernels<Isa, std::uint8_t>();
  return k;
}
const RowKernels<std::uint16_t>& Avx2Kernels16() {
  static const RowKernels<std::uint16_t> k = blocks::MakeKernels<Isa, std::uint16_t>();
  return k;
}
}  // namespace morphology
}  // namespace mirel
