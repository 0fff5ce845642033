// Gradient images: the raw difference pair of each pixel, and a byte (or
// 16-bit value) looked up from the pair in a table that the caller prepares
// once.
//
// Gradient pair. An EBW32 pixel holds dx = p(x - 1, y) - p(x + 1, y) as a
// signed 16-bit number in its low half and dy = p(x, y - 1) - p(x, y + 1) in
// its high half. A position outside the ROI takes the nearest ROI pixel, so
// dx on the first column is p(0, y) - p(1, y) and a 1x1 ROI gives (0, 0).
// On 8-bit images both lie in -255..255; on 16-bit images the differences
// reach -65535..65535 and the pair keeps their low 16 bits.
//
// Lookup image. An EBW8 image of exactly 512 by 512 pixels: the pixel at
// column dx + 256 and row dy + 256 is the result for the pair (dx, dy). It is
// addressed from the pixel at (256, 256) through the image's own row pitch,
// so a lookup ROI inside a larger image reads as well as a packed image. A
// stored pair whose component lies outside -256..255 (never one made from an
// 8-bit image) reads the table at that component modulo 512, so no read
// leaves the table. The 16-bit forms take an EBW16 table of exactly 131072
// by 131072 pixels (0x20000, addressed from (65536, 65536)); ImgModulusImage
// on an EImage<EBW16> makes one of 131073 by 131073, which that test
// refuses with 1013, as the older design did. Tables of that size are beyond
// the memory of most machines, where SetSize reports 1303.
//
// ImgModulusImage: the pixel for (x, y) is sqrt(x*x + y*y) * scale + 0.5,
// truncated and limited to 0..255 (0..65535 for the 16-bit table); with
// scale 1 the pixel for (3, 4) is 5.
//
// ImgArgumentImage: with k = 256 / EToRadians(period), or 40.743664 (256 a
// full turn) when period is 0, the pixel for (x, y) is the low eight bits of
// trunc(atan2(y, x) * k + origin + 256.5), in single precision; the centre
// (0, 0) is 0 whatever origin is. Angles are in the foundation's unit
// (degrees).
//
// Errors: a null or void image (1400), dst of another size than src (1403),
// a lookup of the wrong size (1013); a failure writes nothing. Labels
// "ImgGradientVector", "ImgGradientScalar", "ImgModulusImage",
// "ImgArgumentImage", and the same followed by " (BW16)" for the 16-bit
// forms.
#ifndef MIREL_EDGE_GRADIENT_H_
#define MIREL_EDGE_GRADIENT_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

MIREL_API void ImgGradientVector(const EROI<EBW8>* src, EROI<EBW32>* dst);
MIREL_API void ImgGradientScalar(const EROI<EBW8>* src, EROI<EBW8>* dst, const EROI<EBW8>* lookup);
MIREL_API void ImgGradientScalar(const EROI<EBW32>* src, EROI<EBW8>* dst, const EROI<EBW8>* lookup);
MIREL_API void ImgModulusImage(EImage<EBW8>* lookup, float scale);
MIREL_API void ImgArgumentImage(EImage<EBW8>* lookup, EBW8 origin, float period);

MIREL_API void ImgGradientVector(const EROI<EBW16>* src, EROI<EBW32>* dst);
MIREL_API void ImgGradientScalar(const EROI<EBW16>* src, EROI<EBW16>* dst, const EROI<EBW16>* lookup);
MIREL_API void ImgGradientScalar(const EROI<EBW32>* src, EROI<EBW16>* dst, const EROI<EBW16>* lookup);
MIREL_API void ImgModulusImage(EImage<EBW16>* lookup, float scale);

#endif  // MIREL_EDGE_GRADIENT_H_
