#!/usr/bin/env python3
"""Each header of src/ includes all that it uses. Usage: check_headers.py PROJECT COMPILER

A header that is the first include of its own source file is compiled alone by every build; the others are here."""

import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# Headers that need a package of one platform are compiled with the sources that include them.
SKIPPED = ("gui/platform/x11", "gui/platform/win32", "gui/platform/cocoa")
FIRST_INCLUDE = re.compile(r'^#include ["<]([^">]+)[">]', re.MULTILINE)


def is_compiled_first(source_root, header):
    source = (source_root / header).with_suffix(".cpp")
    if not source.is_file():
        return False
    first = FIRST_INCLUDE.search(source.read_text(encoding="utf-8"))
    return first is not None and first.group(1) == header


def compile_alone(source_root, compiler, header):
    command = [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", f"-I{source_root}", "-x", "c++", "-"]
    result = subprocess.run(command, input=f'#include "{header}"\n', capture_output=True, text=True, check=False)
    return result.stderr if result.returncode != 0 else ""


def main():
    source_root, compiler = Path(sys.argv[1]) / "src", sys.argv[2]
    headers = sorted(path.relative_to(source_root).as_posix() for path in source_root.rglob("*.h"))
    errors = [
        f"{header} has no #pragma once" for header in headers if "#pragma once" not in (source_root / header).read_text()
    ]
    alone = [h for h in headers if not h.startswith(SKIPPED) and not is_compiled_first(source_root, h)]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        messages = list(pool.map(lambda header: compile_alone(source_root, compiler, header), alone))
    errors += [f"{header} does not stand alone:\n{text}" for header, text in zip(alone, messages) if text]
    print(*errors, sep="\n")
    print(f"{len(headers)} headers, {len(alone)} compiled here, {len(errors)} errors")
    return 1 if errors or not headers else 0


if __name__ == "__main__":
    sys.exit(main())
