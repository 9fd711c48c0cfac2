#!/usr/bin/env bash
# Builds everything and runs every test (unit tests and the installed-package consumer test).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/build.sh"
cd "${CANVARO_BUILD_DIR:-$root/build}"
ctest --output-on-failure -j2 "$@"
