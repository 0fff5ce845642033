#include "mirel/vector/path.h"

#include <cstddef>
#include <type_traits>

#include "mirel/foundation/frame_internal.h"
#include "mirel/vector/line_walk_internal.h"

namespace {

using mirel::Frame;

// The pixel field of each path record.
EBW8& PixelOf(EBW8Path& p) { return p.m_bw8Pixel; }
EBW16& PixelOf(EBW16Path& p) { return p.m_bw16Pixel; }
EC24& PixelOf(EC24Path& p) { return p.m_c24Pixel; }

// Checks of the path forms, in a frame of their own so that the 106 of the
// walk that follows is left standing without a trace.
bool PathChecks(const char* label, const EGenericROI* roi, const void* path) {
  Frame frame(label);
  return frame.NotVoid(roi) && frame.Require(path != nullptr, E_ERROR_BAD_ARGUMENT);
}

// Calls move(pixel, record) for each point of the path inside the ROI.
template <class T, class V, class Move>
void WalkPath(T* base, std::ptrdiff_t pitch, int width, int height, V* path, Move move) {
  const unsigned int n = path->GetNumElements();
  auto* points = path->GetDataPtr();
  bool outside = false;
  for (unsigned int i = 0; i < n; ++i) {
    auto& p = points[i];
    if (p.m_n16X < 0 || p.m_n16Y < 0 || p.m_n16X >= width || p.m_n16Y >= height) {
      outside = true;
      continue;
    }
    using Byte = std::conditional_t<std::is_const<T>::value, const unsigned char, unsigned char>;
    T* pixel = reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + pitch * p.m_n16Y) + p.m_n16X;
    move(*pixel, PixelOf(p));
  }
  if (outside) ESetError(E_WARNING_POINT_OUTSIDE);
}

template <class T, class V>
void ImageToPath(const char* label, const EROI<T>* src, V* path) {
  if (!PathChecks(label, src, path)) return;
  WalkPath(src->GetImagePtr(0, 0), src->GetRowPitch(), src->GetWidth(), src->GetHeight(), path,
           [](const T& pixel, T& field) { field = pixel; });
}

template <class T, class V>
void PathToImage(const char* label, EROI<T>* dst, const V* path) {
  if (!PathChecks(label, dst, path)) return;
  WalkPath(dst->GetImagePtr(0, 0), dst->GetRowPitch(), dst->GetWidth(), dst->GetHeight(), path,
           [](T& pixel, const T& field) { pixel = field; });
}

// Both ends inside the ROI: x0 1013, y0 1014, x1 1015, y1 1016.
bool EndsInside(Frame& frame, const EGenericROI* roi, int x0, int y0, int x1, int y1) {
  const int w = roi->GetWidth(), h = roi->GetHeight();
  return frame.Require(x0 >= 0 && x0 < w, E_ERROR_BAD_ARGUMENT_1) &&
         frame.Require(y0 >= 0 && y0 < h, E_ERROR_BAD_ARGUMENT_2) &&
         frame.Require(x1 >= 0 && x1 < w, E_ERROR_BAD_ARGUMENT_3) &&
         frame.Require(y1 >= 0 && y1 < h, E_ERROR_BAD_ARGUMENT_4);
}

template <class T, class V>
void ImageToSegment(const char* label, const EROI<T>* src, V* segment, int x0, int y0, int x1, int y1) {
  Frame frame(label);
  if (!frame.NotVoid(src) || !frame.Require(segment != nullptr, E_ERROR_BAD_ARGUMENT) ||
      !EndsInside(frame, src, x0, y0, x1, y1))
    return;
  const int n = mirel::line::PointCount(x0, y0, x1, y1);
  segment->SetMaxElements(static_cast<unsigned int>(n), 1);
  if (EGetError() != E_OK) return;
  segment->Empty();
  const unsigned char* start = reinterpret_cast<const unsigned char*>(src->GetImagePtr(x0, y0));
  mirel::line::Walk(x0, y0, x1, y1, src->GetRowPitch(), sizeof(T), [&](int, int, int, std::ptrdiff_t offset) {
    segment->AddElement(*reinterpret_cast<const T*>(start + offset));
    return true;
  });
}

// `valueAt(k)` is the value written to the k-th pixel of the segment.
template <class T, class ValueAt>
void WriteSegment(EROI<T>* dst, int x0, int y0, int x1, int y1, ValueAt valueAt) {
  unsigned char* start = reinterpret_cast<unsigned char*>(dst->GetImagePtr(x0, y0));
  mirel::line::Walk(x0, y0, x1, y1, dst->GetRowPitch(), sizeof(T), [&](int k, int, int, std::ptrdiff_t offset) {
    *reinterpret_cast<T*>(start + offset) = valueAt(k);
    return true;
  });
}

template <class T, class V>
void SegmentToImage(const char* label, EROI<T>* dst, const V* segment, int x0, int y0, int x1, int y1) {
  Frame frame(label);
  if (!frame.NotVoid(dst) || !frame.Require(segment != nullptr, E_ERROR_BAD_ARGUMENT) ||
      !EndsInside(frame, dst, x0, y0, x1, y1) ||
      !frame.Require(segment->GetNumElements() == static_cast<unsigned int>(mirel::line::PointCount(x0, y0, x1, y1)),
                     E_ERROR_VECTOR_SIZE))
    return;
  const T* values = segment->GetDataPtr();
  // The element index trails the walk by one: pixel k takes element k - 1.
  WriteSegment(dst, x0, y0, x1, y1, [values](int k) { return values[k == 0 ? 0 : k - 1]; });
}

template <class T>
void ConstantToImage(const char* label, EROI<T>* dst, T value, int x0, int y0, int x1, int y1) {
  Frame frame(label);
  if (!frame.NotVoid(dst) || !EndsInside(frame, dst, x0, y0, x1, y1)) return;
  WriteSegment(dst, x0, y0, x1, y1, [value](int) { return value; });
}

}  // namespace

void ImgImageToPath(const EROI<EBW8>* src, EBW8PathVector* path) { ImageToPath("ImgImageToPath ( BW8)", src, path); }
void ImgImageToPath(const EROI<EC24>* src, EC24PathVector* path) { ImageToPath("ImgImageToPath ( C24)", src, path); }
void ImgImageToPath(const EROI<EBW16>* src, EBW16PathVector* path) {
  ImageToPath("ImgImageToPath (BW16)", src, path);
}

void ImgPathToImage(EROI<EBW8>* dst, const EBW8PathVector* path) { PathToImage("ImgPathToImage ( BW8)", dst, path); }
void ImgPathToImage(EROI<EC24>* dst, const EC24PathVector* path) { PathToImage("ImgPathToImage ( C24)", dst, path); }
void ImgPathToImage(EROI<EBW16>* dst, const EBW16PathVector* path) {
  PathToImage("ImgPathToImage ( BW16)", dst, path);
}

void ImgImageToLineSegment(const EROI<EBW8>* src, EBW8Vector* segment, int x0, int y0, int x1, int y1) {
  ImageToSegment("ImgImageToLineSegment ( BW8)", src, segment, x0, y0, x1, y1);
}
void ImgImageToLineSegment(const EROI<EBW16>* src, EBW16Vector* segment, int x0, int y0, int x1, int y1) {
  ImageToSegment("ImgImageToLineSegment ( BW16)", src, segment, x0, y0, x1, y1);
}
void ImgImageToLineSegment(const EROI<EC24>* src, EC24Vector* segment, int x0, int y0, int x1, int y1) {
  ImageToSegment("ImgImageToLineSegment ( C24)", src, segment, x0, y0, x1, y1);
}

void ImgLineSegmentToImage(EROI<EBW8>* dst, const EBW8Vector* segment, int x0, int y0, int x1, int y1) {
  SegmentToImage("ImgLineSegmentToImage ( BW8, vector)", dst, segment, x0, y0, x1, y1);
}
void ImgLineSegmentToImage(EROI<EBW16>* dst, const EBW16Vector* segment, int x0, int y0, int x1, int y1) {
  SegmentToImage("ImgLineSegmentToImage ( BW16, vector)", dst, segment, x0, y0, x1, y1);
}
void ImgLineSegmentToImage(EROI<EC24>* dst, const EC24Vector* segment, int x0, int y0, int x1, int y1) {
  SegmentToImage("ImgLineSegmentToImage ( C24, vector)", dst, segment, x0, y0, x1, y1);
}

void ImgLineSegmentToImage(EROI<EBW8>* dst, EBW8 value, int x0, int y0, int x1, int y1) {
  ConstantToImage("ImgLineSegmentToImage ( BW8, const)", dst, value, x0, y0, x1, y1);
}
void ImgLineSegmentToImage(EROI<EBW16>* dst, EBW16 value, int x0, int y0, int x1, int y1) {
  ConstantToImage("ImgLineSegmentToImage ( BW16, const)", dst, value, x0, y0, x1, y1);
}
void ImgLineSegmentToImage(EROI<EC24>* dst, EC24 value, int x0, int y0, int x1, int y1) {
  ConstantToImage("ImgLineSegmentToImage ( C24, const)", dst, value, x0, y0, x1, y1);
}
