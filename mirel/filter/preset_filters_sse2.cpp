// Block routines of the preset 3x3 filters with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include "mirel/filter/preset_blocks_internal.h"
#include "mirel/filter/sse2_lanes_internal.h"

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

// 16-bit pixels in 32-bit lanes.
struct Isa16 {
  using V = __m128i;
  static constexpr int kLanes = 4;
  static V Load(const std::uint16_t* p) {
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
  }
  // The low 16 bits of each lane, sign-extended so that the signed pack
  // keeps them as they are.
  static void Store(std::uint16_t* p, V v) {
    v = _mm_srai_epi32(_mm_slli_epi32(v, 16), 16);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(v, v));
  }
  static V Add(V a, V b) { return _mm_add_epi32(a, b); }
  static V Sub(V a, V b) { return _mm_sub_epi32(a, b); }
  static V Abs(V a) { return mirel::filter::sse2::Abs32(a); }
  static V Min(V a, V b) { return mirel::filter::sse2::Min32(a, b); }
  static V Max(V a, V b) { return mirel::filter::sse2::Max32(a, b); }
  static V Cap(V a) { return Min(a, _mm_set1_epi32(65535)); }
  static V Max0(V a) { return mirel::filter::sse2::Max0(a); }
  template <int N>
  static V Srl(V a) { return _mm_srli_epi32(a, N); }
  template <int K>
  static V Mul(V a) { return mirel::filter::sse2::MulK32<K>(a); }
};

}  // namespace

namespace mirel {
namespace filter {
PresetRowFn PresetRowSse2() { return &presets::Row<Isa>; }
PresetRow16Fn PresetRow16Sse2() { return &presets::Row16<Isa16>; }
}  // namespace filter
}  // namespace mirel

#endif  // MIREL_X86_SIMD
