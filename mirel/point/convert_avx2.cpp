// AVX2 stretch of the BW8 to BW16 conversion: 32 pixels a block.
#include <immintrin.h>

#include "mirel/point/convert_internal.h"

namespace mirel {
namespace point {

std::size_t WidenAVX2(const unsigned char* s, unsigned short* d, std::size_t n, unsigned int shift) {
  const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
  std::size_t i = 0;
  for (; i + 32 <= n; i += 32) {
    const __m256i a = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)));
    const __m256i b = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 16)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_sll_epi16(a, count));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i + 16), _mm256_sll_epi16(b, count));
  }
  return i;
}

}  // namespace point
}  // namespace mirel
