// Instruction-set detection and the per-thread switches that tests use.
//
// The best level the processor offers is detected once. A worker with fast
// paths reads EGetMMX() once per call and, when it is non-zero, picks its
// block routine with ActiveSimdLevel(), which is that best level capped by
// the calling thread's limit (tests lower it to compare every path).
#ifndef MIREL_FOUNDATION_CPU_INTERNAL_H_
#define MIREL_FOUNDATION_CPU_INTERNAL_H_

namespace mirel {
namespace cpu {

enum SimdLevel : int {
  kScalar = 0,
  kSSE2 = 1,     // baseline on x86-64 (SSE2 + SSSE3 are assumed together)
  kSSE41 = 2,
  kAVX2 = 3,
  kAVX512 = 4,   // AVX-512 F, BW, VL, DQ
};

// Best level of this processor and build; kScalar off x86-64.
SimdLevel DetectedSimdLevel();
// DetectedSimdLevel() capped by the thread's limit.
SimdLevel ActiveSimdLevel();

// The calling thread's two switches (fast paths on or off, level cap), so
// that work handed to another thread runs on the caller's path.
struct PathSwitches {
  int fastPaths;
  int limit;
};
PathSwitches CurrentPathSwitches();
void SetPathSwitches(const PathSwitches& switches);

}  // namespace cpu
}  // namespace mirel

#endif  // MIREL_FOUNDATION_CPU_INTERNAL_H_
