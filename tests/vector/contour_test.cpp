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

// A ROI drawn from text ('#' object at 200, else background at 20) at a
// random place in an image that is all object outside it, so a walk that
// looked outside the ROI would show it.
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
  for (unsigned i = 0; i < v.GetNumElements(); ++i) out.emplace_back(v[i].m_n16X, v[i].m_n16Y);
  return out;
}

// Each walk gives the exact ordered points, code and closed flag the rules
// give: start, sense, 4 and 8 neighbours, each meaning of the ROI's edge.
TEST(Contour, HandDrawnShapes) {
  const std::vector<std::string> square = {".....", ".###.", ".###.", ".###.", "....."};
  const std::vector<std::string> plus = {".#.", "###", ".#."}, corner = {"....", ".#..", "..#.", "...."};
  const std::vector<std::string> line = {".....", "#####", "....."};
  const struct {
    const std::vector<std::string>& rows;
    CONTOUR_MODE mode;
    int x, y;
    CONNEXITY c;
    Points want;
    E_ERRORS code;
    int closed;
  } cases[] = {
      // Rising walks turn anticlockwise on the screen, falling ones clockwise.
      {square, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_8, {{1, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 3}, {3, 2}, {3, 1}, {2, 1}}, E_OK, 1},
      {square, CONTOUR_CLOCKWISE_STOP, 1, 1, CONNEXITY_8, {{1, 1}, {2, 1}, {3, 1}, {3, 2}, {3, 3}, {2, 3}, {1, 3}, {1, 2}}, E_OK, 1},
      {square, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_4, {{1, 1}, {1, 2}, {1, 3}, {2, 3}, {3, 3}, {3, 2}, {3, 1}, {2, 1}}, E_OK, 1},
      {square, CONTOUR_CLOCKWISE_STOP, 2, 2, CONNEXITY_8, {}, E_ERROR_CONTOUR_NOT_FOUND, 1},  // interior
      {square, CONTOUR_CLOCKWISE_STOP, 0, 0, CONNEXITY_8, {}, E_ERROR_CONTOUR_VECTOR, 1},     // background
      {square, CONTOUR_CLOCKWISE_STOP, 5, 1, CONNEXITY_8, {}, E_ERROR_CONTOUR_VECTOR, 1},     // outside
      // A plus: 8 neighbours cut the corners and skip the centre; 4 pass
      // through the centre between the arms.
      {plus, CONTOUR_ANTICLOCKWISE_WRAP, 1, 0, CONNEXITY_8, {{1, 0}, {0, 1}, {1, 2}, {2, 1}}, E_OK, 1},
      {plus, CONTOUR_CLOCKWISE_WRAP, 1, 0, CONNEXITY_8, {{1, 0}, {2, 1}, {1, 2}, {0, 1}}, E_OK, 1},
      {plus, CONTOUR_ANTICLOCKWISE_WRAP, 1, 0, CONNEXITY_4, {{1, 0}, {1, 1}, {0, 1}, {1, 1}, {1, 2}, {1, 1}, {2, 1}, {1, 1}}, E_OK, 1},
      // Pixels touching at a corner: one contour in 8, an isolated start in 4.
      {corner, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_8, {{1, 1}, {2, 2}}, E_OK, 1},
      {corner, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONNEXITY_4, {}, E_ERROR_CONTOUR_START, 1},
      // A line across the ROI. Wrap: the edge is background, every inner point
      // is passed on both sides. Stop: open, without the point where the edge
      // was met. Both: the second walk goes back from where the first stopped.
      {line, CONTOUR_CLOCKWISE_WRAP, 0, 1, CONNEXITY_8, {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}, {3, 1}, {2, 1}, {1, 1}}, E_OK, 1},
      {line, CONTOUR_CLOCKWISE_STOP, 0, 1, CONNEXITY_8, {{0, 1}, {1, 1}, {2, 1}, {3, 1}}, E_WARNING_POINT_OUTSIDE, 0},
      {line, CONTOUR_CLOCKWISE_BOTH, 0, 1, CONNEXITY_8, {{4, 1}, {3, 1}, {2, 1}, {1, 1}}, E_WARNING_POINT_OUTSIDE, 0},
      {line, CONTOUR_ANTICLOCKWISE_BOTH, 4, 1, CONNEXITY_8, {{0, 1}, {1, 1}, {2, 1}, {3, 1}}, E_WARNING_POINT_OUTSIDE, 0},
      {square, CONTOUR_CLOCKWISE_BOTH, 3, 3, CONNEXITY_8, {{3, 3}, {2, 3}, {1, 3}, {1, 2}, {1, 1}, {2, 1}, {3, 1}, {3, 2}}, E_OK, 1},
  };
  Rng rng(1);
  for (const auto& k : cases) {
    Shape s(k.rows, rng);
    EPathVector path;
    path.AddElement(EPath{99, 99});  // previous contents are lost
    ImgContour(&s.roi, k.mode, k.x, k.y, CONTOUR_THRESHOLD_ABOVE, 100, k.c, &path);
    EXPECT_EQ(PointsOf(path), k.want) << k.mode << " " << k.x << "," << k.y;
    EXPECT_EQ(EGetError(), k.code);
    EXPECT_STREQ(EGetErrorTrace(), k.code == E_OK ? "" : "ImgContour ( EPathVector)");
    EXPECT_EQ(path.GetClosed(), k.closed);
  }
}

TEST(Contour, SenseBw16ChainCodeAndTheOlderForm) {
  Rng rng(3);
  // 8 by 7: the older form's limit, 56 / 8 = 7 points, is just enough.
  Shape blob({"........", ".##.....", ".####...", "..#.....", "........", "........", "........"}, rng);
  blob.roi.SetPixel(EBW8(201), 2, 2);
  EBW8PathVector p8;
  ImgContour(&blob.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &p8, 0);
  const Points want = PointsOf(p8);
  ASSERT_EQ(want.size(), 7u);  // the arm's root twice, the middle pixel never
  for (unsigned i = 0; i < 7; ++i) EXPECT_EQ(p8[i].m_bw8Pixel, blob.roi.GetPixel(p8[i].m_n16X, p8[i].m_n16Y));

  // The same walk on the negative below the threshold, and on 16 bits
  // across the byte boundary.
  EImage<EBW8> negative(8, 7);
  EImage<EBW16> wide(8, 7);
  for (int y = 0; y < 7; ++y)
    for (int x = 0; x < 8; ++x) {
      negative.SetPixel(EBW8(static_cast<unsigned char>(255 - blob.roi.GetPixel(x, y))), x, y);
      *wide.GetImagePtr(x, y) = EBW16(static_cast<unsigned short>(blob.roi.GetPixel(x, y) * 2));
    }
  EPathVector path;
  ImgContour(&negative, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_BELOW, 155, CONNEXITY_8, &path);
  EXPECT_EQ(PointsOf(path), want);
  EBW16PathVector p16;
  ImgContour(&wide, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 256, CONNEXITY_8, &p16, 1);
  EXPECT_EQ(PointsOf(p16), want);

  // The older form: x, y and the direction leaving the point, a group.
  EVector legacy;
  EXPECT_EQ(ImgContour(&blob.roi, CONTOUR_ANTICLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &legacy), 0);
  ASSERT_EQ(legacy.GetNbGroup(), 7);
  const std::int32_t* g = static_cast<const std::int32_t*>(legacy.GetDataPtr());
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(Point(g[3 * i], g[3 * i + 1]), want[i]);
    EXPECT_EQ(g[3 * i + 2], p16[i].m_bw16Pixel);
  }
  // Beyond an eighth of the ROI's area: 1504 with what fits; so a ROI of
  // fewer than 8 pixels always fails.
  EROI<EBW8> part(&blob.roi, 0, 0, 5, 5);
  EXPECT_EQ(ImgContour(&part, CONTOUR_ANTICLOCKWISE_WRAP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &legacy),
            E_ERROR_CONTOUR_EMPTY);
  EXPECT_STREQ(EGetErrorTrace(), "ImgContour ( EVector)");
  EXPECT_EQ(legacy.GetNbGroup(), 3);
  EROI<EBW8> tiny(&blob.roi, 1, 1, 2, 3);
  EXPECT_EQ(ImgContour(&tiny, CONTOUR_CLOCKWISE_WRAP, 0, 0, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &legacy),
            E_ERROR_CONTOUR_EMPTY);
  EXPECT_EQ(legacy.GetNbGroup(), 0);

  // Refused arguments leave the vector alone.
  EXPECT_EQ(ImgContour(&blob.roi, static_cast<CONTOUR_MODE>(6), 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &legacy),
            E_ERROR_BAD_CONTOUR_MODE);
  ImgContour(&blob.roi, static_cast<CONTOUR_MODE>(-1), 1, 1, CONTOUR_THRESHOLD_ABOVE, 100, CONNEXITY_8, &path);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_CONTOUR_MODE);
  EXPECT_EQ(PointsOf(path), want);
  EImage<EBW16> none;
  ImgContour(&none, CONTOUR_CLOCKWISE_STOP, 0, 0, CONTOUR_THRESHOLD_ABOVE, 1, CONNEXITY_8, &p16, 0);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgContour ( EBW16PathVector)(BW16)");
  EXPECT_EQ(p16.GetNumElements(), 7u);
  ImgContour(&blob.roi, CONTOUR_CLOCKWISE_STOP, 1, 1, CONTOUR_THRESHOLD_ABOVE, 1, CONNEXITY_8,
             static_cast<EBW8PathVector*>(nullptr), 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
}

// The outer border of the component through (sx, sy): its pixels next to
// background that reaches past the ROI (through 4 neighbours for an object
// of 8, through 8 for an object of 4; the border across 4 or 8 in turn).
std::set<Point> OuterBorder(const std::vector<char>& obj, int w, int h, int sx, int sy, bool eight) {
  const auto flood = [&](Point seed, bool want, bool diag, int pad) {
    std::set<Point> seen{seed};
    std::vector<Point> todo{seed};
    while (!todo.empty()) {
      const Point p = todo.back();
      todo.pop_back();
      for (int d = 0; d < 8; d += diag ? 1 : 2) {
        const int x = p.first + kDx[d], y = p.second + kDy[d];
        const bool inside = x >= 0 && y >= 0 && x < w && y < h;
        if (x >= -pad && y >= -pad && x < w + pad && y < h + pad && (inside && obj[y * w + x]) == want &&
            seen.insert(Point(x, y)).second)
          todo.emplace_back(x, y);
      }
    }
    return seen;
  };
  const std::set<Point> outside = flood(Point(-1, -1), false, !eight, 1);
  std::set<Point> border;
  for (const Point& p : flood(Point(sx, sy), true, eight, 0))
    for (int d = 0; d < 8; d += eight ? 2 : 1)
      if (outside.count(Point(p.first + kDx[d], p.second + kDy[d]))) border.insert(p);
  return border;
}

// Random blobs with the edge as background: the walk starts at the start
// point, each step goes to a neighbour under the connexity, no point is left
// twice in the same direction, the walk visits exactly the outer border, and
// the other sense walks the same cycle backwards. Then every object pixel
// of the noise as a start, in every mode: only documented outcomes.
TEST(Contour, RandomBlobsAndEveryStart) {
  Rng rng(5);
  for (int trial = 0; trial < 300; ++trial) {
    const int w = 1 + static_cast<int>(rng() % 24), h = 1 + static_cast<int>(rng() % 18);
    EImage<EBW8> image;
    EROI<EBW8> roi;
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
    std::vector<char> obj(w * h);
    const unsigned density = 15 + rng() % 25;
    for (int i = 0; i < w * h; ++i) {
      obj[i] = (i >= w && obj[i - w] && rng() % 100 < 60) || rng() % 100 < density;
      roi.SetPixel(EBW8(static_cast<unsigned char>(obj[i] ? 128 + rng() % 128 : rng() % 128)), i % w, i / w);
    }
    const int first = static_cast<int>(std::find(obj.begin(), obj.end(), 1) - obj.begin());
    if (first == w * h) continue;
    for (const CONNEXITY c : {CONNEXITY_8, CONNEXITY_4}) {
      const std::set<Point> border = OuterBorder(obj, w, h, first % w, first / w, c == CONNEXITY_8);
      EBW8PathVector rising;
      EPathVector falling;
      ImgContour(&roi, CONTOUR_ANTICLOCKWISE_WRAP, first % w, first / w, CONTOUR_THRESHOLD_ABOVE, 128, c, &rising, 1);
      if (EGetError() == E_ERROR_CONTOUR_START) {
        EXPECT_EQ(border, std::set<Point>{Point(first % w, first / w)});
        continue;
      }
      ASSERT_EQ(EGetError(), E_OK) << trial;
      std::set<std::pair<Point, int>> states;
      const unsigned n = rising.GetNumElements();
      for (unsigned i = 0; i < n; ++i) {
        const int d = rising[i].m_bw8Pixel;
        ASSERT_TRUE(c == CONNEXITY_8 || (d & 1) == 0) << trial;
        ASSERT_EQ(Point(rising[i].m_n16X + kDx[d], rising[i].m_n16Y + kDy[d]), PointsOf(rising)[(i + 1) % n]) << trial;
        ASSERT_TRUE(states.insert({Point(rising[i].m_n16X, rising[i].m_n16Y), d}).second) << trial;
      }
      const Points forth = PointsOf(rising);
      EXPECT_EQ(forth[0], Point(first % w, first / w));
      EXPECT_EQ(std::set<Point>(forth.begin(), forth.end()), border) << trial;
      ImgContour(&roi, CONTOUR_CLOCKWISE_WRAP, first % w, first / w, CONTOUR_THRESHOLD_ABOVE, 128, c, &falling);
      Points back = PointsOf(falling);
      std::reverse(back.begin() + 1, back.end());
      EXPECT_EQ(back, forth) << trial;
    }
    if (trial % 20 != 0) continue;
    EPathVector path;
    for (int mode = 0; mode < 6; ++mode)
      for (int i = 0; i < w * h; ++i) {
        ImgContour(&roi, static_cast<CONTOUR_MODE>(mode), i % w, i / w, CONTOUR_THRESHOLD_ABOVE, 128,
                   static_cast<CONNEXITY>(i % 3), &path);
        const E_ERRORS e = EGetError();
        const bool wraps = mode == CONTOUR_CLOCKWISE_WRAP || mode == CONTOUR_ANTICLOCKWISE_WRAP;
        const bool closedFromStart = e == E_OK && PointsOf(path)[0] == Point(i % w, i / w);
        EXPECT_TRUE(obj[i] ? closedFromStart || (e == E_WARNING_POINT_OUTSIDE && !wraps) ||
                                 e == E_ERROR_CONTOUR_NOT_FOUND || e == E_ERROR_CONTOUR_START
                           : e == E_ERROR_CONTOUR_VECTOR)
            << mode << " " << i << " " << e;
      }
  }
}

}  // namespace
