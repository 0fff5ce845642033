// Bit images for the tests: a random bit ROI at a chosen bit offset, single
// pixels read and written through GetBitOffset, and the expected whole
// buffer of an image once the pixels of a ROI are replaced.
#ifndef MIREL_TESTS_BITS_SUPPORT_H_
#define MIREL_TESTS_BITS_SUPPORT_H_

#include <vector>

#include "test_support.h"

namespace bitsupport {

using testsupport::Rng;
using Buffer = std::vector<unsigned char>;

// A w x h ROI whose first pixel lies at bit `offset` (0 to 7) of its byte,
// a few bytes and rows inside a random image.
struct BitRoi {
  EImage<EBW1> image;
  EROI<EBW1> roi;
  BitRoi(int w, int h, int offset, Rng& rng) {
    const int x0 = 8 * static_cast<int>(rng() % 3) + offset;
    const int extra = static_cast<int>(rng() % 20), y0 = static_cast<int>(rng() % 3);
    // In borrowed-buffer runs the ROI ends on the buffer's last pixel.
    if (testsupport::BorrowedBuffers::On()) testsupport::SizeImage(image, x0 + w, y0 + h, rng);
    else image.SetSize(x0 + w + extra, h + 3);
    roi.Attach(&image);
    roi.SetPlacement(x0, y0, w, h);
    testsupport::FillRandom(image, rng);
  }
  Buffer Snapshot() const { return testsupport::Snapshot(image); }
  // Byte index in the image's buffer of pixel (x, y) of the ROI, and its mask.
  size_t Index(int x, int y) const {
    return static_cast<size_t>(static_cast<const unsigned char*>(roi.GetGenericImagePtr(x, y)) -
                               static_cast<const unsigned char*>(image.GetGenericImagePtr(0, 0)));
  }
  unsigned char Mask(int x, int y) const { return static_cast<unsigned char>(0x80 >> roi.GetBitOffset(x, y)); }
  bool Get(int x, int y) const { return (Snapshot()[Index(x, y)] & Mask(x, y)) != 0; }
  // Pixel (x, y) of the ROI in a snapshot of the image.
  bool Get(const Buffer& b, int x, int y) const { return (b[Index(x, y)] & Mask(x, y)) != 0; }
  void Put(Buffer& b, int x, int y, bool v) const {
    b[Index(x, y)] = static_cast<unsigned char>(v ? b[Index(x, y)] | Mask(x, y) : b[Index(x, y)] & ~Mask(x, y));
  }
  void Restore(const Buffer& b) {
    std::copy(b.begin(), b.end(), static_cast<unsigned char*>(image.GetGenericImagePtr(0, 0)));
  }
  // A mask over the image's buffer of the bits that are pixels of the ROI,
  // and with `pad`, of the bits behind each row's last pixel in its byte
  // when the ROI starts on a byte (which the aligned forms may write).
  Buffer Owned(bool pad) const {
    Buffer m(Snapshot().size(), 0);
    const int w = roi.GetWidth();
    const int end = pad && roi.GetBitOffset(0, 0) == 0 ? (w + 7) / 8 * 8 : w;
    for (int y = 0; y < roi.GetHeight(); ++y)
      for (int x = 0; x < end; ++x) m[Index(x, y)] = static_cast<unsigned char>(m[Index(x, y)] | Mask(x, y));
    return m;
  }
  // True when `now` and `before` agree on every bit outside `owned`.
  static bool SameOutside(const Buffer& now, const Buffer& before, const Buffer& owned) {
    for (size_t i = 0; i < now.size(); ++i)
      if ((now[i] ^ before[i]) & ~owned[i]) return false;
    return true;
  }
  // The pixels as 0 and 1, row after row.
  std::vector<int> Pixels() const {
    const Buffer b = Snapshot();
    std::vector<int> v;
    for (int y = 0; y < roi.GetHeight(); ++y)
      for (int x = 0; x < roi.GetWidth(); ++x) v.push_back(Get(b, x, y) ? 1 : 0);
    return v;
  }
};

}  // namespace bitsupport

#endif  // MIREL_TESTS_BITS_SUPPORT_H_
