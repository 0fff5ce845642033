// Every operation that runs in bands gives, on 2, 3 and 7 threads, every byte
// of the destination's parent, the code and the trace that it gives on one,
// on random images with random ROI geometry (heights from 1, so that bands
// of one row occur) and on the scalar and the best path.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

using Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold;
using testsupport::Rng;

// A random ROI of w x h pixels over a random parent.
template <class T>
struct Placed {
  EImage<T> image;
  EROI<T> roi;
  Placed(Rng& rng, int w, int h) {
    testsupport::PlaceRandom(image, roi, w, h, rng);
    testsupport::FillRandom(image, rng);
  }
};

// What a call leaves behind.
struct Result {
  std::vector<unsigned char> bytes;
  int code;
  std::string trace;
  bool operator==(const Result& o) const { return bytes == o.bytes && code == o.code && trace == o.trace; }
};

template <class T>
Result Left(const EImage<T>& dst) {
  return {testsupport::Snapshot(dst), EGetError(), EGetErrorTrace()};
}

int Width(Rng& rng) { return 1 + static_cast<int>(rng() % 67); }
int Height(Rng& rng) { return 1 + static_cast<int>(rng() % 29); }

// op(src, dst) with a separate destination.
template <class S, class D = S, class Op>
Result Unary(Rng& rng, Op op) {
  const int w = Width(rng), h = Height(rng);
  Placed<S> src(rng, w, h);
  Placed<D> dst(rng, w, h);
  op(&src.roi, &dst.roi);
  return Left(dst.image);
}

// op(a, b, dst).
template <class A, class B = A, class D = A, class Op>
Result Binary(Rng& rng, Op op) {
  const int w = Width(rng), h = Height(rng);
  Placed<A> a(rng, w, h);
  Placed<B> b(rng, w, h);
  Placed<D> dst(rng, w, h);
  op(&a.roi, &b.roi, &dst.roi);
  return Left(dst.image);
}

// op(roi, roi): in place, or on an overlapping ROI of the same image
// shifted by a row and a column when `shifted`.
template <class T, class Op>
Result Shared(Rng& rng, bool shifted, Op op) {
  const int w = Width(rng), h = Height(rng);
  Placed<T> img(rng, w, h);
  EROI<T> other(&img.image, shifted ? 1 : img.roi.GetOrgX(), shifted ? 1 : img.roi.GetOrgY(), w, h);
  op(&img.roi, &other);
  return Left(img.image);
}

struct Case {
  std::string name;
  std::function<Result(Rng&)> run;
};

template <class P>
using Fn2 = void (*)(EROI<P>*, EROI<P>*);

// A kernel of size `sx` x `sy` with random coefficients, gain, offset,
// outside value and rectifier; square kernels of 3, 5 or 7 take floating
// point only with rectifier 0 (`floating`).
EKernel RandomKernel(Rng& rng, short sx, short sy, bool floating) {
  const short rectifier = static_cast<short>(floating ? 0 : 1 + rng() % 3);
  EKernel k(sx, sy, 0.25f + static_cast<float>(rng() % 8) / 4.0f, static_cast<unsigned>(rng() % 40), rectifier,
            static_cast<unsigned>(rng() % 300));
  for (int i = 0; i < sx * sy; ++i) k.GetDataPtr()[i] = static_cast<float>(static_cast<int>(rng() % 9) - 4);
  return k;
}

std::vector<Case> Cases() {
  std::vector<Case> cases;
  auto add = [&](std::string name, std::function<Result(Rng&)> run) { cases.push_back({std::move(name), run}); };

  // Preset 3x3 filters, separate and overlapping destinations.
  const std::vector<std::pair<const char*, Fn2<EBW8>>> presets8 = {
      {"SobelX", ImgConvolSobelX},     {"SobelY", ImgConvolSobelY},         {"Sobel", ImgConvolSobel},
      {"PrewittX", ImgConvolPrewittX}, {"Prewitt", ImgConvolPrewitt},       {"GradientY", ImgConvolGradientY},
      {"Laplacian4", ImgConvolLaplacian4}, {"LaplacianY", ImgConvolLaplacianY},
      {"Highpass2", ImgConvolHighpass2},   {"Lowpass3", ImgConvolLowpass3}, {"Lowpass2", ImgConvolLowpass2}};
  for (const auto& p : presets8) {
    Fn2<EBW8> f8 = p.second;
    add(std::string(p.first) + " BW8", [f8](Rng& r) { return Unary<EBW8>(r, f8); });
    add(std::string(p.first) + " BW8 overlapping", [f8](Rng& r) { return Shared<EBW8>(r, true, f8); });
  }
  add("SobelX BW16", [](Rng& r) { return Unary<EBW16>(r, static_cast<Fn2<EBW16>>(ImgConvolSobelX)); });
  add("Laplacian8 BW16", [](Rng& r) { return Unary<EBW16>(r, static_cast<Fn2<EBW16>>(ImgConvolLaplacian8)); });

  // Fixed 5x5 and 7x7 filters.
  using Fixed8 = void (*)(const EROI<EBW8>*, EROI<EBW8>*);
  using Fixed16 = void (*)(const EROI<EBW16>*, EROI<EBW16>*);
  add("Gaussian5x5 BW8", [](Rng& r) { return Unary<EBW8>(r, static_cast<Fixed8>(ImgConvolGaussian5x5)); });
  add("Uniform7x7 BW8", [](Rng& r) { return Unary<EBW8>(r, static_cast<Fixed8>(ImgConvolUniform7x7)); });
  add("Gaussian7x7 BW16", [](Rng& r) { return Unary<EBW16>(r, static_cast<Fixed16>(ImgConvolGaussian7x7)); });
  add("Gaussian5x5 overlapping",
      [](Rng& r) { return Shared<EBW8>(r, true, static_cast<Fixed8>(ImgConvolGaussian5x5)); });
  add("Uniform5x5 in place", [](Rng& r) { return Shared<EBW8>(r, false, static_cast<Fixed8>(ImgConvolUniform5x5)); });

  // Kernels of every route: the three fixed-point arithmetics (3x3, 5x5,
  // 7x7 by rectifier) and floating point (rectifier 0, other sizes).
  struct Shape {
    short sx, sy;
    bool floating;
  };
  for (const Shape& sh : {Shape{3, 3, false}, Shape{5, 5, false}, Shape{7, 7, false}, Shape{3, 3, true},
                          Shape{7, 7, true}, Shape{4, 3, true}, Shape{1, 6, true}, Shape{9, 9, true}}) {
    const std::string kind = " " + std::to_string(sh.sx) + "x" + std::to_string(sh.sy) + (sh.floating ? " r0" : "");
    add("ConvolKernel BW8" + kind, [sh](Rng& r) {
      const EKernel k = RandomKernel(r, sh.sx, sh.sy, sh.floating);
      return Unary<EBW8>(r, [&k](auto s, auto d) { ImgConvolKernel(s, d, &k); });
    });
    add("ConvolKernel BW16" + kind, [sh](Rng& r) {
      const EKernel k = RandomKernel(r, sh.sx, sh.sy, sh.floating);
      return Unary<EBW16>(r, [&k](auto s, auto d) { ImgConvolKernel(s, d, &k); });
    });
    add("ConvolKernel overlapping" + kind, [sh](Rng& r) {
      const EKernel k = RandomKernel(r, sh.sx, sh.sy, sh.floating);
      return Shared<EBW8>(r, true, [&k](auto s, auto d) { ImgConvolKernel(s, d, &k); });
    });
    add("ConvolKernel in place" + kind, [sh](Rng& r) {
      const EKernel k = RandomKernel(r, sh.sx, sh.sy, sh.floating);
      return Shared<EBW8>(r, false, [&k](auto s, auto d) { ImgConvolKernel(s, d, &k); });
    });
    if (sh.floating || sh.sx != sh.sy) continue;
    add("ConvolSymmetricKernel BW8" + kind, [sh](Rng& r) {
      const EKernel k = RandomKernel(r, sh.sx, sh.sy, false);
      return Unary<EBW8>(r, [&k](auto s, auto d) { ImgConvolSymmetricKernel(s, d, &k); });
    });
    add("ConvolSymmetricKernel BW16" + kind, [sh](Rng& r) {
      const EKernel k = RandomKernel(r, sh.sx, sh.sy, false);
      return Unary<EBW16>(r, [&k](auto s, auto d) { ImgConvolSymmetricKernel(s, d, &k); });
    });
  }

  // Sliding box sums of any window, and the local deviation.
  auto half = [](Rng& r) { return static_cast<unsigned>(r() % 2 ? r() % 9 : r() % 70); };
  add("ConvolUniform BW8", [half](Rng& r) {
    const unsigned hx = 2 + half(r), hy = half(r);
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgConvolUniform(s, d, hx, hy); });
  });
  add("LocalAverage BW16", [half](Rng& r) {
    const unsigned hx = half(r), hy = 2 + half(r);
    return Unary<EBW16>(r, [=](auto s, auto d) { ImgLocalAverage(s, d, hx, hy); });
  });
  add("ConvolUniform overlapping", [half](Rng& r) {
    const unsigned hx = 2 + half(r), hy = 2 + half(r);
    return Shared<EBW8>(r, true, [=](auto s, auto d) { ImgConvolUniform(s, d, hx, hy); });
  });
  add("LocalDeviation BW8", [half](Rng& r) {
    const unsigned hx = half(r);
    const int hy = static_cast<int>(half(r));
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgLocalDeviation(s, d, hx, hy); });
  });
  add("LocalDeviation BW16 overlapping", [half](Rng& r) {
    const unsigned hx = half(r);
    const int hy = static_cast<int>(half(r));
    return Shared<EBW16>(r, true, [=](auto s, auto d) { ImgLocalDeviation(s, d, hx, hy); });
  });
  add("LocalDeviation BW16", [half](Rng& r) {
    const unsigned hx = half(r);
    const int hy = static_cast<int>(half(r));
    return Unary<EBW16>(r, [=](auto s, auto d) { ImgLocalDeviation(s, d, hx, hy); });
  });

  // Gradients: pairs of differences, and their lookup in a random table.
  add("GradientVector BW8", [](Rng& r) {
    return Unary<EBW8, EBW32>(r, [](auto s, auto d) { ImgGradientVector(s, d); });
  });
  add("GradientVector BW16", [](Rng& r) {
    return Unary<EBW16, EBW32>(r, [](auto s, auto d) { ImgGradientVector(s, d); });
  });
  auto table = std::make_shared<EImage<EBW8>>(512, 512);
  add("GradientScalar BW8", [table](Rng& r) {
    testsupport::FillRandom(*table, r);
    return Unary<EBW8>(r, [table](auto s, auto d) { ImgGradientScalar(s, d, table.get()); });
  });
  add("GradientScalar BW8 in place", [table](Rng& r) {
    testsupport::FillRandom(*table, r);
    return Shared<EBW8>(r, false, [table](auto s, auto d) { ImgGradientScalar(s, d, table.get()); });
  });
  add("GradientScalar BW32 pairs", [table](Rng& r) {
    testsupport::FillRandom(*table, r);
    return Unary<EBW32, EBW8>(r, [table](auto s, auto d) { ImgGradientScalar(s, d, table.get()); });
  });

  // Medians.
  add("Median BW8", [](Rng& r) { return Unary<EBW8>(r, [](auto s, auto d) { ImgMedian(s, d); }); });
  add("Median BW16", [](Rng& r) { return Unary<EBW16>(r, [](auto s, auto d) { ImgMedian(s, d); }); });
  add("Median in place", [](Rng& r) { return Shared<EBW8>(r, true, [](auto s, auto d) { ImgMedian(s, d); }); });
  add("Median border", [](Rng& r) {
    const int border = static_cast<int>(r() % 256);
    return Unary<EBW8>(r, [border](auto s, auto d) { ImgMedian(s, d, border); });
  });

  // Boxes: running extrema from half-size 4, passes below.
  add("ErodeBox BW8", [](Rng& r) {
    const unsigned hw = r() % 20, hh = r() % 20;
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgErodeBox(s, d, hw, hh); });
  });
  add("DilateBox BW16", [](Rng& r) {
    const unsigned hw = r() % 20, hh = r() % 20;
    return Unary<EBW16>(r, [=](auto s, auto d) { ImgDilateBox(s, d, hw, hh); });
  });
  add("ErodeBox in place", [](Rng& r) {
    const unsigned hw = 4 + r() % 9, hh = r() % 9;
    return Shared<EBW8>(r, false, [=](auto s, auto) { ImgErodeBox(s, nullptr, hw, hh); });
  });
  add("DilateBox overlapping", [](Rng& r) {
    const unsigned hw = 4 + r() % 9, hh = 4 + r() % 9;
    return Shared<EBW8>(r, true, [=](auto s, auto d) { ImgDilateBox(s, d, hw, hh); });
  });

  add("ErodeBox small in place", [](Rng& r) {
    const unsigned hw = r() % 4, hh = r() % 4;
    return Shared<EBW8>(r, false, [=](auto s, auto) { ImgErodeBox(s, nullptr, hw, hh); });
  });
  add("DilateBox small overlapping", [](Rng& r) {
    const unsigned hw = r() % 4, hh = r() % 4;
    return Shared<EBW16>(r, true, [=](auto s, auto d) { ImgDilateBox(s, d, hw, hh); });
  });
  add("DilateDisk BW16 in place", [](Rng& r) {
    const unsigned radius = r() % 5;
    return Shared<EBW16>(r, false, [=](auto s, auto) { ImgDilateDisk(s, nullptr, radius); });
  });
  add("ErodeDisk C24", [](Rng& r) {
    const unsigned radius = r() % 4;
    return Unary<EC24>(r, [=](auto s, auto d) { ImgErodeDisk(s, d, radius); });
  });
  add("Erode older passes", [](Rng& r) {
    const int passes = static_cast<int>(r() % 4), border = static_cast<int>(r() % 256);
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgErode(s, d, passes, border); });
  });
  add("Open older in place", [](Rng& r) {
    const int passes = 1 + static_cast<int>(r() % 3);
    return Shared<EBW8>(r, false, [=](auto s, auto d) { ImgOpen(s, d, passes, 0, 255); });
  });
  add("Dilate older C24", [](Rng& r) {
    return Unary<EC24>(r, [](auto s, auto d) { ImgDilate(s, d, 2, EC24(9, 0, 200)); });
  });

  // Resampling.
  for (int bits : {0, 4, 8}) {
    add("ScaleRotate BW8 bits " + std::to_string(bits), [bits](Rng& r) {
      const float angle = static_cast<float>(r() % 360), scale = 0.5f + static_cast<float>(r() % 100) / 50.0f;
      return Unary<EBW8>(r, [=](auto s, auto d) {
        ImgScaleRotate(s, s->GetWidth() / 2.0f, s->GetHeight() / 2.0f, d->GetWidth() / 2.0f,
                       d->GetHeight() / 2.0f, scale, scale, angle, d, bits);
      });
    });
  }
  add("LinearTransform BW8 scale", [](Rng& r) {
    const float sx = 0.3f + static_cast<float>(r() % 100) / 40.0f;
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgLinearTransform(s, sx, 0.f, 1.5f, 0.f, sx, -0.5f, d, 8); });
  });
  add("ScaleRotate BW16", [](Rng& r) {
    const float angle = static_cast<float>(r() % 360);
    return Unary<EBW16>(r, [=](auto s, auto d) { ImgScaleRotate(s, 3.f, 2.f, 4.f, 1.f, 1.1f, 0.9f, angle, d, 8); });
  });
  add("ScaleRotate C24", [](Rng& r) {
    const float angle = static_cast<float>(r() % 360);
    return Unary<EC24>(r, [=](auto s, auto d) { ImgScaleRotate(s, 3.f, 2.f, 4.f, 1.f, 1.f, 1.f, angle, d, 4); });
  });
  add("ScaleRotate overlapping", [](Rng& r) {
    return Shared<EBW8>(r, true, [](auto s, auto d) { ImgScaleRotate(s, 1.f, 1.f, 2.f, 2.f, 1.f, 1.f, 10.f, d, 8); });
  });

  // The pixelwise engine: every operation code on every form, refusals
  // included (the code and trace must match too).
  for (int op = 0; op <= 35; ++op) {
    const auto o = static_cast<ARITH_LOGIC_OPERATIONS>(op);
    const std::string n = " op " + std::to_string(op);
    add("Oper BW8 image image" + n, [o](Rng& r) {
      return Binary<EBW8>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); });
    });
    add("Oper BW8 image const" + n, [o](Rng& r) {
      const EBW8 c(static_cast<unsigned char>(r()));
      return Unary<EBW8>(r, [o, c](auto a, auto d) { ImgOper(o, a, c, d); });
    });
    add("Oper BW8 const image" + n, [o](Rng& r) {
      const EBW8 c(static_cast<unsigned char>(r()));
      return Unary<EBW8>(r, [o, c](auto a, auto d) { ImgOper(o, c, a, d); });
    });
    add("Oper C24 image image" + n, [o](Rng& r) {
      return Binary<EC24>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); });
    });
    add("Oper C24 image const" + n, [o](Rng& r) {
      const EC24 c(static_cast<unsigned char>(r()), 7, static_cast<unsigned char>(r()));
      return Unary<EC24>(r, [o, c](auto a, auto d) { ImgOper(o, a, c, d); });
    });
    add("Oper BW8 C24" + n, [o](Rng& r) {
      return Binary<EBW8, EC24, EC24>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); });
    });
    add("Oper BW16 image image" + n, [o](Rng& r) {
      return Binary<EBW16>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); });
    });
    add("Oper BW16 const image" + n, [o](Rng& r) {
      const EBW16 c(static_cast<unsigned short>(r()));
      return Unary<EBW16>(r, [o, c](auto a, auto d) { ImgOper(o, c, a, d); });
    });
    add("Oper BW16 image const" + n, [o](Rng& r) {
      const EBW16 c(static_cast<unsigned short>(r() % 20));
      return Unary<EBW16>(r, [o, c](auto a, auto d) { ImgOper(o, a, c, d); });
    });
    add("Oper BW8 BW8 to BW16" + n, [o](Rng& r) {
      return Binary<EBW8, EBW8, EBW16>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); });
    });
    add("Oper BW16 BW8 to BW16" + n, [o](Rng& r) {
      return Binary<EBW16, EBW8, EBW16>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); });
    });
  }
  for (int op : {0, 1, 34}) {
    const auto o = static_cast<ARITH_LOGIC_OPERATIONS>(op);
    add("Oper BW8 to C24 op " + std::to_string(op),
        [o](Rng& r) { return Unary<EBW8, EC24>(r, [o](auto a, auto d) { ImgOper(o, a, d); }); });
    add("Oper C24 unary op " + std::to_string(op),
        [o](Rng& r) { return Unary<EC24>(r, [o](auto a, auto d) { ImgOper(o, a, d); }); });
    add("Oper BW16 unary op " + std::to_string(op),
        [o](Rng& r) { return Unary<EBW16>(r, [o](auto a, auto d) { ImgOper(o, a, d); }); });
  }
  add("Oper BW8 BW8 to C24 overlay", [](Rng& r) {
    return Binary<EBW8, EBW8, EC24>(r, [](auto a, auto b, auto d) { ImgOper(ALO_OVERLAY, a, b, d); });
  });
  add("Oper BW8 add in place", [](Rng& r) {
    return Shared<EBW8>(r, false, [](auto a, auto d) { ImgOper(ALO_ADD, a, a, d); });
  });
  add("Oper BW8 add overlapping", [](Rng& r) {
    return Shared<EBW8>(r, true, [](auto a, auto d) { ImgOper(ALO_ADD, a, a, d); });
  });
  add("Copy BW8", [](Rng& r) { return Unary<EBW8>(r, [](auto a, auto d) { ImgCopy(a, d); }); });
  add("Copy BW16 overlapping", [](Rng& r) { return Shared<EBW16>(r, true, [](auto a, auto d) { ImgCopy(a, d); }); });
  add("Copy C24", [](Rng& r) { return Unary<EC24>(r, [](auto a, auto d) { ImgCopy(a, d); }); });
  add("Fill BW8", [](Rng& r) { return Unary<EBW8>(r, [](auto, auto d) { ImgCopy(EBW8(77), d); }); });
  add("Fill BW32", [](Rng& r) { return Unary<EBW32>(r, [](auto, auto d) { ImgCopy(EBW32(0x01020304u), d); }); });
  add("Fill C24", [](Rng& r) { return Unary<EC24>(r, [](auto, auto d) { ImgCopy(EC24(1, 2, 3), d); }); });

  // Thresholds, lookup tables, gain and offset.
  add("Threshold BW8", [](Rng& r) {
    const unsigned t = r() % 300;  // above 255: a relative threshold from the histogram
    return Unary<EBW8>(r, [t](auto s, auto d) { ImgThreshold(s, d, t, 10, 200, 0.3f); });
  });
  add("Threshold BW8 min residue", [](Rng& r) {
    return Unary<EBW8>(r, [](auto s, auto d) { ImgThreshold(s, d, IMG_THRESHOLD_MIN_RESIDUE); });
  });
  add("DoubleThreshold BW8", [](Rng& r) {
    return Unary<EBW8>(r, [](auto s, auto d) { ImgDoubleThreshold(s, d, 60, 180, 1, 2, 3); });
  });
  add("Threshold BW16", [](Rng& r) {
    return Unary<EBW16>(r, [](auto s, auto d) { ImgThreshold(s, d, 30000u, EBW16(5), EBW16(60000), 0.f); });
  });
  add("DoubleThreshold BW16", [](Rng& r) {
    return Unary<EBW16>(r, [](auto s, auto d) { ImgDoubleThreshold(s, d, 9000u, 40000u, EBW16(1), EBW16(2), EBW16(3)); });
  });
  add("Threshold C24 box", [](Rng& r) {
    return Unary<EC24, EBW8>(r, [](auto s, auto d) { ImgThreshold(s, d, EC24(40, 50, 60), EC24(200, 220, 250)); });
  });
  add("Threshold C24 lookup", [](Rng& r) {
    return Unary<EC24, EBW8>(r, [](auto s, auto d) {
      EColorLookup lookup;
      ImgThreshold(s, d, EC24(40, 50, 60), EC24(200, 220, 250), &lookup, EBW8(7), EBW8(9));
    });
  });
  add("Lut BW8", [](Rng& r) {
    EBW8Vector table;
    for (int i = 0; i < 256; ++i) table.AddElement(EBW8(static_cast<unsigned char>(r())));
    return Unary<EBW8>(r, [&table](auto s, auto d) { ImgLut(s, d, &table); });
  });
  add("Lut BW8 in place", [](Rng& r) {
    EBW8Vector table;
    for (int i = 0; i < 256; ++i) table.AddElement(EBW8(static_cast<unsigned char>(255 - i)));
    return Shared<EBW8>(r, false, [&table](auto s, auto d) { ImgLut(s, d, &table); });
  });
  add("Lut BW16 to BW8", [](Rng& r) {
    EBW8Vector table;
    for (int i = 0; i < 1024; ++i) table.AddElement(EBW8(static_cast<unsigned char>(r())));
    return Unary<EBW16, EBW8>(r, [&table](auto s, auto d) { ImgLut(s, d, &table, 3u); });
  });
  add("GainOffset BW8", [](Rng& r) {
    const float gain = static_cast<float>(r() % 400) / 100.f, offset = static_cast<float>(r() % 100) - 50.f;
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgGainOffset(s, d, gain, offset); });
  });
  add("GainOffset BW16", [](Rng& r) {
    return Unary<EBW16>(r, [](auto s, auto d) { ImgGainOffset(s, d, 1.7f, -300.f); });
  });
  add("GainOffset C24", [](Rng& r) {
    return Unary<EC24>(r, [](auto s, auto d) { ImgGainOffset(s, d, EColor(1.5f, 0.5f, 2.f), EColor(3.f, 9.f, -4.f)); });
  });
  add("Transform BW8 table", [](Rng& r) {
    return Unary<EBW8>(r, [](auto s, auto d) {
      ImgTransform(s, d, [](EBW8 p) { return EBW8(static_cast<unsigned char>(p.value * 3)); }, 1);
    });
  });

  // Local thresholds: running sums restarted at each band's first row, and
  // a grid of block histograms (a bad mode refused in every band).
  add("LocalMeanThreshold BW8", [](Rng& r) {
    const int half = static_cast<int>(r() % 12), offset = static_cast<int>(r() % 21) - 10;
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgLocalMeanThreshold(s, d, half, offset); });
  });
  add("LocalMeanThreshold in place", [](Rng& r) {
    const int half = static_cast<int>(r() % 6);
    return Shared<EBW8>(r, false, [=](auto s, auto d) { ImgLocalMeanThreshold(s, d, half, 3); });
  });
  add("AutoAdaptiveThreshold BW8", [](Rng& r) {
    const unsigned modes[] = {IMG_THRESHOLD_ISODATA, IMG_THRESHOLD_MIN_RESIDUE, 300u};
    const auto mode = static_cast<IMG_THRESHOLD_MODES>(modes[r() % 3]);
    const int bw = 1 + static_cast<int>(r() % 9), bh = 1 + static_cast<int>(r() % 5);
    return Unary<EBW8>(r, [=](auto s, auto d) { ImgAutoAdaptiveThreshold(s, d, mode, bw, bh); });
  });

  // Pictures drawn over images: rows of the picture on rows of the
  // destination, one band when the picture lies on the destination.
  add("Overlay C24 on C16", [](Rng& r) {
    const int x = static_cast<int>(r() % 11) - 5, y = static_cast<int>(r() % 11) - 5;
    return Unary<EC24, EC16>(r, [=](auto o, auto d) { ImgOverlay(o, d, x, y, *o->GetImagePtr(0, 0)); });
  });
  add("Overlay C24 overlapping", [](Rng& r) {
    const int x = static_cast<int>(r() % 5) - 2, y = static_cast<int>(r() % 5) - 2;
    return Shared<EC24>(r, true, [=](auto o, auto d) { ImgOverlay(o, d, x, y, *o->GetImagePtr(0, 0)); });
  });
  add("Overlay BW8 under C24", [](Rng& r) {
    const int x = static_cast<int>(r() % 11) - 5, y = static_cast<int>(r() % 11) - 5;
    return Binary<EBW8, EC24, EC24>(r, [=](auto s, auto o, auto d) {
      ImgOverlay(s, o, d, x, y, *o->GetImagePtr(0, 0));
    });
  });

  // Packed bit images at any bit offset: logic, fills, conversions,
  // thresholds, and the alignment that the unaligned forms go through.
  for (int op : {ALO_BIT_AND, ALO_BIT_XOR, ALO_SET_WHERE_ZERO, ALO_LESS_OR_EQUAL}) {
    const auto o = static_cast<ARITH_LOGIC_OPERATIONS>(op);
    add("Oper BW1 op " + std::to_string(op),
        [o](Rng& r) { return Binary<EBW1>(r, [o](auto a, auto b, auto d) { ImgOper(o, a, b, d); }); });
  }
  add("Oper BW1 invert", [](Rng& r) { return Unary<EBW1>(r, [](auto s, auto d) { ImgOper(ALO_INVERT, s, d); }); });
  add("Copy BW1 overlapping", [](Rng& r) { return Shared<EBW1>(r, true, [](auto s, auto d) { ImgCopy(s, d); }); });
  add("Fill BW1", [](Rng& r) { return Unary<EBW1>(r, [](auto, auto d) { ImgCopy(EBW1(1), d); }); });
  add("BW1Alignment", [](Rng& r) {
    return Unary<EBW1>(r, [](auto s, auto d) {
      try {
        ImgBW1Alignment(s, d);  // throws for a destination inside a byte
      } catch (const Corvane::Talmeer::Exception& e) {
        ESetError(e.GetCode());
      }
    });
  });
  add("Convert BW8 to BW1", [](Rng& r) { return Unary<EBW8, EBW1>(r, [](auto s, auto d) { ImgConvert(s, d); }); });
  add("Convert BW1 to BW16", [](Rng& r) {
    return Unary<EBW1, EBW16>(r, [](auto s, auto d) { ImgConvert(s, d, static_cast<unsigned short>(999)); });
  });
  add("Convert BW1 to BW8", [](Rng& r) {
    return Unary<EBW1, EBW8>(r, [](auto s, auto d) { ImgConvert(s, d, static_cast<unsigned char>(200)); });
  });
  add("Threshold BW16 to BW1", [](Rng& r) {
    const unsigned t = r() % 2 ? r() % 65536 : static_cast<unsigned>(IMG_THRESHOLD_ISODATA);
    return Unary<EBW16, EBW1>(r, [t](auto s, auto d) { ImgThreshold(s, d, t, 0.5f); });
  });

  // Halving and pyramids: each halved row from a pair of source rows; a
  // pyramid built from a source copies level 0 in the same bands.
  add("Halve BW8", [](Rng& r) {
    Placed<EBW8> src(r, Width(r), Height(r));
    EImage<EBW8> dst;
    ImgHalve(&src.roi, &dst, static_cast<int>(r() % 2));
    return Result{testsupport::Bytes(dst), EGetError(), EGetErrorTrace()};
  });
  add("Pyramid BW8 and gradients", [](Rng& r) {
    Placed<EBW8> src(r, Width(r), Height(r));
    EPyramid p, q;
    p.SetNumLevels(3, E_IMAGE_TYPE_BW8);
    p.SetReductionMode(static_cast<IMG_PYRAMIDAL_REDUCTION_MODE>(r() % 3));
    p.SetDropOdd(static_cast<int>(r() % 2));
    p.Build(&src.roi);
    // Fresh levels: their row bytes (the padding is not written).
    Result got{testsupport::Bytes(*static_cast<EImage<EBW8>*>(p.GetImage(2))), EGetError(), EGetErrorTrace()};
    q.SetNumLevels(2, E_IMAGE_TYPE_BW32_ALIAS);
    q.SetDropOdd(p.GetDropOdd());
    auto* pairs = static_cast<EImage<EBW32>*>(q.GetImage(0));
    pairs->SetSize(Width(r), Height(r));
    testsupport::FillRandom(*pairs, r);
    q.Build();
    for (const auto& part : {testsupport::Bytes(*static_cast<EImage<EBW8>*>(p.GetImage(0))),
                             testsupport::Bytes(*static_cast<EImage<EBW8>*>(p.GetImage(1))),
                             testsupport::Bytes(*static_cast<EImage<EBW32>*>(q.GetImage(1)))})
      got.bytes.insert(got.bytes.end(), part.begin(), part.end());
    return got;
  });

  // Interlaced frames: rows of one parity, pairs of rows, and the sharpness
  // score from row sums added in row order.
  add("GetFrame and SetFrame BW16", [](Rng& r) {
    const int w = Width(r), h = Height(r), frame = static_cast<int>(r() % 2);
    const int fh = frame != 0 ? h / 2 : (h + 1) / 2;
    Placed<EBW16> src(r, w, h), half(r, w, fh > 0 ? fh : 1), back(r, w, h);
    ImgGetFrame(&src.roi, &half.roi, frame);
    ImgSetFrame(&half.roi, &back.roi, frame);
    return Left(back.image);
  });
  add("RealignFrame C24 in place", [](Rng& r) {
    const int shift = static_cast<int>(r() % 7) - 3;
    const unsigned frame = r() % 2;
    return Shared<EC24>(r, false, [=](auto s, auto d) { ImgRealignFrame(s, d, shift, frame); });
  });
  add("RebuildFrame BW8 in place", [](Rng& r) {
    const unsigned frame = r() % 2;
    return Shared<EBW8>(r, false, [=](auto s, auto d) { ImgRebuildFrame(s, d, frame); });
  });
  add("RebuildFrame BW16 overlapping", [](Rng& r) {
    return Shared<EBW16>(r, true, [](auto s, auto d) { ImgRebuildFrame(s, d, 1u); });
  });
  add("SwapFrames C24", [](Rng& r) { return Unary<EC24>(r, [](auto s, auto d) { ImgSwapFrames(s, d); }); });
  add("SwapFrames BW8 in place", [](Rng& r) {
    return Shared<EBW8>(r, false, [](auto s, auto d) { ImgSwapFrames(s, d); });
  });
  add("Focusing BW16", [](Rng& r) {
    Placed<EBW16> src(r, Width(r), Height(r));
    const float f = ImgFocusing(&src.roi);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(&f);
    return Result{std::vector<unsigned char>(p, p + sizeof f), EGetError(), EGetErrorTrace()};
  });

  // Temporal averages: a few steps of a moving average (a power of two and
  // not) and of the recursive average.
  add("MovingAverage", [](Rng& r) {
    const int w = Width(r), h = Height(r);
    EMovingAverage average(r() % 2 ? 4u : 3u, w, h, 0);
    Placed<EBW8> dst(r, w, h);
    for (int step = 0; step < 5; ++step) {
      Placed<EBW8> src(r, w, h);
      average.Average(&src.roi, &dst.roi);
    }
    return Left(dst.image);
  });
  add("RecursiveAverage", [](Rng& r) {
    EBW16Vector lut;
    ImgSetRecursiveAverageLUT(&lut, 0.5f, static_cast<float>(r() % 3));
    const int w = Width(r), h = Height(r);
    Placed<EBW16> store(r, w, h);
    return Unary<EBW8>(r, [&](auto s, auto d) {
      for (int step = 0; step < 3; ++step) ImgRecursiveAverage(s, &store.roi, d, &lut);
    });
  });

  // Bit-image passes, in place from copies of each band's edge rows; the
  // two-level median with a destination apart.
  add("ErodeBox BW1", [](Rng& r) {
    const unsigned hw = r() % 4, hh = r() % 4;
    return Unary<EBW1>(r, [=](auto s, auto d) { ImgErodeBox(s, d, hw, hh); });
  });
  add("DilateDisk BW1 in place", [](Rng& r) {
    const unsigned radius = r() % 4;
    return Shared<EBW1>(r, false, [=](auto s, auto) { ImgDilateDisk(s, nullptr, radius); });
  });
  add("Median BW1 overlapping", [](Rng& r) {
    return Shared<EBW1>(r, true, [](auto s, auto d) { ImgMedian(s, d); });
  });
  add("OpenBox BW1 in place", [](Rng& r) {
    const unsigned hw = 1 + r() % 3;
    return Shared<EBW1>(r, false, [=](auto s, auto) { ImgOpenBox(s, nullptr, hw, hw); });
  });
  add("BiLevelMedian", [](Rng& r) { return Unary<EBW8>(r, [](auto s, auto d) { ImgBiLevelMedian(s, d); }); });
  add("BiLevelMedian in place", [](Rng& r) {
    return Shared<EBW8>(r, false, [](auto s, auto) { ImgBiLevelMedian(s, nullptr); });
  });

  // Depth conversions.
  add("Convert BW16 to BW8", [](Rng& r) {
    const unsigned shift = r() % 12;
    return Unary<EBW16, EBW8>(r, [shift](auto s, auto d) { ImgConvert(s, d, shift); });
  });
  add("Convert BW8 to BW32", [](Rng& r) {
    const unsigned shift = r() % 30;
    return Unary<EBW8, EBW32>(r, [shift](auto s, auto d) { ImgConvert(s, d, shift); });
  });
  add("ConvertTo422", [](Rng& r) { return Unary<EBW8, EBW16>(r, [](auto s, auto d) { ImgConvertTo422(s, d); }); });

  // Colour and float conversions, normalisation and flat-field correction.
  add("Convert C24 to BW8", [](Rng& r) { return Unary<EC24, EBW8>(r, [](auto s, auto d) { ImgConvert(s, d); }); });
  add("Convert BW8 to C24", [](Rng& r) { return Unary<EBW8, EC24>(r, [](auto s, auto d) { ImgConvert(s, d); }); });
  add("Convert C24 to C15", [](Rng& r) { return Unary<EC24, EC15>(r, [](auto s, auto d) { ImgConvert(s, d); }); });
  add("Convert C16 to C24", [](Rng& r) { return Unary<EC16, EC24>(r, [](auto s, auto d) { ImgConvert(s, d); }); });
  add("Convert C24 to C24A", [](Rng& r) { return Unary<EC24, EC24A>(r, [](auto s, auto d) { ImgConvert(s, d); }); });
  add("Convert F32 to BW16", [](Rng& r) {
    return Unary<EFLOAT32, EBW16>(r, [](auto s, auto d) { ImgConvert(s, d); });
  });
  add("Convert F64 to BW32", [](Rng& r) {
    return Unary<EFLOAT64, EBW32>(r, [](auto s, auto d) { ImgConvert(s, d); });
  });
  add("Convert BW8 to F32", [](Rng& r) {
    return Unary<EBW8, EFLOAT32>(r, [](auto s, auto d) { ImgConvert(s, d); });
  });
  add("Convert C24 with alpha", [](Rng& r) {
    return Binary<EC24, EBW8, EC24A>(r, [](auto s, auto a, auto d) { ImgConvert(s, a, d); });
  });
  add("Convert C24A to C24 and alpha", [](Rng& r) {
    const int w = Width(r), h = Height(r);
    Placed<EC24A> src(r, w, h);
    Placed<EC24> dst(r, w, h);
    Placed<EBW8> alpha(r, w, h);
    ImgConvert(&src.roi, &dst.roi, &alpha.roi);
    Result got = Left(dst.image);
    const auto a = testsupport::Snapshot(alpha.image);
    got.bytes.insert(got.bytes.end(), a.begin(), a.end());
    return got;
  });
  add("Normalize BW16", [](Rng& r) {
    return Unary<EBW16>(r, [](auto s, auto d) { ImgNormalize(s, d, 30000.f, 9000.f); });
  });
  add("Uniformize BW8 light/dark", [](Rng& r) {
    return Binary<EBW8>(r, [](auto s, auto l, auto d) { ImgUniformize(s, EBW8(200), l, EBW8(20), s, d); });
  });
  add("Uniformize BW16 multiplicative in place", [](Rng& r) {
    return Shared<EBW16>(r, false, [](auto s, auto d) { ImgUniformize(s, EBW16(40000), s, d, 1); });
  });
  add("Uniformize C24 vector", [](Rng& r) {
    return Unary<EC24>(r, [&r](auto s, auto d) {
      EC24Vector ref;
      for (int i = 0; i < d->GetWidth(); ++i) ref.AddElement(EC24(static_cast<unsigned char>(r()), 7, static_cast<unsigned char>(r())));
      ImgUniformize(s, EC24(250, 128, 9), &ref, d, static_cast<int>(r() % 2));
    });
  });

  // Shrinking: each destination row from a block of source rows.
  auto shrink = [](auto zero, bool overlapping) {
    using P = decltype(zero);
    return [overlapping](Rng& r) {
      const int w = Width(r), h = Height(r), dw = 1 + static_cast<int>(r() % w), dh = 1 + static_cast<int>(r() % h);
      Placed<P> src(r, w, h);
      Placed<P> other(r, dw, dh);
      EROI<P> near(&src.image, 0, 0, dw, dh);
      ImgShrink(&src.roi, overlapping ? &near : &other.roi);
      return Left(overlapping ? src.image : other.image);
    };
  };
  add("Shrink BW8", shrink(EBW8{}, false));
  add("Shrink BW16", shrink(EBW16{}, false));
  add("Shrink C24", shrink(EC24{}, false));
  add("Shrink BW8 overlapping", shrink(EBW8{}, true));

  // Warps: two maps drawing 0 outside, and one packed map whose first entry
  // outside the source stops the call.
  auto map = [](Rng& r, int w, int h, int range) {
    auto m = std::make_shared<EImage<EBW16>>(w, h);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        m->GetImagePtr(x, y)->value = static_cast<unsigned short>(static_cast<int>(r() % range) - 3);
    return m;
  };
  add("Warp BW8 two maps", [map](Rng& r) {
    return Unary<EBW8>(r, [&](auto s, auto d) {
      auto mx = map(r, d->GetWidth(), d->GetHeight(), 80), my = map(r, d->GetWidth(), d->GetHeight(), 40);
      ImgWarp(s, d, mx.get(), my.get(), 1, -1);
    });
  });
  add("Warp C24 two maps", [map](Rng& r) {
    return Unary<EC24>(r, [&](auto s, auto d) {
      auto mx = map(r, d->GetWidth(), d->GetHeight(), 80), my = map(r, d->GetWidth(), d->GetHeight(), 40);
      ImgWarp(s, d, mx.get(), my.get(), 0, 2);
    });
  });
  add("Warp BW8 packed map", [](Rng& r) {
    return Unary<EBW8>(r, [&r](auto s, auto d) {
      EImage<EBW32> m(d->GetWidth() + static_cast<int>(r() % 3), d->GetHeight());
      const bool outside = r() % 2 != 0;  // some entry outside the source, at most one in 200
      for (int y = 0; y < m.GetHeight(); ++y)
        for (int x = 0; x < m.GetWidth(); ++x) {
          unsigned px = r() % s->GetWidth(), py = r() % s->GetHeight();
          if (outside && r() % 200 == 0) px += s->GetWidth();
          m.GetImagePtr(x, y)->value = px | (py << 16);
        }
      ImgWarp(s, d, &m);
    });
  });

  // Histograms counted in bands and merged; a large smooth image takes the
  // pair counter on one thread and byte counters in bands.
  // Reductions merged from bands: what they give, packed as bytes.
  auto packed = [](std::initializer_list<std::pair<const void*, std::size_t>> parts) {
    Result out{{}, EGetError(), EGetErrorTrace()};
    for (const auto& part : parts) {
      const unsigned char* p = static_cast<const unsigned char*>(part.first);
      out.bytes.insert(out.bytes.end(), p, p + part.second);
    }
    return out;
  };
  auto field = [packed](auto zero) {
    using P = decltype(zero);
    return [packed](Rng& r) {
      Placed<P> src(r, Width(r), Height(r));
      const unsigned bits = 1 + r() % 8, msb = bits - 1 + r() % (sizeof(P) * 8 - bits + 1);
      EBWHistogramVector bins;
      ImgHistogram(&src.roi, &bins, msb, bits, static_cast<int>(r() % 2));
      return packed({{bins.GetDataPtr(), bins.GetNumElements() * sizeof(unsigned int)}});
    };
  };
  add("Histogram BW16 field", field(EBW16{}));
  add("Histogram BW32 field", field(EBW32{}));
  auto project = [packed](auto zero, auto vector, bool onRow) {
    using P = decltype(zero);
    using V = decltype(vector);
    return [packed, onRow](Rng& r) {
      Placed<P> src(r, Width(r), Height(r));
      V v;
      if (onRow) ImgProjectOnARow(&src.roi, &v);
      else ImgProjectOnAColumn(&src.roi, &v);
      return packed({{v.GetDataPtr(), v.GetNumElements() * sizeof(*v.GetDataPtr())}});
    };
  };
  add("ProjectOnARow BW8 sum", project(EBW8{}, EBW32Vector{}, true));
  add("ProjectOnAColumn BW8 sum", project(EBW8{}, EBW32Vector{}, false));
  add("ProjectOnARow BW16 average", project(EBW16{}, EBW16Vector{}, true));
  add("ProjectOnAColumn BW16 sum", project(EBW16{}, EBW32Vector{}, false));
  add("ProjectOnARow C24", project(EC24{}, EC24Vector{}, true));
  add("ProjectOnAColumn C24", project(EC24{}, EC24Vector{}, false));
  add("PixelCount BW8", [packed](Rng& r) {
    Placed<EBW8> src(r, Width(r), Height(r));
    int c[3] = {};
    ImgPixelCount(&src.roi, static_cast<unsigned char>(r()), static_cast<unsigned char>(r()), c[0], c[1], c[2]);
    return packed({{c, sizeof c}});
  });
  add("PixelCount BW16", [packed](Rng& r) {
    Placed<EBW16> src(r, Width(r), Height(r));
    int c[3] = {};
    ImgPixelCount(&src.roi, EBW16(static_cast<unsigned short>(r())), EBW16(40000), c[0], c[1], c[2]);
    return packed({{c, sizeof c}});
  });
  add("PixelAverage BW8 BW16 C24", [packed](Rng& r) {
    const int w = Width(r), h = Height(r);
    Placed<EBW8> a(r, w, h);
    Placed<EBW16> b(r, w, h);
    Placed<EC24> c(r, w, h);
    float m[5] = {};
    ImgPixelAverage(&a.roi, m[0]);
    ImgPixelAverage(&b.roi, m[1]);
    ImgPixelAverage(&c.roi, m[2], m[3], m[4]);
    return packed({{m, sizeof m}});
  });
  // The caller's predicate runs on the calling thread alone: a count of the
  // pixels it saw there equals the pixel count only then.
  add("Count C24 on the calling thread", [packed](Rng& r) {
    Placed<EC24> src(r, Width(r), Height(r));
    static thread_local bool onCaller = false;
    onCaller = true;
    const unsigned n = ImgCount(&src.roi, [](EC24&) { return onCaller ? 1 : 0; });
    onCaller = false;
    return packed({{&n, sizeof n}});
  });

  auto histogram = [](const EROI<EBW8>* src) {
    EBWHistogramVector bins;
    ImgHistogram(src, &bins);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bins.GetDataPtr());
    return Result{std::vector<unsigned char>(p, p + bins.GetNumElements() * sizeof(unsigned int)), EGetError(),
                  EGetErrorTrace()};
  };
  add("Histogram BW8", [histogram](Rng& r) {
    Placed<EBW8> src(r, Width(r), Height(r));
    return histogram(&src.roi);
  });
  add("Histogram BW8 smooth", [histogram](Rng& r) {
    EImage<EBW8> image(1040, 1024);
    const int phase = static_cast<int>(r() % 64);
    for (int y = 0; y < image.GetHeight(); ++y)
      for (int x = 0; x < image.GetWidth(); ++x)
        image.GetImagePtr(x, y)->value = static_cast<unsigned char>((x + y + phase) / 9 + (x * y) % 3);
    return histogram(&image);
  });
  return cases;
}

class BandsOps : public ::testing::TestWithParam<int> {};

TEST_P(BandsOps, SameBytesOnEveryThreadCount) {
  const int path = GetParam();
  testsupport::PathGuard guard(path);
  ImgSetOverlayColor(EC24(200, 100, 50));
  for (const Case& c : Cases()) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
      ImgSetThreads(1);
      Rng one(seed);
      const Result expected = c.run(one);
      for (int threads : {2, 3, 7}) {
        ImgSetThreads(threads);
        mirel::testing::SetBandMinimum(0.0);  // split even the smallest image
        mirel::testing::SetBandsOnPoolOnly(1);
        // On three threads the bands are claimed last first: a band that
        // reads rows its neighbours write then sees them written.
        mirel::testing::SetBandsReversed(threads == 3);
        Rng rng(seed);
        const Result got = c.run(rng);
        mirel::testing::SetBandsReversed(0);
        mirel::testing::SetBandsOnPoolOnly(0);
        mirel::testing::SetBandMinimum(-1.0);
        ImgSetThreads(1);
        ASSERT_TRUE(got == expected) << c.name << ", seed " << seed << ", " << threads << " threads, path " << path
                                     << ": code " << got.code << " vs " << expected.code;
      }
    }
  }
  ImgSetOverlayColor(EC24(0, 0, 0));
}

INSTANTIATE_TEST_SUITE_P(Paths, BandsOps, ::testing::Values(-1, testsupport::AllPaths().back()));

// A call refused inside its bands reports on the caller, once, and writes
// nothing; the same call succeeds again on the same thread afterwards.
TEST(BandsOps, RefusalInsideTheBandsWritesNothing) {
  Rng rng(5);
  Placed<EBW8> src(rng, 64, 40), dst(rng, 64, 40);
  const auto before = testsupport::Snapshot(dst.image);
  ImgSetThreads(7);
  mirel::testing::SetBandMinimum(0.0);
  mirel::testing::SetBandsOnPoolOnly(1);
  // ALO_COPY passes the image, constant form's list and reaches a worker
  // that has no case for it.
  ImgOper(ALO_COPY, &src.roi, EBW8(3), &dst.roi);
  EXPECT_EQ(EGetError(), E_ERROR_INTERNAL);
  EXPECT_STREQ(EGetErrorTrace(), "ImgOper ( BW8 Image, Const to Image)");
  EXPECT_EQ(testsupport::Snapshot(dst.image), before);
  // Scratch refused before the bands: the kernel's floating-point table.
  EKernel floating = RandomKernel(rng, 5, 4, true);
  mirel::testing::FailFilterAllocations(1);
  ImgConvolKernel(&src.roi, &dst.roi, &floating);
  mirel::testing::FailFilterAllocations(0);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolKernel BW8");
  EXPECT_EQ(testsupport::Snapshot(dst.image), before);
  // A bad mode of the adaptive threshold fails in every band of its grid:
  // the first band's failure is reported, and nothing is drawn.
  ImgAutoAdaptiveThreshold(&src.roi, &dst.roi, static_cast<IMG_THRESHOLD_MODES>(300u), 4, 2);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogramThreshold <- ImgAutoAdaptiveThreshold");
  EXPECT_EQ(testsupport::Snapshot(dst.image), before);
  // A shrink to a larger size is refused before any band starts.
  Placed<EBW8> small(rng, 30, 20);
  ImgShrink(&small.roi, &dst.roi);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgShrink");
  EXPECT_EQ(testsupport::Snapshot(dst.image), before);
  // A packed warp entry outside the source in the last band: the rows
  // before it are drawn, nothing from it on.
  EImage<EBW32> map(64, 40);
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 64; ++x) map.GetImagePtr(x, y)->value = y == 35 && x == 7 ? 64u : 1u << 16;
  std::vector<unsigned char> old;
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 64; ++x) old.push_back(dst.roi.GetImagePtr(x, y)->value);
  ImgWarp(&src.roi, &dst.roi, &map);
  EXPECT_EQ(EGetError(), E_ERROR_WARP_OUTSIDE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgWarp");
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 64; ++x) {
      const bool drawn = y < 35 || (y == 35 && x < 7);
      ASSERT_EQ(dst.roi.GetImagePtr(x, y)->value,
                drawn ? src.roi.GetImagePtr(0, 1)->value : old[static_cast<std::size_t>(y * 64 + x)])
          << x << ", " << y;
    }
  ImgOper(ALO_ADD, &src.roi, EBW8(3), &dst.roi);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_NE(testsupport::Snapshot(dst.image), before);
  mirel::testing::SetBandsOnPoolOnly(0);
  mirel::testing::SetBandMinimum(-1.0);
  ImgSetThreads(1);
}

}  // namespace
