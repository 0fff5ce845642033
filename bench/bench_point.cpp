// Point operations: pixelwise arithmetic and copy on the standard frame.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

EImage<EBW8>& Result() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  return image;
}

void MirelAdd(benchmark::State& state) {
  for (auto _ : state) ImgOper(ALO_ADD, &bench::Frame(), &bench::Frame2(), &Result());
}
void MirelAbsDiff(benchmark::State& state) {
  for (auto _ : state) ImgOper(ALO_ABS_DIFFERENCE, &bench::Frame(), &bench::Frame2(), &Result());
}
void MirelMin(benchmark::State& state) {
  for (auto _ : state) ImgOper(ALO_MIN, &bench::Frame(), &bench::Frame2(), &Result());
}
void MirelAddConst(benchmark::State& state) {
  for (auto _ : state) ImgOper(ALO_ADD, &bench::Frame(), EBW8(40), &Result());
}
void MirelCopy(benchmark::State& state) {
  for (auto _ : state) ImgCopy(&bench::Frame(), &Result());
}

MIREL_BENCH_ROW("ImgOper ALO_ADD image+image", "mirel", MirelAdd);
MIREL_BENCH_ROW("ImgOper ALO_ABS_DIFFERENCE", "mirel", MirelAbsDiff);
MIREL_BENCH_ROW("ImgOper ALO_MIN", "mirel", MirelMin);
MIREL_BENCH_ROW("ImgOper ALO_ADD image+constant", "mirel", MirelAddConst);
MIREL_BENCH_ROW("ImgCopy BW8", "mirel", MirelCopy);

#if defined(MIREL_BENCH_OPENCV)
void CvAdd(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame()), b = bench::AsMat(bench::Frame2()), d = bench::AsMat(Result());
  for (auto _ : state) cv::add(a, b, d);
}
void CvAbsDiff(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame()), b = bench::AsMat(bench::Frame2()), d = bench::AsMat(Result());
  for (auto _ : state) cv::absdiff(a, b, d);
}
void CvMin(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame()), b = bench::AsMat(bench::Frame2()), d = bench::AsMat(Result());
  for (auto _ : state) cv::min(a, b, d);
}
void CvAddConst(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame()), d = bench::AsMat(Result());
  for (auto _ : state) cv::add(a, cv::Scalar(40), d);
}
void CvCopy(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame()), d = bench::AsMat(Result());
  for (auto _ : state) a.copyTo(d);
}

MIREL_BENCH_ROW("ImgOper ALO_ADD image+image", "opencv", CvAdd);
MIREL_BENCH_ROW("ImgOper ALO_ABS_DIFFERENCE", "opencv", CvAbsDiff);
MIREL_BENCH_ROW("ImgOper ALO_MIN", "opencv", CvMin);
MIREL_BENCH_ROW("ImgOper ALO_ADD image+constant", "opencv", CvAddConst);
MIREL_BENCH_ROW("ImgCopy BW8", "opencv", CvCopy);
#endif

}  // namespace
