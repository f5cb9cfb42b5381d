#!/usr/bin/env bash
# Builds the fuzz targets and runs each for SECONDS (default 60), as many at
# once as there are cores, on a corpus seeded by the library itself. Fails on
# the first crash, leak or sanitizer report; the input that caused it is left
# in build/fuzz/artifacts.
# Usage: fuzz/run.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"

scripts/setup clang libclang-rt-dev
cmake --preset fuzz
cmake --build --preset fuzz -j "$(nproc)"

work=build/fuzz
rm -rf "$work/seeds"
"$work/fuzz/zorv2-lbx-fuzz-seeds" "$work/seeds"
mkdir -p "$work/artifacts"

# Runs one target; its log stays in build/fuzz/TARGET.log.
fuzz() {
    local target=$1
    mkdir -p "$work/corpus/$target"
    "$work/fuzz/zorv2-lbx-fuzz-$target" -max_total_time="$seconds" -print_final_stats=1 \
        -rss_limit_mb=4096 -artifact_prefix="$work/artifacts/$target-" \
        "$work/corpus/$target" "$work/seeds/$target" $(ls -d "fuzz/regressions/$target" 2>/dev/null) \
        >"$work/$target.log" 2>&1
}

# One target a core at a time: each still runs for SECONDS.
targets=(entry archive roundtrip mod)
cores=$(nproc)
failed=0
for ((first = 0; first < ${#targets[@]}; first += cores)); do
    batch=("${targets[@]:first:cores}")
    pids=()
    for target in "${batch[@]}"; do
        echo "== fuzzing $target for ${seconds}s"
        fuzz "$target" &
        pids+=($!)
    done
    for i in "${!batch[@]}"; do
        target=${batch[$i]}
        status=0
        wait "${pids[$i]}" || status=$?
        echo "== $target"
        grep -E '^(stat::number_of_executed_units|SUMMARY)|ERROR|^Done' "$work/$target.log" || true
        if [ "$status" -ne 0 ]; then
            tail -n 60 "$work/$target.log"
            failed=$status
        fi
    done
    [ "$failed" -eq 0 ] || exit "$failed"
done
