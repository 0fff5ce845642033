// Vector bodies of the byte block routines, shared by the per-instruction-set
// sources. A source defines its widest vector type (a "lane set" with the
// members of V128 below) and instantiates Pick<Wide>. Everything here has
// internal linkage, so code built for one instruction set never leaks into
// another source.
#ifndef MIREL_POINT_ARITH_SIMD_INTERNAL_H_
#define MIREL_POINT_ARITH_SIMD_INTERNAL_H_

#if defined(MIREL_X86_SIMD)

#include <emmintrin.h>

#include <cstddef>

#include "mirel/point/arith_internal.h"

namespace mirel {
namespace arith {
namespace {

using u8 = unsigned char;

struct V128 {
  using T = __m128i;
  static constexpr std::size_t kBytes = 16;
  static T Load(const u8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
  static void Store(u8* p, T v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
  static T Set1(u8 c) { return _mm_set1_epi8(static_cast<char>(c)); }
  static T Set1W(unsigned short c) { return _mm_set1_epi16(static_cast<short>(c)); }
  static T Zero() { return _mm_setzero_si128(); }
  static T Ones() { return _mm_set1_epi32(-1); }
  static T AddS(T a, T b) { return _mm_adds_epu8(a, b); }
  static T SubS(T a, T b) { return _mm_subs_epu8(a, b); }
  static T And(T a, T b) { return _mm_and_si128(a, b); }
  static T Or(T a, T b) { return _mm_or_si128(a, b); }
  static T Xor(T a, T b) { return _mm_xor_si128(a, b); }
  static T AndNot(T a, T b) { return _mm_andnot_si128(a, b); }  // ~a & b
  static T CmpEq(T a, T b) { return _mm_cmpeq_epi8(a, b); }
  static T Min(T a, T b) { return _mm_min_epu8(a, b); }
  static T Max(T a, T b) { return _mm_max_epu8(a, b); }
  static T WidenLo(T a) { return _mm_unpacklo_epi8(a, _mm_setzero_si128()); }
  static T WidenHi(T a) { return _mm_unpackhi_epi8(a, _mm_setzero_si128()); }
  static T MulW(T a, T b) { return _mm_mullo_epi16(a, b); }
  static T AddSW(T a, T b) { return _mm_adds_epu16(a, b); }
  static T SubSW(T a, T b) { return _mm_subs_epu16(a, b); }
  template <int N>
  static T SrlW(T a) { return _mm_srli_epi16(a, N); }
  static T Pack(T lo, T hi) { return _mm_packus_epi16(lo, hi); }
};

// Eight bytes in the low half of an SSE register.
struct H64 : V128 {
  static constexpr std::size_t kBytes = 8;
  static T Load(const u8* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
  static void Store(u8* p, T v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
};

// The value of operation OP for vectors of bytes; `old` is the destination
// as it was (read only for the operations that may keep it).
template <class V, int OP>
inline typename V::T Apply(typename V::T a, typename V::T b, typename V::T old) {
  using T = typename V::T;
  const T zero = V::Zero();
  if constexpr (OP == 0) {
    (void)b, (void)old, (void)zero;
    return a;
  } else if constexpr (OP == 1) {
    (void)b, (void)old, (void)zero;
    return V::Xor(a, V::Ones());
  } else if constexpr (OP == 2) {
    (void)old, (void)zero;
    return V::AddS(a, b);
  } else if constexpr (OP == 3) {
    (void)old, (void)zero;
    return V::SubS(a, b);
  } else if constexpr (OP == 4) {
    (void)old;
    // Products of bytes fit 16 bits; adding 0xFF00 with saturation and
    // taking it off again caps them at 255.
    const T cap = V::Set1W(0xFF00);
    T lo = V::MulW(V::WidenLo(a), V::WidenLo(b));
    T hi = V::MulW(V::WidenHi(a), V::WidenHi(b));
    lo = V::SubSW(V::AddSW(lo, cap), cap);
    hi = V::SubSW(V::AddSW(hi, cap), cap);
    (void)zero;
    return V::Pack(lo, hi);
  } else if constexpr (OP == 9 || OP == 10) {
    (void)old, (void)zero;
    if constexpr (OP == 10) b = V::Xor(b, V::Ones());
    // (a + b) >> 1 without widening: common bits plus half the others.
    const T half = V::And(V::template SrlW<1>(V::Xor(a, b)), V::Set1(0x7F));
    return V::AddS(V::And(a, b), half);
  } else if constexpr (OP == 11) {
    (void)old, (void)zero;
    const T lo = V::template SrlW<8>(V::MulW(V::WidenLo(a), V::WidenLo(b)));
    const T hi = V::template SrlW<8>(V::MulW(V::WidenHi(a), V::WidenHi(b)));
    return V::Pack(lo, hi);
  } else if constexpr (OP == 13) {
    (void)old, (void)zero;
    return V::And(a, b);
  } else if constexpr (OP == 14) {
    (void)old, (void)zero;
    return V::Or(a, b);
  } else if constexpr (OP == 15) {
    (void)old, (void)zero;
    return V::Xor(a, b);
  } else if constexpr (OP == 16) {
    (void)old;
    return V::Xor(V::Or(V::CmpEq(a, zero), V::CmpEq(b, zero)), V::Ones());
  } else if constexpr (OP == 17) {
    (void)old;
    return V::Xor(V::And(V::CmpEq(a, zero), V::CmpEq(b, zero)), V::Ones());
  } else if constexpr (OP == 18) {
    (void)old;
    return V::Xor(V::CmpEq(a, zero), V::CmpEq(b, zero));
  } else if constexpr (OP == 19) {
    (void)old, (void)zero;
    return V::Min(a, b);
  } else if constexpr (OP == 20) {
    (void)old, (void)zero;
    return V::Max(a, b);
  } else if constexpr (OP == 21) {
    const T m = V::CmpEq(a, zero);
    return V::Or(V::And(m, b), V::AndNot(m, old));
  } else if constexpr (OP == 22) {
    const T m = V::CmpEq(a, zero);
    return V::Or(V::AndNot(m, b), V::And(m, old));
  } else if constexpr (OP == 23) {
    (void)old, (void)zero;
    return V::CmpEq(a, b);
  } else if constexpr (OP == 24) {
    (void)old, (void)zero;
    return V::Xor(V::CmpEq(a, b), V::Ones());
  } else if constexpr (OP == 25) {
    (void)old;
    return V::CmpEq(V::SubS(b, a), zero);
  } else if constexpr (OP == 26) {
    (void)old;
    return V::CmpEq(V::SubS(a, b), zero);
  } else if constexpr (OP == 27) {
    (void)old;
    return V::Xor(V::CmpEq(V::SubS(a, b), zero), V::Ones());
  } else if constexpr (OP == 28) {
    (void)old;
    return V::Xor(V::CmpEq(V::SubS(b, a), zero), V::Ones());
  } else {
    static_assert(OP == 33, "operation without a block form");
    (void)old, (void)zero;
    return V::Or(V::SubS(a, b), V::SubS(b, a));
  }
}

// A loaded vector as an opaque value, so that the compiler keeps it in its
// register: left to itself it loads an operand that an operation reads
// twice (the absolute difference, the averages) a second time, as a memory
// operand. On a frame streaming from memory those second loads made the
// absolute difference some 7% slower than the minimum; loaded once, the two
// run level.
template <class T>
inline T Pinned(T v) {
#if defined(__GNUC__) || defined(__clang__)
  __asm__("" : "+x"(v));
#endif
  return v;
}

struct RowOperand {
  const u8* p;
  template <class V>
  typename V::T Get(std::size_t i) const { return Pinned(V::Load(p + i)); }
};
struct ConstOperand {
  u8 c;
  template <class V>
  typename V::T Get(std::size_t) const { return V::Set1(c); }
};

template <int OP>
constexpr bool kKeepsOld = OP == 21 || OP == 22;

// The destination as it was, for the operations that keep it; zero (and no
// load) for the others.
template <class V, int OP>
inline typename V::T Old(const u8* p) {
  if constexpr (kKeepsOld<OP>) return V::Load(p);
  (void)p;
  return V::Zero();
}

template <class V, int OP, class A, class B>
inline typename V::T At(const A& a, const B& b, const u8* d, std::size_t i) {
  return Apply<V, OP>(a.template Get<V>(i), b.template Get<V>(i), Old<V, OP>(d + i));
}

template <class V, int OP, class A, class B>
inline void RunWidth(const A& a, const B& b, u8* d, std::size_t& i, std::size_t n, const StoreAhead& ahead) {
  // Four vectors an iteration where there is room (more loads in flight on
  // a row streamed from memory), then two, then one. The vectors are named
  // values, not an array: compilers at -O2 kept an array of vectors on the
  // stack, a store and a load more per vector, and a copy in the cache took
  // some 45% longer.
  constexpr std::size_t k = V::kBytes;
  for (; i + 4 * k <= n; i += 4 * k) {
    if (4 * k == kCacheLineBytes) ahead.At(d + i);
    const typename V::T r0 = At<V, OP>(a, b, d, i), r1 = At<V, OP>(a, b, d, i + k);
    const typename V::T r2 = At<V, OP>(a, b, d, i + 2 * k), r3 = At<V, OP>(a, b, d, i + 3 * k);
    V::Store(d + i, r0);
    V::Store(d + i + k, r1);
    V::Store(d + i + 2 * k, r2);
    V::Store(d + i + 3 * k, r3);
  }
  for (; i + 2 * k <= n; i += 2 * k) {
    const typename V::T r0 = At<V, OP>(a, b, d, i), r1 = At<V, OP>(a, b, d, i + k);
    V::Store(d + i, r0);
    V::Store(d + i + k, r1);
  }
  for (; i + k <= n; i += k) V::Store(d + i, At<V, OP>(a, b, d, i));
}

template <class W, int OP, class A, class B>
inline void Run(const A& a, const B& b, u8* d, std::size_t n, const StoreAhead& ahead) {
  std::size_t i = 0;
  RunWidth<W, OP>(a, b, d, i, n, ahead);
  if constexpr (W::kBytes > 16) RunWidth<V128, OP>(a, b, d, i, n, ahead);
  RunWidth<H64, OP>(a, b, d, i, n, ahead);
}

template <class W, int OP, int FORM>
void RunEntry(const BlockRows& r) {
  for (int y = 0; y < r.rows; ++y) {
    const u8* a = r.a + r.a_pitch * y;
    const u8* b = r.b + r.b_pitch * y;
    u8* d = r.d + r.d_pitch * y;
    if constexpr (FORM == kConstImage) {
      (void)a;
      Run<W, OP>(ConstOperand{r.c}, RowOperand{b}, d, r.n, r.ahead);
    } else if constexpr (FORM == kImageConst) {
      (void)b;
      Run<W, OP>(RowOperand{a}, ConstOperand{r.c}, d, r.n, r.ahead);
    } else {
      Run<W, OP>(RowOperand{a}, RowOperand{b}, d, r.n, r.ahead);
    }
  }
}

template <class W, int OP>
BlockRun PickForm(int form) {
  switch (form) {
    case kConstImage: return &RunEntry<W, OP, kConstImage>;
    case kImageConst: return &RunEntry<W, OP, kImageConst>;
    default: return &RunEntry<W, OP, kImageImage>;
  }
}

template <class W>
BlockRun Pick(int op, int form) {
  switch (op) {
#define MIREL_BLOCK_CASE(k) \
  case k:                   \
    return PickForm<W, k>(form);
    MIREL_BLOCK_CASE(0) MIREL_BLOCK_CASE(1) MIREL_BLOCK_CASE(2) MIREL_BLOCK_CASE(3)
    MIREL_BLOCK_CASE(4) MIREL_BLOCK_CASE(9) MIREL_BLOCK_CASE(10) MIREL_BLOCK_CASE(11)
    MIREL_BLOCK_CASE(13) MIREL_BLOCK_CASE(14) MIREL_BLOCK_CASE(15) MIREL_BLOCK_CASE(16)
    MIREL_BLOCK_CASE(17) MIREL_BLOCK_CASE(18) MIREL_BLOCK_CASE(19) MIREL_BLOCK_CASE(20)
    MIREL_BLOCK_CASE(21) MIREL_BLOCK_CASE(22) MIREL_BLOCK_CASE(23) MIREL_BLOCK_CASE(24)
    MIREL_BLOCK_CASE(25) MIREL_BLOCK_CASE(26) MIREL_BLOCK_CASE(27) MIREL_BLOCK_CASE(28)
    MIREL_BLOCK_CASE(33)
#undef MIREL_BLOCK_CASE
    default:
      return nullptr;
  }
}

}  // namespace
}  // namespace arith
}  // namespace mirel

#endif  // MIREL_X86_SIMD

#endif  // MIREL_POINT_ARITH_SIMD_INTERNAL_H_
