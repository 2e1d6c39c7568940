// WAV files of PCM samples: one column for each channel, samples scaled to [-1, 1].
//
// wavwrite writes 8- or 16-bit PCM, mono or stereo (a row vector is one channel); values outside
// [-1, 1] are clipped with one warning. A name without "." gets ".wav". The rate defaults to
// 8000 Hz and the bits to 16.
// wavread reads 8-, 16-, 24- and 32-bit PCM and 32-bit float files of any channel count, with
// plain or extensible format blocks; chunks before the data chunk are skipped. The further
// outputs are the sample rate and the bits per sample.
#pragma once
#include "arklib/matrix.h"

Mm wavread();
Mm wavread(const Mm& name);
Mm wavread(const Mm& name, i_o_t, Mm& rate);
Mm wavread(const Mm& name, i_o_t, Mm& rate, Mm& bits);
Mm wavwrite(const Mm& y);
Mm wavwrite(const Mm& y, const Mm& name);
Mm wavwrite(const Mm& y, const Mm& rate, const Mm& name);
Mm wavwrite(const Mm& y, const Mm& rate, const Mm& bits, const Mm& name);
