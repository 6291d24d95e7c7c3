#!/usr/bin/env python3
"""The sources serve as a part of another project, which takes them in and stays as it was.

    subproject.py subdirectory|fetch FOLDER COMPILER SOURCES

Both ways build in FOLDER, and the second finds compiled there what the first compiled: what differs is how the sources
come in, not how they are compiled.
"""

import sys
from pathlib import Path

import support


def main(way, folder, compiler, sources):
    # Sources elsewhere, or compilers, would be those of an earlier run.
    (Path(folder) / "CMakeCache.txt").unlink(missing_ok=True)
    support.configured_consumer(folder, f"-DCONSUMES={way}", f"-DSOURCES={sources}", f"-DCMAKE_CXX_COMPILER={compiler}",
                                "-DCMAKE_CXX_FLAGS=-O0", "-DFETCHCONTENT_FULLY_DISCONNECTED=ON")
    support.build_consumer(folder)
    support.run_consumers(folder)

    empty = Path(folder) / "installed"
    support.run("cmake", "--install", folder, "--prefix", empty)
    if empty.exists() and support.files_below(empty):
        support.fail(f"a project that installs nothing installs {sorted(support.files_below(empty))}")


if __name__ == "__main__":
    main(*sys.argv[1:])
