#!/usr/bin/env python3
"""Makes table.md and table.json from the figures of one run.

    make_table.py FOLDER

FOLDER holds workloads.json, types.json and growth.json, as Google Benchmark writes them, and host.json of
measure_host.py.
"""

import json
import sys
from pathlib import Path

WORKLOADS = {
    "W1": "AND of 8 options, 3 dictionaries",
    "W2": "tree of 40 nodes with series and dates, 3 dictionaries",
    "W3": "AND of 2,000 options, 2 dictionaries",
    "W4": "AND/OR chain 500 deep, 2 dictionaries",
    "W5": "list of 12 criteria, 3 dictionaries",
    "W6": "compiled change of 5 operations",
    "W7": "branching of what W2 gives",
}
# How much of a copy's time a conversion may take, and how many times its own the plain program should.
TO_COPIES = 2.0
PLAIN_TO = 4.0
WITH_GOAL = ("W1", "W2", "W3", "W4", "W5")


def read(folder, name):
    return json.loads((folder / f"{name}.json").read_text())


def measured(folder, name):
    return [one for one in read(folder, name)["benchmarks"] if one.get("run_type") != "aggregate"]


def workloads(folder):
    rows = []
    for one in measured(folder, "workloads"):
        short = next(part for part in one["name"].split("/") if part.startswith("W"))[:2]
        rows.append({"workload": short, "what": WORKLOADS[short],
                     **{key: one[key] for key in ("conversion_ns", "copies_ns", "bytes_ns", "plain_ns", "bytes")},
                     "to_copies": one["to_copies"], "to_bytes": one["conversion_ns"] / one["bytes_ns"],
                     "plain_to": one["plain_to"], "has_goal": short in WITH_GOAL})
    return sorted(rows, key=lambda row: row["workload"])


def types(folder):
    return [{"order": one["name"].split("/")[1], "type_test_ns": one["type_test_ns"], "tag_ns": one["tag_ns"],
             "ratio": one["ratio"]} for one in measured(folder, "types")]


def growth(folder):
    exponents = {}
    for one in measured(folder, "growth"):
        if "exponent" in one:
            exponents[one["name"].split("/")[0]] = one["exponent"]  # the last one has seen all
    return [{"series": name, "exponent": exponent} for name, exponent in exponents.items()]


def mark(is_met):
    return "yes" if is_met else "**no**"


def table(lines):
    head, *rows = lines
    return "\n".join(["| " + " | ".join(head) + " |", "|" + "---|" * len(head),
                      *("| " + " | ".join(row) + " |" for row in rows)]) + "\n"


def workload_table(rows):
    lines = [("workload", "conversion", "copy", "bytes", "plain", "conversion / copy", "conversion / bytes",
              "plain / conversion", "goals met")]
    for row in rows:
        goals = f"{mark(row['to_copies'] <= TO_COPIES)}, {mark(row['plain_to'] >= PLAIN_TO)}"
        lines.append((f"{row['workload']}: {row['what']}",
                      *(f"{row[key] / 1000:,.2f} µs" for key in ("conversion_ns", "copies_ns", "bytes_ns", "plain_ns")),
                      f"{row['to_copies']:.2f}", f"{row['to_bytes']:.1f}", f"{row['plain_to']:.2f}",
                      goals if row["has_goal"] else "none set"))
    return table(lines)


def other_table(figures):
    lines = [("what", "ratio", "goal", "met")]
    host = figures["host"]
    lines.append(("throughput of `convert` / of a program that only parses", f"{host['throughput']:.2f}", "at least 0.5",
                  mark(host["throughput"] >= 0.5)))
    lines.append(("work of two threads / of one", f"{host['two_threads']:.2f}", "at least 1.8",
                  mark(host["two_threads"] >= 1.8)))
    lines.append(("work of two processes side by side / of one", f"{host['two_processes']:.2f}", "none", "-"))
    for one in figures["types"]:
        lines.append((f"type test / integer tag, {one['order']} order", f"{one['ratio']:.2f}", "at most 1.5",
                      mark(one["ratio"] <= 1.5)))
    for one in figures["growth"]:
        lines.append((f"exponent of growth, `{one['series']}`", f"{one['exponent']:.3f}", "at most 1.05",
                      mark(one["exponent"] <= 1.05)))
    return table(lines)


def memory_table(peaks):
    return table([("records", "one thread", "two threads", "below 64 MiB"),
                  *((f"{one['records']:,}", f"{one['one_thread_mib']:.1f} MiB", f"{one['two_threads_mib']:.1f} MiB",
                     mark(max(one["one_thread_mib"], one["two_threads_mib"]) < 64)) for one in peaks)])


def main(arguments):
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    folder = Path(arguments[0])
    figures = {"workloads": workloads(folder), "types": types(folder), "growth": growth(folder),
               "host": read(folder, "host")}
    (folder / "table.json").write_text(json.dumps(figures, indent=2) + "\n")
    text = workload_table(figures["workloads"]) + "\n" + other_table(figures)
    if "memory" in figures["host"]:
        text += "\n" + memory_table(figures["host"]["memory"])
    (folder / "table.md").write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
