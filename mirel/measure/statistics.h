// Pixel statistics: counts in ranges, extremes, mean, variance, deviation,
// colour covariances and pixel comparison.
//
// Two interfaces stand side by side. The ImgPixel... family (and ImgCount,
// ImgAreaDoubleThreshold, the three-argument ImgArea) visits every pixel of
// the ROI and ignores run masks. ImgArea (one and two arguments), ImgAverage,
// ImgMinimum, ImgMaximum and ImgVariance on EBW8 visit only the pixels of the
// ROI's runs when it carries any.
//
// Sums are 32-bit with wrap-around where noted: the 8-bit whole-ROI sums wrap
// above about 16.8 million pixels at 255, and the sums of squares are kept
// in 32 bits for one row at a time (a row wider than about 66,000 pixels at
// 255 wraps) and added row by row to a floating-point total.
//
// Results passed by reference are written only on success. On failure the
// value-returning forms give: ImgArea 0, ImgAverage 0.0, ImgMinimum 255,
// ImgMaximum 0, ImgPixelCompare 0. The forms that return short give 0 or the
// error code. Errors: 1400 no image (for the ImgPixelAverage, Stat and
// Variance forms also an empty ROI, and for ImgPixelAverage on EBW8 a
// negative origin); 1403 sizes of compared ROIs differ.
#ifndef MIREL_MEASURE_STATISTICS_H_
#define MIREL_MEASURE_STATISTICS_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

// ---------------------------------------------------------------- counts

// The number of pixels: the sum of the run lengths when the ROI has runs,
// width times height otherwise. Label "ImgArea ( all pixels)".
MIREL_API unsigned int ImgArea(const EROI<EBW8>* roi);
// The number of pixels strictly above `threshold` (runs honoured).
// Label "ImgArea ( binarized)".
MIREL_API unsigned int ImgArea(const EROI<EBW8>* roi, unsigned int threshold);
// The number of pixels at or above `threshold` (every pixel; runs ignored).
// Label "ImgArea".
MIREL_API short ImgArea(const EROI<EBW8>* roi, unsigned char threshold, int& area);
MIREL_API void ImgArea(const EROI<EBW16>* roi, EBW16 threshold, int& area);
// The number of pixels p with low <= p < high. Labels
// "ImgAreaDoubleThreshold", "ImgAreaDoubleThreshold (BW16)".
MIREL_API short ImgAreaDoubleThreshold(const EROI<EBW8>* roi, unsigned char low, unsigned char high, int& area);
MIREL_API void ImgAreaDoubleThreshold(const EROI<EBW16>* roi, EBW16 low, EBW16 high, int& area);
// Each pixel p counts as below when p < low, else as between when p < high,
// else as above; with low above high nothing is between. Labels
// "ImgPixelCount", "ImgPixelCount (BW16)".
MIREL_API short ImgPixelCount(const EROI<EBW8>* roi, unsigned char low, unsigned char high, int& below,
                              int& between, int& above);
MIREL_API void ImgPixelCount(const EROI<EBW16>* roi, EBW16 low, EBW16 high, int& below, int& between,
                             int& above);

// ---------------------------------------------------------------- extremes and means

// Minimum, maximum and the mean of the row means (each row's 32-bit sum,
// read as signed, over the width). Labels "ImgPixelStat", "ImgPixelStat (BW16)".
MIREL_API short ImgPixelStat(const EROI<EBW8>* roi, unsigned char& min, unsigned char& max, float& average);
MIREL_API void ImgPixelStat(const EROI<EBW16>* roi, EBW16& min, EBW16& max, float& average);
// Mean grey level. The colour form gives the means of the pixel's third,
// second and first bytes, in that order. Labels "ImgPixelAverage ( BW8)",
// "ImgPixelAverage ( BW16)", "ImgPixelAverage ( C24)".
MIREL_API short ImgPixelAverage(const EROI<EBW8>* roi, float& average);
MIREL_API void ImgPixelAverage(const EROI<EBW16>* roi, float& average);
MIREL_API void ImgPixelAverage(const EROI<EC24>* roi, float& average0, float& average1, float& average2);
// Population variance and mean. The colour form gives variances 0, 1, 2,
// covariances 01, 12, 02 and means 0, 1, 2, where component 0 is the pixel's
// third byte, 1 its second and 2 its first. Labels "ImgPixelVariance ( BW8)",
// "ImgPixelVariance ( BW16)", "ImgPixelVariance ( C24)".
MIREL_API void ImgPixelVariance(const EROI<EBW8>* roi, float& variance, float& mean);
MIREL_API void ImgPixelVariance(const EROI<EBW16>* roi, float& variance, float& mean);
MIREL_API void ImgPixelVariance(const EROI<EC24>* roi, float& variance0, float& variance1, float& variance2,
                                float& covariance01, float& covariance12, float& covariance02, float& mean0,
                                float& mean1, float& mean2);
// Standard deviation and mean; the colour form turns the variances into
// deviations and the covariances into correlations (0 where a deviation is
// 0). Label "ImgPixelStdDev".
MIREL_API short ImgPixelStdDev(const EROI<EBW8>* roi, float& deviation, float& mean);
MIREL_API void ImgPixelStdDev(const EROI<EBW16>* roi, float& deviation, float& mean);
MIREL_API void ImgPixelStdDev(const EROI<EC24>* roi, float& deviation0, float& deviation1, float& deviation2,
                              float& correlation01, float& correlation12, float& correlation02, float& mean0,
                              float& mean1, float& mean2);
// The minimum starts at 255 and the maximum at 0, also on EBW16: a 16-bit
// ROI whose pixels all exceed 255 has a minimum of 255. Labels "ImgPixelMin",
// "ImgPixelMax", "ImgPixelMin (BW16)", "ImgPixelMax (BW16)".
MIREL_API short ImgPixelMin(const EROI<EBW8>* roi, unsigned char& min);
MIREL_API short ImgPixelMax(const EROI<EBW8>* roi, unsigned char& max);
MIREL_API void ImgPixelMin(const EROI<EBW16>* roi, EBW16& min);
MIREL_API void ImgPixelMax(const EROI<EBW16>* roi, EBW16& max);

// ---------------------------------------------------------------- comparison and predicates

// The number of pixels that differ between two ROIs of one size (a colour
// pixel differs when any byte does). Labels "ImgPixelCompare ( BW8)",
// "ImgPixelCompare ( BW16)", "ImgPixelCompare ( C24)".
MIREL_API unsigned int ImgPixelCompare(const EROI<EBW8>* a, const EROI<EBW8>* b);
MIREL_API unsigned int ImgPixelCompare(const EROI<EBW16>* a, const EROI<EBW16>* b);
MIREL_API unsigned int ImgPixelCompare(const EROI<EC24>* a, const EROI<EC24>* b);
// The number of pixels that differ between two bit images of one size. A
// ROI that starts inside a byte is first copied onto an aligned temporary.
// A null ROI sets 1400 and gives 0xFFFFFFFF; another failure gives 0. Label
// "ImgPixelCompare (BW1)". ImgPixelCompareAligned takes ROIs that start on a
// byte and throws Corvane::Talmeer::Exception instead (see point/bits.h).
MIREL_API unsigned int ImgPixelCompare(const EROI<EBW1>* a, const EROI<EBW1>* b);
MIREL_API unsigned int ImgPixelCompareAligned(const EROI<EBW1>* a, const EROI<EBW1>* b);
// The number of pixels for which `predicate` returns non-zero. The predicate
// gets a reference to each pixel in the image, rows in order, left to right,
// and may change it. Labels "ImgCount ( BW8)", "ImgCount ( BW16)", "ImgCount ( C24)".
MIREL_API unsigned int ImgCount(EROI<EBW8>* roi, int (*predicate)(EBW8&));
MIREL_API unsigned int ImgCount(EROI<EBW16>* roi, int (*predicate)(EBW16&));
MIREL_API unsigned int ImgCount(EROI<EC24>* roi, int (*predicate)(EC24&));
// The same for a ROI held const, with a predicate that only reads the pixel.
MIREL_API unsigned int ImgCount(const EROI<EBW8>* roi, int (*predicate)(const EBW8&));
MIREL_API unsigned int ImgCount(const EROI<EBW16>* roi, int (*predicate)(const EBW16&));
MIREL_API unsigned int ImgCount(const EROI<EC24>* roi, int (*predicate)(const EC24&));

// ---------------------------------------------------------------- with run masks

// The sum of the pixels (32-bit) over their number, which goes to *count when
// `count` is not null. A ROI with no pixel divides by 0. Label "ImgAverage".
MIREL_API float ImgAverage(const EROI<EBW8>* roi, unsigned int* count = nullptr);
// Labels "ImgMinimum", "ImgMaximum".
MIREL_API unsigned int ImgMinimum(const EROI<EBW8>* roi);
MIREL_API unsigned int ImgMaximum(const EROI<EBW8>* roi);
// The population variance of the grey levels, from their 256-bin histogram;
// the mean goes to *mean and its truncation to *integerMean when not null.
// Fails with 1051 when the ROI has no pixel; traced with the labels
// "ImgHistogramMoments ( 1)" and "ImgHistogramCenteredMoments ( 2)" of its
// two steps ("ImgHistogram" when the histogram cannot be made).
MIREL_API float ImgVariance(const EROI<EBW8>* roi, float* mean = nullptr, unsigned int* integerMean = nullptr);

#endif  // MIREL_MEASURE_STATISTICS_H_
