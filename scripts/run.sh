#!/usr/bin/env bash
# The project's main job: builds everything and runs the example program.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/build.sh"
"${CANVARO_BUILD_DIR:-$root/build}/examples/canvaro_example" "$@"
