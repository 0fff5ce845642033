#include "mirel/vector/contour.h"

#include <climits>
#include <cstddef>
#include <cstdint>

#include "mirel/foundation/frame_internal.h"

namespace {

using mirel::Frame;

constexpr int kDx[8] = {1, 1, 0, -1, -1, -1, 0, 1};
constexpr int kDy[8] = {0, -1, -1, -1, 0, 1, 1, 1};

// Which edges of the ROI a pixel lies on, and which of them each direction
// would step across.
enum : unsigned { kLeft = 1, kRight = 2, kTop = 4, kBottom = 8 };
constexpr unsigned kLeaves[8] = {kRight, kRight | kTop, kTop, kLeft | kTop, kLeft, kLeft | kBottom, kBottom,
                                 kRight | kBottom};

// The turning tables: `next` is the direction tried after a failed one,
// `back` the direction to start from after a step. Rising walks turn
// anticlockwise on the screen, falling ones clockwise; the 4-neighbour tables
// only ever reach even directions.
struct Tables {
  signed char next[8];
  signed char back[8];
};
constexpr Tables kTables[2][2] = {
    // 4 neighbours: rising, falling
    {{{2, -1, 4, -1, 6, -1, 0, -1}, {6, -1, 0, -1, 2, -1, 4, -1}},
     {{6, -1, 0, -1, 2, -1, 4, -1}, {2, -1, 4, -1, 6, -1, 0, -1}}},
    // 8 neighbours: rising, falling
    {{{1, 2, 3, 4, 5, 6, 7, 0}, {7, 7, 1, 1, 3, 3, 5, 5}},
     {{7, 0, 1, 2, 3, 4, 5, 6}, {1, 3, 3, 5, 5, 7, 7, 1}}},
};

// Neighbour test results.
constexpr int kBackground = 0;
constexpr int kObject = 1;
constexpr int kOutside = 2;

// What a mode asks for: the sense of the first walk, the value of a
// neighbour outside the ROI, and whether a walk that stops at the edge is
// followed by one in the other sense.
struct Plan {
  bool falling;
  int edge;
  bool both;
};

bool PlanOf(int mode, Plan* plan) {
  switch (mode) {
    case CONTOUR_CLOCKWISE_STOP: *plan = {true, kOutside, false}; return true;
    case CONTOUR_CLOCKWISE_WRAP: *plan = {true, kBackground, false}; return true;
    case CONTOUR_CLOCKWISE_BOTH: *plan = {true, kOutside, true}; return true;
    case CONTOUR_ANTICLOCKWISE_STOP: *plan = {false, kOutside, false}; return true;
    case CONTOUR_ANTICLOCKWISE_BOTH: *plan = {false, kOutside, true}; return true;
    case CONTOUR_ANTICLOCKWISE_WRAP: *plan = {false, kBackground, false}; return true;
    default: return false;
  }
}

// The border follow over one grey ROI. Pixels are reached through byte
// offsets from the current pixel; the ROI's edges are checked through the
// edge flags of the current position, never by pointer arithmetic.
template <class T>
class Follower {
 public:
  Follower(const EROI<T>* roi, int below, unsigned int threshold, int connexity)
      : base_(static_cast<const unsigned char*>(roi->GetGenericImagePtr(0, 0))),
        pitch_(roi->GetRowPitch()),
        width_(roi->GetWidth()),
        height_(roi->GetHeight()),
        lo_(below != 0 ? 0u : threshold),
        span_(below != 0 ? threshold : UINT_MAX - threshold),
        connexity_(connexity) {
    const std::ptrdiff_t px = static_cast<std::ptrdiff_t>(sizeof(T));
    for (int d = 0; d < 8; ++d) offset_[d] = kDx[d] * px + kDy[d] * pitch_;
  }

  // One walk from (x, y). Reports through the error state: clear when the
  // contour closed, 106 with (x, y) moved to the point where the walk met
  // the ROI's edge, or the code of a refused start or of a failed store.
  template <class Sink>
  void Walk(int& x, int& y, bool falling, int edge, Sink& sink) const {
    const Tables& t = kTables[connexity_ == CONNEXITY_8 ? 1 : 0][falling ? 1 : 0];
    sink.Begin();
    if (x < 0 || y < 0 || x >= width_ || y >= height_) {
      ESetError(E_ERROR_CONTOUR_VECTOR);
      return;
    }
    const unsigned char* p = base_ + static_cast<std::ptrdiff_t>(y) * pitch_ +
                             static_cast<std::ptrdiff_t>(x) * static_cast<std::ptrdiff_t>(sizeof(T));
    if (!Object(p)) {
      ESetError(E_ERROR_CONTOUR_VECTOR);
      return;
    }

    // A background neighbour followed by an object one, looking round from
    // north; in 8 connexity an axial one also needs the one before that to
    // be background.
    unsigned flags = EdgeFlags(x, y);
    int a = Test(flags, p, 2, edge);
    int d = t.next[2];
    int b = Test(flags, p, d, edge);
    bool found = false;
    for (int i = 0; i < 8 && !found; ++i) {
      const int c = a;
      a = b;
      d = t.next[d];
      b = Test(flags, p, d, edge);
      found = a == kBackground && b == kObject && (connexity_ == CONNEXITY_4 || (d & 1) != 0 || c == kBackground);
    }
    if (!found) {
      ESetError(b != kBackground ? E_ERROR_CONTOUR_NOT_FOUND : E_ERROR_CONTOUR_START);
      return;
    }

    const int x0 = x, y0 = y, d0 = d;
    // A closed walk passes each (point, direction) at most once, so more
    // steps than that can only come from a walk that never returns.
    long long stepsLeft = 8LL * width_ * height_ + 1;
    do {
      if (!sink.Add(x, y, d, Value(p))) return;
      x += kDx[d];
      y += kDy[d];
      p += offset_[d];
      flags = EdgeFlags(x, y);
      d = t.back[d];
      int r;
      while ((r = Test(flags, p, d, edge)) == kBackground) d = t.next[d];
      if (r == kOutside) {
        ESetError(E_WARNING_POINT_OUTSIDE);
        return;
      }
      if (--stepsLeft == 0) {
        ESetError(E_ERROR_INTERNAL);
        return;
      }
    } while (x != x0 || y != y0 || d != d0);
    EOk();
  }

 private:
  unsigned Value(const unsigned char* p) const { return reinterpret_cast<const T*>(p)->value; }
  bool Object(const unsigned char* p) const { return Value(p) - lo_ <= span_; }
  unsigned EdgeFlags(int x, int y) const {
    return (x == 0 ? kLeft : 0u) | (x == width_ - 1 ? kRight : 0u) | (y == 0 ? kTop : 0u) |
           (y == height_ - 1 ? kBottom : 0u);
  }
  int Test(unsigned flags, const unsigned char* p, int d, int edge) const {
    if ((flags & kLeaves[d]) != 0) return edge;
    return Object(p + offset_[d]) ? kObject : kBackground;
  }

  const unsigned char* base_;
  std::ptrdiff_t pitch_;
  int width_;
  int height_;
  unsigned lo_;    // object pixels are those with value - lo_ <= span_
  unsigned span_;
  int connexity_;
  std::ptrdiff_t offset_[8];
};

// Runs the walks of a mode; returns the closed flag of the result.
template <class T, class Sink>
int Follow(const EROI<T>* roi, const Plan& plan, int x, int y, int below, unsigned int threshold, int connexity,
           Sink& sink) {
  const Follower<T> follower(roi, below, threshold, connexity);
  follower.Walk(x, y, plan.falling, plan.edge, sink);
  const bool open = EGetError() == E_WARNING_POINT_OUTSIDE;
  if (!open || !plan.both) return open ? 0 : 1;
  // (x, y) is where the first walk met the edge: walk back from there.
  follower.Walk(x, y, !plan.falling, plan.edge, sink);
  return 0;
}

// The record of each path vector, and how a point's pixel goes into it.
template <class V>
struct PathRecordOf;
template <>
struct PathRecordOf<EPathVector> {
  using type = EPath;
  static void SetPixel(EPath&, unsigned) {}
};
template <>
struct PathRecordOf<EBW8PathVector> {
  using type = EBW8Path;
  static void SetPixel(EBW8Path& r, unsigned v) { r.m_bw8Pixel = EBW8(static_cast<unsigned char>(v)); }
};
template <>
struct PathRecordOf<EBW16PathVector> {
  using type = EBW16Path;
  static void SetPixel(EBW16Path& r, unsigned v) { r.m_bw16Pixel = EBW16(static_cast<unsigned short>(v)); }
};

// Appends path records; each point carries its pixel, or with
// `directions` the direction of the step leaving it.
template <class V>
class PathSink {
 public:
  PathSink(V* path, int directions) : path_(path), directions_(directions != 0) {}
  void Begin() { path_->Empty(); }
  bool Add(int x, int y, int d, unsigned pixel) {
    typename PathRecordOf<V>::type record;
    record.m_n16X = static_cast<short>(x);
    record.m_n16Y = static_cast<short>(y);
    PathRecordOf<V>::SetPixel(record, directions_ ? static_cast<unsigned>(d) : pixel);
    const unsigned int before = path_->GetNumElements();
    path_->AddElement(record);
    return path_->GetNumElements() != before;
  }

 private:
  V* path_;
  bool directions_;
};

// Groups of three 32-bit words x, y, direction in an EVector of kind 1, with
// at most `limit` of them; the group count is written by End().
class GroupSink {
 public:
  GroupSink(EVector* v, long long limit) : v_(v), limit_(limit) {}
  void Begin() {
    count_ = 0;
    v_->SetNbGroup(0);
  }
  bool Add(int x, int y, int d, unsigned) {
    if (count_ >= limit_) {
      ESetError(E_ERROR_CONTOUR_EMPTY);
      return false;
    }
    if (count_ >= v_->GetNbMaxGroup()) {
      const long long grown = static_cast<long long>(v_->GetAllocatedSize()) + kGrowBytes;
      if (grown > INT_MAX) {
        ESetError(E_ERROR_OUT_OF_MEMORY);
        return false;
      }
      if (v_->Reallocate(static_cast<int>(grown)) != 0) return false;
    }
    std::int32_t* g = static_cast<std::int32_t*>(v_->GetDataPtr()) + 3 * count_;
    g[0] = x;
    g[1] = y;
    g[2] = d;
    ++count_;
    return true;
  }
  void End() { v_->SetNbGroup(count_); }

 private:
  static constexpr int kGrowBytes = 24576;
  EVector* v_;
  long long limit_;
  int count_ = 0;
};

template <class T, class V>
void PathForm(const char* label, const EROI<T>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
              unsigned int threshold, CONNEXITY connexity, V* path, int keepDirections) {
  Frame frame(label);
  Plan plan{};
  if (!frame.NotVoid(roi) || !frame.Require(PlanOf(mode, &plan), E_ERROR_BAD_CONTOUR_MODE) ||
      !frame.Require(path != nullptr, E_ERROR_BAD_ARGUMENT))
    return;
  PathSink<V> sink(path, keepDirections);
  path->SetClosed(Follow(roi, plan, x, y, sense, threshold, connexity, sink));
}

}  // namespace

short ImgContour(const EROI<EBW8>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                 unsigned int threshold, CONNEXITY connexity, EVector* contour) {
  Frame frame("ImgContour ( EVector)");
  Plan plan{};
  if (!frame.NotVoid(roi) || !frame.Require(PlanOf(mode, &plan), E_ERROR_BAD_CONTOUR_MODE) ||
      !frame.Require(contour != nullptr, E_ERROR_VOID_VECTOR))
    return frame.Result();
  const bool shaped = contour->IsSameVectType(1) != 0 && contour->GetGroupLength() == 3 &&
                      contour->GetDataSize() == E_VECTOR_DATA_32BIT;
  if (!shaped && contour->SetType(1, 2000, 0) != 0) return frame.Result();
  if (!frame.Require(contour->GetDataPtr() != nullptr, E_ERROR_VOID_VECTOR)) return frame.Result();
  GroupSink sink(contour, (static_cast<long long>(roi->GetWidth()) * roi->GetHeight()) >> 3);
  Follow(roi, plan, x, y, sense, threshold, connexity, sink);
  sink.End();
  return frame.Result();
}

void ImgContour(const EROI<EBW8>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                unsigned int threshold, CONNEXITY connexity, EPathVector* path) {
  PathForm("ImgContour ( EPathVector)", roi, mode, x, y, sense, threshold, connexity, path, 0);
}

void ImgContour(const EROI<EBW8>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                unsigned int threshold, CONNEXITY connexity, EBW8PathVector* path, int keepDirections) {
  PathForm("ImgContour ( EBW8PathVector)", roi, mode, x, y, sense, threshold, connexity, path, keepDirections);
}

void ImgContour(const EROI<EBW16>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                unsigned int threshold, CONNEXITY connexity, EPathVector* path) {
  PathForm("ImgContour ( EPathVector)(BW16)", roi, mode, x, y, sense, threshold, connexity, path, 0);
}

void ImgContour(const EROI<EBW16>* roi, CONTOUR_MODE mode, int x, int y, CONTOUR_THRESHOLD sense,
                unsigned int threshold, CONNEXITY connexity, EBW16PathVector* path, int keepDirections) {
  PathForm("ImgContour ( EBW16PathVector)(BW16)", roi, mode, x, y, sense, threshold, connexity, path,
           keepDirections);
}
