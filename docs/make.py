#!/usr/bin/env python3
"""Makes the manual's pictures from the real panel, and docs/manual.html. Usage: docs/make.py [PICTURES_PROGRAM]

Needs a release build (norava-panel-pictures) and Debian's python3-markdown."""

import html
import subprocess
import sys
from pathlib import Path

DOCS = Path(__file__).resolve().parent
PROJECT = DOCS.parent
MARK = "<!-- factory bank -->"
STYLE = """
body { max-width: 860px; margin: 2em auto; padding: 0 1em; font: 16px/1.5 sans-serif; color: #222; }
table { border-collapse: collapse; margin: 1em 0; } td, th { padding: .25em .8em; text-align: left; vertical-align: top; }
tr + tr td { border-top: 1px solid #ddd; } img { max-width: 100%; } code { background: #f3f0ea; }
h2 { border-bottom: 2px solid #b49a62; margin-top: 2em; }
"""


def factory_bank():
    """The bank as Markdown tables, one a category, from the texts that the programs are made of."""
    lines = []
    root = PROJECT / "assets" / "programs"
    for category in sorted(path for path in root.iterdir() if path.is_dir()):
        lines += ["", f"### {category.name}", "", "| program | what it is |", "| --- | --- |"]
        for program in sorted(category.glob("*.txt")):
            fields = dict(
                (part.strip() for part in line.split("=", 1))
                for line in program.read_text(encoding="utf-8").splitlines()
                if "=" in line
            )
            lines.append(f"| {fields['Name']} | {fields['Description']} |")
    return "\n".join(lines) + "\n"


def main():
    program = sys.argv[1] if len(sys.argv) > 1 else PROJECT / "build" / "release" / "norava-panel-pictures"
    pictures = DOCS / "pictures"
    pictures.mkdir(exist_ok=True)
    subprocess.run([program, pictures], check=True)
    source = DOCS / "manual.md"
    text = source.read_text(encoding="utf-8").split(MARK)[0] + MARK + "\n" + factory_bank()
    source.write_text(text, encoding="utf-8")
    try:
        import markdown
    except ImportError:
        sys.exit("docs/make.py: Debian's python3-markdown is missing; manual.html is left as it was")
    body = markdown.markdown(text, extensions=["tables"])
    title = html.escape(text.splitlines()[0].lstrip("# "))
    page = f"<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>{title}</title>"
    page += f"<style>{STYLE}</style></head>\n<body>\n{body}\n</body></html>\n"
    (DOCS / "manual.html").write_text(page, encoding="utf-8")


if __name__ == "__main__":
    main()
