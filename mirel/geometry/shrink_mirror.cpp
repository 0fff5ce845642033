// Shrink by block averages and the in-place mirrors.
#include "mirel/geometry/shrink_mirror.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/color_route_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/geometry/shrink_mirror_internal.h"

namespace {

// First source index of each of the n blocks of a side of `size` pixels,
// plus the end: bound[k] = k size / n.
std::vector<int> Bounds(int size, int n) {
  std::vector<int> bound(static_cast<std::size_t>(n) + 1);
  for (int k = 0; k <= n; ++k)
    bound[static_cast<std::size_t>(k)] = static_cast<int>(static_cast<std::int64_t>(k) * size / n);
  return bound;
}

// Destination rows [y0, y1): the block's rows are summed column by column
// into `acc` (one per source column), then each block of columns is summed
// and divided.
template <class P, class Acc>
void ShrinkRows(const mirel::Rows<const P>& s, const mirel::Rows<P>& d, const std::vector<int>& cols,
                const std::vector<int>& rows, std::vector<Acc>& acc, int y0, int y1) {
  // The width and the sums' storage are held in locals: read through the
  // row view inside the loop, the compiler must assume that a sum's store
  // changes them, and leaves the loop scalar.
  const int w = s.width;
  Acc* const sums = acc.data();
  for (int j = y0; j < y1; ++j) {
    const int r0 = rows[static_cast<std::size_t>(j)], r1 = rows[static_cast<std::size_t>(j) + 1];
    std::fill(acc.begin(), acc.end(), Acc{0});
    for (int r = r0; r < r1; ++r) {
      const P* in = s.Row(r);
      for (int x = 0; x < w; ++x) sums[x] += in[x];
    }
    P* out = d.Row(j);
    const std::uint64_t blockRows = static_cast<std::uint64_t>(r1 - r0);
    for (int i = 0; i < d.width; ++i) {
      const int c0 = cols[static_cast<std::size_t>(i)], c1 = cols[static_cast<std::size_t>(i) + 1];
      std::uint64_t sum = 0;
      for (int x = c0; x < c1; ++x) sum += sums[x];
      out[i] = static_cast<P>(sum / (blockRows * static_cast<std::uint64_t>(c1 - c0)));
    }
  }
}

template <class P, class T>
void Shrink(const EROI<T>* src, EROI<T>* dst) {
  const mirel::Rows<const P> s{static_cast<const P*>(src->GetGenericImagePtr(0, 0)), src->GetRowPitch(),
                               src->GetWidth(), src->GetHeight()};
  const mirel::Rows<P> d{static_cast<P*>(dst->GetGenericImagePtr(0, 0)), dst->GetRowPitch(), dst->GetWidth(),
                         dst->GetHeight()};
  if (d.width == 0 || d.height == 0) return;
  try {
    const std::vector<int> cols = Bounds(s.width, d.width), rows = Bounds(s.height, d.height);
    // Bands of destination rows, each with column sums of its own, allocated
    // before any band writes; a destination on the source's image stays in
    // one band, as it may overwrite rows that a later block reads.
    const double rowsPerBlock = static_cast<double>(s.height) / d.height;
    const mirel::Bands bands(d.height, mirel::Overlap(src, dst) ? mirel::kOneBand
                                                                 : mirel::RowCost(s.width, sizeof(P) * rowsPerBlock));
    auto run = [&](auto zero) {
      using Acc = decltype(zero);
      std::vector<std::vector<Acc>> acc(static_cast<std::size_t>(bands.Count()),
                                        std::vector<Acc>(static_cast<std::size_t>(s.width)));
      bands.Run([&](int band, int y0, int y1) {
        ShrinkRows<P, Acc>(s, d, cols, rows, acc[static_cast<std::size_t>(band)], y0, y1);
      });
    };
    // 32-bit column sums hold any block of up to 2^32 / 65536 rows.
    const int maxRows = (s.height + d.height - 1) / d.height + 1;
    if (maxRows <= 65536) run(std::uint32_t{0});
    else run(std::uint64_t{0});
  } catch (const std::bad_alloc&) {
    ESetError(E_ERROR_OUT_OF_MEMORY);  // the tables come before any pixel is written
  }
}

template <class T>
bool ShrinkChecks(mirel::Frame& frame, const EROI<T>* src, EROI<T>* dst) {
  return frame.NotVoid(src, dst) &&
         frame.Require(dst->GetWidth() <= src->GetWidth() && dst->GetHeight() <= src->GetHeight(),
                       E_ERROR_SIZE_MISMATCH);
}

template <class T>
void HorizontalMirror(const char* label, EROI<T>* image) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(image)) return;
  const mirel::geometry::MirrorRowFn fast =
      sizeof(T) == 1 ? mirel::geometry::ActiveMirrorRow() : nullptr;
  const mirel::Rows<T> rows = mirel::RowsOf(image);
  for (int y = 0; y < rows.height; ++y) {
    T* row = rows.Row(y);
    if (fast != nullptr) fast(reinterpret_cast<std::uint8_t*>(row), rows.width);
    else std::reverse(row, row + rows.width);
  }
}

template <class T>
void VerticalMirror(const char* label, EROI<T>* image) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(image)) return;
  const int h = image->GetHeight();
  const std::size_t bytes = static_cast<std::size_t>(image->GetWidth()) * static_cast<std::size_t>(image->GetPixelBytes());
  // Rows are swapped sixteen bytes at a time through two small buffers,
  // which the compiler keeps in vector registers at any optimisation level;
  // a byte-wise swap is vectorised only at the highest levels (at -O2 it ran
  // twelve times slower).
  for (int top = 0, bottom = h - 1; top < bottom; ++top, --bottom) {
    auto* a = static_cast<unsigned char*>(image->GetGenericImagePtr(0, top));
    auto* b = static_cast<unsigned char*>(image->GetGenericImagePtr(0, bottom));
    std::size_t at = 0;
    for (; at + 16 <= bytes; at += 16) {
      unsigned char x[16], y[16];
      std::memcpy(x, a + at, 16);
      std::memcpy(y, b + at, 16);
      std::memcpy(a + at, y, 16);
      std::memcpy(b + at, x, 16);
    }
    std::swap_ranges(a + at, a + bytes, b + at);
  }
}

}  // namespace

namespace mirel {
namespace geometry {

MirrorRowFn ActiveMirrorRow() {
  if (EGetMMX() == 0) return nullptr;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512MirrorRow();
  if (level >= cpu::kAVX2) return Avx2MirrorRow();
  if (level >= cpu::kSSE2) return Sse2MirrorRow();
#endif
  return nullptr;
}

}  // namespace geometry
}  // namespace mirel

short ImgShrink(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgShrink");
  if (ShrinkChecks(frame, src, dst)) Shrink<std::uint8_t>(src, dst);
  return frame.Result();
}

void ImgShrink(const EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgShrink (BW16)");
  if (ShrinkChecks(frame, src, dst)) Shrink<std::uint16_t>(src, dst);
}

void ImgShrink(const EROI<EC24>* src, EROI<EC24>* dst) {
  mirel::Frame frame("ImgShrink ( C24)");
  if (!ShrinkChecks(frame, src, dst)) return;
  mirel::ByComponent(src, dst, [](const EROI<EBW8>* in, EROI<EBW8>* out) { Shrink<std::uint8_t>(in, out); });
}

void ImgHorizontalMirror(EROI<EBW8>* image) { HorizontalMirror("ImgHorizontalMirror ( gray-level)", image); }
void ImgHorizontalMirror(EROI<EBW16>* image) { HorizontalMirror("ImgHorizontalMirror ( BW16)", image); }
void ImgHorizontalMirror(EROI<EC24>* image) { HorizontalMirror("ImgHorizontalMirror ( gray-level)", image); }
void ImgVerticalMirror(EROI<EBW8>* image) { VerticalMirror("ImgVerticalMirror ( gray-level)", image); }
void ImgVerticalMirror(EROI<EBW16>* image) { VerticalMirror("ImgVerticalMirror ( BW16)", image); }
void ImgVerticalMirror(EROI<EC24>* image) { VerticalMirror("ImgVerticalMirror ( color)", image); }
