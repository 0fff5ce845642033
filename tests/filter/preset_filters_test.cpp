// The preset 3x3 filters and Roberts on 8-bit and 16-bit pixels: a
// table-driven model of each filter compared on random ROIs on every path,
// separate and in place, the worked numbers, the two frames, the
// Laplacians' block rule, and refusals.
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "convolution_model.h"
#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using testsupport::Rng;
using model::Grey;
using Filter = void (*)(EROI<EBW8>*, EROI<EBW8>*);

// How the weighed sums become a pixel.
enum Mode { kAbsCap, kAbsLow8, kClamp, kScale };
struct Preset {
  Filter fn;
  const char* label;
  int w1[9];
  int w2[9];      // a second response added as |s2| (Sobel, Prewitt, Gradient)
  Mode mode;
  int mul, shift;
  bool zeroFrame;
};
// clang-format off
const Preset kPresets[] = {
  {ImgConvolSobelX, "ImgConvolSobelX (BW8)", {-1,0,1,-2,0,2,-1,0,1}, {}, kAbsCap, 1, 0, true},
  {ImgConvolSobelY, "ImgConvolSobelY (BW8)", {-1,-2,-1,0,0,0,1,2,1}, {}, kAbsCap, 1, 0, true},
  {ImgConvolSobel, "ImgConvolSobel (BW8)", {-1,0,1,-2,0,2,-1,0,1}, {-1,-2,-1,0,0,0,1,2,1}, kAbsCap, 1, 0, true},
  {ImgConvolPrewittX, "ImgConvolPrewittX (BW8)", {-1,0,1,-1,0,1,-1,0,1}, {}, kAbsCap, 1, 0, false},
  {ImgConvolPrewittY, "ImgConvolPrewittY (BW8)", {-1,-1,-1,0,0,0,1,1,1}, {}, kAbsCap, 1, 0, true},
  {ImgConvolPrewitt, "ImgConvolPrewitt (BW8)", {-1,0,1,-1,0,1,-1,0,1}, {-1,-1,-1,0,0,0,1,1,1}, kAbsCap, 1, 0, true},
  {ImgConvolGradientX, "ImgConvolGradientX (BW8)", {0,0,0,1,0,-1,0,0,0}, {}, kAbsCap, 1, 0, false},
  {ImgConvolGradientY, "ConvolGradientY (BW8)", {0,1,0,0,0,0,0,-1,0}, {}, kAbsCap, 1, 0, false},
  {ImgConvolGradient, "ImgConvolGradient (BW8)", {0,0,0,1,0,-1,0,0,0}, {0,1,0,0,0,0,0,-1,0}, kAbsCap, 1, 0, false},
  {ImgConvolLaplacianX, "ImgConvolLaplacianX (BW8)", {0,0,0,1,-2,1,0,0,0}, {}, kAbsLow8, 1, 0, false},
  {ImgConvolLaplacianY, "ImgConvolLaplacianY (BW8)", {0,1,0,0,-2,0,0,1,0}, {}, kAbsLow8, 1, 0, false},
  {ImgConvolLaplacian4, "ImgConvolLaplacian4 (BW8)", {0,1,0,1,-4,1,0,1,0}, {}, kAbsCap, 1, 0, true},
  {ImgConvolLaplacian8, "ImgConvolLaplacian8 (BW8)", {1,1,1,1,-8,1,1,1,1}, {}, kAbsCap, 1, 0, true},
  {ImgConvolHighpass1, "ImgConvolHighpass1 (BW8)", {0,-1,0,-1,5,-1,0,-1,0}, {}, kAbsCap, 1, 0, true},
  {ImgConvolHighpass2, "ImgConvolHighpass2 (BW8)", {-1,-1,-1,-1,9,-1,-1,-1,-1}, {}, kClamp, 1, 0, true},
  {ImgConvolLowpass1, "ImgConvolLowpass1 (BW8)", {1,1,1,1,1,1,1,1,1}, {}, kScale, 14, 7, false},
  {ImgConvolUniform3x3, "ImgConvolUniform3x3 (BW8)", {1,1,1,1,1,1,1,1,1}, {}, kScale, 14, 7, false},
  {ImgConvolLowpass2, "ImgConvolLowpass2 (BW8)", {1,1,1,1,0,1,1,1,1}, {}, kScale, 1, 3, true},
  {ImgConvolLowpass3, "ImgConvolLowpass3 (BW8)", {1,2,1,2,4,2,1,2,1}, {}, kScale, 1, 4, false},
  {ImgConvolGaussian3x3, "ImgConvolGaussian3x3 (BW8)", {1,2,1,2,4,2,1,2,1}, {}, kScale, 1, 4, false},
};
// clang-format on

// The same filters on 16-bit pixels, in the order of kPresets.
using Filter16 = void (*)(EROI<EBW16>*, EROI<EBW16>*);
const Filter16 kTwins[] = {
    ImgConvolSobelX,     ImgConvolSobelY,     ImgConvolSobel,      ImgConvolPrewittX,   ImgConvolPrewittY,
    ImgConvolPrewitt,    ImgConvolGradientX,  ImgConvolGradientY,  ImgConvolGradient,   ImgConvolLaplacianX,
    ImgConvolLaplacianY, ImgConvolLaplacian4, ImgConvolLaplacian8, ImgConvolHighpass1,  ImgConvolHighpass2,
    ImgConvolLowpass1,   ImgConvolUniform3x3, ImgConvolLowpass2,   ImgConvolLowpass3,   ImgConvolGaussian3x3,
};
std::string Label16(const Preset& p) {
  const std::string l = p.label;
  return l.substr(0, l.size() - 4) + "BW16)";
}

// The model of one preset on a whole image. `zero` asks for the zero frame
// of the filters that have one; `blocks` for the fast path's 8-pixel blocks
// of bytes, whose alignment by rowAddress(y) (the destination row) decides
// which pixels of the one-dimensional Laplacians saturate. Elsewhere these
// keep the low bits of the pixel type.
template <class P>
model::Plane<P> Model(const Preset& p, const model::Plane<P>& src, bool zero, bool blocks,
                      const std::function<uintptr_t(int)>& rowAddress) {
  constexpr int top = sizeof(P) == 1 ? 255 : 65535;
  model::Plane<P> s = src, d = src;
  zero = zero && p.zeroFrame;
  for (int y = 0; y < s.h; ++y) {
    const int head = static_cast<int>((8 - rowAddress(y) % 8) % 8);
    const int inBlocks = s.w - head >= 8 ? (s.w - head) / 8 * 8 : 0;
    for (int x = 0; x < s.w; ++x) {
      const bool frame = x == 0 || y == 0 || x == s.w - 1 || y == s.h - 1;
      auto px = [&](int i) {
        const int xx = x + i % 3 - 1, yy = y + i / 3 - 1;
        if (zero && frame && (xx < 0 || yy < 0 || xx >= s.w || yy >= s.h)) return 0;
        return static_cast<int>(s.edge(xx, yy));
      };
      int s1 = 0, s2 = 0;
      for (int i = 0; i < 9; ++i) s1 += p.w1[i] * px(i), s2 += p.w2[i] * px(i);
      int v;
      if (zero && frame && p.mode == kClamp) v = std::min(top, std::abs(s1));
      else if (p.mode == kAbsCap) v = std::min(top, std::abs(s1) + std::abs(s2));
      else if (p.mode == kClamp) v = model::ClampPix<P>(s1);
      else if (p.mode == kScale) v = (s1 * p.mul) >> p.shift;
      else v = (blocks && x >= head && x < head + inBlocks) ? std::min(255, std::abs(s1)) : std::abs(s1) & top;
      d.at(x, y) = static_cast<P>(v);
    }
  }
  return d;
}

TEST(PresetFilters, MatchTheModelOnRandomRoisOnEveryPathSeparateAndInPlace) {
  Rng rng(11);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 400; ++iter) {
      const Preset& p = kPresets[iter % (sizeof kPresets / sizeof *kPresets)];
      const int form = iter / 20 % 3;  // separate, dst == src, null dst
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 5 : 90));
      const int h = 1 + static_cast<int>(rng() % (iter % 4 == 1 ? 3 : 7));
      EImage<EBW8> si, di;
      EROI<EBW8> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      if (iter % 3 == 0) {  // pixels of 0 and 255 only: the Laplacians reach 510
        ImgOper(ALO_BIT_AND, &s, EBW8(0x80), &s);
        ImgOper(ALO_MULTIPLY, &s, EBW8(255), &s);
      }
      EROI<EBW8>& out = form == 0 ? d : s;
      const auto before = testsupport::Snapshot(form == 0 ? di : si);
      const Grey want = Model(p, model::FromRoi(s), path < 0 && form == 0, path >= 0,
                              [&](int y) { return reinterpret_cast<uintptr_t>(out.GetImagePtr(0, y)); });
      p.fn(&s, form == 0 ? &d : form == 1 ? &s : nullptr);
      ASSERT_EQ(EGetError(), E_OK) << p.label;
      ASSERT_EQ(testsupport::Snapshot(form == 0 ? di : si),
                model::Expected(form == 0 ? di : si, out, before, want))
          << p.label << " path " << path << " form " << form << " " << w << "x" << h;
    }
  }
}

TEST(PresetFilters, WorkedNumbers) {
  EImage<EBW8> flat(40, 5), dst(40, 5), line(32, 3);
  ImgCopy(EBW8(255), &flat);
  ImgConvolUniform3x3(&flat, &dst);
  EXPECT_EQ(dst.GetPixel(7, 2).value, 251);
  ImgConvolUniform(&flat, &dst, 1, 0);  // the horizontal 3-pixel mean
  EXPECT_EQ(dst.GetPixel(7, 2).value, 254);
  for (Filter f : std::initializer_list<Filter>{ImgConvolLowpass2, ImgConvolLowpass3}) {
    f(&flat, &dst);  // the fast forms replicate the frame
    if (EGetMMX()) {
      EXPECT_EQ(dst.GetPixel(0, 0).value, 255);
    }
  }
  // A black column on white: 510, stored as 254 pixel by pixel and as 255
  // inside a block (the image's rows are 64-byte aligned: x = 8 is in one).
  ImgCopy(EBW8(255), &line);
  for (int y = 0; y < 3; ++y) line.SetPixel(EBW8(0), 9, y);
  for (int path : {-1, 1}) {
    testsupport::PathGuard guard(path);
    ImgConvolLaplacianX(&line, nullptr);
    EXPECT_EQ(line.GetPixel(9, 1).value, !EGetMMX() ? 254 : 255);
    EXPECT_EQ(line.GetPixel(8, 1).value, 255);
    ImgCopy(EBW8(255), &line);
    for (int y = 0; y < 3; ++y) line.SetPixel(EBW8(0), 9, y);
  }
  // A flat 100: 0 inside; the zero frame of Laplacian4 shows |3 * 100 - 400|
  // along the edges and |2 * 100 - 400| in the corners, pixel by pixel only.
  ImgCopy(EBW8(100), &flat);
  for (int path : {-1, 1}) {
    testsupport::PathGuard guard(path);
    ImgConvolLaplacian4(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(5, 2).value, 0);
    EXPECT_EQ(dst.GetPixel(5, 0).value, !EGetMMX() ? 100 : 0);
    EXPECT_EQ(dst.GetPixel(39, 4).value, !EGetMMX() ? 200 : 0);
  }
  // Highpass2 keeps no absolute value: a dark dot gives 0.
  ImgCopy(EBW8(200), &flat);
  flat.SetPixel(EBW8(10), 5, 2);
  ImgConvolHighpass2(&flat, &dst);
  EXPECT_EQ(dst.GetPixel(5, 2).value, 0);
}

TEST(PresetFilters, RefusalsLeaveTheDestinationAlone) {
  EImage<EBW8> src(20, 6), other(21, 6), unsized;
  ImgCopy(EBW8(9), &src);
  ImgCopy(EBW8(3), &other);
  const auto before = testsupport::Snapshot(other);
  for (const Preset& p : kPresets) {
    p.fn(nullptr, &other);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE) << p.label;
    EXPECT_STREQ(EGetErrorTrace(), p.label);
    p.fn(&src, &other);
    EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH) << p.label;
    p.fn(&src, &unsized);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE) << p.label;
  }
  EXPECT_EQ(testsupport::Snapshot(other), before);
  // In place without its row copies: 1303, the vertical forms tracing their
  // inner routine first, and nothing written.
  const auto srcBefore = testsupport::Snapshot(src);
  for (int path : {-1, 1}) {
    testsupport::PathGuard guard(path);
    mirel::testing::FailFilterAllocations(1);
    ImgConvolGradientY(&src, nullptr);
    EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
    EXPECT_STREQ(EGetErrorTrace(), !EGetMMX() ? "ChrConvolGradientY <- ConvolGradientY (BW8)"
                                            : "ChrMMXConvolGradientY <- ConvolGradientY (BW8)");
    mirel::testing::FailFilterAllocations(1);
    ImgConvolSobel(&src, &src);
    EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
    EXPECT_STREQ(EGetErrorTrace(), "ImgConvolSobel (BW8)");
    mirel::testing::FailFilterAllocations(0);
  }
  EXPECT_EQ(testsupport::Snapshot(src), srcBefore);
}

template <class P>
model::Plane<P> RobertsModel(const model::Plane<P>& s, int w, int h) {
  model::Plane<P> d{w, h, std::vector<P>(static_cast<size_t>(w * h))};
  model::Plane<P> c = s;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      int v;
      if (x == w - 1 && y == h - 1) v = 0;
      else if (x == w - 1) v = 2 * std::abs(c.at(x, y) - c.at(x, y + 1));
      else if (y == h - 1) v = 2 * std::abs(c.at(x, y) - c.at(x + 1, y));
      else v = std::abs(c.at(x, y) - c.at(x + 1, y + 1)) + std::abs(c.at(x + 1, y) - c.at(x, y + 1));
      d.at(x, y) = static_cast<P>(std::min(v, sizeof(P) == 1 ? 255 : 65535));
    }
  return d;
}

TEST(PresetFilters, RobertsOnRandomRoisInPlaceAndIntoASmallerDestination) {
  Rng rng(5);
  for (int iter = 0; iter < 60; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 30), h = 1 + static_cast<int>(rng() % 6);
    const int form = iter % 3;  // separate (possibly smaller), dst == src, null dst
    EImage<EBW8> si, di;
    EROI<EBW8> s, d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::FillRandom(si, rng);
    const int dw = form == 0 ? 1 + static_cast<int>(rng() % w) : w, dh = form == 0 ? 1 + static_cast<int>(rng() % h) : h;
    testsupport::PlaceRandom(di, d, dw, dh, rng);
    const Grey want = RobertsModel(model::FromRoi(s), dw, dh);
    ImgConvolRoberts(&s, form == 0 ? &d : form == 1 ? &s : nullptr);
    ASSERT_EQ(EGetError(), E_OK);
    const Grey got = model::FromRoi(form == 0 ? d : s);
    for (int y = 0; y < dh; ++y)
      for (int x = 0; x < dw; ++x) ASSERT_EQ(const_cast<Grey&>(got).at(x, y), const_cast<Grey&>(want).at(x, y));
  }
  EImage<EBW8> one(1, 1), big(2, 1);
  one.SetPixel(EBW8(77), 0, 0);
  ImgConvolRoberts(&one, nullptr);
  EXPECT_EQ(one.GetPixel(0, 0).value, 0);
  ImgConvolRoberts(&one, &big);  // would read outside the source
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolRoberts");
}

// ---------------------------------------------------------------- 16 bits

// The twins on random 16-bit data of several ranges (and of 0 and 65535
// only, where the one-dimensional Laplacians reach 131070), separate, in
// place and with a null destination: the same bytes on every path, the
// zero frame on every separate destination.
TEST(PresetFilters16, MatchTheModelOnRandomRoisOnEveryPath) {
  Rng rng(16);
  const unsigned limits[] = {65536, 256, 4096};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 300; ++iter) {
      const size_t f = static_cast<size_t>(iter) % (sizeof kTwins / sizeof *kTwins);
      const Preset& p = kPresets[f];
      const int form = iter / 20 % 3;  // separate, dst == src, null dst
      const int w = 1 + static_cast<int>(rng() % (iter % 4 == 0 ? 5 : 70));
      const int h = 1 + static_cast<int>(rng() % (iter % 4 == 1 ? 3 : 6));
      EImage<EBW16> si, di;
      EROI<EBW16> s, d;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::PlaceRandom(di, d, w, h, rng);
      testsupport::FillRandom(si, rng);
      testsupport::FillRandom(di, rng);
      model::Limit(s, limits[iter % 3], rng);
      if (iter % 5 == 0)
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) s.SetPixel(EBW16(rng() % 2 ? 65535 : 0), x, y);
      EROI<EBW16>& out = form == 0 ? d : s;
      const auto before = testsupport::Snapshot(form == 0 ? di : si);
      const model::Grey16 want = Model(p, model::FromRoi(s), form == 0, false, [](int) { return uintptr_t{0}; });
      kTwins[f](&s, form == 0 ? &d : form == 1 ? &s : nullptr);
      ASSERT_EQ(EGetError(), E_OK) << Label16(p);
      ASSERT_EQ(testsupport::Snapshot(form == 0 ? di : si), model::Expected(form == 0 ? di : si, out, before, want))
          << Label16(p) << " path " << path << " form " << form << " " << w << "x" << h;
    }
  }
}

TEST(PresetFilters16, WorkedNumbersOnEveryPath) {
  EImage<EBW16> flat(40, 5), dst(40, 5), line(32, 3);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgCopy(EBW16(65535), &flat);
    ImgConvolUniform3x3(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(7, 2).value, 64511);  // (9 * 65535 * 14) >> 7
    ImgConvolLowpass2(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(9, 2).value, 65535);
    ImgConvolLowpass3(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(0, 0).value, 65535);
    // A black column on white: 131070 keeps its low 16 bits on every path.
    ImgCopy(EBW16(65535), &line);
    for (int y = 0; y < 3; ++y) line.SetPixel(EBW16(0), 9, y);
    ImgConvolLaplacianX(&line, nullptr);
    EXPECT_EQ(line.GetPixel(9, 1).value, 65534);
    EXPECT_EQ(line.GetPixel(8, 1).value, 65535);
    // A flat 100 has the zero frame of Laplacian4 on every path: |3 * 100 -
    // 400| along the edges, |2 * 100 - 400| in the corners.
    ImgCopy(EBW16(100), &flat);
    ImgConvolLaplacian4(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(5, 2).value, 0);
    EXPECT_EQ(dst.GetPixel(5, 0).value, 100);
    EXPECT_EQ(dst.GetPixel(39, 4).value, 200);
    // Highpass2: 9c - N8 clamped to 0..65535 inside.
    ImgCopy(EBW16(1000), &flat);
    flat.SetPixel(EBW16(10), 5, 2);
    flat.SetPixel(EBW16(2000), 10, 2);
    flat.SetPixel(EBW16(60000), 20, 2);
    ImgConvolHighpass2(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(5, 2).value, 0);
    EXPECT_EQ(dst.GetPixel(10, 2).value, 10000);
    EXPECT_EQ(dst.GetPixel(20, 2).value, 65535);
    // Sobel of both directions saturates and never wraps.
    ImgCopy(EBW16(0), &flat);
    for (int x = 20; x < 40; ++x)
      for (int y = 2; y < 5; ++y) flat.SetPixel(EBW16(65535), x, y);
    ImgConvolSobel(&flat, &dst);
    EXPECT_EQ(dst.GetPixel(20, 2).value, 65535);
  }
}

TEST(PresetFilters16, RefusalsLeaveTheDestinationAlone) {
  EImage<EBW16> src(20, 6), other(21, 6), unsized;
  ImgCopy(EBW16(900), &src);
  ImgCopy(EBW16(3), &other);
  const auto before = testsupport::Snapshot(other);
  for (size_t f = 0; f < sizeof kTwins / sizeof *kTwins; ++f) {
    kTwins[f](nullptr, &other);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
    EXPECT_EQ(EGetErrorTrace(), Label16(kPresets[f]));
    kTwins[f](&src, &other);
    EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
    kTwins[f](&src, &unsized);
    EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  }
  EXPECT_EQ(testsupport::Snapshot(other), before);
  const auto srcBefore = testsupport::Snapshot(src);
  mirel::testing::FailFilterAllocations(1);
  ImgConvolGradientY(&src, nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "ChrConvolGradientY (BW16) <- ConvolGradientY (BW16)");
  mirel::testing::FailFilterAllocations(0);
  EXPECT_EQ(testsupport::Snapshot(src), srcBefore);
}

TEST(PresetFilters16, RobertsOnRandomRois) {
  Rng rng(6);
  for (int iter = 0; iter < 45; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 30), h = 1 + static_cast<int>(rng() % 6);
    const int form = iter % 3;  // separate, dst == src, null dst
    EImage<EBW16> si, di;
    EROI<EBW16> s, d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::FillRandom(si, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    const model::Grey16 want = RobertsModel(model::FromRoi(s), w, h);
    ImgConvolRoberts(&s, form == 0 ? &d : form == 1 ? &s : nullptr);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(model::FromRoi(form == 0 ? d : s).px, want.px);
  }
  EImage<EBW16> one(1, 1), big(2, 1);
  ImgConvolRoberts(&one, &big);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolRoberts (BW16)");
}

}  // namespace
