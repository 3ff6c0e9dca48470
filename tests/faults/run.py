#!/usr/bin/env python3
"""Plants the faults of tests/faults one by one and sees that our own checks catch them. Usage: run.py PROJECT [NAME...],
run.py PROJECT --plant NAME or run.py PROJECT --table

First the checks must pass without a fault. Then each fault is built into a copy of the sources, and its check must fail
with the words that its patch foretells: neither a build that fails nor any other failure counts. --plant leaves
one fault in the copy, to look at it. --table prints faults and checks for the documentation."""

import os
import re
import shutil
import subprocess
import sys
import time
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from plant import copy_with, planted, read_all

TIME_LIMIT = 120  # seconds of one check
ROW = "{:30} {:17} {:8} {:62} {:>6} {}"
ENVIRONMENTS = {
    "asan": {"ASAN_OPTIONS": "detect_leaks=1:detect_stack_use_after_return=1", "UBSAN_OPTIONS": "print_stacktrace=1"},
}


class Broken(Exception):
    """Something other than a check has failed."""


def run(command, log, **options):
    with log.open("a") as file:
        print("$", *command, file=file, flush=True)
        return subprocess.run(command, stdout=file, stderr=subprocess.STDOUT, check=False, **options).returncode


class Build:
    """A copy of the project with its build of one preset, where the faults are planted. Files lie in it as in any
    checkout, so that a compiler cache knows what has no fault."""

    def __init__(self, project, preset):
        self.project, self.preset = project, preset
        self.copy = project / "build" / "faults" / preset
        self.folder = self.copy / "build" / preset
        self.log = self.folder.with_suffix(".log")
        self.folder.mkdir(parents=True, exist_ok=True)
        self.log.write_text("")

    def plant(self, fault):
        copy_with(self.project, self.copy, planted(self.project, fault) if fault else {})

    def make(self, targets):
        configure = ["cmake", "--preset", self.preset, "-DNORAVA_BUILD_BENCH=OFF"]
        if shutil.which("ccache"):
            configure.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        commands = [["cmake", "--build", str(self.folder), "-j", str(os.cpu_count()), "--target", *targets]]
        if not (self.folder / "build.ninja").exists():
            commands.insert(0, configure)
        for command in commands:
            if run(command, self.log, cwd=self.copy) != 0:
                raise Broken(f"this fails: {' '.join(command)}; see {self.log}")

    def check(self, target, tests):
        """Whether the tests of the target pass, and what they say. Tests of GoogleTest programs are run by themselves;
        any other is one of ctest's."""
        folder = self.folder
        if target.startswith("test_"):
            program = next(self.folder.glob(f"tests/**/{target}"))
            folder = program.parent
            command = [str(program), f"--gtest_filter={':'.join(tests)}", "--gtest_brief=1"]
        else:
            command = ["ctest", "--test-dir", str(self.folder), "--output-on-failure", "-R", f"^({'|'.join(tests)})$"]
            command += ["--no-tests=error"]
        if self.preset == "tsan":  # see scripts/checks.sh
            command = ["setarch", os.uname().machine, "-R", *command]
        environment = os.environ | ENVIRONMENTS.get(self.preset, {})
        said = self.folder / "said.txt"
        said.write_text("")
        try:
            status = run(command, said, env=environment, timeout=TIME_LIMIT, cwd=folder)
        except subprocess.TimeoutExpired:
            return False, "timed out"
        text = said.read_text(errors="replace")
        return status == 0 and "SKIPPED" not in text and "] 0 tests" not in text, text


def baseline(build, faults):
    checks = defaultdict(set)
    for fault in faults:
        checks[fault.target].add(fault.test)
    build.plant(None)
    build.make(sorted(checks))
    for target, tests in sorted(checks.items()):
        passed, text = build.check(target, sorted(tests))
        if not passed:
            raise Broken(f"{build.preset} {target}: does not pass without a fault:\n{text[-4000:]}")


def is_caught(build, fault):
    build.plant(fault)
    build.make([fault.target])
    passed, text = build.check(fault.target, [fault.test])
    if passed:
        return "NO: the check passes"
    if not re.search(fault.says, text):
        return f"NO: it does not say '{fault.says}' but:\n{text[-1500:]}"
    return "yes"


def run_preset(project, preset, faults):
    """Plants the faults of a preset's checks, prints a line for each, and returns the names of those not caught."""
    build = Build(project, preset)
    mine = sorted((fault for fault in faults if fault.preset == preset), key=lambda fault: (fault.target, fault.room))
    missed = []
    start = time.monotonic()
    try:
        baseline(build, mine)
    except Broken as error:
        print(error, flush=True)
        return [fault.name for fault in mine]
    print(f"{preset}: without faults the checks pass, {time.monotonic() - start:.0f} s", flush=True)
    for fault in mine:
        start = time.monotonic()
        try:
            caught = is_caught(build, fault)
        except (Broken, ValueError) as error:
            caught = f"NO: {error}"
        if caught != "yes":
            missed.append(fault.name)
        seconds = f"{time.monotonic() - start:.0f} s"
        print(ROW.format(fault.name, fault.room, preset, fault.test, seconds, caught), flush=True)
    build.plant(None)
    return missed


def print_table(faults):
    print("| fault | room | caught by |")
    print("| --- | --- | --- |")
    for fault in sorted(faults, key=lambda fault: (fault.room, fault.name)):
        where = "" if fault.preset == "release" else f" ({fault.preset})"
        print(f"| {fault.text} | {fault.room} | `{fault.test}`{where} |")


def main():
    project, names = Path(sys.argv[1]).resolve(), sys.argv[2:]
    faults = read_all(project)
    if names == ["--table"]:
        return print_table(faults)
    plants_only = names[:1] == ["--plant"] and len(names) == 2
    names = names[1:] if plants_only else names
    unknown = set(names) - {fault.name for fault in faults}
    if unknown:
        raise Broken(f"there is no fault {', '.join(sorted(unknown))} in tests/faults")
    faults = [fault for fault in faults if not names or fault.name in names]
    if plants_only:
        build = Build(project, faults[0].preset)
        build.plant(faults[0])
        return print(f"{build.copy} holds the project with this fault: {faults[0].text}")
    begin = time.monotonic()
    presets = sorted({fault.preset for fault in faults}, key=["release", "asan", "tsan"].index)
    print(ROW.format("fault", "room", "build", "caught by", "time", "caught"), flush=True)
    with ThreadPoolExecutor(2) as pool:
        runs = [pool.submit(run_preset, project, preset, faults) for preset in presets]
        missed = [name for run in runs for name in run.result()]
    print(f"{len(faults) - len(missed)} of {len(faults)} faults caught in {time.monotonic() - begin:.0f} s")
    if missed:
        raise Broken(f"not caught: {', '.join(missed)}")


if __name__ == "__main__":
    try:
        main()
    except (Broken, ValueError, OSError) as error:
        sys.exit(f"faults: {error}")
