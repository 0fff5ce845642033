// Placeholder: filled in by the work that builds this family.
#ifndef MIREL_FOUNDATION_UNTYPED_VECTOR_H_
#define MIREL_FOUNDATION_UNTYPED_VECTOR_H_

#include "mirel/foundation/image.h"

#endif  // MIREL_FOUNDATION_UNTYPED_VECTOR_H_
