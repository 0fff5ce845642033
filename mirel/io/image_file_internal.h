// The codecs behind ImgLoad and ImgSave.
//
// The frames in image_file.cpp open the file, check its signature and then
// drive one Decoder or Encoder over it. Codecs see rows of plain samples:
// grey, or red, green, blue in that order, 16-bit samples in the host's byte
// order. Swapping colour to the EC24 component order, and copying between a
// padded image and those rows, stays in the frames.
//
// Every codec method returns E_OK or the code to report, and sets nothing in
// the error state. A codec owns the library objects it creates and frees them
// in its destructor, whatever step failed. Calls into libpng and libjpeg
// that may jump back on an error are made only from methods whose frames
// hold no object with a destructor.
#ifndef MIREL_IO_IMAGE_FILE_INTERNAL_H_
#define MIREL_IO_IMAGE_FILE_INTERNAL_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

#include "mirel/foundation/error.h"
#include "mirel/io/image_file.h"

namespace mirel {
namespace io {

// The kinds of pixel that a file may hold and an image type here takes.
enum class Kind { kGrey8, kGrey16, kRgb8 };

inline int SampleBytes(Kind kind) { return kind == Kind::kGrey16 ? 2 : 1; }
inline int Channels(Kind kind) { return kind == Kind::kRgb8 ? 3 : 1; }
inline std::size_t RowBytes(Kind kind, int width) {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(SampleBytes(kind) * Channels(kind));
}

struct Header {
  int width = 0;
  int height = 0;
  Kind kind = Kind::kGrey8;
};

inline bool HostIsLittleEndian() {
  const std::uint16_t one = 1;
  unsigned char first;
  std::memcpy(&first, &one, 1);
  return first == 1;
}

class Decoder {
 public:
  virtual ~Decoder() = default;
  // Reads the header up to the first pixel. Codes: 1105 malformed header,
  // 1419 a kind of pixel that is not taken, 1103 the file ends early or is
  // corrupt, 1303 no memory.
  virtual E_ERRORS ReadHeader(Header* header) = 0;
  // Reads every row; rows[y] has room for RowBytes(kind, width). 1103 when
  // the data end early or are corrupt.
  virtual E_ERRORS ReadPixels(unsigned char** rows) = 0;
};

class Encoder {
 public:
  virtual ~Encoder() = default;
  // `quality` is used by JPEG only (already checked to be 1 to 100).
  virtual E_ERRORS Begin(const Header& header, int quality) = 0;
  // Rows come in order, top first.
  virtual E_ERRORS WriteRow(const unsigned char* row) = 0;
  // Completes the file; the caller then closes it.
  virtual E_ERRORS Finish() = 0;
};

// Factories; null when memory runs out. `file` stays open and owned by the
// caller for the codec's life. A PGM decoder takes P2 and P5, a PPM decoder
// P3 and P6.
std::unique_ptr<Decoder> MakePnmDecoder(std::FILE* file, bool colour);
std::unique_ptr<Encoder> MakePnmEncoder(std::FILE* file);
std::unique_ptr<Decoder> MakePngDecoder(std::FILE* file);
std::unique_ptr<Encoder> MakePngEncoder(std::FILE* file);
std::unique_ptr<Decoder> MakeJpegDecoder(std::FILE* file);
std::unique_ptr<Encoder> MakeJpegEncoder(std::FILE* file);
std::unique_ptr<Decoder> MakeTiffDecoder(std::FILE* file);
std::unique_ptr<Encoder> MakeTiffEncoder(std::FILE* file);

// Whole-file writes: E_OK when every byte went out and the stream shows no
// error, else 1104.
inline E_ERRORS FlushCode(std::FILE* file) {
  return std::fflush(file) == 0 && std::ferror(file) == 0 ? E_OK : E_ERROR_FILE_WRITE;
}

}  // namespace io
}  // namespace mirel

#endif  // MIREL_IO_IMAGE_FILE_INTERNAL_H_
