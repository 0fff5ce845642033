#!/usr/bin/env bash
# Builds the library, its tests and the fuzz targets once under
# AddressSanitizer and UndefinedBehaviorSanitizer, and runs the tests.
# With clang (installed when missing) the same build also holds the libFuzzer
# targets that tools/fuzz/run.sh runs; without it, g++ builds the tests alone.
# Usage: tools/sanitize.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
MIREL_BUILD_PYTHON=OFF bash tools/deps.sh clang libclang-rt-14-dev 2>/dev/null ||
  MIREL_BUILD_PYTHON=OFF bash tools/deps.sh
build="${1:-build-asan}"
san="-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined"
compiler=()
if command -v clang++ >/dev/null 2>&1; then
  compiler=(-DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang)
  # Instrumented for coverage-guided fuzzing too; the tests do not notice.
  fuzz_san="$san -fsanitize=fuzzer-no-link"
else
  fuzz_san="$san"
fi
cmake -S . -B "$build" "${compiler[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMIREL_WERROR=ON \
  -DBUILD_SHARED_LIBS=OFF -DCMAKE_CXX_FLAGS="$fuzz_san" \
  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
  -DMIREL_BUILD_BENCH=OFF -DMIREL_BUILD_EXAMPLES=OFF -DMIREL_BUILD_FUZZ=ON -DMIREL_TEST_INSTALL=OFF \
  -DMIREL_BUILD_PYTHON=OFF -DMIREL_BUILD_CLI=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"
ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
