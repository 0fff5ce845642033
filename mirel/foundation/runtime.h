// The per-thread record, the allocation pair and the angle helpers.
#ifndef MIREL_FOUNDATION_RUNTIME_H_
#define MIREL_FOUNDATION_RUNTIME_H_

#include <cstddef>

#include "mirel/foundation/export.h"
#include "mirel/foundation/pixel.h"

// The calling thread's record. It lives as long as the thread. The library
// reads and writes OverlayColor (the colour that overlay operations paint
// with); the other fields are the foundation's own.
struct MirelTLSStruct {
  EC24 OverlayColor;
};

MIREL_API MirelTLSStruct* EGetTLSPtr();

// malloc-like pair: size in bytes, null on failure. Memory from one is given
// back only to the other; Talmeer_Free(nullptr) does nothing.
MIREL_API void* Talmeer_Malloc(std::size_t bytes);
MIREL_API void Talmeer_Free(void* block);

// Pixel blocks of 1 MiB or more that images give back are kept, up to four
// blocks and `bytes` together (32 MiB at the start), for the next image of
// about the same size: the temporaries of an operation called frame after
// frame then reuse memory whose pages are already mapped. Kept blocks belong
// to no image. ImgSetPixelCache(0) gives them all back to the system and
// stops keeping; a smaller capacity gives back the oldest first. The
// setting is the process's, for every thread.
MIREL_API void ImgSetPixelCache(std::size_t bytes);

// Angles cross the library's boundary in degrees.
MIREL_API float EToRadians(float degrees);
MIREL_API float EFromRadians(float radians);

#endif  // MIREL_FOUNDATION_RUNTIME_H_
