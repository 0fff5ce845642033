// SSE2 block routines of the byte workers (the x86-64 baseline).
#include "mirel/point/arith_internal.h"

#if defined(MIREL_X86_SIMD)
#include "mirel/point/arith_simd_internal.h"

namespace mirel {
namespace arith {

bool BlocksSse2(int op, int form, const unsigned char* a, const unsigned char* b, unsigned char c,
                unsigned char* d, std::size_t n) {
  return Blocks<V128>(op, form, a, b, c, d, n);
}

}  // namespace arith
}  // namespace mirel
#endif
