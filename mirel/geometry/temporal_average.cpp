// Moving average over a ring of images, and the recursive average through a
// table of steps.
//
// One step of the moving average reads the new image, the running sum and
// the oldest image of the ring, and writes the mean and the sum of the
// images that the next step will add to (and, when the caller passes the
// image, its copy into the ring). Each destination row depends only on the
// same row of the inputs, so any band of rows can be done on its own.
#include "mirel/geometry/temporal_average.h"

#include <cmath>
#include <cstdint>
#include <new>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/geometry/temporal_average_internal.h"
#include "mirel/foundation/float_math_internal.h"

namespace mirel {
namespace geometry {
namespace {

using Byte = std::uint8_t;
using U16 = std::uint16_t;

// The largest size whose running sum, (size - 1) * 255 + 255, fits 16 bits.
constexpr unsigned int kMaxSize = 257;

MovingRow ActiveMoving() {
  if (EGetMMX() == 0) return nullptr;
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return MovingAvx512();
  if (level >= cpu::kAVX2) return MovingAvx2();
  if (level >= cpu::kSSE2) return MovingSse2();
#endif
  return nullptr;
}

struct MovingJob {
  Rows<const Byte> in;
  Rows<U16> sum;
  Rows<const Byte> oldest;
  Rows<Byte> store;  // base null when the new image is already in the ring
  Rows<Byte> out;
  unsigned int size;
  int shift;
  bool first;
  MovingRow blocks;  // null: one by one
};

template <class B, class T>
Rows<B> As(const Rows<T>& r) {
  return Rows<B>{reinterpret_cast<B*>(r.base), r.pitch, r.width, r.height};
}

// Rows [y0, y1) of one step.
void MovingBand(const MovingJob& job, int y0, int y1) {
  const int w = job.out.width;
  const U16 n = static_cast<U16>(job.size);
  for (int y = y0; y < y1; ++y) {
    const Byte* in = job.in.Row(y);
    U16* sum = job.sum.Row(y);
    const Byte* oldest = job.oldest.Row(y);
    Byte* store = job.store.base == nullptr ? nullptr : job.store.Row(y);
    Byte* out = job.out.Row(y);
    int x = job.blocks == nullptr ? 0 : job.blocks(in, sum, oldest, store, out, w, job.shift, job.first);
    for (; x < w; ++x) {
      const U16 v = in[x];
      if (job.first) {
        sum[x] = static_cast<U16>(job.shift != 0 ? (v << job.shift) - v : (n - 1) * v);
        out[x] = static_cast<Byte>(v);
      } else {
        const U16 t = static_cast<U16>(v + sum[x]);
        const unsigned mean = job.shift != 0 ? t >> job.shift : t / n;
        out[x] = static_cast<Byte>(mean > 255 ? 255 : mean);
        sum[x] = static_cast<U16>(t - oldest[x]);
      }
      if (store != nullptr) store[x] = static_cast<Byte>(v);
    }
  }
}

// Float to int32 with truncation towards zero; NaN and values out of range
// give INT32_MIN, as the processor's conversion does.
std::int32_t Trunc(float v) {
  if (!(v > -2147483649.0f && v < 2147483648.0f)) return INT32_MIN;
  return static_cast<std::int32_t>(v);
}

constexpr int kTableCentre = 4095;
constexpr unsigned int kTableSize = 2 * kTableCentre + 1;

}  // namespace
}  // namespace geometry
}  // namespace mirel

using mirel::Frame;
using mirel::Rows;
using mirel::RowsOf;
using namespace mirel::geometry;

EMovingAverage::EMovingAverage() = default;

EMovingAverage::EMovingAverage(unsigned int size_, int width, int height, int ownBuffer_) {
  SetSize(size_, width, height, ownBuffer_);
}

EMovingAverage::~EMovingAverage() {
  Release();
  sum.SetSize(0, 0);
}

void EMovingAverage::Release() {
  if (ring == nullptr) return;
  for (int i = 0; i < ringLength; ++i) delete ring[i];  // null slots of a failed SetSize too
  delete[] ring;
  ring = nullptr;
}

void EMovingAverage::SetSize(unsigned int size_, int width, int height, int ownBuffer_) {
  Frame frame("EMovingAverage::SetSize");
  if (!frame.Require(size_ <= kMaxSize && width >= 0 && height >= 0, E_ERROR_BAD_ARGUMENT)) return;
  Release();
  size = size_;
  ownBuffer = static_cast<unsigned int>(ownBuffer_);
  ringLength = ownBuffer != 0 ? static_cast<int>(size) : (size == 0 ? 0 : static_cast<int>(size) - 1);
  index = -ringLength;
  shift = 0;
  for (unsigned int b = 1; b < 32; ++b)
    if (size == 1u << b) shift = b;
  ring = new (std::nothrow) EImage<EBW8>*[static_cast<unsigned>(ringLength) + 1]();
  if (ring == nullptr) {
    ringLength = 0;
    index = 0;
    return frame.Fail(E_ERROR_OUT_OF_MEMORY);
  }
  for (int i = 0; i < ringLength; ++i) {
    ring[i] = new (std::nothrow) EImage<EBW8>(width, height);
    if (ring[i] == nullptr) return frame.Fail(E_ERROR_OUT_OF_MEMORY);
    if (EGetError() != E_OK) return;
  }
  sum.SetSize(width, height);
}

void EMovingAverage::GetSize(unsigned int& size_, int& width, int& height, int& ownBuffer_) const {
  size_ = size;
  width = sum.GetWidth();
  height = sum.GetHeight();
  ownBuffer_ = static_cast<int>(ownBuffer);
}

void EMovingAverage::Reset() { index = -ringLength; }

EImage<EBW8>* EMovingAverage::GetSrcImage() {
  Frame frame("EMovingAverage::GetSrcImage");
  if (size == 0) return nullptr;
  if (!frame.Require(ownBuffer != 0, E_ERROR_BAD_OPERATION)) return nullptr;
  if (ringLength == 0) return nullptr;
  return ring[index < 0 ? ringLength + index : index];
}

void EMovingAverage::Average(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  Frame frame("EMovingAverage::Average");
  if (!frame.NotVoid(src, dst) || !frame.Require(ownBuffer == 0, E_ERROR_BAD_OPERATION)) return;
  Step(src, dst, true);
}

void EMovingAverage::Average(EROI<EBW8>* dst) {
  Frame frame("EMovingAverage::Average");
  if (!frame.NotVoid(dst) || !frame.Require(ownBuffer != 0, E_ERROR_BAD_OPERATION)) return;
  Step(nullptr, dst, false);
}

// The checks that follow the form's own, then the step. With storeSource
// the new image is `src` and is copied into the current slot; otherwise it
// stands in the current slot already.
void EMovingAverage::Step(const EROI<EBW8>* src, EROI<EBW8>* dst, bool storeSource) {
  if (ring == nullptr || ringLength <= 0) {
    ESetError(E_ERROR_BAD_ARGUMENT);  // an empty ring: no step is defined
    return;
  }
  const int current = index < 0 ? ringLength + index : index;
  const int oldest = storeSource ? (index >= 1 ? index : 0)
                                 : (index < 0 || index == ringLength - 1 ? 0 : index + 1);
  EImage<EBW8>* slot = ring[current];
  const EImage<EBW8>* old = ring[oldest];
  if (slot == nullptr || old == nullptr || slot->Void() || old->Void()) {
    ESetError(E_ERROR_VOID_IMAGE);
    return;
  }
  if (!storeSource) src = slot;
  const EGenericROI* same[] = {dst, slot, old, &sum};
  for (const EGenericROI* roi : same) {
    src->CheckSameSize(roi);
    if (EGetError() != E_OK) return;
  }
  // Writing the mean into a ring image would corrupt the sums that follow.
  if (mirel::SameImage(dst, slot) || mirel::SameImage(dst, old)) {
    ESetError(E_ERROR_SAME_IMAGE);
    return;
  }
  using Byte = std::uint8_t;
  MovingJob job{As<const Byte>(RowsOf(src)),
                As<std::uint16_t>(RowsOf(static_cast<EROI<EBW16>*>(&sum))),
                As<const Byte>(RowsOf(static_cast<const EROI<EBW8>*>(old))),
                storeSource ? As<Byte>(RowsOf(static_cast<EROI<EBW8>*>(slot))) : Rows<Byte>{nullptr, 0, 0, 0},
                As<Byte>(RowsOf(dst)),
                size,
                static_cast<int>(shift),
                index == -ringLength,
                shift != 0 ? ActiveMoving() : nullptr};
  // The ring and the sum are the object's own; only the caller's new image
  // may lie on the destination's image.
  mirel::RowwiseBands(dst, {src}, 6.0, [&](int y0, int y1) { MovingBand(job, y0, y1); });
  if (++index == ringLength) index = 0;
}

void ImgSetRecursiveAverageLUT(EBW16Vector* lut, float reduction, float width) {
  Frame frame("ImgSetRecursiveAverageLUT");
  if (!frame.Require(lut != nullptr, E_ERROR_VECTOR_SIZE)) return;
  lut->SetNumElements(kTableSize);
  if (EGetError() != E_OK) return;
  EBW16* table = lut->GetDataPtr();
  auto put = [table](int i, std::int32_t f) {
    table[kTableCentre + i] = EBW16(static_cast<std::uint16_t>(f));
    table[kTableCentre - i] = EBW16(static_cast<std::uint16_t>(-static_cast<std::uint32_t>(f)));
  };
  const float r2 = reduction * reduction;
  if (width != 0.0f) {
    // tanh(i / W) = (e - 1) / (e + 1) with e = exp(2 i / W) as a running
    // product; once e passes the range of a float the tangent is 1.
    const float w16 = 16.0f * width, k = (1.0f - r2) / (1.0f + r2);
    const float factor = mirel::Exp(2.0f / w16);
    float e = 1.0f;
    for (int i = 0; i <= kTableCentre; ++i) {
      const float th = std::isinf(e) ? 1.0f : (e - 1.0f) / (e + 1.0f);
      put(i, Trunc(static_cast<float>(i) + w16 * k * th));
      e *= factor;
    }
  } else {
    const float step = 2.0f / (1.0f + r2);
    float f = 0.5f;
    for (int i = 0; i <= kTableCentre; ++i, f += step) put(i, Trunc(f));
  }
}

void ImgRecursiveAverage(const EROI<EBW8>* src, EROI<EBW16>* store, EROI<EBW8>* dst, const EBW16Vector* lut) {
  Frame frame("ImgRecursiveAverage");
  if (!frame.NotVoid(src, store, dst) || !frame.SameSize(src, store) || !frame.SameSize(src, dst)) return;
  if (!frame.Require(lut != nullptr && lut->GetNumElements() == kTableSize && lut->GetDataPtr() != nullptr,
                     E_ERROR_VECTOR_SIZE))
    return;
  const EBW16* centre = lut->GetDataPtr() + kTableCentre;
  const Rows<const EBW8> in = RowsOf(src);
  const Rows<EBW16> mem = RowsOf(store);
  const Rows<EBW8> out = RowsOf(dst);
  // Each pixel's store and output depend on that pixel alone.
  mirel::RowwiseBands(dst, {src}, 6.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const EBW8* a = in.Row(y);
      EBW16* s = mem.Row(y);
      EBW8* o = out.Row(y);
      for (int x = 0; x < out.width; ++x) {
        const int old = static_cast<std::int16_t>(s[x].value);
        int d = (a[x].value << 4) - old;
        d = d < -kTableCentre ? -kTableCentre : (d > kTableCentre ? kTableCentre : d);
        const std::int16_t now = static_cast<std::int16_t>(old + static_cast<std::int16_t>(centre[d].value));
        s[x] = EBW16(static_cast<std::uint16_t>(now));
        const int v = now >> 4;
        o[x] = EBW8(static_cast<unsigned char>(v < 0 ? 0 : (v > 255 ? 255 : v)));
      }
    }
  });
}
