// Block routines of the sliding-sum filters with AVX2.
#include <immintrin.h>

#include "mirel/filter/smoothing_internal.h"

namespace mirel {
namespace filter {
namespace {

int Slide(std::uint32_t* sums, const std::uint8_t* in, const std::uint8_t* out, int n) {
  int x = 0;
  for (; x + 16 <= n; x += 16) {
    for (int h = 0; h < 2; ++h) {
      const __m256i a = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + x + 8 * h)));
      const __m256i b = _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(out + x + 8 * h)));
      __m256i* s = reinterpret_cast<__m256i*>(sums + x + 8 * h);
      _mm256_storeu_si256(s, _mm256_add_epi32(_mm256_loadu_si256(s), _mm256_sub_epi32(a, b)));
    }
  }
  return x;
}

int Scale(const std::uint32_t* lo, const std::uint32_t* hi, std::uint32_t scale, std::uint8_t* dst, int n) {
  const __m256i k = _mm256_set1_epi32(static_cast<int>(scale));
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    __m256i q[2];
    for (int j = 0; j < 2; ++j) {
      const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hi + i + 8 * j));
      const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(lo + i + 8 * j));
      q[j] = _mm256_srli_epi32(_mm256_mullo_epi32(_mm256_sub_epi32(a, b), k), 24);
    }
    // Pack within 128-bit lanes, then put the four quarters in order.
    const __m256i w = _mm256_permute4x64_epi64(_mm256_packs_epi32(q[0], q[1]), 0xD8);
    const __m128i b = _mm_packus_epi16(_mm256_castsi256_si128(w), _mm256_extracti128_si256(w, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), b);
  }
  return i;
}

// Eight running sums at a time: the sums within each 128-bit lane by two
// shifted additions, the low lane's total added to the high lane, then the
// total so far added to every lane.
int Prefix(const std::uint32_t* col, int n, std::uint32_t* prefix) {
  __m256i carry = _mm256_set1_epi32(static_cast<int>(prefix[0]));
  const __m256i last = _mm256_set1_epi32(7);
  int x = 0;
  for (; x + 8 <= n; x += 8) {
    __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(col + x));
    v = _mm256_add_epi32(v, _mm256_slli_si256(v, 4));
    v = _mm256_add_epi32(v, _mm256_slli_si256(v, 8));
    v = _mm256_add_epi32(v, _mm256_permute2x128_si256(_mm256_shuffle_epi32(v, 0xFF), v, 0x08));
    v = _mm256_add_epi32(v, carry);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(prefix + x + 1), v);
    carry = _mm256_permutevar8x32_epi32(v, last);
  }
  return x;
}

int Slide16(std::uint32_t* sums, const std::uint16_t* in, const std::uint16_t* out, int n) {
  int x = 0;
  for (; x + 8 <= n; x += 8) {
    const __m256i a = _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x)));
    const __m256i b = _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(out + x)));
    __m256i* s = reinterpret_cast<__m256i*>(sums + x);
    _mm256_storeu_si256(s, _mm256_add_epi32(_mm256_loadu_si256(s), _mm256_sub_epi32(a, b)));
  }
  return x;
}

int Scale16(const std::uint32_t* lo, const std::uint32_t* hi, std::uint32_t scale, std::uint16_t* dst, int n) {
  const __m256i k = _mm256_set1_epi32(static_cast<int>(scale));
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(hi + i));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(lo + i));
    const __m256i q = _mm256_srli_epi32(_mm256_mullo_epi32(_mm256_sub_epi32(a, b), k), 24);
    const __m256i w = _mm256_permute4x64_epi64(_mm256_packus_epi32(q, q), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm256_castsi256_si128(w));
  }
  return i;
}

}  // namespace

BoxRoutines BoxAvx2() { return BoxRoutines{&Slide, &Scale, &Prefix, &Slide16, &Scale16}; }

}  // namespace filter
}  // namespace mirel
