// Per-thread error state, error codes and the two exception types.
//
// Every exported operation reports failure through the calling thread's
// error state: a code (E_ERRORS) and a trace of labels. An operation starts
// by clearing the state, sets a code on the first failed check and appends
// its label; the caller reads the code with EGetError() and the labels,
// innermost first, with EGetErrorTrace(). A failed call never prevents later
// calls, since each starts with EOk().
//
// Exceptions never reach the caller of a plain operation. Only the exported
// "...Aligned" bit-image forms throw Corvane::Talmeer::Exception.
#ifndef MIREL_FOUNDATION_ERROR_H_
#define MIREL_FOUNDATION_ERROR_H_

#include "mirel/foundation/export.h"

enum E_ERRORS : int {
  E_OK = 0,
  E_WARNING_POINT_OUTSIDE = 106,
  E_ERROR_BAD_OPERATION = 1003,
  E_ERROR_BAD_ARGUMENT = 1007,
  E_ERROR_BAD_CONTOUR_MODE = 1009,
  E_ERROR_BAD_FIRST_INDEX = 1010,
  E_ERROR_INDEX_OUT_OF_RANGE = 1011,
  E_ERROR_BAD_RANGE = 1012,
  E_ERROR_BAD_ARGUMENT_1 = 1013,
  E_ERROR_BAD_ARGUMENT_2 = 1014,
  E_ERROR_BAD_ARGUMENT_3 = 1015,
  E_ERROR_BAD_ARGUMENT_4 = 1016,
  E_ERROR_BAD_PYRAMID_TYPE = 1024,
  E_ERROR_SINGULAR_SYSTEM = 1050,
  E_ERROR_NO_SOLUTION = 1051,
  E_ERROR_FILE_OPEN = 1102,
  E_ERROR_FILE_READ = 1103,
  E_ERROR_FILE_WRITE = 1104,
  E_ERROR_VECTOR_FILE_HEADER = 1105,
  E_ERROR_FILE_CLOSE = 1106,
  E_ERROR_WORK_BUFFER = 1301,
  E_ERROR_OUT_OF_MEMORY = 1303,
  E_ERROR_VOID_IMAGE = 1400,
  E_ERROR_SIZE_MISMATCH = 1403,
  E_ERROR_WARP_OUTSIDE = 1405,
  E_ERROR_BAD_LAST_INDEX = 1411,
  E_ERROR_SAME_IMAGE = 1413,
  E_ERROR_IMAGE_TOO_SMALL = 1414,
  E_ERROR_BAD_PIXEL_TYPE = 1419,
  E_ERROR_BW1_NOT_ALIGNED = 1423,
  E_ERROR_CONTOUR_VECTOR = 1500,
  E_ERROR_CONTOUR_NOT_FOUND = 1501,
  E_ERROR_CONTOUR_START = 1502,
  E_ERROR_CONTOUR_EMPTY = 1504,
  E_ERROR_VOID_VECTOR = 1601,
  E_ERROR_VECTOR_LENGTH = 1602,
  E_ERROR_VECTOR_WRONG_TYPE = 1603,
  E_ERROR_VECTOR_TYPE = 1604,
  E_ERROR_VECTOR_GROUP = 1605,
  E_ERROR_VECTOR_DATA_TYPE = 1606,
  E_ERROR_VECTOR_KIND = 1607,
  E_ERROR_VECTOR_NO_TRANSITION = 1608,
  E_ERROR_VECTOR_CONVOLUTION = 1609,
  E_ERROR_VECTOR_GROUP_LENGTH = 1611,
  E_ERROR_VECTOR_SIZE = 1613,
  E_ERROR_KERNEL_VOID = 1700,
  E_ERROR_KERNEL_TYPE = 1701,
  E_ERROR_KERNEL_RECTIFIER = 1702,
  E_ERROR_KERNEL_SIZE = 1703,
  E_ERROR_KERNEL_NO_DATA = 1704,
  E_ERROR_WARP_MAP = 2200,
  E_ERROR_NOT_POWER_OF_TWO = 2600,
  E_ERROR_INTERNAL = 32767,
};
static_assert(sizeof(E_ERRORS) == 4, "E_ERRORS is held in 32 bits");

// Clears the code and the trace. Always returns 0 (E_OK), which doubles as
// the success value of the operations that return short int.
MIREL_API E_ERRORS EOk();
// The current code, with no side effect.
MIREL_API E_ERRORS EGetError();
// Sets the code and starts a new, empty trace. Returns the code.
MIREL_API E_ERRORS ESetError(E_ERRORS code);
// Appends a label to the trace and returns the current code, which doubles as
// the failure value of the short int operations. Harmless when no error is
// set: the label is then not recorded.
MIREL_API E_ERRORS ETraceError(const char* label);
// A sentence describing the code; never null.
MIREL_API const char* EGetErrorText(E_ERRORS code);
// The labels of the current trace, innermost first, separated by " <- ".
// Empty when the state is clear. Valid until the thread's next call into the
// error state.
MIREL_API const char* EGetErrorTrace();
// Non-zero when the fast (SIMD) paths may run on this thread.
MIREL_API int EGetMMX();

namespace Corvane {

class MIREL_API Exception {
 public:
  Exception() = default;
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  virtual ~Exception();
  virtual const char* Text() const;
};

namespace Talmeer {

class MIREL_API Exception : public Corvane::Exception {
 public:
  explicit Exception(E_ERRORS code) : code_(code) {}
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;
  const char* Text() const override;
  E_ERRORS GetCode() const { return code_; }

 private:
  E_ERRORS code_;
};

}  // namespace Talmeer
}  // namespace Corvane

#endif  // MIREL_FOUNDATION_ERROR_H_
