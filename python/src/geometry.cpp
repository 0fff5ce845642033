// Geometry and sequences: affine resampling and registration, shrinking,
// halving, mirrors, warping, pyramids, interlaced frames and temporal
// averaging.
#include <memory>

#include "bind.h"

namespace mirelpy {

namespace {

// (height, width) of a shape argument, 0 for None (the source's size).
std::pair<int, int> ShapeOf(const py::object& shape) {
  if (shape.is_none()) return {0, 0};
  const py::sequence s = shape.cast<py::sequence>();
  if (s.size() != 2) throw py::value_error("a shape is (height, width)");
  return {static_cast<int>(IntegerIn(s[0], 1, 0x7fffffff, "a height")),
          static_cast<int>(IntegerIn(s[1], 1, 0x7fffffff, "a width"))};
}

std::pair<float, float> PointOf(const py::handle& p, const char* what) {
  const py::sequence s = p.cast<py::sequence>();
  if (s.size() != 2) throw py::value_error(std::string(what) + " is an (x, y) pair");
  return {s[0].cast<float>(), s[1].cast<float>()};
}

// A copy of a pyramid level (an image the pyramid owns) as an array.
template <class T>
py::array LevelArray(EGenericROI* level) {
  auto* image = static_cast<EROI<T>*>(level);
  py::array a = NewArray<T>(image->GetWidth(), image->GetHeight());
  const std::size_t row = static_cast<std::size_t>(image->GetWidth()) * sizeof(T);
  for (int y = 0; y < image->GetHeight(); ++y)
    std::memcpy(static_cast<unsigned char*>(a.mutable_data()) + y * a.strides(0), image->GetImagePtr(0, y), row);
  return a;
}

// A moving average of uint8 images: the library's EMovingAverage.
class MovingAverage {
 public:
  MovingAverage(unsigned size, int width, int height) {
    Run([&] { average_.SetSize(size, width, height, 0); });
  }
  py::object Average(const py::handle& src, const py::object& out) {
    return Unary("MovingAverage.average", src, out, [this](auto* s, auto* d) MIREL_CALL(average_.Average(s, d)));
  }
  void Reset() { average_.Reset(); }

 private:
  EMovingAverage average_;
};

}  // namespace

void BindGeometry(Registry& r) {
  py::module_& m = r.module();

  r.Def(
      "linear_transform", "ImgLinearTransform", "resample", py::none(),
      [](const py::handle& src, const py::sequence& c, const py::object& shape, int interpolation,
         const py::object& out) {
        if (c.size() != 6) throw py::value_error("linear_transform: six coefficients (a, b, c, d, e, f)");
        float k[6];
        for (int i = 0; i < 6; ++i) k[i] = c[i].cast<float>();
        const auto size = ShapeOf(shape);
        return Resample("linear_transform", src, out, size.second, size.first, [&](auto* s, auto* d) MIREL_CALL(
                                                                                  ImgLinearTransform(s, k[0], k[1], k[2], k[3], k[4], k[5], d, interpolation)));
      },
      "Resamples through the forward map x' = a x + b y + c, y' = d x + e y + f; interpolation 0 (nearest), 4 "
      "or 8 (bilinear fraction bits). shape=(height, width) of the result, the source's by default.",
      py::arg("src"), py::arg("coefficients"), py::arg("shape") = py::none(), py::arg("interpolation") = 0,
      py::kw_only(), OutArg());
  r.Def(
      "scale_rotate", "ImgScaleRotate", "resample", py::none(),
      [](const py::handle& src, const py::handle& srcPivot, const py::handle& dstPivot, const py::object& scale,
         float angle, const py::object& shape, int interpolation, const py::object& out) {
        const auto sp = PointOf(srcPivot, "src_pivot"), dp = PointOf(dstPivot, "dst_pivot");
        float sx, sy;
        if (py::isinstance<py::sequence>(scale)) {
          const auto s = PointOf(scale, "scale");
          sx = s.first;
          sy = s.second;
        } else {
          sx = sy = scale.cast<float>();
        }
        const auto size = ShapeOf(shape);
        return Resample("scale_rotate", src, out, size.second, size.first, [&](auto* s, auto* d) MIREL_CALL(
                                                                              ImgScaleRotate(s, sp.first, sp.second, dp.first, dp.second, sx, sy, angle, d, interpolation)));
      },
      "Scales (a number or (sx, sy)) and rotates by `angle` degrees about src_pivot, which lands on dst_pivot.",
      py::arg("src"), py::arg("src_pivot"), py::arg("dst_pivot"), py::arg("scale") = 1.0f, py::arg("angle") = 0.0f,
      py::arg("shape") = py::none(), py::arg("interpolation") = 0, py::kw_only(), OutArg());
  r.Def(
      "register", "ImgRegister", "resample", py::none(),
      [](const py::handle& src, const py::sequence& srcPoints, const py::sequence& dstPoints, const py::object& shape,
         int interpolation, bool scaling, const py::object& out) {
        if (srcPoints.size() != dstPoints.size() || srcPoints.size() < 1 || srcPoints.size() > 3)
          throw py::value_error("register: one, two or three point pairs");
        std::pair<float, float> p[3], q[3];
        for (std::size_t i = 0; i < srcPoints.size(); ++i) {
          p[i] = PointOf(srcPoints[i], "a point");
          q[i] = PointOf(dstPoints[i], "a point");
        }
        const auto size = ShapeOf(shape);
        const std::size_t n = srcPoints.size();
        const int sc = scaling ? 1 : 0;
        return Resample("register", src, out, size.second, size.first, [&](auto* s, auto* d)
                            -> decltype(ImgRegister(s, d, 0.0f, 0.0f, 0.0f, 0.0f, interpolation)) {
          if (n == 1)
            ImgRegister(s, d, p[0].first, p[0].second, q[0].first, q[0].second, interpolation);
          else if (n == 2)
            ImgRegister(s, d, p[0].first, p[0].second, p[1].first, p[1].second, q[0].first, q[0].second, q[1].first,
                        q[1].second, interpolation, sc);
          else
            ImgRegister(s, d, p[0].first, p[0].second, p[1].first, p[1].second, p[2].first, p[2].second, q[0].first,
                        q[0].second, q[1].first, q[1].second, q[2].first, q[2].second, interpolation);
        });
      },
      "Resamples so that the source points land on the destination points (one pair: a shift; two: a shift, a "
      "rotation and, with scaling, a scale; three: an affine map).",
      py::arg("src"), py::arg("src_points"), py::arg("dst_points"), py::arg("shape") = py::none(),
      py::arg("interpolation") = 0, py::arg("scaling") = true, py::kw_only(), OutArg());
  r.Def(
      "shrink", "ImgShrink", "resample", py::none(),
      [](const py::handle& src, const py::object& shape, const py::object& out) {
        const auto size = ShapeOf(shape);
        return Resample("shrink", src, out, size.second, size.first,
                        [](auto* s, auto* d) MIREL_CALL(ImgShrink(s, d)));
      },
      "Block averages down to shape=(height, width), no larger than the source.", py::arg("src"),
      py::arg("shape") = py::none(), py::kw_only(), OutArg());
  r.Def(
      "halve", "ImgHalve", "resample", py::none(),
      [](const py::handle& src, bool dropOdd, const py::object& out) {
        const py::array a = AsArray(src, "halve");
        const int w = static_cast<int>(a.shape(1)), h = static_cast<int>(a.ndim() >= 2 ? a.shape(0) : 0);
        const int hw = dropOdd ? w / 2 : (w + 1) / 2, hh = dropOdd ? h / 2 : (h + 1) / 2;
        const int odd = dropOdd ? 1 : 0;
        // ImgHalve sizes its destination: an out= of another shape would be
        // left behind for a new image, so it is refused here.
        if (!out.is_none()) {
          const py::array o = AsArray(out, "halve");
          if (o.ndim() < 2 || o.shape(0) != hh || o.shape(1) != hw)
            throw py::value_error("halve: out= must have shape (" + std::to_string(hh) + ", " + std::to_string(hw) + ")");
        }
        return Resample("halve", a, out, hw, hh, [odd](auto* s, auto* d) MIREL_CALL(ImgHalve(s, d, odd)));
      },
      "2x2 block averages; an odd last row or column is averaged in pairs, or dropped with drop_odd.",
      py::arg("src"), py::arg("drop_odd") = false, py::kw_only(), OutArg());
  r.Def(
      "horizontal_mirror", "ImgHorizontalMirror", "inplace", py::none(),
      [](const py::handle& src, const py::object& out) {
        return InPlace("horizontal_mirror", src, out, [](auto* d) MIREL_CALL(ImgHorizontalMirror(d)));
      },
      "Reverses every row (a new array; in place when out= is the array).", py::arg("src"), py::kw_only(),
      OutArg());
  r.Def(
      "vertical_mirror", "ImgVerticalMirror", "inplace", py::none(),
      [](const py::handle& src, const py::object& out) {
        return InPlace("vertical_mirror", src, out, [](auto* d) MIREL_CALL(ImgVerticalMirror(d)));
      },
      "Reverses the order of the rows (a new array; in place when out= is the array).", py::arg("src"),
      py::kw_only(), OutArg());

  r.Def(
      "warp", "ImgWarp", "resample", py::none(),
      [](const py::handle& src, const py::handle& warpX, const py::handle& warpY, int shiftX, int shiftY,
         const py::object& out) {
        const py::array wx = AsArray(warpX, "warp"), wy = AsArray(warpY, "warp");
        if (!Matches<EBW16>(wx)) WrongKind("warp", wx, "uint16 (or int16 viewed as uint16)");
        if (!Matches<EBW16>(wy)) WrongKind("warp", wy, "uint16 (or int16 viewed as uint16)");
        Source<EBW16> sx(wx), sy(wy);
        return Resample("warp", src, out, sx.width(), sx.height(), [&](auto* s, auto* d) MIREL_CALL(
                                                                      ImgWarp(s, d, &sx.image(), &sy.image(), shiftX, shiftY)));
      },
      "Redraws through coordinate maps: result (u, v) is source (warp_x + shift_x, warp_y + shift_y), 0 outside; "
      "the maps hold signed 16-bit values and give the result's size.",
      py::arg("src"), py::arg("warp_x"), py::arg("warp_y"), py::arg("shift_x") = 0, py::arg("shift_y") = 0,
      py::kw_only(), OutArg());
  m.def(
      "circle_warp",
      [](float cx, float cy, int height, float lastRadius, float firstRadius, int width, float firstAngle,
         float lastAngle) {
        EImage<EBW16> wx, wy;
        Run([&] { ImgSetCircleWarp(cx, cy, height, lastRadius, firstRadius, width, firstAngle, lastAngle, &wx, &wy); });
        return py::make_tuple(LevelArray<EBW16>(&wx), LevelArray<EBW16>(&wy));
      },
      "The maps (warp_x, warp_y) that unroll the annulus around (centre_x, centre_y) into height x width.",
      py::arg("centre_x"), py::arg("centre_y"), py::arg("height"), py::arg("last_row_radius"),
      py::arg("first_row_radius"), py::arg("width"), py::arg("first_angle") = 0.0f, py::arg("last_angle") = 360.0f);

  m.def(
      "pyramid",
      [](const py::handle& src, unsigned levels, int mode, bool dropOdd) {
        const py::array a = AsArray(src, "pyramid");
        if (!Matches<EBW8>(a)) WrongKind("pyramid", a, "uint8");
        Source<EBW8> s(a);
        EPyramid pyramid;
        Run([&] {
          pyramid.SetNumLevels(levels, E_IMAGE_TYPE_BW8);
          if (EGetError() != E_OK) return;
          pyramid.SetReductionMode(static_cast<IMG_PYRAMIDAL_REDUCTION_MODE>(mode));
          if (EGetError() != E_OK) return;
          pyramid.SetDropOdd(dropOdd ? 1 : 0);
          pyramid.Build(s.roi());
        });
        py::list result;
        for (unsigned i = 0; i < levels; ++i) result.append(LevelArray<EBW8>(pyramid.GetImage(i)));
        return result;
      },
      "The list of `levels` images, each half the one before (level 0 the source), by 2x2 average (mode 0), "
      "minimum (1) or maximum (2).",
      py::arg("src"), py::arg("levels"), py::arg("mode") = 0, py::arg("drop_odd") = false);

  r.Def(
      "get_frame", "ImgGetFrame", "resample", py::none(),
      [](const py::handle& src, int frame, const py::object& out) {
        const py::array a = AsArray(src, "get_frame");
        const int h = static_cast<int>(a.shape(0));
        return Resample("get_frame", a, out, 0, frame == 0 ? (h + 1) / 2 : h / 2,
                        [&](auto* s, auto* d) MIREL_CALL(ImgGetFrame(s, d, frame)));
      },
      "The rows of frame 0 (even rows) or 1 (odd rows).", py::arg("src"), py::arg("frame") = 0, py::kw_only(),
      OutArg());
  r.Def(
      "set_frame", "ImgSetFrame", "inplace", py::none(),
      [](const py::handle& image, const py::handle& field, int frame) {
        const py::array f = AsArray(field, "set_frame");
        return Dispatch<OneOf<EBW8, EBW16, EC24>>("set_frame", f, [&](auto tag) {
          using T = typename std::decay_t<decltype(tag)>::type;
          Source<T> s(f);
          return InPlace("set_frame", image, py::reinterpret_borrow<py::object>(image),
                         [&](EROI<T>* d) MIREL_CALL(ImgSetFrame(s.roi(), d, frame)));
        });
      },
      "Writes a half-height field into the rows of frame 0 or 1 of `image`, in place.", py::arg("image"),
      py::arg("field"), py::arg("frame") = 0);
  r.Def(
      "realign_frame", "ImgRealignFrame", "other", py::none(),
      [](const py::handle& src, int shift, unsigned frame, const py::object& out) {
        py::object target = out;
        if (target.is_none()) target = py::module_::import("numpy").attr("array")(src, "copy"_a = true);
        return Unary("realign_frame", src, target, [&](auto* s, auto* d) MIREL_CALL(ImgRealignFrame(s, d, shift, frame)));
      },
      "Moves the rows of the other frame than `frame` by `shift` pixels.", py::arg("src"), py::arg("shift"),
      py::arg("frame") = 0u, py::kw_only(), OutArg());
  r.Def(
      "rebuild_frame", "ImgRebuildFrame", "other", py::none(),
      [](const py::handle& src, unsigned frame, const py::object& out) {
        py::object target = out;
        if (target.is_none()) target = py::module_::import("numpy").attr("array")(src, "copy"_a = true);
        return Unary("rebuild_frame", src, target, [&](auto* s, auto* d) MIREL_CALL(ImgRebuildFrame(s, d, frame)));
      },
      "Rebuilds the rows of the other frame than `frame` as the mean of their neighbours.", py::arg("src"),
      py::arg("frame") = 0u, py::kw_only(), OutArg());
  r.Def(
      "swap_frames", "ImgSwapFrames", "other", py::none(),
      [](const py::handle& src, const py::object& out) {
        return Unary("swap_frames", src, out, [](auto* s, auto* d) MIREL_CALL(ImgSwapFrames(s, d)));
      },
      "Exchanges rows 0 and 1, 2 and 3, ...", py::arg("src"), py::kw_only(), OutArg());
  r.Def(
      "match_frames", "ImgMatchFrames", "measure", py::none(),
      [](const py::handle& src, int firstRow, int minShift, int maxShift) {
        return Measure("match_frames", src, [&](auto* s) -> decltype(ImgMatchFrames(s, firstRow, minShift, maxShift,
                                                                                      std::declval<int&>()), int()) {
          int best = 0;
          ImgMatchFrames(s, firstRow, minShift, maxShift, best);
          return best;
        });
      },
      "The shift to give realign_frame to bring row first_row + 1 onto row first_row.", py::arg("src"),
      py::arg("first_row"), py::arg("min_shift"), py::arg("max_shift"));
  r.Def(
      "focusing", "ImgFocusing", "measure", py::none(),
      [](const py::handle& src) { return Measure("focusing", src, [](auto* s) MIREL_CALL(ImgFocusing(s))); },
      "A sharpness score of the image.", py::arg("src"));

  py::class_<MovingAverage>(m, "MovingAverage",
                            "The mean of the last `size` uint8 images of one size, at a cost that does not depend "
                            "on size (the library's EMovingAverage).")
      .def(py::init<unsigned, int, int>(), py::arg("size"), py::arg("width"), py::arg("height"))
      .def("average", &MovingAverage::Average, "Adds an image and returns the mean.", py::arg("src"), py::kw_only(),
           OutArg())
      .def("reset", &MovingAverage::Reset, "Starts the sequence again.");
  m.def(
      "recursive_average_lut",
      [](float reduction, float width) {
        EBW16Vector lut;
        Run([&] { ImgSetRecursiveAverageLUT(&lut, reduction, width); });
        return VectorArray(lut);
      },
      "The table of 8191 steps for recursive_average.", py::arg("reduction"), py::arg("width"));
  m.def(
      "recursive_average",
      [](const py::handle& src, const py::handle& store, const py::handle& lut, const py::object& out) {
        EBW16Vector table;
        FillVector(lut, &table, "recursive_average");
        const py::array st = AsArray(store, "recursive_average");
        const py::array a = AsArray(src, "recursive_average");
        if (!Matches<EBW8>(a)) WrongKind("recursive_average", a, "uint8");
        Destination<EBW16> sd(st, 0, 0, "recursive_average");
        Source<EBW8> s(a);
        Destination<EBW8> d(out, s.width(), s.height(), "recursive_average");
        Run([&] { ImgRecursiveAverage(s.roi(), sd.roi(), d.roi(), &table); });
        sd.Finish();
        return d.Finish();
      },
      "Moves the uint16 store (the filtered image with four fraction bits, updated in place) towards the new "
      "image and returns the filtered uint8 image.",
      py::arg("src"), py::arg("store"), py::arg("lut"), py::kw_only(), OutArg());
}

}  // namespace mirelpy
