// Threshold selection: from a grey-level histogram to one or two thresholds
// and the mean grey level of each class.
//
// Class convention. A threshold t splits the bins of a range [min, max]
// into a lower class (bins below t) and an upper class (bins t and above),
// the same reading as "pixel >= t is white". Two modes differ on purpose:
// IMG_THRESHOLD_MIN_SQUARED_DISTANCE and IMG_THRESHOLD_MIN_DISTANCE keep bin
// t in the lower class, and so does ImgIsodataThreshold.
//
// Modes and absolute thresholds share one unsigned 32-bit range: the six
// modes are the top six values but two (-8 .. -3 read as signed); any value
// from 0 to the histogram's last bin is an absolute threshold. -2 and -1 are
// not modes and fail the range check.
//
// Searches compare strictly, so the first candidate of a scan wins a tie.
// The 8-bit searches keep their best score rounded to single precision and
// compare each new candidate, unrounded, with it; class counts and sums are
// 32-bit unsigned and wrap (an image of more than about 16.8 million pixels
// of value 255 overflows them). The 16-bit forms count in 64 bits and score
// in double precision.
//
// Every function clears the error state on entry (except where noted), and
// on failure sets a code, appends its label and returns 0 (the residue
// functions -1.0). A threshold output keeps its input value when a check
// fails. ImgAutoThreshold is the only one that looks at an image.
//
// Errors: 1613 a histogram without exactly 256 bins (65536 for the BW16
// forms); 1015 min out of range (or, in mode IMG_THRESHOLD_RELATIVE, a
// relative value outside [0, 1]); 1016 max out of range; 1007 min not below
// max; 1012 an absolute threshold outside [min, max]. ImgIsodataThreshold
// has its own order: 1012 min, 1013 max, 1007 order.
#ifndef MIREL_HISTOGRAM_THRESHOLD_SELECTION_H_
#define MIREL_HISTOGRAM_THRESHOLD_SELECTION_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/histogram/histogram_vector.h"

class EVector;

enum IMG_THRESHOLD_MODES : unsigned int {
  // Smallest sum of squared distances of the two classes to black (0) and
  // white (255, or 65535 in 16 bits); the highest threshold wins a tie.
  IMG_THRESHOLD_MIN_SQUARED_DISTANCE = 4294967288u,
  // Smallest sum of distances to black and white.
  IMG_THRESHOLD_MIN_DISTANCE = 4294967289u,
  // Threshold nearest to the midpoint of the two class means, over every t.
  IMG_THRESHOLD_ISODATA = 4294967290u,
  // Greatest sum of the two class entropies.
  IMG_THRESHOLD_MAX_ENTROPY = 4294967291u,
  // Smallest within-class sum of squares (between-class variance maximum).
  IMG_THRESHOLD_MIN_RESIDUE = 4294967292u,
  // A given fraction (`relative`, in [0, 1]) of the pixels below.
  IMG_THRESHOLD_RELATIVE = 4294967293u,
};

// Picks a threshold over the bins [min, max] of a 256-bin histogram.
// `threshold` holds the mode or the absolute threshold on entry and the
// threshold chosen on return. `averageBelow` and `averageAbove` receive the
// mean of each class, or min and max + 1 for an empty class. In modes
// IMG_THRESHOLD_MIN_SQUARED_DISTANCE and IMG_THRESHOLD_MIN_DISTANCE the
// averages are those of the costs: the mean squared distance to black of
// the lower class and to white of the upper class, respectively the lower
// mean and the mean distance to white. A search that finds no split (all
// pixels in one bin) gives 0. In mode IMG_THRESHOLD_RELATIVE the result can
// be max + 1 (relative 1.0). Label "ImgHistogramThreshold".
MIREL_API void ImgHistogramThreshold(const EBWHistogramVector* histogram, unsigned int& threshold, float& averageBelow,
                                     float& averageAbove, float relative, unsigned int min, unsigned int max);

// The same over a 65536-bin histogram, with white 65535. Counts and sums are
// 64-bit; each product of a bin by its index formed in a scan is 32-bit and
// may wrap for very large bins. Label "ImgHistogramThreshold (BW16)".
MIREL_API void ImgHistogramThresholdBW16(const EBWHistogramVector* histogram, unsigned int& threshold, float& averageBelow,
                                         float& averageAbove, float relative, unsigned int min, unsigned int max);

// A threshold for an image. A mode value below 256 (65536 for BW16) is an
// absolute threshold and is returned as it is, without reading the image.
// Otherwise the histogram of the whole ROI is built (the BW8 form honours a
// run mask) and the mode is resolved over the full range; the result is the
// threshold truncated to the pixel type (so a relative mode of 1.0 gives 0).
// On failure the error state holds the inner operation's code and label.
MIREL_API EBW8 ImgAutoThreshold(const EROI<EBW8>* source, IMG_THRESHOLD_MODES mode, float relative);
MIREL_API EBW16 ImgAutoThreshold(const EROI<EBW16>* source, IMG_THRESHOLD_MODES mode, float relative);
// Forms that take a plain value (an absolute threshold or a mode).
inline EBW8 ImgAutoThreshold(const EROI<EBW8>* source, unsigned int mode, float relative) {
  return ImgAutoThreshold(source, static_cast<IMG_THRESHOLD_MODES>(mode), relative);
}
inline EBW16 ImgAutoThreshold(const EROI<EBW16>* source, unsigned int mode, float relative) {
  return ImgAutoThreshold(source, static_cast<IMG_THRESHOLD_MODES>(mode), relative);
}

// The library's main criterion on a 256-bin histogram: the threshold that
// maximises S1*S1/n1 + S2*S2/n2 (class sums S, counts n), which minimises the
// sum of squared distances of each pixel to its class mean. Returns 0 when no
// split beats "no split" (one populated bin, or an empty histogram); the
// averages are written only when a split wins. Label "ImgMinResidueThreshold".
MIREL_API EBW8 ImgMinResidueThreshold(const EBWHistogramVector* histogram, float& averageBelow, float& averageAbove);

// The same search; returns the residue, the root mean square distance of a
// pixel from its class mean (0 for a single populated bin; rounding can make
// it not-a-number on degenerate histograms). -1.0 on failure, with
// `threshold` untouched. Label "ImgTwoLevelsMinResidueThreshold".
MIREL_API float ImgTwoLevelsMinResidueThreshold(const EBWHistogramVector* histogram, EBW8& threshold, float& averageBelow,
                                                float& averageAbove);

// Two thresholds, three classes: low is below lowThreshold, middle from
// lowThreshold to highThreshold - 1, high from highThreshold up; all three
// non-empty. Returns the residue as above, -1.0 on failure. The averages are
// written only when a split wins. Label "ImgThreeLevelsMinResidueThreshold".
MIREL_API float ImgThreeLevelsMinResidueThreshold(const EBWHistogramVector* histogram, EBW8& lowThreshold,
                                                  EBW8& highThreshold, float& lowAverage, float& middleAverage,
                                                  float& highAverage);

// The threshold of greatest total class entropy; 0 when none beats "no
// split". Label "ImgMaxEntropyThreshold".
MIREL_API EBW8 ImgMaxEntropyThreshold(const EBWHistogramVector* histogram, float& averageBelow, float& averageAbove);

// The iterative isodata threshold over [min, max], in integers: start at the
// middle, move to the midpoint of the two class means (bin t counted below),
// stop at a fixed point or after 16 rounds. Label
// "ImgIsodataThreshold ( EBWHistogramVector)".
MIREL_API EBW8 ImgIsodataThreshold(const EBWHistogramVector* histogram, unsigned int min, unsigned int max);

// The older form on an untyped histogram (kind 2, 32-bit bins). Checks min,
// max and their order as above, then the kind (1607) and the data (1601),
// and a vector too short for bin max (1602); after these last three it
// returns the starting midpoint (min + max + 1) / 2 rather than 0. The
// cumulated sum of the bin products starts at bin min + 1 (bin min adds
// its count but not its product). Label "ImgIsodataThreshold ( EVector)".
MIREL_API unsigned int ImgIsodataThreshold(const EVector* histogram, unsigned int min, unsigned int max);

// The same on a 65536-bin histogram (64-bit sums). This form does not clear
// the error state on entry; it clears it on success. Label
// "ImgIsodataThreshold ( EBWHistogramVector)".
MIREL_API EBW16 ImgIsodataThresholdBW16(const EBWHistogramVector* histogram, unsigned int min, unsigned int max);

#endif  // MIREL_HISTOGRAM_THRESHOLD_SELECTION_H_
