// Two-level morphology: the grey composition with AND and OR passes, and
// the two-level median.
#include "mirel/morphology/bilevel.h"

#include <cstddef>
#include <cstdint>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/morphology_internal.h"
#include "mirel/point/arith.h"

namespace {

using mirel::Frame;
using mirel::morphology::Family;

const Family kBiLevel = {{mirel::morphology::kAnd, mirel::morphology::kOr},
                         {"ImgBiLevelErode3x3", "ImgBiLevelDilate3x3"},
                         {"ErodeBiLevel1X3", "DilateBiLevel1X3"},
                         {"ImgBiLevelErode3x3", "ImgBiLevelDilate3x3"},
                         {"ImgBiLevelErodeXY (BW8)", "ImgBiLevelDilateXY (BW8)"},
                         {"ImgBiLevelErodeBox", "ImgBiLevelDilateBox"},
                         {{nullptr, nullptr}, {"Erode3X3MMX", "Dilate3X3MMX"}},
                         {{"ErodeBiLevelXY", "DilateBiLevelXY"}, {"ErodeBiLevelXYMMX", "DilateBiLevelXYMMX"}}};

bool Checks(Frame& frame, EROI<EBW8>* src, EROI<EBW8>* dst) {
  if (!frame.NotVoid(src)) return false;
  if (dst == nullptr || dst == src) return true;
  return frame.NotVoid(dst) && frame.SameSize(src, dst);
}

bool Ok() { return EGetError() == E_OK; }

struct Shape {
  bool disk;
  unsigned hw, hh;
};
void Erode(EROI<EBW8>* src, EROI<EBW8>* dst, const Shape& s) {
  if (s.disk) ImgBiLevelErodeDisk(src, dst, s.hw);
  else ImgBiLevelErodeBox(src, dst, s.hw, s.hh);
}
void Dilate(EROI<EBW8>* src, EROI<EBW8>* dst, const Shape& s) {
  if (s.disk) ImgBiLevelDilateDisk(src, dst, s.hw);
  else ImgBiLevelDilateBox(src, dst, s.hw, s.hh);
}

enum class Compound { kOpen, kClose, kWhite, kBlack, kGradient };

void CompoundFrame(const char* label, Compound c, EROI<EBW8>* src, EROI<EBW8>* dst, const Shape& s) {
  Frame frame(label);
  if (!Checks(frame, src, dst)) return;
  EROI<EBW8>* out = dst != nullptr ? dst : src;
  if (c == Compound::kOpen) {
    Erode(src, dst, s);
    if (Ok()) Dilate(out, nullptr, s);
    return;
  }
  if (c == Compound::kClose) {
    Dilate(src, dst, s);
    if (Ok()) Erode(out, nullptr, s);
    return;
  }
  EImage<EBW8> tmp;
  EOk();
  tmp.SetSize(src->GetWidth(), src->GetHeight());
  if (!Ok()) return;
  const EROI<EBW8>* in = src;
  if (c == Compound::kWhite) {
    Erode(src, &tmp, s);
    if (Ok()) Dilate(&tmp, nullptr, s);
    if (Ok()) ImgOper(ALO_SUBTRACT, in, static_cast<const EROI<EBW8>*>(&tmp), out);
  } else if (c == Compound::kBlack) {
    Dilate(src, &tmp, s);
    if (Ok()) Erode(&tmp, nullptr, s);
    if (Ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<EBW8>*>(&tmp), in, out);
  } else {
    Erode(src, &tmp, s);
    if (Ok()) Dilate(src, dst, s);
    if (Ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<EBW8>*>(out), static_cast<const EROI<EBW8>*>(&tmp), out);
  }
}

}  // namespace

void ImgBiLevelErodeBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  Frame frame("ImgBiLevelErodeBox");
  if (!Checks(frame, src, dst)) return;
  mirel::morphology::Box(kBiLevel, 0, src, dst, hw, hh == ~0u ? hw : hh);
}
void ImgBiLevelDilateBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  Frame frame("ImgBiLevelDilateBox");
  if (!Checks(frame, src, dst)) return;
  mirel::morphology::Box(kBiLevel, 1, src, dst, hw, hh == ~0u ? hw : hh);
}
void ImgBiLevelErodeDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  Frame frame("ImgBiLevelErodeDisk");
  if (!Checks(frame, src, dst)) return;
  mirel::morphology::Disk(kBiLevel, 0, src, dst, r);
}
void ImgBiLevelDilateDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  Frame frame("ImgBiLevelDilateDisk");
  if (!Checks(frame, src, dst)) return;
  mirel::morphology::Disk(kBiLevel, 1, src, dst, r);
}

void ImgBiLevelOpenBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgBiLevelOpenBox", Compound::kOpen, src, dst, Shape{false, hw, hh});
}
void ImgBiLevelCloseBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgBiLevelCloseBox", Compound::kClose, src, dst, Shape{false, hw, hh});
}
void ImgBiLevelWhiteTopHatBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgBiLevelWhiteTopHatBox (BW8)", Compound::kWhite, src, dst, Shape{false, hw, hh});
}
void ImgBiLevelBlackTopHatBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgBiLevelBlackTopHatBox (BW8)", Compound::kBlack, src, dst, Shape{false, hw, hh});
}
void ImgBiLevelMorphoGradientBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgMorphoGradientBox (BiLevel Images)", Compound::kGradient, src, dst, Shape{false, hw, hh});
}
void ImgBiLevelOpenDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgBiLevelOpenDisk", Compound::kOpen, src, dst, Shape{true, r, 0});
}
void ImgBiLevelCloseDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgBiLevelCloseDisk", Compound::kClose, src, dst, Shape{true, r, 0});
}
void ImgBiLevelWhiteTopHatDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgBiLevelWhiteTopHatDisk (BW8)", Compound::kWhite, src, dst, Shape{true, r, 0});
}
void ImgBiLevelBlackTopHatDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgBiLevelBlackTopHatDisk (BW8)", Compound::kBlack, src, dst, Shape{true, r, 0});
}
void ImgBiLevelMorphoGradientDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgMorphoGradientDisk (BiLevel Images)", Compound::kGradient, src, dst, Shape{true, r, 0});
}

void ImgBiLevelMedian(EROI<EBW8>* src, EROI<EBW8>* dst) {
  Frame frame("ImgBiLevelMedian");
  if (!Checks(frame, src, dst)) return;
  EROI<EBW8>* out = dst != nullptr ? dst : src;
  const auto median = mirel::morphology::ActiveKernels<std::uint8_t>().biMedian;
  const int w = src->GetWidth(), h = src->GetHeight();
  const auto* s = reinterpret_cast<const std::uint8_t*>(src->GetImagePtr(0, 0));
  auto* d = reinterpret_cast<std::uint8_t*>(out->GetImagePtr(0, 0));
  const std::ptrdiff_t sp = src->GetRowPitch(), dp = out->GetRowPitch();
  auto kernel = [&](const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c, std::uint8_t* o) {
    median(a, b, c, o, w);
  };
  const bool inPlace = mirel::morphology::SamePixels(src, out);
  if (inPlace || mirel::Overlap(src, out)) {
    // Rows that the pass has written are read again: one walk down.
    mirel::morphology::ForEachRow(s, sp, d, dp, w, h, inPlace, kernel);
    return;
  }
  // A destination apart from the source: bands of rows.
  if (w <= 0 || h <= 0) return;
  mirel::RunBands(h, mirel::RowCost(w, 4.0), [&](int y0, int y1) {
    mirel::morphology::ForEachRowIn<std::uint8_t>(s, sp, d, dp, w, h, y0, y1, nullptr, nullptr, nullptr, nullptr,
                                                  kernel);
  });
}

// Const sources: the same operations, never in place (see the header).
MIREL_CONST_SOURCE_MORPHOLOGY(ImgBiLevel, , EBW8)
void ImgBiLevelMedian(const EROI<EBW8>* s, EROI<EBW8>* d) { ImgBiLevelMedian(mirel::ReadOnlySource(s, d), d); }
