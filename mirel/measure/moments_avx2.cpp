// AVX2 row kernels of the 8-bit moments and of the higher orders.
#include <immintrin.h>

#include <cstring>

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

namespace {

inline __m256 Eight(const EBW8* p) {
  return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}
inline __m256 Eight(const EBW16* p) {
  return _mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
}

// The first two steps of a transpose of four rows of eight: lane k of the
// low half of qj is row k's element j, of the high half row k's element
// j + 4.
struct Quads {
  __m256 q0, q1, q2, q3;
  Quads(__m256 a, __m256 b, __m256 c, __m256 d) {
    const __m256 t0 = _mm256_unpacklo_ps(a, b), t1 = _mm256_unpackhi_ps(a, b);
    const __m256 t2 = _mm256_unpacklo_ps(c, d), t3 = _mm256_unpackhi_ps(c, d);
    q0 = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(1, 0, 1, 0));
    q1 = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(3, 2, 3, 2));
    q2 = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(1, 0, 1, 0));
    q3 = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(3, 2, 3, 2));
  }
};

// The scalar loop adds one pixel's terms after another to each sum, and no
// reordering of those adds keeps the bits. So eight pixels' terms are
// formed side by side (one vector per term, one lane per pixel) with the
// scalar form's products, transposed to one vector per pixel, and added to
// the sums pixel by pixel: A holds M20 M11 M02 M30 M21 M12 M03 M40, B holds
// M31 M22 M13 M04. The column runs as the scalar form's x does: a float
// stepped by one, which stops at 2^24.
template <class P, bool kFourth>
void HighRow(const P* p, int width, const float ys[4], float acc[12]) {
  __m256 accA = _mm256_loadu_ps(acc);
  __m128 accB = _mm_loadu_ps(acc + 8);
  const __m256 fy = _mm256_set1_ps(ys[0]), yy = _mm256_set1_ps(ys[1]), yyy = _mm256_set1_ps(ys[2]),
               yyyy = _mm256_set1_ps(ys[3]);
  const __m256 step = _mm256_set1_ps(8.0f), top = _mm256_set1_ps(16777216.0f);
  __m256 fx = _mm256_setr_ps(0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f);
  // Adds the terms of the first n (1..8) pixels of fp, at columns fx.
  auto block = [&](__m256 fp, int n) {
    const __m256 px = _mm256_mul_ps(fp, fx), pxx = _mm256_mul_ps(px, fx), pxxx = _mm256_mul_ps(pxx, fx);
    Quads lo(pxx, _mm256_mul_ps(px, fy), _mm256_mul_ps(fp, yy), pxxx);
    Quads hi(_mm256_mul_ps(pxx, fy), _mm256_mul_ps(px, yy), _mm256_mul_ps(fp, yyy),
             kFourth ? _mm256_mul_ps(pxxx, fx) : _mm256_setzero_ps());
    const Quads b = kFourth ? Quads(_mm256_mul_ps(pxxx, fy), _mm256_mul_ps(pxx, yy), _mm256_mul_ps(px, yyy),
                                    _mm256_mul_ps(fp, yyyy))
                            : lo;
    // Pixel j (0..3) sits in the low halves of the quads' j-th vectors, pixel
    // j + 4 in their high halves. Named values, not a loop over arrays:
    // GCC at -O2 keeps such arrays in memory.
    auto add = [&](__m256 a, __m128 c) {
      accA = _mm256_add_ps(accA, a);
      if (kFourth) accB = _mm_add_ps(accB, c);
    };
    auto low = [&](__m256 l, __m256 h, __m256 c) {
      add(_mm256_permute2f128_ps(l, h, 0x20), _mm256_castps256_ps128(c));
    };
    auto high = [&](__m256 l, __m256 h, __m256 c) {
      add(_mm256_permute2f128_ps(l, h, 0x31), _mm256_extractf128_ps(c, 1));
    };
    low(lo.q0, hi.q0, b.q0);
    if (n > 1) low(lo.q1, hi.q1, b.q1);
    if (n > 2) low(lo.q2, hi.q2, b.q2);
    if (n > 3) low(lo.q3, hi.q3, b.q3);
    if (n > 4) high(lo.q0, hi.q0, b.q0);
    if (n > 5) high(lo.q1, hi.q1, b.q1);
    if (n > 6) high(lo.q2, hi.q2, b.q2);
    if (n > 7) high(lo.q3, hi.q3, b.q3);
    fx = _mm256_min_ps(_mm256_add_ps(fx, step), top);
  };
  int x = 0;
  for (; x + 8 <= width; x += 8) block(Eight(p + x), 8);
  if (x < width) {
    P tail[8] = {};
    std::memcpy(tail, p + x, static_cast<std::size_t>(width - x) * sizeof(P));
    block(Eight(tail), width - x);
  }
  _mm256_storeu_ps(acc, accA);
  if (kFourth) _mm_storeu_ps(acc + 8, accB);
}

}  // namespace

void HighRowAVX2(const EBW8* p, int width, const float ys[4], bool fourth, float acc[12]) {
  if (fourth) HighRow<EBW8, true>(p, width, ys, acc);
  else HighRow<EBW8, false>(p, width, ys, acc);
}

void HighRowAVX2(const EBW16* p, int width, const float ys[4], bool fourth, float acc[12]) {
  if (fourth) HighRow<EBW16, true>(p, width, ys, acc);
  else HighRow<EBW16, false>(p, width, ys, acc);
}

}  // namespace measure
}  // namespace mirel
