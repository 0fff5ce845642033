// Switches for the library's own tests and benchmarks; not installed.
//
// They are per thread and stay until changed. They let a test run one
// operation on its scalar path and on each fast path and compare the bytes.
#ifndef MIREL_FOUNDATION_TESTING_INTERNAL_H_
#define MIREL_FOUNDATION_TESTING_INTERNAL_H_

#include "mirel/foundation/export.h"

namespace mirel {
namespace testing {

// enabled == 0 makes EGetMMX() read 0 on this thread.
MIREL_API void SetFastPaths(int enabled);
// Caps the instruction-set level that fast paths may use on this thread
// (0 scalar, 1 SSE2/SSSE3, 2 SSE4.1, 3 AVX2, 4 AVX-512). Negative lifts the cap.
MIREL_API void SetSimdLimit(int level);
// Whether streaming loops run in their Intel form on this thread (see
// cpu::IntelStreaming): 0 never, 1 always (while fast paths are on), negative
// as detected.
MIREL_API void SetIntelStreaming(int mode);
// The level fast paths use now on this thread.
MIREL_API int ActiveSimdLevel();
// The best level this processor offers.
MIREL_API int DetectedSimdLevel();
// The least work, in the units of mirel::RowCost, that a band must have for
// a call to be split (0 splits every call of two rows or more into as many
// bands as threads allow); negative restores the measured default. Lets
// tests run small images in bands.
MIREL_API void SetBandMinimum(double units);
// enabled != 0: the calling thread leaves every band of its calls to the
// pool's threads and waits, so that tests see each band computed away from
// the caller.
MIREL_API void SetBandsOnPoolOnly(int enabled);
// enabled != 0: the bands of the calling thread's calls are claimed from the
// last to the first, so that a band that reads rows a later band writes
// sees them written whenever the bands run one after another.
MIREL_API void SetBandsReversed(int enabled);

}  // namespace testing
}  // namespace mirel

#endif  // MIREL_FOUNDATION_TESTING_INTERNAL_H_
