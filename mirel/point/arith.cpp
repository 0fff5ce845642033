// ImgCopy and ImgOper: thin frames over eight workers.
//
//   byte fill           BW8 constant to image
//   3-byte fill         C24 constant to image
//   byte unary          BW8 and C24 image to image (copy, invert, overlay)
//   byte binary         BW8 and C24 two images, a C24 row read as bytes
//   BW8 constant table  BW8 constant, image (and the folded image, constant)
//   BW8 image by const  BW8 image, constant for the operations that do not fold
//   C24 constant tables C24 constant, image and image, constant
//   mixed               BW8 with C24, per pixel
//
// plus the 16-bit and mixed-depth walks. The byte workers and the BW8
// constant workers hand the whole 8-byte blocks of every row to the vector
// routines of arith_internal.h and run the rest of each row as scalar
// code; both give the same bytes.
#include "mirel/point/arith.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <type_traits>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/runtime.h"
#include "mirel/foundation/stream_internal.h"
#include "mirel/point/arith_internal.h"

namespace {

using u8 = unsigned char;
using u16 = unsigned short;
using mirel::arith::BlockRows;
using mirel::arith::BlockRun;
using mirel::arith::kConstImage;
using mirel::arith::kImageConst;
using mirel::arith::kImageImage;

// ------------------------------------------------------------ helpers

bool In(int op, std::initializer_list<int> list) {
  for (int v : list)
    if (v == op) return true;
  return false;
}

// The block routine of `op` in `form` for this call: null on the scalar path
// or when the operation has no block form. Reads EGetMMX() once.
BlockRun PickBlocks(int op, int form) {
  if (EGetMMX() == 0) return nullptr;
#if defined(MIREL_X86_SIMD)
  // The byte operations stream from and to memory. On a 2448x2048 frame
  // 16-byte vectors ran as fast as 32-byte ones in the cache and some tenth
  // faster from memory (and 64-byte ones slower still), so every vector
  // level runs the 16-byte blocks.
  return mirel::cpu::ActiveSimdLevel() >= mirel::cpu::kSSE2 ? mirel::arith::PickSse2(op, form) : nullptr;
#else
  (void)op;
  (void)form;
  return nullptr;
#endif
}

// Byte view of a ROI's rows.
struct ByteRows {
  u8* base;
  std::ptrdiff_t pitch;
  std::size_t bytes;  // bytes of pixels in a row
  int height;
  // One past the last byte of the image the rows lie in (set by BytesOf):
  // the byte-triple overlay must not read or write beyond it.
  const u8* end = nullptr;
  // The rows, with the padding between them, are one stretch of memory the
  // library owns (mirel::detail::SpansOwnedRows).
  bool joined = false;
  u8* Row(int y) const { return base + pitch * y; }
  std::size_t Stretch() const { return mirel::StretchBytes(pitch, height, bytes); }
  // Bytes from the start of row y to the end of the image.
  std::size_t Room(int y) const {
    return end == nullptr ? 0 : static_cast<std::size_t>(end - reinterpret_cast<const u8*>(Row(y)));
  }
};

ByteRows BytesOf(const EGenericROI* roi) {
  EGenericROI* r = const_cast<EGenericROI*>(roi);
  const EGenericROI* top = r->GetTopParent();
  const u8* end = top->Void() || top->GetHeight() == 0
                      ? nullptr
                      : static_cast<const u8*>(top->GetImagePtr(top->GetWidth(), top->GetHeight() - 1));
  return ByteRows{static_cast<u8*>(r->GetGenericImagePtr(0, 0)), r->GetRowPitch(),
                  static_cast<std::size_t>(r->GetWidth()) * static_cast<std::size_t>(r->GetPixelBytes()),
                  r->GetHeight(), end, mirel::detail::SpansOwnedRows(roi)};
}

// Rows [y0, y1) of a ROI as a view of their own.
ByteRows BytesOf(const EGenericROI* roi, int y0, int y1) {
  ByteRows r = BytesOf(roi);
  r.base += r.pitch * y0;
  r.height = y1 - y0;
  return r;
}

// Calls work(y0, y1) over bands of the destination's rows: every worker of
// this file writes row y from row y of each source alone.
template <class F>
void InBands(const EGenericROI* dst, std::initializer_list<const EGenericROI*> sources, F&& work) {
  mirel::RowwiseBands(dst, sources, static_cast<double>(dst->GetPixelBytes()), work);
}

// Whether the rows of s and d share a byte without being the very same rows.
bool SharesBytes(const ByteRows& s, const ByteRows& d) {
  if (d.height == 0 || d.bytes == 0 || (s.base == d.base && s.pitch == d.pitch)) return false;
  const u8* s_end = s.Row(s.height - 1) + s.bytes;
  const u8* d_end = d.Row(d.height - 1) + d.bytes;
  return s.base < d_end && d.base < s_end;
}

// Every row of d: the block routine over the whole 8-byte blocks of each
// row, then scalar(y, lo, hi) for bytes lo to hi - 1 of row y that are
// left (the whole row on the scalar path or when the operation has no
// block form). `a` or `b` is null when that operand is the constant.
// The block routine walks all rows in one call where no source shares a
// byte with the destination; otherwise the rows go one at a time, blocks
// then rest, so that each row reads its sources as a row walk leaves them.
template <class Scalar>
void WalkRows(BlockRun blocks, const ByteRows* a, const ByteRows* b, u8 c, const ByteRows& d, Scalar&& scalar) {
  const std::size_t n = d.bytes;
  const std::size_t mid = blocks != nullptr ? n & ~static_cast<std::size_t>(7) : 0;
  if (mid == 0) {
    for (int y = 0; y < d.height; ++y) scalar(y, static_cast<std::size_t>(0), n);
    return;
  }
  const ByteRows& ra = a != nullptr ? *a : d;
  const ByteRows& rb = b != nullptr ? *b : d;
  if (!SharesBytes(ra, d) && !SharesBytes(rb, d)) {
    blocks(BlockRows{ra.base, ra.pitch, rb.base, rb.pitch, c, d.base, d.pitch, mid, d.height,
                     mirel::StoreAheadFor(d.base, d.pitch, d.height, mid)});
    if (mid < n)
      for (int y = 0; y < d.height; ++y) scalar(y, mid, n);
    return;
  }
  for (int y = 0; y < d.height; ++y) {
    blocks(BlockRows{ra.Row(y), 0, rb.Row(y), 0, c, d.Row(y), 0, mid, 1,
                     mirel::StoreAheadFor(d.Row(y), 0, 1, mid)});
    scalar(y, mid, n);
  }
}

// ------------------------------------------------------------ formulas

// The result of `op` on two values of kBits bits (8 or 16) for every
// operation that has a formula (2 to 28 and 33, without 21 and 22, which
// keep the destination), except the scaled divide (12), whose rules differ
// by depth. M is the largest value of the depth.
template <unsigned kBits>
inline unsigned CommonFormula(int op, unsigned a, unsigned b) {
  constexpr unsigned M = (1u << kBits) - 1;
  switch (op) {
    case 2: return a + b > M ? M : a + b;
    case 3: return a > b ? a - b : 0;
    case 4: {
      const std::uint32_t p = static_cast<std::uint32_t>(a) * b;
      return p > M ? M : p;
    }
    case 5: return b == 0 ? M : a / b;
    case 6: return b == 0 ? 0 : a % b;
    case 7: return (a << (b & 31)) & M;  // the count as the processor takes it
    case 8: return a >> (b & 31);
    case 9: return (a + b) >> 1;
    case 10: return (a + (M - b)) >> 1;
    case 11: return static_cast<unsigned>((static_cast<std::uint32_t>(a) * b) >> kBits);
    case 13: return a & b;
    case 14: return a | b;
    case 15: return a ^ b;
    case 16: return (a != 0 && b != 0) ? M : 0;
    case 17: return (a != 0 || b != 0) ? M : 0;
    case 18: return ((a != 0) != (b != 0)) ? M : 0;
    case 19: return a < b ? a : b;
    case 20: return a > b ? a : b;
    case 23: return a == b ? M : 0;
    case 24: return a != b ? M : 0;
    case 25: return a >= b ? M : 0;
    case 26: return a <= b ? M : 0;
    case 27: return a > b ? M : 0;
    case 28: return a < b ? M : 0;
    case 33: return a > b ? a - b : b - a;
    default: return 0;
  }
}

// The formulas on bytes.
inline unsigned Formula8(int op, unsigned a, unsigned b) {
  if (op == 12) {
    if (b == 0) return 255;
    const unsigned q = (a << 8) / b;
    return q > 255 ? 255 : q;
  }
  return CommonFormula<8>(op, a, b);
}

inline bool HasFormula8(int op) {
  return (op >= 2 && op <= 28 && op != 21 && op != 22) || op == 33;
}

// The three forms of 16-bit ALO_SCALED_DIVIDE.
enum ScaledDivide { kDivImageImage, kDivImageConst, kDivConstImage };

// The formulas on 16-bit values; `form` picks the scaled-divide rule.
inline unsigned Formula16(int op, unsigned a, unsigned b, ScaledDivide form) {
  constexpr unsigned M = 65535;
  if (op != 12) return CommonFormula<16>(op, a, b);
  if (b == 0) return M;
  if (form == kDivConstImage) {
    // The quotient of the shift count is taken first; a value past 16
    // bits becomes 65535, or 0 when it reaches bit 31.
    const std::uint32_t v = static_cast<std::uint32_t>(a) << (16 / b);
    if (v > M) return (v & 0x80000000u) != 0 ? 0 : M;
    return v;
  }
  const std::uint32_t num = static_cast<std::uint32_t>(a) << (form == kDivImageConst ? 16 : 8);
  const std::uint32_t q = num / b;
  return q > M ? M : q;
}

// Operations of the constant-by-image workers (a table on bytes).
inline bool ConstImageCase(int op) {
  return In(op, {2, 3, 4, 5, 6, 9, 10, 11, 12, 13, 14, 15, 19, 20, 23, 24, 25, 26, 27, 28, 33});
}
// Operations of the image-by-constant workers.
inline bool ImageConstCase(int op) { return In(op, {3, 5, 6, 7, 8, 10, 12, 21, 22}); }

// Image, constant operations that the constant-by-image worker computes:
// returns the operation to give it (and sets `complement` when the constant
// must be complemented), or -1 when the image-by-constant worker keeps it.
int FoldImageConst(int op, bool& complement) {
  complement = false;
  switch (op) {
    case 2: case 4: case 9: case 11: case 13: case 14: case 15: case 19: case 20: case 23:
    case 24: case 33:
      return op;
    case 10:
      complement = true;
      return 9;
    case 25: return 26;
    case 26: return 25;
    case 27: return 28;
    case 28: return 27;
    default:
      return -1;
  }
}

// Calls f(std::integral_constant<int, OP>) for the operations that have a
// formula or set where a condition holds (2 to 28 and 33), so that a pixel
// loop is compiled once for each operation instead of switching on it per
// pixel; false for any other value.
template <class F>
bool WithPixelOp(int op, F&& f) {
  switch (op) {
#define MIREL_OP_CASE(k)                   \
  case k:                                  \
    f(std::integral_constant<int, k>{});   \
    return true;
    MIREL_OP_CASE(2) MIREL_OP_CASE(3) MIREL_OP_CASE(4) MIREL_OP_CASE(5) MIREL_OP_CASE(6)
    MIREL_OP_CASE(7) MIREL_OP_CASE(8) MIREL_OP_CASE(9) MIREL_OP_CASE(10) MIREL_OP_CASE(11) MIREL_OP_CASE(12) MIREL_OP_CASE(13)
    MIREL_OP_CASE(14) MIREL_OP_CASE(15) MIREL_OP_CASE(16) MIREL_OP_CASE(17) MIREL_OP_CASE(18)
    MIREL_OP_CASE(19) MIREL_OP_CASE(20) MIREL_OP_CASE(21) MIREL_OP_CASE(22) MIREL_OP_CASE(23)
    MIREL_OP_CASE(24) MIREL_OP_CASE(25) MIREL_OP_CASE(26) MIREL_OP_CASE(27) MIREL_OP_CASE(28)
    MIREL_OP_CASE(33)
#undef MIREL_OP_CASE
    default:
      return false;
  }
}

// ------------------------------------------------------------ byte workers

// Byte fill: every byte of the rows takes `value`.
// Rows that join into one stretch are filled as one in the Intel form;
// otherwise the C library's memset serves each row (the fastest fill of a
// row, and its bytes are those of every other path). No write hint for the
// next row: the hardware's stream prefetch keeps up with a row walk, and
// the hint cost up to a quarter of the time on a frame already in the cache
// while gaining nothing measurable on a fresh one.
void ByteFill(u8 value, const ByteRows& d) {
  if (d.bytes == 0 || d.height == 0) return;
  if (d.joined && mirel::cpu::IntelStreaming()) {
    mirel::StringFill(d.base, value, d.Stretch());
    return;
  }
  for (int y = 0; y < d.height; ++y) std::memset(d.Row(y), value, d.bytes);
}

// 3-byte fill: pixels written one by one.
void TripleFill(EC24 value, const ByteRows& d) {
  for (int y = 0; y < d.height; ++y) {
    u8* pd = d.Row(y);
    for (std::size_t i = 0; i + 3 <= d.bytes; i += 3) {
      pd[i] = value.c[0];
      pd[i + 1] = value.c[1];
      pd[i + 2] = value.c[2];
    }
  }
}

// Byte unary, operations 0 and 1, same pixel type on both sides.
// A copy between two stretches that join, at one pitch and apart, moves as
// one stretch in the Intel form. Otherwise it runs the 16-byte block
// stretch where the two rows share no byte (it streamed a frame from memory
// faster than the C library's wider copy); rows that overlap, and the
// scalar path, move with memmove.
void ByteUnary(int op, const ByteRows& s, const ByteRows& d) {
  if (d.bytes == 0 || d.height == 0) return;
  const BlockRun blocks = PickBlocks(op, kImageImage);
  if (op == 0) {
    if (s.joined && d.joined && s.pitch == d.pitch && s.base != d.base && !SharesBytes(s, d) &&
        mirel::cpu::IntelStreaming()) {
      mirel::StringCopy(d.base, s.base, d.Stretch());
      return;
    }
    if (blocks == nullptr || SharesBytes(s, d)) {
      for (int y = 0; y < d.height; ++y) std::memmove(d.Row(y), s.Row(y), d.bytes);
      return;
    }
    WalkRows(blocks, &s, &s, 0, d, [&](int y, std::size_t lo, std::size_t hi) {
      std::memcpy(d.Row(y) + lo, s.Row(y) + lo, hi - lo);
    });
    return;
  }
  WalkRows(blocks, &s, &s, 0, d, [&](int y, std::size_t lo, std::size_t hi) {
    const u8* ps = s.Row(y);
    u8* pd = d.Row(y);
    for (std::size_t i = lo; i < hi; ++i) pd[i] = static_cast<u8>(~ps[i]);
  });
}

// Byte binary: both sources and the destination read as rows of bytes.
void ByteBinary(int op, const ByteRows& a, const ByteRows& b, const ByteRows& d) {
  if (op == ALO_OVERLAY) {
    // Triples of bytes up to the row's end: on a BW8 row whose width is not
    // a multiple of 3 the last triple reaches up to two bytes behind it,
    // into the rest of the image's row, never past the image's last byte
    // (bytes of a triple beyond it are neither read nor written; those of
    // `b` count as 0).
    for (int y = 0; y < d.height; ++y) {
      const u8* pa = a.Row(y);
      const u8* pb = b.Row(y);
      u8* pd = d.Row(y);
      const std::size_t room = std::min({a.Room(y), b.Room(y), d.Room(y)});
      for (std::size_t i = 0; i < d.bytes; i += 3) {
        if (i + 3 <= room) {
          const u8* from = (pb[i] | pb[i + 1] | pb[i + 2]) != 0 ? pb + i : pa + i;
          const u8 c0 = from[0], c1 = from[1], c2 = from[2];
          pd[i] = c0;
          pd[i + 1] = c1;
          pd[i + 2] = c2;
          continue;
        }
        const std::size_t n = room - i;  // 1 or 2: the rest lies past the image
        const bool any = pb[i] != 0 || (n > 1 && pb[i + 1] != 0);
        const u8* from = any ? pb + i : pa + i;
        const u8 c0 = from[0], c1 = n > 1 ? from[1] : 0;
        pd[i] = c0;
        if (n > 1) pd[i + 1] = c1;
      }
    }
    return;
  }
  const BlockRun blocks = PickBlocks(op, kImageImage);
  // The shifts are refused before this worker; they are not known here.
  const bool known = op != ALO_SHIFT_LEFT && op != ALO_SHIFT_RIGHT && WithPixelOp(op, [&](auto tag) {
    constexpr int OP = decltype(tag)::value;
    WalkRows(blocks, &a, &b, 0, d, [&](int y, std::size_t lo, std::size_t hi) {
      const u8* pa = a.Row(y);
      const u8* pb = b.Row(y);
      u8* pd = d.Row(y);
      for (std::size_t i = lo; i < hi; ++i) {
        if constexpr (OP == 21) {
          if (pa[i] == 0) pd[i] = pb[i];
        } else if constexpr (OP == 22) {
          if (pa[i] != 0) pd[i] = pb[i];
        } else {
          pd[i] = static_cast<u8>(Formula8(OP, pa[i], pb[i]));
        }
      }
    });
  });
  if (!known) ESetError(E_ERROR_INTERNAL);
}

// Walks rows mapping every byte through `table`, with blocks for the
// operations that have them. `form` says which operand is the constant.
void TableWalk(int op, int form, u8 c, const u8* table, const ByteRows& s, const ByteRows& d) {
  const BlockRun blocks = PickBlocks(op, form);
  const ByteRows* a = form == kConstImage ? nullptr : &s;
  const ByteRows* b = form == kConstImage ? &s : nullptr;
  WalkRows(blocks, a, b, c, d, [&](int y, std::size_t lo, std::size_t hi) {
    const u8* ps = s.Row(y);
    u8* pd = d.Row(y);
    for (std::size_t i = lo; i < hi; ++i) pd[i] = table[ps[i]];
  });
}

// BW8 constant table: dst = op(c, src) through a 256-entry table.
void ConstImageBW8(int op, u8 c, const ByteRows& s, const ByteRows& d) {
  if (!ConstImageCase(op)) {
    ESetError(E_ERROR_INTERNAL);
    return;
  }
  u8 table[256];
  for (unsigned x = 0; x < 256; ++x) table[x] = static_cast<u8>(Formula8(op, c, x));
  TableWalk(op, kConstImage, c, table, s, d);
}

// BW8 image by constant: dst = op(src, c) for the operations that do not fold.
void ImageConstBW8(int op, u8 c, const ByteRows& s, const ByteRows& d) {
  if (!ImageConstCase(op)) {
    ESetError(E_ERROR_INTERNAL);
    return;
  }
  if (op == ALO_SHIFT_LEFT || op == ALO_SHIFT_RIGHT) {
    const unsigned count = c & 31u;  // the count as the processor takes it
    for (int y = 0; y < d.height; ++y) {
      const u8* ps = s.Row(y);
      u8* pd = d.Row(y);
      for (std::size_t i = 0; i < d.bytes; ++i)
        pd[i] = static_cast<u8>(op == ALO_SHIFT_LEFT ? (static_cast<unsigned>(ps[i]) << count)
                                                     : (static_cast<unsigned>(ps[i]) >> count));
    }
    return;
  }
  if (op == ALO_SET_WHERE_ZERO || op == ALO_SET_WHERE_NONZERO) {
    const BlockRun blocks = PickBlocks(op, kImageConst);
    const bool where_zero = op == ALO_SET_WHERE_ZERO;
    WalkRows(blocks, &s, nullptr, c, d, [&](int y, std::size_t lo, std::size_t hi) {
      const u8* ps = s.Row(y);
      u8* pd = d.Row(y);
      for (std::size_t i = lo; i < hi; ++i)
        if ((ps[i] == 0) == where_zero) pd[i] = c;
    });
    return;
  }
  u8 table[256];
  for (unsigned x = 0; x < 256; ++x) table[x] = static_cast<u8>(Formula8(op, x, c));
  TableWalk(op, kImageConst, c, table, s, d);
}

// C24 constant tables, one for each component. `const_first` says whether
// the constant is the first operand.
void TablesC24(int op, EC24 c, bool const_first, const ByteRows& s, const ByteRows& d) {
  if (const_first ? !ConstImageCase(op) : !ImageConstCase(op)) {
    ESetError(E_ERROR_INTERNAL);
    return;
  }
  u8 table[3][256];
  // For 21 and 22 only the entries that meet the condition are used; the
  // others leave the component as it was.
  for (int k = 0; k < 3; ++k)
    for (unsigned x = 0; x < 256; ++x)
      table[k][x] = static_cast<u8>(op == ALO_SET_WHERE_ZERO || op == ALO_SET_WHERE_NONZERO
                                        ? c.c[k]
                                        : const_first ? Formula8(op, c.c[k], x) : Formula8(op, x, c.c[k]));
  const bool conditional = op == ALO_SET_WHERE_ZERO || op == ALO_SET_WHERE_NONZERO;
  const bool where_zero = op == ALO_SET_WHERE_ZERO;
  for (int y = 0; y < d.height; ++y) {
    const u8* ps = s.Row(y);
    u8* pd = d.Row(y);
    for (std::size_t i = 0; i + 3 <= d.bytes; i += 3) {
      for (int k = 0; k < 3; ++k) {
        const u8 v = ps[i + k];
        if (!conditional || (v == 0) == where_zero) pd[i + k] = table[k][v];
      }
    }
  }
}

// Mixed BW8 with C24 (`grey_first`: the BW8 image is the first operand).
void MixedC24(int op, bool grey_first, const ByteRows& grey, const ByteRows& colour, const ByteRows& d) {
  const bool known = HasFormula8(op) || op == ALO_SET_WHERE_ZERO || op == ALO_SET_WHERE_NONZERO ||
                     op == ALO_OVERLAY;
  if (!known) {
    ESetError(E_ERROR_INTERNAL);
    return;
  }
  const int width = static_cast<int>(d.bytes / 3);
  // Calls pixel(g, col, out) for every pixel: the grey value, and the
  // colour source's and the destination's three bytes.
  auto forEachPixel = [&](auto&& pixel) {
    for (int y = 0; y < d.height; ++y) {
      const u8* pg = grey.Row(y);
      const u8* pc = colour.Row(y);
      u8* pd = d.Row(y);
      for (int x = 0; x < width; ++x) pixel(pg[x], pc + 3 * x, pd + 3 * x);
    }
  };
  if (op == ALO_OVERLAY) {
    const EC24 overlay = EGetTLSPtr()->OverlayColor;
    forEachPixel([&](u8 g, const u8* col, u8* out) {
      if (grey_first) {
        // b is the colour image: its non-black pixels, else the grey.
        const bool any = (col[0] | col[1] | col[2]) != 0;
        const u8 c0 = any ? col[0] : g, c1 = any ? col[1] : g, c2 = any ? col[2] : g;
        out[0] = c0;
        out[1] = c1;
        out[2] = c2;
      } else {
        // b is the grey image: the overlay colour where it is non-zero.
        const u8 c0 = g != 0 ? overlay.c[0] : col[0];
        const u8 c1 = g != 0 ? overlay.c[1] : col[1];
        const u8 c2 = g != 0 ? overlay.c[2] : col[2];
        out[0] = c0;
        out[1] = c1;
        out[2] = c2;
      }
    });
    return;
  }
  WithPixelOp(op, [&](auto tag) {
    constexpr int OP = decltype(tag)::value;
    forEachPixel([&](u8 g, const u8* col, u8* out) {
      u8 r[3];
      bool write[3];
      for (int k = 0; k < 3; ++k) {
        const unsigned a = grey_first ? g : col[k];
        const unsigned b = grey_first ? col[k] : g;
        if constexpr (OP == ALO_SET_WHERE_ZERO || OP == ALO_SET_WHERE_NONZERO) {
          write[k] = (a == 0) == (OP == ALO_SET_WHERE_ZERO);
          r[k] = static_cast<u8>(b);
        } else {
          write[k] = true;
          r[k] = static_cast<u8>(Formula8(OP, a, b));
        }
      }
      for (int k = 0; k < 3; ++k)
        if (write[k]) out[k] = r[k];
    });
  });
}

// ------------------------------------------------------------ 16-bit workers

struct WordRows {
  u8* base;
  std::ptrdiff_t pitch;
  int width;
  int height;
  u16* Row(int y) const { return reinterpret_cast<u16*>(base + pitch * y); }
};

WordRows WordsOf(const EGenericROI* roi) {
  EGenericROI* r = const_cast<EGenericROI*>(roi);
  return WordRows{static_cast<u8*>(r->GetGenericImagePtr(0, 0)), r->GetRowPitch(), r->GetWidth(),
                  r->GetHeight()};
}

WordRows WordsOf(const EGenericROI* roi, int y0, int y1) {
  WordRows r = WordsOf(roi);
  r.base += r.pitch * y0;
  r.height = y1 - y0;
  return r;
}

// Reads a 16-bit pixel through memcpy: rows of a ROI need not be aligned to 2.
inline unsigned Get16(const u16* row, int x) {
  u16 v;
  std::memcpy(&v, row + x, sizeof v);
  return v;
}
inline void Put16(u16* row, int x, unsigned v) {
  const u16 w = static_cast<u16>(v);
  std::memcpy(row + x, &w, sizeof w);
}

void ConstImage16(int op, unsigned c, const WordRows& s, const WordRows& d) {
  if (!ConstImageCase(op)) {
    ESetError(E_ERROR_INTERNAL);
    return;
  }
  WithPixelOp(op, [&](auto tag) {
    constexpr int OP = decltype(tag)::value;
    for (int y = 0; y < d.height; ++y) {
      const u16* ps = s.Row(y);
      u16* pd = d.Row(y);
      for (int x = 0; x < d.width; ++x) Put16(pd, x, Formula16(OP, c, Get16(ps, x), kDivConstImage));
    }
  });
}

void ImageConst16(int op, unsigned c, const WordRows& s, const WordRows& d) {
  if (!ImageConstCase(op)) {
    ESetError(E_ERROR_INTERNAL);
    return;
  }
  WithPixelOp(op, [&](auto tag) {
    constexpr int OP = decltype(tag)::value;
    for (int y = 0; y < d.height; ++y) {
      const u16* ps = s.Row(y);
      u16* pd = d.Row(y);
      for (int x = 0; x < d.width; ++x) {
        const unsigned a = Get16(ps, x);
        if constexpr (OP == ALO_SET_WHERE_ZERO || OP == ALO_SET_WHERE_NONZERO) {
          if ((a == 0) == (OP == ALO_SET_WHERE_ZERO)) Put16(pd, x, c);
        } else {
          Put16(pd, x, Formula16(OP, a, c, kDivImageConst));
        }
      }
    }
  });
}

void ImageImage16(int op, const WordRows& a, const WordRows& b, const WordRows& d) {
  const bool known = WithPixelOp(op, [&](auto tag) {
    constexpr int OP = decltype(tag)::value;
    for (int y = 0; y < d.height; ++y) {
      const u16* pa = a.Row(y);
      const u16* pb = b.Row(y);
      u16* pd = d.Row(y);
      for (int x = 0; x < d.width; ++x) {
        const unsigned va = Get16(pa, x), vb = Get16(pb, x);
        if constexpr (OP == ALO_SET_WHERE_ZERO || OP == ALO_SET_WHERE_NONZERO) {
          if ((va == 0) == (OP == ALO_SET_WHERE_ZERO)) Put16(pd, x, vb);
        } else {
          Put16(pd, x, Formula16(OP, va, vb, kDivImageImage));
        }
      }
    }
  });
  if (!known) ESetError(E_ERROR_INTERNAL);
}

// ------------------------------------------------------------ plain copies

template <class T>
void CopyRows(const EROI<T>* src, EROI<T>* dst, int y0, int y1) {
  ByteUnary(ALO_COPY, BytesOf(src, y0, y1), BytesOf(dst, y0, y1));
}

// Repeats the constant along the first row, then copies that row down.
template <class T>
void FillRows(T value, EROI<T>* dst, int y0, int y1) {
  const ByteRows d = BytesOf(dst, y0, y1);
  if (d.height == 0 || d.bytes == 0) return;
  u8* first = d.Row(0);
  for (std::size_t i = 0; i < d.bytes; i += sizeof(T)) std::memcpy(first + i, &value, sizeof(T));
  for (int y = 1; y < d.height; ++y) std::memcpy(d.Row(y), first, d.bytes);
}

template <class T>
void CopyFrame(const char* label, const EROI<T>* src, EROI<T>* dst) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  InBands(dst, {src}, [&](int y0, int y1) { CopyRows(src, dst, y0, y1); });
}

template <class T>
void FillFrame(const char* label, T value, EROI<T>* dst) {
  mirel::Frame frame(label);
  if (!frame.NotVoid(dst)) return;
  InBands(dst, {}, [&](int y0, int y1) { FillRows(value, dst, y0, y1); });
}

// Checks of the two-source forms: every ROI not void, then the sizes.
bool TwoSourceChecks(mirel::Frame& frame, const EGenericROI* a, const EGenericROI* b, const EGenericROI* d) {
  return frame.NotVoid(a, b, d) && frame.SameSize(a, d) && frame.SameSize(b, d);
}

// Checks of the mixed-depth forms: sizes first, then the three not void.
bool MixedDepthChecks(mirel::Frame& frame, const EGenericROI* a, const EGenericROI* b, const EGenericROI* d) {
  return frame.SameSize(a, d) && frame.SameSize(b, d) && frame.NotVoid(a, b, d);
}

inline unsigned At(const u8* row, int x) { return row[x]; }
inline unsigned At(const u16* row, int x) { return Get16(row, x); }

// The pixel loop of the mixed-depth forms: d = f(a, b) over every pixel of
// the rows, the operation chosen by the caller once, outside the loop.
template <class RowsA, class F>
void MixedRows(const RowsA& a, const ByteRows& b, const WordRows& d, F f) {
  for (int y = 0; y < d.height; ++y) {
    const auto* pa = a.Row(y);
    const u8* pb = b.Row(y);
    u16* pd = d.Row(y);
    for (int x = 0; x < d.width; ++x) Put16(pd, x, f(At(pa, x), pb[x]));
  }
}

}  // namespace

// ================================================================ ImgCopy

void ImgCopy(EBW8 value, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgCopy ( BW8 Const to Image)");
  if (!frame.NotVoid(dst)) return;
  InBands(dst, {}, [&](int y0, int y1) { ByteFill(value.value, BytesOf(dst, y0, y1)); });
}

void ImgCopy(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgCopy ( BW8 Image to Image)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  InBands(dst, {src}, [&](int y0, int y1) { ByteUnary(ALO_COPY, BytesOf(src, y0, y1), BytesOf(dst, y0, y1)); });
}

void ImgCopy(EBW16 value, EROI<EBW16>* dst) { FillFrame("ImgCopy (BW16 Const)", value, dst); }
void ImgCopy(const EROI<EBW16>* src, EROI<EBW16>* dst) { CopyFrame("ImgCopy (BW16 Image)", src, dst); }
void ImgCopy(EBW32 value, EROI<EBW32>* dst) { FillFrame("ImgCopy (BW32 Const)", value, dst); }
void ImgCopy(const EROI<EBW32>* src, EROI<EBW32>* dst) { CopyFrame("ImgCopy (BW32 Image)", src, dst); }
void ImgCopy(EC15 value, EROI<EC15>* dst) { FillFrame("ImgCopy (C15 Const)", value, dst); }
void ImgCopy(const EROI<EC15>* src, EROI<EC15>* dst) { CopyFrame("ImgCopy (C15 Image)", src, dst); }
void ImgCopy(EC16 value, EROI<EC16>* dst) { FillFrame("ImgCopy (C16 Const)", value, dst); }
void ImgCopy(const EROI<EC16>* src, EROI<EC16>* dst) { CopyFrame("ImgCopy (C16 Image)", src, dst); }

void ImgCopy(EC24 value, EROI<EC24>* dst) {
  mirel::Frame frame("ImgCopy (C24 Const)");
  if (!frame.NotVoid(dst)) return;
  InBands(dst, {}, [&](int y0, int y1) { TripleFill(value, BytesOf(dst, y0, y1)); });
}

void ImgCopy(const EROI<EC24>* src, EROI<EC24>* dst) { CopyFrame("ImgCopy (C24 Image)", src, dst); }

// ================================================================ ImgOper, EBW8

void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW8 value, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Const to Image)");
  if (!frame.NotVoid(dst) || !frame.Require(op == ALO_COPY, E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {}, [&](int y0, int y1) { ByteFill(value.value, BytesOf(dst, y0, y1)); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image to Image)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(In(op, {0, 1}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {src}, [&](int y0, int y1) { ByteUnary(op, BytesOf(src, y0, y1), BytesOf(dst, y0, y1)); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW8 a, const EROI<EBW8>* b, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Const, Image to Image)");
  if (!frame.NotVoid(b, dst) || !frame.SameSize(b, dst) ||
      !frame.Require(!In(op, {7, 8, 16, 17, 18, 21, 22}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {b}, [&](int y0, int y1) { ConstImageBW8(op, a.value, BytesOf(b, y0, y1), BytesOf(dst, y0, y1)); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, EBW8 b, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image, Const to Image)");
  if (!frame.NotVoid(a, dst) || !frame.SameSize(a, dst) ||
      !frame.Require(!In(op, {16, 17, 18}), E_ERROR_BAD_OPERATION))
    return;
  bool complement = false;
  const int folded = FoldImageConst(op, complement);
  InBands(dst, {a}, [&](int y0, int y1) {
    if (folded >= 0)
      ConstImageBW8(folded, static_cast<u8>(complement ? 255 - b.value : b.value), BytesOf(a, y0, y1),
                    BytesOf(dst, y0, y1));
    else
      ImageConstBW8(op, b.value, BytesOf(a, y0, y1), BytesOf(dst, y0, y1));
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EBW8>* b, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image, Image to Image)");
  if (!TwoSourceChecks(frame, a, b, dst) || !frame.Require(!In(op, {7, 8}), E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    ByteBinary(op, BytesOf(a, y0, y1), BytesOf(b, y0, y1), BytesOf(dst, y0, y1));
  });
}

// ================================================================ ImgOper, EC24

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* src, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image to C24 Image)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(In(op, {0, 1, 34}), E_ERROR_BAD_OPERATION))
    return;
  const EC24 overlay = EGetTLSPtr()->OverlayColor;
  InBands(dst, {src}, [&](int y0, int y1) {
    const ByteRows s = BytesOf(src, y0, y1);
    const ByteRows d = BytesOf(dst, y0, y1);
    for (int y = 0; y < d.height; ++y) {
      const u8* ps = s.Row(y);
      u8* pd = d.Row(y);
      for (std::size_t x = 0; x < s.bytes; ++x) {
        u8* out = pd + 3 * x;
        if (op == ALO_OVERLAY) {
          if (ps[x] != 0) {
            out[0] = overlay.c[0];
            out[1] = overlay.c[1];
            out[2] = overlay.c[2];
          }
        } else {
          const u8 v = op == ALO_INVERT ? static_cast<u8>(~ps[x]) : ps[x];
          out[0] = out[1] = out[2] = v;
        }
      }
    }
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, EC24 value, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( C24 Const to Image)");
  if (!frame.NotVoid(dst) || !frame.Require(op == ALO_COPY, E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {}, [&](int y0, int y1) { TripleFill(value, BytesOf(dst, y0, y1)); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* src, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( C24 Image to Image)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(In(op, {0, 1, 34}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {src}, [&](int y0, int y1) {
    const ByteRows s = BytesOf(src, y0, y1);
    const ByteRows d = BytesOf(dst, y0, y1);
    if (op != ALO_OVERLAY) {
      ByteUnary(op, s, d);
      return;
    }
    for (int y = 0; y < d.height; ++y) {
      const u8* ps = s.Row(y);
      u8* pd = d.Row(y);
      for (std::size_t i = 0; i + 3 <= d.bytes; i += 3) {
        if ((ps[i] | ps[i + 1] | ps[i + 2]) != 0) {
          const u8 c0 = ps[i], c1 = ps[i + 1], c2 = ps[i + 2];
          pd[i] = c0;
          pd[i + 1] = c1;
          pd[i + 2] = c2;
        }
      }
    }
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EBW8>* b, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image, BW8 Image to C24 Image)");
  if (!TwoSourceChecks(frame, a, b, dst) || !frame.Require(op == ALO_OVERLAY, E_ERROR_BAD_OPERATION)) return;
  const EC24 overlay = EGetTLSPtr()->OverlayColor;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    const ByteRows ra = BytesOf(a, y0, y1);
    const ByteRows rb = BytesOf(b, y0, y1);
    const ByteRows d = BytesOf(dst, y0, y1);
    for (int y = 0; y < d.height; ++y) {
      const u8* pa = ra.Row(y);
      const u8* pb = rb.Row(y);
      u8* pd = d.Row(y);
      for (std::size_t x = 0; x < ra.bytes; ++x) {
        const bool paint = pb[x] != 0;
        const u8 g = pa[x];
        pd[3 * x] = paint ? overlay.c[0] : g;
        pd[3 * x + 1] = paint ? overlay.c[1] : g;
        pd[3 * x + 2] = paint ? overlay.c[2] : g;
      }
    }
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, EC24 a, const EROI<EC24>* b, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( C24 Const, Image to Image)");
  if (!frame.NotVoid(b, dst) || !frame.SameSize(b, dst) ||
      !frame.Require(!In(op, {7, 8, 16, 17, 18, 21, 22}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {b}, [&](int y0, int y1) { TablesC24(op, a, true, BytesOf(b, y0, y1), BytesOf(dst, y0, y1)); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* a, EC24 b, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( C24 Image, Const to Image)");
  if (!frame.NotVoid(a, dst) || !frame.SameSize(a, dst) ||
      !frame.Require(!In(op, {16, 17, 18}), E_ERROR_BAD_OPERATION))
    return;
  bool complement = false;
  const int folded = FoldImageConst(op, complement);
  if (folded >= 0) {
    EC24 c = b;
    if (complement)
      for (int k = 0; k < 3; ++k) c.c[k] = static_cast<u8>(255 - c.c[k]);
    InBands(dst, {a}, [&](int y0, int y1) { TablesC24(folded, c, true, BytesOf(a, y0, y1), BytesOf(dst, y0, y1)); });
  } else {
    InBands(dst, {a}, [&](int y0, int y1) { TablesC24(op, b, false, BytesOf(a, y0, y1), BytesOf(dst, y0, y1)); });
  }
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* a, const EROI<EC24>* b, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( C24 Image, Image to Image)");
  if (!TwoSourceChecks(frame, a, b, dst) || !frame.Require(!In(op, {7, 8}), E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    ByteBinary(op, BytesOf(a, y0, y1), BytesOf(b, y0, y1), BytesOf(dst, y0, y1));
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EC24>* b, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image, C24 Image to C24 Image)");
  if (!TwoSourceChecks(frame, a, b, dst) || !frame.Require(!In(op, {7, 8}), E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    MixedC24(op, true, BytesOf(a, y0, y1), BytesOf(b, y0, y1), BytesOf(dst, y0, y1));
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EC24>* a, const EROI<EBW8>* b, EROI<EC24>* dst) {
  mirel::Frame frame("ImgOper ( C24 Image, BW8 Image to C24 Image)");
  if (!TwoSourceChecks(frame, a, b, dst) || !frame.Require(!In(op, {7, 8}), E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    MixedC24(op, false, BytesOf(b, y0, y1), BytesOf(a, y0, y1), BytesOf(dst, y0, y1));
  });
}

// ================================================================ mixed depth

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW8>* a, const EROI<EBW8>* b, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper ( BW8 Image and BW8 Image to BW16 Image)");
  if (!MixedDepthChecks(frame, a, b, dst) || !frame.Require(In(op, {2, 3, 4, 5}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    const ByteRows ra = BytesOf(a, y0, y1);
    const ByteRows rb = BytesOf(b, y0, y1);
    const WordRows d = WordsOf(dst, y0, y1);
    const auto run = [&](auto f) { MixedRows(ra, rb, d, f); };
    switch (op) {
      case ALO_ADD: run([](unsigned va, unsigned vb) { return va + vb; }); break;
      case ALO_SUBTRACT: run([](unsigned va, unsigned vb) { return va > vb ? va - vb : 0u; }); break;
      case ALO_MULTIPLY: run([](unsigned va, unsigned vb) { return va * vb; }); break;
      default: run([](unsigned va, unsigned vb) { return vb == 0 ? 65535u : va / vb; }); break;
    }
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* a, const EROI<EBW8>* b, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper ( BW16 Image and BW8 Image to BW16 IMage)");
  if (!MixedDepthChecks(frame, a, b, dst) ||
      !frame.Require(In(op, {2, 3, 4, 5, 29, 30}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    const WordRows ra = WordsOf(a, y0, y1);
    const ByteRows rb = BytesOf(b, y0, y1);
    const WordRows d = WordsOf(dst, y0, y1);
    const auto run = [&](auto f) { MixedRows(ra, rb, d, f); };
    switch (op) {
      case ALO_ADD: run([](unsigned va, unsigned vb) { return va + vb > 65535u ? 65535u : va + vb; }); break;
      case ALO_SUBTRACT: run([](unsigned va, unsigned vb) { return va > vb ? va - vb : 0u; }); break;
      case ALO_MULTIPLY:
        // Deliberately not a saturation: up to 65535 gives 65535, above it
        // the low 16 bits are kept.
        run([](unsigned va, unsigned vb) {
          const unsigned p = va * vb;
          return p <= 65535u ? 65535u : (p & 0xFFFFu);
        });
        break;
      case ALO_DIVIDE: run([](unsigned va, unsigned vb) { return vb == 0 ? 65535u : va / vb; }); break;
      case ALO_WRAPPED_ADD: run([](unsigned va, unsigned vb) { return (va + vb) & 0xFFFFu; }); break;
      default: run([](unsigned va, unsigned vb) { return (va - vb) & 0xFFFFu; }); break;
    }
  });
}

// ================================================================ ImgOper, EBW16

void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW16 value, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper ( BW16 Const to Image)");
  if (!frame.NotVoid(dst) || !frame.Require(op == ALO_COPY, E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {}, [&](int y0, int y1) { FillRows(value, dst, y0, y1); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* src, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper (BW16 Image to Image)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(In(op, {0, 1}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {src}, [&](int y0, int y1) {
    const WordRows s = WordsOf(src, y0, y1);
    const WordRows d = WordsOf(dst, y0, y1);
    for (int y = 0; y < d.height; ++y) {
      const u16* ps = s.Row(y);
      u16* pd = d.Row(y);
      if (op == ALO_INVERT) {
        for (int x = 0; x < d.width; ++x) Put16(pd, x, ~Get16(ps, x) & 0xFFFFu);
      } else {
        // Pixel by pixel, as the inverse: a ROI shifted along its own row reads what it wrote.
        for (int x = 0; x < d.width; ++x) Put16(pd, x, Get16(ps, x));
      }
    }
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW16 a, const EROI<EBW16>* b, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper ( BW16 Const, Image to Image)");
  if (!frame.NotVoid(b, dst) || !frame.SameSize(b, dst) ||
      !frame.Require(!In(op, {7, 8, 16, 17, 18, 21, 22}), E_ERROR_BAD_OPERATION))
    return;
  InBands(dst, {b}, [&](int y0, int y1) { ConstImage16(op, a.value, WordsOf(b, y0, y1), WordsOf(dst, y0, y1)); });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* a, EBW16 b, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper ( BW16 Image, Const to Image)");
  if (!frame.NotVoid(a, dst) || !frame.SameSize(a, dst) ||
      !frame.Require(!In(op, {16, 17, 18}), E_ERROR_BAD_OPERATION))
    return;
  bool complement = false;
  const int folded = FoldImageConst(op, complement);
  InBands(dst, {a}, [&](int y0, int y1) {
    if (folded >= 0)
      ConstImage16(folded, complement ? 65535u - b.value : b.value, WordsOf(a, y0, y1), WordsOf(dst, y0, y1));
    else
      ImageConst16(op, b.value, WordsOf(a, y0, y1), WordsOf(dst, y0, y1));
  });
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW16>* a, const EROI<EBW16>* b, EROI<EBW16>* dst) {
  mirel::Frame frame("ImgOper ( BW16 Image, Image to Image)");
  if (!TwoSourceChecks(frame, a, b, dst) || !frame.Require(!In(op, {7, 8}), E_ERROR_BAD_OPERATION)) return;
  InBands(dst, {a, b}, [&](int y0, int y1) {
    ImageImage16(op, WordsOf(a, y0, y1), WordsOf(b, y0, y1), WordsOf(dst, y0, y1));
  });
}
