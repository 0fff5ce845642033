// The distance map: for each pixel of an 8-bit picture, the chessboard
// distance (every one of the eight neighbours one step away) to the nearest
// zero pixel, capped by a ceiling and by the value of the pixel itself.
//
// Two passes over the map. The forward pass, top to bottom and left to
// right, takes for each pixel the smaller of the source pixel and one more
// than the least of its upper three neighbours in the map and of its left
// neighbour in the source; the backward pass, bottom to top and right to
// left, takes the smaller of that and one more than the least of its lower
// three neighbours and its right neighbour in the map. The left neighbour
// comes from the source, not from the map, so a value carries rightwards
// only through the row below: a single row 0, 255, 255, 255 gives
// 0, 1, 255, 255. The ceiling stands in for the neighbours outside the ROI,
// and the very first and last pixels are cut to it.
//
// The ceiling `limit` is clamped to 0 .. 65535. Since every value is at most
// its source pixel, the map's values are at most 255: a picture of 0 and 255
// gives distances up to 255.
//
// dst must have the size of src; it is not resized. Returns 0 or the error
// code: 1400 null pointer, 1403 sizes differ, 1400 void image, 1301 no
// memory for the line buffers. A failure writes nothing.
#ifndef MIREL_MORPHOLOGY_DISTANCE_H_
#define MIREL_MORPHOLOGY_DISTANCE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API short ImgDistance(const EROI<EBW8>* src, EImage<EBW16>* dst, int limit);

#endif  // MIREL_MORPHOLOGY_DISTANCE_H_
