// Fuzz target for reading vector files: the input is written to a file in a
// private temporary directory and loaded into each record vector. Loading
// must never crash, hang or leak; a file that loads without error must save
// back to exactly the bytes that were read.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "mirel/mirel.h"

namespace {

namespace fs = std::filesystem;

struct TempDir {
  fs::path dir;
  TempDir() {
    std::error_code ec;
    const fs::path base = fs::temp_directory_path(ec);
    for (unsigned int i = 0; i < 1000 && dir.empty(); ++i) {
      const fs::path candidate = base / ("mirel_fuzz_" + std::to_string(std::rand()) + "_" + std::to_string(i));
      if (fs::create_directory(candidate, ec)) dir = candidate;
    }
    if (dir.empty()) std::abort();
  }
  ~TempDir() {
    std::error_code ec;
    fs::remove_all(dir, ec);
  }
};

TempDir& Dir() {
  static TempDir dir;
  return dir;
}

std::vector<unsigned char> ReadAll(const std::string& path) {
  std::vector<unsigned char> bytes;
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (f == nullptr) std::abort();
  unsigned char buffer[4096];
  std::size_t got;
  while ((got = std::fread(buffer, 1, sizeof(buffer), f)) > 0) bytes.insert(bytes.end(), buffer, buffer + got);
  std::fclose(f);
  return bytes;
}

template <class V>
void LoadOne(const std::string& input, const std::string& output, const uint8_t* data, std::size_t size) {
  V v;
  v.Load(input.c_str());
  if (EGetError() != E_OK) return;
  using Record = std::remove_reference_t<decltype(*v.GetDataPtr())>;
  const std::size_t used = 8 + static_cast<std::size_t>(v.GetNumElements()) * sizeof(Record);
  if (used > size) std::abort();  // accepted more records than the file holds
  v.Save(output.c_str());
  if (EGetError() != E_OK) std::abort();
  const std::vector<unsigned char> back = ReadAll(output);
  if (back.size() != used || std::memcmp(back.data(), data, used) != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string input = (Dir().dir / "input.vec").string();
  const std::string output = (Dir().dir / "output.vec").string();
  std::FILE* f = std::fopen(input.c_str(), "wb");
  if (f == nullptr) std::abort();
  if (size != 0 && std::fwrite(data, 1, size, f) != size) std::abort();
  std::fclose(f);

  LoadOne<EPathVector>(input, output, data, size);
  LoadOne<EBW8PathVector>(input, output, data, size);
  LoadOne<EBW16PathVector>(input, output, data, size);
  LoadOne<EC24PathVector>(input, output, data, size);
  LoadOne<EPeaksVector>(input, output, data, size);

  // The 16-bit path form reads the same file.
  std::vector<unsigned short> wide(input.begin(), input.end());
  wide.push_back(0);
  EPathVector v;
  v.Load(wide.data());
  EOk();
  return 0;
}
