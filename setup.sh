#!/usr/bin/env bash
# One entry point for a fresh Debian 12 machine:
#   ./setup.sh demo    installs what is missing, builds, runs the demo programs
#   ./setup.sh test    installs what is missing, builds, runs the whole test suite
#   ./setup.sh build   installs what is missing and builds
# Set ARKLIB_SANITIZE=1 to build into build-asan with AddressSanitizer and UBSan, or
# ARKLIB_SANITIZE=thread to build into build-tsan with ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")"
mode=${1:-test}

packages=(build-essential cmake pkg-config ccache libgtest-dev libgmock-dev libbenchmark-dev
          libopenblas-dev liblapack-dev libsuperlu-dev libfftw3-dev libqhull-dev libpng-dev libjpeg62-turbo-dev
          libcairo2-dev fonts-dejavu-core poppler-utils libxml2-utils
          libpcre2-dev zlib1g-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi

build=build; extra=()
if [ "${ARKLIB_SANITIZE:-0}" = 1 ]; then
  build=build-asan; extra=(-DARKLIB_SANITIZE=ON -DARKLIB_BENCH=OFF)
elif [ "${ARKLIB_SANITIZE:-0}" = thread ]; then
  build=build-tsan; extra=(-DARKLIB_SANITIZE=thread -DARKLIB_BENCH=OFF)
fi
jobs=$(nproc)
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DARKLIB_STRICT_LINK=ON "${extra[@]}"
cmake --build "$build" -j "$jobs"

case "$mode" in
  build) ;;
  demo) cmake --build "$build" --target demo ;;
  test) ctest --test-dir "$build" --output-on-failure -j "$jobs" ;;
  *) echo "usage: $0 demo|test|build" >&2; exit 2 ;;
esac
