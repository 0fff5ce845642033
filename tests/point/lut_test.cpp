#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using Bytes = std::vector<unsigned char>;

// Random source and destination ROIs of one size on two images.
struct Pair {
  EImage<EBW8> si, di;
  EROI<EBW8> s, d;
  Pair(int w, int h, Rng& rng) {
    testsupport::PlaceRandom(si, s, w, h, rng);
    testsupport::PlaceRandom(di, d, w, h, rng);
    testsupport::FillRandom(si, rng);
    testsupport::FillRandom(di, rng);
  }
};

TEST(Lut8, MatchesTableOnRandomRoisOnEveryPath) {
  Rng rng(1);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (int iter = 0; iter < 30; ++iter) {
      const int w = 1 + static_cast<int>(rng() % 300), h = 1 + static_cast<int>(rng() % 5);
      Pair p(w, h, rng);
      // Every third call in place; odd calls through the vector form.
      EImage<EBW8>& img = iter % 3 == 0 ? p.si : p.di;
      EROI<EBW8>& out = iter % 3 == 0 ? p.s : p.d;
      EBW8Vector table(256);
      for (unsigned int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>(rng());
      // The whole destination buffer: the table over the ROI, nothing elsewhere.
      Bytes want = testsupport::Snapshot(img);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          want[&out.GetImagePtr(x, y)->value - &img.GetImagePtr(0, 0)->value] = table[p.s.GetPixel(x, y).value].value;
      if (iter % 2)
        ImgLut(&p.s, &out, &table);
      else
        ImgLut(&p.s, &out, table.GetDataPtr());
      ASSERT_EQ(EGetError(), E_OK);
      ASSERT_EQ(testsupport::Snapshot(img), want) << "path " << path << " iter " << iter;
    }
  }
}

TEST(Lut16, TablesAndBitSelection) {
  Rng rng(4);
  EImage<EBW16> s(33, 5), d16(33, 5);
  EImage<EBW8> d8(33, 5);
  testsupport::FillRandom(s, rng);
  EBW16Vector t16(65536);
  for (unsigned int i = 0; i < 65536; ++i) t16[i] = static_cast<unsigned short>(i * 7919u);
  ImgLut(&s, &d16, &t16);
  ASSERT_EQ(EGetError(), E_OK);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 33; ++x) ASSERT_EQ(d16.GetPixel(x, y).value, t16[s.GetPixel(x, y).value].value);
  // Entry counts and shifts; 0xFFFFFFFF takes the top bits (with 256
  // entries, the top byte).
  struct Case { unsigned int n, shift; };
  for (const Case c : {Case{256, 0xFFFFFFFFu}, Case{256, 0}, Case{256, 3}, Case{16, 12}, Case{1024, 2},
                       Case{65536, 0}, Case{1, 0}, Case{2, 15}}) {
    EBW8Vector t(c.n);
    for (unsigned int i = 0; i < c.n; ++i) t[i] = static_cast<unsigned char>(i * 31u + 7u);
    ImgLut(&s, &d8, &t, c.shift);
    ASSERT_EQ(EGetError(), E_OK) << c.n << " " << c.shift;
    unsigned int bits = 0;
    while ((1u << bits) < c.n) ++bits;
    const unsigned int shift = c.shift == 0xFFFFFFFFu ? 16 - bits : c.shift;
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 33; ++x)
        ASSERT_EQ(d8.GetPixel(x, y).value, t[(s.GetPixel(x, y).value >> shift) & (c.n - 1)].value)
            << c.n << " " << c.shift;
  }
}

// The 8-bit gain as documented: table at the head and tail of a row, the
// 16-bit formula on the 8-byte blocks when the fast paths are on.
unsigned char GainTable(unsigned int i, int g, int o) {
  const uint32_t v = ((i * static_cast<uint32_t>(g)) >> 5) + static_cast<uint32_t>(o);
  return static_cast<unsigned char>(v <= 255 ? v : ((v & 0x80000000u) ? 0 : 255));
}
unsigned char GainBlock(unsigned int i, int g, int o) {
  const int p = static_cast<uint16_t>(i * static_cast<uint16_t>(g)) >> 5;
  int v = p + static_cast<int16_t>(static_cast<uint16_t>(o));
  v = v > 32767 ? 32767 : v;
  return static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v);
}

TEST(GainOffset8, FollowsTableAndBlockFormulaOnEveryPath) {
  Rng rng(6);
  const float gains[] = {1.0f, 0.03f, 0.5f, 2.7f, 8.0f, 9.5f, 40.0f, -1.0f, 0.0f};
  const float offsets[] = {0.0f, -20.0f, 37.9f, 300.0f, -70000.0f, 40000.0f};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (float gain : gains)
      for (float offset : offsets) {
        Pair p(1 + static_cast<int>(rng() % 150), 2, rng);
        ImgGainOffset(&p.s, &p.d, gain, offset);
        ASSERT_EQ(EGetError(), E_OK);
        const int g = static_cast<int>(gain * 32), o = static_cast<int>(offset), w = p.s.GetWidth();
        for (int y = 0; y < p.s.GetHeight(); ++y) {
          const int head = static_cast<int>((8 - reinterpret_cast<uintptr_t>(p.d.GetImagePtr(0, y)) % 8) % 8);
          const int blocks = path >= 0 && w - head >= 8 ? (w - head) / 8 * 8 : 0;
          for (int x = 0; x < w; ++x) {
            const unsigned int v = p.s.GetPixel(x, y).value;
            const bool in_block = x >= head && x < head + blocks;
            ASSERT_EQ(p.d.GetPixel(x, y).value, in_block ? GainBlock(v, g, o) : GainTable(v, g, o))
                << "gain " << gain << " offset " << offset << " x " << x << " head " << head;
          }
        }
      }
  }
  // Above a gain of 8 the block pixels keep only the low 16 bits of the product.
  EImage<EBW8> s(64, 1), d(64, 1);
  ImgCopy(EBW8(250), &s);
  for (int path : {-1, testsupport::AllPaths().back()}) {
    testsupport::PathGuard guard(path);
    ImgGainOffset(&s, &d, 9.0f, 0.0f);
    EXPECT_EQ(d.GetPixel(20, 0).value, path < 0 ? 255 : 202);  // (72000 & 0xFFFF) >> 5
  }
}

TEST(GainOffset, ColourAndSixteenBit) {
  Rng rng(8);
  EImage<EC24> c(37, 3), cd(37, 3);
  testsupport::FillRandom(c, rng);
  const EColor gain(1.5f, -0.5f, 0.25f), offset(-10.0f, 300.0f, 0.9f);
  ImgGainOffset(&c, &cd, gain, offset);
  ASSERT_EQ(EGetError(), E_OK);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 37; ++x)
      for (int k = 0; k < 3; ++k) {
        const double v = static_cast<double>(gain[k]) * c.GetPixel(x, y)[k] + offset[k];
        ASSERT_EQ(cd.GetPixel(x, y)[k], v > 255 ? 255 : v < 0 ? 0 : static_cast<int>(v));
      }
  EImage<EBW16> s(29, 4), d(29, 4);
  testsupport::FillRandom(s, rng);
  for (float g : {1.0f, 0.7f, 3.3f, -2.0f}) {
    ImgGainOffset(&s, &d, g, 123.6f);
    ASSERT_EQ(EGetError(), E_OK);
    for (int y = 0; y < 4; ++y)
      for (int x = 0; x < 29; ++x) {
        const int64_t v = ((static_cast<int64_t>(s.GetPixel(x, y).value) * static_cast<int>(g * 32)) >> 5) + 123;
        ASSERT_EQ(d.GetPixel(x, y).value, v < 0 ? 0 : v > 65535 ? 65535 : v);
      }
  }
}

int g_calls = 0;
EBW8 Invert(EBW8 v) {
  ++g_calls;
  return static_cast<unsigned char>(255 - v.value);
}
EBW16 Half(EBW16 v) { return static_cast<unsigned short>(v.value / 2); }

TEST(Transform, TableOrPerPixel) {
  Rng rng(9);
  Pair p(50, 3, rng);
  for (int table : {1, 0}) {
    g_calls = 0;
    ESetError(E_ERROR_INTERNAL);
    ImgTransform(&p.s, &p.d, Invert, table);
    EXPECT_EQ(g_calls, table ? 256 : 150);
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_STREQ(EGetErrorTrace(), "");  // the label traced on success leaves a clear state
    const Bytes s = testsupport::Bytes(p.s), d = testsupport::Bytes(p.d);
    for (size_t i = 0; i < s.size(); ++i) ASSERT_EQ(d[i], 255 - s[i]);
  }
  EImage<EBW16> a(9, 2), b(9, 2);
  testsupport::FillRandom(a, rng);
  ImgTransform(&a, &b, Half);
  ASSERT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 9; ++x) EXPECT_EQ(b.GetPixel(x, 1).value, a.GetPixel(x, 1).value / 2);
}

// Every form's checks: the code, the label and an untouched destination.
TEST(Lut, ChecksLeaveTheDestinationAlone) {
  Rng rng(3);
  Pair p(40, 4, rng);
  EImage<EBW8> small(39, 4);
  EImage<EBW16> s16(33, 5), d16small(8, 2);
  EImage<EBW8> d8(33, 5);
  EImage<EC24> c(37, 3), csmall(1, 1);
  EROI<EBW8> empty;
  EBW8Vector v300(300), v256(256), v65536(65536);
  EBW16Vector short16(300);
  testsupport::FillRandom(d8, rng);
  auto expect = [&](E_ERRORS code, const char* label, const std::function<void()>& run) {
    const Bytes d = testsupport::Snapshot(p.di), d8b = testsupport::Snapshot(d8), s16b = testsupport::Snapshot(s16);
    run();
    EXPECT_EQ(EGetError(), code) << label;
    EXPECT_STREQ(EGetErrorTrace(), label);
    EXPECT_EQ(testsupport::Snapshot(p.di), d) << label;
    EXPECT_EQ(testsupport::Snapshot(d8), d8b) << label;
    EXPECT_EQ(testsupport::Snapshot(s16), s16b) << label;
  };
  expect(E_ERROR_VECTOR_SIZE, "ImgLut", [&] { ImgLut(&p.s, &p.d, &v300); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgLut", [&] { ImgLut(&p.s, &small, &v256); });
  // The raw form reports without a label.
  expect(E_ERROR_VOID_IMAGE, "", [&] { ImgLut(&empty, &p.d, v256.GetDataPtr()); });
  expect(E_ERROR_VOID_IMAGE, "", [&] { ImgLut(&p.s, &empty, v256.GetDataPtr()); });
  expect(E_ERROR_VECTOR_SIZE, "ImgLut ( BW16 to BW8)", [&] { ImgLut(&s16, &d8, &v300, 0); });
  expect(E_ERROR_BAD_ARGUMENT_2, "ImgLut ( BW16 to BW8)", [&] { ImgLut(&s16, &d8, &v65536, 1); });
  expect(E_ERROR_VECTOR_SIZE, "ImgLut (BW16)", [&] { ImgLut(&s16, &s16, &short16); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgGainOffset (BW16)", [&] { ImgGainOffset(&s16, &d16small, 1.0f, 0.0f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgGainOffset", [&] { ImgGainOffset(&c, &csmall, EColor(1, 1, 1), EColor(0, 0, 0)); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgTransform", [&] { ImgTransform(&p.s, &small, Invert, 1); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgTransform (BW16)", [&] { ImgTransform(&s16, &d16small, Half); });
}

}  // namespace

