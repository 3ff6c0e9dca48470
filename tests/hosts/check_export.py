#!/usr/bin/env python3
"""The exported file: as long as asked for, one note a second. Usage: check_export.py FILE"""

import array
import sys
import wave


def main():
    with wave.open(sys.argv[1]) as file:
        rate, channels, frames = file.getframerate(), file.getnchannels(), file.getnframes()
        samples = array.array("h", file.readframes(frames))
    left = samples[0::channels]
    print(f"{frames / rate:.2f} s, {channels} channels, peak {max(map(abs, left)) / 32768:.3f}")
    assert channels == 2 and abs(frames / rate - 10.0) < 0.1, "wrong length"

    for second in range(9):
        # A quarter of a second from the note's start, and one after its end.
        sounding = left[int((second + 0.1) * rate) : int((second + 0.35) * rate)]
        ended = left[int((second + 0.75) * rate) : int((second + 0.95) * rate)]
        assert max(map(abs, sounding)) > 300, f"second {second} is silent"
        assert max(map(abs, ended)) < max(map(abs, sounding)), f"the note of second {second} does not end"


if __name__ == "__main__":
    main()
