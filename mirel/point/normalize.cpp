#include "mirel/point/normalize.h"

#include <memory>
#include <new>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/measure/statistics.h"
#include "mirel/point/lut.h"

namespace {

// The stretched value of i, clamped to 0..top as normalize.h describes.
unsigned int Stretched(double i, double r, double mean, double m, unsigned int top) {
  const double v = i * r + mean - r * m;
  if (!(v >= 0.0)) return 0;  // below 0, or not a number
  if (v > top) return top;
  return static_cast<unsigned int>(static_cast<float>(v));
}

// Rows [y0, y1) of the 16-bit stretch, computed pixel by pixel.
void Stretch16Rows(const mirel::Rows<const EBW16>& s, const mirel::Rows<EBW16>& d, double r, double mean, double m,
                   int y0, int y1) {
  for (int y = y0; y < y1; ++y) {
    const EBW16* sp = s.Row(y);
    EBW16* dp = d.Row(y);
    for (int x = 0; x < s.width; ++x)
      dp[x] = EBW16(static_cast<unsigned short>(Stretched(sp[x].value, r, mean, m, 65535)));
  }
}

}  // namespace

short ImgNormalize(const EROI<EBW8>* src, EROI<EBW8>* dst, float mean, float deviation) {
  mirel::Frame frame("ImgNormalize");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return frame.Result();
  std::unique_ptr<EBW8[]> table(new (std::nothrow) EBW8[256]);
  if (!frame.Require(table != nullptr, E_ERROR_OUT_OF_MEMORY)) return frame.Result();
  float s = 0.0f, m = 0.0f;
  ImgPixelStdDev(src, s, m);
  if (!frame.Ok()) return frame.Result();
  const double r = static_cast<double>(deviation) / s;
  for (int i = 0; i < 256; ++i) table[i] = EBW8(static_cast<unsigned char>(Stretched(i, r, mean, m, 255)));
  ImgLut(src, dst, table.get());
  return frame.Result();
}

void ImgNormalize(const EROI<EBW16>* src, EROI<EBW16>* dst, float mean, float deviation) {
  mirel::Frame frame("ImgNormalize (BW16)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  float s = 0.0f, m = 0.0f;
  ImgPixelStdDev(src, s, m);
  if (!frame.Ok()) return;
  const mirel::Rows<const EBW16> in = mirel::RowsOf(src);
  const mirel::Rows<EBW16> out = mirel::RowsOf(dst);
  const double r = static_cast<double>(deviation) / s;
  mirel::RowwiseBands(dst, {src}, 8.0, [&](int y0, int y1) { Stretch16Rows(in, out, r, mean, m, y0, y1); });
}
