// Single-precision transcendental functions that give the same bits on
// every platform.
//
// The C libraries' float versions (sinf, expf, atan2f, ...) are not
// correctly rounded and round differently from one library to the next
// (glibc and the Windows runtime disagree on a sixth of all atan2f inputs).
// These compute in double, where the libraries agree far below a float's
// last bit, and round once to float: the nearest float to the true value.
#ifndef MIREL_FOUNDATION_FLOAT_MATH_INTERNAL_H_
#define MIREL_FOUNDATION_FLOAT_MATH_INTERNAL_H_

#include <cmath>

namespace mirel {

inline float Sin(float x) { return static_cast<float>(std::sin(static_cast<double>(x))); }
inline float Cos(float x) { return static_cast<float>(std::cos(static_cast<double>(x))); }
inline float Exp(float x) { return static_cast<float>(std::exp(static_cast<double>(x))); }
inline float Log(float x) { return static_cast<float>(std::log(static_cast<double>(x))); }
inline float Atan2(float y, float x) {
  return static_cast<float>(std::atan2(static_cast<double>(y), static_cast<double>(x)));
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_FLOAT_MATH_INTERNAL_H_
