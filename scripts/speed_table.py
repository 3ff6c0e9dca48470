#!/usr/bin/env python3
"""Turns the benchmarks' JSON into a table of figures with their limits. Usage: speed_table.py FILE"""

import json
import sys

SPREAD_NAMES = {"struckAgain": "struck again", "held": "held, dying away", "released": "released, tails"}


def load(path):
    with open(path, encoding="utf-8") as file:
        rows = json.load(file)["benchmarks"]
    return {row["name"].split("/iterations")[0]: row for row in rows if not row.get("error_occurred")}


def processor():
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as file:
            return next(line.split(":", 1)[1].strip() for line in file if line.startswith("model name"))
    except (OSError, StopIteration):
        return "unknown processor"


def figures(rows):
    """(what, value, unit, limit, whether more is better) of each figure that was measured."""

    def get(name, counter="cycles/frame"):
        return rows.get(name, {}).get(counter)

    def ratio(name, to, counter="cycles/frame"):
        value, base = get(name, counter), get(to, counter)
        return value / base if value and base else None

    def milliseconds(name):
        units = {"ns": 1e-6, "us": 1e-3, "ms": 1.0}
        return rows[name]["real_time"] * units[rows[name]["time_unit"]] if name in rows else None

    key = "cycles/frame/key"
    full = "instrument/keys84Effects"
    return [
        ("a key, 84 sounding, baseline", get("soundingKeys/baseline/84", key), "cycles", 46, False),
        ("a key, 84 sounding, AVX2", get("soundingKeys/wide/84", key), "cycles", 38, False),
        ("  plain twin / AVX2", ratio("soundingKeysPlainTwin", "soundingKeys/wide/84", key), "x", None, True),
        ("a key's control block", get("controlBlock", key), "cycles", 2, False),
        ("84 idle keys together", get("idleKeys"), "cycles", 5, False),
        ("idle instrument", get("instrument/idle"), "cycles", 11, False),
        ("all effects", get("effects/all"), "cycles", 450, False),
        ("  plain twin / product", get("effects/all", "twin/product"), "x", None, True),
        ("effects' tails / sound", ratio("effects/allTails", "effects/all"), "x", 1, False),
        ("84 keys, all effects, at 4 GHz", get(full, "x real time"), "x real time", 20, True),
        ("  at 96 kHz / at 48 kHz", get("instrumentAgainst/at96k", "ratio"), "x", 1.25, False),
        ("  blocks of 1 / of 512 frames", get("instrumentAgainst/framesOf1", "ratio"), "x", 3, False),
        ("84 note-ons / median block", get("worstBlock/noteOns84", "worst/median"), "x", 1.5, False),
        ("84 note ends / median block", get("worstBlock/noteEnds84", "worst/median"), "x", 1.5, False),
        ("reset while playing / median block", get("resetBlock", "worst/median"), "x", 1.5, False),
        ("an instrument's memory", get("makeAndReset", "MB"), "MB", 28, False),
        ("made and reset", milliseconds("makeAndReset"), "ms", 8, False),
        ("a state loaded", milliseconds("loadState"), "ms", 0.1, False),
        ("32 idle instruments / 32 x one", get("instances/idle", "ratio"), "x", 1.1, False),
        ("  of 8 notes", get("instances/chord", "ratio"), "x", 1.1, False),
        ("  of 8 notes, all effects", get("instances/chordEffects", "ratio"), "x", 1.1, False),
    ]


def main():
    rows = load(sys.argv[1])
    print(f"\n{processor()}; 48 kHz, blocks of 64 frames, one core. Cycles are core cycles a frame.")
    print("Other work on the machine changes every figure: run it alone, and twice.\n")
    print(f"{'':36}{'measured':>10} {'':12}{'limit':>9}")
    for what, value, unit, limit, more in figures(rows):
        if value is None:
            continue
        bound = "" if limit is None else f"{'>=' if more else '<='} {limit:g}"
        kept = limit is None or (value >= limit if more else value <= limit)
        print(f"{what:36}{value:>10.3g} {unit:12}{bound:>9}{'' if kept else '  missed'}")
    spreads = [(chord, rows[f"blockSpread/{chord}"]) for chord in ("struckAgain", "held", "released")
               if f"blockSpread/{chord}" in rows]
    if spreads:
        print(f"\nA block of 8 notes and all effects, in microseconds\n{'':20}{'median':>9}{'99.9 %':>9}{'worst':>9}"
              f"{'page faults':>13}")
    for chord, row in spreads:
        print(f"{SPREAD_NAMES[chord]:20}{row['median us']:9.1f}{row['99.9% us']:9.1f}{row['worst us']:9.1f}"
              f"{row['page faults']:13.0f}")


if __name__ == "__main__":
    sys.exit(main())
