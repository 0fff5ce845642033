#!/usr/bin/env bash
# Cross-builds the library and its tests for 64-bit ARM and runs the tests
# under qemu-aarch64. Installs the cross compiler and qemu when missing.
# Usage: tools/aarch64.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
need=()
command -v aarch64-linux-gnu-g++ >/dev/null || need+=(g++-aarch64-linux-gnu)
command -v qemu-aarch64 >/dev/null || need+=(qemu-user)
[ -d /usr/src/googletest ] || need+=(googletest)
if [ ${#need[@]} -gt 0 ]; then
  apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${need[@]}" >/dev/null
fi
build="${1:-build-aarch64}"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DMIREL_WERROR=ON \
  -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/aarch64-linux-gnu.cmake \
  -DMIREL_GTEST_SOURCE=/usr/src/googletest \
  -DMIREL_BUILD_BENCH=OFF -DMIREL_BUILD_EXAMPLES=OFF -DMIREL_BUILD_FUZZ=OFF -DMIREL_TEST_INSTALL=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
