// Thinning, thickening and the distance map: against direct models on
// random ROIs on every path, the worked cases, and errors.
#include <algorithm>
#include <string>
#include <vector>

#include "bits_support.h"
#include "morph_model.h"

namespace {

using morph::Img;
using morph::Rng;
using testsupport::AllPaths;
using testsupport::PathGuard;

// ---------------------------------------------------------------- hit-or-miss model

// The kernel's nine entries (-1, 0, 1) row by row, turned one place round
// the centre: clockwise, top-left moves to top-centre.
void TurnModel(int k[9], int rotation) {
  static const int ring[8] = {0, 1, 2, 5, 8, 7, 6, 3};  // clockwise on the screen
  int t[9];
  std::copy(k, k + 9, t);
  for (int i = 0; i < 8; ++i) {
    const int from = ring[i], to = ring[(i + (rotation == 1 ? 1 : 7)) % 8];
    t[to] = k[from];
  }
  std::copy(t, t + 9, k);
}

// Passes of the hit-or-miss test, each on the picture of the pass before,
// with the loop's stopping rules; `iterations` in and out.
Img ThinModel(const Img& src, const int kernel[9], unsigned outside, int rotation, bool thick, int full,
              int& iterations) {
  int k[9];
  std::copy(kernel, kernel + 9, k);
  long long limit = iterations == 0 ? src.w : iterations;
  if (rotation != 0) limit *= 8;
  iterations = 0;
  Img cur = src;
  int still = 8;
  for (long long pass = 0; pass < limit; ++pass) {
    ++iterations;
    Img next = cur;
    bool changed = false;
    for (int y = 0; y < src.h; ++y)
      for (int x = 0; x < src.w; ++x) {
        bool fit = true;
        for (int i = 0; i < 9; ++i) {
          if (k[i] == -1) continue;
          const int xx = x + i % 3 - 1, yy = y + i / 3 - 1;
          bool set = false;
          if (xx >= 0 && xx < src.w && yy >= 0 && yy < src.h) set = cur.at(xx, yy) != 0;
          else if (xx < 0 ? static_cast<int>(outside) > 0 : outside != 0) continue;
          if (set != (k[i] == 1)) fit = false;
        }
        const int old = cur.at(x, y);
        const int v = fit ? (thick ? full : 0) : (pass == 0 ? (old != 0 ? full : 0) : old);
        next.at(x, y) = v;
        changed |= v != old || (pass == 0 && !fit);
      }
    cur = next;
    if (rotation == 0) {
      if (!changed) break;
      continue;
    }
    if (pass % 8 == 0) still = 8;
    if (!changed) --still;
    TurnModel(k, rotation);
    if (still == 0) break;
  }
  if (rotation != 0) iterations >>= 3;
  return cur;
}

struct Pattern {
  int k[9];
  unsigned outside;
};

Pattern RandomPattern(Rng& rng) {
  static const unsigned outsides[] = {0, 1, 0x80000000u, 7};
  Pattern p;
  for (int& v : p.k) v = static_cast<int>(rng() % 5) - 2 < -1 ? -1 : static_cast<int>(rng() % 3) - 1;
  p.outside = outsides[rng() % 4];
  return p;
}

void SetPattern(EKernel& kernel, const Pattern& p) {
  kernel.SetKernelData(static_cast<float>(p.k[0]), static_cast<float>(p.k[1]), static_cast<float>(p.k[2]),
                       static_cast<float>(p.k[3]), static_cast<float>(p.k[4]), static_cast<float>(p.k[5]),
                       static_cast<float>(p.k[6]), static_cast<float>(p.k[7]), static_cast<float>(p.k[8]));
  kernel.SetOutsideValue(p.outside);
}

template <class P>
void ThinMatchesModel(bool allPaths) {
  Rng rng(61);
  const std::vector<int> paths = allPaths ? AllPaths() : std::vector<int>{-1};
  for (int path : paths) {
    PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      const Pattern pat = RandomPattern(rng);
      const int rotation = static_cast<int>(rng() % 3), request = static_cast<int>(rng() % 4) * 2;
      const bool thick = rng() & 1;
      const int w = 1 + static_cast<int>(rng() % (iter % 5 ? 150 : 3)), h = 1 + static_cast<int>(rng() % 6);
      EKernel kernel;
      SetPattern(kernel, pat);
      int got = request, want = request;
      const std::function<void(EROI<P>*, EROI<P>*)> run = [&](EROI<P>* s, EROI<P>* d) {
        if (thick) ImgThick(static_cast<const EROI<P>*>(s), d != nullptr ? d : s, &kernel, KERNEL_ROTATION(rotation), got);
        else ImgThin(static_cast<const EROI<P>*>(s), d != nullptr ? d : s, &kernel, KERNEL_ROTATION(rotation), got);
      };
      const auto model = [&](const Img& s) {
        return ThinModel(s, pat.k, pat.outside, rotation, thick, sizeof(P) == 1 ? 255 : 65535, want);
      };
      ASSERT_TRUE(morph::Matches<P>(rng, w, h, iter % 4 == 0, iter % 3 != 0, run, model))
          << "path " << path << " " << w << "x" << h << " rotation " << rotation << " thick " << thick;
      ASSERT_EQ(got, want) << "path " << path << " " << w << "x" << h << " rotation " << rotation;
    }
  }
}

TEST(Thinning, MatchesModelOnEveryPath8) { ThinMatchesModel<EBW8>(true); }
TEST(Thinning, MatchesModel16) { ThinMatchesModel<EBW16>(false); }

TEST(Thinning, ColourRunsComponentsInTurnWithOneCount) {
  Rng rng(62);
  EImage<EC24> src(23, 5), dst(23, 5);
  testsupport::FillRandom(src, rng);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 23; ++x)
      for (int c = 0; c < 3; ++c) src.GetImagePtr(0, y)[x].c[c] &= static_cast<unsigned char>(rng() & 1 ? 0xff : 0);
  const Pattern pat{{-1, -1, -1, -1, 1, -1, 0, 0, 0}, 0};
  EKernel kernel;
  SetPattern(kernel, pat);
  int got = 0, want = 0;
  ImgThin(&src, &dst, &kernel, KERNEL_ROTATION_CLOCKWISE, got);
  ASSERT_EQ(EGetError(), E_OK);
  for (int c = 0; c < 3; ++c) {
    Img plane{23, 5, {}};
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 23; ++x) plane.px.push_back(src.GetImagePtr(0, y)[x].c[c]);
    // The count left by one component is the request of the next.
    const Img out = ThinModel(plane, pat.k, pat.outside, 1, false, 255, want);
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 23; ++x) ASSERT_EQ(dst.GetImagePtr(0, y)[x].c[c], out.at(x, y)) << c;
  }
  EXPECT_EQ(got, want);
}

TEST(Thinning, WorkedCases) {
  EImage<EBW8> img(6, 4), out(6, 4);
  ImgCopy(EBW8(9), &img);
  // A kernel of all -1 fits everywhere: one pass clears all, the next
  // changes nothing, and the count includes that pass.
  EKernel all(3, 3, 0, 0, 0, 0);
  all.SetKernelData(-1, -1, -1, -1, -1, -1, -1, -1, -1);
  int n = 0;
  EXPECT_EQ(ImgThin(&img, &out, &all, KERNEL_ROTATION_NONE, n), 0);
  EXPECT_EQ(n, 2);
  const std::vector<unsigned char> cleared = testsupport::Bytes(out);
  EXPECT_EQ(*std::max_element(cleared.begin(), cleared.end()), 0);
  // With a rotation the count is in full turns: 16 passes give 2.
  n = 0;
  ImgThick(&img, &out, &all, KERNEL_ROTATION_ANTICLOCKWISE, n);
  EXPECT_EQ(n, 2);
  EXPECT_EQ(out.GetPixel(5, 3).value, 255);
  // Needing set pixels on top never fits in the top row when the outside
  // reads as clear; the source's 9 becomes 255 there.
  EKernel tee(KERNEL_PATTERN_TEE);  // 0 0 0 / -1 1 -1 / 1 1 1, outside 0
  EKernel top(3, 3, 0, 0, 0, 0);
  top.SetKernelData(1, 1, 1, -1, 1, -1, -1, -1, -1);
  n = 1;
  ImgThin(&img, &out, &top, KERNEL_ROTATION_NONE, n);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(out.GetPixel(2, 0).value, 255);
  EXPECT_EQ(out.GetPixel(2, 1).value, 0);
  // A 3 x 5 kernel passes the size test; 1023 iterations are accepted.
  EKernel tall(3, 5, 0, 0, 0, 0);
  for (int i = 0; i < 15; ++i) tall.Data[i] = -1;
  n = 1023;
  EXPECT_EQ(ImgBiLevelThin(&img, &out, &tall, KERNEL_ROTATION_NONE, n), 0);
  EXPECT_EQ(n, 2);
  n = 3;
  EXPECT_EQ(ImgBiLevelThick(&img, &img, &tee, KERNEL_ROTATION_NONE, n), 0);
}

TEST(Thinning, ErrorsLeaveTheDestinationAndTrace) {
  Rng rng(63);
  EImage<EBW8> img(6, 4), out(6, 4), wide(7, 4), none;
  EImage<EBW16> img16(6, 4), out16(6, 4);
  EImage<EC24> img24(6, 4), out24(6, 4);
  testsupport::FillRandom(out, rng);
  testsupport::FillRandom(out16, rng);
  testsupport::FillRandom(out24, rng);
  const auto before = testsupport::Snapshot(out);
  const auto before16 = testsupport::Snapshot(out16);
  const auto before24 = testsupport::Snapshot(out24);
  EKernel tee(KERNEL_PATTERN_TEE), half(3, 3, 0, 0, 0, 0), big(5, 5, 0, 0, 0, 0), empty, narrow(3, 1, 0, 0, 0, 0);
  half.SetKernelData(0, 0, 0, -1, 0.5f, -1, 1, 1, 1);
  for (int i = 0; i < 3; ++i) narrow.Data[i] = 0;
  empty.SizeX = 3;
  struct Case {
    const EROI<EBW8>* src;
    EROI<EBW8>* dst;
    const EKernel* kernel;
    int rotation, iterations;
    E_ERRORS code;
  } cases[] = {
      {&img, &wide, &tee, 0, 0, E_ERROR_SIZE_MISMATCH}, {&img, nullptr, &tee, 0, 0, E_ERROR_VOID_IMAGE},
      {&none, &none, &tee, 0, 0, E_ERROR_VOID_IMAGE},   {&img, &out, &big, 0, 0, E_ERROR_KERNEL_SIZE},
      {&img, &out, &empty, 0, 0, E_ERROR_KERNEL_VOID},  {&img, &out, &half, 0, 0, E_ERROR_KERNEL_TYPE},
      {&img, &out, &narrow, 0, 0, E_ERROR_KERNEL_TYPE}, {&img, &out, &tee, 3, 0, E_ERROR_BAD_ARGUMENT_2},
      {&img, &out, &tee, 0, 1024, E_ERROR_BAD_ARGUMENT_3}, {&img, &out, &tee, 0, -1, E_ERROR_BAD_ARGUMENT_3},
  };
  for (const Case& c : cases) {
    int n = c.iterations;
    EXPECT_EQ(ImgThin(c.src, c.dst, c.kernel, KERNEL_ROTATION(c.rotation), n), c.code);
    EXPECT_STREQ(EGetErrorTrace(), "ImgThin");
    n = c.iterations;
    EXPECT_EQ(ImgBiLevelThick(c.src, c.dst, c.kernel, KERNEL_ROTATION(c.rotation), n), c.code);
    EXPECT_STREQ(EGetErrorTrace(), "ImgBiLevelThick");
  }
  EXPECT_EQ(testsupport::Snapshot(out), before);
  // A destination that overlaps the source in part is refused.
  EImage<EBW8> big8(10, 6);
  EROI<EBW8> a(&big8, 0, 0, 6, 4), b(&big8, 2, 1, 6, 4);
  int n = 1;
  EXPECT_EQ(ImgThick(&a, &b, &tee, KERNEL_ROTATION_NONE, n), E_ERROR_SAME_IMAGE);
  n = 1;
  ImgThick(&img16, &out16, &half, KERNEL_ROTATION_NONE, n);
  EXPECT_EQ(EGetError(), E_ERROR_KERNEL_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThick (BW16)");
  EXPECT_EQ(testsupport::Snapshot(out16), before16);
  ImgThin(&img24, &out24, &tee, KERNEL_ROTATION(5), n);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_2);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThin <- ImgThin ( C24)");
  EXPECT_EQ(testsupport::Snapshot(out24), before24);
}

// The bit forms give the pixels of the 8-bit form on the same picture, at
// every bit offset of source and destination, in place or not, and leave
// every other bit as it was.
TEST(Thinning, BitsMatchTheByteFormAtEveryOffset) {
  Rng rng(66);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 48; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 ? 700 : 9)), h = 1 + static_cast<int>(rng() % 5);
      bitsupport::BitRoi src(w, h, iter % 8, rng), dst(w, h, static_cast<int>(rng() % 8), rng);
      const Pattern pat = RandomPattern(rng);
      const auto rotation = KERNEL_ROTATION(rng() % 3);
      const int request = static_cast<int>(rng() % 3) * 3;
      const bool thick = rng() & 1, inPlace = iter % 3 == 0;
      EKernel kernel;
      SetPattern(kernel, pat);
      EImage<EBW8> grey(w, h), greyOut(w, h);
      const std::vector<int> pixels = src.Pixels();
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) grey.SetPixel(EBW8(pixels[static_cast<size_t>(y) * w + x] ? 255 : 0), x, y);
      int want = request, got = request;
      if (thick) ImgThick(&grey, &greyOut, &kernel, rotation, want);
      else ImgThin(&grey, &greyOut, &kernel, rotation, want);
      bitsupport::BitRoi& out = inPlace ? src : dst;
      const auto srcBefore = src.Snapshot(), outBefore = out.Snapshot();
      EROI<EBW1>* target = inPlace ? ((iter & 1) ? nullptr : &src.roi) : &dst.roi;
      const short code = thick ? ImgThick(&src.roi, target, &kernel, rotation, got)
                               : ImgThin(&src.roi, target, &kernel, rotation, got);
      ASSERT_EQ(code, 0);
      std::vector<int> expect;
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) expect.push_back(greyOut.GetPixel(x, y).value ? 1 : 0);
      ASSERT_EQ(out.Pixels(), expect) << "path " << path << " " << w << "x" << h << " rotation " << rotation
                                      << " thick " << thick << " in place " << inPlace;
      ASSERT_EQ(got, want);
      ASSERT_TRUE(bitsupport::BitRoi::SameOutside(out.Snapshot(), outBefore, out.Owned(false)));
      if (!inPlace) {
        ASSERT_EQ(src.Snapshot(), srcBefore);
      }
    }
  }
}

// The first pass counts a pixel that does not fit as a change even when
// nothing is written: one set pixel under a pattern that needs a clear
// centre, away from the row's ends, makes the count 2 on every path.
TEST(Thinning, FirstPassCountsMissesOnEveryPath) {
  EKernel clearCentre(3, 3, 0, 0, 0, 0);
  clearCentre.SetKernelData(-1, -1, -1, -1, 0, -1, -1, -1, -1);
  EImage<EBW8> grey(700, 3);
  ImgCopy(EBW8(0), &grey);
  grey.SetPixel(EBW8(255), 10, 1);
  EImage<EBW1> bits;
  bits.SetSize(700, 3);
  ImgCopy(EBW1(0), &bits);
  ImgConvert(&grey, &bits);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    int n = 0;
    EXPECT_EQ(ImgThin(&grey, &grey, &clearCentre, KERNEL_ROTATION_NONE, n), 0);
    EXPECT_EQ(n, 2) << path;
    n = 0;
    EXPECT_EQ(ImgThin(&bits, nullptr, &clearCentre, KERNEL_ROTATION_NONE, n), 0);
    EXPECT_EQ(n, 2) << path;
  }
}

// Images over a caller's buffer with no slack: every path keeps to the rows
// (the sanitizer build would see a read or write behind them) and gives the
// bytes of an image the library allocates.
TEST(Thinning, TightBuffersGiveTheSameBytes) {
  Rng rng(68);
  const int w = 203, h = 3, n = (w + 7) / 8 + 1;
  std::vector<unsigned char> grey(static_cast<size_t>(w) * h), bits(static_cast<size_t>(n) * h);
  std::vector<unsigned short> dist(static_cast<size_t>(w) * h);
  for (auto& v : grey) v = rng() % 3 ? 255 : 0;
  for (auto& v : bits) v = static_cast<unsigned char>(rng());
  EImage<EBW8> g(reinterpret_cast<EBW8*>(grey.data()), w, h, w), gOwn(w, h), gOut(w, h);
  EImage<EBW1> b(reinterpret_cast<EBW1*>(bits.data()), w, h, n);
  EImage<EBW16> d(reinterpret_cast<EBW16*>(dist.data()), w, h, 2 * w), dOwn(w, h);
  ImgCopy(static_cast<const EROI<EBW8>*>(&g), &gOwn);
  EKernel tee(KERNEL_PATTERN_TEE);
  for (int path : AllPaths()) {
    PathGuard guard(path);
    ASSERT_EQ(ImgDistance(&g, &d, 300), 0);
    ASSERT_EQ(ImgDistance(&gOwn, &dOwn, 300), 0);
    ASSERT_EQ(testsupport::Bytes(d), testsupport::Bytes(dOwn)) << path;
    int n1 = 2, n2 = 2, n3 = 2;
    EImage<EBW8> tight(reinterpret_cast<EBW8*>(grey.data()), w, h, w);
    ImgThin(&gOwn, &gOut, &tee, KERNEL_ROTATION_CLOCKWISE, n1);
    ImgThin(&tight, &tight, &tee, KERNEL_ROTATION_CLOCKWISE, n2);
    ASSERT_EQ(testsupport::Bytes(tight), testsupport::Bytes(gOut)) << path;
    EImage<EBW1> bOwn(w, h);
    EImage<EBW8> bytes(w, h), bytesOwn(w, h);
    ImgCopy(static_cast<const EROI<EBW1>*>(&b), &bOwn);
    int n4 = 2;
    ASSERT_EQ(ImgThick(&b, nullptr, &tee, KERNEL_ROTATION_ANTICLOCKWISE, n3), 0);
    ASSERT_EQ(ImgThick(&bOwn, nullptr, &tee, KERNEL_ROTATION_ANTICLOCKWISE, n4), 0);
    ImgConvert(&b, &bytes, 255);
    ImgConvert(&bOwn, &bytesOwn, 255);
    ASSERT_EQ(testsupport::Bytes(bytes), testsupport::Bytes(bytesOwn)) << path;
    EXPECT_EQ(n1, n2);
    EXPECT_EQ(n3, n4);
    ImgCopy(static_cast<const EROI<EBW8>*>(&gOwn), &tight);
  }
}

TEST(Thinning, BitFormsThrowAlignedAndReportPlain) {
  Rng rng(67);
  bitsupport::BitRoi a(20, 4, 0, rng), b(20, 4, 3, rng), wide(21, 4, 0, rng);
  EKernel tee(KERNEL_PATTERN_TEE), big(5, 5, 0, 0, 0, 0);
  int n = 0;
  auto thrown = [&](auto&& call) {
    try {
      call();
    } catch (const Corvane::Talmeer::Exception& e) {
      return static_cast<int>(e.GetCode());
    }
    return 0;
  };
  EXPECT_EQ(thrown([&] { ImgThinAligned(&a.roi, &b.roi, &tee, KERNEL_ROTATION_NONE, n); }), E_ERROR_BW1_NOT_ALIGNED);
  EXPECT_EQ(thrown([&] { ImgThickAligned(&a.roi, nullptr, &big, KERNEL_ROTATION_NONE, n); }), E_ERROR_KERNEL_SIZE);
  EXPECT_EQ(EGetError(), E_ERROR_KERNEL_SIZE);
  EXPECT_EQ(thrown([&] { ImgThinAligned(&a.roi, &wide.roi, &tee, KERNEL_ROTATION_NONE, n); }),
            E_ERROR_SIZE_MISMATCH);
  const auto before = b.Snapshot();
  // The source moves onto an aligned temporary before the kernel is read;
  // the throw frees it and leaves the destination as it was.
  n = 0;
  EXPECT_EQ(ImgThin(&b.roi, &b.roi, &big, KERNEL_ROTATION_NONE, n), E_ERROR_KERNEL_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThin (BW1)");
  n = 1024;
  EXPECT_EQ(ImgThick(&a.roi, &b.roi, &tee, KERNEL_ROTATION_NONE, n), E_ERROR_BAD_ARGUMENT_3);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThick (BW1)");
  EXPECT_EQ(b.Snapshot(), before);
  EXPECT_EQ(ImgThick(static_cast<EROI<EBW1>*>(nullptr), &b.roi, &tee, KERNEL_ROTATION_NONE, n), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThick (BW1)");
}

// ---------------------------------------------------------------- distance model

// The two passes as written: the forward pass reads the left neighbour from
// the source; the ceiling stands in for the neighbours outside the ROI.
std::vector<int> DistanceModel(const Img& s, int limit) {
  const int w = s.w, h = s.h, L = limit >= 65535 ? 65535 : limit < 1 ? 0 : limit;
  std::vector<int> d(static_cast<size_t>(w) * h);
  auto D = [&](int x, int y) -> int& { return d[static_cast<size_t>(y) * w + x]; };
  auto least = [](std::initializer_list<int> v) { return std::min(v); };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int S = s.at(x, y);
      int m;
      if (y == 0) m = x == 0 ? L - 1 : std::min(s.at(x - 1, 0), L);
      else if (w == 1) m = std::min(D(0, y - 1), L);
      else if (x == 0) m = least({D(0, y - 1), L, D(1, y - 1)});
      else if (x == w - 1) m = least({D(x - 1, y - 1), D(x, y - 1), L, s.at(x - 1, y)});
      else m = least({D(x - 1, y - 1), D(x, y - 1), D(x + 1, y - 1), s.at(x - 1, y)});
      D(x, y) = std::min(S, m + 1);
    }
  for (int y = h - 1; y >= 0; --y)
    for (int x = w - 1; x >= 0; --x) {
      int m;
      if (y == h - 1) {
        if (x == w - 1) {
          D(x, y) = std::min(D(x, y), L);
          continue;
        }
        m = std::min(D(x + 1, y), L);
      } else if (w == 1) {
        m = std::min(D(0, y + 1), L);
      } else if (x == w - 1) {
        m = least({D(x, y + 1), L, D(x - 1, y + 1)});
      } else if (x == 0) {
        m = least({D(1, y + 1), D(0, y + 1), L, D(1, y)});
      } else {
        m = least({D(x + 1, y + 1), D(x, y + 1), D(x - 1, y + 1), D(x + 1, y)});
      }
      D(x, y) = std::min(D(x, y), m + 1);
    }
  return d;
}

TEST(Distance, MatchesTwoPassModelOnEveryPath) {
  Rng rng(64);
  const int limits[] = {-5, 0, 1, 3, 40, 254, 255, 256, 65535, 70000};
  for (int path : AllPaths()) {
    PathGuard guard(path);
    for (int iter = 0; iter < 60; ++iter) {
      const int w = 1 + static_cast<int>(rng() % (iter % 4 ? 200 : 3)), h = 1 + static_cast<int>(rng() % 7);
      const int limit = limits[iter % 10];
      EImage<EBW8> si;
      EROI<EBW8> s;
      testsupport::PlaceRandom(si, s, w, h, rng);
      testsupport::FillRandom(si, rng);
      // Mostly 0 and 255, so that distances grow, with some other values.
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
          const unsigned r = rng() % 16;
          s.GetImagePtr(0, y)[x] = EBW8(r < 3 ? 0 : r < 14 ? 255 : static_cast<unsigned char>(rng()));
        }
      EImage<EBW16> d(w, h);
      testsupport::FillRandom(d, rng);
      const auto srcBefore = testsupport::Snapshot(si);
      ASSERT_EQ(ImgDistance(&s, &d, limit), 0);
      const std::vector<int> want = DistanceModel(morph::FromRoi(s), limit);
      const Img got = morph::FromRoi(static_cast<EROI<EBW16>&>(d));
      ASSERT_EQ(got.px, want) << "path " << path << " " << w << "x" << h << " limit " << limit;
      ASSERT_EQ(testsupport::Snapshot(si), srcBefore);
    }
  }
}

TEST(Distance, WorkedCasesAndErrors) {
  // The left neighbour comes from the source: 0 255 255 255 gives 0 1 255 255.
  EImage<EBW8> row(4, 1);
  const unsigned char v[4] = {0, 255, 255, 255};
  for (int x = 0; x < 4; ++x) row.SetPixel(EBW8(v[x]), x, 0);
  EImage<EBW16> out(4, 1);
  EXPECT_EQ(ImgDistance(&row, &out, 1000), 0);
  const int want[4] = {0, 1, 255, 255};
  for (int x = 0; x < 4; ++x) EXPECT_EQ(out.GetImagePtr(0, 0)[x].value, want[x]);

  Rng rng(65);
  EImage<EBW8> none;
  EImage<EBW16> wide(5, 1), noneOut;
  testsupport::FillRandom(out, rng);
  const auto before = testsupport::Snapshot(out);
  EXPECT_EQ(ImgDistance(&row, &wide, 5), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgDistance");
  EXPECT_EQ(ImgDistance(nullptr, &out, 5), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(ImgDistance(&row, nullptr, 5), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(ImgDistance(&none, &noneOut, 5), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgDistance");
  EXPECT_EQ(testsupport::Snapshot(out), before);
}

}  // namespace
