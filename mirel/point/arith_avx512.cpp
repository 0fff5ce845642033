// AVX-512BW block routines of the byte workers: 64 bytes a vector.
#include <immintrin.h>

#include "mirel/point/arith_simd_internal.h"

namespace mirel {
namespace arith {
namespace {

struct V512 {
  using T = __m512i;
  static constexpr std::size_t kBytes = 64;
  static T Load(const u8* p) { return _mm512_loadu_si512(p); }
  static void Store(u8* p, T v) { _mm512_storeu_si512(p, v); }
  static T Set1(u8 c) { return _mm512_set1_epi8(static_cast<char>(c)); }
  static T Set1W(unsigned short c) { return _mm512_set1_epi16(static_cast<short>(c)); }
  static T Zero() { return _mm512_setzero_si512(); }
  static T Ones() { return _mm512_set1_epi32(-1); }
  static T AddS(T a, T b) { return _mm512_adds_epu8(a, b); }
  static T SubS(T a, T b) { return _mm512_subs_epu8(a, b); }
  static T And(T a, T b) { return _mm512_and_si512(a, b); }
  static T Or(T a, T b) { return _mm512_or_si512(a, b); }
  static T Xor(T a, T b) { return _mm512_xor_si512(a, b); }
  // ~a & b as a ternary logic function (truth table 0x0C): the andnot
  // intrinsic trips a false uninitialised-value warning in some compilers.
  static T AndNot(T a, T b) { return _mm512_ternarylogic_epi32(a, b, b, 0x0C); }
  static T CmpEq(T a, T b) { return _mm512_movm_epi8(_mm512_cmpeq_epi8_mask(a, b)); }
  static T Min(T a, T b) { return _mm512_min_epu8(a, b); }
  static T Max(T a, T b) { return _mm512_max_epu8(a, b); }
  // In-lane widening and packing, as with AVX2.
  static T WidenLo(T a) { return _mm512_unpacklo_epi8(a, _mm512_setzero_si512()); }
  static T WidenHi(T a) { return _mm512_unpackhi_epi8(a, _mm512_setzero_si512()); }
  static T MulW(T a, T b) { return _mm512_mullo_epi16(a, b); }
  static T AddSW(T a, T b) { return _mm512_adds_epu16(a, b); }
  static T SubSW(T a, T b) { return _mm512_subs_epu16(a, b); }
  template <int N>
  static T SrlW(T a) { return _mm512_srli_epi16(a, N); }
  static T Pack(T lo, T hi) { return _mm512_packus_epi16(lo, hi); }
};

}  // namespace

BlockRun PickAvx512(int op, int form) { return Pick<V512>(op, form); }

}  // namespace arith
}  // namespace mirel
