// Interlaced frames and the sharpness score, one body for EBW8, EBW16 and
// EC24. Rows are handled as runs of elements: a byte for EBW8, a 16-bit
// value for EBW16, each of the three bytes for EC24. Every operation works
// row by row, so any band of rows can be done on its own, and runs in bands
// unless a destination on the source's image could read rows it has
// written.
#include "mirel/geometry/frames.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"

namespace mirel {
namespace geometry {
namespace {

struct Labels {
  const char* get;
  const char* set;
  const char* realign;
  const char* rebuild;
  const char* swap;
  const char* match;
  const char* focus;
};

// Sums of squared differences. EBW8 and EC24 wrap at 32 bits. EBW16 takes
// each square in 32 bits as a signed number and adds it into 64 bits.
struct NarrowSquares {
  using Sum = std::uint32_t;
  static Sum Square(int d) { return static_cast<Sum>(d * d); }
  static double AsDouble(Sum s) { return static_cast<double>(s); }
};
struct WideSquares {
  using Sum = std::uint64_t;  // added as signed, compared as unsigned
  static Sum Square(int d) {
    const std::uint32_t u = static_cast<std::uint32_t>(d) * static_cast<std::uint32_t>(d);
    return static_cast<Sum>(static_cast<std::int64_t>(static_cast<std::int32_t>(u)));
  }
  static double AsDouble(Sum s) { return static_cast<double>(static_cast<std::int64_t>(s)); }
};

template <class T>
struct Kind;
template <>
struct Kind<EBW8> {
  using E = std::uint8_t;
  using Squares = NarrowSquares;
  static constexpr int kPer = 1;
  static constexpr Labels kLabels{"ImgGetFrame ( EBW8)",     "ImgSetFrame ( EBW8)",   "ImgRealignFrame ( EBW8)",
                                  "ImgRebuildFrame ( EBW8)", "ImgSwapFrames ( EBW8)", "ImgMatchFrames ( EBW8)",
                                  "ImgFocusing ( BW8)"};
};
template <>
struct Kind<EBW16> {
  using E = std::uint16_t;
  using Squares = WideSquares;
  static constexpr int kPer = 1;
  static constexpr Labels kLabels{"ImgGetFrame ( EBW16)",     "ImgSetFrame ( EBW16)",   "ImgRealignFrame ( EBW16)",
                                  "ImgRebuildFrame ( EBW16)", "ImgSwapFrames ( EBW16)", "ImgMatchFrames ( EBW16)",
                                  "ImgFocusing ( BW16)"};
};
template <>
struct Kind<EC24> {
  using E = std::uint8_t;
  using Squares = NarrowSquares;
  static constexpr int kPer = 3;
  static constexpr Labels kLabels{"ImgGetFrame ( EC24)",     "ImgSetFrame ( EC24)",   "ImgRealignFrame ( EC24)",
                                  "ImgRebuildFrame ( EC24)", "ImgSwapFrames ( EC24)", "ImgMatchFrames ( EC24)",
                                  "ImgFocusing ( C24)"};
};

// Rows of elements of a ROI.
template <class T, class E = typename Kind<T>::E>
Rows<E> Elements(EROI<T>* roi) {
  return Rows<E>{reinterpret_cast<E*>(roi->GetImagePtr(0, 0)), roi->GetRowPitch(), roi->GetWidth() * Kind<T>::kPer,
                 roi->GetHeight()};
}
template <class T, class E = typename Kind<T>::E>
Rows<const E> Elements(const EROI<T>* roi) {
  return Rows<const E>{reinterpret_cast<const E*>(roi->GetImagePtr(0, 0)), roi->GetRowPitch(),
                       roi->GetWidth() * Kind<T>::kPer, roi->GetHeight()};
}

template <class T>
std::size_t RowBytes(const EROI<T>* roi) {
  return static_cast<std::size_t>(roi->GetWidth()) * sizeof(T);
}

// The height of frame 0 or 1 of an image of height h.
int FrameHeight(int h, int frame) { return frame != 0 ? h / 2 : (h + 1) / 2; }

template <class T>
void GetFrame(const EROI<T>* src, EROI<T>* dst, int frame) {
  Frame f(Kind<T>::kLabels.get);
  if (!f.NotVoid(src, dst)) return;
  const int h = src->GetHeight();
  if (!f.Require(dst->GetWidth() == src->GetWidth() && dst->GetHeight() == FrameHeight(h, frame),
                 E_ERROR_SIZE_MISMATCH))
    return;
  const Rows<const EBW8> s{reinterpret_cast<const EBW8*>(src->GetImagePtr(0, 0)), src->GetRowPitch(), 0, h};
  const Rows<EBW8> d{reinterpret_cast<EBW8*>(dst->GetImagePtr(0, 0)), dst->GetRowPitch(), 0, dst->GetHeight()};
  // Row by row with memmove: a source and destination on one image may share rows.
  const int odd = frame != 0 ? 1 : 0;
  RunBands(dst->GetHeight(), Overlap(src, dst) ? kOneBand : RowCost(src->GetWidth(), 2.0 * sizeof(T)),
           [&](int j0, int j1) {
             for (int j = j0; j < j1; ++j) std::memmove(d.Row(j), s.Row(2 * j + odd), RowBytes(src));
           });
}

template <class T>
void SetFrame(const EROI<T>* src, EROI<T>* dst, int frame) {
  Frame f(Kind<T>::kLabels.set);
  if (!f.NotVoid(src, dst)) return;
  const int h = dst->GetHeight();
  if (!f.Require(src->GetWidth() == dst->GetWidth() && src->GetHeight() == FrameHeight(h, frame),
                 E_ERROR_SIZE_MISMATCH))
    return;
  const Rows<const EBW8> s{reinterpret_cast<const EBW8*>(src->GetImagePtr(0, 0)), src->GetRowPitch(), 0, 0};
  const Rows<EBW8> d{reinterpret_cast<EBW8*>(dst->GetImagePtr(0, 0)), dst->GetRowPitch(), 0, h};
  const int odd = frame != 0 ? 1 : 0;
  RunBands(src->GetHeight(), Overlap(src, dst) ? kOneBand : RowCost(src->GetWidth(), 2.0 * sizeof(T)),
           [&](int j0, int j1) {
             for (int j = j0; j < j1; ++j) std::memmove(d.Row(2 * j + odd), s.Row(j), RowBytes(src));
           });
}

// The first row written by Realign and Rebuild: the frame that stays is the
// low bit of `frame`, and the other parity is written.
int FirstWritten(unsigned int frame) { return static_cast<int>(~frame & 1u); }

template <class T>
void RealignFrame(const EROI<T>* src, EROI<T>* dst, int shift, unsigned int frame) {
  Frame f(Kind<T>::kLabels.realign);
  if (!f.NotVoid(src, dst) || !f.SameSize(src, dst)) return;
  const int w = src->GetWidth();
  // A shift of the width or more would fill from outside the row.
  if (!f.Require(shift < w && shift > -w, E_ERROR_BAD_ARGUMENT)) return;
  const std::size_t px = sizeof(T);
  const std::size_t moved = static_cast<std::size_t>(w - (shift < 0 ? -shift : shift)) * px;
  // Rows as plain bytes, whatever the pixel type.
  const EGenericROI* gs = src;
  EGenericROI* gd = dst;
  RowwiseBands(dst, {src}, 2.0 * sizeof(T), [&](int y0, int y1) {
    for (int y = y0 + ((y0 ^ FirstWritten(frame)) & 1); y < y1; y += 2) {
      const unsigned char* a = static_cast<const unsigned char*>(gs->GetImagePtr(0, y));
      unsigned char* b = static_cast<unsigned char*>(gd->GetImagePtr(0, y));
      if (shift >= 0) {
        std::memmove(b + static_cast<std::size_t>(shift) * px, a, moved);
        if (shift == 0) continue;
        unsigned char fill[sizeof(T)];
        std::memcpy(fill, a + px, px);  // column 1, read after the move
        for (int x = 0; x < shift; ++x) std::memcpy(b + static_cast<std::size_t>(x) * px, fill, px);
      } else {
        std::memmove(b, a + static_cast<std::size_t>(-shift) * px, moved);
        unsigned char fill[sizeof(T)];
        std::memcpy(fill, b + moved - px, px);  // the last pixel moved: source column w - 1
        for (int x = w + shift; x < w; ++x) std::memcpy(b + static_cast<std::size_t>(x) * px, fill, px);
      }
    }
  });
}

template <class T>
void RebuildFrame(const EROI<T>* src, EROI<T>* dst, unsigned int frame) {
  Frame f(Kind<T>::kLabels.rebuild);
  if (!f.NotVoid(src, dst) || !f.SameSize(src, dst)) return;
  const int h = src->GetHeight(), first = FirstWritten(frame);
  if (!f.Require(h > 1 || first >= h, E_ERROR_BAD_ARGUMENT)) return;  // a row with no neighbour
  using E = typename Kind<T>::E;
  const Rows<const E> s = Elements(src);
  const Rows<E> d = Elements(dst);
  // Only rows of the other parity are read: in place, no band reads a row
  // that another writes.
  RowwiseBands(dst, {src}, 3.0 * sizeof(E), [&](int y0, int y1) {
    for (int y = y0 + ((y0 ^ first) & 1); y < y1; y += 2) {
      const E* up = s.Row(y > 0 ? y - 1 : y + 1);
      const E* down = s.Row(y + 1 < h ? y + 1 : y - 1);
      E* out = d.Row(y);
      for (int i = 0; i < s.width; ++i) out[i] = static_cast<E>((up[i] + down[i]) >> 1);
    }
  });
}

template <class T>
void SwapFrames(const EROI<T>* src, EROI<T>* dst) {
  Frame f(Kind<T>::kLabels.swap);
  if (!f.NotVoid(src, dst) || !f.SameSize(src, dst)) return;
  using E = typename Kind<T>::E;
  const Rows<const E> s = Elements(src);
  const Rows<E> d = Elements(dst);
  // Bands of row pairs.
  const double cost = RowsIndependent(src, dst) ? RowCost(2 * s.width, 2.0 * sizeof(E)) : kOneBand;
  RunBands(s.height / 2, cost, [&](int p0, int p1) {
    for (int y = 2 * p0; y < 2 * p1; y += 2) {
      const E* a = s.Row(y);
      const E* b = s.Row(y + 1);
      E* p = d.Row(y);
      E* q = d.Row(y + 1);
      for (int i = 0; i < s.width; ++i) {
        const E old = a[i];  // read both before writing: legal in place
        p[i] = b[i];
        q[i] = old;
      }
    }
  });
}

template <class T>
void MatchFrames(const EROI<T>* src, int row, int minShift, int maxShift, int& best) {
  Frame f(Kind<T>::kLabels.match);
  if (!f.NotVoid(src)) return;
  const int w = src->GetWidth(), h = src->GetHeight();
  const long long range = static_cast<long long>(maxShift) - minShift;
  if (!f.Require(minShift <= maxShift && range <= w, E_ERROR_BAD_ARGUMENT)) return;
  if (!f.Require(row >= 0 && row < h - 1, E_ERROR_BAD_RANGE)) return;  // row + 1 would pass INT_MAX
  using E = typename Kind<T>::E;
  using Q = typename Kind<T>::Squares;
  constexpr int kPer = Kind<T>::kPer;
  const Rows<const E> s = Elements(src);
  const E* a = s.Row(row);
  const E* b = s.Row(row + 1);
  // The same columns for every shift: x - s stays inside the row.
  const long long x0 = maxShift > 0 ? maxShift : 0;
  const long long x1 = static_cast<long long>(w) + (minShift < 0 ? minShift : 0);
  typename Q::Sum least = ~typename Q::Sum{0};
  for (long long shift = minShift; shift <= maxShift; ++shift) {
    typename Q::Sum sum = 0;
    for (long long x = x0; x < x1; ++x)
      for (int c = 0; c < kPer; ++c)
        sum += Q::Square(static_cast<int>(a[x * kPer + c]) - static_cast<int>(b[(x - shift) * kPer + c]));
    if (sum < least) {
      least = sum;
      best = static_cast<int>(shift);
    }
  }
}

template <class T>
float Focusing(const EROI<T>* src) {
  Frame f(Kind<T>::kLabels.focus);
  if (!f.NotVoid(src)) return 0.0f;
  using E = typename Kind<T>::E;
  using Q = typename Kind<T>::Squares;
  constexpr int kPer = Kind<T>::kPer;
  const Rows<const E> s = Elements(src);
  auto rowSum = [&](int y) {
    const E* p = s.Row(y);
    const E* below = s.Row(y + 1);
    typename Q::Sum sum = 0;
    for (int i = 0; i + kPer < s.width; ++i) {  // all but the last pixel
      sum += Q::Square(static_cast<int>(p[i]) - static_cast<int>(p[i + kPer]));
      sum += Q::Square(static_cast<int>(p[i]) - static_cast<int>(below[i]));
    }
    return Q::AsDouble(sum);
  };
  // The sum of each row in bands, added up in row order afterwards: the
  // same total as one walk. Without room for the row sums, one walk.
  const int rows = s.height - 1;
  const Bands bands(rows, RowCost(s.width, 3.0 * sizeof(E)));
  std::unique_ptr<double[]> sums(bands.Count() > 1 ? new (std::nothrow) double[static_cast<std::size_t>(rows)]
                                                   : nullptr);
  double total = 0;
  if (sums != nullptr) {
    bands.Run([&](int, int y0, int y1) {
      for (int y = y0; y < y1; ++y) sums[y] = rowSum(y);
    });
    for (int y = 0; y < rows; ++y) total += sums[y];
  } else {
    for (int y = 0; y < rows; ++y) total += rowSum(y);
  }
  return static_cast<float>(std::sqrt(total / (static_cast<double>(s.width) * s.height)));
}

}  // namespace
}  // namespace geometry
}  // namespace mirel

#define MIREL_FRAME_FORMS(T)                                                                                        \
  void ImgGetFrame(const EROI<T>* src, EROI<T>* dst, int frame) { mirel::geometry::GetFrame(src, dst, frame); }     \
  void ImgSetFrame(const EROI<T>* src, EROI<T>* dst, int frame) { mirel::geometry::SetFrame(src, dst, frame); }     \
  void ImgRealignFrame(const EROI<T>* src, EROI<T>* dst, int shift, unsigned int frame) {                          \
    mirel::geometry::RealignFrame(src, dst, shift, frame);                                                         \
  }                                                                                                                 \
  void ImgRebuildFrame(const EROI<T>* src, EROI<T>* dst, unsigned int frame) {                                     \
    mirel::geometry::RebuildFrame(src, dst, frame);                                                                \
  }                                                                                                                 \
  void ImgSwapFrames(const EROI<T>* src, EROI<T>* dst) { mirel::geometry::SwapFrames(src, dst); }                   \
  void ImgMatchFrames(const EROI<T>* src, int firstRow, int minShift, int maxShift, int& best) {                   \
    mirel::geometry::MatchFrames(src, firstRow, minShift, maxShift, best);                                         \
  }                                                                                                                 \
  float ImgFocusing(const EROI<T>* src) { return mirel::geometry::Focusing(src); }

MIREL_FRAME_FORMS(EBW8)
MIREL_FRAME_FORMS(EBW16)
MIREL_FRAME_FORMS(EC24)
#undef MIREL_FRAME_FORMS
