#!/usr/bin/env python3
"""Writes a context, or records in list form with twelve criteria each, for measuring conversions.

    make_list_records.py context > context.json
    make_list_records.py records COUNT > records.ndjson

The same COUNT always gives the same bytes.
"""

import json
import random
import sys
import uuid

SEED = 20100
OPTIONS = 20
VALUES = 12
YEARS = range(1990, 2030)


def guid(number):
    return str(uuid.UUID(int=0x51E1 << 112 | number))


def option(number):
    return {"kind": "option", "name": f"Option{number}", "guid": guid(100 + number),
            "values": [f"value{value}" for value in range(VALUES)]}


def dictionary(name, number, options):
    return {"name": name, "guid": guid(number), "variables": [
        *(option(one) for one in options),
        {"kind": "selection", "name": "Package", "guid": guid(50), "values": ["Sport", "Winter", "Heavy"]},
        {"kind": "serial", "name": "Unit", "guid": guid(60 + number), "externalType": 12,
         "revisions": [{"rev": str(year), "seq": 10 * (year - 1989)} for year in YEARS]},
        {"kind": "treeSeries", "name": "Line", "guid": guid(80 + number), "number": 18,
         "elements": [{"seq": 1}, *({"seq": seq, "parent": seq // 2} for seq in range(2, 64))]}]}


def context():
    return {"format": "quelt-context/1", "dictionaries": [
        dictionary("Truck", 1, range(OPTIONS)),
        dictionary("Van", 2, range(0, OPTIONS, 2)),
        dictionary("Bus", 3, range(0, OPTIONS, 5))], "variables": [], "effectivities": []}


def record(number, random_source):
    options = random_source.sample(range(OPTIONS), 8)
    criteria = [{"option": f"Option{one}", "in": [f"value{value}" for value in random_source.sample(range(VALUES), 3)]}
                for one in options]
    criteria.append({"selection": "Package", "in": ["Sport", "Heavy"]})
    first = random_source.randrange(1985, 2025)
    criteria.append({"serial": "Unit", "of": "Truck",
                     "in": [[first, first + 2], [first + 4, first + 6], [first + 8, None]]})
    criteria.append({"treeSeries": "Line", "of": "Truck", "in": [{"single": 5}, {"from": 3, "to": 27}]})
    criteria.append({"date": [[f"{first}-01-01", f"{first + 3}-07-01"]]})
    random_source.shuffle(criteria)
    return {"id": f"L-{number}", "list": criteria}


def main(arguments):
    if arguments == ["context"]:
        print(json.dumps(context(), separators=(",", ":")))
        return 0
    if len(arguments) == 2 and arguments[0] == "records":
        random_source = random.Random(SEED)
        for number in range(int(arguments[1])):
            print(json.dumps(record(number, random_source), separators=(",", ":")))
        return 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
