// Geometry beside OpenCV on the standard frame: rotation, scaling, shrink
// by block averages and mirrors.
#include <cmath>

#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr float kAngle = 10.0f;  // degrees

EImage<EBW8>& Same() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  return image;
}
EImage<EBW8>& Scaled(int percent) {
  static EImage<EBW8> half, up;
  EImage<EBW8>& image = percent == 50 ? half : up;
  if (image.GetWidth() == 0)
    image.SetSize(static_cast<int>(std::lround(bench::kWidth * percent / 100.0)),
                  static_cast<int>(std::lround(bench::kHeight * percent / 100.0)));
  return image;
}
EImage<EBW8>& Third() {
  static EImage<EBW8> image(bench::kWidth / 3, bench::kHeight / 3);
  return image;
}
// A copy of the frame that the in-place mirrors may turn over.
EImage<EBW8>& Mirrored() {
  static EImage<EBW8> image;
  if (image.GetWidth() == 0) {
    image.SetSize(bench::kWidth, bench::kHeight);
    ImgCopy(&bench::Frame(), &image);
  }
  return image;
}

void Rotate(int bits) {
  const float cx = bench::kWidth / 2.0f, cy = bench::kHeight / 2.0f;
  ImgScaleRotate(&bench::Frame(), cx, cy, cx, cy, 1.0f, 1.0f, kAngle, &Same(), bits);
}
void Scale(int percent, int bits) {
  const float s = percent / 100.0f;
  ImgLinearTransform(&bench::Frame(), s, 0, 0, 0, s, 0, &Scaled(percent), bits);
}

void MirelRotateLinear(benchmark::State& state) {
  for (auto _ : state) Rotate(8);
}
void MirelRotateNearest(benchmark::State& state) {
  for (auto _ : state) Rotate(0);
}
void MirelHalfLinear(benchmark::State& state) {
  for (auto _ : state) Scale(50, 8);
}
void MirelHalfNearest(benchmark::State& state) {
  for (auto _ : state) Scale(50, 0);
}
void MirelUpLinear(benchmark::State& state) {
  for (auto _ : state) Scale(170, 8);
}
void MirelUpNearest(benchmark::State& state) {
  for (auto _ : state) Scale(170, 0);
}
void MirelShrinkThird(benchmark::State& state) {
  for (auto _ : state) ImgShrink(&bench::Frame(), &Third());
}
void MirelFlipHorizontal(benchmark::State& state) {
  for (auto _ : state) ImgHorizontalMirror(&Mirrored());
}
void MirelFlipVertical(benchmark::State& state) {
  for (auto _ : state) ImgVerticalMirror(&Mirrored());
}
MIREL_BENCH_ROW("warpAffine rotate 10 linear", "mirel", MirelRotateLinear);
MIREL_BENCH_ROW("warpAffine rotate 10 nearest", "mirel", MirelRotateNearest);
MIREL_BENCH_ROW("resize 0.5 linear", "mirel", MirelHalfLinear);
MIREL_BENCH_ROW("resize 0.5 nearest", "mirel", MirelHalfNearest);
MIREL_BENCH_ROW("resize 1.7 linear", "mirel", MirelUpLinear);
MIREL_BENCH_ROW("resize 1.7 nearest", "mirel", MirelUpNearest);
MIREL_BENCH_ROW("resize 1/3 area (shrink)", "mirel", MirelShrinkThird);
MIREL_BENCH_ROW("flip horizontal", "mirel", MirelFlipHorizontal);
MIREL_BENCH_ROW("flip vertical", "mirel", MirelFlipVertical);

#if defined(MIREL_BENCH_OPENCV)
// The same rotation as a forward map on pixel-centre coordinates.
cv::Mat RotationMatrix() {
  const float cx = bench::kWidth / 2.0f - 0.5f, cy = bench::kHeight / 2.0f - 0.5f;
  return cv::getRotationMatrix2D(cv::Point2f(cx, cy), kAngle, 1.0);
}
void CvRotate(int flags) {
  static const cv::Mat m = RotationMatrix();
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Same());
  cv::warpAffine(src, dst, m, dst.size(), flags, cv::BORDER_CONSTANT, cv::Scalar(0));
}
void CvScale(int percent, int flags) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Scaled(percent));
  cv::resize(src, dst, dst.size(), 0, 0, flags);
}
void CvRotateLinear(benchmark::State& state) {
  for (auto _ : state) CvRotate(cv::INTER_LINEAR);
}
void CvRotateNearest(benchmark::State& state) {
  for (auto _ : state) CvRotate(cv::INTER_NEAREST);
}
void CvHalfLinear(benchmark::State& state) {
  for (auto _ : state) CvScale(50, cv::INTER_LINEAR);
}
void CvHalfNearest(benchmark::State& state) {
  for (auto _ : state) CvScale(50, cv::INTER_NEAREST);
}
void CvUpLinear(benchmark::State& state) {
  for (auto _ : state) CvScale(170, cv::INTER_LINEAR);
}
void CvUpNearest(benchmark::State& state) {
  for (auto _ : state) CvScale(170, cv::INTER_NEAREST);
}
void CvShrinkThird(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Third());
  for (auto _ : state) cv::resize(src, dst, dst.size(), 0, 0, cv::INTER_AREA);
}
void CvFlipHorizontal(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Same());
  for (auto _ : state) cv::flip(src, dst, 1);
}
void CvFlipVertical(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Same());
  for (auto _ : state) cv::flip(src, dst, 0);
}
MIREL_BENCH_ROW("warpAffine rotate 10 linear", "opencv", CvRotateLinear);
MIREL_BENCH_ROW("warpAffine rotate 10 nearest", "opencv", CvRotateNearest);
MIREL_BENCH_ROW("resize 0.5 linear", "opencv", CvHalfLinear);
MIREL_BENCH_ROW("resize 0.5 nearest", "opencv", CvHalfNearest);
MIREL_BENCH_ROW("resize 1.7 linear", "opencv", CvUpLinear);
MIREL_BENCH_ROW("resize 1.7 nearest", "opencv", CvUpNearest);
MIREL_BENCH_ROW("resize 1/3 area (shrink)", "opencv", CvShrinkThird);
MIREL_BENCH_ROW("flip horizontal", "opencv", CvFlipHorizontal);
MIREL_BENCH_ROW("flip vertical", "opencv", CvFlipVertical);
#endif

}  // namespace
