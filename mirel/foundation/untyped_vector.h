// EVector: the untyped vector of the older operations.
//
// A block of memory seen as groups of GetGroupLength() items. Items are
// unsigned, signed or float (GetDataType() 1, 2 or 4) and of the width that
// GetDataSize() codes: 2 for 8-bit items, 4 for 16-bit items, 8 for 32-bit
// items (float items are always 32-bit, code 8). GetNbGroup() groups are in
// use; the block holds GetAllocatedSize() bytes, room for GetNbMaxGroup()
// groups. A vector also carries a kind (GetVectType) and a use (GetUse).
//
// Kinds and what SetType(kind, groups, groupLength) makes of them:
//
//   kind  items               group length 0 means  use  meaning
//   1     32-bit signed       3                      0    contour points x, y, direction
//   2     32-bit unsigned     0 (an empty group)     0    grey profiles, histograms, projections
//   3     8-bit unsigned      256                    0    256-entry table
//   4     32-bit signed       3                      5    points: value or edge code, x, y
//   5     32-bit signed       3                      0    extremes: position, length, area
//   7     32-bit float        1                      0    energies
//
// For kinds 1, 4 and 5 a group count of 0 asks for a default room of
// 24576 bytes (2048 groups of three items) with no group in use; for the
// other kinds it asks for no room. Any other kind is refused with 1604.
//
// Room. SetType and SetStructure make sure the block holds `groups` groups
// and set the group count to `groups`. The block is replaced by a zeroed one
// when it is too small and kept, content and all, when it is large enough:
// the room never shrinks before the vector is destroyed. Reallocate grows the
// room to a byte count, keeping the content and zeroing the new bytes.
// SetNbGroup never reallocates: a count that needs more room than there is,
// or a negative one, sets 1602 and leaves the count alone.
//
// Errors. SetType, SetStructure and Reallocate return 0 on success and leave
// the error state alone, so a code armed by the caller keeps standing; on
// failure they set the code and return it: 1604 unknown kind, 1605 item size
// code, 1606 item kind, 1007 negative sizes, 1303 no memory (also for a
// room above 2^31 - 1 bytes). A failed call leaves the vector unchanged.
//
// The int of the constructor is the initial use.
#ifndef MIREL_FOUNDATION_UNTYPED_VECTOR_H_
#define MIREL_FOUNDATION_UNTYPED_VECTOR_H_

#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

// Item kinds of EVector.
enum E_VECTOR_DATA_TYPE : int {
  E_VECTOR_DATA_UNSIGNED = 1,
  E_VECTOR_DATA_SIGNED = 2,
  E_VECTOR_DATA_FLOAT = 4,
};

// Item width codes of EVector.
enum E_VECTOR_DATA_SIZE : int {
  E_VECTOR_DATA_8BIT = 2,
  E_VECTOR_DATA_16BIT = 4,
  E_VECTOR_DATA_32BIT = 8,
};

class MIREL_API EVector {
 public:
  explicit EVector(int use = 0);
  // Deep copies; a copy that cannot get its memory is left empty with 1303.
  EVector(const EVector& other);
  EVector& operator=(const EVector& other);
  ~EVector();

  // First byte of the data; null while the vector has no room.
  void* GetDataPtr() const { return data_; }
  int GetDataSize() const { return data_size_; }
  int GetDataType() const { return data_type_; }
  int GetGroupLength() const { return group_length_; }
  int GetNbGroup() const { return nb_group_; }
  void SetNbGroup(int groups);
  // Groups the room holds; the group count when groups are zero bytes wide.
  int GetNbMaxGroup() const;
  int GetAllocatedSize() const { return allocated_; }
  int GetVectType() const { return kind_; }
  int IsSameVectType(int kind) const { return kind_ == kind ? 1 : 0; }
  int GetUse() const { return use_; }
  void SetUse(int use) { use_ = use; }

  // Bytes of one item for the current width code (1, 2 or 4).
  int GetItemBytes() const { return ItemBytes(data_size_); }
  // Bytes of one group.
  int GetGroupBytes() const { return ItemBytes(data_size_) * group_length_; }

  short SetType(int kind, int groups, int groupLength);
  short SetStructure(int dataSize, int groups, int groupLength, int dataType);
  short Reallocate(int bytes);

 private:
  static int ItemBytes(int dataSize) { return dataSize == 2 ? 1 : dataSize == 4 ? 2 : dataSize == 8 ? 4 : 0; }
  // Makes room for `bytes` (keeping a block that is large enough); false
  // with 1303 set when memory runs out.
  bool EnsureRoom(long long bytes);
  short Shape(int kind, int dataSize, int dataType, int groups, int groupLength);

  unsigned char* data_ = nullptr;
  int allocated_ = 0;
  int data_size_ = 0;
  int data_type_ = 0;
  int group_length_ = 0;
  int nb_group_ = 0;
  int kind_ = 0;
  int use_ = 0;
};

#endif  // MIREL_FOUNDATION_UNTYPED_VECTOR_H_
