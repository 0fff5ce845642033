#include "mirel/histogram/histogram.h"

#include <cstring>

#include "mirel/foundation/frame_internal.h"
#include "mirel/histogram/histogram_internal.h"

namespace mirel {
namespace hist {

ByteCounter::ByteCounter() { std::memset(sub_, 0, sizeof(sub_)); }

void ByteCounter::Add(const unsigned char* p, std::size_t n) {
  std::uint32_t* h0 = sub_[0];
  std::uint32_t* h1 = sub_[1];
  std::uint32_t* h2 = sub_[2];
  std::uint32_t* h3 = sub_[3];
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    std::uint64_t a, b;
    std::memcpy(&a, p + i, 8);
    std::memcpy(&b, p + i + 8, 8);
    ++h0[a & 0xFF];
    ++h1[(a >> 8) & 0xFF];
    ++h2[(a >> 16) & 0xFF];
    ++h3[(a >> 24) & 0xFF];
    ++h0[(a >> 32) & 0xFF];
    ++h1[(a >> 40) & 0xFF];
    ++h2[(a >> 48) & 0xFF];
    ++h3[a >> 56];
    ++h0[b & 0xFF];
    ++h1[(b >> 8) & 0xFF];
    ++h2[(b >> 16) & 0xFF];
    ++h3[(b >> 24) & 0xFF];
    ++h0[(b >> 32) & 0xFF];
    ++h1[(b >> 40) & 0xFF];
    ++h2[(b >> 48) & 0xFF];
    ++h3[b >> 56];
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

// Counts the pixels of an EBW8 ROI, or of its runs, into `out` (256 bins,
// already cleared).
void CountBW8(const EROI<EBW8>* src, unsigned int* out, bool fast) {
  const int runCount = src->GetNumRuns();
  const unsigned char* first = reinterpret_cast<const unsigned char*>(src->GetImagePtr(0, 0));
  ByteCounter* counter = nullptr;
  ByteCounter local;  // 4 KiB on the stack
  if (fast) counter = &local;
  auto add = [&](const unsigned char* p, std::size_t n) {
    if (counter != nullptr) counter->Add(p, n);
    else CountBytesPlain(p, n, out);
  };
  if (runCount > 0) {
    const ERun* runs = src->GetRuns();
    const bool offsets = src->GetMaskOffsets() != 0;
    for (int r = 0; r < runCount; ++r) {
      const ERun& run = runs[r];
      if (run.end <= run.start) continue;
      const unsigned char* p =
          offsets ? first + run.start : reinterpret_cast<const unsigned char*>(run.start);
      add(p, static_cast<std::size_t>(run.end - run.start));
    }
  } else {
    const mirel::Rows<const EBW8> rows = mirel::RowsOf(src);
    for (int y = 0; y < rows.height; ++y)
      add(reinterpret_cast<const unsigned char*>(rows.Row(y)), static_cast<std::size_t>(rows.width));
  }
  if (counter != nullptr) counter->Flush(out);
}

}  // namespace

void ImgHistogram(const EROI<EBW8>* src, EBWHistogramVector* histogram) {
  const int mmx = EGetMMX();
  mirel::Frame frame("ImgHistogram");
  if (!frame.NotVoid(src) || !frame.Require(histogram != nullptr, E_ERROR_VOID_IMAGE)) return;
  EOk();
  histogram->SetNumElements(256);
  if (EGetError() != E_OK) return;
  histogram->Clear();
  CountBW8(src, histogram->GetDataPtr(), mmx != 0);
}
