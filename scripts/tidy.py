#!/usr/bin/env python3
"""Runs clang-tidy on the sources that git knows. Usage: tidy.py PROJECT BUILD [JOBS]

Most of a run goes into reading the library's headers again for each source, so all sources of a folder are given to it
as one file. Where two of them do not go together (they have names of their own that
are equal), the halves are tried, down to single files."""

import json
import shlex
import subprocess
import sys
from collections import defaultdict
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

# Big enough to save nearly all, small enough to keep two jobs busy to the end.
MOST_SOURCES = 24
# The batches include sources by design. The analyzer follows the paths of what people run; tests are long roads.
CHECKS = "--checks=-bugprone-suspicious-include"
CHECKS_OF_TESTS = f"{CHECKS},-clang-analyzer-*"


def batches(project, build):
    """Lists of sources of one folder with the same options of the compiler, the longest first, and those options."""
    known = subprocess.run(["git", "-C", project, "ls-files", "*.cpp"], capture_output=True, text=True, check=True)
    known = {str(project / name) for name in known.stdout.split()}
    groups = defaultdict(dict)
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if entry["file"] in known:
            words = shlex.split(entry["command"])
            words = words[next(i for i, word in enumerate(words) if word.startswith("-")) : words.index("-o")]
            groups[Path(entry["file"]).parent, tuple(words)][entry["file"]] = None
    pieces = []
    for (_, options), files in groups.items():
        files = sorted(files)
        pieces += [(files[at : at + MOST_SOURCES], options) for at in range(0, len(files), MOST_SOURCES)]
    return sorted(pieces, key=lambda piece: -len(piece[0]))


def findings(project, build, files, options):
    """What clang-tidy says of the files; empty when it has nothing to say."""
    first = Path(files[0]).relative_to(project)
    checks = CHECKS if first.parts[0] in ("src", "apps") else CHECKS_OF_TESTS
    source = build / "tidy" / f"{first.as_posix().replace('/', '_')}-{len(files)}.cpp"
    source.parent.mkdir(exist_ok=True)
    source.write_text("".join(f'#include "{file}"\n' for file in files))
    command = ["clang-tidy", "--quiet", f"--config-file={project}/.clang-tidy", checks, str(source), "--", *options]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if "[clang-diagnostic-error]" in result.stdout and len(files) > 1:
        half = len(files) // 2
        return "".join(findings(project, build, part, options) for part in (files[:half], files[half:]))
    if result.returncode != 0:
        return result.stdout or result.stderr
    return ""


def main():
    project, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    pieces = batches(project, build)
    with ThreadPoolExecutor(int(sys.argv[3]) if len(sys.argv) > 3 else 2) as pool:
        total = 0
        for text in pool.map(lambda piece: findings(project, build, *piece), pieces):
            total += text.count("-warnings-as-errors]") or bool(text)
            print(text.replace(f"{project}/", ""), end="", flush=True)
    print(f"{sum(len(files) for files, _ in pieces)} sources in {len(pieces)} pieces, {total} findings")
    return 1 if total or not pieces else 0


if __name__ == "__main__":
    sys.exit(main())
