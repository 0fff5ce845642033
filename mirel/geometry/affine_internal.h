// Internal pieces of the affine resampling: the source view, the per-pixel
// sampling in 16.16 fixed point, and the block routines of each instruction
// set for 8-bit images.
//
// Positions are signed 32-bit values with 16 fraction bits. They advance by
// 32-bit additions that wrap around (done on unsigned values, so the wrap is
// defined); whatever a position wraps to, the zone tests below keep every
// read inside the source. That holds as long as (width << 16) + 32768 and
// (height << 16) + 32768 fit in 31 bits, which is why sources of 32768
// pixels or more in either direction are refused before the loop.
//
// The sampling functions have internal linkage: each instruction-set file
// compiles its own copy with its own flags, so no copy built for a wider
// instruction set can be picked by the linker for the scalar code.
#ifndef MIREL_GEOMETRY_AFFINE_INTERNAL_H_
#define MIREL_GEOMETRY_AFFINE_INTERNAL_H_

#include <cstddef>
#include <cstdint>

namespace mirel {
namespace geometry {

// Largest source side the fixed-point loop accepts.
constexpr int kMaxAffineSide = 32767;

// A source as the pixel loop sees it.
template <class P>
struct AffineSource {
  const unsigned char* base;  // pixel (0, 0)
  std::ptrdiff_t pitch;       // bytes from one row to the next
  int width;
  int height;
  std::int32_t W;  // width << 16
  std::int32_t H;  // height << 16
  P At(int x, int y) const { return reinterpret_cast<const P*>(base + pitch * y)[x]; }
};

// The running position of a destination row: the source position of its
// first pixel and the steps per destination column.
struct AffineRow {
  std::uint32_t x;
  std::uint32_t y;
  std::uint32_t p;  // source x step per column
  std::uint32_t r;  // source y step per column
};

namespace {

inline std::int32_t AsSigned(std::uint32_t v) { return static_cast<std::int32_t>(v); }

// A (N - f) + B f with N = 2^n, by shift and add from the top fraction bit
// down: start with 2t (t = B when the bit is set, A otherwise); for each
// further bit but the last add t and double; for the last bit add B + A
// when it is set and 2A when it is not.
template <int n>
inline std::uint32_t Blend(std::uint32_t A, std::uint32_t B, std::uint32_t f) {
  std::uint32_t acc = 2 * (((f >> (n - 1)) & 1u) ? B : A);
  for (int k = n - 2; k >= 1; --k) acc = 2 * (acc + (((f >> k) & 1u) ? B : A));
  return acc + ((f & 1u) ? B + A : 2 * A);
}

// Nearest neighbour at (x, y): the pixel under the position, or 0 outside.
template <class P>
inline P SampleNearest(const AffineSource<P>& s, std::int32_t x, std::int32_t y) {
  if (x < 0 || x >= s.W || y < 0 || y >= s.H) return P{};
  return s.At(x >> 16, y >> 16);
}

// Bilinear with n fraction bits, the position already moved by half a
// pixel. Each axis is outside, on an edge (one pixel, no interpolation) or
// inside (two pixels).
template <int n, class P>
inline P SampleBilinear(const AffineSource<P>& s, std::int32_t x, std::int32_t y) {
  if (x < 32768 || x >= s.W + 32768 || y < 32768 || y >= s.H + 32768) return P{};
  constexpr std::uint32_t kMask = (1u << n) - 1;
  const bool edgeX = x < 65536 || x >= s.W;
  const bool edgeY = y < 65536 || y >= s.H;
  const int ix = x < 65536 ? 0 : (x >> 16) - 1;
  const int iy = y < 65536 ? 0 : (y >> 16) - 1;
  const std::uint32_t fx = (static_cast<std::uint32_t>(x) >> (16 - n)) & kMask;
  const std::uint32_t fy = (static_cast<std::uint32_t>(y) >> (16 - n)) & kMask;
  const P* row = reinterpret_cast<const P*>(s.base + s.pitch * iy);
  if (edgeX && edgeY) return row[ix];
  if (edgeX) {
    const P* below = reinterpret_cast<const P*>(s.base + s.pitch * (iy + 1));
    return static_cast<P>(Blend<n>(row[ix], below[ix], fy) >> n);
  }
  if (edgeY) return static_cast<P>(Blend<n>(row[ix], row[ix + 1], fx) >> n);
  const P* below = reinterpret_cast<const P*>(s.base + s.pitch * (iy + 1));
  const std::uint32_t top = Blend<n>(row[ix], row[ix + 1], fx);
  const std::uint32_t bottom = Blend<n>(below[ix], below[ix + 1], fx);
  return static_cast<P>(Blend<n>(top, bottom, fy) >> (2 * n));
}

// `count` pixels of a destination row, one by one. `bits` is 0, 4 or 8.
template <class P>
inline void SampleRow(const AffineSource<P>& s, int bits, AffineRow pos, P* out, int count) {
  std::uint32_t x = pos.x, y = pos.y;
  switch (bits) {
    case 0:
      for (int u = 0; u < count; ++u, x += pos.p, y += pos.r) out[u] = SampleNearest(s, AsSigned(x), AsSigned(y));
      break;
    case 4:
      for (int u = 0; u < count; ++u, x += pos.p, y += pos.r)
        out[u] = SampleBilinear<4>(s, AsSigned(x), AsSigned(y));
      break;
    default:
      for (int u = 0; u < count; ++u, x += pos.p, y += pos.r)
        out[u] = SampleBilinear<8>(s, AsSigned(x), AsSigned(y));
      break;
  }
}

}  // namespace

// A whole 8-bit destination row by blocks of pixels: blocks whose every
// pixel lies well inside the source are computed across the lanes, the
// others and the tail pixel by pixel. The same bytes as SampleRow.
using AffineRowFn = void (*)(const AffineSource<std::uint8_t>& s, int bits, AffineRow pos,
                             std::uint8_t* out, int count);

// The separable form (maps without rotation or shear) gathers columns of
// one 8-bit source row through a table of column indices. Each routine
// starts at column u0, stops before u1 or at the first block whose 4-byte
// reads would pass column width - 1 (the indices grow with u), and returns
// the first column not done.
//   HorizontalFn: h[u] = row[ix[u]] (N - f) + row[ix[u] + 1] f, with the
//                 weights packed as wx[u] = (N - f) | f << 16.
//   NearestFn:    out[u] = row[ix[u]].
using HorizontalFn = int (*)(const std::uint8_t* row, int width, const std::int32_t* ix, const std::int32_t* wx,
                             int u0, int u1, std::uint16_t* h);
using NearestFn = int (*)(const std::uint8_t* row, int width, const std::int32_t* ix, int u0, int u1,
                          std::uint8_t* out);

//   StepFn:       h[j] = at[k j] g + at[k j + 1] f for j in [0, count), k
//                 1 or 2 (a whole step, so one fraction for every column).
//   VerticalFn:   out[u] = (t[u] (N - fy) + b[u] fy) >> 2n, n 4 or 8.
// Both return the first index not done; every read lies in the ranges named.
using StepFn = int (*)(const std::uint8_t* at, int k, std::uint32_t g, std::uint32_t f, int count,
                       std::uint16_t* h);
using VerticalFn = int (*)(const std::uint16_t* t, const std::uint16_t* b, std::uint32_t fy, int n, int count,
                           std::uint8_t* out);

//   HalvesFn:     out[j] = (r0[2j] + r0[2j + 1] + r1[2j] + r1[2j + 1]) >> 2,
//                 the bilinear result when both fractions are one half.
using HalvesFn = int (*)(const std::uint8_t* r0, const std::uint8_t* r1, int count, std::uint8_t* out);

struct AffineRoutines {
  AffineRowFn row;
  HorizontalFn horizontal;  // may be null
  NearestFn nearest;        // may be null
  StepFn step;              // may be null
  VerticalFn vertical;      // may be null
  HalvesFn halves;          // may be null
};

#if defined(MIREL_X86_SIMD)
AffineRoutines Sse2AffineRoutines();
AffineRoutines Avx2AffineRoutines();
AffineRoutines Avx512AffineRoutines();
#endif

// The routines for the calling thread's fast-path setting; all null when
// the scalar path must run. Reads EGetMMX().
AffineRoutines ActiveAffineRoutines();

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_AFFINE_INTERNAL_H_
