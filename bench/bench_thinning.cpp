// The distance map beside OpenCV's chessboard distance transform on the
// standard frame thresholded to 0 and 255.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

EImage<EBW8>& Binary() {
  static EImage<EBW8> image = [] {
    EImage<EBW8> b(bench::kWidth, bench::kHeight);
    ImgThreshold(&bench::Frame(), &b, 128);
    return b;
  }();
  return image;
}

void MirelDistance(benchmark::State& state) {
  static EImage<EBW16> out(bench::kWidth, bench::kHeight);
  for (auto _ : state) ImgDistance(&Binary(), &out, 65535);
}
MIREL_BENCH_ROW("distance chessboard", "mirel", MirelDistance);

#if defined(MIREL_BENCH_OPENCV)
// The nearest OpenCV form: the 3x3 chessboard metric into floats (its only
// output type for this metric).
void CvDistance(benchmark::State& state) {
  cv::Mat src = bench::AsMat(Binary()), dst(bench::kHeight, bench::kWidth, CV_32F);
  for (auto _ : state) cv::distanceTransform(src, dst, cv::DIST_C, 3, CV_32F);
}
MIREL_BENCH_ROW("distance chessboard", "opencv", CvDistance);
#endif

}  // namespace
