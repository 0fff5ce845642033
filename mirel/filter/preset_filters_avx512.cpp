// Block routines of the preset 3x3 filters with AVX-512 (F and BW).
#include <immintrin.h>

#include "mirel/filter/preset_blocks_internal.h"

namespace {

struct Isa {
  using V = __m512i;
  static constexpr int kLanes = 32;
  static V Load(const std::uint8_t* p) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
  }
  // Lanes are never negative: the unsigned narrowing saturates at 255.
  static void Store(std::uint8_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtusepi16_epi8(0xFFFFFFFFu, v));
  }
  static V Add(V a, V b) { return _mm512_add_epi16(a, b); }
  static V Sub(V a, V b) { return _mm512_sub_epi16(a, b); }
  static V Abs(V a) { return _mm512_maskz_abs_epi16(0xFFFFFFFFu, a); }
  static V Cap(V a) { return _mm512_min_epi16(a, _mm512_set1_epi16(255)); }
  static V Max0(V a) { return _mm512_max_epi16(a, _mm512_setzero_si512()); }
  static V Min(V a, V b) { return _mm512_min_epi16(a, b); }
  static V Max(V a, V b) { return _mm512_max_epi16(a, b); }
  template <int N>
  static V Srl(V a) { return _mm512_srli_epi16(a, N); }
  template <int K>
  static V Mul(V a) { return _mm512_mullo_epi16(a, _mm512_set1_epi16(K)); }
};

// 16-bit pixels in 32-bit lanes; the masked forms, all lanes on, as above.
struct Isa16 {
  using V = __m512i;
  static constexpr int kLanes = 16;
  static V Load(const std::uint16_t* p) {
    return _mm512_maskz_cvtepu16_epi32(0xFFFF, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
  }
  // The narrowing keeps the low 16 bits of each lane.
  static void Store(std::uint16_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtepi32_epi16(0xFFFF, v));
  }
  static V Add(V a, V b) { return _mm512_add_epi32(a, b); }
  static V Sub(V a, V b) { return _mm512_sub_epi32(a, b); }
  static V Abs(V a) { return _mm512_maskz_abs_epi32(0xFFFF, a); }
  static V Cap(V a) { return _mm512_maskz_min_epi32(0xFFFF, a, _mm512_set1_epi32(65535)); }
  static V Max0(V a) { return _mm512_maskz_max_epi32(0xFFFF, a, _mm512_setzero_si512()); }
  static V Min(V a, V b) { return _mm512_maskz_min_epi32(0xFFFF, a, b); }
  static V Max(V a, V b) { return _mm512_maskz_max_epi32(0xFFFF, a, b); }
  template <int N>
  static V Srl(V a) { return _mm512_maskz_srli_epi32(0xFFFF, a, N); }
  template <int K>
  static V Mul(V a) { return _mm512_mullo_epi32(a, _mm512_set1_epi32(K)); }
};

}  // namespace

namespace mirel {
namespace filter {
PresetRowFn PresetRowAvx512() { return &presets::Row<Isa>; }
PresetRow16Fn PresetRow16Avx512() { return &presets::Row16<Isa16>; }
}  // namespace filter
}  // namespace mirel
