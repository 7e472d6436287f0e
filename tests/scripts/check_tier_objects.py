#!/usr/bin/env python3
"""Link checks over one tier's object files:
  - no weak definitions (a weak template or inline body could be merged with
    another tier's copy, compiled for a higher instruction set);
  - every exported (default-visibility) definition carries the tier prefix;
  - every undefined symbol is the tier's own, an allowed frame name, or a C,
    math or compiler runtime name;
  - no instruction above the tier's instruction set."""
import re
import subprocess
import sys

TIERS = ["m7", "u8", "n8", "y8", "e9"]
tier, objects = sys.argv[1], sys.argv[2:]
others = [t for t in TIERS if t != tier]

FRAME = {"orvMalloc", "orvFree", "orvGetMaxCacheSizeB", "ownGetReg", "orv_set_rc_ssx", "orv_set_cw_ssx", "ps_get_ssx",
         "ps_set_ssx", "orv_clear_ssx", "ownGetFeature", "orvGetStatusString", "cos", "sin", "log", "sqrt",
         "orv_isnan", "orv_finite", "orvJumpIndexForMergedLibs",
         "fft_fix_twiddle_table_32f", "fft_fix_twiddle_table_64f"}
RUNTIME = re.compile(r"^(mem(cpy|move|set|cmp)|str\w+|malloc|free|calloc|realloc|abort|exp|expl|logl|sqrtl|"
                     r"floor|ceil|fabs|nearbyint|lrint|__\w+|_GLOBAL_OFFSET_TABLE_|_Unwind_\w+|"
                     r"__errno_location|getenv|setenv|catopen|catgets|catclose|snprintf|fputs|stderr|time)$")

# Mnemonics above SSE3 (SSSE3) and above SSSE3 (SSE4.1/4.2).
SSSE3 = re.compile(r"^(pshufb|palignr|phaddw|phaddd|phaddsw|phsubw|phsubd|phsubsw|pabsb|pabsw|pabsd|"
                   r"pmaddubsw|pmulhrsw|psignb|psignw|psignd)$")
SSE41 = re.compile(r"^(pblendvb|pblendw|blendpd|blendps|blendvpd|blendvps|dppd|dpps|roundsd|roundss|roundpd|"
                   r"roundps|ptest|pmov[sz]x\w+|pminsb|pminsd|pminuw|pminud|pmaxsb|pmaxsd|pmaxuw|pmaxud|"
                   r"pinsrb|pinsrd|pinsrq|pextrb|pextrd|pextrq|insertps|extractps|mpsadbw|packusdw|pcmpeqq|"
                   r"pmuldq|pmulld|phminposuw|movntdqa|pcmpgtq|pcmpestri|pcmpestrm|pcmpistri|pcmpistrm|crc32\w*|"
                   r"popcnt)$")
MOVBE = re.compile(r"^movbe$")

def run(*args):
    return subprocess.run(args, capture_output=True, text=True, check=True).stdout

problems = []
for obj in objects:
    for line in run("nm", obj).splitlines():
        parts = line.split()
        if len(parts) == 2 and parts[0] == "U":
            name = parts[1]
            if any(name.startswith(t + "_") for t in others):
                problems.append(f"{obj}: calls another tier's {name}")
            elif not (name.startswith(tier + "_") or name in FRAME or RUNTIME.match(name)):
                problems.append(f"{obj}: undefined symbol {name} is not allowed in tier code")
        elif len(parts) == 3:
            kind, name = parts[1], parts[2]
            if kind in "WVwvu":
                problems.append(f"{obj}: weak definition {name}")
    # Exported definitions: global symbols that are not hidden.
    for line in run("readelf", "-sW", obj).splitlines():
        f = line.split()
        if len(f) >= 8 and f[4] == "GLOBAL" and f[5] == "DEFAULT" and f[6] != "UND":
            if not f[7].startswith(tier + "_"):
                problems.append(f"{obj}: exported name without the tier prefix: {f[7]}")
    # Instruction sets.
    for line in run("objdump", "-d", "--no-show-raw-insn", obj).splitlines():
        m = re.match(r"^\s+[0-9a-f]+:\s+(?:\{\w+\}\s+)?([a-z][a-z0-9.]*)", line)
        if not m:
            continue
        op = m.group(1)
        if tier != "e9" and op.startswith("v") and op not in ("verr", "verw"):
            problems.append(f"{obj}: VEX instruction in {tier}: {line.strip()}")
        if MOVBE.match(op):
            problems.append(f"{obj}: movbe occurs in no tier: {line.strip()}")
        if tier == "m7" and SSSE3.match(op):
            problems.append(f"{obj}: SSSE3 instruction in m7: {line.strip()}")
        if tier in ("m7", "u8", "n8") and SSE41.match(op):
            problems.append(f"{obj}: SSE4.1 instruction in {tier}: {line.strip()}")

for p in problems[:60]:
    print(p)
print(f"tier {tier}: {len(objects)} objects, {'FAIL' if problems else 'ok'}")
sys.exit(1 if problems else 0)
