// Filters on 24-bit colour regions of interest. Each has no arithmetic of
// its own: it takes the image apart into its three components, runs the
// 8-bit filter of the same name on each and puts the results back, so the
// channels do not interact (a colour Sobel is the magnitude per channel).
// Labels are the name followed by " ( C24)", as "ImgConvolSobelX ( C24)".
//
// The filters that run in place on 8 bits (the preset 3x3 filters and
// ImgConvolGaussian) filter each component on one plane in place: a null
// dst changes src, and the result always has the replicated frame.
// ImgConvolKernel, ImgConvolSymmetricKernel and ImgConvolRoberts go from an
// input plane to an output plane and refuse a null dst or dst == src with
// 1413; ImgConvolUniform does the same but accepts them and then writes src.
//
// Errors: void src (1400); a separate dst that is void (1400) or of another
// size (1403); then whatever a plane or the 8-bit filter reports, traced
// with the 8-bit filter's label first. After such an error the components
// already done keep their new values.
#ifndef MIREL_FILTER_COLOR_FILTERS_H_
#define MIREL_FILTER_COLOR_FILTERS_H_

#include "mirel/filter/kernel.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"

MIREL_API void ImgConvolHighpass1(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolHighpass2(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLowpass1(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLowpass2(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLowpass3(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolSobelX(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolSobelY(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolSobel(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolPrewittX(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolPrewittY(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolPrewitt(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGradientX(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGradientY(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGradient(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacianX(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacianY(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacian4(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacian8(EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGaussian(EROI<EC24>* src, EROI<EC24>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolUniform(EROI<EC24>* src, EROI<EC24>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolKernel(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel);
MIREL_API void ImgConvolSymmetricKernel(const EROI<EC24>* src, EROI<EC24>* dst, const EKernel* kernel);
MIREL_API void ImgConvolRoberts(const EROI<EC24>* src, EROI<EC24>* dst);

// For a source held const: the same filters into a destination that must be
// given. A const source is never filtered in place: without a destination
// the call is refused as a missing source is (1400 under the filter's label)
// and nothing is written. A destination on the source's own pixels is still
// filtered in place.
MIREL_API void ImgConvolHighpass1(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolHighpass2(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLowpass1(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLowpass2(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLowpass3(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolSobelX(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolSobelY(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolSobel(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolPrewittX(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolPrewittY(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolPrewitt(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGradientX(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGradientY(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGradient(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacianX(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacianY(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacian4(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolLaplacian8(const EROI<EC24>* src, EROI<EC24>* dst);
MIREL_API void ImgConvolGaussian(const EROI<EC24>* src, EROI<EC24>* dst, unsigned int halfX, unsigned int halfY);
MIREL_API void ImgConvolUniform(const EROI<EC24>* src, EROI<EC24>* dst, unsigned int halfX, unsigned int halfY);

#endif  // MIREL_FILTER_COLOR_FILTERS_H_
