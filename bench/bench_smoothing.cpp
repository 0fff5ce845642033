// Preset 3x3 filters, box and Gaussian smoothing of any size, and the colour
// filters, beside their OpenCV counterparts on the standard frame.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

using bench::Out;
using bench::ColourOut;

template <void (*F)(EROI<EBW8>*, EROI<EBW8>*)>
void Preset(benchmark::State& state) {
  for (auto _ : state) F(&bench::Frame(), &Out());
}
template <unsigned H, void (*F)(EROI<EBW8>*, EROI<EBW8>*, unsigned, unsigned)>
void AnySize(benchmark::State& state) {
  for (auto _ : state) F(&bench::Frame(), &Out(), H, H);
}
void ColourSobel(benchmark::State& state) {
  for (auto _ : state) ImgConvolSobelX(&bench::ColourFrame(), &ColourOut());
}
void ColourGaussian(benchmark::State& state) {
  for (auto _ : state) ImgConvolGaussian(&bench::ColourFrame(), &ColourOut(), 1, 1);
}
MIREL_BENCH_ROW("Sobel dx + convertScaleAbs", "mirel", Preset<ImgConvolSobelX>);
MIREL_BENCH_ROW("Laplacian 4 + convertScaleAbs", "mirel", Preset<ImgConvolLaplacian4>);
MIREL_BENCH_ROW("GaussianBlur 3x3", "mirel", Preset<ImgConvolGaussian3x3>);
MIREL_BENCH_ROW("blur 3x3", "mirel", Preset<ImgConvolUniform3x3>);
MIREL_BENCH_ROW("blur 21x21", "mirel", (AnySize<10, ImgConvolUniform>));
MIREL_BENCH_ROW("blur 51x51", "mirel", (AnySize<25, ImgConvolUniform>));
MIREL_BENCH_ROW("GaussianBlur 9x9 (4 binomial passes)", "mirel", (AnySize<4, ImgConvolGaussian>));
MIREL_BENCH_ROW("GaussianBlur 21x21 (10 binomial passes)", "mirel", (AnySize<10, ImgConvolGaussian>));
MIREL_BENCH_ROW("Sobel dx C24", "mirel", ColourSobel);
MIREL_BENCH_ROW("GaussianBlur 3x3 C24", "mirel", ColourGaussian);

#if defined(MIREL_BENCH_OPENCV)
void CvSobel(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out()), tmp;
  for (auto _ : state) {
    cv::Sobel(src, tmp, CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::convertScaleAbs(tmp, dst);
  }
}
void CvLaplacian(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out()), tmp;
  for (auto _ : state) {
    cv::Laplacian(src, tmp, CV_16S, 1, 1, 0, cv::BORDER_REPLICATE);
    cv::convertScaleAbs(tmp, dst);
  }
}
template <int K>
void CvGaussian(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  for (auto _ : state) cv::GaussianBlur(src, dst, cv::Size(K, K), 0, 0, cv::BORDER_REPLICATE);
}
template <int K>
void CvBlur(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  for (auto _ : state) cv::blur(src, dst, cv::Size(K, K), cv::Point(-1, -1), cv::BORDER_REPLICATE);
}
void CvColourSobel(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::ColourFrame()), dst = bench::AsMat(ColourOut()), tmp;
  for (auto _ : state) {
    cv::Sobel(src, tmp, CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
    cv::convertScaleAbs(tmp, dst);
  }
}
void CvColourGaussian(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::ColourFrame()), dst = bench::AsMat(ColourOut());
  for (auto _ : state) cv::GaussianBlur(src, dst, cv::Size(3, 3), 0, 0, cv::BORDER_REPLICATE);
}
MIREL_BENCH_ROW("Sobel dx + convertScaleAbs", "opencv", CvSobel);
MIREL_BENCH_ROW("Laplacian 4 + convertScaleAbs", "opencv", CvLaplacian);
MIREL_BENCH_ROW("GaussianBlur 3x3", "opencv", CvGaussian<3>);
MIREL_BENCH_ROW("blur 3x3", "opencv", CvBlur<3>);
MIREL_BENCH_ROW("blur 21x21", "opencv", CvBlur<21>);
MIREL_BENCH_ROW("blur 51x51", "opencv", CvBlur<51>);
MIREL_BENCH_ROW("GaussianBlur 9x9 (4 binomial passes)", "opencv", CvGaussian<9>);
MIREL_BENCH_ROW("GaussianBlur 21x21 (10 binomial passes)", "opencv", CvGaussian<21>);
MIREL_BENCH_ROW("Sobel dx C24", "opencv", CvColourSobel);
MIREL_BENCH_ROW("GaussianBlur 3x3 C24", "opencv", CvColourGaussian);
#endif

}  // namespace
