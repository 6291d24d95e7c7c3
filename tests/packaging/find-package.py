#!/usr/bin/env python3
"""An installed tree, moved elsewhere, serves a project that says find_package; each of its headers stands alone.

    find-package.py BUILD COMPILER SOURCES
"""

import re
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import support

# Exports nothing, and no public header includes it, but whoever adds a class to the type registry needs it.
PUBLIC_BY_ITSELF = {"infrastructure/QueltInTypedDefinition.h"}


def expected_headers(sources):
    """What is exported, and whatever those headers include."""
    texts = {}
    for root in (sources / "core", sources / "QueltDataMigration.m" / "include"):
        texts.update({path.relative_to(root).as_posix(): path.read_text() for path in root.rglob("*.h")})
    public = set()
    waiting = [name for name, text in texts.items()
               if "/" not in name or "QUELT_CORE_API" in text or name in PUBLIC_BY_ITSELF]
    while waiting:
        name = waiting.pop()
        if name not in public:
            public.add(name)
            waiting += re.findall(r'^#include "([^"]+)"', texts[name], re.M)
    return public


def check_headers(include, sources, compiler):
    expected = expected_headers(sources)
    found = support.files_below(include)
    if len(expected) < 40 or found != expected:
        support.fail(f"not installed: {sorted(expected - found)}; installed without need: {sorted(found - expected)}")

    def compiles(name):
        probe = f'#include "{name}"\n#include "{name}"\n'
        return support.run("sh", "-c", 'printf "%s" "$1" | "$2" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Werror '
                           '-I "$3" -x c++ -', "sh", probe, compiler, include)

    with ThreadPoolExecutor(2) as pool:
        list(pool.map(compiles, sorted(found)))
    return len(found)


def main(build, compiler, sources):
    with support.scratch() as folder:
        prefix = support.installed_and_moved(build, folder)
        support.consume_package(prefix, Path(folder) / "consumer", compiler)
        support.expect_output("quelt-migrate " + version_in(prefix), prefix / "bin" / "quelt-migrate", "--version")
        headers = check_headers(prefix / "include" / "quelt", Path(sources), compiler)
        for text in ("README.md", "CHANGELOG.md", "LICENSE", "COPYRIGHT", "docs/architecture.md", "examples/context.json"):
            support.only(prefix.glob(f"share/doc/QueltDataMigration/{text}"), text)
    print(f"{headers} headers stand alone")


def version_in(prefix):
    text = support.only(prefix.glob("lib/**/quelt-core.pc"), "quelt-core.pc").read_text()
    return re.search(r"^Version: (\S+)$", text, re.M).group(1)


if __name__ == "__main__":
    main(*sys.argv[1:])
