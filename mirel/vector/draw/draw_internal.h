// Geometry, text and image helpers shared by the portable drawing adapters
// and the plot. Not installed.
#ifndef MIREL_VECTOR_DRAW_DRAW_INTERNAL_H_
#define MIREL_VECTOR_DRAW_DRAW_INTERNAL_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "mirel/foundation/image.h"
#include "mirel/vector/draw/draw_adapter.h"

namespace mirel {
namespace draw {

// Truncation towards zero, and floor, held inside the range of int; NaN
// gives 0. Drawing coordinates come from caller's floats and must never
// overflow a conversion.
int SaturateToInt(double v);
int FloorToInt(double v);

// Opacity clamped to [0, 1]; NaN counts as 0.
double ClampOpacity(double opacity);

// The three bytes of a colour, each the low byte of its word, in the order
// red, green, blue.
struct Rgb {
  unsigned char c[3];
};
inline Rgb BytesOf(const Corvane::DrawColor& color) {
  return Rgb{{static_cast<unsigned char>(color.m_n32Red), static_cast<unsigned char>(color.m_n32Green),
              static_cast<unsigned char>(color.m_n32Blue)}};
}

// trunc(fresh * opacity + old * (1 - opacity)), opacity in [0, 1].
inline unsigned char Blend(unsigned char fresh, unsigned char old, double opacity) {
  return static_cast<unsigned char>(fresh * opacity + old * (1.0 - opacity));
}

// Writes the three bytes c to n pixels of 3 bytes from d: with `mmx` zero
// pixel by pixel, otherwise by block copies of the pattern. The same bytes
// either way.
void FillPixels(unsigned char* d, std::size_t n, const unsigned char c[3], int mmx);

// ---------------------------------------------------------------- lines

// Walks the pixels of the line from (x0, y0) to (x1, y1), both ends included,
// that lie inside columns 0 .. width - 1 and rows 0 .. height - 1, in order
// from the start, calling plot(x, y) for each. The line is the integer walk
// along the major axis (x on a tie) with the error term starting at half the
// major difference: pixel k lies k steps along the major axis and
// floor((major / 2 + k * minor) / major) steps along the minor one. Only the
// stretch of steps inside the clip is walked, so a line from far outside
// costs no more than one across the clip.
template <class Plot>
void WalkLine(int x0, int y0, int x1, int y1, int width, int height, Plot&& plot) {
  if (width <= 0 || height <= 0) return;
  const long long dx = static_cast<long long>(x1) - x0, dy = static_cast<long long>(y1) - y0;
  const bool xMajor = (dx < 0 ? -dx : dx) >= (dy < 0 ? -dy : dy);
  const long long majorDiff = xMajor ? dx : dy, minorDiff = xMajor ? dy : dx;
  const long long m0 = xMajor ? x0 : y0, n0 = xMajor ? y0 : x0;
  const long long majorLen = xMajor ? width : height, minorLen = xMajor ? height : width;
  const long long sMajor = majorDiff < 0 ? -1 : 1, sMinor = minorDiff < 0 ? -1 : 1;
  const std::uint64_t major = static_cast<std::uint64_t>(majorDiff < 0 ? -majorDiff : majorDiff);
  const std::uint64_t minor = static_cast<std::uint64_t>(minorDiff < 0 ? -minorDiff : minorDiff);
  // Steps k with the major coordinate m0 + k * sMajor inside 0 .. majorLen - 1.
  long long kLo = sMajor > 0 ? -m0 : m0 - (majorLen - 1);
  long long kHi = sMajor > 0 ? majorLen - 1 - m0 : m0;
  if (kLo < 0) kLo = 0;
  if (kHi > static_cast<long long>(major)) kHi = static_cast<long long>(major);
  if (kLo > kHi) return;
  // Steps k whose minor coordinate n0 + q(k) * sMinor lies inside 0 ..
  // minorLen - 1 as well, q(k) = floor((major / 2 + k * minor) / major)
  // growing with k: a line that runs beside the image is not walked step by
  // step. q never exceeds minor + 1, and minor <= major < 2^32, so the
  // products stay below 2^64.
  {
    const long long qLo = std::max(0LL, sMinor > 0 ? -n0 : n0 - (minorLen - 1));
    const long long qHi = sMinor > 0 ? minorLen - 1 - n0 : n0;
    if (qHi < 0 || qLo > static_cast<long long>(minor) + 1) return;
    if (minor == 0) {
      if (qLo > 0) return;  // q stays 0: n0 is outside
    } else {
      const std::uint64_t half = major >> 1;
      const std::uint64_t lo = static_cast<std::uint64_t>(qLo) * major;
      const std::uint64_t first = lo <= half ? 0 : (lo - half + minor - 1) / minor;
      const std::uint64_t top = std::min<std::uint64_t>(static_cast<std::uint64_t>(qHi), minor + 1);
      const std::uint64_t last = ((top + 1) * major - 1 - half) / minor;
      if (first > static_cast<std::uint64_t>(kLo)) kLo = static_cast<long long>(std::min<std::uint64_t>(first, major + 1));
      if (last < static_cast<std::uint64_t>(kHi)) kHi = static_cast<long long>(last);
      if (kLo > kHi) return;
    }
  }
  // Diagonal steps taken after kLo steps, and the error term left; the sum
  // stays below 2^64 since kLo and minor are below 2^32.
  std::uint64_t q = 0, r = 0;
  if (major != 0) {
    const std::uint64_t e = (major >> 1) + static_cast<std::uint64_t>(kLo) * minor;
    q = e / major;
    r = e % major;
  }
  for (long long k = kLo; k <= kHi; ++k) {
    if (k != kLo) {
      r += minor;
      if (r >= major) {
        r -= major;
        ++q;
      }
    }
    const long long m = m0 + k * sMajor;
    const long long n = n0 + static_cast<long long>(q) * sMinor;
    if (n < 0 || n >= minorLen) continue;
    if (xMajor) plot(static_cast<int>(m), static_cast<int>(n));
    else plot(static_cast<int>(n), static_cast<int>(m));
  }
}

// ---------------------------------------------------------------- shapes

// A box (x, y, width, height) as its inclusive pixel bounds, whatever the
// signs of width and height.
struct Box {
  long long left, top, right, bottom;
};
Box BoxOf(int x, int y, int width, int height);

// The ellipse inscribed in a box: the pixels whose centres lie inside the
// ellipse of the box's centre with half-axes half the box's size plus half
// a pixel. A box of an even number of columns (or rows) has two middle
// columns: the ellipse is cut along its axis and its halves moved half a
// pixel apart, so that both middle columns are whole and the region touches
// all four sides of the box. Each row of the box holds one span of it.
class EllipseRegion {
 public:
  explicit EllipseRegion(const Box& box);
  const Box& GetBox() const { return box_; }
  // The span of row y; false outside the box's rows.
  bool Span(long long y, long long& left, long long& right) const;
  // The angle of a pixel centre on the ellipse's own parametrisation:
  // atan2 of its offsets from the centre, each over its half-axis.
  double Angle(long long x, long long y) const;

 private:
  Box box_;
  double cx_, cy_, ax_, ay_;
  // Half a pixel on an axis of an even number of pixels, else 0.
  double ex_, ey_;
};

// True when `angle` lies on the arc from `start` over `sweep` (either sign);
// a sweep of 2 pi or more is the whole turn.
bool OnArc(double angle, double start, double sweep);

// The integer polygon of a point array: each point truncated towards zero
// and held within 2^30 of the origin, so that the fill's arithmetic cannot
// overflow.
struct IntPoint {
  int x, y;
};
std::vector<IntPoint> TruncatePoints(const Corvane::DrawPointArray& points);

// The inside of a polygon by the even-odd rule, pixel centres on integer
// coordinates: an edge crosses row y when y lies in [min y, max y) of the
// edge, and pixel x is inside when an odd number of crossings lie at or left
// of x. Calls span(y, first, last) for each stretch of rows y0 .. y1.
//
// Edges are taken in order of their top row and kept while they cross; each
// keeps its crossing as an exact quotient and remainder, stepped without a
// division from row to row.
class PolygonScan {
 public:
  explicit PolygonScan(const std::vector<IntPoint>& polygon);
  template <class Span>
  void Rows(long long y0, long long y1, Span&& span) {
    for (long long y = y0; y <= y1; ++y) {
      Crossings(y);
      for (std::size_t i = 0; i + 1 < crossings_.size(); i += 2)
        if (crossings_[i] < crossings_[i + 1]) span(y, crossings_[i], crossings_[i + 1] - 1);
    }
  }

 private:
  struct Edge {
    long long top, end;      // rows top .. end - 1
    long long x0, dx, dy;    // crossing x0 + (y - top) * dx / dy, dy > 0
    long long q, r;          // floor division of the offset at row `row`
    long long row;
  };
  // Sorted first columns at or right of the crossings of row y; rows must
  // come in increasing order.
  void Crossings(long long y);

  std::vector<Edge> edges_;   // by top row
  std::size_t next_ = 0;      // first edge not yet active
  std::vector<Edge> active_;
  std::vector<long long> crossings_;
};

// ---------------------------------------------------------------- text

// The built-in font: glyphs of 5 by 8 pixels (the eighth row for
// descenders) for the printable ASCII characters, drawn in cells of 6 by 10;
// any other byte draws as '?'.
constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 8;
constexpr int kCellWidth = 6;
constexpr int kCellHeight = 10;
// Eight rows of the glyph of a byte, bit 4 the leftmost column.
const unsigned char* GlyphRows(unsigned char c);

// The non-empty lines of a text split at line feeds.
struct TextLine {
  const char* text;
  std::size_t length;
};
std::vector<TextLine> SplitLines(const char* text);

// Where the lines of a text go: the box (x, y, boxWidth, boxHeight) that
// DrawTextBox fills, and the top left corner of each line, each centred in
// the box's width and stacked from one pixel below its top.
struct TextLayout {
  std::vector<TextLine> lines;
  std::vector<long long> lineX;
  std::vector<long long> lineY;
  long long boxWidth = 0;
  long long boxHeight = 0;
};
Corvane::DrawSize MeasureLines(const std::vector<TextLine>& lines, int scale);
TextLayout LayOutText(const char* text, int x, int y, int scale);

// ---------------------------------------------------------------- images

// The type number of an image for drawing: 0 BW1, 1 BW8, 2 BW16, 3 BW32,
// 4 C15, 5 C16, 6 C24, 7 C24A; -1 for pixel types that are not drawn.
int DrawImageType(const EGenericROI* image);

// Reads the rows of an image as three bytes a pixel. Colour images give
// their components 0, 1, 2 as they are (5 and 6-bit components widened to 8
// bits by repeating their high bits). A grey image gives its grey level in
// all three (BW1: 0 or 255; BW16 and BW32: the high byte), or, tinted,
// trunc(grey * tint[c] * 0.003921569) in component c.
class ImageRowReader {
 public:
  // `tint` null for no tint.
  ImageRowReader(const EGenericROI* image, int type, const unsigned char* tint);
  bool IsGrey() const { return type_ <= 3; }
  void Read(int y, unsigned char* out) const;

 private:
  const EGenericROI* image_;
  int type_;
  unsigned char tint_[3] = {0, 0, 0};
  bool tinted_ = false;
};

// What every portable DrawImage does before it draws: the type and size of
// the image, the clamped opacity, the zooms and whether a grey image is
// tinted. False when there is nothing to draw.
struct ImagePlan {
  int type = -1;
  int width = 0;
  int height = 0;
  double opacity = 1.0;
  double zoomX = 1.0;
  double zoomY = 1.0;
  long long drawWidth = 0;
  long long drawHeight = 0;
  bool tinted = false;
};
bool PlanImage(const EGenericROI* image, float zoomX, float zoomY, double opacity, const Corvane::DrawColor& tint,
               ImagePlan& plan);

}  // namespace draw
}  // namespace mirel

#endif  // MIREL_VECTOR_DRAW_DRAW_INTERNAL_H_
