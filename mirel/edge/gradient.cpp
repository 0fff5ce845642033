// Gradient images: the pair of differences of each pixel, and the lookup of
// a pair in a caller's table.
//
// A row of pairs is formed from three row pointers (above, current, below),
// the first and last rows replicating themselves; the first and last
// columns, whose neighbours leave the row, go pixel by pixel with clamped
// columns, the columns between go by blocks when a fast path runs. The
// scalar lookups read the pairs back from a short buffer on the stack, so
// the grey-source lookup shares the pair routine.
#include "mirel/edge/gradient.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "mirel/edge/gradient_internal.h"
#include "mirel/filter/convolution_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/runtime.h"
#include "mirel/foundation/float_math_internal.h"

namespace mirel {
namespace edge {

EdgeRowFns ActiveEdgeRows(bool fast) {
  if (!fast) return EdgeRowFns{nullptr, nullptr, nullptr, nullptr};
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return EdgeRowsAvx512();
  if (level >= cpu::kAVX2) return EdgeRowsAvx2();
  if (level >= cpu::kSSE2) return EdgeRowsSse2();
#endif
  return EdgeRowFns{nullptr, nullptr, nullptr, nullptr};
}

namespace {

inline std::uint32_t Pair(int dx, int dy) {
  return static_cast<std::uint32_t>(static_cast<std::uint16_t>(dx)) |
         (static_cast<std::uint32_t>(static_cast<std::uint16_t>(dy)) << 16);
}

// Pixel traits of the two grey depths: the block routine of the depth and
// the half side of its lookup table (the table is 2 * kHalf square).
template <class P>
struct Depth;
template <>
struct Depth<EBW8> {
  using Raw = std::uint8_t;
  static constexpr int kHalf = 256;
  static constexpr int kMax = 255;
  static PairRow8Fn Blocks(const EdgeRowFns& f) { return f.bw8; }
};
template <>
struct Depth<EBW16> {
  using Raw = std::uint16_t;
  static constexpr int kHalf = 65536;
  static constexpr int kMax = 65535;
  static PairRow16Fn Blocks(const EdgeRowFns& f) { return f.bw16; }
};

// Three rows of a grey ROI around row y, the first and last replicated.
template <class P>
struct Window {
  using Raw = typename Depth<P>::Raw;
  const Raw *t, *m, *b;
  Window(const Rows<const P>& s, int y)
      : t(reinterpret_cast<const Raw*>(s.Row(y > 0 ? y - 1 : 0))),
        m(reinterpret_cast<const Raw*>(s.Row(y))),
        b(reinterpret_cast<const Raw*>(s.Row(y + 1 < s.height ? y + 1 : s.height - 1))) {}
};

// The pairs of columns [x0, x1) of a row of width w; out[0] is column x0.
template <class P, class Fn>
void PairStretch(const Window<P>& r, int w, int x0, int x1, std::uint32_t* out, Fn blocks) {
  auto one = [&](int x) {
    const int l = x > 0 ? x - 1 : x, rt = x + 1 < w ? x + 1 : x;
    out[x - x0] = Pair(static_cast<int>(r.m[l]) - static_cast<int>(r.m[rt]),
                       static_cast<int>(r.t[x]) - static_cast<int>(r.b[x]));
  };
  const int lo = std::max(x0, 1), hi = std::min(x1, w - 1);
  int x = x0;
  for (; x < lo && x < x1; ++x) one(x);
  if (blocks != nullptr && lo < hi) x = x0 + blocks(r.t + x0, r.m + x0, r.b + x0, out, lo - x0, hi - x0);
  for (; x < x1; ++x) one(x);
}

// Rows [y0, y1) of the gradient pairs of s.
template <class P, class Fn>
void PairRows(const Rows<const P>& s, const Rows<EBW32>& d, int y0, int y1, Fn blocks) {
  for (int y = y0; y < y1; ++y)
    PairStretch<P>(Window<P>(s, y), s.width, 0, s.width, reinterpret_cast<std::uint32_t*>(d.Row(y)), blocks);
}

// A lookup table of side 2 * half. A pair's components index it from its
// centre; since the side divides 65536, the low 16 bits of a component plus
// half, modulo the side, are its column or row, so a component outside the
// table wraps around it and needs no sign extension.
template <class L>
struct Table {
  const unsigned char* origin;  // the table's first pixel
  std::ptrdiff_t pitch;
  int half;
  L At(std::uint32_t pair) const {
    const unsigned mask = 2u * static_cast<unsigned>(half) - 1u;
    const std::ptrdiff_t col = (pair + static_cast<unsigned>(half)) & mask;
    const std::ptrdiff_t row = ((pair >> 16) + static_cast<unsigned>(half)) & mask;
    return *reinterpret_cast<const L*>(origin + row * pitch + col * static_cast<std::ptrdiff_t>(sizeof(L)));
  }
  // The full differences of a 16-bit image do not fit a pair; they are
  // looked up directly.
  L At(int dx, int dy) const {
    return *reinterpret_cast<const L*>(origin + (dy + half) * pitch +
                                       (dx + half) * static_cast<std::ptrdiff_t>(sizeof(L)));
  }
};

template <class L>
Table<L> TableOf(const EROI<L>* lookup, int half) {
  return Table<L>{reinterpret_cast<const unsigned char*>(lookup->GetImagePtr(0, 0)), lookup->GetRowPitch(), half};
}

// The 512 rows of the 8-bit table by address, so that a lookup is two
// masked indexings.
struct ByteTable {
  const EBW8* rows[512];
  explicit ByteTable(const Table<EBW8>& t) {
    for (int y = 0; y < 512; ++y) rows[y] = reinterpret_cast<const EBW8*>(t.origin + y * t.pitch);
  }
  EBW8 At(std::uint32_t pair) const { return rows[((pair >> 16) + 256u) & 511u][(pair + 256u) & 511u]; }
};

constexpr int kChunk = 256;

// Rows [y0, y1) of the lookup of the pairs of an 8-bit image, formed on the
// fly a chunk at a time.
void GreyLookupRows(const Rows<const EBW8>& s, const Rows<EBW8>& d, const ByteTable& table, int y0, int y1,
                    PairRow8Fn blocks) {
  std::uint32_t pairs[kChunk];
  for (int y = y0; y < y1; ++y) {
    const Window<EBW8> r(s, y);
    EBW8* out = d.Row(y);
    for (int x0 = 0; x0 < s.width; x0 += kChunk) {
      const int x1 = std::min(s.width, x0 + kChunk);
      PairStretch<EBW8>(r, s.width, x0, x1, pairs, blocks);
      for (int x = x0; x < x1; ++x) out[x] = table.At(pairs[x - x0]);
    }
  }
}

// Rows [y0, y1) of the lookup of a 16-bit image's differences.
void GreyLookupRows16(const Rows<const EBW16>& s, const Rows<EBW16>& d, const Table<EBW16>& table, int y0,
                      int y1) {
  const int w = s.width;
  for (int y = y0; y < y1; ++y) {
    const Window<EBW16> r(s, y);
    EBW16* out = d.Row(y);
    for (int x = 0; x < w; ++x) {
      const int l = x > 0 ? x - 1 : x, rt = x + 1 < w ? x + 1 : x;
      out[x] = table.At(static_cast<int>(r.m[l]) - static_cast<int>(r.m[rt]),
                        static_cast<int>(r.t[x]) - static_cast<int>(r.b[x]));
    }
  }
}

// Rows [y0, y1) of the lookup of stored pairs.
template <class L, class T>
void PairLookupRows(const Rows<const EBW32>& s, const Rows<L>& d, const T& table, int y0, int y1) {
  for (int y = y0; y < y1; ++y) {
    const EBW32* in = s.Row(y);
    L* out = d.Row(y);
    for (int x = 0; x < s.width; ++x) out[x] = table.At(in[x].value);
  }
}

// Calls rows(y0, y1) over bands of dst's rows for a worker that reads a
// window of src rows and, when given, a lookup table: one band when dst
// shares pixels with either, since a band would then read another's output.
template <class F>
void WindowBands(const EGenericROI* src, const EGenericROI* dst, const EGenericROI* lookup, double unitsPerPixel,
                 F&& rows) {
  const bool apart = !Overlap(src, dst) && (lookup == nullptr || !Overlap(lookup, dst));
  RunBands(dst->GetHeight(), apart ? RowCost(dst->GetWidth(), unitsPerPixel) : kOneBand, rows);
}

template <class P>
void GradientVector(const char* label, const EROI<P>* src, EROI<EBW32>* dst, bool fast) {
  Frame frame(label);
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const auto blocks = Depth<P>::Blocks(ActiveEdgeRows(fast));
  const Rows<const P> s = RowsOf(src);
  const Rows<EBW32> d = RowsOf(dst);
  WindowBands(src, dst, nullptr, 3.0 * sizeof(P) + 4.0, [&](int y0, int y1) { PairRows<P>(s, d, y0, y1, blocks); });
}

// The pixelwise lookup of stored pairs in bands.
template <class L, class T>
void PairLookupBands(const EROI<EBW32>* src, EROI<L>* dst, const EROI<L>* lookup, const T& table) {
  const Rows<const EBW32> s = RowsOf(src);
  const Rows<L> d = RowsOf(dst);
  const bool apart = RowsIndependent(src, dst) && !Overlap(lookup, dst);
  RunBands(s.height, apart ? RowCost(s.width, 6.0) : kOneBand,
           [&](int y0, int y1) { PairLookupRows(s, d, table, y0, y1); });
}

// The checks of a lookup: the sources and dst are not void, dst has the
// size of src, the table is 2 * half square (1013).
template <class S, class L>
bool CheckLookup(Frame& frame, const EROI<S>* src, const EROI<L>* dst, const EROI<L>* lookup, int half) {
  return frame.NotVoid(src, dst) && frame.SameSize(src, dst) &&
         frame.Require(lookup != nullptr && lookup->GetWidth() == 2 * half && lookup->GetHeight() == 2 * half,
                       E_ERROR_BAD_ARGUMENT_1) &&
         frame.NotVoid(lookup);
}

// Fills a 2 * half square table from the function of (x, y), x and y from
// -half to half - 1.
template <class L, class F>
void FillTable(EImage<L>* lookup, int half, F&& value) {
  for (int y = -half; y < half; ++y) {
    L* row = lookup->GetImagePtr(0, y + half);
    for (int x = -half; x < half; ++x) row[x + half] = value(x, y);
  }
}

template <class L>
void ModulusImage(const char* label, EImage<L>* lookup, float scale, int side) {
  Frame frame(label);
  if (!frame.Require(lookup != nullptr, E_ERROR_VOID_IMAGE)) return;
  lookup->SetSize(side, side);
  if (!frame.Ok()) return;
  constexpr int kMax = Depth<L>::kMax;
  FillTable(lookup, Depth<L>::kHalf, [scale](int x, int y) {
    const double r2 = static_cast<double>(x) * x + static_cast<double>(y) * y;
    const std::int32_t v = filter::TruncToInt32(std::sqrt(r2) * scale + 0.5);
    return L(static_cast<typename Depth<L>::Raw>(v < 0 ? 0 : v > kMax ? kMax : v));
  });
}

}  // namespace

void GradientPairRow(const Rows<const EBW8>& s, int y, std::uint32_t* out, PairRow8Fn blocks) {
  PairStretch<EBW8>(Window<EBW8>(s, y), s.width, 0, s.width, out, blocks);
}

}  // namespace edge
}  // namespace mirel

using mirel::Frame;
using mirel::RowsOf;
namespace edge = mirel::edge;

void ImgGradientVector(const EROI<EBW8>* src, EROI<EBW32>* dst) {
  const int mmx = EGetMMX();
  edge::GradientVector("ImgGradientVector", src, dst, mmx != 0);
}

void ImgGradientVector(const EROI<EBW16>* src, EROI<EBW32>* dst) {
  edge::GradientVector("ImgGradientVector (BW16)", src, dst, true);
}

void ImgGradientScalar(const EROI<EBW8>* src, EROI<EBW8>* dst, const EROI<EBW8>* lookup) {
  const int mmx = EGetMMX();
  Frame frame("ImgGradientScalar");
  if (!edge::CheckLookup(frame, src, dst, lookup, 256)) return;
  const auto s = RowsOf(src);
  const auto d = RowsOf(dst);
  const edge::ByteTable table(edge::TableOf(lookup, 256));
  const auto blocks = edge::ActiveEdgeRows(mmx != 0).bw8;
  edge::WindowBands(src, dst, lookup, 6.0, [&](int y0, int y1) { edge::GreyLookupRows(s, d, table, y0, y1, blocks); });
}

void ImgGradientScalar(const EROI<EBW32>* src, EROI<EBW8>* dst, const EROI<EBW8>* lookup) {
  Frame frame("ImgGradientScalar");
  if (!edge::CheckLookup(frame, src, dst, lookup, 256)) return;
  const edge::ByteTable table(edge::TableOf(lookup, 256));
  edge::PairLookupBands(src, dst, lookup, table);
}

void ImgGradientScalar(const EROI<EBW16>* src, EROI<EBW16>* dst, const EROI<EBW16>* lookup) {
  Frame frame("ImgGradientScalar (BW16)");
  if (!edge::CheckLookup(frame, src, dst, lookup, 65536)) return;
  const auto s = RowsOf(src);
  const auto d = RowsOf(dst);
  const auto table = edge::TableOf(lookup, 65536);
  edge::WindowBands(src, dst, lookup, 8.0, [&](int y0, int y1) { edge::GreyLookupRows16(s, d, table, y0, y1); });
}

void ImgGradientScalar(const EROI<EBW32>* src, EROI<EBW16>* dst, const EROI<EBW16>* lookup) {
  Frame frame("ImgGradientScalar (BW16)");
  if (!edge::CheckLookup(frame, src, dst, lookup, 65536)) return;
  edge::PairLookupBands(src, dst, lookup, edge::TableOf(lookup, 65536));
}

void ImgModulusImage(EImage<EBW8>* lookup, float scale) {
  edge::ModulusImage("ImgModulusImage", lookup, scale, 512);
}

// One more than the side that ImgGradientScalar takes, as the older design
// made it.
void ImgModulusImage(EImage<EBW16>* lookup, float scale) {
  edge::ModulusImage("ImgModulusImage (BW16)", lookup, scale, 0x20001);
}

void ImgArgumentImage(EImage<EBW8>* lookup, EBW8 origin, float period) {
  Frame frame("ImgArgumentImage");
  if (!frame.Require(lookup != nullptr, E_ERROR_VOID_IMAGE)) return;
  lookup->SetSize(512, 512);
  if (!frame.Ok()) return;
  const float k = period != 0.0f ? 256.0f / EToRadians(period) : 40.743664f;
  const float base = static_cast<float>(origin.value) + 256.5f;
  edge::FillTable(lookup, 256, [k, base](int x, int y) {
    if (x == 0 && y == 0) return EBW8(0);
    const float a = mirel::Atan2(static_cast<float>(y), static_cast<float>(x));
    return EBW8(static_cast<unsigned char>(mirel::filter::TruncToInt32(a * k + base) & 255));
  });
}
