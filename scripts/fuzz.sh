#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang and runs each for the given number of seconds
# (default 30), seeded from the samples and the kept regression inputs.
# Usage: scripts/fuzz.sh [SECONDS] [HARNESS...]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-30}"
shift || true
harnesses=("$@")
[ ${#harnesses[@]} -eq 0 ] && harnesses=(loadModel decodeStream editChain scanCompiledScenery)

build=build/fuzz
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
    -DCMAKE_CXX_COMPILER=clang++ -DVELMORA_FUZZ=ON -DVELMORA_PREVIEW=OFF \
    -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target $(printf 'fuzz_%s ' "${harnesses[@]}") >/dev/null

status=0
for harness in "${harnesses[@]}"; do
    corpus="$build/corpus/$harness"
    mkdir -p "$corpus" "$build/crashes/$harness"
    seeds=(tests/fuzz/seeds/"$harness" tests/fuzz-regressions/"$harness")
    existing=()
    for s in "${seeds[@]}"; do [ -d "$s" ] && existing+=("$s"); done
    echo "== fuzz_$harness for ${seconds}s"
    if ! "$build/tests/fuzz/fuzz_$harness" "$corpus" "${existing[@]}" \
        -max_total_time="$seconds" -rss_limit_mb=1024 -malloc_limit_mb=512 -timeout=10 \
        -artifact_prefix="$build/crashes/$harness/" -print_final_stats=1 2>"$build/$harness.log"; then
        echo "fuzz_$harness found a failure; see $build/$harness.log and $build/crashes/$harness/"
        tail -30 "$build/$harness.log"
        status=1
    fi
    grep -E "^#[0-9]+[[:space:]]+DONE|stat::number_of_executed_units|stat::peak_rss_mb" \
        "$build/$harness.log" || true
done
exit $status
