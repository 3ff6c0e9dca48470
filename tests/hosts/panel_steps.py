"""What is done to the panel in every host: a look at it, a drag of a knob, a change of its size."""

import os
import struct
import sys

from desktop import PANEL, Desktop, StepFailed, check, insist, wait

RELEASE = 5  # "Amp Release"
ON_RELEASE = (647, 308)
RELEASE_KNOB = (615, 276, 680, 340)
ON_NAME_PLATE = (100, 40)


def value_in_state(state, index=RELEASE):
    """A parameter's value in a saved state."""
    check("the state is whole", len(state) == 588 and state[:4] == b"1qzW", f"{len(state)} bytes")
    return struct.unpack_from("<f", state, 4 + 4 * index)[0]


class Host:
    """A host that has opened `file`: its process and its main window, once it has them. What it saves ends with `end`."""

    def __init__(self, desktop, file, end):
        self.desktop, self.file, self.end = desktop, file, end
        self.process = self.main = None

    def show_panel(self, place, title, corner, pause_at):
        window = insist("the window with the panel", lambda _: self.desktop.click(*place, times=2),
                        lambda: self.desktop.window(title))
        self.desktop.bring_up(window)
        self.desktop.put(window, *corner)
        return Panel(self.desktop, window, pause_at)

    def strike(self, keys):
        self.desktop.bring_up(self.main)
        self.desktop.keys(keys)

    def saved_file(self):
        """Saves; returns the whole file."""
        before = os.stat(self.file).st_mtime_ns

        def content():
            with open(self.file, encoding="utf-8") as file:
                text = file.read()
            return text if os.stat(self.file).st_mtime_ns != before and text.rstrip().endswith(self.end) else None

        return insist("the whole file is saved", lambda _: self.strike("Control_L+s"), content)

    def quit(self):
        self.ask_to_quit()
        wait("the host ends by itself", lambda: self.process.poll() is not None)


class Panel:
    """The open panel in a host's window; the pointer rests below the panel between the steps."""

    def __init__(self, desktop, host_window, pause_at):
        self.desktop, self.host_window, self.pause_at = desktop, host_window, pause_at

    def find(self, scale=1):
        return wait(f"the panel at {100 * scale} %", lambda: self.desktop.panel_in(self.host_window, scale))

    def look(self, step):
        self.desktop.move(*self.pause_at)
        return self.desktop.still_picture(step, *self.desktop.place(self.find()))

    def point(self, on, scale=1):
        left, top, _, _ = self.desktop.place(self.find(scale))
        return left + on[0] * scale, top + on[1] * scale

    def begin_drag(self, steps=12, by=-4):
        """Takes the knob, without letting it go."""
        self.desktop.move(*self.point(ON_RELEASE))
        self.desktop.button(1, True)
        for _ in range(steps):
            self.desktop.move_by(0, by)

    def drag(self):
        """Turns the knob up; what changes on the panel is the knob alone."""
        before = self.look("the panel is painted")
        check("it has the colours of its pictures", before.colours() > 5000, before.colours())
        self.begin_drag()
        self.desktop.button(1, False)
        after = self.look("the panel is at rest after the drag")
        place = before.differing(after)
        inside = place and all(a >= b for a, b in zip(place[:2], RELEASE_KNOB)) and all(
            a <= b for a, b in zip(place[2:], RELEASE_KNOB[2:]))
        check("the drag turned the knob and painted nothing else", inside, place)
        return after

    def zoom(self, as_before):
        """To 200 % and back by the menu of the name plate; the host's window follows."""
        for scale, keys in ((2, ("Home", "Down", "Return")), (1, ("Home", "Return"))):
            def choose(_):
                self.desktop.click(*self.point(ON_NAME_PLATE, 3 - scale), button=3)
                self.desktop.still_picture("the menu of sizes", *self.desktop.place(self.find(3 - scale)))
                self.desktop.keys(*keys)

            insist(f"the panel at {100 * scale} %", choose, lambda: self.desktop.panel_in(self.host_window, scale))
            wait("the host's window follows",
                 lambda: self.desktop.place(self.host_window)[2] - PANEL[0] * scale in range(40))
        check("at 100 % it looks as before", not as_before.differing(self.look("the panel at rest")))

    def close(self):
        self.desktop.tell(self.host_window, "_NET_CLOSE_WINDOW")
        wait("the panel's window is closed", lambda: self.host_window not in self.desktop.windows().values())


def two_sessions(work, picture, start, start_again):
    """Turns the knob in the session that start(desktop) opens, and saves it; opens it again and closes it in a drag.

    Both return a Host with value() (its own idea of the parameter), open_panel(), save() (the state), ask_to_quit()."""
    with Desktop(work) as desktop:
        host = start(desktop)
        first = host.value()
        panel = host.open_panel()
        shown = panel.drag()
        value = host.value()
        check("the parameter moved in the host", value > first + 0.05, f"{first:.3f} to {value:.3f}")
        desktop.bring_up(panel.host_window)
        desktop.picture(40, 10, 1480, 940).save(picture)
        panel.zoom(shown)
        panel.close()
        state = host.save()
        check("the saved state holds the value", abs(value_in_state(state) - value) < 1e-4)
        host.quit()
    with Desktop(work) as desktop:
        host = start_again(desktop)
        check("the host has the value again", abs(host.value() - value) < 1e-6, host.value())
        panel = host.open_panel()
        check("the panel looks the same", not shown.differing(panel.look("the panel is painted again")))
        check("the state is the same", host.save() == state)
        # A window that is closed in the middle of a drag.
        desktop.bring_up(panel.host_window)
        panel.begin_drag(steps=6, by=4)
        panel.close()
        desktop.button(1, False)
        closed = host.value()
        check("the drag counted until then", 0 < closed < value, f"{closed:.3f}")
        again = host.open_panel().look("the panel once more")
        check("and shows in the window opened again", shown.differing(again))


def run(main):
    try:
        main(*sys.argv[1:])
    except StepFailed as failure:
        sys.exit(f"step failed: {failure}")
    print("all done")
