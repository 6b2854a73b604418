#!/usr/bin/env bash
# Sets up the machine, builds every preset that CI gates on, runs the whole test suite in each, checks
# the Debian packages, drives the explorer page in a headless browser, fuzzes every input path briefly,
# cross-builds for AArch64 with the suite under emulation and checks the formatting. Exits non-zero on
# the first failure.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash scripts/install-deps.sh

presets=(default asan tsan)
jobs="$(nproc)"

for preset in "${presets[@]}"; do
    echo "=== preset ${preset} ==="
    cmake --preset "${preset}"
    cmake --build --preset "${preset}" --parallel "${jobs}"
    ctest --preset "${preset}" --parallel "${jobs}"
    if [ "$preset" = default ]; then
        echo "=== packages ==="
        bash scripts/check-packages.sh default
        echo "=== explorer ==="
        bash scripts/check-explorer.sh build/default
    fi
done

echo "=== preset fuzz ==="
# Six targets at 5 s each: a smoke of about 30 s that every seed and reproducer still passes.
bash scripts/fuzz.sh 5

echo "=== preset aarch64 ==="
bash scripts/check-aarch64.sh

echo "=== formatting ==="
bash scripts/format.sh --check
