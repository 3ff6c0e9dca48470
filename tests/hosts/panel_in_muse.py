#!/usr/bin/python3
"""Works the panel in MusE's own window: usage panel_in_muse.py WORK PICTURE.png.

HOME and the rest of the environment lead to WORK. MusE's own dummy driver needs a timer of the system's (/dev/rtc or
ALSA's), so it runs on a JACK server of its own without a device. Its values are read from the song that it saves."""

import base64
import glob
import os
import re
import shutil
import zlib

from desktop import check, insist, wait
from panel_steps import RELEASE, Host, run, two_sessions

FIRST_CONTROLLER = 0x9000  # what MusE counts a plug-in's parameters from
TEMPLATE = "/usr/share/muse/templates/default.med"


class Muse(Host):
    """MusE with the song, from its start to its quitting."""

    def __init__(self, desktop, song):
        super().__init__(desktop, song, "</muse>")
        self.process = desktop.start("muse", "-j", song)
        self.main = wait("MusE's window", lambda: desktop.window(r"^MusE Project: .* — MusE$"), 90)
        tip = wait("the tip of the day", self.past_questions)
        desktop.tell(tip, "_NET_CLOSE_WINDOW")
        wait("the tip goes", lambda: not desktop.window("Did you know"))
        desktop.bring_up(self.main)
        desktop.put(self.main, 60, 40, width=1440, height=900)

    def past_questions(self):
        question = self.desktop.window("Instrument initialization")
        if question:
            self.desktop.bring_up(question)
            self.desktop.keys("Return")
            wait("the answer is taken", lambda: not self.desktop.window("Instrument initialization"))
        return self.desktop.window("Did you know")

    def at(self, x, y):
        left, top, _, _ = self.desktop.place(self.main)
        return left + x, top + y

    def add_instrument(self):
        """By the dialog that lists the synthesizers: what is typed narrows the list down to ours."""
        self.desktop.click(*self.at(200, 400))
        self.desktop.keys("Shift_L+s")
        dialog = wait("the list of synthesizers", lambda: self.desktop.window("Select Software Synthesizer"))
        self.desktop.bring_up(dialog)
        self.desktop.keys(*"norava", "Tab", "Return")
        wait("the list goes", lambda: not self.desktop.window("Select Software Synthesizer"))

    def draw_bar(self, bar):
        """To the right: the one beside the list is a few pixels wide, in a place that hangs on the icons."""
        self.desktop.move(*self.at(bar, 465))
        self.desktop.button(1, True)
        for x in range(340, 721, 20):
            self.desktop.move(*self.at(x, 465))
        self.desktop.button(1, False)

    def is_wide(self):
        """Tracks in the list have colours, the arranger beside it is grey."""
        pixel = self.desktop.picture(*self.at(560, 224), 1, 1).data[:3]
        return max(pixel) - min(pixel) > 60

    def open_panel(self):
        """By a double click in the track's column "Port", which is drawn into view first."""
        self.desktop.bring_up(self.main)
        insist("the track list grows", self.draw_bar, self.is_wide, range(318, 330, 2), 2)
        return self.show_panel(self.at(349, 224), "Norava-0:Norava", (660, 100), (1200, 970))

    def save(self):
        """Saves; returns the instrument's state from the song."""
        packed = re.search(r"<customData>([^<]*)</customData>", self.saved_file()).group(1)
        return zlib.decompress(base64.b64decode(packed)[4:])

    def value(self):
        """As MusE itself has it."""
        pattern = rf'<controller id="{FIRST_CONTROLLER + RELEASE}" cur="([^"]*)"'
        return float(re.search(pattern, self.saved_file()).group(1))

    def ask_to_quit(self):
        self.desktop.tell(self.main, "_NET_CLOSE_WINDOW")


def server_name():
    return f"norava-{os.getpid()}"


def start_sound(desktop):
    name = server_name()
    os.environ.update(JACK_DEFAULT_SERVER=name, JACK_NO_START_SERVER="1")
    server = desktop.start("jackd", "-r", "-n", name, "-d", "dummy", "-r", "44100", "-p", "1024")
    wait("the JACK server", lambda: os.system("jack_wait -w -t 1 >/dev/null 2>&1") == 0 or server.poll() is not None)
    check("the JACK server runs", server.poll() is None)


def main(work, picture):
    song = os.path.join(work, "song.med")
    shutil.copy(TEMPLATE, song)

    def start(desktop):
        start_sound(desktop)
        return Muse(desktop, song)

    def start_new(desktop):
        muse = start(desktop)
        muse.add_instrument()
        return muse

    try:
        two_sessions(work, picture, start_new, start)
    finally:
        for left in glob.glob(f"/dev/shm/jack*{server_name()}*"):
            os.unlink(left)


if __name__ == "__main__":
    run(main)
