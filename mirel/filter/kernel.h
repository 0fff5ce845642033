// The kernel object of the linear filters.
//
// EKernel is a small value object: a rectangular table of float coefficients
// (row-major, element (x, y) at index SizeX * y + x) and the four numbers that
// turn a weighted sum into a pixel: Gain, Offset, Rectifier (0 to 3: how a
// negative result is treated) and OutsideValue (the grey value that the
// floating-point convolution assumes outside the region of interest).
//
// Storage: Data holds AllocatedSize floats. It never shrinks; SizeX * SizeY
// may be less than the capacity. Changing SizeX reinterprets the same floats
// with the new row stride, and growing beyond the capacity allocates a fresh,
// uninitialised block (the old coefficients are lost).
//
// Error state: every member clears the calling thread's error state, the
// accessors and plain setters included; the members that return short return
// the code left after the call (0 on success). Read EGetError() after a
// failing member before touching any accessor.
//
// KERNEL_TYPE selects one of fourteen built-in 3x3 kernels. The three pattern
// kernels carry gain 0 and rectifier 0: they are patterns for thinning and
// thickening, not filters. The smoothing kernels are stored unnormalised with
// gain 1; the convolutions divide by the coefficient sum.
#ifndef MIREL_FILTER_KERNEL_H_
#define MIREL_FILTER_KERNEL_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

enum KERNEL_TYPE : int {
  KERNEL_PATTERN_TEE = 1,    // 0 0 0 / -1 1 -1 / 1 1 1
  KERNEL_PATTERN_BAR = 2,    // 0 0 0 / -1 0 -1 / 1 1 1
  KERNEL_PATTERN_FULL = 3,   // 1 1 1 / 1 1 1 / 1 1 1
  KERNEL_SOBEL_X = 4,        // -1 0 1 / -2 0 2 / -1 0 1
  KERNEL_SOBEL_Y = 5,        // -1 -2 -1 / 0 0 0 / 1 2 1
  KERNEL_PREWITT_X = 6,      // -1 0 1 / -1 0 1 / -1 0 1
  KERNEL_PREWITT_Y = 7,      // -1 -1 -1 / 0 0 0 / 1 1 1
  KERNEL_LAPLACIAN_4 = 8,    // 0 1 0 / 1 -4 1 / 0 1 0
  KERNEL_LAPLACIAN_8 = 9,    // 1 1 1 / 1 -8 1 / 1 1 1
  KERNEL_GAUSSIAN = 10,      // 1 2 1 / 2 4 2 / 1 2 1
  KERNEL_LOWPASS_RING = 11,  // 1 1 1 / 1 0 1 / 1 1 1
  KERNEL_UNIFORM = 12,       // 1 1 1 / 1 1 1 / 1 1 1
  KERNEL_HIGHPASS_1 = 13,    // 0 -1 0 / -1 5 -1 / 0 -1 0
  KERNEL_HIGHPASS_2 = 14,    // -1 -1 -1 / -1 9 -1 / -1 -1 -1
};

class MIREL_API EKernel {
 public:
  // Sizes 0, gain 1, offset 0, rectifier 2, outside value 0, no data.
  EKernel();
  // Stores the six values and allocates sizeX * sizeY uninitialised floats.
  // Out of memory: 1303, Data null, AllocatedSize 0, the rest as passed.
  EKernel(short sizeX, short sizeY, float gain, unsigned int offset, short rectifier,
          unsigned int outsideValue);
  // The defaults of EKernel(), then SetKernel(type).
  explicit EKernel(KERNEL_TYPE type);
  // Copies carry their own coefficient block (same capacity and contents).
  EKernel(const EKernel& other);
  EKernel& operator=(const EKernel& other);
  virtual ~EKernel();

  // Makes the kernel the built-in 3x3 `type` (1 to 14). Any other value gives
  // 1011 and leaves a 3x3 kernel with gain, offset, rectifier and outside
  // value 0 and the coefficients as they were.
  short SetKernel(KERNEL_TYPE type);

  // Makes the kernel 3x3, 5x5 or 7x7 with these coefficients, row by row;
  // gain, offset, rectifier and outside value are kept.
  short SetKernelData(float k00, float k01, float k02, float k10, float k11, float k12, float k20,
                      float k21, float k22);
  short SetKernelData(float k00, float k01, float k02, float k03, float k04, float k10, float k11,
                      float k12, float k13, float k14, float k20, float k21, float k22, float k23,
                      float k24, float k30, float k31, float k32, float k33, float k34, float k40,
                      float k41, float k42, float k43, float k44);
  short SetKernelData(float k00, float k01, float k02, float k03, float k04, float k05, float k06,
                      float k10, float k11, float k12, float k13, float k14, float k15, float k16,
                      float k20, float k21, float k22, float k23, float k24, float k25, float k26,
                      float k30, float k31, float k32, float k33, float k34, float k35, float k36,
                      float k40, float k41, float k42, float k43, float k44, float k45, float k46,
                      float k50, float k51, float k52, float k53, float k54, float k55, float k56,
                      float k60, float k61, float k62, float k63, float k64, float k65, float k66);

  // Element (x, y). No data: 1704; x outside 0..SizeX-1: 1011; y outside
  // 0..SizeY-1: 1012. A failure leaves the table and `value` untouched.
  short SetKernelData(int x, int y, float value);
  short GetKernelData(int x, int y, float& value) const;

  // Ensures room for `size` floats; a larger block is fresh and uninitialised.
  short SetAllocatedSize(unsigned int size);
  // Sets one dimension; grows the block when size times the other dimension
  // exceeds the capacity. On failure the dimension is unchanged.
  short SetSizeX(short size);
  short SetSizeY(short size);

  short GetSizeX() const;
  short GetSizeY() const;
  float GetGain() const;
  unsigned int GetOffset() const;
  short GetRectifier() const;
  unsigned int GetOutsideValue() const;
  unsigned int GetAllocatedSize() const;
  float* GetDataPtr();
  const float* GetDataPtr() const;

  void SetGain(float gain);
  void SetOffset(unsigned int offset);
  void SetRectifier(short rectifier);
  void SetOutsideValue(unsigned int outsideValue);

  // The fields, in their order. The reserved words are 0 and unused.
  unsigned int Reserved0 = 0;
  unsigned int Reserved1 = 0;
  short SizeX = 0;
  short SizeY = 0;
  float Gain = 1.0f;
  unsigned int Offset = 0;
  short Rectifier = 2;
  unsigned int OutsideValue = 0;
  float* Data = nullptr;
  unsigned int AllocatedSize = 0;

 private:
  // Keeps a block of at least `count` floats, else allocates exactly `count`.
  bool EnsureStorage(unsigned int count);
  short SetSquareData(int size, const float* values, const char* label);
};

#endif  // MIREL_FILTER_KERNEL_H_
