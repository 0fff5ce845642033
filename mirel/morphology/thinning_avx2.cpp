// Row routines of thinning, thickening and the distance map with AVX2.
#include <immintrin.h>

#include <cstdint>

#include "mirel/morphology/thinning_blocks_internal.h"

namespace {

struct Isa {
  using V = __m256i;
  static constexpr int kBytes = 32;
  static V Load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
  static void Store(void* p, V v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }
  static V Zero() { return _mm256_setzero_si256(); }
  static V Ones() { return _mm256_set1_epi8(-1); }
  static V IsZero(V v) { return _mm256_cmpeq_epi8(v, _mm256_setzero_si256()); }
  static V And(V a, V b) { return _mm256_and_si256(a, b); }
  static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  static V Xor(V a, V b) { return _mm256_xor_si256(a, b); }
  static V AndNot(V a, V b) { return _mm256_andnot_si256(a, b); }
  static bool Any(V v) { return _mm256_testz_si256(v, v) == 0; }
  static V Min(V a, V b) { return _mm256_min_epu8(a, b); }
  static V Adds(V a, V b) { return _mm256_adds_epu8(a, b); }
  static V Set1(std::uint8_t v) { return _mm256_set1_epi8(static_cast<char>(v)); }
  // The pack works within 128-bit halves; the permute puts the quarters in order.
  static V LoadNarrow(const std::uint16_t* p) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(Load(p), Load(p + 16)), 0xD8);
  }
  static void StoreWiden(std::uint16_t* p, V v) {
    Store(p, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(v)));
    Store(p + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(v, 1)));
  }
  // The upper half followed by ones, then a byte shift across both halves.
  template <int k>
  static V ShiftDown(V v) {
    const V next = _mm256_permute2x128_si256(v, Ones(), 0x21);
    if constexpr (k == 16) return next;
    else return _mm256_alignr_epi8(next, v, k);
  }
  static V Broadcast0(V v) { return _mm256_broadcastb_epi8(_mm256_castsi256_si128(v)); }
};

}  // namespace

namespace mirel {
namespace thinning {
const Routines& Avx2Routines() {
  static const Routines r = blocks::MakeRoutines<Isa, bits::Lanes256>();
  return r;
}
}  // namespace thinning
}  // namespace mirel
