#!/usr/bin/env bash
# Builds MirelImage and its tests (warnings are errors) and runs them.
# Usage: tools/test.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/deps.sh libtinyxml2-dev
build="${1:-build}"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DMIREL_WERROR=ON >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
