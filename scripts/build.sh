#!/usr/bin/env bash
# Installs the dependencies (when missing), then configures and builds the project (library,
# tests, tools, benchmarks) in ./build.
# Extra arguments go to the CMake configure step.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
build_dir="${CANVARO_BUILD_DIR:-$root/build}"
cmake -S "$root" -B "$build_dir" -G Ninja -DCANVARO_WERROR=ON -DCANVARO_BUILD_BENCHMARKS=ON "$@" >/dev/null
cmake --build "$build_dir"
