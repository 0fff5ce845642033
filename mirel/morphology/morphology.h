// Grey morphology: erosion (minimum) and dilation (maximum) under flat
// boxes and disks, and their compounds, on 8-bit, 16-bit and colour images.
//
// Every shape is built from four fixed passes: the 3x3 square, the
// horizontal and vertical 3-pixel lines and the 5-pixel cross.
//
//   Box (hw, hh)  the (2 hw + 1) x (2 hh + 1) rectangle: min(hw, hh) square
//                 passes, then lines along the longer axis.
//   Disk r        an octagon, the sum of r - c squares and c crosses, with
//                 c = (r + 1) / 2: |dx| <= r, |dy| <= r, |dx| + |dy| <= r + r/2.
//                 Rows of the element from the centre out: r=2: 5, 5, 3;
//                 r=3: 7, 7, 5, 3.
//
// A half-height of all ones (the default) means the same as the half-width.
// Neighbours outside the ROI take no part in the minimum or maximum, so the
// border neither brightens nor darkens anything, and the pixels of the image
// around the ROI are never read. Large boxes run at a cost per pixel that
// does not depend on their size, with the same bytes.
//
// dst may be null, or the source itself: the operation then works in place.
// Open:  erode, then dilate.           White top-hat: source - opening.
// Close: dilate, then erode.           Black top-hat: closing - source.
// Gradient: dilation - erosion. Differences stop at 0. The top-hats need a
// temporary image; the others do not.
//
// The older entry points (ImgErode, ImgDilate, ImgOpen, ImgClose,
// ImgWhiteTopHat, ImgBlackTopHat) repeat a 3x3 pass `passes` times and give
// every position outside the ROI the caller's border value, compared as a
// signed int and stored as its low byte: 255 for an erosion, 0 for a
// dilation leaves the edges alone. They need at least two rows, and return 0
// or the error code. With passes <= 0 nothing is written. Their top-hats do
// not run in place (1413).
//
// Colour forms work on each of the three components by itself. In the
// colour forms of the older entry points the border's bytes go to the
// components in reverse order: component 0 gets byte 2, component 2 byte 0.
//
// Errors: 1400 void or null image, 1403 sizes differ, 1413 a top-hat of the
// older entry points asked to run in place, 1303 memory for a line buffer or
// temporary image.
#ifndef MIREL_MORPHOLOGY_MORPHOLOGY_H_
#define MIREL_MORPHOLOGY_MORPHOLOGY_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

#define MIREL_MORPHOLOGY_DECLARE(P)                                                                 \
  MIREL_API void ImgErodeBox(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1,      \
                             unsigned int halfHeight = ~0u);                                        \
  MIREL_API void ImgDilateBox(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1,     \
                              unsigned int halfHeight = ~0u);                                       \
  MIREL_API void ImgOpenBox(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1,       \
                            unsigned int halfHeight = ~0u);                                         \
  MIREL_API void ImgCloseBox(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1,      \
                             unsigned int halfHeight = ~0u);                                        \
  MIREL_API void ImgWhiteTopHatBox(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1, \
                                   unsigned int halfHeight = ~0u);                                  \
  MIREL_API void ImgBlackTopHatBox(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1, \
                                   unsigned int halfHeight = ~0u);                                  \
  MIREL_API void ImgMorphoGradientBox(EROI<P>* src, EROI<P>* dst = nullptr,                         \
                                      unsigned int halfWidth = 1, unsigned int halfHeight = ~0u);   \
  MIREL_API void ImgErodeDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1);    \
  MIREL_API void ImgDilateDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1);   \
  MIREL_API void ImgOpenDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1);     \
  MIREL_API void ImgCloseDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1);    \
  MIREL_API void ImgWhiteTopHatDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1); \
  MIREL_API void ImgBlackTopHatDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1); \
  MIREL_API void ImgMorphoGradientDisk(EROI<P>* src, EROI<P>* dst = nullptr, unsigned int halfWidth = 1);

// For a source held const: the same operations into a destination that must
// be given. A const source is never worked on in place: without a
// destination the call is refused as a missing source is (1400 under the
// operation's label) and nothing is written. A destination on the source's
// own pixels still works in place.
#define MIREL_MORPHOLOGY_DECLARE_CONST(P)                                                             \
  MIREL_API void ImgErodeBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,            \
                             unsigned int halfHeight = ~0u);                                          \
  MIREL_API void ImgDilateBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,           \
                              unsigned int halfHeight = ~0u);                                         \
  MIREL_API void ImgOpenBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,             \
                            unsigned int halfHeight = ~0u);                                           \
  MIREL_API void ImgCloseBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,            \
                             unsigned int halfHeight = ~0u);                                          \
  MIREL_API void ImgWhiteTopHatBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,      \
                                   unsigned int halfHeight = ~0u);                                    \
  MIREL_API void ImgBlackTopHatBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,      \
                                   unsigned int halfHeight = ~0u);                                    \
  MIREL_API void ImgMorphoGradientBox(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1,   \
                                      unsigned int halfHeight = ~0u);                                 \
  MIREL_API void ImgErodeDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);          \
  MIREL_API void ImgDilateDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);         \
  MIREL_API void ImgOpenDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);           \
  MIREL_API void ImgCloseDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);          \
  MIREL_API void ImgWhiteTopHatDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);    \
  MIREL_API void ImgBlackTopHatDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);    \
  MIREL_API void ImgMorphoGradientDisk(const EROI<P>* src, EROI<P>* dst, unsigned int halfWidth = 1);

MIREL_MORPHOLOGY_DECLARE(EBW8)
MIREL_MORPHOLOGY_DECLARE(EBW16)
MIREL_MORPHOLOGY_DECLARE(EC24)
MIREL_MORPHOLOGY_DECLARE_CONST(EBW8)
MIREL_MORPHOLOGY_DECLARE_CONST(EBW16)
MIREL_MORPHOLOGY_DECLARE_CONST(EC24)
#undef MIREL_MORPHOLOGY_DECLARE
#undef MIREL_MORPHOLOGY_DECLARE_CONST

// ---------------------------------------------------------------- older entry points
MIREL_API short ImgErode(EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int border = 255);
MIREL_API short ImgDilate(EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int border = 0);
MIREL_API short ImgOpen(EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 255,
                        int secondBorder = 0);
MIREL_API short ImgClose(EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 0,
                         int secondBorder = 255);
MIREL_API short ImgWhiteTopHat(EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 255,
                               int secondBorder = 0);
MIREL_API short ImgBlackTopHat(EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 0,
                               int secondBorder = 255);

MIREL_API void ImgErode(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 border);
MIREL_API void ImgDilate(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 border);
MIREL_API void ImgOpen(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder, EC24 secondBorder);
MIREL_API void ImgClose(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder, EC24 secondBorder);
MIREL_API void ImgWhiteTopHat(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder,
                              EC24 secondBorder);
MIREL_API void ImgBlackTopHat(EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder,
                              EC24 secondBorder);

// The older entry points for a source held const: a destination is required,
// and without one the call is refused as a missing source is (with passes
// <= 0 the 8-bit forms check nothing and write nothing, as above).
MIREL_API short ImgErode(const EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int border = 255);
MIREL_API short ImgDilate(const EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int border = 0);
MIREL_API short ImgOpen(const EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 255,
                        int secondBorder = 0);
MIREL_API short ImgClose(const EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 0,
                         int secondBorder = 255);
MIREL_API short ImgWhiteTopHat(const EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 255,
                               int secondBorder = 0);
MIREL_API short ImgBlackTopHat(const EROI<EBW8>* src, EROI<EBW8>* dst, int passes = 1, int firstBorder = 0,
                               int secondBorder = 255);
MIREL_API void ImgErode(const EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 border);
MIREL_API void ImgDilate(const EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 border);
MIREL_API void ImgOpen(const EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder, EC24 secondBorder);
MIREL_API void ImgClose(const EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder, EC24 secondBorder);
MIREL_API void ImgWhiteTopHat(const EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder, EC24 secondBorder);
MIREL_API void ImgBlackTopHat(const EROI<EC24>* src, EROI<EC24>* dst, int passes, EC24 firstBorder, EC24 secondBorder);

#endif  // MIREL_MORPHOLOGY_MORPHOLOGY_H_
