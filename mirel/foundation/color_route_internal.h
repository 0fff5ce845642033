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
#ifndef MIREL_FOUNDATION_COLOR_ROUTE_INTERNAL_H_
#define MIREL_FOUNDATION_COLOR_ROUTE_INTERNAL_H_

#include "mirel/foundation/color.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/image.h"

namespace mirel {

namespace detail {
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

}  // namespace mirel

#endif  // MIREL_FOUNDATION_COLOR_ROUTE_INTERNAL_H_
