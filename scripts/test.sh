#!/usr/bin/env bash
# Sets everything up (packages, builds) and runs the whole test suite: the
# optimised build, the same suite under AddressSanitizer and
# UndefinedBehaviorSanitizer, then a short run of the store fuzzer
# (VELMORANT_FUZZ_SECONDS, default 60).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh release
ctest --preset release
scripts/setup.sh asan
ctest --preset asan
scripts/fuzz.sh "${VELMORANT_FUZZ_SECONDS:-60}"
