// Lookup, gain, histogram, equalization and projection rows.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

EImage<EBW8>& Result() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  return image;
}

const EBW8* GammaTable() {
  static EBW8 table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>((i * i) / 255);
  return table;
}

void BM_Lut(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW8>& dst = Result();
  EBW8* table = const_cast<EBW8*>(GammaTable());
  for (auto _ : state) ImgLut(&src, &dst, table);
}
MIREL_BENCH_ROW("Lut", "mirel", BM_Lut);

void BM_Histogram(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EBWHistogramVector hist(256);
  for (auto _ : state) {
    ImgHistogram(&src, &hist);
    benchmark::DoNotOptimize(hist.GetDataPtr());
  }
}
MIREL_BENCH_ROW("Histogram", "mirel", BM_Histogram);

void BM_Equalize(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW8>& dst = Result();
  for (auto _ : state) ImgEqualize(&src, &dst);
}
MIREL_BENCH_ROW("Equalize", "mirel", BM_Equalize);

void BM_GainOffset(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW8>& dst = Result();
  for (auto _ : state) ImgGainOffset(&src, &dst, 1.5f, -20.0f);
}
MIREL_BENCH_ROW("GainOffset", "mirel", BM_GainOffset);

void BM_ProjectOnARow(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EBW32Vector sums;
  for (auto _ : state) ImgProjectOnARow(&src, &sums);
}
MIREL_BENCH_ROW("ProjectOnARow", "mirel", BM_ProjectOnARow);

void BM_ProjectOnAColumn(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EBW32Vector sums;
  for (auto _ : state) ImgProjectOnAColumn(&src, &sums);
}
MIREL_BENCH_ROW("ProjectOnAColumn", "mirel", BM_ProjectOnAColumn);

#if defined(MIREL_BENCH_OPENCV)
void CV_Lut(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat dst = bench::AsMat(Result());
  cv::Mat table(1, 256, CV_8UC1, const_cast<EBW8*>(GammaTable()));
  for (auto _ : state) cv::LUT(src, table, dst);
}
MIREL_BENCH_ROW("Lut", "opencv", CV_Lut);

void CV_Histogram(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat hist;
  const int channels[] = {0};
  const int size[] = {256};
  const float range[] = {0, 256};
  const float* ranges[] = {range};
  for (auto _ : state) {
    cv::calcHist(&src, 1, channels, cv::Mat(), hist, 1, size, ranges);
    benchmark::DoNotOptimize(hist.data);
  }
}
MIREL_BENCH_ROW("Histogram", "opencv", CV_Histogram);

void CV_Equalize(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat dst = bench::AsMat(Result());
  for (auto _ : state) cv::equalizeHist(src, dst);
}
MIREL_BENCH_ROW("Equalize", "opencv", CV_Equalize);

void CV_GainOffset(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat dst = bench::AsMat(Result());
  for (auto _ : state) src.convertTo(dst, -1, 1.5, -20.0);
}
MIREL_BENCH_ROW("GainOffset", "opencv", CV_GainOffset);

void CV_ProjectOnARow(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat sums;
  for (auto _ : state) cv::reduce(src, sums, 0, cv::REDUCE_SUM, CV_32S);
}
MIREL_BENCH_ROW("ProjectOnARow", "opencv", CV_ProjectOnARow);

void CV_ProjectOnAColumn(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat sums;
  for (auto _ : state) cv::reduce(src, sums, 1, cv::REDUCE_SUM, CV_32S);
}
MIREL_BENCH_ROW("ProjectOnAColumn", "opencv", CV_ProjectOnAColumn);
#endif

}  // namespace
