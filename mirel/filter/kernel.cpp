// The kernel object: storage, presets and element access.
#include "mirel/filter/kernel.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "mirel/filter/alloc_internal.h"
#include "mirel/foundation/error.h"

namespace mirel {
namespace filter {
namespace {
thread_local int g_failing_allocations = 0;
}  // namespace

template <class T>
T* Allocate(std::size_t count) {
  if (g_failing_allocations > 0) {
    --g_failing_allocations;
    return nullptr;
  }
  // No table or row of this family comes near 2^31 elements; a count that
  // large is a negative size seen as unsigned, and is refused.
  if (count >= (std::size_t{1} << 31) || count > SIZE_MAX / sizeof(T)) return nullptr;
  return new (std::nothrow) T[count];
}
template <class T>
void Free(T* block) {
  delete[] block;
}

template float* Allocate<float>(std::size_t);
template void Free<float>(float*);
template unsigned char* Allocate<unsigned char>(std::size_t);
template void Free<unsigned char>(unsigned char*);
template std::int16_t* Allocate<std::int16_t>(std::size_t);
template void Free<std::int16_t>(std::int16_t*);
template std::uint16_t* Allocate<std::uint16_t>(std::size_t);
template void Free<std::uint16_t>(std::uint16_t*);
template std::uint32_t* Allocate<std::uint32_t>(std::size_t);
template void Free<std::uint32_t>(std::uint32_t*);
template std::int32_t* Allocate<std::int32_t>(std::size_t);
template void Free<std::int32_t>(std::int32_t*);
template const unsigned char** Allocate<const unsigned char*>(std::size_t);
template void Free<const unsigned char*>(const unsigned char**);
template const std::uint16_t** Allocate<const std::uint16_t*>(std::size_t);
template void Free<const std::uint16_t*>(const std::uint16_t**);

}  // namespace filter

namespace testing {
void FailFilterAllocations(int count) { filter::g_failing_allocations = count; }
}  // namespace testing
}  // namespace mirel

namespace {

// The built-in 3x3 tables, row by row, indexed by type - 1.
struct Preset {
  float c[9];
  float gain;
  short rectifier;
};
constexpr Preset kPresets[14] = {
    {{0, 0, 0, -1, 1, -1, 1, 1, 1}, 0, 0},       // pattern tee
    {{0, 0, 0, -1, 0, -1, 1, 1, 1}, 0, 0},       // pattern bar
    {{1, 1, 1, 1, 1, 1, 1, 1, 1}, 0, 0},         // pattern full
    {{-1, 0, 1, -2, 0, 2, -1, 0, 1}, 1, 2},      // Sobel x
    {{-1, -2, -1, 0, 0, 0, 1, 2, 1}, 1, 2},      // Sobel y
    {{-1, 0, 1, -1, 0, 1, -1, 0, 1}, 1, 2},      // Prewitt x
    {{-1, -1, -1, 0, 0, 0, 1, 1, 1}, 1, 2},      // Prewitt y
    {{0, 1, 0, 1, -4, 1, 0, 1, 0}, 1, 2},        // Laplacian 4
    {{1, 1, 1, 1, -8, 1, 1, 1, 1}, 1, 2},        // Laplacian 8
    {{1, 2, 1, 2, 4, 2, 1, 2, 1}, 1, 2},         // Gaussian
    {{1, 1, 1, 1, 0, 1, 1, 1, 1}, 1, 2},         // low-pass ring
    {{1, 1, 1, 1, 1, 1, 1, 1, 1}, 1, 2},         // uniform
    {{0, -1, 0, -1, 5, -1, 0, -1, 0}, 1, 2},     // high-pass 1
    {{-1, -1, -1, -1, 9, -1, -1, -1, -1}, 1, 2}, // high-pass 2
};

}  // namespace

using mirel::filter::Allocate;
using mirel::filter::Free;

EKernel::EKernel() { EOk(); }

EKernel::EKernel(short sizeX, short sizeY, float gain, unsigned int offset, short rectifier,
                 unsigned int outsideValue)
    : SizeX(sizeX),
      SizeY(sizeY),
      Gain(gain),
      Offset(offset),
      Rectifier(rectifier),
      OutsideValue(outsideValue) {
  EOk();
  AllocatedSize = static_cast<unsigned int>(static_cast<int>(sizeX) * static_cast<int>(sizeY));
  Data = Allocate<float>(AllocatedSize);
  if (Data == nullptr) {
    AllocatedSize = 0;
    ESetError(E_ERROR_OUT_OF_MEMORY);
    ETraceError("EKernel::EKernel");
  }
}

EKernel::EKernel(KERNEL_TYPE type) { SetKernel(type); }

EKernel::EKernel(const EKernel& other)
    : SizeX(other.SizeX),
      SizeY(other.SizeY),
      Gain(other.Gain),
      Offset(other.Offset),
      Rectifier(other.Rectifier),
      OutsideValue(other.OutsideValue) {
  EOk();
  if (other.Data == nullptr) return;
  Data = Allocate<float>(other.AllocatedSize);
  if (Data == nullptr) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    ETraceError("EKernel::EKernel");
    return;
  }
  AllocatedSize = other.AllocatedSize;
  if (AllocatedSize != 0) std::memcpy(Data, other.Data, sizeof(float) * AllocatedSize);
}

EKernel& EKernel::operator=(const EKernel& other) {
  EOk();
  if (this == &other) return *this;
  float* block = nullptr;
  if (other.Data != nullptr) {
    block = Allocate<float>(other.AllocatedSize);
    if (block == nullptr) {  // out of memory: this kernel is kept as it was
      ESetError(E_ERROR_OUT_OF_MEMORY);
      ETraceError("EKernel::operator=");
      return *this;
    }
    if (other.AllocatedSize != 0) std::memcpy(block, other.Data, sizeof(float) * other.AllocatedSize);
  }
  Free(Data);
  Data = block;
  AllocatedSize = block != nullptr ? other.AllocatedSize : 0;
  SizeX = other.SizeX;
  SizeY = other.SizeY;
  Gain = other.Gain;
  Offset = other.Offset;
  Rectifier = other.Rectifier;
  OutsideValue = other.OutsideValue;
  return *this;
}

EKernel::~EKernel() {
  Free(Data);
  Data = nullptr;
  EOk();
}

bool EKernel::EnsureStorage(unsigned int count) {
  if (Data != nullptr && AllocatedSize >= count) return true;
  Free(Data);
  AllocatedSize = count;
  Data = Allocate<float>(count);
  if (Data == nullptr) {
    AllocatedSize = 0;
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return false;
  }
  return true;
}

short EKernel::SetKernel(KERNEL_TYPE type) {
  EOk();
  SizeX = 3;
  SizeY = 3;
  if (!EnsureStorage(9)) return static_cast<short>(ETraceError("EKernel::SetKernel"));
  Gain = 0.0f;
  Offset = 0;
  Rectifier = 0;
  OutsideValue = 0;
  const int index = static_cast<int>(type);
  if (index < 1 || index > 14) {
    ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
    return static_cast<short>(ETraceError("EKernel::SetKernel"));
  }
  const Preset& preset = kPresets[index - 1];
  std::memcpy(Data, preset.c, sizeof(preset.c));
  Gain = preset.gain;
  Rectifier = preset.rectifier;
  return 0;
}

short EKernel::SetSquareData(int size, const float* values, const char* label) {
  EOk();
  SizeX = static_cast<short>(size);
  SizeY = static_cast<short>(size);
  const unsigned int count = static_cast<unsigned int>(size * size);
  if (!EnsureStorage(count)) return static_cast<short>(ETraceError(label));
  std::memcpy(Data, values, sizeof(float) * count);
  return static_cast<short>(EOk());
}

short EKernel::SetKernelData(float k00, float k01, float k02, float k10, float k11, float k12,
                             float k20, float k21, float k22) {
  const float v[9] = {k00, k01, k02, k10, k11, k12, k20, k21, k22};
  return SetSquareData(3, v, "EKernel::SetKernelData 3x3");
}

short EKernel::SetKernelData(float k00, float k01, float k02, float k03, float k04, float k10,
                             float k11, float k12, float k13, float k14, float k20, float k21,
                             float k22, float k23, float k24, float k30, float k31, float k32,
                             float k33, float k34, float k40, float k41, float k42, float k43,
                             float k44) {
  const float v[25] = {k00, k01, k02, k03, k04, k10, k11, k12, k13, k14, k20, k21, k22,
                       k23, k24, k30, k31, k32, k33, k34, k40, k41, k42, k43, k44};
  return SetSquareData(5, v, "EKernel::SetKernelData 5x5");
}

short EKernel::SetKernelData(float k00, float k01, float k02, float k03, float k04, float k05,
                             float k06, float k10, float k11, float k12, float k13, float k14,
                             float k15, float k16, float k20, float k21, float k22, float k23,
                             float k24, float k25, float k26, float k30, float k31, float k32,
                             float k33, float k34, float k35, float k36, float k40, float k41,
                             float k42, float k43, float k44, float k45, float k46, float k50,
                             float k51, float k52, float k53, float k54, float k55, float k56,
                             float k60, float k61, float k62, float k63, float k64, float k65,
                             float k66) {
  const float v[49] = {k00, k01, k02, k03, k04, k05, k06, k10, k11, k12, k13, k14, k15,
                       k16, k20, k21, k22, k23, k24, k25, k26, k30, k31, k32, k33, k34,
                       k35, k36, k40, k41, k42, k43, k44, k45, k46, k50, k51, k52, k53,
                       k54, k55, k56, k60, k61, k62, k63, k64, k65, k66};
  // The 7x7 form reports under the 5x5 label: there is no label of its own.
  return SetSquareData(7, v, "EKernel::SetKernelData 5x5");
}

short EKernel::SetKernelData(int x, int y, float value) {
  EOk();
  if (Data == nullptr) ESetError(E_ERROR_KERNEL_NO_DATA);
  else if (x < 0 || x >= SizeX) ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
  else if (y < 0 || y >= SizeY) ESetError(E_ERROR_BAD_RANGE);
  else {
    Data[SizeX * y + x] = value;
    return 0;
  }
  return static_cast<short>(ETraceError("EKernel::SetKernelData"));
}

short EKernel::GetKernelData(int x, int y, float& value) const {
  EOk();
  if (Data == nullptr) ESetError(E_ERROR_KERNEL_NO_DATA);
  else if (x < 0 || x >= SizeX) ESetError(E_ERROR_INDEX_OUT_OF_RANGE);
  else if (y < 0 || y >= SizeY) ESetError(E_ERROR_BAD_RANGE);
  else {
    value = Data[SizeX * y + x];
    return 0;
  }
  return static_cast<short>(ETraceError("EKernel::GetKernelData"));
}

short EKernel::SetAllocatedSize(unsigned int size) {
  EOk();
  if (!EnsureStorage(size)) return static_cast<short>(ETraceError("EKernel::SetAllocatedSize"));
  return 0;
}

short EKernel::SetSizeX(short size) {
  EOk();
  const std::int32_t product = static_cast<std::int32_t>(size) * SizeY;
  if (product > static_cast<std::int32_t>(AllocatedSize)) {
    SetAllocatedSize(static_cast<unsigned int>(product));
    if (EGetError() != E_OK) return static_cast<short>(ETraceError("EKernel::SetSizeX"));
  }
  SizeX = size;
  return 0;
}

short EKernel::SetSizeY(short size) {
  EOk();
  const std::int32_t product = static_cast<std::int32_t>(size) * SizeX;
  if (product > static_cast<std::int32_t>(AllocatedSize)) {
    SetAllocatedSize(static_cast<unsigned int>(product));
    if (EGetError() != E_OK) return static_cast<short>(ETraceError("EKernel::SetSizeY"));
  }
  SizeY = size;
  return 0;
}

short EKernel::GetSizeX() const { EOk(); return SizeX; }
short EKernel::GetSizeY() const { EOk(); return SizeY; }
float EKernel::GetGain() const { EOk(); return Gain; }
unsigned int EKernel::GetOffset() const { EOk(); return Offset; }
short EKernel::GetRectifier() const { EOk(); return Rectifier; }
unsigned int EKernel::GetOutsideValue() const { EOk(); return OutsideValue; }
unsigned int EKernel::GetAllocatedSize() const { EOk(); return AllocatedSize; }
float* EKernel::GetDataPtr() { EOk(); return Data; }
const float* EKernel::GetDataPtr() const { EOk(); return Data; }

void EKernel::SetGain(float gain) { EOk(); Gain = gain; }
void EKernel::SetOffset(unsigned int offset) { EOk(); Offset = offset; }
void EKernel::SetRectifier(short rectifier) { EOk(); Rectifier = rectifier; }
void EKernel::SetOutsideValue(unsigned int outsideValue) { EOk(); OutsideValue = outsideValue; }
