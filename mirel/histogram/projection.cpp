#include "mirel/histogram/projection.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "mirel/foundation/armed_frame_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/untyped_vector.h"
#include "mirel/histogram/projection_internal.h"

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>
#endif

namespace mirel {
namespace proj {

#if defined(MIREL_X86_SIMD)
// Strips of 32 columns are summed down the rows in 16-bit registers, which
// hold 257 rows of 255 before they must be added into the 32-bit sums.
int ColumnSums8SSE2(const Rows<const EBW8>& rows, std::uint32_t* acc) {
  const int strips = rows.width / 32;
  const __m128i zero = _mm_setzero_si128();
  for (int s = 0; s < strips; ++s) {
    std::uint32_t* a = acc + 32 * s;
    std::memset(a, 0, 32 * sizeof(std::uint32_t));
    for (int y0 = 0; y0 < rows.height; y0 += 257) {
      const int y1 = rows.height - y0 < 257 ? rows.height : y0 + 257;
      __m128i s0 = zero, s1 = zero, s2 = zero, s3 = zero;
      for (int y = y0; y < y1; ++y) {
        const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y)) + 32 * s;
        const __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
        s0 = _mm_add_epi16(s0, _mm_unpacklo_epi8(x0, zero));
        s1 = _mm_add_epi16(s1, _mm_unpackhi_epi8(x0, zero));
        s2 = _mm_add_epi16(s2, _mm_unpacklo_epi8(x1, zero));
        s3 = _mm_add_epi16(s3, _mm_unpackhi_epi8(x1, zero));
      }
      alignas(16) std::uint16_t part[32];
      _mm_store_si128(reinterpret_cast<__m128i*>(part), s0);
      _mm_store_si128(reinterpret_cast<__m128i*>(part + 8), s1);
      _mm_store_si128(reinterpret_cast<__m128i*>(part + 16), s2);
      _mm_store_si128(reinterpret_cast<__m128i*>(part + 24), s3);
      for (int i = 0; i < 32; ++i) a[i] += part[i];
    }
  }
  return strips * 32;
}

std::uint64_t RowSum8SSE2(const unsigned char* p, int n) {
  __m128i s = _mm_setzero_si128();
  const __m128i zero = _mm_setzero_si128();
  int i = 0;
  for (; i + 16 <= n; i += 16)
    s = _mm_add_epi64(s, _mm_sad_epu8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i)), zero));
  alignas(16) std::uint64_t lanes[2];
  _mm_store_si128(reinterpret_cast<__m128i*>(lanes), s);
  std::uint64_t sum = lanes[0] + lanes[1];
  for (; i < n; ++i) sum += p[i];
  return sum;
}
#endif

void ColumnSums8(const Rows<const EBW8>& rows, std::uint32_t* acc, int mmx) {
  int done = 0;
#if defined(MIREL_X86_SIMD)
  if (mmx != 0) {
    const int level = cpu::ActiveSimdLevel();
    if (level >= cpu::kAVX512) done = ColumnSums8AVX512(rows, acc);
    else if (level >= cpu::kAVX2) done = ColumnSums8AVX2(rows, acc);
    else if (level >= cpu::kSSE2) done = ColumnSums8SSE2(rows, acc);
  }
#else
  (void)mmx;
#endif
  for (int x = done; x < rows.width; ++x) acc[x] = 0;
  for (int y = 0; y < rows.height; ++y) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y));
    for (int x = done; x < rows.width; ++x) acc[x] += p[x];
  }
}

void RowSums8(const Rows<const EBW8>& rows, std::uint32_t* sums, int mmx) {
#if defined(MIREL_X86_SIMD)
  const int level = mmx != 0 ? static_cast<int>(cpu::ActiveSimdLevel()) : 0;
#else
  (void)mmx;
#endif
  for (int y = 0; y < rows.height; ++y) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y));
#if defined(MIREL_X86_SIMD)
    if (level >= cpu::kAVX2) {
      sums[y] = static_cast<std::uint32_t>(RowSum8AVX2(p, rows.width));
      continue;
    }
    if (level >= cpu::kSSE2) {
      sums[y] = static_cast<std::uint32_t>(RowSum8SSE2(p, rows.width));
      continue;
    }
#endif
    std::uint32_t s = 0;
    for (int x = 0; x < rows.width; ++x) s += p[x];
    sums[y] = s;
  }
}

}  // namespace proj
}  // namespace mirel

namespace {

using mirel::Frame;
using mirel::Rows;
using mirel::RowsOf;

template <class V>
bool SizeOutput(V* v, unsigned int n) {
  EOk();
  v->SetMaxElements(n, 1);
  if (EGetError() != E_OK) return false;
  v->SetNumElements(n);
  return EGetError() == E_OK;
}

template <class P, class V>
bool Start(Frame& frame, const EROI<P>* src, V* v, bool onRow) {
  if (!frame.NotVoid(src) || !frame.Require(v != nullptr, E_ERROR_BAD_ARGUMENT)) return false;
  return SizeOutput(v, static_cast<unsigned int>(onRow ? src->GetWidth() : src->GetHeight()));
}

// `n` column sums of `height` rows in bands: sums(y0, y1, acc) sets acc to
// the sums of rows [y0, y1). The first band sums into `out`, the others into
// sums of their own, added afterwards: 32-bit sums that wrap give the same
// totals in any order. Without memory for the bands' sums, one band.
template <class F>
void ColumnBands(int height, std::size_t n, double rowCost, std::uint32_t* out, F&& sums) {
  const mirel::Bands bands(height, rowCost);
  std::unique_ptr<std::uint32_t[]> partial;
  if (bands.Count() > 1) partial.reset(new (std::nothrow) std::uint32_t[n * static_cast<std::size_t>(bands.Count() - 1)]);
  if (partial == nullptr) {
    sums(0, height, out);
    return;
  }
  bands.Run([&](int band, int y0, int y1) {
    sums(y0, y1, band == 0 ? out : partial.get() + n * static_cast<std::size_t>(band - 1));
  });
  for (std::size_t i = 0; i + n <= n * static_cast<std::size_t>(bands.Count() - 1); i += n)
    for (std::size_t x = 0; x < n; ++x) out[x] += partial[i + x];
}

// Sums of the columns (onRow) or of the rows of a grey ROI, in bands of
// rows: each band sums columns of its own, or writes the sums of its rows.
template <class P>
void Sums(const EROI<P>* src, std::uint32_t* out, bool onRow, int mmx) {
  const Rows<const P> rows = RowsOf(src);
  const double cost = mirel::RowCost(rows.width, sizeof(P));
  if (onRow) {
    ColumnBands(rows.height, static_cast<std::size_t>(rows.width), cost, out,
                [&](int y0, int y1, std::uint32_t* acc) {
                  const Rows<const P> band = mirel::Band(rows, y0, y1);
                  if constexpr (sizeof(P) == 1) {
                    mirel::proj::ColumnSums8(band, acc, mmx);
                  } else {
                    for (int x = 0; x < band.width; ++x) acc[x] = 0;
                    for (int y = 0; y < band.height; ++y) {
                      const P* p = band.Row(y);
                      for (int x = 0; x < band.width; ++x) acc[x] += p[x].value;
                    }
                  }
                });
    return;
  }
  mirel::RunBands(rows.height, cost, [&](int y0, int y1) {
    if constexpr (sizeof(P) == 1) {
      mirel::proj::RowSums8(mirel::Band(rows, y0, y1), out + y0, mmx);
    } else {
      (void)mmx;
      for (int y = y0; y < y1; ++y) {
        const P* p = rows.Row(y);
        std::uint32_t s = 0;
        for (int x = 0; x < rows.width; ++x) s += p[x].value;
        out[y] = s;
      }
    }
  });
}

template <class P>
short SumForm(const char* label, const EROI<P>* src, EBW32Vector* v, bool onRow) {
  const int mmx = EGetMMX();
  Frame frame(label);
  if (!Start(frame, src, v, onRow)) return frame.Result();
  Sums(src, reinterpret_cast<std::uint32_t*>(v->GetDataPtr()), onRow, mmx);
  return frame.Result();
}

template <class P, class V>
short AverageForm(const char* label, const EROI<P>* src, V* v, bool onRow) {
  const int mmx = EGetMMX();
  Frame frame(label);
  if (!Start(frame, src, v, onRow)) return frame.Result();
  const unsigned int n = v->GetNumElements();
  // The sums go to a temporary of 32-bit elements, then are divided.
  EBW32Vector sums(0, 1);
  if (!SizeOutput(&sums, n)) return frame.Result();
  std::uint32_t* s = reinterpret_cast<std::uint32_t*>(sums.GetDataPtr());
  Sums(src, s, onRow, mmx);
  const std::uint32_t count = static_cast<std::uint32_t>(onRow ? src->GetHeight() : src->GetWidth());
  auto* out = v->GetDataPtr();
  using Value = decltype(out->value);
  for (unsigned int i = 0; i < n; ++i) out[i].value = static_cast<Value>(count == 0 ? 0 : s[i] / count);
  return frame.Result();
}

short ColourAverage(const char* label, const EROI<EC24>* src, EC24Vector* v, bool onRow) {
  Frame frame(label);
  if (!Start(frame, src, v, onRow)) return frame.Result();
  const Rows<const EC24> rows = RowsOf(src);
  EC24* out = v->GetDataPtr();
  if (onRow) {
    // Three consecutive accumulators a pixel, one a component.
    EBW32Vector sums(0, 1);
    if (!SizeOutput(&sums, static_cast<unsigned int>(rows.width) * 3u)) return frame.Result();
    std::uint32_t* s = reinterpret_cast<std::uint32_t*>(sums.GetDataPtr());
    // A ROI with no columns leaves the vector with no storage at all.
    const std::size_t n = static_cast<std::size_t>(rows.width) * 3;
    ColumnBands(rows.height, n, mirel::RowCost(rows.width, 3.0), s, [&](int y0, int y1, std::uint32_t* acc) {
      if (n > 0) std::memset(acc, 0, n * sizeof(std::uint32_t));
      for (int y = y0; y < y1; ++y) {
        const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y));
        for (std::size_t i = 0; i < n; ++i) acc[i] += p[i];
      }
    });
    const std::uint32_t count = static_cast<std::uint32_t>(rows.height);
    for (int x = 0; x < rows.width; ++x)
      for (int k = 0; k < 3; ++k)
        out[x].c[k] = static_cast<unsigned char>(count == 0 ? 0 : s[3 * x + k] / count);
  } else {
    const std::uint32_t count = static_cast<std::uint32_t>(rows.width);
    mirel::RunBands(rows.height, mirel::RowCost(rows.width, 3.0), [&](int y0, int y1) {
      for (int y = y0; y < y1; ++y) {
        const EC24* p = rows.Row(y);
        std::uint32_t s0 = 0, s1 = 0, s2 = 0;
        for (int x = 0; x < rows.width; ++x) {
          s0 += p[x].c[0];
          s1 += p[x].c[1];
          s2 += p[x].c[2];
        }
        out[y] = count == 0 ? EC24(0, 0, 0)
                            : EC24(static_cast<unsigned char>(s0 / count), static_cast<unsigned char>(s1 / count),
                                   static_cast<unsigned char>(s2 / count));
      }
    });
  }
  return frame.Result();
}

}  // namespace

short ImgProjectOnARow(const EROI<EBW8>* src, EBW32Vector* projection) {
  return SumForm("ImgProjectOnARow ( BW8 Image Sum)", src, projection, true);
}
short ImgProjectOnARow(const EROI<EBW8>* src, EBW8Vector* projection) {
  return AverageForm("ImgProjectOnARow ( BW8 Image Average)", src, projection, true);
}
short ImgProjectOnARow(const EROI<EBW16>* src, EBW32Vector* projection) {
  return SumForm("ImgProjectOnARow ( BW16 Image Sum)", src, projection, true);
}
short ImgProjectOnARow(const EROI<EBW16>* src, EBW16Vector* projection) {
  return AverageForm("ImgProjectOnARow ( BW16 Image Average)", src, projection, true);
}
short ImgProjectOnARow(const EROI<EC24>* src, EC24Vector* projection) {
  return ColourAverage("ImgProjectOnARow ( C24 Image Average)", src, projection, true);
}

short ImgProjectOnAColumn(const EROI<EBW8>* src, EBW32Vector* projection) {
  return SumForm("ImgProjectOnAColumn ( BW8 Image Sum)", src, projection, false);
}
short ImgProjectOnAColumn(const EROI<EBW8>* src, EBW8Vector* projection) {
  return AverageForm("ImgProjectOnAColumn ( BW8 Image Average)", src, projection, false);
}
short ImgProjectOnAColumn(const EROI<EBW16>* src, EBW32Vector* projection) {
  return SumForm("ImgProjectOnAColumn ( BW16 Image Sum)", src, projection, false);
}
short ImgProjectOnAColumn(const EROI<EBW16>* src, EBW16Vector* projection) {
  return AverageForm("ImgProjectOnAColumn ( BW16 Image Average)", src, projection, false);
}
short ImgProjectOnAColumn(const EROI<EC24>* src, EC24Vector* projection) {
  return ColourAverage("ImgProjectOnAColumn ( C24 Image Average)", src, projection, false);
}

// ---------------------------------------------------------------- older forms on EVector

namespace {

// Sums of the columns (onRow) or rows into a kind 2 vector of n items.
short UntypedSums(const char* label, const EROI<EBW8>* src, EVector* v, bool onRow, E_ERRORS noData) {
  const int mmx = EGetMMX();
  mirel::ArmedFrame frame(label);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, src != nullptr && src->Void() == 0);
  MIREL_ARMED_CHECK(frame, noData, v != nullptr);
  const int n = onRow ? src->GetWidth() : src->GetHeight();
  if (v->SetType(2, 1, n) != 0) return frame.Fail();
  MIREL_ARMED_CHECK(frame, noData, v->GetDataPtr() != nullptr || n == 0);
  if (n > 0) {
    std::uint32_t* out = static_cast<std::uint32_t*>(v->GetDataPtr());
    if (onRow) mirel::proj::ColumnSums8(RowsOf(src), out, mmx);
    else mirel::proj::RowSums8(RowsOf(src), out, mmx);
  }
  return frame.Done();
}

}  // namespace

short ImgProjectOnARow(const EROI<EBW8>* src, EVector* projection) {
  return UntypedSums("ImgProjectOnARow ( EVector)", src, projection, true, E_ERROR_VOID_VECTOR);
}

short ImgProjectOnAColumn(const EROI<EBW8>* src, EVector* projection) {
  // This one reports a vector without data as a missing image.
  return UntypedSums("ImgProjectOnAColumn", src, projection, false, E_ERROR_VOID_IMAGE);
}
