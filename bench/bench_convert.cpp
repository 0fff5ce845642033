// Colour and float conversions against cv::cvtColor and Mat::convertTo.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

using bench::AsMat;

// A float frame of the standard size, touched once so that no timing pays
// its page faults.
EImage<EFLOAT32>& FloatOut() {
  static EImage<EFLOAT32> image(bench::kWidth, bench::kHeight);
  static const bool touched = [] {
    for (int y = 0; y < image.GetHeight(); ++y)
      std::memset(image.GetImagePtr(0, y), 0, sizeof(EFLOAT32) * image.GetWidth());
    return true;
  }();
  (void)touched;
  return image;
}

// The grey level is the plain mean of the three components here, OpenCV
// weights them (0.299, 0.587, 0.114): the same work, other weights.
constexpr const char* kToGrey = "Convert C24 to BW8 (mean / cvtColor weighted)";
constexpr const char* kToColour = "Convert BW8 to C24 (cvtColor GRAY2BGR)";
constexpr const char* kToFloat = "Convert BW8 to F32 (convertTo)";

void ToGreyMirel(benchmark::State& state) {
  EImage<EC24>& src = bench::ColourFrame();
  EImage<EBW8>& dst = bench::Out();
  for (auto _ : state) {
    ImgConvert(&src, &dst);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kToGrey, "mirel", ToGreyMirel);

void ToColourMirel(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EC24>& dst = bench::ColourOut();
  for (auto _ : state) {
    ImgConvert(&src, &dst);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kToColour, "mirel", ToColourMirel);

void ToFloatMirel(benchmark::State& state) {
  EImage<EBW8>& src = bench::Frame();
  EImage<EFLOAT32>& dst = FloatOut();
  for (auto _ : state) {
    ImgConvert(&src, &dst);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kToFloat, "mirel", ToFloatMirel);

#if defined(MIREL_BENCH_OPENCV)
void ToGreyOpenCV(benchmark::State& state) {
  cv::Mat s = AsMat(bench::ColourFrame()), d = AsMat(bench::Out());
  for (auto _ : state) {
    cv::cvtColor(s, d, cv::COLOR_BGR2GRAY);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kToGrey, "opencv", ToGreyOpenCV);

void ToColourOpenCV(benchmark::State& state) {
  cv::Mat s = AsMat(bench::Frame()), d = AsMat(bench::ColourOut());
  for (auto _ : state) {
    cv::cvtColor(s, d, cv::COLOR_GRAY2BGR);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kToColour, "opencv", ToColourOpenCV);

void ToFloatOpenCV(benchmark::State& state) {
  EImage<EFLOAT32>& out = FloatOut();
  cv::Mat s = AsMat(bench::Frame());
  cv::Mat d(out.GetHeight(), out.GetWidth(), CV_32FC1, out.GetImagePtr(0, 0), static_cast<size_t>(out.GetRowPitch()));
  for (auto _ : state) {
    s.convertTo(d, CV_32F);
    benchmark::ClobberMemory();
  }
}
MIREL_BENCH_ROW(kToFloat, "opencv", ToFloatOpenCV);
#endif

}  // namespace
