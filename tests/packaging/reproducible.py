#!/usr/bin/env python3
"""The same sources give the same bytes, wherever and whenever they are built: libraries, program and packages.

    reproducible.py BUILD SOURCES TARGET...

Copies the sources to a folder whose path has another length, builds them there with the settings of BUILD (and without
a compiler cache, which would answer with what was compiled here), and compares what is installed and packed.
"""

import shutil
import sys
from pathlib import Path

import support

# An hour of a day long ago; what is packed bears it instead of the time of packing.
EPOCH = "1700000000"


def copy_sources(sources, to):
    """What is under version control, as it stands there now, and what is about to be."""
    listed = support.run("git", "-c", f"safe.directory={sources}", "-C", sources, "ls-files", "-z", "--cached", "--others",
                         "--exclude-standard")
    for name in filter(None, listed.split("\0")):
        if (sources / name).is_file():
            (to / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(sources / name, to / name)


def build_again(build, sources, folder, environment, targets):
    settings = [f"-D{name}={value}" for name, value in support.settings_of(build).items() if name != "CMAKE_GENERATOR"]
    support.run("cmake", "-S", sources, "-B", folder, "-G", support.settings_of(build)["CMAKE_GENERATOR"], *settings,
                "-DQUELT_BUILD_TESTS=OFF", "-DQUELT_CCACHE=", environment=environment)
    support.run("cmake", "--build", folder, "-j2", "--target", *targets, environment=environment)


def outcome_of(build, folder, environment):
    """All files that a build installs and packs, by name, as bytes."""
    support.run("cmake", "--install", build, "--prefix", folder / "installed")
    support.run("cpack", "--config", build / "CPackConfig.cmake", "-G", "DEB", "-B", folder / "packed",
                environment=environment)
    shutil.rmtree(folder / "packed" / "_CPack_Packages")
    return {name: (folder / name).read_bytes() for name in support.files_below(folder)}


def first_difference(left, right):
    return next((place for place, (a, b) in enumerate(zip(left, right)) if a != b), min(len(left), len(right)))


def main(build, sources, *targets):
    support.require("git", "cpack", "dpkg-deb")
    with support.scratch() as scratch:
        elsewhere = Path(scratch) / "elsewhere-in-a-folder-with-another-and-a-longer-name"
        copy_sources(Path(sources), elsewhere)
        environment = support.plain_environment(CCACHE_DISABLE=1, SOURCE_DATE_EPOCH=EPOCH)
        again = elsewhere / "built"
        build_again(build, elsewhere, again, environment, targets)
        first = outcome_of(Path(build), Path(scratch) / "first", environment)
        second = outcome_of(again, Path(scratch) / "second", environment)

    binaries = [name for name in first if Path(name).name.startswith(("libQuelt", "quelt-migrate"))]
    if len(binaries) < 8 or sum(name.endswith(".deb") for name in first) != 4:
        support.fail(f"not all there: {sorted(first)}")
    if first.keys() != second.keys():
        support.fail(f"not in both: {sorted(first.keys() ^ second.keys())}")
    different = [name for name in sorted(first) if first[name] != second[name]]
    for name in different:
        print(f"{name}: {len(first[name])} and {len(second[name])} bytes, different from byte "
              f"{first_difference(first[name], second[name])} on")
    if different:
        support.fail("not the same bytes")
    print(f"{len(first)} files are the same bytes")


if __name__ == "__main__":
    main(*sys.argv[1:])
