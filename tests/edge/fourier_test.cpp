// Fourier transforms and complex images: the fast transform against a
// scalar model of its own butterflies, bit for bit on every path; the slow
// one against a double-precision DFT; the complex operations against compact
// models; worked numbers and refusals.
#include <cmath>
#include <complex>
#include <cstring>

#include "mirel/foundation/float_math_internal.h"
#include "edge_model.h"

namespace {

using testsupport::Rng;
using Plane = std::vector<std::complex<float>>;  // row after row

float SampleScale(float scale, int w, int h) { return static_cast<float>(scale / std::sqrt(double(w) * h)); }

Plane Samples(const edgemodel::Img& g, float scale) {
  Plane p(g.px.size());
  const float s = SampleScale(scale, g.w, g.h);
  for (int y = 0; y < g.h; ++y)
    for (int x = 0; x < g.w; ++x) {
      const int v = static_cast<int>(g.at(x, y));
      p[static_cast<size_t>(y) * g.w + x] = {static_cast<float>((x + y) % 2 ? -v : v) * s, 0.0f};
    }
  return p;
}

// One transform of n points `stride` apart, as the operation states it: the
// running reversed index, then the butterflies with the rotation recurrence.
void ModelFft(std::complex<float>* a, int n, int stride, float step) {
  auto at = [&](int i) -> std::complex<float>& { return a[static_cast<size_t>(i) * stride]; };
  for (int i = 0, j = 0; i < n; ++i) {
    if (i < j) std::swap(at(i), at(j));
    int k = n / 2;
    while (k >= 1 && (j & k)) j ^= k, k /= 2;
    j |= k;
  }
  for (int m = 1; m < n; m *= 2) {
    const float h = mirel::Sin(-1.5707964f / static_cast<float>(m));
    const float c = 1.0f + -2.0f * (h * h), d = mirel::Sin(step / static_cast<float>(m));
    float wr = 1.0f, wi = 0.0f;
    for (int j = 0; j < m; ++j) {
      for (int i = j; i < n; i += 2 * m) {
        const float br = at(i + m).real(), bi = at(i + m).imag();
        const float tr = wr * br - wi * bi, ti = wr * bi + wi * br;
        const float ar = at(i).real(), ai = at(i).imag();
        at(i + m) = {ar - tr, ai - ti};
        at(i) = {ar + tr, ai + ti};
      }
      const float nr = wr * c - wi * d;
      wi = wi * c + wr * d;
      wr = nr;
    }
  }
}

Plane ModelFast(const edgemodel::Img& g, float scale) {
  Plane p = Samples(g, scale);
  for (int y = 0; y < g.h; ++y) ModelFft(&p[static_cast<size_t>(y) * g.w], g.w, 1, -0.5f);
  if (g.h >= 2)
    for (int x = 0; x < g.w; ++x) ModelFft(&p[static_cast<size_t>(x)], g.h, g.w, -3.1415927f);
  return p;
}

// The plain DFT in double precision, rows then columns, centred by the
// checkerboard.
std::vector<std::complex<double>> ReferenceDft(const edgemodel::Img& g, float scale) {
  const Plane s = Samples(g, scale);
  std::vector<std::complex<double>> a(s.begin(), s.end()), b(a.size());
  const double pi = std::acos(-1.0);
  for (int y = 0; y < g.h; ++y)
    for (int u = 0; u < g.w; ++u) {
      std::complex<double> sum = 0;
      for (int x = 0; x < g.w; ++x) sum += a[size_t(y) * g.w + x] * std::polar(1.0, -2 * pi * x * u / g.w);
      b[size_t(y) * g.w + u] = sum;
    }
  for (int x = 0; x < g.w; ++x)
    for (int v = 0; v < g.h; ++v) {
      std::complex<double> sum = 0;
      for (int y = 0; y < g.h; ++y) sum += b[size_t(y) * g.w + x] * std::polar(1.0, -2 * pi * y * v / g.h);
      a[size_t(v) * g.w + x] = sum;
    }
  return a;
}

void Fill(EROI<EComplex64>& roi, EComplex64 v) {
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) roi.GetImagePtr(0, y)[x] = v;
}

template <class F>
void ForRoi(EROI<EComplex64>& roi, F&& f) {
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) f(x, y, roi.GetImagePtr(0, y)[x]);
}

TEST(Fourier, FastTransformMatchesItsButterfliesBitForBitOnEveryPath) {
  Rng rng(7);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 40; ++iter) {
      // Up to 256: batches of more than 64 points hold spare points.
      const int w = 1 << (rng() % 9), h = 1 << (iter % 5 == 0 ? rng() % 2 : rng() % 9);
      EImage<EBW8> si;
      EImage<EComplex64> di;
      EROI<EBW8> s;
      EROI<EComplex64> d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      const float scale = 0.25f + static_cast<float>(rng() % 1000) / 100.0f;
      const Plane want = ModelFast(edgemodel::FromRoi(s), scale);
      const auto before = testsupport::Snapshot(di);
      ImgFastDFT(&s, &d, scale);
      ASSERT_EQ(EGetError(), E_OK);
      ForRoi(d, [&](int x, int y, const EComplex64& c) {
        const std::complex<float> e = want[size_t(y) * w + x];
        const float er = e.real(), ei = e.imag();
        ASSERT_EQ(std::memcmp(&c.re, &er, 4), 0) << path << " " << w << "x" << h << " at " << x << "," << y;
        ASSERT_EQ(std::memcmp(&c.im, &ei, 4), 0) << path << " " << w << "x" << h << " at " << x << "," << y;
      });
      auto after = testsupport::Snapshot(di);  // nothing outside the ROI moved
      for (int y = 0; y < h; ++y)
        std::memcpy(&after[size_t(d.GetOrgY() + y) * di.GetRowPitch() + size_t(d.GetOrgX()) * 8],
                    &before[size_t(d.GetOrgY() + y) * di.GetRowPitch() + size_t(d.GetOrgX()) * 8], size_t(w) * 8);
      ASSERT_EQ(after, before);
    }
  }
}

TEST(Fourier, SlowTransformIsTheDftWithinSinglePrecision) {
  Rng rng(8);
  for (int iter = 0; iter < 30; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 13), h = 1 + static_cast<int>(rng() % 11);
    EImage<EBW8> si;
    EImage<EComplex64> di;
    EROI<EBW8> s;
    EROI<EComplex64> d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(si, rng);
    const edgemodel::Img g = edgemodel::FromRoi(s);
    const auto want = ReferenceDft(g, 2.0f);
    ImgSlowDFT(&s, &d, 2.0f);
    ASSERT_EQ(EGetError(), E_OK);
    const double tolerance = 2e-5 * 255 * 2 * std::sqrt(double(w) * h) * (w + h);
    ForRoi(d, [&](int x, int y, const EComplex64& c) {
      const std::complex<double> e = want[size_t(y) * w + x];
      ASSERT_NEAR(c.re, e.real(), tolerance) << w << "x" << h << " at " << x << "," << y;
      ASSERT_NEAR(c.im, e.imag(), tolerance) << w << "x" << h << " at " << x << "," << y;
    });
  }
}

TEST(Fourier, WorkedSpectraAndSizes) {
  EImage<EBW8> flat(4, 4);
  EImage<EComplex64> out(4, 4);
  ImgCopy(EBW8(50), &flat);
  ImgSlowDFT(&flat, &out, 1.0f);
  ASSERT_EQ(EGetError(), E_OK);
  ForRoi(out, [](int x, int y, const EComplex64& c) {
    EXPECT_NEAR(c.re, x == 2 && y == 2 ? 200.0f : 0.0f, 1e-3f) << x << "," << y;
    EXPECT_NEAR(c.im, 0.0f, 1e-3f);
  });
  // Width 100 is refused; width 1 and height 8 runs; height 1 is the row
  // pass alone.
  EImage<EBW8> wide(100, 4), column(1, 8), row(8, 1);
  EImage<EComplex64> wideOut(100, 4), columnOut(1, 8), rowOut(8, 1);
  Fill(wideOut, EComplex64(1, 2));
  const auto before = testsupport::Snapshot(wideOut);
  ImgFastDFT(&wide, &wideOut, 1.0f);
  EXPECT_EQ(EGetError(), E_ERROR_NOT_POWER_OF_TWO);
  EXPECT_STREQ(EGetErrorTrace(), "ImgFastDFT");
  EXPECT_EQ(testsupport::Snapshot(wideOut), before);
  ImgCopy(EBW8(9), &column);
  ImgFastDFT(&column, &columnOut, 1.0f);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_NEAR(columnOut.GetPixel(0, 4).re, 9 * 8 / std::sqrt(8.0f), 1e-4f);  // the centre holds the sum
  for (int x = 0; x < 8; ++x) row.SetPixel(EBW8(static_cast<unsigned char>(10 * x)), x, 0);
  ImgFastDFT(&row, &rowOut, 1.0f);
  const Plane want = ModelFast(edgemodel::FromRoi(row), 1.0f);
  for (int x = 0; x < 8; ++x) EXPECT_EQ(rowOut.GetPixel(x, 0).re, want[size_t(x)].real());
  // Refusals of both transforms.
  for (auto fn : {ImgSlowDFT, ImgFastDFT}) {
    fn(&flat, &wideOut, 1.0f);
    EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
    fn(nullptr, &out, 1.0f);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  }
  EXPECT_STREQ(EGetErrorTrace(), "ImgFastDFT");
  EXPECT_EQ(testsupport::Snapshot(wideOut), before);
}

// The byte of a float truncated, as unsigned capped at 255.
int Cap(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return 255;
  const unsigned u = static_cast<unsigned>(static_cast<int>(v));
  return u > 255 ? 255 : static_cast<int>(u);
}

TEST(ComplexImages, ModulusRescaledModulusAndArgumentMatchTheirModels) {
  Rng rng(9);
  for (int iter = 0; iter < 40; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 20), h = 1 + static_cast<int>(rng() % 20);
    EImage<EComplex64> si;
    EImage<EBW8> di;
    EROI<EComplex64> s;
    EROI<EBW8> d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(di, rng);
    std::uniform_real_distribution<float> value(-300.0f, 300.0f);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        s.GetImagePtr(0, y)[x] = x % 5 == 3 ? EComplex64(0, 0) : EComplex64(value(rng), value(rng));
    const float scale = iter % 7 == 0 ? -1.0f : 0.5f, logScale = 40.0f;
    const int logarithmic = iter % 2;
    const auto before = testsupport::Snapshot(di);
    edgemodel::Img mod(w, h), res(w, h), arg(w, h);
    const float cx = w * 0.5f, cy = h * 0.5f, q = scale / (cx * cx + cy * cy);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const EComplex64 c = s.GetImagePtr(0, y)[x];
        const float m = std::sqrt(c.re * c.re + c.im * c.im);
        auto finish = [&](float v) { return Cap(logarithmic ? mirel::Log(v + 1.0f) * logScale : v); };
        mod.at(x, y) = finish(m * scale);
        const float dx = x - cx, dy = y - cy;
        res.at(x, y) = x < h ? finish(m * (dx * dx + dy * dy) * q) : 0x5A;
        float t = c.re == 0 && c.im == 0 ? 0.0f : mirel::Atan2(c.im, c.re) * 0.15915494f;
        if (t < 0) t += 1.0f;
        arg.at(x, y) = Cap(t * 256.0f);
      }
    ImgComplexModulus(&s, &d, scale, logarithmic, logScale);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, mod)) << w << "x" << h;
    ImgCopy(EBW8(0x5A), &d);  // columns from the height on stay as they were
    ImgComplexRescaledModulus(&s, &d, scale, logarithmic, logScale);
    ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, res)) << w << "x" << h;
    ImgComplexArgument(&s, &d);
    ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, arg)) << w << "x" << h;
  }
}

TEST(ComplexImages, WorkedNumbersAndRefusals) {
  EImage<EComplex64> s(4, 1);
  EImage<EBW8> d(4, 1), other(3, 1);
  s.SetPixel(EComplex64(0, 0), 0, 0);
  s.SetPixel(EComplex64(-1, 0), 1, 0);
  s.SetPixel(EComplex64(0, -1), 2, 0);
  s.SetPixel(EComplex64(1, 0), 3, 0);
  ImgComplexArgument(&s, &d);
  EXPECT_EQ(d.GetPixel(0, 0).value, 0);
  EXPECT_EQ(d.GetPixel(1, 0).value, 128);
  EXPECT_EQ(d.GetPixel(2, 0).value, 192);
  ImgComplexModulus(&s, &d, 10.0f, 0, 1e9f);  // logScale ignored
  EXPECT_EQ(d.GetPixel(1, 0).value, 10);
  ImgComplexModulus(&s, &d, 10.0f, 1, 100.0f);
  EXPECT_EQ(d.GetPixel(0, 0).value, 0);  // ln(0 + 1) = 0
  EXPECT_EQ(d.GetPixel(1, 0).value, 239);  // ln(11) * 100
  ImgComplexModulus(&s, &d, -10.0f, 0, 0.0f);
  EXPECT_EQ(d.GetPixel(1, 0).value, 255);  // negative: 255 as unsigned
  const auto before = testsupport::Snapshot(other);
  ImgComplexModulus(&s, &other, 1.0f, 0, 0.0f);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgComplexModulus");
  ImgComplexRescaledModulus(nullptr, &other, 1.0f, 0, 0.0f);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgComplexRescaledModulus");
  ImgComplexArgument(&s, &other);
  EXPECT_STREQ(EGetErrorTrace(), "ImgComplexArgument");
  EXPECT_EQ(testsupport::Snapshot(other), before);
  // A ROI higher than wide: the rescaled modulus stops at the row's end.
  EImage<EComplex64> tall(2, 6);
  EImage<EBW8> tallOut(2, 6);
  Fill(tall, EComplex64(1, 1));
  ImgComplexRescaledModulus(&tall, &tallOut, 100.0f, 0, 0.0f);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(tallOut.GetPixel(0, 0).value, Cap(std::sqrt(2.0f) * 10.0f * (100.0f / 10.0f)));
}

TEST(ComplexImages, DiscEnergyIsACumulativeRadialProfile) {
  Rng rng(10);
  EImage<EComplex64> s(7, 5);
  std::uniform_real_distribution<float> value(-3.0f, 3.0f);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 7; ++x) s.SetPixel(EComplex64(value(rng), value(rng)), x, y);
  const float cx = 3.5f, cy = 2.5f;
  const int n = static_cast<int>(std::sqrt(cx * cx + cy * cy)) + 1;  // 5
  std::vector<float> want(static_cast<size_t>(n), 0.0f);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 7; ++x) {
      const EComplex64 c = s.GetPixel(x, y);
      const float dx = x - cx, dy = y - cy;
      want[static_cast<size_t>(std::sqrt(dx * dx + dy * dy))] += c.re * c.re + c.im * c.im;
    }
  want[0] = 0;
  for (int r = 1; r < n; ++r) want[size_t(r)] += want[size_t(r) - 1];
  EVector shortVector, longVector;
  shortVector.SetType(7, 2, 0);
  longVector.SetType(7, 9, 0);
  static_cast<float*>(longVector.GetDataPtr())[n] = 42.0f;
  for (EVector* v : {&shortVector, &longVector}) {
    ImgComplexDiscEnergy(&s, v);
    ASSERT_EQ(EGetError(), E_OK);
    for (int r = 0; r < n; ++r) EXPECT_EQ(static_cast<float*>(v->GetDataPtr())[r], want[size_t(r)]) << r;
  }
  EXPECT_EQ(shortVector.GetNbGroup(), n);
  EXPECT_EQ(longVector.GetNbGroup(), 9);
  EXPECT_EQ(static_cast<float*>(longVector.GetDataPtr())[n], 42.0f);
  // The vector's checks, in order.
  EVector wrongKind, bytes, empty;
  wrongKind.SetType(2, 4, 1);
  bytes.SetType(7, 4, 0);
  bytes.SetStructure(E_VECTOR_DATA_8BIT, 4, 1, E_VECTOR_DATA_FLOAT);
  ImgComplexDiscEnergy(&s, &wrongKind);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_KIND);
  EXPECT_STREQ(EGetErrorTrace(), "ImgComplexDiscEnergy");
  ImgComplexDiscEnergy(&s, &empty);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_KIND);
  ImgComplexDiscEnergy(nullptr, &longVector);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(static_cast<float*>(longVector.GetDataPtr())[n], 42.0f);
}

}  // namespace
