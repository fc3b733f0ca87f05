#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer and UndefinedBehaviorSanitizer)
# and runs each for SECONDS (default 30) from its seed corpus in tests/fuzz/corpus.
# New inputs go to a scratch folder; a finding stops the script with the input saved in
# build-fuzz/findings.  Usage: scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}

scripts/deps.sh
CC=clang CXX=clang++ cmake -S tests/fuzz -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build-fuzz --parallel "$(nproc)"

mkdir -p build-fuzz/findings
for target in listing pathrules ownerfile scripttext settingsdoc; do
    echo "== fuzz_$target for ${seconds}s"
    scratch=$(mktemp -d)
    log=build-fuzz/fuzz_$target.log
    status=0
    ./build-fuzz/fuzz_$target -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 \
        -artifact_prefix=build-fuzz/findings/ "$scratch" "tests/fuzz/corpus/$target" \
        >"$log" 2>&1 || status=$?
    rm -rf "$scratch"
    grep -E '^(stat::number_of_executed_units|stat::peak_rss_mb|SUMMARY|Done)' "$log" || true
    if [ "$status" -ne 0 ]; then
        echo "fuzz_$target failed (exit $status); see $log and build-fuzz/findings" >&2
        exit 1
    fi
done
