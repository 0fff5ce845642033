// 8-bit threshold pixel loop with AVX-512BW: 64 pixels a block, the row's
// tail by a masked load and store.
#include <immintrin.h>

#include <cstdint>

#include "mirel/point/threshold_internal.h"

namespace mirel {
namespace thr {
namespace {

template <bool kTwo>
void Run(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels) {
  const __m512i c1 = _mm512_set1_epi8(static_cast<char>(levels.c1));
  const __m512i c2 = _mm512_set1_epi8(static_cast<char>(levels.c2));
  // A bound of 256 is never reached: its mask is empty.
  const __mmask64 use1 = levels.c1 < 256 ? ~__mmask64(0) : __mmask64(0);
  const __mmask64 use2 = levels.c2 < 256 ? ~__mmask64(0) : __mmask64(0);
  const __m512i v0 = _mm512_set1_epi8(static_cast<char>(levels.v0));
  const __m512i v1 = _mm512_set1_epi8(static_cast<char>(levels.v1));
  const __m512i v2 = _mm512_set1_epi8(static_cast<char>(levels.v2));
  const int w = src.width;
  auto one = [&](__m512i p) {
    __m512i r = _mm512_mask_blend_epi8(_mm512_mask_cmpge_epu8_mask(use1, p, c1), v0, v1);
    if (kTwo) r = _mm512_mask_blend_epi8(_mm512_mask_cmpge_epu8_mask(use2, p, c2), r, v2);
    return r;
  };
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    PrefetchRowForWrite(dst, y + 1, static_cast<std::size_t>(w));
    int x = 0;
    for (; x + 128 <= w; x += 128) {
      const __m512i a = _mm512_loadu_si512(s + x);
      const __m512i b = _mm512_loadu_si512(s + x + 64);
      _mm512_storeu_si512(d + x, one(a));
      _mm512_storeu_si512(d + x + 64, one(b));
    }
    for (; x + 64 <= w; x += 64) _mm512_storeu_si512(d + x, one(_mm512_loadu_si512(s + x)));
    if (x < w) {
      const __mmask64 tail = (std::uint64_t{1} << (w - x)) - 1;
      _mm512_mask_storeu_epi8(d + x, tail, one(_mm512_maskz_loadu_epi8(tail, s + x)));
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
