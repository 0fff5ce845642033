// AVX2 block routines of the byte workers: 32 bytes a vector.
#include <immintrin.h>

#include "mirel/point/arith_simd_internal.h"

namespace mirel {
namespace arith {
namespace {

struct V256 {
  using T = __m256i;
  static constexpr std::size_t kBytes = 32;
  static T Load(const u8* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void Store(u8* p, T v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static T Set1(u8 c) { return _mm256_set1_epi8(static_cast<char>(c)); }
  static T Set1W(unsigned short c) { return _mm256_set1_epi16(static_cast<short>(c)); }
  static T Zero() { return _mm256_setzero_si256(); }
  static T Ones() { return _mm256_set1_epi32(-1); }
  static T AddS(T a, T b) { return _mm256_adds_epu8(a, b); }
  static T SubS(T a, T b) { return _mm256_subs_epu8(a, b); }
  static T And(T a, T b) { return _mm256_and_si256(a, b); }
  static T Or(T a, T b) { return _mm256_or_si256(a, b); }
  static T Xor(T a, T b) { return _mm256_xor_si256(a, b); }
  static T AndNot(T a, T b) { return _mm256_andnot_si256(a, b); }
  static T CmpEq(T a, T b) { return _mm256_cmpeq_epi8(a, b); }
  static T Min(T a, T b) { return _mm256_min_epu8(a, b); }
  static T Max(T a, T b) { return _mm256_max_epu8(a, b); }
  // Widening and packing work within 128-bit lanes; packing the two halves
  // widened this way restores the original byte order.
  static T WidenLo(T a) { return _mm256_unpacklo_epi8(a, _mm256_setzero_si256()); }
  static T WidenHi(T a) { return _mm256_unpackhi_epi8(a, _mm256_setzero_si256()); }
  static T MulW(T a, T b) { return _mm256_mullo_epi16(a, b); }
  static T AddSW(T a, T b) { return _mm256_adds_epu16(a, b); }
  static T SubSW(T a, T b) { return _mm256_subs_epu16(a, b); }
  template <int N>
  static T SrlW(T a) { return _mm256_srli_epi16(a, N); }
  static T Pack(T lo, T hi) { return _mm256_packus_epi16(lo, hi); }
};

}  // namespace

BlockRun PickAvx2(int op, int form) { return Pick<V256>(op, form); }

}  // namespace arith
}  // namespace mirel
