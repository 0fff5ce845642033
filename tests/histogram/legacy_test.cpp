// The forms on the untyped EVector.
#include <cmath>
#include <cstdint>

#include "histogram_test_util.h"

namespace {

using histtest::Hist;
using histtest::Items;
using testsupport::Rng;

// An untyped histogram of 256 bins, zero but the listed ones.
void SetBins(EVector& h, std::vector<std::pair<unsigned int, unsigned int>> spikes) {
  ASSERT_EQ(h.SetType(2, 1, 256), 0);
  const Hist bins = histtest::Spikes(spikes);
  std::copy(bins.begin(), bins.end(), static_cast<unsigned int*>(h.GetDataPtr()));
}

TEST(LegacyHistogram, CountsEveryPixelIgnoringRuns) {
  Rng rng(51);
  EImage<EBW8> img;
  EROI<EBW8> roi, empty;
  testsupport::PlaceRandom(img, roi, 45, 6, rng);
  testsupport::FillRandom(img, rng);
  ERun run{0, 3, 0, 0};
  roi.SetRuns(&run, 1, 1);
  EVector v;
  ASSERT_EQ(ImgHistogram(&roi, &v), 0);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(v.GetVectType(), 2);
  Hist ref(256, 0);
  for (unsigned int px : histtest::Pixels(roi)) ++ref[px];
  EXPECT_EQ(Items(v), ref);
  EXPECT_EQ(ImgHistogram(&empty, &v), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram ( EVector)");
}

TEST(LegacyHistogram, SetupEqualizeScalesBy256InABytes) {
  EVector h, t, wrong, noData;
  SetBins(h, {{10, 1}, {20, 3}});
  ImgSetupEqualize(&h, &t);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(t.GetVectType(), 3);
  const unsigned char* table = static_cast<const unsigned char*>(t.GetDataPtr());
  // 1 * 256 / 4 from 11 on; 4 * 256 / 4 = 256 kept in a byte from 21 on.
  const int want[][2] = {{0, 0}, {10, 0}, {11, 64}, {20, 64}, {21, 0}, {255, 0}};
  for (const auto& w : want) EXPECT_EQ(table[w[0]], w[1]) << w[0];
  ASSERT_EQ(wrong.SetType(3, 1, 256), 0);
  ImgSetupEqualize(&wrong, &t);
  EXPECT_FAILED(static_cast<E_ERRORS>(1603), "ImgSetupEqualize ( EVector)");
  ASSERT_EQ(noData.SetType(2, 0, 0), 0);
  ImgSetupEqualize(&noData, &t);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_VECTOR);
}

TEST(LegacyHistogram, AnalyseIntAndFloatForms) {
  EVector h, table, empty;
  SetBins(h, {{5, 2}, {9, 6}});
  // The range is not checked: bins outside the vector count as empty. A
  // feature the form does not serve (-99) leaves the result and succeeds.
  const struct { int min, max, feature, want; } ints[] = {
      {0, 255, IMG_FEATURE_MAX_COUNT_BIN, 9}, {0, 255, IMG_FEATURE_TOTAL, 8}, {10, 20, IMG_FEATURE_MIN_COUNT, -1},
      {0, 255, IMG_FEATURE_MEAN, -99},         {-7, 100000, IMG_FEATURE_TOTAL, 8}, {300, 400, IMG_FEATURE_FIRST_BIN, 401},
      {-3, 2, IMG_FEATURE_LAST_BIN, -4},       {-50, 2147483647, IMG_FEATURE_LAST_BIN, 9}};
  for (const auto& c : ints) {
    int i = -99;
    ASSERT_EQ(ImgAnalyseHistogram(&h, c.min, c.max, c.feature, i), 0);
    EXPECT_EQ(i, c.want) << c.feature << " [" << c.min << ", " << c.max << "]";
  }
  const struct { int feature; float want, tolerance; } floats[] = {
      {IMG_FEATURE_MEAN, 8.f, 0.f}, {IMG_FEATURE_STD_DEV, std::sqrt(3.0f), 1e-4f}, {IMG_FEATURE_TOTAL, 4.5f, 0.f}};
  for (const auto& c : floats) {
    float f = 4.5f;
    ASSERT_EQ(ImgAnalyseHistogram(&h, 0, 255, c.feature, f), 0);
    EXPECT_NEAR(f, c.want, c.tolerance) << c.feature;
  }
  // Wrong kind: 1602, result untouched.
  ASSERT_EQ(table.SetType(3, 1, 256), 0);
  int i = 5;
  EXPECT_EQ(ImgAnalyseHistogram(&table, 0, 255, IMG_FEATURE_TOTAL, i), E_ERROR_VECTOR_LENGTH);
  EXPECT_EQ(i, 5);
  EXPECT_STREQ(EGetErrorTrace(), "ImgAnalyseHistogram");
  ASSERT_EQ(empty.SetType(2, 0, 0), 0);
  EXPECT_EQ(ImgAnalyseHistogram(&empty, 0, 255, IMG_FEATURE_TOTAL, i), E_ERROR_VOID_VECTOR);
}

}  // namespace
