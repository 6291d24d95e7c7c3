#!/usr/bin/env python3
"""Checks the rules of the house that no compiler checks.

    check-house.py ROOT

Each check is a function from a file's path (relative to ROOT), its text and the names of the module's headers to a
list of (line, problem). Each owns specimens that it must reject and that are tried on every run, so that a check that
has gone blind is a failure itself.
"""

import os
import re
import sys

CORE_LAYERS = ["infrastructure", "dictionary", "effectivity", "expression", "compiled"]
MODULE = "QueltDataMigration.m"
HOST_FOLDERS = ["interchange", "commands", "documentation", "store"]

# A source whose header declares forward what stands above it, because the class owns such an object.
OWNS_FROM_ABOVE = {"core/effectivity/QueltEeEffectivity.cpp": "expression"}

# The one place that may write to standard error by itself.
DEFAULT_TRACE_SINK = "core/infrastructure/QueltInTraceSink.cpp"

STANDARD_HEADERS = set("""
         algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
    cinttypes climits     clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp
    csignal cstdarg cstddef cstdint     cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception
    execution filesystem format forward_list fstream     functional future initializer_list iomanip ios iosfwd
    iostream istream iterator latch limits list locale map memory     memory_resource mutex new numbers
    numeric optional ostream queue random ranges ratio regex scoped_allocator     semaphore set shared_mutex
    source_location span sstream stack stdexcept stop_token streambuf string string_view     syncstream
    system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version
""".split())

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:"([^"]+)"|<([^>]+)>)', re.M)


def line_of(text, position):
    return text.count("\n", 0, position) + 1


def blanked(match):
    return re.sub(r"[^\n]", " ", match.group())


def without_comments_and_literals(text):
    """The text with comments and literals blanked, every other character in its place."""
    pattern = (r'//[^\n]*|/\*.*?\*/|R"([^()\\\s]{0,16})\(.*?\)\1"'
               r'|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Za-z_])\'(?:\\.|[^\'\\\n])+\'')
    return re.sub(pattern, blanked, text, flags=re.S)


def includes(text):
    """Every included header as (line, name, whether it is written in angle brackets)."""
    plain = re.sub(r"//[^\n]*|/\*.*?\*/", blanked, text, flags=re.S)
    for match in INCLUDE.finditer(plain):
        yield line_of(text, match.start()), match.group(1) or match.group(2), match.group(2) is not None


def area_of(path):
    return next((area for area in ("core", MODULE, "host") if path.startswith(area + "/")), None)


def is_cpp(path):
    return path.endswith((".h", ".cpp"))


def check_include_directions(path, text, module_headers):
    """host -> module -> core, and inside the core compiled -> ... -> infrastructure, never the other way."""
    area = area_of(path)
    if area is None or not is_cpp(path):
        return []
    problems = []
    for line, name, _ in includes(text):
        folder = name.split("/")[0] if "/" in name else None
        if ".." in name.split("/"):
            problems.append((line, f"'{name}' climbs out of its folder; name it from the include root"))
        elif area != "host" and (folder in HOST_FOLDERS or folder == "host"):
            problems.append((line, f"'{name}' belongs to the host, which stands above"))
        elif area == "core" and folder is None and re.search(r"\.h$", name):
            problems.append((line, f"'{name}' does not say which folder of the core it is in"))
        elif area == "core" and folder in CORE_LAYERS:
            own = path.split("/")[1]
            if OWNS_FROM_ABOVE.get(path) == folder:
                continue
            if own not in CORE_LAYERS or CORE_LAYERS.index(folder) > CORE_LAYERS.index(own):
                problems.append((line, f"'{name}' stands above {own}/"))
    return problems


def check_own_and_standard_headers(path, text, module_headers):
    """The core and the module include the standard library's headers and their own, nothing else."""
    area = area_of(path)
    if area not in ("core", MODULE) or not is_cpp(path):
        return []
    problems = []
    for line, name, angled in includes(text):
        folder = name.split("/")[0] if "/" in name else None
        own = folder in CORE_LAYERS or (area == MODULE and name in module_headers)
        if angled and name not in STANDARD_HEADERS:
            problems.append((line, f"<{name}> is not a header of the standard library"))
        elif not angled and not own:
            problems.append((line, f"'{name}' is not a header of the project's libraries"))
    return problems


ACCESS = re.compile(r"\b(public|protected|private)\s*:(?!:)")
NOT_THE_HEAD = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*"                      # preprocessor lines
                          r"|\b(?:public|protected|private)\s*:(?!:)"
                          r"|\btemplate\s*<[^{};]*?>(?=\s*(?:class|struct|union|requires)\b)"
                          r"|\b(?:alignas|__attribute__)\s*\([^{};]*?\)+", re.M)
CLASS_HEAD = re.compile(r"(?<!enum )\b(class|struct|union)\b[^=()]*$")


def class_definitions(code):
    """Positions of the classes that a reader of a header meets: those at namespace level and public nested ones."""
    scopes = [("namespace", True)]  # of (kind, whether readers see what stands there); the innermost last
    start = 0
    for match in re.finditer(r"[{};]", code):
        statement = code[start:match.start()]
        if scopes[-1][0] == "class":
            for label in ACCESS.findall(statement):
                scopes[-1] = ("class", label == "public" and scopes[-2][1])
        kind, visible = scopes[-1]
        if match.group() == "}":
            scopes = scopes[:-1] or [("namespace", True)]
        elif match.group() == "{":
            head = CLASS_HEAD.search(NOT_THE_HEAD.sub(blanked, statement))
            if head:
                if visible:
                    declaration = re.sub(ACCESS, blanked, re.sub(r"^[ \t]*#[^\n]*", blanked, statement, flags=re.M))
                    yield start + len(declaration) - len(declaration.lstrip())
                scopes.append(("class", visible and head.group(1) != "class"))
            elif kind == "namespace" and re.search(r"\bnamespace\b|\bextern\s*$", statement):
                scopes.append(("namespace", visible))
            else:
                scopes.append(("other", False))
        start = match.end()


def check_documented_classes(path, text, module_headers):
    """Each class in a public header has a /// comment above it."""
    if not path.endswith(".h") or not path.startswith(("core/", MODULE + "/include/")):
        return []
    lines = text.split("\n")
    problems = []
    for position in class_definitions(without_comments_and_literals(text)):
        line = line_of(text, position)
        above = lines[line - 2].strip() if line > 1 else ""
        if not above.startswith("///"):
            problems.append((line, f"no /// comment above: {lines[line - 1].strip()}"))
    return problems


def check_white_space(path, text, module_headers):
    """No tab characters, no blanks at the end of a line."""
    problems = []
    for number, line in enumerate(text.split("\n"), 1):
        if "\t" in line:
            problems.append((number, "tab character"))
        if line != line.rstrip():
            problems.append((number, "blanks at the end of the line"))
    return problems


def check_no_output_or_exit(path, text, module_headers):
    """The libraries neither write to the standard streams nor end the process; trace lines have their sink."""
    if area_of(path) not in ("core", MODULE) or not is_cpp(path) or path == DEFAULT_TRACE_SINK:
        return []
    forbidden = re.compile(r"\b(?:std\s*::\s*)?(?:cout|cerr|clog)\b"
                           r"|(?<![\w.>])(?:v?f?printf|puts|fputs|putchar|perror)\s*\("
                           r"|(?<![\w.>])(?:_?exit|_Exit|quick_exit|abort|terminate)\s*\(")
    code = without_comments_and_literals(text)
    return [(line_of(text, match.start()), f"'{match.group().rstrip(' (')}' in a library")
            for match in forbidden.finditer(code)]


CHECKS = [check_include_directions, check_own_and_standard_headers, check_documented_classes, check_white_space,
          check_no_output_or_exit]

SPECIMEN_HEADERS = {"A.h"}

# What each check must reject: (check, path, text).
REJECTED = [
    (check_include_directions, "core/dictionary/A.h", '#include "expression/B.h"\n'),
    (check_include_directions, "core/infrastructure/A.cpp", '#  include "dictionary/B.h"\n'),
    (check_include_directions, "core/expression/A.cpp", '#include "compiled/B.h"\n'),
    (check_include_directions, "core/expression/A.cpp", '#include "../infrastructure/B.h"\n'),
    (check_include_directions, "core/expression/A.cpp", '#include "B.h"\n'),
    (check_include_directions, "core/expression/A.cpp", '#include "interchange/B.h"\n'),
    (check_include_directions, MODULE + "/src/A.cpp", '#include "commands/B.h"\n'),
    (check_own_and_standard_headers, "core/expression/A.cpp", "#include <simdjson.h>\n"),
    (check_own_and_standard_headers, "core/expression/A.cpp", '#include "QueltEeTarselMigrationServices.h"\n'),
    (check_own_and_standard_headers, MODULE + "/src/A.cpp", "#include <unistd.h>\n"),
    (check_own_and_standard_headers, MODULE + "/src/A.cpp", '#include "rapidjson/writer.h"\n'),
    (check_own_and_standard_headers, MODULE + "/src/A.cpp", '#include "simdjson.h"\n'),
    (check_documented_classes, "core/expression/A.h", "class A;\n\nclass A {};\n"),
    (check_documented_classes, "core/expression/A.h", "/// An A.\n\nclass QUELT_CORE_API A final : public B<C> {\n};\n"),
    (check_documented_classes, "core/expression/A.h", "// An A.\ntemplate <class T>\nclass A {};\n"),
    (check_documented_classes, "core/expression/A.h", "namespace quelt {\nstruct A {\n};\n}\n"),
    (check_documented_classes, MODULE + "/include/A.h", "/// An A.\nclass A {\npublic:\n    struct B {};\n};\n"),
    (check_white_space, "core/expression/A.h", "int\ta;\n"),
    (check_white_space, "scripts/a.sh", "true \n"),
    (check_white_space, "scripts/a.sh", "true\r\n"),
    (check_no_output_or_exit, "core/expression/A.cpp", "void f() { std::cerr << 1; }\n"),
    (check_no_output_or_exit, "core/expression/A.cpp", "void f() { cout << 1; }\n"),
    (check_no_output_or_exit, MODULE + "/src/A.cpp", 'void f() { std::printf("x"); }\n'),
    (check_no_output_or_exit, MODULE + "/src/A.cpp", 'void f() { fprintf(stderr, "x"); }\n'),
    (check_no_output_or_exit, "core/expression/A.cpp", "void f() { std::exit(1); }\n"),
    (check_no_output_or_exit, "core/expression/A.cpp", "void f() { abort(); }\n"),
]

# What every check must let pass: (path, text).
ACCEPTED = [
    ("core/expression/A.h",
     '#pragma once\n\n#include "infrastructure/B.h"\n#include "expression/C.h"\n\n#include <vector>\n\n'
     "class D;\nenum class E { one, two };\n\n"
     "/// An A.\ntemplate <class T = D, unsigned N>\nclass QUELT_CORE_API A final : public B<T> {\npublic:\n"
     "    /// For readers.\n    struct Public {};\n    void f() { class Local {}; }\n\n"
     "private:\n    struct Hidden {\n        struct Deeper {};\n    };\n    friend class D;\n};\n"
     "\nnamespace quelt {\n/// A pair.\nstruct F {\n    int a{0};\n};\ntemplate <class T> void g(T a) { (void)a; }\n}\n"),
    ("core/expression/A.cpp",
     '// printf("here") and exit(1) are words only\nconst char* a = "abort()"; // std::cout\n'
     "int n = 1'000'000; void f(S& s, S* p) { s.exit(); p->exit(); std::snprintf(b, 1, a); onExit(); }\n"),
    (DEFAULT_TRACE_SINK, "void f() { std::cerr << 1; }\n"),
    (MODULE + "/src/A.cpp", '#include "A.h"\n#include "expression/B.h"\n#include <map>\n'),
    ("host/commands/A.cpp", '#include "interchange/B.h"\n#include "expression/C.h"\n#include <simdjson.h>\n'),
]


def try_specimens():
    """What is wrong with the checks themselves."""
    problems = []
    for check in CHECKS:
        if not any(owner is check for owner, _, _ in REJECTED):
            problems.append(f"{check.__name__} owns no specimen")
    for check, path, text in REJECTED:
        if not check(path, text, SPECIMEN_HEADERS):
            problems.append(f"{check.__name__} is blind: it accepts {path}: {text!r}")
    for path, text in ACCEPTED:
        for check in CHECKS:
            problems += [f"{check.__name__} rejects {path}:{line}: {problem}"
                         for line, problem in check(path, text, SPECIMEN_HEADERS)]
    return problems


def files_of_the_house(root):
    """Paths of the texts that people write: sources, scripts and documents, wherever they stand."""
    folders = ["core", MODULE, "host", "tests", "fuzz", "bench", "docs", "examples", "cmake", "scripts", ".ci"]
    names = {"CMakeLists.txt", "run", "exported-names.txt"}
    for folder in folders:
        for parent, _, files in os.walk(os.path.join(root, folder)):
            for name in sorted(files):
                path = os.path.relpath(os.path.join(parent, name), root).replace(os.sep, "/")
                if path.endswith((".h", ".cpp", ".py", ".sh", ".cmake", ".map", ".md")) or name in names \
                        or re.fullmatch(r"tests/conformance/[^/]*\.json", path):
                    yield path
    for name in sorted(os.listdir(root)):
        if os.path.isfile(os.path.join(root, name)) and name.endswith((".txt", ".json", ".sh", ".md")):
            yield name


def main():
    root = sys.argv[1]
    failures = try_specimens()
    module_headers = {name for folder in ("include", "src") for name in os.listdir(os.path.join(root, MODULE, folder))
                      if name.endswith(".h")}
    count = 0
    for path in files_of_the_house(root):
        with open(os.path.join(root, path), encoding="utf-8", newline="") as file:
            text = file.read()
        count += 1
        for check in CHECKS:
            failures += [f"{path}:{line}: {problem}" for line, problem in check(path, text, module_headers)]
    if count == 0:
        failures.append(f"no files found in {root}")
    for failure in failures:
        print(failure)
    print(f"check-house: {len(CHECKS)} checks, {len(REJECTED)} specimens, {count} files, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
