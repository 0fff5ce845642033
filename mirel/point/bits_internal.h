// Internal pieces of the bit-image engine, shared by every family that works
// on EROI<EBW1>: the geometry of a packed row, the checks that an ...Aligned
// form throws from, the aligned stand-ins of a plain form and the plain form
// itself, and the byte kernels of each instruction set.
//
// A row of `width` pixels spans ceil(width / 8) bytes; the first pixel is the
// most significant bit of the first byte. The bytes before the last are
// whole; the last holds ((width - 1) mod 8) + 1 pixels from its top bit down,
// and its other bits (the pad bits) are not pixels.
#ifndef MIREL_POINT_BITS_INTERNAL_H_
#define MIREL_POINT_BITS_INTERNAL_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/image.h"
#include "mirel/point/bits.h"

namespace mirel {
namespace bits {

using u8 = unsigned char;

// Bytes of a row before its last byte.
inline int WholeBytes(int width) { return (width + 7) / 8 - 1; }
// The pixel bits of a row's last byte.
inline u8 LastValid(int width) { return static_cast<u8>(0xff00u >> (((width - 1) & 7) + 1)); }
// Writes `value` into the pixel bits of *p and keeps its other bits.
inline void Merge(u8* p, u8 value, u8 valid) { *p = static_cast<u8>((value & valid) | (*p & ~valid)); }

// First byte of row y of a bit ROI.
inline u8* RowBytes(const Rows<EBW1>& r, int y) { return reinterpret_cast<u8*>(r.Row(y)); }
inline const u8* RowBytes(const Rows<const EBW1>& r, int y) { return reinterpret_cast<const u8*>(r.Row(y)); }

// ---------------------------------------------------------------- checks

[[noreturn]] void Throw(E_ERRORS code);
// Throws the code of the error state.
[[noreturn]] void ThrowError();

// The checks an ...Aligned form starts with: EOk, then each source and the
// destination not null and not void (1400), then each source the size of
// the destination (1403). A failure leaves its code in the error state and
// throws it.
void CheckOrThrow(std::initializer_list<const EGenericROI*> sources, const EGenericROI* dst);
// Throws 1423 (without setting the error state) unless every ROI that holds
// a pixel starts on a byte.
void CheckAlignedOrThrow(std::initializer_list<const EGenericROI*> rois);

// True when a plain form must move the ROI onto an aligned temporary.
inline bool NeedsTemporary(const EROI<EBW1>* roi) {
  return roi->GetWidth() > 0 && roi->GetHeight() > 0 && roi->GetBitOffset(0, 0) != 0;
}

// ---------------------------------------------------------------- stand-ins

// What a plain form reads in place of a bit ROI: the ROI itself when it
// starts on a byte, else an aligned temporary holding its pixels. R is
// EROI<EBW1> or const EROI<EBW1>. Throws what the alignment throws.
template <class R>
class AlignedSource {
 public:
  explicit AlignedSource(R* roi) : roi_(roi) {
    if (!NeedsTemporary(roi)) return;
    temp_.SetSize(roi->GetWidth(), roi->GetHeight());
    if (EGetError() != E_OK) ThrowError();
    ImgBW1Alignment(roi, &temp_);
    roi_ = &temp_;
  }
  AlignedSource(const AlignedSource&) = delete;
  AlignedSource& operator=(const AlignedSource&) = delete;
  R* get() const { return roi_; }

 private:
  EImage<EBW1> temp_;
  R* roi_;
};

// What a plain form writes in place of a bit ROI: the ROI itself when it
// starts on a byte, else an aligned temporary, which starts as a copy of
// the ROI when `keepOld` (for operations that keep some destination bits)
// and goes back into it with WriteBack().
class AlignedTarget {
 public:
  AlignedTarget(EROI<EBW1>* roi, bool keepOld) : roi_(roi), use_(roi) {
    if (!NeedsTemporary(roi)) return;
    temp_.SetSize(roi->GetWidth(), roi->GetHeight());
    if (EGetError() != E_OK) ThrowError();
    if (keepOld) ImgBW1Alignment(roi, &temp_);
    use_ = &temp_;
  }
  AlignedTarget(const AlignedTarget&) = delete;
  AlignedTarget& operator=(const AlignedTarget&) = delete;
  EROI<EBW1>* get() { return use_; }
  void WriteBack() {
    if (use_ == &temp_) ImgBW1UnAlignment(&temp_, roi_);
  }

 private:
  EImage<EBW1> temp_;
  EROI<EBW1>* roi_;
  EROI<EBW1>* use_;
};

// ---------------------------------------------------------------- plain forms

// Runs `body` inside a frame's handler: a thrown Exception leaves its code in
// the error state and the frame traces `label`. `setAnew` sets the code
// again, which also restarts the trace; otherwise the code that already
// stands is kept with whatever inner labels it has (and set only when the
// state is clear).
template <class Fn>
void Guarded(Frame& frame, const char* label, bool setAnew, Fn&& body) {
  try {
    body();
  } catch (const Corvane::Talmeer::Exception& e) {
    if (setAnew || EGetError() == E_OK) ESetError(e.GetCode());
    frame.SetLabel(label);
  }
}

// The plain form of an operation from `src` into `dst`, or into `src` itself
// when `dst` is null: a null source is 1400 under `nullLabel`; a ROI that
// starts inside a byte is moved onto an aligned temporary and back; then
// aligned(source, destination or null) runs, and a throw from it becomes the
// error state under `catchLabel`.
template <class Fn>
void PlainForm(const char* nullLabel, const char* catchLabel, EROI<EBW1>* src, EROI<EBW1>* dst, Fn&& aligned) {
  Frame frame(nullLabel);
  if (!frame.Require(src != nullptr, E_ERROR_VOID_IMAGE)) return;
  Guarded(frame, catchLabel, false, [&] {
    if (dst == nullptr) {
      AlignedTarget s(src, true);
      aligned(s.get(), static_cast<EROI<EBW1>*>(nullptr));
      s.WriteBack();
      return;
    }
    AlignedSource<EROI<EBW1>> s(src);
    AlignedTarget d(dst, false);
    aligned(s.get(), d.get());
    d.WriteBack();
  });
}

// ---------------------------------------------------------------- kernels

// The logic of the byte kernels: r = f(a, b, d), d being the destination's
// old byte.
enum Logic : int {
  kCopy = 0,        // a
  kInvert,          // ~a
  kAnd,             // a & b
  kOr,              // a | b
  kXor,             // a ^ b
  kKeepWhereSet,    // d where a is set, b where it is clear
  kTakeWhereSet,    // b where a is set, d where it is clear
  kNotOr,           // ~a | b
  kLogicCount
};

// Byte loops over whole bytes, one table per instruction set. Each gives the
// bytes of the plain loop.
struct Kernels {
  // d[i] = f(a[i], b[i], d[i]) for i in [0, n); b is not read by the unary
  // logic (callers may pass a).
  void (*logic[kLogicCount])(const u8* a, const u8* b, u8* d, std::size_t n);
  // d[i] = (s[i] << k) | (s[i + 1] >> (8 - k)) in bytes, k in 1..7; reads
  // s[0] to s[n].
  void (*shift)(const u8* s, u8* d, std::size_t n, int k);
  // d[j] holds pixels p[8j] to p[8j + 7], from bit 7 down, each set when the
  // pixel is at least t, j in [0, n). t in 1..255, or 1..65535.
  void (*pack8)(const std::uint8_t* p, u8* d, std::size_t n, unsigned t);
  void (*pack16)(const std::uint16_t* p, u8* d, std::size_t n, unsigned t);
  // Eight pixels from each byte s[j], j in [0, n): `on` for a set bit, 0
  // for a clear one.
  void (*expand8)(const u8* s, std::uint8_t* d, std::size_t n, std::uint8_t on);
  // The number of set bits in a[i] ^ b[i], i in [0, n).
  std::uint64_t (*countDiffer)(const u8* a, const u8* b, std::size_t n);
};

// The table for the calling thread: reads EGetMMX(); the scalar table when
// it is 0.
const Kernels& ActiveKernels();
const Kernels& ScalarKernels();
#if defined(MIREL_X86_SIMD)
const Kernels& Sse2Kernels();
const Kernels& Avx2Kernels();
const Kernels& Avx512Kernels();
#endif

}  // namespace bits
}  // namespace mirel

#endif  // MIREL_POINT_BITS_INTERNAL_H_
