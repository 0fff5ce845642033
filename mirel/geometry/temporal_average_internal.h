// Block routines of the moving average with a power-of-two size, one per
// instruction set. For x in [0, n), with v = in[x]:
//   first step:  sum[x] = (v << shift) - v, out[x] = v;
//   later steps: t = v + sum[x], out[x] = min(t >> shift, 255),
//                sum[x] = t - oldest[x]   (16 bits, wrapping);
// and store[x] = v when store is not null, after oldest[x] has been read
// (store and oldest may be the same row). Each routine does whole blocks
// from the start and returns how many pixels it did.
#ifndef MIREL_GEOMETRY_TEMPORAL_AVERAGE_INTERNAL_H_
#define MIREL_GEOMETRY_TEMPORAL_AVERAGE_INTERNAL_H_

#include <cstdint>

namespace mirel {
namespace geometry {

using MovingRow = int (*)(const std::uint8_t* in, std::uint16_t* sum, const std::uint8_t* oldest,
                          std::uint8_t* store, std::uint8_t* out, int n, int shift, bool first);

#if defined(MIREL_X86_SIMD)
MovingRow MovingSse2();
MovingRow MovingAvx2();
MovingRow MovingAvx512();
#endif

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_TEMPORAL_AVERAGE_INTERNAL_H_
