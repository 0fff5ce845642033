// Reference models of the 8-bit and 16-bit convolutions, written pixel by
// pixel from the documented arithmetic, and helpers to compare a ROI with
// them.
#ifndef MIREL_TESTS_FILTER_CONVOLUTION_MODEL_H_
#define MIREL_TESTS_FILTER_CONVOLUTION_MODEL_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include "test_support.h"

namespace model {

inline int Clampi(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }
inline uint8_t Clamp255(int64_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }
template <class P>
constexpr int64_t kTop = sizeof(P) == 1 ? 255 : 65535;
template <class P>
P ClampPix(int64_t v) { return static_cast<P>(v < 0 ? 0 : (v > kTop<P> ? kTop<P> : v)); }

inline int32_t Trunc(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(v);
}

// A plain grey image; the model reads and writes it pixel by pixel, so
// passing one image as source and destination gives the in-place result.
template <class P>
struct Plane {
  int w = 0, h = 0;
  std::vector<P> px;
  P& at(int x, int y) { return px[static_cast<size_t>(y) * w + x]; }
  P edge(int x, int y) { return at(Clampi(x, 0, w - 1), Clampi(y, 0, h - 1)); }  // replicated border
};
using Grey = Plane<uint8_t>;
using Grey16 = Plane<uint16_t>;

inline Grey FromRoi(const EROI<EBW8>& roi) { return Grey{roi.GetWidth(), roi.GetHeight(), testsupport::Bytes(roi)}; }
inline Grey16 FromRoi(const EROI<EBW16>& roi) {
  Grey16 g{roi.GetWidth(), roi.GetHeight(), {}};
  for (int y = 0; y < g.h; ++y)
    for (int x = 0; x < g.w; ++x) g.px.push_back(roi.GetPixel(x, y));
  return g;
}
template <class Pix>
using PlaneOf = decltype(FromRoi(std::declval<const EROI<Pix>&>()));

// Random 16-bit pixels below `limit` in a ROI (the rest of its image keeps
// its random bytes).
inline void Limit(EROI<EBW16>& roi, unsigned limit, testsupport::Rng& rng) {
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x)
      roi.SetPixel(EBW16(static_cast<uint16_t>(rng() % limit)), x, y);
}

struct Kern {
  int sx = 3, sy = 3;
  std::vector<float> c;
  float gain = 1;
  unsigned offset = 0;
  int rect = 2;
  unsigned outside = 0;
};

inline void Load(EKernel& k, const Kern& m) {
  k.SetAllocatedSize(static_cast<unsigned>(m.sx * m.sy));
  k.SetSizeX(static_cast<short>(m.sx));
  k.SetSizeY(static_cast<short>(m.sy));
  std::copy(m.c.begin(), m.c.end(), k.GetDataPtr());
  k.SetGain(m.gain);
  k.SetOffset(m.offset);
  k.SetRectifier(static_cast<short>(m.rect));
  k.SetOutsideValue(m.outside);
}

// Gain / sum when |sum| > 1e-5 * sum of |c|, each coefficient counted
// `mult` times (all once when mult is null).
inline float Gain(float gain, const std::vector<float>& c, const int* idx, const int* mult, int n) {
  float sum = 0, abssum = 0;
  for (int i = 0; i < n; ++i) {
    const float v = c[static_cast<size_t>(idx ? idx[i] : i)];
    const float m = mult ? static_cast<float>(mult[i]) : 1.0f;
    sum += m * v;
    abssum += m * std::fabs(v);
  }
  return abssum * 1e-5 < std::fabs(sum) ? gain / sum : gain;
}

// `start` plus the size x size window centred on (x, y) weighed by `co`,
// with the replicated border, wrapping in 32 bits.
template <class P>
int32_t Window(const std::vector<int32_t>& co, int size, uint32_t start, Plane<P>& s, int x, int y) {
  for (int i = 0; i < size * size; ++i)
    start += static_cast<uint32_t>(co[static_cast<size_t>(i)]) * s.edge(x + i % size - size / 2, y + i / size - size / 2);
  return static_cast<int32_t>(start);
}

// 8-bit fixed point, 3x3: coefficients in 16 bits (or 32 when `wide`).
template <class P>
void EightBit(const Kern& k, Plane<P>& s, Plane<P>& d, bool wide = false) {
  const float g = Gain(k.gain, k.c, nullptr, nullptr, 9);
  std::vector<int32_t> co(9);
  for (size_t i = 0; i < 9; ++i) {
    const int32_t t = Trunc(g * k.c[i] * 256.0f);
    co[i] = wide ? t : static_cast<int16_t>(static_cast<uint16_t>(t));
  }
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) d.at(x, y) = ClampPix<P>(Window(co, 3, 0, s, x, y) >> 8);
}

// 15-bit fixed point on a full size x size table (already mirrored for the
// symmetric form) with coefficients made with gain `g`. 16-bit pixels take
// the offset through a float.
template <class P>
void Fifteen(const std::vector<float>& table, int size, float g, unsigned offset, int rect, Plane<P>& s,
             Plane<P>& d) {
  if (rect < 1 || rect > 3) return;
  uint32_t off = sizeof(P) == 1 ? offset << 15 : static_cast<uint32_t>(Trunc(static_cast<float>(offset) * 32768.0f));
  if (rect == 1) {
    g = -g;
    off = 0u - off;
  }
  std::vector<int32_t> co(table.size());
  for (size_t i = 0; i < table.size(); ++i) co[i] = Trunc(g * table[i] * 32768.0f);
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      const int32_t q = Window(co, size, off, s, x, y) >> 15;
      d.at(x, y) = ClampPix<P>(rect == 3 ? std::abs(static_cast<int64_t>(q)) : q);
    }
}

template <class P>
P Rect(int32_t v, int64_t mode, int64_t add) {
  int64_t r = v;
  if (mode == 1) r = v <= 0 ? -r : 0;
  else if (mode == 2) r = v >= 0 ? r : 0;
  else if (mode == 3) r = r < 0 ? -r : r;
  return ClampPix<P>(r + add);
}

template <class P>
void Float(const Kern& k, Plane<P>& s, Plane<P>& d) {
  const int n = k.sx * k.sy;
  const float g = Gain(k.gain, k.c, nullptr, nullptr, n);
  std::vector<float> kf(static_cast<size_t>(n));
  for (size_t i = 0; i < kf.size(); ++i) kf[i] = g * k.c[i];
  const double out = static_cast<double>(static_cast<int32_t>(k.outside));
  auto px = [&](int x, int y) -> double {
    return (x < 0 || y < 0 || x >= s.w || y >= s.h) ? out : static_cast<double>(s.at(x, y));
  };
  // The 3x3 frame weighs element 7 with element 5 and swaps the roles of
  // offset and rectifier; it is written after the inside.
  const bool three = k.sx == 3 && k.sy == 3;
  for (int pass = 0; pass < (three ? 2 : 1); ++pass)
    for (int y = 0; y < s.h; ++y)
      for (int x = 0; x < s.w; ++x) {
        const bool frame = three && (y == 0 || y == s.h - 1 || x == 0 || x == s.w - 1);
        if (frame != (pass == 1)) continue;
        double sum = 0;
        for (int i = 0; i < n; ++i) {
          const int ci = frame && i == 7 ? 5 : i;
          sum += static_cast<double>(kf[static_cast<size_t>(ci)]) * px(x + i % k.sx - k.sx / 2, y + i / k.sx - k.sy / 2);
        }
        d.at(x, y) = frame ? Rect<P>(Trunc(sum), k.offset, k.rect) : Rect<P>(Trunc(sum), k.rect, k.offset);
      }
}

// ImgConvolKernel.
template <class P>
void Convol(const Kern& k, Plane<P>& s, Plane<P>& d) {
  const bool sq = k.sx == k.sy && (k.sx == 3 || k.sx == 5 || k.sx == 7);
  if (k.rect == 0 || !sq) return Float(k, s, d);
  if (k.sx == 3 && k.rect == 2) return EightBit(k, s, d);
  Fifteen(k.c, k.sx, Gain(k.gain, k.c, nullptr, nullptr, k.sx * k.sy), k.offset, k.rect, s, d);
}

// ImgConvolSymmetricKernel (sizes 3, 5, 7; rectifier not 0).
template <class P>
void Symmetric(const Kern& k, Plane<P>& s, Plane<P>& d) {
  static const int idx3[] = {0, 1, 4}, mul3[] = {4, 4, 1};
  static const int idx5[] = {0, 1, 2, 6, 7, 12}, mul5[] = {4, 8, 4, 4, 4, 1};
  static const int idx7[] = {0, 1, 2, 3, 8, 9, 10, 16, 17, 24}, mul7[] = {4, 8, 8, 4, 4, 8, 4, 4, 4, 1};
  const int n = k.sx;
  const float g = n == 3 ? Gain(k.gain, k.c, idx3, mul3, 3)
                  : n == 5 ? Gain(k.gain, k.c, idx5, mul5, 6)
                           : Gain(k.gain, k.c, idx7, mul7, 10);
  std::vector<float> full(static_cast<size_t>(n * n));
  for (int i = 0; i < n * n; ++i) {
    const int ax = std::min(i % n, n - 1 - i % n), ay = std::min(i / n, n - 1 - i / n);
    full[static_cast<size_t>(i)] = k.c[static_cast<size_t>(n * std::min(ax, ay) + std::max(ax, ay))];
  }
  Fifteen(full, n, g, k.offset, k.rect, s, d);
}

// The fixed filters: 0 uniform 5x5, 1 Gaussian 5x5, 2 uniform 7x7, 3 Gaussian 7x7.
// The uniform products wrap at 32 bits (on 16-bit pixels they do).
template <class P>
void Fixed(int kind, Plane<P>& s, Plane<P>& d) {
  static const int g5[] = {1, 4, 6, 4, 1}, g7[] = {1, 6, 15, 20, 15, 6, 1};
  const int n = kind < 2 ? 5 : 7;
  std::vector<int32_t> co(static_cast<size_t>(n * n));
  for (int i = 0; i < n * n; ++i)
    co[static_cast<size_t>(i)] = kind == 1 ? g5[i % n] * g5[i / n] : kind == 3 ? g7[i % n] * g7[i / n] : 1;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      const uint32_t sum = static_cast<uint32_t>(Window(co, n, 0, s, x, y));
      d.at(x, y) = static_cast<P>(kind == 0 ? (sum * 335544u) >> 23
                                        : kind == 2 ? (sum * 171196u) >> 23
                                                    : sum >> (kind == 1 ? 8 : 12));
    }
}

// The whole buffer of `image` as it must be after `roi` (inside it) got
// `pixels`, starting from the snapshot `before`.
template <class Pix, class P>
std::vector<uint8_t> Expected(const EImage<Pix>& image, const EROI<Pix>& roi, std::vector<uint8_t> before,
                              const Plane<P>& pixels) {
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x) {
      const P v = pixels.px[static_cast<size_t>(y * pixels.w + x)];
      const size_t at = static_cast<size_t>((roi.GetOrgY() + y) * image.GetRowPitch()) + (roi.GetOrgX() + x) * sizeof(P);
      for (size_t b = 0; b < sizeof(P); ++b) before[at + b] = static_cast<uint8_t>(v >> (8 * b));
    }
  return before;
}

// Random ROIs of one size in two random images (or the destination alone,
// in place): `op` must give what `ref` computes inside the destination ROI
// and leave the rest of its image alone. 16-bit sources take values below
// `limit`.
template <class Pix = EBW8, class Ref, class Op>
::testing::AssertionResult MatchesOnRandomRois(testsupport::Rng& rng, int w, int h, bool inPlace, Ref ref, Op op,
                                               unsigned limit = 65536) {
  EImage<Pix> si, di;
  EROI<Pix> s, d;
  testsupport::PlaceRandom(si, s, w, h, rng);
  testsupport::PlaceRandom(di, d, w, h, rng);
  testsupport::FillRandom(si, rng);
  testsupport::FillRandom(di, rng);
  if constexpr (sizeof(Pix) == 2) Limit(inPlace ? d : s, limit, rng);
  const auto before = testsupport::Snapshot(di);
  PlaneOf<Pix> gs = FromRoi(s), gd = FromRoi(d);
  ref(inPlace ? gd : gs, gd);
  op(inPlace ? &d : &s, &d);
  if (EGetError() != E_OK) return ::testing::AssertionFailure() << "error " << EGetError();
  if (testsupport::Snapshot(di) != Expected(di, d, before, gd)) return ::testing::AssertionFailure() << w << "x" << h;
  return ::testing::AssertionSuccess();
}

}  // namespace model

#endif  // MIREL_TESTS_FILTER_CONVOLUTION_MODEL_H_
