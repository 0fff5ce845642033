// AVX2 forms of the 8-bit table walk (nibble shuffles) and of the 16-bit
// block formula of the 8-bit gain.
#include <immintrin.h>

#include "mirel/point/lut_internal.h"

namespace mirel {
namespace point {

void Lut8RowsAVX2(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table) {
  __m256i t[16];
  for (int h = 0; h < 16; ++h)
    t[h] = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table + 16 * h)));
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  const std::size_t n = static_cast<std::size_t>(src.width);
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    std::size_t i = 0;
    for (; i + 32 <= n; i += 32) {
      const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
      const __m256i lo = _mm256_and_si256(x, nibble);
      const __m256i hi = _mm256_and_si256(_mm256_srli_epi16(x, 4), nibble);
      __m256i acc = _mm256_setzero_si256();
      for (int h = 0; h < 16; ++h) {
        const __m256i m = _mm256_cmpeq_epi8(hi, _mm256_set1_epi8(static_cast<char>(h)));
        acc = _mm256_or_si256(acc, _mm256_and_si256(m, _mm256_shuffle_epi8(t[h], lo)));
      }
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), acc);
    }
    Lut8RowScalar(s + i, d + i, n - i, table);
  }
}

void GainBlocksAVX2(const unsigned char* s, unsigned char* d, std::size_t n, std::uint16_t g, std::int16_t o) {
  const __m256i vg = _mm256_set1_epi16(static_cast<short>(g));
  const __m256i vo = _mm256_set1_epi16(o);
  std::size_t i = 0;
  for (; i + 32 <= n; i += 32) {
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    const __m256i zero = _mm256_setzero_si256();
    __m256i lo = _mm256_unpacklo_epi8(x, zero);
    __m256i hi = _mm256_unpackhi_epi8(x, zero);
    lo = _mm256_adds_epi16(_mm256_srli_epi16(_mm256_mullo_epi16(lo, vg), 5), vo);
    hi = _mm256_adds_epi16(_mm256_srli_epi16(_mm256_mullo_epi16(hi, vg), 5), vo);
    // unpack and pack work within 128-bit lanes, so the order is kept.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_packus_epi16(lo, hi));
  }
  for (; i < n; ++i) d[i] = GainBlockPixel(s[i], g, o);
}

}  // namespace point
}  // namespace mirel
