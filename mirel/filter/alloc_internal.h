// Allocation of the filter family's coefficient tables and row buffers.
//
// Every block the filters allocate goes through these helpers, which return
// null on exhausted memory instead of throwing. Tests can make the next
// allocations fail to reach the out-of-memory branches.
#ifndef MIREL_FILTER_ALLOC_INTERNAL_H_
#define MIREL_FILTER_ALLOC_INTERNAL_H_

#include <cstddef>

#include "mirel/foundation/export.h"

namespace mirel {
namespace filter {

// `count` elements of T, uninitialised; null on failure. Free with Free().
template <class T>
T* Allocate(std::size_t count);
template <class T>
void Free(T* block);

}  // namespace filter

namespace testing {
// Makes the next `count` allocations of the filter family on this thread
// fail (0 restores normal allocation).
MIREL_API void FailFilterAllocations(int count);
}  // namespace testing
}  // namespace mirel

#endif  // MIREL_FILTER_ALLOC_INTERNAL_H_
