// 8-bit table walk with SSSE3 byte shuffles: the table is cut into sixteen
// rows of sixteen entries, each looked up by the low nibble and kept where
// the high nibble selects it.
#include <tmmintrin.h>

#include "mirel/point/lut_internal.h"

namespace mirel {
namespace point {

void Lut8RowsSSSE3(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table) {
  __m128i t[16];
  for (int h = 0; h < 16; ++h) t[h] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(table + 16 * h));
  const __m128i nibble = _mm_set1_epi8(0x0F);
  const std::size_t n = static_cast<std::size_t>(src.width);
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16) {
      const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
      const __m128i lo = _mm_and_si128(x, nibble);
      const __m128i hi = _mm_and_si128(_mm_srli_epi16(x, 4), nibble);
      __m128i acc = _mm_setzero_si128();
      for (int h = 0; h < 16; ++h) {
        const __m128i m = _mm_cmpeq_epi8(hi, _mm_set1_epi8(static_cast<char>(h)));
        acc = _mm_or_si128(acc, _mm_and_si128(m, _mm_shuffle_epi8(t[h], lo)));
      }
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), acc);
    }
    Lut8RowScalar(s + i, d + i, n - i, table);
  }
}

}  // namespace point
}  // namespace mirel
