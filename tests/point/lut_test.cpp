#include <cstdint>
#include <string>

#include "point_support.h"

namespace {

using testsupport::Rng;

using Pair = pointtest::RoiPair<EBW8, EBW8>;

// Every third call in place; odd calls through the vector form.
TEST(Lut8, MatchesTableOnRandomRoisOnEveryPath) {
  Rng rng(1);
  for (int iter = 0; iter < 40; ++iter) {
    Pair p(1 + static_cast<int>(rng() % 300), 1 + static_cast<int>(rng() % 5), rng);
    EBW8Vector table(256);
    for (unsigned int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>(rng());
    EROI<EBW8>* src = iter % 3 == 0 ? &p.dst : &p.src;
    p.ExpectOnEveryPath(
        [&] {
          if (iter % 2) ImgLut(src, &p.dst, &table);
          else ImgLut(src, &p.dst, table.GetDataPtr());
        },
        [&](int x, int y) { return table[src->GetPixel(x, y).value]; }, "iter " + std::to_string(iter));
  }
}

// Entry counts and shifts; 0xFFFFFFFF takes the top bits (with 256
// entries, the top byte).
TEST(Lut16, TablesAndBitSelection) {
  Rng rng(4);
  EBW16Vector t16(65536);
  for (unsigned int i = 0; i < 65536; ++i) t16[i] = static_cast<unsigned short>(i * 7919u);
  pointtest::RoiPair<EBW16, EBW16> wide(33, 5, rng);
  wide.ExpectOnEveryPath([&] { ImgLut(&wide.src, &wide.dst, &t16); },
                         [&](int x, int y) { return t16[wide.src.GetPixel(x, y).value]; }, "16-bit table");
  struct Case { unsigned int n, shift; };
  for (const Case c : {Case{256, 0xFFFFFFFFu}, Case{256, 0}, Case{256, 3}, Case{16, 12}, Case{1024, 2},
                       Case{65536, 0}, Case{1, 0}, Case{2, 15}}) {
    EBW8Vector t(c.n);
    for (unsigned int i = 0; i < c.n; ++i) t[i] = static_cast<unsigned char>(i * 31u + 7u);
    unsigned int bits = 0;
    while ((1u << bits) < c.n) ++bits;
    const unsigned int shift = c.shift == 0xFFFFFFFFu ? 16 - bits : c.shift;
    pointtest::RoiPair<EBW16, EBW8> p(33, 5, rng);
    p.ExpectOnEveryPath([&] { ImgLut(&p.src, &p.dst, &t, c.shift); },
                        [&](int x, int y) { return t[(p.src.GetPixel(x, y).value >> shift) & (c.n - 1)]; },
                        std::to_string(c.n) + " entries, shift " + std::to_string(c.shift));
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
        ImgGainOffset(&p.src, &p.dst, gain, offset);
        ASSERT_EQ(EGetError(), E_OK);
        const int g = static_cast<int>(gain * 32), o = static_cast<int>(offset), w = p.src.GetWidth();
        for (int y = 0; y < p.src.GetHeight(); ++y) {
          const int head = static_cast<int>((8 - reinterpret_cast<uintptr_t>(p.dst.GetImagePtr(0, y)) % 8) % 8);
          const int blocks = path >= 0 && w - head >= 8 ? (w - head) / 8 * 8 : 0;
          for (int x = 0; x < w; ++x) {
            const unsigned int v = p.src.GetPixel(x, y).value;
            const bool in_block = x >= head && x < head + blocks;
            ASSERT_EQ(p.dst.GetPixel(x, y).value, in_block ? GainBlock(v, g, o) : GainTable(v, g, o))
                << "gain " << gain << " offset " << offset << " x " << x << " head " << head;
          }
        }
      }
  }
  // Above a gain of 8 the block pixels keep only the low 16 bits of the
  // product. An aligned row of exactly 8 pixels is one block.
  EImage<EBW8> s(8, 1), d(8, 1);
  ASSERT_EQ(reinterpret_cast<uintptr_t>(d.GetImagePtr(0, 0)) % 8, 0u);
  ImgCopy(EBW8(250), &s);
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    ImgGainOffset(&s, &d, 9.0f, 0.0f);
    EXPECT_EQ(d.GetPixel(7, 0).value, path < 0 ? 255 : 202);  // (72000 & 0xFFFF) >> 5
  }
}

TEST(GainOffset, ColourAndSixteenBit) {
  Rng rng(8);
  pointtest::RoiPair<EC24, EC24> c(37, 3, rng);
  const EColor gain(1.5f, -0.5f, 0.25f), offset(-10.0f, 300.0f, 0.9f);
  c.ExpectOnEveryPath([&] { ImgGainOffset(&c.src, &c.dst, gain, offset); },
                      [&](int x, int y) {
                        EC24 out;
                        for (int k = 0; k < 3; ++k) {
                          const double v = static_cast<double>(gain[k]) * c.src.GetPixel(x, y)[k] + offset[k];
                          out[k] = static_cast<unsigned char>(v > 255 ? 255 : v < 0 ? 0 : v);
                        }
                        return out;
                      },
                      "colour");
  for (float g : {1.0f, 0.7f, 3.3f, -2.0f}) {
    pointtest::RoiPair<EBW16, EBW16> p(29, 4, rng);
    p.ExpectOnEveryPath([&] { ImgGainOffset(&p.src, &p.dst, g, 123.6f); },
                        [&](int x, int y) {
                          const int64_t v = ((int64_t{p.src.GetPixel(x, y).value} * static_cast<int>(g * 32)) >> 5) + 123;
                          return EBW16(static_cast<unsigned short>(v < 0 ? 0 : v > 65535 ? 65535 : v));
                        },
                        "gain " + std::to_string(g));
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
  for (int table : {1, 0})
    p.ExpectOnEveryPath(
        [&] {
          g_calls = 0;
          ImgTransform(&p.src, &p.dst, Invert, table);
          EXPECT_EQ(g_calls, table ? 256 : 150);
        },
        [&](int x, int y) { return EBW8(static_cast<unsigned char>(255 - p.src.GetPixel(x, y).value)); },
        "table " + std::to_string(table));
  pointtest::RoiPair<EBW16, EBW16> wide(9, 2, rng);
  wide.ExpectOnEveryPath([&] { ImgTransform(&wide.src, &wide.dst, Half); },
                         [&](int x, int y) { return EBW16(static_cast<unsigned short>(wide.src.GetPixel(x, y).value / 2)); },
                         "16-bit");
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
  const pointtest::Refusals expect(p.dimg, small, d8, s16, d16small, csmall);
  expect(E_ERROR_VECTOR_SIZE, "ImgLut", [&] { ImgLut(&p.src, &p.dst, &v300); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgLut", [&] { ImgLut(&p.src, &small, &v256); });
  // The raw form reports without a label.
  expect(E_ERROR_VOID_IMAGE, "", [&] { ImgLut(&empty, &p.dst, v256.GetDataPtr()); });
  expect(E_ERROR_VOID_IMAGE, "", [&] { ImgLut(&p.src, &empty, v256.GetDataPtr()); });
  expect(E_ERROR_VECTOR_SIZE, "ImgLut ( BW16 to BW8)", [&] { ImgLut(&s16, &d8, &v300, 0); });
  expect(E_ERROR_BAD_ARGUMENT_2, "ImgLut ( BW16 to BW8)", [&] { ImgLut(&s16, &d8, &v65536, 1); });
  expect(E_ERROR_VECTOR_SIZE, "ImgLut (BW16)", [&] { ImgLut(&s16, &s16, &short16); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgGainOffset (BW16)", [&] { ImgGainOffset(&s16, &d16small, 1.0f, 0.0f); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgGainOffset", [&] { ImgGainOffset(&c, &csmall, EColor(1, 1, 1), EColor(0, 0, 0)); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgTransform", [&] { ImgTransform(&p.src, &small, Invert, 1); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgTransform (BW16)", [&] { ImgTransform(&s16, &d16small, Half); });
}

}  // namespace

