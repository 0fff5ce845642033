// Contour following: the boundary of a thresholded object, walked from a
// point and listed pixel by pixel in order.
//
// The object is defined on the fly by a threshold (no binary image is made):
// with CONTOUR_THRESHOLD_ABOVE the pixels at or above `threshold`, with any
// other value the pixels at or below it. The walk is a table-driven border
// follow over 8 neighbours (CONNEXITY_8) or 4 (any other value), turning
// clockwise on the screen (y down) or anticlockwise, and it reads only the
// pixels next to the boundary.
//
// Directions, y growing downward: 0 east, 1 north-east, 2 north, 3
// north-west, 4 west, 5 south-west, 6 south, 7 south-east.
//
// Start. The start pixel (x, y), relative to the ROI, must be object (1500;
// also when it lies outside the ROI). Its neighbours are scanned, starting
// from north, for a background neighbour followed by an object one; in 8
// connexity an axial object neighbour also needs the neighbour two back to be
// background, so that a diagonal gap never passes for the boundary. None
// found: 1501 when the last neighbour looked at was object or outside the ROI
// (an interior point), 1502 when it was background (an isolated pixel).
//
// Walk. Each point is stored before the step away from it; the walk ends
// when it is back at the start point about to leave in the start direction,
// so a one-pixel-wide arm is passed twice, once on each side.
//
// The ROI's edge, by CONTOUR_MODE:
//   CONTOUR_CLOCKWISE_STOP, CONTOUR_ANTICLOCKWISE_STOP: the walk stops when
//     it meets the edge; the vector holds the open contour up to the point
//     before the last step, and the call reports 106.
//   CONTOUR_CLOCKWISE_WRAP, CONTOUR_ANTICLOCKWISE_WRAP: outside counts as
//     background, so the walk runs along the edge and closes.
//   CONTOUR_CLOCKWISE_BOTH, CONTOUR_ANTICLOCKWISE_BOTH: when the first walk
//     stops at the edge, a second walk in the other sense starts from the
//     point where it stopped and replaces the vector with the contour from
//     one end to the other (again 106, at the other end).
// Any other mode: 1009.
//
// The path forms set the vector's closed flag: one walk, closed unless it
// ended with 106; two walks, closed when the first closed by itself. The
// EBW8PathVector and EBW16PathVector forms store each point's pixel, or, with
// `keepDirections` non-zero, the direction (0 to 7) of the step leaving it: a
// chain code. The vector's previous contents are lost.
//
// The EVector form makes the vector of kind 1 (room for 2000 points) unless
// it is already, stores each point as three 32-bit words x, y, direction,
// grows the room 24576 bytes at a time and returns 0 or the code. Its
// contour is limited to an eighth of the ROI's area (1504 when reached, so a
// ROI of fewer than 8 pixels always fails); 1601 when the vector has no data.
//
// Codes: 106 open contour (the vector is valid), 1007 null path vector, 1009
// bad mode, 1400 no image, 1500 to 1504 as above. The label is traced on any
// code, 106 included: "ImgContour ( EVector)", "ImgContour ( EPathVector)",
// "ImgContour ( EBW8PathVector)", "ImgContour ( EPathVector)(BW16)",
// "ImgContour ( EBW16PathVector)(BW16)".
#ifndef MIREL_VECTOR_CONTOUR_H_
#define MIREL_VECTOR_CONTOUR_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/untyped_vector.h"
#include "mirel/vector/records.h"

enum CONTOUR_MODE : int {
  CONTOUR_CLOCKWISE_STOP = 0,
  CONTOUR_CLOCKWISE_WRAP = 1,
  CONTOUR_CLOCKWISE_BOTH = 2,
  CONTOUR_ANTICLOCKWISE_STOP = 3,
  CONTOUR_ANTICLOCKWISE_BOTH = 4,
  CONTOUR_ANTICLOCKWISE_WRAP = 5,
};

enum CONTOUR_THRESHOLD : int {
  CONTOUR_THRESHOLD_ABOVE = 0,
  CONTOUR_THRESHOLD_BELOW = 1,
};

enum CONNEXITY : int {
  CONNEXITY_4 = 0,
  CONNEXITY_8 = 1,
};

MIREL_API short ImgContour(const EROI<EBW8>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                           unsigned int threshold, CONNEXITY connexity, EVector* contour);
MIREL_API void ImgContour(const EROI<EBW8>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                          unsigned int threshold, CONNEXITY connexity, EPathVector* path);
MIREL_API void ImgContour(const EROI<EBW8>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                          unsigned int threshold, CONNEXITY connexity, EBW8PathVector* path, int keepDirections);
MIREL_API void ImgContour(const EROI<EBW16>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                          unsigned int threshold, CONNEXITY connexity, EPathVector* path);
MIREL_API void ImgContour(const EROI<EBW16>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                          unsigned int threshold, CONNEXITY connexity, EBW16PathVector* path, int keepDirections);

#endif  // MIREL_VECTOR_CONTOUR_H_
