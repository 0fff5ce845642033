// Block routines of the conversions with SSE2 and SSSE3 byte shuffles (the
// x86-64 baseline): 16 pixels a block.
#include "mirel/point/color_convert_internal.h"

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>
#include <tmmintrin.h>

#if defined(__GNUC__)
#define MIREL_TARGET_SSSE3 __attribute__((target("ssse3")))
#else
#define MIREL_TARGET_SSSE3
#endif

namespace mirel {
namespace cvt {
namespace {

inline __m128i Bytes16(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void Store16(unsigned char* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// Four pixels in the first 12 bytes of q: 16-bit pairs (c0 + c1, c2) each.
MIREL_TARGET_SSSE3 inline __m128i PairSums(__m128i q, __m128i spread, __m128i ones) {
  return _mm_maddubs_epi16(_mm_shuffle_epi8(q, spread), ones);
}

// ((c0 + c1 + c2) * 85) >> 8 for 16 pixels (48 bytes). The sum times 85 is
// at most 65025, so the 16-bit product is exact.
MIREL_TARGET_SSSE3 int C24ToBw8(const unsigned char* s, unsigned char* d, int n) {
  // Pixel k of a quad to bytes 4k..4k+2, with a zero byte behind.
  const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  const __m128i ones = _mm_set1_epi8(1);
  const __m128i k85 = _mm_set1_epi16(85);
  if (n < 16) return 0;
  for (int x = 0;; x += 16) {
    if (x > n - 16) x = n - 16;  // a last block over the tail, overlapping the one before
    const unsigned char* p = s + 3 * x;
    const __m128i a = Bytes16(p), b = Bytes16(p + 16), c = Bytes16(p + 32);
    const __m128i q0 = PairSums(a, spread, ones);
    const __m128i q1 = PairSums(_mm_alignr_epi8(b, a, 12), spread, ones);
    const __m128i q2 = PairSums(_mm_alignr_epi8(c, b, 8), spread, ones);
    const __m128i q3 = PairSums(_mm_srli_si128(c, 4), spread, ones);
    const __m128i lo = _mm_srli_epi16(_mm_mullo_epi16(_mm_hadd_epi16(q0, q1), k85), 8);
    const __m128i hi = _mm_srli_epi16(_mm_mullo_epi16(_mm_hadd_epi16(q2, q3), k85), 8);
    Store16(d + x, _mm_packus_epi16(lo, hi));
    if (x == n - 16) return n;
  }
}

// Each byte three times: 16 pixels to 48 bytes.
MIREL_TARGET_SSSE3 int Bw8ToC24(const unsigned char* s, unsigned char* d, int n) {
  const __m128i m0 = Bytes16(kTriple), m1 = Bytes16(kTriple + 16), m2 = Bytes16(kTriple + 32);
  if (n < 16) return 0;
  for (int x = 0;; x += 16) {
    if (x > n - 16) x = n - 16;  // a last block over the tail, overlapping the one before
    const __m128i v = Bytes16(s + x);
    unsigned char* q = d + 3 * x;
    Store16(q, _mm_shuffle_epi8(v, m0));
    Store16(q + 16, _mm_shuffle_epi8(v, m1));
    Store16(q + 32, _mm_shuffle_epi8(v, m2));
    if (x == n - 16) return n;
  }
}

int Bw8ToF32(const unsigned char* s, unsigned char* d, int n) {
  const __m128i zero = _mm_setzero_si128();
  float* out = reinterpret_cast<float*>(d);
  if (n < 16) return 0;
  for (int x = 0;; x += 16) {
    if (x > n - 16) x = n - 16;  // a last block over the tail, overlapping the one before
    const __m128i v = Bytes16(s + x);
    const __m128i lo = _mm_unpacklo_epi8(v, zero), hi = _mm_unpackhi_epi8(v, zero);
    _mm_storeu_ps(out + x, _mm_cvtepi32_ps(_mm_unpacklo_epi16(lo, zero)));
    _mm_storeu_ps(out + x + 4, _mm_cvtepi32_ps(_mm_unpackhi_epi16(lo, zero)));
    _mm_storeu_ps(out + x + 8, _mm_cvtepi32_ps(_mm_unpacklo_epi16(hi, zero)));
    _mm_storeu_ps(out + x + 12, _mm_cvtepi32_ps(_mm_unpackhi_epi16(hi, zero)));
    if (x == n - 16) return n;
  }
}

}  // namespace

Blocks BlocksSse2() { return Blocks{C24ToBw8, Bw8ToC24, Bw8ToF32}; }

}  // namespace cvt
}  // namespace mirel
#endif  // MIREL_X86_SIMD
