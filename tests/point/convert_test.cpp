#include <cstdint>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;

template <class S, class D, class F>
void CheckConvert(unsigned int shift, F expect, Rng& rng) {
  EImage<S> si;
  EROI<S> s;
  EImage<D> di;
  EROI<D> d;
  const int w = 1 + static_cast<int>(rng() % 40), h = 1 + static_cast<int>(rng() % 4);
  testsupport::PlaceRandom(si, s, w, h, rng);
  testsupport::PlaceRandom(di, d, w, h, rng);
  testsupport::FillRandom(si, rng);
  ImgConvert(&s, &d, shift);
  ASSERT_EQ(EGetError(), E_OK);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) ASSERT_EQ(d.GetPixel(x, y).value, expect(s.GetPixel(x, y).value)) << shift;
}

TEST(ConvertDepth, EveryPairOnRandomRois) {
  Rng rng(21);
  for (unsigned int shift : {0u, 1u, 4u, 8u, 9u, 15u, 16u, 31u, 32u, 33u, 40u}) {
    const unsigned int n = shift % 32;
    CheckConvert<EBW16, EBW8>(shift, [n](uint32_t v) { return static_cast<uint8_t>(v >> n); }, rng);
    CheckConvert<EBW32, EBW8>(shift, [n](uint32_t v) { return static_cast<uint8_t>(v >> n); }, rng);
    CheckConvert<EBW32, EBW16>(shift, [n](uint32_t v) { return static_cast<uint16_t>(v >> n); }, rng);
    CheckConvert<EBW8, EBW16>(shift, [n](uint32_t v) { return static_cast<uint16_t>(v << n); }, rng);
    CheckConvert<EBW8, EBW32>(shift, [n](uint32_t v) { return static_cast<uint32_t>(v << n); }, rng);
    CheckConvert<EBW16, EBW32>(shift, [n](uint32_t v) { return static_cast<uint32_t>(v << n); }, rng);
  }
}

// The packed 4:2:2 word: the grey byte, then 128.
TEST(ConvertDepth, To422) {
  EImage<EBW16> w16(1, 1);
  EImage<EBW8> w8(1, 1);
  w8.SetPixel(7, 0, 0);
  ImgConvertTo422(&w8, &w16);
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(w16.GetImagePtr(0, 0));
  EXPECT_EQ(bytes[0], 7);
  EXPECT_EQ(bytes[1], 128);
}

// The size check comes before the void check; a failure leaves the
// destination alone.
TEST(ConvertDepth, Checks) {
  EImage<EBW16> a(4, 4);
  EImage<EBW8> b(4, 3);
  const std::vector<unsigned char> before = testsupport::Snapshot(b);
  ImgConvert(&a, &b, 8);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvert ( BW16 to BW8)");
  EXPECT_EQ(testsupport::Snapshot(b), before);
  EImage<EBW8> big(10, 10);
  EROI<EBW8> v1(&big, 0, 0, 3, 3), v2(&big, 0, 0, 4, 4);
  big.SetSize(0, 0);
  EImage<EBW16> big16(10, 10);
  EROI<EBW16> w1(&big16, 0, 0, 3, 3);
  big16.SetSize(0, 0);
  ImgConvertTo422(&v2, &w1);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  ImgConvertTo422(&v1, &w1);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvertTo422 ( BW8 to BW16)");
  EImage<EBW8> e;
  EImage<EBW32> c0;
  ImgConvert(&c0, &e, 1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvert ( BW32 to BW8)");
}

}  // namespace
