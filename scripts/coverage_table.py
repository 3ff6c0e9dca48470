#!/usr/bin/env python3
"""Prints the share of lines and branches that the tests reach, by folder of src/. Usage: coverage_table.py BUILD"""

import collections
import json
import os
import subprocess
import sys

# The parts that must be held tightest: share of their branches, in percent.
HELD = {
    "host adapter": ("src/host/",),
    "state": ("src/synth/state_block", "src/synth/parameter_exchange", "src/synth/parameter_conversion"),
    "files": ("src/files/", "src/presets/program_file"),
    "images": ("src/gui/image", "src/gui/packed_picture"),
}
LIMIT = 95.0


def reached(build):
    """gcovr's JSON: branches that only an exception takes, or that no code can, do not count."""
    out = subprocess.run(
        ["gcovr", "--root", ".", "--filter", "src/", "--exclude-throw-branches", "--exclude-unreachable-branches",
         "--json", "-", build],
        check=True, capture_output=True, text=True)
    return json.loads(out.stdout)["files"]


def count(file):
    lines = [line for line in file["lines"] if not line.get("gcovr/noncode")]
    branches = [branch for line in lines for branch in line["branches"]]
    return (len(lines), sum(line["count"] > 0 for line in lines),
            len(branches), sum(branch["count"] > 0 for branch in branches))


def share(part, whole):
    return 100.0 * part / whole if whole else 100.0


def main():
    build = sys.argv[1]
    files = {file["file"]: count(file) for file in reached(build)}
    folders = collections.defaultdict(lambda: [0, 0, 0, 0])
    for name, figures in files.items():
        for i, figure in enumerate(figures):
            folders[os.path.dirname(name)][i] += figure
    print(f"{'folder':32}{'lines':>8}{'reached':>9}{'branches':>10}{'reached':>9}")
    for folder, (lines, hit, branches, taken) in sorted(folders.items()):
        print(f"{folder:32}{lines:8}{share(hit, lines):8.1f}%{branches:10}{share(taken, branches):8.1f}%")
    missed = []
    print()
    for what, prefixes in HELD.items():
        chosen = {name: f for name, f in files.items() if name.startswith(prefixes)}
        branches, taken = (sum(f[i] for f in chosen.values()) for i in (2, 3))
        held = share(taken, branches)
        print(f"{what:16}{held:6.1f}% of {branches} branches")
        if held < LIMIT:
            missed.append(what)
            for name, f in sorted(chosen.items()):
                if share(f[3], f[2]) < LIMIT:
                    print(f"    {name}: {f[3]} of {f[2]}")
    if missed:
        sys.exit(f"below {LIMIT:g} % of the branches: {', '.join(missed)}")


if __name__ == "__main__":
    main()
