// The Canny chain on 8-bit images: smoothing, gradient pairs, non-maxima
// suppression, two thresholds from a three-class split of the histogram of
// the surviving magnitudes, and one of two edge followers. The suppression
// and both followers are exported on their own.
//
// Magnitude of a gradient pair (gradient.h): (|dx| + |dy|) >> 1, a byte.
// Direction class, the orientation of the gradient: 0 when |dx| > 2.42 |dy|,
// else 90 when |dy| > 2.42 |dx| (both strict, in double precision), else 45
// when dx and dy have the same sign (0 counting as a sign of its own) and
// 135 otherwise; so (0, 0) is 45.
//
// NonMaximaSuppression: each pixel, frame included, gets its class in
// `direction` and in `magnitude` its magnitude when that is at least the
// magnitudes of both neighbours across the edge, else 0: (x - 1, y) and
// (x + 1, y) for class 0, (x - 1, y - 1) and (x + 1, y + 1) for 45, (x, y - 1)
// and (x, y + 1) for 90, (x - 1, y + 1) and (x + 1, y - 1) for 135, a
// neighbour outside the ROI counting 0. A plateau stays two pixels thick.
// Errors: 1400, 1403; label "NonMaximaSuppression".
//
// ImgCannyDetector: smooths src into a working image (copy, the 3x3, 5x5 or
// 7x7 Gaussian when the ROI is at least that size each way, else a copy; or
// the 3x3 median; any other mode copies), forms the pairs and suppresses;
// then, over the 256-bin histogram of the suppressed magnitudes, picks the
// thresholds t1 < t2 that maximise s1^2/n1 + s2^2/n2 + s3^2/n3 for the
// classes [0, t1), [t1, t2), [t2, 255] (n the count and s the sum of i h[i]
// of a class; each term in double precision, summed through a float; the
// first best pair wins; none with an empty class), with 0 and 0 when none
// qualifies. The low threshold t1 is raised to 1 when 0. Then
// EDGE_FOLLOWING_HYSTERESIS runs Hysteresis with t1 and t2,
// EDGE_FOLLOWING_CONTOUR_GROWING runs ContourGrowing with t1, and any other
// value no follower. dst is never cleared: only the pixels the follower
// reaches are written. Errors (1400, 1403, 1303, or an inner operation's
// code) trace "Failed canny detection !".
//
// Hysteresis: two raster scans. The first seeds at each pixel of magnitude
// at least `high` not yet visited: dst 128, then a walk. The second seeds at
// every pixel of magnitude at least `high`: dst 80, then a walk the other
// way. A walk looks at three candidates of its class in a fixed order (first
// scan: class 0: (x+1, y+1), (x-1, y+1), (x, y+1); 45: (x-1, y+1), (x, y+1),
// (x-1, y); 90: (x+1, y+1), (x+1, y-1), (x+1, y); 135: (x+1, y+1), (x, y+1),
// (x+1, y); the second scan mirrors each offset), takes the first inside the
// ROI and unvisited, replaced only by a strictly greater magnitude, ends
// when none counts or the best is below `low`, and otherwise writes 255
// there and goes on from it. Strong pixels end at 80, weak pixels reached at
// 255.
//
// ContourGrowing: seeds at the pixels of rows and columns 1 .. size - 2
// whose magnitude m is non-zero, at least `low` and at least both
// neighbours along the edge (class 0: above and below; 45: (x+1, y-1) and
// (x-1, y+1); 90: left and right; 135: (x-1, y-1) and (x+1, y+1)). Growth
// from a seed visits a pixel once: it is rejected (dst 0) when its
// magnitude s is below half the seed's or below 0.8 times the previous
// pixel's, else accepted (dst 255) and grown on to its six neighbours other
// than the two across the edge, depth first in a fixed order. The depth is
// held on the heap, so an edge through every pixel of a large image is
// followed whole.
//
// Both followers return without a word when the three images differ in
// size; a null or void image gives 1400 and a visited-flag image that
// cannot be had 1303, under the labels "Hysteresis" and "ContourGrowing".
#ifndef MIREL_EDGE_CANNY_H_
#define MIREL_EDGE_CANNY_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

enum SMOOTH_MODE : int {
  SMOOTH_NONE = 0,
  SMOOTH_GAUSSIAN_3X3 = 1,
  SMOOTH_GAUSSIAN_5X5 = 2,
  SMOOTH_GAUSSIAN_7X7 = 3,
  SMOOTH_MEDIAN = 4,
};

enum EDGE_FOLLOWING_MODE : int {
  EDGE_FOLLOWING_HYSTERESIS = 0,
  EDGE_FOLLOWING_CONTOUR_GROWING = 1,
};

MIREL_API void ImgCannyDetector(const EROI<EBW8>* src, EROI<EBW8>* dst, SMOOTH_MODE smooth,
                                EDGE_FOLLOWING_MODE following);
MIREL_API void NonMaximaSuppression(const EROI<EBW32>* gradient, EROI<EBW32>* direction, EROI<EBW8>* magnitude);
MIREL_API void Hysteresis(const EROI<EBW8>* magnitude, EROI<EBW8>* dst, const EImage<EBW32>* direction,
                          unsigned char low, unsigned char high);
MIREL_API void ContourGrowing(const EROI<EBW8>* magnitude, EROI<EBW8>* dst, const EROI<EBW32>* direction,
                              unsigned char low);

#endif  // MIREL_EDGE_CANNY_H_
