#!/usr/bin/env bash
# Sets everything up and renders every snippet from the built-in demo data:
# OUT/INTENT.png (the card) and OUT/INTENT.json (its view record).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh release
out="${1:-out/demo}"
mkdir -p "$out"
program=build/release/src/cli/velmorant-snippet
for intent in LightsOffIntent TimeAsleepIntent ReadinessIntent WristTempIntent SleepFuelIntent \
              SleepSpO2Intent RespirationIntent LatestBedtimeIntent SleepRingsIntent; do
  "$program" show "$intent" --png "$out/$intent.png" > "$out/$intent.json"
  echo "wrote $out/$intent.png and $out/$intent.json"
done
