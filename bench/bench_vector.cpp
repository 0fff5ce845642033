// Contour rows.
#include <cmath>
#include <vector>

#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

// One large blob with a wavy, ragged border on a frame of the standard size:
// 255 inside, 0 outside, so both sides see the same object.
struct Blob {
  EImage<EBW8> image;
  int startX = 0;
  int startY = -1;
  Blob() {
    image.SetSize(bench::kWidth, bench::kHeight);
    const double cx = bench::kWidth / 2.0, cy = bench::kHeight / 2.0;
    for (int y = 0; y < bench::kHeight; ++y) {
      EBW8* row = image.GetImagePtr(0, y);
      for (int x = 0; x < bench::kWidth; ++x) {
        const double a = std::atan2(y - cy, x - cx);
        const double r = 800.0 + 60.0 * std::sin(7.0 * a) + 25.0 * std::sin(53.0 * a);
        const double dx = x - cx, dy = y - cy;
        const bool inside = dx * dx + dy * dy < r * r;
        row[x] = static_cast<unsigned char>(inside ? 255 : 0);
        if (inside && startY < 0) startX = x, startY = y;
      }
    }
  }
};

Blob& TheBlob() {
  static Blob blob;
  return blob;
}

void BM_Contour(benchmark::State& state) {
  Blob& blob = TheBlob();
  EPathVector path;
  for (auto _ : state) {
    ImgContour(&blob.image, CONTOUR_CLOCKWISE_WRAP, blob.startX, blob.startY, CONTOUR_THRESHOLD_ABOVE, 128,
               CONNEXITY_8, &path);
    benchmark::DoNotOptimize(path.GetDataPtr());
  }
  state.counters["points"] = static_cast<double>(path.GetNumElements());
}
MIREL_BENCH_ROW("Contour (one blob, 8 neighbours)", "mirel", BM_Contour);

#if defined(MIREL_BENCH_OPENCV)
// OpenCV finds every outer border by scanning the whole frame; with one blob
// that is the same contour.
void CV_Contour(benchmark::State& state) {
  cv::Mat src = bench::AsMat(TheBlob().image);
  std::vector<std::vector<cv::Point>> contours;
  for (auto _ : state) {
    cv::findContours(src, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    benchmark::DoNotOptimize(contours.data());
  }
  state.counters["points"] = contours.empty() ? 0.0 : static_cast<double>(contours[0].size());
}
MIREL_BENCH_ROW("Contour (one blob, 8 neighbours)", "opencv", CV_Contour);
#endif

}  // namespace
