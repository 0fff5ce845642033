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
  static void StorePairs(std::uint32_t* p, V lo, V hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(lo, hi));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), _mm_unpackhi_epi16(lo, hi));
  }
};

}  // namespace

namespace mirel {
namespace edge {
PairRowFns PairRowsSse2() { return blocks::Fns<Isa>(); }
}  // namespace edge
}  // namespace mirel

#endif  // MIREL_X86_SIMD
