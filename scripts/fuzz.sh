#!/usr/bin/env bash
# Builds the fuzz targets and runs them for a while, as many at a time as there are processors. Each starts from
# fuzz/corpus/ and from what earlier runs found (build/fuzz/corpus/); what it says goes to build/fuzz/logs/. An input that
# breaks something is left in build/fuzz/artifacts/.
#
#     fuzz.sh [SECONDS] [TARGET...]   default: 60 seconds each, all targets
#
# What converts runs under each of the four settings of the module's switches, for a quarter of the time.
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
seconds=60
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
fi
known=(conversion differential record context compiled)
targets=("$@")
if [ $# -eq 0 ]; then
    targets=("${known[@]}")
fi
for target in "${targets[@]}"; do
    if [[ " ${known[*]} " != *" $target "* ]]; then
        echo "fuzz: no such target: $target (${known[*]} are known)" >&2
        exit 2
    fi
done

scripts/setup.sh fuzz
scripts/build.sh fuzz "${targets[@]/#/quelt-fuzz-}"
source scripts/fixed-addresses.sh
export ASAN_SYMBOLIZER_PATH=${ASAN_SYMBOLIZER_PATH:-$(command -v addr2line)}
unset QUELT_TRACE CGE_MigRen CFG_DA_Migration_Optimization

# Runs the target for so many seconds, under the switches that are named.
run_once() {
    local name=$1 time=$2 switch environment=()
    shift 2
    for switch in "$@"; do
        environment+=("$switch=")
    done
    local options=(-max_total_time="$time" -timeout=10 -rss_limit_mb=2048 -max_len=65536 -entropic=0 -print_final_stats=1
        -artifact_prefix="build/fuzz/artifacts/$name-")
    if [ "$name" != compiled ]; then
        options+=(-dict=fuzz/json.dict)
    fi
    echo "fuzz: $name, $time seconds${*:+, with $*}"
    env "${environment[@]}" "${fixed_addresses[@]}" "build/fuzz/bin/quelt-fuzz-$name" "${options[@]}" \
        "build/fuzz/corpus/$name" "fuzz/corpus/$name" 2>&1
}

run_target() {
    local name=$1 quarter=$(((seconds + 3) / 4))
    mkdir -p "build/fuzz/corpus/$name"
    case $name in
    conversion | differential)
        run_once "$name" "$quarter" &&
            run_once "$name" "$quarter" CGE_MigRen &&
            run_once "$name" "$quarter" CFG_DA_Migration_Optimization &&
            run_once "$name" "$quarter" CGE_MigRen CFG_DA_Migration_Optimization
        ;;
    *) run_once "$name" "$seconds" ;;
    esac
}

# Runs the target and says on one line what came of it; shows the end of its log when that is bad.
report_target() {
    local name=$1 log=build/fuzz/logs/$1.log
    local status=0
    echo "fuzz: $name, $seconds seconds" >&2
    run_target "$name" >"$log" || status=1
    if [ "$status" -ne 0 ]; then
        { tail -n 100 "$log" && echo "fuzz: $name failed, see $log"; } >&2
        return 1
    fi
    awk -v name="$name" '/^stat::number_of_executed_units/ { sum += $2 }
        END { printf "fuzz: %s, %d inputs, nothing found\n", name, sum }' "$log" >&2
}

mkdir -p build/fuzz/artifacts build/fuzz/logs
running=0
status=0
for target in "${targets[@]}"; do
    if [ "$running" -ge "$(nproc)" ]; then
        wait -n || status=1
        running=$((running - 1))
    fi
    report_target "$target" &
    running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
    wait -n || status=1
    running=$((running - 1))
done
exit "$status"
