#!/usr/bin/env bash
# Builds the benchmark suite and prints the table: each operation beside its
# nearest OpenCV equivalent on a 2448x2048 8-bit frame, single thread.
# Installs Google Benchmark and OpenCV when they are missing.
# Usage: tools/bench.sh [benchmark flags...]   e.g. --benchmark_filter='ImgOper|ImgCopy'
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/deps.sh libbenchmark-dev libopencv-dev python3
build=build-bench
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DMIREL_BUILD_TESTS=OFF -DMIREL_BUILD_FUZZ=OFF >/dev/null
cmake --build "$build" --target mirel_bench -j"$(nproc)" >/dev/null
python3 tools/bench_table.py "$build/bench/mirel_bench" "$@"
