#include "mirel/foundation/frame_internal.h"
#include "test_support.h"

namespace {

// A small operation written with the frame, as every exported one is.
[[gnu::noinline]] short InvertInto(EROI<EBW8>* src, EROI<EBW8>* dst, int level) {
  mirel::Frame frame("InvertInto (BW8)");
  if (!frame.NotVoid(src, dst) || !frame.SameSize(src, dst) ||
      !frame.Require(level >= 0 && level <= 255, E_ERROR_BAD_ARGUMENT))
    return frame.Result();
  auto s = mirel::RowsOf(static_cast<const EROI<EBW8>*>(src));
  auto d = mirel::RowsOf(dst);
  for (int y = 0; y < d.height; ++y)
    for (int x = 0; x < d.width; ++x) d.Row(y)[x] = static_cast<unsigned char>(level - s.Row(y)[x]);
  return frame.Result();
}

short Outer(EROI<EBW8>* src, EROI<EBW8>* dst) {
  mirel::Frame frame("Outer");
  InvertInto(src, dst, 255);
  return frame.Result();
}

TEST(Frame, FirstFailureInCheckOrder) {
  EImage<EBW8> a(4, 2), b(5, 2), none;
  auto before = testsupport::Snapshot(b);
  // A void source wins over a void destination and over sizes.
  EXPECT_EQ(InvertInto(&none, &none, 255), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "InvertInto (BW8)");
  EXPECT_EQ(InvertInto(&a, nullptr, 255), E_ERROR_VOID_IMAGE);
  // Sizes are compared only after both pass the void test.
  EXPECT_EQ(InvertInto(&a, &b, 300), E_ERROR_SIZE_MISMATCH);
  EImage<EBW8> c(4, 2);
  EXPECT_EQ(InvertInto(&a, &c, 300), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(testsupport::Snapshot(b), before);
}

TEST(Frame, NestedFramesTraceInnerFirst) {
  EImage<EBW8> a(4, 2), b(3, 2);
  EXPECT_EQ(Outer(&a, &b), E_ERROR_SIZE_MISMATCH);
  EXPECT_STREQ(EGetErrorTrace(), "InvertInto (BW8) <- Outer");
  // Success clears the state an earlier call left.
  EImage<EBW8> c(4, 2);
  a.SetPixel(10, 1, 1);
  EXPECT_EQ(Outer(&a, &c), 0);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_STREQ(EGetErrorTrace(), "");
  EXPECT_EQ(c.GetPixel(1, 1), 245);
}

TEST(Frame, SameImageAndOverlap) {
  EImage<EBW8> a(10, 10), b(10, 10);
  EROI<EBW8> left(&a, 0, 0, 5, 5), right(&a, 5, 5, 5, 5);
  EXPECT_TRUE(mirel::SameImage(&left, &right));
  EXPECT_TRUE(mirel::SameImage(&left, &a));
  EXPECT_FALSE(mirel::SameImage(&left, &b));
  EXPECT_FALSE(mirel::Overlap(&left, &right));  // corners touch, no pixel shared
  EROI<EBW8> middle(&a, 4, 4, 2, 2);
  EXPECT_TRUE(mirel::Overlap(&left, &middle));
  EXPECT_TRUE(mirel::Overlap(&middle, &right));
}

}  // namespace
