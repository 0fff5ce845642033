// 32-bit lane operations that SSE2 lacks, for the SSE2 block routines of the
// 16-bit filters: built from shifts, comparisons and masks.
#ifndef MIREL_FILTER_SSE2_LANES_INTERNAL_H_
#define MIREL_FILTER_SSE2_LANES_INTERNAL_H_

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

namespace mirel {
namespace filter {
namespace sse2 {

// a * K for a small constant K (below 256), modulo 2^32, as shifted additions.
template <int K>
inline __m128i MulK32(__m128i a) {
  __m128i r = _mm_setzero_si128();
  for (int b = 0; b < 8; ++b)
    if ((K >> b) & 1) r = _mm_add_epi32(r, _mm_sll_epi32(a, _mm_cvtsi32_si128(b)));
  return r;
}

inline __m128i Abs32(__m128i a) {
  const __m128i s = _mm_srai_epi32(a, 31);
  return _mm_sub_epi32(_mm_xor_si128(a, s), s);
}

// Lanes of a where mask is set, of b elsewhere.
inline __m128i Select(__m128i mask, __m128i a, __m128i b) {
  return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
inline __m128i Min32(__m128i a, __m128i b) { return Select(_mm_cmpgt_epi32(a, b), b, a); }
inline __m128i Max32(__m128i a, __m128i b) { return Select(_mm_cmpgt_epi32(a, b), a, b); }
inline __m128i Max0(__m128i a) { return _mm_andnot_si128(_mm_srai_epi32(a, 31), a); }

}  // namespace sse2
}  // namespace filter
}  // namespace mirel

#endif  // MIREL_X86_SIMD
#endif  // MIREL_FILTER_SSE2_LANES_INTERNAL_H_
