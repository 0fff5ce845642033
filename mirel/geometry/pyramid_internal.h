// Block routines of the 2x2 halving, one set per instruction set.
//
// Each routine reduces the blocks of two source rows: for i in [0, n),
// dst[i] is the reduction of r0[2i], r0[2i + 1], r1[2i], r1[2i + 1]. It does
// whole vector blocks from the start and returns how many outputs it did;
// the caller finishes the rest one by one with the same formula.
#ifndef MIREL_GEOMETRY_PYRAMID_INTERNAL_H_
#define MIREL_GEOMETRY_PYRAMID_INTERNAL_H_

#include <cstdint>

namespace mirel {
namespace geometry {

using HalveRow = int (*)(const std::uint8_t* r0, const std::uint8_t* r1, std::uint8_t* dst, int n);

struct HalveRoutines {
  HalveRow reduce[3];  // by IMG_PYRAMIDAL_REDUCTION_MODE: sum >> 2, minimum, maximum
  // Gradient pairs: each 32-bit pixel as two signed 16-bit components, each
  // the sum of the four >> 2 (arithmetic). Counts are in pixels.
  int (*gradient)(const std::uint32_t* r0, const std::uint32_t* r1, std::uint32_t* dst, int n);
  // Copies n bytes with stores that bypass the cache (a copy that will not
  // be read again soon); the caller ends the batch with `fence`.
  void (*stream)(const std::uint8_t* src, std::uint8_t* dst, int n);
  void (*fence)();
};

#if defined(MIREL_X86_SIMD)
HalveRoutines HalveSse2();
HalveRoutines HalveAvx2();
HalveRoutines HalveAvx512();
#endif

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_PYRAMID_INTERNAL_H_
