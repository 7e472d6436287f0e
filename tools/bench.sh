#!/usr/bin/env bash
# Builds and runs the benchmarks (with their peers). Arguments go to the
# benchmark program, e.g. --benchmark_filter=Add.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup-deps.sh libsleef-dev libopencv-dev
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DORV_BUILD_TESTS=OFF -DORV_BUILD_BENCH=ON >/dev/null
cmake --build build-bench -j "$(nproc)" --target orv_bench
build-bench/bench/orv_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true "$@"
