// Fuzz target for the exported operations (see fuzz_ops.h for what an input
// makes and what is checked). An input starts with the hash of an entry's
// name (any other value picks an entry by its remainder), then a byte that
// picks the path (scalar, or fast paths up to an instruction-set level),
// the thread's overlay colour, and the arguments.
//
// With MIREL_FUZZ_OPS_SEEDS=<dir> in the environment the program writes two
// seeds for every entry into <dir> and exits: the bounded runs start from
// them, so each entry is called from the first second on.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

#include "fuzz_ops.h"
#include "mirel/foundation/testing_internal.h"

namespace {

const fuzzops::Entry& Pick(std::uint32_t id) {
  static const std::unordered_map<std::uint32_t, const fuzzops::Entry*> byId = [] {
    std::unordered_map<std::uint32_t, const fuzzops::Entry*> map;
    for (const fuzzops::Entry& e : fuzzops::Table()) {
      if (!map.emplace(e.id, &e).second) fuzzops::Fail("two entries share the hash of " + e.name);
    }
    return map;
  }();
  const auto found = byId.find(id);
  if (found != byId.end()) return *found->second;
  return fuzzops::Table()[id % fuzzops::Table().size()];
}

void WriteSeeds(const char* dir) {
  std::uint32_t state = 12345;
  for (const fuzzops::Entry& e : fuzzops::Table()) {
    for (int k = 0; k < 2; ++k) {
      std::string bytes;
      for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<char>(e.id >> (8 * i)));
      const int tail = k == 0 ? 24 : 96;
      for (int i = 0; i < tail; ++i) {
        state = state * 1103515245u + 12345u;
        bytes.push_back(static_cast<char>(state >> 16));
      }
      const std::string path = std::string(dir) + "/" + std::to_string(e.id) + "_" + std::to_string(k);
      std::FILE* f = std::fopen(path.c_str(), "wb");
      if (f == nullptr) fuzzops::Fail("cannot write " + path);
      std::fwrite(bytes.data(), 1, bytes.size(), f);
      std::fclose(f);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  if (const char* dir = std::getenv("MIREL_FUZZ_OPS_SEEDS")) {
    WriteSeeds(dir);
    std::printf("%zu entries\n", fuzzops::Table().size());
    std::exit(0);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzops::Input in(data, size);
  const fuzzops::Entry& entry = Pick(in.U32());
  // Scalar, or the fast paths capped at one of the levels this processor
  // has; the byte's top bit forces the streaming loops' Intel form on, on
  // any processor.
  const int levels = mirel::testing::DetectedSimdLevel();
  const int pathByte = in.Byte();
  const int path = pathByte % (levels + 2);
  mirel::testing::SetFastPaths(path == 0 ? 0 : 1);
  mirel::testing::SetSimdLimit(path <= 1 ? -1 : path - 1);
  mirel::testing::SetIntelStreaming((pathByte & 0x80) != 0 ? 1 : -1);
  ImgSetOverlayColor(EC24(in.Byte(), in.Byte(), in.Byte()));
  {
    fuzzops::Ctx ctx(in, entry);
    entry.run(ctx);
  }
  mirel::testing::SetFastPaths(1);
  mirel::testing::SetSimdLimit(-1);
  mirel::testing::SetIntelStreaming(-1);
  EOk();
  return 0;
}
