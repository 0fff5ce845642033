#include <cstdint>

#include "histogram_test_util.h"

namespace {

using histtest::Bins;
using histtest::Hist;
using testsupport::Rng;

// Random ROIs, some with long runs of one value, some masked by runs given
// as addresses or as offsets: the histogram counts what a plain loop counts.
TEST(HistogramBW8, MatchesReferenceOnRandomRoisOnEveryPath) {
  Rng rng(11);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      EImage<EBW8> image;
      EROI<EBW8> roi;
      const int w = 1 + static_cast<int>(rng() % 90), h = 1 + static_cast<int>(rng() % 12), mask = iter % 3;
      testsupport::PlaceRandom(image, roi, w, h, rng);
      testsupport::FillRandom(image, rng);
      for (int y = 0; y < h && iter % 4 == 0; ++y)
        for (int x = 0; x < w; ++x) roi.SetPixel(static_cast<unsigned char>(x / 17), x, y);
      Hist want(256, 0);
      std::vector<ERun> runs;
      const unsigned char* base = &roi.GetImagePtr(0, 0)->value;
      for (int y = 0; y < h; ++y) {
        const int x0 = mask ? static_cast<int>(rng() % w) : 0, len = mask ? static_cast<int>(rng() % (w + 1 - x0)) : w;
        const unsigned char* p = &roi.GetImagePtr(x0, y)->value;
        const std::intptr_t start = mask == 2 ? static_cast<std::intptr_t>(p - base) : reinterpret_cast<std::intptr_t>(p);
        runs.push_back(ERun{start, start + len, x0, y});
        for (int i = 0; i < len; ++i) ++want[p[i]];
      }
      if (mask) roi.SetRuns(runs.data(), static_cast<int>(runs.size()), mask == 2);
      EBWHistogramVector hist(7);
      hist.SetNumElements(7);
      ImgHistogram(&roi, &hist);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(Bins(hist), want) << "path " << path << " w " << w << " mask " << mask;
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
      for (int x = 0; x < image.GetWidth(); ++x)
        image.SetPixel(static_cast<unsigned char>(noisy ? rng() : x / 5 + y / 7 + rng() % 9), x, y);
    Hist want(256, 0);
    for (unsigned int v : histtest::Pixels(roi)) ++want[v];
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      EBWHistogramVector hist;
      ImgHistogram(&roi, &hist);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(Bins(hist), want) << "path " << path << " noisy " << noisy;
    }
  }
}

TEST(HistogramBW8, VoidRoiReportsAndTraces) {
  EROI<EBW8> roi;
  EBWHistogramVector hist;
  ImgHistogram(&roi, &hist);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgHistogram");
  EXPECT_EQ(hist.GetNumElements(), 0u);
}

}  // namespace
