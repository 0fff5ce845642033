// Placeholder: filled in by the work that builds this family.
#ifndef MIREL_FOUNDATION_COLOR_H_
#define MIREL_FOUNDATION_COLOR_H_

#include "mirel/foundation/image.h"

#endif  // MIREL_FOUNDATION_COLOR_H_
