// Conversions among the grey depths EBW8, EBW16 and EBW32, and the packing
// of an 8-bit image into 4:2:2 words.
//
// Narrowing shifts right and keeps the low bits, with no saturation
// (EBW16 0x0100 to EBW8 with shift 0 gives 0; pick shift 8 for the top
// byte). Widening shifts left in the destination's width. The shift count is
// taken modulo 32, as the processor takes it: 32 leaves the value as it is.
// Values are unsigned and shifts logical.
//
// ImgConvertTo422 stores for each pixel the word 0x8000 + pixel: the pixel
// in the low byte and the neutral chroma 128 in the high byte.
//
// Checks: the sizes first (1403), then the source and the destination not
// void (1400); so two void images of different sizes give 1403. A failed
// check leaves the destination untouched.
#ifndef MIREL_POINT_CONVERT_H_
#define MIREL_POINT_CONVERT_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgConvert(const EROI<EBW16>* src, EROI<EBW8>* dst, unsigned int shift);
MIREL_API void ImgConvert(const EROI<EBW32>* src, EROI<EBW8>* dst, unsigned int shift);
MIREL_API void ImgConvert(const EROI<EBW32>* src, EROI<EBW16>* dst, unsigned int shift);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EBW16>* dst, unsigned int shift);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EBW32>* dst, unsigned int shift);
MIREL_API void ImgConvert(const EROI<EBW16>* src, EROI<EBW32>* dst, unsigned int shift);

MIREL_API void ImgConvertTo422(const EROI<EBW8>* src, EROI<EBW16>* dst);

#endif  // MIREL_POINT_CONVERT_H_
