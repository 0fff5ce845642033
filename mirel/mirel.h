// MirelImage: machine-vision image processing.
//
// The umbrella header: includes every public header of the library.
#ifndef MIREL_MIREL_H_
#define MIREL_MIREL_H_

// Foundation: pixels, images and ROIs, errors, vectors.
#include "mirel/foundation/color.h"
#include "mirel/foundation/error.h"
#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"
#include "mirel/foundation/runtime.h"
#include "mirel/foundation/untyped_vector.h"
#include "mirel/foundation/vector.h"

// Bands on several threads: the calling thread's setting.
#include "mirel/foundation/threads.h"

// Point operations and conversion.
#include "mirel/point/arith.h"
#include "mirel/point/convert.h"
#include "mirel/point/lut.h"
#include "mirel/point/overlay.h"
#include "mirel/point/threshold.h"

// Packed bit images: alignment, copy, logic, conversions and thresholds,
// erosion, dilation and their compounds, and the median (in median.h).
#include "mirel/morphology/bit_morphology.h"
#include "mirel/point/bits.h"
// Colour and float conversion, normalisation and uniformize.
#include "mirel/point/color_convert.h"
#include "mirel/point/normalize.h"
#include "mirel/point/uniformize.h"

// Linear filtering.
#include "mirel/filter/color_filters.h"
#include "mirel/filter/convolution.h"
#include "mirel/filter/fixed_filters.h"
#include "mirel/filter/kernel.h"
#include "mirel/filter/preset_filters.h"
#include "mirel/filter/smoothing.h"

// Edges and frequency domain: gradient images, the Canny chain, anisotropic
// diffusion, Fourier transforms and complex images.
#include "mirel/edge/canny.h"
#include "mirel/edge/diffusion.h"
#include "mirel/edge/fourier.h"
#include "mirel/edge/gradient.h"

// Morphology and medians.
#include "mirel/morphology/bilevel.h"
#include "mirel/morphology/median.h"
#include "mirel/morphology/morphology.h"

// Thinning, thickening and the distance map.
#include "mirel/morphology/distance.h"
#include "mirel/morphology/thinning.h"

// Geometry and sequences: resampling, shrinking, mirrors, warping, pyramids,
// halving, interlaced frames and temporal averaging.
#include "mirel/geometry/affine.h"
#include "mirel/geometry/frames.h"
#include "mirel/geometry/pyramid.h"
#include "mirel/geometry/shrink_mirror.h"
#include "mirel/geometry/temporal_average.h"
#include "mirel/geometry/warp.h"

// Histograms and automatic thresholds.
#include "mirel/histogram/histogram.h"
#include "mirel/histogram/histogram_vector.h"
#include "mirel/histogram/projection.h"
#include "mirel/histogram/threshold_selection.h"

// Multi-level and local thresholds.
#include "mirel/histogram/local_threshold.h"
#include "mirel/histogram/multilevel_threshold.h"

// Measurement.
#include "mirel/measure/moments.h"
#include "mirel/measure/noise.h"
#include "mirel/measure/statistics.h"

// Vectors, contours and drawing.
#include "mirel/vector/contour.h"
#include "mirel/vector/path.h"
#include "mirel/vector/profile.h"
#include "mirel/vector/records.h"
#include "mirel/vector/untyped_ops.h"

// Drawing through an adapter: the plot, the raster and SVG adapters, and the
// GDI adapter on Windows.
#include "mirel/foundation/plot.h"
#include "mirel/vector/draw/draw_adapter.h"
#include "mirel/vector/draw/gdi_draw_adapter.h"
#include "mirel/vector/draw/portable_draw_adapter.h"
#include "mirel/vector/draw/raster_draw_adapter.h"
#include "mirel/vector/draw/svg_draw_adapter.h"

#endif  // MIREL_MIREL_H_
