#!/usr/bin/python3
"""Writes the outlines of the built-in fonts, for screens that are finer than their drawings.

    assets/fonts/outlines.py

Needs fonts-inter and python3-fonttools; writes outline_regular.art and outline_bold.art, one line
of C++ text a character '!' .. '~': M, L and C commands in thousandths of the em, y upwards. Kept
with the sources, so that a build needs neither.
"""

import pathlib

from fontTools.pens.recordingPen import DecomposingRecordingPen
from fontTools.ttLib import TTFont

HERE = pathlib.Path(__file__).resolve().parent
FACES = {"regular": "Inter-Medium.otf", "bold": "Inter-SemiBold.otf"}


def commands(font, character):
    glyphs = font.getGlyphSet()
    pen = DecomposingRecordingPen(glyphs)
    glyphs[font.getBestCmap()[ord(character)]].draw(pen)
    scale = 1000 / font["head"].unitsPerEm
    names = {"moveTo": "M", "lineTo": "L", "curveTo": "C"}
    text = []
    for name, points in pen.value:
        if name in names:
            numbers = (str(round(n * scale)) for point in points for n in point)
            text.append(names[name] + " ".join(numbers))
    return "".join(text)


def main():
    for face, file in FACES.items():
        font = TTFont(f"/usr/share/fonts/opentype/inter/{file}")
        lines = [f'"{commands(font, chr(code))}",  // {chr(code)}\n' for code in range(33, 127)]
        lines = [line.replace("// \\", "// backslash") for line in lines]
        (HERE / f"outline_{face}.art").write_text("".join(lines))


if __name__ == "__main__":
    main()
