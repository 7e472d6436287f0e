#!/usr/bin/env bash
# libFuzzer harnesses of tests/fuzz, built with clang 14 and AddressSanitizer +
# UndefinedBehaviorSanitizer over the whole library.
#
#   tools/fuzz.sh                       list the harnesses
#   tools/fuzz.sh build                 configure and build them
#   tools/fuzz.sh ci                    build, check every exported name has a
#                                       row, run each harness FUZZ_SECONDS (20)
#                                       on a copy of its seed corpus
#   tools/fuzz.sh run <harness> [secs]  a long run (default 600 s) on a
#                                       working corpus under the build dir
#
# Environment: FUZZ_BUILD_DIR (build-fuzz), FUZZ_SECONDS, FUZZ_OPT (the
# optimisation of the whole build: -O0, as a cold build at -O2 takes about four
# times as long; the sanitizers see more at -O0).
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=${FUZZ_BUILD_DIR:-build-fuzz}
case $build in /*) ;; *) build=$root/$build ;; esac
opt=${FUZZ_OPT:--O0}
secs=${FUZZ_SECONDS:-20}
opts=(-rss_limit_mb=4096 -jobs=1 -workers=1 -print_final_stats=1)

harnesses() { ls tests/fuzz/fuzz_*.cpp | sed 's#.*/##; s#\.cpp$##'; }

build() {
  command -v clang++-14 >/dev/null || { echo "clang++-14 is needed (apt-get install clang-14 libclang-rt-14-dev)" >&2; exit 1; }
  local launcher=()
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  CC=clang-14 CXX=clang++-14 cmake -S "$root" -B "$build" -DORV_FUZZ=ON -DORV_BUILD_TESTS=OFF \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=$opt -gline-tables-only -DNDEBUG" \
    "-DCMAKE_C_FLAGS_RELWITHDEBINFO=$opt -gline-tables-only -DNDEBUG" "${launcher[@]}" >/dev/null
  cmake --build "$build" -j"${FUZZ_JOBS:-2}" --target fuzz_all -- -k
}

# Every name of frame/exports.tsv must be in some harness's table.
check_names() {
  local listed missing
  listed=$(for h in $(harnesses); do ORV_FUZZ_LIST=1 "$build/tests/fuzz/$h"; done | sed 's/:.*//' | sort -u)
  missing=$(grep -v '^#' frame/exports.tsv | cut -f1 | sort -u | comm -23 - <(echo "$listed"))
  if [ -n "$missing" ]; then
    echo "exported names no harness reaches:" >&2
    echo "$missing" >&2
    return 1
  fi
  echo "every exported name ($(grep -vc '^#' frame/exports.tsv)) has a harness row"
}

run() {  # harness seconds corpus-dir
  local h=$1 t=$2 dir=$3 seeds=tests/fuzz/corpus/$1
  mkdir -p "$dir"
  [ -d "$seeds" ] && cp -n "$seeds"/* "$dir"/ 2>/dev/null || true
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:allocator_may_return_null=1 \
  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    "$build/tests/fuzz/$h" "${opts[@]}" -max_total_time="$t" -artifact_prefix="$build/artifacts/$h-" "$dir"
}

case ${1:-list} in
  list) harnesses ;;
  build) build ;;
  ci)
    build
    check_names
    mkdir -p "$build/artifacts"
    for h in $(harnesses); do
      work=$(mktemp -d)
      echo "== $h (${secs} s)"
      # The harness's status decides, not the filter's (which may match
      # nothing).
      set +e
      run "$h" "$secs" "$work" 2>&1 | grep -E "^(#[0-9]+ *DONE|Done|==[0-9]+==ERROR|SUMMARY|orv fuzz failure|stat::number_of_executed_units)"
      status=${PIPESTATUS[0]}
      set -e
      rm -rf "$work"
      [ "$status" -eq 0 ] || { echo "$h failed; the input is in $build/artifacts" >&2; exit 1; }
    done
    ;;
  run)
    h=${2:?harness}
    mkdir -p "$build/artifacts"
    run "$h" "${3:-600}" "$build/corpus/$h"
    ;;
  *) echo "usage: $0 [list|build|ci|run <harness> [seconds]]" >&2; exit 2 ;;
esac
