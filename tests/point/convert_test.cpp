#include <cstdint>
#include <string>

#include "point_support.h"

namespace {

using testsupport::Rng;

template <class S, class D, class F>
void CheckConvert(unsigned int shift, F expect, Rng& rng) {
  pointtest::RoiPair<S, D> p(1 + static_cast<int>(rng() % 40), 1 + static_cast<int>(rng() % 4), rng);
  p.ExpectOnEveryPath([&] { ImgConvert(&p.src, &p.dst, shift); },
                      [&](int x, int y) { return D(expect(p.src.GetPixel(x, y).value)); },
                      "shift " + std::to_string(shift));
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

// The widening and narrowing conversions run vector blocks with a scalar
// rest: every width from 1 across several blocks, at random ROI origins.
TEST(ConvertDepth, VectorBlocksAtEveryWidth) {
  Rng rng(23);
  for (int width = 1; width <= 80; ++width) {
    const unsigned int shift = rng() % 20;
    pointtest::RoiPair<EBW8, EBW16> widen(width, 2, rng);
    widen.ExpectOnEveryPath([&] { ImgConvert(&widen.src, &widen.dst, shift); },
                            [&](int x, int y) {
                              return EBW16(static_cast<uint16_t>(uint32_t{widen.src.GetPixel(x, y).value} << shift));
                            },
                            "widen " + std::to_string(width));
    pointtest::RoiPair<EBW16, EBW8> narrow(width, 2, rng);
    narrow.ExpectOnEveryPath([&] { ImgConvert(&narrow.src, &narrow.dst, shift); },
                             [&](int x, int y) { return EBW8(static_cast<uint8_t>(narrow.src.GetPixel(x, y).value >> shift)); },
                             "narrow " + std::to_string(width));
  }
}

// The packed 4:2:2 word: the grey byte, then 128.
TEST(ConvertDepth, To422) {
  Rng rng(22);
  pointtest::RoiPair<EBW8, EBW16> p(37, 3, rng);
  p.ExpectOnEveryPath([&] { ImgConvertTo422(&p.src, &p.dst); },
                      [&](int x, int y) { return EBW16(static_cast<uint16_t>(0x8000 | p.src.GetPixel(x, y).value)); },
                      "4:2:2");
}

// The size check comes before the void check; a failure leaves the
// destination alone.
TEST(ConvertDepth, Checks) {
  EImage<EBW16> w16(4, 4);
  EImage<EBW8> b8(4, 3), void8;
  EImage<EBW32> void32;
  // ROIs that keep their sizes on images emptied under them.
  EImage<EBW8> gone8(10, 10);
  EImage<EBW16> gone16(10, 10);
  EROI<EBW8> void3(&gone8, 0, 0, 3, 3), void4(&gone8, 0, 0, 4, 4);
  EROI<EBW16> void3w(&gone16, 0, 0, 3, 3);
  gone8.SetSize(0, 0);
  gone16.SetSize(0, 0);
  const pointtest::Refusals expect(w16, b8);
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvert ( BW16 to BW8)", [&] { ImgConvert(&w16, &b8, 8); });
  expect(E_ERROR_SIZE_MISMATCH, "ImgConvertTo422 ( BW8 to BW16)", [&] { ImgConvertTo422(&void4, &void3w); });
  expect(E_ERROR_VOID_IMAGE, "ImgConvertTo422 ( BW8 to BW16)", [&] { ImgConvertTo422(&void3, &void3w); });
  expect(E_ERROR_VOID_IMAGE, "ImgConvert ( BW32 to BW8)", [&] { ImgConvert(&void32, &void8, 1); });
}

}  // namespace
