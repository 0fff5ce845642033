// AVX-512 forms of the 8-bit table walk and of the 16-bit block formula of
// the 8-bit gain. The table walk needs the two-table byte permutes of VBMI
// (the caller falls back to AVX2 without them); row tails are done with
// masked loads and stores.
#include <immintrin.h>

#include "mirel/point/lut_internal.h"

namespace mirel {
namespace point {
namespace {

#if defined(__GNUC__)
#define MIREL_TARGET_VBMI __attribute__((target("avx512vbmi")))
// Reads the processor model that the runtime detected at load; cheap.
bool HasVbmi() { return __builtin_cpu_supports("avx512vbmi") != 0; }
#else
#define MIREL_TARGET_VBMI
bool HasVbmi() { return false; }
#endif

inline __mmask64 TailMask(std::size_t n) {
  return n >= 64 ? ~static_cast<__mmask64>(0) : ((static_cast<__mmask64>(1) << n) - 1);
}

MIREL_TARGET_VBMI void LutRowsVbmi(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table) {
  const __m512i t0 = _mm512_loadu_si512(table);
  const __m512i t1 = _mm512_loadu_si512(table + 64);
  const __m512i t2 = _mm512_loadu_si512(table + 128);
  const __m512i t3 = _mm512_loadu_si512(table + 192);
  const std::size_t n = static_cast<std::size_t>(src.width);
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    std::size_t i = 0;
    for (; i + 128 <= n; i += 128) {
      const __m512i x0 = _mm512_loadu_si512(s + i);
      const __m512i x1 = _mm512_loadu_si512(s + i + 64);
      const __m512i a0 = _mm512_permutex2var_epi8(t0, x0, t1);
      const __m512i b0 = _mm512_permutex2var_epi8(t2, x0, t3);
      const __m512i a1 = _mm512_permutex2var_epi8(t0, x1, t1);
      const __m512i b1 = _mm512_permutex2var_epi8(t2, x1, t3);
      _mm512_storeu_si512(d + i, _mm512_mask_blend_epi8(_mm512_movepi8_mask(x0), a0, b0));
      _mm512_storeu_si512(d + i + 64, _mm512_mask_blend_epi8(_mm512_movepi8_mask(x1), a1, b1));
    }
    for (; i < n; i += 64) {
      const __mmask64 k = TailMask(n - i);
      const __m512i x = _mm512_maskz_loadu_epi8(k, s + i);
      const __m512i a = _mm512_permutex2var_epi8(t0, x, t1);
      const __m512i b = _mm512_permutex2var_epi8(t2, x, t3);
      _mm512_mask_storeu_epi8(d + i, k, _mm512_mask_blend_epi8(_mm512_movepi8_mask(x), a, b));
    }
  }
}

}  // namespace

bool Lut8RowsAVX512(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table) {
  if (!HasVbmi()) return false;
  LutRowsVbmi(src, dst, table);
  return true;
}

void GainBlocksAVX512(const unsigned char* s, unsigned char* d, std::size_t n, std::uint16_t g, std::int16_t o) {
  const __m512i vg = _mm512_set1_epi16(static_cast<short>(g));
  const __m512i vo = _mm512_set1_epi16(o);
  const __m512i zero = _mm512_setzero_si512();
  std::size_t i = 0;
  // 64 pixels a round: widen within 128-bit lanes, and pack back the same way.
  for (; i + 64 <= n; i += 64) {
    const __m512i x = _mm512_loadu_si512(s + i);
    __m512i lo = _mm512_unpacklo_epi8(x, zero);
    __m512i hi = _mm512_unpackhi_epi8(x, zero);
    lo = _mm512_adds_epi16(_mm512_srli_epi16(_mm512_mullo_epi16(lo, vg), 5), vo);
    hi = _mm512_adds_epi16(_mm512_srli_epi16(_mm512_mullo_epi16(hi, vg), 5), vo);
    _mm512_storeu_si512(d + i, _mm512_packus_epi16(lo, hi));
  }
  for (; i < n; i += 32) {
    const std::size_t left = n - i;
    const __mmask32 k = left >= 32 ? ~static_cast<__mmask32>(0) : ((static_cast<__mmask32>(1) << left) - 1);
    const __m512i x = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(k, s + i));
    const __m512i v = _mm512_adds_epi16(_mm512_srli_epi16(_mm512_mullo_epi16(x, vg), 5), vo);
    // Saturate to 0..255 and narrow.
    const __m512i c = _mm512_min_epi16(_mm512_max_epi16(v, zero), _mm512_set1_epi16(255));
    _mm256_mask_storeu_epi8(d + i, k, _mm512_maskz_cvtepi16_epi8(~static_cast<__mmask32>(0), c));
  }
}

}  // namespace point
}  // namespace mirel
