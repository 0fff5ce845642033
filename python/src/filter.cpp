// Linear filters: kernel convolutions, the preset 3x3 filters, the 5x5 and
// 7x7 filters and the smoothing of any size, on 8-bit, 16-bit and colour
// images (the library's overloads decide which kinds each takes).
#include "bind.h"

namespace mirelpy {

namespace {

struct KernelName {
  const char* name;
  KERNEL_TYPE type;
};
constexpr KernelName kKernels[] = {
    {"pattern_tee", KERNEL_PATTERN_TEE}, {"pattern_bar", KERNEL_PATTERN_BAR}, {"pattern_full", KERNEL_PATTERN_FULL},
    {"sobel_x", KERNEL_SOBEL_X},         {"sobel_y", KERNEL_SOBEL_Y},         {"prewitt_x", KERNEL_PREWITT_X},
    {"prewitt_y", KERNEL_PREWITT_Y},     {"laplacian_4", KERNEL_LAPLACIAN_4}, {"laplacian_8", KERNEL_LAPLACIAN_8},
    {"gaussian", KERNEL_GAUSSIAN},       {"lowpass_ring", KERNEL_LOWPASS_RING}, {"uniform", KERNEL_UNIFORM},
    {"highpass_1", KERNEL_HIGHPASS_1},   {"highpass_2", KERNEL_HIGHPASS_2},
};

// Half the kernel's size each way: how far a convolution reaches.
py::object KernelReach() {
  return Registry::ReachOf(
      [](const py::object& kernel, const py::args&, const py::kwargs&) {
        if (py::isinstance<py::str>(kernel) || py::isinstance<py::int_>(kernel)) return py::make_tuple(1, 1);
        const py::array k = AsArray(kernel, "convolve");
        if (k.ndim() != 2) throw py::value_error("convolve: a kernel is a 2-D array");
        return py::make_tuple(k.shape(0) / 2, k.shape(1) / 2);
      },
      py::arg("kernel"));
}

// (half_y, half_x) with a half-height of None standing for the half-width.
py::object HalfReach() {
  return Registry::ReachOf(
      [](unsigned hx, const py::object& hy, const py::args&, const py::kwargs&) {
        return py::make_tuple(HalfHeight(hy, hx), hx);
      },
      py::arg("half_x"), py::arg("half_y") = py::none());
}

}  // namespace

void KernelFrom(const py::object& kernel, const py::object& gain, const py::object& offset,
                const py::object& rectifier, const py::object& outside, EKernel* k) {
  if (py::isinstance<py::str>(kernel) || py::isinstance<py::int_>(kernel)) {
    int type = 0;
    if (py::isinstance<py::str>(kernel)) {
      const std::string name = kernel.cast<std::string>();
      for (const auto& kn : kKernels)
        if (name == kn.name) type = kn.type;
      if (type == 0) throw py::value_error("no preset kernel named " + name);
    } else {
      type = kernel.cast<int>();
    }
    EOk();
    k->SetKernel(static_cast<KERNEL_TYPE>(type));
    Check();
  } else {
    const py::array a = py::array_t<float, py::array::c_style | py::array::forcecast>::ensure(kernel);
    if (!a || a.ndim() != 2) throw py::value_error("a kernel is a 2-D array, a preset name or a KERNEL_TYPE number");
    if (a.shape(0) > 32767 || a.shape(1) > 32767) throw py::value_error("kernel too large");
    const auto sy = static_cast<short>(a.shape(0)), sx = static_cast<short>(a.shape(1));
    *k = EKernel(sx, sy, 1.0f, 0u, 2, 0u);
    Check();
    const float* data = static_cast<const float*>(a.data());
    for (int y = 0; y < sy; ++y)
      for (int x = 0; x < sx; ++x) k->SetKernelData(x, y, data[y * sx + x]);
    Check();
  }
  if (!gain.is_none()) k->SetGain(gain.cast<float>());
  if (!offset.is_none()) k->SetOffset(offset.cast<unsigned>());
  if (!rectifier.is_none()) k->SetRectifier(rectifier.cast<short>());
  if (!outside.is_none()) k->SetOutsideValue(outside.cast<unsigned>());
}

// One preset filter: name, the library's function, and its reach.
#define MIREL_PY_FILTER(pyname, fn, reach)                                                         \
  r.Def(                                                                                          \
      pyname, #fn, "image", reach < 0 ? py::object(py::none()) : Reach(reach, reach),             \
      [](const py::handle& src, const py::object& out) {                                          \
        return Unary(pyname, src, out, [](auto* s, auto* d) MIREL_CALL(fn(s, d)));                 \
      },                                                                                          \
      "The library's " #fn ".", py::arg("src"), py::kw_only(), OutArg())

void BindFilter(Registry& r) {
  MIREL_PY_FILTER("sobel_x", ImgConvolSobelX, 1);
  MIREL_PY_FILTER("sobel_y", ImgConvolSobelY, 1);
  MIREL_PY_FILTER("sobel", ImgConvolSobel, 1);
  MIREL_PY_FILTER("prewitt_x", ImgConvolPrewittX, 1);
  MIREL_PY_FILTER("prewitt_y", ImgConvolPrewittY, 1);
  MIREL_PY_FILTER("prewitt", ImgConvolPrewitt, 1);
  MIREL_PY_FILTER("gradient_x", ImgConvolGradientX, 1);
  MIREL_PY_FILTER("gradient_y", ImgConvolGradientY, 1);
  MIREL_PY_FILTER("gradient", ImgConvolGradient, 1);
  // A sum of 510 keeps its low byte pixel by pixel but saturates in the
  // blocks of the fast path, so the result depends on where a pixel falls in
  // its row: a block of the result is not the result of a block.
  MIREL_PY_FILTER("laplacian_x", ImgConvolLaplacianX, -1);
  MIREL_PY_FILTER("laplacian_y", ImgConvolLaplacianY, -1);
  MIREL_PY_FILTER("laplacian_4", ImgConvolLaplacian4, 1);
  MIREL_PY_FILTER("laplacian_8", ImgConvolLaplacian8, 1);
  MIREL_PY_FILTER("highpass_1", ImgConvolHighpass1, 1);
  MIREL_PY_FILTER("highpass_2", ImgConvolHighpass2, 1);
  MIREL_PY_FILTER("lowpass_1", ImgConvolLowpass1, 1);
  MIREL_PY_FILTER("lowpass_2", ImgConvolLowpass2, 1);
  MIREL_PY_FILTER("lowpass_3", ImgConvolLowpass3, 1);
  MIREL_PY_FILTER("uniform_3x3", ImgConvolUniform3x3, 1);
  MIREL_PY_FILTER("gaussian_3x3", ImgConvolGaussian3x3, 1);
  MIREL_PY_FILTER("roberts", ImgConvolRoberts, 1);
  MIREL_PY_FILTER("uniform_5x5", ImgConvolUniform5x5, 2);
  MIREL_PY_FILTER("gaussian_5x5", ImgConvolGaussian5x5, 2);
  MIREL_PY_FILTER("uniform_7x7", ImgConvolUniform7x7, 3);
  MIREL_PY_FILTER("gaussian_7x7", ImgConvolGaussian7x7, 3);

  r.Def(
      "convolve", "ImgConvolKernel", "image", KernelReach(),
      [](const py::handle& src, const py::object& kernel, bool symmetric, const py::object& gain,
         const py::object& offset, const py::object& rectifier, const py::object& outside, const py::object& out) {
        EKernel k;
        KernelFrom(kernel, gain, offset, rectifier, outside, &k);
        if (symmetric)
          return Unary("convolve", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgConvolSymmetricKernel(s, d, &k)));
        return Unary("convolve", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgConvolKernel(s, d, &k)));
      },
      "Correlates with a kernel: a 2-D array (anchor at the centre), a preset name ('sobel_x', 'gaussian', ...) "
      "or a KERNEL_TYPE number. gain, offset, rectifier (0 to 3) and outside (the value outside the image for "
      "the floating-point route) override the kernel's; symmetric=True takes the symmetric route.",
      py::arg("src"), py::arg("kernel"), py::arg("symmetric") = false, py::arg("gain") = py::none(),
      py::arg("offset") = py::none(), py::arg("rectifier") = py::none(), py::arg("outside") = py::none(),
      py::kw_only(), OutArg());

  r.Def(
      "uniform", "ImgConvolUniform", "image", HalfReach(),
      [](const py::handle& src, unsigned hx, const py::object& hy, const py::object& out) {
        const unsigned h = hy.is_none() ? ~0u : hy.cast<unsigned>();
        return Unary("uniform", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgConvolUniform(s, d, hx, h)));
      },
      "Box mean over (2 half_x + 1) x (2 half_y + 1) pixels, edges replicated.", py::arg("src"), py::arg("half_x"),
      py::arg("half_y") = py::none(), py::kw_only(), OutArg());
  r.Def(
      "gaussian", "ImgConvolGaussian", "image", HalfReach(),
      [](const py::handle& src, unsigned hx, const py::object& hy, const py::object& out) {
        const unsigned h = hy.is_none() ? ~0u : hy.cast<unsigned>();
        return Unary("gaussian", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgConvolGaussian(s, d, hx, h)));
      },
      "Binomial smoothing: half_x (half_y) passes of 1 2 1 across (down).", py::arg("src"), py::arg("half_x"),
      py::arg("half_y") = py::none(), py::kw_only(), OutArg());
  r.Def(
      "local_average", "ImgLocalAverage", "image", HalfReach(),
      [](const py::handle& src, unsigned hx, const py::object& hy, const py::object& out) {
        const unsigned h = HalfHeight(hy, hx);
        return Unary("local_average", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgLocalAverage(s, d, hx, h)));
      },
      "The local mean (as uniform).", py::arg("src"), py::arg("half_x"), py::arg("half_y") = py::none(),
      py::kw_only(), OutArg());
  r.Def(
      "local_deviation", "ImgLocalDeviation", "image", HalfReach(),
      [](const py::handle& src, unsigned hx, const py::object& hy, const py::object& out) {
        const int h = hy.is_none() ? static_cast<int>(hx) : hy.cast<int>();
        return Unary("local_deviation", src, out,
                     [&](auto* s, auto* d) MIREL_CALL(ImgLocalDeviation(s, d, hx, h)));
      },
      "The local standard deviation over the window.", py::arg("src"), py::arg("half_x"),
      py::arg("half_y") = py::none(), py::kw_only(), OutArg());
}

}  // namespace mirelpy
