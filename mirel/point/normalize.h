// Normalisation: stretches an image so that its mean and its deviation take
// the values asked for, by one lookup built from the image's own statistics.
//
// With m and s the mean and population deviation of the source
// (ImgPixelStdDev), each value i becomes, in double precision,
//   r = deviation / s,  v = i * r + mean - r * m,
// then 0 when v is below 0 or not a number, the maximum (255 or 65535) when v
// is above it, else v narrowed to float and truncated. s = 0 is not tested:
// on a constant image the division gives infinity or not-a-number, and the
// rule above turns the lookup to 0 wherever the result is not a number.
//
// Checks: neither ROI void (1400), same size (1403), then the EBW8 form's
// table (1303). A failure of the statistics stops the call with their code
// and label, followed by this one. Labels "ImgNormalize" (EBW8, which also
// returns the code) and "ImgNormalize (BW16)". Source and destination may
// be the same ROI.
#ifndef MIREL_POINT_NORMALIZE_H_
#define MIREL_POINT_NORMALIZE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API short ImgNormalize(const EROI<EBW8>* src, EROI<EBW8>* dst, float mean, float deviation);
MIREL_API void ImgNormalize(const EROI<EBW16>* src, EROI<EBW16>* dst, float mean, float deviation);

#endif  // MIREL_POINT_NORMALIZE_H_
