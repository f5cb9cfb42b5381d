#!/usr/bin/env bash
# Builds the fuzz targets and runs each for SECONDS (default 60) on a corpus
# seeded by the library itself. Fails on the first crash, leak or sanitizer
# report; the input that caused it is left in build/fuzz/artifacts.
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
for target in entry archive roundtrip mod; do
    mkdir -p "$work/corpus/$target"
    echo "== fuzzing $target for ${seconds}s"
    status=0
    "$work/fuzz/zorv2-lbx-fuzz-$target" -max_total_time="$seconds" -print_final_stats=1 \
        -rss_limit_mb=4096 -artifact_prefix="$work/artifacts/$target-" \
        "$work/corpus/$target" "$work/seeds/$target" $(ls -d "fuzz/regressions/$target" 2>/dev/null) \
        >"$work/$target.log" 2>&1 || status=$?
    grep -E '^(stat::number_of_executed_units|SUMMARY)|ERROR|^Done' "$work/$target.log" || true
    if [ "$status" -ne 0 ]; then
        tail -n 60 "$work/$target.log"
        exit "$status"
    fi
done
