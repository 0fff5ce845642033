#include "mirel/foundation/error.h"

#include <cstring>

namespace {

// The trace is a fixed buffer so that reporting an error never allocates.
// Labels that do not fit are dropped whole; the code is always kept.
constexpr std::size_t kTraceCapacity = 1024;
constexpr char kSeparator[] = " <- ";

struct ErrorState {
  E_ERRORS code = E_OK;
  std::size_t length = 0;
  char trace[kTraceCapacity] = {};
};

thread_local ErrorState t_state;

struct CodeText {
  E_ERRORS code;
  const char* text;
};

constexpr CodeText kTexts[] = {
    {E_OK, "No error."},
    {E_WARNING_POINT_OUTSIDE, "A point lies outside the image."},
    {E_ERROR_BAD_OPERATION, "The operation is not allowed for these operands."},
    {E_ERROR_BAD_ARGUMENT, "An argument is out of range."},
    {E_ERROR_BAD_CONTOUR_MODE, "The contour mode is not a known value."},
    {E_ERROR_BAD_FIRST_INDEX, "The last index of the range is below the first."},
    {E_ERROR_INDEX_OUT_OF_RANGE, "An index is out of range."},
    {E_ERROR_BAD_RANGE, "A bound or coordinate is out of range."},
    {E_ERROR_BAD_ARGUMENT_1, "The first numeric argument is out of range."},
    {E_ERROR_BAD_ARGUMENT_2, "The second numeric argument is out of range."},
    {E_ERROR_BAD_ARGUMENT_3, "The third numeric argument is out of range."},
    {E_ERROR_BAD_ARGUMENT_4, "The fourth numeric argument is out of range."},
    {E_ERROR_BAD_PYRAMID_TYPE, "The pyramid's pixel type does not match the source image."},
    {E_ERROR_SINGULAR_SYSTEM, "The system of equations is singular."},
    {E_ERROR_NO_SOLUTION, "There is no data to compute a solution from."},
    {E_ERROR_FILE_OPEN, "The file could not be opened."},
    {E_ERROR_FILE_READ, "Reading the file failed or ended early."},
    {E_ERROR_FILE_WRITE, "Writing the file failed."},
    {E_ERROR_VECTOR_FILE_HEADER, "The file's header does not match the expected format, type or version."},
    {E_ERROR_FILE_CLOSE, "Closing the file failed."},
    {E_ERROR_WORK_BUFFER, "A working buffer could not be allocated."},
    {E_ERROR_OUT_OF_MEMORY, "Out of memory."},
    {E_ERROR_VOID_IMAGE, "The image or ROI has no pixel memory."},
    {E_ERROR_SIZE_MISMATCH, "The images differ in width or height."},
    {E_ERROR_WARP_OUTSIDE, "A warp coordinate falls outside the source image."},
    {E_ERROR_BAD_LAST_INDEX, "The divisor is zero or the size is refused."},
    {E_ERROR_SAME_IMAGE, "Source and destination share pixels; the operation cannot run in place."},
    {E_ERROR_IMAGE_TOO_SMALL, "The image is too small to be halved."},
    {E_ERROR_BAD_PIXEL_TYPE, "The pixel type or level count is not supported."},
    {E_ERROR_BW1_NOT_ALIGNED, "The bit image does not start on a byte."},
    {E_ERROR_CONTOUR_VECTOR, "The contour vector is too small."},
    {E_ERROR_CONTOUR_NOT_FOUND, "No contour starts at the given point."},
    {E_ERROR_CONTOUR_START, "The contour's start point is refused."},
    {E_ERROR_CONTOUR_EMPTY, "The contour holds no point."},
    {E_ERROR_VOID_VECTOR, "The vector has no data."},
    {E_ERROR_VECTOR_LENGTH, "The vector is too short."},
    {E_ERROR_VECTOR_WRONG_TYPE, "The untyped vector is not of the kind this operation takes."},
    {E_ERROR_VECTOR_TYPE, "The vector is empty or the range does not fit it."},
    {E_ERROR_VECTOR_GROUP, "The vector's item width is not supported here."},
    {E_ERROR_VECTOR_DATA_TYPE, "The vector's data type is wrong."},
    {E_ERROR_VECTOR_KIND, "The vector is not of the required kind."},
    {E_ERROR_VECTOR_NO_TRANSITION, "No transition was found."},
    {E_ERROR_VECTOR_CONVOLUTION, "The vector convolution cannot run."},
    {E_ERROR_VECTOR_GROUP_LENGTH, "The vector's group length is not 1."},
    {E_ERROR_VECTOR_SIZE, "The vector does not have the required number of elements."},
    {E_ERROR_KERNEL_VOID, "The kernel has no coefficients."},
    {E_ERROR_KERNEL_TYPE, "The kernel has too few coefficients for this operation."},
    {E_ERROR_KERNEL_RECTIFIER, "The kernel's rectifier is zero."},
    {E_ERROR_KERNEL_SIZE, "The kernel's size is not supported here."},
    {E_ERROR_KERNEL_NO_DATA, "The kernel has no coefficient array."},
    {E_ERROR_WARP_MAP, "The warp map is unusable."},
    {E_ERROR_NOT_POWER_OF_TWO, "The size is not a power of two."},
    {E_ERROR_INTERNAL, "Internal error: the operation has no case for this value."},
};

}  // namespace

E_ERRORS EOk() {
  t_state.code = E_OK;
  t_state.length = 0;
  t_state.trace[0] = '\0';
  return E_OK;
}

E_ERRORS EGetError() { return t_state.code; }

E_ERRORS ESetError(E_ERRORS code) {
  t_state.code = code;
  t_state.length = 0;
  t_state.trace[0] = '\0';
  return code;
}

E_ERRORS ETraceError(const char* label) {
  ErrorState& s = t_state;
  if (s.code == E_OK || label == nullptr) return s.code;
  const std::size_t sep = s.length == 0 ? 0 : sizeof(kSeparator) - 1;
  const std::size_t n = std::strlen(label);
  if (s.length + sep + n < kTraceCapacity) {
    std::memcpy(s.trace + s.length, kSeparator, sep);
    std::memcpy(s.trace + s.length + sep, label, n);
    s.length += sep + n;
    s.trace[s.length] = '\0';
  }
  return s.code;
}

const char* EGetErrorTrace() { return t_state.trace; }

const char* EGetErrorText(E_ERRORS code) {
  for (const CodeText& entry : kTexts)
    if (entry.code == code) return entry.text;
  return "Unknown error code.";
}

namespace Corvane {
Exception::~Exception() = default;
const char* Exception::Text() const { return ""; }
namespace Talmeer {
Exception::~Exception() = default;
const char* Exception::Text() const { return EGetErrorText(code_); }
}  // namespace Talmeer
}  // namespace Corvane
