#!/usr/bin/env bash
# Configures and builds one preset, quietly: what the tools say goes to build/<preset>.log and is shown when they fail.
#
#     build.sh PRESET [TARGET...]
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
preset=$1
shift
log=build/$preset.log
mkdir -p build

echo "build: $preset, into build/$preset" >&2
if ! cmake --preset "$preset" >"$log" 2>&1 ||
    ! cmake --build --preset "$preset" ${1:+--target "$@"} >>"$log" 2>&1; then
    cat "$log" >&2
    echo "build: $preset failed, see $log" >&2
    exit 2
fi
