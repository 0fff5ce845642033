// Block routines of the 8-bit filters with AVX2.
#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "mirel/filter/convolution_blocks_internal.h"

namespace {

struct Isa {
  using V = __m256i;
  static constexpr int kBlock = 16;
  static V Zero() { return _mm256_setzero_si256(); }
  static V Load8(const std::uint8_t* p) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  }
  static V LoadU16(const std::uint16_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void StoreU16(std::uint16_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static V Add16(V a, V b) { return _mm256_add_epi16(a, b); }
  static V Mullo16(V a, short k) { return _mm256_mullo_epi16(a, _mm256_set1_epi16(k)); }
  static V MulHiU16(V a, unsigned short k) {
    return _mm256_mulhi_epu16(a, _mm256_set1_epi16(static_cast<short>(k)));
  }
  template <int N>
  static V Srli16(V a) { return _mm256_srli_epi16(a, N); }
  template <int N>
  static V Slli32(V a) { return _mm256_slli_epi32(a, N); }
  static V Set1_32(std::int32_t v) { return _mm256_set1_epi32(v); }
  static V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
  static V Madd(V a, V b) { return _mm256_madd_epi16(a, b); }
  static V UnpackLo16(V a, V b) { return _mm256_unpacklo_epi16(a, b); }
  static V UnpackHi16(V a, V b) { return _mm256_unpackhi_epi16(a, b); }
  static V Sra32(V a, int n) { return _mm256_sra_epi32(a, _mm_cvtsi32_si128(n)); }
  static V Abs32(V a) { return _mm256_abs_epi32(a); }
  // Words of each 128-bit lane pack to bytes; the two lanes' low quarters
  // are then joined.
  static void StoreClamp(std::uint8_t* p, V lo, V hi) {
    StoreU8FromU16(p, _mm256_packs_epi32(lo, hi));
  }
  static void StoreU8FromU16(std::uint8_t* p, V v) {
    const V b = _mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(b));
  }
  // lo holds pixels 0-3 and 8-11, hi 4-7 and 12-15.
  static void StoreSums(std::int32_t* p, V lo, V hi) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(lo, hi, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 8), _mm256_permute2x128_si256(lo, hi, 0x31));
  }
  // Doubles: four pixels per vector.
  using VD = __m256d;
  static constexpr int kDoubles = 4;
  static VD ZeroD() { return _mm256_setzero_pd(); }
  static VD Set1D(double v) { return _mm256_set1_pd(v); }
  static VD AddD(VD a, VD b) { return _mm256_add_pd(a, b); }
  static VD MulD(VD a, VD b) { return _mm256_mul_pd(a, b); }
  static VD LoadBytesD(const std::uint8_t* p) {
    std::int32_t four;
    std::memcpy(&four, p, 4);
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(four)));
  }
  static void StoreTrunc(std::int32_t* p, VD v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_cvttpd_epi32(v));
  }
  static VD LoadWordsD(const std::uint16_t* p) {
    return _mm256_cvtepi32_pd(_mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
  }

  // 16-bit pixels.
  static V LoadS16(const std::uint16_t* p) {
    return _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)),
                            _mm256_set1_epi16(-32768));
  }
  // lo and hi hold pixels 0-3 and 8-11, 4-7 and 12-15: the pack within
  // 128-bit lanes puts them in order.
  static void StoreClamp16(std::uint16_t* p, V lo, V hi) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_packus_epi32(lo, hi));
  }
  static V LoadW32(const std::uint16_t* p) {
    return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  }
  static V LoadU32(const std::uint32_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void StoreU32(std::uint32_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static void StoreU16From32(std::uint16_t* p, V v) {
    const V w = _mm256_permute4x64_epi64(_mm256_packus_epi32(v, v), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(w));
  }
  template <int N>
  static V Srli32(V a) { return _mm256_srli_epi32(a, N); }
  static V MulLo32(V a, std::int32_t k) { return _mm256_mullo_epi32(a, _mm256_set1_epi32(k)); }
  template <int K>
  static V MulK32(V a) { return MulLo32(a, K); }
};

}  // namespace

namespace mirel {
namespace filter {
SimdRoutines Avx2Routines() { return blocks::Routines<Isa>(); }
}  // namespace filter
}  // namespace mirel
