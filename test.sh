#!/usr/bin/env bash
# Sets up what is missing, builds, and runs the tests.
#
#     ./test.sh             fuzz, windows, release and asan, one after the other
#     ./test.sh PRESET...   the presets named, out of: release debug asan tsan windows fuzz
#
# The preset fuzz runs each fuzz target for a minute, see scripts/fuzz.sh. The thread sanitizer (tsan) is for whoever
# changes what threads share: with it, a run takes half as long again. windows cross-builds everything for Windows and
# runs it under Wine.
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
presets=("$@")
if [ $# -eq 0 ]; then
    presets=(fuzz windows release asan)
fi
for preset in "${presets[@]}"; do
    case $preset in
    release | debug | asan | tsan | windows | fuzz) ;;
    *)
        echo "test: no such preset: $preset (release, debug, asan, tsan, windows and fuzz are known)" >&2
        exit 2
        ;;
    esac
done

source scripts/fixed-addresses.sh

scripts/setup.sh
for preset in "${presets[@]}"; do
    if [ "$preset" = fuzz ]; then
        scripts/fuzz.sh
        continue
    fi
    if [ "$preset" = windows ]; then
        scripts/setup.sh windows
    fi
    scripts/build.sh "$preset"
    echo "test: $preset" >&2
    case $preset in
    asan | tsan) launcher=("${fixed_addresses[@]}") ;;
    *) launcher=() ;;
    esac
    status=0
    "${launcher[@]}" ctest --preset "$preset" -j "$(nproc)" || status=$?
    # Wine's server goes with the last program. One that begins just then cannot reach it, says so, and is tried again.
    if [ "$status" -ne 0 ] && [ "$preset" = windows ] &&
        grep -aq 'wine client error' build/windows/Testing/Temporary/LastTest.log; then
        status=0
        ctest --preset windows --rerun-failed || status=$?
    fi
    [ "$status" -eq 0 ] || exit "$status"
done
