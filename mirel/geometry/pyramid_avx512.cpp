// Halving blocks with AVX-512 (F and BW).
#if defined(MIREL_X86_SIMD)
#include <immintrin.h>

#include "mirel/geometry/pyramid_blocks_internal.h"

namespace mirel {
namespace geometry {
namespace {

// The masked forms (all lanes on) keep GCC from warning about the undefined
// source operand inside the plain forms.
struct Avx512 {
  using V = __m512i;
  static constexpr int kBytes = 64;
  static V Load(const void* p) { return _mm512_loadu_si512(p); }
  static void Store(void* p, V v) { _mm512_storeu_si512(p, v); }
  static void Stream(void* p, V v) { _mm512_stream_si512(static_cast<__m512i*>(p), v); }
  static void Fence() { _mm_sfence(); }
  static V Set16(int v) { return _mm512_set1_epi16(static_cast<short>(v)); }
  static V Set32(int v) { return _mm512_set1_epi32(v); }
  static V And(V a, V b) { return _mm512_and_si512(a, b); }
  static V Or(V a, V b) { return _mm512_or_si512(a, b); }
  static V Add16(V a, V b) { return _mm512_add_epi16(a, b); }
  static V Add32(V a, V b) { return _mm512_add_epi32(a, b); }
  static V Srli16(V a, int n) { return _mm512_maskz_srli_epi16(0xFFFFFFFFu, a, static_cast<unsigned>(n)); }
  static V Slli32(V a, int n) { return _mm512_maskz_slli_epi32(0xFFFF, a, static_cast<unsigned>(n)); }
  static V Srai32(V a, int n) { return _mm512_maskz_srai_epi32(0xFFFF, a, static_cast<unsigned>(n)); }
  static V MinU8(V a, V b) { return _mm512_min_epu8(a, b); }
  static V MaxU8(V a, V b) { return _mm512_max_epu8(a, b); }
  // The pack works within 128-bit lanes; the permute restores the order.
  static V PackU16(V a, V b) {
    return _mm512_maskz_permutexvar_epi64(0xFF, _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), _mm512_packus_epi16(a, b));
  }
  static V PairSums32(V a, V b) {
    const V even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const V odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return _mm512_add_epi32(_mm512_permutex2var_epi32(a, even, b), _mm512_permutex2var_epi32(a, odd, b));
  }
};

}  // namespace

HalveRoutines HalveAvx512() { return Routines<Avx512>(); }

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_X86_SIMD
