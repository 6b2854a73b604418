#!/usr/bin/env bash
# The long run: mixed requests (reads of pages, searches and objects; creates, renames and deletes of
# playlists) at 64 connections against the example while live subscribers watch it, sampling the
# example's resident memory every second. It passes when
#   - no request was answered with an error but 503 and wrk saw no socket error or time-out,
#   - resident memory after the warm-up (the first fifth of the samples) stays within 5 % of its mean,
#   - every subscriber is still connected and got no error message,
#   - every write the example acknowledged reads back as written (bench/soak/check.mjs).
#
# Usage: bash bench/soak.sh [REQUESTS]             (default 1000000)
# Settings from the environment: SOAK_CONNECTIONS (64), SOAK_TRACKS (10000), SOAK_SUBSCRIBERS (4),
#   SKIP_BUILD=1 to use the example as it is, SERVICEDB_EXAMPLE (the example binary).
set -euo pipefail

requests="${1:-1000000}"
connections="${SOAK_CONNECTIONS:-64}"
tracks="${SOAK_TRACKS:-10000}"
subscribers="${SOAK_SUBSCRIBERS:-4}"

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(cd "$here/.." && pwd)"
example="${SERVICEDB_EXAMPLE:-$root/build/default/examples/servicedb-example}"
work="$root/build/soak"

source "$here/processes.sh"

if [ "${SKIP_BUILD:-0}" != 1 ]; then
    log "building the example"
    cmake --preset default >/dev/null
    cmake --build --preset default --target servicedb-example --parallel "$(nproc)" >/dev/null
fi
bash "$root/scripts/install-deps.sh" wrk

rm -rf "$work"
mkdir -p "$work"

port="$(node -e "const s = require('net').createServer().listen(0, '127.0.0.1', () => {
    console.log(s.address().port); s.close(); })")"
log "starting the example with ${tracks} tracks on port ${port}"
# Notice keeps the log quiet: information would log every request and every step of the vehicle.
"$example" --port "$port" --tracks "$tracks" --log-level notice > "$work/example.log" 2>&1 &
example_pid=$!
pids+=("$example_pid")
for _ in $(seq 1 600); do
    curl -sf "http://127.0.0.1:${port}/" >/dev/null && break
    sleep 0.1
done
curl -sf "http://127.0.0.1:${port}/" >/dev/null || { echo "the example did not start" >&2; exit 1; }

log "starting ${subscribers} subscribers"
watched=("/audio/player" "/cabin/zones?\$fields=temperature,setPoint" "/audio/playlists?\$limit=5"
         "/audio/tracks?genre=rock&\$limit=5")
for i in $(seq 1 "$subscribers"); do
    bash "$root/scripts/subscribe.sh" --port "$port" --updatelimit 200 "${watched[$(((i - 1) % ${#watched[@]}))]}" \
        > "$work/subscriber-$i.log" 2>&1 &
    pids+=("$!")
done

: > "$work/rss.txt"
(while kill -0 "$example_pid" 2>/dev/null; do
    ps -o rss= -p "$example_pid" >> "$work/rss.txt" || true
    sleep 1
done) &
pids+=("$!")

log "sending ${requests} requests at ${connections} connections"
started=$(date +%s)
: > "$work/finished.txt"
SOAK_RECORD="$work/record.txt" SOAK_STATUS="$work/status.txt" SOAK_FINISHED="$work/finished.txt" \
SOAK_REQUESTS_PER_THREAD=$(((requests + connections - 1) / connections)) \
    wrk -t"$connections" -c"$connections" -d60m --timeout 10s -s "$here/soak/mixed.lua" \
    "http://127.0.0.1:${port}" > "$work/wrk.txt" &
wrk_pid=$!
# wrk sleeps out its duration even when every thread has stopped; an interrupt ends it with its summary.
while kill -0 "$wrk_pid" 2>/dev/null && [ "$(wc -l < "$work/finished.txt")" -lt "$connections" ]; do
    sleep 1
done
kill -INT "$wrk_pid" 2>/dev/null || true
wait "$wrk_pid" || true
elapsed=$(($(date +%s) - started))
cat "$work/wrk.txt"

failed=0
verdict() { # <text> <command...>: PASS or FAIL by the command's exit status
    local text="$1"
    shift
    if "$@"; then echo "PASS ${text}"; else echo "FAIL ${text}"; failed=1; fi
}

sort "$work/status.txt" > "$work/status-sorted.txt"
cat "$work/status-sorted.txt"
errors="$(awk '$2 >= 300 && $2 != 503 { n += $3 } END { print n + 0 }' "$work/status-sorted.txt")"
refused="$(awk '$2 == 503 { n += $3 } END { print n + 0 }' "$work/status-sorted.txt")"
answered="$(awk '{ n += $3 } END { print n + 0 }' "$work/status-sorted.txt")"
socket_errors="$(grep -c "Socket errors" "$work/wrk.txt" || true)"
verdict "answers: ${answered} in ${elapsed} s, ${refused} refused with 503, ${errors} other errors, socket errors: $(grep "Socket errors" "$work/wrk.txt" || echo none)" \
    test "$((errors + socket_errors))" = 0

read -r samples mean low high < <(awk '{ v[NR] = $1 } END {
    from = int(NR / 5) + 1; n = 0; sum = 0; low = 0; high = 0
    for (i = from; i <= NR; ++i) { sum += v[i]; ++n; if (low == 0 || v[i] < low) low = v[i]; if (v[i] > high) high = v[i] }
    mean = sum / n; printf "%d %d %d %d\n", NR, mean, low, high }' "$work/rss.txt")
verdict "resident memory after warm-up: mean ${mean} kB, from ${low} to ${high} kB (${samples} samples)" \
    awk -v m="$mean" -v l="$low" -v h="$high" 'BEGIN { exit !(l >= 0.95 * m && h <= 1.05 * m) }'

gone_subscribers=0
for i in $(seq 1 "$subscribers"); do
    if grep -q '"type":"error"' "$work/subscriber-$i.log"; then
        gone_subscribers=$((gone_subscribers + 1))
    fi
done
verdict "subscribers: ${subscribers}, with an error: ${gone_subscribers}, messages: $(cat "$work"/subscriber-*.log | wc -l)" \
    test "$gone_subscribers" = 0

verdict "acknowledged writes read back (record in ${work}/record.txt)" \
    node "$here/soak/check.mjs" "$port" "$work/record.txt"
verdict "the example still runs" kill -0 "$example_pid"
exit "$failed"
