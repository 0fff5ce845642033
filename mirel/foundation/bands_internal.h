// Bands of destination rows computed on several threads.
//
// A worker that can produce any band of rows [y0, y1) of its result from the
// whole source is run through the band runner instead of over all rows:
//
//   mirel::RunBands(d.height, mirel::RowCost(d.width, 4), [&](int y0, int y1) {
//     FooRows(s, d, y0, y1);
//   });
//
// The runner decides on the calling thread how many bands to make: one (the
// body is then called once with [0, rows) on the calling thread, exactly as
// without the runner) unless the thread's setting (ImgSetThreads) is above
// 1, the call is not itself running inside a band, and the work is large
// enough for waking threads to pay. Otherwise the rows are cut into up to
// four bands a thread, of nearly equal height (none empty), which the
// calling thread and the pool's claim one after another, so that a thread
// the system keeps waiting holds up no more than one band; the calling
// thread returns when all are done.
//
// Each band runs with the caller's fast-path switches and thread record
// (the overlay colour) and a cleared error state of its own. When every
// band succeeds the caller's error state is left as it was; otherwise it
// holds the code and trace of the first failing band in row order, so the
// frame traces the same as after one call. An exception thrown in a band is
// rethrown on the caller once every band has finished.
//
// What the bands write must not overlap what another band reads: a worker
// that reads pixels it has written (in place with a window) is not run in
// bands, or works from a copy. What the bands need to allocate is allocated
// before Run, so that a call refused for memory writes nothing.
//
// Reductions (histograms, sums) use the Bands object directly: Count() bands
// each fill a partial result of their own, merged on the caller afterwards.
#ifndef MIREL_FOUNDATION_BANDS_INTERNAL_H_
#define MIREL_FOUNDATION_BANDS_INTERNAL_H_

#include <initializer_list>
#include <type_traits>

#include "mirel/foundation/export.h"
#include "mirel/foundation/frame_internal.h"

namespace mirel {

// The cost of one row: `pixels` pixels of about `unitsPerPixel` units each,
// a unit being about one byte streamed through a simple pixelwise
// operation.
inline double RowCost(int pixels, double unitsPerPixel) { return pixels * unitsPerPixel; }
// The cost that keeps a call in one band on the calling thread: for a call
// whose rows depend on rows it has written.
constexpr double kOneBand = 0.0;

// Exported for the library's own tests.
class MIREL_API Bands {
 public:
  using BandFn = void (*)(void* context, int band, int y0, int y1);

  // `rows` rows of about `rowCost` units each (kOneBand: one band).
  Bands(int rows, double rowCost);
  int Count() const { return count_; }
  // The most bands that run at the same time: a worker needs no more
  // scratch buffers than this, shared out as bands start.
  int Concurrent() const { return count_ == 1 ? 1 : (threads_ < count_ ? threads_ : count_); }
  int Begin(int band) const {
    return static_cast<int>(static_cast<long long>(rows_) * band / count_);
  }
  int End(int band) const { return Begin(band + 1); }

  // Calls body(band, y0, y1) once for every band, on the calling thread
  // and the pool's.
  template <class F>
  void Run(F&& body) const {
    using Body = std::remove_reference_t<F>;
    if (count_ == 1) {
      body(0, 0, rows_);
      return;
    }
    Dispatch(
        [](void* context, int band, int y0, int y1) { (*static_cast<Body*>(context))(band, y0, y1); },
        const_cast<void*>(static_cast<const void*>(&body)));
  }

 private:
  void Dispatch(BandFn fn, void* context) const;

  int rows_;
  int count_;
  int threads_;
};

// Calls body(y0, y1) over bands that together cover rows [0, rows).
template <class F>
void RunBands(int rows, double rowCost, F&& body) {
  Bands(rows, rowCost).Run([&](int, int y0, int y1) { body(y0, y1); });
}

// Rows [y0, y1) of a row view, as a view of their own.
template <class T>
Rows<T> Band(const Rows<T>& rows, int y0, int y1) {
  return Rows<T>{rows.Row(y0), rows.pitch, rows.width, y1 - y0};
}

// True when a worker that reads row y of `src` only to write row y of `dst`
// (a pixelwise operation) may run in bands: the two share no pixel, or each
// destination row lies on its own source row.
inline bool RowsIndependent(const EGenericROI* src, const EGenericROI* dst) {
  return !Overlap(src, dst) || src->GetTotalOrgY() == dst->GetTotalOrgY();
}

// Calls work(y0, y1) over bands of the destination's rows for a pixelwise
// operation (row y of dst from row y of each source alone) of about
// `unitsPerPixel` units a pixel; one band when a source lies on the
// destination's image at another height.
template <class F>
void RowwiseBands(const EGenericROI* dst, std::initializer_list<const EGenericROI*> sources, double unitsPerPixel,
                  F&& work) {
  bool independent = true;
  for (const EGenericROI* src : sources) independent = independent && RowsIndependent(src, dst);
  RunBands(dst->GetHeight(), independent ? RowCost(dst->GetWidth(), unitsPerPixel) : kOneBand, work);
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_BANDS_INTERNAL_H_
