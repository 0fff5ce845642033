// Thresholds that vary across an image.
//
// ImgAutoAdaptiveThreshold writes a surface of thresholds, not a binary
// image: thresholding against it is the caller's next step. With W, H the
// source's size and bw, bh the block size (a block height of 0 takes the
// width), nx = ceil(W / bw) and ny = ceil(H / bh) in single precision. For
// each point (ix, iy) of a grid of (nx + 1) by (ny + 1), the window centred
// on ((ix * W) / nx, (iy * H) / ny) and reaching bw / 2 and bh / 2 each way,
// clipped to the source, gives a histogram; the mode is resolved on it with
// ImgHistogramThreshold (relative value 0.5, range 0..255), whose result is
// not used, and the grid point takes ImgIsodataThreshold of the histogram
// over 0..255. The grid is then scaled up onto the destination with
// ImgScaleRotate: pivots 0, zoom W / nx and H / ny, angle 0, bilinear with
// 8 fraction bits. Checks: neither ROI void (1400), same size (1403), a
// block width below 1 or a negative block height (1007); a mode refused by
// ImgHistogramThreshold stops the call with its code. A failure leaves the
// destination untouched; label "ImgAutoAdaptiveThreshold".
//
// Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold binarises each pixel
// against the mean of the D x D square around it: 255 when
//   pixel * D * D >= window sum + D * D * offset
// (the pixel is at least the local mean plus the offset), else 0, all in
// 32-bit signed integers that wrap, with no division. The half size is
// clipped to r = min(halfSize, (min(W, H) - 1) / 2), D = 2r + 1. Near the
// borders the square does not shrink: it stops moving, so the first and last
// r rows and columns use the square of the nearest pixel r away from the
// border. Running sums make each pixel cost the same whatever the window.
// It reports in the older manner: it does not clear the error state on
// entry and traces no label. Errors: 1400 a null or void ROI, 1403 sizes
// that differ, 1007 a negative half size, 1303 memory; the destination is
// then untouched. ROIs of no pixel do nothing.
#ifndef MIREL_HISTOGRAM_LOCAL_THRESHOLD_H_
#define MIREL_HISTOGRAM_LOCAL_THRESHOLD_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/histogram/threshold_selection.h"

MIREL_API void ImgAutoAdaptiveThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, IMG_THRESHOLD_MODES mode,
                                        int blockWidth, int blockHeight = 0);

namespace Corvane {
namespace Talmeer {
namespace Segmentation {

MIREL_API void ImgLocalMeanThreshold(const EROI<EBW8>* src, EROI<EBW8>* dst, int halfSize, int offset);

}  // namespace Segmentation
}  // namespace Talmeer
}  // namespace Corvane

#endif  // MIREL_HISTOGRAM_LOCAL_THRESHOLD_H_
