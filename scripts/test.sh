#!/usr/bin/env bash
# Sets everything up (packages, build) and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh release
ctest --preset release
