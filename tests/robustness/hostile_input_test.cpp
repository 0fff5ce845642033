// Inputs a demanding user sends: empty ROIs, runs that leave the ROI,
// counts that wrap, streams that lie about their length. Each case checks
// the code, the trace and that nothing outside what the call may write was
// touched.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "../test_support.h"

#if defined(__unix__) || defined(__APPLE__)
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using testsupport::Rng;
using testsupport::Snapshot;

// A kernel of the given size with every coefficient set to `v`.
EKernel Flat(short size, short rectifier, float v) {
  EKernel k(size, size, 1.0f, 0, rectifier, 7);
  for (int i = 0; i < size * size; ++i) k.Data[i] = v;
  return k;
}

template <class P>
void ConvolveEmptyRois() {
  Rng rng(5);
  for (const short size : {3, 4, 5, 7}) {
    for (short rectifier = 0; rectifier <= 3; ++rectifier) {
      for (int shape = 0; shape < 4; ++shape) {
        // 0xN and Nx0 ROIs, at the image's left edge and inside it.
        const int x = shape & 1, w = shape & 2 ? 5 : 0, h = shape & 2 ? 0 : 5;
        EImage<P> srcImage(8, 7), dstImage(8, 7);
        testsupport::FillRandom(srcImage, rng);
        testsupport::FillRandom(dstImage, rng);
        EROI<P> src(&srcImage, x, 1, w, h), dst(&dstImage, x, 1, w, h);
        EKernel kernel = Flat(size, rectifier, 1.0f);
        const auto before = Snapshot(dstImage);
        ImgConvolKernel(&src, &dst, &kernel);
        EXPECT_EQ(EGetError(), E_OK);
        EXPECT_EQ(Snapshot(dstImage), before) << "size " << size << " rectifier " << rectifier << " shape " << shape;
        if (size == 4 || (rectifier == 0 && size == 3)) continue;  // symmetric routes need a rectifier
        ImgConvolSymmetricKernel(&src, &dst, &kernel);
        EXPECT_TRUE(Snapshot(dstImage) == before) << "symmetric size " << size << " rectifier " << rectifier;
      }
    }
  }
}

// A ROI with no columns (or no rows) is not void: the call succeeds and
// writes nothing, whatever route the kernel takes.
TEST(EmptyRoi, KernelConvolutionsWriteNothing) {
  ConvolveEmptyRois<EBW8>();
  ConvolveEmptyRois<EBW16>();
}

// Filters given a destination with no columns succeed and write nothing
// (they used to write the last column of every row), also with half-widths
// far beyond any image; the sanitizer build checks that no window sum or
// pointer overflows on the way.
TEST(EmptyRoi, FiltersWriteNothingWhateverTheirWindow) {
  Rng rng(6);
  const std::vector<std::function<void(EROI<EBW8>*, EROI<EBW8>*)>> grey = {
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolRoberts(s, d); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolSobel(s, d); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolUniform(s, d, 3u, 0x7fffffffu); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgLocalAverage(s, d, 0x9f000000u, 2u); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgLocalDeviation(s, d, 0xffffff00u, 0x7fffffff); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgConvolGaussian(s, d, 2u, 2u); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgMedian(s, d); },
      [](EROI<EBW8>* s, EROI<EBW8>* d) { ImgErodeBox(s, d, 6u, 6u); }};
  for (std::size_t i = 0; i < grey.size(); ++i) {
    for (int shape = 0; shape < 2; ++shape) {
      EImage<EBW8> srcImage(6, 5), dstImage(6, 5);
      testsupport::FillRandom(srcImage, rng);
      testsupport::FillRandom(dstImage, rng);
      const int w = shape ? 4 : 0, h = shape ? 0 : 4;
      EROI<EBW8> src(&srcImage, 1, 1, w, h), dst(&dstImage, 1, 1, w, h);
      const auto before = Snapshot(dstImage);
      grey[i](&src, &dst);
      EXPECT_EQ(EGetError(), E_OK) << "filter " << i;
      EXPECT_TRUE(Snapshot(dstImage) == before) << "filter " << i << " shape " << shape;
    }
  }
  EImage<EBW16> a(2, 2), b(2, 2);
  EROI<EBW16> src(&a, 0, 0, 1, 2), dst(&b, 1, 0, 0, 2);
  const auto before = Snapshot(b);
  ImgConvolRoberts(&src, &dst);
  EXPECT_TRUE(Snapshot(b) == before);
}

// A ROI with no columns just past the last column of a buffer that the
// image borrows, with nothing behind its last row: the fixed windows read
// no pixel of it (the sanitizer build sees a read one past the buffer), and
// the call writes nothing, with a separate destination and in place.
template <class P>
void FixedWindowsAtTheBufferEnd() {
  const std::vector<void (*)(const EROI<P>*, EROI<P>*)> filters = {
      ImgConvolUniform5x5, ImgConvolGaussian5x5, ImgConvolUniform7x7, ImgConvolGaussian7x7};
  Rng rng(12);
  const int w = 2, h = 9;
  for (std::size_t i = 0; i < filters.size(); ++i) {
    std::vector<P> a(w * h), b(w * h);
    EImage<P> srcImage(a.data(), w, h, w * static_cast<int>(sizeof(P))),
        dstImage(b.data(), w, h, w * static_cast<int>(sizeof(P)));
    testsupport::FillRandom(srcImage, rng);
    testsupport::FillRandom(dstImage, rng);
    EROI<P> src(&srcImage, w, 0, 0, h), dst(&dstImage, w - 1, 0, 0, h), same(&srcImage, w - 1, 0, 0, h);
    const auto before = Snapshot(dstImage), beforeSrc = Snapshot(srcImage);
    filters[i](&src, &dst);
    EXPECT_EQ(EGetError(), E_OK) << "filter " << i;
    EXPECT_TRUE(Snapshot(dstImage) == before) << "filter " << i;
    filters[i](&src, &same);
    EXPECT_EQ(EGetError(), E_OK) << "filter " << i << " over its source";
    EXPECT_TRUE(Snapshot(srcImage) == beforeSrc) << "filter " << i << " over its source";
  }
}

TEST(EmptyRoi, FixedWindowsReadNothingPastTheBuffer) {
  FixedWindowsAtTheBufferEnd<EBW8>();
  FixedWindowsAtTheBufferEnd<EBW16>();
}

// Projections of ROIs with no columns or no rows give empty or zero vectors
// and hand no null buffer to the C library (the sanitizer build checks it).
TEST(EmptyRoi, ProjectionsOfEveryPixelType) {
  EImage<EC24> colour(6, 4);
  EImage<EBW8> grey(6, 4);
  EImage<EBW16> wide(6, 4);
  EROI<EC24> c(&colour, 1, 1, 0, 3);
  EROI<EBW8> g(&grey, 1, 1, 0, 3);
  EROI<EBW16> w(&wide, 1, 1, 0, 3);
  EC24Vector cv;
  EBW8Vector gv;
  EBW16Vector wv;
  EBW32Vector sums;
  EXPECT_EQ(ImgProjectOnARow(&c, &cv), 0);
  EXPECT_EQ(cv.GetNumElements(), 0u);
  EXPECT_EQ(ImgProjectOnARow(&g, &gv), 0);
  EXPECT_EQ(ImgProjectOnARow(&w, &wv), 0);
  EXPECT_EQ(ImgProjectOnARow(&w, &sums), 0);
  EXPECT_EQ(ImgProjectOnAColumn(&c, &cv), 0);
  ASSERT_EQ(cv.GetNumElements(), 3u);
  EXPECT_EQ(ImgProjectOnAColumn(&g, &sums), 0);
  ASSERT_EQ(sums.GetNumElements(), 3u);
  EXPECT_EQ(sums[0].value, 0u);
}

// The documented arithmetic: 32-bit terms read as signed. One bin 200 with
// 60000 pixels makes h*i*i pass 2^31, the variance negative and the result
// not a number; smaller histograms give the usual deviation.
TEST(HistogramFeatures, StandardDeviationFollowsSignedTerms) {
  EBWHistogramVector h;
  h.SetNumElements(256);
  h.Clear();
  h[200] = 60000;
  EXPECT_TRUE(std::isnan(ImgAnalyseHistogram(&h, IMG_FEATURE_STD_DEV, 0, 255)));
  EXPECT_EQ(EGetError(), E_OK);
  h[200] = 0;
  h[1] = 1;
  h[3] = 1;
  EXPECT_FLOAT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_STD_DEV, 0, 255), 1.0f);
  h[1] = 0;
  EXPECT_EQ(ImgAnalyseHistogram(&h, IMG_FEATURE_STD_DEV, 0, 255), 0.0f);
}

// Runs must lie inside one row of the ROI; anything else is refused with
// 1007 before a pixel is read or written, by every operation that honours
// a run mask. Runs inside the ROI keep working.
TEST(RunMask, RunsOutsideTheRoiAreRefused) {
  EImage<EBW8> image(4, 2), out(4, 2);
  Rng rng(2);
  testsupport::FillRandom(image, rng);
  testsupport::FillRandom(out, rng);
  EROI<EBW8> roi(&image, 0, 0, 4, 2);
  const std::intptr_t first = reinterpret_cast<std::intptr_t>(roi.GetImagePtr(0, 0));
  const std::intptr_t pitch = roi.GetRowPitch();
  struct Bad { ERun run; int offsets; };
  const Bad bads[] = {{{-100000, 100000, 0, 0}, 1},        // the audit's case
                      {{-1, 2, 0, 0}, 1},                  // starts before the ROI
                      {{2, 6, 2, 0}, 1},                   // runs into the next row
                      {{pitch, pitch + 5, 0, 1}, 1},       // longer than a row
                      {{2 * pitch, 2 * pitch + 1, 0, 2}, 1},  // below the last row
                      {{first - 8, first + 2, 0, 0}, 0},   // an address before the image
                      {{first + 3, first + 5, 3, 0}, 0}};  // an address across the row's end
  for (const Bad& bad : bads) {
    roi.SetRuns(&bad.run, 1, bad.offsets);
    const auto before = Snapshot(out);
    EBWHistogramVector hist;
    ImgHistogram(&roi, &hist);
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
    EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram");
    ImgEqualize(&roi, &out);
    EXPECT_STREQ(EGetErrorTrace(), "ImgHistogram <- ImgEqualize");
    ImgThreshold(&roi, &out, IMG_THRESHOLD_MIN_RESIDUE);
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
    EXPECT_TRUE(Snapshot(out) == before);
    ImgAutoThreshold(&roi, IMG_THRESHOLD_ISODATA, 0.0f);
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
    float x = 0.0f, y = 0.0f;
    unsigned int count = 0;
    const std::vector<std::function<void()>> calls = {
        [&] { ImgArea(&roi); }, [&] { ImgArea(&roi, 10u); }, [&] { ImgAverage(&roi, &count); },
        [&] { ImgMinimum(&roi); }, [&] { ImgMaximum(&roi); }, [&] { ImgVariance(&roi); },
        [&] { ImgGravityCenter(&roi, 10u, x, y); }, [&] { ImgCentroid(&roi, x, y); }};
    for (const auto& call : calls) {
      call();
      EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT) << bad.run.start << " " << bad.run.end;
    }
  }
  // Inside the ROI: pixels 1..3 of row 1, by offset and by address.
  for (int offsets = 0; offsets < 2; ++offsets) {
    const std::intptr_t start = (offsets ? 0 : first) + pitch + 1;
    const ERun good[] = {{start, start + 3, 1, 1}, {start, start, 0, 0}};
    roi.SetRuns(good, 2, offsets);
    EXPECT_EQ(ImgArea(&roi), 3u);
    EXPECT_EQ(EGetError(), E_OK);
  }
}

// A caller's buffer of exactly the bytes its rows need: nothing is read or
// written behind the last row (the sanitizer build catches a single byte),
// and a buffer whose rows break the pixel type's alignment is refused.
template <class P>
struct Exact {
  std::vector<unsigned char> bytes;
  EImage<P> image;
  Exact(int w, int h, int pitch, std::size_t row, Rng& rng) : bytes(static_cast<std::size_t>(pitch) * (h - 1) + row) {
    for (unsigned char& b : bytes) b = static_cast<unsigned char>(rng());
    image.Borrow(reinterpret_cast<P*>(bytes.data()), w, h, pitch);
  }
};

TEST(BorrowedBuffer, CopiesAndOverlaysStayInsideIt) {
  Rng rng(8);
  for (const int w : {1, 5, 7, 8, 13}) {
    Exact<EBW8> grey(w, 3, w + 1, static_cast<std::size_t>(w), rng);
    Exact<EC24> colour(w, 3, 3 * w, 3u * w, rng);
    Exact<EBW1> bits(w, 3, (w + 7) / 8 + 1, (w + 7) / 8 + 1u, rng);
    const EImage<EBW8> greyCopy(grey.image);
    const EImage<EC24> colourCopy(colour.image);
    const EImage<EBW1> bitsCopy(bits.image);
    EXPECT_FALSE(greyCopy.IsBorrowed());
    EXPECT_TRUE(testsupport::Bytes(greyCopy) == testsupport::Bytes(grey.image));
    EXPECT_TRUE(testsupport::Bytes(colourCopy) == testsupport::Bytes(colour.image));
    EXPECT_EQ(std::memcmp(bitsCopy.GetImagePtr(0, 2), bits.image.GetImagePtr(0, 2), (w + 7) / 8), 0);

    // The byte-triple overlay of two grey images on the last row of a
    // buffer: the part of a triple past the buffer is left out.
    Exact<EBW8> a(w, 2, w, static_cast<std::size_t>(w), rng), b(w, 2, w, static_cast<std::size_t>(w), rng),
        d(w, 2, w, static_cast<std::size_t>(w), rng);
    for (int x = 0; x < w; ++x) b.image.SetPixel(EBW8(x % 2 == 0 ? 0 : 9), x, 1);
    ImgOper(ALO_OVERLAY, &a.image, &b.image, &d.image);
    EXPECT_EQ(EGetError(), E_OK);
    const int t = w - w % 3;  // the last triple, cut short by the buffer's end
    if (t < w) {
      const bool any = b.image.GetPixel(t, 1) != 0 || (t + 1 < w && b.image.GetPixel(t + 1, 1) != 0);
      const EImage<EBW8>& from = any ? b.image : a.image;
      for (int x = t; x < w; ++x) EXPECT_EQ(d.image.GetPixel(x, 1), from.GetPixel(x, 1)) << w;
    }
  }
  EImage<EBW16> wide;
  std::vector<unsigned char> raw(64);
  wide.Borrow(reinterpret_cast<EBW16*>(raw.data() + 1), 4, 2, 8);  // odd address
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  wide.Borrow(reinterpret_cast<EBW16*>(raw.data()), 4, 2, 9);  // odd pitch
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "EImage::Borrow");
  EXPECT_TRUE(wide.Void());
}

// Numbers a caller may pass that overflow the arithmetic behind them: the
// sanitizer build checks that each is handled without undefined behaviour.
TEST(HostileNumbers, CountsSumsAndRowsBeyondTheirTypes) {
  EBWHistogramVector h;
  h.SetNumElements(256);
  for (unsigned int i = 0; i < 256; ++i) h[i] = 0xF0000000u;
  Corvane::Talmeer::Utils::Vector<ERegionDescriptor> regions;
  ImgMultiLevelsMinResidueThreshold(&h, 3, regions);
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(regions.GetNumElements(), 3u);
  EXPECT_EQ(regions[0].m_un32PixelCount, 0xFFFFFFFFu);  // past 2^32: the largest count

  EBW8Vector profile;
  profile.SetNumElements(65536);
  std::memset(profile.GetDataPtr(), 0, 65536);
  EPeaksVector peaks;
  ImgGetProfilePeaks(&profile, &peaks, 0xFFFFFFFFu, 0xFFFFFFFFu, 0u, 0u);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(peaks.GetNumElements(), 0u);  // one valley from the first sample: not inside

  EImage<EC24> frame(6, 4);
  int best = 0;
  ImgMatchFrames(&frame, 0x7fffffff, 0, 1, best);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);

  EImage<EBW8> tall(1, 40);
  EROI<EBW8> none(&tall, 0, 0, 0, 40);
  EPyramid pyramid;
  pyramid.SetNumLevels(3, static_cast<E_IMAGE_TYPES>(1));
  pyramid.Build(&none);  // levels of no columns: nothing to copy or halve
  EXPECT_NE(EGetError(), E_OK);
}

#if defined(__unix__) || defined(__APPLE__)
// A pipe has no size to measure: the vector grows as records arrive, so a
// stream that claims 200 million records and holds one costs one record.
TEST(VectorFile, ShortStreamCostsWhatItHolds) {
  char dir[] = "/tmp/mirel_pipe_XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  const std::string fifo = std::string(dir) + "/stream";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  // Header of a path file, a count of 200 million, one 4-byte record.
  const unsigned char bytes[12] = {0x45, 0x06, 0x01, 0x42, 0x00, 0xc2, 0xeb, 0x0b, 0x01, 0x00, 0x02, 0x00};
  std::thread writer([&] {
    std::FILE* f = std::fopen(fifo.c_str(), "wb");
    if (f == nullptr) return;
    std::fwrite(bytes, 1, sizeof(bytes), f);
    std::fclose(f);
  });
  EPathVector v;
  v.Load(fifo.c_str());
  writer.join();
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Load");
  EXPECT_LE(v.GetMaxElements(), 1u << 22);
  ASSERT_EQ(v.GetNumElements(), 1u);
  EXPECT_EQ(v[0].m_n16X, 1);
  EXPECT_EQ(v[0].m_n16Y, 2);
  std::remove(fifo.c_str());
  rmdir(dir);
}
#endif

}  // namespace

// Frames moved between ROIs of one image that share rows: each row moves as
// a whole, in row order, as if through a buffer (the sanitizer build reports
// a plain copy of overlapping bytes).
TEST(SharedRows, FramesMoveRowByRow) {
  Rng rng(11);
  for (int frame = 0; frame < 2; ++frame) {
    EImage<EBW16> image(7, 8);
    testsupport::FillRandom(image, rng);
    auto at = [&](int x, int y) { return static_cast<const EBW16*>(image.GetImagePtr(x, y))->value; };
    std::vector<std::vector<unsigned short>> want(8, std::vector<unsigned short>(7));
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < 7; ++x) want[y][x] = at(x, y);
    // Six pixels of row `from` starting at column fx onto row `to` at column tx.
    auto move = [&](int to, int tx, int from, int fx) {
      const std::vector<unsigned short> row = want[from];
      for (int x = 0; x < 6; ++x) want[to][tx + x] = row[fx + x];
    };
    // The 4-row frame ROI at (0, 0) and the 8-row ROI at (1, 0) share every
    // row it covers, shifted by one pixel.
    EROI<EBW16> half(&image, 0, 0, 6, 4), full(&image, 1, 0, 6, 8);
    for (int y = frame; y < 8; y += 2) move(y, 1, y / 2, 0);
    ImgSetFrame(&half, &full, frame);
    ASSERT_EQ(EGetError(), E_OK);
    for (int y = frame; y < 8; y += 2) move(y / 2, 0, y, 1);
    ImgGetFrame(&full, &half, frame);
    ASSERT_EQ(EGetError(), E_OK);
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < 7; ++x) EXPECT_EQ(at(x, y), want[y][x]) << "frame " << frame << " at " << x << ", " << y;
  }
}
