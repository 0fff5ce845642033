// Pixel loops of the local mean threshold, one per instruction set.
#ifndef MIREL_HISTOGRAM_LOCAL_THRESHOLD_INTERNAL_H_
#define MIREL_HISTOGRAM_LOCAL_THRESHOLD_INTERNAL_H_

#include <cstdint>

namespace mirel {
namespace histogram {

// out = 0 when pixel * area < window sum + bias, else 255, in 32-bit signed
// integers that wrap.
inline std::uint8_t LocalMeanPixel(std::uint8_t pixel, std::uint32_t sum, std::uint32_t area, std::uint32_t bias) {
  return static_cast<std::int32_t>(pixel * area) < static_cast<std::int32_t>(sum + bias) ? 0 : 255;
}

// LocalMeanPixel over whole blocks from the start of n pixels, with the
// window sum of pixel i given as hi[i] - lo[i]; returns the pixels done.
using DecideFn = int (*)(const std::uint32_t* lo, const std::uint32_t* hi, const std::uint8_t* pixels,
                         std::uint32_t area, std::uint32_t bias, std::uint8_t* out, int n);

#if defined(MIREL_X86_SIMD)
int DecideSse2(const std::uint32_t* lo, const std::uint32_t* hi, const std::uint8_t* pixels, std::uint32_t area,
               std::uint32_t bias, std::uint8_t* out, int n);
int DecideAvx2(const std::uint32_t* lo, const std::uint32_t* hi, const std::uint8_t* pixels, std::uint32_t area,
               std::uint32_t bias, std::uint8_t* out, int n);
#endif

}  // namespace histogram
}  // namespace mirel

#endif  // MIREL_HISTOGRAM_LOCAL_THRESHOLD_INTERNAL_H_
