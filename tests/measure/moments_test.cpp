#include <cmath>
#include <cstring>

#include "measure_test_util.h"

namespace {

using meastest::Span;
using meastest::Value;
using testsupport::Rng;

// Moments up to the second order as the rows' 32-bit sums added to floats,
// with D = sum w * (x - y)^2 summed directly; `t` = ~0u means weighted.
template <class P>
std::vector<float> SecondOrderModel(const EROI<P>& r, unsigned int t) {
  float m[6] = {};
  for (int y = 0; y < r.GetHeight(); ++y) {
    uint32_t s0 = 0, s1 = 0, s2 = 0, sy = 0, syy = 0, d = 0;
    for (int x = 0; x < r.GetWidth(); ++x) {
      const uint32_t v = Value(r, x, y), w = t == ~0u ? v : v >= t;
      const uint32_t ux = x, uy = y, dx = ux - uy;
      s0 += w;
      s1 += w * ux;
      s2 += w * ux * ux;
      sy += w * uy;
      syy += w * uy * uy;
      d += w * dx * dx;
    }
    m[0] += s0;
    m[1] += s1;
    m[2] += sy;
    m[3] += s2;
    m[4] += d;
    m[5] += syy;
  }
  m[4] = (m[3] + m[5] - m[4]) * 0.5f;
  return std::vector<float>(m, m + 6);
}

// Moments M_ab = sum p * x^a * y^b in double precision, in output order.
template <class P>
std::vector<double> DoubleModel(const EROI<P>& r, int order) {
  std::vector<double> m;
  for (int deg = 0; deg <= order; ++deg)
    for (int b = 0; b <= deg; ++b) {
      double s = 0;
      for (int y = 0; y < r.GetHeight(); ++y)
        for (int x = 0; x < r.GetWidth(); ++x) s += Value(r, x, y) * std::pow(x, deg - b) * std::pow(y, b);
      m.push_back(s);
    }
  return m;
}

// The fourth-order outputs of `roi` on the scalar path.
template <class P>
std::vector<float> ScalarFourth(const EROI<P>& roi) {
  testsupport::PathGuard guard(-1);
  float m[15];
  ImgWeightedMoments(&roi, m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11], m[12], m[13],
                     m[14]);
  return std::vector<float>(m, m + 15);
}

// Every form against the models; the fourth order also bit for bit against
// `scalar` (the scalar path's outputs).
template <class P>
void CheckMoments(const EROI<P>& roi, unsigned int t, const std::vector<float>& scalar, const std::string& at) {
  const std::vector<float> want = SecondOrderModel(roi, t), weighted = SecondOrderModel(roi, ~0u);
  float m[15];
  std::fill(m, m + 15, -1.0f);
  ImgBinaryMoments(&roi, t, m[0], m[1], m[2]);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(std::vector<float>(m, m + 3), std::vector<float>(want.begin(), want.begin() + 3)) << at;
  ImgBinaryMoments(&roi, t, m[0], m[1], m[2], m[3], m[4], m[5]);
  EXPECT_EQ(std::vector<float>(m, m + 6), want) << at;
  ImgWeightedMoments(&roi, m[0], m[1], m[2]);
  EXPECT_EQ(std::vector<float>(m, m + 3), std::vector<float>(weighted.begin(), weighted.begin() + 3)) << at;
  ImgWeightedMoments(&roi, m[0], m[1], m[2], m[3], m[4], m[5]);
  EXPECT_EQ(std::vector<float>(m, m + 6), weighted) << at;
  // The higher forms: first order exact, the rest against doubles.
  const std::vector<double> exact = DoubleModel(roi, 4);
  ImgWeightedMoments(&roi, m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11], m[12], m[13],
                     m[14]);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(std::vector<float>(m, m + 3), std::vector<float>(weighted.begin(), weighted.begin() + 3)) << at;
  for (int k = 3; k < 15; ++k) EXPECT_NEAR(m[k], exact[k], 1e-5 * exact[k] + 1e-3) << at << " moment " << k;
  EXPECT_EQ(std::vector<float>(m, m + 15), scalar) << at;
  float n[10];
  ImgWeighedMoments(&roi, n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8], n[9]);
  for (int k = 0; k < 10; ++k) EXPECT_EQ(n[k], m[k]) << at << " third order " << k;
}

TEST(MomentsBW8, MatchModelsOnRandomRoisOnEveryPath) {
  Rng rng(821);
  for (int iter = 0; iter < 25; ++iter) {
    EImage<EBW8> image;
    EROI<EBW8> roi;
    meastest::RandomRoi(image, roi, rng, iter < 4 ? 700 : 200, 6, iter % 3 == 2);
    const unsigned int t = iter % 6 == 0 ? 0 : iter % 6 == 1 ? 256 + iter : rng() % 256;
    const std::vector<float> scalar = ScalarFourth(roi);
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      CheckMoments(roi, t, scalar, "path " + std::to_string(path) + " w " + std::to_string(roi.GetWidth()));
    }
  }
}

TEST(MomentsBW16, MatchModelsOnRandomRois) {
  Rng rng(822);
  for (int iter = 0; iter < 20; ++iter) {
    EImage<EBW16> image;
    EROI<EBW16> roi;
    meastest::RandomRoi(image, roi, rng, 90, 5);
    const std::vector<float> scalar = ScalarFourth(roi);
    const unsigned int t = iter == 0 ? 70000u : rng() % 65536;
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      CheckMoments(roi, t, scalar, "path " + std::to_string(path) + " w " + std::to_string(roi.GetWidth()));
    }
  }
}

TEST(Moments, DiagonalLineAndWideRowsWrapLikeTheDirectSums) {
  // On a diagonal every pixel has x == y: M11 equals M20 and the direct sum.
  EImage<EBW8> image(40, 40);
  std::memset(image.GetImagePtr(0, 0), 0, static_cast<size_t>(image.GetRowPitch()) * 40);
  float direct = 0;
  for (int i = 0; i < 40; ++i) {
    image.SetPixel(200, i, i);
    direct += 200.0f * i * i;
  }
  float m[6];
  ImgWeightedMoments(&image, m[0], m[1], m[2], m[3], m[4], m[5]);
  EXPECT_EQ(m[4], direct);
  EXPECT_EQ(m[4], m[3]);
  // A row of 3000 pixels at 255 passes 2^32 in sum(p * x * x): the row sums
  // wrap, on every path alike.
  EImage<EBW8> wide(3000, 3);
  std::memset(wide.GetImagePtr(0, 0), 255, static_cast<size_t>(wide.GetRowPitch()) * 3);
  const std::vector<float> want = SecondOrderModel(wide, ~0u);
  EXPECT_LT(want[3], 255.0 * 3 * 2999.0 * 3000 * 5999 / 6);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgWeightedMoments(&wide, m[0], m[1], m[2], m[3], m[4], m[5]);
    EXPECT_EQ(std::vector<float>(m, m + 6), want) << path;
  }
  // The higher orders count columns in a float, which stops at 2^24: a pixel
  // of 1 at column 2^24 + 10 has M20 = 2^48 on every path.
  EImage<EBW8> huge((1 << 24) + 13, 1);
  std::memset(huge.GetImagePtr(0, 0), 0, static_cast<size_t>(huge.GetRowPitch()));
  huge.SetPixel(1, (1 << 24) + 10, 0);
  const std::vector<float> scalar = ScalarFourth(huge);
  EXPECT_EQ(scalar[3], 281474976710656.0f);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    float n[15];
    ImgWeightedMoments(&huge, n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8], n[9], n[10], n[11], n[12], n[13],
                       n[14]);
    EXPECT_EQ(std::vector<float>(n, n + 15), scalar) << path;
  }
}

// ---------------------------------------------------------------- centres and inertia

// N, Sx, Sy, Sxx, Sxy, Syy with 32-bit sums (the second moments per row into
// doubles) over the given spans; weight(v) gives a pixel's weight.
struct CentreModel {
  uint32_t n = 0, sx = 0, sy = 0;
  double sxx = 0, sxy = 0, syy = 0;
  template <class W>
  CentreModel(const EROI<EBW8>& r, const std::vector<Span>& spans, W weight) {
    for (const Span& s : spans) {
      uint32_t a = 0, b = 0, c = 0;
      for (int x = s.x; x < s.x + s.n; ++x) {
        const uint32_t w = weight(Value(r, x, s.y)), ux = x, uy = s.y;
        n += w;
        sx += w * ux;
        sy += w * uy;
        a += w * ux * ux;
        b += w * ux * uy;
        c += w * uy * uy;
      }
      sxx += a;
      sxy += b;
      syy += c;
    }
  }
  float Mean(uint32_t s) const { return n ? static_cast<float>(static_cast<double>(s) / n) : 0.0f; }
  float Second(double s2, uint32_t a, uint32_t b) const {
    return static_cast<float>((static_cast<double>(n) * s2 - static_cast<double>(a * b)) / (double(n) * n));
  }
};

TEST(Centres, GravityCentroidAndInertiaMatchModelOnEveryPath) {
  Rng rng(823);
  EBW8Vector table;
  for (int i = 0; i < 256; ++i) table.AddElement(EBW8(static_cast<unsigned char>((i * 7) % 256)));
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 24; ++iter) {
      EImage<EBW8> image;
      EROI<EBW8> roi;
      meastest::RandomRoi(image, roi, rng, 260, 6, iter % 2 == 0);
      const std::vector<Span> all = meastest::AllSpans(roi);
      const int mode = iter % 3;
      const std::vector<Span> spans = mode ? meastest::RandomRuns(roi, rng, mode) : all;
      const unsigned int t = rng() % 256;
      const std::string at = "path " + std::to_string(path) + " mode " + std::to_string(mode);
      auto binary = [t](uint32_t v) { return v >= t ? 1u : 0u; };
      auto grey = [](uint32_t v) { return v; };
      auto lut = [&](uint32_t v) { return static_cast<uint32_t>(table.GetDataPtr()[v].value); };
      float x = -1, y = -1;
      const CentreModel g(roi, spans, binary);
      ImgGravityCenter(&roi, t, x, y);
      EXPECT_EQ(x, g.Mean(g.sx)) << at;
      EXPECT_EQ(y, g.Mean(g.sy)) << at;
      const CentreModel c(roi, spans, grey), cl(roi, spans, lut);
      ImgCentroid(&roi, x, y);
      EXPECT_EQ(x, c.Mean(c.sx)) << at;
      EXPECT_EQ(y, c.Mean(c.sy)) << at;
      ImgCentroid(&roi, x, y, &table);
      EXPECT_EQ(x, cl.Mean(cl.sx)) << at;
      EXPECT_EQ(y, cl.Mean(cl.sy)) << at;
      // Inertia visits the whole ROI.
      for (int form = 0; form < 3; ++form) {
        const CentreModel m = form == 0 ? CentreModel(roi, all, binary)
                              : form == 1 ? CentreModel(roi, all, grey)
                                          : CentreModel(roi, all, lut);
        float a = -1, b = -1, d = -1, cx = -1, cy = -1;
        unsigned int n = 7;
        if (form == 0) ImgInertia(&roi, t, a, b, d, &cx, &cy, &n);
        else ImgInertia(&roi, a, b, d, &cx, &cy, &n, form == 2 ? &table : nullptr);
        ASSERT_EQ(EGetError(), E_OK);
        if (m.n == 0) {
          EXPECT_EQ(n, 7u);
          EXPECT_EQ(a, -1.0f);
          continue;
        }
        EXPECT_EQ(n, m.n) << at;
        EXPECT_EQ(a, m.Second(m.sxx, m.sx, m.sx)) << at << " form " << form;
        EXPECT_EQ(b, m.Second(m.sxy, m.sy, m.sx)) << at << " form " << form;
        EXPECT_EQ(d, m.Second(m.syy, m.sy, m.sy)) << at << " form " << form;
        EXPECT_EQ(cx, m.Mean(m.sx)) << at;
        EXPECT_EQ(cy, m.Mean(m.sy)) << at;
      }
    }
  }
}

TEST(Centres, WorkedCases) {
  EImage<EBW8> image(8, 6);
  std::memset(image.GetImagePtr(0, 0), 10, static_cast<size_t>(image.GetRowPitch()) * 6);
  image.SetPixel(200, 3, 2);
  float a = -1, b = -1, c = -1, x = -1, y = -1;
  unsigned int n = 0;
  ImgInertia(&image, 100u, a, b, c, &x, &y, &n);
  EXPECT_EQ(a, 0.0f);
  EXPECT_EQ(b, 0.0f);
  EXPECT_EQ(c, 0.0f);
  EXPECT_EQ(x, 3.0f);
  EXPECT_EQ(y, 2.0f);
  EXPECT_EQ(n, 1u);
  ImgGravityCenter(&image, 100u, x, y);
  EXPECT_EQ(x, 3.0f);
  EXPECT_EQ(y, 2.0f);
  ImgGravityCenter(&image, 201u, x, y);  // nothing qualifies
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(x, 0.0f);
  EXPECT_EQ(y, 0.0f);
  // A small binary blob where no sum wraps: inertia against doubles.
  EImage<EBW8> blob(12, 9);
  std::memset(blob.GetImagePtr(0, 0), 0, static_cast<size_t>(blob.GetRowPitch()) * 9);
  double sx = 0, sy = 0, sxx = 0, sxy = 0, syy = 0, cnt = 0;
  for (int yy = 2; yy < 7; ++yy)
    for (int xx = yy; xx < yy + 4; ++xx) {
      blob.SetPixel(255, xx, yy);
      cnt += 1;
      sx += xx;
      sy += yy;
      sxx += xx * xx;
      sxy += xx * yy;
      syy += yy * yy;
    }
  ImgInertia(&blob, 1u, a, b, c, &x, &y);
  EXPECT_NEAR(a, sxx / cnt - (sx / cnt) * (sx / cnt), 1e-5);
  EXPECT_NEAR(b, sxy / cnt - (sx / cnt) * (sy / cnt), 1e-5);
  EXPECT_NEAR(c, syy / cnt - (sy / cnt) * (sy / cnt), 1e-5);
  EXPECT_NEAR(x, sx / cnt, 1e-6);
}

TEST(Moments, BadInputGivesCodeAndLabel) {
  EROI<EBW8> v8;
  EROI<EBW16> v16;
  float m[15];
  std::fill(m, m + 15, 5.0f);
  ImgBinaryMoments(&v8, 1u, m[0], m[1], m[2]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgBinaryMoments ( first order)");
  ImgBinaryMoments(&v16, 1u, m[0], m[1], m[2], m[3], m[4], m[5]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgBinaryMoments (second order)(BW16)");
  ImgWeightedMoments(&v8, m[0], m[1], m[2], m[3], m[4], m[5]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgWeightedMoments ( second order)");
  ImgWeightedMoments(&v8, m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgWeightedMoments ( third order)");
  ImgWeighedMoments(&v16, m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11], m[12], m[13],
                    m[14]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgWeightedMoments (fourth order)(BW16)");
  ImgWeightedMoments(&v16, m[0], m[1], m[2]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgWeightedMoments (first order)(BW16)");
  for (float v : m) EXPECT_EQ(v, 5.0f);
  ImgGravityCenter(&v8, 1u, m[0], m[1]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgGravityCenter");
  ImgGravityCenter(&v16, 1u, m[0], m[1]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgGravityCenter (BW16)");
  ImgInertia(&v8, 1u, m[0], m[1], m[2]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgInertia ( binary)");
  EImage<EBW8> image(4, 4);
  EBW8Vector shortTable;
  shortTable.AddElement(EBW8(1));
  ImgCentroid(&image, m[0], m[1], &shortTable);
  EXPECT_FAILED(E_ERROR_VECTOR_SIZE, "ImgCentroid");
  ImgInertia(&image, m[0], m[1], m[2], nullptr, nullptr, nullptr, &shortTable);
  EXPECT_FAILED(E_ERROR_VECTOR_SIZE, "ImgInertia ( weighted)");
  ImgCentroid(&v8, m[0], m[1]);
  EXPECT_FAILED(E_ERROR_VOID_IMAGE, "ImgCentroid");
  for (int k = 0; k < 3; ++k) EXPECT_EQ(m[k], 5.0f);
}

}  // namespace
