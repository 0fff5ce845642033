// Block routines of the preset 3x3 filters with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/filter/preset_blocks_internal.h"

namespace {

struct Isa {
  using V = __m128i;
  static constexpr int kLanes = 8;
  static V Load(const std::uint8_t* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
  }
  static void Store(std::uint8_t* p, V v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
  }
  static V Add(V a, V b) { return _mm_add_epi16(a, b); }
  static V Sub(V a, V b) { return _mm_sub_epi16(a, b); }
  static V Abs(V a) { return _mm_max_epi16(a, _mm_sub_epi16(_mm_setzero_si128(), a)); }
  static V Cap(V a) { return _mm_min_epi16(a, _mm_set1_epi16(255)); }
  static V Max0(V a) { return _mm_max_epi16(a, _mm_setzero_si128()); }
  static V Min(V a, V b) { return _mm_min_epi16(a, b); }
  static V Max(V a, V b) { return _mm_max_epi16(a, b); }
  template <int N>
  static V Srl(V a) { return _mm_srli_epi16(a, N); }
  template <int K>
  static V Mul(V a) { return _mm_mullo_epi16(a, _mm_set1_epi16(K)); }
};

}  // namespace

namespace mirel {
namespace filter {
PresetRowFn PresetRowSse2() { return &presets::Row<Isa>; }
}  // namespace filter
}  // namespace mirel

#endif  // MIREL_X86_SIMD
