#!/usr/bin/env bash
# Installs what building and testing MirelImage needs, when it is missing.
# Usage: tools/deps.sh [extra Debian packages...]
set -euo pipefail
need=()
command -v cmake >/dev/null || need+=(cmake)
command -v g++ >/dev/null || need+=(g++)
command -v make >/dev/null || need+=(make)
command -v pkg-config >/dev/null || need+=(pkg-config)
[ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
# The codecs of the image-file component, Mirel::IO.
for pkg in libpng-dev libjpeg-dev libtiff-dev; do
  dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg")
done
# The Python module and its tests (pybind11, numpy, and dask with its
# distributed scheduler for the chunked runs), unless the build is
# asked to leave them out with MIREL_BUILD_PYTHON=OFF in the environment.
if [ "${MIREL_BUILD_PYTHON:-ON}" != "OFF" ]; then
  for pkg in pybind11-dev python3-dev python3-numpy python3-pytest python3-dask python3-distributed; do
    dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg")
  done
fi
for pkg in "$@"; do
  dpkg -s "$pkg" >/dev/null 2>&1 || need+=("$pkg")
done
if [ ${#need[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  echo "Installing: ${need[*]}"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}" >/dev/null
fi
