#!/usr/bin/env python3
"""Measures quelt-migrate beside a program that only parses the same lines, and writes the ratios as JSON.

    measure_host.py --migrate PROGRAM --baseline PROGRAM [--records N] [--rounds N] [--memory N] [--folder FOLDER]

Programs run by turns, and the least time of each counts, so that what else the machine does is left out.
"""

import argparse
import filecmp
import json
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

GENERATOR = Path(__file__).with_name("make_list_records.py")


def run(command, **options):
    """Runs a command; its processor seconds, and the seconds that passed."""
    start = time.monotonic()
    process = subprocess.Popen(command, **options)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]} ended with status {process.returncode}")
    return {"processor": usage.ru_utime + usage.ru_stime, "elapsed": time.monotonic() - start}


class Host:
    def __init__(self, arguments, folder):
        self.arguments = arguments
        self.folder = Path(folder)
        self.context = self.generate("context")
        self.answers = self.folder / "answers.ndjson"

    def generate(self, *what):
        path = self.folder / ("-".join(what) + ".json")
        with open(path, "wb") as file:
            subprocess.run([sys.executable, GENERATOR, *what], stdout=file, check=True)
        return path

    def command(self, records, jobs, answers=None):
        return [self.arguments.migrate, "convert", "--context", self.context, records, "-o", answers or self.answers,
                "--jobs", str(jobs)]

    def convert(self, records, jobs=1):
        return run(self.command(records, jobs), stderr=subprocess.DEVNULL)

    def convert_twice(self, records):
        """Seconds that pass while two processes convert the records, each all of them: what two processors give."""
        start = time.monotonic()
        processes = [subprocess.Popen(self.command(records, 1, self.folder / f"apart-{number}.ndjson"),
                                      stderr=subprocess.DEVNULL) for number in range(2)]
        if any([process.wait() for process in processes]):
            sys.exit("one of two processes failed")
        return time.monotonic() - start

    def parse(self, records, answers):
        """Processor seconds of the program that only parses; it leaves out what it needs to begin with."""
        done = subprocess.run([self.arguments.baseline, records, answers, self.folder / "lines"],
                              stdout=subprocess.PIPE, check=True)
        return json.loads(done.stdout)["seconds"]

    def throughput(self, records):
        self.convert(records)
        kept = self.folder / "kept.ndjson"
        self.answers.rename(kept)
        conversions, parsings, ones, twos, apart = [], [], [], [], []
        for _ in range(self.arguments.rounds):
            conversion = self.convert(records)
            conversions.append(conversion["processor"])
            parsings.append(self.parse(records, kept))
            ones.append(conversion["elapsed"])
            twos.append(self.convert(records, jobs=2)["elapsed"])
            apart.append(self.convert_twice(records))
        if not filecmp.cmp(kept, self.answers, shallow=False):
            sys.exit("two threads gave other answers than one")
        count = self.arguments.records
        return {"convert_us": min(conversions) / count * 1e6, "parse_us": min(parsings) / count * 1e6,
                "throughput": min(parsings) / min(conversions),
                "two_threads": min(ones) / min(twos), "two_processes": 2 * min(ones) / min(apart),
                "bytes_in": records.stat().st_size / count, "bytes_out": kept.stat().st_size / count}

    def peaks(self):
        """Greatest memory, in MiB, by number of records, with one thread and with two."""
        peaks = []
        for count in (self.arguments.records, self.arguments.memory):
            records = self.generate("records", str(count))
            one, two = (self.peak(records, jobs) for jobs in (1, 2))
            peaks.append({"records": count, "one_thread_mib": one, "two_threads_mib": two})
        return peaks

    def peak(self, records, jobs):
        """In MiB. A process begins with what the one that starts it has, so that one has to be small."""
        noted = self.folder / "peak"
        run(["time", "--format=%M", "--output", noted, *self.command(records, jobs)], stderr=subprocess.DEVNULL)
        return int(noted.read_text()) / 1024


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--migrate", required=True, help="quelt-migrate")
    parser.add_argument("--baseline", required=True, help="quelt-parse-baseline")
    parser.add_argument("--records", type=int, default=100000, help="how many records are converted")
    parser.add_argument("--rounds", type=int, default=7, help="how often each program runs")
    parser.add_argument("--memory", type=int, default=0,
                        help="also measures the memory for so many records (0: not at all)")
    parser.add_argument("--folder", default="/dev/shm" if os.path.isdir("/dev/shm") else None,
                        help="where records and answers are kept meanwhile; best in memory")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="quelt-bench-", dir=arguments.folder) as folder:
        host = Host(arguments, folder)
        figures = host.throughput(host.generate("records", str(arguments.records)))
        if arguments.memory > 0:
            figures["memory"] = host.peaks()
    json.dump(figures, sys.stdout, indent=2)
    print()


if __name__ == "__main__":
    main()
