// Histograms: filling, cumulation, equalization and analysis.
//
// ImgHistogram on an EBW8 ROI sets the vector to 256 bins and counts every
// pixel; when the ROI carries a run mask only the pixels of its runs are
// counted. The EBW16 and EBW32 forms bin a field of bits of each pixel: `msb`
// is the field's top bit (below 16, or 32, else 1013) and `bits` its width
// (msb - bits + 1 must not be negative, else 1014). The vector gets
// 1 << (bits % 32) bins and a pixel goes to bin pixel >> (msb - bits + 1).
// With `saturate` non-zero, bin numbers above the last bin are clamped to it
// (forced off when msb is the pixel's top bit); with it zero, the caller
// promises that no pixel has a bit above msb. (roi, hist, 15, 16, 1) is the
// exact 65536-bin histogram. These two forms ignore run masks.
//
// ImgCumulateHistogram writes the inclusive running sum (32-bit, wrapping);
// source and destination may be one vector.
//
// ImgSetupEqualize makes the 256-entry table whose entry i is
// (c * 255) / N, c the count of pixels strictly below i and N the total;
// N must not be 0. ImgEqualize applies it to an EBW8 image (honouring the
// run mask when counting). On EBW16 each pixel p becomes
// min(65535, C[p] * 65535 / N), C the inclusive running sum.
//
// ImgAnalyseHistogram reads one feature of the bins min..max (inclusive) of
// a 256-bin histogram; ImgAnalyseHistogramBW16 of a 65536-bin one, where max
// may be 65536 and the bins read are those from 2 * min to min + max (the
// scan starts at bin min and indexes it by min..max again; indices reported
// lie in min..max). With min = 0 both give the plain result.
//
// The forms on the untyped EVector are the older interface: the histogram is
// a vector of kind 2 with 32-bit items, the equalization table one of kind 3.
//
// Sums of bins are 32-bit with wrap-around. Errors: 1400 void ROI, 1613 a
// histogram of the wrong bin count, 1013 / 1014 / 1007 bad min / max / order,
// 1303 memory, 1601 / 1602 / 1603 for an untyped vector without data or of
// the wrong kind.
#ifndef MIREL_HISTOGRAM_HISTOGRAM_H_
#define MIREL_HISTOGRAM_HISTOGRAM_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/vector.h"
#include "mirel/histogram/histogram_vector.h"

#include "mirel/foundation/untyped_vector.h"

enum IMG_HISTOGRAM_FEATURE : int {
  IMG_FEATURE_MAX_COUNT_BIN = 0,  // index of the largest bin (lowest on a tie); 0 when all are 0
  IMG_FEATURE_MAX_COUNT = 1,      // count in the largest bin
  IMG_FEATURE_MIN_COUNT_BIN = 2,  // index of the smallest non-zero bin; 0 when none
  IMG_FEATURE_MIN_COUNT = 3,      // its count; all ones (-1.0 as float) when none
  IMG_FEATURE_FIRST_BIN = 4,      // first non-zero bin; max + 1 when none
  IMG_FEATURE_LAST_BIN = 5,       // last non-zero bin; min - 1 when none
  IMG_FEATURE_TOTAL = 6,          // sum of the bins
  IMG_FEATURE_MEAN = 7,           // mean bin index weighted by count; 0 when empty
  IMG_FEATURE_STD_DEV = 8         // population standard deviation of the bin index
};

// Filling. Labels "ImgHistogram", "ImgHistogram ( EBW16)", "ImgHistogram ( EBW32)".
MIREL_API void ImgHistogram(const EROI<EBW8>* src, EBWHistogramVector* histogram);
MIREL_API void ImgHistogram(const EROI<EBW16>* src, EBWHistogramVector* histogram, unsigned int msb,
                            unsigned int bits, int saturate);
MIREL_API void ImgHistogram(const EROI<EBW32>* src, EBWHistogramVector* histogram, unsigned int msb,
                            unsigned int bits, int saturate);
// Older form: no run mask; the vector becomes kind 2 with 256 items. Returns 0 or the code.
MIREL_API short ImgHistogram(const EROI<EBW8>* src, EVector* histogram);

MIREL_API void ImgCumulateHistogram(const EBWHistogramVector* src, EBWHistogramVector* dst);

MIREL_API void ImgSetupEqualize(const EBWHistogramVector* histogram, EBW8Vector* table);
// Older form: entry i is (c * 256) / N stored in a byte.
MIREL_API void ImgSetupEqualize(EVector* histogram, EVector* table);

MIREL_API void ImgEqualize(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgEqualize(const EROI<EBW16>* src, EROI<EBW16>* dst);

// A feature outside 0..8 gives 0.0. On failure the result is 0.0.
MIREL_API float ImgAnalyseHistogram(const EBWHistogramVector* histogram, IMG_HISTOGRAM_FEATURE feature,
                                    int min, int max);
MIREL_API float ImgAnalyseHistogramBW16(const EBWHistogramVector* histogram, IMG_HISTOGRAM_FEATURE feature,
                                        int min, int max);
// Older forms: the int form answers features 0 to 6, the float form 7 and 8;
// another feature leaves `result` alone and succeeds. No range check.
MIREL_API short ImgAnalyseHistogram(EVector* histogram, int min, int max, int feature, int& result);
MIREL_API short ImgAnalyseHistogram(EVector* histogram, int min, int max, int feature, float& result);

#endif  // MIREL_HISTOGRAM_HISTOGRAM_H_
