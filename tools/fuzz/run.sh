#!/usr/bin/env bash
# Bounded fuzz runs: vector file loading, then every exported operation.
# Usage: tools/fuzz/run.sh [build-dir]
# Runs the libFuzzer targets of a build made by tools/sanitize.sh when given
# its directory (CI does so: one sanitizer build serves the tests and the
# fuzzers); otherwise builds them with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer in build-fuzz. Each target runs for about a
# minute on its seed corpus. Skipped when clang or libFuzzer is missing.
# A longer local run of the operations (FUZZ_OPS_SECONDS=1800, say, with
# FUZZ_TIMEOUT=60 on a busy machine) is the robustness worker's command; see
# the README.
set -euo pipefail
cd "$(dirname "$0")/../.."

build="${1:-build-fuzz}"
if [ ! -f "$build/CMakeCache.txt" ]; then
  if ! command -v clang++ >/dev/null 2>&1; then
    echo "fuzz run skipped: clang++ not found"
    exit 0
  fi
  flags="-fsanitize=address,undefined,fuzzer-no-link -fno-omit-frame-pointer -fno-sanitize-recover=undefined"
  CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_SHARED_LIBS=OFF \
    -DMIREL_BUILD_TESTS=OFF -DMIREL_BUILD_BENCH=OFF -DMIREL_BUILD_EXAMPLES=OFF -DMIREL_BUILD_FUZZ=ON \
    -DMIREL_BUILD_PYTHON=OFF -DMIREL_BUILD_CLI=OFF -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" >/dev/null
fi
if ! grep -q '^MIREL_HAVE_LIBFUZZER:INTERNAL=1' "$build/CMakeCache.txt"; then
  echo "fuzz run skipped: libFuzzer not available to clang++"
  exit 0
fi
cmake --build "$build" --target mirel_fuzz_load mirel_fuzz_ops -j"$(nproc)" >/dev/null
target="$build/tools/fuzz/mirel_fuzz_load"

# fuzz NAME TARGET ARGS...: runs one target under the sanitizers, shows the
# end of its report and stops the script on a finding.
fuzz() {
  local name=$1 bin=$2
  shift 2
  set +e
  ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "$bin" -timeout="${FUZZ_TIMEOUT:-10}" -rss_limit_mb=2048 -print_final_stats=1 "$@" 2>&1 | tail -n 20
  local status=${PIPESTATUS[0]}
  set -e
  if [ "$status" -ne 0 ]; then
    echo "$name FAILED (status $status)"
    exit "$status"
  fi
  echo "$name passed"
}

corpus=$(mktemp -d)
trap 'rm -rf "$corpus"' EXIT
# Seeds: an empty file, an empty vector of each record type, short bodies.
printf ''                                      > "$corpus/empty"
printf 'E\x06\x01B\x00\x00\x00\x00'            > "$corpus/path0"
printf 'E\x06\x01B\x02\x00\x00\x00\x01\x00\x02\x00\xff\xff\x00\x80' > "$corpus/path2"
printf 'E\x07\x01C\x01\x00\x00\x00\x05\x00\x06\x00\xab\x00' > "$corpus/bw8"
printf 'E\x08\x01L\x01\x00\x00\x00\x05\x00\x06\x00\x01\x02\x03\x00' > "$corpus/c24"
printf 'E\x09\x01M\x01\x00\x00\x00\x01\x00\x00\x00\x02\x00\x00\x00\x00\x00\x80\x3f\xff\xff\xff\xff\x04\x00\x00\x00' > "$corpus/peak"
printf 'E\x0b\x01O\x01\x00\x00\x00\x09\x00\x0a\x00\xef\xbe' > "$corpus/bw16"
printf 'E\x09\x01M\xff\xff\xff\xff\x00\x00' > "$corpus/huge"
printf 'E\x06\x01B\x09\x00\x00\x00\x01\x00' > "$corpus/short"

fuzz "fuzz run" "$target" -max_total_time=40 "$corpus"

# The operations: two seeds for every table entry, written by the target
# itself, and the inputs kept in the tree (tools/fuzz/corpus/ops).
ops="$build/tools/fuzz/mirel_fuzz_ops"
seeds="$corpus/ops"
mkdir -p "$seeds"
MIREL_FUZZ_OPS_SEEDS="$seeds" "$ops"
fuzz "operation fuzz run" "$ops" -max_total_time="${FUZZ_OPS_SECONDS:-80}" "$seeds" tools/fuzz/corpus/ops
# Once more on images of one or two rows or columns up to 70000 pixels
# long, past 16-bit positions and 16.16 coordinates, the kept inputs too.
MIREL_FUZZ_OPS_WIDE=1 fuzz "wide-image operation fuzz run" "$ops" -max_total_time="${FUZZ_WIDE_SECONDS:-30}" "$seeds" \
  tools/fuzz/corpus/ops
