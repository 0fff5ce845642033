// Forward two-dimensional Fourier transforms of 8-bit images into complex
// images, and the complex images made visible or measured.
//
// Input of both transforms: with s = scale / sqrt(W * H), the sample at
// (x, y) is p(x, y) * s, the grey value negated first when x + y is odd, with
// imaginary part 0. The checkerboard puts the zero frequency at (W / 2,
// H / 2); nothing is multiplied at the end. The rows are transformed and
// stored, then the columns, all values held as 32-bit floats in between.
//
// ImgSlowDFT takes any size. Its twiddle table of n values is a running
// product from (1, 0) by the single-precision rotation of -6.2831855 / n, so
// it gathers single-precision error along the table; each output sums the
// table at (x * u) mod n times the samples, the real sum in double and the
// imaginary sum in single precision. A flat 4x4 image of grey g with scale 1
// gives 4g at (2, 2) and (near) 0 elsewhere.
//
// ImgFastDFT takes powers of two (1 included) and refuses any other width or
// height with 2600. Each row, then each column, is put in bit-reversed order
// and run through radix-2 butterflies of span m = 1, 2, 4 .. n / 2. The
// rotation of a stage starts at (1, 0) and advances after each offset j by
// (c, d): c = 1 - 2 sin(-1.5707964 / m)^2, and d = sin(-3.1415927 / m) in the
// column pass but sin(-0.5 / m) in the row pass. The row pass's rotation is
// thus not the Fourier one beyond m = 1, and the result differs from
// ImgSlowDFT's; that is the operation's long-standing output and is kept.
// Every instruction-set path gives the same bits as the scalar one.
//
// ImgComplexModulus: m = sqrt(re^2 + im^2) * scale, then ln(m + 1) * logScale
// when logarithmic is not 0; truncated, and 255 when the integer taken as
// unsigned exceeds 255 (a negative value too).
// ImgComplexRescaledModulus: the same with the modulus weighted first by
// ((x - cx)^2 + (y - cy)^2) * (scale / (cx^2 + cy^2)), cx = W / 2, cy = H / 2,
// which lifts high frequencies. Its columns run up to the ROI's height, as a
// square ROI needs: on a ROI wider than high the columns from H on are not
// written; on one higher than wide the row stops at its end.
// ImgComplexArgument: the angle as a fraction of a turn, atan2(im, re) *
// 0.15915494 plus 1 when negative, times 256, truncated and capped at 255;
// (0, 0) gives 0, (-1, 0) 128 and (0, -1) 192.
// ImgComplexDiscEnergy: a cumulative radial profile in an EVector of kind 7
// (32-bit float items, group length 1). With n = trunc(sqrt(cx^2 + cy^2)) + 1
// bins, bin r sums re^2 + im^2 of the pixels at distance r (truncated) from
// the centre; bin 0 is then set to 0 and the bins are summed up from bin 1
// on, so element r is the energy in the disc of radius r + 1 less the centre
// bin. A vector with fewer than n groups is set to n groups; a longer one
// keeps its length and only its first n elements are written.
//
// Errors: a null or void image (1400); sizes that differ (1403, not for the
// disc energy); a size not a power of two (2600, ImgFastDFT); exhausted
// memory for the tables (1303); the vector: not of kind 7 (1607), items not
// float (1606), not 32-bit (1605), group length not 1 (1611), no data
// (1601). A failure writes nothing. Labels are the operations' names.
#ifndef MIREL_EDGE_FOURIER_H_
#define MIREL_EDGE_FOURIER_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/untyped_vector.h"

MIREL_API void ImgSlowDFT(const EROI<EBW8>* src, EROI<EComplex64>* dst, float scale);
MIREL_API void ImgFastDFT(const EROI<EBW8>* src, EROI<EComplex64>* dst, float scale);
MIREL_API void ImgComplexModulus(const EROI<EComplex64>* src, EROI<EBW8>* dst, float scale, int logarithmic,
                                 float logScale);
MIREL_API void ImgComplexRescaledModulus(const EROI<EComplex64>* src, EROI<EBW8>* dst, float scale,
                                         int logarithmic, float logScale);
MIREL_API void ImgComplexArgument(const EROI<EComplex64>* src, EROI<EBW8>* dst);
MIREL_API void ImgComplexDiscEnergy(const EROI<EComplex64>* src, EVector* energy);

#endif  // MIREL_EDGE_FOURIER_H_
