// Images and regions of interest.
//
// EImage<T> owns its pixels, or borrows a caller's buffer (see Borrow);
// EROI<T> is a rectangle placed inside a parent (an image or another ROI)
// and owns none. A ROI keeps a plain pointer to its parent: it must not
// outlive the image (or ROI) it is placed in, nor be used after that image
// was moved from. Both derive from EGenericROI,
// which every operation can check without knowing the pixel type. T is one
// of the eleven pixel structures of pixel.h.
//
// The row walk. Workers read a row pointer with GetImagePtr(0, y), the row's
// end with GetImagePtr(GetWidth(), y) and the start of the next row by adding
// GetSkip() to the end. GetImagePtr(GetWidth(), y) and GetImagePtr(x,
// GetHeight()) give the address one past, with no check and no side effect;
// on a void ROI GetImagePtr returns null for every (x, y), so a walk from
// GetImagePtr(0, 0) to GetImagePtr(0, GetHeight()) does nothing.
//
// Rows of an image the library allocates start on 64-byte boundaries. A bit
// image's pitch always leaves room for one more byte behind a row whose
// width is a multiple of 8. The bytes between the rows of such an image are
// the library's own: an operation whose destination spans every column may
// write those between the destination's rows (a fill or a copy may run the
// rows as one stretch). A borrowed buffer has the caller's pitch and
// alignment, and operations read and write nothing outside its rows.
//
// Placement. SetPlacement and the placing constructor accept a rectangle only
// when it lies wholly inside the parent (origin >= 0, size >= 0, origin +
// size <= parent size). Otherwise they set E_ERROR_BAD_ARGUMENT (1007) and
// trace "EROI::SetPlacement" or "EROI::EROI". SetPlacement then keeps the
// previous placement; a ROI whose placing constructor refused its rectangle
// is void (every operation refuses it with 1400) until a placement succeeds
// or it is attached again. A ROI whose rectangle no longer fits its parent,
// because the parent was resized or moved later, reports itself void too,
// so no operation reads outside the image.
//
// Run masks. An EROI<EBW8> may carry runs: horizontal stretches of pixels
// that the histogram, area, average, extremes and gravity-centre operations
// restrict themselves to. See ERun. Each run must lie inside one row of the
// ROI as it is placed when an operation reads the mask; a mask with a run
// outside it is refused with E_ERROR_BAD_ARGUMENT (1007) and no pixel read.
#ifndef MIREL_FOUNDATION_IMAGE_H_
#define MIREL_FOUNDATION_IMAGE_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/pixel.h"

template <class T>
class EROI;
template <class T>
class EImage;

namespace mirel {
namespace detail {
// Row-aligned pixel storage for EImage: 64-byte aligned, null on failure.
MIREL_API unsigned char* AllocatePixels(std::size_t bytes);
MIREL_API void FreePixels(unsigned char* block);
// Bytes of freed blocks that the cache keeps (see ImgSetPixelCache).
MIREL_API std::size_t KeptPixelBytes();
}  // namespace detail
}  // namespace mirel

namespace mirel {
namespace detail {
struct RowsAccess;
}  // namespace detail
}  // namespace mirel

class MIREL_API EGenericROI {
 public:
  EGenericROI() = default;
  EGenericROI(const EGenericROI&) = default;
  EGenericROI& operator=(const EGenericROI&) = default;

  // Virtual operations, in the order of their slots.
  virtual ~EGenericROI();
  // The image at the top of the chain of parents (this object if it has no
  // parent). Two ROIs that answer alike lie on the same pixels.
  virtual const EGenericROI* GetTopParent() const;
  virtual int GetPixelBytes() const = 0;
  // Sets 1403 when `other` differs in width or height (1400 when it is null);
  // otherwise leaves the error state alone.
  virtual void CheckSameSize(const EGenericROI* other) const;
  // Non-zero exactly when the ROI has no pixel memory to address.
  virtual int Void() const = 0;
  // On an image these reallocate; on a ROI they resize the rectangle in place
  // under the placement rule.
  virtual void SetSize(const EGenericROI* like);
  virtual void SetSize(EGenericROI* like);
  virtual void SetSize(int width, int height);
  virtual const void* GetGenericImagePtr(int x, int y) const = 0;
  virtual void* GetGenericImagePtr(int x, int y) = 0;
  virtual int GetRowPitch() const = 0;
  // Position 0..7, from the most significant bit, of pixel (x, y) inside its
  // byte; always 0 except for bit images.
  virtual int GetBitOffset(int x, int y) const;
  // Sets 1400 when the ROI is void; otherwise leaves the error state alone.
  virtual void CheckNotVoid() const;
  // Bytes from just behind a row's last pixel to the next row's first pixel.
  virtual int GetSkip() const = 0;
  // Hook for objects that take a newly made image of the same size; plain
  // ROIs ignore it.
  virtual void AttachImage(EImage<EBW8>* image);

  int GetWidth() const { return width_; }
  int GetHeight() const { return height_; }
  int GetOrgX() const { return org_x_; }
  int GetOrgY() const { return org_y_; }
  int GetTotalOrgX() const;
  int GetTotalOrgY() const;
  int GetTotalHeight() const { return Top()->height_; }
  int GetVoid() const { return Void(); }
  EGenericROI* GetParent() const { return parent_; }
  const void* GetImagePtr(int x, int y) const { return GetGenericImagePtr(x, y); }
  void* GetImagePtr(int x, int y) { return GetGenericImagePtr(x, y); }

 protected:
  const EGenericROI* Top() const;
  // True when the rectangle lies inside its parent, and the parent inside
  // its own, up to the image.
  bool PlacementFits() const;
  // Pixel memory of the image at the top (null when it has none) and its pitch.
  unsigned char* TopData() const { return Top()->data_; }
  int TopPitch() const { return Top()->pitch_; }

  EGenericROI* parent_ = nullptr;
  int org_x_ = 0;
  int org_y_ = 0;
  int width_ = 0;
  int height_ = 0;
  // Set on images only.
  unsigned char* data_ = nullptr;
  int pitch_ = 0;
  bool borrowed_ = false;  // data_ is a caller's buffer

 private:
  friend struct mirel::detail::RowsAccess;
};

namespace mirel {
namespace detail {
struct RowsAccess {
  static bool SpansOwnedRows(const EGenericROI* roi) {
    if (roi == nullptr || roi->Void()) return false;
    const EGenericROI* top = roi->Top();
    return top->data_ != nullptr && !top->borrowed_ && roi->width_ == top->width_;
  }
};

// True when `roi` is not void and spans every column of an image that owns
// its pixels. The bytes between the end of one of its rows and the start of
// the next are then the padding of a block the library allocated, and any
// run of its rows, padding included, is one stretch of memory that an
// operation may write as a whole. Never true on a borrowed buffer, whose
// padding is the caller's, nor on a ROI narrower than its image.
inline bool SpansOwnedRows(const EGenericROI* roi) { return RowsAccess::SpansOwnedRows(roi); }
}  // namespace detail
}  // namespace mirel

// A run of a run mask: the pixels from `start` up to, not including, `end`
// on one row, and the position (x, y) of its first pixel in the ROI. With
// GetMaskOffsets() == 0, start and end are pixel addresses; otherwise they
// are byte offsets from the ROI's first pixel, GetImagePtr(0, 0).
struct ERun {
  std::intptr_t start;
  std::intptr_t end;
  int x;
  int y;
};

namespace mirel {
namespace detail {

template <class T>
class RunMask {};

template <>
class RunMask<EBW8> {
 public:
  // Copies `count` runs; `offsets` non-zero means start and end are offsets.
  // Sets 1303 and leaves the old mask when memory runs out.
  void SetRuns(const ERun* runs, int count, int offsets) {
    if (count <= 0 || runs == nullptr) {
      ClearRuns();
      return;
    }
    try {
      std::vector<ERun> copy(runs, runs + count);
      runs_.swap(copy);
      offsets_ = offsets;
    } catch (const std::bad_alloc&) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
    }
  }
  void ClearRuns() {
    std::vector<ERun>().swap(runs_);
    offsets_ = 0;
  }
  int GetNumRuns() const { return static_cast<int>(runs_.size()); }
  const ERun* GetRuns() const { return runs_.empty() ? nullptr : runs_.data(); }
  int GetMaskOffsets() const { return offsets_; }

 private:
  std::vector<ERun> runs_;
  int offsets_ = 0;
};

}  // namespace detail
}  // namespace mirel

template <class T>
class MIREL_TEMPLATE_API EROI : public EGenericROI, public mirel::detail::RunMask<T> {
 public:
  static constexpr bool kBits = std::is_same<T, EBW1>::value;

  EROI() = default;
  // The parent may be const: a ROI is a view, and whether its pixels are
  // written depends on where it is passed, as with the image itself. A ROI
  // over a const image is meant to be passed as a source only.
  EROI(const EROI* parent, int orgX, int orgY, int width, int height) {
    parent_ = const_cast<EROI*>(parent);
    if (!Accepts(parent, orgX, orgY, width, height)) {
      refused_ = true;
      ESetError(E_ERROR_BAD_ARGUMENT);
      ETraceError("EROI::EROI");
      return;
    }
    org_x_ = orgX;
    org_y_ = orgY;
    width_ = width;
    height_ = height;
  }
  ~EROI() override = default;

  int GetPixelBytes() const override { return kBits ? 0 : static_cast<int>(sizeof(T)); }
  int Void() const override { return refused_ || TopData() == nullptr || !PlacementFits(); }
  using EGenericROI::SetSize;
  void SetSize(int width, int height) override { SetPlacement(org_x_, org_y_, width, height); }
  const void* GetGenericImagePtr(int x, int y) const override { return Address(x, y); }
  void* GetGenericImagePtr(int x, int y) override { return Address(x, y); }
  int GetRowPitch() const override { return TopPitch(); }
  int GetBitOffset(int x, int) const override {
    return kBits ? ((GetTotalOrgX() + x) & 7) : 0;
  }
  int GetSkip() const override { return GetRowPitch() - RowBytes(); }

  T* GetImagePtr(int x, int y) { return static_cast<T*>(Address(x, y)); }
  const T* GetImagePtr(int x, int y) const { return static_cast<const T*>(Address(x, y)); }
  T GetPixel(int x, int y) const { return *GetImagePtr(x, y); }
  void SetPixel(T value, int x, int y) { *GetImagePtr(x, y) = value; }

  // Moves and resizes the ROI inside its parent; see the placement rule.
  void SetPlacement(int orgX, int orgY, int width, int height) {
    if (!Accepts(parent_, orgX, orgY, width, height)) {
      ESetError(E_ERROR_BAD_ARGUMENT);
      ETraceError("EROI::SetPlacement");
      return;
    }
    org_x_ = orgX;
    org_y_ = orgY;
    width_ = width;
    height_ = height;
    refused_ = false;
  }
  // Attaches the ROI to another parent at (0, 0) with size 0x0.
  void Attach(const EROI* parent) {
    parent_ = const_cast<EROI*>(parent);
    org_x_ = org_y_ = width_ = height_ = 0;
    refused_ = false;
  }
  void SetColorSystem(E_COLOR_SYSTEM system) { color_system_ = system; }
  E_COLOR_SYSTEM GetColorSystem() const { return color_system_; }

 protected:
  // Bytes between the first pixel of a row and the address one past its last.
  int RowBytes() const {
    if (kBits) {
      const int x0 = GetTotalOrgX();
      return ((x0 + width_) >> 3) - (x0 >> 3);
    }
    return width_ * static_cast<int>(sizeof(T));
  }

 private:
  static bool Accepts(const EGenericROI* parent, int orgX, int orgY, int width, int height) {
    if (orgX < 0 || orgY < 0 || width < 0 || height < 0) return false;
    if (parent == nullptr) return true;
    return static_cast<long long>(orgX) + width <= parent->GetWidth() &&
           static_cast<long long>(orgY) + height <= parent->GetHeight();
  }
  // Computed in integers so that no pointer arithmetic happens on null.
  void* Address(int x, int y) const {
    unsigned char* base = TopData();
    if (base == nullptr || refused_) return nullptr;
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(GetTotalOrgY() + y) * TopPitch();
    const std::ptrdiff_t col = kBits ? ((GetTotalOrgX() + x) >> 3)
                                     : static_cast<std::ptrdiff_t>(GetTotalOrgX() + x) *
                                           static_cast<std::ptrdiff_t>(sizeof(T));
    return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(base) + row + col);
  }

  E_COLOR_SYSTEM color_system_ = E_COLOR_SYSTEM_NONE;
  // The placing constructor refused the rectangle and nothing placed it since.
  bool refused_ = false;
};

template <class T>
class MIREL_TEMPLATE_API EImage : public EROI<T> {
 public:
  EImage() = default;
  EImage(int width, int height) { SetSize(width, height); }
  // An image over the caller's buffer; see Borrow.
  EImage(T* data, int width, int height, int pitchBytes) { Borrow(data, width, height, pitchBytes); }
  // A copy always owns its pixels, also when `other` borrows them.
  EImage(const EImage& other) : EROI<T>() { CopyFrom(other); }
  EImage& operator=(const EImage& other) {
    if (this != &other) CopyFrom(other);
    return *this;
  }
  // A move takes the pixels (owned or borrowed) without copying them and
  // leaves `other` a void 0x0 image. ROIs placed in `other` stay attached to
  // `other`, not to the pixels, and are void from then on.
  EImage(EImage&& other) noexcept : EROI<T>() { TakeFrom(other); }
  EImage& operator=(EImage&& other) noexcept {
    if (this != &other) {
      Release();
      TakeFrom(other);
    }
    return *this;
  }
  ~EImage() override { Release(); }

  // Makes the image a view of width x height pixels at `data`, rows
  // `pitchBytes` apart. The image owns nothing: the caller keeps the buffer
  // alive while the image (and any ROI in it) is used, and frees it after;
  // the image never frees it. The pitch must hold a row (for a bit image,
  // (width + 7) / 8 + 1 bytes: bit operations may write the byte behind a
  // row) and be positive when there are pixels; data must not be null then,
  // and data and pitch must keep every pixel on its type's alignment (2 for
  // EBW16, 4 for EBW32 and EFLOAT32, ...), since pixels are read through
  // typed pointers. Otherwise 1007 is set, "EImage::Borrow" traced and the
  // image is left as it was. A zero size makes the image void. SetSize to another size later
  // drops the borrowed buffer for one the image owns.
  void Borrow(T* data, int width, int height, int pitchBytes) {
    const bool empty = width == 0 || height == 0;
    const long long row = EROI<T>::kBits ? (static_cast<long long>(width) + 7) / 8 + 1
                                         : static_cast<long long>(width) * static_cast<long long>(sizeof(T));
    const bool misaligned = reinterpret_cast<std::uintptr_t>(data) % alignof(T) != 0 ||
                            static_cast<unsigned int>(pitchBytes) % alignof(T) != 0;
    if (width < 0 || height < 0 ||
        (!empty && (data == nullptr || pitchBytes <= 0 || pitchBytes < row || misaligned))) {
      ESetError(E_ERROR_BAD_ARGUMENT);
      ETraceError("EImage::Borrow");
      return;
    }
    Release();
    if (!empty) {
      this->data_ = reinterpret_cast<unsigned char*>(data);
      this->pitch_ = pitchBytes;
      this->borrowed_ = true;
    }
    this->width_ = width;
    this->height_ = height;
  }
  // True while the pixels belong to a caller's buffer.
  bool IsBorrowed() const { return this->borrowed_; }

  using EROI<T>::SetSize;
  void SetSize(const EGenericROI* like) override { SetSize(like->GetWidth(), like->GetHeight()); }
  void SetSize(EGenericROI* like) override { SetSize(like->GetWidth(), like->GetHeight()); }
  // Reallocates to width x height; the pixels are then undefined. The same
  // size keeps the buffer and its pixels. A zero size releases the pixels and
  // leaves the image void. A negative size sets 1007; exhausted memory sets
  // 1303. On failure the image keeps its old pixels.
  void SetSize(int width, int height) override {
    if (width < 0 || height < 0) {
      ESetError(E_ERROR_BAD_ARGUMENT);
      return;
    }
    if (width == this->width_ && height == this->height_ && (this->data_ != nullptr || width == 0 || height == 0))
      return;  // a borrowed buffer of this size is kept too
    if (width == 0 || height == 0) {
      Release();
      this->width_ = width;
      this->height_ = height;
      return;
    }
    const std::size_t row = EROI<T>::kBits ? (static_cast<std::size_t>(width) + 7) / 8 + 1
                                           : static_cast<std::size_t>(width) * sizeof(T);
    const std::size_t pitch = (row + 63) & ~static_cast<std::size_t>(63);
    if (pitch > 0x7fffffc0u || static_cast<std::size_t>(height) > (SIZE_MAX - 64) / pitch) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return;
    }
    unsigned char* block = mirel::detail::AllocatePixels(pitch * static_cast<std::size_t>(height) + 64);
    if (block == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return;
    }
    Release();
    this->data_ = block;
    this->pitch_ = static_cast<int>(pitch);
    this->width_ = width;
    this->height_ = height;
  }

 private:
  void Release() {
    if (!this->borrowed_) mirel::detail::FreePixels(this->data_);
    this->data_ = nullptr;
    this->pitch_ = 0;
    this->borrowed_ = false;
  }
  void TakeFrom(EImage& other) {
    this->data_ = other.data_;
    this->pitch_ = other.pitch_;
    this->width_ = other.width_;
    this->height_ = other.height_;
    this->borrowed_ = other.borrowed_;
    other.data_ = nullptr;
    other.pitch_ = other.width_ = other.height_ = 0;
    other.borrowed_ = false;
  }
  // Row by row: the two pitches differ when either image is borrowed.
  void CopyFrom(const EImage& other) {
    if (this->borrowed_ && (this->width_ != other.width_ || this->height_ != other.height_)) Release();
    SetSize(other.GetWidth(), other.GetHeight());
    if (this->data_ == nullptr || other.data_ == nullptr || this->width_ != other.width_ ||
        this->height_ != other.height_)
      return;
    // The pixels of a row only: a borrowed buffer may end right behind the
    // last row's last pixel.
    const std::size_t row = EROI<T>::kBits ? (static_cast<std::size_t>(this->width_) + 7) / 8
                                           : static_cast<std::size_t>(this->width_) * sizeof(T);
    for (int y = 0; y < this->height_; ++y)
      std::memcpy(this->data_ + static_cast<std::size_t>(y) * this->pitch_,
                  other.data_ + static_cast<std::size_t>(y) * other.pitch_, row);
  }
};

#endif  // MIREL_FOUNDATION_IMAGE_H_
