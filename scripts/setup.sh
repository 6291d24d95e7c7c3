#!/usr/bin/env bash
# Sees to it that the Debian packages are there that building and testing need. Installs what is missing when that is
# possible (as root, or through sudo); else names it and ends with status 2.
#
#     setup.sh [fuzz | windows | coverage | bench]   what fuzzing, building for Windows, or measuring needs, too
set -euo pipefail

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
packages=(
    g++ cmake ninja-build                        # to build
    libsimdjson-dev libcli11-dev                 # the host application
    libgtest-dev libgmock-dev rapidjson-dev      # tests
    libbenchmark-dev                             # benchmarks
    binutils python3 clang-format-14             # checks that the tests run
    doxygen groff-base zsh fish                  # documentation, and what tries it
    git dpkg-dev file pkg-config gzip            # packages, and their tests
    abigail-tools                                # the comparison of binary interfaces
)
case ${1:-} in
fuzz) packages+=(clang-16 libclang-rt-16-dev) ;;
coverage) packages+=(gcovr) ;;
bench) packages+=(time) ;;
windows)
    packages+=(
        g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 # to build
        googletest dpkg-dev                                  # what Debian builds for its own platform only
        wine wine64                                          # to run
    )
    ;;
esac

say() { printf '%s\n' "$*" >&2; }

if ! command -v dpkg-query >/dev/null; then
    say "setup: not a Debian system, nothing is checked; needed are the equivalents of: ${packages[*]}"
    exit 0
fi

installed=$(dpkg-query -W -f '${db:Status-Status} ${binary:Package}\n' "${packages[@]}" 2>/dev/null |
    sed -n -e 's/:[a-z0-9]*$//' -e 's/^installed //p' || true)
missing=()
for package in "${packages[@]}"; do
    grep -qxF -- "$package" <<<"$installed" || missing+=("$package")
done
finish() {
    if [ "$1" = windows ]; then
        scripts/simdjson-source.sh
        scripts/under-wine.sh --prepare
    fi
    exit 0
}

if [ ${#missing[@]} -eq 0 ]; then
    finish "${1:-}"
fi

as_root=(env)
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo env)
    if ! command -v sudo >/dev/null || ! { sudo -n true 2>/dev/null || [ -t 0 ]; }; then
        say "setup: these packages are missing: ${missing[*]}"
        say "setup: as root, run: apt-get update && apt-get install -y ${missing[*]}"
        exit 2
    fi
fi

say "setup: installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! "${as_root[@]}" apt-get update >"$log" 2>&1 ||
    ! "${as_root[@]}" DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1; then
    cat "$log" >&2
    say "setup: apt-get could not install: ${missing[*]}"
    exit 2
fi
finish "${1:-}"
