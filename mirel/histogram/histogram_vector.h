// EBWHistogramVector: a histogram as a vector of 32-bit unsigned bin counts.
//
// The class does not fix the number of bins; the operations that fill and
// read it do: 256 bins for an 8-bit image, 65536 for the full 16-bit range,
// and a power of two in between for the bit-field histograms of 16 and 32-bit
// images (see histogram.h). Elements are stored contiguously and may be read
// through GetDataPtr() for GetNumElements() bins.
//
// EBWHistogramVector(n) reserves room for n bins and leaves the element count
// at 0: a filler sets the count. Clear() zeroes the current bins and keeps
// the count.
//
// Draw plots the bins through a Corvane::DrawAdapter in the rectangle
// (x, y, width, height), each truncated to an integer. The vector's plot
// (GetPlot) takes x limits 0 to count - 1 (1 when that is below 2) and y
// limits 0 to the largest bin (at least 1) and lays out its frame and the
// captions "Value" and "Count"; then each bin i fills the columns XView(i)
// up to XView(i + 1), at least one, with vertical lines in CurrentColor from
// the plot's baseline to YView(bin). After Draw the plot maps values to the
// drawing, for marks of the caller's own. A null adapter is 1007, label
// "EBWHistogramVector::Draw". The HDC form is for Windows only.
#ifndef MIREL_HISTOGRAM_HISTOGRAM_VECTOR_H_
#define MIREL_HISTOGRAM_HISTOGRAM_VECTOR_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/plot.h"
#include "mirel/foundation/vector.h"
#include "mirel/vector/draw/draw_forward.h"

class MIREL_API EBWHistogramVector : public EVectorTemplate<unsigned int> {
 public:
  EBWHistogramVector() = default;
  // Capacity n, count 0; 1303 in the error state when storage fails.
  explicit EBWHistogramVector(unsigned int n);
  ~EBWHistogramVector() override;

  // Writes zero to every current bin; the count stays.
  void Clear();

  // Shannon entropy, in bits, of the bins first..last (inclusive) taken as a
  // distribution of their own: -(sum h ln h / N - ln N) / ln 2 over the
  // non-zero bins, N their 32-bit sum; 0 when N is 0. `last` all ones means
  // through the final bin. Errors: first not below the count 1011, last not
  // below the count 1012; label "EBWHistogramVector::Entropy", result 0.
  float Entropy(unsigned int first = 0, unsigned int last = 0xFFFFFFFFu);

  void Draw(Corvane::DrawAdapter* adapter, float x, float y, float width, float height) const;
#if defined(_WIN32)
  void Draw(HDC hdc, float x, float y, float width, float height) const;
#endif
  // The plot of the last Draw.
  const EPlot& GetPlot() const { return m_plot; }

 private:
  // Drawing lays the plot out again each time; it is no part of the bins.
  mutable EPlot m_plot;
};

#endif  // MIREL_HISTOGRAM_HISTOGRAM_VECTOR_H_
