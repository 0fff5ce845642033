// ImgOverlay and the thread's overlay colour.
#include <thread>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using u8 = unsigned char;

// Overlay pixels drawn from a few colours so that the transparent one is common.
void FillFew(EImage<EC24>& img, Rng& rng) {
  static const EC24 kColours[] = {EC24(0, 0, 0), EC24(10, 20, 30), EC24(10, 20, 31), EC24(255, 0, 9),
                                  EC24(200, 100, 50)};
  for (int y = 0; y < img.GetHeight(); ++y)
    for (int x = 0; x < img.GetWidth(); ++x) img.SetPixel(kColours[rng() % 5], x, y);
}

bool Same(const EC24& a, const EC24& b) { return a.c[0] == b.c[0] && a.c[1] == b.c[1] && a.c[2] == b.c[2]; }

unsigned short Pack16(const EC24& p) { return static_cast<unsigned short>(((p.c[2] >> 3) << 11) | ((p.c[1] >> 2) << 5) | (p.c[0] >> 3)); }
unsigned short Pack15(const EC24& p) { return static_cast<unsigned short>(((p.c[2] >> 3) << 10) | ((p.c[1] >> 3) << 5) | (p.c[0] >> 3)); }

TEST(OverlayColor, PerThread) {
  ImgSetOverlayColor(EC24(1, 2, 3));
  EXPECT_TRUE(Same(ImgGetOverlayColor(), EC24(1, 2, 3)));
  EC24 seen(9, 9, 9), seen_after(9, 9, 9);
  std::thread other([&] {
    seen = ImgGetOverlayColor();
    ImgSetOverlayColor(EC24(7, 8, 9));
    seen_after = ImgGetOverlayColor();
  });
  other.join();
  EXPECT_TRUE(Same(seen, EC24(0, 0, 0)));  // a new thread starts from the record's start value
  EXPECT_TRUE(Same(seen_after, EC24(7, 8, 9)));
  EXPECT_TRUE(Same(ImgGetOverlayColor(), EC24(1, 2, 3)));
}

// The three forms that draw on a destination, against a per-pixel model.
TEST(Overlay, DrawsNonTransparentPixels) {
  Rng rng(40);
  const EC24 transparent(10, 20, 30);
  for (int t = 0; t < 30; ++t) {
    const int ow = 1 + static_cast<int>(rng() % 12), oh = 1 + static_cast<int>(rng() % 5);
    EImage<EC24> pic(ow, oh);
    FillFew(pic, rng);
    const int dw = ow + static_cast<int>(rng() % 6), dh = oh + static_cast<int>(rng() % 4);
    const int x = static_cast<int>(rng() % (dw - ow + 1)), y = static_cast<int>(rng() % (dh - oh + 1));

    EImage<EC24> d24(dw, dh);
    EImage<EC16> d16(dw, dh);
    EImage<EC15> d15(dw, dh);
    testsupport::FillRandom(d24, rng);
    testsupport::FillRandom(d16, rng);
    testsupport::FillRandom(d15, rng);
    EImage<EC24> e24 = d24;
    EImage<EC16> e16 = d16;
    EImage<EC15> e15 = d15;
    for (int j = 0; j < oh; ++j)
      for (int i = 0; i < ow; ++i) {
        const EC24 p = pic.GetPixel(i, j);
        if (Same(p, transparent)) continue;
        e24.SetPixel(p, x + i, y + j);
        e16.SetPixel(EC16(Pack16(p)), x + i, y + j);
        e15.SetPixel(EC15(Pack15(p)), x + i, y + j);
      }
    ImgOverlay(&pic, &d24, x, y, transparent);
    EXPECT_EQ(EGetError(), E_OK);
    ImgOverlay(&pic, &d16, x, y, transparent);
    ImgOverlay(&pic, &d15, x, y, transparent);
    EXPECT_EQ(testsupport::Snapshot(d24), testsupport::Snapshot(e24));
    EXPECT_EQ(testsupport::Snapshot(d16), testsupport::Snapshot(e16));
    EXPECT_EQ(testsupport::Snapshot(d15), testsupport::Snapshot(e15));
  }
}

TEST(Overlay, PackingOfOneColour) {
  EImage<EC24> pic(1, 1);
  pic.SetPixel(EC24(0xFF, 0x84, 0x08), 0, 0);
  EImage<EC16> d16(1, 1);
  EImage<EC15> d15(1, 1);
  ImgOverlay(&pic, &d16, 0, 0, EC24(0, 0, 0));
  ImgOverlay(&pic, &d15, 0, 0, EC24(0, 0, 0));
  EXPECT_EQ(d16.GetPixel(0, 0).word, (1u << 11) | (0x21u << 5) | 0x1Fu);
  EXPECT_EQ(d15.GetPixel(0, 0).word, (1u << 10) | (0x10u << 5) | 0x1Fu);
}

TEST(Overlay, SmallDestinationAndVoidImages) {
  Rng rng(41);
  EImage<EC24> pic(4, 4), small(3, 8), none;
  FillFew(pic, rng);
  testsupport::FillRandom(small, rng);
  const auto before = testsupport::Snapshot(small);
  ESetError(E_ERROR_INTERNAL);
  ImgOverlay(&pic, &small, 0, 0, EC24(1, 1, 1));
  EXPECT_EQ(EGetError(), E_OK);  // silently nothing
  EXPECT_STREQ(EGetErrorTrace(), "");
  EXPECT_EQ(testsupport::Snapshot(small), before);

  ImgOverlay(&none, &small, 0, 0, EC24(1, 1, 1));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOverlay ( C24 on C24 Image)");
  EImage<EC16> none16;
  ImgOverlay(&pic, &none16, 0, 0, EC24(1, 1, 1));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOverlay ( C24 on C16 Image)");
  EImage<EC15> none15;
  ImgOverlay(&pic, &none15, 0, 0, EC24(1, 1, 1));
  EXPECT_STREQ(EGetErrorTrace(), "ImgOverlay ( C24 on C15 Image)");
  EXPECT_EQ(testsupport::Snapshot(small), before);

  // An overlay all of the transparent colour leaves the destination alone.
  EImage<EC24> clear(2, 2), big(5, 5);
  ImgCopy(EC24(4, 5, 6), &clear);
  testsupport::FillRandom(big, rng);
  const auto big_before = testsupport::Snapshot(big);
  ImgOverlay(&clear, &big, 1, 1, EC24(4, 5, 6));
  EXPECT_EQ(testsupport::Snapshot(big), big_before);

  EImage<EBW8> grey(4, 4), none8;
  ImgOverlay(&none8, &pic, &big, 0, 0, EC24(0, 0, 0));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOverlay ( BW8 source, C24 overlay and destination)");
  ImgOverlay(&grey, &none, &big, 0, 0, EC24(0, 0, 0));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(big), big_before);
}

// The grey form makes the whole destination, sized like the source.
TEST(Overlay, GreySourceForm) {
  Rng rng(42);
  const EC24 transparent(0, 0, 0);
  for (int t = 0; t < 30; ++t) {
    const int w = 1 + static_cast<int>(rng() % 20), h = 1 + static_cast<int>(rng() % 6);
    EImage<EBW8> grey(w, h);
    testsupport::FillRandom(grey, rng);
    const int ow = 1 + static_cast<int>(rng() % 8), oh = 1 + static_cast<int>(rng() % 4);
    EImage<EC24> pic(ow, oh);
    FillFew(pic, rng);
    const int x = static_cast<int>(rng() % (w + 8)) - 6, y = static_cast<int>(rng() % (h + 6)) - 4;
    EImage<EC24> dst(3, 2);  // resized by the call
    ImgOverlay(&grey, &pic, &dst, x, y, transparent);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(dst.GetWidth(), w);
    ASSERT_EQ(dst.GetHeight(), h);
    for (int j = 0; j < h; ++j)
      for (int i = 0; i < w; ++i) {
        const int ox = i - x, oy = j - y;
        EC24 want(grey.GetPixel(i, j), grey.GetPixel(i, j), grey.GetPixel(i, j));
        if (ox >= 0 && oy >= 0 && ox < ow && oy < oh && !Same(pic.GetPixel(ox, oy), transparent))
          want = pic.GetPixel(ox, oy);
        EXPECT_TRUE(Same(dst.GetPixel(i, j), want)) << "t " << t << " at " << i << "," << j;
      }
  }
}

}  // namespace
