// Threshold selection on 256-bin and 65536-bin histograms.
#include "mirel/histogram/threshold_selection.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "mirel/foundation/error.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/runtime.h"
#include "mirel/foundation/untyped_vector.h"
#include "mirel/histogram/histogram.h"

namespace {

constexpr unsigned int kModeFirst = IMG_THRESHOLD_MIN_SQUARED_DISTANCE;  // -8
constexpr unsigned int kModeLastSearch = IMG_THRESHOLD_MIN_RESIDUE;      // -4

bool HasBins(const EBWHistogramVector* histogram, unsigned int bins) {
  return histogram != nullptr && histogram->GetNumElements() == bins && histogram->GetDataPtr() != nullptr;
}

// The best score of an 8-bit search, kept rounded to single precision. A
// candidate is compared, unrounded, with the rounded value, so one a hair
// beyond it wins even where the unrounded best was better. A candidate equal
// to the unrounded best (the same split again, as a threshold moves over
// empty bins) does not win, so the first of identical splits stays.
struct RoundedBest {
  float rounded;
  double exact;
  explicit RoundedBest(double start) : rounded(static_cast<float>(start)), exact(start) {}
  bool Above(double x) const { return x > rounded && x != exact; }
  bool Below(double x) const { return x < rounded && x != exact; }
  void Set(double x) {
    rounded = static_cast<float>(x);
    exact = x;
  }
};

// The best score of a 16-bit search, in double precision.
struct DoubleBest {
  double value;
  explicit DoubleBest(double start) : value(start) {}
  bool Below(double x) const { return x < value; }
  void Set(double x) { value = x; }
};

// Arithmetic of the 8-bit search: 32-bit wrapping counts and sums, best
// scores kept in single precision, costs compared as unsigned 32-bit values.
struct Grey8 {
  using Sum = uint32_t;
  using Best = RoundedBest;
  static constexpr unsigned int kWhite = 255;
  static constexpr double kBestStart = 3.4028235e38f;
  static constexpr Sum kCostStart = 0xFFFFFFFFu;

  static bool Positive(Sum v) { return v != 0; }
  static double Real(Sum v) { return static_cast<double>(v); }
  static bool CostBelow(Sum a, Sum b) { return a < b; }
  // Products of the setup, formed in the sum's own width.
  static Sum Setup(uint32_t h, uint32_t i) { return h * i; }
  static double IsodataScore(Sum s1, Sum n1, Sum s2, Sum n2, unsigned int t) {
    const float v = 0.5f * static_cast<float>(s2) / static_cast<float>(n2) +
                    0.5f * static_cast<float>(s1) / static_cast<float>(n1) - static_cast<float>(t);
    return std::fabs(v);
  }
  static float Average(Sum s, Sum n) { return static_cast<float>(s) / static_cast<float>(n); }
};

// Arithmetic of the 16-bit search: 64-bit counts and sums read as signed,
// double precision scores, costs compared as signed 64-bit values.
struct Grey16 {
  using Sum = uint64_t;
  using Best = DoubleBest;
  static constexpr unsigned int kWhite = 0xFFFF;
  static constexpr double kBestStart = std::numeric_limits<double>::max();
  static constexpr Sum kCostStart = 0x7FFFFFFFFFFFFFFFull;

  static bool Positive(Sum v) { return static_cast<int64_t>(v) > 0; }
  static double Real(Sum v) { return static_cast<double>(static_cast<int64_t>(v)); }
  static bool CostBelow(Sum a, Sum b) { return static_cast<int64_t>(a) < static_cast<int64_t>(b); }
  static Sum Setup(uint32_t h, uint32_t i) { return static_cast<Sum>(h) * i; }
  static double IsodataScore(Sum s1, Sum n1, Sum s2, Sum n2, unsigned int t) {
    return std::fabs(0.5 * Real(s2) / Real(n2) + 0.5 * Real(s1) / Real(n1) - static_cast<double>(t));
  }
  static float Average(Sum s, Sum n) { return static_cast<float>(Real(s) / Real(n)); }
};

// A product formed in a scan: 32 bits, then widened to the sum.
template <class G>
typename G::Sum Product(uint32_t h, uint32_t t) {
  return static_cast<typename G::Sum>(static_cast<uint32_t>(h * t));
}

double XLogX(uint32_t h) { return h == 0 ? 0.0 : static_cast<double>(h) * std::log(static_cast<double>(h)); }

// The two classes of a split: counts and sums (or costs).
template <class G>
struct Classes {
  typename G::Sum n1 = 0, s1 = 0, n2 = 0, s2 = 0;
};

// Resolves `threshold` (already checked) over h[min..max] and writes the
// three outputs.
template <class G>
void SelectThreshold(const unsigned int* h, unsigned int& threshold, float& below, float& above, float relative,
                     unsigned int min, unsigned int max) {
  using Sum = typename G::Sum;
  Sum n = 0, s = 0;
  for (unsigned int i = min; i <= max; ++i) {
    n += h[i];
    s += G::Setup(h[i], i);
  }

  Classes<G> best;
  unsigned int t = 0;
  bool found = false;
  const unsigned int mode = threshold;

  if (mode == IMG_THRESHOLD_MIN_RESIDUE || mode == IMG_THRESHOLD_ISODATA || mode == IMG_THRESHOLD_MAX_ENTROPY) {
    Classes<G> c;
    c.n2 = n;
    c.s2 = s;
    double a = 0.0, b = 0.0;  // sums of h*ln(h), lower and upper class
    if (mode == IMG_THRESHOLD_MAX_ENTROPY)
      for (unsigned int i = min; i <= max; ++i) b += XLogX(h[i]);
    typename G::Best bestScore(G::kBestStart);
    for (unsigned int i = min; i <= max; ++i) {
      if (G::Positive(c.n1) && G::Positive(c.n2)) {
        double score;
        if (mode == IMG_THRESHOLD_MIN_RESIDUE) {
          score = -(G::Real(c.s2) * G::Real(c.s2) / G::Real(c.n2) + G::Real(c.s1) * G::Real(c.s1) / G::Real(c.n1));
        } else if (mode == IMG_THRESHOLD_ISODATA) {
          score = G::IsodataScore(c.s1, c.n1, c.s2, c.n2, i);
        } else {
          score = a / G::Real(c.n1) - std::log(G::Real(c.n1)) + b / G::Real(c.n2) - std::log(G::Real(c.n2));
        }
        if (bestScore.Below(score)) {
          bestScore.Set(score);
          t = i;
          best = c;
          found = true;
        }
      }
      const Sum p = Product<G>(h[i], i);
      c.n1 += h[i];
      c.s1 += p;
      c.n2 -= h[i];
      c.s2 -= p;
      if (mode == IMG_THRESHOLD_MAX_ENTROPY) {
        const double e = XLogX(h[i]);
        a += e;
        b -= e;
      }
    }
  } else if (mode == IMG_THRESHOLD_MIN_SQUARED_DISTANCE || mode == IMG_THRESHOLD_MIN_DISTANCE) {
    // Bin t stays in the lower class; the cost of a class is its distance to
    // black (lower) or to white (upper), squared or not.
    const bool squared = mode == IMG_THRESHOLD_MIN_SQUARED_DISTANCE;
    Classes<G> c;
    c.n1 = n;
    if (squared) {
      for (unsigned int i = min; i <= max; ++i) c.s1 += G::Setup(h[i], i) * i;
      c.s1 += n * min * min;
    } else {
      c.s1 = s;
    }
    Sum bestCost = G::kCostStart;
    for (unsigned int i = max + 1; i-- > min;) {
      const Sum cost = c.s1 + c.s2;
      if (G::CostBelow(cost, bestCost)) {
        bestCost = cost;
        t = i;
        best = c;
        found = true;
      }
      const uint32_t up = G::kWhite - i;
      if (squared) {
        c.s1 -= Product<G>(h[i] * i, i);
        c.s2 += Product<G>(h[i] * up, up);
      } else {
        c.s1 -= Product<G>(h[i], i);
        c.s2 += Product<G>(h[i], up);
      }
      c.n1 -= h[i];
      c.n2 += h[i];
    }
  } else {
    if (mode == IMG_THRESHOLD_RELATIVE) {
      // Take bins from the top down until the upper class holds at least
      // N - trunc(N * relative) pixels.
      const Sum k = static_cast<Sum>(G::Real(n) * static_cast<double>(relative));
      const Sum target = n - k;
      Sum taken = 0;
      t = max + 1;
      while (G::CostBelow(taken, target) && t > min) {
        --t;
        taken += h[t];
      }
    } else {
      t = mode;  // absolute threshold
    }
    for (unsigned int i = min; i <= max; ++i) {
      if (i < t) {
        best.n1 += h[i];
        best.s1 += Product<G>(h[i], i);
      } else {
        best.n2 += h[i];
        best.s2 += Product<G>(h[i], i);
      }
    }
    found = true;
  }

  if (!found) {
    t = 0;
    best = Classes<G>();
  }
  threshold = t;
  below = G::Positive(best.n1) ? G::Average(best.s1, best.n1) : static_cast<float>(min);
  above = G::Positive(best.n2) ? G::Average(best.s2, best.n2) : static_cast<float>(max + 1);
}

// The checks shared by the two histogram forms, in their order.
bool CheckSelection(mirel::Frame& frame, const EBWHistogramVector* histogram, unsigned int bins, unsigned int threshold,
                    float relative, unsigned int min, unsigned int max) {
  const unsigned int last = bins - 1;
  if (!frame.Require(HasBins(histogram, bins), E_ERROR_VECTOR_SIZE)) return false;
  if (!frame.Require(min <= last, E_ERROR_BAD_ARGUMENT_3)) return false;
  if (!frame.Require(max <= last, E_ERROR_BAD_ARGUMENT_4)) return false;
  if (!frame.Require(min < max, E_ERROR_BAD_ARGUMENT)) return false;
  if (threshold >= kModeFirst && threshold <= kModeLastSearch) return true;
  if (threshold == IMG_THRESHOLD_RELATIVE) return frame.Require(relative >= 0.0f && relative <= 1.0f, E_ERROR_BAD_ARGUMENT_3);
  return frame.Require(threshold >= min && threshold <= max, E_ERROR_BAD_RANGE);
}

// The scan of the minimum-residue searches, over the 256 bins.
struct ResidueSearch {
  uint32_t n = 0, s = 0;
  float best = 0.0f;
  unsigned int t = 0;
};

ResidueSearch TwoClassResidue(const unsigned int* h, float& below, float& above) {
  ResidueSearch r;
  for (unsigned int i = 0; i < 256; ++i) {
    r.n += h[i];
    r.s += h[i] * i;
  }
  const float fn = static_cast<float>(r.n), fs = static_cast<float>(r.s);
  RoundedBest best(static_cast<double>(fs) * fs / fn);
  uint32_t n1 = 0, s1 = 0, n2 = r.n, s2 = r.s;
  for (unsigned int i = 0; i < 256; ++i) {
    if (n1 != 0 && n2 != 0) {
      const float f1 = static_cast<float>(n1), g1 = static_cast<float>(s1);
      const float f2 = static_cast<float>(n2), g2 = static_cast<float>(s2);
      const double x = static_cast<double>(g1) * g1 / f1 + static_cast<double>(g2) * g2 / f2;
      if (best.Above(x)) {
        best.Set(x);
        r.t = i;
        below = g1 / f1;
        above = g2 / f2;
      }
    }
    n1 += h[i];
    s1 += h[i] * i;
    n2 -= h[i];
    s2 -= h[i] * i;
  }
  r.best = best.rounded;
  return r;
}

// Sum of i*i*h[i], exact in double, kept in single precision.
float SquareSum(const unsigned int* h) {
  double q = 0.0;
  for (unsigned int i = 0; i < 256; ++i) q += static_cast<double>(h[i]) * (static_cast<double>(i) * i);
  return static_cast<float>(q);
}

float Residue(float q, float best, uint32_t n) {
  return static_cast<float>(std::sqrt((static_cast<double>(q) - best) / static_cast<float>(n)));
}

// The iterative isodata search. c[i] and w[i] are the count and the sum of
// k * h[k] over bins min..i, and nothing below min (the tables hold max + 1
// entries). A midpoint can fall below min only in the older form, whose sum
// leaves out bin min's product; it then reads an empty lower class.
template <class Sum>
unsigned int Isodata(const unsigned int* h, unsigned int min, unsigned int max, Sum* c, Sum* w, bool legacyStart) {
  Sum cc = 0, ww = 0;
  for (unsigned int i = 0; i < min; ++i) c[i] = w[i] = 0;
  for (unsigned int i = min; i <= max; ++i) {
    cc += h[i];
    if (!(legacyStart && i == min)) ww += static_cast<Sum>(static_cast<uint32_t>(i * h[i]));
    c[i] = cc;
    w[i] = ww;
  }
  const Sum ct = cc, wt = ww;
  Sum t = (static_cast<Sum>(min) + max + 1) >> 1;
  for (int round = 0; round < 16; ++round) {
    const Sum cl = c[t], wl = w[t];
    const Sum m1 = cl != 0 ? wl / cl : (t + min) >> 1;
    const Sum m2 = ct - cl != 0 ? (wt - wl) / (ct - cl) : (t + max + 1) >> 1;
    Sum t2 = (m1 + m2) >> 1;
    // Only wrapped sums (more than 2^32 in the 8-bit tables) can pass max;
    // keep the table reads inside.
    if (t2 > max) t2 = max;
    if (t2 == t) break;
    t = t2;
  }
  return static_cast<unsigned int>(t);
}

}  // namespace

void ImgHistogramThreshold(const EBWHistogramVector* histogram, unsigned int& threshold, float& averageBelow,
                           float& averageAbove, float relative, unsigned int min, unsigned int max) {
  mirel::Frame frame("ImgHistogramThreshold");
  if (!CheckSelection(frame, histogram, 256, threshold, relative, min, max)) return;
  SelectThreshold<Grey8>(histogram->GetDataPtr(), threshold, averageBelow, averageAbove, relative, min, max);
}

void ImgHistogramThresholdBW16(const EBWHistogramVector* histogram, unsigned int& threshold, float& averageBelow,
                               float& averageAbove, float relative, unsigned int min, unsigned int max) {
  mirel::Frame frame("ImgHistogramThreshold (BW16)");
  if (!CheckSelection(frame, histogram, 65536, threshold, relative, min, max)) return;
  SelectThreshold<Grey16>(histogram->GetDataPtr(), threshold, averageBelow, averageAbove, relative, min, max);
}

EBW8 ImgAutoThreshold(const EROI<EBW8>* source, IMG_THRESHOLD_MODES mode, float relative) {
  unsigned int threshold = mode;
  if (threshold < 256) {
    EOk();
    return EBW8(static_cast<unsigned char>(threshold));
  }
  EBWHistogramVector histogram;
  ImgHistogram(source, &histogram);
  if (EGetError() != E_OK) return EBW8(0);
  float below = 0.0f, above = 0.0f;
  ImgHistogramThreshold(&histogram, threshold, below, above, relative, 0, 255);
  return EBW8(static_cast<unsigned char>(threshold));
}

EBW16 ImgAutoThreshold(const EROI<EBW16>* source, IMG_THRESHOLD_MODES mode, float relative) {
  unsigned int threshold = mode;
  if (threshold < 65536) {
    EOk();
    return EBW16(static_cast<unsigned short>(threshold));
  }
  EBWHistogramVector histogram;
  ImgHistogram(source, &histogram, 15, 16, 1);
  if (EGetError() != E_OK) return EBW16(0);
  float below = 0.0f, above = 0.0f;
  ImgHistogramThresholdBW16(&histogram, threshold, below, above, relative, 0, 65535);
  return EBW16(static_cast<unsigned short>(threshold));
}

EBW8 ImgMinResidueThreshold(const EBWHistogramVector* histogram, float& averageBelow, float& averageAbove) {
  mirel::Frame frame("ImgMinResidueThreshold");
  if (!frame.Require(HasBins(histogram, 256), E_ERROR_VECTOR_SIZE)) return EBW8(0);
  const ResidueSearch r = TwoClassResidue(histogram->GetDataPtr(), averageBelow, averageAbove);
  return EBW8(static_cast<unsigned char>(r.t));
}

float ImgTwoLevelsMinResidueThreshold(const EBWHistogramVector* histogram, EBW8& threshold, float& averageBelow,
                                      float& averageAbove) {
  mirel::Frame frame("ImgTwoLevelsMinResidueThreshold");
  if (!frame.Require(HasBins(histogram, 256), E_ERROR_VECTOR_SIZE)) return -1.0f;
  const unsigned int* h = histogram->GetDataPtr();
  const float q = SquareSum(h);
  const ResidueSearch r = TwoClassResidue(h, averageBelow, averageAbove);
  threshold = EBW8(static_cast<unsigned char>(r.t));
  return Residue(q, r.best, r.n);
}

float ImgThreeLevelsMinResidueThreshold(const EBWHistogramVector* histogram, EBW8& lowThreshold, EBW8& highThreshold,
                                        float& lowAverage, float& middleAverage, float& highAverage) {
  mirel::Frame frame("ImgThreeLevelsMinResidueThreshold");
  if (!frame.Require(HasBins(histogram, 256), E_ERROR_VECTOR_SIZE)) return -1.0f;
  const unsigned int* h = histogram->GetDataPtr();
  uint32_t n = 0, s = 0;
  for (unsigned int i = 0; i < 256; ++i) {
    n += h[i];
    s += h[i] * i;
  }
  const float q = SquareSum(h);
  const float fn = static_cast<float>(n), fs = static_cast<float>(s);
  RoundedBest best(static_cast<double>(fs) * fs / fn);
  unsigned int t1Best = 0, t2Best = 0;
  uint32_t nl = 0, sl = 0;
  for (unsigned int t1 = 0; t1 < 256; ++t1) {
    if (nl != 0) {
      const float fnl = static_cast<float>(nl), fsl = static_cast<float>(sl);
      const double low = static_cast<double>(fsl) * fsl / fnl;
      uint32_t nm = 0, sm = 0, nh = n - nl, sh = s - sl;
      for (unsigned int t2 = t1; t2 < 256; ++t2) {
        if (nm != 0 && nh != 0) {
          const float fnm = static_cast<float>(nm), fsm = static_cast<float>(sm);
          const float fnh = static_cast<float>(nh), fsh = static_cast<float>(sh);
          const double x = low + static_cast<double>(fsh) * fsh / fnh + static_cast<double>(fsm) * fsm / fnm;
          if (best.Above(x)) {
            best.Set(x);
            t1Best = t1;
            t2Best = t2;
            lowAverage = fsl / fnl;
            middleAverage = fsm / fnm;
            highAverage = fsh / fnh;
          }
        }
        nm += h[t2];
        sm += h[t2] * t2;
        nh -= h[t2];
        sh -= h[t2] * t2;
      }
    }
    nl += h[t1];
    sl += h[t1] * t1;
  }
  lowThreshold = EBW8(static_cast<unsigned char>(t1Best));
  highThreshold = EBW8(static_cast<unsigned char>(t2Best));
  return Residue(q, best.rounded, n);
}

EBW8 ImgMaxEntropyThreshold(const EBWHistogramVector* histogram, float& averageBelow, float& averageAbove) {
  mirel::Frame frame("ImgMaxEntropyThreshold");
  if (!frame.Require(HasBins(histogram, 256), E_ERROR_VECTOR_SIZE)) return EBW8(0);
  const unsigned int* h = histogram->GetDataPtr();
  uint32_t n = 0, s = 0;
  double a = 0.0, b = 0.0;
  for (unsigned int i = 0; i < 256; ++i) {
    n += h[i];
    s += h[i] * i;
    b += XLogX(h[i]);
  }
  RoundedBest best(std::log(static_cast<double>(n)) - b / n);
  unsigned int t = 0;
  uint32_t n1 = 0, s1 = 0, n2 = n, s2 = s;
  for (unsigned int i = 0; i < 256; ++i) {
    if (n1 != 0 && n2 != 0) {
      const double d1 = n1, d2 = n2;
      const double e = std::log(d2) + std::log(d1) - b / d2 - a / d1;
      if (best.Above(e)) {
        best.Set(e);
        t = i;
        averageBelow = Grey8::Average(s1, n1);
        averageAbove = Grey8::Average(s2, n2);
      }
    }
    const double x = XLogX(h[i]);
    a += x;
    b -= x;
    n1 += h[i];
    s1 += h[i] * i;
    n2 -= h[i];
    s2 -= h[i] * i;
  }
  return EBW8(static_cast<unsigned char>(t));
}

EBW8 ImgIsodataThreshold(const EBWHistogramVector* histogram, unsigned int min, unsigned int max) {
  mirel::Frame frame("ImgIsodataThreshold ( EBWHistogramVector)");
  if (!frame.Require(HasBins(histogram, 256), E_ERROR_VECTOR_SIZE) || !frame.Require(min <= 255, E_ERROR_BAD_RANGE) ||
      !frame.Require(max < 256, E_ERROR_BAD_ARGUMENT_1) || !frame.Require(min < max, E_ERROR_BAD_ARGUMENT))
    return EBW8(0);
  uint32_t c[256], w[256];
  return EBW8(static_cast<unsigned char>(Isodata<uint32_t>(histogram->GetDataPtr(), min, max, c, w, false)));
}

unsigned int ImgIsodataThreshold(const EVector* histogram, unsigned int min, unsigned int max) {
  // The older frame: each code is armed before its test and stands while
  // the test runs; success ends with a clear state.
  static const char kLabel[] = "ImgIsodataThreshold ( EVector)";
  auto fail = [](unsigned int result) {
    ETraceError(kLabel);
    return result;
  };
  ESetError(E_ERROR_BAD_RANGE);
  if (min > 255) return fail(0);
  ESetError(E_ERROR_BAD_ARGUMENT_1);
  if (max > 255) return fail(0);
  ESetError(E_ERROR_BAD_ARGUMENT);
  if (min >= max) return fail(0);
  const unsigned int start = (min + max + 1) >> 1;
  ESetError(E_ERROR_VECTOR_KIND);
  if (histogram == nullptr || histogram->GetVectType() != 2) return fail(start);
  ESetError(E_ERROR_VOID_VECTOR);
  if (histogram->GetDataPtr() == nullptr) return fail(start);
  ESetError(E_ERROR_VECTOR_LENGTH);
  if (histogram->GetItemBytes() != 4 ||
      static_cast<long long>(histogram->GetAllocatedSize()) < 4LL * (static_cast<long long>(max) + 1))
    return fail(start);
  uint32_t c[256], w[256];
  const unsigned int t =
      Isodata<uint32_t>(static_cast<const unsigned int*>(histogram->GetDataPtr()), min, max, c, w, true);
  EOk();
  return t;
}

EBW16 ImgIsodataThresholdBW16(const EBWHistogramVector* histogram, unsigned int min, unsigned int max) {
  // Unlike the other frames this one does not clear the state on entry.
  static const char kLabel[] = "ImgIsodataThreshold ( EBWHistogramVector)";
  E_ERRORS code = E_OK;
  if (!HasBins(histogram, 65536)) code = E_ERROR_VECTOR_SIZE;
  else if (min >= 65536) code = E_ERROR_BAD_RANGE;
  else if (max >= 65536) code = E_ERROR_BAD_ARGUMENT_1;
  else if (min >= max) code = E_ERROR_BAD_ARGUMENT;
  uint64_t* c = nullptr;
  uint64_t* w = nullptr;
  if (code == E_OK) {
    c = static_cast<uint64_t*>(Talmeer_Malloc(65536 * sizeof(uint64_t)));
    w = static_cast<uint64_t*>(Talmeer_Malloc(65536 * sizeof(uint64_t)));
    if (c == nullptr || w == nullptr) code = E_ERROR_OUT_OF_MEMORY;
  }
  if (code != E_OK) {
    Talmeer_Free(c);
    Talmeer_Free(w);
    ESetError(code);
    ETraceError(kLabel);
    return EBW16(0);
  }
  const unsigned int t = Isodata<uint64_t>(histogram->GetDataPtr(), min, max, c, w, false);
  Talmeer_Free(c);
  Talmeer_Free(w);
  EOk();
  return EBW16(static_cast<unsigned short>(t));
}
