// AVX2 row kernels of the 8-bit moments.
#include <immintrin.h>

#include "mirel/measure/moments_blocks_internal.h"

namespace mirel {
namespace measure {
namespace {

struct Isa {
  using V = __m256i;
  static constexpr int kBytes = 32;
  static V Zero() { return _mm256_setzero_si256(); }
  static V Set1_8(unsigned char v) { return _mm256_set1_epi8(static_cast<char>(v)); }
  static V Load(const unsigned char* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static V LoadM(const std::int16_t* p) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(p)); }
  static V And(V a, V b) { return _mm256_and_si256(a, b); }
  static V AtLeast(V p, V t) { return _mm256_cmpeq_epi8(_mm256_max_epu8(p, t), p); }
  static V UnpackLo(V a, V b) { return _mm256_unpacklo_epi8(a, b); }
  static V UnpackHi(V a, V b) { return _mm256_unpackhi_epi8(a, b); }
  static V Sad(V a, V b) { return _mm256_sad_epu8(a, b); }
  static V Madd(V a, V b) { return _mm256_madd_epi16(a, b); }
  static V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
  static V MulScalar32(V a, std::uint32_t s) { return _mm256_mullo_epi32(a, _mm256_set1_epi32(static_cast<int>(s))); }
  static std::uint32_t LaneSum32(V v) {
    alignas(32) std::uint32_t l[8];
    _mm256_store_si256(reinterpret_cast<__m256i*>(l), v);
    std::uint32_t s = 0;
    for (int k = 0; k < 8; ++k) s += l[k];
    return s;
  }
};

}  // namespace

const MomentKernels& MomentKernelsAVX2() { return blocks::Kernels<Isa>(); }

}  // namespace measure
}  // namespace mirel
