// Vector stretches of the depth conversions, one per instruction set.
#ifndef MIREL_POINT_CONVERT_INTERNAL_H_
#define MIREL_POINT_CONVERT_INTERNAL_H_

#include <cstddef>

namespace mirel {
namespace point {

#if defined(MIREL_X86_SIMD)
// x << shift into 16 bits (a count above 15 gives 0) for the first pixels of
// a row of n; returns how many it did.
std::size_t WidenAVX2(const unsigned char* s, unsigned short* d, std::size_t n, unsigned int shift);
#endif

}  // namespace point
}  // namespace mirel

#endif  // MIREL_POINT_CONVERT_INTERNAL_H_
