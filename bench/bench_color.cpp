// Colour component moves: one channel of a 24-bit frame out to a grey plane
// and back in, as the colour filters do three times per call.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

EImage<EC24>& ColourFrame() {
  static EImage<EC24> image;
  if (image.GetWidth() == 0) {
    EImage<EBW8>& a = bench::Frame();
    EImage<EBW8>& b = bench::Frame2();
    image.SetSize(bench::kWidth, bench::kHeight);
    for (int y = 0; y < bench::kHeight; ++y)
      for (int x = 0; x < bench::kWidth; ++x) {
        const unsigned char p = a.GetPixel(x, y), q = b.GetPixel(x, y);
        image.SetPixel(EC24(p, q, static_cast<unsigned char>(p ^ q)), x, y);
      }
  }
  return image;
}

#if defined(MIREL_BENCH_OPENCV)
cv::Mat AsMat(EROI<EC24>& roi) {
  return cv::Mat(roi.GetHeight(), roi.GetWidth(), CV_8UC3, roi.GetImagePtr(0, 0),
                 static_cast<size_t>(roi.GetRowPitch()));
}
#endif

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
