// Bit-image kernels with AVX2: 32 bytes a vector.
#include "mirel/point/bits_blocks_internal.h"
#include "mirel/point/bits_lanes_internal.h"

namespace mirel {
namespace bits {
namespace {

using blocks::ExpandBytes;
using blocks::PackBytes;

// Reverses each eight bytes, so that the first pixel of a group lands in
// the top bit of its byte of a byte mask.
inline __m256i ReverseGroups(__m256i v) {
  const __m256i order = _mm256_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1,
                                         0, 15, 14, 13, 12, 11, 10, 9, 8);
  return _mm256_shuffle_epi8(v, order);
}
inline std::uint32_t BitsOf(__m256i mask) {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(ReverseGroups(mask)));
}
inline void Store64(u8* d, std::uint32_t lo, std::uint32_t hi) {
  const std::uint64_t v = lo | (static_cast<std::uint64_t>(hi) << 32);
  std::memcpy(d, &v, 8);
}

void Pack8(const std::uint8_t* p, u8* d, std::size_t n, unsigned t) {
  const __m256i tv = _mm256_set1_epi8(static_cast<char>(t));
  auto bits = [&](const std::uint8_t* q) {
    const __m256i v = Lanes256::Load(q);
    return BitsOf(_mm256_cmpeq_epi8(_mm256_max_epu8(v, tv), v));
  };
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) Store64(d + j, bits(p + 8 * j), bits(p + 8 * j + 32));
  PackBytes(p, d, j, n, t);
}

void Pack16(const std::uint16_t* p, u8* d, std::size_t n, unsigned t) {
  const __m256i tv = _mm256_set1_epi16(static_cast<short>(t));
  auto mask = [&](const std::uint16_t* q) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(q));
    return _mm256_cmpeq_epi16(_mm256_max_epu16(v, tv), v);
  };
  // Packing works within 128-bit lanes; the permutation restores the order.
  auto bits = [&](const std::uint16_t* q) {
    return BitsOf(_mm256_permute4x64_epi64(_mm256_packs_epi16(mask(q), mask(q + 16)), 0xd8));
  };
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) Store64(d + j, bits(p + 8 * j), bits(p + 8 * j + 32));
  PackBytes(p, d, j, n, t);
}

void Expand8(const u8* s, std::uint8_t* d, std::size_t n, std::uint8_t on) {
  const __m256i w = _mm256_set1_epi64x(static_cast<long long>(0x0102040810204080ull));
  const __m256i spread = _mm256_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 3,
                                          3, 3, 3, 3, 3, 3, 3);
  const __m256i onv = _mm256_set1_epi8(static_cast<char>(on));
  auto put = [&](std::uint8_t* q, std::uint32_t four) {
    const __m256i v = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(four)), spread);
    Lanes256::Store(q, _mm256_and_si256(_mm256_cmpeq_epi8(_mm256_and_si256(v, w), w), onv));
  };
  std::size_t j = 0;
  for (; j + 8 <= n; j += 8) {
    std::uint32_t a, b;
    std::memcpy(&a, s + j, 4);
    std::memcpy(&b, s + j + 4, 4);
    put(d + 8 * j, a);
    put(d + 8 * j + 32, b);
  }
  ExpandBytes(s, d, j, n, on);
}

}  // namespace

const Kernels& Avx2Kernels() {
  static const Kernels k = blocks::MakeKernels<Lanes256>(&Pack8, &Pack16, &Expand8);
  return k;
}

}  // namespace bits
}  // namespace mirel
