#!/usr/bin/python3
"""Writes the seed corpus: for every row of a harness's table one small input
whose last byte selects that row (the harness reads its choices from the end
of the input and its data from the front).

    make_seeds.py <build-dir>/tests/fuzz <corpus-dir>
"""
import os
import random
import subprocess
import sys

bindir, out = sys.argv[1], sys.argv[2]
for exe in sorted(os.listdir(bindir)):
    path = os.path.join(bindir, exe)
    if not exe.startswith("fuzz_") or not os.access(path, os.X_OK) or os.path.isdir(path):
        continue
    rows = subprocess.run([path], env=dict(os.environ, ORV_FUZZ_LIST="1"), capture_output=True,
                          text=True, check=True).stdout.split()
    rng = random.Random(exe)
    d = os.path.join(out, exe)
    os.makedirs(d, exist_ok=True)
    for i, name in enumerate(rows):
        body = bytes(rng.randrange(256) for _ in range(rng.randrange(16, 40)))
        with open(os.path.join(d, "row%03d_%s" % (i, name.split(":")[0])), "wb") as f:
            f.write(body + bytes([i]))
