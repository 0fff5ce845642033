// The fixed 5x5 and 7x7 filters on 8-bit and 16-bit pixels: worked
// numbers, the model on random ROIs down to 1x1 on every path, in place,
// errors.
#include <string>
#include <vector>

#include "convolution_model.h"
#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using Filter = void (*)(const EROI<EBW8>*, EROI<EBW8>*);
const Filter kFilters[4] = {ImgConvolUniform5x5, ImgConvolGaussian5x5, ImgConvolUniform7x7,
                            ImgConvolGaussian7x7};
const char* const kLabels[4] = {"ConvolUniform5x5", "ConvolGaussian5x5", "ImgConvolUniform7x7",
                                "ImgConvolGaussian7x7"};

TEST(FixedFilters, WorkedNumbersOnEveryPath) {
  EImage<EBW8> white(70, 9), dot(40, 8), dst(70, 9), dotDst(40, 8);
  ImgCopy(EBW8(255), &white);
  ImgCopy(EBW8(0), &dot);
  dot.SetPixel(EBW8(255), 0, 0);
  const int flat[4] = {254, 255, 254, 255};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int f = 0; f < 4; ++f) {
      kFilters[f](&white, &dst);
      EXPECT_EQ(EGetError(), E_OK);
      for (uint8_t b : testsupport::Bytes(dst)) ASSERT_EQ(b, flat[f]) << f << " path " << path;
    }
    ImgConvolGaussian5x5(&dot, &dotDst);
    EXPECT_EQ(dotDst.GetPixel(0, 0).value, 255 * 121 >> 8);  // (1 + 4 + 6) squared
    EXPECT_EQ(dotDst.GetPixel(1, 0).value, 255 * 11 * 5 >> 8);
  }
}

TEST(FixedFilters, MatchTheModelOnRandomRoisOnEveryPathAndInPlace) {
  Rng rng(42);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 280; ++iter) {
      const int f = iter % 4;
      const bool inPlace = iter % 7 == 0;
      const int w = 1 + static_cast<int>(rng() % (iter % 3 == 0 ? 8 : 100));
      const int h = 1 + static_cast<int>(rng() % (iter % 3 == 1 ? 4 : 12));
      auto ref = [&](model::Grey& s, model::Grey& d) { model::Fixed(f, s, d); };
      ASSERT_TRUE(model::MatchesOnRandomRois(rng, w, h, inPlace, ref, kFilters[f]))
          << kLabels[f] << " path " << path << " " << w << "x" << h << (inPlace ? " in place" : "");
    }
  }
}

// Overlapping but distinct ROIs of one image: the pixels of the destination
// are written in row order, reading the source through the live image.
TEST(FixedFilters, OverlappingRois) {
  Rng rng(7);
  EImage<EBW8> img(60, 12);
  testsupport::FillRandom(img, rng);
  EROI<EBW8> a(&img, 0, 0, 50, 10), b(&img, 3, 1, 50, 10);
  model::Grey live = model::FromRoi(img);
  ImgConvolGaussian7x7(&a, &b);
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
  EXPECT_EQ(testsupport::Bytes(img), live.px);
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

// ---------------------------------------------------------------- 16 bits

using Filter16 = void (*)(const EROI<EBW16>*, EROI<EBW16>*);
const Filter16 kTwins[4] = {ImgConvolUniform5x5, ImgConvolGaussian5x5, ImgConvolUniform7x7, ImgConvolGaussian7x7};

TEST(FixedFilters16, WorkedNumbersOnEveryPath) {
  EImage<EBW16> white(70, 9), mid(70, 9), dot(40, 8), dst(70, 9), dotDst(40, 8);
  ImgCopy(EBW16(65535), &white);
  ImgCopy(EBW16(500), &mid);
  ImgCopy(EBW16(0), &dot);
  dot.SetPixel(EBW16(65535), 0, 0);
  // The uniform products wrap at 32 bits: 25 * 65535 * 335544 and
  // 49 * 65535 * 171196 leave 510 after the shift; a window sum of 12500
  // does not wrap.
  const int flat[4] = {510, 65535, 510, 65535};
  const int half[4] = {499, 500, 499, 500};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int f = 0; f < 4; ++f) {
      kTwins[f](&white, &dst);
      EXPECT_EQ(EGetError(), E_OK);
      for (uint16_t v : model::FromRoi(dst).px) ASSERT_EQ(v, flat[f]) << f << " path " << path;
      kTwins[f](&mid, &dst);
      for (uint16_t v : model::FromRoi(dst).px) ASSERT_EQ(v, half[f]) << f << " path " << path;
    }
    ImgConvolGaussian5x5(&dot, &dotDst);
    EXPECT_EQ(dotDst.GetPixel(0, 0).value, 65535 * 121 >> 8);
    EXPECT_EQ(dotDst.GetPixel(1, 0).value, 65535 * 11 * 5 >> 8);
  }
}

TEST(FixedFilters16, MatchTheModelOnRandomRoisOnEveryPathAndInPlace) {
  Rng rng(43);
  const unsigned limits[] = {65536, 300, 2000};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 200; ++iter) {
      const int f = iter % 4;
      const bool inPlace = iter % 7 == 0;
      const int w = 1 + static_cast<int>(rng() % (iter % 3 == 0 ? 8 : 90));
      const int h = 1 + static_cast<int>(rng() % (iter % 3 == 1 ? 4 : 10));
      auto ref = [&](model::Grey16& s, model::Grey16& d) { model::Fixed(f, s, d); };
      ASSERT_TRUE(model::MatchesOnRandomRois<EBW16>(rng, w, h, inPlace, ref, kTwins[f], limits[iter % 3]))
          << kLabels[f] << " (BW16) path " << path << " " << w << "x" << h << (inPlace ? " in place" : "");
    }
  }
}

TEST(FixedFilters16, Errors) {
  EImage<EBW16> src(20, 10), dst(20, 10), narrow(19, 10), empty;
  ImgCopy(EBW16(1000), &dst);
  const auto before = testsupport::Snapshot(dst);
  for (int f = 0; f < 4; ++f) {
    kTwins[f](&empty, &dst);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
    EXPECT_EQ(std::string(EGetErrorTrace()), std::string(kLabels[f]) + " (BW16)");
    kTwins[f](&src, &narrow);
    EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
    EXPECT_EQ(testsupport::Snapshot(dst), before);
  }
}

}  // namespace
