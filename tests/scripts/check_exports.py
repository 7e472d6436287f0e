#!/usr/bin/env python3
"""The shared object's dynamic symbol table against the lists: every exported
name must be a documented one (allowed.txt), and exactly the built set
(expected.txt) must be exported: nothing missing, nothing extra."""
import subprocess
import sys

lib, expected_file, allowed_file = sys.argv[1:4]
out = subprocess.run(["nm", "-D", "--defined-only", lib], capture_output=True, text=True, check=True).stdout
exported = set()
for line in out.splitlines():
    parts = line.split()
    if len(parts) < 3 or parts[1] == "A":  # the version node itself
        continue
    exported.add(parts[2].split("@")[0])

def read(path):
    return {l.strip() for l in open(path) if l.strip()}

expected, allowed = read(expected_file), read(allowed_file)
undocumented = sorted(exported - allowed)
missing = sorted(expected - exported)
extra = sorted(exported - expected)
for title, names in (("undocumented exports", undocumented), ("missing exports", missing),
                     ("exported but not listed as built", extra)):
    if names:
        print(f"{title} ({len(names)}):")
        for n in names[:50]:
            print("  " + n)
bad = bool(undocumented or missing or extra)
print(f"{len(exported)} exported names checked: {'FAIL' if bad else 'ok'}")
sys.exit(1 if bad else 0)
