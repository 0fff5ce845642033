// The bit-image engine: copy, logic, conversion and thresholds on packed
// bit images (EROI<EBW1>).
//
// Row layout. Eight pixels a byte, the first pixel of a byte in its most
// significant bit; a set bit is a pixel that is on. A row of `width` pixels
// spans ceil(width / 8) bytes. The bits of the last byte behind the row's
// last pixel are not pixels, and the operations below keep them as they
// were, except where said. GetBitOffset(0, 0) is the position (0 to 7, from
// the most significant bit) of the ROI's first pixel in its byte; a ROI is
// aligned when it is 0.
//
// Every operation exists twice. The ...Aligned form takes only ROIs that
// start on a byte (else it throws 1423), works on whole bytes, and throws
// Corvane::Talmeer::Exception on failure, with the code of the error state
// for a failed check (1400 null or void ROI, 1403 sizes differ) and 1003
// for an operation it does not allow, which it does not set in the state.
// The plain form takes any ROI: a null pointer is 1400; a bit ROI that
// starts inside a byte is moved onto an aligned temporary first (and a
// destination moved back afterwards, leaving every bit outside the ROI as it
// was); a throw becomes the error state and the label below is traced. The
// plain forms never throw.
//
// Operations (a and b the operands, d the destination's old bit):
//   ImgCopy(value, dst)          every pixel set when value is non-zero, else clear
//   ImgCopy(src, dst)            copy
//   ImgOper(op, value, dst)      ALO_COPY only: the fill of ImgCopy
//   ImgOper(op, src, dst)        ALO_COPY, ALO_INVERT
//   ImgOper(op, a, b, dst)       ALO_BIT_AND a & b, ALO_BIT_OR a | b,
//                                ALO_BIT_XOR a ^ b, ALO_SET_WHERE_ZERO b where
//                                a is clear (d where set), ALO_SET_WHERE_NONZERO
//                                b where a is set (d where clear),
//                                ALO_LESS_OR_EQUAL ~a | b
// Source and destination may be the same ROI.
//
// Conversions to bits set a bit where the pixel is non-zero; the thresholds
// where it is at least `threshold`. A threshold above 65535 is a mode of
// IMG_THRESHOLD_MODES, resolved from the source's histogram over the full
// range with `relative`; an 8-bit threshold from 256 to 65535 sets no bit.
// These write whole bytes in the aligned form: the last byte of a row gets
// its pixels with the other bits cleared, and a row whose width is a
// multiple of 8 gets one zero byte behind it (a bit image's row pitch leaves
// room for it; on a ROI inside a wider image it is the next 8 pixels).
// Conversions from bits write `on` for a set bit and 0 for a clear one.
//
// Labels: "ImgCopy (BW1)" ("ImgCopy(BW1)" when the copy of two ROIs fails
// inside), "ImgOper (BW1)", "ImgConvert (BW8 -> BW1)", "ImgConvert (BW16 ->
// BW1)", "ImgConvert (BW32 -> BW1)", "ImgConvert (BW1 -> BW8)", "ImgConvert
// (BW1 -> BW16)", "ImgConvert (BW1 -> BW32)", "ImgThreshold (BW8 -> BW1)",
// "ImgThreshold (BW16 -> BW1)".
//
// ImgBW1Alignment copies any bit ROI into an aligned one of its size, and
// ImgBW1UnAlignment an aligned one into any ROI, keeping the destination's
// bits outside it. Both throw like the ...Aligned forms: 1423 when the side
// that must be aligned is not (ImgBW1UnAlignment tests that first).
#ifndef MIREL_POINT_BITS_H_
#define MIREL_POINT_BITS_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/point/arith.h"

MIREL_API void ImgBW1Alignment(const EROI<EBW1>* src, EROI<EBW1>* dst);
MIREL_API void ImgBW1UnAlignment(const EROI<EBW1>* src, EROI<EBW1>* dst);

MIREL_API void ImgCopyAligned(EBW1 value, EROI<EBW1>* dst);
MIREL_API void ImgCopy(EBW1 value, EROI<EBW1>* dst);
MIREL_API void ImgCopyAligned(const EROI<EBW1>* src, EROI<EBW1>* dst);
MIREL_API void ImgCopy(const EROI<EBW1>* src, EROI<EBW1>* dst);

MIREL_API void ImgOperAligned(ARITH_LOGIC_OPERATIONS op, EBW1 value, EROI<EBW1>* dst);
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW1 value, EROI<EBW1>* dst);
MIREL_API void ImgOperAligned(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* src, EROI<EBW1>* dst);
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* src, EROI<EBW1>* dst);
MIREL_API void ImgOperAligned(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* a, const EROI<EBW1>* b,
                              EROI<EBW1>* dst);
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* a, const EROI<EBW1>* b, EROI<EBW1>* dst);

MIREL_API void ImgConvertAligned(const EROI<EBW8>* src, EROI<EBW1>* dst);
MIREL_API void ImgConvert(const EROI<EBW8>* src, EROI<EBW1>* dst);
MIREL_API void ImgConvertAligned(const EROI<EBW16>* src, EROI<EBW1>* dst);
MIREL_API void ImgConvert(const EROI<EBW16>* src, EROI<EBW1>* dst);
MIREL_API void ImgConvertAligned(const EROI<EBW32>* src, EROI<EBW1>* dst);
MIREL_API void ImgConvert(const EROI<EBW32>* src, EROI<EBW1>* dst);

MIREL_API void ImgConvertAligned(const EROI<EBW1>* src, EROI<EBW8>* dst, unsigned char on);
MIREL_API void ImgConvert(const EROI<EBW1>* src, EROI<EBW8>* dst, unsigned char on);
MIREL_API void ImgConvertAligned(const EROI<EBW1>* src, EROI<EBW16>* dst, unsigned short int on);
MIREL_API void ImgConvert(const EROI<EBW1>* src, EROI<EBW16>* dst, unsigned short int on);
MIREL_API void ImgConvertAligned(const EROI<EBW1>* src, EROI<EBW32>* dst, unsigned int on);
MIREL_API void ImgConvert(const EROI<EBW1>* src, EROI<EBW32>* dst, unsigned int on);

MIREL_API void ImgThresholdAligned(const EROI<EBW8>* src, EROI<EBW1>* dst, unsigned int threshold,
                                   float relative = 0.0f);
MIREL_API void ImgThreshold(const EROI<EBW8>* src, EROI<EBW1>* dst, unsigned int threshold, float relative = 0.0f);
MIREL_API void ImgThresholdAligned(const EROI<EBW16>* src, EROI<EBW1>* dst, unsigned int threshold,
                                   float relative = 0.0f);
MIREL_API void ImgThreshold(const EROI<EBW16>* src, EROI<EBW1>* dst, unsigned int threshold,
                            float relative = 0.0f);

#endif  // MIREL_POINT_BITS_H_
