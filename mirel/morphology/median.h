// 3x3 median filters.
//
// ImgMedian(src, dst) on 8-bit and 16-bit images repeats the ROI's edge
// pixels outside it and gives the exact median of the nine values, from
// three sorted columns (the middle of the largest low, the middle middle and
// the smallest high). The older 8-bit form with a border value puts that
// value at every position outside the ROI, compares it as a signed int like
// the pixels and stores the median's low byte: a border of 0 darkens the
// edges, 255 brightens them. The colour form runs the older form on each
// component, with the border's bytes in reverse order (component 0 gets
// byte 2, component 2 byte 0).
//
// The sorted columns are kept for each call (each band) on its own, so
// calls on several threads at once give what each gives alone.
//
// src and dst may lie on the same pixels: the source is then read from a
// copy. Errors: 1400 void image, 1403 sizes differ, 1303 memory for the
// copy. The older form returns 0 or the error code.
//
// On bit images a pixel of the median is set when five or more of its nine
// are, the ROI's edge pixels repeated outside it; the bits of a row's last
// byte behind its last pixel keep their value. dst may be null or the source
// (in place). ImgMedianAligned takes ROIs that start on a byte and throws
// like the other ...Aligned bit forms (bit_morphology.h); ImgMedian takes any
// ROI and traces "ImgMedian (BW1)".
#ifndef MIREL_MORPHOLOGY_MEDIAN_H_
#define MIREL_MORPHOLOGY_MEDIAN_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgMedian(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgMedian(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API short ImgMedian(const EROI<EBW8>* src, EROI<EBW8>* dst, int border);
// Colour: the older form per component; without a destination the source
// is filtered in place.
MIREL_API void ImgMedian(EROI<EC24>* src, EROI<EC24>* dst, EC24 border);
MIREL_API void ImgMedianAligned(EROI<EBW1>* src, EROI<EBW1>* dst);
MIREL_API void ImgMedian(EROI<EBW1>* src, EROI<EBW1>* dst);

// For a source held const: the same operations into a destination that must
// be given. A const source is never worked on in place: without a
// destination the call is refused as a missing source is (1400 under the
// operation's label) and nothing is written. A destination on the source's
// own pixels still works in place.
MIREL_API void ImgMedianAligned(const EROI<EBW1>* src, EROI<EBW1>* dst);
MIREL_API void ImgMedian(const EROI<EC24>* src, EROI<EC24>* dst, EC24 border);
MIREL_API void ImgMedian(const EROI<EBW1>* src, EROI<EBW1>* dst);

#endif  // MIREL_MORPHOLOGY_MEDIAN_H_
