// Morphology and medians beside their OpenCV counterparts on the standard
// frame (OpenCV's default border for erode and dilate leaves the outside out
// of the extremum, as this library does).
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

EImage<EBW8>& Out() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  return image;
}

// The frame at 16 bits (each value times 257) and as colour (three shifted
// copies of the frame).
EImage<EBW16>& Frame16() {
  static EImage<EBW16> image = [] {
    EImage<EBW16> i(bench::kWidth, bench::kHeight);
    for (int y = 0; y < bench::kHeight; ++y)
      for (int x = 0; x < bench::kWidth; ++x)
        i.GetImagePtr(0, y)[x] = EBW16(static_cast<unsigned short>(bench::Frame().GetPixel(x, y).value * 257));
    return i;
  }();
  return image;
}
EImage<EBW16>& Out16() {
  static EImage<EBW16> image(bench::kWidth, bench::kHeight);
  return image;
}
EImage<EC24>& Frame24() {
  static EImage<EC24> image = [] {
    EImage<EC24> i;
    i.SetSize(bench::kWidth, bench::kHeight);
    for (int y = 0; y < bench::kHeight; ++y)
      for (int x = 0; x < bench::kWidth; ++x) {
        const unsigned char v = bench::Frame().GetPixel(x, y).value;
        i.GetImagePtr(0, y)[x] = EC24(v, static_cast<unsigned char>(255 - v), static_cast<unsigned char>(v ^ 0x5a));
      }
    return i;
  }();
  return image;
}
EImage<EC24>& Out24() {
  static EImage<EC24> image = [] {
    EImage<EC24> i;
    i.SetSize(bench::kWidth, bench::kHeight);
    return i;
  }();
  return image;
}

void MirelErode3(benchmark::State& state) {
  for (auto _ : state) ImgErodeBox(&bench::Frame(), &Out(), 1, 1);
}
void MirelDilate3(benchmark::State& state) {
  for (auto _ : state) ImgDilateBox(&bench::Frame(), &Out(), 1, 1);
}
void MirelErode15(benchmark::State& state) {
  for (auto _ : state) ImgErodeBox(&bench::Frame(), &Out(), 7, 7);
}
void MirelErode31(benchmark::State& state) {
  for (auto _ : state) ImgErodeBox(&bench::Frame(), &Out(), 15, 15);
}
void MirelErode61(benchmark::State& state) {
  for (auto _ : state) ImgErodeBox(&bench::Frame(), &Out(), 30, 30);
}
void MirelOpen9(benchmark::State& state) {
  for (auto _ : state) ImgOpenBox(&bench::Frame(), &Out(), 4, 4);
}
void MirelDisk5(benchmark::State& state) {
  for (auto _ : state) ImgErodeDisk(&bench::Frame(), &Out(), 5);
}
void MirelMedian3(benchmark::State& state) {
  for (auto _ : state) ImgMedian(&bench::Frame(), &Out());
}
void MirelErode3x16(benchmark::State& state) {
  for (auto _ : state) ImgErodeBox(&Frame16(), &Out16(), 1, 1);
}
void MirelErode3C24(benchmark::State& state) {
  for (auto _ : state) ImgErodeBox(&Frame24(), &Out24(), 1, 1);
}
void MirelBiLevelErode3(benchmark::State& state) {
  static EImage<EBW8> binary = [] {
    EImage<EBW8> b(bench::kWidth, bench::kHeight);
    ImgThreshold(&bench::Frame(), &b, 128);
    return b;
  }();
  for (auto _ : state) ImgBiLevelErodeBox(&binary, &Out(), 1, 1);
}
MIREL_BENCH_ROW("erode 3x3", "mirel", MirelErode3);
MIREL_BENCH_ROW("dilate 3x3", "mirel", MirelDilate3);
MIREL_BENCH_ROW("erode 15x15", "mirel", MirelErode15);
MIREL_BENCH_ROW("erode 31x31", "mirel", MirelErode31);
MIREL_BENCH_ROW("erode 61x61", "mirel", MirelErode61);
MIREL_BENCH_ROW("open 9x9", "mirel", MirelOpen9);
MIREL_BENCH_ROW("erode disk 5 (11x11 octagon)", "mirel", MirelDisk5);
MIREL_BENCH_ROW("medianBlur 3", "mirel", MirelMedian3);
MIREL_BENCH_ROW("erode 3x3 16-bit", "mirel", MirelErode3x16);
MIREL_BENCH_ROW("erode 3x3 colour", "mirel", MirelErode3C24);
MIREL_BENCH_ROW("erode 3x3 two-level", "mirel", MirelBiLevelErode3);

#if defined(MIREL_BENCH_OPENCV)
cv::Mat Mat16(EROI<EBW16>& roi) {
  return cv::Mat(roi.GetHeight(), roi.GetWidth(), CV_16UC1, roi.GetImagePtr(0, 0),
                 static_cast<size_t>(roi.GetRowPitch()));
}
cv::Mat Mat24(EROI<EC24>& roi) {
  return cv::Mat(roi.GetHeight(), roi.GetWidth(), CV_8UC3, roi.GetImagePtr(0, 0),
                 static_cast<size_t>(roi.GetRowPitch()));
}
void CvErode(benchmark::State& state, int size, bool dilate = false) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  const cv::Mat k = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(size, size));
  for (auto _ : state) {
    if (dilate) cv::dilate(src, dst, k);
    else cv::erode(src, dst, k);
  }
}
void CvErode3(benchmark::State& state) { CvErode(state, 3); }
void CvDilate3(benchmark::State& state) { CvErode(state, 3, true); }
void CvErode15(benchmark::State& state) { CvErode(state, 15); }
void CvErode31(benchmark::State& state) { CvErode(state, 31); }
void CvErode61(benchmark::State& state) { CvErode(state, 61); }
void CvOpen9(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  const cv::Mat k = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(9, 9));
  for (auto _ : state) cv::morphologyEx(src, dst, cv::MORPH_OPEN, k);
}
// The same octagon as a structuring element.
void CvDisk5(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  cv::Mat k(11, 11, CV_8U);
  for (int y = 0; y < 11; ++y)
    for (int x = 0; x < 11; ++x) k.at<uchar>(y, x) = std::abs(x - 5) + std::abs(y - 5) <= 7;
  for (auto _ : state) cv::erode(src, dst, k);
}
void CvMedian3(benchmark::State& state) {
  cv::Mat src = bench::AsMat(bench::Frame()), dst = bench::AsMat(Out());
  for (auto _ : state) cv::medianBlur(src, dst, 3);
}
void CvErode3x16(benchmark::State& state) {
  cv::Mat src = Mat16(Frame16()), dst = Mat16(Out16());
  const cv::Mat k = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3));
  for (auto _ : state) cv::erode(src, dst, k);
}
void CvErode3C24(benchmark::State& state) {
  cv::Mat src = Mat24(Frame24()), dst = Mat24(Out24());
  const cv::Mat k = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3));
  for (auto _ : state) cv::erode(src, dst, k);
}
MIREL_BENCH_ROW("erode 3x3", "opencv", CvErode3);
MIREL_BENCH_ROW("dilate 3x3", "opencv", CvDilate3);
MIREL_BENCH_ROW("erode 15x15", "opencv", CvErode15);
MIREL_BENCH_ROW("erode 31x31", "opencv", CvErode31);
MIREL_BENCH_ROW("erode 61x61", "opencv", CvErode61);
MIREL_BENCH_ROW("open 9x9", "opencv", CvOpen9);
MIREL_BENCH_ROW("erode disk 5 (11x11 octagon)", "opencv", CvDisk5);
MIREL_BENCH_ROW("medianBlur 3", "opencv", CvMedian3);
MIREL_BENCH_ROW("erode 3x3 16-bit", "opencv", CvErode3x16);
MIREL_BENCH_ROW("erode 3x3 colour", "opencv", CvErode3C24);
MIREL_BENCH_ROW("erode 3x3 two-level", "opencv", CvErode3);
#endif

}  // namespace
