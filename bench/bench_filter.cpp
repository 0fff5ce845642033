// Linear filters beside their OpenCV counterparts on the standard frame.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

using bench::Out;

// A 3x3 sharpening kernel (rectifier 2: the 8-bit fixed-point arithmetic).
EKernel& Kernel3() {
  static EKernel k(KERNEL_HIGHPASS_1);
  return k;
}
// A 7x7 smoothing kernel with small integer weights (15-bit fixed point).
EKernel& Kernel7() {
  static EKernel k = [] {
    EKernel e(7, 7, 1.0f, 0, 2, 0);
    const float w[7] = {1, 2, 3, 4, 3, 2, 1};
    for (int y = 0; y < 7; ++y)
      for (int x = 0; x < 7; ++x) e.Data[7 * y + x] = w[x] * w[y];
    return e;
  }();
  return k;
}

void MirelFilter2D3x3(benchmark::State& state) {
  for (auto _ : state) ImgConvolKernel(&bench::Frame(), &Out(), &Kernel3());
}
void MirelFilter2D7x7(benchmark::State& state) {
  for (auto _ : state) ImgConvolKernel(&bench::Frame(), &Out(), &Kernel7());
}
void MirelGaussian5x5(benchmark::State& state) {
  for (auto _ : state) ImgConvolGaussian5x5(&bench::Frame(), &Out());
}
void MirelBlur7x7(benchmark::State& state) {
  for (auto _ : state) ImgConvolUniform7x7(&bench::Frame(), &Out());
}
MIREL_BENCH_ROW("filter2D 3x3", "mirel", MirelFilter2D3x3);
MIREL_BENCH_ROW("filter2D 7x7", "mirel", MirelFilter2D7x7);
MIREL_BENCH_ROW("GaussianBlur 5x5", "mirel", MirelGaussian5x5);
MIREL_BENCH_ROW("blur 7x7", "mirel", MirelBlur7x7);

#if defined(MIREL_BENCH_OPENCV)
cv::Mat CvKernel(EKernel& k) {
  cv::Mat m(k.SizeY, k.SizeX, CV_32F);
  float sum = 0;
  for (int i = 0; i < k.SizeX * k.SizeY; ++i) sum += k.Data[i];
  for (int i = 0; i < k.SizeX * k.SizeY; ++i) m.at<float>(i / k.SizeX, i % k.SizeX) = k.Data[i] / sum;
  return m;
}
void CvFilter2D3x3(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out()), k = CvKernel(Kernel3());
  for (auto _ : state) cv::filter2D(src, dst, -1, k, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
}
void CvFilter2D7x7(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out()), k = CvKernel(Kernel7());
  for (auto _ : state) cv::filter2D(src, dst, -1, k, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
}
void CvGaussian5x5(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  for (auto _ : state) cv::GaussianBlur(src, dst, cv::Size(5, 5), 0, 0, cv::BORDER_REPLICATE);
}
void CvBlur7x7(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  for (auto _ : state) cv::blur(src, dst, cv::Size(7, 7), cv::Point(-1, -1), cv::BORDER_REPLICATE);
}
MIREL_BENCH_ROW("filter2D 3x3", "opencv", CvFilter2D3x3);
MIREL_BENCH_ROW("filter2D 7x7", "opencv", CvFilter2D7x7);
MIREL_BENCH_ROW("GaussianBlur 5x5", "opencv", CvGaussian5x5);
MIREL_BENCH_ROW("blur 7x7", "opencv", CvBlur7x7);
#endif

}  // namespace
