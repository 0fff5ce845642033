// Draw of paths and histograms, and the plot, through a recording adapter.
#include <climits>
#include <cmath>
#include <string>
#include <vector>

#include "draw_test_support.h"
#include "test_support.h"

namespace {

using drawtest::RecordingAdapter;
using Strings = std::vector<std::string>;

TEST(DrawBasics, PointArrayThrowsPastItsCountAndCurrentColorComparesEveryWord) {
  Corvane::DrawPointArray points{{1.5, -2.0}, {3.0, 4.0}};
  EXPECT_EQ(points[1].m_f64Y, 4.0);
  const Corvane::DrawPointArray& view = points;
  for (unsigned int i : {2u, 1000u, 0xFFFFFFFFu}) {
    try {
      (void)view[i];
      ADD_FAILURE() << "no exception at " << i;
    } catch (const Corvane::Talmeer::Exception& e) {
      EXPECT_EQ(e.GetCode(), E_ERROR_INDEX_OUT_OF_RANGE);
    }
  }
  EXPECT_THROW(points[2].m_f64X = 0, Corvane::Talmeer::Exception);
  EXPECT_TRUE(Corvane::DrawColor(-1, -1, -1) == Corvane::CurrentColor);
  EXPECT_FALSE(Corvane::DrawColor(-1, -1, 0) == Corvane::CurrentColor);
  EXPECT_FALSE(Corvane::DrawColor(0, -1, -1) == Corvane::CurrentColor);
  EXPECT_FALSE(Corvane::DrawColor(-1, 0, -1) == Corvane::CurrentColor);
}

template <class V>
class PathDraw : public ::testing::Test {};
using PathVectors = ::testing::Types<EPathVector, EBW8PathVector, EBW16PathVector, EC24PathVector>;
TYPED_TEST_SUITE(PathDraw, PathVectors);

template <class V>
V MakePath(std::initializer_list<std::pair<short, short>> points) {
  V v;
  for (const auto& p : points) {
    typename std::remove_reference<decltype(v[0])>::type r{};
    r.m_n16X = p.first;
    r.m_n16Y = p.second;
    v.AddElement(r);
  }
  return v;
}

TYPED_TEST(PathDraw, PointsGoThroughPixelCentresAndAClosedPathStartsAtItsLastPoint) {
  TypeParam path = MakePath<TypeParam>({{3, -2}, {0, 0}, {10, 5}});
  RecordingAdapter open;
  // Zoom y 0 takes zoom x: x -> floor((x + 1 + 0.5) * 2), y -> floor((y - 0.75 + 0.5) * 2).
  path.Draw(&open, 2.0f, 0.0f, 1.0f, -0.75f);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(open.calls, (Strings{"DrawLine 9 -5 3 -1 current", "DrawLine 3 -1 23 9 current"}));

  path.SetClosed(1);
  RecordingAdapter closed;
  path.Draw(&closed, 1.0f, 0.5f, 0.0f, 0.0f);
  EXPECT_EQ(closed.calls, (Strings{"DrawLine 10 2 3 -1 current", "DrawLine 3 -1 0 0 current",
                                   "DrawLine 0 0 10 2 current"}));
}

TYPED_TEST(PathDraw, OnePointEmptyPathsAndANullAdapter) {
  TypeParam one = MakePath<TypeParam>({{4, 7}});
  RecordingAdapter open, closed, none;
  one.Draw(&open, 1, 1, 0, 0);
  EXPECT_TRUE(open.calls.empty());
  one.SetClosed(1);
  one.Draw(&closed, 1, 1, 0, 0);
  EXPECT_EQ(closed.calls, (Strings{"DrawLine 4 7 4 7 current"}));
  TypeParam empty;
  empty.SetClosed(1);
  empty.Draw(&none, 1, 1, 0, 0);
  EXPECT_TRUE(none.calls.empty());
  EXPECT_EQ(EGetError(), E_OK);

  one.Draw(static_cast<Corvane::DrawAdapter*>(nullptr), 1, 1, 0, 0);  // not the HDC form
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  const std::string label = std::is_same<TypeParam, EPathVector>::value       ? "EPathVector::Draw"
                            : std::is_same<TypeParam, EBW8PathVector>::value  ? "EBW8PathVector::Draw"
                            : std::is_same<TypeParam, EBW16PathVector>::value ? "EBW16PathVector::Draw"
                                                                              : "EC24PathVector::Draw";
  EXPECT_EQ(std::string(EGetErrorTrace()), label);
}

TEST(PlotView, MapsLimitsOntoTheAreaAndSaturates) {
  EPlot plot;
  plot.SetArea(10, 20, 110, 70);
  plot.SetXLimits(0, 50);
  plot.SetYLimits(0, 25);
  EXPECT_EQ(plot.XView(0), 10);
  EXPECT_EQ(plot.XView(50), 110);
  EXPECT_EQ(plot.XView(25), 60);
  EXPECT_EQ(plot.XView(0.3), 10);  // 0.6 pixels: floor
  EXPECT_EQ(plot.XView(-1), 8);
  EXPECT_EQ(plot.YView(0), 70);
  EXPECT_EQ(plot.YView(25), 20);
  EXPECT_EQ(plot.YView(5), 60);
  EXPECT_EQ(plot.YView(0.3), 70);  // 0.6 pixels above the bottom: not a whole pixel yet
  EXPECT_EQ(plot.XView(1e300), INT_MAX);
  EXPECT_EQ(plot.YView(1e300), INT_MIN);
  EXPECT_EQ(plot.XView(std::nan("")), 0);
  plot.SetXLimits(3, 3);
  EXPECT_EQ(plot.XView(7), 10);
}

// Histogram drawing: the annotations first, then one vertical line a column.
struct HistogramDrawing {
  RecordingAdapter adapter;
  EBWHistogramVector histogram;
  Strings lines;
  explicit HistogramDrawing(std::vector<unsigned int> bins) {
    histogram.SetNumElements(static_cast<unsigned int>(bins.size()));
    for (unsigned int i = 0; i < bins.size(); ++i) histogram[i] = bins[i];
    histogram.Draw(&adapter, 10.9f, 20.2f, 200.7f, 120.0f);
    lines = adapter.Of("DrawLine");
  }
  std::string Line(int col, int top) const {
    const int base = histogram.GetPlot().GetBaseline();
    return "DrawLine " + std::to_string(col) + " " + std::to_string(base) + " " + std::to_string(col) + " " +
           std::to_string(top) + " current";
  }
};

TEST(HistogramDraw, LimitsAnnotationsAndOneLineForEachColumnOfEachBin) {
  HistogramDrawing d({0, 5, 2, 10});
  EXPECT_EQ(EGetError(), E_OK);
  const EPlot& plot = d.histogram.GetPlot();
  EXPECT_EQ(plot.GetXMax(), 3.0);
  EXPECT_EQ(plot.GetYMax(), 10.0);
  // The annotations come first, inside the rectangle truncated to
  // (10, 20, 200, 120), with the two captions and a frame round the area.
  ASSERT_GE(d.adapter.calls.size(), 1u);
  EXPECT_EQ(d.adapter.calls[0], "DrawRectangle " + std::to_string(plot.GetLeft() - 1) + " " +
                                    std::to_string(plot.GetTop() - 1) + " " +
                                    std::to_string(plot.GetRight() - plot.GetLeft() + 2) + " " +
                                    std::to_string(plot.GetBottom() - plot.GetTop() + 2) + " current");
  int texts = 0;
  bool value = false, count = false;
  for (const std::string& c : d.adapter.Of("DrawText")) {
    ++texts;
    value = value || c.find(" Value current") != std::string::npos;
    count = count || c.find(" Count current") != std::string::npos;
  }
  EXPECT_TRUE(value && count);
  EXPECT_EQ(d.adapter.calls.size(), 1u + texts + d.lines.size());
  EXPECT_GT(plot.GetLeft(), 10);
  EXPECT_LT(plot.GetRight(), 10 + 200);
  EXPECT_GT(plot.GetTop(), 20);
  EXPECT_LT(plot.GetBottom(), 20 + 120);
  // Bin i covers the columns XView(i) .. XView(i + 1) - 1 from the left of
  // the area on; the largest bin reaches the top, an empty one stays on the
  // baseline.
  Strings expected;
  const unsigned int bins[] = {0, 5, 2, 10};
  int col = plot.GetLeft();
  for (int i = 0; i < 4; ++i) {
    const int next = std::max(plot.XView(i + 1), plot.XView(i) + 1);
    ASSERT_EQ(plot.XView(i), col);
    for (; col < next; ++col) expected.push_back(d.Line(col, plot.YView(bins[i])));
  }
  EXPECT_EQ(d.lines, expected);
  EXPECT_EQ(plot.YView(10), plot.GetTop());
  EXPECT_EQ(d.lines.front(), d.Line(plot.GetLeft(), plot.GetBaseline()));
}

TEST(HistogramDraw, OneBinSpansTheAreaAndAnEmptyHistogramDrawsOnlyItsFrame) {
  HistogramDrawing one({7});
  const EPlot& plot = one.histogram.GetPlot();
  EXPECT_EQ(plot.GetXMax(), 1.0);
  EXPECT_EQ(plot.GetYMax(), 7.0);
  ASSERT_EQ(one.lines.size(), static_cast<size_t>(plot.GetRight() - plot.GetLeft()));
  EXPECT_EQ(one.lines.back(), one.Line(plot.GetRight() - 1, plot.GetTop()));

  HistogramDrawing none({});
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_TRUE(none.lines.empty());
  EXPECT_EQ(none.histogram.GetPlot().GetXMax(), 1.0);
  EXPECT_EQ(none.histogram.GetPlot().GetYMax(), 1.0);
  EXPECT_FALSE(none.adapter.Of("DrawRectangle").empty());

  none.histogram.Draw(static_cast<Corvane::DrawAdapter*>(nullptr), 0, 0, 100, 100);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "EBWHistogramVector::Draw");
}

}  // namespace
