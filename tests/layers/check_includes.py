#!/usr/bin/env python3
"""Holds the includes of src/ and apps/ to the arrows of ARCHITECTURE.md. Usage: check_includes.py PROJECT"""

import re
import sys
from pathlib import Path

# Room -> rooms it may include. A room is the longest of these names that a file's folder starts with. "presets/panel"
# stands for the files of presets/ that draw (PRESETS_PANEL).
ARROWS = {
    "framework": set(),
    "files": set(),
    "parameters": set(),
    "dsp": set(),
    "fx": {"dsp"},
    "presets": {"framework", "files"},
    "synth": {"framework", "parameters", "dsp", "fx", "presets"},
    "gui": {"files", "gui/platform"},
    "gui/platform": {"gui", "files"},
    "presets/panel": {"presets", "framework", "files", "gui"},
    "editor": {"framework", "parameters", "gui", "presets", "presets/panel"},
    "plugin": {"framework", "parameters", "presets", "synth", "editor"},
    "host": {"framework", "plugin"},
    "apps": {"framework", "parameters", "plugin", "synth", "editor", "gui", "gui/platform", "files", "presets"},
}
PRESETS_PANEL = re.compile(r"^preset_(list_editor|list_about_box|panel|browser)")
# The interface of a host format is spoken in its own room only.
SYSTEM_ONLY_IN = {
    re.compile(r"^(X11|xcb|wayland)"): {"gui/platform"},
    re.compile(r"^(windows\.h|Cocoa|AppKit)"): {"gui/platform", "files"},
}
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]')


def room_of(path):
    """Room of a path relative to src/ (or starting with apps/); None for a folder nobody drew."""
    parts = path.split("/")
    if parts[0] == "presets" and PRESETS_PANEL.match(parts[-1]):
        return "presets/panel"
    for length in range(len(parts) - 1, 0, -1):
        room = "/".join(parts[:length])
        if room in ARROWS:
            return room
    return None


def breaches(files):
    """Yields (file, line number, text) for each include against the arrows. files: {relative path: source}"""
    for path, source in sorted(files.items()):
        room = room_of(path)
        if room is None:
            yield path, 0, "lies in no room of the house"
            continue
        for number, line in enumerate(source.splitlines(), 1):
            match = INCLUDE.match(line)
            if match is None:
                continue
            kind, target = match.groups()
            # A program includes its own files by their place in apps/.
            target_room = "apps" if f"apps/{target}" in files else room_of(target)
            if kind == "<":
                if any(pattern.match(target) and room not in rooms for pattern, rooms in SYSTEM_ONLY_IN.items()):
                    yield path, number, f"{room} includes <{target}>"
            elif "../" in target:
                yield path, number, f'"{target}" climbs out of its folder'
            elif target_room is None:
                if target.endswith(".h"):  # else data of assets/, taken in as text
                    yield path, number, f'"{target}" is not named room/file.h'
            elif target_room != room and target_room not in ARROWS[room]:
                yield path, number, f"{room} includes {target_room} ({target})"


def sources(project):
    files = {}
    for base, prefix in ((project / "src", ""), (project / "apps", "apps/")):
        for path in base.rglob("*") if base.is_dir() else ():
            if path.suffix in (".h", ".cpp", ".mm"):
                files[prefix + path.relative_to(base).as_posix()] = path.read_text(encoding="utf-8")
    return files


def main():
    files = sources(Path(sys.argv[1]))
    found = list(breaches(files))
    for path, line, text in found:
        print(f"{path}:{line}: {text}")
    print(f"{len(files)} files, {len(found)} includes against the arrows")
    return 1 if found or not files else 0


if __name__ == "__main__":
    sys.exit(main())
