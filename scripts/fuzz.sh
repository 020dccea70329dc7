#!/usr/bin/env bash
# Builds the store fuzzer (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer; preset "fuzz") and runs it for SECONDS (default 60)
# from the seed stores in fuzz/corpus/, half of the mutations made by the
# property-list-aware mutator in fuzz/StoreMutator.cpp, with the dictionary
# fuzz/store.dict. Inputs that reach new code collect in
# build/fuzz/corpus/ and are kept between runs. An input that crashes, hangs
# (over 10 s) or breaks a check is written to build/fuzz/artifacts/ and the
# script fails; once the fault is fixed, add the input to fuzz/regressions/ so
# the test suite replays it.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]]; then
  echo "usage: scripts/fuzz.sh [SECONDS]" >&2
  exit 2
fi
scripts/setup.sh fuzz
mkdir -p build/fuzz/corpus build/fuzz/artifacts
# Leaks inside system libraries (fontconfig's parse) are not this program's.
export LSAN_OPTIONS="suppressions=$PWD/fuzz/lsan-suppressions.txt:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
# Inputs up to 32 KiB leave room for nesting past the limit written as XML.
build/fuzz/fuzz/velmorant_store_fuzzer -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=32768 \
  -dict=fuzz/store.dict -artifact_prefix=build/fuzz/artifacts/ -print_final_stats=1 \
  build/fuzz/corpus fuzz/corpus
