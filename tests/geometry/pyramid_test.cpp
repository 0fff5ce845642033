// Halving and pyramids: a pixel-by-pixel model of the 2x2 reduction on
// random ROIs of odd and even sizes on every path, the worked numbers, the
// level sizes and ownership rules, and the refusals.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

// A plane of pixel values (bytes or 32-bit gradient pairs).
struct Plane {
  int w = 0, h = 0;
  std::vector<uint32_t> p;
  uint32_t at(int x, int y) const { return p[static_cast<size_t>(y) * w + x]; }
};

template <class T>
Plane Read(const EROI<T>& roi) {
  Plane out{roi.GetWidth(), roi.GetHeight(), {}};
  for (int y = 0; y < out.h; ++y)
    for (int x = 0; x < out.w; ++x) out.p.push_back(static_cast<uint32_t>(roi.GetImagePtr(x, y)->value));
  return out;
}

// The documented reduction: 2x2 blocks, then the odd column and row by
// pairs and the corner copied when dropOdd is 0.
using Reduce = std::function<uint32_t(std::vector<uint32_t>)>;
Plane Halve(const Plane& s, bool dropOdd, const Reduce& reduce) {
  const int e = dropOdd ? 0 : 1;
  Plane d{(s.w + e) >> 1, (s.h + e) >> 1, {}};
  for (int j = 0; j < d.h; ++j)
    for (int i = 0; i < d.w; ++i) {
      std::vector<uint32_t> v;
      for (int y = 2 * j; y < std::min(2 * j + 2, s.h); ++y)
        for (int x = 2 * i; x < std::min(2 * i + 2, s.w); ++x) v.push_back(s.at(x, y));
      d.p.push_back(v.size() == 1 ? v[0] : reduce(v));
    }
  return d;
}

uint32_t Mean(std::vector<uint32_t> v) {
  uint32_t s = 0;
  for (uint32_t x : v) s += x;
  return s >> (v.size() == 4 ? 2 : 1);
}
uint32_t Least(std::vector<uint32_t> v) { return *std::min_element(v.begin(), v.end()); }
uint32_t Most(std::vector<uint32_t> v) { return *std::max_element(v.begin(), v.end()); }
uint32_t GradientMean(std::vector<uint32_t> v) {
  int lo = 0, hi = 0;
  for (uint32_t x : v) lo += static_cast<int16_t>(x & 0xFFFF), hi += static_cast<int16_t>(x >> 16);
  const int s = v.size() == 4 ? 2 : 1;
  return static_cast<uint16_t>(lo >> s) | static_cast<uint32_t>(static_cast<uint16_t>(hi >> s)) << 16;
}
const Reduce kGrey[3] = {Mean, Least, Most};

// Opens the protected steps to the tests.
struct OpenPyramid : EPyramid {
  using EPyramid::Halve;
};

TEST(Halve, EveryModeAndFormMatchesTheModelOnEveryPath) {
  Rng rng(15);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 300 : 70)), h = 1 + static_cast<int>(rng() % 9);
      const int drop = static_cast<int>(rng() % 2), mode = iter % 3;
      EImage<EBW8> si, di;
      EROI<EBW8> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::FillRandom(si, rng);
      const Plane want = Halve(Read(s), drop != 0, kGrey[mode]);
      // A ROI destination of the right size, at a random place.
      testsupport::PlaceRandom(di, d, want.w, want.h, rng);
      OpenPyramid pyramid;
      pyramid.SetReductionMode(static_cast<IMG_PYRAMIDAL_REDUCTION_MODE>(mode));
      pyramid.Halve(&s, &d, drop);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(Read(d).p, want.p) << "mode " << mode << " path " << path << " " << w << "x" << h;
      EImage<EBW8> whole;
      ImgHalve(&s, &whole, drop);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(Read(whole).p, Halve(Read(s), drop != 0, Mean).p) << w << "x" << h;
      // Gradient pairs.
      EImage<EBW32> gi, go;
      EROI<EBW32> g;
      testsupport::PlaceRandom(gi, g, w, h, rng);
      testsupport::FillRandom(gi, rng);
      pyramid.Halve(&g, &go, drop);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(Read(go).p, Halve(Read(g), drop != 0, GradientMean).p) << "path " << path << " " << w << "x" << h;
    }
  }
}

TEST(Halve, WorkedNumbers) {
  EImage<EBW8> s(3, 3), d;
  const unsigned char v[9] = {1, 2, 9, 3, 3, 7, 5, 6, 4};
  for (int i = 0; i < 9; ++i) s.SetPixel(EBW8(v[i]), i % 3, i / 3);
  ImgHalve(&s, &d, 0);  // 2x2 sum 9 >> 2; column pair (9 + 7) >> 1; row pair 11 >> 1; corner
  EXPECT_EQ(Read(d).p, (std::vector<uint32_t>{2, 8, 5, 4}));
  ImgHalve(&s, &d, 1);
  EXPECT_EQ(Read(d).p, (std::vector<uint32_t>{2}));
  OpenPyramid p;
  p.SetReductionMode(IMG_PYRAMIDAL_REDUCTION_MINIMUM);
  p.Halve(&s, &d, 0);
  EXPECT_EQ(Read(d).p, (std::vector<uint32_t>{1, 7, 5, 4}));
  p.SetReductionMode(IMG_PYRAMIDAL_REDUCTION_MAXIMUM);
  p.Halve(&s, &d, 0);
  EXPECT_EQ(Read(d).p, (std::vector<uint32_t>{3, 9, 6, 4}));
  // Components -1 and -2 in two pixels reduce apart: (-1 + -1) >> 1 and
  // (-2 + -2) >> 1; and -1, -1, -1, 0 give -3 >> 2 = -1, towards minus infinity.
  EImage<EBW32> g(2, 1), gd;
  g.SetPixel(EBW32(0xFFFEFFFFu), 0, 0);
  g.SetPixel(EBW32(0xFFFEFFFFu), 1, 0);
  p.Halve(&g, &gd, 0);
  EXPECT_EQ(gd.GetPixel(0, 0).value, 0xFFFEFFFFu);
  EImage<EBW32> g4(2, 2);
  ImgCopy(EBW32(0x0000FFFFu), &g4);
  g4.SetPixel(EBW32(0x00010000u), 1, 1);  // lo 0, hi 1
  p.Halve(&g4, &gd, 1);
  EXPECT_EQ(gd.GetPixel(0, 0).value, 0x0000FFFFu);  // lo (-3) >> 2 = -1, hi 1 >> 2 = 0
}

TEST(Pyramid, LevelsOfEachContentAndTheirSizes) {
  EPyramid p;
  EXPECT_EQ(p.GetDropOdd(), 1);
  EXPECT_EQ(p.GetReductionMode(), IMG_PYRAMIDAL_REDUCTION_AVERAGE);
  EXPECT_EQ(p.GetNumLevels(), 0u);
  EXPECT_EQ(static_cast<int>(p.GetImageType()), -1);
  Rng rng(4);
  EImage<EBW8> src(5, 3);
  testsupport::FillRandom(src, rng);
  p.SetNumLevels(3, E_IMAGE_TYPE_BW8);
  p.Build(&src);  // 5x3, 2x1, 1x0
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(p.GetImage(1)->GetWidth(), 2);
  EXPECT_EQ(p.GetImage(2)->GetWidth() * 10 + p.GetImage(2)->GetHeight(), 10);
  p.SetDropOdd(0);
  p.SetNumLevels(4, E_IMAGE_TYPE_BW8);
  p.Build(&src);  // 3x2, 2x1, 1x1
  EXPECT_EQ(p.GetImage(3)->GetWidth() + p.GetImage(3)->GetHeight(), 2);
  // A level that comes out empty fails the next step, and the build goes on.
  p.SetDropOdd(1);
  p.SetNumLevels(5, E_IMAGE_TYPE_BW8);
  p.Build(&src);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  // Build(source) calls Build(), so both frames add the label.
  EXPECT_STREQ(EGetErrorTrace(), "EBW8Pyramid::Halve ( BW8) <- EBW8Pyramid::Build <- EBW8Pyramid::Build");
  p.Build();
  EXPECT_STREQ(EGetErrorTrace(), "EBW8Pyramid::Halve ( BW8) <- EBW8Pyramid::Build");
  // Five levels of grey and of gradients in every mode against chained
  // models, on every path.
  for (int round = 0; round < 4 * static_cast<int>(testsupport::AllPaths().size()); ++round) {
    testsupport::PathGuard guard(testsupport::AllPaths()[static_cast<size_t>(round / 4)]);
    const int kind = round % 4;
    const int w = 40 + static_cast<int>(rng() % 160), h = 33 + static_cast<int>(rng() % 20);
    p.SetDropOdd(static_cast<int>(rng() % 2));
    p.SetNumLevels(5, kind == 3 ? E_IMAGE_TYPE_BW32_ALIAS : E_IMAGE_TYPE_BW8);
    if (kind < 3) {
      p.SetReductionMode(static_cast<IMG_PYRAMIDAL_REDUCTION_MODE>(kind));
      EImage<EBW8> si;
      EROI<EBW8> s;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::FillRandom(si, rng);
      p.Build(&s);
      ASSERT_EQ(Read(*static_cast<EImage<EBW8>*>(p.GetImage(0))).p, Read(s).p);
    } else {
      EImage<EBW32>* base = static_cast<EImage<EBW32>*>(p.GetImage(0));
      base->SetSize(w, h);
      testsupport::FillRandom(*base, rng);
      p.Build();
    }
    ASSERT_EQ(EGetError(), E_OK);
    for (unsigned l = 1; l < 5; ++l) {
      const Reduce& r = kind == 3 ? Reduce(GradientMean) : kGrey[kind];
      const Plane want = kind == 3 ? Halve(Read(*static_cast<EImage<EBW32>*>(p.GetImage(l - 1))), p.GetDropOdd() != 0, r)
                                   : Halve(Read(*static_cast<EImage<EBW8>*>(p.GetImage(l - 1))), p.GetDropOdd() != 0, r);
      const Plane got = kind == 3 ? Read(*static_cast<EImage<EBW32>*>(p.GetImage(l)))
                                  : Read(*static_cast<EImage<EBW8>*>(p.GetImage(l)));
      ASSERT_EQ(got.w * 1000 + got.h, want.w * 1000 + want.h);
      ASSERT_EQ(got.p, want.p) << "mode " << kind << " level " << l;
    }
  }
}

TEST(Pyramid, OwnershipTypesAndRefusals) {
  EPyramid p;
  p.SetNumLevels(2, E_IMAGE_TYPE_C24);
  EGenericROI* level = p.GetImage(1);
  EXPECT_EQ(level->GetPixelBytes(), 3);
  level->SetSize(4, 4);
  p.SetNumLevels(2, E_IMAGE_TYPE_C24);  // same count and type: kept
  EXPECT_EQ(p.GetImage(1), level);
  EXPECT_EQ(level->GetWidth(), 4);
  p.SetNumLevels(3, static_cast<E_IMAGE_TYPES>(5));
  EXPECT_EQ(EGetError(), E_ERROR_BAD_PIXEL_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "EPyramid::SetNumLevels");
  EXPECT_EQ(p.GetNumLevels(), 2u);
  EXPECT_EQ(p.GetImage(1), level);
  p.Build();
  EXPECT_EQ(EGetError(), E_ERROR_BAD_PIXEL_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "EBW8Pyramid::Build");
  EXPECT_EQ(p.GetImage(2), nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "EPyramid::GetImage");
  p.SetNumLevels(0, static_cast<E_IMAGE_TYPES>(99));  // no levels: any type
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(static_cast<int>(p.GetImageType()), 99);
  p.SetReductionMode(static_cast<IMG_PYRAMIDAL_REDUCTION_MODE>(3));
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "");
  EXPECT_EQ(p.GetReductionMode(), IMG_PYRAMIDAL_REDUCTION_AVERAGE);
  EImage<EBW8> src(8, 8), none;
  p.SetNumLevels(3, E_IMAGE_TYPE_BW32_ALIAS);
  p.Build(&src);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_PYRAMID_TYPE);
  p.Build();  // level 0 void
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "EBW8Pyramid::Build");
  p.SetNumLevels(3, E_IMAGE_TYPE_BW8);
  p.Build(&none);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  // Level 0 as its own source, and a ROI inside it.
  Rng rng(2);
  testsupport::FillRandom(src, rng);
  p.Build(&src);
  EImage<EBW8>* base = static_cast<EImage<EBW8>*>(p.GetImage(0));
  EROI<EBW8> inner(base, 2, 2, 4, 4);
  const Plane part = Read(inner);
  p.Build(&inner);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Read(*base).p, part.p);
  p.Build(base);
  EXPECT_EQ(Read(*base).p, part.p);
}

TEST(Halve, RefusalsLeaveTheDestinationUntouched) {
  EImage<EBW8> src(9, 7), none, parent(20, 20), dst(3, 3);
  ImgCopy(EBW8(7), &dst);
  const auto before = testsupport::Snapshot(dst);
  ImgHalve(&none, &dst, 1);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHalve ( BW8)");
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  EROI<EBW8> half(&src, 0, 0, 4, 3);
  ImgHalve(&src, &half, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SAME_IMAGE);
  // A ROI destination that cannot take the size in its parent.
  EROI<EBW8> corner(&parent, 18, 18, 2, 2);
  ImgCopy(EBW8(3), &parent);
  const auto parentBefore = testsupport::Snapshot(parent);
  ImgHalve(&src, &corner, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(corner.GetWidth(), 2);
  EXPECT_EQ(testsupport::Snapshot(parent), parentBefore);
  EROI<EBW8> fits(&parent, 1, 1, 2, 2);
  ImgHalve(&src, &fits, 0);  // resized in place to 5x4
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(fits.GetWidth() * 10 + fits.GetHeight(), 54);
}

}  // namespace
