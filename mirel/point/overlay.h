// Colour overlays and the thread's overlay colour.
//
// ImgOverlay puts a colour picture (`overlay`) over an image at (x, y),
// leaving out the pixels that equal `transparent` in all three components.
//
//   * The three forms that draw on `dst` write only the overlay's
//     non-transparent pixels, at (x + i, y + j), packed to the destination's
//     format (EC16: 5-6-5 from the top bits of the components 0, 1, 2;
//     EC15: 5-5-5). Overlay pixels that would fall outside the destination
//     are not drawn.
//   * The form with a grey source makes the whole destination: it sizes
//     `dst` like `src`, then every pixel is the overlay pixel where the
//     overlay (placed at x, y; negative values shift it up and left) covers
//     it with a non-transparent pixel, and the grey value in all three
//     components elsewhere.
//   * A destination smaller than the overlay (or than the grey source) is
//     left as it is, silently: no error code is set.
//   * A void or null image sets 1400.
//
// ImgSetOverlayColor and ImgGetOverlayColor write and read the colour that
// ALO_OVERLAY paints with (arith.h). It belongs to the calling thread: a
// colour set on one thread does not change another's. They cannot fail and
// leave the error state alone.
#ifndef MIREL_POINT_OVERLAY_H_
#define MIREL_POINT_OVERLAY_H_

#include "mirel/foundation/export.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

MIREL_API void ImgOverlay(const EROI<EC24>* overlay, EROI<EC24>* dst, int x, int y, EC24 transparent);
MIREL_API void ImgOverlay(const EROI<EC24>* overlay, EROI<EC16>* dst, int x, int y, EC24 transparent);
MIREL_API void ImgOverlay(const EROI<EC24>* overlay, EROI<EC15>* dst, int x, int y, EC24 transparent);
MIREL_API void ImgOverlay(const EROI<EBW8>* src, const EROI<EC24>* overlay, EROI<EC24>* dst, int x, int y,
                          EC24 transparent);

MIREL_API void ImgSetOverlayColor(EC24 color);
MIREL_API EC24 ImgGetOverlayColor();

#endif  // MIREL_POINT_OVERLAY_H_
