#!/usr/bin/env bash
# Builds and runs the threshold demo: picks thresholds for an image with
# every selection mode, binarizes it and writes the source, a histogram plot
# and the binary image (into out/ unless --out DIR is given).
# Usage: tools/demo.sh [image.pgm|.ppm|.png|.jpg|.tif] [--out DIR]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bash "$root/tools/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$root/build" --target threshold_demo -j"$(nproc)" >/dev/null
exec "$root/build/examples/threshold_demo" "$@"
