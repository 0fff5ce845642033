// MirelImage export and inlining macros.
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

// Class templates: on Windows every module makes its own instances, since a
// DLL can export only the instances it made itself and programs instantiate
// the templates with element types of their own. Elsewhere the instances keep
// default visibility, so that their type information is one across modules.
#if defined(_WIN32)
#define MIREL_TEMPLATE_API
#else
#define MIREL_TEMPLATE_API MIREL_API
#endif

// Keeps a rarely taken path out of line, so that the common path around it
// stays small enough for the compiler to inline into a caller's loop.
#if defined(_MSC_VER)
#define MIREL_NOINLINE __declspec(noinline)
#elif defined(__GNUC__)
#define MIREL_NOINLINE __attribute__((noinline))
#else
#define MIREL_NOINLINE
#endif

#endif  // MIREL_FOUNDATION_EXPORT_H_
