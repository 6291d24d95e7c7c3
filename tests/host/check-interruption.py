#!/usr/bin/env python3
"""Interrupts conversions: kills them, signals them, takes their output away, and lets them go on.

    check-interruption.py PROGRAM SOURCES [--kills N] [--seed N] [--emulator COMMAND]

Whatever happens to a run, a file of answers that is there is whole, its part is a beginning of the right answers, and
--resume makes of it the same bytes as a run that nobody disturbed. With --kills 0 nothing is killed, and with an emulator
(for programs for Windows) nothing but killing and going on is tried.
"""

import argparse
import contextlib
import fcntl
import importlib.util
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time

PATIENCE = 60  # seconds; whatever takes longer hangs
DISTINCT = 500  # records that differ in more than their ids
FEW = 600  # of them are more than a pipe holds
NOBODY = 65534
ENOUGH_FOR_FILES = 10 << 20  # bytes of answers; records in files are read, and answered, by the megabyte

faults = []


def expect(what, is_so, *shown):
    if not is_so:
        faults.append(what + "".join(f"\n    {text!r}" for text in shown))


def load_generator(sources):
    path = sources / "bench" / "make_list_records.py"
    spec = importlib.util.spec_from_file_location("make_list_records", path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


class Workshop:
    """A folder with a context and records, the program, and the right answers."""

    def __init__(self, folder, program, sources, emulator):
        self.folder = pathlib.Path(folder)
        self.command = [*emulator, str(program)]
        self.sources = sources
        generator = load_generator(sources)
        source = random.Random(generator.SEED)
        self.distinct = [generator.record(number, source) for number in range(DISTINCT)]
        self.context = self.path("context.json")
        self.context.write_text(json.dumps(generator.context()), encoding="utf-8")
        self.records = self.path("records.ndjson")
        self.answers = self.path("answers.ndjson")
        self.part = self.path("answers.ndjson.part")

    def path(self, name):
        return self.folder / name

    def write_records(self, count, name="records.ndjson"):
        """Records of all fates, blank lines between them."""
        lines = []
        for number in range(count):
            if number % 97 == 5:
                lines.append("")
            if number % 211 == 7:
                lines.append('{"id":"failing","tree":null}' if number % 2 else "no record")
            lines.append(json.dumps({**self.distinct[number % DISTINCT], "id": f"L-{number}"}))
        self.path(name).write_text("\n".join(lines) + "\n", encoding="utf-8")

    def convert(self, *arguments):
        return [*self.command, "convert", "--context", str(self.context), *map(str, arguments)]

    def into_file(self, *arguments):
        return self.convert(self.records, "-o", self.answers, *arguments)

    def pipe_into_file(self, *arguments):
        return self.convert("-o", self.answers, *arguments)

    def feed(self):
        """The records in a pipe: as little as it holds is a batch then."""
        feeder = subprocess.Popen(["cat", str(self.records)], stdout=subprocess.PIPE)
        threading.Thread(target=feeder.wait).start()
        return feeder.stdout

    def run(self, command, **more):
        return subprocess.run(command, capture_output=True, timeout=PATIENCE, check=False, **more)

    def start(self, command, **more):
        return subprocess.Popen(command, stderr=subprocess.PIPE, **more)

    def measure(self):
        """The time that a run takes without records, and for each record."""
        self.write_records(0)
        empty = min(self.timed() for _ in range(3))
        self.write_records(2 * DISTINCT)
        return empty, max(self.timed() - empty, 0.001) / (2 * DISTINCT)

    def timed(self):
        begin = time.monotonic()
        ended = self.run(self.into_file())
        if ended.returncode not in (0, 1) or not self.answers.exists():
            sys.exit(f"check-interruption: the program does not run: {ended.stderr.decode()}")
        return time.monotonic() - begin

    def prepare(self, count):
        """Makes so many records, and the right answers."""
        self.write_records(count)
        self.clear()
        ended = self.run(self.into_file())
        self.right = self.answers.read_bytes()
        self.right_status = ended.returncode
        self.right_summary = summary_of(ended.stderr)
        expect("undisturbed", b"\n  failed" in ended.stderr and not self.part.exists(), ended.stderr)
        self.clear()

    def clear(self):
        for path in (self.answers, self.part):
            with contextlib.suppress(FileNotFoundError):
                path.unlink()

    def finish(self, what, *arguments, **more):
        """Goes on to the end, and compares."""
        ended = self.run(self.into_file("--resume", *arguments), **more)
        self.compare(what, ended)
        return ended

    def compare(self, what, ended):
        expect(f"{what}: ends as an undisturbed run", ended.returncode == self.right_status, ended.returncode, ended.stderr)
        expect(f"{what}: sums up as an undisturbed run", summary_of(ended.stderr) == self.right_summary, ended.stderr)
        is_same = self.answers.exists() and self.answers.read_bytes() == self.right
        expect(f"{what}: the same bytes as an undisturbed run", is_same)
        expect(f"{what}: no part is left", not self.part.exists())

    def lines(self, count):
        """The first right answers."""
        return b"".join(self.right.splitlines(keepends=True)[:count])


def summary_of(messages):
    """What became of the records, without times."""
    lines = messages.decode().splitlines()
    while lines and not (lines[0][:1].isdigit() and " record" in lines[0]):
        lines.pop(0)
    return [lines[0].split()[0], *lines[1:]] if lines else []


def await_condition(condition):
    end = time.monotonic() + PATIENCE
    while not condition() and time.monotonic() < end:
        time.sleep(0.005)
    return condition()


# --- Killing


class Killing:
    def __init__(self, shop, source, start_time, run_time):
        self.shop = shop
        self.random = source
        self.start_time = start_time
        self.run_time = run_time
        self.kills = self.within = self.torn = self.late = self.rounds = 0

    def round(self, most):
        """A run that is killed, and gone on with, itself killed now and then, to the end."""
        shop = self.shop
        shop.clear()
        self.rounds += 1
        old = None
        if self.random.random() < 0.5:
            old = b"old\n"
            shop.answers.write_bytes(old)
        is_done = self.kill(["--jobs", self.random.choice("12")], old)
        while not is_done and self.kills < most and self.random.random() < 0.6:
            is_done = self.kill(["--jobs", self.random.choice("12"), "--resume"], old)
        if not is_done and not (old and not shop.part.exists()):
            shop.finish("killed", "--jobs", self.random.choice("12"))

    def kill(self, arguments, old):
        """True when the run came to its end before."""
        shop = self.shop
        have = shop.part.stat().st_size if shop.part.exists() else 0
        if "--resume" in arguments and old and not shop.part.exists():
            return False  # nothing to go on with
        left = self.run_time * (1 - have / len(shop.right))
        with contextlib.ExitStack() as closing:
            if len(shop.right) < ENOUGH_FOR_FILES or self.random.random() < 0.5:
                records = closing.enter_context(shop.feed())
                running = shop.start(shop.pipe_into_file(*arguments), stdin=records)
            else:
                running = shop.start(shop.into_file(*arguments))
        time.sleep(self.start_time * 0.8 + left * self.random.uniform(0, 0.9))
        running.kill()
        running.communicate()
        if running.returncode != -signal.SIGKILL:
            self.late += 1
            expect("not killed: complete", shop.answers.read_bytes() == shop.right)
            return True
        self.kills += 1
        if shop.answers.exists() and shop.answers.read_bytes() == shop.right:  # killed behind the renaming
            expect("killed at the end: no part is left", not shop.part.exists())
            return True
        now = shop.answers.read_bytes() if shop.answers.exists() else None
        expect("killed: the file of before is untouched", now == old, now and now[:80])
        part = shop.part.read_bytes() if shop.part.exists() else b""
        expect("killed: the part is a beginning of the right answers", shop.right.startswith(part), part[-200:])
        expect("killed: what was there stays", len(part) >= have - 65536 and (len(part) >= have or self.torn), have)
        self.within += have < len(part) < len(shop.right)
        self.torn += bool(part) and not part.endswith(b"\n")
        return False


def check_kills(shop, killing, kills):
    while killing.kills < kills and killing.late < kills + 10 and not faults:
        killing.round(kills)
    shop.clear()
    print(f"check-interruption: {killing.kills} kills in {killing.rounds} runs of {len(shop.right)} bytes, "
          f"{killing.within} while answers were being added, {killing.torn} in the middle of a line; "
          f"{killing.late} runs ended before")
    expect("killed: many kills hit while answers are added", killing.within >= max(1, killing.kills // 4))
    # The system may stop a write in the middle when it kills a program, the more so the busier it is. A program that wrote
    # at any place would be torn nearly every time.
    expect("killed: most kills leave whole lines", 2 * killing.torn <= max(killing.kills, 4))


# --- Going on


def check_torn_line(shop):
    lines = shop.right.splitlines(keepends=True)
    middle = len(lines) // 2
    for rest in (b"", lines[middle][:1], lines[middle][:-1], b"no answer", b"\0" * 70_000):
        shop.part.write_bytes(shop.lines(middle) + rest)
        ended = shop.finish(f"a torn line of {len(rest)} bytes", "--jobs", "2")
        expect("kept answers are told", f"keeping {middle:,} answers from".encode() in ended.stderr, ended.stderr)
        expect("kept answers are summed up", f" records ({middle:,} kept) in ".encode() in ended.stderr, ended.stderr)
    for part in (b"", lines[0][:-1]):
        shop.part.write_bytes(part)
        ended = shop.finish("a part without a whole line")
        expect("none are kept", b"keeping 0 answers from" in ended.stderr, ended.stderr)
    shop.part.write_bytes(shop.right)
    shop.finish("a part that lacks its renaming alone")


def check_mismatches(shop):
    lines = shop.right.splitlines(keepends=True)
    other = json.dumps({"id": "other", "result": 0, "map": []}).encode() + b"\n"
    cases = {
        "more answers": (shop.right + lines[-1], "it holds more answers than there are records"),
        "another id": (lines[0] + other + lines[2], "its line 2 is not the answer"),
        "another last answer": (lines[0] + lines[1].replace(b'"result":0', b'"result":1'), "its line 2 is not the answer"),
        "no answers": (b"some text\n", "its line 1 is not the answer"),
        "a blank line": (lines[0] + b"\n" + lines[1], "its line 2 is not the answer"),
        "a line left out": (b"".join(lines[:3] + lines[4:40]), "its line 4 is not the answer"),
    }
    for what, (part, message) in cases.items():
        shop.part.write_bytes(part)
        shop.answers.write_bytes(b"old\n")
        ended = shop.run(shop.into_file("--resume"))
        expect(f"{what}: refused", ended.returncode == 2, ended.returncode)
        said = ended.stderr.decode()
        expect(f"{what}: explained", f"cannot go on with {shop.part}: {message}" in said, said)
        expect(f"{what}: nothing is changed",
               shop.part.read_bytes() == part and shop.answers.read_bytes() == b"old\n")
    shop.clear()
    shop.part.write_bytes(shop.lines(100))
    ended = shop.run(shop.into_file("--resume", "--with-input"))
    expect("other options: refused", ended.returncode == 2 and shop.part.read_bytes() == shop.lines(100), ended.stderr)
    ended = shop.run([*shop.command, "convert", "--context", str(shop.sources / "examples" / "context.json"),
                      str(shop.records), "-o", str(shop.answers), "--resume"])
    expect("another context: refused", ended.returncode == 2 and shop.part.read_bytes() == shop.lines(100), ended.stderr)
    shop.clear()


def check_nothing_to_resume(shop):
    ended = shop.finish("nothing is there")
    expect("nothing is there: told", b"is not there: beginning with the first record" in ended.stderr, ended.stderr)
    before = shop.answers.stat()
    ended = shop.finish("all is there")
    expect("all is there: told", b"is complete: nothing was to be done" in ended.stderr, ended.stderr)
    after = shop.answers.stat()
    expect("all is there: not written again", (before.st_ino, before.st_mtime_ns) == (after.st_ino, after.st_mtime_ns))
    for answers in (shop.lines(100), b"old\n", shop.right[:-1]):
        shop.answers.write_bytes(answers)
        ended = shop.run(shop.into_file("--resume"))
        expect("another file is there: refused", ended.returncode == 2 and b"cannot go on with" in ended.stderr, ended.stderr)
        expect("another file is there: untouched", shop.answers.read_bytes() == answers and not shop.part.exists())
    shop.clear()
    for place in ([], ["-o", "-"], ["-o", "/dev/stdout"]):
        ended = shop.run(shop.convert(shop.records, *place, "--resume"))
        expect(f"--resume {place}", ended.returncode == 2 and ended.stdout == b"", ended.stderr)
        expect(f"--resume {place}: explained", b"--resume needs --output with the name of a file" in ended.stderr)


def check_standard_input(shop):
    shop.part.write_bytes(shop.lines(300))
    ended = shop.run(shop.convert("-o", shop.answers, "--resume"), input=shop.records.read_bytes())
    shop.compare("records on standard input", ended)
    shop.clear()


def without_addresses(answers):
    """Traces show where objects are."""
    return re.sub(rb"0x[0-9a-f]{6,}", b"", answers)


def check_every_form(shop):
    """The examples fail in every way; with --branch some fail that were converted before."""
    examples = shop.sources / "examples"
    records, context = str(examples / "records.ndjson"), str(examples / "context.json")
    for options in ([], ["--branch"], ["--branch", "--trace", "--with-input", "--jobs", "2"]):
        command = [*shop.command, "convert", "--context", context, records, "-o", str(shop.answers), *options]
        right = shop.run(command)
        answers = shop.answers.read_bytes()
        lines = answers.splitlines(keepends=True)
        expected = without_addresses(answers)
        for kept in (1, len(lines) // 3, len(lines) - 1, len(lines)):
            shop.clear()
            shop.part.write_bytes(b"".join(lines[:kept]))
            ended = shop.run([*command, "--resume"])
            what = f"examples {options}, {kept} kept"
            is_same = shop.answers.exists() and without_addresses(shop.answers.read_bytes()) == expected
            expect(f"{what}: the same answers", is_same, ended.stderr)
            expect(f"{what}: the same sums", summary_of(ended.stderr) == summary_of(right.stderr), ended.stderr)
            expect(f"{what}: the same status", ended.returncode == right.returncode)
        shop.clear()
    spelt = [line for line in pathlib.Path(records).read_text(encoding="utf-8").splitlines() if '"compiled"' in line]
    shop.path("spelt.ndjson").write_text("\n".join(spelt * 5) + "\n", encoding="utf-8")
    for verb, source, target in (("compile", "spelt", "binaries"), ("decompile", "binaries", "again")):
        command = [*shop.command, verb, str(shop.path(f"{source}.ndjson")), "-o", str(shop.path(f"{target}.ndjson"))]
        shop.run(command)
        answers = shop.path(f"{target}.ndjson").read_bytes()
        shop.path(f"{target}.ndjson").unlink()
        shop.path(f"{target}.ndjson.part").write_bytes(b"".join(answers.splitlines(keepends=True)[:3]) + b"{")
        ended = shop.run([*command, "--resume"])
        is_same = shop.path(f"{target}.ndjson").read_bytes() == answers and len(spelt) > 0
        expect(f"{verb}: goes on", is_same and b"(3 kept)" in ended.stderr, ended.stderr)


# --- Signals


def check_signals(shop):
    for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
        for jobs in ("1", "2"):
            what = f"{number.name} with {jobs} jobs"
            with shop.feed() as records:
                running = shop.start(shop.pipe_into_file("--jobs", jobs), stdin=records)
            await_condition(lambda: shop.part.exists() and shop.part.stat().st_size > 0)
            running.send_signal(number)
            said = running.communicate(timeout=PATIENCE)[1]
            expect(f"{what}: status", running.returncode == status, running.returncode, said)
            part = shop.part.read_bytes() if shop.part.exists() else b""
            expect(f"{what}: whole lines of the right answers",
                   part.endswith(b"\n") and shop.right.startswith(part) and part != shop.right)
            count = part.count(b"\n")
            message = (f"interrupted behind {count:,} records; what is answered is in {shop.part}, "
                       "and --resume goes on behind it\n")
            expect(f"{what}: explained", message.encode() in said, said)
            expect(f"{what}: summed up", summary_of(said)[:1] == [f"{count:,}"], said)
            shop.finish(what, "--jobs", jobs)
            shop.clear()


def some_records(shop, count):
    return b"".join(json.dumps({"id": f"S-{number}", "tree": True}).encode() + b"\n" for number in range(count))


def check_waiting_for_input(shop):
    for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
        for jobs in ("1", "2"):
            what = f"{number.name} while input is awaited, {jobs} jobs"
            running = shop.start(shop.convert("--jobs", jobs), stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            running.stdin.write(some_records(shop, 3) + b'{"id":"half')
            running.stdin.flush()
            answers = [running.stdout.readline() for _ in range(3)]
            running.send_signal(number)
            rest = running.stdout.read()
            said = running.stderr.read()
            running.wait(timeout=PATIENCE)
            expect(f"{what}: status", running.returncode == status, running.returncode, said)
            expect(f"{what}: whole lines", rest == b"" and all(b'"result":0' in line for line in answers), rest)
            expect(f"{what}: explained", b"interrupted behind 3 records\n3 records in " in said, said)
            close_all(running)
    # Into a file: nothing is left of a run without answers.
    running = shop.start(shop.convert("-o", shop.answers), stdin=subprocess.PIPE)
    await_condition(shop.part.exists)
    running.send_signal(signal.SIGINT)
    said = running.stderr.read()
    expect("no answers: status", running.wait(timeout=PATIENCE) == 130, said)
    expect("no answers: explained", b"interrupted behind 0 records\n" in said, said)
    expect("no answers: nothing is left", not shop.part.exists() and not shop.answers.exists())
    close_all(running)
    # A named pipe that nobody opens.
    os.mkfifo(shop.path("nobody"))
    for place in (["-o", shop.path("nobody")], [shop.path("nobody")]):
        running = shop.start(shop.convert(*place), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        time.sleep(0.5)
        running.send_signal(signal.SIGTERM)
        expect(f"{place}: ends", running.wait(timeout=PATIENCE) == 143)
        close_all(running)


def close_all(running):
    for stream in (running.stdin, running.stdout, running.stderr):
        if stream:
            with contextlib.suppress(BrokenPipeError):
                stream.close()


def start_blocked(shop, jobs):
    """A run whose answers nobody reads, once it has filled its pipe."""
    running = shop.start(shop.convert(shop.records, "--jobs", jobs), stdout=subprocess.PIPE)
    reading = running.stdout.fileno()

    def waiting():
        return struct.unpack("i", fcntl.ioctl(reading, termios.FIONREAD, bytes(4)))[0]

    await_condition(lambda: waiting() > 0)
    before = -1
    while before != waiting():
        before = waiting()
        time.sleep(0.1)
    return running


def check_blocked_output(shop):
    for jobs in ("1", "2"):
        what = f"output that nobody reads, {jobs} jobs"
        running = start_blocked(shop, jobs)
        running.send_signal(signal.SIGTERM)
        said = running.stderr.read()
        expect(f"{what}: status", running.wait(timeout=PATIENCE) == 143, said)
        expect(f"{what}: summed up", b"interrupted behind " in said and b"\n  malformed" in said, said)
        close_all(running)

        what = f"output that is read later, {jobs} jobs"
        running = start_blocked(shop, jobs)
        running.send_signal(signal.SIGINT)
        time.sleep(0.2)
        answers = running.stdout.read()
        said = running.stderr.read()
        expect(f"{what}: status", running.wait(timeout=PATIENCE) == 130, said)
        expect(f"{what}: whole lines", answers.endswith(b"\n") and shop.right.startswith(answers), answers[-80:])
        expect(f"{what}: counted", f"interrupted behind {answers.count(bytes([10])):,} records\n".encode() in said, said)
        close_all(running)

        what = f"a second signal, {jobs} jobs"
        running = start_blocked(shop, jobs)
        running.send_signal(signal.SIGTERM)
        time.sleep(0.4)
        running.send_signal(signal.SIGINT)
        expect(f"{what}: status", running.wait(timeout=PATIENCE) == 130)
        expect(f"{what}: at once", running.stderr.read() == b"")
        close_all(running)

        what = f"one request sent twice, {jobs} jobs"
        running = start_blocked(shop, jobs)
        running.send_signal(signal.SIGTERM)
        running.send_signal(signal.SIGTERM)
        said = running.stderr.read()
        expect(f"{what}: ends in order", running.wait(timeout=PATIENCE) == 143 and b"interrupted" in said, said)
        close_all(running)


def check_ignored_signals(shop):
    def ignore():
        signal.signal(signal.SIGINT, signal.SIG_IGN)

    running = shop.start(shop.convert(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, preexec_fn=ignore)
    running.stdin.write(some_records(shop, 1))
    running.stdin.flush()
    first = running.stdout.readline()
    running.send_signal(signal.SIGINT)
    time.sleep(0.1)
    running.stdin.write(some_records(shop, 2))
    running.stdin.close()
    rest = running.stdout.read()
    expect("an ignored signal", running.wait(timeout=PATIENCE) == 0 and (first + rest).count(b"\n") == 3)
    close_all(running)


def check_closed_pipe(shop):
    for jobs in ("1", "2"):
        script = '"$@" | head -n 1; exit ${PIPESTATUS[0]}'
        ended = shop.run(["bash", "-c", script, "bash", *shop.convert(shop.records, "--jobs", jobs)])
        expect(f"| head, {jobs} jobs", ended.returncode == 1 and ended.stderr == b"" and ended.stdout == shop.lines(1),
               ended.returncode, ended.stderr)


# --- Where answers go


def check_what_is_no_file(shop):
    with open(shop.path("redirected"), "wb") as output:
        ended = subprocess.run(shop.convert(shop.records, "-o", "/dev/stdout"), stdout=output,
                               stderr=subprocess.DEVNULL, timeout=PATIENCE, check=False)
    expect("/dev/stdout, a file", ended.returncode == shop.right_status and shop.path("redirected").read_bytes() == shop.right)
    ended = shop.run(shop.convert(shop.records, "-o", "/dev/stdout"))
    expect("/dev/stdout, a pipe", ended.stdout == shop.right and ended.returncode == shop.right_status)
    ended = shop.run(shop.convert(shop.records, "-o", "/dev/full"))
    expect("/dev/full", ended.returncode == 1 and ended.stderr ==
           b"quelt-migrate: cannot write the answers: No space left on device\n", ended.stderr)
    fifo = shop.path("fifo")
    os.mkfifo(fifo)
    read = []
    reader = threading.Thread(target=lambda: read.append(fifo.read_bytes()))
    reader.start()
    ended = shop.run(shop.convert(shop.records, "-o", fifo))
    reader.join(PATIENCE)
    expect("a named pipe", read == [shop.right] and ended.returncode == shop.right_status)
    expect("no parts beside", not list(shop.folder.glob("*.part")) and not pathlib.Path("/dev/stdout.part").exists())


def check_links(shop):
    (shop.path("there")).mkdir()
    target = shop.path("there") / "target"
    link = shop.path("link")
    link.symlink_to(pathlib.Path("there", "target"))
    for what in ("a link to nothing", "a link to a file"):
        ended = shop.run(shop.convert(shop.records, "-o", link))
        expect(what, link.is_symlink() and target.read_bytes() == shop.right, ended.stderr)
        target.write_bytes(b"old\n")
        target.chmod(0o640)
    shop.run(shop.convert(shop.records, "-o", link))
    expect("permissions stay", target.stat().st_mode & 0o777 == 0o640)
    (shop.path("there") / "target.part").write_bytes(shop.lines(10))
    target.unlink()
    ended = shop.run(shop.convert(shop.records, "-o", link, "--resume"))
    expect("a link: goes on beside its target", b"(10 kept)" in ended.stderr and target.read_bytes() == shop.right)


def check_parts_that_cannot_be_written(shop):
    def refused(what, message, **more):
        ended = shop.run(shop.into_file(), **more)
        expect(what, ended.returncode == 2 and message.encode() in ended.stderr, ended.returncode, ended.stderr)

    shop.part.mkdir()
    refused("a folder in the part's place", f"cannot write the answers {shop.part}: something else than a file is there")
    shop.part.rmdir()
    shop.part.symlink_to(shop.path("elsewhere"))
    refused("a link in the part's place", f"cannot write the answers {shop.part}: something else than a file is there")
    expect("a link in the part's place: not followed", not shop.path("elsewhere").exists())
    shop.part.unlink()
    shop.part.write_bytes(shop.lines(3))
    ended = shop.run(shop.convert(shop.part, "-o", shop.answers))
    expect("the part as records", ended.returncode == 2 and b"would overwrite the records" in ended.stderr, ended.stderr)
    shop.part.unlink()
    shop.answers.write_bytes(b"old\n")
    ended = shop.run([*shop.command, "convert", "--context", str(shop.context), str(shop.answers), "-o", str(shop.answers)])
    expect("the answers as records", ended.returncode == 2 and shop.answers.read_bytes() == b"old\n", ended.stderr)

    running = shop.start(shop.convert("-o", shop.answers), stdin=subprocess.PIPE)
    await_condition(shop.part.exists)
    refused("two runs at once", f"cannot write the answers {shop.part}: another run is writing it")
    ended = shop.run(shop.into_file("--resume"))
    expect("going on beside a run", ended.returncode == 2 and b"another run is writing it" in ended.stderr, ended.stderr)
    running.stdin.close()
    expect("two runs at once: the first ends well", running.wait(timeout=PATIENCE) == 0)
    close_all(running)
    shop.clear()

    as_nobody = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
    for path in (shop.folder, shop.context, shop.records):
        path.chmod(0o755)
    shop.answers.write_bytes(b"old\n")
    shop.answers.chmod(0o666)
    shop.folder.chmod(0o555)
    try:
        refused("no right to create beside", f"cannot write the answers {shop.part}: Permission denied", **as_nobody)
    except PermissionError:
        print("check-interruption: not tried as another user, who cannot run the program here")
    shop.folder.chmod(0o755)
    shop.clear()


def check_failures_to_write(shop):
    limit = len(shop.right) // 2

    def limit_size():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    for jobs in ("1", "2"):
        shop.clear()
        shop.answers.write_bytes(b"old\n")
        with shop.feed() as records:
            ended = shop.run(shop.pipe_into_file("--jobs", jobs), preexec_fn=limit_size, stdin=records)
        part = shop.part.read_bytes()
        expect("no room: status", ended.returncode == 1, ended.returncode)
        message = (f"quelt-migrate: cannot write the answers: File too large; what is answered is in {shop.part}, "
                   "and --resume goes on behind it\n")
        expect("no room: explained", ended.stderr.decode() == message, ended.stderr)
        expect("no room: whole lines", part.endswith(b"\n") and shop.right.startswith(part))
        expect("no room: the file of before stays", shop.answers.read_bytes() == b"old\n")
        shop.finish("no room", "--jobs", jobs)
    limit = 100
    ended = shop.run(shop.into_file(), preexec_fn=limit_size)
    expect("no room at all", ended.returncode == 1 and not shop.part.exists() and b"--resume" not in ended.stderr, ended.stderr)

    shop.clear()
    running = shop.start(shop.convert("-o", shop.answers), stdin=subprocess.PIPE)
    await_condition(shop.part.exists)
    shop.answers.mkdir()
    (shop.answers / "occupied").touch()
    said = running.communicate(shop.records.read_bytes(), timeout=PATIENCE)[1]
    expect("renaming fails: status", running.returncode == 1, running.returncode)
    expect("renaming fails: explained", b"cannot write the answers: Is a directory; what is answered is in" in said, said)
    expect("renaming fails: the part is complete", shop.part.read_bytes() == shop.right)
    shutil.rmtree(shop.answers)
    shop.finish("renaming failed")
    shop.clear()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("sources", type=pathlib.Path)
    parser.add_argument("--kills", type=int, default=20)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(2**31))
    parser.add_argument("--emulator", default="")
    given = parser.parse_args()
    print(f"check-interruption: seed {given.seed}")
    signal.signal(signal.SIGINT, signal.default_int_handler)  # else the programs would ignore it as well
    with tempfile.TemporaryDirectory(prefix="quelt-interruption-") as folder:
        emulator = [given.emulator] if given.emulator else []
        shop = Workshop(folder, given.program.resolve(), given.sources.resolve(), emulator)
        start_time, record_time = shop.measure()
        many = min(100_000, max(1000, int(0.6 / record_time)))
        shop.prepare(many)
        if given.kills > 0:
            check_kills(shop, Killing(shop, random.Random(given.seed), start_time, record_time * many), given.kills)
        if not emulator:
            check_signals(shop)
            shop.prepare(max(3000, many // 4))
            check_blocked_output(shop)
        shop.prepare(FEW)
        check_torn_line(shop)
        if not emulator:
            check_mismatches(shop)
            check_nothing_to_resume(shop)
            check_standard_input(shop)
            check_every_form(shop)
            check_waiting_for_input(shop)
            check_ignored_signals(shop)
            check_closed_pipe(shop)
            check_what_is_no_file(shop)
            check_links(shop)
            check_failures_to_write(shop)
            check_parts_that_cannot_be_written(shop)
    print("\n".join(faults) if faults else "check-interruption: nothing is lost, and nothing half done is shown")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
