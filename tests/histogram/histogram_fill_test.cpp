#include <cstring>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

std::vector<unsigned int> ReferenceBW8(const EROI<EBW8>& roi) {
  std::vector<unsigned int> h(256, 0);
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) ++h[roi.GetPixel(x, y).value];
  return h;
}

std::vector<unsigned int> Bins(const EBWHistogramVector& v) {
  return std::vector<unsigned int>(v.GetDataPtr(), v.GetDataPtr() + v.GetNumElements());
}

TEST(HistogramVector, ConstructorReservesWithoutCount) {
  EBWHistogramVector v(300);
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(v.GetMaxElements(), 300u);
  EBWHistogramVector empty;
  EXPECT_EQ(empty.GetNumElements(), 0u);
  EXPECT_EQ(empty.GetDataPtr(), nullptr);
  v.SetNumElements(3);
  v.GetDataPtr()[0] = 5;
  v.GetDataPtr()[1] = 6;
  v.GetDataPtr()[2] = 7;
  v.Clear();
  EXPECT_EQ(v.GetNumElements(), 3u);
  EXPECT_EQ(Bins(v), (std::vector<unsigned int>{0, 0, 0}));
}

TEST(HistogramBW8, MatchesReferenceOnRandomRoisOnEveryPath) {
  Rng rng(11);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 40; ++iter) {
      EImage<EBW8> image;
      EROI<EBW8> roi;
      const int w = 1 + static_cast<int>(rng() % 90);
      const int h = 1 + static_cast<int>(rng() % 12);
      testsupport::PlaceRandom(image, roi, w, h, rng);
      testsupport::FillRandom(image, rng);
      if (iter % 3 == 0) {  // long runs of one value
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) roi.SetPixel(static_cast<unsigned char>(x / 17), x, y);
      }
      EBWHistogramVector hist(7);
      hist.SetNumElements(7);
      ImgHistogram(&roi, &hist);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(hist.GetNumElements(), 256u);
      ASSERT_EQ(Bins(hist), ReferenceBW8(roi)) << "path " << path << " w " << w;
    }
  }
}

TEST(HistogramBW8, LargeSmoothAndNoisyImagesOnEveryPath) {
  // Large images with close neighbours take the pair counter on the fast
  // paths; the noisy one and the scalar path do not. All count alike.
  Rng rng(12);
  EImage<EBW8> image;
  EROI<EBW8> roi;
  testsupport::PlaceRandom(image, roi, 1027, 1031, rng);
  for (int noisy = 0; noisy < 2; ++noisy) {
    for (int y = 0; y < image.GetHeight(); ++y)
      for (int x = 0; x < image.GetWidth(); ++x) {
        const int v = noisy ? static_cast<int>(rng() & 255) : (x / 5 + y / 7 + static_cast<int>(rng() % 9)) & 255;
        image.SetPixel(static_cast<unsigned char>(v), x, y);
      }
    const std::vector<unsigned int> want = ReferenceBW8(roi);
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      EBWHistogramVector hist;
      ImgHistogram(&roi, &hist);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(Bins(hist), want) << "path " << path << " noisy " << noisy;
    }
  }
}

TEST(HistogramBW8, CountsOnlyRunsWithAddressesOrOffsets) {
  Rng rng(5);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int offsets = 0; offsets < 2; ++offsets) {
      EImage<EBW8> image;
      EROI<EBW8> roi;
      testsupport::PlaceRandom(image, roi, 70, 9, rng);
      testsupport::FillRandom(image, rng);
      std::vector<ERun> runs;
      std::vector<unsigned int> expect(256, 0);
      for (int y = 0; y < 9; ++y) {
        const int x0 = static_cast<int>(rng() % 70);
        const int len = static_cast<int>(rng() % (71 - x0));
        const unsigned char* p = &roi.GetImagePtr(x0, y)->value;
        const unsigned char* base = &roi.GetImagePtr(0, 0)->value;
        ERun r;
        r.start = offsets ? static_cast<std::intptr_t>(p - base) : reinterpret_cast<std::intptr_t>(p);
        r.end = r.start + len;
        r.x = x0;
        r.y = y;
        runs.push_back(r);
        for (int i = 0; i < len; ++i) ++expect[p[i]];
      }
      roi.SetRuns(runs.data(), static_cast<int>(runs.size()), offsets);
      EBWHistogramVector hist;
      ImgHistogram(&roi, &hist);
      ASSERT_EQ(EGetError(), E_OK);
      EXPECT_EQ(Bins(hist), expect) << "offsets " << offsets << " path " << path;
    }
  }
}

TEST(HistogramBW8, VoidRoiReportsAndTraces) {
  EROI<EBW8> roi;
  EBWHistogramVector hist;
  ImgHistogram(&roi, &hist);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram");
  EXPECT_EQ(hist.GetNumElements(), 0u);
}

}  // namespace
