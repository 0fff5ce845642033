#include "mirel/histogram/multilevel_threshold.h"

#include <cmath>

#include "mirel/foundation/frame_internal.h"

namespace {

using Corvane::Talmeer::Utils::Vector;

// The interval scores and the search of one histogram over its populated
// bins lo..hi (n of them). Scores of intervals [a, b] are at (a - lo) * n +
// (b - lo); the search entries D and B of (a, j) at (a - lo) * (k + 1) + j.
// The count and sum of an interval are built bin by bin from its first bin
// in single precision, the same sums whether for a score or for a class.
class Search {
 public:
  ~Search() {
    Talmeer_Free(score_);
    Talmeer_Free(best_);
    Talmeer_Free(next_);
  }

  // Checks the histogram and fills the scores; false with the code set when
  // it cannot.
  bool Prepare(const EBWHistogramVector* histogram) {
    if (histogram == nullptr || histogram->GetNumElements() != 256) return Fail(E_ERROR_VECTOR_SIZE);
    h_ = histogram->GetDataPtr();
    lo_ = 0;
    while (lo_ < 256 && h_[lo_] == 0) ++lo_;
    if (lo_ == 256) return Fail(E_ERROR_VECTOR_SIZE);
    hi_ = 255;
    while (h_[hi_] == 0) --hi_;
    n_ = hi_ - lo_ + 1;
    score_ = static_cast<float*>(Talmeer_Malloc(static_cast<std::size_t>(n_) * n_ * sizeof(float)));
    if (score_ == nullptr) return Fail(E_ERROR_OUT_OF_MEMORY);
    for (int a = lo_; a <= hi_; ++a) {
      float c = 0.0f, s = 0.0f;
      float* row = score_ + static_cast<std::size_t>(a - lo_) * n_;
      for (int b = a; b <= hi_; ++b) {
        Grow(b, c, s);
        row[b - lo_] = c == 0.0f ? -1.0f : s * s / c;
      }
    }
    return true;
  }

  // The most classes a cut can have (a class needs at least one bin).
  int MostClasses() const { return n_; }

  // Cuts for up to k + 1 classes: every level below k from every start,
  // level k from lo. False when no cut into k + 1 classes exists, or with
  // 1303 set when the search tables cannot be had.
  bool Run(int k) {
    levels_ = k + 1;
    const std::size_t cells = static_cast<std::size_t>(n_) * levels_;
    best_ = static_cast<float*>(Talmeer_Malloc(cells * sizeof(float)));
    next_ = static_cast<unsigned char*>(Talmeer_Malloc(cells));
    if (best_ == nullptr || next_ == nullptr) return Fail(E_ERROR_OUT_OF_MEMORY);
    for (int a = lo_; a <= hi_; ++a) best_[Entry(a, 0)] = Score(a, hi_);
    for (int j = 1; j < k; ++j)
      for (int a = lo_; a <= hi_ - j; ++a) Cut(a, j);
    return k == 0 || Cut(lo_, k) || Fail(E_ERROR_INTERNAL);
  }

  // The k + 1 classes of the cut from lo, in order, into `regions` (emptied
  // first); false with the code set when they cannot be read or stored.
  bool Read(int k, Vector<ERegionDescriptor>& regions, float& residue) {
    regions.Empty();
    double total = 0.0;
    int start = lo_;
    for (int m = k; m >= 1; --m) {
      if (best_[Entry(start, m)] < 0.0f) return Fail(E_ERROR_INTERNAL);
      const int b = next_[Entry(start, m)];
      if (!Add(start, b - 1, regions, total)) return false;
      start = b;
    }
    if (!Add(start, hi_, regions, total)) return false;
    float count = 0.0f, sum = 0.0f;
    for (int i = lo_; i <= hi_; ++i) Grow(i, count, sum);
    residue = static_cast<float>(std::sqrt((total - best_[Entry(lo_, k)]) / count));
    return true;
  }

 private:
  bool Fail(E_ERRORS code) {
    ESetError(code);
    return false;
  }
  // Adds bin b to an interval's count and sum.
  void Grow(int b, float& count, float& sum) const {
    count += static_cast<float>(h_[b]);
    sum += static_cast<float>(static_cast<double>(b) * h_[b]);
  }
  float Score(int a, int b) const { return score_[static_cast<std::size_t>(a - lo_) * n_ + (b - lo_)]; }
  std::size_t Entry(int a, int j) const { return static_cast<std::size_t>(a - lo_) * levels_ + j; }

  // D and B at (a, j): the best first class [a, b - 1] followed by j
  // classes from b. Strictly greater wins, so the smallest b keeps a tie.
  bool Cut(int a, int j) {
    float best = 0.0f;
    int at = 0;
    for (int b = a + 1; b <= hi_ - j + 1; ++b) {
      const float s = Score(a, b - 1), rest = best_[Entry(b, j - 1)];
      if (s < 0.0f || rest < 0.0f) continue;
      const float v = s + rest;
      if (v > best) {
        best = v;
        at = b;
      }
    }
    best_[Entry(a, j)] = at != 0 ? best : -1.0f;
    next_[Entry(a, j)] = static_cast<unsigned char>(at);
    return at != 0;
  }

  // The class [first, last]; its sum of i * i * h[i] goes into total.
  bool Add(int first, int last, Vector<ERegionDescriptor>& regions, double& total) {
    double q = 0.0;
    float count = 0.0f, sum = 0.0f;
    for (int i = first; i <= last; ++i) {
      q += i * static_cast<double>(static_cast<float>(static_cast<double>(i) * h_[i]));
      Grow(i, count, sum);
    }
    total += q;
    const double inv = 1.0 / count;
    const double mean = inv * sum;
    const ERegionDescriptor r{static_cast<unsigned int>(first), static_cast<unsigned int>(last),
                              static_cast<float>(mean), static_cast<float>(inv * q - mean * mean),
                              // A caller's histogram may count past 2^32: the
                              // truncation then stops at the largest count.
                              count < 4294967296.0f ? static_cast<unsigned int>(count) : 0xFFFFFFFFu};
    return regions.AddElement(r) || Fail(E_ERROR_OUT_OF_MEMORY);
  }

  const unsigned int* h_ = nullptr;
  int lo_ = 0, hi_ = 0, n_ = 0, levels_ = 0;
  float* score_ = nullptr;
  float* best_ = nullptr;          // D
  unsigned char* next_ = nullptr;  // B: the first bin of the next class
};

// The number of classes as the search's k, or -1 with the code set.
int Levels(mirel::Frame& frame, const Search& search, unsigned int classes, unsigned int least) {
  if (!frame.Require(classes >= least, E_ERROR_BAD_ARGUMENT)) return -1;
  if (!frame.Require(classes <= static_cast<unsigned int>(search.MostClasses()), E_ERROR_INTERNAL)) return -1;
  return static_cast<int>(classes) - 1;
}

}  // namespace

float ImgMultiLevelsMinResidueThreshold(const EBWHistogramVector* histogram, unsigned int classes,
                                        Vector<ERegionDescriptor>& regions) {
  mirel::Frame frame("ImgMultiLevelsMinResidueThreshold");
  Search search;
  if (!search.Prepare(histogram)) return -1.0f;
  const int k = Levels(frame, search, classes, 1);
  if (k < 0) return -1.0f;
  if (!search.Run(k)) return -1.0f;
  Vector<ERegionDescriptor> found;
  float residue = 0.0f;
  if (!search.Read(k, found, residue)) return -1.0f;
  regions = std::move(found);
  return residue;
}

float ImgMultiLevelsMinResidueThreshold(const EBWHistogramVector* histogram, unsigned int thresholds,
                                        Vector<EBW8>& thresholdValues) {
  Vector<ERegionDescriptor> regions;
  const float residue = ImgMultiLevelsMinResidueThreshold(histogram, thresholds + 1u, regions);
  if (EGetError() != E_OK) return residue;
  Vector<EBW8> values;
  for (unsigned int i = 1; i < regions.GetNumElements(); ++i) {
    if (!values.AddElement(EBW8(static_cast<unsigned char>(regions[i].m_un32FirstBin)))) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      ETraceError("ImgMultiLevelsMinResidueThreshold");
      return -1.0f;
    }
  }
  thresholdValues = std::move(values);
  return residue;
}

float ImgAllMultiLevelsMinResidueThreshold(const EBWHistogramVector* histogram, unsigned int greatestClasses,
                                           Vector<ELabelisationDescriptor>& levels) {
  mirel::Frame frame("ImgAllMultiLevelsMinResidueThreshold");
  Search search;
  if (!search.Prepare(histogram)) return -1.0f;
  const int k = Levels(frame, search, greatestClasses, 2);
  if (k < 0) return -1.0f;
  if (!search.Run(k)) return -1.0f;
  Vector<ELabelisationDescriptor> found;
  float residue = 0.0f;
  for (int m = 1; m <= k; ++m) {
    ELabelisationDescriptor level;
    if (!search.Read(m, level.m_Regions, level.m_f32Residue)) return -1.0f;
    residue = level.m_f32Residue;
    if (!found.AddElement(std::move(level))) {
      frame.Fail(E_ERROR_OUT_OF_MEMORY);
      return -1.0f;
    }
  }
  levels = std::move(found);
  return residue;
}
