// Warping through coordinate maps, and the map that unrolls an annulus.
//
// ImgWarp with two maps: warp X and warp Y are EBW16 images the size of the
// destination whose pixels are read as signed 16-bit values. Destination
// pixel (u, v) shows source pixel (warpX + shiftX, warpY + shiftY), or 0
// when that position lies outside the source (negative included). There is
// no interpolation; source and destination may differ in size. Codes: 1400
// when the source, the destination or a map is null or void; 1403 when a
// map differs in size from the destination. The EC24 form maps each
// component the same way.
//
// ImgWarp with one map: each EBW32 pixel holds two unsigned 16-bit values,
// x first in memory and y second. The map may be larger than the
// destination (its extra pixels are skipped). Codes, in the order checked:
// 1403 source and destination differ in size; 1400 the map is null; 2200
// the map is narrower or lower than the destination; 1400 a void ROI or
// map; 1301 no memory for the row table. A map entry outside the source stops the walk with 1405:
// the pixels written before it stay written.
//
// ImgSetCircleWarp sizes both maps to width x height and fills them so that
// ImgWarp unrolls the annulus around (centreX, centreY): column i looks
// along the angle that goes linearly from firstAngle (column 0) to
// lastAngle (last column), in the unit of EToRadians; row 0 lies on the
// circle of firstRowRadius and the last row on the circle of lastRowRadius.
// Positions truncate towards zero. A width or height below 2 has no such
// map and gives 1007; a null map gives 1400.
#ifndef MIREL_GEOMETRY_WARP_H_
#define MIREL_GEOMETRY_WARP_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API short ImgWarp(const EROI<EBW8>* src, EROI<EBW8>* dst, const EImage<EBW16>* warpX,
                        const EImage<EBW16>* warpY, int shiftX, int shiftY);
MIREL_API short ImgWarp(const EROI<EBW8>* src, EROI<EBW8>* dst, const EImage<EBW32>* warp);
MIREL_API void ImgWarp(const EROI<EC24>* src, EROI<EC24>* dst, const EImage<EBW16>* warpX,
                       const EImage<EBW16>* warpY, int shiftX, int shiftY);

MIREL_API void ImgSetCircleWarp(float centreX, float centreY, int height, float lastRowRadius, float firstRowRadius,
                                int width, float firstAngle, float lastAngle, EImage<EBW16>* warpX,
                                EImage<EBW16>* warpY);

#endif  // MIREL_GEOMETRY_WARP_H_
