// Measurement: pixel counts and statistics, pixel comparison, moments,
// centres and inertia, noise, the correlogram and the regression line.
// Each returns numbers (a tuple where the library gives several).
#include <array>
#include <tuple>

#include <pybind11/stl.h>

#include "bind.h"

namespace mirelpy {

namespace {

// A measurement whose library call writes through references: `f(s)`
// returns a tuple of them (only the kinds the call exists for dispatch).
// The body is a parenthesised generic lambda; MIREL_PY_EXTRA_PARAMS lists
// the parameters after the image, which the body may capture.
#define MIREL_PY_MEASURE(pyname, library, doc, body, ...)                                            \
  r.Def(                                                                                            \
      pyname, library, "measure", py::none(),                                                       \
      [](const py::handle& src MIREL_PY_EXTRA_PARAMS) { return Measure(pyname, src, body); }, doc, \
      py::arg("src"), ##__VA_ARGS__)

// The results of the grey-or-colour statistics: a number or a pair for grey
// images, one per component (and covariance) for colour.
template <class S, class Grey, class Colour>
using GreyOrColour =
    std::enable_if_t<OneOf<EBW8, EBW16, EC24>::value<PixelOf<S>>,
                     std::conditional_t<std::is_same<PixelOf<S>, EC24>::value, Colour, Grey>>;

template <class T>
using Wide = std::conditional_t<std::is_same<T, EBW16>::value, EBW16, unsigned char>;

}  // namespace

void BindMeasure(Registry& r) {
#define MIREL_PY_EXTRA_PARAMS
  MIREL_PY_MEASURE("pixel_stat", "ImgPixelStat", "(minimum, maximum, mean).",
                   ([](auto* s) -> decltype(ImgPixelStat(s, std::declval<Wide<PixelOf<decltype(s)>>&>(),
                                                        std::declval<Wide<PixelOf<decltype(s)>>&>(),
                                                        std::declval<float&>()),
                                           std::tuple<unsigned, unsigned, float>()) {
                     Wide<PixelOf<decltype(s)>> lo{}, hi{};
                     float mean = 0.0f;
                     ImgPixelStat(s, lo, hi, mean);
                     return {static_cast<unsigned>(lo), static_cast<unsigned>(hi), mean};
                   }));
  MIREL_PY_MEASURE("pixel_min", "ImgPixelMin", "The smallest pixel.",
                   ([](auto* s) -> decltype(ImgPixelMin(s, std::declval<Wide<PixelOf<decltype(s)>>&>()),
                                           unsigned()) {
                     Wide<PixelOf<decltype(s)>> v{};
                     ImgPixelMin(s, v);
                     return static_cast<unsigned>(v);
                   }));
  MIREL_PY_MEASURE("pixel_max", "ImgPixelMax", "The largest pixel.",
                   ([](auto* s) -> decltype(ImgPixelMax(s, std::declval<Wide<PixelOf<decltype(s)>>&>()),
                                           unsigned()) {
                     Wide<PixelOf<decltype(s)>> v{};
                     ImgPixelMax(s, v);
                     return static_cast<unsigned>(v);
                   }));
  MIREL_PY_MEASURE("pixel_average", "ImgPixelAverage",
                   "The mean; for colour the means of components 2, 1, 0 (the pixel's third, second, first byte).",
                   ([](auto* s) -> GreyOrColour<decltype(s), float, std::array<float, 3>> {
                     using T = PixelOf<decltype(s)>;
                     if constexpr (std::is_same<T, EC24>::value) {
                       std::array<float, 3> v{};
                       ImgPixelAverage(s, v[0], v[1], v[2]);
                       return v;
                     } else {
                       float a = 0.0f;
                       ImgPixelAverage(s, a);
                       return a;
                     }
                   }));
  MIREL_PY_MEASURE("pixel_variance", "ImgPixelVariance",
                   "(variance, mean); for colour (variances 0, 1, 2, covariances 01, 12, 02, means 0, 1, 2) with "
                   "component 0 the pixel's third byte.",
                   ([](auto* s) -> GreyOrColour<decltype(s), std::array<float, 2>, std::array<float, 9>> {
                     using T = PixelOf<decltype(s)>;
                     if constexpr (std::is_same<T, EC24>::value) {
                       std::array<float, 9> v{};
                       ImgPixelVariance(s, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8]);
                       return v;
                     } else {
                       std::array<float, 2> v{};
                       ImgPixelVariance(s, v[0], v[1]);
                       return v;
                     }
                   }));
  MIREL_PY_MEASURE("pixel_stddev", "ImgPixelStdDev",
                   "(deviation, mean); for colour (deviations 0, 1, 2, correlations 01, 12, 02, means 0, 1, 2).",
                   ([](auto* s) -> GreyOrColour<decltype(s), std::array<float, 2>, std::array<float, 9>> {
                     using T = PixelOf<decltype(s)>;
                     if constexpr (std::is_same<T, EC24>::value) {
                       std::array<float, 9> v{};
                       ImgPixelStdDev(s, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8]);
                       return v;
                     } else {
                       std::array<float, 2> v{};
                       ImgPixelStdDev(s, v[0], v[1]);
                       return v;
                     }
                   }));
  MIREL_PY_MEASURE("mean", "ImgAverage", "The mean (of the runs of a run mask, where one is set).",
                   ([](auto* s) MIREL_CALL(ImgAverage(s))));
  MIREL_PY_MEASURE("variance", "ImgVariance", "The population variance.", ([](auto* s) MIREL_CALL(ImgVariance(s))));
  MIREL_PY_MEASURE("weighted_moments", "ImgWeightedMoments",
                   "The grey-weighted moments to the fourth order: (m00, m10, m01, m20, m11, m02, m30, m21, m12, m03, "
                   "m40, m31, m22, m13, m04).",
                   ([](auto* s) -> decltype(ImgWeightedMoments(s, std::declval<float&>(), std::declval<float&>(),
                                                              std::declval<float&>()),
                                           std::array<float, 15>()) {
                     std::array<float, 15> v{};
                     ImgWeightedMoments(s, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11],
                                        v[12], v[13], v[14]);
                     return v;
                   }));
  MIREL_PY_MEASURE("centroid", "ImgCentroid", "The grey-weighted centre (x, y).",
                   ([](auto* s) -> decltype(ImgCentroid(s, std::declval<float&>(), std::declval<float&>()),
                                           std::pair<float, float>()) {
                     float x = 0.0f, y = 0.0f;
                     ImgCentroid(s, x, y);
                     return {x, y};
                   }));
#undef MIREL_PY_EXTRA_PARAMS

#define MIREL_PY_EXTRA_PARAMS , unsigned threshold
  MIREL_PY_MEASURE("area", "ImgArea", "The number of pixels at or above threshold.",
                   ([threshold](auto* s) -> decltype(ImgArea(s, Wide<PixelOf<decltype(s)>>(threshold),
                                                            std::declval<int&>()),
                                                    int()) {
                     int area = 0;
                     ImgArea(s, Wide<PixelOf<decltype(s)>>(threshold), area);
                     return area;
                   }),
                   py::arg("threshold"));
  MIREL_PY_MEASURE("binary_moments", "ImgBinaryMoments",
                   "Moments of the pixels at or above threshold: (m00, m10, m01, m20, m11, m02).",
                   ([threshold](auto* s) -> decltype(ImgBinaryMoments(s, threshold, std::declval<float&>(),
                                                                     std::declval<float&>(), std::declval<float&>()),
                                                    std::array<float, 6>()) {
                     std::array<float, 6> v{};
                     ImgBinaryMoments(s, threshold, v[0], v[1], v[2], v[3], v[4], v[5]);
                     return v;
                   }),
                   py::arg("threshold"));
  MIREL_PY_MEASURE("gravity_center", "ImgGravityCenter", "The centre (x, y) of the pixels at or above threshold.",
                   ([threshold](auto* s) -> decltype(ImgGravityCenter(s, threshold, std::declval<float&>(),
                                                                     std::declval<float&>()),
                                                    std::pair<float, float>()) {
                     float x = 0.0f, y = 0.0f;
                     ImgGravityCenter(s, threshold, x, y);
                     return {x, y};
                   }),
                   py::arg("threshold"));
  MIREL_PY_MEASURE("inertia", "ImgInertia",
                   "(xx, xy, yy, x, y, count) of the pixels at or above threshold: second central moments, centre "
                   "and count.",
                   ([threshold](auto* s) -> decltype(ImgInertia(s, threshold, std::declval<float&>(),
                                                               std::declval<float&>(), std::declval<float&>()),
                                                    std::tuple<float, float, float, float, float, unsigned>()) {
                     float xx = 0.0f, xy = 0.0f, yy = 0.0f, x = 0.0f, y = 0.0f;
                     unsigned n = 0;
                     ImgInertia(s, threshold, xx, xy, yy, &x, &y, &n);
                     return {xx, xy, yy, x, y, n};
                   }),
                   py::arg("threshold"));
#undef MIREL_PY_EXTRA_PARAMS

#define MIREL_PY_EXTRA_PARAMS , unsigned low, unsigned high
  MIREL_PY_MEASURE("pixel_count", "ImgPixelCount", "(below low, from low to below high, at or above high).",
                   ([low, high](auto* s) -> decltype(ImgPixelCount(s, Wide<PixelOf<decltype(s)>>(low),
                                                                  Wide<PixelOf<decltype(s)>>(high),
                                                                  std::declval<int&>(), std::declval<int&>(),
                                                                  std::declval<int&>()),
                                                    std::tuple<int, int, int>()) {
                     using W = Wide<PixelOf<decltype(s)>>;
                     int a = 0, b = 0, c = 0;
                     ImgPixelCount(s, W(low), W(high), a, b, c);
                     return {a, b, c};
                   }),
                   py::arg("low"), py::arg("high"));
  MIREL_PY_MEASURE("area_double_threshold", "ImgAreaDoubleThreshold", "The number of pixels p with low <= p < high.",
                   ([low, high](auto* s) -> decltype(ImgAreaDoubleThreshold(
                                            s, Wide<PixelOf<decltype(s)>>(low),
                                            Wide<PixelOf<decltype(s)>>(high), std::declval<int&>()),
                                                    int()) {
                     using W = Wide<PixelOf<decltype(s)>>;
                     int area = 0;
                     ImgAreaDoubleThreshold(s, W(low), W(high), area);
                     return area;
                   }),
                   py::arg("low"), py::arg("high"));
#undef MIREL_PY_EXTRA_PARAMS

  r.Def(
      "pixel_compare", "ImgPixelCompare", "measure", py::none(),
      [](const py::handle& a, const py::handle& b) {
        return MeasurePair("pixel_compare", a, b, [](auto* x, auto* y) MIREL_CALL(ImgPixelCompare(x, y)));
      },
      "The number of pixels that differ.", py::arg("a"), py::arg("b"));
  r.Def(
      "rms_noise", "ImgRmsNoise", "measure", py::none(),
      [](const py::handle& a, const py::handle& b, int mode) {
        const auto md = static_cast<IMG_REFERENCE_NOISE>(mode);
        return MeasurePair("rms_noise", a, b, [md](auto* x, auto* y) MIREL_CALL(ImgRmsNoise(x, y, md)));
      },
      "The RMS difference from a reference; mode 0 a noiseless reference, 1 independent noise, 2 a reference "
      "that includes the source.",
      py::arg("src"), py::arg("reference"), py::arg("mode") = 0);
  r.Def(
      "signal_noise_ratio", "ImgSignalNoiseRatio", "measure", py::none(),
      [](const py::handle& a, const py::handle& b, int mode) {
        const auto md = static_cast<IMG_REFERENCE_NOISE>(mode);
        return MeasurePair("signal_noise_ratio", a, b,
                           [md](auto* x, auto* y) MIREL_CALL(ImgSignalNoiseRatio(x, y, md)));
      },
      "The signal-to-noise ratio against a reference (modes as rms_noise).", py::arg("src"), py::arg("reference"),
      py::arg("mode") = 0);
  r.Def(
      "correlogram", "ImgCorrelogram", "measure", py::none(),
      [](const py::handle& a, const py::handle& b, bool wide) {
        const py::array x = AsArray(a, "correlogram"), y = AsArray(b, "correlogram");
        if (!Matches<EBW8>(x)) WrongKind("correlogram", x, "uint8");
        if (!Matches<EBW8>(y)) WrongKind("correlogram", y, "uint8");
        Source<EBW8> sx(x), sy(y);
        auto table = [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          EImage<T> t;
          Run([&] { ImgCorrelogram(sx.roi(), sy.roi(), &t); });
          py::array result = NewArray<T>(t.GetWidth(), t.GetHeight());
          for (int row = 0; row < t.GetHeight(); ++row)
            std::memcpy(static_cast<unsigned char*>(result.mutable_data()) + row * result.strides(0),
                        t.GetImagePtr(0, row), static_cast<std::size_t>(t.GetWidth()) * sizeof(T));
          return result;
        };
        return wide ? table(Tag<EBW16>{}) : table(Tag<EBW8>{});
      },
      "The 256 x 256 table of joint pixel values (uint8, or uint16 with wide).", py::arg("src"),
      py::arg("reference"), py::arg("wide") = false);
  r.Def(
      "linear_regression", "ImgLinearRegression", "measure", py::none(),
      [](const py::handle& a, const py::handle& b, bool skipExtremes) {
        return MeasurePair("linear_regression", a, b, [skipExtremes](auto* x, auto* y)
                               -> decltype(ImgLinearRegression(x, y, std::declval<float&>(), std::declval<float&>(),
                                                               std::declval<float&>(), 0),
                                           std::tuple<float, float, float>()) {
                             float slope = 0.0f, offset = 0.0f, correlation = 0.0f;
                             ImgLinearRegression(x, y, slope, offset, correlation, skipExtremes ? 1 : 0);
                             return {slope, offset, correlation};
                           });
      },
      "(slope, offset, correlation) of y against x pixel by pixel.", py::arg("x"), py::arg("y"),
      py::arg("skip_extremes") = false);
}

}  // namespace mirelpy
