// The 8-bit affine row with AVX-512 (F and BW): sixteen pixels a block.
// The masked forms (all lanes on) keep GCC from warning about the
// undefined source operand inside the plain forms.
#include <immintrin.h>

#include <cstdint>

#include "mirel/geometry/affine_blocks_internal.h"

namespace {

struct Isa {
  using V = __m512i;
  static constexpr int kLanes = 16;
  static V Set1(std::int32_t v) { return _mm512_set1_epi32(v); }
  static V Lanes(std::uint32_t step) {
    return _mm512_mullo_epi32(_mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
                              _mm512_set1_epi32(static_cast<std::int32_t>(step)));
  }
  static V Add(V a, V b) { return _mm512_add_epi32(a, b); }
  static V Sub(V a, V b) { return _mm512_sub_epi32(a, b); }
  static V And(V a, V b) { return _mm512_and_si512(a, b); }
  static V Or(V a, V b) { return _mm512_or_si512(a, b); }
  static V MulLo(V a, V b) { return _mm512_mullo_epi32(a, b); }
  template <int K>
  static V Srai(V a) { return _mm512_maskz_srai_epi32(0xFFFF, a, K); }
  template <int K>
  static V Srli(V a) { return _mm512_maskz_srli_epi32(0xFFFF, a, K); }
  template <int K>
  static V Slli(V a) { return _mm512_maskz_slli_epi32(0xFFFF, a, K); }
  static V Madd16(V a, V b) { return _mm512_madd_epi16(a, b); }
  static bool AllWithin(V v, std::int32_t lo, std::int32_t hi) {
    const __mmask16 in = _mm512_cmpge_epi32_mask(v, _mm512_set1_epi32(lo)) &
                         _mm512_cmplt_epi32_mask(v, _mm512_set1_epi32(hi));
    return in == 0xFFFF;
  }
  static V Gather(const std::uint8_t* base, V idx) {
    return _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, idx, base, 1);
  }
  static V Load(const std::int32_t* p) { return _mm512_loadu_si512(p); }
  static void StoreU16(std::uint16_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtepi32_epi16(0xFFFF, v));
  }
  static constexpr int kLanes16 = 32;
  static V Widen(const std::uint8_t* p) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
  }
  static void EvenOdd(const std::uint8_t* p, V& even, V& odd) {
    const V v = _mm512_loadu_si512(p);
    even = _mm512_and_si512(v, _mm512_set1_epi16(0xff));
    odd = _mm512_maskz_srli_epi16(0xFFFFFFFFu, v, 8);
  }
  static V Set16(std::int16_t v) { return _mm512_set1_epi16(v); }
  static V Add16(V a, V b) { return _mm512_add_epi16(a, b); }
  static V Sub16(V a, V b) { return _mm512_sub_epi16(a, b); }
  static V Mullo16(V a, V b) { return _mm512_mullo_epi16(a, b); }
  static V MulhiU16(V a, V b) { return _mm512_mulhi_epu16(a, b); }
  template <int K>
  static V Srli16(V a) { return _mm512_maskz_srli_epi16(0xFFFFFFFFu, a, K); }
  static V Carry16(V sum, V part) { return _mm512_movm_epi16(_mm512_cmplt_epu16_mask(sum, part)); }
  static V LoadU16Lanes(const std::uint16_t* p) { return _mm512_loadu_si512(p); }
  static void StoreU16Lanes(std::uint16_t* p, V v) { _mm512_storeu_si512(p, v); }
  static void StoreBytes16(std::uint8_t* p, V v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm512_maskz_cvtepi16_epi8(0xFFFFFFFFu, v));
  }
  static void StoreBytes(std::uint8_t* out, V v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm512_maskz_cvtepi32_epi8(0xFFFF, v));
  }
};

using mirel::geometry::blocks::HorizontalGather;
using mirel::geometry::blocks::NearestGather;

// Columns of one source row by permutes: when 32 consecutive columns read
// from a window of 64 source pixels (steps below two pixels), the window is
// loaded once (masked at the row's end, so nothing beyond the row is read),
// widened to 16 bits and the pixels picked by their index in it. Other
// blocks go through the gathers.
struct Window {
  __m512i lo, hi;  // source pixels base .. base + 63 as 16-bit lanes
  __m512i rel;     // index of each column's pixel in the window
};

// Inline, so that the window stays in registers: GCC at -O2 kept the
// function out of line and passed the three vectors through memory (nearest
// resizes ran twice as long).
inline bool LoadWindow(const std::uint8_t* row, int width, const std::int32_t* ix, Window& w) {
  const int base = ix[0];
  if (ix[31] + 1 - base > 63) return false;
  const int avail = width - base;
  const __mmask64 mask = avail >= 64 ? ~0ULL : (1ULL << avail) - 1;
  const __m512i bytes = _mm512_maskz_loadu_epi8(mask, row + base);
  w.lo = _mm512_cvtepu8_epi16(_mm512_maskz_extracti64x4_epi64(0xF, bytes, 0));
  w.hi = _mm512_cvtepu8_epi16(_mm512_maskz_extracti64x4_epi64(0xF, bytes, 1));
  const __m512i b = _mm512_set1_epi32(base);
  const __m256i r0 = _mm512_maskz_cvtepi32_epi16(0xFFFF, _mm512_sub_epi32(_mm512_loadu_si512(ix), b));
  const __m256i r1 = _mm512_maskz_cvtepi32_epi16(0xFFFF, _mm512_sub_epi32(_mm512_loadu_si512(ix + 16), b));
  w.rel = _mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(r0), r1, 1);
  return true;
}

// Two 16-lane int32 loads narrowed to one vector of 32 16-bit lanes.
__m512i Narrow(__m512i a, __m512i b) {
  return _mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(_mm512_maskz_cvtepi32_epi16(0xFFFF, a)),
                                  _mm512_maskz_cvtepi32_epi16(0xFFFF, b), 1);
}

int HorizontalPermute(const std::uint8_t* row, int width, const std::int32_t* ix, const std::int32_t* wx, int u0,
                      int u1, std::uint16_t* h) {
  int u = u0;
  while (u + 32 <= u1) {
    Window w;
    if (!LoadWindow(row, width, ix + u, w)) {
      const int done = HorizontalGather<Isa>(row, width, ix, wx, u, u + 32, h);
      if (done < u + 32) return done;
      u = done;
      continue;
    }
    const __m512i a = _mm512_permutex2var_epi16(w.lo, w.rel, w.hi);
    const __m512i b = _mm512_permutex2var_epi16(w.lo, _mm512_add_epi16(w.rel, _mm512_set1_epi16(1)), w.hi);
    const __m512i w0 = _mm512_loadu_si512(wx + u), w1 = _mm512_loadu_si512(wx + u + 16);
    const __m512i g = Narrow(w0, w1);
    const __m512i f = Narrow(_mm512_maskz_srli_epi32(0xFFFF, w0, 16), _mm512_maskz_srli_epi32(0xFFFF, w1, 16));
    _mm512_storeu_si512(h + u, _mm512_add_epi16(_mm512_mullo_epi16(a, g), _mm512_mullo_epi16(b, f)));
    u += 32;
  }
  return HorizontalGather<Isa>(row, width, ix, wx, u, u1, h);
}

int NearestPermute(const std::uint8_t* row, int width, const std::int32_t* ix, int u0, int u1, std::uint8_t* out) {
  int u = u0;
  while (u + 32 <= u1) {
    Window w;
    if (!LoadWindow(row, width, ix + u, w)) {
      const int done = NearestGather<Isa>(row, width, ix, u, u + 32, out);
      if (done < u + 32) return done;
      u = done;
      continue;
    }
    const __m512i v = _mm512_permutex2var_epi16(w.lo, w.rel, w.hi);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + u), _mm512_maskz_cvtepi16_epi8(0xFFFFFFFFu, v));
    u += 32;
  }
  return NearestGather<Isa>(row, width, ix, u, u1, out);
}

}  // namespace

namespace mirel {
namespace geometry {
AffineRoutines Avx512AffineRoutines() {
  return AffineRoutines{blocks::Row<Isa>, HorizontalPermute, NearestPermute, blocks::StepSums<Isa>,
                        blocks::VerticalBlend<Isa>,
                        blocks::Halves<Isa>};
}
}  // namespace geometry
}  // namespace mirel
