// Fixed thresholds: every path against a per-pixel model on random ROIs,
// the automatic modes, the worked cases and the checks.
#include <cstdint>
#include <string>
#include <vector>

#include "point_support.h"

namespace {

using pointtest::Bytes;
using pointtest::RoiPair;
using testsupport::Rng;

int RandomWidth(Rng& rng) {
  const unsigned r = rng() % 3;
  return r == 0 ? 1 + rng() % 20 : r == 1 ? 1 + rng() % 300 : 60 + rng() % 140;
}

// Random thresholds and levels; `range` is the number of grey levels. The
// 8-bit double threshold also takes thresholds past the top level.
template <class T>
void SingleAndDoubleMatchModel(uint32_t seed, int iters, unsigned int range) {
  using V = decltype(T::value);
  Rng rng(seed);
  auto threshold = [&] {
    const unsigned r = rng() % 6;
    return r == 0 ? 0 : r == 1 ? range - 1 : rng() % range;
  };
  for (int iter = 0; iter < iters; ++iter) {
    RoiPair<T, T> p(RandomWidth(rng), 1 + rng() % 5, rng);
    EROI<T>* src = iter % 4 == 0 ? &p.dst : &p.src;  // every fourth call in place
    const unsigned int t = threshold();
    const V low = static_cast<V>(rng()), high = rng() % 4 == 0 ? low : static_cast<V>(rng());
    p.ExpectOnEveryPath([&] { ImgThreshold(src, &p.dst, t, low, high, 0.f); },
                        [&](int x, int y) { return T(src->GetImagePtr(x, y)->value >= t ? high : low); },
                        "single " + std::to_string(iter));
    unsigned int lt = threshold(), ht = threshold();
    if (range == 256 && iter % 7 == 0) lt = 256 + rng() % 1000;
    if (range == 256 && iter % 11 == 0) ht = 256 + rng() % 1000;
    const V lo = static_cast<V>(rng()), mid = static_cast<V>(rng()), hi = static_cast<V>(rng());
    p.ExpectOnEveryPath([&] { ImgDoubleThreshold(src, &p.dst, lt, ht, lo, mid, hi); },
                        [&](int x, int y) {
                          const unsigned int v = src->GetImagePtr(x, y)->value;
                          return T(v > ht ? hi : v >= lt ? mid : lo);
                        },
                        "double " + std::to_string(iter));
  }
}

TEST(Threshold, SingleAndDoubleMatchModelOnEveryPath) { SingleAndDoubleMatchModel<EBW8>(1, 150, 256); }
TEST(Threshold16, SingleAndDoubleMatchModelOnEveryPath) { SingleAndDoubleMatchModel<EBW16>(12, 40, 65536); }

// The vector loops end each row with a shorter block or a masked one: every
// width from 1 across several 64-pixel blocks, at random ROI origins.
TEST(Threshold, EveryWidthOnEveryPath) {
  Rng rng(5);
  for (int width = 1; width <= 140; ++width) {
    RoiPair<EBW8, EBW8> p(width, 2, rng);
    const unsigned int t = rng() % 256;
    p.ExpectOnEveryPath([&] { ImgThreshold(&p.src, &p.dst, t, 3, 250, 0.f); },
                        [&](int x, int y) { return EBW8(p.src.GetPixel(x, y).value >= t ? 250 : 3); },
                        "width " + std::to_string(width));
  }
}

TEST(Threshold, Worked) {
  EImage<EBW8> src(32, 1), dst(32, 1);
  for (int x = 0; x < 32; ++x) src.GetImagePtr(x, 0)->value = static_cast<unsigned char>(x * 8);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    // Relative 1.0 selects 256: every pixel is below.
    ImgThreshold(&src, &dst, IMG_THRESHOLD_RELATIVE, 3, 200, 1.0f);
    EXPECT_EQ(testsupport::Bytes(dst), Bytes(32, 3));
    // Both thresholds belong to the middle level.
    ImgDoubleThreshold(&src, &dst, 80, 160, 0, 128, 255);
    EXPECT_EQ(dst.GetImagePtr(10, 0)->value, 128);  // 80
    EXPECT_EQ(dst.GetImagePtr(20, 0)->value, 128);  // 160
    EXPECT_EQ(dst.GetImagePtr(9, 0)->value, 0);     // 72
    EXPECT_EQ(dst.GetImagePtr(21, 0)->value, 255);  // 168
  }
}

TEST(Threshold, ModesUseTheSelectedThreshold) {
  Rng rng(8);
  const unsigned int modes[] = {IMG_THRESHOLD_MIN_SQUARED_DISTANCE, IMG_THRESHOLD_MIN_DISTANCE, IMG_THRESHOLD_ISODATA,
                                IMG_THRESHOLD_MAX_ENTROPY, IMG_THRESHOLD_MIN_RESIDUE, IMG_THRESHOLD_RELATIVE};
  for (int iter = 0; iter < 12; ++iter) {
    RoiPair<EBW8, EBW8> p(RandomWidth(rng), 1 + rng() % 9, rng);
    EBWHistogramVector h;
    ImgHistogram(&p.src, &h);
    for (unsigned int mode : modes) {
      unsigned int t = mode;
      float below = 0, above = 0;
      ImgHistogramThreshold(&h, t, below, above, 0.3f, 0, 255);
      p.ExpectOnEveryPath([&] { EXPECT_EQ(ImgThreshold(&p.src, &p.dst, mode, 0, 255, 0.3f), 0); },
                          [&](int x, int y) { return EBW8(p.src.GetPixel(x, y).value >= t ? 255 : 0); },  // 256: none
                          "mode " + std::to_string(mode));
    }
  }
}

TEST(Threshold, ModeCountsOnlyTheRunMask) {
  // Left half 40, right half 200, one middle column 90. With a run mask on
  // the left half and the middle column only, the minimum-residue threshold
  // falls between 40 and 90 (41), so 90 and 200 both become white; without
  // the mask it falls at 91 and the middle column stays black.
  EImage<EBW8> src(21, 3), dst(21, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 21; ++x) src.GetImagePtr(x, y)->value = static_cast<unsigned char>(x < 10 ? 40 : x == 10 ? 90 : 200);
  ImgThreshold(&src, &dst, IMG_THRESHOLD_MIN_RESIDUE, 0, 255, 0.f);
  EXPECT_EQ(dst.GetImagePtr(10, 0)->value, 0);
  EROI<EBW8> roi(&src, 0, 0, 21, 3);
  std::vector<ERun> runs;
  for (int y = 0; y < 3; ++y) {
    const std::intptr_t row = static_cast<std::intptr_t>(y) * roi.GetRowPitch();
    runs.push_back(ERun{row, row + 11, 0, y});
  }
  roi.SetRuns(runs.data(), static_cast<int>(runs.size()), 1);
  EXPECT_EQ(ImgThreshold(&roi, &dst, IMG_THRESHOLD_MIN_RESIDUE, 0, 255, 0.f), 0);
  for (int x = 0; x < 21; ++x) EXPECT_EQ(dst.GetImagePtr(x, 2)->value, x < 10 ? 0 : 255) << x;
}

TEST(Threshold16, ModeSelection) {
  EImage<EBW16> src(30, 3), dst(30, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 30; ++x) src.GetImagePtr(x, y)->value = static_cast<unsigned short>(x < 10 ? 2000 : 40000);
  ImgThreshold(&src, &dst, IMG_THRESHOLD_MIN_RESIDUE, 1, 9, 0.f);
  EXPECT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 30; ++x) EXPECT_EQ(dst.GetImagePtr(x, 2)->value, x < 10 ? 1 : 9);
}

bool InBox(const EC24& p, const EC24& mn, const EC24& mx) {
  for (int k = 0; k < 3; ++k)
    if (p.c[k] < mn.c[k] || p.c[k] > mx.c[k]) return false;
  return true;
}

TEST(ThresholdC24, BoxAndLookupMatchModel) {
  Rng rng(14);
  for (int iter = 0; iter < 120; ++iter) {
    RoiPair<EC24, EBW8> p(RandomWidth(rng), 1 + rng() % 4, rng);
    EC24 mn, mx;
    for (int k = 0; k < 3; ++k) {
      // Mostly wide boxes, so that both outputs occur; sometimes inverted.
      const unsigned a = rng() % 128, b = 128 + rng() % 128;
      const bool inverted = rng() % 10 == 0;
      mn.c[k] = static_cast<unsigned char>(inverted ? b : a);
      mx.c[k] = static_cast<unsigned char>(inverted ? a : b);
    }
    p.ExpectOnEveryPath([&] { ImgThreshold(&p.src, &p.dst, mn, mx); },
                        [&](int x, int y) { return EBW8(InBox(*p.src.GetImagePtr(x, y), mn, mx) ? 255 : 0); },
                        "box " + std::to_string(iter));
    if (iter % 6) continue;
    EColorLookup lookup;
    unsigned char tables[3][256];
    for (int k = 0; k < 3; ++k) {
      for (auto& v : tables[k]) v = static_cast<unsigned char>(rng());
      lookup.SetComponentTable(k, tables[k]);
    }
    const EBW8 outside = static_cast<unsigned char>(rng() % 100), inside = 200;
    for (EColorLookup* l : {&lookup, static_cast<EColorLookup*>(nullptr)})
      p.ExpectOnEveryPath([&] { ImgThreshold(&p.src, &p.dst, mn, mx, l, outside, inside); },
                          [&](int x, int y) {
                            EC24 s = *p.src.GetImagePtr(x, y);
                            if (l) s = EC24(tables[0][s.c[0]], tables[1][s.c[1]], tables[2][s.c[2]]);
                            return InBox(s, mn, mx) ? inside : outside;
                          },
                          "lookup " + std::to_string(iter));
  }
}

// Every form's checks: the code, the label and an untouched destination.
TEST(Threshold, ChecksLeaveTheDestinationAlone) {
  Rng rng(10);
  EImage<EBW8> src(20, 4), dst(20, 4), small(19, 4);
  EImage<EBW16> src16(30, 3), dst16(30, 3), small16(3, 3);
  EImage<EC24> src24(20, 4);
  EROI<EBW8> void8;
  EROI<EC24> void24;
  testsupport::FillRandom(dst, rng);
  testsupport::FillRandom(dst16, rng);
  const pointtest::Refusals expect(dst, dst16, small, small16);
  const EC24 k0(0, 0, 0), k1(255, 255, 255);
  expect(E_ERROR_VOID_IMAGE, "ImgThreshold", [&] { ImgThreshold(&void8, &dst, 5, 0, 255, 0.f); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgThreshold(&src, &void8, 5, 0, 255, 0.f); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgThreshold(nullptr, &dst, 5, 0, 255, 0.f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgThreshold", [&] { ImgThreshold(&src, &small, 5, 0, 255, 0.f); });
  // 300 is no mode: the selection refuses it and names itself first.
  expect(E_ERROR_BAD_RANGE, "ImgHistogramThreshold <- ImgThreshold", [&] { ImgThreshold(&src, &dst, 300, 0, 255, 0.f); });
  expect(E_ERROR_BAD_ARGUMENT_3, nullptr, [&] { ImgThreshold(&src, &dst, IMG_THRESHOLD_RELATIVE, 0, 255, 2.0f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgDoubleThreshold ( BW8 to BW8)", [&] { ImgDoubleThreshold(&src, &small, 1, 2, 0, 1, 2); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgDoubleThreshold(&src, nullptr, 1, 2, 0, 1, 2); });
  expect(E_ERROR_BAD_RANGE, "ImgHistogramThreshold (BW16) <- ImgThreshold (BW16)",
         [&] { ImgThreshold(&src16, &dst16, 70000, 1, 9, 0.f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgThreshold (BW16)", [&] { ImgThreshold(&src16, &small16, 7, 1, 9, 0.f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgDoubleThreshold ( BW16 to BW16)",
         [&] { ImgDoubleThreshold(&src16, &small16, 7, 9, 1, 2, 3); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgDoubleThreshold(nullptr, &dst16, 7, 9, 1, 2, 3); });
  expect(E_ERROR_VOID_IMAGE, "ImgThreshold ( C24 to BW8)", [&] { ImgThreshold(&void24, &dst, k0, k1); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgThreshold ( C24 to BW8)", [&] { ImgThreshold(&src24, &small, k0, k1, nullptr, 0, 255); });
  EXPECT_EQ(ImgThreshold(&src, &dst, 5, 0, 255, 0.f), 0);
  EXPECT_EQ(EGetError(), E_OK);
}

}  // namespace
