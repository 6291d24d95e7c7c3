#!/usr/bin/env python3
"""Tries what the README shows: its context and records convert, and the answer it prints is the one given.

    check-readme.py REPOSITORY QUELT_MIGRATE
"""
import pathlib
import re
import subprocess
import sys
import tempfile


def blocks(text, language):
    return re.findall(r"^```%s\n(.*?)^```$" % language, text, re.MULTILINE | re.DOTALL)


def convert(program, context, records):
    run = subprocess.run([program, "convert", "--context", context, records], capture_output=True, text=True)
    return run.returncode, run.stdout, run.stderr


def main():
    repository, program = pathlib.Path(sys.argv[1]), sys.argv[2]
    readme = (repository / "README.md").read_text(encoding="utf-8")
    context, records = blocks(readme, "json")
    with tempfile.TemporaryDirectory() as folder:
        context_file = pathlib.Path(folder) / "context.json"
        records_file = pathlib.Path(folder) / "records.ndjson"
        context_file.write_text(context, encoding="utf-8")
        records_file.write_text(records, encoding="utf-8")
        status, answers, messages = convert(program, context_file, records_file)
    if status != 0 or len(answers.splitlines()) != len(records.splitlines()):
        sys.exit(f"README.md: its records do not all convert\n{answers}{messages}")

    shown = re.search(r'^\{"id":"L-01".*$', readme, re.MULTILINE)
    examples = repository / "examples"
    _, answers, _ = convert(program, examples / "context.json", examples / "records.ndjson")
    if shown is None or shown.group() != answers.splitlines()[0]:
        sys.exit(f"README.md: the answer to the first example is\n{answers.splitlines()[0]}")


if __name__ == "__main__":
    main()
