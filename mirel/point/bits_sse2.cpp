// Bit-image kernels with SSE2 (the x86-64 baseline): 16 bytes a vector.
#include "mirel/point/bits_blocks_internal.h"

#if defined(MIREL_X86_SIMD)
#include "mirel/point/bits_lanes_internal.h"

namespace mirel {
namespace bits {
namespace {

using blocks::ExpandBytes;
using blocks::PackBytes;

// Weights 128 down to 1 over each eight bytes: the sum of the weights of
// the set bytes of a group is the bit byte of its eight pixels.
inline __m128i Weights() { return _mm_set_epi8(1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128); }

// Sixteen byte masks (0 or 0xff) to their two bit bytes, in the low bytes
// of the two 64-bit halves.
inline __m128i BitBytes(__m128i mask) {
  return _mm_sad_epu8(_mm_and_si128(mask, Weights()), _mm_setzero_si128());
}

// Four results of BitBytes (64 pixels) to the eight bytes they make.
inline void StoreBits(u8* d, __m128i b0, __m128i b1, __m128i b2, __m128i b3) {
  const __m128i s = _mm_or_si128(_mm_or_si128(b0, _mm_slli_epi64(b1, 8)),
                                 _mm_or_si128(_mm_slli_epi64(b2, 16), _mm_slli_epi64(b3, 24)));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(d), _mm_unpacklo_epi8(s, _mm_srli_si128(s, 8)));
}

void Pack8(const std::uint8_t* p, u8* d, std::size_t n, unsigned t) {
  const __m128i tv = _mm_set1_epi8(static_cast<char>(t));
  auto bits = [&](const std::uint8_t* q) {
    const __m128i v = Lanes128::Load(q);
    return BitBytes(_mm_cmpeq_epi8(_mm_max_epu8(v, tv), v));
  };
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    const std::uint8_t* q = p + 8 * j;
    StoreBits(d + j, bits(q), bits(q + 16), bits(q + 32), bits(q + 48));
  }
  PackBytes(p, d, j, n, t);
}

void Pack16(const std::uint16_t* p, u8* d, std::size_t n, unsigned t) {
  const __m128i tv = _mm_set1_epi16(static_cast<short>(t));
  const __m128i zero = _mm_setzero_si128();
  // p >= t exactly when t - p saturates to 0.
  auto mask = [&](const std::uint16_t* q) {
    return _mm_cmpeq_epi16(_mm_subs_epu16(tv, _mm_loadu_si128(reinterpret_cast<const __m128i*>(q))), zero);
  };
  auto bits = [&](const std::uint16_t* q) { return BitBytes(_mm_packs_epi16(mask(q), mask(q + 8))); };
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    const std::uint16_t* q = p + 8 * j;
    StoreBits(d + j, bits(q), bits(q + 16), bits(q + 32), bits(q + 48));
  }
  PackBytes(p, d, j, n, t);
}

void Expand8(const u8* s, std::uint8_t* d, std::size_t n, std::uint8_t on) {
  const __m128i w = Weights();
  const __m128i onv = _mm_set1_epi8(static_cast<char>(on));
  auto put = [&](std::uint8_t* q, __m128i v) {
    Lanes128::Store(q, _mm_and_si128(_mm_cmpeq_epi8(_mm_and_si128(v, w), w), onv));
  };
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    const __m128i x = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + j));
    const __m128i pairs = _mm_unpacklo_epi8(x, x);
    const __m128i lo = _mm_unpacklo_epi16(pairs, pairs), hi = _mm_unpackhi_epi16(pairs, pairs);
    std::uint8_t* q = d + 8 * j;
    put(q, _mm_unpacklo_epi32(lo, lo));
    put(q + 16, _mm_unpackhi_epi32(lo, lo));
    put(q + 32, _mm_unpacklo_epi32(hi, hi));
    put(q + 48, _mm_unpackhi_epi32(hi, hi));
  }
  ExpandBytes(s, d, j, n, on);
}

}  // namespace

const Kernels& Sse2Kernels() {
  static const Kernels k = blocks::MakeKernels<Lanes128>(&Pack8, &Pack16, &Expand8);
  return k;
}

}  // namespace bits
}  // namespace mirel
#endif  // MIREL_X86_SIMD
