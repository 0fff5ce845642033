// Interlaced frames, and a sharpness score.
//
// An interlaced camera takes the even rows (frame 0: rows 0, 2, 4, ...) and
// the odd rows (frame 1: rows 1, 3, 5, ...) at two moments. These functions
// split and join the two frames, shift one frame sideways, rebuild one frame
// from the other, swap them, and find the sideways shift between them. They
// take EBW8, EBW16 and EC24 images; the colour forms treat the three bytes
// of a pixel alike. Every image argument must be a real ROI: a null or void
// one gives 1400.
//
// ImgGetFrame(src, dst, frame) copies the rows of one frame (frame 0, or 1
// for any non-zero value) into dst, row y into row y / 2. dst must have the
// source's width and (h + 1) / 2 rows for frame 0, h / 2 for frame 1, with h
// the source's height (1403 otherwise). ImgSetFrame(src, dst, frame) is the
// inverse: src is the half-height image and h the height of dst; the rows of
// the other frame in dst stay as they are.
//
// ImgRealignFrame(src, dst, shift, frame), ImgRebuildFrame(src, dst, frame):
// `frame` names the frame that stays (only its low bit counts); the rows of
// the other parity are the ones written, frame 0 writing the odd rows. The
// rows that stay are not touched, also with a separate dst. Realign moves
// each written row by `shift` pixels (positive to the right): a positive
// shift fills the columns it uncovers with the source pixel at column 1 of
// the row, read after the move (so in place with shift 1 it is the old
// column 0); a negative shift fills with the source pixel at column w - 1.
// A shift of the width or more either way is refused with 1007. Rebuild
// makes each written row the truncated mean of its two neighbours in the
// source, an edge row taking its one neighbour twice; a source of one row,
// which has no neighbour, is refused with 1007 when a row is to be written.
// ImgSwapFrames exchanges rows 0 and 1, 2 and 3, ...; an odd last row is
// not touched. All three need equal sizes (1403) and may run in place.
//
// ImgMatchFrames(src, row, minShift, maxShift, best) finds the shift to give
// ImgRealignFrame to bring row + 1 onto row: for each shift s from minShift
// to maxShift it sums, over the columns x from max(maxShift, 0) up to but
// excluding width + min(minShift, 0), (row at x - row + 1 at x - s)^2, all
// bytes of a colour pixel counting, and keeps the first shift with the
// smallest sum, writing it to `best` at each improvement. minShift >
// maxShift, or a range wider than the width, gives 1007; a row below 0 or
// without a row below it gives 1012; after a failure `best` keeps its value.
// The sums are 32-bit unsigned and wrap for EBW8 and EC24; for EBW16 each
// square is taken in 32 bits as a signed number (a difference of 46341 or
// more counts negative) and added into a 64-bit sum compared as unsigned.
//
// ImgFocusing(src) returns sqrt(sum / (width x height)) over every pixel p
// but those of the last row and column, sum being (p - right neighbour)^2 +
// (p - pixel below)^2; for EC24 each byte counts on its own against the byte
// of the next pixel and the denominator is 3 x width x height. Each row's sum
// wraps at 32 bits (EBW8, EC24) or takes the EBW16 squares as above; a
// larger result means sharper. A void source returns 0 with 1400.
//
// Labels: "ImgGetFrame ( EBW8)", "ImgSetFrame ( EBW16)", "ImgRealignFrame
// ( EC24)", ... ("ImgFocusing ( BW8)", "( BW16)", "( C24)").
#ifndef MIREL_GEOMETRY_FRAMES_H_
#define MIREL_GEOMETRY_FRAMES_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgGetFrame(const EROI<EBW8>* src, EROI<EBW8>* dst, int frame);
MIREL_API void ImgSetFrame(const EROI<EBW8>* src, EROI<EBW8>* dst, int frame);
MIREL_API void ImgRealignFrame(const EROI<EBW8>* src, EROI<EBW8>* dst, int shift, unsigned int frame);
MIREL_API void ImgRebuildFrame(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int frame);
MIREL_API void ImgSwapFrames(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgMatchFrames(const EROI<EBW8>* src, int firstRow, int minShift, int maxShift, int& best);
MIREL_API float ImgFocusing(const EROI<EBW8>* src);

MIREL_API void ImgGetFrame(const EROI<EBW16>* src, EROI<EBW16>* dst, int frame);
MIREL_API void ImgSetFrame(const EROI<EBW16>* src, EROI<EBW16>* dst, int frame);
MIREL_API void ImgRealignFrame(const EROI<EBW16>* src, EROI<EBW16>* dst, int shift, unsigned int frame);
MIREL_API void ImgRebuildFrame(const EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int frame);
MIREL_API void ImgSwapFrames(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgMatchFrames(const EROI<EBW16>* src, int firstRow, int minShift, int maxShift, int& best);
MIREL_API float ImgFocusing(const EROI<EBW16>* src);

MIREL_API void ImgGetFrame(const EROI<EC24>* src, EROI<EC24>* dst, int frame);
MIREL_API void ImgSetFrame(const EROI<EC24>* src, EROI<EC24>* dst, int frame);
MIREL_API void ImgRealignFrame(const EROI<EC24>* src, EROI<EC24>* dst, int shift, unsigned int frame);
MIREL_API void ImgRebuildFrame(const EROI<EC24>* src, EROI<EC24>* dst, unsigned int frame);
MIREL_API void ImgSwapFrames(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgMatchFrames(const EROI<EC24>* src, int firstRow, int minShift, int maxShift, int& best);
MIREL_API float ImgFocusing(const EROI<EC24>* src);

#endif  // MIREL_GEOMETRY_FRAMES_H_
