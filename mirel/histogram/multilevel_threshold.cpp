#include "mirel/histogram/multilevel_threshold.h"

#include <cmath>

#include "mirel/foundation/frame_internal.h"

namespace {

using Corvane::Talmeer::Utils::Vector;

// The interval tables and the search of one histogram over its populated
// bins lo..hi (n of them). Every table is n by n: intervals [a, b] at
// (a - lo, b - lo), search entries D and B at (a - lo, j).
class Search {
 public:
  ~Search() {
    Talmeer_Free(count_);
    Talmeer_Free(sum_);
    Talmeer_Free(score_);
    Talmeer_Free(best_);
    Talmeer_Free(next_);
  }

  // Checks the histogram and fills the interval tables; false with the code
  // set when it cannot.
  bool Prepare(const EBWHistogramVector* histogram) {
    if (histogram == nullptr || histogram->GetNumElements() != 256) return Fail(E_ERROR_VECTOR_SIZE);
    h_ = histogram->GetDataPtr();
    lo_ = 0;
    while (lo_ < 256 && h_[lo_] == 0) ++lo_;
    if (lo_ == 256) return Fail(E_ERROR_VECTOR_SIZE);
    hi_ = 255;
    while (h_[hi_] == 0) --hi_;
    n_ = hi_ - lo_ + 1;
    const std::size_t cells = static_cast<std::size_t>(n_) * n_;
    count_ = static_cast<float*>(Talmeer_Malloc(cells * sizeof(float)));
    sum_ = static_cast<float*>(Talmeer_Malloc(cells * sizeof(float)));
    score_ = static_cast<float*>(Talmeer_Malloc(cells * sizeof(float)));
    best_ = static_cast<float*>(Talmeer_Malloc(cells * sizeof(float)));
    next_ = static_cast<unsigned char*>(Talmeer_Malloc(cells));
    if (count_ == nullptr || sum_ == nullptr || score_ == nullptr || best_ == nullptr || next_ == nullptr)
      return Fail(E_ERROR_OUT_OF_MEMORY);
    for (int a = lo_; a <= hi_; ++a) {
      float c = 0.0f, s = 0.0f;
      float* cr = &count_[Cell(a, a)];
      float* sr = &sum_[Cell(a, a)];
      float* qr = &score_[Cell(a, a)];
      for (int b = a; b <= hi_; ++b) {
        c += static_cast<float>(h_[b]);
        s += static_cast<float>(static_cast<double>(b) * h_[b]);
        cr[b - a] = c;
        sr[b - a] = s;
        qr[b - a] = c == 0.0f ? -1.0f : s * s / c;
      }
    }
    return true;
  }

  // The most classes a cut can have (a class needs at least one bin).
  int MostClasses() const { return n_; }

  // Cuts for up to k + 1 classes: every level below k from every start,
  // level k from lo. False when no cut into k + 1 classes exists.
  bool Run(int k) {
    for (int a = lo_; a <= hi_; ++a) best_[Cell(a, lo_)] = Score(a, hi_);
    for (int j = 1; j < k; ++j)
      for (int a = lo_; a <= hi_ - j; ++a) Cut(a, j);
    return k == 0 || Cut(lo_, k);
  }

  // The k + 1 classes of the cut from lo, in order, into `regions` (emptied
  // first); false with the code set when they cannot be read or stored.
  bool Read(int k, Vector<ERegionDescriptor>& regions, float& residue) {
    regions.Empty();
    double total = 0.0;
    int start = lo_;
    for (int m = k; m >= 1; --m) {
      if (D(start, m) < 0.0f) return Fail(E_ERROR_INTERNAL);
      const int b = next_[Cell(start, lo_ + m)];
      if (!Add(start, b - 1, regions, total)) return false;
      start = b;
    }
    if (!Add(start, hi_, regions, total)) return false;
    residue = static_cast<float>(std::sqrt((total - D(lo_, k)) / Count(lo_, hi_)));
    return true;
  }

 private:
  bool Fail(E_ERRORS code) {
    ESetError(code);
    return false;
  }
  std::size_t Cell(int a, int b) const { return static_cast<std::size_t>(a - lo_) * n_ + (b - lo_); }
  float Count(int a, int b) const { return count_[Cell(a, b)]; }
  float Sum(int a, int b) const { return sum_[Cell(a, b)]; }
  float Score(int a, int b) const { return score_[Cell(a, b)]; }
  float D(int a, int j) const { return best_[Cell(a, lo_ + j)]; }

  // D and B at (a, j): the best first class [a, b - 1] followed by j
  // classes from b. Strictly greater wins, so the smallest b keeps a tie.
  bool Cut(int a, int j) {
    float best = 0.0f;
    int at = 0;
    for (int b = a + 1; b <= hi_ - j + 1; ++b) {
      const float s = Score(a, b - 1), rest = D(b, j - 1);
      if (s < 0.0f || rest < 0.0f) continue;
      const float v = s + rest;
      if (v > best) {
        best = v;
        at = b;
      }
    }
    best_[Cell(a, lo_ + j)] = at != 0 ? best : -1.0f;
    next_[Cell(a, lo_ + j)] = static_cast<unsigned char>(at);
    return at != 0;
  }

  // The class [first, last]; its sum of i * i * h[i] goes into total.
  bool Add(int first, int last, Vector<ERegionDescriptor>& regions, double& total) {
    double q = 0.0;
    for (int i = first; i <= last; ++i) q += i * static_cast<double>(Sum(i, i));
    total += q;
    const double inv = 1.0 / Count(first, last);
    const double mean = inv * Sum(first, last);
    const ERegionDescriptor r{static_cast<unsigned int>(first), static_cast<unsigned int>(last),
                              static_cast<float>(mean), static_cast<float>(inv * q - mean * mean),
                              static_cast<unsigned int>(Count(first, last))};
    return regions.AddElement(r) || Fail(E_ERROR_OUT_OF_MEMORY);
  }

  const unsigned int* h_ = nullptr;
  int lo_ = 0, hi_ = 0, n_ = 0;
  float* count_ = nullptr;
  float* sum_ = nullptr;
  float* score_ = nullptr;
  float* best_ = nullptr;           // D
  unsigned char* next_ = nullptr;   // B: the first bin of the next class
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
  if (!frame.Require(search.Run(k), E_ERROR_INTERNAL)) return -1.0f;
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
  if (!frame.Require(search.Run(k), E_ERROR_INTERNAL)) return -1.0f;
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
