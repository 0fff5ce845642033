// The calling thread's number of threads for one operation.
//
// ImgSetThreads(n) lets the operations that this thread calls split their
// destination rows into bands and compute them on n threads: the calling
// thread and n - 1 threads of a pool that the library starts the first time
// it needs them and joins when it is unloaded. The bands give the same bytes
// as one thread, and the calling thread's error state is the only one a call
// touches, with the same codes and trace as on one thread.
//
//   * 1, the default: no thread is started and every operation runs on the
//     calling thread alone.
//   * 0: one thread per hardware thread.
//   * A negative value is refused with E_ERROR_BAD_ARGUMENT (1007) and the
//     trace "ImgSetThreads"; the setting stays as it was.
//
// The setting belongs to the calling thread, like the overlay colour: a
// value set on one thread does not change another's. ImgGetThreads returns
// the value set (0 stays 0). Images too small for bands to pay, and the
// operations that read what they have written, stay on the calling thread;
// the README lists the operations that use bands.
#ifndef MIREL_FOUNDATION_THREADS_H_
#define MIREL_FOUNDATION_THREADS_H_

#include "mirel/foundation/export.h"

MIREL_API void ImgSetThreads(int n);
MIREL_API int ImgGetThreads();

#endif  // MIREL_FOUNDATION_THREADS_H_
