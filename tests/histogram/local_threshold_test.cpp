#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "histogram_test_util.h"

namespace {

using Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold;
using testsupport::Rng;

// The local mean threshold from an integral image of the ROI.
std::vector<unsigned char> LocalMeanModel(const EROI<EBW8>& src, int half, int offset) {
  const int w = src.GetWidth(), h = src.GetHeight();
  std::vector<uint64_t> sat(static_cast<size_t>(w + 1) * (h + 1), 0);
  auto at = [&](int x, int y) -> uint64_t& { return sat[static_cast<size_t>(y) * (w + 1) + x]; };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) at(x + 1, y + 1) = src.GetPixel(x, y) + at(x, y + 1) + at(x + 1, y) - at(x, y);
  const int r = std::min(half, (std::min(w, h) - 1) / 2), side = 2 * r + 1;
  const uint32_t area = static_cast<uint32_t>(side * side);
  std::vector<unsigned char> out;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int cx = std::clamp(x, r, w - 1 - r), cy = std::clamp(y, r, h - 1 - r);
      const uint64_t sum = at(cx + r + 1, cy + r + 1) - at(cx - r, cy + r + 1) - at(cx + r + 1, cy - r) + at(cx - r, cy - r);
      const int32_t lhs = static_cast<int32_t>(src.GetPixel(x, y) * area);
      const int32_t rhs = static_cast<int32_t>(static_cast<uint32_t>(sum) + area * static_cast<uint32_t>(offset));
      out.push_back(lhs < rhs ? 0 : 255);
    }
  return out;
}

// Random images, ROI origins and widths, windows from nothing to more than
// the image, offsets of both signs (some large enough to wrap), on every path.
TEST(LocalMeanThreshold, MatchesDirectSumsOnEveryPath) {
  Rng rng(81);
  for (int iter = 0; iter < 62; ++iter) {
    // The last two squares are wide enough for an area above 16 bits.
    const bool large = iter >= 60;
    const int w = large ? 560 + static_cast<int>(rng() % 40) : 1 + static_cast<int>(rng() % 150);
    const int h = large ? 530 : 1 + static_cast<int>(rng() % 14);
    EImage<EBW8> simg, dimg;
    EROI<EBW8> src, dst;
    testsupport::PlaceRandom(simg, src, w, h, rng);
    testsupport::PlaceRandom(dimg, dst, w, h, rng, 70);
    testsupport::FillRandom(simg, rng);
    // Smooth areas as well as noise, so that pixels sit near their mean.
    if (iter % 2)
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) src.SetPixel(EBW8(static_cast<unsigned char>(100 + (x / 7 + y) % 5 + rng() % 3)), x, y);
    const int half = large ? 300 : static_cast<int>(rng() % 12);
    const int offset = iter % 10 == 0 ? static_cast<int>(rng()) : static_cast<int>(rng() % 21) - 10;
    const std::vector<unsigned char> want = LocalMeanModel(src, half, offset);
    for (int path : testsupport::AllPaths()) {
      testsupport::FillRandom(dimg, rng);
      testsupport::PathGuard guard(path);
      EOk();
      ImgLocalMeanThreshold(&src, &dst, half, offset);
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Bytes(dst), want) << "iter " << iter << " path " << path << " half " << half;
    }
  }
}

// Borrowed buffers with no padding behind the rows: the sanitizer build
// sees any access past a row's last pixel.
TEST(LocalMeanThreshold, TightRowsOnEveryPath) {
  Rng rng(86);
  for (int w = 1; w <= 90; w += 7) {
    const int h = 9;
    std::vector<EBW8> in(static_cast<size_t>(w) * h), out(in.size());
    for (EBW8& p : in) p = EBW8(static_cast<unsigned char>(rng()));
    EImage<EBW8> src(in.data(), w, h, w), dst(out.data(), w, h, w);
    const std::vector<unsigned char> want = LocalMeanModel(src, 3, -2);
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      ImgLocalMeanThreshold(&src, &dst, 3, -2);
      EXPECT_EQ(testsupport::Bytes(dst), want) << "width " << w << " path " << path;
    }
  }
}

// A half size of 0 compares each pixel with itself plus the offset.
TEST(LocalMeanThreshold, HalfSizeZero) {
  Rng rng(82);
  EImage<EBW8> src(40, 5), dst(40, 5);
  testsupport::FillRandom(src, rng);
  for (int offset : {0, -3, 1}) {
    ImgLocalMeanThreshold(&src, &dst, 0, offset);
    EXPECT_EQ(testsupport::Bytes(dst), std::vector<unsigned char>(200, offset > 0 ? 0 : 255)) << offset;
  }
}

// Codes without a trace and without clearing the state on entry: a stale
// code survives a call that succeeds, and a failed call leaves the
// destination alone.
TEST(LocalMeanThreshold, OlderErrorReporting) {
  EImage<EBW8> src(8, 6), dst(8, 6), small(8, 5), empty;
  Rng rng(83);
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  const std::vector<unsigned char> before = testsupport::Snapshot(dst);
  struct Case {
    const EROI<EBW8>* s;
    EROI<EBW8>* d;
    int half;
    E_ERRORS code;
  };
  for (const Case& c : {Case{&empty, &dst, 1, E_ERROR_VOID_IMAGE}, Case{nullptr, &dst, 1, E_ERROR_VOID_IMAGE},
                        Case{&src, &small, 1, E_ERROR_SIZE_MISMATCH}, Case{&src, &dst, -1, E_ERROR_BAD_ARGUMENT}}) {
    EOk();
    ImgLocalMeanThreshold(c.s, c.d, c.half, 0);
    EXPECT_EQ(EGetError(), c.code);
    EXPECT_STREQ(EGetErrorTrace(), "");
    EXPECT_EQ(testsupport::Snapshot(dst), before);
  }
  ESetError(E_ERROR_FILE_CLOSE);
  ImgLocalMeanThreshold(&src, &dst, 2, 0);
  EXPECT_EQ(EGetError(), E_ERROR_FILE_CLOSE);
  EXPECT_NE(testsupport::Snapshot(dst), before);
}

// The threshold surface: a grid of windows around evenly spread centres,
// each given the isodata threshold of its histogram, scaled onto the
// destination.
std::vector<unsigned char> AdaptiveModel(const EROI<EBW8>& src, int bw, int bh, const EROI<EBW8>& like) {
  const int w = src.GetWidth(), h = src.GetHeight();
  const int nx = static_cast<int>(std::ceil(static_cast<float>(w) / bw));
  const int ny = static_cast<int>(std::ceil(static_cast<float>(h) / bh));
  EImage<EBW8> grid(nx + 1, ny + 1);
  EBWHistogramVector hist(256);
  for (int iy = 0; iy <= ny; ++iy)
    for (int ix = 0; ix <= nx; ++ix) {
      const int cx = ix * w / nx, cy = iy * h / ny;
      histtest::Hist bins(256, 0);
      for (int y = std::max(cy - bh / 2, 0); y < std::min(cy + bh / 2, h); ++y)
        for (int x = std::max(cx - bw / 2, 0); x < std::min(cx + bw / 2, w); ++x) ++bins[src.GetPixel(x, y)];
      histtest::Load(hist, bins);
      grid.SetPixel(ImgIsodataThreshold(&hist, 0, 255), ix, iy);
    }
  EImage<EBW8> out(like.GetWidth(), like.GetHeight());
  ImgScaleRotate(&grid, 0, 0, 0, 0, static_cast<float>(w) / nx, static_cast<float>(h) / ny, 0, &out, 8);
  return testsupport::Bytes(out);
}

TEST(AutoAdaptiveThreshold, MatchesGridModel) {
  Rng rng(84);
  for (int iter = 0; iter < 12; ++iter) {
    const int w = 10 + static_cast<int>(rng() % 60), h = 6 + static_cast<int>(rng() % 30);
    EImage<EBW8> simg, dimg;
    EROI<EBW8> src, dst;
    testsupport::PlaceRandom(simg, src, w, h, rng);
    testsupport::PlaceRandom(dimg, dst, w, h, rng);
    testsupport::FillRandom(simg, rng);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if ((x * 3 + y) % 17 < 8) src.SetPixel(EBW8(static_cast<unsigned char>(src.GetPixel(x, y) / 4 + x)), x, y);
    // Blocks of every shape, the whole image (a 2 by 2 grid) among them.
    const int bw = iter == 0 ? w : 1 + static_cast<int>(rng() % w);
    const int bh = iter == 0 ? 0 : static_cast<int>(rng() % h);
    ImgAutoAdaptiveThreshold(&src, &dst, iter % 2 ? IMG_THRESHOLD_MIN_RESIDUE : IMG_THRESHOLD_ISODATA, bw, bh);
    ASSERT_EQ(EGetError(), E_OK) << iter;
    EXPECT_EQ(testsupport::Bytes(dst), AdaptiveModel(src, bw, bh == 0 ? bw : bh, dst)) << "iter " << iter;
  }
}

TEST(AutoAdaptiveThreshold, RefusedCalls) {
  EImage<EBW8> src(20, 10), dst(20, 10), small(20, 9);
  Rng rng(85);
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  const std::vector<unsigned char> before = testsupport::Snapshot(dst);
  ImgAutoAdaptiveThreshold(&src, &dst, static_cast<IMG_THRESHOLD_MODES>(300u), 8, 8);
  EXPECT_FAILED(E_ERROR_BAD_RANGE, "ImgHistogramThreshold <- ImgAutoAdaptiveThreshold");
  ImgAutoAdaptiveThreshold(&src, &dst, IMG_THRESHOLD_ISODATA, 0, 8);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT, "ImgAutoAdaptiveThreshold");
  ImgAutoAdaptiveThreshold(&src, &small, IMG_THRESHOLD_ISODATA, 8, 8);
  EXPECT_FAILED(E_ERROR_SIZE_MISMATCH, "ImgAutoAdaptiveThreshold");
  EXPECT_EQ(testsupport::Snapshot(dst), before);
}

}  // namespace
