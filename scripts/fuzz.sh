#!/usr/bin/env bash
# Builds the fuzz targets and runs each for a while, starting from fuzz/corpus/ and from what earlier runs found
# (build/fuzz/corpus/). An input that breaks something is left in build/fuzz/artifacts/.
#
#     fuzz.sh [SECONDS]   for each target; default 60
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
seconds=${1:-60}
scripts/setup.sh fuzz
scripts/build.sh fuzz quelt-fuzz
source scripts/fixed-addresses.sh

mkdir -p build/fuzz/artifacts
for target in build/fuzz/bin/quelt-fuzz-*; do
    name=${target##*/quelt-fuzz-}
    mkdir -p "build/fuzz/corpus/$name"
    echo "fuzz: $name, $seconds seconds" >&2
    "${fixed_addresses[@]}" "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix="build/fuzz/artifacts/$name-" "build/fuzz/corpus/$name" "fuzz/corpus/$name"
done
