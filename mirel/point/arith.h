// Pixelwise arithmetic and logic: ImgCopy and ImgOper.
//
// One operation code (ARITH_LOGIC_OPERATIONS) is applied to two operands,
// each an image or a constant, giving a destination image. Every form
// returns void and reports through the thread's error state:
//
//   1400  a source or the destination is null or void
//   1403  the sizes differ
//   1003  the operation is named in the form's list of refused operations
//   32767 the form lets the operation through but its worker has no case
//         for it (for example ALO_COPY on the "Image, Const" forms)
//
// A failed call leaves the destination untouched. Each form traces its own
// label on failure. Results:
//
//   * Values compare unsigned. Byte results saturate as the operation says
//     (add caps at 255, subtract at 0, multiply at 255, divide by 0 gives
//     255, modulo by 0 gives 0); EBW16 results cap at 65535.
//   * Shift counts are taken modulo 32: a count of 8 to 31 clears a byte, 32
//     leaves it unchanged. Shifts need an image and a constant.
//   * On EC24 every operation acts on the three components separately; the
//     "mixed" forms (EBW8 with EC24) use the grey value for all three.
//   * ALO_SET_WHERE_ZERO / ALO_SET_WHERE_NONZERO write only the pixels (or
//     components) whose first operand meets the condition.
//   * ALO_OVERLAY paints with the thread's overlay colour (see overlay.h)
//     where the form uses a grey mask, or with the colour source pixel.
//     On the "BW8 Image, Image" form it reads and writes the rows as triples
//     of bytes and so touches up to two bytes behind a row whose width is
//     not a multiple of 3: do not use it there.
//   * EBW16 ALO_SCALED_DIVIDE: image,image gives min((a << 8) / b, 65535);
//     image,constant min((a << 16) / b, 65535); constant,image
//     a << (16 / b), 65535 past 65535 and 0 when bit 31 is set; b == 0 gives
//     65535 in all three.
//   * EBW16 with EBW8, ALO_MULTIPLY: a product up to 65535 gives 65535, a
//     larger one keeps its low 16 bits.
//
// Source and destination may be the same ROI; each pixel is read before it
// is written. Partly overlapping, shifted ROIs on one image are not supported.
//
// Beware literal 0 as a constant operand: it converts to a null image
// pointer before it converts to a pixel. Write EBW8(0) instead.
#ifndef MIREL_POINT_ARITH_H_
#define MIREL_POINT_ARITH_H_

#include <cstddef>
#include <type_traits>

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

// a is the first operand, b the second, M the pixel's maximum.
enum ARITH_LOGIC_OPERATIONS : int {
  ALO_COPY = 0,                // a
  ALO_INVERT = 1,              // M - a
  ALO_ADD = 2,                 // min(a + b, M)
  ALO_SUBTRACT = 3,            // max(a - b, 0)
  ALO_MULTIPLY = 4,            // min(a * b, M)
  ALO_DIVIDE = 5,              // a / b; M when b == 0
  ALO_MODULO = 6,              // a % b; 0 when b == 0
  ALO_SHIFT_LEFT = 7,          // a << (b mod 32), truncated
  ALO_SHIFT_RIGHT = 8,         // a >> (b mod 32)
  ALO_AVERAGE = 9,             // (a + b) >> 1
  ALO_HALF_DIFFERENCE = 10,    // (a + (M - b)) >> 1
  ALO_SCALED_MULTIPLY = 11,    // (a * b) >> 8, on EBW16 >> 16
  ALO_SCALED_DIVIDE = 12,      // min((a << 8) / b, 255); 255 when b == 0
  ALO_BIT_AND = 13,
  ALO_BIT_OR = 14,
  ALO_BIT_XOR = 15,
  ALO_LOGICAL_AND = 16,        // M when both are non-zero
  ALO_LOGICAL_OR = 17,         // M when either is non-zero
  ALO_LOGICAL_XOR = 18,        // M when exactly one is non-zero
  ALO_MIN = 19,
  ALO_MAX = 20,
  ALO_SET_WHERE_ZERO = 21,     // where a == 0 the destination takes b
  ALO_SET_WHERE_NONZERO = 22,  // where a != 0 the destination takes b
  ALO_EQUAL = 23,              // M when a == b, else 0
  ALO_NOT_EQUAL = 24,
  ALO_GREATER_OR_EQUAL = 25,
  ALO_LESS_OR_EQUAL = 26,
  ALO_GREATER = 27,
  ALO_LESS = 28,
  ALO_WRAPPED_ADD = 29,        // EBW16 with EBW8 only: (a + b) mod 65536
  ALO_WRAPPED_SUBTRACT = 30,   // EBW16 with EBW8 only: (a - b) mod 65536
  ALO_ABS_DIFFERENCE = 33,     // |a - b|
  ALO_OVERLAY = 34,
};
static_assert(sizeof(ARITH_LOGIC_OPERATIONS) == 4, "ARITH_LOGIC_OPERATIONS is held in 32 bits");

// ---------------------------------------------------------------- copy
MIREL_API void ImgCopy(EBW8 value, EROI<EBW8>* dst);
MIREL_API void ImgCopy(const EROI<EBW8>* src, EROI<EBW8>* dst);
MIREL_API void ImgCopy(EBW16 value, EROI<EBW16>* dst);
MIREL_API void ImgCopy(const EROI<EBW16>* src, EROI<EBW16>* dst);
MIREL_API void ImgCopy(EBW32 value, EROI<EBW32>* dst);
MIREL_API void ImgCopy(const EROI<EBW32>* src, EROI<EBW32>* dst);
MIREL_API void ImgCopy(EC15 value, EROI<EC15>* dst);
MIREL_API void ImgCopy(const EROI<EC15>* src, EROI<EC15>* dst);
MIREL_API void ImgCopy(EC16 value, EROI<EC16>* dst);
MIREL_API void ImgCopy(const EROI<EC16>* src, EROI<EC16>* dst);
MIREL_API void ImgCopy(EC24 value, EROI<EC24>* dst);
MIREL_API void ImgCopy(const EROI<EC24>* src, EROI<EC24>* dst);

// ---------------------------------------------------------------- EBW8
// ALO_COPY only.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW8 value, EROI<EBW8>* dst);
// ALO_COPY, ALO_INVERT.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* src, EROI<EBW8>* dst);
// Refuses 7, 8, 16, 17, 18, 21, 22.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW8 a, const EROI<EBW8>* b, EROI<EBW8>* dst);
// Refuses 16, 17, 18.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, EBW8 b, EROI<EBW8>* dst);
// Refuses 7, 8.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EBW8>* b,
                       EROI<EBW8>* dst);

// ---------------------------------------------------------------- EC24
// ALO_COPY, ALO_INVERT, ALO_OVERLAY (non-zero grey paints the overlay colour).
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* src, EROI<EC24>* dst);
// ALO_COPY only.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EC24 value, EROI<EC24>* dst);
// ALO_COPY, ALO_INVERT, ALO_OVERLAY (non-black source pixels are copied).
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* src, EROI<EC24>* dst);
// ALO_OVERLAY only: overlay colour where b is non-zero, else grey a.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EBW8>* b,
                       EROI<EC24>* dst);
// Refuses 7, 8, 16, 17, 18, 21, 22.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EC24 a, const EROI<EC24>* b, EROI<EC24>* dst);
// Refuses 16, 17, 18.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* a, EC24 b, EROI<EC24>* dst);
// Refuses 7, 8.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* a, const EROI<EC24>* b,
                       EROI<EC24>* dst);
// Refuses 7, 8. The grey value stands for all three components.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EC24>* b,
                       EROI<EC24>* dst);
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* a, const EROI<EBW8>* b,
                       EROI<EC24>* dst);

// ---------------------------------------------------------------- mixed depth
// ALO_ADD, ALO_SUBTRACT, ALO_MULTIPLY, ALO_DIVIDE.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EBW8>* b,
                       EROI<EBW16>* dst);
// ALO_ADD, ALO_SUBTRACT, ALO_MULTIPLY, ALO_DIVIDE, ALO_WRAPPED_ADD,
// ALO_WRAPPED_SUBTRACT.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* a, const EROI<EBW8>* b,
                       EROI<EBW16>* dst);

// ---------------------------------------------------------------- EBW16
// ALO_COPY only.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW16 value, EROI<EBW16>* dst);
// ALO_COPY, ALO_INVERT.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* src, EROI<EBW16>* dst);
// Refuses 7, 8, 16, 17, 18, 21, 22.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW16 a, const EROI<EBW16>* b, EROI<EBW16>* dst);
// Refuses 16, 17, 18.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* a, EBW16 b, EROI<EBW16>* dst);
// Refuses 7, 8.
MIREL_API void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* a, const EROI<EBW16>* b,
                       EROI<EBW16>* dst);

// ---------------------------------------------------------------- plain 0
// Where a pixel constant and an image may stand in the same place, a plain 0
// (or nullptr) would convert to a null image, not to a constant, and the call
// would fail at run time with 1400. These templates catch such calls at
// compile time; a constant written with its pixel type, as EBW8(0), and any
// image pointer are unaffected. Integer variables are caught too: write
// EBW8(v) for them as well.
namespace mirel {
namespace detail {
template <class L>
struct IsPlainZero
    : std::integral_constant<bool, std::is_same<L, int>::value || std::is_same<L, unsigned>::value ||
                                       std::is_same<L, long>::value || std::is_same<L, unsigned long>::value ||
                                       std::is_same<L, long long>::value ||
                                       std::is_same<L, unsigned long long>::value ||
                                       std::is_same<L, std::nullptr_t>::value> {};
template <class L>
using IfPlainZero = std::enable_if_t<IsPlainZero<L>::value, int>;
}  // namespace detail
}  // namespace mirel

#define MIREL_PLAIN_ZERO_MESSAGE \
  "a plain 0 here is taken for a null image: write the constant with its pixel type, as EBW8(0)"
template <class P, class L, mirel::detail::IfPlainZero<L> = 0>
void ImgCopy(L, EROI<P>*) {
  static_assert(sizeof(L) == 0, MIREL_PLAIN_ZERO_MESSAGE);
}
template <class P, class L, mirel::detail::IfPlainZero<L> = 0>
void ImgOper(ARITH_LOGIC_OPERATIONS, L, EROI<P>*) {
  static_assert(sizeof(L) == 0, MIREL_PLAIN_ZERO_MESSAGE);
}
template <class P, class Q, class L, mirel::detail::IfPlainZero<L> = 0>
void ImgOper(ARITH_LOGIC_OPERATIONS, L, const EROI<P>*, EROI<Q>*) {
  static_assert(sizeof(L) == 0, MIREL_PLAIN_ZERO_MESSAGE);
}
template <class P, class Q, class L, mirel::detail::IfPlainZero<L> = 0>
void ImgOper(ARITH_LOGIC_OPERATIONS, const EROI<P>*, L, EROI<Q>*) {
  static_assert(sizeof(L) == 0, MIREL_PLAIN_ZERO_MESSAGE);
}
#undef MIREL_PLAIN_ZERO_MESSAGE

#endif  // MIREL_POINT_ARITH_H_
