// Moving-average blocks with AVX2: 16 pixels a block.
#if defined(MIREL_X86_SIMD)
#include <immintrin.h>

#include "mirel/geometry/temporal_average_blocks_internal.h"

namespace mirel {
namespace geometry {
namespace {

struct Avx2 {
  using V = __m256i;
  using B = __m128i;
  static constexpr int kPixels = 16;
  static __m128i Count(int n) { return _mm_cvtsi32_si128(n); }
  static B LoadB(const std::uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void StoreB(std::uint8_t* p, B v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V LoadW(const std::uint16_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void StoreW(std::uint16_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static V Widen(B b) { return _mm256_cvtepu8_epi16(b); }
  // Lanes are t >> shift with shift >= 1: not negative as signed words.
  static B Narrow(V v) { return _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)); }
  static V Add(V a, V b) { return _mm256_add_epi16(a, b); }
  static V Sub(V a, V b) { return _mm256_sub_epi16(a, b); }
  static V Sll(V a, __m128i n) { return _mm256_sll_epi16(a, n); }
  static V Srl(V a, __m128i n) { return _mm256_srl_epi16(a, n); }
};

}  // namespace

MovingRow MovingAvx2() { return &Row<Avx2>; }

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
