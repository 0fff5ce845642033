#include <algorithm>
#include <climits>
#include <string>

#include "mirel/foundation/armed_frame_internal.h"
#include "test_support.h"

namespace {

unsigned char* Raw(EVector& v) { return static_cast<unsigned char*>(v.GetDataPtr()); }

// Everything a vector reports about its shape.
std::string Shape(const EVector& v) {
  return "kind " + std::to_string(v.GetVectType()) + " item " + std::to_string(v.GetDataSize()) + "/" +
         std::to_string(v.GetDataType()) + " groups " + std::to_string(v.GetNbGroup()) + "/" +
         std::to_string(v.GetNbMaxGroup()) + " of " + std::to_string(v.GetGroupLength()) + " bytes " +
         std::to_string(v.GetAllocatedSize()) + " use " + std::to_string(v.GetUse()) +
         (v.GetDataPtr() ? "" : " no data");
}

TEST(UntypedVector, KindsShapeTheVector) {
  EXPECT_EQ(Shape(EVector()), "kind 0 item 0/0 groups 0/0 of 0 bytes 0 use 0 no data");
  EXPECT_EQ(EVector(9).GetUse(), 9);
  struct Case {
    int kind, groups, groupLength;
    const char* shape;
  };
  const Case cases[] = {
      {1, 2000, 0, "kind 1 item 8/2 groups 2000/2000 of 3 bytes 24000 use 0"},
      {2, 1, 640, "kind 2 item 8/1 groups 1/1 of 640 bytes 2560 use 0"},
      {3, 1, 256, "kind 3 item 2/1 groups 1/1 of 256 bytes 256 use 0"},
      {3, 1, 0, "kind 3 item 2/1 groups 1/1 of 256 bytes 256 use 0"},
      {4, 17, 3, "kind 4 item 8/2 groups 17/17 of 3 bytes 204 use 5"},
      {5, 0, 0, "kind 5 item 8/2 groups 0/2048 of 3 bytes 24576 use 0"},
      {7, 12, 0, "kind 7 item 8/4 groups 12/12 of 1 bytes 48 use 0"},
  };
  for (const Case& c : cases) {
    EVector v;
    EXPECT_EQ(v.SetType(c.kind, c.groups, c.groupLength), 0);
    EXPECT_EQ(Shape(v), c.shape);
    EXPECT_EQ(v.IsSameVectType(c.kind) * 10 + v.IsSameVectType(c.kind + 1), 10) << c.kind;
    EXPECT_EQ(std::count(Raw(v), Raw(v) + v.GetAllocatedSize(), 0), v.GetAllocatedSize());  // zeroed
  }
}

TEST(UntypedVector, RefusalsLeaveTheVectorAndReportTheCode) {
  EVector v;
  ASSERT_EQ(v.SetType(4, 10, 3), 0);
  v.SetUse(5);
  void* data = v.GetDataPtr();
  const std::string shape = Shape(v);
  EXPECT_EQ(v.SetType(6, 1, 1), E_ERROR_VECTOR_TYPE);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_TYPE);
  EXPECT_EQ(v.SetType(2, -1, 4), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(v.SetType(2, 1, -4), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(v.SetType(2, INT_MAX, INT_MAX), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(v.SetType(2, 1 << 30, 4), E_ERROR_OUT_OF_MEMORY);  // 2^34 bytes
  EXPECT_EQ(v.SetStructure(3, 1, 1, 1), E_ERROR_VECTOR_GROUP);
  EXPECT_EQ(v.SetStructure(2, 1, 1, 3), E_ERROR_VECTOR_DATA_TYPE);
  EXPECT_EQ(v.SetStructure(4, 1, 1, 4), E_ERROR_VECTOR_DATA_TYPE);  // floats are 32-bit
  EXPECT_EQ(v.Reallocate(-5), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(Shape(v), shape);
  EXPECT_EQ(v.GetDataPtr(), data);
  // SetNbGroup needs room; it never touches the room itself.
  EOk();
  v.SetNbGroup(0);
  EXPECT_EQ(Shape(v), "kind 4 item 8/2 groups 0/10 of 3 bytes 120 use 5");
  v.SetNbGroup(10);
  EXPECT_EQ(EGetError(), E_OK);
  v.SetNbGroup(11);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_LENGTH);
  v.SetNbGroup(-1);
  EXPECT_EQ(Shape(v), shape);
  // Success leaves a code already standing.
  ESetError(E_ERROR_VOID_VECTOR);
  EXPECT_EQ(v.SetType(5, 0, 0), 0);
  EXPECT_EQ(v.SetStructure(8, 4, 2, 2), 0);
  EXPECT_EQ(v.Reallocate(200), 0);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_VECTOR);
  EOk();
}

TEST(UntypedVector, RoomIsKeptAndGrown) {
  EVector v;
  ASSERT_EQ(v.SetType(2, 1, 100), 0);
  int* items = static_cast<int*>(v.GetDataPtr());
  for (int i = 0; i < 100; ++i) items[i] = i + 1;
  // Room large enough: the block and its content stay.
  ASSERT_EQ(v.SetType(2, 1, 50), 0);
  EXPECT_EQ(v.GetDataPtr(), items);
  EXPECT_EQ(Shape(v), "kind 2 item 8/1 groups 1/2 of 50 bytes 400 use 0");
  EXPECT_EQ(items[99], 100);
  // Transition results: 32-bit signed pairs; the kind is kept.
  ASSERT_EQ(v.SetStructure(8, v.GetAllocatedSize() / 8, 2, 2), 0);
  EXPECT_EQ(Shape(v), "kind 2 item 8/2 groups 50/50 of 2 bytes 400 use 0");
  // Reallocate keeps content and zeroes the new bytes; it never shrinks.
  ASSERT_EQ(v.Reallocate(400 + 24576), 0);
  items = static_cast<int*>(v.GetDataPtr());
  EXPECT_EQ(items[0], 1);
  EXPECT_EQ(items[99], 100);
  EXPECT_EQ(std::count(items + 100, items + (400 + 24576) / 4, 0), 24576 / 4);
  EXPECT_EQ(v.Reallocate(8), 0);
  EXPECT_EQ(v.GetAllocatedSize(), 400 + 24576);
}

TEST(UntypedVector, CopiesAreDeep) {
  EVector a;
  ASSERT_EQ(a.SetType(3, 1, 256), 0);
  Raw(a)[7] = 42;
  a.SetUse(3);
  EVector b(a), c;
  c = b;
  Raw(a)[7] = Raw(b)[7] = 1;
  EXPECT_EQ(Shape(c), Shape(a));
  EXPECT_EQ(Raw(c)[7], 42);
}

// A small operation in the armed style: the code of the failing test stands,
// the label is traced once and the result is the code.
short SumGroups(EVector* v, int* sum) {
  mirel::ArmedFrame frame("SumGroups");
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_TYPE, v->GetNbGroup() >= 1);
  MIREL_ARMED_CHECK(frame, E_ERROR_VECTOR_GROUP, v->GetDataSize() == 8);
  MIREL_ARMED_CHECK(frame, E_ERROR_VOID_VECTOR, v->GetDataPtr() != nullptr);
  frame.Arm(E_ERROR_WORK_BUFFER);
  if (v->SetType(v->GetVectType(), v->GetNbGroup(), v->GetGroupLength()) != 0) return frame.Fail();
  if (EGetError() != E_ERROR_WORK_BUFFER) return frame.Fail();  // the armed code still stands
  const int* items = static_cast<const int*>(v->GetDataPtr());
  *sum = 0;
  for (int i = 0; i < v->GetNbGroup() * v->GetGroupLength(); ++i) *sum += items[i];
  if (*sum < 0) return frame.Fail(E_ERROR_BAD_RANGE);
  return frame.Done();
}

TEST(ArmedFrame, ReportsTheArmedCodeAndClearsOnSuccess) {
  EVector v;
  int sum = -1;
  EXPECT_EQ(SumGroups(&v, &sum), E_ERROR_VECTOR_TYPE);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "SumGroups");
  ASSERT_EQ(v.SetType(3, 1, 4), 0);
  EXPECT_EQ(SumGroups(&v, &sum), E_ERROR_VECTOR_GROUP);
  ASSERT_EQ(v.SetType(4, 2, 3), 0);
  int* items = static_cast<int*>(v.GetDataPtr());
  for (int i = 0; i < 6; ++i) items[i] = i;
  EXPECT_EQ(SumGroups(&v, &sum), 0);
  EXPECT_EQ(sum, 15);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_STREQ(EGetErrorTrace(), "");
  items[0] = INT_MIN;
  EXPECT_EQ(SumGroups(&v, &sum), E_ERROR_BAD_RANGE);
  EXPECT_STREQ(EGetErrorTrace(), "SumGroups");
  EOk();
}

}  // namespace
