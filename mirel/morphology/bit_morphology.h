// Erosion, dilation and their compounds on packed bit images (EROI<EBW1>).
//
// A set bit is foreground: erosion is the AND and dilation the OR of the
// pixels under the structuring element, and pixels outside the ROI take no
// part. The shapes are those of the grey morphology (morphology.h): Box (hw,
// hh) is min(hw, hh) 3x3 passes then 3-pixel lines along the longer axis;
// Disk r is r - c 3x3 passes then c 5-pixel crosses, c = (r + 1) / 2. A
// half-height of all ones means the same as the half-width. dst may be null
// or the source itself: the operation then works in place.
//
// Open: erode, then dilate. Close: dilate, then erode. Gradient: dilation
// XOR erosion. White top-hat: source XOR opening. Black top-hat: closing XOR
// source. The exclusive or is the difference here, since each result
// contains the other.
//
// The bits of a row's last byte behind its last pixel (the pad bits) keep
// their value through the horizontal passes and the crosses; the vertical
// 3-pixel lines write whole bytes, and the 3x3 square gives them what such a
// line gives, so in a ROI that starts on a byte they become the AND (OR in
// dilation) of the destination's pad bits over the rows above and below.
// Bits before the first pixel are never written. The plain forms move a ROI
// that starts inside a byte onto an aligned temporary and back, which leaves
// every bit outside it as it was.
//
// Two quirks are kept. A box with both half-sizes 0 and a separate
// destination writes nothing, whereas a disk of 0 copies; the compounds
// that start from such a box read a cleared temporary. And the erosion
// cross on the byte-by-byte path (EGetMMX() 0) takes the last byte of each
// row from the row alone, without the rows above and below; with the fast
// path it takes the whole cross like every other byte.
//
// The ...Aligned forms take ROIs that start on a byte (else 1423) and throw
// Corvane::Talmeer::Exception with the code of the error state: 1400 a null
// or void ROI, 1403 sizes differ, 1303 memory. The plain forms never throw:
// a null source is 1400 under their first label, and a failure inside is
// traced under the second (a compound's inner operation leaves its own label
// first):
//   ImgErodeBox, ImgDilateBox, ImgErodeDisk, ImgDilateDisk, ImgOpenBox,
//   ImgCloseBox, ImgOpenDisk, ImgCloseDisk, ImgMorphoGradientBox,
//   ImgMorphoGradientDisk, ImgBlackTopHatBox: "<name> (BW1)" for both;
//   ImgWhiteTopHatBox: "ImgWhiteTophatBox (BW1)", "ImgWhiteTopHatBox (BW1)";
//   ImgWhiteTopHatDisk: "ImgWhiteTophatDisk (BW1)", "ImgWhiteTopHatDisk (BW1)";
//   ImgBlackTopHatDisk: "ImgBlackTophatDisk (BW1)", "ImgBlackTopHatDisk (BW1)".
#ifndef MIREL_MORPHOLOGY_BIT_MORPHOLOGY_H_
#define MIREL_MORPHOLOGY_BIT_MORPHOLOGY_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgErodeBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgDilateBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                   unsigned int halfHeight = ~0u);
MIREL_API void ImgOpenBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgCloseBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgWhiteTopHatBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgBlackTopHatBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgMorphoGradientBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                           unsigned int halfHeight = ~0u);
MIREL_API void ImgErodeDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgDilateDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgOpenDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgCloseDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgWhiteTopHatDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBlackTopHatDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgMorphoGradientDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);

MIREL_API void ImgErodeBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                           unsigned int halfHeight = ~0u);
MIREL_API void ImgDilateBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                            unsigned int halfHeight = ~0u);
MIREL_API void ImgOpenBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                          unsigned int halfHeight = ~0u);
MIREL_API void ImgCloseBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                           unsigned int halfHeight = ~0u);
MIREL_API void ImgWhiteTopHatBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgBlackTopHatBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgMorphoGradientBox(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1,
                                    unsigned int halfHeight = ~0u);
MIREL_API void ImgErodeDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgDilateDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgOpenDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgCloseDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgWhiteTopHatDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBlackTopHatDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgMorphoGradientDisk(EROI<EBW1>* src, EROI<EBW1>* dst = nullptr, unsigned int halfWidth = 1);

// For a source held const: the same operations into a destination that must
// be given. A const source is never worked on in place: without a
// destination the call is refused as a missing source is (1400, thrown by the
// ...Aligned forms) and nothing is written. A destination on the source's
// own pixels still works in place.
MIREL_API void ImgErodeBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgDilateBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                   unsigned int halfHeight = ~0u);
MIREL_API void ImgOpenBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgCloseBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgWhiteTopHatBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgBlackTopHatBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgMorphoGradientBoxAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                           unsigned int halfHeight = ~0u);
MIREL_API void ImgErodeDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgDilateDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgOpenDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgCloseDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgWhiteTopHatDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBlackTopHatDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgMorphoGradientDiskAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgErodeBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                           unsigned int halfHeight = ~0u);
MIREL_API void ImgDilateBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                            unsigned int halfHeight = ~0u);
MIREL_API void ImgOpenBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                          unsigned int halfHeight = ~0u);
MIREL_API void ImgCloseBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                           unsigned int halfHeight = ~0u);
MIREL_API void ImgWhiteTopHatBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgBlackTopHatBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgMorphoGradientBox(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1,
                                    unsigned int halfHeight = ~0u);
MIREL_API void ImgErodeDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgDilateDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgOpenDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgCloseDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgWhiteTopHatDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBlackTopHatDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgMorphoGradientDisk(const EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int halfWidth = 1);

#endif  // MIREL_MORPHOLOGY_BIT_MORPHOLOGY_H_
