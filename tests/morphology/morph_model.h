// Reference models of the morphology family, pixel by pixel from the
// definitions (extrema over windows clipped to the ROI, medians by sorting),
// and a harness that runs an operation on random ROIs and compares.
#ifndef MIREL_TESTS_MORPHOLOGY_MORPH_MODEL_H_
#define MIREL_TESTS_MORPHOLOGY_MORPH_MODEL_H_

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <vector>

#include "mirel/morphology/morphology_internal.h"
#include "test_support.h"

namespace morph {

using testsupport::Rng;

struct Img {
  int w = 0, h = 0;
  std::vector<int> px;
  int& at(int x, int y) { return px[static_cast<size_t>(y) * w + x]; }
  int at(int x, int y) const { return px[static_cast<size_t>(y) * w + x]; }
  bool operator==(const Img& o) const { return w == o.w && h == o.h && px == o.px; }
};

template <class P>
int ValueOf(const P& p) { return p.value; }

template <class P>
Img FromRoi(const EROI<P>& roi) {
  Img m{roi.GetWidth(), roi.GetHeight(), {}};
  for (int y = 0; y < m.h; ++y)
    for (int x = 0; x < m.w; ++x) m.px.push_back(ValueOf(roi.GetImagePtr(0, y)[x]));
  return m;
}
template <class P>
void ToRoi(const Img& m, EROI<P>& roi) {
  for (int y = 0; y < m.h; ++y)
    for (int x = 0; x < m.w; ++x) roi.GetImagePtr(0, y)[x] = P(static_cast<decltype(P().value)>(m.at(x, y)));
}

enum Op { kMin, kMax, kAnd, kOr };
inline int Apply(Op op, int a, int b) {
  switch (op) {
    case kMin: return std::min(a, b);
    case kMax: return std::max(a, b);
    case kAnd: return a & b;
    default: return a | b;
  }
}

// The extremum over the offsets (dx, dy) in [-rx, rx] x [-ry, ry] for which
// inside(dx, dy), pixels outside the image left out.
template <class Inside>
Img Window(const Img& s, int rx, int ry, Op op, Inside inside) {
  Img d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      int v = s.at(x, y);
      for (int dy = -ry; dy <= ry; ++dy)
        for (int dx = -rx; dx <= rx; ++dx) {
          const int xx = x + dx, yy = y + dy;
          if (xx >= 0 && xx < s.w && yy >= 0 && yy < s.h && inside(dx, dy)) v = Apply(op, v, s.at(xx, yy));
        }
      d.at(x, y) = v;
    }
  return d;
}
inline Img Box(const Img& s, int hw, int hh, Op op) {
  return Window(s, std::min(hw, s.w), std::min(hh, s.h), op, [](int, int) { return true; });
}
inline Img Disk(const Img& s, int r, Op op) {
  const int rc = std::min(r, s.w + s.h);
  return Window(s, rc, rc, op, [r](int dx, int dy) { return std::abs(dx) + std::abs(dy) <= r + r / 2; });
}
inline Img Cross(const Img& s, Op op) {
  return Window(s, 1, 1, op, [](int dx, int dy) { return std::abs(dx) + std::abs(dy) <= 1; });
}
inline Img Sub(const Img& a, const Img& b) {
  Img d = a;
  for (size_t i = 0; i < d.px.size(); ++i) d.px[i] = std::max(a.px[i] - b.px[i], 0);
  return d;
}

// One pass of the older entry points: 3x3, outside = border, signed compare,
// low byte stored.
inline Img BorderPass(const Img& s, int border, Op op) {
  Img d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      int v = s.at(x, y);
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          const int xx = x + dx, yy = y + dy;
          v = Apply(op, v, (xx >= 0 && xx < s.w && yy >= 0 && yy < s.h) ? s.at(xx, yy) : border);
        }
      d.at(x, y) = v & 0xff;
    }
  return d;
}

// The 3x3 median: edges repeated, or a border value outside (low byte kept).
inline Img Median(const Img& s, bool replicate, int border = 0) {
  Img d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      std::vector<int> v;
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
          int xx = x + dx, yy = y + dy;
          if (replicate) {
            xx = std::min(std::max(xx, 0), s.w - 1);
            yy = std::min(std::max(yy, 0), s.h - 1);
          }
          v.push_back((xx >= 0 && xx < s.w && yy >= 0 && yy < s.h) ? s.at(xx, yy) : border);
        }
      std::sort(v.begin(), v.end());
      d.at(x, y) = replicate ? v[4] : (v[4] & 0xff);
    }
  return d;
}

// Bytes of the whole buffer outside the ROI are those of `before`.
template <class P>
bool OutsideUnchanged(const std::vector<unsigned char>& before, const EImage<P>& image, const EROI<P>& roi) {
  const std::vector<unsigned char> after = testsupport::Snapshot(image);
  const unsigned char* base = reinterpret_cast<const unsigned char*>(image.GetImagePtr(0, 0));
  for (int y = 0; y < roi.GetHeight(); ++y) {
    const size_t off = static_cast<size_t>(reinterpret_cast<const unsigned char*>(roi.GetImagePtr(0, y)) - base);
    const size_t n = static_cast<size_t>(roi.GetWidth()) * sizeof(P);
    if (!std::equal(after.begin(), after.begin() + static_cast<std::ptrdiff_t>(off), before.begin())) return false;
    std::copy(before.begin() + static_cast<std::ptrdiff_t>(off), before.begin() + static_cast<std::ptrdiff_t>(off + n),
              const_cast<unsigned char*>(after.data()) + off);
  }
  return after == before;
}

// Runs op on a random w x h ROI of a random image, in place (null or the
// source as destination) or into a separate random ROI, and compares with
// ref of the source's values. `twoLevel` fills the source with 0 and 255.
template <class P>
::testing::AssertionResult Matches(Rng& rng, int w, int h, bool inPlace, bool twoLevel,
                                   const std::function<void(EROI<P>*, EROI<P>*)>& op,
                                   const std::function<Img(const Img&)>& ref) {
  EImage<P> si, di;
  EROI<P> s, d;
  testsupport::PlaceRandom(si, s, w, h, rng);
  testsupport::FillRandom(si, rng);
  Img in = FromRoi(s);
  if (twoLevel) {
    for (int& v : in.px) v = (v & 1) ? (sizeof(P) == 1 ? 255 : 65535) : 0;
    ToRoi(in, s);
  }
  const Img want = ref(in);
  const auto srcBefore = testsupport::Snapshot(si);
  if (inPlace) {
    op(&s, (rng() & 1) ? nullptr : &s);
    if (EGetError() != E_OK) return ::testing::AssertionFailure() << "error " << EGetError();
    if (!(FromRoi(s) == want)) return ::testing::AssertionFailure() << "in-place result differs";
    if (!OutsideUnchanged(srcBefore, si, s)) return ::testing::AssertionFailure() << "wrote outside the ROI";
    return ::testing::AssertionSuccess();
  }
  testsupport::PlaceRandom(di, d, w, h, rng);
  testsupport::FillRandom(di, rng);
  const auto dstBefore = testsupport::Snapshot(di);
  op(&s, &d);
  if (EGetError() != E_OK) return ::testing::AssertionFailure() << "error " << EGetError();
  if (!(FromRoi(d) == want)) return ::testing::AssertionFailure() << "result differs";
  if (testsupport::Snapshot(si) != srcBefore) return ::testing::AssertionFailure() << "source changed";
  if (!OutsideUnchanged(dstBefore, di, d)) return ::testing::AssertionFailure() << "wrote outside the ROI";
  return ::testing::AssertionSuccess();
}

// Restores the library's choice of the running box on leaving.
struct RunningBoxFrom {
  explicit RunningBoxFrom(int from) { mirel::testing::SetRunningBoxFrom(from); }
  ~RunningBoxFrom() { mirel::testing::SetRunningBoxFrom(0); }
};

}  // namespace morph

#endif  // MIREL_TESTS_MORPHOLOGY_MORPH_MODEL_H_
