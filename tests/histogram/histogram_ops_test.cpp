#include <cmath>
#include <cstdint>

#include "histogram_test_util.h"

namespace {

using histtest::Bins;
using histtest::Hist;
using histtest::Load;
using testsupport::Rng;

template <class P>
Hist FieldReference(const EROI<P>& roi, unsigned int msb, unsigned int bits, bool sat) {
  if (msb == sizeof(P) * 8 - 1) sat = false;
  const unsigned int shift = (msb - bits + 1) & 31u;
  const uint32_t count = 1u << (bits & 31u);
  Hist h(count, 0);
  for (const uint32_t v : histtest::Pixels(roi)) ++h[(sat && v >> shift > count - 1 ? count - 1 : v >> shift) & (count - 1)];
  return h;
}

TEST(HistogramField, SixteenAndThirtyTwoBitAgainstReference) {
  Rng rng(31);
  EImage<EBW16> img16;
  EROI<EBW16> r16;
  testsupport::PlaceRandom(img16, r16, 37, 5, rng);
  EImage<EBW32> img32(23, 4);
  testsupport::FillRandom(img32, rng);
  EBWHistogramVector h;
  struct Case { unsigned int msb, bits; int sat; };
  for (const Case c : {Case{15, 16, 1}, Case{15, 8, 1}, Case{11, 12, 1}, Case{11, 12, 0}, Case{15, 8, 0},
                       Case{7, 4, 1}, Case{3, 4, 1}, Case{15, 1, 1}, Case{14, 8, 1}}) {
    testsupport::FillRandom(img16, rng);
    // With saturate off the caller keeps pixels inside the field.
    for (int y = 0; y < 5 && c.sat == 0; ++y)
      for (int x = 0; x < 37; ++x) r16.GetImagePtr(x, y)->value &= static_cast<unsigned short>((2u << c.msb) - 1);
    ImgHistogram(&r16, &h, c.msb, c.bits, c.sat);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(Bins(h), FieldReference(r16, c.msb, c.bits, c.sat != 0)) << c.msb << " " << c.bits;
  }
  for (const Case c : {Case{31, 8, 1}, Case{23, 8, 1}, Case{31, 16, 0}, Case{31, 32, 1}, Case{20, 16, 1}}) {
    ImgHistogram(&img32, &h, c.msb, c.bits, c.sat);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(Bins(h), FieldReference(img32, c.msb, c.bits, c.sat != 0)) << c.msb << " " << c.bits;
  }
}

TEST(HistogramField, Errors) {
  EImage<EBW16> img(4, 4);
  EImage<EBW32> img32(4, 4);
  EROI<EBW32> empty;
  EBWHistogramVector h;
  ImgHistogram(&img, &h, 16, 8, 1);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_1, "ImgHistogram ( EBW16)");
  ImgHistogram(&img, &h, 6, 8, 1);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_2, "ImgHistogram ( EBW16)");
  ImgHistogram(&img32, &h, 32, 8, 1);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_1, "ImgHistogram ( EBW32)");
  ImgHistogram(&empty, &h, 40, 8, 1);  // the ROI is checked first
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

TEST(HistogramOps, CumulateInPlaceAndApart) {
  EBWHistogramVector a, b(2);
  Load(a, {1, 2, 3, 0xFFFFFFFFu, 5});
  ImgCumulateHistogram(&a, &b);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Bins(b), (Hist{1, 3, 6, 5, 10}));  // 32-bit wrap
  ImgCumulateHistogram(&a, &a);
  EXPECT_EQ(Bins(a), Bins(b));
}

TEST(HistogramOps, SetupEqualizeUsesExclusiveCounts) {
  EBWHistogramVector h;
  EBW8Vector table;
  Load(h, Hist(256, 0));  // empty: an all-zero table
  ImgSetupEqualize(&h, &table);
  ASSERT_EQ(table.GetNumElements(), 256u);
  for (unsigned int i = 0; i < 256; ++i) ASSERT_EQ(table[i].value, 0);
  Load(h, histtest::Spikes({{0, 10}, {100, 30}, {200, 60}}));
  ImgSetupEqualize(&h, &table);
  ASSERT_EQ(EGetError(), E_OK);
  const int want[][2] = {{0, 0}, {1, 25}, {100, 25}, {101, 102}, {200, 102}, {201, 255}, {255, 255}};
  for (const auto& w : want) EXPECT_EQ(table[unsigned(w[0])].value, w[1]) << w[0];
  Load(h, Hist(255, 1));
  ImgSetupEqualize(&h, &table);
  EXPECT_FAILED(E_ERROR_VECTOR_SIZE, "ImgSetupEqualize ( EBWHistogramVector)");
}

// Equalized value of each pixel: count strictly below (8 bits) or up to
// (16 bits) its value, times the top value, over the pixel count.
template <class P>
Hist EqualizeModel(const EROI<P>& s, bool upTo, uint64_t top) {
  const Hist px = histtest::Pixels(s);
  std::vector<uint64_t> h(65537, 0);
  for (unsigned int v : px) ++h[v + 1];
  for (size_t i = 1; i < h.size(); ++i) h[i] += h[i - 1];  // h[v] = pixels below v
  Hist out;
  for (unsigned int v : px) out.push_back(unsigned(std::min(top, h[v + upTo] * top / px.size())));
  return out;
}

TEST(HistogramOps, EqualizeMatchesModel) {
  Rng rng(33);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    EImage<EBW8> si, di;
    EROI<EBW8> s, d;
    testsupport::PlaceRandom(si, s, 77, 6, rng);
    testsupport::PlaceRandom(di, d, 77, 6, rng);
    testsupport::FillRandom(si, rng);
    for (int y = 0; y < 6; ++y)
      for (int x = 0; x < 77; ++x) s.GetImagePtr(x, y)->value = static_cast<unsigned char>(s.GetPixel(x, y).value / 4 + 20);
    ImgEqualize(&s, &d);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(histtest::Pixels(d), EqualizeModel(s, false, 255)) << path;
  }
  EImage<EBW16> s16(40, 7), d16(40, 7), other(40, 6);
  testsupport::FillRandom(s16, rng);
  for (int x = 0; x < 40; ++x) s16.SetPixel(1000, x, 2);  // a tall bin
  ImgEqualize(&s16, &d16);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(histtest::Pixels(d16), EqualizeModel(s16, true, 65535));
  ImgEqualize(&s16, &other);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgEqualize (BW16)");
  EImage<EBW8> a(3, 3), b(3, 4);
  ImgEqualize(&a, &b);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgEqualize");
}

TEST(HistogramOps, EqualizeCountsTheRunsAndMapsEveryPixel) {
  EImage<EBW8> s(10, 2), d(10, 2);
  for (int x = 0; x < 10; ++x) s.GetImagePtr(x, 0)->value = uint8_t(x), s.GetImagePtr(x, 1)->value = uint8_t(x + 100);
  ERun run{0, 4, 0, 0};  // pixels 0..3 of row 0
  s.SetRuns(&run, 1, 1);
  ImgEqualize(&s, &d);
  ASSERT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 10; ++x) {
    EXPECT_EQ(d.GetPixel(x, 0).value, std::min(x, 4) * 255 / 4) << x;
    EXPECT_EQ(d.GetPixel(x, 1).value, 255) << x;
  }
}

// Plain model of the features over bins [min, max].
float ModelFeature(const Hist& h, int f, int min, int max) {
  uint32_t total = 0, most = 0, least = 0xFFFFFFFFu;
  int mostAt = 0, leastAt = 0, first = max + 1, last = min - 1;
  double n = 0, s = 0, s2 = 0;
  for (int i = min; i <= max; ++i) {
    if (h[i] > most) most = h[i], mostAt = i;
    if (h[i] && h[i] < least) least = h[i], leastAt = i;
    if (h[i] && first > max) first = i;
    if (h[i]) last = i;
    total += h[i], n += h[i], s += double(h[i]) * i, s2 += double(h[i]) * i * i;
  }
  const double var = n == 0 ? 0 : s2 / n - (s / n) * (s / n);
  const double r[] = {double(mostAt), double(int32_t(most)), double(leastAt), double(int32_t(least)), double(first),
                      double(last), double(int32_t(total)), n == 0 ? 0 : s / n, std::sqrt(var > 0 ? var : 0)};
  return float(r[f]);
}

void ExpectFeature(float want, float got, int f, const std::string& what) {
  if (f >= 7) {
    EXPECT_NEAR(got, want, 1e-3f * (1.0f + std::fabs(want))) << f << what;
  } else {
    EXPECT_EQ(got, want) << "feature " << f << what;
  }
}

TEST(HistogramAnalysis, FeaturesAgainstModel) {
  Rng rng(35);
  EBWHistogramVector h;
  for (int iter = 0; iter < 60; ++iter) {
    Hist bins(256, 0);
    for (int k = iter == 1 ? 0 : static_cast<int>(rng() % 40); k > 0; --k) bins[rng() % 256] = rng() % 50;
    Load(h, bins);
    int min = static_cast<int>(rng() % 256), max = static_cast<int>(rng() % 256);
    if (max < min) std::swap(min, max);
    if (iter == 0) min = 0, max = 255;
    for (int f = 0; f <= 8; ++f) {
      ExpectFeature(ModelFeature(bins, f, min, max), ImgAnalyseHistogram(&h, IMG_HISTOGRAM_FEATURE(f), min, max), f,
                    " [" + std::to_string(min) + ", " + std::to_string(max) + "]");
      ASSERT_EQ(EGetError(), E_OK);
    }
  }
  // 16 bits, min = 100, max = 300: bins 200..400 are read, indices reported in 100..300.
  Hist bins(65536, 0), shifted(65536, 0);
  uint32_t total = 0;
  for (unsigned int i = 0; i < 65536; ++i) total += bins[i] = (i * 2654435761u) >> 28;
  for (int i = 100; i <= 300; ++i) shifted[i] = bins[100 + i];
  Load(h, bins);
  for (int f = 0; f <= 8; ++f)
    ExpectFeature(ModelFeature(shifted, f, 100, 300), ImgAnalyseHistogramBW16(&h, IMG_HISTOGRAM_FEATURE(f), 100, 300), f, "");
  // min = 0: the plain result; max = 65536 passes the checks.
  EXPECT_EQ(ImgAnalyseHistogramBW16(&h, IMG_FEATURE_TOTAL, 0, 65535), static_cast<float>(total));
  EXPECT_EQ(ImgAnalyseHistogramBW16(&h, IMG_FEATURE_TOTAL, 0, 65536), static_cast<float>(total));
  EXPECT_EQ(EGetError(), E_OK);
}

TEST(HistogramAnalysis, WorkedCasesAndErrors) {
  EBWHistogramVector h, small, big;
  Load(h, histtest::Spikes({{42, 7}}));
  // An empty range: the "none" values of each feature; an unknown feature gives 0.
  const struct { IMG_HISTOGRAM_FEATURE f; int min, max; float want; } worked[] = {
      {IMG_FEATURE_MAX_COUNT_BIN, 50, 60, 0.f}, {IMG_FEATURE_MIN_COUNT, 50, 60, -1.f}, {IMG_FEATURE_FIRST_BIN, 50, 60, 61.f},
      {IMG_FEATURE_LAST_BIN, 50, 60, 49.f}, {IMG_FEATURE_MEAN, 50, 60, 0.f}, {IMG_HISTOGRAM_FEATURE(9), 0, 255, 0.f}};
  for (const auto& w : worked) {
    EXPECT_EQ(ImgAnalyseHistogram(&h, w.f, w.min, w.max), w.want) << w.f << " " << w.min;
    EXPECT_EQ(EGetError(), E_OK);
  }
  Load(h, histtest::Spikes({{42, 7}, {43, 0x80000000u}}));
  EXPECT_LT(ImgAnalyseHistogram(&h, IMG_FEATURE_TOTAL, 0, 255), 0.0f);  // a total above 2^31 reads negative
  Load(small, Hist(100, 1));
  Load(big, Hist(65536, 1));
  const struct { EBWHistogramVector* v; bool wide; int min, max; E_ERRORS code; } bad[] = {  // wide: the 16-bit form
      {&h, false, -1, 255, E_ERROR_BAD_ARGUMENT_1}, {&h, false, 0, 256, E_ERROR_BAD_ARGUMENT_2},
      {&h, false, 9, 8, E_ERROR_BAD_ARGUMENT},      {&small, false, 0, 10, E_ERROR_VECTOR_SIZE},
      {&h, true, 0, 10, E_ERROR_VECTOR_SIZE},       {&big, true, 0, 65537, E_ERROR_BAD_ARGUMENT_2}};
  for (const auto& b : bad) {
    EXPECT_EQ(b.wide ? ImgAnalyseHistogramBW16(b.v, IMG_FEATURE_TOTAL, b.min, b.max)
                   : ImgAnalyseHistogram(b.v, IMG_FEATURE_TOTAL, b.min, b.max), 0.f);
    EXPECT_FAILED(b.code, b.wide ? "ImgAnalyseHistogram (BW16)" : "ImgAnalyseHistogram");
  }
}

TEST(HistogramVector, Entropy) {
  EBWHistogramVector h;
  Load(h, {4, 4, 0, 4, 4});
  EXPECT_NEAR(h.Entropy(0, 0xFFFFFFFFu), 2.0f, 1e-5f);
  EXPECT_NEAR(h.Entropy(0, 1), 1.0f, 1e-5f);
  EXPECT_NEAR(h.Entropy(2, 2), 0.0f, 1e-6f);
  Load(h, {1, 3});
  EXPECT_NEAR(h.Entropy(0, 1), 0.811278f, 1e-5f);
  EXPECT_EQ(EGetError(), E_OK);
  h.Entropy(2, 1);
  EXPECT_FAILED(E_ERROR_INDEX_OUT_OF_RANGE, "EBWHistogramVector::Entropy");
  h.Entropy(0, 2);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
}

}  // namespace
