// Byte kernels of the bit-image engine, written once over the lanes of
// bits_lanes_internal.h. The scalar kernels are the same templates over
// ScalarLanes, which has no blocks; a vector kernel runs whole vectors and
// leaves the rest of the span to the same byte loop, so every path gives
// the bytes of that loop. Everything here has internal linkage: code built
// for one instruction set must not stand in for another source's copy.
#ifndef MIREL_POINT_BITS_BLOCKS_INTERNAL_H_
#define MIREL_POINT_BITS_BLOCKS_INTERNAL_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mirel/point/bits_internal.h"
#include "mirel/point/bits_lanes_internal.h"

namespace mirel {
namespace bits {
namespace blocks {
namespace {

struct ScalarLanes {
  static constexpr int kBytes = 0;
};

template <int kOp>
inline u8 LogicByte(u8 a, [[maybe_unused]] u8 b, [[maybe_unused]] u8 d) {
  if constexpr (kOp == kCopy) return a;
  else if constexpr (kOp == kInvert) return static_cast<u8>(~a);
  else if constexpr (kOp == kAnd) return static_cast<u8>(a & b);
  else if constexpr (kOp == kOr) return static_cast<u8>(a | b);
  else if constexpr (kOp == kXor) return static_cast<u8>(a ^ b);
  else if constexpr (kOp == kKeepWhereSet) return static_cast<u8>((a & d) | (~a & b));
  else if constexpr (kOp == kTakeWhereSet) return static_cast<u8>((a & b) | (~a & d));
  else return static_cast<u8>(~a | b);
}

template <class L, int kOp>
inline typename L::V LogicVector(typename L::V a, [[maybe_unused]] typename L::V b,
                                 [[maybe_unused]] typename L::V d) {
  if constexpr (kOp == kCopy) return a;
  else if constexpr (kOp == kInvert) return L::Xor(a, L::Set1(0xff));
  else if constexpr (kOp == kAnd) return L::And(a, b);
  else if constexpr (kOp == kOr) return L::Or(a, b);
  else if constexpr (kOp == kXor) return L::Xor(a, b);
  else if constexpr (kOp == kKeepWhereSet) return L::Or(L::And(a, d), L::AndNot(a, b));
  else if constexpr (kOp == kTakeWhereSet) return L::Or(L::And(a, b), L::AndNot(a, d));
  else return L::Or(L::Xor(a, L::Set1(0xff)), b);
}

// Runs body(lanes, i) over whole vectors of L from byte i on, then over
// 16-byte vectors, and returns the first byte not done. The vectors never
// overlap: some kernels read the bytes they write.
template <class L, class Body>
inline std::size_t Blocks(std::size_t i, std::size_t n, Body&& body) {
  if constexpr (L::kBytes > 0) {
    for (; i + L::kBytes <= n; i += L::kBytes) body(L{}, i);
#if defined(MIREL_X86_SIMD)
    if constexpr (L::kBytes > 16)
      for (; i + 16 <= n; i += 16) body(Lanes128{}, i);
#endif
  }
  return i;
}

template <int kOp>
constexpr bool kReadsOld = kOp == kKeepWhereSet || kOp == kTakeWhereSet;

template <class L, int kOp>
void Logic(const u8* a, const u8* b, u8* d, std::size_t n) {
  std::size_t i = Blocks<L>(0, n, [&](auto lanes, std::size_t j) {
    using V = decltype(lanes);
    const typename V::V old = kReadsOld<kOp> ? V::Load(d + j) : V::Set1(0);
    V::Store(d + j, LogicVector<V, kOp>(V::Load(a + j), V::Load(b + j), old));
  });
  for (; i < n; ++i) d[i] = LogicByte<kOp>(a[i], b[i], d[i]);
}

template <class L>
void Shift(const u8* s, u8* d, std::size_t n, int k) {
  std::size_t i = Blocks<L>(0, n, [&](auto lanes, std::size_t j) {
    using V = decltype(lanes);
    V::Store(d + j, V::Or(V::ShlBy(V::Load(s + j), k), V::ShrBy(V::Load(s + j + 1), 8 - k)));
  });
  for (; i < n; ++i) d[i] = static_cast<u8>((s[i] << k) | (s[i + 1] >> (8 - k)));
}

// Set bits of one byte, and of a 64-bit word by halving sums.
inline unsigned BitCount(u8 v) {
  unsigned c = 0;
  for (; v != 0; v = static_cast<u8>(v & (v - 1))) ++c;
  return c;
}
inline std::uint64_t BitCount(std::uint64_t v) {
  v = v - ((v >> 1) & 0x5555555555555555ull);
  v = (v & 0x3333333333333333ull) + ((v >> 2) & 0x3333333333333333ull);
  v = (v + (v >> 4)) & 0x0f0f0f0f0f0f0f0full;
  return (v * 0x0101010101010101ull) >> 56;
}

template <class L>
std::uint64_t CountDiffer(const u8* a, const u8* b, std::size_t n) {
  std::uint64_t count = 0;
  std::size_t i = 0;
  if constexpr (L::kBytes > 0) {
    for (; i + 8 <= n; i += 8) {
      std::uint64_t x, y;
      std::memcpy(&x, a + i, 8);
      std::memcpy(&y, b + i, 8);
      count += BitCount(x ^ y);
    }
  }
  for (; i < n; ++i) count += BitCount(static_cast<u8>(a[i] ^ b[i]));
  return count;
}

// The pixel loops of the conversions, byte by byte; the vector forms run
// them on the rest of a span.
template <class P>
inline void PackBytes(const P* p, u8* d, std::size_t from, std::size_t n, unsigned t) {
  for (std::size_t j = from; j < n; ++j) {
    unsigned v = 0;
    for (int k = 0; k < 8; ++k) v = (v << 1) | (p[8 * j + k] >= t ? 1u : 0u);
    d[j] = static_cast<u8>(v);
  }
}
inline void ExpandBytes(const u8* s, std::uint8_t* d, std::size_t from, std::size_t n, std::uint8_t on) {
  for (std::size_t j = from; j < n; ++j)
    for (int k = 0; k < 8; ++k) d[8 * j + k] = (s[j] >> (7 - k)) & 1 ? on : 0;
}

// Bits of each byte of a 64-bit word in reverse order.
inline std::uint64_t ReverseBitsInBytes(std::uint64_t x) {
  x = ((x >> 1) & 0x5555555555555555ull) | ((x & 0x5555555555555555ull) << 1);
  x = ((x >> 2) & 0x3333333333333333ull) | ((x & 0x3333333333333333ull) << 2);
  return ((x >> 4) & 0x0f0f0f0f0f0f0f0full) | ((x & 0x0f0f0f0f0f0f0f0full) << 4);
}

// The table of one instruction set, with its own conversion kernels.
template <class L>
Kernels MakeKernels(decltype(Kernels::pack8) pack8, decltype(Kernels::pack16) pack16,
                    decltype(Kernels::expand8) expand8) {
  Kernels k{};
  k.logic[kCopy] = &Logic<L, kCopy>;
  k.logic[kInvert] = &Logic<L, kInvert>;
  k.logic[kAnd] = &Logic<L, kAnd>;
  k.logic[kOr] = &Logic<L, kOr>;
  k.logic[kXor] = &Logic<L, kXor>;
  k.logic[kKeepWhereSet] = &Logic<L, kKeepWhereSet>;
  k.logic[kTakeWhereSet] = &Logic<L, kTakeWhereSet>;
  k.logic[kNotOr] = &Logic<L, kNotOr>;
  k.shift = &Shift<L>;
  k.pack8 = pack8;
  k.pack16 = pack16;
  k.expand8 = expand8;
  k.countDiffer = &CountDiffer<L>;
  return k;
}

}  // namespace
}  // namespace blocks
}  // namespace bits
}  // namespace mirel

#endif  // MIREL_POINT_BITS_BLOCKS_INTERNAL_H_
