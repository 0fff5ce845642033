#!/usr/bin/env bash
# Cross-builds the library, its tests and the demo for 64-bit Windows with
# MinGW-w64 and runs them under Wine. Debian has no MinGW-w64 build of
# libpng, libjpeg or libtiff, so the image-file component reads and writes
# PGM and PPM there, and the demo writes those. Installs the cross compiler,
# Wine and its fonts when missing.
# Usage: tools/windows.sh [build-dir [extra cmake options...]]
set -euo pipefail
cd "$(dirname "$0")/.."
need=()
command -v x86_64-w64-mingw32-g++-posix >/dev/null || need+=(g++-mingw-w64-x86-64)
command -v wine >/dev/null || need+=(wine)
[ -x /usr/lib/wine/wine64 ] || need+=(wine64)
[ -d /usr/share/wine/fonts ] && [ -n "$(ls -A /usr/share/wine/fonts)" ] || need+=(fonts-wine)
[ -d /usr/src/googletest ] || need+=(googletest)
if [ ${#need[@]} -gt 0 ]; then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${need[@]}" >/dev/null
fi
build="${1:-build-windows}"
[ $# -gt 0 ] && shift
mkdir -p "$build"
# Wine keeps its Windows folders inside the build directory; the first run
# makes them, before the tests start side by side.
export WINEPREFIX="$(cd "$build" && pwd)/wine"
export WINEDEBUG="${WINEDEBUG:--all}"
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  wineboot --init >/dev/null 2>&1
  wineserver -w
fi
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DMIREL_WERROR=ON \
  -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64.cmake \
  -DMIREL_GTEST_SOURCE=/usr/src/googletest \
  -DMIREL_BUILD_BENCH=OFF -DMIREL_BUILD_FUZZ=OFF -DMIREL_TEST_INSTALL=OFF \
  -DMIREL_BUILD_PYTHON=OFF -DMIREL_BUILD_CLI=OFF "$@" >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
