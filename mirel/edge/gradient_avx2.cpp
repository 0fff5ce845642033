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
PairRowFns PairRowsAvx2() { return blocks::Fns<Isa>(); }
}  // namespace edge
}  // namespace mirel
