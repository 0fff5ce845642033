// Write prefetch of destination rows.
//
// A store whose cache line is not in the core's caches has to fetch the
// line for ownership first. On a frame larger than the L2 cache every line
// of the destination misses, the store buffer fills and a streaming loop
// stalls on each store in turn, whatever its vector width. Asking for the
// lines of the next destination row before working on the current one keeps
// those fetches in flight while the current row is computed. The plain byte
// streams (copy, fill, the byte operations, the 8-bit threshold, lookup and
// gain) do without it: their loops are short enough for the hardware's own
// stream prefetch, and the hint measured slower on frames already in the
// cache (on Intel processors they hint a kilobyte ahead instead: see
// stream_internal.h). A prefetch is only a hint: it never faults, never
// changes a byte, and a line it brings in stays in the caches for whatever
// reads the result next (unlike a non-temporal store, which would send it
// to memory).
#ifndef MIREL_FOUNDATION_PREFETCH_INTERNAL_H_
#define MIREL_FOUNDATION_PREFETCH_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#if defined(_MSC_VER) && !defined(__clang__) && (defined(_M_X64) || defined(_M_IX86))
#include <xmmintrin.h>
#endif

namespace mirel {

// The cache-line size the hints step by.
constexpr std::size_t kCacheLineBytes = 64;

// Hints that the line holding p is about to be written.
//
// On x86-64 with GCC or Clang the hint is an inline prefetcht0: GCC treats
// its prefetch builtin as free of effects and deletes a loop of them.
inline void PrefetchLineForWrite(const void* p) noexcept {
  const char* at = static_cast<const char*>(p);
#if (defined(__GNUC__) || defined(__clang__)) && (defined(__x86_64__) || defined(__i386__))
  __asm__ volatile("prefetcht0 %0" : : "m"(*at));
#elif defined(__GNUC__) || defined(__clang__)
  __builtin_prefetch(at, 1, 3);
#elif defined(_MSC_VER) && (defined(_M_X64) || defined(_M_IX86))
  _mm_prefetch(at, _MM_HINT_T0);
#else
  (void)at;
#endif
}

// Hints that the bytes [p, p + n) are about to be written.
inline void PrefetchForWrite(const void* p, std::size_t n) noexcept {
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(p) & ~std::uintptr_t{kCacheLineBytes - 1};
  const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(p) + n;
  for (std::uintptr_t line = first; line < end; line += kCacheLineBytes)
    PrefetchLineForWrite(reinterpret_cast<const char*>(line));
}

// Hints that row y of a row view (anything with Row(y) and height) is about
// to be written, `bytes` bytes from its first pixel; nothing when y is past
// the last row. Workers call it with y + 1 at the top of each row.
template <class R>
inline void PrefetchRowForWrite(const R& rows, int y, std::size_t bytes) noexcept {
  if (y < rows.height) PrefetchForWrite(rows.Row(y), bytes);
}

}  // namespace mirel

#endif  // MIREL_FOUNDATION_PREFETCH_INTERNAL_H_
