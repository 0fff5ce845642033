// Row workers of the lookup and gain operations, shared with the histogram
// equalization and the per-instruction-set files.
#ifndef MIREL_POINT_LUT_INTERNAL_H_
#define MIREL_POINT_LUT_INTERNAL_H_

#include <cstddef>
#include <cstdint>

#include "mirel/foundation/frame_internal.h"

namespace mirel {
namespace point {

// dst = table[src] over all rows, on the path that `mmx` and the active
// instruction-set level allow. The sizes of the two row views agree.
void Lut8Rows(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table, int mmx);
void Lut8RowScalar(const unsigned char* s, unsigned char* d, std::size_t n, const unsigned char* table);

// The 16-bit block formula of the 8-bit gain for one pixel.
inline unsigned char GainBlockPixel(unsigned char x, std::uint16_t g, std::int16_t o) {
  const std::uint16_t product = static_cast<std::uint16_t>(static_cast<std::uint32_t>(x) * g);
  int v = static_cast<int>(product >> 5) + o;
  if (v > 32767) v = 32767;  // signed 16-bit saturation of the addition
  if (v < -32768) v = -32768;
  return static_cast<unsigned char>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

#if defined(MIREL_X86_SIMD)
void Lut8RowsAVX2(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table);
// Returns false when the processor lacks the byte permutes (VBMI) it needs.
bool Lut8RowsAVX512(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table);

// Block formula of the gain over n pixels (any n; the caller passes the
// block stretch of a row).
void GainBlocksSSE2(const unsigned char* s, unsigned char* d, std::size_t n, std::uint16_t g, std::int16_t o);
void GainBlocksAVX2(const unsigned char* s, unsigned char* d, std::size_t n, std::uint16_t g, std::int16_t o);
void GainBlocksAVX512(const unsigned char* s, unsigned char* d, std::size_t n, std::uint16_t g, std::int16_t o);
#endif

}  // namespace point
}  // namespace mirel

#endif  // MIREL_POINT_LUT_INTERNAL_H_
