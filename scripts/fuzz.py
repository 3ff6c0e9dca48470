#!/usr/bin/env python3
"""Runs fuzz targets and prints what they did.

Usage: fuzz.py BUILD [--seconds N | --runs N] [TARGET...]

BUILD is the folder of a build with fuzzers. The inputs that are found stay in BUILD/corpora and are gone on with next
time, beside those of fuzz/corpus; an input that breaks a target goes to BUILD/crashes. The status is 1 then."""

import argparse
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
# The longest inputs: a little more than what is read, or as many events as show a fault soon.
TARGETS = {
    "state_block": 640,
    "fxp": 720,
    "program_file": 720,
    "program_text": 1500,
    "targa": 700,
    "midi_file": 512,
    "host_calls": 600,
    "editor_events": 240,
}
SECONDS_AN_INPUT = 60  # more is a hang


def environment():
    """Scratch files lie in memory where the system has such a folder: writing waits for no disk."""
    memory = Path("/dev/shm")
    chosen = {"UBSAN_OPTIONS": "print_stacktrace=1", "ASAN_OPTIONS": "detect_stack_use_after_return=1"}
    if "TMPDIR" not in os.environ and os.access(memory, os.W_OK):
        chosen["TMPDIR"] = str(memory)
    return {**os.environ, **chosen}


def run(build, target, limits):
    corpus, crashes = build / "corpora" / target, build / "crashes" / target
    for folder in (corpus, crashes):
        folder.mkdir(parents=True, exist_ok=True)
    kept = {path.name for path in crashes.iterdir()}
    command = [
        build / "fuzz" / f"fuzz_{target}", *limits, f"-max_len={TARGETS[target]}", f"-timeout={SECONDS_AN_INPUT}",
        "-print_final_stats=1", f"-artifact_prefix={crashes}/", corpus, PROJECT / "fuzz" / "corpus" / target,
    ]  # fmt: skip
    done = subprocess.run(command, env=environment(), capture_output=True, check=False)
    text = done.stderr.decode(errors="replace")
    (build / f"fuzz_{target}.log").write_text(text)

    def last(pattern):
        found = re.findall(pattern, text)
        return int(found[-1]) if found else 0

    return {
        "target": target,
        "executions": last(r"number_of_executed_units: (\d+)"),
        "a second": last(r"average_exec_per_sec: +(\d+)"),
        "coverage": last(r"cov: (\d+)"),
        "of": last(r"\((\d+) inline 8-bit counters\)"),
        "features": last(r"ft: (\d+)"),
        "inputs": last(r"corp: (\d+)"),
        "crashes": len({path.name for path in crashes.iterdir()} - kept) or int(done.returncode != 0),
    }


def print_table(rows):
    table = [list(rows[0]), *([f"{value:,}" if isinstance(value, int) else value for value in r.values()] for r in rows)]
    widths = [max(map(len, column)) for column in zip(*table)]
    for row in table:
        print("  ".join(c.rjust(w) if i else c.ljust(w) for i, (c, w) in enumerate(zip(row, widths))).rstrip())


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1].removeprefix("Usage: "))
    parser.add_argument("build", type=Path)
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--runs", type=int)
    parser.add_argument("targets", nargs="*")
    wanted = parser.parse_args()
    unknown = [name for name in wanted.targets if name not in TARGETS]
    if unknown:
        sys.exit(f"fuzz.py: there is no target {unknown[0]!r} ({' '.join(TARGETS)})")
    limits = [f"-max_total_time={wanted.seconds}"]
    if wanted.runs is not None:
        # Very many short executions: weighing the inputs would take a third of the time.
        limits = [f"-runs={wanted.runs}", "-entropic=0"]
    build = wanted.build.resolve()
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        rows = list(pool.map(lambda target: run(build, target, limits), wanted.targets or TARGETS))
    print_table(rows)
    broken = [row["target"] for row in rows if row["crashes"]]
    for target in broken:
        print(f"{target} broke: see {build}/fuzz_{target}.log and the input in {build}/crashes/{target}")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
