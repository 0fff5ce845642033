// Helpers shared by the test programs: random images and ROIs, byte
// comparison of ROIs, and a guard that runs code on a chosen path.
#ifndef MIREL_TESTS_TEST_SUPPORT_H_
#define MIREL_TESTS_TEST_SUPPORT_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "mirel/foundation/testing_internal.h"
#include "mirel/mirel.h"

namespace testsupport {

using Rng = std::mt19937;

// Bytes a row of an image occupies in its buffer; a bit image keeps one
// byte more behind its row.
template <class T>
size_t RowBytes(int width) {
  return std::is_same<T, EBW1>::value ? (static_cast<size_t>(width) + 7) / 8 + 1
                                      : static_cast<size_t>(width) * sizeof(T);
}

// Bytes of an image's buffer from its first pixel: whole rows for an image
// that owns its pixels, and nothing behind the last row's pixels for a
// borrowed one.
template <class T>
size_t BufferBytes(const EImage<T>& image) {
  if (image.Void()) return 0;
  const size_t pitch = static_cast<size_t>(image.GetRowPitch());
  return image.IsBorrowed() ? pitch * (image.GetHeight() - 1) + RowBytes<T>(image.GetWidth())
                            : pitch * image.GetHeight();
}

// Fills every byte of an image's rows (padding included) with random data.
template <class T>
void FillRandom(EImage<T>& image, Rng& rng) {
  unsigned char* p = reinterpret_cast<unsigned char*>(image.GetImagePtr(0, 0));
  const size_t bytes = BufferBytes(image);
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
  return std::vector<unsigned char>(p, p + BufferBytes(image));
}

// Borrowed-buffer runs. While on, SizeImage (and so PlaceRandom and the
// families' helpers built on it) gives each image a buffer of its own that
// the image borrows: a row pitch of a row and up to seven bytes, odd
// wherever the pixel's alignment allows, the first pixel at any offset
// from a 64-byte boundary, and nothing behind the last row's pixels, so
// that AddressSanitizer reports any access past the image. On when the
// environment has MIREL_TEST_BORROWED (CTest runs every test program so
// once more), or when a test asks for it.
class BorrowedBuffers {
 public:
  static bool On() { return State().on; }
  static void Set(bool on) { State().on = on; }
  template <class T>
  static void Make(EImage<T>& image, int width, int height, Rng& rng) {
    constexpr size_t align = alignof(T);
    const size_t row = RowBytes<T>(width);
    const size_t pitch = (row + rng() % 8 + align - 1) / align * align;
    const size_t front = (rng() % 64) / align * align;
    State().buffers.emplace_back(front + pitch * (height - 1) + row);
    image.Borrow(reinterpret_cast<T*>(State().buffers.back().data() + front), width, height,
                 static_cast<int>(pitch));
  }

 private:
  // The buffers live until the test program ends, so that no image can
  // outlive its buffer.
  struct Pool {
    bool on = std::getenv("MIREL_TEST_BORROWED") != nullptr;
    std::deque<std::vector<unsigned char>> buffers;
  };
  static Pool& State() {
    static Pool pool;
    return pool;
  }
};

// Sizes an image, or makes it borrow a buffer of that size in
// borrowed-buffer runs (a zero size stays an owned, void image).
template <class T>
void SizeImage(EImage<T>& image, int width, int height, Rng& rng) {
  if (BorrowedBuffers::On() && width > 0 && height > 0) {
    BorrowedBuffers::Make(image, width, height, rng);
  } else {
    image.SetSize(width, height);
  }
}

// A random ROI of the given size inside `image`, which is made large enough.
template <class T>
void PlaceRandom(EImage<T>& image, EROI<T>& roi, int width, int height, Rng& rng, int margin = 9) {
  const int ox = static_cast<int>(rng() % (margin + 1));
  const int oy = static_cast<int>(rng() % 3);
  // In borrowed-buffer runs the ROI ends on the buffer's last pixel.
  if (BorrowedBuffers::On()) SizeImage(image, width + ox, height + oy, rng);
  else image.SetSize(width + margin + 1, height + 3);
  roi.Attach(&image);
  roi.SetPlacement(ox, oy, width, height);
}

// The path of the detected level with the streaming loops' Intel form
// forced on, whatever the processor (see mirel::testing::SetIntelStreaming);
// the other paths have it off.
constexpr int kIntelStreamingPath = 100;

// Runs the scope with the fast paths off (level < 0 means scalar), capped
// at an instruction-set level, or on kIntelStreamingPath, and restores the
// defaults on leaving.
class PathGuard {
 public:
  explicit PathGuard(int level) {
    mirel::testing::SetIntelStreaming(level == kIntelStreamingPath ? 1 : 0);
    if (level < 0) {
      mirel::testing::SetFastPaths(0);
    } else {
      mirel::testing::SetFastPaths(1);
      mirel::testing::SetSimdLimit(level == kIntelStreamingPath ? -1 : level);
    }
  }
  ~PathGuard() {
    mirel::testing::SetFastPaths(1);
    mirel::testing::SetSimdLimit(-1);
    mirel::testing::SetIntelStreaming(-1);
  }
};

// Every path this processor offers: -1 (scalar), then each instruction-set
// level up to the detected one, then kIntelStreamingPath.
inline std::vector<int> AllPaths() {
  std::vector<int> paths{-1};
  for (int l = 1; l <= mirel::testing::DetectedSimdLevel(); ++l) paths.push_back(l);
  if (mirel::testing::DetectedSimdLevel() > 0) paths.push_back(kIntelStreamingPath);
  return paths;
}

}  // namespace testsupport

#endif  // MIREL_TESTS_TEST_SUPPORT_H_
