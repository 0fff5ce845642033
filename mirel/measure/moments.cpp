// Moments, centre of gravity, centroid and inertia.
#include "mirel/measure/moments.h"

#include <cstdint>
#include <initializer_list>

#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/run_walk_internal.h"
#include "mirel/measure/moments_internal.h"

namespace mirel {
namespace measure {
namespace {

template <bool kBinary>
void RowSumsScalar(const unsigned char* p, std::size_t n, unsigned int t, std::uint32_t s[3]) {
  std::uint32_t s0 = 0, s1 = 0, s2 = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t w = kBinary ? (p[i] >= t ? 1u : 0u) : p[i];
    const std::uint32_t x = static_cast<std::uint32_t>(i);
    s0 += w;
    s1 += w * x;
    s2 += w * x * x;
  }
  s[0] = s0;
  s[1] = s1;
  s[2] = s2;
}

void WeightedScalar(const unsigned char* p, std::size_t n, std::uint32_t s[3]) {
  RowSumsScalar<false>(p, n, 0, s);
}
void BinaryScalar(const unsigned char* p, std::size_t n, unsigned int t, std::uint32_t s[3]) {
  RowSumsScalar<true>(p, n, t, s);
}

}  // namespace

const MomentKernels& ScalarMomentKernels() {
  static const MomentKernels k{WeightedScalar, BinaryScalar};
  return k;
}

const MomentKernels& PickMomentKernels(int mmx) {
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    const int level = cpu::ActiveSimdLevel();
    if (level >= cpu::kAVX512) return MomentKernelsAVX512();
    if (level >= cpu::kAVX2) return MomentKernelsAVX2();
    if (level >= cpu::kSSE2) return MomentKernelsSSE2();
  }
#else
  (void)mmx;
#endif
  return ScalarMomentKernels();
}

}  // namespace measure
}  // namespace mirel

namespace {

using mirel::measure::MomentKernels;
using mirel::measure::PickMomentKernels;

constexpr unsigned int kWeighted = ~0u;

// The row sums (w, w*x, w*x*x, modulo 2^32) of row y of a ROI: binary with
// `threshold`, or weighted when threshold is kWeighted.
class RowSource8 {
 public:
  RowSource8(const EROI<EBW8>* roi, unsigned int threshold, int mmx)
      : rows_(mirel::RowsOf(roi)), threshold_(threshold), k_(PickMomentKernels(mmx)) {}
  int Height() const { return rows_.height; }
  void Sums(int y, std::uint32_t s[3]) const {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(rows_.Row(y));
    const std::size_t n = static_cast<std::size_t>(rows_.width);
    if (threshold_ == kWeighted) k_.weighted(p, n, s);
    else if (threshold_ > 255) s[0] = s[1] = s[2] = 0;
    else k_.binary(p, n, threshold_, s);
  }

 private:
  mirel::Rows<const EBW8> rows_;
  unsigned int threshold_;
  const MomentKernels& k_;
};

class RowSource16 {
 public:
  RowSource16(const EROI<EBW16>* roi, unsigned int threshold) : rows_(mirel::RowsOf(roi)), threshold_(threshold) {}
  int Height() const { return rows_.height; }
  void Sums(int y, std::uint32_t s[3]) const {
    const EBW16* p = rows_.Row(y);
    std::uint32_t s0 = 0, s1 = 0, s2 = 0;
    for (int x = 0; x < rows_.width; ++x) {
      const std::uint32_t v = p[x].value;
      const std::uint32_t w = threshold_ == kWeighted ? v : (v >= threshold_ ? 1u : 0u);
      const std::uint32_t ux = static_cast<std::uint32_t>(x);
      s0 += w;
      s1 += w * ux;
      s2 += w * ux * ux;
    }
    s[0] = s0;
    s[1] = s1;
    s[2] = s2;
  }

 private:
  mirel::Rows<const EBW16> rows_;
  unsigned int threshold_;
};

// Moments up to the first or second order from the rows' 32-bit sums:
// out = M00, M10, M01 and, when `second`, M20, M11, M02.
template <class Source>
void LowOrders(const Source& src, bool second, float* out) {
  for (int k = 0; k < (second ? 6 : 3); ++k) out[k] = 0.0f;
  for (int y = 0; y < src.Height(); ++y) {
    std::uint32_t s[3];
    src.Sums(y, s);
    const std::uint32_t uy = static_cast<std::uint32_t>(y);
    out[0] += static_cast<float>(s[0]);
    out[1] += static_cast<float>(s[1]);
    out[2] += static_cast<float>(uy * s[0]);
    if (second) {
      out[3] += static_cast<float>(s[2]);
      out[5] += static_cast<float>(uy * uy * s[0]);
      // D = sum w * (x - y)^2, kept in the M11 output while walking.
      out[4] += static_cast<float>(s[2] - 2u * uy * s[1] + uy * uy * s[0]);
    }
  }
  if (second) out[4] = (out[3] + out[5] - out[4]) * 0.5f;
}

template <class P>
void HighRowScalar(const P* p, int width, const float ys[4], bool fourth, float acc[12]) {
  const float fy = ys[0], yy = ys[1], yyy = ys[2], yyyy = ys[3];
  float m20 = acc[0], m11 = acc[1], m02 = acc[2], m30 = acc[3], m21 = acc[4], m12 = acc[5], m03 = acc[6];
  float m40 = acc[7], m31 = acc[8], m22 = acc[9], m13 = acc[10], m04 = acc[11];
  float fx = 0.0f;
  if (!fourth) {
    for (int x = 0; x < width; ++x, fx += 1.0f) {
      const float fp = static_cast<float>(p[x].value);
      const float px = fp * fx, pxx = px * fx;
      m20 += pxx;
      m11 += px * fy;
      m02 += fp * yy;
      m30 += pxx * fx;
      m21 += pxx * fy;
      m12 += px * yy;
      m03 += fp * yyy;
    }
  } else {
    for (int x = 0; x < width; ++x, fx += 1.0f) {
      const float fp = static_cast<float>(p[x].value);
      const float px = fp * fx, pxx = px * fx, pxxx = pxx * fx;
      m20 += pxx;
      m11 += px * fy;
      m02 += fp * yy;
      m30 += pxxx;
      m21 += pxx * fy;
      m12 += px * yy;
      m03 += fp * yyy;
      m40 += pxxx * fx;
      m31 += pxxx * fy;
      m22 += pxx * yy;
      m13 += px * yyy;
      m04 += fp * yyyy;
    }
  }
  const float out[12] = {m20, m11, m02, m30, m21, m12, m03, m40, m31, m22, m13, m04};
  for (int k = 0; k < 12; ++k) acc[k] = out[k];
}

template <class P>
mirel::measure::HighRowFn<P> PickHighRow(int mmx) {
#if defined(MIREL_X86_SIMD)
  if (mmx != 0 && mirel::cpu::ActiveSimdLevel() >= mirel::cpu::kAVX2)
    return static_cast<mirel::measure::HighRowFn<P>>(mirel::measure::HighRowAVX2);
  if (mmx != 0 && mirel::cpu::ActiveSimdLevel() >= mirel::cpu::kSSE2)
    return static_cast<mirel::measure::HighRowFn<P>>(mirel::measure::HighRowSSE2);
#else
  (void)mmx;
#endif
  return HighRowScalar<P>;
}

// Third or fourth order: M00, M10, M01 from the rows' 32-bit sums, every
// term of order two and above added pixel by pixel in single precision.
template <class P, class Source>
void HighOrders(const EROI<P>* roi, const Source& src, bool fourth, int mmx, float* out) {
  const int count = fourth ? 15 : 10;
  for (int k = 0; k < count; ++k) out[k] = 0.0f;
  const mirel::Rows<const P> rows = mirel::RowsOf(roi);
  const mirel::measure::HighRowFn<P> row = PickHighRow<P>(mmx);
  float acc[12] = {};
  for (int y = 0; y < rows.height; ++y) {
    std::uint32_t s[3];
    src.Sums(y, s);
    const std::uint32_t uy = static_cast<std::uint32_t>(y);
    out[0] += static_cast<float>(s[0]);
    out[1] += static_cast<float>(s[1]);
    out[2] += static_cast<float>(uy * s[0]);
    const float fy = static_cast<float>(y);
    const float ys[4] = {fy, fy * fy, fy * fy * fy, fy * fy * fy * fy};
    row(rows.Row(y), rows.width, ys, fourth, acc);
  }
  for (int k = 3; k < count; ++k) out[k] = acc[k - 3];
}

// Runs a moment form: checks the image, computes `n` outputs into a buffer
// and copies them out on success.
template <class Compute>
void Moments(const char* label, const EGenericROI* roi, std::initializer_list<float*> outs, Compute&& compute) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(roi)) return;
  float buffer[15];
  compute(buffer);
  int k = 0;
  for (float* o : outs) *o = buffer[k++];
}

}  // namespace

// ---------------------------------------------------------------- binary moments

void ImgBinaryMoments(const EROI<EBW8>* roi, unsigned int threshold, float& m00, float& m10, float& m01) {
  const int mmx = EGetMMX();
  Moments("ImgBinaryMoments ( first order)", roi, {&m00, &m10, &m01},
          [&](float* o) { LowOrders(RowSource8(roi, threshold, mmx), false, o); });
}

void ImgBinaryMoments(const EROI<EBW8>* roi, unsigned int threshold, float& m00, float& m10, float& m01, float& m20,
                      float& m11, float& m02) {
  const int mmx = EGetMMX();
  Moments("ImgBinaryMoments ( second order)", roi, {&m00, &m10, &m01, &m20, &m11, &m02},
          [&](float* o) { LowOrders(RowSource8(roi, threshold, mmx), true, o); });
}

void ImgBinaryMoments(const EROI<EBW16>* roi, unsigned int threshold, float& m00, float& m10, float& m01) {
  const unsigned int t = threshold == kWeighted ? kWeighted - 1 : threshold;  // above every pixel either way
  Moments("ImgBinaryMoments (first order)(BW16)", roi, {&m00, &m10, &m01},
          [&](float* o) { LowOrders(RowSource16(roi, t), false, o); });
}

void ImgBinaryMoments(const EROI<EBW16>* roi, unsigned int threshold, float& m00, float& m10, float& m01,
                      float& m20, float& m11, float& m02) {
  const unsigned int t = threshold == kWeighted ? kWeighted - 1 : threshold;
  Moments("ImgBinaryMoments (second order)(BW16)", roi, {&m00, &m10, &m01, &m20, &m11, &m02},
          [&](float* o) { LowOrders(RowSource16(roi, t), true, o); });
}

// ---------------------------------------------------------------- weighted moments

void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01) {
  const int mmx = EGetMMX();
  Moments("ImgWeightedMoments ( first order)", roi, {&m00, &m10, &m01},
          [&](float* o) { LowOrders(RowSource8(roi, kWeighted, mmx), false, o); });
}

void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                        float& m02) {
  const int mmx = EGetMMX();
  Moments("ImgWeightedMoments ( second order)", roi, {&m00, &m10, &m01, &m20, &m11, &m02},
          [&](float* o) { LowOrders(RowSource8(roi, kWeighted, mmx), true, o); });
}

void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                        float& m02, float& m30, float& m21, float& m12, float& m03) {
  const int mmx = EGetMMX();
  Moments("ImgWeightedMoments ( third order)", roi, {&m00, &m10, &m01, &m20, &m11, &m02, &m30, &m21, &m12, &m03},
          [&](float* o) { HighOrders(roi, RowSource8(roi, kWeighted, mmx), false, mmx, o); });
}

void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                        float& m02, float& m30, float& m21, float& m12, float& m03, float& m40, float& m31,
                        float& m22, float& m13, float& m04) {
  const int mmx = EGetMMX();
  Moments("ImgWeightedMoments ( fourth order)", roi,
          {&m00, &m10, &m01, &m20, &m11, &m02, &m30, &m21, &m12, &m03, &m40, &m31, &m22, &m13, &m04},
          [&](float* o) { HighOrders(roi, RowSource8(roi, kWeighted, mmx), true, mmx, o); });
}

void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01) {
  Moments("ImgWeightedMoments (first order)(BW16)", roi, {&m00, &m10, &m01},
          [&](float* o) { LowOrders(RowSource16(roi, kWeighted), false, o); });
}

void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                        float& m02) {
  Moments("ImgWeightedMoments (second order)(BW16)", roi, {&m00, &m10, &m01, &m20, &m11, &m02},
          [&](float* o) { LowOrders(RowSource16(roi, kWeighted), true, o); });
}

void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                        float& m02, float& m30, float& m21, float& m12, float& m03) {
  const int mmx = EGetMMX();
  Moments("ImgWeightedMoments (third order)(BW16)", roi,
          {&m00, &m10, &m01, &m20, &m11, &m02, &m30, &m21, &m12, &m03},
          [&](float* o) { HighOrders(roi, RowSource16(roi, kWeighted), false, mmx, o); });
}

void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                        float& m02, float& m30, float& m21, float& m12, float& m03, float& m40, float& m31,
                        float& m22, float& m13, float& m04) {
  const int mmx = EGetMMX();
  Moments("ImgWeightedMoments (fourth order)(BW16)", roi,
          {&m00, &m10, &m01, &m20, &m11, &m02, &m30, &m21, &m12, &m03, &m40, &m31, &m22, &m13, &m04},
          [&](float* o) { HighOrders(roi, RowSource16(roi, kWeighted), true, mmx, o); });
}

// ---------------------------------------------------------------- centres

namespace {

// The mean of a projection from its 32-bit sums: 0 when it is empty.
float ProjectionMean(std::uint32_t moment, std::uint32_t count) {
  return count == 0 ? 0.0f : static_cast<float>(static_cast<double>(moment) / static_cast<double>(count));
}

// N, Sx, Sy (32-bit) over the spans of an EBW8 ROI (its runs when it has
// any); `sums(p, n, s)` gives a span's three row sums.
template <class SpanSums>
void CentreSums8(const EROI<EBW8>* roi, SpanSums&& sums, std::uint32_t* n, std::uint32_t* sx, std::uint32_t* sy) {
  std::uint32_t a = 0, b = 0, c = 0;
  mirel::ForEachSpan(roi, [&](const unsigned char* p, std::size_t len, int x0, int y) {
    std::uint32_t s[3], t[3];
    sums(p, len, s);
    mirel::measure::ShiftSums(s, static_cast<std::uint32_t>(x0), t);
    a += t[0];
    b += t[1];
    c += static_cast<std::uint32_t>(y) * t[0];
  });
  *n = a;
  *sx = b;
  *sy = c;
}

// Row sums with weights taken from a table of 256.
void TableSums(const unsigned char* p, std::size_t n, const EBW8* table, std::uint32_t s[3]) {
  std::uint32_t s0 = 0, s1 = 0, s2 = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::uint32_t w = table[p[i]].value;
    const std::uint32_t x = static_cast<std::uint32_t>(i);
    s0 += w;
    s1 += w * x;
    s2 += w * x * x;
  }
  s[0] = s0;
  s[1] = s1;
  s[2] = s2;
}

}  // namespace

void ImgGravityCenter(const EROI<EBW8>* roi, unsigned int threshold, float& x, float& y) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgGravityCenter");
  if (!frame.NotVoid(roi)) return;
  const MomentKernels& k = PickMomentKernels(mmx);
  std::uint32_t n = 0, sx = 0, sy = 0;
  if (threshold <= 255)
    CentreSums8(roi, [&](const unsigned char* p, std::size_t len, std::uint32_t s[3]) { k.binary(p, len, threshold, s); },
                &n, &sx, &sy);
  x = ProjectionMean(sx, n);
  y = ProjectionMean(sy, n);
}

void ImgGravityCenter(const EROI<EBW16>* roi, unsigned int threshold, float& x, float& y) {
  mirel::Frame frame("ImgGravityCenter (BW16)");
  if (!frame.NotVoid(roi)) return;
  const RowSource16 src(roi, threshold == kWeighted ? kWeighted - 1 : threshold);
  std::uint32_t n = 0, sx = 0, sy = 0;
  for (int r = 0; r < src.Height(); ++r) {
    std::uint32_t s[3];
    src.Sums(r, s);
    n += s[0];
    sx += s[1];
    sy += static_cast<std::uint32_t>(r) * s[0];
  }
  x = ProjectionMean(sx, n);
  y = ProjectionMean(sy, n);
}

void ImgCentroid(const EROI<EBW8>* roi, float& x, float& y, const EBW8Vector* weights) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgCentroid");
  if (!frame.NotVoid(roi) ||
      !frame.Require(weights == nullptr || weights->GetNumElements() == 256, E_ERROR_VECTOR_SIZE))
    return;
  std::uint32_t n = 0, sx = 0, sy = 0;
  if (weights == nullptr) {
    const MomentKernels& k = PickMomentKernels(mmx);
    CentreSums8(roi, [&](const unsigned char* p, std::size_t len, std::uint32_t s[3]) { k.weighted(p, len, s); }, &n,
                &sx, &sy);
  } else {
    const EBW8* table = weights->GetDataPtr();
    CentreSums8(roi, [&](const unsigned char* p, std::size_t len, std::uint32_t s[3]) { TableSums(p, len, table, s); },
                &n, &sx, &sy);
  }
  x = ProjectionMean(sx, n);
  y = ProjectionMean(sy, n);
}

// ---------------------------------------------------------------- inertia

namespace {

// Second moments about the centre from N, Sx, Sy (32-bit) and the rows'
// 32-bit Sxx, Sxy, Syy added to doubles. Nothing is written when N is 0.
template <class RowSums>
void Inertia(const EROI<EBW8>* roi, RowSums&& rowSums, float& xx, float& xy, float& yy, float* x, float* y,
             unsigned int* count) {
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(roi);
  std::uint32_t n = 0, sx = 0, sy = 0;
  double sxx = 0.0, sxy = 0.0, syy = 0.0;
  for (int r = 0; r < rows.height; ++r) {
    std::uint32_t s[3];
    rowSums(reinterpret_cast<const unsigned char*>(rows.Row(r)), static_cast<std::size_t>(rows.width), s);
    const std::uint32_t ur = static_cast<std::uint32_t>(r);
    n += s[0];
    sx += s[1];
    sy += ur * s[0];
    sxx += static_cast<double>(s[2]);
    sxy += static_cast<double>(ur * s[1]);
    syy += static_cast<double>(ur * ur * s[0]);
  }
  if (n == 0) return;
  const double dn = n, nn = dn * dn;
  xx = static_cast<float>((dn * sxx - static_cast<double>(sx * sx)) / nn);
  xy = static_cast<float>((dn * sxy - static_cast<double>(sy * sx)) / nn);
  yy = static_cast<float>((dn * syy - static_cast<double>(sy * sy)) / nn);
  if (x != nullptr) *x = static_cast<float>(static_cast<double>(sx) / dn);
  if (y != nullptr) *y = static_cast<float>(static_cast<double>(sy) / dn);
  if (count != nullptr) *count = n;
}

}  // namespace

void ImgInertia(const EROI<EBW8>* roi, unsigned int threshold, float& xx, float& xy, float& yy, float* x, float* y,
                unsigned int* count) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgInertia ( binary)");
  if (!frame.NotVoid(roi)) return;
  if (threshold > 255) return;  // no pixel qualifies
  const MomentKernels& k = PickMomentKernels(mmx);
  Inertia(roi, [&](const unsigned char* p, std::size_t n, std::uint32_t s[3]) { k.binary(p, n, threshold, s); }, xx,
          xy, yy, x, y, count);
}

void ImgInertia(const EROI<EBW8>* roi, float& xx, float& xy, float& yy, float* x, float* y, unsigned int* count,
                const EBW8Vector* weights) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgInertia ( weighted)");
  if (!frame.NotVoid(roi) ||
      !frame.Require(weights == nullptr || weights->GetNumElements() == 256, E_ERROR_VECTOR_SIZE))
    return;
  if (weights == nullptr) {
    const MomentKernels& k = PickMomentKernels(mmx);
    Inertia(roi, [&](const unsigned char* p, std::size_t n, std::uint32_t s[3]) { k.weighted(p, n, s); }, xx, xy, yy,
            x, y, count);
  } else {
    const EBW8* table = weights->GetDataPtr();
    Inertia(roi, [&](const unsigned char* p, std::size_t n, std::uint32_t s[3]) { TableSums(p, n, table, s); }, xx,
            xy, yy, x, y, count);
  }
}
