#!/usr/bin/env bash
# Installs what is missing, builds the example service in the release preset and starts it on
# 127.0.0.1 (port 8080 unless --port is given). Arguments pass on to servicedb-example; Ctrl-C stops it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh
cmake --preset default
cmake --build --preset default --target servicedb-example --parallel "$(nproc)"
exec build/default/examples/servicedb-example "$@"
