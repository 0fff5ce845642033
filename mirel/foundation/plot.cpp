#include "mirel/foundation/plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "mirel/vector/draw/draw_adapter.h"
#include "mirel/vector/draw/draw_internal.h"

using mirel::draw::FloorToInt;
using mirel::draw::SaturateToInt;

void EPlot::SetArea(int left, int top, int right, int bottom) {
  m_n32Left = left;
  m_n32Top = top;
  m_n32Right = right;
  m_n32Bottom = bottom;
}

int EPlot::XView(double x) const {
  const double range = m_f64XMax - m_f64XMin;
  if (!(range != 0.0)) return m_n32Left;
  const double span = static_cast<double>(m_n32Right) - m_n32Left;
  return FloorToInt(m_n32Left + std::floor((x - m_f64XMin) / range * span));
}

int EPlot::YView(double y) const {
  const double range = m_f64YMax - m_f64YMin;
  if (!(range != 0.0)) return m_n32Bottom;
  const double span = static_cast<double>(m_n32Bottom) - m_n32Top;
  return FloorToInt(m_n32Bottom - std::floor((y - m_f64YMin) / range * span));
}

namespace {

// A limit as a label: whole numbers without a fraction.
void FormatLimit(double v, char* out, std::size_t size) {
  if (std::fabs(v) < 1e15 && v == std::floor(v)) std::snprintf(out, size, "%lld", static_cast<long long>(v));
  else std::snprintf(out, size, "%g", v);
}

}  // namespace

void EPlot::DrawAnnotations(Corvane::DrawAdapter* adapter, int x, int y, int width, int height,
                            const char* xCaption, const char* yCaption) {
  if (adapter == nullptr) return;
  const Corvane::DrawColor pen = Corvane::CurrentColor;
  if (xCaption == nullptr) xCaption = "";
  if (yCaption == nullptr) yCaption = "";
  char xLo[32], xHi[32], yLo[32], yHi[32];
  FormatLimit(m_f64XMin, xLo, sizeof xLo);
  FormatLimit(m_f64XMax, xHi, sizeof xHi);
  FormatLimit(m_f64YMin, yLo, sizeof yLo);
  FormatLimit(m_f64YMax, yHi, sizeof yHi);
  // Text boxes are 4 pixels wider and 2 taller than their text.
  auto boxWidth = [adapter](const char* text) { return SaturateToInt(adapter->MeasureText(text).m_f64Width + 4.0); };
  const long long row = SaturateToInt(adapter->MeasureText("0").m_f64Height + 2.0);
  const long long yLabels = std::max(boxWidth(yLo), boxWidth(yHi));
  const long long xHiBox = boxWidth(xHi);

  // Above the area a row for the y caption, below it one for the x limits
  // and one for the x caption; the y limits stand left of the frame.
  long long left = static_cast<long long>(x) + yLabels + 1;
  long long right = static_cast<long long>(x) + width - 1 - std::max(2LL, xHiBox - xHiBox / 2);
  long long top = static_cast<long long>(y) + row + 1;
  long long bottom = static_cast<long long>(y) + height - 1 - 2 * row - 1;
  right = std::max(right, left);
  bottom = std::max(bottom, top);
  auto clampInt = [](long long v) { return SaturateToInt(static_cast<double>(v)); };
  SetArea(clampInt(left), clampInt(top), clampInt(right), clampInt(bottom));
  left = m_n32Left, top = m_n32Top, right = m_n32Right, bottom = m_n32Bottom;

  adapter->DrawRectangle(clampInt(left - 1), clampInt(top - 1), clampInt(right - left + 2),
                         clampInt(bottom - top + 2), pen);
  adapter->DrawText(yCaption, clampInt(left), y, pen);
  adapter->DrawText(yHi, clampInt(left - 1 - boxWidth(yHi)), clampInt(top - row / 2), pen);
  adapter->DrawText(yLo, clampInt(left - 1 - boxWidth(yLo)), clampInt(bottom - row / 2), pen);
  adapter->DrawText(xLo, clampInt(left - boxWidth(xLo) / 2), clampInt(bottom + 2), pen);
  adapter->DrawText(xHi, clampInt(right - xHiBox / 2), clampInt(bottom + 2), pen);
  adapter->DrawText(xCaption, clampInt((left + right) / 2 - boxWidth(xCaption) / 2), clampInt(bottom + 2 + row),
                    pen);
}
