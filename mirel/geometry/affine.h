// Affine resampling: ImgLinearTransform, ImgScaleRotate, ImgRegister.
//
// Six coefficients a, b, c, d, e, f map a source position (x, y) to the
// destination position X = a x + b y + c, Y = d x + e y + f, in continuous
// coordinates where pixel (i, j) covers the square (i, j)-(i+1, j+1). The
// map is inverted once in floating point; the pixel loop then walks the
// source in 16.16 fixed point, by addition only. Every destination pixel is
// written; one whose sample falls outside the source is 0.
//
// interpolationBits: 0 nearest neighbour; 4 or 8 bilinear with that many
// fraction bits. Bilinear results truncate (no rounding term), so they lean
// downwards by design. Within half a pixel of the source's border the
// interpolation degrades to one dimension, then to the corner pixel itself.
//
// ImgLinearTransform, in the order checked:
//   1400  the source is void (EBW16, EC24: or the destination is void)
//         An EBW8 destination that is void ends the call with no error set.
//   1411  the determinant a e - b d is exactly 0
//   1007  interpolationBits is not 0, 4 or 8
//   1411  the source is 32768 pixels or more wide or high (the 16.16 loop
//         cannot address it)
// Nothing is written when a check fails. Source and destination may differ
// in size, but must not lie on the same image (use the in-place
// ImgScaleRotate for that).
//
// ImgScaleRotate builds the coefficients so that the source pivot lands on
// the destination pivot, the scales act along the source axes, and a
// positive angle (in the unit of EToRadians) turns the image anticlockwise
// on the screen. The in-place forms resample from a copy of the image; the
// part that maps from outside becomes 0.
//
// ImgRegister maps source pivots onto destination pivots: one pair shifts,
// two pairs shift, rotate and (with `scaling` non-zero) scale uniformly,
// three pairs give the exact affine map, or 1050 when the three source
// pivots are collinear. The pivot order of ImgRegister puts the destination
// second, unlike the other two.
#ifndef MIREL_GEOMETRY_AFFINE_H_
#define MIREL_GEOMETRY_AFFINE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgLinearTransform(const EROI<EBW8>* src, float a, float b, float c, float d, float e, float f,
                                  EROI<EBW8>* dst, int interpolationBits);
MIREL_API void ImgLinearTransform(const EROI<EBW16>* src, float a, float b, float c, float d, float e,
                                  float f, EROI<EBW16>* dst, int interpolationBits);
MIREL_API void ImgLinearTransform(const EROI<EC24>* src, float a, float b, float c, float d, float e, float f,
                                  EROI<EC24>* dst, int interpolationBits);

MIREL_API short ImgScaleRotate(const EROI<EBW8>* src, float srcPivotX, float srcPivotY, float dstPivotX,
                               float dstPivotY, float scaleX, float scaleY, float angle, EROI<EBW8>* dst,
                               int interpolationBits);
MIREL_API void ImgScaleRotate(const EROI<EBW16>* src, float srcPivotX, float srcPivotY, float dstPivotX,
                              float dstPivotY, float scaleX, float scaleY, float angle, EROI<EBW16>* dst,
                              int interpolationBits);
MIREL_API void ImgScaleRotate(const EROI<EC24>* src, float srcPivotX, float srcPivotY, float dstPivotX,
                              float dstPivotY, float scaleX, float scaleY, float angle, EROI<EC24>* dst,
                              int interpolationBits);
// In place.
MIREL_API short ImgScaleRotate(EROI<EBW8>* image, float srcPivotX, float srcPivotY, float dstPivotX,
                               float dstPivotY, float scaleX, float scaleY, float angle, int interpolationBits);
MIREL_API void ImgScaleRotate(EROI<EBW16>* image, float srcPivotX, float srcPivotY, float dstPivotX,
                              float dstPivotY, float scaleX, float scaleY, float angle, int interpolationBits);

// One pivot: a pure translation.
MIREL_API void ImgRegister(const EROI<EBW8>* src, EROI<EBW8>* dst, float srcPivotX, float srcPivotY,
                           float dstPivotX, float dstPivotY, int interpolationBits);
MIREL_API void ImgRegister(const EROI<EBW16>* src, EROI<EBW16>* dst, float srcPivotX, float srcPivotY,
                           float dstPivotX, float dstPivotY, int interpolationBits);
MIREL_API void ImgRegister(const EROI<EC24>* src, EROI<EC24>* dst, float srcPivotX, float srcPivotY,
                           float dstPivotX, float dstPivotY, int interpolationBits);
// Two pivots.
MIREL_API void ImgRegister(const EROI<EBW8>* src, EROI<EBW8>* dst, float srcPivot0X, float srcPivot0Y,
                           float srcPivot1X, float srcPivot1Y, float dstPivot0X, float dstPivot0Y,
                           float dstPivot1X, float dstPivot1Y, int interpolationBits, int scaling);
MIREL_API void ImgRegister(const EROI<EBW16>* src, EROI<EBW16>* dst, float srcPivot0X, float srcPivot0Y,
                           float srcPivot1X, float srcPivot1Y, float dstPivot0X, float dstPivot0Y,
                           float dstPivot1X, float dstPivot1Y, int interpolationBits, int scaling);
MIREL_API void ImgRegister(const EROI<EC24>* src, EROI<EC24>* dst, float srcPivot0X, float srcPivot0Y,
                           float srcPivot1X, float srcPivot1Y, float dstPivot0X, float dstPivot0Y,
                           float dstPivot1X, float dstPivot1Y, int interpolationBits, int scaling);
// Three pivots.
MIREL_API void ImgRegister(const EROI<EBW8>* src, EROI<EBW8>* dst, float srcPivot0X, float srcPivot0Y,
                           float srcPivot1X, float srcPivot1Y, float srcPivot2X, float srcPivot2Y,
                           float dstPivot0X, float dstPivot0Y, float dstPivot1X, float dstPivot1Y,
                           float dstPivot2X, float dstPivot2Y, int interpolationBits);
MIREL_API void ImgRegister(const EROI<EBW16>* src, EROI<EBW16>* dst, float srcPivot0X, float srcPivot0Y,
                           float srcPivot1X, float srcPivot1Y, float srcPivot2X, float srcPivot2Y,
                           float dstPivot0X, float dstPivot0Y, float dstPivot1X, float dstPivot1Y,
                           float dstPivot2X, float dstPivot2Y, int interpolationBits);
MIREL_API void ImgRegister(const EROI<EC24>* src, EROI<EC24>* dst, float srcPivot0X, float srcPivot0Y,
                           float srcPivot1X, float srcPivot1Y, float srcPivot2X, float srcPivot2Y,
                           float dstPivot0X, float dstPivot0Y, float dstPivot1X, float dstPivot1Y,
                           float dstPivot2X, float dstPivot2Y, int interpolationBits);

#endif  // MIREL_GEOMETRY_AFFINE_H_
