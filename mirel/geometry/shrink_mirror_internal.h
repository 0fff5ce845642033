// The byte-row reversal of the 8-bit horizontal mirror by blocks.
#ifndef MIREL_GEOMETRY_SHRINK_MIRROR_INTERNAL_H_
#define MIREL_GEOMETRY_SHRINK_MIRROR_INTERNAL_H_

#include <algorithm>
#include <cstdint>

namespace mirel {
namespace geometry {

// Reverses `count` bytes in place.
using MirrorRowFn = void (*)(std::uint8_t* row, int count);

namespace {
// Swaps reversed blocks of Isa::kBytes from both ends towards the middle,
// then reverses what is left (fewer than two blocks) byte by byte.
template <class Isa>
void ReverseRow(std::uint8_t* row, int count) {
  constexpr int B = Isa::kBytes;
  std::uint8_t* left = row;
  std::uint8_t* right = row + count;
  while (right - left >= 2 * B) {
    const auto a = Isa::Load(left);
    const auto b = Isa::Load(right - B);
    Isa::Store(left, Isa::Reverse(b));
    Isa::Store(right - B, Isa::Reverse(a));
    left += B;
    right -= B;
  }
  std::reverse(left, right);
}
}  // namespace

#if defined(MIREL_X86_SIMD)
MirrorRowFn Sse2MirrorRow();
MirrorRowFn Avx2MirrorRow();
MirrorRowFn Avx512MirrorRow();
#endif

// The routine for the calling thread's fast-path setting, or null.
MirrorRowFn ActiveMirrorRow();

}  // namespace geometry
}  // namespace mirel

#endif  // MIREL_GEOMETRY_SHRINK_MIRROR_INTERNAL_H_
