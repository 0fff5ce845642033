// ImgConvolKernel and ImgConvolSymmetricKernel: the worked numbers, the
// three arithmetics against the reference model on random data and on every
// path, in-place behaviour, errors.
#include <string>
#include <vector>

#include "convolution_model.h"
#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using testsupport::Rng;

void Flat(EImage<EBW8>& img, int w, int h, uint8_t v) {
  img.SetSize(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) img.SetPixel(EBW8(v), x, y);
}

// Every pixel of a ROI equals v.
void ExpectAll(const EROI<EBW8>& roi, int v) {
  for (uint8_t b : testsupport::Bytes(roi)) ASSERT_EQ(b, v);
}

TEST(ConvolWorked, FlatWhiteUnderTheUniformKernel) {
  EImage<EBW8> src, dst(40, 9);
  Flat(src, 40, 9, 255);
  EKernel k(KERNEL_UNIFORM);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgConvolKernel(&src, &dst, &k);
    EXPECT_EQ(EGetError(), E_OK);
    ExpectAll(dst, 251);  // nine coefficients of 28, 255 * 252 >> 8
    ImgConvolSymmetricKernel(&src, &dst, &k);
    EXPECT_EQ(EGetError(), E_OK);
    ExpectAll(dst, 254);  // coefficients of 3640
  }
}

TEST(ConvolWorked, OffsetIgnoredByTheEightBitArithmeticOnly) {
  EImage<EBW8> src, dst(20, 5);
  Flat(src, 20, 5, 100);
  EKernel k(KERNEL_GAUSSIAN);
  k.SetOffset(40);
  ImgConvolKernel(&src, &dst, &k);
  ExpectAll(dst, 100);
  ImgConvolSymmetricKernel(&src, &dst, &k);
  ExpectAll(dst, 140);
}

// A row image: p(x) given per column, the same on every row.
void Columns(EImage<EBW8>& img, const std::vector<int>& p, int h) {
  img.SetSize(static_cast<int>(p.size()), h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < static_cast<int>(p.size()); ++x) img.SetPixel(EBW8(static_cast<uint8_t>(p[x])), x, y);
}

TEST(ConvolWorked, RectifierThreeGivesTheMagnitudeOfAnEdge) {
  EImage<EBW8> src, dst(12, 4);
  Columns(src, {200, 200, 200, 200, 200, 0, 0, 0, 0, 0, 0, 0}, 4);  // falling edge
  EKernel k(KERNEL_SOBEL_X);
  ImgConvolKernel(&src, &dst, &k);  // rectifier 2: the negative response is cut
  EXPECT_EQ(dst.GetPixel(4, 1).value, 0);
  k.SetRectifier(3);
  ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(dst.GetPixel(4, 1).value, 255);  // |-800| capped
  EXPECT_EQ(dst.GetPixel(5, 2).value, 255);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 0);
}

TEST(ConvolWorked, RectifierOneSubtractsTheOffsetAt3x3AndAddsItOtherwise) {
  std::vector<int> ramp;
  for (int x = 0; x < 12; ++x) ramp.push_back(200 - 10 * x);
  EImage<EBW8> src, dst(12, 6);
  Columns(src, ramp, 6);
  EKernel k(KERNEL_SOBEL_X);  // response -80 on the ramp
  k.SetRectifier(1);
  k.SetOffset(10);
  ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(dst.GetPixel(5, 3).value, 70);  // -(-80 + 10)

  // The same numbers in the top-left corner of a 4x4 table: the anchor moves
  // to (2, 2) and the floating-point path adds the offset to the part kept.
  EKernel k4(4, 4, 1.0f, 10, 1, 0);
  for (int i = 0; i < 16; ++i) k4.Data[i] = 0;
  const float sob[9] = {-1, 0, 1, -2, 0, 2, -1, 0, 1};
  for (int i = 0; i < 9; ++i) k4.Data[(i / 3) * 4 + i % 3] = sob[i];
  ImgConvolKernel(&src, &dst, &k4);
  EXPECT_EQ(dst.GetPixel(5, 3).value, 90);  // 80 + 10
}

TEST(ConvolWorked, UnknownRectifier) {
  EImage<EBW8> src, dst(10, 6);
  Columns(src, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 6);
  Flat(dst, 10, 6, 77);
  EKernel k(KERNEL_LAPLACIAN_4);
  k.SetRectifier(5);
  ImgConvolKernel(&src, &dst, &k);  // 3x3: nothing happens, no error
  EXPECT_EQ(EGetError(), E_OK);
  ExpectAll(dst, 77);
  ImgConvolSymmetricKernel(&src, &dst, &k);
  EXPECT_EQ(EGetError(), E_OK);
  ExpectAll(dst, 77);

  EKernel k4(4, 4, 1.0f, 20, 5, 0);  // 4x4: mode 0 with the offset added
  for (int i = 0; i < 16; ++i) k4.Data[i] = 0;
  k4.Data[5] = 1;  // offset (-1, -1) from the anchor
  k4.Data[6] = -1;  // offset (0, -1)
  ImgConvolKernel(&src, &dst, &k4);
  EXPECT_EQ(dst.GetPixel(4, 3).value, 19);  // p(3) - p(4) + 20, sum 0 so gain 1
}

TEST(ConvolWorked, NineByNineOnFourByFour) {
  EImage<EBW8> src, dst(4, 4);
  Flat(src, 4, 4, 162);
  EKernel k(9, 9, 1.0f, 0, 2, 81);
  for (int i = 0; i < 81; ++i) k.Data[i] = 1.0f;
  Flat(dst, 4, 4, 1);
  ImgConvolKernel(&src, &dst, &k);
  // Every window holds the 16 pixels and 65 outside positions of 81.
  ExpectAll(dst, 97);
  k.OutsideValue = 0;
  ImgConvolKernel(&src, &dst, &k);
  ExpectAll(dst, 32);
}

TEST(ConvolWorked, EvenSizesAnchorAtHalfTheSize) {
  EImage<EBW8> src(6, 5), dst(6, 5);
  Rng rng(5);
  testsupport::FillRandom(src, rng);
  EKernel k(2, 2, 1.0f, 0, 2, 9);
  k.Data[0] = 1;
  k.Data[1] = k.Data[2] = k.Data[3] = 0;
  ImgConvolKernel(&src, &dst, &k);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 6; ++x)
      EXPECT_EQ(dst.GetPixel(x, y).value, x == 0 || y == 0 ? 9 : src.GetPixel(x - 1, y - 1).value);
}

TEST(ConvolWorked, OutsideValueReachesOnlyTheFloatingPointFrame) {
  EImage<EBW8> src, dst(8, 8);
  Flat(src, 8, 8, 10);
  EKernel k(KERNEL_UNIFORM);
  k.SetOutsideValue(128);
  ImgConvolKernel(&src, &dst, &k);
  ExpectAll(dst, 9);  // 10 * 28 * 9 >> 8
  k.SetRectifier(0);
  ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(dst.GetPixel(3, 3).value, 10);
  // Corner: four pixels, five outside; element 7 counts as element 5, both 1/9.
  EXPECT_EQ(dst.GetPixel(0, 0).value, static_cast<int>((4 * 10 + 5 * 128) / 9.0));
}

TEST(ConvolWorked, FrameWeighsBelowWithTheCoefficientRightOfCentre) {
  EImage<EBW8> src(7, 6), dst(7, 6);
  Rng rng(11);
  testsupport::FillRandom(src, rng);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 7; ++x) src.SetPixel(EBW8(static_cast<uint8_t>(src.GetPixel(x, y).value / 2)), x, y);
  EKernel k(KERNEL_UNIFORM);
  k.SetRectifier(0);
  k.SetGain(1);
  k.SetKernelData(0, 0, 0, 0, 0, 1, 0, 0, 0);  // right of the centre only
  ImgConvolKernel(&src, &dst, &k);
  auto p = [&](int x, int y) { return (x >= 7 || y >= 6) ? 0 : src.GetPixel(x, y).value; };
  EXPECT_EQ(dst.GetPixel(3, 3).value, p(4, 3));
  EXPECT_EQ(dst.GetPixel(3, 0).value, p(4, 0) + p(3, 1));
  EXPECT_EQ(dst.GetPixel(6, 2).value, p(6, 3));  // right of it lies outside (0)
  k.SetKernelData(0, 0, 0, 0, 0, 0, 0, 1, 0);  // below the centre only
  ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(dst.GetPixel(3, 3).value, p(3, 4));
  EXPECT_EQ(dst.GetPixel(3, 0).value, 0);  // coefficient 7 is never used on the frame
  EXPECT_EQ(dst.GetPixel(0, 5).value, 0);
}

TEST(ConvolWorked, OffsetSelectsTheModeOnTheFloatingPointFrame) {
  EImage<EBW8> src, dst(6, 6);
  Flat(src, 6, 6, 50);
  EKernel k(KERNEL_UNIFORM);
  k.SetRectifier(0);
  k.SetOffset(30);
  ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 80);  // 50 + 30 inside
  EXPECT_EQ(dst.GetPixel(0, 2).value, 33);  // frame: 6 * 50 / 9, nothing added
  k.SetOffset(1);  // mode 1 on the frame: a positive sum gives 0
  ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(dst.GetPixel(0, 2).value, 0);
  EXPECT_EQ(dst.GetPixel(2, 2).value, 51);
}

// ---------------------------------------------------------------- random

model::Kern RandomKernel(Rng& rng) {
  model::Kern k;
  const int shape = static_cast<int>(rng() % 8);
  if (shape < 2) k.sx = k.sy = 3;
  else if (shape < 4) k.sx = k.sy = 5;
  else if (shape < 6) k.sx = k.sy = 7;
  else {
    k.sx = 1 + static_cast<int>(rng() % 9);
    k.sy = 1 + static_cast<int>(rng() % 9);
  }
  const int rects[] = {0, 1, 2, 2, 3, 2, 5, 1};
  k.rect = rects[rng() % 8];
  const int style = static_cast<int>(rng() % 3);
  for (int i = 0; i < k.sx * k.sy; ++i) {
    float v;
    if (style == 0) v = static_cast<float>(static_cast<int>(rng() % 9) - 2);
    else if (style == 1) v = static_cast<float>(static_cast<int>(rng() % 2001) - 1000) / 256.0f;
    else v = static_cast<float>(static_cast<int>(rng() % 5) - 2);  // mostly zero-sum-ish
    k.c.push_back(v);
  }
  const float gains[] = {1.0f, 0.5f, 2.0f, -1.0f, 0.3f, 1.7f};
  k.gain = gains[rng() % 6];
  k.offset = rng() % 3 == 0 ? 0 : rng() % 60;
  k.outside = rng() % 256;
  return k;
}

TEST(ConvolRandom, KernelMatchesTheModelOnEveryPath) {
  Rng rng(1234);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 400; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 6 : 90));
      const int h = 1 + static_cast<int>(rng() % (iter % 4 == 1 ? 3 : 9));
      EImage<EBW8> si, di;
      EROI<EBW8> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      const model::Kern mk = RandomKernel(rng);
      EKernel k;
      model::Load(k, mk);
      const auto before = testsupport::Snapshot(di);
      model::Grey gs = model::FromRoi(s), gd = model::FromRoi(d);
      model::Convol(mk, gs, gd);
      ImgConvolKernel(&s, &d, &k);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(di), model::Expected(di, d, before, gd))
          << "path " << path << " iter " << iter << " " << w << "x" << h << " kernel " << mk.sx
          << "x" << mk.sy << " rect " << mk.rect;
    }
  }
}

TEST(ConvolRandom, SymmetricMatchesTheModelOnEveryPath) {
  Rng rng(99);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 250; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 6 : 90));
      const int h = 1 + static_cast<int>(rng() % 8);
      EImage<EBW8> si, di;
      EROI<EBW8> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      model::Kern mk = RandomKernel(rng);
      mk.sx = mk.sy = 3 + 2 * static_cast<int>(rng() % 3);
      mk.c.resize(static_cast<size_t>(mk.sx * mk.sy), 1.0f);
      if (mk.rect == 0) mk.rect = 2;
      EKernel k;
      model::Load(k, mk);
      const auto before = testsupport::Snapshot(di);
      model::Grey gs = model::FromRoi(s), gd = model::FromRoi(d);
      model::Symmetric(mk, gs, gd);
      ImgConvolSymmetricKernel(&s, &d, &k);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(di), model::Expected(di, d, before, gd))
          << "path " << path << " iter " << iter << " size " << mk.sx << " rect " << mk.rect;
    }
  }
}

TEST(ConvolRandom, InPlaceBehaviourOfEachArithmetic) {
  Rng rng(77);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 150; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 80);
      const int h = 1 + static_cast<int>(rng() % 8);
      EImage<EBW8> img;
      EROI<EBW8> roi;
      testsupport::PlaceRandom(img, roi, w, h, rng);
      testsupport::FillRandom(img, rng);
      const model::Kern mk = RandomKernel(rng);
      EKernel k;
      model::Load(k, mk);
      const auto before = testsupport::Snapshot(img);
      model::Grey g = model::FromRoi(roi);
      const bool symmetric = iter % 3 == 0 && mk.rect != 0 && mk.sx == mk.sy && mk.sx % 2 == 1 && mk.sx <= 7 && mk.sx >= 3;
      if (symmetric) {
        model::Symmetric(mk, g, g);  // reads what it writes
        ImgConvolSymmetricKernel(&roi, &roi, &k);
      } else if (mk.sx == 3 && mk.sy == 3 && mk.rect == 2) {
        model::Grey clean = g;
        model::EightBit(mk, clean, g);  // as with a separate destination
        ImgConvolKernel(&roi, &roi, &k);
      } else {
        model::Convol(mk, g, g);
        ImgConvolKernel(&roi, &roi, &k);
      }
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(img), model::Expected(img, roi, before, g))
          << "path " << path << " iter " << iter << " kernel " << mk.sx << "x" << mk.sy
          << " rect " << mk.rect << (symmetric ? " symmetric" : "");
    }
  }
}

// A coefficient beyond 16 bits: the scalar form wraps it everywhere; the
// fast form wraps it in its blocks and keeps 32 bits on the pixels it
// computes one by one (the whole frame among them).
TEST(ConvolRandom, WideCoefficientsInTheEightBitArithmetic) {
  Rng rng(3);
  const int w = 100, h = 5;
  EImage<EBW8> src(w, h), dst(w, h);
  testsupport::FillRandom(src, rng);
  model::Kern mk;
  mk.c = {0, 0, 0, -200, 200, 0, 0, 0, 0};  // sum 0: gain 1, coefficients +-51200
  EKernel k;
  model::Load(k, mk);
  model::Grey gs = model::FromRoi(src), narrow = gs, wide = gs;
  model::EightBit(mk, gs, narrow, false);
  model::EightBit(mk, gs, wide, true);
  ASSERT_NE(narrow.px, wide.px);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgConvolKernel(&src, &dst, &k);
    const model::Grey got = model::FromRoi(dst);
    if (path < 0) {
      EXPECT_EQ(got.px, narrow.px);
      continue;
    }
    for (int y = 0; y < h; ++y) {
      const bool frameRow = y == 0 || y == h - 1;
      for (int x = 0; x < w; ++x) {
        const size_t i = static_cast<size_t>(y * w + x);
        if (frameRow || x == 0 || x == w - 1) {
          EXPECT_EQ(got.px[i], wide.px[i]) << x << "," << y;
        } else if (x == 1) {
          EXPECT_EQ(got.px[i], narrow.px[i]) << x << "," << y;
        }
      }
    }
  }
}

// Coefficients far beyond 16 bits (and beyond 32, which truncate to the
// lowest integer) wrap the 32-bit sums the same way on every path.
TEST(ConvolRandom, LargeGainsInTheFifteenBitArithmetic) {
  Rng rng(555);
  const float gains[] = {300.0f, -4000.0f, 1e6f, 77.7f};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 90), h = 1 + static_cast<int>(rng() % 6);
      EImage<EBW8> si, di;
      EROI<EBW8> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      model::Kern mk = RandomKernel(rng);
      mk.sx = mk.sy = 3 + 2 * static_cast<int>(rng() % 3);
      mk.c.assign(static_cast<size_t>(mk.sx * mk.sy), 0.0f);
      for (auto& c : mk.c) c = static_cast<float>(static_cast<int>(rng() % 7) - 3);
      mk.gain = gains[rng() % 4];
      mk.rect = 1 + static_cast<int>(rng() % 3);
      if (mk.sx == 3 && mk.rect == 2) mk.rect = 3;
      EKernel k;
      model::Load(k, mk);
      model::Grey gs = model::FromRoi(s), gd = model::FromRoi(d);
      const bool symmetric = iter % 2 == 1;
      if (symmetric) {
        model::Symmetric(mk, gs, gd);
        ImgConvolSymmetricKernel(&s, &d, &k);
      } else {
        model::Convol(mk, gs, gd);
        ImgConvolKernel(&s, &d, &k);
      }
      ASSERT_EQ(testsupport::Bytes(d), gd.px) << "path " << path << " size " << mk.sx << " gain " << mk.gain;
    }
  }
}

// ---------------------------------------------------------------- errors

class ConvolErrors : public ::testing::Test {
 protected:
  void SetUp() override {
    Rng rng(8);
    src_.SetSize(12, 10);
    dst_.SetSize(12, 10);
    testsupport::FillRandom(src_, rng);
    testsupport::FillRandom(dst_, rng);
    before_ = testsupport::Snapshot(dst_);
  }
  void TearDown() override { mirel::testing::FailFilterAllocations(0); }
  void ExpectFailure(E_ERRORS code, const std::string& trace) {
    EXPECT_EQ(EGetError(), code);
    EXPECT_EQ(std::string(EGetErrorTrace()), trace);
    EXPECT_EQ(testsupport::Snapshot(dst_), before_);
  }
  EImage<EBW8> src_, dst_;
  std::vector<uint8_t> before_;
};

TEST_F(ConvolErrors, RoisAndKernels) {
  EKernel k(KERNEL_SOBEL_X);
  EImage<EBW8> other(11, 10), empty;
  ImgConvolKernel(&src_, &other, &k);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(std::string(EGetErrorTrace()), "ImgConvolKernel BW8");
  ImgConvolKernel(&empty, &empty, &k);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  ImgConvolKernel(&src_, nullptr, &k);
  ExpectFailure(E_ERROR_VOID_IMAGE, "ImgConvolKernel BW8");

  EKernel none;
  ImgConvolKernel(&src_, &dst_, &none);
  ExpectFailure(E_ERROR_KERNEL_VOID, "ImgConvolKernel BW8");
  ImgConvolSymmetricKernel(&src_, &dst_, &none);
  ExpectFailure(E_ERROR_KERNEL_VOID, "ImgConvolSymmetricKernel");

  EKernel big(KERNEL_UNIFORM);
  big.SizeX = 5;  // more than the nine floats it holds
  ImgConvolKernel(&src_, &dst_, &big);
  ExpectFailure(E_ERROR_KERNEL_SIZE, "ImgConvolKernel BW8");

  EKernel pattern(KERNEL_PATTERN_TEE);
  ImgConvolSymmetricKernel(&src_, &dst_, &pattern);
  ExpectFailure(E_ERROR_KERNEL_RECTIFIER, "ImgConvolSymmetricKernel");
  EKernel even(4, 4, 1.0f, 0, 2, 0);
  ImgConvolSymmetricKernel(&src_, &dst_, &even);
  ExpectFailure(E_ERROR_KERNEL_SIZE, "ImgConvolSymmetricKernel");
  EKernel oblong(5, 3, 1.0f, 0, 2, 0);
  ImgConvolSymmetricKernel(&src_, &dst_, &oblong);
  ExpectFailure(E_ERROR_KERNEL_SIZE, "ImgConvolSymmetricKernel");

  // The pattern kernels have gain 0: an image of zeros.
  ImgConvolKernel(&src_, &dst_, &pattern);
  EXPECT_EQ(EGetError(), E_OK);
  ExpectAll(dst_, 0);
}

TEST_F(ConvolErrors, OutOfMemoryWritesNothing) {
  EKernel k(5, 4, 1.0f, 0, 2, 0);
  for (int i = 0; i < 20; ++i) k.Data[i] = 1;
  mirel::testing::FailFilterAllocations(1);
  ImgConvolKernel(&src_, &dst_, &k);  // the floating-point coefficient table
  ExpectFailure(E_ERROR_OUT_OF_MEMORY, "ImgConvolKernel BW8");

  EKernel g(KERNEL_GAUSSIAN);
  mirel::testing::FailFilterAllocations(1);
  ImgConvolKernel(&dst_, &dst_, &g);  // the in-place copy of the source
  ExpectFailure(E_ERROR_OUT_OF_MEMORY, "ImgConvolKernel BW8");
}

}  // namespace
