// Block routines of the 8-bit filters with AVX-512 (F and BW).
#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "mirel/filter/convolution_blocks_internal.h"

namespace {

// The masked forms (all lanes on) keep GCC from warning about the
// undefined source operand inside the plain forms.
struct Isa {
  using V = __m512i;
  static constexpr int kBlock = 32;
  static V Zero() { return _mm512_setzero_si512(); }
  static V Load8(const std::uint8_t* p) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
  }
  static V LoadU16(const std::uint16_t* p) { return _mm512_loadu_si512(p); }
  static void StoreU16(std::uint16_t* p, V v) { _mm512_storeu_si512(p, v); }
  static V Add16(V a, V b) { return _mm512_add_epi16(a, b); }
  static V Mullo16(V a, short k) { return _mm512_mullo_epi16(a, _mm512_set1_epi16(k)); }
  static V MulHiU16(V a, unsigned short k) {
    return _mm512_mulhi_epu16(a, _mm512_set1_epi16(static_cast<short>(k)));
  }
  template <int N>
  static V Srli16(V a) { return _mm512_srli_epi16(a, N); }
  template <int N>
  static V Slli32(V a) { return _mm512_maskz_slli_epi32(0xFFFF, a, N); }
  static V Set1_32(std::int32_t v) { return _mm512_set1_epi32(v); }
  static V Add32(V a, V b) { return _mm512_add_epi32(a, b); }
  static V Madd(V a, V b) { return _mm512_madd_epi16(a, b); }
  static V UnpackLo16(V a, V b) { return _mm512_unpacklo_epi16(a, b); }
  static V UnpackHi16(V a, V b) { return _mm512_unpackhi_epi16(a, b); }
  static V Sra32(V a, int n) { return _mm512_maskz_sra_epi32(0xFFFF, a, _mm_cvtsi32_si128(n)); }
  static V Abs32(V a) { return _mm512_maskz_abs_epi32(0xFFFF, a); }
  static void StoreClamp(std::uint8_t* p, V lo, V hi) {
    const V w = _mm512_max_epi16(_mm512_packs_epi32(lo, hi), _mm512_setzero_si512());
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtusepi16_epi8(0xFFFFFFFFu, w));
  }
  static void StoreU8FromU16(std::uint8_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtepi16_epi8(0xFFFFFFFFu, v));
  }
  // lo holds pixels 0-3, 8-11, 16-19, 24-27 and hi the groups between.
  static void StoreSums(std::int32_t* p, V lo, V hi) {
    const V a = _mm512_maskz_shuffle_i64x2(0xFF, lo, hi, 0x44);  // lo0 lo1 hi0 hi1
    const V b = _mm512_maskz_shuffle_i64x2(0xFF, lo, hi, 0xEE);  // lo2 lo3 hi2 hi3
    _mm512_storeu_si512(p, _mm512_maskz_shuffle_i64x2(0xFF, a, a, 0xD8));       // lo0 hi0 lo1 hi1
    _mm512_storeu_si512(p + 16, _mm512_maskz_shuffle_i64x2(0xFF, b, b, 0xD8));  // lo2 hi2 lo3 hi3
  }
  // Doubles: eight pixels per vector.
  using VD = __m512d;
  static constexpr int kDoubles = 8;
  static VD ZeroD() { return _mm512_setzero_pd(); }
  static VD Set1D(double v) { return _mm512_set1_pd(v); }
  static VD AddD(VD a, VD b) { return _mm512_add_pd(a, b); }
  static VD MulD(VD a, VD b) { return _mm512_mul_pd(a, b); }
  static VD LoadBytesD(const std::uint8_t* p) {
    return _mm512_maskz_cvtepi32_pd(0xFF, _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
  }
  static void StoreTrunc(std::int32_t* p, VD v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvttpd_epi32(0xFF, v));
  }
  static VD LoadWordsD(const std::uint16_t* p) {
    return _mm512_maskz_cvtepi32_pd(0xFF, _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
  }

  // 16-bit pixels.
  static V LoadS16(const std::uint16_t* p) {
    return _mm512_xor_si512(_mm512_loadu_si512(p), _mm512_set1_epi16(-32768));
  }
  // The pack within 128-bit lanes puts the groups of lo and hi in order.
  static void StoreClamp16(std::uint16_t* p, V lo, V hi) { _mm512_storeu_si512(p, _mm512_packus_epi32(lo, hi)); }
  static V LoadW32(const std::uint16_t* p) {
    return _mm512_maskz_cvtepu16_epi32(0xFFFF, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
  }
  static V LoadU32(const std::uint32_t* p) { return _mm512_loadu_si512(p); }
  static void StoreU32(std::uint32_t* p, V v) { _mm512_storeu_si512(p, v); }
  static void StoreU16From32(std::uint16_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtepi32_epi16(0xFFFF, v));
  }
  template <int N>
  static V Srli32(V a) { return _mm512_maskz_srli_epi32(0xFFFF, a, N); }
  static V MulLo32(V a, std::int32_t k) { return _mm512_mullo_epi32(a, _mm512_set1_epi32(k)); }
  template <int K>
  static V MulK32(V a) { return MulLo32(a, K); }
};

}  // namespace

namespace mirel {
namespace filter {
SimdRoutines Avx512Routines() { return blocks::Routines<Isa>(); }
}  // namespace filter
}  // namespace mirel
