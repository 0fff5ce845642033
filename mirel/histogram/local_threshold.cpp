// Adaptive thresholds from a grid of local histograms, and the local mean
// threshold by running sums.
//
// The local mean threshold keeps, for the current row, the sum of each
// column over the square's rows; moving the square one row down adds the
// row that enters and subtracts the one that leaves. Along a row the square
// sums are differences of prefix sums of the column sums. All sums are
// 32-bit unsigned and wrap, which gives the square's sum exactly whenever it
// fits 32 bits and its wrapped value otherwise, as a running sum would.
#include "mirel/histogram/local_threshold.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/filter/smoothing_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/geometry/affine.h"
#include "mirel/histogram/histogram.h"
#include "mirel/histogram/local_threshold_internal.h"

namespace {

using mirel::Rows;
using U8 = std::uint8_t;
using U32 = std::uint32_t;

// The block routines of one call: the column slide and prefix sums of the
// sliding filters, and the threshold decision.
struct Kernels {
  mirel::filter::BoxRoutines box{};
  mirel::histogram::DecideFn decide = nullptr;
};

Kernels ActiveKernels(int mmx) {
  Kernels k;
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    const int level = mirel::cpu::ActiveSimdLevel();
    if (level >= mirel::cpu::kAVX2) {
      k.box = mirel::filter::BoxAvx2();
      k.decide = mirel::histogram::DecideAvx2;
    } else if (level >= mirel::cpu::kSSE2) {
      k.box = mirel::filter::BoxSse2();
      k.decide = mirel::histogram::DecideSse2;
    }
  }
#else
  (void)mmx;
#endif
  return k;
}

// Rows [y0, y1) of the local mean threshold with half size r (already
// clipped to the ROI), with 2 * width + 1 work sums of the band's own. The
// column sums start from the source rows around y0, so any band can be
// computed alone.
void LocalMeanRows(const Rows<const EBW8>& s, const Rows<EBW8>& d, int r, U32 bias, const Kernels& k, U32* work,
                   int y0, int y1) {
  const int w = s.width, h = s.height, side = 2 * r + 1;
  const U32 area = static_cast<U32>(side) * static_cast<U32>(side);
  U32* cols = work;
  U32* prefix = cols + w;
  auto row = [&s](int y) { return reinterpret_cast<const U8*>(s.Row(y)); };
  // The square of row y is centred on row centre(y): it stops r rows from
  // the top and bottom.
  auto centre = [r, h](int y) { return y < r ? r : (y > h - 1 - r ? h - 1 - r : y); };
  int cy = centre(y0);
  std::memset(cols, 0, sizeof(U32) * static_cast<std::size_t>(w));
  for (int j = cy - r; j <= cy + r; ++j) {
    const U8* p = row(j);
    for (int x = 0; x < w; ++x) cols[x] += p[x];
  }
  for (int y = y0; y < y1; ++y) {
    if (centre(y) != cy) {
      ++cy;
      const U8* in = row(cy + r);
      const U8* out = row(cy - r - 1);
      int x = k.box.slide != nullptr ? k.box.slide(cols, in, out, w) : 0;
      for (; x < w; ++x) cols[x] += static_cast<U32>(in[x]) - static_cast<U32>(out[x]);
    }
    prefix[0] = 0;
    int x = k.box.prefix != nullptr ? k.box.prefix(cols, w, prefix) : 0;
    for (U32 sum = prefix[x]; x < w; ++x) prefix[x + 1] = sum += cols[x];

    const U8* p = row(y);
    U8* o = reinterpret_cast<U8*>(d.Row(y));
    // Columns whose square is centred on them: [r, w - r); the first and
    // last r columns keep the square of column r and of column w - 1 - r.
    const U32 first = prefix[side] - prefix[0], last = prefix[w] - prefix[w - side];
    for (x = 0; x < r; ++x) o[x] = mirel::histogram::LocalMeanPixel(p[x], first, area, bias);
    const int n = w - 2 * r;
    int i = k.decide != nullptr ? k.decide(prefix, prefix + side, p + r, area, bias, o + r, n) : 0;
    for (; i < n; ++i) o[r + i] = mirel::histogram::LocalMeanPixel(p[r + i], prefix[i + side] - prefix[i], area, bias);
    for (x = w - r; x < w; ++x) o[x] = mirel::histogram::LocalMeanPixel(p[x], last, area, bias);
  }
}

// Grid rows [y0, y1) of the adaptive threshold: each node's level from the
// histogram of the block around it. Stops at the first failure, its code set.
void GridRows(const EROI<EBW8>* src, EImage<EBW8>& grid, EBWHistogramVector& histogram, IMG_THRESHOLD_MODES mode,
              int blockWidth, int blockHeight, int nx, int ny, int y0, int y1) {
  const int w = src->GetWidth(), h = src->GetHeight();
  EROI<EBW8> window;
  window.Attach(src);
  for (int iy = y0; iy < y1; ++iy) {
    const int cy = static_cast<int>((static_cast<long long>(iy) * h) / ny);
    const int top = cy - blockHeight / 2 > 0 ? cy - blockHeight / 2 : 0;
    const int bottom = cy + blockHeight / 2 < h ? cy + blockHeight / 2 : h;
    for (int ix = 0; ix <= nx; ++ix) {
      const int cx = static_cast<int>((static_cast<long long>(ix) * w) / nx);
      const int left = cx - blockWidth / 2 > 0 ? cx - blockWidth / 2 : 0;
      const int right = cx + blockWidth / 2 < w ? cx + blockWidth / 2 : w;
      window.SetPlacement(left, top, right - left, bottom - top);
      ImgHistogram(&window, &histogram);
      if (EGetError() != E_OK) return;
      unsigned int threshold = mode;
      float below = 0.0f, above = 0.0f;
      ImgHistogramThreshold(&histogram, threshold, below, above, 0.5f, 0, 255);
      if (EGetError() != E_OK) return;
      const EBW8 level = ImgIsodataThreshold(&histogram, 0, 255);
      if (EGetError() != E_OK) return;
      grid.SetPixel(level, ix, iy);
    }
  }
}

}  // namespace

void Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, int halfSize,
                                                           int offset) {
  const int mmx = EGetMMX();
  if (src == nullptr || dst == nullptr || src->Void() || dst->Void()) {
    ESetError(E_ERROR_VOID_IMAGE);
    return;
  }
  if (src->GetWidth() != dst->GetWidth() || src->GetHeight() != dst->GetHeight()) {
    ESetError(E_ERROR_SIZE_MISMATCH);
    return;
  }
  if (halfSize < 0) {
    ESetError(E_ERROR_BAD_ARGUMENT);
    return;
  }
  const int w = src->GetWidth(), h = src->GetHeight();
  if (w == 0 || h == 0) return;
  const int reach = ((w < h ? w : h) - 1) / 2;
  const int r = halfSize < reach ? halfSize : reach;
  const U32 side = static_cast<U32>(2 * r + 1);
  const U32 bias = side * side * static_cast<U32>(offset);
  // In place, one call reads rows that it has already written (the row
  // that leaves the square): such a call stays in one band.
  const mirel::Bands bands(h, mirel::Overlap(src, dst) ? mirel::kOneBand : mirel::RowCost(w, 12.0));
  const std::size_t perBand = 2 * static_cast<std::size_t>(w) + 1;
  std::unique_ptr<U32[]> work(new (std::nothrow) U32[perBand * static_cast<std::size_t>(bands.Count())]);
  if (work == nullptr) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return;
  }
  const Rows<const EBW8> s = mirel::RowsOf(src);
  const Rows<EBW8> d = mirel::RowsOf(dst);
  const Kernels k = ActiveKernels(mmx);
  bands.Run([&](int band, int y0, int y1) {
    LocalMeanRows(s, d, r, bias, k, work.get() + perBand * static_cast<std::size_t>(band), y0, y1);
  });
}

void ImgAutoAdaptiveThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, IMG_THRESHOLD_MODES mode, int blockWidth,
                              int blockHeight) {
  mirel::Frame frame("ImgAutoAdaptiveThreshold");
  if (blockHeight == 0) blockHeight = blockWidth;
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(blockWidth >= 1 && blockHeight >= 1, E_ERROR_BAD_ARGUMENT))
    return;
  const int w = src->GetWidth(), h = src->GetHeight();
  if (w == 0 || h == 0) return;
  const int nx = static_cast<int>(std::ceil(static_cast<float>(w) / static_cast<float>(blockWidth)));
  const int ny = static_cast<int>(std::ceil(static_cast<float>(h) / static_cast<float>(blockHeight)));

  EImage<EBW8> grid;
  grid.SetSize(nx + 1, ny + 1);
  if (!frame.Ok()) return;
  // Rows of the grid in bands, each band with a histogram and a window of
  // its own; a band stops at its first failure, and the first failing band
  // in row order is the one reported, as one call stops at its first.
  const int blockRows = blockHeight < h ? blockHeight : h;
  const mirel::Bands bands(ny + 1, mirel::RowCost(w, 2.0) * blockRows);
  std::unique_ptr<EBWHistogramVector[]> histograms(new (std::nothrow) EBWHistogramVector[bands.Count()]);
  if (!frame.Require(histograms != nullptr, E_ERROR_OUT_OF_MEMORY)) return;
  for (int b = 0; b < bands.Count(); ++b) {
    histograms[b].SetMaxElements(256, 1);
    if (!frame.Ok()) return;
  }
  bands.Run([&](int band, int y0, int y1) {
    GridRows(src, grid, histograms[band], mode, blockWidth, blockHeight, nx, ny, y0, y1);
  });
  if (!frame.Ok()) return;
  ImgScaleRotate(&grid, 0.0f, 0.0f, 0.0f, 0.0f, static_cast<float>(w) / static_cast<float>(nx),
                 static_cast<float>(h) / static_cast<float>(ny), 0.0f, dst, 8);
}
