#!/usr/bin/env bash
# Prints the live updates of a running example: installs the "ws" package of npm next to the client on
# first use, then runs it. Arguments pass on: [--port N] [--updatelimit MS] [--interval MS] ADDRESS...
set -euo pipefail

examples="$(cd "$(dirname "${BASH_SOURCE[0]}")/../examples" && pwd)"
node_prefix="$examples/.node"
ws_version=8.18.0

if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
    sudo_cmd=()
    if [ "$(id -u)" -ne 0 ]; then
        sudo_cmd=(sudo)
    fi
    "${sudo_cmd[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends nodejs npm
fi
if ! grep -q "\"version\": \"$ws_version\"" "$node_prefix/node_modules/ws/package.json" 2>/dev/null; then
    npm install --prefix "$node_prefix" --no-audit --no-fund --loglevel=error "ws@$ws_version" >&2
fi

NODE_PATH="$node_prefix/node_modules" exec node "$examples/subscribe.cjs" "$@"
