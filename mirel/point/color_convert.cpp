// Colour and float conversions: one frame, one pixel walk, the per-pixel
// formulas of color_convert.h, and block routines for the three conversions
// that carry whole frames in practice.
#include "mirel/point/color_convert.h"

#include <cstdint>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/prefetch_internal.h"
#include "mirel/point/color_convert_internal.h"

namespace {

using mirel::Rows;
using mirel::RowsOf;
using mirel::cvt::BlockFn;
using mirel::cvt::Blocks;
using U8 = unsigned char;
using U16 = unsigned short;

// The block routines for this call: none when the fast paths are off.
Blocks ActiveBlocks(int mmx) {
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    const int level = mirel::cpu::ActiveSimdLevel();
    if (level >= mirel::cpu::kAVX2) return mirel::cvt::BlocksAvx2();
    if (level >= mirel::cpu::kSSE2) return mirel::cvt::BlocksSse2();
  }
#else
  (void)mmx;
#endif
  return Blocks{};
}

// Rows [y0, y1): d[x] = f(s[x], d[x]), the old destination pixel being there
// for the formulas that keep some of its bits. A block routine, when given,
// does a prefix of each row.
template <class S, class D, class F>
void PixelRows(const Rows<const S>& s, const Rows<D>& d, int y0, int y1, F f, BlockFn block) {
  const int w = s.width;
  for (int y = y0; y < y1; ++y) {
    const S* sp = s.Row(y);
    D* dp = d.Row(y);
    mirel::PrefetchRowForWrite(d, y + 1, sizeof(D) * static_cast<std::size_t>(w));
    int x = block != nullptr ? block(reinterpret_cast<const U8*>(sp), reinterpret_cast<U8*>(dp), w) : 0;
    for (; x < w; ++x) dp[x] = f(sp[x], dp[x]);
  }
}

// Rows [y0, y1) of three images walked together: f(a[x], b[x], c[x]).
template <class A, class B, class C, class F>
void AlphaRows(const Rows<A>& a, const Rows<B>& b, const Rows<C>& c, int y0, int y1, F f) {
  for (int y = y0; y < y1; ++y) {
    A* ap = a.Row(y);
    B* bp = b.Row(y);
    C* cp = c.Row(y);
    for (int x = 0; x < a.width; ++x) f(ap[x], bp[x], cp[x]);
  }
}

// The frame of the one-source, one-destination forms.
template <class S, class D, class F>
void Convert(const char* label, const EROI<S>* src, EROI<D>* dst, F f, BlockFn Blocks::*fast = nullptr) {
  const int mmx = EGetMMX();
  mirel::Frame frame(label);
  if (!frame.NotVoid(src) || !frame.SameSize(src, dst) || !frame.NotVoid(dst)) return;
  const BlockFn block = fast != nullptr ? ActiveBlocks(mmx).*fast : nullptr;
  const Rows<const S> s = RowsOf(src);
  const Rows<D> d = RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, static_cast<double>(sizeof(S) + sizeof(D)),
                      [&](int y0, int y1) { PixelRows(s, d, y0, y1, f, block); });
}

// Float to an unsigned integer: below 0 gives 0, from top + 1 up gives top,
// otherwise the value plus one half, truncated, in the float's own precision.
template <class U, class F>
U RoundClamp(F v, U top) {
  if (v < F(0)) return U(0);
  if (v >= static_cast<F>(static_cast<double>(top) + 1.0)) return top;
  if (!(v == v)) return U(0);
  const unsigned long long r = static_cast<unsigned long long>(v + F(0.5));
  return r > top ? top : static_cast<U>(r);
}

template <class F, class D>
void FromFloat(const char* label, const EROI<F>* src, EROI<D>* dst) {
  using Bits = decltype(D{}.value);
  constexpr Bits top = static_cast<Bits>(~Bits{0});
  Convert(label, src, dst, [](F p, D) { return D(RoundClamp<Bits>(p.value, top)); });
}

template <class S, class F>
void ToFloat(const char* label, const EROI<S>* src, EROI<F>* dst, BlockFn Blocks::*fast = nullptr) {
  using Value = decltype(F{}.value);
  Convert(label, src, dst, [](S p, F) { return F(static_cast<Value>(p.value)); }, fast);
}

}  // namespace

// ---------------------------------------------------------------- colour formats

void ImgConvert(const EROI<EC15>* src, EROI<EC24>* dst) {
  Convert("ImgConvert ( C15 to C24)", src, dst, [](EC15 p, EC24) {
    return EC24(static_cast<U8>(p[0] << 3), static_cast<U8>(p[1] << 3), static_cast<U8>(p[2] << 3));
  });
}

void ImgConvert(const EROI<EC16>* src, EROI<EC24>* dst) {
  Convert("ImgConvert ( C16 to C24)", src, dst, [](EC16 p, EC24) {
    return EC24(static_cast<U8>(p[0] << 3), static_cast<U8>(p[1] << 2), static_cast<U8>(p[2] << 3));
  });
}

void ImgConvert(const EROI<EC24>* src, EROI<EC15>* dst) {
  Convert("ImgConvert ( C24 to C15)", src, dst, [](EC24 p, EC15 old) {
    return EC15(static_cast<U16>((old.word & 0x8000u) | ((p.c[2] >> 3) << 10) | ((p.c[1] >> 3) << 5) |
                                 (p.c[0] >> 3)));
  });
}

void ImgConvert(const EROI<EC24>* src, EROI<EC16>* dst) {
  Convert("ImgConvert ( C24 to C16)", src, dst,
          [](EC24 p, EC16) { return EC16(static_cast<U16>(((p.c[2] >> 3) << 11) | ((p.c[1] >> 2) << 5) | (p.c[0] >> 3))); });
}

void ImgConvert(const EROI<EC24>* src, EROI<EC24A>* dst) {
  Convert("ImgConvert ( C24 to C24A)", src, dst,
          [](EC24 p, EC24A old) { return EC24A(p.c[0], p.c[1], p.c[2], old.alpha); });
}

void ImgConvert(const EROI<EC24A>* src, EROI<EC24>* dst) {
  Convert("ImgConvert ( C24A to C24)", src, dst, [](EC24A p, EC24) { return EC24(p.c[0], p.c[1], p.c[2]); });
}

void ImgConvert(const EROI<EC24>* src, const EROI<EBW8>* alpha, EROI<EC24A>* dst) {
  mirel::Frame frame("ImgConvert ( C24 to C24A with Alpha)");
  if (!frame.NotVoid(src, alpha) || !frame.SameSize(src, alpha) || !frame.SameSize(src, dst) ||
      !frame.NotVoid(dst))
    return;
  const Rows<const EC24> s = RowsOf(src);
  const Rows<const EBW8> a = RowsOf(alpha);
  const Rows<EC24A> d = RowsOf(dst);
  mirel::RowwiseBands(dst, {src, alpha}, 8.0, [&](int y0, int y1) {
    AlphaRows(s, a, d, y0, y1, [](const EC24& c, const EBW8& v, EC24A& out) { out = EC24A(c.c[0], c.c[1], c.c[2], v.value); });
  });
}

void ImgConvert(const EROI<EC24A>* src, EROI<EC24>* dst, EROI<EBW8>* alpha) {
  mirel::Frame frame("ImgConvert ( C24A to C24 with Alpha)");
  if (!frame.NotVoid(src) || !frame.SameSize(src, dst) || !frame.SameSize(src, alpha) ||
      !frame.NotVoid(dst, alpha))
    return;
  // The source's pixel type is apart from both destinations', so rows are
  // independent whatever the images.
  const Rows<const EC24A> s = RowsOf(src);
  const Rows<EC24> d = RowsOf(dst);
  const Rows<EBW8> a = RowsOf(alpha);
  mirel::RowwiseBands(dst, {src}, 8.0, [&](int y0, int y1) {
    AlphaRows(s, d, a, y0, y1, [](const EC24A& p, EC24& c, EBW8& v) {
      c = EC24(p.c[0], p.c[1], p.c[2]);
      v = EBW8(p.alpha);
    });
  });
}

// ---------------------------------------------------------------- colour and grey

void ImgConvert(const EROI<EBW8>* src, EROI<EC15>* dst) {
  Convert("ImgConvert ( BW8 to C15)", src, dst, [](EBW8 p, EC15) {
    const unsigned v = p.value >> 3u;
    return EC15(v, v, v);
  });
}

void ImgConvert(const EROI<EBW8>* src, EROI<EC16>* dst) {
  Convert("ImgConvert ( BW8 to C16)", src, dst,
          [](EBW8 p, EC16) { return EC16(p.value >> 3u, p.value >> 2u, p.value >> 3u); });
}

void ImgConvert(const EROI<EC15>* src, EROI<EBW8>* dst) {
  Convert("ImgConvert ( C15 to BW8)", src, dst,
          [](EC15 p, EBW8) { return EBW8(static_cast<U8>(((p[0] + p[1] + p[2]) * 8u) / 3u)); });
}

void ImgConvert(const EROI<EC16>* src, EROI<EBW8>* dst) {
  Convert("ImgConvert ( C16 to BW8)", src, dst,
          [](EC16 p, EBW8) { return EBW8(static_cast<U8>(((p[0] << 3) + (p[1] << 2) + (p[2] << 3)) / 3u)); });
}

void ImgConvert(const EROI<EBW8>* src, EROI<EC24>* dst) {
  Convert("ImgConvert ( BW8 to C24)", src, dst, [](EBW8 p, EC24) { return EC24(p.value, p.value, p.value); },
          &Blocks::bw8ToC24);
}

void ImgConvert(const EROI<EC24>* src, EROI<EBW8>* dst) {
  Convert("ImgConvert ( C24 to BW8)", src, dst,
          [](EC24 p, EBW8) { return EBW8(static_cast<U8>(((p.c[0] + p.c[1] + p.c[2]) * 85u) >> 8)); },
          &Blocks::c24ToBw8);
}

// ---------------------------------------------------------------- float and integer grey

void ImgConvert(const EROI<EFLOAT32>* src, EROI<EBW8>* dst) {
  FromFloat("ImgConvert (EROIFLOAT32 to EROIBW8)", src, dst);
}
void ImgConvert(const EROI<EFLOAT32>* src, EROI<EBW16>* dst) {
  FromFloat("ImgConvert (EROIFLOAT32 to EROIBW16)", src, dst);
}
void ImgConvert(const EROI<EFLOAT32>* src, EROI<EBW32>* dst) {
  FromFloat("ImgConvert (EROIFLOAT32 to EROIBW32)", src, dst);
}
void ImgConvert(const EROI<EFLOAT64>* src, EROI<EBW8>* dst) {
  FromFloat("ImgConvert (EROIFLOAT64 to EROIBW8)", src, dst);
}
void ImgConvert(const EROI<EFLOAT64>* src, EROI<EBW16>* dst) {
  FromFloat("ImgConvert (EROIFLOAT64 to EROIBW16)", src, dst);
}
void ImgConvert(const EROI<EFLOAT64>* src, EROI<EBW32>* dst) {
  FromFloat("ImgConvert (EROIFLOAT64 to EROIBW32)", src, dst);
}

void ImgConvert(const EROI<EBW8>* src, EROI<EFLOAT32>* dst) {
  ToFloat("ImgConvert (EROIBW8 to EROIFLOAT32)", src, dst, &Blocks::bw8ToF32);
}
void ImgConvert(const EROI<EBW16>* src, EROI<EFLOAT32>* dst) {
  ToFloat("ImgConvert (EROIBW16 to EROIFLOAT32)", src, dst);
}
void ImgConvert(const EROI<EBW32>* src, EROI<EFLOAT32>* dst) {
  ToFloat("ImgConvert (EROIBW32 to EROIFLOAT32)", src, dst);
}
void ImgConvert(const EROI<EBW8>* src, EROI<EFLOAT64>* dst) {
  ToFloat("ImgConvert (EROIBW8 to EROIFLOAT64)", src, dst);
}
void ImgConvert(const EROI<EBW16>* src, EROI<EFLOAT64>* dst) {
  ToFloat("ImgConvert (EROIBW16 to EROIFLOAT64)", src, dst);
}
void ImgConvert(const EROI<EBW32>* src, EROI<EFLOAT64>* dst) {
  ToFloat("ImgConvert (EROIBW32 to EROIFLOAT64)", src, dst);
}
