#include "mirel/histogram/histogram.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "mirel/foundation/armed_frame_internal.h"
#include "mirel/foundation/bands_internal.h"
#include "mirel/foundation/frame_internal.h"
#include "mirel/foundation/run_walk_internal.h"
#include "mirel/foundation/untyped_vector.h"
#include "mirel/histogram/histogram_internal.h"
#include "mirel/point/lut.h"

namespace mirel {
namespace hist {

ByteCounter::ByteCounter() { std::memset(sub_, 0, sizeof(sub_)); }

void ByteCounter::Add(const unsigned char* p, std::size_t n) {
  std::uint32_t* h0 = sub_[0];
  std::uint32_t* h1 = sub_[1];
  std::uint32_t* h2 = sub_[2];
  std::uint32_t* h3 = sub_[3];
  // Byte loads straight into the index (three micro-operations a pixel,
  // against five for bytes shifted out of a wide load), all eight loads of a
  // group issued before its increments, which may alias them as far as the
  // compiler knows.
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const unsigned int a0 = p[i], a1 = p[i + 1], a2 = p[i + 2], a3 = p[i + 3];
    const unsigned int a4 = p[i + 4], a5 = p[i + 5], a6 = p[i + 6], a7 = p[i + 7];
    ++h0[a0];
    ++h1[a1];
    ++h2[a2];
    ++h3[a3];
    ++h0[a4];
    ++h1[a5];
    ++h2[a6];
    ++h3[a7];
  }
  for (; i < n; ++i) ++h0[p[i]];
}

void ByteCounter::Flush(unsigned int* out) {
  for (int v = 0; v < 256; ++v) out[v] += sub_[0][v] + sub_[1][v] + sub_[2][v] + sub_[3][v];
  std::memset(sub_, 0, sizeof(sub_));
}

}  // namespace hist
}  // namespace mirel

namespace {

using mirel::hist::ByteCounter;
using mirel::hist::CountBytesPlain;

// Counter of pixel pairs for images whose neighbouring pixels are close, as
// camera images are: one increment for two pixels, into a table indexed by
// the pair (256 KiB, of which such an image touches a few lines near the
// diagonal). The two marginals of the pair table are the histogram of the
// first and of the second pixel of each pair; their sum is the histogram.
class PairCounter {
 public:
  explicit PairCounter(std::uint32_t* table) : table_(table) { std::memset(single_, 0, sizeof(single_)); }
  void Add(const unsigned char* p, std::size_t n) {
    std::uint32_t* t = table_;
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
      std::uint16_t a, b, c, d;
      std::memcpy(&a, p + i, 2);
      std::memcpy(&b, p + i + 2, 2);
      std::memcpy(&c, p + i + 4, 2);
      std::memcpy(&d, p + i + 6, 2);
      ++t[a];
      ++t[b];
      ++t[c];
      ++t[d];
    }
    for (; i < n; ++i) ++single_[p[i]];
  }
  void Flush(unsigned int* out) {
    // Row r of the table holds the pairs whose high byte is r: its sum
    // counts r once a pair, and the sum of all rows counts each low byte.
    std::uint32_t columns[256] = {};
    for (int r = 0; r < 256; ++r) {
      const std::uint32_t* row = table_ + 256 * r;
      std::uint32_t sum = 0;
      for (int c = 0; c < 256; ++c) {
        sum += row[c];
        columns[c] += row[c];
      }
      out[r] += sum;
    }
    for (int v = 0; v < 256; ++v) out[v] += columns[v] + single_[v];
  }

 private:
  std::uint32_t* table_;
  std::uint32_t single_[256];
};

// Whether neighbouring pixels of a few sample rows are mostly close, so that
// the pair counter will find its table in the cache.
bool LooksSmooth(const mirel::Rows<const EBW8>& rows) {
  int close = 0, total = 0;
  for (int k = 0; k < 8; ++k) {
    const int y = static_cast<int>(static_cast<long long>(rows.height - 1) * k / 7);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y));
    const int n = rows.width < 1024 ? rows.width : 1024;
    for (int x = 0; x + 1 < n; ++x) {
      const int d = p[x] - p[x + 1];
      close += (d <= 16 && d >= -16) ? 1 : 0;
      ++total;
    }
  }
  return close * 8 >= total * 7;
}

// Above this many pixels the pair table pays for its clearing and summing.
constexpr long long kPairCounterPixels = 1 << 20;

// Counts the pixels of rows into `out` (256 bins, added to).
void CountRows(const mirel::Rows<const EBW8>& rows, unsigned int* out, bool fast) {
  if (fast && static_cast<long long>(rows.width) * rows.height >= kPairCounterPixels && LooksSmooth(rows)) {
    std::unique_ptr<std::uint32_t[]> table(new (std::nothrow) std::uint32_t[65536]());
    if (table != nullptr) {
      PairCounter pairs(table.get());
      for (int y = 0; y < rows.height; ++y)
        pairs.Add(reinterpret_cast<const unsigned char*>(rows.Row(y)), static_cast<std::size_t>(rows.width));
      pairs.Flush(out);
      return;
    }
  }
  ByteCounter counter;  // 4 KiB on the stack
  for (int y = 0; y < rows.height; ++y) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(rows.Row(y));
    if (fast) counter.Add(p, static_cast<std::size_t>(rows.width));
    else CountBytesPlain(p, static_cast<std::size_t>(rows.width), out);
  }
  if (fast) counter.Flush(out);
}

// Counts the pixels of an EBW8 ROI, or of its runs, into `out` (256 bins,
// already cleared). Without runs the rows are counted in bands, each into
// bins of its own, added together afterwards: 32-bit counts that wrap give
// the same sums in any order.
void CountBW8(const EROI<EBW8>* src, unsigned int* out, bool fast) {
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(src);
  if (src->GetNumRuns() <= 0) {
    const mirel::Bands bands(rows.height, mirel::RowCost(rows.width, 1.0));
    std::unique_ptr<unsigned int[]> partial;
    if (bands.Count() > 1) partial.reset(new (std::nothrow) unsigned int[256 * static_cast<std::size_t>(bands.Count())]());
    if (partial == nullptr) {
      CountRows(rows, out, fast);
      return;
    }
    bands.Run([&](int band, int y0, int y1) { CountRows(mirel::Band(rows, y0, y1), partial.get() + 256 * band, fast); });
    for (int band = 0; band < bands.Count(); ++band)
      for (int v = 0; v < 256; ++v) out[v] += partial[256 * static_cast<std::size_t>(band) + v];
    return;
  }
  ByteCounter* counter = nullptr;
  ByteCounter local;  // 4 KiB on the stack
  if (fast) counter = &local;
  mirel::ForEachSpan(src, [&](const unsigned char* p, std::size_t n, int, int) {
    if (counter != nullptr) counter->Add(p, n);
    else CountBytesPlain(p, n, out);
  });
  if (counter != nullptr) counter->Flush(out);
}

}  // namespace

void ImgHistogram(const EROI<EBW8>* src, EBWHistogramVector* histogram) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgHistogram");
  if (!frame.NotVoid(src) || !frame.Require(histogram != nullptr, E_ERROR_BAD_ARGUMENT)) return;
  EOk();
  histogram->SetNumElements(256);
  if (EGetError() != E_OK) return;
  histogram->Clear();
  CountBW8(src, histogram->GetDataPtr(), mmx != 0);
}

namespace {

// Fills the bins of a bit-field histogram of 16 or 32-bit pixels.
template <class P>
void FieldHistogram(mirel::Frame& frame, const EROI<P>* src, EBWHistogramVector* histogram, unsigned int msb,
                    unsigned int bits, int saturate) {
  constexpr unsigned int kWidth = sizeof(P) * 8;
  if (!frame.NotVoid(src) || !frame.Require(histogram != nullptr, E_ERROR_BAD_ARGUMENT)) return;
  if (!frame.Require(msb < kWidth, E_ERROR_BAD_ARGUMENT_1)) return;
  if (msb == kWidth - 1) saturate = 0;
  const long long signedShift = static_cast<long long>(msb) - static_cast<long long>(bits) + 1;
  if (!frame.Require(signedShift >= 0, E_ERROR_BAD_ARGUMENT_2)) return;
  const unsigned int shift = static_cast<unsigned int>(signedShift) & 31u;
  const unsigned int count = 1u << (bits & 31u);
  const unsigned int highest = count - 1u;
  EOk();
  histogram->SetNumElements(count);
  if (EGetError() != E_OK) return;
  histogram->Clear();
  unsigned int* out = histogram->GetDataPtr();
  const mirel::Rows<const P> rows = mirel::RowsOf(src);
  // Four tight loops: with or without the clamp, with or without a shift.
  // Without the clamp, a pixel with bits above the field (which the caller
  // promised not to pass) is folded into the bins rather than written past
  // them.
  auto countRows = [&](int y0, int y1, unsigned int* h) {
    for (int y = y0; y < y1; ++y) {
      const P* p = rows.Row(y);
      const int w = rows.width;
      if (saturate != 0) {
        if (shift == 0) {
          for (int x = 0; x < w; ++x) {
            const std::uint32_t b = p[x].value;
            ++h[b < highest ? b : highest];
          }
        } else {
          for (int x = 0; x < w; ++x) {
            const std::uint32_t b = static_cast<std::uint32_t>(p[x].value) >> shift;
            ++h[b < highest ? b : highest];
          }
        }
      } else {
        if (shift == 0) {
          for (int x = 0; x < w; ++x) ++h[static_cast<std::uint32_t>(p[x].value) & highest];
        } else {
          for (int x = 0; x < w; ++x) ++h[(static_cast<std::uint32_t>(p[x].value) >> shift) & highest];
        }
      }
    }
  };
  // Bands count into bins of their own, added afterwards, when the bins are
  // few beside the pixels (clearing and adding them must not cost more than
  // the counting saves); one band without memory for them.
  const double pixels = static_cast<double>(rows.width) * rows.height;
  const mirel::Bands bands(rows.height, count <= pixels / 8 ? mirel::RowCost(rows.width, sizeof(P)) : mirel::kOneBand);
  std::unique_ptr<unsigned int[]> partial;
  const std::size_t bins = count;
  if (bands.Count() > 1) partial.reset(new (std::nothrow) unsigned int[bins * static_cast<std::size_t>(bands.Count() - 1)]());
  if (partial == nullptr) {
    countRows(0, rows.height, out);
    return;
  }
  bands.Run([&](int band, int y0, int y1) {
    countRows(y0, y1, band == 0 ? out : partial.get() + bins * static_cast<std::size_t>(band - 1));
  });
  for (std::size_t i = 0; i < bins * static_cast<std::size_t>(bands.Count() - 1); i += bins)
    for (std::size_t v = 0; v < bins; ++v) out[v] += partial[i + v];
}

}  // namespace

void ImgHistogram(const EROI<EBW16>* src, EBWHistogramVector* histogram, unsigned int msb, unsigned int bits,
                  int saturate) {
  mirel::Frame frame("ImgHistogram ( EBW16)");
  FieldHistogram(frame, src, histogram, msb, bits, saturate);
}

void ImgHistogram(const EROI<EBW32>* src, EBWHistogramVector* histogram, unsigned int msb, unsigned int bits,
                  int saturate) {
  mirel::Frame frame("ImgHistogram ( EBW32)");
  FieldHistogram(frame, src, histogram, msb, bits, saturate);
}

void ImgCumulateHistogram(const EBWHistogramVector* src, EBWHistogramVector* dst) {
  mirel::Frame frame("ImgCumulateHistogram");
  if (!frame.Require(src != nullptr && dst != nullptr, E_ERROR_BAD_ARGUMENT)) return;
  const unsigned int n = src->GetNumElements();
  if (dst->GetNumElements() != n) {
    EOk();
    dst->SetNumElements(n);
    if (EGetError() != E_OK) return;
  }
  const unsigned int* s = src->GetDataPtr();
  unsigned int* d = dst->GetDataPtr();
  unsigned int sum = 0;
  for (unsigned int i = 0; i < n; ++i) {
    sum += s[i];
    d[i] = sum;
  }
}

void ImgSetupEqualize(const EBWHistogramVector* histogram, EBW8Vector* table) {
  mirel::Frame frame("ImgSetupEqualize ( EBWHistogramVector)");
  if (!frame.Require(histogram != nullptr && histogram->GetNumElements() == 256, E_ERROR_VECTOR_SIZE) ||
      !frame.Require(table != nullptr, E_ERROR_BAD_ARGUMENT))
    return;
  EOk();
  table->SetMaxElements(256, 1);
  if (EGetError() != E_OK) return;
  table->Empty();
  const unsigned int* h = histogram->GetDataPtr();
  unsigned int total = 0;
  for (int i = 0; i < 256; ++i) total += h[i];
  unsigned int below = 0;  // pixels strictly below i
  for (int i = 0; i < 256; ++i) {
    // An empty histogram has no distribution: its table is all zeros.
    const std::uint64_t v = total == 0 ? 0 : static_cast<std::uint64_t>(below) * 255u / total;
    table->AddElement(EBW8(static_cast<unsigned char>(v)));
    below += h[i];
  }
}

void ImgEqualize(const EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::Frame frame("ImgEqualize");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  EBWHistogramVector histogram(256);
  EBW8Vector table(0, 1);
  ImgHistogram(src, &histogram);
  if (EGetError() != E_OK) return;
  ImgSetupEqualize(&histogram, &table);
  if (EGetError() != E_OK) return;
  ImgLut(src, dst, &table);
}

void ImgEqualize(const EROI<EBW16>* src, EROI<EBW16>* dst) {
  std::unique_ptr<std::uint64_t[]> sums(new (std::nothrow) std::uint64_t[65536]);
  mirel::Frame frame("ImgEqualize (BW16)");
  if (!frame.Require(sums != nullptr, E_ERROR_OUT_OF_MEMORY)) return;
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst)) return;
  EBWHistogramVector histogram(65536);
  ImgHistogram(src, &histogram, 15, 16, 1);
  if (EGetError() != E_OK) return;
  const unsigned int* h = histogram.GetDataPtr();
  std::uint64_t running = 0;
  for (int i = 0; i < 65536; ++i) {
    running += h[i];
    sums[i] = running;
  }
  const std::uint64_t total = sums[65535];
  if (total == 0) return;
  // One output value per input value, then a table walk.
  std::unique_ptr<std::uint16_t[]> map(new (std::nothrow) std::uint16_t[65536]);
  if (map == nullptr) {
    frame.Fail(E_ERROR_OUT_OF_MEMORY);
    return;
  }
  for (int i = 0; i < 65536; ++i) {
    const std::uint64_t v = sums[i] * 65535u / total;
    map[i] = static_cast<std::uint16_t>(v > 65535u ? 65535u : v);
  }
  const mirel::Rows<const EBW16> s = mirel::RowsOf(src);
  const mirel::Rows<EBW16> d = mirel::RowsOf(dst);
  mirel::RowwiseBands(dst, {src}, 4.0, [&](int y0, int y1) {
    for (int y = y0; y < y1; ++y) {
      const EBW16* sp = s.Row(y);
      EBW16* dp = d.Row(y);
      for (int x = 0; x < s.width; ++x) dp[x] = map[sp[x].value];
    }
  });
}

namespace {

// A feature of the bins min..max; get(i) is the count of bin i. Only the
// bins lo..hi (inside min..max) are read: the caller knows the others are 0.
// Integer features come back in `integer` (and *isInteger is set), the others
// in the float result.
template <class Get>
float Feature(Get get, int min, int max, long long lo, long long hi, int feature, std::uint32_t* integer,
              bool* isInteger) {
  *isInteger = true;
  switch (feature) {
    case IMG_FEATURE_MAX_COUNT_BIN:
    case IMG_FEATURE_MAX_COUNT: {
      std::uint32_t best = 0;
      long long at = 0;
      for (long long i = lo; i <= hi; ++i) {
        const std::uint32_t c = get(i);
        if (c > best) {
          best = c;
          at = i;
        }
      }
      *integer = feature == IMG_FEATURE_MAX_COUNT ? best : static_cast<std::uint32_t>(at);
      return 0.0f;
    }
    case IMG_FEATURE_MIN_COUNT_BIN:
    case IMG_FEATURE_MIN_COUNT: {
      std::uint32_t best = 0xFFFFFFFFu;
      long long at = 0;
      for (long long i = lo; i <= hi; ++i) {
        const std::uint32_t c = get(i);
        if (c != 0 && c < best) {
          best = c;
          at = i;
        }
      }
      *integer = feature == IMG_FEATURE_MIN_COUNT ? best : static_cast<std::uint32_t>(at);
      return 0.0f;
    }
    case IMG_FEATURE_FIRST_BIN: {
      *integer = static_cast<std::uint32_t>(max) + 1u;  // none found
      for (long long i = lo; i <= hi; ++i) {
        if (get(i) != 0) {
          *integer = static_cast<std::uint32_t>(i);
          break;
        }
      }
      return 0.0f;
    }
    case IMG_FEATURE_LAST_BIN: {
      *integer = static_cast<std::uint32_t>(min) - 1u;  // none found
      for (long long i = hi; i >= lo; --i) {
        if (get(i) != 0) {
          *integer = static_cast<std::uint32_t>(i);
          break;
        }
      }
      return 0.0f;
    }
    case IMG_FEATURE_TOTAL: {
      std::uint32_t sum = 0;
      for (long long i = lo; i <= hi; ++i) sum += get(i);
      *integer = sum;
      return 0.0f;
    }
    case IMG_FEATURE_MEAN: {
      *isInteger = false;
      std::uint32_t n = 0, s1 = 0;  // 32-bit sums with wrap-around
      for (long long i = lo; i <= hi; ++i) {
        const std::uint32_t c = get(i);
        n += c;
        s1 += c * static_cast<std::uint32_t>(i);
      }
      if (n == 0) return 0.0f;
      return static_cast<float>(static_cast<double>(s1) / static_cast<double>(n));
    }
    case IMG_FEATURE_STD_DEV: {
      *isInteger = false;
      std::uint32_t n = 0;
      float s1 = 0.0f, s2 = 0.0f;
      for (long long i = lo; i <= hi; ++i) {
        const std::uint32_t c = get(i);
        const std::uint32_t ui = static_cast<std::uint32_t>(i);
        n += c;
        // Each term in 32 bits read as signed; the sums in single precision.
        s1 += static_cast<float>(static_cast<std::int32_t>(c * ui));
        s2 += static_cast<float>(static_cast<std::int32_t>(c * ui * ui));
      }
      const std::int32_t sn = static_cast<std::int32_t>(n);
      if (sn <= 0) return 0.0f;
      const float fn = static_cast<float>(sn);
      // A term that passed 2^31 reads negative and can make the variance
      // negative: the result is then not a number, as the arithmetic says.
      return std::sqrt((s2 - s1 * s1 / fn) / fn);
    }
    default:
      *isInteger = false;
      return 0.0f;
  }
}

// The float result of a feature: integer features read as signed 32-bit.
template <class Get>
float FeatureAsFloat(Get get, int min, int max, int feature) {
  std::uint32_t integer = 0;
  bool isInteger = false;
  const float f = Feature(get, min, max, min, max, feature, &integer, &isInteger);
  return isInteger ? static_cast<float>(static_cast<std::int32_t>(integer)) : f;
}

}  // namespace

float ImgAnalyseHistogram(const EBWHistogramVector* histogram, IMG_HISTOGRAM_FEATURE feature, int min, int max) {
  mirel::Frame frame("ImgAnalyseHistogram");
  if (!frame.Require(histogram != nullptr && histogram->GetNumElements() == 256, E_ERROR_VECTOR_SIZE) ||
      !frame.Require(min >= 0, E_ERROR_BAD_ARGUMENT_1) || !frame.Require(max <= 255, E_ERROR_BAD_ARGUMENT_2) ||
      !frame.Require(max >= min, E_ERROR_BAD_ARGUMENT))
    return 0.0f;
  const unsigned int* h = histogram->GetDataPtr();
  const int f = static_cast<int>(feature);
  if (f < 0 || f > 8) {
    ETraceError("ImgAnalyseHistogram");  // leaves the clear state clear
    return 0.0f;
  }
  return FeatureAsFloat([h](long long i) { return h[i]; }, min, max, f);
}

float ImgAnalyseHistogramBW16(const EBWHistogramVector* histogram, IMG_HISTOGRAM_FEATURE feature, int min,
                              int max) {
  mirel::Frame frame("ImgAnalyseHistogram (BW16)");
  if (!frame.Require(histogram != nullptr && histogram->GetNumElements() == 65536, E_ERROR_VECTOR_SIZE) ||
      !frame.Require(min >= 0, E_ERROR_BAD_ARGUMENT_1) || !frame.Require(max <= 65536, E_ERROR_BAD_ARGUMENT_2) ||
      !frame.Require(max >= min, E_ERROR_BAD_ARGUMENT))
    return 0.0f;
  const int f = static_cast<int>(feature);
  if (f < 0 || f > 8) return 0.0f;
  // The scans are handed bin `min` as their base and index it by min..max:
  // bin i of the scan is bin min + i of the histogram. Bins past the end
  // read as 0.
  const unsigned int* h = histogram->GetDataPtr();
  const unsigned int count = histogram->GetNumElements();
  const unsigned int base = static_cast<unsigned int>(min);
  return FeatureAsFloat(
      [h, count, base](long long i) {
        const unsigned int at = base + static_cast<unsigned int>(i);
        return at < count ? h[at] : 0u;
      },
      min, max, f);
}

// ---------------------------------------------------------------- older forms on EVector

namespace {

// The code of the older equalization table setup for a histogram that is
// not a vector of kind 2.
constexpr E_ERRORS kNotAHistogram = E_ERROR_VECTOR_WRONG_TYPE;

// Items of 32 bits that an EVector's room holds.
unsigned int Items32(const EVector* v) { return static_cast<unsigned int>(v->GetAllocatedSize()) / 4u; }

}  // namespace

short ImgHistogram(const EROI<EBW8>* src, EVector* histogram) {
  mirel::ArmedFrame frame("ImgHistogram ( EVector)");
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_IMAGE, src != nullptr && src->Void() == 0);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, histogram != nullptr);
  if (histogram->SetType(2, 1, 256) != 0) return frame.Fail();
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, histogram->GetDataPtr() != nullptr);
  unsigned int* h = static_cast<unsigned int*>(histogram->GetDataPtr());
  std::memset(h, 0, 256 * sizeof(unsigned int));
  // The older form ignores run masks: every pixel of the rectangle counts.
  const mirel::Rows<const EBW8> rows = mirel::RowsOf(src);
  ByteCounter counter;
  for (int y = 0; y < rows.height; ++y)
    counter.Add(reinterpret_cast<const unsigned char*>(rows.Row(y)), static_cast<std::size_t>(rows.width));
  counter.Flush(h);
  return frame.Done();
}

void ImgSetupEqualize(const EVector* histogram, EVector* table) {
  mirel::ArmedFrame frame("ImgSetupEqualize ( EVector)");
  if (!frame.Check(kNotAHistogram, histogram != nullptr && histogram->IsSameVectType(2) != 0)) {
    frame.Fail();
    return;
  }
  if (!frame.Check(E_ERROR_VOID_VECTOR, histogram->GetDataPtr() != nullptr && table != nullptr)) {
    frame.Fail();
    return;
  }
  if (!frame.Check(E_ERROR_VECTOR_LENGTH, Items32(histogram) >= 256)) {
    frame.Fail();
    return;
  }
  if (table->IsSameVectType(3) == 0 || table->GetNbGroup() * table->GetGroupLength() != 256) {
    if (table->SetType(3, 1, 256) != 0) {
      frame.Fail();
      return;
    }
  }
  if (!frame.Check(E_ERROR_VOID_VECTOR, table->GetDataPtr() != nullptr)) {
    frame.Fail();
    return;
  }
  const unsigned int* h = static_cast<const unsigned int*>(histogram->GetDataPtr());
  unsigned char* t = static_cast<unsigned char*>(table->GetDataPtr());
  unsigned int total = 0;
  for (int i = 0; i < 256; ++i) total += h[i];
  unsigned int below = 0;
  for (int i = 0; i < 256; ++i) {
    // (c * 256) / N kept in a byte: a count that reaches N wraps to 0.
    const std::uint64_t v = total == 0 ? 0 : static_cast<std::uint64_t>(below) * 256u / total;
    t[i] = static_cast<unsigned char>(v);
    below += h[i];
  }
  frame.Done();
}

namespace {

template <class R>
short AnalyseUntyped(const EVector* histogram, int min, int max, int feature, R& result, bool integerForm) {
  mirel::ArmedFrame frame("ImgAnalyseHistogram");
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_LENGTH,
                    histogram != nullptr && histogram->IsSameVectType(2) != 0 &&
                        histogram->GetDataSize() == E_VECTOR_DATA_32BIT);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, histogram->GetDataPtr() != nullptr);
  const bool served = integerForm ? (feature >= 0 && feature <= 6) : (feature == 7 || feature == 8);
  if (!served) return frame.Done();
  // The range is not checked; bins outside the vector's room count as 0,
  // so only the part of min..max inside the room is read.
  const unsigned int* h = static_cast<const unsigned int*>(histogram->GetDataPtr());
  const long long items = static_cast<long long>(Items32(histogram));
  const long long lo = min > 0 ? min : 0;
  const long long hi = static_cast<long long>(max) < items - 1 ? max : items - 1;
  auto get = [h](long long i) { return h[i]; };
  std::uint32_t integer = 0;
  bool isInteger = false;
  const float f = Feature(get, min, max, lo, hi, feature, &integer, &isInteger);
  if (integerForm) result = static_cast<R>(static_cast<std::int32_t>(integer));
  else result = static_cast<R>(f);
  return frame.Done();
}

}  // namespace

short ImgAnalyseHistogram(const EVector* histogram, int min, int max, int feature, int& result) {
  return AnalyseUntyped(histogram, min, max, feature, result, true);
}

short ImgAnalyseHistogram(const EVector* histogram, int min, int max, int feature, float& result) {
  return AnalyseUntyped(histogram, min, max, feature, result, false);
}
