// SSE2 byte kernels of the 8-bit statistics.
#include <emmintrin.h>

#include <cstdint>

#include "mirel/measure/statistics_internal.h"
#include "mirel/measure/statistics_pairs_internal.h"

namespace mirel {
namespace measure {
namespace {

inline __m128i Load(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

inline std::uint64_t Lanes64(__m128i v) {
  return static_cast<std::uint64_t>(_mm_cvtsi128_si64(v)) +
         static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v)));
}

// Four 32-bit lanes added into 64 bits.
inline std::uint64_t Lanes32(__m128i v) {
  const __m128i zero = _mm_setzero_si128();
  return Lanes64(_mm_add_epi64(_mm_unpacklo_epi32(v, zero), _mm_unpackhi_epi32(v, zero)));
}

// p >= t as 0xFF bytes.
inline __m128i AtLeast(__m128i p, __m128i t) { return _mm_cmpeq_epi8(_mm_max_epu8(p, t), p); }

std::uint64_t Sum(const unsigned char* p, std::size_t n) {
  const __m128i zero = _mm_setzero_si128();
  __m128i acc = zero;
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) acc = _mm_add_epi64(acc, _mm_sad_epu8(Load(p + i), zero));
  std::uint64_t s = Lanes64(acc);
  for (; i < n; ++i) s += p[i];
  return s;
}

void SumSquares(const unsigned char* p, std::size_t n, std::uint64_t* sum, std::uint64_t* squares) {
  const __m128i zero = _mm_setzero_si128();
  __m128i s = zero;
  std::uint64_t q = 0;
  std::size_t i = 0;
  while (i + 16 <= n) {
    // Each 32-bit lane gains at most 2 * 2 * 255 * 255 a block: 4096 blocks
    // stay far below 2^32.
    const std::size_t end = n - i > 16 * 4096 ? i + 16 * 4096 : n;
    __m128i qa = zero;
    for (; i + 16 <= end; i += 16) {
      const __m128i v = Load(p + i);
      s = _mm_add_epi64(s, _mm_sad_epu8(v, zero));
      const __m128i lo = _mm_unpacklo_epi8(v, zero), hi = _mm_unpackhi_epi8(v, zero);
      qa = _mm_add_epi32(qa, _mm_add_epi32(_mm_madd_epi16(lo, lo), _mm_madd_epi16(hi, hi)));
    }
    q += Lanes32(qa);
  }
  std::uint64_t total = Lanes64(s);
  for (; i < n; ++i) {
    const std::uint32_t v = p[i];
    total += v;
    q += v * v;
  }
  *sum = total;
  *squares = q;
}

// Counts of p >= t1 and p >= t2 in byte counters, emptied every 255 blocks.
template <bool kTwo>
void Count(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
           std::size_t* c2) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i v1 = _mm_set1_epi8(static_cast<char>(t1)), v2 = _mm_set1_epi8(static_cast<char>(t2));
  std::uint64_t a = 0, b = 0;
  std::size_t i = 0;
  while (i + 16 <= n) {
    const std::size_t end = n - i > 16 * 255 ? i + 16 * 255 : n;
    __m128i ka = zero, kb = zero;
    for (; i + 16 <= end; i += 16) {
      const __m128i v = Load(p + i);
      ka = _mm_sub_epi8(ka, AtLeast(v, v1));
      if (kTwo) kb = _mm_sub_epi8(kb, AtLeast(v, v2));
    }
    a += Lanes64(_mm_sad_epu8(ka, zero));
    if (kTwo) b += Lanes64(_mm_sad_epu8(kb, zero));
  }
  for (; i < n; ++i) {
    a += p[i] >= t1 ? 1 : 0;
    if (kTwo) b += p[i] >= t2 ? 1 : 0;
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
  unsigned char a = *lo, b = *hi;
  std::size_t i = 0;
  if (n >= 16) {
    __m128i mn = _mm_set1_epi8(static_cast<char>(a)), mx = _mm_set1_epi8(static_cast<char>(b));
    for (; i + 16 <= n; i += 16) {
      const __m128i v = Load(p + i);
      mn = _mm_min_epu8(mn, v);
      mx = _mm_max_epu8(mx, v);
    }
    alignas(16) unsigned char l[16], h[16];
    _mm_store_si128(reinterpret_cast<__m128i*>(l), mn);
    _mm_store_si128(reinterpret_cast<__m128i*>(h), mx);
    for (int k = 0; k < 16; ++k) {
      a = l[k] < a ? l[k] : a;
      b = h[k] > b ? h[k] : b;
    }
  }
  for (; i < n; ++i) {
    a = p[i] < a ? p[i] : a;
    b = p[i] > b ? p[i] : b;
  }
  *lo = a;
  *hi = b;
}

std::size_t CountDiffer(const unsigned char* a, const unsigned char* b, std::size_t n) {
  const __m128i zero = _mm_setzero_si128();
  std::uint64_t same = 0;
  std::size_t i = 0;
  while (i + 16 <= n) {
    const std::size_t end = n - i > 16 * 255 ? i + 16 * 255 : n;
    __m128i k = zero;
    for (; i + 16 <= end; i += 16) k = _mm_sub_epi8(k, _mm_cmpeq_epi8(Load(a + i), Load(b + i)));
    same += Lanes64(_mm_sad_epu8(k, zero));
  }
  std::size_t differ = (i - static_cast<std::size_t>(same));
  for (; i < n; ++i) differ += a[i] != b[i] ? 1 : 0;
  return differ;
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
  static const ByteKernels k{Sum, SumSquares, CountAtLeast, CountAtLeast2, MinMax, CountDiffer, pairs::PairSums<Isa>};
  return k;
}

}  // namespace measure
}  // namespace mirel
