// Forward declarations for the classes that can draw themselves (path
// vectors, histograms) without pulling in the drawing headers.
#ifndef MIREL_VECTOR_DRAW_DRAW_FORWARD_H_
#define MIREL_VECTOR_DRAW_DRAW_FORWARD_H_

namespace Corvane {
class DrawAdapter;
}  // namespace Corvane

#if defined(_WIN32)
// The device context handle of Windows GDI, declared as <windows.h> does,
// so that a header of ours never drags in the whole of <windows.h>.
struct HDC__;
typedef struct HDC__* HDC;
#endif

#endif  // MIREL_VECTOR_DRAW_DRAW_FORWARD_H_
