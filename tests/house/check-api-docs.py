#!/usr/bin/env python3
"""Builds the API documentation and looks at the pages.

    check-api-docs.py ROOT EXAMPLE

The build fails on any warning of Doxygen, so on everything that the public headers do not document. EXAMPLE is the program
that the main page shows; it must print what the page says.
"""
import filecmp
import html
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

# What the documentation is made from.
SOURCES = ["core", "QueltDataMigration.m/include", "docs", "scripts"]

# Pages with something that a reader must find on each.
EXPECTED = {
    "index.html": ["Where to start", "Ownership", "Result codes", "Threads", "arena", "Trace", "A whole program"],
    "classQueltEeTarselMigrationServices.html": ["ConvertEeGenericExprToEeExpr", "ConvertFromFlatSeriesExprToBranchingExpr",
                                                 "E_NOTIMPL for what is deliberately not converted"],
    "classQueltReconstituteEffectivityFromCompiledBinary.html": ["RetrieveChangeOperations", "The caller owns the elements"],
    "classQueltEeExpressionContext.html": ["AddModelDico", "E_ALREADYTHERE when the name is taken"],
    "classQueltEeModelDico.html": ["addVariable"],
    "classQueltEeGenericExpression.html": ["ListMode"],
    "classQueltEeSerialEff.html": ["opAnd", "Keeps what is in other as well"],  # said of the base class
    "classQueltInArena.html": ["reset"],
    "QueltInMap_8h.html": ["QueltInDeleteWithObjects"],
    "QueltInResult_8h.html": ["S_OK", "E_OUTOFMEMORY", "The result would pass a limit"],
    "md_docs_compiled_format.html": ["The bytes"],
}

failures = []


def build(root, folder):
    return subprocess.run([root / "scripts/build-api-docs.sh", folder, "1.2.3"], capture_output=True, text=True, timeout=300)


def text_of(page):
    return re.sub(r"\s+", " ", html.unescape(re.sub(r"<[^>]*>", "", page.read_text(encoding="utf-8"))))


def check_pages(root, folder):
    for name, wanted in EXPECTED.items():
        page = folder / name
        if not page.is_file():
            failures.append(f"{name}: is missing")
            continue
        text = text_of(page)
        failures.extend(f"{name}: lacks '{words}'" for words in wanted if words not in text)
    # every class that the main page sends its readers to
    main_page = (root / "docs/api/main.md").read_text(encoding="utf-8")
    index = (folder / "index.html").read_text(encoding="utf-8")
    classes = set(re.findall(r"\bQuelt(?:Ee|In|Qm|Flt|Compiled|Reconstitute|CoreEVC_)\w+", main_page)) - {
        "QueltInDeleteWithObjects"}
    if len(classes) < 20:
        failures.append(f"main.md: names {len(classes)} classes only")
    for name in classes:
        page = "class" + name.replace("_", "__") + ".html"
        if not (folder / page).is_file() or f'href="{page}' not in index:
            failures.append(f"index.html: does not lead to {name}")


def check_comments(root):
    """A line of a comment that begins with a number and a full stop would become an item of a list."""
    for header in [*(root / "core").rglob("*.h"), *(root / "QueltDataMigration.m/include").rglob("*.h")]:
        for number, line in enumerate(header.read_text(encoding="utf-8").split("\n"), 1):
            if re.match(r"\s*///\s+\d+\.(\s|$)", line):
                failures.append(f"{header.relative_to(root)}:{number}: begins with a number and a full stop")


def check_contents(folder, foreign):
    """Nothing of the machine in the pages, and nothing that a browser would fetch from elsewhere."""
    count = 0
    for page in sorted(folder.rglob("*")):
        if page.suffix not in (".html", ".js", ".css"):
            continue
        count += 1
        text = page.read_text(encoding="utf-8")
        failures.extend(f"{page.name}: has the path {path}" for path in foreign if path in text)
        if re.search(r"""(?:src|href)=["']?(?:https?:)?//|url\(["']?(?:https?:)?//|@import""", text):
            failures.append(f"{page.name}: refers to another host")
    return count


def differences(left, right):
    names = {path.relative_to(left) for path in left.rglob("*") if path.is_file()}
    others = {path.relative_to(right) for path in right.rglob("*") if path.is_file()}
    return sorted(str(name) for name in names ^ others | {
        name for name in names & others if not filecmp.cmp(left / name, right / name, shallow=False)})


def damage(root):
    """Takes one comment out of a header."""
    header = root / "core/infrastructure/QueltInGuid.h"
    text = header.read_text(encoding="utf-8")
    header.write_text(text.replace("    /// True when all bytes are equal.\n", ""), encoding="utf-8")
    return text != header.read_text(encoding="utf-8")


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    if shutil.which("doxygen") is None:
        sys.exit("check-api-docs: doxygen is missing (package doxygen)")
    with tempfile.TemporaryDirectory() as folder:
        here, there, copy = (pathlib.Path(folder) / name for name in ("here", "there", "copy"))
        built = build(root, here)
        if built.returncode != 0 or built.stdout or built.stderr:
            sys.exit(f"check-api-docs: status {built.returncode}\n{built.stdout}{built.stderr}")
        check_comments(root)
        check_pages(root, here / "html")
        count = check_contents(here / "html", [str(root), folder])

        for source in SOURCES:
            shutil.copytree(root / source, copy / source)
        build(copy, there)
        if differing := differences(here, there):
            failures.append(f"the same sources give other pages elsewhere: {differing[:5]}")
        if not damage(copy) or build(copy, there).returncode == 0:
            failures.append("the build is blind: it accepts a member without documentation")

    shown = re.search(r"It prints\n\n((?:    .*\n)+)", (root / "docs/api/main.md").read_text(encoding="utf-8"))
    printed = subprocess.run([sys.argv[2]], capture_output=True, text=True, timeout=60)
    if printed.returncode != 0 or shown is None or re.sub(r"^    ", "", shown.group(1), flags=re.M) != printed.stdout:
        failures.append(f"main.md: the program prints\n{printed.stdout}{printed.stderr}")

    for failure in failures:
        print(failure)
    print(f"check-api-docs: {count} files, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
