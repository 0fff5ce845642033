// Thinning and thickening of packed bit images: the passes of the 8-bit
// form on rows of bits, and the ...Aligned and plain forms.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/thinning.h"
#include "mirel/morphology/thinning_internal.h"
#include "mirel/point/bits_internal.h"

namespace mirel {
namespace thinning {
namespace {

using bits::u8;

// The passes over aligned ROIs. The first pass reads the source unless it
// works in place; later passes work on the destination in place. Each row
// is copied clean (see BitRow) before it is written over; the destination
// keeps the bits behind each row's last pixel.
void BitPasses(const EROI<EBW1>* src, EROI<EBW1>* dst, const Pattern& pattern, int rotation, int& iterations,
               bool thicken) {
  const Routines& routines = ActiveRoutines();
  const Rows<const EBW1> rs = RowsOf(src);
  const Rows<EBW1> rd = RowsOf(dst);
  const bool inPlace = SamePixels(src, dst);
  const int w = rs.width, h = rs.height;
  const std::size_t n = static_cast<std::size_t>(w + 7) / 8;
  // Six rows: above, at, below, zeros, fail and out, each with a margin of
  // zeros in front and kBitMargin bytes behind.
  const std::size_t stride = 64 + (n + 63) / 64 * 64 + kBitMargin;
  std::unique_ptr<u8[]> buffer(new (std::nothrow) u8[6 * stride]);
  if (!buffer) bits::Throw(ESetError(E_ERROR_WORK_BUFFER));
  std::memset(buffer.get(), 0, 6 * stride);
  u8* row[6];
  for (int k = 0; k < 6; ++k) row[k] = buffer.get() + static_cast<std::size_t>(k) * stride + 64;
  const u8 valid = w > 0 ? bits::LastValid(w) : 0;
  auto clean = [&](bool source, int y, u8* to) {
    std::memcpy(to, source ? bits::RowBytes(rs, y) : bits::RowBytes(rd, y), n);
    to[n - 1] = static_cast<u8>(to[n - 1] & valid);
  };
  RunPasses(pattern, rotation, w, iterations, [&](bool first, const Pattern& pat) {
    if (w == 0 || h == 0) return false;
    const bool source = first && !inPlace;
    u8 *above = row[0], *at = row[1], *below = row[2];
    clean(source, 0, at);
    if (h > 1) clean(source, 1, below);
    bool changed = false;
    for (int y = 0; y < h; ++y) {
      const BitRow r{y > 0 ? above : row[3], at, y + 1 < h ? below : row[3], row[4], row[5], w,
                     MasksOfRow(pat, y, h), pat.pattern, thicken, first};
      changed |= routines.bitRow(r);
      u8* d = bits::RowBytes(rd, y);
      std::memcpy(d, row[5], n - 1);
      bits::Merge(d + n - 1, row[5][n - 1], valid);
      u8* t = above;
      above = at;
      at = below;
      below = t;
      if (y + 2 < h) clean(source, y + 2, below);
    }
    return changed;
  });
}

// The checks of the 8-bit form, with the alignment of both ROIs, each
// failure thrown with its code; then the passes. A null dst works in place.
short ThinAligned(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                  int& iterations, bool thicken) {
  EOk();
  if (src == nullptr) bits::Throw(ESetError(E_ERROR_VOID_IMAGE));
  if (dst == nullptr) dst = src;
  src->CheckSameSize(dst);
  if (EGetError() != E_OK) bits::ThrowError();
  src->CheckNotVoid();
  dst->CheckNotVoid();
  if (EGetError() != E_OK) bits::ThrowError();
  bits::CheckAlignedOrThrow({src, dst});
  Pattern pat;
  if (!ReadPattern(kernel, rotation, iterations, &pat)) bits::ThrowError();
  if (!SamePixels(src, dst) && Overlap(src, dst)) bits::Throw(ESetError(E_ERROR_SAME_IMAGE));
  BitPasses(src, dst, pat, rotation, iterations, thicken);
  return static_cast<short>(EOk());
}

short ThinPlain(const char* label, EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel,
                KERNEL_ROTATION rotation, int& iterations, bool thicken) {
  bits::PlainForm(label, label, src, dst, [&](EROI<EBW1>* s, EROI<EBW1>* d) {
    ThinAligned(s, d, kernel, rotation, iterations, thicken);
  });
  return static_cast<short>(EGetError());
}

}  // namespace
}  // namespace thinning
}  // namespace mirel

short ImgThinAligned(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  return mirel::thinning::ThinAligned(src, dst, kernel, rotation, n, false);
}
short ImgThickAligned(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  return mirel::thinning::ThinAligned(src, dst, kernel, rotation, n, true);
}
short ImgThin(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  return mirel::thinning::ThinPlain("ImgThin (BW1)", src, dst, kernel, rotation, n, false);
}
short ImgThick(EROI<EBW1>* src, EROI<EBW1>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  return mirel::thinning::ThinPlain("ImgThick (BW1)", src, dst, kernel, rotation, n, true);
}

// Const sources: the same operations, never in place (see the header).
#define MIREL_CONST_SOURCE(Name)                                                                    \
  short Name(const EROI<EBW1>* s, EROI<EBW1>* d, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) { \
    return Name(mirel::ReadOnlySource(s, d), d, kernel, rotation, n);                               \
  }
MIREL_CONST_SOURCE(ImgThinAligned)
MIREL_CONST_SOURCE(ImgThickAligned)
MIREL_CONST_SOURCE(ImgThin)
MIREL_CONST_SOURCE(ImgThick)
#undef MIREL_CONST_SOURCE
