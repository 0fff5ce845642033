// Byte-row reversal with AVX-512 (BW): a byte shuffle inside each quarter,
// then the quarters put in reverse order. The masked forms (all lanes on)
// keep GCC from warning about the undefined source of the plain forms.
#include <immintrin.h>

#include "mirel/geometry/shrink_mirror_internal.h"

namespace {
struct Isa {
  static constexpr int kBytes = 64;
  static __m512i Load(const std::uint8_t* p) { return _mm512_loadu_si512(p); }
  static void Store(std::uint8_t* p, __m512i v) { _mm512_storeu_si512(p, v); }
  static __m512i Reverse(__m512i v) {
    const long long lo = 0x08090A0B0C0D0E0FLL, hi = 0x0001020304050607LL;
    v = _mm512_shuffle_epi8(v, _mm512_set_epi64(hi, lo, hi, lo, hi, lo, hi, lo));
    return _mm512_maskz_permutexvar_epi64(0xFF, _mm512_set_epi64(1, 0, 3, 2, 5, 4, 7, 6), v);
  }
};
}  // namespace

namespace mirel {
namespace geometry {
MirrorRowFn Avx512MirrorRow() { return ReverseRow<Isa>; }
}  // namespace geometry
}  // namespace mirel
