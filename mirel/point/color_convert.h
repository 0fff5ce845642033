// Conversions among the colour formats, between colour and grey, and between
// the integer grey depths and float images.
//
// Components are indexed 0, 1, 2 as in pixel.h. Per pixel:
//
//   EC15 -> EC24    each 5-bit field shifted left 3 (the low bits stay 0)
//   EC16 -> EC24    fields of 5, 6, 5 bits shifted left 3, 2, 3
//   EC24 -> EC15    c0 >> 3, c1 >> 3, c2 >> 3 in bits 0-4, 5-9, 10-14; bit 15
//                   keeps the value the destination word had
//   EC24 -> EC16    c0 >> 3, c1 >> 2, c2 >> 3 in bits 0-4, 5-10, 11-15
//   EC24 -> EC24A   the three components; the destination's alpha is kept
//   EC24A -> EC24   the three components; alpha dropped
//   EC24 + EBW8 -> EC24A     components from the colour, alpha from the grey
//   EC24A -> EC24 + EBW8     components to the colour, alpha to the grey
//   EBW8 -> EC15    v >> 3 in all three fields
//   EBW8 -> EC16    v >> 3, v >> 2, v >> 3
//   EC15 -> EBW8    ((f0 + f1 + f2) * 8) / 3, f the 5-bit fields
//   EC16 -> EBW8    (f0 * 8 + f1 * 4 + f2 * 8) / 3, the fields scaled to 8 bits
//   EBW8 -> EC24    v in all three components
//   EC24 -> EBW8    ((c0 + c1 + c2) * 85) >> 8: a fast divide by three, so
//                   white (255, 255, 255) gives 254
//
// Float to integer rounds and clamps, in this order: a value below 0 gives
// 0; a value above the limit gives the limit (for EBW32 every value from
// 4294967296 up gives 0xFFFFFFFF); otherwise the value plus one half,
// truncated, so 0.5 gives 1. EFLOAT32 sources compute in single precision,
// EFLOAT64 sources in double. Not-a-number is not a defined input; it gives 0.
// Integer to float gives the unsigned value, rounded to the float's precision
// (EBW32 0xFFFFFFFF gives 4294967296 as EFLOAT32).
//
// Checks: each source not void (1400), then each destination of the size of
// the source (1403), then each destination not void (1400). A failed check
// leaves every destination untouched. Labels "ImgConvert ( C15 to C24)" and
// the like for the colour forms, "ImgConvert (EROIFLOAT32 to EROIBW8)" and
// the like for the float forms.
//
// EC24 -> EBW8, EBW8 -> EC24 and EBW8 -> EFLOAT32 have fast paths that give
// the same bytes.
#ifndef MIREL_POINT_COLOR_CONVERT_H_
#define MIREL_POINT_COLOR_CONVERT_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

// Colour formats.
MIREL_API void ImgConvert(const EROI<EC15>* src, EROI<EC24>* dst);
MIREL_API void ImgConvert(const EROI<EC16>* src, EROI<EC24>* dst);
MIREL_API void ImgConvert(const EROI<EC24>* src, EROI<EC15>* dst);
MIREL_API void ImgConvert(const EROI<EC24>* src, EROI<EC16>* dst);
MIREL_API void ImgConvert(const EROI<EC24>* src, EROI<EC24A>* dst);
MIREL_API void ImgConvert(const EROI<EC24A>* src, EROI<EC24>* dst);
MIREL_API void ImgConvert(const EROI<EC24>* src, const EROI<EBW8>* alpha, EROI<EC24A>* dst);
MIREL_API void ImgConvert(const EROI<EC24A>* src, EROI<EC24>* dst, EROI<EBW8>* alpha);

// Colour and grey.
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EC15>* dst);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EC16>* dst);
MIREL_API void ImgConvert(const EROI<EC15>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvert(const EROI<EC16>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EC24>* dst);
MIREL_API void ImgConvert(const EROI<EC24>* src, EROI<EBW8>* dst);

// Float and integer grey.
MIREL_API void ImgConvert(const EROI<EFLOAT32>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvert(const EROI<EFLOAT32>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvert(const EROI<EFLOAT32>* src, EROI<EBW32>* dst);
MIREL_API void ImgConvert(const EROI<EFLOAT64>* src, EROI<EBW8>* dst);
MIREL_API void ImgConvert(const EROI<EFLOAT64>* src, EROI<EBW16>* dst);
MIREL_API void ImgConvert(const EROI<EFLOAT64>* src, EROI<EBW32>* dst);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EFLOAT32>* dst);
MIREL_API void ImgConvert(const EROI<EBW16>* src, EROI<EFLOAT32>* dst);
MIREL_API void ImgConvert(const EROI<EBW32>* src, EROI<EFLOAT32>* dst);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EFLOAT64>* dst);
MIREL_API void ImgConvert(const EROI<EBW16>* src, EROI<EFLOAT64>* dst);
MIREL_API void ImgConvert(const EROI<EBW32>* src, EROI<EFLOAT64>* dst);

#endif  // MIREL_POINT_COLOR_CONVERT_H_
