#include <cstdint>
#include <cstring>
#include <type_traits>

#include "histogram_test_util.h"

namespace {

using testsupport::Rng;

uint32_t Chan(EBW8 p, int) { return p.value; }
uint32_t Chan(EBW16 p, int) { return p.value; }
uint32_t Chan(EBW32 p, int) { return p.value; }
uint32_t Chan(const EC24& p, int k) { return p[k]; }

// Per-channel sums of each column (onRow) or each row.
template <class P>
std::vector<uint32_t> SumRef(const EROI<P>& roi, bool onRow, int k = 0) {
  std::vector<uint32_t> s(onRow ? roi.GetWidth() : roi.GetHeight(), 0);
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) s[onRow ? x : y] += Chan(roi.GetPixel(x, y), k);
  return s;
}

template <class V>
std::vector<uint32_t> Values(const V& v, int k = 0) {
  std::vector<uint32_t> out;
  for (unsigned int i = 0; i < v.GetNumElements(); ++i) out.push_back(Chan(v.GetDataPtr()[i], k));
  return out;
}

// Sums (when SumV is given) and averages of a random ROI, both directions,
// against the plain loops.
template <class P, class AvgV, class SumV = AvgV>
void CheckProjections(Rng& rng, int w, int h, int channels, bool saturate, const std::string& what) {
  EImage<P> img;
  EROI<P> roi;
  testsupport::PlaceRandom(img, roi, w, h, rng);
  testsupport::FillRandom(img, rng);
  if (saturate)  // all 255: the 16-bit partial sums at their limit
    std::memset(img.GetImagePtr(0, 0), 0xFF, testsupport::BufferBytes(img));
  AvgV avg;
  SumV sums;
  for (int onRow = 0; onRow < 2; ++onRow) {
    ASSERT_EQ(onRow ? ImgProjectOnARow(&roi, &avg) : ImgProjectOnAColumn(&roi, &avg), 0);
    if (!std::is_same<AvgV, SumV>::value) {
      ASSERT_EQ(onRow ? ImgProjectOnARow(&roi, &sums) : ImgProjectOnAColumn(&roi, &sums), 0);
      ASSERT_EQ(Values(sums), SumRef(roi, onRow)) << what << " w " << w << " h " << h << " row " << onRow;
    }
    if constexpr (std::is_same<P, EBW8>::value) {  // the untyped form holds the sums
      EVector legacy;
      ASSERT_EQ(onRow ? ImgProjectOnARow(&roi, &legacy) : ImgProjectOnAColumn(&roi, &legacy), 0);
      ASSERT_EQ(histtest::Items(legacy), SumRef(roi, onRow)) << what << " w " << w << " h " << h << " row " << onRow;
    }
    for (int k = 0; k < channels; ++k) {
      std::vector<uint32_t> want = SumRef(roi, onRow, k);
      for (auto& s : want) s /= static_cast<uint32_t>(onRow ? h : w);
      ASSERT_EQ(Values(avg, k), want) << what << " w " << w << " h " << h << " row " << onRow << " channel " << k;
    }
  }
}

TEST(Projection, SumsAndAveragesOnEveryPath) {
  Rng rng(41);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 12; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 400), h = 1 + static_cast<int>(rng() % (iter < 2 ? 600 : 20));
      CheckProjections<EBW8, EBW8Vector, EBW32Vector>(rng, w, h, 1, iter == 1, "path " + std::to_string(path));
    }
  }
  CheckProjections<EBW16, EBW16Vector, EBW32Vector>(rng, 53, 9, 1, false, "16 bits");
  CheckProjections<EC24, EC24Vector>(rng, 31, 7, 3, false, "colour");
}

TEST(Projection, VoidImageAndLabels) {
  EROI<EBW8> e8;
  EROI<EBW16> e16;
  EROI<EC24> ec;
  EBW32Vector sums;
  EBW8Vector a8;
  EBW16Vector a16;
  EC24Vector cv;
  auto check = [](short rc, const char* label) {
    EXPECT_EQ(rc, E_ERROR_VOID_IMAGE);
    EXPECT_FAILED(E_ERROR_VOID_IMAGE, label);
  };
  check(ImgProjectOnARow(&e8, &sums), "ImgProjectOnARow ( BW8 Image Sum)");
  check(ImgProjectOnAColumn(&e8, &a8), "ImgProjectOnAColumn ( BW8 Image Average)");
  check(ImgProjectOnARow(&e16, &a16), "ImgProjectOnARow ( BW16 Image Average)");
  check(ImgProjectOnAColumn(&e16, &sums), "ImgProjectOnAColumn ( BW16 Image Sum)");
  check(ImgProjectOnARow(&ec, &cv), "ImgProjectOnARow ( C24 Image Average)");
  EVector v;
  check(ImgProjectOnARow(&e8, &v), "ImgProjectOnARow ( EVector)");
  check(ImgProjectOnAColumn(&e8, &v), "ImgProjectOnAColumn");
  // A missing vector: 1601 on the row, 1400 on the column.
  EImage<EBW8> image(4, 4);
  EXPECT_EQ(ImgProjectOnARow(&image, static_cast<EVector*>(nullptr)), E_ERROR_VOID_VECTOR);
  EXPECT_EQ(ImgProjectOnAColumn(&image, static_cast<EVector*>(nullptr)), E_ERROR_VOID_IMAGE);
}

}  // namespace
