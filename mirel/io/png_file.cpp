// PNG through libpng. libpng reports errors by jumping back to the last
// setjmp; each method that calls it sets that point first and holds no
// object with a destructor, and the codec's destructor frees libpng's
// structures on every path.
#include <png.h>

#include <csetjmp>
#include <new>

#include "mirel/io/image_file_internal.h"

namespace mirel {
namespace io {
namespace {

// Errors jump back without printing; warnings are dropped.
[[noreturn]] void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void OnWarning(png_structp, png_const_charp) {}

class PngDecoder : public Decoder {
 public:
  explicit PngDecoder(std::FILE* file) : file_(file) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
  }
  ~PngDecoder() override { png_destroy_read_struct(&png_, &info_, nullptr); }
  PngDecoder(const PngDecoder&) = delete;
  PngDecoder& operator=(const PngDecoder&) = delete;

  E_ERRORS ReadHeader(Header* header) override {
    if (png_ == nullptr || info_ == nullptr) return E_ERROR_OUT_OF_MEMORY;
    if (setjmp(png_jmpbuf(png_))) return E_ERROR_FILE_READ;
    png_init_io(png_, file_);
    png_read_info(png_, info_);
    const png_uint_32 width = png_get_image_width(png_, info_);
    const png_uint_32 height = png_get_image_height(png_, info_);
    const int depth = png_get_bit_depth(png_, info_);
    const int type = png_get_color_type(png_, info_);
    if (width > 0x7fffffffu || height > 0x7fffffffu) return E_ERROR_IMAGE_FILE_HEADER;
    // Palette images become RGB and grey images of 1, 2 or 4 bits become
    // 8-bit grey; the transparency of either is dropped. Alpha channels and
    // 16-bit colour are not taken.
    switch (type) {
      case PNG_COLOR_TYPE_GRAY:
        if (depth < 8) png_set_expand_gray_1_2_4_to_8(png_);
        header->kind = depth == 16 ? Kind::kGrey16 : Kind::kGrey8;
        break;
      case PNG_COLOR_TYPE_PALETTE:
        png_set_palette_to_rgb(png_);
        if (png_get_valid(png_, info_, PNG_INFO_tRNS) != 0) png_set_strip_alpha(png_);
        header->kind = Kind::kRgb8;
        break;
      case PNG_COLOR_TYPE_RGB:
        if (depth != 8) return E_ERROR_BAD_PIXEL_TYPE;
        header->kind = Kind::kRgb8;
        break;
      default:
        return E_ERROR_BAD_PIXEL_TYPE;
    }
    if (depth == 16 && HostIsLittleEndian()) png_set_swap(png_);
    png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    header->width = static_cast<int>(width);
    header->height = static_cast<int>(height);
    if (png_get_rowbytes(png_, info_) != RowBytes(header->kind, header->width)) return E_ERROR_BAD_PIXEL_TYPE;
    return E_OK;
  }

  E_ERRORS ReadPixels(unsigned char** rows) override {
    if (setjmp(png_jmpbuf(png_))) return E_ERROR_FILE_READ;
    png_read_image(png_, rows);
    png_read_end(png_, nullptr);
    return E_OK;
  }

 private:
  std::FILE* file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

class PngEncoder : public Encoder {
 public:
  explicit PngEncoder(std::FILE* file) : file_(file) {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
  }
  ~PngEncoder() override { png_destroy_write_struct(&png_, &info_); }
  PngEncoder(const PngEncoder&) = delete;
  PngEncoder& operator=(const PngEncoder&) = delete;

  E_ERRORS Begin(const Header& header, int) override {
    if (png_ == nullptr || info_ == nullptr) return E_ERROR_OUT_OF_MEMORY;
    if (setjmp(png_jmpbuf(png_))) return E_ERROR_FILE_WRITE;
    png_init_io(png_, file_);
    png_set_IHDR(png_, info_, static_cast<png_uint_32>(header.width), static_cast<png_uint_32>(header.height),
                 header.kind == Kind::kGrey16 ? 16 : 8,
                 header.kind == Kind::kRgb8 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png_, info_);
    if (header.kind == Kind::kGrey16 && HostIsLittleEndian()) png_set_swap(png_);
    return E_OK;
  }

  E_ERRORS WriteRow(const unsigned char* row) override {
    if (setjmp(png_jmpbuf(png_))) return E_ERROR_FILE_WRITE;
    png_write_row(png_, row);
    return E_OK;
  }

  E_ERRORS Finish() override {
    if (setjmp(png_jmpbuf(png_))) return E_ERROR_FILE_WRITE;
    png_write_end(png_, info_);
    return FlushCode(file_);
  }

 private:
  std::FILE* file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

std::unique_ptr<Decoder> MakePngDecoder(std::FILE* file) {
  return std::unique_ptr<Decoder>(new (std::nothrow) PngDecoder(file));
}
std::unique_ptr<Encoder> MakePngEncoder(std::FILE* file) {
  return std::unique_ptr<Encoder>(new (std::nothrow) PngEncoder(file));
}

}  // namespace io
}  // namespace mirel
