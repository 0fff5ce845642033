// Records of the typed vectors and their named vectors.
//
// Each record is a plain structure whose bytes are exactly those of its
// vector file, little-endian (offsets in bytes):
//
//   EPath       4   0 m_n16X, 2 m_n16Y                         (type code 0x06)
//   EBW8Path    6   0 m_n16X, 2 m_n16Y, 4 m_bw8Pixel, 5 pad    (0x07)
//   EC24Path    8   0 m_n16X, 2 m_n16Y, 4 m_c24Pixel, 7 pad    (0x08)
//   EPeak      20   0 m_un32Start, 4 m_un32Length, 8 m_f32Center,
//                   12 m_n32Amplitude, 16 m_n32Area            (0x09)
//   EBW16Path   6   0 m_n16X, 2 m_n16Y, 4 m_bw16Pixel          (0x0B)
//
// A file starts 45 <type> 01 <check>, e.g. 45 06 01 42 for paths (see
// mirel/foundation/vector.h for Save and Load). Pad bytes are written as they
// are in memory (zero in records made here) and mean nothing when read.
//
// EPathVector, EBW8PathVector, EBW16PathVector and EC24PathVector carry two
// reserved words and a closed flag, all zero after construction; a non-zero
// flag says the last point joins the first, for drawing. Their counted
// constructors reserve room for n points (capacity n, count 0).
//
// Path vectors draw themselves through a Corvane::DrawAdapter: each point
// (x, y) goes to the device pixel (floor((x + panX + 0.5) * zoomX),
// floor((y + panY + 0.5) * zoomY)), in single precision, so that the line
// runs through pixel centres; a zoom y of 0 takes zoom x. Consecutive points
// are joined by DrawLine in CurrentColor; a closed path starts at its last
// point, so that its first line joins the last point to the first. An empty
// path draws nothing, an open one of one point too. A null adapter is 1007,
// with the label "EPathVector::Draw", "EBW8PathVector::Draw",
// "EBW16PathVector::Draw" or "EC24PathVector::Draw". The HDC form (Windows
// only) draws through a GDIDrawAdapter made for the call.
//
// EPeaksVector(n) records n as its capacity and makes no storage: its count
// is 0 and its data pointer null. The storage is made, with that capacity,
// by the first AddElement or SetNumElements (1303 on failure).
#ifndef MIREL_VECTOR_RECORDS_H_
#define MIREL_VECTOR_RECORDS_H_

#include <cstddef>
#include <ostream>

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/vector.h"
#include "mirel/vector/draw/draw_forward.h"

struct EPath {
  short m_n16X = 0;
  short m_n16Y = 0;
};

struct EBW8Path {
  short m_n16X = 0;
  short m_n16Y = 0;
  EBW8 m_bw8Pixel = EBW8(0);
  unsigned char m_un8Pad = 0;
};

struct EBW16Path {
  short m_n16X = 0;
  short m_n16Y = 0;
  EBW16 m_bw16Pixel = EBW16(0);
};

struct EC24Path {
  short m_n16X = 0;
  short m_n16Y = 0;
  EC24 m_c24Pixel = EC24(0, 0, 0);
  unsigned char m_un8Pad = 0;
};

struct EPeak {
  unsigned int m_un32Start = 0;
  unsigned int m_un32Length = 0;
  float m_f32Center = 0.0f;
  int m_n32Amplitude = 0;
  int m_n32Area = 0;
};

static_assert(sizeof(EPath) == 4 && offsetof(EPath, m_n16Y) == 2, "EPath layout");
static_assert(sizeof(EBW8Path) == 6 && offsetof(EBW8Path, m_n16Y) == 2 && offsetof(EBW8Path, m_bw8Pixel) == 4 &&
                  offsetof(EBW8Path, m_un8Pad) == 5,
              "EBW8Path layout");
static_assert(sizeof(EBW16Path) == 6 && offsetof(EBW16Path, m_n16Y) == 2 && offsetof(EBW16Path, m_bw16Pixel) == 4,
              "EBW16Path layout");
static_assert(sizeof(EC24Path) == 8 && offsetof(EC24Path, m_n16Y) == 2 && offsetof(EC24Path, m_c24Pixel) == 4 &&
                  offsetof(EC24Path, m_un8Pad) == 7,
              "EC24Path layout");
static_assert(sizeof(EPeak) == 20 && offsetof(EPeak, m_un32Length) == 4 && offsetof(EPeak, m_f32Center) == 8 &&
                  offsetof(EPeak, m_n32Amplitude) == 12 && offsetof(EPeak, m_n32Area) == 16,
              "EPeak layout");
static_assert(sizeof(float) == 4 && sizeof(int) == 4 && sizeof(short) == 2, "record field widths");

namespace mirel {
namespace detail {
template <>
struct VectorFileSlot<EPath> {
  static constexpr int value = 0;
};
template <>
struct VectorFileSlot<EBW8Path> {
  static constexpr int value = 1;
};
template <>
struct VectorFileSlot<EC24Path> {
  static constexpr int value = 2;
};
template <>
struct VectorFileSlot<EPeak> {
  static constexpr int value = 3;
};
template <>
struct VectorFileSlot<EBW16Path> {
  static constexpr int value = 4;
};
}  // namespace detail
}  // namespace mirel

// A vector of points with two reserved words and a closed flag.
template <class T>
class MIREL_TEMPLATE_API EPathVectorOf : public EVectorTemplate<T> {
 public:
  EPathVectorOf() = default;
  explicit EPathVectorOf(unsigned int n) { this->SetMaxElements(n, 1); }
  int GetClosed() const { return m_nClosed; }
  void SetClosed(int closed) { m_nClosed = closed; }

 protected:
  unsigned int m_un32PathReserved[2] = {0, 0};
  int m_nClosed = 0;
};

class MIREL_API EPathVector : public EPathVectorOf<EPath> {
 public:
  EPathVector() = default;
  explicit EPathVector(unsigned int n) : EPathVectorOf<EPath>(n) {}

  void Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const;
#if defined(_WIN32)
  void Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const;
#endif
};

class MIREL_API EBW8PathVector : public EPathVectorOf<EBW8Path> {
 public:
  EBW8PathVector() = default;
  explicit EBW8PathVector(unsigned int n) : EPathVectorOf<EBW8Path>(n) {}

  void Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const;
#if defined(_WIN32)
  void Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const;
#endif
};

class MIREL_API EBW16PathVector : public EPathVectorOf<EBW16Path> {
 public:
  EBW16PathVector() = default;
  explicit EBW16PathVector(unsigned int n) : EPathVectorOf<EBW16Path>(n) {}

  void Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const;
#if defined(_WIN32)
  void Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const;
#endif
};

class MIREL_API EC24PathVector : public EPathVectorOf<EC24Path> {
 public:
  EC24PathVector() = default;
  explicit EC24PathVector(unsigned int n) : EPathVectorOf<EC24Path>(n) {}

  void Draw(Corvane::DrawAdapter* adapter, float zoomX, float zoomY, float panX, float panY) const;
#if defined(_WIN32)
  void Draw(HDC hdc, float zoomX, float zoomY, float panX, float panY) const;
#endif
};

class MIREL_API EPeaksVector : public EVectorTemplate<EPeak> {
 public:
  EPeaksVector() = default;
  // Records n as the capacity and makes no storage (see above).
  explicit EPeaksVector(unsigned int n) { this->m_un32MaxElements = n; }
};

// One group each, with no line end:
// "( EPeak : m_un32Start = 1 m_un32Length = 2 m_f32Center = 1.5 m_n32Amplitude = 3 m_n32Area = 4)".
MIREL_API std::ostream& operator<<(std::ostream& out, const EPeak& peak);
// "( EPath : m_n16X = 1 m_n16Y = -2)".
MIREL_API std::ostream& operator<<(std::ostream& out, const EPath& point);
// "( EBW8Path : m_n16X = 1 m_n16Y = 2 m_bw8Pixel = 255)", the pixel as a number.
MIREL_API std::ostream& operator<<(std::ostream& out, const EBW8Path& point);

#endif  // MIREL_VECTOR_RECORDS_H_
