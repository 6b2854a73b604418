#!/usr/bin/env bash
# Side-by-side HTTP benchmark: the example server against json-server (the same tracks), for reads and
# writes, and for the reads also against a POCO server that sends a fixed body of the same size (the
# ceiling of the HTTP stack) and the same server handing each answer to one worker thread (the ceiling of
# our threading model). Everything runs on 127.0.0.1 and every process started here is stopped on exit.
#
# Usage: bash bench/http/run.sh [TRACKS]          (default 10000)
# Settings from the environment:
#   WRK_THREADS (2), WRK_CONNECTIONS (16), WRK_DURATION (10s), WRK_TIMEOUT (2s), DELETE_DURATION (2s,
#   short enough that the objects created before do not run out),
#   BUILD_JOBS (2), SKIP_BUILD=1 to use the binaries as they are,
#   STARTUP_TIMEOUT (120, seconds to wait for a server to answer), EXAMPLE_LOG_LEVEL (warning),
#   SERVICEDB_EXAMPLE (the example binary; default build/default/examples/servicedb-example).
set -euo pipefail

tracks="${1:-10000}"
wrk_threads="${WRK_THREADS:-2}"
wrk_connections="${WRK_CONNECTIONS:-16}"
wrk_duration="${WRK_DURATION:-10s}"
wrk_timeout="${WRK_TIMEOUT:-2s}"
delete_duration="${DELETE_DURATION:-2s}"
build_jobs="${BUILD_JOBS:-2}"
startup_timeout="${STARTUP_TIMEOUT:-120}"
json_server_version="0.17.4"

if ! [[ "$tracks" =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: bash bench/http/run.sh [TRACKS]" >&2
    exit 2
fi

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(cd "$here/../.." && pwd)"
node_prefix="$here/.node"
json_server="$node_prefix/node_modules/.bin/json-server"
build_dir="$root/build/bench-http"
fixed_body_server="$build_dir/fixed-body-server"
example="${SERVICEDB_EXAMPLE:-$root/build/default/examples/servicedb-example}"
work="$build_dir/last-run"

source "$here/../processes.sh"

# --- 1. tools -------------------------------------------------------------------------------------
install_tools() {
    local sudo_cmd=()
    if [ "$(id -u)" -ne 0 ]; then
        sudo_cmd=(sudo)
    fi
    if ! command -v wrk >/dev/null; then
        log "installing wrk"
        "${sudo_cmd[@]}" apt-get update -qq
        DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends wrk
    fi
    if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
        log "installing node and npm"
        "${sudo_cmd[@]}" apt-get update -qq
        DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends nodejs npm
    fi
    if [ ! -x "$json_server" ] || ! grep -q "\"version\": \"$json_server_version\"" \
        "$node_prefix/node_modules/json-server/package.json" 2>/dev/null; then
        log "installing json-server@$json_server_version"
        npm install --prefix "$node_prefix" --no-audit --no-fund --loglevel=error \
            "json-server@$json_server_version" >&2
    fi
}

# --- 2. builds ------------------------------------------------------------------------------------
build_servers() {
    mkdir -p "$build_dir"
    if [ "${SKIP_BUILD:-0}" != 1 ]; then
        log "building servicedb-example (release)"
        (cd "$root" && cmake --preset default >/dev/null &&
            cmake --build --preset default --target servicedb-example -j "$build_jobs" >/dev/null)
    fi
    if [ "${SKIP_BUILD:-0}" != 1 ] || [ ! -x "$fixed_body_server" ]; then
        if [ ! -x "$fixed_body_server" ] || [ "$here/FixedBodyServer.cpp" -nt "$fixed_body_server" ]; then
            log "building fixed-body-server"
            # It serves with the library's own HTTP server, as the example does.
            g++ -std=c++17 -O2 -Wall -Wextra -Wpedantic -o "$fixed_body_server" "$here/FixedBodyServer.cpp" \
                -I "$root/CommunicationLib/include" -L "$root/build/default/CommunicationLib" \
                -Wl,-rpath,"$root/build/default/CommunicationLib" -lCommunicationLib -lPocoNet -lPocoFoundation \
                -pthread
        fi
    fi
    if [ ! -x "$example" ]; then
        echo "missing $example" >&2
        exit 1
    fi
}

# --- helpers for servers --------------------------------------------------------------------------
# A port nobody listens on, chosen at random in a bounded number of tries.
free_port() {
    local port try
    for ((try = 0; try < 200; ++try)); do
        port=$((20000 + RANDOM % 30000))
        if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
            echo "$port"
            return 0
        fi
    done
    echo "no free port found" >&2
    return 1
}

# Waits until the URL answers 200, giving up when the process died or the time is over.
wait_until_answers() {
    local url="$1" pid="$2" name="$3" try
    for ((try = 0; try < startup_timeout * 10; ++try)); do
        if curl -sf -o /dev/null "$url"; then
            return 0
        fi
        if ! kill -0 "$pid" 2>/dev/null; then
            echo "$name stopped before it answered; its log:" >&2
            tail -n 20 "$work/$name.log" >&2
            exit 1
        fi
        sleep 0.1
    done
    echo "$name did not answer $url within ${startup_timeout}s" >&2
    exit 1
}

started_pid=""
start_server() {
    local name="$1"
    shift
    "$@" >"$work/$name.log" 2>&1 &
    started_pid=$!
    pids+=("$started_pid")
}

# --- wrk runs -------------------------------------------------------------------------------------
# Latency as wrk prints it (850.00us, 1.20ms, 2.00s, 1.00m) in milliseconds.
to_ms() {
    awk -v v="$1" 'BEGIN {
        n = v + 0; u = v; sub(/^[0-9.]+/, "", u)
        if (u == "us") n /= 1000; else if (u == "s") n *= 1000; else if (u == "m") n *= 60000
        printf "%.2f", n }'
}

declare -A rps p50 p99 bytes errors
# run_wrk KIND SERVER URL [METHOD BODY_A BODY_B]: a GET, or with a method a write of the two bodies in turn.
run_wrk() {
    local kind="$1" server="$2" url="$3" method="${4:-}" out
    local script=()
    out="$work/wrk-$kind-$server.txt"
    log "wrk $kind $server: $method $url"
    if [ -z "$method" ]; then
        bytes[$kind,$server]="$(curl -s "$url" | wc -c)"
    else
        export BENCH_METHOD="$method" BENCH_BODY_A="$5" BENCH_BODY_B="$6"
        script=(-s "$here/write.lua")
        bytes[$kind,$server]="$(curl -s -X "$method" -H 'Content-Type: application/json' -d "$5" "$url" | wc -c)"
    fi
    wrk -t"$wrk_threads" -c"$wrk_connections" -d"$wrk_duration" --timeout "$wrk_timeout" --latency \
        "${script[@]}" "$url" >"$out"
    read_wrk "$kind" "$server" "$out"
}

# run_wrk_delete SERVER BASE_URL PATHS_FILE: deletes the listed objects, each once, for DELETE_DURATION.
run_wrk_delete() {
    local server="$1" url="$2" paths="$3" out
    out="$work/wrk-delete-$server.txt"
    log "wrk delete $server: $(wc -l <"$paths") objects listed"
    bytes[delete,$server]="-"
    BENCH_PATHS="$paths" BENCH_THREADS="$wrk_threads" wrk -t"$wrk_threads" -c"$wrk_connections" \
        -d"$delete_duration" --timeout "$wrk_timeout" --latency -s "$here/delete.lua" "$url" >"$out"
    read_wrk delete "$server" "$out"
}

read_wrk() {
    local kind="$1" server="$2" out="$3"
    rps[$kind,$server]="$(awk '/^Requests\/sec:/ { printf "%.0f", $2 }' "$out")"
    p50[$kind,$server]="$(to_ms "$(awk '$1 == "50%" { print $2 }' "$out")")"
    p99[$kind,$server]="$(to_ms "$(awk '$1 == "99%" { print $2 }' "$out")")"
    errors[$kind,$server]="$(awk '/Non-2xx or 3xx responses:/ { n += $NF }
        /Socket errors:/ { gsub(/,/, ""); n += $4 + $6 + $8 + $10 } END { print n + 0 }' "$out")"
}

# --- main -----------------------------------------------------------------------------------------
install_tools
build_servers
rm -rf "$work"
mkdir -p "$work"

# 3. the example
ours_port="$(free_port)"
start_server servicedb-example "$example" --port "$ours_port" --tracks "$tracks" --log-level "${EXAMPLE_LOG_LEVEL:-warning}"
ours="http://127.0.0.1:$ours_port"
log "waiting for servicedb-example with $tracks tracks on $ours"
wait_until_answers "$ours/audio/tracks?\$limit=1" "$started_pid" servicedb-example

# 4. the same tracks for json-server
log "copying the tracks into json-server's database"
track_id="$(node "$here/fetch-tracks.mjs" "$ours" "$work/db.json")"
peer_port="$(free_port)"
start_server json-server "$json_server" --host 127.0.0.1 --port "$peer_port" --quiet "$work/db.json"
peer="http://127.0.0.1:$peer_port"
wait_until_answers "$peer/tracks?_limit=1" "$started_pid" json-server

kinds=(object page sorted search)
declare -A ours_path peer_path
ours_path[object]="/audio/tracks/$track_id"
ours_path[page]="/audio/tracks?\$limit=20"
ours_path[sorted]="/audio/tracks?\$sortby=-year&\$limit=20"
ours_path[search]="/audio/tracks?genre=rock"
peer_path[object]="/tracks/$track_id"
peer_path[page]="/tracks?_limit=20"
peer_path[sorted]="/tracks?_sort=year&_order=desc&_limit=20"
peer_path[search]="/tracks?genre=rock"

# 5. one fixed-body server per answer of ours, each with exactly that answer's bytes, and one that hands
# each answer to a worker thread as ours does: the ceiling of that threading model
declare -A fixed hand_off
for kind in "${kinds[@]}"; do
    if ! curl -sf -o "$work/body-$kind.json" "$ours${ours_path[$kind]}"; then
        echo "GET $ours${ours_path[$kind]} failed" >&2
        exit 1
    fi
    port="$(free_port)"
    start_server "fixed-body-$kind" "$fixed_body_server" "$port" "$work/body-$kind.json"
    fixed[$kind]="http://127.0.0.1:$port"
    wait_until_answers "${fixed[$kind]}/" "$started_pid" "fixed-body-$kind"
    port="$(free_port)"
    start_server "hand-off-$kind" "$fixed_body_server" --hand-off "$port" "$work/body-$kind.json"
    hand_off[$kind]="http://127.0.0.1:$port"
    wait_until_answers "${hand_off[$kind]}/" "$started_pid" "hand-off-$kind"
done

# 6. the runs
for kind in "${kinds[@]}"; do
    run_wrk "$kind" servicedb "$ours${ours_path[$kind]}"
    run_wrk "$kind" json-server "$peer${peer_path[$kind]}"
    run_wrk "$kind" fixed-body "${fixed[$kind]}${ours_path[$kind]}"
    run_wrk "$kind" hand-off "${hand_off[$kind]}${ours_path[$kind]}"
done

# The writes: an attribute of one track changed (our POST on the object, json-server's PATCH), and a
# playlist created (POST on the resource on both). There is no fixed-body row for them.
run_wrk update servicedb "$ours/audio/tracks/$track_id" POST '{"year":2001}' '{"year":2002}'
run_wrk update json-server "$peer/tracks/$track_id" PATCH '{"year":2001}' '{"year":2002}'
run_wrk create servicedb "$ours/audio/playlists" POST '{"name":"bench"}' '{"name":"bench"}'
run_wrk create json-server "$peer/playlists" POST '{"name":"bench"}' '{"name":"bench"}'

# Deleting the playlists just created, each once: the lists of their addresses come from the servers.
: >"$work/delete-servicedb.txt"
for ((offset = 0; offset < 30000; offset += 1000)); do
    curl -sf "$ours/audio/playlists?\$fields=uri&\$limit=1000&\$offset=$offset" |
        grep -o '/audio/playlists/[0-9a-f-]*' >>"$work/delete-servicedb.txt" || break
done
curl -sf "$peer/playlists" | grep -o '"id": *[0-9]*' | grep -o '[0-9]*$' | sed 's|^|/playlists/|' \
    >"$work/delete-json-server.txt"
run_wrk_delete servicedb "$ours" "$work/delete-servicedb.txt"
run_wrk_delete json-server "$peer" "$work/delete-json-server.txt"

# 7. the table
echo
echo "wrk -t$wrk_threads -c$wrk_connections -d$wrk_duration, $tracks tracks, $(nproc) cores"
row_format="%-7s %-12s %10s %9s %9s %9s %7s %12s\n"
printf "$row_format" request server "req/s" "p50 ms" "p99 ms" bytes errors "ours/server"
for kind in "${kinds[@]}" update create delete; do
    for server in servicedb json-server fixed-body hand-off; do
        [ -n "${rps[$kind,$server]:-}" ] || continue
        ratio="-"
        if [ "$server" != servicedb ] && [ "${rps[$kind,$server]:-0}" -gt 0 ]; then
            ratio="$(awk -v a="${rps[$kind,servicedb]}" -v b="${rps[$kind,$server]}" 'BEGIN { printf "%.2f", a / b }')"
        fi
        printf "$row_format" "$kind" "$server" "${rps[$kind,$server]}" "${p50[$kind,$server]}" \
            "${p99[$kind,$server]}" "${bytes[$kind,$server]}" "${errors[$kind,$server]}" "$ratio"
    done
done
echo "(raw wrk output and server logs: ${work#"$root"/})"

# 8. stop_all runs on exit
