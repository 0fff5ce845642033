// The bit-image engine: alignment, copy, logic, conversions and thresholds.
#include "mirel/point/bits.h"

#include <cstring>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/histogram/histogram.h"
#include "mirel/histogram/threshold_selection.h"
#include "mirel/point/bits_blocks_internal.h"
#include "mirel/point/bits_internal.h"

namespace mirel {
namespace bits {

void Throw(E_ERRORS code) { throw Corvane::Talmeer::Exception(code); }
void ThrowError() { Throw(EGetError()); }

void CheckOrThrow(std::initializer_list<const EGenericROI*> sources, const EGenericROI* dst) {
  auto notVoid = [](const EGenericROI* roi) {
    EOk();
    if (roi == nullptr) ESetError(E_ERROR_VOID_IMAGE);
    else roi->CheckNotVoid();
    if (EGetError() != E_OK) ThrowError();
  };
  EOk();
  for (const EGenericROI* s : sources) notVoid(s);
  notVoid(dst);
  for (const EGenericROI* s : sources) {
    EOk();
    s->CheckSameSize(dst);
    if (EGetError() != E_OK) ThrowError();
  }
}

void CheckAlignedOrThrow(std::initializer_list<const EGenericROI*> rois) {
  for (const EGenericROI* r : rois)
    if (r->GetWidth() > 0 && r->GetHeight() > 0 && r->GetBitOffset(0, 0) != 0) Throw(E_ERROR_BW1_NOT_ALIGNED);
}

namespace {

void ScalarPack8(const std::uint8_t* p, u8* d, std::size_t n, unsigned t) { blocks::PackBytes(p, d, 0, n, t); }
void ScalarPack16(const std::uint16_t* p, u8* d, std::size_t n, unsigned t) { blocks::PackBytes(p, d, 0, n, t); }
void ScalarExpand8(const u8* s, std::uint8_t* d, std::size_t n, std::uint8_t on) {
  blocks::ExpandBytes(s, d, 0, n, on);
}

}  // namespace

const Kernels& ScalarKernels() {
  static const Kernels k = blocks::MakeKernels<blocks::ScalarLanes>(&ScalarPack8, &ScalarPack16, &ScalarExpand8);
  return k;
}

const Kernels& ActiveKernels() {
  if (EGetMMX() == 0) return ScalarKernels();
#if defined(MIREL_X86_SIMD)
  const int level = cpu::ActiveSimdLevel();
  if (level >= cpu::kAVX512) return Avx512Kernels();
  if (level >= cpu::kAVX2) return Avx2Kernels();
  if (level >= cpu::kSSE2) return Sse2Kernels();
#endif
  return ScalarKernels();
}

namespace {

// ---------------------------------------------------------------- workers

// dst = f(a, b, dst) over whole bytes, the last byte of each row under its
// mask. b may be a (unary logic).
void LogicRows(const Kernels& k, Logic op, const EROI<EBW1>* a, const EROI<EBW1>* b, EROI<EBW1>* dst) {
  const Rows<const EBW1> ra = RowsOf(a), rb = RowsOf(b);
  const Rows<EBW1> rd = RowsOf(dst);
  if (rd.width <= 0) return;
  const int n = WholeBytes(rd.width);
  const u8 valid = LastValid(rd.width);
  RowwiseBands(dst, {a, b}, 0.5, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const u8* pa = RowBytes(ra, y);
      const u8* pb = RowBytes(rb, y);
      u8* pd = RowBytes(rd, y);
      k.logic[op](pa, pb, pd, static_cast<std::size_t>(n));
      u8 last = pd[n];
      k.logic[op](pa + n, pb + n, &last, 1);
      Merge(pd + n, last, valid);
    }
  });
}

void FillRows(bool on, EROI<EBW1>* dst) {
  const Rows<EBW1> rd = RowsOf(dst);
  if (rd.width <= 0) return;
  const int n = WholeBytes(rd.width);
  const u8 valid = LastValid(rd.width), v = on ? 0xff : 0;
  RowwiseBands(dst, {}, 0.125, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      u8* pd = RowBytes(rd, y);
      std::memset(pd, v, static_cast<std::size_t>(n));
      Merge(pd + n, v, valid);
    }
  });
}

// src at bit offset s (1 to 7) into an aligned dst.
void AlignRows(const Kernels& k, const EROI<EBW1>* src, EROI<EBW1>* dst) {
  const Rows<const EBW1> rs = RowsOf(src);
  const Rows<EBW1> rd = RowsOf(dst);
  const int s = src->GetBitOffset(0, 0);
  const int n = WholeBytes(rd.width);
  const int count = ((rd.width - 1) & 7) + 1;  // pixels of the last byte
  const u8 valid = LastValid(rd.width);
  RowwiseBands(dst, {src}, 0.5, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const u8* ps = RowBytes(rs, y);
      u8* pd = RowBytes(rd, y);
      k.shift(ps, pd, static_cast<std::size_t>(n), s);
      // The next source byte holds some of the last pixels only when they
      // pass the end of this one.
      unsigned v = static_cast<unsigned>(ps[n]) << s;
      if (count > 8 - s) v |= static_cast<unsigned>(ps[n + 1]) >> (8 - s);
      Merge(pd + n, static_cast<u8>(v), valid);
    }
  });
}

// An aligned src into dst at bit offset s (1 to 7); the bits of dst outside
// the ROI keep their values.
void UnAlignRows(const Kernels& k, const EROI<EBW1>* src, EROI<EBW1>* dst) {
  const Rows<const EBW1> rs = RowsOf(src);
  const Rows<EBW1> rd = RowsOf(dst);
  const int s = dst->GetBitOffset(0, 0);
  const int w = rd.width;
  const int srcBytes = (w + 7) >> 3;
  const int dstBytes = (s + w + 7) >> 3;
  const u8 first = static_cast<u8>(0xff >> s);
  const u8 end = static_cast<u8>(0xff00u >> (s + w - 8 * (dstBytes - 1)));  // pixel bits of the last byte
  RowwiseBands(dst, {src}, 0.5, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const u8* ps = RowBytes(rs, y);
      u8* pd = RowBytes(rd, y);
      if (dstBytes == 1) {
        Merge(pd, static_cast<u8>(ps[0] >> s), static_cast<u8>(first & end));
        continue;
      }
      Merge(pd, static_cast<u8>(ps[0] >> s), first);
      k.shift(ps, pd + 1, static_cast<std::size_t>(dstBytes - 2), 8 - s);
      const int j = dstBytes - 1;
      unsigned v = static_cast<unsigned>(ps[j - 1]) << (8 - s);
      if (j < srcBytes) v |= static_cast<unsigned>(ps[j]) >> s;
      Merge(pd + j, static_cast<u8>(v), end);
    }
  });
}

// Bits from pixels at least t: w / 8 whole bytes, then one byte of the
// remaining w mod 8 pixels with its other bits clear, written also when
// there are none.
template <class P, class Pack>
void ToBitRows(const EROI<P>* src, EROI<EBW1>* dst, unsigned t, bool none, Pack&& pack) {
  const Rows<const P> rs = RowsOf(src);
  const Rows<EBW1> rd = RowsOf(dst);
  if (rd.width <= 0) return;
  const int n = rd.width / 8, rest = rd.width % 8;
  RowwiseBands(dst, {src}, 1.0 + sizeof(P), [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const P* ps = rs.Row(y);
      u8* pd = RowBytes(rd, y);
      if (none) {
        std::memset(pd, 0, static_cast<std::size_t>(n) + 1);
        continue;
      }
      pack(ps, pd, static_cast<std::size_t>(n), t);
      unsigned v = 0;
      for (int i = 0; i < rest; ++i) v |= (ps[8 * n + i] >= t ? 0x80u : 0u) >> i;
      pd[n] = static_cast<u8>(v);
    }
  });
}

template <class Raw, class P>
const Raw* RawRow(const P* p) {
  return reinterpret_cast<const Raw*>(p);
}

void ToBits(const Kernels& k, const EROI<EBW8>* src, EROI<EBW1>* dst, unsigned t) {
  ToBitRows(src, dst, t, t > 255, [&](const EBW8* p, u8* d, std::size_t n, unsigned tt) {
    k.pack8(RawRow<std::uint8_t>(p), d, n, tt);
  });
}
void ToBits(const Kernels& k, const EROI<EBW16>* src, EROI<EBW1>* dst, unsigned t) {
  ToBitRows(src, dst, t, t > 65535, [&](const EBW16* p, u8* d, std::size_t n, unsigned tt) {
    k.pack16(RawRow<std::uint16_t>(p), d, n, tt);
  });
}
void ToBits(const Kernels&, const EROI<EBW32>* src, EROI<EBW1>* dst, unsigned t) {
  ToBitRows(src, dst, t, false, [](const EBW32* p, u8* d, std::size_t n, unsigned tt) {
    blocks::PackBytes(RawRow<std::uint32_t>(p), d, 0, n, tt);
  });
}

// Eight pixels from each byte through a table of 256 entries, made for this
// call; with the fast path the 8-bit pixels of whole bytes come from the
// instruction-set kernel instead.
template <class P, class Raw>
void FromBitRows(const Kernels& k, bool fast, const EROI<EBW1>* src, EROI<P>* dst, Raw on) {
  Raw table[256][8];
  for (int v = 0; v < 256; ++v)
    for (int i = 0; i < 8; ++i) table[v][i] = (v << i) & 0x80 ? on : Raw(0);
  const Rows<const EBW1> rs = RowsOf(src);
  const Rows<P> rd = RowsOf(dst);
  if (rd.width <= 0) return;
  const int n = WholeBytes(rd.width);
  const int count = ((rd.width - 1) & 7) + 1;
  RowwiseBands(dst, {src}, 1.0 + sizeof(P), [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const u8* ps = RowBytes(rs, y);
      Raw* pd = reinterpret_cast<Raw*>(rd.Row(y));
      int j = 0;
      if constexpr (sizeof(Raw) == 1) {
        if (fast) {
          k.expand8(ps, pd, static_cast<std::size_t>(n), on);
          j = n;
        }
      }
      for (; j < n; ++j) std::memcpy(pd + 8 * j, table[ps[j]], sizeof(table[0]));
      std::memcpy(pd + 8 * n, table[ps[n]], sizeof(Raw) * static_cast<std::size_t>(count));
    }
  });
}

// ---------------------------------------------------------------- plain forms

// The plain form of an engine operation: a null pointer among its ROIs is
// 1400 under `label`; a throw sets its code anew and is traced under
// `catchLabel`.
template <class Fn>
void Plain(const char* label, const char* catchLabel, bool anyNull, Fn&& body) {
  Frame frame(label);
  if (!frame.Require(!anyNull, E_ERROR_VOID_IMAGE)) return;
  Guarded(frame, catchLabel, true, body);
}

using Source = AlignedSource<const EROI<EBW1>>;

Logic UnaryLogic(ARITH_LOGIC_OPERATIONS op) {
  switch (op) {
    case ALO_COPY: return kCopy;
    case ALO_INVERT: return kInvert;
    default: Throw(E_ERROR_BAD_OPERATION);
  }
}

Logic BinaryLogic(ARITH_LOGIC_OPERATIONS op) {
  switch (op) {
    case ALO_BIT_AND: return kAnd;
    case ALO_BIT_OR: return kOr;
    case ALO_BIT_XOR: return kXor;
    case ALO_SET_WHERE_ZERO: return kKeepWhereSet;
    case ALO_SET_WHERE_NONZERO: return kTakeWhereSet;
    case ALO_LESS_OR_EQUAL: return kNotOr;
    default: Throw(E_ERROR_BAD_OPERATION);
  }
}

template <class P>
void ConvertToBitsAligned(const EROI<P>* src, EROI<EBW1>* dst) {
  const Kernels& k = ActiveKernels();
  CheckOrThrow({src}, dst);
  CheckAlignedOrThrow({dst});
  ToBits(k, src, dst, 1);
}

template <class P>
void ConvertToBits(const char* label, const EROI<P>* src, EROI<EBW1>* dst) {
  Plain(label, label, src == nullptr || dst == nullptr, [&] {
    AlignedTarget d(dst, false);
    ImgConvertAligned(src, d.get());
    d.WriteBack();
  });
}

template <class P, class Raw>
void ConvertFromBitsAligned(const EROI<EBW1>* src, EROI<P>* dst, Raw on) {
  const int mmx = EGetMMX();
  const Kernels& k = ActiveKernels();
  CheckOrThrow({src}, dst);
  CheckAlignedOrThrow({src});
  FromBitRows(k, mmx != 0, src, dst, on);
}

template <class P, class Raw>
void ConvertFromBits(const char* label, const EROI<EBW1>* src, EROI<P>* dst, Raw on) {
  Plain(label, label, src == nullptr || dst == nullptr, [&] {
    Source s(src);
    ImgConvertAligned(s.get(), dst, on);
  });
}

// Above 65535 the threshold is a mode, which `resolve` turns into a value
// from the source's histogram; from 256 up an 8-bit threshold is one that
// no pixel reaches.
template <class P, class Resolve>
void ThresholdAligned(const EROI<P>* src, EROI<EBW1>* dst, unsigned threshold, Resolve&& resolve) {
  const Kernels& k = ActiveKernels();
  EBWHistogramVector histogram;
  CheckOrThrow({src}, dst);
  CheckAlignedOrThrow({dst});
  if (threshold > 65535) {
    resolve(&histogram, threshold);
    if (EGetError() != E_OK) ThrowError();
  }
  ToBits(k, src, dst, threshold);
}

template <class P>
void ThresholdPlain(const char* label, const EROI<P>* src, EROI<EBW1>* dst, unsigned threshold, float relative) {
  Plain(label, label, src == nullptr || dst == nullptr, [&] {
    AlignedTarget d(dst, false);
    ImgThresholdAligned(src, d.get(), threshold, relative);
    d.WriteBack();
  });
}

}  // namespace
}  // namespace bits
}  // namespace mirel

using mirel::bits::AlignedTarget;
using mirel::bits::CheckAlignedOrThrow;
using mirel::bits::CheckOrThrow;
using mirel::bits::Plain;
using mirel::bits::Source;

// ---------------------------------------------------------------- alignment

void ImgBW1Alignment(const EROI<EBW1>* src, EROI<EBW1>* dst) {
  const mirel::bits::Kernels& k = mirel::bits::ActiveKernels();
  CheckOrThrow({src}, dst);
  CheckAlignedOrThrow({dst});
  if (src->GetWidth() <= 0) return;
  if (src->GetBitOffset(0, 0) == 0) mirel::bits::LogicRows(k, mirel::bits::kCopy, src, src, dst);
  else mirel::bits::AlignRows(k, src, dst);
}

void ImgBW1UnAlignment(const EROI<EBW1>* src, EROI<EBW1>* dst) {
  if (src != nullptr) CheckAlignedOrThrow({src});
  const mirel::bits::Kernels& k = mirel::bits::ActiveKernels();
  CheckOrThrow({src}, dst);
  if (dst->GetWidth() <= 0) return;
  if (dst->GetBitOffset(0, 0) == 0) mirel::bits::LogicRows(k, mirel::bits::kCopy, src, src, dst);
  else mirel::bits::UnAlignRows(k, src, dst);
}

// ---------------------------------------------------------------- copy and logic

void ImgCopyAligned(EBW1 value, EROI<EBW1>* dst) {
  CheckOrThrow({}, dst);
  CheckAlignedOrThrow({dst});
  mirel::bits::FillRows(value.value != 0, dst);
}

void ImgCopy(EBW1 value, EROI<EBW1>* dst) {
  Plain("ImgCopy (BW1)", "ImgCopy (BW1)", dst == nullptr, [&] {
    AlignedTarget d(dst, false);
    ImgCopyAligned(value, d.get());
    d.WriteBack();
  });
}

void ImgCopyAligned(const EROI<EBW1>* src, EROI<EBW1>* dst) { ImgOperAligned(ALO_COPY, src, dst); }

void ImgCopy(const EROI<EBW1>* src, EROI<EBW1>* dst) {
  Plain("ImgCopy (BW1)", "ImgCopy(BW1)", src == nullptr || dst == nullptr, [&] {
    Source s(src);
    AlignedTarget d(dst, false);
    ImgCopyAligned(s.get(), d.get());
    d.WriteBack();
  });
}

void ImgOperAligned(ARITH_LOGIC_OPERATIONS op, EBW1 value, EROI<EBW1>* dst) {
  CheckOrThrow({}, dst);
  CheckAlignedOrThrow({dst});
  if (op != ALO_COPY) mirel::bits::Throw(E_ERROR_BAD_OPERATION);
  mirel::bits::FillRows(value.value != 0, dst);
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, EBW1 value, EROI<EBW1>* dst) {
  Plain("ImgOper (BW1)", "ImgOper (BW1)", dst == nullptr, [&] {
    AlignedTarget d(dst, false);
    ImgOperAligned(op, value, d.get());
    d.WriteBack();
  });
}

void ImgOperAligned(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* src, EROI<EBW1>* dst) {
  const mirel::bits::Kernels& k = mirel::bits::ActiveKernels();
  CheckOrThrow({src}, dst);
  CheckAlignedOrThrow({src, dst});
  mirel::bits::LogicRows(k, mirel::bits::UnaryLogic(op), src, src, dst);
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* src, EROI<EBW1>* dst) {
  Plain("ImgOper (BW1)", "ImgOper (BW1)", src == nullptr || dst == nullptr, [&] {
    Source s(src);
    AlignedTarget d(dst, false);
    ImgOperAligned(op, s.get(), d.get());
    d.WriteBack();
  });
}

void ImgOperAligned(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* a, const EROI<EBW1>* b, EROI<EBW1>* dst) {
  const mirel::bits::Kernels& k = mirel::bits::ActiveKernels();
  CheckOrThrow({a, b}, dst);
  CheckAlignedOrThrow({a, b, dst});
  mirel::bits::LogicRows(k, mirel::bits::BinaryLogic(op), a, b, dst);
}

void ImgOper(ARITH_LOGIC_OPERATIONS op, const EROI<EBW1>* a, const EROI<EBW1>* b, EROI<EBW1>* dst) {
  Plain("ImgOper (BW1)", "ImgOper (BW1)", a == nullptr || b == nullptr || dst == nullptr, [&] {
    Source sa(a), sb(b);
    // The operations that keep some destination bits need its old bits.
    AlignedTarget d(dst, op == ALO_SET_WHERE_ZERO || op == ALO_SET_WHERE_NONZERO);
    ImgOperAligned(op, sa.get(), sb.get(), d.get());
    d.WriteBack();
  });
}

// ---------------------------------------------------------------- conversions

void ImgConvertAligned(const EROI<EBW8>* src, EROI<EBW1>* dst) { mirel::bits::ConvertToBitsAligned(src, dst); }
void ImgConvertAligned(const EROI<EBW16>* src, EROI<EBW1>* dst) { mirel::bits::ConvertToBitsAligned(src, dst); }
void ImgConvertAligned(const EROI<EBW32>* src, EROI<EBW1>* dst) { mirel::bits::ConvertToBitsAligned(src, dst); }
void ImgConvert(const EROI<EBW8>* src, EROI<EBW1>* dst) {
  mirel::bits::ConvertToBits("ImgConvert (BW8 -> BW1)", src, dst);
}
void ImgConvert(const EROI<EBW16>* src, EROI<EBW1>* dst) {
  mirel::bits::ConvertToBits("ImgConvert (BW16 -> BW1)", src, dst);
}
void ImgConvert(const EROI<EBW32>* src, EROI<EBW1>* dst) {
  mirel::bits::ConvertToBits("ImgConvert (BW32 -> BW1)", src, dst);
}

void ImgConvertAligned(const EROI<EBW1>* src, EROI<EBW8>* dst, unsigned char on) {
  mirel::bits::ConvertFromBitsAligned(src, dst, on);
}
void ImgConvertAligned(const EROI<EBW1>* src, EROI<EBW16>* dst, unsigned short int on) {
  mirel::bits::ConvertFromBitsAligned(src, dst, on);
}
void ImgConvertAligned(const EROI<EBW1>* src, EROI<EBW32>* dst, unsigned int on) {
  mirel::bits::ConvertFromBitsAligned(src, dst, on);
}
void ImgConvert(const EROI<EBW1>* src, EROI<EBW8>* dst, unsigned char on) {
  mirel::bits::ConvertFromBits("ImgConvert (BW1 -> BW8)", src, dst, on);
}
void ImgConvert(const EROI<EBW1>* src, EROI<EBW16>* dst, unsigned short int on) {
  mirel::bits::ConvertFromBits("ImgConvert (BW1 -> BW16)", src, dst, on);
}
void ImgConvert(const EROI<EBW1>* src, EROI<EBW32>* dst, unsigned int on) {
  mirel::bits::ConvertFromBits("ImgConvert (BW1 -> BW32)", src, dst, on);
}

// ---------------------------------------------------------------- thresholds

void ImgThresholdAligned(const EROI<EBW8>* src, EROI<EBW1>* dst, unsigned int threshold, float relative) {
  mirel::bits::ThresholdAligned(src, dst, threshold, [&](EBWHistogramVector* histogram, unsigned& t) {
    ImgHistogram(src, histogram);
    if (EGetError() != E_OK) return;
    float below = 0.0f, above = 0.0f;
    ImgHistogramThreshold(histogram, t, below, above, relative, 0, 255);
  });
}

void ImgThresholdAligned(const EROI<EBW16>* src, EROI<EBW1>* dst, unsigned int threshold, float relative) {
  mirel::bits::ThresholdAligned(src, dst, threshold, [&](EBWHistogramVector* histogram, unsigned& t) {
    ImgHistogram(src, histogram, 15, 16, 1);
    if (EGetError() != E_OK) return;
    float below = 0.0f, above = 0.0f;
    ImgHistogramThresholdBW16(histogram, t, below, above, relative, 0, 65535);
  });
}

void ImgThreshold(const EROI<EBW8>* src, EROI<EBW1>* dst, unsigned int threshold, float relative) {
  mirel::bits::ThresholdPlain("ImgThreshold (BW8 -> BW1)", src, dst, threshold, relative);
}

void ImgThreshold(const EROI<EBW16>* src, EROI<EBW1>* dst, unsigned int threshold, float relative) {
  mirel::bits::ThresholdPlain("ImgThreshold (BW16 -> BW1)", src, dst, threshold, relative);
}
