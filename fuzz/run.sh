#!/usr/bin/env bash
# Builds the fuzz targets with clang, AddressSanitizer and UndefinedBehaviorSanitizer, and runs
# each for a bounded time over its committed seed corpus (new inputs go to a scratch directory,
# the committed corpus is only read), with fuzz/<name>.dict when there is one. The libraries are
# built with coverage instrumentation too, so that the fuzzers see the code they exercise.
# A single input may take at most 30 seconds, so a hang cannot stretch the run.
# Usage: fuzz/run.sh [seconds per target]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
seconds="${1:-60}"
build="$root/build-fuzz"
"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ \
  -DCANVARO_SANITIZE="address;undefined" -DCANVARO_BUILD_FUZZERS=ON \
  -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link \
  -DCANVARO_BUILD_TESTS=OFF -DCANVARO_BUILD_TOOLS=ON >/dev/null
cmake --build "$build"
export ASAN_OPTIONS="detect_leaks=1:halt_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
for corpus in "$root"/fuzz/corpus/*/; do
  name="$(basename "$corpus")"
  scratch="$(mktemp -d)"
  echo "== fuzz_$name for ${seconds}s"
  log="$build/fuzz/$name.log"
  options=(-max_total_time="$seconds" -timeout=30 -print_final_stats=1
    -artifact_prefix="$build/fuzz/crash-$name-")
  if [ -f "$root/fuzz/$name.dict" ]; then options+=(-dict="$root/fuzz/$name.dict"); fi
  status=0
  "$build/fuzz/fuzz_$name" "${options[@]}" "$scratch" "$corpus" >"$log" 2>&1 || status=$?
  grep -E '^(stat::number_of_executed_units|stat::average_exec_per_sec)' "$log" || true
  rm -rf "$scratch"
  if [ "$status" -ne 0 ]; then
    tail -n 60 "$log"
    echo "fuzz_$name failed (exit $status); see $build/fuzz/crash-$name-*"
    exit 1
  fi
done
