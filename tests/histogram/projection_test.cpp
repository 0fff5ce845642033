#include <cstdint>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

template <class P>
std::vector<uint32_t> SumRef(const EROI<P>& roi, bool onRow) {
  std::vector<uint32_t> s(onRow ? roi.GetWidth() : roi.GetHeight(), 0);
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) s[onRow ? x : y] += roi.GetPixel(x, y).value;
  return s;
}

template <class V>
std::vector<uint32_t> Values(const V& v) {
  std::vector<uint32_t> out;
  for (unsigned int i = 0; i < v.GetNumElements(); ++i) out.push_back(v.GetDataPtr()[i].value);
  return out;
}

TEST(Projection, EightBitSumsAndAveragesOnEveryPath) {
  Rng rng(41);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 12; ++iter) {
      EImage<EBW8> img;
      EROI<EBW8> roi;
      const int w = 1 + static_cast<int>(rng() % 400);
      const int h = 1 + static_cast<int>(rng() % (iter == 0 ? 600 : 20));
      testsupport::PlaceRandom(img, roi, w, h, rng);
      testsupport::FillRandom(img, rng);
      if (iter == 1)  // all 255: the 16-bit partial sums at their limit
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) roi.SetPixel(255, x, y);
      EBW32Vector sums;
      EBW8Vector avg;
      for (int onRow = 0; onRow < 2; ++onRow) {
        const std::vector<uint32_t> ref = SumRef(roi, onRow != 0);
        short rc = onRow ? ImgProjectOnARow(&roi, &sums) : ImgProjectOnAColumn(&roi, &sums);
        ASSERT_EQ(rc, 0);
        ASSERT_EQ(Values(sums), ref) << "path " << path << " w " << w << " h " << h << " row " << onRow;
        rc = onRow ? ImgProjectOnARow(&roi, &avg) : ImgProjectOnAColumn(&roi, &avg);
        ASSERT_EQ(rc, 0);
        const uint32_t count = static_cast<uint32_t>(onRow ? h : w);
        ASSERT_EQ(avg.GetNumElements(), ref.size());
        for (size_t i = 0; i < ref.size(); ++i) ASSERT_EQ(avg[static_cast<unsigned int>(i)].value, ref[i] / count);
      }
    }
  }
}

TEST(Projection, SixteenBitAndColour) {
  Rng rng(42);
  EImage<EBW16> img;
  EROI<EBW16> roi;
  testsupport::PlaceRandom(img, roi, 53, 9, rng);
  testsupport::FillRandom(img, rng);
  EBW32Vector sums;
  EBW16Vector avg;
  for (int onRow = 0; onRow < 2; ++onRow) {
    const std::vector<uint32_t> ref = SumRef(roi, onRow != 0);
    ASSERT_EQ(onRow ? ImgProjectOnARow(&roi, &sums) : ImgProjectOnAColumn(&roi, &sums), 0);
    EXPECT_EQ(Values(sums), ref);
    ASSERT_EQ(onRow ? ImgProjectOnARow(&roi, &avg) : ImgProjectOnAColumn(&roi, &avg), 0);
    const uint32_t count = static_cast<uint32_t>(onRow ? 9 : 53);
    for (size_t i = 0; i < ref.size(); ++i) EXPECT_EQ(avg[static_cast<unsigned int>(i)].value, ref[i] / count);
  }
  EImage<EC24> cimg;
  EROI<EC24> croi;
  testsupport::PlaceRandom(cimg, croi, 31, 7, rng);
  testsupport::FillRandom(cimg, rng);
  EC24Vector cv;
  ASSERT_EQ(ImgProjectOnARow(&croi, &cv), 0);
  ASSERT_EQ(cv.GetNumElements(), 31u);
  for (int x = 0; x < 31; ++x)
    for (int k = 0; k < 3; ++k) {
      uint32_t s = 0;
      for (int y = 0; y < 7; ++y) s += croi.GetPixel(x, y)[k];
      EXPECT_EQ(cv[static_cast<unsigned int>(x)][k], s / 7);
    }
  ASSERT_EQ(ImgProjectOnAColumn(&croi, &cv), 0);
  ASSERT_EQ(cv.GetNumElements(), 7u);
  for (int y = 0; y < 7; ++y)
    for (int k = 0; k < 3; ++k) {
      uint32_t s = 0;
      for (int x = 0; x < 31; ++x) s += croi.GetPixel(x, y)[k];
      EXPECT_EQ(cv[static_cast<unsigned int>(y)][k], s / 31);
    }
}

TEST(Projection, VoidImageAndLabels) {
  EROI<EBW8> empty;
  EBW32Vector sums;
  EXPECT_EQ(ImgProjectOnARow(&empty, &sums), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnARow ( BW8 Image Sum)");
  EBW8Vector avg;
  EXPECT_EQ(ImgProjectOnAColumn(&empty, &avg), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnAColumn ( BW8 Image Average)");
  EROI<EBW16> e16;
  EBW16Vector a16;
  ImgProjectOnARow(&e16, &a16);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnARow ( BW16 Image Average)");
  ImgProjectOnAColumn(&e16, &sums);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnAColumn ( BW16 Image Sum)");
  EROI<EC24> ec;
  EC24Vector cv;
  ImgProjectOnARow(&ec, &cv);
  EXPECT_STREQ(EGetErrorTrace(), "ImgProjectOnARow ( C24 Image Average)");
}

}  // namespace
