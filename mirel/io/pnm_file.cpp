// PGM and PPM: the portable grey and colour maps, plain (P2, P3) and raw
// (P5, P6). Samples wider than a byte are big-endian in raw files.
#include <climits>
#include <cstdio>
#include <new>
#include <vector>

#include "mirel/io/image_file_internal.h"

namespace mirel {
namespace io {
namespace {

bool IsSpace(int c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool IsDigit(int c) { return c >= '0' && c <= '9'; }

class PnmDecoder : public Decoder {
 public:
  PnmDecoder(std::FILE* file, bool colour) : file_(file), colour_(colour) {}

  E_ERRORS ReadHeader(Header* header) override {
    const int p = std::getc(file_);
    const int kind = std::getc(file_);
    if (p != 'P') return E_ERROR_IMAGE_FILE_HEADER;
    plain_ = kind == (colour_ ? '3' : '2');
    if (!plain_ && kind != (colour_ ? '6' : '5')) return E_ERROR_IMAGE_FILE_HEADER;
    long width = 0, height = 0;
    E_ERRORS code = E_OK;
    if ((code = HeaderNumber(&width)) != E_OK || (code = HeaderNumber(&height)) != E_OK ||
        (code = HeaderNumber(&maxval_)) != E_OK)
      return code;
    // A raw file has exactly one white-space byte between maxval and the data.
    if (!plain_) {
      const int c = std::getc(file_);
      if (c == EOF) return E_ERROR_FILE_READ;
      if (!IsSpace(c)) return E_ERROR_IMAGE_FILE_HEADER;
    }
    if (width < 1 || height < 1 || maxval_ < 1 || maxval_ > 65535) return E_ERROR_IMAGE_FILE_HEADER;
    if (colour_ && maxval_ > 255) return E_ERROR_BAD_PIXEL_TYPE;
    header->width = static_cast<int>(width);
    header->height = static_cast<int>(height);
    header->kind = colour_ ? Kind::kRgb8 : maxval_ > 255 ? Kind::kGrey16 : Kind::kGrey8;
    header_ = *header;
    // A raw file shorter than its pixels is refused before any memory is
    // taken for them.
    if (!plain_) {
      const long here = std::ftell(file_);
      if (here >= 0 && std::fseek(file_, 0, SEEK_END) == 0) {
        const long end = std::ftell(file_);
        const unsigned long long need =
            static_cast<unsigned long long>(RowBytes(header->kind, header->width)) * header->height;
        if (end >= here && static_cast<unsigned long long>(end - here) < need) return E_ERROR_FILE_READ;
        if (std::fseek(file_, here, SEEK_SET) != 0) return E_ERROR_FILE_READ;
      }
    }
    return E_OK;
  }

  E_ERRORS ReadPixels(unsigned char** rows) override {
    const int width = header_.width;
    const std::size_t samples = static_cast<std::size_t>(width) * Channels(header_.kind);
    const bool wide = header_.kind == Kind::kGrey16;
    for (int y = 0; y < header_.height; ++y) {
      unsigned char* row = rows[y];
      if (plain_) {
        for (std::size_t i = 0; i < samples; ++i) {
          long v = 0;
          if (DataNumber(&v) != E_OK) return E_ERROR_FILE_READ;
          if (!Store(row, i, v, wide)) return E_ERROR_FILE_READ;
        }
        continue;
      }
      const std::size_t bytes = samples * (wide ? 2 : 1);
      if (std::fread(row, 1, bytes, file_) != bytes) return E_ERROR_FILE_READ;
      for (std::size_t i = 0; i < samples; ++i) {
        const long v = wide ? (static_cast<long>(row[2 * i]) << 8) | row[2 * i + 1] : row[i];
        if (!Store(row, i, v, wide)) return E_ERROR_FILE_READ;
      }
    }
    return E_OK;
  }

 private:
  // Writes sample i of a row; false when the value passes maxval.
  bool Store(unsigned char* row, std::size_t i, long v, bool wide) const {
    if (v > maxval_) return false;
    if (wide) {
      const std::uint16_t s = static_cast<std::uint16_t>(v);
      std::memcpy(row + 2 * i, &s, 2);
    } else {
      row[i] = static_cast<unsigned char>(v);
    }
    return true;
  }

  // Skips white space and comments (from '#' to the end of the line).
  int SkipSpace() {
    int c = std::getc(file_);
    for (;;) {
      while (IsSpace(c)) c = std::getc(file_);
      if (c != '#') return c;
      while (c != '\n' && c != '\r' && c != EOF) c = std::getc(file_);
    }
  }

  // A decimal number of the header; the byte behind it is left unread.
  E_ERRORS HeaderNumber(long* value) {
    int c = SkipSpace();
    if (c == EOF) return E_ERROR_FILE_READ;
    if (!IsDigit(c)) return E_ERROR_IMAGE_FILE_HEADER;
    long v = 0;
    for (; IsDigit(c); c = std::getc(file_)) {
      v = v * 10 + (c - '0');
      if (v > INT_MAX) return E_ERROR_IMAGE_FILE_HEADER;
    }
    if (c != EOF) std::ungetc(c, file_);
    *value = v;
    return E_OK;
  }

  // A decimal sample of a plain file.
  E_ERRORS DataNumber(long* value) {
    int c = SkipSpace();
    if (!IsDigit(c)) return E_ERROR_FILE_READ;
    long v = 0;
    for (; IsDigit(c); c = std::getc(file_)) {
      v = v * 10 + (c - '0');
      if (v > 65535) return E_ERROR_FILE_READ;
    }
    if (c != EOF) std::ungetc(c, file_);
    *value = v;
    return E_OK;
  }

  std::FILE* file_;
  bool colour_;
  bool plain_ = false;
  long maxval_ = 0;
  Header header_;
};

class PnmEncoder : public Encoder {
 public:
  explicit PnmEncoder(std::FILE* file) : file_(file) {}

  E_ERRORS Begin(const Header& header, int) override {
    header_ = header;
    const char magic = header.kind == Kind::kRgb8 ? '6' : '5';
    const int maxval = header.kind == Kind::kGrey16 ? 65535 : 255;
    if (std::fprintf(file_, "P%c\n%d %d\n%d\n", magic, header.width, header.height, maxval) < 0)
      return E_ERROR_FILE_WRITE;
    if (header.kind == Kind::kGrey16) wide_.resize(RowBytes(header.kind, header.width));
    return E_OK;
  }

  E_ERRORS WriteRow(const unsigned char* row) override {
    const std::size_t bytes = RowBytes(header_.kind, header_.width);
    if (header_.kind == Kind::kGrey16) {
      for (int x = 0; x < header_.width; ++x) {
        std::uint16_t s;
        std::memcpy(&s, row + 2 * x, 2);
        wide_[2 * x] = static_cast<unsigned char>(s >> 8);
        wide_[2 * x + 1] = static_cast<unsigned char>(s);
      }
      row = wide_.data();
    }
    return std::fwrite(row, 1, bytes, file_) == bytes ? E_OK : E_ERROR_FILE_WRITE;
  }

  E_ERRORS Finish() override { return FlushCode(file_); }

 private:
  std::FILE* file_;
  Header header_;
  std::vector<unsigned char> wide_;
};

}  // namespace

std::unique_ptr<Decoder> MakePnmDecoder(std::FILE* file, bool colour) {
  return std::unique_ptr<Decoder>(new (std::nothrow) PnmDecoder(file, colour));
}
std::unique_ptr<Encoder> MakePnmEncoder(std::FILE* file) {
  return std::unique_ptr<Encoder>(new (std::nothrow) PnmEncoder(file));
}

}  // namespace io
}  // namespace mirel
