// Moving-average blocks with SSE2 (the x86-64 baseline): 8 pixels a block.
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/geometry/temporal_average_blocks_internal.h"

namespace mirel {
namespace geometry {
namespace {

struct Sse2 {
  using V = __m128i;
  using B = __m128i;  // 8 bytes in the low half
  static constexpr int kPixels = 8;
  static __m128i Count(int n) { return _mm_cvtsi32_si128(n); }
  static B LoadB(const std::uint8_t* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
  static void StoreB(std::uint8_t* p, B v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
  static V LoadW(const std::uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void StoreW(std::uint16_t* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V Widen(B b) { return _mm_unpacklo_epi8(b, _mm_setzero_si128()); }
  // Lanes hold t >> shift with shift >= 1, so as signed words they are not
  // negative and the signed pack saturates them to 0..255 as wanted.
  static B Narrow(V v) { return _mm_packus_epi16(v, v); }
  static V Add(V a, V b) { return _mm_add_epi16(a, b); }
  static V Sub(V a, V b) { return _mm_sub_epi16(a, b); }
  static V Sll(V a, __m128i n) { return _mm_sll_epi16(a, n); }
  static V Srl(V a, __m128i n) { return _mm_srl_epi16(a, n); }
};

}  // namespace

MovingRow MovingSse2() { return &Row<Sse2>; }

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
