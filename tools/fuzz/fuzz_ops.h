// The operation fuzz target's machinery: the input reader, the images and
// ROIs it builds, an argument maker for every parameter type an exported
// operation takes, and the checks made after each call.
//
// An input picks one entry of the table (fuzz_ops_table.cpp) by the hash of
// its name, then the arguments one by one, left to right. Images come in
// every pixel type at random sizes, owned or over an exact-size borrowed
// buffer (nothing behind the last row, so a read past it is caught), or
// void; ROIs are placed at random origins, nested, shared between
// arguments (the same ROI, or overlapping ones on one image), refused, or
// left behind by a parent that shrank. Numbers are small, odd, huge,
// negative or not numbers at all.
//
// After the call: no exception left a plain operation; a code comes with a
// trace; an operation returning short returns the code; on an error code
// no image given to the call changed anywhere; on success no byte outside
// the ROIs the call may write changed.
#ifndef MIREL_TOOLS_FUZZ_FUZZ_OPS_H_
#define MIREL_TOOLS_FUZZ_FUZZ_OPS_H_

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "mirel/foundation/testing_internal.h"
#include "mirel/mirel.h"

namespace fuzzops {

// ---------------------------------------------------------------- input

// Reads the fuzzer's bytes; an exhausted input reads 0, and every choice
// below makes 0 its plainest answer.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : p_(data), end_(data + size) {}
  std::uint8_t Byte() { return p_ < end_ ? *p_++ : 0; }
  std::uint32_t U32() {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v |= static_cast<std::uint32_t>(Byte()) << (8 * i);
    return v;
  }
  // Uniform enough in [lo, hi].
  long long Range(long long lo, long long hi) {
    const unsigned long long span = static_cast<unsigned long long>(hi - lo) + 1;
    const unsigned long long v = span <= 256 ? Byte() : span <= 65536 ? (Byte() | Byte() << 8) : U32();
    return lo + static_cast<long long>(v % span);
  }
  bool OneIn(int n) { return Byte() % n == static_cast<unsigned>(n - 1); }

 private:
  const std::uint8_t* p_;
  const std::uint8_t* end_;
};

// ---------------------------------------------------------------- entries

// Per-entry limits: the largest image side and area, and the range of the
// arguments that set an operation's cost (passes, half-widths, sizes of
// images it makes), so that one call stays well inside the time limit.
struct Options {
  int maxSide = 300;
  int maxArea = 1 << 16;
  // Bytes (or, on bit images, whole bytes) behind each row of a written
  // ROI that the operation is documented to write too.
  int spill = 0;
  // The ...Aligned forms throw Corvane::Talmeer::Exception by design.
  bool throws = false;
  // Set apart a second entry for the same function.
  std::string tag;
  // Documented to stop at a failure found while writing, keeping what it
  // wrote: only the writes outside the destinations count.
  bool partial = false;
  // Documented to set its codes with no trace.
  bool untraced = false;
  struct Bound {
    int arg;
    long long lo, hi;
  };
  std::vector<Bound> bounds;

  Options& Side(int s) { maxSide = s; return *this; }
  Options& Area(int a) { maxArea = a; return *this; }
  Options& Spill(int bytes) { spill = bytes; return *this; }
  Options& Throws() { throws = true; return *this; }
  Options& Tag(const char* t) { tag = t; return *this; }
  Options& Partial() { partial = true; return *this; }
  Options& Untraced() { untraced = true; return *this; }
  // Several calls in a row (the members of a class, some reporting with no
  // trace): a failure may follow calls that wrote.
  Options& Sequence() { return Partial().Untraced(); }
  Options& Arg(int arg, long long lo, long long hi) {
    bounds.push_back(Bound{arg, lo, hi});
    return *this;
  }
};
inline Options O() { return Options(); }

class Ctx;
struct Entry {
  std::string name;
  std::uint32_t id;
  Options options;
  std::function<void(Ctx&)> run;
};

inline std::uint32_t Hash(const std::string& s) {
  std::uint32_t h = 2166136261u;
  for (unsigned char c : s) h = (h ^ c) * 16777619u;
  return h;
}

// With MIREL_FUZZ_OPS_VERBOSE set, each argument is described on stderr
// as it is made (for reading a crash's input).
inline bool Verbose() {
  static const bool verbose = std::getenv("MIREL_FUZZ_OPS_VERBOSE") != nullptr;
  return verbose;
}
// With MIREL_FUZZ_OPS_WIDE set, images of one row or column run up to
// kWideSide pixels long, past what 16-bit positions and 16.16 fixed-point
// coordinates hold, within a larger area.
constexpr int kWideSide = 70000;
constexpr int kWideArea = 1 << 18;
inline bool Wide() {
  static const bool wide = std::getenv("MIREL_FUZZ_OPS_WIDE") != nullptr;
  return wide;
}
inline void Note(const std::string& what) {
  if (Verbose()) std::fprintf(stderr, "  %s\n", what.c_str());
}

[[noreturn]] inline void Fail(const std::string& what) {
  std::fprintf(stderr, "fuzz_ops: %s\n", what.c_str());
  std::abort();
}

// ---------------------------------------------------------------- images

// A top image and the record of one call on it.
struct Tracked {
  virtual ~Tracked() = default;
  virtual EGenericROI* Top() = 0;
  virtual std::size_t Span() const = 0;  // bytes of the buffer from the first pixel
  virtual bool Bits() const = 0;
  virtual int PixelBytes() const = 0;
  virtual bool Borrowed() const = 0;
  std::string label;

  // Taken just before the call.
  std::uintptr_t data = 0;
  int width = 0, height = 0, pitch = 0;
  std::vector<std::uint8_t> before;
  std::vector<std::uint8_t> allowed;  // bits each byte may change on success
  bool resizable = false;             // an EImage parameter the call may resize
  bool written = false;               // some writable argument lies on it

  void Snapshot() {
    EGenericROI* top = Top();
    data = reinterpret_cast<std::uintptr_t>(top->Void() ? nullptr : top->GetImagePtr(0, 0));
    width = top->GetWidth();
    height = top->GetHeight();
    pitch = data != 0 ? top->GetRowPitch() : 0;
    const std::size_t n = data != 0 ? Span() : 0;
    before.assign(reinterpret_cast<const std::uint8_t*>(data), reinterpret_cast<const std::uint8_t*>(data) + n);
    allowed.assign(n, 0);
  }
  // Lets the call change pixels [x0, x0 + w) of rows [y0, y0 + h), and
  // `spill` bytes behind each row. Where the rows span every column of an
  // image the library allocated, the padding between them is the library's
  // own and may change too (a fill or copy may run such rows as one stretch).
  void Allow(int x0, int y0, int w, int h, int spill) {
    written = true;
    if (before.empty() || w < 0 || h < 0) return;
    const bool joined = !Bits() && !Borrowed() && x0 == 0 && w == width;
    for (int y = y0; y < y0 + h; ++y) {
      const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(pitch);
      if (joined && y + 1 < y0 + h)
        for (std::size_t i = row + static_cast<std::size_t>(w) * PixelBytes(); i < row + pitch; ++i) Mark(i, 0xffu);
      if (Bits()) {
        for (int x = x0; x < x0 + w; ++x) Mark(row + static_cast<std::size_t>(x >> 3), 0x80u >> (x & 7));
        if (spill > 0)
          for (int b = x0 >> 3; b <= (x0 + w) >> 3; ++b) Mark(row + static_cast<std::size_t>(b), 0xffu);
      } else {
        const std::size_t from = row + static_cast<std::size_t>(x0) * PixelBytes();
        const std::size_t to = row + static_cast<std::size_t>(x0 + w) * PixelBytes() + spill;
        for (std::size_t i = from; i < to; ++i) Mark(i, 0xffu);
      }
    }
  }
  // Compares the buffer with the snapshot; `failed` says the call failed.
  void Check(bool failed, const std::string& op) {
    EGenericROI* top = Top();
    const std::uintptr_t now = reinterpret_cast<std::uintptr_t>(top->Void() ? nullptr : top->GetImagePtr(0, 0));
    if (now != data || top->GetWidth() != width || top->GetHeight() != height) {
      // Resized: only a writable argument may be, and its old pixels are gone.
      if (!written && !resizable) Fail(op + ": " + label + " was resized but is no destination");
      return;
    }
    if (resizable) return;  // an image the call makes: sized at will, also before its checks
    const std::uint8_t* p = reinterpret_cast<const std::uint8_t*>(data);
    for (std::size_t i = 0; i < before.size(); ++i) {
      const unsigned changed = static_cast<unsigned>(p[i] ^ before[i]);
      if (changed == 0) continue;
      if (failed)
        Fail(op + ": failed with " + std::to_string(EGetError()) + " but changed " + label + " at byte " +
             std::to_string(i) + " (pitch " + std::to_string(pitch) + ")");
      if ((changed & ~static_cast<unsigned>(allowed[i])) != 0)
        Fail(op + ": changed " + label + " outside the destination at byte " + std::to_string(i) + " (row " +
             std::to_string(pitch > 0 ? i / static_cast<std::size_t>(pitch) : 0) + ", byte " +
             std::to_string(pitch > 0 ? i % static_cast<std::size_t>(pitch) : i) + ", pitch " +
             std::to_string(pitch) + "): " + std::to_string(before[i]) + " became " + std::to_string(p[i]) +
             ", may change " + std::to_string(allowed[i]) + ", fast paths " + std::to_string(EGetMMX()) +
             " level " + std::to_string(mirel::testing::ActiveSimdLevel()));
    }
  }

 private:
  void Mark(std::size_t i, unsigned bits) {
    if (i < allowed.size()) allowed[i] = static_cast<std::uint8_t>(allowed[i] | bits);
  }
};

template <class P>
struct Image : Tracked {
  static constexpr bool kBits = std::is_same<P, EBW1>::value;
  EImage<P> image;
  std::vector<std::uint8_t> storage;  // a borrowed buffer, of exactly the bytes it needs

  EGenericROI* Top() override { return &image; }
  bool Bits() const override { return kBits; }
  int PixelBytes() const override { return kBits ? 0 : static_cast<int>(sizeof(P)); }
  bool Borrowed() const override { return image.IsBorrowed(); }
  static std::size_t RowBytes(int w) {
    return kBits ? (static_cast<std::size_t>(w) + 7) / 8 + 1 : static_cast<std::size_t>(w) * sizeof(P);
  }
  std::size_t Span() const override {
    if (image.Void()) return 0;
    const std::size_t rows = static_cast<std::size_t>(image.GetHeight());
    if (image.IsBorrowed())
      return static_cast<std::size_t>(image.GetRowPitch()) * (rows - 1) + RowBytes(image.GetWidth());
    return static_cast<std::size_t>(image.GetRowPitch()) * rows;
  }
};

// ---------------------------------------------------------------- context

template <class P>
struct Pool {
  std::vector<Image<P>*> images;
  std::vector<EROI<P>*> rois;
};

// One call: its input, the objects made for it and what to check after.
class Ctx {
 public:
  Ctx(Input& in, const Entry& entry) : in(in), entry(entry) {}

  Input& in;
  const Entry& entry;
  int arg = 0;  // index of the argument being made

  // Objects live until the call has been checked.
  template <class T, class... A>
  T* Keep(A&&... a) {
    auto holder = std::make_shared<T>(std::forward<A>(a)...);
    T* p = holder.get();
    kept_.push_back(std::shared_ptr<void>(holder, p));
    return p;
  }

  template <class P>
  Pool<P>& PoolOf() {
    return std::get<Pool<P>>(pools_);
  }
  void Register(Tracked* t) {
    t->label = "image " + std::to_string(tracked_.size());
    tracked_.push_back(t);
  }
  Tracked* Find(const EGenericROI* roi) {
    if (roi == nullptr) return nullptr;
    const EGenericROI* top = roi->GetTopParent();
    for (Tracked* t : tracked_)
      if (t->Top() == top) return t;
    return nullptr;
  }
  // A ROI argument the call may write (null and void ones write nothing).
  void Writable(EGenericROI* roi, bool image) {
    writable_.push_back({roi, image});
  }

  // The size of the next image argument: the first is drawn, the later ones
  // mostly follow it (or a half, double or neighbour of it), since most
  // operations check sizes before they work.
  std::pair<int, int> NextSize() {
    const Options& o = entry.options;
    if (!has_lead_) {
      has_lead_ = true;
      lead_ = FreshSize(o.maxSide);
      return lead_;
    }
    const int w = lead_.first, h = lead_.second;
    switch (in.Byte() % 16) {
      case 10: return {w / 2, h / 2};
      case 11: return {(w + 1) / 2, (h + 1) / 2};
      case 12: return Capped(2 * w, 2 * h, o);
      case 13: return {w + static_cast<int>(in.Range(-1, 1)), h + static_cast<int>(in.Range(-1, 1))};
      case 14: return {512, 512};
      case 15: return FreshSize(o.maxSide);
      default: return lead_;
    }
  }

  // Numbers. Arguments the entry bounds come from their range (with its
  // ends and a few values just outside it more often).
  long long Bounded(long long lo, long long hi) {
    switch (in.Byte() % 8) {
      case 1: return lo;
      case 2: return hi;
      case 3: return lo < 0 ? -1 : lo;  // all ones, where the range lets it in
      default: return in.Range(lo, hi);
    }
  }
  const Options::Bound* BoundOf(int index) const {
    for (const Options::Bound& b : entry.options.bounds)
      if (b.arg == index) return &b;
    return nullptr;
  }
  long long Integer(int bytes, bool isSigned) {
    static const long long kOdd[] = {0,     1,      2,      3,     4,     7,          8,          15,
                                     16,    31,     32,     33,    63,    64,         127,        128,
                                     255,   256,    257,    511,   512,   1023,       1024,       4095,
                                     4096,  32767,  32768,  65535, 65536, 0x7fffffff, 0x80000000, 0xffffffff,
                                     -1,    -2,     -3,     -7,    -8,    -255,       -256,       -32768};
    switch (in.Byte() % 8) {
      case 0: case 1: case 2: return in.Byte() % 16;
      case 3: return -1 - static_cast<long long>(in.Byte() % 8) * (isSigned ? 1 : 0);
      case 4: case 5: return kOdd[in.Byte() % (sizeof(kOdd) / sizeof(kOdd[0]))];
      case 6: return in.Byte();
      default: {
        unsigned long long v = 0;
        for (int i = 0; i < bytes; ++i) v |= static_cast<unsigned long long>(in.Byte()) << (8 * i);
        return static_cast<long long>(v);
      }
    }
  }
  double Real() {
    static const double kOdd[] = {0.0,  -0.0,     1.0,      -1.0,    0.5,     1.5,     2.0,      255.0,
                                  256.0, 360.0,   65535.0,  65536.0, 1e10,    -1e10,   1e30,     -1e30,
                                  1e-30, FLT_MAX, -FLT_MAX, 1e-40,   1e300,   -1e300,  INFINITY, -INFINITY,
                                  NAN,   0.25,    -0.5,     3.5,     32767.0, 32768.0, 2147483648.0};
    switch (in.Byte() % 8) {
      case 0: case 1: return static_cast<double>(static_cast<int>(in.Byte() % 16) - 4);
      case 2: return kOdd[in.Byte() % (sizeof(kOdd) / sizeof(kOdd[0]))];
      case 3: {
        const std::uint32_t bits = in.U32();
        float f;
        std::memcpy(&f, &bits, 4);
        return f;
      }
      case 4: return static_cast<double>(static_cast<int>(in.Byte()) - 128) / 16.0;
      default: return static_cast<double>(static_cast<int>(in.Range(0, 4095)) - 1024) / 8.0;
    }
  }

  // Snapshots every image, marks what the call may write, runs it, checks.
  template <class Call>
  void Run(Call&& call) {
    for (Tracked* t : tracked_) t->Snapshot();
    for (const auto& w : writable_) {
      Tracked* t = Find(w.roi);
      if (t == nullptr) continue;
      if (w.image) t->resizable = true;
      if (w.roi->Void()) {
        t->written = true;
        continue;
      }
      t->Allow(w.roi->GetTotalOrgX(), w.roi->GetTotalOrgY(), w.roi->GetWidth(), w.roi->GetHeight(),
               entry.options.spill);
    }
    bool thrown = false;
    EOk();
    try {
      call();
    } catch (const Corvane::Talmeer::Exception&) {
      if (!entry.options.throws) Fail(entry.name + ": an exception left a plain operation");
      thrown = true;
    } catch (...) {
      Fail(entry.name + ": an unexpected exception");
    }
    const E_ERRORS code = EGetError();
    // Warnings (106, points outside) may stay untraced.
    if (code >= 1000 && !thrown && !entry.options.untraced && EGetErrorTrace()[0] == '\0')
      Fail(entry.name + ": code " + std::to_string(code) + " set with no trace");
    const bool failed = (thrown || code >= 1000) && !entry.options.partial;
    // A destination ROI that the call resized in its parent may be written
    // in its new rectangle too.
    for (const auto& w : writable_) {
      Tracked* t = Find(w.roi);
      if (t != nullptr && !w.roi->Void() && !failed)
        t->Allow(w.roi->GetTotalOrgX(), w.roi->GetTotalOrgY(), w.roi->GetWidth(), w.roi->GetHeight(),
                 entry.options.spill);
    }
    for (Tracked* t : tracked_) t->Check(failed, entry.name);
  }

 private:
  std::pair<int, int> FreshSize(int side) {
    int w = 0, h = 0;
    switch (in.Byte() % 8) {
      case 0: case 1: case 2: w = in.Byte() % 17; h = in.Byte() % 17; break;
      case 3: case 4: w = in.Byte() % 65; h = in.Byte() % 65; break;
      case 5: w = static_cast<int>(in.Range(1, side)); h = static_cast<int>(in.Range(1, side)); break;
      case 6: w = 1 + static_cast<int>(Wide() && in.OneIn(2)); h = static_cast<int>(in.Range(0, Long(side))); break;
      default: w = static_cast<int>(in.Range(0, Long(side))); h = 1 + static_cast<int>(Wide() && in.OneIn(2)); break;
    }
    if (in.OneIn(2) && (w == 1 || h == 1 || Wide())) std::swap(w, h);
    return Capped(w, h, entry.options);
  }
  static int Long(int side) { return Wide() ? kWideSide : side; }
  // An entry that bounds its images below the defaults (a cost that grows
  // faster than the pixels) keeps its bounds in the wide mode too.
  static std::pair<int, int> Capped(int w, int h, const Options& o) {
    const bool wide = Wide() && o.maxSide >= Options().maxSide && o.maxArea >= Options().maxArea;
    const int side = wide ? std::max(o.maxSide, kWideSide) : o.maxSide;
    const int area = wide ? std::max(o.maxArea, kWideArea) : o.maxArea;
    if (w > side) w = side;
    if (h > side) h = side;
    if (w > 0 && static_cast<long long>(w) * h > area) h = area / w;
    return {w, h};
  }

  struct WritableRoi {
    EGenericROI* roi;
    bool image;
  };
  std::vector<std::shared_ptr<void>> kept_;
  std::vector<Tracked*> tracked_;
  std::vector<WritableRoi> writable_;
  std::tuple<Pool<EBW1>, Pool<EBW8>, Pool<EBW16>, Pool<EBW32>, Pool<EC15>, Pool<EC16>, Pool<EC24>, Pool<EC24A>,
             Pool<EFLOAT32>, Pool<EFLOAT64>, Pool<EComplex64>>
      pools_;
  bool has_lead_ = false;
  std::pair<int, int> lead_{0, 0};
};

// ---------------------------------------------------------------- images made

// Fills the buffer with one of a few kinds of content.
template <class P>
void Fill(Ctx& c, Image<P>& img) {
  if (img.image.Void()) return;
  std::uint8_t* p = reinterpret_cast<std::uint8_t*>(img.image.GetImagePtr(0, 0));
  const std::size_t n = img.Span();
  std::minstd_rand rng(c.in.U32() | 1u);
  const int mode = c.in.Byte() % 8;
  const std::uint8_t constant = c.in.Byte();
  const std::size_t unit = Image<P>::kBits ? 1 : sizeof(P);
  for (std::size_t i = 0; i < n; i += unit) {
    const std::uint32_t r = static_cast<std::uint32_t>(rng());
    for (std::size_t k = 0; k < unit && i + k < n; ++k) {
      std::uint8_t v;
      switch (mode) {
        case 3: v = (r & 1) ? 0xff : 0x00; break;              // two levels
        case 4: v = constant; break;                            // flat
        case 5: v = static_cast<std::uint8_t>(r % 4); break;    // nearly flat
        case 6: v = static_cast<std::uint8_t>(i * 7 / unit); break;  // a ramp
        case 7: v = (r % 16 == 0) ? 0xff : 0x00; break;         // sparse
        default: v = static_cast<std::uint8_t>(r >> (8 * (k % 3))); break;
      }
      p[i + k] = v;
    }
  }
}

// A new image of the given size: owned, over an exact-size borrowed buffer
// (with or without slack between rows), or void.
template <class P>
Image<P>* NewImage(Ctx& c, int w, int h) {
  Image<P>* img = c.Keep<Image<P>>();
  const int kind = c.in.Byte() % 8;
  if (w < 0) w = 0;
  if (h < 0) h = 0;
  if (kind == 5 || kind == 6) {
    // Rows keep the pixel type's alignment but need no more; now and then
    // a misaligned buffer, which Borrow refuses.
    const std::size_t align = c.in.OneIn(16) ? 1 : alignof(P);
    const std::size_t row = Image<P>::RowBytes(w);
    const std::size_t slack = kind == 6 ? align * (c.in.Byte() % 4) : 0;
    const std::size_t pitch = (row + align - 1) / align * align + slack;
    const std::size_t offset = align * (c.in.Byte() % 4);
    if (w > 0 && h > 0) {
      img->storage.assign(offset + pitch * static_cast<std::size_t>(h - 1) + row, 0);
      // The buffer ends exactly behind the last row's last byte.
      img->storage.shrink_to_fit();
      img->image.Borrow(reinterpret_cast<P*>(img->storage.data() + offset), w, h, static_cast<int>(pitch));
    }
  } else if (kind != 7) {
    img->image.SetSize(w, h);
  }
  EOk();
  Fill(c, *img);
  c.Register(img);
  if (Verbose())
    Note(img->label + ": " + std::to_string(img->image.GetWidth()) + "x" + std::to_string(img->image.GetHeight()) +
         " pitch " + std::to_string(img->image.Void() ? 0 : img->image.GetRowPitch()) +
         (img->image.IsBorrowed() ? " borrowed" : img->image.Void() ? " void" : " owned") + " pixel bytes " +
         std::to_string(sizeof(P)));
  c.PoolOf<P>().images.push_back(img);
  return img;
}

// A ROI argument of pixel type P.
template <class P>
EROI<P>* NewRoi(Ctx& c) {
  Pool<P>& pool = c.PoolOf<P>();
  const std::pair<int, int> size = c.NextSize();
  const int w = size.first, h = size.second;
  EROI<P>* roi = nullptr;
  const int kind = c.in.Byte() % 16;
  if (kind == 10 || kind == 11) {
    if (!pool.rois.empty()) return pool.rois[c.in.Byte() % pool.rois.size()];  // the same ROI twice
  }
  if ((kind == 12 || kind == 13) && !pool.images.empty()) {
    // Another ROI on an image already given: overlapping or not.
    Image<P>* img = pool.images[c.in.Byte() % pool.images.size()];
    const int iw = img->image.GetWidth(), ih = img->image.GetHeight();
    const int rw = w <= iw ? w : iw, rh = h <= ih ? h : ih;
    roi = c.Keep<EROI<P>>(&img->image, static_cast<int>(c.in.Range(0, iw - rw)),
                          static_cast<int>(c.in.Range(0, ih - rh)), rw, rh);
  } else if (kind == 8 || kind == 9) {
    roi = &NewImage<P>(c, w, h)->image;  // the image itself
  } else if (kind == 15) {
    // A void ROI, of one of four kinds.
    switch (c.in.Byte() % 4) {
      case 0: return nullptr;
      case 1: {  // a rectangle its parent refused
        Image<P>* img = NewImage<P>(c, w, h);
        roi = c.Keep<EROI<P>>(&img->image, 1, 1, w + 1, h);
        break;
      }
      case 2: {  // a parent that shrank under it
        Image<P>* img = NewImage<P>(c, w + 2, h + 2);
        roi = c.Keep<EROI<P>>(&img->image, 1, 1, w, h);
        img->image.SetSize(w / 2, h / 2);
        Fill(c, *img);
        break;
      }
      default:
        roi = &NewImage<P>(c, 0, 0)->image;
        break;
    }
    EOk();
  } else {
    const int mx = c.in.Byte() % 4, my = c.in.Byte() % 4;
    Image<P>* img = NewImage<P>(c, w + mx, h + my);
    const int ox = static_cast<int>(c.in.Range(0, mx)), oy = static_cast<int>(c.in.Range(0, my));
    if (kind == 14) {
      // Nested: a ROI inside a ROI inside the image.
      EROI<P>* outer = c.Keep<EROI<P>>(&img->image, 0, 0, w + mx, h + my);
      roi = c.Keep<EROI<P>>(outer, ox, oy, w, h);
    } else {
      roi = c.Keep<EROI<P>>(&img->image, ox, oy, w, h);
    }
    EOk();
  }
  pool.rois.push_back(roi);
  if (Verbose()) {
    const Tracked* t = c.Find(roi);
    Note("arg " + std::to_string(c.arg) + ": ROI on " + (t ? t->label : std::string("?")) + " at (" +
         std::to_string(roi->GetTotalOrgX()) + ", " + std::to_string(roi->GetTotalOrgY()) + ") " +
         std::to_string(roi->GetWidth()) + "x" + std::to_string(roi->GetHeight()) + (roi->Void() ? " void" : ""));
  }
  return roi;
}

// An image argument (the table images, maps and outputs of some operations).
template <class P>
EImage<P>* ImageArg(Ctx& c) {
  Pool<P>& pool = c.PoolOf<P>();
  if (c.in.OneIn(4) && !pool.images.empty()) return &pool.images[c.in.Byte() % pool.images.size()]->image;
  if (c.in.OneIn(32)) return nullptr;
  const std::pair<int, int> size = c.NextSize();
  return &NewImage<P>(c, size.first, size.second)->image;
}

// ---------------------------------------------------------------- arguments

// Arg<T>::Make(c) makes one argument of type T.
template <class T, class = void>
struct Arg;

template <class P>
struct Arg<EROI<P>*> {
  static EROI<P>* Make(Ctx& c) {
    EROI<P>* r = NewRoi<P>(c);
    c.Writable(r, false);
    return r;
  }
};
template <class P>
struct Arg<const EROI<P>*> {
  static const EROI<P>* Make(Ctx& c) { return NewRoi<P>(c); }
};
template <class P>
struct Arg<EImage<P>*> {
  static EImage<P>* Make(Ctx& c) {
    EImage<P>* image = ImageArg<P>(c);
    c.Writable(image, true);
    return image;
  }
};
template <class P>
struct Arg<const EImage<P>*> {
  static const EImage<P>* Make(Ctx& c) { return ImageArg<P>(c); }
};

// Integers and enumerations, bounded where the entry says so.
template <class T>
struct Arg<T, std::enable_if_t<std::is_integral<T>::value || std::is_enum<T>::value>> {
  static T Make(Ctx& c) {
    if (const Options::Bound* b = c.BoundOf(c.arg)) return static_cast<T>(c.Bounded(b->lo, b->hi));
    if constexpr (std::is_enum<T>::value) {
      // Mostly the first few values, where the known ones lie.
      if (c.in.Byte() % 4 != 3) return static_cast<T>(c.in.Byte() % 40);
      using U = std::underlying_type_t<T>;
      return static_cast<T>(static_cast<U>(c.Integer(sizeof(U), std::is_signed<U>::value)));
    } else if constexpr (std::is_same<T, bool>::value) {
      return c.in.Byte() & 1;
    } else {
      return static_cast<T>(c.Integer(sizeof(T), std::is_signed<T>::value));
    }
  }
};
// Enumerations without a fixed type hold only their own range.
template <>
struct Arg<IMG_HISTOGRAM_FEATURE> {
  static IMG_HISTOGRAM_FEATURE Make(Ctx& c) { return static_cast<IMG_HISTOGRAM_FEATURE>(c.in.Byte() % 16); }
};
template <>
struct Arg<IMG_REFERENCE_NOISE> {
  static IMG_REFERENCE_NOISE Make(Ctx& c) { return static_cast<IMG_REFERENCE_NOISE>(c.in.Byte() % 4); }
};
template <class T>
struct Arg<T, std::enable_if_t<std::is_floating_point<T>::value>> {
  static T Make(Ctx& c) {
    if (const Options::Bound* b = c.BoundOf(c.arg)) return static_cast<T>(c.Bounded(b->lo, b->hi));
    const double v = c.Real();
    if (std::is_same<T, float>::value && std::isfinite(v) && std::fabs(v) > FLT_MAX) return static_cast<T>(v > 0 ? INFINITY : -INFINITY);
    return static_cast<T>(v);
  }
};

// Pixel constants: raw bytes.
template <class T>
T RawValue(Ctx& c) {
  T v;
  std::uint8_t bytes[sizeof(T)];
  for (std::size_t i = 0; i < sizeof(T); ++i) bytes[i] = c.in.OneIn(2) ? c.in.Byte() : (c.in.Byte() & 1 ? 0xff : 0);
  std::memcpy(static_cast<void*>(&v), bytes, sizeof(T));
  return v;
}
#define MIREL_FUZZ_RAW(T) \
  template <>             \
  struct Arg<T> {         \
    static T Make(Ctx& c) { return RawValue<T>(c); } \
  };
MIREL_FUZZ_RAW(EBW1)
MIREL_FUZZ_RAW(EBW8)
MIREL_FUZZ_RAW(EBW16)
MIREL_FUZZ_RAW(EBW32)
MIREL_FUZZ_RAW(EC15)
MIREL_FUZZ_RAW(EC16)
MIREL_FUZZ_RAW(EC24)
#undef MIREL_FUZZ_RAW
template <>
struct Arg<EColor> {
  static EColor Make(Ctx& c) {
    const float a = Arg<float>::Make(c), b = Arg<float>::Make(c), d = Arg<float>::Make(c);
    return EColor(a, b, d);
  }
};

// Outputs by reference and optional outputs by pointer.
template <class T>
struct Arg<T&, std::enable_if_t<!std::is_const<T>::value && std::is_trivially_copyable<T>::value>> {
  static T& Make(Ctx& c) {
    T* slot = c.Keep<T>();
    std::memset(static_cast<void*>(slot), 0x5a, sizeof(T));
    if constexpr (std::is_arithmetic<T>::value) {
      // In and out: an input the entry bounds (a most passes, say).
      if (const Options::Bound* b = c.BoundOf(c.arg)) *slot = static_cast<T>(c.Bounded(b->lo, b->hi));
    }
    return *slot;
  }
};
template <class T>
struct Arg<T*, std::enable_if_t<std::is_arithmetic<T>::value>> {
  static T* Make(Ctx& c) {
    if (c.in.OneIn(3)) return nullptr;
    return c.Keep<T>();
  }
};

// Lookup tables passed as bare arrays of 256 or 65536 entries.
template <class T>
struct Arg<T*, std::enable_if_t<std::is_same<std::remove_const_t<T>, EBW8>::value ||
                                std::is_same<std::remove_const_t<T>, EBW16>::value>> {
  using U = std::remove_const_t<T>;
  static T* Make(Ctx& c) {
    std::vector<U>* table = c.Keep<std::vector<U>>(std::is_same<U, EBW8>::value ? 256 : 65536);
    std::minstd_rand rng(c.in.U32() | 1u);
    for (U& v : *table) v = U(static_cast<decltype(v.value)>(rng()));
    return table->data();
  }
};

// Typed vectors: a count from a few kinds, random records.
inline unsigned int VectorCount(Ctx& c, unsigned int large) {
  switch (c.in.Byte() % 8) {
    case 1: return static_cast<unsigned int>(std::max(0, c.NextSize().first));
    case 2: return static_cast<unsigned int>(std::max(0, c.NextSize().second));
    case 3: return 256;
    case 4: return static_cast<unsigned int>(c.in.Range(0, 300));
    case 5: return large;
    case 6: return 1u << (c.in.Byte() % 17);
    case 7: return static_cast<unsigned int>(c.in.Range(0, 20));
    default: return 0;
  }
}
template <class R>
void Tweak(Ctx&, R&) {}
inline short Coordinate(Ctx& c) { return static_cast<short>(c.in.OneIn(8) ? c.Integer(2, true) : c.in.Range(-4, 310)); }
template <>
inline void Tweak(Ctx& c, EPath& r) { r.m_n16X = Coordinate(c); r.m_n16Y = Coordinate(c); }
template <>
inline void Tweak(Ctx& c, EBW8Path& r) { r.m_n16X = Coordinate(c); r.m_n16Y = Coordinate(c); }
template <>
inline void Tweak(Ctx& c, EBW16Path& r) { r.m_n16X = Coordinate(c); r.m_n16Y = Coordinate(c); }
template <>
inline void Tweak(Ctx& c, EC24Path& r) { r.m_n16X = Coordinate(c); r.m_n16Y = Coordinate(c); }

template <class V>
V* NewVector(Ctx& c) {
  using R = std::remove_pointer_t<decltype(std::declval<V&>().GetDataPtr())>;
  V* v = c.Keep<V>();
  const unsigned int large = sizeof(R) <= 4 ? 65536u : 4096u;
  const unsigned int n = VectorCount(c, large);
  v->SetNumElements(n);
  EOk();
  if (v->GetDataPtr() != nullptr) {
    std::minstd_rand rng(c.in.U32() | 1u);
    const bool small = c.in.OneIn(2);
    for (unsigned int i = 0; i < v->GetNumElements(); ++i) {
      std::uint8_t bytes[sizeof(R)];
      for (std::size_t k = 0; k < sizeof(R); ++k)
        bytes[k] = static_cast<std::uint8_t>(small && k > 0 ? 0 : rng() >> 8);
      std::memcpy(static_cast<void*>(v->GetDataPtr() + i), bytes, sizeof(R));
    }
    const unsigned int tweaks = v->GetNumElements() < 64 ? v->GetNumElements() : 64;
    for (unsigned int i = 0; i < tweaks; ++i) Tweak(c, v->GetDataPtr()[i]);
  }
  return v;
}
template <class V, class = void>
struct IsTypedVector : std::false_type {};
template <class V>
struct IsTypedVector<V, std::void_t<decltype(std::declval<V&>().GetDataPtr()),
                                    decltype(std::declval<V&>().SetNumElements(0u))>> : std::true_type {};
template <class V>
struct Arg<V*, std::enable_if_t<std::is_class<V>::value && !std::is_const<V>::value && IsTypedVector<V>::value>> {
  static V* Make(Ctx& c) { return c.in.OneIn(32) ? nullptr : NewVector<V>(c); }
};
template <class V>
struct Arg<const V*, std::enable_if_t<std::is_class<V>::value && IsTypedVector<V>::value>> {
  static const V* Make(Ctx& c) { return c.in.OneIn(32) ? nullptr : NewVector<V>(c); }
};

// The untyped vector: a known kind or a free structure, random data.
inline EVector* NewUntyped(Ctx& c) {
  if (c.in.OneIn(32)) return nullptr;
  EVector* v = c.Keep<EVector>();
  const int groups = static_cast<int>(c.in.OneIn(8) ? c.Integer(4, true) : static_cast<long long>(VectorCount(c, 4096)));
  const int length = static_cast<int>(c.in.Range(-1, 4));
  switch (c.in.Byte() % 4) {
    case 0: break;  // a vector with no data
    case 1: {
      static const int kKinds[] = {2, 3, 1, 7, 4, 5, 0, 6};
      v->SetType(kKinds[c.in.Byte() % 8], groups < 0 ? 0 : groups % 70000, length);
      break;
    }
    default: {
      static const int kSizes[] = {2, 4, 8, 0, 1, 16};
      static const int kTypes[] = {1, 2, 4, 0, 3};
      v->SetStructure(kSizes[c.in.Byte() % 6], groups < 0 ? 0 : groups % 70000, length < 0 ? 1 : length,
                      kTypes[c.in.Byte() % 5]);
      break;
    }
  }
  if (c.in.OneIn(4)) v->SetNbGroup(static_cast<int>(c.in.Range(0, 400)));
  EOk();
  if (v->GetDataPtr() != nullptr) {
    std::minstd_rand rng(c.in.U32() | 1u);
    std::uint8_t* p = static_cast<std::uint8_t*>(v->GetDataPtr());
    for (int i = 0; i < v->GetAllocatedSize(); ++i) p[i] = static_cast<std::uint8_t>(rng() >> 8);
  }
  return v;
}
template <>
struct Arg<EVector*> {
  static EVector* Make(Ctx& c) { return NewUntyped(c); }
};
template <>
struct Arg<const EVector*> {
  static const EVector* Make(Ctx& c) { return NewUntyped(c); }
};

// Kernels: presets, sizes from -1 to 9 with random coefficients, and now
// and then a size that its storage does not hold.
inline EKernel* NewKernel(Ctx& c) {
  if (c.in.OneIn(32)) return nullptr;
  EKernel* k = nullptr;
  switch (c.in.Byte() % 4) {
    case 0:
      k = c.Keep<EKernel>(static_cast<KERNEL_TYPE>(c.in.Byte() % 16));
      break;
    default: {
      static const short kSizes[] = {3, 5, 7, 3, 1, 2, 4, 9, 0, -1, 6, 8};
      const short sx = kSizes[c.in.Byte() % 12];
      const short sy = c.in.OneIn(4) ? kSizes[c.in.Byte() % 12] : sx;
      k = c.Keep<EKernel>(sx, sy, static_cast<float>(c.Real()), static_cast<unsigned int>(c.Integer(4, false)),
                          static_cast<short>(c.in.Range(-1, 4)), static_cast<unsigned int>(c.Integer(4, false)));
      const bool whole = c.in.OneIn(2);
      for (unsigned int i = 0; k->Data != nullptr && i < k->AllocatedSize; ++i)
        k->Data[i] = whole ? static_cast<float>(static_cast<int>(c.in.Byte() % 9) - 4) : static_cast<float>(c.Real());
      break;
    }
  }
  if (c.in.OneIn(16)) {
    // Fields are public: a caller may set a size its storage does not hold.
    k->SizeX = static_cast<short>(c.in.Range(-2, 9));
    k->SizeY = static_cast<short>(c.in.Range(-2, 9));
  }
  EOk();
  return k;
}
template <>
struct Arg<EKernel*> {
  static EKernel* Make(Ctx& c) { return NewKernel(c); }
};
template <>
struct Arg<const EKernel*> {
  static const EKernel* Make(Ctx& c) { return NewKernel(c); }
};

template <>
struct Arg<EColorLookup*> {
  static EColorLookup* Make(Ctx& c) {
    if (c.in.OneIn(8)) return nullptr;
    EColorLookup* l = c.Keep<EColorLookup>(static_cast<unsigned int>(VectorCount(c, 256)), c.in.Byte() & 1);
    EOk();
    return l;
  }
};
template <>
struct Arg<const EColorLookup*> {
  static const EColorLookup* Make(Ctx& c) { return Arg<EColorLookup*>::Make(c); }
};

template <class T>
struct Arg<Corvane::Talmeer::Utils::Vector<T>&> {
  static Corvane::Talmeer::Utils::Vector<T>& Make(Ctx& c) { return *c.Keep<Corvane::Talmeer::Utils::Vector<T>>(); }
};

// Callbacks a caller may pass.
inline int IsOdd8(EBW8& p) { return p.value & 1; }
inline int IsBright24(EC24& p) { return p.c[0] > 128; }
inline int IsHigh16(EBW16& p) { return p.value > 30000; }
inline EBW8 Invert8(EBW8 p) { return EBW8(static_cast<unsigned char>(255 - p.value)); }
inline EBW16 Half16(EBW16 p) { return EBW16(static_cast<unsigned short>(p.value / 2)); }
template <>
struct Arg<int (*)(EBW8&)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &IsOdd8; }
};
template <>
struct Arg<int (*)(EBW16&)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &IsHigh16; }
};
template <>
struct Arg<int (*)(EC24&)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &IsBright24; }
};
inline int IsOddConst8(const EBW8& p) { return p.value & 1; }
inline int IsBrightConst24(const EC24& p) { return p.c[0] > 128; }
inline int IsHighConst16(const EBW16& p) { return p.value > 30000; }
template <>
struct Arg<int (*)(const EBW8&)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &IsOddConst8; }
};
template <>
struct Arg<int (*)(const EBW16&)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &IsHighConst16; }
};
template <>
struct Arg<int (*)(const EC24&)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &IsBrightConst24; }
};
template <>
struct Arg<EBW8 (*)(EBW8)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &Invert8; }
};
template <>
struct Arg<EBW16 (*)(EBW16)> {
  static auto Make(Ctx& c) { return c.in.OneIn(16) ? nullptr : &Half16; }
};

// ---------------------------------------------------------------- calls

template <class T>
void NoteValue(int index, const T& v) {
  if constexpr (std::is_arithmetic<T>::value || std::is_enum<T>::value)
    Note("arg " + std::to_string(index) + " = " + std::to_string(static_cast<double>(v)));
  else if constexpr (std::is_pointer<T>::value)
    Note("arg " + std::to_string(index) + (v == nullptr ? " null" : " set"));
}

template <class R, class... A, std::size_t... I>
void CallWith(Ctx& c, R (*fn)(A...), std::index_sequence<I...>) {
  // Braced initialisation makes the arguments from left to right.
  std::tuple<A...> args{(c.arg = static_cast<int>(I), Arg<A>::Make(c))...};
  if (Verbose()) {
    Note(c.entry.name);
    (NoteValue(static_cast<int>(I), std::get<I>(args)), ...);
  }
  c.Run([&] {
    if constexpr (std::is_same<R, short>::value) {
      const short result = std::apply(fn, args);
      if (result != static_cast<short>(EGetError()))
        Fail(c.entry.name + ": returned " + std::to_string(result) + " with code " + std::to_string(EGetError()));
    } else {
      std::apply(fn, args);
    }
  });
}

template <class R, class... A>
Entry MakeEntry(const char* name, const char* signature, R (*fn)(A...), Options options) {
  Entry e;
  e.name = std::string(name) + " " + signature + (options.tag.empty() ? "" : " " + options.tag);
  e.id = Hash(e.name);
  e.options = std::move(options);
  e.run = [fn](Ctx& c) { CallWith(c, fn, std::index_sequence_for<A...>{}); };
  return e;
}

const std::vector<Entry>& Table();

}  // namespace fuzzops

// One table line: the signature selects the overload.
#define MIREL_OP(sig, fn, ...) \
  fuzzops::MakeEntry(#fn, #sig, static_cast<std::add_pointer_t<sig>>(&fn), fuzzops::O() __VA_ARGS__)

#endif  // MIREL_TOOLS_FUZZ_FUZZ_OPS_H_
