#include "mirel/histogram/histogram_vector.h"

#include <cmath>
#include <cstring>

#include "mirel/foundation/frame_internal.h"

EBWHistogramVector::EBWHistogramVector(unsigned int n) { SetMaxElements(n, 1); }

EBWHistogramVector::~EBWHistogramVector() = default;

void EBWHistogramVector::Clear() {
  if (m_un32NumElements != 0 && m_pData != nullptr)
    std::memset(m_pData, 0, static_cast<std::size_t>(m_un32NumElements) * sizeof(unsigned int));
}

float EBWHistogramVector::Entropy(unsigned int first, unsigned int last) {
  mirel::Frame frame("EBWHistogramVector::Entropy");
  const unsigned int count = m_un32NumElements;
  if (!frame.Require(first < count, E_ERROR_INDEX_OUT_OF_RANGE)) return 0.0f;
  if (last == 0xFFFFFFFFu) last = count - 1;
  if (!frame.Require(last < count, E_ERROR_BAD_RANGE)) return 0.0f;
  double a = 0.0;
  unsigned int n = 0;  // 32-bit sum, wraps like every sum of bins
  for (unsigned int i = first; i <= last && i >= first; ++i) {
    const unsigned int h = m_pData[i];
    if (h == 0) continue;
    a += static_cast<double>(h) * std::log(static_cast<double>(h));
    n += h;
  }
  if (n == 0) return 0.0f;
  const double nn = static_cast<double>(n);
  return static_cast<float>((a / nn - std::log(nn)) * (-1.0 / std::log(2.0)));
}
