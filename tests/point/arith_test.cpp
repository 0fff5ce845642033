// ImgCopy and ImgOper against a reference model, on every path.
#include <algorithm>
#include <cstring>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

#include "point_support.h"

namespace {

using testsupport::Rng;
using u8 = unsigned char;
using Bytes = std::vector<u8>;
using Op = ARITH_LOGIC_OPERATIONS;

Op AsOp(int v) { return static_cast<Op>(v); }

bool In(int v, std::initializer_list<int> l) { return std::find(l.begin(), l.end(), v) != l.end(); }

// ------------------------------------------------------------ model

// The 16-bit scaled divide: form 0 image by image, 1 image by constant,
// 2 constant by image.
uint32_t Ref16ScaledDivide(int form, uint32_t a, uint32_t b) {
  if (b == 0) return 65535;
  if (form == 0) return std::min<uint32_t>((a << 8) / b, 65535);
  if (form == 1) return std::min<uint64_t>((uint64_t{a} << 16) / b, 65535);
  const uint64_t v = uint64_t{a} << (16 / b);
  if (v <= 65535) return static_cast<uint32_t>(v);
  return (v & 0x80000000u) ? 0 : 65535;
}

// The value of `op` on unsigned a and b, M the pixel's maximum; -1 where the
// operation leaves the destination pixel as it was.
int64_t Ref(int op, uint32_t a, uint32_t b, uint32_t M, int form = 0) {
  const uint64_t A = a, B = b;
  switch (op) {
    case 2: return std::min<uint64_t>(A + B, M);
    case 3: return a >= b ? a - b : 0;
    case 4: return std::min<uint64_t>(A * B, M);
    case 5: return b == 0 ? M : a / b;
    case 6: return b == 0 ? 0 : a % b;
    case 7: return (A << (b % 32)) & M;
    case 8: return a >> (b % 32);
    case 9: return (A + B) / 2;
    case 10: return (A + (M - b)) / 2;
    case 11: return (A * B) >> (M == 255 ? 8 : 16);
    case 12:
      if (M != 255) return Ref16ScaledDivide(form, a, b);
      return b == 0 ? 255 : std::min<uint64_t>(A * 256 / B, 255);
    case 13: return a & b;
    case 14: return a | b;
    case 15: return a ^ b;
    case 16: return (a && b) ? M : 0;
    case 17: return (a || b) ? M : 0;
    case 18: return (!a != !b) ? M : 0;
    case 19: return std::min(a, b);
    case 20: return std::max(a, b);
    case 21: return a == 0 ? int64_t{b} : -1;
    case 22: return a != 0 ? int64_t{b} : -1;
    case 23: return a == b ? M : 0;
    case 24: return a != b ? M : 0;
    case 25: return a >= b ? M : 0;
    case 26: return a <= b ? M : 0;
    case 27: return a > b ? M : 0;
    case 28: return a < b ? M : 0;
    case 33: return a > b ? a - b : b - a;
  }
  ADD_FAILURE() << "no model for " << op;
  return 0;
}

// The operations each form accepts (see ExpectedCode).
enum Kind {
  kConstOnly, kUnary01, kUnary0134, kOverlayOnly, kConstImage, kImageConst, kImageImage, kImageImage16, kDepth8, kDepth16
};

// The code that a form gives for `op`: 1003 from its list, 32767 from a
// worker without a case, else 0.
int ExpectedCode(Kind kind, int op) {
  const bool formula = (op >= 2 && op <= 28) || op == 33;
  switch (kind) {
    case kConstOnly: return op == 0 ? 0 : 1003;
    case kUnary01: return In(op, {0, 1}) ? 0 : 1003;
    case kUnary0134: return In(op, {0, 1, 34}) ? 0 : 1003;
    case kOverlayOnly: return op == 34 ? 0 : 1003;
    case kConstImage: return In(op, {7, 8, 16, 17, 18, 21, 22}) ? 1003 : formula ? 0 : 32767;
    case kImageConst: return In(op, {16, 17, 18}) ? 1003 : formula ? 0 : 32767;
    case kImageImage: return In(op, {7, 8}) ? 1003 : formula || op == 34 ? 0 : 32767;
    case kImageImage16: return In(op, {7, 8}) ? 1003 : formula ? 0 : 32767;
    case kDepth8: return In(op, {2, 3, 4, 5}) ? 0 : 1003;
    case kDepth16: return In(op, {2, 3, 4, 5, 29, 30}) ? 0 : 1003;
  }
  return -1;
}

// ------------------------------------------------------------ images

template <class T> constexpr int Comps() { return sizeof(T) == 3 ? 3 : 1; }
template <class T> constexpr uint32_t Max() { return sizeof(T) == 2 ? 65535 : 255; }
uint32_t Comp(EBW8 v, int) { return v.value; }
uint32_t Comp(EBW16 v, int) { return v.value; }
uint32_t Comp(EC24 v, int k) { return v.c[k]; }

// An image with a ROI at a random place, filled with random bytes; `sparse`
// draws the pixel bytes from a few values so that zeros and ties abound.
template <class T>
struct Pic {
  EImage<T> image;
  EROI<T> roi;
  Pic(int w, int h, Rng& rng, bool sparse) {
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
    if (!sparse) return;
    u8* p = reinterpret_cast<u8*>(image.GetImagePtr(0, 0));
    // Bytes 0x00, 0x01, 0x80, 0xFF make 16-bit values 0, 1, 255, 256,
    // 32768, 65535 and their mixtures.
    static const u8 kValues[] = {0, 0, 0, 1, 2, 0x80, 0x7F, 0xFE, 0xFF};
    const size_t n = testsupport::BufferBytes(image);
    for (size_t i = 0; i < n; ++i) p[i] = kValues[rng() % sizeof kValues];
  }
  size_t Off(int x, int y) const {
    return static_cast<size_t>(reinterpret_cast<const u8*>(roi.GetImagePtr(x, y)) -
                               reinterpret_cast<const u8*>(image.GetImagePtr(0, 0)));
  }
  // Component k of pixel (x, y), read now.
  uint32_t At(int x, int y, int k = 0) const {
    const u8* p = reinterpret_cast<const u8*>(roi.GetImagePtr(x, y));
    return sizeof(T) == 2 ? static_cast<uint32_t>(p[0] | (p[1] << 8)) : p[k];
  }
  bool Any(int x, int y) const { return At(x, y, 0) || At(x, y, 1) || At(x, y, 2); }
  // Offset one past the image's last pixel.
  size_t End() const {
    return static_cast<size_t>(reinterpret_cast<const u8*>(image.GetImagePtr(image.GetWidth(), image.GetHeight() - 1)) -
                               reinterpret_cast<const u8*>(image.GetImagePtr(0, 0)));
  }
};

using Model = std::function<void(Bytes&)>;

// A model that writes f(x, y, k) into component k of every destination
// pixel; a negative value leaves it alone.
template <class D, class F>
Model PerPixel(const Pic<D>& d, F f) {
  return [&d, f](Bytes& e) {
    for (int y = 0; y < d.roi.GetHeight(); ++y)
      for (int x = 0; x < d.roi.GetWidth(); ++x)
        for (int k = 0; k < Comps<D>(); ++k) {
          const int64_t v = f(x, y, k);
          if (v < 0) continue;
          const size_t off = d.Off(x, y) + k;
          e[off] = static_cast<u8>(v);
          if (sizeof(D) == 2) e[off + 1] = static_cast<u8>(v >> 8);
        }
  };
}

// Runs `run` on the current path and checks code, label and bytes. `model`
// fills the expected buffer (a snapshot of the destination image before the
// call); it runs before `run`, when the sources are as they were.
template <class D>
void Check(const std::string& label, int code, Pic<D>& dst, const std::function<void()>& run, const Model& model) {
  const Bytes before = testsupport::Snapshot(dst.image);
  Bytes expected = before;
  if (code == 0) model(expected);
  ESetError(E_ERROR_INTERNAL);  // stale state: the call must clear it
  run();
  ASSERT_EQ(static_cast<int>(EGetError()), code);
  EXPECT_STREQ(EGetErrorTrace(), code != 0 ? label.c_str() : "");
  EXPECT_EQ(testsupport::Snapshot(dst.image), expected) << label << (code != 0 ? ": destination touched" : "");
}

int RandomWidth(Rng& rng) { return rng() % 5 == 0 ? 71 + static_cast<int>(rng() % 230) : 1 + static_cast<int>(rng() % 70); }
int RandomHeight(Rng& rng) { return 1 + static_cast<int>(rng() % 3); }
u8 RandomByte(Rng& rng) {
  static const u8 kPicks[] = {0, 1, 2, 7, 8, 9, 16, 31, 32, 33, 127, 128, 254, 255};
  return rng() % 2 ? kPicks[rng() % sizeof kPicks] : static_cast<u8>(rng());
}
template <class T> T RandomPixel(Rng& rng);
template <> EBW8 RandomPixel<EBW8>(Rng& rng) { return RandomByte(rng); }
template <> EC24 RandomPixel<EC24>(Rng& rng) { return EC24(RandomByte(rng), RandomByte(rng), RandomByte(rng)); }
template <> EBW16 RandomPixel<EBW16>(Rng& rng) {
  static const uint16_t kPicks[] = {0, 1, 2, 3, 8, 15, 16, 17, 31, 32, 255, 256, 32767, 32768, 65534, 65535};
  return rng() % 2 ? kPicks[rng() % 16] : static_cast<uint16_t>(rng());
}

// Runs body(op, rng) for every operation from 0 to 40, `trials` times, on
// every path.
template <class Body>
void ForEveryOp(int trials, uint32_t seed, Body body) {
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    Rng rng(seed);
    for (int op = 0; op <= 40; ++op) {
      for (int t = 0; t < trials; ++t) {
        SCOPED_TRACE("path " + std::to_string(path) + " op " + std::to_string(op) + " trial " + std::to_string(t));
        body(op, rng);
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
}

constexpr int kTrials = 6;

// ------------------------------------------------------------ one pixel type

// Every ImgCopy and ImgOper form whose sources and destination share the
// pixel type T. A third of the two-source calls write over their first
// source, which must give what a separate destination gets.
template <class T>
void SameTypeForms(uint32_t seed, const std::string& n, const char* unary_label) {
  const uint32_t M = Max<T>();
  const bool colour = Comps<T>() == 3;
  ForEveryOp(kTrials, seed, [&](int op, Rng& rng) {
    // With operation 34 the rows stay narrow, so the two bytes the byte form
    // reaches behind a row lie in the row's padding.
    const int w = op == 34 ? 1 + static_cast<int>(rng() % 70) : RandomWidth(rng), h = RandomHeight(rng);
    const bool sparse = rng() % 2;
    Pic<T> a(w, h, rng, sparse), b(w, h, rng, sparse), d(w, h, rng, false);
    const T c = RandomPixel<T>(rng);
    Pic<T>& out = rng() % 3 == 0 ? a : d;
    Check("", 0, d, [&] { ImgCopy(c, &d.roi); }, PerPixel(d, [&](int, int, int k) { return Comp(c, k); }));
    Check("", 0, d, [&] { ImgCopy(&a.roi, &d.roi); }, PerPixel(d, [&](int x, int y, int k) { return a.At(x, y, k); }));
    Check("ImgOper ( " + n + " Const to Image)", ExpectedCode(kConstOnly, op), d, [&] { ImgOper(AsOp(op), c, &d.roi); },
          PerPixel(d, [&](int, int, int k) { return Comp(c, k); }));
    Check(unary_label, ExpectedCode(colour ? kUnary0134 : kUnary01, op), d, [&] { ImgOper(AsOp(op), &a.roi, &d.roi); },
          PerPixel(d, [&](int x, int y, int k) -> int64_t {
            const int64_t v = a.At(x, y, k);
            return op == 0 ? v : op == 1 ? M - v : a.Any(x, y) ? v : -1;
          }));
    Check("ImgOper ( " + n + " Const, Image to Image)", ExpectedCode(kConstImage, op), d,
          [&] { ImgOper(AsOp(op), c, &b.roi, &d.roi); },
          PerPixel(d, [&](int x, int y, int k) { return Ref(op, Comp(c, k), b.At(x, y, k), M, 2); }));
    Check("ImgOper ( " + n + " Image, Const to Image)", ExpectedCode(kImageConst, op), out,
          [&] { ImgOper(AsOp(op), &a.roi, c, &out.roi); },
          PerPixel(out, [&](int x, int y, int k) { return Ref(op, a.At(x, y, k), Comp(c, k), M, 1); }));
    Model model = PerPixel(out, [&](int x, int y, int k) -> int64_t {
      if (op == 34) return b.Any(x, y) ? b.At(x, y, k) : a.At(x, y, k);
      return Ref(op, a.At(x, y, k), b.At(x, y, k), M, 0);
    });
    const Bytes sa = testsupport::Snapshot(a.image), sb = testsupport::Snapshot(b.image);
    if (op == 34 && !colour) {
      // The byte form reads its rows as triples, reaching up to two bytes
      // behind the row but never past the last pixel of any of the three
      // images (bytes there are neither read nor written, those of `b`
      // count as 0): model them from the images' own buffers.
      model = [&](Bytes& e) {
        for (int y = 0; y < h; ++y)
          for (int i = 0; i < w; i += 3) {
            const size_t oa = a.Off(0, y) + i, ob = b.Off(0, y) + i, od = out.Off(0, y) + i;
            const size_t n = std::min<size_t>({3, a.End() - oa, b.End() - ob, out.End() - od});
            bool any = false;
            for (size_t k = 0; k < n; ++k) any = any || sb[ob + k];
            for (size_t k = 0; k < n; ++k) e[od + k] = any ? sb[ob + k] : sa[oa + k];
          }
      };
    }
    Check("ImgOper ( " + n + " Image, Image to Image)", ExpectedCode(sizeof(T) == 2 ? kImageImage16 : kImageImage, op),
          out, [&] { ImgOper(AsOp(op), &a.roi, &b.roi, &out.roi); }, model);
  });
}

TEST(Oper, Grey8Forms) { SameTypeForms<EBW8>(3, "BW8", "ImgOper ( BW8 Image to Image)"); }
TEST(Oper, ColourForms) { SameTypeForms<EC24>(11, "C24", "ImgOper ( C24 Image to Image)"); }
TEST(Oper, Grey16Forms) { SameTypeForms<EBW16>(20, "BW16", "ImgOper (BW16 Image to Image)"); }

// ------------------------------------------------------------ mixed types

TEST(Oper, MixedTypeForms) {
  ForEveryOp(kTrials, 12, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    const bool sparse = rng() % 2;
    Pic<EC24> a(w, h, rng, sparse), b(w, h, rng, sparse), d(w, h, rng, false);
    Pic<EBW8> g(w, h, rng, sparse), g2(w, h, rng, sparse);
    const EC24 colour = RandomPixel<EC24>(rng);
    ImgSetOverlayColor(colour);
    Pic<EC24>& out = rng() % 3 == 0 ? a : d;
    Check("ImgOper ( BW8 Image to C24 Image)", ExpectedCode(kUnary0134, op), d,
          [&] { ImgOper(AsOp(op), &g.roi, &d.roi); },
          PerPixel(d, [&](int x, int y, int k) -> int64_t {
            const int64_t v = g.At(x, y);
            return op == 0 ? v : op == 1 ? 255 - v : v != 0 ? colour.c[k] : -1;
          }));
    Check("ImgOper ( BW8 Image, BW8 Image to C24 Image)", ExpectedCode(kOverlayOnly, op), d,
          [&] { ImgOper(AsOp(op), &g.roi, &g2.roi, &d.roi); },
          PerPixel(d, [&](int x, int y, int k) { return g2.At(x, y) != 0 ? colour.c[k] : g.At(x, y); }));
    Check("ImgOper ( BW8 Image, C24 Image to C24 Image)", ExpectedCode(kImageImage, op), d,
          [&] { ImgOper(AsOp(op), &g.roi, &b.roi, &d.roi); },
          PerPixel(d, [&](int x, int y, int k) -> int64_t {
            if (op == 34) return b.Any(x, y) ? b.At(x, y, k) : g.At(x, y);
            return Ref(op, g.At(x, y), b.At(x, y, k), 255);
          }));
    Check("ImgOper ( C24 Image, BW8 Image to C24 Image)", ExpectedCode(kImageImage, op), out,
          [&] { ImgOper(AsOp(op), &a.roi, &g.roi, &out.roi); },
          PerPixel(out, [&](int x, int y, int k) -> int64_t {
            if (op == 34) return g.At(x, y) != 0 ? colour.c[k] : a.At(x, y, k);
            return Ref(op, a.At(x, y, k), g.At(x, y), 255);
          }));
    // Mixed depths.
    Pic<EBW16> a16(w, h, rng, sparse), d16(w, h, rng, false);
    Check("ImgOper ( BW8 Image and BW8 Image to BW16 Image)", ExpectedCode(kDepth8, op), d16,
          [&] { ImgOper(AsOp(op), &g.roi, &g2.roi, &d16.roi); },
          PerPixel(d16, [&](int x, int y, int) { return Ref(op, g.At(x, y), g2.At(x, y), 65535); }));
    Check("ImgOper ( BW16 Image and BW8 Image to BW16 IMage)", ExpectedCode(kDepth16, op), d16,
          [&] { ImgOper(AsOp(op), &a16.roi, &g2.roi, &d16.roi); },
          PerPixel(d16, [&](int x, int y, int) -> int64_t {
            const uint32_t va = a16.At(x, y), vb = g2.At(x, y);
            if (op == 4) return va * vb <= 65535 ? 65535 : (va * vb) & 0xFFFF;
            if (op == 29) return (va + vb) & 0xFFFF;
            if (op == 30) return (va - vb) & 0xFFFF;
            return Ref(op, va, vb, 65535);
          }));
  });
}

// The wider types: a constant fill and an image copy.
template <class T>
void CopyWide(T v) {
  EImage<T> a(5, 3), b(5, 3);
  ImgCopy(v, &a);
  ImgCopy(&a, &b);
  EXPECT_EQ(std::memcmp(b.GetImagePtr(4, 2), &v, sizeof v), 0);
}
TEST(Copy, WiderPixelTypes) {
  CopyWide(EBW32(0xDEADBEEFu));
  CopyWide(EC15(0x1234));
  CopyWide(EC16(0xBEEF));
}

// A copy between two ROIs of one image on the same rows, shifted by a few
// pixels either way, moves each row as a whole, on every path.
TEST(Copy, OverlappingRowsMoveAsAWhole) {
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int shift = -40; shift <= 40; ++shift) {
      EImage<EBW8> image(160, 3);
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 160; ++x) image.SetPixel(EBW8(static_cast<unsigned char>(x * 7 + y)), x, y);
      EROI<EBW8> src(&image, 40, 0, 80, 3), dst(&image, 40 + shift, 0, 80, 3);
      ImgCopy(&src, &dst);
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 80; ++x)
          ASSERT_EQ(image.GetPixel(40 + shift + x, y).value, static_cast<unsigned char>((40 + x) * 7 + y))
              << "path " << path << " shift " << shift << " x " << x;
    }
  }
}

// A fill or copy of a ROI that spans every column of an image owning its
// pixels may run its rows and the padding between them as one stretch.
// With the Intel form forced on and off, on owned images (the ROI full width
// or narrower) and on borrowed buffers: the pixels are the row walk's, and
// no byte changes outside the ROI's pixels except the padding between its
// rows on an owned image. Full-width copies within one image, apart and
// overlapping, give the row walk's bytes too.
template <class T>
void CheckJoinedRows(int intel, int kind, Rng& rng) {
  const int w = 1 + static_cast<int>(rng() % 150), h = 1 + static_cast<int>(rng() % 4);
  const int iw = kind == 1 ? w + 3 : w, ox = kind == 1 ? 2 : 0, oy = static_cast<int>(rng() % 3);
  EImage<T> a, d;
  for (EImage<T>* im : {&a, &d}) {
    if (kind == 2) testsupport::BorrowedBuffers::Make(*im, iw, h + 2, rng);
    else im->SetSize(iw, h + 2);
    testsupport::FillRandom(*im, rng);
  }
  EROI<T> ra(&a, ox, 2 - oy, w, h), rd(&d, ox, oy, w, h);
  const Bytes before = testsupport::Snapshot(d);
  const u8 value = static_cast<u8>(rng());
  const bool fill = std::is_same<T, EBW8>::value && rng() % 2 == 0;
  mirel::testing::SetIntelStreaming(intel);
  if constexpr (std::is_same<T, EBW8>::value) {
    if (fill) ImgCopy(EBW8(value), &rd);
    else ImgCopy(&ra, &rd);
  } else {
    ImgCopy(&ra, &rd);
  }
  mirel::testing::SetIntelStreaming(-1);
  const Bytes after = testsupport::Snapshot(d);
  const size_t pitch = static_cast<size_t>(d.GetRowPitch()), px = sizeof(T);
  for (size_t o = 0; o < after.size(); ++o) {
    const int y = static_cast<int>(o / pitch), x = static_cast<int>(o % pitch / px);
    const int k = static_cast<int>(o % pitch % px);
    const bool pixel = y >= oy && y < oy + h && x >= ox && x < ox + w && o % pitch < static_cast<size_t>(iw) * px;
    if (pixel) {
      const u8 want = fill ? value : reinterpret_cast<const u8*>(ra.GetImagePtr(x - ox, y - oy))[k];
      ASSERT_EQ(after[o], want) << "intel " << intel << " kind " << kind << " x " << x << " y " << y;
    } else if (kind != 0 || y < oy || y >= oy + h - 1 || o % pitch < static_cast<size_t>(iw) * px) {
      ASSERT_EQ(after[o], before[o]) << "intel " << intel << " kind " << kind << " byte " << o;
    }
  }
}

TEST(Copy, RowsJoinOnlyOverTheLibrarysOwnPadding) {
  Rng rng(57);
  for (int intel : {0, 1})
    for (int round = 0; round < 90; ++round) {
      CheckJoinedRows<EBW8>(intel, round % 3, rng);
      CheckJoinedRows<EC24>(intel, round % 3, rng);
      CheckJoinedRows<EBW16>(intel, round % 3, rng);
    }
  // Within one owned image, full width: rows 0-2 to rows 4-6 (apart), then
  // rows 0-2 to rows 1-3, which overlap: the row walk copies row 0 down.
  for (int intel : {0, 1}) {
    EImage<EBW8> im(77, 7);
    for (int y = 0; y < 7; ++y)
      for (int x = 0; x < 77; ++x) im.SetPixel(EBW8(static_cast<u8>(x + 31 * y)), x, y);
    EROI<EBW8> top(&im, 0, 0, 77, 3), apart(&im, 0, 4, 77, 3), below(&im, 0, 1, 77, 3);
    mirel::testing::SetIntelStreaming(intel);
    ImgCopy(&top, &apart);
    ImgCopy(&top, &below);
    mirel::testing::SetIntelStreaming(-1);
    for (int x = 0; x < 77; ++x)
      for (int y = 0; y < 7; ++y)
        ASSERT_EQ(im.GetPixel(x, y).value, static_cast<u8>(x + 31 * (y < 4 ? 0 : y - 4))) << x << "," << y;
  }
}

// An operation whose destination is a ROI of its first source's image, a
// row up or down and a few pixels aside, reads each source row as the rows
// written before it left it: the row walk, on every path. Rows from 9 to
// 40 pixels give block stretches and scalar rests.
TEST(Oper, SourceSharingRowsWithTheDestination) {
  Rng rng(31);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int t = 0; t < 60; ++t) {
      const int w = 9 + static_cast<int>(rng() % 32), dy = rng() % 2 ? 1 : -1, dx = static_cast<int>(rng() % 11) - 5;
      EImage<EBW8> image(56, 12), other(w, 8);
      for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 56; ++x) image.SetPixel(EBW8(static_cast<u8>(rng())), x, y);
      for (int y = 0; y < 8; ++y)
        for (int x = 0; x < w; ++x) other.SetPixel(EBW8(static_cast<u8>(rng())), x, y);
      std::vector<std::vector<u8>> model(12, std::vector<u8>(56));
      for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 56; ++x) model[y][x] = image.GetPixel(x, y).value;
      for (int y = 0; y < 8; ++y) {
        const std::vector<u8> row = model[2 + y];
        for (int x = 0; x < w; ++x)
          model[2 + dy + y][8 + dx + x] = static_cast<u8>(std::min(row[8 + x] + other.GetPixel(x, y).value, 255));
      }
      EROI<EBW8> src(&image, 8, 2, w, 8), dst(&image, 8 + dx, 2 + dy, w, 8);
      ImgOper(ALO_ADD, &src, &other, &dst);
      for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 56; ++x)
          ASSERT_EQ(image.GetPixel(x, y).value, model[y][x])
              << "path " << path << " w " << w << " dx " << dx << " dy " << dy << " at " << x << "," << y;
    }
  }
}

// ------------------------------------------------------------ worked numbers

// One worked value: `a op b` on every pixel of a 16-pixel row, so that
// the block routines take part.
enum class Operands { kTwoImages, kImageAndConst, kConstAndImage };
struct Worked { Op op; Operands form; uint32_t a, b, result; };

template <class T>
void ExpectWorked(const Worked& w) {
  using V = decltype(T::value);
  EImage<T> a(16, 1), b(16, 1), d(16, 1);
  ImgCopy(T(static_cast<V>(w.a)), &a);
  ImgCopy(T(static_cast<V>(w.b)), &b);
  if (w.form == Operands::kTwoImages) ImgOper(w.op, &a, &b, &d);
  else if (w.form == Operands::kImageAndConst) ImgOper(w.op, &a, T(static_cast<V>(w.b)), &d);
  else ImgOper(w.op, T(static_cast<V>(w.a)), &b, &d);
  for (int x = 0; x < 16; ++x) ASSERT_EQ(d.GetPixel(x, 0).value, w.result) << w.op << " " << w.a << " " << w.b;
}

TEST(Oper, WorkedValues) {
  const Worked bytes[] = {
      {ALO_DIVIDE, Operands::kImageAndConst, 200, 0, 255},  // a zero divisor gives the maximum
      {ALO_MODULO, Operands::kImageAndConst, 200, 0, 0},
      {ALO_SHIFT_LEFT, Operands::kImageAndConst, 200, 9, 0},
      {ALO_SHIFT_LEFT, Operands::kImageAndConst, 200, 32, 200},  // counts are taken modulo 32
      {ALO_AVERAGE, Operands::kTwoImages, 255, 254, 254},
      {ALO_HALF_DIFFERENCE, Operands::kImageAndConst, 255, 0, 255},
      {ALO_HALF_DIFFERENCE, Operands::kConstAndImage, 0, 255, 0},
  };
  // 16-bit scaled divide: constant by image shifts by 16 / b, image by
  // constant divides a << 16, image by image a << 8.
  const Worked words[] = {
      {ALO_SCALED_DIVIDE, Operands::kConstAndImage, 0x8000, 1, 0},  // 0x8000 << 16 sets bit 31
      {ALO_SCALED_DIVIDE, Operands::kConstAndImage, 0x7FFF, 1, 65535},
      {ALO_SCALED_DIVIDE, Operands::kConstAndImage, 0x7FFF, 100, 0x7FFF},  // 16 / 100 is 0
      {ALO_SCALED_DIVIDE, Operands::kImageAndConst, 100, 200, (100u << 16) / 200},
      {ALO_SCALED_DIVIDE, Operands::kTwoImages, 100, 100, 256},
  };
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (const Worked& w : bytes) ExpectWorked<EBW8>(w);
    for (const Worked& w : words) ExpectWorked<EBW16>(w);
  }
}

// ------------------------------------------------------------ checks

// Void and size checks come before the operation's; mixed depth compares
// sizes before the void test.
TEST(Oper, ChecksAndLabels) {
  EImage<EBW8> a(8, 4), b(8, 4), small(7, 4), none, none8;
  EImage<EBW16> w(8, 4), wsmall(8, 3), none16;
  EImage<EC24> c(8, 4), csmall(8, 3), none24;
  EImage<EC16> c16(5, 3), c16small(4, 3);
  const EROI<EBW8>* null8 = nullptr;
  const pointtest::Refusals expect(a, b, small, wsmall, csmall, c16small);
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgOper(AsOp(99), &none, &b, &a); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgOper(ALO_ADD, &a, &b, &none); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgOper ( BW8 Image, Image to Image)", [&] { ImgOper(AsOp(99), &a, &small, &b); });
  expect(E_ERROR_SIZE_MISMATCH, nullptr, [&] { ImgOper(ALO_ADD, &a, EBW8(1), &small); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgOper(ALO_ADD, null8, &b, &a); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgCopy ( BW8 Image to Image)", [&] { ImgCopy(&a, &small); });
  expect(E_ERROR_VOID_IMAGE, "ImgCopy ( BW8 Const to Image)", [&] { ImgCopy(EBW8(3), &none); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgCopy (C16 Image)", [&] { ImgCopy(&c16, &c16small); });
  expect(E_ERROR_VOID_IMAGE, "ImgCopy (C24 Const)", [&] { ImgCopy(EC24(1, 2, 3), &none24); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgCopy (C24 Image)", [&] { ImgCopy(&c, &csmall); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgCopy (BW16 Image)", [&] { ImgCopy(&w, &wsmall); });
  expect(E_ERROR_VOID_IMAGE, "ImgCopy (BW16 Const)", [&] { ImgCopy(EBW16(1), &none16); });
  expect(E_OK, nullptr, [&] { ImgOper(ALO_ADD, &a, &c, &c); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgOper(ALO_ADD, &a, &c, static_cast<EROI<EC24>*>(nullptr)); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgOper ( BW8 Image and BW8 Image to BW16 Image)",
         [&] { ImgOper(ALO_ADD, &none8, &b, &w); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgOper ( BW16 Image and BW8 Image to BW16 IMage)",
         [&] { ImgOper(ALO_ADD, &w, &b, &wsmall); });
  expect(E_ERROR_VOID_IMAGE, nullptr, [&] { ImgOper(ALO_ADD, &none16, &none8, &none16); });
}

}  // namespace
