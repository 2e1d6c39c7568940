#!/usr/bin/env bash
# Writes the WAV files of tests/data that another program made: the same 10 ms of a 440 Hz sine
# (and 660 Hz on a second channel) at half scale, 8000 Hz, in the sample formats wavread reads.
# sox writes 24- and 32-bit integer files with extensible format blocks and a "fact" chunk before
# the data, and float files with an 18-byte format block. -D turns dithering off, so that every
# file holds the signal rounded to its own resolution.
set -euo pipefail
cd "$(dirname "$0")/../tests/data"
tone="synth 0.01 sine 440 vol 0.5"
stereo="synth 0.01 sine 440 sine 660 vol 0.5"
sox -D -n -r 8000 -c 1 -b 16 -e signed-integer sox_mono16.wav $tone
sox -D -n -r 8000 -c 1 -b 24 -e signed-integer sox_mono24.wav $tone
sox -D -n -r 8000 -c 1 -b 32 -e signed-integer sox_mono32.wav $tone
sox -D -n -r 8000 -c 2 -b 8 -e unsigned-integer sox_stereo8.wav $stereo
sox -D -n -r 8000 -c 2 -b 32 -e floating-point sox_stereo_float.wav $stereo
