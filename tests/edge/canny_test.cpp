// The Canny chain: suppression, followers and the whole detector against
// models written from the definitions, on random images; worked cases, a
// growth through a million pixels, and refusals.
#include <cmath>
#include <functional>

#include "edge_model.h"

namespace {

using edgemodel::Img;
using testsupport::Rng;

int Class(int dx, int dy) {
  const int ax = std::abs(dx), ay = std::abs(dy);
  if (ax > 2.42 * ay) return 0;
  if (ay > 2.42 * ax) return 90;
  auto sign = [](int v) { return (v > 0) - (v < 0); };
  return sign(dx) == sign(dy) ? 45 : 135;
}

// Suppression of a pair image: {direction, magnitude}.
std::pair<Img, Img> ModelNms(const Img& g) {
  Img dir(g.w, g.h), mag(g.w, g.h), m(g.w, g.h);
  for (size_t i = 0; i < g.px.size(); ++i)
    m.px[i] = (std::abs(edgemodel::Dx(g.px[i])) + std::abs(edgemodel::Dy(g.px[i]))) >> 1;
  auto at = [&](int x, int y) { return m.inside(x, y) ? m.at(x, y) : 0; };
  for (int y = 0; y < g.h; ++y)
    for (int x = 0; x < g.w; ++x) {
      const int c = Class(edgemodel::Dx(g.at(x, y)), edgemodel::Dy(g.at(x, y)));
      long long a, b;
      if (c == 0) a = at(x + 1, y), b = at(x - 1, y);
      else if (c == 45) a = at(x - 1, y - 1), b = at(x + 1, y + 1);
      else if (c == 90) a = at(x, y - 1), b = at(x, y + 1);
      else a = at(x - 1, y + 1), b = at(x + 1, y - 1);
      dir.at(x, y) = c;
      mag.at(x, y) = m.at(x, y) >= a && m.at(x, y) >= b ? m.at(x, y) : 0;
    }
  return {dir, mag};
}

// The three-class split by direct sums over every pair of thresholds.
std::pair<int, int> ModelSplit(const std::vector<long long>& h) {
  auto cls = [&](int a, int b, long long& n, long long& s) {
    n = s = 0;
    for (int i = a; i < b; ++i) n += h[size_t(i)], s += i * h[size_t(i)];
  };
  long long n, s;
  cls(0, 256, n, s);
  float best = static_cast<float>(double(s) * double(s) / double(n));
  int low = 0, high = 0;
  for (int t1 = 0; t1 < 256; ++t1)
    for (int t2 = t1; t2 < 256; ++t2) {
      long long n1, s1, n2, s2, n3, s3;
      cls(0, t1, n1, s1), cls(t1, t2, n2, s2), cls(t2, 256, n3, s3);
      if (n1 == 0 || n2 == 0 || n3 == 0) continue;
      float score = static_cast<float>(double(s1) * double(s1) / double(n1));
      score = static_cast<float>(score + double(s2) * double(s2) / double(n2));
      score = static_cast<float>(score + double(s3) * double(s3) / double(n3));
      if (score > best) best = score, low = t1, high = t2;
    }
  return {low, high};
}

const int kWalk[2][4][6] = {{{1, 1, -1, 1, 0, 1}, {-1, 1, 0, 1, -1, 0}, {1, 1, 1, -1, 1, 0}, {1, 1, 0, 1, 1, 0}},
                            {{-1, -1, 1, -1, 0, -1}, {1, -1, 0, -1, 1, 0}, {-1, 1, -1, -1, -1, 0}, {-1, -1, 0, -1, -1, 0}}};
int Index(long long c) { return c == 0 ? 0 : c == 45 ? 1 : c == 90 ? 2 : c == 135 ? 3 : -1; }

void ModelHysteresis(const Img& mag, const Img& dir, Img& dst, int low, int high) {
  Img flag(mag.w, mag.h);
  for (int scan = 0; scan < 2; ++scan)
    for (int y = 0; y < mag.h; ++y)
      for (int x = 0; x < mag.w; ++x) {
        if (mag.at(x, y) < high || (scan == 0 && flag.at(x, y))) continue;
        dst.at(x, y) = scan == 0 ? 128 : 80;
        flag.at(x, y) = 255;
        for (int cx = x, cy = y;;) {
          const int c = Index(dir.at(cx, cy));
          int best = -1, bx = 0, by = 0;
          for (int k = 0; c >= 0 && k < 3; ++k) {
            const int nx = cx + kWalk[scan][c][2 * k], ny = cy + kWalk[scan][c][2 * k + 1];
            if (mag.inside(nx, ny) && !flag.at(nx, ny) && mag.at(nx, ny) > best)
              best = static_cast<int>(mag.at(nx, ny)), bx = nx, by = ny;
          }
          if (best < 0 || best < low) break;
          dst.at(bx, by) = 255;
          flag.at(bx, by) = 255;
          cx = bx, cy = by;
        }
      }
}

const int kRidge[4][4] = {{0, -1, 0, 1}, {1, -1, -1, 1}, {-1, 0, 1, 0}, {-1, -1, 1, 1}};
const int kGrow[4][12] = {{-1, -1, 0, -1, 1, -1, -1, 1, 0, 1, 1, 1},
                          {0, -1, 1, -1, 1, 0, -1, 0, -1, 1, 0, 1},
                          {-1, -1, -1, 0, -1, 1, 1, -1, 1, 0, 1, 1},
                          {-1, -1, -1, 0, 0, -1, 0, 1, 1, 0, 1, 1}};

void ModelGrowing(const Img& mag, const Img& dir, Img& dst, int low) {
  Img flag(mag.w, mag.h);
  std::function<void(int, int, int, int)> grow = [&](int x, int y, int seed, int prev) {
    if (!mag.inside(x, y) || flag.at(x, y) == 255) return;
    const int s = static_cast<int>(mag.at(x, y));
    flag.at(x, y) = 255;
    if (0.5 * seed > s || 0.8 * prev > s) {
      dst.at(x, y) = 0;
      return;
    }
    dst.at(x, y) = 255;
    const int c = Index(dir.at(x, y));
    for (int k = 0; c >= 0 && k < 6; ++k) {
      const int nx = x + kGrow[c][2 * k], ny = y + kGrow[c][2 * k + 1];
      const bool odd = c == 3 && k == 0 && mag.inside(x - 1, y + 1);
      if (mag.inside(nx, ny) && !(odd ? flag.at(x - 1, y + 1) : flag.at(nx, ny))) grow(nx, ny, seed, s);
    }
  };
  for (int y = 1; y < mag.h - 1; ++y)
    for (int x = 1; x < mag.w - 1; ++x) {
      const int m = static_cast<int>(mag.at(x, y)), c = Index(dir.at(x, y));
      if (m == 0 || m < low || c < 0) continue;
      if (m >= mag.at(x + kRidge[c][0], y + kRidge[c][1]) && m >= mag.at(x + kRidge[c][2], y + kRidge[c][3]))
        grow(x, y, m, m);
    }
}

// A random edge map: sparse magnitudes, random classes.
void RandomEdgeMap(Rng& rng, Img& mag, Img& dir) {
  const long long classes[4] = {0, 45, 90, 135};
  for (size_t i = 0; i < mag.px.size(); ++i) {
    mag.px[i] = rng() % 3 == 0 ? 0 : 20 + rng() % 100;
    dir.px[i] = classes[rng() % 4];
  }
}

TEST(Canny, SuppressionMatchesTheModelOnRandomPairsOnEveryPath) {
  Rng rng(21);
  for (int path : testsupport::AllPaths())
  for (int iter = 0; iter < 40; ++iter) {
    testsupport::PathGuard guard(path);
    const int w = 1 + static_cast<int>(rng() % 90), h = 1 + static_cast<int>(rng() % 6);
    EImage<EBW32> gi, di;
    EImage<EBW8> mi;
    EROI<EBW32> g, d;
    EROI<EBW8> m;
    testsupport::PlaceRandom(gi, g, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::PlaceRandom(mi, m, w, h, rng);
    Img pairs(w, h);
    // Small differences, so that ties and plateaus are common; the two
    // pairs at the class boundary, (121, 50) and (242, 100); now and then a
    // pair beyond -255..255, which the blocks leave to pixel-by-pixel code.
    const int special[6][2] = {{121, 50}, {-50, 121}, {242, -100}, {100, 242}, {-121, -50}, {300, -7}};
    for (auto& p : pairs.px) {
      int dx = static_cast<int>(rng() % 11) - 5, dy = iter % 2 ? static_cast<int>(rng() % 511) - 255 : static_cast<int>(rng() % 7) - 3;
      if (rng() % 8 == 0) {
        const int k = static_cast<int>(rng() % (iter % 5 == 0 ? 6 : 5));
        dx = special[k][0], dy = special[k][1];
      }
      p = (dx & 0xFFFF) | (static_cast<long long>(dy & 0xFFFF) << 16);
    }
    edgemodel::ToRoi(pairs, g);
    const auto want = ModelNms(pairs);
    NonMaximaSuppression(&g, &d, &m);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(edgemodel::FromRoi(d).px, want.first.px) << w << "x" << h;
    ASSERT_EQ(edgemodel::FromRoi(m).px, want.second.px) << w << "x" << h;
  }
  EXPECT_EQ(Class(1, 0), 0);
  EImage<EBW32> g(5, 1), d(5, 1);
  EImage<EBW8> m(5, 1);
  const int pairs[5][2] = {{1, 0}, {0, 5}, {3, 3}, {3, -3}, {0, 0}};
  const unsigned classes[5] = {0, 90, 45, 135, 45};
  for (int i = 0; i < 5; ++i) g.SetPixel(EBW32((pairs[i][0] & 0xFFFF) | ((pairs[i][1] & 0xFFFF) << 16)), i, 0);
  NonMaximaSuppression(&g, &d, &m);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(d.GetPixel(i, 0).value, classes[i]) << i;
}

TEST(Canny, FollowersMatchTheModelsOnRandomEdgeMaps) {
  Rng rng(22);
  for (int iter = 0; iter < 60; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 30);
    Img mag(w, h), dir(w, h);
    RandomEdgeMap(rng, mag, dir);
    EImage<EBW8> mi, di;
    EImage<EBW32> diri(w, h);
    EROI<EBW8> m, d;
    testsupport::PlaceRandom(mi, m, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(di, rng);
    edgemodel::ToRoi(mag, m);
    edgemodel::ToRoi(dir, diri);
    const int low = 20 + static_cast<int>(rng() % 60), high = low + static_cast<int>(rng() % 60);
    const auto before = testsupport::Snapshot(di);
    Img want = edgemodel::FromRoi(d);
    if (iter % 2 == 0) {
      ModelHysteresis(mag, dir, want, low, high);
      Hysteresis(&m, &d, &diri, static_cast<unsigned char>(low), static_cast<unsigned char>(high));
    } else {
      ModelGrowing(mag, dir, want, low);
      ContourGrowing(&m, &d, &diri, static_cast<unsigned char>(low));
    }
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, want)) << iter << " " << w << "x" << h;
  }
}

TEST(Canny, DetectorIsTheChainOfItsStepsOnEveryPath) {
  Rng rng(23);
  for (int path : testsupport::AllPaths())
  for (int iter = 0; iter < 30; ++iter) {
    testsupport::PathGuard guard(path);
    const int w = 2 + static_cast<int>(rng() % 70), h = 2 + static_cast<int>(rng() % 20);
    EImage<EBW8> si, di, smoothed(w, h);
    EROI<EBW8> s, d;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(di, rng);
    for (int y = 0; y < h; ++y)  // a blurred blob and noise
      for (int x = 0; x < w; ++x)
        s.GetImagePtr(0, y)[x] = EBW8(static_cast<unsigned char>(((x - w / 2) * (x - w / 2) + (y - h / 2) * (y - h / 2) < w * h / 8 ? 180 : 40) + rng() % 30));
    const SMOOTH_MODE smooth = static_cast<SMOOTH_MODE>(iter % 6);  // 5: an unknown mode copies
    const int side = smooth == SMOOTH_GAUSSIAN_3X3 ? 3 : smooth == SMOOTH_GAUSSIAN_5X5 ? 5 : 7;
    const bool fits = w >= side && h >= side;
    ImgCopy(&s, &smoothed);
    if (smooth == SMOOTH_MEDIAN) ImgMedian(&s, &smoothed);
    if (smooth == SMOOTH_GAUSSIAN_3X3 && fits) ImgConvolGaussian3x3(&s, &smoothed);
    if (smooth == SMOOTH_GAUSSIAN_5X5 && fits) ImgConvolGaussian5x5(&s, &smoothed);
    if (smooth == SMOOTH_GAUSSIAN_7X7 && fits) ImgConvolGaussian7x7(&s, &smoothed);
    const auto nms = ModelNms(edgemodel::Pairs(edgemodel::FromRoi(smoothed)));
    std::vector<long long> hist(256);
    for (long long v : nms.second.px) ++hist[size_t(v)];
    auto t = ModelSplit(hist);
    if (t.first == 0) t.first = 1;
    const auto before = testsupport::Snapshot(di);
    Img want = edgemodel::FromRoi(d);
    const int following = iter / 6 % 3;
    if (following == 0) ModelHysteresis(nms.second, nms.first, want, t.first, t.second);
    if (following == 1) ModelGrowing(nms.second, nms.first, want, t.first);
    ImgCannyDetector(&s, &d, smooth, static_cast<EDGE_FOLLOWING_MODE>(following));
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(testsupport::Snapshot(di), edgemodel::Expected(di, d, before, want))
        << iter << " " << w << "x" << h << " thresholds " << t.first << " " << t.second;
  }
}

TEST(Canny, WorkedCases) {
  // A flat image: thresholds 1 and 0; every pixel seeds the hysteresis and
  // ends at 80; contour growing writes nothing.
  EImage<EBW8> flat(9, 6), dst(9, 6);
  ImgCopy(EBW8(70), &flat);
  ImgCopy(EBW8(3), &dst);
  ImgCannyDetector(&flat, &dst, SMOOTH_GAUSSIAN_3X3, EDGE_FOLLOWING_CONTOUR_GROWING);
  EXPECT_EQ(edgemodel::FromRoi(dst).px, Img(9, 6, 3).px);
  ImgCannyDetector(&flat, &dst, SMOOTH_GAUSSIAN_3X3, EDGE_FOLLOWING_HYSTERESIS);
  EXPECT_EQ(edgemodel::FromRoi(dst).px, Img(9, 6, 80).px);
  // 2x2 with the 3x3 Gaussian: a copy, as without smoothing.
  EImage<EBW8> tiny(2, 2), a(2, 2), b(2, 2);
  ImgCopy(EBW8(10), &tiny);
  ImgCopy(EBW8(1), &a);
  ImgCopy(EBW8(1), &b);
  tiny.SetPixel(EBW8(200), 0, 0);
  ImgCannyDetector(&tiny, &a, SMOOTH_GAUSSIAN_3X3, EDGE_FOLLOWING_HYSTERESIS);
  ImgCannyDetector(&tiny, &b, SMOOTH_NONE, EDGE_FOLLOWING_HYSTERESIS);
  EXPECT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
  // A vertical step: class 0 along the step, and a two-pixel plateau that
  // survives suppression.
  EImage<EBW8> step(8, 5);
  EImage<EBW32> g(8, 5), dir(8, 5);
  EImage<EBW8> mag(8, 5);
  ImgCopy(EBW8(0), &step);
  for (int y = 0; y < 5; ++y)
    for (int x = 4; x < 8; ++x) step.SetPixel(EBW8(100), x, y);
  ImgGradientVector(&step, &g);
  NonMaximaSuppression(&g, &dir, &mag);
  EXPECT_EQ(dir.GetPixel(3, 2).value, 0u);
  EXPECT_EQ(mag.GetPixel(3, 2).value, 50);
  EXPECT_EQ(mag.GetPixel(4, 2).value, 50);
  EXPECT_EQ(mag.GetPixel(5, 2).value, 0);
  // following 2: every step runs and dst keeps its content.
  ImgCopy(EBW8(9), &dst);
  ImgCannyDetector(&flat, &dst, SMOOTH_NONE, static_cast<EDGE_FOLLOWING_MODE>(2));
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(edgemodel::FromRoi(dst).px, Img(9, 6, 9).px);
}

TEST(Canny, GrowthFollowsAnEdgeThroughAMillionPixels) {
  // Equal magnitudes everywhere: one growth reaches every pixel, as deep as
  // the image is large; a recursive follower would need far more stack.
  EImage<EBW8> mag(1000, 1000), dst(1000, 1000);
  EImage<EBW32> dir(1000, 1000);
  ImgCopy(EBW8(100), &mag);
  ImgCopy(EBW32(0), &dir);
  ImgCopy(EBW8(7), &dst);
  ContourGrowing(&mag, &dst, &dir, 10);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(edgemodel::FromRoi(dst).px, Img(1000, 1000, 255).px);
}

TEST(Canny, RefusalsLeaveTheDestinationAlone) {
  EImage<EBW8> src(6, 6), dst(6, 6), other(5, 6);
  EImage<EBW32> dir(6, 6), g(6, 6);
  ImgCopy(EBW8(4), &dst);
  ImgCopy(EBW8(0), &src);
  const auto before = testsupport::Snapshot(dst);
  ImgCannyDetector(nullptr, &dst, SMOOTH_NONE, EDGE_FOLLOWING_HYSTERESIS);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "Failed canny detection !");
  ImgCannyDetector(&other, &dst, SMOOTH_NONE, EDGE_FOLLOWING_HYSTERESIS);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  // The followers say nothing about sizes that differ.
  Hysteresis(&other, &dst, &dir, 1, 2);
  EXPECT_EQ(EGetError(), E_OK);
  ContourGrowing(&src, &dst, &g, 0);  // same sizes: runs (all zero magnitudes: nothing)
  ContourGrowing(&other, &dst, &dir, 1);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  NonMaximaSuppression(&g, &dir, &other);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "NonMaximaSuppression");
}

}  // namespace
