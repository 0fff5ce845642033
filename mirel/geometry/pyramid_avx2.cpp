// Halving blocks with AVX2.
#if defined(MIREL_X86_SIMD)
#include <immintrin.h>

#include "mirel/geometry/pyramid_blocks_internal.h"

namespace mirel {
namespace geometry {
namespace {

struct Avx2 {
  using V = __m256i;
  static constexpr int kBytes = 32;
  static V Load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
  static void Store(void* p, V v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }
  static void Stream(void* p, V v) { _mm256_stream_si256(static_cast<__m256i*>(p), v); }
  static void Fence() { _mm_sfence(); }
  static V Set16(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
  static V Set32(int v) { return _mm256_set1_epi32(v); }
  static V And(V a, V b) { return _mm256_and_si256(a, b); }
  static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  static V Add16(V a, V b) { return _mm256_add_epi16(a, b); }
  static V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
  static V Srli16(V a, int n) { return _mm256_srli_epi16(a, n); }
  static V Slli32(V a, int n) { return _mm256_slli_epi32(a, n); }
  static V Srai32(V a, int n) { return _mm256_srai_epi32(a, n); }
  static V MinU8(V a, V b) { return _mm256_min_epu8(a, b); }
  static V MaxU8(V a, V b) { return _mm256_max_epu8(a, b); }
  // The pack works within 128-bit lanes; the permute restores the order.
  static V PackU16(V a, V b) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8); }
  static V PairSums32(V a, V b) {
    const __m256 fa = _mm256_castsi256_ps(a), fb = _mm256_castsi256_ps(b);
    const V even = _mm256_castps_si256(_mm256_shuffle_ps(fa, fb, _MM_SHUFFLE(2, 0, 2, 0)));
    const V odd = _mm256_castps_si256(_mm256_shuffle_ps(fa, fb, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm256_permute4x64_epi64(_mm256_add_epi32(even, odd), 0xD8);
  }
};

}  // namespace

HalveRoutines HalveAvx2() { return Routines<Avx2>(); }

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
