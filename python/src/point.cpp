// Point operations: copy and fill, the arithmetic and logic engine, lookup,
// gain and offset, fixed thresholds, uniformize, overlay, conversions between
// pixel kinds, bit images and normalisation.
#include "bind.h"

namespace mirelpy {

namespace {

// The operation codes of the engine, by the Pythonic name of the function
// that applies each to two operands.
struct OperName {
  const char* name;
  ARITH_LOGIC_OPERATIONS op;
};
constexpr OperName kBinaryOpers[] = {
    {"add", ALO_ADD},
    {"subtract", ALO_SUBTRACT},
    {"multiply", ALO_MULTIPLY},
    {"divide", ALO_DIVIDE},
    {"modulo", ALO_MODULO},
    {"shift_left", ALO_SHIFT_LEFT},
    {"shift_right", ALO_SHIFT_RIGHT},
    {"average", ALO_AVERAGE},
    {"half_difference", ALO_HALF_DIFFERENCE},
    {"scaled_multiply", ALO_SCALED_MULTIPLY},
    {"scaled_divide", ALO_SCALED_DIVIDE},
    {"bit_and", ALO_BIT_AND},
    {"bit_or", ALO_BIT_OR},
    {"bit_xor", ALO_BIT_XOR},
    {"logical_and", ALO_LOGICAL_AND},
    {"logical_or", ALO_LOGICAL_OR},
    {"logical_xor", ALO_LOGICAL_XOR},
    {"minimum", ALO_MIN},
    {"maximum", ALO_MAX},
    {"set_where_zero", ALO_SET_WHERE_ZERO},
    {"set_where_nonzero", ALO_SET_WHERE_NONZERO},
    {"equal", ALO_EQUAL},
    {"not_equal", ALO_NOT_EQUAL},
    {"greater_equal", ALO_GREATER_OR_EQUAL},
    {"less_equal", ALO_LESS_OR_EQUAL},
    {"greater", ALO_GREATER},
    {"less", ALO_LESS},
    {"wrapped_add", ALO_WRAPPED_ADD},
    {"wrapped_subtract", ALO_WRAPPED_SUBTRACT},
    {"abs_difference", ALO_ABS_DIFFERENCE},
};
constexpr OperName kUnaryOpers[] = {{"invert", ALO_INVERT}};

ARITH_LOGIC_OPERATIONS OperCode(const py::object& op) {
  if (py::isinstance<py::str>(op)) {
    const std::string name = op.cast<std::string>();
    for (const auto& o : kBinaryOpers)
      if (name == o.name) return o.op;
    for (const auto& o : kUnaryOpers)
      if (name == o.name) return o.op;
    if (name == "copy") return ALO_COPY;
    if (name == "overlay") return ALO_OVERLAY;
    throw py::value_error("no operation named " + name);
  }
  // Any other number reaches the library, which refuses it with its code.
  return static_cast<ARITH_LOGIC_OPERATIONS>(op.cast<int>());
}

const auto kOper = [](auto&&... a) -> decltype(ImgOper(std::forward<decltype(a)>(a)...)) {
  return ImgOper(std::forward<decltype(a)>(a)...);
};
using OperFn = decltype(kOper);

template <class A, class B, class D>
constexpr bool kOperImages = std::is_invocable<OperFn, ARITH_LOGIC_OPERATIONS, EROI<A>*, EROI<B>*, EROI<D>*>::value;
template <class A>
constexpr bool kOperImageConst = std::is_invocable<OperFn, ARITH_LOGIC_OPERATIONS, EROI<A>*, A, EROI<A>*>::value;
template <class A>
constexpr bool kOperConstImage = std::is_invocable<OperFn, ARITH_LOGIC_OPERATIONS, A, EROI<A>*, EROI<A>*>::value;

struct OperImageAccepts {
  template <class A, class... Bs>
  static constexpr bool Any(KindList<Bs...>) {
    return (kOperImages<A, Bs, A> || ...) || (kOperImages<A, Bs, Bs> || ...) || kOperImageConst<A> ||
           kOperConstImage<A>;
  }
  template <class A>
  static constexpr bool value = Any<A>(KindList<EBW8, EBW16, EC24, EBW1>{});
};

// Two images: the destination is out's kind, else a's kind when the library
// has that form, else b's.
template <class A>
py::object OperTwoImages(const char* name, ARITH_LOGIC_OPERATIONS op, const py::array& a, const py::array& b,
                         const py::object& out) {
  py::object result;
  bool done = false;
  const py::array o = out.is_none() ? py::array() : AsArray(out, name);
  auto tryPair = [&](auto btag, auto dtag) {
    using B = typename std::decay_t<decltype(btag)>::type;
    using D = typename std::decay_t<decltype(dtag)>::type;
    if constexpr (kOperImages<A, B, D>) {
      if (done || !Matches<B>(b) || (!out.is_none() && !Matches<D>(o))) return;
      Source<A> sa(a, OverlapOf(a, out) == Overlap::kPartial);
      Source<B> sb(b, OverlapOf(b, out) == Overlap::kPartial);
      Destination<D> d(out, sa.width(), sa.height(), name);
      Run([&] { ImgOper(op, sa.roi(), sb.roi(), d.roi()); });
      result = d.Finish();
      done = true;
    }
  };
  auto tryB = [&](auto btag) {
    tryPair(btag, Tag<A>{});
    tryPair(btag, btag);
    tryPair(btag, Tag<EBW16>{});
    tryPair(btag, Tag<EC24>{});
  };
  tryB(Tag<EBW8>{});
  tryB(Tag<EBW16>{});
  tryB(Tag<EC24>{});
  tryB(Tag<EBW1>{});
  if (!done)
    throw py::type_error(std::string(name) + ": no form for " + Describe(a) + " with " + Describe(b) +
                         (out.is_none() ? std::string() : " into " + Describe(o)));
  return result;
}

py::object Oper(const char* name, ARITH_LOGIC_OPERATIONS op, const py::handle& a, const py::handle& b,
                const py::object& out) {
  const bool aImage = !py::isinstance<py::int_>(a) && !py::isinstance<py::float_>(a) && !py::isinstance<py::tuple>(a);
  const bool bImage = !b.is_none() && !py::isinstance<py::int_>(b) && !py::isinstance<py::float_>(b) &&
                      !py::isinstance<py::tuple>(b);
  if (b.is_none()) return Unary(name, a, out, [op](auto* s, auto* d) MIREL_CALL(ImgOper(op, s, d)));
  if (!aImage && !bImage) throw py::type_error(std::string(name) + ": one operand must be an image");
  const py::array image = AsArray(aImage ? a : b, name);
  return Dispatch<OperImageAccepts>(name, image, [&](auto tag) -> py::object {
    using A = typename std::decay_t<decltype(tag)>::type;
    if (aImage && bImage) return OperTwoImages<A>(name, op, image, AsArray(b, name), out);
    if constexpr (kOperImageConst<A> && kOperConstImage<A>) {
      const A value = PixelValue<A>(aImage ? b : a);
      Source<A> s(image, OverlapOf(image, out) == Overlap::kPartial);
      Destination<A> d(out, s.width(), s.height(), name);
      if (aImage)
        Run([&] { ImgOper(op, s.roi(), value, d.roi()); });
      else
        Run([&] { ImgOper(op, value, s.roi(), d.roi()); });
      return d.Finish();
    } else {
      throw py::type_error(std::string(name) + ": no form with a constant for " + Describe(image));
    }
  });
}

const auto kCopy = [](auto&&... a) -> decltype(ImgCopy(std::forward<decltype(a)>(a)...)) {
  return ImgCopy(std::forward<decltype(a)>(a)...);
};
struct FillAccepts {
  template <class T>
  static constexpr bool value = std::is_invocable<decltype(kCopy), T, EROI<T>*>::value;
};

// A fixed threshold reaches no neighbour, nor does the non-zero test of
// to_bits without one; a mode reads the whole histogram.
py::object ThresholdReach() {
  return Registry::ReachOf(
      [](const py::object& t, const py::args&, const py::kwargs&) -> py::object {
        if (!t.is_none() && (py::isinstance<py::str>(t) || ThresholdValue(t) > 65535)) return py::none();
        return py::make_tuple(0, 0);
      },
      py::arg("threshold") = py::none());
}

// Conversion calls: grey depths take a shift, bits an "on" value, the rest
// nothing.
struct Prefer {};
struct Fallback {
  Fallback(Prefer) {}
};
template <class D>
auto ConvertCall(EROI<EBW1>* s, EROI<D>* d, unsigned, unsigned on, Prefer)
    -> decltype(ImgConvert(s, d, static_cast<typename Kind<D>::Elem>(on))) {
  return ImgConvert(s, d, static_cast<typename Kind<D>::Elem>(on));
}
template <class S, class D, class = std::enable_if_t<!std::is_same<S, EBW1>::value>>
auto ConvertCall(EROI<S>* s, EROI<D>* d, unsigned shift, unsigned, Prefer) -> decltype(ImgConvert(s, d, shift)) {
  return ImgConvert(s, d, shift);
}
template <class S, class D>
auto ConvertCall(EROI<S>* s, EROI<D>* d, unsigned, unsigned, Fallback) -> decltype(ImgConvert(s, d)) {
  return ImgConvert(s, d);
}

}  // namespace

void BindPoint(Registry& r) {
  py::module_& m = r.module();
  const py::object zero = Reach(0, 0);

  r.Def(
      "copy", "ImgCopy", "image", zero,
      [](const py::handle& src, const py::object& out) {
        return Unary("copy", src, out, [](auto* s, auto* d) MIREL_CALL(ImgCopy(s, d)));
      },
      "Copies an image (into out= when given).", py::arg("src"), py::kw_only(), OutArg());
  r.Def(
      "fill", "", "inplace", zero,
      [](const py::handle& image, const py::handle& value) {
        const py::array a = AsArray(image, "fill");
        return Dispatch<FillAccepts>("fill", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          const T v = PixelValue<T>(value);
          Destination<T> d(a, 0, 0, "fill");
          Run([&] { ImgCopy(v, d.roi()); });
          return d.Finish();
        });
      },
      "Sets every pixel of the array to value, in place.", py::arg("image"), py::arg("value"));

  r.Def(
      "oper", "ImgOper", "other", zero,
      [](const py::object& op, const py::handle& a, const py::handle& b, const py::object& out) {
        return Oper("oper", OperCode(op), a, b, out);
      },
      "Applies an operation of the arithmetic and logic engine (a code or a name such as 'add') to an image, "
      "two images, or an image and a constant.",
      py::arg("op"), py::arg("a"), py::arg("b") = py::none(), py::kw_only(), OutArg());
  for (const auto& o : kBinaryOpers) {
    const ARITH_LOGIC_OPERATIONS op = o.op;
    const char* name = o.name;
    r.Def(
        name, "", "image", zero,
        [op, name](const py::handle& a, const py::handle& b, const py::object& out) {
          return Oper(name, op, a, b, out);
        },
        "A pixelwise operation of the engine on two images or an image and a constant (see oper).", py::arg("a"),
        py::arg("b"), py::kw_only(), OutArg());
  }
  r.Def(
      "invert", "", "image", zero,
      [](const py::handle& src, const py::object& out) {
        return Unary("invert", src, out, [](auto* s, auto* d) MIREL_CALL(ImgOper(ALO_INVERT, s, d)));
      },
      "The pixel's maximum less the pixel.", py::arg("src"), py::kw_only(), OutArg());
  for (const auto& o : kBinaryOpers) m.attr(("ALO_" + std::string(o.name)).c_str()) = static_cast<int>(o.op);

  r.Def(
      "lut", "ImgLut", "image", zero,
      [](const py::handle& src, const py::handle& table, unsigned shift, const py::object& out) {
        const py::array t = AsArray(table, "lut");
        if (t.ndim() == 1 && t.dtype().kind() == 'u' && t.itemsize() == 1) {
          EBW8Vector v;
          FillVector(t, &v, "lut");
          if (AsArray(src, "lut").itemsize() == 2)
            return Convert("lut", src, py::str("uint8"), out,
                           [&](auto* s, auto* d) MIREL_CALL(ImgLut(s, d, &v, shift)));
          return Unary("lut", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgLut(s, d, &v)));
        }
        EBW16Vector v;
        FillVector(t, &v, "lut");
        return Unary("lut", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgLut(s, d, &v)));
      },
      "Maps pixels through a table: 256 uint8 entries for uint8 images, 65536 uint16 entries for uint16 images, "
      "or uint8 entries indexed by the bit field of a uint16 image that starts at `shift`.",
      py::arg("src"), py::arg("table"), py::arg("shift") = 0u, py::kw_only(), OutArg());

  r.Def(
      "gain_offset", "ImgGainOffset", "image",
      // Above a gain of 8 the blocks in the middle of a row compute another
      // product than the pixels at its ends: the result depends on the column.
      Registry::ReachOf(
          [](const py::object& gain, const py::args&, const py::kwargs&) -> py::object {
            const py::array g = py::array_t<float, py::array::forcecast>::ensure(gain);
            for (py::ssize_t i = 0; i < g.size(); ++i)
              if (static_cast<const float*>(g.data())[i] > 8.0f) return py::none();
            return py::make_tuple(0, 0);
          },
          py::arg("gain")),
      [](const py::handle& src, const py::object& gain, const py::object& offset, const py::object& out) {
        auto color = [](const py::object& v) {
          if (py::isinstance<py::sequence>(v)) {
            const py::sequence s = v;
            if (s.size() != 3) throw py::value_error("a colour gain or offset has three components");
            return EColor(s[0].cast<float>(), s[1].cast<float>(), s[2].cast<float>());
          }
          const float f = v.cast<float>();
          return EColor(f, f, f);
        };
        const py::array a = AsArray(src, "gain_offset");
        if (Matches<EC24>(a)) {
          const EColor g = color(gain), o = color(offset);
          return Unary("gain_offset", a, out, [&](auto* s, auto* d) MIREL_CALL(ImgGainOffset(s, d, g, o)));
        }
        const float g = gain.cast<float>(), o = offset.cast<float>();
        return Unary("gain_offset", a, out, [&](auto* s, auto* d) MIREL_CALL(ImgGainOffset(s, d, g, o)));
      },
      "pixel * gain + offset, saturated (per component for colour, with 3-sequences or numbers).",
      py::arg("src"), py::arg("gain"), py::arg("offset") = 0.0f, py::kw_only(), OutArg());

  r.Def(
      "threshold", "ImgThreshold", "image", ThresholdReach(),
      [](const py::handle& src, const py::object& threshold, const py::object& low, const py::object& high,
         float relative, const py::object& out) {
        const unsigned t = ThresholdValue(threshold);
        const py::array a = AsArray(src, "threshold");
        if (Matches<EBW16>(a)) {
          const EBW16 lo = low.is_none() ? EBW16(0) : PixelValue<EBW16>(low);
          const EBW16 hi = high.is_none() ? EBW16(65535) : PixelValue<EBW16>(high);
          return Unary("threshold", a, out,
                       [&](auto* s, auto* d) MIREL_CALL(ImgThreshold(s, d, t, lo, hi, relative)));
        }
        const EBW8 lo = low.is_none() ? EBW8(0) : PixelValue<EBW8>(low);
        const EBW8 hi = high.is_none() ? EBW8(255) : PixelValue<EBW8>(high);
        return Unary("threshold", a, out, [&](auto* s, auto* d) -> decltype(ImgThreshold(s, d, t, lo, hi, relative)) {
          return ImgThreshold(s, d, t, lo, hi, relative);
        });
      },
      "high where pixel >= threshold, low elsewhere. The threshold is a number or a mode chosen from the "
      "histogram: 'min_residue', 'max_entropy', 'isodata', 'min_distance', 'min_squared_distance' or "
      "'relative' (with the fraction of pixels to keep below).",
      py::arg("src"), py::arg("threshold"), py::arg("low") = py::none(), py::arg("high") = py::none(),
      py::arg("relative") = 0.0f, py::kw_only(), OutArg());

  r.Def(
      "double_threshold", "ImgDoubleThreshold", "image", zero,
      [](const py::handle& src, unsigned lowThreshold, unsigned highThreshold, const py::object& low,
         const py::object& middle, const py::object& high, const py::object& out) {
        const py::array a = AsArray(src, "double_threshold");
        const bool wide = Matches<EBW16>(a);
        const unsigned lo = low.is_none() ? 0u : low.cast<unsigned>();
        const unsigned mid = middle.is_none() ? (wide ? 32768u : 128u) : middle.cast<unsigned>();
        const unsigned hi = high.is_none() ? (wide ? 65535u : 255u) : high.cast<unsigned>();
        if (wide)
          return Unary("double_threshold", a, out, [&](auto* s, auto* d) MIREL_CALL(ImgDoubleThreshold(
                                                       s, d, lowThreshold, highThreshold, EBW16(lo), EBW16(mid), EBW16(hi))));
        const auto lo8 = static_cast<unsigned char>(IntegerIn(py::int_(lo), 0, 255, "low")),
                   mid8 = static_cast<unsigned char>(IntegerIn(py::int_(mid), 0, 255, "middle")),
                   hi8 = static_cast<unsigned char>(IntegerIn(py::int_(hi), 0, 255, "high"));
        return Unary("double_threshold", a, out, [&](auto* s, auto* d) MIREL_CALL(ImgDoubleThreshold(
                                                     s, d, lowThreshold, highThreshold, lo8, mid8, hi8)));
      },
      "Three levels: high above high_threshold, middle from low_threshold to high_threshold, low below.",
      py::arg("src"), py::arg("low_threshold"), py::arg("high_threshold"), py::arg("low") = py::none(),
      py::arg("middle") = py::none(), py::arg("high") = py::none(), py::kw_only(), OutArg());

  r.Def(
      "color_threshold", "", "image", zero,
      [](const py::handle& src, const py::handle& minimum, const py::handle& maximum, const py::object& out) {
        const EC24 lo = PixelValue<EC24>(minimum), hi = PixelValue<EC24>(maximum);
        return Convert("color_threshold", src, py::str("uint8"), out,
                       [&](auto* s, auto* d) MIREL_CALL(ImgThreshold(s, d, lo, hi)));
      },
      "255 where every component lies in [minimum, maximum], 0 elsewhere (a colour image to uint8).",
      py::arg("src"), py::arg("minimum"), py::arg("maximum"), py::kw_only(), OutArg());

  r.Def(
      "uniformize", "ImgUniformize", "image", zero,
      [](const py::handle& src, const py::handle& light, const py::handle& reference, bool multiplicative,
         const py::object& dark, const py::object& darkReference, const py::object& out) {
        const py::array a = AsArray(src, "uniformize");
        const py::array ref = AsArray(reference, "uniformize");
        const bool rows = ref.ndim() == 1 || (Matches<EC24>(a) && ref.ndim() == 2);
        const bool two = !dark.is_none();
        if (two && darkReference.is_none()) throw py::type_error("uniformize: dark needs dark_reference");
        return Dispatch<OneOf<EBW8, EBW16, EC24>>("uniformize", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          {
            using V = std::conditional_t<std::is_same<T, EBW8>::value, EBW8Vector,
                                         std::conditional_t<std::is_same<T, EBW16>::value, EBW16Vector, EC24Vector>>;
            const T l = PixelValue<T>(light);
            Source<T> s(a);
            Destination<T> d(out, s.width(), s.height(), "uniformize");
            if (rows) {
              V lv, dv;
              FillVector(ref, &lv, "uniformize");
              if (two) {
                FillVector(darkReference, &dv, "uniformize");
                const T k = PixelValue<T>(dark);
                Run([&] { ImgUniformize(s.roi(), l, &lv, k, &dv, d.roi()); });
              } else {
                Run([&] { ImgUniformize(s.roi(), l, &lv, d.roi(), multiplicative ? 1 : 0); });
              }
            } else {
              if (!Matches<T>(ref)) WrongKind("uniformize", ref, Kind<T>::kName);
              Source<T> rl(ref);
              if (two) {
                const py::array darkArray = AsArray(darkReference, "uniformize");
                if (!Matches<T>(darkArray)) WrongKind("uniformize", darkArray, Kind<T>::kName);
                Source<T> rd(darkArray);
                const T k = PixelValue<T>(dark);
                Run([&] { ImgUniformize(s.roi(), l, rl.roi(), k, rd.roi(), d.roi()); });
              } else {
                Run([&] { ImgUniformize(s.roi(), l, rl.roi(), d.roi(), multiplicative ? 1 : 0); });
              }
            }
            return d.Finish();
          }
        });
      },
      "Flat-field correction against a reference image (or one reference row) that should have been `light`; "
      "with dark and dark_reference, against two.",
      py::arg("src"), py::arg("light"), py::arg("reference"), py::arg("multiplicative") = false,
      py::arg("dark") = py::none(), py::arg("dark_reference") = py::none(), py::kw_only(), OutArg());

  r.Def(
      "overlay", "ImgOverlay", "inplace", py::none(),
      [](const py::handle& image, const py::handle& overlay, int x, int y, const py::handle& transparent) {
        const py::array o = AsArray(overlay, "overlay");
        if (!Matches<EC24>(o)) WrongKind("overlay", o, "HxWx3 uint8");
        const EC24 t = PixelValue<EC24>(transparent);
        Source<EC24> so(o);
        return InPlace("overlay", image, py::reinterpret_borrow<py::object>(image),
                       [&](auto* d) MIREL_CALL(ImgOverlay(so.roi(), d, x, y, t)));
      },
      "Draws a colour picture on a colour image at (x, y), in place, leaving out the transparent colour.",
      py::arg("image"), py::arg("overlay"), py::arg("x") = 0, py::arg("y") = 0,
      py::arg("transparent") = py::make_tuple(0, 0, 0));
  m.def(
      "set_overlay_color", [](const py::handle& c) { ImgSetOverlayColor(PixelValue<EC24>(c)); },
      "Sets this thread's colour for the 'overlay' operation of the engine.", py::arg("color"));
  m.def(
      "get_overlay_color",
      []() {
        const EC24 c = ImgGetOverlayColor();
        return py::make_tuple(c[0], c[1], c[2]);
      },
      "This thread's colour for the 'overlay' operation of the engine.");

  r.Def(
      "convert", "ImgConvert", "image", zero,
      [](const py::handle& src, const py::object& to, unsigned shift, unsigned on, const py::object& out) {
        return Convert("convert", src, to, out, [shift, on](auto* s, auto* d) MIREL_CALL(ConvertCall(s, d, shift, on, Prefer{})));
      },
      "Converts to another pixel kind: numpy dtypes, 'c24' for colour or bool for bits. Between grey depths the "
      "value is shifted by `shift` (right when narrowing, left when widening); bits become `on` or 0.",
      py::arg("src"), py::arg("to") = py::none(), py::arg("shift") = 0u, py::arg("on") = 255u, py::kw_only(),
      OutArg());

  r.Def(
      "to_bits", "", "image", ThresholdReach(),
      [](const py::handle& src, const py::object& threshold, float relative, const py::object& out) {
        if (threshold.is_none())
          return Convert("to_bits", src, py::str("bits"), out, [](auto* s, auto* d) MIREL_CALL(ImgConvert(s, d)));
        const unsigned t = ThresholdValue(threshold);
        return Convert("to_bits", src, py::str("bits"), out,
                       [t, relative](auto* s, auto* d) MIREL_CALL(ImgThreshold(s, d, t, relative)));
      },
      "A bit image (bool array): set where the pixel is non-zero, or where it is at least `threshold` "
      "(a number or a mode name).",
      py::arg("src"), py::arg("threshold") = py::none(), py::arg("relative") = 0.0f, py::kw_only(), OutArg());

  r.Def(
      "normalize", "ImgNormalize", "image", py::none(),
      [](const py::handle& src, float mean, float deviation, const py::object& out) {
        return Unary("normalize", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgNormalize(s, d, mean, deviation)));
      },
      "Rescales the pixels to the given mean and standard deviation.", py::arg("src"), py::arg("mean"),
      py::arg("deviation"), py::kw_only(), OutArg());
}

}  // namespace mirelpy
