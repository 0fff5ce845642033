#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

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
      const int w = 1 + static_cast<int>(rng() % 300);
      const int h = 1 + static_cast<int>(rng() % 5);
      Pair p(w, h, rng);
      EBW8 table[256];
      for (auto& t : table) t = static_cast<unsigned char>(rng());
      const std::vector<unsigned char> before = testsupport::Snapshot(p.di);
      ImgLut(&p.s, &p.d, table);
      ASSERT_EQ(EGetError(), E_OK);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          ASSERT_EQ(p.d.GetPixel(x, y).value, table[p.s.GetPixel(x, y).value].value)
              << "path " << path << " w " << w << " x " << x;
      // Pixels outside the destination ROI keep their bytes.
      const std::vector<unsigned char> after = testsupport::Snapshot(p.di);
      const unsigned char* base = &p.di.GetImagePtr(0, 0)->value;
      for (size_t i = 0; i < after.size(); ++i) {
        const int y = static_cast<int>(i / static_cast<size_t>(p.di.GetRowPitch()));
        const int x = static_cast<int>(i % static_cast<size_t>(p.di.GetRowPitch()));
        const bool inside = x >= p.d.GetOrgX() && x < p.d.GetOrgX() + w && y >= p.d.GetOrgY() &&
                            y < p.d.GetOrgY() + h;
        if (!inside) {
          ASSERT_EQ(after[i], before[i]) << "byte " << i;
        }
      }
      (void)base;
    }
  }
}

TEST(Lut8, InPlaceAndVectorForm) {
  Rng rng(2);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    Pair p(200, 3, rng);
    const std::vector<unsigned char> src = testsupport::Bytes(p.s);
    EBW8Vector table(256);
    for (unsigned int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>(255 - i);
    ImgLut(&p.s, &p.s, &table);
    ASSERT_EQ(EGetError(), E_OK);
    const std::vector<unsigned char> out = testsupport::Bytes(p.s);
    for (size_t i = 0; i < src.size(); ++i) ASSERT_EQ(out[i], 255 - src[i]);
  }
}

TEST(Lut8, Errors) {
  Rng rng(3);
  Pair p(40, 4, rng);
  const std::vector<unsigned char> before = testsupport::Snapshot(p.di);
  EBW8Vector bad(300);
  ImgLut(&p.s, &p.d, &bad);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgLut");
  EBW8Vector good(256);
  EImage<EBW8> small(39, 4);
  ImgLut(&p.s, &small, &good);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgLut");
  // The raw form reports without a label.
  EROI<EBW8> empty;
  ImgLut(&empty, &p.d, good.GetDataPtr());
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "");
  ImgLut(&p.s, &empty, good.GetDataPtr());
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_EQ(testsupport::Snapshot(p.di), before);
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
  ImgLut(&s, &d16, t16.GetDataPtr());
  ASSERT_EQ(EGetError(), E_OK);

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
  // 0xFFFFFFFF with 256 entries reads the top byte.
  s.SetPixel(0xABCD, 0, 0);
  EBW8Vector id(256);
  for (unsigned int i = 0; i < 256; ++i) id[i] = static_cast<unsigned char>(i);
  ImgLut(&s, &d8, &id, 0xFFFFFFFFu);
  EXPECT_EQ(d8.GetPixel(0, 0).value, 0xAB);

  const std::vector<unsigned char> before = testsupport::Snapshot(d8);
  EBW8Vector v300(300), v65536(65536);
  ImgLut(&s, &d8, &v300, 0);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgLut ( BW16 to BW8)");
  ImgLut(&s, &d8, &v65536, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_2);
  EXPECT_EQ(testsupport::Snapshot(d8), before);
  EBW16Vector short16(300);
  ImgLut(&s, &d16, &short16);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgLut (BW16)");
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

void ExpectGainModel(const EROI<EBW8>& s, const EROI<EBW8>& d, float gain, float offset, bool fast) {
  const int g = static_cast<int>(gain * 32);
  const int o = static_cast<int>(offset);
  for (int y = 0; y < s.GetHeight(); ++y) {
    const uintptr_t addr = reinterpret_cast<uintptr_t>(d.GetImagePtr(0, y));
    const int w = s.GetWidth();
    int head = static_cast<int>((8 - addr % 8) % 8);
    int blocks = 0;
    if (fast && w - head >= 8) blocks = (w - head) / 8 * 8;
    for (int x = 0; x < w; ++x) {
      const unsigned int v = s.GetPixel(x, y).value;
      const bool inBlock = x >= head && x < head + blocks;
      const unsigned char want = inBlock ? GainBlock(v, g, o) : GainTable(v, g, o);
      ASSERT_EQ(d.GetPixel(x, y).value, want) << "gain " << gain << " offset " << offset << " x " << x
                                              << " head " << head << " fast " << fast;
    }
  }
}

TEST(GainOffset8, FollowsTableAndBlockFormulaOnEveryPath) {
  Rng rng(6);
  const float gains[] = {1.0f, 0.03f, 0.5f, 2.7f, 8.0f, 9.5f, 40.0f, -1.0f, 0.0f};
  const float offsets[] = {0.0f, -20.0f, 37.9f, 300.0f, -70000.0f, 40000.0f};
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (float gain : gains) {
      for (float offset : offsets) {
        const int w = 1 + static_cast<int>(rng() % 150);
        Pair p(w, 2, rng);
        ImgGainOffset(&p.s, &p.d, gain, offset);
        ASSERT_EQ(EGetError(), E_OK);
        ExpectGainModel(p.s, p.d, gain, offset, path >= 0);
      }
    }
  }
}

TEST(GainOffset8, WorkedValues) {
  Rng rng(7);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    Pair p(100, 3, rng);
    ImgGainOffset(&p.s, &p.d, 1.0f, 0.0f);
    EXPECT_EQ(testsupport::Bytes(p.d), testsupport::Bytes(p.s));
    ImgGainOffset(&p.s, &p.d, 0.03f, 17.0f);  // G is 0
    for (unsigned char b : testsupport::Bytes(p.d)) ASSERT_EQ(b, 17);
    ImgGainOffset(&p.s, &p.d, 0.03f, -17.0f);
    for (unsigned char b : testsupport::Bytes(p.d)) ASSERT_EQ(b, 0);
  }
  // Above a gain of 8 the block pixels keep only the low 16 bits of the product.
  EImage<EBW8> s(64, 1), d(64, 1);
  for (int x = 0; x < 64; ++x) s.SetPixel(250, x, 0);
  {
    testsupport::PathGuard guard(-1);
    ImgGainOffset(&s, &d, 9.0f, 0.0f);
    EXPECT_EQ(d.GetPixel(20, 0).value, 255);
  }
  {
    testsupport::PathGuard guard(testsupport::AllPaths().back());
    ImgGainOffset(&s, &d, 9.0f, 0.0f);
    EXPECT_EQ(d.GetPixel(20, 0).value, 202);  // (72000 & 0xFFFF) >> 5
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
        double v = static_cast<double>(gain[k]) * c.GetPixel(x, y)[k] + offset[k];
        const int want = v > 255 ? 255 : v < 0 ? 0 : static_cast<int>(v);
        ASSERT_EQ(cd.GetPixel(x, y)[k], want);
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
  EImage<EBW16> other(28, 4);
  ImgGainOffset(&s, &other, 1.0f, 0.0f);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGainOffset (BW16)");
  EImage<EC24> cother(1, 1);
  ImgGainOffset(&c, &cother, gain, offset);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGainOffset");
}

int g_calls = 0;
EBW8 Invert(EBW8 v) {
  ++g_calls;
  return static_cast<unsigned char>(255 - v.value);
}
EBW16 Half(EBW16 v) { return static_cast<unsigned short>(v.value / 2); }

TEST(Transform, TableOrPerPixelAndTrace) {
  Rng rng(9);
  Pair p(50, 3, rng);
  g_calls = 0;
  ImgTransform(&p.s, &p.d, Invert, 1);
  EXPECT_EQ(g_calls, 256);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_STREQ(EGetErrorTrace(), "");  // the label traced on success leaves a clear state
  const std::vector<unsigned char> s = testsupport::Bytes(p.s), d = testsupport::Bytes(p.d);
  for (size_t i = 0; i < s.size(); ++i) ASSERT_EQ(d[i], 255 - s[i]);
  g_calls = 0;
  ImgTransform(&p.s, &p.d, Invert, 0);
  EXPECT_EQ(g_calls, 150);
  EXPECT_EQ(testsupport::Bytes(p.d), d);
  EImage<EBW8> small(3, 3);
  ImgTransform(&p.s, &small, Invert, 1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgTransform");

  EImage<EBW16> a(9, 2), b(9, 2);
  testsupport::FillRandom(a, rng);
  ImgTransform(&a, &b, Half);
  ASSERT_EQ(EGetError(), E_OK);
  for (int x = 0; x < 9; ++x) EXPECT_EQ(b.GetPixel(x, 1).value, a.GetPixel(x, 1).value / 2);
  EImage<EBW16> c(8, 2);
  ImgTransform(&a, &c, Half);
  EXPECT_STREQ(EGetErrorTrace(), "ImgTransform (BW16)");
}

}  // namespace
