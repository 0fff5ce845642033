// SSE2 byte kernels of the 8-bit statistics.
#include <emmintrin.h>

#include <cstdint>

#include "mirel/measure/statistics_internal.h"
#include "mirel/measure/statistics_blocks_internal.h"

namespace mirel {
namespace measure {
namespace {

inline std::uint64_t Lanes64(__m128i v) {
  return static_cast<std::uint64_t>(_mm_cvtsi128_si64(v)) +
         static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v)));
}

// Four 32-bit lanes added into 64 bits.
inline std::uint64_t Lanes32(__m128i v) {
  const __m128i zero = _mm_setzero_si128();
  return Lanes64(_mm_add_epi64(_mm_unpacklo_epi32(v, zero), _mm_unpackhi_epi32(v, zero)));
}

struct Isa {
  using V = __m128i;
  static constexpr std::size_t kBytes = 16;
  static V Zero() { return _mm_setzero_si128(); }
  static V Set1_8(unsigned char v) { return _mm_set1_epi8(static_cast<char>(v)); }
  static V Load(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static V CmpEq8(V a, V b) { return _mm_cmpeq_epi8(a, b); }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V AndNot(V mask, V a) { return _mm_andnot_si128(mask, a); }
  static V Sub8(V a, V b) { return _mm_sub_epi8(a, b); }
  static V Sad(V a, V b) { return _mm_sad_epu8(a, b); }
  static V Add64(V a, V b) { return _mm_add_epi64(a, b); }
  static V Add32(V a, V b) { return _mm_add_epi32(a, b); }
  static V UnpackLo(V a, V b) { return _mm_unpacklo_epi8(a, b); }
  static V UnpackHi(V a, V b) { return _mm_unpackhi_epi8(a, b); }
  static V Madd(V a, V b) { return _mm_madd_epi16(a, b); }
  static V Min8(V a, V b) { return _mm_min_epu8(a, b); }
  static V Max8(V a, V b) { return _mm_max_epu8(a, b); }
  static std::uint64_t MinLane8(V v) {
    unsigned char l[16];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(l), v);
    unsigned char m = 255;
    for (unsigned char c : l) m = c < m ? c : m;
    return m;
  }
  static std::uint64_t MaxLane8(V v) {
    unsigned char l[16];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(l), v);
    unsigned char m = 0;
    for (unsigned char c : l) m = c > m ? c : m;
    return m;
  }
  static std::uint64_t Lanes64(V v) { return ::mirel::measure::Lanes64(v); }
  static std::uint64_t Lanes32(V v) { return ::mirel::measure::Lanes32(v); }
};

}  // namespace

const ByteKernels& ByteKernelsSSE2() {
  static const ByteKernels k{bytes::Sum<Isa>, bytes::SumSquares<Isa>, bytes::CountAtLeast<Isa>, bytes::CountAtLeast2<Isa>,
                             bytes::MinMax<Isa>, bytes::CountDiffer<Isa>, pairs::PairSums<Isa>};
  return k;
}

}  // namespace measure
}  // namespace mirel
