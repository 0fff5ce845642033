// How far one image is from another: root mean square noise, signal-to-noise
// ratio, the joint grey-level table (correlogram) and the regression line
// through the pairs of grey levels.
//
// Each operation checks that the reference has the source's size (1403),
// then that both have an image (1400), then its own arguments, and walks the
// rows of both in step. Sums of one row are 32-bit (wrapping) and added as
// unsigned to a total: single precision for the noise, double precision for
// the ratio and the regression. The float results are 0.0 on failure.
//
// The reference mode scales the noise power P by 1/F: F = 1 for a noiseless
// reference, 1 + 1/N for a reference with noise of its own, 1 - 1/N for an
// average of N frames that includes the source. N is 1 for a reference of the
// source's pixel type (so mode 2 is refused there with 1013) and the frame
// count for a 16-bit reference that holds the sum of N 8-bit frames (a power
// of two from 1 to 256, else 1013; each reference pixel is shifted right by
// log2(N)). Any other mode value acts as the noiseless one.
#ifndef MIREL_MEASURE_NOISE_H_
#define MIREL_MEASURE_NOISE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

enum IMG_REFERENCE_NOISE : int {
  IMG_REFERENCE_NOISELESS = 0,
  IMG_REFERENCE_INDEPENDENT = 1,
  IMG_REFERENCE_INCLUDES_SOURCE = 2
};

// sqrt(P / F / (width * height)), P the sum of (s - r)^2 (over the three
// components of a colour pixel). Labels "ImgRmsNoise ( BW8 source and BW8
// reference)", "... ( BW8 source and BW16 reference)", "... ( BW16 source and
// BW16 reference)", "... ( C24 source and C24 reference)".
MIREL_API float ImgRmsNoise(const EROI<EBW8>* source, const EROI<EBW8>* reference, IMG_REFERENCE_NOISE mode);
MIREL_API float ImgRmsNoise(const EROI<EBW8>* source, const EROI<EBW16>* reference, unsigned int frames,
                            IMG_REFERENCE_NOISE mode);
MIREL_API float ImgRmsNoise(const EROI<EBW16>* source, const EROI<EBW16>* reference, IMG_REFERENCE_NOISE mode);
MIREL_API float ImgRmsNoise(const EROI<EC24>* source, const EROI<EC24>* reference, IMG_REFERENCE_NOISE mode);

// 10 * log10(sum s^2 / sum (s - r)^2), plus 10 * log10(F) for modes 1 and 2;
// 0.0 when the images are identical. Labels as ImgRmsNoise's with the name
// "ImgSignalNoiseRatio".
MIREL_API float ImgSignalNoiseRatio(const EROI<EBW8>* source, const EROI<EBW8>* reference, IMG_REFERENCE_NOISE mode);
MIREL_API float ImgSignalNoiseRatio(const EROI<EBW8>* source, const EROI<EBW16>* reference, unsigned int frames,
                                    IMG_REFERENCE_NOISE mode);
MIREL_API float ImgSignalNoiseRatio(const EROI<EBW16>* source, const EROI<EBW16>* reference,
                                    IMG_REFERENCE_NOISE mode);
MIREL_API float ImgSignalNoiseRatio(const EROI<EC24>* source, const EROI<EC24>* reference, IMG_REFERENCE_NOISE mode);

// Sets `table` to 256 by 256 and counts each pixel pair (s, r) in the cell at
// column s, row 255 - r, saturating at 255 (or 65535): identical images fill
// the diagonal from the lower left to the upper right. The table must be
// another image than the source's and the reference's (1413). Labels
// "ImgCorrelogram ( BW8)", "ImgCorrelogram ( BW16)".
MIREL_API void ImgCorrelogram(const EROI<EBW8>* source, const EROI<EBW8>* reference, EImage<EBW8>* table);
MIREL_API void ImgCorrelogram(const EROI<EBW8>* source, const EROI<EBW8>* reference, EImage<EBW16>* table);

// The least-squares line y = slope * x + offset through the pairs of grey
// levels of two ROIs, and their correlation. With `skipExtremes` non-zero a
// pair with x or y at 0 or 255 is left out. No pair left: 1051. A constant x
// gives slope 0, correlation 0 and the mean of y. Label "ImgLinearRegression".
MIREL_API void ImgLinearRegression(const EROI<EBW8>* x, const EROI<EBW8>* y, float& slope, float& offset,
                                   float& correlation, int skipExtremes);

#endif  // MIREL_MEASURE_NOISE_H_
