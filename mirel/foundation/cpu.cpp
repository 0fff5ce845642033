#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/testing_internal.h"

#if defined(MIREL_X86_SIMD) && (defined(__GNUC__) || defined(__clang__))
#include <cpuid.h>
#endif

namespace mirel {
namespace cpu {
namespace {

thread_local int t_fast_paths = 1;
thread_local int t_limit = -1;
thread_local int t_intel = -1;

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

bool DetectIntelStreaming() {
#if defined(MIREL_X86_SIMD) && (defined(__GNUC__) || defined(__clang__))
  __builtin_cpu_init();
  unsigned a = 0, b = 0, c = 0, d = 0;
  const bool erms = __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & (1u << 9)) != 0;
  return erms && __builtin_cpu_is("intel");
#else
  return false;
#endif
}

}  // namespace

bool IntelStreaming() {
  static const bool detected = DetectIntelStreaming();
  if (t_fast_paths == 0) return false;
  return t_intel >= 0 ? t_intel != 0 : detected;
}

SimdLevel DetectedSimdLevel() {
  static const SimdLevel level = Detect();
  return level;
}

SimdLevel ActiveSimdLevel() {
  SimdLevel level = DetectedSimdLevel();
  if (t_limit >= 0 && t_limit < level) level = static_cast<SimdLevel>(t_limit);
  return level;
}

PathSwitches CurrentPathSwitches() { return PathSwitches{t_fast_paths, t_limit, t_intel}; }

void SetPathSwitches(const PathSwitches& switches) {
  t_fast_paths = switches.fastPaths;
  t_limit = switches.limit;
  t_intel = switches.intelStreaming;
}

}  // namespace cpu

namespace testing {
void SetFastPaths(int enabled) { cpu::t_fast_paths = enabled; }
void SetSimdLimit(int level) { cpu::t_limit = level; }
void SetIntelStreaming(int mode) { cpu::t_intel = mode < 0 ? -1 : (mode != 0 ? 1 : 0); }
int ActiveSimdLevel() { return cpu::ActiveSimdLevel(); }
int DetectedSimdLevel() { return cpu::DetectedSimdLevel(); }
}  // namespace testing
}  // namespace mirel

int EGetMMX() {
  return mirel::cpu::t_fast_paths != 0 && mirel::cpu::DetectedSimdLevel() != mirel::cpu::kScalar
             ? 1
             : 0;
}
