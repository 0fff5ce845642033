#include "mirel/foundation/color.h"

#include "mirel/foundation/cpu_internal.h"
#include "mirel/foundation/frame_internal.h"

#if defined(MIREL_X86_SIMD)
#include <immintrin.h>
#endif

EColorLookup::EColorLookup(unsigned int n, int identity) : EVectorTemplate<EC24>(n), identity_fill_(identity) {
  // The base has zero-filled the entries (or failed with 1303 and no storage).
  if (identity == 0 || this->m_pData == nullptr) return;
  const unsigned int filled = n < 256 ? n : 256;
  for (unsigned int v = 0; v < filled; ++v) {
    const unsigned char b = static_cast<unsigned char>(v);
    this->m_pData[v] = EC24(b, b, b);
  }
}

bool EColorLookup::GrowToFull() {
  const unsigned int old = this->m_un32NumElements;
  if (old >= 256) return true;
  EOk();
  this->SetNumElements(256);
  if (EGetError() != E_OK) return false;
  for (unsigned int v = old; v < 256; ++v) {
    const unsigned char b = static_cast<unsigned char>(v);
    this->m_pData[v] = EC24(b, b, b);
  }
  return true;
}

void EColorLookup::SetIdentity() {
  EOk();
  this->SetNumElements(256);
  if (EGetError() != E_OK) return;
  for (unsigned int v = 0; v < 256; ++v) {
    const unsigned char b = static_cast<unsigned char>(v);
    this->m_pData[v] = EC24(b, b, b);
  }
}

void EColorLookup::SetComponentTable(unsigned int component, const unsigned char* table) {
  if (component > 2 || table == nullptr) {
    ESetError(E_ERROR_BAD_ARGUMENT);
    return;
  }
  if (!GrowToFull()) return;
  for (unsigned int v = 0; v < 256; ++v) this->m_pData[v].c[component] = table[v];
}

void EColorLookup::SetEntry(unsigned int component, unsigned char value, unsigned char mapped) {
  if (component > 2) {
    ESetError(E_ERROR_BAD_ARGUMENT);
    return;
  }
  if (!GrowToFull()) return;
  this->m_pData[value].c[component] = mapped;
}

namespace {

// Rows are moved sixteen pixels (48 bytes) at a time on the fast path; the
// rest pixel by pixel. Both give the same bytes.
struct Masks {
  // Get: byte i of the plane comes from byte get[j][i] of source vector j.
  // Set: byte l of destination vector j takes plane byte set[j][l] where
  // keep[j][l] is 0, and keeps its own where keep[j][l] is 0xFF.
  alignas(16) unsigned char get[3][16];
  alignas(16) unsigned char set[3][16];
  alignas(16) unsigned char keep[3][16];
  explicit Masks(unsigned int k) {
    for (int j = 0; j < 3; ++j)
      for (int l = 0; l < 16; ++l) {
        const int b = 3 * l + static_cast<int>(k);  // source byte of plane pixel l
        get[j][l] = b / 16 == j ? static_cast<unsigned char>(b % 16) : 0x80;
        const int d = 16 * j + l;  // destination byte
        const bool mine = d % 3 == static_cast<int>(k);
        set[j][l] = mine ? static_cast<unsigned char>(d / 3) : 0x80;
        keep[j][l] = mine ? 0x00 : 0xFF;
      }
  }
};

#if defined(MIREL_X86_SIMD)
__attribute__((target("ssse3"))) int GetBlocksSsse3(const unsigned char* src, unsigned char* dst, int width,
                                                     const Masks& m) {
  const __m128i g0 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.get[0]));
  const __m128i g1 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.get[1]));
  const __m128i g2 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.get[2]));
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const unsigned char* p = src + 3 * x;
    const __m128i v0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i v1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
    const __m128i v2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 32));
    const __m128i out = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(v0, g0), _mm_shuffle_epi8(v1, g1)),
                                      _mm_shuffle_epi8(v2, g2));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), out);
  }
  return x;
}

// Bytes of `plane` placed by `set` into the 16 bytes at `at`, the bytes that
// `keep` marks kept.
__attribute__((target("ssse3"))) inline void MergeSsse3(unsigned char* at, __m128i plane, __m128i set,
                                                        __m128i keep) {
  __m128i* q = reinterpret_cast<__m128i*>(at);
  _mm_storeu_si128(q, _mm_or_si128(_mm_and_si128(_mm_loadu_si128(q), keep), _mm_shuffle_epi8(plane, set)));
}

__attribute__((target("ssse3"))) int SetBlocksSsse3(const unsigned char* src, unsigned char* dst, int width,
                                                     const Masks& m) {
  // Masks are named values, not an array: at -O2 an array indexed in a
  // loop stays in memory, a load more per vector.
  const __m128i s0 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.set[0]));
  const __m128i s1 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.set[1]));
  const __m128i s2 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.set[2]));
  const __m128i k0 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.keep[0]));
  const __m128i k1 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.keep[1]));
  const __m128i k2 = _mm_load_si128(reinterpret_cast<const __m128i*>(m.keep[2]));
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m128i plane = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + x));
    unsigned char* p = dst + 3 * x;
    MergeSsse3(p, plane, s0, k0);
    MergeSsse3(p + 16, plane, s1, k1);
    MergeSsse3(p + 32, plane, s2, k2);
  }
  return x;
}
#endif

// One component out of a row of EC24, optionally through a lookup.
void GetRow(const unsigned char* src, unsigned char* dst, int width, unsigned int k, const EColorLookup* lookup,
            const Masks* fast) {
  if (lookup == nullptr) {
    int x = 0;
#if defined(MIREL_X86_SIMD)
    if (fast != nullptr) x = GetBlocksSsse3(src, dst, width, *fast);
#else
    (void)fast;
#endif
    for (; x < width; ++x) dst[x] = src[3 * x + k];
    return;
  }
  for (int x = 0; x < width; ++x) {
    EC24 out;
    lookup->Transform(EC24(src[3 * x], src[3 * x + 1], src[3 * x + 2]), out);
    dst[x] = out.c[k];
  }
}

void SetRow(const unsigned char* src, unsigned char* dst, int width, unsigned int k, const Masks* fast) {
  int x = 0;
#if defined(MIREL_X86_SIMD)
  if (fast != nullptr) x = SetBlocksSsse3(src, dst, width, *fast);
#else
  (void)fast;
#endif
  for (; x < width; ++x) dst[3 * x + k] = src[x];
}

// The masks when the fast path may run on this call, else null.
const Masks* FastMasks(const Masks& masks) {
  if (EGetMMX() == 0 || mirel::cpu::ActiveSimdLevel() < mirel::cpu::kSSE2) return nullptr;
  return &masks;
}

}  // namespace

void ClrGetComponent(const EROI<EC24>* source, EROI<EBW8>* plane, unsigned int component, const EColorLookup* lookup) {
  mirel::Frame frame("ClrGetComponent");
  if (!frame.NotVoid(source, plane) || !frame.SameSize(source, plane) ||
      !frame.Require(component <= 2, E_ERROR_BAD_ARGUMENT))
    return;
  const Masks masks(component);
  const Masks* fast = FastMasks(masks);
  const auto in = mirel::RowsOf(source);
  const auto out = mirel::RowsOf(plane);
  for (int y = 0; y < in.height; ++y)
    GetRow(reinterpret_cast<const unsigned char*>(in.Row(y)), reinterpret_cast<unsigned char*>(out.Row(y)),
           in.width, component, lookup, fast);
}

void ClrSetComponent(const EROI<EBW8>* plane, EROI<EC24>* destination, unsigned int component) {
  mirel::Frame frame("ClrSetComponent");
  if (!frame.NotVoid(plane, destination) || !frame.SameSize(plane, destination) ||
      !frame.Require(component <= 2, E_ERROR_BAD_ARGUMENT))
    return;
  const Masks masks(component);
  const Masks* fast = FastMasks(masks);
  const auto in = mirel::RowsOf(plane);
  const auto out = mirel::RowsOf(destination);
  for (int y = 0; y < in.height; ++y)
    SetRow(reinterpret_cast<const unsigned char*>(in.Row(y)), reinterpret_cast<unsigned char*>(out.Row(y)),
           in.width, component, fast);
}
