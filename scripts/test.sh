#!/usr/bin/env bash
# Sets everything up (packages, builds) and runs the whole test suite: the
# optimised build, the same suite under AddressSanitizer and
# UndefinedBehaviorSanitizer, the rendering service's tests and those of
# `show`'s second thread under ThreadSanitizer, then a short run of the store fuzzer
# (VELMORANT_FUZZ_SECONDS, default 60). Both suites include the browser test,
# which opens the gallery in headless Chromium (installed here). Ends with one
# summary line.
set -euo pipefail
cd "$(dirname "$0")/.."

passed=0
failed=0
# Runs one ctest preset and adds its counts to the summary.
run_suite() {
  local log
  log=$(mktemp)
  ctest --preset "$1" 2>&1 | tee "$log"
  local line
  line=$(grep -Eo '[0-9]+ tests failed out of [0-9]+' "$log" | tail -n 1)
  rm -f "$log"
  local f=${line%% *} total=${line##* }
  passed=$((passed + total - f))
  failed=$((failed + f))
}

scripts/setup.sh --with-browser release
run_suite release
scripts/setup.sh asan
run_suite asan
scripts/setup.sh tsan
run_suite tsan
scripts/fuzz.sh "${VELMORANT_FUZZ_SECONDS:-60}"
echo "tests: ${passed} passed, ${failed} failed"
