#!/usr/bin/env bash
# Builds and runs the whole test suite. Arguments: build directory (default
# build-test), then extra CMake options (e.g. -DORV_SANITIZE=ON). The Python
# package and its tests are part of the plain build.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-test}
shift || true
tools/setup-deps.sh
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DORV_BUILD_TESTS=ON -DORV_PYTHON=ON "$@" >/dev/null
cmake --build "$dir" -j "$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
