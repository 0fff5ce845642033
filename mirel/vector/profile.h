// One-dimensional grey-level profiles in EBW8Vector or EBW16Vector: peaks
// and valleys against a dead band, the derivative, and the uniform,
// binomial, dilation and erosion filters.
//
// ImgGetProfilePeaks. Samples above `high` form peaks, samples below `low`
// valleys, samples in between are neutral (low above high: 1007). A run is a
// maximal stretch of peak or valley samples; only runs with both ends inside
// the profile are reported (one that starts at sample 0 or reaches the last
// sample is not). A run from s up to e (its first sample outside) has the
// excursions d[k] = p[k] - high for a peak, p[k] - low for a valley; its
// amplitude is the largest d of a peak or the most negative d of a valley,
// its area the sum of d. It is reported when its amplitude and area (minus
// them for a valley) reach `minAmplitude` and `minArea`, as
// {s, e - s, centre, amplitude, area}, the centre being the centre of gravity
// of the excursions, e - sum(d[k] * (e - k)) / area (exact sums, divided in
// double precision). A sample that ends a peak by falling below `low` starts
// a valley at once, and the other way round. The peaks vector is emptied
// first. Labels "ImgGetProfilePeaks ( BW8)", "ImgGetProfilePeaks ( BW16)".
//
// ImgProfileDerivative. The destination gets the source's size. Inner
// elements are ((p[i+1] - p[i-1]) >> 1) + M, end elements the one-sided
// differences p[1] - p[0] + M and p[n-1] - p[n-2] + M clamped to the type,
// with the mid-scale M 128 (BW8) or 32768 (BW16). Label "ImgProfileDerivative".
//
// ImgConvolUniform. The mean of the 2h + 1 samples around each one,
// truncated, with the first and last samples repeated h times past the ends.
// The source needs at least 2h + 1 elements and the destination exactly as
// many as the source (1613). Sums are 32-bit. Half size 0 copies. Labels
// "ImgConvolUniform", "ImgConvolUniform (BW16)".
//
// ImgConvolGaussian, ImgDilate, ImgErode. `passes` passes of a three-tap
// filter, the first from the source to the destination, the others in place:
// the binomial (p[i-1] + 2 p[i] + p[i+1]) >> 2, with (3 p[0] + p[1]) >> 2 and
// (3 p[n-1] + p[n-2]) >> 2 at the ends; the largest or smallest of a sample
// and its neighbours, of the two samples present at the ends. The destination
// gets the source's size; with 0 passes or an empty source it is left
// otherwise alone. Labels "ImgConvolBinomial ( EBW8Vector)",
// "ImgConvolBinomial ( EBW16Vector)", "ImgDilate ( EBW8Vector)", ...
//
// Every filter may run in place (source and destination the same vector).
// A one-element source has no neighbour to take and gives 1613 in
// ImgProfileDerivative, ImgConvolGaussian, ImgDilate and ImgErode (with at
// least one pass), with the destination untouched. Null vectors: 1007.
// Out of memory: 1303.
#ifndef MIREL_VECTOR_PROFILE_H_
#define MIREL_VECTOR_PROFILE_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/vector.h"
#include "mirel/vector/records.h"

MIREL_API void ImgGetProfilePeaks(const EBW8Vector* profile, EPeaksVector* peaks, unsigned int low, unsigned int high,
                                  unsigned int minAmplitude, unsigned int minArea);
MIREL_API void ImgGetProfilePeaks(const EBW16Vector* profile, EPeaksVector* peaks, unsigned int low,
                                  unsigned int high, unsigned int minAmplitude, unsigned int minArea);

MIREL_API void ImgProfileDerivative(const EBW8Vector* src, EBW8Vector* dst);
MIREL_API void ImgProfileDerivative(const EBW16Vector* src, EBW16Vector* dst);

MIREL_API void ImgConvolUniform(const EBW8Vector* src, EBW8Vector* dst, unsigned int halfSize);
MIREL_API void ImgConvolUniform(const EBW16Vector* src, EBW16Vector* dst, unsigned int halfSize);

MIREL_API void ImgConvolGaussian(const EBW8Vector* src, EBW8Vector* dst, unsigned int passes);
MIREL_API void ImgConvolGaussian(const EBW16Vector* src, EBW16Vector* dst, unsigned int passes);

MIREL_API void ImgDilate(const EBW8Vector* src, EBW8Vector* dst, unsigned int passes);
MIREL_API void ImgDilate(const EBW16Vector* src, EBW16Vector* dst, unsigned int passes);

MIREL_API void ImgErode(const EBW8Vector* src, EBW8Vector* dst, unsigned int passes);
MIREL_API void ImgErode(const EBW16Vector* src, EBW16Vector* dst, unsigned int passes);

#endif  // MIREL_VECTOR_PROFILE_H_
