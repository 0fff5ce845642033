// Erosion and dilation by a box at a cost per pixel that does not depend on
// the box.
//
// The minimum over a window clipped to the ROI is the minimum over the
// unclipped window once the outside is filled with the operation's
// identity (all ones for minimum and AND, 0 for maximum and OR), so every
// row and column is padded with it and no window needs a case of its own.
// The operation is associative, commutative and idempotent, which gives two
// ways around the window size:
//
//   Rows: windows of 1, 4, 16, 64 ... pixels by widening a padded copy of
//   the row in place (a[x] = op(a[x], a[x + s], a[x + 2s], a[x + 3s])), then
//   the window of L pixels from at most four overlapping windows of s
//   pixels. About log4(L) passes over the row.
//
//   Columns: the padded column is cut into segments of L rows. For each
//   segment, prefix extrema G from its first row down and suffix extrema H
//   from its last row up; the window that starts at padded row y ends in
//   the same or the next segment and is op(H[y], G[y + L - 1]). Three
//   operations per pixel, whatever L.
//
// When two segments of whole rows fit in cache, each band of result rows
// is one walk down the source: every row is windowed into the segment
// buffer as it is read, the running prefix of the segment being read gives
// the result rows of the segment before it at once, and the segment's
// suffixes are taken when it is complete. The image is read and written
// once and the bands split over threads; each band windows the hh rows
// above and below it again. Otherwise (or when the destination lies on the
// source at another height) the rows run as one walk into the destination
// and the columns as a second walk, in strips of columns whose segments
// stay in cache.
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/morphology/morphology_internal.h"

namespace mirel {
namespace morphology {

namespace {

// The column walk keeps four segments of a strip of columns within this
// many bytes, and the one walk two segments of whole rows within half of
// it.
constexpr std::size_t kStripBudget = std::size_t{1} << 20;
thread_local std::size_t tStripBudget = 0;
std::size_t StripBudget() { return tStripBudget > 0 ? tStripBudget : kStripBudget; }

template <class T>
T Identity(int op) {
  return (op == kMin || op == kAnd) ? static_cast<T>(~T(0)) : T(0);
}

template <class T>
struct Buffer {
  T* p = nullptr;
  explicit Buffer(std::size_t n) : p(static_cast<T*>(std::malloc(std::max<std::size_t>(n, 1) * sizeof(T)))) {}
  ~Buffer() { std::free(p); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
};

template <class T>
T* RowAt(T* base, std::ptrdiff_t pitch, int y) {
  using Byte = std::conditional_t<std::is_const<T>::value, const unsigned char, unsigned char>;
  return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + pitch * y);
}

// Elements of slack behind a doubling buffer: the doubling steps run over
// whole multiples of 64 bytes, so no step has a tail.
constexpr int kSlack = 64;

inline int RoundUp64(int n, int size) {
  const int per = 64 / size;
  return (n + per - 1) / per * per;
}

// One row: the window of 2 hw + 1 pixels by doubling a padded copy in buf
// (w + 2 hw + kSlack elements), into out. in and out may be the same row.
template <class T>
void WindowRow(int op, const T* in, T* out, int w, int hw, T* buf, const RowKernels<T>& k) {
  const T id = Identity<T>(op);
  const int n = w + 2 * hw, len = 2 * hw + 1;
  std::fill(buf, buf + hw, id);
  std::memcpy(buf + hw, in, static_cast<std::size_t>(w) * sizeof(T));
  std::fill(buf + hw + w, buf + n, id);
  int s = 1;
  for (; 4 * s <= len; s *= 4)
    k.four[op](buf, buf + s, buf + 2 * s, buf + 3 * s, buf, RoundUp64(n - 4 * s + 1, static_cast<int>(sizeof(T))));
  // len < 4 s: at most four windows of s cover the window of len.
  k.four[op](buf, buf + std::min(s, len - s), buf + std::min(2 * s, len - s), buf + (len - s), out, w);
}

// A doubling buffer for rows of w pixels, its slack filled once.
template <class T>
struct RowBuffer : Buffer<T> {
  RowBuffer(int op, int w, int hw) : Buffer<T>(static_cast<std::size_t>(w) + 2 * static_cast<std::size_t>(hw) + kSlack) {
    if (this->p != nullptr) std::fill(this->p, this->p + w + 2 * hw + kSlack, Identity<T>(op));
  }
};

// The row walk, in bands of rows when each row of dst is computed from its
// own row of src alone (`banded`). Every band's buffer is had before any
// row is written.
template <class T>
bool Rows(int op, const T* src, std::ptrdiff_t sp, T* dst, std::ptrdiff_t dp, int w, int h, int hw,
          const RowKernels<T>& k, bool banded) {
  const Bands bands(h, banded ? RowCost(w, 2.0 * sizeof(T)) : kOneBand);
  std::vector<std::unique_ptr<RowBuffer<T>>> bufs;
  for (int b = 0; b < bands.Count(); ++b) {
    bufs.push_back(std::make_unique<RowBuffer<T>>(op, w, hw));
    if (bufs.back()->p == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return false;
    }
  }
  bands.Run([&](int b, int y0, int y1) {
    T* buf = bufs[static_cast<std::size_t>(b)]->p;
    for (int y = y0; y < y1; ++y) WindowRow(op, RowAt(src, sp, y), RowAt(dst, dp, y), w, hw, buf, k);
  });
  return true;
}

// The column walk over columns [xa, xb) of the image.
template <class T>
bool Columns(int op, T* img, std::ptrdiff_t pitch, int xa, int xb, int h, int hh, const RowKernels<T>& k) {
  const int w = xb - xa;
  const int len = 2 * hh + 1;
  const int padded = h + 2 * hh;
  const std::size_t budget = StripBudget() / (4 * sizeof(T) * static_cast<std::size_t>(len));
  const int strip = static_cast<int>(std::max<std::size_t>(std::min<std::size_t>(budget, w), 64));
  const std::size_t seg = static_cast<std::size_t>(len) * strip;
  Buffer<T> gCur(seg), hCur(seg), gNext(seg), hNext(seg), idRow(strip);
  if (!gCur.p || !hCur.p || !gNext.p || !hNext.p || !idRow.p) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return false;
  }
  std::fill(idRow.p, idRow.p + strip, Identity<T>(op));
  const auto pair = k.pair[op];
  for (int x0 = xa; x0 < xb; x0 += strip) {
    const int sw = std::min(strip, xb - x0);
    auto row = [&](int i) -> const T* {
      return (i < hh || i >= hh + h) ? idRow.p : RowAt(img, pitch, i - hh) + x0;
    };
    // Prefix and suffix extrema of the segment that starts at padded row j0.
    auto segment = [&](int j0, T* g, T* s) {
      const int j1 = std::min(j0 + len, padded);
      std::memcpy(g, row(j0), static_cast<std::size_t>(sw) * sizeof(T));
      for (int i = j0 + 1; i < j1; ++i)
        pair(g + static_cast<std::size_t>(i - j0 - 1) * strip, row(i), g + static_cast<std::size_t>(i - j0) * strip, sw);
      T* last = s + static_cast<std::size_t>(j1 - 1 - j0) * strip;
      std::memcpy(last, row(j1 - 1), static_cast<std::size_t>(sw) * sizeof(T));
      for (int i = j1 - 2; i >= j0; --i)
        pair(s + static_cast<std::size_t>(i + 1 - j0) * strip, row(i), s + static_cast<std::size_t>(i - j0) * strip, sw);
    };
    T *gc = gCur.p, *hc = hCur.p, *gn = gNext.p, *hn = hNext.p;
    segment(0, gc, hc);
    for (int j0 = 0; j0 < h; j0 += len) {
      if (j0 + len < padded) segment(j0 + len, gn, hn);
      const int yEnd = std::min(j0 + len, h);
      for (int y = j0; y < yEnd; ++y) {
        const int e = y + 2 * hh;  // last padded row of the window
        const T* g = e < j0 + len ? gc + static_cast<std::size_t>(e - j0) * strip
                                  : gn + static_cast<std::size_t>(e - j0 - len) * strip;
        pair(hc + static_cast<std::size_t>(y - j0) * strip, g, RowAt(img, pitch, y) + x0, sw);
      }
      std::swap(gc, gn);
      std::swap(hc, hn);
    }
  }
  return true;
}

// The one-walk form over bands of result rows.
template <class T>
class Stream {
 public:
  Stream(int op, const T* src, std::ptrdiff_t sp, T* dst, std::ptrdiff_t dp, int w, int h, int hw, int hh,
         const RowKernels<T>& k)
      : op_(op), src_(src), sp_(sp), dst_(dst), dp_(dp), w_(w), h_(h), hw_(hw), hh_(hh), len_(2 * hh + 1),
        stride_(static_cast<std::size_t>(RoundUp64(w, static_cast<int>(sizeof(T))))), k_(k) {}

  // Bytes of the two segments that a band keeps in cache.
  std::size_t SegmentBytes() const { return 2 * static_cast<std::size_t>(len_) * stride_ * sizeof(T); }

  // Runs the bands; false with 1303 standing when their buffers cannot be
  // had, nothing written then.
  bool Run() {
    // Bands at least hh rows high, so that the rows windowed twice at their
    // edges stay a fraction of the work.
    const int unit = std::max(hh_, 1);
    const int units = (h_ + unit - 1) / unit;
    const Bands bands(units, RowCost(w_, 3.0 * sizeof(T)) * unit);
    // A destination on the source's pixels (in place, at the same height)
    // overwrites rows that the next and previous bands read: each band
    // reads those from copies taken before any band writes.
    const bool keepEdges = bands.Count() > 1 && Touches();
    const std::size_t doubling = static_cast<std::size_t>(w_) + 2 * static_cast<std::size_t>(hw_) + kSlack;
    const std::size_t work = (2 * static_cast<std::size_t>(len_) + 1) * stride_ + doubling;
    const std::size_t edges = keepEdges ? 2 * static_cast<std::size_t>(hh_) * stride_ : 0;
    // One block: a working buffer for each band that may run at once,
    // handed to a band as it starts, and the edge copies of every band.
    // Repeated calls then reuse the same heap memory rather than fault in
    // fresh pages for many small buffers.
    const int slots = bands.Concurrent();
    Buffer<T> block(work * static_cast<std::size_t>(slots) + edges * static_cast<std::size_t>(bands.Count()));
    if (block.p == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return false;
    }
    std::unique_ptr<std::atomic<bool>[]> busy(new std::atomic<bool>[static_cast<std::size_t>(slots)]);
    for (int i = 0; i < slots; ++i) {
      busy[static_cast<std::size_t>(i)] = false;
      T* dbl = block.p + work * static_cast<std::size_t>(i) + (work - doubling);
      std::fill(dbl, dbl + doubling, Identity<T>(op_));
    }
    T* const edgeBase = block.p + work * static_cast<std::size_t>(slots);
    for (int b = 0; keepEdges && b < bands.Count(); ++b) {
      const int y0 = Begin(bands, b), y1 = End(bands, b);
      for (int r = std::max(y0 - hh_, 0); r < std::min(y1 + hh_, h_); ++r)
        if (r < y0 || r >= y1)
          std::memcpy(Edge(edgeBase + edges * static_cast<std::size_t>(b), r, y0, y1), RowAt(src_, sp_, r),
                      static_cast<std::size_t>(w_) * sizeof(T));
    }
    bands.Run([&](int b, int, int) {
      int slot = 0;
      for (bool idle = false; !busy[static_cast<std::size_t>(slot)].compare_exchange_strong(idle, true);
           idle = false)
        slot = (slot + 1) % slots;
      T* mem = block.p + work * static_cast<std::size_t>(slot);
      Band(mem, mem + (work - doubling), keepEdges ? edgeBase + edges * static_cast<std::size_t>(b) : nullptr,
           Begin(bands, b), End(bands, b));
      busy[static_cast<std::size_t>(slot)] = false;
    });
    return true;
  }

 private:
  int Begin(const Bands& bands, int b) const { return bands.Begin(b) * std::max(hh_, 1); }
  int End(const Bands& bands, int b) const { return std::min(bands.End(b) * std::max(hh_, 1), h_); }

  // True when the destination's rows may share bytes with the source's.
  bool Touches() const {
    auto span = [&](const void* base, std::ptrdiff_t pitch) {
      const auto first = reinterpret_cast<std::uintptr_t>(base);
      const auto last = first + static_cast<std::uintptr_t>(pitch * (h_ - 1));
      return std::make_pair(std::min(first, last), std::max(first, last) + w_ * sizeof(T));
    };
    const auto s = span(src_, sp_), d = span(dst_, dp_);
    return s.first < d.second && d.first < s.second;
  }

  // Where the copy of source row r, outside band [y0, y1), is kept.
  T* Edge(T* edges, int r, int y0, int y1) const {
    const int i = r < y0 ? r - (y0 - hh_) : hh_ + (r - y1);
    return edges + static_cast<std::size_t>(i) * stride_;
  }

  // Result rows [y0, y1) from padded rows [y0, y1 + 2 hh): padded row p is
  // source row p - hh, the identity outside the source.
  void Band(T* mem, T* dbl, T* edges, int y0, int y1) const {
    const auto pair = k_.pair[op_];
    const std::size_t n = static_cast<std::size_t>(w_) * sizeof(T);
    auto load = [&](int p, T* out) {
      const int r = p - hh_;
      if (r < 0 || r >= h_) {
        std::fill(out, out + w_, Identity<T>(op_));
        return;
      }
      const T* in = edges != nullptr && (r < y0 || r >= y1) ? Edge(edges, r, y0, y1) : RowAt(src_, sp_, r);
      if (hw_ > 0) WindowRow(op_, in, out, w_, hw_, dbl, k_);
      else std::memcpy(out, in, n);
    };
    // Suffix extrema of a segment, in place.
    auto suffixes = [&](T* seg) {
      for (int j = len_ - 2; j >= 0; --j) pair(seg + (j + 1) * stride_, seg + j * stride_, seg + j * stride_, w_);
    };
    T* cur = mem;
    T* next = mem + static_cast<std::size_t>(len_) * stride_;
    T* prefix = next + static_cast<std::size_t>(len_) * stride_;
    for (int j = 0; j < len_; ++j) load(y0 + j, cur + j * stride_);
    suffixes(cur);
    for (int start = y0;; start += len_) {
      // cur: suffixes of padded rows [start, start + len). The window of
      // result row start is the whole segment; that of start + j + 1 is its
      // suffix from j + 1 and the prefix of the next segment to row j.
      std::memcpy(RowAt(dst_, dp_, start), cur, n);
      const int outputs = std::min(len_ - 1, y1 - start - 1);
      const T* g = nullptr;
      for (int j = 0; j < outputs; ++j) {
        T* row = next + j * stride_;
        load(start + len_ + j, row);
        if (j == 0) {
          g = row;
        } else {
          pair(g, row, prefix, w_);
          g = prefix;
        }
        pair(cur + (j + 1) * stride_, g, RowAt(dst_, dp_, start + j + 1), w_);
      }
      if (start + len_ >= y1) return;
      load(start + 2 * len_ - 1, next + (len_ - 1) * stride_);
      suffixes(next);
      std::swap(cur, next);
    }
  }

  int op_;
  const T* src_;
  std::ptrdiff_t sp_;
  T* dst_;
  std::ptrdiff_t dp_;
  int w_, h_, hw_, hh_, len_;
  std::size_t stride_;
  const RowKernels<T>& k_;
};

}  // namespace

template <class T>
bool RunningBox(int op, const T* src, std::ptrdiff_t srcPitch, T* dst, std::ptrdiff_t dstPitch, int w,
                int h, int hw, int hh, const RowKernels<T>& k, bool rowsBanded) {
  if (w <= 0 || h <= 0) return true;
  if (hh > 0 && rowsBanded) {
    Stream<T> stream(op, src, srcPitch, dst, dstPitch, w, h, hw, hh, k);
    if (stream.SegmentBytes() <= StripBudget() / 2) return stream.Run();
  }
  if (hw > 0) {
    if (!Rows(op, src, srcPitch, dst, dstPitch, w, h, hw, k, rowsBanded)) return false;
  } else if (src != dst) {
    // memmove: the destination may lie on the source's rows, shifted.
    for (int y = 0; y < h; ++y)
      std::memmove(RowAt(dst, dstPitch, y), RowAt(src, srcPitch, y), static_cast<std::size_t>(w) * sizeof(T));
  }
  if (hh == 0) return true;
  // Columns are independent of each other: the column walk runs in bands
  // of whole 64-byte groups of columns, each thread on lines of its own.
  constexpr int kGroup = 64 / static_cast<int>(sizeof(T));
  const int groups = (w + kGroup - 1) / kGroup;
  std::atomic<bool> ok{true};
  RunBands(groups, RowCost(h * kGroup, 2.0 * sizeof(T)), [&](int g0, int g1) {
    if (!Columns(op, dst, dstPitch, g0 * kGroup, std::min(g1 * kGroup, w), h, hh, k)) ok = false;
  });
  return ok;
}

template bool RunningBox<std::uint8_t>(int, const std::uint8_t*, std::ptrdiff_t, std::uint8_t*, std::ptrdiff_t,
                                       int, int, int, int, const RowKernels<std::uint8_t>&, bool);
template bool RunningBox<std::uint16_t>(int, const std::uint16_t*, std::ptrdiff_t, std::uint16_t*,
                                        std::ptrdiff_t, int, int, int, int, const RowKernels<std::uint16_t>&, bool);

}  // namespace morphology

namespace testing {
void SetRunningBoxBudget(int bytes) { morphology::tStripBudget = bytes > 0 ? static_cast<std::size_t>(bytes) : 0; }
}  // namespace testing
}  // namespace mirel
