// Interlaced frames on EBW8, EBW16 and EC24: each operation against a model
// on rows of elements over random ROIs (in place and not), fields split and
// joined back, the shift found on a frame with a known shift, the sharpness
// score, the worked numbers and the refusals.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

template <class T>
struct Elem {
  using E = uint8_t;
  static constexpr int kPer = sizeof(T);  // EBW8: 1, EC24: 3 bytes
};
template <>
struct Elem<EBW16> {
  using E = uint16_t;
  static constexpr int kPer = 1;
};

// Rows of elements (a byte, a 16-bit value, or each byte of a colour pixel).
using Model = std::vector<std::vector<int>>;

template <class T>
Model Read(const EROI<T>& roi) {
  using E = typename Elem<T>::E;
  Model m(static_cast<size_t>(roi.GetHeight()));
  for (int y = 0; y < roi.GetHeight(); ++y) {
    const E* p = reinterpret_cast<const E*>(roi.GetImagePtr(0, y));
    m[static_cast<size_t>(y)].assign(p, p + roi.GetWidth() * Elem<T>::kPer);
  }
  return m;
}

template <class T>
void Write(EROI<T>& roi, const Model& m) {
  using E = typename Elem<T>::E;
  for (int y = 0; y < roi.GetHeight(); ++y)
    for (size_t i = 0; i < m[static_cast<size_t>(y)].size(); ++i)
      reinterpret_cast<E*>(roi.GetImagePtr(0, y))[i] = static_cast<E>(m[static_cast<size_t>(y)][i]);
}

template <class T>
struct Random {
  EImage<T> image;
  EROI<T> roi;
  Random(int w, int h, Rng& rng) {
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
  }
};

// The documented sums: 32 bits wrapping, or for 16-bit values each square
// signed in 32 bits inside a 64-bit sum.
template <class T>
uint64_t Square(int d) {
  const uint32_t u = static_cast<uint32_t>(d) * static_cast<uint32_t>(d);
  return sizeof(T) == 2 ? static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(u))) : u;
}

template <class T>
class Frames : public ::testing::Test {};
using PixelTypes = ::testing::Types<EBW8, EBW16, EC24>;
TYPED_TEST_SUITE(Frames, PixelTypes);

TYPED_TEST(Frames, SplitJoinShiftRebuildAndSwapMatchTheModels) {
  using T = TypeParam;
  constexpr int P = Elem<T>::kPer;
  Rng rng(21);
  for (int iter = 0; iter < 150; ++iter) {
    const int w = 1 + static_cast<int>(rng() % 30), h = 1 + static_cast<int>(rng() % 8);
    const int frame = static_cast<int>(rng() % 3);  // 2 stands for frame 1 too
    Random<T> s(w, h, rng), d(w, h, rng);
    const Model src = Read(s.roi), old = Read(d.roi);
    // Split, then join into a random image: only that frame's rows change.
    EImage<T> half(w, frame != 0 ? h / 2 : (h + 1) / 2);
    ImgGetFrame(&s.roi, &half, frame);
    ImgSetFrame(&half, &d.roi, frame);
    Model want = old;
    if (half.GetHeight() == 0) {  // frame 1 of a single row: a void image
      ASSERT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
    } else {
      ASSERT_EQ(EGetError(), E_OK);
      for (int y = frame != 0; y < h; y += 2) want[y] = src[y];
    }
    ASSERT_EQ(Read(d.roi), want);
    // Realign, rebuild or swap, in place every other time.
    const bool inPlace = iter % 2 == 1;
    const int op = iter % 3;
    const unsigned stay = static_cast<unsigned>(rng());
    const int shift = w == 1 ? 0 : static_cast<int>(rng() % (2 * w - 1)) - (w - 1);
    if (op == 1 && h == 1 && (stay & 1u) == 1u) continue;  // no neighbour to rebuild from
    Write(d.roi, old);
    EROI<T>* out = inPlace ? &s.roi : &d.roi;
    want = inPlace ? src : old;
    const int first = static_cast<int>(~stay & 1u);
    if (op == 0) {
      ImgRealignFrame(&s.roi, out, shift, stay);
      const int fill = inPlace && shift == 1 ? 0 : 1;  // column 1, read after the move
      for (int y = first; y < h; y += 2)
        for (int x = 0; x < w; ++x)
          for (int c = 0; c < P; ++c) {
            const int from = shift >= 0 ? (x >= shift ? x - shift : fill) : (x < w + shift ? x - shift : w - 1);
            want[y][x * P + c] = src[y][from * P + c];
          }
    } else if (op == 1) {
      ImgRebuildFrame(&s.roi, out, stay);
      for (int y = first; y < h; y += 2) {
        const int up = y > 0 ? y - 1 : y + 1, down = y + 1 < h ? y + 1 : y - 1;
        for (int i = 0; i < w * P; ++i) want[y][i] = (src[up][i] + src[down][i]) >> 1;
      }
    } else {
      ImgSwapFrames(&s.roi, out);
      for (int y = 0; y + 1 < h; y += 2) want[y] = src[y + 1], want[y + 1] = src[y];
    }
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(Read(*out), want) << "op " << op << " " << w << "x" << h << " shift " << shift << " in place " << inPlace;
  }
}

TYPED_TEST(Frames, MatchAndFocusingFollowTheirSums) {
  using T = TypeParam;
  constexpr int P = Elem<T>::kPer;
  Rng rng(5);
  for (int iter = 0; iter < 60; ++iter) {
    const int w = 2 + static_cast<int>(rng() % 40), h = 2 + static_cast<int>(rng() % 5);
    Random<T> s(w, h, rng);
    Model m = Read(s.roi);
    if (sizeof(T) == 2 && iter % 3 == 0) {  // small 16-bit values: sums that stay positive
      for (auto& row : m)
        for (int& e : row) e &= 0x3FF;
      Write(s.roi, m);
    }
    const int r = static_cast<int>(rng() % static_cast<unsigned>(h - 1));
    const int a = static_cast<int>(rng() % 9) - 6;
    const int b = a + static_cast<int>(rng() % static_cast<unsigned>(std::min(9, w + 1)));
    const int k = a + static_cast<int>(rng() % static_cast<unsigned>(b - a + 1));
    if (iter % 2 == 0) {  // row r + 1 is row r moved by a known shift k
      for (int x = 0; x < w; ++x)
        for (int c = 0; c < P; ++c) m[r + 1][x * P + c] = m[r][((x + k) % w + w) % w * P + c];
      Write(s.roi, m);
    }
    int want = 1000, best = 1000;
    uint64_t least = sizeof(T) == 2 ? ~uint64_t{0} : ~uint32_t{0};
    for (int k = a; k <= b; ++k) {
      uint64_t sum = 0;
      for (int x = std::max(b, 0); x < w + std::min(a, 0); ++x)
        for (int c = 0; c < P; ++c) sum += Square<T>(m[r][x * P + c] - m[r + 1][(x - k) * P + c]);
      if (sizeof(T) != 2) sum &= 0xFFFFFFFFu;
      if (sum < least) least = sum, want = k;
    }
    ImgMatchFrames(&s.roi, r, a, b, best);
    ASSERT_EQ(EGetError(), E_OK);
    ASSERT_EQ(best, want) << w << "x" << h << " row " << r << " " << a << ".." << b;
    if (iter % 2 == 0 && sizeof(T) != 2 && std::max(b, 0) < w + std::min(a, 0)) {
      EXPECT_EQ(least, 0u);
      EXPECT_LE(best, k);  // k or an earlier shift that ties with it
    }
    // The sharpness score.
    double total = 0;
    for (int y = 0; y + 1 < h; ++y) {
      uint64_t sum = 0;
      for (int i = 0; i + P < w * P; ++i)
        sum += Square<T>(m[y][i] - m[y][i + P]) + Square<T>(m[y][i] - m[y + 1][i]);
      total += sizeof(T) == 2 ? static_cast<double>(static_cast<int64_t>(sum)) : static_cast<double>(sum & 0xFFFFFFFFu);
    }
    const float score = static_cast<float>(std::sqrt(total / (static_cast<double>(w) * P * h)));
    // Large 16-bit differences can make the total negative and the score NaN.
    const float got = ImgFocusing(&s.roi);
    if (std::isnan(score)) EXPECT_TRUE(std::isnan(got));
    else EXPECT_FLOAT_EQ(got, score);
  }
}

TYPED_TEST(Frames, RefusalsLeaveTheDestinationUntouched) {
  using T = TypeParam;
  Rng rng(1);
  EImage<T> src(4, 5), dst(4, 5), three(4, 3), none;
  testsupport::FillRandom(src, rng);
  testsupport::FillRandom(dst, rng);
  const auto before = testsupport::Snapshot(dst);
  const auto beforeThree = testsupport::Snapshot(three);
  ImgGetFrame(&src, &three, 1);  // frame 1 of 5 rows has 2
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(std::string(EGetErrorTrace()).find("ImgGetFrame ( E"), 0u);
  ImgSetFrame(&three, &dst, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgRealignFrame(&src, &dst, 4, 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  ImgRealignFrame(&src, &dst, -4, 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  ImgSwapFrames(&src, &three);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgRebuildFrame(&src, static_cast<EROI<T>*>(nullptr), 0);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(std::string(EGetErrorTrace()).find("ImgRebuildFrame ( E"), 0u);
  EImage<T> row(4, 1), rowOut(4, 1);
  ImgRebuildFrame(&row, &rowOut, 1);  // the even row has no neighbour
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  ImgRebuildFrame(&row, &rowOut, 0);  // writes no row
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Snapshot(dst), before);
  EXPECT_EQ(testsupport::Snapshot(three), beforeThree);
  int best = 77;
  ImgMatchFrames(&src, 4, 0, 1, best);  // the last row has no row below
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  ImgMatchFrames(&src, 0, 2, 1, best);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  ImgMatchFrames(&src, 0, -3, 2, best);  // wider than the width
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(best, 77);
  ImgMatchFrames(&src, 0, 3, 3, best);  // one shift is tested and returned
  EXPECT_EQ(best, 3);
  EXPECT_EQ(ImgFocusing(&none), 0.0f);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(std::string(EGetErrorTrace()).find("ImgFocusing ( "), 0u);
  ImgCopy(T{}, &src);
  EXPECT_EQ(ImgFocusing(&src), 0.0f);
  EXPECT_EQ(ImgFocusing(&row), 0.0f);  // one row: no terms
}

TEST(InterlacedFrames, WorkedNumbers) {
  EImage<EBW8> img(4, 1), three(3, 1), five(2, 5), field(2, 3);
  const unsigned char v[4] = {10, 20, 30, 40};
  for (int x = 0; x < 4; ++x) img.SetPixel(EBW8(v[x]), x, 0);
  ImgRealignFrame(&img, &img, 2, 1);  // frame 1 stays: row 0 is written
  EXPECT_EQ(Read(img), (Model{{20, 20, 10, 20}}));
  for (int x = 0; x < 3; ++x) three.SetPixel(EBW8(v[x]), x, 0);
  ImgRealignFrame(&three, &three, -1, 1);
  EXPECT_EQ(Read(three), (Model{{20, 30, 30}}));
  ImgRealignFrame(&three, &three, 1, 0);  // frame 0 stays: no odd row here
  EXPECT_EQ(Read(three), (Model{{20, 30, 30}}));
  ImgCopy(EBW8(1), &five);
  ImgGetFrame(&five, &field, 0);
  EXPECT_EQ(EGetError(), E_OK);
  EImage<EC24> c(2, 2);
  ImgCopy(EC24(0, 0, 0), &c);
  c.SetPixel(EC24(2, 0, 0), 1, 0);  // one term (0 - 2)^2 over 3 x 2 x 2 bytes
  EXPECT_FLOAT_EQ(ImgFocusing(&c), std::sqrt(4.0f / 12.0f));
}

}  // namespace
