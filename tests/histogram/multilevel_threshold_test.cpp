#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "histogram_test_util.h"

namespace {

using Corvane::Talmeer::Utils::Vector;
using histtest::Hist;
using testsupport::Rng;

// A cut: the first bin of every class but the first.
using Cut = std::vector<unsigned int>;

// The sum over the classes of a cut of S * S / n, exactly enough to rank
// cuts; -1 when a class has no pixel.
long double Total(const Hist& h, unsigned int lo, unsigned int hi, const Cut& cut) {
  std::vector<unsigned int> bounds{lo};
  bounds.insert(bounds.end(), cut.begin(), cut.end());
  bounds.push_back(hi + 1);
  long double total = 0;
  for (size_t c = 0; c + 1 < bounds.size(); ++c) {
    long double n = 0, s = 0;
    for (unsigned int i = bounds[c]; i < bounds[c + 1]; ++i) {
      n += h[i];
      s += static_cast<long double>(i) * h[i];
    }
    if (n == 0) return -1;
    total += s * s / n;
  }
  return total;
}

// Every cut of [lo, hi] into `classes` classes, in increasing order of the
// boundaries (so the first of equal totals is the smallest).
void EachCut(unsigned int lo, unsigned int hi, unsigned int classes, Cut& cut,
             const std::function<void(const Cut&)>& visit) {
  if (cut.size() + 1 == classes) {
    visit(cut);
    return;
  }
  const unsigned int from = cut.empty() ? lo + 1 : cut.back() + 1;
  for (unsigned int b = from; b + (classes - 2 - cut.size()) <= hi; ++b) {
    cut.push_back(b);
    EachCut(lo, hi, classes, cut, visit);
    cut.pop_back();
  }
}

Cut CutOf(const Vector<ERegionDescriptor>& regions) {
  Cut cut;
  for (unsigned int i = 1; i < regions.GetNumElements(); ++i) cut.push_back(regions[i].m_un32FirstBin);
  return cut;
}

// Random histograms of a few populated bins in a window of up to 24 bins,
// somewhere in 0..255, against every cut. An exact tie (cuts that differ
// only by where they cross empty bins, or by symmetry) must go to the
// smallest boundaries; where another cut comes within single-precision
// reach of the best, only the total is checked.
TEST(MultiLevelThreshold, MatchesExhaustiveSearchOnRandomHistograms) {
  Rng rng(71);
  int exact = 0;
  for (int iter = 0; iter < 300; ++iter) {
    const unsigned int span = 2 + rng() % 23, lo = rng() % (257 - span), hi = lo + span - 1;
    Hist h(256, 0);
    h[lo] = 1 + rng() % 40;
    h[hi] = 1 + rng() % 40;
    for (unsigned int i = lo + 1; i < hi; ++i)
      if (rng() % 2 == 0) h[i] = 1 + rng() % (rng() % 2 ? 4 : 400);
    unsigned int populated = 0;
    long double n = 0, q = 0;
    for (unsigned int i = lo; i <= hi; ++i) {
      populated += h[i] != 0;
      n += h[i];
      q += static_cast<long double>(i) * i * h[i];
    }
    EBWHistogramVector hist(256);
    histtest::Load(hist, h);
    const unsigned int classes = 2 + rng() % 3;

    // Totals of every valid cut, in lexicographic order of the cuts.
    std::vector<std::pair<long double, Cut>> all;
    Cut cut;
    EachCut(lo, hi, classes, cut, [&](const Cut& c) {
      const long double t = Total(h, lo, hi, c);
      if (t >= 0) all.emplace_back(t, c);
    });
    long double best = -1, second = -1;
    for (const auto& t : all) best = std::max(best, t.first);
    Cut bestCut;
    for (const auto& t : all) {
      if (t.first >= best * (1 - 1e-15L)) {
        if (bestCut.empty()) bestCut = t.second;
      } else {
        second = std::max(second, t.first);
      }
    }

    Vector<ERegionDescriptor> regions;
    const float residue = ImgMultiLevelsMinResidueThreshold(&hist, classes, regions);
    if (populated < classes) {
      EXPECT_FAILED(E_ERROR_INTERNAL, "ImgMultiLevelsMinResidueThreshold");
      EXPECT_EQ(residue, -1.0f);
      continue;
    }
    ASSERT_EQ(EGetError(), E_OK) << iter;
    ASSERT_EQ(regions.GetNumElements(), classes) << iter;
    const Cut got = CutOf(regions);
    EXPECT_GE(Total(h, lo, hi, got), best * (1 - 1e-6L)) << iter;
    if (second < best * (1 - 1e-6L)) {
      EXPECT_EQ(got, bestCut) << iter;
      ++exact;
    }
    // The residue is a small difference of single-precision totals.
    EXPECT_NEAR(residue * residue, static_cast<double>((q - best) / n), 2e-6 * static_cast<double>(q / n)) << iter;
    // Each class's own figures, and the classes tile [lo, hi].
    EXPECT_EQ(regions[0].m_un32FirstBin, lo);
    EXPECT_EQ(regions[classes - 1].m_un32LastBin, hi);
    for (unsigned int c = 0; c < classes; ++c) {
      const ERegionDescriptor& r = regions[c];
      if (c > 0) {
        EXPECT_EQ(r.m_un32FirstBin, regions[c - 1].m_un32LastBin + 1);
      }
      double cn = 0, cs = 0, cq = 0;
      for (unsigned int i = r.m_un32FirstBin; i <= r.m_un32LastBin; ++i) {
        cn += h[i];
        cs += static_cast<double>(i) * h[i];
        cq += static_cast<double>(i) * i * h[i];
      }
      EXPECT_EQ(r.m_un32PixelCount, cn);
      EXPECT_NEAR(r.m_f32Mean, cs / cn, 1e-3);
      EXPECT_NEAR(r.m_f32Variance, cq / cn - (cs / cn) * (cs / cn), 0.05 + 1e-4 * r.m_f32Variance);
    }
    // The thresholds form gives the same cut.
    Vector<EBW8> thresholds;
    EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, classes - 1, thresholds), residue);
    ASSERT_EQ(thresholds.GetNumElements(), classes - 1);
    for (unsigned int i = 0; i + 1 < classes; ++i) EXPECT_EQ(thresholds[i].value, got[i]);
  }
  EXPECT_GT(exact, 120) << "cuts compared exactly";
}

// Exact ties at every level go to the class that ends first: four bins of
// two pixels cut into three classes tie three ways.
TEST(MultiLevelThreshold, TiesAndWorkedCases) {
  EBWHistogramVector hist(256);
  Vector<ERegionDescriptor> regions;
  histtest::Load(hist, histtest::Spikes({{0, 2}, {1, 2}, {2, 2}, {3, 2}}));
  EXPECT_FLOAT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, 3, regions), std::sqrt(0.125f));
  EXPECT_EQ(CutOf(regions), (Cut{1, 2}));
  histtest::Load(hist, histtest::Spikes({{0, 1}, {1, 1}, {2, 1}}));
  ImgMultiLevelsMinResidueThreshold(&hist, 2, regions);
  EXPECT_EQ(CutOf(regions), (Cut{1}));

  // Two populated bins, two classes: each bin a class, residue 0; the
  // second class starts right after the first bin.
  histtest::Load(hist, histtest::Spikes({{40, 7}, {90, 3}}));
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, 2, regions), 0.0f);
  ASSERT_EQ(regions.GetNumElements(), 2u);
  EXPECT_EQ(regions[0].m_un32LastBin, 40u);
  EXPECT_EQ(regions[1].m_un32FirstBin, 41u);
  EXPECT_EQ(regions[1].m_un32PixelCount, 3u);
  EXPECT_EQ(regions[1].m_f32Mean, 90.0f);
  // Three classes cannot be had: the output stays as it was.
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, 3, regions), -1.0f);
  EXPECT_FAILED(E_ERROR_INTERNAL, "ImgMultiLevelsMinResidueThreshold");
  EXPECT_EQ(regions.GetNumElements(), 2u);
  // One class is the whole range.
  EXPECT_NEAR(ImgMultiLevelsMinResidueThreshold(&hist, 1, regions), std::sqrt(21.0 * 2500 / 100), 1e-3);
  EXPECT_EQ(CutOf(regions), Cut{});

  // Four grey levels of an image, four classes: one level each, residue 0.
  EImage<EBW8> image(8, 4);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 8; ++x) image.SetPixel(EBW8(static_cast<unsigned char>(30 + 60 * ((x + y) % 4))), x, y);
  ImgHistogram(&image, &hist);
  Vector<EBW8> thresholds;
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, 3, thresholds), 0.0f);
  ASSERT_EQ(thresholds.GetNumElements(), 3u);
  EXPECT_EQ(thresholds[0].value, 31);
  EXPECT_EQ(thresholds[1].value, 91);
  EXPECT_EQ(thresholds[2].value, 151);
}

// All levels at once: one descriptor per number of classes from 2, each the
// same as a single search.
TEST(MultiLevelThreshold, AllLevelsMatchSingleSearches) {
  Rng rng(72);
  Hist h(256, 0);
  for (int i = 0; i < 2000; ++i) ++h[(rng() % 120 + rng() % 120 + (i % 3) * 40) % 256];
  EBWHistogramVector hist(256);
  histtest::Load(hist, h);
  Vector<ELabelisationDescriptor> levels;
  const float last = ImgAllMultiLevelsMinResidueThreshold(&hist, 5, levels);
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(levels.GetNumElements(), 4u);
  EXPECT_EQ(last, levels[3].m_f32Residue);
  for (unsigned int m = 0; m < 4; ++m) {
    Vector<ERegionDescriptor> regions;
    EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, m + 2, regions), levels[m].m_f32Residue);
    ASSERT_EQ(levels[m].m_Regions.GetNumElements(), m + 2);
    EXPECT_EQ(CutOf(levels[m].m_Regions), CutOf(regions));
  }
  histtest::Load(hist, histtest::Spikes({{1, 5}, {2, 5}, {200, 1}}));
  ImgAllMultiLevelsMinResidueThreshold(&hist, 3, levels);
  ASSERT_EQ(levels.GetNumElements(), 2u);
  EXPECT_EQ(levels[0].m_Regions.GetNumElements(), 2u);
  EXPECT_EQ(levels[1].m_Regions.GetNumElements(), 3u);
}

TEST(MultiLevelThreshold, RefusedCalls) {
  EBWHistogramVector wrong(255), empty(256), hist(256);
  histtest::Load(wrong, Hist(255, 1));
  histtest::Load(empty, Hist(256, 0));
  histtest::Load(hist, histtest::Spikes({{3, 1}, {9, 1}, {20, 1}}));
  Vector<ERegionDescriptor> regions;
  Vector<ELabelisationDescriptor> levels;
  Vector<EBW8> thresholds;
  thresholds.AddElement(EBW8(77));
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&wrong, 2, regions), -1.0f);
  EXPECT_FAILED(E_ERROR_VECTOR_SIZE, "ImgMultiLevelsMinResidueThreshold");
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&empty, 2, thresholds), -1.0f);
  EXPECT_FAILED(E_ERROR_VECTOR_SIZE, "ImgMultiLevelsMinResidueThreshold");
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, 3, thresholds), -1.0f);
  EXPECT_FAILED(E_ERROR_INTERNAL, "ImgMultiLevelsMinResidueThreshold");
  ASSERT_EQ(thresholds.GetNumElements(), 1u);
  EXPECT_EQ(thresholds[0].value, 77);
  EXPECT_EQ(ImgMultiLevelsMinResidueThreshold(&hist, 0, regions), -1.0f);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT, "ImgMultiLevelsMinResidueThreshold");
  EXPECT_EQ(ImgAllMultiLevelsMinResidueThreshold(&hist, 1, levels), -1.0f);
  EXPECT_FAILED(E_ERROR_BAD_ARGUMENT, "ImgAllMultiLevelsMinResidueThreshold");
  EXPECT_EQ(ImgAllMultiLevelsMinResidueThreshold(&hist, 4, levels), -1.0f);
  EXPECT_FAILED(E_ERROR_INTERNAL, "ImgAllMultiLevelsMinResidueThreshold");
  EXPECT_EQ(levels.GetNumElements(), 0u);
}

// The small vector grows by 32, copies deeply and refuses an index past its
// count with the library's exception.
TEST(MultiLevelThreshold, UtilsVector) {
  Vector<ELabelisationDescriptor> v;
  for (unsigned int i = 0; i < 40; ++i) {
    ELabelisationDescriptor d;
    d.m_f32Residue = static_cast<float>(i);
    d.m_Regions.AddElement(ERegionDescriptor{i, i, 0, 0, i});
    ASSERT_TRUE(v.AddElement(d));
  }
  EXPECT_EQ(v.GetMaxElements(), 64u);
  const Vector<ELabelisationDescriptor> copy = v;
  v.Empty();
  EXPECT_EQ(v.GetNumElements(), 0u);
  ASSERT_EQ(copy.GetNumElements(), 40u);
  EXPECT_EQ(copy[39].m_Regions[0].m_un32PixelCount, 39u);
  try {
    (void)copy[40];
    ADD_FAILURE() << "no exception";
  } catch (const Corvane::Talmeer::Exception& e) {
    EXPECT_EQ(e.GetCode(), E_ERROR_INDEX_OUT_OF_RANGE);
  }
}

}  // namespace
