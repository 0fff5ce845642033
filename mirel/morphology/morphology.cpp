// Grey morphology on 8-bit and 16-bit images: the four passes, their
// composition into boxes and disks, the compounds and the older entry
// points with a border value.
#include "mirel/morphology/morphology.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/morphology_blocks_internal.h"
#include "mirel/morphology/morphology_internal.h"
#include "mirel/point/arith.h"

namespace mirel {
namespace morphology {

namespace {

// From this larger half-size on, a box runs as running extrema: at 4 its
// two walks over the image cost less than four 3x3 passes (measured).
constexpr int kRunningBoxFrom = 4;
thread_local int tRunningBoxFrom = 0;

int RunningBoxFrom() { return tRunningBoxFrom > 0 ? tRunningBoxFrom : kRunningBoxFrom; }

template <class P>
using Raw = std::conditional_t<sizeof(P) == 1, std::uint8_t, std::uint16_t>;

}  // namespace

template <>
const RowKernels<std::uint8_t>& ActiveKernels<std::uint8_t>() {
  static const RowKernels<std::uint8_t> scalar = blocks::MakeKernels<blocks::ScalarIsa, std::uint8_t>();
  if (EGetMMX() == 0) return scalar;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512Kernels8();
  if (level >= cpu::kAVX2) return Avx2Kernels8();
  if (level >= cpu::kSSE2) return Sse2Kernels8();
#endif
  return scalar;
}

template <>
const RowKernels<std::uint16_t>& ActiveKernels<std::uint16_t>() {
  static const RowKernels<std::uint16_t> scalar = blocks::MakeKernels<blocks::ScalarIsa, std::uint16_t>();
  if (EGetMMX() == 0) return scalar;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512Kernels16();
  if (level >= cpu::kAVX2) return Avx2Kernels16();
  if (level >= cpu::kSSE2) return Sse2Kernels16();
#endif
  return scalar;
}

bool SamePixels(const EGenericROI* a, const EGenericROI* b) {
  return a == b || (a->GetTopParent() == b->GetTopParent() && a->GetImagePtr(0, 0) == b->GetImagePtr(0, 0));
}

namespace {

// Runs kernel(above, row, below, out, extra) over every row of a 3-row pass,
// in bands: `extra` is a line of scratch of the band's own when `extraLine`.
// In place, each band keeps the originals of its rows in line buffers of its
// own, and the originals of the rows on each side of every band boundary
// are saved before any band writes. A destination that overlaps the source
// elsewhere reads rows the pass has written: one band. False, with nothing
// written, when the scratch cannot be had.
template <class T, class K>
bool PassRows(const T* s, std::ptrdiff_t sp, T* d, std::ptrdiff_t dp, int w, int h, bool inPlace, bool overlapping,
              bool extraLine, double unitsPerPixel, K&& kernel) {
  if (w <= 0 || h <= 0) return true;
  const Bands bands(h, overlapping && !inPlace ? kOneBand : RowCost(w, unitsPerPixel));
  const int n = bands.Count();
  const std::size_t line = static_cast<std::size_t>(w);
  const std::size_t perBand = (inPlace ? 2u : 0u) + (extraLine ? 1u : 0u);
  const std::size_t edges = inPlace ? 2u * static_cast<std::size_t>(n - 1) : 0u;
  LineBuffer<T> scratch(static_cast<int>(line * (perBand * static_cast<std::size_t>(n) + edges)));
  if (scratch.p == nullptr) return false;
  T* edge = scratch.p + line * perBand * static_cast<std::size_t>(n);
  for (std::size_t k = 1; k < static_cast<std::size_t>(n) && inPlace; ++k) {
    const int y = bands.Begin(static_cast<int>(k));
    std::memcpy(edge + line * (2 * k - 2), ConstRow(s, sp, y - 1), line * sizeof(T));
    std::memcpy(edge + line * (2 * k - 1), ConstRow(s, sp, y), line * sizeof(T));
  }
  bands.Run([&](int band, int y0, int y1) {
    const std::size_t b = static_cast<std::size_t>(band);
    T* own = scratch.p + line * perBand * b;
    T* extra = own + (inPlace ? 2 * line : 0);
    const T* above = band > 0 ? edge + line * (2 * b - 2) : nullptr;
    const T* below = band + 1 < n ? edge + line * (2 * b + 1) : nullptr;
    ForEachRowIn<T>(s, sp, d, dp, w, h, y0, y1, inPlace ? own : nullptr, inPlace ? own + line : nullptr, above,
                    below, [&](const T* a, const T* r, const T* c, T* o) { kernel(a, r, c, o, extra); });
  });
  return true;
}

template <class P>
void PassWork(int op, PassKind kind, const EROI<P>* src, EROI<P>* out) {
  using T = Raw<P>;
  const RowKernels<T>& k = ActiveKernels<T>();
  const T* s = reinterpret_cast<const T*>(src->GetImagePtr(0, 0));
  T* d = reinterpret_cast<T*>(out->GetImagePtr(0, 0));
  const int w = src->GetWidth(), h = src->GetHeight();
  const bool inPlace = SamePixels(src, out), overlapping = Overlap(src, out);
  const std::ptrdiff_t sp = src->GetRowPitch(), dp = out->GetRowPitch();
  auto run = [&](bool extraLine, double units, auto&& kernel) {
    if (!PassRows<T>(s, sp, d, dp, w, h, inPlace, overlapping, extraLine, units * sizeof(T), kernel))
      ESetError(E_ERROR_OUT_OF_MEMORY);
  };
  switch (kind) {
    case PassKind::kSquare: {
      // The column of three rows into a line buffer, then three columns:
      // fewer loads than the nine pixels of each window.
      const auto v3 = k.v3[op];
      const auto h3 = k.h3[op];
      run(true, 4.0, [&](const T* a, const T* b, const T* c, T* o, T* column) {
        v3(a, b, c, column, w);
        h3(column, o, w);
      });
      break;
    }
    case PassKind::kX: {
      const auto f = k.h3[op];
      run(false, 2.0, [&](const T*, const T* b, const T*, T* o, T*) { f(b, o, w); });
      break;
    }
    case PassKind::kY: {
      const auto f = k.v3[op];
      run(false, 3.0, [&](const T* a, const T* b, const T* c, T* o, T*) { f(a, b, c, o, w); });
      break;
    }
    case PassKind::kCross: {
      const auto f = k.cross[op];
      run(false, 4.0, [&](const T* a, const T* b, const T* c, T* o, T*) { f(a, b, c, o, w); });
      break;
    }
  }
}

const char* PassLabel(const Family& f, int mode, PassKind kind) {
  switch (kind) {
    case PassKind::kSquare: return f.square[mode];
    case PassKind::kX: return f.x[mode];
    case PassKind::kY: return f.y[mode];
    case PassKind::kCross: return f.cross[mode];
  }
  return f.square[mode];
}

template <class P>
void CopyRoi(EROI<P>* src, EROI<P>* dst) {
  ImgOper(ALO_COPY, static_cast<const EROI<P>*>(src), dst);
}

}  // namespace

template <class P>
void RunPass(const Family& f, int mode, PassKind kind, EROI<P>* src, EROI<P>* dst) {
  Frame frame(PassLabel(f, mode, kind));
  EROI<P>* out = dst != nullptr ? dst : src;
  if (!frame.NotVoid(src, out) || !frame.SameSize(src, out)) return;
  const char* const(*workers)[2] = kind == PassKind::kSquare ? f.squareWorker
                                  : kind == PassKind::kCross ? f.crossWorker
                                                             : nullptr;
  const char* worker = nullptr;
  if (workers != nullptr) {
    const bool blocks = EGetMMX() != 0 && workers[1][mode] != nullptr;
    worker = workers[blocks ? 1 : 0][mode];
  }
  if (worker == nullptr) {
    PassWork<P>(f.op[mode], kind, src, out);
    return;
  }
  Frame inner(worker);
  PassWork<P>(f.op[mode], kind, src, out);
}

template <class P>
void Box(const Family& f, int mode, EROI<P>* src, EROI<P>* dst, unsigned hw, unsigned hh) {
  EROI<P>* out = dst != nullptr ? dst : src;
  const bool inPlace = SamePixels(src, out);
  if (hw == 0 && hh == 0) {
    if (!inPlace) CopyRoi(src, out);
    return;
  }
  // A half-size that spans the ROI gives what one that just reaches across
  // it gives: the window is clipped to the ROI either way.
  const int w = src->GetWidth(), h = src->GetHeight();
  const unsigned cw = std::min<unsigned>(hw, static_cast<unsigned>(std::max(w - 1, 0)));
  const unsigned ch = std::min<unsigned>(hh, static_cast<unsigned>(std::max(h - 1, 0)));
  if (static_cast<int>(std::max(cw, ch)) >= RunningBoxFrom() && !src->Void() && !out->Void()) {
    using T = Raw<P>;
    EOk();
    if (out->GetWidth() != w || out->GetHeight() != h) {
      ESetError(E_ERROR_SIZE_MISMATCH);
      return;
    }
    // A destination over the source's pixels at another height would read
    // rows it has written: the walk then reads a copy of the source.
    EImage<P> copy;
    const EROI<P>* from = src;
    if (!RowsIndependent(src, out)) {
      copy.SetSize(w, h);
      if (EGetError() != E_OK) return;
      CopyRoi(src, &copy);
      from = &copy;
    }
    RunningBox<T>(f.op[mode], reinterpret_cast<const T*>(from->GetImagePtr(0, 0)), from->GetRowPitch(),
                  reinterpret_cast<T*>(out->GetImagePtr(0, 0)), out->GetRowPitch(), w, h, static_cast<int>(cw),
                  static_cast<int>(ch), ActiveKernels<T>(), true);
    return;
  }
  const unsigned squares = std::min(cw, ch);
  const unsigned lines = std::max(cw, ch) - squares;
  EROI<P>* from = src;
  for (unsigned i = 0; i < squares; ++i, from = out) RunPass(f, mode, PassKind::kSquare, from, out);
  const PassKind line = cw > ch ? PassKind::kX : PassKind::kY;
  for (unsigned i = 0; i < lines; ++i, from = out) RunPass(f, mode, line, from, out);
  if (from == src && !inPlace) CopyRoi(src, out);  // both clipped to 0: a 1x1 ROI
}

template <class P>
void Disk(const Family& f, int mode, EROI<P>* src, EROI<P>* dst, unsigned r) {
  EROI<P>* out = dst != nullptr ? dst : src;
  if (r == 0) {
    if (!SamePixels(src, out)) CopyRoi(src, out);
    return;
  }
  // Past w + h passes every pixel holds the extremum of the whole ROI.
  const unsigned limit = static_cast<unsigned>(src->GetWidth()) + static_cast<unsigned>(src->GetHeight()) + 2;
  if (r > limit) r = limit;
  const unsigned crosses = (r + 1) >> 1;
  const unsigned squares = r - crosses;
  EROI<P>* from = src;
  if (squares > 0) {
    Box(f, mode, from, out, squares, squares);
    from = out;
  }
  for (unsigned i = 0; i < crosses; ++i, from = out) RunPass(f, mode, PassKind::kCross, from, out);
}

template <class P>
void SeparableBox(const Family& f, int mode, EROI<P>* src, EROI<P>* dst, unsigned hw, unsigned hh) {
  Frame frame(f.separable[mode]);
  if (hh == ~0u) hh = hw;
  EROI<P>* out = dst != nullptr ? dst : src;
  if (!frame.NotVoid(out) || !frame.SameSize(src, out)) return;
  EROI<P>* from = src;
  if (hw == 0 && hh == 0) CopyRoi(src, out);
  for (unsigned i = 0; i < hw; ++i, from = out) {
    RunPass(f, mode, PassKind::kX, from, out);
    if (EGetError() != E_OK) return;
  }
  for (unsigned i = 0; i < hh; ++i, from = out) {
    RunPass(f, mode, PassKind::kY, from, out);
    if (EGetError() != E_OK) return;
  }
}

#define MIREL_INSTANTIATE(P)                                                               \
  template void RunPass<P>(const Family&, int, PassKind, EROI<P>*, EROI<P>*);              \
  template void Box<P>(const Family&, int, EROI<P>*, EROI<P>*, unsigned, unsigned);        \
  template void Disk<P>(const Family&, int, EROI<P>*, EROI<P>*, unsigned);                 \
  template void SeparableBox<P>(const Family&, int, EROI<P>*, EROI<P>*, unsigned, unsigned);
MIREL_INSTANTIATE(EBW8)
MIREL_INSTANTIATE(EBW16)
#undef MIREL_INSTANTIATE

}  // namespace morphology

namespace testing {
void SetRunningBoxFrom(int from) { morphology::tRunningBoxFrom = from; }
}  // namespace testing
}  // namespace mirel

// ================================================================ exported

namespace {

using mirel::Frame;
using mirel::morphology::Family;
using mirel::morphology::PassKind;

const Family kGrey8 = {{mirel::morphology::kMin, mirel::morphology::kMax},
                       {"ImgErode3x3 (BW8)", "ImgDilate3x3 (BW8)"},
                       {"ImgErodeX (BW8)", "ImgDilateX (BW8)"},
                       {"ImgErodeY ( BW8)", "ImgDilateY ( BW8)"},
                       {"ImgErodeXY (BW8)", "ImgDilateXY (BW8)"},
                       {"TlmErodeBox", "TlmDilateBox"},
                       {{nullptr, nullptr}, {nullptr, nullptr}},
                       {{nullptr, nullptr}, {nullptr, nullptr}}};
const Family kGrey16 = {{mirel::morphology::kMin, mirel::morphology::kMax},
                        {"ImgErode3x3 (BW16)", "ImgDilate3x3 (BW16)"},
                        {"ImgErodeX (BW16)", "ImgDilateX (BW16)"},
                        {"ImgErodeY ( BW16)", "ImgDilateY ( BW16)"},
                        {"ImgErodeXY (BW16)", "ImgDilateXY (BW16)"},
                        {"TlmErodeBox (BW16)", "TlmDilateBox (BW16)"},
                        {{nullptr, nullptr}, {nullptr, nullptr}},
                        {{nullptr, nullptr}, {nullptr, nullptr}}};

template <class P>
const Family& FamilyOf() {
  return sizeof(P) == 1 ? kGrey8 : kGrey16;
}

// The checks of the box and disk forms: the source, and a separate
// destination with its size.
template <class P>
bool Checks(Frame& frame, EROI<P>* src, EROI<P>* dst) {
  if (!frame.NotVoid(src)) return false;
  if (dst == nullptr || dst == src) return true;
  return frame.NotVoid(dst) && frame.SameSize(src, dst);
}

template <class P>
void BoxFrame(const char* label, int mode, EROI<P>* src, EROI<P>* dst, unsigned hw, unsigned hh) {
  Frame frame(label);
  if (!Checks(frame, src, dst)) return;
  if (hh == ~0u) hh = hw;
  mirel::morphology::Box(FamilyOf<P>(), mode, src, dst, hw, hh);
}

template <class P>
void DiskFrame(const char* label, int mode, EROI<P>* src, EROI<P>* dst, unsigned r) {
  Frame frame(label);
  if (!Checks(frame, src, dst)) return;
  mirel::morphology::Disk(FamilyOf<P>(), mode, src, dst, r);
}

// An element: box (hw, hh) or, with hh unused, disk hw.
struct Shape {
  bool disk;
  unsigned hw, hh;
};
template <class P>
void Erode(EROI<P>* src, EROI<P>* dst, const Shape& s) {
  if (s.disk) ImgErodeDisk(src, dst, s.hw);
  else ImgErodeBox(src, dst, s.hw, s.hh);
}
template <class P>
void Dilate(EROI<P>* src, EROI<P>* dst, const Shape& s) {
  if (s.disk) ImgDilateDisk(src, dst, s.hw);
  else ImgDilateBox(src, dst, s.hw, s.hh);
}

enum class Compound { kOpen, kClose, kWhite, kBlack, kGradient };

template <class P>
void CompoundFrame(const char* label, Compound c, EROI<P>* src, EROI<P>* dst, Shape s) {
  Frame frame(label);
  EROI<P>* out = dst != nullptr ? dst : src;
  if (c == Compound::kGradient) {
    // The gradient checks the size of any destination given, and no more.
    if (!frame.NotVoid(src)) return;
    if (dst != nullptr && !frame.SameSize(src, dst)) return;
  } else if (!Checks(frame, src, dst)) {
    return;
  }
  if (!s.disk && s.hh == ~0u && c != Compound::kGradient) s.hh = s.hw;
  auto ok = [] { return EGetError() == E_OK; };
  switch (c) {
    case Compound::kOpen:
      Erode(src, dst, s);
      if (ok()) Dilate<P>(out, nullptr, s);
      return;
    case Compound::kClose:
      Dilate(src, dst, s);
      if (ok()) Erode<P>(out, nullptr, s);
      return;
    default:
      break;
  }
  EImage<P> tmp;
  EOk();
  tmp.SetSize(src->GetWidth(), src->GetHeight());
  if (!ok()) return;
  if (c == Compound::kWhite) {
    Erode<P>(src, &tmp, s);
    if (ok()) Dilate<P>(&tmp, nullptr, s);
    if (ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<P>*>(src), static_cast<const EROI<P>*>(&tmp), out);
  } else if (c == Compound::kBlack) {
    Dilate<P>(src, &tmp, s);
    if (ok()) Erode<P>(&tmp, nullptr, s);
    if (ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<P>*>(&tmp), static_cast<const EROI<P>*>(src), out);
  } else {
    Erode<P>(src, &tmp, s);
    if (ok()) Dilate(src, dst, s);
    if (ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<P>*>(out), static_cast<const EROI<P>*>(&tmp), out);
  }
}

}  // namespace

#define MIREL_GREY_FORMS(P, SUFFIX)                                                                    \
  void ImgErodeBox(EROI<P>* src, EROI<P>* dst, unsigned int hw, unsigned int hh) {                     \
    BoxFrame("ImgErodeBox" SUFFIX, 0, src, dst, hw, hh);                                               \
  }                                                                                                    \
  void ImgDilateBox(EROI<P>* src, EROI<P>* dst, unsigned int hw, unsigned int hh) {                    \
    BoxFrame("ImgDilateBox" SUFFIX, 1, src, dst, hw, hh);                                              \
  }                                                                                                    \
  void ImgErodeDisk(EROI<P>* src, EROI<P>* dst, unsigned int r) { DiskFrame("ImgErodeDisk" SUFFIX, 0, src, dst, r); } \
  void ImgDilateDisk(EROI<P>* src, EROI<P>* dst, unsigned int r) {                                     \
    DiskFrame("ImgDilateDisk" SUFFIX, 1, src, dst, r);                                                 \
  }                                                                                                    \
  void ImgOpenBox(EROI<P>* src, EROI<P>* dst, unsigned int hw, unsigned int hh) {                      \
    CompoundFrame("ImgOpenBox" SUFFIX, Compound::kOpen, src, dst, Shape{false, hw, hh});               \
  }                                                                                                    \
  void ImgCloseBox(EROI<P>* src, EROI<P>* dst, unsigned int hw, unsigned int hh) {                     \
    CompoundFrame("ImgCloseBox" SUFFIX, Compound::kClose, src, dst, Shape{false, hw, hh});             \
  }                                                                                                    \
  void ImgMorphoGradientBox(EROI<P>* src, EROI<P>* dst, unsigned int hw, unsigned int hh) {            \
    CompoundFrame("ImgMorphoGradientBox" SUFFIX, Compound::kGradient, src, dst, Shape{false, hw, hh}); \
  }                                                                                                    \
  void ImgCloseDisk(EROI<P>* src, EROI<P>* dst, unsigned int r) {                                      \
    CompoundFrame("ImgCloseDisk" SUFFIX, Compound::kClose, src, dst, Shape{true, r, 0});               \
  }                                                                                                    \
  void ImgMorphoGradientDisk(EROI<P>* src, EROI<P>* dst, unsigned int r) {                             \
    CompoundFrame("ImgMorphoGradientDisk" SUFFIX, Compound::kGradient, src, dst, Shape{true, r, 0});   \
  }

MIREL_GREY_FORMS(EBW8, "")
MIREL_GREY_FORMS(EBW16, " (BW16)")
#undef MIREL_GREY_FORMS

// The labels that do not follow the pattern of their neighbours.
void ImgOpenDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgOpenDisk ", Compound::kOpen, src, dst, Shape{true, r, 0});
}
void ImgOpenDisk(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int r) {
  CompoundFrame("ImgOpenDisk (BW16)", Compound::kOpen, src, dst, Shape{true, r, 0});
}
void ImgWhiteTopHatBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgWhiteTopHatBox (BW8)", Compound::kWhite, src, dst, Shape{false, hw, hh});
}
void ImgWhiteTopHatBox(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgWhiteTopHatBox (BW16)", Compound::kWhite, src, dst, Shape{false, hw, hh});
}
void ImgBlackTopHatBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgBlackTopHatBox (BW8)", Compound::kBlack, src, dst, Shape{false, hw, hh});
}
void ImgBlackTopHatBox(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int hw, unsigned int hh) {
  CompoundFrame("ImgBlackTopHatBox (BW16)", Compound::kBlack, src, dst, Shape{false, hw, hh});
}
void ImgWhiteTopHatDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgWhiteTopHatDisk (BW8)", Compound::kWhite, src, dst, Shape{true, r, 0});
}
void ImgWhiteTopHatDisk(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int r) {
  CompoundFrame("ImgWhiteTopHatDisk (BW16)", Compound::kWhite, src, dst, Shape{true, r, 0});
}
void ImgBlackTopHatDisk(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int r) {
  CompoundFrame("ImgBlackTopHatDisk (BW8)", Compound::kBlack, src, dst, Shape{true, r, 0});
}
void ImgBlackTopHatDisk(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int r) {
  CompoundFrame("ImgBlackTopHatDisk (BW16)", Compound::kBlack, src, dst, Shape{true, r, 0});
}

// ---------------------------------------------------------------- passes

#define MIREL_PASS(NAME, P, MODE, KIND)                                                   \
  void NAME(EROI<P>* src, EROI<P>* dst) {                                                 \
    mirel::morphology::RunPass(FamilyOf<P>(), MODE, PassKind::KIND, src, dst);            \
  }
MIREL_PASS(ImgErode3x3, EBW8, 0, kSquare)
MIREL_PASS(ImgDilate3x3, EBW8, 1, kSquare)
MIREL_PASS(ImgErodeX, EBW8, 0, kX)
MIREL_PASS(ImgDilateX, EBW8, 1, kX)
MIREL_PASS(ImgErodeY, EBW8, 0, kY)
MIREL_PASS(ImgDilateY, EBW8, 1, kY)
MIREL_PASS(ImgErodeXY, EBW8, 0, kCross)
MIREL_PASS(ImgDilateXY, EBW8, 1, kCross)
MIREL_PASS(ImgErode3x3, EBW16, 0, kSquare)
MIREL_PASS(ImgDilate3x3, EBW16, 1, kSquare)
MIREL_PASS(ImgErodeX, EBW16, 0, kX)
MIREL_PASS(ImgDilateX, EBW16, 1, kX)
MIREL_PASS(ImgErodeY, EBW16, 0, kY)
MIREL_PASS(ImgDilateY, EBW16, 1, kY)
MIREL_PASS(ImgErodeXY, EBW16, 0, kCross)
MIREL_PASS(ImgDilateXY, EBW16, 1, kCross)
#undef MIREL_PASS

void TlmErodeBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  mirel::morphology::SeparableBox(kGrey8, 0, src, dst, hw, hh);
}
void TlmDilateBox(EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int hw, unsigned int hh) {
  mirel::morphology::SeparableBox(kGrey8, 1, src, dst, hw, hh);
}
void TlmErodeBox(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int hw, unsigned int hh) {
  mirel::morphology::SeparableBox(kGrey16, 0, src, dst, hw, hh);
}
void TlmDilateBox(EROI<EBW16>* src, EROI<EBW16>* dst, unsigned int hw, unsigned int hh) {
  mirel::morphology::SeparableBox(kGrey16, 1, src, dst, hw, hh);
}

// ---------------------------------------------------------------- older entry points

namespace {

// One 3x3 pass in which every position outside the ROI holds `border`:
// a row pass into dst, then a column pass in place on dst. Values compare
// as signed int and are stored as their low byte.
void BorderPass(EROI<EBW8>* src, EROI<EBW8>* dst, int border, int mode) {
  EOk();
  src->CheckSameSize(dst);
  if (EGetError() != E_OK) return;
  if (src->Void() || dst->Void()) {
    ESetError(E_ERROR_VOID_IMAGE);
    return;
  }
  const int w = src->GetWidth(), h = src->GetHeight();
  if (w <= 0 || h <= 0) return;
  auto op = [mode](int a, int b) { return mode == 0 ? std::min(a, b) : std::max(a, b); };
  const std::ptrdiff_t sp = src->GetRowPitch(), dp = dst->GetRowPitch();
  const std::uint8_t* s = reinterpret_cast<const std::uint8_t*>(src->GetImagePtr(0, 0));
  std::uint8_t* d = reinterpret_cast<std::uint8_t*>(dst->GetImagePtr(0, 0));
  mirel::RowwiseBands(dst, {src}, 2.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const std::uint8_t* p = s + sp * y;
      std::uint8_t* o = d + dp * y;
      int prev = border;
      for (int x = 0; x < w; ++x) {
        const int cur = p[x];
        const int next = x + 1 < w ? p[x + 1] : border;
        o[x] = static_cast<std::uint8_t>(op(op(prev, cur), next));
        prev = cur;
      }
    }
  });
  // The column pass in place: the row above and below are distinct from the
  // row itself except at the top and bottom of the image, where `border`
  // stands for them. Without scratch the row pass stands.
  mirel::morphology::PassRows<std::uint8_t>(
      d, dp, d, dp, w, h, true, true, false, 2.0,
      [&](const std::uint8_t* a, const std::uint8_t* c, const std::uint8_t* b, std::uint8_t* o, std::uint8_t*) {
        for (int x = 0; x < w; ++x)
          o[x] = static_cast<std::uint8_t>(op(op(a == c ? border : a[x], c[x]), b == c ? border : b[x]));
      });
}

// The worker of the older entry points: `passes` border passes, the first
// from src into dst and the others in place; stops at the first failure.
void ErodeDilate(int passes, EROI<EBW8>* dst, EROI<EBW8>* src, int border, int mode) {
  if (passes <= 0) return;
  if (src == nullptr || dst == nullptr) {
    ESetError(E_ERROR_VOID_IMAGE);
    ETraceError("ImgErodeDilate");
    return;
  }
  EROI<EBW8>* from = src;
  for (int i = 0; i < passes; ++i, from = dst) {
    BorderPass(from, dst, border, mode);
    if (EGetError() != E_OK) {
      ETraceError("ImgErodeDilate");
      return;
    }
  }
}

bool Ok() { return EGetError() == E_OK; }

}  // namespace

short ImgErode(EROI<EBW8>* src, EROI<EBW8>* dst, int passes, int border) {
  Frame frame("ImgErode");
  ErodeDilate(passes, dst != nullptr ? dst : src, src, border, 0);
  return frame.Result();
}

short ImgDilate(EROI<EBW8>* src, EROI<EBW8>* dst, int passes, int border) {
  Frame frame("ImgDilate");
  ErodeDilate(passes, dst != nullptr ? dst : src, src, border, 1);
  return frame.Result();
}

short ImgOpen(EROI<EBW8>* src, EROI<EBW8>* dst, int passes, int firstBorder, int secondBorder) {
  Frame frame("ImgOpen");
  EROI<EBW8>* out = dst != nullptr ? dst : src;
  ErodeDilate(passes, out, src, firstBorder, 0);
  if (Ok()) ErodeDilate(passes, out, out, secondBorder, 1);
  return frame.Result();
}

short ImgClose(EROI<EBW8>* src, EROI<EBW8>* dst, int passes, int firstBorder, int secondBorder) {
  Frame frame("ImgClose");
  EROI<EBW8>* out = dst != nullptr ? dst : src;
  ErodeDilate(passes, out, src, firstBorder, 1);
  if (Ok()) ErodeDilate(passes, out, out, secondBorder, 0);
  return frame.Result();
}

short ImgWhiteTopHat(EROI<EBW8>* src, EROI<EBW8>* dst, int passes, int firstBorder, int secondBorder) {
  Frame frame("ImgWhiteTopHat");
  if (src == nullptr || dst == nullptr) {
    frame.Fail(E_ERROR_VOID_IMAGE);
    return frame.Result();
  }
  if (!frame.Require(!mirel::SameImage(src, dst), E_ERROR_SAME_IMAGE) ||
      !frame.Require(!src->Void() && !dst->Void(), E_ERROR_VOID_IMAGE))
    return frame.Result();
  ImgOpen(src, dst, passes, firstBorder, secondBorder);
  if (Ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<EBW8>*>(src), static_cast<const EROI<EBW8>*>(dst), dst);
  return frame.Result();
}

short ImgBlackTopHat(EROI<EBW8>* src, EROI<EBW8>* dst, int passes, int firstBorder, int secondBorder) {
  Frame frame("ImgBlackTopHat");
  if (!frame.NotVoid(src) ||
      !frame.Require(dst != nullptr && dst != src && !mirel::SameImage(src, dst), E_ERROR_SAME_IMAGE) ||
      !frame.Require(!src->Void() && !dst->Void(), E_ERROR_VOID_IMAGE))
    return frame.Result();
  ImgClose(src, dst, passes, firstBorder, secondBorder);
  if (Ok()) ImgOper(ALO_SUBTRACT, static_cast<const EROI<EBW8>*>(dst), static_cast<const EROI<EBW8>*>(src), dst);
  return frame.Result();
}

// Const sources: the same operations, never in place (see the header).
MIREL_CONST_SOURCE_MORPHOLOGY(Img, , EBW8)
MIREL_CONST_SOURCE_MORPHOLOGY(Img, , EBW16)
MIREL_CONST_SOURCE_MORPHOLOGY(Img, , EC24)

short ImgErode(const EROI<EBW8>* s, EROI<EBW8>* d, int passes, int border) {
  return ImgErode(mirel::ReadOnlySource(s, d), d, passes, border);
}
short ImgDilate(const EROI<EBW8>* s, EROI<EBW8>* d, int passes, int border) {
  return ImgDilate(mirel::ReadOnlySource(s, d), d, passes, border);
}
#define MIREL_CONST_TWO_BORDERS(Name)                                              \
  short Name(const EROI<EBW8>* s, EROI<EBW8>* d, int passes, int first, int second) { \
    return Name(mirel::ReadOnlySource(s, d), d, passes, first, second);              \
  }
MIREL_CONST_TWO_BORDERS(ImgOpen)
MIREL_CONST_TWO_BORDERS(ImgClose)
MIREL_CONST_TWO_BORDERS(ImgWhiteTopHat)
MIREL_CONST_TWO_BORDERS(ImgBlackTopHat)
#undef MIREL_CONST_TWO_BORDERS

void ImgErode(const EROI<EC24>* s, EROI<EC24>* d, int passes, EC24 border) {
  ImgErode(mirel::ReadOnlySource(s, d), d, passes, border);
}
void ImgDilate(const EROI<EC24>* s, EROI<EC24>* d, int passes, EC24 border) {
  ImgDilate(mirel::ReadOnlySource(s, d), d, passes, border);
}
#define MIREL_CONST_TWO_BORDERS(Name)                                                  \
  void Name(const EROI<EC24>* s, EROI<EC24>* d, int passes, EC24 first, EC24 second) { \
    Name(mirel::ReadOnlySource(s, d), d, passes, first, second);                       \
  }
MIREL_CONST_TWO_BORDERS(ImgOpen)
MIREL_CONST_TWO_BORDERS(ImgClose)
MIREL_CONST_TWO_BORDERS(ImgWhiteTopHat)
MIREL_CONST_TWO_BORDERS(ImgBlackTopHat)
#undef MIREL_CONST_TWO_BORDERS
