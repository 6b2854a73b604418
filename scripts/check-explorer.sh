#!/usr/bin/env bash
# Runs the explorer page in a real headless Chromium against the example process: installs Chromium,
# node and the test's npm packages when they are missing, starts the built servicedb-example with
# 100000 tracks on a free port, runs examples/browser/explorer-test.cjs and exits with its status.
#
# Usage: bash scripts/check-explorer.sh [BUILD-FOLDER]     (default build/default, built before)
# Screenshots go to SCREENSHOT_DIR (default build/explorer-screenshots).
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-build/default}"
case "$build" in
    /*) ;;
    *) build="$root/$build" ;;
esac
example="$build/examples/servicedb-example"
browser_dir="$root/examples/browser"

if [ ! -x "$example" ]; then
    echo "check-explorer: $example is missing; build the example first (cmake --build --preset default)" >&2
    exit 1
fi

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi
apt_updated=0
apt_install() {
    if [ "$apt_updated" -eq 0 ]; then
        "${sudo_cmd[@]}" apt-get update -qq
        apt_updated=1
    fi
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}

if [ ! -x /usr/bin/chromium ]; then
    echo "check-explorer: installing chromium" >&2
    apt_install chromium
fi
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
    echo "check-explorer: installing nodejs and npm" >&2
    apt_install nodejs npm
fi
node_major="$(node -p 'process.versions.node.split(".")[0]')"
if [ "$node_major" -lt 18 ]; then
    echo "check-explorer: node $(node --version) is too old; the test needs node 18 or later" >&2
    exit 1
fi

if ! command -v curl >/dev/null; then
    apt_install curl ca-certificates
fi

# npm ci only when node_modules is missing or was installed from another lock file.
stamp="$browser_dir/node_modules/.installed-from-lock"
if [ ! -d "$browser_dir/node_modules/playwright-core" ] || ! cmp -s "$browser_dir/package-lock.json" "$stamp"; then
    echo "check-explorer: npm ci in examples/browser" >&2
    (cd "$browser_dir" && npm ci --no-audit --no-fund --loglevel=error >&2)
    cp "$browser_dir/package-lock.json" "$stamp"
fi

work="$(mktemp -d)"
example_pid=""
cleanup() {
    if [ -n "$example_pid" ]; then
        kill "$example_pid" 2>/dev/null || true
        wait "$example_pid" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT

port="$(node -e "const s = require('net').createServer().listen(0, '127.0.0.1', () => {
    console.log(s.address().port); s.close(); })")"
echo "check-explorer: starting the example with 100000 tracks on port $port" >&2
"$example" --port "$port" --tracks 100000 --vehicle-rate 2 --log-level notice > "$work/example.log" 2>&1 &
example_pid=$!

# Wait for the first answer, at most 60 s; a process that died is reported at once.
ready=0
deadline=$((SECONDS + 60))
while [ "$SECONDS" -lt "$deadline" ]; do
    if curl -sf -o /dev/null --max-time 2 "http://127.0.0.1:$port/"; then
        ready=1
        break
    fi
    if ! kill -0 "$example_pid" 2>/dev/null; then
        break
    fi
    sleep 0.1
done
if [ "$ready" -ne 1 ]; then
    echo "check-explorer: the example did not answer on port $port; its log:" >&2
    cat "$work/example.log" >&2
    exit 1
fi

# The test runs in its own folder: a screenshot folder given relative to here stays relative to here.
if [ -n "${SCREENSHOT_DIR:-}" ]; then
    SCREENSHOT_DIR="$(realpath -m "$SCREENSHOT_DIR")"
    export SCREENSHOT_DIR
fi
status=0
(cd "$browser_dir" && EXPLORER_PORT="$port" node --test explorer-test.cjs) || status=$?
if [ "$status" -ne 0 ]; then
    echo "check-explorer: the browser test failed; the example's log:" >&2
    tail -n 50 "$work/example.log" >&2
fi
exit "$status"
