// The machinery every family of the Python module shares: numpy arrays seen
// as images, the calls that pick an overload by the arrays' pixel kinds, the
// error that a failed call raises, and the table of operations.
//
// Arrays and pixel kinds. A 2-D array of uint8, uint16, uint32, float32,
// float64 or complex64 is an EBW8, EBW16, EBW32, EFLOAT32, EFLOAT64 or
// EComplex64 image; an HxWx3 uint8 array is an EC24 image (channel i is
// component i); a 2-D bool array is a bit image (EBW1). An image over an
// array borrows the array's memory when its layout allows (rows a positive
// distance apart, pixels packed in a row, aligned): a source is then read in
// place and a destination written in place. Otherwise a source is copied
// once into a contiguous array, and a destination is computed in a temporary
// and copied into the array when the call succeeds. Bit images are always
// packed into a temporary and unpacked after.
//
// Operations are generic lambdas whose return type names the library call
// (MIREL_CALL), so an overload that does not exist for a pixel kind drops
// out of overload resolution; the dispatchers below try every kind and
// call the first whose call exists, and the TypeError for an array of
// another kind lists the kinds that do. Calls run without the GIL.
#ifndef MIREL_PYTHON_BIND_H_
#define MIREL_PYTHON_BIND_H_

#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "mirel/mirel.h"

namespace mirelpy {

namespace py = pybind11;
using namespace pybind11::literals;

// ---------------------------------------------------------------- kinds

template <class T>
struct Kind;
#define MIREL_PY_KIND(T, Element, Channels, KindChar, Name) \
  template <>                                           \
  struct Kind<T> {                                      \
    using Elem = Element;                               \
    static constexpr int kChannels = Channels;          \
    static constexpr char kNumpyKind = KindChar;        \
    static constexpr const char* kName = Name;          \
  };
MIREL_PY_KIND(EBW8, std::uint8_t, 0, 'u', "uint8")
MIREL_PY_KIND(EBW16, std::uint16_t, 0, 'u', "uint16")
MIREL_PY_KIND(EBW32, std::uint32_t, 0, 'u', "uint32")
MIREL_PY_KIND(EFLOAT32, float, 0, 'f', "float32")
MIREL_PY_KIND(EFLOAT64, double, 0, 'f', "float64")
MIREL_PY_KIND(EComplex64, std::complex<float>, 0, 'c', "complex64")
MIREL_PY_KIND(EC24, std::uint8_t, 3, 'u', "HxWx3 uint8")
MIREL_PY_KIND(EBW1, bool, 0, 'b', "bool")
#undef MIREL_PY_KIND

template <class... Ts>
struct KindList {};
// Every kind the module maps, in the order dispatch tries them.
using AllKinds = KindList<EBW8, EBW16, EBW32, EFLOAT32, EFLOAT64, EComplex64, EC24, EBW1>;

template <class T>
struct Tag {
  using type = T;
};

// True when `a` has the dtype and shape of kind T.
template <class T>
bool Matches(const py::array& a) {
  using K = Kind<T>;
  const py::dtype dt = a.dtype();
  if (dt.kind() != K::kNumpyKind || dt.itemsize() != static_cast<py::ssize_t>(sizeof(typename K::Elem)))
    return false;
  if (K::kChannels == 0) return a.ndim() == 2;
  return a.ndim() == 3 && a.shape(2) == K::kChannels;
}

// "uint8 (2, 3)" for messages.
std::string Describe(const py::array& a);

// Raises mirel.Error from the calling thread's error state when a code is
// set; a warning code (below 1000) becomes a mirel.Warning instead.
void Check();
// Raises mirel.Error for `code` with the given trace (for checks the module
// makes itself with the library's codes).
[[noreturn]] void Raise(E_ERRORS code, const char* trace);

// A threshold argument: a number, or the name of a mode of
// IMG_THRESHOLD_MODES ("min_residue", "max_entropy", "isodata",
// "min_distance", "min_squared_distance", "relative").
unsigned int ThresholdValue(const py::object& t);

// The array as an array object, or a TypeError naming the operation.
py::array AsArray(const py::handle& obj, const char* op);

// ---------------------------------------------------------------- images

// Width and height of an array of kind T, checked to fit an int.
template <class T>
std::pair<int, int> SizeOf(const py::array& a) {
  const py::ssize_t h = a.shape(0), w = a.shape(1);
  if (w > 0x7fffffff / 4 || h > 0x7fffffff) throw py::value_error("array too large for an image");
  return {static_cast<int>(w), static_cast<int>(h)};
}

// True when an image of kind T can be laid over the array's memory.
template <class T>
bool Borrowable(const py::array& a) {
  if (std::is_same<T, EBW1>::value) return false;
  using Elem = typename Kind<T>::Elem;
  const py::ssize_t h = a.shape(0), w = a.shape(1);
  if (w == 0 || h == 0) return true;
  const py::ssize_t row = a.strides(0), pixel = a.strides(1);
  if (pixel != static_cast<py::ssize_t>(sizeof(T))) return false;
  if (Kind<T>::kChannels != 0 && a.strides(2) != 1) return false;
  const py::ssize_t rowBytes = w * static_cast<py::ssize_t>(sizeof(T));
  if (h > 1 && (row < rowBytes || row > 0x7fffffff)) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(a.data());
  return address % alignof(Elem) == 0 && (h == 1 || row % static_cast<py::ssize_t>(alignof(Elem)) == 0);
}

// The row pitch to borrow with: a single row's own length when there is no
// second row to measure the stride by.
template <class T>
int PitchOf(const py::array& a) {
  const py::ssize_t rowBytes = a.shape(1) * static_cast<py::ssize_t>(sizeof(T));
  return static_cast<int>(a.shape(0) > 1 ? a.strides(0) : rowBytes);
}

// Packs a 2-D bool array into a bit image (eight pixels a byte, the first
// in the most significant bit) and back.
void PackBits(const py::array& a, EImage<EBW1>* image);
void UnpackBits(const EImage<EBW1>& image, py::array& a);

// A source image over an array of kind T (see the top of the file).
template <class T>
class Source {
 public:
  // `copy` asks for a copy even when the array could be read in place (a
  // source that the destination overlaps).
  explicit Source(const py::array& a, bool copy = false) : array_(a) {
    const auto size = SizeOf<T>(a);
    if constexpr (std::is_same<T, EBW1>::value) {
      PackBits(a, &image_);
    } else {
      if (copy || !Borrowable<T>(array_))
        array_ = py::module_::import("numpy").attr("array")(a, "order"_a = "C", "copy"_a = true).template cast<py::array>();
      if (size.first == 0 || size.second == 0) return;  // a void image: the call reports 1400
      // Sources are only read: the library takes them as const where it says so.
      image_.Borrow(static_cast<T*>(const_cast<void*>(array_.data())), size.first, size.second,
                    PitchOf<T>(array_));
    }
  }
  EROI<T>* roi() { return &image_; }
  EImage<T>& image() { return image_; }
  int width() const { return image_.GetWidth(); }
  int height() const { return image_.GetHeight(); }
  // True when the image reads the caller's array itself.
  bool borrowed() const { return image_.IsBorrowed(); }

 private:
  py::array array_;
  EImage<T> image_;
};

// A new C-contiguous array of kind T, zeroed: operations that keep some
// destination pixels (conditional sets, drawing, edge followers) then give
// the same result every time.
template <class T>
py::array NewArray(int width, int height) {
  using Elem = typename Kind<T>::Elem;
  py::array a = Kind<T>::kChannels != 0
                    ? py::array(py::array_t<Elem>({static_cast<py::ssize_t>(height), static_cast<py::ssize_t>(width),
                                                   static_cast<py::ssize_t>(Kind<T>::kChannels)}))
                    : py::array(py::array_t<Elem>({static_cast<py::ssize_t>(height), static_cast<py::ssize_t>(width)}));
  std::memset(a.mutable_data(), 0, static_cast<std::size_t>(a.nbytes()));
  return a;
}

// A destination image: the caller's `out` array (written in place when its
// layout allows), or a new array of width x height. The library checks the
// sizes: an `out` of another shape gives its usual 1403.
template <class T>
class Destination {
 public:
  Destination(const py::object& out, int width, int height, const char* op) {
    if (out.is_none()) {
      array_ = NewArray<T>(width, height);
    } else {
      array_ = AsArray(out, op);
      if (!Matches<T>(array_))
        throw py::type_error(std::string(op) + ": out= must be a " + Kind<T>::kName + " array here, not " +
                             Describe(array_));
      if (!array_.writeable()) throw py::value_error(std::string(op) + ": out= is read-only");
    }
    const auto size = SizeOf<T>(array_);
    if (Borrowable<T>(array_)) {
      if (size.first != 0 && size.second != 0)
        image_.Borrow(static_cast<T*>(array_.mutable_data()), size.first, size.second, PitchOf<T>(array_));
      return;
    }
    // A layout the image cannot follow: work on a temporary holding the
    // array's pixels (operations that read their destination see them).
    copy_back_ = true;
    if constexpr (std::is_same<T, EBW1>::value) {
      PackBits(array_, &image_);
    } else {
      image_.SetSize(size.first, size.second);
      if (size.first != 0 && size.second != 0) {
        py::array view = Wrap(image_);
        view[py::ellipsis()] = array_;
      }
    }
  }
  EROI<T>* roi() { return &image_; }
  // After a successful call: the result array, with a temporary's pixels
  // copied into it.
  py::array Finish() {
    if (copy_back_) {
      if constexpr (std::is_same<T, EBW1>::value) {
        UnpackBits(image_, array_);
      } else if (image_.GetWidth() != 0 && image_.GetHeight() != 0) {
        array_[py::ellipsis()] = Wrap(image_);
      }
    }
    return array_;
  }
  // True when the image writes the array itself.
  bool borrowed() const { return image_.IsBorrowed(); }

 private:
  // A numpy view of an owned image's pixels (valid while the image lives).
  static py::array Wrap(EImage<T>& image) {
    using Elem = typename Kind<T>::Elem;
    const py::ssize_t h = image.GetHeight(), w = image.GetWidth(), pitch = image.GetRowPitch();
    Elem* data = reinterpret_cast<Elem*>(image.GetImagePtr(0, 0));
    const py::capsule unowned(data, [](void*) {});
    if (Kind<T>::kChannels != 0)
      return py::array_t<Elem>({h, w, static_cast<py::ssize_t>(Kind<T>::kChannels)},
                               {pitch, static_cast<py::ssize_t>(sizeof(T)), static_cast<py::ssize_t>(1)}, data,
                               unowned);
    return py::array_t<Elem>({h, w}, {pitch, static_cast<py::ssize_t>(sizeof(T))}, data, unowned);
  }

  py::array array_;
  EImage<T> image_;
  bool copy_back_ = false;
};

// The pixel kind of an EROI<T>* (the argument type of the dispatched lambdas).
template <class R>
struct PixelOfRoi;
template <class T>
struct PixelOfRoi<EROI<T>*> {
  using type = T;
};
template <class R>
using PixelOf = typename PixelOfRoi<std::decay_t<R>>::type;

// Runs a library call without the GIL, from a clear error state, and raises
// what it reports.
template <class F>
void Run(F&& f) {
  {
    py::gil_scoped_release nogil;
    EOk();
    f();
  }
  Check();
}

// A callable object for an overload set, SFINAE-friendly, so that
// std::is_invocable tells which argument kinds the library takes.
#define MIREL_OVERLOADS(fn) \
  [](auto&&... a) -> decltype(fn(std::forward<decltype(a)>(a)...)) { return fn(std::forward<decltype(a)>(a)...); }

// A pixel constant of kind T from a Python number (a 3-sequence for EC24),
// range-checked.
long long IntegerIn(const py::handle& v, long long low, long long high, const char* what);
template <class T>
T PixelValue(const py::handle& v) {
  if constexpr (std::is_same<T, EC24>::value) {
    if (py::isinstance<py::int_>(v)) {
      const auto c = static_cast<unsigned char>(IntegerIn(v, 0, 255, "a colour component"));
      return EC24(c, c, c);
    }
    const py::sequence s = v.cast<py::sequence>();
    if (s.size() != 3) throw py::value_error("a colour constant has three components");
    return EC24(static_cast<unsigned char>(IntegerIn(s[0], 0, 255, "a colour component")),
                static_cast<unsigned char>(IntegerIn(s[1], 0, 255, "a colour component")),
                static_cast<unsigned char>(IntegerIn(s[2], 0, 255, "a colour component")));
  } else if constexpr (std::is_same<T, EBW1>::value) {
    return EBW1(static_cast<unsigned char>(py::bool_(py::reinterpret_borrow<py::object>(v)) ? 1 : 0));
  } else if constexpr (std::is_same<T, EBW8>::value) {
    return EBW8(static_cast<unsigned char>(IntegerIn(v, 0, 255, "an 8-bit value")));
  } else if constexpr (std::is_same<T, EBW16>::value) {
    return EBW16(static_cast<unsigned short>(IntegerIn(v, 0, 65535, "a 16-bit value")));
  } else if constexpr (std::is_same<T, EBW32>::value) {
    return EBW32(static_cast<unsigned int>(IntegerIn(v, 0, 0xffffffffll, "a 32-bit value")));
  } else if constexpr (std::is_same<T, EComplex64>::value) {
    const std::complex<float> c = v.cast<std::complex<float>>();
    return EComplex64(c.real(), c.imag());
  } else {
    return T(v.cast<double>());
  }
}

// Pixel vectors (EBW8Vector, EBW16Vector, EBW32Vector, EC24Vector) from a
// 1-D array (N x 3 uint8 for colour) and back.
template <class V>
struct VectorKind;
template <>
struct VectorKind<EBW8Vector> {
  using Pixel = EBW8;
};
template <>
struct VectorKind<EBW16Vector> {
  using Pixel = EBW16;
};
template <>
struct VectorKind<EBW32Vector> {
  using Pixel = EBW32;
};
template <>
struct VectorKind<EC24Vector> {
  using Pixel = EC24;
};
template <class V>
void FillVector(const py::handle& obj, V* v, const char* op) {
  using P = typename VectorKind<V>::Pixel;
  using Elem = typename Kind<P>::Elem;
  constexpr int channels = Kind<P>::kChannels;
  const py::array a = py::array_t<Elem, py::array::c_style | py::array::forcecast>::ensure(obj);
  if (!a || a.ndim() != (channels ? 2 : 1) || (channels && a.shape(1) != channels))
    throw py::type_error(std::string(op) + ": a " + (channels ? "N x 3 uint8" : "1-D") + " array is needed");
  const auto n = static_cast<unsigned int>(a.shape(0));
  v->SetNumElements(n);
  if (n != 0) std::memcpy(static_cast<void*>(v->GetDataPtr()), a.data(), static_cast<std::size_t>(n) * sizeof(P));
}
template <class V>
py::array VectorArray(const V& v) {
  using P = typename VectorKind<V>::Pixel;
  using Elem = typename Kind<P>::Elem;
  const auto n = static_cast<py::ssize_t>(v.GetNumElements());
  py::array a = Kind<P>::kChannels ? py::array(py::array_t<Elem>({n, static_cast<py::ssize_t>(3)}))
                                   : py::array(py::array_t<Elem>(n));
  if (n != 0) std::memcpy(a.mutable_data(), v.GetDataPtr(), static_cast<std::size_t>(n) * sizeof(P));
  return a;
}

// How `out` lies over a source array: elsewhere, exactly on it (the same
// memory and layout: the call gets one image as source and destination, as
// the library's in-place forms expect), or over part of it (the source is
// then copied first, so that the call reads what was there).
enum class Overlap { kNone, kSame, kPartial };
Overlap OverlapOf(const py::array& src, const py::object& out);

// ---------------------------------------------------------------- dispatch

// The list of kinds in `L` for which `accepts` holds, for messages.
template <class Accepts, class... Ts>
std::string KindNames(KindList<Ts...>) {
  std::string names;
  ((Accepts::template value<Ts> ? (names += (names.empty() ? "" : ", "), names += Kind<Ts>::kName, 0) : 0), ...);
  return names;
}

[[noreturn]] void WrongKind(const char* op, const py::array& a, const std::string& accepted);

// Calls f(Tag<T>{}) for the first kind T of AllKinds that `a` matches and for
// which Accepts::value<T> holds; a TypeError otherwise.
template <class Accepts, class F, class... Ts>
py::object DispatchOver(KindList<Ts...>, const char* op, const py::array& a, F&& f) {
  py::object result;
  bool done = false;
  (void)std::initializer_list<int>{([&] {
    if constexpr (Accepts::template value<Ts>) {
      if (!done && Matches<Ts>(a)) {
        result = f(Tag<Ts>{});
        done = true;
      }
    }
    return 0;
  }())...};
  if (!done) WrongKind(op, a, KindNames<Accepts>(KindList<Ts...>{}));
  return result;
}

template <class Accepts, class F>
py::object Dispatch(const char* op, const py::array& a, F&& f) {
  return DispatchOver<Accepts>(AllKinds{}, op, a, std::forward<F>(f));
}

// A lambda body whose return type names the call, so that the lambda is not
// callable for pixel kinds the library has no overload for.
#define MIREL_CALL(...) \
  ->decltype(__VA_ARGS__) { return __VA_ARGS__; }

// Accepts the kinds listed.
template <class... Ts>
struct OneOf {
  template <class T>
  static constexpr bool value = (std::is_same<T, Ts>::value || ...);
};

// Accepts kinds T for which f(EROI<T>*, EROI<T>*) exists.
template <class F>
struct UnaryAccepts {
  template <class T>
  static constexpr bool value = std::is_invocable<F&, EROI<T>*, EROI<T>*>::value;
};
template <class F>
struct MeasureAccepts {
  template <class T>
  static constexpr bool value = std::is_invocable<F&, EROI<T>*>::value;
};

// Image to image of the same kind and size: f(src, dst).
template <class F>
py::object Unary(const char* op, const py::handle& src, const py::object& out, F f) {
  const py::array a = AsArray(src, op);
  const Overlap overlap = OverlapOf(a, out);
  return Dispatch<UnaryAccepts<F>>(op, a, [&](auto tag) -> py::object {
    using T = typename std::decay_t<decltype(tag)>::type;
    Source<T> s(a, overlap == Overlap::kPartial);
    Destination<T> d(out, s.width(), s.height(), op);
    const bool same = overlap == Overlap::kSame && s.borrowed() && d.borrowed();
    Run([&] { f(s.roi(), same ? s.roi() : d.roi()); });
    return d.Finish();
  });
}

// Image to image of the same kind, of a size of the caller's: f(src, dst)
// with the destination `width` x `height` (the source's size when 0).
template <class F>
py::object Resample(const char* op, const py::handle& src, const py::object& out, int width, int height, F f) {
  const py::array a = AsArray(src, op);
  const Overlap overlap = OverlapOf(a, out);
  return Dispatch<UnaryAccepts<F>>(op, a, [&](auto tag) -> py::object {
    using T = typename std::decay_t<decltype(tag)>::type;
    Source<T> s(a, overlap != Overlap::kNone);
    Destination<T> d(out, width > 0 ? width : s.width(), height > 0 ? height : s.height(), op);
    Run([&] { f(s.roi(), d.roi()); });
    return d.Finish();
  });
}

// An operation on the array itself (mirrors, drawing): f(image) on `out`,
// or on a copy of `src` when `out` is None.
template <class F>
py::object InPlace(const char* op, const py::handle& src, const py::object& out, F f) {
  py::object target = out;
  if (target.is_none()) target = py::module_::import("numpy").attr("array")(src, "copy"_a = true);
  const py::array a = AsArray(target, op);
  return Dispatch<MeasureAccepts<F>>(op, a, [&](auto tag) -> py::object {
    using T = typename std::decay_t<decltype(tag)>::type;
    Destination<T> d(target, 0, 0, op);
    {
      py::gil_scoped_release nogil;
      EOk();
      f(d.roi());
    }
    Check();
    return d.Finish();
  });
}

// Numbers from an image: f(src) returns a C++ value that pybind11 casts.
template <class F>
py::object Measure(const char* op, const py::handle& src, F f) {
  const py::array a = AsArray(src, op);
  return Dispatch<MeasureAccepts<F>>(op, a, [&](auto tag) -> py::object {
    using T = typename std::decay_t<decltype(tag)>::type;
    Source<T> s(a);
    using R = decltype(f(s.roi()));
    if constexpr (std::is_void<R>::value) {
      {
        py::gil_scoped_release nogil;
        EOk();
        f(s.roi());
      }
      Check();
      return py::none();
    } else {
      R r{};
      {
        py::gil_scoped_release nogil;
        EOk();
        r = f(s.roi());
      }
      Check();
      return py::cast(r);
    }
  });
}

// Two sources of one kind to a result: f(a, b) returns a C++ value.
template <class F>
struct PairAccepts {
  template <class T>
  static constexpr bool value = std::is_invocable<F&, EROI<T>*, EROI<T>*>::value;
};
template <class F>
py::object MeasurePair(const char* op, const py::handle& first, const py::handle& second, F f) {
  const py::array a = AsArray(first, op);
  const py::array b = AsArray(second, op);
  return Dispatch<PairAccepts<F>>(op, a, [&](auto tag) -> py::object {
    using T = typename std::decay_t<decltype(tag)>::type;
    if (!Matches<T>(b)) WrongKind(op, b, Kind<T>::kName);
    Source<T> sa(a), sb(b);
    using R = decltype(f(sa.roi(), sb.roi()));
    R r{};
    {
      py::gil_scoped_release nogil;
      EOk();
      r = f(sa.roi(), sb.roi());
    }
    Check();
    return py::cast(r);
  });
}

// Kind T of a dtype-like name or object given as a target ("uint16",
// numpy.float32, "c24", "bool").
enum class Target { kBW8, kBW16, kBW32, kFloat32, kFloat64, kComplex64, kC24, kBW1 };
Target ParseTarget(const py::object& to, const char* op);
template <class T>
constexpr Target TargetOf() {
  return std::is_same<T, EBW8>::value        ? Target::kBW8
         : std::is_same<T, EBW16>::value     ? Target::kBW16
         : std::is_same<T, EBW32>::value     ? Target::kBW32
         : std::is_same<T, EFLOAT32>::value  ? Target::kFloat32
         : std::is_same<T, EFLOAT64>::value  ? Target::kFloat64
         : std::is_same<T, EComplex64>::value ? Target::kComplex64
         : std::is_same<T, EC24>::value      ? Target::kC24
                                             : Target::kBW1;
}

// Image of kind S to an image of another kind D, of the same size: D is
// `to`, or out's kind when `to` is None. f(src, dst).
template <class F, class S>
struct ConvertAccepts {
  template <class D>
  static constexpr bool value = std::is_invocable<F&, EROI<S>*, EROI<D>*>::value;
};
template <class F>
struct ConvertSourceAccepts {
  template <class S, class... Ds>
  static constexpr bool Any(KindList<Ds...>) {
    return (std::is_invocable<F&, EROI<S>*, EROI<Ds>*>::value || ...);
  }
  template <class S>
  static constexpr bool value = Any<S>(AllKinds{});
};
template <class F>
py::object Convert(const char* op, const py::handle& src, const py::object& to, const py::object& out, F f) {
  const py::array a = AsArray(src, op);
  Target target;
  if (to.is_none()) {
    if (out.is_none()) throw py::type_error(std::string(op) + ": give the kind to convert to");
    target = ParseTarget(AsArray(out, op).dtype(), op);
    const py::array o = AsArray(out, op);
    if (o.ndim() == 3) target = Target::kC24;
  } else {
    target = ParseTarget(to, op);
  }
  return Dispatch<ConvertSourceAccepts<F>>(op, a, [&](auto stag) -> py::object {
    using S = typename std::decay_t<decltype(stag)>::type;
    py::object result;
    bool done = false;
    auto tryKind = [&](auto dtag) {
      using D = typename std::decay_t<decltype(dtag)>::type;
      if constexpr (ConvertAccepts<F, S>::template value<D>) {
        if (!done && TargetOf<D>() == target) {
          Source<S> s(a, OverlapOf(a, out) != Overlap::kNone);
          Destination<D> d(out, s.width(), s.height(), op);
          Run([&] { f(s.roi(), d.roi()); });
          result = d.Finish();
          done = true;
        }
      }
    };
    tryKind(Tag<EBW8>{});
    tryKind(Tag<EBW16>{});
    tryKind(Tag<EBW32>{});
    tryKind(Tag<EFLOAT32>{});
    tryKind(Tag<EFLOAT64>{});
    tryKind(Tag<EComplex64>{});
    tryKind(Tag<EC24>{});
    tryKind(Tag<EBW1>{});
    if (!done)
      throw py::type_error(std::string(op) + ": no conversion from " + Kind<S>::kName + " to " +
                           std::string(py::str(to.is_none() ? out.attr("dtype") : to)) + "; it converts to " +
                           KindNames<ConvertAccepts<F, S>>(AllKinds{}));
    return result;
  });
}

// ---------------------------------------------------------------- table

// How far an operation reaches: a result pixel depends on source pixels up
// to (rows, columns) away. A later chunked runner gives each chunk that much
// margin. None marks operations whose result depends on the whole image
// (a threshold chosen from the histogram, a geometric transform).
py::object Reach(int rows, int columns);

// The operations of the module, as (name, library name, kind, reach
// function, doc) records that mirel/__init__.py turns into its table. The
// kinds: "image" (an image to an image of the same size and pixel grid),
// "resample", "inplace", "measure", "vector", "other".
class Registry {
 public:
  explicit Registry(py::module_& m) : m_(m), list_(m.attr("_operations").cast<py::list>()) {}

  // Defines `name` with `fn` and `extra` (pybind11 argument descriptions)
  // and records it. `library` names the library's function(s); the module
  // gets it as an alias unless another operation took it first. `reach` is
  // None or a function of the operation's arguments past the first.
  template <class Fn, class... Extra>
  void Def(const char* name, const char* library, const char* kind, py::object reach, Fn&& fn, const char* doc,
           const Extra&... extra) {
    m_.def(name, std::forward<Fn>(fn), doc, extra...);
    Record(name, library, kind, std::move(reach), doc);
  }
  // A reach function taking the operation's arguments past the first.
  template <class Fn, class... Extra>
  static py::object ReachOf(Fn&& fn, const Extra&... extra) {
    return py::cpp_function(std::forward<Fn>(fn), extra...);
  }
  py::module_& module() { return m_; }

 private:
  void Record(const char* name, const char* library, const char* kind, py::object reach, const char* doc);
  py::module_& m_;
  py::list list_;
};

// Arguments shared by the definitions.
inline py::arg_v OutArg() { return py::arg("out") = py::none(); }

// A half-height of None stands for the half-width.
inline unsigned HalfHeight(const py::object& hh, unsigned hw) { return hh.is_none() ? hw : hh.cast<unsigned>(); }

// A kernel from a preset name, a KERNEL_TYPE number or a 2-D array, with
// the numbers that are not None overriding the kernel's own.
void KernelFrom(const py::object& kernel, const py::object& gain, const py::object& offset,
                const py::object& rectifier, const py::object& outside, EKernel* k);

// Family registration, one function a family.
void BindFoundation(Registry& r);
void BindPoint(Registry& r);
void BindFilter(Registry& r);
void BindEdge(Registry& r);
void BindMorphology(Registry& r);
void BindGeometry(Registry& r);
void BindHistogram(Registry& r);
void BindMeasure(Registry& r);
void BindVector(Registry& r);
void BindFiles(Registry& r);

}  // namespace mirelpy

#endif  // MIREL_PYTHON_BIND_H_
