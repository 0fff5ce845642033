// Colour component moves: one channel of a 24-bit frame out to a grey plane
// and back in, as the colour filters do three times per call.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

using bench::AsMat;
using bench::ColourFrame;

void GetComponentMirel(benchmark::State& state) {
  EImage<EC24>& src = ColourFrame();
  EImage<EBW8> plane(bench::kWidth, bench::kHeight);
  for (auto _ : state) ClrGetComponent(&src, &plane, 1, nullptr);
}
MIREL_BENCH_ROW("ClrGetComponent", "mirel", GetComponentMirel);

void SetComponentMirel(benchmark::State& state) {
  EImage<EC24> dst = ColourFrame();
  for (auto _ : state) ClrSetComponent(&bench::Frame(), &dst, 1);
}
MIREL_BENCH_ROW("ClrSetComponent", "mirel", SetComponentMirel);

#if defined(MIREL_BENCH_OPENCV)
void GetComponentOpenCV(benchmark::State& state) {
  cv::Mat src = AsMat(ColourFrame());
  cv::Mat plane(bench::kHeight, bench::kWidth, CV_8UC1);
  for (auto _ : state) cv::extractChannel(src, plane, 1);
}
MIREL_BENCH_ROW("ClrGetComponent", "opencv", GetComponentOpenCV);

void SetComponentOpenCV(benchmark::State& state) {
  EImage<EC24> dstImage = ColourFrame();
  cv::Mat dst = AsMat(dstImage);
  cv::Mat plane = bench::AsMat(bench::Frame());
  for (auto _ : state) cv::insertChannel(plane, dst, 1);
}
MIREL_BENCH_ROW("ClrSetComponent", "opencv", SetComponentOpenCV);
#endif

}  // namespace
