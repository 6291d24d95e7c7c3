#!/bin/sh
# Compares the names that a shared library exports with a checked-in list.
#
#     check-exports.sh LIBRARY LIST [OBJDUMP]
#
# LIBRARY is a shared object or a DLL; a DLL is read by OBJDUMP, which is objdump unless it is given, and must know the
# format. LIST holds one demangled name a line, in any order; lines that begin with # are comments. Succeeds when the two
# agree.
set -eu
LC_ALL=C
export LC_ALL

library=$1
list=$2
objdump=${3:-objdump}
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

need() {
    command -v "$1" >"$work/found" || {
        echo "check-exports: $1 is missing (package $2)"
        exit 1
    }
}

list_shared_object() {
    need nm binutils
    nm -D --defined-only -C "$library" >"$work/symbols"
    # Without the names of versions, and without the versions that names bear.
    sed -e '/^[0-9a-f]* *A /d' -e 's/^[0-9a-f]* *[A-Za-z] //' -e 's/@@*QUELT_[A-Z_]*[0-9]*$//' "$work/symbols" >"$work/names"
}

# The names stand in a table of their own, up to an empty line: one a line, behind its numbers.
list_dll() {
    need "$objdump" "binutils or binutils-mingw-w64-x86-64"
    need c++filt binutils
    "$objdump" -p "$library" >"$work/headers"
    sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^ *$/s/^[[:space:]]*\[ *[0-9]*\].* //p' "$work/headers" >"$work/mangled"
    c++filt <"$work/mangled" >"$work/names"
}

case $(head -c 2 "$library") in
MZ) list_dll ;;
*) list_shared_object ;;
esac
sort -u "$work/names" >"$work/exported"
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
