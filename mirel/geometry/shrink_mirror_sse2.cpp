// Byte-row reversal with SSE2: words and doublewords are shuffled, then the
// two bytes of each word swapped.
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/geometry/shrink_mirror_internal.h"

namespace {
struct Isa {
  static constexpr int kBytes = 16;
  static __m128i Load(const std::uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void Store(std::uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static __m128i Reverse(__m128i v) {
    v = _mm_shuffle_epi32(v, 0x1B);
    v = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xB1), 0xB1);
    return _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
  }
};
}  // namespace

namespace mirel {
namespace geometry {
MirrorRowFn Sse2MirrorRow() { return ReverseRow<Isa>; }
}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
