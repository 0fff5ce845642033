// A program that holds its images, kernels and tables as const must reach
// every operation that only reads them without a const_cast. That this file
// compiles is most of the test; the calls also run and must succeed.
#include "test_support.h"

namespace {

TEST(ConstSources, ReadOnlyOperandsTakeConstObjects) {
  EImage<EBW8> g(40, 30), work(40, 30), d(40, 30);
  EImage<EBW16> w16(40, 30), d16(40, 30);
  EImage<EC24> c(40, 30), dc(40, 30);
  testsupport::Rng rng(5);
  testsupport::FillRandom(g, rng);
  testsupport::FillRandom(w16, rng);
  testsupport::FillRandom(c, rng);
  const EImage<EBW8>& src = g;
  const EImage<EBW16>& s16 = w16;
  const EImage<EC24>& sc = c;
  const EROI<EBW8> part(&src, 2, 3, 30, 20);  // a ROI over a const image
  EROI<EBW8> out(&d, 0, 0, 30, 20);
  EOk();

  ImgCopy(&src, &d);
  ImgOper(ALO_ADD, &src, &src, &d);
  ImgOper(ALO_ADD, &src, EBW8(3), &d);
  ImgOper(ALO_SUBTRACT, &s16, EBW16(3), &d16);
  ImgOper(ALO_ADD, &sc, &sc, &dc);
  ImgThreshold(&src, &d, 100);
  ImgThreshold(&s16, &d16, 100, EBW16(0), EBW16(65535));
  ImgDoubleThreshold(&part, &out, 50, 150, 0, 128, 255);
  ImgGainOffset(&src, &d, 1.5f, 2.0f);
  ImgConvert(&s16, &d, 4);

  EBWHistogramVector hist;
  ImgHistogram(&src, &hist);
  const EBWHistogramVector& h = hist;
  unsigned int t = IMG_THRESHOLD_MIN_RESIDUE;
  float below = 0, above = 0;
  ImgHistogramThreshold(&h, t, below, above, 0.5f, 0, 255);
  ImgAutoThreshold(&src, IMG_THRESHOLD_ISODATA, 0.f);
  ImgAutoThreshold(&part, IMG_THRESHOLD_RELATIVE, 0.3f);
  ImgIsodataThreshold(&h, 0, 255);
  EBW8 level;
  ImgTwoLevelsMinResidueThreshold(&h, level, below, above);
  ImgMaxEntropyThreshold(&h, below, above);
  ImgAnalyseHistogram(&h, IMG_FEATURE_MEAN, 0, 255);

  const EKernel kernel(KERNEL_SOBEL_X);
  ImgConvolKernel(&src, &d, &kernel);
  ImgConvolSymmetricKernel(&s16, &d16, &kernel);
  EXPECT_EQ(kernel.GetSizeX(), 3);
  EXPECT_EQ(kernel.GetDataPtr()[0], -1.0f);
  ImgConvolGaussian5x5(&src, &d);
  ImgConvolUniform7x7(&s16, &d16);

  float m0, m1, m2;
  ImgPixelAverage(&sc, m0, m1, m2);
  ImgPixelVariance(&part, m0, m1);
  ImgWeightedMoments(&src, m0, m1, m2);
  ImgRmsNoise(&src, &src, IMG_REFERENCE_NOISELESS);
  EXPECT_EQ(ImgPixelCompare(&src, &src), 0u);

  ImgScaleRotate(&src, 20.f, 15.f, 20.f, 15.f, 1.f, 1.f, 10.f, &d, 8);
  EImage<EBW32> pairs(40, 30);
  ImgGradientVector(&src, &pairs);
  EImage<EComplex64> spectrum(32, 16);
  const EROI<EBW8> square(&src, 0, 0, 32, 16);
  ImgFastDFT(&square, &spectrum, 1.f);
  ImgCannyDetector(&src, &d, SMOOTH_NONE, EDGE_FOLLOWING_HYSTERESIS);
  EBW8PathVector path;
  ImgImageToPath(&part, &path);
  const EBW8PathVector& kept = path;
  ImgPathToImage(&d, &kept);
  EXPECT_EQ(EGetError(), E_OK) << EGetErrorTrace();
}

}  // namespace
