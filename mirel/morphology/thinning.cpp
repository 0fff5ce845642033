// Thinning and thickening on 8-bit, 16-bit and colour images: the checks,
// the pattern and its turns, and the loop of passes.
#include "mirel/morphology/thinning.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/foundation/color_route_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/thinning_blocks_internal.h"
#include "mirel/morphology/thinning_internal.h"

namespace mirel {
namespace thinning {

const Routines& ScalarRoutines() {
  static const Routines r = blocks::MakeRoutines<blocks::ScalarIsa, bits::ByteLanes>();
  return r;
}

const Routines& ActiveRoutines() {
  if (EGetMMX() == 0) return ScalarRoutines();
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512Routines();
  if (level >= cpu::kAVX2) return Avx2Routines();
  if (level >= cpu::kSSE2) return Sse2Routines();
#endif
  return ScalarRoutines();
}

bool ReadPattern(const EKernel* kernel, int rotation, int iterations, Pattern* out) {
  if (kernel == nullptr) {
    ESetError(E_ERROR_KERNEL_VOID);
    return false;
  }
  if (kernel->SizeX != 3 && kernel->SizeY != 3) {
    ESetError(E_ERROR_KERNEL_SIZE);
    return false;
  }
  if (kernel->Data == nullptr) {
    ESetError(E_ERROR_KERNEL_VOID);
    return false;
  }
  // Nine coefficients are read, row by row, whatever the other size is.
  if (kernel->AllocatedSize < 9 || static_cast<long>(kernel->SizeX) * kernel->SizeY < 9) {
    ESetError(E_ERROR_KERNEL_TYPE);
    return false;
  }
  unsigned mask = 0, pattern = 0;
  for (int k = 0; k < 9; ++k) {
    const float v = kernel->Data[k];
    if (v != 0.0f && v != 1.0f && v != -1.0f) {
      ESetError(E_ERROR_KERNEL_TYPE);
      return false;
    }
    const unsigned bit = 1u << ((2 - k % 3) * 3 + (2 - k / 3));
    if (v != -1.0f) mask |= bit;
    if (v == 1.0f) pattern |= bit;
  }
  if (static_cast<unsigned>(rotation) >= 3u) {
    ESetError(E_ERROR_BAD_ARGUMENT_2);
    return false;
  }
  if (static_cast<unsigned>(iterations) >= 1024u) {
    ESetError(E_ERROR_BAD_ARGUMENT_3);
    return false;
  }
  const unsigned outside = kernel->OutsideValue;
  *out = Pattern{mask, pattern, static_cast<int>(outside) > 0, outside != 0};
  return true;
}

unsigned Turn(unsigned word, int rotation) {
  // Where each bit goes in a clockwise turn: 8 -> 5 -> 2 -> 1 -> 0 -> 3 ->
  // 6 -> 7 -> 8, the centre staying.
  static const int kClockwise[9] = {3, 0, 1, 6, 4, 2, 7, 8, 5};
  static const int kAnticlockwise[9] = {1, 2, 5, 0, 4, 8, 3, 6, 7};
  if (rotation == 0) return word;
  const int* to = rotation == 1 ? kClockwise : kAnticlockwise;
  unsigned out = 0;
  for (int bit = 0; bit < 9; ++bit)
    if ((word >> bit) & 1u) out |= 1u << to[bit];
  return out;
}

RowMasks MasksOfRow(const Pattern& pat, int y, int h) {
  const unsigned sides = pat.sidesAsPattern ? ~0u : 0u;
  const unsigned rowDrop = sides & ((y == 0 ? kTopRow : 0u) | (y + 1 == h ? kBottomRow : 0u));
  // The left column, corners included, follows its own test.
  const unsigned firstDrop = (rowDrop & ~kLeftColumn) | (pat.leftAsPattern ? kLeftColumn : 0u);
  const unsigned rightDrop = sides & kRightColumn;
  return RowMasks{pat.mask & ~firstDrop, pat.mask & ~rowDrop, pat.mask & ~(rowDrop | rightDrop),
                  pat.mask & ~(firstDrop | rightDrop)};
}

namespace {

// The passes over rows of T; false with 1301 when the line buffers cannot
// be had. `row` runs one row of a pass. The first pass reads the source
// unless it works in place; later passes work on the destination in place,
// with copies of the old row above and of the row itself.
template <class T, class RowFn>
bool Passes(const Rows<const T>& s, const Rows<T>& d, bool inPlace, const Pattern& pattern, int rotation,
            int& iterations, bool thicken, RowFn&& row) {
  const int w = s.width, h = s.height;
  const std::size_t n = static_cast<std::size_t>(w > 0 ? w : 1);
  // Two copies of old rows, and a row of zeros for the rows outside the ROI.
  std::unique_ptr<T[]> buffer(new (std::nothrow) T[3 * n]);
  if (!buffer) {
    ESetError(E_ERROR_WORK_BUFFER);
    return false;
  }
  T* zeros = buffer.get() + 2 * n;
  std::memset(zeros, 0, n * sizeof(T));
  RunPasses(pattern, rotation, w, iterations, [&](bool first, const Pattern& pat) {
    const bool readsSource = first && !inPlace;
    bool changed = false;
    T* prev = buffer.get();
    T* cur = buffer.get() + n;
    for (int y = 0; y < h; ++y) {
      const T* at = s.Row(y);
      if (!readsSource) {
        std::memcpy(cur, d.Row(y), static_cast<std::size_t>(w) * sizeof(T));
        at = cur;
      }
      const RowMasks m = MasksOfRow(pat, y, h);
      HitRow<T> r;
      r.a = y > 0 ? (readsSource ? s.Row(y - 1) : prev) : zeros;
      r.b = at;
      r.c = y + 1 < h ? (readsSource ? s.Row(y + 1) : d.Row(y + 1)) : zeros;
      r.out = d.Row(y);
      r.width = w;
      r.maskFirst = m.first;
      r.maskMid = m.mid;
      r.maskLast = m.last;
      r.maskOnly = m.only;
      r.pattern = pat.pattern;
      r.thicken = thicken;
      r.first = first;
      changed |= row(r);
      T* t = prev;
      prev = cur;
      cur = t;
    }
    return changed;
  });
  return true;
}

// The checks shared by the 8-bit and 16-bit forms, in the order of the
// error list; false with the code set.
template <class P>
bool Checks(Frame& frame, const EROI<P>* src, EROI<P>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
            int iterations, Pattern* pat) {
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_VOID_IMAGE) || !frame.SameSize(src, dst) ||
      !frame.NotVoid(src, dst))
    return false;
  EOk();
  if (!ReadPattern(kernel, rotation, iterations, pat)) {
    frame.Fail(EGetError());
    return false;
  }
  return frame.Require(SamePixels(src, dst) || !Overlap(src, dst), E_ERROR_SAME_IMAGE);
}

short Thin8(const char* label, const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel,
            KERNEL_ROTATION rotation, int& iterations, bool thicken) {
  Frame frame(label);
  Pattern pat;
  if (!Checks(frame, src, dst, kernel, rotation, iterations, &pat)) return frame.Result();
  const Routines& routines = ActiveRoutines();
  const Rows<const EBW8> s = RowsOf(src);
  const Rows<EBW8> d = RowsOf(dst);
  const Rows<const std::uint8_t> sb{reinterpret_cast<const std::uint8_t*>(s.base), s.pitch, s.width, s.height};
  const Rows<std::uint8_t> db{reinterpret_cast<std::uint8_t*>(d.base), d.pitch, d.width, d.height};
  Passes(sb, db, SamePixels(src, dst), pat, rotation, iterations, thicken,
         [&](const HitRow<std::uint8_t>& r) { return routines.hitRow(r); });
  return frame.Result();
}

void Thin16(const char* label, const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel,
            KERNEL_ROTATION rotation, int& iterations, bool thicken) {
  Frame frame(label);
  Pattern pat;
  if (!Checks(frame, src, dst, kernel, rotation, iterations, &pat)) return;
  const Rows<const EBW16> s = RowsOf(src);
  const Rows<EBW16> d = RowsOf(dst);
  const Rows<const std::uint16_t> sw{reinterpret_cast<const std::uint16_t*>(s.base), s.pitch, s.width, s.height};
  const Rows<std::uint16_t> dw{reinterpret_cast<std::uint16_t*>(d.base), d.pitch, d.width, d.height};
  Passes(sw, dw, SamePixels(src, dst), pat, rotation, iterations, thicken,
         [](const HitRow<std::uint16_t>& r) { return blocks::HitRowAny<blocks::ScalarIsa>(r); });
}

void ThinColor(const char* label, const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel,
               KERNEL_ROTATION rotation, int& iterations, bool thicken) {
  Frame frame(label);
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_VOID_IMAGE) || !frame.NotVoid(src, dst) ||
      !frame.SameSize(src, dst))
    return;
  InPlaceByComponent(src, dst, [&](EROI<EBW8>* plane) {
    if (thicken) ImgThick(plane, plane, kernel, rotation, iterations);
    else ImgThin(plane, plane, kernel, rotation, iterations);
  });
}

}  // namespace
}  // namespace thinning
}  // namespace mirel

using mirel::thinning::Thin16;
using mirel::thinning::Thin8;
using mirel::thinning::ThinColor;

short ImgThin(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  return Thin8("ImgThin", src, dst, kernel, rotation, n, false);
}
short ImgThick(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  return Thin8("ImgThick", src, dst, kernel, rotation, n, true);
}
short ImgBiLevelThin(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                     int& n) {
  return Thin8("ImgBiLevelThin", src, dst, kernel, rotation, n, false);
}
short ImgBiLevelThick(const EROI<EBW8>* src, EROI<EBW8>* dst, const EKernel* kernel, KERNEL_ROTATION rotation,
                      int& n) {
  return Thin8("ImgBiLevelThick", src, dst, kernel, rotation, n, true);
}
void ImgThin(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  Thin16("ImgThin (BW16)", src, dst, kernel, rotation, n, false);
}
void ImgThick(const EROI<EBW16>* src, EROI<EBW16>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  Thin16("ImgThick (BW16)", src, dst, kernel, rotation, n, true);
}
void ImgThin(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  ThinColor("ImgThin ( C24)", src, dst, kernel, rotation, n, false);
}
void ImgThick(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel, KERNEL_ROTATION rotation, int& n) {
  ThinColor("ImgThick ( C24)", src, dst, kernel, rotation, n, true);
}
