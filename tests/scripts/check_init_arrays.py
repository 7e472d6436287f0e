#!/usr/bin/env python3
"""The shared object's init and fini arrays hold exactly one entry each
(my_init and my_fini), and there is no DT_INIT or DT_FINI."""
import re
import subprocess
import sys

lib = sys.argv[1]
dyn = subprocess.run(["readelf", "-d", lib], capture_output=True, text=True, check=True).stdout
sizes = dict(re.findall(r"\((INIT_ARRAYSZ|FINI_ARRAYSZ)\)\s+(\d+)", dyn))
problems = []
for key in ("INIT_ARRAYSZ", "FINI_ARRAYSZ"):
    if sizes.get(key) != "8":
        problems.append(f"{key} is {sizes.get(key)}, expected one 8-byte entry")
for tag in ("(INIT)", "(FINI)"):
    if tag in dyn:
        problems.append(f"unexpected {tag} entry")
for p in problems:
    print(p)
print("init/fini arrays:", "FAIL" if problems else "ok")
sys.exit(1 if problems else 0)
