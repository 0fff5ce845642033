// Pixel statistics and moments rows.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

void BM_PixelStdDev(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  float deviation = 0, mean = 0;
  for (auto _ : state) {
    ImgPixelStdDev(&src, deviation, mean);
    benchmark::DoNotOptimize(deviation);
  }
}
MIREL_BENCH_ROW("MeanStdDev", "mirel", BM_PixelStdDev);

void BM_Variance(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  float mean = 0;
  for (auto _ : state) benchmark::DoNotOptimize(ImgVariance(&src, &mean));
}
MIREL_BENCH_ROW("MeanStdDev (histogram, run masks)", "mirel", BM_Variance);

void BM_MinMax(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  for (auto _ : state) {
    unsigned char lo = 0, hi = 0;
    ImgPixelMin(&src, lo);
    ImgPixelMax(&src, hi);
    benchmark::DoNotOptimize(lo + hi);
  }
}
MIREL_BENCH_ROW("MinMax (ImgPixelMin + ImgPixelMax)", "mirel", BM_MinMax);

void BM_Minimum(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  for (auto _ : state) benchmark::DoNotOptimize(ImgMinimum(&src));
}
MIREL_BENCH_ROW("MinMax (ImgMinimum alone)", "mirel", BM_Minimum);

void BM_WeightedMoments(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  float m[6];
  for (auto _ : state) {
    ImgWeightedMoments(&src, m[0], m[1], m[2], m[3], m[4], m[5]);
    benchmark::DoNotOptimize(m[4]);
  }
}
MIREL_BENCH_ROW("WeightedMoments (second order)", "mirel", BM_WeightedMoments);

void BM_WeightedMoments3(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  float m[10];
  for (auto _ : state) {
    ImgWeightedMoments(&src, m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9]);
    benchmark::DoNotOptimize(m[9]);
  }
}
MIREL_BENCH_ROW("WeightedMoments (third order)", "mirel", BM_WeightedMoments3);

void BM_AreaInRange(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  for (auto _ : state) {
    int area = 0;
    ImgAreaDoubleThreshold(&src, 60, 180, area);
    benchmark::DoNotOptimize(area);
  }
}
MIREL_BENCH_ROW("AreaInRange", "mirel", BM_AreaInRange);

void BM_AreaAbove(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  for (auto _ : state) benchmark::DoNotOptimize(ImgArea(&src, 127u));
}
MIREL_BENCH_ROW("AreaAbove", "mirel", BM_AreaAbove);

void BM_PixelCompare(benchmark::State& state) {
  EImage<EBW8>& a = bench::Frame();
  EImage<EBW8>& b = bench::Frame2();
  for (auto _ : state) benchmark::DoNotOptimize(ImgPixelCompare(&a, &b));
}
MIREL_BENCH_ROW("PixelCompare", "mirel", BM_PixelCompare);

void BM_RmsNoise(benchmark::State& state) {
  EImage<EBW8>& a = bench::Frame();
  EImage<EBW8>& b = bench::Frame2();
  for (auto _ : state) benchmark::DoNotOptimize(ImgRmsNoise(&a, &b, IMG_REFERENCE_NOISELESS));
}
MIREL_BENCH_ROW("RmsNoise", "mirel", BM_RmsNoise);

#if defined(MIREL_BENCH_OPENCV)
void CV_MeanStdDev(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Scalar mean, dev;
  for (auto _ : state) {
    cv::meanStdDev(src, mean, dev);
    benchmark::DoNotOptimize(dev[0]);
  }
}
MIREL_BENCH_ROW("MeanStdDev", "opencv", CV_MeanStdDev);
MIREL_BENCH_ROW("MeanStdDev (histogram, run masks)", "opencv", CV_MeanStdDev);

void CV_MinMax(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  for (auto _ : state) {
    double lo = 0, hi = 0;
    cv::minMaxLoc(src, &lo, &hi);
    benchmark::DoNotOptimize(lo + hi);
  }
}
MIREL_BENCH_ROW("MinMax (ImgPixelMin + ImgPixelMax)", "opencv", CV_MinMax);
MIREL_BENCH_ROW("MinMax (ImgMinimum alone)", "opencv", CV_MinMax);

void CV_Moments(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  for (auto _ : state) {
    const cv::Moments m = cv::moments(src, false);
    benchmark::DoNotOptimize(m.mu11);
  }
}
MIREL_BENCH_ROW("WeightedMoments (second order)", "opencv", CV_Moments);
MIREL_BENCH_ROW("WeightedMoments (third order)", "opencv", CV_Moments);

void CV_AreaInRange(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat mask;
  for (auto _ : state) {
    cv::inRange(src, cv::Scalar(60), cv::Scalar(179), mask);
    benchmark::DoNotOptimize(cv::countNonZero(mask));
  }
}
MIREL_BENCH_ROW("AreaInRange", "opencv", CV_AreaInRange);

void CV_AreaAbove(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame());
  cv::Mat mask;
  for (auto _ : state) {
    cv::threshold(src, mask, 127, 255, cv::THRESH_BINARY);
    benchmark::DoNotOptimize(cv::countNonZero(mask));
  }
}
MIREL_BENCH_ROW("AreaAbove", "opencv", CV_AreaAbove);

void CV_PixelCompare(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame());
  cv::Mat b = bench::AsMat(bench::Frame2());
  cv::Mat mask;
  for (auto _ : state) {
    cv::compare(a, b, mask, cv::CMP_NE);
    benchmark::DoNotOptimize(cv::countNonZero(mask));
  }
}
MIREL_BENCH_ROW("PixelCompare", "opencv", CV_PixelCompare);

void CV_RmsNoise(benchmark::State& state) {
  cv::Mat a = bench::AsMat(bench::Frame());
  cv::Mat b = bench::AsMat(bench::Frame2());
  for (auto _ : state) benchmark::DoNotOptimize(cv::norm(a, b, cv::NORM_L2));
}
MIREL_BENCH_ROW("RmsNoise", "opencv", CV_RmsNoise);
#endif

}  // namespace
