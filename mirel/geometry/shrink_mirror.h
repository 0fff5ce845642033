// Shrinking by block averages, and mirrors in place.
//
// ImgShrink reduces a source of W x H pixels to a destination of w x h, no
// larger in either direction. Destination pixel (i, j) is the average of the
// source block of columns [i W / w, (i + 1) W / w) and rows
// [j H / h, (j + 1) H / h) (integer divisions): the block's sum divided by
// its pixel count, truncated. Blocks differ by one row or column when the
// sizes do not divide evenly; equal sizes copy. Codes: 1400 when either ROI
// is void; 1403 when the destination is wider or higher than the source
// (some blocks would be empty); 1303 when its tables cannot be had.
// Nothing is written when a check fails. The EC24 form averages each
// component on its own.
//
// ImgHorizontalMirror reverses the pixels of every row; ImgVerticalMirror
// reverses the order of the rows. Both work in place on the one ROI given,
// a middle row or column staying where it is; a void ROI gives 1400.
#ifndef MIREL_GEOMETRY_SHRINK_MIRROR_H_
#define MIREL_GEOMETRY_SHRINK_MIRROR_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API short ImgShrink(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgShrink(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgShrink(const EROI<EC24>* src, EROI<EC24>* dst);

MIREL_API void ImgHorizontalMirror(EROI<EBW8>* image);
MIREL_API void ImgHorizontalMirror(EROI<EBW16>* image);
MIREL_API void ImgHorizontalMirror(EROI<EC24>* image);
MIREL_API void ImgVerticalMirror(EROI<EBW8>* image);
MIREL_API void ImgVerticalMirror(EROI<EBW16>* image);
MIREL_API void ImgVerticalMirror(EROI<EC24>* image);

#endif  // MIREL_GEOMETRY_SHRINK_MIRROR_H_
