#!/usr/bin/env python3
"""Copies the project with a fault in it. Usage: plant.py PROJECT TARGET NAME, or plant.py PROJECT --all

NAME is that of a patch in tests/faults, or "none". A file of the copy that is as it should be keeps its time, so that
a build of it compiles again only what the fault touches. With --all, says whether every fault can still be planted."""

import re
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

PLANTED_FOLDERS = ("src", "apps")
HEADER = re.compile(r"^(Fault|Caught by|Says): (.+)$", re.MULTILINE)
TOUCHED = re.compile(r"^\+\+\+ b/(\S+)", re.MULTILINE)


@dataclass
class Fault:
    """One patch: what it breaks in words, and the check (preset, target, test) that must fail and what it then says."""

    patch: Path
    text: str
    preset: str
    target: str
    test: str
    says: str
    files: list[str]

    @property
    def name(self):
        return self.patch.stem

    @property
    def room(self):
        """As in the house: the file's place below src/, or below apps/."""
        folder = Path(self.files[0]).parent.as_posix()
        return folder.removeprefix("src/")


def read(patch):
    source = patch.read_text(encoding="utf-8")
    header = dict(HEADER.findall(source))
    words = header.get("Caught by", "").split()
    files = TOUCHED.findall(source)
    if set(header) != {"Fault", "Caught by", "Says"} or len(words) != 3 or not files:
        raise ValueError(f"{patch.name}: needs the lines Fault, Caught by (preset, target, test) and Says, and a patch")
    if not all(file.split("/")[0] in PLANTED_FOLDERS for file in files):
        raise ValueError(f"{patch.name}: changes what is not in {' or '.join(PLANTED_FOLDERS)}")
    return Fault(patch, header["Fault"], *words, header["Says"], files)


def read_all(project):
    return [read(patch) for patch in sorted((project / "tests" / "faults").glob("*.patch"))]


def planted(project, fault):
    """{file: its bytes with the fault}. A context that has moved, or whose outer line has changed, is found."""
    with tempfile.TemporaryDirectory() as folder:
        for file in fault.files:
            copy = Path(folder) / file
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_bytes((project / file).read_bytes())
        command = ["patch", "-p1", "--silent", "--fuzz=1", "--no-backup-if-mismatch", "-r", "-", "-d", folder, "-i"]
        result = subprocess.run([*command, fault.patch], capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise ValueError(f"{fault.patch.name} does not apply any more: {result.stdout.strip()}")
        return {file: (Path(folder) / file).read_bytes() for file in fault.files}


def copy_with(project, target, changed):
    """All that git knows or would add, with the changed files. What the copy has built stays."""
    command = ["git", "-C", str(project), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(command, capture_output=True, text=True, check=True).stdout.split("\0")
    wanted = {name for name in names if name and (project / name).is_file()}
    for folder in ("src", "apps", "tests"):
        for path in (target / folder).rglob("*"):
            if path.is_file() and path.relative_to(target).as_posix() not in wanted:
                path.unlink()
    for name in sorted(wanted):
        source, copy = project / name, target / name
        content = changed.get(name, source.read_bytes())
        if not copy.is_file() or copy.read_bytes() != content:
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_bytes(content)
            copy.chmod(source.stat().st_mode)


def main():
    project = Path(sys.argv[1]).resolve()
    if sys.argv[2] == "--all":
        faults = read_all(project)
        for fault in faults:
            planted(project, fault)
        print(f"{len(faults)} faults can be planted")
        return
    name = sys.argv[3]
    patch = project / "tests" / "faults" / f"{name}.patch"
    if name != "none" and not patch.is_file():
        raise ValueError(f"there is no fault '{name}' in tests/faults")
    changed = {} if name == "none" else planted(project, read(patch))
    copy_with(project, Path(sys.argv[2]).resolve(), changed)


if __name__ == "__main__":
    try:
        main()
    except (ValueError, OSError) as error:
        sys.exit(f"plant.py: {error}")
