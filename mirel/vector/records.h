// Placeholder: filled in by the work that builds this family.
#ifndef MIREL_VECTOR_RECORDS_H_
#define MIREL_VECTOR_RECORDS_H_

#include "mirel/foundation/image.h"

#endif  // MIREL_VECTOR_RECORDS_H_
