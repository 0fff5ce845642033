// Threshold selection: worked histograms, each search against a plain model
// that recomputes the class totals at every candidate, and the checks.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using Hist = std::vector<unsigned int>;

void Load(EBWHistogramVector& v, const Hist& h) {
  v.SetNumElements(static_cast<unsigned int>(h.size()));
  for (size_t i = 0; i < h.size(); ++i) v.GetDataPtr()[i] = h[i];
}

// Random histograms of n bins: dense, sparse, one populated bin, all zero,
// and a few huge bins (so 32-bit sums wrap).
Hist RandomHist(Rng& rng, unsigned int n, int kind) {
  Hist h(n, 0);
  switch (kind) {
    case 0:
      for (auto& v : h) v = rng() % 1000;
      break;
    case 1:
      for (int k = 0; k < 6; ++k) h[rng() % n] = 1 + rng() % 50000;
      break;
    case 2:
      h[rng() % n] = 1 + rng() % 100000;
      break;
    case 3:
      break;
    case 4:
      for (auto& v : h) v = rng() % 4 == 0 ? rng() % 300 : 0;
      break;
    default:
      for (int k = 0; k < 4; ++k) h[rng() % n] = rng() % 60000000;
      break;
  }
  return h;
}

// Best score rounded to single precision; the unrounded winner's own value
// does not win again (identical splits keep the first).
struct Best {
  float rounded;
  double exact;
  explicit Best(double v) : rounded(float(v)), exact(v) {}
  bool Above(double x) const { return x > rounded && x != exact; }
  bool Below(double x) const { return x < rounded && x != exact; }
  void Set(double x) { rounded = float(x), exact = x; }
};

struct Pick {
  unsigned int t;
  float below, above;
};

double XLogX(unsigned int h) { return h == 0 ? 0.0 : h * std::log(static_cast<double>(h)); }

// The 8-bit selection, recomputing the classes at every t.
Pick Select8(const Hist& h, unsigned int mode, float relative, unsigned int mn, unsigned int mx) {
  uint32_t n = 0;
  for (unsigned int i = mn; i <= mx; ++i) n += h[i];
  // Totals of bins [a, b] (32-bit, wrapping).
  auto count = [&](unsigned int a, unsigned int b) {
    uint32_t c = 0;
    for (unsigned int i = a; i <= b && i <= mx; ++i) c += h[i];
    return c;
  };
  auto sum = [&](unsigned int a, unsigned int b) {
    uint32_t c = 0;
    for (unsigned int i = a; i <= b && i <= mx; ++i) c += h[i] * i;
    return c;
  };
  uint32_t n1 = 0, s1 = 0, n2 = 0, s2 = 0;
  unsigned int t = 0;
  bool found = false;
  if (mode == IMG_THRESHOLD_MIN_RESIDUE || mode == IMG_THRESHOLD_ISODATA || mode == IMG_THRESHOLD_MAX_ENTROPY) {
    Best best(3.4028235e38f);
    for (unsigned int c = mn; c <= mx; ++c) {
      const uint32_t a1 = c > mn ? count(mn, c - 1) : 0, b1 = c > mn ? sum(mn, c - 1) : 0;
      const uint32_t a2 = count(c, mx), b2 = sum(c, mx);
      if (a1 == 0 || a2 == 0) continue;
      double score;
      if (mode == IMG_THRESHOLD_MIN_RESIDUE) {
        score = -(double(b2) * double(b2) / double(a2) + double(b1) * double(b1) / double(a1));
      } else if (mode == IMG_THRESHOLD_ISODATA) {
        score = std::fabs(0.5f * float(b2) / float(a2) + 0.5f * float(b1) / float(a1) - float(c));
      } else {
        double ea = 0, eb = 0;
        for (unsigned int i = mn; i <= mx; ++i) (i < c ? ea : eb) += XLogX(h[i]);
        score = ea / a1 - std::log(double(a1)) + eb / a2 - std::log(double(a2));
      }
      if (best.Below(score)) {
        best.Set(score);
        t = c, n1 = a1, s1 = b1, n2 = a2, s2 = b2, found = true;
      }
    }
  } else if (mode == IMG_THRESHOLD_MIN_SQUARED_DISTANCE || mode == IMG_THRESHOLD_MIN_DISTANCE) {
    const bool sq = mode == IMG_THRESHOLD_MIN_SQUARED_DISTANCE;
    uint32_t bestCost = 0xFFFFFFFFu;
    for (unsigned int c = mx + 1; c-- > mn;) {
      uint32_t l = 0, u = 0;
      for (unsigned int i = mn; i <= mx; ++i) {
        if (i <= c) l += sq ? h[i] * i * i : h[i] * i;
        else u += sq ? h[i] * (255 - i) * (255 - i) : h[i] * (255 - i);
      }
      if (sq) l += n * mn * mn;
      if (static_cast<uint32_t>(l + u) < bestCost) {
        bestCost = l + u;
        t = c, n1 = count(mn, c), s1 = l, n2 = c < mx ? count(c + 1, mx) : 0, s2 = u, found = true;
      }
    }
  } else {
    t = mode;
    if (mode == IMG_THRESHOLD_RELATIVE) {
      const uint32_t target = n - static_cast<uint32_t>(double(n) * relative);
      t = mx + 1;
      while (t > mn && count(t, mx) < target) --t;
      if (target == 0) t = mx + 1;
    }
    n1 = t > mn ? count(mn, t - 1) : 0, s1 = t > mn ? sum(mn, t - 1) : 0;
    n2 = t <= mx ? count(t, mx) : 0, s2 = t <= mx ? sum(t, mx) : 0;
    found = true;
  }
  if (!found) t = 0, n1 = s1 = n2 = s2 = 0;
  return {t, n1 ? float(s1) / float(n1) : float(mn), n2 ? float(s2) / float(n2) : float(mx + 1)};
}

const unsigned int kModes[] = {IMG_THRESHOLD_MIN_SQUARED_DISTANCE, IMG_THRESHOLD_MIN_DISTANCE, IMG_THRESHOLD_ISODATA,
                               IMG_THRESHOLD_MAX_ENTROPY, IMG_THRESHOLD_MIN_RESIDUE, IMG_THRESHOLD_RELATIVE};

Pick Run8(const Hist& h, unsigned int mode, float relative = 0.5f, unsigned int mn = 0, unsigned int mx = 255) {
  EBWHistogramVector v;
  Load(v, h);
  Pick p{mode, -7.0f, -7.0f};
  ImgHistogramThreshold(&v, p.t, p.below, p.above, relative, mn, mx);
  EXPECT_EQ(EGetError(), E_OK);
  return p;
}

void ExpectPick(const Pick& want, const Pick& got, const std::string& what) {
  EXPECT_EQ(want.t, got.t) << what;
  EXPECT_EQ(want.below, got.below) << what;
  EXPECT_EQ(want.above, got.above) << what;
}

Hist TwoSpikes() {
  Hist h(256, 0);
  h[50] = 100;
  h[200] = 100;
  return h;
}

Hist Flat() { return Hist(256, 1); }

TEST(HistogramThreshold, WorkedTwoSpikes) {
  const Hist h = TwoSpikes();
  // Every split between the spikes scores alike: the lowest t wins.
  ExpectPick({51, 50.f, 200.f}, Run8(h, IMG_THRESHOLD_MIN_RESIDUE), "residue");
  ExpectPick({125, 50.f, 200.f}, Run8(h, IMG_THRESHOLD_ISODATA), "isodata");
  ExpectPick({51, 50.f, 200.f}, Run8(h, IMG_THRESHOLD_MAX_ENTROPY), "entropy");
  // Distance modes scan downward, keep bin t below, and report the costs.
  ExpectPick({199, 2500.f, 3025.f}, Run8(h, IMG_THRESHOLD_MIN_SQUARED_DISTANCE), "squared");
  ExpectPick({199, 50.f, 55.f}, Run8(h, IMG_THRESHOLD_MIN_DISTANCE), "distance");
  ExpectPick({200, 50.f, 200.f}, Run8(h, IMG_THRESHOLD_RELATIVE, 0.5f), "relative");
  ExpectPick({120, 50.f, 200.f}, Run8(h, 120), "absolute");
}

TEST(HistogramThreshold, RelativeEnds) {
  const Hist h = TwoSpikes();
  // 1.0: nothing above, t = max + 1. 0.0: the lowest populated bin.
  ExpectPick({256, 125.f, 256.f}, Run8(h, IMG_THRESHOLD_RELATIVE, 1.0f), "1.0");
  ExpectPick({50, 0.f, 125.f}, Run8(h, IMG_THRESHOLD_RELATIVE, 0.0f), "0.0");
  ExpectPick({41, 30.f, 41.f}, Run8(Hist(256, 0), IMG_THRESHOLD_RELATIVE, 0.3f, 30, 40), "empty");
}

TEST(HistogramThreshold, SquaredDistanceKeepsTheMinimumTerm) {
  // min > 0 adds N * min * min to the lower cost.
  Hist h(256, 0);
  h[20] = 3;
  h[30] = 1;
  const Pick p = Run8(h, IMG_THRESHOLD_MIN_SQUARED_DISTANCE, 0.f, 10, 40);
  ExpectPick(Select8(h, IMG_THRESHOLD_MIN_SQUARED_DISTANCE, 0.f, 10, 40), p, "min 10");
  // Everything below costs 3*400 + 900 + 4*100 = 2500, far less than any
  // distance to white; the scan starts at max.
  EXPECT_EQ(p.t, 40u);
  EXPECT_EQ(p.below, 2500.f / 4);
  EXPECT_EQ(p.above, 41.f);
}

TEST(HistogramThreshold, OnePopulatedBinFindsNoSplit) {
  Hist h(256, 0);
  h[77] = 1000;
  for (unsigned int mode : {IMG_THRESHOLD_MIN_RESIDUE, IMG_THRESHOLD_ISODATA, IMG_THRESHOLD_MAX_ENTROPY})
    ExpectPick({0, 0.f, 256.f}, Run8(h, mode), std::to_string(mode));
  ExpectPick({0, 5.f, 201.f}, Run8(Hist(256, 0), IMG_THRESHOLD_MIN_RESIDUE, 0.f, 5, 200), "empty");
}

TEST(HistogramThreshold, MatchesModelOnRandomHistograms) {
  Rng rng(7);
  for (int iter = 0; iter < 120; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 6);
    unsigned int mn = 0, mx = 255;
    if (iter % 3 == 1) {
      mn = rng() % 200;
      mx = mn + 1 + rng() % (255 - mn);
    }
    const float rel = static_cast<float>(rng() % 1001) / 1000.f;
    for (unsigned int mode : kModes)
      ExpectPick(Select8(h, mode, rel, mn, mx), Run8(h, mode, rel, mn, mx),
                 "iter " + std::to_string(iter) + " mode " + std::to_string(mode));
    const unsigned int abs = mn + rng() % (mx - mn + 1);
    ExpectPick(Select8(h, abs, rel, mn, mx), Run8(h, abs, rel, mn, mx), "absolute");
  }
}

TEST(HistogramThreshold, Checks) {
  EBWHistogramVector v;
  Load(v, TwoSpikes());
  struct Case {
    unsigned int t;
    float rel;
    unsigned int mn, mx;
    E_ERRORS code;
  } cases[] = {
      {IMG_THRESHOLD_MIN_RESIDUE, 0.f, 256, 300, E_ERROR_BAD_ARGUMENT_3},
      {IMG_THRESHOLD_MIN_RESIDUE, 0.f, 0, 256, E_ERROR_BAD_ARGUMENT_4},
      {IMG_THRESHOLD_MIN_RESIDUE, 0.f, 9, 9, E_ERROR_BAD_ARGUMENT},
      {IMG_THRESHOLD_RELATIVE, 1.5f, 0, 255, E_ERROR_BAD_ARGUMENT_3},
      {IMG_THRESHOLD_RELATIVE, -0.1f, 0, 255, E_ERROR_BAD_ARGUMENT_3},
      {0xFFFFFFFEu, 0.f, 0, 255, E_ERROR_BAD_RANGE},  // -2 is not a mode
      {0xFFFFFFFFu, 0.f, 0, 255, E_ERROR_BAD_RANGE},
      {300, 0.f, 0, 255, E_ERROR_BAD_RANGE},
      {9, 0.f, 10, 20, E_ERROR_BAD_RANGE},
      {21, 0.f, 10, 20, E_ERROR_BAD_RANGE},
  };
  for (const Case& c : cases) {
    unsigned int t = c.t;
    float b = 1.5f, a = 2.5f;
    ImgHistogramThreshold(&v, t, b, a, c.rel, c.mn, c.mx);
    EXPECT_EQ(EGetError(), c.code) << c.t << " " << c.mn << " " << c.mx;
    EXPECT_STREQ(EGetErrorTrace(), "ImgHistogramThreshold");
    EXPECT_EQ(t, c.t);
    EXPECT_EQ(b, 1.5f);
    EXPECT_EQ(a, 2.5f);
  }
  EBWHistogramVector wrong;
  Load(wrong, Hist(255, 1));
  unsigned int t = IMG_THRESHOLD_MIN_RESIDUE;
  float b = 0, a = 0;
  ImgHistogramThreshold(&wrong, t, b, a, 0.f, 0, 255);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  ImgHistogramThresholdBW16(&v, t, b, a, 0.f, 0, 65535);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogramThreshold (BW16)");
  EXPECT_EQ(t, unsigned(IMG_THRESHOLD_MIN_RESIDUE));
}

// The 16-bit selection with prefix tables: 64-bit totals, 32-bit products.
Pick Select16(const Hist& h, unsigned int mode, float relative, unsigned int mn, unsigned int mx) {
  const unsigned int m = mx - mn + 1;
  std::vector<int64_t> c(m + 1, 0), s(m + 1, 0);  // totals of bins [mn, mn + k)
  for (unsigned int k = 0; k < m; ++k) {
    const unsigned int i = mn + k;
    c[k + 1] = c[k] + h[i];
    s[k + 1] = s[k] + static_cast<int64_t>(uint64_t(h[i]) * i);
  }
  const int64_t n = c[m];
  int64_t n1 = 0, s1 = 0, n2 = 0, s2 = 0;
  unsigned int t = 0;
  bool found = false;
  if (mode == IMG_THRESHOLD_MIN_RESIDUE || mode == IMG_THRESHOLD_ISODATA) {
    // Running class sums, as the products of a scan are 32-bit.
    int64_t a1 = 0, b1 = 0, a2 = n, b2 = s[m];
    double best = 1.7976931348623157e308;
    for (unsigned int i = mn; i <= mx; ++i) {
      if (a1 > 0 && a2 > 0) {
        const double score = mode == IMG_THRESHOLD_MIN_RESIDUE
                                 ? -(double(b2) * double(b2) / double(a2) + double(b1) * double(b1) / double(a1))
                                 : std::fabs(0.5 * double(b2) / double(a2) + 0.5 * double(b1) / double(a1) - i);
        if (score < best) best = score, t = i, n1 = a1, s1 = b1, n2 = a2, s2 = b2, found = true;
      }
      const uint32_t p = h[i] * i;
      a1 += h[i], b1 += p, a2 -= h[i], b2 -= p;
    }
  } else if (mode == IMG_THRESHOLD_MIN_DISTANCE || mode == IMG_THRESHOLD_MIN_SQUARED_DISTANCE) {
    const bool sq = mode == IMG_THRESHOLD_MIN_SQUARED_DISTANCE;
    int64_t l = s[m], u = 0, a1 = n, a2 = 0, best = INT64_MAX;
    if (sq) {
      l = n * int64_t(mn) * mn;
      for (unsigned int i = mn; i <= mx; ++i) l += int64_t(uint64_t(h[i]) * i * i);
    }
    for (unsigned int i = mx + 1; i-- > mn;) {
      if (l + u < best) best = l + u, t = i, n1 = a1, s1 = l, n2 = a2, s2 = u, found = true;
      const uint32_t up = 65535 - i;
      l -= sq ? uint32_t(h[i] * i * i) : uint32_t(h[i] * i);
      u += sq ? uint32_t(h[i] * up * up) : uint32_t(h[i] * up);
      a1 -= h[i], a2 += h[i];
    }
  } else {
    t = mode;
    if (mode == IMG_THRESHOLD_RELATIVE) {
      const int64_t target = n - static_cast<int64_t>(double(n) * relative);
      t = mx + 1;
      while (t > mn && n - c[t - mn] < target) --t;
    }
    const unsigned int k = t - mn;
    n1 = c[k], s1 = s[k], n2 = n - c[k], s2 = s[m] - s[k];
    found = true;
  }
  if (!found) t = 0, n1 = s1 = n2 = s2 = 0;
  return {t, n1 > 0 ? float(double(s1) / double(n1)) : float(mn),
          n2 > 0 ? float(double(s2) / double(n2)) : float(mx + 1)};
}

TEST(HistogramThreshold, SixteenBitMatchesModel) {
  Rng rng(11);
  for (int iter = 0; iter < 12; ++iter) {
    const Hist h = RandomHist(rng, 65536, iter % 5 == 4 ? 1 : iter % 5);
    unsigned int mn = 0, mx = 65535;
    if (iter % 2 == 1) {
      mn = rng() % 60000;
      mx = mn + 1 + rng() % (65535 - mn);
    }
    EBWHistogramVector v;
    Load(v, h);
    const float rel = static_cast<float>(rng() % 1001) / 1000.f;
    for (unsigned int mode : {unsigned(IMG_THRESHOLD_MIN_RESIDUE), unsigned(IMG_THRESHOLD_ISODATA),
                              unsigned(IMG_THRESHOLD_MIN_DISTANCE), unsigned(IMG_THRESHOLD_MIN_SQUARED_DISTANCE),
                              unsigned(IMG_THRESHOLD_RELATIVE),
                              mn + static_cast<unsigned int>(rng() % (mx - mn + 1))}) {
      Pick p{mode, 0, 0};
      ImgHistogramThresholdBW16(&v, p.t, p.below, p.above, rel, mn, mx);
      ASSERT_EQ(EGetError(), E_OK);
      ExpectPick(Select16(h, mode, rel, mn, mx), p, "iter " + std::to_string(iter) + " mode " + std::to_string(mode));
    }
  }
}

TEST(HistogramThreshold, SixteenBitWorked) {
  Hist h(65536, 0);
  h[1000] = 10;
  h[50000] = 1;
  EBWHistogramVector v;
  Load(v, h);
  Pick p{IMG_THRESHOLD_MIN_SQUARED_DISTANCE, 0, 0};
  ImgHistogramThresholdBW16(&v, p.t, p.below, p.above, 0.f, 0, 65535);
  // Highest t of the tie between the spikes; white is 65535.
  EXPECT_EQ(p.t, 49999u);
  EXPECT_EQ(p.below, 1000.f * 1000.f);
  EXPECT_EQ(p.above, static_cast<float>(15535.0 * 15535.0));
  p = {IMG_THRESHOLD_MAX_ENTROPY, 0, 0};
  ImgHistogramThresholdBW16(&v, p.t, p.below, p.above, 0.f, 0, 65535);
  ExpectPick({1001, 1000.f, 50000.f}, p, "entropy");
}

// ---------------------------------------------------------------- standalone searches

struct Residue2 {
  unsigned int t = 0;
  float best, below = -1, above = -1;
  uint32_t n = 0;
};

Residue2 MinResidueModel(const Hist& h) {
  Residue2 r;
  uint32_t s = 0;
  for (unsigned int i = 0; i < 256; ++i) r.n += h[i], s += h[i] * i;
  Best best(double(float(s)) * float(s) / float(r.n));
  for (unsigned int t = 0; t < 256; ++t) {
    uint32_t n1 = 0, s1 = 0;
    for (unsigned int i = 0; i < t; ++i) n1 += h[i], s1 += h[i] * i;
    const uint32_t n2 = r.n - n1, s2 = s - s1;
    if (n1 == 0 || n2 == 0) continue;
    const float f1 = float(n1), g1 = float(s1), f2 = float(n2), g2 = float(s2);
    const double x = double(g1) * g1 / f1 + double(g2) * g2 / f2;
    if (best.Above(x)) best.Set(x), r.t = t, r.below = g1 / f1, r.above = g2 / f2;
  }
  r.best = best.rounded;
  return r;
}

float Q(const Hist& h) {
  double q = 0;
  for (unsigned int i = 0; i < 256; ++i) q += double(h[i]) * i * i;
  return float(q);
}

TEST(MinResidue, Worked) {
  EBWHistogramVector v;
  Load(v, Flat());
  float b = -1, a = -1;
  EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), 128);
  EXPECT_EQ(b, 63.5f);
  EXPECT_EQ(a, 191.5f);
  EBW8 t = 0;
  // Within-class variance of 128 consecutive values: (128^2 - 1) / 12.
  EXPECT_FLOAT_EQ(ImgTwoLevelsMinResidueThreshold(&v, t, b, a), std::sqrt(1365.25f));
  EXPECT_EQ(t, 128);

  Hist one(256, 0);
  one[90] = 40;
  Load(v, one);
  b = 3, a = 4;
  EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), 0);
  EXPECT_EQ(b, 3.f);
  EXPECT_EQ(a, 4.f);
  t = 9;
  EXPECT_EQ(ImgTwoLevelsMinResidueThreshold(&v, t, b, a), 0.f);
  EXPECT_EQ(t, 0);

  Load(v, Hist(256, 0));
  EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), 0);
  EXPECT_EQ(EGetError(), E_OK);
}

TEST(MinResidue, IdenticalSplitsKeepTheLowestThreshold) {
  // Two clusters with empty bins between: every t in the gap makes the same
  // split, whichever way the best score rounds.
  Rng rng(23);
  EBWHistogramVector v;
  for (int iter = 0; iter < 60; ++iter) {
    Hist h(256, 0);
    const unsigned int gap = 60 + rng() % 100;
    for (unsigned int i = gap - 40; i < gap; ++i) h[i] = rng() % 5000;
    for (unsigned int i = gap + 30; i < gap + 90; ++i) h[i] = rng() % 5000;
    h[gap - 1] = h[gap + 30] = 1000;
    Load(v, h);
    float b = 0, a = 0;
    EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), gap) << iter;
    unsigned int t = IMG_THRESHOLD_MIN_RESIDUE;
    ImgHistogramThreshold(&v, t, b, a, 0.f, 0, 255);
    EXPECT_EQ(t, gap) << iter;
  }
}

TEST(MinResidue, MatchesModelOnRandomHistograms) {
  Rng rng(3);
  EBWHistogramVector v;
  for (int iter = 0; iter < 150; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 6);
    Load(v, h);
    const Residue2 m = MinResidueModel(h);
    float b = -1, a = -1;
    EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), m.t) << iter;
    EXPECT_EQ(b, m.below);
    EXPECT_EQ(a, m.above);
    EBW8 t = 77;
    b = a = -1;
    const float res = ImgTwoLevelsMinResidueThreshold(&v, t, b, a);
    EXPECT_EQ(t, m.t);
    EXPECT_EQ(b, m.below);
    const float want = float(std::sqrt((double(Q(h)) - m.best) / float(m.n)));
    if (std::isnan(want)) {
      EXPECT_TRUE(std::isnan(res)) << iter;
    } else {
      EXPECT_EQ(res, want) << iter;
    }
  }
}

TEST(ThreeLevels, WorkedAndModel) {
  Hist h(256, 0);
  h[20] = 10, h[100] = 10, h[220] = 10;
  EBWHistogramVector v;
  Load(v, h);
  EBW8 lo = 0, hi = 0;
  float a = -1, b = -1, c = -1;
  EXPECT_EQ(ImgThreeLevelsMinResidueThreshold(&v, lo, hi, a, b, c), 0.f);
  EXPECT_EQ(lo, 21);
  EXPECT_EQ(hi, 101);
  EXPECT_EQ(a, 20.f);
  EXPECT_EQ(b, 100.f);
  EXPECT_EQ(c, 220.f);

  Rng rng(5);
  for (int iter = 0; iter < 40; ++iter) {
    const Hist r = RandomHist(rng, 256, iter % 5);
    Load(v, r);
    // Model: prefix totals, every (t1, t2) with three non-empty classes.
    std::vector<uint32_t> pc(257, 0), ps(257, 0);
    for (unsigned int i = 0; i < 256; ++i) pc[i + 1] = pc[i] + r[i], ps[i + 1] = ps[i] + r[i] * i;
    const uint32_t n = pc[256], s = ps[256];
    Best best(double(float(s)) * float(s) / float(n));
    unsigned int b1 = 0, b2 = 0;
    float wl = -1, wm = -1, wh = -1;
    for (unsigned int t1 = 0; t1 < 256; ++t1)
      for (unsigned int t2 = t1; t2 < 256; ++t2) {
        const uint32_t nl = pc[t1], nm = pc[t2] - pc[t1], nh = n - pc[t2];
        const uint32_t sl = ps[t1], sm = ps[t2] - ps[t1], sh = s - ps[t2];
        if (nl == 0 || nm == 0 || nh == 0) continue;
        const double x = double(float(sl)) * float(sl) / float(nl) + double(float(sh)) * float(sh) / float(nh) +
                         double(float(sm)) * float(sm) / float(nm);
        if (best.Above(x)) {
          best.Set(x), b1 = t1, b2 = t2;
          wl = float(sl) / float(nl), wm = float(sm) / float(nm), wh = float(sh) / float(nh);
        }
      }
    a = b = c = -1;
    const float res = ImgThreeLevelsMinResidueThreshold(&v, lo, hi, a, b, c);
    EXPECT_EQ(lo, b1) << iter;
    EXPECT_EQ(hi, b2) << iter;
    EXPECT_EQ(a, wl);
    EXPECT_EQ(b, wm);
    EXPECT_EQ(c, wh);
    const float want = float(std::sqrt((double(Q(r)) - best.rounded) / float(n)));
    if (!std::isnan(want)) {
      EXPECT_EQ(res, want) << iter;
    }
  }
}

TEST(MaxEntropy, WorkedAndModel) {
  EBWHistogramVector v;
  Load(v, Flat());
  float b = -1, a = -1;
  EXPECT_EQ(ImgMaxEntropyThreshold(&v, b, a), 128);
  EXPECT_EQ(b, 63.5f);
  // Two equal spikes: each class has entropy 0, below the whole's ln 2.
  Load(v, TwoSpikes());
  b = a = -1;
  EXPECT_EQ(ImgMaxEntropyThreshold(&v, b, a), 0);
  EXPECT_EQ(b, -1.f);

  Rng rng(9);
  for (int iter = 0; iter < 60; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 6);
    Load(v, h);
    uint32_t n = 0, s = 0;
    double all = 0;
    for (unsigned int i = 0; i < 256; ++i) n += h[i], s += h[i] * i, all += XLogX(h[i]);
    Best best(std::log(double(n)) - all / n);
    unsigned int t = 0;
    float wb = -1, wa = -1;
    for (unsigned int c = 0; c < 256; ++c) {
      uint32_t n1 = 0, s1 = 0;
      double e1 = 0;
      for (unsigned int i = 0; i < c; ++i) n1 += h[i], s1 += h[i] * i, e1 += XLogX(h[i]);
      const uint32_t n2 = n - n1, s2 = s - s1;
      if (n1 == 0 || n2 == 0) continue;
      const double e = std::log(double(n2)) + std::log(double(n1)) - (all - e1) / n2 - e1 / n1;
      if (best.Above(e)) best.Set(e), t = c, wb = float(s1) / float(n1), wa = float(s2) / float(n2);
    }
    b = a = -1;
    EXPECT_EQ(ImgMaxEntropyThreshold(&v, b, a), t) << iter;
    EXPECT_EQ(b, wb);
    EXPECT_EQ(a, wa);
  }
}

template <class Sum>
unsigned int IsodataModel(const Hist& h, unsigned int mn, unsigned int mx, bool legacy = false) {
  auto totals = [&](unsigned int a, unsigned int b, Sum& c, Sum& w) {
    c = 0, w = 0;
    for (unsigned int k = a; k <= b; ++k) c += h[k], w += legacy && k == mn ? 0 : uint32_t(k * h[k]);
  };
  Sum ct, wt;
  totals(mn, mx, ct, wt);
  Sum t = (mn + mx + 1) / 2;
  for (int round = 0; round < 16; ++round) {
    Sum c, w;
    totals(mn, static_cast<unsigned int>(t), c, w);
    const Sum m1 = c ? w / c : (t + mn) / 2;
    const Sum m2 = ct - c ? (wt - w) / (ct - c) : (t + mx + 1) / 2;
    if ((m1 + m2) / 2 == t) break;
    t = (m1 + m2) / 2;
  }
  return static_cast<unsigned int>(t);
}

TEST(Isodata, WorkedAndModel) {
  EBWHistogramVector v;
  Load(v, TwoSpikes());
  EXPECT_EQ(ImgIsodataThreshold(&v, 0, 255), 125);  // 128, then (50 + 200) / 2
  Rng rng(13);
  for (int iter = 0; iter < 200; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 5);
    Load(v, h);
    const unsigned int mn = rng() % 200, mx = mn + 1 + rng() % (255 - mn);
    EXPECT_EQ(ImgIsodataThreshold(&v, mn, mx), IsodataModel<uint32_t>(h, mn, mx)) << iter;
    EXPECT_EQ(EGetError(), E_OK);
  }
  for (int iter = 0; iter < 6; ++iter) {
    const Hist h = RandomHist(rng, 65536, iter % 3);
    Load(v, h);
    const unsigned int mn = rng() % 30000, mx = mn + 1 + rng() % (65535 - mn);
    EXPECT_EQ(ImgIsodataThresholdBW16(&v, mn, mx), IsodataModel<uint64_t>(h, mn, mx)) << iter;
    EXPECT_EQ(EGetError(), E_OK);
  }
}

TEST(Isodata, UntypedForm) {
  EVector v;
  v.SetType(2, 1, 256);
  unsigned int* bins = static_cast<unsigned int*>(v.GetDataPtr());
  Rng rng(17);
  int differs = 0;
  for (int iter = 0; iter < 100; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 5);
    std::copy(h.begin(), h.end(), bins);
    const unsigned int mn = rng() % 200, mx = mn + 1 + rng() % (255 - mn);
    const unsigned int got = ImgIsodataThreshold(&v, mn, mx);
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_EQ(got, IsodataModel<uint32_t>(h, mn, mx, true)) << iter;
    differs += got != IsodataModel<uint32_t>(h, mn, mx, false);
  }
  EXPECT_GT(differs, 0);  // bin min's product left out does show
  // Range checks return 0; kind and data checks the starting midpoint.
  EXPECT_EQ(ImgIsodataThreshold(&v, 300, 301), 0u);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgIsodataThreshold ( EVector)");
  EXPECT_EQ(ImgIsodataThreshold(&v, 10, 256), 0u);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_EQ(ImgIsodataThreshold(&v, 10, 10), 0u);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EVector table;
  table.SetType(3, 1, 256);
  EXPECT_EQ(ImgIsodataThreshold(&table, 10, 20), 15u);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_KIND);
  EVector empty;
  empty.SetType(2, 0, 0);
  EXPECT_EQ(ImgIsodataThreshold(&empty, 10, 21), 16u);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_VECTOR);
  EXPECT_STREQ(EGetErrorTrace(), "ImgIsodataThreshold ( EVector)");
}

TEST(Isodata, Checks) {
  EBWHistogramVector v;
  Load(v, TwoSpikes());
  const struct {
    unsigned int mn, mx;
    E_ERRORS code;
  } cases[] = {{256, 300, E_ERROR_BAD_RANGE}, {0, 256, E_ERROR_BAD_ARGUMENT_1}, {7, 7, E_ERROR_BAD_ARGUMENT}};
  for (const auto& c : cases) {
    EXPECT_EQ(ImgIsodataThreshold(&v, c.mn, c.mx), 0);
    EXPECT_EQ(EGetError(), c.code);
    EXPECT_STREQ(EGetErrorTrace(), "ImgIsodataThreshold ( EBWHistogramVector)");
  }
  EXPECT_EQ(ImgIsodataThresholdBW16(&v, 0, 100), 0);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgIsodataThreshold ( EBWHistogramVector)");
  Load(v, Hist(65536, 1));
  EXPECT_EQ(ImgIsodataThresholdBW16(&v, 70000, 70001), 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  EXPECT_EQ(ImgIsodataThresholdBW16(&v, 0, 65536), 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_EQ(ImgIsodataThresholdBW16(&v, 5, 5), 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  // Success clears a code left by an earlier call.
  ESetError(E_ERROR_INTERNAL);
  EXPECT_EQ(ImgIsodataThresholdBW16(&v, 0, 65535), 32768);
  EXPECT_EQ(EGetError(), E_OK);
}

TEST(Searches, RefuseWrongSize) {
  EBWHistogramVector v;
  Load(v, Hist(65536, 1));
  float a = 1, b = 2, c = 3;
  EBW8 t = 5, u = 6;
  EXPECT_EQ(ImgMinResidueThreshold(&v, a, b), 0);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMinResidueThreshold");
  EXPECT_EQ(ImgTwoLevelsMinResidueThreshold(&v, t, a, b), -1.f);
  EXPECT_STREQ(EGetErrorTrace(), "ImgTwoLevelsMinResidueThreshold");
  EXPECT_EQ(ImgThreeLevelsMinResidueThreshold(&v, t, u, a, b, c), -1.f);
  EXPECT_STREQ(EGetErrorTrace(), "ImgThreeLevelsMinResidueThreshold");
  EXPECT_EQ(ImgMaxEntropyThreshold(&v, a, b), 0);
  EXPECT_STREQ(EGetErrorTrace(), "ImgMaxEntropyThreshold");
  EXPECT_EQ(ImgMinResidueThreshold(nullptr, a, b), 0);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_EQ(t, 5);
  EXPECT_EQ(u, 6);
  EXPECT_EQ(a, 1.f);
  EXPECT_EQ(b, 2.f);
  EXPECT_EQ(c, 3.f);
}

// ---------------------------------------------------------------- ImgAutoThreshold

TEST(AutoThreshold, ResolvesModesOnTheImageHistogram) {
  Rng rng(21);
  EImage<EBW8> image;
  EROI<EBW8> roi;
  testsupport::PlaceRandom(image, roi, 37, 11, rng);
  testsupport::FillRandom(image, rng);
  EBWHistogramVector h;
  ImgHistogram(&roi, &h);
  Hist bins(h.GetDataPtr(), h.GetDataPtr() + 256);
  for (unsigned int mode : kModes) {
    const EBW8 got = ImgAutoThreshold(&roi, mode, 0.25f);
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_EQ(got, static_cast<unsigned char>(Select8(bins, mode, 0.25f, 0, 255).t)) << mode;
  }
  // Relative 1.0 selects 256, whose low byte is 0.
  EXPECT_EQ(ImgAutoThreshold(&roi, IMG_THRESHOLD_RELATIVE, 1.0f), 0);
  // Absolute values come back without reading the image, even a void one.
  EROI<EBW8> empty;
  EXPECT_EQ(ImgAutoThreshold(&empty, 200u, 0.f), 200);
  EXPECT_EQ(EGetError(), E_OK);
  // 300 is neither a threshold nor a mode.
  ImgAutoThreshold(&roi, 300u, 0.f);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgHistogramThreshold");
  ImgAutoThreshold(&empty, IMG_THRESHOLD_MIN_RESIDUE, 0.f);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

TEST(AutoThreshold, SixteenBit) {
  EImage<EBW16> image(64, 8);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 64; ++x) image.GetImagePtr(x, y)->value = static_cast<unsigned short>(x < 20 ? 1000 : 50000);
  EXPECT_EQ(ImgAutoThreshold(&image, IMG_THRESHOLD_MIN_RESIDUE, 0.f), 1001);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(ImgAutoThreshold(&image, 12345u, 0.f), 12345);
  EXPECT_EQ(ImgAutoThreshold(&image, IMG_THRESHOLD_RELATIVE, 0.5f), 50000);
}

}  // namespace
