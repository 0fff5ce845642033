// SSE2 row kernels of the 8-bit moments.
#include <emmintrin.h>

#include <cstring>

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

namespace {

inline __m128 Four(const EBW8* p) {
  std::uint32_t w;
  std::memcpy(&w, p, 4);
  return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(w)), _mm_setzero_si128()),
                                            _mm_setzero_si128()));
}
inline __m128 Four(const EBW16* p) {
  return _mm_cvtepi32_ps(
      _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128()));
}

// Lane k of v is P_k = p * x^k (k = 0..3), built by three multiplies with
// running vectors [1 x x x], [1 1 x x], [1 1 1 x] so that each P_k is the
// left-to-right product of the scalar form. The terms are then P_a * y^b:
//   [M20 M11 M02 M30] = [P2 P1 P0 P3] * [1 y y2 1]
//   [M21 M12 M03 M40] = [P2 P1 P0 P3] * [y y2 y3 x]   (x only in the fourth order)
//   [M31 M22 M13 M04] = [P3 P2 P1 P0] * [y y2 y3 y4]
template <class P, bool kFourth>
void HighRow(const P* p, int width, const float ys[4], float acc[12]) {
  __m128 a0 = _mm_loadu_ps(acc), a1 = _mm_loadu_ps(acc + 4), a2 = _mm_loadu_ps(acc + 8);
  const __m128 yA = _mm_setr_ps(1.0f, ys[0], ys[1], 1.0f);
  __m128 yB = _mm_setr_ps(ys[0], ys[1], ys[2], 0.0f);
  const __m128 yC = _mm_setr_ps(ys[0], ys[1], ys[2], ys[3]);
  __m128 x1 = _mm_setr_ps(1.0f, 0.0f, 0.0f, 0.0f), x2 = _mm_setr_ps(1.0f, 1.0f, 0.0f, 0.0f),
         x3 = _mm_setr_ps(1.0f, 1.0f, 1.0f, 0.0f);
  const __m128 s1 = _mm_setr_ps(0.0f, 1.0f, 1.0f, 1.0f), s2 = _mm_setr_ps(0.0f, 0.0f, 1.0f, 1.0f),
               s3 = _mm_setr_ps(0.0f, 0.0f, 0.0f, 1.0f);
  auto one = [&](__m128 fp) {
    const __m128 v = _mm_mul_ps(_mm_mul_ps(_mm_mul_ps(fp, x1), x2), x3);
    const __m128 u = _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 0, 1, 2));
    a0 = _mm_add_ps(a0, _mm_mul_ps(u, yA));
    a1 = _mm_add_ps(a1, _mm_mul_ps(u, yB));
    if (kFourth) {
      a2 = _mm_add_ps(a2, _mm_mul_ps(_mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3)), yC));
      yB = _mm_add_ps(yB, s3);
    }
    x1 = _mm_add_ps(x1, s1);
    x2 = _mm_add_ps(x2, s2);
    x3 = _mm_add_ps(x3, s3);
  };
  int x = 0;
  for (; x + 4 <= width; x += 4) {
    const __m128 f = Four(p + x);
    one(_mm_shuffle_ps(f, f, _MM_SHUFFLE(0, 0, 0, 0)));
    one(_mm_shuffle_ps(f, f, _MM_SHUFFLE(1, 1, 1, 1)));
    one(_mm_shuffle_ps(f, f, _MM_SHUFFLE(2, 2, 2, 2)));
    one(_mm_shuffle_ps(f, f, _MM_SHUFFLE(3, 3, 3, 3)));
  }
  for (; x < width; ++x) one(_mm_set1_ps(static_cast<float>(p[x].value)));
  _mm_storeu_ps(acc, a0);
  // The third order leaves M40 alone: its lane only ever added 0.
  _mm_storeu_ps(acc + 4, a1);
  if (kFourth) _mm_storeu_ps(acc + 8, a2);
}

}  // namespace

void HighRowSSE2(const EBW8* p, int width, const float ys[4], bool fourth, float acc[12]) {
  if (fourth) HighRow<EBW8, true>(p, width, ys, acc);
  else HighRow<EBW8, false>(p, width, ys, acc);
}

void HighRowSSE2(const EBW16* p, int width, const float ys[4], bool fourth, float acc[12]) {
  if (fourth) HighRow<EBW16, true>(p, width, ys, acc);
  else HighRow<EBW16, false>(p, width, ys, acc);
}

}  // namespace measure
}  // namespace mirel
