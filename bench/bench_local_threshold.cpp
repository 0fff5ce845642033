// Local and multi-level thresholds: the local mean threshold against
// cv::adaptiveThreshold with a mean of the same block, and the multi-level
// selection on its own.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

// A 31 x 31 square. OpenCV replicates the border pixels where this library
// stops the square at the border: the same work on the interior.
constexpr const char* kLocalMean = "Local mean threshold 31x31 (adaptiveThreshold MEAN_C)";

void LocalMeanMirel(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW8>& dst = bench::Out();
  for (auto _ : state) {
    Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold(&src, &dst, 15, 4);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kLocalMean, "mirel", LocalMeanMirel);

void MultiLevelMirel(benchmark::State& state) {
  EBWHistogramVector histogram(256);
  ImgHistogram(&bench::Frame(), &histogram);
  Corvane::Talmeer::Utils::Vector<ERegionDescriptor> regions;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ImgMultiLevelsMinResidueThreshold(&histogram, 5, regions));
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("Multi-level threshold, 5 classes of 256 bins", "mirel", MultiLevelMirel);

#if defined(MIREL_BENCH_OPENCV)
void LocalMeanOpenCV(benchmark::State& state) {
  cv::Mat s = bench::AsMat(bench::Frame()), d = bench::AsMat(bench::Out());
  for (auto _ : state) {
    cv::adaptiveThreshold(s, d, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY, 31, -4);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kLocalMean, "opencv", LocalMeanOpenCV);
#endif

}  // namespace
