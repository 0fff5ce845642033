// Reference models of the 8-bit convolutions, written pixel by pixel from
// the documented arithmetic, and helpers to compare a ROI with them.
#ifndef MIREL_TESTS_FILTER_CONVOLUTION_MODEL_H_
#define MIREL_TESTS_FILTER_CONVOLUTION_MODEL_H_

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <vector>

#include "test_support.h"

namespace model {

// A plain grey image; the model reads and writes it pixel by pixel, so
// passing one image as source and destination gives the in-place result.
struct Grey {
  int w = 0, h = 0;
  std::vector<uint8_t> px;
  uint8_t& at(int x, int y) { return px[static_cast<size_t>(y) * w + x]; }
};

inline Grey FromRoi(const EROI<EBW8>& roi) {
  Grey g;
  g.w = roi.GetWidth();
  g.h = roi.GetHeight();
  g.px = testsupport::Bytes(roi);
  return g;
}

inline int Clampi(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }

inline int32_t Trunc(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(v);
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
  for (int i = 0; i < m.sx * m.sy; ++i) k.GetDataPtr()[i] = m.c[static_cast<size_t>(i)];
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

inline uint8_t Clamp255(int64_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// 8-bit fixed point, 3x3: coefficients in 16 bits (or 32 when `wide`).
inline void EightBit(const Kern& k, Grey& s, Grey& d, bool wide = false) {
  const float g = Gain(k.gain, k.c, nullptr, nullptr, 9);
  int32_t co[9];
  for (int i = 0; i < 9; ++i) {
    const int32_t t = Trunc(g * k.c[static_cast<size_t>(i)] * 256.0f);
    co[i] = wide ? t : static_cast<int16_t>(static_cast<uint16_t>(t));
  }
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      uint32_t v = 0;
      for (int i = 0; i < 9; ++i)
        v += static_cast<uint32_t>(co[i]) *
             s.at(Clampi(x + i % 3 - 1, 0, s.w - 1), Clampi(y + i / 3 - 1, 0, s.h - 1));
      d.at(x, y) = Clamp255(static_cast<int32_t>(v) >> 8);
    }
}

// 15-bit fixed point on a full size x size table (already mirrored for the
// symmetric form) with coefficients made with gain `g`.
inline void Fifteen(const std::vector<float>& table, int size, float g, unsigned offset, int rect,
                    Grey& s, Grey& d) {
  if (rect < 1 || rect > 3) return;
  uint32_t off = offset << 15;
  if (rect == 1) {
    g = -g;
    off = 0u - off;
  }
  std::vector<int32_t> co(table.size());
  for (size_t i = 0; i < table.size(); ++i) co[i] = Trunc(g * table[i] * 32768.0f);
  const int r = size / 2;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      uint32_t v = off;
      for (int i = 0; i < size * size; ++i)
        v += static_cast<uint32_t>(co[static_cast<size_t>(i)]) *
             s.at(Clampi(x + i % size - r, 0, s.w - 1), Clampi(y + i / size - r, 0, s.h - 1));
      const int32_t q = static_cast<int32_t>(v) >> 15;
      d.at(x, y) = rect == 3 ? static_cast<uint8_t>(std::abs(q) > 255 ? 255 : std::abs(q)) : Clamp255(q);
    }
}

inline uint8_t Rect(int32_t v, int64_t mode, int64_t add) {
  int64_t r = v;
  if (mode == 1) r = v <= 0 ? -r : 0;
  else if (mode == 2) r = v >= 0 ? r : 0;
  else if (mode == 3) r = r < 0 ? -r : r;
  return Clamp255(r + add);
}

inline void Float(const Kern& k, Grey& s, Grey& d) {
  const int n = k.sx * k.sy;
  const float g = Gain(k.gain, k.c, nullptr, nullptr, n);
  std::vector<float> kf(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) kf[static_cast<size_t>(i)] = g * k.c[static_cast<size_t>(i)];
  const double out = static_cast<double>(static_cast<int32_t>(k.outside));
  auto px = [&](int x, int y) -> double {
    return (x < 0 || y < 0 || x >= s.w || y >= s.h) ? out : static_cast<double>(s.at(x, y));
  };
  auto one = [&](int x, int y) {
    double sum = 0;
    for (int ky = 0; ky < k.sy; ++ky)
      for (int kx = 0; kx < k.sx; ++kx)
        sum += static_cast<double>(kf[static_cast<size_t>(k.sx * ky + kx)]) *
               px(x + kx - k.sx / 2, y + ky - k.sy / 2);
    d.at(x, y) = Rect(Trunc(sum), k.rect, k.offset);
  };
  if (k.sx != 3 || k.sy != 3) {
    for (int y = 0; y < s.h; ++y)
      for (int x = 0; x < s.w; ++x) one(x, y);
    return;
  }
  for (int y = 1; y < s.h - 1; ++y)
    for (int x = 1; x < s.w - 1; ++x) one(x, y);
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      if (y != 0 && y != s.h - 1 && x != 0 && x != s.w - 1) continue;
      double sum = 0;
      for (int i = 0; i < 9; ++i) {
        const int ci = i == 7 ? 5 : i;  // the frame's substitution
        sum += static_cast<double>(kf[static_cast<size_t>(ci)]) * px(x + i % 3 - 1, y + i / 3 - 1);
      }
      d.at(x, y) = Rect(Trunc(sum), k.offset, k.rect);  // offset and rectifier trade places
    }
}

// ImgConvolKernel.
inline void Convol(const Kern& k, Grey& s, Grey& d) {
  const bool sq = k.sx == k.sy && (k.sx == 3 || k.sx == 5 || k.sx == 7);
  if (k.rect == 0 || !sq) return Float(k, s, d);
  if (k.sx == 3 && k.rect == 2) return EightBit(k, s, d);
  const float g = Gain(k.gain, k.c, nullptr, nullptr, k.sx * k.sy);
  Fifteen(k.c, k.sx, g, k.offset, k.rect, s, d);
}

// ImgConvolSymmetricKernel (sizes 3, 5, 7; rectifier not 0).
inline void Symmetric(const Kern& k, Grey& s, Grey& d) {
  static const int idx3[] = {0, 1, 4}, mul3[] = {4, 4, 1};
  static const int idx5[] = {0, 1, 2, 6, 7, 12}, mul5[] = {4, 8, 4, 4, 4, 1};
  static const int idx7[] = {0, 1, 2, 3, 8, 9, 10, 16, 17, 24}, mul7[] = {4, 8, 8, 4, 4, 8, 4, 4, 4, 1};
  const int n = k.sx;
  const int* idx = n == 3 ? idx3 : n == 5 ? idx5 : idx7;
  const int* mul = n == 3 ? mul3 : n == 5 ? mul5 : mul7;
  const int terms = n == 3 ? 3 : n == 5 ? 6 : 10;
  const float g = Gain(k.gain, k.c, idx, mul, terms);
  std::vector<float> full(static_cast<size_t>(n * n));
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const int ax = std::min(x, n - 1 - x), ay = std::min(y, n - 1 - y);
      full[static_cast<size_t>(n * y + x)] = k.c[static_cast<size_t>(n * std::min(ax, ay) + std::max(ax, ay))];
    }
  Fifteen(full, n, g, k.offset, k.rect, s, d);
}

// The fixed filters: 0 uniform 5x5, 1 Gaussian 5x5, 2 uniform 7x7, 3 Gaussian 7x7.
inline void Fixed(int kind, Grey& s, Grey& d) {
  static const int g5[] = {1, 4, 6, 4, 1}, g7[] = {1, 6, 15, 20, 15, 6, 1};
  const int r = kind < 2 ? 2 : 3;
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      uint32_t sum = 0;
      for (int j = -r; j <= r; ++j)
        for (int i = -r; i <= r; ++i) {
          const uint32_t wgt = kind == 1 ? static_cast<uint32_t>(g5[i + r] * g5[j + r])
                               : kind == 3 ? static_cast<uint32_t>(g7[i + r] * g7[j + r])
                                           : 1u;
          sum += wgt * s.at(Clampi(x + i, 0, s.w - 1), Clampi(y + j, 0, s.h - 1));
        }
      d.at(x, y) = static_cast<uint8_t>(kind == 0   ? (sum * 335544u) >> 23
                                        : kind == 2 ? (sum * 171196u) >> 23
                                        : kind == 1 ? sum >> 8
                                                    : sum >> 12);
    }
}

// The whole buffer of `image` as it must be after `roi` (inside it) got
// `pixels`, starting from the snapshot `before`.
inline std::vector<uint8_t> Expected(const EImage<EBW8>& image, const EROI<EBW8>& roi,
                                     std::vector<uint8_t> before, const Grey& pixels) {
  const int pitch = image.GetRowPitch();
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (int x = 0; x < roi.GetWidth(); ++x)
      before[static_cast<size_t>((roi.GetOrgY() + y) * pitch + roi.GetOrgX() + x)] =
          pixels.px[static_cast<size_t>(y * pixels.w + x)];
  return before;
}

}  // namespace model

#endif  // MIREL_TESTS_FILTER_CONVOLUTION_MODEL_H_
