// Affine resampling: the fixed-point model on random ROIs and transforms in
// every interpolation and on every path, the worked numbers, registration,
// and refused calls.
#include <cmath>
#include <string>
#include <vector>

#include "geometry_model.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using Bytes = std::vector<unsigned char>;

// The image's buffer as it must be: `before`, with the ROI's pixels (each
// channel from its plane) written over it.
template <class T>
Bytes Expected(const EImage<T>& img, const EROI<T>& roi, const std::vector<gmodel::Plane>& planes,
               const Bytes& before) {
  Bytes want = before;
  const auto* base = reinterpret_cast<const unsigned char*>(img.GetImagePtr(0, 0));
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) {
      const size_t at = static_cast<size_t>(reinterpret_cast<const unsigned char*>(roi.GetImagePtr(x, y)) - base);
      for (size_t c = 0; c < planes.size(); ++c) {
        const uint32_t v = planes[c].at(x, y);
        if (sizeof(T) == 2) {
          want[at] = static_cast<unsigned char>(v);
          want[at + 1] = static_cast<unsigned char>(v >> 8);
        } else {
          want[at + c] = static_cast<unsigned char>(v);
        }
      }
    }
  return want;
}

struct Map {
  float k[6];
};

// A random transform of one of several kinds, mapping a source of sw x sh
// pixels roughly onto a destination of dw x dh.
Map RandomMap(Rng& rng, int kind, int dw, int dh) {
  auto uni = [&](double lo, double hi) { return static_cast<float>(lo + (hi - lo) * (rng() % 100001) / 100000.0); };
  switch (kind) {
    case 0: return {{1, 0, 0, 0, 1, 0}};                                                 // identity
    case 1: return {{1, 0, static_cast<float>(static_cast<int>(rng() % 9) - 4) / 2.0f, 0, 1,
                     static_cast<float>(static_cast<int>(rng() % 5) - 2) / 4.0f}};        // whole and half pixels
    case 2: return {{1, 0, uni(-3, 3), 0, 1, uni(-2, 2)}};                               // sub-pixel shift
    case 3: return {{uni(0.3, 3), 0, uni(-2, 2), 0, uni(0.3, 3), uni(-2, 2)}};           // scales
    case 4: {                                                                              // rotation and scale
      const float t = uni(-3.2, 3.2), s = uni(0.5, 2);
      return {{s * std::cos(t), s * std::sin(t), dw / 2.0f, -s * std::sin(t), s * std::cos(t), dh / 2.0f}};
    }
    case 5: return {{1, uni(-1, 1), uni(-3, 3), uni(-0.5, 0.5), 1, uni(-2, 2)}};          // shears
    case 6: return {{uni(0.9, 1.1), uni(-0.05, 0.05), uni(-1, 1), uni(-0.05, 0.05), uni(0.9, 1.1), uni(-1, 1)}};
    case 7: {                                                                              // exact scales
      const float scales[5] = {0.5f, 1.0f, 2.0f, 0.25f, -1.0f};
      return {{scales[rng() % 5], 0, static_cast<float>(rng() % 9) / 4.0f - 1, 0, scales[rng() % 5],
               static_cast<float>(rng() % 9) / 4.0f - 1}};
    }
    default: {                                                                             // extreme steps
      const float big = (rng() & 1) ? 1e-6f : 3e5f;
      return {{big, uni(-1, 1), uni(-1e5, 1e5), uni(-1, 1), (rng() & 1) ? big : 1.0f, uni(-1e5, 1e5)}};
    }
  }
}

TEST(LinearTransform, MatchesTheFixedPointModelOnRandomRoisOnEveryPath) {
  Rng rng(2024);
  int simdSized = 0;
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 400; ++iter) {
      const int sw = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 6 : 70));
      const int sh = 1 + static_cast<int>(rng() % (iter % 4 == 1 ? 3 : 16));
      const int dw = 1 + static_cast<int>(rng() % 90), dh = 1 + static_cast<int>(rng() % 10);
      const int bits = (iter % 3) * 4;
      const int kind = static_cast<int>(rng() % 9);
      const Map m = RandomMap(rng, kind, dw, dh);
      EImage<EBW8> simg, dimg;
      EROI<EBW8> src, dst;
      testsupport::PlaceRandom(simg, src, sw, sh, rng);
      testsupport::PlaceRandom(dimg, dst, dw, dh, rng, 70);
      testsupport::FillRandom(simg, rng);
      testsupport::FillRandom(dimg, rng);
      const Bytes before = testsupport::Snapshot(dimg);
      gmodel::Steps st;
      ASSERT_TRUE(gmodel::Invert(m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], st));
      const gmodel::Plane want = gmodel::Transform(gmodel::FromRoi(src), st, bits, dw, dh);
      ImgLinearTransform(&src, m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], &dst, bits);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(dimg), Expected(dimg, dst, {want}, before))
          << "path " << path << " kind " << kind << " bits " << bits << " " << sw << "x" << sh << " -> " << dw
          << "x" << dh;
      simdSized += dw >= 16 && sw >= 8;
    }
  }
  EXPECT_GT(simdSized, 100);
}

// Wide rows near scale 1 put most blocks inside the source, so the lanes do
// the work; the fast paths must give the scalar bytes.
TEST(LinearTransform, FastPathsGiveTheScalarBytesOnWideRows) {
  Rng rng(5);
  EImage<EBW8> src(300, 40), ref(257, 37), out(257, 37);
  testsupport::FillRandom(src, rng);
  for (int iter = 0; iter < 24; ++iter) {
    const Map m = RandomMap(rng, 2 + iter % 6, 257, 37);
    const int bits = (iter % 3) * 4;
    {
      testsupport::PathGuard scalar(-1);
      ImgLinearTransform(&src, m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], &ref, bits);
    }
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      ImgLinearTransform(&src, m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], &out, bits);
      ASSERT_EQ(testsupport::Bytes(out), testsupport::Bytes(ref)) << "path " << path << " iter " << iter;
    }
  }
}

TEST(LinearTransform, SixteenBitAndColourFollowTheModel) {
  Rng rng(77);
  for (int iter = 0; iter < 120; ++iter) {
    const int sw = 1 + static_cast<int>(rng() % 40), sh = 1 + static_cast<int>(rng() % 12);
    const int dw = 1 + static_cast<int>(rng() % 50), dh = 1 + static_cast<int>(rng() % 9);
    const int bits = (iter % 3) * 4;
    const Map m = RandomMap(rng, static_cast<int>(rng() % 9), dw, dh);
    gmodel::Steps st;
    ASSERT_TRUE(gmodel::Invert(m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], st));
    {
      EImage<EBW16> simg, dimg;
      EROI<EBW16> src, dst;
      testsupport::PlaceRandom(simg, src, sw, sh, rng);
      testsupport::PlaceRandom(dimg, dst, dw, dh, rng);
      testsupport::FillRandom(simg, rng);
      testsupport::FillRandom(dimg, rng);
      const Bytes before = testsupport::Snapshot(dimg);
      ImgLinearTransform(&src, m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], &dst, bits);
      ASSERT_EQ(EGetError(), E_OK);
      const gmodel::Plane want = gmodel::Transform(gmodel::FromRoi(src), st, bits, dw, dh);
      ASSERT_EQ(testsupport::Snapshot(dimg), Expected(dimg, dst, {want}, before)) << "BW16 iter " << iter;
    }
    {
      EImage<EC24> simg, dimg;
      EROI<EC24> src, dst;
      testsupport::PlaceRandom(simg, src, sw, sh, rng);
      testsupport::PlaceRandom(dimg, dst, dw, dh, rng);
      testsupport::FillRandom(simg, rng);
      testsupport::FillRandom(dimg, rng);
      const Bytes before = testsupport::Snapshot(dimg);
      ImgLinearTransform(&src, m.k[0], m.k[1], m.k[2], m.k[3], m.k[4], m.k[5], &dst, bits);
      ASSERT_EQ(EGetError(), E_OK);
      std::vector<gmodel::Plane> want;
      for (int c = 0; c < 3; ++c) want.push_back(gmodel::Transform(gmodel::FromRoi(src, c), st, bits, dw, dh));
      ASSERT_EQ(testsupport::Snapshot(dimg), Expected(dimg, dst, want, before)) << "C24 iter " << iter;
    }
  }
}

TEST(LinearTransform, WorkedNumbers) {
  Rng rng(3);
  EImage<EBW8> src(37, 9), dst(37, 9), big(45, 13);
  testsupport::FillRandom(src, rng);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    // The identity copies in every mode, last row and column included.
    for (int bits : {0, 4, 8}) {
      ImgLinearTransform(&src, 1, 0, 0, 0, 1, 0, &dst, bits);
      EXPECT_EQ(testsupport::Bytes(dst), testsupport::Bytes(src)) << bits;
    }
    // Half a pixel right: the average of neighbours rounded down, the first
    // column alone in the edge zone.
    ImgLinearTransform(&src, 1, 0, 0.5f, 0, 1, 0, &dst, 8);
    for (int y = 0; y < 9; ++y) {
      EXPECT_EQ(dst.GetPixel(0, y).value, src.GetPixel(0, y).value);
      for (int x = 1; x < 37; ++x)
        ASSERT_EQ(dst.GetPixel(x, y).value, (src.GetPixel(x - 1, y).value + src.GetPixel(x, y).value) >> 1);
    }
    // With 4 fraction bits a shift below 1/16 of a pixel has no effect.
    ImgLinearTransform(&src, 1, 0, -0.05f, 0, 1, -0.03f, &dst, 4);
    EXPECT_EQ(testsupport::Bytes(dst), testsupport::Bytes(src));
    // A destination larger than the mapped source gets a border of 0.
    ImgLinearTransform(&src, 1, 0, 4, 0, 1, 2, &big, 0);
    for (int y = 0; y < 13; ++y)
      for (int x = 0; x < 45; ++x) {
        const bool in = x >= 4 && x < 41 && y >= 2 && y < 11;
        ASSERT_EQ(big.GetPixel(x, y).value, in ? src.GetPixel(x - 4, y - 2).value : 0) << x << "," << y;
      }
  }
}

TEST(LinearTransform, BadInputIsRefusedWithTheDestinationUntouched) {
  Rng rng(8);
  EImage<EBW8> src(20, 10), dst(20, 10), none;
  EImage<EBW16> src16(20, 10), dst16(20, 10), none16;
  EImage<EC24> srcC(20, 10), dstC(20, 10);
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  testsupport::FillRandom(dst16, rng);
  testsupport::FillRandom(dstC, rng);
  const Bytes before = testsupport::Snapshot(dst), before16 = testsupport::Snapshot(dst16),
              beforeC = testsupport::Snapshot(dstC);
  auto expect = [&](E_ERRORS code, const char* trace) {
    EXPECT_EQ(EGetError(), code);
    EXPECT_EQ(std::string(EGetErrorTrace()), trace);
    EXPECT_EQ(testsupport::Snapshot(dst), before);
    EXPECT_EQ(testsupport::Snapshot(dst16), before16);
    EXPECT_EQ(testsupport::Snapshot(dstC), beforeC);
  };
  ImgLinearTransform(&none, 1, 0, 0, 0, 1, 0, &dst, 0);
  expect(E_ERROR_VOID_IMAGE, "ImgLinearTransform");
  ImgLinearTransform(&src, 1, 0, 0, 0, 1, 0, &none, 8);  // a void 8-bit destination: no error
  expect(E_OK, "");
  ImgLinearTransform(&src16, 1, 0, 0, 0, 1, 0, &none16, 8);
  expect(E_ERROR_VOID_IMAGE, "ImgLinearTransform (BW16)");
  ImgLinearTransform(&src, 0, 0, 3, 0, 0, 1, &dst, 8);
  expect(E_ERROR_BAD_LAST_INDEX, "ImgLinearTransform");
  ImgLinearTransform(&src, 2, 4, 0, 1, 2, 0, &dst, 0);  // singular: rows proportional
  expect(E_ERROR_BAD_LAST_INDEX, "ImgLinearTransform");
  ImgLinearTransform(&src16, 1, 0, 0, 0, 1, 0, &dst16, 2);
  expect(E_ERROR_BAD_ARGUMENT, "ImgLinearTransform (BW16)");
  ImgLinearTransform(&srcC, 1, 0, 0, 0, 1, 0, &dstC, 16);
  expect(E_ERROR_BAD_ARGUMENT, "ImgLinearTransform ( C24)");
  ImgLinearTransform(&srcC, 0, 0, 0, 0, 0, 0, &dstC, 16);  // the determinant is tested first
  expect(E_ERROR_BAD_LAST_INDEX, "ImgLinearTransform ( C24)");
  EXPECT_EQ(ImgScaleRotate(&src, 5, 5, 5, 5, 0.0f, 1.0f, 30.0f, &dst, 8), E_ERROR_BAD_LAST_INDEX);
  expect(E_ERROR_BAD_LAST_INDEX, "ImgLinearTransform <- ImgScaleRotate");
  ImgRegister(&src, &dst, 0, 0, 1, 1, 2, 2, 5, 5, 6, 6, 9, 9, 8);  // collinear source pivots
  expect(E_ERROR_SINGULAR_SYSTEM, "ImgRegister ( BW8, 3 pivots)");
  ImgRegister(&srcC, &dstC, 0, 0, 1, 1, 2, 2, 5, 5, 6, 6, 9, 9, 8);
  expect(E_ERROR_SINGULAR_SYSTEM, "ImgRegister ( C24, 3 pivots)");
  ImgRegister(&src, &dst, 0, 0, 3, 0, 0, 3, 0, 0, 3, 0, 0, 3, 5);
  expect(E_ERROR_BAD_ARGUMENT, "ImgLinearTransform <- ImgRegister ( BW8, 3 pivots)");
}

// A source too large for 16.16 positions is refused; the largest accepted
// one is read only inside, whatever the steps wrap to (the sanitizer build
// shows any read outside).
TEST(LinearTransform, LargeSourcesAreRefusedOrReadInside) {
  EImage<EBW8> wide(32768, 1), dst(40, 3);
  ImgCopy(EBW8(7), &dst);
  const Bytes before = testsupport::Snapshot(dst);
  ImgLinearTransform(&wide, 1, 0, 0, 0, 1, 0, &dst, 8);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_LAST_INDEX);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  EImage<EBW8> largest(32767, 2);
  ImgCopy(EBW8(200), &largest);
  Rng rng(4);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 30; ++iter) {
      const Map m = RandomMap(rng, 3 + iter % 6, 40, 3);
      const float k[6] = {m.k[0] / 1000.0f, m.k[1], m.k[2] - 32000.0f * (iter % 2), m.k[3], m.k[4], m.k[5]};
      ImgLinearTransform(&largest, k[0], k[1], k[2], k[3], k[4], k[5], &dst, (iter % 3) * 4);
      ASSERT_EQ(EGetError(), E_OK);
      for (uint8_t b : testsupport::Bytes(dst)) ASSERT_TRUE(b == 0 || b == 200) << int(b);
    }
  }
}

TEST(ScaleRotate, InPlaceEqualsTheCopyAndBoundariesAreKept) {
  Rng rng(11);
  EImage<EBW8> img(33, 21), copy(33, 21), want(33, 21);
  EImage<EBW16> img16(33, 21), copy16(33, 21), want16(33, 21);
  testsupport::FillRandom(img, rng);
  testsupport::FillRandom(img16, rng);
  ImgCopy(&img, &copy);
  ImgCopy(&img16, &copy16);
  EXPECT_EQ(ImgScaleRotate(&copy, 16, 10, 15, 11, 1.3f, 0.8f, 25.0f, &want, 8), E_OK);
  EXPECT_EQ(ImgScaleRotate(&img, 16, 10, 15, 11, 1.3f, 0.8f, 25.0f, 8), E_OK);
  EXPECT_EQ(testsupport::Bytes(img), testsupport::Bytes(want));
  ImgScaleRotate(&copy16, 16, 10, 15, 11, 0.7f, 1.1f, -40.0f, &want16, 4);
  ImgScaleRotate(&img16, 16, 10, 15, 11, 0.7f, 1.1f, -40.0f, 4);
  EXPECT_EQ(testsupport::Bytes(img16), testsupport::Bytes(want16));
  // An angle of 0 and unit scales reduce to a shift of the pivot.
  EImage<EBW8> a(33, 21), b(33, 21);
  ImgScaleRotate(&copy, 3, 4, 5, 2, 1, 1, 0, &a, 0);
  ImgLinearTransform(&copy, 1, 0, 2, 0, 1, -2, &b, 0);
  EXPECT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
}

TEST(Register, RecoversKnownTransforms) {
  Rng rng(13);
  EImage<EBW8> src(30, 20), a(34, 24), b(34, 24);
  EImage<EC24> srcC(30, 20), aC(34, 24), bC(34, 24);
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(srcC, rng);
  // One pivot: a translation.
  ImgRegister(&src, &a, 4, 6, 7.5f, 5, 8);
  ImgLinearTransform(&src, 1, 0, 3.5f, 0, 1, -1, &b, 8);
  EXPECT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
  // Three pivots through X = 2x - y + 3, Y = 0.5x + y - 1.
  auto X = [](float x, float y) { return 2 * x - y + 3; };
  auto Y = [](float x, float y) { return 0.5f * x + y - 1; };
  ImgRegister(&src, &a, 0, 0, 10, 2, 4, 8, X(0, 0), Y(0, 0), X(10, 2), Y(10, 2), X(4, 8), Y(4, 8), 4);
  ASSERT_EQ(EGetError(), E_OK);
  ImgLinearTransform(&src, 2, -1, 3, 0.5f, 1, -1, &b, 4);
  EXPECT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
  ImgRegister(&srcC, &aC, 0, 0, 10, 2, 4, 8, X(0, 0), Y(0, 0), X(10, 2), Y(10, 2), X(4, 8), Y(4, 8), 0);
  ImgLinearTransform(&srcC, 2, -1, 3, 0.5f, 1, -1, &bC, 0);
  EXPECT_EQ(testsupport::Bytes(aC), testsupport::Bytes(bC));
  // Two pivots (0,0),(1,0) onto (10,0),(10,1): X = 10 - y, Y = x, so
  // destination (u, v) shows source (v, 9 - u).
  ImgRegister(&src, &a, 0, 0, 1, 0, 10, 0, 10, 1, 0, 0);
  for (int v = 0; v < 24; ++v)
    for (int u = 0; u < 34; ++u) {
      const bool in = u < 10 && v < 30;
      ASSERT_EQ(a.GetPixel(u, v).value, in ? src.GetPixel(v, 9 - u).value : 0) << u << "," << v;
    }
  // Coincident source pivots: without scaling the source direction counts
  // as 0 (the same map as above); with scaling the scale is not finite and
  // nothing stops it, but nothing is read outside either.
  EImage<EBW8> c(34, 24);
  ImgRegister(&src, &c, 0, 0, 0, 0, 10, 0, 10, 1, 0, 0);
  EXPECT_EQ(testsupport::Bytes(c), testsupport::Bytes(a));
  ImgRegister(&src, &c, 0, 0, 0, 0, 10, 0, 10, 1, 8, 1);
  EXPECT_EQ(EGetError(), E_OK);
  // With scaling, twice the distance doubles the image.
  ImgRegister(&src, &a, 0, 0, 1, 0, 0, 0, 2, 0, 0, 1);
  for (int v = 0; v < 24; ++v)
    for (int u = 0; u < 34; ++u) ASSERT_EQ(a.GetPixel(u, v).value, src.GetPixel(u / 2, v / 2).value);
}

}  // namespace
