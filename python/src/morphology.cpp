// Morphology: box and disk erosion, dilation and their compounds on grey,
// 16-bit, colour and bit images, the two-level forms, the older pass-count
// forms with a border value, medians, thinning, thickening and the distance
// map.
#include "bind.h"

namespace mirelpy {

namespace {

// Reach of a box operation: `passes` times the half sizes.
py::object BoxReach(int passes) {
  return Registry::ReachOf(
      [passes](unsigned hw, const py::object& hh, const py::args&, const py::kwargs&) {
        return py::make_tuple(passes * static_cast<long long>(HalfHeight(hh, hw)), passes * static_cast<long long>(hw));
      },
      py::arg("half_width") = 1u, py::arg("half_height") = py::none());
}
py::object DiskReach(int passes) {
  return Registry::ReachOf(
      [passes](unsigned r, const py::args&, const py::kwargs&) {
        return py::make_tuple(passes * static_cast<long long>(r), passes * static_cast<long long>(r));
      },
      py::arg("half_width") = 1u);
}
py::object PassReach(int passes) {
  return Registry::ReachOf(
      [passes](int n, const py::args&, const py::kwargs&) { return py::make_tuple(passes * n, passes * n); },
      py::arg("passes") = 1);
}

// The border value of the older forms: a number for grey images, a number
// or 3-sequence for colour.
template <class T>
auto Border(const py::object& v, int fallback) {
  if constexpr (std::is_same<T, EC24>::value) {
    return v.is_none() ? EC24(static_cast<unsigned char>(fallback), static_cast<unsigned char>(fallback),
                              static_cast<unsigned char>(fallback))
                       : PixelValue<EC24>(v);
  } else {
    return v.is_none() ? fallback : v.cast<int>();
  }
}

}  // namespace

// Box and disk forms of one operation, under `pyname`_box and `pyname`_disk.
#define MIREL_PY_MORPHOLOGY(pyname, box, disk, passes)                                                      \
  r.Def(                                                                                                    \
      pyname "_box", #box, "image", BoxReach(passes),                                                       \
      [](const py::handle& src, unsigned hw, const py::object& hh, const py::object& out) {                 \
        const unsigned h = HalfHeight(hh, hw);                                                              \
        return Unary(pyname "_box", src, out, [&](auto* s, auto* d) MIREL_CALL(box(s, d, hw, h)));          \
      },                                                                                                    \
      "The library's " #box ": a box of (2 half_width + 1) x (2 half_height + 1) pixels; pixels outside the " \
      "image take no part. out= may be src.",                                                               \
      py::arg("src"), py::arg("half_width") = 1u, py::arg("half_height") = py::none(), py::kw_only(),       \
      OutArg());                                                                                            \
  r.Def(                                                                                                    \
      pyname "_disk", #disk, "image", DiskReach(passes),                                                    \
      [](const py::handle& src, unsigned hw, const py::object& out) {                                       \
        return Unary(pyname "_disk", src, out, [&](auto* s, auto* d) MIREL_CALL(disk(s, d, hw)));           \
      },                                                                                                    \
      "The library's " #disk ": a disk (an octagon) of half-width half_width. out= may be src.",            \
      py::arg("src"), py::arg("half_width") = 1u, py::kw_only(), OutArg())

// An older pass-count form with one or two border values.
#define MIREL_PY_LEGACY1(pyname, fn, border)                                                                \
  r.Def(                                                                                                    \
      pyname, #fn, "image", PassReach(1),                                                                   \
      [](const py::handle& src, int passes, const py::object& b, const py::object& out) {                   \
        return Dispatch<OneOf<EBW8, EC24>>(pyname, AsArray(src, pyname), [&](auto tag) {                    \
          using T = typename std::decay_t<decltype(tag)>::type;                                             \
          const auto value = Border<T>(b, border);                                                          \
          return Unary(pyname, src, out, [&](auto* s, auto* d) MIREL_CALL(fn(s, d, passes, value)));        \
        });                                                                                                 \
      },                                                                                                    \
      "The library's " #fn " with a pass count; pixels outside the image read as `border`.",               \
      py::arg("src"), py::arg("passes") = 1, py::arg("border") = py::none(), py::kw_only(), OutArg())
#define MIREL_PY_LEGACY2(pyname, fn, first, second)                                                         \
  r.Def(                                                                                                    \
      pyname, #fn, "image", PassReach(2),                                                                   \
      [](const py::handle& src, int passes, const py::object& b1, const py::object& b2,                     \
         const py::object& out) {                                                                           \
        return Dispatch<OneOf<EBW8, EC24>>(pyname, AsArray(src, pyname), [&](auto tag) {                    \
          using T = typename std::decay_t<decltype(tag)>::type;                                             \
          const auto v1 = Border<T>(b1, first);                                                             \
          const auto v2 = Border<T>(b2, second);                                                            \
          return Unary(pyname, src, out, [&](auto* s, auto* d) MIREL_CALL(fn(s, d, passes, v1, v2)));       \
        });                                                                                                 \
      },                                                                                                    \
      "The library's " #fn " with a pass count; pixels outside the image read as the border of each step.", \
      py::arg("src"), py::arg("passes") = 1, py::arg("first_border") = py::none(),                         \
      py::arg("second_border") = py::none(), py::kw_only(), OutArg())

// Thinning or thickening: (result, passes run).
#define MIREL_PY_THIN(pyname, fn)                                                                          \
  r.Def(                                                                                                    \
      pyname, #fn, "other", py::none(),                                                                     \
      [](const py::handle& src, const py::object& kernel, int rotation, int iterations,                    \
         const py::object& outside, const py::object& out) {                                                \
        EKernel k;                                                                                          \
        KernelFrom(kernel, py::none(), py::none(), py::none(), outside, &k);                                \
        int passes = iterations;                                                                            \
        const auto rot = static_cast<KERNEL_ROTATION>(rotation);                                            \
        py::object image = Unary(pyname, src, out, [&](auto* s, auto* d) MIREL_CALL(fn(s, d, &k, rot, passes))); \
        return py::make_tuple(image, passes);                                                               \
      },                                                                                                    \
      "The library's " #fn ": a 3x3 hit-or-miss pattern (kernel of -1 don't care, 0 clear, 1 set, or a "    \
      "preset name such as 'pattern_tee') applied until nothing changes or `iterations` passes (0: the "    \
      "width), turning 45 degrees a pass with rotation 1 or 2. Returns (image, passes run).",              \
      py::arg("src"), py::arg("kernel"), py::arg("rotation") = 0, py::arg("iterations") = 0,                \
      py::arg("outside") = py::none(), py::kw_only(), OutArg())

void BindMorphology(Registry& r) {
  MIREL_PY_MORPHOLOGY("erode", ImgErodeBox, ImgErodeDisk, 1);
  MIREL_PY_MORPHOLOGY("dilate", ImgDilateBox, ImgDilateDisk, 1);
  MIREL_PY_MORPHOLOGY("open", ImgOpenBox, ImgOpenDisk, 2);
  MIREL_PY_MORPHOLOGY("close", ImgCloseBox, ImgCloseDisk, 2);
  MIREL_PY_MORPHOLOGY("white_top_hat", ImgWhiteTopHatBox, ImgWhiteTopHatDisk, 2);
  MIREL_PY_MORPHOLOGY("black_top_hat", ImgBlackTopHatBox, ImgBlackTopHatDisk, 2);
  MIREL_PY_MORPHOLOGY("morpho_gradient", ImgMorphoGradientBox, ImgMorphoGradientDisk, 1);
  MIREL_PY_MORPHOLOGY("bilevel_erode", ImgBiLevelErodeBox, ImgBiLevelErodeDisk, 1);
  MIREL_PY_MORPHOLOGY("bilevel_dilate", ImgBiLevelDilateBox, ImgBiLevelDilateDisk, 1);
  MIREL_PY_MORPHOLOGY("bilevel_open", ImgBiLevelOpenBox, ImgBiLevelOpenDisk, 2);
  MIREL_PY_MORPHOLOGY("bilevel_close", ImgBiLevelCloseBox, ImgBiLevelCloseDisk, 2);
  MIREL_PY_MORPHOLOGY("bilevel_white_top_hat", ImgBiLevelWhiteTopHatBox, ImgBiLevelWhiteTopHatDisk, 2);
  MIREL_PY_MORPHOLOGY("bilevel_black_top_hat", ImgBiLevelBlackTopHatBox, ImgBiLevelBlackTopHatDisk, 2);
  MIREL_PY_MORPHOLOGY("bilevel_morpho_gradient", ImgBiLevelMorphoGradientBox, ImgBiLevelMorphoGradientDisk, 1);

  MIREL_PY_LEGACY1("erode", ImgErode, 255);
  MIREL_PY_LEGACY1("dilate", ImgDilate, 0);
  MIREL_PY_LEGACY2("open", ImgOpen, 255, 0);
  MIREL_PY_LEGACY2("close", ImgClose, 0, 255);
  MIREL_PY_LEGACY2("white_top_hat", ImgWhiteTopHat, 255, 0);
  MIREL_PY_LEGACY2("black_top_hat", ImgBlackTopHat, 0, 255);

  r.Def(
      "median", "ImgMedian", "image", Reach(1, 1),
      [](const py::handle& src, const py::object& border, const py::object& out) {
        const py::array a = AsArray(src, "median");
        if (Matches<EC24>(a)) {
          const EC24 b = border.is_none() ? EC24(0, 0, 0) : PixelValue<EC24>(border);
          return Unary("median", a, out, [&](auto* s, auto* d) MIREL_CALL(ImgMedian(s, d, b)));
        }
        if (!border.is_none()) {
          const int b = border.cast<int>();
          return Unary("median", a, out, [&](auto* s, auto* d) MIREL_CALL(ImgMedian(s, d, b)));
        }
        return Unary("median", a, out, [](auto* s, auto* d) MIREL_CALL(ImgMedian(s, d)));
      },
      "The 3x3 median, edges repeated; with a border (uint8 or colour), pixels outside read as it.",
      py::arg("src"), py::arg("border") = py::none(), py::kw_only(), OutArg());
  r.Def(
      "bilevel_median", "ImgBiLevelMedian", "image", Reach(1, 1),
      [](const py::handle& src, const py::object& out) {
        return Unary("bilevel_median", src, out, [](auto* s, auto* d) MIREL_CALL(ImgBiLevelMedian(s, d)));
      },
      "The 3x3 median of an image of 0 and 255.", py::arg("src"), py::kw_only(), OutArg());

  MIREL_PY_THIN("thin", ImgThin);
  MIREL_PY_THIN("thick", ImgThick);
  MIREL_PY_THIN("bilevel_thin", ImgBiLevelThin);
  MIREL_PY_THIN("bilevel_thick", ImgBiLevelThick);

  r.Def(
      "distance", "ImgDistance", "other", py::none(),
      [](const py::handle& src, int limit, const py::object& out) {
        return Convert("distance", src, py::str("uint16"), out, [&](auto* s, auto* d) -> decltype(ImgDistance(
                                                                  s, static_cast<EImage<EBW16>*>(d), limit)) {
          return ImgDistance(s, static_cast<EImage<EBW16>*>(d), limit);
        });
      },
      "The chessboard distance to the nearest zero pixel, capped by `limit` and by the pixel's value, as uint16.",
      py::arg("src"), py::arg("limit") = 65535, py::kw_only(), OutArg());
}

}  // namespace mirelpy
