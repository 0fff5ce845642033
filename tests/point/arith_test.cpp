// ImgCopy and ImgOper against a reference model, on every path.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using u8 = unsigned char;
using Bytes = std::vector<u8>;
using Op = ARITH_LOGIC_OPERATIONS;

Op AsOp(int v) { return static_cast<Op>(v); }

bool In(int v, std::initializer_list<int> l) { return std::find(l.begin(), l.end(), v) != l.end(); }

// ------------------------------------------------------------ model

// The value of `op` on unsigned a and b, M the pixel's maximum. 12 is the
// byte rule; the 16-bit scaled divides are modelled apart.
uint32_t Ref(int op, uint32_t a, uint32_t b, uint32_t M) {
  const uint64_t A = a, B = b;
  switch (op) {
    case 2: return static_cast<uint32_t>(std::min<uint64_t>(A + B, M));
    case 3: return a >= b ? a - b : 0;
    case 4: return static_cast<uint32_t>(std::min<uint64_t>(A * B, M));
    case 5: return b == 0 ? M : a / b;
    case 6: return b == 0 ? 0 : a % b;
    case 7: return static_cast<uint32_t>((A << (b % 32)) & M);
    case 8: return a >> (b % 32);
    case 9: return (a + b) / 2;
    case 10: return (a + (M - b)) / 2;
    case 11: return static_cast<uint32_t>((A * B) >> (M == 255 ? 8 : 16));
    case 12: return b == 0 ? 255 : static_cast<uint32_t>(std::min<uint64_t>(A * 256 / B, 255));
    case 13: return a & b;
    case 14: return a | b;
    case 15: return a ^ b;
    case 16: return (a && b) ? M : 0;
    case 17: return (a || b) ? M : 0;
    case 18: return (!a != !b) ? M : 0;
    case 19: return std::min(a, b);
    case 20: return std::max(a, b);
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

enum Kind {
  kConstOnly,      // 0 only
  kUnary01,        // 0, 1
  kUnary0134,      // 0, 1, 34
  kOverlayOnly,    // 34 only
  kConstImage,     // all but 7, 8, 16, 17, 18, 21, 22
  kImageConst,     // all but 16, 17, 18
  kImageImage,     // all but 7, 8; 34 defined
  kImageImage16,   // all but 7, 8; 34 not defined
  kDepth8,         // 2, 3, 4, 5
  kDepth16,        // 2, 3, 4, 5, 29, 30
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
    case kConstImage:
      if (In(op, {7, 8, 16, 17, 18, 21, 22})) return 1003;
      return formula ? 0 : 32767;
    case kImageConst:
      if (In(op, {16, 17, 18})) return 1003;
      return formula ? 0 : 32767;
    case kImageImage:
      if (In(op, {7, 8})) return 1003;
      return formula || op == 34 ? 0 : 32767;
    case kImageImage16:
      if (In(op, {7, 8})) return 1003;
      return formula ? 0 : 32767;
    case kDepth8: return In(op, {2, 3, 4, 5}) ? 0 : 1003;
    case kDepth16: return In(op, {2, 3, 4, 5, 29, 30}) ? 0 : 1003;
  }
  return -1;
}

// ------------------------------------------------------------ images

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
    u8* p = Base();
    const size_t n = static_cast<size_t>(image.GetRowPitch()) * image.GetHeight();
    // Bytes 0x00, 0x01, 0x80, 0xFF make 16-bit values 0, 1, 255, 256,
    // 32768, 65535 and their mixtures.
    static const u8 kValues[] = {0, 0, 0, 1, 2, 0x80, 0x7F, 0xFE, 0xFF};
    for (size_t i = 0; i < n; ++i) p[i] = kValues[rng() % sizeof kValues];
  }
  u8* Base() { return reinterpret_cast<u8*>(image.GetImagePtr(0, 0)); }
  size_t Off(int x, int y) const {
    return static_cast<size_t>(reinterpret_cast<const u8*>(roi.GetImagePtr(x, y)) -
                               reinterpret_cast<const u8*>(image.GetImagePtr(0, 0)));
  }
  // Byte k of pixel (x, y), read now.
  uint32_t At(int x, int y, int k = 0) const {
    const u8* p = reinterpret_cast<const u8*>(roi.GetImagePtr(x, y));
    if (sizeof(T) == 2) return static_cast<uint32_t>(p[0] | (p[1] << 8));
    return p[k];
  }
};

// Runs `run` on the current path and checks code, label and bytes. `model`
// fills the expected buffer (a snapshot of the destination image before the
// call); it is called before `run`, when the sources are as they were.
template <class D>
void Check(const char* label, int code, Pic<D>& dst, const std::function<void()>& run,
           const std::function<void(Bytes&)>& model) {
  const Bytes before = testsupport::Snapshot(dst.image);
  Bytes expected = before;
  if (code == 0) model(expected);
  ESetError(E_ERROR_INTERNAL);  // stale state: the call must clear it
  run();
  ASSERT_EQ(static_cast<int>(EGetError()), code);
  if (code != 0) {
    EXPECT_STREQ(EGetErrorTrace(), label);
    EXPECT_EQ(testsupport::Snapshot(dst.image), before) << "destination touched on failure";
  } else {
    EXPECT_STREQ(EGetErrorTrace(), "");
    EXPECT_EQ(testsupport::Snapshot(dst.image), expected);
  }
}

void Put16(Bytes& e, size_t off, uint32_t v) {
  e[off] = static_cast<u8>(v);
  e[off + 1] = static_cast<u8>(v >> 8);
}

int RandomWidth(Rng& rng) { return rng() % 5 == 0 ? 71 + static_cast<int>(rng() % 230) : 1 + static_cast<int>(rng() % 70); }
int RandomHeight(Rng& rng) { return 1 + static_cast<int>(rng() % 3); }
u8 RandomByte(Rng& rng) {
  static const u8 kPicks[] = {0, 1, 2, 7, 8, 9, 16, 31, 32, 33, 127, 128, 254, 255};
  return rng() % 2 ? kPicks[rng() % sizeof kPicks] : static_cast<u8>(rng());
}
uint16_t RandomWord(Rng& rng) {
  static const uint16_t kPicks[] = {0, 1, 2, 3, 8, 15, 16, 17, 31, 32, 255, 256, 32767, 32768, 65534, 65535};
  return rng() % 2 ? kPicks[rng() % 16] : static_cast<uint16_t>(rng());
}
EC24 RandomC24(Rng& rng) { return EC24(RandomByte(rng), RandomByte(rng), RandomByte(rng)); }

// Runs body(op, rng) for every operation from 0 to 40, `trials` times, on
// every path.
template <class Body>
void ForEveryOp(int trials, uint32_t seed, Body body) {
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    Rng rng(seed);
    for (int op = 0; op <= 40; ++op) {
      for (int t = 0; t < trials; ++t) {
        SCOPED_TRACE("path " + std::to_string(path) + " op " + std::to_string(op) + " trial " +
                     std::to_string(t));
        body(op, rng);
        if (::testing::Test::HasFatalFailure() || ::testing::Test::HasNonfatalFailure()) return;
      }
    }
  }
}

constexpr int kTrials = 6;

// ------------------------------------------------------------ EBW8

TEST(OperBW8, ConstToImage) {
  ForEveryOp(2, 1, [](int op, Rng& rng) {
    Pic<EBW8> d(RandomWidth(rng), RandomHeight(rng), rng, false);
    const u8 c = RandomByte(rng);
    Check("ImgOper ( BW8 Const to Image)", ExpectedCode(kConstOnly, op), d,
          [&] { ImgOper(AsOp(op), EBW8(c), &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < d.roi.GetHeight(); ++y)
              for (int x = 0; x < d.roi.GetWidth(); ++x) e[d.Off(x, y)] = c;
          });
  });
}

TEST(OperBW8, ImageToImage) {
  ForEveryOp(2, 2, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    Pic<EBW8> s(w, h, rng, false), d(w, h, rng, false);
    Check("ImgOper ( BW8 Image to Image)", ExpectedCode(kUnary01, op), d,
          [&] { ImgOper(AsOp(op), &s.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) e[d.Off(x, y)] = static_cast<u8>(op == 1 ? 255 - s.At(x, y) : s.At(x, y));
          });
  });
}

TEST(OperBW8, ConstImage) {
  ForEveryOp(kTrials, 3, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    Pic<EBW8> b(w, h, rng, rng() % 2), d(w, h, rng, false);
    const u8 c = RandomByte(rng);
    Check("ImgOper ( BW8 Const, Image to Image)", ExpectedCode(kConstImage, op), d,
          [&] { ImgOper(AsOp(op), EBW8(c), &b.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) e[d.Off(x, y)] = static_cast<u8>(Ref(op, c, b.At(x, y), 255));
          });
  });
}

// The image, constant form: folded or not, each pixel is op(image, c).
TEST(OperBW8, ImageConst) {
  ForEveryOp(kTrials, 4, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    Pic<EBW8> a(w, h, rng, rng() % 2), d(w, h, rng, false);
    const u8 c = RandomByte(rng);
    Check("ImgOper ( BW8 Image, Const to Image)", ExpectedCode(kImageConst, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, EBW8(c), &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const uint32_t v = a.At(x, y);
                if (op == 21 || op == 22) {
                  if ((v == 0) == (op == 21)) e[d.Off(x, y)] = c;
                } else {
                  e[d.Off(x, y)] = static_cast<u8>(Ref(op, v, c, 255));
                }
              }
          });
  });
}

TEST(OperBW8, ImageImage) {
  ForEveryOp(kTrials, 5, [](int op, Rng& rng) {
    // With operation 34 the rows stay narrow, so the two bytes it reaches
    // behind a row lie in the row's padding and inside the model's buffer.
    const int w = op == 34 ? 1 + static_cast<int>(rng() % 70) : RandomWidth(rng), h = RandomHeight(rng);
    const bool sparse = rng() % 2;
    Pic<EBW8> a(w, h, rng, sparse), b(w, h, rng, sparse), d(w, h, rng, false);
    // Operation 34 reads the rows as triples: model the bytes it reaches
    // behind the row from the images' own buffers.
    const Bytes sa = testsupport::Snapshot(a.image), sb = testsupport::Snapshot(b.image);
    Check("ImgOper ( BW8 Image, Image to Image)", ExpectedCode(kImageImage, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, &b.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y) {
              if (op == 34) {
                for (int i = 0; i < w; i += 3) {
                  const size_t oa = a.Off(0, y) + i, ob = b.Off(0, y) + i, od = d.Off(0, y) + i;
                  const bool any = sb[ob] || sb[ob + 1] || sb[ob + 2];
                  for (int k = 0; k < 3; ++k) e[od + k] = any ? sb[ob + k] : sa[oa + k];
                }
                continue;
              }
              for (int x = 0; x < w; ++x) {
                const uint32_t va = a.At(x, y), vb = b.At(x, y);
                if (op == 21 || op == 22) {
                  if ((va == 0) == (op == 21)) e[d.Off(x, y)] = static_cast<u8>(vb);
                } else {
                  e[d.Off(x, y)] = static_cast<u8>(Ref(op, va, vb, 255));
                }
              }
            }
          });
  });
}

// Every worker reads a pixel before writing it: the same ROI as source and
// destination gives what a separate destination gets.
TEST(OperBW8, InPlaceMatchesSeparateDestination) {
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    Rng rng(6);
    for (int op : {0, 1, 2, 3, 4, 9, 10, 11, 13, 19, 20, 21, 22, 25, 28, 33}) {
      const int w = 1 + static_cast<int>(rng() % 150), h = 2;
      Pic<EBW8> a(w, h, rng, true), b(w, h, rng, true);
      EImage<EBW8> ref(w, h), in_place(w, h);
      const u8 c = RandomByte(rng);
      ImgCopy(&a.roi, &ref);  // a ROI for the separate result, same old values
      ImgCopy(&a.roi, &in_place);
      if (op <= 1) {
        ImgOper(AsOp(op), &a.roi, &ref);
        ImgOper(AsOp(op), &in_place, &in_place);
      } else {
        ImgOper(AsOp(op), &a.roi, &b.roi, &ref);
        ImgOper(AsOp(op), &in_place, &b.roi, &in_place);
        EXPECT_EQ(testsupport::Bytes(in_place), testsupport::Bytes(ref)) << "image, image op " << op;
        ImgCopy(&a.roi, &ref);
        ImgCopy(&a.roi, &in_place);
        ImgOper(AsOp(op), &a.roi, EBW8(c), &ref);
        ImgOper(AsOp(op), &in_place, EBW8(c), &in_place);
      }
      EXPECT_EQ(EGetError(), E_OK);
      EXPECT_EQ(testsupport::Bytes(in_place), testsupport::Bytes(ref)) << "path " << path << " op " << op;
    }
  }
}

// The same for the colour, 16-bit and mixed workers.
TEST(OperInPlace, ColourAndWordWorkers) {
  Rng rng(8);
  for (int op : {2, 3, 12, 21, 22, 33}) {
    const int w = 1 + static_cast<int>(rng() % 40), h = 2;
    Pic<EC24> a(w, h, rng, true), b(w, h, rng, true);
    Pic<EBW8> g(w, h, rng, true);
    Pic<EBW16> a16(w, h, rng, true), b16(w, h, rng, true);
    const EC24 c = RandomC24(rng);
    EImage<EC24> ref(w, h), in_place(w, h);
    auto run24 = [&](const std::function<void(EROI<EC24>*, EROI<EC24>*)>& f) {
      ImgCopy(&a.roi, &ref);
      ImgCopy(&a.roi, &in_place);
      f(&a.roi, &ref);
      f(&in_place, &in_place);
      EXPECT_EQ(EGetError(), E_OK);
      EXPECT_EQ(testsupport::Bytes(in_place), testsupport::Bytes(ref)) << "op " << op;
    };
    run24([&](EROI<EC24>* s, EROI<EC24>* d) { ImgOper(AsOp(op), s, &b.roi, d); });
    run24([&](EROI<EC24>* s, EROI<EC24>* d) { ImgOper(AsOp(op), s, c, d); });
    run24([&](EROI<EC24>* s, EROI<EC24>* d) { ImgOper(AsOp(op), s, &g.roi, d); });
    EImage<EBW16> ref16(w, h), in_place16(w, h);
    ImgCopy(&a16.roi, &ref16);
    ImgCopy(&a16.roi, &in_place16);
    ImgOper(AsOp(op), &a16.roi, &b16.roi, &ref16);
    ImgOper(AsOp(op), &in_place16, &b16.roi, &in_place16);
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_EQ(testsupport::Bytes(in_place16), testsupport::Bytes(ref16)) << "op " << op;
  }
}

TEST(CopyBW8, ConstAndImage) {
  ForEveryOp(1, 7, [](int op, Rng& rng) {
    if (op > 0) return;  // ImgCopy takes no operation
    for (int t = 0; t < 40; ++t) {
      const int w = RandomWidth(rng), h = RandomHeight(rng);
      Pic<EBW8> s(w, h, rng, false), d(w, h, rng, false);
      const u8 c = RandomByte(rng);
      Check("ImgCopy ( BW8 Const to Image)", 0, d, [&] { ImgCopy(EBW8(c), &d.roi); },
            [&](Bytes& e) {
              for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) e[d.Off(x, y)] = c;
            });
      Check("ImgCopy ( BW8 Image to Image)", 0, d, [&] { ImgCopy(&s.roi, &d.roi); },
            [&](Bytes& e) {
              for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) e[d.Off(x, y)] = static_cast<u8>(s.At(x, y));
            });
    }
  });
}

// The worked numbers.
TEST(OperBW8, WorkedValues) {
  EImage<EBW8> img(16, 1), dst(16, 1), other(16, 1);
  for (int x = 0; x < 16; ++x) img.SetPixel(static_cast<u8>(x * 17), x, 0);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgOper(ALO_DIVIDE, &img, EBW8(0), &dst);
    EXPECT_EQ(EGetError(), E_OK);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(dst.GetPixel(x, 0), 255);
    ImgOper(ALO_MODULO, &img, EBW8(0), &dst);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(dst.GetPixel(x, 0), 0);
    ImgOper(ALO_SHIFT_LEFT, &img, EBW8(9), &dst);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(dst.GetPixel(x, 0), 0);
    ImgOper(ALO_SHIFT_LEFT, &img, EBW8(32), &dst);
    EXPECT_EQ(testsupport::Bytes(dst), testsupport::Bytes(img));
    ImgCopy(EBW8(255), &img);
    ImgCopy(EBW8(254), &other);
    ImgOper(ALO_AVERAGE, &img, &other, &dst);
    EXPECT_EQ(dst.GetPixel(3, 0), 254);
    ImgOper(ALO_HALF_DIFFERENCE, &img, EBW8(0), &dst);
    EXPECT_EQ(dst.GetPixel(9, 0), 255);
    ImgOper(ALO_HALF_DIFFERENCE, EBW8(0), &img, &dst);
    EXPECT_EQ(dst.GetPixel(9, 0), 0);
  }
  ImgOper(ALO_LOGICAL_AND, EBW8(5), &img, &dst);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_OPERATION);
  ImgOper(ALO_INVERT, EBW8(5), &img, &dst);
  EXPECT_EQ(EGetError(), E_ERROR_INTERNAL);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOper ( BW8 Const, Image to Image)");
}

// ------------------------------------------------------------ checks

TEST(OperChecks, VoidAndSizeComeBeforeTheOperation) {
  EImage<EBW8> a(8, 4), b(8, 4), small(7, 4), none;
  EImage<EBW16> w(8, 4), wsmall(8, 3);
  EImage<EC24> c(8, 4);
  ImgOper(AsOp(99), &none, &b, &a);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  ImgOper(ALO_ADD, &a, &b, &none);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  ImgOper(AsOp(99), &a, &small, &b);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOper ( BW8 Image, Image to Image)");
  ImgOper(ALO_ADD, &a, EBW8(1), &small);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgOper(ALO_ADD, static_cast<const EROI<EBW8>*>(nullptr), &b, &a);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  ImgCopy(&a, &small);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgCopy ( BW8 Image to Image)");
  ImgCopy(EBW8(3), &none);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgCopy ( BW8 Const to Image)");
  ImgOper(ALO_ADD, &a, &c, &c);
  EXPECT_EQ(EGetError(), E_OK);
  ImgOper(ALO_ADD, &a, &c, static_cast<EROI<EC24>*>(nullptr));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  // Mixed depth: sizes are compared before the void test.
  EImage<EBW8> none8;
  ImgOper(ALO_ADD, &none8, &b, &w);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOper ( BW8 Image and BW8 Image to BW16 Image)");
  ImgOper(ALO_ADD, &w, &b, &wsmall);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOper ( BW16 Image and BW8 Image to BW16 IMage)");
  EImage<EBW16> none16;
  ImgOper(ALO_ADD, &none16, &none8, &none16);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

// ------------------------------------------------------------ EC24

TEST(OperC24, ConstAndUnaryForms) {
  ForEveryOp(2, 10, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    Pic<EC24> s(w, h, rng, true), d(w, h, rng, false);
    Pic<EBW8> g(w, h, rng, true);
    const EC24 c = RandomC24(rng);
    const EC24 colour = RandomC24(rng);
    ImgSetOverlayColor(colour);
    Check("ImgOper ( C24 Const to Image)", ExpectedCode(kConstOnly, op), d,
          [&] { ImgOper(AsOp(op), c, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k) e[d.Off(x, y) + k] = c.c[k];
          });
    Check("ImgOper ( C24 Image to Image)", ExpectedCode(kUnary0134, op), d,
          [&] { ImgOper(AsOp(op), &s.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const bool any = s.At(x, y, 0) || s.At(x, y, 1) || s.At(x, y, 2);
                for (int k = 0; k < 3; ++k) {
                  const uint32_t v = s.At(x, y, k);
                  if (op == 0) e[d.Off(x, y) + k] = static_cast<u8>(v);
                  if (op == 1) e[d.Off(x, y) + k] = static_cast<u8>(255 - v);
                  if (op == 34 && any) e[d.Off(x, y) + k] = static_cast<u8>(v);
                }
              }
          });
    Check("ImgOper ( BW8 Image to C24 Image)", ExpectedCode(kUnary0134, op), d,
          [&] { ImgOper(AsOp(op), &g.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const uint32_t v = g.At(x, y);
                for (int k = 0; k < 3; ++k) {
                  if (op == 0) e[d.Off(x, y) + k] = static_cast<u8>(v);
                  if (op == 1) e[d.Off(x, y) + k] = static_cast<u8>(255 - v);
                  if (op == 34 && v != 0) e[d.Off(x, y) + k] = colour.c[k];
                }
              }
          });
    Pic<EBW8> g2(w, h, rng, true);
    Check("ImgOper ( BW8 Image, BW8 Image to C24 Image)", ExpectedCode(kOverlayOnly, op), d,
          [&] { ImgOper(AsOp(op), &g.roi, &g2.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k)
                  e[d.Off(x, y) + k] = g2.At(x, y) != 0 ? colour.c[k] : static_cast<u8>(g.At(x, y));
          });
  });
}

TEST(OperC24, ConstImageAndImageConst) {
  ForEveryOp(kTrials, 11, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    Pic<EC24> s(w, h, rng, rng() % 2), d(w, h, rng, false);
    const EC24 c = RandomC24(rng);
    Check("ImgOper ( C24 Const, Image to Image)", ExpectedCode(kConstImage, op), d,
          [&] { ImgOper(AsOp(op), c, &s.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k)
                  e[d.Off(x, y) + k] = static_cast<u8>(Ref(op, c.c[k], s.At(x, y, k), 255));
          });
    Check("ImgOper ( C24 Image, Const to Image)", ExpectedCode(kImageConst, op), d,
          [&] { ImgOper(AsOp(op), &s.roi, c, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k) {
                  const uint32_t v = s.At(x, y, k);
                  if (op == 21 || op == 22) {
                    if ((v == 0) == (op == 21)) e[d.Off(x, y) + k] = c.c[k];
                  } else {
                    e[d.Off(x, y) + k] = static_cast<u8>(Ref(op, v, c.c[k], 255));
                  }
                }
          });
  });
}

TEST(OperC24, ImageImageAndMixed) {
  ForEveryOp(kTrials, 12, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    const bool sparse = rng() % 2;
    Pic<EC24> a(w, h, rng, sparse), b(w, h, rng, sparse), d(w, h, rng, false);
    Pic<EBW8> g(w, h, rng, sparse);
    const EC24 colour = RandomC24(rng);
    ImgSetOverlayColor(colour);
    // r(x, y, k, va, vb, any_b) writes the model of one component.
    auto binary = [&](uint32_t va, uint32_t vb, size_t off, Bytes& e) {
      if (op == 21 || op == 22) {
        if ((va == 0) == (op == 21)) e[off] = static_cast<u8>(vb);
      } else {
        e[off] = static_cast<u8>(Ref(op, va, vb, 255));
      }
    };
    Check("ImgOper ( C24 Image, Image to Image)", ExpectedCode(kImageImage, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, &b.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const bool any = b.At(x, y, 0) || b.At(x, y, 1) || b.At(x, y, 2);
                for (int k = 0; k < 3; ++k) {
                  if (op == 34)
                    e[d.Off(x, y) + k] = static_cast<u8>(any ? b.At(x, y, k) : a.At(x, y, k));
                  else
                    binary(a.At(x, y, k), b.At(x, y, k), d.Off(x, y) + k, e);
                }
              }
          });
    Check("ImgOper ( BW8 Image, C24 Image to C24 Image)", ExpectedCode(kImageImage, op), d,
          [&] { ImgOper(AsOp(op), &g.roi, &b.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const bool any = b.At(x, y, 0) || b.At(x, y, 1) || b.At(x, y, 2);
                for (int k = 0; k < 3; ++k) {
                  if (op == 34)
                    e[d.Off(x, y) + k] = static_cast<u8>(any ? b.At(x, y, k) : g.At(x, y));
                  else
                    binary(g.At(x, y), b.At(x, y, k), d.Off(x, y) + k, e);
                }
              }
          });
    Check("ImgOper ( C24 Image, BW8 Image to C24 Image)", ExpectedCode(kImageImage, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, &g.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k) {
                  if (op == 34)
                    e[d.Off(x, y) + k] = g.At(x, y) != 0 ? colour.c[k] : static_cast<u8>(a.At(x, y, k));
                  else
                    binary(a.At(x, y, k), g.At(x, y), d.Off(x, y) + k, e);
                }
          });
  });
}

TEST(CopyOtherTypes, CopiesAndFills) {
  Rng rng(13);
  for (int t = 0; t < 20; ++t) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    Pic<EC24> s24(w, h, rng, false), d24(w, h, rng, false);
    const EC24 c24 = RandomC24(rng);
    Check("ImgCopy (C24 Image)", 0, d24, [&] { ImgCopy(&s24.roi, &d24.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k) e[d24.Off(x, y) + k] = static_cast<u8>(s24.At(x, y, k));
          });
    Check("ImgCopy (C24 Const)", 0, d24, [&] { ImgCopy(c24, &d24.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x)
                for (int k = 0; k < 3; ++k) e[d24.Off(x, y) + k] = c24.c[k];
          });
    Pic<EBW16> s16(w, h, rng, false), d16(w, h, rng, false);
    const uint16_t c16 = RandomWord(rng);
    Check("ImgCopy (BW16 Image)", 0, d16, [&] { ImgCopy(&s16.roi, &d16.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) Put16(e, d16.Off(x, y), s16.At(x, y));
          });
    Check("ImgCopy (BW16 Const)", 0, d16, [&] { ImgCopy(EBW16(c16), &d16.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) Put16(e, d16.Off(x, y), c16);
          });
  }
  EImage<EBW32> a32(5, 3), b32(5, 3);
  ImgCopy(EBW32(0xDEADBEEFu), &a32);
  ImgCopy(&a32, &b32);
  EXPECT_EQ(b32.GetPixel(4, 2).value, 0xDEADBEEFu);
  EImage<EC15> a15(5, 3), b15(5, 3);
  ImgCopy(EC15(0x1234), &a15);
  ImgCopy(&a15, &b15);
  EXPECT_EQ(b15.GetPixel(4, 2).word, 0x1234);
  EImage<EC16> a16(5, 3), b16(4, 3);
  ImgCopy(EC16(0xBEEF), &a16);
  EXPECT_EQ(a16.GetPixel(0, 0).word, 0xBEEF);
  ImgCopy(&a16, &b16);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgCopy (C16 Image)");
  EImage<EC24> none;
  ImgCopy(EC24(1, 2, 3), &none);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgCopy (C24 Const)");
}

// ------------------------------------------------------------ EBW16

uint32_t Ref16ScaledDivide(int form, uint32_t a, uint32_t b) {
  if (b == 0) return 65535;
  if (form == 0) return std::min<uint32_t>((a << 8) / b, 65535);
  if (form == 1) return std::min<uint64_t>((uint64_t{a} << 16) / b, 65535);
  const uint64_t v = uint64_t{a} << (16 / b);
  if (v <= 65535) return static_cast<uint32_t>(v);
  return (v & 0x80000000u) ? 0 : 65535;
}

TEST(OperBW16, AllForms) {
  ForEveryOp(kTrials, 20, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    const bool sparse = rng() % 2;
    Pic<EBW16> a(w, h, rng, sparse), b(w, h, rng, sparse), d(w, h, rng, false);
    const uint16_t c = RandomWord(rng);
    auto value = [&](int form, uint32_t va, uint32_t vb) {
      return op == 12 ? Ref16ScaledDivide(form, va, vb) : Ref(op, va, vb, 65535);
    };
    Check("ImgOper ( BW16 Const to Image)", ExpectedCode(kConstOnly, op), d,
          [&] { ImgOper(AsOp(op), EBW16(c), &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) Put16(e, d.Off(x, y), c);
          });
    Check("ImgOper (BW16 Image to Image)", ExpectedCode(kUnary01, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) Put16(e, d.Off(x, y), op == 1 ? 65535 - a.At(x, y) : a.At(x, y));
          });
    Check("ImgOper ( BW16 Const, Image to Image)", ExpectedCode(kConstImage, op), d,
          [&] { ImgOper(AsOp(op), EBW16(c), &b.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) Put16(e, d.Off(x, y), value(2, c, b.At(x, y)));
          });
    Check("ImgOper ( BW16 Image, Const to Image)", ExpectedCode(kImageConst, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, EBW16(c), &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const uint32_t v = a.At(x, y);
                if (op == 21 || op == 22) {
                  if ((v == 0) == (op == 21)) Put16(e, d.Off(x, y), c);
                } else {
                  Put16(e, d.Off(x, y), value(1, v, c));
                }
              }
          });
    Check("ImgOper ( BW16 Image, Image to Image)", ExpectedCode(kImageImage16, op), d,
          [&] { ImgOper(AsOp(op), &a.roi, &b.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const uint32_t va = a.At(x, y), vb = b.At(x, y);
                if (op == 21 || op == 22) {
                  if ((va == 0) == (op == 21)) Put16(e, d.Off(x, y), vb);
                } else {
                  Put16(e, d.Off(x, y), value(0, va, vb));
                }
              }
          });
  });
}

TEST(OperBW16, ScaledDivideForms) {
  EImage<EBW16> a(3, 1), d(3, 1);
  a.SetPixel(EBW16(0x8000), 0, 0);
  a.SetPixel(EBW16(100), 1, 0);
  a.SetPixel(EBW16(1), 2, 0);
  // Constant by image: 16 / b first, then the shift.
  ImgOper(ALO_SCALED_DIVIDE, EBW16(0x8000), &a, &d);
  EXPECT_EQ(d.GetPixel(2, 0), 0);  // 0x8000 << 16 sets bit 31
  ImgOper(ALO_SCALED_DIVIDE, EBW16(0x7FFF), &a, &d);
  EXPECT_EQ(d.GetPixel(2, 0), 65535);
  EXPECT_EQ(d.GetPixel(1, 0), 0x7FFF);  // 16 / 100 is 0
  // Image by constant divides a << 16; image by image a << 8.
  ImgOper(ALO_SCALED_DIVIDE, &a, EBW16(200), &d);
  EXPECT_EQ(d.GetPixel(1, 0), (100u << 16) / 200);
  ImgOper(ALO_SCALED_DIVIDE, &a, &a, &d);
  EXPECT_EQ(d.GetPixel(1, 0), 256);
  ImgOper(ALO_SCALED_DIVIDE, &a, EBW16(0), &d);
  EXPECT_EQ(d.GetPixel(0, 0), 65535);
}

// ------------------------------------------------------------ mixed depth

TEST(OperMixedDepth, BothForms) {
  ForEveryOp(kTrials, 30, [](int op, Rng& rng) {
    const int w = RandomWidth(rng), h = RandomHeight(rng);
    const bool sparse = rng() % 2;
    Pic<EBW8> a8(w, h, rng, sparse), b8(w, h, rng, sparse);
    Pic<EBW16> a16(w, h, rng, sparse), d(w, h, rng, false);
    Check("ImgOper ( BW8 Image and BW8 Image to BW16 Image)", ExpectedCode(kDepth8, op), d,
          [&] { ImgOper(AsOp(op), &a8.roi, &b8.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const uint32_t va = a8.At(x, y), vb = b8.At(x, y);
                uint32_t r = 0;
                if (op == 2) r = va + vb;
                if (op == 3) r = va > vb ? va - vb : 0;
                if (op == 4) r = va * vb;
                if (op == 5) r = vb ? va / vb : 65535;
                Put16(e, d.Off(x, y), r);
              }
          });
    Check("ImgOper ( BW16 Image and BW8 Image to BW16 IMage)", ExpectedCode(kDepth16, op), d,
          [&] { ImgOper(AsOp(op), &a16.roi, &b8.roi, &d.roi); },
          [&](Bytes& e) {
            for (int y = 0; y < h; ++y)
              for (int x = 0; x < w; ++x) {
                const uint32_t va = a16.At(x, y), vb = b8.At(x, y);
                uint32_t r = 0;
                if (op == 2) r = std::min<uint32_t>(va + vb, 65535);
                if (op == 3) r = va > vb ? va - vb : 0;
                if (op == 4) r = va * vb <= 65535 ? 65535 : (va * vb) & 0xFFFF;
                if (op == 5) r = vb ? va / vb : 65535;
                if (op == 29) r = (va + vb) & 0xFFFF;
                if (op == 30) r = (va - vb) & 0xFFFF;
                Put16(e, d.Off(x, y), r);
              }
          });
  });
}

}  // namespace
