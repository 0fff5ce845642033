// Preset 3x3 filters on 8-bit regions of interest: derivatives, Laplacians,
// high-pass and low-pass kernels with their coefficients in the code.
//
// Every filter has the form Name(src, dst). A null dst, or dst on the same
// pixels as src, filters src in place; the result then equals that of a
// separate destination with the replicated frame. Each works in integers
// with the constant and the shift of its row below. c is the centre pixel,
// N4 the sum of its four horizontal and vertical neighbours, N8 of all
// eight, l r t b the left, right, upper and lower neighbours; "capped"
// limits to 255.
//
//   ImgConvolSobelX      capped |gx|, gx weighing -1 0 1 / -2 0 2 / -1 0 1   (Z)
//   ImgConvolSobelY      capped |gy|, gy weighing -1 -2 -1 / 0 0 0 / 1 2 1   (Z)
//   ImgConvolSobel       capped |gx| + |gy|                                  (Z)
//   ImgConvolPrewittX    capped |px|, -1 0 1 in each row
//   ImgConvolPrewittY    capped |py|, -1 -1 -1 / 0 0 0 / 1 1 1               (Z)
//   ImgConvolPrewitt     capped |px| + |py|                                  (Z)
//   ImgConvolGradientX   |l - r|
//   ImgConvolGradientY   |t - b|                   label "ConvolGradientY (BW8)"
//   ImgConvolGradient    capped |l - r| + |t - b|
//   ImgConvolLaplacianX  |l - 2c + r|                                        (L)
//   ImgConvolLaplacianY  |t - 2c + b|                                        (L)
//   ImgConvolLaplacian4  capped |N4 - 4c|                                    (Z)
//   ImgConvolLaplacian8  capped |N8 - 8c|                                    (Z)
//   ImgConvolHighpass1   capped |5c - N4|                                    (Z)
//   ImgConvolHighpass2   9c - N8 limited to 0..255, no absolute value        (Z)
//   ImgConvolLowpass1    ((c + N8) * 14) >> 7; ImgConvolUniform3x3 is the same
//   ImgConvolLowpass2    N8 >> 3                                             (Z)
//   ImgConvolLowpass3    (4c + 2 N4 + corners) >> 4; ImgConvolGaussian3x3 is the same
//
// No result is rounded to nearest: a flat 255 gives 251 under Lowpass1,
// 255 under Lowpass2 and Lowpass3.
//
// Frames. A window position outside the ROI takes the nearest ROI pixel
// (the replicated frame), except on one form: with the fast paths off
// (EGetMMX() == 0) and a separate destination, the filters marked (Z)
// compute their frame pixels (first and last row and column) with 0 for
// every position outside the ROI, through an absolute value and a cap at
// 255 (Highpass2 included). A flat image then shows a strong response along
// its edge.
//
// (L) The one-dimensional Laplacians can reach 510. Pixel-by-pixel code
// stores the low eight bits (510 gives 254); on the fast paths a row is a
// head up to an 8-byte aligned destination address, blocks of 8 pixels and
// a tail, and the block pixels saturate at 255 while head and tail keep the
// low-eight-bits rule. These two are the only filters whose paths differ
// inside the image.
//
// Errors: null or void src (1400); a separate dst that is void (1400) or of
// another size (1403). The in-place forms hold a copy of the rows they
// overwrite and report 1303 when it cannot be had; the vertical ones then
// also trace "ChrConvolGradientY", "ChrConvolLaplacianY" (scalar) or
// "ChrMMXConvolGradientY", "ChrMMXConvolLaplacianY" (fast path), and the
// vertical Gaussian pass "ChrConvolGaussianY" or "ChrMMXConvolGaussianY".
// A failure writes nothing. Labels are the names followed by " (BW8)".
//
// ImgConvolRoberts: the saturated sum of |p(x, y) - p(x + 1, y + 1)| and
// |p(x + 1, y) - p(x, y + 1)|; on the last column twice |p(x, y) -
// p(x, y + 1)|, on the last row twice |p(x, y) - p(x + 1, y)|, saturated, and
// 0 at the bottom-right pixel. The loop bounds are dst's size (there is no
// same-size check; a dst larger than src is refused with 1403 so that
// nothing outside src is read). A null dst filters src in place through a
// temporary image (when it cannot be had: 1303 and nothing written). Label
// "ImgConvolRoberts".
//
// 16-bit twins (EROI<EBW16>): the same filters, formulas and constants, so
// a flat 65535 gives 64511 under Lowpass1 and 65279 under UniformX. Caps
// are at 65535; the one-dimensional Laplacians store the low 16 bits of
// values up to 131070. The result does not depend on EGetMMX(): a separate
// destination always takes the zero frame on the filters marked (Z), in
// place the replicated frame. Roberts saturates at 65535. Labels are the
// names followed by " (BW16)" ("ConvolGradientY (BW16)", "ImgConvolRoberts
// (BW16)"); a failed row copy of the vertical in-place forms also traces
// "ChrConvolGradientY (BW16)", "ChrConvolLaplacianY (BW16)" or
// "ChrConvolGaussianY (BW16)".
#ifndef MIREL_FILTER_PRESET_FILTERS_H_
#define MIREL_FILTER_PRESET_FILTERS_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

MIREL_API void ImgConvolSobelX(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolSobelY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolSobel(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolPrewittX(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolPrewittY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolPrewitt(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGradientX(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGradientY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGradient(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacianX(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacianY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacian4(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacian8(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolHighpass1(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolHighpass2(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLowpass1(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLowpass2(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLowpass3(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolUniform3x3(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGaussian3x3(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolRoberts(EROI<EBW8>* src, EROI<EBW8>* dst);

MIREL_API void ImgConvolSobelX(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolSobelY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolSobel(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolPrewittX(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolPrewittY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolPrewitt(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGradientX(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGradientY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGradient(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacianX(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacianY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacian4(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacian8(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolHighpass1(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolHighpass2(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLowpass1(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLowpass2(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLowpass3(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolUniform3x3(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGaussian3x3(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolRoberts(EROI<EBW16>* src, EROI<EBW16>* dst);

// For a source held const: the same filters into a destination that must be
// given. A const source is never filtered in place: without a destination
// the call is refused as a missing source is (1400 under the filter's label)
// and nothing is written. A destination on the source's own pixels is still
// filtered in place.
MIREL_API void ImgConvolSobelX(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolSobelY(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolSobel(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolPrewittX(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolPrewittY(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolPrewitt(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGradientX(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGradientY(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGradient(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacianX(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacianY(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacian4(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLaplacian8(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolHighpass1(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolHighpass2(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLowpass1(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLowpass2(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolLowpass3(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolUniform3x3(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolGaussian3x3(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolRoberts(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvolSobelX(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolSobelY(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolSobel(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolPrewittX(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolPrewittY(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolPrewitt(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGradientX(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGradientY(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGradient(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacianX(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacianY(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacian4(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLaplacian8(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolHighpass1(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolHighpass2(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLowpass1(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLowpass2(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolLowpass3(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolUniform3x3(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolGaussian3x3(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvolRoberts(const EROI<EBW16>* src, EROI<EBW16>* dst);

#endif  // MIREL_FILTER_PRESET_FILTERS_H_
