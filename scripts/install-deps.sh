#!/usr/bin/env bash
# Installs every Debian package that building, testing, benchmarking and fuzzing canvaro needs.
# Idempotent: packages that are already installed are skipped, and apt is only touched when
# something is missing. Must run as root (or with sudo available) on Debian 12.
set -euo pipefail

packages=(
  ca-certificates git
  cmake make ninja-build g++ pkg-config
  clang clang-14 libclang-rt-14-dev llvm
  libboost-dev libboost-stacktrace-dev
  libgoogle-glog-dev
  libavutil-dev
  nlohmann-json3-dev
  libpng-dev
  libcli11-dev
  libxxhash-dev
  doxygen
  libgtest-dev libgmock-dev googletest
  libbenchmark-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  SUDO="sudo"
fi

echo "install-deps: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
