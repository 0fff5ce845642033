// Row kernels of the morphology family with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include <cstdint>

#include "mirel/morphology/morphology_blocks_internal.h"

namespace {

using mirel::morphology::kAnd;
using mirel::morphology::kMax;
using mirel::morphology::kMin;

struct Isa {
  using V = __m128i;
  static constexpr int kBytes = 16;
  template <class T>
  static V Load(const T* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  template <class T>
  static void Store(T* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  // SSE2 has no unsigned 16-bit minimum: a - (a -sat b) is min(a, b) and
  // b + (a -sat b) is max(a, b).
  template <class T, int kOp>
  static V Apply(V a, V b) {
    if constexpr (kOp == kAnd) return _mm_and_si128(a, b);
    else if constexpr (kOp > kAnd) return _mm_or_si128(a, b);
    else if constexpr (sizeof(T) == 1) return kOp == kMin ? _mm_min_epu8(a, b) : _mm_max_epu8(a, b);
    else if constexpr (kOp == kMin) return _mm_sub_epi16(a, _mm_subs_epu16(a, b));
    else return _mm_add_epi16(b, _mm_subs_epu16(a, b));
  }
  static V NonZero1(V a) { return _mm_min_epu8(a, _mm_set1_epi8(1)); }
  static V Add8(V a, V b) { return _mm_add_epi8(a, b); }
  static V Over4(V a) { return _mm_cmpgt_epi8(a, _mm_set1_epi8(4)); }
};

}  // namespace

namespace mirel {
namespace morphology {
const RowKernels<std::uint8_t>& Sse2Kernels8() {
  static const RowKernels<std::uint8_t> k = blocks::MakeKernels<Isa, std::uint8_t>();
  return k;
}
const RowKernels<std::uint16_t>& Sse2Kernels16() {
  static const RowKernels<std::uint16_t> k = blocks::MakeKernels<Isa, std::uint16_t>();
  return k;
}
}  // namespace morphology
}  // namespace mirel

#endif  // MIREL_X86_SIMD
