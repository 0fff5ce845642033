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
PairRowFns PairRowsAvx512() { return blocks::Fns<Isa>(); }
}  // namespace edge
}  // namespace mirel
