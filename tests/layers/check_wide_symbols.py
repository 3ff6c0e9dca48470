#!/usr/bin/env python3
"""Code built for a wider machine stays by itself. Usage: check_wide_symbols.py NM OBJECT...

An inline function that two objects emit is linked once, from either of them: one that comes from an object built
for AVX2 would run, and crash, on machines without it. Such an object may define its entry and nothing else."""

import re
import subprocess
import sys

WIDE = re.compile(r"_wide\.(cpp\.)?o(bj)?$")
ENTRY = re.compile(r"render\w*Wide\(")


def breaches(nm, path):
    output = subprocess.run([nm, "-C", "-g", path], capture_output=True, text=True, check=True).stdout
    symbols = [re.match(r"[0-9a-f]*\s+(\w)\s+(.*)", line).groups() for line in output.splitlines()]
    return [
        f"{path}: {kind} {name}"
        for kind, name in symbols
        if (kind == "U" and "norava::" in name) or (kind != "U" and not (kind == "T" and ENTRY.search(name)))
    ]


def main():
    nm, objects = sys.argv[1], [path for path in sys.argv[2:] if WIDE.search(path)]
    errors = [error for path in objects for error in breaches(nm, path)]
    print(*errors, sep="\n")
    print(f"{len(objects)} objects, {len(errors)} errors")
    return 1 if errors or not objects else 0


if __name__ == "__main__":
    sys.exit(main())
