// Image files: loading and saving 8-bit grey, 16-bit grey and 24-bit colour
// images as PGM, PPM, PNG, JPEG and TIFF.
//
// Part of Mirel::IO, the optional component (library mirelimage_io); the
// core library does not depend on it and mirel/mirel.h does not include this
// header. PGM and PPM are always there; PNG, JPEG and TIFF come with libpng,
// libjpeg and libtiff when those are found at build time
// (ImgImageFileFormatAvailable tells). Link Mirel::IO (CMake) or
// mirelimage-io (pkg-config).
//
//   EImage<EBW8> part;
//   ImgLoad("part.png", &part);
//   if (EGetError() != E_OK) ...            // code and trace, as operations
//   EROI<EBW8> window(&part, 10, 10, 64, 48);
//   ImgSave(&window, "window.tif");         // a ROI saves as its own image
//
// What each format holds, and the image type it loads into and saves from:
//
//   Format  Extensions      EBW8   EBW16  EC24   Notes
//   PGM     .pgm            yes    yes           P5 written; P2 and P5 read
//   PPM     .ppm                          yes    P6 written; P3 and P6 read
//   PNG     .png            yes    yes    yes    palette and 1, 2, 4-bit grey
//                                                images load expanded
//   JPEG    .jpg .jpeg .jpe yes           yes    lossy; quality 1 to 100
//   TIFF    .tif .tiff      yes    yes    yes    strips, one plane; written
//                                                deflate-compressed
//
// Extensions are matched without regard to case. Grey samples load as they
// are stored: a PGM of maxval 4095 gives values 0 to 4095, never rescaled,
// and PNG gamma is not applied. A white-is-zero TIFF is inverted to black-is-
// zero. JPEG and PNG colour spaces other than grey and RGB, alpha channels,
// 16-bit colour, and TIFF tiles, planes and sample formats other than
// unsigned integers are not taken.
//
// EC24 component order: component 0 is blue, 1 green and 2 red, so the
// bytes of a pixel in memory are blue, green, red, as in display bitmaps.
// Loading puts a file's red into component 2; saving writes component 2 as
// red.
//
// Both operations follow the frame of every operation: they clear the
// error state, and on failure set a code and trace their label ("ImgLoad
// (BW8)", "ImgSave (C24)", "ImgImageFileInfo"). A failed ImgLoad leaves the
// destination image as it was: the file is decoded into a temporary first,
// whose buffer the destination then takes. A destination that borrows a
// caller's buffer of the file's size has the pixels copied into that buffer
// instead.
// A failed ImgSave removes the file that it began to write.
//
// Codes:
//   1400 E_ERROR_VOID_IMAGE          the destination pointer is null, or the
//                                    source is null or void
//   1007 E_ERROR_BAD_ARGUMENT        the path is null or empty, the format
//                                    is not known or not in this build,
//                                    automatic choice meets an extension
//                                    that names no format, or the JPEG
//                                    quality is outside 1 to 100
//   1102 E_ERROR_FILE_OPEN           the file cannot be opened (missing,
//                                    no permission, no such folder)
//   1105 E_ERROR_IMAGE_FILE_HEADER   the file is not of the chosen format (its
//                                    signature differs), or its header is
//                                    malformed
//   1419 E_ERROR_BAD_PIXEL_TYPE      the file holds another kind of pixel
//                                    than the image type asked for (an RGB
//                                    file into EBW8), a kind that no image
//                                    type here holds, or the format cannot
//                                    hold the source's pixel type (EBW16 as
//                                    JPEG or PPM)
//   1303 E_ERROR_OUT_OF_MEMORY       the image or a buffer cannot be allocated
//   1103 E_ERROR_FILE_READ           the file ends early or its data are
//                                    corrupt (a JPEG that the decoder warns
//                                    about counts as corrupt)
//   1104 E_ERROR_FILE_WRITE          writing or encoding failed
//   1106 E_ERROR_FILE_CLOSE          closing the written file failed
// ImgLoad and ImgImageFileInfo check in the order of that list, so a missing
// file gives 1102 whatever format of this build its extension names, and a
// PNG named .jpg gives 1105.
// ImgSave checks 1400, 1007 and 1419 before it opens the file.
#ifndef MIREL_IO_IMAGE_FILE_H_
#define MIREL_IO_IMAGE_FILE_H_

#include "mirel/foundation/error.h"
#include "mirel/foundation/image.h"
#include "mirel/foundation/pixel.h"

#if defined(MIREL_STATIC)
#define MIREL_IO_API
#elif defined(_WIN32)
#if defined(MIREL_BUILDING_IO)
#define MIREL_IO_API __declspec(dllexport)
#else
#define MIREL_IO_API __declspec(dllimport)
#endif
#else
#define MIREL_IO_API __attribute__((visibility("default")))
#endif

// The code that image files share with vector files for a header that is not
// the expected one.
constexpr E_ERRORS E_ERROR_IMAGE_FILE_HEADER = E_ERROR_VECTOR_FILE_HEADER;

enum E_IMAGE_FILE_FORMAT : int {
  // Chosen from the path's extension.
  E_IMAGE_FILE_AUTO = 0,
  E_IMAGE_FILE_PGM = 1,
  E_IMAGE_FILE_PPM = 2,
  E_IMAGE_FILE_PNG = 3,
  E_IMAGE_FILE_JPEG = 4,
  E_IMAGE_FILE_TIFF = 5,
};

// Loads the file at `path` into `dst`, which is resized to the file's size.
MIREL_IO_API void ImgLoad(const char* path, EImage<EBW8>* dst, E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO);
MIREL_IO_API void ImgLoad(const char* path, EImage<EBW16>* dst, E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO);
MIREL_IO_API void ImgLoad(const char* path, EImage<EC24>* dst, E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO);

// Saves the ROI `src` (an image or any ROI inside one) as a file of its own
// width and height. `quality` is the JPEG quality, 1 to 100; the other
// formats are lossless and ignore it.
MIREL_IO_API void ImgSave(const EROI<EBW8>* src, const char* path, E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO,
                          int quality = 95);
MIREL_IO_API void ImgSave(const EROI<EBW16>* src, const char* path, E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO,
                          int quality = 95);
MIREL_IO_API void ImgSave(const EROI<EC24>* src, const char* path, E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO,
                          int quality = 95);

// Reads only the header of the file at `path`: its width, height and the
// image type that ImgLoad takes for it (E_IMAGE_TYPE_BW8, _BW16 or _C24).
// The outputs are written on success only; null outputs are skipped. Codes as
// ImgLoad, except that the pixel data are not read.
MIREL_IO_API void ImgImageFileInfo(const char* path, int* width, int* height, E_IMAGE_TYPES* type,
                                   E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO);

// The format that ImgLoad and ImgSave choose for `path` (E_IMAGE_FILE_AUTO
// when its extension names none). Touches neither the file nor the error
// state.
MIREL_IO_API E_IMAGE_FILE_FORMAT ImgImageFileFormat(const char* path);

// True when this build reads and writes `format`: PGM and PPM always, PNG,
// JPEG and TIFF when their codec library was found at build time (a
// cross build for Windows, say, may have none). Touches no error state.
MIREL_IO_API bool ImgImageFileFormatAvailable(E_IMAGE_FILE_FORMAT format);

#endif  // MIREL_IO_IMAGE_FILE_H_
