#!/usr/bin/env bash
# Checks that all C++ sources are formatted as .clang-format says; with --fix, formats them. Ends with status 77
# (skipped) when clang-format 14 is missing: other versions format some lines differently.
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
tool=
for candidate in clang-format-14 clang-format; do
    if command -v "$candidate" >/dev/null && "$candidate" --version | grep -q 'version 14\.'; then
        tool=$candidate
        break
    fi
done
if [ -z "$tool" ]; then
    echo "check-format: skipped, clang-format 14 is missing (package clang-format-14)"
    exit 77
fi

# A check that lets a badly formatted line pass is worth nothing.
if "$tool" --dry-run --Werror --assume-filename=core/specimen.cpp <<<'int  f( ){return 1 ;}' 2>/dev/null; then
    echo "check-format: the check is blind, it does not see a badly formatted line"
    exit 1
fi

mapfile -t sources < <(find core QueltDataMigration.m host tests bench fuzz docs -name '*.h' -o -name '*.cpp' | sort)
if [ ${#sources[@]} -eq 0 ]; then
    echo "check-format: no sources found in $PWD"
    exit 1
fi
if [ "${1:-}" = --fix ]; then
    "$tool" -i "${sources[@]}"
elif ! "$tool" --dry-run --Werror "${sources[@]}"; then
    echo "check-format: run scripts/check-format.sh --fix"
    exit 1
fi
echo "check-format: ${#sources[@]} files"
