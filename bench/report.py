#!/usr/bin/env python3
"""Tables of orv_bench's JSON output: the library's tiers against the plain
loops of the same tier and against the peers.

  orv_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \\
            --benchmark_out=run.json --benchmark_out_format=json
  bench/report.py run.json

Medians are used where the run has repetitions, single runs otherwise. A
name is split at "/" into its function (first part), its tier (m7 u8 n8 y8
e9), its kind (orv or lib; plain, also written plain_<tier>; a peer: libc,
fftw, or any other name) and its length or size, in any order, so that the
schemes of the different bench files all read alike:
Add/orv/e9/1000, sum_64f/e9/lib/1000, Copy/libc/memcpy/1000,
Exp/plain_e9/1000, fft_fwd_oop/fftw/measure/1024.

Functions that report bytes per second get a throughput table (GB/s, orv
against the plain loop of its tier, the m7 plain loop and the peer); the
others a time table (ns per call, the mflops counter where present, and the
time ratio orv/peer for each peer: below 1, orv is faster)."""
import json
import sys
from collections import defaultdict

TIERS = ["m7", "u8", "n8", "y8", "e9"]
OPTIONS = ("real_time", "process_time", "manual_time")
TO_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def parse(run_name):
    """(function, kind, tier or peer name, length) of one benchmark name; kind
    is orv, plain or peer."""
    parts = [p for p in run_name.split("/") if p not in OPTIONS and ":" not in p]
    fn, tier, kind, n, other = parts[0], None, None, 0, []
    for p in parts[1:]:
        if p in TIERS:
            tier = p
        elif p in ("orv", "lib"):
            kind = "orv"
        elif p == "plain":
            kind = "plain"
        elif p.startswith("plain_") and p[6:] in TIERS:
            kind, tier = "plain", p[6:]
        elif p.isdigit():
            n = int(p)
        else:
            other.append(p)
    if tier and kind in (None, "orv", "plain"):
        return fn, kind or "orv", tier, n
    return fn, "peer", "/".join(other) or "-", n


def load(path):
    runs = json.load(open(path))["benchmarks"]
    medians = any(r.get("aggregate_name") == "median" for r in runs)
    out = {}
    for r in runs:
        if medians and r.get("aggregate_name") != "median":
            continue
        if not medians and r.get("run_type", "iteration") != "iteration":
            continue
        if r.get("error_occurred"):
            continue
        name = r["run_name"] if "run_name" in r else r["name"]
        out[parse(name)] = r
    return out


def throughput(rows, fn):
    gbs = {k: r["bytes_per_second"] / 1e9 for k, r in rows.items() if k[0] == fn}
    peers = sorted({k[2] for k in gbs if k[1] == "peer"})
    head = f"{'function':18} {'tier':4} {'len':>9} {'orv GB/s':>9} {'plain':>8} {'orv/plain':>9} {'orv/m7 plain':>12}"
    for p in peers:
        head += f" {p[:12]:>12} {'orv/peer':>8}"
    print(head)
    for n in sorted({k[3] for k in gbs}):
        for t in TIERS:
            o = gbs.get((fn, "orv", t, n))
            if o is None:
                continue
            pl, m7 = gbs.get((fn, "plain", t, n)), gbs.get((fn, "plain", "m7", n))
            line = f"{fn:18} {t:4} {n:9d} {o:9.2f} " + (f"{pl:8.2f} {o / pl:9.2f}" if pl else f"{'-':>8} {'-':>9}")
            line += f" {o / m7:12.2f}" if m7 else f" {'-':>12}"
            for p in peers:
                v = gbs.get((fn, "peer", p, n))
                line += f" {v:12.2f} {o / v:8.2f}" if v else f" {'-':>12} {'-':>8}"
            print(line)


def times(rows, fn):
    ns = {k: r["cpu_time"] * TO_NS[r.get("time_unit", "ns")] for k, r in rows.items() if k[0] == fn}
    mflops = {k: r["mflops"] for k, r in rows.items() if k[0] == fn and "mflops" in r}
    peers = sorted({k[2] for k in ns if k[1] == "peer"})
    head = f"{'function':18} {'tier':4} {'N':>8} {'orv ns':>12}" + (f" {'mflops':>7}" if mflops else "")
    for p in peers:
        head += f" {p[:14] + ' ns':>17}" + (f" {'mflops':>7}" if mflops else "") + f" {'orv/' + p.split('/')[-1][:10]:>14}"
    print(head)
    for n in sorted({k[3] for k in ns}):
        tiers = [t for t in TIERS if (fn, "orv", t, n) in ns] or [None]
        for t in tiers:
            o = ns.get((fn, "orv", t, n))
            line = f"{fn:18} {t or '-':4} {n:8d} " + (f"{o:12.1f}" if o else f"{'-':>12}")
            if mflops:
                m = mflops.get((fn, "orv", t, n))
                line += f" {m:7.0f}" if m else f" {'-':>7}"
            for p in peers:
                v = ns.get((fn, "peer", p, n))
                line += f" {v:17.1f}" if v else f" {'-':>17}"
                if mflops:
                    m = mflops.get((fn, "peer", p, n))
                    line += f" {m:7.0f}" if m else f" {'-':>7}"
                line += f" {o / v:14.3g}" if o and v else f" {'-':>14}"
            print(line)


def main():
    rows = load(sys.argv[1])
    funcs = []
    for k in rows:
        if k[0] not in funcs:
            funcs.append(k[0])
    for fn in funcs:
        if any(k[0] == fn and "bytes_per_second" in r for k, r in rows.items()):
            throughput(rows, fn)
        else:
            times(rows, fn)
        print()


if __name__ == "__main__":
    main()
