#include "mirel/point/lut.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/point/lut_internal.h"

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>
#endif

namespace mirel {
namespace point {

void Lut8RowScalar(const unsigned char* s, unsigned char* d, std::size_t n, const unsigned char* table) {
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    // All eight reads before the writes, so that in-place rows stay correct
    // and the loads overlap.
    const unsigned char a0 = table[s[i]], a1 = table[s[i + 1]], a2 = table[s[i + 2]], a3 = table[s[i + 3]];
    const unsigned char a4 = table[s[i + 4]], a5 = table[s[i + 5]], a6 = table[s[i + 6]], a7 = table[s[i + 7]];
    d[i] = a0;
    d[i + 1] = a1;
    d[i + 2] = a2;
    d[i + 3] = a3;
    d[i + 4] = a4;
    d[i + 5] = a5;
    d[i + 6] = a6;
    d[i + 7] = a7;
  }
  for (; i < n; ++i) d[i] = table[s[i]];
}

void Lut8Rows(const Rows<const EBW8>& src, const Rows<EBW8>& dst, const unsigned char* table, int mmx) {
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    const int level = cpu::ActiveSimdLevel();
    if (level >= cpu::kAVX512 && Lut8RowsAVX512(src, dst, table)) return;
    // Below AVX2 the nibble shuffles lose to the unrolled scalar walk.
    if (level >= cpu::kAVX2) {
      Lut8RowsAVX2(src, dst, table);
      return;
    }
  }
#else
  (void)mmx;
#endif
  for (int y = 0; y < src.height; ++y)
    Lut8RowScalar(reinterpret_cast<const unsigned char*>(src.Row(y)), reinterpret_cast<unsigned char*>(dst.Row(y)),
                  static_cast<std::size_t>(src.width), table);
}

#if defined(MIREL_X86_SIMD)
void GainBlocksSSE2(const unsigned char* s, unsigned char* d, std::size_t n, std::uint16_t g, std::int16_t o) {
  const __m128i vg = _mm_set1_epi16(static_cast<short>(g));
  const __m128i vo = _mm_set1_epi16(o);
  const __m128i zero = _mm_setzero_si128();
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    __m128i lo = _mm_unpacklo_epi8(x, zero);
    __m128i hi = _mm_unpackhi_epi8(x, zero);
    lo = _mm_adds_epi16(_mm_srli_epi16(_mm_mullo_epi16(lo, vg), 5), vo);
    hi = _mm_adds_epi16(_mm_srli_epi16(_mm_mullo_epi16(hi, vg), 5), vo);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_packus_epi16(lo, hi));
  }
  for (; i < n; ++i) d[i] = GainBlockPixel(s[i], g, o);
}
#endif

}  // namespace point
}  // namespace mirel

namespace {

using mirel::Rows;
using mirel::RowsOf;

// The void and size checks of the frame, without a trace label.
bool CheckPairUntraced(const EGenericROI* src, const EGenericROI* dst) {
  EOk();
  if (src == nullptr) ESetError(E_ERROR_VOID_IMAGE);
  else src->CheckNotVoid();
  if (EGetError() != E_OK) return false;
  EOk();
  if (dst == nullptr) ESetError(E_ERROR_VOID_IMAGE);
  else dst->CheckNotVoid();
  if (EGetError() != E_OK) return false;
  EOk();
  src->CheckSameSize(dst);
  return EGetError() == E_OK;
}

// Float to int truncating toward zero, saturated at the int range, NaN 0.
int TruncToInt(double v) {
  if (!(v == v)) return 0;
  if (v >= 2147483647.0) return std::numeric_limits<int>::max();
  if (v <= -2147483648.0) return std::numeric_limits<int>::min();
  return static_cast<int>(v);
}

void ApplyLut8(const EROI<EBW8>* src, EROI<EBW8>* dst, const unsigned char* table, int mmx) {
  const Rows<const EBW8> s = RowsOf(src);
  const Rows<EBW8> d = RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, 1.0, [&](int y0, int y1) {
    mirel::point::Lut8Rows(mirel::Band(s, y0, y1), mirel::Band(d, y0, y1), table, mmx);
  });
}

// dst = f(src) pixel by pixel, in bands unless f is the caller's own
// function (which need not be safe to call from several threads).
template <class S, class D, class F>
void ForEachPixel(const EROI<S>* src, EROI<D>* dst, F f, bool banded = true) {
  const Rows<const S> s = RowsOf(src);
  const Rows<D> d = RowsOf(dst);
  const double cost = banded ? mirel::RowCost(s.width, sizeof(S) + sizeof(D)) : mirel::kOneBand;
  mirel::RunBands(s.height, mirel::RowsIndependent(src, dst) ? cost : mirel::kOneBand, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const S* sp = s.Row(y);
      D* dp = d.Row(y);
      for (int x = 0; x < s.width; ++x) dp[x] = f(sp[x]);
    }
  });
}

}  // namespace

void ImgLut(const EROI<EBW8>* src, EROI<EBW8>* dst, EBW8* table) {
  const int mmx = EGetMMX();
  if (!CheckPairUntraced(src, dst)) return;
  ApplyLut8(src, dst, reinterpret_cast<const unsigned char*>(table), mmx);
}

void ImgLut(const EROI<EBW8>* src, EROI<EBW8>* dst, EBW8Vector* table) {
  mirel::Frame frame("ImgLut");
  if (!frame.Require(table != nullptr && table->GetNumElements() == 256, E_ERROR_VECTOR_SIZE)) return;
  ImgLut(src, dst, table->GetDataPtr());
}

void ImgLut(const EROI<EBW16>* src, EROI<EBW16>* dst, EBW16* table) {
  mirel::Frame frame("ImgLut (BW16)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  ForEachPixel(src, dst, [table](EBW16 p) { return table[p.value]; });
}

void ImgLut(const EROI<EBW16>* src, EROI<EBW16>* dst, EBW16Vector* table) {
  mirel::Frame frame("ImgLut (BW16)");
  if (!frame.Require(table != nullptr && table->GetNumElements() == 65536, E_ERROR_VECTOR_SIZE)) return;
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const EBW16* t = table->GetDataPtr();
  ForEachPixel(src, dst, [t](EBW16 p) { return t[p.value]; });
}

void ImgLut(const EROI<EBW16>* src, EROI<EBW8>* dst, EBW8Vector* table, unsigned int shift) {
  mirel::Frame frame("ImgLut ( BW16 to BW8)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  if (!frame.Require(table != nullptr, E_ERROR_VECTOR_SIZE)) return;
  const unsigned int n = table->GetNumElements();
  unsigned int bits = 0;
  for (unsigned int m = n; m > 1; m >>= 1) ++bits;
  if (shift == 0xFFFFFFFFu) {
    shift = 16u - bits;
  } else if (!frame.Require(static_cast<unsigned long long>(bits) + shift <= 16u, E_ERROR_BAD_ARGUMENT_2)) {
    return;
  }
  if (!frame.Require(bits <= 16 && n == (1u << bits), E_ERROR_VECTOR_SIZE)) return;
  const unsigned int mask = (1u << bits) - 1u;
  const EBW8* t = table->GetDataPtr();
  if (shift == 0) {
    ForEachPixel(src, dst, [t, mask](EBW16 p) { return t[p.value & mask]; });
  } else if (bits + shift == 16) {
    ForEachPixel(src, dst, [t, shift](EBW16 p) { return t[p.value >> shift]; });
  } else {
    ForEachPixel(src, dst, [t, shift, mask](EBW16 p) { return t[(p.value >> shift) & mask]; });
  }
}

void ImgGainOffset(const EROI<EBW8>* src, EROI<EBW8>* dst, float gain, float offset) {
  const int mmx = EGetMMX();
  const int g = TruncToInt(static_cast<double>(gain * 32.0f));
  const int o = TruncToInt(static_cast<double>(offset));
  mirel::Frame frame("ImgGainOffset");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;

  unsigned char table[256];
  for (unsigned int i = 0; i < 256; ++i) {
    const std::uint32_t p = i * static_cast<std::uint32_t>(g);
    const std::uint32_t v = (p >> 5) + static_cast<std::uint32_t>(o);
    table[i] = static_cast<unsigned char>(v <= 255u ? v : ((v & 0x80000000u) != 0 ? 0u : 255u));
  }
  const Rows<const EBW8> s = RowsOf(src);
  const Rows<EBW8> d = RowsOf(dst);
  if (mmx == 0) {
    ApplyLut8(src, dst, table, 0);
    return;
  }
  const std::uint16_t g16 = static_cast<std::uint16_t>(static_cast<std::uint32_t>(g));
  const std::int16_t o16 = static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(o)));
#if defined(MIREL_X86_SIMD)
  const int level = mirel::cpu::ActiveSimdLevel();
#endif
  const std::size_t width = static_cast<std::size_t>(s.width);
  mirel::RowwiseBands(dst, {src}, 1.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const unsigned char* sp = reinterpret_cast<const unsigned char*>(s.Row(y));
      unsigned char* dp = reinterpret_cast<unsigned char*>(d.Row(y));
      // Head up to an 8-byte aligned destination, 8-byte blocks, tail: the
      // blocks take the 16-bit formula, head and tail the table.
      const std::size_t head = static_cast<std::size_t>((0u - reinterpret_cast<std::uintptr_t>(dp)) & 7u);
      if (width < head || width - head < 8) {
        mirel::point::Lut8RowScalar(sp, dp, width, table);
        continue;
      }
      const std::size_t blocks = (width - head) & ~static_cast<std::size_t>(7);
      mirel::point::Lut8RowScalar(sp, dp, head, table);
      const unsigned char* bs = sp + head;
      unsigned char* bd = dp + head;
#if defined(MIREL_X86_SIMD)
      if (level >= mirel::cpu::kAVX512) mirel::point::GainBlocksAVX512(bs, bd, blocks, g16, o16);
      else if (level >= mirel::cpu::kAVX2) mirel::point::GainBlocksAVX2(bs, bd, blocks, g16, o16);
      else if (level >= mirel::cpu::kSSE2) mirel::point::GainBlocksSSE2(bs, bd, blocks, g16, o16);
      else
#endif
        for (std::size_t i = 0; i < blocks; ++i) bd[i] = mirel::point::GainBlockPixel(bs[i], g16, o16);
      mirel::point::Lut8RowScalar(sp + head + blocks, dp + head + blocks, width - head - blocks, table);
    }
  });
}

void ImgGainOffset(const EROI<EC24>* src, EROI<EC24>* dst, EColor gain, EColor offset) {
  mirel::Frame frame("ImgGainOffset");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  unsigned char table[3][256];
  for (int k = 0; k < 3; ++k) {
    for (int x = 0; x < 256; ++x) {
      const double v = static_cast<double>(gain.c[k]) * x + static_cast<double>(offset.c[k]);
      table[k][x] = static_cast<unsigned char>(v > 255.0 ? 255 : (v > 0.0 ? static_cast<int>(v) : 0));
    }
  }
  ForEachPixel(src, dst, [&table](EC24 p) {
    return EC24(table[0][p.c[0]], table[1][p.c[1]], table[2][p.c[2]]);
  });
}

void ImgGainOffset(const EROI<EBW16>* src, EROI<EBW16>* dst, float gain, float offset) {
  const int g = TruncToInt(static_cast<double>(gain * 32.0f));
  const int o = TruncToInt(static_cast<double>(offset));
  mirel::Frame frame("ImgGainOffset (BW16)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  const std::uint32_t ug = static_cast<std::uint32_t>(g);
  const std::uint32_t uo = static_cast<std::uint32_t>(o);
  ForEachPixel(src, dst, [ug, uo](EBW16 p) {
    // 32-bit arithmetic with wrap-around; the shift of the signed product is arithmetic.
    const std::int32_t product = static_cast<std::int32_t>(p.value * ug);
    const std::int32_t v = static_cast<std::int32_t>(static_cast<std::uint32_t>(product >> 5) + uo);
    return EBW16(static_cast<unsigned short>(v < 0 ? 0 : (v > 65535 ? 65535 : v)));
  });
}

void ImgTransform(const EROI<EBW8>* src, EROI<EBW8>* dst, EBW8 (*fn)(EBW8), int useTable) {
  const int mmx = EGetMMX();
  {
    mirel::Frame frame("ImgTransform");
    if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) || !frame.Require(fn != nullptr, E_ERROR_BAD_ARGUMENT))
      return;  // the frame traces the label
    if (useTable != 0) {
      unsigned char table[256];
      for (int i = 0; i < 256; ++i) table[i] = fn(EBW8(static_cast<unsigned char>(i))).value;
      ApplyLut8(src, dst, table, mmx);
    } else {
      ForEachPixel(src, dst, fn, false);
    }
  }
  // Traced after a success as well; the code stays as it is.
  ETraceError("ImgTransform");
}

void ImgTransform(const EROI<EBW16>* src, EROI<EBW16>* dst, EBW16 (*fn)(EBW16)) {
  mirel::Frame frame("ImgTransform (BW16)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) || !frame.Require(fn != nullptr, E_ERROR_BAD_ARGUMENT))
    return;
  ForEachPixel(src, dst, fn, false);
}
