// Bands on two threads beside OpenCV on two threads (cv::setNumThreads(2)),
// and the same operations on one thread on both sides, on the standard
// frame. Each row sets the thread count of its side for its own loop and
// puts one thread back afterwards, as the rest of the suite expects.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using bench::Frame;
using bench::Frame2;
using bench::Out;

constexpr float kAngle = 10.0f;

EImage<EBW8>& Rotated() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  return image;
}

// The operations of the rows, each one call on the whole frame.
void Sobel() { ImgConvolSobelX(&Frame(), &Out()); }
void Gaussian() { ImgConvolGaussian5x5(&Frame(), &Out()); }
void Median() { ImgMedian(&Frame(), &Out()); }
void Erode15() { ImgErodeBox(&Frame(), &Out(), 7, 7); }
void Rotate() {
  const float cx = bench::kWidth / 2.0f, cy = bench::kHeight / 2.0f;
  ImgScaleRotate(&Frame(), cx, cy, cx, cy, 1.0f, 1.0f, kAngle, &Rotated(), 8);
}
void Add() { ImgOper(ALO_ADD, &Frame(), &Frame2(), &Out()); }
void LocalMean() { Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold(&Frame(), &Out(), 15, 4); }
EImage<EBW8>& Half() {
  static EImage<EBW8> image(bench::kWidth / 2, bench::kHeight / 2);
  return image;
}
void Halve() { ImgHalve(&Frame(), &Half(), 1); }

template <void (*Op)(), int kThreads>
void Mirel(benchmark::State& state) {
  ImgSetThreads(kThreads);
  for (auto _ : state) Op();
  ImgSetThreads(1);
}

#define MIREL_THREAD_ROWS(name, op)                                   \
  MIREL_BENCH_ROW("2 threads: " name, "mirel", (Mirel<op, 2>));       \
  MIREL_BENCH_ROW("1 thread: " name, "mirel", (Mirel<op, 1>))
MIREL_THREAD_ROWS("Sobel x 3x3", Sobel);
MIREL_THREAD_ROWS("GaussianBlur 5x5", Gaussian);
MIREL_THREAD_ROWS("medianBlur 3", Median);
MIREL_THREAD_ROWS("erode 15x15", Erode15);
MIREL_THREAD_ROWS("warpAffine rotate 10 linear", Rotate);
MIREL_THREAD_ROWS("add two images", Add);
MIREL_THREAD_ROWS("adaptiveThreshold mean 31", LocalMean);
MIREL_THREAD_ROWS("resize INTER_AREA 1/2", Halve);
#undef MIREL_THREAD_ROWS

#if defined(MIREL_BENCH_OPENCV)
void CvSobel() {
  static cv::Mat tmp;
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Out());
  cv::Sobel(src, tmp, CV_16S, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
  cv::convertScaleAbs(tmp, dst);
}
void CvGaussian() {
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Out());
  cv::GaussianBlur(src, dst, cv::Size(5, 5), 0, 0, cv::BORDER_REPLICATE);
}
void CvMedian() {
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Out());
  cv::medianBlur(src, dst, 3);
}
void CvErode15() {
  static const cv::Mat k = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(15, 15));
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Out());
  cv::erode(src, dst, k);
}
void CvRotate() {
  const float cx = bench::kWidth / 2.0f - 0.5f, cy = bench::kHeight / 2.0f - 0.5f;
  static const cv::Mat m = cv::getRotationMatrix2D(cv::Point2f(cx, cy), kAngle, 1.0);
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Rotated());
  cv::warpAffine(src, dst, m, dst.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(0));
}
void CvAdd() {
  cv::Mat a = bench::AsMat(Frame()), b = bench::AsMat(Frame2()), d = bench::AsMat(Out());
  cv::add(a, b, d);
}
void CvLocalMean() {
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Out());
  cv::adaptiveThreshold(src, dst, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY, 31, -4);
}
void CvHalve() {
  cv::Mat src = bench::AsMat(Frame()), dst = bench::AsMat(Half());
  cv::resize(src, dst, dst.size(), 0, 0, cv::INTER_AREA);
}

template <void (*Op)(), int kThreads>
void Cv(benchmark::State& state) {
  cv::setNumThreads(kThreads);
  for (auto _ : state) Op();
  cv::setNumThreads(1);
}

#define MIREL_THREAD_ROWS(name, op)                                  \
  MIREL_BENCH_ROW("2 threads: " name, "opencv", (Cv<op, 2>));        \
  MIREL_BENCH_ROW("1 thread: " name, "opencv", (Cv<op, 1>))
MIREL_THREAD_ROWS("Sobel x 3x3", CvSobel);
MIREL_THREAD_ROWS("GaussianBlur 5x5", CvGaussian);
MIREL_THREAD_ROWS("medianBlur 3", CvMedian);
MIREL_THREAD_ROWS("erode 15x15", CvErode15);
MIREL_THREAD_ROWS("warpAffine rotate 10 linear", CvRotate);
MIREL_THREAD_ROWS("add two images", CvAdd);
MIREL_THREAD_ROWS("adaptiveThreshold mean 31", CvLocalMean);
MIREL_THREAD_ROWS("resize INTER_AREA 1/2", CvHalve);
#undef MIREL_THREAD_ROWS
#endif

}  // namespace
