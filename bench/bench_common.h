// Shared pieces of the benchmark suite.
//
// Every row of the table is a pair of benchmarks registered under one row
// name: "<row>/mirel" times this library, "<row>/opencv" its nearest OpenCV
// equivalent on the same frame. tools/bench_table.py pairs them up.
#ifndef MIREL_BENCH_BENCH_COMMON_H_
#define MIREL_BENCH_BENCH_COMMON_H_

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "mirel/mirel.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace bench {

constexpr int kWidth = 2448;
constexpr int kHeight = 2048;

// A camera-like 8-bit frame: a shaded background, a few bright and dark
// parts, and noise. Deterministic: the same seed gives the same frame.
void MakeFrame(EImage<EBW8>& image, uint32_t seed = 1);

// The standard frames, made once: two distinct frames and a result image.
EImage<EBW8>& Frame();
EImage<EBW8>& Frame2();
// A 24-bit frame whose components are Frame(), Frame2() and their XOR.
EImage<EC24>& ColourFrame();
// Result images of the frame's size, made once.
EImage<EBW8>& Out();
EImage<EC24>& ColourOut();

#if defined(MIREL_BENCH_OPENCV)
// An OpenCV header over a MirelImage ROI's pixels (no copy).
inline cv::Mat AsMat(EROI<EBW8>& roi) {
  return cv::Mat(roi.GetHeight(), roi.GetWidth(), CV_8UC1, roi.GetImagePtr(0, 0),
                 static_cast<size_t>(roi.GetRowPitch()));
}
inline cv::Mat AsMat(EROI<EC24>& roi) {
  return cv::Mat(roi.GetHeight(), roi.GetWidth(), CV_8UC3, roi.GetImagePtr(0, 0),
                 static_cast<size_t>(roi.GetRowPitch()));
}
#endif

// Registers fn as "<row>/mirel" or "<row>/opencv" with the suite's settings.
#define MIREL_BENCH_ROW(row, side, fn) \
  BENCHMARK(fn)->Name(std::string(row) + "/" + side)->Unit(benchmark::kMicrosecond)->UseRealTime()

}  // namespace bench

#endif  // MIREL_BENCH_BENCH_COMMON_H_
