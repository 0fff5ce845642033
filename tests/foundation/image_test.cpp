#include <thread>

#include "test_support.h"

namespace {

TEST(Pixel, ConversionsAndComponents) {
  EBW8 a = static_cast<unsigned char>(200);
  unsigned char u = a;
  EXPECT_EQ(u, 200);
  EBW16 b = static_cast<unsigned short>(65535);
  EXPECT_EQ(static_cast<unsigned short>(b), 65535);
  EBW32 c = 4000000000u;
  EXPECT_EQ(static_cast<unsigned int>(c), 4000000000u);
  EFLOAT32 f = 2.5;
  double d = f;
  EXPECT_EQ(d, 2.5);
  EFLOAT64 g = 1.25f;
  float gf = static_cast<float>(g);
  EXPECT_EQ(gf, 1.25f);

  EC24 px(1, 2, 3);
  EXPECT_EQ(px[0], 1);
  EXPECT_EQ(px[2], 3);
  EC15 c15(31, 0, 17);
  EXPECT_EQ(c15.Word(), 31 | (17 << 10));
  EXPECT_EQ(c15[2], 17u);
  EC16 c16(1, 63, 31);
  EXPECT_EQ(c16.Word(), 1 | (63 << 5) | (31 << 11));
  EXPECT_EQ(c16[1], 63u);
  EXPECT_EQ(EC16(static_cast<unsigned short>(0xF800))[2], 31u);
}

TEST(Image, RowWalkPointers) {
  EImage<EBW8> image(37, 5);
  ASSERT_FALSE(image.Void());
  EXPECT_EQ(image.GetRowPitch() % 64, 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(image.GetImagePtr(0, 0)) % 64, 0u);
  EOk();
  EBW8* first = image.GetImagePtr(0, 0);
  EXPECT_EQ(image.GetImagePtr(0, image.GetHeight()),
            reinterpret_cast<EBW8*>(reinterpret_cast<unsigned char*>(first) + 5 * image.GetRowPitch()));
  EXPECT_EQ(image.GetImagePtr(image.GetWidth(), 0), first + 37);
  EXPECT_EQ(image.GetSkip(), image.GetRowPitch() - 37);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(image.GetPixelBytes(), 1);

  EImage<EC24> colour(5, 2);
  EXPECT_EQ(colour.GetPixelBytes(), 3);
  EXPECT_EQ(reinterpret_cast<unsigned char*>(colour.GetImagePtr(5, 0)) -
                reinterpret_cast<unsigned char*>(colour.GetImagePtr(0, 0)),
            15);
  EXPECT_EQ(colour.GetSkip(), colour.GetRowPitch() - 15);
}

TEST(Image, VoidAndRelease) {
  EImage<EBW8> empty;
  EXPECT_TRUE(empty.Void());
  EXPECT_EQ(empty.GetImagePtr(0, 0), nullptr);
  EXPECT_EQ(empty.GetImagePtr(0, empty.GetHeight()), empty.GetImagePtr(0, 0));
  EOk();
  empty.CheckNotVoid();
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);

  EImage<EBW16> image(10, 10);
  EXPECT_FALSE(image.Void());
  image.SetSize(0, 0);
  EXPECT_TRUE(image.Void());
  EXPECT_EQ(image.GetWidth(), 0);
  EOk();
  image.SetSize(-1, 4);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_TRUE(image.Void());
}

TEST(Image, SameSizeKeepsPixelsAndCopyIsDeep) {
  EImage<EBW8> image(8, 3);
  image.SetPixel(77, 7, 2);
  image.SetSize(8, 3);
  EXPECT_EQ(image.GetPixel(7, 2), 77);
  EImage<EBW8> copy(image);
  image.SetPixel(1, 7, 2);
  EXPECT_EQ(copy.GetPixel(7, 2), 77);
  EXPECT_NE(copy.GetImagePtr(0, 0), image.GetImagePtr(0, 0));
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

TEST(Roi, NestedOriginsAndTopParent) {
  EImage<EBW8> image(100, 80);
  EROI<EBW8> outer(&image, 10, 20, 50, 40);
  EROI<EBW8> inner(&outer, 5, 6, 7, 8);
  EXPECT_EQ(inner.GetOrgX(), 5);
  EXPECT_EQ(inner.GetTotalOrgX(), 15);
  EXPECT_EQ(inner.GetTotalOrgY(), 26);
  EXPECT_EQ(inner.GetTotalHeight(), 80);
  EXPECT_EQ(inner.GetTopParent(), &image);
  EXPECT_EQ(inner.GetImagePtr(0, 0), image.GetImagePtr(15, 26));
  EXPECT_EQ(inner.GetRowPitch(), image.GetRowPitch());
  EXPECT_EQ(inner.GetSkip(), image.GetRowPitch() - 7);
  inner.SetPixel(9, 1, 1);
  EXPECT_EQ(image.GetPixel(16, 27), 9);
}

TEST(Roi, EqualSizesDifferentParentsPass) {
  EImage<EBW8> a(50, 50), b(300, 20);
  EROI<EBW8> ra(&a, 1, 2, 30, 10), rb(&b, 200, 5, 30, 10);
  ASSERT_NE(ra.GetRowPitch(), rb.GetRowPitch());
  EOk();
  ra.CheckSameSize(&rb);
  EXPECT_EQ(EGetError(), E_OK);
  EROI<EBW8> rc(&b, 0, 0, 30, 11);
  ra.CheckSameSize(&rc);
  EXPECT_EQ(EGetError(), E_ERROR_SIZE_MISMATCH);
}

TEST(Roi, PlacementOutsideParentIsRefused) {
  EImage<EBW8> image(20, 10);
  EROI<EBW8> roi(&image, 2, 2, 5, 5);
  EOk();
  roi.SetPlacement(16, 0, 5, 5);  // one column too far
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(roi.GetOrgX(), 2);
  EXPECT_EQ(roi.GetWidth(), 5);
  EOk();
  roi.SetPlacement(-1, 0, 5, 5);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EOk();
  roi.SetPlacement(15, 5, 5, 5);  // touching the far corner is fine
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(roi.GetOrgX(), 15);

  EOk();
  EROI<EBW8> bad(&image, 0, 0, 21, 1);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(bad.GetWidth(), 0);

  // A parent that shrinks under its ROI makes the ROI void, not dangerous.
  image.SetSize(10, 10);
  EXPECT_TRUE(roi.Void());
  EOk();
  roi.CheckNotVoid();
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
}

TEST(Roi, BitRoiStartingInsideAByte) {
  EImage<EBW1> bits(21, 3);
  EXPECT_GE(bits.GetRowPitch(), 4);
  EImage<EBW1> eight(64, 2);
  EXPECT_GE(eight.GetRowPitch(), 9);  // room for the byte behind a full row
  EROI<EBW1> roi(&bits, 5, 1, 10, 2);
  EXPECT_EQ(roi.GetBitOffset(0, 0), 5);
  EXPECT_EQ(roi.GetBitOffset(3, 0), 0);
  EXPECT_EQ(reinterpret_cast<unsigned char*>(roi.GetImagePtr(0, 0)) -
                reinterpret_cast<unsigned char*>(bits.GetImagePtr(0, 0)),
            bits.GetRowPitch());
  EXPECT_EQ(reinterpret_cast<unsigned char*>(roi.GetImagePtr(3, 0)) -
                reinterpret_cast<unsigned char*>(roi.GetImagePtr(0, 0)),
            1);
  // Row end and skip add up to the pitch: bits 5..14 end in byte 1.
  const int rowBytes = static_cast<int>(reinterpret_cast<unsigned char*>(roi.GetImagePtr(10, 0)) -
                                        reinterpret_cast<unsigned char*>(roi.GetImagePtr(0, 0)));
  EXPECT_EQ(rowBytes, 1);
  EXPECT_EQ(rowBytes + roi.GetSkip(), roi.GetRowPitch());
  EROI<EBW1> nested(&roi, 4, 0, 3, 1);
  EXPECT_EQ(nested.GetBitOffset(0, 0), 1);
}

TEST(Roi, RunMask) {
  EImage<EBW8> image(10, 4);
  EROI<EBW8> roi(&image, 1, 1, 8, 2);
  EXPECT_EQ(roi.GetNumRuns(), 0);
  EXPECT_EQ(roi.GetRuns(), nullptr);
  ERun runs[2] = {{0, 3, 0, 0}, {roi.GetRowPitch() + 2, roi.GetRowPitch() + 8, 2, 1}};
  roi.SetRuns(runs, 2, 1);
  ASSERT_EQ(roi.GetNumRuns(), 2);
  EXPECT_EQ(roi.GetMaskOffsets(), 1);
  EXPECT_EQ(roi.GetRuns()[1].x, 2);
  EXPECT_EQ(roi.GetRuns()[1].end - roi.GetRuns()[1].start, 6);
  roi.ClearRuns();
  EXPECT_EQ(roi.GetNumRuns(), 0);
  EXPECT_EQ(roi.GetMaskOffsets(), 0);
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
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_STREQ(EGetErrorTrace(), "");

  const E_ERRORS all[] = {E_WARNING_POINT_OUTSIDE, E_ERROR_BAD_OPERATION, E_ERROR_VOID_IMAGE,
                          E_ERROR_SIZE_MISMATCH, E_ERROR_NOT_POWER_OF_TWO, E_ERROR_INTERNAL,
                          E_ERROR_VECTOR_SIZE, E_ERROR_KERNEL_NO_DATA};
  for (E_ERRORS e : all) {
    EXPECT_GT(std::strlen(EGetErrorText(e)), 10u) << e;
    EXPECT_STRNE(EGetErrorText(e), EGetErrorText(E_OK));
  }
  Corvane::Talmeer::Exception ex(E_ERROR_VOID_IMAGE);
  const Corvane::Exception& base = ex;
  EXPECT_STREQ(base.Text(), EGetErrorText(E_ERROR_VOID_IMAGE));
}

TEST(ErrorState, LongTracesAreCutNotOverrun) {
  ESetError(E_ERROR_INTERNAL);
  const std::string label(100, 'x');
  for (int i = 0; i < 50; ++i) ETraceError(label.c_str());
  EXPECT_LT(std::strlen(EGetErrorTrace()), 1024u);
  EXPECT_EQ(EGetError(), E_ERROR_INTERNAL);
  EOk();
}

TEST(ErrorState, IsPerThread) {
  ESetError(E_ERROR_VOID_IMAGE);
  ETraceError("Main");
  E_ERRORS seen = E_OK;
  std::string trace;
  std::thread worker([&] {
    seen = EGetError();
    ESetError(E_ERROR_BAD_RANGE);
    ETraceError("Worker");
    trace = EGetErrorTrace();
  });
  worker.join();
  EXPECT_EQ(seen, E_OK);
  EXPECT_EQ(trace, "Worker");
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "Main");
  EOk();
}

TEST(Runtime, OverlayColourIsPerThreadAndHelpersWork) {
  EGetTLSPtr()->OverlayColor = EC24(1, 2, 3);
  int other = -1;
  std::thread t([&] { other = EGetTLSPtr()->OverlayColor[0]; });
  t.join();
  EXPECT_EQ(other, 0);
  EXPECT_EQ(EGetTLSPtr()->OverlayColor[2], 3);
  void* p = Talmeer_Malloc(100);
  ASSERT_NE(p, nullptr);
  Talmeer_Free(p);
  Talmeer_Free(nullptr);
  EXPECT_NEAR(EToRadians(180.0f), 3.14159265f, 1e-6);
  EXPECT_NEAR(EFromRadians(EToRadians(37.0f)), 37.0f, 1e-4);
}

TEST(Runtime, FastPathSwitch) {
  const int natural = EGetMMX();
  {
    testsupport::PathGuard scalar(-1);
    EXPECT_EQ(EGetMMX(), 0);
    int inThread = -1;
    std::thread t([&] { inThread = EGetMMX(); });
    t.join();
    EXPECT_EQ(inThread, natural);  // the switch is per thread
  }
  EXPECT_EQ(EGetMMX(), natural);
  {
    testsupport::PathGuard capped(1);
    EXPECT_LE(mirel::testing::ActiveSimdLevel(), 1);
  }
  EXPECT_EQ(mirel::testing::ActiveSimdLevel(), mirel::testing::DetectedSimdLevel());
}

}  // namespace
