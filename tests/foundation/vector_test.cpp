#include "test_support.h"

#include <algorithm>

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

namespace {

// An element so wide that no count above 2^31 can be allocated: the size in
// bytes does not fit a size_t, so the failure path runs without a real
// allocation being tried.
struct Wide {
  unsigned char bytes[1ull << 33];
};

TEST(TypedVector, FieldsLieInTheirBindingOrder) {
  EVectorTemplate<unsigned int> v;
  v.AddElement(7);
  v.AddElement(8);
  v.AddElement(9);
  static_assert(sizeof(EVectorTemplate<unsigned int>) == 2 * sizeof(void*) + 16, "vtable, 2 words, count, capacity, pointer");
  unsigned char raw[sizeof(v)];
  std::memcpy(raw, static_cast<const void*>(&v), sizeof(v));
  unsigned int words[4];
  std::memcpy(words, raw + sizeof(void*), sizeof(words));
  EXPECT_EQ(words[0], 0u);  // reserved
  EXPECT_EQ(words[1], 0u);  // reserved
  EXPECT_EQ(words[2], 3u);  // count
  EXPECT_EQ(words[3], 4u);  // capacity
  void* data = nullptr;
  std::memcpy(&data, raw + sizeof(void*) + 16, sizeof(data));
  EXPECT_EQ(data, static_cast<void*>(v.GetDataPtr()));
}

TEST(TypedVector, CapacityRules) {
  EVectorTemplate<unsigned int> v;
  for (unsigned int i = 0; i < 6; ++i) v.AddElement(i * 11);
  v.SetMaxElements(4, 1);  // clips the count, keeps the first records
  EXPECT_EQ(v.GetNumElements(), 4u);
  EXPECT_EQ(v.GetMaxElements(), 4u);
  EXPECT_EQ(v[3], 33u);
  v.SetMaxElements(10, 0);  // keep zero empties
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(v.GetMaxElements(), 10u);
  v.SetNumElements(3);  // within the capacity: no reallocation
  const unsigned int* before = v.GetDataPtr();
  v.SetNumElements(10);
  EXPECT_EQ(v.GetDataPtr(), before);
  v[9] = 5;
  v.SetNumElements(25);  // grows to exactly 25 and keeps the records
  EXPECT_EQ(v.GetMaxElements(), 25u);
  EXPECT_EQ(v.GetNumElements(), 25u);
  EXPECT_EQ(v[9], 5u);
  v.Empty();
  EXPECT_EQ(v.GetNumElements(), 0u);
  EXPECT_EQ(v.GetMaxElements(), 25u);
}

TEST(TypedVector, FailedAllocationLeavesTheVectorAsItWas) {
  EVectorTemplate<Wide> v;
  EOk();
  v.SetMaxElements(0xFFFFFFFFu, 1);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::SetMaxElements");
  EXPECT_EQ(v.GetMaxElements(), 0u);
  EXPECT_EQ(v.GetDataPtr(), nullptr);
  v.SetNumElements(0x80000001u);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::SetMaxElements <- EVector::SetNumElements");
  EXPECT_EQ(v.GetNumElements(), 0u);
  EOk();

  // A failed counted constructor keeps its count, with no storage.
  EVectorTemplate<Wide> failed(0x80000001u);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(failed.GetNumElements(), 0x80000001u);
  EXPECT_EQ(failed.GetDataPtr(), nullptr);
  EOk();
  failed.RemoveElement(0);  // reported, never moved through the null pointer
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EOk();
}

TEST(TypedVector, AssignmentAndCopyToReplaceContent) {
  EVectorTemplate<unsigned int> a, b;
  for (unsigned int i = 0; i < 9; ++i) a.AddElement(100 + i);
  b.AddElement(1);
  b = a;
  EXPECT_EQ(b.GetNumElements(), 9u);
  EXPECT_EQ(b.GetMaxElements(), 9u);
  EXPECT_NE(b.GetDataPtr(), a.GetDataPtr());
  EXPECT_EQ(b[8], 108u);
  EVectorTemplate<unsigned int>& alias = b;
  b = alias;  // self-assignment keeps everything
  EXPECT_EQ(b[8], 108u);
  EVectorTemplate<unsigned int> c;
  EXPECT_EQ(a.CopyTo(&c), &c);
  EXPECT_EQ(c[0], 100u);
  EVectorTemplate<unsigned int> empty;
  a = empty;
  EXPECT_EQ(a.GetNumElements(), 0u);
  EXPECT_EQ(a.GetMaxElements(), 0u);
}

TEST(TypedVector, SiftEdgeCases) {
  EVectorTemplate<unsigned int> v;
  auto above = [](const unsigned int& x, const unsigned int& y) { return x > y ? 1 : 0; };
  EOk();
  v.Sift(5, above);  // no storage at all: reported, nothing written
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EOk();
  v.SetMaxElements(4, 1);
  v.Sift(5, above);  // room but count 0: the item lands at position 0
  EXPECT_EQ(v.GetDataPtr()[0], 5u);
  EXPECT_EQ(v.GetNumElements(), 0u);
  // Right child taken only when it belongs above the left one; ties go left.
  v.SetNumElements(3);
  v[0] = 9;
  v[1] = 4;
  v[2] = 4;
  v.Sift(1, above);
  EXPECT_EQ(v[0], 4u);
  EXPECT_EQ(v[1], 1u);
  EXPECT_EQ(v[2], 4u);
  // Random heaps: replacing the top keeps the heap property.
  testsupport::Rng rng(11);
  for (int trial = 0; trial < 50; ++trial) {
    EVectorTemplate<unsigned int> heap;
    const unsigned int n = 1 + rng() % 40;
    for (unsigned int i = 0; i < n; ++i) heap.AddElement(rng() % 100);
    // heapify by sifting down from each parent, using a copy of the tail trick:
    std::vector<unsigned int> values(heap.GetDataPtr(), heap.GetDataPtr() + n);
    std::make_heap(values.begin(), values.end());
    std::memcpy(heap.GetDataPtr(), values.data(), n * sizeof(unsigned int));
    heap.Sift(rng() % 100, above);
    for (unsigned int i = 1; i < n; ++i) ASSERT_LE(heap[i], heap[(i - 1) / 2]);
  }
}

TEST(TypedVector, SetElementOutsideTheCountReportsButWritesInsideTheCapacity) {
  EVectorTemplate<unsigned int> v;
  v.SetMaxElements(8, 1);
  v.SetNumElements(2);
  EOk();
  v.SetElement(5, 77);
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::SetElement");
  EXPECT_EQ(v.GetDataPtr()[5], 77u);
  EOk();
  v.SetElement(8, 1);  // beyond the storage: reported and dropped
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EOk();
  v.AddElementByRef(3u);
  EXPECT_EQ(v.GetElement(2), 3u);
  EXPECT_EQ(EGetError(), E_OK);
}

TEST(NamedVectors, DefaultsAndFlags) {
  EBW8Vector a;
  EXPECT_EQ(a.GetNumElements(), 0u);
  EXPECT_EQ(a.GetDataPtr(), nullptr);
  EXPECT_EQ(a.GetUnsigned(), 1);
  EBW8Vector b(4, 0);
  EXPECT_EQ(b.GetUnsigned(), 0);
  EXPECT_EQ(b.GetNumElements(), 4u);
  b.SetUnsigned(3);
  EXPECT_EQ(b.GetUnsigned(), 3);
  EBW32Vector c(2);
  EXPECT_EQ(c[1], 0u);
  EC24Vector d(1);
  EXPECT_EQ(d[0][2], 0);
  EStatistics s(6);
  EXPECT_EQ(s.Count(), 6u);
  Corvane::GenericRoiExtentBroadcastingVector g;
  EXPECT_EQ(g.GetNumElements(), 0u);
  EINT32Vector i(3);
  EXPECT_EQ(i.GetNumElements(), 3u);
}

}  // namespace
