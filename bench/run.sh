#!/usr/bin/env bash
# Builds the benchmarks, runs them, and writes one table of what they measured, as table.md and table.json. What is to be
# compared runs by turns; only figures of one run belong together.
#
#     bench/run.sh [--records N] [--memory N] [FOLDER]
#
#     --records  how many records quelt-migrate converts in each round; default 100000
#     --memory   how many it converts once more, to see whether its memory grows; default 300000
#     FOLDER     where the table and the figures behind it go; default build/bench
set -euo pipefail

records=100000
memory=300000
folder=
while [ $# -gt 0 ]; do
    case $1 in
    --records) records=$2 && shift 2 ;;
    --memory) memory=$2 && shift 2 ;;
    -*) sed -n '2,/^set/{/^#/s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}" >&2 && exit 2 ;;
    *) folder=$(mkdir -p "$1" && cd "$1" && pwd) && shift ;;
    esac
done
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
folder=${folder:-$PWD/build/bench}
mkdir -p "$folder"

scripts/setup.sh bench
scripts/build.sh release quelt-bench quelt-migrate quelt-parse-baseline
programs=build/release/bin

measure() {
    local name=$1
    shift
    echo "bench: $name" >&2
    "$programs/quelt-bench" --benchmark_out="$folder/$name.json" --benchmark_out_format=json "$@" >"$folder/$name.txt"
}
measure workloads --benchmark_filter='^compare'
measure types --benchmark_filter='^typeTest'
measure growth --benchmark_filter='^convert' --benchmark_min_time=0.1 --benchmark_repetitions=3
echo "bench: host" >&2
python3 bench/measure_host.py --migrate "$programs/quelt-migrate" --baseline "$programs/quelt-parse-baseline" \
    --records "$records" --memory "$memory" >"$folder/host.json"
python3 bench/make_table.py "$folder"
cat "$folder/table.md"
