// The fixed 5x5 and 7x7 uniform and Gaussian filters, on 8-bit and 16-bit
// pixels.
//
// Two forms give the same bytes. The direct form computes each pixel from
// its whole window in row order, reading the source as it is at that moment
// (which is what a source shared with the destination sees). The separable
// form, used on the fast path when source and destination do not share
// pixels, sums each source row once horizontally into row buffers (16-bit
// sums of 8-bit pixels, 32-bit sums of 16-bit ones) and then combines 2r + 1
// of them vertically; integer sums regroup exactly.
#include "mirel/filter/fixed_filters.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "mirel/filter/alloc_internal.h"
#include "mirel/filter/convolution_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"

namespace mirel {
namespace filter {
namespace {

struct FilterShape {
  FixedFilter kind;
  int radius;
  int weight[7];  // one-dimensional weights; the window weight is their product
};

const FilterShape& Shape(FixedFilter kind) {
  static const FilterShape kShapes[4] = {
      {FixedFilter::kUniform5, 2, {1, 1, 1, 1, 1, 0, 0}},
      {FixedFilter::kGaussian5, 2, {1, 4, 6, 4, 1, 0, 0}},
      {FixedFilter::kUniform7, 3, {1, 1, 1, 1, 1, 1, 1}},
      {FixedFilter::kGaussian7, 3, {1, 6, 15, 20, 15, 6, 1}},
  };
  return kShapes[static_cast<int>(kind)];
}

// The window sum to the output pixel. The uniform products wrap at 32 bits,
// which sums of 16-bit pixels reach (those of 8-bit pixels never do).
inline std::uint32_t Scale(FixedFilter kind, std::uint32_t sum) {
  switch (kind) {
    case FixedFilter::kUniform5: return (sum * 335544u) >> 23;
    case FixedFilter::kUniform7: return (sum * 171196u) >> 23;
    case FixedFilter::kGaussian5: return sum >> 8;
    case FixedFilter::kGaussian7: return sum >> 12;
  }
  return 0;
}

// The horizontal sums of a row: 16 bits hold those of 8-bit pixels.
template <class P>
using RowSum = std::conditional_t<sizeof(P) == 1, std::uint16_t, std::uint32_t>;

template <bool kClamp, class P>
inline P DirectPixel(const FilterShape& f, const P* const* rows, int x, int width) {
  const int r = f.radius;
  std::uint32_t sum = 0;
  for (int j = 0; j <= 2 * r; ++j) {
    std::uint32_t h = 0;
    for (int i = 0; i <= 2 * r; ++i) {
      const int xx = kClamp ? Clamp(x + i - r, 0, width - 1) : x + i - r;
      h += static_cast<std::uint32_t>(f.weight[i]) * rows[j][xx];
    }
    sum += static_cast<std::uint32_t>(f.weight[j]) * h;
  }
  return static_cast<P>(Scale(f.kind, sum));
}

// Rows [y0, y1).
template <class Pix>
void Direct(const FilterShape& f, const Rows<const Pix>& s, const Rows<Pix>& d, int y0, int y1) {
  using P = typename GreyOf<Pix>::P;
  const int r = f.radius, width = s.width;
  const P* rows[7];
  for (int y = y0; y < y1; ++y) {
    WindowRows(s, y, r, rows);
    P* out = reinterpret_cast<P*>(d.Row(y));
    ForEachColumnByBorder(width, r, [&](int x, auto clamp) {
      out[x] = DirectPixel<decltype(clamp)::value>(f, rows, x, width);
    });
  }
}

// The horizontal sums of one source row into h, through `padded`
// (width + 2r pixels): the row with its end pixels repeated r times at each
// side.
template <class P>
void HorizontalRow(const FilterShape& f, const P* src, int width, P* padded, RowSum<P>* h,
                   const SimdRoutines& simd) {
  const int r = f.radius, n = 2 * r + 1;
  std::memcpy(padded + r, src, static_cast<std::size_t>(width) * sizeof(P));
  for (int i = 0; i < r; ++i) {
    padded[i] = src[0];
    padded[r + width + i] = src[width - 1];
  }
  int x = HorizontalOf(simd, src)(f.kind, padded, width, h);
  for (; x < width; ++x) {
    std::uint32_t sum = 0;
    for (int i = 0; i < n; ++i) sum += static_cast<std::uint32_t>(f.weight[i]) * padded[x + i];
    h[x] = static_cast<RowSum<P>>(sum);
  }
}

// Separable form of rows [y0, y1); false when its buffers cannot be had
// (the caller then takes the direct form, which needs none).
template <class Pix>
bool Separable(const FilterShape& f, const Rows<const Pix>& s, const Rows<Pix>& d, const SimdRoutines& simd,
               int y0, int y1) {
  using P = typename GreyOf<Pix>::P;
  using H = RowSum<P>;
  const int r = f.radius, n = 2 * r + 1, width = s.width, height = s.height;
  const std::size_t w = static_cast<std::size_t>(width);
  P* padded = Allocate<P>(w + 2 * r);
  H* ring = Allocate<H>(w * n);
  if (padded == nullptr || ring == nullptr) {
    Free(padded);
    Free(ring);
    return false;
  }
  int computed = (y0 - r > 0 ? y0 - r : 0) - 1;  // last source row summed into the ring
  const H* rows[7];
  for (int y = y0; y < y1; ++y) {
    const int need = y + r < height - 1 ? y + r : height - 1;
    while (computed < need) {
      ++computed;
      HorizontalRow(f, reinterpret_cast<const P*>(s.Row(computed)), width, padded,
                    ring + w * static_cast<std::size_t>(computed % n), simd);
    }
    for (int j = 0; j < n; ++j)
      rows[j] = ring + w * static_cast<std::size_t>(Clamp(y + j - r, 0, height - 1) % n);
    P* out = reinterpret_cast<P*>(d.Row(y));
    int x = VerticalOf(simd, out)(f.kind, rows, width, out);
    for (; x < width; ++x) {
      std::uint32_t sum = 0;
      for (int j = 0; j < n; ++j) sum += static_cast<std::uint32_t>(f.weight[j]) * rows[j][x];
      out[x] = static_cast<P>(Scale(f.kind, sum));
    }
  }
  Free(padded);
  Free(ring);
  return true;
}

// In place on one ROI. A pixel of row y reads final rows above, its own row
// as it is being written and original rows below. Rows other than its own
// are combined from their horizontal sums (those of the rows above taken
// again once they are final); only the row's own part goes pixel by pixel.
// The first and last rows, where taps clamp onto the row itself, go pixel by
// pixel entirely. False when the buffers are not to be had.
template <class Pix>
bool InPlace(const FilterShape& f, const Rows<Pix>& img, const SimdRoutines& simd) {
  using P = typename GreyOf<Pix>::P;
  using H = RowSum<P>;
  const int r = f.radius, n = 2 * r + 1, width = img.width, height = img.height;
  const std::size_t w = static_cast<std::size_t>(width);
  P* padded = Allocate<P>(w + 2 * r);
  H* ring = Allocate<H>(w * n);
  std::uint32_t* partial = Allocate<std::uint32_t>(w);
  if (padded == nullptr || ring == nullptr || partial == nullptr) {
    Free(padded);
    Free(ring);
    Free(partial);
    return false;
  }
  auto slot = [&](int row) { return ring + w * static_cast<std::size_t>(row % n); };
  auto horizontal = [&](int row) {
    HorizontalRow(f, reinterpret_cast<const P*>(img.Row(row)), width, padded, slot(row), simd);
  };
  const Rows<const Pix> view{img.base, img.pitch, img.width, img.height};
  const P* rows[7];
  int computed = -1;
  for (int y = 0; y < height; ++y) {
    const int need = y + r < height - 1 ? y + r : height - 1;
    while (computed < need) horizontal(++computed);  // rows not yet written
    P* out = reinterpret_cast<P*>(img.Row(y));
    if (y == 0 || y == height - 1) {
      WindowRows(view, y, r, rows);
      ForEachColumnByBorder(width, r, [&](int x, auto clamp) {
        out[x] = DirectPixel<decltype(clamp)::value>(f, rows, x, width);
      });
    } else {
      std::memset(partial, 0, w * sizeof(std::uint32_t));
      for (int j = 0; j < n; ++j) {
        if (j == r) continue;
        const H* h = slot(Clamp(y + j - r, 0, height - 1));
        const std::uint32_t wj = static_cast<std::uint32_t>(f.weight[j]);
        for (int x = 0; x < width; ++x) partial[x] += wj * h[x];
      }
      const std::uint32_t wc = static_cast<std::uint32_t>(f.weight[r]);
      ForEachColumnByBorder(width, r, [&](int x, auto clamp) {
        std::uint32_t own = 0;
        for (int i = 0; i < n; ++i) {
          const int xx = decltype(clamp)::value ? Clamp(x + i - r, 0, width - 1) : x + i - r;
          own += static_cast<std::uint32_t>(f.weight[i]) * out[xx];
        }
        out[x] = static_cast<P>(Scale(f.kind, partial[x] + wc * own));
      });
    }
    horizontal(y);  // row y is final now
  }
  Free(padded);
  Free(ring);
  Free(partial);
  return true;
}

template <class Pix>
void RunFilter(FixedFilter kind, const EROI<Pix>* src, EROI<Pix>* dst, const char* label) {
  using P = typename GreyOf<Pix>::P;
  mirel::Frame frame(label);
  if (!frame.NotVoid(src) || !frame.SameSize(src, dst) || !frame.NotVoid(dst)) return;
  // A ROI without columns has no pixel to repeat at its sides: nothing to
  // read, nothing to write.
  if (src->GetWidth() == 0) return;
  const FilterShape& f = Shape(kind);
  const Rows<const Pix> s = RowsOf(static_cast<const EROI<Pix>*>(src));
  const Rows<Pix> d = RowsOf(dst);
  const SimdRoutines simd = ActiveRoutines();
  const bool separable = HorizontalOf(simd, static_cast<const P*>(nullptr)) != nullptr;
  if (!Overlap(src, dst)) {
    RunBands(s.height, RowCost(s.width, (2.0 + f.radius) * sizeof(P)), [&](int y0, int y1) {
      if (!separable || !Separable(f, s, d, simd, y0, y1)) Direct(f, s, d, y0, y1);
    });
    return;
  }
  if (separable && src->GetTotalOrgX() == dst->GetTotalOrgX() && src->GetTotalOrgY() == dst->GetTotalOrgY()) {
    if (InPlace(f, d, simd)) return;
  }
  Direct(f, s, d, 0, s.height);
}

}  // namespace
}  // namespace filter
}  // namespace mirel

void ImgConvolUniform5x5(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kUniform5, src, dst, "ConvolUniform5x5");
}
void ImgConvolGaussian5x5(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kGaussian5, src, dst, "ConvolGaussian5x5");
}
void ImgConvolUniform7x7(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kUniform7, src, dst, "ImgConvolUniform7x7");
}
void ImgConvolGaussian7x7(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kGaussian7, src, dst, "ImgConvolGaussian7x7");
}

void ImgConvolUniform5x5(const EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kUniform5, src, dst, "ConvolUniform5x5 (BW16)");
}
void ImgConvolGaussian5x5(const EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kGaussian5, src, dst, "ConvolGaussian5x5 (BW16)");
}
void ImgConvolUniform7x7(const EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kUniform7, src, dst, "ImgConvolUniform7x7 (BW16)");
}
void ImgConvolGaussian7x7(const EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::filter::RunFilter(mirel::filter::FixedFilter::kGaussian7, src, dst, "ImgConvolGaussian7x7 (BW16)");
}
