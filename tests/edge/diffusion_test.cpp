// Anisotropic diffusion against a model built on the difference planes of
// the definition, for one to three passes on random ROIs; the threshold and
// factors' worked values; refusals.
#include <cmath>

#include "mirel/foundation/float_math_internal.h"
#include "edge_model.h"
#include "mirel/edge/diffusion_internal.h"

namespace {

using edgemodel::Img;
using testsupport::Rng;

int Wrap8(long long v) { return static_cast<int8_t>(static_cast<uint8_t>(v & 255)); }

// One pass: S from the library's Gaussian (tested on its own), then planes
// with a zero margin, K, and the update pixel by pixel.
Img ModelPass(const Img& p) {
  EImage<EBW8> pi(p.w, p.h), si(p.w, p.h);
  edgemodel::ToRoi(p, pi);
  ImgConvolGaussian(&pi, &si, 3, 3);
  const Img s = edgemodel::FromRoi(si);
  Img hp(p.w + 2, p.h + 2), vp = hp, hs = hp, vs = hp;  // margin of one: plane(x + 1, y + 1)
  std::vector<long long> hist(256);
  for (int y = 0; y < p.h; ++y)
    for (int x = 0; x < p.w; ++x) {
      if (x + 1 < p.w) hp.at(x + 1, y + 1) = Wrap8(p.at(x, y) - p.at(x + 1, y)), hs.at(x + 1, y + 1) = Wrap8(s.at(x, y) - s.at(x + 1, y));
      if (y + 1 < p.h) vp.at(x + 1, y + 1) = Wrap8(p.at(x, y) - p.at(x, y + 1)), vs.at(x + 1, y + 1) = Wrap8(s.at(x, y) - s.at(x, y + 1));
      ++hist[size_t(std::abs(hs.at(x + 1, y + 1)))];
      ++hist[size_t(std::abs(vs.at(x + 1, y + 1)))];
    }
  const double n = 2.0 * p.w * p.h;
  long long acc = 0;
  int b = 0;
  for (int i = 255; i >= 0; --i)
    if ((acc += hist[size_t(i)]) >= 0.02 * n) { b = i; break; }
  acc = 0;
  unsigned k = 0;
  for (int i = 0; i < 256; ++i)
    if ((acc += hist[size_t(i)]) >= 0.9 * n) { k = unsigned(i) - 1u; break; }
  if (k < 0.2 * b) k = unsigned(0.2 * b);
  const int kk = static_cast<uint8_t>(k);
  auto c = [&](long long g) {
    if (kk == 0) return g == 0 ? 1.0f : 0.0f;
    return mirel::Exp(-static_cast<float>(g * g) / static_cast<float>(kk * kk));
  };
  Img q(p.w, p.h);
  for (int y = 0; y < p.h; ++y)
    for (int x = 0; x < p.w; ++x) {
      const int X = x + 1, Y = y + 1;
      const float flow = c(vs.at(X, Y - 1)) * vp.at(X, Y - 1) + c(-vs.at(X, Y)) * -vp.at(X, Y) +
                         c(hs.at(X - 1, Y)) * hp.at(X - 1, Y) + c(-hs.at(X, Y)) * -hp.at(X, Y);
      q.at(x, y) = static_cast<int>(static_cast<float>(p.at(x, y)) + 0.1f * flow) & 255;
    }
  return q;
}

TEST(Diffusion, PassesMatchTheModelOnRandomRois) {
  Rng rng(31);
  for (int iter = 0; iter < 18; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 30), h = 1 + static_cast<int>(rng() % 20);
    const unsigned passes = 1 + iter % 3;
    EImage<EBW8> si, di;
    EROI<EBW8> s, d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(si, rng);
    testsupport::FillRandom(di, rng);
    if (iter % 2)  // a smooth ramp with a step: K from a real histogram
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) s.GetImagePtr(0, y)[x] = EBW8(static_cast<unsigned char>(3 * x + y + (x > w / 2 ? 150 : 0)));
    Img want = edgemodel::FromRoi(s);
    for (unsigned i = 0; i < passes; ++i) want = ModelPass(want);
    const auto before = testsupport::Snapshot(di);
    ImgAnisotropicDiffusion(&s, &d, passes, 0);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, want)) << iter << " " << w << "x" << h;
    ImgAnisotropicDiffusion(&s, &s, passes, 1);  // in place
    ASSERT_EQ(edgemodel::FromRoi(s).px, want.px);
  }
}

TEST(Diffusion, WorkedValues) {
  // A flat image does not move.
  EImage<EBW8> flat(12, 7), out(12, 7);
  ImgCopy(EBW8(90), &flat);
  ImgAnisotropicDiffusion(&flat, &out, 3, 0);
  EXPECT_EQ(testsupport::Bytes(out), testsupport::Bytes(flat));
  // A step of 200: its difference is taken as -56 (the model keeps eight
  // signed bits), which turns the flow across the step around.
  EImage<EBW8> step(12, 7);
  ImgCopy(EBW8(0), &step);
  for (int y = 0; y < 7; ++y)
    for (int x = 6; x < 12; ++x) step.SetPixel(EBW8(200), x, y);
  const Img want = ModelPass(edgemodel::FromRoi(step));
  ImgAnisotropicDiffusion(&step, &out, 1, 0);
  EXPECT_EQ(edgemodel::FromRoi(out).px, want.px);
  // Thresholds: 90 % in bin 0 gives K = -1, 255 as a byte; in bin 1, K = 0
  // unless the top bins lift it.
  unsigned h[256] = {};
  h[0] = 95, h[3] = 5;
  EXPECT_EQ(mirel::edge::DiffusionThreshold(h), 255);
  h[0] = 5, h[1] = 90;
  EXPECT_EQ(mirel::edge::DiffusionThreshold(h), 0);
  h[3] = 0, h[40] = 5;  // B = 40: K = trunc(0.2 * 40) = 8
  EXPECT_EQ(mirel::edge::DiffusionThreshold(h), 8);
  // The four conduction functions.
  EXPECT_FLOAT_EQ(mirel::edge::ConductionFactor(1, 5, 3), 1.0f / 3.0f);  // 25 / 9 = 2
  EXPECT_FLOAT_EQ(mirel::edge::ConductionFactor(2, 3, 3), std::exp(-1.0f));
  EXPECT_FLOAT_EQ(mirel::edge::ConductionFactor(3, 2, 4), 0.5f * 0.75f * 0.75f);
  EXPECT_EQ(mirel::edge::ConductionFactor(3, 5, 4), 0.0f);
  EXPECT_FLOAT_EQ(mirel::edge::ConductionFactor(4, -2, 4), 0.25f);
  EXPECT_FLOAT_EQ(mirel::edge::ConductionFactor(4, -8, 4), 0.125f);
  EXPECT_EQ(mirel::edge::ConductionFactor(2, 0, 0), 1.0f);
  EXPECT_EQ(mirel::edge::ConductionFactor(2, 3, 0), 0.0f);
}

TEST(Diffusion, RefusalsLeaveTheDestinationAlone) {
  EImage<EBW8> src(6, 5), dst(6, 5), other(6, 4);
  ImgCopy(EBW8(1), &src);
  ImgCopy(EBW8(2), &dst);
  const auto before = testsupport::Snapshot(dst);
  ImgAnisotropicDiffusion(&src, &dst, 0, 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "Failed anisotropic diffusion !");
  ImgAnisotropicDiffusion(&src, &other, 1, 0);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgAnisotropicDiffusion(nullptr, &dst, 1, 0);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
}

}  // namespace
