// Block routines of the colour and float conversions, one set per
// instruction set.
//
// Each routine converts a row of n pixels by whole blocks from its start, the
// last block placed over the row's end so that it overlaps the one before:
// a block writes each pixel only from its source, so a pixel written twice
// gets the same bytes twice. It returns the pixels done: n, or 0 for a row
// shorter than one block, which the caller converts pixel by pixel with the
// scalar formula that the blocks reproduce bit for bit.
#ifndef MIREL_POINT_COLOR_CONVERT_INTERNAL_H_
#define MIREL_POINT_COLOR_CONVERT_INTERNAL_H_

namespace mirel {
namespace cvt {

// Routines take the row's first source byte and first destination byte.
using BlockFn = int (*)(const unsigned char* s, unsigned char* d, int n);

struct Blocks {
  BlockFn c24ToBw8;  // ((c0 + c1 + c2) * 85) >> 8
  BlockFn bw8ToC24;  // v, v, v
  BlockFn bw8ToF32;  // (float)v
};

// Byte shuffles that write each of 16 grey pixels three times: the sources
// of output bytes 0-15, 16-31 and 32-47.
alignas(16) inline constexpr unsigned char kTriple[48] = {
    0,  0,  0,  1,  1,  1,  2,  2,  2,  3,  3,  3,  4,  4,  4,  5,  5,  5,  6,  6,  6,  7,  7,  7,
    8,  8,  8,  9,  9,  9,  10, 10, 10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15};

#if defined(MIREL_X86_SIMD)
Blocks BlocksSse2();
Blocks BlocksAvx2();
#endif

}  // namespace cvt
}  // namespace mirel

#endif  // MIREL_POINT_COLOR_CONVERT_INTERNAL_H_
