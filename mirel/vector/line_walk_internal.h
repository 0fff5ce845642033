// The one integer line walk of the vector family, shared by the line
// segments of typed vectors and the line samples and transition scan of the
// older interface.
//
// The walk from (x0, y0) to (x1, y1) runs along the major axis, the one with
// the larger absolute difference (x on a tie), and visits major + 1 points,
// both ends included. The error term starts at major >> 1 and takes minor at
// each step; when it reaches major the step is diagonal and major is taken
// off, otherwise it is axial. The x step is -1 when x1 - x0 is at or below 0
// and +1 otherwise; the y step is +1 when y1 - y0 is positive and -1
// otherwise. No floating point, so every caller sees the same points.
#ifndef MIREL_VECTOR_LINE_WALK_INTERNAL_H_
#define MIREL_VECTOR_LINE_WALK_INTERNAL_H_

#include <cstddef>
#include <cstdlib>

#include "mirel/foundation/image.h"

namespace mirel {
namespace line {

// Points of the walk from (x0, y0) to (x1, y1): major + 1.
inline int PointCount(int x0, int y0, int x1, int y1) {
  const int ax = std::abs(x1 - x0), ay = std::abs(y1 - y0);
  return (ax >= ay ? ax : ay) + 1;
}

// Calls visit(k, x, y, offset) for each point k of the walk, where offset is
// the byte offset of (x, y) from (x0, y0) in rows of `pitch` bytes and
// pixels of `pixelBytes` bytes. A visit returning false ends the walk.
template <class Visit>
void Walk(int x0, int y0, int x1, int y1, std::ptrdiff_t pitch, std::ptrdiff_t pixelBytes, Visit&& visit) {
  const int dx = x1 - x0, dy = y1 - y0;
  const int sx = dx <= 0 ? -1 : 1;
  const int sy = dy > 0 ? 1 : -1;
  const int ax = std::abs(dx), ay = std::abs(dy);
  const bool xMajor = ax >= ay;
  const int major = xMajor ? ax : ay, minor = xMajor ? ay : ax;
  const std::ptrdiff_t stepX = sx * pixelBytes, stepY = sy * pitch;
  const std::ptrdiff_t axial = xMajor ? stepX : stepY, diagonal = stepX + stepY;
  const int axialX = xMajor ? sx : 0, axialY = xMajor ? 0 : sy;
  int x = x0, y = y0, error = major >> 1;
  std::ptrdiff_t offset = 0;
  if (!visit(0, x, y, offset)) return;
  for (int k = 1; k <= major; ++k) {
    error += minor;
    if (error >= major) {
      error -= major;
      x += sx;
      y += sy;
      offset += diagonal;
    } else {
      x += axialX;
      y += axialY;
      offset += axial;
    }
    if (!visit(k, x, y, offset)) return;
  }
}

// True when (x, y) of `roi` lies inside the image at the top of its chain
// of parents: the older operations accept points one past the ROI, which
// are read or written only where the image has them.
inline bool InsideImage(const EGenericROI* roi, int x, int y) {
  const EGenericROI* top = roi->GetTopParent();
  const long long tx = static_cast<long long>(roi->GetTotalOrgX()) + x;
  const long long ty = static_cast<long long>(roi->GetTotalOrgY()) + y;
  return tx >= 0 && ty >= 0 && tx < top->GetWidth() && ty < top->GetHeight();
}

}  // namespace line
}  // namespace mirel

#endif  // MIREL_VECTOR_LINE_WALK_INTERNAL_H_
