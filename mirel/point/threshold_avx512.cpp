// 8-bit threshold pixel loop with AVX-512BW and VL: 32 pixels a block in
// 256-bit registers (64-byte vectors measured slower on this memory-bound
// loop, warm and cold), the row's tail by a masked load and store.
#include <immintrin.h>

#include <cstdint>

#include "mirel/point/threshold_internal.h"

namespace mirel {
namespace thr {
namespace {

template <bool kTwo>
void Run(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels) {
  const __m256i c1 = _mm256_set1_epi8(static_cast<char>(levels.c1));
  const __m256i c2 = _mm256_set1_epi8(static_cast<char>(levels.c2));
  // A bound of 256 is never reached: its mask is empty.
  const __mmask32 use1 = levels.c1 < 256 ? ~__mmask32(0) : __mmask32(0);
  const __mmask32 use2 = levels.c2 < 256 ? ~__mmask32(0) : __mmask32(0);
  const __m256i v0 = _mm256_set1_epi8(static_cast<char>(levels.v0));
  const __m256i v1 = _mm256_set1_epi8(static_cast<char>(levels.v1));
  const __m256i v2 = _mm256_set1_epi8(static_cast<char>(levels.v2));
  const int w = src.width;
  auto one = [&](__m256i p) {
    __m256i r = _mm256_mask_blend_epi8(_mm256_mask_cmpge_epu8_mask(use1, p, c1), v0, v1);
    if (kTwo) r = _mm256_mask_blend_epi8(_mm256_mask_cmpge_epu8_mask(use2, p, c2), r, v2);
    return r;
  };
  auto load = [](const unsigned char* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); };
  auto store = [](unsigned char* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); };
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    int x = 0;
    for (; x + 64 <= w; x += 64) {
      const __m256i a = load(s + x);
      const __m256i b = load(s + x + 32);
      store(d + x, one(a));
      store(d + x + 32, one(b));
    }
    for (; x + 32 <= w; x += 32) store(d + x, one(load(s + x)));
    if (x < w) {
      const __mmask32 tail = static_cast<__mmask32>((std::uint64_t{1} << (w - x)) - 1);
      _mm256_mask_storeu_epi8(d + x, tail, one(_mm256_maskz_loadu_epi8(tail, s + x)));
    }
  }
}

}  // namespace

void ClassifyAVX512(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels) {
  if (levels.TwoLevels()) Run<true>(src, dst, levels);
  else Run<false>(src, dst, levels);
}

}  // namespace thr
}  // namespace mirel
