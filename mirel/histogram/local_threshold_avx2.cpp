// The local mean threshold's decision with AVX2: 32 pixels a block.
#include <immintrin.h>

#include "mirel/histogram/local_threshold_internal.h"

namespace mirel {
namespace histogram {

int DecideAvx2(const std::uint32_t* lo, const std::uint32_t* hi, const std::uint8_t* pixels, std::uint32_t area,
               std::uint32_t bias, std::uint8_t* out, int n) {
  const __m256i a = _mm256_set1_epi32(static_cast<int>(area));
  const __m256i b = _mm256_set1_epi32(static_cast<int>(bias));
  // Packing within 128-bit lanes leaves the eight groups of four in the
  // order 0, 2, 4, 6 | 1, 3, 5, 7.
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  int i = 0;
  for (; i + 32 <= n; i += 32) {
    __m256i below[4];  // pixel * area < sum + bias, as lanes of all ones
    for (int q = 0; q < 4; ++q) {
      const int at = i + 8 * q;
      const __m256i p = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixels + at)));
      const __m256i sum = _mm256_sub_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(hi + at)),
                                           _mm256_loadu_si256(reinterpret_cast<const __m256i*>(lo + at)));
      below[q] = _mm256_cmpgt_epi32(_mm256_add_epi32(sum, b), _mm256_mullo_epi32(p, a));
    }
    const __m256i mask = _mm256_packs_epi16(_mm256_packs_epi32(below[0], below[1]), _mm256_packs_epi32(below[2], below[3]));
    const __m256i white = _mm256_andnot_si256(mask, _mm256_set1_epi8(-1));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_permutevar8x32_epi32(white, order));
  }
  return i;
}

}  // namespace histogram
}  // namespace mirel
