// EPlot: the frame of a plot and the mapping from data to device pixels.
//
// A plot has data limits on each axis and a data area in device pixels,
// columns left .. right and rows top .. bottom. XView and YView map a data
// coordinate into that area: the x limits to the left and right columns, the
// y limits to the bottom and top rows (y grows upwards in the data). Values
// outside the limits map outside the area; results are truncated towards
// minus infinity and held inside the range of int.
//
// DrawAnnotations lays a plot out in the rectangle (x, y, width, height) of a
// drawing surface: the y caption at its top left, the x caption centred at
// its bottom, the limits of each axis beside the ends of the axis and the
// frame round the data area, all in CurrentColor. It sets the data area that
// XView and YView use from then on. A rectangle too small for the captions
// leaves a data area of a single pixel.
#ifndef MIREL_FOUNDATION_PLOT_H_
#define MIREL_FOUNDATION_PLOT_H_

#include "mirel/foundation/export.h"
#include "mirel/vector/draw/draw_forward.h"

class MIREL_API EPlot {
 public:
  EPlot() = default;

  // Data limits; a range of zero width maps every value to the low end.
  void SetXLimits(double min, double max) {
    m_f64XMin = min;
    m_f64XMax = max;
  }
  void SetYLimits(double min, double max) {
    m_f64YMin = min;
    m_f64YMax = max;
  }
  double GetXMin() const { return m_f64XMin; }
  double GetXMax() const { return m_f64XMax; }
  double GetYMin() const { return m_f64YMin; }
  double GetYMax() const { return m_f64YMax; }

  // The data area, columns left .. right and rows top .. bottom (included);
  // DrawAnnotations sets it from its rectangle.
  void SetArea(int left, int top, int right, int bottom);
  int GetLeft() const { return m_n32Left; }
  int GetTop() const { return m_n32Top; }
  int GetRight() const { return m_n32Right; }
  int GetBottom() const { return m_n32Bottom; }
  // The row of the x axis: the bottom of the data area, where the low y
  // limit lies.
  int GetBaseline() const { return m_n32Bottom; }

  int XView(double x) const;
  int YView(double y) const;

  void DrawAnnotations(Corvane::DrawAdapter* adapter, int x, int y, int width, int height, const char* xCaption,
                       const char* yCaption);

 private:
  double m_f64XMin = 0.0;
  double m_f64XMax = 1.0;
  double m_f64YMin = 0.0;
  double m_f64YMax = 1.0;
  int m_n32Left = 0;
  int m_n32Top = 0;
  int m_n32Right = 0;
  int m_n32Bottom = 0;
};

#endif  // MIREL_FOUNDATION_PLOT_H_
