// ImgOverlay and the thread's overlay colour.
#include <thread>

#include "point_support.h"

namespace {

using testsupport::Rng;
using testsupport::Snapshot;

// Overlay pixels drawn from a few colours so that the transparent one is
// common, with neighbours of (10, 20, 30) that differ in one component.
void FillFew(EImage<EC24>& img, Rng& rng) {
  static const EC24 kColours[] = {EC24(0, 0, 0),    EC24(10, 20, 30), EC24(11, 20, 30), EC24(10, 21, 30),
                                  EC24(10, 20, 31), EC24(255, 0, 9),  EC24(200, 100, 50)};
  for (int y = 0; y < img.GetHeight(); ++y)
    for (int x = 0; x < img.GetWidth(); ++x) img.SetPixel(kColours[rng() % 7], x, y);
}

bool Same(const EC24& a, const EC24& b) { return a.c[0] == b.c[0] && a.c[1] == b.c[1] && a.c[2] == b.c[2]; }

EC24 Same24(const EC24& p) { return p; }
EC16 Packed16(const EC24& p) { return EC16(static_cast<unsigned short>(((p.c[2] >> 3) << 11) | ((p.c[1] >> 2) << 5) | (p.c[0] >> 3))); }
EC15 Packed15(const EC24& p) { return EC15(static_cast<unsigned short>(((p.c[2] >> 3) << 10) | ((p.c[1] >> 3) << 5) | (p.c[0] >> 3))); }

TEST(OverlayColor, PerThread) {
  ImgSetOverlayColor(EC24(1, 2, 3));
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

// Draws `pic` on a random destination of type D and compares the whole
// buffer with a model that packs each non-transparent pixel with `pack`.
template <class D>
void DrawAndCompare(const EImage<EC24>& pic, int dw, int dh, int x, int y, const EC24& transparent,
                    D (*pack)(const EC24&), Rng& rng) {
  EImage<D> dst(dw, dh);
  testsupport::FillRandom(dst, rng);
  EImage<D> want = dst;  // a copy takes the pixels; the padding too, for the whole-buffer compare
  std::memcpy(want.GetImagePtr(0, 0), dst.GetImagePtr(0, 0), testsupport::BufferBytes(dst));
  for (int j = 0; j < pic.GetHeight(); ++j)
    for (int i = 0; i < pic.GetWidth(); ++i)
      if (!Same(pic.GetPixel(i, j), transparent)) want.SetPixel(pack(pic.GetPixel(i, j)), x + i, y + j);
  ESetError(E_ERROR_INTERNAL);
  ImgOverlay(&pic, &dst, x, y, transparent);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Snapshot(dst), Snapshot(want));
}

TEST(Overlay, DrawsNonTransparentPixels) {
  Rng rng(40);
  const EC24 transparent(10, 20, 30);
  for (int t = 0; t < 30; ++t) {
    const int ow = 1 + static_cast<int>(rng() % 12), oh = 1 + static_cast<int>(rng() % 5);
    EImage<EC24> pic(ow, oh);
    FillFew(pic, rng);
    const int dw = ow + static_cast<int>(rng() % 6), dh = oh + static_cast<int>(rng() % 4);
    const int x = static_cast<int>(rng() % (dw - ow + 1)), y = static_cast<int>(rng() % (dh - oh + 1));
    DrawAndCompare<EC24>(pic, dw, dh, x, y, transparent, Same24, rng);
    DrawAndCompare<EC16>(pic, dw, dh, x, y, transparent, Packed16, rng);
    DrawAndCompare<EC15>(pic, dw, dh, x, y, transparent, Packed15, rng);
  }
  EXPECT_EQ(Packed16(EC24(0xFF, 0x84, 0x08)).word, (1u << 11) | (0x21u << 5) | 0x1Fu);
  EXPECT_EQ(Packed15(EC24(0xFF, 0x84, 0x08)).word, (1u << 10) | (0x10u << 5) | 0x1Fu);
}

// A destination too small, an all-transparent overlay: silently nothing.
// Void images: the code, the label and an untouched destination.
TEST(Overlay, ChecksLeaveTheDestinationAlone) {
  Rng rng(41);
  EImage<EC24> pic(4, 4), small(3, 8), none, clear(2, 2), big(5, 5);
  EImage<EC16> none16;
  EImage<EC15> none15;
  EImage<EBW8> grey(4, 4), none8;
  FillFew(pic, rng);
  ImgCopy(EC24(4, 5, 6), &clear);
  testsupport::FillRandom(small, rng);
  testsupport::FillRandom(big, rng);
  const pointtest::Refusals expect(small, big);
  expect(E_OK, "", [&] { ImgOverlay(&pic, &small, 0, 0, EC24(1, 1, 1)); });
  expect(E_OK, "", [&] { ImgOverlay(&clear, &big, 1, 1, EC24(4, 5, 6)); });
  expect(E_ERROR_VOID_IMAGE, "ImgOverlay ( C24 on C24 Image)", [&] { ImgOverlay(&none, &small, 0, 0, EC24(1, 1, 1)); });
  expect(E_ERROR_VOID_IMAGE, "ImgOverlay ( C24 on C16 Image)", [&] { ImgOverlay(&pic, &none16, 0, 0, EC24(1, 1, 1)); });
  expect(E_ERROR_VOID_IMAGE, "ImgOverlay ( C24 on C15 Image)", [&] { ImgOverlay(&pic, &none15, 0, 0, EC24(1, 1, 1)); });
  const char* grey_label = "ImgOverlay ( BW8 source, C24 overlay and destination)";
  expect(E_ERROR_VOID_IMAGE, grey_label, [&] { ImgOverlay(&none8, &pic, &big, 0, 0, EC24(0, 0, 0)); });
  expect(E_ERROR_VOID_IMAGE, grey_label, [&] { ImgOverlay(&grey, &none, &big, 0, 0, EC24(0, 0, 0)); });
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
    EImage<EC24> pic(ow, oh), dst(3, 2);  // dst is resized by the call
    FillFew(pic, rng);
    const int x = static_cast<int>(rng() % (w + 8)) - 6, y = static_cast<int>(rng() % (h + 6)) - 4;
    ImgOverlay(&grey, &pic, &dst, x, y, transparent);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(dst.GetWidth(), w);
    ASSERT_EQ(dst.GetHeight(), h);
    for (int j = 0; j < h; ++j)
      for (int i = 0; i < w; ++i) {
        const int ox = i - x, oy = j - y;
        const unsigned char g = grey.GetPixel(i, j);
        EC24 want(g, g, g);
        if (ox >= 0 && oy >= 0 && ox < ow && oy < oh && !Same(pic.GetPixel(ox, oy), transparent))
          want = pic.GetPixel(ox, oy);
        EXPECT_TRUE(Same(dst.GetPixel(i, j), want)) << "t " << t << " at " << i << "," << j;
      }
  }
}

}  // namespace
