// Flat-field correction: ImgUniformize corrects an image for uneven lighting
// with one reference (what should have been the level `light`) or two (the
// levels `light` and `dark`), given as images of the source's size or as one
// reference row that serves every row (element i for column i).
//
// On EC24 each component is corrected on its own with the constants' own
// component. M is the pixel's maximum: 255 for EBW8 and EC24, 65535 for
// EBW16; clamping takes a negative value to 0 and a value above M to M.
// Per pixel, with r, l, d the reference pixels (or row elements):
//
//   single, multiplicative zero      clamp(src - r + light)
//   single image, multiplicative     M where r is 0, else
//                                    min(src * light / r, M), truncating
//   single row, multiplicative       gain = (light * 4096) / r and base 0, or
//                                    gain 0 and base M where r is 0; then
//                                    min(((src * gain) >> 12) + base, M). The
//                                    division is out of the pixel loop, so
//                                    this rounds by 12 fraction bits, unlike
//                                    the image form.
//   light and dark                   M where l equals d, else
//                                    clamp(((src - d) * (light - dark)) / (l - d) + dark),
//                                    dividing toward zero; the row form gives
//                                    the same values as the image form.
//
// All arithmetic is exact (64-bit where 32 bits could overflow on EBW16).
//
// Checks: the sources and references not void, then the destination not
// void (1400); then each reference image and the destination of the
// source's size (1403); then each reference row exactly as long as the
// destination is wide (1613; also for a null row); then the per-column
// tables of the row forms (1303). A failed check leaves the destination
// untouched. Labels "ImgUniformize ( BW8 Single Image)",
// "ImgUniformize ( BW8 Light/Dark Images)", "ImgUniformize ( BW8 Single Vector)",
// "ImgUniformize ( BW8 Light/Dark Vectors)", and the same with BW16 and C24.
// The destination may be the source.
#ifndef MIREL_POINT_UNIFORMIZE_H_
#define MIREL_POINT_UNIFORMIZE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/vector.h"

MIREL_API void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EROI<EBW8>* reference, EROI<EBW8>* dst,
                             int multiplicative);
MIREL_API void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EROI<EBW8>* lightReference, EBW8 dark,
                             const EROI<EBW8>* darkReference, EROI<EBW8>* dst);
MIREL_API void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EBW8Vector* reference, EROI<EBW8>* dst,
                             int multiplicative);
MIREL_API void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EBW8Vector* lightReference, EBW8 dark,
                             const EBW8Vector* darkReference, EROI<EBW8>* dst);

MIREL_API void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EROI<EBW16>* reference, EROI<EBW16>* dst,
                             int multiplicative);
MIREL_API void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EROI<EBW16>* lightReference, EBW16 dark,
                             const EROI<EBW16>* darkReference, EROI<EBW16>* dst);
MIREL_API void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EBW16Vector* reference, EROI<EBW16>* dst,
                             int multiplicative);
MIREL_API void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EBW16Vector* lightReference, EBW16 dark,
                             const EBW16Vector* darkReference, EROI<EBW16>* dst);

MIREL_API void ImgUniformize(const EROI<EC24>* src, EC24 light, const EROI<EC24>* reference, EROI<EC24>* dst,
                             int multiplicative);
MIREL_API void ImgUniformize(const EROI<EC24>* src, EC24 light, const EROI<EC24>* lightReference, EC24 dark,
                             const EROI<EC24>* darkReference, EROI<EC24>* dst);
MIREL_API void ImgUniformize(const EROI<EC24>* src, EC24 light, const EC24Vector* reference, EROI<EC24>* dst,
                             int multiplicative);
MIREL_API void ImgUniformize(const EROI<EC24>* src, EC24 light, const EC24Vector* lightReference, EC24 dark,
                             const EC24Vector* darkReference, EROI<EC24>* dst);

#endif  // MIREL_POINT_UNIFORMIZE_H_
