// The colour route: an operation on an EC24 image that has no arithmetic of
// its own takes the image apart into its three components, runs the 8-bit
// operation of the same name on each, and puts the results back.
//
// Filters, morphology and geometry all go through these two shapes. The
// caller's frame makes its own checks first (they differ from family to
// family) and traces its label "Name ( C24)" on the way out; the route only
// moves the planes and stops at the first error, which then stands for the
// frame to trace. Components are done in the order 0, 1, 2; after an error
// the components already written stay written (there is no rollback). The
// planes are EImage temporaries, freed on every path.
//
//   InPlaceByComponent(src, target, grey)   one plane the size of src;
//       for each component: plane <- src[c]; grey(&plane) filters the plane
//       in place; target[c] <- plane. target may be src.
//   ByComponent(src, target, grey)          an input plane the size of src
//       and an output plane the size of target; for each component:
//       in <- src[c]; grey(&in, &out); target[c] <- out.
//
// A plane that cannot be allocated sets 1303 and nothing is written.
//
//   RowsByComponent(src, target, row)       for operations whose output row
//       y is made from the rows y - 1, y, y + 1 of one plane alone (the
//       first and last rows standing in for those outside): the same bytes
//       as InPlaceByComponent, row by row from three-row rings of each
//       component, so nothing larger than a few rows is ever moved. Output
//       rows are 64-byte aligned, as a plane's rows are. target may be src:
//       a source row is taken apart before the row above it is written.
#ifndef MIREL_FOUNDATION_COLOR_ROUTE_INTERNAL_H_
#define MIREL_FOUNDATION_COLOR_ROUTE_INTERNAL_H_

#include <cstddef>

#include "mirel/foundation/color.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/image.h"

namespace mirel {

namespace detail {
// A row of EC24 taken apart into three component rows, and put together.
void SplitRowC24(const unsigned char* src, unsigned char* const planes[3], int width);
void MergeRowC24(const unsigned char* const planes[3], unsigned char* dst, int width);

// Sizes a plane like `like`; false (with 1303 standing) when it cannot be had.
inline bool SizePlane(EImage<EBW8>& plane, const EGenericROI* like) {
  EOk();
  plane.SetSize(like->GetWidth(), like->GetHeight());
  return EGetError() == E_OK;
}
inline bool Ok() { return EGetError() == E_OK; }
}  // namespace detail

// Shape one. `grey` is called as grey(EROI<EBW8>* plane).
template <class Grey>
bool InPlaceByComponent(const EROI<EC24>* src, EROI<EC24>* target, Grey&& grey) {
  EImage<EBW8> plane;
  if (!detail::SizePlane(plane, src)) return false;
  for (unsigned int c = 0; c < 3; ++c) {
    ClrGetComponent(src, &plane, c, nullptr);
    if (!detail::Ok()) return false;
    grey(static_cast<EROI<EBW8>*>(&plane));
    if (!detail::Ok()) return false;
    ClrSetComponent(&plane, target, c);
    if (!detail::Ok()) return false;
  }
  return true;
}

// Shape two. `grey` is called as grey(const EROI<EBW8>* in, EROI<EBW8>* out).
template <class Grey>
bool ByComponent(const EROI<EC24>* src, EROI<EC24>* target, Grey&& grey) {
  EImage<EBW8> in, out;
  if (!detail::SizePlane(in, src) || !detail::SizePlane(out, target)) return false;
  for (unsigned int c = 0; c < 3; ++c) {
    ClrGetComponent(src, &in, c, nullptr);
    if (!detail::Ok()) return false;
    grey(static_cast<const EROI<EBW8>*>(&in), static_cast<EROI<EBW8>*>(&out));
    if (!detail::Ok()) return false;
    ClrSetComponent(&out, target, c);
    if (!detail::Ok()) return false;
  }
  return true;
}

// Rows of one byte plane for RowsByComponent: `row` is called as
// row(above, current, below, out, width) with unsigned char pointers.
template <class Row>
bool RowsByComponent(const EROI<EC24>* src, EROI<EC24>* target, Row&& row) {
  const int w = src->GetWidth(), h = src->GetHeight();
  const std::size_t stride = (static_cast<std::size_t>(w) + 63) & ~static_cast<std::size_t>(63);
  // Three source rows and one output row per component.
  EImage<EBW8> buffer;
  EOk();
  buffer.SetSize(static_cast<int>(stride), 12);
  if (EGetError() != E_OK) return false;
  auto line = [&](int i) { return reinterpret_cast<unsigned char*>(buffer.GetImagePtr(0, i)); };
  auto ring = [&](int y, int c) { return line(3 * (y % 3) + c); };
  auto split = [&](int y) {
    unsigned char* const planes[3] = {ring(y, 0), ring(y, 1), ring(y, 2)};
    detail::SplitRowC24(reinterpret_cast<const unsigned char*>(src->GetImagePtr(0, y)), planes, w);
  };
  unsigned char* const out[3] = {line(9), line(10), line(11)};
  split(0);
  for (int y = 0; y < h; ++y) {
    if (y + 1 < h) split(y + 1);  // before row y, above it, is overwritten
    const int above = y > 0 ? y - 1 : 0, below = y + 1 < h ? y + 1 : y;
    for (int c = 0; c < 3; ++c) row(ring(above, c), ring(y, c), ring(below, c), out[c], w);
    detail::MergeRowC24(out, reinterpret_cast<unsigned char*>(target->GetImagePtr(0, y)), w);
  }
  return true;
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_COLOR_ROUTE_INTERNAL_H_
