// Sound through the player program: the samples are written to a temporary WAV file (the WAV
// functions) and the player is run on it; the call returns once it has played. The player is
// named by the environment variable MATVEXPLAYER (or matvexplayer) when the library loads, "aplay"
// otherwise; its value may carry arguments ("aplay -q"). Without a player or a sound device the
// sound is dropped with a warning and the program goes on.
#pragma once
#include "arklib/matrix.h"

// Plays y (one column a channel, one or two channels) at rate fs (8192 Hz by default) with bits
// bits (8 or 16); values outside [-1, 1] are clipped.
Mm sound(const Mm& y);
Mm sound(const Mm& y, const Mm& fs);
Mm sound(const Mm& y, const Mm& fs, const Mm& bits);
// The same, scaled first so that [lo hi] (the data's own range by default) fills [-1, 1].
Mm soundsc(const Mm& y);
Mm soundsc(const Mm& y, const Mm& fs);
Mm soundsc(const Mm& y, const Mm& fs, const Mm& bits);
Mm soundsc(const Mm& y, const Mm& fs, const Mm& bits, const Mm& range);
// A short tone; beep("on") and beep("off") switch it, beep() of no output beeps, and the form with
// an output gives the state ("on" or "off").
Mm beep();
Mm beep(const Mm& state);
Mm beep_state();
