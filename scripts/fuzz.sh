#!/usr/bin/env bash
# Builds the fuzz preset and runs every fuzz target for the given seconds (5 by default), each on a scratch
# copy of its seed corpus in build/fuzz/runs/<target>, with its dictionary. Exits non-zero on the first
# crash, leak, timeout, memory overrun or undefined behaviour and names the reproducer; the seed corpora
# in fuzz/corpus are never written to.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds="${1:-5}"
if ! [[ "$seconds" =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: $0 [seconds per target]" >&2
    exit 64
fi

bash scripts/install-deps.sh
cmake --preset fuzz
cmake --build --preset fuzz --parallel "$(nproc)"

export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export ASAN_OPTIONS="detect_leaks=1"

for source in fuzz/*Fuzzer.cpp; do
    target="$(basename "$source" .cpp)"
    run="build/fuzz/runs/${target}"
    rm -rf "$run"
    mkdir -p "$run/corpus" "$run/artifacts"
    cp fuzz/corpus/"$target"/* "$run/corpus/"

    # A parser that needs seconds for one input of a few kilobytes hangs; the HTTP target gives up on
    # its own after 10 s without an answer, and says so. AddressSanitizer's quarantine alone holds a
    # quarter of the memory limit.
    timeout=10
    extra=()
    if [ "$target" = HttpServerFuzzer ]; then
        timeout=30
        # The server frees on its own threads, so nearly every input looks like a leak to the check after
        # each input, and its tens of thousands of features make the entropic schedule the main cost:
        # without both it runs three times as fast. Leaks are still looked for when the run ends.
        extra=(-detect_leaks=0 -entropic=0)
    fi

    echo "=== fuzzing ${target} for ${seconds} s ==="
    if ! "build/fuzz/fuzz/${target}" "$run/corpus" -dict="fuzz/dict/${target}.dict" \
        -max_total_time="$seconds" -timeout="$timeout" -rss_limit_mb=2048 \
        -artifact_prefix="$run/artifacts/" -print_final_stats=1 "${extra[@]}" >"$run/log" 2>&1; then
        tail -n 60 "$run/log"
        echo "FAILED: ${target}; log ${run}/log" >&2
        for artifact in "$run"/artifacts/*; do
            [ -e "$artifact" ] || continue
            echo "reproduce: build/fuzz/fuzz/${target} ${artifact}" >&2
        done
        exit 1
    fi
    grep -E '^#[0-9]+[[:space:]]+DONE' "$run/log" | tail -n 1 || true
done
echo "fuzzing ok"
