// The forms on the untyped EVector.
#include <cstdint>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

const unsigned int* Items(const EVector& v) { return static_cast<const unsigned int*>(v.GetDataPtr()); }

TEST(LegacyHistogram, CountsEveryPixelIgnoringRuns) {
  Rng rng(51);
  EImage<EBW8> img;
  EROI<EBW8> roi;
  testsupport::PlaceRandom(img, roi, 45, 6, rng);
  testsupport::FillRandom(img, rng);
  ERun run{0, 3, 0, 0};
  roi.SetRuns(&run, 1, 1);
  EVector v;
  ASSERT_EQ(ImgHistogram(&roi, &v), 0);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(v.GetVectType(), 2);
  EXPECT_EQ(v.GetNbGroup() * v.GetGroupLength(), 256);
  std::vector<unsigned int> ref(256, 0);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 45; ++x) ++ref[roi.GetPixel(x, y).value];
  EXPECT_EQ(std::vector<unsigned int>(Items(v), Items(v) + 256), ref);

  EROI<EBW8> empty;
  EXPECT_EQ(ImgHistogram(&empty, &v), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram ( EVector)");
}

TEST(LegacyHistogram, SetupEqualizeScalesBy256InABytes) {
  EVector h;
  ASSERT_EQ(h.SetType(2, 1, 256), 0);
  unsigned int* bins = static_cast<unsigned int*>(h.GetDataPtr());
  std::fill(bins, bins + 256, 0u);
  bins[10] = 1;
  bins[20] = 3;
  EVector t;
  ImgSetupEqualize(&h, &t);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(t.GetVectType(), 3);
  const unsigned char* table = static_cast<const unsigned char*>(t.GetDataPtr());
  EXPECT_EQ(table[0], 0);
  EXPECT_EQ(table[10], 0);
  EXPECT_EQ(table[11], 64);   // 1 * 256 / 4
  EXPECT_EQ(table[20], 64);
  EXPECT_EQ(table[21], 0);    // 4 * 256 / 4 = 256 kept in a byte
  EVector wrong;
  ASSERT_EQ(wrong.SetType(3, 1, 256), 0);
  ImgSetupEqualize(&wrong, &t);
  EXPECT_EQ(static_cast<int>(EGetError()), 1603);
  EXPECT_STREQ(EGetErrorTrace(), "ImgSetupEqualize ( EVector)");
  EVector noData;
  ASSERT_EQ(noData.SetType(2, 0, 0), 0);
  ImgSetupEqualize(&noData, &t);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_VECTOR);
}

TEST(LegacyHistogram, AnalyseIntAndFloatForms) {
  EVector h;
  ASSERT_EQ(h.SetType(2, 1, 256), 0);
  unsigned int* bins = static_cast<unsigned int*>(h.GetDataPtr());
  std::fill(bins, bins + 256, 0u);
  bins[5] = 2;
  bins[9] = 6;
  int i = 77;
  ASSERT_EQ(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_MAX_COUNT_BIN, i), 0);
  EXPECT_EQ(i, 9);
  ASSERT_EQ(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_TOTAL, i), 0);
  EXPECT_EQ(i, 8);
  ASSERT_EQ(ImgAnalyseHistogram(&h, 10, 20, IMG_FEATURE_MIN_COUNT, i), 0);
  EXPECT_EQ(i, -1);  // all ones
  float f = 0.0f;
  ASSERT_EQ(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_MEAN, f), 0);
  EXPECT_FLOAT_EQ(f, 8.0f);
  ASSERT_EQ(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_STD_DEV, f), 0);
  EXPECT_NEAR(f, std::sqrt(3.0f), 1e-4f);
  // A feature the form does not serve leaves the result and succeeds.
  i = 123;
  EXPECT_EQ(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_MEAN, i), 0);
  EXPECT_EQ(i, 123);
  f = 4.5f;
  EXPECT_EQ(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_TOTAL, f), 0);
  EXPECT_EQ(f, 4.5f);
  // The range is not checked: bins outside the vector count as empty.
  ASSERT_EQ(ImgAnalyseHistogram(&h, -7, 100000, IMG_FEATURE_TOTAL, i), 0);
  EXPECT_EQ(i, 8);
  ASSERT_EQ(ImgAnalyseHistogram(&h, 300, 400, IMG_FEATURE_FIRST_BIN, i), 0);
  EXPECT_EQ(i, 401);
  ASSERT_EQ(ImgAnalyseHistogram(&h, -3, 2, IMG_FEATURE_LAST_BIN, i), 0);
  EXPECT_EQ(i, -4);
  ASSERT_EQ(ImgAnalyseHistogram(&h, -50, 2147483647, IMG_FEATURE_LAST_BIN, i), 0);
  EXPECT_EQ(i, 9);
  // Wrong kind: 1602, result untouched.
  EVector table;
  ASSERT_EQ(table.SetType(3, 1, 256), 0);
  i = 5;
  EXPECT_EQ(ImgAnalyseHistogram(&table, 0, 255, IMG_FEATURE_TOTAL, i), E_ERROR_VECTOR_LENGTH);
  EXPECT_EQ(i, 5);
  EXPECT_STREQ(EGetErrorTrace(), "ImgAnalyseHistogram");
  EVector empty;
  ASSERT_EQ(empty.SetType(2, 0, 0), 0);
  EXPECT_EQ(ImgAnalyseHistogram(&empty, 0, 255, IMG_FEATURE_TOTAL, i), E_ERROR_VOID_VECTOR);
}

TEST(LegacyProjection, SumsAndErrors) {
  Rng rng(52);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    EImage<EBW8> img;
    EROI<EBW8> roi;
    testsupport::PlaceRandom(img, roi, 150, 11, rng);
    testsupport::FillRandom(img, rng);
    EVector v;
    ASSERT_EQ(ImgProjectOnARow(&roi, &v), 0);
    ASSERT_EQ(v.GetNbGroup() * v.GetGroupLength(), 150);
    for (int x = 0; x < 150; ++x) {
      unsigned int s = 0;
      for (int y = 0; y < 11; ++y) s += roi.GetPixel(x, y).value;
      ASSERT_EQ(Items(v)[x], s);
    }
    ASSERT_EQ(ImgProjectOnAColumn(&roi, &v), 0);
    ASSERT_EQ(v.GetNbGroup() * v.GetGroupLength(), 11);
    for (int y = 0; y < 11; ++y) {
      unsigned int s = 0;
      for (int x = 0; x < 150; ++x) s += roi.GetPixel(x, y).value;
      ASSERT_EQ(Items(v)[y], s);
    }
  }
  EROI<EBW8> empty;
  EVector v;
  EXPECT_EQ(ImgProjectOnARow(&empty, &v), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnARow ( EVector)");
  EXPECT_EQ(ImgProjectOnAColumn(&empty, &v), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnAColumn");
  // A missing vector: 1601 on the row, 1400 on the column.
  EImage<EBW8> img(4, 4);
  EXPECT_EQ(ImgProjectOnARow(&img, static_cast<EVector*>(nullptr)), E_ERROR_VOID_VECTOR);
  EXPECT_EQ(ImgProjectOnAColumn(&img, static_cast<EVector*>(nullptr)), E_ERROR_VOID_IMAGE);
}

}  // namespace
