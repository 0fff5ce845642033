// What only a Windows build has: the library as a DLL that exports its
// operations, and a per-thread error state without thread notices.
#if defined(_WIN32)

#include <windows.h>

#include <cwchar>
#include <string>
#include <thread>

#include "test_support.h"

namespace {

// The module that holds the code at `address`.
HMODULE ModuleOf(const void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<LPCWSTR>(address), &module);
  return module;
}

}  // namespace

#if !defined(MIREL_STATIC)

TEST(WindowsBuild, OperationsComeFromTheLibraryDll) {
  const HMODULE self = GetModuleHandleW(nullptr);
  for (const void* address : {reinterpret_cast<const void*>(&EOk), reinterpret_cast<const void*>(&EGetErrorTrace)}) {
    const HMODULE module = ModuleOf(address);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(module, self) << "linked into the test program instead of imported";
    wchar_t path[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameW(module, path, MAX_PATH), 0u);
    const wchar_t* name = std::wcsrchr(path, L'\\');
    EXPECT_EQ(std::wcsncmp(name ? name + 1 : path, L"libmirelimage", 13), 0);
  }
}

#endif  // !MIREL_STATIC

TEST(WindowsBuild, ErrorStateStaysPerThread) {
  // Threads started after the library was loaded get their own error state
  // and overlay colour, without any notice to the library.
  ESetError(E_ERROR_VOID_IMAGE);
  ETraceError("main");
  EGetTLSPtr()->OverlayColor = EC24(1, 2, 3);
  E_ERRORS seen = E_ERROR_INTERNAL;
  std::string trace;
  int colour = -1;
  std::thread worker([&] {
    seen = EGetError();
    ESetError(E_ERROR_SIZE_MISMATCH);
    ETraceError("worker");
    trace = EGetErrorTrace();
    const EC24 c = EGetTLSPtr()->OverlayColor;
    colour = c[0] | c[1] << 8 | c[2] << 16;
  });
  worker.join();
  EXPECT_EQ(seen, E_OK);
  EXPECT_EQ(trace, "worker");
  EXPECT_EQ(colour, 0);
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);
  EXPECT_STREQ(EGetErrorTrace(), "main");
  EXPECT_EQ(EGetTLSPtr()->OverlayColor[2], 3);
  EGetTLSPtr()->OverlayColor = EC24(0, 0, 0);
  EOk();
}

#endif  // _WIN32
