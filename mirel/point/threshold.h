// Fixed thresholds: binarization into two or three levels, and the colour box.
//
// ImgThreshold on EBW8 and EBW16 writes `high` where source >= threshold and
// `low` elsewhere (a threshold of 0 makes every pixel high). A threshold
// above the pixel's range (above 255, or 65535 for EBW16) is a mode of
// IMG_THRESHOLD_MODES: the histogram of the source is made and the mode is
// resolved over the full range with `relative`, which is read only by
// IMG_THRESHOLD_RELATIVE. A value that is neither in range nor a mode fails
// in the selection with its code (1012), and a relative mode that selects
// max + 1 (relative 1.0) writes `low` everywhere.
//
// ImgDoubleThreshold writes `high` above highThreshold, `middle` from
// lowThreshold to highThreshold (both included), `low` below lowThreshold.
// The two thresholds are not compared: with lowThreshold above
// highThreshold, a pixel between them becomes `high` (tested first) or `low`.
//
// The colour box forms write the inside value where every component k of
// the source pixel lies in [minimum[k], maximum[k]] and the outside value
// elsewhere; a component with minimum above maximum holds no pixel. The
// four-argument form writes 255 inside and 0 outside. The seven-argument
// form first maps each pixel through `lookup` when it is not null.
//
// All forms run in place (source and destination the same ROI). Errors:
// 1400 a void or null ROI, 1403 sizes differ, and the codes of the
// threshold selection for a mode that cannot be resolved. A failed call
// writes nothing. The EBW8 forms return 0 or the code. Labels:
// "ImgThreshold", "ImgThreshold (BW16)", "ImgDoubleThreshold ( BW8 to BW8)",
// "ImgDoubleThreshold ( BW16 to BW16)", "ImgThreshold ( C24 to BW8)".
#ifndef MIREL_POINT_THRESHOLD_H_
#define MIREL_POINT_THRESHOLD_H_

#include "mirel/foundation/color.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/histogram/threshold_selection.h"

MIREL_API short ImgThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int threshold, unsigned char low = 0,
                             unsigned char high = 255, float relative = 0.0f);
MIREL_API void ImgThreshold(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int threshold, EBW16 low, EBW16 high,
                            float relative = 0.0f);

MIREL_API short ImgDoubleThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int lowThreshold,
                                   unsigned int highThreshold, unsigned char low, unsigned char middle,
                                   unsigned char high);
MIREL_API void ImgDoubleThreshold(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int lowThreshold,
                                  unsigned int highThreshold, EBW16 low, EBW16 middle, EBW16 high);

MIREL_API void ImgThreshold(const EROI<EC24>* src, EROI<EBW8>* dst, EC24 minimum, EC24 maximum);
MIREL_API void ImgThreshold(const EROI<EC24>* src, EROI<EBW8>* dst, EC24 minimum, EC24 maximum, const EColorLookup* lookup,
                            EBW8 outside, EBW8 inside);

#endif  // MIREL_POINT_THRESHOLD_H_
