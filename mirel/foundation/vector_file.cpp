// Helpers of the vector file: the format table, opening by narrow and
// 16-bit paths, and the length of what is left in a file.
#include <cstdio>
#include <string>

#include "mirel/foundation/vector.h"

#if defined(_WIN32)
#include <cwchar>
#endif

namespace {

// Two bytes per record type, version first, type code after it, kept in
// writable data and read at each call. Slots: 0 path, 1 grey path, 2 colour
// path, 3 peak, 4 16-bit path.
unsigned char g_vector_file_formats[5][2] = {
    {0x01, 0x06},
    {0x01, 0x07},
    {0x01, 0x08},
    {0x01, 0x09},
    {0x01, 0x0B},
};

#if !defined(_WIN32)
// UTF-16 to UTF-8 for the narrow file calls; false on an unpaired surrogate.
bool ToUtf8(const unsigned short* path, std::string& out) {
  for (const unsigned short* p = path; *p != 0; ++p) {
    unsigned long cp = *p;
    if (cp >= 0xD800 && cp <= 0xDBFF) {
      const unsigned long low = p[1];
      if (low < 0xDC00 || low > 0xDFFF) return false;
      cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
      ++p;
    } else if (cp >= 0xDC00 && cp <= 0xDFFF) {
      return false;
    }
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  return true;
}
#endif

}  // namespace

namespace mirel {
namespace detail {

bool VectorFileHeader(int slot, unsigned char header[4]) {
  if (slot < 0 || slot >= 5) return false;
  const unsigned char version = g_vector_file_formats[slot][0];
  const unsigned char type = g_vector_file_formats[slot][1];
  header[0] = 0x45;
  header[1] = type;
  header[2] = version;
  header[3] = static_cast<unsigned char>(type ^ version ^ 0x45);
  return true;
}

std::FILE* OpenVectorFile(const char* path, const char* mode) {
  if (path == nullptr || *path == 0) return nullptr;
  return std::fopen(path, mode);
}

std::FILE* OpenVectorFile(const unsigned short* path, const char* mode) {
  if (path == nullptr || *path == 0) return nullptr;
#if defined(_WIN32)
  static_assert(sizeof(wchar_t) == sizeof(unsigned short), "16-bit wide characters");
  wchar_t wmode[4] = {0, 0, 0, 0};
  for (int i = 0; i < 3 && mode[i] != 0; ++i) wmode[i] = static_cast<wchar_t>(mode[i]);
  return _wfopen(reinterpret_cast<const wchar_t*>(path), wmode);
#else
  std::string narrow;
  try {
    if (!ToUtf8(path, narrow)) return nullptr;
  } catch (...) {
    return nullptr;
  }
  return std::fopen(narrow.c_str(), mode);
#endif
}

long long RemainingFileBytes(std::FILE* file) {
  const long here = std::ftell(file);
  if (here < 0) return -1;
  if (std::fseek(file, 0, SEEK_END) != 0) return -1;
  const long end = std::ftell(file);
  if (std::fseek(file, here, SEEK_SET) != 0) return -1;
  if (end < here) return -1;
  return static_cast<long long>(end) - here;
}

}  // namespace detail
}  // namespace mirel
