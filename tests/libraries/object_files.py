"""What object files define and take from elsewhere, for the checks of this folder."""

import re
import subprocess
import sys


def listings_of(nm, paths):
    """What `nm` lists of each object file, by its path. Ends the program where it lists nothing, or not everything."""
    run = subprocess.run([nm, "-A", *paths], capture_output=True, text=True, check=False)
    listings = {path: [] for path in paths}
    for line in run.stdout.splitlines():
        match = re.fullmatch(r"(.+?):(\s*[-0-9a-fA-F]*\s+\S\s+\S+)\s*", line)
        if match is None or match.group(1) not in listings:
            sys.exit(f"{nm} says what is not understood: {line}")
        listings[match.group(1)].append(match.group(2))
    silent = [path for path, lines in listings.items() if not lines]
    if run.returncode != 0 or run.stderr or silent:
        sys.exit(f"{nm} lists nothing, or not everything: {run.stderr.strip() or silent}")
    return {path: "\n".join(lines) + "\n" for path, lines in listings.items()}
