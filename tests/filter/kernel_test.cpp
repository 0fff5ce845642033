// EKernel: presets, storage rules, element access and every failure.
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "mirel/filter/alloc_internal.h"
#include "test_support.h"

namespace {

std::string Trace() { return EGetErrorTrace(); }

// The numbers of a kernel besides its coefficients.
std::string Numbers(const EKernel& k) {
  std::ostringstream s;
  s << k.SizeX << "x" << k.SizeY << " gain " << k.Gain << " offset " << k.Offset << " rect " << k.Rectifier
    << " outside " << k.OutsideValue << " room " << k.AllocatedSize << (k.Data ? "" : " no data");
  return s.str();
}

short Set5x5(EKernel& k, const float* v) {
  return k.SetKernelData(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11], v[12],
                         v[13], v[14], v[15], v[16], v[17], v[18], v[19], v[20], v[21], v[22], v[23], v[24]);
}
short Set7x7(EKernel& k, const float* v) {
  return k.SetKernelData(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11], v[12],
                         v[13], v[14], v[15], v[16], v[17], v[18], v[19], v[20], v[21], v[22], v[23], v[24],
                         v[25], v[26], v[27], v[28], v[29], v[30], v[31], v[32], v[33], v[34], v[35], v[36],
                         v[37], v[38], v[39], v[40], v[41], v[42], v[43], v[44], v[45], v[46], v[47], v[48]);
}

TEST(Kernel, DefaultHasNoData) {
  EKernel k;
  EXPECT_EQ(Numbers(k), "0x0 gain 1 offset 0 rect 2 outside 0 room 0 no data");
  float v = 7.0f;
  EXPECT_EQ(k.GetKernelData(0, 0, v), E_ERROR_KERNEL_NO_DATA);
  EXPECT_EQ(EGetError(), E_ERROR_KERNEL_NO_DATA);
  EXPECT_EQ(Trace(), "EKernel::GetKernelData");
  EXPECT_EQ(v, 7.0f);
  EXPECT_EQ(k.SetKernelData(0, 0, 1.0f), E_ERROR_KERNEL_NO_DATA);
  EXPECT_EQ(Trace(), "EKernel::SetKernelData");
  EXPECT_EQ(k.GetSizeX(), 0);
  EXPECT_EQ(EGetError(), E_OK);  // accessors clear the state
}

TEST(Kernel, PresetsReadBack) {
  const float expected[14][9] = {
      {0, 0, 0, -1, 1, -1, 1, 1, 1},     {0, 0, 0, -1, 0, -1, 1, 1, 1},
      {1, 1, 1, 1, 1, 1, 1, 1, 1},       {-1, 0, 1, -2, 0, 2, -1, 0, 1},
      {-1, -2, -1, 0, 0, 0, 1, 2, 1},    {-1, 0, 1, -1, 0, 1, -1, 0, 1},
      {-1, -1, -1, 0, 0, 0, 1, 1, 1},    {0, 1, 0, 1, -4, 1, 0, 1, 0},
      {1, 1, 1, 1, -8, 1, 1, 1, 1},      {1, 2, 1, 2, 4, 2, 1, 2, 1},
      {1, 1, 1, 1, 0, 1, 1, 1, 1},       {1, 1, 1, 1, 1, 1, 1, 1, 1},
      {0, -1, 0, -1, 5, -1, 0, -1, 0},   {-1, -1, -1, -1, 9, -1, -1, -1, -1}};
  for (int t = 1; t <= 14; ++t) {
    SCOPED_TRACE(t);
    EKernel k(static_cast<KERNEL_TYPE>(t));
    EXPECT_EQ(EGetError(), E_OK);
    EXPECT_EQ(Numbers(k), t <= 3 ? "3x3 gain 0 offset 0 rect 0 outside 0 room 9"  // the patterns
                                 : "3x3 gain 1 offset 0 rect 2 outside 0 room 9");
    for (int i = 0; i < 9; ++i) {
      float v = -99.0f;
      EXPECT_EQ(k.GetKernelData(i % 3, i / 3, v), 0);
      EXPECT_EQ(v, expected[t - 1][i]) << "element " << i;
    }
  }
}

TEST(Kernel, SetKernelRefusesUnknownTypesAndZeroesTheNumbers) {
  for (int bad : {0, 15, -3}) {
    EKernel k(3, 3, 5.0f, 7, 3, 9);
    for (int i = 0; i < 9; ++i) k.Data[i] = static_cast<float>(i);
    EXPECT_EQ(k.SetKernel(static_cast<KERNEL_TYPE>(bad)), E_ERROR_INDEX_OUT_OF_RANGE);
    EXPECT_EQ(EGetError(), E_ERROR_INDEX_OUT_OF_RANGE);
    EXPECT_EQ(Trace(), "EKernel::SetKernel");
    EXPECT_EQ(Numbers(k), "3x3 gain 0 offset 0 rect 0 outside 0 room 9");
    for (int i = 0; i < 9; ++i) EXPECT_EQ(k.Data[i], static_cast<float>(i));
  }
}

TEST(Kernel, StorageGrowsButNeverShrinks) {
  EKernel k;
  EXPECT_EQ(k.SetAllocatedSize(49), 0);
  float* block = k.GetDataPtr();
  EXPECT_EQ(k.SetKernel(KERNEL_GAUSSIAN), 0);
  EXPECT_EQ(k.SetAllocatedSize(10), 0);
  EXPECT_EQ(Numbers(k), "3x3 gain 1 offset 0 rect 2 outside 0 room 49");
  EXPECT_EQ(k.GetDataPtr(), block);

  // 7x7 data in a 9-float block reallocates and keeps the other numbers;
  // 5x5 and 3x3 data afterwards keep 49.
  EKernel s(3, 3, 3.0f, 4, 1, 5);
  float v[49];
  for (int i = 0; i < 49; ++i) v[i] = static_cast<float>(i) * 0.5f;
  EXPECT_EQ(Set7x7(s, v), 0);
  EXPECT_EQ(Numbers(s), "7x7 gain 3 offset 4 rect 1 outside 5 room 49");
  EXPECT_EQ(std::memcmp(s.GetDataPtr(), v, sizeof v), 0);
  EXPECT_EQ(Set5x5(s, v), 0);
  EXPECT_EQ(Numbers(s), "5x5 gain 3 offset 4 rect 1 outside 5 room 49");
  EXPECT_EQ(s.SetKernelData(1, 2, 3, 4, 5, 6, 7, 8, 9.0f), 0);
  EXPECT_EQ(Numbers(s), "3x3 gain 3 offset 4 rect 1 outside 5 room 49");
  EXPECT_EQ(s.GetDataPtr()[8], 9.0f);
}

TEST(Kernel, SizeChangesReinterpretOrReallocate) {
  EKernel small(KERNEL_SOBEL_Y), roomy, neg(KERNEL_UNIFORM);
  EXPECT_EQ(small.SetSizeX(5), 0);
  EXPECT_EQ(Numbers(small), "5x3 gain 1 offset 0 rect 2 outside 0 room 15");
  roomy.SetAllocatedSize(25);
  roomy.SetKernel(KERNEL_SOBEL_X);
  float* block = roomy.GetDataPtr();
  EXPECT_EQ(roomy.SetSizeX(5), 0);
  EXPECT_EQ(roomy.GetDataPtr(), block);
  float v = 0;
  EXPECT_EQ(roomy.GetKernelData(0, 1, v), 0);
  EXPECT_EQ(v, 2.0f);  // index 5: the last element of the middle row of Sobel X
  // A negative product never exceeds the capacity; a negative size at
  // construction is an allocation failure.
  EXPECT_EQ(neg.SetSizeX(-1), 0);
  EXPECT_EQ(neg.SetSizeY(4), 0);
  EXPECT_EQ(Numbers(neg), "-1x4 gain 1 offset 0 rect 2 outside 0 room 9");
  EKernel bad(-3, 4, 1.0f, 0, 2, 0);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(Numbers(bad), "-3x4 gain 1 offset 0 rect 2 outside 0 room 0 no data");
}

TEST(Kernel, ElementRangeChecksInOrder) {
  EKernel k(3, 2, 1.0f, 0, 2, 0);
  EXPECT_EQ(k.SetKernelData(2, 1, 4.0f), 0);
  float v = 0;
  EXPECT_EQ(k.GetKernelData(2, 1, v), 0);
  EXPECT_EQ(v, 4.0f);
  EXPECT_EQ(k.Data[5], 4.0f);
  v = -1.0f;
  EXPECT_EQ(k.GetKernelData(3, 5, v), E_ERROR_INDEX_OUT_OF_RANGE);  // x first
  EXPECT_EQ(k.GetKernelData(-1, 0, v), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(k.GetKernelData(0, 2, v), E_ERROR_BAD_RANGE);
  EXPECT_EQ(Trace(), "EKernel::GetKernelData");
  EXPECT_EQ(k.GetKernelData(0, -1, v), E_ERROR_BAD_RANGE);
  EXPECT_EQ(v, -1.0f);
  EXPECT_EQ(k.SetKernelData(0, 2, 8.0f), E_ERROR_BAD_RANGE);
  EXPECT_EQ(Trace(), "EKernel::SetKernelData");
  EXPECT_EQ(k.SetKernelData(5, 0, 8.0f), E_ERROR_INDEX_OUT_OF_RANGE);
  EXPECT_EQ(k.Data[5], 4.0f);
}

TEST(Kernel, CopiesOwnTheirCoefficients) {
  EKernel a(KERNEL_LAPLACIAN_8);
  a.SetOffset(3);
  EKernel b(a), c;
  c = a;
  EXPECT_NE(b.Data, a.Data);
  a.Data[4] = 100.0f;
  EXPECT_EQ(b.Data[4], -8.0f);
  EXPECT_EQ(c.Data[4], -8.0f);
  EXPECT_EQ(Numbers(c), "3x3 gain 1 offset 3 rect 2 outside 0 room 9");
}

TEST(Kernel, EveryAllocationFailureReportsWithItsLabel) {
  // Runs `op` with the next allocation failing; it must report, with `label`.
  auto fails = [](const std::function<short()>& op, const char* label) {
    mirel::testing::FailFilterAllocations(1);
    EXPECT_EQ(op(), E_ERROR_OUT_OF_MEMORY) << label;
    mirel::testing::FailFilterAllocations(0);
    EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(Trace(), label);
  };
  std::unique_ptr<EKernel> sized;
  fails([&] { sized.reset(new EKernel(4, 5, 2.0f, 6, 3, 7)); return E_ERROR_OUT_OF_MEMORY; }, "EKernel::EKernel");
  EXPECT_EQ(Numbers(*sized), "4x5 gain 2 offset 6 rect 3 outside 7 room 0 no data");
  EKernel k, g(KERNEL_GAUSSIAN), copy(KERNEL_UNIFORM), sobel(KERNEL_SOBEL_X);
  fails([&] { return k.SetKernel(KERNEL_SOBEL_X); }, "EKernel::SetKernel");
  EXPECT_EQ(Numbers(k), "3x3 gain 1 offset 0 rect 2 outside 0 room 0 no data");
  fails([&] { return k.SetKernelData(1, 2, 3, 4, 5, 6, 7, 8, 9.0f); }, "EKernel::SetKernelData 3x3");
  const float z[49] = {};
  fails([&] { return Set5x5(k, z); }, "EKernel::SetKernelData 5x5");
  EXPECT_EQ(k.SizeX, 5);
  fails([&] { return Set7x7(k, z); }, "EKernel::SetKernelData 5x5");  // the 7x7 form shares the 5x5 label
  fails([&] { return k.SetAllocatedSize(12); }, "EKernel::SetAllocatedSize");
  EXPECT_EQ(Numbers(k), "7x7 gain 1 offset 0 rect 2 outside 0 room 0 no data");
  fails([&] { return g.SetSizeX(6); }, "EKernel::SetAllocatedSize <- EKernel::SetSizeX");
  fails([&] { return g.SetSizeY(6); }, "EKernel::SetAllocatedSize <- EKernel::SetSizeY");
  EXPECT_EQ(g.SizeX * 10 + g.SizeY, 33);  // the sizes stay
  mirel::testing::FailFilterAllocations(1);
  copy = sobel;
  mirel::testing::FailFilterAllocations(0);
  EXPECT_EQ(EGetError(), E_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(copy.Data[4], 1.0f);  // kept as it was
}

}  // namespace
