// ImgConvolKernel and ImgConvolSymmetricKernel on 8-bit and 16-bit pixels:
// the worked numbers, the three arithmetics against the reference model on
// random data and on every path, in-place behaviour, errors.
#include <string>
#include <utility>
#include <vector>

#include "convolution_model.h"
#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using testsupport::Rng;

// An image with p(x) in column x of every row.
EImage<EBW8> Columns(const std::vector<int>& p, int h) {
  EImage<EBW8> img(static_cast<int>(p.size()), h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < static_cast<int>(p.size()); ++x) img.SetPixel(EBW8(static_cast<uint8_t>(p[x])), x, y);
  return img;
}
EImage<EBW8> Flat(int w, int h, int v) { return Columns(std::vector<int>(static_cast<size_t>(w), v), h); }

// A sx x sy kernel filled with `fill`, then the listed elements set.
EKernel Table(int sx, int sy, unsigned offset, int rect, unsigned outside, float fill,
              std::initializer_list<std::pair<int, float>> set = {}) {
  EKernel k(static_cast<short>(sx), static_cast<short>(sy), 1.0f, offset, static_cast<short>(rect), outside);
  for (int i = 0; i < sx * sy; ++i) k.Data[i] = fill;
  for (const auto& e : set) k.Data[e.first] = e.second;
  return k;
}

// The convolution of `src` into a fresh image of its size.
EImage<EBW8> Convol(EImage<EBW8>& src, EKernel& k, bool symmetric = false) {
  EImage<EBW8> dst(src.GetWidth(), src.GetHeight());
  if (symmetric) ImgConvolSymmetricKernel(&src, &dst, &k);
  else ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(EGetError(), E_OK);
  return dst;
}

void ExpectAll(const EROI<EBW8>& roi, int v) {
  for (uint8_t b : testsupport::Bytes(roi)) ASSERT_EQ(b, v);
}

TEST(ConvolWorked, FlatImagesOnEveryPath) {
  EImage<EBW8> white = Flat(40, 9, 255), grey = Flat(20, 5, 100);
  EKernel uniform(KERNEL_UNIFORM), gauss(KERNEL_GAUSSIAN);
  gauss.SetOffset(40);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ExpectAll(Convol(white, uniform), 251);        // nine coefficients of 28, 255 * 252 >> 8
    ExpectAll(Convol(white, uniform, true), 254);  // coefficients of 3640
    ExpectAll(Convol(grey, gauss), 100);           // the 8-bit arithmetic ignores the offset
    ExpectAll(Convol(grey, gauss, true), 140);
  }
}

TEST(ConvolWorked, Rectifiers) {
  EImage<EBW8> edge = Columns({200, 200, 200, 200, 200, 0, 0, 0, 0, 0, 0, 0}, 4);  // falling edge
  EKernel k(KERNEL_SOBEL_X);
  EXPECT_EQ(Convol(edge, k).GetPixel(4, 1).value, 0);  // rectifier 2 cuts the negative response
  k.SetRectifier(3);
  EXPECT_EQ(Convol(edge, k).GetPixel(4, 1).value, 255);  // |-800| capped

  // Rectifier 1 on a ramp (Sobel response -80) subtracts the offset at 3x3;
  // the same numbers in the corner of a 4x4 table (anchor (2, 2)) go through
  // the floating-point path, which adds the offset to the part kept.
  std::vector<int> ramp;
  for (int x = 0; x < 12; ++x) ramp.push_back(200 - 10 * x);
  EImage<EBW8> r = Columns(ramp, 6);
  k.SetRectifier(1);
  k.SetOffset(10);
  EXPECT_EQ(Convol(r, k).GetPixel(5, 3).value, 70);  // -(-80 + 10)
  EKernel k4 = Table(4, 4, 10, 1, 0, 0, {{0, -1}, {2, 1}, {4, -2}, {6, 2}, {8, -1}, {10, 1}});
  EXPECT_EQ(Convol(r, k4).GetPixel(5, 3).value, 90);  // 80 + 10

  // An unknown rectifier: at 3x3 nothing happens and no error; at 4x4 it is
  // mode 0 with the offset added.
  EImage<EBW8> dst = Flat(12, 6, 77);
  k = EKernel(KERNEL_LAPLACIAN_4);
  k.SetRectifier(5);
  for (bool symmetric : {false, true}) {
    if (symmetric) ImgConvolSymmetricKernel(&r, &dst, &k);
    else ImgConvolKernel(&r, &dst, &k);
    EXPECT_EQ(EGetError(), E_OK);
    ExpectAll(dst, 77);
  }
  k4 = Table(4, 4, 20, 5, 0, 0, {{5, 1}, {6, -1}});
  EXPECT_EQ(Convol(r, k4).GetPixel(4, 3).value, 30);  // p(3) - p(4) + 20; sum 0 so gain 1
}

TEST(ConvolWorked, OutsideValueAndAnchor) {
  EImage<EBW8> small = Flat(4, 4, 162);
  EKernel nine = Table(9, 9, 0, 2, 81, 1.0f);
  ExpectAll(Convol(small, nine), 97);  // every window: the 16 pixels and 65 outside positions
  nine.OutsideValue = 0;
  ExpectAll(Convol(small, nine), 32);

  Rng rng(5);
  EImage<EBW8> src(6, 5);
  testsupport::FillRandom(src, rng);
  EKernel two = Table(2, 2, 0, 2, 9, 0, {{0, 1}});  // even sizes anchor at half the size
  const EImage<EBW8> shifted = Convol(src, two);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 6; ++x)
      EXPECT_EQ(shifted.GetPixel(x, y).value, x == 0 || y == 0 ? 9 : src.GetPixel(x - 1, y - 1).value);

  // The outside value reaches only the floating-point frame.
  EImage<EBW8> ten = Flat(8, 8, 10);
  EKernel u(KERNEL_UNIFORM);
  u.SetOutsideValue(128);
  ExpectAll(Convol(ten, u), 9);  // 10 * 28 * 9 >> 8
  u.SetRectifier(0);
  const EImage<EBW8> f = Convol(ten, u);
  EXPECT_EQ(f.GetPixel(3, 3).value, 10);
  // Corner: four pixels, five outside; element 7 counts as element 5, both 1/9.
  EXPECT_EQ(f.GetPixel(0, 0).value, static_cast<int>((4 * 10 + 5 * 128) / 9.0));
}

TEST(ConvolWorked, FloatingPointFrame) {
  Rng rng(11);
  EImage<EBW8> src(7, 6);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 7; ++x) src.SetPixel(EBW8(static_cast<uint8_t>(rng() % 128)), x, y);
  auto p = [&](int x, int y) { return (x >= 7 || y >= 6) ? 0 : src.GetPixel(x, y).value; };
  EKernel k(KERNEL_UNIFORM);
  k.SetRectifier(0);
  k.SetGain(1);
  k.SetKernelData(0, 0, 0, 0, 0, 1, 0, 0, 0);  // right of the centre only
  EImage<EBW8> d = Convol(src, k);
  EXPECT_EQ(d.GetPixel(3, 3).value, p(4, 3));
  EXPECT_EQ(d.GetPixel(3, 0).value, p(4, 0) + p(3, 1));  // the frame weighs below with it too
  EXPECT_EQ(d.GetPixel(6, 2).value, p(6, 3));  // right of it lies outside (0)
  k.SetKernelData(0, 0, 0, 0, 0, 0, 0, 1, 0);  // below the centre only
  d = Convol(src, k);
  EXPECT_EQ(d.GetPixel(3, 3).value, p(3, 4));
  EXPECT_EQ(d.GetPixel(3, 0).value, 0);  // coefficient 7 is never used on the frame
  EXPECT_EQ(d.GetPixel(0, 5).value, 0);

  // On the frame the offset selects the mode and nothing is added.
  EImage<EBW8> flat = Flat(6, 6, 50);
  EKernel m(KERNEL_UNIFORM);
  m.SetRectifier(0);
  m.SetOffset(30);
  d = Convol(flat, m);
  EXPECT_EQ(d.GetPixel(2, 2).value, 80);  // 50 + 30 inside
  EXPECT_EQ(d.GetPixel(0, 2).value, 33);  // frame: 6 * 50 / 9
  m.SetOffset(1);  // mode 1 on the frame: a positive sum gives 0
  d = Convol(flat, m);
  EXPECT_EQ(d.GetPixel(0, 2).value, 0);
  EXPECT_EQ(d.GetPixel(2, 2).value, 51);
}

// ---------------------------------------------------------------- random

model::Kern RandomKernel(Rng& rng) {
  model::Kern k;
  const int shape = static_cast<int>(rng() % 8);
  if (shape < 6) {
    k.sx = k.sy = 3 + 2 * (shape / 2);
  } else {
    k.sx = 1 + static_cast<int>(rng() % 9);
    k.sy = 1 + static_cast<int>(rng() % 9);
  }
  const int rects[] = {0, 1, 2, 2, 3, 2, 5, 1};
  k.rect = rects[rng() % 8];
  const int style = static_cast<int>(rng() % 3);
  for (int i = 0; i < k.sx * k.sy; ++i) {
    const int r = static_cast<int>(rng() % 2001);
    k.c.push_back(style == 0   ? static_cast<float>(r % 9 - 2)
                  : style == 1 ? static_cast<float>(r - 1000) / 256.0f
                               : static_cast<float>(r % 5 - 2));  // mostly zero-sum-ish
  }
  const float gains[] = {1.0f, 0.5f, 2.0f, -1.0f, 0.3f, 1.7f};
  k.gain = gains[rng() % 6];
  k.offset = rng() % 3 == 0 ? 0 : rng() % 60;
  k.outside = rng() % 256;
  return k;
}

// Both kernels on random shapes, coefficients, gains (some so large that the
// fixed-point sums wrap) and rectifiers, on every path, some in place.
TEST(ConvolRandom, KernelsMatchTheModelOnEveryPath) {
  Rng rng(1234);
  const float large[] = {300.0f, -4000.0f, 1e6f, 77.7f};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 850; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 6 : 90));
      const int h = 1 + static_cast<int>(rng() % (iter % 4 == 1 ? 3 : 9));
      model::Kern mk = RandomKernel(rng);
      const bool symmetric = iter % 3 == 2, inPlace = iter % 5 == 4, wraps = iter % 7 == 3;
      if (symmetric || wraps) {
        mk.sx = mk.sy = 3 + 2 * static_cast<int>(rng() % 3);
        mk.c.resize(static_cast<size_t>(mk.sx * mk.sy), 1.0f);
        if (mk.rect == 0 || wraps) mk.rect = 1 + static_cast<int>(rng() % 3);
      }
      if (wraps) {
        for (auto& c : mk.c) c = static_cast<float>(static_cast<int>(rng() % 7) - 3);
        mk.gain = large[rng() % 4];
        if (mk.sx == 3 && mk.rect == 2) mk.rect = 3;
      }
      EKernel k;
      model::Load(k, mk);
      auto ref = [&](model::Grey& s, model::Grey& d) {
        if (symmetric) {
          model::Symmetric(mk, s, d);  // in place it reads what it has written
        } else if (mk.sx == 3 && mk.sy == 3 && mk.rect == 2) {
          model::Grey clean = s;  // the 8-bit arithmetic: in place as with a separate destination
          model::EightBit(mk, clean, d);
        } else {
          model::Convol(mk, s, d);
        }
      };
      auto run = [&](EROI<EBW8>* s, EROI<EBW8>* d) {
        if (symmetric) ImgConvolSymmetricKernel(s, d, &k);
        else ImgConvolKernel(s, d, &k);
      };
      ASSERT_TRUE(model::MatchesOnRandomRois(rng, w, h, inPlace, ref, run))
          << "path " << path << " iter " << iter << " kernel " << mk.sx << "x" << mk.sy << " rect " << mk.rect
          << " gain " << mk.gain << (symmetric ? " symmetric" : "") << (inPlace ? " in place" : "");
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
    const std::vector<uint8_t> got = testsupport::Bytes(dst);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const size_t i = static_cast<size_t>(y * w + x);
        const bool frame = y == 0 || y == h - 1 || x == 0 || x == w - 1;
        const model::Grey& want = path < 0 || (!frame && x == 1) ? narrow : wide;
        if (path < 0 || frame || x == 1) {
          EXPECT_EQ(got[i], want.px[i]) << path << " " << x << "," << y;
        }
      }
  }
}

// ---------------------------------------------------------------- errors

// Every refusal: the code, the operation's label and an untouched
// destination; the pattern kernels themselves are accepted.
TEST(ConvolErrors, RoisKernelsAndMemory) {
  Rng rng(8);
  EImage<EBW8> src(12, 10), dst(12, 10), other(11, 10), empty;
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  const std::vector<uint8_t> before = testsupport::Snapshot(dst);
  auto refused = [&](E_ERRORS code, bool symmetric, EROI<EBW8>* s, EROI<EBW8>* d, EKernel* k) {
    if (symmetric) ImgConvolSymmetricKernel(s, d, k);
    else ImgConvolKernel(s, d, k);
    EXPECT_EQ(EGetError(), code);
    EXPECT_STREQ(EGetErrorTrace(), symmetric ? "ImgConvolSymmetricKernel" : "ImgConvolKernel BW8");
    EXPECT_EQ(testsupport::Snapshot(dst), before) << code;
  };
  EKernel sobel(KERNEL_SOBEL_X), none, big(KERNEL_UNIFORM), pattern(KERNEL_PATTERN_TEE), gauss(KERNEL_GAUSSIAN);
  EKernel even(4, 4, 1.0f, 0, 2, 0), oblong(5, 3, 1.0f, 0, 2, 0);
  big.SizeX = 5;  // more than the nine floats it holds
  refused(E_ERROR_SIZE_MISMATCH, false, &src, &other, &sobel);
  refused(E_ERROR_VOID_IMAGE, false, &empty, &empty, &sobel);
  refused(E_ERROR_VOID_IMAGE, false, &src, nullptr, &sobel);
  refused(E_ERROR_KERNEL_VOID, false, &src, &dst, &none);
  refused(E_ERROR_KERNEL_VOID, true, &src, &dst, &none);
  refused(E_ERROR_KERNEL_SIZE, false, &src, &dst, &big);
  refused(E_ERROR_KERNEL_RECTIFIER, true, &src, &dst, &pattern);
  refused(E_ERROR_KERNEL_SIZE, true, &src, &dst, &even);
  refused(E_ERROR_KERNEL_SIZE, true, &src, &dst, &oblong);
  EKernel floating = Table(5, 4, 0, 2, 0, 1.0f);
  mirel::testing::FailFilterAllocations(1);
  refused(E_ERROR_OUT_OF_MEMORY, false, &src, &dst, &floating);  // the floating-point coefficient table
  mirel::testing::FailFilterAllocations(1);
  refused(E_ERROR_OUT_OF_MEMORY, false, &dst, &dst, &gauss);  // the in-place copy of the source
  mirel::testing::FailFilterAllocations(0);
  // The pattern kernels have gain 0: an image of zeros.
  ImgConvolKernel(&src, &dst, &pattern);
  EXPECT_EQ(EGetError(), E_OK);
  ExpectAll(dst, 0);
}

// ---------------------------------------------------------------- 16 bits

EImage<EBW16> Flat16(int w, int h, int v) {
  EImage<EBW16> img(w, h);
  ImgCopy(EBW16(static_cast<uint16_t>(v)), &img);
  return img;
}

EImage<EBW16> Convol16(const EImage<EBW16>& src, EKernel& k, bool symmetric = false) {
  EImage<EBW16> dst(src.GetWidth(), src.GetHeight());
  if (symmetric) ImgConvolSymmetricKernel(&src, &dst, &k);
  else ImgConvolKernel(&src, &dst, &k);
  EXPECT_EQ(EGetError(), E_OK);
  return dst;
}

TEST(Convol16, WorkedNumbersOnEveryPath) {
  const EImage<EBW16> white = Flat16(40, 9, 65535), grey = Flat16(20, 5, 1000);
  EImage<EBW16> step(30, 4);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 30; ++x) step.SetPixel(EBW16(x < 15 ? 0 : 65535), x, y);
  EKernel uniform(KERNEL_UNIFORM), gauss(KERNEL_GAUSSIAN), sobel(KERNEL_SOBEL_X);
  gauss.SetOffset(40);
  sobel.SetRectifier(3);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    EXPECT_EQ(Convol16(white, uniform).GetPixel(7, 4).value, 64511);  // 65535 * 9 * 28 >> 8
    EXPECT_EQ(Convol16(white, uniform, true).GetPixel(0, 0).value, 65519);  // 65535 * 9 * 3640 >> 15
    EXPECT_EQ(Convol16(grey, gauss).GetPixel(3, 2).value, 1000);  // the offset has no effect
    EXPECT_EQ(Convol16(grey, gauss, true).GetPixel(3, 2).value, 1040);
    // 4 * 32768 * 65535 wraps at 32 bits to -131072: |-4|, not 65535.
    EXPECT_EQ(Convol16(step, sobel).GetPixel(15, 1).value, 4);
    EXPECT_EQ(Convol16(step, sobel).GetPixel(5, 1).value, 0);
  }
}

// The three arithmetics on random 16-bit data (full range and small
// values), random kernels, offsets beyond 255 and outside values, some in
// place, on every path: the fast paths give the scalar bytes.
TEST(Convol16, KernelsMatchTheModelOnEveryPath) {
  Rng rng(77);
  const unsigned limits[] = {65536, 256, 4096, 65536};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 400; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 6 : 80));
      const int h = 1 + static_cast<int>(rng() % (iter % 4 == 1 ? 3 : 8));
      model::Kern mk = RandomKernel(rng);
      const bool symmetric = iter % 3 == 2, inPlace = iter % 5 == 4;
      if (symmetric) {
        mk.sx = mk.sy = 3 + 2 * static_cast<int>(rng() % 3);
        mk.c.resize(static_cast<size_t>(mk.sx * mk.sy), 1.0f);
        if (mk.rect == 0) mk.rect = 1 + static_cast<int>(rng() % 3);
      }
      if (iter % 2) mk.offset = rng() % 70000;
      mk.outside = rng() % 65536;
      EKernel k;
      model::Load(k, mk);
      auto ref = [&](model::Grey16& s, model::Grey16& d) {
        if (symmetric) {
          model::Symmetric(mk, s, d);
        } else if (mk.sx == 3 && mk.sy == 3 && mk.rect == 2) {
          model::Grey16 clean = s;
          model::EightBit(mk, clean, d);
        } else {
          model::Convol(mk, s, d);
        }
      };
      auto run = [&](EROI<EBW16>* s, EROI<EBW16>* d) {
        if (symmetric) ImgConvolSymmetricKernel(s, d, &k);
        else ImgConvolKernel(s, d, &k);
      };
      ASSERT_TRUE(model::MatchesOnRandomRois<EBW16>(rng, w, h, inPlace, ref, run, limits[iter % 4]))
          << "path " << path << " iter " << iter << " kernel " << mk.sx << "x" << mk.sy << " rect " << mk.rect
          << " gain " << mk.gain << (symmetric ? " symmetric" : "") << (inPlace ? " in place" : "");
    }
  }
}

TEST(Convol16, Refusals) {
  EImage<EBW16> src = Flat16(12, 10, 500), dst = Flat16(12, 10, 7), other(11, 10), empty;
  const std::vector<uint8_t> before = testsupport::Snapshot(dst);
  auto refused = [&](E_ERRORS code, bool symmetric, EROI<EBW16>* s, EROI<EBW16>* d, EKernel* k) {
    if (symmetric) ImgConvolSymmetricKernel(s, d, k);
    else ImgConvolKernel(s, d, k);
    EXPECT_EQ(EGetError(), code);
    EXPECT_STREQ(EGetErrorTrace(), symmetric ? "ImgConvolSymmetricKernel BW16" : "ImgConvolKernel BW16");
    EXPECT_EQ(testsupport::Snapshot(dst), before) << code;
  };
  EKernel sobel(KERNEL_SOBEL_X), none, pattern(KERNEL_PATTERN_BAR), even(4, 4, 1.0f, 0, 2, 0);
  refused(E_ERROR_SIZE_MISMATCH, false, &src, &other, &sobel);
  refused(E_ERROR_VOID_IMAGE, true, &empty, &empty, &sobel);
  refused(E_ERROR_KERNEL_VOID, false, &src, &dst, &none);
  refused(E_ERROR_KERNEL_RECTIFIER, true, &src, &dst, &pattern);
  refused(E_ERROR_KERNEL_SIZE, true, &src, &dst, &even);
  mirel::testing::FailFilterAllocations(1);
  refused(E_ERROR_OUT_OF_MEMORY, false, &dst, &dst, &sobel);  // the in-place copy of the source
  mirel::testing::FailFilterAllocations(1);
  refused(E_ERROR_OUT_OF_MEMORY, false, &src, &dst, &even);  // the floating-point table
  mirel::testing::FailFilterAllocations(0);
}

}  // namespace
