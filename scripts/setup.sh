#!/usr/bin/env bash
# Installs every Debian package the project needs (only the missing ones), then
# configures and builds. Safe to run again: a second run installs nothing.
# Usage: scripts/setup.sh [--with-load] [--with-browser] [PRESET [TARGET...]]
#   --with-load     also install wrk, for scripts/load.sh
#   --with-browser  also install Chromium and Node.js, for the browser tests
#   PRESET          a CMake preset (default release); TARGETs build only those
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git
  libicu-dev libcairo2-dev libpango1.0-dev libplist-dev librsvg2-dev libspng-dev libpng-dev libisal-dev
  nlohmann-json3-dev libgtest-dev libgmock-dev libbenchmark-dev
  libmicrohttpd-dev libcpp-httplib-dev
  fontconfig fonts-inter fonts-noto-color-emoji fonts-noto-core fonts-dejavu-core
  tzdata
  clang libclang-rt-14-dev
)

# wrk drives scripts/load.sh; CI's tests do not need it.
if [ "${1:-}" = "--with-load" ]; then
  packages+=(wrk)
  shift
fi

if [ "${1:-}" = "--with-browser" ]; then
  packages+=(chromium)
  # Node.js drives the preview page's browser test; a Node.js already on the
  # machine (with its own npm) is used as it is.
  if ! command -v npm >/dev/null; then packages+=(nodejs npm); fi
  shift
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}" >&2
  sudo_cmd=()
  if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cd "$(dirname "$0")/.."
preset="${1:-release}"
targets=("${@:2}")
cmake --preset "$preset" >/dev/null
if ((${#targets[@]})); then
  cmake --build --preset "$preset" --target "${targets[@]}"
else
  cmake --build --preset "$preset"
fi
