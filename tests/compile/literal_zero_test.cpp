// A constant written as a plain 0 where an image may also stand must not
// compile (it would be a null image); the typed constant must. This file is
// built twice: as a test program with the typed calls, and, by the
// compile-refusal test, with MIREL_EXPECT_REFUSAL, which the compiler must
// reject with the library's message.
#include "test_support.h"

namespace {

TEST(PlainZero, TypedConstantsCompileAndRun) {
  EImage<EBW8> a(5, 3), d(5, 3);
  EImage<EBW16> a16(5, 3), d16(5, 3);
  ImgCopy(EBW8(9), &a);
  ImgOper(ALO_ADD, &a, EBW8(0), &d);
  ImgOper(ALO_SUBTRACT, EBW8(20), &a, &d);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(d.GetPixel(4, 2), EBW8(11));
  ImgCopy(EBW16(300), &a16);
  ImgOper(ALO_ADD, &a16, EBW16(0), &d16);
  EXPECT_EQ(d16.GetPixel(0, 0).value, 300);
  unsigned char c = 1;
  ImgOper(ALO_ADD, &a, c, &d);  // a byte variable still converts to EBW8
  EXPECT_EQ(d.GetPixel(0, 0), EBW8(10));
#ifdef MIREL_EXPECT_REFUSAL
  ImgOper(ALO_ADD, &a, 0, &d);
  ImgOper(ALO_ADD, &a16, nullptr, &d16);
  ImgCopy(0, &a);
#endif
}

}  // namespace
