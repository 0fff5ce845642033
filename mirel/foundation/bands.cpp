// The thread setting, the pool and the band runner.
//
// The pool is made the first time a call asks for more than one band and
// grows to the largest number of helpers asked for since. A call posts one
// job; each pool thread that takes it claims bands from the job's counter
// until none is left, and so does the calling thread, which therefore never
// waits on a band that no thread has started: when the pool is busy with
// other callers' jobs, the caller computes its own bands. Once the caller
// runs out of bands it withdraws the job from the queue and waits only for
// the helpers already inside it.
//
// Waking a sleeping thread takes some tens of microseconds, a tenth of a
// filter's band on a large frame. So a helper that runs out of work watches
// the queue for a short while before it sleeps, and the caller watches for
// the helpers' last band before it sleeps: calls that follow one another
// closely, as an inspection's steps do, hand their bands over without a
// wake-up. The watch is bounded; an idle pool sleeps.
//
// The pool is joined when the library is unloaded (the holder's destructor
// at exit), except in a Windows DLL at process exit (see DllMain below).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#if defined(__x86_64__) || defined(_M_X64) || defined(__i386__) || defined(_M_IX86)
#include <emmintrin.h>
#endif

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/runtime.h"
#include "mirel/foundation/testing_internal.h"
#include "mirel/foundation/threads.h"

namespace mirel {
namespace {

// Work below this many units per band costs less than handing the band to
// another thread: waking a thread and waiting for it take some tens of
// microseconds, in which a pixelwise operation streams a few hundred
// kilobytes.
constexpr double kMinBandCost = 256.0 * 1024.0;
// More threads than this are never used, whatever the setting.
constexpr int kMaxThreads = 64;
// Bands per thread: a thread that the system keeps waiting leaves its
// later bands to the others, which claim them as they finish theirs.
constexpr int kBandsPerThread = 4;
// How long a helper watches the queue after a job, and the caller the
// helpers' last bands, before sleeping.
constexpr std::chrono::microseconds kWatch{200};

thread_local int t_threads = 1;
thread_local bool t_in_band = false;
thread_local double t_min_band_cost = -1.0;
thread_local bool t_pool_only = false;
thread_local bool t_reversed = false;

int ResolvedThreads() {
  int n = t_threads;
  if (n == 0) n = static_cast<int>(std::thread::hardware_concurrency());
  return std::max(1, std::min(n, kMaxThreads));
}

// What one band left behind.
struct Outcome {
  E_ERRORS code = E_OK;
  std::string trace;
  std::exception_ptr exception;
};

struct Job {
  Bands::BandFn fn = nullptr;
  void* context = nullptr;
  const Bands* bands = nullptr;
  int count = 0;
  std::atomic<int> next{0};
  bool reversed = false;  // claims run from the last band to the first
  cpu::PathSwitches paths{};
  MirelTLSStruct record{};
  std::vector<Outcome> outcomes;
  int wanted = 0;              // helpers still to join the job (pool mutex)
  std::atomic<int> running{0};  // helpers inside the job (changed under the pool mutex)
  std::condition_variable idle;
};

// Claims and runs bands of `job` until none is left. The thread's error
// state is cleared before each band and read after it.
void Work(Job& job) {
  for (;;) {
    const int claimed = job.next.fetch_add(1, std::memory_order_relaxed);
    if (claimed >= job.count) return;
    const int band = job.reversed ? job.count - 1 - claimed : claimed;
    Outcome& out = job.outcomes[static_cast<std::size_t>(band)];
    EOk();
    try {
      job.fn(job.context, band, job.bands->Begin(band), job.bands->End(band));
    } catch (...) {
      out.exception = std::current_exception();
    }
    out.code = EGetError();
    if (out.code != E_OK) out.trace = EGetErrorTrace();
  }
}

// A hint to the processor that this thread is spinning.
inline void Pause() {
#if defined(__x86_64__) || defined(_M_X64) || defined(__i386__) || defined(_M_IX86)
  _mm_pause();
#elif defined(__aarch64__) && defined(__GNUC__)
  __asm__ __volatile__("yield");
#endif
}

// Calls done() until it returns true or kWatch has passed, with a processor
// pause between looks. The caller checks again under its mutex.
template <class Done>
void Watch(Done done) {
  const auto until = std::chrono::steady_clock::now() + kWatch;
  while (std::chrono::steady_clock::now() < until) {
    for (int i = 0; i < 64; ++i) {
      if (done()) return;
      Pause();
    }
  }
}

class Pool {
 public:
  ~Pool() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      stop_ = true;
      stopping_.store(true, std::memory_order_relaxed);
    }
    wake_.notify_all();
    for (std::thread& t : threads_) t.join();
  }

  // Starts threads until there are `helpers`; returns how many there are
  // (fewer when the system refuses a thread).
  int Grow(int helpers) {
    std::lock_guard<std::mutex> lock(mutex_);
    while (static_cast<int>(threads_.size()) < helpers) {
      try {
        threads_.emplace_back([this] { Loop(); });
      } catch (...) {
        break;
      }
    }
    return static_cast<int>(threads_.size());
  }

  void Post(Job& job, int helpers) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      job.wanted = helpers;
      queue_.push_back(&job);
      queued_.store(static_cast<int>(queue_.size()), std::memory_order_relaxed);
    }
    if (helpers == 1) wake_.notify_one();
    else wake_.notify_all();
  }

  // Withdraws the job and waits until no helper is inside it.
  void Finish(Job& job) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (job.wanted > 0) {
        queue_.erase(std::find(queue_.begin(), queue_.end(), &job));
        queued_.store(static_cast<int>(queue_.size()), std::memory_order_relaxed);
        job.wanted = 0;
      }
    }
    Watch([&] { return job.running.load(std::memory_order_acquire) == 0; });
    // Taking the mutex also waits out a helper still notifying the job.
    std::unique_lock<std::mutex> lock(mutex_);
    job.idle.wait(lock, [&] { return job.running.load(std::memory_order_relaxed) == 0; });
  }

  // Waits until the helpers have run every band of the job.
  void AwaitAll(Job& job) {
    std::unique_lock<std::mutex> lock(mutex_);
    job.idle.wait(lock, [&] { return job.running.load() == 0 && job.next.load() >= job.count; });
  }

 private:
  void Loop() {
    t_in_band = true;
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      if (!stop_ && queue_.empty()) {
        lock.unlock();
        Watch([&] {
          return queued_.load(std::memory_order_relaxed) != 0 || stopping_.load(std::memory_order_relaxed);
        });
        lock.lock();
      }
      wake_.wait(lock, [&] { return stop_ || !queue_.empty(); });
      if (stop_) return;
      Job& job = *queue_.front();
      if (--job.wanted == 0) {
        queue_.pop_front();
        queued_.store(static_cast<int>(queue_.size()), std::memory_order_relaxed);
      }
      job.running.fetch_add(1, std::memory_order_relaxed);
      lock.unlock();
      cpu::SetPathSwitches(job.paths);
      *EGetTLSPtr() = job.record;
      Work(job);
      lock.lock();
      if (job.running.fetch_sub(1, std::memory_order_release) == 1) job.idle.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job*> queue_;
  std::atomic<int> queued_{0};  // queue_.size(), for helpers watching without the mutex
  std::atomic<bool> stopping_{false};
  std::vector<std::thread> threads_;
  bool stop_ = false;
};

// Owns the pool from its first use to the library's unload. Constant
// initialised: nothing runs at load.
struct PoolHolder {
  std::mutex mutex;
  Pool* pool = nullptr;
  ~PoolHolder() { delete pool; }
};
PoolHolder g_holder;

Pool* ThePool() {
  std::lock_guard<std::mutex> lock(g_holder.mutex);
  if (g_holder.pool == nullptr) {
    try {
      g_holder.pool = new Pool();
    } catch (...) {
      return nullptr;
    }
  }
  return g_holder.pool;
}

}  // namespace

Bands::Bands(int rows, double rowCost) : rows_(rows < 0 ? 0 : rows), count_(1), threads_(1) {
  if (t_in_band || t_threads == 1 || rows_ < 2 || !(rowCost > 0.0)) return;
  const double minimum = t_min_band_cost >= 0.0 ? t_min_band_cost : kMinBandCost;
  const double total = rowCost * rows_;
  threads_ = ResolvedThreads();
  int count = std::min(threads_ * kBandsPerThread, rows_);
  if (minimum > 0.0) count = static_cast<int>(std::min<double>(count, total / minimum));
  count_ = std::max(count, 1);
}

void Bands::Dispatch(BandFn fn, void* context) const {
  Pool* pool = ThePool();
  const int wanted = std::min(threads_, count_) - 1;
  const int helpers = pool == nullptr ? 0 : std::min(pool->Grow(wanted), wanted);

  Job job;
  job.fn = fn;
  job.context = context;
  job.bands = this;
  job.count = count_;
  job.reversed = t_reversed;
  job.paths = cpu::CurrentPathSwitches();
  job.record = *EGetTLSPtr();
  job.outcomes.resize(static_cast<std::size_t>(count_));

  // The caller's state, kept when every band succeeds.
  const E_ERRORS before = EGetError();
  const std::string beforeTrace = EGetErrorTrace();

  if (helpers > 0) pool->Post(job, helpers);
  if (helpers > 0 && t_pool_only) {
    pool->AwaitAll(job);
  } else {
    t_in_band = true;
    Work(job);
    t_in_band = false;
    if (helpers > 0) pool->Finish(job);
  }

  for (const Outcome& out : job.outcomes)
    if (out.exception) std::rethrow_exception(out.exception);
  for (const Outcome& out : job.outcomes) {
    if (out.code == E_OK) continue;
    // The band's trace, labels and separators as they stand, then the
    // frame adds its own behind it as after one call.
    ESetError(out.code);
    if (!out.trace.empty()) ETraceError(out.trace.c_str());
    return;
  }
  ESetError(before);
  if (before != E_OK && !beforeTrace.empty()) ETraceError(beforeTrace.c_str());
}

namespace testing {
void SetBandMinimum(double units) { t_min_band_cost = units; }
void SetBandsOnPoolOnly(int enabled) { t_pool_only = enabled != 0; }
void SetBandsReversed(int enabled) { t_reversed = enabled != 0; }
}  // namespace testing
}  // namespace mirel

void ImgSetThreads(int n) {
  EOk();
  if (n < 0) {
    ESetError(E_ERROR_BAD_ARGUMENT);
    ETraceError("ImgSetThreads");
    return;
  }
  mirel::t_threads = n;
}

int ImgGetThreads() { return mirel::t_threads; }

#if defined(_WIN32) && !defined(MIREL_STATIC)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
// When the process ends, the system has ended every other thread, the pool's
// among them, before the library is unloaded; the holder's destructor would
// wait for them forever, so the pool is dropped without joining them.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
  if (reason == DLL_PROCESS_DETACH && reserved != nullptr) mirel::g_holder.pool = nullptr;
  return TRUE;
}
#endif
