// Grey morphology on 8-bit and 16-bit images: passes, boxes, disks and
// compounds against the window model on random ROIs on every path, the
// running box against the pass composition, worked shapes, the older entry
// points with a border value, and errors.
#include <string>
#include <vector>

#include "morph_model.h"

namespace {

using morph::Img;
using morph::Rng;
using testsupport::AllPaths;
using testsupport::PathGuard;

template <class P>
using OpFn = std::function<void(EROI<P>*, EROI<P>*)>;

template <class P>
void PassesMatchTheModel() {
  Rng rng(sizeof(P));
  const OpFn<P> passes[8] = {
      [](EROI<P>* s, EROI<P>* d) { ImgErode3x3(s, d); }, [](EROI<P>* s, EROI<P>* d) { ImgDilate3x3(s, d); },
      [](EROI<P>* s, EROI<P>* d) { ImgErodeX(s, d); },   [](EROI<P>* s, EROI<P>* d) { ImgDilateX(s, d); },
      [](EROI<P>* s, EROI<P>* d) { ImgErodeY(s, d); },   [](EROI<P>* s, EROI<P>* d) { ImgDilateY(s, d); },
      [](EROI<P>* s, EROI<P>* d) { ImgErodeXY(s, d); },  [](EROI<P>* s, EROI<P>* d) { ImgDilateXY(s, d); }};
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 160; ++iter) {
      const int k = iter % 8;
      const morph::Op op = k % 2 ? morph::kMax : morph::kMin;
      const int w = 1 + static_cast<int>(rng() % (iter % 3 ? 150 : 5)), h = 1 + static_cast<int>(rng() % 6);
      auto ref = [&](const Img& s) {
        switch (k / 2) {
          case 0: return morph::Box(s, 1, 1, op);
          case 1: return morph::Box(s, 1, 0, op);
          case 2: return morph::Box(s, 0, 1, op);
          default: return morph::Cross(s, op);
        }
      };
      ASSERT_TRUE(morph::Matches<P>(rng, w, h, iter % 4 == 1, false, passes[k], ref))
          << "pass " << k << " path " << path << " " << w << "x" << h;
    }
  }
}
TEST(GreyMorphology, PassesMatchTheModelOnEveryPath8) { PassesMatchTheModel<EBW8>(); }
TEST(GreyMorphology, PassesMatchTheModelOnEveryPath16) { PassesMatchTheModel<EBW16>(); }

// Boxes (both the passes and the running extrema) and disks, erosion and
// dilation, against the window model.
template <class P>
void ShapesMatchTheModel() {
  Rng rng(11 + sizeof(P));
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 120; ++iter) {
      const bool dilate = iter & 1, disk = iter % 4 >= 2, inPlace = iter % 3 == 0;
      const int w = 1 + static_cast<int>(rng() % 90), h = 1 + static_cast<int>(rng() % 14);
      const unsigned hw = rng() % 9, hh = rng() % 5 == 0 ? ~0u : rng() % 9;
      const int ehh = hh == ~0u ? static_cast<int>(hw) : static_cast<int>(hh);
      const morph::Op op = dilate ? morph::kMax : morph::kMin;
      const OpFn<P> run = [&](EROI<P>* s, EROI<P>* d) {
        if (disk) dilate ? ImgDilateDisk(s, d, hw) : ImgErodeDisk(s, d, hw);
        else dilate ? ImgDilateBox(s, d, hw, hh) : ImgErodeBox(s, d, hw, hh);
      };
      auto ref = [&](const Img& s) {
        return disk ? morph::Disk(s, static_cast<int>(hw), op) : morph::Box(s, static_cast<int>(hw), ehh, op);
      };
      ASSERT_TRUE(morph::Matches<P>(rng, w, h, inPlace, false, run, ref))
          << (disk ? "disk " : "box ") << hw << "," << ehh << " path " << path << " " << w << "x" << h;
    }
  }
}
TEST(GreyMorphology, BoxesAndDisksMatchTheModelOnEveryPath8) { ShapesMatchTheModel<EBW8>(); }
TEST(GreyMorphology, BoxesAndDisksMatchTheModelOnEveryPath16) { ShapesMatchTheModel<EBW16>(); }

// The running extrema give the bytes of the pass composition for every
// half-size pair up to 33 (at 16 bits for a third of them): rows and columns
// of odd and even lengths, windows wider and taller than the ROI, on the
// scalar and the widest path.
template <class P>
void RunningBoxEqualsPasses(int budget) {
  Rng rng(5);
  struct Budget {
    explicit Budget(int b) { mirel::testing::SetRunningBoxBudget(b); }
    ~Budget() { mirel::testing::SetRunningBoxBudget(0); }
  } keep(budget);
  EImage<P> src(71, 45), a(71, 45), b(71, 45);
  const std::vector<int> paths = {-1, AllPaths().back()};
  for (int path : paths) {
    PathGuard guard(path);
    for (unsigned hw = 0; hw <= 33; ++hw)
      for (unsigned hh = 0; hh <= 33; hh += (sizeof(P) == 1 || hw % 3 == 0 ? 1 : 5)) {
        testsupport::FillRandom(src, rng);
        for (int dilate = 0; dilate < 2; ++dilate) {
          {
            morph::RunningBoxFrom from(1);
            dilate ? ImgDilateBox(&src, &a, hw, hh) : ImgErodeBox(&src, &a, hw, hh);
          }
          {
            morph::RunningBoxFrom from(1 << 30);
            dilate ? ImgDilateBox(&src, &b, hw, hh) : ImgErodeBox(&src, &b, hw, hh);
          }
          ASSERT_EQ(testsupport::Bytes(a), testsupport::Bytes(b)) << hw << "," << hh << " path " << path;
        }
      }
  }
}
// Columns in one strip (the default here), and in the narrowest strips (a
// budget of one byte: strips of 64 pixels and a narrower last one).
TEST(GreyMorphology, RunningBoxEqualsThePassComposition8) { RunningBoxEqualsPasses<EBW8>(0); }
TEST(GreyMorphology, RunningBoxEqualsThePassComposition16) { RunningBoxEqualsPasses<EBW16>(0); }
TEST(GreyMorphology, RunningBoxInStripsEqualsThePassComposition) { RunningBoxEqualsPasses<EBW8>(1); }

// Settings of the running box for one scope: the cache budget (1 takes the
// row and column walks), the thread count with every call split into
// bands, and the running box from half-size 1.
struct BoxSettings {
  BoxSettings(int budget, int threads) : from(1) {
    mirel::testing::SetRunningBoxBudget(budget);
    mirel::testing::SetBandMinimum(0.0);
    ImgSetThreads(threads);
  }
  ~BoxSettings() {
    ImgSetThreads(1);
    mirel::testing::SetBandMinimum(-1.0);
    mirel::testing::SetRunningBoxBudget(0);
  }
  morph::RunningBoxFrom from;
};

// The running box on random ROIs, in place and apart, against the model:
// erosion and dilation, the AND/OR forms on two-level images, one to three
// threads with every call in bands (bands as low as hh rows, so every band
// windows rows of its neighbours, copied first when in place), the one walk
// and the row and column walks, on every path.
template <class P>
void BandedRunningBoxMatchesTheModel() {
  Rng rng(17 + sizeof(P));
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int round = 0; round < 40; ++round) {
      BoxSettings settings(round % 5 == 4 ? 1 : 0, 1 + round % 3);
      const int w = 1 + static_cast<int>(rng() % 45), h = 1 + static_cast<int>(rng() % 45);
      const unsigned hw = rng() % 10, hh = 1 + rng() % 9;
      const bool dilate = rng() & 1, twoLevel = sizeof(P) == 1 && round % 4 == 1;
      const morph::Op op = twoLevel ? (dilate ? morph::kOr : morph::kAnd) : (dilate ? morph::kMax : morph::kMin);
      const OpFn<P> run = [&](EROI<P>* s, EROI<P>* d) {
        if (twoLevel) {
          auto* s8 = reinterpret_cast<EROI<EBW8>*>(s);
          auto* d8 = reinterpret_cast<EROI<EBW8>*>(d);
          dilate ? ImgBiLevelDilateBox(s8, d8, hw, hh) : ImgBiLevelErodeBox(s8, d8, hw, hh);
        } else {
          dilate ? ImgDilateBox(s, d, hw, hh) : ImgErodeBox(s, d, hw, hh);
        }
      };
      auto ref = [&](const Img& s) { return morph::Box(s, static_cast<int>(hw), static_cast<int>(hh), op); };
      ASSERT_TRUE(morph::Matches<P>(rng, w, h, round % 2 == 1, twoLevel, run, ref))
          << hw << "," << hh << " op " << op << " round " << round << " path " << path << " " << w << "x" << h;
    }
  }
}
TEST(GreyMorphology, BandedRunningBoxMatchesTheModel8) { BandedRunningBoxMatchesTheModel<EBW8>(); }
TEST(GreyMorphology, BandedRunningBoxMatchesTheModel16) { BandedRunningBoxMatchesTheModel<EBW16>(); }

// A destination over the source's pixels, on its rows shifted sideways (each
// band reads the rows of its neighbours before they are written) or at
// another height (the walk reads a copy).
TEST(GreyMorphology, RunningBoxOntoItsSourceShifted) {
  Rng rng(29);
  for (int round = 0; round < 24; ++round) {
    BoxSettings settings(round % 4 == 3 ? 1 : 0, 1 + round % 3);
    EImage<EBW8> image(60, 60);
    testsupport::FillRandom(image, rng);
    const int w = 10 + static_cast<int>(rng() % 40), h = 10 + static_cast<int>(rng() % 40);
    const int sx = static_cast<int>(rng() % (61 - w)), sy = static_cast<int>(rng() % (61 - h));
    const int dx = static_cast<int>(rng() % (61 - w));
    const int dy = round % 2 == 0 ? sy : static_cast<int>(rng() % (61 - h));
    EROI<EBW8> src(&image, sx, sy, w, h), dst(&image, dx, dy, w, h);
    const unsigned hw = rng() % 6, hh = 1 + rng() % 6;
    const auto before = testsupport::Snapshot(image);
    const Img want = morph::Box(morph::FromRoi(src), static_cast<int>(hw), static_cast<int>(hh), morph::kMin);
    ImgErodeBox(&src, &dst, hw, hh);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_TRUE(morph::FromRoi(dst) == want) << "round " << round;
    ASSERT_TRUE(morph::OutsideUnchanged(before, image, dst)) << "round " << round;
  }
}

TEST(GreyMorphology, SeparableBoxEqualsTheBox) {
  Rng rng(3);
  EImage<EBW8> src(40, 20), a(40, 20), b(40, 20);
  testsupport::FillRandom(src, rng);
  for (unsigned hw = 0; hw < 5; ++hw)
    for (unsigned hh = 0; hh < 5; ++hh) {
      TlmErodeBox(&src, &a, hw, hh);
      ImgErodeBox(&src, &b, hw, hh);
      ASSERT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
      TlmDilateBox(&src, &a, hw, ~0u);
      ImgDilateBox(&src, &b, hw, hw);
      ASSERT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
    }
}

template <class P>
void CompoundsMatchTheModel() {
  Rng rng(21);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 100; ++iter) {
      const int kind = iter % 5;
      const bool disk = (iter / 5) % 2, inPlace = iter % 3 == 0;
      const int w = 1 + static_cast<int>(rng() % 70), h = 1 + static_cast<int>(rng() % 12);
      const unsigned hw = rng() % 6, hh = rng() % 6;
      auto ero = [&](const Img& s) {
        return disk ? morph::Disk(s, static_cast<int>(hw), morph::kMin) : morph::Box(s, hw, hh, morph::kMin);
      };
      auto dil = [&](const Img& s) {
        return disk ? morph::Disk(s, static_cast<int>(hw), morph::kMax) : morph::Box(s, hw, hh, morph::kMax);
      };
      const OpFn<P> run = [&](EROI<P>* s, EROI<P>* d) {
        if (disk) {
          void (*f[5])(EROI<P>*, EROI<P>*, unsigned) = {ImgOpenDisk, ImgCloseDisk, ImgWhiteTopHatDisk,
                                                        ImgBlackTopHatDisk, ImgMorphoGradientDisk};
          f[kind](s, d, hw);
        } else {
          void (*f[5])(EROI<P>*, EROI<P>*, unsigned, unsigned) = {ImgOpenBox, ImgCloseBox, ImgWhiteTopHatBox,
                                                                  ImgBlackTopHatBox, ImgMorphoGradientBox};
          f[kind](s, d, hw, hh);
        }
      };
      auto ref = [&](const Img& s) {
        switch (kind) {
          case 0: return dil(ero(s));
          case 1: return ero(dil(s));
          case 2: return morph::Sub(s, dil(ero(s)));
          case 3: return morph::Sub(ero(dil(s)), s);
          default: return morph::Sub(dil(s), ero(s));
        }
      };
      ASSERT_TRUE(morph::Matches<P>(rng, w, h, inPlace, false, run, ref))
          << "compound " << kind << (disk ? " disk " : " box ") << hw << "," << hh << " path " << path;
    }
  }
}
TEST(GreyMorphology, CompoundsMatchTheModel8) { CompoundsMatchTheModel<EBW8>(); }
TEST(GreyMorphology, CompoundsMatchTheModel16) { CompoundsMatchTheModel<EBW16>(); }

// The octagon's row widths and pixel counts from a single bright pixel.
TEST(GreyMorphology, DiskShapes) {
  const std::vector<std::vector<int>> widths = {{1}, {3, 1}, {5, 5, 3}, {7, 7, 5, 3}, {9, 9, 9, 7, 5},
                                                {11, 11, 11, 9, 7, 5}, {13, 13, 13, 13, 11, 9, 7}};
  const int counts[7] = {1, 5, 21, 37, 69, 97, 145};
  for (unsigned r = 0; r < 7; ++r) {
    EImage<EBW8> img(31, 31), out(31, 31);
    ImgCopy(EBW8(0), &img);
    img.SetPixel(EBW8(200), 15, 15);
    ImgDilateDisk(&img, &out, r);
    int count = 0;
    for (int dy = 0; dy <= static_cast<int>(r); ++dy) {
      int width = 0;
      for (int x = 0; x < 31; ++x) width += out.GetPixel(x, 15 + dy).value == 200;
      EXPECT_EQ(width, widths[r][static_cast<size_t>(dy)]) << "r " << r << " dy " << dy;
    }
    for (uint8_t v : testsupport::Bytes(out)) count += v == 200;
    EXPECT_EQ(count, counts[r]) << r;
  }
}

TEST(GreyMorphology, EdgesRoisAndZeroSizes) {
  // A bright corner survives dilation and goes under erosion; the pixels
  // around the ROI, all 0, take no part.
  EImage<EBW8> img(20, 12), out(20, 12);
  ImgCopy(EBW8(0), &img);
  EROI<EBW8> roi(&img, 4, 3, 8, 5), dst(&out, 0, 0, 8, 5);
  ImgCopy(EBW8(100), &roi);
  roi.SetPixel(EBW8(250), 0, 0);
  ImgErodeBox(&roi, &dst, 2, 2);
  for (uint8_t v : testsupport::Bytes(dst)) ASSERT_EQ(v, 100);
  ImgDilateBox(&roi, &dst, 2, 2);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 250);
  EXPECT_EQ(dst.GetPixel(3, 0).value, 100);
  // Half-sizes 0: a copy, or nothing in place.
  ImgCopy(EBW8(7), &out);
  ImgErodeBox(&roi, &dst, 0, 0);
  EXPECT_EQ(testsupport::Bytes(dst), testsupport::Bytes(roi));
  const auto before = testsupport::Snapshot(img);
  ImgErodeBox(&roi, nullptr, 0, 0);
  ImgDilateDisk(&roi, nullptr, 0);
  EXPECT_EQ(testsupport::Snapshot(img), before);
  // Huge half-sizes: the extremum of the whole ROI.
  ImgErodeBox(&roi, &dst, 4000000000u, 7);
  for (uint8_t v : testsupport::Bytes(dst)) ASSERT_EQ(v, 100);
  ImgDilateDisk(&roi, &dst, 4000000000u);
  for (uint8_t v : testsupport::Bytes(dst)) ASSERT_EQ(v, 250);
}

// ROIs with no pixels are not void: every form runs and writes nothing. A
// ROI one row high is outside the older forms' contract but reads nothing
// outside it.
TEST(GreyMorphology, EmptyAndOneRowRois) {
  EImage<EBW8> img(8, 6), out(8, 6);
  ImgCopy(EBW8(5), &img);
  const auto before = testsupport::Snapshot(out);
  for (int empty = 0; empty < 2; ++empty) {
    EROI<EBW8> s(&img, 1, 1, empty ? 0 : 4, empty ? 3 : 0), d(&out, 2, 2, empty ? 0 : 4, empty ? 3 : 0);
    ImgErodeBox(&s, &d, 5, 2);
    EXPECT_EQ(EGetError(), E_OK);
    ImgDilateDisk(&s, &d, 3);
    ImgBlackTopHatBox(&s, &d, 1, 1);
    ImgMedian(&s, &d);
    ImgBiLevelMedian(&s, &d);
    EXPECT_EQ(ImgErode(&s, &d, 2, 0), 0);
    EXPECT_EQ(EGetError(), E_OK);
  }
  EXPECT_EQ(testsupport::Snapshot(out), before);
  EROI<EBW8> row(&img, 0, 2, 8, 1), rowOut(&out, 0, 0, 8, 1);
  img.SetPixel(EBW8(9), 3, 2);
  EXPECT_EQ(ImgDilate(&row, &rowOut, 1, 0), 0);
  EXPECT_EQ(testsupport::Bytes(rowOut), (std::vector<unsigned char>{5, 5, 9, 9, 9, 5, 5, 5}));
  EXPECT_EQ(ImgErode(&row, &rowOut, 1, 0), 0);
  EXPECT_EQ(testsupport::Bytes(rowOut), std::vector<unsigned char>(8, 0));
}

TEST(GreyMorphology, ErrorsLeaveTheDestinationAndTraceTheLabel) {
  EImage<EBW8> src(10, 6), small(9, 6), none;
  ImgCopy(EBW8(9), &small);
  const auto before = testsupport::Snapshot(small);
  ImgErodeBox(&src, &small, 1, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgErodeBox");
  ImgOpenDisk(&src, &small, 2);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOpenDisk ");
  ImgWhiteTopHatBox(&none, &small, 1, 1);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgWhiteTopHatBox (BW8)");
  ImgDilateBox(&src, &none, 1, 1);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  // The gradient checks only the size of a destination it is given.
  ImgMorphoGradientDisk(&src, &small, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMorphoGradientDisk");
  EXPECT_EQ(testsupport::Snapshot(small), before);
  EImage<EBW16> s16(4, 4), d16(5, 4);
  ImgBlackTopHatDisk(&s16, &d16, 1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgBlackTopHatDisk (BW16)");
  ImgErodeY(&s16, &d16);
  EXPECT_STREQ(EGetErrorTrace(), "ImgErodeY ( BW16)");
  ImgErodeBox(&src, nullptr, 1, 1);
  EXPECT_EQ(EGetError(), E_OK);
}

// ---------------------------------------------------------------- older entry points

TEST(OlderMorphology, BorderPassesMatchTheModel) {
  Rng rng(8);
  const int borders[] = {0, 255, 100, -1, -200, 300};
  for (int iter = 0; iter < 120; ++iter) {
    const int border = borders[iter % 6], passes = static_cast<int>(rng() % 4) + 1, kind = (iter / 6) % 4;
    const int w = 1 + static_cast<int>(rng() % 40), h = 2 + static_cast<int>(rng() % 8);
    const OpFn<EBW8> run = [&](EROI<EBW8>* s, EROI<EBW8>* d) {
      short r = 0;
      switch (kind) {
        case 0: r = ImgErode(s, d, passes, border); break;
        case 1: r = ImgDilate(s, d, passes, border); break;
        case 2: r = ImgOpen(s, d, passes, border, 255 - border); break;
        default: r = ImgClose(s, d, passes, border, 255 - border); break;
      }
      EXPECT_EQ(r, 0);
    };
    auto rep = [&](Img m, int b, morph::Op op) {
      for (int i = 0; i < passes; ++i) m = morph::BorderPass(m, b, op);
      return m;
    };
    auto ref = [&](const Img& s) {
      switch (kind) {
        case 0: return rep(s, border, morph::kMin);
        case 1: return rep(s, border, morph::kMax);
        case 2: return rep(rep(s, border, morph::kMin), 255 - border, morph::kMax);
        default: return rep(rep(s, border, morph::kMax), 255 - border, morph::kMin);
      }
    };
    ASSERT_TRUE(morph::Matches<EBW8>(rng, w, h, iter % 5 == 0, false, run, ref)) << kind << " border " << border;
  }
}

TEST(OlderMorphology, WorkedCasesTopHatsAndErrors) {
  EImage<EBW8> src(6, 4), dst(6, 4), other(6, 4);
  ImgCopy(EBW8(100), &src);
  ImgErode(&src, &dst, 1, 0);
  for (int x = 0; x < 6; ++x) EXPECT_EQ(dst.GetPixel(x, 0).value, 0);
  EXPECT_EQ(dst.GetPixel(1, 1).value, 100);
  ImgDilate(&src, &dst, 1, 255);
  EXPECT_EQ(dst.GetPixel(0, 2).value, 255);
  ImgErode(&src, &dst, 1, -56);  // low byte 200
  EXPECT_EQ(dst.GetPixel(0, 0).value, 200);
  // No passes: the destination is not written.
  ImgCopy(EBW8(3), &dst);
  EXPECT_EQ(ImgErode(&src, &dst, 0, 0), 0);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 3);
  // Top-hats: source minus opening, closing minus source.
  src.SetPixel(EBW8(180), 2, 2);
  EXPECT_EQ(ImgWhiteTopHat(&src, &dst, 1, 255, 0), 0);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 80);
  EXPECT_EQ(dst.GetPixel(4, 1).value, 0);
  src.SetPixel(EBW8(20), 2, 2);
  EXPECT_EQ(ImgBlackTopHat(&src, &dst, 1, 0, 255), 0);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 80);
  // Same image: 1413; sizes: 1403; the code comes back as the result.
  EROI<EBW8> part(&src, 0, 0, 6, 4);
  EXPECT_EQ(ImgWhiteTopHat(&src, &part, 1, 255, 0), E_ERROR_SAME_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgWhiteTopHat");
  EXPECT_EQ(ImgBlackTopHat(&src, nullptr, 1, 0, 255), E_ERROR_SAME_IMAGE);
  EImage<EBW8> wide(7, 4);
  EXPECT_EQ(ImgErode(&src, &wide, 2, 0), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgErodeDilate <- ImgErode");
  EXPECT_EQ(ImgClose(&src, &wide, 1, 0, 255), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgErodeDilate <- ImgClose");
}

}  // namespace
