// Block routines of the conversions with AVX2: 32 pixels a block. Byte
// shuffles work within 128-bit lanes, so each lane is loaded or broadcast
// with the bytes its shuffle needs.
#include <immintrin.h>

#include "mirel/point/color_convert_internal.h"

namespace mirel {
namespace cvt {
namespace {

inline __m128i Bytes16(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m256i TwoLanes(const unsigned char* lo, const unsigned char* hi) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(Bytes16(lo)), Bytes16(hi), 1);
}
inline void Store32(unsigned char* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// ((c0 + c1 + c2) * 85) >> 8 for 32 pixels (96 bytes). Each lane holds
// four pixels in 12 of its bytes; the last lane is loaded 4 bytes early so
// that no byte behind the block is read, and its shuffle skips them.
int C24ToBw8(const unsigned char* s, unsigned char* d, int n) {
  const __m256i spread = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                          0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  const __m256i spreadLast = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                              4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1);
  const __m256i ones = _mm256_set1_epi8(1);
  const __m256i k85 = _mm256_set1_epi16(85);
  // Dwords of four pixels come out as 0, 2, 4, 6 | 1, 3, 5, 7.
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  if (n < 32) return 0;
  for (int x = 0;; x += 32) {
    if (x > n - 32) x = n - 32;  // a last block over the tail, overlapping the one before
    const unsigned char* p = s + 3 * x;
    const __m256i q0 = _mm256_maddubs_epi16(_mm256_shuffle_epi8(TwoLanes(p, p + 12), spread), ones);
    const __m256i q1 = _mm256_maddubs_epi16(_mm256_shuffle_epi8(TwoLanes(p + 24, p + 36), spread), ones);
    const __m256i q2 = _mm256_maddubs_epi16(_mm256_shuffle_epi8(TwoLanes(p + 48, p + 60), spread), ones);
    const __m256i q3 = _mm256_maddubs_epi16(_mm256_shuffle_epi8(TwoLanes(p + 72, p + 80), spreadLast), ones);
    const __m256i a = _mm256_srli_epi16(_mm256_mullo_epi16(_mm256_hadd_epi16(q0, q1), k85), 8);
    const __m256i b = _mm256_srli_epi16(_mm256_mullo_epi16(_mm256_hadd_epi16(q2, q3), k85), 8);
    Store32(d + x, _mm256_permutevar8x32_epi32(_mm256_packus_epi16(a, b), order));
    if (x == n - 32) return n;
  }
}

// Each byte three times: 32 pixels to 96 bytes.
int Bw8ToC24(const unsigned char* s, unsigned char* d, int n) {
  // kTriple holds the shuffles of 16 pixels to output bytes 0-15, 16-31, 32-47.
  const __m256i m01 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kTriple));
  const __m256i m20 = TwoLanes(kTriple + 32, kTriple);
  const __m256i m12 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kTriple + 16));
  if (n < 32) return 0;
  for (int x = 0;; x += 32) {
    if (x > n - 32) x = n - 32;  // a last block over the tail, overlapping the one before
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + x));
    const __m256i lo = _mm256_broadcastsi128_si256(_mm256_castsi256_si128(v));
    const __m256i hi = _mm256_broadcastsi128_si256(_mm256_extracti128_si256(v, 1));
    unsigned char* q = d + 3 * x;
    Store32(q, _mm256_shuffle_epi8(lo, m01));
    Store32(q + 32, _mm256_shuffle_epi8(v, m20));
    Store32(q + 64, _mm256_shuffle_epi8(hi, m12));
    if (x == n - 32) return n;
  }
}

int Bw8ToF32(const unsigned char* s, unsigned char* d, int n) {
  float* out = reinterpret_cast<float*>(d);
  auto eight = [](const unsigned char* p) {
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
  };
  if (n < 32) return 0;
  for (int x = 0;; x += 32) {
    if (x > n - 32) x = n - 32;  // a last block over the tail, overlapping the one before
    _mm256_storeu_ps(out + x, eight(s + x));
    _mm256_storeu_ps(out + x + 8, eight(s + x + 8));
    _mm256_storeu_ps(out + x + 16, eight(s + x + 16));
    _mm256_storeu_ps(out + x + 24, eight(s + x + 24));
    if (x == n - 32) return n;
  }
}

}  // namespace

Blocks BlocksAvx2() { return Blocks{C24ToBw8, Bw8ToC24, Bw8ToF32}; }

}  // namespace cvt
}  // namespace mirel
