// Typed vectors: EVectorTemplate<T> and the named pixel vectors.
//
// EVectorTemplate<T> is the growing array of the library. Its fields, in
// order: the table of virtual operations, two reserved words (cleared by the
// constructors), the element count, the capacity and the pointer to the
// elements. Count and capacity are 32-bit unsigned; hot loops read the count
// and the pointer through the inline accessors.
//
// Capacity grows by doubling from 1 and new elements are never cleared,
// except by the counted constructor, which makes n zeroed elements.
// Out-of-range access reports and keeps going: operator[] sets 1011, traces
// "EVector::operator[]" and returns a reference to one shared dummy record.
#ifndef MIREL_FOUNDATION_VECTOR_H_
#define MIREL_FOUNDATION_VECTOR_H_

#include <cstdlib>
#include <cstring>
#include <new>

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/pixel.h"

template <class T>
class MIREL_API EVectorTemplate {
 public:
  EVectorTemplate() = default;
  // n zeroed elements, capacity n; 1303 if storage fails (pointer null, count n).
  explicit EVectorTemplate(unsigned int n) {
    m_un32NumElements = n;
    if (n == 0) return;
    m_pData = Allocate(n);
    if (m_pData == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      return;
    }
    std::memset(static_cast<void*>(m_pData), 0, static_cast<std::size_t>(n) * sizeof(T));
    m_un32MaxElements = n;
  }
  EVectorTemplate(const EVectorTemplate& other) { CopyInto(&other, this, true); }
  EVectorTemplate& operator=(const EVectorTemplate& other) {
    CopyInto(&other, this, false);
    return *this;
  }
  virtual ~EVectorTemplate() {
    std::free(m_pData);
    m_pData = nullptr;
  }

  unsigned int GetNumElements() const { return m_un32NumElements; }
  unsigned int GetMaxElements() const { return m_un32MaxElements; }
  T* GetDataPtr() const { return m_pData; }

  // Copies into `target`, or into a new bare EVectorTemplate<T> owned by the
  // caller when `target` is null (null if that cannot be made).
  EVectorTemplate* CopyTo(EVectorTemplate* target) const { return CopyInto(this, target, false); }

  // Sets the capacity to n records. With keep non-zero the first
  // min(count, n) records are kept; with keep zero the count becomes 0. On
  // allocation failure: 1303, label "EVector::SetMaxElements", no change.
  void SetMaxElements(unsigned int n, int keep) {
    if (n == m_un32MaxElements) return;
    T* fresh = nullptr;
    if (n != 0) {
      fresh = Allocate(n);
      if (fresh == nullptr) {
        ESetError(E_ERROR_OUT_OF_MEMORY);
        ETraceError("EVector::SetMaxElements");
        return;
      }
    }
    m_un32MaxElements = n;
    if (m_un32NumElements > n) m_un32NumElements = n;
    if (keep != 0) {
      if (m_un32NumElements != 0 && fresh != nullptr && m_pData != nullptr)
        std::memcpy(static_cast<void*>(fresh), m_pData, static_cast<std::size_t>(m_un32NumElements) * sizeof(T));
    } else {
      m_un32NumElements = 0;
    }
    std::free(m_pData);
    m_pData = fresh;
  }

  // Sets the count, growing the capacity to exactly n when needed. New
  // elements are not cleared. On failure the count stays and the label
  // "EVector::SetNumElements" is traced.
  void SetNumElements(unsigned int n) {
    if (n <= m_un32MaxElements) {
      m_un32NumElements = n;
      return;
    }
    EOk();
    SetMaxElements(n, 1);
    if (EGetError() != E_OK) {
      ETraceError("EVector::SetNumElements");
      return;
    }
    m_un32NumElements = n;
  }

  void Empty() { m_un32NumElements = 0; }

  void AddElement(T element) { Append(element, "EVector::AddElement"); }
  void AddElementByRef(const T& element) { Append(element, "EVector::AddElementByRef"); }

  // By value; a zeroed record and 1011 when i is out of range.
  T GetElement(int i) const {
    if (i < 0 || static_cast<unsigned int>(i) >= m_un32NumElements) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::GetElement");
      T zero;
      std::memset(static_cast<void*>(&zero), 0, sizeof(T));
      return zero;
    }
    return m_pData[i];
  }

  // Sets 1011 when i is out of range; the record is still written when i
  // lies inside the allocated storage, and dropped otherwise.
  void SetElement(int i, T element) {
    if (i < 0 || static_cast<unsigned int>(i) >= m_un32NumElements) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::SetElement");
      if (i < 0 || static_cast<unsigned int>(i) >= m_un32MaxElements) return;
    }
    m_pData[i] = element;
  }

  T& operator[](unsigned int i) const {
    if (i >= m_un32NumElements) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::operator[]");
      return Dummy();
    }
    return m_pData[i];
  }

  // Closes the gap at i, keeping the order.
  void RemoveElement(unsigned int i) {
    if (i >= m_un32NumElements) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::RemoveElement");
      return;
    }
    std::memmove(static_cast<void*>(m_pData + i), m_pData + i + 1,
                 static_cast<std::size_t>(m_un32NumElements - i - 1) * sizeof(T));
    --m_un32NumElements;
  }

  // Sift-down of a binary heap rooted at element 0: stores `item` at the top
  // and moves it down while a child belongs above it. `above(a, b)` answers
  // whether a belongs above b. The vector must have storage for element 0.
  void Sift(const T& item, int (*above)(const T&, const T&)) {
    unsigned int p = 0;
    for (;;) {
      unsigned int child = 2 * p + 1;
      if (child + 1 < m_un32NumElements && above(m_pData[child + 1], m_pData[child]) != 0) ++child;
      if (child >= m_un32NumElements) break;
      if (above(m_pData[child], item) == 0) break;
      m_pData[p] = m_pData[child];
      p = child;
    }
    m_pData[p] = item;
  }

 protected:
  static T* Allocate(unsigned int n) {
    if (static_cast<std::size_t>(n) > static_cast<std::size_t>(-1) / sizeof(T)) return nullptr;
    return static_cast<T*>(std::malloc(static_cast<std::size_t>(n) * sizeof(T)));
  }
  static T& Dummy() {
    static T dummy;
    return dummy;
  }

  unsigned int m_un32Reserved[2] = {0, 0};
  unsigned int m_un32NumElements = 0;
  unsigned int m_un32MaxElements = 0;
  T* m_pData = nullptr;

 private:
  void Append(const T& element, const char* label) {
    if (m_un32NumElements == m_un32MaxElements) {
      const unsigned int grown = m_un32MaxElements == 0 ? 1 : m_un32MaxElements * 2;
      if (grown <= m_un32MaxElements) {  // the capacity cannot double any more
        ESetError(E_ERROR_OUT_OF_MEMORY);
        ETraceError(label);
        return;
      }
      EOk();
      SetMaxElements(grown, 1);
      if (EGetError() != E_OK) {
        ETraceError(label);
        return;
      }
    }
    m_pData[m_un32NumElements++] = element;
  }

  static EVectorTemplate* CopyInto(const EVectorTemplate* source, EVectorTemplate* target, bool raw) {
    if (source == target) return target;
    if (target == nullptr) {
      target = new (std::nothrow) EVectorTemplate();
      if (target == nullptr) target = new (std::nothrow) EVectorTemplate();
      if (target == nullptr) return nullptr;
    }
    if (raw) {
      target->m_un32NumElements = 0;
      target->m_un32MaxElements = 0;
      target->m_pData = nullptr;
    }
    target->SetMaxElements(source->m_un32NumElements, 0);
    if (target->m_un32MaxElements < source->m_un32NumElements) return target;  // allocation failed
    target->m_un32NumElements = source->m_un32NumElements;
    if (source->m_un32NumElements != 0)
      std::memcpy(static_cast<void*>(target->m_pData), source->m_pData,
                  static_cast<std::size_t>(source->m_un32NumElements) * sizeof(T));
    return target;
  }
};

// Pixel vectors with an unsigned flag that the library only carries.
template <class T>
class MIREL_API EFlaggedPixelVector : public EVectorTemplate<T> {
 public:
  explicit EFlaggedPixelVector(unsigned int n = 0, int flag = 1) : EVectorTemplate<T>(n), unsigned_(flag) {}
  int GetUnsigned() const { return unsigned_; }
  void SetUnsigned(int flag) { unsigned_ = flag; }

 private:
  int unsigned_;
};

class MIREL_API EBW8Vector : public EFlaggedPixelVector<EBW8> {
 public:
  explicit EBW8Vector(unsigned int n = 0, int flag = 1) : EFlaggedPixelVector<EBW8>(n, flag) {}
};

class MIREL_API EBW16Vector : public EFlaggedPixelVector<EBW16> {
 public:
  explicit EBW16Vector(unsigned int n = 0, int flag = 1) : EFlaggedPixelVector<EBW16>(n, flag) {}
};

class MIREL_API EBW32Vector : public EFlaggedPixelVector<EBW32> {
 public:
  explicit EBW32Vector(unsigned int n = 0, int flag = 1) : EFlaggedPixelVector<EBW32>(n, flag) {}
};

class MIREL_API EC24Vector : public EVectorTemplate<EC24> {
 public:
  explicit EC24Vector(unsigned int n = 0) : EVectorTemplate<EC24>(n) {}
};

class MIREL_API EINT32Vector : public EVectorTemplate<int> {
 public:
  explicit EINT32Vector(unsigned int n = 0) : EVectorTemplate<int>(n) {}
};

class MIREL_API EStatistics : public EVectorTemplate<float> {
 public:
  explicit EStatistics(unsigned int n = 0) : EVectorTemplate<float>(n) {}
  unsigned int Count() const { return GetNumElements(); }
};

namespace Corvane {
class MIREL_API GenericRoiExtentBroadcastingVector : public EVectorTemplate<int> {
 public:
  explicit GenericRoiExtentBroadcastingVector(int n = 0)
      : EVectorTemplate<int>(static_cast<unsigned int>(n < 0 ? 0 : n)) {}
};
}  // namespace Corvane

#endif  // MIREL_FOUNDATION_VECTOR_H_
