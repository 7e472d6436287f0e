#!/usr/bin/env bash
# Installs what building, testing and benchmarking orv need on Debian 12,
# only when something is missing. Extra package names may be passed.
set -euo pipefail
packages=(g++ gcc make cmake pkg-config python3 binutils libgtest-dev libgmock-dev libbenchmark-dev libfftw3-dev
  python3-numpy python3-scipy python3-dask python3-pytest pybind11-dev python3-dev
  qemu-user clang libclang-rt-14-dev netpbm alsa-utils "$@")
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if ((${#missing[@]})); then
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}"
fi
