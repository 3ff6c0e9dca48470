"""A display of its own for a host: starts programs there, works them with real events, looks at what they show.

Needs Debian's xvfb, openbox and python3-xlib. Every wait has a limit; a step that fails is named by StepFailed."""

import atexit
import os
import re
import signal
import struct
import subprocess
import sys
import time
import zlib

from Xlib import X, XK
from Xlib.display import Display
from Xlib.ext import xtest
from Xlib.protocol.event import ClientMessage

PANEL = (855, 532)


class StepFailed(Exception):
    pass


def wait(step, condition, seconds=40):
    """Asks until there is an answer, which is returned."""
    end = time.monotonic() + seconds
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise StepFailed(f"{step}: not within {seconds} seconds")
        time.sleep(0.1)


def insist(step, act, condition, tries=range(5), seconds=8):
    """Acts until there is an answer: a host that is not ready yet hears nothing."""
    for number in tries:
        act(number)
        try:
            return wait(step, condition, seconds)
        except StepFailed:
            continue
    raise StepFailed(f"{step}: not in {len(tries)} tries")


def check(step, holds, found=""):
    if not holds:
        raise StepFailed(f"{step}: {found}")
    print(f"  {step}{f': {found}' if found != '' else ''}", flush=True)


class Picture:
    """Rows of pixels, four bytes each: blue, green, red, unused."""

    def __init__(self, width, height, data):
        self.width, self.height, self.data = width, height, data

    def row(self, y):
        """Its pixels without the unused byte."""
        line = self.data[4 * self.width * y:][:4 * self.width]
        return [line[x:x + 3] for x in range(0, len(line), 4)]

    def differing(self, other):
        """The rectangle (left, top, right, bottom) in which two pictures of a size differ; None where they do not."""
        places = [(x, y) for y in range(self.height)
                  for x, (mine, its) in enumerate(zip(self.row(y), other.row(y))) if mine != its]
        columns, rows = zip(*places) if places else ((), ())
        return (min(columns), min(rows), max(columns) + 1, max(rows) + 1) if places else None

    def colours(self):
        return len({pixel for y in range(self.height) for pixel in self.row(y)})

    def save(self, path):
        def chunk(kind, body):
            return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

        rows = b"".join(b"\0" + b"".join(pixel[::-1] for pixel in self.row(y)) for y in range(self.height))
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        with open(path, "wb") as file:
            file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header))
            file.write(chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


class Desktop:
    """Used in a with statement: whatever was started in it is ended with it."""

    def __init__(self, folder, size=(1600, 1000)):
        self.folder, self.size, self.groups = folder, size, []

    def __enter__(self):
        signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended from outside"))
        atexit.register(self.end)
        read, write = os.pipe()
        screen = f"{self.size[0]}x{self.size[1]}x24"
        self.start("Xvfb", "-displayfd", str(write), "-screen", "0", screen, "-nolisten", "tcp", pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as number:
            name = ":" + number.readline().strip()
        if name == ":":
            raise StepFailed("Xvfb does not start")
        os.environ["DISPLAY"] = name
        self.display = Display(name)
        self.root = self.display.screen().root
        self.start("openbox")
        wait("a window manager", lambda: self.property(self.root, "_NET_SUPPORTING_WM_CHECK"))
        return self

    def __exit__(self, kind, *_):
        if kind is not None and "NORAVA_PICTURES" in os.environ:
            self.picture().save(os.path.join(os.environ["NORAVA_PICTURES"], "failed.png"))
        self.end()

    def end(self):
        for sign in (signal.SIGTERM, signal.SIGKILL):
            for process in reversed(self.groups):
                try:
                    os.killpg(process.pid, sign)
                    process.wait(5)
                except (ProcessLookupError, subprocess.TimeoutExpired):
                    pass
        self.groups.clear()

    def start(self, *command, **options):
        """Starts a program in a process group of its own; what it says goes to a file in the folder."""
        path = os.path.join(self.folder, f"{os.path.basename(command[0])}.log")
        with open(path, "ab") as log:
            process = subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True, **options)
        self.groups.append(process)
        return process

    def property(self, window, name):
        found = window.get_full_property(self.display.intern_atom(name), X.AnyPropertyType)
        return found.value if found else None

    def windows(self):
        """Windows of programs by their titles."""
        found = {}
        for number in self.property(self.root, "_NET_CLIENT_LIST") or []:
            window = self.display.create_resource_object("window", number)
            try:
                title = self.property(window, "_NET_WM_NAME") or window.get_wm_name() or b""
            except Exception:  # it went in between
                continue
            found[title.decode() if isinstance(title, bytes) else title] = window
        return found

    def window(self, pattern):
        return next((window for title, window in self.windows().items() if re.search(pattern, title)), None)

    def place(self, window):
        """Left, top, width and height on the screen."""
        shape = window.get_geometry()
        corner = window.translate_coords(self.root, 0, 0)
        return -corner.x, -corner.y, shape.width, shape.height

    def panel_in(self, window, scale=1):
        """The panel's own window, somewhere inside a host's window."""
        for child in window.query_tree().children:
            found = self.panel_in(child, scale)
            if found:
                return found
        _, _, width, height = self.place(window)
        return window if (width, height) == (PANEL[0] * scale, PANEL[1] * scale) else None

    def tell(self, window, kind, *words):
        data = (32, (list(words) + [0] * 5)[:5])
        event = ClientMessage(window=window, client_type=self.display.intern_atom(kind), data=data)
        self.root.send_event(event, event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.display.flush()

    def bring_up(self, window):
        self.tell(window, "_NET_ACTIVE_WINDOW", 2)
        wait("a window in front", lambda: window.id in (self.property(self.root, "_NET_ACTIVE_WINDOW") or []))

    def put(self, window, x, y, **size):
        """Moves the window's inside there, and gives it a size."""
        window.configure(x=x, y=y, **size)
        self.display.sync()
        time.sleep(0.5)

    def picture(self, x=0, y=0, width=None, height=None):
        width, height = width or self.size[0], height or self.size[1]
        width, height = min(width, self.size[0] - x), min(height, self.size[1] - y)
        return Picture(width, height, self.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data)

    def still_picture(self, step, *place):
        """A picture that has stopped changing, with more in it than a plain surface."""
        last = self.picture(*place)

        def settled():
            nonlocal last
            before = last
            time.sleep(0.4)
            last = self.picture(*place)
            return last.data == before.data and last.colours() > 1000

        wait(step, settled)
        return last

    def fake(self, *event, **place):
        xtest.fake_input(self.display, *event, **place)
        self.display.sync()
        time.sleep(0.05)

    def move(self, x, y):
        self.fake(X.MotionNotify, x=x, y=y)

    def move_by(self, x, y):
        self.fake(X.MotionNotify, True, x=x, y=y)

    def button(self, number, down):
        self.fake(X.ButtonPress if down else X.ButtonRelease, number)

    def click(self, x, y, button=1, times=1):
        self.move(x, y)
        for _ in range(times):
            self.button(button, True)
            self.button(button, False)

    def keys(self, *names):
        """Key strokes; "Control_L+s" holds the first while the second is struck."""
        for name in names:
            codes = [self.display.keysym_to_keycode(XK.string_to_keysym(part)) for part in name.split("+")]
            for code in codes:
                self.fake(X.KeyPress, code)
            for code in reversed(codes):
                self.fake(X.KeyRelease, code)
