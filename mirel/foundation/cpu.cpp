#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/testing_internal.h"

namespace mirel {
namespace cpu {
namespace {

thread_local int t_fast_paths = 1;
thread_local int t_limit = -1;

SimdLevel Detect() {
#if defined(MIREL_X86_SIMD) && (defined(__GNUC__) || defined(__clang__))
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq"))
    return kAVX512;
  if (__builtin_cpu_supports("avx2")) return kAVX2;
  if (__builtin_cpu_supports("sse4.1")) return kSSE41;
  return kSSE2;
#else
  return kScalar;
#endif
}

}  // namespace

SimdLevel DetectedSimdLevel() {
  static const SimdLevel level = Detect();
  return level;
}

SimdLevel ActiveSimdLevel() {
  SimdLevel level = DetectedSimdLevel();
  if (t_limit >= 0 && t_limit < level) level = static_cast<SimdLevel>(t_limit);
  return level;
}

PathSwitches CurrentPathSwitches() { return PathSwitches{t_fast_paths, t_limit}; }

void SetPathSwitches(const PathSwitches& switches) {
  t_fast_paths = switches.fastPaths;
  t_limit = switches.limit;
}

}  // namespace cpu

namespace testing {
void SetFastPaths(int enabled) { cpu::t_fast_paths = enabled; }
void SetSimdLimit(int level) { cpu::t_limit = level; }
int ActiveSimdLevel() { return cpu::ActiveSimdLevel(); }
int DetectedSimdLevel() { return cpu::DetectedSimdLevel(); }
}  // namespace testing
}  // namespace mirel

int EGetMMX() {
  return mirel::cpu::t_fast_paths != 0 && mirel::cpu::DetectedSimdLevel() != mirel::cpu::kScalar
             ? 1
             : 0;
}
