#!/usr/bin/env python3
"""The scalar math names of the shared object: exported under their own
version node, and every call of the library's own code to them bound inside
the library (no dynamic relocation names them)."""
import re
import subprocess
import sys

lib, names_file = sys.argv[1:3]
names = [l.strip() for l in open(names_file) if l.strip() and not l.startswith("#")]
dyn = subprocess.run(["readelf", "--dyn-syms", "-W", lib], capture_output=True, text=True, check=True).stdout
relocs = subprocess.run(["readelf", "-rW", lib], capture_output=True, text=True, check=True).stdout
problems = []
for n in names:
    if not re.search(r"\sUND\s" + re.escape(n) + r"\b", dyn) and \
       not re.search(r"\s" + re.escape(n) + r"@@ORV_MATH_7\.0$", dyn, re.M):
        problems.append(f"{n} is not exported as {n}@@ORV_MATH_7.0")
for n in ("cos", "sin", "log", "sqrt"):
    if re.search(r"\s" + re.escape(n) + r"(@\S*)?\s*\+", relocs):
        problems.append(f"a dynamic relocation refers to {n}: the library's own calls must bind inside it")
for p in problems:
    print(p)
print("scalar math binding:", "FAIL" if problems else "ok")
sys.exit(1 if problems else 0)
