// Bit-image morphology: the passes over packed rows, their composition into
// boxes and disks, the compounds, the 3x3 median, and the plain forms.
#include "mirel/morphology/bit_morphology.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/bit_morphology_blocks_internal.h"
#include "mirel/morphology/bit_morphology_internal.h"
#include "mirel/morphology/morphology_internal.h"
#include "mirel/morphology/median.h"
#include "mirel/point/bits.h"
#include "mirel/point/bits_internal.h"

namespace mirel {
namespace bitmorph {

const RowKernels& ScalarRowKernels() {
  static const RowKernels k = blocks::MakeKernels<bits::ByteLanes, true>();
  return k;
}

const RowKernels& PickRowKernels(int mmx) {
  if (mmx == 0) return ScalarRowKernels();
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512RowKernels();
  if (level >= cpu::kAVX2) return Avx2RowKernels();
  if (level >= cpu::kSSE2) return Sse2RowKernels();
#endif
  return ScalarRowKernels();
}

namespace {

enum Mode : int { kErode = 0, kDilate = 1 };

// One pass of a row kernel from src into out, which may be the same pixels:
// the row above the first is the first, the row below the last the last.
// With `squarePad` the last byte of each row keeps the pad bits that a
// vertical pass over the destination's old pad bits would give.
//
// The rows run in bands. In place, each band keeps the originals of its row
// and of the row above in line buffers of its own, and the originals of the
// rows just outside it (which the neighbouring bands write) are copied
// before any band starts, as are the old pad bytes; a destination that
// overlaps the source elsewhere reads rows the pass has written: one band.
void Pass(RowKernels::Row kernel, bool squarePad, int mode, const EROI<EBW1>* src, EROI<EBW1>* out) {
  bits::CheckOrThrow({src}, out);
  const Rows<const EBW1> rs = RowsOf(src);
  const Rows<EBW1> rd = RowsOf(out);
  const int w = rd.width, h = rd.height;
  if (w <= 0 || h <= 0) return;
  const int n = (w + 7) / 8;
  const std::size_t line = static_cast<std::size_t>(n);
  const u8 valid = bits::LastValid(w);
  const bool inPlace = SamePixels(src, out);
  const Bands bands(h, Overlap(src, out) && !inPlace ? kOneBand : RowCost(w, 0.5));
  const int count = bands.Count();
  // Per band in place: the row above, the row, and the copies of rows
  // y0 - 1 and y1; then the old pad byte of every row.
  const std::size_t perBand = inPlace ? 4 * line : 0;
  const bool pads = squarePad && count > 1;
  std::vector<u8> buffers;
  try {
    buffers.resize(perBand * static_cast<std::size_t>(count) + (pads ? static_cast<std::size_t>(h) : 0));
  } catch (const std::bad_alloc&) {
    bits::Throw(ESetError(E_ERROR_OUT_OF_MEMORY));
  }
  u8* const oldPads = pads ? buffers.data() + perBand * static_cast<std::size_t>(count) : nullptr;
  for (int y = 0; pads && y < h; ++y) oldPads[y] = bits::RowBytes(rd, y)[n - 1];
  for (int b = 0; inPlace && b < count; ++b) {
    u8* edge = buffers.data() + perBand * static_cast<std::size_t>(b) + 2 * line;
    const int y0 = bands.Begin(b), y1 = bands.End(b);
    if (y0 > 0) std::memcpy(edge, bits::RowBytes(rs, y0 - 1), line);
    if (y1 < h) std::memcpy(edge + line, bits::RowBytes(rs, y1), line);
  }
  bands.Run([&](int band, int y0, int y1) {
    u8* prev = inPlace ? buffers.data() + perBand * static_cast<std::size_t>(band) : nullptr;
    u8* cur = inPlace ? prev + line : nullptr;
    const u8* above = inPlace ? prev + 2 * line : nullptr;
    const u8* below = inPlace ? prev + 3 * line : nullptr;
    if (inPlace && y0 > 0) std::memcpy(prev, above, line);
    // The old pad byte of row y - 1, read before that row was written.
    u8 padAbove = y0 > 0 ? (pads ? oldPads[y0 - 1] : bits::RowBytes(rd, y0 - 1)[n - 1]) : 0;
    for (int y = y0; y < y1; ++y) {
      const u8* a;
      const u8* b;
      const u8* c;
      if (inPlace) {
        std::memcpy(cur, bits::RowBytes(rs, y), line);
        a = y > 0 ? prev : cur;
        b = cur;
        c = y + 1 < y1 ? bits::RowBytes(rs, y + 1) : y + 1 < h ? below : cur;
      } else {
        a = bits::RowBytes(rs, y > 0 ? y - 1 : 0);
        b = bits::RowBytes(rs, y);
        c = bits::RowBytes(rs, y + 1 < h ? y + 1 : y);
      }
      u8* o = bits::RowBytes(rd, y);
      u8 pad = o[n - 1];
      if (squarePad) {
        const u8 up = y > 0 ? padAbove : pad;
        const u8 down = y + 1 < h ? (pads ? oldPads[y + 1] : bits::RowBytes(rd, y + 1)[n - 1]) : pad;
        padAbove = pad;
        pad = mode == kErode ? static_cast<u8>(up & pad & down) : static_cast<u8>(up | pad | down);
      }
      kernel(a, b, c, o, n, valid, pad);
      if (inPlace) std::swap(prev, cur);
    }
  });
}

// The passes of a box or disk with the kernels picked for this call. The
// square is one pass with the fast path, and without it a horizontal pass
// then a vertical pass in place; both give the same bits.
struct Passes {
  const RowKernels& k;
  bool fast;
  int mode;
  void Square(const EROI<EBW1>* src, EROI<EBW1>* out) const {
    if (fast) {
      Pass(k.square[mode], true, mode, src, out);
      return;
    }
    Pass(k.horizontal[mode], false, mode, src, out);
    Pass(k.vertical[mode], false, mode, out, out);
  }
  void Horizontal(const EROI<EBW1>* src, EROI<EBW1>* out) const { Pass(k.horizontal[mode], false, mode, src, out); }
  void Vertical(const EROI<EBW1>* src, EROI<EBW1>* out) const { Pass(k.vertical[mode], false, mode, src, out); }
  void Cross(const EROI<EBW1>* src, EROI<EBW1>* out) const { Pass(k.cross[mode], false, mode, src, out); }
};

Passes PassesFor(int mode) {
  const int mmx = EGetMMX();
  return Passes{PickRowKernels(mmx), mmx != 0, mode};
}

// The checks of the box, disk and compound forms: EOk, the source not null
// and not void, the destination (or the source when it is null) of its
// size, both starting on a byte. Returns the destination; throws.
EROI<EBW1>* Resolve(EROI<EBW1>* src, EROI<EBW1>* dst) {
  EOk();
  if (src == nullptr) ESetError(E_ERROR_VOID_IMAGE);
  else src->CheckNotVoid();
  if (EGetError() != E_OK) bits::ThrowError();
  EROI<EBW1>* out = dst != nullptr ? dst : src;
  src->CheckSameSize(out);
  if (EGetError() != E_OK) bits::ThrowError();
  bits::CheckAlignedOrThrow({src, out});
  return out;
}

void Box(int mode, EROI<EBW1>* src, EROI<EBW1>* dst, unsigned hw, unsigned hh) {
  const Passes passes = PassesFor(mode);
  EROI<EBW1>* out = Resolve(src, dst);
  if (hh == ~0u) hh = hw;
  if (hw == 0 && hh == 0) return;
  // Past the ROI's size a longer run of passes changes nothing, pad bits
  // included; a half-size that was not 0 stays at least 1, so that the
  // kind of the first pass is kept.
  const unsigned cw = std::min(hw, static_cast<unsigned>(std::max(src->GetWidth() - 1, 1)));
  const unsigned ch = std::min(hh, static_cast<unsigned>(std::max(src->GetHeight() - 1, 1)));
  const unsigned squares = std::min(cw, ch), lines = std::max(cw, ch) - squares;
  const EROI<EBW1>* from = src;
  for (unsigned i = 0; i < squares; ++i, from = out) passes.Square(from, out);
  for (unsigned i = 0; i < lines; ++i, from = out) {
    if (cw > ch) passes.Horizontal(from, out);
    else passes.Vertical(from, out);
  }
}

void Disk(int mode, EROI<EBW1>* src, EROI<EBW1>* dst, unsigned r) {
  const Passes passes = PassesFor(mode);
  EROI<EBW1>* out = Resolve(src, dst);
  if (r == 0) {
    if (!SamePixels(src, out)) {
      ImgOper(ALO_COPY, src, out);
      if (EGetError() != E_OK) bits::ThrowError();
    }
    return;
  }
  // Past this many passes every pixel holds the AND (OR) of the whole ROI.
  const unsigned limit = 2u * static_cast<unsigned>(src->GetWidth() + src->GetHeight()) + 16u;
  if (r > limit) r = limit;
  const unsigned crosses = (r + 1) >> 1, squares = r - crosses;
  const EROI<EBW1>* from = src;
  for (unsigned i = 0; i < squares; ++i, from = out) passes.Square(from, out);
  for (unsigned i = 0; i < crosses; ++i, from = out) passes.Cross(from, out);
}

// ---------------------------------------------------------------- compounds

using Step = void (*)(EROI<EBW1>*, EROI<EBW1>*, unsigned, unsigned);

void Then() {
  if (EGetError() != E_OK) bits::ThrowError();
}

// Open and close: `first` from the source into the destination, `second`
// in place on it. The steps are the plain forms, which align what they get.
void Chain(Step first, Step second, EROI<EBW1>* src, EROI<EBW1>* dst, unsigned hw, unsigned hh) {
  EROI<EBW1>* out = Resolve(src, dst);
  first(src, out, hw, hh);
  Then();
  second(out, nullptr, hw, hh);
  Then();
}

// A cleared temporary of the source's size.
void SizeLike(EImage<EBW1>& temp, const EROI<EBW1>* src) {
  temp.SetSize(src->GetWidth(), src->GetHeight());
  Then();
  ImgCopy(EBW1(0), &temp);
  Then();
}

// The exclusive or of `first` of the source, made in a cleared temporary,
// with `second` of the source made in the destination, or with the source
// itself when there is no second step (the top-hats).
void Difference(Step first, Step second, EROI<EBW1>* src, EROI<EBW1>* dst, unsigned hw, unsigned hh) {
  EROI<EBW1>* out = Resolve(src, dst);
  EImage<EBW1> temp;
  SizeLike(temp, src);
  first(src, &temp, hw, hh);
  Then();
  const EROI<EBW1>* other = src;
  if (second != nullptr) {
    second(src, out, hw, hh);
    Then();
    other = out;
  }
  ImgOper(ALO_BIT_XOR, other, &temp, out);
  Then();
}

// The plain forms as steps; a disk ignores the half-height.
void ErodeBoxStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned hw, unsigned hh) { ImgErodeBox(s, d, hw, hh); }
void DilateBoxStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned hw, unsigned hh) { ImgDilateBox(s, d, hw, hh); }
void OpenBoxStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned hw, unsigned hh) { ImgOpenBox(s, d, hw, hh); }
void CloseBoxStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned hw, unsigned hh) { ImgCloseBox(s, d, hw, hh); }
void ErodeDiskStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned r, unsigned) { ImgErodeDisk(s, d, r); }
void DilateDiskStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned r, unsigned) { ImgDilateDisk(s, d, r); }
void OpenDiskStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned r, unsigned) { ImgOpenDisk(s, d, r); }
void CloseDiskStep(EROI<EBW1>* s, EROI<EBW1>* d, unsigned r, unsigned) { ImgCloseDisk(s, d, r); }

unsigned Resolved(unsigned hw, unsigned hh) { return hh == ~0u ? hw : hh; }

}  // namespace
}  // namespace bitmorph
}  // namespace mirel

namespace bm = mirel::bitmorph;

// ---------------------------------------------------------------- aligned forms

void ImgErodeBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Box(bm::kErode, src, dst, hw, hh);
}
void ImgDilateBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Box(bm::kDilate, src, dst, hw, hh);
}
void ImgErodeDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) { bm::Disk(bm::kErode, src, dst, r); }
void ImgDilateDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) { bm::Disk(bm::kDilate, src, dst, r); }
void ImgOpenBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Chain(&bm::ErodeBoxStep, &bm::DilateBoxStep, src, dst, hw, bm::Resolved(hw, hh));
}
void ImgCloseBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Chain(&bm::DilateBoxStep, &bm::ErodeBoxStep, src, dst, hw, bm::Resolved(hw, hh));
}
void ImgOpenDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) {
  bm::Chain(&bm::ErodeDiskStep, &bm::DilateDiskStep, src, dst, r, 0);
}
void ImgCloseDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) {
  bm::Chain(&bm::DilateDiskStep, &bm::ErodeDiskStep, src, dst, r, 0);
}
void ImgMorphoGradientBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Difference(&bm::ErodeBoxStep, &bm::DilateBoxStep, src, dst, hw, hh);
}
void ImgMorphoGradientDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) {
  bm::Difference(&bm::ErodeDiskStep, &bm::DilateDiskStep, src, dst, r, 0);
}
void ImgWhiteTopHatBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Difference(&bm::OpenBoxStep, nullptr, src, dst, hw, bm::Resolved(hw, hh));
}
void ImgBlackTopHatBoxAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {
  bm::Difference(&bm::CloseBoxStep, nullptr, src, dst, hw, bm::Resolved(hw, hh));
}
void ImgWhiteTopHatDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) {
  bm::Difference(&bm::OpenDiskStep, nullptr, src, dst, r, 0);
}
void ImgBlackTopHatDiskAligned(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) {
  bm::Difference(&bm::CloseDiskStep, nullptr, src, dst, r, 0);
}

// ---------------------------------------------------------------- plain forms

#define MIREL_BIT_PLAIN_BOX(Name, nullLabel, catchLabel)                                          \
  void Name(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int hw, unsigned int hh) {                 \
    mirel::bits::PlainForm(nullLabel, catchLabel, src, dst,                                      \
                           [&](EROI<EBW1>* s, EROI<EBW1>* d) { Name##Aligned(s, d, hw, hh); }); \
  }
#define MIREL_BIT_PLAIN_DISK(Name, nullLabel, catchLabel)                                       \
  void Name(EROI<EBW1>* src, EROI<EBW1>* dst, unsigned int r) {                                 \
    mirel::bits::PlainForm(nullLabel, catchLabel, src, dst,                                    \
                           [&](EROI<EBW1>* s, EROI<EBW1>* d) { Name##Aligned(s, d, r); });      \
  }

MIREL_BIT_PLAIN_BOX(ImgErodeBox, "ImgErodeBox (BW1)", "ImgErodeBox (BW1)")
MIREL_BIT_PLAIN_BOX(ImgDilateBox, "ImgDilateBox (BW1)", "ImgDilateBox (BW1)")
MIREL_BIT_PLAIN_BOX(ImgOpenBox, "ImgOpenBox (BW1)", "ImgOpenBox (BW1)")
MIREL_BIT_PLAIN_BOX(ImgCloseBox, "ImgCloseBox (BW1)", "ImgCloseBox (BW1)")
MIREL_BIT_PLAIN_BOX(ImgMorphoGradientBox, "ImgMorphoGradientBox (BW1)", "ImgMorphoGradientBox (BW1)")
MIREL_BIT_PLAIN_BOX(ImgWhiteTopHatBox, "ImgWhiteTophatBox (BW1)", "ImgWhiteTopHatBox (BW1)")
MIREL_BIT_PLAIN_BOX(ImgBlackTopHatBox, "ImgBlackTopHatBox (BW1)", "ImgBlackTopHatBox (BW1)")
MIREL_BIT_PLAIN_DISK(ImgErodeDisk, "ImgErodeDisk (BW1)", "ImgErodeDisk (BW1)")
MIREL_BIT_PLAIN_DISK(ImgDilateDisk, "ImgDilateDisk (BW1)", "ImgDilateDisk (BW1)")
MIREL_BIT_PLAIN_DISK(ImgOpenDisk, "ImgOpenDisk (BW1)", "ImgOpenDisk (BW1)")
MIREL_BIT_PLAIN_DISK(ImgCloseDisk, "ImgCloseDisk (BW1)", "ImgCloseDisk (BW1)")
MIREL_BIT_PLAIN_DISK(ImgMorphoGradientDisk, "ImgMorphoGradientDisk (BW1)", "ImgMorphoGradientDisk (BW1)")
MIREL_BIT_PLAIN_DISK(ImgWhiteTopHatDisk, "ImgWhiteTophatDisk (BW1)", "ImgWhiteTopHatDisk (BW1)")
MIREL_BIT_PLAIN_DISK(ImgBlackTopHatDisk, "ImgBlackTophatDisk (BW1)", "ImgBlackTopHatDisk (BW1)")

#undef MIREL_BIT_PLAIN_BOX
#undef MIREL_BIT_PLAIN_DISK

// ---------------------------------------------------------------- median

void ImgMedianAligned(EROI<EBW1>* src, EROI<EBW1>* dst) {
  const bm::RowKernels& k = bm::PickRowKernels(EGetMMX());
  EROI<EBW1>* out = bm::Resolve(src, dst);
  bm::Pass(k.median, false, bm::kErode, src, out);
}

void ImgMedian(EROI<EBW1>* src, EROI<EBW1>* dst) {
  mirel::bits::PlainForm("ImgMedian (BW1)", "ImgMedian (BW1)", src, dst,
                         [](EROI<EBW1>* s, EROI<EBW1>* d) { ImgMedianAligned(s, d); });
}

// Const sources: the same operations, never in place (see the header).
MIREL_CONST_SOURCE_MORPHOLOGY(Img, Aligned, EBW1)
MIREL_CONST_SOURCE_MORPHOLOGY(Img, , EBW1)
void ImgMedianAligned(const EROI<EBW1>* s, EROI<EBW1>* d) { ImgMedianAligned(mirel::ReadOnlySource(s, d), d); }
void ImgMedian(const EROI<EBW1>* s, EROI<EBW1>* d) { ImgMedian(mirel::ReadOnlySource(s, d), d); }
