// Row routines of thinning, thickening and the distance map with AVX-512
// (F and BW). The masked forms of the intrinsics stand where the plain ones
// would take an undefined source operand.
#include <immintrin.h>

#include <cstdint>

#include "mirel/morphology/thinning_blocks_internal.h"

namespace {

struct Isa {
  using V = __m512i;
  static constexpr int kBytes = 64;
  static V Load(const void* p) { return _mm512_loadu_si512(p); }
  static void Store(void* p, V v) { _mm512_storeu_si512(p, v); }
  static V Zero() { return _mm512_setzero_si512(); }
  static V Ones() { return _mm512_set1_epi32(-1); }
  static V IsZero(V v) { return _mm512_movm_epi8(_mm512_testn_epi8_mask(v, v)); }
  static V And(V a, V b) { return _mm512_and_si512(a, b); }
  static V Or(V a, V b) { return _mm512_or_si512(a, b); }
  static V Xor(V a, V b) { return _mm512_xor_si512(a, b); }
  static V AndNot(V a, V b) { return _mm512_maskz_andnot_epi32(0xFFFF, a, b); }
  static bool Any(V v) { return _mm512_test_epi8_mask(v, v) != 0; }
  static V Min(V a, V b) { return _mm512_min_epu8(a, b); }
  static V Adds(V a, V b) { return _mm512_adds_epu8(a, b); }
  static V Set1(std::uint8_t v) { return _mm512_set1_epi8(static_cast<char>(v)); }
  // Values below 256, so the truncating narrowing keeps them.
  static V LoadNarrow(const std::uint16_t* p) {
    const __m256i lo = _mm512_maskz_cvtepi16_epi8(0xFFFFFFFFu, Load(p));
    const __m256i hi = _mm512_maskz_cvtepi16_epi8(0xFFFFFFFFu, Load(p + 32));
    return _mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(lo), hi, 1);
  }
  static void StoreWiden(std::uint16_t* p, V v) {
    Store(p, _mm512_cvtepu8_epi16(_mm512_maskz_extracti64x4_epi64(0xF, v, 0)));
    Store(p + 32, _mm512_cvtepu8_epi16(_mm512_maskz_extracti64x4_epi64(0xF, v, 1)));
  }
  // Whole 16-byte quarters move by a dword alignment across the register;
  // the rest by a byte alignment of each quarter with the one above it.
  template <int k>
  static V ShiftDown(V v) {
    if constexpr (k == 32) {
      return _mm512_maskz_alignr_epi32(0xFFFF, Ones(), v, 8);
    } else {
      const V next = _mm512_maskz_alignr_epi32(0xFFFF, Ones(), v, 4);
      if constexpr (k == 16) return next;
      else return _mm512_alignr_epi8(next, v, k);
    }
  }
  static V Broadcast0(V v) { return _mm512_maskz_broadcastb_epi8(~0ULL, _mm512_maskz_extracti32x4_epi32(0xF, v, 0)); }
};

}  // namespace

namespace mirel {
namespace thinning {
const Routines& Avx512Routines() {
  static const Routines r = blocks::MakeRoutines<Isa, bits::Lanes512>();
  return r;
}
}  // namespace thinning
}  // namespace mirel
