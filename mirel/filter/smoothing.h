// Box and binomial smoothing of any window, and the local mean and local
// standard deviation, on 8-bit regions of interest.
//
// The window covers 2 * halfX + 1 columns and 2 * halfY + 1 rows; window
// positions outside the ROI take the nearest ROI pixel. In ImgConvolUniform
// and ImgConvolGaussian a halfY of UINT_MAX (all ones) stands for halfX.
//
// ImgConvolUniform (label "ImgConvolUniform"). Void src: 1400; a non-null
// dst that is void (1400) or of another size (1403). Then by half-widths:
//   0, 0   copies src to a separate dst (ImgCopy); in place nothing happens
//   0, 1   the vertical 3-row mean ((t + c + b) * 85) >> 8
//   1, 0   the horizontal 3-pixel mean ((l + c + r) * 85) >> 8
//   1, 1   ImgConvolUniform3x3
//   other  the sliding sum: halfX is limited to width - 1 and halfY to
//          height - 1, n = (2 halfY + 1)(2 halfX + 1), scale = 2^24 / n
//          (truncated) and each pixel is (sum * scale) >> 24, so a flat 255
//          gives 254 for most n. It cannot work in place: a null dst or dst
//          on src's pixels is refused with 1413. A failed buffer: 1303.
// The three small windows accept a null dst and then filter src in place.
// The sliding sum costs the same per pixel whatever the window.
//
// ImgConvolGaussian (label "ImgConvolGaussian"): a half-width h is h passes
// of the 1 2 1 filter, each pass truncating. With a separate dst the first
// pass goes from src to dst (3x3 while both counts are non-zero, else the
// remaining direction), the rest run in place on dst: 3x3 passes while both
// counts last, then the remaining direction alone. With a null dst or dst
// on src's pixels every pass runs in place on src. Both counts 0 with a
// separate dst write nothing (unlike the uniform filter, which copies).
//
// ImgLocalAverage is ImgConvolUniform under the label "ImgLocalAverage".
//
// ImgLocalDeviation (label "ImgLocalDeviation"): with a the window's sum
// and b its sum of squares, v = n * b - a * a in 32-bit unsigned arithmetic
// that wraps, and the pixel is sqrt(v) / n in double precision, truncated
// and capped at 255. The half-widths are not limited (past about 200
// pixels of window the wrap shows in the result; no error is reported) and
// there is no routing to small filters. A negative halfY is refused with
// 1007. In place the rows are read ahead and behind as they are written, so
// the result differs from a separate destination; no error is reported.
//
// 16-bit twins (EROI<EBW16>), labels ending in " (BW16)": the same routing,
// formulas and 32-bit arithmetic. So the sliding sum's product wraps once
// the window sum times the scale passes 2^32, and its results then stay
// below 256; the deviation's sums of squares wrap on bright pixels, and its
// cap is 65535. The small windows and the Gaussian passes
// are the 16-bit preset filters.
#ifndef MIREL_FILTER_SMOOTHING_H_
#define MIREL_FILTER_SMOOTHING_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

MIREL_API void ImgConvolUniform(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolGaussian(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgLocalAverage(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgLocalDeviation(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, int halfY);

MIREL_API void ImgConvolUniform(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolGaussian(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgLocalAverage(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgLocalDeviation(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, int halfY);

// For a source held const: the same filters into a destination that must be
// given. A const source is never filtered in place: without a destination
// the call is refused as a missing source is (1400 under the filter's label)
// and nothing is written. A destination on the source's own pixels is still
// filtered in place.
MIREL_API void ImgConvolUniform(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolGaussian(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgLocalAverage(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolUniform(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolGaussian(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgLocalAverage(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int halfX, unsigned int halfY);

#endif  // MIREL_FILTER_SMOOTHING_H_
