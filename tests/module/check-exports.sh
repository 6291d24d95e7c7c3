#!/bin/sh
# Compares the names that a shared library exports with a checked-in list.
#
#     check-exports.sh LIBRARY LIST
#
# LIST holds one demangled name a line, in any order; lines that begin with # are comments. Succeeds when the two agree.
set -eu
LC_ALL=C
export LC_ALL

library=$1
list=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Answers whether two sorted lists agree; shows the lines that only one of them has.
agree() {
    diff "$1" "$2" >"$work/difference" && return 0
    sed -n -e 's/^< /  listed, not exported: /p' -e 's/^> /  exported, not listed: /p' "$work/difference"
    return 1
}

must_disagree() {
    if agree "$1" "$2" >"$work/shown" || ! grep -q "$3" "$work/shown"; then
        echo "check-exports: the check is blind, it does not see a name that is $3"
        exit 1
    fi
}

command -v nm >"$work/nm" || {
    echo "check-exports: nm is missing (package binutils)"
    exit 1
}
nm -D --defined-only -C "$library" >"$work/symbols"
# Without the names of versions, and without the versions that names bear.
sed -e '/^[0-9a-f]* *A /d' -e 's/^[0-9a-f]* *[A-Za-z] //' -e 's/@@*QUELT_[A-Z_]*[0-9]*$//' "$work/symbols" |
    sort -u >"$work/exported"
grep -v -e '^#' -e '^$' "$list" | sort -u >"$work/listed"
if [ ! -s "$work/exported" ] || [ ! -s "$work/listed" ]; then
    echo "check-exports: nothing is exported by $library, or nothing is listed in $list"
    exit 1
fi

# A check that lets a wrong list pass is worth nothing: it must reject one with a name too few and one with a name
# too many.
sed 1d "$work/listed" >"$work/too-few"
{ cat "$work/listed"; echo "zzz::notExported()"; } >"$work/too-many"
must_disagree "$work/too-few" "$work/listed" "exported, not listed"
must_disagree "$work/too-many" "$work/listed" "listed, not exported"

if ! agree "$work/listed" "$work/exported"; then
    echo "check-exports: $library and $list differ"
    exit 1
fi
echo "check-exports: $(wc -l <"$work/exported") names, as listed"
