#!/usr/bin/env bash
# Runs a Windows program under Wine, in an environment of the project's own.
#
#     under-wine.sh PROGRAM [ARGUMENT...]
#
# Wine's files are kept in WINEPREFIX, build/wine unless it is set. They are made by
#
#     under-wine.sh --prepare
set -euo pipefail

root=$(readlink -f "$(dirname "${BASH_SOURCE[0]}")/..")
export WINEPREFIX=${WINEPREFIX:-$root/build/wine}
# What Wine itself has to say, and its offers to install more, are not the program's.
export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml,winemenubuilder.exe=}
if [ "${1:-}" = --prepare ]; then
    mkdir -p "$WINEPREFIX"
    if ! wine wineboot --init >"$WINEPREFIX/prepare.log" 2>&1 || ! wineserver --wait; then
        cat "$WINEPREFIX/prepare.log" >&2
        echo "under-wine: Wine's files cannot be made in $WINEPREFIX" >&2
        exit 2
    fi
    exit 0
fi
exec wine "$@"
