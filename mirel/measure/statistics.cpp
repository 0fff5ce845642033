// Pixel statistics on grey, 16-bit and colour ROIs.
#include "mirel/measure/statistics.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/run_walk_internal.h"
#include "mirel/histogram/histogram.h"
#include "mirel/measure/statistics_internal.h"
#include "mirel/point/bits_internal.h"

namespace mirel {
namespace measure {
namespace {

std::uint64_t SumScalar(const unsigned char* p, std::size_t n) {
  std::uint64_t s = 0;
  for (std::size_t i = 0; i < n; ++i) s += p[i];
  return s;
}

void SumSquaresScalar(const unsigned char* p, std::size_t n, std::uint64_t* sum, std::uint64_t* squares) {
  std::uint64_t s = 0, q = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t v = p[i];
    s += v;
    q += v * v;
  }
  *sum = s;
  *squares = q;
}

std::size_t CountAtLeastScalar(const unsigned char* p, std::size_t n, unsigned int t) {
  std::size_t c = 0;
  for (std::size_t i = 0; i < n; ++i) c += p[i] >= t ? 1 : 0;
  return c;
}

void CountAtLeast2Scalar(const unsigned char* p, std::size_t n, unsigned int t1, unsigned int t2, std::size_t* c1,
                         std::size_t* c2) {
  std::size_t a = 0, b = 0;
  for (std::size_t i = 0; i < n; ++i) {
    a += p[i] >= t1 ? 1 : 0;
    b += p[i] >= t2 ? 1 : 0;
  }
  *c1 = a;
  *c2 = b;
}

void MinMaxScalar(const unsigned char* p, std::size_t n, unsigned char* lo, unsigned char* hi) {
  unsigned char a = *lo, b = *hi;
  for (std::size_t i = 0; i < n; ++i) {
    if (a >= p[i]) a = p[i];
    if (b <= p[i]) b = p[i];
  }
  *lo = a;
  *hi = b;
}

std::size_t CountDifferScalar(const unsigned char* a, const unsigned char* b, std::size_t n) {
  std::size_t c = 0;
  for (std::size_t i = 0; i < n; ++i) c += a[i] != b[i] ? 1 : 0;
  return c;
}

}  // namespace

const ByteKernels& ScalarByteKernels() {
  static const ByteKernels k{SumScalar, SumSquaresScalar, CountAtLeastScalar, CountAtLeast2Scalar, MinMaxScalar,
                             CountDifferScalar, PairSumsScalar};
  return k;
}

const ByteKernels& PickByteKernels(int mmx) {
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    const int level = cpu::ActiveSimdLevel();
    if (level >= cpu::kAVX512) return ByteKernelsAVX512();
    if (level >= cpu::kAVX2) return ByteKernelsAVX2();
    if (level >= cpu::kSSE2) return ByteKernelsSSE2();
  }
#else
  (void)mmx;
#endif
  return ScalarByteKernels();
}

}  // namespace measure
}  // namespace mirel

namespace {

using mirel::measure::ByteKernels;
using mirel::measure::PickByteKernels;

// Bytes of row y of an EBW8 row view.
inline const unsigned char* Bytes(const mirel::Rows<const EBW8>& rows, int y) {
  return reinterpret_cast<const unsigned char*>(rows.Row(y));
}

// Integer totals of `rows` rows of about `rowCost` units each, in bands:
// part(y0, y1) gives the totals of rows [y0, y1) as an array, and the bands'
// totals are added afterwards (unsigned sums that wrap, or that cannot, give
// the same totals in any order). One band without memory for the parts.
template <class A, class F>
A BandTotals(int rows, double rowCost, F&& part) {
  const mirel::Bands bands(rows, rowCost);
  std::unique_ptr<A[]> parts;
  if (bands.Count() > 1) parts.reset(new (std::nothrow) A[static_cast<std::size_t>(bands.Count())]);
  if (parts == nullptr) return part(0, rows);
  bands.Run([&](int band, int y0, int y1) { parts[static_cast<std::size_t>(band)] = part(y0, y1); });
  A total = parts[0];
  for (int band = 1; band < bands.Count(); ++band)
    for (std::size_t i = 0; i < total.size(); ++i) total[i] += parts[static_cast<std::size_t>(band)][i];
  return total;
}

template <class U, std::size_t N>
using Totals = std::array<U, N>;

// Pixel counts of an EBW8 ROI (run masks ignored): below low, between, above.
void Count3(const EROI<EBW8>* roi, unsigned int low, unsigned int high, const ByteKernels& k, std::uint32_t* below,
            std::uint32_t* between, std::uint32_t* above) {
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(roi);
  using T3 = Totals<std::uint32_t, 3>;
  const T3 t = BandTotals<T3>(rows.height, mirel::RowCost(rows.width, 1.0), [&](int y0, int y1) {
    T3 part{0, 0, 0};
    for (int y = y0; y < y1; ++y) {
      std::size_t a = 0, b = 0;
      k.countAtLeast2(Bytes(rows, y), static_cast<std::size_t>(rows.width), low, high, &a, &b);
      part[0] += static_cast<std::uint32_t>(a);
      part[1] += static_cast<std::uint32_t>(b);
      part[2] += static_cast<std::uint32_t>(rows.width);
    }
    return part;
  });
  const std::uint32_t atLow = t[0], atHigh = t[1], all = t[2];
  *below = all - atLow;
  // p >= low and p < high; with low above high no pixel is both.
  *between = low <= high ? atLow - atHigh : 0u;
  *above = low <= high ? atHigh : atLow;
}

template <class P>
void Count3Scalar(const EROI<P>* roi, std::uint32_t low, std::uint32_t high, std::uint32_t* below,
                  std::uint32_t* between, std::uint32_t* above) {
  const mirel::Rows<const P> rows = mirel::RowsOf(roi);
  using T3 = Totals<std::uint32_t, 3>;
  const T3 t = BandTotals<T3>(rows.height, mirel::RowCost(rows.width, 2.0 * sizeof(P)), [&](int y0, int y1) {
    T3 part{0, 0, 0};
    for (int y = y0; y < y1; ++y) {
      const P* p = rows.Row(y);
      for (int x = 0; x < rows.width; ++x) {
        const std::uint32_t v = p[x].value;
        if (v < low) ++part[0];
        else if (v < high) ++part[1];
        else ++part[2];
      }
    }
    return part;
  });
  *below = t[0];
  *between = t[1];
  *above = t[2];
}

bool HasPixels(const EGenericROI* roi) {
  return roi != nullptr && roi->Void() == 0 && roi->GetWidth() >= 1 && roi->GetHeight() >= 1;
}

}  // namespace

// ---------------------------------------------------------------- counts

unsigned int ImgArea(const EROI<EBW8>* roi) {
  mirel::Frame frame("ImgArea ( all pixels)");
  if (!frame.NotVoid(roi)) return 0;
  if (roi->GetNumRuns() <= 0)
    return static_cast<unsigned int>(roi->GetWidth()) * static_cast<unsigned int>(roi->GetHeight());
  std::uint32_t area = 0;
  mirel::ForEachSpan(roi, [&](const unsigned char*, std::size_t n, int, int) { area += static_cast<std::uint32_t>(n); });
  return area;
}

unsigned int ImgArea(const EROI<EBW8>* roi, unsigned int threshold) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgArea ( binarized)");
  if (!frame.NotVoid(roi)) return 0;
  if (threshold >= 255) return 0;
  const ByteKernels& k = PickByteKernels(mmx);
  std::uint32_t area = 0;
  mirel::ForEachSpan(roi, [&](const unsigned char* p, std::size_t n, int, int) {
    area += static_cast<std::uint32_t>(k.countAtLeast(p, n, threshold + 1));
  });
  return area;
}

short ImgPixelCount(const EROI<EBW8>* roi, unsigned char low, unsigned char high, int& below, int& between,
                    int& above) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelCount");
  if (!frame.NotVoid(roi)) return frame.Result();
  std::uint32_t b = 0, m = 0, a = 0;
  Count3(roi, low, high, PickByteKernels(mmx), &b, &m, &a);
  below = static_cast<int>(b);
  between = static_cast<int>(m);
  above = static_cast<int>(a);
  return frame.Result();
}

void ImgPixelCount(const EROI<EBW16>* roi, EBW16 low, EBW16 high, int& below, int& between, int& above) {
  mirel::Frame frame("ImgPixelCount (BW16)");
  if (!frame.NotVoid(roi)) return;
  std::uint32_t b = 0, m = 0, a = 0;
  Count3Scalar(roi, low.value, high.value, &b, &m, &a);
  below = static_cast<int>(b);
  between = static_cast<int>(m);
  above = static_cast<int>(a);
}

short ImgArea(const EROI<EBW8>* roi, unsigned char threshold, int& area) {
  mirel::Frame frame("ImgArea");
  int below = 0, between = 0, above = 0;
  ImgPixelCount(roi, 0, threshold, below, between, above);
  if (EGetError() == E_OK) area = above;
  return frame.Result();
}

void ImgArea(const EROI<EBW16>* roi, EBW16 threshold, int& area) {
  mirel::Frame frame("ImgArea (BW16)");
  int below = 0, between = 0, above = 0;
  ImgPixelCount(roi, EBW16(0), threshold, below, between, above);
  if (EGetError() == E_OK) area = above;
}

short ImgAreaDoubleThreshold(const EROI<EBW8>* roi, unsigned char low, unsigned char high, int& area) {
  mirel::Frame frame("ImgAreaDoubleThreshold");
  int below = 0, between = 0, above = 0;
  ImgPixelCount(roi, low, high, below, between, above);
  if (EGetError() == E_OK) area = between;
  return frame.Result();
}

void ImgAreaDoubleThreshold(const EROI<EBW16>* roi, EBW16 low, EBW16 high, int& area) {
  mirel::Frame frame("ImgAreaDoubleThreshold (BW16)");
  int below = 0, between = 0, above = 0;
  ImgPixelCount(roi, low, high, below, between, above);
  if (EGetError() == E_OK) area = between;
}

// ---------------------------------------------------------------- extremes and means

short ImgPixelStat(const EROI<EBW8>* roi, unsigned char& min, unsigned char& max, float& average) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelStat");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return frame.Result();
  const ByteKernels& k = PickByteKernels(mmx);
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(roi);
  unsigned char lo = Bytes(rows, 0)[0], hi = lo;
  double total = 0.0;
  for (int y = 0; y < rows.height; ++y) {
    const unsigned char* p = Bytes(rows, y);
    const std::size_t n = static_cast<std::size_t>(rows.width);
    k.minMax(p, n, &lo, &hi);
    const std::int32_t s = static_cast<std::int32_t>(static_cast<std::uint32_t>(k.sum(p, n)));
    total += static_cast<double>(s) / rows.width;
  }
  min = lo;
  max = hi;
  average = static_cast<float>(total / rows.height);
  return frame.Result();
}

void ImgPixelStat(const EROI<EBW16>* roi, EBW16& min, EBW16& max, float& average) {
  mirel::Frame frame("ImgPixelStat (BW16)");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return;
  const mirel::Rows<const EBW16> rows = mirel::RowsOf(roi);
  unsigned int lo = rows.Row(0)[0].value, hi = lo;
  double total = 0.0;
  for (int y = 0; y < rows.height; ++y) {
    const EBW16* p = rows.Row(y);
    std::uint32_t s = 0;
    for (int x = 0; x < rows.width; ++x) {
      const unsigned int v = p[x].value;
      s += v;
      // The maximum is tested only when the minimum did not move.
      if (v < lo) lo = v;
      else if (v > hi) hi = v;
    }
    total += static_cast<double>(static_cast<std::int32_t>(s)) / rows.width;
  }
  min = EBW16(static_cast<unsigned short>(lo));
  max = EBW16(static_cast<unsigned short>(hi));
  average = static_cast<float>(total / rows.height);
}

short ImgPixelAverage(const EROI<EBW8>* roi, float& average) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelAverage ( BW8)");
  if (!frame.Require(HasPixels(roi) && roi->GetOrgX() >= 0 && roi->GetOrgY() >= 0, E_ERROR_VOID_IMAGE))
    return frame.Result();
  const ByteKernels& k = PickByteKernels(mmx);
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(roi);
  using T1 = Totals<std::uint32_t, 1>;
  const std::uint32_t sum = BandTotals<T1>(rows.height, mirel::RowCost(rows.width, 1.0), [&](int y0, int y1) {
    T1 part{0};
    for (int y = y0; y < y1; ++y)
      part[0] += static_cast<std::uint32_t>(k.sum(Bytes(rows, y), static_cast<std::size_t>(rows.width)));
    return part;
  })[0];
  const std::uint32_t n = static_cast<std::uint32_t>(rows.width) * static_cast<std::uint32_t>(rows.height);
  average = static_cast<float>(static_cast<double>(sum) / n);
  return frame.Result();
}

void ImgPixelAverage(const EROI<EBW16>* roi, float& average) {
  mirel::Frame frame("ImgPixelAverage ( BW16)");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return;
  const mirel::Rows<const EBW16> rows = mirel::RowsOf(roi);
  using T1 = Totals<std::uint64_t, 1>;
  const std::uint64_t sum = BandTotals<T1>(rows.height, mirel::RowCost(rows.width, 2.0), [&](int y0, int y1) {
    T1 part{0};
    for (int y = y0; y < y1; ++y) {
      const EBW16* p = rows.Row(y);
      for (int x = 0; x < rows.width; ++x) part[0] += p[x].value;
    }
    return part;
  })[0];
  const std::uint32_t n = static_cast<std::uint32_t>(rows.width) * static_cast<std::uint32_t>(rows.height);
  average = static_cast<float>(static_cast<double>(static_cast<std::int64_t>(sum)) / n);
}

void ImgPixelAverage(const EROI<EC24>* roi, float& average0, float& average1, float& average2) {
  mirel::Frame frame("ImgPixelAverage ( C24)");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return;
  const mirel::Rows<const EC24> rows = mirel::RowsOf(roi);
  using T3 = Totals<std::uint32_t, 3>;
  const T3 s = BandTotals<T3>(rows.height, mirel::RowCost(rows.width, 3.0), [&](int y0, int y1) {
    T3 part{0, 0, 0};
    for (int y = y0; y < y1; ++y) {
      const EC24* p = rows.Row(y);
      for (int x = 0; x < rows.width; ++x) {
        part[0] += p[x].c[0];
        part[1] += p[x].c[1];
        part[2] += p[x].c[2];
      }
    }
    return part;
  });
  const std::uint32_t n = static_cast<std::uint32_t>(rows.width) * static_cast<std::uint32_t>(rows.height);
  const double inv = 1.0 / n;
  average0 = static_cast<float>(s[2] * inv);
  average1 = static_cast<float>(s[1] * inv);
  average2 = static_cast<float>(s[0] * inv);
}

namespace {

// The population variance (N*Q - S*S) / (N*N), 0 when rounding leaves it
// negative.
double Variance(double n, double s, double q) {
  const double v = (n * q - s * s) / (n * n);
  return v < 0.0 ? 0.0 : v;
}

}  // namespace

void ImgPixelVariance(const EROI<EBW8>* roi, float& variance, float& mean) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelVariance ( BW8)");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return;
  const ByteKernels& k = PickByteKernels(mmx);
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(roi);
  std::uint32_t sum = 0;
  double squares = 0.0;
  for (int y = 0; y < rows.height; ++y) {
    std::uint64_t s = 0, q = 0;
    k.sumSquares(Bytes(rows, y), static_cast<std::size_t>(rows.width), &s, &q);
    sum += static_cast<std::uint32_t>(s);
    squares += static_cast<double>(static_cast<std::uint32_t>(q));  // one row's squares in 32 bits
  }
  const std::uint32_t n = static_cast<std::uint32_t>(rows.width) * static_cast<std::uint32_t>(rows.height);
  mean = static_cast<float>(static_cast<double>(sum) / n);
  variance = static_cast<float>(Variance(n, sum, squares));
}

void ImgPixelVariance(const EROI<EBW16>* roi, float& variance, float& mean) {
  mirel::Frame frame("ImgPixelVariance ( BW16)");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return;
  const mirel::Rows<const EBW16> rows = mirel::RowsOf(roi);
  std::uint64_t sum = 0;
  double squares = 0.0;
  for (int y = 0; y < rows.height; ++y) {
    const EBW16* p = rows.Row(y);
    std::uint64_t q = 0;
    for (int x = 0; x < rows.width; ++x) {
      const std::uint32_t v = p[x].value;
      sum += v;
      q += v * v;
    }
    squares += static_cast<double>(q);
  }
  const std::uint32_t n = static_cast<std::uint32_t>(rows.width) * static_cast<std::uint32_t>(rows.height);
  mean = static_cast<float>(static_cast<double>(sum) / n);
  variance = static_cast<float>(Variance(n, static_cast<double>(sum), squares));
}

void ImgPixelVariance(const EROI<EC24>* roi, float& variance0, float& variance1, float& variance2,
                      float& covariance01, float& covariance12, float& covariance02, float& mean0, float& mean1,
                      float& mean2) {
  mirel::Frame frame("ImgPixelVariance ( C24)");
  if (!frame.Require(HasPixels(roi), E_ERROR_VOID_IMAGE)) return;
  const mirel::Rows<const EC24> rows = mirel::RowsOf(roi);
  // Component 0 is the pixel's third byte, 1 the second, 2 the first.
  std::uint32_t s0 = 0, s1 = 0, s2 = 0;
  float q0 = 0.0f, q1 = 0.0f, q2 = 0.0f, d01 = 0.0f, d12 = 0.0f, d20 = 0.0f;
  for (int y = 0; y < rows.height; ++y) {
    const EC24* p = rows.Row(y);
    std::uint32_t r0 = 0, r1 = 0, r2 = 0, e01 = 0, e12 = 0, e20 = 0;
    for (int x = 0; x < rows.width; ++x) {
      const std::uint32_t a = p[x].c[2], b = p[x].c[1], c = p[x].c[0];
      s0 += a;
      s1 += b;
      s2 += c;
      r0 += a * a;
      r1 += b * b;
      r2 += c * c;
      // No product of two components: the covariances come by polarisation.
      e01 += (a - b) * (a - b);
      e12 += (b - c) * (b - c);
      e20 += (c - a) * (c - a);
    }
    q0 += static_cast<float>(r0);
    q1 += static_cast<float>(r1);
    q2 += static_cast<float>(r2);
    d01 += static_cast<float>(e01);
    d12 += static_cast<float>(e12);
    d20 += static_cast<float>(e20);
  }
  const std::uint32_t n = static_cast<std::uint32_t>(rows.width) * static_cast<std::uint32_t>(rows.height);
  const double inv = 1.0 / n;
  const double m0 = s0 * inv, m1 = s1 * inv, m2 = s2 * inv;
  auto var = [inv](float q, double m) {
    const double v = q * inv - m * m;
    return static_cast<float>(v < 0.0 ? 0.0 : v);
  };
  variance0 = var(q0, m0);
  variance1 = var(q1, m1);
  variance2 = var(q2, m2);
  covariance01 = static_cast<float>((q1 + q0 - d01) * inv * 0.5 - m0 * m1);
  covariance12 = static_cast<float>((q2 + q1 - d12) * inv * 0.5 - m1 * m2);
  covariance02 = static_cast<float>((q2 + q0 - d20) * inv * 0.5 - m0 * m2);
  mean0 = static_cast<float>(m0);
  mean1 = static_cast<float>(m1);
  mean2 = static_cast<float>(m2);
}

short ImgPixelStdDev(const EROI<EBW8>* roi, float& deviation, float& mean) {
  mirel::Frame frame("ImgPixelStdDev");
  float v = 0.0f, m = 0.0f;
  ImgPixelVariance(roi, v, m);
  if (EGetError() == E_OK) {
    deviation = std::sqrt(v);
    mean = m;
  }
  return frame.Result();
}

void ImgPixelStdDev(const EROI<EBW16>* roi, float& deviation, float& mean) {
  mirel::Frame frame("ImgPixelStdDev");
  float v = 0.0f, m = 0.0f;
  ImgPixelVariance(roi, v, m);
  if (EGetError() != E_OK) return;
  deviation = std::sqrt(v);
  mean = m;
}

void ImgPixelStdDev(const EROI<EC24>* roi, float& deviation0, float& deviation1, float& deviation2,
                    float& correlation01, float& correlation12, float& correlation02, float& mean0, float& mean1,
                    float& mean2) {
  mirel::Frame frame("ImgPixelStdDev");
  float o[9];
  ImgPixelVariance(roi, o[0], o[1], o[2], o[3], o[4], o[5], o[6], o[7], o[8]);
  if (EGetError() != E_OK) return;
  for (int i = 0; i < 3; ++i) o[i] = std::sqrt(o[i]);
  // Pairs (0, 1), (2, 1), (2, 0) for the covariances 01, 12, 02.
  const int first[3] = {0, 2, 2}, second[3] = {1, 1, 0};
  for (int i = 0; i < 3; ++i) {
    const float d = o[first[i]] * o[second[i]];
    o[3 + i] = d > 0.0f ? o[3 + i] / d : 0.0f;
  }
  deviation0 = o[0];
  deviation1 = o[1];
  deviation2 = o[2];
  correlation01 = o[3];
  correlation12 = o[4];
  correlation02 = o[5];
  mean0 = o[6];
  mean1 = o[7];
  mean2 = o[8];
}

namespace {

// Minimum (from 255) and maximum (from 0) of every pixel of an EBW8 ROI.
void MinMax8(const EROI<EBW8>* roi, int mmx, unsigned char* lo, unsigned char* hi) {
  const ByteKernels& k = PickByteKernels(mmx);
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(roi);
  *lo = 255;
  *hi = 0;
  for (int y = 0; y < rows.height; ++y) k.minMax(Bytes(rows, y), static_cast<std::size_t>(rows.width), lo, hi);
}

// Minimum and maximum of a 16-bit ROI from the same starts, 255 and 0.
void MinMax16(const EROI<EBW16>* roi, unsigned int* lo, unsigned int* hi) {
  const mirel::Rows<const EBW16> rows = mirel::RowsOf(roi);
  unsigned int a = 255, b = 0;
  for (int y = 0; y < rows.height; ++y) {
    const EBW16* p = rows.Row(y);
    for (int x = 0; x < rows.width; ++x) {
      const unsigned int v = p[x].value;
      a = v < a ? v : a;
      b = v > b ? v : b;
    }
  }
  *lo = a;
  *hi = b;
}

}  // namespace

short ImgPixelMin(const EROI<EBW8>* roi, unsigned char& min) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelMin");
  if (!frame.NotVoid(roi)) return frame.Result();
  unsigned char lo = 255, hi = 0;
  MinMax8(roi, mmx, &lo, &hi);
  min = lo;
  return frame.Result();
}

short ImgPixelMax(const EROI<EBW8>* roi, unsigned char& max) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelMax");
  if (!frame.NotVoid(roi)) return frame.Result();
  unsigned char lo = 255, hi = 0;
  MinMax8(roi, mmx, &lo, &hi);
  max = hi;
  return frame.Result();
}

void ImgPixelMin(const EROI<EBW16>* roi, EBW16& min) {
  mirel::Frame frame("ImgPixelMin (BW16)");
  if (!frame.NotVoid(roi)) return;
  unsigned int lo = 0, hi = 0;
  MinMax16(roi, &lo, &hi);
  min = EBW16(static_cast<unsigned short>(lo));
}

void ImgPixelMax(const EROI<EBW16>* roi, EBW16& max) {
  mirel::Frame frame("ImgPixelMax (BW16)");
  if (!frame.NotVoid(roi)) return;
  unsigned int lo = 0, hi = 0;
  MinMax16(roi, &lo, &hi);
  max = EBW16(static_cast<unsigned short>(hi));
}

// ---------------------------------------------------------------- comparison and predicates

unsigned int ImgPixelCompare(const EROI<EBW8>* a, const EROI<EBW8>* b) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgPixelCompare ( BW8)");
  if (!frame.NotVoid(a, b) || !frame.SameSize(a, b)) return 0;
  const ByteKernels& k = PickByteKernels(mmx);
  const mirel::Rows<const EBW8> ra = mirel::RowsOf(a), rb = mirel::RowsOf(b);
  std::uint32_t count = 0;
  for (int y = 0; y < ra.height; ++y)
    count += static_cast<std::uint32_t>(k.countDiffer(Bytes(ra, y), Bytes(rb, y), static_cast<std::size_t>(ra.width)));
  return count;
}

unsigned int ImgPixelCompare(const EROI<EBW16>* a, const EROI<EBW16>* b) {
  mirel::Frame frame("ImgPixelCompare ( BW16)");
  if (!frame.NotVoid(a, b) || !frame.SameSize(a, b)) return 0;
  const mirel::Rows<const EBW16> ra = mirel::RowsOf(a), rb = mirel::RowsOf(b);
  std::uint32_t count = 0;
  for (int y = 0; y < ra.height; ++y) {
    const EBW16* p = ra.Row(y);
    const EBW16* q = rb.Row(y);
    for (int x = 0; x < ra.width; ++x) count += p[x].value != q[x].value ? 1u : 0u;
  }
  return count;
}

unsigned int ImgPixelCompare(const EROI<EC24>* a, const EROI<EC24>* b) {
  mirel::Frame frame("ImgPixelCompare ( C24)");
  if (!frame.NotVoid(a, b) || !frame.SameSize(a, b)) return 0;
  const mirel::Rows<const EC24> ra = mirel::RowsOf(a), rb = mirel::RowsOf(b);
  std::uint32_t count = 0;
  for (int y = 0; y < ra.height; ++y) {
    const EC24* p = ra.Row(y);
    const EC24* q = rb.Row(y);
    for (int x = 0; x < ra.width; ++x)
      count += (p[x].c[0] != q[x].c[0] || p[x].c[1] != q[x].c[1] || p[x].c[2] != q[x].c[2]) ? 1u : 0u;
  }
  return count;
}

unsigned int ImgPixelCompareAligned(const EROI<EBW1>* a, const EROI<EBW1>* b) {
  const mirel::bits::Kernels& k = mirel::bits::ActiveKernels();
  mirel::bits::CheckOrThrow({a}, b);
  mirel::bits::CheckAlignedOrThrow({a, b});
  const mirel::Rows<const EBW1> ra = mirel::RowsOf(a), rb = mirel::RowsOf(b);
  if (ra.width <= 0) return 0;
  const int n = mirel::bits::WholeBytes(ra.width);
  const unsigned char valid = mirel::bits::LastValid(ra.width);
  std::uint32_t count = 0;
  for (int y = 0; y < ra.height; ++y) {
    const unsigned char* p = mirel::bits::RowBytes(ra, y);
    const unsigned char* q = mirel::bits::RowBytes(rb, y);
    count += static_cast<std::uint32_t>(k.countDiffer(p, q, static_cast<std::size_t>(n)));
    // Only the pixel bits of the last byte count.
    const unsigned char x = static_cast<unsigned char>(p[n] & valid), z = static_cast<unsigned char>(q[n] & valid);
    count += static_cast<std::uint32_t>(k.countDiffer(&x, &z, 1));
  }
  return count;
}

unsigned int ImgPixelCompare(const EROI<EBW1>* a, const EROI<EBW1>* b) {
  const char* const label = "ImgPixelCompare (BW1)";
  mirel::Frame frame(label);
  if (!frame.Require(a != nullptr && b != nullptr, E_ERROR_VOID_IMAGE)) return ~0u;
  unsigned int count = 0;
  mirel::bits::Guarded(frame, label, true, [&] {
    const mirel::bits::AlignedSource<const EROI<EBW1>> sa(a), sb(b);
    count = ImgPixelCompareAligned(sa.get(), sb.get());
  });
  return count;
}

namespace {

// P is the pixel type as the predicate takes it: const for a const ROI.
// The caller's predicate is called on the calling thread only (one band),
// since nothing says that it may run on several threads at once.
template <class P, class Roi>
unsigned int CountWhere(mirel::Frame& frame, Roi* roi, int (*predicate)(P&)) {
  if (!frame.NotVoid(roi) || !frame.Require(predicate != nullptr, E_ERROR_BAD_ARGUMENT)) return 0;
  const mirel::Rows<P> rows = mirel::RowsOf(roi);
  using T1 = Totals<std::uint32_t, 1>;
  return BandTotals<T1>(rows.height, mirel::kOneBand, [&](int y0, int y1) {
    T1 part{0};
    for (int y = y0; y < y1; ++y) {
      P* p = rows.Row(y);
      for (int x = 0; x < rows.width; ++x) part[0] += predicate(p[x]) != 0 ? 1u : 0u;
    }
    return part;
  })[0];
}

}  // namespace

unsigned int ImgCount(EROI<EBW8>* roi, int (*predicate)(EBW8&)) {
  mirel::Frame frame("ImgCount ( BW8)");
  return CountWhere(frame, roi, predicate);
}

unsigned int ImgCount(EROI<EBW16>* roi, int (*predicate)(EBW16&)) {
  mirel::Frame frame("ImgCount ( BW16)");
  return CountWhere(frame, roi, predicate);
}

unsigned int ImgCount(EROI<EC24>* roi, int (*predicate)(EC24&)) {
  mirel::Frame frame("ImgCount ( C24)");
  return CountWhere(frame, roi, predicate);
}

// ---------------------------------------------------------------- with run masks

float ImgAverage(const EROI<EBW8>* roi, unsigned int* count) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgAverage");
  if (!frame.NotVoid(roi)) return 0.0f;
  const ByteKernels& k = PickByteKernels(mmx);
  std::uint32_t sum = 0, n = 0;
  mirel::ForEachSpan(roi, [&](const unsigned char* p, std::size_t len, int, int) {
    sum += static_cast<std::uint32_t>(k.sum(p, len));
    n += static_cast<std::uint32_t>(len);
  });
  if (count != nullptr) *count = n;
  // Not guarded: a ROI with no pixel gives 0 / 0.
  return static_cast<float>(static_cast<double>(sum) / static_cast<double>(n));
}

namespace {

void SpanMinMax(const EROI<EBW8>* roi, int mmx, unsigned char* lo, unsigned char* hi) {
  const ByteKernels& k = PickByteKernels(mmx);
  mirel::ForEachSpan(roi, [&](const unsigned char* p, std::size_t n, int, int) { k.minMax(p, n, lo, hi); });
}

}  // namespace

unsigned int ImgMinimum(const EROI<EBW8>* roi) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgMinimum");
  unsigned char lo = 255, hi = 0;
  if (!frame.NotVoid(roi)) return lo;
  SpanMinMax(roi, mmx, &lo, &hi);
  return lo;
}

unsigned int ImgMaximum(const EROI<EBW8>* roi) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgMaximum");
  unsigned char lo = 255, hi = 0;
  if (!frame.NotVoid(roi)) return hi;
  SpanMinMax(roi, mmx, &lo, &hi);
  return hi;
}

namespace {

// The sums that the variance is made of: the count N and first moment S1 of
// the grey levels (32-bit, wrapping) and acc = sum h[i] * T(i) with
// T(i) = i * (i + 1) / 2, a sum of integers below 2^53 and so exact.
struct LevelSums {
  std::uint32_t n = 0;
  std::uint32_t s1 = 0;
  double acc = 0.0;
};

// From the 256-bin histogram, bin after bin, T(i) by addition.
LevelSums FromHistogram(const EBWHistogramVector& histogram) {
  LevelSums sums;
  const unsigned int* h = histogram.GetDataPtr();
  std::uint32_t t = 0;
  for (std::uint32_t i = 0; i < 256; ++i) {
    t += i;
    sums.n += h[i];
    sums.s1 += i * h[i];
    sums.acc += static_cast<double>(h[i]) * t;
  }
  return sums;
}

// From the pixels directly (runs honoured): the same three numbers, since
// sum h[i] * T(i) = (sum p * p + sum p) / 2 exactly while the ROI holds fewer
// than 2^32 pixels.
LevelSums FromPixels(const EROI<EBW8>* roi, int mmx) {
  const ByteKernels& k = PickByteKernels(mmx);
  std::uint64_t n = 0, s = 0, q = 0;
  mirel::ForEachSpan(roi, [&](const unsigned char* p, std::size_t len, int, int) {
    std::uint64_t a = 0, b = 0;
    k.sumSquares(p, len, &a, &b);
    n += len;
    s += a;
    q += b;
  });
  LevelSums sums;
  sums.n = static_cast<std::uint32_t>(n);
  sums.s1 = static_cast<std::uint32_t>(s);
  sums.acc = static_cast<double>((q + s) / 2);
  return sums;
}

// The mean level sum(i * h) / sum(h).
bool HistogramMean(const LevelSums& sums, double* mean) {
  mirel::Frame frame("ImgHistogramMoments ( 1)");
  if (!frame.Require(sums.n != 0, E_ERROR_NO_SOLUTION)) return false;
  *mean = static_cast<double>(sums.s1) / sums.n;
  return true;
}

// Mean and variance of the level, with no square formed:
// sum(i * i * h) = 2 * acc - sum(i * h).
bool HistogramCenteredMoments(const LevelSums& sums, double* mean, double* variance) {
  mirel::Frame frame("ImgHistogramCenteredMoments ( 2)");
  if (!frame.Require(sums.n != 0, E_ERROR_NO_SOLUTION)) return false;
  const double m = static_cast<double>(sums.s1) / sums.n;
  const double q = 2.0 * sums.acc - static_cast<double>(sums.s1);
  *mean = m;
  *variance = q / sums.n - m * m;
  return true;
}

}  // namespace

float ImgVariance(const EROI<EBW8>* roi, float* mean, unsigned int* integerMean) {
  const int mmx = EGetMMX();
  LevelSums sums;
  if (mmx == 0) {
    EBWHistogramVector histogram(256);
    ImgHistogram(roi, &histogram);
    if (EGetError() != E_OK) return 0.0f;
    sums = FromHistogram(histogram);
  } else {
    // The fast path skips the histogram; its possible failures, a void ROI
    // and runs outside the ROI, are reported as the histogram reports them.
    {
      mirel::Frame frame("ImgHistogram");
      if (!frame.NotVoid(roi) || !frame.Require(mirel::RunsFit(roi), E_ERROR_BAD_ARGUMENT)) return 0.0f;
    }
    sums = FromPixels(roi, mmx);
  }
  double m = 0.0, cm = 0.0, variance = 0.0;
  if (!HistogramMean(sums, &m)) return 0.0f;
  if (integerMean != nullptr) *integerMean = static_cast<unsigned int>(m);
  if (!HistogramCenteredMoments(sums, &cm, &variance)) return 0.0f;
  if (mean != nullptr) *mean = static_cast<float>(cm);
  return static_cast<float>(variance);
}

// The same counts for a ROI held const: the predicate sees each pixel
// read-only.
unsigned int ImgCount(const EROI<EBW8>* roi, int (*predicate)(const EBW8&)) {
  mirel::Frame frame("ImgCount ( BW8)");
  return CountWhere(frame, roi, predicate);
}

unsigned int ImgCount(const EROI<EBW16>* roi, int (*predicate)(const EBW16&)) {
  mirel::Frame frame("ImgCount ( BW16)");
  return CountWhere(frame, roi, predicate);
}

unsigned int ImgCount(const EROI<EC24>* roi, int (*predicate)(const EC24&)) {
  mirel::Frame frame("ImgCount ( C24)");
  return CountWhere(frame, roi, predicate);
}
