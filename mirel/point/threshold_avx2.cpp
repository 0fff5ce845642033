// 8-bit threshold pixel loop with AVX2: 32 pixels a block.
#include <immintrin.h>

#include "mirel/point/threshold_internal.h"

namespace mirel {
namespace thr {
namespace {

// x >= c as a byte mask, for unsigned bytes.
inline __m256i AtLeast(__m256i x, __m256i c) { return _mm256_cmpeq_epi8(_mm256_max_epu8(x, c), x); }

template <bool kTwo>
void Run(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels, const unsigned char* table) {
  const __m256i c1 = _mm256_set1_epi8(static_cast<char>(levels.c1));
  const __m256i c2 = _mm256_set1_epi8(static_cast<char>(levels.c2));
  const __m256i use2 = levels.c2 < 256 ? _mm256_set1_epi8(-1) : _mm256_setzero_si256();
  const __m256i v0 = _mm256_set1_epi8(static_cast<char>(levels.v0));
  // v0 ^ v1 where the first bound is reachable, 0 where it is not.
  const __m256i d01 = levels.c1 < 256 ? _mm256_xor_si256(v0, _mm256_set1_epi8(static_cast<char>(levels.v1)))
                                      : _mm256_setzero_si256();
  const __m256i v2 = _mm256_set1_epi8(static_cast<char>(levels.v2));
  const int w = src.width;
  auto one = [&](__m256i p) {
    __m256i r = _mm256_xor_si256(v0, _mm256_and_si256(AtLeast(p, c1), d01));
    if (kTwo) r = _mm256_blendv_epi8(r, v2, _mm256_and_si256(AtLeast(p, c2), use2));
    return r;
  };
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    int x = 0;
    for (; x + 64 <= w; x += 64) {
      const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + x));
      const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + x + 32));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + x), one(a));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + x + 32), one(b));
    }
    for (; x + 32 <= w; x += 32)
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + x),
                          one(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + x))));
    for (; x < w; ++x) d[x] = table[s[x]];
  }
}

}  // namespace

void ClassifyAVX2(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels,
                  const unsigned char* table) {
  if (levels.TwoLevels()) Run<true>(src, dst, levels, table);
  else Run<false>(src, dst, levels, table);
}

}  // namespace thr
}  // namespace mirel
