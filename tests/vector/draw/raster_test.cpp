// The raster adapter against compact models, on ROIs placed at random in
// larger images so that clipping and the pixels around the ROI are checked.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "test_support.h"

namespace {

using Corvane::DrawColor;
using Corvane::RasterDrawAdapter;
using testsupport::Rng;

// A random ROI over random pixels, and a model of the whole image's bytes.
struct Canvas {
  EImage<EC24> image;
  EROI<EC24> roi;
  std::vector<unsigned char> model;
  Canvas(int w, int h, Rng& rng) {
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
    model = testsupport::Snapshot(image);
  }
  unsigned char* At(long long x, long long y) {
    if (x < 0 || y < 0 || x >= roi.GetWidth() || y >= roi.GetHeight()) return nullptr;
    return &model[static_cast<size_t>(roi.GetTotalOrgY() + y) * image.GetRowPitch() +
                  3 * static_cast<size_t>(roi.GetTotalOrgX() + x)];
  }
  void Put(long long x, long long y, const DrawColor& c) {
    if (unsigned char* p = At(x, y)) p[0] = c.m_n32Red, p[1] = c.m_n32Green, p[2] = c.m_n32Blue;
  }
  bool Matches() const { return testsupport::Snapshot(image) == model; }
};

// The integer line walk step by step, as a path segment is walked.
void ModelLine(Canvas& m, int x0, int y0, int x1, int y1, const DrawColor& c) {
  const long long dx = static_cast<long long>(x1) - x0, dy = static_cast<long long>(y1) - y0;
  const bool xMajor = std::llabs(dx) >= std::llabs(dy);
  const long long major = std::max(std::llabs(dx), std::llabs(dy)), minor = std::min(std::llabs(dx), std::llabs(dy));
  const int sx = dx < 0 ? -1 : 1, sy = dy < 0 ? -1 : 1;
  long long x = x0, y = y0, error = major >> 1;
  m.Put(x, y, c);
  for (long long k = 0; k < major; ++k) {
    error += minor;
    const bool diagonal = error >= major;
    if (diagonal) error -= major;
    if (xMajor || diagonal) x += sx;
    if (!xMajor || diagonal) y += sy;
    m.Put(x, y, c);
  }
}

DrawColor RandomColor(Rng& rng) { return DrawColor(rng() % 256, rng() % 256, rng() % 256); }

TEST(RasterLines, MatchTheStepWalkOnRandomSegmentsAndClipFarOnes) {
  Rng rng(11);
  for (int trial = 0; trial < 300; ++trial) {
    Canvas m(1 + rng() % 40, 1 + rng() % 30, rng);
    RasterDrawAdapter adapter(&m.roi);
    for (int k = 0; k < 4; ++k) {
      const int x0 = static_cast<int>(rng() % 90) - 25, y0 = static_cast<int>(rng() % 70) - 20;
      const int x1 = static_cast<int>(rng() % 90) - 25, y1 = static_cast<int>(rng() % 70) - 20;
      const DrawColor c = RandomColor(rng);
      adapter.DrawLine(x0, y0, x1, y1, c);
      ModelLine(m, x0, y0, x1, y1, c);
    }
    ASSERT_TRUE(m.Matches()) << trial;
  }
  // Ends far outside: pixel k of the walk lies k steps along the major axis
  // and floor((major / 2 + k * minor) / major) along the minor one.
  for (int trial = 0; trial < 200; ++trial) {
    Canvas m(1 + rng() % 40, 1 + rng() % 30, rng);
    RasterDrawAdapter adapter(&m.roi);
    const int x0 = static_cast<int>(rng() % 40), y0 = static_cast<int>(rng() % 30);
    const int x1 = static_cast<int>(rng()), y1 = trial % 2 ? static_cast<int>(rng()) : static_cast<int>(rng() % 100);
    const bool swap = trial % 3 == 0;
    adapter.DrawLine(swap ? x1 : x0, swap ? y1 : y0, swap ? x0 : x1, swap ? y0 : y1, DrawColor(1, 2, 3));
    const long long sx0 = swap ? x1 : x0, sy0 = swap ? y1 : y0, sx1 = swap ? x0 : x1, sy1 = swap ? y0 : y1;
    const long long dx = sx1 - sx0, dy = sy1 - sy0;
    const bool xMajor = std::llabs(dx) >= std::llabs(dy);
    const __int128 major = std::max(std::llabs(dx), std::llabs(dy)), minor = std::min(std::llabs(dx), std::llabs(dy));
    const int extent = xMajor ? m.roi.GetWidth() : m.roi.GetHeight();
    for (long long v = 0; v < extent; ++v) {
      const long long k = ((xMajor ? dx : dy) < 0 ? -1 : 1) * (v - (xMajor ? sx0 : sy0));
      if (k < 0 || k > major) continue;
      const long long q = major == 0 ? 0 : static_cast<long long>(((major >> 1) + k * minor) / major);
      const long long n = (xMajor ? sy0 : sx0) + ((xMajor ? dy : dx) < 0 ? -q : q);
      m.Put(xMajor ? v : n, xMajor ? n : v, DrawColor(1, 2, 3));
    }
    ASSERT_TRUE(m.Matches()) << trial;
  }
}

// Pixel centre (x, y) inside the integer polygon by the even-odd rule.
bool Inside(const std::vector<std::pair<int, int>>& poly, long long x, long long y) {
  bool inside = false;
  for (size_t i = 0; i < poly.size(); ++i) {
    auto a = poly[i], b = poly[(i + 1) % poly.size()];
    if (a.second == b.second) continue;
    if (a.second > b.second) std::swap(a, b);
    if (y < a.second || y >= b.second) continue;
    const long long h = b.second - a.second;
    if (static_cast<long long>(a.first) * h + (y - a.second) * (b.first - a.first) <= x * h) inside = !inside;
  }
  return inside;
}

TEST(RasterPolygons, FillByEvenOddThenOutlineOnTop) {
  Rng rng(12);
  for (int trial = 0; trial < 300; ++trial) {
    Canvas m(1 + rng() % 40, 1 + rng() % 30, rng);
    RasterDrawAdapter adapter(&m.roi);
    Corvane::DrawPointArray points;
    std::vector<std::pair<int, int>> poly;
    const int n = 1 + rng() % 7;
    for (int i = 0; i < n; ++i) {
      // Fractions are truncated towards zero.
      const double x = static_cast<int>(rng() % 70) - 15 + (rng() % 10) / 10.0 * (rng() % 2 ? 1 : -1);
      const double y = static_cast<int>(rng() % 50) - 10 + (rng() % 10) / 10.0 * (rng() % 2 ? 1 : -1);
      points.Add(x, y);
      poly.emplace_back(static_cast<int>(x), static_cast<int>(y));
    }
    const DrawColor outline = RandomColor(rng), fill = RandomColor(rng);
    if (trial % 4 == 0) {
      adapter.DrawPolygon(points, outline);
    } else {
      adapter.FillPolygon(points, outline, fill);
      for (int y = 0; y < m.roi.GetHeight(); ++y)
        for (int x = 0; x < m.roi.GetWidth(); ++x)
          if (Inside(poly, x, y)) m.Put(x, y, fill);
    }
    for (int i = 0; i < n; ++i)
      ModelLine(m, poly[i].first, poly[i].second, poly[(i + 1) % n].first, poly[(i + 1) % n].second, outline);
    ASSERT_TRUE(m.Matches()) << trial;
  }
}

TEST(RasterRectangles, FrameAndFillOfBoxesGivenEitherWay) {
  Rng rng(13);
  for (int trial = 0; trial < 200; ++trial) {
    Canvas m(1 + rng() % 30, 1 + rng() % 30, rng);
    RasterDrawAdapter adapter(&m.roi);
    const int x = static_cast<int>(rng() % 40) - 5, y = static_cast<int>(rng() % 40) - 5;
    const int w = static_cast<int>(rng() % 25) - 12, h = static_cast<int>(rng() % 25) - 12;
    const DrawColor outline = RandomColor(rng), fill = RandomColor(rng);
    const bool filled = trial % 2;
    if (filled) adapter.FillRectangle(x, y, w, h, outline, fill);
    else adapter.DrawRectangle(x, y, w, h, outline);
    const int l = std::min(x, x + w), r = std::max(x, x + w), t = std::min(y, y + h), b = std::max(y, y + h);
    for (int py = t; py <= b; ++py)
      for (int px = l; px <= r; ++px) {
        const bool edge = px == l || px == r || py == t || py == b;
        if (edge) m.Put(px, py, outline);
        else if (filled) m.Put(px, py, fill);
      }
    ASSERT_TRUE(m.Matches()) << trial;
  }
}

TEST(RasterPaths, FillsGiveTheScalarBytesOnEveryPath) {
  Rng rng(15);
  for (int trial = 0; trial < 60; ++trial) {
    const int w = 1 + rng() % 140, h = 1 + rng() % 12;
    const unsigned seed = rng();
    std::vector<unsigned char> scalar;
    for (int path : testsupport::AllPaths()) {
      testsupport::PathGuard guard(path);
      Rng local(seed);
      Canvas m(w, h, local);
      RasterDrawAdapter adapter(&m.roi);
      const DrawColor a = RandomColor(local), b = RandomColor(local);
      adapter.FillRectangle(static_cast<int>(local() % 9) - 4, -1, w, h / 2, a, b);
      adapter.FillEllipse(-3, 0, w + 2, h, b, a);
      adapter.FillPolygon(Corvane::DrawPointArray{{-5.0, 0.0}, {w + 5.0, h / 3.0}, {w / 2.0, h + 2.0}}, a, b);
      adapter.DrawTextBox("Mirel", w / 3, 1, a, b);
      const std::vector<unsigned char> bytes = testsupport::Snapshot(m.image);
      if (path < 0) scalar = bytes;
      else ASSERT_EQ(bytes, scalar) << "path " << path << " trial " << trial;
    }
  }
}

// Which colour each pixel of a plain canvas took: 0 none, 1 outline, 2 fill.
std::vector<int> Classes(const EImage<EC24>& image) {
  std::vector<int> out;
  for (int y = 0; y < image.GetHeight(); ++y)
    for (int x = 0; x < image.GetWidth(); ++x) {
      const EC24 p = image.GetPixel(x, y);
      out.push_back(p[0] == 255 ? 1 : p[0] == 128 ? 2 : 0);
    }
  return out;
}

TEST(RasterEllipses, RegionTouchesTheBoxIsSymmetricAndItsOutlineIsTheBorder) {
  const int pad = 3;
  for (int w = 0; w <= 13; ++w)
    for (int h : {0, 1, 2, 5, 8, 13, 40}) {
      EImage<EC24> image(w + 2 * pad + 1, h + 2 * pad + 1);
      ImgCopy(EC24(0, 0, 0), &image);
      RasterDrawAdapter adapter(&image);
      adapter.FillEllipse(pad + w, pad + h, -w, -h, DrawColor(255, 0, 0), DrawColor(128, 0, 0));
      const std::vector<int> cls = Classes(image);
      const int W = image.GetWidth();
      auto at = [&](int x, int y) { return cls[static_cast<size_t>(y) * W + x]; };
      bool touches[4] = {false, false, false, false};
      for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < W; ++x) {
          const int c = at(x, y);
          const bool inBox = x >= pad && x <= pad + w && y >= pad && y <= pad + h;
          ASSERT_TRUE(inBox || c == 0) << w << "x" << h;
          if (!inBox) continue;
          EXPECT_EQ(c, at(2 * pad + w - x, y)) << w << "x" << h;
          EXPECT_EQ(c, at(x, 2 * pad + h - y)) << w << "x" << h;
          if (c == 0) continue;
          touches[0] |= x == pad, touches[1] |= x == pad + w, touches[2] |= y == pad, touches[3] |= y == pad + h;
          const bool border = !at(x - 1, y) || !at(x + 1, y) || !at(x, y - 1) || !at(x, y + 1);
          EXPECT_EQ(c == 1, border) << w << "x" << h << " at " << x << "," << y;
        }
      EXPECT_TRUE(touches[0] && touches[1] && touches[2] && touches[3]) << w << "x" << h;

      // The frame alone is exactly the outline; a whole-turn arc is the frame,
      // and an arc reads the same from either end.
      EImage<EC24> frame(image.GetWidth(), image.GetHeight()), arc(image.GetWidth(), image.GetHeight());
      ImgCopy(EC24(0, 0, 0), &frame);
      ImgCopy(EC24(0, 0, 0), &arc);
      RasterDrawAdapter(&frame).DrawEllipse(pad, pad, w, h, DrawColor(255, 0, 0));
      RasterDrawAdapter(&arc).DrawArc(pad, pad, w, h, 1.0, -7.0, DrawColor(255, 0, 0));
      std::vector<int> outline = cls;
      for (int& c : outline) c = c == 1;
      EXPECT_EQ(Classes(frame), outline);
      EXPECT_EQ(Classes(arc), outline);
      ImgCopy(EC24(0, 0, 0), &frame);
      ImgCopy(EC24(0, 0, 0), &arc);
      RasterDrawAdapter(&frame).DrawArc(pad, pad, w, h, 0.3, 2.0, DrawColor(255, 0, 0));
      RasterDrawAdapter(&arc).DrawArc(pad, pad, w, h, 2.3, -2.0, DrawColor(255, 0, 0));
      EXPECT_EQ(Classes(frame), Classes(arc));
    }
}

TEST(RasterEllipses, QuarterArcsKeepToTheirQuadrant) {
  // y grows downwards: a positive sweep from 0 turns towards +y.
  EImage<EC24> image(41, 31);
  for (const double sweep : {1.5707963, -1.5707963}) {
    ImgCopy(EC24(0, 0, 0), &image);
    RasterDrawAdapter(&image).DrawArc(0, 0, 40, 30, 0.0, sweep, DrawColor(255, 0, 0));
    int count = 0;
    for (int y = 0; y <= 30; ++y)
      for (int x = 0; x <= 40; ++x)
        if (image.GetPixel(x, y)[0] == 255) {
          ++count;
          EXPECT_GE(x, 20);
          if (sweep > 0) EXPECT_GE(y, 15);
          else EXPECT_LE(y, 15);
        }
    EXPECT_GT(count, 20);
  }
}

TEST(RasterPixels, BlendClampCurrentColourAndComponentOrder) {
  EImage<EC24> image(4, 1);
  RasterDrawAdapter adapter(&image);
  const double opacities[] = {0.25, 2.0, -1.0, std::nan("")};
  const EC24 expected[] = {EC24(125, 25, 191), EC24(200, 100, 0), EC24(100, 0, 255), EC24(100, 0, 255)};
  for (int i = 0; i < 4; ++i) {
    image.SetPixel(EC24(100, 0, 255), i, 0);
    adapter.DrawPixel(i, 0, DrawColor(200, 100, 0), opacities[i]);
    EXPECT_EQ(testsupport::Bytes(EROI<EC24>(image)).size(), 12u);
    const EC24 p = image.GetPixel(i, 0);
    EXPECT_EQ(std::vector<int>({p[0], p[1], p[2]}), std::vector<int>({expected[i][0], expected[i][1], expected[i][2]}))
        << opacities[i];
  }
  adapter.SetPenColor(DrawColor(1, 2, 3));
  adapter.SetPenColor(Corvane::CurrentColor);  // keeps the pen
  adapter.DrawPixel(0, 0, Corvane::CurrentColor, 1.0);
  adapter.DrawPixel(-1, 0, DrawColor(9, 9, 9), 1.0);
  adapter.DrawPixel(4, 0, DrawColor(9, 9, 9), 1.0);
  EXPECT_EQ(image.GetPixel(0, 0)[2], 3);
  RasterDrawAdapter bgr(&image, Corvane::ColorOrder::BlueGreenRed);
  bgr.DrawPixel(1, 0, DrawColor(10, 20, 300), 1.0);  // the low byte of each word
  EXPECT_EQ(image.GetPixel(1, 0)[0], 44);
  EXPECT_EQ(image.GetPixel(1, 0)[2], 10);
  EImage<EC24> none;
  RasterDrawAdapter(&none).DrawLine(0, 0, 5, 5, DrawColor());
  RasterDrawAdapter(nullptr).FillEllipse(0, 0, 5, 5, DrawColor(), DrawColor());
}

// The three components a pixel shows: grey levels in all three (the high
// byte of wider grey, 0 or 255 for bits), 5 and 6-bit components widened.
int W5(unsigned v) { return static_cast<int>((v << 3) | (v >> 2)); }
int W6(unsigned v) { return static_cast<int>((v << 2) | (v >> 4)); }
void Set(int c[3], int a, int b, int d) { c[0] = a, c[1] = b, c[2] = d; }
void Shown(const EROI<EBW1>& r, int x, int y, int c[3]) {
  const int bit = r.GetBitOffset(0, y) + x;
  const int g = (static_cast<const unsigned char*>(r.GetGenericImagePtr(0, y))[bit >> 3] >> (7 - (bit & 7))) & 1;
  Set(c, 255 * g, 255 * g, 255 * g);
}
void Shown(const EROI<EBW8>& r, int x, int y, int c[3]) { const int g = *r.GetImagePtr(x, y); Set(c, g, g, g); }
void Shown(const EROI<EBW16>& r, int x, int y, int c[3]) { const int g = *r.GetImagePtr(x, y) >> 8; Set(c, g, g, g); }
void Shown(const EROI<EBW32>& r, int x, int y, int c[3]) { const int g = *r.GetImagePtr(x, y) >> 24; Set(c, g, g, g); }
void Shown(const EROI<EC15>& r, int x, int y, int c[3]) {
  const EC15 v = *r.GetImagePtr(x, y);
  Set(c, W5(v[0]), W5(v[1]), W5(v[2]));
}
void Shown(const EROI<EC16>& r, int x, int y, int c[3]) {
  const EC16 v = *r.GetImagePtr(x, y);
  Set(c, W5(v[0]), W6(v[1]), W5(v[2]));
}
template <class T>
void Shown(const EROI<T>& r, int x, int y, int c[3]) {
  const T v = *r.GetImagePtr(x, y);
  Set(c, v[0], v[1], v[2]);
}

// DrawImage: nearest neighbour by integer scaling, blended, clipped.
template <class T>
void CheckImage(Rng& rng, int type) {
  for (int trial = 0; trial < 40; ++trial) {
    EImage<T> source;
    EROI<T> part;
    testsupport::PlaceRandom(source, part, 1 + rng() % 12, 1 + rng() % 9, rng);
    testsupport::FillRandom(source, rng);
    Canvas m(1 + rng() % 30, 1 + rng() % 25, rng);
    RasterDrawAdapter adapter(&m.roi);
    const float zooms[] = {1.0f, 2.0f, 0.5f, 1.7f};
    const float zx = zooms[rng() % 4], zy = trial % 3 ? zooms[rng() % 4] : 0.0f;
    const double opacity = trial % 2 ? 1.0 : 0.5;
    const DrawColor tint = trial % 4 < 2 ? DrawColor(255, 128, 10) : Corvane::CurrentColor;
    const int x = static_cast<int>(rng() % 30) - 8, y = static_cast<int>(rng() % 20) - 8;
    adapter.DrawImage(&part, x, y, zx, zy, opacity, tint);
    const int W = part.GetWidth(), H = part.GetHeight();
    const long long dw = static_cast<long long>(W * zx), dh = static_cast<long long>(H * (zy == 0 ? zx : zy));
    for (long long j = 0; j < dh; ++j)
      for (long long i = 0; i < dw; ++i) {
        unsigned char* p = m.At(x + i, y + j);
        if (p == nullptr) continue;
        const int sx = static_cast<int>(i * W / dw), sy = static_cast<int>(j * H / dh);
        int c[3];
        Shown(part, sx, sy, c);
        const int t[3] = {tint.m_n32Red, tint.m_n32Green, tint.m_n32Blue};
        if (type <= 3 && tint != Corvane::CurrentColor && opacity != 1.0)
          for (int k = 0; k < 3; ++k) c[k] = static_cast<int>(c[k] * t[k] * 0.003921569);
        for (int k = 0; k < 3; ++k)
          p[k] = static_cast<unsigned char>(opacity == 1.0 ? c[k] : c[k] * opacity + p[k] * (1 - opacity));
      }
    ASSERT_TRUE(m.Matches()) << "type " << type << " trial " << trial;
  }
}

TEST(RasterImages, EveryPixelTypeZoomedBlendedTintedAndClipped) {
  Rng rng(14);
  CheckImage<EBW1>(rng, 0);
  CheckImage<EBW8>(rng, 1);
  CheckImage<EBW16>(rng, 2);
  CheckImage<EBW32>(rng, 3);
  CheckImage<EC15>(rng, 4);
  CheckImage<EC16>(rng, 5);
  CheckImage<EC24>(rng, 6);
  CheckImage<EC24A>(rng, 7);
  // Float images, void images and zooms that leave nothing are not drawn.
  Canvas m(10, 10, rng);
  RasterDrawAdapter adapter(&m.roi);
  EImage<EFLOAT32> floats(4, 4);
  EImage<EBW8> grey(4, 4), none;
  adapter.DrawImage(&floats, 0, 0, 1, 1, 1, Corvane::CurrentColor);
  adapter.DrawImage(&none, 0, 0, 1, 1, 1, Corvane::CurrentColor);
  adapter.DrawImage(&grey, 0, 0, -1, 1, 1, Corvane::CurrentColor);
  adapter.DrawImage(&grey, 0, 0, 0.2f, 1, 1, Corvane::CurrentColor);
  adapter.DrawImage(nullptr, 0, 0, 1, 1, 1, Corvane::CurrentColor);
  EXPECT_TRUE(m.Matches());
}

TEST(RasterText, MeasuresNonEmptyLinesAndDrawsInsideItsCentredBox) {
  EImage<EC24> image(60, 40);
  RasterDrawAdapter adapter(&image);
  const auto size = [&](const char* t) {
    const Corvane::DrawSize s = adapter.MeasureText(t);
    return std::make_pair(s.m_f64Width, s.m_f64Height);
  };
  EXPECT_EQ(size("AB\nC"), std::make_pair(12.0, 20.0));
  EXPECT_EQ(size("\n\nX\n"), std::make_pair(6.0, 10.0));
  EXPECT_EQ(size(""), std::make_pair(0.0, 0.0));
  EXPECT_EQ(size(nullptr), std::make_pair(0.0, 0.0));
  adapter.SetTextScale(2);
  EXPECT_EQ(size("AB\nC"), std::make_pair(24.0, 40.0));
  adapter.SetTextScale(1);

  // The box of "I\nIII" is 22 by 22 pixels at (5, 7); the background fills
  // it exactly and the glyphs stay inside, each line centred.
  ImgCopy(EC24(0, 0, 0), &image);
  adapter.DrawTextBox("I\nIII", 5, 7, DrawColor(255, 0, 0), DrawColor(0, 0, 255));
  int minX[2] = {99, 99}, maxX[2] = {-1, -1};
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 60; ++x) {
      const EC24 p = image.GetPixel(x, y);
      const bool inBox = x >= 5 && x < 27 && y >= 7 && y < 29;
      EXPECT_EQ(p[0] != 0 || p[2] != 0, inBox) << x << "," << y;
      if (p[0] == 255) {
        const int line = y < 18 ? 0 : 1;
        minX[line] = std::min(minX[line], x), maxX[line] = std::max(maxX[line], x);
      }
    }
  EXPECT_EQ(minX[0] + maxX[0], minX[1] + maxX[1]);
  EXPECT_LT(maxX[0] - minX[0], maxX[1] - minX[1]);
  // Text alone leaves the background as it is; unknown bytes draw as '?'.
  EImage<EC24> a(20, 12), b(20, 12);
  ImgCopy(EC24(0, 0, 0), &a);
  ImgCopy(EC24(0, 0, 0), &b);
  RasterDrawAdapter(&a).DrawText("\x01", 0, 0, DrawColor(255, 0, 0));
  RasterDrawAdapter(&b).DrawText("?", 0, 0, DrawColor(255, 0, 0));
  EXPECT_EQ(testsupport::Bytes(a), testsupport::Bytes(b));
  EXPECT_NE(testsupport::Bytes(a), std::vector<unsigned char>(testsupport::Bytes(a).size(), 0));
}

TEST(RasterDraw, AClosedPathDrawnThroughTheAdapter) {
  EPathVector square;
  for (const auto& p : {std::make_pair(1, 1), std::make_pair(4, 1), std::make_pair(4, 3), std::make_pair(1, 3)}) {
    EPath r;
    r.m_n16X = static_cast<short>(p.first), r.m_n16Y = static_cast<short>(p.second);
    square.AddElement(r);
  }
  square.SetClosed(1);
  EImage<EC24> image(12, 9);
  ImgCopy(EC24(0, 0, 0), &image);
  RasterDrawAdapter adapter(&image);
  adapter.SetPenColor(DrawColor(255, 255, 255));
  square.Draw(&adapter, 2.0f, 2.0f, 0.0f, 0.0f);
  // Corners at floor((v + 0.5) * 2): columns 3 and 9, rows 3 and 7.
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 12; ++x) {
      const bool edge = ((x == 3 || x == 9) && y >= 3 && y <= 7) || ((y == 3 || y == 7) && x >= 3 && x <= 9);
      EXPECT_EQ(image.GetPixel(x, y)[1] == 255, edge) << x << "," << y;
    }
}

}  // namespace
