// Fixed and automatic thresholds against cv::threshold.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

// The destination, touched once so that no row timing pays its page faults.
EImage<EBW8>& Result() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  static const bool touched = [] {
    for (int y = 0; y < image.GetHeight(); ++y) std::memset(image.GetImagePtr(0, y), 0, image.GetWidth());
    return true;
  }();
  (void)touched;
  return image;
}

// pixel >= 128 is white; OpenCV's THRESH_BINARY reads pixel > 127.
void ThresholdFixedMirel(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW8>& dst = Result();
  for (auto _ : state) {
    ImgThreshold(&src, &dst, 128, 0, 255, 0.f);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("Threshold fixed (BW8)", "mirel", ThresholdFixedMirel);

void ThresholdMinResidueMirel(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW8>& dst = Result();
  for (auto _ : state) {
    ImgThreshold(&src, &dst, IMG_THRESHOLD_MIN_RESIDUE, 0, 255, 0.f);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("Threshold min residue / Otsu (BW8)", "mirel", ThresholdMinResidueMirel);

#if defined(MIREL_BENCH_OPENCV)
void ThresholdFixedOpenCV(benchmark::State& state) {
  EROI<EBW8>& src = bench::Frame();
  EROI<EBW8>& dst = Result();
  cv::Mat s = bench::AsMat(src), d = bench::AsMat(dst);
  for (auto _ : state) {
    cv::threshold(s, d, 127, 255, cv::THRESH_BINARY);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("Threshold fixed (BW8)", "opencv", ThresholdFixedOpenCV);

void ThresholdOtsuOpenCV(benchmark::State& state) {
  EROI<EBW8>& src = bench::Frame();
  EROI<EBW8>& dst = Result();
  cv::Mat s = bench::AsMat(src), d = bench::AsMat(dst);
  for (auto _ : state) {
    cv::threshold(s, d, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("Threshold min residue / Otsu (BW8)", "opencv", ThresholdOtsuOpenCV);
#endif

}  // namespace
