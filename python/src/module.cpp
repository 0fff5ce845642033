// The module `mirel._core`: the error type, the shared helpers of bind.h and
// the registration of every family.
#include <cstring>
#include <sstream>

#include "bind.h"

namespace mirelpy {

namespace {
PyObject* g_error = nullptr;
PyObject* g_warning = nullptr;
}  // namespace

std::string Describe(const py::array& a) {
  std::ostringstream text;
  text << std::string(py::str(a.dtype())) << " (";
  for (py::ssize_t i = 0; i < a.ndim(); ++i) text << (i ? ", " : "") << a.shape(i);
  text << (a.ndim() == 1 ? ",)" : ")");
  return text.str();
}

void Raise(E_ERRORS code, const char* trace) {
  const char* text = EGetErrorText(code);
  std::string message = std::string(text) + " (code " + std::to_string(static_cast<int>(code)) + ")";
  if (trace != nullptr && *trace != '\0') message += ": " + std::string(trace);
  py::object error = py::reinterpret_borrow<py::object>(g_error)(message);
  error.attr("code") = static_cast<int>(code);
  error.attr("text") = text;
  error.attr("trace") = trace != nullptr ? trace : "";
  PyErr_SetObject(g_error, error.ptr());
  throw py::error_already_set();
}

void Check() {
  const E_ERRORS code = EGetError();
  if (code == E_OK) return;
  const std::string trace = EGetErrorTrace();
  if (static_cast<int>(code) < 1000) {
    const std::string message = std::string(EGetErrorText(code)) + " (code " +
                                std::to_string(static_cast<int>(code)) + "): " + trace;
    if (PyErr_WarnEx(g_warning, message.c_str(), 2) != 0) throw py::error_already_set();
    return;
  }
  Raise(code, trace.c_str());
}

Overlap OverlapOf(const py::array& src, const py::object& out) {
  if (out.is_none() || !py::isinstance<py::array>(out)) return Overlap::kNone;
  const py::array o = py::reinterpret_borrow<py::array>(out);
  if (o.data() == src.data() && o.ndim() == src.ndim() && o.itemsize() == src.itemsize() &&
      o.dtype().kind() == src.dtype().kind()) {
    bool same = true;
    for (py::ssize_t i = 0; i < o.ndim(); ++i) same = same && o.shape(i) == src.shape(i) && o.strides(i) == src.strides(i);
    if (same) return Overlap::kSame;
  }
  const bool shares = py::module_::import("numpy").attr("may_share_memory")(src, o).cast<bool>();
  return shares ? Overlap::kPartial : Overlap::kNone;
}

long long IntegerIn(const py::handle& v, long long low, long long high, const char* what) {
  if (!py::isinstance<py::int_>(v) && !py::hasattr(v, "__index__"))
    throw py::type_error(std::string(what) + " must be an integer, not " + std::string(py::repr(v)));
  const long long n = py::int_(py::reinterpret_borrow<py::object>(v)).cast<long long>();
  if (n < low || n > high)
    throw py::value_error(std::string(what) + " must lie in " + std::to_string(low) + ".." + std::to_string(high) +
                          ", not " + std::to_string(n));
  return n;
}

// The value of a threshold argument: a number, or the name of a mode.
unsigned int ThresholdValue(const py::object& t) {
  if (py::isinstance<py::str>(t)) {
    const std::string name = t.cast<std::string>();
    static const std::pair<const char*, IMG_THRESHOLD_MODES> modes[] = {
        {"min_residue", IMG_THRESHOLD_MIN_RESIDUE},       {"max_entropy", IMG_THRESHOLD_MAX_ENTROPY},
        {"isodata", IMG_THRESHOLD_ISODATA},               {"min_distance", IMG_THRESHOLD_MIN_DISTANCE},
        {"min_squared_distance", IMG_THRESHOLD_MIN_SQUARED_DISTANCE}, {"relative", IMG_THRESHOLD_RELATIVE},
    };
    for (const auto& m : modes)
      if (name == m.first) return m.second;
    throw py::value_error("no threshold mode named " + name);
  }
  return static_cast<unsigned int>(IntegerIn(t, 0, 0xffffffffll, "a threshold"));
}

py::array AsArray(const py::handle& obj, const char* op) {
  if (py::isinstance<py::array>(obj)) return py::reinterpret_borrow<py::array>(obj);
  if (obj.is_none()) throw py::type_error(std::string(op) + ": an array is needed, not None");
  return py::module_::import("numpy").attr("asarray")(obj).cast<py::array>();
}

void WrongKind(const char* op, const py::array& a, const std::string& accepted) {
  throw py::type_error(std::string(op) + " takes " + (accepted.empty() ? "no array" : accepted) + " arrays, not " +
                       Describe(a));
}

void PackBits(const py::array& a, EImage<EBW1>* image) {
  const int w = static_cast<int>(a.shape(1)), h = static_cast<int>(a.shape(0));
  EOk();
  image->SetSize(w, h);
  Check();
  const py::ssize_t rs = a.strides(0), cs = a.strides(1);
  const auto* base = static_cast<const unsigned char*>(a.data());
  for (int y = 0; y < h; ++y) {
    auto* row = reinterpret_cast<unsigned char*>(image->GetImagePtr(0, y));
    std::memset(row, 0, static_cast<std::size_t>(w + 7) / 8);
    const unsigned char* in = base + y * rs;
    for (int x = 0; x < w; ++x)
      if (in[x * cs] != 0) row[x >> 3] |= static_cast<unsigned char>(0x80u >> (x & 7));
  }
}

void UnpackBits(const EImage<EBW1>& image, py::array& a) {
  const int w = image.GetWidth(), h = image.GetHeight();
  const py::ssize_t rs = a.strides(0), cs = a.strides(1);
  auto* base = static_cast<unsigned char*>(a.mutable_data());
  for (int y = 0; y < h; ++y) {
    const auto* row = reinterpret_cast<const unsigned char*>(image.GetImagePtr(0, y));
    unsigned char* out = base + y * rs;
    for (int x = 0; x < w; ++x) out[x * cs] = (row[x >> 3] >> (7 - (x & 7))) & 1u;
  }
}

Target ParseTarget(const py::object& to, const char* op) {
  if (py::isinstance<py::str>(to)) {
    const std::string name = to.cast<std::string>();
    if (name == "c24" || name == "color") return Target::kC24;
    if (name == "bits") return Target::kBW1;
  }
  py::dtype dt;
  try {
    dt = py::dtype::from_args(to);
  } catch (const py::error_already_set&) {
    throw py::type_error(std::string(op) + ": not a pixel kind: " + std::string(py::repr(to)));
  }
  const char k = dt.kind();
  const auto n = dt.itemsize();
  if (k == 'u' && n == 1) return Target::kBW8;
  if (k == 'u' && n == 2) return Target::kBW16;
  if (k == 'u' && n == 4) return Target::kBW32;
  if (k == 'f' && n == 4) return Target::kFloat32;
  if (k == 'f' && n == 8) return Target::kFloat64;
  if (k == 'c' && n == 8) return Target::kComplex64;
  if (k == 'b') return Target::kBW1;
  throw py::type_error(std::string(op) + ": no image of " + std::string(py::str(dt)) + " pixels");
}

py::object Reach(int rows, int columns) {
  return py::cpp_function([rows, columns](const py::args&, const py::kwargs&) { return py::make_tuple(rows, columns); });
}

void Registry::Record(const char* name, const char* library, const char* kind, py::object reach, const char* doc) {
  list_.append(py::make_tuple(name, library, kind, std::move(reach), doc));
  if (library == nullptr || *library == '\0' || py::hasattr(m_, library)) return;
  m_.attr(library) = m_.attr(name);
}

void BindFoundation(Registry& r) {
  py::module_& m = r.module();
  m.def(
      "error_text", [](int code) { return std::string(EGetErrorText(static_cast<E_ERRORS>(code))); },
      "The library's sentence for an error code.", py::arg("code"));
  m.def(
      "fast_paths", []() { return EGetMMX() != 0; },
      "True when the library's SIMD paths run on this processor and thread.");
}

}  // namespace mirelpy

PYBIND11_MODULE(_core, m) {
  using namespace mirelpy;
  m.doc() = "MirelImage operations on numpy arrays (see the package mirel).";
  g_error = PyErr_NewExceptionWithDoc(
      "mirel.Error",
      "A failed library call: `code` is the library's error code, `text` its sentence and `trace` the labels "
      "of the failed operations, innermost first.",
      PyExc_RuntimeError, nullptr);
  g_warning = PyErr_NewExceptionWithDoc("mirel.Warning", "A warning code of the library (below 1000).",
                                        PyExc_RuntimeWarning, nullptr);
  m.attr("Error") = py::reinterpret_borrow<py::object>(g_error);
  m.attr("Warning") = py::reinterpret_borrow<py::object>(g_warning);
  m.attr("_operations") = py::list();
  Registry r(m);
  BindFoundation(r);
  BindPoint(r);
  BindFilter(r);
  BindEdge(r);
  BindMorphology(r);
  BindGeometry(r);
  BindHistogram(r);
  BindMeasure(r);
  BindVector(r);
  BindFiles(r);
}
