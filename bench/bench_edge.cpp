// Gradients, the Canny chain and the Fourier transform beside their OpenCV
// counterparts.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

EImage<EBW32>& Pairs() {
  static EImage<EBW32> image(bench::kWidth, bench::kHeight);
  return image;
}
EImage<EBW8>& ModulusTable() {
  static EImage<EBW8> table = [] {
    EImage<EBW8> t;
    ImgModulusImage(&t, 1.0f);
    return t;
  }();
  return table;
}
// The 2048x2048 square at the frame's left.
EROI<EBW8>& Square() {
  static EROI<EBW8> roi(&bench::Frame(), 0, 0, 2048, 2048);
  return roi;
}
EImage<EComplex64>& Spectrum() {
  static EImage<EComplex64> image(2048, 2048);
  return image;
}

void MirelGradientModulus(benchmark::State& state) {
  for (auto _ : state) {
    ImgGradientVector(&bench::Frame(), &Pairs());
    ImgGradientScalar(&Pairs(), &bench::Out(), &ModulusTable());
  }
}
constexpr const char* kCannyRow = "Canny, no smoothing (ours picks its thresholds; cv: Sobel L1 at 8x ours)";
void MirelCanny(benchmark::State& state) {
  for (auto _ : state) ImgCannyDetector(&bench::Frame(), &bench::Out(), SMOOTH_NONE, EDGE_FOLLOWING_HYSTERESIS);
}
void MirelFastDft(benchmark::State& state) {
  for (auto _ : state) ImgFastDFT(&Square(), &Spectrum(), 1.0f);
}
MIREL_BENCH_ROW("gradient pair + modulus lookup vs Sobel dx, dy + magnitude", "mirel", MirelGradientModulus);
MIREL_BENCH_ROW(kCannyRow, "mirel", MirelCanny);
MIREL_BENCH_ROW("dft 2048x2048 complex", "mirel", MirelFastDft);

#if defined(MIREL_BENCH_OPENCV)
void CvGradientModulus(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dx, dy, mag;
  for (auto _ : state) {
    cv::Sobel(src, dx, CV_32F, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::Sobel(src, dy, CV_32F, 0, 1, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::magnitude(dx, dy, mag);
  }
}
// The detector's two thresholds on the frame: the three-class split of the
// histogram of the suppressed magnitudes. OpenCV's Sobel L1 norm is about
// eight times our magnitude, (|dx| + |dy|) / 2 of central differences.
void CannyThresholds(double& low, double& high) {
  EImage<EBW32> dir(bench::kWidth, bench::kHeight);
  EImage<EBW8> mag(bench::kWidth, bench::kHeight);
  EBWHistogramVector hist;
  ImgGradientVector(&bench::Frame(), &Pairs());
  NonMaximaSuppression(&Pairs(), &dir, &mag);
  ImgHistogram(&mag, &hist);
  const unsigned* h = hist.GetDataPtr();
  long long n = 0, s = 0;
  for (int i = 0; i < 256; ++i) n += h[i], s += 1LL * i * h[i];
  double best = double(s) * s / n;
  int t1Best = 1, t2Best = 0;
  long long n1 = 0, s1 = 0;
  for (int t1 = 0; t1 < 256; ++t1) {
    long long n2 = 0, s2 = 0;
    for (int t2 = t1; t2 < 256 && n1 > 0; ++t2) {
      const long long n3 = n - n1 - n2, s3 = s - s1 - s2;
      if (n2 > 0 && n3 > 0) {
        const double score = double(s1) * s1 / n1 + double(s2) * s2 / n2 + double(s3) * s3 / n3;
        if (score > best) best = score, t1Best = t1, t2Best = t2;
      }
      n2 += h[t2], s2 += 1LL * t2 * h[t2];
    }
    n1 += h[t1], s1 += 1LL * t1 * h[t1];
  }
  low = 8.0 * t1Best;
  high = 8.0 * t2Best;
}
void CvCanny(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), out;
  double low, high;
  CannyThresholds(low, high);
  for (auto _ : state) cv::Canny(src, out, low, high, 3, false);
}
void CvDft(benchmark::State& state) {
  cv::Mat src, out;
  bench::AsMat(Square()).convertTo(src, CV_32F);
  for (auto _ : state) cv::dft(src, out, cv::DFT_COMPLEX_OUTPUT);
}
MIREL_BENCH_ROW("gradient pair + modulus lookup vs Sobel dx, dy + magnitude", "opencv", CvGradientModulus);
MIREL_BENCH_ROW(kCannyRow, "opencv", CvCanny);
MIREL_BENCH_ROW("dft 2048x2048 complex", "opencv", CvDft);
#endif

}  // namespace
