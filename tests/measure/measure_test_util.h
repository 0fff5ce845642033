// Helpers shared by the measurement tests.
#ifndef MIREL_TESTS_MEASURE_TEST_UTIL_H_
#define MIREL_TESTS_MEASURE_TEST_UTIL_H_

#include <cstdint>
#include <vector>

#include "test_support.h"

namespace meastest {

using testsupport::Rng;

// A random ROI of random size inside a random image, its pixels random, or
// (when `lumpy`) drawn from a few values so that extremes and thresholds
// are hit often.
template <class P>
void RandomRoi(EImage<P>& image, EROI<P>& roi, Rng& rng, int maxW, int maxH, bool lumpy = false) {
  const int w = 1 + static_cast<int>(rng() % maxW), h = 1 + static_cast<int>(rng() % maxH);
  testsupport::PlaceRandom(image, roi, w, h, rng);
  testsupport::FillRandom(image, rng);
  if (!lumpy) return;
  unsigned char* p = reinterpret_cast<unsigned char*>(image.GetImagePtr(0, 0));
  const std::size_t bytes = testsupport::BufferBytes(image);
  static const unsigned char kValues[4] = {0, 1, 128, 255};
  for (std::size_t i = 0; i < bytes; ++i) p[i] = kValues[rng() % 4];
}

// Gives `roi` random runs, one per row (some empty), as addresses
// (mode 1) or offsets (mode 2); returns the spans (x, y, length) that count.
struct Span {
  int x, y, n;
};
inline std::vector<Span> RandomRuns(EROI<EBW8>& roi, Rng& rng, int mode) {
  std::vector<Span> spans;
  std::vector<ERun> runs;
  const int w = roi.GetWidth();
  const unsigned char* base = &roi.GetImagePtr(0, 0)->value;
  for (int y = 0; y < roi.GetHeight(); ++y) {
    const int x0 = static_cast<int>(rng() % w), len = static_cast<int>(rng() % (w + 1 - x0));
    const unsigned char* p = &roi.GetImagePtr(x0, y)->value;
    const std::intptr_t start = mode == 2 ? static_cast<std::intptr_t>(p - base) : reinterpret_cast<std::intptr_t>(p);
    runs.push_back(ERun{start, start + len, x0, y});
    if (len > 0) spans.push_back(Span{x0, y, len});
  }
  roi.SetRuns(runs.data(), static_cast<int>(runs.size()), mode == 2);
  return spans;
}

// Every pixel of a ROI as a span list (no mask).
inline std::vector<Span> AllSpans(const EGenericROI& roi) {
  std::vector<Span> spans;
  for (int y = 0; y < roi.GetHeight(); ++y) spans.push_back(Span{0, y, roi.GetWidth()});
  return spans;
}

inline unsigned int Value(const EROI<EBW8>& r, int x, int y) { return r.GetImagePtr(x, y)->value; }
inline unsigned int Value(const EROI<EBW16>& r, int x, int y) { return r.GetImagePtr(x, y)->value; }

}  // namespace meastest

// The last call failed with `code` and traced exactly `label`.
#define EXPECT_FAILED(code, label)         \
  do {                                     \
    EXPECT_EQ(EGetError(), code);          \
    EXPECT_STREQ(EGetErrorTrace(), label); \
  } while (0)

#endif  // MIREL_TESTS_MEASURE_TEST_UTIL_H_
