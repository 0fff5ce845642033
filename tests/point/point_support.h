// Helpers shared by the point-operation tests: a random source and
// destination pair compared with a per-pixel model on every path, and a
// checker for refused calls.
#ifndef MIREL_TESTS_POINT_POINT_SUPPORT_H_
#define MIREL_TESTS_POINT_POINT_SUPPORT_H_

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "test_support.h"

namespace pointtest {

using Bytes = std::vector<unsigned char>;

// A random source ROI and a destination ROI of the same size in another
// image, both at random origins (the destination's up to 70 pixels in, so
// every alignment of a 64-byte vector occurs); both images are random.
template <class S, class D>
struct RoiPair {
  EImage<S> simg;
  EImage<D> dimg;
  EROI<S> src;
  EROI<D> dst;
  RoiPair(int w, int h, testsupport::Rng& rng) {
    testsupport::PlaceRandom(simg, src, w, h, rng);
    testsupport::PlaceRandom(dimg, dst, w, h, rng, 70);
    testsupport::FillRandom(simg, rng);
    testsupport::FillRandom(dimg, rng);
  }
  // Runs `run` on every path, each time on the same destination bytes, and
  // compares the whole destination buffer with model(x, y) written over the
  // ROI. The model is evaluated before the first run, so an in-place call
  // may read the destination in it.
  template <class Model>
  void ExpectOnEveryPath(const std::function<void()>& run, Model model, const std::string& what) {
    const Bytes before = testsupport::Snapshot(dimg);
    Bytes want = before;
    const unsigned char* base = reinterpret_cast<const unsigned char*>(dimg.GetImagePtr(0, 0));
    for (int y = 0; y < dst.GetHeight(); ++y)
      for (int x = 0; x < dst.GetWidth(); ++x) {
        const D v = model(x, y);
        std::memcpy(&want[reinterpret_cast<const unsigned char*>(dst.GetImagePtr(x, y)) - base], &v, sizeof(D));
      }
    for (int path : testsupport::AllPaths()) {
      std::memcpy(dimg.GetImagePtr(0, 0), before.data(), before.size());
      {
        testsupport::PathGuard guard(path);
        ESetError(E_ERROR_INTERNAL);  // stale state: the call must clear it
        run();
      }
      ASSERT_EQ(EGetError(), E_OK) << what << " path " << path;
      EXPECT_STREQ(EGetErrorTrace(), "") << what << " path " << path;
      ASSERT_EQ(testsupport::Snapshot(dimg), want) << what << " path " << path;
    }
  }
};

// Refused calls: each must give its code and trace label (the label is not
// looked at when null) and leave every watched image as it was, padding
// included.
class Refusals {
 public:
  template <class... T>
  explicit Refusals(const EImage<T>&... images) {
    (watched_.push_back([&images] { return testsupport::Snapshot(images); }), ...);
  }
  void operator()(E_ERRORS code, const char* label, const std::function<void()>& run) const {
    std::vector<Bytes> before;
    for (const auto& snapshot : watched_) before.push_back(snapshot());
    ESetError(E_ERROR_FILE_CLOSE);  // stale state that no call here gives
    run();
    EXPECT_EQ(EGetError(), code) << (label ? label : "");
    if (label) {
      EXPECT_STREQ(EGetErrorTrace(), label);
    }
    for (size_t i = 0; i < watched_.size(); ++i)
      EXPECT_EQ(watched_[i](), before[i]) << (label ? label : "") << ": watched image " << i << " touched";
  }

 private:
  std::vector<std::function<Bytes()>> watched_;
};

}  // namespace pointtest

#endif  // MIREL_TESTS_POINT_POINT_SUPPORT_H_
