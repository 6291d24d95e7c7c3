#!/usr/bin/env python3
"""Checks the manual page of quelt-migrate and its completions against what --help says, and tries them in the shells.

    check-command-docs.py QUELT_MIGRATE FOLDER

FOLDER holds the files that quelt-migrate-docs has written. What must be in them is read off the help texts, which the
application prints itself.
"""
import os
import pathlib
import pty
import re
import select
import subprocess
import sys
import tempfile
import time

PROGRAM = "quelt-migrate"
HEADINGS = ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS", "ENVIRONMENT", "EXAMPLES", "SEE ALSO"]
NEEDED = {"groff": "groff-base", "bash": "bash", "zsh": "zsh", "fish": "fish"}
FILES = ["answers.ndjson", "context.json", "records.ndjson"]

failures = []


def fail(text):
    failures.append(text)


def run(arguments, **more):
    return subprocess.run(arguments, capture_output=True, text=True, timeout=60, **more)


def in_one_line(text):
    return re.sub(r"\s+", " ", text).strip()


# --- What the help says


class Help:
    """The help of the application or of one command, taken apart."""

    def __init__(self, program, words):
        shown = run([program, *words, "--help"])
        if shown.returncode != 0:
            sys.exit(f"{program} {' '.join(words)} --help ends with status {shown.returncode}")
        self.description = shown.stdout.split("\n", 1)[0].rstrip(".")
        parts = re.split(r"^([A-Z][A-Za-z ]*):\n", shown.stdout, flags=re.M)
        self.parts = dict(zip(parts[1::2], parts[2::2]))
        self.commands = dict(self.entries("Subcommands"))
        self.arguments = self.entries("Positionals")
        self.options = []  # of (names, value, description)
        for head, description in self.entries("Options"):
            match = re.fullmatch(r"(-[^ ]*)(?: (.*))?", head)
            self.options.append((match.group(1).split(","), match.group(2) or "", description))

    def entries(self, part):
        """Of a part of the help, every word that begins a line with what stands behind it."""
        found = []
        for line in self.parts.get(part, "").split("\n"):
            if re.match(r"  \S", line):
                head, _, meaning = line.strip().partition("  ")
                found.append([head, meaning.strip()])
            elif line.strip():
                found[-1][1] = in_one_line(found[-1][1] + " " + line)
        return found

    def names(self):
        return [name for names, _, _ in self.options for name in names]


# --- The manual page


def rendered(page):
    """The page as plain text, on lines wide enough for every sentence."""
    warned = run(["groff", "-man", "-ww", "-z", page])
    if warned.returncode != 0 or warned.stderr:
        fail(f"{page}: groff warns:\n{warned.stderr}")
    shown = run(["groff", "-man", "-Tascii", "-rLL=400n", "-P-cbou", page])
    return shown.stdout


def check_man_page(page, application, commands):
    text = rendered(page)
    if re.findall(r"^[A-Z][A-Z ]+$", text, re.M) != HEADINGS:
        fail(f"{page}: its headings are {re.findall(r'^[A-Z][A-Z ]+$', text, re.M)}")
    flat = in_one_line(text)
    if in_one_line(application.description)[1:] not in flat:
        fail(f"{page}: does not say what the application does")
    known = set()
    for words, help_text in [("", application), *commands.items()]:
        part = flat
        if words:
            part = in_one_line(re.search(rf"^   {words}\n(.*?)(?=^ {{0,3}}\S)", text, re.M | re.S).group(1))
            if in_one_line(application.commands[words]) not in part:
                fail(f"{page}: does not say what {words} does")
            synopsis = re.search(rf"^       {PROGRAM} {words} .*$", text, re.M).group()
        for names, value, description in help_text.options:
            known.update(names)
            # in the help "FILE REQUIRED" and "N=1" say more than what the value is called
            value_name = re.split(r"[ =]", value)[0]
            item = f"{', '.join(names)} {value_name}".strip() + f" {in_one_line(description)}."
            if item not in (flat if "--help" in names else part):
                fail(f"{page}: {words} lacks '{item}'")
            if words and "--help" not in names and f"{names[-1]} {value_name}".strip() not in synopsis:
                fail(f"{page}: the synopsis of {words} lacks {names[-1]}")
            if "REQUIRED" in value and f"{item} Required." not in part:
                fail(f"{page}: {words} does not say that {names[-1]} must be given")
            if "=" in value and f"{item} Default: {value.split('=')[1]}." not in part:
                fail(f"{page}: {words} does not say what {names[-1]} is by default")
        for name, description in help_text.arguments:
            if f"{name.split()[0]} {in_one_line(description)}." not in part:
                fail(f"{page}: {words} lacks its argument {name}")
        for heading in help_text.parts.keys() - {"Usage", "Options", "Positionals", "Subcommands"}:
            for term, meaning in help_text.entries(heading):
                if in_one_line(f"{term} {meaning}") not in flat:
                    fail(f"{page}: '{heading}' of {words or 'the application'} lacks '{term} {meaning}'")
    invented = set(re.findall(r"(?<![\w-])--?[a-zA-Z][\w-]*", text)) - known
    if invented:
        fail(f"{page}: knows of {sorted(invented)}, which the help does not")


# --- The completions: what each shell offers behind some words


def check_texts(folder, application, commands):
    """Every command and option with its description, as far as a shell shows descriptions."""
    for name in (f"_{PROGRAM}", f"{PROGRAM}.fish"):
        text = (folder / name).read_text(encoding="utf-8").replace("\\", "")
        for help_text in (application, *commands.values()):
            for description in [*help_text.commands.values(), *(option[2] for option in help_text.options)]:
                if description not in text:
                    fail(f"{name}: lacks the description '{description}'")


def bash_offers(folder, directory, words):
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
              '[[ $(complete -p quelt-migrate) == *"-F _quelt_migrate quelt-migrate" ]] || exit 3; '
              '_quelt_migrate; (( ${#COMPREPLY[@]} == 0 )) || printf "%s\\n" "${COMPREPLY[@]}"')
    shown = run(["bash", "--norc", "-c", script, "bash", folder / f"{PROGRAM}.bash", PROGRAM, *words], cwd=directory)
    if shown.returncode != 0 or shown.stderr:
        fail(f"bash: {words}: status {shown.returncode}, {shown.stderr}")
    return shown.stdout.splitlines()


def fish_offers(folder, directory, home, words):
    script = 'source $argv[1]; complete -C "$argv[2]"'
    shown = run(["fish", "--no-config", "-c", script, folder / f"{PROGRAM}.fish", " ".join([PROGRAM, *words])],
                cwd=directory, env={**os.environ, "HOME": str(home)})
    if shown.returncode != 0 or shown.stderr:
        fail(f"fish: {words}: status {shown.returncode}, {shown.stderr}")
    return [line.split("\t")[0] for line in shown.stdout.splitlines()]


ZSHRC = """
fpath=($FOLDER $fpath)
autoload -Uz compinit
compinit -u -D
PS1='> '
# what the completion offers goes into a file, too
compadd() {
    if (( ${@[(I)-[OAD]]} )); then
        builtin compadd "$@"
    else
        local -a offered
        builtin compadd -O offered "$@"
        print -rl -- $offered >> $OFFERED
        builtin compadd "$@"
    fi
}
offer() { _main_complete; print -r -- END >> $OFFERED; compstate[insert]=''; compstate[list]='' }
zle -C offer complete-word offer
bindkey '^I' offer
print -r -- END >> $OFFERED
"""


class Zsh:
    """An interactive zsh on a terminal of its own."""

    def __init__(self, folder, directory, home):
        self.offered = home / "offered"
        (home / ".zshrc").write_text(ZSHRC, encoding="utf-8")
        environment = {**os.environ, "ZDOTDIR": str(home), "HOME": str(home), "TERM": "xterm", "FOLDER": str(folder),
                       "OFFERED": str(self.offered)}
        self.child, self.terminal = pty.fork()
        if self.child == 0:
            os.chdir(directory)
            os.execvpe("zsh", ["zsh", "-i"], environment)
        self.await_end()

    def await_end(self):
        """What was offered, once that is complete."""
        until = time.monotonic() + 60
        while time.monotonic() < until:
            if select.select([self.terminal], [], [], 0.02)[0]:
                os.read(self.terminal, 65536)  # else the shell would wait
            text = self.offered.read_text(encoding="utf-8") if self.offered.exists() else ""
            if text.endswith("END\n"):
                self.offered.unlink()
                return text.splitlines()[:-1]
        fail("zsh: no answer within a minute")
        return []

    def offers(self, words):
        os.write(self.terminal, b"\x15" + " ".join([PROGRAM, *words]).encode() + b"\t")
        return [word for word in self.await_end() if word]

    def end(self):
        os.write(self.terminal, b"\x15exit\n")
        os.close(self.terminal)
        os.waitpid(self.child, 0)


def long_names(help_text):
    return [name for name in help_text.names() if name.startswith("--")]


def cases(application, commands):
    """Words, the last of which is being typed, and what is to be offered for it."""
    yield ["con"], ["convert"]
    yield [""], list(application.commands)
    yield ["--"], long_names(application)
    for command, help_text in commands.items():
        yield [command, "--"], long_names(help_text)
        yield [command, ""], FILES
        yield [command, "rec"], ["records.ndjson"]
        for names, value, _ in help_text.options:
            yield [command, names[-1][:-1]], [name for name in long_names(help_text) if name.startswith(names[-1][:-1])]
            for name in names:
                if value.startswith("FILE"):
                    yield [command, name, ""], FILES
                    yield [command, name, "con"], ["context.json"]
                elif value:
                    yield [command, name, ""], []


def check_offers(shell, offers, application, commands):
    count = 0
    for words, expected in cases(application, commands):
        offered = sorted(set(offers(words)))
        if words == [""]:  # some shells offer options before they are asked for
            offered = [word for word in offered if not word.startswith("-")]
        if offered != sorted(expected):
            fail(f"{shell}: for {words} it offers {offered}, not {sorted(expected)}")
        count += 1
    return count


def check_completions(folder, application, commands):
    counts = {}
    with tempfile.TemporaryDirectory() as directory, tempfile.TemporaryDirectory() as home:
        for name in FILES:
            (pathlib.Path(directory) / name).touch()
        syntax = run(["zsh", "-n", folder / f"_{PROGRAM}"])
        if syntax.returncode != 0 or syntax.stderr:
            fail(f"zsh: {syntax.stderr}")
        zsh = Zsh(folder, directory, pathlib.Path(home))
        shells = {"bash": lambda words: bash_offers(folder, directory, words),
                  "zsh": zsh.offers,
                  "fish": lambda words: fish_offers(folder, directory, home, words)}
        for shell, offers in shells.items():
            counts[shell] = check_offers(shell, offers, application, commands)
        zsh.end()

        # what bash alone takes apart in a way of its own
        for words, expected in ((["convert", "--output", "=", "rec"], ["records.ndjson"]),
                                (["convert", "--output", "="], FILES), (["convert", "--jobs", "="], [])):
            if sorted(bash_offers(folder, directory, words)) != expected:
                fail(f"bash: {words}: {bash_offers(folder, directory, words)}")
        (pathlib.Path(directory) / "two words").touch()
        if bash_offers(folder, directory, ["convert", "two"]) != ["two words"]:
            fail("bash: takes the name of a file apart")
    return counts


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    for tool, package in NEEDED.items():
        if not any(os.access(os.path.join(path, tool), os.X_OK) for path in os.environ["PATH"].split(os.pathsep)):
            sys.exit(f"check-command-docs: {tool} is missing (package {package})")
    application = Help(program, [])
    commands = {name: Help(program, [name]) for name in application.commands}
    if not commands or not all(help_text.options for help_text in commands.values()):
        sys.exit("check-command-docs: the help could not be read")
    check_man_page(folder / f"{PROGRAM}.1", application, commands)
    check_texts(folder, application, commands)
    counts = check_completions(folder, application, commands)
    for failure in failures:
        print(failure)
    options = sum(len(help_text.options) for help_text in (application, *commands.values()))
    tried = ", ".join(f"{count} in {shell}" for shell, count in counts.items())
    print(f"check-command-docs: {len(commands)} commands, {options} options, completions tried: {tried}; "
          f"{len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
