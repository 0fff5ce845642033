#include <algorithm>
#include <thread>

#include "test_support.h"

namespace {

TEST(Pixel, PackedColourWords) {
  // Red in the low bits: 5-5-5 and 5-6-5.
  EXPECT_EQ(EC15(31, 0, 17).Word(), 31 | (17 << 10));
  EXPECT_EQ(EC15(31, 0, 17)[2], 17u);
  EXPECT_EQ(EC16(1, 63, 31).Word(), 1 | (63 << 5) | (31 << 11));
  EXPECT_EQ(EC16(static_cast<unsigned short>(0xF800))[2], 31u);
}

// Byte distance between two pixel addresses.
template <class T>
long Distance(const T* from, const T* to) {
  return reinterpret_cast<const unsigned char*>(to) - reinterpret_cast<const unsigned char*>(from);
}

TEST(Image, RowWalkPointers) {
  EImage<EBW8> image(37, 5);
  EImage<EC24> colour(5, 2);
  EXPECT_EQ(image.GetRowPitch() % 64, 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(image.GetImagePtr(0, 0)) % 64, 0u);
  EOk();
  // One past the last row and one past a row's end are valid addresses.
  EXPECT_EQ(Distance(image.GetImagePtr(0, 0), image.GetImagePtr(0, 5)), 5 * image.GetRowPitch());
  EXPECT_EQ(image.GetSkip(), image.GetRowPitch() - 37);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(colour.GetPixelBytes(), 3);
  EXPECT_EQ(Distance(colour.GetImagePtr(0, 0), colour.GetImagePtr(5, 0)), 15);
  EXPECT_EQ(colour.GetSkip(), colour.GetRowPitch() - 15);
}

TEST(Image, VoidResizeAndDeepCopy) {
  EImage<EBW8> empty;
  EXPECT_EQ(empty.GetImagePtr(0, 0), nullptr);
  EOk();
  empty.CheckNotVoid();
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EImage<EBW8> image(8, 3);
  image.SetPixel(77, 7, 2);
  image.SetSize(8, 3);  // the same size keeps the pixels
  EImage<EBW8> copy(image);
  image.SetPixel(1, 7, 2);
  EXPECT_EQ(copy.GetPixel(7, 2), 77);
  image.SetSize(0, 0);
  EXPECT_TRUE(image.Void());
  EOk();
  image.SetSize(-1, 4);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
}

TEST(Roi, ZeroWidthIsNotVoidAndWalksNothing) {
  EImage<EBW8> image(16, 4);
  EROI<EBW8> roi(&image, 3, 1, 0, 2);
  EXPECT_FALSE(roi.Void());
  EXPECT_EQ(roi.GetImagePtr(roi.GetWidth(), 0), roi.GetImagePtr(0, 0));
  int rows = 0;
  for (EBW8* p = roi.GetImagePtr(0, 0); p < roi.GetImagePtr(0, roi.GetHeight());
       p = reinterpret_cast<EBW8*>(reinterpret_cast<unsigned char*>(p + roi.GetWidth()) + roi.GetSkip()))
    ++rows;
  EXPECT_EQ(rows, 2);
}

TEST(Roi, NestedOriginsAndSizeChecks) {
  EImage<EBW8> image(100, 80), other(300, 20);
  EROI<EBW8> outer(&image, 10, 20, 50, 40);
  EROI<EBW8> inner(&outer, 5, 6, 30, 8);
  EXPECT_EQ(inner.GetTotalOrgX(), 15);
  EXPECT_EQ(inner.GetTotalOrgY(), 26);
  EXPECT_EQ(inner.GetTopParent(), &image);
  EXPECT_EQ(inner.GetSkip(), image.GetRowPitch() - 30);
  inner.SetPixel(9, 1, 1);
  EXPECT_EQ(image.GetPixel(16, 27), 9);
  // Equal sizes pass whatever the parents; one row more does not.
  EROI<EBW8> same(&other, 200, 5, 30, 8), taller(&other, 0, 0, 30, 9);
  EOk();
  inner.CheckSameSize(&same);
  EXPECT_EQ(EGetError(), E_OK);
  inner.CheckSameSize(&taller);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
}

TEST(Roi, PlacementOutsideParentIsRefused) {
  EImage<EBW8> image(20, 10);
  EROI<EBW8> roi(&image, 2, 2, 5, 5);
  for (const int x : {16, -1}) {  // one column too far on either side
    EOk();
    roi.SetPlacement(x, 0, 5, 5);
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT) << x;
    EXPECT_TRUE(roi.GetOrgX() == 2 && roi.GetWidth() == 5);
  }
  EOk();
  roi.SetPlacement(15, 5, 5, 5);  // touching the far corner is fine
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(roi.GetOrgX(), 15);
  EOk();
  roi.SetPlacement(0, 0, 21, 1);
  EXPECT_STREQ(EGetErrorTrace(), "EROI::SetPlacement");
  EOk();
  EROI<EBW8> bad(&image, 0, 0, 21, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_STREQ(EGetErrorTrace(), "EROI::EROI");
  EXPECT_EQ(bad.GetWidth(), 0);
  // The refused ROI is void, so an operation refuses it instead of working on
  // a 0x0 rectangle, until a placement succeeds.
  EXPECT_TRUE(bad.Void());
  EXPECT_EQ(bad.GetImagePtr(0, 0), nullptr);
  EImage<EBW8> other(21, 1);
  EOk();
  ImgCopy(&bad, &other);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  bad.SetPlacement(1, 1, 3, 3);
  EXPECT_FALSE(bad.Void());
  // A parent that shrinks under its ROI makes the ROI void, not dangerous.
  image.SetSize(19, 10);
  EXPECT_TRUE(roi.Void());
  EOk();
  roi.CheckNotVoid();
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

TEST(Roi, BitRoiStartingInsideAByte) {
  EImage<EBW1> bits(21, 3), eight(64, 2);
  EXPECT_GE(eight.GetRowPitch(), 9);  // room for the byte behind a full row
  EROI<EBW1> roi(&bits, 5, 1, 10, 2);
  EXPECT_EQ(roi.GetBitOffset(0, 0), 5);
  EXPECT_EQ(roi.GetBitOffset(3, 0), 0);
  EXPECT_EQ(Distance(bits.GetImagePtr(0, 0), roi.GetImagePtr(0, 0)), bits.GetRowPitch());
  EXPECT_EQ(Distance(roi.GetImagePtr(0, 0), roi.GetImagePtr(3, 0)), 1);
  // Row end and skip add up to the pitch: bits 5..14 end in byte 1.
  EXPECT_EQ(Distance(roi.GetImagePtr(0, 0), roi.GetImagePtr(10, 0)), 1);
  EXPECT_EQ(1 + roi.GetSkip(), roi.GetRowPitch());
  EROI<EBW1> nested(&roi, 4, 0, 3, 1);
  EXPECT_EQ(nested.GetBitOffset(0, 0), 1);
}

TEST(ErrorState, CodesTraceAndTexts) {
  EOk();
  EXPECT_EQ(ETraceError("Ignored"), E_OK);  // harmless with no error set
  EXPECT_STREQ(EGetErrorTrace(), "");
  EXPECT_EQ(ESetError(E_ERROR_SIZE_MISMATCH), E_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(ETraceError("Inner"), E_ERROR_SIZE_MISMATCH);
  ETraceError("Outer");
  EXPECT_STREQ(EGetErrorTrace(), "Inner <- Outer");
  EXPECT_EQ(EOk(), E_OK);
  EXPECT_STREQ(EGetErrorTrace(), "");
  for (E_ERRORS e : {E_WARNING_POINT_OUTSIDE, E_ERROR_VOID_IMAGE, E_ERROR_INTERNAL, E_ERROR_KERNEL_NO_DATA}) {
    EXPECT_GT(std::strlen(EGetErrorText(e)), 10u) << e;
    EXPECT_STRNE(EGetErrorText(e), EGetErrorText(E_OK));
  }
  const Corvane::Exception& base = Corvane::Talmeer::Exception(E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(base.Text(), EGetErrorText(E_ERROR_VOID_IMAGE));
  // Long traces are cut, never overrun.
  const std::string label(100, 'x');
  ESetError(E_ERROR_INTERNAL);
  for (int i = 0; i < 50; ++i) ETraceError(label.c_str());
  EXPECT_LT(std::strlen(EGetErrorTrace()), 1024u);
  EXPECT_EQ(EGetError(), E_ERROR_INTERNAL);
  EOk();
}

TEST(ThreadState, ErrorsOverlayColourAndFastPathsArePerThread) {
  ESetError(E_ERROR_VOID_IMAGE);
  ETraceError("Main");
  EGetTLSPtr()->OverlayColor = EC24(1, 2, 3);
  const int natural = EGetMMX();
  E_ERRORS seen = E_OK;
  std::string trace;
  int colour = -1, mmx = -1;
  {
    testsupport::PathGuard scalar(-1);
    EXPECT_EQ(EGetMMX(), 0);
    std::thread worker([&] {
      seen = EGetError();
      ESetError(E_ERROR_BAD_RANGE);
      ETraceError("Worker");
      trace = EGetErrorTrace();
      colour = EGetTLSPtr()->OverlayColor[0];
      mmx = EGetMMX();
    });
    worker.join();
  }
  EXPECT_EQ(seen, E_OK);
  EXPECT_EQ(trace, "Worker");
  EXPECT_EQ(colour, 0);
  EXPECT_EQ(mmx, natural);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "Main");
  EXPECT_EQ(EGetTLSPtr()->OverlayColor[2], 3);
  EXPECT_EQ(EGetMMX(), natural);
  {
    testsupport::PathGuard capped(1);
    EXPECT_LE(mirel::testing::ActiveSimdLevel(), 1);
  }
  EXPECT_EQ(mirel::testing::ActiveSimdLevel(), mirel::testing::DetectedSimdLevel());
  EOk();
}

}  // namespace

TEST(Image, MovesTakeThePixelsWithoutCopying) {
  EImage<EBW16> a(13, 7);
  a.SetPixel(EBW16(4321), 12, 6);
  const void* pixels = a.GetImagePtr(0, 0);
  EImage<EBW16> b(std::move(a));
  EXPECT_EQ(b.GetImagePtr(0, 0), pixels);
  EXPECT_EQ(b.GetPixel(12, 6), EBW16(4321));
  EXPECT_TRUE(a.Void());
  EXPECT_EQ(a.GetWidth(), 0);
  EImage<EBW16> c(3, 3);
  c = std::move(b);
  EXPECT_EQ(c.GetImagePtr(0, 0), pixels);
  EXPECT_TRUE(b.Void() && b.GetHeight() == 0);
  // The moved-from image is usable again.
  b.SetSize(2, 2);
  EXPECT_FALSE(b.Void());
}

// Freed blocks of 1 MiB or more serve the next image of their size to a
// quarter below; the capacity and the four slots bound what is kept, and a
// capacity of 0 gives everything back.
TEST(Image, FreedLargeBlocksServeTheNextImageOfTheirSize) {
  using mirel::detail::KeptPixelBytes;
  ImgSetPixelCache(0);
  ImgSetPixelCache(std::size_t(8) << 20);
  const void* first;
  {
    EImage<EBW8> a(1500, 1000);
    first = a.GetImagePtr(0, 0);
  }
  const std::size_t kept = KeptPixelBytes();
  EXPECT_GE(kept, 1500u * 1000u);
  {
    EImage<EBW8> small(500, 500), lesser(1100, 1000);
    EXPECT_EQ(KeptPixelBytes(), kept);
    EXPECT_NE(lesser.GetImagePtr(0, 0), first);
    EImage<EBW8> b(1400, 1000);
    EXPECT_EQ(b.GetImagePtr(0, 0), first);
    EXPECT_EQ(KeptPixelBytes(), 0u);
    std::memset(b.GetImagePtr(0, 0), 9, static_cast<size_t>(b.GetRowPitch()) * 1000);
  }
  EXPECT_GE(KeptPixelBytes(), kept + 1100u * 1000u);
  { std::vector<EImage<EBW8>> five(5, EImage<EBW8>(1800, 1000)); }
  EXPECT_LE(KeptPixelBytes(), std::size_t(8) << 20);
  EXPECT_GE(KeptPixelBytes(), 3u * 1800u * 1000u);
  ImgSetPixelCache(std::size_t(4) << 20);
  EXPECT_LE(KeptPixelBytes(), std::size_t(4) << 20);
  ImgSetPixelCache(0);
  EXPECT_EQ(KeptPixelBytes(), 0u);
  { EImage<EBW8> c(1500, 1000); }
  EXPECT_EQ(KeptPixelBytes(), 0u);
  ImgSetPixelCache(std::size_t(32) << 20);  // the starting capacity
}

TEST(Image, BorrowedBufferIsUsedInPlaceAndNeverFreed) {
  // An odd pitch, and nothing behind the last row: ASan sees any read or
  // write outside the caller's buffer, and any attempt to free it.
  const int w = 11, h = 5, pitch = 13;
  std::vector<unsigned char> buffer(static_cast<std::size_t>(pitch) * (h - 1) + w, 7);
  {
    EImage<EBW8> view(reinterpret_cast<EBW8*>(buffer.data()), w, h, pitch);
    EXPECT_TRUE(view.IsBorrowed());
    EXPECT_EQ(view.GetRowPitch(), pitch);
    EROI<EBW8> roi(&view, 2, 1, 8, 3);
    ImgOper(ALO_ADD, &roi, EBW8(5), &roi);
    EXPECT_EQ(EGetError(), E_OK);
    EImage<EBW8> copy(view);  // a copy owns its pixels
    EXPECT_FALSE(copy.IsBorrowed());
    EXPECT_EQ(copy.GetPixel(2, 1), EBW8(12));
    EXPECT_EQ(copy.GetPixel(10, 4), EBW8(7));
    EImage<EBW8> moved(std::move(view));
    EXPECT_TRUE(moved.IsBorrowed());
  }
  EXPECT_EQ(buffer[static_cast<std::size_t>(pitch) + 2], 12);
  EXPECT_EQ(buffer[static_cast<std::size_t>(pitch) + 1], 7);
  EXPECT_EQ(buffer[static_cast<std::size_t>(pitch) * 3 + 9], 12);
  EXPECT_EQ(buffer[static_cast<std::size_t>(pitch) * 3 + 10], 7);

  // Refused views leave the image as it was.
  EImage<EBW8> image(4, 4);
  const void* own = image.GetImagePtr(0, 0);
  for (const int badPitch : {0, -4, w - 1}) {
    EOk();
    image.Borrow(reinterpret_cast<EBW8*>(buffer.data()), w, h, badPitch);
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT) << badPitch;
    EXPECT_STREQ(EGetErrorTrace(), "EImage::Borrow");
    EXPECT_EQ(image.GetImagePtr(0, 0), own);
  }
  EOk();
  image.Borrow(nullptr, w, h, pitch);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EImage<EBW1> bits;
  bits.Borrow(reinterpret_cast<EBW1*>(buffer.data()), 16, 2, 2);  // needs a spare byte a row
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  // Resizing drops the borrowed buffer for an owned one.
  EOk();
  image.Borrow(reinterpret_cast<EBW8*>(buffer.data()), w, h, pitch);
  image.SetSize(3, 3);
  EXPECT_FALSE(image.IsBorrowed());
  EXPECT_EQ(EGetError(), E_OK);
}

// The borrowed-buffer runs of every test program rest on this: random test
// images then borrow buffers of exactly their size, at odd pitches and
// offsets where the pixel type allows.
template <class T>
void ExpectBorrowedRandomImages(testsupport::Rng& rng) {
  std::vector<int> pitches;
  for (int trial = 0; trial < 8; ++trial) {
    EImage<T> image;
    EROI<T> roi;
    testsupport::PlaceRandom(image, roi, 1 + static_cast<int>(rng() % 30), 1 + static_cast<int>(rng() % 4), rng);
    ASSERT_TRUE(image.IsBorrowed());
    const int pitch = image.GetRowPitch();
    const size_t row = testsupport::RowBytes<T>(image.GetWidth());
    EXPECT_GE(static_cast<size_t>(pitch), row);
    EXPECT_EQ(pitch % alignof(T), 0);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(image.GetImagePtr(0, 0)) % alignof(T), 0u);
    const size_t bytes = testsupport::Snapshot(image).size();
    EXPECT_EQ(bytes, static_cast<size_t>(pitch) * (image.GetHeight() - 1) + row);
    if (!std::is_same<T, EBW1>::value) {  // the ROI ends on the buffer's last pixel
      const T* end = roi.GetImagePtr(roi.GetWidth(), roi.GetHeight() - 1);
      EXPECT_EQ(static_cast<size_t>(Distance(image.GetImagePtr(0, 0), end)), bytes);
    }
    pitches.push_back(pitch % 64);
  }
  if (alignof(T) == 1) {
    EXPECT_TRUE(std::any_of(pitches.begin(), pitches.end(), [](int p) { return p % 2 == 1; }));
  }
}

TEST(TestSupport, RandomImagesBorrowExactBuffersWhenAsked) {
  const bool was = testsupport::BorrowedBuffers::On();
  testsupport::BorrowedBuffers::Set(true);
  testsupport::Rng rng(3);
  ExpectBorrowedRandomImages<EBW1>(rng);
  ExpectBorrowedRandomImages<EBW8>(rng);
  ExpectBorrowedRandomImages<EBW16>(rng);
  ExpectBorrowedRandomImages<EC24>(rng);
  ExpectBorrowedRandomImages<EFLOAT64>(rng);
  testsupport::BorrowedBuffers::Set(false);
  EImage<EBW8> owned;
  EROI<EBW8> roi;
  testsupport::PlaceRandom(owned, roi, 5, 5, rng);
  EXPECT_FALSE(owned.IsBorrowed());
  testsupport::BorrowedBuffers::Set(was);
}
