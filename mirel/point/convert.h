// Placeholder: filled in by the work that builds this family.
#ifndef MIREL_POINT_CONVERT_H_
#define MIREL_POINT_CONVERT_H_

#include "mirel/foundation/image.h"

#endif  // MIREL_POINT_CONVERT_H_
