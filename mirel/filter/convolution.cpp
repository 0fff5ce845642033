// ImgConvolKernel and ImgConvolSymmetricKernel on 8-bit and 16-bit pixels:
// routing, the two fixed-point arithmetics and the floating-point one. Both
// pixel types share every routine; they differ in the largest value, in the
// offset of the fifteen-bit arithmetic (which 16-bit pixels take through
// floating point) and in the eight-bit arithmetic, whose coefficients keep
// 16 bits on every 16-bit pixel.
#include "mirel/filter/convolution.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/filter/alloc_internal.h"
#include "mirel/filter/convolution_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"

namespace mirel {
namespace filter {

SimdRoutines ActiveRoutines() {
  SimdRoutines none{};
  if (EGetMMX() == 0) return none;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512Routines();
  if (level >= cpu::kAVX2) return Avx2Routines();
  if (level >= cpu::kSSE2) return Sse2Routines();
#endif
  return none;
}

namespace {

// ---------------------------------------------------------------- windows

// A square window as terms: one coefficient over the sum of a few pixels.
struct Term {
  int taps;
  int dx[8];
  int dy[8];
  int element;   // index of the coefficient in the kernel table
};
struct Window {
  int radius;
  int terms;
  Term term[49];
};

// Every element of a size x size kernel is its own term.
void PlainWindow(int size, Window& w) {
  w.radius = size / 2;
  w.terms = size * size;
  for (int i = 0; i < w.terms; ++i) {
    Term& t = w.term[i];
    t.taps = 1;
    t.dx[0] = i % size - w.radius;
    t.dy[0] = i / size - w.radius;
    t.element = i;
  }
}

// One term per orbit of the symmetries of the square: the element at (ex, ey)
// with ey <= ex <= radius stands for all the positions that mirroring in
// both axes and the diagonal reaches from it.
void SymmetricWindow(int size, Window& w) {
  const int r = size / 2;
  w.radius = r;
  w.terms = 0;
  for (int ey = 0; ey <= r; ++ey) {
    for (int ex = ey; ex <= r; ++ex) {
      Term& t = w.term[w.terms++];
      t.element = size * ey + ex;
      t.taps = 0;
      const int a = ex - r, b = ey - r;  // both <= 0
      const int cand[8][2] = {{a, b}, {-a, b}, {a, -b}, {-a, -b}, {b, a}, {-b, a}, {b, -a}, {-b, -a}};
      for (const auto& c : cand) {
        bool seen = false;
        for (int k = 0; k < t.taps; ++k) seen = seen || (t.dx[k] == c[0] && t.dy[k] == c[1]);
        if (seen) continue;
        t.dx[t.taps] = c[0];
        t.dy[t.taps] = c[1];
        ++t.taps;
      }
    }
  }
}

// The effective gain: Gain / sum when the sum is significant, else Gain.
// Each term's coefficient counts once per pixel of the term.
float EffectiveGain(float gain, const float* data, const Window& w) {
  float sum = 0.0f, abssum = 0.0f;
  for (int i = 0; i < w.terms; ++i) {
    const float c = data[w.term[i].element];
    sum += static_cast<float>(w.term[i].taps) * c;
    abssum += static_cast<float>(w.term[i].taps) * std::fabs(c);
  }
  if (abssum * 1e-5 < std::fabs(sum)) return gain / sum;
  return gain;
}

float EffectiveGainOfTable(float gain, const float* data, int count) {
  float sum = 0.0f, abssum = 0.0f;
  for (int i = 0; i < count; ++i) {
    sum += data[i];
    abssum += std::fabs(data[i]);
  }
  if (abssum * 1e-5 < std::fabs(sum)) return gain / sum;
  return gain;
}

// The window with one term per pixel: each pixel of a term gets the term's
// coefficient. The sum of products is the same number modulo 2^32.
void SingleTaps(const Window& w, const std::int32_t* coef, Window& out, std::int32_t* outCoef) {
  out.radius = w.radius;
  out.terms = 0;
  for (int i = 0; i < w.terms; ++i)
    for (int k = 0; k < w.term[i].taps; ++k) {
      Term& t = out.term[out.terms];
      t.taps = 1;
      t.dx[0] = w.term[i].dx[k];
      t.dy[0] = w.term[i].dy[k];
      t.element = w.term[i].element;
      outCoef[out.terms++] = coef[i];
    }
}

// ---------------------------------------------------------------- fixed point

// The band runner's cost of a row of `width` pixels under a window of
// `taps` taps.
inline double KernelRowCost(int width, int taps, std::size_t pixelBytes) {
  return RowCost(width, (2.0 + taps / 2.0) * static_cast<double>(pixelBytes));
}

// How a window sum becomes a pixel.
struct FixedArith {
  std::uint32_t offset;  // added to the sum, before the shift
  int shift;
  bool absolute;         // |v| capped at the largest pixel; otherwise v clamped to it
};

template <class P>
inline P Finish(std::uint32_t acc, const FixedArith& a) {
  constexpr int kMax = sizeof(P) == 1 ? 255 : 65535;
  const std::int32_t v = static_cast<std::int32_t>(acc) >> a.shift;
  if (a.absolute) {
    const std::uint32_t m = v < 0 ? 0u - static_cast<std::uint32_t>(v) : static_cast<std::uint32_t>(v);
    return static_cast<P>(m > kMax ? kMax : m);
  }
  return static_cast<P>(Clamp(v, 0, kMax));
}

// One pixel from the window rows (rows[j] is the row at dy = j - radius),
// with column clamping only when kClamp.
template <bool kClamp, class P>
inline P FixedPixel(const Window& w, const std::int32_t* coef, const P* const* rows, int x, int width,
                    const FixedArith& a) {
  std::uint32_t acc = a.offset;
  for (int i = 0; i < w.terms; ++i) {
    const Term& t = w.term[i];
    std::uint32_t s = 0;
    for (int k = 0; k < t.taps; ++k) {
      const int xx = kClamp ? Clamp(x + t.dx[k], 0, width - 1) : x + t.dx[k];
      s += rows[t.dy[k] + w.radius][xx];
    }
    acc += static_cast<std::uint32_t>(coef[i]) * s;
  }
  return Finish<P>(acc, a);
}

// Fills the block routine's job for a window: the tap ranges of its terms,
// and its coefficients packed two a word as signed 16-bit halves. A
// coefficient k is split as hi * 65536 + lo with both halves signed; hi
// wraps, which changes nothing modulo 2^32. 16-bit pixels enter the blocks
// less 32768 (one tap per term), made up for in the offset.
template <class P>
void PrepareBlockJob(const Window& w, const std::int32_t* coef, const FixedArith& a, BlockJobOf<P>& job) {
  job.pairs = (w.terms + 1) / 2;
  job.singleTaps = true;
  int taps = 0;
  for (int i = 0; i < 2 * job.pairs; ++i) {
    if (i < w.terms) {
      taps += w.term[i].taps;
      job.singleTaps = job.singleTaps && w.term[i].taps == 1;
    }
    job.termEnd[i] = taps;
  }
  std::uint16_t lo[kMaxTerms] = {}, hi[kMaxTerms] = {};
  job.wide = false;
  for (int i = 0; i < w.terms; ++i) {
    const std::uint32_t k = static_cast<std::uint32_t>(coef[i]);
    lo[i] = static_cast<std::uint16_t>(k & 0xffffu);
    const std::uint32_t loSigned =
        static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int16_t>(lo[i])));
    hi[i] = static_cast<std::uint16_t>((k - loSigned) >> 16);
    job.wide = job.wide || hi[i] != 0;
  }
  for (int p = 0; p < job.pairs; ++p) {
    job.pairCoef[p] = static_cast<std::int32_t>(lo[2 * p] | (static_cast<std::uint32_t>(lo[2 * p + 1]) << 16));
    job.pairCoefHi[p] = static_cast<std::int32_t>(hi[2 * p] | (static_cast<std::uint32_t>(hi[2 * p + 1]) << 16));
  }
  std::uint32_t offset = a.offset;
  if (sizeof(P) > 1)
    for (int i = 0; i < w.terms; ++i) offset += static_cast<std::uint32_t>(coef[i]) << 15;
  job.offset = static_cast<std::int32_t>(offset);
  job.shift = a.shift;
  job.absolute = a.absolute;
}

// Runs a fixed-point window over rows [y0, y1) of the ROI. `scalarCoef`
// serves the pixels computed one by one; `blockCoef`, when given, the block
// stretches (with frameRowsByPixel, of the interior rows only). Pixels are
// produced in row order, reading the source as it is at that moment, so a
// source that is also the destination sees the pixels already written.
template <class Pix>
void RunFixed(const Window& w, const std::int32_t* scalarCoef, const std::int32_t* blockCoef,
              const FixedArith& a, const Rows<const Pix>& s, const Rows<Pix>& d,
              const SimdRoutines& simd, bool frameRowsByPixel, int y0, int y1) {
  using P = typename GreyOf<Pix>::P;
  const int r = w.radius;
  const int width = s.width, height = s.height;
  const auto block = BlockOf(simd, static_cast<const P*>(nullptr));
  const bool useBlocks = blockCoef != nullptr && block != nullptr && width > 2 * r;

  BlockJobOf<P> job;
  if (useBlocks) {
    PrepareBlockJob(w, blockCoef, a, job);
  }

  const P* rows[7];
  for (int y = y0; y < y1; ++y) {
    WindowRows(s, y, r, rows);
    P* out = reinterpret_cast<P*>(d.Row(y));
    int x = 0;
    const int left = r < width ? r : width;
    for (; x < left; ++x) out[x] = FixedPixel<true>(w, scalarCoef, rows, x, width, a);
    if (useBlocks && !(frameRowsByPixel && (y < r || y >= height - r))) {
      int t = 0;
      for (int i = 0; i < w.terms; ++i)
        for (int k = 0; k < w.term[i].taps; ++k)
          job.taps[t++] = rows[w.term[i].dy[k] + r] + r + w.term[i].dx[k];
      x += block(job, 0, width - 2 * r, out + r);
    }
    for (; x < width - r; ++x) out[x] = FixedPixel<false>(w, scalarCoef, rows, x, width, a);
    for (; x < width; ++x) out[x] = FixedPixel<true>(w, scalarCoef, rows, x, width, a);
  }
}

// In place on one ROI, by blocks where that gives the same bytes. A pixel of
// row y reads final rows above, its own row as it is being written and
// original rows below; only the taps on its own row see pixels written
// earlier in the row. So for the rows between the first and the last (where
// no tap clamps onto the row itself) the taps of the other rows are summed
// by blocks before the row is touched, and the row's own taps are added
// pixel by pixel in order. Sums wrap at 32 bits, so the grouping is exact.
// Returns false when the row buffer is not to be had.
template <class Pix>
bool RunFixedInPlace(const Window& w, const std::int32_t* coef, const FixedArith& a,
                     const Rows<Pix>& img, const SimdRoutines& simd) {
  using P = typename GreyOf<Pix>::P;
  const int r = w.radius;
  const int width = img.width, height = img.height;
  // The window split by rows: taps off the centre row (for the blocks) and
  // taps on it, each with the coefficient of its term.
  Window off, own;
  off.radius = own.radius = r;
  off.terms = own.terms = 0;
  std::int32_t offCoef[49], ownCoef[49];
  for (int i = 0; i < w.terms; ++i) {
    Term o{}, c{};
    o.element = c.element = w.term[i].element;
    for (int k = 0; k < w.term[i].taps; ++k) {
      Term& t = w.term[i].dy[k] != 0 ? o : c;
      t.dx[t.taps] = w.term[i].dx[k];
      t.dy[t.taps] = w.term[i].dy[k];
      ++t.taps;
    }
    if (o.taps > 0) {
      offCoef[off.terms] = coef[i];
      off.term[off.terms++] = o;
    }
    if (c.taps > 0) {
      ownCoef[own.terms] = coef[i];
      own.term[own.terms++] = c;
    }
  }
  std::int32_t* sums = Allocate<std::int32_t>(static_cast<std::size_t>(width));
  if (sums == nullptr) return false;

  BlockJobOf<P> job;
  PrepareBlockJob(off, offCoef, a, job);
  const auto blockSums = SumsOf(simd, static_cast<const P*>(nullptr));

  const P* rows[7];
  for (int y = 0; y < height; ++y) {
    WindowRows(img, y, r, rows);
    P* out = reinterpret_cast<P*>(img.Row(y));
    if (y == 0 || y == height - 1 || width <= 2 * r) {
      for (int x = 0; x < width; ++x) out[x] = FixedPixel<true>(w, coef, rows, x, width, a);
      continue;
    }
    // Sums over the other rows, offset included, for the whole row.
    auto offSum = [&](int x) {
      std::uint32_t acc = a.offset;
      for (int i = 0; i < off.terms; ++i) {
        const Term& t = off.term[i];
        std::uint32_t s = 0;
        for (int k = 0; k < t.taps; ++k) s += rows[t.dy[k] + r][Clamp(x + t.dx[k], 0, width - 1)];
        acc += static_cast<std::uint32_t>(offCoef[i]) * s;
      }
      return static_cast<std::int32_t>(acc);
    };
    for (int x = 0; x < r; ++x) sums[x] = offSum(x);
    int t = 0;
    for (int i = 0; i < off.terms; ++i)
      for (int k = 0; k < off.term[i].taps; ++k)
        job.taps[t++] = rows[off.term[i].dy[k] + r] + r + off.term[i].dx[k];
    int x = r + blockSums(job, 0, width - 2 * r, sums + r);
    for (; x < width; ++x) sums[x] = offSum(x);
    // The row's own taps, pixel by pixel over the row as it is written.
    for (x = 0; x < width; ++x) {
      std::uint32_t acc = static_cast<std::uint32_t>(sums[x]);
      for (int i = 0; i < own.terms; ++i) {
        const Term& c = own.term[i];
        std::uint32_t s = 0;
        for (int k = 0; k < c.taps; ++k) s += out[Clamp(x + c.dx[k], 0, width - 1)];
        acc += static_cast<std::uint32_t>(ownCoef[i]) * s;
      }
      out[x] = Finish<P>(acc, a);
    }
  }
  Free(sums);
  return true;
}

// The offset of the fifteen-bit arithmetic: Offset << 15 on 8-bit pixels;
// 16-bit pixels take it through floating point as Offset * 32768.
inline std::uint32_t FifteenBitOffset(unsigned int offset, const std::uint8_t*) { return offset << 15; }
inline std::uint32_t FifteenBitOffset(unsigned int offset, const std::uint16_t*) {
  return static_cast<std::uint32_t>(TruncToInt32(static_cast<float>(offset) * 32768.0f));
}

// The fifteen-bit routines: checks, coefficients, then the window run.
template <class Pix>
void FixedRoutine(const EROI<Pix>* src, EROI<Pix>* dst, const EKernel* kernel, int size, bool symmetric,
                  const char* label) {
  using P = typename GreyOf<Pix>::P;
  EOk();
  src->CheckNotVoid();
  if (EGetError() == E_OK) src->CheckSameSize(dst);
  if (EGetError() == E_OK && (kernel->SizeX != size || kernel->SizeY != size))
    ESetError(E_ERROR_KERNEL_SIZE);
  if (EGetError() != E_OK) {
    ETraceError(label);
    return;
  }
  Window w;
  if (symmetric) SymmetricWindow(size, w);
  else PlainWindow(size, w);

  const short rectifier = kernel->Rectifier;
  if (rectifier == 0) {
    ESetError(E_ERROR_INTERNAL);
    ETraceError(label);
    return;
  }
  if (rectifier < 0 || rectifier > 3) return;  // no such mode: dst is left alone

  float g = EffectiveGain(kernel->Gain, kernel->Data, w);
  std::uint32_t off = FifteenBitOffset(kernel->Offset, static_cast<const P*>(nullptr));
  if (rectifier == 1) {
    g = -g;
    off = 0u - off;
  }
  std::int32_t coef[49];
  for (int i = 0; i < w.terms; ++i) coef[i] = TruncToInt32(g * kernel->Data[w.term[i].element] * 32768.0f);
  if (sizeof(P) > 1 && symmetric) {
    // 16-bit pixels go to the blocks one by one.
    Window plain;
    std::int32_t plainCoef[49];
    SingleTaps(w, coef, plain, plainCoef);
    w = plain;
    std::copy(plainCoef, plainCoef + w.terms, coef);
  }
  const FixedArith arith{off, 15, rectifier == 3};
  const bool inPlace = Overlap(src, dst);
  if (inPlace && src->GetTotalOrgX() == dst->GetTotalOrgX() &&
      src->GetTotalOrgY() == dst->GetTotalOrgY()) {
    const SimdRoutines simd = ActiveRoutines();
    if (SumsOf(simd, static_cast<const P*>(nullptr)) != nullptr &&
        RunFixedInPlace(w, coef, arith, RowsOf(dst), simd))
      return;
  }
  // A destination on the source's pixels reads what it has written: one
  // band then.
  const SimdRoutines simd = inPlace ? SimdRoutines{} : ActiveRoutines();
  const Rows<const Pix> s = RowsOf(src);
  const Rows<Pix> d = RowsOf(dst);
  RunBands(s.height, inPlace ? kOneBand : KernelRowCost(s.width, w.terms, sizeof(P)), [&](int y0, int y1) {
    RunFixed(w, coef, coef, arith, s, d, simd, false, y0, y1);
  });
}

// The eight-bit arithmetic (3x3, rectifier 2). The coefficients are kept in
// 16 bits; on 8-bit pixels those that the fast form computes one by one keep
// them in 32.
template <class Pix>
void EightBit(const EROI<Pix>* src, EROI<Pix>* dst, const EKernel* kernel) {
  using P = typename GreyOf<Pix>::P;
  Window w;
  PlainWindow(3, w);
  const float g = EffectiveGainOfTable(kernel->Gain, kernel->Data, 9);
  std::int32_t wide[9], narrow[9];
  for (int i = 0; i < 9; ++i) {
    wide[i] = TruncToInt32(g * kernel->Data[i] * 256.0f);
    narrow[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(wide[i])));
  }
  const SimdRoutines simd = ActiveRoutines();
  const FixedArith arith{0, 8, false};

  Rows<const Pix> s = RowsOf(src);
  P* copy = nullptr;
  if (Overlap(src, dst)) {
    // Same pixels: work from a copy of the source so that the result is the
    // one a separate destination gets.
    const std::size_t rowPixels = static_cast<std::size_t>(s.width);
    copy = Allocate<P>(rowPixels * static_cast<std::size_t>(s.height));
    if (copy == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return;
    }
    for (int y = 0; y < s.height; ++y) std::memcpy(copy + rowPixels * y, s.Row(y), rowPixels * sizeof(P));
    s.base = reinterpret_cast<const Pix*>(copy);
    s.pitch = static_cast<std::ptrdiff_t>(rowPixels * sizeof(P));
  }
  // As in the fast form's layout, blocks cover the interior rows only.
  // The source is apart from the destination now (a copy when they
  // overlapped), so every band reads only pixels no band writes.
  const bool wideOneByOne = sizeof(P) == 1 && simd.block != nullptr;
  const Rows<Pix> d = RowsOf(dst);
  RunBands(s.height, KernelRowCost(s.width, 9, sizeof(P)), [&](int y0, int y1) {
    RunFixed(w, wideOneByOne ? wide : narrow, narrow, arith, s, d, simd, true, y0, y1);
  });
  Free(copy);
}

// ---------------------------------------------------------------- floating point

// Rectifier mode, then the added value, then the clamp.
template <class P>
inline P Rectify(std::int32_t v, std::int64_t mode, std::int64_t add) {
  constexpr std::int64_t kMax = sizeof(P) == 1 ? 255 : 65535;
  std::int64_t r = v;
  if (mode == 1) r = v <= 0 ? -r : 0;
  else if (mode == 2) r = v >= 0 ? r : 0;
  else if (mode == 3) r = r < 0 ? -r : r;
  r += add;
  return static_cast<P>(r < 0 ? 0 : (r > kMax ? kMax : r));
}

// Rectify for a run of sums, with the mode's test taken out of the loop.
template <class P>
void RectifyRun(const std::int32_t* v, int n, std::int64_t mode, std::int64_t add, P* out) {
  constexpr std::int64_t kMax = sizeof(P) == 1 ? 255 : 65535;
  auto clamp = [](std::int64_t r) { return static_cast<P>(r < 0 ? 0 : (r > kMax ? kMax : r)); };
  switch (mode) {
    case 1:
      for (int i = 0; i < n; ++i) out[i] = clamp((v[i] <= 0 ? -static_cast<std::int64_t>(v[i]) : 0) + add);
      break;
    case 2:
      for (int i = 0; i < n; ++i) out[i] = clamp((v[i] >= 0 ? static_cast<std::int64_t>(v[i]) : 0) + add);
      break;
    case 3:
      for (int i = 0; i < n; ++i) {
        const std::int64_t r = v[i];
        out[i] = clamp((r < 0 ? -r : r) + add);
      }
      break;
    default:
      for (int i = 0; i < n; ++i) out[i] = clamp(static_cast<std::int64_t>(v[i]) + add);
      break;
  }
}

template <class Pix>
void FloatPath(const EROI<Pix>* src, EROI<Pix>* dst, const EKernel* kernel) {
  using P = typename GreyOf<Pix>::P;
  const int sx = kernel->SizeX, sy = kernel->SizeY;
  const int count = sx * sy;
  const Rows<const Pix> s = RowsOf(src);
  const Rows<Pix> d = RowsOf(dst);
  const int width = s.width, height = s.height;
  // Blocks and bands only when the source is not being overwritten: in
  // place, each pixel reads the pixels written before it.
  const bool overlap = Overlap(src, dst);
  const SimdRoutines simd = overlap ? SimdRoutines{} : ActiveRoutines();
  const auto floatRow = FloatRowOf(simd, static_cast<const P*>(nullptr));
  const Bands bands(height, overlap ? kOneBand : KernelRowCost(width, count, sizeof(P)));
  // The coefficients, then each band's row of sums and window row pointers,
  // all had before any pixel is written.
  struct Scratch {
    std::int32_t* sums = nullptr;
    const P** rowPtrs = nullptr;
    ~Scratch() {
      Free(sums);
      Free(rowPtrs);
    }
  };
  std::unique_ptr<float, void (*)(float*)> k(Allocate<float>(static_cast<std::size_t>(count)), Free<float>);
  std::unique_ptr<Scratch[]> scratch(new (std::nothrow) Scratch[static_cast<std::size_t>(bands.Count())]);
  bool had = k != nullptr && scratch != nullptr;
  for (int b = 0; had && floatRow != nullptr && b < bands.Count(); ++b) {
    scratch[b].sums = Allocate<std::int32_t>(static_cast<std::size_t>(width));
    scratch[b].rowPtrs = Allocate<const P*>(static_cast<std::size_t>(sy));
    had = scratch[b].sums != nullptr && scratch[b].rowPtrs != nullptr;
  }
  if (!had) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return;
  }
  const float g = EffectiveGainOfTable(kernel->Gain, kernel->Data, count);
  for (int i = 0; i < count; ++i) k.get()[i] = g * kernel->Data[i];
  const double outside = static_cast<double>(static_cast<std::int32_t>(kernel->OutsideValue));
  const std::int64_t offset = kernel->Offset;
  const std::int64_t rectifier = kernel->Rectifier;

  auto at = [&](int x, int y) -> double {
    if (x < 0 || y < 0 || x >= width || y >= height) return outside;
    return static_cast<double>(reinterpret_cast<const P*>(s.Row(y))[x]);
  };
  const int ax = sx / 2, ay = sy / 2;
  const float* const kf = k.get();
  auto general = [&](int x, int y) {
    double sum = 0.0;
    const bool inside = x - ax >= 0 && y - ay >= 0 && x - ax + sx <= width && y - ay + sy <= height;
    if (inside) {
      for (int ky = 0; ky < sy; ++ky) {
        const P* row = reinterpret_cast<const P*>(s.Row(y - ay + ky)) + (x - ax);
        const float* kr = kf + sx * ky;
        for (int kx = 0; kx < sx; ++kx) sum += static_cast<double>(kr[kx]) * row[kx];
      }
    } else {
      for (int ky = 0; ky < sy; ++ky)
        for (int kx = 0; kx < sx; ++kx)
          sum += static_cast<double>(kf[sx * ky + kx]) * at(x - ax + kx, y - ay + ky);
    }
    reinterpret_cast<P*>(d.Row(y))[x] = Rectify<P>(TruncToInt32(sum), rectifier, offset);
  };
  // Pixels x0..x1-1 of row y, by blocks where the whole window lies inside,
  // with the sums and row pointers of one band.
  auto span = [&](const Scratch& band, int y, int x0, int x1) {
    std::int32_t* const sums = band.sums;
    const P** const rowPtrs = band.rowPtrs;
    int x = x0;
    const int in0 = ax, in1 = width - sx + ax + 1;  // windows inside: [in0, in1)
    const bool rowInside = y - ay >= 0 && y - ay + sy <= height;
    if (sums != nullptr && rowInside && sx > 0 && sy > 0) {
      const int b0 = x0 > in0 ? x0 : in0, b1 = x1 < in1 ? x1 : in1;
      if (b1 > b0) {
        for (; x < b0; ++x) general(x, y);
        for (int ky = 0; ky < sy; ++ky)
          rowPtrs[ky] = reinterpret_cast<const P*>(s.Row(y - ay + ky)) + (b0 - ax);
        const int done = floatRow(kf, sx, sy, rowPtrs, b1 - b0, sums);
        RectifyRun(sums, done, rectifier, offset, reinterpret_cast<P*>(d.Row(y)) + b0);
        x = b0 + done;
      }
    }
    for (; x < x1; ++x) general(x, y);
  };

  bands.Run([&](int b, int y0, int y1) {
    const Scratch& band = scratch[b];
    if (sx != 3 || sy != 3) {
      for (int y = y0; y < y1; ++y) span(band, y, 0, width);
      return;
    }
    // 3x3: the interior of the band's rows first, then their frame pixels
    // from the upper left.
    for (int y = y0 > 1 ? y0 : 1; y < y1 && y < height - 1; ++y) span(band, y, 1, width - 1);
    // On the frame the pixel below the centre meets the coefficient right of
    // the centre, and the offset and the rectifier trade places.
    static const int kFrameCoef[9] = {0, 1, 2, 3, 4, 5, 6, 5, 8};
    auto frame = [&](int x, int y) {
      double sum = 0.0;
      for (int i = 0; i < 9; ++i)
        sum += static_cast<double>(kf[kFrameCoef[i]]) * at(x + i % 3 - 1, y + i / 3 - 1);
      reinterpret_cast<P*>(d.Row(y))[x] = Rectify<P>(TruncToInt32(sum), offset, rectifier);
    };
    // A ROI with no columns has no frame pixels.
    for (int y = y0; y < y1 && width > 0; ++y) {
      if (y == 0 || y == height - 1) {
        for (int x = 0; x < width; ++x) frame(x, y);
      } else {
        frame(0, y);
        if (width > 1) frame(width - 1, y);
      }
    }
  });
}

// Sizes that the table can hold.
bool KernelFits(const EKernel* kernel) {
  if (kernel->SizeX < 0 || kernel->SizeY < 0) return false;
  return static_cast<std::uint64_t>(kernel->SizeX) * static_cast<std::uint64_t>(kernel->SizeY) <=
         kernel->AllocatedSize;
}

}  // namespace

void ConvolKernel3x3(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 3, false, "ConvolKernel3x3");
}
void ConvolKernel5x5(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 5, false, "ConvolKernel5x5");
}
void ConvolKernel7x7(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 7, false, "ConvolKernel7x7");
}
void ConvolKernelS3xS3(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 3, true, "ConvolKernelS3xS3");
}
void ConvolKernelS5xS5(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 5, true, "ConvolKernelS5xS5");
}
void ConvolKernelS7xS7(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 7, true, "ConvolKernelS7xS7");
}
void ConvolKernel3x3(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 3, false, "ConvolKernel3x3 BW16");
}
void ConvolKernel5x5(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 5, false, "ConvolKernel5x5 (BW16)");
}
void ConvolKernel7x7(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 7, false, "ConvolKernel7x7 BW16");
}
void ConvolKernelS3xS3(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 3, true, "ConvolKernelS3xS3 (BW16)");
}
void ConvolKernelS5xS5(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 5, true, "ConvolKernelS5xS5 BW16");
}
void ConvolKernelS7xS7(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  FixedRoutine(src, dst, kernel, 7, true, "ConvolKernelS7xS7 (BW16)");
}

namespace {

template <class Pix>
void ConvolKernelOf(const EROI<Pix>* src, EROI<Pix>* dst, const EKernel* kernel, const char* label) {
  mirel::Frame frame(label);
  if (!frame.SameSize(src, dst) || !frame.NotVoid(src, dst)) return;
  if (!frame.Require(kernel != nullptr && kernel->Data != nullptr, E_ERROR_KERNEL_VOID)) return;
  if (!frame.Require(KernelFits(kernel), E_ERROR_KERNEL_SIZE)) return;

  const short sx = kernel->SizeX, sy = kernel->SizeY, rectifier = kernel->Rectifier;
  if (rectifier != 0 && sx == 3 && sy == 3) {
    if (rectifier == 2) EightBit(src, dst, kernel);
    else ConvolKernel3x3(src, dst, kernel);
  } else if (rectifier != 0 && sx == 5 && sy == 5) {
    ConvolKernel5x5(src, dst, kernel);
  } else if (rectifier != 0 && sx == 7 && sy == 7) {
    ConvolKernel7x7(src, dst, kernel);
  } else {
    FloatPath(src, dst, kernel);
  }
}

template <class Pix>
void ConvolSymmetricKernelOf(const EROI<Pix>* src, EROI<Pix>* dst, const EKernel* kernel, const char* label) {
  mirel::Frame frame(label);
  if (!frame.SameSize(src, dst) || !frame.NotVoid(src, dst)) return;
  if (!frame.Require(kernel != nullptr && kernel->Data != nullptr, E_ERROR_KERNEL_VOID)) return;
  if (!frame.Require(kernel->Rectifier != 0, E_ERROR_KERNEL_RECTIFIER)) return;
  const short sx = kernel->SizeX, sy = kernel->SizeY;
  const bool known = sx == sy && (sx == 3 || sx == 5 || sx == 7);
  if (!frame.Require(known && KernelFits(kernel), E_ERROR_KERNEL_SIZE)) return;
  if (sx == 3) ConvolKernelS3xS3(src, dst, kernel);
  else if (sx == 5) ConvolKernelS5xS5(src, dst, kernel);
  else ConvolKernelS7xS7(src, dst, kernel);
}

}  // namespace
}  // namespace filter
}  // namespace mirel

void ImgConvolKernel(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  mirel::filter::ConvolKernelOf(src, dst, kernel, "ImgConvolKernel BW8");
}
void ImgConvolKernel(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  mirel::filter::ConvolKernelOf(src, dst, kernel, "ImgConvolKernel BW16");
}
void ImgConvolSymmetricKernel(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel) {
  mirel::filter::ConvolSymmetricKernelOf(src, dst, kernel, "ImgConvolSymmetricKernel");
}
void ImgConvolSymmetricKernel(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel) {
  mirel::filter::ConvolSymmetricKernelOf(src, dst, kernel, "ImgConvolSymmetricKernel BW16");
}
