// Smoothing of any window and local deviation on 8-bit and 16-bit pixels,
// and the colour filters: models on random ROIs on every path, the routing
// by half-widths, worked numbers, refusals.
#include <climits>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "convolution_model.h"
#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using model::Grey;

// The window sum (and sum of squares) around (x, y), positions clamped;
// both wrap at 32 bits.
template <class P>
void WindowSums(model::Plane<P>& s, int x, int y, long rx, long ry, uint32_t& a, uint32_t& b) {
  a = b = 0;
  for (long j = -ry; j <= ry; ++j)
    for (long i = -rx; i <= rx; ++i) {
      const uint32_t p = s.edge(static_cast<int>(std::max(-1L, std::min<long>(x + i, s.w))),
                                static_cast<int>(std::max(-1L, std::min<long>(y + j, s.h))));
      a += p;
      b += p * p;
    }
}

template <class P>
model::Plane<P> Uniform(model::Plane<P> s, int rx, int ry) {
  rx = std::min(rx, s.w - 1);
  ry = std::min(ry, s.h - 1);
  const uint32_t scale = 16777216u / static_cast<uint32_t>((2 * ry + 1) * (2 * rx + 1));
  model::Plane<P> d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      uint32_t a, b;
      WindowSums(s, x, y, rx, ry, a, b);
      d.at(x, y) = static_cast<P>((a * scale) >> 24);
    }
  return d;
}

// One binomial pass (1 2 1): horizontal, vertical or both.
template <class P>
model::Plane<P> Binomial(model::Plane<P> s, bool horizontal, bool vertical) {
  model::Plane<P> d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      int sum = 0;
      for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i)
          sum += (horizontal ? 2 - std::abs(i) : i == 0) * (vertical ? 2 - std::abs(j) : j == 0) * s.edge(x + i, y + j);
      d.at(x, y) = static_cast<P>(sum >> (2 * horizontal + 2 * vertical));
    }
  return d;
}

template <class P>
model::Plane<P> Gaussian(model::Plane<P> s, unsigned hx, unsigned hy) {
  for (; hx && hy; --hx, --hy) s = Binomial(s, true, true);
  for (; hy; --hy) s = Binomial(s, false, true);
  for (; hx; --hx) s = Binomial(s, true, false);
  return s;
}

template <class P>
model::Plane<P> Deviation(model::Plane<P> s, long rx, long ry) {
  const uint32_t n = static_cast<uint32_t>((2 * ry + 1) * (2 * rx + 1));
  model::Plane<P> d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      uint32_t a, b;
      WindowSums(s, x, y, rx, ry, a, b);
      const double dev = std::sqrt(static_cast<double>(n * b - a * a)) / n;
      d.at(x, y) = static_cast<P>(std::min(dev, static_cast<double>(model::kTop<P>)));
    }
  return d;
}

TEST(Smoothing, MatchTheModelsOnRandomRoisOnEveryPath) {
  Rng rng(3);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 120; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 9);
      const unsigned hx = iter % 17 == 0 ? 1000u : rng() % 6, hy = iter % 13 == 0 ? UINT_MAX : rng() % 5;
      const unsigned ry = hy == UINT_MAX ? hx : hy;
      const unsigned gx = std::min(hx, 4u), gy = hy == UINT_MAX ? hy : std::min(hy, 4u);  // few passes
      const int op = iter % 3;
      const bool inPlace = op == 1 && iter % 2 == 0;  // Gaussian on its source
      auto ref = [&](Grey& s, Grey& d) {
        d = op == 0   ? Uniform(s, static_cast<int>(std::min(hx, 1000u)), static_cast<int>(std::min(ry, 1000u)))
            : op == 1 ? Gaussian(s, gx, std::min(ry, 4u))
                      : Deviation(s, std::min(hx, 4u), static_cast<long>(std::min(ry, 4u)));
      };
      auto run = [&](EROI<EBW8>* s, EROI<EBW8>* d) {
        if (op == 0) ImgConvolUniform(s, d, hx, hy);
        else if (op == 1) ImgConvolGaussian(s, s == d ? nullptr : d, gx, gy);
        else ImgLocalDeviation(s, d, std::min(hx, 4u), static_cast<int>(std::min(ry, 4u)));
      };
      if (op == 0 && hx <= 1 && ry <= 1 && hx + ry > 0) continue;  // routed to the 3x3 filters
      if (op == 1 && hx == 0 && ry == 0) continue;                   // writes nothing
      ASSERT_TRUE(model::MatchesOnRandomRois(rng, w, h, inPlace, ref, run))
          << "op " << op << " path " << path << " " << hx << "," << hy;
    }
  }
}

// The routing by half-widths and the refusals, on a flat image of `top`:
// the sliding uniform 5x5 gives `uniform22`, the in-place 3x3 route gives
// `inPlace11`; labels end in `suffix`.
template <class Pix>
void RoutingAndRefusals(int top, int uniform22, int inPlace11, const std::string& suffix) {
  using Value = decltype(Pix::value);
  EImage<Pix> flat(10, 6), dst(10, 6), other(9, 6);
  ImgCopy(Pix(static_cast<Value>(top)), &flat);
  ImgConvolUniform(&flat, &dst, 2, 2);  // scale 671088
  EXPECT_EQ(dst.GetPixel(4, 3).value, uniform22);
  ImgLocalDeviation(&flat, &dst, 3, 1);
  EXPECT_EQ(dst.GetPixel(0, 0).value, 0);
  // In place: the 3x3 routes work, the sliding sum is refused.
  ImgConvolUniform(&flat, nullptr, 1, 1);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(flat.GetPixel(3, 3).value, inPlace11);
  const auto before = testsupport::Snapshot(flat);
  ImgConvolUniform(&flat, nullptr, 1, 2);
  EXPECT_EQ(EGetError(), E_ERROR_SAME_IMAGE);
  EXPECT_EQ(EGetErrorTrace(), "ImgConvolUniform" + suffix);
  ImgLocalAverage(&flat, &flat, 3, 3);
  EXPECT_EQ(EGetErrorTrace(), "ImgLocalAverage" + suffix);
  EXPECT_EQ(testsupport::Snapshot(flat), before);
  // Both counts 0: the uniform filter copies, the Gaussian writes nothing.
  ImgCopy(Pix(1), &dst);
  ImgConvolGaussian(&flat, &dst, 0, 0);
  EXPECT_EQ(dst.GetPixel(0, 0).value, 1);
  ImgConvolUniform(&flat, &dst, 0, 0);
  EXPECT_EQ(testsupport::Bytes(dst), testsupport::Bytes(flat));
  // Refusals leave the destination alone.
  const auto otherBefore = testsupport::Snapshot(other), dstBefore = testsupport::Snapshot(dst);
  ImgLocalDeviation(&flat, &other, 1, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(EGetErrorTrace(), "ImgLocalDeviation" + suffix);
  ImgLocalDeviation(&flat, &dst, 1, -1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  ImgConvolGaussian(&flat, &other, 2, 2);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(EGetErrorTrace(), "ImgConvolGaussian" + suffix);
  mirel::testing::FailFilterAllocations(1);
  ImgConvolUniform(&flat, &dst, 4, 4);
  mirel::testing::FailFilterAllocations(0);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(testsupport::Snapshot(other), otherBefore);
  EXPECT_EQ(testsupport::Snapshot(dst), dstBefore);
}

TEST(Smoothing, RoutingWorkedNumbersAndRefusals) {
  RoutingAndRefusals<EBW8>(255, 254, 251, "");
  EImage<EBW8> checker(3, 3), dev(3, 3);
  for (int i = 0; i < 9; ++i) checker.SetPixel(EBW8(i % 2 ? 255 : 0), i % 3, i / 3);
  ImgLocalDeviation(&checker, &dev, 1, 1);
  EXPECT_NEAR(dev.GetPixel(1, 1).value, 127, 3);
}

// ---------------------------------------------------------------- 16 bits

// The three small windows of the uniform filter: the 3-pixel means
// ((sum * 85) >> 8) and the 3x3 mean ((sum * 14) >> 7).
model::Grey16 SmallUniform(model::Grey16 s, bool horizontal, bool vertical) {
  model::Grey16 d = s;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      int sum = 0;
      for (int j = -vertical; j <= static_cast<int>(vertical); ++j)
        for (int i = -horizontal; i <= static_cast<int>(horizontal); ++i) sum += s.edge(x + i, y + j);
      d.at(x, y) = static_cast<uint16_t>(horizontal && vertical ? (sum * 14) >> 7 : (sum * 85) >> 8);
    }
  return d;
}

TEST(Smoothing16, MatchTheModelsOnRandomRoisOnEveryPath) {
  Rng rng(33);
  const unsigned limits[] = {65536, 256, 2000};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 120; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 9);
      const unsigned hx = iter % 17 == 0 ? 1000u : rng() % 6, hy = iter % 13 == 0 ? UINT_MAX : rng() % 5;
      const unsigned ry = hy == UINT_MAX ? hx : hy;
      const unsigned gx = std::min(hx, 4u), gy = hy == UINT_MAX ? hy : std::min(hy, 4u);
      const int op = iter % 3;
      const bool inPlace = op == 1 && iter % 2 == 0;
      auto ref = [&](model::Grey16& s, model::Grey16& d) {
        if (op == 0 && hx <= 1 && ry <= 1) d = hx + ry == 0 ? s : SmallUniform(s, hx == 1, ry == 1);
        else if (op == 0) d = Uniform(s, static_cast<int>(std::min(hx, 1000u)), static_cast<int>(std::min(ry, 1000u)));
        else if (op == 1) d = Gaussian(s, gx, std::min(ry, 4u));
        else d = Deviation(s, std::min(hx, 4u), static_cast<long>(std::min(ry, 4u)));
      };
      auto run = [&](EROI<EBW16>* s, EROI<EBW16>* d) {
        if (op == 0) ImgLocalAverage(s, d, hx, hy);
        else if (op == 1) ImgConvolGaussian(s, s == d ? nullptr : d, gx, gy);
        else ImgLocalDeviation(s, d, std::min(hx, 4u), static_cast<int>(std::min(ry, 4u)));
      };
      if (op == 1 && hx == 0 && ry == 0) continue;  // writes nothing
      ASSERT_TRUE(model::MatchesOnRandomRois<EBW16>(rng, w, h, inPlace, ref, run, limits[iter % 3]))
          << "op " << op << " path " << path << " " << hx << "," << hy;
    }
  }
}

TEST(Smoothing16, RoutingWorkedNumbersAndRefusals) {
  // 25 * 65535 * 671088 wraps at 32 bits and leaves 254.
  RoutingAndRefusals<EBW16>(65535, 254, 64511, " (BW16)");
  EImage<EBW16> flat(10, 6), dst(10, 6);
  ImgCopy(EBW16(65535), &flat);
  ImgConvolUniform(&flat, &dst, 1, 0);
  EXPECT_EQ(dst.GetPixel(4, 3).value, 65279);  // (3 * 65535 * 85) >> 8
  ImgCopy(EBW16(100), &flat);
  ImgConvolUniform(&flat, &dst, 2, 2);
  EXPECT_EQ(dst.GetPixel(4, 3).value, 99);
}

// The colour filters against their definition: each component through the
// 8-bit filter in place on a plane (or plane to plane), on every path.
TEST(ColourFilters, EachComponentThroughTheGreyFilter) {
  using Colour = void (*)(EROI<EC24>*, EROI<EC24>*);
  using Grey8 = void (*)(EROI<EBW8>*, EROI<EBW8>*);
  const std::pair<Colour, Grey8> presets[] = {
      {ImgConvolSobel, ImgConvolSobel},       {ImgConvolLaplacianX, ImgConvolLaplacianX},
      {ImgConvolHighpass2, ImgConvolHighpass2}, {ImgConvolLowpass1, ImgConvolLowpass1},
      {ImgConvolPrewittY, ImgConvolPrewittY}, {ImgConvolGradient, ImgConvolGradient}};
  Rng rng(8);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 24; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 50), h = 1 + static_cast<int>(rng() % 6);
      EImage<EC24> si, di;
      EROI<EC24> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      EImage<EBW8> plane(w, h), out(w, h);
      std::vector<std::vector<unsigned char>> want(3);
      const int which = iter % 9;
      for (unsigned c = 0; c < 3; ++c) {
        ClrGetComponent(&s, &plane, c, nullptr);
        if (which < 6) presets[which].second(&plane, nullptr);
        else if (which == 6) ImgConvolGaussian(&plane, nullptr, 2, 1);
        else if (which == 7) ImgConvolUniform(&plane, &out, 2, 3), ImgCopy(&out, &plane);
        else ImgConvolGaussian(&plane, nullptr, 0, 1);
        want[c] = testsupport::Bytes(plane);
      }
      const bool inPlace = iter % 2 == 1;
      EROI<EC24>* target = inPlace ? &s : &d;
      if (which < 6) presets[which].first(&s, inPlace ? nullptr : &d);
      else if (which == 6) ImgConvolGaussian(&s, inPlace ? nullptr : &d, 2, 1);
      else if (which == 7) ImgConvolUniform(&s, inPlace ? nullptr : &d, 2, 3);
      else ImgConvolGaussian(&s, inPlace ? nullptr : &d, 0, 1);
      ASSERT_EQ(EGetError(), E_OK);
      for (unsigned c = 0; c < 3; ++c) {
        ClrGetComponent(target, &plane, c, nullptr);
        ASSERT_EQ(testsupport::Bytes(plane), want[c]) << "filter " << which << " path " << path << " " << w << "x" << h;
      }
    }
  }
}

TEST(ColourFilters, ShapeTwoRefusesInPlaceAndAZeroGainKernelGivesZeros) {
  EImage<EC24> src(12, 5), dst(12, 5), small(11, 5);
  ImgCopy(EC24(10, 200, 30), &src);
  EKernel k(KERNEL_HIGHPASS_1);
  k.SetGain(0);
  ImgConvolKernel(&src, &dst, &k);
  ASSERT_EQ(EGetError(), E_OK);
  for (unsigned char b : testsupport::Bytes(dst)) ASSERT_EQ(b, 0);
  const auto before = testsupport::Snapshot(src);
  ImgConvolRoberts(&src, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_SAME_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolRoberts ( C24)");
  ImgConvolSymmetricKernel(&src, &src, &k);
  EXPECT_EQ(EGetError(), E_ERROR_SAME_IMAGE);
  ImgConvolSobelX(&src, &small);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolSobelX ( C24)");
  EXPECT_EQ(testsupport::Snapshot(src), before);
  // A flat channel stays flat under a low-pass filter (up to its scale).
  ImgConvolLowpass3(&src, nullptr);
  const EC24 p = src.GetPixel(0, 0);
  EXPECT_EQ(p.c[0] * 1000000 + p.c[1] * 1000 + p.c[2], 10 * 1000000 + 200 * 1000 + 30);
}

}  // namespace
