// Counting kernels shared by the histogram fillers.
#ifndef MIREL_HISTOGRAM_HISTOGRAM_INTERNAL_H_
#define MIREL_HISTOGRAM_HISTOGRAM_INTERNAL_H_

#include <cstddef>
#include <cstdint>

namespace mirel {
namespace hist {

// Byte counter with four interleaved sub-histograms, so that runs of equal
// bytes do not wait on the store of the previous increment. Add() may be
// called on many spans; Flush() adds the four tables into `out` (32-bit,
// wrapping) and clears them.
class ByteCounter {
 public:
  ByteCounter();
  void Add(const unsigned char* p, std::size_t n);
  void Flush(unsigned int* out);

 private:
  alignas(64) std::uint32_t sub_[4][256];
};

// One increment a byte straight into `out`: the plain form.
inline void CountBytesPlain(const unsigned char* p, std::size_t n, unsigned int* out) {
  for (std::size_t i = 0; i < n; ++i) ++out[p[i]];
}

}  // namespace hist
}  // namespace mirel

#endif  // MIREL_HISTOGRAM_HISTOGRAM_INTERNAL_H_
