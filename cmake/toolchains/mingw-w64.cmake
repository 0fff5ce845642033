# Cross build for 64-bit Windows with Debian's MinGW-w64 (POSIX thread model,
# so that std::thread and std::mutex are there). Test programs run under
# Wine through CTest:
#   cmake -S . -B build-windows \
#     -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64.cmake \
#     -DMIREL_GTEST_SOURCE=/usr/src/googletest
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The programs load libstdc++, libgcc and libwinpthread from the
# compiler's own folders; Wine finds them through WINEPATH. Wine's own
# messages are silenced unless WINEDEBUG is set already.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libstdc++-6.dll
                OUTPUT_VARIABLE _mirel_stdcxx OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libwinpthread-1.dll
                OUTPUT_VARIABLE _mirel_pthread OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(_mirel_stdcxx_dir "${_mirel_stdcxx}" DIRECTORY)
get_filename_component(_mirel_pthread_dir "${_mirel_pthread}" REALPATH)
get_filename_component(_mirel_pthread_dir "${_mirel_pthread_dir}" DIRECTORY)
if(DEFINED ENV{WINEDEBUG})
  set(_mirel_winedebug "$ENV{WINEDEBUG}")
else()
  set(_mirel_winedebug "-all")
endif()
# Wine's Windows folders live in the build tree (tools/windows.sh makes them
# before the tests run side by side) unless WINEPREFIX names others.
if(DEFINED ENV{WINEPREFIX})
  set(_mirel_wineprefix "$ENV{WINEPREFIX}")
else()
  set(_mirel_wineprefix "${CMAKE_BINARY_DIR}/wine")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR
    env "WINEPATH=${_mirel_stdcxx_dir}\\;${_mirel_pthread_dir}" "WINEDEBUG=${_mirel_winedebug}"
        "WINEPREFIX=${_mirel_wineprefix}" wine)
