#!/usr/bin/env python3
"""An installed tree, moved elsewhere, serves whoever asks pkg-config, and a compiler that is called by hand.

    pkg-config.py BUILD COMPILER
"""

import sys
from pathlib import Path

import support


def main(build, compiler):
    support.require("pkg-config")
    with support.scratch() as folder:
        # A blank in a path is pkg-config's to quote and the shell's to read.
        prefix = support.installed_and_moved(build, folder)
        descriptions = support.only(prefix.glob("lib*/**/pkgconfig"), "folder of pkg-config files")
        # Nothing else is to be found, a system's copy of the libraries least of all.
        environment = support.plain_environment(PKG_CONFIG_LIBDIR=descriptions)
        for package, program in (("quelt-data-migration", "converts"), ("quelt-core", "core-only")):
            support.run("pkg-config", "--exists", "--print-errors", f"{package} >= 0.1.0", environment=environment)
            support.run("sh", "-c", 'eval "\\"$1\\" -std=c++20 -Wall -Wextra -Werror \\"$2\\" -o \\"$3\\" '
                        '$(pkg-config --cflags --libs $4)"', "sh", compiler, support.CONSUMER / f"{program}.cpp",
                        Path(folder) / program, package, environment=environment)
        support.run_consumers(folder, environment=support.plain_environment(LD_LIBRARY_PATH=descriptions.parent))


if __name__ == "__main__":
    main(*sys.argv[1:])
