// SSE2 row kernels of the 8-bit moments.
#include <emmintrin.h>

#include "mirel/measure/moments_blocks_internal.h"

namespace mirel {
namespace measure {
namespace {

struct Isa {
  using V = __m128i;
  static constexpr int kBytes = 16;
  static V Zero() { return _mm_setzero_si128(); }
  static V Set1_8(unsigned char v) { return _mm_set1_epi8(static_cast<char>(v)); }
  static V Load(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static V LoadM(const std::int16_t* p) { return _mm_load_si128(reinterpret_cast<const __m128i*>(p)); }
  static V And(V a, V b) { return _mm_and_si128(a, b); }
  static V AtLeast(V p, V t) { return _mm_cmpeq_epi8(_mm_max_epu8(p, t), p); }
  static V UnpackLo(V a, V b) { return _mm_unpacklo_epi8(a, b); }
  static V UnpackHi(V a, V b) { return _mm_unpackhi_epi8(a, b); }
  static V Sad(V a, V b) { return _mm_sad_epu8(a, b); }
  static V Madd(V a, V b) { return _mm_madd_epi16(a, b); }
  static V Add32(V a, V b) { return _mm_add_epi32(a, b); }
  // Lane-wise product modulo 2^32 from two 32x32->64 multiplies.
  static V MulScalar32(V a, std::uint32_t s) {
    const __m128i b = _mm_set1_epi32(static_cast<int>(s));
    const __m128i even = _mm_mul_epu32(a, b);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), b);
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                              _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
  }
  static std::uint32_t LaneSum32(V v) {
    alignas(16) std::uint32_t l[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(l), v);
    return l[0] + l[1] + l[2] + l[3];
  }
};

}  // namespace

const MomentKernels& MomentKernelsSSE2() { return blocks::Kernels<Isa>(); }

}  // namespace measure
}  // namespace mirel
