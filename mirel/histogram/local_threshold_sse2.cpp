// The local mean threshold's decision with SSE2 (the x86-64 baseline): 16
// pixels a block.
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/histogram/local_threshold_internal.h"

namespace mirel {
namespace histogram {
namespace {

inline __m128i Load(const std::uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

}  // namespace

int DecideSse2(const std::uint32_t* lo, const std::uint32_t* hi, const std::uint8_t* pixels, std::uint32_t area,
               std::uint32_t bias, std::uint8_t* out, int n) {
  // pixel * area modulo 2^32 from 16-bit multiplies: pixel * (area & 0xFFFF)
  // in full, plus the low half of pixel * (area >> 16) in the high word.
  const __m128i areaLo = _mm_set1_epi16(static_cast<short>(area & 0xFFFFu));
  const __m128i areaHi = _mm_set1_epi16(static_cast<short>(area >> 16));
  const __m128i b = _mm_set1_epi32(static_cast<int>(bias));
  const __m128i z = _mm_setzero_si128();
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + i));
    __m128i below[4];  // pixel * area < sum + bias, as lanes of all ones
    for (int h = 0; h < 2; ++h) {
      const __m128i p16 = h == 0 ? _mm_unpacklo_epi8(p, z) : _mm_unpackhi_epi8(p, z);
      const __m128i low = _mm_mullo_epi16(p16, areaLo);
      const __m128i high = _mm_add_epi16(_mm_mulhi_epu16(p16, areaLo), _mm_mullo_epi16(p16, areaHi));
      for (int q = 0; q < 2; ++q) {
        const int at = i + 8 * h + 4 * q;
        const __m128i product = q == 0 ? _mm_unpacklo_epi16(low, high) : _mm_unpackhi_epi16(low, high);
        const __m128i limit = _mm_add_epi32(_mm_sub_epi32(Load(hi + at), Load(lo + at)), b);
        below[2 * h + q] = _mm_cmplt_epi32(product, limit);
      }
    }
    const __m128i mask = _mm_packs_epi16(_mm_packs_epi32(below[0], below[1]), _mm_packs_epi32(below[2], below[3]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_andnot_si128(mask, _mm_set1_epi8(-1)));
  }
  return i;
}

}  // namespace histogram
}  // namespace mirel

#endif  // MIREL_X86_SIMD
