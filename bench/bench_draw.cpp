// The raster drawing adapter beside OpenCV's drawing functions on the
// standard 24-bit frame.
#include <cmath>
#include <vector>

#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

using bench::kHeight;
using bench::kWidth;

// 1000 segments between deterministic points, some reaching outside.
struct Segment {
  int x0, y0, x1, y1;
};
const std::vector<Segment>& Segments() {
  static const std::vector<Segment> segments = [] {
    std::vector<Segment> s;
    uint32_t state = 12345;
    auto next = [&state](int range) {
      state = state * 1664525u + 1013904223u;
      return static_cast<int>((state >> 8) % static_cast<uint32_t>(range)) - range / 10;
    };
    for (int i = 0; i < 1000; ++i) s.push_back({next(kWidth), next(kHeight), next(kWidth), next(kHeight)});
    return s;
  }();
  return segments;
}

// A star of 40 points round the middle of the frame.
std::vector<std::pair<int, int>> Star() {
  std::vector<std::pair<int, int>> p;
  for (int i = 0; i < 40; ++i) {
    const double r = i % 2 ? 400.0 : 950.0, t = i * 3.14159265358979 / 20;
    p.emplace_back(kWidth / 2 + static_cast<int>(r * std::cos(t)), kHeight / 2 + static_cast<int>(r * std::sin(t)));
  }
  return p;
}

void MirelLines(benchmark::State& state) {
  Corvane::RasterDrawAdapter adapter(&bench::ColourOut());
  for (auto _ : state)
    for (const Segment& s : Segments()) adapter.DrawLine(s.x0, s.y0, s.x1, s.y1, Corvane::DrawColor(255, 128, 0));
}
void MirelFillPolygon(benchmark::State& state) {
  Corvane::RasterDrawAdapter adapter(&bench::ColourOut());
  Corvane::DrawPointArray points;
  for (const auto& p : Star()) points.Add(p.first, p.second);
  for (auto _ : state) adapter.FillPolygon(points, Corvane::DrawColor(0, 0, 0), Corvane::DrawColor(255, 128, 0));
}
void MirelFillEllipse(benchmark::State& state) {
  Corvane::RasterDrawAdapter adapter(&bench::ColourOut());
  for (auto _ : state)
    adapter.FillEllipse(200, 100, kWidth - 400, kHeight - 200, Corvane::DrawColor(0, 0, 0),
                        Corvane::DrawColor(255, 128, 0));
}
MIREL_BENCH_ROW("line x1000", "mirel", MirelLines);
MIREL_BENCH_ROW("fillPoly star", "mirel", MirelFillPolygon);
MIREL_BENCH_ROW("ellipse filled", "mirel", MirelFillEllipse);

#if defined(MIREL_BENCH_OPENCV)
void CvLines(benchmark::State& state) {
  cv::Mat out = bench::AsMat(bench::ColourOut());
  for (auto _ : state)
    for (const Segment& s : Segments())
      cv::line(out, cv::Point(s.x0, s.y0), cv::Point(s.x1, s.y1), cv::Scalar(255, 128, 0), 1, cv::LINE_8);
}
void CvFillPolygon(benchmark::State& state) {
  cv::Mat out = bench::AsMat(bench::ColourOut());
  std::vector<cv::Point> points;
  for (const auto& p : Star()) points.emplace_back(p.first, p.second);
  for (auto _ : state) {
    cv::fillPoly(out, std::vector<std::vector<cv::Point>>{points}, cv::Scalar(255, 128, 0), cv::LINE_8);
    cv::polylines(out, std::vector<std::vector<cv::Point>>{points}, true, cv::Scalar(0, 0, 0), 1, cv::LINE_8);
  }
}
void CvFillEllipse(benchmark::State& state) {
  cv::Mat out = bench::AsMat(bench::ColourOut());
  const cv::Point centre(kWidth / 2, kHeight / 2);
  const cv::Size axes(kWidth / 2 - 200, kHeight / 2 - 100);
  for (auto _ : state) {
    cv::ellipse(out, centre, axes, 0, 0, 360, cv::Scalar(255, 128, 0), cv::FILLED, cv::LINE_8);
    cv::ellipse(out, centre, axes, 0, 0, 360, cv::Scalar(0, 0, 0), 1, cv::LINE_8);
  }
}
MIREL_BENCH_ROW("line x1000", "opencv", CvLines);
MIREL_BENCH_ROW("fillPoly star", "opencv", CvFillPolygon);
MIREL_BENCH_ROW("ellipse filled", "opencv", CvFillEllipse);
#endif

}  // namespace
