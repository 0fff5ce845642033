// Vector stretches of the depth conversions that live in per-instruction-set
// sources.
#ifndef MIREL_POINT_CONVERT_INTERNAL_H_
#define MIREL_POINT_CONVERT_INTERNAL_H_

#include <cstddef>

#include "mirel/foundation/stream_internal.h"

namespace mirel {
namespace point {

#if defined(MIREL_X86_SIMD)
// Widens the first bytes of a row of n to words shifted left by `shift` (a
// count above 15 gives 0), 16 at a time with 32-byte stores, hinting the
// destination ahead; returns how many it did.
std::size_t WidenAVX2(const unsigned char* s, unsigned short* d, std::size_t n, unsigned int shift,
                      const StoreAhead& ahead);
#endif

}  // namespace point
}  // namespace mirel

#endif  // MIREL_POINT_CONVERT_INTERNAL_H_
