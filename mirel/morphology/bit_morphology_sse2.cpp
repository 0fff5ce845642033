// Row kernels of the bit-image morphology with SSE2: 128 pixels a vector.
#include "mirel/morphology/bit_morphology_internal.h"

#if defined(MIREL_X86_SIMD)
#include "mirel/morphology/bit_morphology_blocks_internal.h"

namespace mirel {
namespace bitmorph {
const RowKernels& Sse2RowKernels() {
  static const RowKernels k = blocks::MakeKernels<bits::Lanes128, false>();
  return k;
}
}  // namespace bitmorph
}  // namespace mirel
#endif
