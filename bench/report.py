#!/usr/bin/env python3
"""Table of the vector benchmarks from Google Benchmark's JSON output (run
with --benchmark_repetitions and --benchmark_out_format=json): median GB/s of
each library tier, of the same tier's plain loop, of the C library peer, and
the ratios orv/plain and orv/libc."""
import json
import sys
from collections import defaultdict

runs = json.load(open(sys.argv[1]))["benchmarks"]
gbs = {}
for r in runs:
    if r.get("aggregate_name") != "median":
        continue
    name = r["run_name"]  # Func/kind/tier/len/real_time
    parts = name.split("/")
    func, kind, who, n = parts[0], parts[1], parts[2], int(parts[3])
    gbs[(func, kind, who, n)] = r["bytes_per_second"] / 1e9

funcs = []
for k in gbs:
    if k[0] not in funcs:
        funcs.append(k[0])
peer = defaultdict(lambda: None)
for (f, kind, who, n), v in gbs.items():
    if kind == "libc":
        peer[(f, n)] = v
print(f"{'function':8} {'tier':4} {'len':>9} {'orv GB/s':>9} {'plain':>8} {'orv/plain':>9} {'libc':>8} {'orv/libc':>8}")
for f in funcs:
    for n in sorted({k[3] for k in gbs if k[0] == f}):
        for t in ["m7", "u8", "n8", "y8", "e9"]:
            o = gbs.get((f, "orv", t, n))
            p = gbs.get((f, "plain", t, n))
            if o is None:
                continue
            lc = peer[(f, n)]
            print(f"{f:8} {t:4} {n:>9} {o:9.2f} {p:8.2f} {o / p:9.2f} "
                  + (f"{lc:8.2f} {o / lc:8.2f}" if lc else f"{'':8} {'':8}"))
