// AVX2 stretch of the widening of bytes to words.
#include <immintrin.h>

#include "mirel/point/convert_internal.h"

namespace mirel {
namespace point {

std::size_t WidenAVX2(const unsigned char* s, unsigned short* d, std::size_t n, unsigned int shift,
                      const StoreAhead& ahead) {
  const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    ahead.At(d + i);
    const __m256i w = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_sll_epi16(w, count));
  }
  return i;
}

}  // namespace point
}  // namespace mirel
