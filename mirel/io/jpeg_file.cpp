// JPEG through libjpeg. libjpeg reports errors through error_exit, which
// jumps back to the setjmp of the method in progress; those methods hold no
// object with a destructor, and the codec's destructor releases libjpeg's
// memory on every path.
//
// A decoder that meets data it has to guess at (a file that ends early,
// corrupt entropy data) only warns and fills in grey; such a file is
// refused with 1103 rather than loaded with made-up pixels.
#include <cstdio>
// jpeglib.h needs FILE and size_t declared first.
#include <jpeglib.h>

#include <csetjmp>
#include <new>

#include "mirel/io/image_file_internal.h"

namespace mirel {
namespace io {
namespace {

struct ErrorJump {
  jpeg_error_mgr mgr;
  std::jmp_buf jump;
};

[[noreturn]] void OnError(j_common_ptr info) { std::longjmp(reinterpret_cast<ErrorJump*>(info->err)->jump, 1); }
// Messages are not printed; warnings are still counted in num_warnings.
void OnMessage(j_common_ptr) {}

void InitErrors(ErrorJump& err) {
  jpeg_std_error(&err.mgr);
  err.mgr.error_exit = OnError;
  err.mgr.output_message = OnMessage;
}

class JpegDecoder : public Decoder {
 public:
  explicit JpegDecoder(std::FILE* file) : file_(file) {
    InitErrors(err_);
    info_.err = &err_.mgr;
  }
  ~JpegDecoder() override {
    // Safe on a structure that creation never reached or left half made:
    // it frees only what libjpeg's memory manager holds.
    jpeg_destroy_decompress(&info_);
  }
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;

  E_ERRORS ReadHeader(Header* header) override {
    if (setjmp(err_.jump)) return E_ERROR_FILE_READ;
    jpeg_create_decompress(&info_);
    jpeg_stdio_src(&info_, file_);
    jpeg_read_header(&info_, TRUE);
    if (err_.mgr.num_warnings != 0) return E_ERROR_FILE_READ;
    if (info_.data_precision != 8) return E_ERROR_BAD_PIXEL_TYPE;
    if (info_.num_components == 1 && info_.jpeg_color_space == JCS_GRAYSCALE) {
      info_.out_color_space = JCS_GRAYSCALE;
      header->kind = Kind::kGrey8;
    } else if (info_.num_components == 3 && (info_.jpeg_color_space == JCS_YCbCr || info_.jpeg_color_space == JCS_RGB)) {
      info_.out_color_space = JCS_RGB;
      header->kind = Kind::kRgb8;
    } else {
      return E_ERROR_BAD_PIXEL_TYPE;
    }
    if (info_.image_width > 0x7fffffffu || info_.image_height > 0x7fffffffu) return E_ERROR_IMAGE_FILE_HEADER;
    header->width = static_cast<int>(info_.image_width);
    header->height = static_cast<int>(info_.image_height);
    return E_OK;
  }

  E_ERRORS ReadPixels(unsigned char** rows) override {
    if (setjmp(err_.jump)) return E_ERROR_FILE_READ;
    jpeg_start_decompress(&info_);
    if (info_.output_components != (info_.out_color_space == JCS_RGB ? 3 : 1)) return E_ERROR_BAD_PIXEL_TYPE;
    while (info_.output_scanline < info_.output_height)
      jpeg_read_scanlines(&info_, rows + info_.output_scanline, info_.output_height - info_.output_scanline);
    jpeg_finish_decompress(&info_);
    return err_.mgr.num_warnings != 0 ? E_ERROR_FILE_READ : E_OK;
  }

 private:
  std::FILE* file_;
  ErrorJump err_;
  jpeg_decompress_struct info_{};
};

class JpegEncoder : public Encoder {
 public:
  explicit JpegEncoder(std::FILE* file) : file_(file) {
    InitErrors(err_);
    info_.err = &err_.mgr;
  }
  ~JpegEncoder() override {
    // Safe on a structure that creation never reached or left half made:
    // it frees only what libjpeg's memory manager holds.
    jpeg_destroy_compress(&info_);
  }
  JpegEncoder(const JpegEncoder&) = delete;
  JpegEncoder& operator=(const JpegEncoder&) = delete;

  E_ERRORS Begin(const Header& header, int quality) override {
    if (setjmp(err_.jump)) return E_ERROR_FILE_WRITE;
    jpeg_create_compress(&info_);
    jpeg_stdio_dest(&info_, file_);
    info_.image_width = static_cast<JDIMENSION>(header.width);
    info_.image_height = static_cast<JDIMENSION>(header.height);
    info_.input_components = Channels(header.kind);
    info_.in_color_space = header.kind == Kind::kRgb8 ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&info_);
    jpeg_set_quality(&info_, quality, TRUE);
    jpeg_start_compress(&info_, TRUE);
    return E_OK;
  }

  E_ERRORS WriteRow(const unsigned char* row) override {
    if (setjmp(err_.jump)) return E_ERROR_FILE_WRITE;
    // libjpeg reads the row and never writes it.
    JSAMPROW rows[1] = {const_cast<JSAMPROW>(row)};
    jpeg_write_scanlines(&info_, rows, 1);
    return E_OK;
  }

  E_ERRORS Finish() override {
    if (setjmp(err_.jump)) return E_ERROR_FILE_WRITE;
    jpeg_finish_compress(&info_);
    return FlushCode(file_);
  }

 private:
  std::FILE* file_;
  ErrorJump err_;
  jpeg_compress_struct info_{};
};

}  // namespace

std::unique_ptr<Decoder> MakeJpegDecoder(std::FILE* file) {
  return std::unique_ptr<Decoder>(new (std::nothrow) JpegDecoder(file));
}
std::unique_ptr<Encoder> MakeJpegEncoder(std::FILE* file) {
  return std::unique_ptr<Encoder>(new (std::nothrow) JpegEncoder(file));
}

}  // namespace io
}  // namespace mirel
