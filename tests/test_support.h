// Helpers shared by the test programs: random images and ROIs, byte
// comparison of ROIs, and a guard that runs code on a chosen path.
#ifndef MIREL_TESTS_TEST_SUPPORT_H_
#define MIREL_TESTS_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "mirel/foundation/testing_internal.h"
#include "mirel/mirel.h"

namespace testsupport {

using Rng = std::mt19937;

// Fills every byte of an image's rows (padding included) with random data.
template <class T>
void FillRandom(EImage<T>& image, Rng& rng) {
  if (image.Void()) return;
  unsigned char* p = reinterpret_cast<unsigned char*>(image.GetImagePtr(0, 0));
  const size_t bytes = static_cast<size_t>(image.GetRowPitch()) * image.GetHeight();
  for (size_t i = 0; i < bytes; ++i) p[i] = static_cast<unsigned char>(rng());
}

// Row bytes of a ROI, row after row (padding excluded).
template <class T>
std::vector<unsigned char> Bytes(const EROI<T>& roi) {
  std::vector<unsigned char> out;
  if (roi.Void()) return out;
  const size_t row = static_cast<size_t>(roi.GetWidth()) * sizeof(T);
  for (int y = 0; y < roi.GetHeight(); ++y) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(roi.GetImagePtr(0, y));
    out.insert(out.end(), p, p + row);
  }
  return out;
}

// All bytes of an image's buffer, padding included: a snapshot that shows a
// destination was not touched anywhere.
template <class T>
std::vector<unsigned char> Snapshot(const EImage<T>& image) {
  if (image.Void()) return {};
  const unsigned char* p = reinterpret_cast<const unsigned char*>(image.GetImagePtr(0, 0));
  return std::vector<unsigned char>(p, p + static_cast<size_t>(image.GetRowPitch()) * image.GetHeight());
}

// A random ROI of the given size inside `image`, which is made large enough.
template <class T>
void PlaceRandom(EImage<T>& image, EROI<T>& roi, int width, int height, Rng& rng, int margin = 9) {
  image.SetSize(width + margin + 1, height + 3);
  const int ox = static_cast<int>(rng() % (margin + 1));
  const int oy = static_cast<int>(rng() % 3);
  roi.Attach(&image);
  roi.SetPlacement(ox, oy, width, height);
}

// Runs the scope with the fast paths off (level < 0 means scalar) or capped
// at an instruction-set level, and restores the defaults on leaving.
class PathGuard {
 public:
  explicit PathGuard(int level) {
    if (level < 0) {
      mirel::testing::SetFastPaths(0);
    } else {
      mirel::testing::SetFastPaths(1);
      mirel::testing::SetSimdLimit(level);
    }
  }
  ~PathGuard() {
    mirel::testing::SetFastPaths(1);
    mirel::testing::SetSimdLimit(-1);
  }
};

// Every path this processor offers: -1 (scalar), then each instruction-set
// level up to the detected one.
inline std::vector<int> AllPaths() {
  std::vector<int> paths{-1};
  for (int l = 1; l <= mirel::testing::DetectedSimdLevel(); ++l) paths.push_back(l);
  return paths;
}

}  // namespace testsupport

#endif  // MIREL_TESTS_TEST_SUPPORT_H_
