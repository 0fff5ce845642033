// Reference models of the geometry operations, written from the documented
// arithmetic: the inverse map in 16.16 fixed point and its sampling (with
// the plain interpolation formula, not the shift-and-add ladder), the block
// averages of shrink, and the two-map warp.
#ifndef MIREL_TESTS_GEOMETRY_GEOMETRY_MODEL_H_
#define MIREL_TESTS_GEOMETRY_GEOMETRY_MODEL_H_

#include <cstdint>
#include <vector>

#include "test_support.h"

namespace gmodel {

// A plain image of one channel, values in 32 bits.
struct Plane {
  int w = 0, h = 0;
  std::vector<uint32_t> px;
  uint32_t at(int x, int y) const { return px[static_cast<size_t>(y) * w + x]; }
};

// Channel c of a ROI (c = 0 for a grey ROI).
template <class T>
Plane FromRoi(const EROI<T>& roi, int c = 0) {
  Plane p{roi.GetWidth(), roi.GetHeight(), {}};
  for (int y = 0; y < p.h; ++y)
    for (int x = 0; x < p.w; ++x) {
      const T v = roi.GetImagePtr(x, y)[0];
      uint32_t value;
      if constexpr (sizeof(T) == 3) value = v.c[c];
      else value = v.value;
      p.px.push_back(value);
    }
  return p;
}

inline int32_t Trunc(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(v);
}

struct Steps {
  int32_t p, q, r, s, tx, ty;
};

// The inverse of X = a x + b y + c, Y = d x + e y + f as documented; false
// when the float determinant is exactly 0.
inline bool Invert(float a, float b, float c, float d, float e, float f, Steps& st) {
  const float det = a * e - b * d;
  if (det == 0.0f) return false;
  const double i = 1.0 / static_cast<double>(det);
  const double p = e * i;
  const float q = static_cast<float>(-b * i), r = static_cast<float>(-d * i), s = static_cast<float>(a * i);
  const float tx = static_cast<float>(-(c * p + q * f));
  const float ty = -(r * c + s * f);
  st = Steps{Trunc(p * 65536.0), Trunc(q * 65536.0), Trunc(r * 65536.0),
             Trunc(s * 65536.0), Trunc(tx * 65536.0), Trunc(ty * 65536.0)};
  return true;
}

// One axis of the bilinear sampling: 0 outside; otherwise the two pixels
// and the fraction (an edge has both pixels alike and fraction 0).
inline int Axis(int32_t pos, int size, int n, int& i0, int& i1, uint32_t& f) {
  const int64_t end = static_cast<int64_t>(size) << 16;
  if (pos < 32768 || pos >= end + 32768) return 0;
  f = 0;
  if (pos < 65536) {
    i0 = i1 = 0;
  } else if (pos >= end) {
    i0 = i1 = size - 1;
  } else {
    i0 = (pos >> 16) - 1;
    i1 = i0 + 1;
    f = (static_cast<uint32_t>(pos) >> (16 - n)) & ((1u << n) - 1);
  }
  return 1;
}

// The whole transformed plane: w x h pixels from `src`.
inline Plane Transform(const Plane& src, const Steps& st, int bits, int w, int h) {
  Plane out{w, h, std::vector<uint32_t>(static_cast<size_t>(w) * h)};
  const uint32_t half = bits == 0 ? 0 : 65536;
  const uint32_t x0 = uint32_t(st.tx) + uint32_t(int32_t(uint32_t(st.p) + uint32_t(st.q) + half) >> 1);
  const uint32_t y0 = uint32_t(st.ty) + uint32_t(int32_t(uint32_t(st.r) + uint32_t(st.s) + half) >> 1);
  const uint32_t N = 1u << bits;
  for (int v = 0; v < h; ++v)
    for (int u = 0; u < w; ++u) {
      const int32_t x = int32_t(x0 + uint32_t(u) * uint32_t(st.p) + uint32_t(v) * uint32_t(st.q));
      const int32_t y = int32_t(y0 + uint32_t(u) * uint32_t(st.r) + uint32_t(v) * uint32_t(st.s));
      uint32_t value = 0;
      if (bits == 0) {
        if (x >= 0 && y >= 0 && int64_t(x) < (int64_t(src.w) << 16) && int64_t(y) < (int64_t(src.h) << 16))
          value = src.at(x >> 16, y >> 16);
      } else {
        int ix0, ix1, iy0, iy1;
        uint32_t fx, fy;
        if (Axis(x, src.w, bits, ix0, ix1, fx) && Axis(y, src.h, bits, iy0, iy1, fy)) {
          const uint64_t top = uint64_t(src.at(ix0, iy0)) * (N - fx) + uint64_t(src.at(ix1, iy0)) * fx;
          const uint64_t bottom = uint64_t(src.at(ix0, iy1)) * (N - fx) + uint64_t(src.at(ix1, iy1)) * fx;
          value = static_cast<uint32_t>((top * (N - fy) + bottom * fy) >> (2 * bits));
        }
      }
      out.px[static_cast<size_t>(v) * w + u] = value;
    }
  return out;
}

// Block averages of shrink.
inline Plane Shrink(const Plane& src, int w, int h) {
  Plane out{w, h, {}};
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      const int x0 = i * src.w / w, x1 = (i + 1) * src.w / w;
      const int y0 = j * src.h / h, y1 = (j + 1) * src.h / h;
      uint64_t sum = 0;
      for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) sum += src.at(x, y);
      out.px.push_back(static_cast<uint32_t>(sum / uint64_t((x1 - x0) * (y1 - y0))));
    }
  return out;
}

}  // namespace gmodel

#endif  // MIREL_TESTS_GEOMETRY_GEOMETRY_MODEL_H_
