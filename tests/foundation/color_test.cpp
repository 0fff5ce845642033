#include "test_support.h"

namespace {

using testsupport::Rng;

// The whole buffer of `image` with `bytes` (one per ROI pixel, row by row)
// written at byte `first` of each pixel of `roi`.
template <class T>
std::vector<unsigned char> Pasted(const EImage<T>& image, const EROI<T>& roi, size_t first,
                                  const std::vector<unsigned char>& bytes) {
  std::vector<unsigned char> out = testsupport::Snapshot(image);
  const int w = roi.GetWidth();
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < w; ++x)
      out[static_cast<size_t>(y + roi.GetOrgY()) * image.GetRowPitch() + sizeof(T) * (x + roi.GetOrgX()) + first] =
          bytes[static_cast<size_t>(y * w + x)];
  return out;
}

TEST(ColorComponents, GetAndSetMoveOneChannelOnRandomRoisOnEveryPath) {
  for (int path : testsupport::AllPaths()) {
    SCOPED_TRACE(path);
    testsupport::PathGuard guard(path);
    Rng rng(7 + path);
    for (int trial = 0; trial < 60; ++trial) {
      const int w = 1 + static_cast<int>(rng() % 100), h = 1 + static_cast<int>(rng() % 5);
      EImage<EC24> colourImage;
      EROI<EC24> colour;
      EImage<EBW8> planeImage;
      EROI<EBW8> plane;
      testsupport::PlaceRandom(colourImage, colour, w, h, rng);
      testsupport::PlaceRandom(planeImage, plane, w, h, rng);
      testsupport::FillRandom(colourImage, rng);
      testsupport::FillRandom(planeImage, rng);
      const unsigned int k = rng() % 3;
      const std::vector<unsigned char> values = testsupport::Bytes(plane);
      const std::vector<unsigned char> planeSnap = testsupport::Snapshot(planeImage);
      const std::vector<unsigned char> expected = Pasted(colourImage, colour, k, values);
      ClrSetComponent(&plane, &colour, k);
      ASSERT_EQ(EGetError(), E_OK);
      EXPECT_EQ(testsupport::Snapshot(colourImage), expected);
      EXPECT_EQ(testsupport::Snapshot(planeImage), planeSnap);
      // Back through the refilled plane: the channel returns, the rest stays.
      testsupport::FillRandom(planeImage, rng);
      const std::vector<unsigned char> expectedPlane = Pasted(planeImage, plane, 0, values);
      ClrGetComponent(&colour, &plane, k, nullptr);
      ASSERT_EQ(EGetError(), E_OK);
      EXPECT_EQ(testsupport::Snapshot(planeImage), expectedPlane);
    }
  }
}

TEST(ColorComponents, ChecksRefuseBadArgumentsAndWriteNothing) {
  EImage<EC24> colour(8, 4);
  EImage<EBW8> plane(8, 4), small(7, 4), voidPlane;
  Rng rng(3);
  testsupport::FillRandom(plane, rng);
  testsupport::FillRandom(colour, rng);
  const auto snap = testsupport::Snapshot(plane);
  const auto colourSnap = testsupport::Snapshot(colour);
  const std::pair<EImage<EBW8>*, E_ERRORS> cases[] = {
      {&plane, E_ERROR_BAD_ARGUMENT}, {&small, E_ERROR_SIZE_MISMATCH}, {&voidPlane, E_ERROR_VOID_IMAGE}};
  for (const auto& c : cases) {
    ClrGetComponent(&colour, c.first, c.first == &plane ? 3 : 0, nullptr);
    EXPECT_EQ(EGetError(), c.second);
    EXPECT_STREQ(EGetErrorTrace(), "ClrGetComponent");
    ClrSetComponent(c.first, &colour, c.first == &plane ? 5 : 1);
    EXPECT_EQ(EGetError(), c.second);
    EXPECT_STREQ(EGetErrorTrace(), "ClrSetComponent");
  }
  EXPECT_EQ(testsupport::Snapshot(plane), snap);
  EXPECT_EQ(testsupport::Snapshot(colour), colourSnap);
}

std::vector<int> Mapped(const EColorLookup& lut, EC24 p) {
  lut.Transform(p, p);  // in place
  return {p[0], p[1], p[2]};
}

TEST(ColorLookup, TablesMapPerComponentAndFeedGetComponent) {
  EColorLookup none, zeros(4, 0), lut;
  EXPECT_EQ(Mapped(none, EC24(1, 2, 250)), (std::vector<int>{1, 2, 250}));
  EXPECT_EQ(Mapped(zeros, EC24(3, 4, 0)), (std::vector<int>{0, 4, 0}));  // 0..3 go to 0, the rest stay
  unsigned char half[256];
  for (int v = 0; v < 256; ++v) half[v] = static_cast<unsigned char>(v / 2);
  EOk();
  lut.SetComponentTable(1, half);
  lut.SetEntry(2, 200, 7);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(lut.GetNumElements(), 256u);
  EXPECT_EQ(Mapped(lut, EC24(200, 200, 200)), (std::vector<int>{200, 100, 7}));
  lut.SetEntry(3, 0, 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  lut.SetComponentTable(0, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(lut.Map(0, 17), 17);
  EImage<EC24> colour(5, 2);
  EImage<EBW8> plane(5, 2);
  for (int x = 0; x < 5; ++x) colour.SetPixel(EC24(0, static_cast<unsigned char>(50 * x), 9), x, 1);
  ClrGetComponent(&colour, &plane, 1, &lut);
  ASSERT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 5; ++x) EXPECT_EQ(plane.GetPixel(x, 1), 25 * x);
}

}  // namespace
