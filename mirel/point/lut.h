// Lookup tables, gain and offset, and caller's point functions.
//
// Each output pixel is a function of the input pixel at the same place.
// Source and destination must have the same size (1403) and neither may be
// void (1400); a failed check leaves the destination untouched. Source and
// destination may be the same ROI.
//
// ImgLut: dst = table[src]. The raw-pointer forms do not test the table
// pointer; the 8-bit one reports failures without a trace label. The vector
// forms need exactly 256 (EBW8Vector) or 65536 (EBW16Vector) entries, else
// 1613. From EBW16 to EBW8 the vector must have 2^bits entries (bits <= 16,
// else 1613) and the pixel's bits shift .. shift + bits - 1 index it
// (shift + bits > 16 is 1014); shift 0xFFFFFFFF selects the top bits.
//
// ImgGainOffset on EBW8 works in fixed point: G = (int)(gain * 32),
// O = (int)offset, and the value i becomes the table entry
// v = ((unsigned)(i * G) >> 5) + O, with v above 255 giving 255, or 0 when its
// top bit is set (a negative result). When the fast paths are on, the middle
// of each row (the 8-byte blocks from the first destination address that is
// a multiple of 8) is computed in 16 bits instead: the low 16 bits of x * G,
// shifted right by 5, plus the low 16 bits of O with signed saturation, then
// saturated to 0..255. The two agree while i * G stays below 65536 (gains up
// to 8); above that the block pixels of a row can differ from its head and
// tail. On EC24, entry x of component k is (int)(gain[k] * x + offset[k])
// in double, clamped to 0..255. On EBW16, ((p * G) >> 5) + O in 32 bits,
// clamped to 0..65535.
//
// ImgTransform on EBW8 with useTable non-zero calls fn exactly 256 times (for
// 0..255 in order) and applies the table; with useTable zero, and always on
// EBW16, it calls fn once for each pixel. "ImgTransform" is traced on leaving
// every path, also after a success (the code stays 0 then).
#ifndef MIREL_POINT_LUT_H_
#define MIREL_POINT_LUT_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/vector.h"

MIREL_API void ImgLut(const EROI<EBW8>* src, EROI<EBW8>* dst, const EBW8* table);
MIREL_API void ImgLut(const EROI<EBW8>* src, EROI<EBW8>* dst, const EBW8Vector* table);
MIREL_API void ImgLut(const EROI<EBW16>* src, EROI<EBW16>* dst, const EBW16* table);
MIREL_API void ImgLut(const EROI<EBW16>* src, EROI<EBW16>* dst, const EBW16Vector* table);
MIREL_API void ImgLut(const EROI<EBW16>* src, EROI<EBW8>* dst, const EBW8Vector* table, unsigned int shift);

MIREL_API void ImgGainOffset(const EROI<EBW8>* src, EROI<EBW8>* dst, float gain, float offset);
MIREL_API void ImgGainOffset(const EROI<EC24>* src, EROI<EC24>* dst, EColor gain, EColor offset);
MIREL_API void ImgGainOffset(const EROI<EBW16>* src, EROI<EBW16>* dst, float gain, float offset);

MIREL_API void ImgTransform(const EROI<EBW8>* src, EROI<EBW8>* dst, EBW8 (*fn)(EBW8), int useTable);
MIREL_API void ImgTransform(const EROI<EBW16>* src, EROI<EBW16>* dst, EBW16 (*fn)(EBW16));

#endif  // MIREL_POINT_LUT_H_
