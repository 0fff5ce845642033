// Fixed 5x5 and 7x7 smoothing filters on 8-bit regions of interest.
//
// Window coordinates are clamped to the ROI (the nearest pixel is
// replicated), also when the ROI is smaller than the window; nothing outside
// the ROI is read. With s the 32-bit window sum:
//
//   ImgConvolUniform5x5    weights 1                         (s * 335544) >> 23
//   ImgConvolUniform7x7    weights 1                         (s * 171196) >> 23
//   ImgConvolGaussian5x5   1 4 6 4 1 times itself            s >> 8
//   ImgConvolGaussian7x7   1 6 15 20 15 6 1 times itself     s >> 12
//
// The uniform multipliers are rounded down, so a flat 255 gives 254; the
// Gaussians keep a flat image. With src and dst on the same pixels the
// filters read what they have already written (rows above, pixels to the
// left), as a pixel-by-pixel pass in row order does.
//
// 16-bit twins (EROI<EBW16>) take the same formulas in 32-bit arithmetic:
// the Gaussians keep a flat 65535, while the uniform products wrap at 32
// bits once the window sum passes 12800 (5x5) or 25088 (7x7), so that a
// bright image gives small values (at most 511).
//
// Errors: void src (1400), then dst not the size of src (1403; 1400 when dst
// is void). A failure writes nothing.
#ifndef MIREL_FILTER_FIXED_FILTERS_H_
#define MIREL_FILTER_FIXED_FILTERS_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

// Label "ConvolUniform5x5".
MIREL_API void ImgConvolUniform5x5(const EROI<EBW8>* src, EROI<EBW8>* dst);
// Label "ConvolGaussian5x5".
MIREL_API void ImgConvolGaussian5x5(const EROI<EBW8>* src, EROI<EBW8>* dst);
// Label "ImgConvolUniform7x7".
MIREL_API void ImgConvolUniform7x7(const EROI<EBW8>* src, EROI<EBW8>* dst);
// Label "ImgConvolGaussian7x7".
MIREL_API void ImgConvolGaussian7x7(const EROI<EBW8>* src, EROI<EBW8>* dst);

// Labels "ConvolUniform5x5 (BW16)", "ConvolGaussian5x5 (BW16)",
// "ImgConvolUniform7x7 (BW16)", "ImgConvolGaussian7x7 (BW16)".
MIREL_API void ImgConvolUniform5x5(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGaussian5x5(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolUniform7x7(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGaussian7x7(const EROI<EBW16>* src, EROI<EBW16>* dst);

#endif  // MIREL_FILTER_FIXED_FILTERS_H_
