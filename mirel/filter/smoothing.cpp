// Box and binomial smoothing of any window, local mean and local deviation,
// on 8-bit and 16-bit pixels.
//
// The sliding sums keep, for the current output row, the sum of each
// column over the window's rows (and, for the deviation, of the squares).
// Moving one row down adds the row entering the window and subtracts the
// one leaving it. Along a row the window sum is a difference of prefix sums
// of the column sums; positions left of the first column or right of the
// last count that column's sum once each. All sums are 32-bit unsigned and
// wrap, so a difference of prefix sums is exact whenever the window sum
// itself fits 32 bits, and equals the wrapped sum otherwise. Each pixel
// costs the same whatever the window.
#include "mirel/filter/smoothing.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/filter/alloc_internal.h"
#include "mirel/filter/convolution_internal.h"
#include "mirel/filter/preset_filters.h"
#include "mirel/filter/preset_filters_internal.h"
#include "mirel/filter/smoothing_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/point/arith.h"

namespace mirel {
namespace filter {
namespace {

using U32 = std::uint32_t;

inline int Slide(const BoxRoutines& box, U32* sums, const std::uint8_t* in, const std::uint8_t* out, int n) {
  return box.slide != nullptr ? box.slide(sums, in, out, n) : 0;
}
inline int Slide(const BoxRoutines& box, U32* sums, const std::uint16_t* in, const std::uint16_t* out, int n) {
  return box.slide16 != nullptr ? box.slide16(sums, in, out, n) : 0;
}
inline int ScaleRun(const BoxRoutines& box, const U32* lo, const U32* hi, U32 scale, std::uint8_t* dst, int n) {
  return box.scale != nullptr ? box.scale(lo, hi, scale, dst, n) : 0;
}
inline int ScaleRun(const BoxRoutines& box, const U32* lo, const U32* hi, U32 scale, std::uint16_t* dst, int n) {
  return box.scale16 != nullptr ? box.scale16(lo, hi, scale, dst, n) : 0;
}


// Column sums (and sums of squares when squares is non-null) of the rows
// clamp(y - ry) .. clamp(y + ry) of a view, for one output row y after
// another. `sums` and `squares` hold width entries each.
template <class Pix>
class ColumnSums {
  using P = typename GreyOf<Pix>::P;

 public:
  ColumnSums(const Rows<const Pix>& view, long long ry, U32* sums, U32* squares, const BoxRoutines& box)
      : v_(view), ry_(ry), sums_(sums), squares_(squares), box_(box) {}

  // The window of output row y, from nothing.
  void Start(int y) {
    const std::size_t w = static_cast<std::size_t>(v_.width);
    std::memset(sums_, 0, w * sizeof(U32));
    if (squares_ != nullptr) std::memset(squares_, 0, w * sizeof(U32));
    const long long lo = y - ry_, hi = y + ry_, last = v_.height - 1;
    // Rows clamped onto the first or last row count once per position.
    if (lo < 0) Add(0, static_cast<U32>(-lo));
    if (hi > last) Add(v_.height - 1, static_cast<U32>(hi - last));
    for (long long j = lo < 0 ? 0 : lo; j <= (hi < last ? hi : last); ++j) Add(static_cast<int>(j), 1);
  }
  // From the window of row y - 1 to that of row y.
  void Step(int y) {
    const int in = Clamp(y + ry_), out = Clamp(y - 1 - ry_);
    if (in == out) return;
    const P* a = Row(in);
    const P* b = Row(out);
    const int w = v_.width;
    int x = Slide(box_, sums_, a, b, w);
    for (; x < w; ++x) sums_[x] += static_cast<U32>(a[x]) - static_cast<U32>(b[x]);
    if (squares_ != nullptr)
      for (x = 0; x < w; ++x) squares_[x] += static_cast<U32>(a[x]) * a[x] - static_cast<U32>(b[x]) * b[x];
  }

 private:
  int Clamp(long long j) const {
    return static_cast<int>(j < 0 ? 0 : (j > v_.height - 1 ? v_.height - 1 : j));
  }
  const P* Row(int j) const { return reinterpret_cast<const P*>(v_.Row(j)); }
  void Add(int j, U32 times) {
    const P* a = Row(j);
    const int w = v_.width;
    for (int x = 0; x < w; ++x) sums_[x] += times * a[x];
    if (squares_ != nullptr)
      for (int x = 0; x < w; ++x) squares_[x] += times * (static_cast<U32>(a[x]) * a[x]);
  }

  Rows<const Pix> v_;
  long long ry_;
  U32* sums_;
  U32* squares_;
  BoxRoutines box_;
};

// The block routines for the calling thread's fast-path setting; null
// members when the pixel-by-pixel code must run.
BoxRoutines ActiveBox() {
  if (EGetMMX() == 0) return BoxRoutines{};
#if defined(MIREL_X86_SIMD)
  if (cpu::ActiveSimdLevel() >= cpu::kAVX2) return BoxAvx2();
  if (cpu::ActiveSimdLevel() >= cpu::kSSE2) return BoxSse2();
#endif
  return BoxRoutines{};
}

// prefix[x] = col[0] + ... + col[x - 1], for x in 0 .. width.
void Prefix(const U32* col, int width, U32* prefix, const BoxRoutines& box) {
  prefix[0] = 0;
  int x = box.prefix != nullptr ? box.prefix(col, width, prefix) : 0;
  U32 s = prefix[x];
  for (; x < width; ++x) prefix[x + 1] = s += col[x];
}

// The window sum at x of a row of column sums with the given prefix sums.
inline U32 WindowSum(const U32* col, const U32* prefix, int width, long long rx, int x) {
  const long long left = x - rx, right = x + rx, last = width - 1;
  U32 s = prefix[(right < last ? right : last) + 1] - prefix[left > 0 ? left : 0];
  if (left < 0) s += static_cast<U32>(-left) * col[0];
  if (right > last) s += static_cast<U32>(right - last) * col[width - 1];
  return s;
}

// The columns whose window stays in the row: [rx, width - rx).
inline void Interior(int width, long long rx, int& x0, int& x1) {
  x0 = rx < width ? static_cast<int>(rx) : width;
  x1 = rx < width ? static_cast<int>(width - rx) : 0;
  if (x1 < x0) x1 = x0;
}

// Buffers of a sliding worker, freed on every path.
struct Buffers {
  U32* sums = nullptr;
  U32* squares = nullptr;
  U32* prefix = nullptr;
  U32* prefixSq = nullptr;
  ~Buffers() {
    Free(sums);
    Free(squares);
    Free(prefix);
    Free(prefixSq);
  }
  bool Get(int width, bool withSquares) {
    const std::size_t w = static_cast<std::size_t>(width);
    sums = Allocate<U32>(w);
    prefix = Allocate<U32>(w + 1);
    if (withSquares) {
      squares = Allocate<U32>(w);
      prefixSq = Allocate<U32>(w + 1);
    }
    return sums != nullptr && prefix != nullptr && (!withSquares || (squares != nullptr && prefixSq != nullptr));
  }
};

// Runs rows(buffers, y0, y1) over bands of `height` rows of `width`
// pixels, in one band unless `banded`; each band has its buffers before any
// band starts. False when they cannot be had (nothing written then).
template <class F>
bool SlidingBands(int width, int height, bool withSquares, bool banded, double unitsPerPixel, F&& rows) {
  const Bands bands(height, banded ? RowCost(width, unitsPerPixel) : kOneBand);
  std::unique_ptr<Buffers[]> buffers(new (std::nothrow) Buffers[static_cast<std::size_t>(bands.Count())]);
  if (buffers == nullptr) return false;
  for (int b = 0; b < bands.Count(); ++b)
    if (!buffers[b].Get(width, withSquares)) return false;
  bands.Run([&](int b, int y0, int y1) { rows(buffers[b], y0, y1); });
  return true;
}

// Rows [y0, y1) of the sliding uniform filter with the buffers of a band.
// The product of a sum of 16-bit pixels and the scale wraps at 32 bits.
template <class Pix>
void UniformRows(const Rows<const Pix>& s, const Rows<Pix>& d, int rx, int ry, Buffers& buf, int y0, int y1) {
  using P = typename GreyOf<Pix>::P;
  const U32 n = static_cast<U32>(2 * ry + 1) * static_cast<U32>(2 * rx + 1);
  const U32 scale = 16777216u / n;
  const int w = s.width;
  int x0, x1;
  Interior(w, rx, x0, x1);
  const BoxRoutines box = ActiveBox();
  ColumnSums<Pix> cols(s, ry, buf.sums, nullptr, box);
  for (int y = y0; y < y1; ++y) {
    if (y == y0) cols.Start(y);
    else cols.Step(y);
    Prefix(buf.sums, w, buf.prefix, box);
    P* out = reinterpret_cast<P*>(d.Row(y));
    const U32* p = buf.prefix;
    auto pixel = [&](int x) { return static_cast<P>((WindowSum(buf.sums, p, w, rx, x) * scale) >> 24); };
    for (int x = 0; x < x0; ++x) out[x] = pixel(x);
    // Between the ends the window is [x - rx, x + rx]: a difference of two
    // prefix sums 2rx + 1 apart.
    const U32* lo = p + (x0 - rx);
    const U32* hi = lo + 2 * rx + 1;
    P* o = out + x0;
    int i = ScaleRun(box, lo, hi, scale, o, x1 - x0);
    for (; i < x1 - x0; ++i) o[i] = static_cast<P>(((hi[i] - lo[i]) * scale) >> 24);
    for (int x = x1; x < w; ++x) out[x] = pixel(x);
  }
}

// Rows [y0, y1) of the local deviation with the buffers of a band. The
// squares of 16-bit pixels fit 32 bits; their sums wrap.
template <class Pix>
void DeviationRows(const Rows<const Pix>& s, const Rows<Pix>& d, long long rx, long long ry, Buffers& buf, int y0,
                   int y1) {
  using P = typename GreyOf<Pix>::P;
  constexpr int kMax = GreyOf<Pix>::kMax;
  const U32 n = static_cast<U32>(2 * ry + 1) * static_cast<U32>(2 * rx + 1);
  const double dn = static_cast<double>(n);
  const int w = s.width;
  ColumnSums<Pix> cols(s, ry, buf.sums, buf.squares, BoxRoutines{});
  for (int y = y0; y < y1; ++y) {
    if (y == y0) cols.Start(y);
    else cols.Step(y);
    Prefix(buf.sums, w, buf.prefix, BoxRoutines{});
    Prefix(buf.squares, w, buf.prefixSq, BoxRoutines{});
    P* out = reinterpret_cast<P*>(d.Row(y));
    for (int x = 0; x < w; ++x) {
      const U32 a = WindowSum(buf.sums, buf.prefix, w, rx, x);
      const U32 b = WindowSum(buf.squares, buf.prefixSq, w, rx, x);
      const U32 v = n * b - a * a;
      const double dev = std::sqrt(static_cast<double>(v)) / dn;
      out[x] = dev >= kMax ? static_cast<P>(kMax) : static_cast<P>(dev);
    }
  }
}

}  // namespace
}  // namespace filter
}  // namespace mirel

namespace mirel {
namespace filter {
namespace {

template <class Pix>
void Uniform(const char* label, EROI<Pix>* src, EROI<Pix>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::Frame frame(label);
  if (halfY == UINT_MAX) halfY = halfX;
  if (!frame.NotVoid(src)) return;
  if (dst != nullptr && (!frame.NotVoid(dst) || !frame.SameSize(dst, src))) return;
  const bool separate = dst != nullptr && !SamePixels(src, dst);
  if (halfX == 0 && halfY == 0) {
    if (separate) ImgCopy(src, dst);
    return;
  }
  if (halfX <= 1 && halfY <= 1) {
    if (halfX == 0) ConvolUniformY(src, dst);
    else if (halfY == 0) ImgConvolUniformX(src, dst);
    else ImgConvolUniform3x3(src, dst);
    return;
  }
  if (!frame.Require(separate, E_ERROR_SAME_IMAGE)) return;
  const int w = src->GetWidth(), h = src->GetHeight();
  if (w == 0 || h == 0) return;  // no pixel, and no window to clamp the halves to
  const int rx = halfX > static_cast<unsigned>(w - 1) ? w - 1 : static_cast<int>(halfX);
  const int ry = halfY > static_cast<unsigned>(h - 1) ? h - 1 : static_cast<int>(halfY);
  // A destination that overlaps the source reads rows already written: one
  // band then.
  const Rows<const Pix> s = mirel::RowsOf(static_cast<const EROI<Pix>*>(src));
  const Rows<Pix> d = mirel::RowsOf(dst);
  if (!SlidingBands(w, h, false, !Overlap(src, dst), 4.0 * sizeof(Pix), [&](Buffers& buf, int y0, int y1) {
        UniformRows(s, d, rx, ry, buf, y0, y1);
      }))
    frame.Fail(E_ERROR_OUT_OF_MEMORY);
}

template <class Pix>
void Gaussian(const char* label, EROI<Pix>* src, EROI<Pix>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::Frame frame(label);
  if (halfY == UINT_MAX) halfY = halfX;
  if (!frame.NotVoid(src)) return;
  EROI<Pix>* target = src;
  if (dst != nullptr && !mirel::SamePixels(src, dst)) {
    if (!frame.NotVoid(dst) || !frame.SameSize(dst, src)) return;
    if (halfX == 0 && halfY == 0) return;
    if (halfX != 0 && halfY != 0) {
      ImgConvolGaussian3x3(src, dst);
      --halfX;
      --halfY;
    } else if (halfY != 0) {
      ImgConvolGaussianY(src, dst);
      --halfY;
    } else {
      ImgConvolGaussianX(src, dst);
      --halfX;
    }
    if (!frame.Ok()) return;
    target = dst;
  }
  for (; halfX != 0 && halfY != 0 && frame.Ok(); --halfX, --halfY) ImgConvolGaussian3x3(target, nullptr);
  for (; halfY != 0 && frame.Ok(); --halfY) ImgConvolGaussianY(target, nullptr);
  for (; halfX != 0 && frame.Ok(); --halfX) ImgConvolGaussianX(target, nullptr);
}

template <class Pix>
void Deviation(const char* label, const EROI<Pix>* src, EROI<Pix>* dst, unsigned int halfX, int halfY) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) || !frame.Require(halfY >= 0, E_ERROR_BAD_ARGUMENT))
    return;
  const Rows<const Pix> s = mirel::RowsOf(src);
  const Rows<Pix> d = mirel::RowsOf(dst);
  if (!SlidingBands(s.width, s.height, true, !Overlap(src, dst), 12.0 * sizeof(Pix),
                    [&](Buffers& buf, int y0, int y1) { DeviationRows(s, d, halfX, halfY, buf, y0, y1); }))
    frame.Fail(E_ERROR_OUT_OF_MEMORY);
}

}  // namespace
}  // namespace filter
}  // namespace mirel

void ImgConvolUniform(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::Uniform("ImgConvolUniform", src, dst, halfX, halfY);
}

void ImgLocalAverage(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::Uniform("ImgLocalAverage", src, dst, halfX, halfY);
}

void ImgConvolGaussian(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::Gaussian("ImgConvolGaussian", src, dst, halfX, halfY);
}

void ImgLocalDeviation(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, int halfY) {
  mirel::filter::Deviation("ImgLocalDeviation", src, dst, halfX, halfY);
}

void ImgConvolUniform(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::Uniform("ImgConvolUniform (BW16)", src, dst, halfX, halfY);
}

void ImgLocalAverage(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::Uniform("ImgLocalAverage (BW16)", src, dst, halfX, halfY);
}

void ImgConvolGaussian(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY) {
  mirel::filter::Gaussian("ImgConvolGaussian (BW16)", src, dst, halfX, halfY);
}

void ImgLocalDeviation(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, int halfY) {
  mirel::filter::Deviation("ImgLocalDeviation (BW16)", src, dst, halfX, halfY);
}

// Const sources: the same filters, never in place (see the header).
#define MIREL_CONST_SOURCE(Name, P)                                                   \
  void Name(const EROI<P>* s, EROI<P>* d, unsigned int halfX, unsigned int halfY) { \
    Name(mirel::ReadOnlySource(s, d), d, halfX, halfY);                             \
  }
MIREL_CONST_SOURCE(ImgConvolUniform, EBW8)
MIREL_CONST_SOURCE(ImgConvolGaussian, EBW8)
MIREL_CONST_SOURCE(ImgLocalAverage, EBW8)
MIREL_CONST_SOURCE(ImgConvolUniform, EBW16)
MIREL_CONST_SOURCE(ImgConvolGaussian, EBW16)
MIREL_CONST_SOURCE(ImgLocalAverage, EBW16)
#undef MIREL_CONST_SOURCE
