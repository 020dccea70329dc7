#!/usr/bin/env bash
# Runs `serve` on a free port over a store folder and drives its live preview
# page in headless Chromium through puppeteer-core (pinned, installed from npm
# into a cache folder on first use): a figure changed in the page redraws its
# card; store files rewritten on disk redraw the page by itself.
# Usage: preview_in_browser.sh PROGRAM. Exits 77 (skipped) when no browser or
# no Node.js is installed, except under CI, where scripts/test.sh installs them.
set -euo pipefail
program="$1"
here="$(cd "$(dirname "$0")" && pwd)"
puppeteer_version=24.40.0

browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ] || ! command -v node >/dev/null || ! command -v npm >/dev/null; then
  echo "preview test: chromium or node/npm is missing (scripts/setup.sh --with-browser installs them)" >&2
  if [ -n "${CI:-}" ]; then exit 1; fi
  exit 77
fi

modules="${VELMORANT_NODE_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/velmorant-puppeteer}"
if [ ! -f "$modules/node_modules/puppeteer-core/package.json" ] ||
   ! grep -q "\"version\": \"$puppeteer_version\"" "$modules/node_modules/puppeteer-core/package.json"; then
  mkdir -p "$modules"
  npm install --no-save --no-audit --no-fund --prefix "$modules" "puppeteer-core@$puppeteer_version" >/dev/null
fi

work=$(mktemp -d)
server=""
cleanup() {
  if [ -n "$server" ]; then kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

"$program" demo --prefs "$work/prefs" >/dev/null
"$program" serve --port 0 --prefs "$work/prefs" >"$work/serve.log" 2>&1 &
server=$!
url=""
for _ in $(seq 100); do
  url=$(sed -n 's|^serving on \(http://[^ ]*\)$|\1|p' "$work/serve.log" 2>/dev/null || true)
  [ -n "$url" ] && break
  sleep 0.1
done
[ -n "$url" ] || { echo "preview test: the server did not start: $(cat "$work/serve.log")" >&2; exit 1; }

# Three nights earlier: the night the page shows is no longer in the stores.
rewrite="'$program' demo --prefs '$work/prefs' --now $(date -u -d '3 days ago' +%Y-%m-%dT%H:%M:%S)"
cp "$here/preview_check.mjs" "$modules/"
node "$modules/preview_check.mjs" "$url" "$browser" "$work/profile" "$rewrite" "${VELMORANT_PREVIEW_SCREENSHOT:-}"
