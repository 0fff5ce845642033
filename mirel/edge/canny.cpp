// The Canny chain: suppression, the threshold split, the two followers and
// the detector that strings them together.
#include "mirel/edge/canny.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "mirel/edge/gradient.h"
#include "mirel/edge/gradient_internal.h"
#include "mirel/filter/fixed_filters.h"
#include "mirel/filter/preset_filters.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/histogram/histogram.h"
#include "mirel/histogram/histogram_vector.h"
#include "mirel/morphology/median.h"
#include "mirel/point/arith.h"

namespace mirel {
namespace edge {
namespace {

using Byte = std::uint8_t;

inline int Abs(int v) { return v < 0 ? -v : v; }
inline int Sign(int v) { return (v > 0) - (v < 0); }

// ---------------------------------------------------------------- suppression

// Direction classes by index: 0, 45, 90, 135.
constexpr unsigned kClassValue[4] = {0, 45, 90, 135};

// The class index of every (|dx|, |dy|) below 256, before the signs: 0 for
// class 0, 2 for class 90, 4 where the signs decide between 45 (index 1,
// equal signs) and 135 (index 3). kBySigns[t + differ] finishes it.
struct ClassTable {
  Byte cls[256 * 256];
  ClassTable() {
    for (int ax = 0; ax < 256; ++ax)
      for (int ay = 0; ay < 256; ++ay) cls[ax * 256 + ay] = ax > 2.42 * ay ? 0 : ay > 2.42 * ax ? 2 : 4;
  }
};
constexpr Byte kBySigns[6] = {0, 0, 2, 2, 1, 3};

const ClassTable& Classes() {
  static const ClassTable table;
  return table;
}

inline int Dx(std::uint32_t p) { return static_cast<std::int16_t>(p & 0xFFFFu); }
inline int Dy(std::uint32_t p) { return static_cast<std::int16_t>(p >> 16); }
// The magnitude keeps its low eight bits, which matters only for pairs
// beyond -255..255 (never made from an 8-bit image).
inline Byte Magnitude(std::uint32_t p) { return static_cast<Byte>((Abs(Dx(p)) + Abs(Dy(p))) >> 1); }

// The class index of a pair: from the table, or by the comparisons
// themselves for components beyond its range.
inline int ClassIndexOf(const ClassTable& t, int dx, int dy) {
  const int ax = Abs(dx), ay = Abs(dy);
  const int differ = Sign(dx) != Sign(dy);
  if ((ax | ay) < 256) return kBySigns[t.cls[ax * 256 + ay] + differ];
  if (ax > 2.42 * ay) return 0;
  if (ay > 2.42 * ax) return 2;
  return differ ? 3 : 1;
}

// Rows [y0, y1) of the suppression. Three rows of magnitudes with a zero
// column at each side are kept in `mags` (3 * (w + 2) bytes). The two
// neighbours of each class are read at offsets from the pixel's own
// magnitude, so a pixel takes no branch on its class.
//
// pairsOf(y) gives the pairs of row y (asked for rows y0 - 1 .. y1, in
// order), dirRow(y) the classes' row and dirDone(y) is called once it is
// written.
template <class PairsOf, class DirRow, class DirDone>
void SuppressRows(PairsOf&& pairsOf, DirRow&& dirRow, DirDone&& dirDone, const Rows<EBW8>& mag, int y0, int y1,
                  Byte* mags, const EdgeRowFns& fns) {
  const int w = mag.width, h = mag.height;
  const ClassTable& classes = Classes();
  auto fill = [&](Byte* row, int y) {
    row[0] = row[w + 1] = 0;
    if (y < 0 || y >= h) {
      std::memset(row + 1, 0, static_cast<size_t>(w));
      return;
    }
    const std::uint32_t* p = pairsOf(y);
    int x = fns.magnitude != nullptr ? fns.magnitude(p, row + 1, 0, w) : 0;
    for (; x < w; ++x) row[x + 1] = Magnitude(p[x]);
  };
  Byte* above = mags;
  Byte* here = mags + (w + 2);
  Byte* below = mags + 2 * (w + 2);
  fill(above, y0 - 1);
  fill(here, y0);
  for (int y = y0; y < y1; ++y) {
    fill(below, y + 1);
    const std::ptrdiff_t up = above - here, down = below - here;
    // Neighbours A and B of classes 0, 45, 90, 135.
    const std::ptrdiff_t offA[4] = {1, up - 1, up, down - 1};
    const std::ptrdiff_t offB[4] = {-1, down + 1, down, up + 1};
    const std::uint32_t* p = pairsOf(y);
    std::uint32_t* d = dirRow(y);
    Byte* out = reinterpret_cast<Byte*>(mag.Row(y));
    int x = 0;
    if (fns.suppress != nullptr) x = fns.suppress(p, above + 1, here + 1, below + 1, d, out, 0, w);
    for (; x < w; ++x) {
      const int c = ClassIndexOf(classes, Dx(p[x]), Dy(p[x]));
      const Byte* at = here + x + 1;
      const Byte m = *at, a = at[offA[c]], b = at[offB[c]];
      d[x] = kClassValue[c];
      out[x] = static_cast<Byte>(m >= a && m >= b ? m : 0);
    }
    dirDone(y);
    Byte* t = above;
    above = here;
    here = below;
    below = t;
  }
}

// ---------------------------------------------------------------- thresholds

struct Thresholds {
  int low = 0, high = 0;
};

// The three-class split of a 256-bin histogram.
Thresholds SplitThreeClasses(const unsigned int* h) {
  long long n = 0, s = 0;
  for (int i = 0; i < 256; ++i) n += h[i], s += static_cast<long long>(i) * h[i];
  Thresholds t;
  float best = n > 0 ? static_cast<float>(static_cast<double>(s) * static_cast<double>(s) / static_cast<double>(n))
                     : 0.0f;
  auto term = [](long long sum, long long count) {
    return static_cast<double>(sum) * static_cast<double>(sum) / static_cast<double>(count);
  };
  long long n1 = 0, s1 = 0;
  for (int t1 = 0; t1 < 256; ++t1) {
    if (n1 > 0) {
      long long n2 = 0, s2 = 0, n3 = n - n1, s3 = s - s1;
      for (int t2 = t1; t2 < 256; ++t2) {
        if (n2 > 0 && n3 > 0) {
          float score = static_cast<float>(term(s1, n1));
          score = static_cast<float>(score + term(s2, n2));
          score = static_cast<float>(score + term(s3, n3));
          if (score > best) {
            best = score;
            t.low = t1;
            t.high = t2;
          }
        }
        n2 += h[t2], s2 += static_cast<long long>(t2) * h[t2];
        n3 -= h[t2], s3 -= static_cast<long long>(t2) * h[t2];
      }
    }
    n1 += h[t1], s1 += static_cast<long long>(t1) * h[t1];
  }
  return t;
}

// ---------------------------------------------------------------- followers

struct Offset {
  int dx, dy;
};

// Index of a direction class in the followers' tables; -1 for a value that
// is no class, which no walk or growth leaves.
inline int ClassIndex(unsigned cls) {
  switch (cls) {
    case 0: return 0;
    case 45: return 1;
    case 90: return 2;
    case 135: return 3;
    default: return -1;
  }
}

// The magnitudes a follower reads and the destination it marks.
struct FollowImages {
  Rows<const EBW8> mag;
  Rows<EBW8> dst;
  bool Inside(int x, int y) const { return x >= 0 && y >= 0 && x < mag.width && y < mag.height; }
  int Mag(int x, int y) const { return mag.Row(y)[x].value; }
  void Set(int x, int y, Byte v) const { dst.Row(y)[x] = EBW8(v); }
};

// A follower of the standalone steps: the classes are the values 0, 45, 90,
// 135 of an EBW32 image, the visited marks a cleared image of their own.
struct Follow : FollowImages {
  Rows<const EBW32> dir;
  Rows<EBW8> flags;
  bool Visited(int x, int y) const { return flags.Row(y)[x].value != 0; }
  void Visit(int x, int y) const { flags.Row(y)[x].value = 255; }
  int Class(int x, int y) const { return ClassIndex(dir.Row(y)[x].value); }
};

// The detector's follower: the class index (0 to 3) and the visited mark
// (bit 7) share a byte of one image, which spares a frame-sized image of
// marks and its clearing.
struct PackedFollow : FollowImages {
  Rows<EBW8> state;
  bool Visited(int x, int y) const { return (state.Row(y)[x].value & 0x80) != 0; }
  void Visit(int x, int y) const { state.Row(y)[x].value |= 0x80; }
  int Class(int x, int y) const { return state.Row(y)[x].value & 0x7F; }
};

constexpr Offset kWalk[2][4][3] = {
    {{{1, 1}, {-1, 1}, {0, 1}}, {{-1, 1}, {0, 1}, {-1, 0}}, {{1, 1}, {1, -1}, {1, 0}}, {{1, 1}, {0, 1}, {1, 0}}},
    {{{-1, -1}, {1, -1}, {0, -1}},
     {{1, -1}, {0, -1}, {1, 0}},
     {{-1, 1}, {-1, -1}, {-1, 0}},
     {{-1, -1}, {0, -1}, {-1, 0}}},
};

template <class F>
void Walk(const F& f, int x, int y, int scan, int low) {
  for (;;) {
    const int c = f.Class(x, y);
    if (c < 0) return;
    bool found = false;
    int best = 0, bx = 0, by = 0;
    for (const Offset& o : kWalk[scan][c]) {
      const int nx = x + o.dx, ny = y + o.dy;
      if (!f.Inside(nx, ny) || f.Visited(nx, ny)) continue;
      const int m = f.Mag(nx, ny);
      if (!found || m > best) found = true, best = m, bx = nx, by = ny;
    }
    if (!found || best < low) return;
    f.Set(bx, by, 255);
    f.Visit(bx, by);
    x = bx;
    y = by;
  }
}

template <class F>
void HysteresisScans(const F& f, int low, int high) {
  for (int scan = 0; scan < 2; ++scan)
    for (int y = 0; y < f.mag.height; ++y) {
      const EBW8* m = f.mag.Row(y);
      for (int x = 0; x < f.mag.width; ++x) {
        if (m[x].value < high || (scan == 0 && f.Visited(x, y))) continue;
        f.Set(x, y, scan == 0 ? 128 : 80);
        f.Visit(x, y);
        Walk(f, x, y, scan, low);
      }
    }
}

// Neighbours along the edge that a seed must not be below.
constexpr Offset kRidge[4][2] = {{{0, -1}, {0, 1}}, {{1, -1}, {-1, 1}}, {{-1, 0}, {1, 0}}, {{-1, -1}, {1, 1}}};
// The six neighbours a growth goes on to, in order.
constexpr Offset kGrow[4][6] = {
    {{-1, -1}, {0, -1}, {1, -1}, {-1, 1}, {0, 1}, {1, 1}},
    {{0, -1}, {1, -1}, {1, 0}, {-1, 0}, {-1, 1}, {0, 1}},
    {{-1, -1}, {-1, 0}, {-1, 1}, {1, -1}, {1, 0}, {1, 1}},
    {{-1, -1}, {-1, 0}, {0, -1}, {0, 1}, {1, 0}, {1, 1}},
};

// One step of a growth held on the heap: the pixel and the next of its six
// neighbours to try. The magnitude and class are read back from the images.
struct Step {
  std::uint32_t x, y;
  int next;
};

// The growth from one seed, depth first, as the recursive form visits:
// arriving at a pixel outside or visited does nothing; a pixel below half
// the seed or below 0.8 times the previous one is rejected; an accepted one
// goes on to its neighbours in order, each pretested for being inside and
// unvisited. For class 135 the pretest of the first neighbour reads the
// flag of (x - 1, y + 1), as the older design did, or the neighbour's own
// when that pixel is outside.
template <class F>
void Grow(const F& f, int x0, int y0, int seed, std::vector<Step>& stack) {
  auto arrive = [&](int x, int y, int previous) {
    if (!f.Inside(x, y) || f.Visited(x, y)) return;
    const int s = f.Mag(x, y);
    f.Visit(x, y);
    if (0.5 * seed > s || 0.8 * previous > s) {
      f.Set(x, y, 0);
      return;
    }
    f.Set(x, y, 255);
    stack.push_back(Step{static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), 0});
  };
  stack.clear();
  arrive(x0, y0, seed);
  while (!stack.empty()) {
    Step& top = stack.back();
    const int x = static_cast<int>(top.x), y = static_cast<int>(top.y);
    const int c = f.Class(x, y);
    if (c < 0 || top.next == 6) {
      stack.pop_back();
      continue;
    }
    const int k = top.next++;
    const int nx = x + kGrow[c][k].dx, ny = y + kGrow[c][k].dy;
    if (!f.Inside(nx, ny)) continue;
    const bool oddPretest = c == 3 && k == 0 && f.Inside(x - 1, y + 1);
    if (oddPretest ? f.Visited(x - 1, y + 1) : f.Visited(nx, ny)) continue;
    arrive(nx, ny, f.Mag(x, y));
  }
}

template <class F>
bool GrowAll(const F& f, int low) {
  try {
    std::vector<Step> stack;
    const int w = f.mag.width, h = f.mag.height;
    for (int y = 1; y < h - 1; ++y)
      for (int x = 1; x < w - 1; ++x) {
        const int m = f.Mag(x, y);
        const int c = f.Class(x, y);
        if (m == 0 || m < low || c < 0) continue;
        const Offset a = kRidge[c][0], b = kRidge[c][1];
        if (m >= f.Mag(x + a.dx, y + a.dy) && m >= f.Mag(x + b.dx, y + b.dy)) Grow(f, x, y, m, stack);
      }
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

// The common start of a follower: 1400 for a null or void image, nothing
// at all when the sizes differ, and the cleared flags.
template <class D>
bool StartFollow(Frame& frame, const EROI<EBW8>* magnitude, EROI<EBW8>* dst, const D* direction,
                 EImage<EBW8>& flags, Follow& f) {
  if (!frame.NotVoid(magnitude, dst, direction)) return false;
  const int w = magnitude->GetWidth(), h = magnitude->GetHeight();
  if (dst->GetWidth() != w || dst->GetHeight() != h || direction->GetWidth() != w || direction->GetHeight() != h)
    return false;
  flags.SetSize(w, h);
  if (!frame.Ok()) return false;
  ImgCopy(EBW8(0), &flags);
  f = Follow{{RowsOf(magnitude), RowsOf(dst)}, RowsOf(static_cast<const EROI<EBW32>*>(direction)), RowsOf(&flags)};
  return true;
}

}  // namespace
}  // namespace edge
}  // namespace mirel

using mirel::Frame;
using mirel::RowsOf;
namespace edge = mirel::edge;

void NonMaximaSuppression(const EROI<EBW32>* gradient, EROI<EBW32>* direction, EROI<EBW8>* magnitude) {
  const int mmx = EGetMMX();
  Frame frame("NonMaximaSuppression");
  if (!frame.NotVoid(gradient, direction, magnitude) || !frame.SameSize(gradient, direction) ||
      !frame.SameSize(gradient, magnitude))
    return;
  const auto g = RowsOf(gradient);
  std::vector<edge::Byte> mags;
  try {
    mags.resize(3 * (static_cast<size_t>(g.width) + 2));
  } catch (const std::bad_alloc&) {
    return frame.Fail(E_ERROR_OUT_OF_MEMORY);
  }
  const auto d = RowsOf(direction);
  edge::SuppressRows([&](int y) { return reinterpret_cast<const std::uint32_t*>(g.Row(y)); },
                     [&](int y) { return reinterpret_cast<std::uint32_t*>(d.Row(y)); }, [](int) {},
                     RowsOf(magnitude), 0, g.height, mags.data(), edge::ActiveEdgeRows(mmx != 0));
}

void Hysteresis(const EROI<EBW8>* magnitude, EROI<EBW8>* dst, const EImage<EBW32>* direction, unsigned char low,
                unsigned char high) {
  Frame frame("Hysteresis");
  EImage<EBW8> flags;
  edge::Follow f;
  if (!edge::StartFollow(frame, magnitude, dst, direction, flags, f)) return;
  edge::HysteresisScans(f, low, high);
}

void ContourGrowing(const EROI<EBW8>* magnitude, EROI<EBW8>* dst, const EROI<EBW32>* direction, unsigned char low) {
  Frame frame("ContourGrowing");
  EImage<EBW8> flags;
  edge::Follow f;
  if (!edge::StartFollow(frame, magnitude, dst, direction, flags, f)) return;
  if (!edge::GrowAll(f, low)) frame.Fail(E_ERROR_OUT_OF_MEMORY);
}

void ImgCannyDetector(const EROI<EBW8>* src, EROI<EBW8>* dst, SMOOTH_MODE smooth, EDGE_FOLLOWING_MODE following) {
  const int mmx = EGetMMX();
  Frame frame("Failed canny detection !");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const int w = src->GetWidth(), h = src->GetHeight();
  const bool gaussian = (smooth == SMOOTH_GAUSSIAN_3X3 && w >= 3 && h >= 3) ||
                        (smooth == SMOOTH_GAUSSIAN_5X5 && w >= 5 && h >= 5) ||
                        (smooth == SMOOTH_GAUSSIAN_7X7 && w >= 7 && h >= 7);
  const bool filtered = gaussian || smooth == SMOOTH_MEDIAN;
  // The working images: the smoothed source (the source itself where the
  // smoothing is a copy), the class indices and the suppressed magnitudes.
  // The gradient pairs live only three rows at a time.
  EImage<EBW8> smoothed, classes, magnitude;
  EBWHistogramVector histogram;
  if (filtered) smoothed.SetSize(w, h);
  classes.SetSize(w, h);
  magnitude.SetSize(w, h);
  if (!frame.Ok()) return;
  // The Gaussian filters read their source only, with a separate destination.
  EROI<EBW8>* in = const_cast<EROI<EBW8>*>(src);
  if (smooth == SMOOTH_GAUSSIAN_3X3 && gaussian) ImgConvolGaussian3x3(in, &smoothed);
  if (smooth == SMOOTH_GAUSSIAN_5X5 && gaussian) ImgConvolGaussian5x5(in, &smoothed);
  if (smooth == SMOOTH_GAUSSIAN_7X7 && gaussian) ImgConvolGaussian7x7(in, &smoothed);
  if (smooth == SMOOTH_MEDIAN) ImgMedian(src, &smoothed);
  if (!frame.Ok()) return;
  const mirel::Rows<const EBW8> s = RowsOf(filtered ? static_cast<const EROI<EBW8>*>(&smoothed) : src);

  std::vector<std::uint32_t> pairs, dirRow;
  std::vector<edge::Byte> mags;
  try {
    pairs.resize(3 * static_cast<size_t>(w));
    dirRow.resize(static_cast<size_t>(w));
    mags.resize(3 * (static_cast<size_t>(w) + 2));
  } catch (const std::bad_alloc&) {
    return frame.Fail(E_ERROR_OUT_OF_MEMORY);
  }
  const edge::EdgeRowFns fns = edge::ActiveEdgeRows(mmx != 0);
  int cached[3] = {-1, -1, -1};
  const auto cls = RowsOf(&classes);
  edge::SuppressRows(
      [&](int y) {
        std::uint32_t* row = pairs.data() + static_cast<size_t>(y % 3) * static_cast<size_t>(w);
        if (cached[y % 3] != y) edge::GradientPairRow(s, y, row, fns.bw8);
        cached[y % 3] = y;
        return static_cast<const std::uint32_t*>(row);
      },
      [&](int) { return dirRow.data(); },
      [&](int y) {
        EBW8* c = cls.Row(y);
        for (int x = 0; x < w; ++x) c[x] = EBW8(static_cast<edge::Byte>(dirRow[static_cast<size_t>(x)] / 45u));
      },
      RowsOf(&magnitude), 0, h, mags.data(), fns);

  ImgHistogram(&magnitude, &histogram);
  if (!frame.Ok()) return;
  edge::Thresholds t = edge::SplitThreeClasses(histogram.GetDataPtr());
  if (t.low == 0) t.low = 1;
  if (following != EDGE_FOLLOWING_HYSTERESIS && following != EDGE_FOLLOWING_CONTOUR_GROWING) return;
  const edge::PackedFollow f{{RowsOf(static_cast<const EROI<EBW8>*>(&magnitude)), RowsOf(dst)}, RowsOf(&classes)};
  if (following == EDGE_FOLLOWING_HYSTERESIS) edge::HysteresisScans(f, t.low, t.high);
  else if (!edge::GrowAll(f, t.low)) frame.Fail(E_ERROR_OUT_OF_MEMORY);
}
