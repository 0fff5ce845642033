// Gradient images: pairs and lookups against a model on random ROIs on every
// path, 8 and 16-bit; the lookup tables' worked numbers; refusals.
#include <cmath>

#include "edge_model.h"

namespace {

using edgemodel::Img;
using testsupport::Rng;

TEST(Gradient, PairsMatchTheModelOnRandomRoisOnEveryPath) {
  Rng rng(3);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 90; ++iter) {
      const int w = edgemodel::RandomSide(rng, iter, 4, 150), h = edgemodel::RandomSide(rng, iter + 1, 3, 6);
      EImage<EBW32> di;
      EROI<EBW32> d;
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(di, rng);
      const auto before = testsupport::Snapshot(di);
      Img want;
      if (iter % 2 == 0) {
        EImage<EBW8> si;
        EROI<EBW8> s;
        testsupport::PlaceRandom(si, s, w, h, rng);
        testsupport::FillRandom(si, rng);
        want = edgemodel::Pairs(edgemodel::FromRoi(s));
        ImgGradientVector(&s, &d);
      } else {  // 16-bit values well above 255: the differences wrap at 16 bits
        EImage<EBW16> si;
        EROI<EBW16> s;
        testsupport::PlaceRandom(si, s, w, h, rng);
        testsupport::FillRandom(si, rng);
        want = edgemodel::Pairs(edgemodel::FromRoi(s));
        ImgGradientVector(&s, &d);
      }
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, want))
          << "path " << path << " " << w << "x" << h << " iter " << iter;
    }
  }
}

TEST(Gradient, LookupsReadTheTableAtThePairOnEveryPath) {
  Rng rng(4);
  // A random table placed inside a wider image: it is read by its pitch.
  EImage<EBW8> tableImage(600, 520);
  testsupport::FillRandom(tableImage, rng);
  EROI<EBW8> table(&tableImage, 37, 5, 512, 512);
  auto lookup = [&](long long pair) {
    return table.GetPixel(edgemodel::Dx(pair) + 256, edgemodel::Dy(pair) + 256).value;
  };
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      const int w = edgemodel::RandomSide(rng, iter, 4, 700), h = edgemodel::RandomSide(rng, iter + 1, 3, 5);
      EImage<EBW8> si, di;
      EImage<EBW32> pi;
      EROI<EBW8> s, d;
      EROI<EBW32> p;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::PlaceRandom(pi, p, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      const Img pairs = edgemodel::Pairs(edgemodel::FromRoi(s));
      Img want(w, h);
      for (size_t i = 0; i < pairs.px.size(); ++i) want.px[i] = lookup(pairs.px[i]);
      const auto before = testsupport::Snapshot(di);
      ImgGradientScalar(&s, &d, &table);  // pairs formed on the fly
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, want)) << path << " " << w;
      ImgGradientVector(&s, &p);
      ImgCopy(EBW8(0), &d);
      ImgGradientScalar(&p, &d, &table);  // stored pairs
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, want)) << path << " " << w;
    }
  }
  // Stored pairs beyond the table wrap around it.
  EImage<EBW32> odd(2, 1);
  EImage<EBW8> out(2, 1);
  odd.SetPixel(EBW32((300u & 0xFFFF) | ((static_cast<unsigned>(-260) & 0xFFFF) << 16)), 0, 0);
  odd.SetPixel(EBW32(0x7FFF8000u), 1, 0);
  ImgGradientScalar(&odd, &out, &table);
  EXPECT_EQ(out.GetPixel(0, 0).value, table.GetPixel(300 - 512 + 256, -260 + 512 + 256).value);
  EXPECT_EQ(out.GetPixel(1, 0).value, table.GetPixel(256, 255).value);  // (-32768, 32767)
}

TEST(Gradient, WorkedNumbersOfTheTablesAndThePairLayout) {
  EImage<EBW8> modulus, argument;
  ImgModulusImage(&modulus, 1.0f);
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(modulus.GetWidth(), 512);
  EXPECT_EQ(modulus.GetPixel(3 + 256, 4 + 256).value, 5);
  EXPECT_EQ(modulus.GetPixel(0, 0).value, 255);
  EXPECT_EQ(modulus.GetPixel(256 + 1, 256 + 1).value, 1);  // 1.414 + 0.5
  ImgModulusImage(&modulus, 0.25f);
  EXPECT_EQ(modulus.GetPixel(256 + 6, 256).value, 2);  // 1.5 + 0.5: rounds to nearest
  ImgArgumentImage(&argument, EBW8(0), 0.0f);
  EXPECT_EQ(argument.GetPixel(256 + 9, 256).value, 0);
  EXPECT_EQ(argument.GetPixel(256, 256 + 9).value, 64);
  EXPECT_EQ(argument.GetPixel(256 - 9, 256).value, 128);
  EXPECT_EQ(argument.GetPixel(256, 256 - 9).value, 192);
  EXPECT_EQ(argument.GetPixel(256 + 5, 256 + 5).value, 32);
  ImgArgumentImage(&argument, EBW8(77), 180.0f);  // half a turn is 256
  EXPECT_EQ(argument.GetPixel(256, 256).value, 0);  // the centre ignores the origin
  EXPECT_EQ(argument.GetPixel(256 + 9, 256).value, 77);
  EXPECT_EQ(argument.GetPixel(256, 256 + 9).value, (77 + 128) & 255);

  // The pair layout: dx = left - right low, dy = up - down high.
  EImage<EBW8> s(3, 3);
  EImage<EBW32> d(3, 3);
  const unsigned char v[9] = {1, 2, 3, 40, 50, 60, 200, 10, 7};
  for (int i = 0; i < 9; ++i) s.SetPixel(EBW8(v[i]), i % 3, i / 3);
  ImgGradientVector(&s, &d);
  EXPECT_EQ(d.GetPixel(1, 1).value, (static_cast<unsigned>(40 - 60) & 0xFFFF) | ((static_cast<unsigned>(2 - 10) & 0xFFFF) << 16));
  EXPECT_EQ(d.GetPixel(0, 0).value, (static_cast<unsigned>(1 - 2) & 0xFFFF) | ((static_cast<unsigned>(1 - 40) & 0xFFFF) << 16));
  EImage<EBW8> one(1, 1);
  EImage<EBW32> pair(1, 1);
  pair.SetPixel(EBW32(123), 0, 0);
  ImgGradientVector(&one, &pair);
  EXPECT_EQ(pair.GetPixel(0, 0).value, 0u);
}

TEST(Gradient, RefusalsLeaveTheDestinationAlone) {
  EImage<EBW8> src(8, 4), dst(8, 4), other(9, 4), table(511, 512), table16Small(512, 512);
  EImage<EBW32> pairs(8, 4), bad(8, 3);
  EImage<EBW16> src16(8, 4), dst16(8, 4), small16(512, 512);
  ImgCopy(EBW8(3), &dst);
  ImgCopy(EBW16(3), &dst16);
  const auto before = testsupport::Snapshot(dst);
  const auto before16 = testsupport::Snapshot(dst16);
  ImgGradientScalar(&src, &dst, &table);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGradientScalar");
  ImgGradientScalar(&pairs, &dst, &table);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  ImgGradientScalar(&pairs, &dst, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  ImgGradientScalar(&src, &other, &table);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgGradientScalar(&src16, &dst16, &small16);  // the 16-bit table is 0x20000 square
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGradientScalar (BW16)");
  ImgGradientScalar(&pairs, &dst16, &small16);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  EXPECT_EQ(testsupport::Snapshot(dst16), before16);

  const auto pairsBefore = testsupport::Snapshot(pairs);
  ImgGradientVector(static_cast<EROI<EBW8>*>(nullptr), &pairs);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGradientVector");
  ImgGradientVector(&src, &bad);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgGradientVector(&src16, &bad);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGradientVector (BW16)");
  EXPECT_EQ(testsupport::Snapshot(pairs), pairsBefore);
  ImgModulusImage(static_cast<EImage<EBW8>*>(nullptr), 1.0f);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgModulusImage");
}

}  // namespace
