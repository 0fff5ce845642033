// Noise, signal-to-noise ratio, correlogram and regression.
#include "mirel/measure/noise.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "mirel/foundation/frame_internal.h"
#include "mirel/measure/statistics_internal.h"

namespace {

// Components of a pixel as unsigned values; the 16-bit reference of a sum of
// frames is shifted right by `shift`.
inline unsigned int Get(EBW8 p, int, unsigned int) { return p.value; }
inline unsigned int Get(EBW16 p, int, unsigned int shift) { return static_cast<unsigned int>(p.value) >> shift; }
inline unsigned int Get(const EC24& p, int k, unsigned int) { return p.c[k]; }
template <class P>
constexpr int Components() {
  return std::is_same<P, EC24>::value ? 3 : 1;
}

// The common frame: the reference has the source's size, both have an image.
bool PairChecks(mirel::Frame& frame, const EGenericROI* source, const EGenericROI* reference) {
  return frame.SameSize(source, reference) && frame.NotVoid(source, reference);
}

// Per row, 32-bit sums of s * s and (s - r)^2 over every component, handed to
// `row(signal, noise)`. Two 8-bit images take the pair kernels on the fast
// path: sum (s - r)^2 = sum s*s - 2 sum s*r + sum r*r, exactly.
template <class S, class R, class F>
void NoiseRows(const EROI<S>* source, const EROI<R>* reference, unsigned int shift, int mmx, F&& row) {
  const mirel::Rows<const S> s = mirel::RowsOf(source);
  const mirel::Rows<const R> r = mirel::RowsOf(reference);
  if constexpr (std::is_same<S, EBW8>::value && std::is_same<R, EBW8>::value) {
    if (mmx != 0) {
      const mirel::measure::ByteKernels& k = mirel::measure::PickByteKernels(mmx);
      for (int y = 0; y < s.height; ++y) {
        std::uint64_t o[8];
        k.pairSums(reinterpret_cast<const unsigned char*>(s.Row(y)), reinterpret_cast<const unsigned char*>(r.Row(y)),
                   static_cast<std::size_t>(s.width), false, o);
        row(static_cast<std::uint32_t>(o[3]), static_cast<std::uint32_t>(o[3] - 2 * o[4] + o[5]));
      }
      return;
    }
  }
  for (int y = 0; y < s.height; ++y) {
    const S* ps = s.Row(y);
    const R* pr = r.Row(y);
    std::uint32_t signal = 0, noise = 0;
    for (int x = 0; x < s.width; ++x)
      for (int k = 0; k < Components<S>(); ++k) {
        const std::uint32_t a = Get(ps[x], k, 0), b = Get(pr[x], k, shift);
        const std::uint32_t d = a - b;
        signal += a * a;
        noise += d * d;
      }
    row(signal, noise);
  }
}

// The factor F on the noise power for a reference of N frames.
float Factor(IMG_REFERENCE_NOISE mode, unsigned int frames) {
  const float inv = 1.0f / static_cast<float>(frames);
  if (mode == IMG_REFERENCE_INDEPENDENT) return 1.0f + inv;
  if (mode == IMG_REFERENCE_INCLUDES_SOURCE) return 1.0f - inv;
  return 1.0f;
}

template <class S, class R>
float RmsNoise(const EROI<S>* source, const EROI<R>* reference, unsigned int shift,
               unsigned int frames, IMG_REFERENCE_NOISE mode, int mmx) {
  float power = 0.0f;
  NoiseRows(source, reference, shift, mmx, [&](std::uint32_t, std::uint32_t noise) { power += static_cast<float>(noise); });
  power /= Factor(mode, frames);
  const std::uint32_t n =
      static_cast<std::uint32_t>(source->GetWidth()) * static_cast<std::uint32_t>(source->GetHeight());
  return std::sqrt(power / static_cast<float>(n));
}

template <class S, class R>
float SignalNoise(const EROI<S>* source, const EROI<R>* reference, unsigned int shift, unsigned int frames,
                  IMG_REFERENCE_NOISE mode, int mmx) {
  double signal = 0.0, noise = 0.0;
  NoiseRows(source, reference, shift, mmx, [&](std::uint32_t s, std::uint32_t d) {
    signal += static_cast<double>(s);
    noise += static_cast<double>(d);
  });
  if (noise == 0.0) return 0.0f;
  double ratio = 10.0 * std::log10(signal / noise);
  if (mode == IMG_REFERENCE_INDEPENDENT || mode == IMG_REFERENCE_INCLUDES_SOURCE)
    ratio += 10.0 * std::log10(static_cast<double>(Factor(mode, frames)));
  return static_cast<float>(ratio);
}

// log2 of a frame count that is a power of two from 1 to 256, or -1.
int FrameShift(unsigned int frames) {
  for (int k = 0; k <= 8; ++k)
    if (frames == (1u << k)) return k;
  return -1;
}

}  // namespace

// ---------------------------------------------------------------- root mean square noise

float ImgRmsNoise(const EROI<EBW8>* source, const EROI<EBW8>* reference, IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgRmsNoise ( BW8 source and BW8 reference)");
  if (!PairChecks(frame, source, reference) ||
      !frame.Require(mode != IMG_REFERENCE_INCLUDES_SOURCE, E_ERROR_BAD_ARGUMENT_1))
    return 0.0f;
  return RmsNoise(source, reference, 0, 1, mode, mmx);
}

float ImgRmsNoise(const EROI<EBW8>* source, const EROI<EBW16>* reference, unsigned int frames,
                  IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgRmsNoise ( BW8 source and BW16 reference)");
  const int shift = FrameShift(frames);
  if (!PairChecks(frame, source, reference) || !frame.Require(shift >= 0, E_ERROR_BAD_ARGUMENT_1)) return 0.0f;
  return RmsNoise(source, reference, static_cast<unsigned int>(shift), frames, mode, mmx);
}

float ImgRmsNoise(const EROI<EBW16>* source, const EROI<EBW16>* reference, IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgRmsNoise ( BW16 source and BW16 reference)");
  if (!PairChecks(frame, source, reference) ||
      !frame.Require(mode != IMG_REFERENCE_INCLUDES_SOURCE, E_ERROR_BAD_ARGUMENT_1))
    return 0.0f;
  return RmsNoise(source, reference, 0, 1, mode, mmx);
}

float ImgRmsNoise(const EROI<EC24>* source, const EROI<EC24>* reference, IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgRmsNoise ( C24 source and C24 reference)");
  if (!PairChecks(frame, source, reference) ||
      !frame.Require(mode != IMG_REFERENCE_INCLUDES_SOURCE, E_ERROR_BAD_ARGUMENT_1))
    return 0.0f;
  return RmsNoise(source, reference, 0, 1, mode, mmx);
}

// ---------------------------------------------------------------- signal-to-noise ratio

float ImgSignalNoiseRatio(const EROI<EBW8>* source, const EROI<EBW8>* reference, IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgSignalNoiseRatio ( BW8 source and BW8 reference)");
  if (!PairChecks(frame, source, reference) ||
      !frame.Require(mode != IMG_REFERENCE_INCLUDES_SOURCE, E_ERROR_BAD_ARGUMENT_1))
    return 0.0f;
  return SignalNoise(source, reference, 0, 1, mode, mmx);
}

float ImgSignalNoiseRatio(const EROI<EBW8>* source, const EROI<EBW16>* reference, unsigned int frames,
                          IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgSignalNoiseRatio ( BW8 source and BW16 reference)");
  const int shift = FrameShift(frames);
  if (!PairChecks(frame, source, reference) || !frame.Require(shift >= 0, E_ERROR_BAD_ARGUMENT_1)) return 0.0f;
  return SignalNoise(source, reference, static_cast<unsigned int>(shift), frames, mode, mmx);
}

float ImgSignalNoiseRatio(const EROI<EBW16>* source, const EROI<EBW16>* reference, IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgSignalNoiseRatio ( BW16 source and BW16 reference)");
  if (!PairChecks(frame, source, reference) ||
      !frame.Require(mode != IMG_REFERENCE_INCLUDES_SOURCE, E_ERROR_BAD_ARGUMENT_1))
    return 0.0f;
  return SignalNoise(source, reference, 0, 1, mode, mmx);
}

float ImgSignalNoiseRatio(const EROI<EC24>* source, const EROI<EC24>* reference, IMG_REFERENCE_NOISE mode) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgSignalNoiseRatio ( C24 source and C24 reference)");
  if (!PairChecks(frame, source, reference) ||
      !frame.Require(mode != IMG_REFERENCE_INCLUDES_SOURCE, E_ERROR_BAD_ARGUMENT_1))
    return 0.0f;
  return SignalNoise(source, reference, 0, 1, mode, mmx);
}

// ---------------------------------------------------------------- correlogram

namespace {

template <class T>
void Correlogram(mirel::Frame& frame, const EROI<EBW8>* source, const EROI<EBW8>* reference, EImage<T>* table) {
  // The table is resized below, so it may not hold the pixels it is made of.
  if (!frame.NotVoid(source) || !frame.SameSize(reference, source) || !frame.NotVoid(reference) ||
      !frame.Require(table != nullptr, E_ERROR_VOID_IMAGE) ||
      !frame.Require(!mirel::SameImage(table, source) && !mirel::SameImage(table, reference), E_ERROR_SAME_IMAGE))
    return;
  EOk();
  table->SetSize(256, 256);
  if (EGetError() != E_OK) return;
  const mirel::Rows<T> t = mirel::RowsOf(static_cast<EROI<T>*>(table));
  for (int y = 0; y < 256; ++y) std::memset(t.Row(y), 0, 256 * sizeof(T));
  constexpr std::uint32_t kTop = sizeof(T) == 1 ? 255u : 65535u;
  const mirel::Rows<const EBW8> s = mirel::RowsOf(source), r = mirel::RowsOf(reference);
  for (int y = 0; y < s.height; ++y) {
    const EBW8* ps = s.Row(y);
    const EBW8* pr = r.Row(y);
    for (int x = 0; x < s.width; ++x) {
      T& cell = t.Row(255 - pr[x].value)[ps[x].value];
      if (cell.value < kTop) ++cell.value;
    }
  }
}

}  // namespace

void ImgCorrelogram(const EROI<EBW8>* source, const EROI<EBW8>* reference, EImage<EBW8>* table) {
  mirel::Frame frame("ImgCorrelogram ( BW8)");
  Correlogram(frame, source, reference, table);
}

void ImgCorrelogram(const EROI<EBW8>* source, const EROI<EBW8>* reference, EImage<EBW16>* table) {
  mirel::Frame frame("ImgCorrelogram ( BW16)");
  Correlogram(frame, source, reference, table);
}

// ---------------------------------------------------------------- regression

void ImgLinearRegression(const EROI<EBW8>* x, const EROI<EBW8>* y, float& slope, float& offset, float& correlation,
                         int skipExtremes) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgLinearRegression");
  if (!PairChecks(frame, x, y)) return;
  const mirel::Rows<const EBW8> rx = mirel::RowsOf(x), ry = mirel::RowsOf(y);
  std::uint32_t n = static_cast<std::uint32_t>(rx.width) * static_cast<std::uint32_t>(rx.height);
  std::uint32_t sx = 0, sy = 0, lowest = 255, highest = 0;
  double sxx = 0.0, sxy = 0.0, syy = 0.0;
  if (mmx != 0) {
    // The pair kernels: the same sums, a dropped pair adding nothing.
    const mirel::measure::ByteKernels& k = mirel::measure::PickByteKernels(mmx);
    std::uint32_t kept = 0;
    for (int row = 0; row < rx.height; ++row) {
      std::uint64_t o[8];
      k.pairSums(reinterpret_cast<const unsigned char*>(rx.Row(row)), reinterpret_cast<const unsigned char*>(ry.Row(row)),
                 static_cast<std::size_t>(rx.width), skipExtremes != 0, o);
      kept += static_cast<std::uint32_t>(o[0]);
      sx += static_cast<std::uint32_t>(o[1]);
      sy += static_cast<std::uint32_t>(o[2]);
      sxx += static_cast<double>(static_cast<std::uint32_t>(o[3]));
      sxy += static_cast<double>(static_cast<std::uint32_t>(o[4]));
      syy += static_cast<double>(static_cast<std::uint32_t>(o[5]));
      lowest = static_cast<std::uint32_t>(o[6]) < lowest ? static_cast<std::uint32_t>(o[6]) : lowest;
      highest = static_cast<std::uint32_t>(o[7]) > highest ? static_cast<std::uint32_t>(o[7]) : highest;
    }
    n = kept;
  } else {
    for (int row = 0; row < rx.height; ++row) {
      const EBW8* px = rx.Row(row);
      const EBW8* py = ry.Row(row);
      std::uint32_t a = 0, b = 0, c = 0;
      for (int i = 0; i < rx.width; ++i) {
        const std::uint32_t u = px[i].value, v = py[i].value;
        if (skipExtremes != 0 && (u == 0 || u == 255 || v == 0 || v == 255)) {
          --n;
          continue;
        }
        lowest = u < lowest ? u : lowest;
        highest = u > highest ? u : highest;
        sx += u;
        sy += v;
        a += u * u;
        b += u * v;
        c += v * v;
      }
      sxx += static_cast<double>(a);
      sxy += static_cast<double>(b);
      syy += static_cast<double>(c);
    }
  }
  if (n == 0) {
    frame.Fail(E_ERROR_NO_SOLUTION);
    return;
  }
  const double inv = 1.0 / n;
  const double mx = sx * inv, my = sy * inv;
  // With 1/N rounded, inv * Sxx - mx * mx of a constant x is often a few
  // units of rounding off 0 rather than 0; a constant x is known exactly from
  // its extremes and takes the constant-x answer.
  const double vx = lowest == highest ? 0.0 : inv * sxx - mx * mx;
  const double cov = inv * sxy - my * mx;
  const double vy = inv * syy - my * my;
  if (vx == 0.0) {
    slope = 0.0f;
    correlation = 0.0f;
    offset = static_cast<float>(my);
    return;
  }
  const double k = cov / vx;
  slope = static_cast<float>(k);
  offset = static_cast<float>(my - k * mx);
  correlation = static_cast<float>(vx * vy > 0.0 ? cov / std::sqrt(vx * vy) : 0.0);
}
