// Row kernels of the bit-image morphology with AVX-512: 512 pixels a vector.
#include "mirel/morphology/bit_morphology_blocks_internal.h"

namespace mirel {
namespace bitmorph {
const RowKernels& Avx512RowKernels() {
  static const RowKernels k = blocks::MakeKernels<bits::Lanes512, false>();
  return k;
}
}  // namespace bitmorph
}  // namespace mirel
