// Shrink and mirrors: models on random ROIs of every form and path, worked
// numbers, refused calls.
#include <algorithm>
#include <functional>
#include <utility>
#include <string>
#include <vector>

#include "geometry_model.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using Bytes = std::vector<unsigned char>;

// The ROI's pixels of channel c, as the model sees them.
template <class T>
std::vector<uint32_t> Values(const EROI<T>& roi, int c = 0) {
  return gmodel::FromRoi(roi, c).px;
}

template <class T>
void ShrinkMatchesModel(Rng& rng, int iterations) {
  constexpr int kChannels = sizeof(T) == 3 ? 3 : 1;
  for (int iter = 0; iter < iterations; ++iter) {
    const int sw = 1 + static_cast<int>(rng() % 60), sh = 1 + static_cast<int>(rng() % 14);
    const int dw = 1 + static_cast<int>(rng() % sw), dh = 1 + static_cast<int>(rng() % sh);
    EImage<T> simg, dimg;
    EROI<T> src, dst;
    testsupport::PlaceRandom(simg, src, sw, sh, rng);
    testsupport::PlaceRandom(dimg, dst, dw, dh, rng);
    testsupport::FillRandom(simg, rng);
    testsupport::FillRandom(dimg, rng);
    // Pixels beside the ROI stay as they were.
    EROI<T> right;
    right.Attach(&dimg);
    right.SetPlacement(dst.GetOrgX() + dw, dst.GetOrgY(), 1, dh);
    const Bytes besides = testsupport::Bytes(right);
    ImgShrink(&src, &dst);
    ASSERT_EQ(EGetError(), E_OK);
    for (int c = 0; c < kChannels; ++c)
      ASSERT_EQ(Values(dst, c), gmodel::Shrink(gmodel::FromRoi(src, c), dw, dh).px)
          << sw << "x" << sh << " -> " << dw << "x" << dh << " channel " << c;
    ASSERT_EQ(testsupport::Bytes(right), besides);
  }
}

TEST(Shrink, MatchesTheBlockModelInEveryForm) {
  Rng rng(21);
  ShrinkMatchesModel<EBW8>(rng, 200);
  ShrinkMatchesModel<EBW16>(rng, 100);
  ShrinkMatchesModel<EC24>(rng, 60);
}

TEST(Shrink, WorkedNumbersAndRefusals) {
  EImage<EBW8> four(2, 2), one(1, 1), five(5, 1), two(2, 1), big(3, 3);
  four.SetPixel(EBW8(1), 0, 0);
  four.SetPixel(EBW8(2), 1, 0);
  four.SetPixel(EBW8(3), 0, 1);
  four.SetPixel(EBW8(3), 1, 1);
  EXPECT_EQ(ImgShrink(&four, &one), E_OK);
  EXPECT_EQ(one.GetPixel(0, 0).value, 2);  // 9 / 4, truncated
  const unsigned char row[5] = {10, 11, 20, 21, 23};
  for (int x = 0; x < 5; ++x) five.SetPixel(EBW8(row[x]), x, 0);
  ImgShrink(&five, &two);  // blocks of 2 and 3 columns
  EXPECT_EQ(two.GetPixel(0, 0).value, 10);
  EXPECT_EQ(two.GetPixel(1, 0).value, 21);
  Rng rng(1);
  EImage<EBW8> src(17, 6), same(17, 6);
  testsupport::FillRandom(src, rng);
  ImgShrink(&src, &same);
  EXPECT_EQ(testsupport::Bytes(same), testsupport::Bytes(src));

  const Bytes before = testsupport::Snapshot(big);
  EXPECT_EQ(ImgShrink(&four, &big), E_ERROR_SIZE_MISMATCH);  // a larger destination would have empty blocks
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgShrink");
  EXPECT_EQ(testsupport::Snapshot(big), before);
  EImage<EBW8> none;
  EXPECT_EQ(ImgShrink(&none, &one), E_ERROR_VOID_IMAGE);
  EImage<EBW16> none16, one16(1, 1);
  ImgShrink(&none16, &one16);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgShrink (BW16)");
  EImage<EC24> noneC, oneC(1, 1);
  ImgShrink(&oneC, &noneC);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgShrink ( C24)");
}

template <class T>
void MirrorsMatchModel(Rng& rng) {
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 2 ? 8 : 300)), h = 1 + static_cast<int>(rng() % 7);
      EImage<T> img;
      EROI<T> roi;
      testsupport::PlaceRandom(img, roi, w, h, rng, 70);
      testsupport::FillRandom(img, rng);
      const Bytes before = testsupport::Snapshot(img);
      // Model: pixel (x, y) of the mirrored ROI is pixel (w-1-x, y), or (x, h-1-y).
      Bytes wantH = before, wantV = before;
      const auto* base = reinterpret_cast<const unsigned char*>(img.GetImagePtr(0, 0));
      auto at = [&](int x, int y) {
        return static_cast<size_t>(reinterpret_cast<const unsigned char*>(roi.GetImagePtr(x, y)) - base);
      };
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          for (size_t b = 0; b < sizeof(T); ++b) {
            wantH[at(x, y) + b] = before[at(w - 1 - x, y) + b];
            wantV[at(x, y) + b] = before[at(x, h - 1 - y) + b];
          }
      ImgHorizontalMirror(&roi);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(img), wantH) << "path " << path << " " << w << "x" << h;
      ImgHorizontalMirror(&roi);
      ASSERT_EQ(testsupport::Snapshot(img), before);  // twice restores
      ImgVerticalMirror(&roi);
      ASSERT_EQ(testsupport::Snapshot(img), wantV) << w << "x" << h;
      ImgVerticalMirror(&roi);
      ASSERT_EQ(testsupport::Snapshot(img), before);
    }
  }
}

TEST(Mirror, MatchesTheModelInEveryFormOnEveryPath) {
  Rng rng(31);
  MirrorsMatchModel<EBW8>(rng);
  MirrorsMatchModel<EBW16>(rng);
  MirrorsMatchModel<EC24>(rng);
}

TEST(Mirror, VoidImagesAreRefusedWithTheirLabels) {
  EImage<EBW8> g;
  EImage<EBW16> w;
  EImage<EC24> c;
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[&] { ImgHorizontalMirror(&g); }, "ImgHorizontalMirror ( gray-level)"},
      {[&] { ImgHorizontalMirror(&w); }, "ImgHorizontalMirror ( BW16)"},
      {[&] { ImgHorizontalMirror(&c); }, "ImgHorizontalMirror ( gray-level)"},
      {[&] { ImgVerticalMirror(&g); }, "ImgVerticalMirror ( gray-level)"},
      {[&] { ImgVerticalMirror(&w); }, "ImgVerticalMirror ( BW16)"},
      {[&] { ImgVerticalMirror(&c); }, "ImgVerticalMirror ( color)"},
      {[&] { ImgVerticalMirror(static_cast<EROI<EC24>*>(nullptr)); }, "ImgVerticalMirror ( color)"},
  };
  for (const auto& k : cases) {
    k.first();
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE) << k.second;
    EXPECT_EQ(std::string(EGetErrorTrace()), k.second);
  }
}

}  // namespace
