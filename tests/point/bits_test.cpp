// The bit-image engine against a model that reads and writes single pixels
// through GetBitOffset: ROIs at every bit offset with widths 1 to 130, the
// whole destination buffer compared on every path, and the refused calls.
#include <functional>
#include <string>

#include "bits_support.h"
#include "point/point_support.h"

namespace {

using bitsupport::BitRoi;
using bitsupport::Buffer;
using testsupport::AllPaths;
using testsupport::PathGuard;
using testsupport::Rng;

// Runs `run` on every path from the same destination bytes and compares the
// whole buffer with the old one, the ROI's pixels replaced by model(x, y).
// With `clearTail` an aligned destination also gets the bits behind each
// row cleared up to the byte's end, or the whole next byte when the width is
// a multiple of 8 (what the conversions to bits write).
void ExpectBits(BitRoi& dst, const std::function<void()>& run, const std::function<bool(int, int)>& model,
                const std::string& what, bool clearTail = false) {
  const Buffer before = dst.Snapshot();
  Buffer want = before;
  const int w = dst.roi.GetWidth();
  for (int y = 0; y < dst.roi.GetHeight(); ++y) {
    for (int x = 0; x < w; ++x) dst.Put(want, x, y, model(x, y));
    if (clearTail && dst.roi.GetBitOffset(0, 0) == 0)
      for (int x = w; x < (w % 8 == 0 ? w + 8 : (w + 7) / 8 * 8); ++x) dst.Put(want, x, y, false);
  }
  for (int path : AllPaths()) {
    dst.Restore(before);
    {
      PathGuard guard(path);
      ESetError(E_ERROR_INTERNAL);
      run();
    }
    ASSERT_EQ(EGetError(), E_OK) << what << " path " << path << " " << EGetErrorTrace();
    ASSERT_EQ(dst.Snapshot(), want) << what << " path " << path;
  }
}

std::string Case(int w, int h, int s) {
  return std::to_string(w) + "x" + std::to_string(h) + " at bit " + std::to_string(s);
}

TEST(BitEngine, AlignmentAndBackAtEveryOffsetAndWidth) {
  Rng rng(1);
  for (int s = 0; s < 8; ++s)
    for (int i = 1; i <= 134; ++i) {
      // Every width to 130, then rows for the widest vectors.
      const int w = i <= 130 ? i : 520 + static_cast<int>(rng() % 600);
      BitRoi src(w, 2, s, rng), dst(w, 2, static_cast<int>(rng() % 8), rng);
      EImage<EBW1> temp(w, 2);
      ExpectBits(
          dst,
          [&] {
            ImgBW1Alignment(&src.roi, &temp);
            ImgBW1UnAlignment(&temp, &dst.roi);
          },
          [&](int x, int y) { return src.Get(x, y); }, "alignment " + Case(w, 2, s));
    }
}

// Every logic operation, with the sources and the destination at random bit
// offsets, in place now and then; bits outside the ROI stay as they were.
TEST(BitEngine, LogicAgainstThePixelModel) {
  Rng rng(2);
  const ARITH_LOGIC_OPERATIONS binary[] = {ALO_BIT_AND,        ALO_BIT_OR,           ALO_BIT_XOR,
                                           ALO_SET_WHERE_ZERO, ALO_SET_WHERE_NONZERO, ALO_LESS_OR_EQUAL};
  for (int iter = 0; iter < 400; ++iter) {
    const int w = iter % 5 ? 1 + static_cast<int>(rng() % 130) : 520 + static_cast<int>(rng() % 600);
    const int h = 1 + static_cast<int>(rng() % 3);
    BitRoi a(w, h, static_cast<int>(rng() % 8), rng), b(w, h, static_cast<int>(rng() % 8), rng),
        d(w, h, static_cast<int>(rng() % 8), rng);
    const Buffer old = d.Snapshot();
    const int kind = iter % 5;
    const ARITH_LOGIC_OPERATIONS op = binary[rng() % 6];
    const bool value = rng() & 1, inPlace = rng() % 4 == 0;
    EROI<EBW1>* first = inPlace ? &d.roi : &a.roi;
    const BitRoi& firstPixels = inPlace ? d : a;
    auto model = [&](int x, int y) {
      const bool p = firstPixels.Get(x, y), q = b.Get(x, y), o = d.Get(old, x, y);
      switch (kind) {
        case 0: return p;
        case 1: return !p;
        case 2: return value;
        default:
          switch (op) {
            case ALO_BIT_AND: return p && q;
            case ALO_BIT_OR: return p || q;
            case ALO_BIT_XOR: return p != q;
            case ALO_SET_WHERE_ZERO: return p ? o : q;
            case ALO_SET_WHERE_NONZERO: return p ? q : o;
            default: return !p || q;
          }
      }
    };
    auto run = [&] {
      switch (kind) {
        case 0: return iter & 8 ? ImgCopy(first, &d.roi) : ImgOper(ALO_COPY, first, &d.roi);
        case 1: return ImgOper(ALO_INVERT, first, &d.roi);
        case 2: return iter & 8 ? ImgCopy(EBW1(value ? 7 : 0), &d.roi) : ImgOper(ALO_COPY, EBW1(value), &d.roi);
        default: return ImgOper(op, first, &b.roi, &d.roi);
      }
    };
    ExpectBits(d, run, model, "kind " + std::to_string(kind) + " op " + std::to_string(op) + " " + Case(w, h, 0));
  }
}

template <class P>
void ToBitsCase(Rng& rng, int iter) {
  const int w = 1 + static_cast<int>(rng() % 130), h = 1 + static_cast<int>(rng() % 3);
  EImage<P> image;
  EROI<P> src;
  testsupport::PlaceRandom(image, src, w, h, rng);
  testsupport::FillRandom(image, rng);
  // Now and then few distinct values, so that pixels equal the threshold.
  const bool narrow = iter % 3 == 0;
  if (narrow)
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) src.GetImagePtr(0, y)[x] = P(static_cast<decltype(P().value)>(rng() % 4));
  BitRoi dst(w, h, iter % 8, rng);
  const unsigned int limits[] = {1, 0, narrow ? 2u : static_cast<unsigned>(rng() % 256), 300,
                                 narrow ? 3u : static_cast<unsigned>(rng() % 65536), 65535};
  const unsigned t = limits[iter % 6];
  auto pixel = [&](int x, int y) -> unsigned { return src.GetImagePtr(0, y)[x].value; };
  std::function<void()> run;
  if constexpr (sizeof(P) == 4) {
    run = [&] { ImgConvert(&src, &dst.roi); };
  } else {
    run = [&] {
      if (t == 1 && iter & 1) ImgConvert(&src, &dst.roi);
      else ImgThreshold(&src, &dst.roi, t);
    };
  }
  const unsigned limit = sizeof(P) == 4 ? 1u : t;
  ExpectBits(dst, run, [&](int x, int y) { return pixel(x, y) >= limit; },
             "to bits " + std::to_string(sizeof(P)) + " t " + std::to_string(limit) + " " + Case(w, h, iter % 8),
             true);
}

TEST(BitEngine, ConversionsAndThresholdsToBits) {
  Rng rng(3);
  for (int iter = 0; iter < 300; ++iter) {
    ToBitsCase<EBW8>(rng, iter);
    ToBitsCase<EBW16>(rng, iter);
    if (iter % 3 == 0) ToBitsCase<EBW32>(rng, iter);
  }
}

TEST(BitEngine, ConversionsFromBits) {
  Rng rng(4);
  for (int iter = 0; iter < 300; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 130), h = 1 + static_cast<int>(rng() % 3);
    pointtest::RoiPair<EBW1, EBW8> p8(w, h, rng);
    pointtest::RoiPair<EBW1, EBW16> p16(w, h, rng);
    pointtest::RoiPair<EBW1, EBW32> p32(w, h, rng);
    auto bit = [](const EROI<EBW1>& r, int x, int y) {
      return (*reinterpret_cast<const unsigned char*>(r.GetImagePtr(x, y)) << r.GetBitOffset(x, y)) & 0x80;
    };
    const unsigned char on8 = static_cast<unsigned char>(rng());
    const unsigned short on16 = static_cast<unsigned short>(rng());
    const unsigned on32 = static_cast<unsigned>(rng());
    p8.ExpectOnEveryPath([&] { ImgConvert(&p8.src, &p8.dst, on8); },
                         [&](int x, int y) { return EBW8(bit(p8.src, x, y) ? on8 : 0); }, "to 8 " + Case(w, h, 0));
    p16.ExpectOnEveryPath([&] { ImgConvert(&p16.src, &p16.dst, on16); },
                          [&](int x, int y) { return EBW16(bit(p16.src, x, y) ? on16 : 0); }, "to 16");
    p32.ExpectOnEveryPath([&] { ImgConvert(&p32.src, &p32.dst, on32); },
                          [&](int x, int y) { return EBW32(bit(p32.src, x, y) ? on32 : 0u); }, "to 32");
  }
}

// A mode resolves through the source's histogram to the threshold that the
// grey selection gives; relative 1.0 selects past the last level.
TEST(BitEngine, ThresholdModes) {
  Rng rng(5);
  EImage<EBW8> grey(77, 9);
  testsupport::FillRandom(grey, rng);
  EImage<EBW1> byMode(77, 9), byValue(77, 9);
  // The ten bytes of each row: all are written, the pad bits cleared.
  auto written = [](const EImage<EBW1>& image) {
    Buffer out;
    for (int y = 0; y < 9; ++y) {
      const unsigned char* p = reinterpret_cast<const unsigned char*>(image.GetImagePtr(0, y));
      out.insert(out.end(), p, p + 10);
    }
    return out;
  };
  ImgThreshold(&grey, &byMode, IMG_THRESHOLD_MIN_RESIDUE);
  ASSERT_EQ(EGetError(), E_OK);
  ImgThreshold(&grey, &byValue, static_cast<unsigned>(ImgAutoThreshold(&grey, IMG_THRESHOLD_MIN_RESIDUE, 0.0f)));
  EXPECT_EQ(written(byMode), written(byValue));
  ImgThreshold(&grey, &byMode, IMG_THRESHOLD_RELATIVE, 1.0f);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(written(byMode), Buffer(90, 0));
  EImage<EBW16> deep(77, 9);
  testsupport::FillRandom(deep, rng);
  ImgThreshold(&deep, &byMode, IMG_THRESHOLD_ISODATA);
  ImgThreshold(&deep, &byValue, static_cast<unsigned>(ImgAutoThreshold(&deep, IMG_THRESHOLD_ISODATA, 0.0f)));
  EXPECT_EQ(written(byMode), written(byValue));
}

// A refused call sets its code, traces its label and leaves the destination
// as it was; the aligned forms throw instead and leave the state alone for
// the codes they decide themselves.
TEST(BitEngine, RefusedCalls) {
  Rng rng(6);
  BitRoi a(20, 3, 0, rng), odd(20, 3, 3, rng), other(21, 3, 5, rng);
  EImage<EBW8> grey(20, 3), greyOther(21, 3);
  EImage<EBW1> none;
  const Buffer before = odd.Snapshot(), beforeOther = other.Snapshot();
  auto expectRefused = [&](E_ERRORS code, const char* trace, const char* what) {
    EXPECT_EQ(EGetError(), code) << what;
    EXPECT_STREQ(EGetErrorTrace(), trace) << what;
    EXPECT_EQ(odd.Snapshot(), before) << what;
    EXPECT_EQ(other.Snapshot(), beforeOther) << what;
  };
  ImgCopy(static_cast<const EROI<EBW1>*>(nullptr), &odd.roi);
  expectRefused(E_ERROR_VOID_IMAGE, "ImgCopy (BW1)", "null copy");
  ImgCopy(&a.roi, &other.roi);
  expectRefused(E_ERROR_SIZE_MISMATCH, "ImgCopy(BW1)", "copy sizes");
  ImgOper(ALO_INVERT, EBW1(1), &odd.roi);
  expectRefused(E_ERROR_BAD_OPERATION, "ImgOper (BW1)", "invert a constant");
  ImgOper(ALO_BIT_AND, &a.roi, &odd.roi);
  expectRefused(E_ERROR_BAD_OPERATION, "ImgOper (BW1)", "unary and");
  ImgOper(ALO_ADD, &a.roi, &a.roi, &odd.roi);
  expectRefused(E_ERROR_BAD_OPERATION, "ImgOper (BW1)", "add");
  ImgOper(ALO_BIT_OR, &a.roi, static_cast<const EROI<EBW1>*>(nullptr), &odd.roi);
  expectRefused(E_ERROR_VOID_IMAGE, "ImgOper (BW1)", "null operand");
  ImgOper(ALO_BIT_OR, &a.roi, &none, &odd.roi);
  expectRefused(E_ERROR_VOID_IMAGE, "ImgOper (BW1)", "void operand");
  ImgConvert(&greyOther, &odd.roi);
  expectRefused(E_ERROR_SIZE_MISMATCH, "ImgConvert (BW8 -> BW1)", "convert sizes");
  ImgConvert(&odd.roi, static_cast<EROI<EBW16>*>(nullptr), 1);
  expectRefused(E_ERROR_VOID_IMAGE, "ImgConvert (BW1 -> BW16)", "null grey");
  ImgThreshold(&grey, &odd.roi, 0xffffffffu);
  expectRefused(E_ERROR_BAD_RANGE, "ImgThreshold (BW8 -> BW1)", "not a mode");

  auto thrown = [](const std::function<void()>& f) {
    EOk();
    try {
      f();
    } catch (const Corvane::Talmeer::Exception& e) {
      return static_cast<int>(e.GetCode());
    }
    return 0;
  };
  EXPECT_EQ(thrown([&] { ImgOperAligned(ALO_INVERT, EBW1(1), &a.roi); }), E_ERROR_BAD_OPERATION);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(thrown([&] { ImgCopyAligned(&a.roi, &odd.roi); }), E_ERROR_BW1_NOT_ALIGNED);
  EXPECT_EQ(thrown([&] { ImgBW1UnAlignment(&odd.roi, nullptr); }), E_ERROR_BW1_NOT_ALIGNED);
  EXPECT_EQ(thrown([&] { ImgBW1Alignment(&a.roi, &odd.roi); }), E_ERROR_BW1_NOT_ALIGNED);
  EXPECT_EQ(thrown([&] { ImgConvertAligned(&grey, &none); }), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(thrown([&] { ImgOperAligned(ALO_BIT_XOR, &a.roi, &a.roi, &other.roi); }), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(odd.Snapshot(), before);
}

}  // namespace

namespace {

// Bit images over a caller's buffer of exactly `height` rows of the
// tightest pitch (the row's bytes and the one behind): conversions,
// thresholds, logic, morphology, the median and the comparison stay inside
// it on every path (the sanitizer build sees any byte past its end).
TEST(BitEngine, StaysInsideTightBorrowedBuffers) {
  Rng rng(7);
  for (int w : {8, 13, 64, 67, 600}) {
    const int h = 3, pitch = (w + 7) / 8 + 1;
    std::vector<unsigned char> bits(static_cast<size_t>(h * pitch)), more(bits.size()),
        grey(static_cast<size_t>(w * h));
    for (auto* v : {&bits, &more, &grey})
      for (unsigned char& c : *v) c = static_cast<unsigned char>(rng());
    EImage<EBW1> a(reinterpret_cast<EBW1*>(bits.data()), w, h, pitch),
        b(reinterpret_cast<EBW1*>(more.data()), w, h, pitch);
    EImage<EBW8> g(reinterpret_cast<EBW8*>(grey.data()), w, h, w);
    EROI<EBW1> inner(&a, 3, 1, w - 3, h - 1), other(&b, 0, 0, w - 3, h - 1);
    for (int path : AllPaths()) {
      PathGuard guard(path);
      ImgThreshold(&g, &a, 100);
      ImgConvert(&g, &b);
      ImgOper(ALO_BIT_XOR, &a, &b, &a);
      ImgErodeBox(&a, &b, 2);
      ImgDilateDisk(&inner, &other, 2);
      ImgMedian(&inner, nullptr);
      ImgPixelCompare(&a, &b);
      ImgConvert(&a, &g, 255);
      ASSERT_EQ(EGetError(), E_OK) << w << " path " << path;
    }
  }
}

}  // namespace
