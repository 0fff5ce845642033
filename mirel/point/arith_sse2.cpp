// SSE2 block routines of the byte workers (the x86-64 baseline).
#include "mirel/point/arith_internal.h"

#if defined(MIREL_X86_SIMD)
#include "mirel/point/arith_simd_internal.h"

namespace mirel {
namespace arith {

BlockRun PickSse2(int op, int form) { return Pick<V128>(op, form); }

}  // namespace arith
}  // namespace mirel
#endif
