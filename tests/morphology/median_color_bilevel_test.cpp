// Medians, the two-level family and the colour forms: against the models on
// random ROIs on every path, worked cases, and errors.
#include <string>
#include <vector>

#include "morph_model.h"

namespace {

using morph::Img;
using morph::Rng;
using testsupport::AllPaths;
using testsupport::PathGuard;

template <class P>
void MedianMatchesSorting() {
  Rng rng(31);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 80; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 ? 160 : 4)), h = 1 + static_cast<int>(rng() % 7);
      const std::function<void(EROI<P>*, EROI<P>*)> run = [](EROI<P>* s, EROI<P>* d) {
        ImgMedian(static_cast<const EROI<P>*>(s), d != nullptr ? d : s);
      };
      ASSERT_TRUE(morph::Matches<P>(rng, w, h, iter % 5 == 0, false, run,
                                    [](const Img& s) { return morph::Median(s, true); }))
          << "path " << path << " " << w << "x" << h;
    }
  }
}
TEST(Median, MatchesSortingOnEveryPathAndInPlace8) { MedianMatchesSorting<EBW8>(); }
TEST(Median, MatchesSortingOnEveryPathAndInPlace16) { MedianMatchesSorting<EBW16>(); }

TEST(Median, OlderFormWithBorder) {
  Rng rng(32);
  const int borders[] = {0, 255, 77, -3, 300};
  for (int iter = 0; iter < 40; ++iter) {
    const int border = borders[iter % 5];
    const int w = 1 + static_cast<int>(rng() % 30), h = 2 + static_cast<int>(rng() % 6);
    const std::function<void(EROI<EBW8>*, EROI<EBW8>*)> run = [&](EROI<EBW8>* s, EROI<EBW8>* d) {
      EXPECT_EQ(ImgMedian(static_cast<const EROI<EBW8>*>(s), d != nullptr ? d : s, border), 0);
    };
    ASSERT_TRUE(morph::Matches<EBW8>(rng, w, h, iter % 4 == 0, false, run,
                                     [&](const Img& s) { return morph::Median(s, false, border); }));
  }
  // A flat 100 with border 0 keeps 100 on the sides; the corners go to 0.
  EImage<EBW8> flat(5, 4), out(5, 4);
  ImgCopy(EBW8(100), &flat);
  ImgMedian(&flat, &out, 0);
  EXPECT_EQ(out.GetPixel(2, 0).value, 100);
  EXPECT_EQ(out.GetPixel(0, 0).value, 0);
  EXPECT_EQ(out.GetPixel(4, 3).value, 0);
  EImage<EBW8> none, wide(6, 4);
  EXPECT_EQ(ImgMedian(&none, &out, 0), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(ImgMedian(&flat, &wide, 0), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMedian");
}

TEST(Median, WorkedCasesAndErrors) {
  EImage<EBW8> img(9, 7), out(9, 7), one(1, 1), oneOut(1, 1), none;
  ImgCopy(EBW8(10), &img);
  img.SetPixel(EBW8(250), 4, 3);
  ImgMedian(&img, &out);
  for (uint8_t v : testsupport::Bytes(out)) ASSERT_EQ(v, 10);
  one.SetPixel(EBW8(42), 0, 0);
  ImgMedian(&one, &oneOut);
  EXPECT_EQ(oneOut.GetPixel(0, 0).value, 42);
  const auto before = testsupport::Snapshot(oneOut);
  ImgMedian(&img, &oneOut);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMedian");
  EXPECT_EQ(testsupport::Snapshot(oneOut), before);
  EImage<EBW16> s16, d16(2, 2);
  ImgMedian(&s16, &d16);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMedian (BW16)");
}

// ---------------------------------------------------------------- two-level

TEST(BiLevel, ShapesCompoundsAndMedianMatchTheModel) {
  Rng rng(41);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 90; ++iter) {
      const int kind = iter % 9;
      const bool twoLevel = iter % 2 == 0, inPlace = iter % 3 == 0;
      const int w = 1 + static_cast<int>(rng() % 100), h = 1 + static_cast<int>(rng() % 10);
      const unsigned hw = rng() % 6, hh = rng() % 6;
      const int r = static_cast<int>(hw);
      const std::function<void(EROI<EBW8>*, EROI<EBW8>*)> run = [&](EROI<EBW8>* s, EROI<EBW8>* d) {
        switch (kind) {
          case 0: ImgBiLevelErodeBox(s, d, hw, hh); break;
          case 1: ImgBiLevelDilateBox(s, d, hw, hh); break;
          case 2: ImgBiLevelErodeDisk(s, d, hw); break;
          case 3: ImgBiLevelDilateDisk(s, d, hw); break;
          case 4: ImgBiLevelOpenBox(s, d, hw, hh); break;
          case 5: ImgBiLevelCloseDisk(s, d, hw); break;
          case 6: ImgBiLevelWhiteTopHatBox(s, d, hw, hh); break;
          case 7: ImgBiLevelMorphoGradientDisk(s, d, hw); break;
          default: ImgBiLevelMedian(s, d); break;
        }
      };
      auto ref = [&](const Img& s) {
        using morph::kAnd;
        using morph::kOr;
        switch (kind) {
          case 0: return morph::Box(s, r, static_cast<int>(hh), kAnd);
          case 1: return morph::Box(s, r, static_cast<int>(hh), kOr);
          case 2: return morph::Disk(s, r, kAnd);
          case 3: return morph::Disk(s, r, kOr);
          case 4: return morph::Box(morph::Box(s, r, static_cast<int>(hh), kAnd), r, static_cast<int>(hh), kOr);
          case 5: return morph::Disk(morph::Disk(s, r, kOr), r, kAnd);
          case 6:
            return morph::Sub(s, morph::Box(morph::Box(s, r, static_cast<int>(hh), kAnd), r, static_cast<int>(hh), kOr));
          case 7: return morph::Sub(morph::Disk(s, r, kOr), morph::Disk(s, r, kAnd));
          default: {
            Img bin = s;
            for (int& v : bin.px) v = v != 0 ? 1 : 0;
            Img m = morph::Median(bin, true);
            for (int& v : m.px) v *= 255;
            return m;
          }
        }
      };
      ASSERT_TRUE(morph::Matches<EBW8>(rng, w, h, inPlace, twoLevel, run, ref))
          << "kind " << kind << " path " << path << " " << w << "x" << h << " " << hw << "," << hh;
    }
  }
}

TEST(BiLevel, RunningBoxEqualsPassesAndGreyOnTwoLevels) {
  Rng rng(43);
  EImage<EBW8> src(53, 37), a(53, 37), b(53, 37), grey(53, 37);
  for (unsigned hw = 0; hw <= 26; ++hw)
    for (unsigned hh = hw % 4; hh <= 26; hh += 4) {
      testsupport::FillRandom(src, rng);
      if (hw % 2) ImgThreshold(&src, &src, 128);
      {
        morph::RunningBoxFrom from(1);
        ImgBiLevelErodeBox(&src, &a, hw, hh);
      }
      {
        morph::RunningBoxFrom from(1 << 30);
        ImgBiLevelErodeBox(&src, &b, hw, hh);
      }
      ASSERT_EQ(testsupport::Bytes(a), testsupport::Bytes(b)) << hw << "," << hh;
      if (hw % 2) {
        ImgErodeBox(&src, &grey, hw, hh);
        ASSERT_EQ(testsupport::Bytes(a), testsupport::Bytes(grey)) << hw << "," << hh;
      }
    }
}

TEST(BiLevel, WorkedCasesAndLabels) {
  EImage<EBW8> img(15, 15), out(15, 15), small(3, 3);
  ImgCopy(EBW8(0), &img);
  img.SetPixel(EBW8(255), 7, 7);
  ImgBiLevelErodeBox(&img, &out, 1, 1);
  for (uint8_t v : testsupport::Bytes(out)) ASSERT_EQ(v, 0);
  ImgBiLevelMedian(&img, &out);
  for (uint8_t v : testsupport::Bytes(out)) ASSERT_EQ(v, 0);
  ImgBiLevelDilateDisk(&img, &out, 3);
  int count = 0;
  for (uint8_t v : testsupport::Bytes(out)) count += v == 255;
  EXPECT_EQ(count, 37);
  ImgBiLevelMorphoGradientBox(&img, &small, 1, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMorphoGradientBox (BiLevel Images)");
  ImgBiLevelBlackTopHatDisk(&img, &small, 1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgBiLevelBlackTopHatDisk (BW8)");
}

// ---------------------------------------------------------------- colour

// The single 3x3, horizontal and vertical passes run on the interleaved
// rows: each component must still equal the grey pass on its plane, on
// every path, in place and not.
TEST(ColorMorphology, SinglePassesOnEveryPath) {
  Rng rng(52);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 24; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 70), h = 1 + static_cast<int>(rng() % 5);
      EImage<EC24> si, di;
      EROI<EC24> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      const unsigned hw = iter % 3 == 0 ? 0 : 1, hh = iter % 3 == 1 ? 0 : 1;
      const bool dilate = iter % 2 == 0, inPlace = iter % 4 < 2;
      EImage<EBW8> plane[3];
      for (unsigned c = 0; c < 3; ++c) {
        plane[c].SetSize(w, h);
        ClrGetComponent(&s, &plane[c], c, nullptr);
        dilate ? ImgDilateBox(&plane[c], nullptr, hw, hh) : ImgErodeBox(&plane[c], nullptr, hw, hh);
      }
      EROI<EC24>* out = inPlace ? &s : &d;
      dilate ? ImgDilateBox(&s, inPlace ? nullptr : &d, hw, hh) : ImgErodeBox(&s, inPlace ? nullptr : &d, hw, hh);
      ASSERT_EQ(EGetError(), E_OK);
      for (unsigned c = 0; c < 3; ++c) {
        EImage<EBW8> got(w, h);
        ClrGetComponent(out, &got, c, nullptr);
        ASSERT_EQ(testsupport::Bytes(got), testsupport::Bytes(plane[c])) << "path " << path << " " << w << "x" << h;
      }
    }
  }
}

// Each component of the colour result is the grey operation on that
// component of the source.
TEST(ColorMorphology, PerComponentAndBorderBytesReversed) {
  Rng rng(51);
  for (int iter = 0; iter < 24; ++iter) {
    const int w = 2 + static_cast<int>(rng() % 40), h = 2 + static_cast<int>(rng() % 8);
    EImage<EC24> si, di;
    EROI<EC24> s, d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(si, rng);
    testsupport::FillRandom(di, rng);
    const EC24 b1(1, 2, 3), b2(40, 50, 60);
    const unsigned hw = rng() % 4, hh = rng() % 4;
    const int kind = iter % 6;
    const bool inPlace = iter % 4 == 0;
    EImage<EBW8> plane[3];
    for (unsigned c = 0; c < 3; ++c) {
      plane[c].SetSize(w, h);
      ClrGetComponent(&s, &plane[c], c, nullptr);
    }
    EROI<EC24>* out = inPlace ? &s : &d;
    switch (kind) {
      case 0: ImgErodeBox(&s, inPlace ? nullptr : &d, hw, hh); break;
      case 1: ImgBlackTopHatDisk(&s, out, hw); break;
      case 2: ImgMorphoGradientBox(&s, out, hw, hh); break;
      case 3: ImgErode(&s, out, 2, b1); break;
      case 4: ImgClose(&s, out, 1, b1, b2); break;
      default: ImgMedian(&s, out, b1); break;
    }
    ASSERT_EQ(EGetError(), E_OK);
    for (unsigned c = 0; c < 3; ++c) {
      EImage<EBW8> want(w, h), got(w, h);
      const int k = 2 - static_cast<int>(c);
      switch (kind) {
        case 0: ImgErodeBox(&plane[c], &want, hw, hh); break;
        case 1: ImgBlackTopHatDisk(&plane[c], &want, hw); break;
        case 2: ImgMorphoGradientBox(&plane[c], &want, hw, hh); break;
        case 3: ImgErode(&plane[c], &want, 2, b1.c[k]); break;
        case 4: ImgClose(&plane[c], &want, 1, b1.c[k], b2.c[k]); break;
        default: ImgMedian(&plane[c], &want, b1.c[k]); break;
      }
      ClrGetComponent(out, &got, c, nullptr);
      ASSERT_EQ(testsupport::Bytes(got), testsupport::Bytes(want)) << "kind " << kind << " component " << c;
    }
  }
  // Component 0 of ImgErode works with the border's third byte.
  EImage<EC24> flat(4, 3), res(4, 3);
  ImgCopy(EC24(100, 100, 100), &flat);
  ImgErode(&flat, &res, 1, EC24(1, 2, 3));
  EXPECT_EQ(res.GetPixel(0, 0).c[0], 3);
  EXPECT_EQ(res.GetPixel(0, 0).c[2], 1);
  EXPECT_EQ(res.GetPixel(1, 1).c[1], 100);
}

TEST(ColorMorphology, ErrorsAndLabels) {
  EImage<EC24> src(5, 4), small(4, 4), none;
  ImgCopy(EC24(9, 9, 9), &small);
  const auto before = testsupport::Snapshot(small);
  ImgDilateDisk(&src, &small, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgDilateDisk ( C24)");
  ImgOpen(&none, &small, 1, EC24(0, 0, 0), EC24(0, 0, 0));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOpen ( C24)");
  ImgMedian(&src, &small, EC24(0, 0, 0));
  EXPECT_STREQ(EGetErrorTrace(), "ImgMedian ( C24)");
  EXPECT_EQ(testsupport::Snapshot(small), before);
  // No passes: the destination is not written, as in the grey form.
  EImage<EC24> same(4, 4);
  ImgCopy(EC24(1, 2, 3), &same);
  const auto sameBefore = testsupport::Snapshot(same);
  ImgDilate(&small, &same, 0, EC24(0, 0, 0));
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Snapshot(same), sameBefore);
}

}  // namespace
