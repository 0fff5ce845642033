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
  static void StoreBytes(std::uint8_t* out, V v) {
    const __m128i w = _mm_packs_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(w, w));
  }
};

}  // namespace

namespace mirel {
namespace geometry {
AffineRowFn Avx2AffineRow() { return blocks::Row<Isa>; }
}  // namespace geometry
}  // namespace mirel
