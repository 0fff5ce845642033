#include <cstdint>
#include <cstring>
#include <vector>

#include "test_support.h"

namespace {

using Items = std::vector<long long>;

int Bytes(int dataSize) { return dataSize == 2 ? 1 : dataSize == 4 ? 2 : 4; }

// An EVector of `groups` groups of `length` items of one width and type.
void Fill(EVector& v, int dataSize, int dataType, int groups, int length, const Items& items) {
  ASSERT_EQ(v.SetStructure(dataSize, groups, length, dataType), 0);
  for (size_t i = 0; i < items.size(); ++i)
    std::memcpy(static_cast<unsigned char*>(v.GetDataPtr()) + i * Bytes(dataSize), &items[i], Bytes(dataSize));
}
// n items, read with the vector's width and sign.
Items Read(const EVector& v, int n) {
  Items out;
  const int b = Bytes(v.GetDataSize());
  for (int i = 0; i < n; ++i) {
    long long x = 0;
    std::memcpy(&x, static_cast<const unsigned char*>(v.GetDataPtr()) + i * b, b);
    if (v.GetDataType() == E_VECTOR_DATA_SIGNED && b < 8 && (x >> (8 * b - 1)) != 0) x -= 1LL << (8 * b);
    out.push_back(x);
  }
  return out;
}
Items Groups(const EVector& v) { return Read(v, v.GetNbGroup() * v.GetGroupLength()); }

TEST(UntypedExtremes, HysteresisAndCrossedLevels) {
  EVector src, dst;
  Fill(src, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_SIGNED, 1, 4, {0, 50, 50, 0});
  EXPECT_EQ(ImgGetVectExtremes(&src, &dst, 40, 10), 0);
  EXPECT_EQ(dst.GetVectType(), 5);
  EXPECT_EQ(dst.GetUse(), 6);
  // {position, length, area}: the last valley closes one past the end.
  EXPECT_EQ(Groups(dst), (Items{0, 1, -40, 1, 2, 80, 3, 1, -40}));
  // high below low: an item between them opens nothing.
  Fill(src, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_SIGNED, 1, 4, {15, 30, 5, 15});
  EXPECT_EQ(ImgGetVectExtremes(&src, &dst, 10, 20), 0);
  EXPECT_EQ(Groups(dst), (Items{1, 1, 10, 2, 1, -5}));
  // Past the room, writing goes on at the old room in groups times 4 bytes.
  EVector small;
  ASSERT_EQ(small.SetType(5, 2, 3), 0);
  Fill(src, E_VECTOR_DATA_16BIT, E_VECTOR_DATA_UNSIGNED, 1, 4, {0, 50, 50, 0});
  EXPECT_EQ(ImgGetVectExtremes(&src, &small, 40u, 10u), 0);
  EXPECT_EQ(Groups(small), (Items{0, 1, 3, 1, -40, 80, 0, 0, 0}));

  EVector empty;
  EXPECT_EQ(ImgGetVectExtremes(&empty, &dst, 1, 0), E_ERROR_VECTOR_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgGetVectExtremes");
  EXPECT_EQ(ImgGetVectExtremes(&src, &dst, 1, 0), E_ERROR_VECTOR_DATA_TYPE);  // unsigned items, int levels
  EXPECT_EQ(ImgGetVectExtremes(nullptr, &dst, 1u, 0u), E_ERROR_VOID_VECTOR);
}

TEST(UntypedTransitions, PairsAcrossTheLevelAndTheirRoom) {
  EVector src, dst;
  Fill(src, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_SIGNED, 1, 5, {0, 5, 10, 3, 10});
  // A destination without room takes (5 / 2) / 8 = 0 groups: no data.
  EXPECT_EQ(ImgGetVectTransition(&src, &dst, 5), E_ERROR_VOID_VECTOR);
  ASSERT_EQ(dst.SetStructure(E_VECTOR_DATA_32BIT, 4, 2, E_VECTOR_DATA_SIGNED), 0);
  EXPECT_EQ(ImgGetVectTransition(&src, &dst, 5), 0);
  EXPECT_EQ(dst.GetUse(), 7);
  EXPECT_EQ(Groups(dst), (Items{1, 5, 2, -7, 3, 7}));
  EVector two;
  ASSERT_EQ(two.SetStructure(E_VECTOR_DATA_32BIT, 2, 2, E_VECTOR_DATA_SIGNED), 0);
  EXPECT_EQ(ImgGetVectTransition(&src, &two, 5), E_ERROR_VECTOR_NO_TRANSITION);
  EXPECT_EQ(two.GetNbGroup(), 2);
  EXPECT_EQ(ImgGetVectTransition(&src, &dst, 5u), E_ERROR_VECTOR_DATA_TYPE);
  Fill(src, E_VECTOR_DATA_32BIT, E_VECTOR_DATA_UNSIGNED, 1, 1, {7});
  EXPECT_EQ(ImgGetVectTransition(&src, &dst, 5u), 0);
  EXPECT_EQ(dst.GetNbGroup(), 0);
}

// One item through ImgVect1c2: {code, result}.
std::pair<int, long long> One(ARITH_LOGIC_OPERATIONS op, int size, int type, long long a, int constant) {
  EVector src, dst;
  Fill(src, size, type, 1, 1, {a});
  const int code = ImgVect1c2(op, &src, constant, &dst, 0, -1);
  return {code, Read(dst, 1)[0]};
}

TEST(UntypedArithmetic, WorkedValuesOfEachWorker) {
  constexpr int U = E_VECTOR_DATA_UNSIGNED, S = E_VECTOR_DATA_SIGNED;
  constexpr int B8 = E_VECTOR_DATA_8BIT, B16 = E_VECTOR_DATA_16BIT, B32 = E_VECTOR_DATA_32BIT;
  const struct {
    int op, size, type;
    long long a;
    int b;
    long long want;
  } cases[] = {
      {ALO_MULTIPLY, B8, U, 200, 200, 64},        // 40000 as a signed 16-bit number is below 255
      {ALO_MULTIPLY, B8, U, 20, 20, 255},         // 400 saturates
      {ALO_SHIFT_LEFT, B8, U, 200, 8, 0},         // 51200 keeps its low byte
      {ALO_SHIFT_LEFT, B8, U, 1, 8, 255},
      {ALO_SHIFT_LEFT, B8, U, 3, 9, 255},         // past the width: non-zero to the maximum
      {ALO_SHIFT_LEFT, B8, U, 0, 9, 0},
      {ALO_SHIFT_RIGHT, B8, U, 255, 9, 0},
      {ALO_ADD, B8, U, 200, 100, 255},
      {ALO_ADD, B8, U, 200, 300, 244},            // the constant is cast to the item: 44
      {ALO_SUBTRACT, B8, U, 10, 20, 0},
      {ALO_ADD, B8, S, 100, 100, 127},
      {ALO_ADD, B8, S, -100, -100, 56},           // sums saturate at the top only
      {ALO_SUBTRACT, B8, S, -100, 100, -128},
      {ALO_SUBTRACT, B8, S, 100, -100, -56},      // differences at the bottom only
      {ALO_MULTIPLY, B16, S, 300, 300, 32767},
      {ALO_ADD, B16, U, 65000, 1000, 65535},
      {ALO_SHIFT_RIGHT, B16, S, -5, 1, -3},
      {ALO_ADD, B32, U, 4294967295LL, 2, 1},      // 32-bit items wrap
      {ALO_MULTIPLY, B32, S, 65536, 65536, 0},
      {ALO_SHIFT_LEFT, B32, U, 7, 32, 0},
      {ALO_SHIFT_LEFT, B32, U, 7, 33, 4294967295LL},
      {ALO_SHIFT_RIGHT, B32, S, -5, 32, -1},
      {ALO_AVERAGE, B8, U, 255, 255, 255},
      {ALO_AVERAGE, B32, U, 4294967295LL, 3, 1},  // on the wrapped sum
      {ALO_DIVIDE, B16, S, -7, 2, -3},
      {ALO_MODULO, B32, S, -7, 2, -1},
      {ALO_INVERT, B8, U, 0x0F, 0, 0xF0},
      {ALO_BIT_XOR, B16, U, 0xFF00, 0x0FF0, 0xF0F0},
      {ALO_MIN, B8, S, -3, 2, -3},
      {ALO_MAX, B32, S, -3, 2, 2},
      {ALO_SET_WHERE_NONZERO, B16, U, 9, 7, 7},
      {35, B8, S, 9, -4, -4},
  };
  for (const auto& c : cases) {
    const auto got = One(static_cast<ARITH_LOGIC_OPERATIONS>(c.op), c.size, c.type, c.a, c.b);
    EXPECT_EQ(got, std::make_pair(0, c.want)) << "op " << c.op << " size " << c.size << " type " << c.type;
  }
  // Division by 0: all ones and 1411; an operation the workers lack: 1003,
  // except on unsigned 8-bit items, which let it pass.
  EXPECT_EQ(One(ALO_DIVIDE, B8, U, 9, 0), std::make_pair(1411, 255LL));
  EXPECT_EQ(One(ALO_MODULO, B32, S, 9, 0), std::make_pair(1411, -1LL));
  EXPECT_STREQ(EGetErrorTrace(), "ImgVect1c2");
  EXPECT_EQ(One(ALO_SCALED_MULTIPLY, B8, U, 9, 1).first, 0);
  EXPECT_EQ(One(ALO_SCALED_MULTIPLY, B8, S, 9, 1).first, E_ERROR_BAD_OPERATION);
}

TEST(UntypedArithmetic, RangeAndCodesInTheirArmedOrder) {
  EVector src, dst;
  Fill(src, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_UNSIGNED, 3, 2, {1, 2, 3, 4, 5, 6});
  // first and last give only the number of items, taken from the first.
  EXPECT_EQ(ImgVect1c2(ALO_ADD, &src, 10, &dst, 1, 2), 0);
  EXPECT_EQ(Groups(dst), (Items{11, 12, 0, 0, 0, 0}));
  EXPECT_EQ(ImgVect1c2(ALO_ADD, &src, 10, &dst, 3, -1), E_ERROR_VECTOR_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "CheckGroups <- ImgVect1c2");
  EXPECT_EQ(ImgVect1c2(ALO_ADD, &src, 10, &dst, 2, 1), E_ERROR_BAD_FIRST_INDEX);
  EXPECT_STREQ(EGetErrorTrace(), "CheckGroups <- ImgVect1c2");
  EVector floats;
  ASSERT_EQ(floats.SetType(7, 2, 1), 0);
  EXPECT_EQ(ImgVect1c2(ALO_ADD, &floats, 1, &dst, 0, -1), E_ERROR_VECTOR_DATA_TYPE);
  EXPECT_EQ(ImgVect1c2(ALO_ADD, &floats, 1.5, &dst), E_ERROR_VECTOR_GROUP);
  EXPECT_EQ(ImgVect1c2(ALO_ADD, &src, 1.5, &dst), E_ERROR_VECTOR_DATA_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgVect1c2");
}

TEST(UntypedShift, GroupRangesOfTheTable) {
  EVector v;
  const auto reset = [&] { Fill(v, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_UNSIGNED, 5, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}); };
  reset();
  EXPECT_EQ(ImgVectDataShift(&v, 33, 0, 0), 0);  // 33 is 1, on every group
  EXPECT_EQ(Groups(v), (Items{0, 1, 1, 2, 2, 3, 3, 4, 4, 5}));
  reset();
  EXPECT_EQ(ImgVectDataShift(&v, -1, 0, 2), 0);  // the first 2 groups
  EXPECT_EQ(Groups(v), (Items{2, 4, 6, 8, 5, 6, 7, 8, 9, 10}));
  reset();
  EXPECT_EQ(ImgVectDataShift(&v, -1, 3, 1), 0);  // both given, first above last: the first `last` groups
  EXPECT_EQ(Read(v, 4), (Items{2, 4, 3, 4}));
  EXPECT_EQ(ImgVectDataShift(&v, 1, 1, 3), E_ERROR_VECTOR_TYPE);
  EXPECT_STREQ(EGetErrorTrace(), "ImgVectDataShift");
  // From group `first` on, as many groups as are in use: past them, within
  // the room, and refused beyond it.
  ASSERT_EQ(v.SetStructure(E_VECTOR_DATA_16BIT, 8, 2, E_VECTOR_DATA_SIGNED), 0);
  for (int i = 0; i < 16; ++i) static_cast<std::int16_t*>(v.GetDataPtr())[i] = -8;
  v.SetNbGroup(4);
  EXPECT_EQ(ImgVectDataShift(&v, 2, 3, 0), 0);
  EXPECT_EQ(Read(v, 16), (Items{-8, -8, -8, -8, -8, -8, -2, -2, -2, -2, -2, -2, -2, -2, -8, -8}));
  EXPECT_EQ(ImgVectDataShift(&v, 2, 5, 0), E_ERROR_VECTOR_TYPE);
}

TEST(UntypedConvolution, ThreeTapsWithTheOutsideValueOnTheRight) {
  EVector src, dst;
  Fill(src, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_UNSIGNED, 2, 3, {10, 20, 30, 40, 50, 60});
  EKernel k(3, 1, 4.0f, 0, 0, 100);  // gain 4 over a sum of 4: the taps as they are
  k.Data[0] = 1, k.Data[1] = 2, k.Data[2] = 1;
  EXPECT_EQ(ImgConvolVect(&src, &dst, &k, 0, -1), 0);
  // Inner items take the outside value on their right; the last item of a
  // group reads the next group's first (past the data: the outside value).
  EXPECT_EQ(Groups(dst), (Items{140, 150, 120, 230, 240, 255}));
  EXPECT_EQ(ImgConvolVect(&src, &dst, &k, 1, 1), 0);
  EXPECT_EQ(Groups(dst), (Items{230, 240, 255}));

  Fill(src, E_VECTOR_DATA_16BIT, E_VECTOR_DATA_SIGNED, 1, 3, {5, 9, 2});
  EKernel d(3, 1, 0.0f, 1, 3, 0);  // taps summing to 0 and gain 0: raw; rectified by the absolute value
  d.Data[0] = -1, d.Data[1] = 0, d.Data[2] = 1;
  EXPECT_EQ(ImgConvolVect(&src, &dst, &d, 0, 0), 0);
  EXPECT_EQ(Groups(dst), (Items{10, 6, 10}));

  EXPECT_EQ(ImgConvolVect(&src, &dst, &d, 1, -1), E_ERROR_VECTOR_CONVOLUTION);
  EXPECT_STREQ(EGetErrorTrace(), "ImgConvolVect");
  // Groups of no items pass the room check for any `last`; a range of more
  // groups than a count can hold is refused, and dst keeps its groups.
  Fill(src, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_UNSIGNED, 1, 0, {});
  EXPECT_EQ(ImgConvolVect(&src, &dst, &d, 0, 2147483647), E_ERROR_VECTOR_CONVOLUTION);
  EXPECT_EQ(Groups(dst), (Items{10, 6, 10}));
  EKernel big(5, 5, 1.0f, 0, 0, 0);
  EXPECT_EQ(ImgConvolVect(&src, &dst, &big, 0, 0), E_ERROR_KERNEL_SIZE);
  EKernel none;
  none.SizeX = 3;
  EXPECT_EQ(ImgConvolVect(&src, &dst, &none, 0, 0), E_ERROR_KERNEL_VOID);
  EXPECT_EQ(ImgConvolVect(&src, &dst, nullptr, 0, 0), E_ERROR_KERNEL_VOID);
  EKernel one(1, 1, 1.0f, 0, 0, 0);
  EXPECT_EQ(ImgConvolVect(&src, &dst, &one, 0, 0), E_ERROR_KERNEL_TYPE);
}

TEST(UntypedLines, SamplesWritesAndTransitionScan) {
  EImage<EBW8> image(8, 5);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 8; ++x) image.SetPixel(EBW8(static_cast<unsigned char>(10 * y + x)), x, y);
  EROI<EBW8> roi(&image, 3, 1, 5, 3);  // its right edge is the image's
  EVector v;
  EXPECT_EQ(ImgLineSegToVect(&roi, &v, 2, 1, 2, 1), 0);  // one point, one group
  EXPECT_EQ(Groups(v), (Items{25, 2, 1}));
  // The coordinates may reach the width and height: one past the ROI is
  // read where the image has it, and as 0 past the image.
  EXPECT_EQ(ImgLineSegToVect(&roi, &v, 2, 3, 5, 3), 0);
  EXPECT_EQ(Groups(v), (Items{45, 2, 3, 46, 3, 3, 47, 4, 3, 0, 5, 3}));
  EXPECT_EQ(ImgLineSegToVect(&roi, &v, 6, 0, 0, 0), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_EQ(ImgLineSegToVect(&roi, &v, 0, 0, 0, -1), E_ERROR_BAD_ARGUMENT_4);
  EXPECT_STREQ(EGetErrorTrace(), "ImgLineSegToVect");

  // Written back, a value below 255 becomes 255 and a larger one keeps its
  // low byte.
  EXPECT_EQ(ImgLineSegToVect(&roi, &v, 0, 0, 2, 2), 0);
  std::int32_t* g = static_cast<std::int32_t*>(v.GetDataPtr());
  g[0] = 10, g[3] = 300, g[6] = 255;
  EXPECT_EQ(ImgVectToLineSeg(&v, &roi), 0);
  EXPECT_EQ(roi.GetPixel(0, 0), 255);
  EXPECT_EQ(roi.GetPixel(1, 1), 44);
  EXPECT_EQ(roi.GetPixel(2, 2), 255);
  g[0] = 1;
  EXPECT_EQ(ImgVectToLineSeg(&v, 2, 0, 0, 2, &roi), 0);  // group k to pixel k of this line
  EXPECT_EQ(roi.GetPixel(2, 0), 255);
  EXPECT_EQ(roi.GetPixel(1, 1), 44);
  EXPECT_EQ(ImgVectToLineSeg(&v, 6, 0, 0, 2, &roi), E_ERROR_BAD_RANGE);
  EXPECT_EQ(ImgVectToLineSeg(&v, 0, 0, 0, 4, &roi), E_ERROR_BAD_ARGUMENT_3);  // y1
  EXPECT_EQ(ImgVectToLineSeg(&v, 0, 0, 4, 0, &roi), E_ERROR_VECTOR_LENGTH);  // 5 pixels, 3 groups
  g[1] = 6;
  EXPECT_EQ(ImgVectToLineSeg(&v, &roi), E_ERROR_BAD_ARGUMENT);
  v.SetUse(0);
  EXPECT_EQ(ImgVectToLineSeg(&v, &roi), E_ERROR_VECTOR_LENGTH);
  EXPECT_STREQ(EGetErrorTrace(), "ImgVectToLineSeg");

  // The scan: falling tested first, each hit {x, y, edge}.
  const unsigned char row[8] = {10, 200, 200, 100, 10, 100, 200, 9};
  for (int x = 0; x < 8; ++x) image.SetPixel(EBW8(row[x]), x, 4);
  EXPECT_EQ(ImgTransitionScan(TRANS_SCAN_BOTH, &image, 0, 4, 7, 4, 100, 0, &v), 0);
  EXPECT_EQ(Groups(v), (Items{1, 4, 1, 3, 4, 2, 5, 4, 1, 7, 4, 2}));
  EXPECT_EQ(ImgTransitionScan(TRANS_SCAN_RISING, &image, 0, 4, 7, 4, 100, 0, &v), 0);
  EXPECT_EQ(Groups(v), (Items{1, 4, 1, 5, 4, 1}));
  EXPECT_EQ(ImgTransitionScan(TRANS_SCAN_FALLING, &image, 7, 4, 0, 4, 100, 1, &v), 0);  // stops at the first
  EXPECT_EQ(Groups(v), (Items{5, 4, 2}));
  EXPECT_EQ(ImgTransitionScan(static_cast<TRANS_SCAN_EDGE>(4), &image, 0, 4, 7, 4, 100, 0, &v),
            E_ERROR_BAD_OPERATION);
  EXPECT_EQ(ImgTransitionScan(TRANS_SCAN_BOTH, &image, 0, 6, 7, 4, 100, 0, &v), E_ERROR_BAD_ARGUMENT_1);
  EXPECT_STREQ(EGetErrorTrace(), "ImgTransitionScan");
}

}  // namespace
