// Moving-average blocks with AVX-512 (F and BW): 32 pixels a block.
#if defined(MIREL_X86_SIMD)
#include <immintrin.h>

#include "mirel/geometry/temporal_average_blocks_internal.h"

namespace mirel {
namespace geometry {
namespace {

// The masked forms (all lanes on) keep GCC from warning about the undefined
// source operand inside the plain forms.
struct Avx512 {
  using V = __m512i;
  using B = __m256i;
  static constexpr int kPixels = 32;
  static __m128i Count(int n) { return _mm_cvtsi32_si128(n); }
  static B LoadB(const std::uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void StoreB(std::uint8_t* p, B v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static V LoadW(const std::uint16_t* p) { return _mm512_loadu_si512(p); }
  static void StoreW(std::uint16_t* p, V v) { _mm512_storeu_si512(p, v); }
  static V Widen(B b) { return _mm512_cvtepu8_epi16(b); }
  static B Narrow(V v) { return _mm512_maskz_cvtusepi16_epi8(0xFFFFFFFFu, v); }
  static V Add(V a, V b) { return _mm512_add_epi16(a, b); }
  static V Sub(V a, V b) { return _mm512_sub_epi16(a, b); }
  static V Sll(V a, __m128i n) { return _mm512_maskz_sll_epi16(0xFFFFFFFFu, a, n); }
  static V Srl(V a, __m128i n) { return _mm512_maskz_srl_epi16(0xFFFFFFFFu, a, n); }
};

}  // namespace

MovingRow MovingAvx512() { return &Row<Avx512>; }

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
