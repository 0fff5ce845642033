// Affine resampling: the inversion of the map, the fixed-point row walk and
// the frames of ImgLinearTransform, ImgScaleRotate and ImgRegister.
#include "mirel/geometry/affine.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>
#include <cstdint>
#include <type_traits>

#include "mirel/filter/convolution_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/color_route_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/runtime.h"
#include "mirel/geometry/affine_internal.h"
#include "mirel/point/arith.h"
#include "mirel/foundation/float_math_internal.h"

namespace mirel {
namespace geometry {

AffineRoutines ActiveAffineRoutines() {
  if (EGetMMX() == 0) return AffineRoutines{};
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512AffineRoutines();
  if (level >= cpu::kAVX2) return Avx2AffineRoutines();
  if (level >= cpu::kSSE2) return Sse2AffineRoutines();
#endif
  return AffineRoutines{};
}

}  // namespace geometry
}  // namespace mirel

namespace {

using mirel::geometry::AffineRow;
using mirel::geometry::AffineRowFn;
using mirel::geometry::AffineSource;

// The inverse map in 16.16 fixed point: p, r the source x and y steps per
// destination column, q, s per destination row, (tx, ty) the source
// position of the destination origin.
struct Steps {
  std::int32_t p, q, r, s, tx, ty;
};

std::int32_t Fixed(double v) { return mirel::filter::TruncToInt32(v * 65536.0); }

// Inverts X = a x + b y + c, Y = d x + e y + f. The determinant is held as a
// float and refused when exactly 0; its reciprocal is taken in double. p
// stays in double precision, the other terms are held as floats.
bool Invert(float a, float b, float c, float d, float e, float f, Steps& out) {
  const float det = a * e - b * d;
  if (det == 0.0f) return false;
  const double i = 1.0 / static_cast<double>(det);
  const double p = e * i;
  const float q = static_cast<float>(-b * i);
  const float r = static_cast<float>(-d * i);
  const float s = static_cast<float>(a * i);
  const float tx = static_cast<float>(-(c * p + q * f));
  const float ty = -(r * c + s * f);
  out = Steps{Fixed(p), Fixed(q), Fixed(r), Fixed(s), Fixed(tx), Fixed(ty)};
  return true;
}

// The checks shared by every form, after the void tests: the map, the
// interpolation, and a source small enough for 16.16 positions.
bool Prepare(mirel::Frame& frame, const EGenericROI* src, const float k[6], int bits, Steps& steps) {
  if (!frame.Require(Invert(k[0], k[1], k[2], k[3], k[4], k[5], steps), E_ERROR_BAD_LAST_INDEX)) return false;
  if (!frame.Require(bits == 0 || bits == 4 || bits == 8, E_ERROR_BAD_ARGUMENT)) return false;
  return frame.Require(src->GetWidth() <= mirel::geometry::kMaxAffineSide &&
                           src->GetHeight() <= mirel::geometry::kMaxAffineSide,
                       E_ERROR_BAD_LAST_INDEX);
}

template <class P, class T>
AffineSource<P> SourceOf(const EROI<T>* roi) {
  const int w = roi->GetWidth(), h = roi->GetHeight();
  return AffineSource<P>{static_cast<const unsigned char*>(roi->GetGenericImagePtr(0, 0)), roi->GetRowPitch(), w,
                         h, static_cast<std::int32_t>(static_cast<std::uint32_t>(w) << 16),
                         static_cast<std::int32_t>(static_cast<std::uint32_t>(h) << 16)};
}

// The start of destination row 0 and the steps, as the pixel loop uses them:
// the sample sits at the destination pixel's centre, and for bilinear half
// a pixel further so that the integer part less 1 is the left neighbour.
struct Walk {
  std::uint32_t x0, y0, p, q, r, s;
};

Walk WalkOf(const Steps& st, int bits) {
  const std::uint32_t half = bits == 0 ? 0u : 65536u;
  Walk w;
  w.p = static_cast<std::uint32_t>(st.p);
  w.q = static_cast<std::uint32_t>(st.q);
  w.r = static_cast<std::uint32_t>(st.r);
  w.s = static_cast<std::uint32_t>(st.s);
  w.x0 = static_cast<std::uint32_t>(st.tx) + static_cast<std::uint32_t>(mirel::geometry::AsSigned(w.p + w.q + half) >> 1);
  w.y0 = static_cast<std::uint32_t>(st.ty) + static_cast<std::uint32_t>(mirel::geometry::AsSigned(w.r + w.s + half) >> 1);
  return w;
}

// ---------------------------------------------------------------- separable form
//
// A map without rotation or shear (q = r = 0) whose x steps forward and does
// not wrap along a row gives every destination row the same columns and
// each row one source y. The horizontal sums T = A (N - fx) + B fx of a
// source row are then computed once and shared by the destination rows that
// need them, and each pixel is (T (N - fy) + T' fy) >> 2n of two such rows:
// the very sums of the pixel loop. An edge column enters as P N (so the
// vertical blend gives the one-dimensional result), an edge row as its own
// partner with fy = 0, a column outside as 0; the bytes are those of the
// pixel loop.
template <class P>
class Separable {
 public:
  using H = std::conditional_t<sizeof(P) == 1, std::uint16_t, std::uint32_t>;

  static bool Applies(const Walk& w, int width) {
    const std::int32_t p = mirel::geometry::AsSigned(w.p);
    if (w.q != 0 || w.r != 0 || p <= 0 || width <= 0) return false;
    return static_cast<std::int64_t>(mirel::geometry::AsSigned(w.x0)) + static_cast<std::int64_t>(width - 1) * p <=
           INT32_MAX;
  }

  Separable(const AffineSource<P>& s, const Walk& w, int bits, int width,
            const mirel::geometry::AffineRoutines& simd)
      : s_(s), w_(w), bits_(bits), width_(width), simd_(simd) {}

  // Rows [y0, y1) of the destination; false when memory is short, and then
  // nothing has been written.
  template <class T>
  bool Run(EROI<T>* dst, int y0, int y1) {
    try {
      ix_.assign(static_cast<std::size_t>(width_), 0);
      wx_.assign(static_cast<std::size_t>(width_), 0);
      if (bits_ != 0) {
        rows_[0].assign(static_cast<std::size_t>(width_), 0);
        rows_[1].assign(static_cast<std::size_t>(width_), 0);
      }
    } catch (const std::bad_alloc&) {
      return false;
    }
    Columns();
    for (int v = y0; v < y1; ++v) {
      P* out = static_cast<P*>(dst->GetGenericImagePtr(0, v));
      const std::int32_t y = mirel::geometry::AsSigned(w_.y0 + static_cast<std::uint32_t>(v) * w_.s);
      if (bits_ == 0) NearestRow(y, out);
      else if (bits_ == 4) BilinearRow<4>(y, out);
      else BilinearRow<8>(y, out);
    }
    return true;
  }

 private:
  // Column zones: [0, a) outside, [a, b) first edge, [b, c) inside, [c, d)
  // last edge, [d, width) outside. Nearest neighbour uses [b, c) alone.
  void Columns() {
    const std::int64_t W = s_.W;
    const std::int64_t x0 = mirel::geometry::AsSigned(w_.x0), p = mirel::geometry::AsSigned(w_.p);
    const std::int64_t lo = bits_ == 0 ? 0 : 32768;
    const std::int64_t in = bits_ == 0 ? 0 : 65536;
    const std::int64_t hi = bits_ == 0 ? W : W + 32768;
    const std::int32_t n = bits_, mask = (1 << n) - 1;
    a_ = b_ = c_ = d_ = 0;
    for (int u = 0; u < width_; ++u) {
      const std::int64_t x = x0 + u * p;
      if (x < lo) {
        a_ = b_ = c_ = d_ = u + 1;
      } else if (x < in) {
        b_ = c_ = d_ = u + 1;
      } else if (x < W) {
        c_ = d_ = u + 1;
        ix_[static_cast<std::size_t>(u)] = static_cast<std::int32_t>(x >> 16) - (n == 0 ? 0 : 1);
        const std::int32_t f = static_cast<std::int32_t>(x >> (16 - n)) & mask;
        wx_[static_cast<std::size_t>(u)] = ((1 << n) - f) | (f << 16);
      } else if (x < hi) {
        d_ = u + 1;
      }
    }
    stepK_ = 0;
    if (c_ > b_ && (p & 0xffff) == 0 && (p >> 16) <= 2) stepK_ = static_cast<int>(p >> 16);
  }

  void NearestRow(std::int32_t y, P* out) {
    if (y < 0 || y >= s_.H) {
      std::fill(out, out + width_, P{0});
      last_ = nullptr;
      return;
    }
    const int iy = y >> 16;
    if (last_ != nullptr && lastRow_ == iy) {  // the same source row as the row above
      std::copy(last_, last_ + width_, out);
      return;
    }
    const P* row = reinterpret_cast<const P*>(s_.base + s_.pitch * iy);
    std::fill(out, out + b_, P{0});
    int u = b_;
    if constexpr (sizeof(P) == 1) {
      if (stepK_ == 1) {
        std::copy(row + ix_[static_cast<std::size_t>(u)], row + ix_[static_cast<std::size_t>(u)] + (c_ - u), out + u);
        u = c_;
      } else if (simd_.nearest != nullptr) {
        u = simd_.nearest(row, s_.width, ix_.data(), u, c_, out);
      }
    }
    for (; u < c_; ++u) out[u] = row[ix_[static_cast<std::size_t>(u)]];
    std::fill(out + c_, out + width_, P{0});
    last_ = out;
    lastRow_ = iy;
  }

  // The horizontal sums of source row iy, kept for the next rows.
  template <int n>
  const H* Sums(int iy) {
    for (int k = 0; k < 2; ++k)
      if (held_[k] == iy) return rows_[k].data();
    const int k = held_[0] == keep_ ? 1 : 0;
    held_[k] = iy;
    H* h = rows_[k].data();
    const P* row = reinterpret_cast<const P*>(s_.base + s_.pitch * iy);
    const H first = static_cast<H>(static_cast<std::uint32_t>(row[0]) << n);
    const H last = static_cast<H>(static_cast<std::uint32_t>(row[s_.width - 1]) << n);
    std::fill(h + a_, h + b_, first);
    std::fill(h + c_, h + d_, last);
    int u = b_;
    if (stepK_ != 0) {
      const std::uint32_t f = static_cast<std::uint32_t>(wx_[static_cast<std::size_t>(u)]) >> 16;
      const std::uint32_t g = (1u << n) - f;
      const P* at = row + ix_[static_cast<std::size_t>(u)];
      const int count = c_ - u;
      int j = 0;
      if constexpr (sizeof(P) == 1) {
        if (simd_.step != nullptr) j = simd_.step(at, stepK_, g, f, count, h + u);
      }
      if (stepK_ == 1) {
        for (; j < count; ++j) h[u + j] = static_cast<H>(at[j] * g + at[j + 1] * f);
      } else {
        for (; j < count; ++j) h[u + j] = static_cast<H>(at[2 * j] * g + at[2 * j + 1] * f);
      }
      return h;
    }
    if constexpr (sizeof(P) == 1) {
      if (simd_.horizontal != nullptr) u = simd_.horizontal(row, s_.width, ix_.data(), wx_.data(), u, c_, h);
    }
    for (; u < c_; ++u) {
      const std::uint32_t wx = static_cast<std::uint32_t>(wx_[static_cast<std::size_t>(u)]);
      const P* at = row + ix_[static_cast<std::size_t>(u)];
      h[u] = static_cast<H>(at[0] * (wx & 0xffff) + at[1] * (wx >> 16));
    }
    return h;
  }

  // Steps of two pixels with both fractions one half: each inside pixel is
  // the truncated mean of a 2x2 block, (T + T') N / 2 >> 2n with
  // T = (A + B) N / 2; an edge column is the blend of its two pixels.
  template <int n>
  bool HalvesRow(int top, int bottom, P* out) {
    if (stepK_ != 2 || simd_.halves == nullptr ||
        (static_cast<std::uint32_t>(wx_[static_cast<std::size_t>(b_)]) >> 16) != (1u << (n - 1)))
      return false;
    const P* r0 = reinterpret_cast<const P*>(s_.base + s_.pitch * top);
    const P* r1 = reinterpret_cast<const P*>(s_.base + s_.pitch * bottom);
    const int first = ix_[static_cast<std::size_t>(b_)], count = c_ - b_;
    int j = simd_.halves(r0 + first, r1 + first, count, out + b_);
    for (; j < count; ++j) {
      const P* a = r0 + first + 2 * j;
      const P* c = r1 + first + 2 * j;
      out[b_ + j] = static_cast<P>((a[0] + a[1] + c[0] + c[1]) >> 2);
    }
    const P left = static_cast<P>((r0[0] + r1[0]) >> 1);
    const P right = static_cast<P>((r0[s_.width - 1] + r1[s_.width - 1]) >> 1);
    std::fill(out, out + a_, P{0});
    std::fill(out + a_, out + b_, left);
    std::fill(out + c_, out + d_, right);
    std::fill(out + d_, out + width_, P{0});
    return true;
  }

  template <int n>
  void BilinearRow(std::int32_t y, P* out) {
    if (y < 32768 || y >= s_.H + 32768) {
      std::fill(out, out + width_, P{0});
      return;
    }
    int top, bottom;
    std::uint32_t fy = 0;
    if (y < 65536 || y >= s_.H) {
      top = bottom = y < 65536 ? 0 : s_.height - 1;
    } else {
      top = (y >> 16) - 1;
      bottom = top + 1;
      fy = (static_cast<std::uint32_t>(y) >> (16 - n)) & ((1u << n) - 1);
    }
    if constexpr (sizeof(P) == 1) {
      if (fy == (1u << (n - 1)) && top != bottom && HalvesRow<n>(top, bottom, out)) return;
    }
    keep_ = bottom;
    const H* t = Sums<n>(top);
    keep_ = top;
    const H* b = Sums<n>(bottom);
    const std::uint32_t gy = (1u << n) - fy;
    int u = 0;
    if constexpr (sizeof(P) == 1) {
      if (simd_.vertical != nullptr) u = simd_.vertical(t, b, fy, n, width_, out);
    }
    for (; u < width_; ++u)
      out[u] = static_cast<P>((t[u] * gy + b[u] * fy) >> (2 * n));
  }

  AffineSource<P> s_;
  Walk w_;
  int bits_;
  int width_;
  mirel::geometry::AffineRoutines simd_;
  int a_ = 0, b_ = 0, c_ = 0, d_ = 0;
  int stepK_ = 0;
  std::vector<std::int32_t> ix_;
  std::vector<std::int32_t> wx_;
  std::vector<H> rows_[2];
  int held_[2] = {-1, -1};
  int keep_ = -1;
  const P* last_ = nullptr;
  int lastRow_ = -1;
};

// Destination rows [y0, y1). Each row starts from the origin's position plus
// v row steps, so any band of rows gives the bytes of the whole call.
template <class P, class T>
void TransformRows(const AffineSource<P>& s, EROI<T>* dst, const Steps& st, int bits, int y0, int y1,
                   const mirel::geometry::AffineRoutines& simd) {
  const Walk w = WalkOf(st, bits);
  const int width = dst->GetWidth();
  if (Separable<P>::Applies(w, width)) {
    Separable<P> separable(s, w, bits, width, simd);
    if (separable.Run(dst, y0, y1)) return;
  }
  for (int v = y0; v < y1; ++v) {
    const AffineRow pos{w.x0 + static_cast<std::uint32_t>(v) * w.q, w.y0 + static_cast<std::uint32_t>(v) * w.s, w.p,
                        w.r};
    P* out = static_cast<P*>(dst->GetGenericImagePtr(0, v));
    if constexpr (std::is_same<P, std::uint8_t>::value) {
      if (simd.row != nullptr) {
        simd.row(s, bits, pos, out, width);
        continue;
      }
    }
    mirel::geometry::SampleRow(s, bits, pos, out, width);
  }
}

// All rows of dst, in bands unless dst overlaps the source it reads.
template <class P, class T>
void TransformBands(const EROI<T>* src, EROI<T>* dst, const Steps& st, int bits,
                    const mirel::geometry::AffineRoutines& simd) {
  const AffineSource<P> s = SourceOf<P>(src);
  const double cost = mirel::Overlap(src, dst) ? mirel::kOneBand : mirel::RowCost(dst->GetWidth(), bits == 0 ? 3 : 6);
  mirel::RunBands(dst->GetHeight(), cost,
                  [&](int y0, int y1) { TransformRows(s, dst, st, bits, y0, y1, simd); });
}

void Transform8(const EROI<EBW8>* src, EROI<EBW8>* dst, const Steps& st, int bits,
                const mirel::geometry::AffineRoutines& simd) {
  TransformBands<std::uint8_t>(src, dst, st, bits, simd);
}

void Transform16(const EROI<EBW16>* src, EROI<EBW16>* dst, const Steps& st, int bits) {
  TransformBands<std::uint16_t>(src, dst, st, bits, mirel::geometry::AffineRoutines{});
}

// ---------------------------------------------------------------- scale and rotate

// a = sx cos t, b = sy sin t, d = -sx sin t, e = sy cos t; c and f put the
// source pivot on the destination pivot.
void ScaleRotateMap(float px, float py, float qx, float qy, float sx, float sy, float angle, float k[6]) {
  const float t = EToRadians(angle);
  const float ct = mirel::Cos(t), st = mirel::Sin(t);
  const float a = sx * ct, b = sy * st, d = -sx * st, e = sy * ct;
  const float c = qx - (a * px + b * py);
  const float f = qy - (d * px + e * py);
  k[0] = a, k[1] = b, k[2] = c, k[3] = d, k[4] = e, k[5] = f;
}

template <class T>
void LinearTransformOf(const EROI<T>* src, const float k[6], EROI<T>* dst, int bits) {
  ImgLinearTransform(src, k[0], k[1], k[2], k[3], k[4], k[5], dst, bits);
}

template <class T>
void ScaleRotateTo(const EROI<T>* src, float px, float py, float qx, float qy, float sx, float sy, float angle,
                   EROI<T>* dst, int bits) {
  float k[6];
  ScaleRotateMap(px, py, qx, qy, sx, sy, angle, k);
  LinearTransformOf(src, k, dst, bits);
}

// Resamples a copy of the image back into it.
template <class T>
void ScaleRotateInPlace(mirel::Frame& frame, EROI<T>* image, float px, float py, float qx, float qy, float sx,
                        float sy, float angle, int bits) {
  if (!frame.NotVoid(image)) return;
  if (image->GetWidth() == 0 || image->GetHeight() == 0) return;
  EImage<T> copy;
  copy.SetSize(image->GetWidth(), image->GetHeight());
  if (EGetError() != E_OK) return;
  ImgCopy(image, &copy);
  if (EGetError() != E_OK) return;
  ScaleRotateTo(static_cast<const EROI<T>*>(&copy), px, py, qx, qy, sx, sy, angle, image, bits);
}

// ---------------------------------------------------------------- registration

// Direction of the vector (dx, dy), 0 when both are exactly 0.
float Direction(float dx, float dy) {
  if (dx == 0.0f && dy == 0.0f) return 0.0f;
  return static_cast<float>(std::atan2(static_cast<double>(dy), static_cast<double>(dx)));
}

template <class T>
void RegisterTwo(const EROI<T>* src, EROI<T>* dst, float s0x, float s0y, float s1x, float s1y, float d0x,
                 float d0y, float d1x, float d1y, int bits, int scaling) {
  const float dstDir = Direction(d1x - d0x, d1y - d0y);
  const float srcDir = Direction(s1x - s0x, s1y - s0y);
  const float angle = EFromRadians(dstDir - srcDir);
  float scale = 1.0f;
  if (scaling != 0) {
    const double dl = std::sqrt(static_cast<double>(d1x - d0x) * (d1x - d0x) + static_cast<double>(d1y - d0y) * (d1y - d0y));
    const double sl = std::sqrt(static_cast<double>(s1x - s0x) * (s1x - s0x) + static_cast<double>(s1y - s0y) * (s1y - s0y));
    scale = static_cast<float>(dl / sl);
  }
  ImgScaleRotate(src, s0x, s0y, d0x, d0y, scale, scale, -angle, dst, bits);
}

double Det3(const double m[3][3]) {
  return m[0][0] * (m[1][1] * m[2][2] - m[2][1] * m[1][2]) - m[0][1] * (m[1][0] * m[2][2] - m[2][0] * m[1][2]) +
         m[0][2] * (m[1][0] * m[2][1] - m[2][0] * m[1][1]);
}

// Finds u with sum over i of m[i][j] u[i] = rhs[j], by Cramer's rule in
// double precision, into rhs. A determinant of exactly 0 leaves rhs as it
// was and returns false.
bool SolveTransposed(const float m[3][3], float rhs[3]) {
  double a[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) a[i][j] = m[i][j];
  const double det = Det3(a);
  if (det == 0.0) return false;
  const double inv = 1.0 / det;
  double u[3];
  for (int i = 0; i < 3; ++i) {
    double b[3][3];
    for (int r = 0; r < 3; ++r)
      for (int j = 0; j < 3; ++j) b[r][j] = r == i ? static_cast<double>(rhs[j]) : a[r][j];
    u[i] = Det3(b) * inv;
  }
  for (int i = 0; i < 3; ++i) rhs[i] = static_cast<float>(u[i]);
  return true;
}

template <class T>
void RegisterThree(const char* label, const EROI<T>* src, EROI<T>* dst, const float s[6], const float d[6],
                   int bits) {
  mirel::Frame frame(label);
  const float m[3][3] = {{s[0], s[2], s[4]}, {s[1], s[3], s[5]}, {1.0f, 1.0f, 1.0f}};
  float k[6] = {d[0], d[2], d[4], d[1], d[3], d[5]};
  if (!frame.Require(SolveTransposed(m, k), E_ERROR_SINGULAR_SYSTEM)) return;
  SolveTransposed(m, k + 3);
  LinearTransformOf(src, k, dst, bits);
}

}  // namespace

// ---------------------------------------------------------------- exported

void ImgLinearTransform(const EROI<EBW8>* src, float a, float b, float c, float d, float e, float f,
                        EROI<EBW8>* dst, int interpolationBits) {
  mirel::Frame frame("ImgLinearTransform");
  if (!frame.NotVoid(src)) return;
  if (dst == nullptr || dst->Void()) return;  // no error, nothing written
  const float k[6] = {a, b, c, d, e, f};
  Steps steps;
  if (!Prepare(frame, src, k, interpolationBits, steps)) return;
  Transform8(src, dst, steps, interpolationBits, mirel::geometry::ActiveAffineRoutines());
}

void ImgLinearTransform(const EROI<EBW16>* src, float a, float b, float c, float d, float e, float f,
                        EROI<EBW16>* dst, int interpolationBits) {
  mirel::Frame frame("ImgLinearTransform (BW16)");
  if (!frame.NotVoid(src, dst)) return;
  const float k[6] = {a, b, c, d, e, f};
  Steps steps;
  if (!Prepare(frame, src, k, interpolationBits, steps)) return;
  Transform16(src, dst, steps, interpolationBits);
}

void ImgLinearTransform(const EROI<EC24>* src, float a, float b, float c, float d, float e, float f,
                        EROI<EC24>* dst, int interpolationBits) {
  mirel::Frame frame("ImgLinearTransform ( C24)");
  if (!frame.NotVoid(src, dst)) return;
  const float k[6] = {a, b, c, d, e, f};
  Steps steps;
  if (!Prepare(frame, src, k, interpolationBits, steps)) return;
  const mirel::geometry::AffineRoutines simd = mirel::geometry::ActiveAffineRoutines();
  mirel::ByComponent(src, dst, [&](const EROI<EBW8>* in, EROI<EBW8>* out) {
    Transform8(in, out, steps, interpolationBits, simd);
  });
}

short ImgScaleRotate(const EROI<EBW8>* src, float srcPivotX, float srcPivotY, float dstPivotX, float dstPivotY,
                     float scaleX, float scaleY, float angle, EROI<EBW8>* dst, int interpolationBits) {
  mirel::Frame frame("ImgScaleRotate");
  ScaleRotateTo(src, srcPivotX, srcPivotY, dstPivotX, dstPivotY, scaleX, scaleY, angle, dst, interpolationBits);
  return frame.Result();
}

void ImgScaleRotate(const EROI<EBW16>* src, float srcPivotX, float srcPivotY, float dstPivotX, float dstPivotY,
                    float scaleX, float scaleY, float angle, EROI<EBW16>* dst, int interpolationBits) {
  mirel::Frame frame("ImgScaleRotate (BW16)");
  ScaleRotateTo(src, srcPivotX, srcPivotY, dstPivotX, dstPivotY, scaleX, scaleY, angle, dst, interpolationBits);
}

void ImgScaleRotate(const EROI<EC24>* src, float srcPivotX, float srcPivotY, float dstPivotX, float dstPivotY,
                    float scaleX, float scaleY, float angle, EROI<EC24>* dst, int interpolationBits) {
  mirel::Frame frame("ImgScaleRotate ( C24)");
  ScaleRotateTo(src, srcPivotX, srcPivotY, dstPivotX, dstPivotY, scaleX, scaleY, angle, dst, interpolationBits);
}

short ImgScaleRotate(EROI<EBW8>* image, float srcPivotX, float srcPivotY, float dstPivotX, float dstPivotY,
                     float scaleX, float scaleY, float angle, int interpolationBits) {
  mirel::Frame frame("ImgScaleRotate");
  ScaleRotateInPlace(frame, image, srcPivotX, srcPivotY, dstPivotX, dstPivotY, scaleX, scaleY, angle,
                     interpolationBits);
  return frame.Result();
}

void ImgScaleRotate(EROI<EBW16>* image, float srcPivotX, float srcPivotY, float dstPivotX, float dstPivotY,
                    float scaleX, float scaleY, float angle, int interpolationBits) {
  mirel::Frame frame("ImgScaleRotate (BW16)");
  ScaleRotateInPlace(frame, image, srcPivotX, srcPivotY, dstPivotX, dstPivotY, scaleX, scaleY, angle,
                     interpolationBits);
}

#define MIREL_REGISTER_FORMS(T, LABEL3)                                                                        \
  void ImgRegister(const EROI<T>* src, EROI<T>* dst, float srcPivotX, float srcPivotY, float dstPivotX,      \
                   float dstPivotY, int interpolationBits) {                                                   \
    ImgScaleRotate(src, srcPivotX, srcPivotY, dstPivotX, dstPivotY, 1.0f, 1.0f, 0.0f, dst, interpolationBits); \
  }                                                                                                            \
  void ImgRegister(const EROI<T>* src, EROI<T>* dst, float s0x, float s0y, float s1x, float s1y, float d0x,    \
                   float d0y, float d1x, float d1y, int interpolationBits, int scaling) {                      \
    RegisterTwo(src, dst, s0x, s0y, s1x, s1y, d0x, d0y, d1x, d1y, interpolationBits, scaling);                 \
  }                                                                                                            \
  void ImgRegister(const EROI<T>* src, EROI<T>* dst, float s0x, float s0y, float s1x, float s1y, float s2x,    \
                   float s2y, float d0x, float d0y, float d1x, float d1y, float d2x, float d2y,                \
                   int interpolationBits) {                                                                    \
    const float s[6] = {s0x, s0y, s1x, s1y, s2x, s2y};                                                         \
    const float d[6] = {d0x, d0y, d1x, d1y, d2x, d2y};                                                         \
    RegisterThree(LABEL3, src, dst, s, d, interpolationBits);                                                  \
  }

MIREL_REGISTER_FORMS(EBW8, "ImgRegister ( BW8, 3 pivots)")
MIREL_REGISTER_FORMS(EBW16, "ImgRegister ( BW16, 3 pivots)")
MIREL_REGISTER_FORMS(EC24, "ImgRegister ( C24, 3 pivots)")

#undef MIREL_REGISTER_FORMS
