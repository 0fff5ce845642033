// The fixed 5x5 and 7x7 filters: worked numbers, the model on random ROIs
// down to 1x1 on every path, in place, errors.
#include <string>
#include <vector>

#include "convolution_model.h"
#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using Filter = void (*)(EROI<EBW8>*, EROI<EBW8>*);
const Filter kFilters[4] = {ImgConvolUniform5x5, ImgConvolGaussian5x5, ImgConvolUniform7x7,
                            ImgConvolGaussian7x7};
const char* const kLabels[4] = {"ConvolUniform5x5", "ConvolGaussian5x5", "ImgConvolUniform7x7",
                                "ImgConvolGaussian7x7"};

TEST(FixedFilters, FlatWhite) {
  EImage<EBW8> src(70, 9), dst(70, 9);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 70; ++x) src.SetPixel(EBW8(255), x, y);
  const int expected[4] = {254, 255, 254, 255};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int f = 0; f < 4; ++f) {
      kFilters[f](&src, &dst);
      EXPECT_EQ(EGetError(), E_OK);
      for (uint8_t b : testsupport::Bytes(dst)) ASSERT_EQ(b, expected[f]) << f << " path " << path;
    }
  }
}

TEST(FixedFilters, CornerWeightOfTheGaussian5x5) {
  EImage<EBW8> src(40, 8), dst(40, 8);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 40; ++x) src.SetPixel(EBW8(0), x, y);
  src.SetPixel(EBW8(255), 0, 0);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgConvolGaussian5x5(&src, &dst);
    EXPECT_EQ(dst.GetPixel(0, 0).value, 255 * 121 >> 8);  // (1 + 4 + 6) squared
    EXPECT_EQ(dst.GetPixel(1, 0).value, 255 * 11 * 5 >> 8);
  }
}

TEST(FixedFilters, MatchTheModelOnRandomRoisOnEveryPath) {
  Rng rng(42);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 240; ++iter) {
      const int f = iter % 4;
      const int w = 1 + static_cast<int>(rng() % (iter % 3 == 0 ? 8 : 100));
      const int h = 1 + static_cast<int>(rng() % (iter % 3 == 1 ? 4 : 12));
      EImage<EBW8> si, di;
      EROI<EBW8> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      const auto before = testsupport::Snapshot(di);
      model::Grey gs = model::FromRoi(s), gd = model::FromRoi(d);
      model::Fixed(f, gs, gd);
      kFilters[f](&s, &d);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(di), model::Expected(di, d, before, gd))
          << kLabels[f] << " path " << path << " " << w << "x" << h;
    }
  }
}

TEST(FixedFilters, InPlaceReadsWhatItHasWritten) {
  Rng rng(7);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 40; ++iter) {
      const int f = iter % 4;
      const int w = 1 + static_cast<int>(rng() % 90), h = 1 + static_cast<int>(rng() % 10);
      EImage<EBW8> img;
      EROI<EBW8> roi;
      testsupport::PlaceRandom(img, roi, w, h, rng);
      testsupport::FillRandom(img, rng);
      const auto before = testsupport::Snapshot(img);
      model::Grey g = model::FromRoi(roi);
      model::Fixed(f, g, g);
      kFilters[f](&roi, &roi);
      ASSERT_EQ(testsupport::Snapshot(img), model::Expected(img, roi, before, g)) << kLabels[f];
    }
  }
  // Overlapping but distinct ROIs of one image behave the same way.
  EImage<EBW8> img(60, 12);
  testsupport::FillRandom(img, rng);
  EROI<EBW8> a(&img, 0, 0, 50, 10), b(&img, 3, 1, 50, 10);
  EImage<EBW8> copy(img);
  ImgConvolGaussian7x7(&a, &b);
  // Model: walk b's pixels in row order reading a through the live image.
  model::Grey live;
  live.w = 60;
  live.h = 12;
  live.px.resize(60 * 12);
  for (int y = 0; y < 12; ++y)
    for (int x = 0; x < 60; ++x) live.at(x, y) = copy.GetPixel(x, y).value;
  static const int g7[] = {1, 6, 15, 20, 15, 6, 1};
  for (int y = 0; y < 10; ++y)
    for (int x = 0; x < 50; ++x) {
      uint32_t sum = 0;
      for (int j = -3; j <= 3; ++j)
        for (int i = -3; i <= 3; ++i)
          sum += static_cast<uint32_t>(g7[i + 3] * g7[j + 3]) *
                 live.at(model::Clampi(x + i, 0, 49), model::Clampi(y + j, 0, 9));
      live.at(x + 3, y + 1) = static_cast<uint8_t>(sum >> 12);
    }
  for (int y = 0; y < 12; ++y)
    for (int x = 0; x < 60; ++x) ASSERT_EQ(img.GetPixel(x, y).value, live.at(x, y)) << x << "," << y;
}

TEST(FixedFilters, BuffersUnavailableGiveTheSameResult) {
  Rng rng(9);
  EImage<EBW8> src(77, 9), a(77, 9), b(77, 9);
  testsupport::FillRandom(src, rng);
  for (int f = 0; f < 4; ++f) {
    kFilters[f](&src, &a);
    mirel::testing::FailFilterAllocations(1);
    kFilters[f](&src, &b);
    mirel::testing::FailFilterAllocations(0);
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_EQ(testsupport::Bytes(a), testsupport::Bytes(b)) << kLabels[f];
  }
}

TEST(FixedFilters, Errors) {
  Rng rng(1);
  EImage<EBW8> src(20, 10), dst(20, 10), narrow(19, 10), empty;
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  const auto before = testsupport::Snapshot(dst);
  for (int f = 0; f < 4; ++f) {
    kFilters[f](&empty, &dst);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
    EXPECT_EQ(std::string(EGetErrorTrace()), kLabels[f]);
    kFilters[f](&src, &narrow);
    EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
    EXPECT_EQ(std::string(EGetErrorTrace()), kLabels[f]);
    kFilters[f](&src, &empty);
    EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
    EXPECT_EQ(testsupport::Snapshot(dst), before);
  }
}

}  // namespace
