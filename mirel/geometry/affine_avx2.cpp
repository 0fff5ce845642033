// The 8-bit affine row with AVX2: eight pixels a block, read by gathers.
#include <immintrin.h>

#include <cstdint>

#include "mirel/geometry/affine_blocks_internal.h"

namespace {

struct Isa {
  using V = __m256i;
  static constexpr int kLanes = 8;
  static V Set1(std::int32_t v) { return _mm256_set1_epi32(v); }
  static V Lanes(std::uint32_t step) {
    return _mm256_mullo_epi32(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7),
                              _mm256_set1_epi32(static_cast<std::int32_t>(step)));
  }
  static V Add(V a, V b) { return _mm256_add_epi32(a, b); }
  static V Sub(V a, V b) { return _mm256_sub_epi32(a, b); }
  static V And(V a, V b) { return _mm256_and_si256(a, b); }
  static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  static V MulLo(V a, V b) { return _mm256_mullo_epi32(a, b); }
  template <int K>
  static V Srai(V a) { return _mm256_srai_epi32(a, K); }
  template <int K>
  static V Srli(V a) { return _mm256_srli_epi32(a, K); }
  template <int K>
  static V Slli(V a) { return _mm256_slli_epi32(a, K); }
  static V Madd16(V a, V b) { return _mm256_madd_epi16(a, b); }
  static bool AllWithin(V v, std::int32_t lo, std::int32_t hi) {
    const V in = _mm256_and_si256(_mm256_cmpgt_epi32(v, _mm256_set1_epi32(lo - 1)),
                                  _mm256_cmpgt_epi32(_mm256_set1_epi32(hi), v));
    return _mm256_movemask_epi8(in) == -1;
  }
  static V Gather(const std::uint8_t* base, V idx) {
    return _mm256_i32gather_epi32(reinterpret_cast<const int*>(base), idx, 1);
  }
  static V Load(const std::int32_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void StoreU16(std::uint16_t* p, V v) {
    const __m256i w = _mm256_permute4x64_epi64(_mm256_packus_epi32(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(w));
  }
  static constexpr int kLanes16 = 16;
  static V Widen(const std::uint8_t* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  }
  static void EvenOdd(const std::uint8_t* p, V& even, V& odd) {
    const V v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    even = _mm256_and_si256(v, _mm256_set1_epi16(0xff));
    odd = _mm256_srli_epi16(v, 8);
  }
  static V Set16(std::int16_t v) { return _mm256_set1_epi16(v); }
  static V Add16(V a, V b) { return _mm256_add_epi16(a, b); }
  static V Sub16(V a, V b) { return _mm256_sub_epi16(a, b); }
  static V Mullo16(V a, V b) { return _mm256_mullo_epi16(a, b); }
  static V MulhiU16(V a, V b) { return _mm256_mulhi_epu16(a, b); }
  template <int K>
  static V Srli16(V a) { return _mm256_srli_epi16(a, K); }
  static V Carry16(V sum, V part) {  // sum < part: max(sum, part) is not sum
    return _mm256_xor_si256(_mm256_cmpeq_epi16(_mm256_max_epu16(sum, part), sum), _mm256_set1_epi16(-1));
  }
  static V LoadU16Lanes(const std::uint16_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void StoreU16Lanes(std::uint16_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static void StoreBytes16(std::uint8_t* p, V v) {
    const __m128i packed = _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), packed);
  }
  static void StoreBytes(std::uint8_t* out, V v) {
    const __m128i w = _mm_packs_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(w, w));
  }
};

}  // namespace

namespace mirel {
namespace geometry {
AffineRoutines Avx2AffineRoutines() {
  return AffineRoutines{blocks::Row<Isa>, blocks::HorizontalGather<Isa>, blocks::NearestGather<Isa>,
                        blocks::StepSums<Isa>, blocks::VerticalBlend<Isa>,
                        blocks::Halves<Isa>};
}
}  // namespace geometry
}  // namespace mirel
