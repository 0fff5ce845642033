#include "test_support.h"

namespace {

using testsupport::Rng;

TEST(ColorComponents, GetAndSetMoveOneChannelOnRandomRoisOnEveryPath) {
  for (int path : testsupport::AllPaths()) {
  SCOPED_TRACE(path);
  testsupport::PathGuard guard(path);
  Rng rng(7 + path);
  for (int trial = 0; trial < 60; ++trial) {
    const int w = 1 + static_cast<int>(rng() % 100), h = 1 + static_cast<int>(rng() % 5);
    EImage<EC24> colourImage;
    EROI<EC24> colour;
    testsupport::PlaceRandom(colourImage, colour, w, h, rng);
    testsupport::FillRandom(colourImage, rng);
    EImage<EBW8> planeImage;
    EROI<EBW8> plane;
    testsupport::PlaceRandom(planeImage, plane, w, h, rng);
    testsupport::FillRandom(planeImage, rng);
    const unsigned int k = rng() % 3;

    const std::vector<unsigned char> planeBefore = testsupport::Bytes(plane);
    const std::vector<unsigned char> planeSnap = testsupport::Snapshot(planeImage);
    // Whole colour buffer expected: only component k of the ROI's pixels changes.
    std::vector<unsigned char> expected = testsupport::Snapshot(colourImage);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        expected[static_cast<size_t>(y + colour.GetOrgY()) * colourImage.GetRowPitch() +
                 3 * static_cast<size_t>(x + colour.GetOrgX()) + k] = planeBefore[static_cast<size_t>(y) * w + x];
    ClrSetComponent(&plane, &colour, k);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(testsupport::Snapshot(colourImage), expected);
    EXPECT_EQ(testsupport::Snapshot(planeImage), planeSnap);

    // Round trip through a second plane: the channel comes back, padding stays.
    testsupport::FillRandom(planeImage, rng);
    const std::vector<unsigned char> snapAround = testsupport::Snapshot(planeImage);
    ClrGetComponent(&colour, &plane, k, nullptr);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(testsupport::Bytes(plane), planeBefore);
    // Only the ROI's pixels changed in the plane image.
    std::vector<unsigned char> after = testsupport::Snapshot(planeImage);
    size_t changedOutside = 0;
    for (size_t i = 0; i < after.size(); ++i) {
      const int pitch = planeImage.GetRowPitch();
      const int y = static_cast<int>(i / pitch) - plane.GetOrgY(), x = static_cast<int>(i % pitch) - plane.GetOrgX();
      if (!(y >= 0 && y < h && x >= 0 && x < w) && after[i] != snapAround[i]) ++changedOutside;
    }
    EXPECT_EQ(changedOutside, 0u);
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

  ClrGetComponent(&colour, &plane, 3, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "ClrGetComponent");
  ClrGetComponent(&colour, &small, 0, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ClrGetComponent(&colour, &voidPlane, 0, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(plane), snap);

  ClrSetComponent(&plane, &colour, 5);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "ClrSetComponent");
  ClrSetComponent(&small, &colour, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ClrSetComponent(&voidPlane, &colour, 1);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(colour), colourSnap);
}

TEST(ColorLookup, DefaultIsIdentityAndTablesMapPerComponent) {
  EColorLookup none;
  EXPECT_EQ(none.GetNumElements(), 0u);
  EXPECT_EQ(none.GetIdentityFill(), 1);
  EC24 r;
  none.Transform(EC24(1, 2, 250), r);
  EXPECT_EQ(r[0], 1);
  EXPECT_EQ(r[1], 2);
  EXPECT_EQ(r[2], 250);

  EColorLookup zeros(4, 0);  // values 0..3 go to 0, the rest stay
  zeros.Transform(EC24(3, 4, 0), r);
  EXPECT_EQ(r[0], 0);
  EXPECT_EQ(r[1], 4);
  EXPECT_EQ(r[2], 0);

  EColorLookup lut(10, 1);
  unsigned char invert[256];
  for (int v = 0; v < 256; ++v) invert[v] = static_cast<unsigned char>(255 - v);
  EOk();
  lut.SetComponentTable(1, invert);
  EXPECT_EQ(lut.GetNumElements(), 256u);
  lut.SetEntry(2, 200, 7);
  EXPECT_EQ(EGetError(), E_OK);
  EC24 p(200, 200, 200);
  lut.Transform(p, p);  // in place
  EXPECT_EQ(p[0], 200);
  EXPECT_EQ(p[1], 55);
  EXPECT_EQ(p[2], 7);
  lut.SetEntry(3, 0, 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  lut.SetComponentTable(0, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(lut.Map(0, 17), 17);
}

TEST(ColorLookup, GetComponentAppliesTheLookup) {
  EImage<EC24> colour(5, 2);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 5; ++x)
      colour.SetPixel(EC24(static_cast<unsigned char>(x), static_cast<unsigned char>(10 * x + y), 9), x, y);
  EColorLookup lut;
  lut.SetIdentity();
  for (int v = 0; v < 256; ++v) lut.SetEntry(1, static_cast<unsigned char>(v), static_cast<unsigned char>(v / 2));
  EImage<EBW8> plane(5, 2);
  ClrGetComponent(&colour, &plane, 1, &lut);
  ASSERT_EQ(EGetError(), E_OK);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 5; ++x) EXPECT_EQ(plane.GetPixel(x, y), (10 * x + y) / 2);
  EColorVector palette(3);
  EXPECT_EQ(palette.GetNumElements(), 3u);
  EXPECT_EQ(palette[2][1], 0);
}

}  // namespace
