// AVX2 summing kernels of the 8-bit projections.
#include <immintrin.h>

#include <cstring>

#include "mirel/histogram/projection_internal.h"

namespace mirel {
namespace proj {

// Strips of 64 columns summed down the rows in 16-bit lanes (257 rows at
// most between flushes into the 32-bit sums).
int ColumnSums8AVX2(const Rows<const EBW8>& rows, std::uint32_t* acc) {
  const int strips = rows.width / 64;
  const __m256i zero = _mm256_setzero_si256();
  for (int s = 0; s < strips; ++s) {
    std::uint32_t* a = acc + 64 * s;
    std::memset(a, 0, 64 * sizeof(std::uint32_t));
    for (int y0 = 0; y0 < rows.height; y0 += 257) {
      const int y1 = rows.height - y0 < 257 ? rows.height : y0 + 257;
      __m256i s0 = zero, s1 = zero, s2 = zero, s3 = zero;
      for (int y = y0; y < y1; ++y) {
        const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y)) + 64 * s;
        const __m256i x0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        const __m256i x1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32));
        s0 = _mm256_add_epi16(s0, _mm256_unpacklo_epi8(x0, zero));
        s1 = _mm256_add_epi16(s1, _mm256_unpackhi_epi8(x0, zero));
        s2 = _mm256_add_epi16(s2, _mm256_unpacklo_epi8(x1, zero));
        s3 = _mm256_add_epi16(s3, _mm256_unpackhi_epi8(x1, zero));
      }
      // Lane order of unpack: per 128-bit half, low 8 then high 8 bytes.
      alignas(32) std::uint16_t part[4][16];
      _mm256_store_si256(reinterpret_cast<__m256i*>(part[0]), s0);
      _mm256_store_si256(reinterpret_cast<__m256i*>(part[1]), s1);
      _mm256_store_si256(reinterpret_cast<__m256i*>(part[2]), s2);
      _mm256_store_si256(reinterpret_cast<__m256i*>(part[3]), s3);
      for (int half = 0; half < 2; ++half) {
        std::uint32_t* b = a + 32 * half;
        const std::uint16_t(*q)[16] = part + 2 * half;
        for (int i = 0; i < 8; ++i) {
          b[i] += q[0][i];
          b[8 + i] += q[1][i];
          b[16 + i] += q[0][8 + i];
          b[24 + i] += q[1][8 + i];
        }
      }
    }
  }
  return strips * 64;
}

std::uint64_t RowSum8AVX2(const unsigned char* p, int n) {
  __m256i s = _mm256_setzero_si256();
  const __m256i zero = _mm256_setzero_si256();
  int i = 0;
  for (; i + 32 <= n; i += 32)
    s = _mm256_add_epi64(s, _mm256_sad_epu8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i)), zero));
  alignas(32) std::uint64_t lanes[4];
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), s);
  std::uint64_t sum = lanes[0] + lanes[1] + lanes[2] + lanes[3];
  for (; i < n; ++i) sum += p[i];
  return sum;
}

}  // namespace proj
}  // namespace mirel
