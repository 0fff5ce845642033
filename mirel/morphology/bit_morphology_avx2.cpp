// Row kernels of the bit-image morphology with AVX2: 256 pixels a vector.
#include "mirel/morphology/bit_morphology_blocks_internal.h"

namespace mirel {
namespace bitmorph {
const RowKernels& Avx2RowKernels() {
  static const RowKernels k = blocks::MakeKernels<bits::Lanes256, false>();
  return k;
}
}  // namespace bitmorph
}  // namespace mirel
