// ImgLoad, ImgSave and ImgImageFileInfo: the frames around the codecs.
#include "mirel/io/image_file.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mirel/foundation/frame_internal.h"
#include "mirel/io/image_file_internal.h"

namespace mirel {
namespace io {
namespace {

// ---------------------------------------------------------------- formats

E_IMAGE_FILE_FORMAT FormatOfPath(const char* path) {
  const char* dot = std::strrchr(path, '.');
  if (dot == nullptr || std::strpbrk(dot, "/\\") != nullptr) return E_IMAGE_FILE_AUTO;
  std::string ext;
  for (const char* p = dot + 1; *p != '\0'; ++p) ext += static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
  if (ext == "pgm") return E_IMAGE_FILE_PGM;
  if (ext == "ppm") return E_IMAGE_FILE_PPM;
  if (ext == "png") return E_IMAGE_FILE_PNG;
  if (ext == "jpg" || ext == "jpeg" || ext == "jpe") return E_IMAGE_FILE_JPEG;
  if (ext == "tif" || ext == "tiff") return E_IMAGE_FILE_TIFF;
  return E_IMAGE_FILE_AUTO;
}

// The format to use: the one given, or the extension's. AUTO when neither,
// or when this build has no codec for it.
E_IMAGE_FILE_FORMAT Resolve(const char* path, E_IMAGE_FILE_FORMAT format) {
  const E_IMAGE_FILE_FORMAT chosen = format == E_IMAGE_FILE_AUTO ? FormatOfPath(path) : format;
  return ImgImageFileFormatAvailable(chosen) ? chosen : E_IMAGE_FILE_AUTO;
}

bool Holds(E_IMAGE_FILE_FORMAT format, Kind kind) {
  switch (format) {
    case E_IMAGE_FILE_PGM: return kind != Kind::kRgb8;
    case E_IMAGE_FILE_PPM: return kind == Kind::kRgb8;
    case E_IMAGE_FILE_JPEG: return kind != Kind::kGrey16;
    default: return true;
  }
}

// The signatures a file of each format starts with; a file that starts
// otherwise is of another type (1105), a file too short to tell ends early
// (1103).
E_ERRORS CheckSignature(std::FILE* file, E_IMAGE_FILE_FORMAT format) {
  static const unsigned char kPng[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
  static const unsigned char kJpeg[] = {0xFF, 0xD8, 0xFF};
  static const unsigned char kTiff[4][4] = {{'I', 'I', 42, 0}, {'M', 'M', 0, 42}, {'I', 'I', 43, 0}, {'M', 'M', 0, 43}};
  unsigned char head[8];
  const std::size_t got = std::fread(head, 1, sizeof(head), file);
  if (std::ferror(file) != 0) return E_ERROR_FILE_READ;
  std::rewind(file);
  // Compares the bytes that were read with a signature; `short_read` is set
  // when they agree as far as they go but the file is shorter.
  bool short_read = false;
  auto starts = [&](const unsigned char* sig, std::size_t n) {
    const std::size_t k = got < n ? got : n;
    if (std::memcmp(head, sig, k) != 0) return false;
    if (k < n) {
      short_read = true;
      return false;
    }
    return true;
  };
  bool ok = false;
  switch (format) {
    case E_IMAGE_FILE_PGM: {
      const unsigned char p2[] = {'P', '2'}, p5[] = {'P', '5'};
      ok = starts(p2, 2) || starts(p5, 2);
      break;
    }
    case E_IMAGE_FILE_PPM: {
      const unsigned char p3[] = {'P', '3'}, p6[] = {'P', '6'};
      ok = starts(p3, 2) || starts(p6, 2);
      break;
    }
    case E_IMAGE_FILE_PNG: ok = starts(kPng, sizeof(kPng)); break;
    case E_IMAGE_FILE_JPEG: ok = starts(kJpeg, sizeof(kJpeg)); break;
    case E_IMAGE_FILE_TIFF:
      for (const auto& sig : kTiff) ok = ok || starts(sig, 4);
      break;
    default: break;
  }
  if (ok) return E_OK;
  return short_read ? E_ERROR_FILE_READ : E_ERROR_IMAGE_FILE_HEADER;
}

std::unique_ptr<Decoder> MakeDecoder(E_IMAGE_FILE_FORMAT format, std::FILE* file) {
  switch (format) {
    case E_IMAGE_FILE_PGM: return MakePnmDecoder(file, false);
    case E_IMAGE_FILE_PPM: return MakePnmDecoder(file, true);
#if MIREL_IO_WITH_PNG
    case E_IMAGE_FILE_PNG: return MakePngDecoder(file);
#endif
#if MIREL_IO_WITH_JPEG
    case E_IMAGE_FILE_JPEG: return MakeJpegDecoder(file);
#endif
#if MIREL_IO_WITH_TIFF
    case E_IMAGE_FILE_TIFF: return MakeTiffDecoder(file);
#endif
    default: return nullptr;
  }
}

std::unique_ptr<Encoder> MakeEncoder(E_IMAGE_FILE_FORMAT format, std::FILE* file) {
  switch (format) {
    case E_IMAGE_FILE_PGM:
    case E_IMAGE_FILE_PPM: return MakePnmEncoder(file);
#if MIREL_IO_WITH_PNG
    case E_IMAGE_FILE_PNG: return MakePngEncoder(file);
#endif
#if MIREL_IO_WITH_JPEG
    case E_IMAGE_FILE_JPEG: return MakeJpegEncoder(file);
#endif
#if MIREL_IO_WITH_TIFF
    case E_IMAGE_FILE_TIFF: return MakeTiffEncoder(file);
#endif
    default: return nullptr;
  }
}

// A file that is closed on every path.
class File {
 public:
  File(const char* path, const char* mode) : file_(std::fopen(path, mode)) {}
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  std::FILE* get() const { return file_; }
  // 0 on success, as fclose.
  int Close() {
    const int rc = file_ != nullptr ? std::fclose(file_) : 0;
    file_ = nullptr;
    return rc;
  }

 private:
  std::FILE* file_;
};

// ---------------------------------------------------------------- pixels

template <class T>
constexpr Kind KindOf() {
  return std::is_same<T, EBW8>::value ? Kind::kGrey8 : std::is_same<T, EBW16>::value ? Kind::kGrey16 : Kind::kRgb8;
}

// Copies a row of `width` pixels between file order and image order, in
// place when `from` is `to`. Only colour differs: red, green, blue in a
// file; blue, green, red in EC24.
template <class T>
void CopyRow(const unsigned char* from, unsigned char* to, int width) {
  if constexpr (!std::is_same<T, EC24>::value) {
    std::memcpy(to, from, static_cast<std::size_t>(width) * sizeof(T));
    return;
  }
  for (int x = 0; x < width; ++x, from += 3, to += 3) {
    const unsigned char first = from[0];
    to[0] = from[2];
    to[1] = from[1];
    to[2] = first;
  }
}

// Opens `path`, checks the signature and reads the header: the first steps
// of both ImgLoad and ImgImageFileInfo. Leaves the code in the frame.
struct Opened {
  std::unique_ptr<File> file;
  std::unique_ptr<Decoder> decoder;
  Header header;
};

bool OpenForReading(Frame& frame, const char* path, E_IMAGE_FILE_FORMAT format, Opened& out) {
  if (!frame.Require(path != nullptr && *path != '\0', E_ERROR_BAD_ARGUMENT)) return false;
  const E_IMAGE_FILE_FORMAT chosen = Resolve(path, format);
  if (!frame.Require(chosen != E_IMAGE_FILE_AUTO, E_ERROR_BAD_ARGUMENT)) return false;
  out.file.reset(new File(path, "rb"));
  if (!frame.Require(out.file->get() != nullptr, E_ERROR_FILE_OPEN)) return false;
  E_ERRORS code = CheckSignature(out.file->get(), chosen);
  if (code == E_OK) {
    out.decoder = MakeDecoder(chosen, out.file->get());
    code = out.decoder ? out.decoder->ReadHeader(&out.header) : E_ERROR_OUT_OF_MEMORY;
  }
  if (code != E_OK) frame.Fail(code);
  return code == E_OK;
}

template <class T>
void Load(const char* label, const char* path, EImage<T>* dst, E_IMAGE_FILE_FORMAT format) {
  Frame frame(label);
  try {
    if (!frame.Require(dst != nullptr, E_ERROR_VOID_IMAGE)) return;
    Opened in;
    if (!OpenForReading(frame, path, format, in)) return;
    const Header& h = in.header;
    if (!frame.Require(h.kind == KindOf<T>(), E_ERROR_BAD_PIXEL_TYPE)) return;

    // Decode into a temporary, so that a file that turns out truncated or
    // corrupt leaves the destination as it was.
    EImage<T> decoded;
    decoded.SetSize(h.width, h.height);
    if (EGetError() != E_OK) return;
    std::vector<unsigned char*> rows(static_cast<std::size_t>(h.height));
    for (int y = 0; y < h.height; ++y) rows[y] = reinterpret_cast<unsigned char*>(decoded.GetImagePtr(0, y));
    const E_ERRORS code = in.decoder->ReadPixels(rows.data());
    if (code != E_OK) {
      frame.Fail(code);
      return;
    }
    in.decoder.reset();
    in.file.reset();
    if constexpr (std::is_same<T, EC24>::value) {
      for (int y = 0; y < h.height; ++y) CopyRow<T>(rows[y], rows[y], h.width);
    }
    // A caller's buffer of the file's size receives the pixels; any other
    // destination takes the decoded image's buffer.
    if (dst->IsBorrowed() && dst->GetWidth() == h.width && dst->GetHeight() == h.height) {
      const std::size_t bytes = RowBytes(h.kind, h.width);
      for (int y = 0; y < h.height; ++y) std::memcpy(dst->GetImagePtr(0, y), rows[y], bytes);
    } else {
      *dst = std::move(decoded);
    }
  } catch (const std::bad_alloc&) {
    frame.Fail(E_ERROR_OUT_OF_MEMORY);
  }
}

template <class T>
void Save(const char* label, const EROI<T>* src, const char* path, E_IMAGE_FILE_FORMAT format, int quality) {
  Frame frame(label);
  if (!frame.NotVoid(src)) return;
  if (!frame.Require(path != nullptr && *path != '\0', E_ERROR_BAD_ARGUMENT)) return;
  const E_IMAGE_FILE_FORMAT chosen = Resolve(path, format);
  if (!frame.Require(chosen != E_IMAGE_FILE_AUTO, E_ERROR_BAD_ARGUMENT)) return;
  if (!frame.Require(chosen != E_IMAGE_FILE_JPEG || (quality >= 1 && quality <= 100), E_ERROR_BAD_ARGUMENT)) return;
  if (!frame.Require(Holds(chosen, KindOf<T>()), E_ERROR_BAD_PIXEL_TYPE)) return;
  // TIFF writing may read back what it wrote.
  File file(path, chosen == E_IMAGE_FILE_TIFF ? "w+b" : "wb");
  if (!frame.Require(file.get() != nullptr, E_ERROR_FILE_OPEN)) return;

  E_ERRORS code = E_OK;
  try {
    std::unique_ptr<Encoder> encoder = MakeEncoder(chosen, file.get());
    Header h;
    h.width = src->GetWidth();
    h.height = src->GetHeight();
    h.kind = KindOf<T>();
    code = encoder ? encoder->Begin(h, quality) : E_ERROR_OUT_OF_MEMORY;
    std::vector<unsigned char> swapped(std::is_same<T, EC24>::value ? RowBytes(h.kind, h.width) : 0);
    for (int y = 0; y < h.height && code == E_OK; ++y) {
      const unsigned char* row = reinterpret_cast<const unsigned char*>(src->GetImagePtr(0, y));
      if (!swapped.empty()) {
        CopyRow<T>(row, swapped.data(), h.width);
        row = swapped.data();
      }
      code = encoder->WriteRow(row);
    }
    if (code == E_OK) code = encoder->Finish();
  } catch (const std::bad_alloc&) {
    code = E_ERROR_OUT_OF_MEMORY;
  }
  if (file.Close() != 0 && code == E_OK) code = E_ERROR_FILE_CLOSE;
  if (code != E_OK) {
    // The half-written file goes; a device such as /dev/full stays.
    std::error_code ec;
    if (std::filesystem::is_regular_file(path, ec)) std::remove(path);
    frame.Fail(code);
  }
}

}  // namespace
}  // namespace io
}  // namespace mirel

void ImgLoad(const char* path, EImage<EBW8>* dst, E_IMAGE_FILE_FORMAT format) {
  mirel::io::Load("ImgLoad (BW8)", path, dst, format);
}
void ImgLoad(const char* path, EImage<EBW16>* dst, E_IMAGE_FILE_FORMAT format) {
  mirel::io::Load("ImgLoad (BW16)", path, dst, format);
}
void ImgLoad(const char* path, EImage<EC24>* dst, E_IMAGE_FILE_FORMAT format) {
  mirel::io::Load("ImgLoad (C24)", path, dst, format);
}

void ImgSave(const EROI<EBW8>* src, const char* path, E_IMAGE_FILE_FORMAT format, int quality) {
  mirel::io::Save("ImgSave (BW8)", src, path, format, quality);
}
void ImgSave(const EROI<EBW16>* src, const char* path, E_IMAGE_FILE_FORMAT format, int quality) {
  mirel::io::Save("ImgSave (BW16)", src, path, format, quality);
}
void ImgSave(const EROI<EC24>* src, const char* path, E_IMAGE_FILE_FORMAT format, int quality) {
  mirel::io::Save("ImgSave (C24)", src, path, format, quality);
}

void ImgImageFileInfo(const char* path, int* width, int* height, E_IMAGE_TYPES* type, E_IMAGE_FILE_FORMAT format) {
  using namespace mirel::io;
  mirel::Frame frame("ImgImageFileInfo");
  try {
    Opened in;
    if (!OpenForReading(frame, path, format, in)) return;
    if (width != nullptr) *width = in.header.width;
    if (height != nullptr) *height = in.header.height;
    if (type != nullptr) {
      *type = in.header.kind == Kind::kGrey8    ? E_IMAGE_TYPE_BW8
              : in.header.kind == Kind::kGrey16 ? E_IMAGE_TYPE_BW16
                                                : E_IMAGE_TYPE_C24;
    }
  } catch (const std::bad_alloc&) {
    frame.Fail(E_ERROR_OUT_OF_MEMORY);
  }
}

E_IMAGE_FILE_FORMAT ImgImageFileFormat(const char* path) {
  return path == nullptr ? E_IMAGE_FILE_AUTO : mirel::io::FormatOfPath(path);
}

bool ImgImageFileFormatAvailable(E_IMAGE_FILE_FORMAT format) {
  switch (format) {
    case E_IMAGE_FILE_PGM:
    case E_IMAGE_FILE_PPM: return true;
    case E_IMAGE_FILE_PNG: return MIREL_IO_WITH_PNG != 0;
    case E_IMAGE_FILE_JPEG: return MIREL_IO_WITH_JPEG != 0;
    case E_IMAGE_FILE_TIFF: return MIREL_IO_WITH_TIFF != 0;
    default: return false;
  }
}
