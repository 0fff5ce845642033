// Internal pieces of thinning, thickening and the distance map: the pattern
// words, the row jobs and the row routines of each instruction set.
#ifndef MIREL_MORPHOLOGY_THINNING_INTERNAL_H_
#define MIREL_MORPHOLOGY_THINNING_INTERNAL_H_

#include <cstdint>

#include "mirel/filter/kernel.h"
#include "mirel/foundation/error.h"

namespace mirel {
namespace thinning {

// Neighbourhood word: nine bits, the left column in the top bits.
//
//          left  centre  right
//   top     8      5       2
//   middle  7      4       1
//   bottom  6      3       0
//
// Moving one pixel right shifts the word left by 3 and brings the new column
// into bits 2 to 0 (top << 2 | middle << 1 | bottom).
constexpr unsigned kWordBits = 0x1FF;
constexpr unsigned kTopRow = 0x124;
constexpr unsigned kBottomRow = 0x049;
constexpr unsigned kLeftColumn = 0x1C0;
constexpr unsigned kRightColumn = 0x007;

// The pattern read from a kernel: a pixel fits when (word & mask) ==
// pattern. `leftAsPattern` and `sidesAsPattern` say whether positions
// outside the ROI count as matching (left column, other sides) or read as
// clear.
struct Pattern {
  unsigned mask;
  unsigned pattern;
  bool leftAsPattern;
  bool sidesAsPattern;
};

// Checks the kernel, the rotation and the request in the order of the
// operation's error list and reads the pattern. On failure sets the code
// and returns false.
bool ReadPattern(const EKernel* kernel, int rotation, int iterations, Pattern* out);

// The mask and pattern turned by 45 degrees: rotation 1 clockwise, 2 the
// other way, 0 unchanged. The centre bit stays.
unsigned Turn(unsigned word, int rotation);

// The masks of row y of h: those of the first pixel, the interior, the last
// pixel and of a row of one pixel, with the positions outside the ROI that
// count as matching taken out.
struct RowMasks {
  unsigned first, mid, last, only;
};
RowMasks MasksOfRow(const Pattern& pat, int y, int h);

// The loop of passes. pass(first, pattern) runs one pass with the pattern of
// that pass and tells whether it changed a pixel (the first pass counts
// every pixel that does not fit). `iterations` in: the most passes, 0 for
// `width`, in full turns of eight with a rotation; out: the passes run, or
// the full turns.
template <class PassFn>
void RunPasses(Pattern pat, int rotation, int width, int& iterations, PassFn&& pass) {
  const int request = iterations;
  iterations = 0;
  long long limit = request == 0 ? width : request;
  if (rotation != 0) limit *= 8;
  int still = 8;  // passes of the current full turn still to do nothing
  for (long long n = 0; n < limit; ++n) {
    ++iterations;
    const bool changed = pass(n == 0, static_cast<const Pattern&>(pat));
    if (rotation == 0) {
      if (!changed) break;
      continue;
    }
    if (n % 8 == 0) still = 8;
    if (!changed) --still;
    pat.mask = Turn(pat.mask, rotation);
    pat.pattern = Turn(pat.pattern, rotation);
    if (still == 0) break;
  }
  if (rotation != 0) iterations >>= 3;
}

// One row of a pass. a, b, c: the rows above, at and below as they were
// before the pass (a row outside the ROI is a row of zeros); out: the
// destination row, which may be the row that b was copied from. The masks
// are those of the first pixel, the interior, the last pixel and of a row
// of one pixel, with the positions that count as matching taken out.
template <class T>
struct HitRow {
  const T* a;
  const T* b;
  const T* c;
  T* out;
  int width;
  unsigned maskFirst, maskMid, maskLast, maskOnly;
  unsigned pattern;
  bool thicken;
  bool first;  // the pass that reads the source and writes every pixel
};

// One row of a pass over packed bits (first pixel in the top bit of the
// first byte). a, b, c: clean copies of the rows above, at and below as they
// were before the pass: the row's bytes with the bits behind its last pixel
// cleared, at least one zero byte before them and kBitMargin after (a row
// outside the ROI is all zeros). fail and out: scratch rows of as many
// bytes, which receive the pixels that miss the pattern and the new pixels.
constexpr int kBitMargin = 64;
struct BitRow {
  const std::uint8_t* a;
  const std::uint8_t* b;
  const std::uint8_t* c;
  std::uint8_t* fail;
  std::uint8_t* out;
  int width;
  RowMasks masks;
  unsigned pattern;
  bool thicken;
  bool first;
};

// The row routines of one instruction set.
struct Routines {
  // A hit-or-miss row of 8-bit pixels; true when a pixel changed.
  bool (*hitRow)(const HitRow<std::uint8_t>& row);
  // The same on a row of bits.
  bool (*bitRow)(const BitRow& row);
  // The distance map's passes over one row, in 8-bit values (every value
  // of the map is at most 255; see distance.cpp). limit8 is the ceiling
  // cut to 255.
  //   forward:  s the source row, above the forward row above (null on the
  //             first row), d8 the row's forward values, d16 the destination row.
  //   backward: below the final row below (null on the last row), d16 the
  //             destination row holding the forward values, which become
  //             final; d8 receives them too.
  void (*forward)(const std::uint8_t* s, const std::uint8_t* above, std::uint8_t* d8, std::uint16_t* d16,
                  int width, unsigned limit8);
  void (*backward)(const std::uint8_t* below, std::uint8_t* d8, std::uint16_t* d16, int width, unsigned limit8);
};

// The routines for the calling thread: reads EGetMMX() once.
const Routines& ActiveRoutines();
const Routines& ScalarRoutines();
#if defined(MIREL_X86_SIMD)
const Routines& Sse2Routines();
const Routines& Avx2Routines();
const Routines& Avx512Routines();
#endif

}  // namespace thinning
}  // namespace mirel

#endif  // MIREL_MORPHOLOGY_THINNING_INTERNAL_H_
