// Byte lanes for the bit-image kernels, one struct per vector width.
//
// ByteLanes is one byte at a time, for the scalar kernels and the row ends
// of the vector ones. A source built for one instruction set includes this
// header and uses the widest struct its compiler flags allow: Lanes128 on x86-64,
// Lanes256 where __AVX2__ is defined, Lanes512 where __AVX512BW__ is. Each
// struct has internal linkage, so code built for one set never leaks into
// another source.
//
// Pixels run from the most significant bit of a byte down, so inside a
// vector of bytes a pixel's left neighbour is the next higher bit of its
// byte, or bit 0 of the byte before; its right neighbour the next lower
// bit, or bit 7 of the byte after. The shifts below move bits inside each
// byte only; the caller brings in the neighbouring byte from a load one
// byte off.
#ifndef MIREL_POINT_BITS_LANES_INTERNAL_H_
#define MIREL_POINT_BITS_LANES_INTERNAL_H_

namespace mirel {
namespace bits {
namespace {

struct ByteLanes {
  using V = unsigned char;
  static constexpr int kBytes = 1;
  static V Load(const unsigned char* p) { return *p; }
  static void Store(unsigned char* p, V v) { *p = v; }
  static V Set1(unsigned char c) { return c; }
  static V And(V a, V b) { return static_cast<V>(a & b); }
  static V Or(V a, V b) { return static_cast<V>(a | b); }
  static V Xor(V a, V b) { return static_cast<V>(a ^ b); }
  static V AndNot(V a, V b) { return static_cast<V>(~a & b); }
  static V Shr1(V v) { return static_cast<V>(v >> 1); }
  static V Shl1(V v) { return static_cast<V>(v << 1); }
  static V Low7(V v) { return static_cast<V>(v << 7); }
  static V High0(V v) { return static_cast<V>(v >> 7); }
};

}  // namespace
}  // namespace bits
}  // namespace mirel

#if defined(MIREL_X86_SIMD)

#include <immintrin.h>

namespace mirel {
namespace bits {
namespace {

struct Lanes128 {
  using V = __m128i;
  static constexpr int kBytes = 16;
  static V Load(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void Store(unsigned char* p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static V Set1(unsigned char c) { return _mm_set1_epi8(static_cast<char>(c)); }
  static V And(V a, V b) { return _mm_and_si128(a, b); }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V Xor(V a, V b) { return _mm_xor_si128(a, b); }
  static V AndNot(V a, V b) { return _mm_andnot_si128(a, b); }  // ~a & b
  // Each byte shifted by one bit towards its low end, and towards its high end.
  static V Shr1(V v) { return _mm_and_si128(_mm_srli_epi16(v, 1), Set1(0x7f)); }
  static V Shl1(V v) { return _mm_add_epi8(v, v); }
  // Bit 0 of each byte moved to bit 7 (the rest cleared), and bit 7 to bit 0.
  static V Low7(V v) { return _mm_and_si128(_mm_slli_epi16(v, 7), Set1(0x80)); }
  static V High0(V v) { return _mm_and_si128(_mm_srli_epi16(v, 7), Set1(0x01)); }
  // Each byte shifted by k bits (0 to 8) towards its high or its low end.
  static V ShlBy(V v, int k) {
    return _mm_and_si128(_mm_sll_epi16(v, _mm_cvtsi32_si128(k)), Set1(static_cast<unsigned char>(0xff << k)));
  }
  static V ShrBy(V v, int k) {
    return _mm_and_si128(_mm_srl_epi16(v, _mm_cvtsi32_si128(k)), Set1(static_cast<unsigned char>(0xff >> k)));
  }
};

#if defined(__AVX2__)
struct Lanes256 {
  using V = __m256i;
  static constexpr int kBytes = 32;
  static V Load(const unsigned char* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
  static void Store(unsigned char* p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static V Set1(unsigned char c) { return _mm256_set1_epi8(static_cast<char>(c)); }
  static V And(V a, V b) { return _mm256_and_si256(a, b); }
  static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  static V Xor(V a, V b) { return _mm256_xor_si256(a, b); }
  static V AndNot(V a, V b) { return _mm256_andnot_si256(a, b); }
  static V Shr1(V v) { return _mm256_and_si256(_mm256_srli_epi16(v, 1), Set1(0x7f)); }
  static V Shl1(V v) { return _mm256_add_epi8(v, v); }
  static V Low7(V v) { return _mm256_and_si256(_mm256_slli_epi16(v, 7), Set1(0x80)); }
  static V High0(V v) { return _mm256_and_si256(_mm256_srli_epi16(v, 7), Set1(0x01)); }
  static V ShlBy(V v, int k) {
    return _mm256_and_si256(_mm256_sll_epi16(v, _mm_cvtsi32_si128(k)), Set1(static_cast<unsigned char>(0xff << k)));
  }
  static V ShrBy(V v, int k) {
    return _mm256_and_si256(_mm256_srl_epi16(v, _mm_cvtsi32_si128(k)), Set1(static_cast<unsigned char>(0xff >> k)));
  }
};
#endif

#if defined(__AVX512BW__)
struct Lanes512 {
  using V = __m512i;
  static constexpr int kBytes = 64;
  static V Load(const unsigned char* p) { return _mm512_loadu_si512(p); }
  static void Store(unsigned char* p, V v) { _mm512_storeu_si512(p, v); }
  static V Set1(unsigned char c) { return _mm512_set1_epi8(static_cast<char>(c)); }
  static V And(V a, V b) { return _mm512_and_si512(a, b); }
  static V Or(V a, V b) { return _mm512_or_si512(a, b); }
  static V Xor(V a, V b) { return _mm512_xor_si512(a, b); }
  // (a | b) ^ a is ~a & b; GCC 12 warns on the andnot intrinsic's undefined source.
  static V AndNot(V a, V b) { return _mm512_xor_si512(_mm512_or_si512(a, b), a); }
  static V Shr1(V v) { return _mm512_and_si512(_mm512_srli_epi16(v, 1), Set1(0x7f)); }
  static V Shl1(V v) { return _mm512_add_epi8(v, v); }
  static V Low7(V v) { return _mm512_and_si512(_mm512_slli_epi16(v, 7), Set1(0x80)); }
  static V High0(V v) { return _mm512_and_si512(_mm512_srli_epi16(v, 7), Set1(0x01)); }
  static V ShlBy(V v, int k) {
    return _mm512_and_si512(_mm512_sll_epi16(v, _mm_cvtsi32_si128(k)), Set1(static_cast<unsigned char>(0xff << k)));
  }
  static V ShrBy(V v, int k) {
    return _mm512_and_si512(_mm512_srl_epi16(v, _mm_cvtsi32_si128(k)), Set1(static_cast<unsigned char>(0xff >> k)));
  }
};
#endif

}  // namespace
}  // namespace bits
}  // namespace mirel

#endif  // MIREL_X86_SIMD

#endif  // MIREL_POINT_BITS_LANES_INTERNAL_H_
