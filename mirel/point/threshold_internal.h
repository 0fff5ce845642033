// The 8-bit threshold pixel loop on 16-byte vectors and its table.
#ifndef MIREL_POINT_THRESHOLD_INTERNAL_H_
#define MIREL_POINT_THRESHOLD_INTERNAL_H_

#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/pixel.h"

namespace mirel {
namespace thr {

// One pass of up to three output levels:
//   x >= c2 ? v2 : x >= c1 ? v1 : v0
// with c1, c2 in 0..256; 256 means "never". A single threshold has c2 = 256.
struct Levels {
  unsigned int c1;
  unsigned int c2;
  unsigned char v0, v1, v2;
  bool TwoLevels() const { return c2 < 256; }
};

// table[x] is the output for x; the scalar path and the row tails use it.
void MakeTable(const Levels& levels, unsigned char* table);

#if defined(MIREL_X86_SIMD)
void ClassifySSE2(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const Levels& levels, const unsigned char* table);
#endif

}  // namespace thr
}  // namespace mirel

#endif  // MIREL_POINT_THRESHOLD_INTERNAL_H_
