// Thinning and thickening: a 3x3 hit-or-miss test repeated over a
// two-level picture.
//
// Picture: any non-zero pixel is foreground. Results hold 0 and the full
// value only (255 for EBW8, 65535 for EBW16).
//
// Pattern: the first nine coefficients of an EKernel, row by row, each -1
// (do not care), 0 (must be clear) or 1 (must be set). At least one of the
// kernel's sizes must be 3. KERNEL_PATTERN_TEE, KERNEL_PATTERN_BAR and
// KERNEL_PATTERN_FULL are ready-made patterns. The kernel is only read.
//
// A pass tests every pixel against the pattern on the picture left by the
// previous pass (changes made during a pass do not feed into it). Where the
// pattern fits, thinning clears the pixel and thickening sets it. The first
// pass reads the source and writes every destination pixel: a pixel that
// does not fit gets the full value if the source pixel is non-zero, else 0.
// Later passes work on the destination in place. dst may be the source
// itself; a destination that overlaps the source only in part is refused
// with 1413.
//
// Positions outside the ROI: when the kernel's OutsideValue is 0 they read
// as clear; otherwise they count as matching the pattern, so they never
// prevent a fit. The column left of the first pixel takes the second reading
// only when OutsideValue, read as a signed int, is above 0; the other sides
// whenever it is non-zero (only a value of 2^31 or more tells them apart).
//
// Rotation: with KERNEL_ROTATION_CLOCKWISE or _ANTICLOCKWISE the pattern
// turns by 45 degrees after each pass (each outer entry moves one place
// round the centre), so one kernel works in all eight orientations.
//
// iterations, in and out. In: the most passes to run, 0 meaning the ROI's
// width; with a rotation it counts full turns of eight passes. The loop
// stops early after a pass that changed nothing (without rotation) or after
// a full turn of eight passes that changed nothing (with rotation). Out: the
// passes run, the last one without a change included; with a rotation the
// passes divided by 8, remainder dropped. The first pass counts as a change
// when any pixel did not fit.
//
// The colour forms run the 8-bit form on components 0, 1 and 2 in turn,
// each in place in a plane, with the same iterations variable: the count
// left by one component is the request of the next, and the count returned
// is that of the last component.
//
// Errors, in the order tested: 1400 null ROI pointer (dst included: pass the
// source as dst to work in place), 1403 sizes differ,
// 1400 void image, 1703 neither kernel size is 3, 1700 no coefficients,
// 1701 fewer than nine coefficients or a value other than -1, 0 and 1,
// 1014 rotation of 3 or more, 1015 iterations outside 0 to 1023, 1413
// source and destination overlap in part, 1301 no memory for the line
// buffers. A failure writes nothing.
#ifndef MIREL_MORPHOLOGY_THINNING_H_
#define MIREL_MORPHOLOGY_THINNING_H_

#include "mirel/filter/kernel.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

enum KERNEL_ROTATION : int {
  KERNEL_ROTATION_NONE = 0,
  KERNEL_ROTATION_CLOCKWISE = 1,
  KERNEL_ROTATION_ANTICLOCKWISE = 2,
};

MIREL_API short ImgThin(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                        int& iterations);
MIREL_API short ImgThick(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                         int& iterations);
MIREL_API short ImgBiLevelThin(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel,
                               KERNEL_ROTATION rotation, int& iterations);
MIREL_API short ImgBiLevelThick(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel,
                                KERNEL_ROTATION rotation, int& iterations);

MIREL_API void ImgThin(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                       int& iterations);
MIREL_API void ImgThick(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                        int& iterations);

// Bit images (a set bit is foreground). The ...Aligned forms take ROIs that
// start on a byte (else 1423) and throw Corvane::Talmeer::Exception with the
// code of the error state for the failures above; they return 0. The plain
// forms take any ROI, move one that starts inside a byte onto an aligned
// temporary and back, and never throw: a null source is 1400, and any
// failure is traced under "ImgThin (BW1)" or "ImgThick (BW1)". Here dst may
// be null to work in place. The bits of a row's last byte behind its last
// pixel, and every bit outside the ROI, keep their value.
MIREL_API short ImgThinAligned(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                               int& iterations);
MIREL_API short ImgThickAligned(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel,
                                KERNEL_ROTATION rotation, int& iterations);
MIREL_API short ImgThin(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                        int& iterations);
MIREL_API short ImgThick(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                         int& iterations);

MIREL_API void ImgThin(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                       int& iterations);
MIREL_API void ImgThick(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                        int& iterations);

// For a source held const: the same operations into a destination that must
// be given. A const source is never worked on in place: without a
// destination the call is refused as a missing source is (1400 under the
// operation's label) and nothing is written. A destination on the source's
// own pixels still works in place.
MIREL_API short ImgThinAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                               int& iterations);
MIREL_API short ImgThickAligned(const EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel,
                                KERNEL_ROTATION rotation, int& iterations);
MIREL_API short ImgThin(const EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                        int& iterations);
MIREL_API short ImgThick(const EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                         int& iterations);

#endif  // MIREL_MORPHOLOGY_THINNING_H_
