// Pixels between images and vectors: along a path of points, and along a
// line segment between two points.
//
// Paths. ImgImageToPath fills the pixel of each point of a path vector from
// the ROI; ImgPathToImage writes each point's pixel into the ROI. Points are
// relative to the ROI and taken in order. A point outside the ROI is skipped
// and sets 106, and the walk goes on: the 106 is left in the error state as
// a warning, not traced. An empty path does nothing. Codes: 1400 no image,
// 1007 null vector. Labels: "ImgImageToPath ( BW8)", "ImgImageToPath ( C24)",
// "ImgImageToPath (BW16)", "ImgPathToImage ( BW8)", "ImgPathToImage ( C24)",
// "ImgPathToImage ( BW16)".
//
// Line segments. Both ends must lie in the ROI, checked in this order: x0
// (1013), y0 (1014), x1 (1015), y1 (1016). The segment has max(|x1 - x0|,
// |y1 - y0|) + 1 pixels, both ends included, walked by integer steps along
// the axis of the larger difference (x on a tie).
//   ImgImageToLineSegment: the vector is emptied and receives the pixels in
//     order from (x0, y0).
//   ImgLineSegmentToImage with a vector: the vector must have exactly one
//     element a pixel (1613). The writes lag one step behind the walk:
//     element 0 goes to the first two pixels, element k to pixel k + 1, and
//     the last element is not written. So a segment sampled and written back
//     on the same points comes back shifted by one pixel along itself.
//   ImgLineSegmentToImage with a constant: every pixel of the segment.
// Codes: 1400 no image, 1007 null vector. Labels:
// "ImgImageToLineSegment ( BW8)", "ImgLineSegmentToImage ( BW8, vector)",
// "ImgLineSegmentToImage ( BW8, const)", and likewise for BW16 and C24.
#ifndef MIREL_VECTOR_PATH_H_
#define MIREL_VECTOR_PATH_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/vector.h"
#include "mirel/vector/records.h"

MIREL_API void ImgImageToPath(const EROI<EBW8>* src, EBW8PathVector* path);
MIREL_API void ImgImageToPath(const EROI<EC24>* src, EC24PathVector* path);
MIREL_API void ImgImageToPath(const EROI<EBW16>* src, EBW16PathVector* path);

MIREL_API void ImgPathToImage(EROI<EBW8>* dst, const EBW8PathVector* path);
MIREL_API void ImgPathToImage(EROI<EC24>* dst, const EC24PathVector* path);
MIREL_API void ImgPathToImage(EROI<EBW16>* dst, const EBW16PathVector* path);

MIREL_API void ImgImageToLineSegment(const EROI<EBW8>* src, EBW8Vector* segment, int x0, int y0, int x1, int y1);
MIREL_API void ImgImageToLineSegment(const EROI<EBW16>* src, EBW16Vector* segment, int x0, int y0, int x1, int y1);
MIREL_API void ImgImageToLineSegment(const EROI<EC24>* src, EC24Vector* segment, int x0, int y0, int x1, int y1);

MIREL_API void ImgLineSegmentToImage(EROI<EBW8>* dst, const EBW8Vector* segment, int x0, int y0, int x1, int y1);
MIREL_API void ImgLineSegmentToImage(EROI<EBW16>* dst, const EBW16Vector* segment, int x0, int y0, int x1, int y1);
MIREL_API void ImgLineSegmentToImage(EROI<EC24>* dst, const EC24Vector* segment, int x0, int y0, int x1, int y1);

MIREL_API void ImgLineSegmentToImage(EROI<EBW8>* dst, EBW8 value, int x0, int y0, int x1, int y1);
MIREL_API void ImgLineSegmentToImage(EROI<EBW16>* dst, EBW16 value, int x0, int y0, int x1, int y1);
MIREL_API void ImgLineSegmentToImage(EROI<EC24>* dst, EC24 value, int x0, int y0, int x1, int y1);

#endif  // MIREL_VECTOR_PATH_H_
