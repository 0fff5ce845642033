// Anisotropic diffusion of 8-bit images in the Perona-Malik manner: in each
// pass a pixel moves towards its four neighbours by amounts that fall with
// the contrast measured on a smoothed copy.
//
// One pass from P to Q: S is P under ImgConvolGaussian with half-widths 3.
// Differences to the right and below, hp = P(x, y) - P(x + 1, y) and
// vp = P(x, y) - P(x, y + 1), and hs, vs from S, are kept in eight signed
// bits (a contrast above 127 wraps to a negative one), and are 0 across the
// ROI's last column and row and at positions before the first. K comes
// from the 256-bin histogram of the 2 W H values |hs| and |vs|: with B the
// bin where counts summed down from 255 first reach 2 % of them, and K the
// bin where counts summed up from 0 first reach 90 %, less one (as an
// unsigned number, so bin 0 gives K = 255 in the end), K is raised to
// trunc(0.2 B) when below it and then taken as a byte. With the contrasts
// n = vs(x, y - 1), s = -vs(x, y), w = hs(x - 1, y), e = -hs(x, y) and
// c(g) = exp(-g^2 / K^2) (1 for g = 0 and 0 otherwise when K is 0), the new
// pixel is P + 0.1 * (c(n) vp(x, y - 1) - c(s) vp(x, y) + c(w) hp(x - 1, y)
// - c(e) hp(x, y)) in single precision, truncated, its low eight bits
// stored: there is no clamp.
//
// ImgAnisotropicDiffusion runs `iterations` passes, the first from src, the
// result reaching dst at the end (dst may be src). `keep` has no effect.
// Errors, traced "Failed anisotropic diffusion !": a null or void image
// (1400), sizes that differ (1403), iterations 0 (1007: it would stand for
// 4294967295 passes), working images that cannot be had (1303, or the
// smoothing's own code under its label). A failure writes nothing to dst.
#ifndef MIREL_EDGE_DIFFUSION_H_
#define MIREL_EDGE_DIFFUSION_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

MIREL_API void ImgAnisotropicDiffusion(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int iterations,
                                       unsigned char keep);

#endif  // MIREL_EDGE_DIFFUSION_H_
