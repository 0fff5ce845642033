// Threshold selection: worked histograms, each search against a plain model
// that recomputes the class totals at every candidate, and the checks.
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

#include "histogram_test_util.h"

namespace {

using histtest::Hist;
using histtest::Load;
using histtest::Spikes;
using testsupport::Rng;

// Random histograms of n bins: dense, sparse, one populated bin, all zero,
// mostly empty, and a few huge bins (so 32-bit sums wrap).
Hist RandomHist(Rng& rng, unsigned int n, int kind) {
  Hist h(n, 0);
  const int spikes[] = {0, 6, 1, 0, 0, 4};
  for (int k = 0; k < spikes[kind]; ++k)
    h[rng() % n] = kind == 5 ? rng() % 60000000 : 1 + rng() % (kind == 1 ? 50000 : 100000);
  if (kind == 0 || kind == 4)
    for (auto& v : h) v = kind == 0 ? rng() % 1000 : rng() % 4 == 0 ? rng() % 300 : 0;
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

const unsigned int kSq = IMG_THRESHOLD_MIN_SQUARED_DISTANCE, kDist = IMG_THRESHOLD_MIN_DISTANCE,
                   kIso = IMG_THRESHOLD_ISODATA, kEnt = IMG_THRESHOLD_MAX_ENTROPY, kRes = IMG_THRESHOLD_MIN_RESIDUE,
                   kRel = IMG_THRESHOLD_RELATIVE, kModes[] = {kSq, kDist, kIso, kEnt, kRes, kRel};

// The 8-bit selection, recomputing the classes at every t.
Pick Select8(const Hist& h, unsigned int mode, float relative, unsigned int mn, unsigned int mx) {
  // Count (or weighted sum) of bins [a, b), 32-bit and wrapping.
  auto tot = [&](unsigned int a, unsigned int b, bool w = false) {
    uint32_t c = 0;
    for (unsigned int i = a; i < b; ++i) c += w ? h[i] * i : h[i];
    return c;
  };
  const uint32_t n = tot(mn, mx + 1);
  uint32_t n1 = 0, s1 = 0, n2 = 0, s2 = 0;
  unsigned int t = 0;
  bool found = false;
  if (mode == kRes || mode == kIso || mode == kEnt) {
    Best best(3.4028235e38f);
    for (unsigned int c = mn; c <= mx; ++c) {
      const uint32_t a1 = tot(mn, c), b1 = tot(mn, c, true), a2 = tot(c, mx + 1), b2 = tot(c, mx + 1, true);
      if (a1 == 0 || a2 == 0) continue;
      double score;
      if (mode == kRes) {
        score = -(double(b2) * double(b2) / double(a2) + double(b1) * double(b1) / double(a1));
      } else if (mode == kIso) {
        score = std::fabs(0.5f * float(b2) / float(a2) + 0.5f * float(b1) / float(a1) - float(c));
      } else {
        double ea = 0, eb = 0;
        for (unsigned int i = mn; i <= mx; ++i) (i < c ? ea : eb) += XLogX(h[i]);
        score = ea / a1 - std::log(double(a1)) + eb / a2 - std::log(double(a2));
      }
      if (best.Below(score)) best.Set(score), t = c, n1 = a1, s1 = b1, n2 = a2, s2 = b2, found = true;
    }
  } else if (mode == kSq || mode == kDist) {
    const bool sq = mode == kSq;
    uint32_t bestCost = 0xFFFFFFFFu;
    for (unsigned int c = mx + 1; c-- > mn;) {
      uint32_t l = sq ? n * mn * mn : 0, u = 0;
      for (unsigned int i = mn; i <= mx; ++i) {
        const uint32_t d = i <= c ? i : 255 - i;
        (i <= c ? l : u) += sq ? h[i] * d * d : h[i] * d;
      }
      if (static_cast<uint32_t>(l + u) < bestCost)
        bestCost = l + u, t = c, n1 = tot(mn, c + 1), s1 = l, n2 = tot(c + 1, mx + 1), s2 = u, found = true;
    }
  } else {
    t = mode;
    if (mode == kRel) {
      const uint32_t target = n - static_cast<uint32_t>(double(n) * relative);
      for (t = mx + 1; t > mn && tot(t, mx + 1) < target;) --t;
    }
    n1 = tot(mn, t), s1 = tot(mn, t, true), n2 = tot(t, mx + 1), s2 = tot(t, mx + 1, true), found = true;
  }
  if (!found) t = 0, n1 = s1 = n2 = s2 = 0;
  return {t, n1 ? float(s1) / float(n1) : float(mn), n2 ? float(s2) / float(n2) : float(mx + 1)};
}

Pick Threshold(const Hist& h, unsigned int mode, float relative = 0.5f, unsigned int mn = 0, unsigned int mx = 255) {
  EBWHistogramVector v;
  Load(v, h);
  Pick p{mode, -7.0f, -7.0f};
  if (h.size() == 256) ImgHistogramThreshold(&v, p.t, p.below, p.above, relative, mn, mx);
  else ImgHistogramThresholdBW16(&v, p.t, p.below, p.above, relative, mn, mx);
  EXPECT_EQ(EGetError(), E_OK);
  return p;
}

void ExpectPick(const Pick& want, const Pick& got, const std::string& what) {
  EXPECT_EQ(want.t, got.t) << what;
  EXPECT_EQ(want.below, got.below) << what;
  EXPECT_EQ(want.above, got.above) << what;
}

const Hist kTwoSpikes = Spikes({{50, 100}, {200, 100}});

TEST(HistogramThreshold, WorkedHistograms) {
  const Hist h16 = Spikes({{1000, 10}, {50000, 1}}, 65536);
  const struct { Hist h; unsigned int mode; float rel; unsigned int mn, mx; Pick want; } cases[] = {
      // Every split between the spikes scores alike: the lowest t wins. The
      // distance modes scan downward, keep bin t below, and report the costs.
      {kTwoSpikes, kRes, 0.5f, 0, 255, {51, 50.f, 200.f}},      {kTwoSpikes, kIso, 0.5f, 0, 255, {125, 50.f, 200.f}},
      {kTwoSpikes, kEnt, 0.5f, 0, 255, {51, 50.f, 200.f}},      {kTwoSpikes, kSq, 0.5f, 0, 255, {199, 2500.f, 3025.f}},
      {kTwoSpikes, kDist, 0.5f, 0, 255, {199, 50.f, 55.f}},     {kTwoSpikes, kRel, 0.5f, 0, 255, {200, 50.f, 200.f}},
      {kTwoSpikes, 120, 0.5f, 0, 255, {120, 50.f, 200.f}},
      // Relative 1.0: nothing above, t = max + 1; 0.0: the lowest populated bin.
      {kTwoSpikes, kRel, 1.0f, 0, 255, {256, 125.f, 256.f}},    {kTwoSpikes, kRel, 0.0f, 0, 255, {50, 0.f, 125.f}},
      {Hist(256, 0), kRel, 0.3f, 30, 40, {41, 30.f, 41.f}},
      // min > 0 adds N * min * min: 3*400 + 900 + 4*100 = 2500 below, far less
      // than any distance to white; the scan starts at max.
      {Spikes({{20, 3}, {30, 1}}), kSq, 0.f, 10, 40, {40, 625.f, 41.f}},
      // No split: t = 0 and the range ends.
      {Spikes({{77, 1000}}), kRes, 0.f, 0, 255, {0, 0.f, 256.f}}, {Spikes({{77, 1000}}), kIso, 0.f, 0, 255, {0, 0.f, 256.f}},
      {Spikes({{77, 1000}}), kEnt, 0.f, 0, 255, {0, 0.f, 256.f}}, {Hist(256, 0), kRes, 0.f, 5, 200, {0, 5.f, 201.f}},
      // 16 bits: the highest t of the tie between the spikes; white is 65535.
      {h16, kSq, 0.f, 0, 65535, {49999, 1e6f, float(15535.0 * 15535.0)}},
      {h16, kEnt, 0.f, 0, 65535, {1001, 1000.f, 50000.f}}};
  for (const auto& c : cases) ExpectPick(c.want, Threshold(c.h, c.mode, c.rel, c.mn, c.mx), std::to_string(c.mode));
}

TEST(HistogramThreshold, MatchesModelOnRandomHistograms) {
  Rng rng(7);
  for (int iter = 0; iter < 120; ++iter) {
    SCOPED_TRACE(iter);
    const Hist h = RandomHist(rng, 256, iter % 6);
    unsigned int mn = 0, mx = 255;
    if (iter % 3 == 1) mn = rng() % 200, mx = mn + 1 + rng() % (255 - mn);
    const float rel = static_cast<float>(rng() % 1001) / 1000.f;
    const unsigned int abs = mn + rng() % (mx - mn + 1);
    for (unsigned int mode : kModes)
      ExpectPick(Select8(h, mode, rel, mn, mx), Threshold(h, mode, rel, mn, mx), std::to_string(mode));
    ExpectPick(Select8(h, abs, rel, mn, mx), Threshold(h, abs, rel, mn, mx), "absolute");
  }
}

TEST(HistogramThreshold, Checks) {
  EBWHistogramVector v, wrong;
  Load(v, kTwoSpikes);
  Load(wrong, Hist(255, 1));  // and 256 bins are wrong on the 16-bit form; -2 is not a mode
  const struct { EBWHistogramVector* v; unsigned int t; float rel; unsigned int mn, mx; E_ERRORS code; } cases[] = {
      {&v, kRes, 0.f, 256, 300, E_ERROR_BAD_ARGUMENT_3},           {&v, kRes, 0.f, 0, 256, E_ERROR_BAD_ARGUMENT_4},
      {&v, kRes, 0.f, 9, 9, E_ERROR_BAD_ARGUMENT},                 {&v, kRel, 1.5f, 0, 255, E_ERROR_BAD_ARGUMENT_3},
      {&v, kRel, -0.1f, 0, 255, E_ERROR_BAD_ARGUMENT_3},           {&v, 0xFFFFFFFEu, 0.f, 0, 255, E_ERROR_BAD_RANGE},
      {&v, 0xFFFFFFFFu, 0.f, 0, 255, E_ERROR_BAD_RANGE},           {&v, 300, 0.f, 0, 255, E_ERROR_BAD_RANGE},
      {&v, 9, 0.f, 10, 20, E_ERROR_BAD_RANGE},                     {&v, 21, 0.f, 10, 20, E_ERROR_BAD_RANGE},
      {&wrong, kRes, 0.f, 0, 255, E_ERROR_VECTOR_SIZE},            {&v, kRes, 0.f, 0, 65535, E_ERROR_VECTOR_SIZE}};
  for (const auto& c : cases) {
    Pick p{c.t, 1.5f, 2.5f};
    if (c.mx < 65535) ImgHistogramThreshold(c.v, p.t, p.below, p.above, c.rel, c.mn, c.mx);
    else ImgHistogramThresholdBW16(c.v, p.t, p.below, p.above, c.rel, c.mn, c.mx);
    EXPECT_FAILED(c.code, c.mx < 65535 ? "ImgHistogramThreshold" : "ImgHistogramThreshold (BW16)");
    ExpectPick({c.t, 1.5f, 2.5f}, p, std::to_string(c.t) + " " + std::to_string(c.mn));
  }
}

// The 16-bit selection with prefix tables: 64-bit totals, 32-bit products.
Pick Select16(const Hist& h, unsigned int mode, float relative, unsigned int mn, unsigned int mx) {
  const unsigned int m = mx - mn + 1;
  std::vector<int64_t> c(m + 1, 0), s(m + 1, 0);  // totals of bins [mn, mn + k)
  for (unsigned int k = 0, i = mn; k < m; ++k, ++i) c[k + 1] = c[k] + h[i], s[k + 1] = s[k] + int64_t(uint64_t(h[i]) * i);
  const int64_t n = c[m];
  int64_t n1 = 0, s1 = 0, n2 = 0, s2 = 0;
  unsigned int t = 0;
  bool found = false;
  if (mode == kRes || mode == kIso) {
    // Running class sums, as the products of a scan are 32-bit.
    int64_t a1 = 0, b1 = 0, a2 = n, b2 = s[m];
    double best = 1.7976931348623157e308;
    for (unsigned int i = mn; i <= mx; ++i) {
      if (a1 > 0 && a2 > 0) {
        const double score = mode == kRes
                                 ? -(double(b2) * double(b2) / double(a2) + double(b1) * double(b1) / double(a1))
                                 : std::fabs(0.5 * double(b2) / double(a2) + 0.5 * double(b1) / double(a1) - i);
        if (score < best) best = score, t = i, n1 = a1, s1 = b1, n2 = a2, s2 = b2, found = true;
      }
      const uint32_t p = h[i] * i;
      a1 += h[i], b1 += p, a2 -= h[i], b2 -= p;
    }
  } else if (mode == kDist || mode == kSq) {
    const bool sq = mode == kSq;
    int64_t l = sq ? n * int64_t(mn) * mn : s[m], u = 0, a1 = n, a2 = 0, best = INT64_MAX;
    for (unsigned int i = mn; sq && i <= mx; ++i) l += int64_t(uint64_t(h[i]) * i * i);
    for (unsigned int i = mx + 1; i-- > mn;) {
      if (l + u < best) best = l + u, t = i, n1 = a1, s1 = l, n2 = a2, s2 = u, found = true;
      const uint32_t up = 65535 - i;
      l -= sq ? uint32_t(h[i] * i * i) : uint32_t(h[i] * i);
      u += sq ? uint32_t(h[i] * up * up) : uint32_t(h[i] * up);
      a1 -= h[i], a2 += h[i];
    }
  } else {
    t = mode;
    if (mode == kRel) {
      const int64_t target = n - static_cast<int64_t>(double(n) * relative);
      for (t = mx + 1; t > mn && n - c[t - mn] < target;) --t;
    }
    n1 = c[t - mn], s1 = s[t - mn], n2 = n - n1, s2 = s[m] - s1, found = true;
  }
  if (!found) t = 0, n1 = s1 = n2 = s2 = 0;
  return {t, n1 > 0 ? float(double(s1) / double(n1)) : float(mn), n2 > 0 ? float(double(s2) / double(n2)) : float(mx + 1)};
}

TEST(HistogramThreshold, SixteenBitMatchesModel) {
  Rng rng(11);
  for (int iter = 0; iter < 12; ++iter) {
    SCOPED_TRACE(iter);
    const Hist h = RandomHist(rng, 65536, iter % 5 == 4 ? 1 : iter % 5);
    unsigned int mn = 0, mx = 65535;
    if (iter % 2 == 1) mn = rng() % 60000, mx = mn + 1 + rng() % (65535 - mn);
    const float rel = static_cast<float>(rng() % 1001) / 1000.f;
    for (unsigned int mode : {kRes, kIso, kDist, kSq, kRel, mn + static_cast<unsigned int>(rng() % (mx - mn + 1))})
      ExpectPick(Select16(h, mode, rel, mn, mx), Threshold(h, mode, rel, mn, mx), std::to_string(mode));
  }
}

// ---------------------------------------------------------------- standalone searches

// Totals of bins [0, i): counts and weighted sums (32-bit, wrapping), x log x.
struct Prefix {
  uint32_t c[257] = {}, s[257] = {};
  double e[257] = {};
  explicit Prefix(const Hist& h) {
    for (unsigned int i = 0; i < 256; ++i) c[i + 1] = c[i] + h[i], s[i + 1] = s[i] + h[i] * i, e[i + 1] = e[i] + XLogX(h[i]);
  }
};

// One class's term of the between-class score, on single-precision totals.
double Part(uint32_t n, uint32_t s) { return double(float(s)) * float(s) / float(n); }

struct Levels {
  unsigned int lo = 0, hi = 0;
  float best, avg[3] = {-1, -1, -1}, residue;
};

// A maximising search over the classes [0, lo), [lo, hi), [hi, 256); with two
// levels the middle class is empty (hi = lo). `score` reads each class's
// count, sum and sum of x log x. Identical splits keep the first.
template <class Score>
Levels Search(const Prefix& p, bool three, double start, Score score) {
  const uint32_t n = p.c[256], s = p.s[256];
  Best best(start);
  Levels r;
  for (unsigned int t1 = 0; t1 < 256; ++t1)
    for (unsigned int t2 = t1; t2 < (three ? 256 : t1 + 1); ++t2) {
      const uint32_t nc[3] = {p.c[t1], p.c[t2] - p.c[t1], n - p.c[t2]}, sc[3] = {p.s[t1], p.s[t2] - p.s[t1], s - p.s[t2]};
      const double ec[3] = {p.e[t1], p.e[t2] - p.e[t1], p.e[256] - p.e[t2]};
      if (nc[0] == 0 || nc[2] == 0 || (three && nc[1] == 0)) continue;
      const double x = score(nc, sc, ec);
      if (!best.Above(x)) continue;
      best.Set(x), r.lo = t1, r.hi = t2;
      for (int k = 0; k < 3; ++k) r.avg[k] = nc[k] ? float(sc[k]) / float(nc[k]) : -1.f;
    }
  r.best = best.rounded;
  return r;
}

Levels ResidueModel(const Hist& h, bool three) {
  const Prefix p(h);
  Levels r = Search(p, three, Part(p.c[256], p.s[256]), [three](const uint32_t* nc, const uint32_t* sc, const double*) {
    return Part(nc[0], sc[0]) + Part(nc[2], sc[2]) + (three ? Part(nc[1], sc[1]) : 0.0);
  });
  double q = 0;
  for (unsigned int i = 0; i < 256; ++i) q += double(h[i]) * i * i;
  r.residue = float(std::sqrt((double(float(q)) - r.best) / float(p.c[256])));  // NaN when it goes negative
  return r;
}

TEST(MinResidue, Worked) {
  EBWHistogramVector v;
  Load(v, Hist(256, 1));
  float b = -1, a = -1, c = -1;
  EBW8 t = 0, u = 0;
  EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), 128);
  EXPECT_EQ(b, 63.5f);
  EXPECT_EQ(a, 191.5f);
  // Within-class variance of 128 consecutive values: (128^2 - 1) / 12.
  EXPECT_FLOAT_EQ(ImgTwoLevelsMinResidueThreshold(&v, t, b, a), std::sqrt(1365.25f));
  EXPECT_EQ(t, 128);
  Load(v, Spikes({{20, 10}, {100, 10}, {220, 10}}));
  EXPECT_EQ(ImgThreeLevelsMinResidueThreshold(&v, t, u, a, b, c), 0.f);
  EXPECT_TRUE(t == 21 && u == 101 && a == 20.f && b == 100.f && c == 220.f);
}

TEST(MinResidue, TwoAndThreeLevelsMatchModel) {
  Rng rng(3);
  EBWHistogramVector v;
  for (int iter = 0; iter < 150; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 6);
    Load(v, h);
    const Levels m = ResidueModel(h, false);
    float b = -1, a = -1, c = -1;
    EBW8 t = 77, u = 77;
    EXPECT_EQ(ImgMinResidueThreshold(&v, b, a), m.lo) << iter;
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_TRUE(b == m.avg[0] && a == m.avg[2]) << iter;
    b = a = -1;
    const float res = ImgTwoLevelsMinResidueThreshold(&v, t, b, a);
    EXPECT_TRUE(t == m.lo && b == m.avg[0] && (res == m.residue || (std::isnan(res) && std::isnan(m.residue)))) << iter;
    if (iter % 5) continue;
    const Levels m3 = ResidueModel(h, true);
    b = a = -1;
    const float res3 = ImgThreeLevelsMinResidueThreshold(&v, t, u, a, b, c);
    EXPECT_TRUE(t == m3.lo && u == m3.hi && a == m3.avg[0] && b == m3.avg[1] && c == m3.avg[2]) << iter;
    if (!std::isnan(m3.residue)) {
      EXPECT_EQ(res3, m3.residue) << iter;
    }
  }
}

TEST(MaxEntropy, WorkedAndModel) {
  EBWHistogramVector v;
  Load(v, Hist(256, 1));
  float b = -1, a = -1;
  EXPECT_EQ(ImgMaxEntropyThreshold(&v, b, a), 128);
  EXPECT_EQ(b, 63.5f);
  // Two equal spikes: each class has entropy 0, below the whole's ln 2.
  Load(v, kTwoSpikes);
  b = a = -1;
  EXPECT_EQ(ImgMaxEntropyThreshold(&v, b, a), 0);
  EXPECT_EQ(b, -1.f);
  Rng rng(9);
  for (int iter = 0; iter < 60; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 6);
    Load(v, h);
    const Prefix p(h);
    const double n = p.c[256];
    const Levels m = Search(p, false, std::log(n) - p.e[256] / n, [](const uint32_t* nc, const uint32_t*, const double* ec) {
      return std::log(double(nc[2])) + std::log(double(nc[0])) - ec[2] / nc[2] - ec[0] / nc[0];
    });
    b = a = -1;
    EXPECT_EQ(ImgMaxEntropyThreshold(&v, b, a), m.lo) << iter;
    EXPECT_TRUE(b == m.avg[0] && a == m.avg[2]) << iter;
  }
}

template <class Sum>
unsigned int IsodataModel(const Hist& h, unsigned int mn, unsigned int mx, bool legacy = false) {
  auto totals = [&](unsigned int b, Sum& c, Sum& w) {
    c = 0, w = 0;
    for (unsigned int k = mn; k <= b; ++k) c += h[k], w += legacy && k == mn ? 0 : uint32_t(k * h[k]);
  };
  Sum ct, wt, c, w, t = (mn + mx + 1) / 2;
  totals(mx, ct, wt);
  for (int round = 0; round < 16; ++round) {
    totals(static_cast<unsigned int>(t), c, w);
    const Sum m1 = c ? w / c : (t + mn) / 2, m2 = ct - c ? (wt - w) / (ct - c) : (t + mx + 1) / 2;
    if ((m1 + m2) / 2 == t) break;
    t = (m1 + m2) / 2;
  }
  return static_cast<unsigned int>(t);
}

TEST(Isodata, WorkedAndModel) {
  EBWHistogramVector v;
  Load(v, kTwoSpikes);
  EXPECT_EQ(ImgIsodataThreshold(&v, 0, 255), 125);  // 128, then (50 + 200) / 2
  EVector u;  // the untyped form leaves bin min's product out of the sums
  u.SetType(2, 1, 256);
  Rng rng(13);
  int differs = 0;
  for (int iter = 0; iter < 200; ++iter) {
    const Hist h = RandomHist(rng, 256, iter % 5);
    Load(v, h);
    std::copy(h.begin(), h.end(), static_cast<unsigned int*>(u.GetDataPtr()));
    const unsigned int mn = rng() % 200, mx = mn + 1 + rng() % (255 - mn);
    EXPECT_EQ(ImgIsodataThreshold(&v, mn, mx), IsodataModel<uint32_t>(h, mn, mx)) << iter;
    EXPECT_EQ(EGetError(), E_OK);
    if (iter % 2) continue;
    const unsigned int got = ImgIsodataThreshold(&u, mn, mx);
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_EQ(got, IsodataModel<uint32_t>(h, mn, mx, true)) << iter;
    differs += got != IsodataModel<uint32_t>(h, mn, mx, false);
  }
  EXPECT_GT(differs, 0);
  for (int iter = 0; iter < 6; ++iter) {
    const Hist h = RandomHist(rng, 65536, iter % 3);
    Load(v, h);
    const unsigned int mn = rng() % 30000, mx = mn + 1 + rng() % (65535 - mn);
    EXPECT_EQ(ImgIsodataThresholdBW16(&v, mn, mx), IsodataModel<uint64_t>(h, mn, mx)) << iter;
    EXPECT_EQ(EGetError(), E_OK);
  }
}

TEST(Searches, Checks) {
  EBWHistogramVector v8, v16;
  Load(v8, kTwoSpikes);
  Load(v16, Hist(65536, 1));
  EVector u, table, empty;
  u.SetType(2, 1, 256);
  table.SetType(3, 1, 256);
  empty.SetType(2, 0, 0);
  float a = 1, b = 2, c = 3;
  EBW8 t = 5, w = 6;
  const char* kIso = "ImgIsodataThreshold ( EBWHistogramVector)";
  const char* kIsoU = "ImgIsodataThreshold ( EVector)";
  // Range checks give 0; on the untyped form, kind and data checks give the starting midpoint.
  const struct { std::function<double()> call; double result; E_ERRORS code; const char* label; } cases[] = {
      {[&] { return ImgIsodataThreshold(&v8, 256, 300); }, 0, E_ERROR_BAD_RANGE, kIso},
      {[&] { return ImgIsodataThreshold(&v8, 0, 256); }, 0, E_ERROR_BAD_ARGUMENT_1, kIso},
      {[&] { return ImgIsodataThreshold(&v8, 7, 7); }, 0, E_ERROR_BAD_ARGUMENT, kIso},
      {[&] { return ImgIsodataThresholdBW16(&v8, 0, 100); }, 0, E_ERROR_VECTOR_SIZE, kIso},
      {[&] { return ImgIsodataThresholdBW16(&v16, 70000, 70001); }, 0, E_ERROR_BAD_RANGE, kIso},
      {[&] { return ImgIsodataThresholdBW16(&v16, 0, 65536); }, 0, E_ERROR_BAD_ARGUMENT_1, kIso},
      {[&] { return ImgIsodataThresholdBW16(&v16, 5, 5); }, 0, E_ERROR_BAD_ARGUMENT, kIso},
      {[&] { return ImgIsodataThreshold(&u, 300, 301); }, 0, E_ERROR_BAD_RANGE, kIsoU},
      {[&] { return ImgIsodataThreshold(&u, 10, 256); }, 0, E_ERROR_BAD_ARGUMENT_1, kIsoU},
      {[&] { return ImgIsodataThreshold(&u, 10, 10); }, 0, E_ERROR_BAD_ARGUMENT, kIsoU},
      {[&] { return ImgIsodataThreshold(&table, 10, 20); }, 15, E_ERROR_VECTOR_KIND, kIsoU},
      {[&] { return ImgIsodataThreshold(&empty, 10, 21); }, 16, E_ERROR_VOID_VECTOR, kIsoU},
      // 8-bit searches refuse 65536 bins (and a missing vector) and leave the outputs.
      {[&] { return ImgMinResidueThreshold(&v16, a, b); }, 0, E_ERROR_VECTOR_SIZE, "ImgMinResidueThreshold"},
      {[&] { return ImgMinResidueThreshold(nullptr, a, b); }, 0, E_ERROR_VECTOR_SIZE, "ImgMinResidueThreshold"},
      {[&] { return ImgTwoLevelsMinResidueThreshold(&v16, t, a, b); }, -1, E_ERROR_VECTOR_SIZE,
       "ImgTwoLevelsMinResidueThreshold"},
      {[&] { return ImgThreeLevelsMinResidueThreshold(&v16, t, w, a, b, c); }, -1, E_ERROR_VECTOR_SIZE,
       "ImgThreeLevelsMinResidueThreshold"},
      {[&] { return ImgMaxEntropyThreshold(&v16, a, b); }, 0, E_ERROR_VECTOR_SIZE, "ImgMaxEntropyThreshold"},
  };
  for (const auto& k : cases) {
    EXPECT_EQ(k.call(), k.result) << k.label;
    EXPECT_FAILED(k.code, k.label);
  }
  EXPECT_TRUE(t == 5 && w == 6 && a == 1.f && b == 2.f && c == 3.f);
  // Success clears a code left by an earlier call.
  ESetError(E_ERROR_INTERNAL);
  EXPECT_EQ(ImgIsodataThresholdBW16(&v16, 0, 65535), 32768);
  EXPECT_EQ(EGetError(), E_OK);
}

// ---------------------------------------------------------------- ImgAutoThreshold

TEST(AutoThreshold, ResolvesModesOnTheImageHistogram) {
  Rng rng(21);
  EImage<EBW8> image;
  EROI<EBW8> roi, empty;
  testsupport::PlaceRandom(image, roi, 37, 11, rng);
  testsupport::FillRandom(image, rng);
  EBWHistogramVector h;
  ImgHistogram(&roi, &h);
  for (unsigned int mode : kModes) {
    EXPECT_EQ(ImgAutoThreshold(&roi, mode, 0.25f), uint8_t(Select8(histtest::Bins(h), mode, 0.25f, 0, 255).t)) << mode;
    EXPECT_EQ(EGetError(), E_OK);
  }
  // Relative 1.0 selects 256, whose low byte is 0.
  EXPECT_EQ(ImgAutoThreshold(&roi, IMG_THRESHOLD_RELATIVE, 1.0f), 0);
  // Absolute values come back without reading the image, even a void one.
  EXPECT_EQ(ImgAutoThreshold(&empty, 200u, 0.f), 200);
  EXPECT_EQ(EGetError(), E_OK);
  ImgAutoThreshold(&roi, 300u, 0.f);  // neither a threshold nor a mode
  EXPECT_FAILED(E_ERROR_BAD_RANGE, "ImgHistogramThreshold");
  ImgAutoThreshold(&empty, IMG_THRESHOLD_MIN_RESIDUE, 0.f);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);

  EImage<EBW16> image16(64, 8);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 64; ++x) image16.GetImagePtr(x, y)->value = static_cast<unsigned short>(x < 20 ? 1000 : 50000);
  EXPECT_EQ(ImgAutoThreshold(&image16, IMG_THRESHOLD_MIN_RESIDUE, 0.f), 1001);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(ImgAutoThreshold(&image16, 12345u, 0.f), 12345);
  EXPECT_EQ(ImgAutoThreshold(&image16, IMG_THRESHOLD_RELATIVE, 0.5f), 50000);
}

}  // namespace
