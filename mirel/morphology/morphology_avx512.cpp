// Row kernels of the morphology family with AVX-512 (F, BW).
#include <immintrin.h>

#include <cstdint>

#include "mirel/morphology/morphology_blocks_internal.h"

namespace {

using mirel::morphology::kAnd;
using mirel::morphology::kMin;

struct Isa {
  using V = __m512i;
  static constexpr int kBytes = 64;
  template <class T>
  static V Load(const T* p) { return _mm512_loadu_si512(p); }
  template <class T>
  static void Store(T* p, V v) { _mm512_storeu_si512(p, v); }
  template <class T, int kOp>
  static V Apply(V a, V b) {
    if constexpr (kOp == kAnd) return _mm512_and_si512(a, b);
    else if constexpr (kOp > kAnd) return _mm512_or_si512(a, b);
    else if constexpr (sizeof(T) == 1) return kOp == kMin ? _mm512_min_epu8(a, b) : _mm512_max_epu8(a, b);
    else return kOp == kMin ? _mm512_min_epu16(a, b) : _mm512_max_epu16(a, b);
  }
  static V NonZero1(V a) { return _mm512_min_epu8(a, _mm512_set1_epi8(1)); }
  static V Add8(V a, V b) { return _mm512_add_epi8(a, b); }
  static V Over4(V a) { return _mm512_movm_epi8(_mm512_cmpgt_epu8_mask(a, _mm512_set1_epi8(4))); }
};

}  // namespace

namespace mirel {
namespace morphology {
const RowKernels<std::uint8_t>& Avx512Kernels8() {
  static const RowKernels<std::uint8_t> k = blocks::MakeKernels<Isa, std::uint8_t>();
  return k;
}
const RowKernels<std::uint16_t>& Avx512Kernels16() {
  static const RowKernels<std::uint16_t> k = blocks::MakeKernels<Isa, std::uint16_t>();
  return k;
}
}  // namespace morphology
}  // namespace mirel
