// Edges and the frequency domain: gradient pairs and their lookup tables,
// the Canny chain and its steps, anisotropic diffusion, Fourier transforms
// and complex images.
#include "bind.h"

namespace mirelpy {

namespace {

// A 512 x 512 lookup table made by one of the table builders.
template <class F>
py::array LookupTable(F make) {
  EImage<EBW8> table;
  Run([&] { make(&table); });
  py::array_t<std::uint8_t> a({table.GetHeight(), table.GetWidth()});
  for (int y = 0; y < table.GetHeight(); ++y)
    std::memcpy(a.mutable_data(y, 0), table.GetImagePtr(0, y), static_cast<std::size_t>(table.GetWidth()));
  return std::move(a);
}

template <class T>
const py::array& Expect(const py::array& a, const char* op) {
  if (!Matches<T>(a)) WrongKind(op, a, Kind<T>::kName);
  return a;
}

}  // namespace

void BindEdge(Registry& r) {
  py::module_& m = r.module();
  const py::object one = Reach(1, 1);

  r.Def(
      "gradient_vector", "ImgGradientVector", "image", one,
      [](const py::handle& src, const py::object& out) {
        return Convert("gradient_vector", src, py::str("uint32"), out,
                       [](auto* s, auto* d) MIREL_CALL(ImgGradientVector(s, d)));
      },
      "The gradient pair of each pixel as uint32: dx = p(x-1) - p(x+1) in the signed low 16 bits, dy likewise "
      "down in the high 16 bits.",
      py::arg("src"), py::kw_only(), OutArg());
  r.Def(
      "gradient_scalar", "ImgGradientScalar", "image", one,
      [](const py::handle& src, const py::handle& lookup, const py::object& out) {
        const py::array t = Expect<EBW8>(AsArray(lookup, "gradient_scalar"), "gradient_scalar");
        Source<EBW8> table(t);
        return Convert("gradient_scalar", src, py::str("uint8"), out,
                       [&](auto* s, auto* d) MIREL_CALL(ImgGradientScalar(s, d, table.roi())));
      },
      "Looks each gradient pair (of a uint8 image, or of uint32 pairs) up in a 512 x 512 uint8 table.",
      py::arg("src"), py::arg("lookup"), py::kw_only(), OutArg());
  m.def(
      "modulus_image",
      [](float scale) { return LookupTable([scale](EImage<EBW8>* t) { ImgModulusImage(t, scale); }); },
      "The 512 x 512 table of sqrt(dx^2 + dy^2) * scale for gradient_scalar.", py::arg("scale") = 1.0f);
  m.def(
      "argument_image",
      [](unsigned origin, float period) {
        const auto o = static_cast<unsigned char>(IntegerIn(py::int_(origin), 0, 255, "origin"));
        return LookupTable([o, period](EImage<EBW8>* t) { ImgArgumentImage(t, EBW8(o), period); });
      },
      "The 512 x 512 table of the gradient's angle (256 a turn of `period` degrees, 0 for a full turn).",
      py::arg("origin") = 0u, py::arg("period") = 0.0f);

  r.Def(
      "canny", "ImgCannyDetector", "image", py::none(),
      [](const py::handle& src, int smooth, int following, const py::object& out) {
        py::object target = out;
        if (target.is_none()) {
          const py::array a = AsArray(src, "canny");
          target = py::module_::import("numpy").attr("zeros")(py::make_tuple(a.shape(0), a.shape(1)), "uint8");
        }
        return Unary("canny", src, target, [&](auto* s, auto* d) MIREL_CALL(ImgCannyDetector(
                                               s, d, static_cast<SMOOTH_MODE>(smooth),
                                               static_cast<EDGE_FOLLOWING_MODE>(following))));
      },
      "The Canny chain with thresholds from the histogram of suppressed magnitudes; edges are 80 (strong) and "
      "255 (reached) on 0. smooth: 0 none, 1-3 Gaussian 3x3/5x5/7x7, 4 median; following: 0 hysteresis, 1 "
      "contour growing.",
      py::arg("src"), py::arg("smooth") = 1, py::arg("following") = 0, py::kw_only(), OutArg());
  m.def(
      "non_maxima_suppression",
      [](const py::handle& gradient) {
        const py::array g = Expect<EBW32>(AsArray(gradient, "non_maxima_suppression"), "non_maxima_suppression");
        Source<EBW32> s(g);
        Destination<EBW32> direction(py::none(), s.width(), s.height(), "non_maxima_suppression");
        Destination<EBW8> magnitude(py::none(), s.width(), s.height(), "non_maxima_suppression");
        Run([&] { NonMaximaSuppression(s.roi(), direction.roi(), magnitude.roi()); });
        return py::make_tuple(magnitude.Finish(), direction.Finish());
      },
      "From gradient pairs: (magnitude kept where it is a maximum across the edge, direction class 0, 45, 90 "
      "or 135).",
      py::arg("gradient"));
  m.def(
      "hysteresis",
      [](const py::handle& magnitude, const py::handle& direction, unsigned low, unsigned high) {
        const py::array mg = Expect<EBW8>(AsArray(magnitude, "hysteresis"), "hysteresis");
        const py::array dir = Expect<EBW32>(AsArray(direction, "hysteresis"), "hysteresis");
        const auto lo = static_cast<unsigned char>(IntegerIn(py::int_(low), 0, 255, "low")),
                   hi = static_cast<unsigned char>(IntegerIn(py::int_(high), 0, 255, "high"));
        Source<EBW8> sm(mg);
        Source<EBW32> sd(dir);
        py::array zeros = py::module_::import("numpy").attr("zeros")(py::make_tuple(mg.shape(0), mg.shape(1)), "uint8");
        Destination<EBW8> d(zeros, 0, 0, "hysteresis");
        Run([&] { Hysteresis(sm.roi(), d.roi(), &sd.image(), lo, hi); });
        return d.Finish();
      },
      "Edge following by hysteresis from suppressed magnitudes and direction classes.", py::arg("magnitude"),
      py::arg("direction"), py::arg("low"), py::arg("high"));
  m.def(
      "contour_growing",
      [](const py::handle& magnitude, const py::handle& direction, unsigned low) {
        const py::array mg = Expect<EBW8>(AsArray(magnitude, "contour_growing"), "contour_growing");
        const py::array dir = Expect<EBW32>(AsArray(direction, "contour_growing"), "contour_growing");
        const auto lo = static_cast<unsigned char>(IntegerIn(py::int_(low), 0, 255, "low"));
        Source<EBW8> sm(mg);
        Source<EBW32> sd(dir);
        py::array zeros =
            py::module_::import("numpy").attr("zeros")(py::make_tuple(mg.shape(0), mg.shape(1)), "uint8");
        Destination<EBW8> d(zeros, 0, 0, "contour_growing");
        Run([&] { ContourGrowing(sm.roi(), d.roi(), sd.roi(), lo); });
        return d.Finish();
      },
      "Edge following by contour growing from suppressed magnitudes and direction classes.",
      py::arg("magnitude"), py::arg("direction"), py::arg("low"));

  r.Def(
      "anisotropic_diffusion", "ImgAnisotropicDiffusion", "image", py::none(),
      [](const py::handle& src, unsigned iterations, unsigned keep, const py::object& out) {
        const auto k = static_cast<unsigned char>(keep);
        return Unary("anisotropic_diffusion", src, out,
                     [&](auto* s, auto* d) MIREL_CALL(ImgAnisotropicDiffusion(s, d, iterations, k)));
      },
      "Perona-Malik diffusion, `iterations` passes.", py::arg("src"), py::arg("iterations") = 1u,
      py::arg("keep") = 0u, py::kw_only(), OutArg());

  r.Def(
      "dft", "ImgFastDFT", "resample", py::none(),
      [](const py::handle& src, float scale, bool fast, const py::object& out) {
        if (fast)
          return Convert("dft", src, py::str("complex64"), out,
                         [&](auto* s, auto* d) MIREL_CALL(ImgFastDFT(s, d, scale)));
        return Convert("dft", src, py::str("complex64"), out,
                       [&](auto* s, auto* d) MIREL_CALL(ImgSlowDFT(s, d, scale)));
      },
      "The forward DFT of a uint8 image as complex64, the spectrum centred; fast=True needs power-of-two sizes.",
      py::arg("src"), py::arg("scale") = 1.0f, py::arg("fast") = true, py::kw_only(), OutArg());
  r.Def(
      "complex_modulus", "ImgComplexModulus", "image", Reach(0, 0),
      [](const py::handle& src, float scale, bool logarithmic, float logScale, bool rescaled, const py::object& out) {
        const int lg = logarithmic ? 1 : 0;
        if (rescaled)
          return Convert("complex_modulus", src, py::str("uint8"), out,
                         [&](auto* s, auto* d) MIREL_CALL(ImgComplexRescaledModulus(s, d, scale, lg, logScale)));
        return Convert("complex_modulus", src, py::str("uint8"), out,
                       [&](auto* s, auto* d) MIREL_CALL(ImgComplexModulus(s, d, scale, lg, logScale)));
      },
      "The modulus of a complex64 image as uint8 (times scale; ln(m + 1) * log_scale when logarithmic; weighted "
      "by the distance from the centre when rescaled).",
      py::arg("src"), py::arg("scale") = 1.0f, py::arg("logarithmic") = false, py::arg("log_scale") = 1.0f,
      py::arg("rescaled") = false, py::kw_only(), OutArg());
  r.Def(
      "complex_argument", "ImgComplexArgument", "image", Reach(0, 0),
      [](const py::handle& src, const py::object& out) {
        return Convert("complex_argument", src, py::str("uint8"), out,
                       [](auto* s, auto* d) MIREL_CALL(ImgComplexArgument(s, d)));
      },
      "The angle of a complex64 image as uint8, 256 a turn.", py::arg("src"), py::kw_only(), OutArg());
  r.Def(
      "complex_disc_energy", "ImgComplexDiscEnergy", "vector", py::none(),
      [](const py::handle& src) {
        const py::array a = Expect<EComplex64>(AsArray(src, "complex_disc_energy"), "complex_disc_energy");
        Source<EComplex64> s(a);
        EVector energy;
        Run([&] {
          energy.SetType(7, 0, 1);
          if (EGetError() == E_OK) ImgComplexDiscEnergy(s.roi(), &energy);
        });
        const auto n = static_cast<py::ssize_t>(energy.GetNbGroup());
        py::array_t<float> result(n);
        if (n != 0) std::memcpy(result.mutable_data(), energy.GetDataPtr(), static_cast<std::size_t>(n) * 4u);
        return result;
      },
      "The cumulative radial energy of a complex64 image: element r is the energy within radius r + 1, the "
      "centre left out.",
      py::arg("src"));
}

}  // namespace mirelpy
