// Temporal averaging: the moving average against a direct mean over random
// sequences (both ways of feeding it, power-of-two and other sizes, every
// path), its refusals, and the recursive average against its table.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using Bytes = std::vector<unsigned char>;

// The mean of the last `size` images, the first image standing in for the
// ones before it, truncated.
Bytes DirectMean(const std::deque<Bytes>& last, unsigned size) {
  Bytes out(last.back().size());
  for (size_t i = 0; i < out.size(); ++i) {
    unsigned s = 0;
    for (unsigned k = 0; k < size; ++k) s += last[k < size - last.size() ? 0 : k - (size - last.size())][i];
    out[i] = static_cast<unsigned char>(s / size);
  }
  return out;
}

TEST(MovingAverage, MatchesTheDirectMeanOnEveryPath) {
  Rng rng(6);
  const unsigned sizes[] = {1, 2, 3, 4, 5, 8, 16, 7, 32, 256, 257};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (unsigned size : sizes) {
      for (int own = 0; own < 2; ++own) {
        if (size == 1 && own == 0) continue;  // an empty ring
        const int w = 1 + static_cast<int>(rng() % 90), h = 1 + static_cast<int>(rng() % 4);
        EMovingAverage avg(size, w, h, own);
        ASSERT_EQ(EGetError(), E_OK);
        std::deque<Bytes> last;
        const int steps = size > 16 ? 12 : static_cast<int>(2 * size + 3);
        for (int step = 0; step < steps; ++step) {
          if (step == steps - 3) {  // a new sequence
            avg.Reset();
            last.clear();
          }
          EImage<EBW8> si, di;
          EROI<EBW8> s, d;
          testsupport::PlaceRandom(si, s, w, h, rng);
          testsupport::PlaceRandom(di, d, w, h, rng);
          testsupport::FillRandom(si, rng);
          if (own != 0) {
            EImage<EBW8>* in = avg.GetSrcImage();
            ASSERT_NE(in, nullptr);
            ImgCopy(&s, in);
            avg.Average(&d);
          } else {
            avg.Average(&s, &d);
          }
          ASSERT_EQ(EGetError(), E_OK);
          last.push_back(testsupport::Bytes(s));
          if (last.size() > size) last.pop_front();
          ASSERT_EQ(testsupport::Bytes(d), DirectMean(last, size))
              << "size " << size << " own " << own << " step " << step << " path " << path << " width " << w;
        }
      }
    }
  }
}

TEST(MovingAverage, SizesAndRefusals) {
  EImage<EBW8> a(6, 2), b(6, 2), small(5, 2), none;
  ImgCopy(EBW8(9), &a);
  ImgCopy(EBW8(77), &b);
  EMovingAverage avg(4, 6, 2, 0);
  unsigned size;
  int w, h, own;
  avg.GetSize(size, w, h, own);
  EXPECT_EQ(size * 1000 + static_cast<unsigned>(w * 100 + h * 10 + own), 4620u);
  EXPECT_EQ(avg.GetSrcImage(), nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_OPERATION);
  EXPECT_STREQ(EGetErrorTrace(), "EMovingAverage::GetSrcImage");
  const Bytes before = testsupport::Snapshot(b);
  avg.Average(&b);  // the form of the other feeding
  EXPECT_EQ(EGetError(), E_ERROR_BAD_OPERATION);
  EXPECT_STREQ(EGetErrorTrace(), "EMovingAverage::Average");
  avg.Average(&a, &small);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  avg.Average(&none, &b);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(b), before);
  // The failures left the sequence at its start: the first output is the input.
  avg.Average(&a, &b);
  EXPECT_EQ(b.GetPixel(5, 1).value, 9);
  EImage<EBW8> c(6, 2);
  ImgCopy(EBW8(13), &c);
  avg.Average(&c, &b);  // (13 + 3 * 9) >> 2
  EXPECT_EQ(b.GetPixel(0, 0).value, 10);

  EMovingAverage fed(3, 6, 2, 1);
  fed.Average(&a, &b);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_OPERATION);
  fed.Average(fed.GetSrcImage());  // the mean written over the ring
  EXPECT_EQ(EGetError(), E_ERROR_SAME_IMAGE);
  // A sum that could overflow 16 bits is refused, and the object kept.
  fed.SetSize(258, 6, 2, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "EMovingAverage::SetSize");
  fed.GetSize(size, w, h, own);
  EXPECT_EQ(size * 10 + static_cast<unsigned>(own), 31u);
  EMovingAverage empty(1, 6, 2, 0), none0;
  empty.Average(&a, &b);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(none0.GetSrcImage(), nullptr);
  EXPECT_EQ(EGetError(), E_OK);
  // A constant sequence stays constant, with full-range values at size 257.
  EMovingAverage big(257, 6, 2, 0);
  ImgCopy(EBW8(255), &a);
  for (int i = 0; i < 300; ++i) big.Average(&a, &b);
  EXPECT_EQ(testsupport::Bytes(b), Bytes(12, 255));
}

TEST(RecursiveAverage, FollowsItsTableAndTheTablesShape) {
  Rng rng(9);
  EBW16Vector lut;
  // A random table: every step of the store is read from it.
  lut.SetNumElements(8191);
  for (unsigned i = 0; i < 8191; ++i) lut[i] = EBW16(static_cast<uint16_t>(rng()));
  for (int iter = 0; iter < 20; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 4);
    EImage<EBW8> si, di;
    EImage<EBW16> mi;
    EROI<EBW8> s, d;
    EROI<EBW16> m;
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::PlaceRandom(mi, m, w, h, rng);
    testsupport::FillRandom(si, rng);
    for (int y = 0; y < h; ++y)  // stores within the table's reach
      for (int x = 0; x < w; ++x) *m.GetImagePtr(x, y) = EBW16(static_cast<uint16_t>(rng() % 4096));
    std::vector<uint16_t> want;
    Bytes out;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const int old = static_cast<int16_t>(m.GetImagePtr(x, y)->value);
        const int16_t now = static_cast<int16_t>(old + static_cast<int16_t>(lut[4095 + (s.GetPixel(x, y) << 4) - old].value));
        want.push_back(static_cast<uint16_t>(now));
        out.push_back(static_cast<unsigned char>(std::min(255, std::max(0, now >> 4))));
      }
    ImgRecursiveAverage(&s, &m, &d, &lut);
    ASSERT_EQ(EGetError(), E_OK);
    std::vector<uint16_t> got;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) got.push_back(m.GetImagePtr(x, y)->value);
    ASSERT_EQ(got, want);
    ASSERT_EQ(testsupport::Bytes(d), out);
  }
  // With w 0 and r 1 the table is the identity: the output follows at once.
  ImgSetRecursiveAverageLUT(&lut, 1.0f, 0.0f);
  ASSERT_EQ(lut.GetNumElements(), 8191u);
  for (int i = -4095; i <= 4095; ++i) ASSERT_EQ(static_cast<int16_t>(lut[4095 + i].value), i);
  EImage<EBW8> src(3, 1), dst(3, 1);
  EImage<EBW16> store(3, 1);
  ImgCopy(EBW16(0), &store);
  src.SetPixel(EBW8(200), 1, 0);
  ImgRecursiveAverage(&src, &store, &dst, &lut);
  EXPECT_EQ(dst.GetPixel(1, 0).value, 200);
  // r 0 doubles; r 1 with a width keeps the identity; r 0 with width 1 adds
  // 16 tanh(i / 16): a small step is more than doubled, a large one passes.
  ImgSetRecursiveAverageLUT(&lut, 0.0f, 0.0f);
  EXPECT_EQ(lut[4095 + 100].value, 200);
  ImgSetRecursiveAverageLUT(&lut, 1.0f, 2.0f);
  EXPECT_EQ(lut[4095 + 1000].value, 1000);
  ImgSetRecursiveAverageLUT(&lut, 0.0f, 1.0f);
  EXPECT_EQ(lut[4095 + 16].value, 28);
  EXPECT_EQ(lut[4095 + 4095].value, 4111);
  EXPECT_EQ(static_cast<int16_t>(lut[0].value), -4111);
  EXPECT_EQ(lut[4095].value, 0);
  // Refusals.
  EBW16Vector shortTable(100);
  const Bytes before = testsupport::Snapshot(dst);
  ImgRecursiveAverage(&src, &store, &dst, &shortTable);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgRecursiveAverage");
  EImage<EBW8> wide(4, 1);
  ImgRecursiveAverage(&src, &store, &wide, &lut);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  ImgSetRecursiveAverageLUT(nullptr, 0.5f, 1.0f);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgSetRecursiveAverageLUT");
}

}  // namespace
