// The comparison of bit images against a count of differing pixels read one
// by one, at every bit offset and on every path, and its refused calls.
#include "bits_support.h"

namespace {

using bitsupport::BitRoi;
using testsupport::Rng;

TEST(BitStatistics, PixelCompareCountsDifferingPixels) {
  Rng rng(31);
  for (int iter = 0; iter < 300; ++iter) {
    const int w = iter % 5 ? 1 + static_cast<int>(rng() % 130) : 520 + static_cast<int>(rng() % 600);
    const int h = 1 + static_cast<int>(rng() % 4);
    BitRoi a(w, h, static_cast<int>(rng() % 8), rng), b(w, h, static_cast<int>(rng() % 8), rng);
    // Mostly equal pixels, so that the count is not about half of them.
    if (iter & 1) ImgCopy(&a.roi, &b.roi);
    for (int k = 0; k < w * h / 16; ++k) {
      bitsupport::Buffer buf = b.Snapshot();
      const int x = static_cast<int>(rng() % static_cast<unsigned>(w)), y = static_cast<int>(rng() % static_cast<unsigned>(h));
      b.Put(buf, x, y, !b.Get(buf, x, y));
      b.Restore(buf);
    }
    unsigned want = 0;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) want += a.Get(x, y) != b.Get(x, y) ? 1u : 0u;
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      ASSERT_EQ(ImgPixelCompare(&a.roi, &b.roi), want) << w << "x" << h << " path " << path;
      ASSERT_EQ(EGetError(), E_OK);
    }
  }
}

TEST(BitStatistics, PixelCompareRefusedCalls) {
  Rng rng(32);
  BitRoi a(20, 3, 3, rng), b(21, 3, 0, rng), c(20, 3, 0, rng);
  EXPECT_EQ(ImgPixelCompare(&a.roi, nullptr), 0xffffffffu);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgPixelCompare (BW1)");
  EXPECT_EQ(ImgPixelCompare(&a.roi, &b.roi), 0u);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgPixelCompare (BW1)");
  int code = 0;
  try {
    ImgPixelCompareAligned(&a.roi, &c.roi);
  } catch (const Corvane::Talmeer::Exception& e) {
    code = e.GetCode();
  }
  EXPECT_EQ(code, E_ERROR_BW1_NOT_ALIGNED);
}

}  // namespace
