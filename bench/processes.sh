# Sourced by the benchmark scripts: every process they start goes into `pids`, and all of them are
# stopped, and waited for, when the script exits.
pids=()
stop_all() {
    local pid
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in "${pids[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
    pids=()
}
trap stop_all EXIT
trap 'exit 130' INT TERM

log() { echo "== $*" >&2; }
