// Halving, pyramids and temporal averaging beside their OpenCV counterparts
// on the standard frame.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

EImage<EBW8>& Half() {
  static EImage<EBW8> image(bench::kWidth / 2, bench::kHeight / 2);
  return image;
}

void MirelHalve(benchmark::State& state) {
  for (auto _ : state) ImgHalve(&bench::Frame(), &Half(), 1);
}
// Five levels: level 0 is copied from the frame, then four halvings.
void MirelPyramid5(benchmark::State& state) {
  EPyramid pyramid;
  pyramid.SetNumLevels(5, E_IMAGE_TYPE_BW8);
  for (auto _ : state) pyramid.Build(&bench::Frame());
}
// Five halvings from a level 0 that holds the frame already.
void MirelPyramid5Halvings(benchmark::State& state) {
  EPyramid pyramid;
  pyramid.SetNumLevels(6, E_IMAGE_TYPE_BW8);
  pyramid.Build(&bench::Frame());
  for (auto _ : state) pyramid.Build();
}
// One step of a moving average of 8 frames, two frames taking turns.
void MirelMovingAverage8(benchmark::State& state) {
  EMovingAverage avg(8, bench::kWidth, bench::kHeight, 0);
  EImage<EBW8> out(bench::kWidth, bench::kHeight);
  int k = 0;
  for (auto _ : state) avg.Average(++k & 1 ? &bench::Frame() : &bench::Frame2(), &out);
}
MIREL_BENCH_ROW("halve (resize INTER_AREA 1/2)", "mirel", MirelHalve);
MIREL_BENCH_ROW("halve (pyrDown)", "mirel", MirelHalve);
MIREL_BENCH_ROW("pyramid Build(source) 5 levels", "mirel", MirelPyramid5);
MIREL_BENCH_ROW("pyramid Build() 5 halvings", "mirel", MirelPyramid5Halvings);
MIREL_BENCH_ROW("moving average of 8, one step (accumulate + scale)", "mirel", MirelMovingAverage8);

#if defined(MIREL_BENCH_OPENCV)
void CvResizeArea(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Half());
  for (auto _ : state) cv::resize(src, dst, dst.size(), 0, 0, cv::INTER_AREA);
}
void CvPyrDown(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Half());
  for (auto _ : state) cv::pyrDown(src, dst, dst.size());
}
// Five chained halvings into preallocated levels.
void CvChain5(benchmark::State& state) {
  cv::Mat levels[6];
  levels[0] = bench::AsMat(bench::Frame());
  for (int l = 1; l < 6; ++l) levels[l].create(levels[l - 1].rows / 2, levels[l - 1].cols / 2, CV_8UC1);
  for (auto _ : state)
    for (int l = 1; l < 6; ++l) cv::resize(levels[l - 1], levels[l], levels[l].size(), 0, 0, cv::INTER_AREA);
}
// A float accumulator: add the new frame, then scale to 8 bits.
void CvAccumulateScale(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame()), b = bench::AsMat(bench::Frame2());
  cv::Mat acc = cv::Mat::zeros(a.size(), CV_32F), out(a.size(), CV_8UC1);
  int k = 0;
  for (auto _ : state) {
    cv::accumulate(++k & 1 ? a : b, acc);
    acc.convertTo(out, CV_8U, 1.0 / 8);
  }
}
MIREL_BENCH_ROW("halve (resize INTER_AREA 1/2)", "opencv", CvResizeArea);
MIREL_BENCH_ROW("halve (pyrDown)", "opencv", CvPyrDown);
MIREL_BENCH_ROW("pyramid Build(source) 5 levels", "opencv", CvChain5);
MIREL_BENCH_ROW("pyramid Build() 5 halvings", "opencv", CvChain5);
MIREL_BENCH_ROW("moving average of 8, one step (accumulate + scale)", "opencv", CvAccumulateScale);
#endif

}  // namespace
