// Fourier transforms of 8-bit images and the complex-image operations.
//
// The fast transform works on batches (fourier_internal.h): the row pass
// reads kBatch rows of the source straight into bit-reversed order as
// checkerboard samples, runs the butterflies and writes the rows of dst; the
// column pass copies a strip of kBatch columns of dst, rows in bit-reversed
// order, runs the butterflies and writes the strip back. A strip of a
// 2048-row image is 256 KB, so every stage of a strip runs in the cache.
// Each pass can be split into bands (rows for the row pass, columns for the
// column pass) that give the same bytes as one run.
#include "mirel/edge/fourier.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <vector>

#include "mirel/edge/fourier_blocks_internal.h"
#include "mirel/filter/convolution_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/prefetch_internal.h"
#include "mirel/foundation/float_math_internal.h"

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>
#endif

namespace mirel {
namespace edge {
namespace {

struct ScalarIsa {
  using V = float;
  static constexpr int kLanes = 1;
  static float Load(const float* p) { return *p; }
  static void Store(float* p, float v) { *p = v; }
  static float Set1(float v) { return v; }
  static float Add(float a, float b) { return a + b; }
  static float Sub(float a, float b) { return a - b; }
  static float Mul(float a, float b) { return a * b; }
};

}  // namespace

ButterflyFn ButterfliesScalar() { return &blocks::Butterflies<ScalarIsa>; }

ButterflyFn ActiveButterflies(bool fast) {
#if defined(MIREL_X86_SIMD)
  if (fast) {
    const int level = cpu::ActiveSimdLevel();
    if (level >= cpu::kAVX512) return ButterfliesAvx512();
    if (level >= cpu::kAVX2) return ButterfliesAvx2();
    if (level >= cpu::kSSE2) return ButterfliesSse2();
  }
#else
  (void)fast;
#endif
  return ButterfliesScalar();
}

namespace {

// The sample scale s = scale / sqrt(W * H).
float SampleScale(float scale, int w, int h) {
  return static_cast<float>(scale / std::sqrt(static_cast<double>(w) * static_cast<double>(h)));
}

// The checkerboard sample of grey v at (x, y): negated as an integer when
// x + y is odd, then converted and scaled.
inline float Sample(int v, int x, int y, float s) { return static_cast<float>(((x + y) & 1) ? -v : v) * s; }

// ---------------------------------------------------------------- fast

// What one fast transform needs besides dst: the bit-reversal of each
// pass, the stage rotations of each pass and one batch buffer.
struct FastPlan {
  std::vector<int> revW, revH;
  std::vector<float> rowWr, rowWi, colWr, colWi;
  std::vector<float> re, im;
};

void BitReversal(int n, std::vector<int>& rev) {
  rev.assign(static_cast<size_t>(n), 0);
  int bits = 0;
  while ((1 << bits) < n) ++bits;
  for (int k = 0; k < n; ++k) {
    int r = 0;
    for (int b = 0; b < bits; ++b) r |= ((k >> b) & 1) << (bits - 1 - b);
    rev[static_cast<size_t>(k)] = r;
  }
}

// The rotations of every stage of an n-point transform, stage m's at m - 1
// + j: from (1, 0), each the one before times (c, d), c = 1 + e, e = -2 *
// sin(-1.5707964 / m)^2, d = sin(step / m).
void Rotations(int n, float step, std::vector<float>& wr, std::vector<float>& wi) {
  wr.assign(static_cast<size_t>(n > 1 ? n - 1 : 0), 0.0f);
  wi.assign(wr.size(), 0.0f);
  for (int m = 1; m < n; m *= 2) {
    const float fm = static_cast<float>(m);
    const float h = mirel::Sin(-1.5707964f / fm);
    const float c = 1.0f + -2.0f * (h * h);
    const float d = mirel::Sin(step / fm);
    float r = 1.0f, i = 0.0f;
    for (int j = 0; j < m; ++j) {
      wr[static_cast<size_t>(m - 1 + j)] = r;
      wi[static_cast<size_t>(m - 1 + j)] = i;
      const float nr = r * c - i * d;
      i = i * c + r * d;
      r = nr;
    }
  }
}

// The step sines: the column pass turns by pi / m, the row pass by 0.5 / m.
constexpr float kRowStep = -0.5f;
constexpr float kColumnStep = -3.1415927f;

bool MakePlan(int w, int h, FastPlan& plan) {
  try {
    BitReversal(w, plan.revW);
    BitReversal(h, plan.revH);
    Rotations(w, kRowStep, plan.rowWr, plan.rowWi);
    Rotations(h, kColumnStep, plan.colWr, plan.colWi);
    const size_t span = static_cast<size_t>(PointAt(std::max(w, h)));
    plan.re.assign(span, 0.0f);
    plan.im.assign(span + kBatch, 0.0f);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

#if defined(MIREL_X86_SIMD)
// A full batch of the row pass in natural column order: for each block of
// 16 columns the 16 rows' bytes are transposed, so that column x gives one
// vector of its 16 samples, which goes to point rev[x]. Each lane makes the
// scalar sample: the grey level negated as an integer on odd x + y (never
// -0), converted, then scaled.
void GatherBatch(const std::uint8_t* const src[kBatch], int n, int y, float sc, const int* rev, float* re,
                 float* im) {
  static_assert(kBatch == 16, "one 16x16 byte transpose a block");
  const __m128i zero = _mm_setzero_si128();
  const __m128 scale = _mm_set1_ps(sc);
  // Lane l of row y + l is negated where x + y + l is odd: odd lanes on an
  // even x + y, even lanes on an odd one.
  const __m128i oddLanes = _mm_setr_epi32(0, -1, 0, -1), evenLanes = _mm_setr_epi32(-1, 0, -1, 0);
  for (int x0 = 0; x0 < n; x0 += 16) {
    __m128i a[16], b[16];
    for (int l = 0; l < 16; ++l) a[l] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src[l] + x0));
    for (int i = 0; i < 8; ++i) {
      b[i] = _mm_unpacklo_epi8(a[2 * i], a[2 * i + 1]);      // rows 2i, 2i+1; columns 0-7
      b[i + 8] = _mm_unpackhi_epi8(a[2 * i], a[2 * i + 1]);  // columns 8-15
    }
    for (int h = 0; h < 2; ++h)
      for (int i = 0; i < 4; ++i) {
        a[h * 8 + i] = _mm_unpacklo_epi16(b[h * 8 + 2 * i], b[h * 8 + 2 * i + 1]);      // rows 4i..4i+3
        a[h * 8 + i + 4] = _mm_unpackhi_epi16(b[h * 8 + 2 * i], b[h * 8 + 2 * i + 1]);  // two columns on
      }
    // a[h * 8 + q * 4 + i]: rows 4i..4i+3 of columns h * 8 + q * 4 + (0..3).
    for (int g = 0; g < 4; ++g) {
      const int base = (g / 2) * 8 + (g % 2) * 4;
      const __m128i r01lo = _mm_unpacklo_epi32(a[base], a[base + 1]), r01hi = _mm_unpackhi_epi32(a[base], a[base + 1]);
      const __m128i r23lo = _mm_unpacklo_epi32(a[base + 2], a[base + 3]),
                    r23hi = _mm_unpackhi_epi32(a[base + 2], a[base + 3]);
      b[g * 4 + 0] = _mm_unpacklo_epi64(r01lo, r23lo);
      b[g * 4 + 1] = _mm_unpackhi_epi64(r01lo, r23lo);
      b[g * 4 + 2] = _mm_unpacklo_epi64(r01hi, r23hi);
      b[g * 4 + 3] = _mm_unpackhi_epi64(r01hi, r23hi);
    }
    // b[c]: the 16 rows of column x0 + c.
    for (int c = 0; c < 16; ++c) {
      const int x = x0 + c;
      const __m128i neg = ((x + y) & 1) != 0 ? evenLanes : oddLanes;
      float* r = re + PointAt(rev[x]);
      float* i = im + PointAt(rev[x]);
      const __m128i lo = _mm_unpacklo_epi8(b[c], zero), hi = _mm_unpackhi_epi8(b[c], zero);
      const __m128i q[4] = {_mm_unpacklo_epi16(lo, zero), _mm_unpackhi_epi16(lo, zero), _mm_unpacklo_epi16(hi, zero),
                            _mm_unpackhi_epi16(hi, zero)};
      for (int k = 0; k < 4; ++k) {
        const __m128i v = _mm_sub_epi32(_mm_xor_si128(q[k], neg), neg);
        _mm_storeu_ps(r + 4 * k, _mm_mul_ps(_mm_cvtepi32_ps(v), scale));
        _mm_storeu_ps(i + 4 * k, _mm_setzero_ps());
      }
    }
  }
}

// Writes a full batch of the row pass back to its 16 rows, four points a
// step, so that each row takes 32 contiguous bytes. n is a multiple of 4,
// and four points from a multiple of 4 lie side by side.
void ScatterBatch(const float* re, const float* im, EComplex64* const out[kBatch], int n) {
  for (int x = 0; x < n; x += 4) {
    const float* r = re + PointAt(x);
    const float* i = im + PointAt(x);
    for (int g = 0; g < 4; ++g) {
      // Point x + c, rows 4g, 4g + 1 (lo) and 4g + 2, 4g + 3 (hi), as pairs.
      auto pairs = [&](int c, __m128& lo, __m128& hi) {
        const __m128 a = _mm_loadu_ps(r + c * kBatch + 4 * g), b = _mm_loadu_ps(i + c * kBatch + 4 * g);
        lo = _mm_unpacklo_ps(a, b);
        hi = _mm_unpackhi_ps(a, b);
      };
      __m128 lo0, hi0, lo1, hi1, lo2, hi2, lo3, hi3;
      pairs(0, lo0, hi0);
      pairs(1, lo1, hi1);
      pairs(2, lo2, hi2);
      pairs(3, lo3, hi3);
      auto put = [&](int l, __m128 first, __m128 second) {
        float* o = reinterpret_cast<float*>(out[4 * g + l] + x);
        _mm_storeu_ps(o, first);
        _mm_storeu_ps(o + 4, second);
      };
      put(0, _mm_movelh_ps(lo0, lo1), _mm_movelh_ps(lo2, lo3));
      put(1, _mm_movehl_ps(lo1, lo0), _mm_movehl_ps(lo3, lo2));
      put(2, _mm_movelh_ps(hi0, hi1), _mm_movelh_ps(hi2, hi3));
      put(3, _mm_movehl_ps(hi1, hi0), _mm_movehl_ps(hi3, hi2));
    }
  }
}
#endif

// Rows [y0, y1) of the row pass.
void FastRows(const Rows<const EBW8>& s, const Rows<EComplex64>& d, float scale, FastPlan& p, ButterflyFn fly,
              bool fast, int y0, int y1) {
  const int n = s.width;
  const float sc = SampleScale(scale, s.width, s.height);
  float* re = p.re.data();
  float* im = p.im.data() + kBatch;
  for (int y = y0; y < y1; y += kBatch) {
    const int rows = std::min(kBatch, y1 - y);
    const std::uint8_t* src[kBatch];
    for (int l = 0; l < rows; ++l) src[l] = reinterpret_cast<const std::uint8_t*>(s.Row(y + l));
#if defined(MIREL_X86_SIMD)
    const bool gathered = fast && rows == kBatch && n >= 16;
    if (gathered) GatherBatch(src, n, y, sc, p.revW.data(), re, im);
#else
    (void)fast;
    const bool gathered = false;
#endif
    for (int k = 0; k < n && !gathered; ++k) {
      const int x = p.revW[static_cast<size_t>(k)];
      float* r = re + PointAt(k);
      float* i = im + PointAt(k);
      for (int l = 0; l < rows; ++l) r[l] = Sample(src[l][x], x, y + l, sc);
      for (int l = rows; l < kBatch; ++l) r[l] = 0.0f;
      for (int l = 0; l < kBatch; ++l) i[l] = 0.0f;
    }
    fly(re, im, n, p.rowWr.data(), p.rowWi.data());
    EComplex64* out[kBatch];
    for (int l = 0; l < rows; ++l) out[l] = d.Row(y + l);
#if defined(MIREL_X86_SIMD)
    if (gathered) {
      ScatterBatch(re, im, out, n);
      continue;
    }
#endif
    for (int x = 0; x < n; ++x) {
      const float* r = re + PointAt(x);
      const float* i = im + PointAt(x);
      for (int l = 0; l < rows; ++l) out[l][x] = EComplex64(r[l], i[l]);
    }
  }
}

// Copies between kBatch (or `cols`) complex pixels and a batch point; with
// `fast`, a full point moves through SSE2 shuffles.
inline void Split(const EComplex64* in, float* r, float* i, int cols, bool fast) {
#if defined(MIREL_X86_SIMD)
  if (fast && cols == kBatch) {
    const float* f = reinterpret_cast<const float*>(in);
    for (int k = 0; k < kBatch / 4; ++k) {
      const __m128 a = _mm_loadu_ps(f + 8 * k), b = _mm_loadu_ps(f + 8 * k + 4);
      _mm_storeu_ps(r + 4 * k, _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)));
      _mm_storeu_ps(i + 4 * k, _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
    }
    return;
  }
#else
  (void)fast;
#endif
  if (cols == kBatch) {
    for (int l = 0; l < kBatch; ++l) r[l] = in[l].re, i[l] = in[l].im;
    return;
  }
  for (int l = 0; l < cols; ++l) r[l] = in[l].re, i[l] = in[l].im;
  for (int l = cols; l < kBatch; ++l) r[l] = i[l] = 0.0f;
}
inline void Join(const float* r, const float* i, EComplex64* out, int cols, bool fast) {
#if defined(MIREL_X86_SIMD)
  if (fast && cols == kBatch) {
    float* f = reinterpret_cast<float*>(out);
    for (int k = 0; k < kBatch / 4; ++k) {
      const __m128 a = _mm_loadu_ps(r + 4 * k), b = _mm_loadu_ps(i + 4 * k);
      _mm_storeu_ps(f + 8 * k, _mm_unpacklo_ps(a, b));
      _mm_storeu_ps(f + 8 * k + 4, _mm_unpackhi_ps(a, b));
    }
    return;
  }
#else
  (void)fast;
#endif
  if (cols == kBatch) {
    for (int l = 0; l < kBatch; ++l) out[l] = EComplex64(r[l], i[l]);
    return;
  }
  for (int l = 0; l < cols; ++l) out[l] = EComplex64(r[l], i[l]);
}

// Rows read ahead of the one being copied into a strip.
constexpr int kAhead = 8;

// Columns [x0, x1) of the column pass, in place in dst.
void FastColumns(const Rows<EComplex64>& d, FastPlan& p, ButterflyFn fly, bool fast, int x0, int x1) {
  const int n = d.height;
  float* re = p.re.data();
  float* im = p.im.data() + kBatch;
  for (int x = x0; x < x1; x += kBatch) {
    const int cols = std::min(kBatch, x1 - x);
    // Rows are read in order, a few ahead asked for, and put in bit-reversed
    // order in the batch, which lies in the cache.
    for (int k = 0; k < n; ++k) {
      if (k + kAhead < n) PrefetchForWrite(d.Row(k + kAhead) + x, sizeof(EComplex64) * cols);
      const long at = PointAt(p.revH[static_cast<size_t>(k)]);
      Split(d.Row(k) + x, re + at, im + at, cols, fast);
    }
    fly(re, im, n, p.colWr.data(), p.colWi.data());
    for (int k = 0; k < n; ++k)
      Join(re + PointAt(k), im + PointAt(k), d.Row(k) + x, cols, fast);
  }
}

// Halving while even must end at 1 (a size of 0 never does).
bool PowerOfTwo(int n) { return n > 0 && (n & (n - 1)) == 0; }

// ---------------------------------------------------------------- slow

// The twiddle table of an n-point transform: a running product from (1, 0)
// by the single-precision rotation of -6.2831855 / n.
void SlowTable(int n, std::vector<EComplex64>& table) {
  table.resize(static_cast<size_t>(n));
  const float a = -6.2831855f / static_cast<float>(n);
  const float c = mirel::Cos(a), s = mirel::Sin(a);
  float wr = 1.0f, wi = 0.0f;
  for (int k = 0; k < n; ++k) {
    table[static_cast<size_t>(k)] = EComplex64(wr, wi);
    const float nr = wr * c - wi * s;
    wi = wr * s + wi * c;
    wr = nr;
  }
}

// out[u] = sum over x of table[(x * u) mod n] * in[x], the index advanced
// by u and brought back by n, never by a modulo.
void SlowTransform(const std::vector<EComplex64>& table, const EComplex64* in, EComplex64* out, int n) {
  for (int u = 0; u < n; ++u) {
    double re = 0.0;
    float im = 0.0f;
    int k = 0;
    for (int x = 0; x < n; ++x) {
      const EComplex64 w = table[static_cast<size_t>(k)];
      re += static_cast<double>(w.re * in[x].re - w.im * in[x].im);
      im = im + (w.re * in[x].im + w.im * in[x].re);
      k += u;
      if (k >= n) k -= n;
    }
    out[u] = EComplex64(static_cast<float>(re), im);
  }
}

struct SlowPlan {
  std::vector<EComplex64> rowTable, colTable, in, out;
};

bool MakeSlowPlan(int w, int h, SlowPlan& p) {
  try {
    SlowTable(w, p.rowTable);
    SlowTable(h, p.colTable);
    p.in.resize(static_cast<size_t>(std::max(w, h)));
    p.out.resize(p.in.size());
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

void SlowRows(const Rows<const EBW8>& s, const Rows<EComplex64>& d, float scale, SlowPlan& p, int y0, int y1) {
  const float sc = SampleScale(scale, s.width, s.height);
  for (int y = y0; y < y1; ++y) {
    const EBW8* row = s.Row(y);
    for (int x = 0; x < s.width; ++x) p.in[static_cast<size_t>(x)] = EComplex64(Sample(row[x].value, x, y, sc), 0.0f);
    SlowTransform(p.rowTable, p.in.data(), d.Row(y), s.width);
  }
}

void SlowColumns(const Rows<EComplex64>& d, SlowPlan& p, int x0, int x1) {
  for (int x = x0; x < x1; ++x) {
    for (int y = 0; y < d.height; ++y) p.in[static_cast<size_t>(y)] = d.Row(y)[x];
    SlowTransform(p.colTable, p.in.data(), p.out.data(), d.height);
    for (int y = 0; y < d.height; ++y) d.Row(y)[x] = p.out[static_cast<size_t>(y)];
  }
}

// ---------------------------------------------------------------- complex images

// A truncated value taken as unsigned and capped at 255.
inline EBW8 CapByte(float v) {
  const std::uint32_t u = static_cast<std::uint32_t>(filter::TruncToInt32(v));
  return EBW8(static_cast<unsigned char>(u > 255u ? 255u : u));
}

struct ModulusArgs {
  float scale;
  int logarithmic;
  float logScale;
};

inline float Modulus(const EComplex64& c) { return std::sqrt(c.re * c.re + c.im * c.im); }

inline EBW8 ModulusByte(float m, const ModulusArgs& a) {
  if (a.logarithmic != 0) m = mirel::Log(m + 1.0f) * a.logScale;
  return CapByte(m);
}

void ModulusRows(const Rows<const EComplex64>& s, const Rows<EBW8>& d, const ModulusArgs& a, int y0, int y1) {
  for (int y = y0; y < y1; ++y) {
    const EComplex64* in = s.Row(y);
    EBW8* out = d.Row(y);
    for (int x = 0; x < s.width; ++x) out[x] = ModulusByte(Modulus(in[x]) * a.scale, a);
  }
}

void RescaledModulusRows(const Rows<const EComplex64>& s, const Rows<EBW8>& d, const ModulusArgs& a, int y0,
                         int y1) {
  const float cx = static_cast<float>(s.width) * 0.5f, cy = static_cast<float>(s.height) * 0.5f;
  const float q = a.scale / (cx * cx + cy * cy);
  const int columns = std::min(s.width, s.height);
  for (int y = y0; y < y1; ++y) {
    const EComplex64* in = s.Row(y);
    EBW8* out = d.Row(y);
    const float dy = static_cast<float>(y) - cy;
    for (int x = 0; x < columns; ++x) {
      const float dx = static_cast<float>(x) - cx;
      out[x] = ModulusByte(Modulus(in[x]) * (dx * dx + dy * dy) * q, a);
    }
  }
}

void ArgumentRows(const Rows<const EComplex64>& s, const Rows<EBW8>& d, int y0, int y1) {
  for (int y = y0; y < y1; ++y) {
    const EComplex64* in = s.Row(y);
    EBW8* out = d.Row(y);
    for (int x = 0; x < s.width; ++x) {
      float t = 0.0f;
      if (in[x].re != 0.0f || in[x].im != 0.0f) {
        t = mirel::Atan2(in[x].im, in[x].re) * 0.15915494f;
        if (t < 0.0f) t += 1.0f;
      }
      out[x] = CapByte(t * 256.0f);
    }
  }
}

template <class Worker>
void ComplexToBytes(const char* label, const EROI<EComplex64>* src, EROI<EBW8>* dst, Worker&& worker) {
  Frame frame(label);
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const Rows<const EComplex64> s = RowsOf(src);
  worker(s, RowsOf(dst), 0, s.height);
}

}  // namespace
}  // namespace edge
}  // namespace mirel

using mirel::Frame;
using mirel::RowsOf;
namespace edge = mirel::edge;

void ImgSlowDFT(const EROI<EBW8>* src, EROI<EComplex64>* dst, float scale) {
  Frame frame("ImgSlowDFT");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const auto s = RowsOf(src);
  const auto d = RowsOf(dst);
  edge::SlowPlan plan;
  if (!edge::MakeSlowPlan(s.width, s.height, plan)) return frame.Fail(E_ERROR_OUT_OF_MEMORY);
  edge::SlowRows(s, d, scale, plan, 0, s.height);
  edge::SlowColumns(d, plan, 0, d.width);
}

void ImgFastDFT(const EROI<EBW8>* src, EROI<EComplex64>* dst, float scale) {
  const int mmx = EGetMMX();
  Frame frame("ImgFastDFT");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(edge::PowerOfTwo(src->GetWidth()), E_ERROR_NOT_POWER_OF_TWO) ||
      !frame.Require(edge::PowerOfTwo(src->GetHeight()), E_ERROR_NOT_POWER_OF_TWO))
    return;
  const auto s = RowsOf(src);
  const auto d = RowsOf(dst);
  edge::FastPlan plan;
  if (!edge::MakePlan(s.width, s.height, plan)) return frame.Fail(E_ERROR_OUT_OF_MEMORY);
  const edge::ButterflyFn fly = edge::ActiveButterflies(mmx != 0);
  edge::FastRows(s, d, scale, plan, fly, mmx != 0, 0, s.height);
  if (s.height >= 2) edge::FastColumns(d, plan, fly, mmx != 0, 0, d.width);
}

void ImgComplexModulus(const EROI<EComplex64>* src, EROI<EBW8>* dst, float scale, int logarithmic,
                       float logScale) {
  const edge::ModulusArgs a{scale, logarithmic, logScale};
  edge::ComplexToBytes("ImgComplexModulus", src, dst,
                       [&](const auto& s, const auto& d, int y0, int y1) { edge::ModulusRows(s, d, a, y0, y1); });
}

void ImgComplexRescaledModulus(const EROI<EComplex64>* src, EROI<EBW8>* dst, float scale, int logarithmic,
                               float logScale) {
  const edge::ModulusArgs a{scale, logarithmic, logScale};
  edge::ComplexToBytes("ImgComplexRescaledModulus", src, dst, [&](const auto& s, const auto& d, int y0, int y1) {
    edge::RescaledModulusRows(s, d, a, y0, y1);
  });
}

void ImgComplexArgument(const EROI<EComplex64>* src, EROI<EBW8>* dst) {
  edge::ComplexToBytes("ImgComplexArgument", src, dst,
                       [](const auto& s, const auto& d, int y0, int y1) { edge::ArgumentRows(s, d, y0, y1); });
}

void ImgComplexDiscEnergy(const EROI<EComplex64>* src, EVector* energy) {
  Frame frame("ImgComplexDiscEnergy");
  if (!frame.NotVoid(src) || !frame.Require(energy != nullptr, E_ERROR_VOID_VECTOR)) return;
  const auto s = RowsOf(src);
  const float cx = static_cast<float>(s.width) * 0.5f, cy = static_cast<float>(s.height) * 0.5f;
  const int n = static_cast<int>(std::sqrt(cx * cx + cy * cy)) + 1;
  if (!frame.Require(energy->GetVectType() == 7, E_ERROR_VECTOR_KIND) ||
      !frame.Require(energy->GetDataType() == E_VECTOR_DATA_FLOAT, E_ERROR_VECTOR_DATA_TYPE) ||
      !frame.Require(energy->GetDataSize() == E_VECTOR_DATA_32BIT, E_ERROR_VECTOR_GROUP) ||
      !frame.Require(energy->GetGroupLength() == 1, E_ERROR_VECTOR_GROUP_LENGTH))
    return;
  if (energy->GetNbGroup() < n && energy->SetType(7, n, 0) != 0) return;
  if (!frame.Require(energy->GetDataPtr() != nullptr, E_ERROR_VOID_VECTOR)) return;
  float* bins = static_cast<float*>(energy->GetDataPtr());
  std::fill(bins, bins + n, 0.0f);
  for (int y = 0; y < s.height; ++y) {
    const EComplex64* in = s.Row(y);
    const float dy = static_cast<float>(y) - cy;
    for (int x = 0; x < s.width; ++x) {
      const float dx = static_cast<float>(x) - cx;
      const int r = std::min(n - 1, static_cast<int>(std::sqrt(dx * dx + dy * dy)));
      bins[r] += in[x].re * in[x].re + in[x].im * in[x].im;
    }
  }
  bins[0] = 0.0f;
  for (int r = 1; r < n; ++r) bins[r] += bins[r - 1];
}
