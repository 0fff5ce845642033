// Geometric moments of a ROI's pixels relative to its top-left pixel, and
// the centre of gravity, centroid and inertia built from them.
//
// Binary moments weigh 1 each pixel at or above `threshold`; weighted
// moments weigh each pixel by its grey level. Outputs come in ascending
// total degree, x powers first: M00, M10, M01, then M20, M11, M02, then M30,
// M21, M12, M03, then M40, M31, M22, M13, M04.
//
// Rounding. Up to the second order each row's sums are formed in 32 bits
// (wrapping) and added as unsigned to the float outputs at the row's end; M11
// comes from the row sums D of w * (x - y)^2 as (M20 + M02 - D) * 0.5. The
// third- and fourth-order forms add the terms of order two and above pixel
// by pixel in single precision, p * x^a * y^b with the factors multiplied
// left to right and y's powers formed once per row. Outputs are written only
// when the ROI has an image (1400 otherwise).
//
// ImgGravityCenter and ImgCentroid give the mean column and mean row of the
// qualifying pixels (weighted by grey level or by weights[grey] in the
// centroid), from 32-bit sums; 0, 0 when nothing qualifies. On EBW8 both
// honour the ROI's run mask. ImgInertia forms N, Sx, Sy (32-bit) and the row
// sums of Sxx, Sxy, Syy (32-bit a row, added to doubles) and gives
// (N*Sxx - Sx*Sx)/(N*N), (N*Sxy - Sy*Sx)/(N*N), (N*Syy - Sy*Sy)/(N*N), with the
// squares of the sums formed in 32 bits (they wrap once a sum passes 65535);
// the optional pointers receive Sx/N, Sy/N and N. With N = 0 nothing is
// written. A weights vector must have 256 elements (1613).
#ifndef MIREL_MEASURE_MOMENTS_H_
#define MIREL_MEASURE_MOMENTS_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/vector.h"

// Labels "ImgBinaryMoments ( first order)", "ImgBinaryMoments ( second order)";
// on EBW16 "ImgBinaryMoments (first order)(BW16)", "ImgBinaryMoments (second order)(BW16)".
MIREL_API void ImgBinaryMoments(const EROI<EBW8>* roi, unsigned int threshold, float& m00, float& m10, float& m01);
MIREL_API void ImgBinaryMoments(const EROI<EBW8>* roi, unsigned int threshold, float& m00, float& m10, float& m01,
                                float& m20, float& m11, float& m02);
MIREL_API void ImgBinaryMoments(const EROI<EBW16>* roi, unsigned int threshold, float& m00, float& m10, float& m01);
MIREL_API void ImgBinaryMoments(const EROI<EBW16>* roi, unsigned int threshold, float& m00, float& m10, float& m01,
                                float& m20, float& m11, float& m02);

// Labels "ImgWeightedMoments ( first order)" ... "( fourth order)"; on EBW16
// "ImgWeightedMoments (first order)(BW16)" ... "(fourth order)(BW16)".
MIREL_API void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01);
MIREL_API void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                                  float& m02);
MIREL_API void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                                  float& m02, float& m30, float& m21, float& m12, float& m03);
MIREL_API void ImgWeightedMoments(const EROI<EBW8>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                                  float& m02, float& m30, float& m21, float& m12, float& m03, float& m40, float& m31,
                                  float& m22, float& m13, float& m04);
MIREL_API void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01);
MIREL_API void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                                  float& m02);
MIREL_API void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                                  float& m02, float& m30, float& m21, float& m12, float& m03);
MIREL_API void ImgWeightedMoments(const EROI<EBW16>* roi, float& m00, float& m10, float& m01, float& m20, float& m11,
                                  float& m02, float& m30, float& m21, float& m12, float& m03, float& m40, float& m31,
                                  float& m22, float& m13, float& m04);

// The older spelling, kept as an alias of ImgWeightedMoments.
template <class P, class... Out>
inline void ImgWeighedMoments(const EROI<P>* roi, Out&... out) {
  ImgWeightedMoments(roi, out...);
}

// Labels "ImgGravityCenter", "ImgGravityCenter (BW16)".
MIREL_API void ImgGravityCenter(const EROI<EBW8>* roi, unsigned int threshold, float& x, float& y);
MIREL_API void ImgGravityCenter(const EROI<EBW16>* roi, unsigned int threshold, float& x, float& y);
// Label "ImgCentroid".
MIREL_API void ImgCentroid(const EROI<EBW8>* roi, float& x, float& y, const EBW8Vector* weights = nullptr);
// Labels "ImgInertia ( binary)", "ImgInertia ( weighted)".
MIREL_API void ImgInertia(const EROI<EBW8>* roi, unsigned int threshold, float& xx, float& xy, float& yy,
                          float* x = nullptr, float* y = nullptr, unsigned int* count = nullptr);
MIREL_API void ImgInertia(const EROI<EBW8>* roi, float& xx, float& xy, float& yy, float* x = nullptr,
                          float* y = nullptr, unsigned int* count = nullptr, const EBW8Vector* weights = nullptr);

#endif  // MIREL_MEASURE_MOMENTS_H_
