// Noise reduction over a sequence of EBW8 images of one size.
//
// EMovingAverage gives the mean of the last `size` images at a cost that
// does not depend on `size`: it keeps the images in a ring and a 16-bit
// running sum. The first image of a sequence counts as if it had been seen
// `size` times, so the first output equals the first input and no warm-up is
// needed. A power of two of 2 or more divides by a shift (and runs by vector
// blocks when the fast paths are on); other sizes divide. Outputs above 255,
// which only a ring image changed behind the object's back can cause, give
// 255.
//
// Two ways of feeding it:
//   ownBuffer == 0: SetSize, then Average(src, dst) for each image;
//   ownBuffer != 0: SetSize, then for each image fill GetSrcImage() and call
//                   Average(dst).
// Reset() starts the sequence again without touching the images.
//
// The running sum holds 16 bits, so a size above 257 could overflow it on
// full-range images and give wrong means: SetSize refuses such a size with
// 1007 and leaves the object as it was. A size of 0, or of 1 with ownBuffer
// 0, leaves an empty ring, on which Average refuses to run (1007).
//
// Errors of Average ["EMovingAverage::Average"]: 1400 a void image; 1003 the
// form that does not match ownBuffer; 1007 an empty ring; 1403 images of
// different sizes. A failed step changes neither the images nor the place in
// the sequence. GetSrcImage ["EMovingAverage::GetSrcImage"] returns null, and
// gives 1003 when ownBuffer is 0. SetSize ["EMovingAverage::SetSize"] gives
// 1007 (size above 257, negative width or height) or 1303.
//
// ImgRecursiveAverage keeps one EBW16 image, the store, holding the filtered
// image with four fraction bits, and moves it towards each new image through
// a table of 8191 signed 16-bit steps: with s the store's value (signed) and
// v the source pixel, d = (v << 4) - s, s += table[4095 + d] (16 bits), and
// the output is s >> 4 clamped to 0..255. The caller initialises the store
// (for instance to the first image << 4). A difference outside -4095..4095,
// which only a store out of that range gives, uses the end entry of its
// side. Errors ["ImgRecursiveAverage"]: 1400, 1403, and 1613 for a table
// that is null or not of 8191 elements.
//
// ImgSetRecursiveAverageLUT fills such a table. With r the reduction and w
// the width: for w != 0, entry 4095 + i is i + W k tanh(i / W), truncated,
// with W = 16 w and k = (1 - r^2) / (1 + r^2), so small differences move the
// store by a fraction and large ones pass; for w == 0 it is the straight
// line 0.5 + 2 i / (1 + r^2), truncated (r == 1 gives the identity, an output
// that follows its input at once). Entry 4095 - i is the negative of entry
// 4095 + i. Errors ["ImgSetRecursiveAverageLUT"]: 1613 for a null table,
// 1303 when it cannot be sized.
#ifndef MIREL_GEOMETRY_TEMPORAL_AVERAGE_H_
#define MIREL_GEOMETRY_TEMPORAL_AVERAGE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/vector.h"

class MIREL_API EMovingAverage {
 public:
  EMovingAverage();
  EMovingAverage(unsigned int size, int width, int height, int ownBuffer);
  virtual ~EMovingAverage();
  EMovingAverage(const EMovingAverage&) = delete;
  EMovingAverage& operator=(const EMovingAverage&) = delete;

  void SetSize(unsigned int size, int width, int height, int ownBuffer);
  void GetSize(unsigned int& size, int& width, int& height, int& ownBuffer) const;
  void Reset();
  // The ring image that the next Average(dst) reads (ownBuffer != 0 only).
  EImage<EBW8>* GetSrcImage();
  void Average(const EROI<EBW8>* src, EROI<EBW8>* dst);
  void Average(EROI<EBW8>* dst);

 private:
  void Release();
  void Step(const EROI<EBW8>* src, EROI<EBW8>* dst, bool storeSource);

  unsigned int size = 0;
  unsigned int shift = 0;
  int index = 0;
  int ringLength = 0;
  unsigned int ownBuffer = 0;
  EImage<EBW8>** ring = nullptr;
  EImage<EBW16> sum;
};

MIREL_API void ImgSetRecursiveAverageLUT(EBW16Vector* lut, float reduction, float width);
MIREL_API void ImgRecursiveAverage(const EROI<EBW8>* src, EROI<EBW16>* store, EROI<EBW8>* dst,
                                   const EBW16Vector* lut);

#endif  // MIREL_GEOMETRY_TEMPORAL_AVERAGE_H_
