#!/usr/bin/env bash
# Runs each libFuzzer harness of fuzz/ in turn for SECONDS (default 60) from its seed corpus, and
# prints its executions per second, the inputs it found new, and any crash with the input that
# caused it (kept in build-fuzz/crashes/). The words in fuzz/dict/<name>.dict, when there, help it
# build inputs; new inputs go to a scratch folder, never into the tree.
# Exits with 1 when a harness crashed. Run it from the repository:
#   bench/fuzz.sh [SECONDS [HARNESS...]]     (all harnesses unless some are named)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift $(($# > 0 ? 1 : 0))
harnesses=("$@")
[ ${#harnesses[@]} -gt 0 ] || harnesses=($(basename -s .cpp fuzz/*.cpp))

[ -f build-fuzz/build.ninja ] \
    || cmake -S fuzz -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++ >/dev/null
cmake --build build-fuzz >/dev/null
mkdir -p build-fuzz/crashes

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

crashed=0
printf '%-14s %8s %12s %10s %6s  %s\n' harness seconds executions execs/s new result
for name in "${harnesses[@]}"; do
    mkdir "$work/$name"
    dictionary=()
    [ -f "fuzz/dict/$name.dict" ] && dictionary=(-dict="fuzz/dict/$name.dict")
    start=$(date +%s)
    status=0
    "build-fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
        "${dictionary[@]}" -artifact_prefix="build-fuzz/crashes/$name-" \
        "$work/$name" "fuzz/corpus/$name" \
        >"$work/$name.log" 2>&1 || status=$?
    stat() { sed -n "s/^stat::$1: *//p" "$work/$name.log" | tail -1; }
    result=ok
    if [ "$status" -ne 0 ]; then
        crashed=1
        reason=$(grep -m1 -E 'Property does not hold|ERROR: (AddressSanitizer|libFuzzer)|runtime error' \
            "$work/$name.log" || echo "exit status $status")
        input=$(sed -n 's/.*Test unit written to //p' "$work/$name.log" | tail -1)
        result="CRASH: $reason; input: ${input:-none written}"
    fi
    printf '%-14s %8d %12s %10s %6s  %s\n' "$name" $(($(date +%s) - start)) \
        "$(stat number_of_executed_units)" "$(stat average_exec_per_sec)" \
        "$(stat new_units_added)" "$result"
done
exit "$crashed"
