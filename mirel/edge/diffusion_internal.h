// The conduction factors of the diffusion and its threshold choice.
#ifndef MIREL_EDGE_DIFFUSION_INTERNAL_H_
#define MIREL_EDGE_DIFFUSION_INTERNAL_H_

#include "mirel/foundation/export.h"

namespace mirel {
namespace edge {

// The factor of conduction function `number` for the contrast g and the
// threshold k, K2 = k * k:
//   1  1 / (g * g / K2 + 1), the quotient an integer division
//   2  exp(-(g * g) / K2)                      (the one a pass uses)
//   3  0 when |g| > k, else 0.5 * (1 - g * g / K2)^2
//   4  1 / k when |g| <= k, else sign(g) / g
// With k = 0 every function gives 1 for g = 0 and 0 otherwise; an unknown
// number gives 0.
MIREL_API float ConductionFactor(int number, int g, int k);

// The threshold K of a pass from the 256-bin histogram of the contrasts
// (see diffusion.h), as the byte it is used as.
MIREL_API unsigned char DiffusionThreshold(const unsigned int* histogram);

}  // namespace edge
}  // namespace mirel

#endif  // MIREL_EDGE_DIFFUSION_INTERNAL_H_
