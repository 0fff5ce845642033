// Block routines of the preset 3x3 filters with AVX2.
#include <immintrin.h>

#include "mirel/filter/preset_blocks_internal.h"

namespace {

struct Isa {
  using V = __m256i;
  static constexpr int kLanes = 16;
  static V Load(const std::uint8_t* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  }
  // Words of each 128-bit lane pack to bytes; the two lanes' low quarters
  // are then joined.
  static void Store(std::uint8_t* p, V v) {
    const V b = _mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(b));
  }
  static V Add(V a, V b) { return _mm256_add_epi16(a, b); }
  static V Sub(V a, V b) { return _mm256_sub_epi16(a, b); }
  static V Abs(V a) { return _mm256_abs_epi16(a); }
  static V Cap(V a) { return _mm256_min_epi16(a, _mm256_set1_epi16(255)); }
  static V Max0(V a) { return _mm256_max_epi16(a, _mm256_setzero_si256()); }
  static V Min(V a, V b) { return _mm256_min_epi16(a, b); }
  static V Max(V a, V b) { return _mm256_max_epi16(a, b); }
  template <int N>
  static V Srl(V a) { return _mm256_srli_epi16(a, N); }
  template <int K>
  static V Mul(V a) { return _mm256_mullo_epi16(a, _mm256_set1_epi16(K)); }
};

// 16-bit pixels in 32-bit lanes.
struct Isa16 {
  using V = __m256i;
  static constexpr int kLanes = 8;
  static V Load(const std::uint16_t* p) {
    return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  }
  // The low 16 bits of each lane; the pack works within 128-bit lanes, so
  // the two quarters that hold the words are joined after it.
  static void Store(std::uint16_t* p, V v) {
    v = _mm256_and_si256(v, _mm256_set1_epi32(0xFFFF));
    const V w = _mm256_permute4x64_epi64(_mm256_packus_epi32(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(w));
  }
  static V Add(V a, V b) { return _mm256_add_epi32(a, b); }
  static V Sub(V a, V b) { return _mm256_sub_epi32(a, b); }
  static V Abs(V a) { return _mm256_abs_epi32(a); }
  static V Cap(V a) { return _mm256_min_epi32(a, _mm256_set1_epi32(65535)); }
  static V Max0(V a) { return _mm256_max_epi32(a, _mm256_setzero_si256()); }
  static V Min(V a, V b) { return _mm256_min_epi32(a, b); }
  static V Max(V a, V b) { return _mm256_max_epi32(a, b); }
  template <int N>
  static V Srl(V a) { return _mm256_srli_epi32(a, N); }
  template <int K>
  static V Mul(V a) { return _mm256_mullo_epi32(a, _mm256_set1_epi32(K)); }
};

}  // namespace

namespace mirel {
namespace filter {
PresetRowFn PresetRowAvx2() { return &presets::Row<Isa>; }
PresetRow16Fn PresetRow16Avx2() { return &presets::Row16<Isa16>; }
}  // namespace filter
}  // namespace mirel
