// Bit-image kernels with AVX-512: 64 bytes a vector, and byte masks straight
// from the comparisons.
#include "mirel/point/bits_blocks_internal.h"
#include "mirel/point/bits_lanes_internal.h"

namespace mirel {
namespace bits {
namespace {

using blocks::ExpandBytes;
using blocks::PackBytes;
using blocks::ReverseBitsInBytes;

// A comparison mask has pixel i in bit i; a bit byte wants the first pixel
// of each eight in its top bit. Reversing each eight bytes of a vector
// before the comparison (or after the expansion) does it for the bytes.
inline __m512i ReverseGroups(__m512i v) {
  const long long lo = 0x0001020304050607ll, hi = 0x08090a0b0c0d0e0fll;
  const __m512i order = _mm512_set_epi64(hi, lo, hi, lo, hi, lo, hi, lo);
  return _mm512_shuffle_epi8(v, order);
}
inline void StoreMask(u8* d, std::uint64_t mask) {
  const std::uint64_t v = ReverseBitsInBytes(mask);
  std::memcpy(d, &v, 8);
}

void Pack8(const std::uint8_t* p, u8* d, std::size_t n, unsigned t) {
  const __m512i tv = _mm512_set1_epi8(static_cast<char>(t));
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    const std::uint64_t mask = _mm512_cmpge_epu8_mask(ReverseGroups(Lanes512::Load(p + 8 * j)), tv);
    std::memcpy(d + j, &mask, 8);
  }
  PackBytes(p, d, j, n, t);
}

void Pack16(const std::uint16_t* p, u8* d, std::size_t n, unsigned t) {
  const __m512i tv = _mm512_set1_epi16(static_cast<short>(t));
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    const std::uint64_t lo = _mm512_cmpge_epu16_mask(_mm512_loadu_si512(p + 8 * j), tv);
    const std::uint64_t hi = _mm512_cmpge_epu16_mask(_mm512_loadu_si512(p + 8 * j + 32), tv);
    StoreMask(d + j, lo | (hi << 32));
  }
  PackBytes(p, d, j, n, t);
}

void Expand8(const u8* s, std::uint8_t* d, std::size_t n, std::uint8_t on) {
  const __m512i onv = _mm512_set1_epi8(static_cast<char>(on));
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    std::uint64_t x;
    std::memcpy(&x, s + j, 8);
    Lanes512::Store(d + 8 * j, ReverseGroups(_mm512_maskz_mov_epi8(x, onv)));
  }
  ExpandBytes(s, d, j, n, on);
}

}  // namespace

const Kernels& Avx512Kernels() {
  static const Kernels k = blocks::MakeKernels<Lanes512>(&Pack8, &Pack16, &Expand8);
  return k;
}

}  // namespace bits
}  // namespace mirel
