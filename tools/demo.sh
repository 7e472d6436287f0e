#!/usr/bin/env bash
# Builds the library and runs the demo: orvinfo, which shows the processor,
# the selected tier and what each jump index reaches.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DORV_BUILD_TESTS=OFF >/dev/null
cmake --build build -j "$(nproc)" --target orvinfo
build/orvinfo
