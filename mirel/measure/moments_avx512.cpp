// AVX-512 row kernels of the 8-bit moments.
#include <immintrin.h>

#include "mirel/measure/moments_blocks_internal.h"

namespace mirel {
namespace measure {
namespace {

// The masked unpacks (all lanes on) keep GCC from warning about the
// undefined source operand inside the plain forms.
struct Isa {
  using V = __m512i;
  static constexpr int kBytes = 64;
  static V Zero() { return _mm512_setzero_si512(); }
  static V Set1_8(unsigned char v) { return _mm512_set1_epi8(static_cast<char>(v)); }
  static V Load(const unsigned char* p) { return _mm512_loadu_si512(p); }
  static V LoadM(const std::int16_t* p) { return _mm512_load_si512(p); }
  static V And(V a, V b) { return _mm512_and_si512(a, b); }
  static V AtLeast(V p, V t) { return _mm512_movm_epi8(_mm512_cmpge_epu8_mask(p, t)); }
  static V UnpackLo(V a, V b) { return _mm512_maskz_unpacklo_epi8(~0ULL, a, b); }
  static V UnpackHi(V a, V b) { return _mm512_maskz_unpackhi_epi8(~0ULL, a, b); }
  static V Sad(V a, V b) { return _mm512_sad_epu8(a, b); }
  static V Madd(V a, V b) { return _mm512_madd_epi16(a, b); }
  static V Add32(V a, V b) { return _mm512_add_epi32(a, b); }
  static V MulScalar32(V a, std::uint32_t s) { return _mm512_mullo_epi32(a, _mm512_set1_epi32(static_cast<int>(s))); }
  static std::uint32_t LaneSum32(V v) {
    alignas(64) std::uint32_t l[16];
    _mm512_store_si512(l, v);
    std::uint32_t s = 0;
    for (int k = 0; k < 16; ++k) s += l[k];
    return s;
  }
};

}  // namespace

const MomentKernels& MomentKernelsAVX512() { return blocks::Kernels<Isa>(); }

}  // namespace measure
}  // namespace mirel
