// Small helpers shared by the histogram tests.
#ifndef MIREL_TESTS_HISTOGRAM_TEST_UTIL_H_
#define MIREL_TESTS_HISTOGRAM_TEST_UTIL_H_

#include <algorithm>
#include <utility>
#include <vector>

#include "test_support.h"

namespace histtest {

using Hist = std::vector<unsigned int>;

inline void Load(EBWHistogramVector& v, const Hist& h) {
  v.SetNumElements(static_cast<unsigned int>(h.size()));
  std::copy(h.begin(), h.end(), v.GetDataPtr());
}

inline Hist Bins(const EBWHistogramVector& v) { return Hist(v.GetDataPtr(), v.GetDataPtr() + v.GetNumElements()); }

// The 32-bit items of an untyped vector.
inline Hist Items(const EVector& v) {
  const unsigned int* p = static_cast<const unsigned int*>(v.GetDataPtr());
  return Hist(p, p + v.GetNbGroup() * v.GetGroupLength());
}

// The values of a gray ROI's pixels, row after row.
template <class P>
std::vector<unsigned int> Pixels(const EROI<P>& roi) {
  std::vector<unsigned int> out;
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) out.push_back(roi.GetPixel(x, y).value);
  return out;
}

// n bins, all zero but the listed (bin, count) pairs.
inline Hist Spikes(std::vector<std::pair<unsigned int, unsigned int>> s, unsigned int n = 256) {
  Hist h(n, 0);
  for (const auto& p : s) h[p.first] = p.second;
  return h;
}

}  // namespace histtest

// The last call failed with `code` and traced exactly `label`.
#define EXPECT_FAILED(code, label)                \
  do {                                            \
    EXPECT_EQ(EGetError(), code);                 \
    EXPECT_STREQ(EGetErrorTrace(), label);        \
  } while (0)

#endif  // MIREL_TESTS_HISTOGRAM_TEST_UTIL_H_
