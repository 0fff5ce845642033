// Two-level morphology: the box and disk family for 8-bit images that hold
// only 0 and 255, where the minimum of neighbours is their AND and the
// maximum their OR. Shapes, the half-height sentinel, the order of passes
// and the in-place rules are those of the grey family (morphology.h).
// Nothing tests the content: on other bytes the result is the AND or OR of
// the bytes, not a minimum or maximum.
//
// ImgBiLevelMedian writes 255 where five or more of the nine pixels of the
// 3x3 window (edge rows and columns repeated) are not zero, else 0; it may
// run in place.
//
// Errors: 1400 void image, 1403 sizes differ, 1303 memory.
#ifndef MIREL_MORPHOLOGY_BILEVEL_H_
#define MIREL_MORPHOLOGY_BILEVEL_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgBiLevelErodeBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelDilateBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1,
                                   unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelOpenBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelCloseBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelWhiteTopHatBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelBlackTopHatBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelMorphoGradientBox(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr,
                                           unsigned int halfWidth = 1, unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelErodeDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelDilateDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelOpenDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelCloseDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelWhiteTopHatDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelBlackTopHatDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelMorphoGradientDisk(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr,
                                            unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelMedian(EROI<EBW8>* src, EROI<EBW8>* dst = nullptr);

// For a source held const: the same operations into a destination that must
// be given. A const source is never worked on in place: without a
// destination the call is refused as a missing source is (1400 under the
// operation's label) and nothing is written. A destination on the source's
// own pixels still works in place.
MIREL_API void ImgBiLevelErodeBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelDilateBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                   unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelOpenBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                 unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelCloseBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                  unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelWhiteTopHatBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelBlackTopHatBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                        unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelMorphoGradientBox(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1,
                                           unsigned int halfHeight = ~0u);
MIREL_API void ImgBiLevelErodeDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelDilateDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelOpenDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelCloseDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelWhiteTopHatDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelBlackTopHatDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelMorphoGradientDisk(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int halfWidth = 1);
MIREL_API void ImgBiLevelMedian(const EROI<EBW8>* src, EROI<EBW8>* dst);

#endif  // MIREL_MORPHOLOGY_BILEVEL_H_
