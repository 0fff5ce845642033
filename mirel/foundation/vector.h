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
// "EVector::operator[]" and returns a reference to a dummy record, one per
// thread, so that threads that index out of range do not share it.
//
// Virtual operations, in order: the destructor, Serialize.
//
// The vector file. Save writes one vector to a file: a 4-byte header (the
// byte 0x45, the record's type code, the format version 1, and the
// exclusive-or of those three bytes), the element count as 4 bytes and the
// records exactly as they lie in memory, all little-endian, with no padding
// and no end marker. Load accepts only a file whose header is the one of its
// own record type and version; any other header gives 1105 and leaves the
// vector unchanged. Only the record types of mirel/vector/records.h have a
// type code; Save and Load of any other element type fail with 1105 and
// touch no file. Codes: 1102 open, 1103 read, 1104 write, 1105 header,
// 1106 close, 1303 memory. Labels: "EVector::Save", "EVector::Load", and
// "EVector::Save ( Unicode)", "EVector::Load ( Unicode)" for the forms that
// take a path of 16-bit characters (UTF-16; converted to UTF-8 on POSIX).
//
// Reading a body. The count is read first; the vector is emptied and filled
// one record at a time, its storage growing as records arrive (16 MiB at
// once, then doubling; 1303 when that fails), and reading stops at the first
// short read (1103) with the records read so far. A count whose records
// would pass both the end of the file and 16 MiB is refused at once with
// 1103 and the vector is left unchanged. So a damaged or hostile file, or a
// pipe that ends early, never makes the library reserve more than it read.
#ifndef MIREL_FOUNDATION_VECTOR_H_
#define MIREL_FOUNDATION_VECTOR_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/pixel.h"

namespace mirel {
namespace detail {

// Slot of a record type in the vector file format table; -1 for types that
// have no file format. Each record type with a format names its slot next
// to its definition.
template <class T>
struct VectorFileSlot {
  static constexpr int value = -1;
};

// Fills the 4-byte file header of a slot from the format table; false when
// the slot has no format.
MIREL_API bool VectorFileHeader(int slot, unsigned char header[4]);
// fopen of a narrow path, and of a path of 16-bit characters (UTF-16, turned
// into UTF-8 on POSIX). Null on failure, also for a null or malformed path.
MIREL_API std::FILE* OpenVectorFile(const char* path, const char* mode);
MIREL_API std::FILE* OpenVectorFile(const unsigned short* path, const char* mode);
// Bytes from the position of `file` to its end; -1 when that cannot be
// known (a pipe, a terminal). The position is kept.
MIREL_API long long RemainingFileBytes(std::FILE* file);

// Above this many bytes a count read from a file is trusted only when the
// file is long enough to hold its records.
constexpr unsigned long long kVectorFileEagerBytes = 16ull << 20;

}  // namespace detail
}  // namespace mirel

template <class T>
class MIREL_TEMPLATE_API EVectorTemplate {
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
  //
  // A vector whose capacity is recorded without storage (EPeaksVector's
  // counted constructor) gets its storage here when asked for that capacity.
  void SetMaxElements(unsigned int n, int keep) {
    if (n == m_un32MaxElements && (m_pData != nullptr || n == 0)) return;
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
    if (n <= m_un32MaxElements && (m_pData != nullptr || n == 0)) {
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
    if (i < 0 || !Holds(static_cast<unsigned int>(i))) {
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
    if (i < 0 || !Holds(static_cast<unsigned int>(i))) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::SetElement");
      if (i < 0 || static_cast<unsigned int>(i) >= m_un32MaxElements || m_pData == nullptr) return;
    }
    m_pData[i] = element;
  }

  T& operator[](unsigned int i) const {
    if (!Holds(i)) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::operator[]");
      return Dummy();
    }
    return m_pData[i];
  }

  // Closes the gap at i, keeping the order.
  void RemoveElement(unsigned int i) {
    if (!Holds(i)) {
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
  // whether a belongs above b. The item goes to position 0 even when the
  // count is 0, as long as there is storage; a vector with no storage at
  // all reports 1011 ("EVector::Sift") and is left alone. The item may be
  // one of the vector's own records (its top, say): it is copied before any
  // record moves.
  void Sift(const T& item, int (*above)(const T&, const T&)) {
    if (m_pData == nullptr) {
      ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
      ETraceError("EVector::Sift");
      return;
    }
    const T held = item;
    unsigned int p = 0;
    for (;;) {
      unsigned int child = 2 * p + 1;
      if (child + 1 < m_un32NumElements && above(m_pData[child + 1], m_pData[child]) != 0) ++child;
      if (child >= m_un32NumElements) break;
      if (above(m_pData[child], held) == 0) break;
      m_pData[p] = m_pData[child];
      p = child;
    }
    m_pData[p] = held;
  }

  // Writes (write non-zero) or reads the count and the records at the
  // file's position. The version is handed down and not used. Reports
  // through the error state (1103, 1104, 1303) and traces nothing of its own.
  virtual void Serialize(std::FILE* file, int write, unsigned int version) {
    (void)version;
    if (file == nullptr) {
      ESetError(write != 0 ? E_ERROR_FILE_WRITE : E_ERROR_FILE_READ);
      return;
    }
    if (write != 0) {
      if (m_pData == nullptr && m_un32NumElements != 0) {  // a count left without storage
        ESetError(E_ERROR_FILE_WRITE);
        return;
      }
      const unsigned char count[4] = {
          static_cast<unsigned char>(m_un32NumElements), static_cast<unsigned char>(m_un32NumElements >> 8),
          static_cast<unsigned char>(m_un32NumElements >> 16), static_cast<unsigned char>(m_un32NumElements >> 24)};
      if (std::fwrite(count, 1, 4, file) != 4) {
        ESetError(E_ERROR_FILE_WRITE);
        return;
      }
      for (unsigned int i = 0; i < m_un32NumElements; ++i) {
        if (std::fwrite(m_pData + i, sizeof(T), 1, file) != 1) {
          ESetError(E_ERROR_FILE_WRITE);
          return;
        }
      }
      return;
    }
    unsigned char bytes[4];
    if (std::fread(bytes, 1, 4, file) != 4) {
      ESetError(E_ERROR_FILE_READ);
      return;
    }
    const unsigned int count = static_cast<unsigned int>(bytes[0]) | (static_cast<unsigned int>(bytes[1]) << 8) |
                               (static_cast<unsigned int>(bytes[2]) << 16) |
                               (static_cast<unsigned int>(bytes[3]) << 24);
    const unsigned long long need = static_cast<unsigned long long>(count) * sizeof(T);
    if (need > mirel::detail::kVectorFileEagerBytes) {
      const long long remaining = mirel::detail::RemainingFileBytes(file);
      if (remaining >= 0 && need > static_cast<unsigned long long>(remaining)) {
        ESetError(E_ERROR_FILE_READ);
        return;
      }
    }
    // Storage follows the records that arrive: up to 16 MiB at once, then
    // doubling, so a stream whose size cannot be measured (a pipe) and that
    // ends early costs what it held, not what its count claimed.
    SetNumElements(0);
    const unsigned long long eager = mirel::detail::kVectorFileEagerBytes / sizeof(T);
    SetMaxElements(static_cast<unsigned int>(count < eager ? count : eager), 1);
    if (EGetError() != E_OK) return;
    for (unsigned int i = 0; i < count; ++i) {
      if (i >= m_un32MaxElements || m_pData == nullptr) {
        const unsigned long long grown = 2ull * m_un32MaxElements;
        SetMaxElements(static_cast<unsigned int>(grown < count ? (grown > i ? grown : i + 1ull) : count), 1);
        if (EGetError() != E_OK) return;
      }
      if (std::fread(m_pData + i, sizeof(T), 1, file) != 1) {
        ESetError(E_ERROR_FILE_READ);
        return;
      }
      m_un32NumElements = i + 1;
    }
  }

  void Save(const char* path) {
    SaveWith([path](const char* mode) { return mirel::detail::OpenVectorFile(path, mode); }, "EVector::Save");
  }
  void Save(const unsigned short* path) {
    SaveWith([path](const char* mode) { return mirel::detail::OpenVectorFile(path, mode); },
             "EVector::Save ( Unicode)");
  }
  void Load(const char* path) {
    LoadWith([path](const char* mode) { return mirel::detail::OpenVectorFile(path, mode); }, "EVector::Load");
  }
  void Load(const unsigned short* path) {
    LoadWith([path](const char* mode) { return mirel::detail::OpenVectorFile(path, mode); },
             "EVector::Load ( Unicode)");
  }

 protected:
  // Index i names a stored element. Also false for the count that a failed
  // counted constructor leaves without storage.
  bool Holds(unsigned int i) const { return i < m_un32NumElements && m_pData != nullptr; }
  static T* Allocate(unsigned int n) {
    if (static_cast<std::size_t>(n) > static_cast<std::size_t>(-1) / sizeof(T)) return nullptr;
    return static_cast<T*>(std::malloc(static_cast<std::size_t>(n) * sizeof(T)));
  }
  static T& Dummy() {
    thread_local T dummy;
    return dummy;
  }

  unsigned int m_un32Reserved[2] = {0, 0};
  unsigned int m_un32NumElements = 0;
  unsigned int m_un32MaxElements = 0;
  T* m_pData = nullptr;

 private:
  // The common case, room in the storage, is inlined into a caller's loop at
  // any optimisation level; growing is kept out of line. (Out of line at -O2,
  // a contour walk paid a store-forwarding stall on every point it added.)
  void Append(const T& element, const char* label) {
    if (m_un32NumElements < m_un32MaxElements && m_pData != nullptr) {
      m_pData[m_un32NumElements++] = element;
      return;
    }
    AppendGrowing(element, label);
  }

  // The element is copied first: it may be one of this vector's own, which
  // growing moves.
  MIREL_NOINLINE void AppendGrowing(const T& element, const char* label) {
    const T held = element;
    unsigned int grown;
    if (m_pData == nullptr && m_un32MaxElements > m_un32NumElements) {
      grown = m_un32MaxElements;  // capacity recorded, storage not made yet
    } else {
      grown = m_un32MaxElements == 0 ? 1 : m_un32MaxElements * 2;
      // A count above the capacity is left by a failed counted constructor.
      while (grown != 0 && grown <= m_un32NumElements) grown *= 2;
    }
    if (grown == 0 || grown <= m_un32NumElements) {  // the capacity cannot double any more
      ESetError(E_ERROR_OUT_OF_MEMORY);
      ETraceError(label);
      return;
    }
    SetMaxElements(grown, 1);
    if (m_un32MaxElements != grown || m_pData == nullptr) {
      ETraceError(label);
      return;
    }
    m_pData[m_un32NumElements++] = held;
  }

  template <class Open>
  void SaveWith(Open open, const char* label) {
    EOk();
    unsigned char header[4];
    if (!mirel::detail::VectorFileHeader(mirel::detail::VectorFileSlot<T>::value, header)) {
      ESetError(E_ERROR_VECTOR_FILE_HEADER);
      ETraceError(label);
      return;
    }
    std::FILE* file = open("wb");
    if (file == nullptr) {
      ESetError(E_ERROR_FILE_OPEN);
      ETraceError(label);
      return;
    }
    if (std::fwrite(header, 1, 4, file) != 4) {
      ESetError(E_ERROR_FILE_WRITE);
    } else {
      EOk();
      Serialize(file, 1, header[2]);
    }
    Close(file, label);
  }

  template <class Open>
  void LoadWith(Open open, const char* label) {
    EOk();
    unsigned char expected[4];
    if (!mirel::detail::VectorFileHeader(mirel::detail::VectorFileSlot<T>::value, expected)) {
      ESetError(E_ERROR_VECTOR_FILE_HEADER);
      ETraceError(label);
      return;
    }
    std::FILE* file = open("rb");
    if (file == nullptr) {
      ESetError(E_ERROR_FILE_OPEN);
      ETraceError(label);
      return;
    }
    unsigned char found[4];
    if (std::fread(found, 1, 4, file) != 4) {
      ESetError(E_ERROR_FILE_READ);
    } else if (std::memcmp(found, expected, 4) != 0) {
      ESetError(E_ERROR_VECTOR_FILE_HEADER);
    } else {
      EOk();
      Serialize(file, 0, expected[2]);
    }
    Close(file, label);
  }

  // Closes once on every path: fclose releases the stream even when it
  // reports a failure, which is 1106 when nothing failed before.
  static void Close(std::FILE* file, const char* label) {
    const bool failed = EGetError() != E_OK;
    if (std::fclose(file) != 0 && !failed) ESetError(E_ERROR_FILE_CLOSE);
    if (EGetError() != E_OK) ETraceError(label);
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
    if (target->m_un32MaxElements < source->m_un32NumElements ||
        (target->m_pData == nullptr && source->m_un32NumElements != 0))
      return target;  // allocation failed
    target->m_un32NumElements = source->m_un32NumElements;
    if (source->m_un32NumElements != 0)
      std::memcpy(static_cast<void*>(target->m_pData), source->m_pData,
                  static_cast<std::size_t>(source->m_un32NumElements) * sizeof(T));
    return target;
  }
};

// Pixel vectors with an unsigned flag that the library only carries.
template <class T>
class MIREL_TEMPLATE_API EFlaggedPixelVector : public EVectorTemplate<T> {
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
