// AVX-512 summing kernel of the 8-bit row projection.
#include <immintrin.h>

#include <cstring>

#include "mirel/histogram/projection_internal.h"

namespace mirel {
namespace proj {

// Strips of 128 columns summed down the rows in 16-bit lanes (257 rows at
// most between flushes into the 32-bit sums).
int ColumnSums8AVX512(const Rows<const EBW8>& rows, std::uint32_t* acc) {
  const int strips = rows.width / 128;
  for (int s = 0; s < strips; ++s) {
    std::uint32_t* a = acc + 128 * s;
    __m512i t[8];
    for (auto& v : t) v = _mm512_setzero_si512();
    for (int y0 = 0; y0 < rows.height; y0 += 257) {
      const int y1 = rows.height - y0 < 257 ? rows.height : y0 + 257;
      __m512i s0 = _mm512_setzero_si512(), s1 = s0, s2 = s0, s3 = s0;
      for (int y = y0; y < y1; ++y) {
        const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y)) + 128 * s;
        s0 = _mm512_add_epi16(s0, _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))));
        s1 = _mm512_add_epi16(s1, _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32))));
        s2 = _mm512_add_epi16(s2, _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 64))));
        s3 = _mm512_add_epi16(s3, _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 96))));
      }
      const __m512i parts[4] = {s0, s1, s2, s3};
      for (int k = 0; k < 4; ++k) {
        // Masked forms with every lane set: the plain ones trip a GCC warning.
        const __m256i lo = _mm512_maskz_extracti64x4_epi64(0xFF, parts[k], 0);
        const __m256i hi = _mm512_maskz_extracti64x4_epi64(0xFF, parts[k], 1);
        t[2 * k] = _mm512_add_epi32(t[2 * k], _mm512_maskz_cvtepu16_epi32(0xFFFF, lo));
        t[2 * k + 1] = _mm512_add_epi32(t[2 * k + 1], _mm512_maskz_cvtepu16_epi32(0xFFFF, hi));
      }
    }
    for (int k = 0; k < 8; ++k) _mm512_storeu_si512(a + 16 * k, t[k]);
  }
  return strips * 128;
}

}  // namespace proj
}  // namespace mirel
