// Row kernels of the bit-image morphology and median, one table per
// instruction set.
//
// A kernel makes one output row of n bytes (n >= 1) from the rows above, at
// and below it (the edge row standing in for a row outside the ROI); out
// never aliases them. `valid` holds the pixel bits of the row's last byte;
// the kernels that keep the destination's pad bits give that byte the bits
// of `pad` outside them.
#ifndef MIREL_MORPHOLOGY_BIT_MORPHOLOGY_INTERNAL_H_
#define MIREL_MORPHOLOGY_BIT_MORPHOLOGY_INTERNAL_H_

namespace mirel {
namespace bitmorph {

using u8 = unsigned char;

struct RowKernels {
  using Row = void (*)(const u8* a, const u8* b, const u8* c, u8* out, int n, u8 valid, u8 pad);
  // Index 0 erosion (AND), 1 dilation (OR). Pixels outside the row count as
  // set in erosion and clear in dilation.
  Row horizontal[2];  // the 3-pixel line of row b
  Row vertical[2];    // a, b and c byte by byte, pad bits included
  Row square[2];      // the 3x3 square
  Row cross[2];       // the 5-pixel cross
  // The 3x3 median, the ROI's edge pixels repeated outside it.
  Row median;
};

// The scalar table, and the one for an EGetMMX() value (read by the caller)
// and the thread's instruction-set level.
const RowKernels& ScalarRowKernels();
const RowKernels& PickRowKernels(int mmx);
#if defined(MIREL_X86_SIMD)
const RowKernels& Sse2RowKernels();
const RowKernels& Avx2RowKernels();
const RowKernels& Avx512RowKernels();
#endif

}  // namespace bitmorph
}  // namespace mirel

#endif  // MIREL_MORPHOLOGY_BIT_MORPHOLOGY_INTERNAL_H_
