#!/usr/bin/env bash
# Sets everything up, builds the program, and draws the gallery from the
# built-in demo data, dated for the current night: the nine snippets (and the
# fallback) as cards with their view records, the same nine with an empty
# store, every widget picture and the widget mirrors' keys, with an index.html
# showing them side by side. Prints that index.html's path.
# Usage: scripts/demo.sh [OUT [OPTION...]]   (OUT defaults to out/gallery;
# options as for `velmorant-snippet gallery`, e.g. --locale de_DE)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh release velmorant-snippet
build/release/src/cli/velmorant-snippet gallery "${1:-out/gallery}" "${@:2}"
