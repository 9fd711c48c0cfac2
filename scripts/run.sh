#!/usr/bin/env bash
# The project's main job: builds everything, then runs the command-line tool's demo session on its
# built-in picture, saving the document into build/demo-output. Extra arguments go to
# `canvaro demo` (for example --steps 4 or --picture photo.png).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/build.sh"
build_dir="${CANVARO_BUILD_DIR:-$root/build}"
"$build_dir/tools/canvaro" demo --out "$build_dir/demo-output" "$@"
