#!/usr/bin/env python3
"""Compares the binary interfaces of shared libraries with checked-in baselines.

    check-abi.py [--renew] BASELINE-FOLDER --compiler CXX --libraries LIBRARY...

BASELINE-FOLDER holds a baseline NAME.abi for each libNAME.so, and suppressions.ini. A removed or changed symbol is a
break, and so is a changed layout or virtual table of a class that the interface names; what is merely added is none.
Needs libraries with debug information. With --renew, writes the baselines instead. Every run must first find what is
wrong with libraries of its own, which are made with CXX.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

TOOLS = ["abidw", "abidiff"]

SPECIMEN = """
class __attribute__((visibility("default"))) Root {
public:
    virtual ~Root();
    virtual int first();
    virtual int second(int number);
    int used = 0;
};
Root::~Root() = default;
int Root::first() { return used; }
int Root::second(int number) { return number; }
__attribute__((visibility("default"))) int take(Root& root) { return root.first(); }
__attribute__((visibility("default"))) long count = 0;
"""

FIRST = "    virtual int first();\n"
SECOND = "    virtual int second(int number);\n"

# What is done to the specimen, and whether it is a break: (what, text, text instead, break).
CHANGES = [
    ("two virtual operations change places", FIRST + SECOND, SECOND + FIRST, True),
    ("a virtual operation comes between", FIRST, FIRST + "    virtual void between() {}\n", True),
    ("a virtual operation is none any more", SECOND, SECOND.replace("virtual ", ""), True),
    ("a member comes in front", "    int used = 0;\n", "    long more = 0;\n    int used = 0;\n", True),
    ("a member is wider", "    int used = 0;\n", "    long used = 0;\n", True),
    ("a function goes", "int take(Root& root)", "int takeOther(Root& root)", True),
    ("a function takes something else", "int take(Root& root)", "int take(Root& root, int)", True),
    ("a variable goes", "long count = 0;", "long otherCount = 0;", True),
    ("a function comes", "int take(Root& root)", "int takeMore(Root& root) { return root.used; }\n"
     '__attribute__((visibility("default"))) int take(Root& root)', False),
    ("nothing changes", "", "", False),
]


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False)


def describe(library, description, suppressions):
    """Describes the interface of `library` in a file; nothing in it says where it was built, or on which lines."""
    result = run("abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--no-elf-needed",
                 "--no-parameter-names", "--type-id-style", "hash", "--suppressions", suppressions,
                 "--out-file", description, library)
    if result.returncode != 0 or not os.path.exists(description):
        sys.exit(f"check-abi: abidw failed on {library}\n{result.stdout}{result.stderr}")
    tree = xml.etree.ElementTree.parse(description)
    leave_out_version_names(tree.getroot())
    leave_out_inner_functions(tree.getroot())
    leave_out_repetitions(tree.getroot())
    stand_in_for_dropped_types(tree.getroot())
    xml.etree.ElementTree.indent(tree)
    with open(description, "w", encoding="utf-8") as file:
        file.write(xml.etree.ElementTree.tostring(tree.getroot(), encoding="unicode") + "\n")


def leave_out_version_names(root):
    """Takes out the symbols that some linkers make for the versions themselves."""
    for parent in root.iter():
        for symbol in parent.findall("elf-symbol"):
            if re.fullmatch(r"QUELT_[A-Z_]+_\d+", symbol.get("name")):
                parent.remove(symbol)


def leave_out_inner_functions(root):
    """Takes out what no other program can call: member functions without symbol or place in a virtual table."""
    for parent in root.iter():
        for member in parent.findall("member-function"):
            function = member.find("function-decl")
            if "vtable-offset" not in member.attrib and "elf-symbol-id" not in function.attrib:
                parent.remove(member)


def leave_out_repetitions(root):
    """Takes out classes that were described before, word for word, for another source file."""
    seen = set()
    for parent in root.iter():
        for described in parent.findall("class-decl"):
            text = xml.etree.ElementTree.tostring(described)
            if text in seen:
                parent.remove(described)
            seen.add(text)


STAND_IN = "of-the-standard-library"


def stand_in_for_dropped_types(root):
    """Gives every type that was dropped, but is still named, one that stands for them all."""
    known = {element.get("id") for element in root.iter() if "id" in element.attrib}
    is_needed = False
    for element in root.iter():
        for key in ("type-id", "naming-typedef-id"):
            if key in element.attrib and element.get(key) not in known:
                element.set(key, STAND_IN)
                is_needed = True
    if is_needed:
        unit = root.find("abi-instr")
        unit.insert(0, xml.etree.ElementTree.Element("type-decl", {"name": "standard library", "size-in-bits": "8",
                                                                   "id": STAND_IN}))


def breaks(baseline, library, suppressions):
    """What abidiff has to say of breaks, nothing when there are none."""
    with tempfile.TemporaryDirectory() as work:
        now = os.path.join(work, "now.abi")
        describe(library, now, suppressions)
        result = run("abidiff", "--no-added-syms", baseline, now)
    if result.returncode & 3 or result.returncode < 0:
        sys.exit(f"check-abi: abidiff failed on {baseline} and {library}\n{result.stdout}{result.stderr}")
    return (result.stdout or "a change without a word\n") if result.returncode != 0 else ""


def make_specimen(compiler, work, source):
    path = os.path.join(work, "specimen.cpp")
    with open(path, "w", encoding="utf-8") as file:
        file.write(source)
    library = os.path.join(work, "libSpecimen.so")
    result = run(*compiler, "-std=c++20", "-g", "-O0", "-fPIC", "-shared", "-fvisibility=hidden", path, "-o", library)
    if result.returncode != 0:
        sys.exit(f"check-abi: the specimen does not compile\n{result.stderr}")
    return library


def try_specimens(compiler, suppressions):
    with tempfile.TemporaryDirectory() as work:
        baseline = os.path.join(work, "Specimen.abi")
        describe(make_specimen(compiler, work, SPECIMEN), baseline, suppressions)
        for what, text, instead, is_break in CHANGES:
            if text and SPECIMEN.count(text) != 1:
                sys.exit(f"check-abi: the specimen has no place where {what}")
            changed = SPECIMEN.replace(text, instead) if text else SPECIMEN
            found = breaks(baseline, make_specimen(compiler, work, changed), suppressions)
            if bool(found) != is_break:
                sys.exit(f"check-abi: the check is blind: {what}, and it says\n{found or 'nothing'}")


def symbols_of(baseline):
    with open(baseline, encoding="utf-8") as file:
        text = file.read()
    if re.search(r"path='/", text):
        sys.exit(f"check-abi: {baseline} says where it was built")
    return text.count("<elf-symbol "), text.count("<class-decl ")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--renew", action="store_true")
    parser.add_argument("--compiler", nargs="+", required=True)
    parser.add_argument("--libraries", nargs="+", required=True)
    parser.add_argument("baselines")
    arguments = parser.parse_args()

    missing = [tool for tool in TOOLS if shutil.which(tool) is None]
    if missing:
        sys.exit(f"check-abi: {' and '.join(missing)} missing (package abigail-tools)")
    suppressions = os.path.join(arguments.baselines, "suppressions.ini")
    try_specimens(arguments.compiler, suppressions)

    failures = 0
    for library in arguments.libraries:
        name = re.match(r"lib(\w+)\.so", os.path.basename(library)).group(1)
        baseline = os.path.join(arguments.baselines, name + ".abi")
        if arguments.renew:
            describe(library, baseline, suppressions)
        symbols, classes = symbols_of(baseline)
        if symbols == 0 or classes == 0:
            sys.exit(f"check-abi: {baseline} is empty; was {library} built with debug information?")
        found = breaks(baseline, library, suppressions)
        if found:
            failures += 1
            print(f"{name} breaks the programs that were built against its baseline:\n{found}")
        else:
            print(f"{name}: {symbols} symbols and {classes} classes, as in its baseline")
    print(f"check-abi: {len(CHANGES)} specimens, {len(arguments.libraries)} libraries, {failures} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
