// Shared pieces of the edge and Fourier tests: a plain image of ints read
// from and written to ROIs, the expected buffer of a destination image after
// an operation wrote one ROI of it, and random ROIs on every path.
#ifndef MIREL_TESTS_EDGE_EDGE_MODEL_H_
#define MIREL_TESTS_EDGE_EDGE_MODEL_H_

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "test_support.h"

namespace edgemodel {

using testsupport::Rng;

struct Img {
  int w = 0, h = 0;
  std::vector<long long> px;
  Img() = default;
  Img(int width, int height, long long fill = 0)
      : w(width), h(height), px(static_cast<size_t>(width) * height, fill) {}
  long long& at(int x, int y) { return px[static_cast<size_t>(y) * w + x]; }
  long long at(int x, int y) const { return px[static_cast<size_t>(y) * w + x]; }
  // The nearest pixel of the image.
  long long edge(int x, int y) const {
    return at(std::min(std::max(x, 0), w - 1), std::min(std::max(y, 0), h - 1));
  }
  bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < w && y < h; }
};

template <class P>
Img FromRoi(const EROI<P>& roi) {
  Img m(roi.GetWidth(), roi.GetHeight());
  for (int y = 0; y < m.h; ++y)
    for (int x = 0; x < m.w; ++x) m.at(x, y) = roi.GetImagePtr(0, y)[x].value;
  return m;
}

template <class P>
void ToRoi(const Img& m, EROI<P>& roi) {
  using Raw = decltype(P().value);
  for (int y = 0; y < m.h; ++y)
    for (int x = 0; x < m.w; ++x) roi.GetImagePtr(0, y)[x] = P(static_cast<Raw>(m.at(x, y)));
}

// The whole buffer of `image` as it must be after the ROI `roi` of it took
// the values of `m` (pixels of width sizeof(P)), from its snapshot `before`.
template <class P>
std::vector<unsigned char> Expected(const EImage<P>& image, const EROI<P>& roi, std::vector<unsigned char> before,
                                    const Img& m) {
  using Raw = decltype(P().value);
  for (int y = 0; y < m.h; ++y)
    for (int x = 0; x < m.w; ++x) {
      const Raw v = static_cast<Raw>(m.at(x, y));
      std::memcpy(&before[static_cast<size_t>(roi.GetOrgY() + y) * image.GetRowPitch() +
                          static_cast<size_t>(roi.GetOrgX() + x) * sizeof(P)],
                  &v, sizeof(P));
    }
  return before;
}

// The gradient pairs of a grey image, each difference kept to 16 bits.
inline Img Pairs(const Img& s) {
  Img d(s.w, s.h);
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      const long long dx = s.edge(x - 1, y) - s.edge(x + 1, y), dy = s.edge(x, y - 1) - s.edge(x, y + 1);
      d.at(x, y) = (dx & 0xFFFF) | ((dy & 0xFFFF) << 16);
    }
  return d;
}

inline int Dx(long long pair) { return static_cast<int16_t>(pair & 0xFFFF); }
inline int Dy(long long pair) { return static_cast<int16_t>((pair >> 16) & 0xFFFF); }

// Random sizes for the comparisons: mostly small, now and then wide enough
// for every block width and a tail.
inline int RandomSide(Rng& rng, int iter, int small, int large) {
  return 1 + static_cast<int>(rng() % static_cast<unsigned>(iter % 3 == 0 ? small : large));
}

}  // namespace edgemodel

#endif  // MIREL_TESTS_EDGE_EDGE_MODEL_H_
