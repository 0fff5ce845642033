// Vectors, paths, profiles and contours. Points are N x 2 arrays of (x, y);
// pixel values along a path or a segment are 1-D arrays (N x 3 for colour);
// peaks are a structured array.
#include "bind.h"

namespace mirelpy {

namespace {

// Path records of each pixel kind.
template <class T>
struct PathOf;
template <>
struct PathOf<EBW8> {
  using Vector = EBW8PathVector;
  static EBW8 Get(const EBW8Path& p) { return p.m_bw8Pixel; }
  static void Set(EBW8Path& p, EBW8 v) { p.m_bw8Pixel = v; }
};
template <>
struct PathOf<EBW16> {
  using Vector = EBW16PathVector;
  static EBW16 Get(const EBW16Path& p) { return p.m_bw16Pixel; }
  static void Set(EBW16Path& p, EBW16 v) { p.m_bw16Pixel = v; }
};
template <>
struct PathOf<EC24> {
  using Vector = EC24PathVector;
  static EC24 Get(const EC24Path& p) { return p.m_c24Pixel; }
  static void Set(EC24Path& p, EC24 v) { p.m_c24Pixel = v; }
};
using PathKinds = OneOf<EBW8, EBW16, EC24>;

// Points from an N x 2 array of (x, y), as 16-bit coordinates.
py::array_t<short> PointsFrom(const py::handle& obj) {
  auto a = py::array_t<short, py::array::c_style | py::array::forcecast>::ensure(obj);
  if (!a || a.ndim() != 2 || a.shape(1) != 2) throw py::type_error("points are an N x 2 array of (x, y)");
  return a;
}
template <class V>
void FillPath(const py::array_t<short>& points, V* path) {
  const auto n = static_cast<unsigned int>(points.shape(0));
  path->SetNumElements(n);
  for (unsigned int i = 0; i < n; ++i) {
    path->GetDataPtr()[i].m_n16X = points.at(i, 0);
    path->GetDataPtr()[i].m_n16Y = points.at(i, 1);
  }
}
template <class V>
py::array PointsOf(const V& path) {
  const auto n = static_cast<py::ssize_t>(path.GetNumElements());
  py::array_t<short> a({n, static_cast<py::ssize_t>(2)});
  for (py::ssize_t i = 0; i < n; ++i) {
    a.mutable_at(i, 0) = path.GetDataPtr()[i].m_n16X;
    a.mutable_at(i, 1) = path.GetDataPtr()[i].m_n16Y;
  }
  return std::move(a);
}

// The values of a path (as the pixel kind's vector does) and back.
template <class T, class V>
py::array PathValues(const V& path) {
  std::conditional_t<std::is_same<T, EBW8>::value, EBW8Vector,
                     std::conditional_t<std::is_same<T, EBW16>::value, EBW16Vector, EC24Vector>>
      values;
  values.SetNumElements(path.GetNumElements());
  for (unsigned i = 0; i < path.GetNumElements(); ++i)
    values.GetDataPtr()[i] = PathOf<T>::Get(path.GetDataPtr()[i]);
  return VectorArray(values);
}

// Profiles: uint8 or uint16 1-D arrays as the library's vectors.
template <class F>
py::object Profile(const char* op, const py::handle& src, F f) {
  const py::array a = AsArray(src, op);
  if (a.ndim() != 1) throw py::type_error(std::string(op) + ": a profile is a 1-D array");
  if (a.dtype().kind() == 'u' && a.itemsize() == 1) {
    EBW8Vector in, out;
    FillVector(a, &in, op);
    Run([&] { f(&in, &out); });
    return VectorArray(out);
  }
  if (a.dtype().kind() == 'u' && a.itemsize() == 2) {
    EBW16Vector in, out;
    FillVector(a, &in, op);
    Run([&] { f(&in, &out); });
    return VectorArray(out);
  }
  throw py::type_error(std::string(op) + " takes uint8 or uint16 profiles, not " + Describe(a));
}

py::dtype PeakType() {
  py::dict fields;
  fields["names"] = py::make_tuple("start", "length", "center", "amplitude", "area");
  fields["formats"] = py::make_tuple("<u4", "<u4", "<f4", "<i4", "<i4");
  fields["offsets"] = py::make_tuple(offsetof(EPeak, m_un32Start), offsetof(EPeak, m_un32Length),
                                     offsetof(EPeak, m_f32Center), offsetof(EPeak, m_n32Amplitude),
                                     offsetof(EPeak, m_n32Area));
  fields["itemsize"] = sizeof(EPeak);
  return py::dtype::from_args(fields);
}

}  // namespace

void BindVector(Registry& r) {
  py::module_& m = r.module();

  r.Def(
      "path_values", "ImgImageToPath", "vector", py::none(),
      [](const py::handle& src, const py::handle& points) {
        const py::array a = AsArray(src, "path_values");
        const auto p = PointsFrom(points);
        return Dispatch<PathKinds>("path_values", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          typename PathOf<T>::Vector path;
          FillPath(p, &path);
          Source<T> s(a);
          Run([&] { ImgImageToPath(s.roi(), &path); });
          return PathValues<T>(path);
        });
      },
      "The pixels at the points (an N x 2 array of x, y); a point outside is skipped with a mirel.Warning and "
      "reads as 0.",
      py::arg("src"), py::arg("points"));
  r.Def(
      "draw_path", "ImgPathToImage", "inplace", py::none(),
      [](const py::handle& image, const py::handle& points, const py::handle& values) {
        const py::array a = AsArray(image, "draw_path");
        const auto p = PointsFrom(points);
        return Dispatch<PathKinds>("draw_path", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          using V = std::conditional_t<std::is_same<T, EBW8>::value, EBW8Vector,
                                       std::conditional_t<std::is_same<T, EBW16>::value, EBW16Vector, EC24Vector>>;
          V v;
          FillVector(values, &v, "draw_path");
          if (v.GetNumElements() != static_cast<unsigned>(p.shape(0)))
            throw py::value_error("draw_path: one value a point");
          typename PathOf<T>::Vector path;
          FillPath(p, &path);
          for (unsigned i = 0; i < v.GetNumElements(); ++i) PathOf<T>::Set(path.GetDataPtr()[i], v.GetDataPtr()[i]);
          Destination<T> d(a, 0, 0, "draw_path");
          Run([&] { ImgPathToImage(d.roi(), &path); });
          return d.Finish();
        });
      },
      "Writes each value at its point, in place; points outside are skipped with a mirel.Warning.",
      py::arg("image"), py::arg("points"), py::arg("values"));
  r.Def(
      "line_profile", "ImgImageToLineSegment", "vector", py::none(),
      [](const py::handle& src, int x0, int y0, int x1, int y1) {
        const py::array a = AsArray(src, "line_profile");
        return Dispatch<PathKinds>("line_profile", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          std::conditional_t<std::is_same<T, EBW8>::value, EBW8Vector,
                             std::conditional_t<std::is_same<T, EBW16>::value, EBW16Vector, EC24Vector>>
              v;
          Source<T> s(a);
          Run([&] { ImgImageToLineSegment(s.roi(), &v, x0, y0, x1, y1); });
          return VectorArray(v);
        });
      },
      "The pixels of the segment from (x0, y0) to (x1, y1), both ends included.", py::arg("src"), py::arg("x0"),
      py::arg("y0"), py::arg("x1"), py::arg("y1"));
  r.Def(
      "draw_line", "ImgLineSegmentToImage", "inplace", py::none(),
      [](const py::handle& image, int x0, int y0, int x1, int y1, const py::handle& value) {
        const py::array a = AsArray(image, "draw_line");
        return Dispatch<PathKinds>("draw_line", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          Destination<T> d(a, 0, 0, "draw_line");
          const bool constant = py::isinstance<py::int_>(value) || (std::is_same<T, EC24>::value && py::isinstance<py::tuple>(value));
          if (constant) {
            const T v = PixelValue<T>(value);
            Run([&] { ImgLineSegmentToImage(d.roi(), v, x0, y0, x1, y1); });
          } else {
            std::conditional_t<std::is_same<T, EBW8>::value, EBW8Vector,
                               std::conditional_t<std::is_same<T, EBW16>::value, EBW16Vector, EC24Vector>>
                v;
            FillVector(value, &v, "draw_line");
            Run([&] { ImgLineSegmentToImage(d.roi(), &v, x0, y0, x1, y1); });
          }
          return d.Finish();
        });
      },
      "Draws the segment in place with a constant, or with one value a pixel (written one step behind the walk, "
      "as the library does).",
      py::arg("image"), py::arg("x0"), py::arg("y0"), py::arg("x1"), py::arg("y1"), py::arg("value"));

  r.Def(
      "contour", "ImgContour", "vector", py::none(),
      [](const py::handle& src, int x, int y, unsigned threshold, int mode, bool below, bool connexity8,
         const py::object& values) {
        const py::array a = AsArray(src, "contour");
        const auto md = static_cast<CONTOUR_MODE>(mode);
        const auto sense = below ? CONTOUR_THRESHOLD_BELOW : CONTOUR_THRESHOLD_ABOVE;
        const auto cx = connexity8 ? CONNEXITY_8 : CONNEXITY_4;
        const bool pixels = !values.is_none();
        const int directions = pixels && values.cast<std::string>() == "directions" ? 1 : 0;
        if (pixels && !directions && values.cast<std::string>() != "pixels")
          throw py::value_error("contour: values= is 'pixels' or 'directions'");
        return Dispatch<OneOf<EBW8, EBW16>>("contour", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          Source<T> s(a);
          if (pixels) {
            typename PathOf<T>::Vector path;
            Run([&] { ImgContour(s.roi(), md, x, y, sense, threshold, cx, &path, directions); });
            return py::make_tuple(PointsOf(path), PathValues<T>(path), path.GetClosed() != 0);
          }
          EPathVector path;
          Run([&] { ImgContour(s.roi(), md, x, y, sense, threshold, cx, &path); });
          return py::make_tuple(PointsOf(path), path.GetClosed() != 0);
        });
      },
      "Follows the border of the object of pixels at or above threshold (at or below with below=True) from the "
      "object pixel (x, y). Returns (points, closed), or (points, values, closed) with values='pixels' or "
      "'directions' (chain codes 0 east to 7 south-east). A contour stopped by the image's edge is open and "
      "comes with a mirel.Warning. mode: 0-2 clockwise stop/wrap/both, 3-5 anticlockwise stop/both/wrap.",
      py::arg("src"), py::arg("x"), py::arg("y"), py::arg("threshold"), py::arg("mode") = 1,
      py::arg("below") = false, py::arg("connexity8") = true, py::arg("values") = py::none());

  r.Def(
      "profile_peaks", "ImgGetProfilePeaks", "vector", py::none(),
      [](const py::handle& profile, unsigned low, unsigned high, unsigned minAmplitude, unsigned minArea) {
        const py::array a = AsArray(profile, "profile_peaks");
        EPeaksVector peaks;
        if (a.itemsize() == 2) {
          EBW16Vector v;
          FillVector(a, &v, "profile_peaks");
          Run([&] { ImgGetProfilePeaks(&v, &peaks, low, high, minAmplitude, minArea); });
        } else {
          EBW8Vector v;
          FillVector(a, &v, "profile_peaks");
          Run([&] { ImgGetProfilePeaks(&v, &peaks, low, high, minAmplitude, minArea); });
        }
        py::array result(PeakType(), static_cast<py::ssize_t>(peaks.GetNumElements()));
        if (peaks.GetNumElements() != 0)
          std::memcpy(result.mutable_data(), peaks.GetDataPtr(), peaks.GetNumElements() * sizeof(EPeak));
        return result;
      },
      "Peaks above high and valleys below low of a uint8 or uint16 profile, as a structured array (start, "
      "length, center, amplitude, area).",
      py::arg("profile"), py::arg("low"), py::arg("high"), py::arg("min_amplitude") = 0u, py::arg("min_area") = 0u);
  m.attr("PEAK_DTYPE") = PeakType();
  r.Def(
      "profile_derivative", "ImgProfileDerivative", "vector", py::none(),
      [](const py::handle& p) {
        return Profile("profile_derivative", p, [](auto* s, auto* d) { ImgProfileDerivative(s, d); });
      },
      "Central differences around mid-scale (128 or 32768).", py::arg("profile"));
  r.Def(
      "profile_uniform", "", "vector", py::none(),
      [](const py::handle& p, unsigned half) {
        return Profile("profile_uniform", p, [half](auto* s, auto* d) {
          d->SetNumElements(s->GetNumElements());
          ImgConvolUniform(s, d, half);
        });
      },
      "The mean of the 2 half + 1 samples around each.", py::arg("profile"), py::arg("half_size"));
  r.Def(
      "profile_gaussian", "", "vector", py::none(),
      [](const py::handle& p, unsigned passes) {
        return Profile("profile_gaussian", p, [passes](auto* s, auto* d) { ImgConvolGaussian(s, d, passes); });
      },
      "`passes` passes of 1 2 1.", py::arg("profile"), py::arg("passes") = 1u);
  r.Def(
      "profile_dilate", "", "vector", py::none(),
      [](const py::handle& p, unsigned passes) {
        return Profile("profile_dilate", p, [passes](auto* s, auto* d) { ImgDilate(s, d, passes); });
      },
      "`passes` passes of the 3-sample maximum.", py::arg("profile"), py::arg("passes") = 1u);
  r.Def(
      "profile_erode", "", "vector", py::none(),
      [](const py::handle& p, unsigned passes) {
        return Profile("profile_erode", p, [passes](auto* s, auto* d) { ImgErode(s, d, passes); });
      },
      "`passes` passes of the 3-sample minimum.", py::arg("profile"), py::arg("passes") = 1u);
}

}  // namespace mirelpy
