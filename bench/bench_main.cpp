// Entry point of the benchmark suite: single thread on both sides.
#include "bench_common.h"

#if defined(MIREL_BENCH_OPENCV)
#include <opencv2/core/utility.hpp>
#endif

namespace bench {

void MakeFrame(EImage<EBW8>& image, uint32_t seed) {
  image.SetSize(kWidth, kHeight);
  uint32_t state = seed * 2654435761u + 12345u;
  auto next = [&state]() {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
  };
  for (int y = 0; y < kHeight; ++y) {
    EBW8* row = image.GetImagePtr(0, y);
    for (int x = 0; x < kWidth; ++x) {
      // Shading: brighter towards the centre-left, like uneven lighting.
      int v = 60 + (x * 50) / kWidth + (y * 30) / kHeight;
      // Parts: bright discs and a dark rectangle.
      for (int k = 0; k < 6; ++k) {
        const int cx = 300 + k * 360 + static_cast<int>(seed % 7) * 10;
        const int cy = 500 + (k % 2) * 900;
        const int dx = x - cx, dy = y - cy;
        if (dx * dx + dy * dy < 150 * 150) v = 190 + (k * 7);
      }
      if (x > 900 && x < 1500 && y > 1700 && y < 1900) v = 25;
      v += static_cast<int>(next() % 21) - 10;
      row[x] = static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
  }
}

EImage<EBW8>& Frame() {
  static EImage<EBW8> image;
  if (image.GetWidth() == 0) MakeFrame(image, 1);
  return image;
}

EImage<EBW8>& Frame2() {
  static EImage<EBW8> image;
  if (image.GetWidth() == 0) MakeFrame(image, 2);
  return image;
}

EImage<EC24>& ColourFrame() {
  static EImage<EC24> image;
  if (image.GetWidth() == 0) {
    EImage<EBW8>& a = Frame();
    EImage<EBW8>& b = Frame2();
    image.SetSize(kWidth, kHeight);
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const unsigned char p = a.GetPixel(x, y), q = b.GetPixel(x, y);
        image.SetPixel(EC24(p, q, static_cast<unsigned char>(p ^ q)), x, y);
      }
  }
  return image;
}

EImage<EBW8>& Out() {
  static EImage<EBW8> image(kWidth, kHeight);
  return image;
}

EImage<EC24>& ColourOut() {
  static EImage<EC24> image(kWidth, kHeight);
  return image;
}

}  // namespace bench

int main(int argc, char** argv) {
#if defined(MIREL_BENCH_OPENCV)
  cv::setNumThreads(1);
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
