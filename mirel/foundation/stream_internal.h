// How streaming loops meet their destination lines in the Intel form (see
// cpu::IntelStreaming): one string instruction over rows that join into a
// stretch, and write hints a kilobyte ahead of the stores.
//
// A worker writes a run of rows as one stretch only where the padding
// between them is the library's own (mirel::detail::SpansOwnedRows). The
// stretch runs from the first byte of the first row to the last byte of the
// last row, so nothing behind the last row is written; the bytes of the rows
// are those of a row-by-row memset or memcpy, and the padding between them
// takes whatever the stretch puts there.
#ifndef MIREL_FOUNDATION_STREAM_INTERNAL_H_
#define MIREL_FOUNDATION_STREAM_INTERNAL_H_

#include <cstddef>
#include <cstring>

#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/prefetch_internal.h"

namespace mirel {

// The rows' stretch: (rows - 1) pitches and the bytes of the last row.
inline std::size_t StretchBytes(std::ptrdiff_t pitch, int rows, std::size_t rowBytes) {
  return rows <= 0 ? 0 : static_cast<std::size_t>(pitch) * static_cast<std::size_t>(rows - 1) + rowBytes;
}

// n bytes at d take `value`. An inline rep stosb: the C library's memset may
// switch to non-temporal stores past a threshold of its own, which would
// send a frame to memory just before the caller reads it.
inline void StringFill(void* d, unsigned char value, std::size_t n) {
#if (defined(__GNUC__) || defined(__clang__)) && defined(__x86_64__)
  __asm__ volatile("rep stosb" : "+D"(d), "+c"(n) : "a"(value) : "memory");
#else
  std::memset(d, value, n);
#endif
}

// n bytes from s to d, which do not overlap. An inline rep movsb, for the
// reason above.
inline void StringCopy(void* d, const void* s, std::size_t n) {
#if (defined(__GNUC__) || defined(__clang__)) && defined(__x86_64__)
  __asm__ volatile("rep movsb" : "+D"(d), "+S"(s), "+c"(n) : : "memory");
#else
  std::memcpy(d, s, n);
#endif
}

// Write hints ahead of a store loop over rows that follow one another in
// memory. At(p), called as the loop reaches p, hints the line `bytes`
// further on, which may lie in a later row, and nothing at or past `end`
// (one past the last byte the loop writes). With bytes == 0, nothing.
struct StoreAhead {
  std::size_t bytes = 0;
  const unsigned char* end = nullptr;
  void At(const void* p) const noexcept {
    if (bytes == 0) return;
    const unsigned char* q = static_cast<const unsigned char*>(p) + bytes;
    if (q < end) PrefetchLineForWrite(q);
  }
};

// The hints for `rows` rows of rowBytes bytes, `pitch` bytes apart from
// `first`: a kilobyte ahead in the Intel form, none otherwise.
inline StoreAhead StoreAheadFor(const void* first, std::ptrdiff_t pitch, int rows, std::size_t rowBytes) {
  if (!cpu::IntelStreaming() || rows <= 0) return StoreAhead{};
  return StoreAhead{1024, static_cast<const unsigned char*>(first) + StretchBytes(pitch, rows, rowBytes)};
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_STREAM_INTERNAL_H_
