// Placeholder: filled in by the work that builds this family.
#ifndef MIREL_FILTER_CONVOLUTION_H_
#define MIREL_FILTER_CONVOLUTION_H_

#include "mirel/foundation/image.h"

#endif  // MIREL_FILTER_CONVOLUTION_H_
