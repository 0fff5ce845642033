// The frame of an exported operation, and the row view that workers use.
//
// An exported operation reads as a few lines:
//
//   void ImgFoo(EROI<EBW8>* src, EROI<EBW8>* dst) {
//     mirel::Frame frame("ImgFoo (BW8)");
//     if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
//     FooWorker(src, dst);            // may set a code; never traces
//   }                                 // any code set is traced here, once
//
// The constructor clears the error state. Each check clears it, runs and
// reads it; after the first failure every later check is skipped and
// returns false, so the first failure is the one reported. The destructor
// appends the label when a code is set on leaving, on every path, so a frame
// that calls another exported operation leaves the inner label first.
// Operations that return short int end with `return frame.Result();`.
#ifndef MIREL_FOUNDATION_FRAME_INTERNAL_H_
#define MIREL_FOUNDATION_FRAME_INTERNAL_H_

#include <cstddef>
#include <type_traits>

#include "mirel/foundation/error.h"
#include "mirel/foundation/image.h"

namespace mirel {

class Frame {
 public:
  explicit Frame(const char* label) noexcept : label_(label) { EOk(); }
  ~Frame() {
    if (EGetError() != E_OK) ETraceError(label_);
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  // Each ROI in turn is not null and not void (1400).
  template <class... R>
  bool NotVoid(const R*... rois) {
    bool ok = true;
    ((ok = ok && NotVoidOne(rois)), ...);
    return ok;
  }
  // `b` has the width and height of `a` (1403).
  bool SameSize(const EGenericROI* a, const EGenericROI* b) {
    if (failed_) return false;
    EOk();
    if (a == nullptr) ESetError(E_ERROR_VOID_IMAGE);
    else a->CheckSameSize(b);
    return Read();
  }
  // An argument check: sets `code` when `ok` is false.
  bool Require(bool ok, E_ERRORS code) {
    if (failed_) return false;
    EOk();
    if (!ok) ESetError(code);
    return Read();
  }
  // Sets `code` now, for failures found after the checks.
  void Fail(E_ERRORS code) {
    ESetError(code);
    failed_ = true;
  }
  bool Ok() const { return EGetError() == E_OK; }
  // The code as the short int result of the older operations.
  short Result() const { return static_cast<short>(EGetError()); }
  const char* Label() const { return label_; }
  // Replaces the label traced on leaving (an operation whose exception
  // handler reports under a label of its own).
  void SetLabel(const char* label) { label_ = label; }

 private:
  bool NotVoidOne(const EGenericROI* roi) {
    if (failed_) return false;
    EOk();
    if (roi == nullptr) ESetError(E_ERROR_VOID_IMAGE);
    else roi->CheckNotVoid();
    return Read();
  }
  bool Read() {
    failed_ = EGetError() != E_OK;
    return !failed_;
  }

  const char* label_;
  bool failed_ = false;
};

// Rows of a ROI for a worker: the first pixel, the pitch in bytes and the
// size, read once. Row(y) is the first pixel of row y.
template <class T>
struct Rows {
  T* base;
  std::ptrdiff_t pitch;
  int width;
  int height;
  T* Row(int y) const {
    using Byte = std::conditional_t<std::is_const<T>::value, const unsigned char, unsigned char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + pitch * y);
  }
};

template <class T>
Rows<T> RowsOf(EROI<T>* roi) {
  return Rows<T>{roi->GetImagePtr(0, 0), roi->GetRowPitch(), roi->GetWidth(), roi->GetHeight()};
}
template <class T>
Rows<const T> RowsOf(const EROI<T>* roi) {
  return Rows<const T>{roi->GetImagePtr(0, 0), roi->GetRowPitch(), roi->GetWidth(), roi->GetHeight()};
}

// True when two ROIs lie on the same pixels (operations that cannot run in
// place refuse this with 1413).
inline bool SameImage(const EGenericROI* a, const EGenericROI* b) {
  return a->GetTopParent() == b->GetTopParent();
}

// True when two ROIs cover the same pixels: the same image, origin and size
// (an operation given such a pair works in place).
inline bool SamePixels(const EGenericROI* a, const EGenericROI* b) {
  return a == b || (SameImage(a, b) && a->GetTotalOrgX() == b->GetTotalOrgX() &&
                    a->GetTotalOrgY() == b->GetTotalOrgY() && a->GetWidth() == b->GetWidth() &&
                    a->GetHeight() == b->GetHeight());
}

// True when two ROIs lie on the same image and share at least one pixel.
inline bool Overlap(const EGenericROI* a, const EGenericROI* b) {
  if (!SameImage(a, b)) return false;
  const int ax = a->GetTotalOrgX(), ay = a->GetTotalOrgY();
  const int bx = b->GetTotalOrgX(), by = b->GetTotalOrgY();
  return ax < bx + b->GetWidth() && bx < ax + a->GetWidth() && ay < by + b->GetHeight() &&
         by < ay + a->GetHeight();
}

// The source that an overload for a const source hands on to the form of the
// same operation that works in place when given no destination. A const
// source is only read: with a destination it is handed on as it is (a
// destination on the source's own pixels still works in place, since those
// pixels are the caller's to write through the destination); without one
// the operation is given no source at all, so it refuses the call exactly as
// it refuses a missing image, under its own label, and writes nothing.
template <class T>
EROI<T>* ReadOnlySource(const EROI<T>* src, const EGenericROI* dst) {
  return dst != nullptr ? const_cast<EROI<T>*>(src) : nullptr;
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_FRAME_INTERNAL_H_
