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

// True when streaming loops run in their Intel form on this thread. It is
// detected once: Intel processors with fast strings (ERMS). There a store
// loop on a frame from memory waits on fetching each destination line for
// ownership, and the Intel form fetches those lines sooner or not at all:
//  - rows that join into one stretch (a frame's rows with the padding
//    between them) are filled and copied with one rep stosb or rep movsb,
//    which over megabytes stores whole lines without reading them;
//  - the byte operations, the 8-bit threshold and the widening of bytes to
//    words hint each destination line a kilobyte before their stores
//    reach it (mirel::StoreAhead);
//  - the widening stores 32 bytes at a time.
// On a fresh 2448x2048 frame (Intel Xeon, one thread) a fill took 174-179
// us against 253-318, a copy 525-548 against 594-629, a threshold 551-610
// against 618-692, a sum of two frames 831-927 against 917-934, and the
// widening 830-952 against 1091-1121. Frames in the cache took the same time
// either way. On AMD Zen 4 the hints and the wider stores measured slower,
// so other processors keep the plain loops. False whenever the fast paths
// are off; the tests' switch forces either answer.
bool IntelStreaming();

// The calling thread's switches (fast paths on or off, level cap, Intel
// form), so that work handed to another thread runs on the caller's path.
struct PathSwitches {
  int fastPaths;
  int limit;
  int intelStreaming;
};
PathSwitches CurrentPathSwitches();
void SetPathSwitches(const PathSwitches& switches);

}  // namespace cpu
}  // namespace mirel

#endif  // MIREL_FOUNDATION_CPU_INTERNAL_H_
