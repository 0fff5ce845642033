// Pyramids and 2x2 halving.
//
// One walk serves every form: a band of destination rows [y0, y1) is made
// from the whole source, each full output row from a pair of source rows
// (blocks by the instruction-set routine when the fast paths are on, then
// one by one), the odd last column from the pairs of the last source column,
// the odd last row from the pairs of the last source row, and the corner by
// a copy. The reduction is a small policy type, so the grey modes and the
// gradient pairs share the walk.
#include "mirel/geometry/pyramid.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/geometry/pyramid_internal.h"
#include "mirel/point/arith.h"

namespace mirel {
namespace geometry {
namespace {

using Byte = std::uint8_t;
using U32 = std::uint32_t;

HalveRoutines ActiveHalve() {
  HalveRoutines none{};
  if (EGetMMX() == 0) return none;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return HalveAvx512();
  if (level >= cpu::kAVX2) return HalveAvx2();
  if (level >= cpu::kSSE2) return HalveSse2();
#endif
  return none;
}

struct Average {
  static Byte Four(Byte a, Byte b, Byte c, Byte d) { return static_cast<Byte>((a + b + c + d) >> 2); }
  static Byte Two(Byte a, Byte b) { return static_cast<Byte>((a + b) >> 1); }
};
struct Minimum {
  static Byte Two(Byte a, Byte b) { return a < b ? a : b; }
  static Byte Four(Byte a, Byte b, Byte c, Byte d) { return Two(Two(a, b), Two(c, d)); }
};
struct Maximum {
  static Byte Two(Byte a, Byte b) { return a > b ? a : b; }
  static Byte Four(Byte a, Byte b, Byte c, Byte d) { return Two(Two(a, b), Two(c, d)); }
};
// Two signed 16-bit components, low half first, each reduced on its own.
struct Gradient {
  static int Lo(U32 v) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(v)); }
  static int Hi(U32 v) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(v >> 16)); }
  static U32 Pack(int lo, int hi) {
    return static_cast<U32>(static_cast<std::uint16_t>(lo)) | static_cast<U32>(static_cast<std::uint16_t>(hi)) << 16;
  }
  static U32 Four(U32 a, U32 b, U32 c, U32 d) {
    return Pack((Lo(a) + Lo(b) + Lo(c) + Lo(d)) >> 2, (Hi(a) + Hi(b) + Hi(c) + Hi(d)) >> 2);
  }
  static U32 Two(U32 a, U32 b) { return Pack((Lo(a) + Lo(b)) >> 1, (Hi(a) + Hi(b)) >> 1); }
};

// Rows [y0, y1) of the halved image. `blocks` does the 2x2 blocks of a full
// row from its start and returns how many; null does none.
template <class R, class P, class Blocks>
void HalveBand(const Rows<const P>& s, const Rows<P>& d, int y0, int y1, bool dropOdd, Blocks blocks) {
  if (d.width == 0) return;  // a void result: nothing to address
  const int pairs = s.width >> 1;
  const bool oddColumn = !dropOdd && (s.width & 1) != 0;
  for (int j = y0; j < y1; ++j) {
    P* out = d.Row(j);
    if (2 * j + 1 < s.height) {
      const P* a = s.Row(2 * j);
      const P* b = s.Row(2 * j + 1);
      int i = blocks == nullptr ? 0 : blocks(a, b, out, pairs);
      for (; i < pairs; ++i) out[i] = R::Four(a[2 * i], a[2 * i + 1], b[2 * i], b[2 * i + 1]);
      if (oddColumn) out[pairs] = R::Two(a[s.width - 1], b[s.width - 1]);
    } else {  // the odd last row, kept when dropOdd is 0
      const P* a = s.Row(s.height - 1);
      for (int i = 0; i < pairs; ++i) out[i] = R::Two(a[2 * i], a[2 * i + 1]);
      if (oddColumn) out[pairs] = a[s.width - 1];
    }
  }
}

Rows<const Byte> Bytes(const EROI<EBW8>* roi) {
  return Rows<const Byte>{reinterpret_cast<const Byte*>(roi->GetImagePtr(0, 0)), roi->GetRowPitch(), roi->GetWidth(),
                          roi->GetHeight()};
}
Rows<Byte> Bytes(EROI<EBW8>* roi) {
  return Rows<Byte>{reinterpret_cast<Byte*>(roi->GetImagePtr(0, 0)), roi->GetRowPitch(), roi->GetWidth(),
                    roi->GetHeight()};
}

void HalveGreyBand(const Rows<const Byte>& s, const Rows<Byte>& d, int y0, int y1, int mode, bool dropOdd,
                   const HalveRoutines& simd) {
  const HalveRow blocks = simd.reduce[mode];
  if (mode == IMG_PYRAMIDAL_REDUCTION_MINIMUM) HalveBand<Minimum>(s, d, y0, y1, dropOdd, blocks);
  else if (mode == IMG_PYRAMIDAL_REDUCTION_MAXIMUM) HalveBand<Maximum>(s, d, y0, y1, dropOdd, blocks);
  else HalveBand<Average>(s, d, y0, y1, dropOdd, blocks);
}

// The cost of a halved row: four source pixels in, one out.
double HalfRowCost(const EGenericROI* dst, std::size_t pixelBytes) {
  return RowCost(dst->GetWidth(), 5.0 * static_cast<double>(pixelBytes));
}

// Bands of the halved rows; a destination on the source's image may be read
// after it is written (row j reads rows 2j and 2j + 1): one band.
double HalveCost(const EGenericROI* src, const EGenericROI* dst, std::size_t pixelBytes) {
  return Overlap(src, dst) ? kOneBand : HalfRowCost(dst, pixelBytes);
}

void HalveGrey(const EROI<EBW8>* src, EROI<EBW8>* dst, int mode, bool dropOdd, const HalveRoutines& simd) {
  const Rows<const Byte> s = Bytes(src);
  const Rows<Byte> d = Bytes(dst);
  RunBands(d.height, HalveCost(src, dst, 1),
           [&](int y0, int y1) { HalveGreyBand(s, d, y0, y1, mode, dropOdd, simd); });
}

// Copies src into `copy` (of the same size) and halves src into dst in one
// pass: each pair of rows is halved while it is fresh in the cache. The
// bytes are those of a copy followed by a halving.
void CopyAndHalveGrey(const EROI<EBW8>* src, EROI<EBW8>* copy, EROI<EBW8>* dst, int mode, bool dropOdd,
                      const HalveRoutines& simd) {
  const Rows<const Byte> s = Bytes(src);
  const Rows<Byte> c = Bytes(copy), d = Bytes(dst);
  // Band [y0, y1) of the halved rows copies the source rows from 2 * y0
  // (from 0 for the first band) up to 2 * y1 (to the last for the last
  // band), so that the bands together copy every row once.
  const bool apart = !SameImage(src, dst) && !SameImage(src, copy);
  RunBands(d.height, apart ? HalfRowCost(dst, 3) : kOneBand, [&](int y0, int y1) {
    int copied = y0 == 0 ? 0 : 2 * y0;
    auto copyUpTo = [&](int end) {
      for (; copied < end; ++copied) {
        if (simd.stream != nullptr) simd.stream(s.Row(copied), c.Row(copied), s.width);
        else if (s.width > 0) std::memcpy(c.Row(copied), s.Row(copied), static_cast<std::size_t>(s.width));
      }
    };
    for (int j = y0; j < y1; ++j) {
      copyUpTo(2 * j + 2 < s.height ? 2 * j + 2 : s.height);
      HalveGreyBand(s, d, j, j + 1, mode, dropOdd, simd);
    }
    copyUpTo(y1 == d.height ? s.height : (2 * y1 < s.height ? 2 * y1 : s.height));
    if (simd.fence != nullptr) simd.fence();
  });
}

void HalveGradient(const EROI<EBW32>* src, EROI<EBW32>* dst, bool dropOdd, const HalveRoutines& simd) {
  const Rows<const U32> s{reinterpret_cast<const U32*>(src->GetImagePtr(0, 0)), src->GetRowPitch(),
                          src->GetWidth(), src->GetHeight()};
  const Rows<U32> d{reinterpret_cast<U32*>(dst->GetImagePtr(0, 0)), dst->GetRowPitch(), dst->GetWidth(),
                    dst->GetHeight()};
  RunBands(d.height, HalveCost(src, dst, sizeof(U32)),
           [&](int y0, int y1) { HalveBand<Gradient>(s, d, y0, y1, dropOdd, simd.gradient); });
}

// Sizes the destination of a halving. False, with a code set, when it
// cannot be given the size (`exact` asks for 1414 when it took another).
bool SizeHalf(Frame& frame, const EGenericROI* src, EGenericROI* dst, int dropOdd, bool exact) {
  const int e = dropOdd != 0 ? 0 : 1;
  const int w = (src->GetWidth() + e) >> 1, h = (src->GetHeight() + e) >> 1;
  dst->SetSize(w, h);
  if (EGetError() != E_OK) return false;
  if (dst->GetWidth() != w || dst->GetHeight() != h) {
    frame.Fail(exact ? E_ERROR_IMAGE_TOO_SMALL : E_ERROR_SIZE_MISMATCH);
    return false;
  }
  if (w > 0 && h > 0 && dst->Void()) {
    frame.Fail(E_ERROR_VOID_IMAGE);
    return false;
  }
  return true;
}

template <class P>
EGenericROI* MakeLevel() {
  return new (std::nothrow) EImage<P>();
}

bool KnownType(E_IMAGE_TYPES type) {
  return type == E_IMAGE_TYPE_BW8 || type == E_IMAGE_TYPE_BW16 || type == E_IMAGE_TYPE_BW32 ||
         type == E_IMAGE_TYPE_C24 || type == E_IMAGE_TYPE_BW32_ALIAS;
}

EGenericROI* MakeLevel(E_IMAGE_TYPES type) {
  switch (type) {
    case E_IMAGE_TYPE_BW8: return MakeLevel<EBW8>();
    case E_IMAGE_TYPE_BW16: return MakeLevel<EBW16>();
    case E_IMAGE_TYPE_C24: return MakeLevel<EC24>();
    default: return MakeLevel<EBW32>();
  }
}

void Release(EGenericROI** levels, unsigned int count) {
  if (levels == nullptr) return;
  for (unsigned int i = 0; i < count; ++i) {
    if (levels[i] == nullptr) continue;
    levels[i]->SetSize(0, 0);
    delete levels[i];
  }
  delete[] levels;
}

}  // namespace
}  // namespace geometry
}  // namespace mirel

using mirel::Frame;
using namespace mirel::geometry;

EPyramid::EPyramid()
    : reduction_mode_(IMG_PYRAMIDAL_REDUCTION_AVERAGE),
      image_type_(static_cast<E_IMAGE_TYPES>(-1)),
      num_levels_(0),
      levels_(nullptr),
      drop_odd_(1) {}

EPyramid::~EPyramid() { SetNumLevels(0, static_cast<E_IMAGE_TYPES>(-1)); }

void EPyramid::SetNumLevels(unsigned int levels, E_IMAGE_TYPES type) {
  Frame frame("EPyramid::SetNumLevels");
  if (levels == num_levels_ && type == image_type_) return;
  EGenericROI** fresh = nullptr;
  if (levels != 0) {
    fresh = new (std::nothrow) EGenericROI*[levels];
    if (fresh == nullptr) return frame.Fail(E_ERROR_OUT_OF_MEMORY);
    if (!KnownType(type)) {
      delete[] fresh;
      return frame.Fail(E_ERROR_BAD_PIXEL_TYPE);
    }
    for (unsigned int i = 0; i < levels; ++i) {
      fresh[i] = MakeLevel(type);
      if (fresh[i] == nullptr) {
        Release(fresh, i);
        return frame.Fail(E_ERROR_OUT_OF_MEMORY);
      }
    }
  }
  Release(levels_, num_levels_);
  levels_ = fresh;
  num_levels_ = levels;
  image_type_ = type;
}

EGenericROI* EPyramid::GetImage(unsigned int level) {
  Frame frame("EPyramid::GetImage");
  if (!frame.Require(level < num_levels_, E_ERROR_INDEX_OUT_OF_RANGE)) return nullptr;
  return levels_[level];
}

const EGenericROI* EPyramid::GetImage(unsigned int level) const {
  return const_cast<EPyramid*>(this)->GetImage(level);
}

void EPyramid::SetReductionMode(IMG_PYRAMIDAL_REDUCTION_MODE mode) {
  EOk();
  if (mode != IMG_PYRAMIDAL_REDUCTION_AVERAGE && mode != IMG_PYRAMIDAL_REDUCTION_MINIMUM &&
      mode != IMG_PYRAMIDAL_REDUCTION_MAXIMUM) {
    ESetError(E_ERROR_INDEX_OUT_OF_RANGE);  // the one failure that is not traced
    return;
  }
  reduction_mode_ = mode;
}

void EPyramid::Build() { BuildFrom(1); }

void EPyramid::BuildFrom(unsigned int first) {
  Frame frame("EBW8Pyramid::Build");
  const bool grey = image_type_ == E_IMAGE_TYPE_BW8;
  if (!frame.Require(grey || image_type_ == E_IMAGE_TYPE_BW32_ALIAS, E_ERROR_BAD_PIXEL_TYPE)) return;
  if (num_levels_ == 0) return;
  if (!frame.NotVoid(levels_[0])) return;
  // Each step starts afresh, so only the failure of the last one remains.
  for (unsigned int i = first; i < num_levels_; ++i) {
    if (grey)
      Halve(static_cast<const EImage<EBW8>*>(levels_[i - 1]), static_cast<EImage<EBW8>*>(levels_[i]), drop_odd_);
    else
      Halve(static_cast<const EImage<EBW32>*>(levels_[i - 1]), static_cast<EImage<EBW32>*>(levels_[i]), drop_odd_);
  }
}

void EPyramid::Build(const EROI<EBW8>* source) {
  Frame frame("EBW8Pyramid::Build");
  const HalveRoutines simd = ActiveHalve();
  if (!frame.Require(image_type_ == E_IMAGE_TYPE_BW8, E_ERROR_BAD_PYRAMID_TYPE)) return;
  if (num_levels_ == 0) return;
  if (!frame.NotVoid(source)) return;
  EImage<EBW8>* base = static_cast<EImage<EBW8>*>(levels_[0]);
  if (base == source) return Build();
  // A ROI inside level 0 is copied aside first: resizing level 0 would move
  // its pixels.
  EImage<EBW8> aside;
  if (mirel::SameImage(source, base)) {
    aside.SetSize(source->GetWidth(), source->GetHeight());
    if (EGetError() != E_OK) return;
    ImgCopy(source, &aside);
    if (EGetError() != E_OK) return;
    source = &aside;
  }
  base->SetSize(source->GetWidth(), source->GetHeight());
  if (EGetError() != E_OK) return;
  if (num_levels_ >= 2) {
    // Level 0 and level 1 in one pass. When level 1 cannot take its size,
    // the copy and the steps run in turn, and the step reports the failure.
    EImage<EBW8>* next = static_cast<EImage<EBW8>*>(levels_[1]);
    if (SizeHalf(frame, source, next, drop_odd_, true)) {
      CopyAndHalveGrey(source, base, next, reduction_mode_, drop_odd_ != 0, simd);
      return BuildFrom(2);
    }
    EOk();
  }
  ImgOper(ALO_COPY, source, base);
  if (EGetError() != E_OK) return;
  Build();
}

void EPyramid::Halve(const EROI<EBW8>* source, EROI<EBW8>* destination, int dropOdd) {
  Frame frame("EBW8Pyramid::Halve ( BW8)");
  const HalveRoutines simd = ActiveHalve();
  if (!frame.NotVoid(source) || !frame.Require(destination != nullptr, E_ERROR_VOID_IMAGE)) return;
  if (!SizeHalf(frame, source, destination, dropOdd, true)) return;
  HalveGrey(source, destination, reduction_mode_, dropOdd != 0, simd);
}

void EPyramid::Halve(const EROI<EBW32>* source, EROI<EBW32>* destination, int dropOdd) {
  Frame frame("EBW8Pyramid::Halve ( GRADIENT32)");
  const HalveRoutines simd = ActiveHalve();
  if (!frame.NotVoid(source) || !frame.Require(destination != nullptr, E_ERROR_VOID_IMAGE)) return;
  if (!SizeHalf(frame, source, destination, dropOdd, true)) return;
  HalveGradient(source, destination, dropOdd != 0, simd);
}

void ImgHalve(const EROI<EBW8>* source, EROI<EBW8>* destination, int dropOdd) {
  Frame frame("ImgHalve ( BW8)");
  const HalveRoutines simd = ActiveHalve();
  if (!frame.NotVoid(source) || !frame.Require(destination != nullptr, E_ERROR_VOID_IMAGE)) return;
  if (!frame.Require(!mirel::SameImage(source, destination), E_ERROR_SAME_IMAGE)) return;
  if (!SizeHalf(frame, source, destination, dropOdd, false)) return;
  HalveGrey(source, destination, IMG_PYRAMIDAL_REDUCTION_AVERAGE, dropOdd != 0, simd);
}
