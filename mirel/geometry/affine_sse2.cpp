// The 8-bit affine row with SSE2 (the x86-64 baseline). SSE2 has neither a
// gather nor a 32-bit low multiply: the gather reads the four lanes one by
// one, and the multiply is made of two 32x32->64 products.
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "mirel/geometry/affine_blocks_internal.h"

namespace {

struct Isa {
  using V = __m128i;
  static constexpr int kLanes = 4;
  static V Set1(std::int32_t v) { return _mm_set1_epi32(v); }
  static V Lanes(std::uint32_t step) {
    return _mm_setr_epi32(0, static_cast<std::int32_t>(step), static_cast<std::int32_t>(2 * step),
                          static_cast<std::int32_t>(3 * step));
  }
  static V Add(V a, V b) { return _mm_add_epi32(a, b); }
  static V Sub(V a, V b) { return _mm_sub_epi32(a, b); }
  static V And(V a, V b) { return _mm_and_si128(a, b); }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V MulLo(V a, V b) {
    const V even = _mm_mul_epu32(a, b);
    const V odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08));
  }
  template <int K>
  static V Srai(V a) { return _mm_srai_epi32(a, K); }
  template <int K>
  static V Srli(V a) { return _mm_srli_epi32(a, K); }
  template <int K>
  static V Slli(V a) { return _mm_slli_epi32(a, K); }
  static V Madd16(V a, V b) { return _mm_madd_epi16(a, b); }
  static bool AllWithin(V v, std::int32_t lo, std::int32_t hi) {
    const V in = _mm_and_si128(_mm_cmpgt_epi32(v, _mm_set1_epi32(lo - 1)), _mm_cmpgt_epi32(_mm_set1_epi32(hi), v));
    return _mm_movemask_epi8(in) == 0xFFFF;
  }
  static V Gather(const std::uint8_t* base, V idx) {
    alignas(16) std::int32_t at[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(at), idx);
    std::int32_t v[4];
    for (int k = 0; k < 4; ++k) std::memcpy(&v[k], base + at[k], 4);
    return _mm_setr_epi32(v[0], v[1], v[2], v[3]);
  }
  static constexpr int kLanes16 = 8;
  static V Widen(const std::uint8_t* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
  }
  static void EvenOdd(const std::uint8_t* p, V& even, V& odd) {
    const V v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    even = _mm_and_si128(v, _mm_set1_epi16(0xff));
    odd = _mm_srli_epi16(v, 8);
  }
  static V Set16(std::int16_t v) { return _mm_set1_epi16(v); }
  static V Add16(V a, V b) { return _mm_add_epi16(a, b); }
  static V Sub16(V a, V b) { return _mm_sub_epi16(a, b); }
  static V Mullo16(V a, V b) { return _mm_mullo_epi16(a, b); }
  static V MulhiU16(V a, V b) { return _mm_mulhi_epu16(a, b); }
  template <int K>
  static V Srli16(V a) { return _mm_srli_epi16(a, K); }
  static V Carry16(V sum, V part) {
    const V bias = _mm_set1_epi16(static_cast<short>(0x8000));
    return _mm_cmplt_epi16(_mm_xor_si128(sum, bias), _mm_xor_si128(part, bias));
  }
  static V LoadU16Lanes(const std::uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void StoreU16Lanes(std::uint16_t* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static void StoreBytes16(std::uint8_t* p, V v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
  }
  static void StoreBytes(std::uint8_t* out, V v) {
    const V w = _mm_packs_epi32(v, v);
    const std::int32_t four = _mm_cvtsi128_si32(_mm_packus_epi16(w, w));
    std::memcpy(out, &four, 4);
  }
};

}  // namespace

namespace mirel {
namespace geometry {
AffineRoutines Sse2AffineRoutines() { return AffineRoutines{blocks::Row<Isa>, nullptr, nullptr, blocks::StepSums<Isa>, blocks::VerticalBlend<Isa>,
                        blocks::Halves<Isa>}; }
}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
