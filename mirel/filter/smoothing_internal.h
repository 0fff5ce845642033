// Block routines of the sliding-sum filters, one set per instruction set.
// Each does whole blocks from the start of its range and returns how many
// elements it did; the caller finishes the rest one by one.
#ifndef MIREL_FILTER_SMOOTHING_INTERNAL_H_
#define MIREL_FILTER_SMOOTHING_INTERNAL_H_

#include <cstdint>

namespace mirel {
namespace filter {

struct BoxRoutines {
  // sums[x] += in[x] - out[x] (wrapping), for x in [0, n).
  int (*slide)(std::uint32_t* sums, const std::uint8_t* in, const std::uint8_t* out, int n);
  // dst[i] = ((hi[i] - lo[i]) * scale) >> 24, for i in [0, n); the product
  // fits 32 bits.
  int (*scale)(const std::uint32_t* lo, const std::uint32_t* hi, std::uint32_t scale, std::uint8_t* dst, int n);
  // prefix[x + 1] = prefix[x] + col[x] (wrapping), for x in [0, n), with
  // prefix[0] already set.
  int (*prefix)(const std::uint32_t* col, int n, std::uint32_t* prefix);
  // The same slide and scale on 16-bit pixels; the product wraps at 32
  // bits, so that each result is below 256.
  int (*slide16)(std::uint32_t* sums, const std::uint16_t* in, const std::uint16_t* out, int n);
  int (*scale16)(const std::uint32_t* lo, const std::uint32_t* hi, std::uint32_t scale, std::uint16_t* dst,
                 int n);
};

#if defined(MIREL_X86_SIMD)
BoxRoutines BoxSse2();
BoxRoutines BoxAvx2();
#endif

}  // namespace filter
}  // namespace mirel

#endif  // MIREL_FILTER_SMOOTHING_INTERNAL_H_
