// Block routines of the gradient pairs with AVX2.
#include <immintrin.h>

#include "mirel/edge/gradient_blocks_internal.h"

namespace {

struct Isa {
  using V = __m256i;
  static constexpr int kLanes = 16;
  static V Load(const std::uint8_t* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  }
  static V Load(const std::uint16_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static V Sub(V a, V b) { return _mm256_sub_epi16(a, b); }
  static V Add(V a, V b) { return _mm256_add_epi16(a, b); }
  // The packs work within 128-bit halves; the 64-bit permute restores the
  // order.
  static void LoadPairs(const std::uint32_t* p, V& lo, V& hi) {
    const V a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const V b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 8));
    lo = _mm256_permute4x64_epi64(
        _mm256_packs_epi32(_mm256_srai_epi32(_mm256_slli_epi32(a, 16), 16), _mm256_srai_epi32(_mm256_slli_epi32(b, 16), 16)),
        0xD8);
    hi = _mm256_permute4x64_epi64(_mm256_packs_epi32(_mm256_srai_epi32(a, 16), _mm256_srai_epi32(b, 16)), 0xD8);
  }
  static V Abs(V a) { return _mm256_abs_epi16(a); }
  static V Srl1(V a) { return _mm256_srli_epi16(a, 1); }
  template <int K>
  static V Mul(V a) { return _mm256_mullo_epi16(a, _mm256_set1_epi16(K)); }
  static V Set1(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
  static V Zero() { return _mm256_setzero_si256(); }
  static V Gt(V a, V b) { return _mm256_cmpgt_epi16(a, b); }
  static V Eq(V a, V b) { return _mm256_cmpeq_epi16(a, b); }
  static V Select(V m, V a, V b) { return _mm256_blendv_epi8(b, a, m); }
  static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  static V AndNot(V m, V a) { return _mm256_andnot_si256(m, a); }
  static bool AnyAbove(V a, int k) { return _mm256_movemask_epi8(_mm256_cmpgt_epi16(a, Set1(k))) != 0; }
  static void StoreBytes(std::uint8_t* p, V v) {
    const V b = _mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(b));
  }
  static void StoreWords32(std::uint32_t* p, V v) { StorePairs(p, v, Zero()); }
  // The unpacks work within 128-bit halves: lo holds pairs 0-3 and 8-11, hi
  // pairs 4-7 and 12-15.
  static void StorePairs(std::uint32_t* p, V lo, V hi) {
    const V a = _mm256_unpacklo_epi16(lo, hi), b = _mm256_unpackhi_epi16(lo, hi);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(a, b, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 8), _mm256_permute2x128_si256(a, b, 0x31));
  }
};

}  // namespace

namespace mirel {
namespace edge {
EdgeRowFns EdgeRowsAvx2() { return blocks::Fns<Isa>(); }
}  // namespace edge
}  // namespace mirel
