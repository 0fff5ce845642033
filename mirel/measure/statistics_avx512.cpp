// AVX-512 byte kernels of the 8-bit statistics.
#include <immintrin.h>

#include <cstdint>

#include "mirel/measure/statistics_internal.h"
#include "mirel/measure/statistics_blocks_internal.h"

namespace mirel {
namespace measure {
namespace {

inline __m512i Load(const unsigned char* p) { return _mm512_loadu_si512(p); }

// Lane sums through memory, and the masked unpacks (all lanes on): the plain
// forms leave GCC warning about an undefined source operand.
inline std::uint64_t Lanes64(__m512i v) {
  alignas(64) std::uint64_t l[8];
  _mm512_store_si512(l, v);
  return l[0] + l[1] + l[2] + l[3] + l[4] + l[5] + l[6] + l[7];
}

inline std::uint64_t Lanes32(__m512i v) {
  alignas(64) std::uint32_t l[16];
  _mm512_store_si512(l, v);
  std::uint64_t s = 0;
  for (int k = 0; k < 16; ++k) s += l[k];
  return s;
}

// Byte counters raised under a compare mask, emptied every 255 blocks.
template <bool kTwo>
void Count(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
           std::size_t* c2) {
  const __m512i zero = _mm512_setzero_si512();
  const __m512i one = _mm512_set1_epi8(1);
  const __m512i v1 = _mm512_set1_epi8(static_cast<char>(t1)), v2 = _mm512_set1_epi8(static_cast<char>(t2));
  std::uint64_t a = 0, b = 0;
  std::size_t i = 0;
  while (i + 64 <= n) {
    const std::size_t end = n - i > 64 * 255 ? i + 64 * 255 : n;
    __m512i ka = zero, kb = zero;
    for (; i + 64 <= end; i += 64) {
      const __m512i v = Load(p + i);
      ka = _mm512_mask_add_epi8(ka, _mm512_cmpge_epu8_mask(v, v1), ka, one);
      if (kTwo) kb = _mm512_mask_add_epi8(kb, _mm512_cmpge_epu8_mask(v, v2), kb, one);
    }
    a += Lanes64(_mm512_sad_epu8(ka, zero));
    if (kTwo) b += Lanes64(_mm512_sad_epu8(kb, zero));
  }
  if (i < n) {
    // The tail under a load mask: lanes past the end read as zero and are
    // not counted.
    const __mmask64 live = ~0ULL >> (64 - (n - i));
    const __m512i v = _mm512_maskz_loadu_epi8(live, p + i);
    a += static_cast<std::uint64_t>(__builtin_popcountll(_mm512_mask_cmpge_epu8_mask(live, v, v1)));
    if (kTwo) b += static_cast<std::uint64_t>(__builtin_popcountll(_mm512_mask_cmpge_epu8_mask(live, v, v2)));
  }
  *c1 = static_cast<std::size_t>(a);
  if (kTwo) *c2 = static_cast<std::size_t>(b);
}

std::size_t CountAtLeast(const unsigned char* p, std::size_t n, unsigned int t) {
  std::size_t c = 0;
  Count<false>(p, n, t, t, &c, nullptr);
  return c;
}

void CountAtLeast2(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
                   std::size_t* c2) {
  Count<true>(p, n, t1, t2, c1, c2);
}

void MinMax(const unsigned char* p, std::size_t n, unsigned char* lo, unsigned char* hi) {
  if (n == 0) return;
  __m512i mn0 = _mm512_set1_epi8(static_cast<char>(*lo)), mx0 = _mm512_set1_epi8(static_cast<char>(*hi));
  __m512i mn1 = mn0, mx1 = mx0;
  std::size_t i = 0;
  for (; i + 128 <= n; i += 128) {
    const __m512i v0 = Load(p + i), v1 = Load(p + i + 64);
    mn0 = _mm512_min_epu8(mn0, v0);
    mx0 = _mm512_max_epu8(mx0, v0);
    mn1 = _mm512_min_epu8(mn1, v1);
    mx1 = _mm512_max_epu8(mx1, v1);
  }
  for (; i + 64 <= n; i += 64) {
    const __m512i v = Load(p + i);
    mn0 = _mm512_min_epu8(mn0, v);
    mx0 = _mm512_max_epu8(mx0, v);
  }
  if (i < n) {
    // Lanes past the end keep the running values.
    const __mmask64 live = ~0ULL >> (64 - (n - i));
    mn1 = _mm512_mask_min_epu8(mn1, live, mn1, _mm512_maskz_loadu_epi8(live, p + i));
    mx1 = _mm512_mask_max_epu8(mx1, live, mx1, _mm512_maskz_loadu_epi8(live, p + i));
  }
  alignas(64) unsigned char l[64], h[64];
  _mm512_store_si512(l, _mm512_min_epu8(mn0, mn1));
  _mm512_store_si512(h, _mm512_max_epu8(mx0, mx1));
  unsigned char a = *lo, b = *hi;
  for (int k = 0; k < 64; ++k) {
    a = l[k] < a ? l[k] : a;
    b = h[k] > b ? h[k] : b;
  }
  *lo = a;
  *hi = b;
}

std::size_t CountDiffer(const unsigned char* a, const unsigned char* b, std::size_t n) {
  std::uint64_t differ = 0;
  std::size_t i = 0;
  for (; i + 64 <= n; i += 64)
    differ += static_cast<std::uint64_t>(__builtin_popcountll(_mm512_cmpneq_epu8_mask(Load(a + i), Load(b + i))));
  if (i < n) {
    const __mmask64 live = ~0ULL >> (64 - (n - i));
    differ += static_cast<std::uint64_t>(__builtin_popcountll(_mm512_mask_cmpneq_epu8_mask(
        live, _mm512_maskz_loadu_epi8(live, a + i), _mm512_maskz_loadu_epi8(live, b + i))));
  }
  return static_cast<std::size_t>(differ);
}

struct Isa {
  using V = __m512i;
  static constexpr std::size_t kBytes = 64;
  static V Zero() { return _mm512_setzero_si512(); }
  static V Set1_8(unsigned char v) { return _mm512_set1_epi8(static_cast<char>(v)); }
  static V Load(const unsigned char* p) { return _mm512_loadu_si512(p); }
  static V CmpEq8(V a, V b) { return _mm512_movm_epi8(_mm512_cmpeq_epi8_mask(a, b)); }
  static V Or(V a, V b) { return _mm512_maskz_or_epi32(0xFFFF, a, b); }
  static V AndNot(V mask, V a) { return _mm512_maskz_andnot_epi32(0xFFFF, mask, a); }
  static V Sub8(V a, V b) { return _mm512_sub_epi8(a, b); }
  static V Sad(V a, V b) { return _mm512_sad_epu8(a, b); }
  static V Add64(V a, V b) { return _mm512_add_epi64(a, b); }
  static V Add32(V a, V b) { return _mm512_add_epi32(a, b); }
  static V UnpackLo(V a, V b) { return _mm512_maskz_unpacklo_epi8(~0ULL, a, b); }
  static V UnpackHi(V a, V b) { return _mm512_maskz_unpackhi_epi8(~0ULL, a, b); }
  static V Madd(V a, V b) { return _mm512_madd_epi16(a, b); }
  static V Min8(V a, V b) { return _mm512_min_epu8(a, b); }
  static V Max8(V a, V b) { return _mm512_max_epu8(a, b); }
  static std::uint64_t MinLane8(V v) {
    unsigned char l[64];
    _mm512_storeu_si512(l, v);
    unsigned char m = 255;
    for (unsigned char c : l) m = c < m ? c : m;
    return m;
  }
  static std::uint64_t MaxLane8(V v) {
    unsigned char l[64];
    _mm512_storeu_si512(l, v);
    unsigned char m = 0;
    for (unsigned char c : l) m = c > m ? c : m;
    return m;
  }
  static std::uint64_t Lanes64(V v) { return ::mirel::measure::Lanes64(v); }
  static std::uint64_t Lanes32(V v) { return ::mirel::measure::Lanes32(v); }
};

}  // namespace

const ByteKernels& ByteKernelsAVX512() {
  static const ByteKernels k{bytes::Sum<Isa>, bytes::SumSquares<Isa>, CountAtLeast, CountAtLeast2,
                             MinMax, CountDiffer, pairs::PairSums<Isa>};
  return k;
}

}  // namespace measure
}  // namespace mirel
