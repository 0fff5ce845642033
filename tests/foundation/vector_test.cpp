#include "test_support.h"

namespace {

TEST(TypedVector, GrowthByDoublingFromOne) {
  EBW8Vector v;
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(v.GetUnsigned(), 1);
  const unsigned int expected[] = {1, 2, 4, 4, 8};
  for (unsigned int i = 0; i < 5; ++i) {
    v.AddElement(static_cast<unsigned char>(i));
    EXPECT_EQ(v.GetMaxElements(), expected[i]);
  }
  EXPECT_EQ(v[4], 4);
  v.RemoveElement(1);
  EXPECT_EQ(v.GetNumElements(), 4u);
  EXPECT_EQ(v[1], 2);
}

TEST(TypedVector, CountedConstructorZeroesAndCopiesAreExact) {
  EVectorTemplate<unsigned int> v(5);
  EXPECT_EQ(v.GetNumElements(), 5u);
  EXPECT_EQ(v.GetMaxElements(), 5u);
  for (unsigned int i = 0; i < 5; ++i) EXPECT_EQ(v[i], 0u);
  v.SetMaxElements(20, 1);
  v.SetElement(2, 42);
  EVectorTemplate<unsigned int> copy(v);
  EXPECT_EQ(copy.GetMaxElements(), 5u);  // the copy's capacity is the count
  EXPECT_EQ(copy[2], 42u);
  EVectorTemplate<unsigned int>* fresh = v.CopyTo(nullptr);
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(fresh->GetNumElements(), 5u);
  delete fresh;
  v.SetMaxElements(0, 1);
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(v.GetDataPtr(), nullptr);
}

TEST(TypedVector, OutOfRangeReportsAndKeepsGoing) {
  EBW16Vector v(3);
  EOk();
  EBW16& dummy = v[3];
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::operator[]");
  EXPECT_NE(&dummy, v.GetDataPtr() + 3);
  EOk();
  EXPECT_EQ(static_cast<unsigned short>(v.GetElement(-1)), 0);
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EOk();
  v.RemoveElement(3);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::RemoveElement");
  EOk();
}

TEST(TypedVector, SiftKeepsAHeap) {
  EVectorTemplate<unsigned int> heap;
  const unsigned int values[] = {90, 70, 80, 10, 60, 50, 40};
  for (unsigned int x : values) heap.AddElement(x);
  auto above = [](const unsigned int& a, const unsigned int& b) { return a > b ? 1 : 0; };
  heap.Sift(30, above);  // replace the top (90)
  EXPECT_EQ(heap[0], 80u);
  for (unsigned int i = 1; i < heap.GetNumElements(); ++i) EXPECT_LE(heap[i], heap[(i - 1) / 2]);
}

}  // namespace
