// Histograms and automatic thresholds: filling, cumulation, equalization,
// analysis, projections, the threshold searches on a histogram, and the
// multi-level, adaptive and local-mean thresholds.
#include "bind.h"

namespace mirelpy {

namespace {

// A histogram vector from a 1-D array of counts (uint32, or any integers
// that convert), and back.
void HistogramFrom(const py::handle& obj, EBWHistogramVector* h) {
  const py::array a = py::array_t<unsigned int, py::array::c_style | py::array::forcecast>::ensure(obj);
  if (!a || a.ndim() != 1) throw py::type_error("a histogram is a 1-D array of counts");
  const auto n = static_cast<unsigned int>(a.shape(0));
  h->SetNumElements(n);
  if (n != 0) std::memcpy(h->GetDataPtr(), a.data(), static_cast<std::size_t>(n) * 4u);
}
py::array HistogramArray(const EBWHistogramVector& h) {
  const auto n = static_cast<py::ssize_t>(h.GetNumElements());
  py::array_t<std::uint32_t> a(n);
  if (n != 0) std::memcpy(a.mutable_data(), h.GetDataPtr(), static_cast<std::size_t>(n) * 4u);
  return std::move(a);
}

// A projection: sums into an EBW32Vector, or averages into the pixel kind's
// own vector.
template <bool Row>
py::object Project(const py::handle& src, bool average) {
  const char* name = Row ? "project_on_row" : "project_on_column";
  auto call = [](auto* s, auto* v) -> decltype(ImgProjectOnARow(s, v)) {
    if constexpr (Row) return ImgProjectOnARow(s, v);
    return ImgProjectOnAColumn(s, v);
  };
  const py::array a = AsArray(src, name);
  return Dispatch<OneOf<EBW8, EBW16, EC24>>(name, a, [&](auto tag) -> py::object {
    using T = typename std::decay_t<decltype(tag)>::type;
    using Own = std::conditional_t<std::is_same<T, EBW8>::value, EBW8Vector,
                                   std::conditional_t<std::is_same<T, EBW16>::value, EBW16Vector, EC24Vector>>;
    Source<T> s(a);
    if constexpr (!std::is_same<T, EC24>::value) {
      if (!average) {
        EBW32Vector v;
        Run([&] { call(s.roi(), &v); });
        return VectorArray(v);
      }
    }
    Own v;
    Run([&] { call(s.roi(), &v); });
    return VectorArray(v);
  });
}

IMG_HISTOGRAM_FEATURE FeatureOf(const py::object& f) {
  if (py::isinstance<py::str>(f)) {
    static const char* const names[] = {"max_count_bin", "max_count", "min_count_bin", "min_count", "first_bin",
                                        "last_bin",      "total",     "mean",          "std_dev"};
    const std::string name = f.cast<std::string>();
    for (int i = 0; i < 9; ++i)
      if (name == names[i]) return static_cast<IMG_HISTOGRAM_FEATURE>(i);
    throw py::value_error("no histogram feature named " + name);
  }
  return static_cast<IMG_HISTOGRAM_FEATURE>(f.cast<int>());
}

}  // namespace

void BindHistogram(Registry& r) {
  py::module_& m = r.module();

  r.Def(
      "histogram", "ImgHistogram", "measure", py::none(),
      [](const py::handle& src, const py::object& msb, const py::object& bits, bool saturate) {
        const py::array a = AsArray(src, "histogram");
        return Dispatch<OneOf<EBW8, EBW16, EBW32>>("histogram", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          Source<T> s(a);
          EBWHistogramVector h;
          if constexpr (std::is_same<T, EBW8>::value) {
            Run([&] { ImgHistogram(s.roi(), &h); });
          } else {
            const unsigned top = msb.is_none() ? 8u * sizeof(T) - 1u : msb.cast<unsigned>();
            const unsigned width = bits.is_none() ? 16u : bits.cast<unsigned>();
            Run([&] { ImgHistogram(s.roi(), &h, top, width, saturate ? 1 : 0); });
          }
          return HistogramArray(h);
        });
      },
      "The histogram as uint32 counts: 256 bins for uint8; for uint16 and uint32 the field of `bits` bits "
      "whose top bit is `msb` (by default the top 16 bits), clamped to the last bin with saturate.",
      py::arg("src"), py::arg("msb") = py::none(), py::arg("bits") = py::none(), py::arg("saturate") = false);
  m.def(
      "cumulate_histogram",
      [](const py::handle& h) {
        EBWHistogramVector in, out;
        HistogramFrom(h, &in);
        Run([&] { ImgCumulateHistogram(&in, &out); });
        return HistogramArray(out);
      },
      "The inclusive running sum of a histogram (32-bit, wrapping).", py::arg("histogram"));
  m.def(
      "setup_equalize",
      [](const py::handle& h) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        EBW8Vector table;
        Run([&] { ImgSetupEqualize(&in, &table); });
        return VectorArray(table);
      },
      "The 256-entry uint8 table that equalizes a 256-bin histogram (for lut).", py::arg("histogram"));
  r.Def(
      "equalize", "ImgEqualize", "image", py::none(),
      [](const py::handle& src, const py::object& out) {
        return Unary("equalize", src, out, [](auto* s, auto* d) MIREL_CALL(ImgEqualize(s, d)));
      },
      "Histogram equalization.", py::arg("src"), py::kw_only(), OutArg());
  m.def(
      "analyse_histogram",
      [](const py::handle& h, const py::object& feature, int min, const py::object& max) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        const IMG_HISTOGRAM_FEATURE f = FeatureOf(feature);
        const bool wide = in.GetNumElements() == 65536;
        const int top = max.is_none() ? static_cast<int>(in.GetNumElements()) - 1 : max.cast<int>();
        float result = 0.0f;
        Run([&] { result = wide ? ImgAnalyseHistogramBW16(&in, f, min, top) : ImgAnalyseHistogram(&in, f, min, top); });
        return result;
      },
      "One feature of bins min..max of a 256- or 65536-bin histogram: 'max_count_bin', 'max_count', "
      "'min_count_bin', 'min_count', 'first_bin', 'last_bin', 'total', 'mean' or 'std_dev'.",
      py::arg("histogram"), py::arg("feature"), py::arg("min") = 0, py::arg("max") = py::none());
  m.def(
      "entropy",
      [](const py::handle& h, unsigned first, unsigned last) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        float result = 0.0f;
        Run([&] { result = in.Entropy(first, last); });
        return result;
      },
      "The entropy of bins first..last of a histogram.", py::arg("histogram"), py::arg("first") = 0u,
      py::arg("last") = 0xFFFFFFFFu);
  r.Def(
      "project_on_row", "ImgProjectOnARow", "vector", py::none(),
      [](const py::handle& src, bool average) { return Project<true>(src, average); },
      "Column sums (uint32), or column averages in the pixel kind with average=True (always for colour).",
      py::arg("src"), py::arg("average") = false);
  r.Def(
      "project_on_column", "ImgProjectOnAColumn", "vector", py::none(),
      [](const py::handle& src, bool average) { return Project<false>(src, average); },
      "Row sums (uint32), or row averages in the pixel kind with average=True (always for colour).",
      py::arg("src"), py::arg("average") = false);

  r.Def(
      "auto_threshold", "ImgAutoThreshold", "measure", py::none(),
      [](const py::handle& src, const py::object& mode, float relative) {
        const unsigned md = ThresholdValue(mode);
        return Measure("auto_threshold", src, [&](auto* s) -> decltype(static_cast<unsigned>(ImgAutoThreshold(
                                                     s, static_cast<IMG_THRESHOLD_MODES>(md), relative))) {
          return static_cast<unsigned>(ImgAutoThreshold(s, static_cast<IMG_THRESHOLD_MODES>(md), relative));
        });
      },
      "The threshold a mode chooses from the image's histogram ('min_residue', 'max_entropy', 'isodata', "
      "'min_distance', 'min_squared_distance', 'relative').",
      py::arg("src"), py::arg("mode") = "min_residue", py::arg("relative") = 0.0f);
  m.def(
      "histogram_threshold",
      [](const py::handle& h, const py::object& mode, float relative, unsigned min, const py::object& max) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        const bool wide = in.GetNumElements() == 65536;
        const unsigned top = max.is_none() ? in.GetNumElements() - 1 : max.cast<unsigned>();
        unsigned t = ThresholdValue(mode);
        float below = 0.0f, above = 0.0f;
        Run([&] {
          if (wide)
            ImgHistogramThresholdBW16(&in, t, below, above, relative, min, top);
          else
            ImgHistogramThreshold(&in, t, below, above, relative, min, top);
        });
        return py::make_tuple(t, below, above);
      },
      "(threshold, mean below, mean above) that a mode chooses over bins min..max of a 256- or 65536-bin "
      "histogram.",
      py::arg("histogram"), py::arg("mode") = "min_residue", py::arg("relative") = 0.0f, py::arg("min") = 0u,
      py::arg("max") = py::none());
  m.def(
      "min_residue_threshold",
      [](const py::handle& h) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        float below = 0.0f, above = 0.0f;
        unsigned t = 0;
        Run([&] { t = ImgMinResidueThreshold(&in, below, above); });
        return py::make_tuple(t, below, above);
      },
      "(threshold, mean below, mean above) of least within-class sum of squares.", py::arg("histogram"));
  m.def(
      "max_entropy_threshold",
      [](const py::handle& h) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        float below = 0.0f, above = 0.0f;
        unsigned t = 0;
        Run([&] { t = ImgMaxEntropyThreshold(&in, below, above); });
        return py::make_tuple(t, below, above);
      },
      "(threshold, mean below, mean above) of greatest total class entropy.", py::arg("histogram"));
  m.def(
      "two_levels_min_residue_threshold",
      [](const py::handle& h) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        EBW8 t(0);
        float below = 0.0f, above = 0.0f, residue = 0.0f;
        Run([&] { residue = ImgTwoLevelsMinResidueThreshold(&in, t, below, above); });
        return py::make_tuple(static_cast<unsigned>(t), below, above, residue);
      },
      "(threshold, mean below, mean above, residue).", py::arg("histogram"));
  m.def(
      "three_levels_min_residue_threshold",
      [](const py::handle& h) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        EBW8 lo(0), hi(0);
        float a0 = 0.0f, a1 = 0.0f, a2 = 0.0f, residue = 0.0f;
        Run([&] { residue = ImgThreeLevelsMinResidueThreshold(&in, lo, hi, a0, a1, a2); });
        return py::make_tuple(static_cast<unsigned>(lo), static_cast<unsigned>(hi), a0, a1, a2, residue);
      },
      "(low threshold, high threshold, low mean, middle mean, high mean, residue).", py::arg("histogram"));
  m.def(
      "isodata_threshold",
      [](const py::handle& h, unsigned min, const py::object& max) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        const bool wide = in.GetNumElements() == 65536;
        const unsigned top = max.is_none() ? in.GetNumElements() - 1 : max.cast<unsigned>();
        unsigned t = 0;
        Run([&] {
          t = wide ? static_cast<unsigned>(ImgIsodataThresholdBW16(&in, min, top))
                   : static_cast<unsigned>(ImgIsodataThreshold(&in, min, top));
        });
        return t;
      },
      "The iterative isodata threshold over bins min..max.", py::arg("histogram"), py::arg("min") = 0u,
      py::arg("max") = py::none());
  m.def(
      "multi_levels_threshold",
      [](const py::handle& h, unsigned thresholds) {
        EBWHistogramVector in;
        HistogramFrom(h, &in);
        Corvane::Talmeer::Utils::Vector<EBW8> values;
        float residue = 0.0f;
        Run([&] { residue = ImgMultiLevelsMinResidueThreshold(&in, thresholds, values); });
        py::array_t<std::uint8_t> t(static_cast<py::ssize_t>(values.GetNumElements()));
        for (unsigned i = 0; i < values.GetNumElements(); ++i) t.mutable_at(i) = values.GetDataPtr()[i];
        return py::make_tuple(t, residue);
      },
      "(thresholds as uint8, residue) splitting a 256-bin histogram into thresholds + 1 classes of least "
      "within-class sum of squares.",
      py::arg("histogram"), py::arg("thresholds"));

  r.Def(
      "adaptive_threshold", "ImgAutoAdaptiveThreshold", "image", py::none(),
      [](const py::handle& src, const py::object& mode, int blockWidth, int blockHeight, const py::object& out) {
        const auto md = static_cast<IMG_THRESHOLD_MODES>(ThresholdValue(mode));
        return Unary("adaptive_threshold", src, out, [&](auto* s, auto* d) MIREL_CALL(ImgAutoAdaptiveThreshold(
                                                         s, d, md, blockWidth, blockHeight)));
      },
      "A surface of thresholds chosen block by block (threshold the image against it next).", py::arg("src"),
      py::arg("mode") = "isodata", py::arg("block_width") = 32, py::arg("block_height") = 0, py::kw_only(),
      OutArg());
  r.Def(
      "local_mean_threshold", "ImgLocalMeanThreshold", "image",
      Registry::ReachOf([](int h, const py::args&, const py::kwargs&) { return py::make_tuple(h, h); },
                        py::arg("half_size")),
      [](const py::handle& src, int halfSize, int offset, const py::object& out) {
        using Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold;
        return Unary("local_mean_threshold", src, out,
                     [&](auto* s, auto* d) MIREL_CALL(ImgLocalMeanThreshold(s, d, halfSize, offset)));
      },
      "255 where the pixel is at least the mean of the square of half-size half_size around it plus offset.",
      py::arg("src"), py::arg("half_size"), py::arg("offset") = 0, py::kw_only(), OutArg());
}

}  // namespace mirelpy
