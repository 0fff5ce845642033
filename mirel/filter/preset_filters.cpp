// The preset 3x3 filters: one row engine for every kind, its frames, its
// in-place form, and ImgConvolRoberts.
//
// A row is computed from three row pointers (above, current, below), the
// pointers of the first and last rows replicating that row. The first and
// last columns, whose windows leave the row, go pixel by pixel with clamped
// columns; the columns between go by blocks when the fast paths run. In
// place, the current row is copied aside before it is overwritten and the
// copy of the row above is kept, so the result is that of a separate
// destination.
#include "mirel/filter/preset_filters.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "mirel/filter/alloc_internal.h"
#include "mirel/filter/preset_filters_internal.h"
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

namespace {

using Byte = std::uint8_t;

struct ScalarOps {
  using V = int;
  static int Add(int a, int b) { return a + b; }
  static int Sub(int a, int b) { return a - b; }
  static int Abs(int a) { return a < 0 ? -a : a; }
  static int Cap(int a) { return a > 255 ? 255 : a; }
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
// Bytes x in [x0, x1) one by one, neighbours clamped to the row. Bytes in
// [s0, s1) lie in blocks of the fast path and saturate; the others keep the
// low eight bits (the two differ only for the one-dimensional Laplacians).
template <Preset K, int S>
void Pixels(const Byte* t, const Byte* m, const Byte* b, Byte* out, int n, int x0, int x1, int s0, int s1) {
  for (int x = x0; x < x1; ++x) {
    const int l = x >= S ? x - S : x, r = x + S < n ? x + S : x;
    const int v = Evaluate<K, ScalarOps>({t[l], t[x], t[r], m[l], m[x], m[r], b[l], b[x], b[r]});
    if constexpr (SplitsAtBlocks(K))
      out[x] = (x >= s0 && x < s1 && v > 255) ? Byte{255} : static_cast<Byte>(v);
    else
      out[x] = static_cast<Byte>(v);
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

// Rows [y0, y1) of a separate destination with the replicated frame; the
// views' widths are in bytes.
template <Preset K, int S>
void ReplicatedRows(const Rows<const EBW8>& s, const Rows<EBW8>& d, int y0, int y1, PresetRowFn blocks) {
  const int h = s.height;
  for (int y = y0; y < y1; ++y) {
    const Byte* t = reinterpret_cast<const Byte*>(s.Row(y > 0 ? y - 1 : 0));
    const Byte* m = reinterpret_cast<const Byte*>(s.Row(y));
    const Byte* b = reinterpret_cast<const Byte*>(s.Row(y + 1 < h ? y + 1 : h - 1));
    FilterRow<K, S>(t, m, b, reinterpret_cast<Byte*>(d.Row(y)), s.width, blocks);
  }
}

// A frame pixel of the zero-frame form: positions outside the ROI count 0,
// and the value goes through an absolute value and a cap at 255.
template <Preset K>
Byte ZeroFramePixel(const Rows<const EBW8>& s, int x, int y) {
  auto at = [&](int dx, int dy) -> int {
    const int xx = x + dx, yy = y + dy;
    if (xx < 0 || yy < 0 || xx >= s.width || yy >= s.height) return 0;
    return reinterpret_cast<const Byte*>(s.Row(yy))[xx];
  };
  const Window3<int> w{at(-1, -1), at(0, -1), at(1, -1), at(-1, 0), at(0, 0),
                       at(1, 0),   at(-1, 1), at(0, 1),  at(1, 1)};
  int v;
  if constexpr (K == Preset::kHighpass2)
    v = 9 * w.m1 - (w.t0 + w.t1 + w.t2 + w.m0 + w.m2 + w.b0 + w.b1 + w.b2);
  else
    v = Evaluate<K, ScalarOps>(w);
  v = v < 0 ? -v : v;
  return static_cast<Byte>(v > 255 ? 255 : v);
}

// Rows [y0, y1) of the pixel-by-pixel separate-destination form of the
// zero-frame kinds.
template <Preset K>
void ZeroFrameRows(const Rows<const EBW8>& s, const Rows<EBW8>& d, int y0, int y1) {
  const int w = s.width, h = s.height;
  for (int y = y0; y < y1; ++y) {
    Byte* out = reinterpret_cast<Byte*>(d.Row(y));
    if (y == 0 || y == h - 1 || w < 3) {
      for (int x = 0; x < w; ++x) out[x] = ZeroFramePixel<K>(s, x, y);
      continue;
    }
    out[0] = ZeroFramePixel<K>(s, 0, y);
    Pixels<K, 1>(reinterpret_cast<const Byte*>(s.Row(y - 1)), reinterpret_cast<const Byte*>(s.Row(y)),
              reinterpret_cast<const Byte*>(s.Row(y + 1)), out, w, 1, w - 1, 0, 0);
    out[w - 1] = ZeroFramePixel<K>(s, w - 1, y);
  }
}

// In place on one ROI (width in bytes); false when the row copies cannot be
// had (nothing is written then).
template <Preset K, int S>
bool InPlaceRows(const Rows<EBW8>& img, PresetRowFn blocks) {
  const int w = img.width, h = img.height;
  Byte* prev = Allocate<Byte>(static_cast<std::size_t>(w));
  Byte* cur = Allocate<Byte>(static_cast<std::size_t>(w));
  if (prev == nullptr || cur == nullptr) {
    Free(prev);
    Free(cur);
    return false;
  }
  for (int y = 0; y < h; ++y) {
    Byte* row = reinterpret_cast<Byte*>(img.Row(y));
    std::memcpy(cur, row, static_cast<std::size_t>(w));
    const Byte* t = y > 0 ? prev : cur;
    const Byte* b = y + 1 < h ? reinterpret_cast<const Byte*>(img.Row(y + 1)) : cur;
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

void RunPreset(Preset kind, EROI<EBW8>* src, EROI<EBW8>* dst, const Labels& labels) {
  Frame frame(labels.op);
  if (!frame.NotVoid(src)) return;
  const bool inPlace = dst == nullptr || SamePixels(src, dst);
  if (!inPlace && (!frame.NotVoid(dst) || !frame.SameSize(dst, src))) return;
  const PresetRowFn blocks = ActivePresetRow();
  WithPreset(kind, [&](auto k) {
    constexpr Preset K = decltype(k)::value;
    if (inPlace) {
      if (InPlaceRows<K, 1>(RowsOf(src), blocks)) return;
      frame.Fail(E_ERROR_OUT_OF_MEMORY);
      const char* inner = blocks != nullptr ? labels.fastRowBuffer : labels.scalarRowBuffer;
      if (inner != nullptr) ETraceError(inner);
      return;
    }
    const Rows<const EBW8> s = RowsOf(static_cast<const EROI<EBW8>*>(src));
    const Rows<EBW8> d = RowsOf(dst);
    if constexpr (HasZeroFrame(K)) {
      if (blocks == nullptr) {
        ZeroFrameRows<K>(s, d, 0, s.height);
        return;
      }
    }
    ReplicatedRows<K, 1>(s, d, 0, s.height, blocks);
  });
}

// Rows [y0, y1) of ImgConvolRoberts over the size of d.
void RobertsRows(const Rows<const EBW8>& s, const Rows<EBW8>& d, int y0, int y1) {
  auto sat = [](int v) { return static_cast<Byte>(v > 255 ? 255 : v); };
  auto diff = [](int a, int b) { return a > b ? a - b : b - a; };
  const int w = d.width, h = d.height;
  for (int y = y0; y < y1; ++y) {
    const Byte* p = reinterpret_cast<const Byte*>(s.Row(y));
    Byte* out = reinterpret_cast<Byte*>(d.Row(y));
    if (y == h - 1) {
      for (int x = 0; x + 1 < w; ++x) out[x] = sat(2 * diff(p[x], p[x + 1]));
      out[w - 1] = 0;
      continue;
    }
    const Byte* q = reinterpret_cast<const Byte*>(s.Row(y + 1));
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

using mirel::filter::Preset;
using mirel::filter::RunPreset;

void ImgConvolSobelX(EROI<EBW8>* s, EROI<EBW8>* d) { RunPreset(Preset::kSobelX, s, d, {"ImgConvolSobelX (BW8)"}); }
void ImgConvolSobelY(EROI<EBW8>* s, EROI<EBW8>* d) { RunPreset(Preset::kSobelY, s, d, {"ImgConvolSobelY (BW8)"}); }
void ImgConvolSobel(EROI<EBW8>* s, EROI<EBW8>* d) { RunPreset(Preset::kSobel, s, d, {"ImgConvolSobel (BW8)"}); }
void ImgConvolPrewittX(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kPrewittX, s, d, {"ImgConvolPrewittX (BW8)"});
}
void ImgConvolPrewittY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kPrewittY, s, d, {"ImgConvolPrewittY (BW8)"});
}
void ImgConvolPrewitt(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kPrewitt, s, d, {"ImgConvolPrewitt (BW8)"});
}
void ImgConvolGradientX(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGradientX, s, d, {"ImgConvolGradientX (BW8)"});
}
void ImgConvolGradientY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGradientY, s, d, {"ConvolGradientY (BW8)", "ChrConvolGradientY", "ChrMMXConvolGradientY"});
}
void ImgConvolGradient(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGradient, s, d, {"ImgConvolGradient (BW8)"});
}
void ImgConvolLaplacianX(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLaplacianX, s, d, {"ImgConvolLaplacianX (BW8)"});
}
void ImgConvolLaplacianY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLaplacianY, s, d,
            {"ImgConvolLaplacianY (BW8)", "ChrConvolLaplacianY", "ChrMMXConvolLaplacianY"});
}
void ImgConvolLaplacian4(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLaplacian4, s, d, {"ImgConvolLaplacian4 (BW8)"});
}
void ImgConvolLaplacian8(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLaplacian8, s, d, {"ImgConvolLaplacian8 (BW8)"});
}
void ImgConvolHighpass1(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kHighpass1, s, d, {"ImgConvolHighpass1 (BW8)"});
}
void ImgConvolHighpass2(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kHighpass2, s, d, {"ImgConvolHighpass2 (BW8)"});
}
void ImgConvolLowpass1(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLowpass1, s, d, {"ImgConvolLowpass1 (BW8)"});
}
void ImgConvolLowpass2(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLowpass2, s, d, {"ImgConvolLowpass2 (BW8)"});
}
void ImgConvolLowpass3(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLowpass3, s, d, {"ImgConvolLowpass3 (BW8)"});
}
void ImgConvolUniform3x3(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLowpass1, s, d, {"ImgConvolUniform3x3 (BW8)"});
}
void ImgConvolGaussian3x3(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kLowpass3, s, d, {"ImgConvolGaussian3x3 (BW8)"});
}
void ImgConvolGaussianX(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGaussianX, s, d, {"ImgConvolGaussianX (BW8)"});
}
void ImgConvolGaussianY(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kGaussianY, s, d,
            {"ImgConvolGaussianY (BW8)", "ChrConvolGaussianY", "ChrMMXConvolGaussianY"});
}
void ImgConvolUniformX(EROI<EBW8>* s, EROI<EBW8>* d) {
  RunPreset(Preset::kUniformX, s, d, {"ImgConvolUniformX (BW8)"});
}
void ConvolUniformY(EROI<EBW8>* s, EROI<EBW8>* d) { RunPreset(Preset::kUniformY, s, d, {"ConvolUniformY (BW8)"}); }

void ImgConvolRoberts(EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgConvolRoberts");
  if (dst == nullptr) {
    if (!frame.NotVoid(src)) return;
    EImage<EBW8> temp;
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
  const auto d = mirel::RowsOf(dst);
  mirel::filter::RobertsRows(mirel::RowsOf(static_cast<const EROI<EBW8>*>(src)), d, 0, d.height);
}
