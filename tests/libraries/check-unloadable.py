#!/usr/bin/env python3
"""Checks that a library can be unloaded, and that what it has made for its host outlives it.

    check-unloadable.py [--nm NM] CORE-FOLDER OBJECT...

The object files are those of both libraries, the module's outside the core's folder of objects; CORE-FOLDER holds the
core's headers. None may register what runs at the end of a thread, which keeps the library loaded until then, nor
have unique symbols, which keep it loaded for good. And none outside the core may have the virtual table of a class
that the core's headers define: an object with such a table is of no use any more once the library is gone. (A class of
the core has its table in the core when it has a virtual operation that is neither pure nor inline.)
Every run must first reject the specimens below.
"""

import os
import re
import sys

sys.dont_write_bytecode = True
from object_files import listings_of

THREAD_ENDS = {"__cxa_thread_atexit", "__cxa_thread_atexit_impl", "__mingw_cxa_thread_atexit", "__tlregdtor"}


def classes_of(header):
    """The names of the classes that a header defines, at whatever depth."""
    return set(re.findall(r"^\s*(?:class|struct)\s+(?:QUELT_CORE_API\s+)?(\w+)(?:\s+final)?[ \t]*(?:[:{][^;\n]*)?$",
                          header, re.M)) - {"QueltInTyped"}


def class_of_table(symbol):
    """The class that a virtual table is of, without what it is nested in (for QueltInTyped: the class it is for)."""
    if not symbol.startswith("_ZTV"):
        return None
    rest = symbol[4:]
    names = []
    while True:
        rest = rest.lstrip("N")
        match = re.match(r"(\d+)", rest)
        if not match:
            break
        end = match.end() + int(match.group(1))
        names.append(rest[match.end():end])
        rest = rest[end:]
        if names[-1] == "QueltInTyped" and rest.startswith("I"):
            names, rest = [], rest[1:]
            continue
        if names[-1] != "quelt":
            break
    return names[-1] if names else None


def problems_of(listing, core_classes, is_core):
    """What is wrong with an object file, by its listing of nm."""
    problems = []
    for line in listing.splitlines():
        match = re.fullmatch(r"\s*[0-9a-fA-F]*\s+(\S)\s+(\S+)\s*", line)
        if not match:
            continue
        kind, symbol = match.groups()
        if kind == "u":
            problems.append(f"{symbol} is unique in the process")
        elif kind in "Uw" and symbol.split("@")[0] in THREAD_ENDS:
            problems.append("something is destroyed at the end of a thread")
        elif kind not in "Uwv" and not is_core and class_of_table(symbol) in core_classes:
            problems.append(f"{symbol}: the virtual table of a class of the core")
    return problems


SPECIMEN_HEADER = """
class QueltEeOther;
/// An A.
class QUELT_CORE_API QueltEeA : public QueltInTyped<QueltEeA, QueltInObject> {
    class const_iterator {
    };
};
struct QueltEeB {
};
namespace quelt {
class Inner final : public QueltEeB
{
};
}
"""

# (a listing of nm, whether the object is the core's, how many problems it has)
SPECIMENS = [
    ("0000000000000000 V _ZTV8QueltEeA\n", False, 1),
    ("0000000000000000 D _ZTV8QueltEeB\n", False, 1),
    ("0000000000000000 V _ZTVN5quelt5InnerE\n", False, 1),
    ("0000000000000000 V _ZTV12QueltInTypedI8QueltEeA13QueltInObjectE\n", False, 1),
    ("0000000000000000 u _ZGVZN1A1fEvE1x\n", True, 1),
    ("                 U __cxa_thread_atexit\n", True, 1),
    ("                 U __cxa_thread_atexit_impl@GLIBC_2.18\n", False, 1),
    ("0000000000000000 V _ZTV8QueltEeA\n", True, 0),
    ("                 U _ZTV8QueltEeA\n                 U __cxa_atexit\n", False, 0),
    ("0000000000000000 V _ZTV12QueltEeOther\n0000000000000000 V _ZTVN5quelt6Module5InnerE\n", False, 0),
    ("0000000000000000 V _ZTV12QueltInTypedIN8QueltMig7ElementE13QueltInObjectE\n", False, 0),
    ("0000000000000000 V _ZTVSt23_Sp_counted_ptr_inplaceI8QueltEeASaIvELN9__gnu_cxx12_Lock_policyE2EE\n", False, 0),
]


def try_specimens():
    classes = classes_of(SPECIMEN_HEADER)
    if classes != {"QueltEeA", "const_iterator", "QueltEeB", "Inner"}:
        sys.exit(f"check-unloadable: the check is blind: the specimen's classes are {sorted(classes)}")
    for listing, is_core, expected in SPECIMENS:
        found = problems_of(listing, classes, is_core)
        if len(found) != expected:
            sys.exit(f"check-unloadable: the check is blind: it finds {found} in\n{listing}")


def main():
    try_specimens()
    arguments = sys.argv[1:]
    nm = "nm"
    if arguments[0] == "--nm":
        nm, arguments = arguments[1], arguments[2:]
    core, objects = arguments[0], arguments[1:]

    core_classes = set()
    for parent, _, files in os.walk(core):
        for name in files:
            if name.endswith(".h"):
                with open(os.path.join(parent, name), encoding="utf-8") as file:
                    core_classes |= classes_of(file.read())
    failures = []
    tables = 0
    for path, listing in listings_of(nm, objects).items():
        is_core = "QueltCore.dir" in path.replace(os.sep, "/").split("/")
        tables += is_core and len({name for name in re.findall(r"_ZTV\w+", listing)
                                   if class_of_table(name) in core_classes})
        failures += [f"{os.path.basename(path)}: {problem}"
                     for problem in problems_of(listing, core_classes, is_core)]
    if tables == 0:
        sys.exit("check-unloadable: the core's object files are missing, or hold no virtual table of its classes")
    for failure in failures:
        print(failure)
    print(f"check-unloadable: {len(SPECIMENS)} specimens, {len(core_classes)} classes of the core, "
          f"{len(objects)} object files, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
