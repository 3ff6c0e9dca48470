#!/usr/bin/python3
"""Works the panel in Ardour's own window: usage panel_in_ardour.py WORK PICTURE.png.

WORK/session is a saved session with the instrument on its track; HOME and the rest of the environment lead to WORK."""

import base64
import os
import re

from desktop import check, insist, wait
from panel_steps import Host, run, two_sessions, value_in_state

CONFIG = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour>
  <Config>
    <Option name="hide-dummy-backend" value="0"/>
    <Option name="try-autostart-engine" value="1"/>
  </Config>
  <Extra><AudioMIDISetup><EngineStates>
    <State backend="None (Dummy)" driver="Normal Speed" device="Silence" input-device="" output-device=""
      sample-rate="48000" buffer-size="1024" n-periods="0" input-latency="0" output-latency="0" lm-input="" lm-output=""
      active="1" use-buffered-io="0" midi-option="1 in, 1 out, Silence" lru="1"/>
  </EngineStates></AudioMIDISetup></Extra>
</Ardour>
"""


class Ardour(Host):
    """Ardour with the session, from its start to its quitting."""

    def __init__(self, desktop, work):
        super().__init__(desktop, os.path.join(work, "session", "session.ardour"), "</Session>")
        folder = os.path.join(os.environ["XDG_CONFIG_HOME"], "ardour7")
        os.makedirs(folder, exist_ok=True)
        open(os.path.join(folder, ".a7"), "w").close()  # no greeting for new users
        with open(os.path.join(folder, "config"), "w") as file:
            file.write(CONFIG)
        self.process = desktop.start("ardour", "-n", "-a", self.file)
        self.main = wait("Ardour's window", lambda: desktop.window(r"^\*?session - Ardour"), 90)

    def open_panel(self):
        """By a double click on the plug-in's name in the mixer: the second dark red box on the track's strip."""
        self.desktop.put(self.main, 60, 40)

        def boxes():
            left, top, width, height = self.desktop.place(self.main)
            picture = self.desktop.picture(left, top, width, height)
            found, last = [], -9
            for y in range(picture.height):
                red = [x for x, (b, g, r) in enumerate(picture.row(y)) if 60 < r < 160 and max(b, g) < r // 2]
                if len(red) > 40:
                    if y - last > 2:
                        found.append((left + red[len(red) // 2], top + y + 5))
                    last = y
            return found if len(found) == 2 else None

        place = insist("two plug-ins on the mixer strip", lambda _: self.strike("Alt_L+m"), boxes)[1]
        return self.show_panel(place, r"Norava \(by", (420, 140), (200, 970))

    def save(self):
        """Saves and returns the instrument's state from the session's file."""
        chunk = re.search(r"<chunk[^>]*>([^<]*)</chunk>", self.saved_file())
        check("the session holds a state", chunk)
        return base64.b64decode(chunk.group(1))

    def value(self):
        return value_in_state(self.save())

    def ask_to_quit(self):
        self.strike("Control_L+q")


def main(work, picture):
    def start(desktop):
        return Ardour(desktop, work)

    two_sessions(work, picture, start, start)


if __name__ == "__main__":
    run(main)
