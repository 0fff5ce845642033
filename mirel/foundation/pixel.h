// Pixel structures and the small value types of the foundation.
//
// Every pixel is a plain, trivially copyable structure whose size is binding:
// image memory is read through typed row pointers. Multi-byte values are
// little-endian in memory.
//
//   EBW1       one bit in a packed row; a byte when passed by value
//   EBW8       unsigned 8-bit grey        <-> unsigned char
//   EBW16      unsigned 16-bit grey       <-> unsigned short
//   EBW32      unsigned 32-bit grey       <-> unsigned int
//   EC15       5-5-5 colour in a 16-bit word (bit 15 unused)
//   EC16       5-6-5 colour in a 16-bit word
//   EC24       three bytes, components 0, 1, 2 in that order
//   EC24A      EC24 followed by an alpha byte
//   EFLOAT32   one float                  <-> float / double
//   EFLOAT64   one double                 <-> double / float
//   EComplex64 real part then imaginary part, two floats
//
// Colour components are never named by meaning: they are indexed 0, 1, 2.
#ifndef MIREL_FOUNDATION_PIXEL_H_
#define MIREL_FOUNDATION_PIXEL_H_

#include <type_traits>

#include "mirel/foundation/export.h"

struct EBW1 {
  unsigned char value;
  EBW1() = default;
  constexpr EBW1(unsigned char v) : value(v) {}
  constexpr operator unsigned char() const { return value; }
};

struct EBW8 {
  unsigned char value;
  EBW8() = default;
  constexpr EBW8(unsigned char v) : value(v) {}
  constexpr operator unsigned char() const { return value; }
};

struct EBW16 {
  unsigned short value;
  EBW16() = default;
  constexpr EBW16(unsigned short v) : value(v) {}
  constexpr operator unsigned short() const { return value; }
};

struct EBW32 {
  unsigned int value;
  EBW32() = default;
  constexpr EBW32(unsigned int v) : value(v) {}
  constexpr operator unsigned int() const { return value; }
};

// 15-bit colour: component 0 in bits 0-4, 1 in bits 5-9, 2 in bits 10-14.
struct EC15 {
  unsigned short word;
  EC15() = default;
  constexpr explicit EC15(unsigned short w) : word(w) {}
  constexpr EC15(unsigned c0, unsigned c1, unsigned c2)
      : word(static_cast<unsigned short>((c0 & 31u) | ((c1 & 31u) << 5) | ((c2 & 31u) << 10))) {}
  constexpr unsigned operator[](int i) const { return (word >> (5 * i)) & 31u; }
  constexpr unsigned short Word() const { return word; }
};

// 16-bit colour: component 0 in bits 0-4, 1 in bits 5-10, 2 in bits 11-15.
struct EC16 {
  unsigned short word;
  EC16() = default;
  constexpr explicit EC16(unsigned short w) : word(w) {}
  constexpr EC16(unsigned c0, unsigned c1, unsigned c2)
      : word(static_cast<unsigned short>((c0 & 31u) | ((c1 & 63u) << 5) | ((c2 & 31u) << 11))) {}
  constexpr unsigned operator[](int i) const {
    return i == 0 ? (word & 31u) : i == 1 ? ((word >> 5) & 63u) : ((word >> 11) & 31u);
  }
  constexpr unsigned short Word() const { return word; }
};

struct EC24 {
  unsigned char c[3];
  EC24() = default;
  constexpr EC24(unsigned char c0, unsigned char c1, unsigned char c2) : c{c0, c1, c2} {}
  constexpr unsigned char operator[](int i) const { return c[i]; }
  unsigned char& operator[](int i) { return c[i]; }
};

struct EC24A {
  unsigned char c[3];
  unsigned char alpha;
  EC24A() = default;
  constexpr EC24A(unsigned char c0, unsigned char c1, unsigned char c2, unsigned char a = 0)
      : c{c0, c1, c2}, alpha(a) {}
  constexpr unsigned char operator[](int i) const { return c[i]; }
  unsigned char& operator[](int i) { return c[i]; }
};

struct EFLOAT32 {
  float value;
  EFLOAT32() = default;
  template <class U, class = std::enable_if_t<std::is_arithmetic<U>::value>>
  constexpr EFLOAT32(U v) : value(static_cast<float>(v)) {}
  constexpr operator float() const { return value; }
};

struct EFLOAT64 {
  double value;
  EFLOAT64() = default;
  template <class U, class = std::enable_if_t<std::is_arithmetic<U>::value>>
  constexpr EFLOAT64(U v) : value(static_cast<double>(v)) {}
  constexpr operator double() const { return value; }
};

struct EComplex64 {
  float re;
  float im;
  EComplex64() = default;
  constexpr EComplex64(float r, float i) : re(r), im(i) {}
};

#define MIREL_CHECK_PIXEL(T, N)                                                      \
  static_assert(sizeof(T) == (N), #T " has a binding width of " #N " bytes");        \
  static_assert(std::is_trivially_copyable<T>::value, #T " must be trivially copyable"); \
  static_assert(std::is_standard_layout<T>::value, #T " must be standard layout")
MIREL_CHECK_PIXEL(EBW1, 1);
MIREL_CHECK_PIXEL(EBW8, 1);
MIREL_CHECK_PIXEL(EBW16, 2);
MIREL_CHECK_PIXEL(EBW32, 4);
MIREL_CHECK_PIXEL(EC15, 2);
MIREL_CHECK_PIXEL(EC16, 2);
MIREL_CHECK_PIXEL(EC24, 3);
MIREL_CHECK_PIXEL(EC24A, 4);
MIREL_CHECK_PIXEL(EFLOAT32, 4);
MIREL_CHECK_PIXEL(EFLOAT64, 8);
MIREL_CHECK_PIXEL(EComplex64, 8);
#undef MIREL_CHECK_PIXEL

// Per-component gains and offsets of colour operations. The constructor
// without arguments leaves the three values unset.
struct EColor {
  float c[3];
  EColor() {}
  EColor(float c0, float c1, float c2) : c{c0, c1, c2} {}
  float& operator[](int i) { return c[i]; }
  float operator[](int i) const { return c[i]; }
};

class EMeasurementUnit {
 public:
  explicit EMeasurementUnit(float magnitude = 1.0f) : magnitude_(magnitude) {}
  float GetMagnitude() const { return magnitude_; }
  void SetMagnitude(float magnitude) { magnitude_ = magnitude; }

 private:
  float magnitude_;
};

class EDimensionalValue {
 public:
  explicit EDimensionalValue(float value = 0.0f) : value_(value) {}
  float GetValue() const { return value_; }
  void SetValue(float value) { value_ = value; }

 private:
  float value_;
};

// Pixel kinds. Only these values carry meaning; 8 is a second name for
// 32-bit grey. Any other value is refused where the library switches on it.
enum E_IMAGE_TYPES : int {
  E_IMAGE_TYPE_BW8 = 1,
  E_IMAGE_TYPE_BW16 = 2,
  E_IMAGE_TYPE_BW32 = 3,
  E_IMAGE_TYPE_C24 = 6,
  E_IMAGE_TYPE_BW32_ALIAS = 8,
};

// Colour system carried by 24-bit colour ROIs. E_COLOR_SYSTEM_RGB (4) is the
// system in which a 24-bit image is plain display colour.
enum E_COLOR_SYSTEM : int {
  E_COLOR_SYSTEM_NONE = 0,
  E_COLOR_SYSTEM_RGB = 4,
};

#endif  // MIREL_FOUNDATION_PIXEL_H_
