// MirelImage export macro.
//
// The library is built with hidden visibility; only declarations marked
// MIREL_API are part of the binary interface. Static builds define
// MIREL_STATIC (the CMake target and pkg-config file do it for consumers).
#ifndef MIREL_FOUNDATION_EXPORT_H_
#define MIREL_FOUNDATION_EXPORT_H_

#if defined(MIREL_STATIC)
#define MIREL_API
#elif defined(_WIN32)
#if defined(MIREL_BUILDING_LIBRARY)
#define MIREL_API __declspec(dllexport)
#else
#define MIREL_API __declspec(dllimport)
#endif
#else
#define MIREL_API __attribute__((visibility("default")))
#endif

#endif  // MIREL_FOUNDATION_EXPORT_H_
