#!/usr/bin/env bash
# Sets up what is missing, builds, and runs the tests.
#
#     ./test.sh             release and asan, one after the other
#     ./test.sh PRESET...   the presets named, out of: release debug asan tsan
#
# The thread sanitizer (tsan) is for whoever changes what threads share: with it, a run takes half as long again.
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
presets=("$@")
if [ $# -eq 0 ]; then
    presets=(release asan)
fi
for preset in "${presets[@]}"; do
    case $preset in
    release | debug | asan | tsan) ;;
    *)
        echo "test: no such preset: $preset (release, debug, asan and tsan are known)" >&2
        exit 2
        ;;
    esac
done

# The sanitizers keep their shadow memory at fixed addresses, which a kernel that randomises much may have given away.
fixed_addresses=()
if setarch "$(uname -m)" -R true 2>/dev/null; then
    fixed_addresses=(setarch "$(uname -m)" -R)
fi

scripts/setup.sh
for preset in "${presets[@]}"; do
    scripts/build.sh "$preset"
    echo "test: $preset" >&2
    case $preset in
    asan | tsan) launcher=("${fixed_addresses[@]}") ;;
    *) launcher=() ;;
    esac
    "${launcher[@]}" ctest --preset "$preset" -j "$(nproc)"
done
