#include "mirel/point/uniformize.h"

#include <cstdint>
#include <memory>
#include <new>

#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"

namespace {

using mirel::Rows;
using mirel::RowsOf;
using I64 = long long;

// Components of a pixel type, its maximum, its labels.
template <class T>
struct Px;
template <>
struct Px<EBW8> {
  static constexpr int kN = 1;
  static constexpr I64 kMax = 255;
  static I64 Get(const EBW8& p, int) { return p.value; }
  static void Put(EBW8& p, int, I64 v) { p.value = static_cast<unsigned char>(v); }
  static constexpr const char* kLabels[4] = {"ImgUniformize ( BW8 Single Image)", "ImgUniformize ( BW8 Light/Dark Images)",
                                             "ImgUniformize ( BW8 Single Vector)",
                                             "ImgUniformize ( BW8 Light/Dark Vectors)"};
};
template <>
struct Px<EBW16> {
  static constexpr int kN = 1;
  static constexpr I64 kMax = 65535;
  static I64 Get(const EBW16& p, int) { return p.value; }
  static void Put(EBW16& p, int, I64 v) { p.value = static_cast<unsigned short>(v); }
  static constexpr const char* kLabels[4] = {"ImgUniformize ( BW16 Single Image)",
                                             "ImgUniformize ( BW16 Light/Dark Images)",
                                             "ImgUniformize ( BW16 Single Vector)",
                                             "ImgUniformize ( BW16 Light/Dark Vectors)"};
};
template <>
struct Px<EC24> {
  static constexpr int kN = 3;
  static constexpr I64 kMax = 255;
  static I64 Get(const EC24& p, int k) { return p.c[k]; }
  static void Put(EC24& p, int k, I64 v) { p.c[k] = static_cast<unsigned char>(v); }
  static constexpr const char* kLabels[4] = {"ImgUniformize ( C24 Single Image)", "ImgUniformize ( C24 Light/Dark Images)",
                                             "ImgUniformize ( C24 Single Vector)",
                                             "ImgUniformize ( C24 Light/Dark Vectors)"};
};
enum Form { kSingleImage, kLightDarkImages, kSingleVector, kLightDarkVectors };

inline I64 Clamp(I64 v, I64 top) { return v < 0 ? 0 : (v > top ? top : v); }
inline I64 Min(I64 a, I64 b) { return a < b ? a : b; }

// The light and dark correction of one value; `span` is l - d.
inline I64 LightDark(I64 s, I64 d, I64 span, I64 light, I64 dark, I64 top) {
  return span == 0 ? top : Clamp(((s - d) * (light - dark)) / span + dark, top);
}

// An image form, in bands: each component of d is f(k, s, a, b), with a and
// b the two references (b may repeat a). All reads of a pixel come before
// its write, so the destination may be any of the inputs.
template <class T, class F>
void ImageRows(const EROI<T>* src, const EROI<T>* light, const EROI<T>* dark, EROI<T>* dst, F f) {
  const Rows<const T> s = RowsOf(src), a = RowsOf(light), b = RowsOf(dark);
  const Rows<T> d = RowsOf(dst);
  mirel::RowwiseBands(dst, {src, light, dark}, 4.0 * sizeof(T), [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const T* sp = s.Row(y);
      const T* ap = a.Row(y);
      const T* bp = b.Row(y);
      T* dp = d.Row(y);
      for (int x = 0; x < s.width; ++x) {
        T out = sp[x];
        for (int k = 0; k < Px<T>::kN; ++k)
          Px<T>::Put(out, k, f(k, Px<T>::Get(sp[x], k), Px<T>::Get(ap[x], k), Px<T>::Get(bp[x], k)));
        dp[x] = out;
      }
    }
  });
}

// A row form, in bands: each component of d is f(j, s), j the index of the
// column's component in the per-column tables.
template <class T, class F>
void TableRows(const EROI<T>* src, EROI<T>* dst, F f) {
  const Rows<const T> s = RowsOf(src);
  const Rows<T> d = RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, 4.0 * sizeof(T), [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const T* sp = s.Row(y);
      T* dp = d.Row(y);
      for (int x = 0; x < s.width; ++x) {
        T out = sp[x];
        for (int k = 0; k < Px<T>::kN; ++k) Px<T>::Put(out, k, f(x * Px<T>::kN + k, Px<T>::Get(sp[x], k)));
        dp[x] = out;
      }
    }
  });
}

template <class T>
void SingleImage(const EROI<T>* src, T light, const EROI<T>* reference, EROI<T>* dst, int multiplicative) {
  mirel::Frame frame(Px<T>::kLabels[kSingleImage]);
  if (!frame.NotVoid(src, reference, dst) || !frame.SameSize(src, reference) || !frame.SameSize(src, dst)) return;
  const I64 top = Px<T>::kMax;
  auto level = [&light](int k) { return Px<T>::Get(light, k); };
  if (multiplicative == 0) {
    ImageRows(src, reference, reference, dst,
              [&](int k, I64 s, I64 ref, I64) { return Clamp(s - ref + level(k), top); });
  } else {
    ImageRows(src, reference, reference, dst,
              [&](int k, I64 s, I64 ref, I64) { return ref == 0 ? top : Min(s * level(k) / ref, top); });
  }
}

template <class T>
void LightDarkImages(const EROI<T>* src, T light, const EROI<T>* lightReference, T dark, const EROI<T>* darkReference,
                     EROI<T>* dst) {
  mirel::Frame frame(Px<T>::kLabels[kLightDarkImages]);
  if (!frame.NotVoid(src, lightReference, darkReference, dst) || !frame.SameSize(src, lightReference) ||
      !frame.SameSize(src, darkReference) || !frame.SameSize(src, dst))
    return;
  ImageRows(src, lightReference, darkReference, dst,
            [&](int k, I64 s, I64 l, I64 d) {
              return LightDark(s, d, l - d, Px<T>::Get(light, k), Px<T>::Get(dark, k), Px<T>::kMax);
            });
}

// Checks of a row form and its two per-column tables of width x components
// entries each; null (with the code set) when a check fails.
template <class T, class V>
std::unique_ptr<std::int32_t[]> RowFormTables(mirel::Frame& frame, const EROI<T>* src, EROI<T>* dst, const V* a,
                                              const V* b) {
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return nullptr;
  const unsigned int w = static_cast<unsigned int>(dst->GetWidth());
  if (!frame.Require(a != nullptr && a->GetNumElements() == w, E_ERROR_VECTOR_SIZE) ||
      !frame.Require(b != nullptr && b->GetNumElements() == w, E_ERROR_VECTOR_SIZE))
    return nullptr;
  std::unique_ptr<std::int32_t[]> tables(new (std::nothrow) std::int32_t[2 * static_cast<std::size_t>(w) * Px<T>::kN]);
  frame.Require(tables != nullptr, E_ERROR_OUT_OF_MEMORY);
  return tables;
}

template <class T, class V>
void SingleVector(const EROI<T>* src, T light, const V* reference, EROI<T>* dst, int multiplicative) {
  mirel::Frame frame(Px<T>::kLabels[kSingleVector]);
  const std::unique_ptr<std::int32_t[]> tables = RowFormTables(frame, src, dst, reference, reference);
  if (tables == nullptr) return;
  const int n = dst->GetWidth() * Px<T>::kN;
  std::int32_t* first = tables.get();   // offset, or gain
  std::int32_t* second = first + n;     // base
  const I64 top = Px<T>::kMax;
  for (int j = 0; j < n; ++j) {
    const I64 l = Px<T>::Get(light, j % Px<T>::kN);
    const I64 r = Px<T>::Get(reference->GetDataPtr()[j / Px<T>::kN], j % Px<T>::kN);
    first[j] = static_cast<std::int32_t>(multiplicative == 0 ? l - r : (r == 0 ? 0 : (l * 4096) / r));
    second[j] = static_cast<std::int32_t>(r == 0 ? top : 0);
  }
  if (multiplicative == 0) {
    TableRows(src, dst, [&](int j, I64 s) { return Clamp(s + first[j], top); });
  } else {
    TableRows(src, dst,
              [&](int j, I64 s) { return Min(((s * first[j]) >> 12) + second[j], top); });
  }
}

template <class T, class V>
void LightDarkVectors(const EROI<T>* src, T light, const V* lightReference, T dark, const V* darkReference,
                      EROI<T>* dst) {
  mirel::Frame frame(Px<T>::kLabels[kLightDarkVectors]);
  const std::unique_ptr<std::int32_t[]> tables = RowFormTables(frame, src, dst, lightReference, darkReference);
  if (tables == nullptr) return;
  const int n = dst->GetWidth() * Px<T>::kN;
  std::int32_t* base = tables.get();  // d
  std::int32_t* span = base + n;      // l - d
  for (int j = 0; j < n; ++j) {
    base[j] = static_cast<std::int32_t>(Px<T>::Get(darkReference->GetDataPtr()[j / Px<T>::kN], j % Px<T>::kN));
    span[j] = static_cast<std::int32_t>(Px<T>::Get(lightReference->GetDataPtr()[j / Px<T>::kN], j % Px<T>::kN)) -
              base[j];
  }
  TableRows(src, dst, [&](int j, I64 s) {
    const int k = j % Px<T>::kN;
    return LightDark(s, base[j], span[j], Px<T>::Get(light, k), Px<T>::Get(dark, k), Px<T>::kMax);
  });
}

}  // namespace

void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EROI<EBW8>* reference, EROI<EBW8>* dst,
                   int multiplicative) {
  SingleImage(src, light, reference, dst, multiplicative);
}
void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EROI<EBW8>* lightReference, EBW8 dark,
                   const EROI<EBW8>* darkReference, EROI<EBW8>* dst) {
  LightDarkImages(src, light, lightReference, dark, darkReference, dst);
}
void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EBW8Vector* reference, EROI<EBW8>* dst,
                   int multiplicative) {
  SingleVector(src, light, reference, dst, multiplicative);
}
void ImgUniformize(const EROI<EBW8>* src, EBW8 light, const EBW8Vector* lightReference, EBW8 dark,
                   const EBW8Vector* darkReference, EROI<EBW8>* dst) {
  LightDarkVectors(src, light, lightReference, dark, darkReference, dst);
}

void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EROI<EBW16>* reference, EROI<EBW16>* dst,
                   int multiplicative) {
  SingleImage(src, light, reference, dst, multiplicative);
}
void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EROI<EBW16>* lightReference, EBW16 dark,
                   const EROI<EBW16>* darkReference, EROI<EBW16>* dst) {
  LightDarkImages(src, light, lightReference, dark, darkReference, dst);
}
void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EBW16Vector* reference, EROI<EBW16>* dst,
                   int multiplicative) {
  SingleVector(src, light, reference, dst, multiplicative);
}
void ImgUniformize(const EROI<EBW16>* src, EBW16 light, const EBW16Vector* lightReference, EBW16 dark,
                   const EBW16Vector* darkReference, EROI<EBW16>* dst) {
  LightDarkVectors(src, light, lightReference, dark, darkReference, dst);
}

void ImgUniformize(const EROI<EC24>* src, EC24 light, const EROI<EC24>* reference, EROI<EC24>* dst,
                   int multiplicative) {
  SingleImage(src, light, reference, dst, multiplicative);
}
void ImgUniformize(const EROI<EC24>* src, EC24 light, const EROI<EC24>* lightReference, EC24 dark,
                   const EROI<EC24>* darkReference, EROI<EC24>* dst) {
  LightDarkImages(src, light, lightReference, dark, darkReference, dst);
}
void ImgUniformize(const EROI<EC24>* src, EC24 light, const EC24Vector* reference, EROI<EC24>* dst,
                   int multiplicative) {
  SingleVector(src, light, reference, dst, multiplicative);
}
void ImgUniformize(const EROI<EC24>* src, EC24 light, const EC24Vector* lightReference, EC24 dark,
                   const EC24Vector* darkReference, EROI<EC24>* dst) {
  LightDarkVectors(src, light, lightReference, dark, darkReference, dst);
}
