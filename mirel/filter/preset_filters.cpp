// The preset 3x3 filters on 8-bit and 16-bit pixels: one row engine for
// every kind and both pixel types, its frames, its in-place form, and
// ImgConvolRoberts.
//
// A row is computed from three row pointers (above, current, below), the
// pointers of the first and last rows replicating that row. The first and
// last columns, whose windows leave the row, go pixel by pixel with clamped
// columns; the columns between go by blocks when the fast paths run. In
// place, the current row is copied aside before it is overwritten and the
// copy of the row above is kept, so the result is that of a separate
// destination.
//
// 16-bit pixels differ in three ways: caps are at 65535; the zero frame of
// the marked kinds is the form of every separate destination (the blocks
// then fill the interior only); and their blocks give exactly the pixel
// code's result, the low 16 bits of the one-dimensional Laplacians
// included.
#include "mirel/filter/preset_filters.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "mirel/filter/alloc_internal.h"
#include "mirel/filter/convolution_internal.h"
#include "mirel/filter/preset_filters_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/point/arith.h"

namespace mirel {
namespace filter {

PresetRowFn ActivePresetRow() {
  if (EGetMMX() == 0) return nullptr;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return PresetRowAvx512();
  if (level >= cpu::kAVX2) return PresetRowAvx2();
  if (level >= cpu::kSSE2) return PresetRowSse2();
#endif
  return nullptr;
}

PresetRow16Fn ActivePresetRow16() {
  if (EGetMMX() == 0) return nullptr;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return PresetRow16Avx512();
  if (level >= cpu::kAVX2) return PresetRow16Avx2();
  if (level >= cpu::kSSE2) return PresetRow16Sse2();
#endif
  return nullptr;
}

namespace {

using Byte = std::uint8_t;

template <int kMax>
struct ScalarOps {
  using V = int;
  static int Add(int a, int b) { return a + b; }
  static int Sub(int a, int b) { return a - b; }
  static int Abs(int a) { return a < 0 ? -a : a; }
  static int Cap(int a) { return a > kMax ? kMax : a; }
  static int Max0(int a) { return a < 0 ? 0 : a; }
  static int Min(int a, int b) { return a < b ? a : b; }
  static int Max(int a, int b) { return a > b ? a : b; }
  template <int N>
  static int Srl(int a) { return a >> N; }
  template <int K>
  static int Mul(int a) { return a * K; }
};

// A row is `n` bytes in which a pixel's neighbours lie S bytes to either
// side: S = 1 on grey rows, S = 3 on colour rows, whose three components
// are filtered side by side as three separate images.
//
// Elements x in [x0, x1) one by one, neighbours clamped to the row. Bytes
// in [s0, s1) lie in blocks of the fast path and saturate; the others keep
// the low eight bits (the two differ only for the one-dimensional
// Laplacians). 16-bit pixels keep the low 16 bits everywhere.
template <Preset K, int S, class P>
void Pixels(const P* t, const P* m, const P* b, P* out, int n, int x0, int x1, int s0, int s1) {
  using Ops = ScalarOps<sizeof(P) == 1 ? 255 : 65535>;
  for (int x = x0; x < x1; ++x) {
    const int l = x >= S ? x - S : x, r = x + S < n ? x + S : x;
    const int v = Evaluate<K, Ops>({t[l], t[x], t[r], m[l], m[x], m[r], b[l], b[x], b[r]});
    if constexpr (sizeof(P) == 1 && SplitsAtBlocks(K))
      out[x] = (x >= s0 && x < s1 && v > 255) ? Byte{255} : static_cast<Byte>(v);
    else
      out[x] = static_cast<P>(v);
  }
}

template <Preset K, int S>
void FilterRow(const Byte* t, const Byte* m, const Byte* b, Byte* out, int n, PresetRowFn blocks) {
  if (blocks == nullptr) {
    Pixels<K, S>(t, m, b, out, n, 0, n, 0, 0);
    return;
  }
  // The stretch the blocks cover: for the kinds whose blocks saturate, the
  // whole 8-pixel groups from the first 8-byte aligned destination address
  // on (none when the row is too short for one); a colour component is
  // filtered as a plane of its own, whose rows are 64-byte aligned, so its
  // groups start at the first pixel. For the other kinds: every byte whose
  // window stays in the row.
  int s0 = S, s1 = n - S;
  if constexpr (SplitsAtBlocks(K)) {
    const int pixels = n / S;
    const int head = S == 1 ? static_cast<int>((8 - (reinterpret_cast<std::uintptr_t>(out) & 7)) & 7) : 0;
    s0 = s1 = 0;
    if (pixels - head >= 8) {
      s0 = S * head;
      s1 = S * (head + ((pixels - head) & ~7));
    }
  }
  const int lo = s0 > S ? s0 : S, hi = s1 < n - S ? s1 : n - S;
  if (lo >= hi) {
    Pixels<K, S>(t, m, b, out, n, 0, n, s0, s1);
    return;
  }
  Pixels<K, S>(t, m, b, out, n, 0, lo, s0, s1);
  const int done = blocks(K, S, t, m, b, out, lo, hi);
  Pixels<K, S>(t, m, b, out, n, done, n, s0, s1);
}

// A row of 16-bit pixels: every pixel between the two ends by blocks, the
// ends one by one.
template <Preset K, int S>
void FilterRow(const std::uint16_t* t, const std::uint16_t* m, const std::uint16_t* b, std::uint16_t* out,
               int n, PresetRow16Fn blocks) {
  int done = 0;
  if (blocks != nullptr && n > 2) {
    Pixels<K, S>(t, m, b, out, n, 0, 1, 0, 0);
    done = blocks(K, t, m, b, out, 1, n - 1);
  }
  Pixels<K, S>(t, m, b, out, n, done, n, 0, 0);
}

// Rows [y0, y1) of a separate destination with the replicated frame; the
// views' widths are in elements.
template <Preset K, int S, class Pix, class Blocks>
void ReplicatedRows(const Rows<const Pix>& s, const Rows<Pix>& d, int y0, int y1, Blocks blocks) {
  using P = typename GreyOf<Pix>::P;
  const int h = s.height;
  for (int y = y0; y < y1; ++y) {
    const P* t = reinterpret_cast<const P*>(s.Row(y > 0 ? y - 1 : 0));
    const P* m = reinterpret_cast<const P*>(s.Row(y));
    const P* b = reinterpret_cast<const P*>(s.Row(y + 1 < h ? y + 1 : h - 1));
    FilterRow<K, S>(t, m, b, reinterpret_cast<P*>(d.Row(y)), s.width, blocks);
  }
}

// A frame pixel of the zero-frame form: positions outside the ROI count 0,
// and the value goes through an absolute value and a cap at the largest
// pixel value.
template <Preset K, class Pix>
typename GreyOf<Pix>::P ZeroFramePixel(const Rows<const Pix>& s, int x, int y) {
  using P = typename GreyOf<Pix>::P;
  constexpr int kMax = GreyOf<Pix>::kMax;
  auto at = [&](int dx, int dy) -> int {
    const int xx = x + dx, yy = y + dy;
    if (xx < 0 || yy < 0 || xx >= s.width || yy >= s.height) return 0;
    return reinterpret_cast<const P*>(s.Row(yy))[xx];
  };
  const Window3<int> w{at(-1, -1), at(0, -1), at(1, -1), at(-1, 0), at(0, 0),
                       at(1, 0),   at(-1, 1), at(0, 1),  at(1, 1)};
  int v;
  if constexpr (K == Preset::kHighpass2)
    v = 9 * w.m1 - (w.t0 + w.t1 + w.t2 + w.m0 + w.m2 + w.b0 + w.b1 + w.b2);
  else
    v = Evaluate<K, ScalarOps<kMax>>(w);
  v = v < 0 ? -v : v;
  return static_cast<P>(v > kMax ? kMax : v);
}

// Rows [y0, y1) of the separate-destination form of the zero-frame kinds:
// the frame pixel by pixel, the interior by blocks when given (16-bit
// pixels only; 8-bit pixels take this form on the pixel-by-pixel path).
template <Preset K, class Pix, class Blocks>
void ZeroFrameRows(const Rows<const Pix>& s, const Rows<Pix>& d, int y0, int y1, Blocks blocks) {
  using P = typename GreyOf<Pix>::P;
  const int w = s.width, h = s.height;
  for (int y = y0; y < y1; ++y) {
    P* out = reinterpret_cast<P*>(d.Row(y));
    if (y == 0 || y == h - 1 || w < 3) {
      for (int x = 0; x < w; ++x) out[x] = ZeroFramePixel<K>(s, x, y);
      continue;
    }
    const P* t = reinterpret_cast<const P*>(s.Row(y - 1));
    const P* m = reinterpret_cast<const P*>(s.Row(y));
    const P* b = reinterpret_cast<const P*>(s.Row(y + 1));
    int x = 1;
    if constexpr (sizeof(P) > 1) {
      if (blocks != nullptr) x = blocks(K, t, m, b, out, 1, w - 1);
    }
    Pixels<K, 1>(t, m, b, out, w, x, w - 1, 0, 0);
    out[0] = ZeroFramePixel<K>(s, 0, y);
    out[w - 1] = ZeroFramePixel<K>(s, w - 1, y);
  }
}

// In place on one ROI (width in elements); false when the row copies cannot
// be had (nothing is written then).
template <Preset K, int S, class Pix, class Blocks>
bool InPlaceRows(const Rows<Pix>& img, Blocks blocks) {
  using P = typename GreyOf<Pix>::P;
  const int w = img.width, h = img.height;
  P* prev = Allocate<P>(static_cast<std::size_t>(w));
  P* cur = Allocate<P>(static_cast<std::size_t>(w));
  if (prev == nullptr || cur == nullptr) {
    Free(prev);
    Free(cur);
    return false;
  }
  for (int y = 0; y < h; ++y) {
    P* row = reinterpret_cast<P*>(img.Row(y));
    std::memcpy(cur, row, static_cast<std::size_t>(w) * sizeof(P));
    const P* t = y > 0 ? prev : cur;
    const P* b = y + 1 < h ? reinterpret_cast<const P*>(img.Row(y + 1)) : cur;
    FilterRow<K, S>(t, cur, b, row, w, blocks);
    std::swap(prev, cur);
  }
  Free(prev);
  Free(cur);
  return true;
}

struct Labels {
  const char* op;
  const char* scalarRowBuffer = nullptr;  // traced first when an in-place
  const char* fastRowBuffer = nullptr;    // copy cannot be had
};

constexpr bool HasZeroFrame(Preset k) {
  switch (k) {
    case Preset::kSobelX: case Preset::kSobelY: case Preset::kSobel: case Preset::kPrewittY:
    case Preset::kPrewitt: case Preset::kLaplacian4: case Preset::kLaplacian8:
    case Preset::kHighpass1: case Preset::kHighpass2: case Preset::kLowpass2:
      return true;
    default:
      return false;
  }
}

inline PresetRowFn ActiveBlocks(const EBW8*) { return ActivePresetRow(); }
inline PresetRow16Fn ActiveBlocks(const EBW16*) { return ActivePresetRow16(); }

// 8-bit pixels take the zero frame on the pixel-by-pixel path only; 16-bit
// pixels on every path.
template <Preset K, class Pix, class Blocks>
bool ZeroFrameForm(Blocks blocks) {
  return HasZeroFrame(K) && (sizeof(Pix) > 1 || blocks == nullptr);
}

template <class Pix>
void RunPreset(Preset kind, EROI<Pix>* src, EROI<Pix>* dst, const Labels& labels) {
  Frame frame(labels.op);
  if (!frame.NotVoid(src)) return;
  const bool inPlace = dst == nullptr || SamePixels(src, dst);
  if (!inPlace && (!frame.NotVoid(dst) || !frame.SameSize(dst, src))) return;
  const auto blocks = ActiveBlocks(static_cast<const Pix*>(nullptr));
  WithPreset(kind, [&](auto k) {
    constexpr Preset K = decltype(k)::value;
    if (inPlace) {
      if (InPlaceRows<K, 1>(RowsOf(src), blocks)) return;
      frame.Fail(E_ERROR_OUT_OF_MEMORY);
      const char* inner = blocks != nullptr ? labels.fastRowBuffer : labels.scalarRowBuffer;
      if (inner != nullptr) ETraceError(inner);
      return;
    }
    const Rows<const Pix> s = RowsOf(static_cast<const EROI<Pix>*>(src));
    const Rows<Pix> d = RowsOf(dst);
    // A destination that overlaps the source reads rows already written:
    // one band then.
    const double cost = Overlap(src, dst) ? kOneBand : RowCost(s.width, 2.0 * sizeof(Pix));
    RunBands(s.height, cost, [&](int y0, int y1) {
      if constexpr (HasZeroFrame(K)) {
        if (ZeroFrameForm<K, Pix>(blocks)) {
          ZeroFrameRows<K>(s, d, y0, y1, blocks);
          return;
        }
      }
      ReplicatedRows<K, 1>(s, d, y0, y1, blocks);
    });
  });
}

// Rows [y0, y1) of ImgConvolRoberts over the size of d.
template <class Pix>
void RobertsRows(const Rows<const Pix>& s, const Rows<Pix>& d, int y0, int y1) {
  using P = typename GreyOf<Pix>::P;
  auto sat = [](int v) { return static_cast<P>(v > GreyOf<Pix>::kMax ? GreyOf<Pix>::kMax : v); };
  auto diff = [](int a, int b) { return a > b ? a - b : b - a; };
  const int w = d.width, h = d.height;
  if (w <= 0) return;  // no columns: nothing to write, not even the last one
  for (int y = y0; y < y1; ++y) {
    const P* p = reinterpret_cast<const P*>(s.Row(y));
    P* out = reinterpret_cast<P*>(d.Row(y));
    if (y == h - 1) {
      for (int x = 0; x + 1 < w; ++x) out[x] = sat(2 * diff(p[x], p[x + 1]));
      out[w - 1] = 0;
      continue;
    }
    const P* q = reinterpret_cast<const P*>(s.Row(y + 1));
    for (int x = 0; x + 1 < w; ++x) out[x] = sat(diff(p[x], q[x + 1]) + diff(p[x + 1], q[x]));
    out[w - 1] = sat(2 * diff(p[w - 1], q[w - 1]));
  }
}

}  // namespace

bool PresetByComponent(Preset kind, const EROI<EC24>* src, EROI<EC24>* target) {
  const PresetRowFn blocks = ActivePresetRow();
  // The rows as bytes: three components side by side.
  const Rows<const EBW8> s{reinterpret_cast<const EBW8*>(src->GetImagePtr(0, 0)), src->GetRowPitch(),
                           3 * src->GetWidth(), src->GetHeight()};
  const Rows<EBW8> d{reinterpret_cast<EBW8*>(target->GetImagePtr(0, 0)), target->GetRowPitch(),
                     3 * target->GetWidth(), target->GetHeight()};
  const bool inPlace = SamePixels(src, target);
  bool ok = true;
  WithPreset(kind, [&](auto k) {
    constexpr Preset K = decltype(k)::value;
    if (inPlace) ok = InPlaceRows<K, 3>(d, blocks);
    else ReplicatedRows<K, 3>(s, d, 0, s.height, blocks);
  });
  if (!ok) ESetError(E_ERROR_OUT_OF_MEMORY);
  return ok;
}

}  // namespace filter
}  // namespace mirel

namespace mirel {
namespace filter {
namespace {

template <class Pix>
void Roberts(EROI<Pix>* src, EROI<Pix>* dst, const char* label) {
  mirel::Frame frame(label);
  if (dst == nullptr) {
    if (!frame.NotVoid(src)) return;
    EImage<Pix> temp;
    temp.SetSize(src->GetWidth(), src->GetHeight());
    if (!frame.Ok()) return;
    ImgConvolRoberts(src, &temp);
    if (frame.Ok()) ImgCopy(&temp, src);
    return;
  }
  // The loop bounds are dst's size; a dst larger than src would read
  // outside it.
  if (!frame.NotVoid(src, dst) ||
      !frame.Require(dst->GetWidth() <= src->GetWidth() && dst->GetHeight() <= src->GetHeight(),
                     E_ERROR_SIZE_MISMATCH))
    return;
  const auto d = RowsOf(dst);
  RobertsRows(RowsOf(static_cast<const EROI<Pix>*>(src)), d, 0, d.height);
}

}  // namespace
}  // namespace filter
}  // namespace mirel

using mirel::filter::Preset;
using mirel::filter::RunPreset;

#define MIREL_PRESET_TWINS(Name, Kind, Label)                                                           \
  void Name(EROI<EBW8>* s, EROI<EBW8>* d) { RunPreset(Preset::Kind, s, d, {Label " (BW8)"}); }           \
  void Name(EROI<EBW16>* s, EROI<EBW16>* d) { RunPreset(Preset::Kind, s, d, {Label " (BW16)"}); }
MIREL_PRESET_TWINS(ImgConvolSobelX, kSobelX, "ImgConvolSobelX")
MIREL_PRESET_TWINS(ImgConvolSobelY, kSobelY, "ImgConvolSobelY")
MIREL_PRESET_TWINS(ImgConvolSobel, kSobel, "ImgConvolSobel")
MIREL_PRESET_TWINS(ImgConvolPrewittX, kPrewittX, "ImgConvolPrewittX")
MIREL_PRESET_TWINS(ImgConvolPrewittY, kPrewittY, "ImgConvolPrewittY")
MIREL_PRESET_TWINS(ImgConvolPrewitt, kPrewitt, "ImgConvolPrewitt")
MIREL_PRESET_TWINS(ImgConvolGradientX, kGradientX, "ImgConvolGradientX")
MIREL_PRESET_TWINS(ImgConvolGradient, kGradient, "ImgConvolGradient")
MIREL_PRESET_TWINS(ImgConvolLaplacianX, kLaplacianX, "ImgConvolLaplacianX")
MIREL_PRESET_TWINS(ImgConvolLaplacian4, kLaplacian4, "ImgConvolLaplacian4")
MIREL_PRESET_TWINS(ImgConvolLaplacian8, kLaplacian8, "ImgConvolLaplacian8")
MIREL_PRESET_TWINS(ImgConvolHighpass1, kHighpass1, "ImgConvolHighpass1")
MIREL_PRESET_TWINS(ImgConvolHighpass2, kHighpass2, "ImgConvolHighpass2")
MIREL_PRESET_TWINS(ImgConvolLowpass1, kLowpass1, "ImgConvolLowpass1")
MIREL_PRESET_TWINS(ImgConvolLowpass2, kLowpass2, "ImgConvolLowpass2")
MIREL_PRESET_TWINS(ImgConvolLowpass3, kLowpass3, "ImgConvolLowpass3")
MIREL_PRESET_TWINS(ImgConvolUniform3x3, kLowpass1, "ImgConvolUniform3x3")
MIREL_PRESET_TWINS(ImgConvolGaussian3x3, kLowpass3, "ImgConvolGaussian3x3")
MIREL_PRESET_TWINS(ImgConvolGaussianX, kGaussianX, "ImgConvolGaussianX")
MIREL_PRESET_TWINS(ImgConvolUniformX, kUniformX, "ImgConvolUniformX")
MIREL_PRESET_TWINS(ConvolUniformY, kUniformY, "ConvolUniformY")
#undef MIREL_PRESET_TWINS

// The vertical forms trace the routine whose row copy failed first.
void ImgConvolGradientY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGradientY, s, d, {"ConvolGradientY (BW8)", "ChrConvolGradientY", "ChrMMXConvolGradientY"});
}
void ImgConvolGradientY(EROI<EBW16>* s, EROI<EBW16>* d) {
  RunPreset(Preset::kGradientY, s, d,
            {"ConvolGradientY (BW16)", "ChrConvolGradientY (BW16)", "ChrConvolGradientY (BW16)"});
}
void ImgConvolLaplacianY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLaplacianY, s, d,
            {"ImgConvolLaplacianY (BW8)", "ChrConvolLaplacianY", "ChrMMXConvolLaplacianY"});
}
void ImgConvolLaplacianY(EROI<EBW16>* s, EROI<EBW16>* d) {
  RunPreset(Preset::kLaplacianY, s, d,
            {"ImgConvolLaplacianY (BW16)", "ChrConvolLaplacianY (BW16)", "ChrConvolLaplacianY (BW16)"});
}
void ImgConvolGaussianY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGaussianY, s, d,
            {"ImgConvolGaussianY (BW8)", "ChrConvolGaussianY", "ChrMMXConvolGaussianY"});
}
void ImgConvolGaussianY(EROI<EBW16>* s, EROI<EBW16>* d) {
  RunPreset(Preset::kGaussianY, s, d,
            {"ImgConvolGaussianY (BW16)", "ChrConvolGaussianY (BW16)", "ChrConvolGaussianY (BW16)"});
}

void ImgConvolRoberts(EROI<EBW8>* src, EROI<EBW8>* dst) { mirel::filter::Roberts(src, dst, "ImgConvolRoberts"); }
void ImgConvolRoberts(EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::filter::Roberts(src, dst, "ImgConvolRoberts (BW16)");
}

// Const sources: the same filters, never in place (see the header).
#define MIREL_CONST_SOURCE(Name)                                                                       \
  void Name(const EROI<EBW8>* s, EROI<EBW8>* d) { Name(mirel::ReadOnlySource(s, d), d); }            \
  void Name(const EROI<EBW16>* s, EROI<EBW16>* d) { Name(mirel::ReadOnlySource(s, d), d); }
MIREL_PRESET_FILTER_NAMES(MIREL_CONST_SOURCE)
MIREL_CONST_SOURCE(ImgConvolUniform3x3)
MIREL_CONST_SOURCE(ImgConvolGaussian3x3)
MIREL_CONST_SOURCE(ImgConvolRoberts)
#undef MIREL_CONST_SOURCE
