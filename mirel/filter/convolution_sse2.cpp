// Block routines of the 8-bit filters with SSE2 (the x86-64 baseline).
#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "mirel/filter/convolution_blocks_internal.h"
#include "mirel/filter/sse2_lanes_internal.h"

namespace {

struct Isa {
  using V = __m128i;
  static constexpr int kBlock = 8;
  static V Zero() { return _mm_setzero_si128(); }
  static V Load8(const std::uint8_t* p) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
  }
  static V LoadU16(const std::uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void StoreU16(std::uint16_t* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V Add16(V a, V b) { return _mm_add_epi16(a, b); }
  static V Mullo16(V a, short k) { return _mm_mullo_epi16(a, _mm_set1_epi16(k)); }
  static V MulHiU16(V a, unsigned short k) {
    return _mm_mulhi_epu16(a, _mm_set1_epi16(static_cast<short>(k)));
  }
  template <int N>
  static V Srli16(V a) { return _mm_srli_epi16(a, N); }
  template <int N>
  static V Slli32(V a) { return _mm_slli_epi32(a, N); }
  static V Set1_32(std::int32_t v) { return _mm_set1_epi32(v); }
  static V Add32(V a, V b) { return _mm_add_epi32(a, b); }
  static V Madd(V a, V b) { return _mm_madd_epi16(a, b); }
  static V UnpackLo16(V a, V b) { return _mm_unpacklo_epi16(a, b); }
  static V UnpackHi16(V a, V b) { return _mm_unpackhi_epi16(a, b); }
  static V Sra32(V a, int n) { return _mm_sra_epi32(a, _mm_cvtsi32_si128(n)); }
  static V Abs32(V a) {
    const V s = _mm_srai_epi32(a, 31);
    return _mm_sub_epi32(_mm_xor_si128(a, s), s);
  }
  static void StoreClamp(std::uint8_t* p, V lo, V hi) {
    const V w = _mm_packs_epi32(lo, hi);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(w, w));
  }
  static void StoreU8FromU16(std::uint8_t* p, V v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v));
  }
  static void StoreSums(std::int32_t* p, V lo, V hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), lo);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), hi);
  }
  // Doubles: two pixels per vector.
  using VD = __m128d;
  static constexpr int kDoubles = 2;
  static VD ZeroD() { return _mm_setzero_pd(); }
  static VD Set1D(double v) { return _mm_set1_pd(v); }
  static VD AddD(VD a, VD b) { return _mm_add_pd(a, b); }
  static VD MulD(VD a, VD b) { return _mm_mul_pd(a, b); }
  static VD LoadBytesD(const std::uint8_t* p) {
    std::uint16_t two;
    std::memcpy(&two, p, 2);
    const __m128i b = _mm_cvtsi32_si128(two);
    const __m128i z = _mm_setzero_si128();
    return _mm_cvtepi32_pd(_mm_unpacklo_epi16(_mm_unpacklo_epi8(b, z), z));
  }
  static void StoreTrunc(std::int32_t* p, VD v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_cvttpd_epi32(v));
  }
  static VD LoadWordsD(const std::uint16_t* p) {
    std::int32_t two;
    std::memcpy(&two, p, 4);
    return _mm_cvtepi32_pd(_mm_unpacklo_epi16(_mm_cvtsi32_si128(two), _mm_setzero_si128()));
  }

  // 16-bit pixels.
  static V LoadS16(const std::uint16_t* p) {
    return _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), _mm_set1_epi16(-32768));
  }
  // Values of 0 to 65535 less 32768 fit the signed pack; the sign bit
  // flipped back gives the unsigned words.
  static V PackBiased(V lo, V hi) {
    const V bias = _mm_set1_epi32(32768);
    return _mm_xor_si128(_mm_packs_epi32(_mm_sub_epi32(lo, bias), _mm_sub_epi32(hi, bias)),
                         _mm_set1_epi16(-32768));
  }
  // Negative sums become 0 first; the pack saturates the rest at 65535.
  static void StoreClamp16(std::uint16_t* p, V lo, V hi) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p),
                     PackBiased(mirel::filter::sse2::Max0(lo), mirel::filter::sse2::Max0(hi)));
  }
  static V LoadW32(const std::uint16_t* p) {
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
  }
  static V LoadU32(const std::uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void StoreU32(std::uint32_t* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static void StoreU16From32(std::uint16_t* p, V v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), PackBiased(v, v));
  }
  template <int N>
  static V Srli32(V a) { return _mm_srli_epi32(a, N); }
  // The low 32 bits of each product, from the even and the odd lanes.
  static V MulLo32(V a, std::int32_t k) {
    const V kk = _mm_set1_epi32(k);
    const V even = _mm_mul_epu32(a, kk), odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), kk);
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08));
  }
  template <int K>
  static V MulK32(V a) { return mirel::filter::sse2::MulK32<K>(a); }
};

}  // namespace

namespace mirel {
namespace filter {
SimdRoutines Sse2Routines() { return blocks::Routines<Isa>(); }
}  // namespace filter
}  // namespace mirel

#endif  // MIREL_X86_SIMD
