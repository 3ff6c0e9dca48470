#!/usr/bin/env python3
"""Renders the panel's pictures from the drawings in this folder, at scales 1, 2 and 3.

    assets/panel/render.py [--scale N] [--only FILE] [--fast]

Needs rsvg-convert (librsvg2-bin) and optipng; writes pictures/Nx/*.png, which are kept with the
sources so that a build needs neither. Sizes, frames and lettering come from the tables of
src/editor/panel_layout.cpp.

Every frame is drawn anew from the vectors at its own angle and lies on whole pixels, so nothing in
a strip moves but what shall move. Letters are set on whole stored pixels, their stems too.
"""

import argparse
import math
import pathlib
import re
import subprocess
import xml.etree.ElementTree as ET

HERE = pathlib.Path(__file__).resolve().parent
LAYOUT = HERE.parents[1] / "src/editor/panel_layout.cpp"
SVG = "{http://www.w3.org/2000/svg}"
ET.register_namespace("", SVG[1:-1])

# Drawing and kind of each picture; the background and the about picture are opaque.
DRAWINGS = {
    "bg": "background", "about": "about",
    "KNB Chrom Small": "knob-small", "KNB Chrom Medium": "knob-medium",
    "KNB Chrom Big": "knob-big", "KNB Main": "knob-main", "KNB Matrix": "knob-matrix",
    "BTN Invert": "button-invert", "BTN Matrix Invert": "button-matrix-invert",
    "BTN Off-On": "button-lamp", "BTN Options": "button-options",
    "prev_arrow": "arrow-previous", "next_arrow": "arrow-next",
    "FDR": "fader", "FDR Resonator": "fader-resonator", "FDR Pick-Up": "pick-up",
    "String": None, "Damper Lower": "damper-lower", "Damper Top": "damper-top",
}


# --- the layout's tables -------------------------------------------------------------------------

def read_pictures(text):
    """File name without ending -> (width, height, frames)."""
    row = re.compile(r'\{\w+, "([^"]+)\.tga", \{(\d+), (\d+)\}, (\d+)\},')
    return {name: tuple(map(int, numbers)) for name, *numbers in row.findall(text)}


def read_labels(text):
    row = re.compile(r'\{"([^"]+)", ([\d.]+)F?, ([\d.]+)F?, PanelLabelStyle::(\w+)\},')
    return [(words, float(x), float(y), style) for words, x, y, style in row.findall(text)]


# --- lettering -----------------------------------------------------------------------------------

class Font:
    """Outlined capitals of one face: 1000 units an em, with the advances that go with them."""

    def __init__(self, glyphs, name, space, stem):
        self.space, self.stem = space, stem
        self.outline, self.advance, self.kern, self.left, self.right = {}, {}, {}, {}, {}
        for path in glyphs.iter(SVG + "path"):
            face, char = path.get("id").split("-", 1)
            if face != name:
                continue
            self.outline[char] = path.get("id")
            xs = outline_xs(path.get("d"))
            self.left[char], self.right[char] = min(xs), max(xs)
            self.advance[char] = float(path.get("data-advance", self.right[char] + 60))
            for pair in path.get("data-kern", "").split():
                self.kern[char + pair[0]] = float(pair[1:])


def outline_xs(d):
    xs, position = [], 0
    for command, arguments in re.findall(r"([MLQCHVZ])([^MLQCHVZ]*)", d):
        numbers = [float(n) for n in re.findall(r"-?\d+\.?\d*", arguments)]
        if command == "H":
            xs += numbers
        elif command in "MLQC":
            xs += numbers[0::2]
    return xs


# Letters with a stem on either side: made a little wider or narrower until both are sharp.
TWO_STEMS = "HNUODQGM"
MIDDLE_STEM = "TY"


def set_line(font, words, size, spacing, scale):
    """Places a line's letters in stored pixels: [(glyph, x of its origin, x stretch)], ink width.

    The first inked column is 0. Gaps between letters are rounded to whole pixels, each pair always
    alike, so that stems begin on a pixel.
    """
    unit = size * scale / 1000
    stem = font.stem * unit
    placed, edge, previous, gap_units = [], 0.0, None, 0.0
    for char in words:
        if char == " ":
            gap_units += font.space + spacing
            continue
        if previous is not None:
            gap_units += font.advance[previous] - font.right[previous] + spacing
            gap_units += font.kern.get(previous + char, 0.0) + font.left[char]
        ink = (font.right[char] - font.left[char]) * unit
        stretch = 1.0
        if char in TWO_STEMS:
            stretch = (max(1, round(ink - stem)) + stem) / ink
        ink *= stretch
        offset = (ink - stem) / 2 if char in MIDDLE_STEM else 0.0
        x = edge + gap_units * unit
        x = round(x + offset) - offset if previous is not None else -offset % 1.0
        placed.append((font.outline[char], x - font.left[char] * unit * stretch, stretch))
        edge, previous, gap_units = x + ink, char, 0.0
    return placed, edge


class Lettering:
    # Size in pixels, spacing in pixels, colour.
    STYLES = {
        "control": (8.4396, 0.6, "#efe4cd"), "wide": (8.4396, 1.6, "#efe4cd"),
        "number": (8.4396, 0.6, "#dac396"), "window": (8.4396, 0.6, "#dac396"),
        "small": (7.033, 0.6, "#efe4cd"), "title": (10.0, 2.0, "#e0cba0"),
        "readingUp": (8.4396, 0.6, "#efe4cd"), "readingDown": (8.4396, 0.6, "#efe4cd"),
    }

    def __init__(self, glyphs, scale):
        self.scale = scale
        self.label = Font(glyphs, "label", 230, 122)
        self.title = Font(glyphs, "title", 225, 128)

    def line(self, words, x, y, style, fill=None, centred=True, turn=0):
        """One line; x is its middle, or its first inked column when not centred."""
        size, spacing, colour = self.STYLES[style]
        font = self.title if style == "title" else self.label
        # Rounding to whole pixels costs small lettering some of its air.
        spacing += 0.15 if self.scale == 1 and size < 9 else 0.0
        placed, width = set_line(font, words, size, spacing * 1000 / size, self.scale)
        start = -width / 2 if centred else 0.0
        k, unit = self.scale, size / 1000
        # Stems begin on a whole stored pixel of the picture, also when the line is turned.
        if turn:
            base = f"translate({x} {y}) rotate({turn})"
            middle = y * k if turn > 0 else -y * k
            start = round(middle + start) - middle
        else:
            base = f"translate(0 {y})"
            start = round(x * k + start)
        uses = "".join(
            f'<use href="#{glyph}" transform="translate({(start + at) / k:.4f} 0) '
            f'scale({unit * stretch:.7f} {unit:.7f})"/>' for glyph, at, stretch in placed)
        return f'<g transform="{base}" fill="{fill or colour}">{uses}</g>'

    def background(self, labels):
        lines = []
        for words, x, y, style in labels:
            turn = {"readingUp": -90, "readingDown": 90}.get(style, 0)
            # Engraved: a dark copy a pixel above.
            depth = ".6" if style == "title" else ".45"
            shadow = self.line(words, x, y, style, "#000", turn=turn)
            lines.append(f'<g transform="translate(0 -1)" opacity="{depth}">{shadow}</g>')
            lines.append(self.line(words, x, y, style, turn=turn))
        return "".join(lines)

    def run(self, element):
        """A line whose letters have their own places (the name plates), or a button's label."""
        fill = element.get("fill", "")
        x, y, face = float(element.get("x")), float(element.get("y")), element.get("class")
        if face == "label":
            return self.line(element.text, round(x * self.scale) / self.scale, y, "control",
                             fill or "inherit", centred=False)
        size = float(element.get("font-size"))
        letters = element.text.replace(" ", "")
        uses = "".join(f'<use href="#{face}-{char}" x="{at}"/>'
                       for char, at in zip(letters, element.get("data-x").split()))
        return f'<g transform="translate({x} {y}) scale({size})" fill="{fill or "inherit"}">{uses}</g>'


# --- frames --------------------------------------------------------------------------------------

def knob_angle(frame):
    """Two halves, so that frame 32, the value 0.5, points straight up."""
    return -135 + 135 * frame / 32 if frame <= 32 else 135 * (frame - 32) / 31


def knob_frame(groups, centre, radius, frame):
    angle = knob_angle(frame)
    length = radius * math.radians(angle + 135)
    lit = (f'<g stroke-dasharray="{length:.4f} {4 * math.pi * radius:.4f}">{groups["arc"]}</g>'
           if frame else "")
    return (groups["base"] + lit + groups["body"] +
            f'<g transform="rotate({angle:.6f} {centre})">{groups["pointer"]}</g>')


def string_frame(frame):
    """A lens of 0.6 pixels an amplitude step between the bridges; the resting line fades as it opens."""
    left, right, middle, amplitude = 6.0, 211.5, 12.5, 0.6 * frame

    def curve(height):
        steps = 48
        points = [(left + (right - left) * i / steps,
                   middle - height * math.sin(math.pi * i / steps)) for i in range(steps + 1)]
        return points

    def path(points):
        return "M" + "L".join(f"{x:.2f} {y:.3f}" for x, y in points)

    rest = max(0.0, 1 - frame / 9)
    drawn = ['<rect x="3" y="15" width="209" height="1" fill="#000" fill-opacity=".34"/>'
             if frame == 0 else
             f'<path d="{path([(x, y + 3) for x, y in curve(-amplitude)])}" fill="none" '
             f'stroke="#000" stroke-opacity="{0.34 - 0.014 * frame:.3f}" stroke-width="1.4"/>']
    # The ends, between bridge and nut, always rest.
    for x, width in ((2, 4.5), (211, 2.5)):
        drawn.append(f'<rect x="{x}" y="12" width="{width}" height="1" fill="#e8cf96"/>'
                     f'<rect x="{x}" y="13" width="{width}" height="1" fill="#8c7044" '
                     'fill-opacity=".8"/>')
    if frame:
        lens = path(curve(amplitude)) + "L" + path(curve(-amplitude)[::-1])[1:] + "Z"
        drawn.append(f'<path d="{lens}" fill="url(#g-vib)" fill-opacity="{1 - 0.03 * frame:.3f}"/>')
        # Where the string lingers, the blur is brighter.
        for part, opacity in ((0.92, 0.30), (0.78, 0.16), (0.5, 0.10), (0.2, 0.08)):
            for sign in (1, -1):
                drawn.append(f'<path d="{path(curve(sign * part * amplitude))}" fill="none" '
                             f'stroke="#ffdf9e" stroke-opacity="{opacity}" stroke-width=".8"/>')
        for sign in (1, -1):
            drawn.append(f'<path d="{path(curve(sign * amplitude))}" fill="none" stroke="#ffe9b8" '
                         f'stroke-opacity=".86" stroke-width=".9"/>')
    if rest > 0:
        drawn.append(f'<g opacity="{rest:.3f}"><rect x="2" y="11" width="211" height="1" '
                     'fill="#b0935a" fill-opacity=".55"/><rect x="2" y="12" width="211" '
                     'height="1" fill="#fff0c8"/><rect x="2" y="13" width="211" height="1" '
                     'fill="#8c7044" fill-opacity=".8"/><rect x="2" y="14" width="211" height="1" '
                     'fill="#000" fill-opacity=".5"/></g>')
    return "".join(drawn)


# --- drawings ------------------------------------------------------------------------------------

def inner(element):
    return "".join(ET.tostring(child, encoding="unicode") for child in element)


def read_drawing(name, lettering, labels):
    """The drawing with its lettering outlined: the root element."""
    text = (HERE / f"{name}.svg").read_text()
    root = ET.fromstring(text)
    for element in list(root.iter(SVG + "text")):
        text = text.replace(re.search(r"<text [^>]*>[^<]*</text>", text).group(0),
                            lettering.run(element), 1)
    text = text.replace('<g id="bg-lettering" data-lettering="all"/>',
                        f'<g id="bg-lettering">{lettering.background(labels)}</g>')
    return ET.fromstring(text)


def frames_of(name, count, lettering, labels):
    if name is None:
        return [string_frame(frame) for frame in range(count)]
    root = read_drawing(name, lettering, labels)
    if count == 1:
        return [inner(root)]
    groups = {group.get("id"): ET.tostring(group, encoding="unicode") for group in root}
    if count == 2:
        return [groups["off"], groups["on"]]
    return [knob_frame(groups, root.get("data-centre"), float(root.get("data-radius")), frame)
            for frame in range(count)]


def materials(scale):
    """Shared definitions. Fine grain is made at the final size: its waves are stored pixels."""
    root = ET.parse(HERE / "materials.svg").getroot()
    for noise in root.iter(SVG + "feTurbulence"):
        waves = [float(f) for f in noise.get("baseFrequency").split()]
        noise.set("baseFrequency",
                  " ".join(f"{f * scale if f >= 0.3 else f:g}" for f in waves))
    return inner(root) + "<defs>" + inner(ET.parse(HERE / "glyphs.svg").getroot()) + "</defs>"


def compose(size, frames, shared):
    width, height = size
    placed = "".join(
        f'<svg x="0" y="{height * i}" width="{width}" height="{height}" overflow="hidden">'
        f"{frame}</svg>" for i, frame in enumerate(frames))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" '
            f'height="{height * len(frames)}">{shared}{placed}</svg>')


def render(svg, path, scale, fast):
    path.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["rsvg-convert", "--unlimited", "-z", str(scale), "-o", str(path)],
                   input=svg.encode(), check=True)
    if not fast:
        subprocess.run(["optipng", "-quiet", "-strip", "all", "-o2", str(path)], check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--scale", type=int, choices=(1, 2, 3))
    parser.add_argument("--only", metavar="FILE", help="one picture, without .tga")
    parser.add_argument("--fast", action="store_true", help="leave the files unsqueezed")
    parser.add_argument("--out", type=pathlib.Path, default=HERE / "pictures")
    options = parser.parse_args()

    layout = LAYOUT.read_text()
    labels = read_labels(layout)
    glyphs = ET.parse(HERE / "glyphs.svg").getroot()
    for scale in [options.scale] if options.scale else (1, 2, 3):
        lettering, shared = Lettering(glyphs, scale), materials(scale)
        for file, (width, height, count) in read_pictures(layout).items():
            if options.only not in (None, file):
                continue
            frames = frames_of(DRAWINGS[file], count, lettering, labels)
            svg = compose((width, height), frames, shared)
            render(svg, options.out / f"{scale}x" / f"{file}.png", scale, options.fast)


if __name__ == "__main__":
    main()
