// Packed bit images beside OpenCV working on the same picture as an 8-bit
// 0/255 image: erosion, and the threshold from the 8-bit frame to bits
// (whose mirel side is also to be read against "Threshold fixed (BW8)").
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

// The frame thresholded at 128, as bits and as 0/255 bytes, and result
// images of both kinds, touched once so that no row pays their page faults.
EImage<EBW1>& Bits() {
  static EImage<EBW1> image = [] {
    EImage<EBW1> b(bench::kWidth, bench::kHeight);
    ImgThreshold(&bench::Frame(), &b, 128);
    return b;
  }();
  return image;
}
EImage<EBW1>& BitsOut() {
  static EImage<EBW1> image = [] {
    EImage<EBW1> b(bench::kWidth, bench::kHeight);
    ImgCopy(EBW1(0), &b);
    return b;
  }();
  return image;
}

void MirelErodeBits(benchmark::State& state, unsigned half) {
  EImage<EBW1>& src = Bits();
  EImage<EBW1>& dst = BitsOut();
  for (auto _ : state) ImgErodeBox(&src, &dst, half, half);
}
void MirelErodeBits3(benchmark::State& state) { MirelErodeBits(state, 1); }
void MirelErodeBits15(benchmark::State& state) { MirelErodeBits(state, 7); }
void MirelThresholdToBits(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EBW1>& dst = BitsOut();
  for (auto _ : state) {
    ImgThreshold(&src, &dst, 128);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("erode 3x3 (bits; OpenCV on 0/255 bytes)", "mirel", MirelErodeBits3);
MIREL_BENCH_ROW("erode 15x15 (bits; OpenCV on 0/255 bytes)", "mirel", MirelErodeBits15);
MIREL_BENCH_ROW("Threshold fixed (BW8 -> BW1)", "mirel", MirelThresholdToBits);

#if defined(MIREL_BENCH_OPENCV)
EImage<EBW8>& Bytes() {
  static EImage<EBW8> image = [] {
    EImage<EBW8> b(bench::kWidth, bench::kHeight);
    ImgThreshold(&bench::Frame(), &b, 128, 0, 255);
    return b;
  }();
  return image;
}

void CvErode(benchmark::State& state, int size) {
  cv::Mat src = bench::AsMat(Bytes()), dst = bench::AsMat(bench::Out());
  cv::erode(src, dst, cv::Mat());
  const cv::Mat k = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(size, size));
  for (auto _ : state) cv::erode(src, dst, k);
}
void CvErode3(benchmark::State& state) { CvErode(state, 3); }
void CvErode15(benchmark::State& state) { CvErode(state, 15); }
void CvThreshold(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(bench::Out());
  for (auto _ : state) {
    cv::threshold(src, dst, 127, 255, cv::THRESH_BINARY);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW("erode 3x3 (bits; OpenCV on 0/255 bytes)", "opencv", CvErode3);
MIREL_BENCH_ROW("erode 15x15 (bits; OpenCV on 0/255 bytes)", "opencv", CvErode15);
MIREL_BENCH_ROW("Threshold fixed (BW8 -> BW1)", "opencv", CvThreshold);
#endif

}  // namespace
