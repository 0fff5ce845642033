// ImgWarp through two signed maps or one packed map, and ImgSetCircleWarp.
#include "mirel/geometry/warp.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "mirel/filter/convolution_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/color_route_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/runtime.h"
#include "mirel/foundation/float_math_internal.h"

namespace {

// Two maps: a position outside the source, compared as unsigned so that a
// negative one is outside too, draws 0.
void WarpTwo(const EROI<EBW8>* src, EROI<EBW8>* dst, const EImage<EBW16>* warpX, const EImage<EBW16>* warpY,
             int shiftX, int shiftY) {
  const mirel::Rows<const EBW8> s = mirel::RowsOf(src);
  const mirel::Rows<EBW8> d = mirel::RowsOf(dst);
  const mirel::Rows<const EBW16> mx = mirel::RowsOf(static_cast<const EROI<EBW16>*>(warpX));
  const mirel::Rows<const EBW16> my = mirel::RowsOf(static_cast<const EROI<EBW16>*>(warpY));
  const std::uint32_t w = static_cast<std::uint32_t>(s.width), h = static_cast<std::uint32_t>(s.height);
  const std::uint32_t sx = static_cast<std::uint32_t>(shiftX), sy = static_cast<std::uint32_t>(shiftY);
  // Any source row may be read for any destination row: bands only when the
  // destination is apart from the source.
  const double cost = mirel::Overlap(src, dst) ? mirel::kOneBand : mirel::RowCost(d.width, 6.0);
  mirel::RunBands(d.height, cost, [&](int y0, int y1) {
    for (int v = y0; v < y1; ++v) {
      const EBW16* rx = mx.Row(v);
      const EBW16* ry = my.Row(v);
      EBW8* out = d.Row(v);
      for (int u = 0; u < d.width; ++u) {
        const std::uint32_t x = static_cast<std::uint32_t>(static_cast<std::int16_t>(rx[u].value)) + sx;
        const std::uint32_t y = static_cast<std::uint32_t>(static_cast<std::int16_t>(ry[u].value)) + sy;
        out[u] = (x >= w || y >= h) ? EBW8(0) : s.Row(static_cast<int>(y))[x];
      }
    }
  });
}

bool WarpTwoChecks(mirel::Frame& frame, const EGenericROI* src, const EGenericROI* dst, const EGenericROI* warpX,
                   const EGenericROI* warpY) {
  return frame.NotVoid(src, dst, warpX, warpY) && frame.SameSize(dst, warpX) && frame.SameSize(dst, warpY);
}

// The position of one map entry as a 16-bit value, truncated towards zero
// (wrapping, as a 32-bit conversion narrowed to 16 bits would).
EBW16 ToMap(float v) {
  return EBW16(static_cast<unsigned short>(static_cast<std::uint32_t>(mirel::filter::TruncToInt32(v))));
}

}  // namespace

short ImgWarp(const EROI<EBW8>* src, EROI<EBW8>* dst, const EImage<EBW16>* warpX, const EImage<EBW16>* warpY,
              int shiftX, int shiftY) {
  mirel::Frame frame("ImgWarp");
  if (WarpTwoChecks(frame, src, dst, warpX, warpY)) WarpTwo(src, dst, warpX, warpY, shiftX, shiftY);
  return frame.Result();
}

void ImgWarp(const EROI<EC24>* src, EROI<EC24>* dst, const EImage<EBW16>* warpX, const EImage<EBW16>* warpY,
             int shiftX, int shiftY) {
  mirel::Frame frame("ImgWarp ( C24)");
  if (!WarpTwoChecks(frame, src, dst, warpX, warpY)) return;
  mirel::ByComponent(src, dst, [&](const EROI<EBW8>* in, EROI<EBW8>* out) {
    WarpTwo(in, out, warpX, warpY, shiftX, shiftY);
  });
}

short ImgWarp(const EROI<EBW8>* src, EROI<EBW8>* dst, const EImage<EBW32>* warp) {
  mirel::Frame frame("ImgWarp");
  if (!frame.SameSize(src, dst) || !frame.Require(warp != nullptr, E_ERROR_VOID_IMAGE) ||
      !frame.Require(warp->GetWidth() >= dst->GetWidth() && warp->GetHeight() >= dst->GetHeight(),
                     E_ERROR_WARP_MAP) ||
      !frame.NotVoid(src, dst, warp))
    return frame.Result();
  const mirel::Rows<const EBW8> s = mirel::RowsOf(src);
  const mirel::Rows<EBW8> d = mirel::RowsOf(dst);
  const mirel::Rows<const EBW32> m = mirel::RowsOf(static_cast<const EROI<EBW32>*>(warp));
  // Byte offset of each source row, saving a multiplication per pixel.
  std::unique_ptr<std::ptrdiff_t[]> table(new (std::nothrow) std::ptrdiff_t[static_cast<std::size_t>(s.height) + 1]);
  if (table == nullptr) {
    frame.Fail(E_ERROR_WORK_BUFFER);
    return frame.Result();
  }
  for (int y = 0; y < s.height; ++y) table[static_cast<std::size_t>(y)] = s.pitch * y;
  const unsigned char* base = reinterpret_cast<const unsigned char*>(s.base);
  auto inside = [&](const EBW32& entry, std::uint16_t (&xy)[2]) {
    std::memcpy(xy, &entry, sizeof xy);
    return xy[0] < s.width && xy[1] < s.height;
  };
  // Columns [0, n) of destination row v, up to the first entry outside the
  // source; returns the column it stopped at.
  auto drawRow = [&](int v, int n) {
    const EBW32* row = m.Row(v);
    EBW8* out = d.Row(v);
    std::uint16_t xy[2];
    for (int u = 0; u < n; ++u) {
      if (!inside(row[u], xy)) return u;
      out[u] = EBW8(base[table[xy[1]] + xy[0]]);
    }
    return n;
  };
  const mirel::Bands bands(d.height, mirel::Overlap(src, dst) ? mirel::kOneBand : mirel::RowCost(d.width, 6.0));
  // The pixels before the first entry outside the source (in row order) are
  // written, none after. On one band the walk simply stops there; bands
  // first find that entry, each in its own rows, then draw what comes
  // before it.
  int stopRow = d.height, stopCol = 0;
  if (bands.Count() == 1) {
    for (int v = 0; v < d.height && stopRow == d.height; ++v) {
      const int u = drawRow(v, d.width);
      if (u < d.width) stopRow = v, stopCol = u;
    }
  } else {
    std::vector<int> firstRow(static_cast<std::size_t>(bands.Count())), firstCol(firstRow.size());
    bands.Run([&](int band, int y0, int y1) {
      int v = y0, u = d.width;
      std::uint16_t xy[2];
      for (; v < y1; ++v) {
        const EBW32* row = m.Row(v);
        for (u = 0; u < d.width && inside(row[u], xy); ++u) {
        }
        if (u < d.width) break;
      }
      firstRow[static_cast<std::size_t>(band)] = v < y1 ? v : d.height;
      firstCol[static_cast<std::size_t>(band)] = v < y1 ? u : 0;
    });
    for (std::size_t b = 0; b < firstRow.size() && stopRow == d.height; ++b)
      stopRow = firstRow[b], stopCol = firstCol[b];
    bands.Run([&](int, int y0, int y1) {
      for (int v = y0; v < y1 && v <= stopRow; ++v) drawRow(v, v < stopRow ? d.width : stopCol);
    });
  }
  if (stopRow < d.height) frame.Fail(E_ERROR_WARP_OUTSIDE);
  return frame.Result();
}

void ImgSetCircleWarp(float centreX, float centreY, int height, float lastRowRadius, float firstRowRadius, int width,
                      float firstAngle, float lastAngle, EImage<EBW16>* warpX, EImage<EBW16>* warpY) {
  mirel::Frame frame("ImgSetCircleWarp");
  if (!frame.Require(warpX != nullptr && warpY != nullptr, E_ERROR_VOID_IMAGE) ||
      !frame.Require(width >= 2 && height >= 2, E_ERROR_BAD_ARGUMENT))
    return;
  const float first = EToRadians(firstAngle), last = EToRadians(lastAngle);
  warpX->SetSize(width, height);
  if (EGetError() != E_OK) return;
  warpY->SetSize(width, height);
  if (EGetError() != E_OK) return;
  const float step = 1.0f / static_cast<float>(height - 1);
  for (int i = 0; i < width; ++i) {
    const float t = (static_cast<float>(width - 1 - i) * first + static_cast<float>(i) * last) /
                    static_cast<float>(width - 1);
    const float c = mirel::Cos(t), s = mirel::Sin(t);
    const float firstRowX = c * firstRowRadius + centreX, lastRowX = c * lastRowRadius + centreX;
    const float firstRowY = s * firstRowRadius + centreY, lastRowY = s * lastRowRadius + centreY;
    float a = 0.0f, b = 1.0f;
    for (int j = 0; j < height; ++j, a += step, b -= step) {
      warpX->SetPixel(ToMap(firstRowX * b + lastRowX * a), i, j);
      warpY->SetPixel(ToMap(firstRowY * b + lastRowY * a), i, j);
    }
  }
}
