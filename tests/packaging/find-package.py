#!/usr/bin/env python3
"""An installed tree, moved elsewhere, serves a project that says find_package; its headers are all there.

    find-package.py BUILD COMPILER SOURCES
"""

import re
import sys
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


def included_first(sources):
    """Headers that a source of the libraries includes before all others: to compile it is to compile them alone."""
    found = set()
    for folder in ("core", "QueltDataMigration.m"):
        for source in (sources / folder).rglob("*.cpp"):
            found.update(re.findall(r'^#include ["<]([^">]+)[">]', source.read_text(), re.M)[:1])
    return found


def check_headers(include, sources, compiler, folder):
    """All that are public are installed, and no other; each stands alone, and all stand together."""
    expected = expected_headers(sources)
    found = support.files_below(include)
    if len(expected) < 40 or found != expected:
        support.fail(f"not installed: {sorted(expected - found)}; installed without need: {sorted(found - expected)}")
    alone = sorted(expected - included_first(sources))
    for number, names in enumerate([sorted(expected), *([name, name] for name in alone)]):
        probe = Path(folder) / f"probe-{number}.cpp"
        probe.write_text("".join(f'#include "{name}"\n' for name in names))
        support.run(compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow",
                    "-Wconversion", "-Werror", "-I", include, probe, environment=support.plain_environment())


def main(build, compiler, sources):
    with support.scratch() as folder:
        prefix = support.installed_and_moved(build, folder)
        support.consume_package(prefix, Path(folder) / "consumer", compiler)
        support.expect_output("quelt-migrate " + version_in(prefix), prefix / "bin" / "quelt-migrate", "--version")
        check_headers(prefix / "include" / "quelt", Path(sources), compiler, folder)
        for text in ("README.md", "CHANGELOG.md", "LICENSE", "COPYRIGHT", "docs/architecture.md", "examples/context.json"):
            support.only(prefix.glob(f"share/doc/QueltDataMigration/{text}"), text)


def version_in(prefix):
    text = support.only(prefix.glob("lib/**/quelt-core.pc"), "quelt-core.pc").read_text()
    return re.search(r"^Version: (\S+)$", text, re.M).group(1)


if __name__ == "__main__":
    main(*sys.argv[1:])
