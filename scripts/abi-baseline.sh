#!/usr/bin/env bash
# Writes the baselines of the two libraries' binary interfaces anew, from a debug build: tests/libraries/abi/*.abi.
# CONTRIBUTING.md says when that is right.
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
scripts/build.sh debug QueltDataMigration
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/debug/CMakeCache.txt)
exec python3 tests/libraries/check-abi.py --renew tests/libraries/abi --compiler "$compiler" \
    --libraries build/debug/lib/libQueltCore.so build/debug/lib/libQueltDataMigration.so
