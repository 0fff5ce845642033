// AVX2 byte kernels of the 8-bit statistics.
#include <immintrin.h>

#include <cstdint>

#include "mirel/measure/statistics_internal.h"
#include "mirel/measure/statistics_blocks_internal.h"

namespace mirel {
namespace measure {
namespace {

inline std::uint64_t Lanes64(__m256i v) {
  alignas(32) std::uint64_t l[4];
  _mm256_store_si256(reinterpret_cast<__m256i*>(l), v);
  return l[0] + l[1] + l[2] + l[3];
}

inline std::uint64_t Lanes32(__m256i v) {
  alignas(32) std::uint32_t l[8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(l), v);
  std::uint64_t s = 0;
  for (int k = 0; k < 8; ++k) s += l[k];
  return s;
}

struct Isa {
  using V = __m256i;
  static constexpr std::size_t kBytes = 32;
  static V Zero() { return _mm256_setzero_si256(); }
  static V Set1_8(unsigned char v) { return _mm256_set1_epi8(static_cast<char>(v)); }
  static V Load(const unsigned char* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static V CmpEq8(V a, V b) { return _mm256_cmpeq_epi8(a, b); }
  static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  static V AndNot(V mask, V a) { return _mm256_andnot_si256(mask, a); }
  static V Sub8(V a, V b) { return _mm256_sub_epi8(a, b); }
  static V Sad(V a, V b) { return _mm256_sad_epu8(a, b); }
  static V Add64(V a, V b) { return _mm256_add_epi64(a, b); }
  static V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
  static V UnpackLo(V a, V b) { return _mm256_unpacklo_epi8(a, b); }
  static V UnpackHi(V a, V b) { return _mm256_unpackhi_epi8(a, b); }
  static V Madd(V a, V b) { return _mm256_madd_epi16(a, b); }
  static V Min8(V a, V b) { return _mm256_min_epu8(a, b); }
  static V Max8(V a, V b) { return _mm256_max_epu8(a, b); }
  static std::uint64_t MinLane8(V v) {
    unsigned char l[32];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(l), v);
    unsigned char m = 255;
    for (unsigned char c : l) m = c < m ? c : m;
    return m;
  }
  static std::uint64_t MaxLane8(V v) {
    unsigned char l[32];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(l), v);
    unsigned char m = 0;
    for (unsigned char c : l) m = c > m ? c : m;
    return m;
  }
  static std::uint64_t Lanes64(V v) { return ::mirel::measure::Lanes64(v); }
  static std::uint64_t Lanes32(V v) { return ::mirel::measure::Lanes32(v); }
};

}  // namespace

const ByteKernels& ByteKernelsAVX2() {
  static const ByteKernels k{bytes::Sum<Isa>, bytes::SumSquares<Isa>, bytes::CountAtLeast<Isa>, bytes::CountAtLeast2<Isa>,
                             bytes::MinMax<Isa>, bytes::CountDiffer<Isa>, pairs::PairSums<Isa>};
  return k;
}

}  // namespace measure
}  // namespace mirel
