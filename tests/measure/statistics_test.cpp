#include <cmath>
#include <cstring>
#include <type_traits>

#include "measure_test_util.h"

namespace {

using meastest::Span;
using meastest::Value;
using testsupport::Rng;

// ---------------------------------------------------------------- direct model

// Every statistic of the ImgPixel... family on a grey ROI, computed pixel by
// pixel with the accumulator widths that the operations keep.
template <class P>
struct GreyModel {
  using Wide = std::conditional_t<std::is_same<P, EBW8>::value, uint32_t, uint64_t>;
  uint32_t below = 0, between = 0, above = 0;
  unsigned int lo = 255, hi = 0, firstLo = 0, firstHi = 0;
  float statAverage = 0, average = 0, variance = 0, mean = 0;

  GreyModel(const EROI<P>& r, unsigned int low, unsigned int high) {
    const int w = r.GetWidth(), h = r.GetHeight();
    firstLo = firstHi = Value(r, 0, 0);
    Wide sum = 0;
    double squares = 0, rowMeans = 0;
    for (int y = 0; y < h; ++y) {
      Wide q = 0;
      uint32_t rowSum = 0;
      for (int x = 0; x < w; ++x) {
        const unsigned int v = Value(r, x, y);
        if (v < low) ++below;
        else if (v < high) ++between;
        else ++above;
        lo = std::min(lo, v);
        hi = std::max(hi, v);
        firstLo = std::min(firstLo, v);
        firstHi = std::max(firstHi, v);
        sum += v;
        rowSum += v;
        q += static_cast<Wide>(v * v);
      }
      squares += static_cast<double>(q);
      rowMeans += static_cast<double>(static_cast<int32_t>(rowSum)) / w;
    }
    const uint32_t n = static_cast<uint32_t>(w * h);
    statAverage = static_cast<float>(rowMeans / h);
    const double s = std::is_same<P, EBW8>::value ? static_cast<double>(sum)
                                                  : static_cast<double>(static_cast<int64_t>(sum));
    average = mean = static_cast<float>(s / n);
    const double v = (n * squares - s * s) / (static_cast<double>(n) * n);
    variance = static_cast<float>(v < 0 ? 0 : v);
  }
};

uint32_t DifferModel(const EROI<EBW8>& a, const EROI<EBW8>& b) {
  uint32_t c = 0;
  for (int y = 0; y < a.GetHeight(); ++y)
    for (int x = 0; x < a.GetWidth(); ++x) c += Value(a, x, y) != Value(b, x, y);
  return c;
}

// ---------------------------------------------------------------- grey, every path

TEST(PixelStatisticsBW8, MatchModelOnRandomRoisOnEveryPath) {
  Rng rng(801);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 50; ++iter) {
      EImage<EBW8> image, other;
      EROI<EBW8> roi, roi2;
      meastest::RandomRoi(image, roi, rng, iter < 5 ? 2000 : 300, 5, iter % 2 == 1);
      testsupport::PlaceRandom(other, roi2, roi.GetWidth(), roi.GetHeight(), rng);
      for (int y = 0; y < roi.GetHeight(); ++y)  // most pixels equal, some not
        for (int x = 0; x < roi.GetWidth(); ++x)
          roi2.SetPixel(rng() % 5 ? roi.GetPixel(x, y) : EBW8(static_cast<unsigned char>(rng())), x, y);
      const unsigned int low = rng() % 256, high = iter % 7 == 0 ? low / 2 : rng() % 256;
      const GreyModel<EBW8> m(roi, low, high);
      const std::string at = "path " + std::to_string(path) + " w " + std::to_string(roi.GetWidth());

      int below = -1, between = -1, above = -1, area = -1;
      ASSERT_EQ(ImgPixelCount(&roi, static_cast<unsigned char>(low), static_cast<unsigned char>(high), below,
                              between, above), 0);
      EXPECT_EQ(static_cast<uint32_t>(below), m.below) << at;
      EXPECT_EQ(static_cast<uint32_t>(between), m.between) << at;
      EXPECT_EQ(static_cast<uint32_t>(above), m.above) << at;
      ASSERT_EQ(ImgAreaDoubleThreshold(&roi, static_cast<unsigned char>(low), static_cast<unsigned char>(high), area), 0);
      EXPECT_EQ(static_cast<uint32_t>(area), m.between) << at;
      ASSERT_EQ(ImgArea(&roi, static_cast<unsigned char>(high), area), 0);
      EXPECT_EQ(area, static_cast<int>(GreyModel<EBW8>(roi, 0, high).above)) << at;

      unsigned char mn = 0, mx = 0;
      float avg = -1, var = -1, mean = -1, dev = -1;
      ASSERT_EQ(ImgPixelMin(&roi, mn), 0);
      ASSERT_EQ(ImgPixelMax(&roi, mx), 0);
      EXPECT_EQ(mn, m.lo) << at;
      EXPECT_EQ(mx, m.hi) << at;
      ASSERT_EQ(ImgPixelStat(&roi, mn, mx, avg), 0);
      EXPECT_EQ(mn, m.firstLo) << at;
      EXPECT_EQ(mx, m.firstHi) << at;
      EXPECT_EQ(avg, m.statAverage) << at;
      ASSERT_EQ(ImgPixelAverage(&roi, avg), 0);
      EXPECT_EQ(avg, m.average) << at;
      ImgPixelVariance(&roi, var, mean);
      ASSERT_EQ(EGetError(), E_OK);
      EXPECT_EQ(var, m.variance) << at;
      EXPECT_EQ(mean, m.mean) << at;
      ASSERT_EQ(ImgPixelStdDev(&roi, dev, mean), 0);
      EXPECT_EQ(dev, std::sqrt(m.variance)) << at;
      EXPECT_EQ(ImgPixelCompare(&roi, &roi2), DifferModel(roi, roi2)) << at;
      EXPECT_EQ(EGetError(), E_OK);
    }
  }
}

// ImgArea, ImgAverage, ImgMinimum, ImgMaximum and ImgVariance visit the runs
// only, given as addresses or as offsets.
TEST(PixelStatisticsBW8, RunMaskedFamilyMatchesModelOnEveryPath) {
  Rng rng(802);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 45; ++iter) {
      EImage<EBW8> image;
      EROI<EBW8> roi;
      meastest::RandomRoi(image, roi, rng, 300, 6, iter % 2 == 1);
      const int mode = iter % 3;
      const std::vector<Span> spans = mode ? meastest::RandomRuns(roi, rng, mode) : meastest::AllSpans(roi);
      const unsigned int t = iter % 5 == 0 ? 255 + iter : rng() % 256;
      uint32_t n = 0, sum = 0, over = 0, hist[256] = {};
      unsigned int lo = 255, hi = 0;
      for (const Span& s : spans)
        for (int x = s.x; x < s.x + s.n; ++x) {
          const unsigned int v = Value(roi, x, s.y);
          ++n;
          sum += v;
          over += v > t;
          ++hist[v];
          lo = std::min(lo, v);
          hi = std::max(hi, v);
        }
      const std::string at = "path " + std::to_string(path) + " mode " + std::to_string(mode);
      EXPECT_EQ(ImgArea(&roi), n) << at;
      EXPECT_EQ(ImgArea(&roi, t), over) << at;
      unsigned int count = 12345;
      const float avg = ImgAverage(&roi, &count);
      EXPECT_EQ(count, n) << at;
      if (n > 0) EXPECT_EQ(avg, static_cast<float>(static_cast<double>(sum) / n)) << at;
      else EXPECT_TRUE(std::isnan(avg)) << at;
      EXPECT_EQ(ImgMinimum(&roi), lo) << at;
      EXPECT_EQ(ImgMaximum(&roi), hi) << at;
      // Variance from the histogram: the mean, then the centred moment.
      float mean = -1;
      unsigned int integerMean = 999;
      const float var = ImgVariance(&roi, &mean, &integerMean);
      if (n == 0) {
        EXPECT_FAILED(E_ERROR_NO_SOLUTION, "ImgHistogramMoments ( 1)");
        continue;
      }
      ASSERT_EQ(EGetError(), E_OK) << at;
      uint32_t s1 = 0;
      double acc = 0;
      for (uint32_t i = 0; i < 256; ++i) {
        s1 += i * hist[i];
        acc += static_cast<double>(hist[i]) * (i * (i + 1) / 2);
      }
      const double m = static_cast<double>(s1) / n;
      EXPECT_EQ(integerMean, static_cast<unsigned int>(m)) << at;
      EXPECT_EQ(mean, static_cast<float>(m)) << at;
      EXPECT_EQ(var, static_cast<float>((2 * acc - s1) / n - m * m)) << at;
    }
  }
}

// ---------------------------------------------------------------- 16-bit and colour

TEST(PixelStatisticsBW16, MatchModelOnRandomRois) {
  Rng rng(803);
  for (int iter = 0; iter < 40; ++iter) {
    EImage<EBW16> image, other;
    EROI<EBW16> roi, roi2;
    meastest::RandomRoi(image, roi, rng, 90, 5);
    if (iter % 3 == 0)  // small values, so that the minimum's start of 255 is passed
      for (int y = 0; y < roi.GetHeight(); ++y)
        for (int x = 0; x < roi.GetWidth(); ++x) roi.SetPixel(EBW16(static_cast<unsigned short>(rng() % 400)), x, y);
    testsupport::PlaceRandom(other, roi2, roi.GetWidth(), roi.GetHeight(), rng);
    uint32_t differ = 0;
    for (int y = 0; y < roi.GetHeight(); ++y)
      for (int x = 0; x < roi.GetWidth(); ++x) {
        const EBW16 v = rng() % 4 ? roi.GetPixel(x, y) : EBW16(static_cast<unsigned short>(rng()));
        roi2.SetPixel(v, x, y);
        differ += v.value != roi.GetPixel(x, y).value;
      }
    const unsigned int low = rng() % 65536, high = iter % 5 == 0 ? low / 3 : rng() % 65536;
    const GreyModel<EBW16> m(roi, low, high);
    int below = -1, between = -1, above = -1, area = -1;
    ImgPixelCount(&roi, EBW16(static_cast<unsigned short>(low)), EBW16(static_cast<unsigned short>(high)), below,
                  between, above);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(static_cast<uint32_t>(below), m.below);
    EXPECT_EQ(static_cast<uint32_t>(between), m.between);
    EXPECT_EQ(static_cast<uint32_t>(above), m.above);
    ImgAreaDoubleThreshold(&roi, EBW16(static_cast<unsigned short>(low)), EBW16(static_cast<unsigned short>(high)), area);
    EXPECT_EQ(static_cast<uint32_t>(area), m.between);
    ImgArea(&roi, EBW16(static_cast<unsigned short>(high)), area);
    EXPECT_EQ(static_cast<uint32_t>(area), GreyModel<EBW16>(roi, 0, high).above);
    EBW16 mn(0), mx(0);
    float avg = -1, var = -1, mean = -1;
    ImgPixelMin(&roi, mn);
    ImgPixelMax(&roi, mx);
    EXPECT_EQ(mn.value, m.lo);
    EXPECT_EQ(mx.value, m.hi);
    ImgPixelStat(&roi, mn, mx, avg);
    EXPECT_EQ(mn.value, m.firstLo);
    EXPECT_EQ(mx.value, m.firstHi);
    EXPECT_EQ(avg, m.statAverage);
    ImgPixelAverage(&roi, avg);
    EXPECT_EQ(avg, m.average);
    ImgPixelVariance(&roi, var, mean);
    EXPECT_EQ(var, m.variance);
    EXPECT_EQ(mean, m.mean);
    ImgPixelStdDev(&roi, var, mean);
    EXPECT_EQ(var, std::sqrt(m.variance));
    EXPECT_EQ(ImgPixelCompare(&roi, &roi2), differ);
    EXPECT_EQ(EGetError(), E_OK);
  }
}

// The nine colour outputs: component 0 is the third byte. Covariances by
// polarisation with 32-bit row sums added to float totals.
TEST(PixelStatisticsC24, AverageVarianceDeviationAndCompareMatchModel) {
  Rng rng(804);
  for (int iter = 0; iter < 30; ++iter) {
    EImage<EC24> image, other;
    EROI<EC24> roi, roi2;
    meastest::RandomRoi(image, roi, rng, 70, 5);
    if (iter % 4 == 0)  // correlated components
      for (int y = 0; y < roi.GetHeight(); ++y)
        for (int x = 0; x < roi.GetWidth(); ++x) {
          const unsigned char a = static_cast<unsigned char>(rng());
          roi.SetPixel(EC24(a, static_cast<unsigned char>(255 - a), static_cast<unsigned char>(a / 2 + rng() % 9)), x, y);
        }
    testsupport::PlaceRandom(other, roi2, roi.GetWidth(), roi.GetHeight(), rng);
    uint32_t differ = 0, s[3] = {};
    float q[3] = {}, d[3] = {};
    for (int y = 0; y < roi.GetHeight(); ++y) {
      uint32_t rq[3] = {}, rd[3] = {};
      for (int x = 0; x < roi.GetWidth(); ++x) {
        const EC24 p = roi.GetPixel(x, y);
        EC24 o = p;
        if (rng() % 3 == 0) o[rng() % 3] ^= static_cast<unsigned char>(1 + rng() % 255);
        roi2.SetPixel(o, x, y);
        differ += std::memcmp(&o, &p, 3) != 0;
        const uint32_t c[3] = {p[2], p[1], p[0]};
        for (int k = 0; k < 3; ++k) {
          s[k] += c[k];
          rq[k] += c[k] * c[k];
          const uint32_t e = c[k] - c[(k + 1) % 3];
          rd[k] += e * e;
        }
      }
      for (int k = 0; k < 3; ++k) {
        q[k] += static_cast<float>(rq[k]);
        d[k] += static_cast<float>(rd[k]);
      }
    }
    const double inv = 1.0 / (roi.GetWidth() * roi.GetHeight());
    double m[3], v[3];
    for (int k = 0; k < 3; ++k) {
      m[k] = s[k] * inv;
      v[k] = std::max(0.0, q[k] * inv - m[k] * m[k]);
    }
    const float cov[3] = {static_cast<float>((q[1] + q[0] - d[0]) * inv * 0.5 - m[0] * m[1]),
                          static_cast<float>((q[2] + q[1] - d[1]) * inv * 0.5 - m[1] * m[2]),
                          static_cast<float>((q[2] + q[0] - d[2]) * inv * 0.5 - m[0] * m[2])};
    float o[9], a[3];
    ImgPixelAverage(&roi, a[0], a[1], a[2]);
    ImgPixelVariance(&roi, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], o[8]);
    ASSERT_EQ(EGetError(), E_OK);
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(a[k], static_cast<float>(m[k]));
      EXPECT_EQ(o[6 + k], static_cast<float>(m[k]));
      EXPECT_EQ(o[k], static_cast<float>(v[k]));
      EXPECT_EQ(o[3 + k], cov[k]);
    }
    ImgPixelStdDev(&roi, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], o[8]);
    const float dev[3] = {std::sqrt(static_cast<float>(v[0])), std::sqrt(static_cast<float>(v[1])),
                          std::sqrt(static_cast<float>(v[2]))};
    const int pa[3] = {0, 2, 2}, pb[3] = {1, 1, 0};
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(o[k], dev[k]);
      const float prod = dev[pa[k]] * dev[pb[k]];
      EXPECT_EQ(o[3 + k], prod > 0 ? cov[k] / prod : 0.0f);
    }
    EXPECT_EQ(ImgPixelCompare(&roi, &roi2), differ);
  }
}

// ---------------------------------------------------------------- worked cases

TEST(PixelStatistics, ConstantRoisAndThresholdEdges) {
  EImage<EBW8> image(37, 5);
  std::memset(image.GetImagePtr(0, 0), 128, static_cast<size_t>(image.GetRowPitch()) * 5);
  float var = -1, mean = -1;
  ImgPixelVariance(&image, var, mean);
  EXPECT_EQ(var, 0.0f);
  EXPECT_EQ(mean, 128.0f);
  EXPECT_EQ(ImgVariance(&image), 0.0f);
  // Strictly above 128 against at or above 128.
  int area = -1;
  EXPECT_EQ(ImgArea(&image, 128u), 0u);
  EXPECT_EQ(ImgArea(&image, static_cast<unsigned char>(128), area), 0);
  EXPECT_EQ(area, 37 * 5);
  EXPECT_EQ(ImgArea(&image, 127u), 37u * 5);
  // Low above high: nothing between.
  int below = -1, between = -1, above = -1;
  ImgPixelCount(&image, 200, 100, below, between, above);
  EXPECT_EQ(below, 37 * 5);
  EXPECT_EQ(between, 0);
  ImgPixelCount(&image, 129, 100, below, between, above);
  EXPECT_EQ(between, 0);
  EXPECT_EQ(below, 37 * 5);
  EXPECT_EQ(above, 0);
  unsigned char mn = 0, mx = 0;
  float avg = 0;
  ImgPixelStat(&image, mn, mx, avg);
  EXPECT_EQ(mn, mx);

  // Colour constant: correlations 0.
  EImage<EC24> colour(9, 3);
  std::memset(colour.GetImagePtr(0, 0), 77, static_cast<size_t>(colour.GetRowPitch()) * 3);
  float o[9];
  ImgPixelStdDev(&colour, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], o[8]);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(o[k], 0.0f) << k;
  EXPECT_EQ(o[6], 77.0f);

  // 16-bit of value 1000: the minimum stays at its start of 255.
  EImage<EBW16> wide(6, 4);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 6; ++x) wide.SetPixel(EBW16(1000), x, y);
  EBW16 m16(0), n16(0);
  ImgPixelMin(&wide, m16);
  EXPECT_EQ(m16.value, 255);
  ImgPixelMax(&wide, m16);
  EXPECT_EQ(m16.value, 1000);
  ImgPixelStat(&wide, m16, n16, avg);
  EXPECT_EQ(m16.value, 1000);
  EXPECT_EQ(n16.value, 1000);
  EXPECT_EQ(avg, 1000.0f);
}

// The row split of the squares wraps above about 66,000 pixels at 255 a row;
// the whole-ROI sums wrap above about 16.8 million.
TEST(PixelStatistics, WrapAroundWhereTheSumsAre32Bits) {
  for (int path : {-1, testsupport::AllPaths().back()}) {
    testsupport::PathGuard guard(path);
    EImage<EBW8> row(70001, 2);
    std::memset(row.GetImagePtr(0, 0), 255, static_cast<size_t>(row.GetRowPitch()) * 2);
    float var = -1, mean = -1;
    ImgPixelVariance(&row, var, mean);
    const uint32_t n = 140002, s = n * 255u;
    const double q = 2.0 * static_cast<uint32_t>(70001u * 65025u);
    EXPECT_EQ(var, static_cast<float>(std::max(0.0, (n * q - double(s) * s) / (double(n) * n))));
    EXPECT_LT(var, 0.0f + 1.0f);  // the wrapped squares fall short of the mean's square
    EXPECT_EQ(mean, 255.0f);
  }
  EImage<EBW8> big(4112, 4100);
  std::memset(big.GetImagePtr(0, 0), 255, static_cast<size_t>(big.GetRowPitch()) * 4100);
  const uint32_t n = 4112u * 4100u, s = n * 255u;
  float avg = 0;
  ImgPixelAverage(&big, avg);
  EXPECT_EQ(avg, static_cast<float>(static_cast<double>(s) / n));
  EXPECT_LT(avg, 1.0f);
  EXPECT_EQ(ImgAverage(&big), avg);
  EXPECT_EQ(ImgArea(&big), n);
}

int IsOdd8(EBW8& p) { return p.value & 1; }
int Bump16(EBW16& p) {
  ++p.value;
  return p.value > 500;
}
int Has0(EC24& p) { return p[0] == 0; }

TEST(PixelStatistics, CountCallsThePredicateOnEveryPixelInOrder) {
  Rng rng(805);
  EImage<EBW8> image;
  EROI<EBW8> roi;
  meastest::RandomRoi(image, roi, rng, 50, 6);
  uint32_t odd = 0;
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) odd += Value(roi, x, y) & 1;
  EXPECT_EQ(ImgCount(&roi, IsOdd8), odd);
  EImage<EBW16> wide(5, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 5; ++x) wide.SetPixel(EBW16(static_cast<unsigned short>(498 + x)), x, y);
  EXPECT_EQ(ImgCount(&wide, Bump16), 9u);  // 501, 502, 503 on each row
  EXPECT_EQ(wide.GetPixel(4, 2).value, 503);  // the reference reaches the pixel itself
  EImage<EC24> colour(4, 2);
  std::memset(colour.GetImagePtr(0, 0), 1, static_cast<size_t>(colour.GetRowPitch()) * 2);
  colour.SetPixel(EC24(0, 5, 5), 3, 1);
  EXPECT_EQ(ImgCount(&colour, Has0), 1u);
}

// ---------------------------------------------------------------- bad input

TEST(PixelStatistics, BadInputGivesCodeLabelAndLeavesResultsAlone) {
  EROI<EBW8> v8;
  EROI<EBW16> v16;
  EROI<EC24> vc;
  int i = 7, j = 7, k = 7;
  unsigned char c = 7;
  float f = 7, g = 7, o[9];
  EBW16 w(7);
  EXPECT_EQ(ImgPixelCount(&v8, 1, 2, i, j, k), E_ERROR_VOID_IMAGE);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelCount");
  EXPECT_EQ(ImgArea(&v8, static_cast<unsigned char>(3), i), E_ERROR_VOID_IMAGE);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelCount <- ImgArea");
  ImgAreaDoubleThreshold(&v16, EBW16(1), EBW16(2), i);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelCount (BW16) <- ImgAreaDoubleThreshold (BW16)");
  EXPECT_EQ(i, 7);
  EXPECT_EQ(ImgPixelStat(&v8, c, c, f), E_ERROR_VOID_IMAGE);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelStat");
  ImgPixelStat(&v16, w, w, f);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelStat (BW16)");
  EXPECT_EQ(ImgPixelAverage(&v8, f), E_ERROR_VOID_IMAGE);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelAverage ( BW8)");
  ImgPixelAverage(&vc, f, f, f);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelAverage ( C24)");
  ImgPixelVariance(&v16, f, g);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelVariance ( BW16)");
  EXPECT_EQ(ImgPixelStdDev(&v8, f, g), E_ERROR_VOID_IMAGE);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelVariance ( BW8) <- ImgPixelStdDev");
  ImgPixelStdDev(&vc, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], o[8]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelVariance ( C24) <- ImgPixelStdDev");
  EXPECT_EQ(ImgPixelMin(&v8, c), E_ERROR_VOID_IMAGE);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelMin");
  ImgPixelMax(&v16, w);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelMax (BW16)");
  EXPECT_EQ(c, 7);
  EXPECT_EQ(f, 7.0f);
  EXPECT_EQ(w.value, 7);
  EXPECT_EQ(ImgArea(&v8), 0u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgArea ( all pixels)");
  EXPECT_EQ(ImgArea(&v8, 3u), 0u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgArea ( binarized)");
  unsigned int count = 9;
  EXPECT_EQ(ImgAverage(&v8, &count), 0.0f);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgAverage");
  EXPECT_EQ(count, 9u);
  EXPECT_EQ(ImgMinimum(&v8), 255u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgMinimum");
  EXPECT_EQ(ImgMaximum(&v8), 0u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgMaximum");
  for (int path : {-1, testsupport::AllPaths().back()}) {  // with and without the histogram
    testsupport::PathGuard guard(path);
    float mean = 3;
    EXPECT_EQ(ImgVariance(&v8, &mean), 0.0f);
    EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgHistogram");
    EXPECT_EQ(mean, 3.0f);
  }
  EXPECT_EQ(ImgCount(&vc, Has0), 0u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgCount ( C24)");

  // Comparison: both ROIs are checked, then the sizes; 0 on failure.
  EImage<EBW8> a(5, 4), b(5, 3);
  std::memset(a.GetImagePtr(0, 0), 1, static_cast<size_t>(a.GetRowPitch()) * 4);
  std::memset(b.GetImagePtr(0, 0), 2, static_cast<size_t>(b.GetRowPitch()) * 3);
  EXPECT_EQ(ImgPixelCompare(&a, &b), 0u);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgPixelCompare ( BW8)");
  EXPECT_EQ(ImgPixelCompare(&a, &v8), 0u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelCompare ( BW8)");
  EImage<EC24> ca(2, 2), cb(3, 2);
  EXPECT_EQ(ImgPixelCompare(&ca, &cb), 0u);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgPixelCompare ( C24)");
  EImage<EBW16> wa(2, 2);
  EXPECT_EQ(ImgPixelCompare(&v16, &wa), 0u);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgPixelCompare ( BW16)");

  // A ROI of no pixel: the averages and variances refuse it, the counts
  // and extremes give their starts.
  EROI<EBW8> empty;
  empty.Attach(&a);
  EXPECT_EQ(ImgPixelAverage(&empty, f), E_ERROR_VOID_IMAGE);
  ImgPixelVariance(&empty, f, g);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(ImgArea(&empty), 0u);
  EXPECT_EQ(ImgMinimum(&empty), 255u);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(ImgPixelMin(&empty, c), 0);
  EXPECT_EQ(c, 255);
}

}  // namespace
