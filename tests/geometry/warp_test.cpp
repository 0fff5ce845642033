// Warping: the two-map model on random maps, the one-map form and its
// stop on a bad entry, the circle map's worked values, refused calls.
#include <string>
#include <vector>

#include "geometry_model.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using Bytes = std::vector<unsigned char>;

// Maps with entries a little outside the source on every side.
void RandomMaps(Rng& rng, EImage<EBW16>& mx, EImage<EBW16>& my, int w, int h, int sw, int sh) {
  mx.SetSize(w, h);
  my.SetSize(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      *mx.GetImagePtr(x, y) = EBW16(static_cast<unsigned short>(static_cast<int>(rng() % (sw + 8)) - 4));
      *my.GetImagePtr(x, y) = EBW16(static_cast<unsigned short>(static_cast<int>(rng() % (sh + 8)) - 4));
    }
}

TEST(Warp, TwoMapsMatchTheModel) {
  Rng rng(41);
  for (int iter = 0; iter < 80; ++iter) {
    const int sw = 1 + static_cast<int>(rng() % 30), sh = 1 + static_cast<int>(rng() % 10);
    const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 8);
    const int shx = static_cast<int>(rng() % 7) - 3, shy = static_cast<int>(rng() % 5) - 2;
    EImage<EBW16> mx, my;
    RandomMaps(rng, mx, my, w, h, sw, sh);
    EImage<EBW8> simg, dimg;
    EROI<EBW8> src, dst;
    testsupport::PlaceRandom(simg, src, sw, sh, rng);
    testsupport::PlaceRandom(dimg, dst, w, h, rng);
    testsupport::FillRandom(simg, rng);
    EImage<EC24> simgC, dimgC;
    EROI<EC24> srcC, dstC;
    testsupport::PlaceRandom(simgC, srcC, sw, sh, rng);
    testsupport::PlaceRandom(dimgC, dstC, w, h, rng);
    testsupport::FillRandom(simgC, rng);
    ASSERT_EQ(ImgWarp(&src, &dst, &mx, &my, shx, shy), E_OK);
    ImgWarp(&srcC, &dstC, &mx, &my, shx, shy);
    ASSERT_EQ(EGetError(), E_OK);
    const gmodel::Plane s = gmodel::FromRoi(src);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const int sx = static_cast<int16_t>(mx.GetImagePtr(x, y)->value) + shx;
        const int sy = static_cast<int16_t>(my.GetImagePtr(x, y)->value) + shy;
        const bool in = sx >= 0 && sy >= 0 && sx < sw && sy < sh;
        ASSERT_EQ(dst.GetPixel(x, y).value, in ? s.at(sx, sy) : 0u) << x << "," << y;
        for (int c = 0; c < 3; ++c)
          ASSERT_EQ(dstC.GetPixel(x, y).c[c], in ? srcC.GetPixel(sx, sy).c[c] : 0) << x << "," << y;
      }
  }
}

TEST(Warp, OneMapReadsPackedPairsAndStopsOnAnEntryOutside) {
  Rng rng(43);
  EImage<EBW8> src(12, 5), dst(6, 5), small(12, 5);
  testsupport::FillRandom(src, rng);
  // A map larger than the destination; (x, y) = ((u + v) mod 12, 4 - v) where it is read.
  EImage<EBW32> map(14, 7);
  for (int v = 0; v < 7; ++v)
    for (int u = 0; u < 14; ++u) *map.GetImagePtr(u, v) = EBW32(static_cast<unsigned>((u + v) % 12) | (4u - v % 5) << 16);
  EImage<EBW8> same(12, 5);
  ASSERT_EQ(ImgWarp(&src, &same, &map), E_OK);
  for (int v = 0; v < 5; ++v)
    for (int u = 0; u < 12; ++u) ASSERT_EQ(same.GetPixel(u, v).value, src.GetPixel((u + v) % 12, 4 - v).value);
  // An entry equal to the width stops the walk with 1405; earlier pixels stay.
  *map.GetImagePtr(3, 1) = EBW32(12u);
  ImgCopy(EBW8(9), &same);
  EXPECT_EQ(ImgWarp(&src, &same, &map), E_ERROR_WARP_OUTSIDE);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgWarp");
  for (int u = 0; u < 12; ++u) EXPECT_EQ(same.GetPixel(u, 1).value, u < 3 ? src.GetPixel((u + 1) % 12, 3).value : 9);
  EXPECT_EQ(same.GetPixel(0, 2).value, 9);
  // Refusals, in the order checked, with the destination untouched.
  const Bytes before = testsupport::Snapshot(dst);
  EXPECT_EQ(ImgWarp(&src, &dst, &map), E_ERROR_SIZE_MISMATCH);
  EImage<EBW32> narrow(11, 7), none;
  EXPECT_EQ(ImgWarp(&src, &small, &narrow), E_ERROR_WARP_MAP);
  EXPECT_EQ(ImgWarp(&src, &small, &none), E_ERROR_WARP_MAP);  // the size is tested before the pointer
  EXPECT_EQ(ImgWarp(&src, &small, static_cast<EImage<EBW32>*>(nullptr)), E_ERROR_VOID_IMAGE);
  EImage<EBW8> voidDst;
  EXPECT_EQ(ImgWarp(&voidDst, &voidDst, &map), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
}

TEST(Warp, TwoMapEdgesAndRefusals) {
  EImage<EBW8> src(4, 3), dst(3, 1), other(2, 1);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) src.SetPixel(EBW8(static_cast<unsigned char>(10 * y + x + 1)), x, y);
  EImage<EBW16> mx(3, 1), my(3, 1), none;
  *mx.GetImagePtr(0, 0) = EBW16(0xFFFF);  // -1
  *mx.GetImagePtr(1, 0) = EBW16(4);       // the width
  *mx.GetImagePtr(2, 0) = EBW16(3);
  ImgCopy(EBW16(2), &my);
  ASSERT_EQ(ImgWarp(&src, &dst, &mx, &my, 0, 0), E_OK);
  EXPECT_EQ(dst.GetPixel(0, 0).value, 0);
  EXPECT_EQ(dst.GetPixel(1, 0).value, 0);
  EXPECT_EQ(dst.GetPixel(2, 0).value, 24);
  ImgWarp(&src, &dst, &mx, &my, 1, -1);  // shifts move the whole map
  EXPECT_EQ(dst.GetPixel(0, 0).value, 11);
  EXPECT_EQ(dst.GetPixel(1, 0).value, 0);
  EXPECT_EQ(dst.GetPixel(2, 0).value, 0);
  const Bytes before = testsupport::Snapshot(other);
  EXPECT_EQ(ImgWarp(&src, &other, &mx, &my, 0, 0), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(ImgWarp(&src, &other, &none, &my, 0, 0), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgWarp");
  EXPECT_EQ(testsupport::Snapshot(other), before);
  EImage<EC24> srcC(4, 3), dstC(2, 1);
  ImgWarp(&srcC, &dstC, &mx, &my, 0, 0);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgWarp ( C24)");
}

TEST(CircleWarp, WorkedValues) {
  EImage<EBW16> mx, my;
  // Centre (50, 40), first row on radius 20, last on radius 10, angles 0 to 90.
  ImgSetCircleWarp(50, 40, 3, 10, 20, 3, 0, 90, &mx, &my);
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(mx.GetWidth(), 3);
  ASSERT_EQ(mx.GetHeight(), 3);
  const int wantX[3][3] = {{70, 64, 50}, {65, 60, 50}, {60, 57, 50}};  // [row][column]
  const int wantY[3][3] = {{40, 54, 60}, {40, 50, 55}, {40, 47, 50}};
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(static_cast<int16_t>(mx.GetImagePtr(i, j)->value), wantX[j][i]) << i << "," << j;
      EXPECT_EQ(static_cast<int16_t>(my.GetImagePtr(i, j)->value), wantY[j][i]) << i << "," << j;
    }
  // Unrolling through the map shows the source along the circles.
  EImage<EBW8> src(80, 70), strip(3, 3);
  for (int y = 0; y < 70; ++y)
    for (int x = 0; x < 80; ++x) src.SetPixel(EBW8(static_cast<unsigned char>(x + y)), x, y);
  ASSERT_EQ(ImgWarp(&src, &strip, &mx, &my, 0, 0), E_OK);
  EXPECT_EQ(strip.GetPixel(0, 0).value, 110);
  EXPECT_EQ(strip.GetPixel(2, 2).value, 100);
  // A width or height below 2 has no map.
  ImgSetCircleWarp(50, 40, 3, 10, 20, 1, 0, 90, &mx, &my);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgSetCircleWarp");
}

}  // namespace
