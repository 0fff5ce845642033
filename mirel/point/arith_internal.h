// Block stretches of the byte workers of ImgOper and ImgCopy.
//
// A worker walks a row as a scalar head up to an 8-byte aligned destination,
// a stretch of whole 8-byte blocks and a scalar tail. The block stretch is
// handed to one of the routines below, picked once per call by instruction
// set. Within the stretch they process the widest vectors they can, then
// 16 and 8 bytes; each byte of the result is the same as the scalar formula.
#ifndef MIREL_POINT_ARITH_INTERNAL_H_
#define MIREL_POINT_ARITH_INTERNAL_H_

#include <cstddef>

namespace mirel {
namespace arith {

// How the two operands of a block routine are given.
enum BlockForm : int {
  kImageImage = 0,  // a and b are rows
  kConstImage = 1,  // a is the constant c, b is a row
  kImageConst = 2,  // a is a row, b is the constant c
};

// Processes n bytes (a multiple of 8) of the operation `op` and returns
// true, or returns false, touching nothing, when `op` has no block form.
// The unused operand pointer must still point to readable memory of n bytes
// (callers pass the destination).
using BlockFn = bool (*)(int op, int form, const unsigned char* a, const unsigned char* b,
                         unsigned char c, unsigned char* d, std::size_t n);

// True for the operations that have a block form.
inline bool HasBlockForm(int op) {
  switch (op) {
    case 0: case 1: case 2: case 3: case 4: case 9: case 10: case 11:
    case 13: case 14: case 15: case 16: case 17: case 18: case 19: case 20:
    case 21: case 22: case 23: case 24: case 25: case 26: case 27: case 28:
    case 33:
      return true;
    default:
      return false;
  }
}

#if defined(MIREL_X86_SIMD)
bool BlocksSse2(int op, int form, const unsigned char* a, const unsigned char* b, unsigned char c,
                unsigned char* d, std::size_t n);
bool BlocksAvx2(int op, int form, const unsigned char* a, const unsigned char* b, unsigned char c,
                unsigned char* d, std::size_t n);
bool BlocksAvx512(int op, int form, const unsigned char* a, const unsigned char* b, unsigned char c,
                  unsigned char* d, std::size_t n);
#endif

}  // namespace arith
}  // namespace mirel

#endif  // MIREL_POINT_ARITH_INTERNAL_H_
