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
void MirelFastDft(benchmark::State& state) {
  for (auto _ : state) ImgFastDFT(&Square(), &Spectrum(), 1.0f);
}
MIREL_BENCH_ROW("gradient pair + modulus lookup vs Sobel dx, dy + magnitude", "mirel", MirelGradientModulus);
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
void CvDft(benchmark::State& state) {
  cv::Mat src, out;
  bench::AsMat(Square()).convertTo(src, CV_32F);
  for (auto _ : state) cv::dft(src, out, cv::DFT_COMPLEX_OUTPUT);
}
MIREL_BENCH_ROW("gradient pair + modulus lookup vs Sobel dx, dy + magnitude", "opencv", CvGradientModulus);
MIREL_BENCH_ROW("dft 2048x2048 complex", "opencv", CvDft);
#endif

}  // namespace
