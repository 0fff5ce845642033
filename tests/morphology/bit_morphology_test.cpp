// Bit-image morphology and median against the grey window model on the same
// pixels as 0 and 1, on random ROIs at every bit offset and on every path;
// the pad bits of an aligned destination; the byte-by-byte erosion cross;
// and the refused calls.
#include <functional>
#include <string>

#include "bits_support.h"
#include "morph_model.h"

namespace {

using bitsupport::BitRoi;
using bitsupport::Buffer;
using morph::Img;
using testsupport::AllPaths;
using testsupport::PathGuard;
using testsupport::Rng;

using BitOp = std::function<void(EROI<EBW1>*, EROI<EBW1>*)>;
using Model = std::function<Img(const Img&, int path)>;

Img PixelsOf(const BitRoi& b) { return Img{b.roi.GetWidth(), b.roi.GetHeight(), b.Pixels()}; }

// The cross of the byte-by-byte erosion: in the row's last byte only the
// row's own neighbours take part.
Img Cross(const Img& s, morph::Op op, bool rawLast) {
  Img d = s;
  const int lastByte = 8 * ((s.w - 1) / 8);
  for (int y = 0; y < s.h; ++y)
    for (int x = 0; x < s.w; ++x) {
      int v = s.at(x, y);
      for (int k = 0; k < 4; ++k) {
        const int xx = x + (k == 0) - (k == 1), yy = y + (k == 2) - (k == 3);
        if (k >= 2 && rawLast && x >= lastByte) continue;
        if (xx >= 0 && xx < s.w && yy >= 0 && yy < s.h) v = morph::Apply(op, v, s.at(xx, yy));
      }
      d.at(x, y) = v;
    }
  return d;
}
Img Disk(const Img& s, int r, morph::Op op, int path) {
  if (!(path < 0 && op == morph::kAnd)) return morph::Disk(s, r, op);
  Img d = s;
  const int c = (r + 1) / 2;
  for (int i = 0; i < r - c; ++i) d = morph::Box(d, 1, 1, op);
  for (int i = 0; i < c; ++i) d = Cross(d, op, true);
  return d;
}
Img Xor(const Img& a, const Img& b) {
  Img d = a;
  for (size_t i = 0; i < d.px.size(); ++i) d.px[i] = a.px[i] ^ b.px[i];
  return d;
}

int Width(Rng& rng, int iter) {
  // Now and then rows long enough for the widest vectors.
  return iter % 5 == 0 ? 520 + static_cast<int>(rng() % 600) : 1 + static_cast<int>(rng() % 130);
}

// Runs op on a random source, into a separate random destination or in
// place (through a null destination or the source itself), on every path;
// compares the pixels with the model and every bit outside the ROI with
// what it was, the pad bits of an aligned destination excepted.
::testing::AssertionResult Matches(Rng& rng, int w, int h, int mode, const BitOp& op, const Model& model) {
  BitRoi src(w, h, static_cast<int>(rng() % 8), rng), dst(w, h, static_cast<int>(rng() % 8), rng);
  const Buffer s0 = src.Snapshot(), d0 = dst.Snapshot();
  const Img in = PixelsOf(src);
  BitRoi& out = mode == 0 ? dst : src;
  for (int path : AllPaths()) {
    src.Restore(s0);
    dst.Restore(d0);
    {
      PathGuard guard(path);
      op(&src.roi, mode == 0 ? &dst.roi : mode == 1 ? nullptr : &src.roi);
    }
    if (EGetError() != E_OK) return ::testing::AssertionFailure() << "error " << EGetError() << " path " << path;
    if (!(PixelsOf(out) == model(in, path))) return ::testing::AssertionFailure() << "pixels differ, path " << path;
    if (!BitRoi::SameOutside(out.Snapshot(), &out == &src ? s0 : d0, out.Owned(true)))
      return ::testing::AssertionFailure() << "wrote outside the ROI, path " << path;
    if (mode == 0 && src.Snapshot() != s0) return ::testing::AssertionFailure() << "source changed, path " << path;
  }
  return ::testing::AssertionSuccess();
}

TEST(BitMorphology, ErosionAndDilationMatchTheGreyModel) {
  Rng rng(21);
  for (int iter = 0; iter < 160; ++iter) {
    const bool dilate = iter & 1, disk = iter & 2;
    const int w = Width(rng, iter), h = 1 + static_cast<int>(rng() % 7);
    unsigned hw = rng() % 6, hh = rng() % 4 == 0 ? ~0u : rng() % 6;
    if (hw == 0 && (hh == 0 || hh == ~0u)) hh = 1;  // the empty box is tested apart
    const int ehh = hh == ~0u ? static_cast<int>(hw) : static_cast<int>(hh);
    const morph::Op op = dilate ? morph::kOr : morph::kAnd;
    const BitOp run = [&](EROI<EBW1>* s, EROI<EBW1>* d) {
      if (disk) dilate ? ImgDilateDisk(s, d, hw) : ImgErodeDisk(s, d, hw);
      else dilate ? ImgDilateBox(s, d, hw, hh) : ImgErodeBox(s, d, hw, hh);
    };
    const Model model = [&](const Img& s, int path) {
      return disk ? Disk(s, static_cast<int>(hw), op, path) : morph::Box(s, static_cast<int>(hw), ehh, op);
    };
    ASSERT_TRUE(Matches(rng, w, h, iter % 3, run, model))
        << (disk ? "disk " : "box ") << hw << "," << ehh << (dilate ? " dilate " : " erode ") << w << "x" << h;
  }
}

TEST(BitMorphology, CompoundsAndMedianMatchTheGreyModel) {
  Rng rng(22);
  for (int iter = 0; iter < 210; ++iter) {
    const int form = iter % 7;
    const bool disk = iter % 2;
    const int w = Width(rng, iter / 7), h = 1 + static_cast<int>(rng() % 6);
    const unsigned r = 1 + rng() % 3, hh = rng() % 3 == 0 ? ~0u : 1 + rng() % 3;
    const int ehh = hh == ~0u ? static_cast<int>(r) : static_cast<int>(hh);
    auto erode = [&](const Img& s, int path) {
      return disk ? Disk(s, static_cast<int>(r), morph::kAnd, path) : morph::Box(s, static_cast<int>(r), ehh, morph::kAnd);
    };
    auto dilate = [&](const Img& s, int path) {
      return disk ? Disk(s, static_cast<int>(r), morph::kOr, path) : morph::Box(s, static_cast<int>(r), ehh, morph::kOr);
    };
    const Model model = [&](const Img& s, int path) {
      switch (form) {
        case 0: return dilate(erode(s, path), path);
        case 1: return erode(dilate(s, path), path);
        case 2: return Xor(dilate(s, path), erode(s, path));
        case 3: return Xor(s, dilate(erode(s, path), path));
        case 4: return Xor(erode(dilate(s, path), path), s);
        default: return morph::Median(s, true);
      }
    };
    const BitOp run = [&](EROI<EBW1>* s, EROI<EBW1>* d) {
      switch (form) {
        case 0: return disk ? ImgOpenDisk(s, d, r) : ImgOpenBox(s, d, r, hh);
        case 1: return disk ? ImgCloseDisk(s, d, r) : ImgCloseBox(s, d, r, hh);
        case 2: return disk ? ImgMorphoGradientDisk(s, d, r) : ImgMorphoGradientBox(s, d, r, hh);
        case 3: return disk ? ImgWhiteTopHatDisk(s, d, r) : ImgWhiteTopHatBox(s, d, r, hh);
        case 4: return disk ? ImgBlackTopHatDisk(s, d, r) : ImgBlackTopHatBox(s, d, r, hh);
        default: return ImgMedian(s, d);
      }
    };
    ASSERT_TRUE(Matches(rng, w, h, iter % 3, run, model)) << "form " << form << (disk ? " disk " : " box ") << r
                                                           << "," << ehh << " " << w << "x" << h;
  }
}

// In a ROI that starts on a byte, the pad bits behind each row keep their
// value through horizontal passes and crosses and take the AND (OR) of the
// destination's pad bits over one row up and down per vertical pass or
// square, from the source's when a vertical pass comes first; the median
// keeps them.
TEST(BitMorphology, PadBitsOfAnAlignedDestination) {
  Rng rng(23);
  for (int iter = 0; iter < 120; ++iter) {
    const int w = 8 * static_cast<int>(rng() % 4) + 1 + static_cast<int>(rng() % 7), h = 1 + static_cast<int>(rng() % 9);
    const bool dilate = iter & 1, disk = iter % 4 >= 2, median = iter % 11 == 0;
    const unsigned hw = rng() % 4, hh = rng() % 4;
    BitRoi src(w, h, 0, rng), dst(w, h, 0, rng);
    const Buffer s0 = src.Snapshot(), d0 = dst.Snapshot();
    const int c = (static_cast<int>(hw) + 1) / 2;
    const int passes = median ? 0 : disk ? (hw >= 2 ? static_cast<int>(hw) - c : 0) : (hw || hh ? static_cast<int>(hh) : 0);
    const bool fromSource = !median && !disk && hw == 0 && hh > 0;
    for (int path : AllPaths()) {
      src.Restore(s0);
      dst.Restore(d0);
      {
        PathGuard guard(path);
        if (median) ImgMedian(&src.roi, &dst.roi);
        else if (disk) dilate ? ImgDilateDisk(&src.roi, &dst.roi, hw) : ImgErodeDisk(&src.roi, &dst.roi, hw);
        else dilate ? ImgDilateBox(&src.roi, &dst.roi, hw, hh) : ImgErodeBox(&src.roi, &dst.roi, hw, hh);
      }
      ASSERT_EQ(EGetError(), E_OK);
      const Buffer now = dst.Snapshot();
      for (int y = 0; y < h; ++y)
        for (int x = w; x < (w + 7) / 8 * 8; ++x) {
          bool want = !dilate;
          for (int yy = std::max(0, y - passes); yy <= std::min(h - 1, y + passes); ++yy) {
            const bool v = fromSource ? src.Get(s0, x, yy) : dst.Get(d0, x, yy);
            want = dilate ? want || v : want && v;
          }
          ASSERT_EQ(dst.Get(now, x, y), want) << "pad bit " << x << "," << y << " path " << path << " " << w << "x" << h
                                              << (disk ? " disk " : " box ") << hw << "," << hh;
        }
    }
  }
}

// The byte-by-byte erosion cross ignores the rows above and below in a row's
// last byte; the fast path does not. A box with both half-sizes 0 writes
// nothing into a separate destination, whereas a disk of 0 copies.
TEST(BitMorphology, WorkedCases) {
  EImage<EBW1> image(12, 3), out(12, 3);
  ImgCopy(EBW1(1), &image);
  ImgCopy(EBW1(0), &out);
  EROI<EBW1> pixel(&image, 10, 0, 1, 1);
  ImgCopy(EBW1(0), &pixel);
  auto at = [](const EImage<EBW1>& i, int x, int y) {
    return (*reinterpret_cast<const unsigned char*>(i.GetImagePtr(x, y)) >> (7 - (x & 7))) & 1;
  };
  {
    PathGuard scalar(-1);
    ImgErodeDisk(&image, &out, 1);
  }
  EXPECT_EQ(at(out, 10, 1), 1);
  EXPECT_EQ(at(out, 9, 0), 0);
  ImgErodeDisk(&image, &out, 1);
  EXPECT_EQ(at(out, 10, 1), EGetMMX() ? 0 : 1);  // the fast form, where there is one
  ImgCopy(EBW1(0), &out);
  const Buffer before = testsupport::Snapshot(out);
  ImgErodeBoxAligned(&image, &out, 0, 0);
  EXPECT_EQ(testsupport::Snapshot(out), before);
  ImgErodeDiskAligned(&image, &out, 0);
  EXPECT_EQ(at(out, 0, 0), 1);
  EXPECT_EQ(at(out, 10, 0), 0);
}

TEST(BitMorphology, RefusedCalls) {
  Rng rng(24);
  BitRoi a(20, 3, 3, rng), other(21, 3, 5, rng);
  EImage<EBW1> none;
  const Buffer before = other.Snapshot();
  ImgWhiteTopHatDisk(static_cast<EROI<EBW1>*>(nullptr), &other.roi);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgWhiteTophatDisk (BW1)");
  ImgWhiteTopHatDisk(&a.roi, &other.roi);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgWhiteTopHatDisk (BW1)");
  ImgOpenBox(&a.roi, &none);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOpenBox (BW1)");
  ImgMedian(&none, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMedian (BW1)");
  EXPECT_EQ(other.Snapshot(), before);
  int code = 0;
  try {
    ImgDilateBoxAligned(&a.roi, nullptr, 2);
  } catch (const Corvane::Talmeer::Exception& e) {
    code = e.GetCode();
  }
  EXPECT_EQ(code, E_ERROR_BW1_NOT_ALIGNED);
  try {
    ImgMedianAligned(&none, nullptr);
  } catch (const Corvane::Talmeer::Exception& e) {
    code = e.GetCode();
  }
  EXPECT_EQ(code, E_ERROR_VOID_IMAGE);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

}  // namespace
