#include "mirel/foundation/untyped_vector.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kDefaultRoomBytes = 24576;

struct KindShape {
  int kind;
  int dataSize;
  int dataType;
  int defaultGroupLength;
  bool defaultRoom;  // a group count of 0 asks for kDefaultRoomBytes
  int use;
};

constexpr KindShape kKinds[] = {
    {1, E_VECTOR_DATA_32BIT, E_VECTOR_DATA_SIGNED, 3, true, 0},
    {2, E_VECTOR_DATA_32BIT, E_VECTOR_DATA_UNSIGNED, 0, false, 0},
    {3, E_VECTOR_DATA_8BIT, E_VECTOR_DATA_UNSIGNED, 256, false, 0},
    {4, E_VECTOR_DATA_32BIT, E_VECTOR_DATA_SIGNED, 3, true, 5},
    {5, E_VECTOR_DATA_32BIT, E_VECTOR_DATA_SIGNED, 3, true, 0},
    {7, E_VECTOR_DATA_32BIT, E_VECTOR_DATA_FLOAT, 1, false, 0},
};

}  // namespace

EVector::EVector(int use) : use_(use) {}

EVector::EVector(const EVector& other) { *this = other; }

EVector& EVector::operator=(const EVector& other) {
  if (this == &other) return *this;
  unsigned char* copy = nullptr;
  if (other.allocated_ > 0) {
    copy = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(other.allocated_)));
    if (copy == nullptr) {
      ESetError(E_ERROR_OUT_OF_MEMORY);
      std::free(data_);
      data_ = nullptr;
      allocated_ = data_size_ = data_type_ = group_length_ = nb_group_ = kind_ = 0;
      use_ = other.use_;
      return *this;
    }
    std::memcpy(copy, other.data_, static_cast<std::size_t>(other.allocated_));
  }
  std::free(data_);
  data_ = copy;
  allocated_ = other.allocated_;
  data_size_ = other.data_size_;
  data_type_ = other.data_type_;
  group_length_ = other.group_length_;
  nb_group_ = other.nb_group_;
  kind_ = other.kind_;
  use_ = other.use_;
  return *this;
}

EVector::~EVector() {
  std::free(data_);
  data_ = nullptr;
}

int EVector::GetNbMaxGroup() const {
  const int groupBytes = GetGroupBytes();
  return groupBytes > 0 ? allocated_ / groupBytes : nb_group_;
}

void EVector::SetNbGroup(int groups) {
  if (groups < 0 || static_cast<long long>(groups) * GetGroupBytes() > allocated_) {
    ESetError(E_ERROR_VECTOR_LENGTH);
    return;
  }
  nb_group_ = groups;
}

bool EVector::EnsureRoom(long long bytes) {
  if (bytes > INT_MAX) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return false;
  }
  if (bytes <= allocated_) return true;
  void* fresh = std::calloc(static_cast<std::size_t>(bytes), 1);
  if (fresh == nullptr) {
    ESetError(E_ERROR_OUT_OF_MEMORY);
    return false;
  }
  std::free(data_);
  data_ = static_cast<unsigned char*>(fresh);
  allocated_ = static_cast<int>(bytes);
  return true;
}

short EVector::Shape(int kind, int dataSize, int dataType, int groups, int groupLength) {
  const long long items = static_cast<long long>(groups) * groupLength;  // both are non-negative
  const long long bytes = items > INT_MAX ? static_cast<long long>(INT_MAX) + 1 : items * ItemBytes(dataSize);
  if (!EnsureRoom(bytes)) return static_cast<short>(EGetError());
  kind_ = kind;
  data_size_ = dataSize;
  data_type_ = dataType;
  group_length_ = groupLength;
  nb_group_ = groups;
  return 0;
}

short EVector::SetType(int kind, int groups, int groupLength) {
  const KindShape* shape = nullptr;
  for (const KindShape& k : kKinds)
    if (k.kind == kind) shape = &k;
  if (shape == nullptr) return static_cast<short>(ESetError(E_ERROR_VECTOR_TYPE));
  if (groups < 0 || groupLength < 0) return static_cast<short>(ESetError(E_ERROR_BAD_ARGUMENT));
  if (groupLength == 0) groupLength = shape->defaultGroupLength;
  if (groups == 0 && shape->defaultRoom) {
    const long long roomBytes = kDefaultRoomBytes;
    if (!EnsureRoom(roomBytes)) return static_cast<short>(EGetError());
    kind_ = kind;
    data_size_ = shape->dataSize;
    data_type_ = shape->dataType;
    group_length_ = groupLength;
    nb_group_ = 0;
  } else {
    const short result = Shape(kind, shape->dataSize, shape->dataType, groups, groupLength);
    if (result != 0) return result;
  }
  use_ = shape->use;
  return 0;
}

short EVector::SetStructure(int dataSize, int groups, int groupLength, int dataType) {
  if (ItemBytes(dataSize) == 0) return static_cast<short>(ESetError(E_ERROR_VECTOR_GROUP));
  const bool typeOk = dataType == E_VECTOR_DATA_UNSIGNED || dataType == E_VECTOR_DATA_SIGNED ||
                      (dataType == E_VECTOR_DATA_FLOAT && dataSize == E_VECTOR_DATA_32BIT);
  if (!typeOk) return static_cast<short>(ESetError(E_ERROR_VECTOR_DATA_TYPE));
  if (groups < 0 || groupLength < 0) return static_cast<short>(ESetError(E_ERROR_BAD_ARGUMENT));
  return Shape(kind_, dataSize, dataType, groups, groupLength);
}

short EVector::Reallocate(int bytes) {
  if (bytes < 0) return static_cast<short>(ESetError(E_ERROR_BAD_ARGUMENT));
  if (bytes <= allocated_) return 0;
  void* grown = std::realloc(data_, static_cast<std::size_t>(bytes));
  if (grown == nullptr) return static_cast<short>(ESetError(E_ERROR_OUT_OF_MEMORY));
  data_ = static_cast<unsigned char*>(grown);
  std::memset(data_ + allocated_, 0, static_cast<std::size_t>(bytes - allocated_));
  allocated_ = bytes;
  return 0;
}
