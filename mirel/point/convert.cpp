#include "mirel/point/convert.h"

#include <cstdint>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"

namespace {

// Sizes first, then each ROI not void.
bool CheckSizeThenVoid(mirel::Frame& frame, const EGenericROI* src, const EGenericROI* dst) {
  return frame.SameSize(src, dst) && frame.NotVoid(src) && frame.NotVoid(dst);
}

template <class S, class D, class F>
void Convert(const char* label, const EROI<S>* src, EROI<D>* dst, F f) {
  mirel::Frame frame(label);
  if (!CheckSizeThenVoid(frame, src, dst)) return;
  const mirel::Rows<const S> s = mirel::RowsOf(src);
  const mirel::Rows<D> d = mirel::RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, static_cast<double>(sizeof(S) + sizeof(D)), [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const S* sp = s.Row(y);
      D* dp = d.Row(y);
      for (int x = 0; x < s.width; ++x) dp[x] = f(sp[x]);
    }
  });
}

}  // namespace

void ImgConvert(const EROI<EBW16>* src, EROI<EBW8>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW16 to BW8)", src, dst,
          [n](EBW16 p) { return EBW8(static_cast<unsigned char>(static_cast<std::uint32_t>(p.value) >> n)); });
}

void ImgConvert(const EROI<EBW32>* src, EROI<EBW8>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW32 to BW8)", src, dst,
          [n](EBW32 p) { return EBW8(static_cast<unsigned char>(p.value >> n)); });
}

void ImgConvert(const EROI<EBW32>* src, EROI<EBW16>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW32 to BW16)", src, dst,
          [n](EBW32 p) { return EBW16(static_cast<unsigned short>(p.value >> n)); });
}

void ImgConvert(const EROI<EBW8>* src, EROI<EBW16>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW8 to BW16)", src, dst,
          [n](EBW8 p) { return EBW16(static_cast<unsigned short>(static_cast<std::uint32_t>(p.value) << n)); });
}

void ImgConvert(const EROI<EBW8>* src, EROI<EBW32>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW8 to BW32)", src, dst,
          [n](EBW8 p) { return EBW32(static_cast<std::uint32_t>(p.value) << n); });
}

void ImgConvert(const EROI<EBW16>* src, EROI<EBW32>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW16 to BW32)", src, dst,
          [n](EBW16 p) { return EBW32(static_cast<std::uint32_t>(p.value) << n); });
}

void ImgConvertTo422(const EROI<EBW8>* src, EROI<EBW16>* dst) {
  Convert("ImgConvertTo422 ( BW8 to BW16)", src, dst,
          [](EBW8 p) { return EBW16(static_cast<unsigned short>(0x8000u + p.value)); });
}
