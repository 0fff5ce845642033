// The GDI adapter drawing into a memory device context over a DIB section,
// its pixels read back and compared with the raster adapter, whose pixels
// the raster tests pin down, wherever GDI defines the same pixels: boxes,
// straight and diagonal lines, blended points, images. Shapes that GDI
// rasterises its own way (any-slope lines, ellipses, arcs, text) are held to
// their box.
#if defined(_WIN32)

#include <windows.h>
#undef DrawText

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <vector>

#include "test_support.h"

namespace {

using Corvane::CurrentColor;
using Corvane::DrawAdapter;
using Corvane::DrawColor;
using Corvane::DrawPointArray;
using Corvane::GDIDrawAdapter;
using Corvane::RasterDrawAdapter;
using testsupport::Rng;
using Pixels = std::vector<std::uint32_t>;  // 0xRRGGBB, row after row

// A w x h memory device context over a top-down 32-bit DIB section and, beside
// it, an EC24 image of the same pixels for the raster adapter, red in the
// component that `order` names.
class Surfaces {
 public:
  Surfaces(int w, int h, Rng& rng, Corvane::ColorOrder order = Corvane::ColorOrder::RedGreenBlue)
      : w_(w), h_(h), red_(order == Corvane::ColorOrder::BlueGreenRed ? 2 : 0), image_(w, h), raster_(&image_, order) {
    dc_ = CreateCompatibleDC(nullptr);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = -h;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits_, nullptr, 0);
    old_ = SelectObject(dc_, bitmap_);
    Pixels start(static_cast<size_t>(w) * h);
    for (std::uint32_t& p : start) p = rng() & 0xFFFFFF;
    std::copy(start.begin(), start.end(), static_cast<std::uint32_t*>(bits_));
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const std::uint32_t p = start[static_cast<size_t>(y) * w + x];
        EC24 c;
        c[red_] = static_cast<unsigned char>(p >> 16), c[1] = static_cast<unsigned char>(p >> 8);
        c[2 - red_] = static_cast<unsigned char>(p);
        image_.SetPixel(c, x, y);
      }
  }
  ~Surfaces() {
    SelectObject(dc_, old_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
  }
  bool Ready() const { return dc_ != nullptr && bitmap_ != nullptr && bits_ != nullptr; }
  HDC Dc() const { return dc_; }
  RasterDrawAdapter& Raster() { return raster_; }
  Pixels Gdi() const {
    GdiFlush();
    const std::uint32_t* p = static_cast<const std::uint32_t*>(bits_);
    Pixels out(p, p + static_cast<size_t>(w_) * h_);
    for (std::uint32_t& v : out) v &= 0xFFFFFF;
    return out;
  }
  Pixels RasterPixels() const {
    Pixels out;
    for (int y = 0; y < h_; ++y)
      for (int x = 0; x < w_; ++x) {
        const EC24 p = image_.GetPixel(x, y);
        out.push_back(static_cast<std::uint32_t>(p[red_]) << 16 | p[1] << 8 | p[2 - red_]);
      }
    return out;
  }
  // Runs the same drawing on both surfaces.
  void Both(const std::function<void(DrawAdapter&)>& draw) {
    GDIDrawAdapter gdi(dc_);
    draw(gdi);
    draw(raster_);
  }

 private:
  int w_, h_;
  int red_;  // the component of the raster image that holds red
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HGDIOBJ old_ = nullptr;
  void* bits_ = nullptr;
  EImage<EC24> image_;
  RasterDrawAdapter raster_;
};

DrawColor RandomColor(Rng& rng) { return DrawColor(rng() % 256, rng() % 256, rng() % 256); }
int Coordinate(Rng& rng, int size) { return static_cast<int>(rng() % (size + 20)) - 10; }

TEST(GdiAdapter, BoxesLinesAndPointsMatchTheRasterAdapter) {
  Rng rng(5);
  for (int trial = 0; trial < 12; ++trial) {
    Surfaces s(40, 30, rng);
    ASSERT_TRUE(s.Ready());
    for (int k = 0; k < 8; ++k) {
      const int x = Coordinate(rng, 40), y = Coordinate(rng, 30);
      const int w = static_cast<int>(rng() % 25), h = static_cast<int>(rng() % 20), d = static_cast<int>(rng() % 20);
      const DrawColor a = RandomColor(rng), b = RandomColor(rng);
      const double opacity = (rng() % 5) / 4.0;
      switch (k % 4) {
        case 0: s.Both([&](DrawAdapter& t) { t.FillRectangle(x, y, w, h, a, b); }); break;
        case 1: s.Both([&](DrawAdapter& t) { t.DrawRectangle(x, y, w, h, a); }); break;
        case 2:  // horizontal, vertical and 45-degree lines, either way
          s.Both([&](DrawAdapter& t) {
            t.DrawLine(x, y, x + w - 12, y, a);
            t.DrawLine(x, y, x, y + h - 10, b);
            t.DrawLine(x, y, x + (trial % 2 ? d : -d), y + (k % 8 < 4 ? d : -d), a);
          });
          break;
        default:
          s.Both([&](DrawAdapter& t) {
            for (int i = 0; i < 6; ++i) t.DrawPixel(x + i, y + i % 3, a, opacity);
          });
      }
    }
    ASSERT_EQ(s.Gdi(), s.RasterPixels()) << trial;
  }
}

TEST(GdiAdapter, CurrentColorUsesTheContextsSelectionAndLeavesIt) {
  Rng rng(6);
  Surfaces s(32, 24, rng);
  ASSERT_TRUE(s.Ready());
  HPEN pen = CreatePen(PS_SOLID, 1, RGB(200, 10, 20));
  HBRUSH brush = CreateSolidBrush(RGB(5, 150, 60));
  const HGDIOBJ oldPen = SelectObject(s.Dc(), pen), oldBrush = SelectObject(s.Dc(), brush);
  s.Raster().SetPenColor(DrawColor(200, 10, 20));
  s.Raster().SetBrushColor(DrawColor(5, 150, 60));
  s.Both([](DrawAdapter& t) {
    t.FillRectangle(2, 3, 12, 9, CurrentColor, CurrentColor);
    t.DrawLine(20, 2, 20, 20, CurrentColor);
    t.DrawPixel(30, 22, CurrentColor, 1.0);
    t.FillRectangle(22, 4, 6, 6, DrawColor(1, 2, 3), DrawColor(4, 5, 6));
  });
  EXPECT_EQ(s.Gdi(), s.RasterPixels());
  // Paths drawn through the HDC form use the selected pen too.
  EPathVector path;
  for (const auto& p : {EPath{1, 20}, EPath{10, 20}, EPath{10, 14}, EPath{4, 14}})
    path.AddElement(p);
  path.Draw(s.Dc(), 1.0f, 1.0f, 0.0f, 0.0f);
  path.Draw(&s.Raster(), 1.0f, 1.0f, 0.0f, 0.0f);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(s.Gdi(), s.RasterPixels());
  // Whatever an operation selected or changed is put back.
  EXPECT_EQ(GetCurrentObject(s.Dc(), OBJ_PEN), pen);
  EXPECT_EQ(GetCurrentObject(s.Dc(), OBJ_BRUSH), brush);
  SetTextColor(s.Dc(), RGB(1, 2, 3));
  SetBkMode(s.Dc(), OPAQUE);
  GDIDrawAdapter gdi(s.Dc());
  gdi.DrawTextBox("Ab", 2, 2, DrawColor(250, 0, 0), DrawColor(0, 0, 250));
  EXPECT_EQ(GetTextColor(s.Dc()), RGB(1, 2, 3));
  EXPECT_EQ(GetBkMode(s.Dc()), OPAQUE);
  EXPECT_EQ(GetCurrentObject(s.Dc(), OBJ_PEN), pen);
  SelectObject(s.Dc(), oldPen);
  SelectObject(s.Dc(), oldBrush);
  DeleteObject(pen);
  DeleteObject(brush);
}

// Pixels that differ from `before` lie inside the box x0..x1, y0..y1.
void ExpectChangesInside(const Pixels& before, const Pixels& after, int w, int x0, int y0, int x1, int y1,
                         const char* what) {
  int changed = 0;
  for (size_t i = 0; i < after.size(); ++i) {
    if (after[i] == before[i]) continue;
    ++changed;
    const int x = static_cast<int>(i % w), y = static_cast<int>(i / w);
    EXPECT_TRUE(x >= x0 && x <= x1 && y >= y0 && y <= y1) << what << " at " << x << "," << y;
  }
  EXPECT_GT(changed, 0) << what;
}

TEST(GdiAdapter, ShapesOfGdisOwnRasterStayInTheirBoxes) {
  Rng rng(7);
  Surfaces s(60, 50, rng);
  ASSERT_TRUE(s.Ready());
  GDIDrawAdapter gdi(s.Dc());
  Pixels before = s.Gdi();
  gdi.DrawEllipse(5, 6, 20, 11, DrawColor(255, 0, 0));
  ExpectChangesInside(before, s.Gdi(), 60, 5, 6, 25, 17, "ellipse");
  before = s.Gdi();
  gdi.FillEllipse(30, 4, 9, 14, DrawColor(0, 255, 0), DrawColor(0, 0, 255));
  ExpectChangesInside(before, s.Gdi(), 60, 30, 4, 39, 18, "filled ellipse");
  before = s.Gdi();
  gdi.DrawArc(8, 25, 16, 16, 0.0, 1.5, DrawColor(9, 9, 9));
  ExpectChangesInside(before, s.Gdi(), 60, 8, 25, 24, 41, "arc");
  // A line of any slope: both ends and one pixel a step of its major axis.
  before = s.Gdi();
  gdi.DrawLine(33, 25, 52, 31, DrawColor(1, 1, 1));
  const Pixels line = s.Gdi();
  int changed = 0;
  for (size_t i = 0; i < line.size(); ++i) changed += line[i] != before[i];
  EXPECT_EQ(changed, 20);
  EXPECT_EQ(line[25 * 60 + 33], 0x010101u);
  EXPECT_EQ(line[31 * 60 + 52], 0x010101u);
  ExpectChangesInside(before, line, 60, 33, 25, 52, 31, "line");
  // Text in its box (x, y, x + w + 4, y + h + 2) measured by the adapter.
  before = s.Gdi();
  const Corvane::DrawSize size = gdi.MeasureText("Mirel");
  ASSERT_GT(size.m_f64Width, 0.0);
  gdi.DrawTextBox("Mirel", 28, 33, DrawColor(255, 255, 255), DrawColor(0, 0, 0));
  ExpectChangesInside(before, s.Gdi(), 60, 28, 33, 28 + static_cast<int>(size.m_f64Width) + 3,
                      33 + static_cast<int>(size.m_f64Height) + 1, "text box");
}

// A w x h ROI at a random place in an image over a borrowed buffer.
template <class T>
void RandomRoi(EImage<T>& image, EROI<T>& roi, int w, int h, Rng& rng) {
  testsupport::BorrowedBuffers::Make(image, w + 11, h + 2, rng);
  testsupport::FillRandom(image, rng);
  roi.Attach(&image);
  roi.SetPlacement(static_cast<int>(rng() % 11), static_cast<int>(rng() % 3), w, h);
}

template <class T>
void ExpectImagePixels(Rng& rng, const char* what) {
  // Images in borrowed buffers of odd pitch with nothing behind the last
  // row: the adapter reads no byte outside the ROI.
  for (int trial = 0; trial < 4; ++trial) {
    EImage<T> image;
    EROI<T> roi;
    RandomRoi(image, roi, 5 + static_cast<int>(rng() % 13), 3 + static_cast<int>(rng() % 7), rng);
    // Bitmaps hold blue first: so does the raster surface, and both take
    // a colour image's component 0 as blue.
    Surfaces s(48, 36, rng, Corvane::ColorOrder::BlueGreenRed);
    ASSERT_TRUE(s.Ready());
    const int x = static_cast<int>(rng() % 20) - 4, y = static_cast<int>(rng() % 14) - 3;
    const float zoom = trial % 2 ? 2.0f : 1.0f;
    s.Both([&](DrawAdapter& t) { t.DrawImage(&roi, x, y, zoom, 0.0f, 1.0, CurrentColor); });
    ASSERT_EQ(s.Gdi(), s.RasterPixels()) << what << " trial " << trial;
    // Blended and tinted: GDI rounds the blend its own way.
    Surfaces b(48, 36, rng, Corvane::ColorOrder::BlueGreenRed);
    b.Both([&](DrawAdapter& t) { t.DrawImage(&roi, x, y, 1.0f, 0.0f, 0.5, DrawColor(255, 128, 0)); });
    const Pixels g = b.Gdi(), r = b.RasterPixels();
    for (size_t i = 0; i < g.size(); ++i)
      for (int shift = 0; shift < 24; shift += 8)
        ASSERT_LE(std::abs(static_cast<int>(g[i] >> shift & 255) - static_cast<int>(r[i] >> shift & 255)), 2)
            << what << " blended, pixel " << i;
  }
}

TEST(GdiAdapter, ImagesOfEveryTypeArePaintedPixelForPixel) {
  Rng rng(8);
  ExpectImagePixels<EBW1>(rng, "BW1");
  ExpectImagePixels<EBW8>(rng, "BW8");
  ExpectImagePixels<EBW16>(rng, "BW16");
  ExpectImagePixels<EBW32>(rng, "BW32");
  ExpectImagePixels<EC15>(rng, "C15");
  ExpectImagePixels<EC16>(rng, "C16");
  ExpectImagePixels<EC24>(rng, "C24");
  ExpectImagePixels<EC24A>(rng, "C24A");
}

}  // namespace

#endif  // _WIN32
