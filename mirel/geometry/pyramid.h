// Image pyramids and halving.
//
// An EPyramid holds a stack of images, each half the size of the one before.
// Level 0 is the caller's image; Build() makes every further level from the
// one before it. Two contents can be built:
//
//   type 1 (EBW8)   grey levels, reduced by the average, the minimum or the
//                   maximum of each 2x2 block (SetReductionMode);
//   type 8 (EBW32)  gradient levels: each 32-bit pixel holds two signed
//                   16-bit components, the low half first, and each
//                   component is averaged on its own (arithmetic shift, so
//                   the mean rounds towards minus infinity).
//
// Types 2 (EBW16), 3 (EBW32) and 6 (EC24) make levels that the caller fills
// and reads; they cannot be built. Any other type is refused with 1419.
//
// Halving. A source of w x h gives ((w + e) >> 1) x ((h + e) >> 1), with e 0
// when dropOdd is non-zero (a trailing odd row and column are dropped) and 1
// otherwise. A 2x2 block gives its sum >> 2 (no rounding), or its minimum or
// maximum; with dropOdd 0 the last column of an odd width reduces the two
// pixels of its rows (sum >> 1), the last row of an odd height the two
// pixels of its columns, and the corner of an odd size is copied.
//
// The pyramid owns its level images between calls: they are released by the
// destructor and by any SetNumLevels that changes the count or the type, so
// a pointer from GetImage dies then.
//
// Errors (label in brackets):
//   1419  SetNumLevels with an unknown type ["EPyramid::SetNumLevels"];
//         Build() on a type other than 1 or 8 ["EBW8Pyramid::Build"]
//   1303  SetNumLevels without memory ["EPyramid::SetNumLevels"]
//   1024  Build(source) on a type other than 1 ["EBW8Pyramid::Build"]
//   1400  Build with a void level 0, or Build(source) with a void source
//   1011  GetImage past the last level ["EPyramid::GetImage"], returns null;
//         SetReductionMode with an unknown mode (not traced)
//   1414  a level cannot be given the size of the halved image
// Build() halves every level in turn without stopping at a failed one, so a
// level that comes out empty makes the next step fail with 1400 and only the
// last failure remains set.
//
// ImgHalve is the free-standing grey halving by averages, label
// "ImgHalve ( BW8)". It sizes the destination with SetSize(int, int): an
// image is reallocated, a ROI is resized in its parent (1007 when the result
// does not fit the parent). A void source gives 1400; a destination on the
// same image as the source gives 1413, since resizing it would move the
// pixels being read. A failed call leaves the destination untouched.
#ifndef MIREL_GEOMETRY_PYRAMID_H_
#define MIREL_GEOMETRY_PYRAMID_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

enum IMG_PYRAMIDAL_REDUCTION_MODE : int {
  IMG_PYRAMIDAL_REDUCTION_AVERAGE = 0,  // sum of the block >> 2 (>> 1 for a pair)
  IMG_PYRAMIDAL_REDUCTION_MINIMUM = 1,
  IMG_PYRAMIDAL_REDUCTION_MAXIMUM = 2,
};

class MIREL_API EPyramid {
 public:
  EPyramid();
  ~EPyramid();
  EPyramid(const EPyramid&) = delete;
  EPyramid& operator=(const EPyramid&) = delete;

  // Replaces the levels by `levels` empty images of `type`. The same count
  // and type keep the existing images and their content. A count of 0 takes
  // any type. On failure the existing pyramid stays as it is.
  void SetNumLevels(unsigned int levels, E_IMAGE_TYPES type);
  unsigned int GetNumLevels() const { return num_levels_; }
  E_IMAGE_TYPES GetImageType() const { return image_type_; }
  // The image of a level, owned by the pyramid: an EImage of the level type.
  EGenericROI* GetImage(unsigned int level);
  const EGenericROI* GetImage(unsigned int level) const;

  void SetReductionMode(IMG_PYRAMIDAL_REDUCTION_MODE mode);
  IMG_PYRAMIDAL_REDUCTION_MODE GetReductionMode() const { return reduction_mode_; }
  void SetDropOdd(int dropOdd) { drop_odd_ = dropOdd; }
  int GetDropOdd() const { return drop_odd_; }

  // Makes levels 1 and up from level 0.
  void Build();
  // Copies `source` into level 0 (resizing it), then Build().
  void Build(const EROI<EBW8>* source);

 protected:
  // One grey step, in the pyramid's reduction mode.
  void Halve(const EROI<EBW8>* source, EROI<EBW8>* destination, int dropOdd);
  // One gradient step: per-component averages; the mode is ignored.
  void Halve(const EROI<EBW32>* source, EROI<EBW32>* destination, int dropOdd);

 private:
  // Build() from level `first` on.
  void BuildFrom(unsigned int first);

  IMG_PYRAMIDAL_REDUCTION_MODE reduction_mode_;
  E_IMAGE_TYPES image_type_;
  unsigned int num_levels_;
  EGenericROI** levels_;
  int drop_odd_;
};

MIREL_API void ImgHalve(const EROI<EBW8>* source, EROI<EBW8>* destination, int dropOdd);

#endif  // MIREL_GEOMETRY_PYRAMID_H_
