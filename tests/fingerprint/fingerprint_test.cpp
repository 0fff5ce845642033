// Fingerprints of the operations that compute in floating point (and a few
// integer ones): each case runs on fixed generated inputs and hashes its
// outputs, and the hash must equal the one kept in fingerprints.inc, on
// every instruction-set path of every processor. A contracted multiply-add,
// a reordered sum or a different rounding anywhere moves a hash.
//
// To rebuild the table after an intended change of results:
//   MIREL_FINGERPRINT_PRINT=1 ./mirel_fingerprint_tests > /dev/null
// prints the lines of fingerprints.inc on standard error.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

// FNV-1a over everything a case produces.
struct Hash {
  std::uint64_t h = 1469598103934665603ull;
  void Add(const void* data, std::size_t n) {
    const unsigned char* p = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 1099511628211ull;
  }
  template <class T>
  void Roi(const EROI<T>& roi) {
    const std::vector<unsigned char> b = testsupport::Bytes(roi);
    Add(b.data(), b.size());
  }
  void F(float v) { Add(&v, sizeof v); }
  void U(std::uint32_t v) { Add(&v, sizeof v); }
};

// A generator whose sequence is fixed by its own arithmetic (the standard
// distributions may differ between libraries).
struct Gen {
  std::uint64_t s;
  explicit Gen(std::uint64_t seed) : s(seed) {}
  std::uint32_t Next() {
    std::uint64_t z = (s += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return static_cast<std::uint32_t>((z ^ (z >> 31)) >> 16);
  }
};

// A smooth picture with noise, so that gradients, thresholds and moments all
// have something to find.
template <class T>
void Picture(EImage<T>& img, int w, int h, std::uint64_t seed, unsigned maxValue = 255) {
  img.SetSize(w, h);
  Gen g(seed);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const unsigned base = ((x * 7 + y * 3) % 200) + ((x / 13 + y / 11) % 2) * 40;
      const unsigned v = (base + g.Next() % 16) * maxValue / 255;
      unsigned char* p = reinterpret_cast<unsigned char*>(img.GetImagePtr(x, y));
      if (sizeof(T) == 1) {
        p[0] = static_cast<unsigned char>(v);
      } else if (sizeof(T) == 2) {
        const std::uint16_t s = static_cast<std::uint16_t>(v);
        std::memcpy(p, &s, 2);
      } else {
        for (std::size_t c = 0; c < sizeof(T); ++c) p[c] = static_cast<unsigned char>(v + 37 * c);
      }
    }
  }
}

constexpr int kW = 97, kH = 61;

// The inner ROI most cases run on: an odd origin and width.
template <class T>
struct Framed {
  EImage<T> img;
  EROI<T> roi;
  Framed(std::uint64_t seed, unsigned maxValue = 255) {
    Picture(img, kW, kH, seed, maxValue);
    roi.Attach(&img);
    roi.SetPlacement(3, 2, kW - 7, kH - 5);
  }
};

template <class T>
struct Out {
  EImage<T> img;
  EROI<T> roi;
  Out(int w = kW - 7, int h = kH - 5) {
    img.SetSize(w + 5, h + 2);
    std::memset(img.GetImagePtr(0, 0), 0, static_cast<std::size_t>(img.GetRowPitch()) * img.GetHeight());
    roi.Attach(&img);
    roi.SetPlacement(1, 1, w, h);
  }
};

void FloatKernel(Hash& hash, int size, short rectifier, std::uint64_t seed) {
  Framed<EBW8> src(seed);
  Out<EBW8> dst;
  EKernel k(static_cast<short>(size), static_cast<short>(size), 1.37f, 11, rectifier, 0);
  Gen g(seed + 1);
  float* c = k.GetDataPtr();
  for (int i = 0; i < size * size; ++i) c[i] = (static_cast<int>(g.Next() % 2001) - 900) / 1733.0f;
  ImgConvolKernel(&src.roi, &dst.roi, &k);
  hash.Roi(dst.roi);
}

void Histogram8(EBWHistogramVector& hist, std::uint64_t seed) {
  Framed<EBW8> src(seed);
  ImgHistogram(&src.roi, &hist);
}

using Case = std::pair<const char*, std::function<void(Hash&)>>;

std::vector<Case> Cases() {
  std::vector<Case> cases;
  cases.push_back({"convolution float 3x3", [](Hash& h) { FloatKernel(h, 3, 0, 1); }});
  cases.push_back({"convolution float 4x4", [](Hash& h) { FloatKernel(h, 4, 0, 2); }});
  cases.push_back({"convolution float 5x5", [](Hash& h) { FloatKernel(h, 5, 0, 3); }});
  cases.push_back({"convolution fixed 5x5 rectifier 1", [](Hash& h) { FloatKernel(h, 5, 1, 4); }});
  cases.push_back({"convolution fixed 3x3 rectifier 2", [](Hash& h) { FloatKernel(h, 3, 2, 5); }});
  cases.push_back({"gain offset", [](Hash& h) {
    Framed<EBW8> a(6);
    Out<EBW8> b;
    ImgGainOffset(&a.roi, &b.roi, 1.173f, -13.61f);
    h.Roi(b.roi);
    Framed<EBW16> c(7, 65535);
    Out<EBW16> d;
    ImgGainOffset(&c.roi, &d.roi, 0.731f, 900.3f);
    h.Roi(d.roi);
    Framed<EC24> e(8);
    Out<EC24> f;
    ImgGainOffset(&e.roi, &f.roi, EColor(1.1f, 0.9f, 1.37f), EColor(3.3f, -7.7f, 0.5f));
    h.Roi(f.roi);
  }});
  cases.push_back({"histogram features", [](Hash& h) {
    EBWHistogramVector hist;
    Histogram8(hist, 9);
    for (int f = 0; f <= 8; ++f)
      h.F(ImgAnalyseHistogram(&hist, static_cast<IMG_HISTOGRAM_FEATURE>(f), 5, 250));
  }});
  cases.push_back({"threshold selection", [](Hash& h) {
    const IMG_THRESHOLD_MODES modes[] = {IMG_THRESHOLD_MIN_SQUARED_DISTANCE, IMG_THRESHOLD_MIN_DISTANCE,
                                         IMG_THRESHOLD_ISODATA, IMG_THRESHOLD_MAX_ENTROPY,
                                         IMG_THRESHOLD_MIN_RESIDUE, IMG_THRESHOLD_RELATIVE};
    Framed<EBW8> src(10);
    for (IMG_THRESHOLD_MODES m : modes) h.U(ImgAutoThreshold(&src.roi, m, 0.37f));
    EBWHistogramVector hist;
    Histogram8(hist, 10);
    for (IMG_THRESHOLD_MODES m : modes) {
      unsigned int t = m;
      float below = 0, above = 0;
      ImgHistogramThreshold(&hist, t, below, above, 0.61f, 0, 255);
      h.U(t), h.F(below), h.F(above);
    }
    EBW8 t1, t2;
    float a, b, c;
    h.F(ImgTwoLevelsMinResidueThreshold(&hist, t1, a, b));
    h.U(t1), h.F(a), h.F(b);
    h.F(ImgThreeLevelsMinResidueThreshold(&hist, t1, t2, a, b, c));
    h.U(t1), h.U(t2), h.F(a), h.F(b), h.F(c);
    h.U(ImgMaxEntropyThreshold(&hist, a, b));
    h.F(a), h.F(b);
    h.U(ImgMinResidueThreshold(&hist, a, b));
    h.F(a), h.F(b);
  }});
  cases.push_back({"affine resampling", [](Hash& h) {
    Framed<EBW8> src(11);
    for (int bits : {0, 4, 8}) {
      Out<EBW8> d;
      ImgScaleRotate(&src.roi, 40.3f, 27.1f, 44.9f, 29.7f, 1.13f, 0.87f, 17.3f, &d.roi, bits);
      h.Roi(d.roi);
      Out<EBW8> e;
      ImgLinearTransform(&src.roi, 0.93f, 0.21f, -3.7f, -0.19f, 1.07f, 5.3f, &e.roi, bits);
      h.Roi(e.roi);
    }
    Framed<EBW16> s16(12, 65535);
    Out<EBW16> d16;
    ImgScaleRotate(&s16.roi, 40.3f, 27.1f, 44.9f, 29.7f, 0.77f, 1.21f, -31.9f, &d16.roi, 8);
    h.Roi(d16.roi);
    Framed<EC24> s24(13);
    Out<EC24> d24;
    ImgRegister(&s24.roi, &d24.roi, 10.5f, 7.25f, 11.75f, 6.5f, 4);
    h.Roi(d24.roi);
  }});
  cases.push_back({"circle warp", [](Hash& h) {
    Framed<EBW8> src(14);
    EImage<EBW16> wx, wy;
    ImgSetCircleWarp(45.3f, 28.9f, 20, 26.7f, 3.1f, 64, 0.0f, 300.0f, &wx, &wy);
    EImage<EBW8> dst(64, 20);
    ImgWarp(&src.roi, &dst, &wx, &wy, 3, -2);
    h.Roi(wx), h.Roi(wy), h.Roi(dst);
  }});
  cases.push_back({"recursive average", [](Hash& h) {
    EBW16Vector lut;
    ImgSetRecursiveAverageLUT(&lut, 0.37f, 13.5f);
    for (unsigned i = 0; i < lut.GetNumElements(); ++i) h.U(lut[i]);
    Out<EBW16> store;
    Out<EBW8> dst;
    for (std::uint64_t s = 15; s < 18; ++s) {
      Framed<EBW8> src(s);
      ImgRecursiveAverage(&src.roi, &store.roi, &dst.roi, &lut);
    }
    h.Roi(store.roi), h.Roi(dst.roi);
  }});
  cases.push_back({"moments and inertia", [](Hash& h) {
    Framed<EBW8> src(18);
    float m[10];
    ImgWeightedMoments(&src.roi, m[0], m[1], m[2], m[3], m[4], m[5]);
    for (int i = 0; i < 6; ++i) h.F(m[i]);
    ImgBinaryMoments(&src.roi, 120, m[0], m[1], m[2]);
    for (int i = 0; i < 3; ++i) h.F(m[i]);
    ImgInertia(&src.roi, 120, m[0], m[1], m[2], &m[3], &m[4]);
    for (int i = 0; i < 5; ++i) h.F(m[i]);
    ImgInertia(&src.roi, m[0], m[1], m[2], &m[3], &m[4]);
    for (int i = 0; i < 5; ++i) h.F(m[i]);
    ImgGravityCenter(&src.roi, 99, m[0], m[1]);
    ImgCentroid(&src.roi, m[2], m[3]);
    for (int i = 0; i < 4; ++i) h.F(m[i]);
  }});
  cases.push_back({"statistics", [](Hash& h) {
    Framed<EBW8> a(19);
    Framed<EBW16> b(20, 65535);
    Framed<EC24> c(21);
    float v, m, v1, v2;
    ImgPixelVariance(&a.roi, v, m), h.F(v), h.F(m);
    ImgPixelStdDev(&b.roi, v, m), h.F(v), h.F(m);
    ImgPixelAverage(&c.roi, v, m, v1), h.F(v), h.F(m), h.F(v1);
    h.F(ImgAverage(&a.roi));
    h.F(ImgVariance(&a.roi, &v2)), h.F(v2);
    h.F(ImgFocusing(&a.roi));
  }});
  cases.push_back({"noise and regression", [](Hash& h) {
    Framed<EBW8> a(22), b(23);
    for (int mode = 0; mode < 3; ++mode) {
      h.F(ImgRmsNoise(&a.roi, &b.roi, static_cast<IMG_REFERENCE_NOISE>(mode)));
      h.F(ImgSignalNoiseRatio(&a.roi, &b.roi, static_cast<IMG_REFERENCE_NOISE>(mode)));
    }
    float s, o, r;
    ImgLinearRegression(&a.roi, &b.roi, s, o, r, 3);
    h.F(s), h.F(o), h.F(r);
  }});
  cases.push_back({"smoothing", [](Hash& h) {
    Framed<EBW8> src(24);
    Out<EBW8> a, b, c;
    ImgConvolGaussian(&src.roi, &a.roi, 3, 2);
    ImgConvolUniform(&src.roi, &b.roi, 6, 4);
    ImgLocalDeviation(&src.roi, &c.roi, 3, 5);
    h.Roi(a.roi), h.Roi(b.roi), h.Roi(c.roi);
  }});
  cases.push_back({"fourier and complex images", [](Hash& h) {
    Framed<EBW8> src(25);
    const EROI<EBW8> square(&src.img, 5, 3, 32, 32);
    EImage<EComplex64> fast(32, 32), slow(32, 32);
    ImgFastDFT(&square, &fast, 0.37f);
    ImgSlowDFT(&square, &slow, 0.37f);
    h.Roi(fast), h.Roi(slow);
    EImage<EBW8> a(32, 32), b(32, 32), c(32, 32), d(32, 32);
    ImgComplexModulus(&fast, &a, 0.9f, 0, 1.f);
    ImgComplexModulus(&fast, &b, 0.9f, 1, 21.f);
    ImgComplexRescaledModulus(&fast, &c, 1.3f, 0, 1.f);
    ImgComplexArgument(&fast, &d);
    h.Roi(a), h.Roi(b), h.Roi(c), h.Roi(d);
    EVector energy;
    energy.SetType(7, 1, 0);
    ImgComplexDiscEnergy(&fast, &energy);
    h.Add(energy.GetDataPtr(), static_cast<std::size_t>(energy.GetNbGroup()) * energy.GetGroupBytes());
  }});
  cases.push_back({"gradient tables and diffusion", [](Hash& h) {
    EImage<EBW8> modulus, argument;
    ImgModulusImage(&modulus, 0.71f);
    ImgArgumentImage(&argument, EBW8(17), 90.f);
    h.Roi(modulus), h.Roi(argument);
    Framed<EBW8> src(26);
    Out<EBW8> d;
    ImgAnisotropicDiffusion(&src.roi, &d.roi, 3, 40);
    h.Roi(d.roi);
  }});
  cases.push_back({"16-bit convolution", [](Hash& h) {
    Framed<EBW16> src(27, 65535);
    for (int size : {3, 5}) {
      Out<EBW16> d;
      EKernel k(static_cast<short>(size), static_cast<short>(size), 0.013f, 7, 0, 0);
      Gen g(28);
      for (int i = 0; i < size * size; ++i) k.GetDataPtr()[i] = (static_cast<int>(g.Next() % 2001) - 900) / 1733.0f;
      ImgConvolKernel(&src.roi, &d.roi, &k);
      h.Roi(d.roi);
    }
  }});
  return cases;
}

// The table: one line per case, made by MIREL_FINGERPRINT_PRINT=1.
const std::map<std::string, std::uint64_t>& Table() {
  static const std::map<std::string, std::uint64_t> table = {
#include "fingerprints.inc"
  };
  return table;
}

TEST(Fingerprint, EveryPathReproducesTheTable) {
  const bool print = std::getenv("MIREL_FINGERPRINT_PRINT") != nullptr;
  const std::vector<Case> cases = Cases();
  for (int path : testsupport::AllPaths()) {
    testsupport::PathGuard guard(path);
    for (const Case& c : cases) {
      Hash h;
      c.second(h);
      EXPECT_EQ(EGetError(), 0) << c.first;
      if (print && path == -1) std::fprintf(stderr, "    {\"%s\", 0x%016llxull},\n", c.first,
                                            static_cast<unsigned long long>(h.h));
      const auto it = Table().find(c.first);
      if (it == Table().end()) {
        ADD_FAILURE() << "no fingerprint kept for \"" << c.first << "\"";
        continue;
      }
      EXPECT_EQ(it->second, h.h) << c.first << " on path " << path;
    }
  }
  EXPECT_EQ(Table().size(), cases.size()) << "the table keeps cases that no longer run";
}

}  // namespace
