// TIFF through libtiff, over the caller's open file. libtiff reports errors
// by return values; its messages go to handlers of this codec's own (where
// the libtiff in use lets them be set per file), so nothing is printed.
#include <tiffio.h>

#include <cstdio>
#include <new>
#include <vector>

#include "mirel/io/image_file_internal.h"

namespace mirel {
namespace io {
namespace {

// ---------------------------------------------------------------- stream

std::FILE* AsFile(thandle_t handle) { return static_cast<std::FILE*>(handle); }

tmsize_t ReadProc(thandle_t handle, void* buffer, tmsize_t size) {
  return static_cast<tmsize_t>(std::fread(buffer, 1, static_cast<std::size_t>(size), AsFile(handle)));
}
tmsize_t WriteProc(thandle_t handle, void* buffer, tmsize_t size) {
  return static_cast<tmsize_t>(std::fwrite(buffer, 1, static_cast<std::size_t>(size), AsFile(handle)));
}

#if defined(_WIN32)
int SeekTo(std::FILE* f, long long offset, int whence) { return _fseeki64(f, offset, whence); }
long long Tell(std::FILE* f) { return _ftelli64(f); }
#else
int SeekTo(std::FILE* f, long long offset, int whence) { return fseeko(f, static_cast<off_t>(offset), whence); }
long long Tell(std::FILE* f) { return static_cast<long long>(ftello(f)); }
#endif

toff_t SeekProc(thandle_t handle, toff_t offset, int whence) {
  if (SeekTo(AsFile(handle), static_cast<long long>(offset), whence) != 0) return static_cast<toff_t>(-1);
  return static_cast<toff_t>(Tell(AsFile(handle)));
}
// The file belongs to the caller, who closes it.
int CloseProc(thandle_t) { return 0; }
toff_t SizeProc(thandle_t handle) {
  std::FILE* f = AsFile(handle);
  const long long here = Tell(f);
  if (here < 0 || SeekTo(f, 0, SEEK_END) != 0) return 0;
  const long long end = Tell(f);
  SeekTo(f, here, SEEK_SET);
  return end < 0 ? 0 : static_cast<toff_t>(end);
}
int MapProc(thandle_t, void**, toff_t*) { return 0; }
void UnmapProc(thandle_t, void*, toff_t) {}

#if TIFFLIB_VERSION >= 20221213
// Records that libtiff met an error and keeps the message from stderr.
int OnError(TIFF*, void* failed, const char*, const char*, va_list) {
  *static_cast<bool*>(failed) = true;
  return 1;
}
int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }
#endif

// Opens `file` with libtiff; "r" or "w" (memory mapping is off either way).
TIFF* Open(std::FILE* file, const char* mode, bool* failed) {
#if TIFFLIB_VERSION >= 20221213
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, failed);
  TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, nullptr);
  TIFF* tif = TIFFClientOpenExt("image", mode, file, ReadProc, WriteProc, SeekProc, CloseProc, SizeProc, MapProc,
                                UnmapProc, options);
  TIFFOpenOptionsFree(options);
  return tif;
#else
  (void)failed;
  return TIFFClientOpen("image", mode, file, ReadProc, WriteProc, SeekProc, CloseProc, SizeProc, MapProc, UnmapProc);
#endif
}

// ---------------------------------------------------------------- codecs

class TiffDecoder : public Decoder {
 public:
  explicit TiffDecoder(std::FILE* file) : file_(file) {}
  ~TiffDecoder() override {
    if (tif_ != nullptr) TIFFClose(tif_);
  }
  TiffDecoder(const TiffDecoder&) = delete;
  TiffDecoder& operator=(const TiffDecoder&) = delete;

  E_ERRORS ReadHeader(Header* header) override {
    tif_ = Open(file_, "rm", &failed_);
    if (tif_ == nullptr) return E_ERROR_FILE_READ;
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 0, samples = 0, planar = 0, format = 0, photometric = 0;
    if (TIFFGetField(tif_, TIFFTAG_IMAGEWIDTH, &width) != 1 || TIFFGetField(tif_, TIFFTAG_IMAGELENGTH, &height) != 1)
      return E_ERROR_IMAGE_FILE_HEADER;
    TIFFGetFieldDefaulted(tif_, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tif_, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetFieldDefaulted(tif_, TIFFTAG_PLANARCONFIG, &planar);
    TIFFGetFieldDefaulted(tif_, TIFFTAG_SAMPLEFORMAT, &format);
    if (TIFFGetField(tif_, TIFFTAG_PHOTOMETRIC, &photometric) != 1)
      photometric = samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    if (width < 1 || height < 1 || width > 0x7fffffffu || height > 0x7fffffffu) return E_ERROR_IMAGE_FILE_HEADER;
    if (TIFFIsTiled(tif_) || format != SAMPLEFORMAT_UINT) return E_ERROR_BAD_PIXEL_TYPE;
    if (samples == 1 && (bits == 8 || bits == 16) &&
        (photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE)) {
      header->kind = bits == 16 ? Kind::kGrey16 : Kind::kGrey8;
      invert_ = photometric == PHOTOMETRIC_MINISWHITE;
    } else if (samples == 3 && bits == 8 && photometric == PHOTOMETRIC_RGB && planar == PLANARCONFIG_CONTIG) {
      header->kind = Kind::kRgb8;
    } else {
      return E_ERROR_BAD_PIXEL_TYPE;
    }
    header->width = static_cast<int>(width);
    header->height = static_cast<int>(height);
    if (static_cast<std::uint64_t>(TIFFScanlineSize64(tif_)) != RowBytes(header->kind, header->width))
      return E_ERROR_BAD_PIXEL_TYPE;
    header_ = *header;
    return failed_ ? E_ERROR_FILE_READ : E_OK;
  }

  E_ERRORS ReadPixels(unsigned char** rows) override {
    for (int y = 0; y < header_.height; ++y) {
      if (TIFFReadScanline(tif_, rows[y], static_cast<std::uint32_t>(y), 0) < 0 || failed_) return E_ERROR_FILE_READ;
      if (!invert_) continue;
      if (header_.kind == Kind::kGrey16) {
        for (int x = 0; x < header_.width; ++x) {
          std::uint16_t v;
          std::memcpy(&v, rows[y] + 2 * x, 2);
          v = static_cast<std::uint16_t>(65535 - v);
          std::memcpy(rows[y] + 2 * x, &v, 2);
        }
      } else {
        for (int x = 0; x < header_.width; ++x) rows[y][x] = static_cast<unsigned char>(255 - rows[y][x]);
      }
    }
    return E_OK;
  }

 private:
  std::FILE* file_;
  TIFF* tif_ = nullptr;
  bool failed_ = false;
  bool invert_ = false;
  Header header_;
};

class TiffEncoder : public Encoder {
 public:
  explicit TiffEncoder(std::FILE* file) : file_(file) {}
  // Frees what libtiff holds without writing anything more: after a failure
  // the caller removes the file.
  ~TiffEncoder() override {
    if (tif_ != nullptr) TIFFCleanup(tif_);
  }
  TiffEncoder(const TiffEncoder&) = delete;
  TiffEncoder& operator=(const TiffEncoder&) = delete;

  E_ERRORS Begin(const Header& header, int) override {
    tif_ = Open(file_, "wm", &failed_);
    if (tif_ == nullptr) return E_ERROR_FILE_WRITE;
    const bool colour = header.kind == Kind::kRgb8;
    // Deflate with horizontal differencing where this libtiff has it.
    const bool deflate = TIFFIsCODECConfigured(COMPRESSION_ADOBE_DEFLATE) != 0;
    const bool ok =
        TIFFSetField(tif_, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(header.width)) == 1 &&
        TIFFSetField(tif_, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(header.height)) == 1 &&
        TIFFSetField(tif_, TIFFTAG_BITSPERSAMPLE, static_cast<std::uint16_t>(8 * SampleBytes(header.kind))) == 1 &&
        TIFFSetField(tif_, TIFFTAG_SAMPLESPERPIXEL, static_cast<std::uint16_t>(Channels(header.kind))) == 1 &&
        TIFFSetField(tif_, TIFFTAG_SAMPLEFORMAT, static_cast<std::uint16_t>(SAMPLEFORMAT_UINT)) == 1 &&
        TIFFSetField(tif_, TIFFTAG_PHOTOMETRIC,
                     static_cast<std::uint16_t>(colour ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK)) == 1 &&
        TIFFSetField(tif_, TIFFTAG_PLANARCONFIG, static_cast<std::uint16_t>(PLANARCONFIG_CONTIG)) == 1 &&
        TIFFSetField(tif_, TIFFTAG_COMPRESSION,
                     static_cast<std::uint16_t>(deflate ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE)) == 1 &&
        (!deflate || TIFFSetField(tif_, TIFFTAG_PREDICTOR, static_cast<std::uint16_t>(PREDICTOR_HORIZONTAL)) == 1) &&
        TIFFSetField(tif_, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tif_, 0)) == 1;
    if (!ok || failed_) return E_ERROR_FILE_WRITE;
    // libtiff may change the bytes it is given (byte order, prediction), so
    // each row goes through a buffer of this codec's own.
    row_.resize(RowBytes(header.kind, header.width));
    return E_OK;
  }

  E_ERRORS WriteRow(const unsigned char* row) override {
    std::memcpy(row_.data(), row, row_.size());
    if (TIFFWriteScanline(tif_, row_.data(), static_cast<std::uint32_t>(next_++), 0) != 1 || failed_)
      return E_ERROR_FILE_WRITE;
    return E_OK;
  }

  E_ERRORS Finish() override {
    if (TIFFFlush(tif_) != 1 || failed_) return E_ERROR_FILE_WRITE;
    return FlushCode(file_);
  }

 private:
  std::FILE* file_;
  TIFF* tif_ = nullptr;
  bool failed_ = false;
  std::vector<unsigned char> row_;
  int next_ = 0;
};

}  // namespace

std::unique_ptr<Decoder> MakeTiffDecoder(std::FILE* file) {
  return std::unique_ptr<Decoder>(new (std::nothrow) TiffDecoder(file));
}
std::unique_ptr<Encoder> MakeTiffEncoder(std::FILE* file) {
  return std::unique_ptr<Encoder>(new (std::nothrow) TiffEncoder(file));
}

}  // namespace io
}  // namespace mirel
