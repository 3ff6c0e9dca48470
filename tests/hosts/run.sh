#!/bin/bash
# Tries the module in the plug-in hosts of this machine (Debian: qtractor, ardour, muse): their scanners accept it,
# Ardour saves, loads and plays it, and the panel is worked with real events in the windows of Ardour and MusE.
# Hosts that are not installed are left out. Needs no display and no sound card.
# Usage: run.sh [MODULE]; with NORAVA_PICTURES=FOLDER pictures of the hosts go there, also of what went wrong.
set -u
here=$(cd "$(dirname "$0")" && pwd)
module=$(realpath "${1:-$here/../../build/release/norava.so}")
[ -f "$module" ] || { echo "no module at $module: build it first" >&2; exit 2; }

# A home of its own: nothing of the user's is read or written.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home NORAVA_WORK=$work
export XDG_CONFIG_HOME=$HOME/.config XDG_CACHE_HOME=$HOME/.cache XDG_DATA_HOME=$HOME/.local/share
export LXVST_PATH=$HOME/.lxvst QT_QPA_PLATFORM=offscreen
export XDG_RUNTIME_DIR=$work/run NO_AT_BRIDGE=1
mkdir -p "$LXVST_PATH" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME"
mkdir -m 700 "$XDG_RUNTIME_DIR"
pictures=${NORAVA_PICTURES:-$work}
cp "$module" "$LXVST_PATH/norava.so"

passed=0 failed=0
report() {  # report NAME STATUS LOG
    if [ "$2" -eq 0 ]; then
        passed=$((passed + 1))
        echo "ok      $1"
    else
        failed=$((failed + 1))
        echo "FAILED  $1"
        tail -n 30 "$3"
    fi
}

try_qtractor() {
    local scanner
    scanner=$(find /usr/lib /usr/libexec -name qtractor_plugin_scan -type f 2>/dev/null | head -n 1)
    [ -n "$scanner" ] || { echo "left out: Qtractor is not installed"; return; }
    printf 'VST2:%s\n' "$LXVST_PATH/norava.so" | timeout 60 "$scanner" >"$work/qtractor.log" 2>&1
    # Name, audio channels, MIDI ports, parameters, ..., unique id.
    grep -q '^VST|Norava|0:2|1:0|114:0|.*|0x4e6f7652$' "$work/qtractor.log"
    report "Qtractor's scanner accepts the module" $? "$work/qtractor.log"
}

ardour_scans() {
    local scanner=$1 log=$work/ardour-scan.log
    LD_LIBRARY_PATH=$(dirname "$scanner") timeout 60 "$scanner" -f -v "$LXVST_PATH/norava.so" >"$log" 2>&1 &&
        grep -q 'name="Norava" creator="Hollo-Vane" category="Instrument"' "$log" &&
        grep -q 'n_inputs="0" n_outputs="2"' "$log" && grep -q 'is_instrument="1"' "$log"
    report "Ardour's scanner accepts the module" $? "$log"
    # A cache entry as old as the module counts as stale.
    find "$XDG_CACHE_HOME" -name '*.v2i' -exec touch -d '+2 seconds' {} +
}

panel_in() {  # panel_in HOST: works the panel in its window
    local log=$work/panel-$1.log
    /usr/bin/python3 -c 'import Xlib' 2>/dev/null && command -v openbox >/dev/null ||
        { echo "left out: the panel in $1 (needs python3-xlib and openbox)"; return; }
    env -u QT_QPA_PLATFORM -u WAYLAND_DISPLAY timeout 600 \
        /usr/bin/python3 "$here/panel_in_$1.py" "$work" "$pictures/host-$1.png" >"$log" 2>&1
    report "the panel works in the window of $1" $? "$log"
}

try_ardour() {
    local scanner lua scripts log=$work/ardour-make.log
    scanner=$(find /usr/lib -path '*ardour*' -name ardour-vst-scanner -type f 2>/dev/null | head -n 1)
    lua=$(find /usr/bin -name 'ardour*-lua' | head -n 1)
    [ -n "$scanner" ] && [ -n "$lua" ] || { echo "left out: Ardour is not installed"; return; }
    ardour_scans "$scanner"
    scripts=$XDG_CONFIG_HOME/$(basename "$(dirname "$scanner")")/scripts
    mkdir -p "$scripts"
    cp "$here/note_source.lua" "$scripts/"
    timeout 120 "$lua" "$here/ardour_make.lua" >"$log" 2>&1
    # The Lua shell ends with 0 whatever happens inside it.
    grep -q '^all done$' "$log"
    report "Ardour plays the module and saves it in a session" $? "$log"
    panel_in ardour
}

try_muse() {
    command -v muse >/dev/null && command -v jackd >/dev/null ||
        { echo "left out: MusE is not installed, or no JACK server"; return; }
    panel_in muse
}

try_qtractor
try_ardour
try_muse
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
