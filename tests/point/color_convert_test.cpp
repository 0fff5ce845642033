#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "point_support.h"

namespace {

using testsupport::Rng;

// Random widths that reach past two blocks of the widest path, so that
// every block count and row tail occurs.
int RandomWidth(Rng& rng) { return 1 + static_cast<int>(rng() % 140); }
int RandomHeight(Rng& rng) { return 1 + static_cast<int>(rng() % 4); }

// The model: dst(x, y) = f(src(x, y), old dst(x, y)), on every path.
template <class S, class D, class F>
void Check(F f, Rng& rng, const char* what) {
  for (int round = 0; round < 6; ++round) {
    pointtest::RoiPair<S, D> p(RandomWidth(rng), RandomHeight(rng), rng);
    p.ExpectOnEveryPath([&] { ImgConvert(&p.src, &p.dst); },
                        [&](int x, int y) { return f(p.src.GetPixel(x, y), *p.dst.GetImagePtr(x, y)); }, what);
  }
}

template <class T>
T RandomPixel(Rng& rng) {
  T p;
  for (size_t i = 0; i < sizeof(T); ++i) reinterpret_cast<unsigned char*>(&p)[i] = static_cast<unsigned char>(rng());
  return p;
}

unsigned Field(unsigned word, int at, int bits) { return (word >> at) & ((1u << bits) - 1u); }

TEST(ColorConvert, ColourFormatsOnRandomRois) {
  Rng rng(31);
  Check<EC15, EC24>([](EC15 p, EC24) {
    return EC24(static_cast<uint8_t>(Field(p.word, 0, 5) * 8), static_cast<uint8_t>(Field(p.word, 5, 5) * 8),
                static_cast<uint8_t>(Field(p.word, 10, 5) * 8));
  }, rng, "C15 to C24");
  Check<EC16, EC24>([](EC16 p, EC24) {
    return EC24(static_cast<uint8_t>(Field(p.word, 0, 5) * 8), static_cast<uint8_t>(Field(p.word, 5, 6) * 4),
                static_cast<uint8_t>(Field(p.word, 11, 5) * 8));
  }, rng, "C16 to C24");
  Check<EC24, EC15>([](EC24 p, EC15 old) {
    return EC15(static_cast<uint16_t>((old.word & 0x8000) | (p.c[0] / 8) | (p.c[1] / 8) * 32 | (p.c[2] / 8) * 1024));
  }, rng, "C24 to C15");
  Check<EC24, EC16>([](EC24 p, EC16) {
    return EC16(static_cast<uint16_t>((p.c[0] / 8) | (p.c[1] / 4) * 32 | (p.c[2] / 8) * 2048));
  }, rng, "C24 to C16");
  Check<EC24, EC24A>([](EC24 p, EC24A old) { return EC24A(p.c[0], p.c[1], p.c[2], old.alpha); }, rng, "C24 to C24A");
  Check<EC24A, EC24>([](EC24A p, EC24) { return EC24(p.c[0], p.c[1], p.c[2]); }, rng, "C24A to C24");
}

TEST(ColorConvert, ColourAndGreyOnRandomRois) {
  Rng rng(32);
  Check<EBW8, EC15>([](EBW8 p, EC15) { return EC15(p / 8u, p / 8u, p / 8u); }, rng, "BW8 to C15");
  Check<EBW8, EC16>([](EBW8 p, EC16) { return EC16(p / 8u, p / 4u, p / 8u); }, rng, "BW8 to C16");
  Check<EC15, EBW8>([](EC15 p, EBW8) {
    return EBW8(static_cast<uint8_t>((Field(p.word, 0, 5) + Field(p.word, 5, 5) + Field(p.word, 10, 5)) * 8 / 3));
  }, rng, "C15 to BW8");
  Check<EC16, EBW8>([](EC16 p, EBW8) {
    return EBW8(static_cast<uint8_t>((Field(p.word, 0, 5) * 8 + Field(p.word, 5, 6) * 4 + Field(p.word, 11, 5) * 8) / 3));
  }, rng, "C16 to BW8");
  Check<EBW8, EC24>([](EBW8 p, EC24) { return EC24(p, p, p); }, rng, "BW8 to C24");
  Check<EC24, EBW8>([](EC24 p, EBW8) { return EBW8(static_cast<uint8_t>((p.c[0] + p.c[1] + p.c[2]) * 85 / 256)); },
                    rng, "C24 to BW8");
}

// Float sources drawn around the interesting points: below 0, inside, at
// and above the limit, and on halves.
template <class F>
void FillFloats(EImage<F>& image, double limit, Rng& rng) {
  for (int y = 0; y < image.GetHeight(); ++y)
    for (int x = 0; x < image.GetWidth(); ++x) {
      double v;
      switch (rng() % 4) {
        case 0: v = -2.0 + (rng() % 400) / 100.0; break;                        // around 0
        case 1: v = limit - 2.0 + (rng() % 400) / 100.0; break;                 // around the limit
        case 2: v = std::floor(std::ldexp(static_cast<double>(rng()), -32) * limit) + 0.5; break;
        default: v = std::ldexp(static_cast<double>(rng()), -32) * limit * 1.5; break;
      }
      image.GetImagePtr(x, y)->value = static_cast<decltype(F{}.value)>(v);
    }
}

// Clamped rounding as documented, in the precision V of the source.
template <class V>
double Rounded(V v, double top) {
  if (v < V(0)) return 0;
  if (static_cast<double>(v) >= top + 1) return top;
  const double r = std::floor(static_cast<double>(static_cast<V>(v + V(0.5))));
  return r > top ? top : r;
}

template <class F, class D>
void CheckFromFloat(Rng& rng, const char* what) {
  using Bits = decltype(D{}.value);
  const double top = static_cast<double>(std::numeric_limits<Bits>::max());
  for (int round = 0; round < 6; ++round) {
    pointtest::RoiPair<F, D> p(RandomWidth(rng), RandomHeight(rng), rng);
    FillFloats(p.simg, top, rng);
    p.ExpectOnEveryPath([&] { ImgConvert(&p.src, &p.dst); },
                        [&](int x, int y) { return D(static_cast<Bits>(Rounded(p.src.GetPixel(x, y).value, top))); },
                        what);
  }
}

template <class S, class F>
void CheckToFloat(Rng& rng, const char* what) {
  using V = decltype(F{}.value);
  for (int round = 0; round < 6; ++round) {
    pointtest::RoiPair<S, F> p(RandomWidth(rng), RandomHeight(rng), rng);
    p.ExpectOnEveryPath([&] { ImgConvert(&p.src, &p.dst); },
                        [&](int x, int y) { return F(static_cast<V>(p.src.GetImagePtr(x, y)->value)); }, what);
  }
}

TEST(ColorConvert, FloatFormsOnRandomRois) {
  Rng rng(33);
  CheckFromFloat<EFLOAT32, EBW8>(rng, "F32 to BW8");
  CheckFromFloat<EFLOAT32, EBW16>(rng, "F32 to BW16");
  CheckFromFloat<EFLOAT32, EBW32>(rng, "F32 to BW32");
  CheckFromFloat<EFLOAT64, EBW8>(rng, "F64 to BW8");
  CheckFromFloat<EFLOAT64, EBW16>(rng, "F64 to BW16");
  CheckFromFloat<EFLOAT64, EBW32>(rng, "F64 to BW32");
  CheckToFloat<EBW8, EFLOAT32>(rng, "BW8 to F32");
  CheckToFloat<EBW16, EFLOAT32>(rng, "BW16 to F32");
  CheckToFloat<EBW32, EFLOAT32>(rng, "BW32 to F32");
  CheckToFloat<EBW8, EFLOAT64>(rng, "BW8 to F64");
  CheckToFloat<EBW16, EFLOAT64>(rng, "BW16 to F64");
  CheckToFloat<EBW32, EFLOAT64>(rng, "BW32 to F64");
}

// The fast conversions on borrowed buffers that end at the last pixel of
// each row, with no padding: the sanitizer build sees any access behind a
// row. Every path gives the scalar bytes.
TEST(ColorConvert, TightRowsOnEveryPath) {
  Rng rng(36);
  for (int w = 1; w <= 100; w += 3) {
    const int h = 2, n = w * h;
    std::vector<EC24> c(n), cOut(n);
    std::vector<EBW8> g(n), gOut(n);
    std::vector<EFLOAT32> fOut(n);
    for (int i = 0; i < n; ++i) c[i] = RandomPixel<EC24>(rng), g[i] = RandomPixel<EBW8>(rng);
    EImage<EC24> ci(c.data(), w, h, 3 * w), co(cOut.data(), w, h, 3 * w);
    EImage<EBW8> gi(g.data(), w, h, w), go(gOut.data(), w, h, w);
    EImage<EFLOAT32> fo(fOut.data(), w, h, 4 * w);
    std::vector<unsigned char> want[3];
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      ImgConvert(&ci, &go);
      ImgConvert(&gi, &co);
      ImgConvert(&gi, &fo);
      const std::vector<unsigned char> got[3] = {testsupport::Bytes(go), testsupport::Bytes(co), testsupport::Bytes(fo)};
      for (int k = 0; k < 3; ++k) {
        if (path < 0) want[k] = got[k];
        EXPECT_EQ(got[k], want[k]) << "width " << w << " path " << path << " form " << k;
      }
    }
  }
}

// One pixel through a conversion.
template <class S, class D>
D One(S value) {
  EImage<S> s(1, 1);
  EImage<D> d(1, 1);
  std::memset(d.GetImagePtr(0, 0), 0, sizeof(D));
  *s.GetImagePtr(0, 0) = value;
  ImgConvert(&s, &d);
  return *d.GetImagePtr(0, 0);
}

TEST(ColorConvert, WorkedNumbers) {
  const EC24 c = One<EC15, EC24>(EC15(31, 31, 31));
  EXPECT_EQ(c.c[0], 248);
  EXPECT_EQ(c.c[1], 248);
  EXPECT_EQ(c.c[2], 248);
  EXPECT_EQ((One<EC24, EBW8>(EC24(255, 255, 255)).value), 254);
  EXPECT_EQ((One<EFLOAT32, EBW8>(EFLOAT32(-0.1f)).value), 0);
  EXPECT_EQ((One<EFLOAT32, EBW8>(EFLOAT32(255.4f)).value), 255);
  EXPECT_EQ((One<EFLOAT32, EBW8>(EFLOAT32(254.6f)).value), 255);
  EXPECT_EQ((One<EFLOAT32, EBW8>(EFLOAT32(0.5f)).value), 1);
  EXPECT_EQ((One<EFLOAT64, EBW32>(EFLOAT64(4294967296.0)).value), 0xFFFFFFFFu);
  EXPECT_EQ((One<EFLOAT64, EBW32>(EFLOAT64(4294967295.7)).value), 0xFFFFFFFFu);
  EXPECT_EQ((One<EFLOAT64, EBW32>(EFLOAT64(3000000000.5)).value), 3000000001u);
  EXPECT_EQ((One<EBW32, EFLOAT32>(EBW32(0xFFFFFFFFu)).value), 4294967296.0f);
}

// Colour plus alpha, both ways.
TEST(ColorConvert, AlphaPlanes) {
  Rng rng(34);
  for (int round = 0; round < 4; ++round) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    EImage<EC24> cimg, cout;
    EImage<EBW8> aimg, aout;
    EImage<EC24A> dimg, back;
    EROI<EC24> c, co;
    EROI<EBW8> a, ao;
    EROI<EC24A> d;
    testsupport::PlaceRandom(cimg, c, w, h, rng);
    testsupport::PlaceRandom(aimg, a, w, h, rng);
    testsupport::PlaceRandom(dimg, d, w, h, rng);
    testsupport::PlaceRandom(cout, co, w, h, rng);
    testsupport::PlaceRandom(aout, ao, w, h, rng);
    testsupport::FillRandom(cimg, rng);
    testsupport::FillRandom(aimg, rng);
    ImgConvert(&c, &a, &d);
    ASSERT_EQ(EGetError(), E_OK);
    ImgConvert(&d, &co, &ao);
    ASSERT_EQ(EGetError(), E_OK);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const EC24A q = *d.GetImagePtr(x, y);
        ASSERT_EQ(std::memcmp(q.c, c.GetImagePtr(x, y)->c, 3), 0);
        ASSERT_EQ(q.alpha, a.GetPixel(x, y).value);
      }
    EXPECT_EQ(testsupport::Bytes(co), testsupport::Bytes(c));
    EXPECT_EQ(testsupport::Bytes(ao), testsupport::Bytes(a));
  }
}

TEST(ColorConvert, RefusedCallsLeaveDestinations) {
  EImage<EC24> c24(5, 4), c24small(4, 4), voidc24;
  EImage<EBW8> b8(5, 4), b8small(5, 3);
  EImage<EC24A> c24a(5, 4);
  EImage<EFLOAT32> f32(5, 4);
  EImage<EBW32> b32(4, 4);
  // A destination of the right size over an image emptied under it.
  EImage<EBW8> gone(10, 10);
  EROI<EBW8> voidDst(&gone, 0, 0, 5, 4);
  gone.SetSize(0, 0);
  Rng rng(35);
  testsupport::FillRandom(c24, rng);
  testsupport::FillRandom(b8, rng);
  testsupport::FillRandom(c24a, rng);
  const pointtest::Refusals expect(c24, c24small, b8, b8small, c24a, f32, b32);
  expect(E_ERROR_VOID_IMAGE, "ImgConvert ( C24 to BW8)", [&] { ImgConvert(&voidc24, &b8); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert ( C24 to BW8)", [&] { ImgConvert(&c24, &b8small); });
  expect(E_ERROR_VOID_IMAGE, "ImgConvert ( C24 to BW8)", [&] { ImgConvert(&c24, &voidDst); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert ( BW8 to C24)", [&] { ImgConvert(&b8, &c24small); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert (EROIFLOAT32 to EROIBW32)", [&] { ImgConvert(&f32, &b32); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert (EROIBW8 to EROIFLOAT32)", [&] { ImgConvert(&b8small, &f32); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert ( C24 to C24A with Alpha)", [&] { ImgConvert(&c24, &b8small, &c24a); });
  expect(E_ERROR_VOID_IMAGE, "ImgConvert ( C24 to C24A with Alpha)", [&] { ImgConvert(&c24, &voidDst, &c24a); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert ( C24A to C24 with Alpha)", [&] { ImgConvert(&c24a, &c24, &b8small); });
  expect(E_ERROR_VOID_IMAGE, "ImgConvert ( C24A to C24 with Alpha)", [&] { ImgConvert(&c24a, &c24, &voidDst); });
}

}  // namespace
