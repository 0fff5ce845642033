// 16-bit filters beside their OpenCV counterparts on a 12-bit frame (the
// standard frame shifted up by 4 bits, with noise in the low bits).
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

EImage<EBW16>& Frame16() {
  static EImage<EBW16> image = [] {
    EImage<EBW8>& grey = bench::Frame();
    EImage<EBW16> f(grey.GetWidth(), grey.GetHeight());
    uint32_t noise = 12345;
    for (int y = 0; y < f.GetHeight(); ++y)
      for (int x = 0; x < f.GetWidth(); ++x) {
        noise = noise * 1664525u + 1013904223u;
        f.SetPixel(EBW16(static_cast<uint16_t>((grey.GetPixel(x, y).value << 4) | (noise >> 28))), x, y);
      }
    return f;
  }();
  return image;
}
EImage<EBW16>& Out16() {
  static EImage<EBW16> image(bench::kWidth, bench::kHeight);
  return image;
}

void MirelSobel16(benchmark::State& state) {
  for (auto _ : state) ImgConvolSobelX(&Frame16(), &Out16());
}
void MirelGaussian16(benchmark::State& state) {
  for (auto _ : state) ImgConvolGaussian5x5(&Frame16(), &Out16());
}
MIREL_BENCH_ROW("Sobel x 16-bit (opencv: negative side to 0)", "mirel", MirelSobel16);
MIREL_BENCH_ROW("GaussianBlur 5x5 16-bit", "mirel", MirelGaussian16);

#if defined(MIREL_BENCH_OPENCV)
cv::Mat AsMat16(EROI<EBW16>& roi) {
  return cv::Mat(roi.GetHeight(), roi.GetWidth(), CV_16UC1, roi.GetImagePtr(0, 0),
                 static_cast<size_t>(roi.GetRowPitch()));
}
void CvSobel16(benchmark::State& state) {
  cv::Mat src = AsMat16(Frame16()), dst = AsMat16(Out16());
  for (auto _ : state) cv::Sobel(src, dst, CV_16U, 1, 0, 3, 1, 0, cv::BORDER_REPLICATE);
}
void CvGaussian16(benchmark::State& state) {
  cv::Mat src = AsMat16(Frame16()), dst = AsMat16(Out16());
  for (auto _ : state) cv::GaussianBlur(src, dst, cv::Size(5, 5), 0, 0, cv::BORDER_REPLICATE);
}
MIREL_BENCH_ROW("Sobel x 16-bit (opencv: negative side to 0)", "opencv", CvSobel16);
MIREL_BENCH_ROW("GaussianBlur 5x5 16-bit", "opencv", CvGaussian16);
#endif

}  // namespace
