// Multi-level threshold selection: the populated range of a 256-bin
// histogram cut into n contiguous classes so that the sum of squared
// differences of each pixel from its class mean is smallest.
//
// The search is dynamic programming over tables of every bin interval
// [a, b]: its count, its sum of i * h[i] and its score Sum * Sum / Count (-1
// for an empty interval), all in single precision. D[a][j] is the largest
// total of scores when bins a..hi are cut into j + 1 classes, and the first
// bin of the second class is kept beside it. A candidate is taken only when
// it is strictly above the best so far (which starts at 0), so of equal
// totals the one whose next class starts first wins, at every level. A
// class with no pixel is never chosen: n classes need n populated bins.
//
// Each class is reported as an ERegionDescriptor: its first and last bin,
// mean, population variance and pixel count. The result is the residue,
// sqrt((Q - best total) / N) with Q the sum of i * i * h[i] and N the pixel
// count: the root mean square difference of a pixel from its class mean.
//
// ImgMultiLevelsMinResidueThreshold (regions): one class is the whole
// populated range. Errors: 1613 not 256 bins or every bin 0; 1007 zero
// classes; 32767 no cut into that many classes; 1303 memory. On failure
// the result is -1.0, the label "ImgMultiLevelsMinResidueThreshold" is
// traced and the output is left as it was.
//
// ImgMultiLevelsMinResidueThreshold (thresholds) asks the region form for
// thresholds + 1 classes and replaces its output by the first bin of each
// class but the first: threshold i starts class i, read as pixel >= t. It
// reports through the region form's label and leaves its output as it was
// on failure.
//
// ImgAllMultiLevelsMinResidueThreshold fills the tables once for the
// greatest number of classes and gives one ELabelisationDescriptor (the
// regions and the residue) for each number of classes from 2 up to it, in
// that order, in place of what the output held. The result is the residue
// of the last. The greatest number must be at least 2 (else 1007); other
// errors as above, label "ImgAllMultiLevelsMinResidueThreshold".
//
// Vector<T> is a small growing array: data pointer, element count and
// capacity, storage from Talmeer_Malloc. A full vector grows by 32 elements.
// Indexing at or past the count throws Corvane::Talmeer::Exception(1011).
#ifndef MIREL_HISTOGRAM_MULTILEVEL_THRESHOLD_H_
#define MIREL_HISTOGRAM_MULTILEVEL_THRESHOLD_H_

#include <new>
#include <utility>

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/runtime.h"
#include "mirel/histogram/histogram_vector.h"

namespace Corvane {
namespace Talmeer {
namespace Utils {

template <class T>
class Vector {
 public:
  Vector() = default;
  // A copy holds copies of the elements; when its storage cannot be had it
  // is empty and 1303 is set.
  Vector(const Vector& other) {
    if (other.m_un32NumElements == 0) return;
    m_pData = static_cast<T*>(Talmeer_Malloc(sizeof(T) * other.m_un32NumElements));
    if (m_pData == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return;
    }
    m_un32MaxElements = other.m_un32NumElements;
    for (; m_un32NumElements < other.m_un32NumElements; ++m_un32NumElements)
      new (m_pData + m_un32NumElements) T(other.m_pData[m_un32NumElements]);
  }
  Vector(Vector&& other) noexcept { Swap(other); }
  Vector& operator=(Vector other) noexcept {
    Swap(other);
    return *this;
  }
  ~Vector() {
    Empty();
    Talmeer_Free(m_pData);
  }

  unsigned int GetNumElements() const { return m_un32NumElements; }
  unsigned int GetMaxElements() const { return m_un32MaxElements; }
  T* GetDataPtr() const { return m_pData; }

  T& operator[](unsigned int i) {
    if (i >= m_un32NumElements) throw Exception(E_ERROR_INDEX_OUT_OF_RANGE);
    return m_pData[i];
  }
  const T& operator[](unsigned int i) const {
    if (i >= m_un32NumElements) throw Exception(E_ERROR_INDEX_OUT_OF_RANGE);
    return m_pData[i];
  }

  // Appends, growing a full vector by 32 elements; false (and the vector as
  // it was) when that storage cannot be had.
  bool AddElement(T value) {
    if (m_un32NumElements == m_un32MaxElements) {
      const unsigned int room = m_un32MaxElements + 32;
      T* fresh = static_cast<T*>(Talmeer_Malloc(sizeof(T) * room));
      if (fresh == nullptr) return false;
      for (unsigned int i = 0; i < m_un32NumElements; ++i) {
        new (fresh + i) T(std::move(m_pData[i]));
        m_pData[i].~T();
      }
      Talmeer_Free(m_pData);
      m_pData = fresh;
      m_un32MaxElements = room;
    }
    new (m_pData + m_un32NumElements) T(std::move(value));
    ++m_un32NumElements;
    return true;
  }

  // Count to 0; the capacity stays.
  void Empty() {
    while (m_un32NumElements > 0) m_pData[--m_un32NumElements].~T();
  }

 private:
  void Swap(Vector& other) noexcept {
    std::swap(m_pData, other.m_pData);
    std::swap(m_un32NumElements, other.m_un32NumElements);
    std::swap(m_un32MaxElements, other.m_un32MaxElements);
  }

  T* m_pData = nullptr;
  unsigned int m_un32NumElements = 0;
  unsigned int m_un32MaxElements = 0;
};

}  // namespace Utils
}  // namespace Talmeer
}  // namespace Corvane

// One class of a multi-level threshold: bins m_un32FirstBin to
// m_un32LastBin inclusive.
struct ERegionDescriptor {
  unsigned int m_un32FirstBin;
  unsigned int m_un32LastBin;
  float m_f32Mean;
  float m_f32Variance;
  unsigned int m_un32PixelCount;
};
static_assert(sizeof(ERegionDescriptor) == 20, "ERegionDescriptor is 20 bytes");

// The classes of one cut and its residue.
struct ELabelisationDescriptor {
  Corvane::Talmeer::Utils::Vector<ERegionDescriptor> m_Regions;
  float m_f32Residue = 0.0f;
};

MIREL_API float ImgMultiLevelsMinResidueThreshold(const EBWHistogramVector* histogram, unsigned int classes,
                                                  Corvane::Talmeer::Utils::Vector<ERegionDescriptor>& regions);
MIREL_API float ImgMultiLevelsMinResidueThreshold(const EBWHistogramVector* histogram, unsigned int thresholds,
                                                  Corvane::Talmeer::Utils::Vector<EBW8>& thresholdValues);
MIREL_API float ImgAllMultiLevelsMinResidueThreshold(
    const EBWHistogramVector* histogram, unsigned int greatestClasses,
    Corvane::Talmeer::Utils::Vector<ELabelisationDescriptor>& levels);

#endif  // MIREL_HISTOGRAM_MULTILEVEL_THRESHOLD_H_
