"""What the tests of installed and packed trees share."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

CONSUMER = Path(__file__).resolve().parent / "consumer"

# What decides how a build comes out; another build that is to be the same needs the same.
DECISIVE = re.compile(r"(CMAKE_(BUILD_TYPE|INTERPROCEDURAL_OPTIMIZATION|INSTALL_PREFIX|TOOLCHAIN_FILE|GENERATOR"
                      r"|CXX_COMPILER|CXX_FLAGS(_[A-Z]+)?|(EXE|SHARED|MODULE)_LINKER_FLAGS(_[A-Z]+)?)|QUELT_SANITIZE|QUELT_BUILD_DOCS)")


def fail(message):
    sys.exit(f"FAILED: {message}")


def run(*command, environment=None, folder=None, accepts=(0,)):
    """Runs a command, shows what it says when it fails, and gives its standard output."""
    words = [str(word) for word in command]
    answer = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, errors="replace",
                            env=environment, cwd=folder, check=False)
    if answer.returncode not in accepts:
        fail(f"{' '.join(words)} ended with {answer.returncode}\n{answer.stdout}\n{answer.stderr}")
    return answer.stdout


def scratch():
    """A folder for one test, which is deleted with the object."""
    return tempfile.TemporaryDirectory(prefix="quelt-packaging-")


def plain_environment(**changes):
    """The environment without what could find the libraries by chance, or bring back what was compiled before."""
    hidden = re.compile(r"LD_LIBRARY_PATH|CMAKE_PREFIX_PATH|PKG_CONFIG_.*|QueltDataMigration_.*|CPATH|LIBRARY_PATH"
                        r"|CPLUS_INCLUDE_PATH|DESTDIR|CMAKE_CXX_COMPILER_LAUNCHER")
    environment = {name: value for name, value in os.environ.items() if not hidden.fullmatch(name)}
    environment.update({name: str(value) for name, value in changes.items()})
    return environment


def settings_of(build):
    """The decisive settings of a build, by name."""
    settings = {}
    for line in (Path(build) / "CMakeCache.txt").read_text().splitlines():
        match = re.fullmatch(r"([A-Za-z_]+):[A-Z]+=(.*)", line)
        if match and DECISIVE.fullmatch(match.group(1)):
            settings[match.group(1)] = match.group(2)
    return settings


def installed_and_moved(build, folder):
    """Installs what was built into a folder, and moves the tree from there."""
    first = Path(folder) / "installed first"
    moved = Path(folder) / "and then moved"
    run("cmake", "--install", build, "--prefix", first)
    first.rename(moved)
    return moved


def only(paths, what):
    found = sorted(paths)
    if len(found) != 1:
        fail(f"expected one {what}, found {[str(path) for path in found]}")
    return found[0]


def files_below(root):
    return {path.relative_to(root).as_posix() for path in Path(root).rglob("*") if not path.is_dir()}


def configured_consumer(folder, *settings):
    """Configures the consumer project in a folder, and gives what CMake said."""
    return run("cmake", "-S", CONSUMER, "-B", folder, "-G", "Ninja", *settings, environment=plain_environment())


def build_consumer(folder, *targets):
    wanted = ["--target", *targets] if targets else []
    run("cmake", "--build", folder, "-j2", *wanted, environment=plain_environment())


def expect_output(expected, *command, environment=None):
    output = run(*command, environment=environment or plain_environment()).replace("\r", "")
    if output != expected + "\n":
        fail(f"{command[0]} wrote {output!r}, not {expected!r}")


def run_consumers(folder, suffix="", launcher=(), environment=None):
    """Runs both programs of the consumer."""
    expect_output("effectivity(Truck: own Engine in {V8})", *launcher, Path(folder) / f"converts{suffix}",
                  environment=environment)
    expect_output("generic(AND(TRUE, FALSE))", *launcher, Path(folder) / f"core-only{suffix}",
                  environment=environment)


def consume_package(prefix, folder, compiler):
    """Builds the consumer against the package below `prefix`, and runs it."""
    said = configured_consumer(folder, "-DCONSUMES=package", f"-DCMAKE_PREFIX_PATH={prefix}",
                               f"-DCMAKE_CXX_COMPILER={compiler}")
    found = re.search(r"-- found: (.*)", said)
    if not found or not Path(found.group(1)).resolve().is_relative_to(Path(prefix).resolve()):
        fail(f"the package was not found below {prefix}:\n{said}")
    build_consumer(folder)
    run_consumers(folder)


def require(*tools):
    """Ends the test with a failure when a tool is missing: a test that is skipped in silence proves nothing."""
    missing = [tool for tool in tools if shutil.which(tool) is None]
    if missing:
        fail(f"missing: {', '.join(missing)} (scripts/setup.sh installs them)")
