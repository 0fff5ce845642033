// Block routines of the sliding-sum filters with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/filter/smoothing_internal.h"

namespace mirel {
namespace filter {
namespace {

int Slide(std::uint32_t* sums, const std::uint8_t* in, const std::uint8_t* out, int n) {
  const __m128i z = _mm_setzero_si128();
  int x = 0;
  for (; x + 16 <= n; x += 16) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(out + x));
    const __m128i a16[2] = {_mm_unpacklo_epi8(a, z), _mm_unpackhi_epi8(a, z)};
    const __m128i b16[2] = {_mm_unpacklo_epi8(b, z), _mm_unpackhi_epi8(b, z)};
    for (int h = 0; h < 2; ++h) {
      __m128i* s = reinterpret_cast<__m128i*>(sums + x + 8 * h);
      const __m128i lo = _mm_sub_epi32(_mm_unpacklo_epi16(a16[h], z), _mm_unpacklo_epi16(b16[h], z));
      const __m128i hi = _mm_sub_epi32(_mm_unpackhi_epi16(a16[h], z), _mm_unpackhi_epi16(b16[h], z));
      _mm_storeu_si128(s, _mm_add_epi32(_mm_loadu_si128(s), lo));
      _mm_storeu_si128(s + 1, _mm_add_epi32(_mm_loadu_si128(s + 1), hi));
    }
  }
  return x;
}

// Four products at a time: even and odd lanes through the 64-bit multiply.
inline __m128i Scaled(__m128i v, __m128i k) {
  const __m128i even = _mm_srli_epi64(_mm_mul_epu32(v, k), 24);
  const __m128i odd = _mm_srli_epi64(_mm_mul_epu32(_mm_srli_epi64(v, 32), k), 24);
  return _mm_or_si128(even, _mm_slli_epi64(odd, 32));
}

int Scale(const std::uint32_t* lo, const std::uint32_t* hi, std::uint32_t scale, std::uint8_t* dst, int n) {
  const __m128i k = _mm_set1_epi32(static_cast<int>(scale));
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    __m128i q[4];
    for (int j = 0; j < 4; ++j) {
      const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hi + i + 4 * j));
      const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lo + i + 4 * j));
      q[j] = Scaled(_mm_sub_epi32(a, b), k);  // each lane is at most 255
    }
    const __m128i w = _mm_packs_epi32(q[0], q[1]), v = _mm_packs_epi32(q[2], q[3]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_packus_epi16(w, v));
  }
  return i;
}

// Four running sums at a time: the sums within the vector by two shifted
// additions, then the total so far added to every lane.
int Prefix(const std::uint32_t* col, int n, std::uint32_t* prefix) {
  __m128i carry = _mm_set1_epi32(static_cast<int>(prefix[0]));
  int x = 0;
  for (; x + 4 <= n; x += 4) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(col + x));
    v = _mm_add_epi32(v, _mm_slli_si128(v, 4));
    v = _mm_add_epi32(v, _mm_slli_si128(v, 8));
    v = _mm_add_epi32(v, carry);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(prefix + x + 1), v);
    carry = _mm_shuffle_epi32(v, 0xFF);
  }
  return x;
}

int Slide16(std::uint32_t* sums, const std::uint16_t* in, const std::uint16_t* out, int n) {
  const __m128i z = _mm_setzero_si128();
  int x = 0;
  for (; x + 8 <= n; x += 8) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(out + x));
    __m128i* s = reinterpret_cast<__m128i*>(sums + x);
    const __m128i lo = _mm_sub_epi32(_mm_unpacklo_epi16(a, z), _mm_unpacklo_epi16(b, z));
    const __m128i hi = _mm_sub_epi32(_mm_unpackhi_epi16(a, z), _mm_unpackhi_epi16(b, z));
    _mm_storeu_si128(s, _mm_add_epi32(_mm_loadu_si128(s), lo));
    _mm_storeu_si128(s + 1, _mm_add_epi32(_mm_loadu_si128(s + 1), hi));
  }
  return x;
}

// The low 32 bits of each product shifted right by 24: bits 24 to 31 of the
// 64-bit products.
inline __m128i WrappedScaled(__m128i v, __m128i k) {
  const __m128i byte = _mm_set1_epi64x(0xFF);
  const __m128i even = _mm_and_si128(_mm_srli_epi64(_mm_mul_epu32(v, k), 24), byte);
  const __m128i odd = _mm_and_si128(_mm_srli_epi64(_mm_mul_epu32(_mm_srli_epi64(v, 32), k), 24), byte);
  return _mm_or_si128(even, _mm_slli_epi64(odd, 32));
}

int Scale16(const std::uint32_t* lo, const std::uint32_t* hi, std::uint32_t scale, std::uint16_t* dst, int n) {
  const __m128i k = _mm_set1_epi32(static_cast<int>(scale));
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    __m128i q[2];
    for (int j = 0; j < 2; ++j) {
      const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hi + i + 4 * j));
      const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lo + i + 4 * j));
      q[j] = WrappedScaled(_mm_sub_epi32(a, b), k);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), _mm_packs_epi32(q[0], q[1]));
  }
  return i;
}

}  // namespace

BoxRoutines BoxSse2() { return BoxRoutines{&Slide, &Scale, &Prefix, &Slide16, &Scale16}; }

}  // namespace filter
}  // namespace mirel

#endif  // MIREL_X86_SIMD
