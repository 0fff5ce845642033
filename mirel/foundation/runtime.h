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

// Angles cross the library's boundary in degrees.
MIREL_API float EToRadians(float degrees);
MIREL_API float EFromRadians(float radians);

#endif  // MIREL_FOUNDATION_RUNTIME_H_
