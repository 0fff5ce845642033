#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "point_support.h"

namespace {

using testsupport::Rng;

// ---------------------------------------------------------------- normalisation

// Mean and population deviation of a ROI, in double.
template <class T>
void Moments(const EROI<T>& roi, double& mean, double& deviation) {
  double s = 0, q = 0;
  const double n = static_cast<double>(roi.GetWidth()) * roi.GetHeight();
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) {
      const double v = roi.GetImagePtr(x, y)->value;
      s += v;
      q += v * v;
    }
  mean = s / n;
  deviation = std::sqrt(q / n - mean * mean);
}

// Each value lands on v truncated, so with nothing clamped the mean falls
// by less than 1 and the deviation moves by less than 1.
template <class T>
void CheckNormalizeReaches(int lo, int span, Rng& rng) {
  for (int round = 0; round < 8; ++round) {
    pointtest::RoiPair<T, T> p(20 + static_cast<int>(rng() % 60), 2 + static_cast<int>(rng() % 6), rng);
    for (int y = 0; y < p.src.GetHeight(); ++y)
      for (int x = 0; x < p.src.GetWidth(); ++x) p.src.GetImagePtr(x, y)->value = static_cast<decltype(T{}.value)>(lo + rng() % span);
    const float mean = static_cast<float>(lo + span / 2 + static_cast<int>(rng() % 20));
    const float deviation = static_cast<float>(span) / 5.0f * (0.5f + static_cast<float>(rng() % 100) / 100.0f);
    ImgNormalize(&p.src, &p.dst, mean, deviation);
    ASSERT_EQ(EGetError(), E_OK);
    double m, s;
    Moments(p.dst, m, s);
    EXPECT_GT(m, mean - 1.0) << "round " << round;
    EXPECT_LE(m, mean + 1e-3) << "round " << round;
    EXPECT_NEAR(s, deviation, 1.0) << "round " << round;
  }
}

TEST(Normalize, ReachesTheAskedMeanAndDeviation) {
  Rng rng(41);
  CheckNormalizeReaches<EBW8>(60, 100, rng);
  CheckNormalizeReaches<EBW16>(20000, 20000, rng);
}

// Wide stretches clamp at both ends, and a constant image (deviation 0)
// makes every entry not a number or infinite: 0, or the top for +infinity.
TEST(Normalize, ClampsAndConstantImages) {
  Rng rng(42);
  pointtest::RoiPair<EBW8, EBW8> p(50, 4, rng);
  ImgNormalize(&p.src, &p.dst, 128.0f, 500.0f);
  ASSERT_EQ(EGetError(), E_OK);
  float s, m;
  ImgPixelStdDev(&p.src, s, m);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 50; ++x) {
      const double v = p.src.GetPixel(x, y) * (500.0 / s) + 128.0 - (500.0 / s) * m;
      ASSERT_EQ(p.dst.GetPixel(x, y), v < 0 ? 0 : v > 255 ? 255 : static_cast<int>(static_cast<float>(v)));
    }

  EImage<EBW8> flat(9, 3), out(9, 3);
  ImgCopy(EBW8(90), &flat);
  ImgCopy(EBW8(7), &out);
  EXPECT_EQ(ImgNormalize(&flat, &out, 100.0f, 20.0f), 0);
  EXPECT_EQ(testsupport::Bytes(out), std::vector<unsigned char>(27, 0));
  EImage<EBW16> flat16(9, 3), out16(9, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 9; ++x) *flat16.GetImagePtr(x, y) = EBW16(1000);
  ImgNormalize(&flat16, &out16, 100.0f, 20.0f);
  EXPECT_EQ(testsupport::Bytes(out16), std::vector<unsigned char>(54, 0));
}

TEST(Normalize, RefusedCalls) {
  EImage<EBW8> a(6, 4), b(6, 3), empty;
  EImage<EBW16> a16(6, 4), b16(5, 4);
  Rng rng(43);
  testsupport::FillRandom(a, rng);
  const pointtest::Refusals expect(a, b, a16, b16);
  expect(E_ERROR_SIZE_MISMATCH, "ImgNormalize", [&] { EXPECT_EQ(ImgNormalize(&a, &b, 1.0f, 1.0f), 1403); });
  expect(E_ERROR_VOID_IMAGE, "ImgNormalize", [&] { ImgNormalize(&empty, &b, 1.0f, 1.0f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgNormalize (BW16)", [&] { ImgNormalize(&a16, &b16, 1.0f, 1.0f); });
}

// ---------------------------------------------------------------- uniformize

// Components of EBW8, EBW16 and EC24, their maximum and their row vector.
template <class T>
struct Tr {
  static constexpr int kN = sizeof(T) == 3 ? 3 : 1;
  static constexpr long long kMax = sizeof(T) == 2 ? 65535 : 255;
  using Vector = std::conditional_t<sizeof(T) == 3, EC24Vector, std::conditional_t<sizeof(T) == 2, EBW16Vector, EBW8Vector>>;
  static long long Get(const T& p, int k) {
    if constexpr (kN == 3) return p.c[k];
    else return p.value;
  }
};

enum Form { kSingle, kLightDark, kSingleRow };

// One value of one component, as the header describes it.
long long Model(Form form, int multiplicative, long long s, long long a, long long b, long long light,
                long long dark, long long top) {
  auto clamp = [top](long long v) { return v < 0 ? 0 : v > top ? top : v; };
  if (form == kLightDark) return a == b ? top : clamp((s - b) * (light - dark) / (a - b) + dark);
  if (multiplicative == 0) return clamp(s - a + light);
  if (a == 0) return top;
  const long long v = form == kSingle ? s * light / a : (s * (light * 4096 / a)) >> 12;
  return v < top ? v : top;
}

template <class T>
T RandomPixel(Rng& rng) {
  T p;
  for (size_t i = 0; i < sizeof(T); ++i) reinterpret_cast<unsigned char*>(&p)[i] = static_cast<unsigned char>(rng());
  return p;
}

template <class T>
T Compose(const T& like, const std::vector<long long>& values) {
  T out = like;
  if constexpr (Tr<T>::kN == 3) {
    for (int k = 0; k < 3; ++k) out.c[k] = static_cast<unsigned char>(values[k]);
  } else {
    out.value = static_cast<decltype(out.value)>(values[0]);
  }
  return out;
}

// Every form on random ROIs. The references are random, with a share of
// zeros and of light equal to dark so that those branches are taken; the
// row forms are also checked against the image forms over a reference image
// whose rows all repeat the vector.
template <class T>
void CheckUniformize(Rng& rng) {
  using V = typename Tr<T>::Vector;
  for (int round = 0; round < 6; ++round) {
    const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 4);
    pointtest::RoiPair<T, T> p(w, h, rng);
    EImage<T> aimg, bimg, rowA, rowB;
    EROI<T> a, b;
    testsupport::PlaceRandom(aimg, a, w, h, rng);
    testsupport::PlaceRandom(bimg, b, w, h, rng);
    rowA.SetSize(w, h);
    rowB.SetSize(w, h);
    V va(static_cast<unsigned int>(w)), vb(static_cast<unsigned int>(w));
    for (int x = 0; x < w; ++x) {
      va[x] = RandomPixel<T>(rng);
      vb[x] = rng() % 8 == 0 ? va[x] : RandomPixel<T>(rng);
      if (rng() % 8 == 0) va[x] = Compose(va[x], {0, 0, 0});
      for (int y = 0; y < h; ++y) {
        *rowA.GetImagePtr(x, y) = va[x];
        *rowB.GetImagePtr(x, y) = vb[x];
      }
    }
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        *a.GetImagePtr(x, y) = rng() % 8 == 0 ? Compose(RandomPixel<T>(rng), {0, 0, 0}) : RandomPixel<T>(rng);
        *b.GetImagePtr(x, y) = rng() % 8 == 0 ? *a.GetImagePtr(x, y) : RandomPixel<T>(rng);
      }
    const T light = RandomPixel<T>(rng), dark = RandomPixel<T>(rng);
    const std::string what = "round " + std::to_string(round) + " size " + std::to_string(sizeof(T));
    auto expect = [&](Form form, int mult, const EROI<T>& ra, const EROI<T>& rb, const std::function<void()>& run) {
      p.ExpectOnEveryPath(run, [&](int x, int y) {
        std::vector<long long> v(3);
        for (int k = 0; k < Tr<T>::kN; ++k)
          v[k] = Model(form, mult, Tr<T>::Get(p.src.GetPixel(x, y), k), Tr<T>::Get(ra.GetPixel(x, y), k),
                       Tr<T>::Get(rb.GetPixel(x, y), k), Tr<T>::Get(light, k), Tr<T>::Get(dark, k), Tr<T>::kMax);
        return Compose(*p.dst.GetImagePtr(x, y), v);
      }, what + " form " + std::to_string(form) + " mult " + std::to_string(mult));
    };
    for (int mult : {0, 1}) {
      expect(kSingle, mult, a, a, [&] { ImgUniformize(&p.src, light, &a, &p.dst, mult); });
      expect(kSingleRow, mult, rowA, rowA, [&] { ImgUniformize(&p.src, light, &va, &p.dst, mult); });
    }
    expect(kLightDark, 0, a, b, [&] { ImgUniformize(&p.src, light, &a, dark, &b, &p.dst); });
    expect(kLightDark, 0, rowA, rowB, [&] { ImgUniformize(&p.src, light, &va, dark, &vb, &p.dst); });
  }
}

TEST(Uniformize, EveryFormAndTypeOnRandomRois) {
  Rng rng(44);
  CheckUniformize<EBW8>(rng);
  CheckUniformize<EBW16>(rng);
  CheckUniformize<EC24>(rng);
}

// A reference equal to the light level everywhere gives the source back, in
// both single forms, additive and multiplicative.
TEST(Uniformize, ReferenceAtTheLightLevelGivesTheSource) {
  Rng rng(45);
  pointtest::RoiPair<EBW8, EBW8> p(30, 3, rng);
  EImage<EBW8> ref(30, 3);
  ImgCopy(EBW8(180), &ref);
  EBW8Vector row(30);
  for (int x = 0; x < 30; ++x) row[x] = EBW8(180);
  for (int mult : {0, 1}) {
    ImgUniformize(&p.src, EBW8(180), &ref, &p.dst, mult);
    EXPECT_EQ(testsupport::Bytes(p.dst), testsupport::Bytes(p.src));
    ImgCopy(EBW8(0), &p.dst);
    ImgUniformize(&p.src, EBW8(180), &row, &p.dst, mult);
    EXPECT_EQ(testsupport::Bytes(p.dst), testsupport::Bytes(p.src));
  }
}

TEST(Uniformize, RefusedCalls) {
  EImage<EBW8> src(6, 4), ref(6, 4), small(6, 3), dst(6, 4), empty;
  EImage<EC24> c(6, 4), cdst(6, 4), csmall(6, 3);
  Rng rng(46);
  testsupport::FillRandom(dst, rng);
  testsupport::FillRandom(cdst, rng);
  EBW8Vector longer(7), right(6);
  EC24Vector cshort(5), cright(6);
  const pointtest::Refusals expect(dst, cdst, csmall);
  expect(E_ERROR_VECTOR_SIZE, "ImgUniformize ( BW8 Single Vector)",
         [&] { ImgUniformize(&src, EBW8(9), &longer, &dst, 1); });
  expect(E_ERROR_VECTOR_SIZE, "ImgUniformize ( BW8 Light/Dark Vectors)",
         [&] { ImgUniformize(&src, EBW8(9), &right, EBW8(1), &longer, &dst); });
  expect(E_ERROR_VECTOR_SIZE, "ImgUniformize ( C24 Light/Dark Vectors)",
         [&] { ImgUniformize(&c, EC24(9, 9, 9), &cshort, EC24(1, 1, 1), &cright, &cdst); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgUniformize ( BW8 Single Image)", [&] { ImgUniformize(&src, EBW8(9), &small, &dst, 0); });
  expect(E_ERROR_VOID_IMAGE, "ImgUniformize ( BW8 Light/Dark Images)",
         [&] { ImgUniformize(&src, EBW8(9), &ref, EBW8(1), &empty, &dst); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgUniformize ( C24 Single Vector)",
         [&] { ImgUniformize(&c, EC24(9, 9, 9), &cright, &csmall, 0); });
}

}  // namespace
