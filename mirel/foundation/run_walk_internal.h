// The walk over the pixels of an EBW8 ROI that honours its run mask.
//
// When the ROI carries runs, only their pixels are visited, run by run in the
// order stored; a run whose end is not behind its start is skipped. Each
// run's start and end are pixel addresses when GetMaskOffsets() is zero and
// byte offsets from the ROI's first pixel otherwise. Without runs every row
// is visited, top to bottom.
//
// The visitor is called as f(p, n, x, y): n pixels from p, the first at
// (x, y) in the ROI (a run's stored position; 0 and the row for a row).
#ifndef MIREL_FOUNDATION_RUN_WALK_INTERNAL_H_
#define MIREL_FOUNDATION_RUN_WALK_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/image.h"

namespace mirel {

template <class F>
void ForEachSpan(const EROI<EBW8>* roi, F&& f) {
  const int runCount = roi->GetNumRuns();
  if (runCount > 0) {
    const unsigned char* first = reinterpret_cast<const unsigned char*>(roi->GetImagePtr(0, 0));
    const ERun* runs = roi->GetRuns();
    const bool offsets = roi->GetMaskOffsets() != 0;
    for (int r = 0; r < runCount; ++r) {
      const ERun& run = runs[r];
      if (run.end <= run.start) continue;
      const unsigned char* p = offsets ? first + run.start : reinterpret_cast<const unsigned char*>(run.start);
      f(p, static_cast<std::size_t>(run.end - run.start), run.x, run.y);
    }
    return;
  }
  const Rows<const EBW8> rows = RowsOf(roi);
  for (int y = 0; y < rows.height; ++y)
    f(reinterpret_cast<const unsigned char*>(rows.Row(y)), static_cast<std::size_t>(rows.width), 0, y);
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_RUN_WALK_INTERNAL_H_
