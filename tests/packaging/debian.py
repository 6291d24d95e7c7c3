#!/usr/bin/env python3
"""The Debian packages hold what they should, say so, and serve from wherever they are unpacked.

    debian.py BUILD COMPILER VERSION
"""

import re
import sys
from pathlib import Path

import support

LIBRARIES = ("Core", "DataMigration")
ARCHITECTURE_FOLDER = r"lib(/[a-z0-9_]+-linux-[a-z0-9]+)?"

# What a package holds: patterns, each of which matches at least one file; and together they match all files.
CONTENTS = {
    "libquelt0": [rf"{ARCHITECTURE_FOLDER}/libQuelt{library}\.so\.{number}"
                  for library in LIBRARIES for number in (r"0", r"\d+\.\d+\.\d+")],
    "libquelt-dev": [rf"{ARCHITECTURE_FOLDER}/libQuelt{library}\.so" for library in LIBRARIES]
                    + [rf"{ARCHITECTURE_FOLDER}/pkgconfig/{name}\.pc" for name in ("quelt-core", "quelt-data-migration")]
                    + [rf"{ARCHITECTURE_FOLDER}/cmake/QueltDataMigration/QueltDataMigration{name}\.cmake"
                       for name in ("Config", "ConfigVersion", "Targets", r"Targets-[a-z]+")]
                    + [r"include/quelt/QueltEeTarselMigrationServices\.h", r"include/quelt/([a-z]+/)?Quelt\w+\.h"],
    "quelt-doc": [rf"share/doc/QueltDataMigration/{name}"
                  for name in (r"README\.md", r"CHANGELOG\.md", "LICENSE", "COPYRIGHT", r"docs/[\w./-]+",
                               r"examples/[\w./-]+", r"html/index\.html")],
    "quelt-migrate": [r"bin/quelt-migrate", r"share/man/man1/quelt-migrate\.1(\.gz)?",
                      r"share/bash-completion/completions/quelt-migrate", r"share/zsh/[\w-]+/_quelt-migrate",
                      r"share/fish/vendor_completions\.d/quelt-migrate\.fish"],
}
# What may be there, too.
OPTIONAL = {
    "quelt-doc": [r"share/doc/QueltDataMigration/[\w./~-]+"],
}
SECTIONS = {"libquelt0": "libs", "libquelt-dev": "libdevel", "quelt-doc": "doc", "quelt-migrate": "utils"}
DEPENDENCIES = {
    "libquelt0": [r"libc6\b", r"libstdc\+\+6\b"],
    "libquelt-dev": [r"libquelt0 \(= {version}\)"],
    "quelt-doc": [],
    "quelt-migrate": [r"libquelt0 \(= {version}\)", r"libc6\b", r"libsimdjson\d+\b", r"libstdc\+\+6\b"],
}


def check_files(name, files):
    own = [rf"share/doc/{name}/copyright", rf"share/doc/{name}/changelog\.gz"]
    wanted = [re.compile(f"usr/{pattern}") for pattern in CONTENTS[name] + own]
    possible = wanted + [re.compile(f"usr/{pattern}") for pattern in OPTIONAL.get(name, [])]
    missing = [pattern.pattern for pattern in wanted if not any(pattern.fullmatch(file) for file in files)]
    strange = [file for file in files if not any(pattern.fullmatch(file) for pattern in possible)]
    if missing or strange:
        support.fail(f"{name}: missing {missing}, unexpected {strange}")


def check_modes(name, package):
    for line in support.run("dpkg-deb", "-c", package).splitlines():
        mode, owner = line.split()[:2]
        if owner != "root/root" or (mode[0] != "l" and (mode[5] == "w" or mode[8] == "w")):
            support.fail(f"{name}: owner or mode: {line}")


def check_control(name, package, version, folder):
    architecture = "all" if name == "quelt-doc" else support.run("dpkg", "--print-architecture").strip()
    fields = {"Package": name, "Version": version, "Architecture": architecture, "Section": SECTIONS[name],
              "Priority": "optional"}
    for field, value in fields.items():
        found = support.run("dpkg-deb", "-f", package, field).strip()
        if found != value:
            support.fail(f"{name}: {field} is {found!r}, not {value!r}")
    maintainer = support.run("dpkg-deb", "-f", package, "Maintainer").strip()
    if not re.fullmatch(r"[^<>]+ <[^<>@ ]+@[^<>@ ]+\.invalid>", maintainer):
        support.fail(f"{name}: Maintainer is {maintainer!r}")
    description = support.run("dpkg-deb", "-f", package, "Description").splitlines()
    if (len(description) < 4 or not description[0].startswith("conver") or max(map(len, description)) > 80
            or not all(re.match(r" \S", line) for line in description[1:])):
        support.fail(f"{name}: Description is not a line with a text below it: {description}")
    check_dependencies(name, package, version)
    support.run("dpkg-deb", "-e", package, folder)
    if name == "libquelt0":
        expected = [f"libQuelt{library} 0 libquelt0 (= {version})" for library in LIBRARIES]
        found = (folder / "shlibs").read_text().splitlines()
        if sorted(line.strip() for line in found) != expected:
            support.fail(f"{name}: shlibs says {found}")
        if "ldconfig" not in (folder / "triggers").read_text():
            support.fail(f"{name}: nobody tells the loader of the new libraries")


def check_dependencies(name, package, version):
    found = [each.strip() for each in support.run("dpkg-deb", "-f", package, "Depends").split(",") if each.strip()]
    wanted = [pattern.replace("{version}", re.escape(version)) for pattern in DEPENDENCIES[name]]
    for pattern in wanted:
        if not any(re.match(pattern, each) for each in found):
            support.fail(f"{name}: depends on {found}, not on {pattern}")
    for each in found:
        if not any(re.match(pattern, each) for pattern in wanted + [r"libgcc-s1\b"]):
            support.fail(f"{name}: depends on {each}")


def check_completeness(packed, prefix):
    """What is installed and belongs to no component would be in no package."""
    own = re.compile(f"share/doc/({'|'.join(CONTENTS)})/.*")
    unlike = {file for file in packed if not own.fullmatch(file)} ^ support.files_below(prefix)
    if unlike:
        support.fail(f"either packed or installed, but not both: {sorted(unlike)}")


def main(build, compiler, version):
    support.require("cpack", "dpkg-deb", "dpkg-shlibdeps")
    with support.scratch() as folder:
        packed, root = Path(folder) / "packed", Path(folder) / "root"
        support.run("cpack", "--config", Path(build) / "CPackConfig.cmake", "-G", "DEB", "-B", packed)
        packages = {path.name.split("_")[0]: path for path in packed.glob("*.deb")}
        if packages.keys() != CONTENTS.keys():
            support.fail(f"packed {sorted(packages)}, not {sorted(CONTENTS)}")
        for name, package in packages.items():
            alone = Path(folder) / name
            support.run("dpkg-deb", "-x", package, alone)
            check_files(name, support.files_below(alone))
            check_modes(name, package)
            check_control(name, package, version, Path(folder) / f"{name} control")
            support.run("dpkg-deb", "-x", package, root)
        check_completeness(support.files_below(root / "usr"), support.installed_and_moved(build, folder))
        support.consume_package(root / "usr", Path(folder) / "consumer", compiler)
        support.expect_output(f"quelt-migrate {version}", root / "usr" / "bin" / "quelt-migrate", "--version",
                              environment=support.plain_environment(LD_BIND_NOW=1))


if __name__ == "__main__":
    main(*sys.argv[1:])
