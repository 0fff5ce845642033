#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "test_support.h"

namespace {

using UVec = EVectorTemplate<unsigned int>;

// Count / capacity of a vector, and whether it has storage.
template <class T>
std::string Shape(const EVectorTemplate<T>& v) {
  return std::to_string(v.GetNumElements()) + "/" + std::to_string(v.GetMaxElements()) +
         (v.GetDataPtr() ? "" : " no data");
}

// An element so wide that no count above 2^31 can be allocated: the size in
// bytes does not fit a size_t, so the failure path runs without a real
// allocation being tried.
struct Wide {
  unsigned char bytes[1ull << 33];
};

TEST(TypedVector, FieldsLieInTheirBindingOrder) {
  UVec v;
  for (unsigned int i = 7; i < 10; ++i) v.AddElement(i);
  static_assert(sizeof(UVec) == 2 * sizeof(void*) + 16, "vtable, 2 words, count, capacity, pointer");
  unsigned char raw[sizeof(v)];
  std::memcpy(raw, static_cast<const void*>(&v), sizeof(v));
  unsigned int words[4];
  std::memcpy(words, raw + sizeof(void*), sizeof(words));
  EXPECT_EQ(std::vector<unsigned int>(words, words + 4), (std::vector<unsigned int>{0, 0, 3, 4}));
  void* data = nullptr;
  std::memcpy(&data, raw + sizeof(void*) + 16, sizeof(data));
  EXPECT_EQ(data, static_cast<void*>(v.GetDataPtr()));
}

TEST(TypedVector, GrowthAndCapacityRules) {
  UVec v;
  const unsigned int doubling[] = {1, 2, 4, 4, 8, 8};  // from one, doubling
  for (unsigned int i = 0; i < 6; ++i) {
    v.AddElement(i * 11);
    EXPECT_EQ(v.GetMaxElements(), doubling[i]);
  }
  v.RemoveElement(1);
  EXPECT_EQ(v[1], 22u);
  v.SetMaxElements(4, 1);  // clips the count, keeps the first records
  EXPECT_EQ(Shape(v), "4/4");
  EXPECT_EQ(v[3], 44u);
  v.SetMaxElements(10, 0);  // keep zero empties
  EXPECT_EQ(Shape(v), "0/10");
  v.SetNumElements(3);  // within the capacity: no reallocation
  const unsigned int* before = v.GetDataPtr();
  v.SetNumElements(10);
  EXPECT_EQ(v.GetDataPtr(), before);
  v[9] = 5;
  v.SetNumElements(25);  // grows to exactly 25 and keeps the records
  EXPECT_EQ(Shape(v), "25/25");
  EXPECT_EQ(v[9], 5u);
  v.Empty();
  EXPECT_EQ(Shape(v), "0/25");
  v.SetMaxElements(0, 1);
  EXPECT_EQ(Shape(v), "0/0 no data");
  // A record of the vector itself, added when the vector is full: growing
  // frees the old storage, so the record must be read before.
  v.SetMaxElements(2, 0);
  v.AddElement(31);
  v.AddElement(32);
  v.AddElementByRef(v[0]);
  v.AddElementByRef(v[1]);
  EXPECT_EQ(Shape(v), "4/4");
  EXPECT_EQ(std::vector<unsigned int>(v.GetDataPtr(), v.GetDataPtr() + 4),
            (std::vector<unsigned int>{31, 32, 31, 32}));
  v.AddElementByRef(v[3]);
  EXPECT_EQ(v[4], 32u);
  UVec z(5);  // the counted constructor zeroes
  EXPECT_EQ(Shape(z), "5/5");
  EXPECT_EQ(std::count(z.GetDataPtr(), z.GetDataPtr() + 5, 0u), 5);
}

TEST(TypedVector, OutOfRangeReportsAndKeepsGoing) {
  EBW16Vector v(3);
  UVec u;
  u.SetMaxElements(8, 1);
  u.SetNumElements(2);
  const EBW16* dummy = nullptr;
  const struct { std::function<void()> call; const char* label; } cases[] = {
      {[&] { dummy = &v[3]; }, "EVector::operator[]"},  // a shared dummy record, not the storage
      {[&] { EXPECT_EQ(static_cast<unsigned short>(v.GetElement(-1)), 0); }, "EVector::GetElement"},
      {[&] { v.RemoveElement(3); }, "EVector::RemoveElement"},
      {[&] { u.SetElement(5, 77); }, "EVector::SetElement"},  // outside the count, written inside the capacity
      {[&] { u.SetElement(8, 1); }, "EVector::SetElement"},   // beyond the storage: dropped
  };
  for (const auto& c : cases) {
    EOk();
    c.call();
    EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE) << c.label;
    EXPECT_STREQ(EGetErrorTrace(), c.label);
  }
  EXPECT_NE(dummy, v.GetDataPtr() + 3);
  EXPECT_EQ(u.GetDataPtr()[5], 77u);
  EOk();
}

TEST(TypedVector, FailedAllocationLeavesTheVectorAsItWas) {
  EVectorTemplate<Wide> v;
  EOk();
  v.SetMaxElements(0xFFFFFFFFu, 1);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::SetMaxElements");
  v.SetNumElements(0x80000001u);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::SetMaxElements <- EVector::SetNumElements");
  EXPECT_EQ(Shape(v), "0/0 no data");

  // A failed counted constructor keeps its count, with no storage.
  EOk();
  EVectorTemplate<Wide> failed(0x80000001u);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(Shape(failed), "2147483649/0 no data");
  EOk();
  failed.RemoveElement(0);  // reported, never moved through the null pointer
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EOk();
}

TEST(TypedVector, CopiesAssignmentAndCopyTo) {
  UVec a, b, c;
  for (unsigned int i = 0; i < 9; ++i) a.AddElement(100 + i);
  a.SetMaxElements(20, 1);
  EXPECT_EQ(Shape(UVec(a)), "9/9");  // a copy's capacity is the count
  b.AddElement(1);
  b = a;
  EXPECT_NE(b.GetDataPtr(), a.GetDataPtr());
  UVec& alias = b;
  b = alias;  // self-assignment keeps everything
  EXPECT_EQ(Shape(b), "9/9");
  EXPECT_EQ(b[8], 108u);
  EXPECT_EQ(a.CopyTo(&c), &c);
  EXPECT_EQ(c[0], 100u);
  std::unique_ptr<UVec> fresh(a.CopyTo(nullptr));
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(Shape(*fresh), "9/9");
}

TEST(TypedVector, SiftKeepsAHeap) {
  UVec v;
  auto above = [](const unsigned int& x, const unsigned int& y) { return x > y ? 1 : 0; };
  EOk();
  v.Sift(5, above);  // no storage at all: reported, nothing written
  EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
  EOk();
  v.SetMaxElements(4, 1);
  v.Sift(5, above);  // room but count 0: the item lands at position 0
  EXPECT_EQ(v.GetDataPtr()[0], 5u);
  EXPECT_EQ(Shape(v), "0/4");
  // Right child taken only when it belongs above the left one; ties go left.
  v.SetNumElements(3);
  v[0] = 9;
  v[1] = 4;
  v[2] = 4;
  v.Sift(1, above);
  EXPECT_EQ(std::vector<unsigned int>(v.GetDataPtr(), v.GetDataPtr() + 3), (std::vector<unsigned int>{4, 1, 4}));
  // The item may be the vector's own top.
  v[0] = 1;
  v[1] = 5;
  v[2] = 3;
  v.Sift(v[0], above);
  EXPECT_EQ(std::vector<unsigned int>(v.GetDataPtr(), v.GetDataPtr() + 3), (std::vector<unsigned int>{5, 1, 3}));
  // Random heaps: replacing the top keeps the heap property.
  testsupport::Rng rng(11);
  for (int trial = 0; trial < 50; ++trial) {
    const unsigned int n = 1 + rng() % 40;
    std::vector<unsigned int> values(n);
    for (auto& x : values) x = rng() % 100;
    std::make_heap(values.begin(), values.end());
    UVec heap;
    for (unsigned int x : values) heap.AddElement(x);
    heap.Sift(rng() % 100, above);
    for (unsigned int i = 1; i < n; ++i) ASSERT_LE(heap[i], heap[(i - 1) / 2]);
  }
}

}  // namespace
