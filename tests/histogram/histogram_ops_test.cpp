#include <cmath>
#include <cstdint>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

std::vector<unsigned int> Bins(const EBWHistogramVector& v) {
  return std::vector<unsigned int>(v.GetDataPtr(), v.GetDataPtr() + v.GetNumElements());
}

void SetBins(EBWHistogramVector& v, const std::vector<unsigned int>& bins) {
  v.SetNumElements(static_cast<unsigned int>(bins.size()));
  for (size_t i = 0; i < bins.size(); ++i) v.GetDataPtr()[i] = bins[i];
}

template <class P>
std::vector<unsigned int> FieldReference(const EROI<P>& roi, unsigned int msb, unsigned int bits, bool sat) {
  const unsigned int width = sizeof(P) * 8;
  if (msb == width - 1) sat = false;
  const unsigned int shift = (msb - bits + 1) & 31u;
  const uint32_t count = 1u << (bits & 31u);
  std::vector<unsigned int> h(count, 0);
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) {
      uint32_t b = static_cast<uint32_t>(roi.GetPixel(x, y).value) >> shift;
      if (sat && b > count - 1) b = count - 1;
      b &= count - 1;  // only reached when the field holds the pixel, or bits is 32
      ++h[b];
    }
  return h;
}

TEST(HistogramField, SixteenAndThirtyTwoBitAgainstReference) {
  Rng rng(31);
  EImage<EBW16> img16;
  EROI<EBW16> r16;
  testsupport::PlaceRandom(img16, r16, 37, 5, rng);
  testsupport::FillRandom(img16, rng);
  struct Case { unsigned int msb, bits; int sat; };
  for (const Case c : {Case{15, 16, 1}, Case{15, 8, 1}, Case{11, 12, 1}, Case{11, 12, 0}, Case{15, 8, 0},
                       Case{7, 4, 1}, Case{3, 4, 1}, Case{15, 1, 1}}) {
    EBWHistogramVector h;
    // With saturate off the caller keeps pixels inside the field.
    if (c.sat == 0 && c.msb < 15) {
      for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 37; ++x)
          r16.SetPixel(static_cast<unsigned short>(r16.GetPixel(x, y).value & ((2u << c.msb) - 1)), x, y);
    }
    ImgHistogram(&r16, &h, c.msb, c.bits, c.sat);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(Bins(h), FieldReference(r16, c.msb, c.bits, c.sat != 0)) << c.msb << " " << c.bits;
  }
  testsupport::FillRandom(img16, rng);
  EBWHistogramVector h;
  ImgHistogram(&r16, &h, 11, 12, 1);  // a 12-bit camera: values above 4095 land in the last bin
  const std::vector<unsigned int> clamped = Bins(h);
  unsigned int above = 0;
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 37; ++x) above += r16.GetPixel(x, y).value >= 4095 ? 1 : 0;
  EXPECT_EQ(clamped[4095], above);

  EImage<EBW32> img32(23, 4);
  testsupport::FillRandom(img32, rng);
  for (const Case c : {Case{31, 8, 1}, Case{23, 8, 1}, Case{31, 16, 0}, Case{31, 32, 1}, Case{20, 16, 1}}) {
    ImgHistogram(&img32, &h, c.msb, c.bits, c.sat);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(Bins(h), FieldReference(img32, c.msb, c.bits, c.sat != 0)) << c.msb << " " << c.bits;
  }
  // msb at the top bit: saturate is forced off.
  EBWHistogramVector on, off;
  ImgHistogram(&r16, &on, 15, 8, 1);
  ImgHistogram(&r16, &off, 15, 8, 0);
  EXPECT_EQ(Bins(on), Bins(off));
  // bits = 32: one bin holding every pixel.
  ImgHistogram(&img32, &h, 31, 32, 1);
  EXPECT_EQ(Bins(h), std::vector<unsigned int>{23u * 4u});
}

TEST(HistogramField, Errors) {
  EImage<EBW16> img(4, 4);
  EBWHistogramVector h;
  ImgHistogram(&img, &h, 16, 8, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram ( EBW16)");
  ImgHistogram(&img, &h, 6, 8, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_2);
  EImage<EBW32> img32(4, 4);
  ImgHistogram(&img32, &h, 32, 8, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram ( EBW32)");
  EROI<EBW32> empty;
  ImgHistogram(&empty, &h, 40, 8, 1);  // the ROI is checked first
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

TEST(HistogramOps, CumulateInPlaceAndApart) {
  EBWHistogramVector a, b(2);
  SetBins(a, {1, 2, 3, 0xFFFFFFFFu, 5});
  ImgCumulateHistogram(&a, &b);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Bins(b), (std::vector<unsigned int>{1, 3, 6, 5, 10}));  // 32-bit wrap
  ImgCumulateHistogram(&a, &a);
  EXPECT_EQ(Bins(a), Bins(b));
}

TEST(HistogramOps, SetupEqualizeUsesExclusiveCounts) {
  EBWHistogramVector h;
  std::vector<unsigned int> bins(256, 0);
  bins[0] = 10;
  bins[100] = 30;
  bins[200] = 60;
  SetBins(h, bins);
  EBW8Vector table;
  ImgSetupEqualize(&h, &table);
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(table.GetNumElements(), 256u);
  EXPECT_EQ(table[0].value, 0);
  EXPECT_EQ(table[1].value, 10 * 255 / 100);
  EXPECT_EQ(table[100].value, 10 * 255 / 100);
  EXPECT_EQ(table[101].value, 40 * 255 / 100);
  EXPECT_EQ(table[255].value, 100 * 255 / 100);
  EBWHistogramVector wrong;
  SetBins(wrong, std::vector<unsigned int>(255, 1));
  ImgSetupEqualize(&wrong, &table);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgSetupEqualize ( EBWHistogramVector)");
}

TEST(HistogramOps, EqualizeEightBitMatchesModelOnEveryPath) {
  Rng rng(33);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    EImage<EBW8> si, di;
    EROI<EBW8> s, d;
    testsupport::PlaceRandom(si, s, 77, 6, rng);
    testsupport::PlaceRandom(di, d, 77, 6, rng);
    testsupport::FillRandom(si, rng);
    for (int y = 0; y < 6; ++y)
      for (int x = 0; x < 77; ++x) s.SetPixel(static_cast<unsigned char>(s.GetPixel(x, y).value / 4 + 20), x, y);
    ImgEqualize(&s, &d);
    ASSERT_EQ(EGetError(), E_OK);
    std::vector<uint64_t> h(256, 0);
    for (int y = 0; y < 6; ++y)
      for (int x = 0; x < 77; ++x) ++h[s.GetPixel(x, y).value];
    for (int y = 0; y < 6; ++y)
      for (int x = 0; x < 77; ++x) {
        uint64_t below = 0;
        for (int v = 0; v < s.GetPixel(x, y).value; ++v) below += h[v];
        ASSERT_EQ(d.GetPixel(x, y).value, below * 255 / (77 * 6));
      }
  }
  EImage<EBW8> a(3, 3), b(3, 4);
  ImgEqualize(&a, &b);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgEqualize");
}

TEST(HistogramOps, EqualizeCountsTheRunsAndMapsEveryPixel) {
  EImage<EBW8> s(10, 2), d(10, 2);
  for (int x = 0; x < 10; ++x) {
    s.SetPixel(static_cast<unsigned char>(x), x, 0);
    s.SetPixel(static_cast<unsigned char>(x + 100), x, 1);
  }
  ERun run{0, 4, 0, 0};  // pixels 0..3 of row 0
  s.SetRuns(&run, 1, 1);
  ImgEqualize(&s, &d);
  ASSERT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 10; ++x) {
    const unsigned below = x < 4 ? static_cast<unsigned>(x) : 4u;
    EXPECT_EQ(d.GetPixel(x, 0).value, below * 255 / 4) << x;
    EXPECT_EQ(d.GetPixel(x, 1).value, 255) << x;
  }
}

TEST(HistogramOps, EmptyHistogramGivesAZeroTable) {
  EBWHistogramVector h;
  SetBins(h, std::vector<unsigned int>(256, 0));
  EBW8Vector table;
  ImgSetupEqualize(&h, &table);
  ASSERT_EQ(table.GetNumElements(), 256u);
  for (unsigned int i = 0; i < 256; ++i) ASSERT_EQ(table[i].value, 0);
}

TEST(HistogramOps, EqualizeSixteenBit) {
  Rng rng(34);
  EImage<EBW16> s(40, 7), d(40, 7);
  testsupport::FillRandom(s, rng);
  for (int x = 0; x < 40; ++x) s.SetPixel(1000, x, 2);  // a tall bin
  ImgEqualize(&s, &d);
  ASSERT_EQ(EGetError(), E_OK);
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 40; ++x) {
      uint64_t upTo = 0;
      for (int yy = 0; yy < 7; ++yy)
        for (int xx = 0; xx < 40; ++xx) upTo += s.GetPixel(xx, yy).value <= s.GetPixel(x, y).value ? 1 : 0;
      ASSERT_EQ(d.GetPixel(x, y).value, std::min<uint64_t>(65535, upTo * 65535 / 280));
    }
  EImage<EBW16> other(40, 6);
  ImgEqualize(&s, &other);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgEqualize (BW16)");
}

// Plain model of the features, with the scans written out.
float ModelFeature(const std::vector<unsigned int>& h, int f, int min, int max) {
  std::vector<unsigned int> r(h.begin() + min, h.begin() + max + 1);
  switch (f) {
    case 0: case 1: {
      unsigned int best = 0; int at = 0;
      for (int i = min; i <= max; ++i) if (h[i] > best) { best = h[i]; at = i; }
      return f == 0 ? static_cast<float>(at) : static_cast<float>(static_cast<int32_t>(best));
    }
    case 2: case 3: {
      unsigned int best = 0xFFFFFFFFu; int at = 0;
      for (int i = min; i <= max; ++i) if (h[i] && h[i] < best) { best = h[i]; at = i; }
      return f == 2 ? static_cast<float>(at) : static_cast<float>(static_cast<int32_t>(best));
    }
    case 4: { for (int i = min; i <= max; ++i) if (h[i]) return static_cast<float>(i); return static_cast<float>(max + 1); }
    case 5: { for (int i = max; i >= min; --i) if (h[i]) return static_cast<float>(i); return static_cast<float>(min - 1); }
    case 6: { uint32_t s = 0; for (int i = min; i <= max; ++i) s += h[i]; return static_cast<float>(static_cast<int32_t>(s)); }
    case 7: {
      double n = 0, s = 0;
      for (int i = min; i <= max; ++i) { n += h[i]; s += static_cast<double>(h[i]) * i; }
      return n == 0 ? 0.0f : static_cast<float>(s / n);
    }
    case 8: {
      double n = 0, s = 0, s2 = 0;
      for (int i = min; i <= max; ++i) { n += h[i]; s += static_cast<double>(h[i]) * i; s2 += static_cast<double>(h[i]) * i * i; }
      if (n == 0) return 0.0f;
      const double var = s2 / n - (s / n) * (s / n);
      return static_cast<float>(std::sqrt(var > 0 ? var : 0));
    }
  }
  return 0.0f;
}

TEST(HistogramAnalysis, FeaturesAgainstModel) {
  Rng rng(35);
  for (int iter = 0; iter < 60; ++iter) {
    std::vector<unsigned int> bins(256, 0);
    const int filled = static_cast<int>(rng() % 40);
    for (int k = 0; k < filled; ++k) bins[rng() % 256] = rng() % 50;
    EBWHistogramVector h;
    SetBins(h, bins);
    int min = static_cast<int>(rng() % 256), max = static_cast<int>(rng() % 256);
    if (max < min) std::swap(min, max);
    if (iter == 0) { min = 0; max = 255; }
    for (int f = 0; f <= 8; ++f) {
      const float got = ImgAnalyseHistogram(&h, static_cast<IMG_HISTOGRAM_FEATURE>(f), min, max);
      ASSERT_EQ(EGetError(), E_OK);
      const float want = ModelFeature(bins, f, min, max);
      if (f >= 7) {
        ASSERT_NEAR(got, want, 1e-3f * (1.0f + std::fabs(want))) << f;
      } else {
        ASSERT_EQ(got, want) << "feature " << f << " [" << min << ", " << max << "]";
      }
    }
  }
}

TEST(HistogramAnalysis, WorkedCasesAndErrors) {
  std::vector<unsigned int> bins(256, 0);
  bins[42] = 7;
  EBWHistogramVector h;
  SetBins(h, bins);
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_FIRST_BIN, 0, 255), 42.0f);
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_LAST_BIN, 0, 255), 42.0f);
  EXPECT_NEAR(ImgAnalyseHistogram(&h, IMG_FEATURE_STD_DEV, 0, 255), 0.0f, 1e-3f);
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_MEAN, 0, 255), 42.0f);
  // Empty range.
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_MAX_COUNT_BIN, 50, 60), 0.0f);
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_MIN_COUNT, 50, 60), -1.0f);
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_FIRST_BIN, 50, 60), 61.0f);
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_LAST_BIN, 50, 60), 49.0f);
  EXPECT_EQ(ImgAnalyseHistogram(&h, static_cast<IMG_HISTOGRAM_FEATURE>(9), 0, 255), 0.0f);
  EXPECT_EQ(EGetError(), E_OK);
  // A total above 2^31 reads as a negative float.
  bins[43] = 0x80000000u;
  SetBins(h, bins);
  EXPECT_LT(ImgAnalyseHistogram(&h, IMG_FEATURE_TOTAL, 0, 255), 0.0f);

  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_TOTAL, -1, 255), 0.0f);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgAnalyseHistogram");
  ImgAnalyseHistogram(&h, IMG_FEATURE_TOTAL, 0, 256);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_2);
  ImgAnalyseHistogram(&h, IMG_FEATURE_TOTAL, 9, 8);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EBWHistogramVector small;
  SetBins(small, std::vector<unsigned int>(100, 1));
  ImgAnalyseHistogram(&small, IMG_FEATURE_TOTAL, 0, 10);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  ImgAnalyseHistogramBW16(&h, IMG_FEATURE_TOTAL, 0, 10);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgAnalyseHistogram (BW16)");
}

TEST(HistogramAnalysis, SixteenBitBaseOffset) {
  std::vector<unsigned int> bins(65536, 0);
  for (unsigned int i = 0; i < 65536; ++i) bins[i] = (i * 2654435761u) >> 28;
  EBWHistogramVector h;
  SetBins(h, bins);
  // min = 0: the plain result.
  uint32_t total = 0;
  for (unsigned int b : bins) total += b;
  EXPECT_EQ(ImgAnalyseHistogramBW16(&h, IMG_FEATURE_TOTAL, 0, 65535), static_cast<float>(total));
  // max = 65536 passes the checks.
  EXPECT_EQ(ImgAnalyseHistogramBW16(&h, IMG_FEATURE_TOTAL, 0, 65536), static_cast<float>(total));
  EXPECT_EQ(EGetError(), E_OK);
  ImgAnalyseHistogramBW16(&h, IMG_FEATURE_TOTAL, 0, 65537);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_2);
  // min = 100, max = 300: bins 200..400 are read, indices reported in 100..300.
  std::vector<unsigned int> shifted(65536, 0);
  for (int i = 100; i <= 300; ++i) shifted[i] = bins[100 + i];
  for (int f = 0; f <= 8; ++f) {
    const float got = ImgAnalyseHistogramBW16(&h, static_cast<IMG_HISTOGRAM_FEATURE>(f), 100, 300);
    const float want = ModelFeature(shifted, f, 100, 300);
    EXPECT_NEAR(got, want, f >= 7 ? 1e-3f * (1.0f + want) : 0.0f) << f;
  }
}

TEST(HistogramVector, Entropy) {
  EBWHistogramVector h;
  SetBins(h, {4, 4, 0, 4, 4});
  EXPECT_NEAR(h.Entropy(0, 0xFFFFFFFFu), 2.0f, 1e-5f);
  EXPECT_NEAR(h.Entropy(0, 1), 1.0f, 1e-5f);
  EXPECT_NEAR(h.Entropy(2, 2), 0.0f, 1e-6f);
  SetBins(h, {1, 3});
  EXPECT_NEAR(h.Entropy(0, 1), 0.811278f, 1e-5f);
  EXPECT_EQ(EGetError(), E_OK);
  h.Entropy(2, 1);
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "EBWHistogramVector::Entropy");
  h.Entropy(0, 2);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
}

}  // namespace
