#include <algorithm>
#include <vector>

#include "test_support.h"

namespace {

using testsupport::Rng;
using Samples = std::vector<long>;

template <class V>
V Make(const Samples& s) {
  V v;
  for (long x : s) v.AddElement(static_cast<decltype(v.GetDataPtr()->value)>(x));
  return v;
}
template <class V>
Samples Read(const V& v) {
  return Samples(v.GetDataPtr(), v.GetDataPtr() + v.GetNumElements());
}

// Runs above high or below low with both ends inside the profile, by their
// excursions; the centre is the excursions' centre of gravity.
std::vector<EPeak> PeaksModel(const Samples& p, long low, long high, long minAmp, long minArea) {
  std::vector<EPeak> out;
  const auto kind = [&](long v) { return v > high ? 1 : v < low ? -1 : 0; };
  for (size_t s = 0; s < p.size();) {
    size_t e = s;
    while (e < p.size() && kind(p[e]) == kind(p[s])) ++e;
    const int k = kind(p[s]);
    if (k != 0 && s > 0 && e < p.size()) {
      long amp = 0, area = 0;
      double weighted = 0;
      for (size_t i = s; i < e; ++i) {
        const long d = p[i] - (k > 0 ? high : low);
        amp = i == s ? d : k > 0 ? std::max(amp, d) : std::min(amp, d);
        area += d;
        weighted += static_cast<double>(d) * static_cast<double>(i);
      }
      if (k * amp >= minAmp && k * area >= minArea)
        out.push_back(EPeak{static_cast<unsigned>(s), static_cast<unsigned>(e - s),
                            static_cast<float>(weighted / area), static_cast<int>(amp), static_cast<int>(area)});
    }
    s = e;
  }
  return out;
}

void ExpectPeaks(const EPeaksVector& got, const std::vector<EPeak>& want) {
  ASSERT_EQ(got.GetNumElements(), want.size());
  for (size_t i = 0; i < want.size(); ++i) {
    const EPeak& g = got[static_cast<unsigned>(i)];
    EXPECT_EQ(g.m_un32Start, want[i].m_un32Start);
    EXPECT_EQ(g.m_un32Length, want[i].m_un32Length);
    EXPECT_NEAR(g.m_f32Center, want[i].m_f32Center, 1e-4 * (1 + want[i].m_f32Center));
    EXPECT_EQ(g.m_n32Amplitude, want[i].m_n32Amplitude);
    EXPECT_EQ(g.m_n32Area, want[i].m_n32Area);
  }
}

// Random profiles of flat stretches, with dead bands of every width.
template <class V>
void PeaksAgainstModel(long top) {
  Rng rng(21 + static_cast<unsigned>(top));
  for (int trial = 0; trial < 300; ++trial) {
    Samples p;
    const size_t n = rng() % 60;
    while (p.size() < n) p.insert(p.end(), 1 + rng() % 5, static_cast<long>(rng() % (top + 1)));
    long low = static_cast<long>(rng() % (top + 1)), high = static_cast<long>(rng() % (top + 1));
    if (low > high) std::swap(low, high);
    if (trial % 5 == 0) high = low;
    const long minAmp = static_cast<long>(rng() % (top / 8)), minArea = static_cast<long>(rng() % (top / 2));
    EPeaksVector peaks(3);  // room recorded, no storage yet
    const V v = Make<V>(p);
    ImgGetProfilePeaks(&v, &peaks, static_cast<unsigned>(low), static_cast<unsigned>(high),
                       static_cast<unsigned>(minAmp), static_cast<unsigned>(minArea));
    ASSERT_EQ(EGetError(), E_OK);
    ExpectPeaks(peaks, PeaksModel(p, low, high, minAmp, minArea));
  }
}

TEST(ProfilePeaks, RandomProfilesAgainstModel) {
  PeaksAgainstModel<EBW8Vector>(255);
  PeaksAgainstModel<EBW16Vector>(65535);
}

TEST(ProfilePeaks, WorkedCasesAndBadOrder) {
  EPeaksVector peaks;
  // A peak falling straight through the band into a valley: both, adjacent.
  const EBW8Vector through = Make<EBW8Vector>({50, 50, 200, 210, 10, 5, 50, 50});
  ImgGetProfilePeaks(&through, &peaks, 40, 100, 0, 0);
  ExpectPeaks(peaks, {EPeak{2, 2, 2.0f + 110.0f / 210.0f, 110, 210}, EPeak{4, 2, 4.0f + 35.0f / 65.0f, -35, -65}});
  // Limits: the valley's area of 65 passes 65 and fails 66.
  ImgGetProfilePeaks(&through, &peaks, 40, 100, 35, 66);
  ASSERT_EQ(peaks.GetNumElements(), 1u);
  EXPECT_EQ(peaks[0].m_n32Amplitude, 110);
  // Flat above high from the first sample to the last: one run, not reported.
  const EBW16Vector flat = Make<EBW16Vector>({900, 900, 900});
  ImgGetProfilePeaks(&flat, &peaks, 10, 20, 0, 0);
  EXPECT_EQ(peaks.GetNumElements(), 0u);
  // low equal to high: samples at the level are neutral.
  const EBW8Vector level = Make<EBW8Vector>({60, 60, 61, 60, 59, 60});
  ImgGetProfilePeaks(&level, &peaks, 60, 60, 0, 0);
  ExpectPeaks(peaks, {EPeak{2, 1, 2.0f, 1, 1}, EPeak{4, 1, 4.0f, -1, -1}});

  peaks.AddElement(EPeak{});
  ImgGetProfilePeaks(&level, &peaks, 61, 60, 0, 0);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGetProfilePeaks ( BW8)");
  EXPECT_EQ(peaks.GetNumElements(), 3u);
}

// The filters against direct formulas, out of place and in place.
template <class V>
void FiltersAgainstModel(long top) {
  Rng rng(31 + static_cast<unsigned>(top));
  const long mid = (top + 1) / 2;
  const auto clamp = [top](long v) { return std::min(std::max(v, 0L), top); };
  for (int trial = 0; trial < 100; ++trial) {
    Samples p(2 + rng() % 40);
    for (long& x : p) x = static_cast<long>(rng() % (top + 1));
    const long n = static_cast<long>(p.size());
    const auto at = [&](const Samples& s, long i) { return s[std::min(std::max(i, 0L), n - 1)]; };
    const V src = Make<V>(p);

    Samples derivative(p.size());
    for (long i = 0; i < n; ++i)
      derivative[i] = i == 0 ? clamp(p[1] - p[0] + mid)
                      : i == n - 1 ? clamp(p[n - 1] - p[n - 2] + mid)
                                   : ((p[i + 1] - p[i - 1]) >> 1) + mid;
    V out;
    ImgProfileDerivative(&src, &out);
    EXPECT_EQ(Read(out), derivative);

    const unsigned h = static_cast<unsigned>(rng() % ((n + 1) / 2));
    Samples uniform(p.size());
    for (long i = 0; i < n; ++i) {
      long s = 0;
      for (long k = -static_cast<long>(h); k <= static_cast<long>(h); ++k) s += at(p, i + k);
      uniform[i] = s / (2 * h + 1);
    }
    V sized(static_cast<unsigned>(n));
    ImgConvolUniform(&src, &sized, h);
    ASSERT_EQ(EGetError(), E_OK);
    EXPECT_EQ(Read(sized), uniform);

    const unsigned passes = static_cast<unsigned>(rng() % 4);
    Samples binomial = p, largest = p, smallest = p;
    for (unsigned pass = 0; pass < passes; ++pass) {
      Samples b(p.size()), l(p.size()), s(p.size());
      for (long i = 0; i < n; ++i) {
        b[i] = i == 0 ? (3 * binomial[0] + binomial[1]) >> 2
               : i == n - 1 ? (3 * binomial[n - 1] + binomial[n - 2]) >> 2
                            : (binomial[i - 1] + 2 * binomial[i] + binomial[i + 1]) >> 2;
        l[i] = std::max({at(largest, i - 1), largest[i], at(largest, i + 1)});
        s[i] = std::min({at(smallest, i - 1), smallest[i], at(smallest, i + 1)});
      }
      binomial = b, largest = l, smallest = s;
    }
    const struct {
      void (*filter)(const V*, V*, unsigned);
      const Samples& want;
    } filters[] = {{ImgConvolGaussian, binomial}, {ImgDilate, largest}, {ImgErode, smallest}};
    for (const auto& f : filters) {
      V dst;
      f.filter(&src, &dst, passes);
      ASSERT_EQ(dst.GetNumElements(), p.size());
      if (passes > 0) {
        EXPECT_EQ(Read(dst), f.want);
      }
      V inPlace = src;
      f.filter(&inPlace, &inPlace, passes);
      EXPECT_EQ(Read(inPlace), f.want);
    }
    V inPlace = src;
    ImgProfileDerivative(&inPlace, &inPlace);
    EXPECT_EQ(Read(inPlace), derivative);
  }
}

TEST(ProfileFilters, RandomProfilesAgainstModel) {
  FiltersAgainstModel<EBW8Vector>(255);
  FiltersAgainstModel<EBW16Vector>(65535);
}

TEST(ProfileFilters, WorkedCasesAndBadSizes) {
  const EBW16Vector constant = Make<EBW16Vector>({700, 700, 700, 700});
  EBW16Vector d16;
  ImgProfileDerivative(&constant, &d16);
  EXPECT_EQ(Read(d16), (Samples{32768, 32768, 32768, 32768}));
  const EBW8Vector p = Make<EBW8Vector>({0, 255, 0, 10});
  EBW8Vector d;
  ImgProfileDerivative(&p, &d);
  EXPECT_EQ(Read(d), (Samples{255, 128, 5, 138}));  // the first end clamps 383

  EBW8Vector copy(4);
  ImgConvolUniform(&p, &copy, 0);
  EXPECT_EQ(Read(copy), Read(p));
  EBW8Vector wrong(3);
  ImgConvolUniform(&p, &wrong, 1);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolUniform");
  EBW16Vector w16(4);
  ImgConvolUniform(&constant, &w16, 2);  // window of 5 over 4 samples
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolUniform (BW16)");

  // No passes: the destination is sized and left alone.
  EBW8Vector left = Make<EBW8Vector>({9, 9});
  ImgDilate(&p, &left, 0);
  ASSERT_EQ(left.GetNumElements(), 4u);
  EXPECT_EQ(left[0] + left[1], 18);
  // One sample has no neighbour to take.
  const EBW8Vector one = Make<EBW8Vector>({5});
  EBW8Vector untouched = Make<EBW8Vector>({1, 2});
  ImgErode(&one, &untouched, 1);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgErode ( EBW8Vector)");
  ImgConvolGaussian(&one, &untouched, 2);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolBinomial ( EBW8Vector)");
  ImgProfileDerivative(&one, &untouched);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_SIZE);
  EXPECT_EQ(Read(untouched), (Samples{1, 2}));
}

}  // namespace
