#!/usr/bin/env python3
"""Pairs the medians of orv_bench's <function>/<tier>/<lib|plain>/<len> runs
into a table: GB/s of the library and of the plain loop of the same tier,
their ratio, and the library against the m7 plain loop.

  orv_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
            --benchmark_out=run.json --benchmark_out_format=json
  bench/ratios.py run.json"""
import json
import sys

runs = json.load(open(sys.argv[1]))["benchmarks"]
median = {}
for r in runs:
    if r.get("aggregate_name") != "median" or r["run_name"].count("/") != 3:
        continue
    fn, tier, kind, n = r["run_name"].split("/")
    median[(fn, tier, kind, int(n))] = r["bytes_per_second"] / 1e9

print(f"{'function':18} {'tier':4} {'len':>9} {'lib GB/s':>9} {'plain GB/s':>10} {'ratio':>6} {'vs m7 plain':>11}")
for (fn, tier, kind, n) in sorted(median, key=lambda k: (k[0], k[3], k[1])):
    if kind != "lib":
        continue
    lib = median[(fn, tier, "lib", n)]
    plain = median.get((fn, tier, "plain", n))
    m7 = median.get((fn, "m7", "plain", n))
    ratio = f"{lib / plain:6.2f}" if plain else "     -"
    vs = f"{lib / m7:11.2f}" if m7 else "          -"
    print(f"{fn:18} {tier:4} {n:9d} {lib:9.2f} {plain or 0:10.2f} {ratio} {vs}")
