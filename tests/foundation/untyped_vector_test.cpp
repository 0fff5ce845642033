#include <algorithm>
#include <climits>

#include "mirel/foundation/armed_frame_internal.h"
#include "test_support.h"

namespace {

unsigned char* Raw(EVector& v) { return static_cast<unsigned char*>(v.GetDataPtr()); }

TEST(UntypedVector, KindsShapeTheVector) {
  EVector fresh, used(9);
  EXPECT_EQ(fresh.GetDataPtr(), nullptr);
  EXPECT_EQ(fresh.GetAllocatedSize() + fresh.GetNbGroup() + fresh.GetVectType() + fresh.GetUse(), 0);
  EXPECT_EQ(used.GetUse(), 9);
  struct Case {
    int kind, groups, groupLength;
    int size, type, length, use, nbGroup, bytes;
  };
  const Case cases[] = {
      {1, 2000, 0, 8, 2, 3, 0, 2000, 24000}, {2, 1, 640, 8, 1, 640, 0, 1, 2560},
      {3, 1, 256, 2, 1, 256, 0, 1, 256},     {3, 1, 0, 2, 1, 256, 0, 1, 256},
      {4, 17, 3, 8, 2, 3, 5, 17, 204},       {5, 0, 0, 8, 2, 3, 0, 0, 24576},
      {7, 12, 0, 8, 4, 1, 0, 12, 48},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.kind);
    EVector v;
    EXPECT_EQ(v.SetType(c.kind, c.groups, c.groupLength), 0);
    EXPECT_EQ(v.GetVectType(), c.kind);
    EXPECT_EQ(v.IsSameVectType(c.kind), 1);
    EXPECT_EQ(v.IsSameVectType(c.kind + 1), 0);
    EXPECT_EQ(v.GetDataSize(), c.size);
    EXPECT_EQ(v.GetDataType(), c.type);
    EXPECT_EQ(v.GetGroupLength(), c.length);
    EXPECT_EQ(v.GetUse(), c.use);
    EXPECT_EQ(v.GetNbGroup(), c.nbGroup);
    EXPECT_EQ(v.GetAllocatedSize(), c.bytes);
    EXPECT_EQ(v.GetNbMaxGroup(), c.bytes / v.GetGroupBytes());
    ASSERT_NE(v.GetDataPtr(), nullptr);
    EXPECT_EQ(std::count(Raw(v), Raw(v) + c.bytes, 0), c.bytes);  // fresh room is zeroed
  }
}

TEST(UntypedVector, RefusalsLeaveTheVectorAndReportTheCode) {
  EVector v;
  ASSERT_EQ(v.SetType(4, 10, 3), 0);
  v.SetUse(5);
  void* data = v.GetDataPtr();
  EXPECT_EQ(v.SetType(6, 1, 1), E_ERROR_VECTOR_TYPE);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_TYPE);
  EXPECT_EQ(v.SetType(2, -1, 4), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(v.SetType(2, INT_MAX, INT_MAX), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(v.SetType(2, 1 << 30, 4), E_ERROR_OUT_OF_MEMORY);  // 2^34 bytes
  EXPECT_EQ(v.SetStructure(3, 1, 1, 1), E_ERROR_VECTOR_GROUP);
  EXPECT_EQ(v.SetStructure(2, 1, 1, 3), E_ERROR_VECTOR_DATA_TYPE);
  EXPECT_EQ(v.SetStructure(4, 1, 1, 4), E_ERROR_VECTOR_DATA_TYPE);  // floats are 32-bit
  EXPECT_EQ(v.Reallocate(-5), E_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(v.GetVectType(), 4);
  EXPECT_EQ(v.GetNbGroup(), 10);
  EXPECT_EQ(v.GetAllocatedSize(), 120);
  EXPECT_EQ(v.GetDataPtr(), data);
  EXPECT_EQ(v.GetUse(), 5);
  // SetNbGroup needs room; it never touches the room itself.
  EOk();
  v.SetNbGroup(0);
  EXPECT_EQ(v.GetNbGroup(), 0);
  EXPECT_EQ(v.GetAllocatedSize(), 120);
  v.SetNbGroup(10);
  EXPECT_EQ(EGetError(), E_OK);
  v.SetNbGroup(11);
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_LENGTH);
  v.SetNbGroup(-1);
  EXPECT_EQ(v.GetNbGroup(), 10);
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
  EXPECT_EQ(v.GetAllocatedSize(), 400);
  EXPECT_EQ(v.GetNbMaxGroup(), 2);
  EXPECT_EQ(items[99], 100);
  // Transition results: 32-bit signed pairs; the kind is kept.
  ASSERT_EQ(v.SetStructure(8, v.GetAllocatedSize() / 8, 2, 2), 0);
  EXPECT_EQ(v.GetVectType(), 2);
  EXPECT_EQ(v.GetNbGroup(), 50);
  EXPECT_EQ(v.GetNbMaxGroup(), 50);
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
  EXPECT_NE(b.GetDataPtr(), a.GetDataPtr());
  EXPECT_EQ(b.GetVectType(), 3);
  EXPECT_EQ(b.GetUse(), 3);
  Raw(a)[7] = 1;
  Raw(b)[7] = 1;
  EXPECT_EQ(Raw(c)[7], 42);
  c = EVector();
  EXPECT_EQ(c.GetDataPtr(), nullptr);
  EXPECT_EQ(c.GetAllocatedSize(), 0);
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
