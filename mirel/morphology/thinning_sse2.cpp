// Row routines of thinning, thickening and the distance map with SSE2 (the
// x86-64 baseline): 128 pixels of a bit row a vector.
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include <cstdint>

#include "mirel/morphology/thinning_blocks_internal.h"

namespace {

struct Isa {
  using V = __m128i;
  static constexpr int kBytes = 16;
  static V Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
  static void Store(void* p, V v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
  static V Zero() { return _mm_setzero_si128(); }
  static V Ones() { return _mm_set1_epi8(-1); }
  static V IsZero(V v) { return _mm_cmpeq_epi8(v, _mm_setzero_si128()); }
  static V And(V a, V b) { return _mm_and_si128(a, b); }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V Xor(V a, V b) { return _mm_xor_si128(a, b); }
  static V AndNot(V a, V b) { return _mm_andnot_si128(a, b); }
  static bool Any(V v) { return _mm_movemask_epi8(IsZero(v)) != 0xFFFF; }
  static V Min(V a, V b) { return _mm_min_epu8(a, b); }
  static V Adds(V a, V b) { return _mm_adds_epu8(a, b); }
  static V Set1(std::uint8_t v) { return _mm_set1_epi8(static_cast<char>(v)); }
  static V LoadNarrow(const std::uint16_t* p) { return _mm_packus_epi16(Load(p), Load(p + 8)); }
  static void StoreWiden(std::uint16_t* p, V v) {
    Store(p, _mm_unpacklo_epi8(v, _mm_setzero_si128()));
    Store(p + 8, _mm_unpackhi_epi8(v, _mm_setzero_si128()));
  }
  template <int k>
  static V ShiftDown(V v) { return _mm_or_si128(_mm_srli_si128(v, k), _mm_slli_si128(Ones(), 16 - k)); }
  static V Broadcast0(V v) {
    v = _mm_unpacklo_epi8(v, v);
    return _mm_shuffle_epi32(_mm_shufflelo_epi16(v, 0), 0);
  }
};

}  // namespace

namespace mirel {
namespace thinning {
const Routines& Sse2Routines() {
  static const Routines r = blocks::MakeRoutines<Isa, bits::Lanes128>();
  return r;
}
}  // namespace thinning
}  // namespace mirel

#endif  // MIREL_X86_SIMD
