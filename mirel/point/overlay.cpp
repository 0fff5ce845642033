// ImgOverlay and the thread's overlay colour.
#include "mirel/point/overlay.h"

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/runtime.h"

namespace {

inline bool IsTransparent(const EC24& p, const EC24& transparent) {
  return p.c[2] == transparent.c[2] && p.c[1] == transparent.c[1] && p.c[0] == transparent.c[0];
}

inline EC24 Pack(const EC24& p, EC24*) { return p; }
inline EC16 Pack(const EC24& p, EC16*) {
  return EC16(static_cast<unsigned short>(((p.c[2] >> 3) << 11) | ((p.c[1] >> 2) << 5) | (p.c[0] >> 3)));
}
inline EC15 Pack(const EC24& p, EC15*) {
  return EC15(static_cast<unsigned short>(((p.c[2] >> 3) << 10) | ((p.c[1] >> 3) << 5) | (p.c[0] >> 3)));
}

// Draws the non-transparent pixels of `overlay` on `dst` at (x, y).
template <class T>
void OverlayOn(const char* label, const EROI<EC24>* overlay, EROI<T>* dst, int x, int y, EC24 transparent) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(overlay, dst)) return;
  // A destination smaller than the picture is left alone without a code.
  if (dst->GetWidth() < overlay->GetWidth() || dst->GetHeight() < overlay->GetHeight()) return;
  const int w = overlay->GetWidth();
  const int h = overlay->GetHeight();
  const long long dw = dst->GetWidth();
  const long long dh = dst->GetHeight();
  // Bands of the picture's rows, each drawn on its own destination row; a
  // picture on the destination's pixels is drawn in one band, since it may
  // read rows already drawn.
  const double cost = mirel::Overlap(overlay, dst) ? mirel::kOneBand : mirel::RowCost(w, 2.0 * sizeof(EC24));
  mirel::RunBands(h, cost, [&](int j0, int j1) {
    for (int j = j0; j < j1; ++j) {
      const long long ty = static_cast<long long>(y) + j;
      if (ty < 0 || ty >= dh) continue;
      const EC24* row = overlay->GetImagePtr(0, j);
      for (int i = 0; i < w; ++i) {
        const long long tx = static_cast<long long>(x) + i;
        if (tx < 0 || tx >= dw) continue;
        if (IsTransparent(row[i], transparent)) continue;
        dst->SetPixel(Pack(row[i], static_cast<T*>(nullptr)), static_cast<int>(tx), static_cast<int>(ty));
      }
    }
  });
}

}  // namespace

void ImgOverlay(const EROI<EC24>* overlay, EROI<EC24>* dst, int x, int y, EC24 transparent) {
  OverlayOn("ImgOverlay ( C24 on C24 Image)", overlay, dst, x, y, transparent);
}

void ImgOverlay(const EROI<EC24>* overlay, EROI<EC16>* dst, int x, int y, EC24 transparent) {
  OverlayOn("ImgOverlay ( C24 on C16 Image)", overlay, dst, x, y, transparent);
}

void ImgOverlay(const EROI<EC24>* overlay, EROI<EC15>* dst, int x, int y, EC24 transparent) {
  OverlayOn("ImgOverlay ( C24 on C15 Image)", overlay, dst, x, y, transparent);
}

void ImgOverlay(const EROI<EBW8>* src, const EROI<EC24>* overlay, EROI<EC24>* dst, int x, int y,
                EC24 transparent) {
  mirel::Frame frame("ImgOverlay ( BW8 source, C24 overlay and destination)");
  if (!frame.NotVoid(src, overlay)) return;
  if (!frame.Require(dst != nullptr, E_ERROR_VOID_IMAGE)) return;
  EOk();
  dst->SetSize(static_cast<const EGenericROI*>(src));
  if (EGetError() != E_OK) return;
  if (!frame.NotVoid(dst)) return;
  const int w = src->GetWidth();
  const int h = src->GetHeight();
  if (dst->GetWidth() < w || dst->GetHeight() < h) return;
  const long long ow = overlay->GetWidth();
  const long long oh = overlay->GetHeight();
  // Bands of destination rows; a picture on the destination's pixels may be
  // read after some of its rows are written, so it is drawn in one band.
  const double cost = mirel::Overlap(overlay, dst) ? mirel::kOneBand : mirel::RowCost(w, 3.0 + sizeof(EC24));
  mirel::RunBands(h, cost, [&](int j0, int j1) {
    for (int j = j0; j < j1; ++j) {
      const EBW8* grey = src->GetImagePtr(0, j);
      EC24* out = dst->GetImagePtr(0, j);
      const long long oy = static_cast<long long>(j) - y;
      const bool row_inside = oy >= 0 && oy < oh;
      const EC24* orow = row_inside ? overlay->GetImagePtr(0, static_cast<int>(oy)) : nullptr;
      for (int i = 0; i < w; ++i) {
        const long long ox = static_cast<long long>(i) - x;
        if (orow != nullptr && ox >= 0 && ox < ow && !IsTransparent(orow[ox], transparent)) {
          out[i] = orow[ox];
        } else {
          const unsigned char g = grey[i].value;
          out[i] = EC24(g, g, g);
        }
      }
    }
  });
}

void ImgSetOverlayColor(EC24 color) { EGetTLSPtr()->OverlayColor = color; }

EC24 ImgGetOverlayColor() { return EGetTLSPtr()->OverlayColor; }
