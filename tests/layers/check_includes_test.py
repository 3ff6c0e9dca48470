#!/usr/bin/env python3
"""The check must see what it is there for, and leave the rest alone."""

import sys

from check_includes import breaches

ALLOWED = {
    "dsp/a.h": '#include <vector>\n#include "dsp/b.h"\n',
    "fx/a.cpp": '#include "dsp/b.h"\n#include "fx/a.h"\n',
    "synth/a.cpp": '#include "framework/a.h"\n  #  include "parameters/a.h"\n#include "presets/preset_list.h"\n',
    "gui/platform/x11.cpp": '#include <X11/Xlib.h>\n#include "gui/a.h"\n',
    "presets/preset_list_editor.cpp": '#include "gui/a.h"\n#include "presets/preset_list.h"\n',
    "host/vst/a.cpp": '#include "framework/a.h"\n#include "host/vst/b.h"\n',
    "apps/render/main.cpp": '#include "render/options.h"\n#include "plugin/norava_def.h"\n',
    "apps/render/options.h": "",
}
FORBIDDEN = {
    "dsp/c.cpp": '#include "fx/a.h"\n',
    "framework/c.h": '#include "gui/a.h"\n',
    "synth/c.cpp": '#include "gui/a.h"\n',
    "synth/d.cpp": '#include "presets/preset_list_editor.h"\n',
    "presets/preset_list.h": '#include "gui/a.h"\n',
    "fx/c.cpp": '#include "../dsp/b.h"\n',
    "gui/c.cpp": "#include <X11/Xlib.h>\n",
    "host/vst/c.cpp": '#include "synth/a.h"\n',
    "cellar/c.cpp": "",
    "dsp/d.cpp": '#include "neighbour.h"\n',
    "apps/render/other.cpp": '#include "host/vst/vst_wrapper.h"\n',
}


def main():
    found = {path for path, _, _ in breaches({**ALLOWED, **FORBIDDEN})}
    missed = set(FORBIDDEN) - found
    wrong = found - set(FORBIDDEN)
    for path in missed:
        print(f"not seen: {path}")
    for path in wrong:
        print(f"wrongly refused: {path}")
    return 1 if missed or wrong else 0


if __name__ == "__main__":
    sys.exit(main())
