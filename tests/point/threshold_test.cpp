// Fixed thresholds: every path against a per-pixel model on random ROIs,
// the automatic modes, the worked cases and the checks.
#include <cstdint>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::AllPaths;
using testsupport::PathGuard;
using testsupport::Rng;

// A random source ROI and a destination ROI of the same size in another
// image, both at random origins; the destination image is random too.
template <class S, class D>
struct Pair {
  EImage<S> simg;
  EImage<D> dimg;
  EROI<S> src;
  EROI<D> dst;
  Pair(int w, int h, Rng& rng) {
    testsupport::PlaceRandom(simg, src, w, h, rng);
    testsupport::PlaceRandom(dimg, dst, w, h, rng, 70);
    testsupport::FillRandom(simg, rng);
    testsupport::FillRandom(dimg, rng);
  }
};

// The whole destination buffer as it must be after writing f(x, y) over the
// ROI and nothing elsewhere.
template <class D, class F>
std::vector<unsigned char> Expected(const EImage<D>& image, const EROI<D>& roi, F f) {
  std::vector<unsigned char> out = testsupport::Snapshot(image);
  const unsigned char* base = reinterpret_cast<const unsigned char*>(image.GetImagePtr(0, 0));
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) {
      const D v = f(x, y);
      const size_t at = reinterpret_cast<const unsigned char*>(roi.GetImagePtr(x, y)) - base;
      std::memcpy(&out[at], &v, sizeof(D));
    }
  return out;
}

int RandomWidth(Rng& rng) {
  switch (rng() % 3) {
    case 0:
      return 1 + rng() % 20;
    case 1:
      return 1 + rng() % 300;
    default:
      return 60 + rng() % 140;
  }
}

unsigned int RandomThreshold(Rng& rng) {
  switch (rng() % 6) {
    case 0:
      return 0;
    case 1:
      return 255;
    default:
      return rng() % 256;
  }
}

TEST(Threshold, EveryPathMatchesModel) {
  Rng rng(1);
  for (int iter = 0; iter < 150; ++iter) {
    Pair<EBW8, EBW8> p(RandomWidth(rng), 1 + rng() % 5, rng);
    const unsigned int t = RandomThreshold(rng);
    const unsigned char low = rng(), high = rng() % 4 == 0 ? low : static_cast<unsigned char>(rng());
    const auto want = Expected(p.dimg, p.dst, [&](int x, int y) {
      return EBW8(p.src.GetImagePtr(x, y)->value >= t ? high : low);
    });
    for (int path : AllPaths()) {
      const std::vector<unsigned char> before = testsupport::Snapshot(p.dimg);
      {
        PathGuard guard(path);
        EXPECT_EQ(ImgThreshold(&p.src, &p.dst, t, low, high, 0.f), 0);
      }
      ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << "iter " << iter << " path " << path << " t " << t;
      std::memcpy(p.dimg.GetImagePtr(0, 0), before.data(), before.size());
    }
  }
}

TEST(Threshold, DoubleEveryPathMatchesModel) {
  Rng rng(2);
  for (int iter = 0; iter < 150; ++iter) {
    Pair<EBW8, EBW8> p(RandomWidth(rng), 1 + rng() % 5, rng);
    unsigned int lt = RandomThreshold(rng), ht = RandomThreshold(rng);
    if (iter % 7 == 0) lt = 256 + rng() % 1000;
    if (iter % 11 == 0) ht = 256 + rng() % 1000;
    const unsigned char lo = rng(), mid = rng(), hi = rng();
    const auto want = Expected(p.dimg, p.dst, [&](int x, int y) {
      const unsigned int v = p.src.GetImagePtr(x, y)->value;
      return EBW8(v > ht ? hi : v >= lt ? mid : lo);
    });
    for (int path : AllPaths()) {
      const std::vector<unsigned char> before = testsupport::Snapshot(p.dimg);
      {
        PathGuard guard(path);
        EXPECT_EQ(ImgDoubleThreshold(&p.src, &p.dst, lt, ht, lo, mid, hi), 0);
      }
      ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << "iter " << iter << " path " << path;
      std::memcpy(p.dimg.GetImagePtr(0, 0), before.data(), before.size());
    }
  }
}

TEST(Threshold, Worked) {
  EImage<EBW8> src(32, 2), dst(32, 2);
  for (int x = 0; x < 32; ++x) {
    src.GetImagePtr(x, 0)->value = static_cast<unsigned char>(x * 8);
    src.GetImagePtr(x, 1)->value = static_cast<unsigned char>(255 - x);
  }
  for (int path : AllPaths()) {
    PathGuard guard(path);
    ImgThreshold(&src, &dst, 0, 0, 255, 0.f);  // everything white
    for (int x = 0; x < 32; ++x) EXPECT_EQ(dst.GetImagePtr(x, 0)->value, 255);
    ImgThreshold(&src, &dst, 255, 0, 255, 0.f);  // only 255 itself
    for (int x = 0; x < 32; ++x) EXPECT_EQ(dst.GetImagePtr(x, 1)->value, x == 0 ? 255 : 0);
    ImgThreshold(&src, &dst, 100, 7, 7, 0.f);  // one level fills
    for (int x = 0; x < 32; ++x) EXPECT_EQ(dst.GetImagePtr(x, 0)->value, 7);
    // Relative 1.0 selects 256: every pixel is below.
    ImgThreshold(&src, &dst, IMG_THRESHOLD_RELATIVE, 3, 200, 1.0f);
    for (int x = 0; x < 32; ++x) EXPECT_EQ(dst.GetImagePtr(x, 1)->value, 3);
    // Both thresholds belong to the middle level.
    ImgDoubleThreshold(&src, &dst, 80, 160, 0, 128, 255);
    EXPECT_EQ(dst.GetImagePtr(10, 0)->value, 128);  // 80
    EXPECT_EQ(dst.GetImagePtr(20, 0)->value, 128);  // 160
    EXPECT_EQ(dst.GetImagePtr(9, 0)->value, 0);     // 72
    EXPECT_EQ(dst.GetImagePtr(21, 0)->value, 255);  // 168
    // Thresholds in reverse order: above 100 wins first, below 150 is low.
    ImgDoubleThreshold(&src, &dst, 150, 100, 1, 2, 3);
    EXPECT_EQ(dst.GetImagePtr(15, 0)->value, 3);  // 120
    EXPECT_EQ(dst.GetImagePtr(12, 0)->value, 1);  // 96
  }
}

TEST(Threshold, ShortAndLongRowsAgree) {
  // The same pixels give the same bytes on a 5-pixel row at every
  // alignment as inside a 32-pixel row.
  Rng rng(4);
  EImage<EBW8> src(40, 1), wide(40, 1);
  testsupport::FillRandom(src, rng);
  EROI<EBW8> all(&src, 0, 0, 32, 1), wideAll(&wide, 0, 0, 32, 1);
  ImgThreshold(&all, &wideAll, 101, 10, 240, 0.f);
  for (int start = 0; start + 5 <= 32; ++start) {
    EImage<EBW8> out(40, 1);
    EROI<EBW8> s(&src, start, 0, 5, 1), d(&out, (start * 7) % 30, 0, 5, 1);
    ImgThreshold(&s, &d, 101, 10, 240, 0.f);
    for (int x = 0; x < 5; ++x) EXPECT_EQ(d.GetImagePtr(x, 0)->value, wideAll.GetImagePtr(start + x, 0)->value);
  }
}

TEST(Threshold, InPlace) {
  Rng rng(6);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    EImage<EBW8> image(133, 7);
    testsupport::FillRandom(image, rng);
    EROI<EBW8> roi(&image, 3, 1, 121, 5);
    const std::vector<unsigned char> src = testsupport::Bytes(roi);
    ImgThreshold(&roi, &roi, 90, 1, 2, 0.f);
    const std::vector<unsigned char> out = testsupport::Bytes(roi);
    for (size_t i = 0; i < src.size(); ++i) ASSERT_EQ(out[i], src[i] >= 90 ? 2 : 1);
  }
}

TEST(Threshold, ModesUseTheSelectedThreshold) {
  Rng rng(8);
  const unsigned int modes[] = {IMG_THRESHOLD_MIN_SQUARED_DISTANCE, IMG_THRESHOLD_MIN_DISTANCE, IMG_THRESHOLD_ISODATA,
                                IMG_THRESHOLD_MAX_ENTROPY, IMG_THRESHOLD_MIN_RESIDUE, IMG_THRESHOLD_RELATIVE};
  for (int iter = 0; iter < 12; ++iter) {
    Pair<EBW8, EBW8> p(RandomWidth(rng), 1 + rng() % 9, rng);
    EBWHistogramVector h;
    ImgHistogram(&p.src, &h);
    for (unsigned int mode : modes) {
      unsigned int t = mode;
      float b = 0, a = 0;
      ImgHistogramThreshold(&h, t, b, a, 0.3f, 0, 255);
      EImage<EBW8> want(p.dst.GetWidth(), p.dst.GetHeight());
      ImgThreshold(&p.src, &want, t < 256 ? t : 256u, 0, 255, 0.f);
      if (t > 255)  // 256: all below
        for (int y = 0; y < want.GetHeight(); ++y)
          for (int x = 0; x < want.GetWidth(); ++x) want.GetImagePtr(x, y)->value = 0;
      EXPECT_EQ(ImgThreshold(&p.src, &p.dst, mode, 0, 255, 0.3f), 0);
      EXPECT_EQ(testsupport::Bytes(p.dst), testsupport::Bytes(want)) << mode;
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

TEST(Threshold, ChecksLeaveTheDestinationAlone) {
  Rng rng(10);
  EImage<EBW8> src(20, 4), dst(20, 4), small(19, 4);
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  const std::vector<unsigned char> before = testsupport::Snapshot(dst);
  EROI<EBW8> voidRoi;
  EXPECT_EQ(ImgThreshold(&voidRoi, &dst, 5, 0, 255, 0.f), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThreshold");
  EXPECT_EQ(ImgThreshold(&src, &voidRoi, 5, 0, 255, 0.f), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(ImgThreshold(nullptr, &dst, 5, 0, 255, 0.f), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(ImgThreshold(&src, &small, 5, 0, 255, 0.f), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  // 300 is no mode: the selection refuses it and names itself first.
  EXPECT_EQ(ImgThreshold(&src, &dst, 300, 0, 255, 0.f), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogramThreshold <- ImgThreshold");
  EXPECT_EQ(ImgThreshold(&src, &dst, IMG_THRESHOLD_RELATIVE, 0, 255, 2.0f), E_ERROR_BAD_ARGUMENT_3);
  EXPECT_EQ(ImgDoubleThreshold(&src, &small, 1, 2, 0, 1, 2), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgDoubleThreshold ( BW8 to BW8)");
  EXPECT_EQ(ImgDoubleThreshold(&src, nullptr, 1, 2, 0, 1, 2), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  EXPECT_EQ(ImgThreshold(&src, &dst, 5, 0, 255, 0.f), 0);
  EXPECT_EQ(EGetError(), E_OK);
}

// ---------------------------------------------------------------- 16 bits

TEST(Threshold16, MatchesModel) {
  Rng rng(12);
  for (int iter = 0; iter < 40; ++iter) {
    Pair<EBW16, EBW16> p(RandomWidth(rng), 1 + rng() % 4, rng);
    const unsigned int t = iter % 5 == 0 ? 0 : rng() % 65536, t2 = rng() % 65536;
    const unsigned short lo = rng(), mid = rng(), hi = rng();
    auto want = Expected(p.dimg, p.dst, [&](int x, int y) {
      return EBW16(p.src.GetImagePtr(x, y)->value >= t ? hi : lo);
    });
    ImgThreshold(&p.src, &p.dst, t, lo, hi, 0.f);
    EXPECT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << iter;
    want = Expected(p.dimg, p.dst, [&](int x, int y) {
      const unsigned int v = p.src.GetImagePtr(x, y)->value;
      return EBW16(v > t2 ? hi : v >= t ? mid : lo);
    });
    ImgDoubleThreshold(&p.src, &p.dst, t, t2, lo, mid, hi);
    EXPECT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << iter;
  }
}

TEST(Threshold16, ModeAndChecks) {
  EImage<EBW16> src(30, 3), dst(30, 3), small(3, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 30; ++x) src.GetImagePtr(x, y)->value = static_cast<unsigned short>(x < 10 ? 2000 : 40000);
  ImgThreshold(&src, &dst, IMG_THRESHOLD_MIN_RESIDUE, 1, 9, 0.f);
  EXPECT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 30; ++x) EXPECT_EQ(dst.GetImagePtr(x, 2)->value, x < 10 ? 1 : 9);
  const std::vector<unsigned char> before = testsupport::Snapshot(dst);
  ImgThreshold(&src, &dst, 70000, 1, 9, 0.f);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogramThreshold (BW16) <- ImgThreshold (BW16)");
  ImgThreshold(&src, &small, 7, 1, 9, 0.f);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThreshold (BW16)");
  ImgDoubleThreshold(&src, &small, 7, 9, 1, 2, 3);
  EXPECT_STREQ(EGetErrorTrace(), "ImgDoubleThreshold ( BW16 to BW16)");
  ImgDoubleThreshold(nullptr, &dst, 7, 9, 1, 2, 3);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
}

// ---------------------------------------------------------------- colour box

bool In(const EC24& p, const EC24& mn, const EC24& mx) {
  for (int k = 0; k < 3; ++k)
    if (p.c[k] < mn.c[k] || p.c[k] > mx.c[k]) return false;
  return true;
}

EC24 RandomColor(Rng& rng) {
  return EC24(static_cast<unsigned char>(rng()), static_cast<unsigned char>(rng()), static_cast<unsigned char>(rng()));
}

TEST(ThresholdC24, BoxEveryPathMatchesModel) {
  Rng rng(14);
  for (int iter = 0; iter < 120; ++iter) {
    Pair<EC24, EBW8> p(RandomWidth(rng), 1 + rng() % 4, rng);
    EC24 mn, mx;
    for (int k = 0; k < 3; ++k) {
      // Mostly wide boxes, so that both outputs occur; sometimes inverted.
      const unsigned a = rng() % 128, b = 128 + rng() % 128;
      const bool inverted = rng() % 10 == 0;
      mn.c[k] = static_cast<unsigned char>(inverted ? b : a);
      mx.c[k] = static_cast<unsigned char>(inverted ? a : b);
    }
    const auto want = Expected(p.dimg, p.dst, [&](int x, int y) {
      return EBW8(In(*p.src.GetImagePtr(x, y), mn, mx) ? 255 : 0);
    });
    for (int path : AllPaths()) {
      const std::vector<unsigned char> before = testsupport::Snapshot(p.dimg);
      {
        PathGuard guard(path);
        ImgThreshold(&p.src, &p.dst, mn, mx);
        EXPECT_EQ(EGetError(), E_OK);
      }
      ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << "iter " << iter << " path " << path;
      std::memcpy(p.dimg.GetImagePtr(0, 0), before.data(), before.size());
    }
  }
}

TEST(ThresholdC24, LookupForm) {
  Rng rng(16);
  for (int iter = 0; iter < 20; ++iter) {
    Pair<EC24, EBW8> p(RandomWidth(rng), 1 + rng() % 4, rng);
    EColorLookup lookup;
    unsigned char tables[3][256];
    for (int k = 0; k < 3; ++k) {
      for (int v = 0; v < 256; ++v) tables[k][v] = static_cast<unsigned char>(rng());
      lookup.SetComponentTable(k, tables[k]);
    }
    const EC24 mn = RandomColor(rng), mx(200, 220, 240);
    const EBW8 outside = static_cast<unsigned char>(rng() % 100), inside = 200;
    auto want = Expected(p.dimg, p.dst, [&](int x, int y) {
      const EC24 s = *p.src.GetImagePtr(x, y);
      const EC24 m(tables[0][s.c[0]], tables[1][s.c[1]], tables[2][s.c[2]]);
      return In(m, mn, mx) ? inside : outside;
    });
    ImgThreshold(&p.src, &p.dst, mn, mx, &lookup, outside, inside);
    EXPECT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << iter;
    want = Expected(p.dimg, p.dst, [&](int x, int y) { return In(*p.src.GetImagePtr(x, y), mn, mx) ? inside : outside; });
    ImgThreshold(&p.src, &p.dst, mn, mx, nullptr, outside, inside);
    ASSERT_EQ(testsupport::Snapshot(p.dimg), want) << iter;
  }
}

TEST(ThresholdC24, Checks) {
  EImage<EC24> src(10, 3);
  EImage<EBW8> dst(10, 3), small(10, 2);
  Rng rng(18);
  testsupport::FillRandom(dst, rng);
  const std::vector<unsigned char> before = testsupport::Snapshot(dst);
  EROI<EC24> voidRoi;
  ImgThreshold(&voidRoi, &dst, EC24(0, 0, 0), EC24(255, 255, 255));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThreshold ( C24 to BW8)");
  ImgThreshold(&src, &small, EC24(0, 0, 0), EC24(255, 255, 255), nullptr, 0, 255);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThreshold ( C24 to BW8)");
  EXPECT_EQ(testsupport::Snapshot(dst), before);
}

}  // namespace
