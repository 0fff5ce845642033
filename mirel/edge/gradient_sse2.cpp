// Block routines of the gradient pairs with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/edge/gradient_blocks_internal.h"

namespace {

struct Isa {
  using V = __m128i;
  static constexpr int kLanes = 8;
  static V Load(const std::uint8_t* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
  }
  static V Load(const std::uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static V Sub(V a, V b) { return _mm_sub_epi16(a, b); }
  static V Add(V a, V b) { return _mm_add_epi16(a, b); }
  static void LoadPairs(const std::uint32_t* p, V& lo, V& hi) {
    const V a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const V b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 4));
    lo = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(a, 16), 16), _mm_srai_epi32(_mm_slli_epi32(b, 16), 16));
    hi = _mm_packs_epi32(_mm_srai_epi32(a, 16), _mm_srai_epi32(b, 16));
  }
  static V Abs(V a) { return _mm_max_epi16(a, _mm_sub_epi16(_mm_setzero_si128(), a)); }
  static V Srl1(V a) { return _mm_srli_epi16(a, 1); }
  template <int K>
  static V Mul(V a) { return _mm_mullo_epi16(a, _mm_set1_epi16(K)); }
  static V Set1(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
  static V Zero() { return _mm_setzero_si128(); }
  static V Gt(V a, V b) { return _mm_cmpgt_epi16(a, b); }
  static V Eq(V a, V b) { return _mm_cmpeq_epi16(a, b); }
  static V Select(V m, V a, V b) { return _mm_or_si128(_mm_and_si128(m, a), _mm_andnot_si128(m, b)); }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V AndNot(V m, V a) { return _mm_andnot_si128(m, a); }
  static bool AnyAbove(V a, int k) { return _mm_movemask_epi8(_mm_cmpgt_epi16(a, Set1(k))) != 0; }
  static void StoreBytes(std::uint8_t* p, V v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
  }
  static void StoreWords32(std::uint32_t* p, V v) { StorePairs(p, v, Zero()); }
  static void StorePairs(std::uint32_t* p, V lo, V hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(lo, hi));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), _mm_unpackhi_epi16(lo, hi));
  }
};

}  // namespace

namespace mirel {
namespace edge {
EdgeRowFns EdgeRowsSse2() { return blocks::Fns<Isa>(); }
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_X86_SIMD
