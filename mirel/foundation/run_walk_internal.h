// The walk over the pixels of an EBW8 ROI that honours its run mask.
//
// When the ROI carries runs, only their pixels are visited, run by run in the
// order stored; a run whose end is not behind its start is skipped. Each
// run's start and end are pixel addresses when GetMaskOffsets() is zero and
// byte offsets from the ROI's first pixel otherwise. Without runs every row
// is visited, top to bottom.
//
// Every run that is visited must lie inside one row of the ROI: a mask with a
// run that starts before the ROI, passes the end of its row or lies below
// its last row is refused as a whole with E_ERROR_BAD_ARGUMENT (1007), before
// any pixel is read, and ForEachSpan then returns false. The test runs at
// each read, since the ROI may have moved since the runs were attached.
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

// True when every run of the mask that would be visited lies inside one row
// of the ROI. Addresses are compared as integers, so a run far outside the
// image forms no pointer.
inline bool RunsFit(const EROI<EBW8>* roi) {
  const int runCount = roi->GetNumRuns();
  const ERun* runs = roi->GetRuns();
  if (runCount <= 0 || runs == nullptr) return true;
  const std::intptr_t first = roi->GetMaskOffsets() != 0
                                  ? 0
                                  : reinterpret_cast<std::intptr_t>(roi->GetImagePtr(0, 0));
  const long long pitch = roi->GetRowPitch();
  const long long width = roi->GetWidth(), height = roi->GetHeight();
  for (int r = 0; r < runCount; ++r) {
    const ERun& run = runs[r];
    if (run.end <= run.start) continue;
    // Offsets from the ROI's first pixel; differences of far-apart values
    // are taken in unsigned arithmetic so that they cannot overflow.
    const unsigned long long from = static_cast<unsigned long long>(run.start) - static_cast<unsigned long long>(first);
    const unsigned long long length = static_cast<unsigned long long>(run.end) - static_cast<unsigned long long>(run.start);
    if (pitch <= 0 || from >= static_cast<unsigned long long>(pitch) * static_cast<unsigned long long>(height))
      return false;  // before the first row (wrapped) or below the last
    const unsigned long long column = from % static_cast<unsigned long long>(pitch);
    if (column > static_cast<unsigned long long>(width) || length > static_cast<unsigned long long>(width) - column)
      return false;
  }
  return true;
}

template <class F>
bool ForEachSpan(const EROI<EBW8>* roi, F&& f) {
  const int runCount = roi->GetNumRuns();
  if (runCount > 0) {
    if (!RunsFit(roi)) {
      ESetError(E_ERROR_BAD_ARGUMENT);
      return false;
    }
    const unsigned char* first = reinterpret_cast<const unsigned char*>(roi->GetImagePtr(0, 0));
    const ERun* runs = roi->GetRuns();
    const bool offsets = roi->GetMaskOffsets() != 0;
    for (int r = 0; r < runCount; ++r) {
      const ERun& run = runs[r];
      if (run.end <= run.start) continue;
      const unsigned char* p = offsets ? first + run.start : reinterpret_cast<const unsigned char*>(run.start);
      f(p, static_cast<std::size_t>(run.end - run.start), run.x, run.y);
    }
    return true;
  }
  const Rows<const EBW8> rows = RowsOf(roi);
  for (int y = 0; y < rows.height; ++y)
    f(reinterpret_cast<const unsigned char*>(rows.Row(y)), static_cast<std::size_t>(rows.width), 0, y);
  return true;
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_RUN_WALK_INTERNAL_H_
