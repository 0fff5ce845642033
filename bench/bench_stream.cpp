// Streaming operations, warm and cold, against their OpenCV twins.
//
// A "warm" row repeats the call on the same frames, which then stay in the
// last-level cache. A "cold" row walks a ring of 16 frames a side (80 MB of
// 8-bit sources, more than any last-level cache), one ring step a call, as
// frames arrive from a camera: every line is read from memory and every
// destination line is fetched for ownership. Both sides of a row use the
// same frames and the same walk.
#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int kRing = 16;

// A ring of frames of one pixel type, made and touched before any timing.
template <class T>
struct Ring {
  std::array<std::unique_ptr<EImage<T>>, kRing> frames;
  explicit Ring(int seed) {
    for (int i = 0; i < kRing; ++i) {
      frames[i] = std::make_unique<EImage<T>>(bench::kWidth, bench::kHeight);
      EImage<T>& f = *frames[i];
      // Shifted copies of the standard frames: fresh bytes, same statistics.
      const EImage<EBW8>& from = (seed + i) % 2 == 0 ? bench::Frame() : bench::Frame2();
      for (int y = 0; y < bench::kHeight; ++y) {
        const EBW8* s = from.GetImagePtr(0, y);
        T* d = f.GetImagePtr(0, y);
        for (int x = 0; x < bench::kWidth; ++x)
          d[x] = T(static_cast<decltype(T().value)>((s[x].value + i * 3 + seed) * (sizeof(T) > 1 ? 97 : 1)));
      }
    }
  }
  EImage<T>& operator[](int i) { return *frames[i % kRing]; }
};

Ring<EBW8>& A8() { static Ring<EBW8> r(0); return r; }
Ring<EBW8>& B8() { static Ring<EBW8> r(1); return r; }
Ring<EBW8>& D8() { static Ring<EBW8> r(2); return r; }
Ring<EBW16>& A16() { static Ring<EBW16> r(3); return r; }
Ring<EBW16>& D16() { static Ring<EBW16> r(4); return r; }

// One operation on frame i of the rings; the frame index stays 0 when warm.
using Step = std::function<void(int i)>;

void Run(benchmark::State& state, const Step& step, bool cold) {
  step(0);  // the rings are made outside the timing
  int i = 0;
  for (auto _ : state) {
    step(i);
    benchmark::ClobberMemory();
    if (cold) i = (i + 1) % kRing;
  }
}

// Both sides call by call, in turns (ours first on even iterations, OpenCV's
// first on odd ones), so that both meet the same machine: on a shared
// machine, load from other work comes in bursts of seconds that a row of its
// own can fall into while its twin does not. Cold, each call takes the next
// frame of the ring. The row's time is ours; the counters give both sides'
// medians and their ratio, our time / OpenCV's.
void RunPaired(benchmark::State& state, const Step& ours, const Step& theirs, bool cold) {
  ours(0);
  theirs(0);
  using Clock = std::chrono::steady_clock;
  std::vector<double> t_ours, t_theirs;
  int i = 0;
  bool ours_first = true;
  auto timed = [&](const Step& step, std::vector<double>& times) {
    const auto t0 = Clock::now();
    step(i);
    benchmark::ClobberMemory();
    const double s = std::chrono::duration<double>(Clock::now() - t0).count();
    times.push_back(s);
    if (cold) i = (i + 1) % kRing;
    return s;
  };
  for (auto _ : state) {
    double mine;
    if (ours_first) {
      mine = timed(ours, t_ours);
      timed(theirs, t_theirs);
    } else {
      timed(theirs, t_theirs);
      mine = timed(ours, t_ours);
    }
    state.SetIterationTime(mine);
    ours_first = !ours_first;
  }
  auto median = [](std::vector<double>& v) {
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
  };
  const double m = median(t_ours), o = median(t_theirs);
  state.counters["mirel_us"] = m * 1e6;
  state.counters["opencv_us"] = o * 1e6;
  state.counters["ours_per_opencv"] = o > 0 ? m / o : 0.0;
}

unsigned char* LutTable() {
  static unsigned char table[256] = {};
  static const bool made = [] {
    for (int k = 0; k < 256; ++k) table[k] = static_cast<unsigned char>(255 - (k * k) / 255);
    return true;
  }();
  (void)made;
  return table;
}

struct Op {
  const char* name;
  Step mirel;
  Step opencv;
};

#if defined(MIREL_BENCH_OPENCV)
cv::Mat M(EImage<EBW8>& f) { return bench::AsMat(f); }
cv::Mat M(EImage<EBW16>& f) {
  return cv::Mat(f.GetHeight(), f.GetWidth(), CV_16UC1, f.GetImagePtr(0, 0), static_cast<size_t>(f.GetRowPitch()));
}
#define MIREL_CV(body) [](int i) { body; }
#else
#define MIREL_CV(body) Step()
#endif

const Op kOps[] = {
    {"Stream copy BW8 (copyTo)", [](int i) { ImgCopy(&A8()[i], &D8()[i]); }, MIREL_CV(M(A8()[i]).copyTo(M(D8()[i])))},
    {"Stream fill BW8 (setTo)", [](int i) { ImgCopy(EBW8(77), &D8()[i]); }, MIREL_CV(M(D8()[i]).setTo(cv::Scalar(77)))},
    {"Stream add image+image (add)", [](int i) { ImgOper(ALO_ADD, &A8()[i], &B8()[i], &D8()[i]); },
     MIREL_CV({ cv::Mat d = M(D8()[i]); cv::add(M(A8()[i]), M(B8()[i]), d); })},
    {"Stream min (min)", [](int i) { ImgOper(ALO_MIN, &A8()[i], &B8()[i], &D8()[i]); },
     MIREL_CV({ cv::Mat d = M(D8()[i]); cv::min(M(A8()[i]), M(B8()[i]), d); })},
    {"Stream abs difference (absdiff)", [](int i) { ImgOper(ALO_ABS_DIFFERENCE, &A8()[i], &B8()[i], &D8()[i]); },
     MIREL_CV({ cv::Mat d = M(D8()[i]); cv::absdiff(M(A8()[i]), M(B8()[i]), d); })},
    {"Stream add image+constant (add)", [](int i) { ImgOper(ALO_ADD, &A8()[i], EBW8(40), &D8()[i]); },
     MIREL_CV({ cv::Mat d = M(D8()[i]); cv::add(M(A8()[i]), cv::Scalar(40), d); })},
    {"Stream threshold fixed (threshold)", [](int i) { ImgThreshold(&A8()[i], &D8()[i], 128, 0, 255, 0.f); },
     MIREL_CV({ cv::Mat d = M(D8()[i]); cv::threshold(M(A8()[i]), d, 127, 255, cv::THRESH_BINARY); })},
    {"Stream lookup table (LUT)",
     [](int i) { ImgLut(&A8()[i], &D8()[i], reinterpret_cast<EBW8*>(LutTable())); },
     MIREL_CV({
       cv::Mat d = M(D8()[i]);
       cv::LUT(M(A8()[i]), cv::Mat(1, 256, CV_8U, LutTable()), d);
     })},
    {"Stream gain offset BW8 (convertTo)", [](int i) { ImgGainOffset(&A8()[i], &D8()[i], 1.5f, 10.f); },
     MIREL_CV(M(A8()[i]).convertTo(M(D8()[i]), CV_8U, 1.5, 10))},
    {"Stream convert BW8 to BW16 (convertTo)", [](int i) { ImgConvert(&A8()[i], &D16()[i], 0); },
     MIREL_CV(M(A8()[i]).convertTo(M(D16()[i]), CV_16U))},
    {"Stream convert BW16 to BW8 (convertTo)", [](int i) { ImgConvert(&A16()[i], &D8()[i], 8); },
     MIREL_CV(M(A16()[i]).convertTo(M(D8()[i]), CV_8U, 1.0 / 256))},
};

const bool kRegistered = [] {
  for (const Op& op : kOps) {
    for (bool cold : {false, true}) {
      const std::string row = std::string(op.name) + (cold ? " cold" : " warm");
      const Step mirel = op.mirel;
      benchmark::RegisterBenchmark((row + "/mirel").c_str(),
                                   [mirel, cold](benchmark::State& s) { Run(s, mirel, cold); })
          ->Unit(benchmark::kMicrosecond)
          ->UseRealTime();
#if defined(MIREL_BENCH_OPENCV)
      const Step cv = op.opencv;
      benchmark::RegisterBenchmark((row + "/opencv").c_str(), [cv, cold](benchmark::State& s) { Run(s, cv, cold); })
          ->Unit(benchmark::kMicrosecond)
          ->UseRealTime();
      benchmark::RegisterBenchmark((row + "/paired").c_str(),
                                   [mirel, cv, cold](benchmark::State& s) { RunPaired(s, mirel, cv, cold); })
          ->Unit(benchmark::kMicrosecond)
          ->UseManualTime();
#endif
    }
  }
  return true;
}();

}  // namespace
