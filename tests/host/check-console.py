#!/usr/bin/env python3
"""Tries the program for Windows on a console, which Wine makes of a terminal.

    check-console.py EMULATOR PROGRAM SOURCES

What is typed, answered and said keeps its letters, beyond ASCII as well. Ctrl-C ends a run in order.
"""

import fcntl
import os
import pathlib
import pty
import re
import select
import signal
import struct
import sys
import tempfile
import termios
import time

LETTERS = "Größe 大小"
SECONDS = 60


def on_console(command, typed="", until=None):
    """What the terminal shows while `command` runs, and its exit status.

    `typed` is typed when the program asks for it. With `until`, the program is stopped when it has shown that.
    """
    child, terminal = pty.fork()
    if child == 0:
        os.execvp(command[0], command)
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 50, 400, 0, 0))
    shown = b""
    status = None
    end = time.monotonic() + SECONDS
    while time.monotonic() < end and not (until and until in without_steering(shown)):
        if select.select([terminal], [], [], 0.5)[0]:
            try:
                shown += os.read(terminal, 65536)
            except OSError:  # the other side is closed
                break
        elif status is not None:  # Wine itself may keep the terminal for longer than the program
            break
        elif typed and "terminal" in without_steering(shown):
            os.write(terminal, typed.encode())
            typed = ""
        if status is None:
            ended, code = os.waitpid(child, os.WNOHANG)
            status = os.waitstatus_to_exitcode(code) if ended else None
    if status is None:
        os.kill(child, signal.SIGKILL)
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    os.close(terminal)
    return without_steering(shown), status


def without_steering(shown):
    """The text that steering of the cursor writes: steps to the right pass over blanks."""
    text = shown.decode("utf-8", "replace")
    text = re.sub("\x1b\\[([0-9]*)C", lambda match: " " * int(match.group(1) or 1), text)
    return re.sub("\x1b\\[[0-9;?]*[A-Za-z]|\x1b\\][^\x07]*\x07|\r", "", text)


def main():
    emulator, program, sources = sys.argv[1:]
    convert = [emulator, program, "convert", "--context", str(pathlib.Path(sources, "examples", "context.json"))]
    faults = []

    def expect(what, result, status, *texts):
        shown, ended = result
        if ended != status or not all(text in shown for text in texts):
            faults.append(f"{what}: status {ended}, shown:\n{shown}\nwanted: status {status}, {texts}")

    record = '{"id":"%s","tree":true}' % LETTERS
    with tempfile.TemporaryDirectory() as folder:
        records = pathlib.Path(folder, f"{LETTERS}.ndjson")
        records.write_text(record + "\n", encoding="utf-8")
        expect("an answer", on_console([*convert, str(records)]), 0, f'{{"id":"{LETTERS}","result":0', "1 record in")
        records.unlink()
        expect("a message", on_console([*convert, str(records)]), 2, "cannot read the records", LETTERS,
               "No such file or directory")
    # Wine's console knows no key that ends the input.
    answer = f'{{"id":"{LETTERS}","result":0'
    expect("a typed record", on_console(convert, typed=f"{record}\r", until=answer), -signal.SIGKILL, answer)
    expect("Ctrl-C", on_console(convert, typed="\x03"), 130, "interrupted behind 0 records", "0 records in")
    print("\n".join(faults) if faults else "check-console: answers, messages and typed records keep their letters, "
          "and Ctrl-C ends in order")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
