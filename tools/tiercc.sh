#!/usr/bin/env bash
# Compiles tier sources once per tier with the library's flags, to check them
# before the build picks them up. Arguments: files; TIERS (default all five)
# and BUILD (a configured build directory, for generated headers) may be set.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD:-$root/build}
declare -A flags=([m7]="-msse3" [u8]="-mssse3" [n8]="-mssse3 -mtune=bonnell" [y8]="-msse4.1" [e9]="-mavx")
for f in "$@"; do
  for t in ${TIERS:-m7 u8 n8 y8 e9}; do
    g++ -std=c++20 -O2 -fPIC -mno-fma -ffp-contract=off -fno-fast-math -fvisibility=hidden -fno-exceptions \
      -fno-rtti -Wall -Wextra ${flags[$t]} -DORV_TIER_${t^^} -I"$root/include" -I"$build/include" -I"$root" \
      -c "$f" -o /dev/null
  done
done
