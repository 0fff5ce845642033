// Halving blocks with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/geometry/pyramid_blocks_internal.h"

namespace mirel {
namespace geometry {
namespace {

struct Sse2 {
  using V = __m128i;
  static constexpr int kBytes = 16;
  static V Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
  static void Store(void* p, V v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
  static void Stream(void* p, V v) { _mm_stream_si128(static_cast<__m128i*>(p), v); }
  static void Fence() { _mm_sfence(); }
  static V Set16(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
  static V Set32(int v) { return _mm_set1_epi32(v); }
  static V And(V a, V b) { return _mm_and_si128(a, b); }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V Add16(V a, V b) { return _mm_add_epi16(a, b); }
  static V Add32(V a, V b) { return _mm_add_epi32(a, b); }
  static V Srli16(V a, int n) { return _mm_srli_epi16(a, n); }
  static V Slli32(V a, int n) { return _mm_slli_epi32(a, n); }
  static V Srai32(V a, int n) { return _mm_srai_epi32(a, n); }
  static V MinU8(V a, V b) { return _mm_min_epu8(a, b); }
  static V MaxU8(V a, V b) { return _mm_max_epu8(a, b); }
  // Words of a then of b, as bytes in that order.
  static V PackU16(V a, V b) { return _mm_packus_epi16(a, b); }
  // (x0 + x1, x2 + x3) of a, then of b.
  static V PairSums32(V a, V b) {
    const __m128 fa = _mm_castsi128_ps(a), fb = _mm_castsi128_ps(b);
    const V even = _mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(2, 0, 2, 0)));
    const V odd = _mm_castps_si128(_mm_shuffle_ps(fa, fb, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm_add_epi32(even, odd);
  }
};

}  // namespace

HalveRoutines HalveSse2() { return Routines<Sse2>(); }

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
