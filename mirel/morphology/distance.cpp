// The distance map: a forward and a backward pass over rows.
//
// The values are worked in bytes. Every value of the map is the smaller of
// its source pixel (at most 255) and something else, so it is at most 255;
// a least neighbour of 255 plus one is then never below the source pixel,
// and holding the sum at 255 gives the same result. A ceiling above 255
// likewise acts as 255. The rows are walked at 8 bits and stored at 16.
#include "mirel/morphology/distance.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "mirel/foundation/frame_internal.h"
#include "mirel/morphology/thinning_internal.h"

short ImgDistance(const EROI<EBW8>* src, EImage<EBW16>* dst, int limit) {
  mirel::Frame frame("ImgDistance");
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_VOID_IMAGE) || !frame.SameSize(src, dst) ||
      !frame.NotVoid(src, dst))
    return frame.Result();
  const int w = src->GetWidth(), h = src->GetHeight();
  if (w == 0 || h == 0) return frame.Result();
  const std::size_t n = static_cast<std::size_t>(w);
  std::unique_ptr<std::uint8_t[]> buffer(new (std::nothrow) std::uint8_t[2 * n]);
  if (!buffer) {
    frame.Fail(E_ERROR_WORK_BUFFER);
    return frame.Result();
  }
  const unsigned lim = limit < 1 ? 0u : limit >= 255 ? 255u : static_cast<unsigned>(limit);
  const mirel::thinning::Routines& routines = mirel::thinning::ActiveRoutines();
  const auto s = mirel::RowsOf(src);
  const auto d = mirel::RowsOf(static_cast<EROI<EBW16>*>(dst));
  auto sRow = [&](int y) { return reinterpret_cast<const std::uint8_t*>(s.Row(y)); };
  auto dRow = [&](int y) { return reinterpret_cast<std::uint16_t*>(d.Row(y)); };

  // Each pass keeps the row just done, at 8 bits, for the next.
  std::uint8_t* done = buffer.get();
  std::uint8_t* next = buffer.get() + n;
  for (int y = 0; y < h; ++y) {
    routines.forward(sRow(y), y > 0 ? done : nullptr, next, dRow(y), w, lim);
    std::swap(done, next);
  }
  for (int y = h - 1; y >= 0; --y) {
    routines.backward(y + 1 < h ? done : nullptr, next, dRow(y), w, lim);
    std::swap(done, next);
  }
  return frame.Result();
}
