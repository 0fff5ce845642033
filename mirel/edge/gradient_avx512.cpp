// Block routines of the gradient pairs with AVX-512 (F and BW).
#include <immintrin.h>

#include "mirel/edge/gradient_blocks_internal.h"

namespace {

struct Isa {
  using V = __m512i;
  static constexpr int kLanes = 32;
  static V Load(const std::uint8_t* p) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
  }
  static V Load(const std::uint16_t* p) { return _mm512_loadu_si512(p); }
  static V Sub(V a, V b) { return _mm512_sub_epi16(a, b); }
  static V Add(V a, V b) { return _mm512_add_epi16(a, b); }
  // The packs work within 128-bit quarters; the 64-bit permute restores
  // the order.
  static void LoadPairs(const std::uint32_t* p, V& lo, V& hi) {
    const V a = _mm512_loadu_si512(p), b = _mm512_loadu_si512(p + 16);
    const V order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
    auto low = [](V v) { return _mm512_maskz_srai_epi32(0xFFFF, _mm512_maskz_slli_epi32(0xFFFF, v, 16), 16); };
    auto high = [](V v) { return _mm512_maskz_srai_epi32(0xFFFF, v, 16); };
    lo = _mm512_maskz_permutexvar_epi64(0xFF, order, _mm512_packs_epi32(low(a), low(b)));
    hi = _mm512_maskz_permutexvar_epi64(0xFF, order, _mm512_packs_epi32(high(a), high(b)));
  }
  static V Abs(V a) { return _mm512_maskz_abs_epi16(0xFFFFFFFFu, a); }
  static V Srl1(V a) { return _mm512_srli_epi16(a, 1); }
  template <int K>
  static V Mul(V a) { return _mm512_mullo_epi16(a, _mm512_set1_epi16(K)); }
  static V Set1(int v) { return _mm512_set1_epi16(static_cast<short>(v)); }
  static V Zero() { return _mm512_setzero_si512(); }
  static V Gt(V a, V b) { return _mm512_movm_epi16(_mm512_cmpgt_epi16_mask(a, b)); }
  static V Eq(V a, V b) { return _mm512_movm_epi16(_mm512_cmpeq_epi16_mask(a, b)); }
  static V Select(V m, V a, V b) { return _mm512_ternarylogic_epi64(m, a, b, 0xCA); }
  static V Or(V a, V b) { return _mm512_or_si512(a, b); }
  static V AndNot(V m, V a) { return _mm512_maskz_andnot_epi64(0xFF, m, a); }
  static bool AnyAbove(V a, int k) { return _mm512_cmpgt_epi16_mask(a, Set1(k)) != 0; }
  static void StoreBytes(std::uint8_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtepi16_epi8(0xFFFFFFFFu, v));
  }
  static void StoreWords32(std::uint32_t* p, V v) { StorePairs(p, v, Zero()); }
  // The unpacks work within 128-bit quarters: lo holds pairs 0-3, 8-11,
  // 16-19, 24-27 and hi the four pairs behind each; the 64-bit permutes put
  // them back in order.
  static void StorePairs(std::uint32_t* p, V lo, V hi) {
    const V a = _mm512_unpacklo_epi16(lo, hi), b = _mm512_unpackhi_epi16(lo, hi);
    const V first = _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0);
    const V second = _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4);
    _mm512_storeu_si512(p, _mm512_permutex2var_epi64(a, first, b));
    _mm512_storeu_si512(p + 16, _mm512_permutex2var_epi64(a, second, b));
  }
};

}  // namespace

namespace mirel {
namespace edge {
EdgeRowFns EdgeRowsAvx512() { return blocks::Fns<Isa>(); }
}  // namespace edge
}  // namespace mirel
