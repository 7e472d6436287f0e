#!/usr/bin/env bash
# Builds the library and runs the demos: orvinfo, which shows the processor,
# the selected tier and what each jump index reaches; then orvdemo, which
# times image and sound steps against plain C and writes its results to
# build/orvdemo-out. Arguments are passed to orvdemo; without any, it filters
# a scene it renders and a sample sound from alsa-utils.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DORV_BUILD_TESTS=OFF >/dev/null
cmake --build build -j "$(nproc)" --target orvinfo orvdemo
build/orvinfo
echo
sample=/usr/share/sounds/alsa/Front_Center.wav
if [ $# -eq 0 ] && [ -r "$sample" ]; then
  set -- "$sample"
fi
build/orvdemo -o build/orvdemo-out "$@"
