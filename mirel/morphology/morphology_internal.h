// Internal pieces of the morphology family: the row kernels of each
// instruction set, the passes and their composition into boxes and disks,
// shared by the grey, 16-bit and two-level forms, and the switches that
// tests use.
#ifndef MIREL_MORPHOLOGY_MORPHOLOGY_INTERNAL_H_
#define MIREL_MORPHOLOGY_MORPHOLOGY_INTERNAL_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

namespace mirel {
namespace morphology {

// The operations of a pass: minimum and maximum (grey), AND and OR
// (two-level images, where they are the same thing on 0 and 255).
enum : int { kMin = 0, kMax = 1, kAnd = 2, kOr = 3 };

// Row kernels. a, b, c are the rows above, at and below the output row
// (the edge row standing in for a row outside the ROI); out never aliases
// them. Pair and Four: op of two or four rows, where out may be one of
// them (see the blocks).
template <class T>
struct RowKernels {
  using Row1 = void (*)(const T* p, T* out, int w);
  using Row3 = void (*)(const T* a, const T* b, const T* c, T* out, int w);
  using PairFn = void (*)(const T* a, const T* b, T* out, int n);
  using FourFn = void (*)(const T* p0, const T* p1, const T* p2, const T* p3, T* out, int n);
  Row1 h3[4];
  Row3 v3[4];
  Row3 cross[4];
  PairFn pair[4];
  FourFn four[4];
  Row3 median;
  void (*median2)(const T* a, const T* b, const T* c, const T* d, T* out0, T* out1, int w);
  Row3 biMedian;  // 8-bit only
};

// The kernels for the calling thread: reads EGetMMX() once; the scalar
// kernels when it is 0.
template <class T>
const RowKernels<T>& ActiveKernels();

#if defined(MIREL_X86_SIMD)
const RowKernels<std::uint8_t>& Sse2Kernels8();
const RowKernels<std::uint16_t>& Sse2Kernels16();
const RowKernels<std::uint8_t>& Avx2Kernels8();
const RowKernels<std::uint16_t>& Avx2Kernels16();
const RowKernels<std::uint8_t>& Avx512Kernels8();
const RowKernels<std::uint16_t>& Avx512Kernels16();
#endif

template <class T>
struct LineBuffer {
  T* p = nullptr;
  explicit LineBuffer(int n)
      : p(static_cast<T*>(std::malloc(static_cast<std::size_t>(n > 1 ? n : 1) * sizeof(T)))) {}
  ~LineBuffer() { std::free(p); }
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;
};

template <class T>
const T* ConstRow(const T* base, std::ptrdiff_t pitch, int y) {
  return reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(base) + pitch * y);
}
template <class T>
T* MutRow(T* base, std::ptrdiff_t pitch, int y) {
  return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(base) + pitch * y);
}

// Runs a kernel over rows [y0, y1) of h rows, each with the rows above, at
// and below it (the edge row of the image repeated at the top and bottom).
// Apart from the source, `prev` is null. In place, the originals of the row
// above and of the row itself are kept in the line buffers `prev` and `cur`;
// `above` and `below` hold the originals of rows y0 - 1 and y1, which
// neighbouring bands may already have written (unused at the image's
// edges).
template <class T, class K>
void ForEachRowIn(const T* src, std::ptrdiff_t sp, T* dst, std::ptrdiff_t dp, int w, int h, int y0, int y1,
                  T* prev, T* cur, const T* above, const T* below, K&& kernel) {
  if (prev == nullptr) {
    for (int y = y0; y < y1; ++y)
      kernel(ConstRow(src, sp, y > 0 ? y - 1 : 0), ConstRow(src, sp, y), ConstRow(src, sp, y + 1 < h ? y + 1 : h - 1),
             MutRow(dst, dp, y));
    return;
  }
  if (y0 > 0) std::memcpy(prev, above, static_cast<std::size_t>(w) * sizeof(T));
  for (int y = y0; y < y1; ++y) {
    std::memcpy(cur, ConstRow(src, sp, y), static_cast<std::size_t>(w) * sizeof(T));
    const T* next = y + 1 < y1 ? ConstRow(src, sp, y + 1) : y + 1 < h ? below : cur;
    kernel(y == 0 ? cur : prev, cur, next, MutRow(dst, dp, y));
    T* t = prev;
    prev = cur;
    cur = t;
  }
}

// ForEachRowIn over all rows of the image.
template <class T, class K>
inline bool ForEachRow(const T* src, std::ptrdiff_t sp, T* dst, std::ptrdiff_t dp, int w, int h, bool inPlace,
                       K&& kernel) {
  if (w <= 0 || h <= 0) return true;
  if (!inPlace) {
    ForEachRowIn<T>(src, sp, dst, dp, w, h, 0, h, nullptr, nullptr, nullptr, nullptr, kernel);
    return true;
  }
  LineBuffer<T> a(w), b(w);
  if (a.p == nullptr || b.p == nullptr) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return false;
  }
  ForEachRowIn<T>(src, sp, dst, dp, w, h, 0, h, a.p, b.p, nullptr, nullptr, kernel);
  return true;
}

// ---------------------------------------------------------------- passes

enum class PassKind { kSquare, kX, kY, kCross };

// The labels of one family's passes; index 0 erosion, 1 dilation. A pass
// may also have labels of its own worker, inside the pass's, for the
// pixel-by-pixel walk and for the blocks (null where there is none).
struct Family {
  int op[2];
  const char* square[2];
  const char* x[2];
  const char* y[2];
  const char* cross[2];
  const char* separable[2];
  const char* squareWorker[2][2];  // [scalar, blocks][mode]
  const char* crossWorker[2][2];
};

// One pass from src into dst; dst null, equal to src or on the same pixels
// means in place. Checks both ROIs and traces the pass's label on failure.
// P is EBW8 or EBW16.
template <class P>
void RunPass(const Family& f, int mode, PassKind kind, EROI<P>* src, EROI<P>* dst);

// Box (hw, hh) and disk r, with the half-height sentinel resolved by the
// caller. With a separate destination the first pass reads src; the rest run
// in place. Both half-sizes 0: a copy, or nothing in place. Sets codes, does
// not trace its own label.
template <class P>
void Box(const Family& f, int mode, EROI<P>* src, EROI<P>* dst, unsigned hw, unsigned hh);
template <class P>
void Disk(const Family& f, int mode, EROI<P>* src, EROI<P>* dst, unsigned r);
// The separable box: horizontal passes then vertical passes, under the
// family's separable label.
template <class P>
void SeparableBox(const Family& f, int mode, EROI<P>* src, EROI<P>* dst, unsigned hw, unsigned hh);

// The minimum (or another of the four operations) over the window of
// (2 hw + 1) x (2 hh + 1) pixels clipped to the ROI, from src to dst (which
// may be the same pixels), at a cost per pixel that does not depend on the
// window: a doubling of the window along each row and running extrema over
// segments of each column. Gives the bytes of hw horizontal and hh vertical
// passes. False with 1303 standing when its buffers cannot be had. When
// `rowsBanded` (each dst row lies on its own src row or apart from src) the
// result comes in bands of rows, each one walk down the source; otherwise a
// row walk into dst and a column walk over dst in bands of columns.
template <class T>
bool RunningBox(int op, const T* src, std::ptrdiff_t srcPitch, T* dst, std::ptrdiff_t dstPitch, int w,
                int h, int hw, int hh, const RowKernels<T>& k, bool rowsBanded);

// True when two ROIs address the same first pixel of the same image.
bool SamePixels(const EGenericROI* a, const EGenericROI* b);

}  // namespace morphology

namespace testing {
// Boxes whose larger half-size reaches `from` use the running extrema
// instead of the passes; 0 restores the library's choice, and a very large
// value forces the passes. Per thread.
MIREL_API void SetRunningBoxFrom(int from);
// Bytes of cache that the column walk of the running box may take; 0
// restores the library's choice, 1 gives the narrowest strips. Per thread.
MIREL_API void SetRunningBoxBudget(int bytes);
}  // namespace testing
}  // namespace mirel

// The passes, exported for the library's tests; not part of the public
// interface. dst may be null (in place).
MIREL_API void ImgErode3x3(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgDilate3x3(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgErodeX(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgDilateX(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgErodeY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgDilateY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgErodeXY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgDilateXY(EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void TlmErodeBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh);
MIREL_API void TlmDilateBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh);
MIREL_API void ImgErode3x3(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgDilate3x3(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgErodeX(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgDilateX(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgErodeY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgDilateY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgErodeXY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgDilateXY(EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void TlmErodeBox(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int hw, unsigned int hh);
MIREL_API void TlmDilateBox(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int hw, unsigned int hh);

// Define the form of a box or disk operation for a const source: it hands
// the source on to the writable form with its destination (see
// mirel::ReadOnlySource in frame_internal.h).
#define MIREL_CONST_SOURCE_BOX(Name, P)                                          \
  void Name(const EROI<P>* s, EROI<P>* d, unsigned int hw, unsigned int hh) { \
    Name(mirel::ReadOnlySource(s, d), d, hw, hh);                             \
  }
#define MIREL_CONST_SOURCE_DISK(Name, P) \
  void Name(const EROI<P>* s, EROI<P>* d, unsigned int r) { Name(mirel::ReadOnlySource(s, d), d, r); }
// All fourteen, named Prefix<Operation><Box|Disk>Suffix.
#define MIREL_CONST_SOURCE_MORPHOLOGY(Prefix, Suffix, P)           \
  MIREL_CONST_SOURCE_BOX(Prefix##ErodeBox##Suffix, P)             \
  MIREL_CONST_SOURCE_BOX(Prefix##DilateBox##Suffix, P)            \
  MIREL_CONST_SOURCE_BOX(Prefix##OpenBox##Suffix, P)              \
  MIREL_CONST_SOURCE_BOX(Prefix##CloseBox##Suffix, P)             \
  MIREL_CONST_SOURCE_BOX(Prefix##WhiteTopHatBox##Suffix, P)       \
  MIREL_CONST_SOURCE_BOX(Prefix##BlackTopHatBox##Suffix, P)       \
  MIREL_CONST_SOURCE_BOX(Prefix##MorphoGradientBox##Suffix, P)    \
  MIREL_CONST_SOURCE_DISK(Prefix##ErodeDisk##Suffix, P)           \
  MIREL_CONST_SOURCE_DISK(Prefix##DilateDisk##Suffix, P)          \
  MIREL_CONST_SOURCE_DISK(Prefix##OpenDisk##Suffix, P)            \
  MIREL_CONST_SOURCE_DISK(Prefix##CloseDisk##Suffix, P)           \
  MIREL_CONST_SOURCE_DISK(Prefix##WhiteTopHatDisk##Suffix, P)     \
  MIREL_CONST_SOURCE_DISK(Prefix##BlackTopHatDisk##Suffix, P)     \
  MIREL_CONST_SOURCE_DISK(Prefix##MorphoGradientDisk##Suffix, P)

#endif  // MIREL_MORPHOLOGY_MORPHOLOGY_INTERNAL_H_
