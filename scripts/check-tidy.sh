#!/usr/bin/env bash
# Runs clang-tidy, as .clang-tidy says, over the sources of the product.
#
#     check-tidy.sh [FILE PATTERN]   default: everything in core/, QueltDataMigration.m/ and host/
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
if ! command -v run-clang-tidy-16 >/dev/null; then
    echo "check-tidy: clang-tidy 16 is missing (package clang-tidy-16)" >&2
    exit 2
fi

# The debug build's commands serve, without the options that only GCC knows.
cmake --preset debug >/dev/null
mkdir -p build/tidy
sed 's/ -fno-gnu-unique / /g' build/debug/compile_commands.json >build/tidy/compile_commands.json
run-clang-tidy-16 -quiet -p build/tidy -extra-arg=-Wno-unknown-warning-option \
    "${1:-^$PWD/(core|QueltDataMigration[.]m|host)/}"
