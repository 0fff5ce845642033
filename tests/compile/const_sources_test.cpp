// A program that holds its images, kernels and tables as const must reach
// every operation that only reads them without a const_cast. That this file
// compiles is most of the test; the calls also run and must succeed. The
// operations that work in place when given no destination have a second form
// for a const source: it gives the bytes of the first, refuses a missing
// destination, and leaves the in-place calls of the first form as they were.
#include <functional>

#include "mirel/vector/draw/raster_draw_adapter.h"
#include "test_support.h"

namespace {

using testsupport::Bytes;
using testsupport::FillRandom;
using testsupport::PlaceRandom;
using testsupport::Rng;
using testsupport::Snapshot;

// Runs a call that must succeed.
#define MIREL_OK(call)                                                      \
  do {                                                                      \
    call;                                                                   \
    EXPECT_EQ(EGetError(), E_OK) << #call << ": " << EGetErrorTrace();      \
  } while (0)

// The preset 3x3 filters, by name.
#define MIREL_PRESETS(X)                                                                       \
  X(ImgConvolSobelX) X(ImgConvolSobelY) X(ImgConvolSobel) X(ImgConvolPrewittX) X(ImgConvolPrewittY) \
  X(ImgConvolPrewitt) X(ImgConvolGradientX) X(ImgConvolGradientY) X(ImgConvolGradient)             \
  X(ImgConvolLaplacianX) X(ImgConvolLaplacianY) X(ImgConvolLaplacian4) X(ImgConvolLaplacian8)      \
  X(ImgConvolHighpass1) X(ImgConvolHighpass2) X(ImgConvolLowpass1) X(ImgConvolLowpass2)            \
  X(ImgConvolLowpass3)
// The box and disk morphology, by name without the Box/Disk ending.
#define MIREL_MORPHS(X) X(Erode) X(Dilate) X(Open) X(Close) X(WhiteTopHat) X(BlackTopHat) X(MorphoGradient)

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

// Random images of the four pixel types that the in-place operations take.
struct Sources {
  Sources(int width, int height, unsigned seed)
      : g(width, height), g16(width, height), c(width, height), b(width, height) {
    Rng rng(seed);
    FillRandom(g, rng);
    FillRandom(g16, rng);
    FillRandom(c, rng);
    FillRandom(b, rng);
  }
  EImage<EBW8> g;
  EImage<EBW16> g16;
  EImage<EC24> c;
  EImage<EBW1> b;
};

// Every other operation that reads an image, with const images only.
TEST(ConstSources, EveryReadingOperationTakesConstImages) {
  const auto& [s8, s16, sc, sb] = Sources(32, 24, 11);
  EImage<EBW8> d(32, 24), d2(32, 24);
  EImage<EBW16> d16(32, 24);
  EImage<EC24> dc(32, 24);
  EImage<EBW1> db(32, 24);
  int n = 0;

  // The forms that would work in place on a writable source.
#define MIREL_CALL_PRESET(Name) MIREL_OK(Name(&s8, &d)); MIREL_OK(Name(&s16, &d16)); MIREL_OK(Name(&sc, &dc));
  MIREL_PRESETS(MIREL_CALL_PRESET)
#undef MIREL_CALL_PRESET
  MIREL_OK(ImgConvolUniform3x3(&s8, &d));
  MIREL_OK(ImgConvolGaussian3x3(&s16, &d16));
  MIREL_OK(ImgConvolRoberts(&s8, &d));
  MIREL_OK(ImgConvolRoberts(&s16, &d16));
  MIREL_OK(ImgConvolUniform(&s8, &d, 2, 1));
  MIREL_OK(ImgConvolGaussian(&s16, &d16, 1, 2));
  MIREL_OK(ImgLocalAverage(&s8, &d, 3, 3));
  MIREL_OK(ImgLocalAverage(&s16, &d16, 1, 1));
  MIREL_OK(ImgConvolGaussian(&sc, &dc, 2, 2));
  MIREL_OK(ImgConvolUniform(&sc, &dc, 1, 1));
#define MIREL_CALL_MORPH(Op)                                                                          \
  MIREL_OK(Img##Op##Box(&s8, &d, 2)); MIREL_OK(Img##Op##Disk(&s16, &d16, 2));                           \
  MIREL_OK(Img##Op##Box(&sc, &dc, 1, 2)); MIREL_OK(ImgBiLevel##Op##Box(&s8, &d, 1));                     \
  MIREL_OK(ImgBiLevel##Op##Disk(&s8, &d, 2)); MIREL_OK(Img##Op##Box(&sb, &db, 2, 1));                    \
  MIREL_OK(Img##Op##Disk(&sb, &db)); MIREL_OK(Img##Op##BoxAligned(&sb, &db));                           \
  MIREL_OK(Img##Op##DiskAligned(&sb, &db, 2));
  MIREL_MORPHS(MIREL_CALL_MORPH)
#undef MIREL_CALL_MORPH
  MIREL_OK(ImgBiLevelMedian(&s8, &d));
  MIREL_OK(ImgErode(&s8, &d));
  MIREL_OK(ImgDilate(&s8, &d, 2, 0));
  MIREL_OK(ImgOpen(&s8, &d));
  MIREL_OK(ImgClose(&s8, &d, 1, 0, 255));
  MIREL_OK(ImgWhiteTopHat(&s8, &d));
  MIREL_OK(ImgBlackTopHat(&s8, &d));
  MIREL_OK(ImgErode(&sc, &dc, 1, EC24(255, 255, 255)));
  MIREL_OK(ImgDilate(&sc, &dc, 1, EC24(0, 0, 0)));
  MIREL_OK(ImgOpen(&sc, &dc, 1, EC24(255, 255, 255), EC24(0, 0, 0)));
  MIREL_OK(ImgClose(&sc, &dc, 1, EC24(0, 0, 0), EC24(255, 255, 255)));
  MIREL_OK(ImgWhiteTopHat(&sc, &dc, 1, EC24(255, 255, 255), EC24(0, 0, 0)));
  MIREL_OK(ImgBlackTopHat(&sc, &dc, 1, EC24(0, 0, 0), EC24(255, 255, 255)));
  MIREL_OK(ImgMedian(&sb, &db));
  MIREL_OK(ImgMedianAligned(&sb, &db));
  const EKernel tee(KERNEL_PATTERN_TEE);
  MIREL_OK(ImgThin(&sb, &db, &tee, KERNEL_ROTATION_NONE, n = 1));
  MIREL_OK(ImgThick(&sb, &db, &tee, KERNEL_ROTATION_NONE, n = 1));
  MIREL_OK(ImgThinAligned(&sb, &db, &tee, KERNEL_ROTATION_NONE, n = 1));
  MIREL_OK(ImgThickAligned(&sb, &db, &tee, KERNEL_ROTATION_NONE, n = 1));

  // Tables, lookups, kernels, vectors and predicates that are only read.
  std::vector<EBW8> table8(256, EBW8(7));
  std::vector<EBW16> table16(65536, EBW16(9));
  const EBW8* t8 = table8.data();
  const EBW16* t16 = table16.data();
  MIREL_OK(ImgLut(&s8, &d, t8));
  MIREL_OK(ImgLut(&s16, &d16, t16));
  const EBW8Vector lut8(256);
  MIREL_OK(ImgLut(&s8, &d, &lut8));
  const EColorLookup lookup;
  MIREL_OK(ImgThreshold(&sc, &d, EC24(0, 0, 0), EC24(128, 128, 128), &lookup, EBW8(0), EBW8(255)));
  MIREL_OK(ClrGetComponent(&sc, &d, 1, &lookup));
  float value = 0;
  MIREL_OK(tee.GetKernelData(1, 1, value));
  EXPECT_EQ(value, 1.0f);
  MIREL_OK(ImgCount(&s8, [](const EBW8& p) { return p.value > 100 ? 1 : 0; }));
  MIREL_OK(ImgCount(&s16, [](const EBW16& p) { return p.value & 1; }));
  MIREL_OK(ImgCount(&sc, [](const EC24& p) { return p.c[0] > p.c[1] ? 1 : 0; }));
  EVector hist;
  MIREL_OK(ImgHistogram(&s8, &hist));
  const EVector& h = hist;
  int mean = 0;
  float fmean = 0;
  MIREL_OK(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_MEAN, mean));
  MIREL_OK(ImgAnalyseHistogram(&h, 0, 255, IMG_FEATURE_MEAN, fmean));
  MIREL_OK(ImgIsodataThreshold(&h, 0, 255));
  EPyramid pyramid;
  pyramid.SetNumLevels(2, E_IMAGE_TYPE_BW8);
  MIREL_OK(pyramid.Build(&s8));
  const EPyramid& levels = pyramid;
  const EGenericROI* top = levels.GetImage(1);
  ASSERT_NE(top, nullptr);
  EXPECT_EQ(top->GetWidth(), 16);

  // The operations whose sources were const already, one call of each.
  MIREL_OK(ImgLocalDeviation(&s8, &d, 1, 1));
  MIREL_OK(ImgConvolGaussian7x7(&s8, &d));
  MIREL_OK(ImgConvolRoberts(&sc, &dc));
  MIREL_OK(ImgConvolKernel(&sc, &dc, &tee));
  MIREL_OK(ImgMedian(&s8, &d));
  MIREL_OK(ImgMedian(&s8, &d, 0));
  MIREL_OK(ImgMedian(&sc, &dc, EC24(0, 0, 0)));
  MIREL_OK(ImgThin(&s8, &d, &tee, KERNEL_ROTATION_NONE, n = 1));
  MIREL_OK(ImgBiLevelThick(&s8, &d, &tee, KERNEL_ROTATION_NONE, n = 1));
  EImage<EBW16> distance(32, 24);
  MIREL_OK(ImgDistance(&s8, &distance, 0));
  EImage<EBW8> half(16, 12);
  EImage<EC24> field(32, 12);
  MIREL_OK(ImgShrink(&s8, &half));
  MIREL_OK(ImgGetFrame(&sc, &field, 0));
  MIREL_OK(ImgMatchFrames(&s8, 0, -2, 2, n));
  MIREL_OK(ImgFocusing(&s16));
  MIREL_OK(ImgLinearTransform(&s8, 1, 0, 0, 0, 1, 0, &d, 8));
  MIREL_OK(ImgRegister(&s16, &d16, 1, 1, 2, 2, 0));
  MIREL_OK(ImgHalve(&s8, &half, 0));
  MIREL_OK(ImgWarp(&s8, &d, &s16, &s16, 0, 0));
  EImage<EBW16> store(32, 24);
  EBW16Vector steps;
  ImgSetRecursiveAverageLUT(&steps, 0.5f, 16.f);
  const EBW16Vector& recursive = steps;
  MIREL_OK(ImgRecursiveAverage(&s8, &store, &d, &recursive));
  EMovingAverage average(2, 32, 24, 0);
  MIREL_OK(average.Average(&s8, &d));
  MIREL_OK(ImgCopy(&sb, &db));
  MIREL_OK(ImgOper(ALO_BIT_XOR, &sb, &sb, &db));
  MIREL_OK(ImgConvert(&sb, &d, 255));
  MIREL_OK(ImgThreshold(&s16, &db, 300));
  MIREL_OK(ImgConvertTo422(&s8, &d16));
  MIREL_OK(ImgConvert(&sc, &d));
  MIREL_OK(ImgNormalize(&s8, &d, 128, 20));
  MIREL_OK(ImgOverlay(&s8, &sc, &dc, 0, 0, EC24(0, 0, 0)));
  MIREL_OK(ImgAutoAdaptiveThreshold(&s8, &d, IMG_THRESHOLD_ISODATA, 16, 12));
  MIREL_OK(Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold(&s8, &d, 2, 0));
  MIREL_OK(ImgEqualize(&s16, &d16));
  MIREL_OK(ImgTransform(&s8, &d, [](EBW8 p) { return EBW8(static_cast<unsigned char>(~p.value)); }, 1));
  MIREL_OK(ImgSignalNoiseRatio(&s8, &s8, IMG_REFERENCE_INDEPENDENT));
  MIREL_OK(ImgCorrelogram(&s8, &s8, &d2));
  float slope = 0, offset = 0, correlation = 0;
  MIREL_OK(ImgLinearRegression(&s8, &s8, slope, offset, correlation, 0));
  MIREL_OK(ImgAnisotropicDiffusion(&s8, &d, 1, 0));
  EImage<EBW32> pairs(32, 24);
  MIREL_OK(ImgGradientVector(&s16, &pairs));
  const EImage<EBW32>& gradient = pairs;
  EImage<EBW32> direction(32, 24);
  MIREL_OK(NonMaximaSuppression(&gradient, &direction, &d));
  EImage<EBW8> modulus(512, 512);
  MIREL_OK(ImgModulusImage(&modulus, 1.f));
  const EImage<EBW8>& lookupImage = modulus;
  MIREL_OK(ImgGradientScalar(&gradient, &d, &lookupImage));
  float x = 0, y = 0, xx = 0, xy = 0, yy = 0;
  MIREL_OK(ImgGravityCenter(&s16, 100, x, y));
  MIREL_OK(ImgInertia(&s8, 100, xx, xy, yy));
  MIREL_OK(ImgCentroid(&s8, x, y, &lut8));
  EVector line;
  MIREL_OK(ImgLineSegToVect(&s8, &line, 0, 0, 31, 23));
  EVector transitions;
  MIREL_OK(ImgTransitionScan(TRANS_SCAN_BOTH, &s8, 0, 0, 31, 23, 128, 10, &transitions));
  EBW16Vector segment;
  MIREL_OK(ImgImageToLineSegment(&s16, &segment, 0, 0, 31, 23));
  EC24Vector projection;
  MIREL_OK(ImgProjectOnAColumn(&sc, &projection));
  EBWHistogramVector bins;
  MIREL_OK(ImgHistogram(&s16, &bins, 15, 8, 1));
  EImage<EC24> canvas(32, 24);
  Corvane::RasterDrawAdapter adapter(&canvas);
  MIREL_OK(adapter.DrawImage(&s8, 0, 0, 1.f, 1.f, 1.0, Corvane::DrawColor(255, 255, 255)));
}

// One operation in both forms: `Body` is the same call text, over a const
// source in the first lambda and a writable one in the second.
#define MIREL_BOTH_FORMS(P, Body) \
  [&](const EROI<P>* s, EROI<P>* d) { Body; }, [&](EROI<P>* s, EROI<P>* d) { Body; }

// The const form of an operation gives the bytes of the writable form, with
// the same code, on random images with random ROI origins and widths, and
// leaves its source untouched. Both run into the same destination, from the
// same bytes, since some results depend on the destination's address.
// `aligned` keeps bit ROIs on a byte.
template <class P, class Ro, class Rw>
void SameBytes(const char* what, Ro ro, Rw rw, Rng& rng, bool aligned = false) {
  SCOPED_TRACE(what);
  for (int trial = 0; trial < 3; ++trial) {
    const int w = 3 + static_cast<int>(rng() % 30), h = 3 + static_cast<int>(rng() % 8);
    const int margin = aligned ? 0 : 9;
    EImage<P> srcImage, dstImage;
    EROI<P> src, dst;
    PlaceRandom(srcImage, src, w, h, rng, margin);
    FillRandom(srcImage, rng);
    PlaceRandom(dstImage, dst, w, h, rng, margin);
    FillRandom(dstImage, rng);
    const std::vector<unsigned char> source = Snapshot(srcImage), start = Snapshot(dstImage);
    ro(static_cast<const EROI<P>*>(&src), &dst);
    const E_ERRORS code = EGetError();
    const std::vector<unsigned char> fromConst = Snapshot(dstImage);
    EXPECT_EQ(Snapshot(srcImage), source);
    std::memcpy(dstImage.GetImagePtr(0, 0), start.data(), start.size());
    rw(&src, &dst);
    EXPECT_EQ(EGetError(), code);
    ASSERT_EQ(Snapshot(dstImage), fromConst) << w << "x" << h << " at " << src.GetOrgX();
  }
}

TEST(ConstSources, ConstFormsGiveTheBytesOfTheWritableForms) {
  Rng rng(21);
  const EKernel tee(KERNEL_PATTERN_TEE);
  int n = 0;
#define MIREL_SAME_PRESET(Name)                                                  \
  SameBytes<EBW8>(#Name, MIREL_BOTH_FORMS(EBW8, Name(s, d)), rng);             \
  SameBytes<EBW16>(#Name " BW16", MIREL_BOTH_FORMS(EBW16, Name(s, d)), rng);   \
  SameBytes<EC24>(#Name " C24", MIREL_BOTH_FORMS(EC24, Name(s, d)), rng);
  MIREL_PRESETS(MIREL_SAME_PRESET)
#undef MIREL_SAME_PRESET
  SameBytes<EBW8>("Uniform3x3", MIREL_BOTH_FORMS(EBW8, ImgConvolUniform3x3(s, d)), rng);
  SameBytes<EBW16>("Gaussian3x3", MIREL_BOTH_FORMS(EBW16, ImgConvolGaussian3x3(s, d)), rng);
  SameBytes<EBW8>("Roberts", MIREL_BOTH_FORMS(EBW8, ImgConvolRoberts(s, d)), rng);
  SameBytes<EBW16>("Roberts BW16", MIREL_BOTH_FORMS(EBW16, ImgConvolRoberts(s, d)), rng);
  SameBytes<EBW8>("Uniform", MIREL_BOTH_FORMS(EBW8, ImgConvolUniform(s, d, 3, 1)), rng);
  SameBytes<EBW16>("Gaussian", MIREL_BOTH_FORMS(EBW16, ImgConvolGaussian(s, d, 2, 1)), rng);
  SameBytes<EBW8>("LocalAverage", MIREL_BOTH_FORMS(EBW8, ImgLocalAverage(s, d, 1, 2)), rng);
  SameBytes<EC24>("Gaussian C24", MIREL_BOTH_FORMS(EC24, ImgConvolGaussian(s, d, 1, 2)), rng);
  SameBytes<EC24>("Uniform C24", MIREL_BOTH_FORMS(EC24, ImgConvolUniform(s, d, 2, 2)), rng);
#define MIREL_SAME_MORPH(Op)                                                                              \
  SameBytes<EBW8>(#Op "Box", MIREL_BOTH_FORMS(EBW8, Img##Op##Box(s, d, 2, 1)), rng);                      \
  SameBytes<EBW16>(#Op "Disk", MIREL_BOTH_FORMS(EBW16, Img##Op##Disk(s, d, 2)), rng);                     \
  SameBytes<EC24>(#Op "Box C24", MIREL_BOTH_FORMS(EC24, Img##Op##Box(s, d, 1, 2)), rng);                  \
  SameBytes<EBW8>("BiLevel" #Op "Box", MIREL_BOTH_FORMS(EBW8, ImgBiLevel##Op##Box(s, d, 1, 2)), rng);     \
  SameBytes<EBW8>("BiLevel" #Op "Disk", MIREL_BOTH_FORMS(EBW8, ImgBiLevel##Op##Disk(s, d, 2)), rng);      \
  SameBytes<EBW1>(#Op "Box BW1", MIREL_BOTH_FORMS(EBW1, Img##Op##Box(s, d, 2, 1)), rng);                  \
  SameBytes<EBW1>(#Op "Disk BW1", MIREL_BOTH_FORMS(EBW1, Img##Op##Disk(s, d, 1)), rng);                   \
  SameBytes<EBW1>(#Op "BoxAligned", MIREL_BOTH_FORMS(EBW1, Img##Op##BoxAligned(s, d, 1, 2)), rng, true);  \
  SameBytes<EBW1>(#Op "DiskAligned", MIREL_BOTH_FORMS(EBW1, Img##Op##DiskAligned(s, d, 2)), rng, true);
  MIREL_MORPHS(MIREL_SAME_MORPH)
#undef MIREL_SAME_MORPH
  SameBytes<EBW8>("BiLevelMedian", MIREL_BOTH_FORMS(EBW8, ImgBiLevelMedian(s, d)), rng);
  SameBytes<EBW8>("Erode", MIREL_BOTH_FORMS(EBW8, ImgErode(s, d, 2, 255)), rng);
  SameBytes<EBW8>("Dilate", MIREL_BOTH_FORMS(EBW8, ImgDilate(s, d, 1, 7)), rng);
  SameBytes<EBW8>("Open", MIREL_BOTH_FORMS(EBW8, ImgOpen(s, d, 2, 255, 0)), rng);
  SameBytes<EBW8>("Close", MIREL_BOTH_FORMS(EBW8, ImgClose(s, d)), rng);
  SameBytes<EBW8>("WhiteTopHat", MIREL_BOTH_FORMS(EBW8, ImgWhiteTopHat(s, d)), rng);
  SameBytes<EBW8>("BlackTopHat", MIREL_BOTH_FORMS(EBW8, ImgBlackTopHat(s, d, 1, 3, 200)), rng);
  const EC24 dark(0, 0, 0), light(255, 255, 255);
  SameBytes<EC24>("Erode C24", MIREL_BOTH_FORMS(EC24, ImgErode(s, d, 1, light)), rng);
  SameBytes<EC24>("Dilate C24", MIREL_BOTH_FORMS(EC24, ImgDilate(s, d, 2, dark)), rng);
  SameBytes<EC24>("Open C24", MIREL_BOTH_FORMS(EC24, ImgOpen(s, d, 1, light, dark)), rng);
  SameBytes<EC24>("Close C24", MIREL_BOTH_FORMS(EC24, ImgClose(s, d, 1, dark, light)), rng);
  SameBytes<EC24>("WhiteTopHat C24", MIREL_BOTH_FORMS(EC24, ImgWhiteTopHat(s, d, 1, light, dark)), rng);
  SameBytes<EC24>("BlackTopHat C24", MIREL_BOTH_FORMS(EC24, ImgBlackTopHat(s, d, 1, dark, light)), rng);
  SameBytes<EBW1>("Median BW1", MIREL_BOTH_FORMS(EBW1, ImgMedian(s, d)), rng);
  SameBytes<EBW1>("MedianAligned", MIREL_BOTH_FORMS(EBW1, ImgMedianAligned(s, d)), rng, true);
  SameBytes<EBW1>("Thin BW1", MIREL_BOTH_FORMS(EBW1, ImgThin(s, d, &tee, KERNEL_ROTATION_NONE, n = 2)), rng);
  SameBytes<EBW1>("Thick BW1", MIREL_BOTH_FORMS(EBW1, ImgThick(s, d, &tee, KERNEL_ROTATION_NONE, n = 2)), rng);
  SameBytes<EBW1>("ThinAligned", MIREL_BOTH_FORMS(EBW1, ImgThinAligned(s, d, &tee, KERNEL_ROTATION_NONE, n = 1)),
                  rng, true);
  SameBytes<EBW1>("ThickAligned",
                  MIREL_BOTH_FORMS(EBW1, ImgThickAligned(s, d, &tee, KERNEL_ROTATION_NONE, n = 1)), rng, true);
}

// A const source with no destination is refused as a missing source is: the
// code, the operation's own label, and the source untouched. The Aligned
// bit forms throw instead.
TEST(ConstSources, ConstSourceWithoutDestinationIsRefused) {
  const Sources src(24, 12, 31);  // named images: lambdas below take them
  const EImage<EBW8>& s8 = src.g;
  const EImage<EBW16>& s16 = src.g16;
  const EImage<EC24>& sc = src.c;
  const EImage<EBW1>& sb = src.b;
  const auto k8 = Snapshot(s8), k16 = Snapshot(s16), kc = Snapshot(sc), kb = Snapshot(sb);
  const EKernel tee(KERNEL_PATTERN_TEE);
  int n = 1;
  const struct {
    std::function<void()> call;
    const char* trace;
  } cases[] = {
      {[&] { ImgConvolSobelX(&s8, nullptr); }, "ImgConvolSobelX (BW8)"},
      {[&] { ImgConvolLaplacianY(&s16, nullptr); }, "ImgConvolLaplacianY (BW16)"},
      {[&] { ImgConvolRoberts(&s8, nullptr); }, "ImgConvolRoberts"},
      {[&] { ImgConvolHighpass2(&sc, nullptr); }, "ImgConvolHighpass2 ( C24)"},
      {[&] { ImgConvolUniform(&s8, nullptr, 1, 1); }, "ImgConvolUniform"},
      {[&] { ImgConvolGaussian(&s16, nullptr, 1, 1); }, "ImgConvolGaussian (BW16)"},
      {[&] { ImgErodeBox(&s8, nullptr, 1); }, "ImgErodeBox"},
      {[&] { ImgDilateDisk(&s16, nullptr, 1); }, "ImgDilateDisk (BW16)"},
      {[&] { ImgOpenBox(&sc, nullptr, 1); }, "ImgOpenBox ( C24)"},
      {[&] { ImgBiLevelMedian(&s8, nullptr); }, "ImgBiLevelMedian"},
      {[&] { ImgErodeBox(&sb, nullptr, 1); }, "ImgErodeBox (BW1)"},
      {[&] { ImgWhiteTopHatDisk(&sb, nullptr, 1); }, "ImgWhiteTophatDisk (BW1)"},
      {[&] { ImgMedian(&sb, nullptr); }, "ImgMedian (BW1)"},
      {[&] { ImgThin(&sb, nullptr, &tee, KERNEL_ROTATION_NONE, n); }, "ImgThin (BW1)"},
      {[&] { ImgBlackTopHat(&s8, nullptr); }, "ImgBlackTopHat"},
      {[&] { ImgErode(&sc, nullptr, 1, EC24(0, 0, 0)); }, "ImgErode ( C24)"},
      {[&] { ImgMedian(&sc, nullptr, EC24(9, 8, 7)); }, "ImgMedian ( C24)"},
  };
  for (const auto& c : cases) {
    c.call();
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE) << c.trace;
    EXPECT_EQ(std::string(EGetErrorTrace()), c.trace);
  }
  EXPECT_THROW(ImgErodeBoxAligned(&sb, nullptr), Corvane::Talmeer::Exception);
  EXPECT_THROW(ImgThickAligned(&sb, nullptr, &tee, KERNEL_ROTATION_NONE, n), Corvane::Talmeer::Exception);
  EXPECT_EQ(Snapshot(s8), k8);
  EXPECT_EQ(Snapshot(s16), k16);
  EXPECT_EQ(Snapshot(sc), kc);
  EXPECT_EQ(Snapshot(sb), kb);
}

// A writable source with a null, a literal 0 or an omitted destination still
// picks the in-place form: the source becomes what a separate destination
// on its own pixels gives.
TEST(ConstSources, WritableSourceWithoutDestinationStillWorksInPlace) {
  Rng rng(41);
  EImage<EBW8> original(30, 14);
  FillRandom(original, rng);
  const auto inPlace = [&](const char* what, const std::function<void(EROI<EBW8>*)>& call) {
    EImage<EBW8> expected = original, got = original;
    ImgErodeBox(&expected, &expected, 0);  // a no-op that clears the error state
    call(&got);
    EXPECT_EQ(EGetError(), E_OK) << what << ": " << EGetErrorTrace();
    return Bytes<EBW8>(got);
  };
  const auto reference = [&](const std::function<void(EROI<EBW8>*, EROI<EBW8>*)>& call) {
    EImage<EBW8> img = original;
    call(&img, &img);
    return Bytes<EBW8>(img);
  };
  EXPECT_EQ(inPlace("nullptr", [](EROI<EBW8>* s) { ImgConvolSobelX(s, nullptr); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolSobelX(s, d); }));
  EXPECT_EQ(inPlace("0", [](EROI<EBW8>* s) { ImgConvolLowpass3(s, 0); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolLowpass3(s, d); }));
  EXPECT_EQ(inPlace("omitted", [](EROI<EBW8>* s) { ImgErodeBox(s); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgErodeBox(s, d); }));
  EXPECT_EQ(inPlace("0 with sizes", [](EROI<EBW8>* s) { ImgDilateDisk(s, 0, 2); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgDilateDisk(s, d, 2); }));
  EXPECT_EQ(inPlace("nullptr bilevel", [](EROI<EBW8>* s) { ImgBiLevelMedian(s, nullptr); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgBiLevelMedian(s, d); }));
  EXPECT_EQ(inPlace("0 smoothing", [](EROI<EBW8>* s) { ImgConvolGaussian(s, 0, 2, 2); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolGaussian(s, d, 2, 2); }));
  EXPECT_EQ(inPlace("nullptr older", [](EROI<EBW8>* s) { ImgErode(s, nullptr, 2); }),
            reference([](EROI<EBW8>* s, EROI<EBW8>* d) { ImgErode(s, d, 2); }));
  // The result really is a filtered image, not the source left alone.
  EXPECT_NE(inPlace("changes", [](EROI<EBW8>* s) { ImgConvolSobelX(s, nullptr); }), Bytes<EBW8>(original));
  // The colour median too, the one colour form with a border.
  EImage<EC24> colour(17, 9), apart(17, 9);
  FillRandom(colour, rng);
  const EImage<EC24>& readOnly = colour;
  ImgMedian(&readOnly, &apart, EC24(9, 8, 7));
  ImgMedian(&colour, nullptr, EC24(9, 8, 7));
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Bytes<EC24>(colour), Bytes<EC24>(apart));
}

}  // namespace
