#include "mirel/vector/untyped_ops.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "mirel/foundation/armed_frame_internal.h"
#include "mirel/vector/line_walk_internal.h"

namespace {

using mirel::ArmedFrame;

constexpr int kGrowBytes = 24576;

bool KnownSize(int dataSize) {
  return dataSize == E_VECTOR_DATA_8BIT || dataSize == E_VECTOR_DATA_16BIT || dataSize == E_VECTOR_DATA_32BIT;
}
bool KnownType(int dataType) { return dataType == E_VECTOR_DATA_UNSIGNED || dataType == E_VECTOR_DATA_SIGNED; }

// Calls f(T()) with T the item type of a width code and data type that
// KnownSize and KnownType accept.
template <class F>
short WithItemType(int dataSize, int dataType, F f) {
  const bool sign = dataType == E_VECTOR_DATA_SIGNED;
  switch (dataSize) {
    case E_VECTOR_DATA_8BIT: return sign ? f(std::int8_t()) : f(std::uint8_t());
    case E_VECTOR_DATA_16BIT: return sign ? f(std::int16_t()) : f(std::uint16_t());
    default: return sign ? f(std::int32_t()) : f(std::uint32_t());
  }
}

// Item i of a block of items of type T, widened.
template <class T>
long long ItemAt(const void* data, long long i) {
  T v;
  std::memcpy(&v, static_cast<const unsigned char*>(data) + i * static_cast<long long>(sizeof(T)), sizeof(T));
  return v;
}

long long ItemAt(const EVector* v, long long i) {
  const bool sign = v->GetDataType() == E_VECTOR_DATA_SIGNED;
  switch (v->GetDataSize()) {
    case E_VECTOR_DATA_8BIT: return sign ? ItemAt<std::int8_t>(v->GetDataPtr(), i) : ItemAt<std::uint8_t>(v->GetDataPtr(), i);
    case E_VECTOR_DATA_16BIT:
      return sign ? ItemAt<std::int16_t>(v->GetDataPtr(), i) : ItemAt<std::uint16_t>(v->GetDataPtr(), i);
    default: return sign ? ItemAt<std::int32_t>(v->GetDataPtr(), i) : ItemAt<std::uint32_t>(v->GetDataPtr(), i);
  }
}

// Groups of three 32-bit items: kinds 1, 4 and 5 as SetType makes them.
bool ThreeWordGroups(const EVector* v, int kind) {
  return v->IsSameVectType(kind) != 0 && v->GetGroupLength() == 3 && v->GetDataSize() == E_VECTOR_DATA_32BIT;
}

std::int32_t* Words(EVector* v) { return static_cast<std::int32_t*>(v->GetDataPtr()); }
const std::int32_t* Words(const EVector* v) { return static_cast<const std::int32_t*>(v->GetDataPtr()); }

// ---------------------------------------------------------------- extremes

short Extremes(const EVector* src, EVector* dst, long long high, long long low, int dataType) {
  ArmedFrame frame("ImgGetVectExtremes");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src != nullptr && dst != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_TYPE, src->GetNbGroup() >= 1);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_GROUP, KnownSize(src->GetDataSize()));
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_DATA_TYPE, src->GetDataType() == dataType);
  if (!ThreeWordGroups(dst, 5)) {
    if (dst->SetType(5, 0, 0) != 0) return frame.Fail();
    dst->SetUse(6);
  }
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src->GetDataPtr() != nullptr && dst->GetDataPtr() != nullptr);

  const int length = src->GetGroupLength();
  int capacity = dst->GetAllocatedSize() / 4 / 3;
  std::int32_t* out = Words(dst);
  int groups = 0;
  // An extreme found with no room left: the room grows and writing goes on
  // at the old room in groups times 4 bytes (not 12) from the start.
  const auto emit = [&](int position, int size, long long area) {
    if (groups == capacity) {
      const long long grown = static_cast<long long>(dst->GetAllocatedSize()) + kGrowBytes;
      if (grown > INT_MAX || dst->Reallocate(static_cast<int>(grown)) != 0) {
        if (grown > INT_MAX) ESetError(E_ERROR_OUT_OF_MEMORY);
        dst->SetNbGroup(capacity);
        return false;
      }
      out = Words(dst) + capacity;
      capacity = dst->GetAllocatedSize() / 4 / 3;
    }
    out[0] = position;
    out[1] = size;
    out[2] = static_cast<std::int32_t>(area);
    out += 3;
    ++groups;
    return true;
  };

  int read = 0;  // items read so far
  long long v = 0;
  bool again = false;  // v is the item that closed the last extreme
  for (;;) {
    if (!again) {
      if (read >= length) break;
      v = ItemAt(src, read++);
    }
    again = false;
    if (!(v > high || v < low)) continue;
    if (v <= low && v >= high) continue;  // crossed levels open nothing
    const bool valley = v <= low;
    const int start = read;
    long long area = 0;
    do {
      area += v - (valley ? high : low);
      if (read < length) v = ItemAt(src, read);
      ++read;
    } while ((valley ? v < high : v > low) && read <= length);
    if (!emit(((start + read - 1) >> 1) - 1, read - start, area)) return frame.Fail();
    if (read > length) break;
    again = true;
  }
  dst->SetNbGroup(groups);
  return frame.Done();
}

// ---------------------------------------------------------------- transitions

short Transitions(const EVector* src, EVector* dst, long long level, int dataType) {
  ArmedFrame frame("ImgGetVectTransition");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src != nullptr && dst != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_TYPE, src->GetNbGroup() >= 1);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_GROUP, KnownSize(src->GetDataSize()));
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_DATA_TYPE, src->GetDataType() == dataType);
  const int length = src->GetGroupLength();
  const int dataSize = src->GetDataSize();
  const int capacity = dst->GetAllocatedSize() > 0 ? dst->GetAllocatedSize() / 8 : (length / 2) / 8;
  if (dst->SetStructure(E_VECTOR_DATA_32BIT, capacity, 2, E_VECTOR_DATA_SIGNED) != 0) return frame.Fail();
  dst->SetUse(7);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src->GetDataPtr() != nullptr && dst->GetDataPtr() != nullptr);
  frame.Arm(E_ERROR_VECTOR_NO_TRANSITION);
  std::int32_t* out = Words(dst);
  int count = 0;
  return WithItemType(dataSize, dataType, [&](auto item) -> short {
    using T = decltype(item);
    const void* data = src->GetDataPtr();
    for (int j = 0; j + 1 < length; ++j) {
      const long long a = ItemAt<T>(data, j), b = ItemAt<T>(data, j + 1);
      if ((a <= level && b > level) || (a > level && b <= level)) {
        if (count == capacity) return frame.Fail();
        out[2 * count] = j;
        out[2 * count + 1] = static_cast<std::int32_t>(b - a);
        ++count;
      }
    }
    dst->SetNbGroup(count);
    return frame.Done();
  });
}

// ---------------------------------------------------------------- arithmetic with a constant

// Item type limits, widened.
template <class T>
constexpr long long kMax = static_cast<long long>(std::numeric_limits<T>::max());
template <class T>
constexpr long long kMin = static_cast<long long>(std::numeric_limits<T>::min());
template <class T>
constexpr int kBits = static_cast<int>(8 * sizeof(T));

// Narrows a wide result to the item type, keeping its low bits.
template <class T>
T Low(long long v) {
  return static_cast<T>(static_cast<std::make_unsigned_t<T>>(static_cast<unsigned long long>(v)));
}

// The saturation at the maximum of 8 and 16-bit items; on unsigned 8-bit
// items the comparison is made on the result as a signed 16-bit number.
template <class T>
T SaturateHigh(long long v) {
  if (std::is_same<T, std::uint8_t>::value) {
    const std::int16_t s = static_cast<std::int16_t>(Low<std::uint16_t>(v));
    return s > 255 ? T(255) : Low<T>(s);
  }
  return Low<T>(v > kMax<T> ? kMax<T> : v);
}

// out[i] = f(in[i]) for n items.
template <class T, class F>
void Map(const T* in, T* out, long long n, F f) {
  for (long long i = 0; i < n; ++i) out[i] = f(static_cast<long long>(in[i]));
}

// One of the six workers: 0, or the code of an operation it refuses or of a
// division by 0.
template <class T>
E_ERRORS Combine(int op, const T* in, T* out, long long n, T constant) {
  constexpr bool kWide = sizeof(T) == 4;
  long long b = constant;
  if (op == ALO_SHIFT_LEFT || op == ALO_SHIFT_RIGHT) {
    const unsigned long long count = b < 0 ? ULLONG_MAX : static_cast<unsigned long long>(b);
    if (count > static_cast<unsigned long long>(kBits<T>)) {
      // Past the width: every non-zero item to the maximum, or all to 0.
      op = op == ALO_SHIFT_LEFT ? ALO_SET_WHERE_NONZERO : 35;
      b = op == ALO_SET_WHERE_NONZERO ? kMax<T> : 0;
    }
  }
  switch (op) {
    case ALO_COPY: Map(in, out, n, [](long long a) { return Low<T>(a); }); break;
    case ALO_INVERT: Map(in, out, n, [](long long a) { return Low<T>(~a); }); break;
    case ALO_ADD:
      Map(in, out, n, [b](long long a) { return kWide ? Low<T>(a + b) : SaturateHigh<T>(a + b); });
      break;
    case ALO_SUBTRACT:
      Map(in, out, n, [b](long long a) { return kWide ? Low<T>(a - b) : Low<T>(a - b < kMin<T> ? kMin<T> : a - b); });
      break;
    case ALO_MULTIPLY:
      Map(in, out, n, [b](long long a) {
        const long long p = static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
        return kWide ? Low<T>(p) : SaturateHigh<T>(p);
      });
      break;
    case ALO_DIVIDE:
    case ALO_MODULO:
      if (b == 0) {
        std::memset(static_cast<void*>(out), 0xFF, static_cast<std::size_t>(n) * sizeof(T));
        return E_ERROR_BAD_LAST_INDEX;
      }
      if (op == ALO_DIVIDE) Map(in, out, n, [b](long long a) { return Low<T>(a / b); });
      else Map(in, out, n, [b](long long a) { return Low<T>(a % b); });
      break;
    case ALO_SHIFT_LEFT:
      // Counts up to the width here; a 32-bit item shifted by 32 is 0.
      Map(in, out, n, [b](long long a) {
        const long long s = b >= 64 ? 0 : static_cast<long long>(static_cast<unsigned long long>(a) << b);
        return kWide ? Low<T>(s) : SaturateHigh<T>(s);
      });
      break;
    case ALO_SHIFT_RIGHT: Map(in, out, n, [b](long long a) { return Low<T>(a >> b); }); break;
    case ALO_AVERAGE:
      Map(in, out, n, [b](long long a) {
        // On 32-bit items the sum wraps before the shift.
        return kWide ? Low<T>(static_cast<long long>(Low<T>(a + b)) >> 1) : Low<T>((a + b) >> 1);
      });
      break;
    case ALO_BIT_AND: Map(in, out, n, [b](long long a) { return Low<T>(a & b); }); break;
    case ALO_BIT_OR: Map(in, out, n, [b](long long a) { return Low<T>(a | b); }); break;
    case ALO_BIT_XOR: Map(in, out, n, [b](long long a) { return Low<T>(a ^ b); }); break;
    case ALO_MIN: Map(in, out, n, [b](long long a) { return Low<T>(a < b ? a : b); }); break;
    case ALO_MAX: Map(in, out, n, [b](long long a) { return Low<T>(a > b ? a : b); }); break;
    case ALO_SET_WHERE_NONZERO: Map(in, out, n, [b](long long a) { return Low<T>(a != 0 ? b : 0); }); break;
    case 35: Map(in, out, n, [b](long long) { return Low<T>(b); }); break;
    default:
      // The unsigned 8-bit worker lets any other operation pass, doing nothing.
      return std::is_same<T, std::uint8_t>::value ? E_OK : E_ERROR_BAD_OPERATION;
  }
  return E_OK;
}

// ---------------------------------------------------------------- line helpers

// The pixel at (x, y) of the ROI, or 0 where the image has none.
int PixelOrZero(const EROI<EBW8>* roi, int x, int y) {
  return mirel::line::InsideImage(roi, x, y) ? roi->GetImagePtr(x, y)->value : 0;
}

// The value written for a group: below 255 as 255, otherwise its low byte.
void PutFloored(EROI<EBW8>* roi, int x, int y, std::int32_t value) {
  if (!mirel::line::InsideImage(roi, x, y)) return;
  roi->GetImagePtr(x, y)->value = value < 255 ? 255 : static_cast<unsigned char>(value);
}

// The four coordinates of a line within 0 to the width and height, the
// bounds included, under four consecutive codes from `first`.
short CheckLine(const ArmedFrame& frame, const EGenericROI* roi, int x0, int y0, int x1, int y1, int first) {
  const int w = roi->GetWidth(), h = roi->GetHeight();
  const int coords[4] = {x0, y0, x1, y1};
  for (int i = 0; i < 4; ++i) {
    const int bound = (i & 1) != 0 ? h : w;
    if (!frame.Check(static_cast<E_ERRORS>(first + i), coords[i] >= 0 && coords[i] <= bound)) return frame.Fail();
  }
  return 0;
}

// Makes `v` a vector of kind 4 with room for `groups` groups unless it is one.
bool PointGroups(EVector* v, int groups) {
  if (ThreeWordGroups(v, 4) && static_cast<long long>(v->GetAllocatedSize()) >= 12LL * groups) return true;
  return v->SetType(4, groups, 3) == 0;
}

}  // namespace

short ImgGetVectExtremes(const EVector* src, EVector* dst, int high, int low) {
  return Extremes(src, dst, high, low, E_VECTOR_DATA_SIGNED);
}
short ImgGetVectExtremes(const EVector* src, EVector* dst, unsigned int high, unsigned int low) {
  return Extremes(src, dst, high, low, E_VECTOR_DATA_UNSIGNED);
}

short ImgGetVectTransition(const EVector* src, EVector* dst, int level) {
  return Transitions(src, dst, level, E_VECTOR_DATA_SIGNED);
}
short ImgGetVectTransition(const EVector* src, EVector* dst, unsigned int level) {
  return Transitions(src, dst, level, E_VECTOR_DATA_UNSIGNED);
}

short ImgVect1c2(ARITH_LOGIC_OPERATIONS op, const EVector* src, int constant, EVector* dst, int first, int last) {
  ArmedFrame frame("ImgVect1c2");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src != nullptr && dst != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_DATA_TYPE, KnownType(src->GetDataType()));
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_GROUP, KnownSize(src->GetDataSize()));
  const int groups = src->GetNbGroup(), length = src->GetGroupLength();
  if (last == -1) last = groups - 1;
  // The range only gives the number of items, taken from the first item.
  const long long items = static_cast<long long>(last) - first + 1;
  if (!frame.Check(E_ERROR_VECTOR_TYPE, first >= 0 && first < groups) ||
      !frame.Check(E_ERROR_BAD_FIRST_INDEX, last >= first) ||
      !frame.Check(E_ERROR_VECTOR_TYPE, items <= static_cast<long long>(groups) * length)) {
    ETraceError("CheckGroups");
    return frame.Fail();
  }
  if (dst->SetStructure(src->GetDataSize(), groups, length, src->GetDataType()) != 0) return frame.Fail();
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, src->GetDataPtr() != nullptr && dst->GetDataPtr() != nullptr);
  const E_ERRORS code = static_cast<E_ERRORS>(WithItemType(src->GetDataSize(), src->GetDataType(), [&](auto item) {
    using T = decltype(item);
    return static_cast<short>(Combine<T>(op, static_cast<const T*>(src->GetDataPtr()),
                                         static_cast<T*>(dst->GetDataPtr()), items, static_cast<T>(constant)));
  }));
  return code != E_OK ? frame.Fail(code) : frame.Done();
}

short ImgVect1c2(ARITH_LOGIC_OPERATIONS, const EVector* src, double, EVector* dst) {
  ArmedFrame frame("ImgVect1c2");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src != nullptr && dst != nullptr);
  return frame.Fail(src->GetDataType() == E_VECTOR_DATA_FLOAT ? E_ERROR_VECTOR_GROUP : E_ERROR_VECTOR_DATA_TYPE);
}

short ImgVectDataShift(EVector* vector, int shift, int first, int last) {
  ArmedFrame frame("ImgVectDataShift");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector != nullptr);
  const int groups = vector->GetNbGroup();
  long long start = 0, count = groups;
  if (first == 0) {
    if (last != 0) count = last;
  } else if (last == 0) {
    start = first;
  } else {
    MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_TYPE,
                      static_cast<long long>(last) - first + 1 < groups && first < groups - 1 && last < groups - 1 &&
                          first > last);
    count = last;
  }
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector->GetDataPtr() != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_DATA_TYPE, KnownType(vector->GetDataType()));
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_GROUP, KnownSize(vector->GetDataSize()));
  // The groups worked on may pass those in use, never the room.
  const long long length = vector->GetGroupLength();
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_TYPE,
                    start >= 0 && count >= 0 &&
                        (start + count) * length * vector->GetItemBytes() <= vector->GetAllocatedSize());
  const long long amount = shift >= 0 ? static_cast<long long>(shift) % 32 : -static_cast<long long>(shift) % 32;
  const bool right = shift >= 0;
  WithItemType(vector->GetDataSize(), vector->GetDataType(), [&](auto item) -> short {
    using T = decltype(item);
    T* p = static_cast<T*>(vector->GetDataPtr()) + start * length;
    for (long long i = 0; i < count * length; ++i) {
      const long long a = p[i];
      // Right: arithmetic on signed items, logical on unsigned ones (a >= 0).
      p[i] = right ? Low<T>(a >> amount) : Low<T>(static_cast<long long>(static_cast<unsigned long long>(a) << amount));
    }
    return 0;
  });
  return frame.Done();
}

short ImgConvolVect(const EVector* src, EVector* dst, const EKernel* kernel, int first, int last) {
  ArmedFrame frame("ImgConvolVect");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, src != nullptr && dst != nullptr);
  const int groups = src->GetNbGroup();
  const long long length = src->GetGroupLength();
  if (last == -1) last = groups - 1;
  const int itemBytes = KnownSize(src->GetDataSize()) ? src->GetItemBytes() : 1;
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_CONVOLUTION,
                    first >= 0 && first < groups && first <= last &&
                        (static_cast<long long>(last) + 1) * length * itemBytes <= src->GetAllocatedSize() &&
                        static_cast<long long>(last) - first < INT_MAX);  // a group count dst can hold
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_GROUP, KnownSize(src->GetDataSize()));
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_DATA_TYPE, KnownType(src->GetDataType()));
  const int dataSize = src->GetDataSize(), dataType = src->GetDataType();
  if (dst->SetStructure(dataSize, last - first + 1, static_cast<int>(length), dataType) != 0) return frame.Fail();
  MIREL_ARMED_CHECK(frame, E_ERROR_KERNEL_SIZE, kernel == nullptr || kernel->SizeX == 3 || kernel->SizeY == 1);
  MIREL_ARMED_CHECK(frame, E_ERROR_KERNEL_VOID, kernel != nullptr && kernel->Data != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_KERNEL_TYPE, kernel->AllocatedSize >= 3);

  float k0 = kernel->Data[0], k1 = kernel->Data[1], k2 = kernel->Data[2];
  float gain = kernel->Gain;
  const float sum = k0 + k1 + k2;
  if (sum != 0.0f) gain = gain / sum;
  if (gain != 0.0f) {
    k0 = gain * k0;
    k1 = gain * k1;
    k2 = gain * k2;
  }
  const float outside = static_cast<float>(kernel->OutsideValue);
  const short rectifier = kernel->Rectifier;
  const long long offset = kernel->Offset;
  const long long room = src->GetAllocatedSize() / itemBytes;
  WithItemType(dataSize, dataType, [&](auto item) -> short {
    using T = decltype(item);
    const void* in = src->GetDataPtr();
    T* out = static_cast<T*>(dst->GetDataPtr());
    const auto at = [&](long long i) { return static_cast<float>(ItemAt<T>(in, i)); };
    long long o = 0;
    for (long long g = first; g <= last; ++g) {
      const long long base = g * length;
      for (long long j = 0; j < length; ++j) {
        float s;
        if (j == 0) {
          s = outside * k0 + at(base) * k1 + (length > 1 || base + 1 < room ? at(base + 1) : outside) * k2;
        } else if (j == length - 1) {
          // The right neighbour of the last item is the next group's first.
          s = at(base + j - 1) * k0 + at(base + j) * k1 + (base + j + 1 < room ? at(base + j + 1) : outside) * k2;
        } else {
          s = at(base + j - 1) * k0 + at(base + j) * k1 + outside * k2;
        }
        long long v = s != s ? 0 : s >= 4.0e18f ? 4000000000000000000LL : s <= -4.0e18f ? -4000000000000000000LL
                                                                                        : static_cast<long long>(s);
        switch (rectifier) {
          case 1: v = v > 0 ? 0 : -v; break;
          case 2: v = v < 0 ? 0 : v; break;
          case 3: v = v < 0 ? -v : v; break;
          default: break;
        }
        v += offset;
        out[o++] = static_cast<T>(v < kMin<T> ? kMin<T> : v > kMax<T> ? kMax<T> : v);
      }
    }
    return 0;
  });
  return frame.Done();
}

short ImgLineSegToVect(const EROI<EBW8>* roi, EVector* vector, int x0, int y0, int x1, int y1) {
  ArmedFrame frame("ImgLineSegToVect");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, roi != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector != nullptr);
  if (const short failed = CheckLine(frame, roi, x0, y0, x1, y1, E_ERROR_BAD_ARGUMENT_1)) return failed;
  const int count = mirel::line::PointCount(x0, y0, x1, y1);
  if (!PointGroups(vector, count)) return frame.Fail();
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector->GetDataPtr() != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, roi->Void() == 0);
  std::int32_t* out = Words(vector);
  mirel::line::Walk(x0, y0, x1, y1, 0, 0, [&](int k, int x, int y, std::ptrdiff_t) {
    out[3 * k] = PixelOrZero(roi, x, y);
    out[3 * k + 1] = x;
    out[3 * k + 2] = y;
    return true;
  });
  vector->SetNbGroup(count);
  return frame.Done();
}

short ImgVectToLineSeg(const EVector* vector, EROI<EBW8>* roi) {
  ArmedFrame frame("ImgVectToLineSeg");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, roi != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_LENGTH, vector->GetUse() == 5 && ThreeWordGroups(vector, 4));
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector->GetDataPtr() != nullptr);
  const std::int32_t* g = Words(vector);
  const int groups = vector->GetNbGroup();
  const int w = roi->GetWidth(), h = roi->GetHeight();
  const auto inside = [&](int i) { return g[3 * i + 1] >= 0 && g[3 * i + 1] <= w && g[3 * i + 2] >= 0 && g[3 * i + 2] <= h; };
  MIREL_ARMED_CHECK(frame, E_ERROR_BAD_ARGUMENT, groups == 0 || (inside(0) && inside(groups - 1)));
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, roi->Void() == 0);
  // The row follows the groups one row at a time.
  int row = groups > 0 ? g[2] : 0;
  for (int i = 0; i < groups; ++i) {
    const int y = g[3 * i + 2];
    row += y > row ? 1 : y < row ? -1 : 0;
    PutFloored(roi, g[3 * i + 1], row, g[3 * i]);
  }
  return frame.Done();
}

short ImgVectToLineSeg(const EVector* vector, int x0, int y0, int x1, int y1, EROI<EBW8>* roi) {
  ArmedFrame frame("ImgVectToLineSeg");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector != nullptr && roi != nullptr);
  if (const short failed = CheckLine(frame, roi, x0, y0, x1, y1, E_ERROR_BAD_RANGE)) return failed;
  const int count = mirel::line::PointCount(x0, y0, x1, y1);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_LENGTH, ThreeWordGroups(vector, 4) && vector->GetNbGroup() >= count);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector->GetDataPtr() != nullptr && roi->Void() == 0);
  const std::int32_t* g = Words(vector);
  mirel::line::Walk(x0, y0, x1, y1, 0, 0, [&](int k, int x, int y, std::ptrdiff_t) {
    PutFloored(roi, x, y, g[3 * k]);
    return true;
  });
  return frame.Done();
}

short ImgTransitionScan(TRANS_SCAN_EDGE edge, const EROI<EBW8>* roi, int x0, int y0, int x1, int y1, int level,
                        int maxCount, EVector* vector) {
  ArmedFrame frame("ImgTransitionScan");
  if (maxCount < 1) maxCount = INT_MAX;
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, roi != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_BAD_OPERATION, edge >= TRANS_SCAN_RISING && edge <= TRANS_SCAN_BOTH);
  if (const short failed = CheckLine(frame, roi, x0, y0, x1, y1, E_ERROR_BAD_RANGE)) return failed;
  const int count = mirel::line::PointCount(x0, y0, x1, y1);
  if (!PointGroups(vector, count < maxCount ? count : maxCount)) return frame.Fail();
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, vector->GetDataPtr() != nullptr);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, roi->Void() == 0);
  std::int32_t* out = Words(vector);
  const bool falling = (edge & TRANS_SCAN_FALLING) != 0, rising = (edge & TRANS_SCAN_RISING) != 0;
  int hits = 0, previous = 0;
  const auto hit = [&](int x, int y, int code) {
    out[3 * hits] = x;
    out[3 * hits + 1] = y;
    out[3 * hits + 2] = code;
    return ++hits < maxCount;
  };
  mirel::line::Walk(x0, y0, x1, y1, 0, 0, [&](int k, int x, int y, std::ptrdiff_t) {
    const int current = PixelOrZero(roi, x, y);
    bool goOn = true;
    if (k > 0) {
      if (falling && previous > level && current <= level) goOn = hit(x, y, 2);
      else if (rising && previous < level && current >= level) goOn = hit(x, y, 1);
    }
    previous = current;
    return goOn;
  });
  vector->SetNbGroup(hits);
  return frame.Done();
}
