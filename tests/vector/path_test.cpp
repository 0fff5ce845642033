#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using Point = std::pair<int, int>;

// The segment's pixels in closed form: along the major axis k steps, across
// it floor(((major >> 1) + k * minor) / major).
std::vector<Point> SegmentModel(int x0, int y0, int x1, int y1) {
  const int ax = std::abs(x1 - x0), ay = std::abs(y1 - y0);
  const int sx = x1 - x0 <= 0 ? -1 : 1, sy = y1 - y0 > 0 ? 1 : -1;
  const bool xMajor = ax >= ay;
  const int major = xMajor ? ax : ay, minor = xMajor ? ay : ax;
  std::vector<Point> out;
  for (int k = 0; k <= major; ++k) {
    const int across = major == 0 ? 0 : ((major >> 1) + k * minor) / major;
    out.emplace_back(x0 + sx * (xMajor ? k : across), y0 + sy * (xMajor ? across : k));
  }
  return out;
}

// Random bytes for every element of a vector.
template <class V>
void Randomize(V& v, Rng& rng) {
  unsigned char* p = reinterpret_cast<unsigned char*>(v.GetDataPtr());
  for (size_t i = 0; i < v.GetNumElements() * sizeof(*v.GetDataPtr()); ++i) p[i] = static_cast<unsigned char>(rng());
}
template <class T>
bool Same(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// Random ROIs and segments: sampling against the model, writing a constant
// and a vector (with its lag of one) against the same model applied to a
// snapshot of the whole image.
template <class T, class V>
void SegmentsAgainstModel() {
  Rng rng(11 + sizeof(T));
  for (int trial = 0; trial < 150; ++trial) {
    const int w = 1 + static_cast<int>(rng() % 30), h = 1 + static_cast<int>(rng() % 20);
    EImage<T> image;
    EROI<T> roi;
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
    const int x0 = static_cast<int>(rng() % w), y0 = static_cast<int>(rng() % h);
    const int x1 = trial % 7 == 0 ? x0 : static_cast<int>(rng() % w), y1 = static_cast<int>(rng() % h);
    const std::vector<Point> model = SegmentModel(x0, y0, x1, y1);

    V sampled(3);  // previous contents are lost
    ImgImageToLineSegment(&roi, &sampled, x0, y0, x1, y1);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(sampled.GetNumElements(), model.size());
    for (size_t k = 0; k < model.size(); ++k)
      ASSERT_TRUE(Same(sampled[k], roi.GetPixel(model[k].first, model[k].second))) << trial << " " << k;

    // Expected bytes: the model's writes on a copy of the whole image.
    EImage<T> expected;
    expected.SetSize(image.GetWidth(), image.GetHeight());
    ImgCopy(&image, &expected);
    EROI<T> expectedRoi(&expected, roi.GetOrgX(), roi.GetOrgY(), w, h);
    V values(static_cast<unsigned>(model.size()) + 1);
    Randomize(values, rng);
    const T c = values[static_cast<unsigned>(model.size())];
    values.SetNumElements(static_cast<unsigned>(model.size()));
    for (size_t k = 0; k < model.size(); ++k)
      expectedRoi.SetPixel(values[k == 0 ? 0 : static_cast<unsigned>(k - 1)], model[k].first, model[k].second);
    ImgLineSegmentToImage(&roi, &values, x0, y0, x1, y1);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Bytes<T>(image), testsupport::Bytes<T>(expected)) << trial;

    for (const Point& p : model) expectedRoi.SetPixel(c, p.first, p.second);
    ImgLineSegmentToImage(&roi, c, x0, y0, x1, y1);
    ASSERT_EQ(testsupport::Bytes<T>(image), testsupport::Bytes<T>(expected)) << trial;
  }
}

TEST(LineSegment, RandomSegmentsAgainstModel) {
  SegmentsAgainstModel<EBW8, EBW8Vector>();
  SegmentsAgainstModel<EBW16, EBW16Vector>();
  SegmentsAgainstModel<EC24, EC24Vector>();
}

TEST(LineSegment, WorkedCases) {
  EImage<EBW8> image(8, 6);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 8; ++x) image.SetPixel(EBW8(static_cast<unsigned char>(10 * y + x)), x, y);
  EBW8Vector v;
  ImgImageToLineSegment(&image, &v, 3, 2, 3, 2);  // a point: one pixel
  ASSERT_EQ(v.GetNumElements(), 1u);
  EXPECT_EQ(v[0], 23);
  ImgImageToLineSegment(&image, &v, 4, 4, 0, 0);  // a perfect diagonal
  EXPECT_EQ(std::vector<int>(v.GetDataPtr(), v.GetDataPtr() + v.GetNumElements()), (std::vector<int>{44, 33, 22, 11, 0}));
  ImgImageToLineSegment(&image, &v, 0, 0, 7, 2);  // the error term starts at 7 >> 1
  EXPECT_EQ(std::vector<int>(v.GetDataPtr(), v.GetDataPtr() + v.GetNumElements()),
            (std::vector<int>{0, 1, 12, 13, 14, 15, 26, 27}));
  // Sampled and written back on the same points: shifted by one along itself.
  ImgImageToLineSegment(&image, &v, 1, 5, 6, 5);
  ImgLineSegmentToImage(&image, &v, 1, 5, 6, 5);
  std::vector<int> row;
  for (int x = 0; x < 8; ++x) row.push_back(image.GetPixel(x, 5));
  EXPECT_EQ(row, (std::vector<int>{50, 51, 51, 52, 53, 54, 55, 57}));
}

TEST(LineSegment, BadArgumentsLeaveTheImage) {
  Rng rng(12);
  EImage<EC24> image;
  EROI<EC24> roi;
  testsupport::PlaceRandom(image, roi, 6, 5, rng);
  testsupport::FillRandom(image, rng);
  const auto before = testsupport::Snapshot(image);
  const EC24 c(1, 2, 3);
  const struct {
    int x0, y0, x1, y1;
    E_ERRORS code;
  } cases[] = {{-1, 9, 9, 9, E_ERROR_BAD_ARGUMENT_1}, {6, 0, 0, 0, E_ERROR_BAD_ARGUMENT_1},
               {0, 5, 9, 0, E_ERROR_BAD_ARGUMENT_2}, {0, -1, 0, 0, E_ERROR_BAD_ARGUMENT_2},
               {5, 4, 6, 0, E_ERROR_BAD_ARGUMENT_3}, {5, 4, 0, 5, E_ERROR_BAD_ARGUMENT_4}};
  for (const auto& k : cases) {
    ImgLineSegmentToImage(&roi, c, k.x0, k.y0, k.x1, k.y1);
    EXPECT_EQ(EGetError(), k.code);
    EXPECT_STREQ(EGetErrorTrace(), "ImgLineSegmentToImage ( C24, const)");
  }
  EC24Vector v(5);
  ImgLineSegmentToImage(&roi, &v, 0, 0, 5, 0);  // 6 pixels, 5 elements
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgLineSegmentToImage ( C24, vector)");
  EXPECT_EQ(testsupport::Snapshot(image), before);

  EImage<EBW16> none;
  EBW16Vector w16(3);
  ImgImageToLineSegment(&none, &w16, 0, 0, 0, 0);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgImageToLineSegment ( BW16)");
  EXPECT_EQ(w16.GetNumElements(), 3u);
}

// Paths: pixels in and out at each point; points outside the ROI are
// skipped with 106, which stays as an untraced warning.
TEST(Path, PixelsInAndOutWithPointsOutside) {
  Rng rng(13);
  EImage<EBW16> image;
  EROI<EBW16> roi;
  testsupport::PlaceRandom(image, roi, 9, 7, rng);
  testsupport::FillRandom(image, rng);
  EBW16PathVector path;
  for (const Point& p : std::vector<Point>{{0, 0}, {8, 6}, {9, 0}, {3, -1}, {4, 5}, {-1, 2}, {8, 0}})
    path.AddElement(EBW16Path{static_cast<short>(p.first), static_cast<short>(p.second), EBW16(7)});
  ImgImageToPath(&roi, &path);
  EXPECT_EQ(EGetError(), E_WARNING_POINT_OUTSIDE);
  EXPECT_STREQ(EGetErrorTrace(), "");
  for (unsigned i = 0; i < path.GetNumElements(); ++i) {
    const EBW16Path& p = path[i];
    const bool inside = p.m_n16X >= 0 && p.m_n16Y >= 0 && p.m_n16X < 9 && p.m_n16Y < 7;
    EXPECT_EQ(p.m_bw16Pixel.value, inside ? roi.GetPixel(p.m_n16X, p.m_n16Y).value : 7u) << i;
  }

  EImage<EC24> colour;
  EROI<EC24> croi;
  testsupport::PlaceRandom(colour, croi, 5, 4, rng);
  testsupport::FillRandom(colour, rng);
  EC24PathVector cpath;
  cpath.AddElement(EC24Path{1, 2, EC24(9, 8, 7)});
  cpath.AddElement(EC24Path{4, 3, EC24(1, 2, 3)});
  ImgPathToImage(&croi, &cpath);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_TRUE(Same(croi.GetPixel(1, 2), EC24(9, 8, 7)));
  EXPECT_TRUE(Same(croi.GetPixel(4, 3), EC24(1, 2, 3)));

  EImage<EBW8> grey(4, 4);
  ImgCopy(EBW8(0), &grey);
  EBW8PathVector bpath;
  ImgPathToImage(&grey, &bpath);  // empty: nothing, no error
  EXPECT_EQ(EGetError(), E_OK);
  bpath.AddElement(EBW8Path{3, 3, EBW8(200)});
  bpath.AddElement(EBW8Path{4, 3, EBW8(100)});
  ImgPathToImage(&grey, &bpath);
  EXPECT_EQ(EGetError(), E_WARNING_POINT_OUTSIDE);
  EXPECT_EQ(grey.GetPixel(3, 3), 200);
  EImage<EBW8> none;
  ImgImageToPath(&none, &bpath);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgImageToPath ( BW8)");
}

}  // namespace
