#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using Point = std::pair<int, int>;
using Points = std::vector<Point>;

constexpr int kDx[8] = {1, 1, 0, -1, -1, -1, 0, 1};
constexpr int kDy[8] = {0, -1, -1, -1, 0, 1, 1, 1};

// A ROI drawn from text ('#' object at 200, anything else background at 20)
// at a random place in a larger image whose pixels outside the ROI are all
// object, so a walk that looked outside would show it.
struct Shape {
  EImage<EBW8> image;
  EROI<EBW8> roi;
  Shape(const std::vector<std::string>& rows, Rng& rng) {
    const int w = static_cast<int>(rows[0].size()), h = static_cast<int>(rows.size());
    testsupport::PlaceRandom(image, roi, w, h, rng);
    ImgCopy(EBW8(255), &image);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) roi.SetPixel(EBW8(rows[y][x] == '#' ? 200 : 20), x, y);
  }
};

template <class V>
Points PointsOf(const V& v) {
  Points out;
  for (unsigned i = 0; i < v.GetNumElements(); ++i) out.emplace_back(v.GetDataPtr()[i].m_n16X, v.GetDataPtr()[i].m_n16Y);
  return out;
}

Points Walk(const EROI<EBW8>& roi, CONTOUR_MODE mode, int x, int y, CONNEXITY c, int* closed = nullptr) {
  EPathVector path;
  path.AddElement(EPath{99, 99});  // previous contents are lost
  ImgContour(&roi, mode, x, y, CONTOUR_THRESHOLD_ABOVE, 100, c, &path);
  if (closed != nullptr) *closed = path.GetClosed();
  return PointsOf(path);
}

TEST(Contour, HandDrawnShapesGiveTheExactOrderedPoints) {
  Rng rng(1);
  Shape square({".....", ".###.", ".###.", ".###.", "....."}, rng);
  int closed = 0;
  // Rising walks turn anticlockwise on the screen, falling ones clockwise.
  EXPECT_EQ(Walk(square.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_8, &closed),
            (Points{{1, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 3}, {3, 2}, {3, 1}, {2, 1}}));
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(Walk(square.roi, CONTOUR_CLOCKWISE_STOP, 1, 1, CONNEXITY_8),
            (Points{{1, 1}, {2, 1}, {3, 1}, {3, 2}, {3, 3}, {2, 3}, {1, 3}, {1, 2}}));
  EXPECT_EQ(Walk(square.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_4),
            (Points{{1, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 3}, {3, 2}, {3, 1}, {2, 1}}));

  // A plus: 8 neighbours cut the corners and skip the centre; 4 neighbours
  // pass through the centre between the arms.
  Shape plus({".#.", "###", ".#."}, rng);
  EXPECT_EQ(Walk(plus.roi, CONTOUR_ANTICLOCKWISE_WRAP, 1, 0, CONNEXITY_8), (Points{{1, 0}, {0, 1}, {1, 2}, {2, 1}}));
  EXPECT_EQ(Walk(plus.roi, CONTOUR_CLOCKWISE_WRAP, 1, 0, CONNEXITY_8), (Points{{1, 0}, {2, 1}, {1, 2}, {0, 1}}));
  EXPECT_EQ(Walk(plus.roi, CONTOUR_ANTICLOCKWISE_WRAP, 1, 0, CONNEXITY_4),
            (Points{{1, 0}, {1, 1}, {0, 1}, {1, 1}, {1, 2}, {1, 1}, {2, 1}, {1, 1}}));

  // Two pixels touching at a corner: one contour in 8 connexity, an isolated
  // start in 4.
  Shape corner({"....", ".#..", "..#.", "...."}, rng);
  EXPECT_EQ(Walk(corner.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_8), (Points{{1, 1}, {2, 2}}));
  EXPECT_TRUE(Walk(corner.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_4).empty());
  EXPECT_EQ(EGetError(), E_ERROR_CONTOUR_START);

  // A one-pixel-wide arm is passed on both sides.
  Shape bar({".....", ".###.", "....."}, rng);
  EXPECT_EQ(Walk(bar.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_8), (Points{{1, 1}, {2, 1}, {3, 1}, {2, 1}}));
}

TEST(Contour, EdgeOfTheRoiByMode) {
  Rng rng(2);
  Shape line({".....", "#####", "....."}, rng);
  int closed = -1;
  // Wrap: the edge is background, the walk turns round at each end and closes.
  EXPECT_EQ(Walk(line.roi, CONTOUR_CLOCKWISE_WRAP, 0, 1, CONNEXITY_8, &closed),
            (Points{{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}, {3, 1}, {2, 1}, {1, 1}}));
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(EGetError(), E_OK);
  // Stop: an open contour without the point where the edge was met; 106 traced.
  EXPECT_EQ(Walk(line.roi, CONTOUR_CLOCKWISE_STOP, 0, 1, CONNEXITY_8, &closed),
            (Points{{0, 1}, {1, 1}, {2, 1}, {3, 1}}));
  EXPECT_EQ(closed, 0);
  EXPECT_EQ(EGetError(), E_WARNING_POINT_OUTSIDE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgContour ( EPathVector)");
  // Both: the second walk goes back from where the first stopped.
  EXPECT_EQ(Walk(line.roi, CONTOUR_CLOCKWISE_BOTH, 0, 1, CONNEXITY_8, &closed),
            (Points{{4, 1}, {3, 1}, {2, 1}, {1, 1}}));
  EXPECT_EQ(closed, 0);
  EXPECT_EQ(EGetError(), E_WARNING_POINT_OUTSIDE);
  EXPECT_EQ(Walk(line.roi, CONTOUR_ANTICLOCKWISE_BOTH, 4, 1, CONNEXITY_8, &closed),
            (Points{{0, 1}, {1, 1}, {2, 1}, {3, 1}}));
  // Both, on an object clear of the edge: one walk, closed.
  Shape inner({"....", ".##.", "...."}, rng);
  EXPECT_EQ(Walk(inner.roi, CONTOUR_CLOCKWISE_BOTH, 1, 1, CONNEXITY_8, &closed), (Points{{1, 1}, {2, 1}}));
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(EGetError(), E_OK);
}

TEST(Contour, ThresholdSenseBw16AndStoredPixels) {
  Rng rng(3);
  // 8 by 7: the older form's limit, 56 / 8 = 7, is just enough.
  Shape blob({"........", ".##.....", ".####...", "..#.....", "........", "........", "........"}, rng);
  blob.roi.SetPixel(EBW8(201), 2, 2);
  const Points expected = Walk(blob.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_8);
  ASSERT_EQ(expected.size(), 7u);  // the arm's root twice, the middle pixel never

  // The same walk on the negative with the threshold below, and on 16 bits
  // with the values scaled across the byte boundary.
  EImage<EBW8> negative(8, 7);
  EImage<EBW16> wide(8, 7);
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 8; ++x) {
      const unsigned v = blob.roi.GetPixel(x, y);
      negative.SetPixel(EBW8(static_cast<unsigned char>(255 - v)), x, y);
      *wide.GetImagePtr(x, y) = EBW16(static_cast<unsigned short>(v * 2));
    }
  EPathVector path;
  ImgContour(&negative, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_BELOW, 155, CONNEXITY_8, &path);
  EXPECT_EQ(PointsOf(path), expected);
  EBW16PathVector p16;
  ImgContour(&wide, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 256, CONNEXITY_8, &p16, 0);
  EXPECT_EQ(PointsOf(p16), expected);
  for (unsigned i = 0; i < p16.GetNumElements(); ++i)
    EXPECT_EQ(p16[i].m_bw16Pixel, wide.GetPixel(p16[i].m_n16X, p16[i].m_n16Y).value * 1u);
  ImgContour(&wide, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 256, CONNEXITY_8, &path);
  EXPECT_EQ(PointsOf(path), expected);

  // Pixels, or the chain code: each direction leads to the next point.
  EBW8PathVector p8;
  ImgContour(&blob.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &p8, 0);
  ASSERT_EQ(PointsOf(p8), expected);
  for (unsigned i = 0; i < p8.GetNumElements(); ++i)
    EXPECT_EQ(p8[i].m_bw8Pixel, blob.roi.GetPixel(p8[i].m_n16X, p8[i].m_n16Y));
  ImgContour(&blob.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &p8, 1);
  ASSERT_EQ(PointsOf(p8), expected);
  for (unsigned i = 0; i < p8.GetNumElements(); ++i) {
    const int d = p8[i].m_bw8Pixel, j = (i + 1) % p8.GetNumElements();
    ASSERT_LT(d, 8);
    EXPECT_EQ(Point(p8[i].m_n16X + kDx[d], p8[i].m_n16Y + kDy[d]), Point(p8[j].m_n16X, p8[j].m_n16Y));
  }

  // The older form: x, y, direction a group, the same walk.
  EVector legacy;
  EXPECT_EQ(ImgContour(&blob.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &legacy),
            0);
  ASSERT_EQ(legacy.GetVectType(), 1);
  ASSERT_EQ(legacy.GetNbGroup(), 7);
  const std::int32_t* g = static_cast<const std::int32_t*>(legacy.GetDataPtr());
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(Point(g[3 * i], g[3 * i + 1]), expected[i]);
    EXPECT_EQ(g[3 * i + 2], p8[i].m_bw8Pixel);
  }
}

TEST(Contour, RefusedStartsAndBadArguments) {
  Rng rng(4);
  Shape s({".....", ".###.", ".###.", ".###.", "....."}, rng);
  EPathVector path;
  const auto expectFails = [&](CONTOUR_MODE mode, int x, int y, E_ERRORS code) {
    path.AddElement(EPath{7, 7});
    ImgContour(&s.roi, mode, x, y, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &path);
    EXPECT_EQ(EGetError(), code) << x << "," << y;
    EXPECT_STREQ(EGetErrorTrace(), "ImgContour ( EPathVector)");
  };
  expectFails(CONTOUR_CLOCKWISE_STOP, 0, 0, E_ERROR_CONTOUR_VECTOR);   // background
  expectFails(CONTOUR_CLOCKWISE_STOP, 5, 1, E_ERROR_CONTOUR_VECTOR);   // outside the ROI
  expectFails(CONTOUR_CLOCKWISE_STOP, -1, 1, E_ERROR_CONTOUR_VECTOR);
  expectFails(CONTOUR_CLOCKWISE_STOP, 2, 2, E_ERROR_CONTOUR_NOT_FOUND);  // interior
  EXPECT_EQ(path.GetNumElements(), 0u);
  // A bad mode leaves the vector as it was.
  expectFails(static_cast<CONTOUR_MODE>(6), 1, 1, E_ERROR_BAD_CONTOUR_MODE);
  EXPECT_EQ(path.GetNumElements(), 1u);

  EImage<EBW8> none;
  ImgContour(&none, CONTOUR_CLOCKWISE_STOP, 0, 0, CONTOUR_THRESHOLD_ABOVE, 1, CONNEXITY_8, &path);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  ImgContour(&s.roi, CONTOUR_CLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 1, CONNEXITY_8,
             static_cast<EPathVector*>(nullptr));
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EBW16PathVector p16;
  EImage<EBW16> none16;
  ImgContour(&none16, CONTOUR_CLOCKWISE_STOP, 0, 0, CONTOUR_THRESHOLD_ABOVE, 1, CONNEXITY_8, &p16, 0);
  EXPECT_STREQ(EGetErrorTrace(), "ImgContour ( EBW16PathVector)(BW16)");

  // The older form returns the code; it holds at most an eighth of the
  // ROI's area, so a ROI of fewer than 8 pixels always fails.
  EVector v;
  EXPECT_EQ(ImgContour(&s.roi, static_cast<CONTOUR_MODE>(-1), 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &v),
            E_ERROR_BAD_CONTOUR_MODE);
  EXPECT_EQ(v.GetDataPtr(), nullptr);
  EXPECT_EQ(ImgContour(&s.roi, CONTOUR_CLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &v),
            E_ERROR_CONTOUR_EMPTY);  // 8 points against a limit of 25 / 8 = 3
  EXPECT_STREQ(EGetErrorTrace(), "ImgContour ( EVector)");
  EXPECT_EQ(v.GetNbGroup(), 3);
  EROI<EBW8> tiny(&s.roi, 1, 1, 2, 3);
  EXPECT_EQ(ImgContour(&tiny, CONTOUR_CLOCKWISE_WRAP, 0, 0, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &v),
            E_ERROR_CONTOUR_EMPTY);
  EXPECT_EQ(v.GetNbGroup(), 0);
  EImage<EBW8> strip(8, 4);
  ImgCopy(EBW8(0), &strip);
  for (int x = 2; x <= 4; ++x) strip.SetPixel(EBW8(200), x, 3);
  EXPECT_EQ(ImgContour(&strip, CONTOUR_CLOCKWISE_STOP, 2, 3, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &v),
            E_WARNING_POINT_OUTSIDE);
  EXPECT_EQ(v.GetNbGroup(), 2);
}

// Pixels of the object's component through (sx, sy), and those of them on
// its outer border: next to background that reaches the outside of the ROI
// (through 4 neighbours for an 8-connected object and 8 for a 4-connected
// one; the border is looked for across 4 neighbours for 8 connexity and
// across 8 for 4).
struct Border {
  std::set<Point> component, outer;
};
Border OuterBorder(const std::vector<unsigned char>& obj, int w, int h, int sx, int sy, bool eight) {
  const auto at = [&](int x, int y) { return x >= 0 && y >= 0 && x < w && y < h && obj[y * w + x] != 0; };
  const auto flood = [&](Point seed, bool want, bool diag, int pad) {
    std::set<Point> seen{seed};
    std::vector<Point> todo{seed};
    while (!todo.empty()) {
      const Point p = todo.back();
      todo.pop_back();
      for (int d = 0; d < 8; ++d) {
        if (!diag && (d & 1)) continue;
        const Point q(p.first + kDx[d], p.second + kDy[d]);
        if (q.first < -pad || q.second < -pad || q.first >= w + pad || q.second >= h + pad) continue;
        if (at(q.first, q.second) == want && seen.insert(q).second) todo.push_back(q);
      }
    }
    return seen;
  };
  Border b;
  b.component = flood(Point(sx, sy), true, eight, 0);
  const std::set<Point> outside = flood(Point(-1, -1), false, !eight, 1);
  for (const Point& p : b.component)
    for (int d = 0; d < 8; ++d)
      if ((!eight || !(d & 1)) && outside.count(Point(p.first + kDx[d], p.second + kDy[d]))) b.outer.insert(p);
  return b;
}

// Random blobs, seen as closed walks with the edge as background: every step
// goes to a neighbour under the connexity, no point is left twice in the same
// direction, the walk visits exactly the outer border of the blob's
// component, and the other sense walks the same cycle backwards.
TEST(Contour, RandomBlobsWalkTheirOuterBorder) {
  Rng rng(5);
  for (int trial = 0; trial < 300; ++trial) {
    const int w = 1 + static_cast<int>(rng() % 24), h = 1 + static_cast<int>(rng() % 18);
    EImage<EBW8> image;
    EROI<EBW8> roi;
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
    // Smooth noise, so blobs have runs, arms, holes and diagonal contacts.
    std::vector<unsigned char> obj(w * h);
    const unsigned density = 30 + rng() % 50;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const bool o = (y > 0 && obj[(y - 1) * w + x] && rng() % 100 < 60) || rng() % 100 < density / 2;
        obj[y * w + x] = o;
        roi.SetPixel(EBW8(o ? static_cast<unsigned char>(128 + rng() % 128) : static_cast<unsigned char>(rng() % 128)),
                     x, y);
      }
    const auto first = std::find(obj.begin(), obj.end(), 1);
    if (first == obj.end()) continue;
    const int sx = static_cast<int>(first - obj.begin()) % w, sy = static_cast<int>(first - obj.begin()) / w;
    for (const CONNEXITY c : {CONNEXITY_8, CONNEXITY_4}) {
      const bool eight = c == CONNEXITY_8;
      const Border border = OuterBorder(obj, w, h, sx, sy, eight);
      EBW8PathVector rising, falling;
      ImgContour(&roi, CONTOUR_ANTICLOCKWISE_WRAP, sx, sy, CONTOUR_THRESHOLD_ABOVE, 128, c, &rising, 1);
      if (border.component.size() == 1) {
        EXPECT_EQ(EGetError(), E_ERROR_CONTOUR_START);
        continue;
      }
      ASSERT_EQ(EGetError(), E_OK) << trial;
      ASSERT_EQ(rising.GetClosed(), 1);
      std::set<std::pair<Point, int>> states;
      std::set<Point> visited;
      const unsigned n = rising.GetNumElements();
      for (unsigned i = 0; i < n; ++i) {
        const EBW8Path& p = rising[i];
        const EBW8Path& q = rising[(i + 1) % n];
        const int d = p.m_bw8Pixel;
        ASSERT_TRUE(eight || (d & 1) == 0) << trial;
        ASSERT_EQ(Point(p.m_n16X + kDx[d], p.m_n16Y + kDy[d]), Point(q.m_n16X, q.m_n16Y)) << trial;
        ASSERT_TRUE(states.insert({Point(p.m_n16X, p.m_n16Y), d}).second) << trial;
        visited.insert(Point(p.m_n16X, p.m_n16Y));
      }
      EXPECT_EQ(rising[0].m_n16X, sx);
      EXPECT_EQ(rising[0].m_n16Y, sy);
      EXPECT_EQ(visited, border.outer) << trial << " eight " << eight;

      ImgContour(&roi, CONTOUR_CLOCKWISE_WRAP, sx, sy, CONTOUR_THRESHOLD_ABOVE, 128, c, &falling, 0);
      ASSERT_EQ(falling.GetNumElements(), n);
      Points back = PointsOf(falling), forth = PointsOf(rising);
      std::reverse(back.begin() + 1, back.end());
      EXPECT_EQ(back, forth) << trial;
    }
  }
}

// Every object pixel of noise as a start, in every mode and connexity: each
// call ends in one of its documented outcomes, and open contours only come
// from the modes that stop at the edge.
TEST(Contour, EveryStartOnNoiseEndsInADocumentedOutcome) {
  Rng rng(6);
  EImage<EBW8> image;
  EROI<EBW8> roi;
  testsupport::PlaceRandom(image, roi, 13, 11, rng);
  testsupport::FillRandom(image, rng);
  EPathVector path;
  for (int mode = 0; mode < 6; ++mode)
    for (const CONNEXITY c : {CONNEXITY_8, CONNEXITY_4})
      for (int y = 0; y < 11; ++y)
        for (int x = 0; x < 13; ++x) {
          ImgContour(&roi, static_cast<CONTOUR_MODE>(mode), x, y, CONTOUR_THRESHOLD_ABOVE, 128, c, &path);
          const E_ERRORS e = EGetError();
          const bool wraps = mode == CONTOUR_CLOCKWISE_WRAP || mode == CONTOUR_ANTICLOCKWISE_WRAP;
          if (roi.GetPixel(x, y) < 128) {
            EXPECT_EQ(e, E_ERROR_CONTOUR_VECTOR);
          } else if (e == E_OK) {
            EXPECT_EQ(path.GetClosed(), 1);
            EXPECT_EQ(path[0].m_n16X, x);
          } else {
            EXPECT_TRUE((e == E_WARNING_POINT_OUTSIDE && !wraps) || e == E_ERROR_CONTOUR_NOT_FOUND ||
                        e == E_ERROR_CONTOUR_START)
                << mode << " " << x << "," << y << " " << e;
          }
        }
}

}  // namespace
