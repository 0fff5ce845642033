// Byte-row reversal with AVX2: a byte shuffle inside each half, then the
// halves swapped.
#include <immintrin.h>

#include "mirel/geometry/shrink_mirror_internal.h"

namespace {
struct Isa {
  static constexpr int kBytes = 32;
  static __m256i Load(const std::uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void Store(std::uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static __m256i Reverse(__m256i v) {
    const __m256i m = _mm256_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11,
                                       10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    v = _mm256_shuffle_epi8(v, m);
    return _mm256_permute2x128_si256(v, v, 1);
  }
};
}  // namespace

namespace mirel {
namespace geometry {
MirrorRowFn Avx2MirrorRow() { return ReverseRow<Isa>; }
}  // namespace geometry
}  // namespace mirel
