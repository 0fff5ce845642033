// The older operations on the untyped EVector: extremes and transitions of
// a profile, arithmetic with a constant, shifts, a three-tap filter, pixels
// along a line, and the transition scan of an image line.
//
// All return 0 or the error code. Their checks are armed: each code is set
// before its test, and a later failure without a code of its own is reported
// with the last code armed. Item width codes: 2 (8-bit), 4 (16-bit), 8
// (32-bit); data types: 1 unsigned, 2 signed. Null vectors: 1601. An
// operation may have restructured its destination before it fails.
//
// ImgGetVectExtremes. A scan with hysteresis over the first group of `src`
// (GetGroupLength() items): an item below `low` opens a valley, which lasts
// while the items stay below `high`; an item above `high` opens a peak, which
// lasts while they stay above `low`; an item at or below `low` and at or above
// `high` at once (crossed levels) opens nothing. The item that closes an
// extreme is looked at again as the next one's opener. Each extreme is a
// group {position, length, area} of `dst`, made of kind 5 and use 6 unless it
// is of kind 5 already: with `start` and `end` the counts of items read when
// it opened and closed, the position is ((start + end - 1) >> 1) - 1 and the
// length end - start; the area sums item - high over a valley and item - low
// over a peak. An extreme that runs to the end of the profile closes one past
// it. Checks: 1604 no group, 1605 width code, 1606 data type (2 for the int
// levels, 1 for the unsigned ones), 1601 no data. Room runs out: the room
// grows by 24576 bytes and writing goes on at the old room in groups times 4
// bytes from the start, over earlier groups; give `dst` enough room.
// Label "ImgGetVectExtremes".
//
// ImgGetVectTransition. Pairs of neighbouring items a, b of the first group
// of `src` that lie on either side of `level` (a <= level < b, or b <= level
// < a) give groups {index of a, b - a} in `dst`, restructured to 32-bit
// signed items, two a group, with room for GetAllocatedSize() / 8 groups when
// it has room, else (group length / 2) / 8, and use 7. Checks: 1604, 1605,
// 1606 as above, 1601 no data (so a destination without room and a short
// profile fail), 1608 when the transitions overflow that room, which leaves
// the group count as the restructuring set it. Label "ImgGetVectTransition".
//
// ImgVect1c2. Item i of `dst` = item i of `src` combined with the constant
// cast to the item type, for the first last - first + 1 items (first and last
// are group indices and only give the number of items; last -1 means the last
// group). `dst` takes the source's structure. Operations: 0 copy, 1 bitwise
// complement, 2 add, 3 subtract, 4 multiply, 5 divide, 6 modulo, 7 shift
// left, 8 shift right, 9 (a + b) >> 1, 13 and, 14 or, 15 xor, 19 min, 20 max,
// 22 the constant where the item is not 0, 35 the constant everywhere. On 8
// and 16-bit items sums, products and left shifts saturate at the maximum and
// differences at the minimum (only there); on 32-bit items they wrap, and
// (a + b) >> 1 is taken on the wrapped 32-bit sum. On unsigned 8-bit items a
// product or left shift of 32768 to 65535 is not saturated and keeps its low
// byte. A shift by more than the item's width in bits (8, 16; for 32-bit items
// 33 or more; a negative constant counts as more) sets every non-zero item to
// the maximum (left) or every item to 0 (right); a 32-bit shift by 32 gives 0
// (left, or right on unsigned items) and the sign (right on signed items).
// Division and modulo by 0 fill the items with all ones and give 1411. Other
// operations: nothing done on unsigned 8-bit items, 1003 on the others.
// Checks: 1606, 1605, then 1604 when first is negative or not below the group
// count, 1010 when last is below first, both traced "CheckGroups" before
// "ImgVect1c2", then 1400 no data. The form with a double constant does no
// work: 1605 on float items, 1606 otherwise.
//
// ImgVectDataShift. Shifts items in place, right by `shift` or left by
// -shift, modulo 32; logically on unsigned items, arithmetically right on
// signed ones. The groups: first 0 and last 0, all groups in use; first 0, the
// first `last` groups; last 0, the groups in use counted from group `first`
// (which passes the groups in use: the room must be there, else 1604); both
// non-zero, the first `last` groups, provided last - first + 1 is below the
// group count, first and last are below the group count less 1, and first is
// above last (1604). Then 1601 no data, 1606, 1605. Label "ImgVectDataShift".
//
// ImgConvolVect. For groups first to last (last -1 the last group) of `src`,
// a three-tap filter of the kernel's first three coefficients k0, k1, k2
// (scaled by gain / their sum when the sum is not 0, by the gain when it is
// not 0) into `dst`, which takes last - first + 1 groups of the source's
// structure. With o the kernel's outside value, item j of a group of length L
// gives, as a float sum: o k0 + p[0] k1 + p[1] k2 at j = 0; p[L-2] k0 +
// p[L-1] k1 + p[L] k2 at j = L - 1, reading the next group's first item (o
// where the vector has none); p[j-1] k0 + p[j] k1 + o k2 elsewhere. The sum is
// truncated, rectified (1: 0 for a positive value else its negation; 2: 0
// for a negative value; 3: the absolute value), offset and clamped to the
// item type. Checks: 1609 unless 0 <= first <= last and the groups lie in the
// room, 1605, 1606, then the restructuring, 1703 unless size X is 3 or size Y
// is 1, 1700 no coefficients, 1701 fewer than 3 coefficients. Label
// "ImgConvolVect".
//
// ImgLineSegToVect. The pixels of the line from (x0, y0) to (x1, y1) (the
// walk of ImgImageToLineSegment) as groups {value, x, y} of a vector of kind
// 4 (made so unless it is of kind 4 with room for them). The coordinates may
// reach the ROI's width and height (x0 1013, y0 1014, x1 1015, y1 1016), so
// a line may read one past the ROI; pixels past the image read as 0. Then
// 1601 no data, 1400 no image. Label "ImgLineSegToVect".
//
// ImgVectToLineSeg. Writes each group's value at its point: a value below 255
// is written as 255, any other as its low byte. Without a line, the vector
// must be of kind 4 and use 5 (1602), have data (1601) and its first and last
// points within 0 to the width and height (1007), then an image (1400); the
// row moves one row at a time towards each group's y. With a line (x0 1012,
// y0 1013, x1 1014, y1 1015, within 0 to the width and height), the vector
// must be of kind 4 with a group for each pixel (1602), and have data and an
// image (1601); group k goes to pixel k. Points past the image are not
// written. Label "ImgVectToLineSeg".
//
// ImgTransitionScan. Walks the line and, from its second pixel on, records
// where the pixels cross `level`: falling (previous above, current at or
// below) as {x, y, 2}, rising (previous below, current at or above) as {x, y,
// 1}, as `edge` asks, stopping after `maxCount` hits (below 1: no limit). The
// vector is made of kind 4 with room for the line or `maxCount` groups, the
// smaller, unless it has them. Checks: 1003 edge not 1, 2 or 3, the
// coordinates as in the line form of ImgVectToLineSeg, 1601, 1400. Label
// "ImgTransitionScan".
#ifndef MIREL_VECTOR_UNTYPED_OPS_H_
#define MIREL_VECTOR_UNTYPED_OPS_H_

#include "mirel/filter/kernel.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/untyped_vector.h"
#include "mirel/point/arith.h"

enum TRANS_SCAN_EDGE : int {
  TRANS_SCAN_RISING = 1,
  TRANS_SCAN_FALLING = 2,
  TRANS_SCAN_BOTH = 3,
};

MIREL_API short ImgGetVectExtremes(const EVector* src, EVector* dst, int high, int low);
MIREL_API short ImgGetVectExtremes(const EVector* src, EVector* dst, unsigned int high, unsigned int low);

MIREL_API short ImgGetVectTransition(const EVector* src, EVector* dst, int level);
MIREL_API short ImgGetVectTransition(const EVector* src, EVector* dst, unsigned int level);

MIREL_API short ImgVect1c2(ARITH_LOGIC_OPERATIONS op, const EVector* src, int constant, EVector* dst, int first,
                           int last);
MIREL_API short ImgVect1c2(ARITH_LOGIC_OPERATIONS op, const EVector* src, double constant, EVector* dst);

MIREL_API short ImgVectDataShift(EVector* vector, int shift, int first, int last);

MIREL_API short ImgConvolVect(const EVector* src, EVector* dst, const EKernel* kernel, int first, int last);

MIREL_API short ImgLineSegToVect(const EROI<EBW8>* roi, EVector* vector, int x0, int y0, int x1, int y1);
MIREL_API short ImgVectToLineSeg(const EVector* vector, EROI<EBW8>* roi);
MIREL_API short ImgVectToLineSeg(const EVector* vector, int x0, int y0, int x1, int y1, EROI<EBW8>* roi);

MIREL_API short ImgTransitionScan(TRANS_SCAN_EDGE edge, const EROI<EBW8>* roi, int x0, int y0, int x1, int y1,
                                  int level, int maxCount, EVector* vector);

#endif  // MIREL_VECTOR_UNTYPED_OPS_H_
