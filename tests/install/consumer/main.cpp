// A program that uses the installed library the way an application would.
#include <mirel/mirel.h>

#include <cstdio>

int main() {
  EImage<EBW8> image(64, 48);
  EROI<EBW8> outer(&image, 8, 4, 40, 30);
  EROI<EBW8> inner(&outer, 2, 3, 10, 5);

  // Walk the inner ROI's rows and fill them.
  EBW8* p = inner.GetImagePtr(0, 0);
  EBW8* end = inner.GetImagePtr(0, inner.GetHeight());
  const int skip = inner.GetSkip();
  int pixels = 0;
  while (p < end) {
    EBW8* rowEnd = p + inner.GetWidth();
    for (; p < rowEnd; ++p, ++pixels) *p = 200;
    p = reinterpret_cast<EBW8*>(reinterpret_cast<unsigned char*>(p) + skip);
  }
  if (pixels != 50 || image.GetPixel(10, 7) != 200) return 1;

  // A void image and a size mismatch, reported through the error state.
  EImage<EBW8> empty;
  EOk();
  empty.CheckNotVoid();
  ETraceError("ImgConsumerCheck");
  std::printf("%d: %s [%s]\n", EGetError(), EGetErrorText(EGetError()), EGetErrorTrace());
  EOk();
  inner.CheckSameSize(&outer);
  ETraceError("ImgConsumerCheck");
  std::printf("%d: %s [%s]\n", EGetError(), EGetErrorText(EGetError()), EGetErrorTrace());
  return EGetError() == E_ERROR_SIZE_MISMATCH ? 0 : 1;
}
