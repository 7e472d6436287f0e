#!/usr/bin/env bash
# Turns the demo's output (build/orvdemo-out, from tools/demo.sh) into the
# small PNGs the README shows, with netpbm.
set -euo pipefail
cd "$(dirname "$0")/.."
in=${1:-build/orvdemo-out}
out=docs/img
mkdir -p "$out"
for f in input blur sharpen; do
  pamcut -left 200 -top 60 -width 256 -height 160 "$in/$f.ppm" | pnmtopng -compression 9 >"$out/demo-$f.png"
done
pamscale -width 256 "$in/disc-blur.pgm" | pnmtopng -compression 9 >"$out/demo-disc-blur.png"
pamscale -height 200 "$in/spectrogram.pgm" | pnmtopng -compression 9 >"$out/demo-spectrogram.png"
ls -l "$out"/demo-*.png
