// Draw of the path vectors and of the histogram vector.
#include <algorithm>
#include <cmath>

#include "mirel/foundation/frame_internal.h"
#include "mirel/histogram/histogram_vector.h"
#include "mirel/vector/draw/draw_adapter.h"
#include "mirel/vector/draw/draw_internal.h"
#include "mirel/vector/records.h"

namespace {

// The device pixel of a path coordinate, in single precision as the path's
// own zoom and pan are.
int DeviceCoordinate(short v, float pan, float zoom) {
  const float centred = static_cast<float>(v) + pan;
  return mirel::draw::FloorToInt(static_cast<double>(std::floor(centred * zoom)));
}

// The lines of a path: consecutive points joined, a closed path starting at
// its last point so that its first line closes it.
template <class T>
void DrawPath(const EPathVectorOf<T>& path, const char* label, Corvane::DrawAdapter* adapter, float zoomX,
              float zoomY, float panX, float panY) {
  mirel::Frame frame(label);
  if (!frame.Require(adapter != nullptr, E_ERROR_BAD_ARGUMENT)) return;
  const unsigned int count = path.GetNumElements();
  const T* points = path.GetDataPtr();
  if (count == 0 || points == nullptr) return;
  if (zoomY == 0.0f) zoomY = zoomX;
  const float px = panX + 0.5f, py = panY + 0.5f;
  const bool closed = path.GetClosed() != 0;
  const unsigned int from = closed ? count - 1 : 0;
  int x0 = DeviceCoordinate(points[from].m_n16X, px, zoomX);
  int y0 = DeviceCoordinate(points[from].m_n16Y, py, zoomY);
  for (unsigned int i = closed ? 0 : 1; i < count; ++i) {
    const int x1 = DeviceCoordinate(points[i].m_n16X, px, zoomX);
    const int y1 = DeviceCoordinate(points[i].m_n16Y, py, zoomY);
    adapter->DrawLine(x0, y0, x1, y1, Corvane::CurrentColor);
    x0 = x1;
    y0 = y1;
  }
}

}  // namespace

void EPathVector::Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const {
  DrawPath(*this, "EPathVector::Draw", adapter, zoomX, zoomY, panX, panY);
}

void EBW8PathVector::Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const {
  DrawPath(*this, "EBW8PathVector::Draw", adapter, zoomX, zoomY, panX, panY);
}

void EBW16PathVector::Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const {
  DrawPath(*this, "EBW16PathVector::Draw", adapter, zoomX, zoomY, panX, panY);
}

void EC24PathVector::Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const {
  DrawPath(*this, "EC24PathVector::Draw", adapter, zoomX, zoomY, panX, panY);
}

void EBWHistogramVector::Draw(Corvane::DrawAdapter* adapter, float x, float y, float width, float height) const {
  mirel::Frame frame("EBWHistogramVector::Draw");
  if (!frame.Require(adapter != nullptr, E_ERROR_BAD_ARGUMENT)) return;
  const unsigned int count = m_pData != nullptr ? m_un32NumElements : 0;
  unsigned int highest = 1;
  for (unsigned int i = 0; i < count; ++i) highest = std::max(highest, m_pData[i]);
  m_plot.SetXLimits(0.0, count < 3 ? 1.0 : static_cast<double>(count - 1));
  m_plot.SetYLimits(0.0, static_cast<double>(highest));
  using mirel::draw::SaturateToInt;
  m_plot.DrawAnnotations(adapter, SaturateToInt(x), SaturateToInt(y), SaturateToInt(width), SaturateToInt(height),
                         "Value", "Count");
  const int base = m_plot.GetBaseline();
  for (unsigned int i = 0; i < count; ++i) {
    const long long first = m_plot.XView(i);
    const long long next = std::max<long long>(m_plot.XView(static_cast<double>(i) + 1.0), first + 1);
    const int top = m_plot.YView(m_pData[i]);
    for (long long col = first; col < next; ++col)
      adapter->DrawLine(static_cast<int>(col), base, static_cast<int>(col), top, Corvane::CurrentColor);
  }
}
