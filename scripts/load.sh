#!/usr/bin/env bash
# Load figures for `velmorant-snippet serve`, with wrk, against 127.0.0.1 only.
# Bounded: every phase runs for SECONDS (default 10), about two minutes in all.
# Prints one line per figure; not part of CI (timings need a quiet machine).
#   1. one request at a time: median latency of distinct-store cards
#   2. distinct stores at full speed: cards per second (no cache hits)
#   3. cache hits and 304s per second (wrk with two threads and with one, which
#      leaves a core to the server: wrk shares the machine with it); hits of the
#      same card's view record and of the card at scale 1
# Every phase also prints the CPU time per answer, user + system, of the server and of wrk.
#   4. 80 % of (2): p50 / p99 latency
#   5. overload, 200 % and more: every answer 200 or 503, /healthz p99, resident memory
#   6. 500 slow clients holding connections while others are served
# Usage: scripts/load.sh [SECONDS]   (installs wrk through scripts/setup.sh --with-load)
# PROGRAM=path runs another build of the program (a before/after comparison).
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-10}"
program="${PROGRAM:-build/release/src/cli/velmorant-snippet}"
scripts/setup.sh --with-load release velmorant-snippet >/dev/null
ulimit -n 4096

work=$(mktemp -d)
server=""
cleanup() {
  if [ -n "$server" ]; then kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

cores=$(nproc)
"$program" serve --port 0 --workers "$cores" >"$work/serve.log" 2>&1 &
server=$!
for _ in $(seq 100); do
  url=$(sed -n 's|^serving on \(http://[^ ]*\)/$|\1|p' "$work/serve.log" 2>/dev/null || true)
  [ -n "$url" ] && break
  sleep 0.1
done
rss() { awk '/VmRSS/ {print int($2 / 1024) " MB"}' "/proc/$server/status"; }
anon() { awk '/RssAnon/ {print int($2 / 1024) " MB"}' "/proc/$server/status"; }
echo "load: $url, $cores workers, $seconds s per phase; resident memory at start $(rss)"

card="/v1/snippets/SleepSpO2Intent.png"
fixed="now=2024-03-05T07:30:00&tz=Europe/London"
curl -sf "$url/v1/stores.json?$fixed" | sed 's/"averageSpO2":[0-9.]*/"averageSpO2":__SPO2__/' >"$work/store.json"
export STORE_FILE="$work/store.json"
export SALT=$(( $(date +%s) % 100000 ))

# 1. One at a time, each a new store.
for i in $(seq 30); do
  body=$(sed "s/__SPO2__/9$((i % 10)).$i/" "$work/store.json")
  curl -s -o /dev/null -w '%{time_total}\n' -H 'Content-Type: application/json' --data-binary "$body" "$url$card?$fixed"
done | sort -n | awk '{t[NR] = $1} END {m = t[int((NR + 1) / 2)] * 1000; printf "single request (distinct store): median %.1f ms\n", m; print m > "'"$work/median"'"}'
median=$(cat "$work/median")

# The server's user and system CPU time so far, in clock ticks.
server_cpu() { awk '{print $14, $15}' "/proc/$server/stat"; }
tick=$(getconf CLK_TCK)

phase() {  # name, wrk arguments...
  local name="$1"; shift
  SALT=$((SALT + 1))
  local su0 ss0 su1 ss1 wu ws TIMEFORMAT="%U %S"
  read -r su0 ss0 < <(server_cpu)
  { time wrk --latency "$@" >"$work/$name.txt" 2>&1 || true; } 2>"$work/$name.time"
  read -r su1 ss1 < <(server_cpu)
  read -r wu ws <"$work/$name.time"
  local rate statuses latency errors answers cpu
  rate=$(awk '/Requests\/sec/ {print $2}' "$work/$name.txt")
  statuses=$(sed -n 's/^statuses: //p' "$work/$name.txt")
  latency=$(sed -n 's/^latency_ms: //p' "$work/$name.txt")
  errors=$(sed -n 's/^ *Socket errors: //p' "$work/$name.txt")
  answers=$(awk '/requests in/ {print $1}' "$work/$name.txt")
  # CPU per answer, user + system, of the server and of wrk: where the two shared cores went.
  cpu=$(awk -v n="${answers:-0}" -v t="$tick" -v su=$((su1 - su0)) -v ss=$((ss1 - ss0)) -v wu="$wu" -v ws="$ws" \
    'BEGIN {if (n > 0) printf "CPU per answer: server %.1f + %.1f us, wrk %.1f + %.1f us", su / t / n * 1e6, ss / t / n * 1e6, wu / n * 1e6, ws / n * 1e6}')
  echo "$name: ${rate} requests/s; ${statuses}; ${latency}${errors:+; socket errors: $errors}${cpu:+; $cpu}"
  echo "$rate" >"$work/$name.rate"
}

# 2. Distinct stores at full speed.
phase distinct -t2 -c"$((2 * cores))" -d"${seconds}s" -s scripts/load/post_stores.lua "$url$card?$fixed"
full=$(cat "$work/distinct.rate")

# 3. Cache hits and 304s.
# Bodies are not read into wrk's script (count_answers.lua): copying each
# 133 KB card there cost wrk about 15 µs of CPU per answer on the shared cores.
phase cache-hits -t2 -c32 -d"${seconds}s" -s scripts/load/count_answers.lua "$url$card?$fixed"
phase cache-hits-one-wrk-thread -t1 -c32 -d"${seconds}s" -s scripts/load/count_answers.lua "$url$card?$fixed"
phase cache-hits-view-record -t2 -c32 -d"${seconds}s" -s scripts/load/count_answers.lua "${url}/v1/snippets/SleepSpO2Intent.json?$fixed"
phase cache-hits-scale-1 -t2 -c32 -d"${seconds}s" -s scripts/load/count_answers.lua "$url$card?scale=1&$fixed"
etag=$(curl -sI "$url$card?$fixed" | sed -n 's/^ETag: //Ip' | tr -d '\r')
IF_NONE_MATCH="$etag" phase not-modified -t2 -c32 -d"${seconds}s" -s scripts/load/count_statuses.lua "$url$card?$fixed"

# 4. 80 % of the full rate, offered by connections that pause between requests.
connections=$((2 * cores))
delay=$(awk -v c="$connections" -v r="$full" -v m="$median" 'BEGIN {d = c * 1000 / (0.8 * r) - m; print (d < 1 ? 1 : int(d))}')
DELAY_MS="$delay" phase at-80-percent -t2 -c"$connections" -d"${seconds}s" -s scripts/load/post_stores.lua "$url$card?$fixed"
echo "at-80-percent: single-request median ${median} ms, so p99 must stay under $(awk -v m="$median" 'BEGIN {print 3 * m}') ms"

# 5. Overload: far more clients than workers and queue; health measured meanwhile.
peak=0
( while kill -0 "$server" 2>/dev/null; do awk '/VmRSS/ {print $2}' "/proc/$server/status"; sleep 0.5; done ) >"$work/rss.log" &
sampler=$!
wrk --latency -t1 -c1 -d"${seconds}s" -s scripts/load/count_statuses.lua "$url/healthz" >"$work/health.txt" 2>&1 &
health=$!
phase overload -t2 -c64 -d"${seconds}s" -s scripts/load/post_stores.lua "$url$card?$fixed"
wait "$health"
echo "overload healthz: $(sed -n 's/^latency_ms: //p' "$work/health.txt"); $(sed -n 's/^statuses: //p' "$work/health.txt")"
sleep 5
kill "$sampler" 2>/dev/null || true
peak=$(sort -n "$work/rss.log" | tail -1)
cache=$(curl -s "$url/metrics" | awk '/^velmorant_cache_bytes/ {printf "%.1f", $2 / 1048576}')
echo "overload memory: peak $((peak / 1024)) MB resident, $(rss) five seconds later ($(anon) of it anonymous, $cache MiB of that the result cache)"

# 6. 500 slow clients, each sending its request a byte every two seconds.
slow=()
for i in $(seq 500); do
  exec {fd}<>"/dev/tcp/127.0.0.1/${url##*:}"
  printf 'GET /v1/snippets/SleepSpO2Intent.png HTTP/1.1\r\nHost: x\r\nX-Slow: ' >&"$fd"
  slow+=("$fd")
done
( while :; do for fd in "${slow[@]}"; do printf a >&"$fd" 2>/dev/null || true; done; sleep 2; done ) &
trickle=$!
phase beside-500-slow-clients -t2 -c4 -d"${seconds}s" -s scripts/load/count_statuses.lua "$url/v1/snippets/ReadinessIntent.png?$fixed"
open=$(ls "/proc/$server/fd" | wc -l)
kill "$trickle" 2>/dev/null || true
echo "beside-500-slow-clients: the server held $open open files (sockets) at the end"
echo "load: done; resident memory at the end $(rss)"
