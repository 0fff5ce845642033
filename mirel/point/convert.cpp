#include "mirel/point/convert.h"

#include <cstddef>
#include <cstdint>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/stream_internal.h"
#include "mirel/point/convert_internal.h"

#if defined(MIREL_X86_SIMD)
#include <emmintrin.h>
#endif

namespace {

// Sizes first, then each ROI not void.
bool CheckSizeThenVoid(mirel::Frame& frame, const EGenericROI* src, const EGenericROI* dst) {
  return frame.SameSize(src, dst) && frame.NotVoid(src) && frame.NotVoid(dst);
}

// A vector stretch of a conversion row: converts the first pixels of a row
// of n with the shift, and returns how many it did (the rest is the scalar
// formula's). `ahead` gives the write hints over the destination's rows.
template <class SV, class DV>
using VectorRun = std::size_t (*)(const SV* s, DV* d, std::size_t n, unsigned int shift,
                                  const mirel::StoreAhead& ahead);

#if defined(MIREL_X86_SIMD)
// x << shift into 16 bits; a count above 15 gives 0, as the formula does.
// The hints are the AVX2 stretch's (the Intel form); this one gives none.
std::size_t WidenSSE2(const unsigned char* s, unsigned short* d, std::size_t n, unsigned int shift,
                      const mirel::StoreAhead&) {
  const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
  const __m128i zero = _mm_setzero_si128();
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_sll_epi16(_mm_unpacklo_epi8(x, zero), count));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i + 8), _mm_sll_epi16(_mm_unpackhi_epi8(x, zero), count));
  }
  return i;
}

// The low byte of x >> shift; a count above 15 gives 0.
std::size_t NarrowSSE2(const unsigned short* s, unsigned char* d, std::size_t n, unsigned int shift,
                       const mirel::StoreAhead&) {
  const __m128i count = _mm_cvtsi32_si128(static_cast<int>(shift));
  const __m128i low = _mm_set1_epi16(0xFF);
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i a = _mm_and_si128(_mm_srl_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)), count), low);
    const __m128i b =
        _mm_and_si128(_mm_srl_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 8)), count), low);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_packus_epi16(a, b));
  }
  return i;
}
constexpr VectorRun<unsigned char, unsigned short> kWiden = &WidenSSE2;
constexpr VectorRun<unsigned char, unsigned short> kWidenWide = &mirel::point::WidenAVX2;
constexpr VectorRun<unsigned short, unsigned char> kNarrow = &NarrowSSE2;
#else
constexpr VectorRun<unsigned char, unsigned short> kWiden = nullptr;
constexpr VectorRun<unsigned char, unsigned short> kWidenWide = nullptr;
constexpr VectorRun<unsigned short, unsigned char> kNarrow = nullptr;
#endif

// The vector stretch of a conversion on this call's path, or null. The
// stretches stream rows from and to memory; 16-byte vectors ran as fast as
// 32-byte ones or faster on a frame from memory, so every vector level runs
// them, except in the Intel form, which runs `wide` (an AVX2 stretch), if given.
template <class SV, class DV>
VectorRun<SV, DV> PickVector(VectorRun<SV, DV> sse2, VectorRun<SV, DV> wide = nullptr) {
#if defined(MIREL_X86_SIMD)
  if (EGetMMX() == 0) return nullptr;
  const mirel::cpu::SimdLevel level = mirel::cpu::ActiveSimdLevel();
  if (wide != nullptr && level >= mirel::cpu::kAVX2 && mirel::cpu::IntelStreaming()) return wide;
  if (level >= mirel::cpu::kSSE2) return sse2;
#endif
  (void)sse2;
  (void)wide;
  return nullptr;
}

// dst = f(src) on the pixels' plain values, in bands, with a vector stretch
// at the start of each row when `vector` is given.
template <class S, class D, class F>
void Convert(const char* label, const EROI<S>* src, EROI<D>* dst, F f,
             VectorRun<decltype(S::value), decltype(D::value)> vector = nullptr, unsigned int shift = 0) {
  using SV = decltype(S::value);
  using DV = decltype(D::value);
  static_assert(sizeof(S) == sizeof(SV) && sizeof(D) == sizeof(DV), "pixels are their values");
  mirel::Frame frame(label);
  if (!CheckSizeThenVoid(frame, src, dst)) return;
  const mirel::Rows<const S> s = mirel::RowsOf(src);
  const mirel::Rows<D> d = mirel::RowsOf(dst);
  const std::size_t w = static_cast<std::size_t>(s.width);
  mirel::RowwiseBands(dst, {src}, static_cast<double>(sizeof(S) + sizeof(D)), [&, f](int y0, int y1) {
    const mirel::StoreAhead ahead =
        vector != nullptr ? mirel::StoreAheadFor(d.Row(y0), d.pitch, y1 - y0, w * sizeof(D)) : mirel::StoreAhead{};
    for (int y = y0; y < y1; ++y) {
      const SV* sp = &s.Row(y)->value;
      DV* dp = &d.Row(y)->value;
      std::size_t x = vector != nullptr ? vector(sp, dp, w, shift, ahead) : 0;
      for (; x < w; ++x) dp[x] = f(sp[x]);
    }
  });
}

}  // namespace

void ImgConvert(const EROI<EBW16>* src, EROI<EBW8>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW16 to BW8)", src, dst,
          [n](unsigned short p) { return static_cast<unsigned char>(static_cast<std::uint32_t>(p) >> n); },
          PickVector<unsigned short, unsigned char>(kNarrow), n);
}

void ImgConvert(const EROI<EBW32>* src, EROI<EBW8>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW32 to BW8)", src, dst,
          [n](std::uint32_t p) { return static_cast<unsigned char>(p >> n); });
}

void ImgConvert(const EROI<EBW32>* src, EROI<EBW16>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW32 to BW16)", src, dst,
          [n](std::uint32_t p) { return static_cast<unsigned short>(p >> n); });
}

void ImgConvert(const EROI<EBW8>* src, EROI<EBW16>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW8 to BW16)", src, dst,
          [n](unsigned char p) { return static_cast<unsigned short>(static_cast<std::uint32_t>(p) << n); },
          PickVector<unsigned char, unsigned short>(kWiden, kWidenWide), n);
}

void ImgConvert(const EROI<EBW8>* src, EROI<EBW32>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW8 to BW32)", src, dst,
          [n](unsigned char p) { return static_cast<std::uint32_t>(p) << n; });
}

void ImgConvert(const EROI<EBW16>* src, EROI<EBW32>* dst, unsigned int shift) {
  const unsigned int n = shift & 31u;
  Convert("ImgConvert ( BW16 to BW32)", src, dst,
          [n](unsigned short p) { return static_cast<std::uint32_t>(p) << n; });
}

void ImgConvertTo422(const EROI<EBW8>* src, EROI<EBW16>* dst) {
  Convert("ImgConvertTo422 ( BW8 to BW16)", src, dst,
          [](unsigned char p) { return static_cast<unsigned short>(0x8000u + p); });
}
