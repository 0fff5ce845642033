// Anisotropic diffusion: passes of a Perona-Malik flow whose conduction is
// read from a smoothed copy.
//
// The four difference planes of the older design are not stored: each
// difference is formed from P and S where it is needed, which gives the
// same numbers. The smoothed image and the two images of the iterations
// are kept for the length of the call. The update of a pass can run on any
// band of rows once K is known.
#include "mirel/edge/diffusion.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "mirel/edge/diffusion_internal.h"
#include "mirel/filter/smoothing.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/point/arith.h"
#include "mirel/foundation/float_math_internal.h"

namespace mirel {
namespace edge {

float ConductionFactor(int number, int g, int k) {
  if (k == 0) return g == 0 ? 1.0f : 0.0f;
  const int k2 = k * k, g2 = g * g;
  switch (number) {
    case 1: return 1.0f / static_cast<float>(g2 / k2 + 1);
    case 2: return mirel::Exp(-static_cast<float>(g2) / static_cast<float>(k2));
    case 3: {
      if (std::abs(g) > k) return 0.0f;
      const float r = 1.0f - static_cast<float>(g2) / static_cast<float>(k2);
      return 0.5f * (r * r);
    }
    case 4: return std::abs(g) <= k ? 1.0f / static_cast<float>(k) : static_cast<float>((g > 0) - (g < 0)) / static_cast<float>(g);
    default: return 0.0f;
  }
}

unsigned char DiffusionThreshold(const unsigned int* h) {
  double n = 0;
  for (int i = 0; i < 256; ++i) n += h[i];
  int top = 0;
  double acc = 0;
  for (int i = 255; i >= 0; --i) {
    acc += h[i];
    if (acc >= 0.02 * n) {
      top = i;
      break;
    }
  }
  unsigned k = 0;
  acc = 0;
  for (int i = 0; i < 256; ++i) {
    acc += h[i];
    if (acc >= 0.9 * n) {
      k = static_cast<unsigned>(i) - 1u;
      break;
    }
  }
  if (k < 0.2 * top) k = static_cast<unsigned>(0.2 * top);
  return static_cast<unsigned char>(k);
}

namespace {

using Byte = std::uint8_t;

// A difference kept in eight signed bits.
inline int Diff8(int a, int b) { return static_cast<std::int8_t>(static_cast<Byte>(a - b)); }

// The histogram of |hs| and |vs| over S.
void ContrastHistogram(const Rows<const EBW8>& s, unsigned int* h) {
  for (int i = 0; i < 256; ++i) h[i] = 0;
  const int w = s.width, ht = s.height;
  for (int y = 0; y < ht; ++y) {
    const EBW8* r = s.Row(y);
    const EBW8* below = y + 1 < ht ? s.Row(y + 1) : nullptr;
    for (int x = 0; x < w; ++x) {
      ++h[x + 1 < w ? std::abs(Diff8(r[x], r[x + 1])) : 0];
      ++h[below != nullptr ? std::abs(Diff8(r[x], below[x])) : 0];
    }
  }
}

// Rows [y0, y1) of the update from P (with S its smoothing) to Q; c[g + 128]
// is the factor of the contrast g.
void UpdateRows(const Rows<const EBW8>& p, const Rows<const EBW8>& s, const Rows<EBW8>& q, const float* c, int y0,
                int y1) {
  const int w = p.width, h = p.height;
  // The differences to the right and below, 0 across the last column and
  // row and before the first.
  auto right = [w](const EBW8* r, int x) { return x >= 0 && x + 1 < w ? Diff8(r[x], r[x + 1]) : 0; };
  auto down = [h](const Rows<const EBW8>& img, int x, int y) {
    return y >= 0 && y + 1 < h ? Diff8(img.Row(y)[x], img.Row(y + 1)[x]) : 0;
  };
  for (int y = y0; y < y1; ++y) {
    const EBW8* pr = p.Row(y);
    const EBW8* sr = s.Row(y);
    EBW8* out = q.Row(y);
    for (int x = 0; x < w; ++x) {
      const int n = down(s, x, y - 1), so = -down(s, x, y), we = right(sr, x - 1), e = -right(sr, x);
      const float flow = c[n + 128] * static_cast<float>(down(p, x, y - 1)) +
                         c[so + 128] * static_cast<float>(-down(p, x, y)) +
                         c[we + 128] * static_cast<float>(right(pr, x - 1)) +
                         c[e + 128] * static_cast<float>(-right(pr, x));
      const float v = static_cast<float>(pr[x].value) + 0.1f * flow;
      out[x] = EBW8(static_cast<Byte>(static_cast<int>(v)));
    }
  }
}

// One pass from p to q, with `smoothed` the working image of S.
bool Pass(const EROI<EBW8>* p, EImage<EBW8>* smoothed, EROI<EBW8>* q) {
  ImgConvolGaussian(const_cast<EROI<EBW8>*>(p), smoothed, 3, 3);
  if (EGetError() != E_OK) return false;
  unsigned int h[256];
  const Rows<const EBW8> s = RowsOf(static_cast<const EROI<EBW8>*>(smoothed));
  ContrastHistogram(s, h);
  const int k = DiffusionThreshold(h);
  float c[257];
  for (int g = -128; g <= 128; ++g) c[g + 128] = ConductionFactor(2, g, k);
  const Rows<const EBW8> pr = RowsOf(p);
  UpdateRows(pr, s, RowsOf(q), c, 0, pr.height);
  return true;
}

}  // namespace
}  // namespace edge
}  // namespace mirel

void ImgAnisotropicDiffusion(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int iterations, unsigned char) {
  mirel::Frame frame("Failed anisotropic diffusion !");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(iterations != 0, E_ERROR_BAD_ARGUMENT))
    return;
  const int w = src->GetWidth(), h = src->GetHeight();
  EImage<EBW8> a, b, smoothed;
  a.SetSize(w, h);
  b.SetSize(w, h);
  smoothed.SetSize(w, h);
  if (!frame.Ok()) return;
  // Each pass reads the one before it in full, so passes alternate between
  // the two working images; the last one is copied to dst.
  if (!mirel::edge::Pass(src, &smoothed, &a)) return;
  EImage<EBW8>* from = &a;
  EImage<EBW8>* to = &b;
  for (unsigned int i = 1; i < iterations; ++i) {
    if (!mirel::edge::Pass(from, &smoothed, to)) return;
    std::swap(from, to);
  }
  ImgCopy(from, dst);
}
