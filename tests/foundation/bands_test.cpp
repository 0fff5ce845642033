// The thread setting and the band runner: coverage of the rows, what the
// bands see of the caller, how failures come back, and the pool at work.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "mirel/foundation/bands_internal.h"
#include "test_support.h"

namespace {

// Restores one thread and the measured band size on leaving.
struct ThreadsGuard {
  explicit ThreadsGuard(int n, double minimum = 0.0) {
    ImgSetThreads(n);
    mirel::testing::SetBandMinimum(minimum);
  }
  ~ThreadsGuard() {
    ImgSetThreads(1);
    mirel::testing::SetBandMinimum(-1.0);
  }
};

TEST(Threads, SettingIsPerThreadAndRefusesNegatives) {
  EXPECT_EQ(ImgGetThreads(), 1);
  ThreadsGuard guard(3);
  EXPECT_EQ(ImgGetThreads(), 3);
  EXPECT_EQ(EGetError(), E_OK);
  ImgSetThreads(-2);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "ImgSetThreads");
  EXPECT_EQ(ImgGetThreads(), 3);
  ImgSetThreads(0);  // one per hardware thread, read back as set
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(ImgGetThreads(), 0);
  int other = -1, otherAfter = -1;
  std::thread t([&] {
    other = ImgGetThreads();
    ImgSetThreads(5);
    otherAfter = ImgGetThreads();
  });
  t.join();
  EXPECT_EQ(other, 1);
  EXPECT_EQ(otherAfter, 5);
  EXPECT_EQ(ImgGetThreads(), 0);
}

TEST(Bands, OneThreadCallsTheBodyOnceOnTheCaller) {
  for (int threads : {1, 4}) {
    // One thread, or work below the measured size: no split.
    ThreadsGuard guard(threads, -1.0);
    const mirel::Bands bands(50, 1.0);
    ASSERT_EQ(bands.Count(), 1);
    int calls = 0;
    bands.Run([&](int band, int y0, int y1) {
      ++calls;
      EXPECT_EQ(band, 0);
      EXPECT_EQ(y0, 0);
      EXPECT_EQ(y1, 50);
    });
    EXPECT_EQ(calls, 1);
  }
  ThreadsGuard guard(4, -1.0);
  EXPECT_GT(mirel::Bands(2048, 2448.0).Count(), 1);  // a camera frame is split
  EXPECT_EQ(mirel::Bands(2048, mirel::kOneBand).Count(), 1);
}

TEST(Bands, EveryRowOnceInOrderedNonEmptyBands) {
  for (int threads : {2, 3, 7}) {
    ThreadsGuard guard(threads);
    for (int rows : {0, 1, 2, 3, 5, 6, 7, 8, 13, 100}) {
      const mirel::Bands bands(rows, 1.0);
      EXPECT_GE(bands.Count(), rows < 2 ? 1 : std::min(threads, rows));
      EXPECT_LE(bands.Count(), std::max(rows, 1));
      std::vector<std::atomic<int>> seen(static_cast<std::size_t>(rows));
      std::mutex m;
      std::vector<std::pair<int, int>> ranges(static_cast<std::size_t>(bands.Count()));
      bands.Run([&](int band, int y0, int y1) {
        for (int y = y0; y < y1; ++y) seen[static_cast<std::size_t>(y)]++;
        std::lock_guard<std::mutex> lock(m);
        ranges[static_cast<std::size_t>(band)] = {y0, y1};
      });
      for (int y = 0; y < rows; ++y) EXPECT_EQ(seen[static_cast<std::size_t>(y)], 1) << rows << " " << y;
      int next = 0;
      for (const auto& r : ranges) {
        EXPECT_EQ(r.first, next);
        EXPECT_TRUE(rows < 2 || r.second > r.first);
        next = r.second;
      }
      EXPECT_EQ(next, rows);
    }
  }
}

TEST(Bands, PoolThreadsTakeBandsWithTheCallersSwitches) {
  ThreadsGuard guard(2);
  testsupport::PathGuard path(1);  // the SSE2 level
  mirel::testing::SetFastPaths(0);
  ImgSetOverlayColor(EC24(1, 2, 3));
  const std::thread::id caller = std::this_thread::get_id();
  std::atomic<bool> otherDone{false};
  std::thread::id otherId;
  int mmx = -1, level = -1, nested = -1;
  EC24 colour(0, 0, 0);
  mirel::Bands(2, 1.0).Run([&](int, int, int) {
    if (std::this_thread::get_id() == caller) {
      // Wait (boundedly) for the other band to run on a pool thread.
      for (int i = 0; i < 2000 && !otherDone; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      return;
    }
    mmx = EGetMMX();
    level = mirel::testing::ActiveSimdLevel();
    colour = ImgGetOverlayColor();
    nested = mirel::Bands(100, 1.0).Count();  // a band never splits again
    otherId = std::this_thread::get_id();
    otherDone = true;
  });
  ImgSetOverlayColor(EC24(0, 0, 0));
  ASSERT_TRUE(otherDone);
  EXPECT_NE(otherId, caller);
  EXPECT_EQ(mmx, 0);
  EXPECT_EQ(level, std::min(1, mirel::testing::DetectedSimdLevel()));
  EXPECT_EQ(colour.c[0], 1);
  EXPECT_EQ(colour.c[2], 3);
  EXPECT_EQ(nested, 1);
}

TEST(Bands, FirstFailingBandReportsOnTheCaller) {
  ThreadsGuard guard(7);
  const mirel::Bands bands(7, 1.0);
  ASSERT_EQ(bands.Count(), 7);
  bands.Run([&](int band, int, int) {
    if (band == 2 || band == 5) {
      ESetError(band == 2 ? E_ERROR_OUT_OF_MEMORY : E_ERROR_INTERNAL);
      ETraceError(band == 2 ? "Inner two" : "Inner five");
      ETraceError("Middle");
    }
  });
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "Inner two <- Middle");

  // Bands that succeed leave the caller's state as it was, set or clear.
  ESetError(E_ERROR_BAD_RANGE);
  ETraceError("Before");
  bands.Run([](int, int, int) { EOk(); });
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "Before");
  EOk();
  bands.Run([](int, int, int) {});
  EXPECT_EQ(EGetError(), E_OK);

  // An exception in a band reaches the caller after every band is done.
  std::atomic<int> done{0};
  EXPECT_THROW(bands.Run([&](int band, int, int) {
    ++done;
    if (band == 4) throw Corvane::Talmeer::Exception(E_ERROR_BAD_OPERATION);
  }),
               Corvane::Talmeer::Exception);
  EXPECT_EQ(done, 7);
}

TEST(Bands, CallersOnSeveralThreadsShareThePool) {
  // Four callers with settings of their own run jobs at once; each sees all
  // of its rows, and the pool serves them all.
  std::vector<std::thread> callers;
  std::atomic<int> wrong{0};
  for (int c = 0; c < 4; ++c) {
    callers.emplace_back([c, &wrong] {
      ThreadsGuard guard(2 + c);
      for (int round = 0; round < 50; ++round) {
        const int rows = 10 + round;
        std::vector<std::atomic<int>> seen(static_cast<std::size_t>(rows));
        mirel::RunBands(rows, 1.0, [&](int y0, int y1) {
          for (int y = y0; y < y1; ++y) seen[static_cast<std::size_t>(y)]++;
        });
        for (auto& s : seen) wrong += s != 1;
        if (ImgGetThreads() != 2 + c) ++wrong;
      }
    });
  }
  for (auto& t : callers) t.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
