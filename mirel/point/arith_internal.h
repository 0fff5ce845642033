// Block stretches of the byte workers of ImgOper and ImgCopy.
//
// A worker hands the whole 8-byte blocks of its rows to one of the routines
// below, picked once per call by instruction set, and runs the last bytes
// of each row as scalar code. Within a row the routines process the widest
// vectors they can, then 16 and 8 bytes; each byte of the result is the
// same as the scalar formula.
#ifndef MIREL_POINT_ARITH_INTERNAL_H_
#define MIREL_POINT_ARITH_INTERNAL_H_

#include <cstddef>

#include "mirel/foundation/stream_internal.h"

namespace mirel {
namespace arith {

// How the two operands of a block routine are given.
enum BlockForm : int {
  kImageImage = 0,  // a and b are rows
  kConstImage = 1,  // a is the constant c, b is a row
  kImageConst = 2,  // a is a row, b is the constant c
};

// `rows` rows of n bytes each (n a multiple of 8), every operand `pitch`
// bytes from one row to the next. The operand that is the constant is not
// read, but its pointer and pitch must still be those of readable rows
// (callers pass the destination's).
struct BlockRows {
  const unsigned char* a;
  std::ptrdiff_t a_pitch;
  const unsigned char* b;
  std::ptrdiff_t b_pitch;
  unsigned char c;
  unsigned char* d;
  std::ptrdiff_t d_pitch;
  std::size_t n;
  int rows;
  StoreAhead ahead;  // write hints over the destination's rows
};

// Processes the rows of one operation in one operand form, top row first.
// The row walk lives in the routine, so a frame costs one call.
using BlockRun = void (*)(const BlockRows& r);

#if defined(MIREL_X86_SIMD)
// The block routine of `op` in `form` (16-byte vectors), or null when the
// operation has no block form. Picked once per call.
BlockRun PickSse2(int op, int form);
#endif

}  // namespace arith
}  // namespace mirel

#endif  // MIREL_POINT_ARITH_INTERNAL_H_
