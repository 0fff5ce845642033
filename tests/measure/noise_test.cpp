#include <cmath>
#include <cstring>

#include "measure_test_util.h"

namespace {

using testsupport::Rng;

unsigned int Comp(EBW8 p, int) { return p.value; }
unsigned int Comp(EBW16 p, int) { return p.value; }
unsigned int Comp(const EC24& p, int k) { return p[k]; }

// The 32-bit row sums of s*s and (s - r)^2; the reference shifted right.
template <class S, class R>
void NoiseModel(const EROI<S>& s, const EROI<R>& r, int comps, unsigned shift, float* power, double* signal,
                double* noise) {
  *power = 0;
  *signal = *noise = 0;
  for (int y = 0; y < s.GetHeight(); ++y) {
    uint32_t a = 0, b = 0;
    for (int x = 0; x < s.GetWidth(); ++x)
      for (int k = 0; k < comps; ++k) {
        const uint32_t u = Comp(s.GetImagePtr(x, y)[0], k), v = Comp(r.GetImagePtr(x, y)[0], k) >> shift;
        a += u * u;
        b += (u - v) * (u - v);
      }
    *power += static_cast<float>(b);
    *signal += a;
    *noise += b;
  }
}

template <class S, class R>
void CheckNoise(const EROI<S>& s, const EROI<R>& r, int comps, unsigned int frames, Rng& rng) {
  unsigned shift = 0;
  while ((1u << shift) < frames) ++shift;
  float power = 0;
  double signal = 0, noise = 0;
  NoiseModel(s, r, comps, shift, &power, &signal, &noise);
  const float n = static_cast<float>(s.GetWidth() * s.GetHeight());
  for (int mode = 0; mode < 4; ++mode) {
    if (mode == 2 && frames == 1) continue;
    const float f = mode == 1 ? 1.0f + 1.0f / frames : mode == 2 ? 1.0f - 1.0f / frames : 1.0f;
    const IMG_REFERENCE_NOISE m = static_cast<IMG_REFERENCE_NOISE>(mode == 3 ? 7 : mode);
    float rms, snr;
    if constexpr (std::is_same<R, EBW16>::value && std::is_same<S, EBW8>::value) {
      rms = ImgRmsNoise(&s, &r, frames, m);
      snr = ImgSignalNoiseRatio(&s, &r, frames, m);
    } else {
      rms = ImgRmsNoise(&s, &r, m);
      snr = ImgSignalNoiseRatio(&s, &r, m);
    }
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(rms, std::sqrt(power / f / n)) << "mode " << mode;
    double want = noise == 0 ? 0.0 : 10.0 * std::log10(signal / noise);
    if (noise != 0 && (mode == 1 || mode == 2)) want += 10.0 * std::log10(static_cast<double>(f));
    EXPECT_EQ(snr, static_cast<float>(want)) << "mode " << mode;
  }
  (void)rng;
}

TEST(Noise, RmsAndRatioMatchModelOnEveryForm) {
  Rng rng(831);
  for (int iter = 0; iter < 12; ++iter) {
    {
      EImage<EBW8> a, b;
      EROI<EBW8> s, r;
      meastest::RandomRoi(a, s, rng, 120, 6);
      testsupport::PlaceRandom(b, r, s.GetWidth(), s.GetHeight(), rng);
      for (int y = 0; y < s.GetHeight(); ++y)
        for (int x = 0; x < s.GetWidth(); ++x)
          r.SetPixel(static_cast<unsigned char>(std::min(255u, Comp(s.GetPixel(x, y), 0) + static_cast<unsigned>(rng() % 9))), x, y);
      for (int path : testsupport::AllPaths()) {
        testsupport::PathGuard guard(path);
        CheckNoise(s, r, 1, 1, rng);
      }
      EImage<EBW16> c;
      EROI<EBW16> sum;
      const unsigned int frames = 1u << (iter % 9);
      testsupport::PlaceRandom(c, sum, s.GetWidth(), s.GetHeight(), rng);
      for (int y = 0; y < s.GetHeight(); ++y)
        for (int x = 0; x < s.GetWidth(); ++x)
          sum.GetImagePtr(x, y)->value = static_cast<unsigned short>(Comp(s.GetPixel(x, y), 0) * frames + static_cast<unsigned>(rng() % frames));
      CheckNoise(s, sum, 1, frames, rng);
    }
    {
      EImage<EBW16> a, b;
      EROI<EBW16> s, r;
      meastest::RandomRoi(a, s, rng, 60, 5);
      testsupport::PlaceRandom(b, r, s.GetWidth(), s.GetHeight(), rng);
      testsupport::FillRandom(b, rng);
      CheckNoise(s, r, 1, 1, rng);
    }
    {
      EImage<EC24> a, b;
      EROI<EC24> s, r;
      meastest::RandomRoi(a, s, rng, 60, 5);
      testsupport::PlaceRandom(b, r, s.GetWidth(), s.GetHeight(), rng);
      testsupport::FillRandom(b, rng);
      CheckNoise(s, r, 3, 1, rng);
    }
  }
}

TEST(Noise, IdenticalImagesAndTheIndependentReference) {
  Rng rng(832);
  EImage<EBW8> a(50, 7), b(50, 7);
  testsupport::FillRandom(a, rng);
  EXPECT_EQ(ImgRmsNoise(&a, &a, IMG_REFERENCE_NOISELESS), 0.0f);
  EXPECT_EQ(ImgSignalNoiseRatio(&a, &a, IMG_REFERENCE_INDEPENDENT), 0.0f);
  testsupport::FillRandom(b, rng);
  const float plain = ImgRmsNoise(&a, &b, IMG_REFERENCE_NOISELESS);
  EXPECT_NEAR(ImgRmsNoise(&a, &b, IMG_REFERENCE_INDEPENDENT), plain / std::sqrt(2.0f), 1e-4f * plain);
  EXPECT_NEAR(ImgSignalNoiseRatio(&a, &b, IMG_REFERENCE_INDEPENDENT) - ImgSignalNoiseRatio(&a, &b, IMG_REFERENCE_NOISELESS),
              3.0103f, 1e-4f);
  // Correlogram of identical images: only the rising diagonal.
  EImage<EBW16> table;
  ImgCorrelogram(&a, &a, &table);
  ASSERT_EQ(EGetError(), E_OK);
  uint32_t hist[256] = {};
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 50; ++x) ++hist[a.GetPixel(x, y)];
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 256; ++x)
      ASSERT_EQ(table.GetImagePtr(x, y)->value, x == 255 - y ? hist[x] : 0u) << x << " " << y;
}

TEST(Correlogram, CountsPairsAndSaturates) {
  Rng rng(833);
  EImage<EBW8> a, b;
  EROI<EBW8> s, r;
  testsupport::PlaceRandom(a, s, 60, 5, rng);
  testsupport::PlaceRandom(b, r, 60, 5, rng);
  testsupport::FillRandom(b, rng);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 60; ++x) {
      r.SetPixel(static_cast<unsigned char>(rng() % 2 ? 7 : 200), x, y);
      s.SetPixel(static_cast<unsigned char>(rng() % 3 ? rng() : 31), x, y);
    }
  std::vector<uint32_t> cells(65536, 0);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 60; ++x) ++cells[(255 - r.GetPixel(x, y)) * 256 + s.GetPixel(x, y)];
  EImage<EBW8> t8(3, 3);
  EImage<EBW16> t16;
  ImgCorrelogram(&s, &r, &t8);
  ImgCorrelogram(&s, &r, &t16);
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(t8.GetWidth(), 256);
  for (int i = 0; i < 65536; ++i) {
    ASSERT_EQ(t16.GetImagePtr(i % 256, i / 256)->value, cells[i]);
    ASSERT_EQ(t8.GetPixel(i % 256, i / 256).value, std::min(255u, cells[i]));
  }
  // Saturation of the 8-bit table.
  EImage<EBW8> flat(40, 10);
  std::memset(flat.GetImagePtr(0, 0), 9, static_cast<size_t>(flat.GetRowPitch()) * 10);
  ImgCorrelogram(&flat, &flat, &t8);
  EXPECT_EQ(t8.GetPixel(9, 246).value, 255);
  ImgCorrelogram(&flat, &flat, &t16);
  EXPECT_EQ(t16.GetImagePtr(9, 246)->value, 400);
}

TEST(Regression, MatchesModelAndHandlesFlatImagesOnEveryPath) {
  Rng rng(834);
  for (int iter = 0; iter < 30 * static_cast<int>(testsupport::AllPaths().size()); ++iter) {
    testsupport::PathGuard guard(testsupport::AllPaths()[iter % testsupport::AllPaths().size()]);
    EImage<EBW8> a, b;
    EROI<EBW8> x, y;
    meastest::RandomRoi(a, x, rng, 300, 6, iter % 4 == 1);
    testsupport::PlaceRandom(b, y, x.GetWidth(), x.GetHeight(), rng);
    for (int j = 0; j < x.GetHeight(); ++j)
      for (int i = 0; i < x.GetWidth(); ++i)
        y.SetPixel(static_cast<unsigned char>((x.GetPixel(i, j) * (iter % 3 + 1)) / 3 + rng() % 40), i, j);
    const int skip = iter % 2;
    uint32_t n = 0, sx = 0, sy = 0;
    double sxx = 0, sxy = 0, syy = 0;
    for (int j = 0; j < x.GetHeight(); ++j) {
      uint32_t p = 0, q = 0, r = 0;
      for (int i = 0; i < x.GetWidth(); ++i) {
        const uint32_t u = x.GetPixel(i, j), v = y.GetPixel(i, j);
        if (skip && (u == 0 || u == 255 || v == 0 || v == 255)) continue;
        ++n;
        sx += u;
        sy += v;
        p += u * u;
        q += u * v;
        r += v * v;
      }
      sxx += p;
      sxy += q;
      syy += r;
    }
    float slope = -9, offset = -9, corr = -9;
    ImgLinearRegression(&x, &y, slope, offset, corr, skip);
    if (n == 0) {
      EXPECT_FAILED(E_ERROR_NO_SOLUTION, "ImgLinearRegression");
      continue;
    }
    ASSERT_EQ(EGetError(), E_OK);
    const double inv = 1.0 / n, mx = sx * inv, my = sy * inv, vx = inv * sxx - mx * mx, cov = inv * sxy - my * mx,
                 vy = inv * syy - my * my;
    EXPECT_EQ(slope, static_cast<float>(cov / vx));
    EXPECT_EQ(offset, static_cast<float>(my - (cov / vx) * mx));
    EXPECT_EQ(corr, static_cast<float>(vx * vy > 0 ? cov / std::sqrt(vx * vy) : 0.0));
  }
  // A constant x of any size: slope 0, correlation 0, offset the mean of y.
  for (int w = 1; w < 140; ++w) {
    testsupport::PathGuard guard(testsupport::AllPaths()[w % testsupport::AllPaths().size()]);
    EImage<EBW8> a(w, 3), b(w, 3);
    std::memset(a.GetImagePtr(0, 0), 100, static_cast<size_t>(a.GetRowPitch()) * 3);
    uint32_t sum = 0;
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < w; ++i) {
        b.SetPixel(static_cast<unsigned char>(1 + rng() % 254), i, j);
        sum += b.GetPixel(i, j);
      }
    float slope = -9, offset = -9, corr = -9;
    ImgLinearRegression(&a, &b, slope, offset, corr, w % 2);
    EXPECT_EQ(slope, 0.0f) << w;
    EXPECT_EQ(corr, 0.0f) << w;
    EXPECT_EQ(offset, static_cast<float>(sum * (1.0 / (3 * w)))) << w;
  }
  // A constant 255 against itself with the extremes skipped: no pair left.
  EImage<EBW8> full(5, 5);
  std::memset(full.GetImagePtr(0, 0), 255, static_cast<size_t>(full.GetRowPitch()) * 5);
  float slope = -9, offset = -9, corr = -9;
  ImgLinearRegression(&full, &full, slope, offset, corr, 1);
  EXPECT_FAILED(E_ERROR_NO_SOLUTION, "ImgLinearRegression");
  EXPECT_EQ(slope, -9.0f);
  // A perfect line.
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j < 5; ++j) full.SetPixel(static_cast<unsigned char>(10 * i + j), i, j);
  EImage<EBW8> line(5, 5);
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j < 5; ++j) line.SetPixel(static_cast<unsigned char>(2 * (10 * i + j) + 3), i, j);
  ImgLinearRegression(&full, &line, slope, offset, corr, 0);
  EXPECT_NEAR(slope, 2.0f, 1e-5f);
  EXPECT_NEAR(offset, 3.0f, 1e-4f);
  EXPECT_NEAR(corr, 1.0f, 1e-6f);
}

TEST(Noise, BadInputGivesCodeAndLabel) {
  EImage<EBW8> a(6, 4), b(6, 5);
  EImage<EBW16> w(6, 4);
  EROI<EBW8> v8;
  EXPECT_EQ(ImgRmsNoise(&a, &b, IMG_REFERENCE_NOISELESS), 0.0f);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgRmsNoise ( BW8 source and BW8 reference)");
  EXPECT_EQ(ImgRmsNoise(&a, &a, IMG_REFERENCE_INCLUDES_SOURCE), 0.0f);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_1, "ImgRmsNoise ( BW8 source and BW8 reference)");
  EXPECT_EQ(ImgRmsNoise(&a, &w, 3, IMG_REFERENCE_NOISELESS), 0.0f);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_1, "ImgRmsNoise ( BW8 source and BW16 reference)");
  EXPECT_EQ(ImgSignalNoiseRatio(&a, &w, 512, IMG_REFERENCE_NOISELESS), 0.0f);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_1, "ImgSignalNoiseRatio ( BW8 source and BW16 reference)");
  EImage<EBW16> w2(6, 4);
  EXPECT_EQ(ImgSignalNoiseRatio(&w, &w2, IMG_REFERENCE_INCLUDES_SOURCE), 0.0f);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT_1, "ImgSignalNoiseRatio ( BW16 source and BW16 reference)");
  EImage<EC24> c(2, 2);
  EROI<EC24> vc;
  EXPECT_EQ(ImgSignalNoiseRatio(&c, &vc, IMG_REFERENCE_NOISELESS), 0.0f);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgSignalNoiseRatio ( C24 source and C24 reference)");
  // Sizes agree but the reference has no image.
  EROI<EBW8> unplaced;
  EImage<EBW8> zero(0, 0);
  EXPECT_EQ(ImgRmsNoise(&zero, &v8, IMG_REFERENCE_NOISELESS), 0.0f);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgRmsNoise ( BW8 source and BW8 reference)");
  EImage<EBW8> table(2, 2);
  table.SetPixel(42, 1, 1);
  const std::vector<unsigned char> before = testsupport::Snapshot(table);
  ImgCorrelogram(&a, &b, &table);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgCorrelogram ( BW8)");
  ImgCorrelogram(&v8, &a, &table);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgCorrelogram ( BW8)");
  ImgCorrelogram(&table, &table, &table);
  EXPECT_FAILED(E_ERROR_SAME_IMAGE, "ImgCorrelogram ( BW8)");
  EXPECT_EQ(testsupport::Snapshot(table), before);
  ImgCorrelogram(&a, &a, static_cast<EImage<EBW16>*>(nullptr));
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgCorrelogram ( BW16)");
  float s = 1, o = 1, k = 1;
  ImgLinearRegression(&a, &b, s, o, k, 0);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgLinearRegression");
  EXPECT_EQ(s, 1.0f);
}

}  // namespace
