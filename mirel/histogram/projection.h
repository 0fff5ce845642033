// Projections of an image on a row (one element per column) or on a column
// (one element per row).
//
// ImgProjectOnARow: element x is the sum, or the average, of column x over
// all rows. ImgProjectOnAColumn: element y is the sum, or the average, of
// row y. The output vector is given room for, then set to, exactly the width
// (or height) elements. The vector type picks the kind: EBW32Vector for sums,
// a vector of the pixel type for averages, EC24Vector for per-component
// colour averages. Sums are 32-bit with wrap-around; an average is that sum
// divided by the number of pixels summed, truncated.
//
// The forms on the untyped EVector (older interface) make it a vector of
// kind 2 of 32-bit sums. Errors: 1400 void image, 1601 a vector without data
// (ImgProjectOnARow) — ImgProjectOnAColumn reports 1400 in that case too.
// All forms return 0 or the error code.
#ifndef MIREL_HISTOGRAM_PROJECTION_H_
#define MIREL_HISTOGRAM_PROJECTION_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/vector.h"

#include "mirel/foundation/untyped_vector.h"

MIREL_API short ImgProjectOnARow(const EROI<EBW8>* src, EBW32Vector* projection);
MIREL_API short ImgProjectOnARow(const EROI<EBW8>* src, EBW8Vector* projection);
MIREL_API short ImgProjectOnARow(const EROI<EBW16>* src, EBW32Vector* projection);
MIREL_API short ImgProjectOnARow(const EROI<EBW16>* src, EBW16Vector* projection);
MIREL_API short ImgProjectOnARow(const EROI<EC24>* src, EC24Vector* projection);
MIREL_API short ImgProjectOnARow(const EROI<EBW8>* src, EVector* projection);

MIREL_API short ImgProjectOnAColumn(const EROI<EBW8>* src, EBW32Vector* projection);
MIREL_API short ImgProjectOnAColumn(const EROI<EBW8>* src, EBW8Vector* projection);
MIREL_API short ImgProjectOnAColumn(const EROI<EBW16>* src, EBW32Vector* projection);
MIREL_API short ImgProjectOnAColumn(const EROI<EBW16>* src, EBW16Vector* projection);
MIREL_API short ImgProjectOnAColumn(const EROI<EC24>* src, EC24Vector* projection);
MIREL_API short ImgProjectOnAColumn(const EROI<EBW8>* src, EVector* projection);

#endif  // MIREL_HISTOGRAM_PROJECTION_H_
