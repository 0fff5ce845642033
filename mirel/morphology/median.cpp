// 3x3 medians: sorted columns with repeated edges, and the older form with
// a border value that sorts nine values per pixel.
#include "mirel/morphology/median.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/color_route_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/morphology_internal.h"

namespace {

using mirel::Frame;

// The source as the worker reads it: the ROI itself, or a copy when the
// destination lies on its pixels. False with 1303 standing when the copy
// cannot be had.
template <class P>
bool Readable(const EROI<P>* src, const EROI<P>* dst, EImage<P>& copy, const EROI<P>*& from) {
  from = src;
  if (!mirel::Overlap(src, dst)) return true;
  EOk();
  copy.SetSize(src->GetWidth(), src->GetHeight());
  if (EGetError() != E_OK) return false;
  for (int y = 0; y < src->GetHeight(); ++y)
    std::copy(src->GetImagePtr(0, y), src->GetImagePtr(0, y) + src->GetWidth(), copy.GetImagePtr(0, y));
  from = &copy;
  return true;
}

template <class P>
void SortedColumns(const char* label, const EROI<P>* src, EROI<P>* dst) {
  using T = std::conditional_t<sizeof(P) == 1, std::uint8_t, std::uint16_t>;
  Frame frame(label);
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  EImage<P> copy;
  const EROI<P>* from = nullptr;
  if (!Readable(src, dst, copy, from)) return;
  const auto& k = mirel::morphology::ActiveKernels<T>();
  const mirel::Rows<const P> s = mirel::RowsOf(from);
  const mirel::Rows<P> d = mirel::RowsOf(dst);
  auto row = [&](int j) { return reinterpret_cast<const T*>(s.Row(std::min(std::max(j, 0), s.height - 1))); };
  auto out = [&](int y) { return reinterpret_cast<T*>(d.Row(y)); };
  mirel::RunBands(s.height, mirel::RowCost(s.width, 4.0 * sizeof(P)), [&](int y0, int y1) {
    int y = y0;
    for (; y + 1 < y1; y += 2) k.median2(row(y - 1), row(y), row(y + 1), row(y + 2), out(y), out(y + 1), s.width);
    if (y < y1) k.median(row(y - 1), row(y), row(y + 1), out(y), s.width);
  });
}

}  // namespace

void ImgMedian(const EROI<EBW8>* src, EROI<EBW8>* dst) { SortedColumns("ImgMedian", src, dst); }
void ImgMedian(const EROI<EBW16>* src, EROI<EBW16>* dst) { SortedColumns("ImgMedian (BW16)", src, dst); }

short ImgMedian(const EROI<EBW8>* src, EROI<EBW8>* dst, int border) {
  Frame frame("ImgMedian");
  if (!frame.SameSize(src, dst) || !frame.Require(dst != nullptr && !src->Void() && !dst->Void(), E_ERROR_VOID_IMAGE))
    return frame.Result();
  EImage<EBW8> copy;
  const EROI<EBW8>* from = nullptr;
  if (!Readable(src, dst, copy, from)) return frame.Result();
  const mirel::Rows<const EBW8> s = mirel::RowsOf(from);
  const mirel::Rows<EBW8> d = mirel::RowsOf(dst);
  const int w = s.width, h = s.height;
  mirel::RunBands(h, mirel::RowCost(w, 40.0), [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const EBW8* rows[3] = {y > 0 ? s.Row(y - 1) : nullptr, s.Row(y), y + 1 < h ? s.Row(y + 1) : nullptr};
      EBW8* out = d.Row(y);
      for (int x = 0; x < w; ++x) {
        int v[9];
        int n = 0;
        for (int j = 0; j < 3; ++j)
          for (int i = x - 1; i <= x + 1; ++i)
            v[n++] = (rows[j] != nullptr && i >= 0 && i < w) ? rows[j][i].value : border;
        std::nth_element(v, v + 4, v + 9);
        out[x] = static_cast<unsigned char>(v[4]);
      }
    }
  });
  return frame.Result();
}

void ImgMedian(EROI<EC24>* src, EROI<EC24>* dst, EC24 border) {
  Frame frame("ImgMedian ( C24)");
  if (!frame.NotVoid(src)) return;
  EROI<EC24>* target = dst != nullptr ? dst : src;
  if (!frame.SameSize(src, target)) return;
  int component = 0;
  mirel::ByComponent(src, target, [&](const EROI<EBW8>* in, EROI<EBW8>* out) {
    ImgMedian(in, out, static_cast<int>(border.c[2 - component]));
    ++component;
  });
}

void ImgMedian(const EROI<EC24>* src, EROI<EC24>* dst, EC24 border) {
  ImgMedian(mirel::ReadOnlySource(src, dst), dst, border);
}
