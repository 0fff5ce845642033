// Several threads calling the library at once, some with bands on and some
// provoking errors and changing their overlay colour: every call gives the
// bytes it gives alone on one thread, and every thread keeps its own error
// code, trace, overlay colour and thread setting. CI runs this program under
// ThreadSanitizer, which reports any unsynchronised access to shared state,
// the 8-bit convolution's packed coefficients and the 3x3 median's column
// sorting included.
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

// One call on images of its own. Images are made on the main thread (the
// borrowed-buffer pool of the test support is not synchronised); `run`
// restores the destination's first bytes and calls the operation.
struct Task {
  std::string name;
  std::function<void()> run;
  std::function<std::vector<unsigned char>()> result;
  std::vector<unsigned char> expected;  // after one call on one thread
};

template <class T>
void Restore(EImage<T>& image, const std::vector<unsigned char>& bytes) {
  if (!bytes.empty()) std::memcpy(image.GetImagePtr(0, 0), bytes.data(), bytes.size());
}

// Images of w x h pixels placed at random in random parents, filled at
// random; the last is the destination.
template <class... T>
struct Images {
  std::tuple<EImage<T>...> parents;
  std::tuple<EROI<T>...> rois;
  std::vector<unsigned char> fresh;
  Images(Rng& rng, int w, int h) {
    Place(rng, w, h, std::index_sequence_for<T...>{});
    fresh = testsupport::Snapshot(Destination());
  }
  auto& Destination() { return std::get<sizeof...(T) - 1>(parents); }
  template <std::size_t... I>
  void Place(Rng& rng, int w, int h, std::index_sequence<I...>) {
    (void)std::initializer_list<int>{(testsupport::PlaceRandom(std::get<I>(parents), std::get<I>(rois), w, h, rng),
                                      testsupport::FillRandom(std::get<I>(parents), rng), 0)...};
  }
};

// op(&roi...) on images of its own; the last ROI is the destination.
template <class... T, class Op>
Task Make(std::string name, Rng& rng, Op op) {
  const int w = 1 + static_cast<int>(rng() % 70), h = 1 + static_cast<int>(rng() % 40);
  auto im = std::make_shared<Images<T...>>(rng, w, h);
  return {std::move(name),
          [im, op] {
            Restore(im->Destination(), im->fresh);
            std::apply([&](auto&... roi) { op(&roi...); }, im->rois);
          },
          [im] { return testsupport::Snapshot(im->Destination()); },
          {}};
}

template <class S, class D, class Op>
Task Unary(std::string name, Rng& rng, Op op) {
  return Make<S, D>(std::move(name), rng, op);
}

template <class A, class B, class D, class Op>
Task Binary(std::string name, Rng& rng, Op op) {
  return Make<A, B, D>(std::move(name), rng, op);
}

// A 3x3 kernel of small random integers with rectifier 2: the packed
// fixed-point form of the 8-bit convolution.
std::shared_ptr<EKernel> RandomKernel(Rng& rng) {
  auto k = std::make_shared<EKernel>(3, 3, 1.0f / static_cast<float>(1 + rng() % 9), 0u, 2, 0u);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 3; ++x) k->SetKernelData(x, y, static_cast<float>(static_cast<int>(rng() % 9) - 3));
  return k;
}

// The operations of one thread: the two with fixed working storage (packed
// convolution coefficients, 3x3 median) on every thread with different
// data, and a rotating choice of band-capable ones.
std::vector<Task> TasksOf(int thread, Rng& rng) {
  std::vector<Task> tasks;
  auto kernel = RandomKernel(rng);
  tasks.push_back(Unary<EBW8, EBW8>("ConvolKernel 3x3", rng, [kernel](auto s, auto d) { ImgConvolKernel(s, d, kernel.get()); }));
  tasks.push_back(Unary<EBW8, EBW8>("Median BW8", rng, [](auto s, auto d) { ImgMedian(s, d); }));
  tasks.push_back(Unary<EBW16, EBW16>("Median BW16", rng, [](auto s, auto d) { ImgMedian(s, d); }));
  tasks.push_back(Binary<EBW8, EBW8, EC24>("Oper overlay", rng,
                                           [](auto a, auto b, auto d) { ImgOper(ALO_OVERLAY, a, b, d); }));
  std::vector<Task> others;
  others.push_back(Unary<EBW8, EBW8>("Sobel", rng, [](auto s, auto d) { ImgConvolSobel(s, d); }));
  others.push_back(Unary<EBW8, EBW8>("Gaussian5x5", rng, [](auto s, auto d) {
    ImgConvolGaussian5x5(static_cast<const EROI<EBW8>*>(s), d);
  }));
  others.push_back(Unary<EBW16, EBW16>("DilateBox", rng, [](auto s, auto d) { ImgDilateBox(s, d, 5u, 6u); }));
  others.push_back(Unary<EBW8, EBW8>("ScaleRotate", rng, [](auto s, auto d) {
    ImgScaleRotate(s, 3.f, 2.f, 4.f, 5.f, 1.2f, 0.8f, 17.f, d, 8);
  }));
  others.push_back(Binary<EBW8, EBW8, EBW8>("Oper add", rng, [](auto a, auto b, auto d) { ImgOper(ALO_ADD, a, b, d); }));
  others.push_back(Unary<EBW8, EBW8>("Threshold", rng, [](auto s, auto d) { ImgThreshold(s, d, 128u, 10, 200, 0.f); }));
  for (std::size_t i = 0; i < others.size(); ++i)
    if ((i + static_cast<std::size_t>(thread)) % 2 == 0) tasks.push_back(std::move(others[i]));
  return tasks;
}

EC24 ColourOf(int thread) {
  return EC24(static_cast<unsigned char>(40 * thread + 1), static_cast<unsigned char>(255 - 30 * thread),
              static_cast<unsigned char>(7 * thread));
}

bool SameColour(EC24 a, EC24 b) { return a.c[0] == b.c[0] && a.c[1] == b.c[1] && a.c[2] == b.c[2]; }

constexpr int kWorkers = 4;
constexpr int kFailing = 2;
constexpr int kRounds = 20;

TEST(ConcurrentCalls, EachThreadGetsItsOwnResultsAndState) {
  Rng rng(20261124);
  std::vector<std::vector<Task>> work(kWorkers);
  for (int t = 0; t < kWorkers; ++t) {
    work[t] = TasksOf(t, rng);
    ImgSetOverlayColor(ColourOf(t));
    for (Task& task : work[t]) {
      task.run();
      ASSERT_EQ(EGetError(), E_OK) << task.name;
      task.expected = task.result();
    }
  }
  ImgSetOverlayColor(EC24(0, 0, 0));

  // What a refused call leaves: images of different sizes.
  EImage<EBW8> small(5, 4), large(6, 4);
  const auto untouched = testsupport::Snapshot(large);
  ImgCopy(&small, &large);
  const E_ERRORS refusedCode = EGetError();
  const std::string refusedTrace = EGetErrorTrace();
  ASSERT_NE(refusedCode, E_OK);
  EOk();

  std::vector<std::string> failures(kWorkers + kFailing);
  std::vector<std::thread> threads;
  for (int t = 0; t < kWorkers; ++t) {
    threads.emplace_back([t, &work, &failures] {
      std::string& fail = failures[t];
      const int setting = 1 + t;  // one thread alone, the others in bands
      ImgSetThreads(setting);
      mirel::testing::SetBandMinimum(0.0);
      mirel::testing::SetBandsOnPoolOnly(t == kWorkers - 1 ? 1 : 0);
      ImgSetOverlayColor(ColourOf(t));
      for (int round = 0; round < kRounds && fail.empty(); ++round) {
        for (Task& task : work[t]) {
          task.run();
          if (EGetError() != E_OK) fail = task.name + ": code " + std::to_string(EGetError());
          else if (task.result() != task.expected) fail = task.name + ": other bytes than on one thread";
          if (!fail.empty()) break;
        }
      }
      if (fail.empty() && !SameColour(ImgGetOverlayColor(), ColourOf(t))) fail = "overlay colour changed";
      if (fail.empty() && ImgGetThreads() != setting) fail = "thread setting changed";
      mirel::testing::SetBandsOnPoolOnly(0);
      mirel::testing::SetBandMinimum(-1.0);
    });
  }
  for (int f = 0; f < kFailing; ++f) {
    threads.emplace_back([f, &failures, &small, &large, &untouched, refusedCode, refusedTrace] {
      std::string& fail = failures[kWorkers + f];
      // Destinations of their own: the shared images are only read.
      EImage<EBW8> mine(6, 4);
      std::memcpy(mine.GetImagePtr(0, 0), large.GetImagePtr(0, 0), untouched.size());
      ImgSetThreads(2 + f);
      for (int round = 0; round < 40 * kRounds && fail.empty(); ++round) {
        const EC24 colour(static_cast<unsigned char>(round), static_cast<unsigned char>(f), 99);
        ImgSetOverlayColor(colour);
        ImgCopy(&small, &mine);
        if (EGetError() != refusedCode || refusedTrace != EGetErrorTrace()) fail = "refusal reported otherwise";
        else if (testsupport::Snapshot(mine) != untouched) fail = "refused copy wrote";
        ImgSetThreads(-1);
        if (EGetError() != E_ERROR_BAD_ARGUMENT || std::string(EGetErrorTrace()) != "ImgSetThreads")
          fail = "negative thread count reported otherwise";
        if (ImgGetThreads() != 2 + f) fail = "refused thread count changed the setting";
        if (!SameColour(ImgGetOverlayColor(), colour)) fail = "overlay colour changed";
        EOk();
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (std::size_t i = 0; i < failures.size(); ++i) EXPECT_EQ(failures[i], "") << "thread " << i;
  // The main thread's own state saw none of it.
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(ImgGetThreads(), 1);
  EXPECT_TRUE(SameColour(ImgGetOverlayColor(), EC24(0, 0, 0)));
}

// Calls with the two pieces of fixed working storage, on the same images
// from several threads at once with different coefficients: each gets the
// bytes of its own kernel.
TEST(ConcurrentCalls, ConvolutionsWithDifferentKernelsDoNotMix) {
  Rng rng(77);
  EImage<EBW8> src(61, 33);
  testsupport::FillRandom(src, rng);
  constexpr int kThreads = 4;
  std::vector<std::shared_ptr<EKernel>> kernels;
  std::vector<EImage<EBW8>> expected(kThreads), got(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    kernels.push_back(RandomKernel(rng));
    expected[t].SetSize(61, 33);
    got[t].SetSize(61, 33);
    ImgConvolKernel(&src, &expected[t], kernels[t].get());
    ASSERT_EQ(EGetError(), E_OK);
  }
  EImage<EBW8> medianExpected(61, 33);
  ImgMedian(&src, &medianExpected);
  std::vector<EImage<EBW8>> medians(kThreads);
  for (auto& m : medians) m.SetSize(61, 33);
  std::vector<int> wrong(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 4 * kRounds; ++round) {
        ImgConvolKernel(&src, &got[t], kernels[t].get());
        ImgMedian(&src, &medians[t]);
        if (testsupport::Bytes(got[t]) != testsupport::Bytes(expected[t])) ++wrong[t];
        if (testsupport::Bytes(medians[t]) != testsupport::Bytes(medianExpected)) ++wrong[t];
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(wrong[t], 0) << "thread " << t;
}

}  // namespace

// Images of 1 MiB and more made and freed on several threads at once go
// through the one cache of freed blocks; each thread's pixels stay its own.
TEST(ConcurrentCalls, LargeImagesShareTheCacheOfFreedBlocks) {
  constexpr int kThreads = 3;
  std::vector<int> wrong(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 8 * kRounds; ++round) {
        EImage<EBW8> image(1024 + 64 * ((round + t) % 3), 1024);
        std::memset(image.GetImagePtr(0, 0), t + 1, static_cast<size_t>(image.GetRowPitch()) * 1024);
        const EBW8 last = image.GetPixel(image.GetWidth() - 1, 1023);
        if (last.value != t + 1) ++wrong[t];
      }
    });
  }
  for (std::thread& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(wrong[t], 0) << "thread " << t;
}
