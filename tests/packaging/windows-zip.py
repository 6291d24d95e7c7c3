#!/usr/bin/env python3
"""The .zip for Windows holds all that its programs need, and serves a project that is built for Windows.

    windows-zip.py BUILD VERSION COMPILER OBJDUMP EMULATOR...
"""

import re
import sys
import zipfile
from pathlib import Path

import support

CONTENTS = [r"bin/QueltCore\.dll", r"bin/QueltDataMigration\.dll", r"bin/quelt-migrate\.exe", r"bin/libstdc\+\+-6\.dll",
            r"bin/libgcc_s_seh-1\.dll", r"bin/libwinpthread-1\.dll", r"lib/libQueltCore\.dll\.a",
            r"lib/libQueltDataMigration\.dll\.a", r"lib/cmake/QueltDataMigration/QueltDataMigrationConfig\.cmake",
            r"lib/cmake/QueltDataMigration/QueltDataMigrationTargets-[a-z]+\.cmake", r"lib/pkgconfig/quelt-core\.pc",
            r"include/quelt/QueltEeTarselMigrationServices\.h", r"include/quelt/infrastructure/QueltInMap\.h",
            r"share/doc/QueltDataMigration/README\.md", r"share/doc/QueltDataMigration/LICENSE",
            r"share/doc/QueltDataMigration/COPYRIGHT", r"share/doc/QueltDataMigration/docs/architecture\.md", r"share/doc/QueltDataMigration/html/index\.html",
            r"share/doc/QueltDataMigration/runtime-licenses/gcc[\w-]*copyright\.txt",
            r"share/doc/QueltDataMigration/runtime-licenses/mingw[\w-]*copyright\.txt",
            r"share/doc/QueltDataMigration/runtime-licenses/[\w-]*GPL-3\.txt"]
# What every Windows has.
SYSTEM = re.compile(r"(kernel32|ntdll|msvcrt|ucrtbase|api-ms-win-[\w-]+|user32|advapi32|shell32|ws2_32)\.dll", re.I)


def unpacked(build, folder):
    packed = Path(folder) / "packed"
    support.run("cpack", "--config", Path(build) / "CPackConfig.cmake", "-G", "ZIP", "-B", packed)
    archive = support.only(packed.glob("*.zip"), ".zip")
    with zipfile.ZipFile(archive) as opened:
        opened.extractall(Path(folder) / "unpacked")
    return support.only((Path(folder) / "unpacked").iterdir(), "folder in the .zip")


def check_contents(root):
    files = support.files_below(root)
    missing = [pattern for pattern in CONTENTS if not any(re.fullmatch(pattern, file) for file in files)]
    if missing:
        support.fail(f"the .zip lacks {missing}; it has {sorted(files)}")


def check_imports(folder, objdump):
    """Every library that a program or a library names stands beside it, or is Windows' own."""
    beside = {path.name.lower() for path in folder.iterdir()}
    for binary in folder.iterdir():
        names = re.findall(r"DLL Name: (\S+)", support.run(objdump, "-p", binary))
        lacking = [name for name in names if name.lower() not in beside and not SYSTEM.fullmatch(name)]
        if not names or lacking:
            support.fail(f"{binary.name} needs {lacking or 'nothing, which cannot be'}")


def main(build, version, compiler, objdump, *emulator):
    with support.scratch() as folder:
        root = unpacked(build, folder)
        check_contents(root)
        check_imports(root / "bin", objdump)
        consumer = Path(folder) / "consumer"
        support.configured_consumer(consumer, "-DCONSUMES=package", "-DCMAKE_SYSTEM_NAME=Windows",
                                    f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_PREFIX_PATH={root}",
                                    f"-DCMAKE_RUNTIME_OUTPUT_DIRECTORY={root / 'bin'}")
        support.build_consumer(consumer)
        support.run_consumers(root / "bin", suffix=".exe", launcher=emulator)
        support.expect_output(f"quelt-migrate {version}", *emulator, root / "bin" / "quelt-migrate.exe", "--version")


if __name__ == "__main__":
    main(*sys.argv[1:])
