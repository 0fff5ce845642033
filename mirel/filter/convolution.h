// Convolution of an 8-bit region of interest with a caller's kernel.
//
// The kernel is applied as a correlation (not flipped): element (0, 0)
// weighs the upper-left pixel of the window, and the anchor is element
// (SizeX / 2, SizeY / 2), so an even width of 4 covers offsets -2 to +1.
//
// The kernel's size and rectifier choose one of three arithmetics, and the
// choice shows in the output:
//
//   ImgConvolKernel, 3x3, rectifier 2        8-bit fixed point: coefficients
//       gain * c * 256 truncated to 16 bits, sum >> 8, clamped to 0..255.
//       Offset and OutsideValue are not used.
//   ImgConvolKernel, 3x3 with rectifier 1 or 3, 5x5 or 7x7 with rectifier
//   not 0; every ImgConvolSymmetricKernel    15-bit fixed point:
//       coefficients gain * c * 32768 truncated to 32 bits, the sum plus
//       Offset << 15 wrapping at 32 bits, >> 15; rectifier 1 negates gain and
//       offset and clamps, 2 clamps, 3 takes the absolute value and caps at
//       255. A 3x3 rectifier outside 0..3 leaves dst as it was, with no error.
//   ImgConvolKernel, rectifier 0 or any other size   floating point: sums in
//       double precision, truncated; rectifier 1 gives -v for v <= 0 and 0
//       above, 2 gives max(v, 0), 3 gives |v|, anything else v; then Offset
//       is added and the result clamped to 0..255.
//
// Gain: when the coefficient sum is significant (|sum| > 1e-5 * sum of
// absolute values) the kernel's Gain is divided by it, so smoothing kernels
// keep the mean grey; otherwise Gain is used as it is.
//
// Borders: the fixed-point arithmetics replicate the nearest pixel of the
// ROI; the floating-point one takes OutsideValue for positions outside it.
// Pixels of the parent image beyond the ROI are never read, and every pixel
// of dst is written.
//
// The floating-point 3x3 frame (first and last rows and columns) keeps two
// peculiarities: the pixel below the centre is weighed by the coefficient
// right of the centre (element 7 of the table is not used there), and on the
// frame the kernel's Offset selects the rectifier mode while nothing is added.
//
// Threads: the packed coefficients of the fixed-point forms are made for
// each call in storage of its own, so calls on several threads at once give
// what each gives alone.
//
// In place: with src and dst on the same pixels, the 8-bit fixed-point
// arithmetic gives what a separate destination would. The other arithmetics
// read the image they write: the rows above and the pixels to the left of a
// pixel are already filtered when it is computed.
//
// ImgConvolSymmetricKernel reads one octant of a 3x3, 5x5 or 7x7 kernel
// (indices 0 1 4; 0 1 2 6 7 12; 0 1 2 3 8 9 10 16 17 24) and mirrors it in
// both axes and the diagonal; the rest of the table is ignored.
//
// On 16-bit pixels (EROI<EBW16>) the same routes, formulas and borders hold,
// with 65535 in place of 255 in every clamp and cap. Sums stay 32-bit and
// wrap, which bright 16-bit images reach at ordinary gains (a coefficient of
// 1.0 is 32768 in the fifteen-bit arithmetic). The eight-bit arithmetic keeps
// its coefficients in 16 bits on every pixel, and the fifteen-bit one takes
// the offset through floating point as Offset * 32768. The results do not
// depend on EGetMMX().
//
// Errors: sizes differ (1403) or a ROI is void (1400); kernel without data
// (1700); kernel sizes negative or larger than its storage (1703); out of
// memory (1303); symmetric form with rectifier 0 (1702) or with a size other
// than 3, 5 or 7 square (1703). A failure writes nothing.
#ifndef MIREL_FILTER_CONVOLUTION_H_
#define MIREL_FILTER_CONVOLUTION_H_

#include "mirel/filter/kernel.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

// Label "ImgConvolKernel BW8".
MIREL_API void ImgConvolKernel(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);
// Label "ImgConvolSymmetricKernel".
MIREL_API void ImgConvolSymmetricKernel(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel);

// Label "ImgConvolKernel BW16".
MIREL_API void ImgConvolKernel(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);
// Label "ImgConvolSymmetricKernel BW16".
MIREL_API void ImgConvolSymmetricKernel(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel);

#endif  // MIREL_FILTER_CONVOLUTION_H_
