#include "mirel/vector/profile.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "mirel/foundation/frame_internal.h"

namespace {

using mirel::Frame;

// Mid-scale of a profile's element type: the bias of the derivative.
template <class T>
constexpr long MidScale() {
  return sizeof(T) == 1 ? 128L : 32768L;
}
template <class T>
constexpr long MaxOf() {
  return sizeof(T) == 1 ? 255L : 65535L;
}

// Sizes the destination like the source; false with the code set on failure.
template <class V>
bool SizeLike(const V* src, V* dst) {
  dst->SetNumElements(src->GetNumElements());
  return EGetError() == E_OK;
}

// ---------------------------------------------------------------- peaks

template <class V>
void Peaks(const char* label, const V* profile, EPeaksVector* peaks, unsigned int low, unsigned int high,
           unsigned int minAmplitude, unsigned int minArea) {
  Frame frame(label);
  if (!frame.Require(profile != nullptr && peaks != nullptr, E_ERROR_BAD_ARGUMENT) ||
      !frame.Require(low <= high, E_ERROR_BAD_ARGUMENT))
    return;
  peaks->Empty();
  const unsigned int n = profile->GetNumElements();
  const auto* p = profile->GetDataPtr();

  enum Kind { kNeutral, kPeak, kValley };
  Kind kind = kNeutral;
  unsigned int start = 0;
  long long amplitude = 0, area = 0, moment = 0;
  for (unsigned int i = 0; i <= n; ++i) {
    // Past the last sample the profile ends: nothing there closes a run.
    const long long v = i < n ? static_cast<long long>(p[i].value) : 0;
    const Kind now = i == n ? kNeutral : v > high ? kPeak : v < static_cast<long long>(low) ? kValley : kNeutral;
    if (now == kind && i < n) {
      if (kind != kNeutral) {
        const long long d = v - (kind == kPeak ? high : low);
        if (kind == kPeak ? d > amplitude : d < amplitude) amplitude = d;
        // Sums of a hostile profile (2^32 samples far from the band) may
        // pass 64 bits: they wrap, as two's complement does, rather than
        // overflow.
        area = static_cast<long long>(static_cast<unsigned long long>(area) + static_cast<unsigned long long>(d));
        moment = static_cast<long long>(static_cast<unsigned long long>(moment) + static_cast<unsigned long long>(area));
      }
      continue;
    }
    // The run in hand ends at i: report it when both its ends lie inside.
    if (kind != kNeutral && start > 0 && i < n) {
      const long long sign = kind == kPeak ? 1 : -1;
      if (sign * amplitude >= static_cast<long long>(minAmplitude) && sign * area >= static_cast<long long>(minArea)) {
        EPeak peak;
        peak.m_un32Start = start;
        peak.m_un32Length = i - start;
        peak.m_f32Center = area != 0 ? static_cast<float>(static_cast<double>(i) - static_cast<double>(moment) /
                                                                                     static_cast<double>(area))
                                     : static_cast<float>((static_cast<double>(i) + start - 1) * 0.5);
        peak.m_n32Amplitude = static_cast<int>(amplitude);
        peak.m_n32Area = static_cast<int>(area);
        const unsigned int before = peaks->GetNumElements();
        peaks->AddElement(peak);
        if (peaks->GetNumElements() == before) return;
      }
    }
    if (i == n) break;
    kind = now;
    start = i;
    amplitude = area = moment = 0;
    if (kind != kNeutral) {
      const long long d = v - (kind == kPeak ? high : low);
      amplitude = d;
      area = d;
      moment = d;
    }
  }
}

// ---------------------------------------------------------------- derivative

template <class V>
void Derivative(const V* src, V* dst) {
  Frame frame("ImgProfileDerivative");
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_BAD_ARGUMENT) ||
      !frame.Require(src->GetNumElements() != 1, E_ERROR_VECTOR_SIZE) || !SizeLike(src, dst))
    return;
  using T = std::remove_pointer_t<decltype(dst->GetDataPtr())>;
  using Value = decltype(T().value);
  const unsigned int n = src->GetNumElements();
  if (n == 0) return;
  const T* in = src->GetDataPtr();
  T* out = dst->GetDataPtr();
  const auto clamp = [](long v) { return static_cast<Value>(v < 0 ? 0 : v > MaxOf<T>() ? MaxOf<T>() : v); };
  // The previous source sample is carried, so the filter may run in place.
  long before = in[0].value, here = in[0].value;
  for (unsigned int i = 0; i < n; ++i) {
    const long after = i + 1 < n ? static_cast<long>(in[i + 1].value) : here;
    if (i == 0) out[i].value = clamp(after - here + MidScale<T>());
    else if (i + 1 == n) out[i].value = clamp(here - before + MidScale<T>());
    else out[i].value = static_cast<Value>(((after - before) >> 1) + MidScale<T>());
    before = here;
    here = after;
  }
}

// ---------------------------------------------------------------- uniform

template <class V>
void Uniform(const char* label, const V* src, V* dst, unsigned int half) {
  Frame frame(label);
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_BAD_ARGUMENT)) return;
  const unsigned long long n = src->GetNumElements();
  const unsigned long long window = 2ull * half + 1;
  if (!frame.Require(n >= window && dst->GetNumElements() == n, E_ERROR_VECTOR_SIZE)) return;
  // Running sums over the source with its first and last samples repeated h
  // times past the ends: S[0] = 0, S[j + 1] = S[j] + padded[j].
  const std::size_t entries = static_cast<std::size_t>(n + window);
  std::unique_ptr<std::uint32_t, decltype(&std::free)> sums(
      static_cast<std::uint32_t*>(std::malloc(entries * sizeof(std::uint32_t))), &std::free);
  if (sums == nullptr) {
    frame.Fail(E_ERROR_OUT_OF_MEMORY);
    return;
  }
  const auto* in = src->GetDataPtr();
  std::uint32_t* s = sums.get();
  s[0] = 0;
  for (std::size_t j = 0; j + 1 < entries; ++j) {
    const std::size_t k = j < half ? 0 : j - half >= n ? static_cast<std::size_t>(n - 1) : j - half;
    s[j + 1] = s[j] + in[k].value;
  }
  auto* out = dst->GetDataPtr();
  using Value = decltype(out->value);
  const std::uint32_t w = static_cast<std::uint32_t>(window);
  for (std::size_t i = 0; i < n; ++i) out[i].value = static_cast<Value>((s[i + window] - s[i]) / w);
}

// ---------------------------------------------------------------- three taps

// `passes` passes of tap(left, centre, right) and end(edge, inner) for the
// two end samples; the first pass reads the source, the others the
// destination, carrying the source samples that a pass has overwritten.
template <class V, class Tap, class End>
void ThreeTap(const char* label, const V* src, V* dst, unsigned int passes, Tap tap, End end) {
  Frame frame(label);
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_BAD_ARGUMENT) ||
      !frame.Require(passes == 0 || src->GetNumElements() != 1, E_ERROR_VECTOR_SIZE) || !SizeLike(src, dst))
    return;
  const unsigned int n = src->GetNumElements();
  if (n == 0) return;
  auto* out = dst->GetDataPtr();
  using Value = decltype(out->value);
  for (unsigned int pass = 0; pass < passes; ++pass) {
    const auto* in = pass == 0 ? src->GetDataPtr() : out;
    long a = in[0].value, b = in[1].value;
    out[0].value = static_cast<Value>(end(a, b));
    for (unsigned int i = 1; i + 1 < n; ++i) {
      const long c = in[i + 1].value;
      out[i].value = static_cast<Value>(tap(a, b, c));
      a = b;
      b = c;
    }
    out[n - 1].value = static_cast<Value>(end(b, a));
  }
}

long Binomial(long a, long b, long c) { return (a + 2 * b + c) >> 2; }
long BinomialEnd(long edge, long inner) { return (3 * edge + inner) >> 2; }
long Largest(long a, long b, long c) { return a > b ? (a > c ? a : c) : (b > c ? b : c); }
long LargestEnd(long edge, long inner) { return edge > inner ? edge : inner; }
long Smallest(long a, long b, long c) { return a < b ? (a < c ? a : c) : (b < c ? b : c); }
long SmallestEnd(long edge, long inner) { return edge < inner ? edge : inner; }

}  // namespace

void ImgGetProfilePeaks(const EBW8Vector* profile, EPeaksVector* peaks, unsigned int low, unsigned int high,
                        unsigned int minAmplitude, unsigned int minArea) {
  Peaks("ImgGetProfilePeaks ( BW8)", profile, peaks, low, high, minAmplitude, minArea);
}
void ImgGetProfilePeaks(const EBW16Vector* profile, EPeaksVector* peaks, unsigned int low, unsigned int high,
                        unsigned int minAmplitude, unsigned int minArea) {
  Peaks("ImgGetProfilePeaks ( BW16)", profile, peaks, low, high, minAmplitude, minArea);
}

void ImgProfileDerivative(const EBW8Vector* src, EBW8Vector* dst) { Derivative(src, dst); }
void ImgProfileDerivative(const EBW16Vector* src, EBW16Vector* dst) { Derivative(src, dst); }

void ImgConvolUniform(const EBW8Vector* src, EBW8Vector* dst, unsigned int halfSize) {
  Uniform("ImgConvolUniform", src, dst, halfSize);
}
void ImgConvolUniform(const EBW16Vector* src, EBW16Vector* dst, unsigned int halfSize) {
  Uniform("ImgConvolUniform (BW16)", src, dst, halfSize);
}

void ImgConvolGaussian(const EBW8Vector* src, EBW8Vector* dst, unsigned int passes) {
  ThreeTap("ImgConvolBinomial ( EBW8Vector)", src, dst, passes, Binomial, BinomialEnd);
}
void ImgConvolGaussian(const EBW16Vector* src, EBW16Vector* dst, unsigned int passes) {
  ThreeTap("ImgConvolBinomial ( EBW16Vector)", src, dst, passes, Binomial, BinomialEnd);
}

void ImgDilate(const EBW8Vector* src, EBW8Vector* dst, unsigned int passes) {
  ThreeTap("ImgDilate ( EBW8Vector)", src, dst, passes, Largest, LargestEnd);
}
void ImgDilate(const EBW16Vector* src, EBW16Vector* dst, unsigned int passes) {
  ThreeTap("ImgDilate ( EBW16Vector)", src, dst, passes, Largest, LargestEnd);
}

void ImgErode(const EBW8Vector* src, EBW8Vector* dst, unsigned int passes) {
  ThreeTap("ImgErode ( EBW8Vector)", src, dst, passes, Smallest, SmallestEnd);
}
void ImgErode(const EBW16Vector* src, EBW16Vector* dst, unsigned int passes) {
  ThreeTap("ImgErode ( EBW16Vector)", src, dst, passes, Smallest, SmallestEnd);
}
