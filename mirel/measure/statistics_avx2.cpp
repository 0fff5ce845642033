// AVX2 byte kernels of the 8-bit statistics.
#include <immintrin.h>

#include <cstdint>

#include "mirel/measure/statistics_internal.h"
#include "mirel/measure/statistics_pairs_internal.h"

namespace mirel {
namespace measure {
namespace {

inline __m256i Load(const unsigned char* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

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

inline __m256i AtLeast(__m256i p, __m256i t) { return _mm256_cmpeq_epi8(_mm256_max_epu8(p, t), p); }

std::uint64_t Sum(const unsigned char* p, std::size_t n) {
  const __m256i zero = _mm256_setzero_si256();
  __m256i a0 = zero, a1 = zero;
  std::size_t i = 0;
  for (; i + 64 <= n; i += 64) {
    a0 = _mm256_add_epi64(a0, _mm256_sad_epu8(Load(p + i), zero));
    a1 = _mm256_add_epi64(a1, _mm256_sad_epu8(Load(p + i + 32), zero));
  }
  for (; i + 32 <= n; i += 32) a0 = _mm256_add_epi64(a0, _mm256_sad_epu8(Load(p + i), zero));
  std::uint64_t s = Lanes64(_mm256_add_epi64(a0, a1));
  for (; i < n; ++i) s += p[i];
  return s;
}

void SumSquares(const unsigned char* p, std::size_t n, std::uint64_t* sum, std::uint64_t* squares) {
  const __m256i zero = _mm256_setzero_si256();
  __m256i s = zero;
  std::uint64_t q = 0;
  std::size_t i = 0;
  while (i + 32 <= n) {
    // A 32-bit lane gains at most 4 * 255 * 255 a block.
    const std::size_t end = n - i > 32 * 4096 ? i + 32 * 4096 : n;
    __m256i qa = zero;
    for (; i + 32 <= end; i += 32) {
      const __m256i v = Load(p + i);
      s = _mm256_add_epi64(s, _mm256_sad_epu8(v, zero));
      const __m256i lo = _mm256_unpacklo_epi8(v, zero), hi = _mm256_unpackhi_epi8(v, zero);
      qa = _mm256_add_epi32(qa, _mm256_add_epi32(_mm256_madd_epi16(lo, lo), _mm256_madd_epi16(hi, hi)));
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

template <bool kTwo>
void Count(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
           std::size_t* c2) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i v1 = _mm256_set1_epi8(static_cast<char>(t1)), v2 = _mm256_set1_epi8(static_cast<char>(t2));
  std::uint64_t a = 0, b = 0;
  std::size_t i = 0;
  while (i + 32 <= n) {
    const std::size_t end = n - i > 32 * 255 ? i + 32 * 255 : n;
    __m256i ka = zero, kb = zero;
    for (; i + 32 <= end; i += 32) {
      const __m256i v = Load(p + i);
      ka = _mm256_sub_epi8(ka, AtLeast(v, v1));
      if (kTwo) kb = _mm256_sub_epi8(kb, AtLeast(v, v2));
    }
    a += Lanes64(_mm256_sad_epu8(ka, zero));
    if (kTwo) b += Lanes64(_mm256_sad_epu8(kb, zero));
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
  if (n >= 32) {
    __m256i mn0 = _mm256_set1_epi8(static_cast<char>(a)), mx0 = _mm256_set1_epi8(static_cast<char>(b));
    __m256i mn1 = mn0, mx1 = mx0;
    for (; i + 64 <= n; i += 64) {
      const __m256i v0 = Load(p + i), v1 = Load(p + i + 32);
      mn0 = _mm256_min_epu8(mn0, v0);
      mx0 = _mm256_max_epu8(mx0, v0);
      mn1 = _mm256_min_epu8(mn1, v1);
      mx1 = _mm256_max_epu8(mx1, v1);
    }
    for (; i + 32 <= n; i += 32) {
      const __m256i v = Load(p + i);
      mn0 = _mm256_min_epu8(mn0, v);
      mx0 = _mm256_max_epu8(mx0, v);
    }
    alignas(32) unsigned char l[32], h[32];
    _mm256_store_si256(reinterpret_cast<__m256i*>(l), _mm256_min_epu8(mn0, mn1));
    _mm256_store_si256(reinterpret_cast<__m256i*>(h), _mm256_max_epu8(mx0, mx1));
    for (int k = 0; k < 32; ++k) {
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
  const __m256i zero = _mm256_setzero_si256();
  std::uint64_t same = 0;
  std::size_t i = 0;
  while (i + 32 <= n) {
    const std::size_t end = n - i > 32 * 255 ? i + 32 * 255 : n;
    __m256i k = zero;
    for (; i + 32 <= end; i += 32) k = _mm256_sub_epi8(k, _mm256_cmpeq_epi8(Load(a + i), Load(b + i)));
    same += Lanes64(_mm256_sad_epu8(k, zero));
  }
  std::size_t differ = i - static_cast<std::size_t>(same);
  for (; i < n; ++i) differ += a[i] != b[i] ? 1 : 0;
  return differ;
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
  static const ByteKernels k{Sum, SumSquares, CountAtLeast, CountAtLeast2, MinMax, CountDiffer, pairs::PairSums<Isa>};
  return k;
}

}  // namespace measure
}  // namespace mirel
