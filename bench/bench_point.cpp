// Point operations: pixelwise arithmetic and copy on the standard frame.
// Each row registers its OpenCV twin right behind it, so the two sides of a
// row run next to each other.
#include "bench_common.h"

namespace {

EImage<EBW8>& Result() {
  static EImage<EBW8> image(bench::kWidth, bench::kHeight);
  return image;
}

// The frames are made (and the result's pages touched) before timing starts.
struct Operands {
  EImage<EBW8>& a = bench::Frame();
  EImage<EBW8>& b = bench::Frame2();
  EImage<EBW8>& d = Result();
  Operands() { ImgCopy(EBW8(0), &d); }
};

void MirelAdd(benchmark::State& state) {
  Operands o;
  for (auto _ : state) ImgOper(ALO_ADD, &o.a, &o.b, &o.d);
}
void MirelAbsDiff(benchmark::State& state) {
  Operands o;
  for (auto _ : state) ImgOper(ALO_ABS_DIFFERENCE, &o.a, &o.b, &o.d);
}
void MirelMin(benchmark::State& state) {
  Operands o;
  for (auto _ : state) ImgOper(ALO_MIN, &o.a, &o.b, &o.d);
}
void MirelAddConst(benchmark::State& state) {
  Operands o;
  for (auto _ : state) ImgOper(ALO_ADD, &o.a, EBW8(40), &o.d);
}
void MirelCopy(benchmark::State& state) {
  Operands o;
  for (auto _ : state) ImgCopy(&o.a, &o.d);
}

#if defined(MIREL_BENCH_OPENCV)
void CvAdd(benchmark::State& state) {
  Operands o;
  cv::Mat a = bench::AsMat(o.a), b = bench::AsMat(o.b), d = bench::AsMat(o.d);
  for (auto _ : state) cv::add(a, b, d);
}
void CvAbsDiff(benchmark::State& state) {
  Operands o;
  cv::Mat a = bench::AsMat(o.a), b = bench::AsMat(o.b), d = bench::AsMat(o.d);
  for (auto _ : state) cv::absdiff(a, b, d);
}
void CvMin(benchmark::State& state) {
  Operands o;
  cv::Mat a = bench::AsMat(o.a), b = bench::AsMat(o.b), d = bench::AsMat(o.d);
  for (auto _ : state) cv::min(a, b, d);
}
void CvAddConst(benchmark::State& state) {
  Operands o;
  cv::Mat a = bench::AsMat(o.a), d = bench::AsMat(o.d);
  for (auto _ : state) cv::add(a, cv::Scalar(40), d);
}
void CvCopy(benchmark::State& state) {
  Operands o;
  cv::Mat a = bench::AsMat(o.a), d = bench::AsMat(o.d);
  for (auto _ : state) a.copyTo(d);
}
#define MIREL_POINT_ROW(row, mirel_fn, cv_fn) \
  MIREL_BENCH_ROW(row, "mirel", mirel_fn);    \
  MIREL_BENCH_ROW(row, "opencv", cv_fn)
#else
#define MIREL_POINT_ROW(row, mirel_fn, cv_fn) MIREL_BENCH_ROW(row, "mirel", mirel_fn)
#endif

MIREL_POINT_ROW("ImgOper ALO_ADD image+image", MirelAdd, CvAdd);
MIREL_POINT_ROW("ImgOper ALO_ABS_DIFFERENCE", MirelAbsDiff, CvAbsDiff);
MIREL_POINT_ROW("ImgOper ALO_MIN", MirelMin, CvMin);
MIREL_POINT_ROW("ImgOper ALO_ADD image+constant", MirelAddConst, CvAddConst);
MIREL_POINT_ROW("ImgCopy BW8", MirelCopy, CvCopy);

}  // namespace
