// Fixed thresholds on grey and colour images.
#include "mirel/point/threshold.h"

#include <cstring>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/prefetch_internal.h"
#include "mirel/foundation/stream_internal.h"
#include "mirel/histogram/histogram.h"
#include "mirel/histogram/threshold_selection.h"
#include "mirel/point/threshold_internal.h"

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>
#include <tmmintrin.h>
#if defined(__GNUC__)
#define MIREL_TARGET_SSSE3 __attribute__((target("ssse3")))
#else
#define MIREL_TARGET_SSSE3
#endif
#endif

namespace mirel {
namespace thr {

void MakeTable(const Levels& levels, unsigned char* table) {
  for (unsigned int x = 0; x < 256; ++x)
    table[x] = x >= levels.c2 ? levels.v2 : x >= levels.c1 ? levels.v1 : levels.v0;
}

#if defined(MIREL_X86_SIMD)
namespace {

// x >= c as a byte mask (all ones or zero), for unsigned bytes.
inline __m128i AtLeast(__m128i x, __m128i c) { return _mm_cmpeq_epi8(_mm_max_epu8(x, c), x); }

template <bool kTwo>
void ClassifySSE2Impl(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels,
                      const unsigned char* table) {
  const __m128i c1 = _mm_set1_epi8(static_cast<char>(levels.c1));
  const __m128i c2 = _mm_set1_epi8(static_cast<char>(levels.c2));
  const __m128i use1 = levels.c1 < 256 ? _mm_set1_epi8(-1) : _mm_setzero_si128();
  const __m128i use2 = levels.c2 < 256 ? _mm_set1_epi8(-1) : _mm_setzero_si128();
  const __m128i v0 = _mm_set1_epi8(static_cast<char>(levels.v0));
  // v0 ^ v1 where the first bound is reachable, 0 where it is not.
  const __m128i d01 = _mm_and_si128(use1, _mm_xor_si128(v0, _mm_set1_epi8(static_cast<char>(levels.v1))));
  const __m128i v2 = _mm_set1_epi8(static_cast<char>(levels.v2));
  auto one = [&](const unsigned char* from) {
    const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    __m128i r = _mm_xor_si128(v0, _mm_and_si128(AtLeast(p, c1), d01));
    if (kTwo) {
      const __m128i m2 = _mm_and_si128(AtLeast(p, c2), use2);
      r = _mm_xor_si128(r, _mm_and_si128(m2, _mm_xor_si128(r, v2)));
    }
    return r;
  };
  // No write hint for the next row, as on every path of the 8-bit
  // threshold: it measured slower than none on warm and on fresh frames.
  // The Intel form hints a kilobyte ahead instead.
  const int w = src.width;
  const StoreAhead ahead = StoreAheadFor(dst.Row(0), dst.pitch, dst.height, static_cast<std::size_t>(w));
  for (int y = 0; y < src.height; ++y) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(src.Row(y));
    unsigned char* d = reinterpret_cast<unsigned char*>(dst.Row(y));
    int x = 0;
    for (; x + 64 <= w; x += 64) {
      ahead.At(d + x);
      const __m128i r0 = one(s + x), r1 = one(s + x + 16), r2 = one(s + x + 32), r3 = one(s + x + 48);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x), r0);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x + 16), r1);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x + 32), r2);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x + 48), r3);
    }
    for (; x + 16 <= w; x += 16) _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x), one(s + x));
    for (; x < w; ++x) d[x] = table[s[x]];
  }
}

}  // namespace

void ClassifySSE2(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels,
                  const unsigned char* table) {
  if (levels.TwoLevels()) ClassifySSE2Impl<true>(src, dst, levels, table);
  else ClassifySSE2Impl<false>(src, dst, levels, table);
}
#endif  // MIREL_X86_SIMD

}  // namespace thr
}  // namespace mirel

namespace {

using mirel::Rows;
using mirel::thr::Levels;

// Writes the levels of `levels` for every pixel of the rows s into d.
void ClassifyRows(const Rows<const EBW8>& s, const Rows<EBW8>& d, const Levels& levels,
                  const unsigned char* table, int mmx) {
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    // 16-byte vectors at every level: on a 2448x2048 frame they ran as
    // fast as wider ones in the cache and some tenth faster from memory.
    const int level = mirel::cpu::ActiveSimdLevel();
    if (level >= mirel::cpu::kSSE2) {
      mirel::thr::ClassifySSE2(s, d, levels, table);
      return;
    }
  }
#else
  (void)mmx;
  (void)levels;  // only the vector paths read the levels; the table holds them too
#endif
  for (int y = 0; y < s.height; ++y) {
    const unsigned char* sp = reinterpret_cast<const unsigned char*>(s.Row(y));
    unsigned char* dp = reinterpret_cast<unsigned char*>(d.Row(y));
    for (int x = 0; x < s.width; ++x) dp[x] = table[sp[x]];
  }
}

// Writes the levels of `levels` for every pixel of src into dst, in bands.
void Classify(const EROI<EBW8>* src, EROI<EBW8>* dst, const Levels& levels, int mmx) {
  unsigned char table[256];
  mirel::thr::MakeTable(levels, table);
  const Rows<const EBW8> s = mirel::RowsOf(static_cast<const EROI<EBW8>*>(src));
  const Rows<EBW8> d = mirel::RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, 1.0, [&](int y0, int y1) {
    ClassifyRows(mirel::Band(s, y0, y1), mirel::Band(d, y0, y1), levels, table, mmx);
  });
}

template <class Fn>
void ForEach16(const EROI<EBW16>* src, EROI<EBW16>* dst, Fn fn) {
  const Rows<const EBW16> s = mirel::RowsOf(static_cast<const EROI<EBW16>*>(src));
  const Rows<EBW16> d = mirel::RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, 2.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const unsigned short* sp = reinterpret_cast<const unsigned short*>(s.Row(y));
      unsigned short* dp = reinterpret_cast<unsigned short*>(d.Row(y));
      mirel::PrefetchRowForWrite(d, y + 1, sizeof(EBW16) * static_cast<std::size_t>(s.width));
      for (int x = 0; x < s.width; ++x) dp[x] = fn(sp[x]);
    }
  });
}

// Inside the box: minimum[k] <= c[k] <= maximum[k] for k = 0, 1, 2.
inline bool InBox(const unsigned char* p, const EC24& minimum, const EC24& maximum) {
  return p[0] >= minimum.c[0] && p[0] <= maximum.c[0] && p[1] >= minimum.c[1] && p[1] <= maximum.c[1] &&
         p[2] >= minimum.c[2] && p[2] <= maximum.c[2];
}

#if defined(MIREL_X86_SIMD)
// Sixteen pixels (48 bytes) a block. Each byte is tested against the bounds
// of its component as (c - minimum) <= (maximum - minimum) in unsigned bytes,
// which holds exactly when minimum <= c <= maximum provided that minimum <=
// maximum (the caller sees to it); the three tests of a pixel are gathered
// with byte shuffles and combined.
struct BoxTables {
  // Per byte of the three 16-byte vectors of a block: the minimum and the
  // width of the box of that byte's component.
  alignas(16) unsigned char lo[3][16];
  alignas(16) unsigned char span[3][16];
  // gather[k][v][p]: position in vector v of component k of pixel p, or
  // 0x80 (which shuffles in a zero) when that byte lies in another vector.
  alignas(16) unsigned char gather[3][3][16];

  BoxTables(const EC24& minimum, const EC24& maximum) {
    for (int v = 0; v < 3; ++v)
      for (int i = 0; i < 16; ++i) {
        const int k = (16 * v + i) % 3;
        lo[v][i] = minimum.c[k];
        span[v][i] = static_cast<unsigned char>(maximum.c[k] - minimum.c[k]);
      }
    for (int k = 0; k < 3; ++k)
      for (int v = 0; v < 3; ++v)
        for (int p = 0; p < 16; ++p) {
          const int j = 3 * p + k;
          gather[k][v][p] = j / 16 == v ? static_cast<unsigned char>(j % 16) : 0x80;
        }
  }
};

// Returns the number of pixels done (a multiple of 16).
MIREL_TARGET_SSSE3 int BoxRowSSSE3(const unsigned char* s, unsigned char* d, int w,
                                   const BoxTables& t) {
  __m128i l[3], sp[3], g[3][3];
  for (int v = 0; v < 3; ++v) {
    l[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(t.lo[v]));
    sp[v] = _mm_load_si128(reinterpret_cast<const __m128i*>(t.span[v]));
    for (int k = 0; k < 3; ++k) g[k][v] = _mm_load_si128(reinterpret_cast<const __m128i*>(t.gather[k][v]));
  }
  int x = 0;
  for (; x + 16 <= w; x += 16) {
    __m128i in[3];
    for (int v = 0; v < 3; ++v) {
      const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 3 * x + 16 * v));
      const __m128i off = _mm_sub_epi8(p, l[v]);
      in[v] = _mm_cmpeq_epi8(_mm_min_epu8(off, sp[v]), off);
    }
    __m128i r = _mm_set1_epi8(-1);
    for (int k = 0; k < 3; ++k) {
      const __m128i c = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(in[0], g[k][0]), _mm_shuffle_epi8(in[1], g[k][1])),
                                     _mm_shuffle_epi8(in[2], g[k][2]));
      r = _mm_and_si128(r, c);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + x), r);
  }
  return x;
}
#endif

}  // namespace

short ImgThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int threshold, unsigned char low, unsigned char high,
                   float relative) {
  const int mmx = EGetMMX();
  EBWHistogramVector histogram;
  mirel::Frame frame("ImgThreshold");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return frame.Result();
  if (threshold > 255) {
    ImgHistogram(src, &histogram);
    if (EGetError() != E_OK) return frame.Result();
    float below = 0.0f, above = 0.0f;
    ImgHistogramThreshold(&histogram, threshold, below, above, relative, 0, 255);
    if (EGetError() != E_OK) return frame.Result();
  }
  // A relative selection of 1.0 gives 256: every pixel is below it.
  const Levels levels{threshold > 255 ? 256u : threshold, 256u, low, high, high};
  Classify(src, dst, levels, mmx);
  return frame.Result();
}

void ImgThreshold(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int threshold, EBW16 low, EBW16 high,
                  float relative) {
  EBWHistogramVector histogram;
  mirel::Frame frame("ImgThreshold (BW16)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  if (threshold > 65535) {
    ImgHistogram(src, &histogram, 15, 16, 1);
    if (EGetError() != E_OK) return;
    float below = 0.0f, above = 0.0f;
    ImgHistogramThresholdBW16(&histogram, threshold, below, above, relative, 0, 65535);
    if (EGetError() != E_OK) return;
  }
  const unsigned short lo = low, hi = high;
  ForEach16(src, dst, [=](unsigned short v) { return v >= threshold ? hi : lo; });
}

short ImgDoubleThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int lowThreshold, unsigned int highThreshold,
                         unsigned char low, unsigned char middle, unsigned char high) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgDoubleThreshold ( BW8 to BW8)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return frame.Result();
  // "above highThreshold" is "at least highThreshold + 1".
  const Levels levels{lowThreshold > 255 ? 256u : lowThreshold, highThreshold >= 255 ? 256u : highThreshold + 1, low,
                      middle, high};
  Classify(src, dst, levels, mmx);
  return frame.Result();
}

void ImgDoubleThreshold(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int lowThreshold, unsigned int highThreshold,
                        EBW16 low, EBW16 middle, EBW16 high) {
  mirel::Frame frame("ImgDoubleThreshold ( BW16 to BW16)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const unsigned short lo = low, mid = middle, hi = high;
  ForEach16(src, dst, [=](unsigned short v) { return v > highThreshold ? hi : v >= lowThreshold ? mid : lo; });
}

void ImgThreshold(const EROI<EC24>* src, EROI<EBW8>* dst, EC24 minimum, EC24 maximum) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgThreshold ( C24 to BW8)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const Rows<const EC24> s = mirel::RowsOf(static_cast<const EROI<EC24>*>(src));
  const Rows<EBW8> d = mirel::RowsOf(dst);
  const bool empty = minimum.c[0] > maximum.c[0] || minimum.c[1] > maximum.c[1] || minimum.c[2] > maximum.c[2];
#if defined(MIREL_X86_SIMD)
  const bool fast = mmx != 0 && mirel::cpu::ActiveSimdLevel() >= mirel::cpu::kSSE2;
  const BoxTables tables(minimum, maximum);
#else
  (void)mmx;
#endif
  mirel::RowwiseBands(dst, {src}, 3.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const unsigned char* sp = reinterpret_cast<const unsigned char*>(s.Row(y));
      unsigned char* dp = reinterpret_cast<unsigned char*>(d.Row(y));
      mirel::PrefetchRowForWrite(d, y + 1, static_cast<std::size_t>(s.width));
      if (empty) {
        std::memset(dp, 0, static_cast<std::size_t>(s.width));
        continue;
      }
      int x = 0;
#if defined(MIREL_X86_SIMD)
      if (fast) x = BoxRowSSSE3(sp, dp, s.width, tables);
#endif
      for (; x < s.width; ++x) dp[x] = InBox(sp + 3 * x, minimum, maximum) ? 255 : 0;
    }
  });
}

void ImgThreshold(const EROI<EC24>* src, EROI<EBW8>* dst, EC24 minimum, EC24 maximum, const EColorLookup* lookup, EBW8 outside,
                  EBW8 inside) {
  mirel::Frame frame("ImgThreshold ( C24 to BW8)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const Rows<const EC24> s = mirel::RowsOf(static_cast<const EROI<EC24>*>(src));
  const Rows<EBW8> d = mirel::RowsOf(dst);
  const unsigned char in = inside, out = outside;
  mirel::RowwiseBands(dst, {src}, 3.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const EC24* sp = s.Row(y);
      unsigned char* dp = reinterpret_cast<unsigned char*>(d.Row(y));
      for (int x = 0; x < s.width; ++x) {
        if (lookup != nullptr) {
          EC24 r;
          lookup->Transform(sp[x], r);
          const bool inBox = r.c[2] >= minimum.c[2] && r.c[2] <= maximum.c[2] && r.c[1] >= minimum.c[1] &&
                             r.c[1] <= maximum.c[1] && r.c[0] >= minimum.c[0] && r.c[0] <= maximum.c[0];
          dp[x] = inBox ? in : out;
        } else {
          dp[x] = InBox(sp[x].c, minimum, maximum) ? in : out;
        }
      }
    }
  });
}
