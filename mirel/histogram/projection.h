// Placeholder: filled in by the work that builds this family.
#ifndef MIREL_HISTOGRAM_PROJECTION_H_
#define MIREL_HISTOGRAM_PROJECTION_H_

#include "mirel/foundation/image.h"

#endif  // MIREL_HISTOGRAM_PROJECTION_H_
