#!/usr/bin/env bash
# Builds the program if needed, then runs the rendering service with the live
# preview page at http://127.0.0.1:8080/ (Ctrl-C stops it). Arguments go to
# `velmorant-snippet serve` (--port, --bind, --prefs DIR, --workers).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh release velmorant-snippet >/dev/null
exec build/release/src/cli/velmorant-snippet serve "$@"
